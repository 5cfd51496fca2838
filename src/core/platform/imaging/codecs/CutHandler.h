#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QList>

namespace tarnby::imaging::codecs {

// Dr. Halo pictures (.CUT): 8-bit palette indexes, each line run-length
// packed. The colours live in a companion palette file (.PAL) of the same
// name beside the picture; without one the indexes show as greys.
//
// Reading looks for the palette only when the device is a named file; writing
// stores the palette beside the picture the same way (through QSaveFile, so a
// failed save leaves the old palette whole).
class CutHandler : public OwnHandler
{
public:
    struct Header {
        quint16 width = 0;
        quint16 height = 0;
        quint16 reserved = 0;

        static constexpr int Size = 6;
        bool isValid() const { return width > 0 && height > 0 && reserved == 0; }
        static Header parse(ByteCursor &cursor);
    };

    struct PaletteHeader { // of the .PAL file, 40 bytes
        char fileId[2] = {'A', 'H'};
        quint16 version = 0xE3;
        quint16 size = 0;
        quint8 fileType = 0x0A; // palette
        quint8 subType = 0;
        quint16 boardId = 0;
        quint16 graphicsMode = 0;
        quint16 maxIndex = 255;
        quint16 maxRed = 255;
        quint16 maxGreen = 255;
        quint16 maxBlue = 255;

        static constexpr int Size = 40;
        bool isValid() const
        {
            return fileId[0] == 'A' && fileId[1] == 'H' && fileType == 0x0A && maxIndex <= 255 && maxRed > 0
                && maxGreen > 0 && maxBlue > 0;
        }
        static PaletteHeader parse(ByteCursor &cursor);
    };

    bool canRead() const override;
    bool read(QImage *image) override;
    bool write(const QImage &image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;

    // The colours of a palette file's contents; empty when they are not a
    // valid palette.
    static QList<QRgb> parsePalette(QByteArrayView data);
    static QByteArray makePalette(const QList<QRgb> &colours);

private:
    QString paletteFileName() const;
};

} // namespace tarnby::imaging::codecs
