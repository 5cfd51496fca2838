#include "SqliteReader.h"

#include <QDate>
#include <QDateTime>
#include <QFileInfo>
#include <QRegularExpression>
#include <QHash>
#include <QMutex>
#include <QSqlDatabase>
#include <QThread>
#include <QSqlError>
#include <QSqlQuery>
#include <QSqlRecord>

#include <algorithm>
#include <atomic>
#include <map>
#include <memory>

namespace tarnby::tables {

namespace {

// QtSql connections per open file, named uniquely, removed when the file
// and the last of its tables are gone. A connection serves only the thread
// that made it, and a file may be opened on a worker and read on the
// interface thread: each thread that reads the file gets a connection of
// its own.
class Connection
{
public:
    explicit Connection(const QString &path)
        : m_path(path)
        , m_base(QStringLiteral("tarnby-table-%1").arg(s_next.fetch_add(1)))
    {
        m_open = connect(m_base, &m_error);
        m_names.insert(QThread::currentThread(), m_base);
    }

    ~Connection()
    {
        for (const QString &name : std::as_const(m_names))
            QSqlDatabase::removeDatabase(name);
    }

    bool isOpen() const { return m_open; }
    QString error() const { return m_error; }
    QSqlDatabase database() const
    {
        QMutexLocker lock(&m_mutex);
        QThread *thread = QThread::currentThread();
        auto name = m_names.constFind(thread);
        if (name == m_names.cend()) {
            const QString added = m_base + QStringLiteral("-%1").arg(m_names.size());
            QString ignored;
            connect(added, &ignored);
            name = m_names.insert(thread, added);
        }
        return QSqlDatabase::database(*name, false);
    }

private:
    bool connect(const QString &name, QString *error) const
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), name);
        db.setDatabaseName(m_path);
        db.setConnectOptions(QStringLiteral("QSQLITE_OPEN_READONLY"));
        if (db.open())
            return true;
        *error = db.lastError().text();
        return false;
    }

    static inline std::atomic<int> s_next{0};
    QString m_path;
    QString m_base;
    bool m_open = false;
    QString m_error;
    mutable QMutex m_mutex;
    mutable QHash<QThread *, QString> m_names;
};

QString quoted(const QString &identifier)
{
    QString q = identifier;
    q.replace(QLatin1Char('"'), QStringLiteral("\"\""));
    return QLatin1Char('"') + q + QLatin1Char('"');
}

Field fieldOfDeclaredType(const QString &name, const QString &declared)
{
    const QString type = declared.toUpper();
    static const QRegularExpression length(QStringLiteral("\\(\\s*(\\d+)"));
    const QRegularExpressionMatch sized = length.match(type);
    const int declaredLength = sized.hasMatch() ? qMin(sized.captured(1).toInt(), 65535) : 0;
    if (type.contains(QLatin1String("INT")))
        return {name, FieldType::Long, 4};
    if (type.contains(QLatin1String("CHAR")) || type.contains(QLatin1String("CLOB")) || type.contains(QLatin1String("TEXT")))
        return declaredLength > 0 ? Field{name, FieldType::Text, declaredLength} : Field{name, FieldType::Memo, 0};
    if (type.contains(QLatin1String("BLOB")) || type.isEmpty())
        return {name, FieldType::LongBinary, 0};
    if (type.contains(QLatin1String("REAL")) || type.contains(QLatin1String("FLOA")) || type.contains(QLatin1String("DOUB")))
        return {name, FieldType::Double, 8};
    if (type.contains(QLatin1String("BOOL")))
        return {name, FieldType::Boolean, 1};
    if (type.contains(QLatin1String("DATE")) || type.contains(QLatin1String("TIME")))
        return {name, FieldType::Date, 8};
    return {name, FieldType::Double, 8};
}

// SQLite stores values by storage class whatever the column's type; a
// boolean or date column gets typed values where the stored one reads as
// such, else the value as stored.
QVariant typedValue(const Field &field, const QVariant &stored)
{
    if (stored.isNull())
        return {};
    if (field.type == FieldType::Boolean && (stored.typeId() == QMetaType::LongLong || stored.typeId() == QMetaType::Int))
        return stored.toLongLong() != 0;
    if (field.type == FieldType::Date && stored.typeId() == QMetaType::QString) {
        const QString text = stored.toString();
        const QDate date = QDate::fromString(text, Qt::ISODate);
        if (date.isValid())
            return date;
        const QDateTime dateTime = QDateTime::fromString(text, Qt::ISODate);
        if (dateTime.isValid())
            return dateTime;
    }
    return stored;
}

class SqliteTable : public Table
{
public:
    SqliteTable(std::shared_ptr<Connection> connection, QString name, QList<Field> fields, QStringList indexNames,
                qint64 rows, QString rowid)
        : m_connection(std::move(connection))
        , m_name(std::move(name))
        , m_fields(std::move(fields))
        , m_indexNames(std::move(indexNames))
        , m_rows(rows)
        , m_rowid(std::move(rowid))
    {
        for (const Field &f : std::as_const(m_fields))
            m_columns << quoted(f.name);
    }

    QString name() const override { return m_name; }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return m_indexNames; }
    qint64 rowCount() const override { return m_rows; }

    Result<IndexKey> indexKey(const QString &indexName) const override
    {
        if (!m_indexNames.contains(indexName))
            return Table::indexKey(indexName);
        // Key columns in key order: column number (-1 for an expression),
        // sort order, collation; the rest of index_xinfo's rows are the
        // row id and the like, which are not keys.
        QSqlQuery query(m_connection->database());
        IndexKey key;
        if (!query.exec(QStringLiteral("PRAGMA index_xinfo(%1)").arg(quoted(indexName))))
            return Table::indexKey(indexName);
        while (query.next()) {
            if (!query.value(5).toBool())
                continue;
            const int column = query.value(1).toInt();
            if (column < 0 || column >= m_fields.size())
                return Table::indexKey(indexName);
            key.parts.append(IndexKey::Part{column, query.value(3).toBool(),
                                            query.value(4).toString().compare(QLatin1String("NOCASE"), Qt::CaseInsensitive) == 0});
        }
        if (key.parts.isEmpty())
            return Table::indexKey(indexName);
        return Result<IndexKey>::success(key);
    }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        if (first < 0 || count <= 0 || first >= m_rows)
            return Result<QList<Row>>::success({});
        const int wanted = int(qMin<qint64>(count, m_rows - first));
        return m_rowid.isEmpty() ? readByOffset(first, wanted) : readByRowid(first, wanted);
    }

private:
    // Columns by name, in field order: "SELECT *" would also give the
    // hidden columns of virtual tables.
    QString columnList() const { return m_columns.join(QLatin1Char(',')); }

    // A table without a row id: OFFSET walks the rows before the page.
    Result<QList<Row>> readByOffset(qint64 first, int count)
    {
        QSqlQuery query(m_connection->database());
        query.setForwardOnly(true);
        if (!query.prepare(QStringLiteral("SELECT %1 FROM %2 LIMIT ? OFFSET ?").arg(columnList(), quoted(m_name))))
            return Result<QList<Row>>::failure(failure(query));
        query.addBindValue(count);
        query.addBindValue(first);
        return readQuery(query, nullptr);
    }

    // Rows in row id order, found from the row ids of rows read before: the
    // nearest known row on either side of the page (or the table's start or
    // end) is the key the query starts from, and only the rows between it
    // and the page are skipped. Pages read in turn, in either direction,
    // skip none.
    Result<QList<Row>> readByRowid(qint64 first, int count)
    {
        const qint64 end = first + count;
        auto below = m_known.lower_bound(first);
        const bool fromBelow = below != m_known.begin();
        const qint64 lowRow = fromBelow ? std::prev(below)->first : -1;
        auto above = m_known.lower_bound(end);
        const bool fromAbove = above != m_known.end();
        const qint64 highRow = fromAbove ? above->first : m_rows;
        const bool forward = first - lowRow - 1 <= highRow - end;
        QString where;
        if (forward && fromBelow)
            where = QStringLiteral(" WHERE %1 > ?").arg(m_rowid);
        else if (!forward && fromAbove)
            where = QStringLiteral(" WHERE %1 < ?").arg(m_rowid);
        QSqlQuery query(m_connection->database());
        query.setForwardOnly(true);
        if (!query.prepare(QStringLiteral("SELECT %1,%2 FROM %3%4 ORDER BY %2 %5 LIMIT ? OFFSET ?")
                               .arg(columnList(), m_rowid, quoted(m_name), where,
                                    forward ? QStringLiteral("ASC") : QStringLiteral("DESC"))))
            return Result<QList<Row>>::failure(failure(query));
        if (!where.isEmpty())
            query.addBindValue(forward ? std::prev(below)->second : above->second);
        query.addBindValue(count);
        query.addBindValue(forward ? first - lowRow - 1 : highRow - end);
        std::vector<qint64> rowids;
        Result<QList<Row>> read = readQuery(query, &rowids);
        if (!read.ok() || read.value.isEmpty())
            return read;
        if (!forward) {
            std::reverse(read.value.begin(), read.value.end());
            std::reverse(rowids.begin(), rowids.end());
        }
        // The page's first and last rows become known keys.
        if (m_known.size() < maxKnownRows) {
            m_known[first] = rowids.front();
            m_known[first + qsizetype(rowids.size()) - 1] = rowids.back();
        }
        return read;
    }

    // The rows of an executed query, their row ids (the column after the
    // fields) into rowids when asked.
    Result<QList<Row>> readQuery(QSqlQuery &query, std::vector<qint64> *rowids)
    {
        if (!query.exec())
            return Result<QList<Row>>::failure(failure(query));
        QList<Row> rows;
        while (query.next()) {
            Row row;
            row.reserve(m_fields.size());
            for (int i = 0; i < m_fields.size(); ++i)
                row.append(typedValue(m_fields[i], query.value(i)));
            if (rowids)
                rowids->push_back(query.value(int(m_fields.size())).toLongLong());
            rows.append(row);
        }
        if (query.lastError().isValid())
            return Result<QList<Row>>::failure(failure(query));
        return Result<QList<Row>>::success(rows);
    }

    QString failure(const QSqlQuery &query) const
    {
        return QStringLiteral("The table \"%1\" could not be read: %2").arg(m_name, query.lastError().text());
    }

    // Known row ids by row number; bounded, as a cache of keys.
    static constexpr size_t maxKnownRows = 100000;

    std::shared_ptr<Connection> m_connection;
    QString m_name;
    QList<Field> m_fields;
    QStringList m_indexNames;
    qint64 m_rows;
    QString m_rowid; // the name the row id goes by in this table, or empty
    QStringList m_columns;
    std::map<qint64, qint64> m_known;
};

class SqliteFile : public TableFile
{
public:
    SqliteFile(std::shared_ptr<Connection> connection, QStringList tables)
        : m_connection(std::move(connection))
        , m_tables(std::move(tables))
    {
    }

    QString formatName() const override { return QStringLiteral("SQLite"); }
    QStringList tableNames() const override { return m_tables; }

    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        using TableResult = Result<std::unique_ptr<Table>>;
        if (!m_tables.contains(name))
            return TableResult::failure(QStringLiteral("The SQLite database holds no table named \"%1\".").arg(name));
        const QSqlDatabase db = m_connection->database();
        QSqlQuery query(db);
        QList<Field> fields;
        if (!query.exec(QStringLiteral("PRAGMA table_info(%1)").arg(quoted(name))))
            return TableResult::failure(failure(name, query));
        while (query.next())
            fields.append(fieldOfDeclaredType(query.value(1).toString(), query.value(2).toString()));
        if (fields.isEmpty())
            return TableResult::failure(failure(name, query));
        QStringList indexNames;
        if (!query.exec(QStringLiteral("PRAGMA index_list(%1)").arg(quoted(name))))
            return TableResult::failure(failure(name, query));
        while (query.next() && indexNames.size() < maxIndexNames)
            indexNames.append(query.value(1).toString());
        if (!query.exec(QStringLiteral("SELECT COUNT(*) FROM %1").arg(quoted(name))) || !query.next())
            return TableResult::failure(failure(name, query));
        const qint64 rows = query.value(0).toLongLong();
        // The row id, by a name no column has taken; tables declared
        // WITHOUT ROWID have none.
        QString rowid;
        for (const QString &alias : {QStringLiteral("rowid"), QStringLiteral("_rowid_"), QStringLiteral("oid")}) {
            const bool taken = std::any_of(fields.cbegin(), fields.cend(), [&](const Field &f) {
                return f.name.compare(alias, Qt::CaseInsensitive) == 0;
            });
            if (!taken) {
                if (query.exec(QStringLiteral("SELECT %1 FROM %2 LIMIT 1").arg(alias, quoted(name))))
                    rowid = alias;
                break;
            }
        }
        query.finish();
        return TableResult::success(std::make_unique<SqliteTable>(m_connection, name, fields, indexNames, rows, rowid));
    }

private:
    static QString failure(const QString &name, const QSqlQuery &query)
    {
        const QString why = query.lastError().isValid() ? query.lastError().text() : QStringLiteral("it has no columns");
        return QStringLiteral("The table \"%1\" could not be read: %2").arg(name, why);
    }

    std::shared_ptr<Connection> m_connection;
    QStringList m_tables;
};

} // namespace

bool looksLikeSqlite(const QByteArray &head)
{
    return head.startsWith(QByteArrayView("SQLite format 3\0", 16));
}

OpenResult openSqliteFile(const QString &path)
{
    const QString fileName = QFileInfo(path).fileName();
    if (!QSqlDatabase::isDriverAvailable(QStringLiteral("QSQLITE")))
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("\"%1\" is an SQLite database, but Qt's SQLite driver is not installed.").arg(fileName));
    auto connection = std::make_shared<Connection>(path);
    if (!connection->isOpen())
        return OpenResult::failure(OpenStatus::Failed,
                      QStringLiteral("The SQLite database \"%1\" could not be opened: %2").arg(fileName, connection->error()));
    QSqlQuery query(connection->database());
    // SQLite's own tables start with "sqlite_"; the escape keeps "_" literal.
    if (!query.exec(QStringLiteral("SELECT name FROM sqlite_master WHERE type = 'table' "
                                   "AND name NOT LIKE 'sqlite\\_%' ESCAPE '\\' ORDER BY rowid"))) {
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The SQLite database \"%1\" could not be read: %2")
                                              .arg(fileName, query.lastError().text()));
    }
    QStringList tables;
    while (query.next() && tables.size() < maxTables)
        tables.append(query.value(0).toString());
    query.finish();
    OpenResult result;
    result.file = std::make_unique<SqliteFile>(std::move(connection), std::move(tables));
    return result;
}

} // namespace tarnby::tables
