#pragma once

#include "core/platform/tables/TableReader.h"

#include <QIODevice>
#include <QString>

#include <atomic>

// Tables as text: the names of field types, the field lines of the
// properties window, cell values as the grid and the exports show them, and
// a table written out as CSV.
namespace tarnby::tables {

// The name of a field type number; any number the table does not know gives
// an empty name. Both 4 and 16 are "Long Integer".
QString fieldTypeName(int type);

// "name - type name - size", one field of the properties window's list.
QString fieldLine(const Field &field);

// A value as text: dates in ISO 8601 (2024-01-31, 2024-01-31T10:00:00),
// numbers in the shortest form that reads back the same, booleans "True" and
// "False", binary data in hexadecimal, null as empty text.
QString valueText(const QVariant &value);

// One CSV record (RFC 4180): cells joined with commas, a cell quoted when it
// holds a comma, a quote, CR or LF (quotes doubled), ended by CR LF.
QByteArray csvRecord(const QStringList &cells);

// Writes the table as CSV: the field names, then every row, in pages. Stops
// early when cancel becomes true. Returns an empty text, or why it failed
// (the table could not be read, or out refused the bytes).
QString writeCsv(Table &table, QIODevice &out, const std::atomic_bool *cancel = nullptr);

} // namespace tarnby::tables
