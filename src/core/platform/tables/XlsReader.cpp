#include "XlsReader.h"

#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QTime>

#include <freexl.h>

#include <memory>

namespace tarnby::tables {

namespace {

struct Workbook {
    const void *handle = nullptr;
    ~Workbook()
    {
        if (handle)
            freexl_close(handle);
    }
};

QVariant cellValue(const FreeXL_CellValue &cell)
{
    switch (cell.type) {
    case FREEXL_CELL_INT:
        return qlonglong(cell.value.int_value);
    case FREEXL_CELL_DOUBLE:
        return cell.value.double_value;
    case FREEXL_CELL_TEXT:
    case FREEXL_CELL_SST_TEXT:
        return cell.value.text_value ? QVariant(QString::fromUtf8(cell.value.text_value)) : QVariant();
    case FREEXL_CELL_DATE: {
        const QDate date = QDate::fromString(QString::fromLatin1(cell.value.text_value), Qt::ISODate);
        return date.isValid() ? QVariant(date) : QVariant();
    }
    case FREEXL_CELL_DATETIME: {
        const QDateTime when = QDateTime::fromString(QString::fromLatin1(cell.value.text_value),
                                                     QStringLiteral("yyyy-MM-dd HH:mm:ss"));
        return when.isValid() ? QVariant(when) : QVariant();
    }
    case FREEXL_CELL_TIME: {
        const QTime time = QTime::fromString(QString::fromLatin1(cell.value.text_value), Qt::ISODate);
        return time.isValid() ? QVariant(time) : QVariant();
    }
    default:
        return {};
    }
}

class XlsSheet : public Table
{
public:
    XlsSheet(std::shared_ptr<Workbook> workbook, unsigned short index, QString name)
        : m_workbook(std::move(workbook))
        , m_index(index)
        , m_name(std::move(name))
    {
    }

    // Reads the sheet's size, its header row and the types of its columns.
    QString load()
    {
        if (freexl_select_active_worksheet(m_workbook->handle, m_index) != FREEXL_OK)
            return QStringLiteral("The worksheet \"%1\" could not be read.").arg(m_name);
        unsigned int rows = 0;
        unsigned short columns = 0;
        if (freexl_worksheet_dimensions(m_workbook->handle, &rows, &columns) != FREEXL_OK)
            return QStringLiteral("The worksheet \"%1\" could not be read.").arg(m_name);
        // An empty sheet may report rows without columns.
        m_columns = columns;
        m_rows = columns == 0 ? 0 : rows;
        m_fields = sheetFields(m_rows, m_columns, [this](qint64 r, int c) { return cell(r, c); }, &m_firstDataRow);
        return QString();
    }

    QString name() const override { return m_name; }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows - m_firstDataRow; }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        QList<Row> rows;
        if (first < 0 || count <= 0 || first >= rowCount())
            return Result<QList<Row>>::success(rows);
        if (freexl_select_active_worksheet(m_workbook->handle, m_index) != FREEXL_OK)
            return Result<QList<Row>>::failure(QStringLiteral("The worksheet \"%1\" could not be read.").arg(m_name));
        const qint64 last = qMin(rowCount(), first + count);
        for (qint64 r = first; r < last; ++r) {
            Row row;
            row.reserve(m_columns);
            for (int c = 0; c < m_columns; ++c)
                row.append(cell(r + m_firstDataRow, c));
            rows.append(row);
        }
        return Result<QList<Row>>::success(rows);
    }

private:
    QVariant cell(qint64 row, int column) const
    {
        FreeXL_CellValue value;
        if (freexl_get_cell_value(m_workbook->handle, unsigned(row), static_cast<unsigned short>(column), &value) != FREEXL_OK)
            return {};
        return cellValue(value);
    }

    std::shared_ptr<Workbook> m_workbook;
    unsigned short m_index;
    QString m_name;
    QList<Field> m_fields;
    qint64 m_rows = 0;
    int m_columns = 0;
    qint64 m_firstDataRow = 0;
};

class XlsFile : public TableFile
{
public:
    XlsFile(std::shared_ptr<Workbook> workbook, QStringList sheets)
        : m_workbook(std::move(workbook))
        , m_sheets(std::move(sheets))
    {
    }

    QString formatName() const override { return QStringLiteral("Excel"); }
    QStringList tableNames() const override { return m_sheets; }

    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        const qsizetype index = m_sheets.indexOf(name);
        if (index < 0)
            return Result<std::unique_ptr<Table>>::failure(
                QStringLiteral("The workbook holds no worksheet named \"%1\".").arg(name));
        auto sheet = std::make_unique<XlsSheet>(m_workbook, static_cast<unsigned short>(index), name);
        const QString error = sheet->load();
        if (!error.isEmpty())
            return Result<std::unique_ptr<Table>>::failure(error);
        return Result<std::unique_ptr<Table>>::success(std::move(sheet));
    }

private:
    std::shared_ptr<Workbook> m_workbook;
    QStringList m_sheets;
};

} // namespace

OpenResult openXlsFile(const QString &path)
{
    const QString fileName = QFileInfo(path).fileName();
    auto workbook = std::make_shared<Workbook>();
    // FIXME: FreeXL 1.0.6 reads before one of its own stack buffers (in an
    // iconv call inside freexl_open) on some damaged workbooks; the open then
    // fails as it should, but AddressSanitizer sees the stray read. The input
    // is kept in fuzz/findings/. A BIFF reader of our own would end it.
    const int status = freexl_open(QFile::encodeName(path).constData(), &workbook->handle);
    // FreeXL answers an encrypted workbook with success and no handle.
    if (status == FREEXL_OK && !workbook->handle)
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("The workbook \"%1\" is encrypted, which Tarnby cannot read.").arg(fileName));
    if (status != FREEXL_OK || !workbook->handle) {
        workbook->handle = nullptr;
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The workbook \"%1\" could not be read.").arg(fileName));
    }
    unsigned int password = 0;
    if (freexl_get_info(workbook->handle, FREEXL_BIFF_PASSWORD, &password) == FREEXL_OK && password == FREEXL_BIFF_OBFUSCATED)
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("The workbook \"%1\" is encrypted, which Tarnby cannot read.").arg(fileName));
    unsigned int count = 0;
    if (freexl_get_info(workbook->handle, FREEXL_BIFF_SHEET_COUNT, &count) != FREEXL_OK)
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The workbook \"%1\" could not be read.").arg(fileName));
    QStringList sheets;
    for (unsigned i = 0; i < count && sheets.size() < maxTables; ++i) {
        const char *name = nullptr;
        if (freexl_get_worksheet_name(workbook->handle, static_cast<unsigned short>(i), &name) != FREEXL_OK || !name)
            return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The workbook \"%1\" could not be read.").arg(fileName));
        sheets << QString::fromUtf8(name);
    }
    OpenResult result;
    result.file = std::make_unique<XlsFile>(std::move(workbook), std::move(sheets));
    return result;
}

} // namespace tarnby::tables
