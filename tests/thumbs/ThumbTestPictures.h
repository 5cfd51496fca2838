#pragma once

#include <QImage>
#include <QString>

#include <utility>

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
// The same for a JPEG already encoded.
QByteArray insertExif(const QByteArray &jpeg, int orientation, const QByteArray &embedded = {});
QByteArray encode(const QImage &image, const char *format, int quality = 92);
// A progressive JPEG: a first scan with the DC of every component, then
// the AC detail in several scans.
QByteArray encodeProgressive(const QImage &image, int quality = 92);
// Where the first scan's entropy-coded data of a JPEG begins and ends (the
// next marker); {-1, -1} when there is none.
std::pair<qsizetype, qsizetype> firstScan(const QByteArray &jpeg);

// Sets the file's modification time to secsSinceEpoch.
bool setModified(const QString &path, qint64 secsSinceEpoch);

} // namespace thumbtest
