#include "core/tables/TableModel.h"

#include "core/tables/TableText.h"

#include <algorithm>
#include <limits>

namespace tarnby::tables {

TableModel::TableModel(std::unique_ptr<Table> table, QObject *parent)
    : QAbstractTableModel(parent)
    , m_table(std::move(table))
    , m_fields(m_table->fields())
    // A view counts rows in int; a larger table shows its first 2^31 - 1.
    , m_rows(int(qMin<qint64>(m_table->rowCount(), std::numeric_limits<int>::max())))
{
}

TableModel::~TableModel() = default;

int TableModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : m_rows;
}

int TableModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_fields.size());
}

const QList<Row> *TableModel::page(qint64 number) const
{
    const auto held = m_pages.find(number);
    if (held != m_pages.end()) {
        m_recent.remove(number);
        m_recent.push_front(number);
        return &held->second;
    }
    Result<QList<Row>> read;
    if (m_order.empty()) {
        read = m_table->readRows(number * pageRows, pageRows);
    } else {
        const size_t first = size_t(number) * pageRows;
        const size_t end = std::min(m_order.size(), first + pageRows);
        read = first < end ? readRowsAt(*m_table, std::vector<qint64>(m_order.begin() + qint64(first),
                                                                        m_order.begin() + qint64(end)))
                           : Result<QList<Row>>::success({});
    }
    if (!read.ok())
        m_lastError = read.errorString;
    if ((int)m_pages.size() >= maxPages) {
        m_pages.erase(m_recent.back());
        m_recent.pop_back();
    }
    m_recent.push_front(number);
    return &(m_pages[number] = std::move(read.value));
}

QVariant TableModel::value(int row, int column) const
{
    if (row < 0 || row >= m_rows || column < 0 || column >= m_fields.size())
        return {};
    const QList<Row> *rows = page(row / pageRows);
    return rows->value(row % pageRows).value(column);
}

void TableModel::setOrder(RowOrder order)
{
    beginResetModel();
    m_order = std::move(order);
    const qint64 rows = m_order.empty() ? m_table->rowCount() : qint64(m_order.size());
    m_rows = int(qMin<qint64>(rows, std::numeric_limits<int>::max()));
    m_pages.clear();
    m_recent.clear();
    endResetModel();
}

QVariant TableModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid())
        return {};
    if (role == Qt::DisplayRole)
        return valueText(value(index.row(), index.column()));
    if (role == Qt::EditRole)
        return value(index.row(), index.column());
    return {};
}

QVariant TableModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return m_fields.value(section).name;
    return section + 1;
}

int columnWidthTwips(const Field &field)
{
    const int nameLength = int(field.name.size());
    const int width = nameLength <= field.size ? field.size * 120 : nameLength * 100;
    return std::min(width, 2500);
}

} // namespace tarnby::tables
