#pragma once

#include "TableReader.h"

#include <QByteArray>
#include <QByteArrayView>
#include <QString>
#include <QVariant>

// Cell values as text, and CSV records (RFC 4180) made of them. The readers
// that write their rows as CSV straight from their files' bytes must give
// exactly the bytes these functions give for the rows readRows returns.
namespace tarnby::tables {

// A value as text: dates in ISO 8601 (2024-01-31, 2024-01-31T10:00:00),
// numbers in the shortest form that reads back the same, booleans "True" and
// "False", binary data in hexadecimal, null as empty text.
QString valueText(const QVariant &value);

// What a cell's bytes hold: any byte from 0x80 up (text beyond ASCII), and
// any comma, quote, CR or LF (a cell of UTF-8 text holding one of these
// must be quoted).
struct CellBytes {
    bool ascii = true;
    bool needsQuotes = false;
};
CellBytes scanCell(QByteArrayView bytes);

// Appends one cell of UTF-8 text, quoted (its quotes doubled) when it must be.
void appendCsvCell(QByteArray &out, QByteArrayView utf8);

// Appends one record: the values' texts joined with commas, ended by CR LF.
void appendCsvRow(QByteArray &out, const Row &row);

} // namespace tarnby::tables
