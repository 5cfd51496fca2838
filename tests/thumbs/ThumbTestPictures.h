#pragma once

#include <QImage>
#include <QString>

// Pictures the thumbnail tests make for themselves.
namespace thumbtest {

// Four coloured quadrants (red, green / blue, white) with a soft gradient, so
// that a swapped channel, a wrong turn or a wrong crop shows in the numbers.
QImage quadrants(int width, int height);

// Writes image to path in format ("JPEG", "PNG", "BMP"); false on failure.
bool save(const QImage &image, const QString &path, const char *format, int quality = 92);

// Mean absolute difference per channel (0-255) between two pictures of the
// same size, alpha included; 255 when the sizes differ.
double meanDifference(const QImage &a, const QImage &b);

// A JPEG of image with an EXIF block inserted after its start marker: the
// given orientation (1-8) and, unless embedded is empty, that JPEG as the
// camera's own thumbnail.
QByteArray jpegWithExif(const QImage &image, int orientation, const QByteArray &embedded);
QByteArray encode(const QImage &image, const char *format, int quality = 92);

// Sets the file's modification time to secsSinceEpoch.
bool setModified(const QString &path, qint64 secsSinceEpoch);

} // namespace thumbtest
