#include "Fixtures.h"
#include "SqliteMaker.h"
#include "TestDir.h"

#include "core/platform/tables/TableReader.h"

#include <QCryptographicHash>
#include <QDate>
#include <QFile>
#include <QSqlDatabase>
#include <QSqlError>
#include <QSqlQuery>
#include <QTest>

using namespace tarnby::tables;

namespace {

using sqlitemaker::makeDatabase;

QByteArray digest(const QString &path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return QCryptographicHash::hash(f.readAll(), QCryptographicHash::Sha256);
}

const QStringList stockStatements = {
    "CREATE TABLE stock (id INTEGER PRIMARY KEY AUTOINCREMENT, name VARCHAR(40), price REAL, "
    "notes TEXT, added DATE, active BOOLEAN, picture BLOB)",
    "CREATE INDEX stock_name ON stock(name)",
    "CREATE TABLE \"odd \"\"name\"\"\" (x)",
    "INSERT INTO stock (name, price, notes, added, active, picture) VALUES "
    "('bolt', 0.25, 'a long note', '2024-01-31', 1, x'00ff')",
    "INSERT INTO stock (name, price, notes, added, active, picture) VALUES (NULL, NULL, NULL, NULL, 0, NULL)",
    "INSERT INTO stock (name, price, notes, added, active, picture) VALUES ('nut', 3, 'x', 'someday', 1, NULL)",
    "INSERT INTO \"odd \"\"name\"\"\" VALUES (1)",
};

} // namespace

class TestSqliteReader : public QObject
{
    Q_OBJECT
private slots:
    void tablesListedSystemTablesHidden();
    void fieldsAndIndexes();
    void typedRowsInPages();
    void readOnly();
    void tableCap();
    void sqliteUnderAnyName_data();
    void sqliteUnderAnyName();
    void damagedDatabase();
    void otherDbFilesAreParadoxTables();
    void pagesOfALargeTable_data();
    void pagesOfALargeTable();
};

void TestSqliteReader::tablesListedSystemTablesHidden()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("stock.db"));
    QVERIFY(makeDatabase(path, stockStatements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->formatName(), QStringLiteral("SQLite"));
    // AUTOINCREMENT made SQLite's own sqlite_sequence: it is not listed.
    QCOMPARE(r.file->tableNames(), QStringList({"stock", "odd \"name\""}));
    Result<std::unique_ptr<Table>> odd = r.file->openTable(QStringLiteral("odd \"name\""));
    QVERIFY2(odd.ok(), qPrintable(odd.errorString));
    QCOMPARE(odd.value->rowCount(), 1);
    QVERIFY(!r.file->openTable(QStringLiteral("sqlite_sequence")).ok());
}

void TestSqliteReader::fieldsAndIndexes()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("stock.db"));
    QVERIFY(makeDatabase(path, stockStatements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("stock"));
    QVERIFY2(t.ok(), qPrintable(t.errorString));
    QStringList shape;
    for (const Field &f : t.value->fields())
        shape << QStringLiteral("%1 %2 %3").arg(f.name).arg(f.type).arg(f.size);
    QCOMPARE(shape, QStringList({"id 4 4", "name 10 40", "price 7 8", "notes 12 0", "added 8 8", "active 1 1",
                                 "picture 11 0"}));
    QCOMPARE(t.value->indexNames(), QStringList({"stock_name"}));
}

void TestSqliteReader::typedRowsInPages()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("stock.db"));
    QVERIFY(makeDatabase(path, stockStatements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("stock"));
    QVERIFY(t.ok());
    QCOMPARE(t.value->rowCount(), 3);
    const Result<QList<Row>> all = t.value->readRows(0, 10);
    QVERIFY2(all.ok(), qPrintable(all.errorString));
    QCOMPARE(all.value.size(), 3);
    const Row first = all.value[0];
    QCOMPARE(first.value(0).toLongLong(), 1);
    QCOMPARE(first.value(1).toString(), QStringLiteral("bolt"));
    QCOMPARE(first.value(2).toDouble(), 0.25);
    QCOMPARE(first.value(4), QVariant(QDate(2024, 1, 31)));
    QCOMPARE(first.value(5), QVariant(true));
    QCOMPARE(first.value(6), QVariant(QByteArray("\x00\xff", 2)));
    // Nulls are invalid values; a date column holding text that is no date
    // keeps the text.
    QVERIFY(!all.value[1].value(1).isValid());
    QVERIFY(!all.value[1].value(4).isValid());
    QCOMPARE(all.value[1].value(5), QVariant(false));
    QCOMPARE(all.value[2].value(4), QVariant(QStringLiteral("someday")));
    // A page in the middle and one past the end.
    const Result<QList<Row>> middle = t.value->readRows(1, 1);
    QCOMPARE(middle.value.size(), 1);
    QCOMPARE(middle.value[0].value(0).toLongLong(), 2);
    QVERIFY(t.value->readRows(3, 5).value.isEmpty());
}

void TestSqliteReader::readOnly()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("stock.db"));
    QVERIFY(makeDatabase(path, stockStatements));
    const QByteArray before = digest(path);
    {
        const OpenResult r = openTableFile(path);
        QVERIFY(r.ok());
        Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("stock"));
        QVERIFY(t.ok());
        QVERIFY(t.value->readRows(0, 3).ok());
    }
    QCOMPARE(digest(path), before);
    QVERIFY(!QFile::exists(path + QStringLiteral("-journal")));
    QVERIFY(!QFile::exists(path + QStringLiteral("-wal")));
}

void TestSqliteReader::tableCap()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("many.db"));
    QStringList statements{QStringLiteral("BEGIN")};
    for (int i = 0; i < 260; ++i)
        statements << QStringLiteral("CREATE TABLE t%1 (x)").arg(i, 3, 10, QLatin1Char('0'));
    statements << QStringLiteral("COMMIT");
    QVERIFY(makeDatabase(path, statements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    const QStringList names = r.file->tableNames();
    QCOMPARE(names.size(), 251);
    QCOMPARE(names.first(), QStringLiteral("t000"));
    QCOMPARE(names.last(), QStringLiteral("t250"));
}

void TestSqliteReader::sqliteUnderAnyName_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("db") << "places.db";
    QTest::newRow("DB upper case") << "PLACES.DB";
    QTest::newRow("sqlite") << "places.sqlite";
    QTest::newRow("dbf that is no dBASE table") << "places.dbf";
}

void TestSqliteReader::sqliteUnderAnyName()
{
    QFETCH(QString, name);
    TestDir dir;
    const QString path = dir.filePath(name);
    QVERIFY(makeDatabase(path, stockStatements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->formatName(), QStringLiteral("SQLite"));
}

void TestSqliteReader::damagedDatabase()
{
    TestDir dir;
    QByteArray bytes("SQLite format 3\0", 16);
    bytes += QByteArray(4080, '\xA5');
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("broken.db"), bytes));
    QVERIFY(!r.ok());
    QCOMPARE(r.status, OpenStatus::Failed);
    QVERIFY2(r.errorString.startsWith(QStringLiteral("The SQLite database \"broken.db\" could not be")),
             qPrintable(r.errorString));
}

void TestSqliteReader::otherDbFilesAreParadoxTables()
{
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("notes.db"), QByteArray("plain text, no table")));
    QVERIFY(!r.ok());
    QCOMPARE(r.errorString, QStringLiteral("\"notes\" is not a Paradox table."));
    REQUIRE_FIXTURES();
    const OpenResult states = openTableFile(fixtures::path(QStringLiteral("DB/STATES.DB")));
    QVERIFY2(states.ok(), qPrintable(states.errorString));
    QCOMPARE(states.file->formatName(), QStringLiteral("Paradox"));
}

void TestSqliteReader::pagesOfALargeTable_data()
{
    // 100,000 rows whose column v counts from 0; the rows kept, in order.
    QTest::addColumn<QStringList>("statements");
    QTest::addColumn<QList<qint64>>("values");
    const QString fill = QStringLiteral("INSERT INTO t (v) WITH RECURSIVE n(i) AS (SELECT 0 UNION ALL SELECT i + 1 FROM n "
                                        "WHERE i < 99999) SELECT i FROM n");
    QList<qint64> all;
    QList<qint64> gaps;
    for (qint64 i = 0; i < 100000; ++i) {
        all << i;
        if (i % 7 != 3)
            gaps << i;
    }
    QTest::newRow("row ids") << QStringList{"CREATE TABLE t (v INTEGER, label TEXT)", fill} << all;
    QTest::newRow("gaps in the row ids")
        << QStringList{"CREATE TABLE t (v INTEGER, label TEXT)", fill, "DELETE FROM t WHERE v % 7 = 3"} << gaps;
    QTest::newRow("a column named rowid") << QStringList{"CREATE TABLE t (rowid TEXT, v INTEGER)", fill} << all;
    QTest::newRow("no row ids: pages by offset")
        << QStringList{"CREATE TABLE t (v INTEGER PRIMARY KEY, label TEXT) WITHOUT ROWID", fill} << all;
}

void TestSqliteReader::pagesOfALargeTable()
{
    QFETCH(QStringList, statements);
    QFETCH(QList<qint64>, values);
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("large.db"));
    QVERIFY(makeDatabase(path, statements));
    const OpenResult r = openTableFile(path);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("t"));
    QVERIFY2(t.ok(), qPrintable(t.errorString));
    QCOMPARE(t.value->rowCount(), values.size());
    const int v = t.value->fields().value(0).name == QLatin1String("v") ? 0 : 1;
    const qint64 rows = values.size();
    constexpr int page = 500;
    auto check = [&](qint64 first) {
        const Result<QList<Row>> read = t.value->readRows(first, page);
        if (!read.ok())
            return read.errorString;
        const qint64 expected = qMin<qint64>(page, rows - first);
        if (read.value.size() != expected)
            return QStringLiteral("page at %1: %2 rows, not %3").arg(first).arg(read.value.size()).arg(expected);
        for (int i = 0; i < read.value.size(); ++i) {
            if (read.value[i].value(v).toLongLong() != values[first + i])
                return QStringLiteral("row %1: %2, not %3").arg(first + i).arg(read.value[i].value(v).toLongLong()).arg(values[first + i]);
        }
        return QString();
    };
    // Jumps first (nothing known yet), then every page down and back up.
    for (qint64 first : {rows - 1, rows / 2 + 17, qint64(12345), qint64(0), rows - page}) {
        const QString error = check(first);
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }
    for (qint64 first = 0; first < rows; first += page) {
        const QString error = check(first);
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }
    for (qint64 first = (rows - 1) / page * page; first >= 0; first -= page) {
        const QString error = check(first);
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }
    // Pages that straddle the ones read before.
    for (qint64 first : {qint64(page / 2), rows - page - page / 2, qint64(33333)}) {
        const QString error = check(first);
        QVERIFY2(error.isEmpty(), qPrintable(error));
    }
}

QTEST_GUILESS_MAIN(TestSqliteReader)
#include "tst_sqlitereader.moc"
