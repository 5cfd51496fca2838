#pragma once

#include <QImage>
#include <QList>
#include <QString>

#include <functional>

// The picture layer: the one road by which windows and the CLI load, save and
// describe pictures, whatever library reads the format underneath.
//
// All functions are reentrant and may be called from worker threads; each call
// works on its own data. Loading bounds its allocations: a picture over
// MaxPixels, or a file that claims absurd dimensions, fails with a message.
// Memory: a program that links the layer gets, before main(), glibc's
// allocator set to give every block from 256 KiB up a mapping of its own, so
// that a closed picture's memory goes back to the system (see the .cpp).
namespace tarnby::imaging {

inline constexpr qint64 MaxPixels = 256LL * 1024 * 1024; // beyond 200 megapixels, with headroom

struct PictureFrame {
    QImage image;
    int delayMs = 0; // how long this frame shows in an animation; 0 for stills
};

// The facts the properties window shows about a picture.
struct PictureInfo {
    int bitsPerPixel = 0; // of the file (a 1-bit PBM says 1 though it decodes wider)
    int formatCode = 0;   // file-format number (the numbering of GetSaveFormatCode; see formatName())
    int width = 0;
    int height = 0;
    qint64 sizeOnDisk = 0;
    qint64 sizeInMemory = 0; // an uncompressed bitmap at bitsPerPixel, rows padded to 4 bytes
    double xResolution = 0; // dots per inch; 96 where the file states none
    double yResolution = 0;
};

// One caption and its value, as the properties window shows them.
struct PropertyRow {
    QString caption;
    QString value;
};

struct Picture {
    QList<PictureFrame> frames;
    PictureInfo info;

    bool isNull() const { return frames.isEmpty() || frames.constFirst().image.isNull(); }
    QImage image() const { return frames.isEmpty() ? QImage() : frames.constFirst().image; }
};

// The number of distinct colours (alpha aside) in image. It looks at every
// pixel, some tens of milliseconds for a large photo, so it is counted when a
// window asks for it rather than at every load; a null image has none.
qint64 distinctColours(const QImage &image);

// The nine picture rows of the properties window, in their order:
// "Number of Bits per Bitmap:", "Color Count:" (the first page's distinct
// colours, counted now), "Image Format:" (the format number turned into its
// name), "Image Height:", "Image Width:", "Image Disk Size:", "Image Memory
// Size:", "Image X Resolution:", "Image Y Resolution:".
QList<PropertyRow> pictureProperties(const Picture &picture);

enum class Pages { First, All };

struct LoadResult {
    Picture picture;
    QString errorString;
    bool ok() const { return errorString.isEmpty() && !picture.isNull(); }
};

// Loads a picture; Pages::All loads every page or frame (ANI, FLC, multi-page
// TIFF, DCX). The format is chosen by the file's content where it is
// recognisable, else by its extension. Files over MaxFileBytes, pictures over
// MaxPixels (all pages together) and undecodable data fail with a message.
LoadResult loadPicture(const QString &path, Pages pages = Pages::First);

inline constexpr qint64 MaxFileBytes = 1024LL * 1024 * 1024;

struct SaveResult {
    bool ok = false;
    QString errorString;
};

// Saves picture to path in the format with the given format code (see
// GetSaveFormatCode), converting to bitsPerPixel (0: keep the picture's own,
// as its info says) with quality 1-100 for lossy formats (0: the format's
// default). A code that no writer serves fails with a message naming the
// format. Several frames are kept where the format holds pages (TIFF); other
// formats get the first. The file is written atomically: on failure the old
// file, if any, is untouched.
SaveResult savePicture(const Picture &picture, const QString &path, int formatCode, int bitsPerPixel = 0,
                       int quality = 0);

// A change made to a picture band by band. It is given rows of the picture
// as a picture of their own, in the picture's memory, and returns them
// changed: in place, or as a new picture of the same size and format, which
// is copied back. It must change each row on its own (a point operation, a
// mirror), so that the bands together give what it gives the whole picture,
// and it may be called from several threads at once, for different bands.
using BandChange = std::function<QImage(QImage band)>;

// Loads the JPEG file in, makes change (may be empty) to it, turns it upside
// down if asked and saves it as the JPEG file out at quality, decoding and
// encoding at once: rows are encoded, on every core, as soon as they are
// decoded (all of them first, when upside down). The file is the one that
// loadPicture(), the change, a flip and savePicture(..., formatCode, 0,
// quality) would give: the same pixels and facts (it may differ in restart
// markers). Only for a file whose content is JPEG that the layer's own
// decoder reads to its end, saved under a JPEG format code; for any other,
// *handled is false, out is untouched, and the caller takes the ordinary
// road, which has its own ways with such files.
SaveResult convertJpeg(const QString &in, const QString &out, int formatCode, int quality, const BandChange &change,
                       bool upsideDown, bool *handled);

} // namespace tarnby::imaging
