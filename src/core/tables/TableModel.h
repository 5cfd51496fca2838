#pragma once

#include "core/platform/tables/TableReader.h"
#include "core/tables/IndexOrder.h"

#include <QAbstractTableModel>

#include <list>
#include <map>
#include <memory>

// A table as an item model for the table view's grid: one column per field
// (headers are the field names), one row per table row. Rows are read from
// the table in pages of pageRows when the view asks for them and at most
// maxPages pages are kept (the least recently used go first), so a table of
// a million rows opens at once and the memory held follows what is looked
// at, not the table's size.
//
// Display text is valueText's (ISO dates, shortest numbers); the edit role
// gives the typed value. A page that cannot be read shows empty cells and
// sets lastError().
//
// Lives in the thread that uses it (reads are synchronous: a page costs the
// reader's read of pageRows rows).
namespace tarnby::tables {

class TableModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    static constexpr int pageRows = 256;
    static constexpr int maxPages = 64;

    explicit TableModel(std::unique_ptr<Table> table, QObject *parent = nullptr);
    ~TableModel() override;

    Table &table() const { return *m_table; }
    QString lastError() const { return m_lastError; }
    // Pages held now (for the view's memory figures and tests).
    int pagesHeld() const { return int(m_pages.size()); }

    int rowCount(const QModelIndex &parent = QModelIndex()) const override;
    int columnCount(const QModelIndex &parent = QModelIndex()) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

    // The typed value of a cell (an invalid QVariant for null).
    QVariant value(int row, int column) const;

    // Shows the rows in order (row numbers of the table, as indexOrder gives
    // them), or in the table's own order when order is empty. Resets the
    // model.
    void setOrder(RowOrder order);
    bool isOrdered() const { return !m_order.empty(); }

private:
    const QList<Row> *page(qint64 number) const;

    std::unique_ptr<Table> m_table;
    QList<Field> m_fields;
    int m_rows = 0;
    RowOrder m_order;
    mutable std::map<qint64, QList<Row>> m_pages;
    mutable std::list<qint64> m_recent; // page numbers, most recent first
    mutable QString m_lastError;
};

// The width of a grid column in twips: a field whose name is no longer than
// its size gets size x 120, one with a longer name name length x 100; no
// column is wider than 2500.
int columnWidthTwips(const Field &field);

} // namespace tarnby::tables
