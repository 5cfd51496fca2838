#include "XlsSamples.h"

#include <QtEndian>

#include <cstring>

namespace xlssamples {

namespace {

bool needsWide(QStringView text)
{
    for (QChar c : text)
        if (c.unicode() > 0xFF)
            return true;
    return false;
}

QByteArray characters(QStringView text, bool wide)
{
    QByteArray out;
    for (QChar c : text)
        out += wide ? le16(c.unicode()) : QByteArray(1, char(c.unicode()));
    return out;
}

// A BIFF 8 string: its length in lengthBytes, an options byte, the characters.
QByteArray unicodeString(const QString &text, int lengthBytes)
{
    const bool wide = needsWide(text);
    QByteArray out = lengthBytes == 2 ? le16(quint16(text.size())) : QByteArray(1, char(text.size()));
    out += char(wide ? 1 : 0);
    return out + characters(text, wide);
}

QByteArray cellHead(quint16 row, quint16 column, quint16 xf)
{
    return le16(row) + le16(column) + le16(xf);
}

QByteArray bof(int version, quint16 type)
{
    if (version == 8)
        return record(0x0809, le16(0x0600) + le16(type) + le16(0x0DBB) + le16(0x07CC) + le32(0) + le32(6));
    return record(0x0809, le16(0x0500) + le16(type) + le16(0x0DBB) + le16(0x07CC));
}

// The shared strings as an SST record and the CONTINUE records its pieces
// run into, each piece at most limit bytes. A string's header never splits;
// its characters may, and then the next piece starts with an options byte.
QByteArray sstRecords(const QStringList &strings, int limit, int rich)
{
    QList<QByteArray> pieces;
    QByteArray cur = le32(quint32(strings.size())) + le32(quint32(strings.size()));
    for (int i = 0; i < strings.size(); ++i) {
        const QString &s = strings[i];
        bool wide = needsWide(s);
        QByteArray header = le16(quint16(s.size())) + char((wide ? 1 : 0) | (i == rich ? 8 : 0));
        if (i == rich)
            header += le16(2);
        if (cur.size() + header.size() + (wide ? 2 : 1) > limit) {
            pieces << cur;
            cur.clear();
        }
        cur += header;
        qsizetype pos = 0;
        while (pos < s.size()) {
            const qsizetype room = (limit - cur.size()) / (wide ? 2 : 1);
            if (room == 0) {
                pieces << cur;
                wide = needsWide(QStringView(s).mid(pos));
                cur = QByteArray(1, char(wide ? 1 : 0));
                continue;
            }
            const qsizetype take = qMin(room, s.size() - pos);
            cur += characters(QStringView(s).mid(pos, take), wide);
            pos += take;
        }
        if (i == rich) {
            // Two formatting runs (character, font), split anywhere.
            const QByteArray runs = le16(0) + le16(5) + le16(2) + le16(6);
            for (char b : runs) {
                if (cur.size() >= limit) {
                    pieces << cur;
                    cur.clear();
                }
                cur += b;
            }
        }
    }
    pieces << cur;
    QByteArray out;
    for (int i = 0; i < pieces.size(); ++i)
        out += record(i == 0 ? 0x00FC : 0x003C, pieces[i]);
    return out;
}

void put32(QByteArray &bytes, qsizetype at, quint32 v)
{
    qToLittleEndian(v, bytes.data() + at);
}

} // namespace

QByteArray le16(quint16 v)
{
    char b[2];
    qToLittleEndian(v, b);
    return QByteArray(b, 2);
}

QByteArray le32(quint32 v)
{
    char b[4];
    qToLittleEndian(v, b);
    return QByteArray(b, 4);
}

QByteArray le64double(double v)
{
    quint64 bits;
    std::memcpy(&bits, &v, sizeof bits);
    char b[8];
    qToLittleEndian(bits, b);
    return QByteArray(b, 8);
}

QByteArray record(quint16 type, const QByteArray &data)
{
    return le16(type) + le16(quint16(data.size())) + data;
}

QByteArray number(quint16 row, quint16 column, quint16 xf, double value)
{
    return record(0x0203, cellHead(row, column, xf) + le64double(value));
}

QByteArray rk(quint16 row, quint16 column, quint16 xf, quint32 rkValue)
{
    return record(0x027E, cellHead(row, column, xf) + le32(rkValue));
}

QByteArray mulRk(quint16 row, quint16 firstColumn, const QList<quint32> &rkValues, quint16 xf)
{
    QByteArray data = le16(row) + le16(firstColumn);
    for (quint32 v : rkValues)
        data += le16(xf) + le32(v);
    return record(0x00BD, data + le16(quint16(firstColumn + rkValues.size() - 1)));
}

QByteArray labelSst(quint16 row, quint16 column, quint32 index)
{
    return record(0x00FD, cellHead(row, column, 0) + le32(index));
}

QByteArray label8(quint16 row, quint16 column, const QString &text)
{
    return record(0x0204, cellHead(row, column, 0) + unicodeString(text, 2));
}

QByteArray label5(quint16 row, quint16 column, const QByteArray &bytes)
{
    return record(0x0204, cellHead(row, column, 0) + le16(quint16(bytes.size())) + bytes);
}

QByteArray boolErr(quint16 row, quint16 column, quint8 value, bool error)
{
    return record(0x0205, cellHead(row, column, 0) + char(value) + char(error ? 1 : 0));
}

QByteArray blank(quint16 row, quint16 column)
{
    return record(0x0201, cellHead(row, column, 0));
}

QByteArray formulaNumber(quint16 row, quint16 column, quint16 xf, double value)
{
    // The result, options, a reserved word and an empty expression.
    return record(0x0006, cellHead(row, column, xf) + le64double(value) + le16(0) + le32(0) + le16(0));
}

QByteArray formulaText(quint16 row, quint16 column, const QString &text)
{
    const QByteArray result = QByteArray("\0\0\0\0\0\0\xFF\xFF", 8);
    return record(0x0006, cellHead(row, column, 0) + result + le16(0) + le32(0) + le16(0))
        // A shared formula's record may come between the two.
        + record(0x04BC, QByteArray(10, '\0')) + record(0x0207, unicodeString(text, 2));
}

QByteArray dimensions8(quint32 rows, quint16 columns)
{
    return record(0x0200, le32(0) + le32(rows) + le16(0) + le16(columns) + le16(0));
}

QByteArray workbookStream(const Workbook &w)
{
    QByteArray globals = bof(w.version, 0x0005);
    if (w.encrypted)
        globals += record(0x002F, le16(1) + QByteArray(52, '\x5A'));
    globals += record(0x0042, le16(w.version == 8 ? 1200 : w.codePage));
    globals += record(0x0022, le16(w.system1904 ? 1 : 0));
    for (const auto &[index, text] : w.formats) {
        if (w.version == 8)
            globals += record(0x041E, le16(index) + unicodeString(text, 2));
        else
            globals += record(0x041E, le16(index) + char(text.size()) + text.toLatin1());
    }
    for (quint16 format : w.xfFormats)
        globals += record(0x00E0, le16(0) + le16(format) + QByteArray(w.version == 8 ? 16 : 12, '\0'));
    QList<qsizetype> boundSheets;
    for (const Sheet &s : w.sheets) {
        boundSheets << globals.size() + 4;
        const QByteArray name = w.version == 8 ? unicodeString(s.name, 1) : char(s.name.size()) + s.name.toLatin1();
        globals += record(0x0085, le32(0) + char(0) + char(s.type) + name);
    }
    if (w.version == 8 && !w.sst.isEmpty())
        globals += sstRecords(w.sst, w.sstPiece, w.richStrings);
    globals += record(0x000A, {});
    QByteArray stream = globals;
    for (int i = 0; i < w.sheets.size(); ++i) {
        put32(stream, boundSheets[i], quint32(stream.size()));
        stream += bof(w.version, w.sheets[i].type == 2 ? 0x0020 : 0x0010);
        for (const QByteArray &r : w.sheets[i].records)
            stream += r;
        stream += record(0x000A, {});
    }
    return stream;
}

Compound compoundFile(const QByteArray &stream, const QString &streamName)
{
    constexpr quint32 endOfChain = 0xFFFFFFFE;
    constexpr quint32 noStream = 0xFFFFFFFF;
    Compound c;
    c.inMiniStream = stream.size() < 4096;
    const int miniSectors = c.inMiniStream ? int((stream.size() + 63) / 64) : 0;
    const int miniStreamSectors = (miniSectors * 64 + 511) / 512;
    const int streamSectors = c.inMiniStream ? miniStreamSectors : int((stream.size() + 511) / 512);
    const int others = 1 + (c.inMiniStream ? 1 : 0) + streamSectors;
    int fatSectors = 1;
    while (fatSectors * 128 < fatSectors + others)
        ++fatSectors;
    const quint32 directory = quint32(fatSectors);
    const quint32 miniFat = directory + 1;
    const quint32 firstData = c.inMiniStream ? miniFat + 1 : directory + 1;
    const int total = fatSectors + others;

    QList<quint32> fat(fatSectors * 128, noStream);
    for (int i = 0; i < fatSectors; ++i)
        fat[i] = 0xFFFFFFFD;
    fat[directory] = endOfChain;
    if (c.inMiniStream)
        fat[miniFat] = endOfChain;
    for (int i = 0; i < streamSectors; ++i)
        fat[firstData + i] = i + 1 < streamSectors ? firstData + i + 1 : endOfChain;

    QByteArray header(512, '\0');
    std::memcpy(header.data(), "\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8);
    header.replace(0x18, 2, le16(0x3E));
    header.replace(0x1A, 2, le16(3));
    header.replace(0x1C, 2, le16(0xFFFE));
    header.replace(0x1E, 2, le16(9));
    header.replace(0x20, 2, le16(6));
    header.replace(0x2C, 4, le32(quint32(fatSectors)));
    header.replace(0x30, 4, le32(directory));
    header.replace(0x38, 4, le32(4096));
    header.replace(0x3C, 4, le32(c.inMiniStream ? miniFat : endOfChain));
    header.replace(0x40, 4, le32(c.inMiniStream ? 1 : 0));
    header.replace(0x44, 4, le32(endOfChain));
    for (int i = 0; i < 109; ++i)
        header.replace(0x4C + 4 * i, 4, le32(i < fatSectors ? quint32(i) : noStream));

    auto entry = [](const QString &name, quint8 type, quint32 child, quint32 start, quint32 size) {
        QByteArray e(128, '\0');
        for (int i = 0; i < name.size(); ++i)
            e.replace(2 * i, 2, le16(name[i].unicode()));
        e.replace(0x40, 2, le16(quint16(2 * name.size() + 2)));
        e[0x42] = char(type);
        e[0x43] = 1; // black
        e.replace(0x44, 4, le32(0xFFFFFFFF));
        e.replace(0x48, 4, le32(0xFFFFFFFF));
        e.replace(0x4C, 4, le32(child));
        e.replace(0x74, 4, le32(start));
        e.replace(0x78, 4, le32(size));
        return e;
    };
    QByteArray dir = entry(QStringLiteral("Root Entry"), 5, 1, c.inMiniStream ? firstData : endOfChain,
                           quint32(miniSectors * 64));
    dir += entry(streamName, 2, noStream, c.inMiniStream ? 0 : firstData, quint32(stream.size()));
    dir += QByteArray(256, '\0');

    QByteArray body;
    for (quint32 v : fat)
        body += le32(v);
    body += dir;
    if (c.inMiniStream) {
        QByteArray table;
        for (int i = 0; i < 128; ++i)
            table += le32(i < miniSectors ? (i + 1 < miniSectors ? quint32(i + 1) : endOfChain) : noStream);
        body += table;
        for (int i = 0; i < miniSectors; ++i)
            c.chain << quint32(i);
    } else {
        for (int i = 0; i < streamSectors; ++i)
            c.chain << firstData + quint32(i);
    }
    QByteArray data = stream;
    data.append(QByteArray(streamSectors * 512 - data.size(), '\0'));
    body += data;
    Q_ASSERT(body.size() == total * 512);
    c.bytes = header + body;
    c.fatOffset = 512;
    c.entryOffset = 512 + qsizetype(directory) * 512 + 128;
    c.miniFatOffset = 512 + qsizetype(miniFat) * 512;
    return c;
}

QByteArray xlsFile(const Workbook &w)
{
    return compoundFile(workbookStream(w), w.version == 8 ? QStringLiteral("Workbook") : QStringLiteral("Book")).bytes;
}

} // namespace xlssamples
