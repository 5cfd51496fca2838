#include "core/platform/imaging/codecs/AniHandler.h"

#include <QBuffer>
#include <QIODevice>
#include <QImageReader>
#include <QVariant>

namespace tarnby::imaging::codecs {

namespace {

quint32 fourCC(const char (&id)[5])
{
    return quint32(uchar(id[0])) | (quint32(uchar(id[1])) << 8) | (quint32(uchar(id[2])) << 16)
        | (quint32(uchar(id[3])) << 24);
}

int jiffiesToMs(quint32 jiffies)
{
    return int(qMin<quint64>(quint64(jiffies) * 1000 / 60, 600000));
}

} // namespace

AniHandler::AniHeader AniHandler::AniHeader::parse(ByteCursor &cursor)
{
    AniHeader h;
    h.cbSize = cursor.u32le();
    h.nFrames = cursor.u32le();
    h.nSteps = cursor.u32le();
    h.iWidth = cursor.u32le();
    h.iHeight = cursor.u32le();
    h.iBitCount = cursor.u32le();
    h.nPlanes = cursor.u32le();
    h.iDispRate = cursor.u32le();
    h.bfAttributes = cursor.u32le();
    return h;
}

bool AniHandler::AniHeader::isValid() const
{
    return cbSize == quint32(Size) && nFrames > 0 && nFrames <= quint32(MaxFrames) && nSteps <= quint32(MaxFrames);
}

bool AniHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, 12);
    return head.size() == 12 && head.startsWith("RIFF") && head.mid(8, 4) == "ACON";
}

bool AniHandler::canRead() const
{
    return claim(canRead(device()), "ani");
}

std::optional<QSize> AniHandler::headerSize() const
{
    if (load() && m_header.iWidth > 0 && m_header.iHeight > 0 && m_header.iWidth < 65536 && m_header.iHeight < 65536)
        return QSize(int(m_header.iWidth), int(m_header.iHeight));
    return std::nullopt;
}

QString AniHandler::index() const
{
    const QByteArray &data = fileData();
    ByteCursor file(data);
    const quint32 riff = file.u32le();
    const quint32 riffSize = file.u32le();
    const quint32 form = file.u32le();
    if (!file.ok() || riff != fourCC("RIFF") || form != fourCC("ACON"))
        return QStringLiteral("Not an animated cursor");
    // The RIFF size is not trusted to mark the end: writers have been seen to
    // count it short, with the last frames lying beyond it. Chunks are read
    // as far as the file goes; a file shorter than its RIFF size is cut off.
    const qsizetype end = data.size();
    if (qsizetype(riffSize) + 8 > data.size())
        return QStringLiteral("The animated cursor is truncated");

    bool haveHeader = false;
    QList<quint32> rates;
    QList<quint32> sequence;
    while (file.pos() + 8 <= end) {
        const qsizetype chunkStart = file.pos();
        const quint32 id = file.u32le();
        const quint32 size = file.u32le();
        if (qsizetype(size) > end - file.pos())
            return QStringLiteral("The animated cursor is truncated");
        ByteCursor chunk(file.bytes(size));
        if (id == fourCC("anih")) {
            m_header = AniHeader::parse(chunk);
            if (!chunk.ok())
                return QStringLiteral("The animated cursor header is too short");
            haveHeader = true;
        } else if (id == fourCC("rate") || id == fourCC("seq ")) {
            QList<quint32> &list = id == fourCC("rate") ? rates : sequence;
            list.clear();
            while (chunk.remaining() >= 4 && list.size() < MaxFrames)
                list.append(chunk.u32le());
        } else if (id == fourCC("LIST")) {
            // Walk the sub-chunks of every list. Some writers count the list
            // two bytes too long, so the next chunk starts where the walk
            // ends rather than where the list's size says.
            const bool frames = chunk.u32le() == fourCC("fram");
            {
                while (chunk.remaining() >= 8) {
                    const quint32 subId = chunk.u32le();
                    const quint32 subSize = chunk.u32le();
                    if (qsizetype(subSize) > chunk.remaining())
                        return QStringLiteral("The animated cursor is truncated in its frames");
                    const QByteArrayView bytes = chunk.bytes(subSize);
                    if (frames && subId == fourCC("icon")) {
                        if (m_icons.size() >= MaxFrames)
                            return QStringLiteral("The animated cursor has too many frames");
                        m_icons.append(bytes);
                    }
                    if (subSize & 1)
                        chunk.skip(qMin<qsizetype>(1, chunk.remaining()));
                }
            }
            file.seek(chunkStart + 8 + chunk.pos());
            continue;
        }
        if (size & 1)
            file.skip(qMin<qsizetype>(1, file.remaining()));
    }

    if (!haveHeader)
        return QStringLiteral("The animated cursor has no header");
    if (!m_header.isValid()) {
        return QStringLiteral("The animated cursor header is not valid (%1 frames, %2 steps)")
            .arg(m_header.nFrames)
            .arg(m_header.nSteps);
    }
    if (!(m_header.bfAttributes & AniHeader::AfIcon))
        return QStringLiteral("The animated cursor stores raw frames, which are not supported");
    if (m_icons.size() < qsizetype(m_header.nFrames)) {
        return QStringLiteral("The animated cursor holds %1 of its %2 frames")
            .arg(m_icons.size())
            .arg(m_header.nFrames);
    }

    const int steps = m_header.nSteps > 0 ? int(m_header.nSteps) : int(m_header.nFrames);
    const bool useSequence = !sequence.isEmpty();
    if (useSequence && sequence.size() < steps)
        return QStringLiteral("The animated cursor's step sequence is short");
    for (int s = 0; s < steps; ++s) {
        const int icon = useSequence ? int(qMin<quint32>(sequence[s], quint32(MaxFrames))) : s % int(m_header.nFrames);
        if (icon >= int(m_header.nFrames))
            return QStringLiteral("The animated cursor's step %1 names a missing frame").arg(s + 1);
        m_stepIcons.append(icon);
        addFrame(jiffiesToMs(s < rates.size() ? rates[s] : m_header.iDispRate));
    }
    return {};
}

bool AniHandler::read(QImage *image)
{
    const int step = beginFrame();
    if (step < 0)
        return false;
    const QByteArrayView icon = m_icons[m_stepIcons[step]];
    QByteArray bytes = icon.toByteArray();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    // A cursor resource differs from an icon only in its type word; Qt's
    // reader takes both under the "ico" name.
    QImageReader reader(&buffer, "ico");
    QImage frame = reader.read();
    if (frame.isNull())
        return fail(QStringLiteral("Frame %1 of the animated cursor cannot be read: %2")
                        .arg(m_stepIcons[step] + 1)
                        .arg(reader.errorString()));
    noteFileBits(&frame, m_header.iBitCount > 0 && m_header.iBitCount <= 32 ? int(m_header.iBitCount) : frame.depth());
    *image = frame;
    return true;
}

} // namespace tarnby::imaging::codecs
