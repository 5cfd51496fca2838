#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// Writes a picture as Encapsulated PostScript (language level 2): a bounding
// box in points (from the picture's resolution, 72 dpi when it has none) and
// the pixels as one image operator with hexadecimal data, grey for grey or
// one-bit pictures and RGB otherwise. Reading EPS is the picture layer's
// business (it needs a PostScript interpreter), so this handler only writes.
class EpsHandler : public OwnHandler
{
public:
    bool canRead() const override { return false; }
    bool read(QImage *) override { return fail(QStringLiteral("Encapsulated PostScript is not read by this codec")); }
    bool write(const QImage &image) override;
};

} // namespace tarnby::imaging::codecs
