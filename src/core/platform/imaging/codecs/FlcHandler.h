#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QList>

namespace tarnby::imaging::codecs {

// Autodesk Animator flics: FLI (magic 0xAF11, 320x200, speed in 1/70 s) and
// FLC (magic 0xAF12, any size, speed in milliseconds), 8 bits a pixel. Every
// frame is read in turn: each read() returns the next frame as an indexed
// picture and nextImageDelay() its time on screen.
//
// Frames are deltas of the one before, so the handler keeps the current
// canvas and palette; going back to an earlier frame replays from the start.
class FlcHandler : public AnimationHandler
{
public:
    struct Header {
        quint32 size = 0;
        quint16 magic = 0;
        quint16 frames = 0;
        quint16 width = 0;
        quint16 height = 0;
        quint16 depth = 0;
        quint16 flags = 0;
        quint32 speed = 0;
        quint32 oframe1 = 0;
        quint32 oframe2 = 0;

        static constexpr int Size = 128;
        static constexpr quint16 MagicFli = 0xAF11, MagicFlc = 0xAF12;
        bool isFli() const { return magic == MagicFli; }
        bool isValid() const;
        static Header parse(ByteCursor &cursor);
    };

    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;
    QImage::Format readFormat() const override { return QImage::Format_Indexed8; }
    QString index() const override;

private:
    struct Frame {
        qsizetype offset = 0; // of the frame chunk in the file
        quint32 size = 0;
    };

    bool decodeFrame(const Frame &frame);
    bool decodeColour(ByteCursor &chunk, bool sixBit);
    bool decodeByteRun(ByteCursor &chunk);
    bool decodeDeltaFli(ByteCursor &chunk);
    bool decodeDeltaFlc(ByteCursor &chunk);
    bool decodeCopy(ByteCursor &chunk);

    mutable Header m_header;
    mutable QList<Frame> m_frames;

    QByteArray m_canvas; // width * height palette indexes
    QList<QRgb> m_palette;
    int m_decoded = -1; // the last frame applied to m_canvas
};

} // namespace tarnby::imaging::codecs
