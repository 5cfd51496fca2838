#pragma once

#include "core/platform/imaging/RouteTypes.h"

#include <QImage>
#include <QList>
#include <QString>

class QIODevice;

// Multi-page TIFF writing through libtiff (Qt writes one page a file), reading
// of the TIFF files that Qt's reader refuses, and the guard that keeps
// libtiff's process-wide message handlers ours. Internal to the picture layer.
namespace tarnby::imaging::tiff {

// Reads data (a whole TIFF file) through libtiff's RGBA reader, which fills
// in what a sparse file leaves out: strip byte counts are estimated from the
// picture's size, a missing photometric interpretation is taken as grey.
// Pages::All reads every directory. Each page's dimensions are checked
// against the layer's pixel bound before its pixels are allocated. The bits
// per pixel are those of the first page's samples. On failure the message
// says what libtiff found wrong.
detail::Decoded readPages(const QByteArray &data, Pages pages);

// Writes pages to device as one TIFF, one directory a page, LZW compressed:
// 1-bit, palette, grey, RGB or RGBA pages as the images are. Returns an empty
// string on success, else the message.
QString writePages(const QList<QImage> &pages, QIODevice *device);

// libtiff keeps one error and one warning handler for the whole process.
// ImageMagick's TIFF coder installs handlers that abort when libtiff is used
// by anyone else (Qt's TIFF plugin, this writer); call this before any TIFF
// work so that libtiff's messages are dropped instead.
void quietMessageHandlers();

} // namespace tarnby::imaging::tiff
