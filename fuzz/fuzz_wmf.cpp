// The metafile record walk that decides whether a WMF draws anything, and the
// blank page made for one that does not. Drawing metafiles go to ImageMagick,
// which fuzz_magick covers; they are not handed over here.
#include "core/platform/imaging/VectorRoutes.h"

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    const QByteArray bytes(reinterpret_cast<const char *>(data), qsizetype(size));
    const tarnby::imaging::vector::WmfScan scan = tarnby::imaging::vector::scanWmf(bytes);
    if (scan.wellFormed && !scan.draws)
        tarnby::imaging::vector::readWmf(bytes, tarnby::imaging::Pages::First);
    return 0;
}
