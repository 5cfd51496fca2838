#pragma once

#include "core/platform/tables/TableReader.h"

#include <atomic>
#include <functional>
#include <memory>
#include <vector>

// The order an index gives a table's rows, and reading rows in such an
// order. The table view orders its grid by the index the user picks.
namespace tarnby::tables {

// Row numbers of a table in the order of some index: entry i is the table row
// shown at position i.
using RowOrder = std::vector<qint64>;

// Reads every row of table once, in pages, and sorts the row numbers by key:
// nulls first, numbers as numbers, dates and times as such, text as text
// (without regard to case where the key part says so), rows of equal keys in
// the table's order. progress (if given) receives the rows read so far after
// each page. Stops with an empty order and no error when cancel becomes
// true. Cost: one pass over the table, and memory for the key values of
// every row.
Result<RowOrder> indexOrder(Table &table, const IndexKey &key, const std::atomic_bool *cancel = nullptr,
                            const std::function<void(qint64 rowsRead)> &progress = {});

// The rows of table at the given row numbers, in the order given. The
// numbers are read in ascending runs, so a reader that only reads forwards
// passes over the table at most once.
Result<QList<Row>> readRowsAt(Table &table, const std::vector<qint64> &rowNumbers);

} // namespace tarnby::tables
