#pragma once

#include "core/platform/imaging/RouteTypes.h"

#include <QtGlobal>

// Full-size JPEG reading through libjpeg directly: the picture is decoded
// straight into the 32-bit image the layer hands on, where Qt's reader
// decodes into packed rows and widens them afterwards. Internal to the
// picture layer.
namespace tarnby::imaging::jpeg {

// Decodes data (a whole JPEG file of size bytes) with the resolution of its JFIF header,
// the colour space of its ICC profile and its comments as texts, as Qt's
// reader gives them. Grey, YCbCr and RGB files only, read to their end
// without a fault; for anything else (CMYK, a file cut short, a corrupt
// one) the result carries no frames and no message, and the caller asks
// Qt's reader, which has its own ways with such files. Sizes over the
// layer's pixel bound fail with a message.
detail::Decoded read(const uchar *data, qsizetype size);

} // namespace tarnby::imaging::jpeg
