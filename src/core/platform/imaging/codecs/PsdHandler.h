#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// Photoshop pictures (.PSD, and the large-document variant): the merged
// picture stored after the layers, in the colour modes whose merged picture
// is one channel of plain samples: bitmap (1 bit, a set bit is black),
// greyscale (8 or 16 bits) and indexed colour (8 bits with a 256-colour
// table). The merged rows are stored raw or packed with PackBits.
//
// Other colour modes (RGB, CMYK, Lab, ...) and layered compositing are left
// to ImageMagick: canRead() claims only the files this reader decodes, and
// the picture layer sends the rest on (see PictureFormats.cpp). Layers,
// extra channels and masks are skipped; the transparent index of an indexed
// picture is kept as a transparent colour.
class PsdHandler : public OwnHandler
{
public:
    enum ColorMode : quint16 {
        Bitmap = 0,
        Grayscale = 1,
        Indexed = 2,
        RGB = 3,
        CMYK = 4,
        Multichannel = 7,
        Duotone = 8,
        Lab = 9,
    };

    struct Header {
        char signature[4] = {};
        quint16 version = 0; // 1: Photoshop document, 2: large document
        quint8 reserved[6] = {};
        quint16 channels = 0;
        quint32 height = 0;
        quint32 width = 0;
        quint16 depth = 0;
        quint16 colorMode = 0;

        static constexpr int Size = 26;
        bool isLargeDocument() const { return version == 2; }
        quint32 maxSide() const { return isLargeDocument() ? 300000 : 30000; }
        // A Photoshop header of any colour mode.
        bool isValid() const;
        // One whose merged picture this reader decodes.
        bool isDecodedHere() const;
        static Header parse(ByteCursor &cursor);
    };

    // Compression of the merged picture.
    enum Compression : quint16 { Raw = 0, PackBits = 1, Zip = 2, ZipPrediction = 3 };

    bool canRead() const override;
    bool read(QImage *image) override;

    // A Photoshop file in a colour mode this reader decodes.
    static bool canRead(QIODevice *device);

    // Unpacks one PackBits row into out (exactly out.size() bytes); false
    // when the packed bytes run short or would write past the row.
    static bool unpackBits(QByteArrayView packed, QByteArray &out);

protected:
    std::optional<QSize> headerSize() const override;
    QImage::Format readFormat() const override;
};

} // namespace tarnby::imaging::codecs
