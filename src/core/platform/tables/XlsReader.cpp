#include "XlsReader.h"

#include "BiffWorkbook.h"
#include "CompoundFile.h"
#include "ReaderSupport.h"

#include <QFileInfo>

#include <memory>

namespace tarnby::tables {

namespace {

// Workbooks larger than this are refused rather than read into memory.
constexpr qint64 largestWorkbook = qint64(1) << 30;

QString unreadable(const QString &fileName)
{
    return QStringLiteral("The workbook \"%1\" could not be read.").arg(fileName);
}

class XlsSheet : public Table
{
public:
    XlsSheet(QString name, BiffSheet sheet)
        : m_name(std::move(name))
        , m_sheet(std::move(sheet))
    {
        m_fields = sheetFields(m_sheet.rows, m_sheet.columns, [this](qint64 r, int c) { return m_sheet.cell(r, c); },
                               &m_firstDataRow);
    }

    QString name() const override { return m_name; }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_sheet.rows - m_firstDataRow; }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        QList<Row> rows;
        if (first < 0 || count <= 0 || first >= rowCount())
            return Result<QList<Row>>::success(rows);
        const qint64 last = qMin(rowCount(), first + count);
        rows.reserve(last - first);
        // The cells are ordered by row: find the first of the page, then walk.
        const quint32 firstRow = quint32(first + m_firstDataRow);
        auto cell = std::lower_bound(m_sheet.cells.cbegin(), m_sheet.cells.cend(), firstRow,
                                     [](const BiffCell &c, quint32 row) { return c.row < row; });
        for (qint64 r = first; r < last; ++r) {
            Row row(m_sheet.columns);
            const quint32 sheetRow = quint32(r + m_firstDataRow);
            for (; cell != m_sheet.cells.cend() && cell->row == sheetRow; ++cell)
                row[cell->column] = cell->value;
            rows.append(std::move(row));
        }
        return Result<QList<Row>>::success(rows);
    }

private:
    QString m_name;
    BiffSheet m_sheet;
    QList<Field> m_fields;
    qint64 m_firstDataRow = 0;
};

class XlsFile : public TableFile
{
public:
    XlsFile(std::unique_ptr<BiffWorkbook> workbook, QString fileName)
        : m_workbook(std::move(workbook))
        , m_fileName(std::move(fileName))
        , m_sheets(m_workbook->sheetNames().mid(0, maxTables))
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
        BiffSheet sheet = m_workbook->readSheet(int(index));
        if (!sheet.errorString.isEmpty())
            return Result<std::unique_ptr<Table>>::failure(
                QStringLiteral("The worksheet \"%1\" could not be read.").arg(name));
        return Result<std::unique_ptr<Table>>::success(std::make_unique<XlsSheet>(name, std::move(sheet)));
    }

private:
    std::unique_ptr<BiffWorkbook> m_workbook;
    QString m_fileName;
    QStringList m_sheets;
};

} // namespace

OpenResult openXlsFile(const QString &path)
{
    const QString fileName = QFileInfo(path).fileName();
    const std::unique_ptr<QIODevice> device = openForReading(path);
    if (!device)
        return OpenResult::failure(OpenStatus::Failed, unreadable(fileName));
    if (device->size() > largestWorkbook)
        return OpenResult::failure(OpenStatus::Failed,
                                   QStringLiteral("The workbook \"%1\" is too large to read.").arg(fileName));
    QByteArray bytes = readExactly(*device, 0, device->size());
    QByteArray stream;
    if (isCompoundFile(bytes)) {
        CompoundStream found = readCompoundStream(bytes, {QStringLiteral("Workbook"), QStringLiteral("Book")});
        if (!found.ok())
            return OpenResult::failure(OpenStatus::Failed, unreadable(fileName));
        stream = std::move(found.data);
    } else {
        // BIFF 2 to 4 worksheets (and some BIFF 5 files) are the bare stream.
        stream = std::move(bytes);
    }
    auto workbook = std::make_unique<BiffWorkbook>();
    if (!workbook->open(std::move(stream)).isEmpty())
        return OpenResult::failure(OpenStatus::Failed, unreadable(fileName));
    if (workbook->encrypted())
        return OpenResult::failure(OpenStatus::Unsupported,
                                   QStringLiteral("The workbook \"%1\" is encrypted, which Tarnby cannot read.").arg(fileName));
    OpenResult result;
    result.file = std::make_unique<XlsFile>(std::move(workbook), fileName);
    return result;
}

} // namespace tarnby::tables
