#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// Medical pictures in the DICOM file format (.DIC): the 128-byte preamble,
// "DICM", the file meta group, then the data set. Read here: uncompressed
// pixel data in little-endian byte order, explicit or implicit value
// representation, one frame of grey (MONOCHROME1 or MONOCHROME2, 8 or 16
// bits allocated, signed or not) or 8-bit RGB. Grey levels are stretched
// from the stored bits to the full range; window settings are not applied.
//
// Compressed and big-endian transfer syntaxes are not claimed by canRead();
// the picture layer hands those files to ImageMagick (see PictureFormats.cpp).
class DicomHandler : public OwnHandler
{
public:
    struct Preamble {
        char prefix[4] = {}; // "DICM", after 128 bytes the file's writer may use freely

        static constexpr int Size = 132;
        bool isValid() const { return prefix[0] == 'D' && prefix[1] == 'I' && prefix[2] == 'C' && prefix[3] == 'M'; }
        static Preamble parse(ByteCursor &cursor);
    };

    // What the data set says about the picture.
    struct PixelModule {
        bool explicitVr = true;
        bool supportedSyntax = false;
        QByteArray transferSyntax;
        quint16 samplesPerPixel = 1;
        QByteArray photometric;
        quint16 planarConfiguration = 0;
        quint16 rows = 0;
        quint16 columns = 0;
        quint16 bitsAllocated = 0;
        quint16 bitsStored = 0;
        quint16 pixelRepresentation = 0; // 1: two's complement
        qsizetype pixelDataAt = -1;
        quint32 pixelDataLength = 0;
    };

    // No size option: the size lies past the meta group, in a data set of
    // any length; read() checks it against the pixel bound and the pixel
    // data's length before anything is allocated.
    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);

    // Walks the data set in data up to the pixel data; false and error when
    // the elements do not parse.
    static bool parse(QByteArrayView data, PixelModule *module, QString *error);
};

} // namespace tarnby::imaging::codecs
