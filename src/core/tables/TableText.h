#pragma once

#include "core/platform/tables/CsvText.h"
#include "core/platform/tables/TableReader.h"

#include <QIODevice>
#include <QString>

#include <atomic>

// Tables as text: the names of field types, the field lines of the
// properties window, and a table written out as CSV. Cell values as the grid
// and the exports show them are valueText's (CsvText.h).
namespace tarnby::tables {

// The name of a field type number; any number the table does not know gives
// an empty name. Both 4 and 16 are "Long Integer".
QString fieldTypeName(int type);

// "name - type name - size", one field of the properties window's list.
QString fieldLine(const Field &field);

// One CSV record (RFC 4180): cells joined with commas, a cell quoted when it
// holds a comma, a quote, CR or LF (quotes doubled), ended by CR LF.
QByteArray csvRecord(const QStringList &cells);

// Writes the table as CSV: the field names, then every row, in pages
// (through the table's appendCsvRows). Stops
// early when cancel becomes true. Returns an empty text, or why it failed
// (the table could not be read, or out refused the bytes).
QString writeCsv(Table &table, QIODevice &out, const std::atomic_bool *cancel = nullptr);

} // namespace tarnby::tables
