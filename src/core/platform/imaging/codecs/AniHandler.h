#pragma once

#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QList>

namespace tarnby::imaging::codecs {

// Windows animated cursors (RIFF ACON). Each frame is an icon or cursor
// resource decoded by Qt's own icon reader; the animation runs through the
// steps of the "seq " chunk (or the frames in order) with the delays of the
// "rate" chunk or the header, given in jiffies of 1/60 s.
class AniHandler : public AnimationHandler
{
public:
    struct AniHeader { // anih
        quint32 cbSize = 0;
        quint32 nFrames = 0;
        quint32 nSteps = 0;
        quint32 iWidth = 0;
        quint32 iHeight = 0;
        quint32 iBitCount = 0;
        quint32 nPlanes = 0;
        quint32 iDispRate = 0;
        quint32 bfAttributes = 0;

        static constexpr quint32 AfIcon = 0x1; // frames are icon resources
        static constexpr quint32 AfSequence = 0x2; // a "seq " chunk orders them
        static constexpr int Size = 36;
        bool isValid() const;
        static AniHeader parse(ByteCursor &cursor);
    };

    bool canRead() const override;
    bool read(QImage *image) override;

    static bool canRead(QIODevice *device);

protected:
    std::optional<QSize> headerSize() const override;
    QString index() const override;

private:
    mutable AniHeader m_header;
    mutable QList<QByteArrayView> m_icons;
    mutable QList<int> m_stepIcons; // the icon each step shows
};

} // namespace tarnby::imaging::codecs
