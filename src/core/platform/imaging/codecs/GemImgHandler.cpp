#include "core/platform/imaging/codecs/GemImgHandler.h"

#include <QIODevice>
#include <QVariant>

namespace tarnby::imaging::codecs {

namespace {

// The standard colours of the sixteen pixel values of four-plane pictures
// (pixel values, not pen numbers: value 0 is white and 15 black).
const QRgb StandardColours[16] = {
    qRgb(255, 255, 255), qRgb(255, 0, 0),   qRgb(0, 255, 0),   qRgb(255, 255, 0),
    qRgb(0, 0, 255),     qRgb(255, 0, 255), qRgb(0, 255, 255), qRgb(170, 170, 170),
    qRgb(85, 85, 85),    qRgb(170, 0, 0),   qRgb(0, 170, 0),   qRgb(170, 170, 0),
    qRgb(0, 0, 170),     qRgb(170, 0, 170), qRgb(0, 170, 170), qRgb(0, 0, 0),
};

constexpr int MaxHeaderWords = 8 + 3 + 3 * 256;

} // namespace

GemImgHandler::Header GemImgHandler::Header::parse(ByteCursor &cursor)
{
    Header h;
    h.version = cursor.u16be();
    h.headerLength = cursor.u16be();
    h.planes = cursor.u16be();
    h.patternLength = cursor.u16be();
    h.pixelWidth = cursor.u16be();
    h.pixelHeight = cursor.u16be();
    h.lineWidth = cursor.u16be();
    h.lines = cursor.u16be();
    return h;
}

bool GemImgHandler::Header::isValid() const
{
    return version >= 1 && version <= 3 && headerLength >= 8 && headerLength <= MaxHeaderWords && planes >= 1
        && planes <= 8 && patternLength >= 1 && patternLength <= 8 && lineWidth > 0 && lines > 0;
}

bool GemImgHandler::canRead(QIODevice *device)
{
    return peekHeader<Header>(device).has_value();
}

bool GemImgHandler::canRead() const
{
    return claim(canRead(device()), "img");
}

std::optional<QSize> GemImgHandler::headerSize() const
{
    if (const std::optional<Header> h = peekHeader<Header>(device()))
        return QSize(h->lineWidth, h->lines);
    return std::nullopt;
}

bool GemImgHandler::read(QImage *image)
{
    QByteArray data;
    ByteCursor cursor;
    Header h;
    if (!readPictureHeader(&data, &cursor, &h, QStringLiteral("The GEM picture"), [](const Header &header) {
            return header.isValid() ? QString()
                                    : QStringLiteral("Not a valid GEM picture (%1 x %2, %3 planes)")
                                          .arg(header.lineWidth)
                                          .arg(header.lines)
                                          .arg(header.planes);
        }))
        return false;

    const int width = h.lineWidth;
    const int height = h.lines;
    const int planes = h.planes;
    const int rowBytes = (width + 7) / 8;

    QList<QRgb> palette;
    if (h.headerLength >= 11 && cursor.bytes(4) == "XIMG" && cursor.u16be() == 0) {
        // XIMG: colour model 0 is RGB, each level in thousandths.
        const int colours = 1 << planes;
        if (h.headerLength >= 11 + 3 * colours) {
            for (int i = 0; i < colours; ++i) {
                const int r = qMin<int>(cursor.u16be(), 1000), g = qMin<int>(cursor.u16be(), 1000),
                          b = qMin<int>(cursor.u16be(), 1000);
                palette.append(qRgb(r * 255 / 1000, g * 255 / 1000, b * 255 / 1000));
            }
        }
    }
    if (!cursor.seek(qsizetype(h.headerLength) * 2))
        return fail(QStringLiteral("The GEM picture is shorter than its header"));
    if (palette.isEmpty()) {
        if (planes == 1) {
            palette = {qRgb(255, 255, 255), qRgb(0, 0, 0)};
        } else if (planes <= 4) {
            // Fewer planes use the first colours, with the last value black.
            const int colours = 1 << planes;
            for (int i = 0; i < colours - 1; ++i)
                palette.append(StandardColours[i]);
            palette.append(qRgb(0, 0, 0));
        } else {
            const int colours = 1 << planes;
            for (int i = 0; i < colours; ++i) {
                const int v = 255 - i * 255 / (colours - 1);
                palette.append(qRgb(v, v, v));
            }
        }
    }

    if (qint64(width) * height > MaxPixels)
        return fail(QStringLiteral("The picture is too large (%1 x %2 pixels)").arg(width).arg(height));
    // The densest codes give at most 255 pattern repeats per few bytes and
    // 255 repeats of a line; a file shorter than that minimum cannot hold the
    // picture it claims, so refuse it before allocating.
    const qint64 bytesPerPlaneRow = (rowBytes + 255LL * h.patternLength - 1) / (255LL * h.patternLength);
    const qint64 minimum = ((height + 254) / 255) * planes * bytesPerPlaneRow;
    if (cursor.remaining() < minimum)
        return fail(QStringLiteral("The GEM picture is truncated"));

    QImage result;
    QString error;
    if (!allocatePicture(QSize(width, height), planes == 1 ? QImage::Format_Mono : QImage::Format_Indexed8, &result,
                         &error))
        return fail(error);
    result.setColorTable(palette);
    if (h.pixelWidth > 0 && h.pixelHeight > 0) {
        result.setDotsPerMeterX(int(1000000 / h.pixelWidth));
        result.setDotsPerMeterY(int(1000000 / h.pixelHeight));
    }

    QByteArray planeRows(qsizetype(rowBytes) * planes, '\0');
    const auto truncated = [this] { return fail(QStringLiteral("The GEM picture is truncated")); };
    int y = 0;
    while (y < height) {
        int repeat = 1;
        // A line may start with 00 00 FF n: the line that follows shows n times.
        if (cursor.remaining() >= 4 && cursor.data()[cursor.pos()] == 0 && cursor.data()[cursor.pos() + 1] == 0
            && uchar(cursor.data()[cursor.pos() + 2]) == 0xFF) {
            cursor.skip(3);
            repeat = cursor.u8();
        }
        planeRows.fill('\0');
        for (int p = 0; p < planes; ++p) {
            uchar *row = reinterpret_cast<uchar *>(planeRows.data()) + qsizetype(rowBytes) * p;
            int x = 0;
            while (x < rowBytes) {
                const quint8 op = cursor.u8();
                if (!cursor.ok())
                    return truncated();
                if (op == 0x00) {
                    const quint8 count = cursor.u8();
                    if (count == 0) {
                        // A line-repeat code inside a line: take its count
                        // for the line being read.
                        cursor.u8();
                        repeat = cursor.u8();
                        if (!cursor.ok())
                            return truncated();
                        continue;
                    }
                    const QByteArrayView pattern = cursor.bytes(h.patternLength);
                    if (!cursor.ok())
                        return truncated();
                    for (int i = 0; i < count && x < rowBytes; ++i) {
                        for (int j = 0; j < h.patternLength && x < rowBytes; ++j)
                            row[x++] = uchar(pattern[j]);
                    }
                } else if (op == 0x80) {
                    const quint8 count = cursor.u8();
                    const QByteArrayView bits = cursor.bytes(count);
                    if (!cursor.ok())
                        return truncated();
                    for (int i = 0; i < count && x < rowBytes; ++i)
                        row[x++] = uchar(bits[i]);
                } else {
                    const int count = op & 0x7f;
                    const uchar fill = (op & 0x80) ? 0xFF : 0x00;
                    for (int i = 0; i < count && x < rowBytes; ++i)
                        row[x++] = fill;
                }
            }
        }
        for (int r = 0; r < qMax(repeat, 1) && y < height; ++r, ++y) {
            uchar *out = result.scanLine(y);
            if (planes == 1) {
                memcpy(out, planeRows.constData(), rowBytes);
                continue;
            }
            for (int x = 0; x < width; ++x) {
                int index = 0;
                for (int p = 0; p < planes; ++p) {
                    if (uchar(planeRows[qsizetype(rowBytes) * p + (x >> 3)]) & (0x80 >> (x & 7)))
                        index |= 1 << p;
                }
                out[x] = uchar(index);
            }
        }
    }
    noteFileBits(&result, planes);
    *image = result;
    return true;
}

} // namespace tarnby::imaging::codecs
