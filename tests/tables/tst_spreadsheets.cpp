#include "Fixtures.h"
#include "TestDir.h"

#include "core/platform/tables/ReaderSupport.h"
#include "core/platform/tables/TableReader.h"

#include <QDate>
#include <QTest>

using namespace tarnby::tables;

namespace {

struct Sheet {
    QString name;
    qint64 rows = 0;
    QStringList fields;
    Row first;
};

// Every sheet of a workbook, with its first data row.
QList<Sheet> sheetsOf(const QString &path, QString *error)
{
    QList<Sheet> sheets;
    const OpenResult r = openTableFile(path);
    if (!r.ok()) {
        *error = r.errorString;
        return sheets;
    }
    for (const QString &name : r.file->tableNames()) {
        Result<std::unique_ptr<Table>> t = r.file->openTable(name);
        if (!t.ok()) {
            *error = t.errorString;
            return {};
        }
        Sheet s;
        s.name = name;
        s.rows = t.value->rowCount();
        for (const Field &f : t.value->fields())
            s.fields << f.name;
        const Result<QList<Row>> all = t.value->readRows(0, int(s.rows));
        if (!all.ok() || all.value.size() != s.rows) {
            *error = QStringLiteral("sheet %1: %2 rows read of %3").arg(name).arg(all.value.size()).arg(s.rows);
            return {};
        }
        s.first = all.value.value(0);
        sheets << s;
    }
    return sheets;
}

} // namespace

class TestSpreadsheets : public QObject
{
    Q_OBJECT
private slots:
    void columnLettersRun();
    void headerRowRule_data();
    void headerRowRule();
    void excelFixtures_data();
    void excelFixtures();
    void encryptedWorkbookRefused();
    void damagedWorkbook();
    void lotusFixture();
};

void TestSpreadsheets::columnLettersRun()
{
    QCOMPARE(columnLetters(0), QStringLiteral("A"));
    QCOMPARE(columnLetters(25), QStringLiteral("Z"));
    QCOMPARE(columnLetters(26), QStringLiteral("AA"));
    QCOMPARE(columnLetters(51), QStringLiteral("AZ"));
    QCOMPARE(columnLetters(52), QStringLiteral("BA"));
    QCOMPARE(columnLetters(701), QStringLiteral("ZZ"));
    QCOMPARE(columnLetters(702), QStringLiteral("AAA"));
}

void TestSpreadsheets::headerRowRule_data()
{
    QTest::addColumn<QList<Row>>("grid");
    QTest::addColumn<QStringList>("fields"); // name and type
    QTest::addColumn<qint64>("firstDataRow");
    const QVariant t1 = QStringLiteral("Name");
    const QVariant t2 = QStringLiteral("Born");
    QTest::newRow("all text names the fields")
        << QList<Row>{{t1, t2}, {QStringLiteral("x"), QDate(2000, 1, 2)}} << QStringList{"Name 10", "Born 8"} << qint64(1);
    QTest::newRow("an empty cell in the first row")
        << QList<Row>{{t1, QVariant()}, {QStringLiteral("x"), 2.5}} << QStringList{"A 10", "B 7"} << qint64(0);
    QTest::newRow("an empty text in the first row")
        << QList<Row>{{t1, QString()}, {QStringLiteral("x"), 2.5}} << QStringList{"A 10", "B 7"} << qint64(0);
    QTest::newRow("a number in the first row")
        << QList<Row>{{t1, 1.0}, {QStringLiteral("x"), 2.5}} << QStringList{"A 10", "B 7"} << qint64(0);
    QTest::newRow("mixed column is text")
        << QList<Row>{{t1, t2}, {1.0, 2.0}, {QStringLiteral("y"), QVariant()}} << QStringList{"Name 10", "Born 7"} << qint64(1);
    QTest::newRow("empty column is text") << QList<Row>{{t1, t2}, {QVariant(), 2.0}} << QStringList{"Name 10", "Born 7"} << qint64(1);
    QTest::newRow("no rows") << QList<Row>{} << QStringList{"A 10", "B 10"} << qint64(0);
}

void TestSpreadsheets::headerRowRule()
{
    QFETCH(QList<Row>, grid);
    QFETCH(QStringList, fields);
    QFETCH(qint64, firstDataRow);
    qint64 first = -1;
    const QList<Field> got = sheetFields(grid.size(), 2, [&](qint64 r, int c) { return grid.value(r).value(c); }, &first);
    QStringList shape;
    for (const Field &f : got)
        shape << QStringLiteral("%1 %2").arg(f.name).arg(f.type);
    QCOMPARE(shape, fields);
    QCOMPARE(first, firstDataRow);
}

void TestSpreadsheets::excelFixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("sheets"); // name and data rows
    QTest::addColumn<QString>("firstCell");
    QTest::newRow("biff5 three sheets") << "XLS/excel-file.xls" << QStringList{"Sheet1 0", "Sheet2 0", "Sheet3 0"} << "";
    QTest::newRow("biff8 french sheets") << "XLS/testEXCEL.xls" << QStringList{"Feuil1 22", "Feuil2 0", "Feuil3 0"}
                                         << "Sample Excel Worksheet - Numbers and their Squares";
    QTest::newRow("biff4") << "XLS/testEXCEL_4.xls" << QStringList{"Worksheet 163"} << "Table 10 -- Examination Coverage";
    QTest::newRow("biff5 excel 5") << "XLS/testEXCEL_5.xls" << QStringList{"Feuil1 22", "Feuil2 0", "Feuil3 0"}
                                   << "Sample Excel Worksheet - Numbers and their Squares";
    QTest::newRow("excel 95") << "XLS/testEXCEL_95.xls" << QStringList{"Foglio1 270"} << "";
}

void TestSpreadsheets::excelFixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QStringList, sheets);
    QFETCH(QString, firstCell);
    QString error;
    const QList<Sheet> got = sheetsOf(fixtures::path(file), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QStringList listing;
    for (const Sheet &s : got)
        listing << QStringLiteral("%1 %2").arg(s.name).arg(s.rows);
    QCOMPARE(listing, sheets);
    if (!firstCell.isEmpty()) {
        // A title in A1 alone: the columns are named by letter and the
        // title is the first data row.
        QCOMPARE(got[0].fields.value(0), QStringLiteral("A"));
        QVERIFY2(got[0].first.value(0).toString().startsWith(firstCell), qPrintable(got[0].first.value(0).toString()));
    }
}

void TestSpreadsheets::encryptedWorkbookRefused()
{
    REQUIRE_FIXTURES();
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("XLS/testEXCEL_protected_passtika.xls")));
    QVERIFY(!r.ok());
    QCOMPARE(r.status, OpenStatus::Unsupported);
    QCOMPARE(r.errorString,
             QStringLiteral("The workbook \"testEXCEL_protected_passtika.xls\" is encrypted, which Tarnby cannot read."));
}

void TestSpreadsheets::damagedWorkbook()
{
    TestDir dir;
    const OpenResult xls = openTableFile(dir.createFile(QStringLiteral("broken.xls"), QByteArray(3000, '\x11')));
    QVERIFY(!xls.ok());
    QCOMPARE(xls.errorString, QStringLiteral("The workbook \"broken.xls\" could not be read."));
    const OpenResult wk4 = openTableFile(dir.createFile(QStringLiteral("broken.wk4"), QByteArray(3000, '\x11')));
    QVERIFY(!wk4.ok());
    QCOMPARE(wk4.errorString, QStringLiteral("\"broken.wk4\" is not a worksheet Tarnby can read."));
}

void TestSpreadsheets::lotusFixture()
{
    REQUIRE_FIXTURES();
    QString error;
    const QList<Sheet> got = sheetsOf(fixtures::path(QStringLiteral("WK4/testLotus123-lotusftp.wk4")), &error);
    QVERIFY2(error.isEmpty(), qPrintable(error));
    QCOMPARE(got.size(), 1);
    QCOMPARE(got[0].fields.size(), 8);
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("WK4/testLotus123-lotusftp.wk4")));
    QVERIFY(r.ok());
    QCOMPARE(r.file->formatName(), QStringLiteral("Lotus"));
    Result<std::unique_ptr<Table>> t = r.file->openTable(r.file->tableNames().value(0));
    QVERIFY(t.ok());
    // Row 1 is empty, so the columns are named by letter; row 2 from column
    // C holds the headings, rows 3 to 12 the ten employees.
    const QList<Row> rows = t.value->readRows(0, int(t.value->rowCount())).value;
    QCOMPARE(got[0].fields.value(2), QStringLiteral("C"));
    QCOMPARE(rows.size(), 12);
    QCOMPARE(rows[11].value(3).toString(), QStringLiteral("Donovan"));
    QCOMPARE(rows[1].value(2).toString(), QStringLiteral("EMPID"));
    QCOMPARE(rows[1].value(7).toString(), QStringLiteral("DEPTNUM"));
    QCOMPARE(rows[2].value(2).toDouble(), 67543.0);
    QCOMPARE(rows[2].value(3).toString(), QStringLiteral("Mordocs"));
    QCOMPARE(rows[2].value(4).toString(), QStringLiteral("Arthur"));
    QCOMPARE(rows[2].value(5).toDate(), QDate(1988, 8, 13));
    QCOMPARE(rows[2].value(7).toDouble(), 2323.0);
}

QTEST_GUILESS_MAIN(TestSpreadsheets)
#include "tst_spreadsheets.moc"
