#pragma once

#include <QImage>
#include <QList>
#include <QString>

class QIODevice;

// Multi-page TIFF writing through libtiff (Qt writes one page a file), and
// the guard that keeps libtiff's process-wide message handlers ours.
namespace tarnby::imaging::tiff {

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
