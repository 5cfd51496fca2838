#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <vector>

// The records of an Excel workbook stream (BIFF 5 and 8, the "Workbook" or
// "Book" stream of a compound file) or of a BIFF 2 to 4 worksheet file (the
// file itself is the stream). Cells come out typed: text, numbers (whole
// numbers stored as such come as qlonglong, others as double), booleans, and
// dates, times or both where the cell's number format shows one; error cells
// and blank cells are empty.
namespace tarnby::tables {

struct BiffCell {
    quint32 row = 0;
    quint32 column = 0;
    QVariant value;
};

struct BiffSheet {
    // The sheet's cells with a value, ordered by row and then column.
    std::vector<BiffCell> cells;
    // The used range: up to the last row and column that hold a value or
    // that the sheet's DIMENSIONS record (blank formatted cells) reaches.
    qint64 rows = 0;
    int columns = 0;
    QString errorString;

    // The value at row, column (invalid when the cell is empty).
    QVariant cell(qint64 row, int column) const;
};

class BiffWorkbook
{
public:
    BiffWorkbook();
    ~BiffWorkbook();
    BiffWorkbook(const BiffWorkbook &) = delete;
    BiffWorkbook &operator=(const BiffWorkbook &) = delete;

    // Reads the workbook's global records (sheet list, shared strings,
    // formats). An empty answer means it is one; otherwise why not.
    QString open(QByteArray stream);

    int biffVersion() const; // 2, 3, 4, 5 or 8
    bool encrypted() const;  // the workbook has a password: no cell can be read
    QStringList sheetNames() const; // the worksheets (not charts or macros), in order
    BiffSheet readSheet(int index) const;

private:
    struct State;
    std::unique_ptr<State> d;
};

// What a BIFF RK number holds: a whole number (as qlonglong) or a double.
QVariant decodeRk(quint32 rk);

} // namespace tarnby::tables
