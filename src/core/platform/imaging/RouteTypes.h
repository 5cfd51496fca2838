#pragma once

#include "core/platform/imaging/PictureLayer.h"

// What each reading route hands back to the picture layer. Internal to the
// picture layer.
namespace tarnby::imaging::detail {

struct Decoded {
    QList<PictureFrame> frames;
    int bitsPerPixel = 0; // of the file, when the library tells it; 0: judged from the image
    QString errorString;

    bool ok() const { return errorString.isEmpty() && !frames.isEmpty() && !frames.constFirst().image.isNull(); }
};

inline Decoded failure(const QString &message)
{
    Decoded d;
    d.errorString = message;
    return d;
}

// Whether width x height is within the layer's pixel bound.
inline bool withinPixelBound(qint64 width, qint64 height)
{
    return width > 0 && height > 0 && width <= 1 << 20 && height <= 1 << 20 && width * height <= MaxPixels;
}

inline QString tooLargeMessage(qint64 width, qint64 height)
{
    return QStringLiteral("The picture is too large to load (%1 x %2 pixels; at most %3 megapixels are loaded).")
        .arg(width)
        .arg(height)
        .arg(MaxPixels / (1024 * 1024));
}

} // namespace tarnby::imaging::detail
