#include "core/tables/TableText.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QTime>

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

QString valueText(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return QString();
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(Qt::ISODate);
    case QMetaType::QTime:
        return value.toTime().toString(Qt::ISODate);
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    default:
        return value.toString();
    }
}

namespace {

// Appends one cell, quoted when it must be. One pass over the text finds
// whether it must; the bytes are appended as UTF-8.
void appendCsvCell(QByteArray &record, const QString &cell)
{
    bool quote = false;
    for (const QChar c : cell) {
        const char16_t u = c.unicode();
        if (u == ',' || u == '"' || u == '\r' || u == '\n') {
            quote = true;
            break;
        }
    }
    if (!quote) {
        record += cell.toUtf8();
        return;
    }
    QString quoted = cell;
    quoted.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    record += '"';
    record += quoted.toUtf8();
    record += '"';
}

} // namespace

QByteArray csvRecord(const QStringList &cells)
{
    QByteArray record;
    for (qsizetype i = 0; i < cells.size(); ++i) {
        if (i > 0)
            record += ',';
        appendCsvCell(record, cells[i]);
    }
    record += "\r\n";
    return record;
}

QString writeCsv(Table &table, QIODevice &out, const std::atomic_bool *cancel)
{
    constexpr int pageRows = 4096;
    QStringList cells;
    const QList<Field> fields = table.fields();
    for (const Field &field : fields)
        cells << field.name;
    QByteArray page = csvRecord(cells);
    page.reserve(1 << 20);
    const qint64 rows = table.rowCount();
    for (qint64 first = 0; first < rows; first += pageRows) {
        if (cancel && cancel->load())
            return QString();
        const Result<QList<Row>> read = table.readRows(first, pageRows);
        if (!read.ok())
            return read.errorString;
        for (const Row &row : read.value) {
            for (qsizetype i = 0; i < row.size(); ++i) {
                if (i > 0)
                    page += ',';
                appendCsvCell(page, valueText(row[i]));
            }
            page += "\r\n";
        }
        if (out.write(page) != page.size())
            return QStringLiteral("The table could not be written: %1").arg(out.errorString());
        page.clear();
        if (read.value.isEmpty())
            break;
    }
    if (!page.isEmpty() && out.write(page) != page.size())
        return QStringLiteral("The table could not be written: %1").arg(out.errorString());
    return QString();
}

} // namespace tarnby::tables
