#include "DbfSamples.h"

#include <QtEndian>

namespace dbfsamples {

QByteArray littleEndian32(quint32 value)
{
    QByteArray bytes(4, '\0');
    qToLittleEndian(value, bytes.data());
    return bytes;
}

QByteArray text(const QByteArray &value, int length)
{
    return value.left(length).leftJustified(length, ' ');
}

QByteArray number(const QByteArray &value, int length)
{
    return value.left(length).rightJustified(length, ' ');
}

QByteArray memoPointer(int block)
{
    return QByteArray::number(block).rightJustified(10, ' ');
}

QByteArray table(const TableSpec &tableLayout)
{
    const bool visualFoxPro = tableLayout.version == 0x30 || tableLayout.version == 0x31 || tableLayout.version == 0x32;
    int recordLength = 1;
    for (const FieldSpec &f : tableLayout.fields)
        recordLength += f.length;
    const int headerLength = 32 + 32 * int(tableLayout.fields.size()) + 1 + (visualFoxPro ? 263 : 0);
    QByteArray header(32, '\0');
    header[0] = char(tableLayout.version);
    header[1] = char(124);
    header[2] = char(5);
    header[3] = char(17);
    const qint64 count = tableLayout.announcedRecords >= 0 ? tableLayout.announcedRecords : tableLayout.records.size();
    qToLittleEndian(quint32(count), header.data() + 4);
    qToLittleEndian(quint16(headerLength), header.data() + 8);
    qToLittleEndian(quint16(recordLength), header.data() + 10);
    header[29] = char(tableLayout.codePage);
    int offset = 1;
    for (const FieldSpec &f : tableLayout.fields) {
        QByteArray d(32, '\0');
        d.replace(0, qMin<int>(f.name.size(), 10), f.name.left(10));
        d[11] = f.type;
        qToLittleEndian(quint32(offset), d.data() + 12);
        d[16] = char(f.length & 0xFF);
        d[17] = char(f.type == 'C' ? (f.length >> 8) : f.decimals);
        d[18] = char(f.flags);
        header += d;
        offset += f.length;
    }
    header += '\x0D';
    if (visualFoxPro)
        header += QByteArray(263, '\0');
    QByteArray file = header;
    for (int r = 0; r < tableLayout.records.size(); ++r) {
        QByteArray record(1, tableLayout.deleted.contains(r) ? '*' : ' ');
        for (const QByteArray &cell : tableLayout.records[r])
            record += cell;
        record = record.leftJustified(recordLength, ' ', true);
        file += record;
    }
    file += '\x1A';
    return file;
}

QByteArray dbaseIIIMemo(const QList<QByteArray> &memos, QList<int> *blocks)
{
    QByteArray file(512, '\0');
    for (const QByteArray &memo : memos) {
        if (blocks)
            blocks->append(int(file.size() / 512));
        QByteArray body = memo + "\x1A\x1A";
        body = body.leftJustified(((body.size() + 511) / 512) * 512, '\0');
        file += body;
    }
    qToLittleEndian(quint32(file.size() / 512), file.data());
    return file;
}

QByteArray dbaseIVMemo(const QList<QByteArray> &memos, int blockSize, QList<int> *blocks)
{
    QByteArray file(blockSize, '\0');
    qToLittleEndian(quint16(blockSize), file.data() + 20);
    for (const QByteArray &memo : memos) {
        if (blocks)
            blocks->append(int(file.size() / blockSize));
        QByteArray body("\xFF\xFF\x08\x00", 4);
        body += littleEndian32(quint32(memo.size() + 8));
        body += memo;
        body = body.leftJustified(((body.size() + blockSize - 1) / blockSize) * blockSize, '\0');
        file += body;
    }
    qToLittleEndian(quint32(file.size() / blockSize), file.data());
    return file;
}

QByteArray foxProMemo(const QList<QByteArray> &memos, int blockSize, QList<int> *blocks)
{
    QByteArray file(qMax(512, blockSize), '\0');
    qToBigEndian(quint16(blockSize), file.data() + 6);
    for (const QByteArray &memo : memos) {
        if (blocks)
            blocks->append(int(file.size() / blockSize));
        QByteArray body(8, '\0');
        qToBigEndian(quint32(1), body.data());
        qToBigEndian(quint32(memo.size()), body.data() + 4);
        body += memo;
        body = body.leftJustified(((body.size() + blockSize - 1) / blockSize) * blockSize, '\0');
        file += body;
    }
    qToBigEndian(quint32(file.size() / blockSize), file.data());
    return file;
}

namespace {

QList<TagSpec> namesOnly(const QStringList &names)
{
    QList<TagSpec> tags;
    for (const QString &name : names)
        tags.append(TagSpec{name, {}, false});
    return tags;
}

} // namespace

QByteArray mdxIndex(const QStringList &tags)
{
    return mdxIndexWithKeys(namesOnly(tags));
}

QByteArray cdxIndex(const QStringList &tags)
{
    return cdxIndexWithKeys(namesOnly(tags));
}

// The header, the tag table and a 512-byte header page per tag from page 4.
QByteArray mdxIndexWithKeys(const QList<TagSpec> &tags)
{
    QByteArray file(544, '\0');
    file[0] = 2;
    qToLittleEndian(quint16(1024), file.data() + 22);
    file[24] = 1;
    file[25] = 48;
    file[26] = 32;
    qToLittleEndian(quint16(tags.size()), file.data() + 28);
    for (int i = 0; i < tags.size(); ++i) {
        QByteArray entry(32, '\0');
        qToLittleEndian(quint32(4 + i), entry.data());
        entry.replace(4, qMin<int>(int(tags[i].name.size()), 10), tags[i].name.toLatin1().left(10));
        entry[20] = 'C';
        file += entry;
    }
    file = file.leftJustified(2048, '\0');
    for (const TagSpec &tag : tags) {
        QByteArray page(512, '\0');
        page[8] = char(tag.descending ? 0x08 : 0x00);
        page[9] = 'C';
        page.replace(24, tag.expression.size(), tag.expression);
        file += page;
    }
    return file;
}

// One compact leaf that is also the root: each tag name stored whole (no
// bytes shared with the previous key), its trailing blanks dropped.
QByteArray cdxIndexWithKeys(const QList<TagSpec> &tags)
{
    constexpr int keyLength = 10;
    QByteArray file(1024, '\0');
    qToLittleEndian(quint32(1024), file.data());
    qToLittleEndian(quint32(0xFFFFFFFF), file.data() + 4);
    qToLittleEndian(quint16(keyLength), file.data() + 12);
    file[14] = char(0x60);
    QByteArray node(512, '\0');
    qToLittleEndian(quint16(3), node.data());
    qToLittleEndian(quint16(tags.size()), node.data() + 2);
    qToLittleEndian(quint32(0xFFFFFFFF), node.data() + 4);
    qToLittleEndian(quint32(0xFFFFFFFF), node.data() + 8);
    // Three bytes an entry: 16 bits of record number, 4 of duplicate count,
    // 4 of trailing count.
    qToLittleEndian(quint32(0xFFFF), node.data() + 14);
    node[18] = char(0x0F);
    node[19] = char(0x0F);
    node[20] = 16;
    node[21] = 4;
    node[22] = 4;
    node[23] = 3;
    int keyEnd = 512;
    for (int i = 0; i < tags.size(); ++i) {
        const QByteArray name = tags[i].name.toLatin1().left(keyLength);
        const int trailing = keyLength - int(name.size());
        // Each tag's own header (1024 bytes) follows the tag list's node.
        const quint32 packed = quint32(1536 + 1024 * i) | (0u << 16) | (quint32(trailing) << 20);
        node[24 + i * 3] = char(packed & 0xFF);
        node[24 + i * 3 + 1] = char((packed >> 8) & 0xFF);
        node[24 + i * 3 + 2] = char((packed >> 16) & 0xFF);
        keyEnd -= int(name.size());
        node.replace(keyEnd, name.size(), name);
    }
    qToLittleEndian(quint16(keyEnd - 24 - 3 * int(tags.size())), node.data() + 12);
    file += node;
    for (const TagSpec &tag : tags) {
        QByteArray header(1024, '\0');
        qToLittleEndian(quint16(tag.descending ? 1 : 0), header.data() + 502);
        qToLittleEndian(quint16(tag.expression.size() + 1), header.data() + 510);
        header.replace(512, tag.expression.size(), tag.expression);
        file += header;
    }
    return file;
}

} // namespace dbfsamples
