#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QList>

namespace tarnby::imaging::codecs {

// GEM bit images (.IMG): one to eight bit planes, each scan line packed with
// solid runs, pattern runs and bit strings, and a line-repeat code in front
// of a line. Monochrome pictures show set bits black; colour pictures take
// their palette from an "XIMG" header extension, else the standard colours
// of the pixel values (four planes or fewer) or a grey ramp.
class GemImgHandler : public OwnHandler
{
public:
    struct Header {
        quint16 version = 0;
        quint16 headerLength = 0; // in 16-bit words
        quint16 planes = 0;
        quint16 patternLength = 0; // bytes of a pattern run
        quint16 pixelWidth = 0; // microns
        quint16 pixelHeight = 0;
        quint16 lineWidth = 0; // pixels
        quint16 lines = 0;

        static constexpr int Size = 16;
        bool isValid() const;
        static Header parse(ByteCursor &cursor);
    };

    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;
};

} // namespace tarnby::imaging::codecs
