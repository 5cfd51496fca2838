#pragma once

#include "TableReader.h"

// Lotus 1-2-3 worksheets (".wk4", and ".wk1"/".wk3"/".wks" where libwps
// reads them) through libwps and librevenge: libwps walks the file and calls
// back for every sheet, row and cell; the cells are collected here and each
// sheet becomes a table by the same rule as an Excel worksheet (see
// XlsReader.h). The whole file is read when it is opened; a sheet keeps at
// most maxSheetRows rows and maxSheetColumns columns.
namespace tarnby::tables {

constexpr int maxSheetRows = 1048576;
constexpr int maxSheetColumns = 1024;

OpenResult openLotusFile(const QString &path);

} // namespace tarnby::tables
