#include "LotusReader.h"

#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTime>

#include <librevenge-stream/librevenge-stream.h>
#include <librevenge/librevenge.h>
#include <libwps/libwps.h>

#include <map>
#include <vector>

namespace tarnby::tables {

namespace {

using librevenge::RVNGPropertyList;

struct Sheet {
    QString name;
    std::map<int, std::map<int, QVariant>> cells; // row, column
    int columns = 0;
    int rows = 0;
};

// Collects the sheets and cells libwps reports; everything else it reports
// (styles, charts, drawings) is not needed for a table.
class CellCollector : public librevenge::RVNGSpreadsheetInterface
{
public:
    std::vector<Sheet> sheets;

    void openSheet(const RVNGPropertyList &p) override
    {
        Sheet sheet;
        if (const librevenge::RVNGProperty *name = p["librevenge:sheet-name"])
            sheet.name = QString::fromUtf8(name->getStr().cstr());
        if (sheet.name.isEmpty())
            sheet.name = QStringLiteral("Sheet%1").arg(sheets.size() + 1);
        sheets.push_back(sheet);
        m_row = -1;
    }
    void closeSheet() override {}
    void openSheetRow(const RVNGPropertyList &p) override
    {
        const librevenge::RVNGProperty *row = p["librevenge:row"];
        m_row = row ? row->getInt() : m_row + 1;
        m_column = 0;
    }
    void closeSheetRow() override {}
    void openSheetCell(const RVNGPropertyList &p) override
    {
        m_inCell = true;
        m_text.clear();
        m_value = QVariant();
        if (const librevenge::RVNGProperty *column = p["librevenge:column"])
            m_column = column->getInt();
        if (const librevenge::RVNGProperty *row = p["librevenge:row"])
            m_row = row->getInt();
        m_repeat = 1;
        if (const librevenge::RVNGProperty *repeated = p["table:number-columns-repeated"])
            m_repeat = qBound(1, repeated->getInt(), maxSheetColumns);
        const librevenge::RVNGProperty *type = p["librevenge:value-type"];
        const QString valueType = type ? QString::fromUtf8(type->getStr().cstr()) : QString();
        if (valueType == QLatin1String("boolean")) {
            if (const librevenge::RVNGProperty *v = p["librevenge:value"])
                m_value = v->getInt() != 0;
        } else if (valueType == QLatin1String("date") || valueType == QLatin1String("time")) {
            const auto number = [&](const char *key, int fallback) {
                const librevenge::RVNGProperty *v = p[key];
                return v ? v->getInt() : fallback;
            };
            const QDate date(number("librevenge:year", 0), number("librevenge:month", 0), number("librevenge:day", 0));
            const QTime time(number("librevenge:hours", 0), number("librevenge:minutes", 0), number("librevenge:seconds", 0));
            if (valueType == QLatin1String("time") || !date.isValid())
                m_value = time.isValid() ? QVariant(time) : QVariant();
            else if (time.isValid() && time != QTime(0, 0))
                m_value = QDateTime(date, time);
            else
                m_value = date;
        } else if (!valueType.isEmpty() && valueType != QLatin1String("string") && valueType != QLatin1String("text")) {
            if (const librevenge::RVNGProperty *v = p["librevenge:value"])
                m_value = v->getDouble();
        }
    }
    void closeSheetCell() override
    {
        m_inCell = false;
        QVariant value = m_value;
        if (!value.isValid() && !m_text.isEmpty())
            value = m_text;
        if (!sheets.empty() && m_row >= 0 && m_row < maxSheetRows && value.isValid()) {
            Sheet &sheet = sheets.back();
            for (int i = 0; i < m_repeat && m_column + i < maxSheetColumns; ++i) {
                sheet.cells[m_row][m_column + i] = value;
                sheet.columns = qMax(sheet.columns, m_column + i + 1);
            }
            sheet.rows = qMax(sheet.rows, m_row + 1);
        }
        m_column += m_repeat;
    }

    void insertText(const librevenge::RVNGString &text) override
    {
        if (m_inCell)
            m_text += QString::fromUtf8(text.cstr());
    }
    void insertTab() override { insertText("\t"); }
    void insertSpace() override { insertText(" "); }
    void insertLineBreak() override { insertText("\n"); }

    void setDocumentMetaData(const RVNGPropertyList &) override {}
    void startDocument(const RVNGPropertyList &) override {}
    void endDocument() override {}
    void definePageStyle(const RVNGPropertyList &) override {}
    void defineEmbeddedFont(const RVNGPropertyList &) override {}
    void openPageSpan(const RVNGPropertyList &) override {}
    void closePageSpan() override {}
    void openHeader(const RVNGPropertyList &) override {}
    void closeHeader() override {}
    void openFooter(const RVNGPropertyList &) override {}
    void closeFooter() override {}
    void defineSheetNumberingStyle(const RVNGPropertyList &) override {}
    void defineChartStyle(const RVNGPropertyList &) override {}
    void openChart(const RVNGPropertyList &) override {}
    void closeChart() override {}
    void openChartTextObject(const RVNGPropertyList &) override {}
    void closeChartTextObject() override {}
    void openChartPlotArea(const RVNGPropertyList &) override {}
    void closeChartPlotArea() override {}
    void insertChartAxis(const RVNGPropertyList &) override {}
    void openChartSerie(const RVNGPropertyList &) override {}
    void closeChartSerie() override {}
    void defineParagraphStyle(const RVNGPropertyList &) override {}
    // Paragraphs of one cell are separated by line breaks.
    void openParagraph(const RVNGPropertyList &) override
    {
        if (m_inCell && !m_text.isEmpty())
            m_text += QLatin1Char('\n');
    }
    void closeParagraph() override {}
    void defineCharacterStyle(const RVNGPropertyList &) override {}
    void openSpan(const RVNGPropertyList &) override {}
    void closeSpan() override {}
    void openLink(const RVNGPropertyList &) override {}
    void closeLink() override {}
    void defineSectionStyle(const RVNGPropertyList &) override {}
    void openSection(const RVNGPropertyList &) override {}
    void closeSection() override {}
    void insertField(const RVNGPropertyList &) override {}
    void openOrderedListLevel(const RVNGPropertyList &) override {}
    void openUnorderedListLevel(const RVNGPropertyList &) override {}
    void closeOrderedListLevel() override {}
    void closeUnorderedListLevel() override {}
    void openListElement(const RVNGPropertyList &) override {}
    void closeListElement() override {}
    void openFootnote(const RVNGPropertyList &) override {}
    void closeFootnote() override {}
    void openComment(const RVNGPropertyList &) override {}
    void closeComment() override {}
    void openFrame(const RVNGPropertyList &) override {}
    void closeFrame() override {}
    void insertBinaryObject(const RVNGPropertyList &) override {}
    void openTextBox(const RVNGPropertyList &) override {}
    void closeTextBox() override {}
    void openTable(const RVNGPropertyList &) override {}
    void openTableRow(const RVNGPropertyList &) override {}
    void closeTableRow() override {}
    void openTableCell(const RVNGPropertyList &) override {}
    void closeTableCell() override {}
    void insertCoveredTableCell(const RVNGPropertyList &) override {}
    void closeTable() override {}
    void openGroup(const RVNGPropertyList &) override {}
    void closeGroup() override {}
    void defineGraphicStyle(const RVNGPropertyList &) override {}
    void drawRectangle(const RVNGPropertyList &) override {}
    void drawEllipse(const RVNGPropertyList &) override {}
    void drawPolygon(const RVNGPropertyList &) override {}
    void drawPolyline(const RVNGPropertyList &) override {}
    void drawPath(const RVNGPropertyList &) override {}
    void drawConnector(const RVNGPropertyList &) override {}
    void insertEquation(const RVNGPropertyList &) override {}

private:
    bool m_inCell = false;
    int m_row = -1;
    int m_column = 0;
    int m_repeat = 1;
    QString m_text;
    QVariant m_value;
};

// A sheet held in memory, its cells typed as collected.
class LotusSheet : public Table
{
public:
    explicit LotusSheet(const Sheet &sheet)
        : m_name(sheet.name)
    {
        m_columns = sheet.columns;
        const qint64 rows = sheet.rows;
        const auto cell = [&sheet](qint64 r, int c) -> QVariant {
            const auto row = sheet.cells.find(int(r));
            if (row == sheet.cells.end())
                return {};
            const auto value = row->second.find(c);
            return value == row->second.end() ? QVariant() : value->second;
        };
        m_fields = sheetFields(rows, m_columns, cell, &m_firstDataRow);
        for (qint64 r = m_firstDataRow; r < rows; ++r) {
            Row row;
            row.reserve(m_columns);
            for (int c = 0; c < m_columns; ++c)
                row.append(cell(r, c));
            m_rows.append(row);
        }
    }

    QString name() const override { return m_name; }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows.size(); }
    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        if (first < 0 || count <= 0 || first >= rowCount())
            return Result<QList<Row>>::success({});
        return Result<QList<Row>>::success(m_rows.mid(first, count));
    }

private:
    QString m_name;
    QList<Field> m_fields;
    QList<Row> m_rows;
    int m_columns = 0;
    qint64 m_firstDataRow = 0;
};

class LotusFile : public TableFile
{
public:
    explicit LotusFile(std::vector<Sheet> sheets)
        : m_sheets(std::move(sheets))
    {
    }

    QString formatName() const override { return QStringLiteral("Lotus"); }
    QStringList tableNames() const override
    {
        QStringList names;
        for (const Sheet &s : m_sheets) {
            if (names.size() < maxTables)
                names << s.name;
        }
        return names;
    }
    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        for (const Sheet &s : m_sheets) {
            if (s.name == name)
                return Result<std::unique_ptr<Table>>::success(std::make_unique<LotusSheet>(s));
        }
        return Result<std::unique_ptr<Table>>::failure(
            QStringLiteral("The worksheet file holds no sheet named \"%1\".").arg(name));
    }

private:
    std::vector<Sheet> m_sheets;
};

} // namespace

OpenResult openLotusFile(const QString &path)
{
    const QString fileName = QFileInfo(path).fileName();
    if (!QFileInfo(path).isFile())
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The file \"%1\" could not be opened.").arg(path));
    librevenge::RVNGFileStream input(QFile::encodeName(path).constData());
    libwps::WPSKind kind = libwps::WPS_TEXT;
    libwps::WPSCreator creator = libwps::WPS_MSWORKS;
    bool needEncoding = false;
    const libwps::WPSConfidence confidence = libwps::WPSDocument::isFileFormatSupported(&input, kind, creator, needEncoding);
    if (confidence == libwps::WPS_CONFIDENCE_NONE || kind != libwps::WPS_SPREADSHEET)
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("\"%1\" is not a worksheet Tarnby can read.").arg(fileName));
    if (confidence == libwps::WPS_CONFIDENCE_SUPPORTED_ENCRYPTION)
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("The worksheet \"%1\" is protected by a password, which Tarnby cannot read.").arg(fileName));
    CellCollector collector;
    const libwps::WPSResult result = libwps::WPSDocument::parse(&input, &collector, nullptr, nullptr);
    if (result == libwps::WPS_ENCRYPTION_ERROR)
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("The worksheet \"%1\" is protected by a password, which Tarnby cannot read.").arg(fileName));
    if (result != libwps::WPS_OK)
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The worksheet \"%1\" is damaged and could not be read.").arg(fileName));
    OpenResult opened;
    opened.file = std::make_unique<LotusFile>(std::move(collector.sheets));
    return opened;
}

} // namespace tarnby::tables
