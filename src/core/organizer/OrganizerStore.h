#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariantList>

#include <QByteArrayView>

#include <functional>
#include <optional>

// The organizer's catalogue: the groups of files and their entries, kept in
// "FileTabl.MDB" in the program folder (SQLite) or, for a catalogue that
// several machines share, in a PostgreSQL database. The same code and the same
// SQL texts serve both.
//
// Every operation opens the catalogue, does its work in one transaction and
// closes it again; nothing stays open between calls, so a window that shows
// the catalogue never keeps a writer of another process waiting. Use a store
// from one thread at a time. Errors come back as values; nothing here
// shows a message.
//
// On SQLite every process that uses the file keeps to one lock, a flock on
// the folder that holds it: shared while a connection is open on the file,
// exclusive while a new file is put under its name (a compaction, the making
// of a missing catalogue). An operation waits for a compaction to end (ten
// seconds at most), and a compaction for the operations under way.
namespace tarnby::organizer {

inline const QString DatabaseFileName = QStringLiteral("FileTabl.MDB");
inline const QString CompactFileName = QStringLiteral("Test.MDB");
inline const QString ClearFileName = QStringLiteral("FileTabl2.MDB");

// Where the catalogue lives.
struct StoreLocation {
    enum class Engine { SQLite, PostgreSQL };
    Engine engine = Engine::SQLite;
    QString file; // SQLite: the full name of the database file
    // PostgreSQL: the server and the account.
    QString host;
    int port = 5432;
    QString database;
    QString user;
    QString password;

    // "FileTabl.MDB" in folder.
    static StoreLocation inFolder(const QString &folder);
    QString describe() const; // the file name, or user@host:port/database
};

enum class StoreStatus {
    Ok,
    Missing,     // the database file does not exist
    Damaged,     // the file is no database, or lacks the organizer's tables
    Unreachable, // the server cannot be reached or refuses the login
    Failed,      // a statement failed (busy, disk full, ...)
};

struct StoreResult {
    StoreStatus status = StoreStatus::Ok;
    QString error; // a whole sentence when not Ok
    bool ok() const { return status == StoreStatus::Ok; }
};

// One row of GroupTable, fields in table order.
struct GroupRow {
    qint64 ID = 0;
    QString GroupName;
    QString GroupDesc;
    QString Date;            // position 3
    QString Time;            // position 4
    QString DateTimeCreated; // position 5
    QString DateDisp;
};

// One row of FileTable, fields in table order.
struct FileEntry {
    qint64 ID = 0;
    QString GroupName;
    QString FileName;        // position 2
    QString FileLocation;    // position 3
    QString FileDescription;
    QString FileKeyword;
    QString FileType;        // position 6
    QString Comments;
    QString Date;            // position 8
    QString Time;            // position 9
    QString DateTimeCreated; // position 10
    QString DateDisp;
};

// The field names of the two tables in their order.
QStringList groupTableFields();
QStringList fileTableFields();

// The keys that a listing of a group's entries can be sorted by.
enum class SortKey { ID, GroupName, FileName, FileType, Date, FileKeyword };
QString sortKeyText(SortKey key); // "[ID]", "[GroupName]", ...
std::optional<SortKey> sortKeyFromName(const QString &name); // "id", "name", ... (the command line's words)

// The browser's sort list, in list order. "File Path" names no key: choosing
// it keeps the key of the previous choice in force.
struct SortChoice {
    const char *caption;
    std::optional<SortKey> key;
};
inline constexpr int SortChoiceCount = 7;
const SortChoice &sortChoice(int position);
// The key in force after choosing position, previous being the key before.
SortKey keyAfterChoice(int position, SortKey previous);

// The orders in which the maintenance windows page through a table, named as
// the table indexes they follow.
enum class TableOrder { ID, GroupName, FileName };

// The two find fields: the nearest match on file names or on keywords.
enum class FindField { FileName, FileKeyword };

struct GroupCount {
    QString GroupName;
    qint64 entries = 0;
};

class OrganizerStore
{
public:
    explicit OrganizerStore(StoreLocation location);

    const StoreLocation &location() const { return m_location; }

    // Opens the catalogue and checks that it holds both tables. A missing
    // file is reported as Missing, never created here.
    StoreResult check() const;
    // Makes the catalogue with its tables and indexes when it does not exist
    // (a missing file, or a server database without the tables); an existing
    // one is left as it is.
    StoreResult create() const;

    // ---- groups -------------------------------------------------------
    // GroupTable in table order (by ID).
    QList<GroupRow> groups(StoreResult *result = nullptr) const;
    QStringList groupNames(StoreResult *result = nullptr) const;
    // Every group with the number of entries that name it, in table order.
    QList<GroupCount> groupCounts(StoreResult *result = nullptr) const;
    std::optional<GroupRow> group(qint64 id, StoreResult *result = nullptr) const;
    // Inserts row (its ID is ignored); returns the new ID, 0 on failure.
    qint64 addGroup(const GroupRow &row, StoreResult *result = nullptr) const;
    // Writes every field but ID and DateTimeCreated of the row with row.ID.
    StoreResult updateGroup(const GroupRow &row) const;
    StoreResult deleteGroup(qint64 id) const;
    // True when FileTable holds at least one entry of the group.
    bool CheckDetail(const QString &groupName, StoreResult *result = nullptr) const;

    // ---- entries ------------------------------------------------------
    std::optional<FileEntry> entry(qint64 id, StoreResult *result = nullptr) const;
    // Inserts rows in their order in one transaction: all of them or none.
    // Returns their new IDs.
    QList<qint64> addEntries(const QList<FileEntry> &rows, StoreResult *result = nullptr) const;
    // Adds a batch: creates the group first when GroupTable is empty (its row
    // given by group), then inserts rows, all in one transaction.
    QList<qint64> addBatch(const GroupRow &group, const QList<FileEntry> &rows, StoreResult *result = nullptr) const;
    // Writes every field but ID and DateTimeCreated of the row with row.ID.
    StoreResult updateEntry(const FileEntry &row) const;
    StoreResult deleteEntry(qint64 id) const;
    // The entries of one group, in the order of key (ties in the order they
    // were added).
    QList<FileEntry> entries(const QString &groupName, SortKey key, StoreResult *result = nullptr) const;
    // The same listing in two steps, for a reader that shows it a screen at a
    // time: the IDs of the whole listing in their order, then the rows of
    // some of them, read when they are wanted. Each is a call of its own.
    QList<qint64> entryIds(const QString &groupName, SortKey key, StoreResult *result = nullptr) const;
    // The entries with ids, in the order of ids; an ID whose entry has gone
    // in the meantime is left out.
    QList<FileEntry> entriesWithIds(const QList<qint64> &ids, StoreResult *result = nullptr) const;
    // The same listing for a reader that only passes the text on (the
    // command line): each row's fields in table order as UTF-8 bytes, read
    // only when asked for and valid during the call. A sink that returns
    // false ends the listing. Cheaper than entries() by the conversions it
    // leaves out.
    class RawRow
    {
    public:
        virtual QByteArrayView field(int index) const = 0; // 0 (ID) to 11 (DateDisp)

    protected:
        ~RawRow() = default;
    };
    using RawRowSink = std::function<bool(const RawRow &row)>;
    StoreResult forEachEntry(const QString &groupName, SortKey key, const RawRowSink &sink) const;
    // The IDs of a table's rows in the order of an index (ties by ID).
    QList<qint64> groupIds(TableOrder order, StoreResult *result = nullptr) const;
    QList<qint64> entryIds(TableOrder order, StoreResult *result = nullptr) const;
    qint64 entryCount(StoreResult *result = nullptr) const;
    // The nearest match: the first entry, in the order of the field's index,
    // whose field is equal to text or sorts after it, letters compared
    // without regard to case. Nothing when every entry sorts before text.
    std::optional<FileEntry> findNearest(FindField field, const QString &text, StoreResult *result = nullptr) const;
    // The first entry, in file-name order, whose name equals fileName.
    std::optional<FileEntry> findFileName(const QString &fileName, StoreResult *result = nullptr) const;

    // ---- the whole catalogue -------------------------------------------
    // Checks the catalogue's integrity and rebuilds the indexes of both
    // tables. A missing file is made anew with its tables.
    StoreResult repair() const;
    // Writes a compacted copy beside the catalogue under sideFileName and
    // puts it in its place with one atomic rename. On a server the database
    // is vacuumed instead.
    StoreResult compact(const QString &sideFileName = CompactFileName) const;
    // Deletes every entry of every group (the groups stay), then compacts
    // through "FileTabl2.MDB".
    StoreResult clear() const;

private:
    // Makes the missing catalogue file; the caller holds the catalogue's
    // lock exclusively.
    StoreResult makeFile() const;
    // The first row of an entry query, or nothing.
    std::optional<FileEntry> firstEntry(const QString &sql, const QVariantList &values, StoreResult *result) const;

    StoreLocation m_location;
};

} // namespace tarnby::organizer
