#pragma once

#include "core/platform/imaging/RouteTypes.h"

#include <QtGlobal>

#include <functional>

class QIODevice;

// Full-size JPEG reading and writing through libjpeg directly: the picture
// is decoded straight into the 32-bit image the layer hands on, where Qt's
// reader decodes into packed rows and widens them afterwards, and a large
// picture is encoded in strips on every core, where Qt's writer uses one.
// Internal to the picture layer.
namespace tarnby::imaging::jpeg {

// Decodes data (a whole JPEG file of size bytes) with the resolution of its JFIF header,
// the colour space of its ICC profile and its comments as texts, as Qt's
// reader gives them. Grey, YCbCr and RGB files only, read to their end
// without a fault; for anything else (CMYK, a file cut short, a corrupt
// one) the result carries no frames and no message, and the caller asks
// Qt's reader, which has its own ways with such files. Sizes over the
// layer's pixel bound fail with a message.
detail::Decoded read(const uchar *data, qsizetype size);

// Whether write() takes pictures of this format (8-bit grey and 32-bit
// colour, the depths JPEG files are saved from); the layer hands others to
// Qt's writer.
bool canWrite(const QImage &image);

// Writes image to device as a baseline JPEG with the standard tables at
// quality 1-100 (0: 75), with what Qt's writer puts in the file: the JFIF
// resolution, the texts as comments and the colour profile of a colour
// picture. A picture of more than a few strips of rows is encoded in strips
// at once on the cores, one restart interval each, and written as they are
// done: the decoded pixels are those of a file encoded in one piece, and the
// file carries a restart marker between strips. On a file device, writing
// back to disk begins with each strip written, so that the sync at the end
// finds little left to do. The error, or an empty string.
QString write(const QImage &image, int quality, QIODevice *device);

// Rows that are still being decoded while write() encodes them.
struct RowFeed {
    // Waits until rows [0, end) are decoded; false once decoding failed.
    std::function<bool(int end)> waitFor;
    // Changes rows [first, end) in place before they are encoded: the
    // error, or an empty string. May be empty.
    std::function<QString(int first, int end)> change;
    bool upsideDown = false; // the rows are encoded bottom first (a flip)
};

// write() with the rows coming from feed.
QString write(const QImage &image, int quality, QIODevice *device, const RowFeed &feed);

// Decodes a JPEG file (data, size) as read() does and writes it to device as
// write() does, at once: rows are encoded as soon as they are decoded (all
// of them first, upside down), with change made to them in between. False
// when read() would not have read the file (see there): then what was
// written is worthless and the caller starts over by the ordinary road.
// Otherwise true, with *error empty or saying why writing failed.
bool transcode(const uchar *data, qsizetype size, int quality, const BandChange &change, bool upsideDown,
               QIODevice *device, QString *error);

} // namespace tarnby::imaging::jpeg
