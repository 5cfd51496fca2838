#include "core/platform/archive/ZipWrite.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QSet>
#include <QtEndian>

#include <zlib.h>

#include <memory>

namespace tarnby::archive {

namespace {

// The ZIP format is written here directly rather than through libarchive,
// whose writer deflates every entry of an archive alike: a send of a hundred
// photos would spend its time compressing JPEG data again. Entries are plain
// files with UTF-8 names; sizes and CRC are patched into each local header
// after the data, so no data descriptors are needed and every unzip program
// reads the result. Without ZIP64, an archive is limited to 4 GB and 65535
// entries, far above what a mail server accepts.
constexpr quint32 LocalHeaderSignature = 0x04034b50;
constexpr quint32 CentralHeaderSignature = 0x02014b50;
constexpr quint32 EndSignature = 0x06054b50;
constexpr quint16 Utf8NamesFlag = 0x0800;
constexpr quint16 MethodStore = 0;
constexpr quint16 MethodDeflate = 8;
constexpr qint64 Limit32 = 0xffffffffLL;
constexpr qint64 BufferSize = 1 << 20;

struct CentralEntry {
    QByteArray name;
    quint16 method = MethodStore;
    quint16 dosTime = 0, dosDate = 0;
    quint32 crc = 0;
    qint64 compressedSize = 0, size = 0;
    qint64 headerOffset = 0;
};

class LittleEndian
{
public:
    LittleEndian &u16(quint16 v) { return put(qToLittleEndian(v)); }
    LittleEndian &u32(quint32 v) { return put(qToLittleEndian(v)); }
    LittleEndian &bytes(const QByteArray &b) { m_data += b; return *this; }
    const QByteArray &data() const { return m_data; }

private:
    template<typename T> LittleEndian &put(T v)
    {
        m_data.append(reinterpret_cast<const char *>(&v), sizeof v);
        return *this;
    }
    QByteArray m_data;
};

void dosDateTime(const QDateTime &when, quint16 *time, quint16 *date)
{
    const QDateTime local = when.toLocalTime();
    const int year = std::clamp(local.date().year(), 1980, 2107);
    *date = quint16(((year - 1980) << 9) | (local.date().month() << 5) | local.date().day());
    *time = quint16((local.time().hour() << 11) | (local.time().minute() << 5) | (local.time().second() / 2));
}

QByteArray localHeader(const CentralEntry &e)
{
    LittleEndian h;
    h.u32(LocalHeaderSignature).u16(20).u16(Utf8NamesFlag).u16(e.method).u16(e.dosTime).u16(e.dosDate)
        .u32(e.crc).u32(quint32(e.compressedSize)).u32(quint32(e.size)).u16(quint16(e.name.size())).u16(0)
        .bytes(e.name);
    return h.data();
}

QByteArray centralHeader(const CentralEntry &e)
{
    LittleEndian h;
    h.u32(CentralHeaderSignature).u16((3 << 8) | 20).u16(20).u16(Utf8NamesFlag).u16(e.method)
        .u16(e.dosTime).u16(e.dosDate).u32(e.crc).u32(quint32(e.compressedSize)).u32(quint32(e.size))
        .u16(quint16(e.name.size())).u16(0).u16(0).u16(0).u16(0).u32(0100644u << 16)
        .u32(quint32(e.headerOffset)).bytes(e.name);
    return h.data();
}

struct DeflateStream {
    z_stream z{};
    bool ready = false;
    DeflateStream() { ready = deflateInit2(&z, 6, Z_DEFLATED, -MAX_WBITS, 8, Z_DEFAULT_STRATEGY) == Z_OK; }
    ~DeflateStream()
    {
        if (ready)
            deflateEnd(&z);
    }
    DeflateStream(const DeflateStream &) = delete;
    DeflateStream &operator=(const DeflateStream &) = delete;
};

} // namespace

bool isCompressedAlready(const QString &fileName)
{
    static const QSet<QString> compressed{
        // pictures
        QStringLiteral("JPG"), QStringLiteral("JPE"), QStringLiteral("JPEG"), QStringLiteral("PNG"),
        QStringLiteral("GIF"), QStringLiteral("WEBP"), QStringLiteral("HEIC"), QStringLiteral("HEIF"),
        QStringLiteral("CMP"), QStringLiteral("JBG"), QStringLiteral("FPX"), QStringLiteral("PCD"),
        // sound and video
        QStringLiteral("MP3"), QStringLiteral("MP4"), QStringLiteral("M4A"), QStringLiteral("M4V"),
        QStringLiteral("MPG"), QStringLiteral("MPEG"), QStringLiteral("AVI"), QStringLiteral("MOV"),
        QStringLiteral("MKV"), QStringLiteral("WEBM"), QStringLiteral("OGG"), QStringLiteral("OGV"),
        QStringLiteral("OPUS"), QStringLiteral("FLAC"), QStringLiteral("AAC"), QStringLiteral("WMA"),
        QStringLiteral("WMV"),
        // archives and packed documents
        QStringLiteral("ZIP"), QStringLiteral("GZ"), QStringLiteral("TGZ"), QStringLiteral("BZ2"),
        QStringLiteral("XZ"), QStringLiteral("ZST"), QStringLiteral("7Z"), QStringLiteral("RAR"),
        QStringLiteral("JAR"), QStringLiteral("DOCX"), QStringLiteral("XLSX"), QStringLiteral("PPTX"),
        QStringLiteral("ODT"), QStringLiteral("ODS"), QStringLiteral("ODP")};
    return compressed.contains(QFileInfo(fileName).suffix().toUpper());
}

ZipWriteResult writeZip(const QString &zipPath, const QList<ZipItem> &items, const ZipProgress &progress)
{
    auto failed = [](const QString &text) { return ZipWriteResult{ZipStatus::Failed, text}; };
    const QString writeError = QStringLiteral("The archive %1 could not be written: %2");

    qint64 total = 0;
    for (const ZipItem &item : items)
        total += QFileInfo(item.path).size();
    if (items.size() > 65535 || total >= Limit32)
        return failed(QStringLiteral("The files are too large for one zip archive (at most 4 GB and 65535 files)."));

    QSaveFile out(zipPath);
    if (!out.open(QIODevice::WriteOnly))
        return failed(QStringLiteral("The archive %1 could not be created: %2").arg(zipPath, out.errorString()));
    auto abandon = [&out](ZipWriteResult result) {
        out.cancelWriting();
        return result;
    };

    std::unique_ptr<char[]> buffer(new char[BufferSize]);
    std::unique_ptr<char[]> packed(new char[BufferSize]);
    QList<CentralEntry> entries;
    qint64 done = 0;
    for (const ZipItem &item : items) {
        QFile in(item.path);
        if (!in.open(QIODevice::ReadOnly))
            return abandon(failed(QStringLiteral("The file %1 could not be read: %2").arg(item.path, in.errorString())));
        CentralEntry entry;
        entry.name = item.entryName.toUtf8();
        entry.method = isCompressedAlready(item.entryName) ? MethodStore : MethodDeflate;
        dosDateTime(QFileInfo(item.path).lastModified(), &entry.dosTime, &entry.dosDate);
        entry.headerOffset = out.pos();
        if (out.write(localHeader(entry)) < 0)
            return abandon(failed(writeError.arg(zipPath, out.errorString())));

        DeflateStream deflater;
        if (entry.method == MethodDeflate && !deflater.ready)
            return abandon(failed(writeError.arg(zipPath, QStringLiteral("the compressor could not start"))));
        uLong crc = crc32(0, nullptr, 0);
        bool atEnd = false;
        while (!atEnd) {
            const qint64 n = in.read(buffer.get(), BufferSize);
            if (n < 0)
                return abandon(failed(QStringLiteral("The file %1 could not be read: %2").arg(item.path, in.errorString())));
            atEnd = n == 0;
            crc = crc32(crc, reinterpret_cast<const Bytef *>(buffer.get()), uInt(n));
            entry.size += n;
            if (entry.method == MethodStore) {
                if (out.write(buffer.get(), n) != n)
                    return abandon(failed(writeError.arg(zipPath, out.errorString())));
                entry.compressedSize += n;
            } else {
                deflater.z.next_in = reinterpret_cast<Bytef *>(buffer.get());
                deflater.z.avail_in = uInt(n);
                int status = Z_OK;
                do {
                    deflater.z.next_out = reinterpret_cast<Bytef *>(packed.get());
                    deflater.z.avail_out = uInt(BufferSize);
                    status = deflate(&deflater.z, atEnd ? Z_FINISH : Z_NO_FLUSH);
                    const qint64 have = BufferSize - deflater.z.avail_out;
                    if (status == Z_STREAM_ERROR || out.write(packed.get(), have) != have)
                        return abandon(failed(writeError.arg(zipPath, out.errorString())));
                    entry.compressedSize += have;
                } while (deflater.z.avail_out == 0 || (atEnd && status != Z_STREAM_END));
            }
            done += n;
            if (n > 0 && progress && !progress(done, total))
                return abandon({ZipStatus::Cancelled, QString()});
        }
        entry.crc = quint32(crc);
        if (entry.size >= Limit32 || out.pos() >= Limit32)
            return abandon(failed(QStringLiteral("The files are too large for one zip archive (at most 4 GB and 65535 files).")));
        // The sizes and CRC are known now: write them into the local header.
        const qint64 end = out.pos();
        if (!out.seek(entry.headerOffset) || out.write(localHeader(entry)) < 0 || !out.seek(end))
            return abandon(failed(writeError.arg(zipPath, out.errorString())));
        entries.append(entry);
    }

    const qint64 directoryOffset = out.pos();
    QByteArray directory;
    for (const CentralEntry &entry : entries)
        directory += centralHeader(entry);
    LittleEndian end;
    end.u32(EndSignature).u16(0).u16(0).u16(quint16(entries.size())).u16(quint16(entries.size()))
        .u32(quint32(directory.size())).u32(quint32(directoryOffset)).u16(0);
    if (directoryOffset + directory.size() >= Limit32)
        return abandon(failed(QStringLiteral("The files are too large for one zip archive (at most 4 GB and 65535 files).")));
    if (out.write(directory) != directory.size() || out.write(end.data()) != end.data().size())
        return abandon(failed(writeError.arg(zipPath, out.errorString())));
    if (!out.commit())
        return failed(writeError.arg(zipPath, out.errorString()));
    return {};
}

} // namespace tarnby::archive
