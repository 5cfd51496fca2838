#include "Fixtures.h"
#include "TestDir.h"

#include "core/platform/tables/MdbReader.h"
#include "core/platform/tables/TableReader.h"

#include <QDate>
#include <QFile>
#include <QTest>

using namespace tarnby::tables;

namespace {

QByteArray firstPage(const QString &path)
{
    QFile f(path);
    f.open(QIODevice::ReadOnly);
    return f.read(4096);
}

QStringList shape(const Table &table)
{
    QStringList s;
    for (const Field &f : table.fields())
        s << QStringLiteral("%1 %2 %3").arg(f.name).arg(f.type).arg(f.size);
    return s;
}

} // namespace

class TestMdbReader : public QObject
{
    Q_OBJECT
private slots:
    void tablesOfFixtures_data();
    void tablesOfFixtures();
    void jet3Values();
    void jet4ValuesAndHalvedSizes();
    void passwords_data();
    void passwords();
    void storedPasswords_data();
    void storedPasswords();
    void damagedDatabase();
    void notAnAccessDatabase();
    void pagesBackwardsStartAgain();
};

void TestMdbReader::tablesOfFixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QStringList>("listing");
    // Row counts and tables from the corpus's provenance notes; system
    // tables (MSys...) are never listed.
    QTest::newRow("jet 3") << "MDB/test.mdb" << "" << QStringList{"Table1 2", "Table2 0", "Table3 0", "Table4 0"};
    QTest::newRow("jet 4") << "MDB/testAccess2_2000.mdb" << "" << QStringList{"Table1 2", "Table2 1"};
    QTest::newRow("jet 4 encoded pages") << "MDB/db-enc.mdb" << "" << QStringList{"Table1 2"};
    QTest::newRow("jet 3 encoded pages") << "MDB/db97-enc.mdb" << "" << QStringList{"Table1 2"};
    QTest::newRow("access 2000 with password") << "MDB/V2000_with-password.mdb" << "password" << QStringList{"Table1 3"};
    QTest::newRow("access 2003 with password") << "MDB/V2003_with-password.mdb" << "password" << QStringList{"Table1 3"};
}

void TestMdbReader::tablesOfFixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, password);
    QFETCH(QStringList, listing);
    const OpenResult r = openTableFile(fixtures::path(file), password);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->formatName(), QStringLiteral("Access"));
    QStringList got;
    for (const QString &name : r.file->tableNames()) {
        Result<std::unique_ptr<Table>> t = r.file->openTable(name);
        QVERIFY2(t.ok(), qPrintable(t.errorString));
        got << QStringLiteral("%1 %2").arg(name).arg(t.value->rowCount());
        const Result<QList<Row>> rows = t.value->readRows(0, 100);
        QVERIFY(rows.ok());
        QCOMPARE(rows.value.size(), t.value->rowCount());
    }
    QCOMPARE(got, listing);
}

void TestMdbReader::jet3Values()
{
    REQUIRE_FIXTURES();
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("MDB/db97-enc.mdb")));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("Table1"));
    QVERIFY(t.ok());
    const QList<Row> rows = t.value->readRows(0, 10).value;
    QCOMPARE(rows, QList<Row>({Row{qlonglong(1), QStringLiteral("hello"), qlonglong(0)},
                               Row{qlonglong(2), QStringLiteral("world"), qlonglong(42)}}));

    const OpenResult types = openTableFile(fixtures::path(QStringLiteral("MDB/test.mdb")));
    QVERIFY(types.ok());
    Result<std::unique_ptr<Table>> t1 = types.file->openTable(QStringLiteral("Table1"));
    QVERIFY(t1.ok());
    QCOMPARE(shape(*t1.value), QStringList({"A 10 50", "B 10 100", "C 2 1", "D 3 2", "E 4 4", "F 7 8", "G 8 8",
                                            "H 5 8", "I 1 0"}));
    const Row second = t1.value->readRows(1, 1).value.value(0);
    QCOMPARE(second.value(0), QVariant(QStringLiteral("abcdefg")));
    QCOMPARE(second.value(6), QVariant(QDate(1974, 9, 21)));
    QCOMPARE(second.value(7), QVariant(3.5));
    QCOMPARE(second.value(8), QVariant(true));
}

void TestMdbReader::jet4ValuesAndHalvedSizes()
{
    REQUIRE_FIXTURES();
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("MDB/testAccess2_2000.mdb")));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("Table1"));
    QVERIFY(t.ok());
    const QStringList fields = shape(*t.value);
    // Jet 4 keeps text sizes in bytes: 510 bytes are 255 characters.
    QCOMPARE(fields.value(1), QStringLiteral("ShortTextField 10 255"));
    QCOMPARE(fields.value(6), QStringLiteral("PlainTextMemo 12 0"));
    QCOMPARE(fields.value(9), QStringLiteral("OLEObject 11 0"));
    const Row first = t.value->readRows(0, 1).value.value(0);
    QCOMPARE(first.value(1), QVariant(QStringLiteral("the quick")));
    QCOMPARE(first.value(6), QVariant(QStringLiteral("red and brown")));
    QCOMPARE(first.value(9).typeId(), QMetaType::QByteArray);
    QVERIFY(first.value(9).toByteArray().size() > 1000);
}

void TestMdbReader::passwords_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("status");
    QTest::newRow("2000, none given") << "MDB/V2000_with-password.mdb" << "" << int(OpenStatus::PasswordRequired);
    QTest::newRow("2000, wrong") << "MDB/V2000_with-password.mdb" << "Password" << int(OpenStatus::WrongPassword);
    QTest::newRow("2000, right") << "MDB/V2000_with-password.mdb" << "password" << int(OpenStatus::Ok);
    QTest::newRow("2003, none given") << "MDB/V2003_with-password.mdb" << "" << int(OpenStatus::PasswordRequired);
    QTest::newRow("2003, prefix only") << "MDB/V2003_with-password.mdb" << "pass" << int(OpenStatus::WrongPassword);
    QTest::newRow("2003, right") << "MDB/V2003_with-password.mdb" << "password" << int(OpenStatus::Ok);
    QTest::newRow("no password, one given") << "MDB/test.mdb" << "anything" << int(OpenStatus::Ok);
}

void TestMdbReader::passwords()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, password);
    QFETCH(int, status);
    const OpenResult r = openTableFile(fixtures::path(file), password);
    QCOMPARE(int(r.status), status);
    QCOMPARE(bool(r.file), r.ok());
    if (!r.ok())
        QVERIFY(r.errorString.contains(QStringLiteral("password")));
}

void TestMdbReader::storedPasswords_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("stored");
    QTest::newRow("jet 4 protected") << "MDB/V2000_with-password.mdb" << "password";
    QTest::newRow("jet 4 2003 protected") << "MDB/V2003_with-password.mdb" << "password";
    QTest::newRow("jet 4 none") << "MDB/testAccess2_2000.mdb" << "";
    QTest::newRow("jet 3 none") << "MDB/test.mdb" << "";
    QTest::newRow("jet 4 encoded, none") << "MDB/db-enc.mdb" << "";
    QTest::newRow("jet 3 encoded, none") << "MDB/db97-enc.mdb" << "";
}

void TestMdbReader::storedPasswords()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, stored);
    QCOMPARE(mdbPassword(firstPage(fixtures::path(file))), stored);
}

void TestMdbReader::damagedDatabase()
{
    REQUIRE_FIXTURES();
    // Page 0 only: the catalogue on page 2 is missing.
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("malformed/MDB/self-created.mdb")));
    QVERIFY(!r.ok());
    QCOMPARE(r.status, OpenStatus::Failed);
    QCOMPARE(r.errorString,
             QStringLiteral("The Access database \"self-created.mdb\" is damaged: its list of tables cannot be read."));
}

void TestMdbReader::notAnAccessDatabase()
{
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("fake.mdb"), QByteArray(5000, 'x')));
    QVERIFY(!r.ok());
    QCOMPARE(r.errorString, QStringLiteral("\"fake.mdb\" is not an Access database."));
    QCOMPARE(mdbPassword(QByteArray(4096, '\0')), QString());
}

void TestMdbReader::pagesBackwardsStartAgain()
{
    REQUIRE_FIXTURES();
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("MDB/V2000_with-password.mdb")),
                                       QStringLiteral("password"));
    QVERIFY(r.ok());
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("Table1"));
    QVERIFY(t.ok());
    QCOMPARE(t.value->readRows(2, 1).value.value(0).value(1), QVariant(QStringLiteral("Three")));
    QCOMPARE(t.value->readRows(0, 1).value.value(0).value(1), QVariant(QStringLiteral("One")));
    QCOMPARE(t.value->readRows(1, 5).value.size(), 2);
    QVERIFY(t.value->readRows(3, 1).value.isEmpty());
}

QTEST_GUILESS_MAIN(TestMdbReader)
#include "tst_mdbreader.moc"
