#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

// What the Save As dialog of a picture offers: the bits per pixel that the
// chosen format's writer keeps (a file saved at one of them reads back at that
// depth) and, for JPEG, a quality, both preset from the picture shown. Pure
// functions, safe on any thread.
namespace tarnby::viewer {

inline constexpr int DefaultJpegQuality = 75;

struct PictureSaveChoices {
    QList<int> depths;     // ascending; one entry when the format has no choice
    int depth = 0;         // preset: the picture's own, or the nearest the format writes
    bool hasQuality = false;
    int quality = 0;       // 1 to 100, preset from the picture's own file where it is a JPEG
};

// The depths a picture saved under extension (any case, no dot) keeps;
// empty for an extension that no picture writer serves.
QList<int> writableDepths(const QString &extension);
// True for the lossy formats that take a quality (JPG, JPE).
bool takesQuality(const QString &extension);
// The picture's own depth when the format writes it; else the smallest
// offered depth above it (nothing is lost); else the largest offered.
int presetDepth(const QList<int> &depths, int pictureBits);

// The quality (1 to 100, on the scale the common JPEG encoders use) that the
// first quantization table of a JPEG file's head corresponds to; 0 when the
// data is no JPEG or holds no such table before the image data.
int jpegQuality(const QByteArray &head);
// The same for a file; reads at most its first 64 KiB.
int jpegQualityOfFile(const QString &path);

// The choices for saving a picture of pictureBits, shown from sourcePath (may
// be empty or an Internet address), under extension.
PictureSaveChoices saveChoicesFor(const QString &extension, int pictureBits, const QString &sourcePath);

} // namespace tarnby::viewer
