#pragma once

#include "TableReader.h"

// Excel workbooks (".xls", BIFF 2 to 8), read by our own compound file and
// BIFF record readers. Every worksheet is a table (charts and macro sheets
// are not); formulas give their last calculated value. When every cell of a sheet's first row holds text, those texts are
// the field names and the rows below are the data; otherwise the fields are
// named after the columns ("A", "B", ...) and every row is data. A field
// whose values (in the first 200 data rows) are all numbers is a Double,
// all dates or times a Date, anything else Text of 255 characters. Dates
// come as dates. Encrypted workbooks are refused with a message.
namespace tarnby::tables {

OpenResult openXlsFile(const QString &path);

} // namespace tarnby::tables
