#include "core/tables/IndexOrder.h"

#include <QDate>
#include <QDateTime>
#include <QTime>
#include <QTimeZone>

#include <algorithm>
#include <limits>
#include <numeric>

namespace tarnby::tables {

namespace {

// Key values compare first by kind, so that a column that mixes kinds (a
// spreadsheet column, an SQLite column) still has one total order.
enum class Kind { Null, Number, Moment, Text, Bytes };

Kind kindOf(const QVariant &v)
{
    if (!v.isValid() || v.isNull())
        return Kind::Null;
    switch (v.typeId()) {
    case QMetaType::Bool:
    case QMetaType::Int:
    case QMetaType::UInt:
    case QMetaType::LongLong:
    case QMetaType::ULongLong:
    case QMetaType::Double:
        return Kind::Number;
    case QMetaType::QDate:
    case QMetaType::QDateTime:
    case QMetaType::QTime:
        return Kind::Moment;
    case QMetaType::QByteArray:
        return Kind::Bytes;
    default:
        return Kind::Text;
    }
}

// Dates and times as one scale: milliseconds since the epoch (a time alone
// counts from midnight).
qint64 momentOf(const QVariant &v)
{
    switch (v.typeId()) {
    case QMetaType::QDate:
        return v.toDate().startOfDay(QTimeZone::utc()).toMSecsSinceEpoch();
    case QMetaType::QTime:
        return v.toTime().msecsSinceStartOfDay();
    default:
        return v.toDateTime().toMSecsSinceEpoch();
    }
}

int compareValues(const QVariant &a, const QVariant &b, bool caseInsensitive)
{
    const Kind ka = kindOf(a);
    const Kind kb = kindOf(b);
    if (ka != kb)
        return ka < kb ? -1 : 1;
    switch (ka) {
    case Kind::Null:
        return 0;
    case Kind::Number: {
        // Whole numbers exactly; mixed or fractional ones as doubles.
        if (a.typeId() != QMetaType::Double && b.typeId() != QMetaType::Double) {
            const qlonglong x = a.toLongLong(), y = b.toLongLong();
            return x < y ? -1 : (x > y ? 1 : 0);
        }
        const double x = a.toDouble(), y = b.toDouble();
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    case Kind::Moment: {
        const qint64 x = momentOf(a), y = momentOf(b);
        return x < y ? -1 : (x > y ? 1 : 0);
    }
    case Kind::Bytes: {
        const int c = a.toByteArray().compare(b.toByteArray());
        return c < 0 ? -1 : (c > 0 ? 1 : 0);
    }
    case Kind::Text:
        break;
    }
    const int c = a.toString().compare(b.toString(), caseInsensitive ? Qt::CaseInsensitive : Qt::CaseSensitive);
    return c < 0 ? -1 : (c > 0 ? 1 : 0);
}

} // namespace

Result<RowOrder> indexOrder(Table &table, const IndexKey &key, const std::atomic_bool *cancel,
                            const std::function<void(qint64 rowsRead)> &progress)
{
    constexpr int pageRows = 4096;
    const qint64 rows = table.rowCount();
    const int parts = int(key.parts.size());
    const int columns = int(table.fields().size());
    for (const IndexKey::Part &part : key.parts) {
        if (part.column < 0 || part.column >= columns)
            return Result<RowOrder>::failure(
                QStringLiteral("The index names a field the table \"%1\" does not have.").arg(table.name()));
    }

    // Only the key columns are kept, one value per row and key part.
    std::vector<QVariant> keys;
    keys.reserve(size_t(rows) * size_t(parts));
    qint64 read = 0;
    while (read < rows) {
        if (cancel && cancel->load())
            return Result<RowOrder>::success({});
        Result<QList<Row>> page = table.readRows(read, pageRows);
        if (!page.ok())
            return Result<RowOrder>::failure(page.errorString);
        if (page.value.isEmpty())
            break;
        for (const Row &row : std::as_const(page.value)) {
            for (const IndexKey::Part &part : key.parts)
                keys.push_back(row.value(part.column));
        }
        read += page.value.size();
        if (progress)
            progress(read);
    }

    RowOrder order(static_cast<size_t>(read));
    std::iota(order.begin(), order.end(), qint64(0));
    std::stable_sort(order.begin(), order.end(), [&](qint64 x, qint64 y) {
        const QVariant *kx = &keys[size_t(x) * size_t(parts)];
        const QVariant *ky = &keys[size_t(y) * size_t(parts)];
        for (int i = 0; i < parts; ++i) {
            const IndexKey::Part &part = key.parts[i];
            int c = compareValues(kx[i], ky[i], part.caseInsensitive);
            if (part.descending)
                c = -c;
            if (c != 0)
                return c < 0;
        }
        return false;
    });
    return Result<RowOrder>::success(std::move(order));
}

Result<QList<Row>> readRowsAt(Table &table, const std::vector<qint64> &rowNumbers)
{
    // Positions of the wanted rows sorted by row number, then read in runs of
    // consecutive numbers.
    std::vector<size_t> byRow(rowNumbers.size());
    std::iota(byRow.begin(), byRow.end(), size_t(0));
    std::sort(byRow.begin(), byRow.end(), [&](size_t a, size_t b) { return rowNumbers[a] < rowNumbers[b]; });

    QList<Row> rows(qsizetype(rowNumbers.size()));
    size_t i = 0;
    while (i < byRow.size()) {
        const qint64 first = rowNumbers[byRow[i]];
        size_t end = i + 1;
        while (end < byRow.size() && rowNumbers[byRow[end]] <= first + qint64(end - i)
               && end - i < size_t(std::numeric_limits<int>::max()))
            ++end;
        const qint64 last = rowNumbers[byRow[end - 1]];
        Result<QList<Row>> run = table.readRows(first, int(last - first + 1));
        if (!run.ok())
            return Result<QList<Row>>::failure(run.errorString);
        for (size_t k = i; k < end; ++k) {
            const qint64 offset = rowNumbers[byRow[k]] - first;
            if (offset >= 0 && offset < run.value.size())
                rows[qsizetype(byRow[k])] = run.value[qsizetype(offset)];
        }
        i = end;
    }
    return Result<QList<Row>>::success(std::move(rows));
}

} // namespace tarnby::tables
