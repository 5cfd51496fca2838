#include "core/organizer/OrganizerModels.h"

#include <QLocale>
#include <QSet>

#include <algorithm>

namespace tarnby::organizer {

QString recordPositionCaption(int position, int count)
{
    const double percent = count > 0 ? 100.0 * position / count : 0.0;
    return QStringLiteral("Record %Position: ") + QLocale::c().toString(percent, 'f', 2) + QStringLiteral(" %");
}

EntryGridModel::EntryGridModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

EntryGridModel::~EntryGridModel() = default;

QStringList EntryGridModel::headers()
{
    return {QStringLiteral("File Group"),       QStringLiteral("File Name"),     QStringLiteral("File Location"),
            QStringLiteral("File Description"), QStringLiteral("File Search Word"), QStringLiteral("Type of File"),
            QStringLiteral("File Updated"),     QStringLiteral("Updated Time"),  QStringLiteral("Added to Database")};
}

bool EntryGridModel::setQuery(const OrganizerStore &store, const QString &group, SortKey key, StoreResult *result)
{
    beginResetModel();
    m_store = store;
    m_rows.clear();
    StoreResult r;
    m_ids = store.entryIds(group, key, &r);
    if (r.ok() && !m_ids.isEmpty())
        m_rows = store.entriesWithIds(m_ids.mid(0, BlockSize), &r);
    if (!r.ok()) {
        m_ids.clear();
        m_rows.clear();
    }
    // An entry deleted between the two reads is left out of the listing.
    dropGone(0, std::min<qsizetype>(BlockSize, m_ids.size()), m_rows);
    endResetModel();
    if (result)
        *result = r;
    return r.ok();
}

void EntryGridModel::clear()
{
    beginResetModel();
    m_ids.clear();
    m_rows.clear();
    m_store.reset();
    endResetModel();
}

void EntryGridModel::dropGone(qsizetype from, qsizetype to, const QList<FileEntry> &read)
{
    // read holds the rows of m_ids[from, to) that were still there, in their
    // order: the IDs without a row go out of the listing.
    if (read.size() == to - from)
        return;
    QSet<qint64> present;
    for (const FileEntry &e : read)
        present.insert(e.ID);
    for (qsizetype i = to - 1; i >= from; --i) {
        if (!present.contains(m_ids.at(i)))
            m_ids.removeAt(i);
    }
}

const FileEntry *EntryGridModel::entryAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? &m_rows.at(row) : nullptr;
}

int EntryGridModel::rowForId(qint64 id)
{
    for (;;) {
        const qsizetype at = m_ids.indexOf(id);
        if (at < 0)
            return -1;
        if (at < m_rows.size())
            return int(at);
        if (!canFetchMore({}))
            return -1;
        fetchMore({});
    }
}

int EntryGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int EntryGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 9;
}

QVariant EntryGridModel::data(const QModelIndex &index, int role) const
{
    const FileEntry *e = entryAt(index.row());
    if (!e || role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case 0: return e->GroupName;
    case 1: return e->FileName;
    case 2: return e->FileLocation;
    case 3: return e->FileDescription;
    case 4: return e->FileKeyword;
    case 5: return e->FileType;
    case 6: return e->Date;
    case 7: return e->Time;
    case 8: return e->DateDisp;
    }
    return {};
}

QVariant EntryGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role != Qt::DisplayRole)
        return {};
    if (orientation == Qt::Horizontal)
        return headers().value(section);
    const FileEntry *e = entryAt(section);
    return e ? QVariant(e->ID) : QVariant();
}

bool EntryGridModel::canFetchMore(const QModelIndex &parent) const
{
    return !parent.isValid() && m_store && m_rows.size() < m_ids.size();
}

void EntryGridModel::fetchMore(const QModelIndex &parent)
{
    if (!canFetchMore(parent))
        return;
    const qsizetype from = m_rows.size();
    const qsizetype to = std::min<qsizetype>(from + BlockSize, m_ids.size());
    StoreResult r;
    QList<FileEntry> more = m_store->entriesWithIds(m_ids.mid(from, to - from), &r);
    if (!r.ok()) {
        // The catalogue cannot be read now: the listing ends where it is.
        m_ids.resize(from);
        return;
    }
    dropGone(from, to, more);
    if (more.isEmpty())
        return;
    beginInsertRows({}, int(m_rows.size()), int(m_rows.size() + more.size() - 1));
    m_rows.append(more);
    endInsertRows();
}

GroupGridModel::GroupGridModel(QObject *parent)
    : QAbstractTableModel(parent)
{
}

QStringList GroupGridModel::headers()
{
    return {QStringLiteral("Group Name"), QStringLiteral("Group Description"), QStringLiteral("Last Updated")};
}

bool GroupGridModel::load(const OrganizerStore &store, StoreResult *result)
{
    StoreResult r;
    beginResetModel();
    m_rows.clear();
    QList<GroupRow> rows = store.groups(&r);
    // The "GroupName" index order: names without regard to case, then as added.
    std::stable_sort(rows.begin(), rows.end(), [](const GroupRow &a, const GroupRow &b) {
        return QString::compare(a.GroupName, b.GroupName, Qt::CaseInsensitive) < 0;
    });
    m_rows = rows;
    endResetModel();
    if (result)
        *result = r;
    return r.ok();
}

const GroupRow *GroupGridModel::groupAt(int row) const
{
    return row >= 0 && row < m_rows.size() ? &m_rows.at(row) : nullptr;
}

int GroupGridModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_rows.size());
}

int GroupGridModel::columnCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : 3;
}

QVariant GroupGridModel::data(const QModelIndex &index, int role) const
{
    const GroupRow *g = groupAt(index.row());
    if (!g || role != Qt::DisplayRole)
        return {};
    switch (index.column()) {
    case 0: return g->GroupName;
    case 1: return g->GroupDesc;
    case 2: return g->DateDisp;
    }
    return {};
}

QVariant GroupGridModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (role == Qt::DisplayRole && orientation == Qt::Horizontal)
        return headers().value(section);
    return QAbstractTableModel::headerData(section, orientation, role);
}

} // namespace tarnby::organizer
