#include "core/platform/imaging/codecs/DicomHandler.h"

#include <QIODevice>

#include <cstring>

namespace tarnby::imaging::codecs {

namespace {

constexpr char ImplicitLittleEndian[] = "1.2.840.10008.1.2";
constexpr char ExplicitLittleEndian[] = "1.2.840.10008.1.2.1";
constexpr quint32 UndefinedLength = 0xFFFFFFFF;
// Sequences inside sequences deeper than this are taken for damage.
constexpr int MaxNesting = 16;
// The meta group sits right after the preamble; this much holds it.
constexpr qint64 MetaPeekBytes = 4096;

quint32 tagOf(quint16 group, quint16 element)
{
    return (quint32(group) << 16) | element;
}

constexpr quint32 TransferSyntaxTag = 0x00020010;
constexpr quint32 PixelDataTag = 0x7FE00010;
constexpr quint32 ItemTag = 0xFFFEE000;
constexpr quint32 ItemEndTag = 0xFFFEE00D;
constexpr quint32 SequenceEndTag = 0xFFFEE0DD;

// Value representations whose length is four bytes, after two reserved ones.
bool hasLongLength(QByteArrayView vr)
{
    static const char *const longOnes[] = {"OB", "OD", "OF", "OL", "OV", "OW", "SQ", "SV", "UC", "UN", "UR", "UT", "UV"};
    for (const char *v : longOnes) {
        if (vr == QByteArrayView(v, 2))
            return true;
    }
    return false;
}

QByteArray trimmedValue(QByteArrayView value)
{
    QByteArray text = value.toByteArray();
    while (!text.isEmpty() && (text.back() == '\0' || text.back() == ' '))
        text.chop(1);
    return text;
}

struct Element {
    quint32 tag = 0;
    QByteArray vr;
    quint32 length = 0;
};

// One element header at the cursor. Group 2 and item tags follow their own
// rules whatever the data set's representation.
bool readHeader(ByteCursor &cursor, bool explicitVr, Element *e)
{
    const quint16 group = cursor.u16le();
    const quint16 element = cursor.u16le();
    e->tag = tagOf(group, element);
    e->vr.clear();
    if (group == 0xFFFE) {
        e->length = cursor.u32le();
    } else if (explicitVr || group == 0x0002) {
        e->vr = cursor.bytes(2).toByteArray();
        if (hasLongLength(e->vr)) {
            cursor.skip(2);
            e->length = cursor.u32le();
        } else {
            e->length = cursor.u16le();
        }
    } else {
        e->length = cursor.u32le();
    }
    return cursor.ok();
}

// Skips elements up to and including the tag that ends them (the end of an
// item or of a sequence of undefined length).
bool skipUntil(ByteCursor &cursor, bool explicitVr, quint32 endTag, int depth)
{
    if (depth > MaxNesting)
        return false;
    Element e;
    while (readHeader(cursor, explicitVr, &e)) {
        if (e.tag == endTag)
            return true;
        if (e.length == UndefinedLength) {
            const quint32 end = e.tag == ItemTag ? ItemEndTag : SequenceEndTag;
            if (!skipUntil(cursor, explicitVr, end, depth + 1))
                return false;
        } else if (!cursor.skip(e.length)) {
            return false;
        }
    }
    return false;
}

} // namespace

DicomHandler::Preamble DicomHandler::Preamble::parse(ByteCursor &cursor)
{
    Preamble p;
    cursor.skip(128);
    const QByteArrayView prefix = cursor.bytes(4);
    if (prefix.size() == 4)
        std::memcpy(p.prefix, prefix.data(), 4);
    return p;
}

bool DicomHandler::parse(QByteArrayView data, PixelModule *m, QString *error)
{
    ByteCursor cursor(data);
    const Preamble preamble = Preamble::parse(cursor);
    if (!cursor.ok() || !preamble.isValid()) {
        *error = QStringLiteral("Not a DICOM file (no \"DICM\" after the preamble)");
        return false;
    }
    bool inMeta = true;
    Element e;
    while (true) {
        const qsizetype at = cursor.pos();
        // The data set's representation is known once the meta group ends.
        if (inMeta && cursor.remaining() >= 2) {
            const quint16 group = quint16(quint8(data[at]) | (quint8(data[at + 1]) << 8));
            if (group != 0x0002) {
                inMeta = false;
                if (m->transferSyntax == ImplicitLittleEndian) {
                    m->explicitVr = false;
                    m->supportedSyntax = true;
                } else if (m->transferSyntax == ExplicitLittleEndian) {
                    m->explicitVr = true;
                    m->supportedSyntax = true;
                } else {
                    *error = QStringLiteral("DICOM pixel data in transfer syntax %1 (compressed or big-endian) is "
                                            "not read here")
                                 .arg(QString::fromLatin1(m->transferSyntax.isEmpty() ? "(none)" : m->transferSyntax));
                    return false;
                }
            }
        }
        if (!readHeader(cursor, m->explicitVr, &e)) {
            *error = QStringLiteral("The DICOM file ends before its pixel data");
            return false;
        }
        if (e.tag == PixelDataTag) {
            if (e.length == UndefinedLength) {
                *error = QStringLiteral("The DICOM pixel data is compressed, which is not read here");
                return false;
            }
            m->pixelDataAt = cursor.pos();
            m->pixelDataLength = e.length;
            return true;
        }
        if (e.length == UndefinedLength) {
            if (!skipUntil(cursor, m->explicitVr, e.tag == ItemTag ? ItemEndTag : SequenceEndTag, 0)) {
                *error = QStringLiteral("A DICOM sequence is damaged");
                return false;
            }
            continue;
        }
        const QByteArrayView value = cursor.bytes(e.length);
        if (!cursor.ok()) {
            *error = QStringLiteral("The DICOM file is truncated in element (%1,%2)")
                         .arg(e.tag >> 16, 4, 16, QLatin1Char('0'))
                         .arg(e.tag & 0xFFFF, 4, 16, QLatin1Char('0'));
            return false;
        }
        const auto us = [&] { return value.size() >= 2 ? quint16(quint8(value[0]) | (quint8(value[1]) << 8)) : quint16(0); };
        switch (e.tag) {
        case TransferSyntaxTag: m->transferSyntax = trimmedValue(value); break;
        case 0x00280002: m->samplesPerPixel = us(); break;
        case 0x00280004: m->photometric = trimmedValue(value); break;
        case 0x00280006: m->planarConfiguration = us(); break;
        case 0x00280010: m->rows = us(); break;
        case 0x00280011: m->columns = us(); break;
        case 0x00280100: m->bitsAllocated = us(); break;
        case 0x00280101: m->bitsStored = us(); break;
        case 0x00280103: m->pixelRepresentation = us(); break;
        default: break;
        }
    }
}

bool DicomHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, MetaPeekBytes);
    ByteCursor cursor(head);
    if (!Preamble::parse(cursor).isValid() || !cursor.ok())
        return false;
    // Only the meta group is looked at: it names the transfer syntax.
    Element e;
    while (cursor.remaining() >= 8) {
        if (!readHeader(cursor, true, &e) || (e.tag >> 16) != 0x0002)
            return false;
        const QByteArrayView value = cursor.bytes(e.length);
        if (!cursor.ok())
            return false;
        if (e.tag == TransferSyntaxTag) {
            const QByteArray syntax = trimmedValue(value);
            return syntax == ImplicitLittleEndian || syntax == ExplicitLittleEndian;
        }
    }
    return false;
}

bool DicomHandler::canRead() const
{
    return claim(canRead(device()), "dcm");
}

bool DicomHandler::read(QImage *image)
{
    QByteArray data;
    if (!readWholePicture(&data))
        return false;
    QString error;
    PixelModule m;
    if (!parse(data, &m, &error))
        return fail(error);

    const bool grey = m.samplesPerPixel == 1;
    if (!(grey && (m.photometric == "MONOCHROME1" || m.photometric == "MONOCHROME2"))
        && !(m.samplesPerPixel == 3 && m.photometric == "RGB"))
        return fail(QStringLiteral("DICOM pictures with %1 samples in \"%2\" colour are not read here")
                        .arg(m.samplesPerPixel)
                        .arg(QString::fromLatin1(m.photometric)));
    if (m.bitsAllocated != 8 && !(grey && m.bitsAllocated == 16))
        return fail(QStringLiteral("DICOM pictures with %1 bits allocated are not read here").arg(m.bitsAllocated));
    const int stored = m.bitsStored == 0 ? m.bitsAllocated : m.bitsStored;
    if (stored > m.bitsAllocated)
        return fail(QStringLiteral("The DICOM file stores %1 bits in %2").arg(stored).arg(m.bitsAllocated));
    if (m.rows == 0 || m.columns == 0)
        return fail(QStringLiteral("The DICOM file gives no rows or columns"));

    const int bytesPerSample = m.bitsAllocated / 8;
    const qint64 frameBytes = qint64(m.rows) * m.columns * m.samplesPerPixel * bytesPerSample;
    if (m.pixelDataLength < frameBytes || data.size() - m.pixelDataAt < frameBytes)
        return fail(QStringLiteral("The DICOM pixel data is truncated (%1 bytes for %2 x %3 pixels)")
                        .arg(qMin<qint64>(m.pixelDataLength, data.size() - m.pixelDataAt))
                        .arg(m.columns)
                        .arg(m.rows));

    const QImage::Format format = !grey ? QImage::Format_RGB888
                                        : (m.bitsAllocated == 16 ? QImage::Format_Grayscale16 : QImage::Format_Grayscale8);
    QImage result;
    if (!allocatePicture(QSize(m.columns, m.rows), format, &result, &error))
        return fail(error);

    const auto *pixels = reinterpret_cast<const uchar *>(data.constData() + m.pixelDataAt);
    if (grey) {
        // Stored values (sign-extended where signed) are stretched over the
        // full range of the picture's depth, darkest first; MONOCHROME1
        // shows the lowest value as white.
        const quint32 mask = stored >= 32 ? 0xFFFFFFFFu : (1u << stored) - 1;
        const qint64 top = qint64(mask);
        const qint64 full = m.bitsAllocated == 16 ? 65535 : 255;
        const bool inverted = m.photometric == "MONOCHROME1";
        for (int y = 0; y < m.rows; ++y) {
            uchar *line = result.scanLine(y);
            for (int x = 0; x < m.columns; ++x) {
                const qint64 i = qint64(y) * m.columns + x;
                quint32 raw = bytesPerSample == 2 ? quint32(pixels[2 * i] | (pixels[2 * i + 1] << 8)) : pixels[i];
                raw &= mask;
                qint64 v = raw;
                if (m.pixelRepresentation == 1)
                    v = (raw & (1u << (stored - 1))) ? qint64(raw) - (top + 1) + (top + 1) / 2 : qint64(raw) + (top + 1) / 2;
                qint64 level = top > 0 ? v * full / top : 0;
                if (inverted)
                    level = full - level;
                if (bytesPerSample == 2)
                    reinterpret_cast<quint16 *>(line)[x] = quint16(level);
                else
                    line[x] = uchar(level);
            }
        }
    } else {
        const qint64 plane = qint64(m.rows) * m.columns;
        for (int y = 0; y < m.rows; ++y) {
            uchar *line = result.scanLine(y);
            for (int x = 0; x < m.columns; ++x) {
                const qint64 i = qint64(y) * m.columns + x;
                for (int c = 0; c < 3; ++c)
                    line[3 * x + c] = m.planarConfiguration == 1 ? pixels[c * plane + i] : pixels[3 * i + c];
            }
        }
    }
    noteFileBits(&result, m.bitsAllocated * m.samplesPerPixel);
    *image = result;
    return true;
}

} // namespace tarnby::imaging::codecs
