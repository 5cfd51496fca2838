#include "ThumbTestPictures.h"

#include <QBuffer>
#include <QDateTime>
#include <QFile>
#include <QImageWriter>

namespace thumbtest {

QImage quadrants(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        const bool bottom = y >= height / 2;
        for (int x = 0; x < width; ++x) {
            const bool right = x >= width / 2;
            const int shade = 40 * x / width;
            QRgb c;
            if (!bottom && !right)
                c = qRgb(220 - shade, 20, 20);
            else if (!bottom)
                c = qRgb(20, 200 - shade, 20);
            else if (!right)
                c = qRgb(20, 20, 210 - shade);
            else
                c = qRgb(235 - shade, 235 - shade, 235 - shade);
            line[x] = c;
        }
    }
    return image;
}

bool save(const QImage &image, const QString &path, const char *format, int quality)
{
    QImageWriter writer(path, format);
    writer.setQuality(quality);
    return writer.write(image);
}

double meanDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size() || a.isNull())
        return 255;
    const QImage x = a.convertToFormat(QImage::Format_ARGB32);
    const QImage y = b.convertToFormat(QImage::Format_ARGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto *p = reinterpret_cast<const QRgb *>(x.constScanLine(row));
        const auto *q = reinterpret_cast<const QRgb *>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col) {
            sum += qAbs(qRed(p[col]) - qRed(q[col])) + qAbs(qGreen(p[col]) - qGreen(q[col]))
                   + qAbs(qBlue(p[col]) - qBlue(q[col])) + qAbs(qAlpha(p[col]) - qAlpha(q[col]));
        }
    }
    return sum / (4.0 * x.width() * x.height());
}

QByteArray encode(const QImage &image, const char *format, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    return writer.write(image) ? bytes : QByteArray();
}

QByteArray encodeProgressive(const QImage &image, int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "JPEG");
    writer.setQuality(quality);
    writer.setProgressiveScanWrite(true);
    return writer.write(image) ? bytes : QByteArray();
}

std::pair<qsizetype, qsizetype> firstScan(const QByteArray &jpeg)
{
    const auto byte = [&jpeg](qsizetype i) { return i < jpeg.size() ? uchar(jpeg.at(i)) : 0; };
    qsizetype pos = 2;
    while (pos + 4 <= jpeg.size() && byte(pos) == 0xFF) {
        const int length = byte(pos + 2) << 8 | byte(pos + 3);
        if (byte(pos + 1) == 0xDA) {
            const qsizetype start = pos + 2 + length;
            // Inside entropy-coded data 0xFF is followed by a stuffed zero
            // or a restart marker; anything else starts the next segment.
            for (qsizetype i = start; i + 1 < jpeg.size(); ++i) {
                const uchar next = byte(i + 1);
                if (byte(i) == 0xFF && next != 0x00 && next != 0xFF && (next < 0xD0 || next > 0xD7))
                    return {start, i};
            }
            return {-1, -1};
        }
        pos += 2 + length;
    }
    return {-1, -1};
}

QByteArray jpegWithExif(const QImage &image, int orientation, const QByteArray &embedded)
{
    return insertExif(encode(image, "JPEG"), orientation, embedded);
}

QByteArray insertExif(const QByteArray &jpeg, int orientation, const QByteArray &embedded)
{
    // Little-endian TIFF: IFD0 with the orientation, IFD1 pointing at the
    // embedded JPEG, which follows right after.
    QByteArray tiff;
    const auto u16 = [&tiff](int v) { tiff.append(char(v & 0xFF)).append(char((v >> 8) & 0xFF)); };
    const auto u32 = [&](quint32 v) { u16(int(v & 0xFFFF)); u16(int(v >> 16)); };
    tiff.append("II");
    u16(42);
    u32(8);
    u16(1); // IFD0 at 8
    u16(0x0112); u16(3); u32(1); u16(orientation); u16(0);
    u32(embedded.isEmpty() ? 0 : 26);
    if (!embedded.isEmpty()) {
        u16(2); // IFD1 at 26, the data at 56
        u16(0x0201); u16(4); u32(1); u32(56);
        u16(0x0202); u16(4); u32(1); u32(quint32(embedded.size()));
        u32(0);
        tiff.append(embedded);
    }
    QByteArray app1("\xFF\xE1", 2);
    const int length = 2 + 6 + int(tiff.size());
    app1.append(char(length >> 8)).append(char(length & 0xFF));
    app1.append("Exif\0\0", 6);
    app1.append(tiff);
    return jpeg.left(2) + app1 + jpeg.mid(2);
}

bool setModified(const QString &path, qint64 secsSinceEpoch)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite)
           && file.setFileTime(QDateTime::fromSecsSinceEpoch(secsSinceEpoch), QFileDevice::FileModificationTime);
}

} // namespace thumbtest
