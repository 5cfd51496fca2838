#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QList>

namespace tarnby::imaging::codecs {

// IFF pictures: FORM ILBM (interleaved bit planes: 1 to 8 planes through the
// CMAP palette, extra half-brite, HAM6/HAM8, 24 and 32 planes of true colour)
// and FORM PBM (one byte a pixel). Bodies may be packed with ByteRun1.
class IlbmHandler : public OwnHandler
{
public:
    struct BitmapHeader { // BMHD
        quint16 w = 0;
        quint16 h = 0;
        qint16 x = 0;
        qint16 y = 0;
        quint8 nPlanes = 0;
        quint8 masking = 0;
        quint8 compression = 0;
        quint8 pad1 = 0;
        quint16 transparentColor = 0;
        quint8 xAspect = 0;
        quint8 yAspect = 0;
        qint16 pageWidth = 0;
        qint16 pageHeight = 0;

        static constexpr quint8 MskNone = 0, MskHasMask = 1, MskHasTransparentColor = 2, MskLasso = 3;
        static constexpr quint8 CmpNone = 0, CmpByteRun1 = 1;

        // chunky: the PBM variant, whose planes count is the bits of a pixel.
        bool isValid(bool chunky) const;
        static BitmapHeader parse(ByteCursor &cursor);
    };

    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;
};

} // namespace tarnby::imaging::codecs
