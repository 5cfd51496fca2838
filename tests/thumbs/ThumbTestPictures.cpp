#include "ThumbTestPictures.h"

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

bool setModified(const QString &path, qint64 secsSinceEpoch)
{
    QFile file(path);
    return file.open(QIODevice::ReadWrite)
           && file.setFileTime(QDateTime::fromSecsSinceEpoch(secsSinceEpoch), QFileDevice::FileModificationTime);
}

} // namespace thumbtest
