#pragma once

#include "core/platform/imaging/RouteTypes.h"

// The formats read and written through ImageMagick (Magick++ / MagickCore).
// ImageMagick is initialised once, on first use, with resource limits set;
// after that every function here may run on any thread.
namespace tarnby::imaging::magick {

// Whether this ImageMagick build has a coder named name that reads (or writes).
bool coderAvailable(const char *name, bool write);

// Decodes data as format name (never guessed from the content: the coder is
// fixed by name). The picture's dimensions are checked against the layer's
// bound before any pixel is decoded.
detail::Decoded read(const QByteArray &data, const char *name, Pages pages);

// Encodes frames (one, or several where the format holds pages) as format
// name at bitsPerPixel (1, 4, 8, 24 or 32; 0 keeps the image's own) into out.
// Returns an empty string on success, else the message.
QString write(const QList<QImage> &frames, const char *name, int bitsPerPixel, int quality, QByteArray *out);

} // namespace tarnby::imaging::magick
