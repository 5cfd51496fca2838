#include "core/platform/imaging/codecs/ClpHandler.h"

#include <QBuffer>
#include <QIODevice>
#include <QImageReader>

namespace tarnby::imaging::codecs {

ClpHandler::FileHeader ClpHandler::FileHeader::parse(ByteCursor &cursor)
{
    FileHeader h;
    h.fileId = cursor.u16le();
    h.formatCount = cursor.u16le();
    return h;
}

ClpHandler::FormatEntry ClpHandler::FormatEntry::parse(ByteCursor &cursor, bool win3)
{
    FormatEntry e;
    // 16-bit files: WORD id, DWORD length, DWORD offset, 79 name bytes.
    // 32-bit files: DWORD id, DWORD length, DWORD offset, 79 UTF-16 names.
    e.formatId = win3 ? cursor.u16le() : cursor.u32le();
    e.dataLen = cursor.u32le();
    e.dataOffset = cursor.u32le();
    cursor.skip(win3 ? 79 : 158);
    return e;
}

bool ClpHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, 4);
    ByteCursor cursor(head);
    const FileHeader h = FileHeader::parse(cursor);
    return cursor.ok() && h.isValid();
}

bool ClpHandler::canRead() const
{
    return claim(canRead(device()), "clp");
}

bool ClpHandler::read(QImage *image)
{
    QByteArray data;
    if (!readWholePicture(&data))
        return false;

    ByteCursor cursor(data);
    const FileHeader header = FileHeader::parse(cursor);
    if (!cursor.ok() || !header.isValid())
        return fail(QStringLiteral("Not a clipboard file"));

    FormatEntry chosen;
    bool found = false;
    bool sawBitmap = false;
    for (int i = 0; i < header.formatCount; ++i) {
        const FormatEntry entry = FormatEntry::parse(cursor, header.isWin3());
        if (!cursor.ok())
            return fail(QStringLiteral("The clipboard file is truncated in its directory"));
        if (entry.formatId == FormatEntry::CfBitmap)
            sawBitmap = true;
        if (entry.formatId == FormatEntry::CfDib || (entry.formatId == FormatEntry::CfDibV5 && !found)) {
            chosen = entry;
            found = true;
        }
    }
    if (!found) {
        return fail(sawBitmap ? QStringLiteral("The clipboard file holds only a device-dependent bitmap")
                              : QStringLiteral("The clipboard file holds no picture"));
    }
    if (chosen.dataOffset > quint32(data.size()) || chosen.dataLen > quint32(data.size()) - chosen.dataOffset)
        return fail(QStringLiteral("The clipboard file is truncated"));

    // The DIB is a BMP file without its 14-byte file header: rebuild that
    // header (with the offset of the pixels) and let Qt's reader decode it.
    ByteCursor dib(QByteArrayView(data).sliced(chosen.dataOffset, chosen.dataLen));
    const quint32 biSize = dib.u32le();
    const qint32 biWidth = qint32(dib.u32le());
    const qint32 biHeight = qint32(dib.u32le());
    dib.u16le(); // planes
    const quint16 biBitCount = dib.u16le();
    const quint32 biCompression = dib.u32le();
    dib.skip(12);
    const quint32 biClrUsed = dib.u32le();
    if (!dib.ok() || biSize < 40 || biSize > chosen.dataLen)
        return fail(QStringLiteral("The clipboard bitmap has a damaged header"));
    const qint64 height = qAbs(qint64(biHeight));
    if (biWidth <= 0 || height == 0)
        return fail(QStringLiteral("The clipboard bitmap has no width or height"));
    if (qint64(biWidth) * height > MaxPixels)
        return fail(QStringLiteral("The picture is too large (%1 x %2 pixels)").arg(biWidth).arg(height));

    qint64 paletteBytes = 0;
    if (biBitCount <= 8)
        paletteBytes = 4LL * (biClrUsed ? qMin<quint32>(biClrUsed, 256) : (1u << biBitCount));
    else if (biSize == 40 && biCompression == 3) // BI_BITFIELDS: three masks follow the header
        paletteBytes = 12;
    const qint64 pixelOffset = 14 + qint64(biSize) + paletteBytes;
    if (pixelOffset - 14 > chosen.dataLen)
        return fail(QStringLiteral("The clipboard bitmap is truncated"));
    // Qt's reader fills missing rows quietly; plain bitmaps must be whole.
    if (biCompression == 0 || biCompression == 3) {
        const qint64 stride = ((qint64(biWidth) * biBitCount + 31) / 32) * 4;
        if (pixelOffset - 14 + stride * height > chosen.dataLen)
            return fail(QStringLiteral("The clipboard bitmap is truncated"));
    }

    QByteArray bmp;
    bmp.reserve(14 + chosen.dataLen);
    const quint32 fileSize = 14 + chosen.dataLen;
    const char fileHeader[14] = {'B',
                                 'M',
                                 char(fileSize & 0xff),
                                 char((fileSize >> 8) & 0xff),
                                 char((fileSize >> 16) & 0xff),
                                 char(fileSize >> 24),
                                 0,
                                 0,
                                 0,
                                 0,
                                 char(pixelOffset & 0xff),
                                 char((pixelOffset >> 8) & 0xff),
                                 char((pixelOffset >> 16) & 0xff),
                                 char(pixelOffset >> 24)};
    bmp.append(fileHeader, 14);
    bmp.append(data.constData() + chosen.dataOffset, chosen.dataLen);
    QBuffer buffer(&bmp);
    buffer.open(QIODevice::ReadOnly);
    QImageReader reader(&buffer, "bmp");
    QImage result = reader.read();
    if (result.isNull())
        return fail(QStringLiteral("The clipboard bitmap cannot be read: %1").arg(reader.errorString()));
    noteFileBits(&result, biBitCount);
    *image = result;
    return true;
}

} // namespace tarnby::imaging::codecs
