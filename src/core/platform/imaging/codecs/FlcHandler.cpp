#include "core/platform/imaging/codecs/FlcHandler.h"

#include <QIODevice>
#include <QVariant>

#include <algorithm>

namespace tarnby::imaging::codecs {

namespace {

enum ChunkType : quint16 {
    Color256 = 4,
    Ss2 = 7, // word-oriented delta of FLC
    Color64 = 11,
    Lc = 12, // byte-oriented delta of FLI
    Black = 13,
    Brun = 15,
    Copy = 16,
    PStamp = 18,
};

constexpr quint16 FrameChunk = 0xF1FA;
constexpr quint16 PrefixChunk = 0xF100;

} // namespace

FlcHandler::Header FlcHandler::Header::parse(ByteCursor &cursor)
{
    const qsizetype start = cursor.pos();
    Header h;
    h.size = cursor.u32le();
    h.magic = cursor.u16le();
    h.frames = cursor.u16le();
    h.width = cursor.u16le();
    h.height = cursor.u16le();
    h.depth = cursor.u16le();
    h.flags = cursor.u16le();
    h.speed = cursor.u32le();
    cursor.seek(start + 80);
    h.oframe1 = cursor.u32le();
    h.oframe2 = cursor.u32le();
    cursor.seek(start + Size);
    return h;
}

bool FlcHandler::Header::isValid() const
{
    return (magic == MagicFli || magic == MagicFlc) && frames > 0 && width > 0 && height > 0
        && (depth == 8 || depth == 0);
}

bool FlcHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, 16);
    ByteCursor cursor(head);
    cursor.skip(4);
    const quint16 magic = cursor.u16le();
    const quint16 frames = cursor.u16le();
    const quint16 width = cursor.u16le();
    const quint16 height = cursor.u16le();
    const quint16 depth = cursor.u16le();
    return cursor.ok() && (magic == Header::MagicFli || magic == Header::MagicFlc) && frames > 0 && width > 0
        && height > 0 && (depth == 8 || depth == 0);
}

bool FlcHandler::canRead() const
{
    return claim(canRead(device()), "flc");
}

std::optional<QSize> FlcHandler::headerSize() const
{
    if (const std::optional<Header> h = peekHeader<Header>(device()))
        return QSize(h->width, h->height);
    return std::nullopt;
}

QString FlcHandler::index() const
{
    const QByteArray &data = fileData();
    ByteCursor cursor(data);
    m_header = Header::parse(cursor);
    if (!cursor.ok())
        return QStringLiteral("The flic file is shorter than its header");
    if (m_header.magic != Header::MagicFli && m_header.magic != Header::MagicFlc)
        return QStringLiteral("Not a flic animation");
    if (!m_header.isValid()) {
        return QStringLiteral("The flic header is not valid (%1 x %2, %3 frames, depth %4)")
            .arg(m_header.width)
            .arg(m_header.height)
            .arg(m_header.frames)
            .arg(m_header.depth);
    }
    if (qint64(m_header.width) * m_header.height > MaxPixels)
        return QStringLiteral("The picture is too large (%1 x %2 pixels)").arg(m_header.width).arg(m_header.height);
    if (m_header.frames > MaxFrames)
        return QStringLiteral("The flic file claims too many frames (%1)").arg(m_header.frames);
    // FLI counts its speed in 1/70 s, FLC in milliseconds.
    const qint64 speedMs = m_header.isFli() ? qint64(m_header.speed) * 1000 / 70 : qint64(m_header.speed);
    const int defaultDelay = int(std::clamp<qint64>(speedMs, 0, 60000));

    qsizetype pos = Header::Size;
    if (!m_header.isFli() && m_header.oframe1 >= Header::Size && m_header.oframe1 < quint32(data.size()))
        pos = qsizetype(m_header.oframe1);
    cursor.seek(pos);
    // The file holds one more frame than it counts: the ring frame that leads
    // from the last back to the first; it is not shown.
    while (m_frames.size() < m_header.frames && cursor.remaining() >= 16) {
        const qsizetype start = cursor.pos();
        const quint32 size = cursor.u32le();
        const quint16 type = cursor.u16le();
        if (size < 6 || size > quint32(data.size() - start)) {
            return QStringLiteral("The flic file is truncated after %1 of %2 frames")
                .arg(m_frames.size())
                .arg(m_header.frames);
        }
        if (type == FrameChunk) {
            cursor.skip(2); // sub-chunk count, counted again while decoding
            const quint16 delay = cursor.u16le();
            m_frames.append({start, size});
            addFrame(!m_header.isFli() && delay > 0 ? delay : defaultDelay);
        } else if (type != PrefixChunk) {
            // An unknown chunk at frame level: skip it as the format allows.
        }
        cursor.seek(start + size);
    }
    if (m_frames.size() < m_header.frames) {
        return QStringLiteral("The flic file is truncated after %1 of %2 frames")
            .arg(m_frames.size())
            .arg(m_header.frames);
    }
    return {};
}

bool FlcHandler::read(QImage *image)
{
    const int index = beginFrame();
    if (index < 0)
        return false;

    const int width = m_header.width;
    const int height = m_header.height;
    QImage result;
    QString error;
    if (!allocatePicture(QSize(width, height), QImage::Format_Indexed8, &result, &error))
        return fail(error);

    if (index <= m_decoded || m_canvas.isEmpty()) {
        m_canvas = QByteArray(qsizetype(width) * height, '\0');
        m_palette = QList<QRgb>(256, qRgb(0, 0, 0));
        m_decoded = -1;
    }
    while (m_decoded < index) {
        if (!decodeFrame(m_frames[m_decoded + 1]))
            return false;
        ++m_decoded;
    }
    result.setColorTable(m_palette);
    for (int y = 0; y < height; ++y)
        memcpy(result.scanLine(y), m_canvas.constData() + qsizetype(y) * width, width);
    noteFileBits(&result, 8);
    *image = result;
    return true;
}

bool FlcHandler::decodeFrame(const Frame &frame)
{
    ByteCursor cursor(QByteArrayView(fileData()).sliced(frame.offset, frame.size));
    cursor.skip(6);
    const quint16 chunks = cursor.u16le();
    cursor.skip(8);
    for (int i = 0; i < chunks && cursor.remaining() >= 6; ++i) {
        const qsizetype start = cursor.pos();
        const quint32 size = cursor.u32le();
        const quint16 type = cursor.u16le();
        if (!cursor.ok() || size < 6 || size > quint32(cursor.size() - start))
            return fail(QStringLiteral("The flic file has a damaged frame"));
        ByteCursor chunk(cursor.data().sliced(start + 6, size - 6));
        bool ok = true;
        switch (type) {
        case Color256:
            ok = decodeColour(chunk, false);
            break;
        case Color64:
            ok = decodeColour(chunk, true);
            break;
        case Brun:
            ok = decodeByteRun(chunk);
            break;
        case Lc:
            ok = decodeDeltaFli(chunk);
            break;
        case Ss2:
            ok = decodeDeltaFlc(chunk);
            break;
        case Copy:
            ok = decodeCopy(chunk);
            break;
        case Black:
            m_canvas.fill('\0');
            break;
        default:
            break; // postage stamps and unknown chunks carry nothing to show
        }
        if (!ok)
            return fail(QStringLiteral("The flic file has a damaged frame"));
        cursor.seek(start + size);
    }
    return true;
}

bool FlcHandler::decodeColour(ByteCursor &chunk, bool sixBit)
{
    const quint16 packets = chunk.u16le();
    int index = 0;
    for (int p = 0; p < packets && chunk.ok(); ++p) {
        index += chunk.u8();
        int count = chunk.u8();
        if (count == 0)
            count = 256;
        for (int i = 0; i < count; ++i, ++index) {
            int r = chunk.u8(), g = chunk.u8(), b = chunk.u8();
            if (!chunk.ok())
                return false;
            if (sixBit) {
                r = (r << 2) | (r >> 4);
                g = (g << 2) | (g >> 4);
                b = (b << 2) | (b >> 4);
            }
            if (index < 256)
                m_palette[index] = qRgb(r & 0xff, g & 0xff, b & 0xff);
        }
    }
    return chunk.ok();
}

bool FlcHandler::decodeByteRun(ByteCursor &chunk)
{
    const int width = m_header.width;
    char *canvas = m_canvas.data();
    for (int y = 0; y < m_header.height; ++y) {
        char *line = canvas + qsizetype(y) * width;
        chunk.u8(); // the packet count of old files; the width ends the line
        int x = 0;
        while (x < width) {
            const qint8 count = chunk.i8();
            if (!chunk.ok())
                return false;
            if (count >= 0) {
                const quint8 value = chunk.u8();
                if (!chunk.ok() || x + count > width)
                    return false;
                memset(line + x, value, count);
                x += count;
            } else {
                const QByteArrayView literal = chunk.bytes(-count);
                if (!chunk.ok() || x - count > width)
                    return false;
                memcpy(line + x, literal.data(), -count);
                x -= count;
            }
        }
    }
    return true;
}

bool FlcHandler::decodeDeltaFli(ByteCursor &chunk)
{
    const int width = m_header.width;
    const int firstLine = chunk.u16le();
    const int lines = chunk.u16le();
    if (!chunk.ok() || firstLine + lines > m_header.height)
        return false;
    char *canvas = m_canvas.data();
    for (int y = firstLine; y < firstLine + lines; ++y) {
        char *line = canvas + qsizetype(y) * width;
        const int packets = chunk.u8();
        int x = 0;
        for (int p = 0; p < packets; ++p) {
            x += chunk.u8();
            const qint8 count = chunk.i8();
            if (!chunk.ok())
                return false;
            if (count >= 0) {
                const QByteArrayView literal = chunk.bytes(count);
                if (!chunk.ok() || x + count > width)
                    return false;
                memcpy(line + x, literal.data(), count);
                x += count;
            } else {
                const quint8 value = chunk.u8();
                if (!chunk.ok() || x - count > width)
                    return false;
                memset(line + x, value, -count);
                x -= count;
            }
        }
    }
    return true;
}

bool FlcHandler::decodeDeltaFlc(ByteCursor &chunk)
{
    const int width = m_header.width;
    const int height = m_header.height;
    char *canvas = m_canvas.data();
    const int lines = chunk.u16le();
    int y = 0;
    for (int l = 0; l < lines; ++l) {
        // Opcode words come before the packets of a line: a negative count
        // skips lines, 0x8000 sets the last pixel of an odd-width line, and
        // a plain count gives the number of packets.
        int packets = -1;
        while (packets < 0) {
            const quint16 word = chunk.u16le();
            if (!chunk.ok())
                return false;
            switch (word & 0xC000) {
            case 0xC000:
                y += 0x10000 - word;
                break;
            case 0x8000:
                if (y >= height)
                    return false;
                canvas[qsizetype(y) * width + width - 1] = char(word & 0xff);
                break;
            case 0x0000:
                packets = word;
                break;
            default:
                return false;
            }
        }
        if (y >= height)
            return false;
        char *line = canvas + qsizetype(y) * width;
        int x = 0;
        for (int p = 0; p < packets; ++p) {
            x += chunk.u8();
            const qint8 count = chunk.i8();
            if (!chunk.ok())
                return false;
            if (count >= 0) {
                const QByteArrayView literal = chunk.bytes(qsizetype(count) * 2);
                if (!chunk.ok() || x + 2 * count > width)
                    return false;
                memcpy(line + x, literal.data(), 2 * count);
                x += 2 * count;
            } else {
                const QByteArrayView pair = chunk.bytes(2);
                if (!chunk.ok() || x - 2 * count > width)
                    return false;
                for (int i = 0; i < -count; ++i) {
                    line[x++] = pair[0];
                    line[x++] = pair[1];
                }
            }
        }
        ++y;
    }
    return true;
}

bool FlcHandler::decodeCopy(ByteCursor &chunk)
{
    const QByteArrayView pixels = chunk.bytes(m_canvas.size());
    if (!chunk.ok())
        return false;
    memcpy(m_canvas.data(), pixels.data(), pixels.size());
    return true;
}

} // namespace tarnby::imaging::codecs
