#include "VectorRoutes.h"

namespace tarnby::imaging::vector {

// FIXME: the FlashPix tile decoder (libgsf for the container) is not written
// yet; FPX files are refused with a message that names the format.
bool flashPixAvailable()
{
    return false;
}

detail::Decoded readFlashPix(const QByteArray &data)
{
    if (!data.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
        return detail::failure(QStringLiteral("The file is not a FlashPix (FPX) picture."));
    return detail::failure(QStringLiteral("FlashPix (FPX) pictures cannot be read yet."));
}

} // namespace tarnby::imaging::vector
