#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// Microsoft Paint pictures: version 1 ("DanM", rows stored plainly) and
// version 2 ("LinS", rows packed with a run-length code behind a table of row
// lengths). One bit per pixel, a set bit is white. Writes version 2.
class MspHandler : public OwnHandler
{
public:
    struct Header {
        quint16 key1 = 0;
        quint16 key2 = 0;
        quint16 width = 0;
        quint16 height = 0;
        quint16 xARBitmap = 0;
        quint16 yARBitmap = 0;
        quint16 xARPrinter = 0;
        quint16 yARPrinter = 0;
        quint16 printerWidth = 0;
        quint16 printerHeight = 0;
        quint16 xAspectCorr = 0;
        quint16 yAspectCorr = 0;
        quint16 checksum = 0;
        quint16 padding[3] = {};

        static constexpr int Size = 32;
        bool isVersion1() const { return key1 == 0x6144 && key2 == 0x4D6E; }
        bool isVersion2() const { return key1 == 0x694C && key2 == 0x536E; }
        // The sixteen header words XOR to zero in an intact file.
        bool checksumMatches() const;
        bool isValid() const { return (isVersion1() || isVersion2()) && width > 0 && height > 0; }
        static Header parse(ByteCursor &cursor);
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
