#include "core/platform/imaging/codecs/IlbmHandler.h"

#include <QIODevice>
#include <QVariant>

namespace tarnby::imaging::codecs {

namespace {

constexpr quint32 CamgHam = 0x800;
constexpr quint32 CamgExtraHalfbrite = 0x80;

quint32 fourCC(const char (&id)[5])
{
    return (quint32(uchar(id[0])) << 24) | (quint32(uchar(id[1])) << 16) | (quint32(uchar(id[2])) << 8)
        | quint32(uchar(id[3]));
}

// Unpacks ByteRun1 data into exactly out.size() bytes. Returns false when the
// source ends first; extra source bytes are ignored.
bool unpackByteRun1(ByteCursor &in, QByteArray &out)
{
    char *dst = out.data();
    qsizetype pos = 0;
    const qsizetype size = out.size();
    while (pos < size) {
        const qint8 n = in.i8();
        if (!in.ok())
            return false;
        if (n >= 0) {
            const qsizetype count = qMin<qsizetype>(n + 1, size - pos);
            const QByteArrayView literal = in.bytes(n + 1);
            if (!in.ok())
                return false;
            memcpy(dst + pos, literal.data(), count);
            pos += count;
        } else if (n != -128) {
            const quint8 value = in.u8();
            if (!in.ok())
                return false;
            const qsizetype count = qMin<qsizetype>(-n + 1, size - pos);
            memset(dst + pos, value, count);
            pos += count;
        }
    }
    return true;
}

} // namespace

IlbmHandler::BitmapHeader IlbmHandler::BitmapHeader::parse(ByteCursor &cursor)
{
    BitmapHeader b;
    b.w = cursor.u16be();
    b.h = cursor.u16be();
    b.x = cursor.i16be();
    b.y = cursor.i16be();
    b.nPlanes = cursor.u8();
    b.masking = cursor.u8();
    b.compression = cursor.u8();
    b.pad1 = cursor.u8();
    b.transparentColor = cursor.u16be();
    b.xAspect = cursor.u8();
    b.yAspect = cursor.u8();
    b.pageWidth = cursor.i16be();
    b.pageHeight = cursor.i16be();
    return b;
}

bool IlbmHandler::BitmapHeader::isValid(bool chunky) const
{
    if (w == 0 || h == 0 || compression > CmpByteRun1 || masking > MskLasso)
        return false;
    if (chunky)
        return nPlanes == 8;
    return (nPlanes >= 1 && nPlanes <= 8) || nPlanes == 24 || nPlanes == 32;
}

bool IlbmHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, 12);
    return head.size() == 12 && head.startsWith("FORM") && (head.mid(8, 4) == "ILBM" || head.mid(8, 4) == "PBM ");
}

bool IlbmHandler::canRead() const
{
    return claim(canRead(device()), "iff");
}

std::optional<QSize> IlbmHandler::headerSize() const
{
    // BMHD is the first chunk in every file we have seen; look only there.
    const QByteArray head = peekBytes(device(), 40);
    ByteCursor cursor(head, 12);
    if (cursor.u32be() != fourCC("BMHD"))
        return std::nullopt;
    cursor.skip(4);
    const BitmapHeader b = BitmapHeader::parse(cursor);
    if (!cursor.ok() || b.w == 0 || b.h == 0)
        return std::nullopt;
    return QSize(b.w, b.h);
}

bool IlbmHandler::read(QImage *image)
{
    QByteArray data;
    if (!readWholePicture(&data))
        return false;

    ByteCursor file(data);
    const quint32 form = file.u32be();
    const quint32 formSize = file.u32be();
    const quint32 formType = file.u32be();
    if (!file.ok() || form != fourCC("FORM"))
        return fail(QStringLiteral("Not an IFF file"));
    if (formType != fourCC("ILBM") && formType != fourCC("PBM "))
        return fail(QStringLiteral("The IFF file holds no bitmap picture"));
    const bool chunky = formType == fourCC("PBM ");
    // A FORM that claims more than the file holds is read as far as it goes.
    const qsizetype end = qMin<qsizetype>(data.size(), qsizetype(formSize) + 8);

    bool haveHeader = false;
    BitmapHeader bmhd;
    QList<QRgb> palette;
    quint32 camg = 0;
    QByteArrayView body;
    bool haveBody = false;
    while (file.pos() + 8 <= end) {
        const quint32 id = file.u32be();
        const quint32 size = file.u32be();
        if (!file.ok())
            break;
        const qsizetype available = end - file.pos();
        if (qint64(size) > available) {
            if (id != fourCC("BODY"))
                return fail(QStringLiteral("The IFF file is truncated"));
        }
        const QByteArrayView chunk = file.bytes(qMin<qsizetype>(size, available));
        if (id == fourCC("BMHD")) {
            ByteCursor c(chunk);
            bmhd = BitmapHeader::parse(c);
            if (!c.ok())
                return fail(QStringLiteral("The IFF bitmap header is too short"));
            haveHeader = true;
        } else if (id == fourCC("CMAP")) {
            ByteCursor c(chunk);
            const int count = qMin<int>(int(chunk.size() / 3), 256);
            palette.clear();
            for (int i = 0; i < count; ++i) {
                const quint8 r = c.u8(), g = c.u8(), b = c.u8();
                palette.append(qRgb(r, g, b));
            }
        } else if (id == fourCC("CAMG")) {
            ByteCursor c(chunk);
            camg = c.u32be();
        } else if (id == fourCC("BODY")) {
            body = chunk;
            haveBody = true;
            break;
        }
        if (size & 1)
            file.skip(qMin<qsizetype>(1, file.remaining()));
    }
    if (!haveHeader)
        return fail(QStringLiteral("The IFF file has no bitmap header"));
    if (!bmhd.isValid(chunky))
        return fail(QStringLiteral("The IFF bitmap header is not valid (%1 x %2, %3 planes)")
                        .arg(bmhd.w)
                        .arg(bmhd.h)
                        .arg(bmhd.nPlanes));
    if (!haveBody)
        return fail(QStringLiteral("The IFF file has no picture data"));

    const int width = bmhd.w;
    const int height = bmhd.h;
    if (qint64(width) * height > MaxPixels)
        return fail(QStringLiteral("The picture is too large (%1 x %2 pixels)").arg(width).arg(height));

    // Each row of each plane is a whole number of 16-bit words; a PBM row is
    // one byte a pixel, padded to an even length.
    const int planeRowBytes = chunky ? ((width + 1) & ~1) : ((width + 15) / 16) * 2;
    const int planesStored = chunky ? 1 : bmhd.nPlanes + (bmhd.masking == BitmapHeader::MskHasMask ? 1 : 0);
    const qint64 rowBytes = qint64(planeRowBytes) * planesStored;
    const qint64 bodyBytes = rowBytes * height;
    // ByteRun1 expands at most 128 times, so the packed body bounds the
    // picture before we allocate it.
    const qint64 maxExpansion = bmhd.compression == BitmapHeader::CmpByteRun1 ? 128 : 1;
    if (bodyBytes > qint64(body.size()) * maxExpansion)
        return fail(QStringLiteral("The IFF picture data is truncated"));

    if (bmhd.compression == BitmapHeader::CmpNone && body.size() < bodyBytes)
        return fail(QStringLiteral("The IFF picture data is truncated"));

    const bool ham = !chunky && (camg & CamgHam) && (bmhd.nPlanes == 6 || bmhd.nPlanes == 8);
    const bool ehb = !chunky && !ham && (camg & CamgExtraHalfbrite) && bmhd.nPlanes == 6;
    const bool trueColour = !chunky && bmhd.nPlanes >= 24;
    const bool indexed = !ham && !trueColour;

    QImage result;
    const QImage::Format format = indexed ? QImage::Format_Indexed8
                                          : (bmhd.nPlanes == 32 ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    QString error;
    if (!allocatePicture(QSize(width, height), format, &result, &error))
        return fail(error);

    if (indexed) {
        const int colours = 1 << bmhd.nPlanes;
        QList<QRgb> table = palette;
        if (table.isEmpty()) {
            // No palette: a grey ramp over the available indexes.
            for (int i = 0; i < colours; ++i) {
                const int v = colours > 1 ? i * 255 / (colours - 1) : 0;
                table.append(qRgb(v, v, v));
            }
        }
        if (ehb) {
            table.resize(32, qRgb(0, 0, 0));
            for (int i = 0; i < 32; ++i)
                table.append(qRgb(qRed(table[i]) / 2, qGreen(table[i]) / 2, qBlue(table[i]) / 2));
        }
        table.resize(qMax(colours, int(table.size())), qRgb(0, 0, 0));
        table.resize(qMin<qsizetype>(table.size(), 256));
        if (bmhd.masking == BitmapHeader::MskHasTransparentColor && bmhd.transparentColor < table.size())
            table[bmhd.transparentColor] &= 0x00ffffff;
        result.setColorTable(table);
    }

    // Rows are unpacked one at a time (each row of planes is packed on its
    // own), so memory beyond the picture stays at one row.
    QList<quint32> pixels(width);
    QByteArray rowBuffer(rowBytes, Qt::Uninitialized);
    ByteCursor packed(body);
    for (int y = 0; y < height; ++y) {
        if (bmhd.compression == BitmapHeader::CmpByteRun1) {
            if (!unpackByteRun1(packed, rowBuffer))
                return fail(QStringLiteral("The IFF picture data is truncated"));
        } else {
            memcpy(rowBuffer.data(), body.data() + rowBytes * y, rowBytes);
        }
        const uchar *row = reinterpret_cast<const uchar *>(rowBuffer.constData());
        if (chunky) {
            memcpy(result.scanLine(y), row, width);
            continue;
        }
        // Gather the bits of each pixel from its planes, plane 0 lowest.
        std::fill(pixels.begin(), pixels.end(), 0u);
        for (int p = 0; p < bmhd.nPlanes; ++p) {
            const uchar *plane = row + qsizetype(planeRowBytes) * p;
            for (int x = 0; x < width; ++x) {
                if (plane[x >> 3] & (0x80 >> (x & 7)))
                    pixels[x] |= 1u << p;
            }
        }
        if (indexed) {
            uchar *out = result.scanLine(y);
            for (int x = 0; x < width; ++x)
                out[x] = uchar(pixels[x]);
        } else if (trueColour) {
            auto *out = reinterpret_cast<QRgb *>(result.scanLine(y));
            for (int x = 0; x < width; ++x) {
                const quint32 v = pixels[x];
                const int alpha = bmhd.nPlanes == 32 ? int(v >> 24) : 255;
                out[x] = qRgba(int(v & 0xff), int((v >> 8) & 0xff), int((v >> 16) & 0xff), alpha);
            }
        } else {
            // Hold-and-modify: the top two bits say whether the rest is a
            // palette index or replaces the blue, red or green of the pixel
            // to the left. Each row starts from the background colour.
            auto *out = reinterpret_cast<QRgb *>(result.scanLine(y));
            const int valueBits = bmhd.nPlanes - 2;
            const quint32 valueMask = (1u << valueBits) - 1;
            QRgb current = palette.value(0, qRgb(0, 0, 0));
            for (int x = 0; x < width; ++x) {
                const quint32 v = pixels[x] & valueMask;
                const quint32 control = pixels[x] >> valueBits;
                // Widen the value to 8 bits by repeating its top bits.
                const int level = valueBits == 4 ? int(v * 17) : int((v << 2) | (v >> 4));
                switch (control) {
                case 0:
                    current = palette.value(int(v), qRgb(0, 0, 0));
                    break;
                case 1:
                    current = qRgb(qRed(current), qGreen(current), level);
                    break;
                case 2:
                    current = qRgb(level, qGreen(current), qBlue(current));
                    break;
                default:
                    current = qRgb(qRed(current), level, qBlue(current));
                    break;
                }
                out[x] = current;
            }
        }
    }
    noteFileBits(&result, bmhd.nPlanes);
    *image = result;
    return true;
}

} // namespace tarnby::imaging::codecs
