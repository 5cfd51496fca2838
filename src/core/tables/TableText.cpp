#include "core/tables/TableText.h"

namespace tarnby::tables {

QString fieldTypeName(int type)
{
    switch (type) {
    case 16: return QStringLiteral("Long Integer");
    case 9: return QStringLiteral("Binary");
    case 1: return QStringLiteral("Boolean");
    case 2: return QStringLiteral("Byte");
    case 18: return QStringLiteral("Character");
    case 5: return QStringLiteral("Currency");
    case 8: return QStringLiteral("Date");
    case 20: return QStringLiteral("Decimal");
    case 7: return QStringLiteral("Double");
    case 21: return QStringLiteral("Float");
    case 15: return QStringLiteral("GUID");
    case 3: return QStringLiteral("Integer");
    case 4: return QStringLiteral("Long Integer");
    case 11: return QStringLiteral("Long Binary");
    case 12: return QStringLiteral("Memo Field");
    case 19: return QStringLiteral("Numeric");
    case 6: return QStringLiteral("Single");
    case 10: return QStringLiteral("Text");
    case 22: return QStringLiteral("Time");
    case 23: return QStringLiteral("Date / Time");
    case 17: return QStringLiteral("Variable Binary");
    default: return QString();
    }
}

QString fieldLine(const Field &field)
{
    return field.name + QStringLiteral(" - ") + fieldTypeName(field.type) + QStringLiteral(" - ")
        + QString::number(field.size);
}

QByteArray csvRecord(const QStringList &cells)
{
    QByteArray record;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0)
            record += ',';
        appendCsvCell(record, cells[i].toUtf8());
    }
    record += "\r\n";
    return record;
}

QString writeCsv(Table &table, QIODevice &out, const std::atomic_bool *cancel)
{
    // Each page is formatted, then written in one piece. Its rows are as
    // many as made about pageBytes on the page before, so that a table of
    // long memos is not held a thousand rows at a time.
    constexpr qsizetype pageBytes = 4 << 20;
    constexpr qint64 maxPageRows = 16384;
    QStringList cells;
    const QList<Field> fields = table.fields();
    for (const Field &field : fields)
        cells << field.name;
    QByteArray page = csvRecord(cells);
    page.reserve(pageBytes + (pageBytes >> 2));
    qint64 pageRows = 256;
    const qint64 rows = table.rowCount();
    for (qint64 first = 0; first < rows;) {
        if (cancel && cancel->load())
            return QString();
        const qsizetype before = page.size();
        const Result<qint64> appended = table.appendCsvRows(first, pageRows, page);
        if (!appended.ok())
            return appended.errorString;
        if (out.write(page) != page.size())
            return QStringLiteral("The table could not be written: %1").arg(out.errorString());
        if (appended.value == 0)
            return QString();
        const qsizetype bytesPerRow = qMax<qsizetype>(1, (page.size() - before) / appended.value);
        pageRows = qBound<qint64>(1, pageBytes / bytesPerRow, maxPageRows);
        page.resize(0); // keeps the buffer for the next page
        first += appended.value;
    }
    if (!page.isEmpty() && out.write(page) != page.size())
        return QStringLiteral("The table could not be written: %1").arg(out.errorString());
    return QString();
}

} // namespace tarnby::tables
