#include "core/platform/imaging/codecs/PsdHandler.h"

#include <QDataStream>
#include <QIODevice>
#include <QVariant>
#include <QtEndian>

#include <cstring>

namespace tarnby::imaging::codecs {

namespace {

// Image resources that this reader uses.
constexpr quint16 ResolutionInfoId = 1005;
constexpr quint16 TransparencyIndexId = 1047;

// A packed row is at most one header byte per 128 bytes longer than the row;
// a count well beyond that is damage, and reading it would only waste memory.
qint64 maxPackedRow(qint64 rowBytes)
{
    return rowBytes + rowBytes / 64 + 16;
}

// Bytes left on a device whose size is known; -1 on a sequential device.
qint64 bytesLeft(const QIODevice *device)
{
    return device->isSequential() ? -1 : device->size() - device->pos();
}

bool skipBytes(QDataStream &stream, quint64 count)
{
    while (count > 0) {
        const int step = int(qMin<quint64>(count, 1 << 30));
        if (stream.skipRawData(step) != step)
            return false;
        count -= quint64(step);
    }
    return stream.status() == QDataStream::Ok;
}

struct Resources {
    double xDpi = 0;
    double yDpi = 0;
    int transparentIndex = -1;
};

// Walks the image resource block: "8BIM", id, a Pascal name padded to even
// length, a size and the data padded to even length. A damaged block ends the
// walk; what was found before it is kept, since the picture does not depend
// on it.
Resources parseResources(QByteArrayView block)
{
    Resources found;
    ByteCursor cursor(block);
    while (cursor.remaining() >= 12) {
        const QByteArrayView signature = cursor.bytes(4);
        if (signature != "8BIM")
            break;
        const quint16 id = cursor.u16be();
        const quint8 nameLength = cursor.u8();
        cursor.skip(nameLength + ((nameLength + 1) % 2));
        const quint32 size = cursor.u32be();
        if (!cursor.ok() || size > quint32(cursor.remaining()))
            break;
        ByteCursor data(cursor.bytes(size));
        cursor.skip(size % 2);
        if (id == ResolutionInfoId && size >= 16) {
            // Fixed 16.16 pixels per inch, whatever unit the document shows.
            const quint32 hRes = data.u32be();
            data.skip(4);
            const quint32 vRes = data.u32be();
            if (data.ok()) {
                found.xDpi = hRes / 65536.0;
                found.yDpi = vRes / 65536.0;
            }
        } else if (id == TransparencyIndexId && size >= 2) {
            found.transparentIndex = data.u16be();
        }
        if (!cursor.ok())
            break;
    }
    return found;
}

} // namespace

PsdHandler::Header PsdHandler::Header::parse(ByteCursor &cursor)
{
    Header h;
    const QByteArrayView signature = cursor.bytes(4);
    if (signature.size() == 4)
        std::memcpy(h.signature, signature.data(), 4);
    h.version = cursor.u16be();
    for (quint8 &r : h.reserved)
        r = cursor.u8();
    h.channels = cursor.u16be();
    h.height = cursor.u32be();
    h.width = cursor.u32be();
    h.depth = cursor.u16be();
    h.colorMode = cursor.u16be();
    return h;
}

bool PsdHandler::Header::isValid() const
{
    if (std::memcmp(signature, "8BPS", 4) != 0 || (version != 1 && version != 2))
        return false;
    if (channels < 1 || channels > 56)
        return false;
    if (width < 1 || height < 1 || width > maxSide() || height > maxSide())
        return false;
    if (depth != 1 && depth != 8 && depth != 16 && depth != 32)
        return false;
    switch (colorMode) {
    case Bitmap: case Grayscale: case Indexed: case RGB: case CMYK: case Multichannel: case Duotone: case Lab:
        return true;
    default:
        return false;
    }
}

bool PsdHandler::Header::isDecodedHere() const
{
    if (!isValid())
        return false;
    switch (colorMode) {
    case Bitmap: return depth == 1;
    case Grayscale: return depth == 8 || depth == 16;
    case Indexed: return depth == 8;
    default: return false;
    }
}

bool PsdHandler::canRead(QIODevice *device)
{
    const std::optional<Header> h = peekHeader<Header>(device);
    return h && h->isDecodedHere();
}

bool PsdHandler::canRead() const
{
    return claim(canRead(device()), "psd");
}

std::optional<QSize> PsdHandler::headerSize() const
{
    const std::optional<Header> h = peekHeader<Header>(device());
    if (!h || !h->isDecodedHere())
        return std::nullopt;
    return QSize(int(h->width), int(h->height));
}

QImage::Format PsdHandler::readFormat() const
{
    const std::optional<Header> h = peekHeader<Header>(device());
    if (!h || !h->isDecodedHere())
        return QImage::Format_Invalid;
    switch (h->colorMode) {
    case Bitmap: return QImage::Format_Mono;
    case Indexed: return QImage::Format_Indexed8;
    default: return h->depth == 16 ? QImage::Format_Grayscale16 : QImage::Format_Grayscale8;
    }
}

bool PsdHandler::unpackBits(QByteArrayView packed, QByteArray &out)
{
    ByteCursor in(packed);
    qsizetype x = 0;
    const qsizetype length = out.size();
    char *row = out.data();
    while (x < length) {
        const qint8 n = in.i8();
        if (!in.ok())
            return false;
        if (n >= 0) {
            const QByteArrayView literal = in.bytes(n + 1);
            if (!in.ok() || x + literal.size() > length)
                return false;
            std::memcpy(row + x, literal.data(), size_t(literal.size()));
            x += literal.size();
        } else if (n != -128) { // -128 is a no-op
            const int count = 1 - n;
            const quint8 value = in.u8();
            if (!in.ok() || x + count > length)
                return false;
            std::memset(row + x, value, size_t(count));
            x += count;
        }
    }
    return true;
}

bool PsdHandler::read(QImage *image)
{
    clearError();
    if (takeFrame() < 0)
        return false;
    QIODevice *dev = device();
    if (!dev || !dev->isReadable())
        return fail(QStringLiteral("The Photoshop file cannot be read"));

    const QByteArray head = dev->read(Header::Size);
    ByteCursor headCursor(head);
    const Header h = Header::parse(headCursor);
    if (!headCursor.ok())
        return fail(QStringLiteral("The Photoshop file is shorter than its header"));
    if (std::memcmp(h.signature, "8BPS", 4) != 0)
        return fail(QStringLiteral("Not a Photoshop file"));
    if (!h.isValid())
        return fail(QStringLiteral("The Photoshop header is damaged (version %1, %2 channels, %3 x %4 pixels, %5 bits)")
                        .arg(h.version).arg(h.channels).arg(h.width).arg(h.height).arg(h.depth));
    if (!h.isDecodedHere())
        return fail(QStringLiteral("Photoshop pictures in colour mode %1 at %2 bits are not read here")
                        .arg(h.colorMode).arg(h.depth));

    QDataStream stream(dev);
    stream.setByteOrder(QDataStream::BigEndian);

    // Colour mode data: the colour table of an indexed picture (256 reds, 256
    // greens, 256 blues); other modes keep nothing here that the merged
    // picture needs.
    quint32 colourDataLength = 0;
    stream >> colourDataLength;
    if (stream.status() != QDataStream::Ok)
        return fail(QStringLiteral("The Photoshop file is truncated before its colour data"));
    if (const qint64 left = bytesLeft(dev); left >= 0 && colourDataLength > left)
        return fail(QStringLiteral("The Photoshop colour data runs past the end of the file"));
    QList<QRgb> palette;
    if (h.colorMode == Indexed) {
        if (colourDataLength < 768)
            return fail(QStringLiteral("The indexed Photoshop file has no colour table"));
        const QByteArray table = dev->read(768);
        if (table.size() != 768)
            return fail(QStringLiteral("The Photoshop colour table is truncated"));
        const auto *t = reinterpret_cast<const uchar *>(table.constData());
        palette.reserve(256);
        for (int i = 0; i < 256; ++i)
            palette.append(qRgb(t[i], t[256 + i], t[512 + i]));
        colourDataLength -= 768;
    }
    if (!skipBytes(stream, colourDataLength))
        return fail(QStringLiteral("The Photoshop file is truncated in its colour data"));

    // Image resources: the resolution and the transparent index.
    quint32 resourcesLength = 0;
    stream >> resourcesLength;
    if (stream.status() != QDataStream::Ok)
        return fail(QStringLiteral("The Photoshop file is truncated before its resources"));
    if (const qint64 left = bytesLeft(dev); left >= 0 && resourcesLength > left)
        return fail(QStringLiteral("The Photoshop resources run past the end of the file"));
    // The size check above bounds the block by the file on disk; a sequential
    // device gets no more than the codecs' file bound.
    if (resourcesLength > MaxFileBytes)
        return fail(QStringLiteral("The Photoshop resources are too large"));
    const QByteArray resourceBlock = dev->read(resourcesLength);
    if (resourceBlock.size() != qsizetype(resourcesLength))
        return fail(QStringLiteral("The Photoshop file is truncated in its resources"));
    const Resources resources = parseResources(resourceBlock);

    // Layers and masks are skipped: the merged picture follows them.
    quint64 layersLength = 0;
    if (h.isLargeDocument()) {
        stream >> layersLength;
    } else {
        quint32 length = 0;
        stream >> length;
        layersLength = length;
    }
    if (stream.status() != QDataStream::Ok)
        return fail(QStringLiteral("The Photoshop file is truncated before its layers"));
    if (const qint64 left = bytesLeft(dev); left >= 0 && layersLength > quint64(left))
        return fail(QStringLiteral("The Photoshop layer data runs past the end of the file"));
    if (!skipBytes(stream, layersLength))
        return fail(QStringLiteral("The Photoshop file is truncated in its layer data"));

    quint16 compression = 0;
    stream >> compression;
    if (stream.status() != QDataStream::Ok)
        return fail(QStringLiteral("The Photoshop file holds no merged picture"));
    if (compression == Zip || compression == ZipPrediction)
        return fail(QStringLiteral("The Photoshop merged picture is ZIP-compressed, which is not read here"));
    if (compression != Raw && compression != PackBits)
        return fail(QStringLiteral("The Photoshop merged picture has an unknown compression (%1)").arg(compression));

    const qint64 rowBytes = (qint64(h.width) * h.depth + 7) / 8;
    const qint64 height = h.height;
    // Only the first channel is read; the others (alpha, spot colours) follow
    // it, plane after plane. The size of the file bounds the picture before
    // anything is allocated.
    QList<quint32> packedLengths;
    if (compression == Raw) {
        if (const qint64 left = bytesLeft(dev); left >= 0 && left < rowBytes * height)
            return fail(QStringLiteral("The Photoshop file is truncated in its merged picture"));
    } else {
        const int entryBytes = h.isLargeDocument() ? 4 : 2;
        const qint64 tableBytes = qint64(h.channels) * height * entryBytes;
        if (const qint64 left = bytesLeft(dev); left >= 0 && left < tableBytes + height)
            return fail(QStringLiteral("The Photoshop file is truncated in its merged picture"));
        packedLengths.reserve(height);
        for (qint64 y = 0; y < height; ++y) {
            quint32 length = 0;
            if (h.isLargeDocument()) {
                stream >> length;
            } else {
                quint16 shortLength = 0;
                stream >> shortLength;
                length = shortLength;
            }
            if (stream.status() != QDataStream::Ok)
                return fail(QStringLiteral("The Photoshop file is truncated in its row table"));
            if (length > maxPackedRow(rowBytes))
                return fail(QStringLiteral("The Photoshop row table is damaged at row %1").arg(y));
            packedLengths.append(length);
        }
        if (!skipBytes(stream, quint64(h.channels - 1) * quint64(height) * quint64(entryBytes)))
            return fail(QStringLiteral("The Photoshop file is truncated in its row table"));
    }

    QImage result;
    QString error;
    QImage::Format format = QImage::Format_Grayscale8;
    if (h.colorMode == Bitmap)
        format = QImage::Format_Mono;
    else if (h.colorMode == Indexed)
        format = QImage::Format_Indexed8;
    else if (h.depth == 16)
        format = QImage::Format_Grayscale16;
    if (!allocatePicture(QSize(int(h.width), int(h.height)), format, &result, &error))
        return fail(error);
    if (h.colorMode == Bitmap) {
        result.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)}); // a set bit is black
    } else if (h.colorMode == Indexed) {
        if (resources.transparentIndex >= 0 && resources.transparentIndex < 256)
            palette[resources.transparentIndex] &= 0x00FFFFFF;
        result.setColorTable(palette);
    }

    QByteArray row(rowBytes, '\0');
    for (int y = 0; y < int(height); ++y) {
        if (compression == Raw) {
            if (stream.readRawData(row.data(), int(rowBytes)) != rowBytes)
                return fail(QStringLiteral("The Photoshop file is truncated at row %1").arg(y));
        } else {
            const QByteArray packed = dev->read(packedLengths.at(y));
            if (packed.size() != qsizetype(packedLengths.at(y)))
                return fail(QStringLiteral("The Photoshop file is truncated at row %1").arg(y));
            if (!unpackBits(packed, row))
                return fail(QStringLiteral("The Photoshop merged picture has a damaged row %1").arg(y));
        }
        uchar *line = result.scanLine(y);
        if (h.depth == 16) {
            auto *samples = reinterpret_cast<quint16 *>(line);
            for (quint32 x = 0; x < h.width; ++x)
                samples[x] = qFromBigEndian<quint16>(row.constData() + 2 * x);
        } else {
            std::memcpy(line, row.constData(), size_t(rowBytes));
        }
    }

    if (resources.xDpi > 0 && resources.yDpi > 0) {
        result.setDotsPerMeterX(qRound(resources.xDpi / 0.0254));
        result.setDotsPerMeterY(qRound(resources.yDpi / 0.0254));
    }
    noteFileBits(&result, h.depth);
    *image = result;
    return true;
}

} // namespace tarnby::imaging::codecs
