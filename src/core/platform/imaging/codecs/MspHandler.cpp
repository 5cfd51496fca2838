#include "core/platform/imaging/codecs/MspHandler.h"

#include <QIODevice>
#include <QVariant>

namespace tarnby::imaging::codecs {

MspHandler::Header MspHandler::Header::parse(ByteCursor &cursor)
{
    Header h;
    h.key1 = cursor.u16le();
    h.key2 = cursor.u16le();
    h.width = cursor.u16le();
    h.height = cursor.u16le();
    h.xARBitmap = cursor.u16le();
    h.yARBitmap = cursor.u16le();
    h.xARPrinter = cursor.u16le();
    h.yARPrinter = cursor.u16le();
    h.printerWidth = cursor.u16le();
    h.printerHeight = cursor.u16le();
    h.xAspectCorr = cursor.u16le();
    h.yAspectCorr = cursor.u16le();
    h.checksum = cursor.u16le();
    for (quint16 &p : h.padding)
        p = cursor.u16le();
    return h;
}

bool MspHandler::Header::checksumMatches() const
{
    const quint16 words[] = {key1, key2, width, height, xARBitmap, yARBitmap, xARPrinter, yARPrinter,
                             printerWidth, printerHeight, xAspectCorr, yAspectCorr, checksum,
                             padding[0], padding[1], padding[2]};
    quint16 x = 0;
    for (quint16 w : words)
        x ^= w;
    return x == 0;
}

bool MspHandler::canRead(QIODevice *device)
{
    return peekHeader<Header>(device).has_value();
}

bool MspHandler::canRead() const
{
    return claim(canRead(device()), "msp");
}

std::optional<QSize> MspHandler::headerSize() const
{
    if (const std::optional<Header> h = peekHeader<Header>(device()))
        return QSize(h->width, h->height);
    return std::nullopt;
}

bool MspHandler::read(QImage *image)
{
    QByteArray data;
    ByteCursor cursor;
    Header h;
    if (!readPictureHeader(&data, &cursor, &h, QStringLiteral("The Paint file"), [](const Header &header) {
            if (!header.isVersion1() && !header.isVersion2())
                return QStringLiteral("Not a Microsoft Paint file");
            if (!header.isValid())
                return QStringLiteral("The Paint file gives no width or height");
            if (!header.checksumMatches())
                return QStringLiteral("The Paint file header is damaged (checksum mismatch)");
            return QString();
        }))
        return false;

    const int bytesPerRow = (h.width + 7) / 8;
    // Version 1 rows are stored plainly, so the size of the file bounds the
    // picture before we allocate it; version 2 rows come with a length table.
    if (h.isVersion1() && cursor.remaining() < qint64(bytesPerRow) * h.height)
        return fail(QStringLiteral("The Paint file is truncated"));
    if (h.isVersion2() && cursor.remaining() < qint64(h.height) * 2)
        return fail(QStringLiteral("The Paint file is truncated in its row table"));

    QImage result;
    QString error;
    if (!allocateMono(QSize(h.width, h.height), &result, &error))
        return fail(error);

    if (h.isVersion1()) {
        for (int y = 0; y < h.height; ++y) {
            const QByteArrayView row = cursor.bytes(bytesPerRow);
            if (!cursor.ok())
                return fail(QStringLiteral("The Paint file is truncated"));
            memcpy(result.scanLine(y), row.data(), bytesPerRow);
        }
    } else {
        QList<quint16> rowLengths(h.height);
        for (quint16 &length : rowLengths)
            length = cursor.u16le();
        if (!cursor.ok())
            return fail(QStringLiteral("The Paint file is truncated in its row table"));
        for (int y = 0; y < h.height; ++y) {
            uchar *out = result.scanLine(y);
            const QByteArrayView packed = cursor.bytes(rowLengths[y]);
            if (!cursor.ok())
                return fail(QStringLiteral("The Paint file is truncated at row %1").arg(y));
            // An empty row is a blank (white) row.
            memset(out, 0xff, bytesPerRow);
            ByteCursor row(packed);
            int x = 0;
            while (!row.atEnd()) {
                const quint8 runType = row.u8();
                if (runType == 0) {
                    const quint8 runCount = row.u8();
                    const quint8 runValue = row.u8();
                    if (!row.ok() || x + runCount > bytesPerRow)
                        return fail(QStringLiteral("The Paint file has a damaged row %1").arg(y));
                    memset(out + x, runValue, runCount);
                    x += runCount;
                } else {
                    const QByteArrayView literal = row.bytes(runType);
                    if (!row.ok() || x + runType > bytesPerRow)
                        return fail(QStringLiteral("The Paint file has a damaged row %1").arg(y));
                    memcpy(out + x, literal.data(), runType);
                    x += runType;
                }
            }
        }
    }
    noteFileBits(&result, 1);
    *image = result;
    return true;
}

namespace {

// Packs one row the way Paint 2 does: runs of three or more equal bytes as
// (0, count, value), everything else as (count, bytes...).
QByteArray packRow(const uchar *row, int length)
{
    QByteArray out;
    int i = 0;
    while (i < length) {
        int run = 1;
        while (i + run < length && run < 255 && row[i + run] == row[i])
            ++run;
        if (run >= 3) {
            out.append(char(0)).append(char(run)).append(char(row[i]));
            i += run;
            continue;
        }
        int start = i;
        int count = 0;
        while (i < length && count < 255) {
            if (i + 2 < length && row[i] == row[i + 1] && row[i] == row[i + 2])
                break;
            ++i;
            ++count;
        }
        out.append(char(count)).append(reinterpret_cast<const char *>(row + start), count);
    }
    return out;
}

void putWord(QByteArray &out, quint16 value)
{
    out.append(char(value & 0xff)).append(char(value >> 8));
}

} // namespace

bool MspHandler::write(const QImage &source)
{
    clearError();
    if (source.isNull())
        return fail(QStringLiteral("There is no picture to save"));
    if (source.width() > 0xffff || source.height() > 0xffff)
        return fail(QStringLiteral("A Paint file holds at most 65535 x 65535 pixels"));
    const QImage mono = toWhiteOnBits(source);
    if (mono.isNull())
        return fail(QStringLiteral("Not enough memory to convert the picture"));

    const int bytesPerRow = (mono.width() + 7) / 8;
    Header h;
    h.key1 = 0x694C;
    h.key2 = 0x536E;
    h.width = quint16(mono.width());
    h.height = quint16(mono.height());
    h.xARBitmap = h.yARBitmap = h.xARPrinter = h.yARPrinter = 1;
    h.printerWidth = h.width;
    h.printerHeight = h.height;
    h.checksum = 0;
    const quint16 words[] = {h.key1, h.key2, h.width, h.height, h.xARBitmap, h.yARBitmap, h.xARPrinter,
                             h.yARPrinter, h.printerWidth, h.printerHeight, h.xAspectCorr, h.yAspectCorr};
    for (quint16 w : words)
        h.checksum ^= w;

    QByteArray rows;
    QByteArray table;
    QByteArray padded(bytesPerRow, '\0');
    for (int y = 0; y < mono.height(); ++y) {
        memcpy(padded.data(), mono.constScanLine(y), bytesPerRow);
        // Bits beyond the width are white, as Paint leaves them.
        if (const int spare = bytesPerRow * 8 - mono.width())
            padded[bytesPerRow - 1] = char(uchar(padded[bytesPerRow - 1]) | ((1 << spare) - 1));
        const QByteArray packed = packRow(reinterpret_cast<const uchar *>(padded.constData()), bytesPerRow);
        if (packed.size() > 0xffff)
            return fail(QStringLiteral("A row of the picture is too wide for a Paint file"));
        putWord(table, quint16(packed.size()));
        rows.append(packed);
    }

    QByteArray out;
    const quint16 header[] = {h.key1, h.key2, h.width, h.height, h.xARBitmap, h.yARBitmap, h.xARPrinter,
                              h.yARPrinter, h.printerWidth, h.printerHeight, h.xAspectCorr, h.yAspectCorr,
                              h.checksum, 0, 0, 0};
    for (quint16 w : header)
        putWord(out, w);
    out.append(table).append(rows);
    if (device()->write(out) != out.size())
        return fail(QStringLiteral("The Paint file could not be written"));
    return true;
}

} // namespace tarnby::imaging::codecs
