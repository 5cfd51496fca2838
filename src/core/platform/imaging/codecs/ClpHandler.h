#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

namespace tarnby::imaging::codecs {

// Windows clipboard files (.CLP, both the 16-bit 0xC350 layout and the 32-bit
// 0xC351/0xC352 layout). Of the formats a file holds, the device-independent
// bitmap (CF_DIB, else CF_DIBV5) is shown; it is decoded by Qt's BMP reader.
// FIXME: a file that holds only a device-dependent bitmap (CF_BITMAP) is
// refused with a message; such files come from 16-bit programs that did not
// render a DIB as well.
class ClpHandler : public OwnHandler
{
public:
    struct FileHeader {
        quint16 fileId = 0;
        quint16 formatCount = 0;

        static constexpr quint16 Win3Id = 0xC350, NtId = 0xC351, Nt2Id = 0xC352;
        bool isWin3() const { return fileId == Win3Id; }
        bool isValid() const { return (fileId == Win3Id || fileId == NtId || fileId == Nt2Id) && formatCount > 0; }
        static FileHeader parse(ByteCursor &cursor);
    };

    struct FormatEntry {
        quint32 formatId = 0;
        quint32 dataLen = 0;
        quint32 dataOffset = 0;

        static constexpr quint32 CfBitmap = 2, CfDib = 8, CfDibV5 = 17;
        static FormatEntry parse(ByteCursor &cursor, bool win3);
    };

    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);
};

} // namespace tarnby::imaging::codecs
