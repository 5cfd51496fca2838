// ImageMagick's coders as the picture layer calls them: the first byte picks
// the coder, the rest is the file.
#include "core/platform/imaging/MagickRoute.h"

#include <iterator>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static const char *const coders[] = {"PCX", "DCX", "PCD", "PSD", "TGA", "JBIG", "SUN", "PICT",
                                         "XWD", "SGI", "WMF", "CUT", "MAC", "WPG", "DCM", "PNM"};
    if (size < 2)
        return 0;
    const char *coder = coders[data[0] % std::size(coders)];
    const QByteArray file(reinterpret_cast<const char *>(data + 1), qsizetype(size - 1));
    tarnby::imaging::magick::read(file, coder, tarnby::imaging::Pages::All);
    return 0;
}
