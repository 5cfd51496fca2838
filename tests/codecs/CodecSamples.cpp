#include "CodecSamples.h"

#include <QBuffer>
#include <QImageWriter>

namespace codecsamples {

void le16(QByteArray &out, quint32 v)
{
    out.append(char(v & 0xff)).append(char((v >> 8) & 0xff));
}
void le32(QByteArray &out, quint32 v)
{
    le16(out, v & 0xffff);
    le16(out, v >> 16);
}

void be16(QByteArray &out, quint32 v)
{
    out.append(char((v >> 8) & 0xff)).append(char(v & 0xff));
}
void be32(QByteArray &out, quint32 v)
{
    be16(out, v >> 16);
    be16(out, v & 0xffff);
}

QImage indexedPicture(int width, int height, int colours, const std::function<int(int x, int y)> &index)
{
    QImage image(width, height, QImage::Format_Indexed8);
    QList<QRgb> table;
    for (int i = 0; i < colours; ++i)
        table.append(qRgb((i * 97) & 0xff, (i * 53) & 0xff, (i * 31) & 0xff));
    image.setColorTable(table);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, index(x, y) % colours);
    return image;
}

QByteArray encoded(const QImage &image, const char *format, int quality, bool progressive)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, format);
    writer.setQuality(quality);
    writer.setProgressiveScanWrite(progressive);
    return writer.write(image) ? bytes : QByteArray();
}

namespace {
void putLe32At(QByteArray &out, qsizetype at, quint32 v)
{
    for (int i = 0; i < 4; ++i)
        out[at + i] = char((v >> (8 * i)) & 0xff);
}

// Bit-plane rows of one line: plane p holds bit p of each pixel index.
QByteArray planeRows(const QImage &indexed, int y, int planes, int rowBytes)
{
    QByteArray rows(qsizetype(rowBytes) * planes, '\0');
    for (int x = 0; x < indexed.width(); ++x) {
        const int index = indexed.pixelIndex(x, y);
        for (int p = 0; p < planes; ++p) {
            if (index & (1 << p))
                rows[qsizetype(rowBytes) * p + x / 8] = char(uchar(rows[qsizetype(rowBytes) * p + x / 8]) | (0x80 >> (x % 8)));
        }
    }
    return rows;
}

QByteArray byteRun1(QByteArrayView row)
{
    QByteArray out;
    qsizetype i = 0;
    while (i < row.size()) {
        qsizetype run = 1;
        while (i + run < row.size() && run < 128 && row[i + run] == row[i])
            ++run;
        if (run >= 2) {
            out.append(char(1 - run)).append(row[i]);
            i += run;
            continue;
        }
        const qsizetype start = i;
        qsizetype count = 0;
        while (i < row.size() && count < 128 && !(i + 1 < row.size() && row[i] == row[i + 1])) {
            ++i;
            ++count;
        }
        out.append(char(count - 1)).append(row.sliced(start, count));
    }
    return out;
}


// One data element, explicit VR little endian: OB and OW carry a 32-bit
// length after two reserved bytes, the others a 16-bit length. Values are
// padded to even length (UI with a zero, text with a blank).
void element(QByteArray &out, quint16 group, quint16 number, const char *vr, QByteArray value)
{
    if (value.size() % 2)
        value.append(qstrcmp(vr, "UI") == 0 || qstrcmp(vr, "OB") == 0 ? '\0' : ' ');
    le16(out, group);
    le16(out, number);
    out.append(vr, 2);
    if (qstrcmp(vr, "OB") == 0 || qstrcmp(vr, "OW") == 0) {
        le16(out, 0);
        le32(out, quint32(value.size()));
    } else {
        le16(out, quint32(value.size()));
    }
    out.append(value);
}

QByteArray us(quint16 v)
{
    QByteArray out;
    le16(out, v);
    return out;
}

} // namespace

QByteArray mspVersion1(const QImage &image)
{
    const QImage mono = image.convertToFormat(QImage::Format_Mono, {qRgb(0, 0, 0), qRgb(255, 255, 255)});
    QByteArray out;
    const quint16 words[12] = {0x6144, 0x4D6E, quint16(mono.width()), quint16(mono.height()), 1, 1, 1, 1, 0, 0, 0, 0};
    quint16 checksum = 0;
    for (quint16 w : words) {
        le16(out, w);
        checksum ^= w;
    }
    le16(out, checksum);
    le16(out, 0);
    le16(out, 0);
    le16(out, 0);
    const int rowBytes = (mono.width() + 7) / 8;
    for (int y = 0; y < mono.height(); ++y)
        out.append(reinterpret_cast<const char *>(mono.constScanLine(y)), rowBytes);
    return out;
}

QByteArray gemImg(const QImage &indexed, int planes, bool ximg)
{
    const int width = indexed.width();
    const int rowBytes = (width + 7) / 8;
    const int patternLength = 2;
    QByteArray out;
    const int colours = 1 << planes;
    const int headerWords = ximg ? 11 + 3 * colours : 8;
    for (quint16 w : {quint16(1), quint16(headerWords), quint16(planes), quint16(patternLength), quint16(85),
                      quint16(85), quint16(width), quint16(indexed.height())})
        be16(out, w);
    if (ximg) {
        out.append("XIMG");
        be16(out, 0);
        const QList<QRgb> table = indexed.colorTable();
        for (int i = 0; i < colours; ++i) {
            const QRgb c = table.value(i, qRgb(0, 0, 0));
            be16(out, quint32(qRed(c)) * 1000 / 255);
            be16(out, quint32(qGreen(c)) * 1000 / 255);
            be16(out, quint32(qBlue(c)) * 1000 / 255);
        }
    }
    // One-bit GEM pictures set bits for black; our index 1 is black too when
    // the colour table says so, so monochrome input is taken as indexes.
    int y = 0;
    while (y < indexed.height()) {
        const QByteArray rows = planeRows(indexed, y, planes, rowBytes);
        int repeat = 1;
        while (y + repeat < indexed.height() && repeat < 255
               && planeRows(indexed, y + repeat, planes, rowBytes) == rows)
            ++repeat;
        if (repeat > 1)
            out.append(QByteArray::fromHex("0000FF")).append(char(repeat));
        for (int p = 0; p < planes; ++p) {
            const QByteArrayView row = QByteArrayView(rows).sliced(qsizetype(rowBytes) * p, rowBytes);
            int x = 0;
            while (x < rowBytes) {
                const uchar b = uchar(row[x]);
                int run = 1;
                while (x + run < rowBytes && run < 127 && uchar(row[x + run]) == b)
                    ++run;
                if ((b == 0x00 || b == 0xFF) && run >= 1) {
                    out.append(char((b ? 0x80 : 0x00) | run));
                    x += run;
                    continue;
                }
                // Pattern run: a byte pair repeated at least twice.
                int pairs = 0;
                while (x + 2 * (pairs + 1) <= rowBytes && pairs < 255 && row[x + 2 * pairs] == row[x]
                       && row[x + 2 * pairs + 1] == row[x + 1])
                    ++pairs;
                if (pairs >= 2) {
                    out.append(char(0)).append(char(pairs)).append(row.sliced(x, 2));
                    x += 2 * pairs;
                    continue;
                }
                // Bit string up to the next solid byte.
                int count = 0;
                while (x + count < rowBytes && count < 255 && uchar(row[x + count]) != 0x00
                       && uchar(row[x + count]) != 0xFF)
                    ++count;
                out.append(char(0x80)).append(char(count)).append(row.sliced(x, count));
                x += count;
            }
        }
        y += repeat;
    }
    return out;
}

QByteArray ilbm(const QImage &image, int planes, const IlbmOptions &options)
{
    const int width = image.width();
    const int height = image.height();
    QByteArray body;
    if (options.pbm) {
        const int rowBytes = (width + 1) & ~1;
        for (int y = 0; y < height; ++y) {
            QByteArray row(rowBytes, '\0');
            for (int x = 0; x < width; ++x)
                row[x] = char(image.pixelIndex(x, y));
            body.append(options.byteRun1 ? byteRun1(row) : row);
        }
    } else {
        const int rowBytes = ((width + 15) / 16) * 2;
        for (int y = 0; y < height; ++y) {
            QByteArray rows(qsizetype(rowBytes) * (planes + (options.mask ? 1 : 0)), '\0');
            for (int x = 0; x < width; ++x) {
                const quint32 value = planes >= 24 ? (qRed(image.pixel(x, y)) | (qGreen(image.pixel(x, y)) << 8)
                                                      | (qBlue(image.pixel(x, y)) << 16))
                                                   : quint32(image.pixelIndex(x, y));
                for (int p = 0; p < planes; ++p) {
                    if (value & (1u << p))
                        rows[qsizetype(rowBytes) * p + x / 8] =
                            char(uchar(rows[qsizetype(rowBytes) * p + x / 8]) | (0x80 >> (x % 8)));
                }
                if (options.mask)
                    rows[qsizetype(rowBytes) * planes + x / 8] =
                        char(uchar(rows[qsizetype(rowBytes) * planes + x / 8]) | (0x80 >> (x % 8)));
            }
            if (options.byteRun1) {
                // ByteRun1 packs each plane row on its own.
                for (int p = 0; p < planes + (options.mask ? 1 : 0); ++p)
                    body.append(byteRun1(QByteArrayView(rows).sliced(qsizetype(rowBytes) * p, rowBytes)));
            } else {
                body.append(rows);
            }
        }
    }
    QByteArray chunks;
    chunks.append("BMHD");
    be32(chunks, 20);
    be16(chunks, width);
    be16(chunks, height);
    be32(chunks, 0);
    chunks.append(char(options.pbm ? 8 : planes)).append(char(options.mask ? 1 : 0));
    chunks.append(char(options.byteRun1 ? 1 : 0)).append(char(0));
    be16(chunks, 0);
    chunks.append(char(10)).append(char(11));
    be16(chunks, width);
    be16(chunks, height);
    if (planes < 24) {
        const QList<QRgb> table = image.colorTable();
        chunks.append("CMAP");
        be32(chunks, quint32(table.size() * 3));
        for (QRgb c : table)
            chunks.append(char(qRed(c))).append(char(qGreen(c))).append(char(qBlue(c)));
        if (table.size() * 3 % 2)
            chunks.append('\0');
    }
    if (options.camg) {
        chunks.append("CAMG");
        be32(chunks, 4);
        be32(chunks, options.camg);
    }
    chunks.append("BODY");
    be32(chunks, quint32(body.size()));
    chunks.append(body);
    if (body.size() % 2)
        chunks.append('\0');
    QByteArray out("FORM");
    be32(out, quint32(chunks.size() + 4));
    out.append(options.pbm ? "PBM " : "ILBM").append(chunks);
    return out;
}

QByteArray ilbmRaw(int width, int height, int planes, const QList<quint8> &values, const QList<QRgb> &palette,
                   quint32 camg)
{
    QImage indexed(width, height, QImage::Format_Indexed8);
    QList<QRgb> table = palette;
    table.resize(256, qRgb(0, 0, 0));
    indexed.setColorTable(table);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            indexed.setPixel(x, y, values.value(y * width + x));
    IlbmOptions options;
    options.camg = camg;
    QByteArray out = ilbm(indexed, planes, options);
    // Keep only the given palette entries in CMAP.
    const qsizetype cmap = out.indexOf("CMAP");
    const quint32 oldSize = 256 * 3;
    QByteArray replacement("CMAP");
    be32(replacement, quint32(palette.size() * 3));
    for (QRgb c : palette)
        replacement.append(char(qRed(c))).append(char(qGreen(c))).append(char(qBlue(c)));
    if (palette.size() * 3 % 2)
        replacement.append('\0');
    out.replace(cmap, 8 + oldSize, replacement);
    QByteArray size;
    be32(size, quint32(out.size() - 8));
    out.replace(4, 4, size);
    return out;
}

QByteArray ani(const QList<QImage> &frames, const QList<quint32> &sequence, const QList<quint32> &rates,
               quint32 displayRate)
{
    QByteArray body("ACON");
    body.append("anih");
    le32(body, 36);
    le32(body, 36);
    le32(body, quint32(frames.size()));
    le32(body, quint32(sequence.isEmpty() ? frames.size() : sequence.size()));
    le32(body, 0);
    le32(body, 0);
    le32(body, 0);
    le32(body, 0);
    le32(body, displayRate);
    le32(body, sequence.isEmpty() ? 1 : 3);
    const auto list = [&body](const char *id, const QList<quint32> &values) {
        if (values.isEmpty())
            return;
        body.append(id);
        le32(body, quint32(values.size() * 4));
        for (quint32 v : values)
            le32(body, v);
    };
    list("rate", rates);
    list("seq ", sequence);
    QByteArray fram("fram");
    for (const QImage &frame : frames) {
        const QByteArray icon = encoded(frame, "ico");
        fram.append("icon");
        le32(fram, quint32(icon.size()));
        fram.append(icon);
        if (icon.size() % 2)
            fram.append('\0');
    }
    body.append("LIST");
    le32(body, quint32(fram.size()));
    body.append(fram);
    QByteArray out("RIFF");
    le32(out, quint32(body.size()));
    return out + body;
}

QByteArray clp(const QImage &image, bool win3Layout)
{
    const QByteArray dib = encoded(image, "bmp").mid(14);
    const QByteArray text("a picture\r\n");

    QByteArray out;
    le16(out, win3Layout ? 0xC350 : 0xC351);
    le16(out, 2);
    const int entrySize = win3Layout ? 89 : 170;
    const quint32 textOffset = 4 + 2 * entrySize;
    const quint32 dibOffset = textOffset + quint32(text.size());
    const auto entry = [&](quint32 id, quint32 length, quint32 offset) {
        if (win3Layout)
            le16(out, id);
        else
            le32(out, id);
        le32(out, length);
        le32(out, offset);
        out.append(QByteArray(win3Layout ? 79 : 158, '\0'));
    };
    entry(1, quint32(text.size()), textOffset); // CF_TEXT
    entry(8, quint32(dib.size()), dibOffset); // CF_DIB
    out.append(text).append(dib);
    return out;
}

namespace {

QByteArray chunk(quint16 type, const QByteArray &data)
{
    QByteArray out;
    le32(out, quint32(data.size() + 6));
    le16(out, type);
    return out + data;
}

QByteArray colourChunk(const QList<QRgb> &table, bool sixBit)
{
    QByteArray data;
    le16(data, 1);
    data.append(char(0)).append(char(0)); // skip 0, 256 colours
    for (int i = 0; i < 256; ++i) {
        const QRgb c = table.value(i, qRgb(0, 0, 0));
        const int shift = sixBit ? 2 : 0;
        data.append(char(qRed(c) >> shift)).append(char(qGreen(c) >> shift)).append(char(qBlue(c) >> shift));
    }
    return chunk(sixBit ? 11 : 4, data);
}

QByteArray byteRunChunk(const QImage &frame)
{
    QByteArray data;
    for (int y = 0; y < frame.height(); ++y) {
        const uchar *row = frame.constScanLine(y);
        data.append(char(0));
        int x = 0;
        while (x < frame.width()) {
            int run = 1;
            while (x + run < frame.width() && run < 127 && row[x + run] == row[x])
                ++run;
            if (run >= 3) {
                data.append(char(run)).append(char(row[x]));
                x += run;
                continue;
            }
            int count = 0;
            const int start = x;
            while (x < frame.width() && count < 127
                   && !(x + 2 < frame.width() && row[x] == row[x + 1] && row[x] == row[x + 2])) {
                ++x;
                ++count;
            }
            data.append(char(-count)).append(reinterpret_cast<const char *>(row + start), count);
        }
    }
    return chunk(15, data);
}

// Word delta: changed lines as packets of literal or repeated pixel pairs;
// unchanged lines are skipped; the last pixel of an odd-width line travels
// in its own opcode.
QByteArray ss2Chunk(const QImage &previous, const QImage &frame)
{
    QByteArray data;
    le16(data, 0);
    int lines = 0;
    int skip = 0;
    const int width = frame.width();
    const int pairs = width / 2;
    for (int y = 0; y < frame.height(); ++y) {
        const uchar *row = frame.constScanLine(y);
        if (memcmp(row, previous.constScanLine(y), width) == 0) {
            ++skip;
            continue;
        }
        if (skip)
            le16(data, quint32(0x10000 - skip));
        skip = 0;
        if (width % 2)
            le16(data, 0x8000 | row[width - 1]);
        QByteArray packets;
        int count = 0;
        int p = 0;
        while (p < pairs) {
            int run = 1;
            while (p + run < pairs && run < 127 && row[2 * (p + run)] == row[2 * p]
                   && row[2 * (p + run) + 1] == row[2 * p + 1])
                ++run;
            packets.append(char(0));
            if (run >= 2) {
                packets.append(char(-run)).append(reinterpret_cast<const char *>(row + 2 * p), 2);
                p += run;
            } else {
                int n = 0;
                const int start = p;
                while (p < pairs && n < 127) {
                    ++p;
                    ++n;
                }
                packets.append(char(n)).append(reinterpret_cast<const char *>(row + 2 * start), 2 * n);
            }
            ++count;
        }
        le16(data, quint32(count));
        data.append(packets);
        ++lines;
    }
    data[0] = char(lines & 0xff);
    data[1] = char(lines >> 8);
    return chunk(7, data);
}

// Byte delta: from the first to the last changed line, each line as packets
// of a skip, then literal bytes or a repeated byte.
QByteArray lcChunk(const QImage &previous, const QImage &frame)
{
    int first = 0;
    int last = frame.height() - 1;
    const int width = frame.width();
    while (first <= last && memcmp(frame.constScanLine(first), previous.constScanLine(first), width) == 0)
        ++first;
    while (last >= first && memcmp(frame.constScanLine(last), previous.constScanLine(last), width) == 0)
        --last;
    QByteArray data;
    le16(data, quint32(first > last ? 0 : first));
    le16(data, quint32(first > last ? 0 : last - first + 1));
    for (int y = first; y <= last; ++y) {
        const uchar *row = frame.constScanLine(y);
        const uchar *old = previous.constScanLine(y);
        QByteArray packets;
        int count = 0;
        int x = 0;
        while (x < width) {
            int skip = 0;
            while (x < width && skip < 255 && row[x] == old[x]) {
                ++x;
                ++skip;
            }
            if (x >= width)
                break;
            int run = 1;
            while (x + run < width && run < 127 && row[x + run] == row[x])
                ++run;
            if (run >= 3) {
                packets.append(char(skip)).append(char(-run)).append(char(row[x]));
                x += run;
            } else {
                int n = 0;
                const int start = x;
                while (x < width && n < 127 && row[x] != old[x]) {
                    ++x;
                    ++n;
                }
                if (n == 0) {
                    n = 1;
                    ++x;
                }
                packets.append(char(skip)).append(char(n)).append(reinterpret_cast<const char *>(row + start), n);
            }
            ++count;
        }
        data.append(char(count)).append(packets);
    }
    return chunk(12, data);
}

QByteArray frameChunk(const QList<QByteArray> &chunks)
{
    QByteArray body;
    le16(body, quint32(chunks.size()));
    le16(body, 0); // delay: the header's speed
    le16(body, 0);
    le16(body, 0);
    le16(body, 0);
    for (const QByteArray &c : chunks)
        body.append(c);
    QByteArray out;
    le32(out, quint32(body.size() + 6));
    le16(out, 0xF1FA);
    return out + body;
}

} // namespace

QByteArray flic(const QList<QImage> &frames, quint32 speed, bool fli)
{
    const QImage first = frames.first();
    QByteArray out(128, '\0');
    putLe32At(out, 0, 0);
    out[4] = char(fli ? 0x11 : 0x12);
    out[5] = char(0xAF);
    out[6] = char(frames.size() & 0xff);
    out[7] = char(frames.size() >> 8);
    out[8] = char(first.width() & 0xff);
    out[9] = char(first.width() >> 8);
    out[10] = char(first.height() & 0xff);
    out[11] = char(first.height() >> 8);
    out[12] = 8;
    putLe32At(out, 16, speed);
    if (!fli)
        putLe32At(out, 80, 128);
    QImage previous(first.size(), QImage::Format_Indexed8);
    previous.fill(0);
    for (int i = 0; i < frames.size(); ++i) {
        const QImage &frame = frames[i];
        QList<QByteArray> chunks;
        if (i == 0)
            chunks.append(colourChunk(frame.colorTable(), fli));
        bool allZero = true;
        for (int y = 0; y < frame.height() && allZero; ++y)
            for (int x = 0; x < frame.width() && allZero; ++x)
                allZero = frame.constScanLine(y)[x] == 0;
        if (allZero)
            chunks.append(chunk(13, {}));
        else if (i == 0)
            chunks.append(byteRunChunk(frame));
        else if (i % 2)
            chunks.append(ss2Chunk(previous, frame));
        else
            chunks.append(lcChunk(previous, frame));
        out.append(frameChunk(chunks));
        previous = frame;
    }
    putLe32At(out, 0, quint32(out.size()));
    return out;
}

QByteArray psd(const QImage &image, const PsdOptions &options)
{
    const bool large = options.largeDocument;
    quint16 mode = 1;
    int depth = 8;
    if (image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB) {
        mode = 0;
        depth = 1;
    } else if (image.format() == QImage::Format_Indexed8) {
        mode = 2;
    } else if (image.format() == QImage::Format_Grayscale16) {
        depth = 16;
    }
    const int channels = 1 + options.extraChannels;
    QByteArray out("8BPS");
    be16(out, large ? 2 : 1);
    out.append(6, '\0');
    be16(out, quint32(channels));
    be32(out, quint32(image.height()));
    be32(out, quint32(image.width()));
    be16(out, quint32(depth));
    be16(out, mode);

    // Colour mode data: reds, greens, blues of 256 entries.
    if (mode == 2) {
        be32(out, 768);
        for (int shift : {16, 8, 0})
            for (int i = 0; i < 256; ++i)
                out.append(char(i < image.colorCount() ? (image.color(i) >> shift) & 0xff : 0));
    } else {
        be32(out, 0);
    }

    QByteArray resources;
    const auto resource = [&](quint16 id, const QByteArray &name, const QByteArray &data) {
        resources.append("8BIM");
        be16(resources, id);
        resources.append(char(name.size())).append(name);
        if ((name.size() + 1) % 2)
            resources.append('\0');
        be32(resources, quint32(data.size()));
        resources.append(data);
        if (data.size() % 2)
            resources.append('\0');
    };
    QByteArray resolution;
    for (int i = 0; i < 2; ++i) {
        be32(resolution, quint32(options.dotsPerInch) << 16);
        be16(resolution, 1);
        be16(resolution, 1);
    }
    resource(1005, {}, resolution);
    resource(1028, "odd", QByteArray("abc")); // a name and data of odd length, padded
    if (options.transparentIndex >= 0) {
        QByteArray index;
        be16(index, quint32(options.transparentIndex));
        resource(1047, {}, index);
    }
    be32(out, quint32(resources.size()));
    out.append(resources);

    if (large) {
        be32(out, 0);
        be32(out, quint32(options.layers.size()));
    } else {
        be32(out, quint32(options.layers.size()));
    }
    out.append(options.layers);

    const int rowBytes = (image.width() * depth + 7) / 8;
    QList<QByteArray> rows;
    for (int c = 0; c < channels; ++c) {
        for (int y = 0; y < image.height(); ++y) {
            QByteArray row(rowBytes, '\0');
            for (int x = 0; x < image.width(); ++x) {
                if (c > 0) {
                    row[x * depth / 8] = char((x * 5 + y * 3 + c) & 0xff);
                } else if (mode == 0) {
                    if (qGray(image.pixel(x, y)) < 128)
                        row[x / 8] = char(uchar(row[x / 8]) | (0x80 >> (x % 8)));
                } else if (mode == 2) {
                    row[x] = char(image.pixelIndex(x, y));
                } else if (depth == 16) {
                    const quint16 v = reinterpret_cast<const quint16 *>(image.constScanLine(y))[x];
                    row[2 * x] = char(v >> 8);
                    row[2 * x + 1] = char(v & 0xff);
                } else {
                    row[x] = char(image.constScanLine(y)[x]);
                }
            }
            rows.append(row);
        }
    }
    be16(out, options.packBits ? 1 : 0);
    if (options.packBits) {
        QList<QByteArray> packed;
        for (const QByteArray &row : rows)
            packed.append(byteRun1(row));
        for (const QByteArray &row : packed)
            large ? be32(out, quint32(row.size())) : be16(out, quint32(row.size()));
        for (const QByteArray &row : packed)
            out.append(row);
    } else {
        for (const QByteArray &row : rows)
            out.append(row);
    }
    return out;
}

// A secondary-capture grey picture: preamble, "DICM", the file meta group
// naming explicit VR little endian, then the picture's elements.
QByteArray dicom(int width, int height, int bitsAllocated, const QByteArray &pixels)
{
    const QByteArray sopClass("1.2.840.10008.5.1.4.1.1.7");
    const QByteArray instance("1.2.826.0.1.3680043.2.1125.1");
    QByteArray meta;
    element(meta, 0x0002, 0x0001, "OB", QByteArray("\0\x01", 2));
    element(meta, 0x0002, 0x0002, "UI", sopClass);
    element(meta, 0x0002, 0x0003, "UI", instance);
    element(meta, 0x0002, 0x0010, "UI", "1.2.840.10008.1.2.1");
    QByteArray out(128, '\0');
    out.append("DICM");
    QByteArray groupLength;
    le32(groupLength, quint32(meta.size()));
    element(out, 0x0002, 0x0000, "UL", groupLength);
    out.append(meta);
    element(out, 0x0008, 0x0016, "UI", sopClass);
    element(out, 0x0008, 0x0018, "UI", instance);
    element(out, 0x0008, 0x0060, "CS", "OT");
    element(out, 0x0028, 0x0002, "US", us(1));
    element(out, 0x0028, 0x0004, "CS", "MONOCHROME2");
    element(out, 0x0028, 0x0010, "US", us(quint16(height)));
    element(out, 0x0028, 0x0011, "US", us(quint16(width)));
    element(out, 0x0028, 0x0100, "US", us(quint16(bitsAllocated)));
    element(out, 0x0028, 0x0101, "US", us(quint16(bitsAllocated)));
    element(out, 0x0028, 0x0102, "US", us(quint16(bitsAllocated - 1)));
    element(out, 0x0028, 0x0103, "US", us(0));
    element(out, 0x7FE0, 0x0010, bitsAllocated > 8 ? "OW" : "OB", pixels);
    return out;
}

} // namespace codecsamples
