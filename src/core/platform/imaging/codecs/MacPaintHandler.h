#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// MacPaint documents: a 512-byte header (version and 38 fill patterns), then
// 720 lines of 576 one-bit pixels, each line packed with PackBits; a set bit
// is black. A 128-byte MacBinary header in front is recognised and skipped.
// Writing stores the picture at the top left of the fixed page, cropped to it
// and padded with white.
class MacPaintHandler : public OwnHandler
{
public:
    static constexpr int PageWidth = 576;
    static constexpr int PageHeight = 720;
    static constexpr int BytesPerLine = PageWidth / 8;

    struct Header {
        quint32 version = 0;
        bool macBinary = false; // a MacBinary header precedes it

        static constexpr int Size = 512;
        static constexpr int MacBinarySize = 128;
        bool isValid() const { return version == 0 || version == 2 || version == 3; }
    };

    bool canRead() const override;
    bool read(QImage *image) override;
    bool write(const QImage &image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;
    QImage::Format readFormat() const override { return QImage::Format_Mono; }
};

} // namespace tarnby::imaging::codecs
