#pragma once

#include "core/platform/tables/TableReader.h"
#include "core/printing/PrintTypes.h"

#include <QFont>
#include <QList>
#include <QString>
#include <QStringList>

class QPagedPaintDevice;

namespace tarnby::printing {
class PageCanvas;
}

// The listing job: the rows of a table, in columns laid out from the field
// sizes so that the listing fits on a portrait page.
namespace tarnby::printing {

// Space between two columns, in inches.
inline constexpr double ColumnGapInches = 0.1;
// Rows are read from the table this many at a time.
inline constexpr int ListingRowsPerRead = 256;

struct ListingColumn {
    int field = 0;     // index in the table's fields
    QString name;
    double left = 0;   // inches from the page's left edge
    double width = 0;  // inches
};

// How many characters wide a field's column wants to be: its size for text,
// a width fitting the type for numbers, dates and the like, at least the
// field's name, between 4 and 40 characters.
int columnCharacters(const tables::Field &field);

// The columns of the chosen fields (names in fields; every field when chosen
// is empty; names that are not fields are passed over), from BodyLeftInches,
// each characterWidth inches a character. When they would not fit between the
// left and right body margins, every column is narrowed in proportion; the
// columns always end within the page.
QList<ListingColumn> layoutColumns(const QList<tables::Field> &fields, const QStringList &chosen,
                                   double characterWidth);

// Breaks text into the lines that fit width inches of font: at its own line
// ends (CR LF, CR or LF), then at word boundaries, and inside a word that is
// longer than the width. An empty text is one empty line.
QStringList wrapToWidth(const QString &text, const QFont &font, const PageCanvas &canvas, double width);

// Prints the rows of table: the page header with "List Data for File:  " +
// fileName on every page, the column names with a rule of "-" below them,
// then each row, its values wrapped within their columns. Rows are read a
// batch at a time and never held whole.
PrintResult printListing(QPagedPaintDevice &device, tables::Table &table, const QStringList &chosen,
                         const QString &fileName, const PrintFont &font, JobControl *control = nullptr);

} // namespace tarnby::printing
