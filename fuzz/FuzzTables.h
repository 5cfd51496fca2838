#pragma once

#include <QByteArray>
#include <QtEndian>

#include <cstdint>

// How fuzz_dbf and fuzz_paradox split one input into a table and its memo
// file:
//   byte 0       for dBASE: the memo layout (0 dBASE III, 1 dBASE IV,
//                2 FoxPro; others wrap) and, in bit 7, which index reader
//                gets the memo bytes; for Paradox: bit 0, a primary index
//                beside the table
//   bytes 1-4    the table's length n, little-endian (cut to what is there)
//   n bytes      the table (.dbf or .db)
//   the rest     the memo file (.dbt, .fpt or .mb); for dBASE also read as
//                an index file
// The seed maker writes its seeds in the same shape.
namespace fuzztables {

inline QByteArray pack(int layout, bool cdx, const QByteArray &table, const QByteArray &memo)
{
    QByteArray input(5, '\0');
    input[0] = char(layout | (cdx ? 0x80 : 0));
    qToLittleEndian(quint32(table.size()), input.data() + 1);
    return input + table + memo;
}

struct Parts {
    quint8 selector = 0;
    QByteArray table;
    QByteArray memo;
};

inline Parts split(const uint8_t *data, size_t size)
{
    Parts parts;
    if (size < 5)
        return parts;
    const QByteArray input(reinterpret_cast<const char *>(data), qsizetype(size));
    parts.selector = quint8(input[0]);
    const qsizetype tableSize = qMin<qsizetype>(qFromLittleEndian<quint32>(input.constData() + 1), input.size() - 5);
    parts.table = input.mid(5, tableSize);
    parts.memo = input.mid(5 + tableSize);
    return parts;
}

} // namespace fuzztables
