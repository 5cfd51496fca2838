#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QAbstractTableModel>

#include <optional>

// The two grids of the group browser as item models, and the record position
// text of the organizer's data controls.
namespace tarnby::organizer {

// The data control's caption for the row at position (from 0) of count rows:
// "Record %Position: " + the percent position with two decimals + " %".
QString recordPositionCaption(int position, int count);

// The entries of one group in the order of a key. The IDs of the whole
// listing are read when the query runs; the rows themselves a block at a time
// as the view asks for them (canFetchMore / fetchMore), so that a group of a
// hundred thousand entries opens about as fast as one of ten. Every read is a
// short call of its own: between screens the model holds nothing open in the
// catalogue, and writers of other processes go on undisturbed. The row header
// shows each entry's ID.
class EntryGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    static constexpr int BlockSize = 256;

    explicit EntryGridModel(QObject *parent = nullptr);
    ~EntryGridModel() override;

    // The column headers, in order.
    static QStringList headers();

    // Runs the entry query for group in the order of key; the grid is
    // emptied first. False (and an empty grid) when the catalogue cannot be
    // read; result says why.
    bool setQuery(const OrganizerStore &store, const QString &group, SortKey key, StoreResult *result = nullptr);
    void clear();

    const FileEntry *entryAt(int row) const;
    // The row of the entry with id, reading further blocks until it is met;
    // -1 when the listing does not hold it.
    int rowForId(qint64 id);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;

private:
    void dropGone(qsizetype from, qsizetype to, const QList<FileEntry> &read);

    std::optional<OrganizerStore> m_store;
    QList<qint64> m_ids; // the whole listing, in order
    QList<FileEntry> m_rows; // the rows of the first m_rows.size() IDs
};

// GroupTable in the order of its "GroupName" index: name, description and
// the display stamp of the last save.
class GroupGridModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    explicit GroupGridModel(QObject *parent = nullptr);

    static QStringList headers();
    bool load(const OrganizerStore &store, StoreResult *result = nullptr);
    const GroupRow *groupAt(int row) const;

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role = Qt::DisplayRole) const override;

private:
    QList<GroupRow> m_rows;
};

} // namespace tarnby::organizer
