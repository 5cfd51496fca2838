#include "DbfSamples.h"
#include "Fixtures.h"
#include "CliRun.h"
#include "TestDir.h"

#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>

// Runs the real tarnby-cli binary's table command.
class TestCliTable : public QObject
{
    Q_OBJECT
private slots:
    void listsTables();
    void fieldLines();
    void csvOfFixture();
    void csvOfGeneratedTable();
    void emptyTableGivesHeaderOnly();
    void passwordFile();
    void sqliteDatabase();
    void failures_data();
    void failures();

private:
    using Run = clitest::Run;
    static Run run(const QStringList &args) { return clitest::runCli(QStringLiteral("table"), args, 20000); }
    QString memoTable(TestDir &dir);
};


// A dBASE III table with memos and a deleted record.
QString TestCliTable::memoTable(TestDir &dir)
{
    using dbfsamples::FieldSpec;
    QList<int> blocks;
    dir.createFile(QStringLiteral("notes.dbt"),
                   dbfsamples::dbaseIIIMemo({"first memo", "two\r\nlines, \"quoted\"", "gone"}, &blocks));
    dbfsamples::TableSpec tableLayout;
    tableLayout.version = 0x83;
    tableLayout.fields = {FieldSpec{"ID", 'N', 4}, FieldSpec{"TITLE", 'C', 12}, FieldSpec{"BORN", 'D', 8},
                   FieldSpec{"OK", 'L', 1}, FieldSpec{"NOTES", 'M', 10}};
    tableLayout.records = {
        {dbfsamples::number("1", 4), dbfsamples::text("One", 12), QByteArray("19991231"), QByteArray("T"),
         dbfsamples::memoPointer(blocks[0])},
        {dbfsamples::number("2", 4), dbfsamples::text("Two, too", 12), QByteArray("        "), QByteArray("F"),
         dbfsamples::memoPointer(blocks[1])},
        {dbfsamples::number("3", 4), dbfsamples::text("Three", 12), QByteArray("20000101"), QByteArray("T"),
         dbfsamples::memoPointer(blocks[2])},
    };
    tableLayout.deleted = {2};
    return dir.createFile(QStringLiteral("notes.dbf"), dbfsamples::table(tableLayout));
}

void TestCliTable::listsTables()
{
    TestDir dir;
    const Run r = run({memoTable(dir)});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("notes\t2\t5\n"));

    REQUIRE_FIXTURES();
    const Run f = run({fixtures::path(QStringLiteral("DBF/dbase_83.dbf"))});
    QCOMPARE(f.exitCode, 0);
    QCOMPARE(f.out, QByteArray("dbase_83\t67\t15\n"));
}

void TestCliTable::fieldLines()
{
    TestDir dir;
    const Run r = run({memoTable(dir), QStringLiteral("--fields")});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("ID - Double - 4\nTITLE - Text - 12\nBORN - Date - 8\nOK - Boolean - 1\n"
                               "NOTES - Memo Field - 10\n"));
    // --table names the table, in any case.
    const Run named = run({memoTable(dir), QStringLiteral("--fields"), QStringLiteral("--table"), QStringLiteral("NOTES")});
    QCOMPARE(named.exitCode, 0);
    QCOMPARE(named.out, r.out);
}

void TestCliTable::csvOfFixture()
{
    REQUIRE_FIXTURES();
    const Run r = run({fixtures::path(QStringLiteral("DBF/dbase_8b.dbf")), QStringLiteral("--csv")});
    QCOMPARE(r.exitCode, 0);
    QVERIFY(r.out.startsWith("CHARACTER,NUMERICAL,DATE,LOGICAL,FLOAT,MEMO\r\nOne,"));
    QVERIFY(r.out.contains(",\"First memo"));
    QVERIFY(r.err.isEmpty());
}

void TestCliTable::csvOfGeneratedTable()
{
    TestDir dir;
    const Run r = run({memoTable(dir), QStringLiteral("--csv")});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("ID,TITLE,BORN,OK,NOTES\r\n"
                               "1,One,1999-12-31,True,first memo\r\n"
                               "2,\"Two, too\",,False,\"two\r\nlines, \"\"quoted\"\"\"\r\n"));
}

void TestCliTable::emptyTableGivesHeaderOnly()
{
    dbfsamples::TableSpec tableLayout;
    tableLayout.fields = {dbfsamples::FieldSpec{"A", 'C', 3}, dbfsamples::FieldSpec{"B", 'N', 3}};
    TestDir dir;
    const Run r = run({dir.createFile(QStringLiteral("empty.dbf"), dbfsamples::table(tableLayout)), QStringLiteral("--csv")});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("A,B\r\n"));
}

void TestCliTable::passwordFile()
{
    TestDir dir;
    const QString table = memoTable(dir);
    // dBASE tables have no password: one given is read and has no effect.
    const Run r = run({table, QStringLiteral("--password-file"), dir.createFile(QStringLiteral("pw"), "secret\r\n")});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("notes\t2\t5\n"));
    const Run missing = run({table, QStringLiteral("--password-file"), dir.filePath(QStringLiteral("absent"))});
    QCOMPARE(missing.exitCode, 1);
    QVERIFY2(missing.err.contains("The password file"), missing.err.constData());
}

void TestCliTable::sqliteDatabase()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("shop.db"));
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("maker"));
        db.setDatabaseName(path);
        QVERIFY(db.open());
        QSqlQuery q(db);
        QVERIFY(q.exec("CREATE TABLE items (id INTEGER, label VARCHAR(20))"));
        QVERIFY(q.exec("CREATE TABLE empty (x REAL, y BLOB, z TEXT)"));
        QVERIFY(q.exec("INSERT INTO items VALUES (1, 'one'), (2, 'two, \"2\"')"));
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("maker"));
    const Run list = run({path});
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.out, QByteArray("items\t2\t2\nempty\t0\t3\n"));
    const Run csv = run({path, QStringLiteral("--csv")});
    QCOMPARE(csv.out, QByteArray("id,label\r\n1,one\r\n2,\"two, \"\"2\"\"\"\r\n"));
    const Run fields = run({path, QStringLiteral("--fields"), QStringLiteral("--table"), QStringLiteral("empty")});
    QCOMPARE(fields.out, QByteArray("x - Double - 8\ny - Long Binary - 0\nz - Memo Field - 0\n"));
}

void TestCliTable::failures_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QByteArray>("message");
    QTest::newRow("no file") << QStringList{} << 2 << QByteArray("Usage: tarnby-cli table");
    QTest::newRow("unknown option") << QStringList{"@table", "--sideways"} << 2 << QByteArray("Usage:");
    QTest::newRow("fields and csv together") << QStringList{"@table", "--fields", "--csv"} << 2 << QByteArray("Usage:");
    QTest::newRow("table without its name") << QStringList{"@table", "--csv", "--table"} << 2 << QByteArray("Usage:");
    QTest::newRow("two files") << QStringList{"@table", "@table"} << 2 << QByteArray("Usage:");
    QTest::newRow("missing file") << QStringList{"@absent.dbf"} << 1 << QByteArray("could not be opened");
    QTest::newRow("no such table") << QStringList{"@table", "--csv", "--table", "other"} << 1
                                   << QByteArray("holds no table named \"other\"");
    QTest::newRow("damaged table") << QStringList{"@damaged"} << 1 << QByteArray("is damaged: its header announces");
}

void TestCliTable::failures()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QByteArray, message);
    TestDir dir;
    dbfsamples::TableSpec damaged;
    damaged.fields = {dbfsamples::FieldSpec{"A", 'C', 3}};
    damaged.announcedRecords = 10;
    for (QString &a : args) {
        if (a == QLatin1String("@table"))
            a = memoTable(dir);
        else if (a == QLatin1String("@damaged"))
            a = dir.createFile(QStringLiteral("damaged.dbf"), dbfsamples::table(damaged));
        else if (a.startsWith(QLatin1Char('@')))
            a = dir.filePath(a.mid(1));
    }
    const Run r = run(args);
    QCOMPARE(r.exitCode, exitCode);
    QVERIFY(r.out.isEmpty());
    QVERIFY2(r.err.contains(message), r.err.constData());
}

QTEST_GUILESS_MAIN(TestCliTable)
#include "tst_cli_table.moc"
