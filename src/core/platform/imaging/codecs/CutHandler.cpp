#include "core/platform/imaging/codecs/CutHandler.h"

#include <QDir>
#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QSaveFile>
#include <QVariant>

#include <algorithm>

namespace tarnby::imaging::codecs {

namespace {

// Palette entries are three 16-bit words and never straddle a 512-byte
// block of the palette file; the header sits at the start of the first.
constexpr int PaletteBlock = 512;
constexpr int EntryBytes = 6;

} // namespace

CutHandler::Header CutHandler::Header::parse(ByteCursor &cursor)
{
    Header h;
    h.width = cursor.u16le();
    h.height = cursor.u16le();
    h.reserved = cursor.u16le();
    return h;
}

CutHandler::PaletteHeader CutHandler::PaletteHeader::parse(ByteCursor &cursor)
{
    PaletteHeader p;
    p.fileId[0] = char(cursor.u8());
    p.fileId[1] = char(cursor.u8());
    p.version = cursor.u16le();
    p.size = cursor.u16le();
    p.fileType = cursor.u8();
    p.subType = cursor.u8();
    p.boardId = cursor.u16le();
    p.graphicsMode = cursor.u16le();
    p.maxIndex = cursor.u16le();
    p.maxRed = cursor.u16le();
    p.maxGreen = cursor.u16le();
    p.maxBlue = cursor.u16le();
    cursor.skip(20); // palette name
    return p;
}

QList<QRgb> CutHandler::parsePalette(QByteArrayView data)
{
    ByteCursor cursor(data);
    const PaletteHeader header = PaletteHeader::parse(cursor);
    if (!cursor.ok() || !header.isValid())
        return {};
    QList<QRgb> colours;
    for (int i = 0; i <= header.maxIndex; ++i) {
        if (cursor.pos() % PaletteBlock + EntryBytes > PaletteBlock)
            cursor.seek((cursor.pos() / PaletteBlock + 1) * PaletteBlock);
        const int r = qMin<int>(cursor.u16le(), header.maxRed);
        const int g = qMin<int>(cursor.u16le(), header.maxGreen);
        const int b = qMin<int>(cursor.u16le(), header.maxBlue);
        if (!cursor.ok())
            return {};
        colours.append(qRgb(r * 255 / header.maxRed, g * 255 / header.maxGreen, b * 255 / header.maxBlue));
    }
    return colours;
}

QByteArray CutHandler::makePalette(const QList<QRgb> &colours)
{
    QByteArray out;
    const auto word = [&out](quint16 v) { out.append(char(v & 0xff)).append(char(v >> 8)); };
    out.append("AH");
    word(0xE3);
    word(0); // size, filled in below
    out.append(char(0x0A)).append(char(0));
    word(0);
    word(0);
    const int count = int(std::clamp<qsizetype>(colours.size(), 1, 256));
    word(quint16(count - 1));
    word(255);
    word(255);
    word(255);
    QByteArray name("Dr. Halo");
    name.resize(20, '\0');
    out.append(name);
    for (int i = 0; i < count; ++i) {
        if (out.size() % PaletteBlock + EntryBytes > PaletteBlock)
            out.append(QByteArray(PaletteBlock - out.size() % PaletteBlock, '\0'));
        const QRgb c = colours.value(i, qRgb(0, 0, 0));
        word(quint16(qRed(c)));
        word(quint16(qGreen(c)));
        word(quint16(qBlue(c)));
    }
    const quint16 size = quint16(qMin<qsizetype>(out.size() - PaletteHeader::Size, 0xffff));
    out[4] = char(size & 0xff);
    out[5] = char(size >> 8);
    return out;
}

QString CutHandler::paletteFileName() const
{
    const auto *file = qobject_cast<QFileDevice *>(device());
    if (!file || file->fileName().isEmpty())
        return {};
    const QFileInfo info(file->fileName());
    const QString base = info.completeBaseName();
    // The palette keeps the picture's base name; its extension may be in
    // either case.
    const QDir dir = info.absoluteDir();
    for (const QString &ext : {QStringLiteral(".PAL"), QStringLiteral(".pal"), QStringLiteral(".Pal")}) {
        if (QFileInfo::exists(dir.filePath(base + ext)))
            return dir.filePath(base + ext);
    }
    return dir.filePath(base + (info.suffix() == info.suffix().toLower() ? QStringLiteral(".pal") : QStringLiteral(".PAL")));
}

bool CutHandler::canRead(QIODevice *device)
{
    // The header has no signature: accept a sane size followed by the first
    // line's byte count and a line that decodes to exactly the width.
    const QByteArray head = peekBytes(device, 6 + 2 + 2048);
    ByteCursor cursor(head);
    const Header h = Header::parse(cursor);
    if (!cursor.ok() || !h.isValid())
        return false;
    const quint16 lineBytes = cursor.u16le();
    if (!cursor.ok() || lineBytes == 0 || lineBytes > cursor.remaining())
        return false;
    ByteCursor line(cursor.bytes(lineBytes));
    int x = 0;
    while (true) {
        const quint8 code = line.u8();
        if (!line.ok())
            return false;
        if (code == 0)
            return x == h.width;
        const int count = code & 0x7f;
        if (code & 0x80)
            line.u8();
        else
            line.skip(count);
        x += count;
    }
}

bool CutHandler::canRead() const
{
    return claim(canRead(device()), "cut");
}

std::optional<QSize> CutHandler::headerSize() const
{
    if (const std::optional<Header> h = peekHeader<Header>(device()))
        return QSize(h->width, h->height);
    return std::nullopt;
}

bool CutHandler::read(QImage *image)
{
    QByteArray data;
    ByteCursor cursor;
    Header h;
    if (!readPictureHeader(&data, &cursor, &h, QStringLiteral("The Dr. Halo picture"), [](const Header &header) {
            return header.isValid()
                ? QString()
                : QStringLiteral("Not a valid Dr. Halo picture (%1 x %2)").arg(header.width).arg(header.height);
        }))
        return false;

    // Every line costs at least its 2-byte count and an end code, so the
    // file's size bounds the height before we allocate.
    if (cursor.remaining() < qint64(h.height) * 3)
        return fail(QStringLiteral("The Dr. Halo picture is truncated"));

    QImage result;
    QString error;
    if (!allocatePicture(QSize(h.width, h.height), QImage::Format_Indexed8, &result, &error))
        return fail(error);

    QList<QRgb> palette;
    const QString palettePath = paletteFileName();
    if (!palettePath.isEmpty()) {
        QFile file(palettePath);
        if (file.open(QIODevice::ReadOnly) && file.size() <= 64 * 1024)
            palette = parsePalette(file.readAll());
    }
    if (palette.isEmpty()) {
        for (int i = 0; i < 256; ++i)
            palette.append(qRgb(i, i, i));
    }
    palette.resize(256, qRgb(0, 0, 0));
    result.setColorTable(palette);

    for (int y = 0; y < h.height; ++y) {
        const quint16 lineBytes = cursor.u16le();
        ByteCursor line(cursor.bytes(lineBytes));
        if (!cursor.ok())
            return fail(QStringLiteral("The Dr. Halo picture is truncated at line %1").arg(y + 1));
        uchar *out = result.scanLine(y);
        memset(out, 0, h.width);
        int x = 0;
        while (true) {
            const quint8 code = line.u8();
            if (!line.ok())
                return fail(QStringLiteral("The Dr. Halo picture has a damaged line %1").arg(y + 1));
            if (code == 0)
                break;
            const int count = code & 0x7f;
            if (x + count > h.width)
                return fail(QStringLiteral("The Dr. Halo picture has a damaged line %1").arg(y + 1));
            if (code & 0x80) {
                const quint8 value = line.u8();
                memset(out + x, value, count);
            } else {
                const QByteArrayView literal = line.bytes(count);
                if (line.ok())
                    memcpy(out + x, literal.data(), count);
            }
            if (!line.ok())
                return fail(QStringLiteral("The Dr. Halo picture has a damaged line %1").arg(y + 1));
            x += count;
        }
    }
    noteFileBits(&result, 8);
    *image = result;
    return true;
}

bool CutHandler::write(const QImage &source)
{
    clearError();
    if (source.isNull())
        return fail(QStringLiteral("There is no picture to save"));
    if (source.width() > 0xffff || source.height() > 0xffff)
        return fail(QStringLiteral("A Dr. Halo picture holds at most 65535 x 65535 pixels"));
    QImage indexed = source.format() == QImage::Format_Indexed8 ? source
                                                                : source.convertToFormat(QImage::Format_Indexed8);
    if (indexed.isNull())
        return fail(QStringLiteral("Not enough memory to convert the picture"));

    QByteArray out;
    const auto word = [](QByteArray &to, quint16 v) { to.append(char(v & 0xff)).append(char(v >> 8)); };
    word(out, quint16(indexed.width()));
    word(out, quint16(indexed.height()));
    word(out, 0);
    const int width = indexed.width();
    QByteArray line;
    for (int y = 0; y < indexed.height(); ++y) {
        const uchar *row = indexed.constScanLine(y);
        line.clear();
        int x = 0;
        while (x < width) {
            int run = 1;
            while (x + run < width && run < 127 && row[x + run] == row[x])
                ++run;
            if (run >= 3) {
                line.append(char(0x80 | run)).append(char(row[x]));
                x += run;
                continue;
            }
            const int start = x;
            int count = 0;
            while (x < width && count < 127) {
                if (x + 2 < width && row[x] == row[x + 1] && row[x] == row[x + 2])
                    break;
                ++x;
                ++count;
            }
            line.append(char(count)).append(reinterpret_cast<const char *>(row + start), count);
        }
        line.append(char(0));
        if (line.size() > 0xffff)
            return fail(QStringLiteral("A line of the picture is too wide for a Dr. Halo picture"));
        word(out, quint16(line.size()));
        out.append(line);
    }

    // The palette goes first: if it cannot be written the picture is not
    // touched either.
    const QString palettePath = paletteFileName();
    if (!palettePath.isEmpty()) {
        QSaveFile palette(palettePath);
        if (!palette.open(QIODevice::WriteOnly) || palette.write(makePalette(indexed.colorTable())) < 0
            || !palette.commit())
            return fail(QStringLiteral("The palette file %1 could not be written").arg(QDir::toNativeSeparators(palettePath)));
    }
    if (device()->write(out) != out.size())
        return fail(QStringLiteral("The Dr. Halo picture could not be written"));
    return true;
}

} // namespace tarnby::imaging::codecs
