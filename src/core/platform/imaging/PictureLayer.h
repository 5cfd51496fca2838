#pragma once

#include <QImage>
#include <QList>
#include <QString>

// The picture layer: the one road by which windows and the CLI load, save and
// describe pictures, whatever library reads the format underneath.
//
// All functions are reentrant and may be called from worker threads; each call
// works on its own data. Loading bounds its allocations: a picture over
// MaxPixels, or a file that claims absurd dimensions, fails with a message.
namespace tarnby::imaging {

inline constexpr qint64 MaxPixels = 256LL * 1024 * 1024; // beyond 200 megapixels, with headroom

struct PictureFrame {
    QImage image;
    int delayMs = 0; // how long this frame shows in an animation; 0 for stills
};

// The facts the properties window shows about a picture.
struct PictureInfo {
    int bitsPerPixel = 0;
    qint64 colorCount = 0;
    int formatCode = 0; // file-format number (the numbering of GetSaveFormatCode)
    int width = 0;
    int height = 0;
    qint64 sizeOnDisk = 0;
    qint64 sizeInMemory = 0;
    double xResolution = 0; // dots per inch
    double yResolution = 0;
};

struct Picture {
    QList<PictureFrame> frames;
    PictureInfo info;

    bool isNull() const { return frames.isEmpty() || frames.constFirst().image.isNull(); }
    QImage image() const { return frames.isEmpty() ? QImage() : frames.constFirst().image; }
};

enum class Pages { First, All };

struct LoadResult {
    Picture picture;
    QString errorString;
    bool ok() const { return errorString.isEmpty() && !picture.isNull(); }
};

// Loads a picture; Pages::All loads every page or frame (ANI, FLC, multi-page
// TIFF, DCX). The format is chosen by the file's extension and content.
LoadResult loadPicture(const QString &path, Pages pages = Pages::First);

struct SaveResult {
    bool ok = false;
    QString errorString;
};

// Saves picture to path in the format with the given format code (see
// GetSaveFormatCode), converting to bitsPerPixel (0: keep the picture's own)
// with quality 1-100 for lossy formats (0: the format's default). The file is
// written atomically: on failure the old file, if any, is untouched.
SaveResult savePicture(const Picture &picture, const QString &path, int formatCode, int bitsPerPixel = 0,
                       int quality = 0);

} // namespace tarnby::imaging
