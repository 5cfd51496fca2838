#include "ParadoxSamples.h"

#include <QtEndian>

namespace paradoxsamples {

QByteArray paradoxLong(qint32 value)
{
    QByteArray b(4, '\0');
    qToBigEndian(quint32(value) ^ 0x80000000u, b.data());
    return b;
}

QByteArray paradoxBcd(const QByteArray &number, int decimals)
{
    const bool negative = number.startsWith('-');
    QByteArray digits = number.mid(negative ? 1 : 0);
    const qsizetype point = digits.indexOf('.');
    QByteArray whole = point < 0 ? digits : digits.left(point);
    QByteArray fraction = point < 0 ? QByteArray() : digits.mid(point + 1);
    fraction = fraction.leftJustified(decimals, '0');
    const QByteArray all = whole.rightJustified(32 - decimals, '0') + fraction;
    QByteArray b(17, '\0');
    b[0] = char((negative ? 0x00 : 0x80) | decimals);
    for (int i = 0; i < 32; ++i) {
        int nibble = all[i] - '0';
        if (negative)
            nibble ^= 0xF;
        b[1 + i / 2] = char(uchar(b[1 + i / 2]) | (i % 2 ? nibble : nibble << 4));
    }
    return b;
}

QByteArray paradoxTable(const Sample &s)
{
    const bool withBcd = !s.bcd.isEmpty();
    const int recordSize = withBcd ? 29 : 12;
    constexpr int headerSize = 2048;
    constexpr int blockSize = 1024;
    const int blocks = (s.records + s.perBlock - 1) / s.perBlock;
    QByteArray h(headerSize, '\0');
    qToLittleEndian(quint16(recordSize), h.data());
    qToLittleEndian(quint16(headerSize), h.data() + 0x02);
    h[0x04] = 2;
    h[0x05] = 1;
    qToLittleEndian(quint32(s.records), h.data() + 0x06);
    qToLittleEndian(quint16(blocks), h.data() + 0x0A);
    qToLittleEndian(quint16(blocks), h.data() + 0x0C);
    QList<int> chain = s.chain;
    if (chain.isEmpty()) {
        for (int b = 1; b <= blocks; ++b)
            chain << b;
    }
    qToLittleEndian(quint16(chain.value(0)), h.data() + 0x0E);
    qToLittleEndian(quint16(chain.value(chain.size() - 1)), h.data() + 0x10);
    qToLittleEndian(quint16(withBcd ? 3 : 2), h.data() + 0x21);
    h[0x39] = 0x0B;
    qToLittleEndian(quint16(1252), h.data() + 0x6A);
    int at = 0x78;
    h[at++] = 0x04;
    h[at++] = 4;
    h[at++] = 0x01;
    h[at++] = 8;
    if (withBcd) {
        h[at++] = 0x17;
        h[at++] = char(s.bcdDecimals);
    }
    at += 4 + (withBcd ? 12 : 8);
    h.replace(at, 9, "sample.db");
    at += 79;
    const QByteArray names = withBcd ? QByteArray("Id\0Name\0Amount", 15) : QByteArray("Id\0Name", 7);
    h.replace(at, names.size(), names);
    QByteArray file = h;
    int record = 0;
    for (int b = 1; b <= blocks; ++b) {
        QByteArray block(blockSize, '\0');
        const int n = qMin(s.perBlock, s.records - record);
        const int position = int(chain.indexOf(b));
        const int next = position >= 0 && position + 1 < chain.size() ? chain[position + 1] : 0;
        qToLittleEndian(quint16(next), block.data());
        qToLittleEndian(qint16((n - 1) * recordSize), block.data() + 4);
        for (int i = 0; i < n; ++i, ++record) {
            QByteArray r = paradoxLong(record) + QByteArray("row ") + QByteArray::number(record).leftJustified(4, '\0');
            if (withBcd)
                r += s.bcd[record % s.bcd.size()];
            block.replace(6 + i * recordSize, recordSize, r);
        }
        file += block;
    }
    return file;
}

} // namespace paradoxsamples
