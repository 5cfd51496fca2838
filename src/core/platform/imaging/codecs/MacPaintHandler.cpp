#include "core/platform/imaging/codecs/MacPaintHandler.h"

#include <QIODevice>
#include <QVariant>

namespace tarnby::imaging::codecs {

namespace {

bool hasMacBinaryHeader(QByteArrayView head)
{
    // MacBinary: zero version byte, a file name of 1 to 63 characters, the
    // file type "PNTG" at 65 and two zero bytes at 74 and 82.
    return head.size() >= 128 && head[0] == 0 && uchar(head[1]) >= 1 && uchar(head[1]) <= 63
        && head.sliced(65, 4) == "PNTG" && head[74] == 0 && head[82] == 0;
}

// Unpacks one PackBits line into out (BytesPerLine bytes); false on damage.
bool unpackLine(ByteCursor &in, uchar *out)
{
    int x = 0;
    while (x < MacPaintHandler::BytesPerLine) {
        const qint8 n = in.i8();
        if (!in.ok())
            return false;
        if (n >= 0) {
            const QByteArrayView literal = in.bytes(n + 1);
            if (!in.ok() || x + n + 1 > MacPaintHandler::BytesPerLine)
                return false;
            memcpy(out + x, literal.data(), n + 1);
            x += n + 1;
        } else if (n != -128) {
            const quint8 value = in.u8();
            if (!in.ok() || x - n + 1 > MacPaintHandler::BytesPerLine)
                return false;
            memset(out + x, value, -n + 1);
            x += -n + 1;
        }
    }
    return true;
}

} // namespace

bool MacPaintHandler::canRead(QIODevice *device)
{
    const QByteArray head = peekBytes(device, Header::MacBinarySize + Header::Size + 4 * BytesPerLine);
    if (hasMacBinaryHeader(head))
        return true;
    // Without MacBinary there is no signature: accept the version word and
    // first lines that unpack cleanly.
    ByteCursor cursor(head);
    Header h;
    h.version = cursor.u32be();
    if (!cursor.ok() || !h.isValid() || !cursor.seek(Header::Size))
        return false;
    uchar line[BytesPerLine];
    for (int i = 0; i < 2; ++i) {
        if (!unpackLine(cursor, line))
            return false;
    }
    return true;
}

bool MacPaintHandler::canRead() const
{
    return claim(canRead(device()), "mac");
}

std::optional<QSize> MacPaintHandler::headerSize() const
{
    return QSize(PageWidth, PageHeight);
}

bool MacPaintHandler::read(QImage *image)
{
    QByteArray data;
    if (!readWholePicture(&data))
        return false;

    Header h;
    h.macBinary = hasMacBinaryHeader(data);
    ByteCursor cursor(data, h.macBinary ? Header::MacBinarySize : 0);
    h.version = cursor.u32be();
    if (!cursor.ok() || !cursor.skip(Header::Size - 4))
        return fail(QStringLiteral("The MacPaint file is shorter than its header"));
    if (!h.isValid())
        return fail(QStringLiteral("Not a MacPaint file (version %1)").arg(h.version));

    QImage result;
    QString error;
    if (!allocateMono(QSize(PageWidth, PageHeight), &result, &error))
        return fail(error);
    uchar line[BytesPerLine];
    for (int y = 0; y < PageHeight; ++y) {
        if (!unpackLine(cursor, line))
            return fail(cursor.ok() ? QStringLiteral("The MacPaint file has a damaged line %1").arg(y + 1)
                                    : QStringLiteral("The MacPaint file is truncated at line %1").arg(y + 1));
        // MacPaint sets a bit for black; our one-bit pictures set it for white.
        uchar *out = result.scanLine(y);
        for (int i = 0; i < BytesPerLine; ++i)
            out[i] = uchar(~line[i]);
    }
    noteFileBits(&result, 1);
    *image = result;
    return true;
}

bool MacPaintHandler::write(const QImage &source)
{
    clearError();
    if (source.isNull())
        return fail(QStringLiteral("There is no picture to save"));
    const QImage mono = toWhiteOnBits(source);
    if (mono.isNull())
        return fail(QStringLiteral("Not enough memory to convert the picture"));

    QByteArray out(Header::Size, '\0');
    // Version 0: the document carries no fill patterns of its own.
    uchar line[BytesPerLine];
    const int copyBytes = qMin(BytesPerLine, (mono.width() + 7) / 8);
    for (int y = 0; y < PageHeight; ++y) {
        memset(line, 0, BytesPerLine);
        if (y < mono.height()) {
            const uchar *src = mono.constScanLine(y);
            for (int i = 0; i < copyBytes; ++i)
                line[i] = uchar(~src[i]);
            // Bits beyond the picture's width are white (clear).
            if (mono.width() < PageWidth && (mono.width() & 7))
                line[copyBytes - 1] &= uchar(0xFF << (8 - (mono.width() & 7)));
        }
        // PackBits: runs of two or more equal bytes, else literals.
        int x = 0;
        while (x < BytesPerLine) {
            int run = 1;
            while (x + run < BytesPerLine && run < 128 && line[x + run] == line[x])
                ++run;
            if (run >= 2) {
                out.append(char(1 - run)).append(char(line[x]));
                x += run;
                continue;
            }
            const int start = x;
            int count = 0;
            while (x < BytesPerLine && count < 128) {
                if (x + 1 < BytesPerLine && line[x] == line[x + 1])
                    break;
                ++x;
                ++count;
            }
            out.append(char(count - 1)).append(reinterpret_cast<const char *>(line + start), count);
        }
    }
    if (device()->write(out) != out.size())
        return fail(QStringLiteral("The MacPaint file could not be written"));
    return true;
}

} // namespace tarnby::imaging::codecs
