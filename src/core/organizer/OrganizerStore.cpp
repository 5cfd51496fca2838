#include "core/organizer/OrganizerStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QSqlDatabase>
#include <QSqlDriver>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>
#include <QThread>

#include <array>
#include <atomic>
#include <cerrno>
#include <limits>
#include <optional>

#include <sqlite3.h>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <unistd.h>

// Every SQL text below binds its values as parameters. The catalogue once put a
// group name between single quotes straight into its SQL, so that a name such
// as "Pat's Photos" ended the listing of its group with an error; binding the
// name keeps it a value, whatever it holds. The sort keys are never typed by
// anyone: they come from the fixed list of SortKey, and only they are put into
// the text.
namespace tarnby::organizer {

namespace {

using Engine = StoreLocation::Engine;

struct Column {
    const char *name;
    const char *sqliteType; // the server's type is the same for every text field
};

// The field order is part of the format: some windows write fields by their
// position. GroupTable: Date 3, Time 4, DateTimeCreated 5. FileTable:
// FileName 2, FileLocation 3, FileType 6, Date 8, Time 9, DateTimeCreated 10.
// Text fields are declared as 255 characters; SQLite keeps a longer value
// whole, which a deep Linux folder needs.
const Column GroupColumns[] = {
    {"ID", nullptr},
    {"GroupName", "VARCHAR(255) COLLATE NOCASE"},
    {"GroupDesc", "VARCHAR(255) COLLATE NOCASE"},
    {"Date", "VARCHAR(8) COLLATE NOCASE"},
    {"Time", "VARCHAR(6) COLLATE NOCASE"},
    {"DateTimeCreated", "VARCHAR(14) COLLATE NOCASE"},
    {"DateDisp", "VARCHAR(255) COLLATE NOCASE"},
};

const Column FileColumns[] = {
    {"ID", nullptr},
    {"GroupName", "VARCHAR(255) COLLATE NOCASE"},
    {"FileName", "VARCHAR(255) COLLATE NOCASE"},
    {"FileLocation", "VARCHAR(255) COLLATE NOCASE"},
    {"FileDescription", "VARCHAR(255) COLLATE NOCASE"},
    {"FileKeyword", "VARCHAR(255) COLLATE NOCASE"},
    {"FileType", "VARCHAR(255) COLLATE NOCASE"},
    {"Comments", "TEXT COLLATE NOCASE"},
    {"Date", "VARCHAR(8) COLLATE NOCASE"},
    {"Time", "VARCHAR(255) COLLATE NOCASE"},
    {"DateTimeCreated", "VARCHAR(14) COLLATE NOCASE"},
    {"DateDisp", "VARCHAR(255) COLLATE NOCASE"},
};

// Index names are one name space per database in both engines, so the group
// index of FileTable cannot share the name "GroupName" with GroupTable's.
const char *const IndexTexts[] = {
    "CREATE INDEX [GroupName] ON [GroupTable] ([GroupName])",
    "CREATE INDEX [FileName] ON [FileTable] ([FileName])",
    "CREATE INDEX [FileKeyword] ON [FileTable] ([FileKeyword])",
    "CREATE INDEX [FileGroupName] ON [FileTable] ([GroupName])",
};

template<size_t N>
QString createTableText(const char *table, const Column (&columns)[N], Engine engine)
{
    QStringList parts;
    for (const Column &c : columns) {
        QString type;
        if (!c.sqliteType)
            type = engine == Engine::SQLite ? QStringLiteral("INTEGER PRIMARY KEY AUTOINCREMENT")
                                            : QStringLiteral("SERIAL PRIMARY KEY");
        else
            // Letters compare without regard to case, as the catalogue always
            // has: a find for "m" lands on "Mail.TXT". On the server citext
            // under the "C" collation compares exactly as NOCASE does.
            type = engine == Engine::SQLite ? QLatin1String(c.sqliteType) : QStringLiteral("citext COLLATE \"C\"");
        parts << QStringLiteral("[%1] %2").arg(QLatin1String(c.name), type);
    }
    return QStringLiteral("CREATE TABLE [%1] (%2)").arg(QLatin1String(table), parts.join(QStringLiteral(", ")));
}

template<size_t N>
QStringList columnNames(const Column (&columns)[N])
{
    QStringList names;
    for (const Column &c : columns)
        names << QLatin1String(c.name);
    return names;
}

const char *const SortKeyTexts[] = {"[ID]", "[GroupName]", "[FileName]", "[FileType]", "[Date]", "[FileKeyword]"};

const SortChoice SortChoices[SortChoiceCount] = {
    {"Date Added to List", SortKey::ID},
    {"Group Name", SortKey::GroupName},
    {"File Name", SortKey::FileName},
    {"File Type", SortKey::FileType},
    {"File Last Updated", SortKey::Date},
    {"File Search Word", SortKey::FileKeyword},
    {"File Path", std::nullopt},
};

// How long a writer waits for a compaction by another process to end.
constexpr qint64 CompactionWaitMs = 10000;

// The device and inode of the file under path, or nothing.
std::optional<std::pair<dev_t, ino_t>> fileIdentity(const QString &path)
{
    struct stat st {};
    if (::stat(QFile::encodeName(path).constData(), &st) != 0)
        return std::nullopt;
    return std::pair(st.st_dev, st.st_ino);
}

bool processAlive(qint64 pid)
{
    if (pid <= 0 || pid > std::numeric_limits<pid_t>::max())
        return false;
    return ::kill(pid_t(pid), 0) == 0 || errno == EPERM;
}

// The lock of a catalogue file, shared by every process that uses it: a
// flock on the folder that holds the file. The folder, not the file, because
// a compaction puts a new file under the catalogue's name, and a lock on the
// old one would lock nothing that a process opening the name meets.
//
// Every connection to the catalogue holds it shared from before it opens the
// file until it has closed it again; whoever puts a new file under the name
// (a compaction, the making of a missing catalogue) holds it exclusively
// from before it looks at the old file until the rename is done. So no
// connection is ever open on a file that has left the name. That matters
// beyond lost writes: SQLite names a file's rollback journal after the file's
// name, but finds out whether a journal is still being written from the locks
// on the file it has open. A connection left on the old file would take the
// live journal of a writer on the new file for the leftover of a crash, play
// it into the old file and delete it. The kernel lets go of the lock when
// the process ends, however it ends.
class CatalogueLock
{
public:
    enum class Mode { Shared, Exclusive };
    enum class Outcome {
        Held,
        Busy,        // still held the other way when the wait was over
        Unavailable, // the folder cannot be opened or its file system has no locks
    };

    CatalogueLock() = default;
    CatalogueLock(const CatalogueLock &) = delete;
    CatalogueLock &operator=(const CatalogueLock &) = delete;
    ~CatalogueLock() { release(); }

    // Waits at most waitMs for the lock on the folder of file.
    Outcome acquire(const QString &file, Mode mode, qint64 waitMs)
    {
        release();
        const QByteArray folder = QFile::encodeName(QFileInfo(file).absolutePath());
        m_fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (m_fd < 0)
            return Outcome::Unavailable;
        const int operation = (mode == Mode::Shared ? LOCK_SH : LOCK_EX) | LOCK_NB;
        QElapsedTimer waited;
        waited.start();
        for (;;) {
            if (::flock(m_fd, operation) == 0)
                return Outcome::Held;
            const int error = errno;
            if (error == EINTR)
                continue;
            if (error != EWOULDBLOCK || waited.elapsed() > waitMs) {
                release();
                return error == EWOULDBLOCK ? Outcome::Busy : Outcome::Unavailable;
            }
            QThread::msleep(5);
        }
    }

    void release()
    {
        if (m_fd >= 0)
            ::close(m_fd); // lets go of the lock with the descriptor
        m_fd = -1;
    }

private:
    int m_fd = -1;
};

// Whether a connection takes the catalogue's lock itself: every connection
// to the catalogue does, but one to a side file, and one opened by whoever
// holds the lock exclusively already, does not.
enum class Locking { Shared, None };

// The SQLite connection under a Qt connection to a file, or null.
sqlite3 *sqliteHandle(const QSqlDatabase &db)
{
    const QVariant handle = db.driver()->handle();
    return handle.isValid() && qstrcmp(handle.typeName(), "sqlite3*") == 0
        ? *static_cast<sqlite3 *const *>(handle.constData())
        : nullptr;
}

// One connection for one operation: opened by the constructor, closed and
// removed by the destructor.
class Session
{
public:
    Session(const StoreLocation &location, bool mayCreate, Locking locking = Locking::Shared)
        : m_location(location)
        , m_name(QStringLiteral("tarnby-organizer-%1").arg(s_next.fetch_add(1)))
    {
        if (location.engine == Engine::SQLite) {
            // Where the file system has no locks the catalogue is used
            // without; the compaction's mark still keeps writers off.
            if (locking == Locking::Shared
                && m_lock.acquire(location.file, CatalogueLock::Mode::Shared, CompactionWaitMs)
                       == CatalogueLock::Outcome::Busy) {
                fail(StoreStatus::Failed, QStringLiteral("The organizer database %1 is being compacted; try again "
                                                         "in a moment.")
                                              .arg(location.file));
                return;
            }
            if (!mayCreate && !QFileInfo::exists(location.file)) {
                fail(StoreStatus::Missing,
                     QStringLiteral("The organizer database %1 does not exist.").arg(location.file));
                return;
            }
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), m_name);
            db.setDatabaseName(location.file);
            db.setConnectOptions(QStringLiteral("QSQLITE_BUSY_TIMEOUT=10000"));
            m_fileId = fileIdentity(location.file);
            if (!db.open()) {
                fail(StoreStatus::Failed, QStringLiteral("The organizer database %1 cannot be opened: %2")
                                              .arg(location.file, db.lastError().text()));
                return;
            }
            // A file that this connection has just made is its own.
            if (!m_fileId && mayCreate)
                m_fileId = fileIdentity(location.file);
            // A large group is sorted (the listings by name, type, date...)
            // on every core: SQLite's sorter merges on worker threads when
            // the connection allows them.
            if (sqlite3 *handle = sqliteHandle(db))
                sqlite3_limit(handle, SQLITE_LIMIT_WORKER_THREADS, QThread::idealThreadCount());
        } else {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QPSQL"), m_name);
            db.setHostName(location.host);
            db.setPort(location.port);
            db.setDatabaseName(location.database);
            db.setUserName(location.user);
            db.setPassword(location.password);
            db.setConnectOptions(QStringLiteral("connect_timeout=10"));
            if (!db.open()) {
                fail(StoreStatus::Unreachable, QStringLiteral("The organizer database %1 cannot be reached: %2")
                                                   .arg(location.describe(), db.lastError().text().trimmed()));
                return;
            }
        }
        m_open = true;
    }

    ~Session()
    {
        if (m_inTransaction)
            run(QStringLiteral("ROLLBACK"));
        if (!m_name.isEmpty() && QSqlDatabase::contains(m_name)) {
            {
                QSqlDatabase db = QSqlDatabase::database(m_name, false);
                db.close();
            }
            QSqlDatabase::removeDatabase(m_name);
        }
        // The file is closed: now the lock can go.
        m_lock.release();
    }

    Session(const Session &) = delete;
    Session &operator=(const Session &) = delete;

    bool isOpen() const { return m_open && m_result.ok(); }
    const StoreResult &result() const { return m_result; }
    Engine engine() const { return m_location.engine; }
    QSqlDatabase db() const { return QSqlDatabase::database(m_name, false); }

    // The SQL text for this engine: the bracketed names of the catalogue's
    // SQL become quoted names on the server.
    QString sql(const QString &text) const
    {
        if (m_location.engine == Engine::SQLite)
            return text;
        QString t = text;
        t.replace(QLatin1Char('['), QLatin1Char('"')).replace(QLatin1Char(']'), QLatin1Char('"'));
        return t;
    }

    bool tablesPresent()
    {
        const QStringList tables = db().tables();
        if (tables.isEmpty() && db().lastError().isValid())
            return fromError(db().lastError(), QStringLiteral("read the list of tables")), false;
        return tables.contains(QStringLiteral("GroupTable")) && tables.contains(QStringLiteral("FileTable"));
    }

    // Checks that the catalogue can be read and holds both tables.
    bool checkTables()
    {
        if (!isOpen())
            return false;
        if (m_location.engine == Engine::SQLite) {
            // Any read of the schema tells a file that is no database.
            QSqlQuery probe(db());
            if (!probe.exec(QStringLiteral("SELECT count(*) FROM sqlite_master")))
                return fromError(probe.lastError(), QStringLiteral("read it")), false;
        }
        if (!tablesPresent()) {
            if (m_result.ok())
                fail(StoreStatus::Damaged, QStringLiteral("The organizer database %1 is damaged: it does not "
                                                          "hold the tables GroupTable and FileTable.")
                                               .arg(m_location.describe()));
            return false;
        }
        return true;
    }

    bool begin(bool write)
    {
        if (write && m_location.engine == Engine::SQLite)
            return beginWrite();
        if (!run(QStringLiteral("BEGIN")))
            return false;
        m_inTransaction = true;
        return true;
    }

    // A write transaction on the file. A compaction marks the catalogue
    // (with its process ID in the header's user version) before it copies it
    // and puts the copy in its place by a rename; a write that went into the
    // file after the copy, or into the old file after the rename, would be
    // lost. The catalogue's lock already keeps every connection away while a
    // compaction runs; where the file system has no locks, a writer that
    // finds the mark of a running compaction, or finds that the file it
    // opened is no longer the one under the name, lets go and opens the
    // catalogue again until the compaction is over (at most as long as it
    // would wait for a lock); then it gives up and says so. The mark of a
    // compaction whose process has died is cleared.
    bool beginWrite()
    {
        QElapsedTimer waited;
        waited.start();
        for (;;) {
            if (!run(QStringLiteral("BEGIN IMMEDIATE")))
                return false;
            m_inTransaction = true;
            QSqlQuery q(db());
            if (!q.exec(QStringLiteral("PRAGMA user_version")) || !q.next())
                return fromError(q.lastError(), QStringLiteral("read its header")), false;
            const qint64 mark = q.value(0).toLongLong();
            q.finish();
            const bool sameFile = m_fileId && fileIdentity(m_location.file) == m_fileId;
            if (sameFile && (mark == 0 || mark == ::getpid()))
                return true;
            if (sameFile && !processAlive(mark))
                return run(QStringLiteral("PRAGMA user_version = 0"));
            run(QStringLiteral("ROLLBACK"));
            m_inTransaction = false;
            if (waited.elapsed() > CompactionWaitMs) {
                fail(StoreStatus::Failed, QStringLiteral("The organizer database %1 is being compacted; the change "
                                                         "was not made. Try again in a moment.")
                                              .arg(m_location.file));
                return false;
            }
            QThread::msleep(20);
            if (!reopen())
                return false;
        }
    }

    // Opens the file under the catalogue's name again.
    bool reopen()
    {
        QSqlDatabase db = QSqlDatabase::database(m_name, false);
        db.close();
        if (!QFileInfo::exists(m_location.file)) {
            fail(StoreStatus::Missing, QStringLiteral("The organizer database %1 does not exist.").arg(m_location.file));
            return false;
        }
        m_fileId = fileIdentity(m_location.file);
        if (!db.open()) {
            fail(StoreStatus::Failed, QStringLiteral("The organizer database %1 cannot be opened: %2")
                                          .arg(m_location.file, db.lastError().text()));
            return false;
        }
        return true;
    }

    bool commit()
    {
        m_inTransaction = false;
        return run(QStringLiteral("COMMIT"));
    }

    bool run(const QString &text)
    {
        QSqlQuery q(db());
        if (!q.exec(sql(text)))
            return fromError(q.lastError(), text), false;
        return true;
    }

    // Prepares text and binds values in their order.
    bool prepare(QSqlQuery &q, const QString &text, const QVariantList &values = {})
    {
        q = QSqlQuery(db());
        q.setForwardOnly(true);
        if (!q.prepare(sql(text)))
            return fromError(q.lastError(), text), false;
        for (int i = 0; i < values.size(); ++i)
            q.bindValue(i, values.at(i));
        return true;
    }

    bool exec(QSqlQuery &q, const QString &what)
    {
        if (!q.exec())
            return fromError(q.lastError(), what), false;
        return true;
    }

    bool fromError(const QSqlError &error, const QString &what)
    {
        StoreStatus status = StoreStatus::Failed;
        const QString code = error.nativeErrorCode();
        // SQLite's "file is not a database" and "database disk image is
        // malformed" name a damaged file.
        if (m_location.engine == Engine::SQLite && (code == QLatin1String("26") || code == QLatin1String("11")))
            status = StoreStatus::Damaged;
        if (m_location.engine == Engine::PostgreSQL && error.type() == QSqlError::ConnectionError)
            status = StoreStatus::Unreachable;
        QString text = error.text().trimmed();
        if (text.isEmpty())
            text = QStringLiteral("unknown error");
        fail(status, status == StoreStatus::Damaged
                         ? QStringLiteral("The organizer database %1 is damaged: %2").arg(m_location.describe(), text)
                         : QStringLiteral("The organizer database %1 could not %2: %3")
                               .arg(m_location.describe(), what.left(80), text));
        return false;
    }

    void fail(StoreStatus status, const QString &error)
    {
        if (!m_result.ok())
            return; // the first fault is the one worth telling
        m_result.status = status;
        m_result.error = error;
    }

private:
    static inline std::atomic<int> s_next{0};
    StoreLocation m_location;
    QString m_name;
    bool m_open = false;
    bool m_inTransaction = false;
    std::optional<std::pair<dev_t, ino_t>> m_fileId; // the file as opened (SQLite)
    CatalogueLock m_lock;
    StoreResult m_result;
};

void setResult(StoreResult *out, const StoreResult &result)
{
    if (out)
        *out = result;
}

GroupRow groupFromQuery(const QSqlQuery &q)
{
    GroupRow g;
    g.ID = q.value(0).toLongLong();
    g.GroupName = q.value(1).toString();
    g.GroupDesc = q.value(2).toString();
    g.Date = q.value(3).toString();
    g.Time = q.value(4).toString();
    g.DateTimeCreated = q.value(5).toString();
    g.DateDisp = q.value(6).toString();
    return g;
}

FileEntry entryFromQuery(const QSqlQuery &q)
{
    FileEntry e;
    e.ID = q.value(0).toLongLong();
    e.GroupName = q.value(1).toString();
    e.FileName = q.value(2).toString();
    e.FileLocation = q.value(3).toString();
    e.FileDescription = q.value(4).toString();
    e.FileKeyword = q.value(5).toString();
    e.FileType = q.value(6).toString();
    e.Comments = q.value(7).toString();
    e.Date = q.value(8).toString();
    e.Time = q.value(9).toString();
    e.DateTimeCreated = q.value(10).toString();
    e.DateDisp = q.value(11).toString();
    return e;
}

// A null QString binds as SQL NULL; an empty field is stored as empty text.
QVariant text(const QString &value)
{
    return value.isNull() ? QVariant(QString(QLatin1String(""))) : QVariant(value);
}

const QString InsertGroupText = QStringLiteral(
    "INSERT INTO [GroupTable] ([GroupName], [GroupDesc], [Date], [Time], [DateTimeCreated], [DateDisp]) "
    "VALUES (?, ?, ?, ?, ?, ?)");
const QString InsertEntryText = QStringLiteral(
    "INSERT INTO [FileTable] ([GroupName], [FileName], [FileLocation], [FileDescription], [FileKeyword], "
    "[FileType], [Comments], [Date], [Time], [DateTimeCreated], [DateDisp]) VALUES (?, ?, ?, ?, ?, ?, ?, ?, ?, ?, ?)");

QVariantList groupValues(const GroupRow &g)
{
    return {text(g.GroupName), text(g.GroupDesc), text(g.Date), text(g.Time), text(g.DateTimeCreated), text(g.DateDisp)};
}

qint64 insertedId(Engine engine, QSqlQuery &q)
{
    if (engine == Engine::SQLite)
        return q.lastInsertId().toLongLong();
    // RETURNING gives the server's counter.
    return q.next() ? q.value(0).toLongLong() : 0;
}

QString returningId(Engine engine)
{
    return engine == Engine::PostgreSQL ? QStringLiteral(" RETURNING [ID]") : QString();
}

// The entries of a group in the order of key. The ties of a key other than
// [ID] are broken by [ID], so that both engines list equal keys in the order
// the entries were added.
QString entriesText(SortKey key)
{
    QString order = sortKeyText(key);
    if (key != SortKey::ID)
        order += QStringLiteral(", [ID]");
    return QStringLiteral("SELECT * FROM [FileTable] WHERE [GroupName] = ? ORDER BY ") + order;
}

bool insertEntries(Session &s, const QList<FileEntry> &rows, QList<qint64> *ids)
{
    QSqlQuery q;
    if (!s.prepare(q, InsertEntryText + returningId(s.engine())))
        return false;
    for (const FileEntry &e : rows) {
        const QVariant values[] = {text(e.GroupName), text(e.FileName), text(e.FileLocation), text(e.FileDescription),
                                   text(e.FileKeyword), text(e.FileType), text(e.Comments), text(e.Date),
                                   text(e.Time), text(e.DateTimeCreated), text(e.DateDisp)};
        for (int i = 0; i < int(std::size(values)); ++i)
            q.bindValue(i, values[i]);
        if (!s.exec(q, QStringLiteral("add the entry of %1").arg(e.FileName)))
            return false;
        ids->append(insertedId(s.engine(), q));
    }
    return true;
}

// Flushes a written file to the disk, so that a rename that follows cannot
// reach the disk before the file's content does.
bool syncFile(const QString &path)
{
    const int fd = ::open(QFile::encodeName(path).constData(), O_RDONLY | O_CLOEXEC);
    if (fd < 0)
        return false;
    const bool ok = ::fsync(fd) == 0;
    ::close(fd);
    return ok;
}

void syncFolder(const QString &folder)
{
    const int fd = ::open(QFile::encodeName(folder).constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd >= 0) {
        ::fsync(fd);
        ::close(fd);
    }
}

// Removes a side file and whatever journal SQLite left of it, so that a stale
// journal can never be played onto a new file of the same name.
bool removeWithJournals(const QString &path)
{
    bool ok = true;
    for (const QString &suffix : {QString(), QStringLiteral("-journal"), QStringLiteral("-wal"), QStringLiteral("-shm")}) {
        const QString name = path + suffix;
        if (QFileInfo::exists(name) && !QFile::remove(name))
            ok = false;
    }
    return ok;
}

// One operation of the catalogue: opens it, runs text with values in one
// transaction, hands the query to take (which reads the rows) and closes it
// again. The result says how it went.
template<class Take>
StoreResult runOne(const StoreLocation &location, bool write, const QString &text, const QVariantList &values,
                   const QString &what, Take take)
{
    Session s(location, false);
    QSqlQuery q;
    if (s.checkTables() && s.begin(write) && s.prepare(q, text, values) && s.exec(q, what)) {
        take(q);
        q.finish();
        s.commit();
    }
    return s.result();
}

StoreResult runOne(const StoreLocation &location, bool write, const QString &text, const QVariantList &values,
                   const QString &what)
{
    return runOne(location, write, text, values, what, [](QSqlQuery &) {});
}

// A listing read a block at a time on one connection and in one transaction
// (which on SQLite holds a read lock until the cursor goes).
class SqlEntryCursor
{
public:
    SqlEntryCursor(const StoreLocation &location, const QString &groupName, SortKey key)
        : m_session(location, false)
    {
        if (!m_session.checkTables() || !m_session.begin(false)
            || !m_session.prepare(m_query, entriesText(key), {groupName})
            || !m_session.exec(m_query, QStringLiteral("list the group %1").arg(groupName)))
            m_atEnd = true;
    }

    bool fetch(int count, QList<FileEntry> *rows)
    {
        for (int i = 0; i < count && !m_atEnd; ++i) {
            if (!m_query.next()) {
                m_atEnd = true;
                if (m_query.lastError().isValid())
                    return m_session.fromError(m_query.lastError(), QStringLiteral("read the entries")), false;
                break;
            }
            rows->append(entryFromQuery(m_query));
        }
        return m_session.result().ok();
    }

    bool atEnd() const { return m_atEnd; }
    const StoreResult &result() const { return m_session.result(); }

private:
    Session m_session;
    QSqlQuery m_query;
    bool m_atEnd = false;
};

} // namespace

StoreLocation StoreLocation::inFolder(const QString &folder)
{
    StoreLocation l;
    l.file = QDir(folder).filePath(DatabaseFileName);
    return l;
}

QString StoreLocation::describe() const
{
    if (engine == Engine::SQLite)
        return file;
    return QStringLiteral("%1@%2:%3/%4").arg(user, host).arg(port).arg(database);
}

QStringList groupTableFields()
{
    return columnNames(GroupColumns);
}

QStringList fileTableFields()
{
    return columnNames(FileColumns);
}

QString sortKeyText(SortKey key)
{
    return QLatin1String(SortKeyTexts[int(key)]);
}

std::optional<SortKey> sortKeyFromName(const QString &name)
{
    static const std::pair<const char *, SortKey> names[] = {
        {"id", SortKey::ID},     {"group", SortKey::GroupName}, {"name", SortKey::FileName},
        {"type", SortKey::FileType}, {"date", SortKey::Date},   {"keyword", SortKey::FileKeyword},
    };
    for (const auto &[n, key] : names) {
        if (name == QLatin1String(n))
            return key;
    }
    return std::nullopt;
}

const SortChoice &sortChoice(int position)
{
    return SortChoices[std::clamp(position, 0, SortChoiceCount - 1)];
}

SortKey keyAfterChoice(int position, SortKey previous)
{
    if (position < 0 || position >= SortChoiceCount)
        return previous;
    return SortChoices[position].key.value_or(previous);
}

OrganizerStore::OrganizerStore(StoreLocation location)
    : m_location(std::move(location))
{
}

StoreResult OrganizerStore::check() const
{
    Session s(m_location, false);
    s.checkTables();
    return s.result();
}

StoreResult OrganizerStore::makeFile() const
{
    // A new file is written beside its final name and renamed into place, so
    // that no half-made catalogue is ever found under it.
    const QString temporary = m_location.file + QStringLiteral(".new");
    removeWithJournals(temporary);
    {
        StoreLocation side = m_location;
        side.file = temporary;
        Session s(side, true, Locking::None);
        if (!s.isOpen())
            return s.result();
        if (!s.begin(true))
            return s.result();
        for (const QString &t : {createTableText("GroupTable", GroupColumns, Engine::SQLite),
                                 createTableText("FileTable", FileColumns, Engine::SQLite)}) {
            if (!s.run(t))
                return s.result();
        }
        for (const char *index : IndexTexts) {
            if (!s.run(QLatin1String(index)))
                return s.result();
        }
        if (!s.commit())
            return s.result();
    }
    syncFile(temporary);
    if (::rename(QFile::encodeName(temporary).constData(), QFile::encodeName(m_location.file).constData()) != 0) {
        removeWithJournals(temporary);
        return {StoreStatus::Failed, QStringLiteral("The organizer database %1 could not be made.").arg(m_location.file)};
    }
    syncFolder(QFileInfo(m_location.file).absolutePath());
    return {};
}

StoreResult OrganizerStore::create() const
{
    if (m_location.engine == Engine::SQLite && !QFileInfo::exists(m_location.file)) {
        // Two processes that both find the file missing make it one after
        // the other: the second finds the first's file and leaves it.
        CatalogueLock lock;
        if (lock.acquire(m_location.file, CatalogueLock::Mode::Exclusive, CompactionWaitMs) == CatalogueLock::Outcome::Busy)
            return {StoreStatus::Failed, QStringLiteral("The organizer database %1 is in use and could not be made; "
                                                        "try again in a moment.")
                                             .arg(m_location.file)};
        if (!QFileInfo::exists(m_location.file))
            return makeFile();
    }
    Session s(m_location, false);
    if (m_location.engine == Engine::SQLite) {
        s.checkTables();
        return s.result();
    }
    if (!s.isOpen() || s.tablesPresent() || !s.result().ok())
        return s.result();
    // A server database without the tables gets them.
    if (!s.run(QStringLiteral("CREATE EXTENSION IF NOT EXISTS citext")) || !s.begin(true))
        return s.result();
    for (const QString &t : {createTableText("GroupTable", GroupColumns, Engine::PostgreSQL),
                             createTableText("FileTable", FileColumns, Engine::PostgreSQL)}) {
        if (!s.run(t))
            return s.result();
    }
    for (const char *index : IndexTexts) {
        if (!s.run(QLatin1String(index)))
            return s.result();
    }
    s.commit();
    return s.result();
}

QList<GroupRow> OrganizerStore::groups(StoreResult *result) const
{
    QList<GroupRow> rows;
    const StoreResult r = runOne(m_location, false, QStringLiteral("SELECT * FROM [GroupTable] ORDER BY [ID]"), {},
                                 QStringLiteral("list the groups"), [&](QSqlQuery &q) {
                                     while (q.next())
                                         rows << groupFromQuery(q);
                                 });
    setResult(result, r);
    return r.ok() ? rows : QList<GroupRow>();
}

QStringList OrganizerStore::groupNames(StoreResult *result) const
{
    QStringList names;
    for (const GroupRow &g : groups(result))
        names << g.GroupName;
    return names;
}

QList<GroupCount> OrganizerStore::groupCounts(StoreResult *result) const
{
    QList<GroupCount> rows;
    const StoreResult r = runOne(m_location, false,
                                 QStringLiteral("SELECT [GroupName], (SELECT COUNT(*) FROM [FileTable] "
                                                "WHERE [FileTable].[GroupName] = [GroupTable].[GroupName]) "
                                                "FROM [GroupTable] ORDER BY [ID]"),
                                 {}, QStringLiteral("count the entries"), [&](QSqlQuery &q) {
                                     while (q.next())
                                         rows << GroupCount{q.value(0).toString(), q.value(1).toLongLong()};
                                 });
    setResult(result, r);
    return r.ok() ? rows : QList<GroupCount>();
}

std::optional<GroupRow> OrganizerStore::group(qint64 id, StoreResult *result) const
{
    std::optional<GroupRow> row;
    setResult(result, runOne(m_location, false, QStringLiteral("SELECT * FROM [GroupTable] WHERE [ID] = ?"), {id},
                             QStringLiteral("read a group"), [&](QSqlQuery &q) {
                                 if (q.next())
                                     row = groupFromQuery(q);
                             }));
    return row;
}

qint64 OrganizerStore::addGroup(const GroupRow &row, StoreResult *result) const
{
    qint64 id = 0;
    const StoreResult r = runOne(m_location, true, InsertGroupText + returningId(m_location.engine), groupValues(row),
                                 QStringLiteral("add the group %1").arg(row.GroupName),
                                 [&](QSqlQuery &q) { id = insertedId(m_location.engine, q); });
    setResult(result, r);
    return r.ok() ? id : 0;
}

StoreResult OrganizerStore::updateGroup(const GroupRow &row) const
{
    return runOne(m_location, true,
                  QStringLiteral("UPDATE [GroupTable] SET [GroupName] = ?, [GroupDesc] = ?, [Date] = ?, [Time] = ?, "
                                 "[DateDisp] = ? WHERE [ID] = ?"),
                  {text(row.GroupName), text(row.GroupDesc), text(row.Date), text(row.Time), text(row.DateDisp), row.ID},
                  QStringLiteral("save the group %1").arg(row.GroupName));
}

StoreResult OrganizerStore::deleteGroup(qint64 id) const
{
    return runOne(m_location, true, QStringLiteral("DELETE FROM [GroupTable] WHERE [ID] = ?"), {id},
                  QStringLiteral("delete a group"));
}

bool OrganizerStore::CheckDetail(const QString &groupName, StoreResult *result) const
{
    bool found = false;
    setResult(result,
              runOne(m_location, false, QStringLiteral("SELECT * FROM [FileTable] WHERE [GroupName] = ? ORDER BY [GroupName]"),
                     {groupName}, QStringLiteral("look for the entries of %1").arg(groupName),
                     [&](QSqlQuery &q) { found = q.next(); }));
    return found;
}

std::optional<FileEntry> OrganizerStore::entry(qint64 id, StoreResult *result) const
{
    return firstEntry(QStringLiteral("SELECT * FROM [FileTable] WHERE [ID] = ?"), {id}, result);
}

QList<qint64> OrganizerStore::addEntries(const QList<FileEntry> &rows, StoreResult *result) const
{
    QList<qint64> ids;
    Session s(m_location, false);
    if (s.checkTables() && s.begin(true) && insertEntries(s, rows, &ids))
        s.commit();
    setResult(result, s.result());
    return s.result().ok() ? ids : QList<qint64>();
}

QList<qint64> OrganizerStore::addBatch(const GroupRow &group, const QList<FileEntry> &rows, StoreResult *result) const
{
    QList<qint64> ids;
    Session s(m_location, false);
    QSqlQuery q;
    if (s.checkTables() && s.begin(true)
        && s.prepare(q, QStringLiteral("SELECT COUNT(*) FROM [GroupTable]")) && s.exec(q, QStringLiteral("count the groups"))) {
        const bool noGroups = q.next() && q.value(0).toLongLong() == 0;
        q.finish();
        bool ok = true;
        if (noGroups) {
            QSqlQuery insert;
            ok = s.prepare(insert, InsertGroupText, groupValues(group))
                && s.exec(insert, QStringLiteral("add the group %1").arg(group.GroupName));
        }
        if (ok && insertEntries(s, rows, &ids))
            s.commit();
    }
    setResult(result, s.result());
    return s.result().ok() ? ids : QList<qint64>();
}

StoreResult OrganizerStore::updateEntry(const FileEntry &e) const
{
    return runOne(m_location, true,
                  QStringLiteral("UPDATE [FileTable] SET [GroupName] = ?, [FileName] = ?, [FileLocation] = ?, "
                                 "[FileDescription] = ?, [FileKeyword] = ?, [FileType] = ?, [Comments] = ?, [Date] = ?, "
                                 "[Time] = ?, [DateDisp] = ? WHERE [ID] = ?"),
                  {text(e.GroupName), text(e.FileName), text(e.FileLocation), text(e.FileDescription), text(e.FileKeyword),
                   text(e.FileType), text(e.Comments), text(e.Date), text(e.Time), text(e.DateDisp), e.ID},
                  QStringLiteral("save the entry of %1").arg(e.FileName));
}

StoreResult OrganizerStore::deleteEntry(qint64 id) const
{
    return runOne(m_location, true, QStringLiteral("DELETE FROM [FileTable] WHERE [ID] = ?"), {id},
                  QStringLiteral("delete an entry"));
}

QList<FileEntry> OrganizerStore::entries(const QString &groupName, SortKey key, StoreResult *result) const
{
    SqlEntryCursor cursor(m_location, groupName, key);
    QList<FileEntry> rows;
    while (!cursor.atEnd() && cursor.fetch(4096, &rows)) {
    }
    setResult(result, cursor.result());
    return cursor.result().ok() ? rows : QList<FileEntry>();
}

QList<qint64> OrganizerStore::entryIds(const QString &groupName, SortKey key, StoreResult *result) const
{
    QString text = entriesText(key);
    text.replace(QStringLiteral("SELECT *"), QStringLiteral("SELECT [ID]"));
    QList<qint64> ids;
    const StoreResult r = runOne(m_location, false, text, {groupName}, QStringLiteral("list the group %1").arg(groupName),
                                 [&](QSqlQuery &q) {
                                     while (q.next())
                                         ids << q.value(0).toLongLong();
                                 });
    setResult(result, r);
    return r.ok() ? ids : QList<qint64>();
}

QList<FileEntry> OrganizerStore::entriesWithIds(const QList<qint64> &ids, StoreResult *result) const
{
    setResult(result, {});
    if (ids.isEmpty())
        return {};
    QHash<qint64, FileEntry> byId;
    QVariantList values;
    for (qint64 id : ids)
        values << id;
    QString marks = QStringLiteral("?");
    marks += QStringLiteral(", ?").repeated(ids.size() - 1);
    const StoreResult r = runOne(m_location, false, QStringLiteral("SELECT * FROM [FileTable] WHERE [ID] IN (%1)").arg(marks),
                                 values, QStringLiteral("read the entries"), [&](QSqlQuery &q) {
                                     while (q.next()) {
                                         FileEntry e = entryFromQuery(q);
                                         byId.insert(e.ID, std::move(e));
                                     }
                                 });
    setResult(result, r);
    QList<FileEntry> rows;
    if (!r.ok())
        return rows;
    rows.reserve(byId.size());
    for (qint64 id : ids) {
        const auto found = byId.constFind(id);
        if (found != byId.cend())
            rows << *found;
    }
    return rows;
}

namespace {

// The current row of a forward-only query (the server's listing, streamed
// by the driver a row at a time): a field is converted only when the reader
// asks for it.
class QueryRow final : public OrganizerStore::RawRow
{
public:
    explicit QueryRow(const QSqlQuery &query)
        : m_query(query)
    {
    }
    QByteArrayView field(int index) const override
    {
        QByteArray &text = m_fields[size_t(index)];
        text = m_query.value(index).toString().toUtf8();
        return text;
    }

private:
    const QSqlQuery &m_query;
    mutable std::array<QByteArray, 12> m_fields;
};

// The current row of a statement being stepped: a field's text is taken from
// the engine only when the reader asks for it, so the fields it does not pass
// on are never converted.
class StatementRow final : public OrganizerStore::RawRow
{
public:
    explicit StatementRow(sqlite3_stmt *statement)
        : m_statement(statement)
    {
    }
    QByteArrayView field(int index) const override
    {
        const auto *data = reinterpret_cast<const char *>(sqlite3_column_text(m_statement, index));
        return data ? QByteArrayView(data, sqlite3_column_bytes(m_statement, index)) : QByteArrayView("");
    }

private:
    sqlite3_stmt *m_statement;
};

} // namespace

StoreResult OrganizerStore::forEachEntry(const QString &groupName, SortKey key, const RawRowSink &sink) const
{
    if (m_location.engine == Engine::PostgreSQL) {
        Session s(m_location, false);
        QSqlQuery q;
        if (!s.checkTables() || !s.begin(false) || !s.prepare(q, entriesText(key), {groupName})
            || !s.exec(q, QStringLiteral("list the group %1").arg(groupName)))
            return s.result();
        const QueryRow row(q);
        while (q.next()) {
            if (!sink(row))
                break;
        }
        if (q.lastError().isValid())
            s.fromError(q.lastError(), QStringLiteral("read the entries"));
        q.finish();
        s.commit();
        return s.result();
    }

    // On SQLite the rows are stepped through the engine's own interface on
    // the connection's handle: the text goes from the file to the reader as
    // it is stored, without a QVariant or a QString for every field.
    Session s(m_location, false);
    if (!s.checkTables() || !s.begin(false))
        return s.result();
    sqlite3 *db = sqliteHandle(s.db());
    if (!db)
        return {StoreStatus::Failed, QStringLiteral("The organizer database %1 gives no handle.").arg(m_location.file)};
    sqlite3_stmt *statement = nullptr;
    const QByteArray text = entriesText(key).toUtf8();
    const QByteArray group = groupName.toUtf8();
    if (sqlite3_prepare_v2(db, text.constData(), int(text.size()), &statement, nullptr) != SQLITE_OK
        || sqlite3_bind_text(statement, 1, group.constData(), int(group.size()), SQLITE_STATIC) != SQLITE_OK) {
        const QString error = QString::fromUtf8(sqlite3_errmsg(db));
        sqlite3_finalize(statement);
        return {StoreStatus::Failed, QStringLiteral("The organizer database %1 could not list the group %2: %3")
                                         .arg(m_location.file, groupName, error)};
    }
    int step = SQLITE_ROW;
    const StatementRow row(statement);
    while ((step = sqlite3_step(statement)) == SQLITE_ROW) {
        if (!sink(row)) {
            step = SQLITE_DONE;
            break;
        }
    }
    StoreResult result;
    if (step != SQLITE_DONE)
        result = {sqlite3_errcode(db) == SQLITE_CORRUPT || sqlite3_errcode(db) == SQLITE_NOTADB ? StoreStatus::Damaged
                                                                                              : StoreStatus::Failed,
                  QStringLiteral("The organizer database %1 could not list the group %2: %3")
                      .arg(m_location.file, groupName, QString::fromUtf8(sqlite3_errmsg(db)))};
    sqlite3_finalize(statement);
    s.commit();
    return result.ok() ? s.result() : result;
}

namespace {

QList<qint64> idsInOrder(const StoreLocation &location, const QString &textOf, StoreResult *result)
{
    QList<qint64> ids;
    const StoreResult r = runOne(location, false, textOf, {}, QStringLiteral("list the rows"), [&](QSqlQuery &q) {
        while (q.next())
            ids << q.value(0).toLongLong();
    });
    setResult(result, r);
    return r.ok() ? ids : QList<qint64>();
}

QString orderText(TableOrder order)
{
    switch (order) {
    case TableOrder::ID: return QStringLiteral("[ID]");
    case TableOrder::GroupName: return QStringLiteral("[GroupName], [ID]");
    case TableOrder::FileName: return QStringLiteral("[FileName], [ID]");
    }
    return QStringLiteral("[ID]");
}

} // namespace

QList<qint64> OrganizerStore::groupIds(TableOrder order, StoreResult *result) const
{
    if (order == TableOrder::FileName)
        order = TableOrder::GroupName;
    return idsInOrder(m_location, QStringLiteral("SELECT [ID] FROM [GroupTable] ORDER BY ") + orderText(order), result);
}

QList<qint64> OrganizerStore::entryIds(TableOrder order, StoreResult *result) const
{
    return idsInOrder(m_location, QStringLiteral("SELECT [ID] FROM [FileTable] ORDER BY ") + orderText(order), result);
}

qint64 OrganizerStore::entryCount(StoreResult *result) const
{
    qint64 count = 0;
    setResult(result, runOne(m_location, false, QStringLiteral("SELECT COUNT(*) FROM [FileTable]"), {},
                             QStringLiteral("count the entries"), [&](QSqlQuery &q) {
                                 if (q.next())
                                     count = q.value(0).toLongLong();
                             }));
    return count;
}

std::optional<FileEntry> OrganizerStore::findNearest(FindField field, const QString &text, StoreResult *result) const
{
    const QString column = field == FindField::FileName ? QStringLiteral("[FileName]") : QStringLiteral("[FileKeyword]");
    return firstEntry(QStringLiteral("SELECT * FROM [FileTable] WHERE %1 >= ? ORDER BY %1, [ID] LIMIT 1").arg(column),
                      {text}, result);
}

std::optional<FileEntry> OrganizerStore::findFileName(const QString &fileName, StoreResult *result) const
{
    return firstEntry(QStringLiteral("SELECT * FROM [FileTable] WHERE [FileName] = ? ORDER BY [FileName], [ID] LIMIT 1"),
                      {fileName}, result);
}

std::optional<FileEntry> OrganizerStore::firstEntry(const QString &sql, const QVariantList &values, StoreResult *result) const
{
    std::optional<FileEntry> row;
    setResult(result, runOne(m_location, false, sql, values, QStringLiteral("find an entry"), [&](QSqlQuery &q) {
        if (q.next())
            row = entryFromQuery(q);
    }));
    return row;
}

StoreResult OrganizerStore::repair() const
{
    if (m_location.engine == Engine::SQLite && !QFileInfo::exists(m_location.file))
        return create();
    Session s(m_location, false);
    if (!s.checkTables())
        return s.result();
    if (m_location.engine == Engine::SQLite) {
        QSqlQuery q(s.db());
        // The indexes are rebuilt first: most damage a check reports lies in
        // them, and REINDEX makes them anew from the tables.
        if (!s.run(QStringLiteral("REINDEX")))
            return s.result();
        if (!q.exec(QStringLiteral("PRAGMA integrity_check")))
            return s.fromError(q.lastError(), QStringLiteral("check it")), s.result();
        QStringList problems;
        while (q.next()) {
            const QString line = q.value(0).toString();
            if (line != QLatin1String("ok"))
                problems << line;
        }
        if (!problems.isEmpty())
            return {StoreStatus::Damaged, QStringLiteral("The organizer database %1 is damaged beyond repair: %2")
                                              .arg(m_location.file, problems.first())};
        return {};
    }
    s.run(QStringLiteral("REINDEX TABLE [GroupTable]")) && s.run(QStringLiteral("REINDEX TABLE [FileTable]"));
    return s.result();
}

StoreResult OrganizerStore::compact(const QString &sideFileName) const
{
    if (m_location.engine == Engine::PostgreSQL) {
        // VACUUM FULL locks each table while it rewrites it: writers wait.
        Session s(m_location, false);
        if (s.checkTables())
            s.run(QStringLiteral("VACUUM FULL [GroupTable]")) && s.run(QStringLiteral("VACUUM FULL [FileTable]"));
        return s.result();
    }
    const QString folder = QFileInfo(m_location.file).absolutePath();
    const QString side = QDir(folder).filePath(sideFileName);
    // From here to the rename no other connection is open on the catalogue,
    // and none opens it: the ones open now are waited for, and the ones that
    // come meanwhile wait for the new file (see CatalogueLock). The
    // connections below are opened under this lock and do not take it again.
    CatalogueLock lock;
    if (lock.acquire(m_location.file, CatalogueLock::Mode::Exclusive, CompactionWaitMs) == CatalogueLock::Outcome::Busy)
        return {StoreStatus::Failed, QStringLiteral("The organizer database %1 is in use and was not compacted; try "
                                                    "again in a moment.")
                                         .arg(m_location.file)};
    // An earlier run that failed half-way may have left the side file.
    if (!removeWithJournals(side))
        return {StoreStatus::Failed, QStringLiteral("The old %1 cannot be removed.").arg(side)};
    // The catalogue is marked as being compacted before it is copied: where
    // the file system gives no lock, writers of other processes wait for the
    // mark instead (see Session::beginWrite), so that no write lands in the
    // file after the copy is taken or in the old file after the rename. The
    // mark goes with the old file; the copy's is cleared before it takes the
    // name.
    const QString markText = QStringLiteral("PRAGMA user_version = %1").arg(::getpid());
    auto unmark = [this] {
        Session s(m_location, false, Locking::None);
        s.checkTables() && s.begin(true) && s.run(QStringLiteral("PRAGMA user_version = 0")) && s.commit();
    };
    {
        Session s(m_location, false, Locking::None);
        if (!s.checkTables() || !s.begin(true) || !s.run(markText) || !s.commit())
            return s.result();
        QSqlQuery q;
        if (!s.prepare(q, QStringLiteral("VACUUM INTO ?"), {side}) || !s.exec(q, QStringLiteral("compact it"))) {
            const StoreResult failed = s.result();
            q = QSqlQuery();
            unmark();
            return failed;
        }
    }
    StoreResult failed;
    {
        StoreLocation copy = m_location;
        copy.file = side;
        Session s(copy, false, Locking::None);
        if (!s.isOpen() || !s.run(QStringLiteral("PRAGMA user_version = 0")))
            failed = s.result();
    }
    // The copy reaches the disk before it takes the catalogue's name: a crash
    // at any moment leaves either the old file or the whole new one there.
    if (failed.ok() && !syncFile(side))
        failed = {StoreStatus::Failed, QStringLiteral("The compacted copy %1 could not be written.").arg(side)};
    if (failed.ok()
        && ::rename(QFile::encodeName(side).constData(), QFile::encodeName(m_location.file).constData()) != 0)
        failed = {StoreStatus::Failed, QStringLiteral("The compacted copy could not replace %1.").arg(m_location.file)};
    if (!failed.ok()) {
        removeWithJournals(side);
        unmark();
        return failed;
    }
    syncFolder(folder);
    return {};
}

StoreResult OrganizerStore::clear() const
{
    {
        Session s(m_location, false);
        if (!s.checkTables() || !s.begin(true) || !s.run(QStringLiteral("DELETE FROM [FileTable]")) || !s.commit())
            return s.result();
    }
    return compact(ClearFileName);
}

} // namespace tarnby::organizer
