#include "AniHandler.h"

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

bool AniHandler::supportsOption(ImageOption option) const
{
    return option == Animation || option == Size;
}

QVariant AniHandler::option(ImageOption option) const
{
    if (option == Animation)
        return true;
    if (option == Size && load() && m_header.iWidth > 0 && m_header.iHeight > 0 && m_header.iWidth < 65536
        && m_header.iHeight < 65536)
        return QSize(int(m_header.iWidth), int(m_header.iHeight));
    return {};
}

int AniHandler::frameCount() const
{
    return load() ? int(m_steps.size()) : 0;
}

int AniHandler::frameDelay(int index) const
{
    return load() && index >= 0 && index < m_steps.size() ? m_steps[index].delayMs : 0;
}

bool AniHandler::load() const
{
    if (m_loaded)
        return !m_loadFailed;
    m_loaded = true;
    m_loadFailed = true;
    if (!readAllBounded(device(), &m_data, &m_loadError))
        return false;

    ByteCursor file(m_data);
    const quint32 riff = file.u32le();
    const quint32 riffSize = file.u32le();
    const quint32 form = file.u32le();
    if (!file.ok() || riff != fourCC("RIFF") || form != fourCC("ACON")) {
        m_loadError = QStringLiteral("Not an animated cursor");
        return false;
    }
    // The RIFF size is not trusted to mark the end: writers have been seen to
    // count it short, with the last frames lying beyond it. Chunks are read
    // as far as the file goes; a file shorter than its RIFF size is cut off.
    const qsizetype end = m_data.size();
    if (qsizetype(riffSize) + 8 > m_data.size()) {
        m_loadError = QStringLiteral("The animated cursor is truncated");
        return false;
    }

    bool haveHeader = false;
    QList<quint32> rates;
    QList<quint32> sequence;
    while (file.pos() + 8 <= end) {
        const qsizetype chunkStart = file.pos();
        const quint32 id = file.u32le();
        const quint32 size = file.u32le();
        if (qsizetype(size) > end - file.pos()) {
            m_loadError = QStringLiteral("The animated cursor is truncated");
            return false;
        }
        ByteCursor chunk(file.bytes(size));
        if (id == fourCC("anih")) {
            m_header = AniHeader::parse(chunk);
            if (!chunk.ok()) {
                m_loadError = QStringLiteral("The animated cursor header is too short");
                return false;
            }
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
                    if (qsizetype(subSize) > chunk.remaining()) {
                        m_loadError = QStringLiteral("The animated cursor is truncated in its frames");
                        return false;
                    }
                    const QByteArrayView bytes = chunk.bytes(subSize);
                    if (frames && subId == fourCC("icon")) {
                        if (m_icons.size() >= MaxFrames) {
                            m_loadError = QStringLiteral("The animated cursor has too many frames");
                            return false;
                        }
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

    if (!haveHeader) {
        m_loadError = QStringLiteral("The animated cursor has no header");
        return false;
    }
    if (!m_header.isValid()) {
        m_loadError = QStringLiteral("The animated cursor header is not valid (%1 frames, %2 steps)")
                          .arg(m_header.nFrames)
                          .arg(m_header.nSteps);
        return false;
    }
    if (!(m_header.bfAttributes & AniHeader::AfIcon)) {
        m_loadError = QStringLiteral("The animated cursor stores raw frames, which are not supported");
        return false;
    }
    if (m_icons.size() < qsizetype(m_header.nFrames)) {
        m_loadError = QStringLiteral("The animated cursor holds %1 of its %2 frames")
                          .arg(m_icons.size())
                          .arg(m_header.nFrames);
        return false;
    }

    const int steps = m_header.nSteps > 0 ? int(m_header.nSteps) : int(m_header.nFrames);
    const bool useSequence = !sequence.isEmpty();
    if (useSequence && sequence.size() < steps) {
        m_loadError = QStringLiteral("The animated cursor's step sequence is short");
        return false;
    }
    for (int s = 0; s < steps; ++s) {
        Step step;
        step.frame = useSequence ? int(qMin<quint32>(sequence[s], quint32(MaxFrames))) : s % int(m_header.nFrames);
        if (step.frame >= int(m_header.nFrames)) {
            m_loadError = QStringLiteral("The animated cursor's step %1 names a missing frame").arg(s + 1);
            return false;
        }
        step.delayMs = jiffiesToMs(s < rates.size() ? rates[s] : m_header.iDispRate);
        m_steps.append(step);
    }
    m_loadFailed = false;
    return true;
}

bool AniHandler::read(QImage *image)
{
    clearError();
    if (!load())
        return fail(m_loadError);
    const int index = takeFrame();
    if (index < 0)
        return false;
    const QByteArrayView icon = m_icons[m_steps[index].frame];
    QByteArray bytes = icon.toByteArray();
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    // A cursor resource differs from an icon only in its type word; Qt's
    // reader takes both under the "ico" name.
    QImageReader reader(&buffer, "ico");
    QImage frame = reader.read();
    if (frame.isNull())
        return fail(QStringLiteral("Frame %1 of the animated cursor cannot be read: %2")
                        .arg(m_steps[index].frame + 1)
                        .arg(reader.errorString()));
    noteFileBits(&frame, m_header.iBitCount > 0 && m_header.iBitCount <= 32 ? int(m_header.iBitCount) : frame.depth());
    *image = frame;
    return true;
}

} // namespace tarnby::imaging::codecs
