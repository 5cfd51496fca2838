#include "core/printing/ListingPrint.h"

#include "core/printing/PageCanvas.h"
#include "core/tables/TableText.h"

#include <QFontMetricsF>
#include <QPagedPaintDevice>
#include <QRegularExpression>
#include <QTextLayout>

#include <algorithm>

namespace tarnby::printing {

int columnCharacters(const tables::Field &field)
{
    namespace T = tables::FieldType;
    int characters = field.size;
    switch (field.type) {
    case T::Boolean: characters = 5; break;
    case T::Byte: characters = 3; break;
    case T::Integer: characters = 6; break;
    case T::Long: characters = 11; break;
    case T::BigInt: characters = 20; break;
    case T::Currency: characters = 15; break;
    case T::Single:
    case T::Double:
    case T::Float:
    case T::Numeric:
    case T::Decimal: characters = field.size > 0 ? field.size : 12; break;
    case T::Date: characters = 10; break;
    case T::Time: characters = 8; break;
    case T::DateTime: characters = 19; break;
    case T::Guid: characters = 36; break;
    case T::Memo:
    case T::LongBinary: characters = 40; break;
    case T::Binary:
    case T::VarBinary: characters = 16; break;
    default: break;
    }
    characters = std::max(characters, int(field.name.size()));
    return std::clamp(characters, 4, 40);
}

QList<ListingColumn> layoutColumns(const QList<tables::Field> &fields, const QStringList &chosen,
                                   double characterWidth)
{
    QList<ListingColumn> columns;
    QList<int> characters;
    auto add = [&](int index) {
        columns.append({index, fields[index].name, 0, 0});
        characters.append(columnCharacters(fields[index]));
    };
    if (chosen.isEmpty()) {
        for (int i = 0; i < fields.size(); ++i)
            add(i);
    } else {
        for (const QString &name : chosen) {
            for (int i = 0; i < fields.size(); ++i) {
                if (fields[i].name == name) {
                    add(i);
                    break;
                }
            }
        }
    }
    if (columns.isEmpty())
        return columns;

    const double available = PageWidthInches - 2 * BodyLeftInches;
    const int count = int(columns.size());
    // With very many columns the gaps go first, so that every column keeps
    // some width.
    const double gap = ColumnGapInches * (count - 1) < available / 2 ? ColumnGapInches : 0;
    const double forColumns = available - gap * (count - 1);
    double wanted = 0;
    for (int c : characters)
        wanted += c * characterWidth;
    const double scale = wanted > forColumns ? forColumns / wanted : 1.0;
    double left = BodyLeftInches;
    for (int i = 0; i < count; ++i) {
        columns[i].left = left;
        columns[i].width = characters[i] * characterWidth * scale;
        left += columns[i].width + gap;
    }
    return columns;
}

QStringList wrapToWidth(const QString &text, const QFont &font, const PageCanvas &canvas, double width)
{
    static const QRegularExpression lineEnd(QStringLiteral("\r\n|\r|\n"));
    QStringList lines;
    const double deviceWidth = std::max(1.0, canvas.deviceX(width));
    // Most values fit their column on one line: no layout for them.
    if (!text.contains(QLatin1Char('\n')) && !text.contains(QLatin1Char('\r'))
        && QFontMetricsF(font, canvas.paintDevice()).horizontalAdvance(text) <= deviceWidth)
        return {text};
    const QStringList paragraphs = text.split(lineEnd);
    for (const QString &paragraph : paragraphs) {
        if (paragraph.isEmpty()) {
            lines.append(QString());
            continue;
        }
        QTextLayout layout(paragraph, font, canvas.paintDevice());
        QTextOption option;
        option.setWrapMode(QTextOption::WrapAtWordBoundaryOrAnywhere);
        layout.setTextOption(option);
        layout.beginLayout();
        for (QTextLine line = layout.createLine(); line.isValid(); line = layout.createLine()) {
            line.setLineWidth(deviceWidth);
            lines.append(paragraph.mid(line.textStart(), line.textLength()).trimmed());
        }
        layout.endLayout();
    }
    return lines;
}

namespace {

class ListingPrinter
{
public:
    ListingPrinter(PageCanvas &canvas, const QList<ListingColumn> &columns, const QString &title, const QFont &font,
                   JobControl *control)
        : m_canvas(canvas)
        , m_columns(columns)
        , m_title(title)
        , m_font(font)
        , m_control(control)
    {
    }

    void firstPage()
    {
        m_canvas.printHeader(m_title, ListingTitleLeft, m_font);
        printHeading();
    }

    // Prints one row; false when the printer failed.
    bool printRow(const tables::Row &row)
    {
        QList<QStringList> cells;
        qsizetype lineCount = 1;
        for (const ListingColumn &column : m_columns) {
            const QString value = column.field < row.size() ? tables::valueText(row[column.field]) : QString();
            cells.append(wrapToWidth(value, m_font, m_canvas, column.width));
            lineCount = std::max(lineCount, cells.last().size());
        }
        const double height = m_canvas.lineHeight();
        // A row that fits on a page is kept whole; a taller one runs on.
        if (!m_canvas.fits(lineCount * height) && lineCount * height <= PageLengthInches - m_bodyTop
            && !breakPage())
            return false;
        for (qsizetype line = 0; line < lineCount; ++line) {
            if (!m_canvas.fits(height) && !breakPage())
                return false;
            for (int c = 0; c < m_columns.size(); ++c) {
                if (line < cells[c].size() && !cells[c][line].isEmpty())
                    m_canvas.drawText(m_columns[c].left, m_canvas.currentY, cells[c][line]);
            }
            m_canvas.currentY += height;
        }
        return true;
    }

private:
    bool breakPage()
    {
        if (m_control && m_control->progress)
            m_control->progress(m_canvas.pageNumber());
        if (!m_canvas.newPageWithHeader(m_title, ListingTitleLeft, m_font))
            return false;
        printHeading();
        return true;
    }

    void printHeading()
    {
        QList<QStringList> names;
        qsizetype lineCount = 1;
        for (const ListingColumn &column : m_columns) {
            names.append(wrapToWidth(column.name, m_font, m_canvas, column.width));
            lineCount = std::max(lineCount, names.last().size());
        }
        const double height = m_canvas.lineHeight();
        for (qsizetype line = 0; line < lineCount; ++line) {
            for (int c = 0; c < m_columns.size(); ++c) {
                if (line < names[c].size())
                    m_canvas.drawText(m_columns[c].left, m_canvas.currentY, names[c][line]);
            }
            m_canvas.currentY += height;
        }
        const double dash = std::max(1e-3, m_canvas.textWidth(QStringLiteral("-")));
        for (const ListingColumn &column : m_columns) {
            const int dashes = std::max(1, int(column.width / dash));
            m_canvas.drawText(column.left, m_canvas.currentY, QString(dashes, QLatin1Char('-')));
        }
        m_canvas.currentY += height;
        m_bodyTop = m_canvas.currentY;
    }

    PageCanvas &m_canvas;
    const QList<ListingColumn> &m_columns;
    QString m_title;
    QFont m_font;
    JobControl *m_control;
    double m_bodyTop = 0;
};

} // namespace

PrintResult printListing(QPagedPaintDevice &device, tables::Table &table, const QStringList &chosen,
                         const QString &fileName, const PrintFont &font, JobControl *control)
{
    PrintResult result;
    const QFont qfont = font.toFont();
    PageCanvas canvas(device);
    canvas.setFont(qfont);
    if (!canvas.begin()) {
        result.errorString = canvas.errorString();
        return result;
    }
    // A character of a column is as wide as a digit (wider than the font's
    // average letter), so that numbers and dates of the field's size fit on
    // one line.
    const QFontMetricsF metrics(qfont, &device);
    const double characterWidth =
        canvas.inchesX(std::max(metrics.averageCharWidth(), metrics.horizontalAdvance(QLatin1Char('0'))));
    const QList<ListingColumn> columns = layoutColumns(table.fields(), chosen, characterWidth);
    ListingPrinter printer(canvas, columns, listingTitle(fileName), qfont, control);
    printer.firstPage();

    const qint64 rows = table.rowCount();
    bool going = true;
    for (qint64 first = 0; going && first < rows; first += ListingRowsPerRead) {
        if (control && control->cancel.load(std::memory_order_relaxed)) {
            result.cancelled = true;
            break;
        }
        const tables::Result<QList<tables::Row>> batch = table.readRows(first, ListingRowsPerRead);
        if (!batch.ok()) {
            result.errorString = batch.errorString;
            break;
        }
        if (batch.value.isEmpty())
            break;
        for (const tables::Row &row : batch.value) {
            if (!printer.printRow(row)) {
                result.errorString = canvas.errorString();
                going = false;
                break;
            }
        }
    }
    return canvas.finishJob(result, control);
}

} // namespace tarnby::printing
