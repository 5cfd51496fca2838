#include "DbfSamples.h"
#include "Fixtures.h"
#include "OpenedTable.h"
#include "TestDir.h"

#include "core/platform/tables/DbfIndexTags.h"
#include "core/platform/tables/DbfReader.h"
#include "core/platform/tables/TableReader.h"

#include <QBuffer>
#include <QDate>
#include <QDateTime>
#include <QFileInfo>
#include <QTest>
#include <QtEndian>

using namespace tarnby::tables;
using dbfsamples::FieldSpec;
using dbfsamples::TableSpec;

namespace {

using Opened = OpenedTable;

int fieldIndex(const Table &table, const QString &name)
{
    const QList<Field> fields = table.fields();
    for (int i = 0; i < fields.size(); ++i) {
        if (fields[i].name == name)
            return i;
    }
    return -1;
}

// Three text records, one number, for the edge cases that spoil one detail.
TableSpec plainSpec()
{
    TableSpec tableLayout;
    tableLayout.fields = {FieldSpec{"NAME", 'C', 12}, FieldSpec{"QTY", 'N', 5}};
    tableLayout.records = {{dbfsamples::text("alpha", 12), dbfsamples::number("1", 5)},
                    {dbfsamples::text("beta", 12), dbfsamples::number("2", 5)},
                    {dbfsamples::text("gamma", 12), dbfsamples::number("3", 5)}};
    return tableLayout;
}

} // namespace

class TestDbfReader : public QObject
{
    Q_OBJECT
private slots:
    void fixtures_data();
    void fixtures();
    void fixtureFirstRecords();
    void missingMemoFileLeavesMemosEmpty();
    void hostileHeaders_data();
    void hostileHeaders();
    void malformedFixturesFailWithMessage();
    void deletedRecordsAreSkipped_data();
    void deletedRecordsAreSkipped();
    void memoLayouts_data();
    void memoLayouts();
    void hostileMemoPointers_data();
    void hostileMemoPointers();
    void visualFoxProTypes();
    void codePages_data();
    void codePages();
    void valuesOfEachType();
    void indexTagNames_data();
    void indexTagNames();
    void cdxLeafLoopEnds();
    void indexFileBesideTable();
    void indexKeys_data();
    void indexKeys();
    void tagKeysBesideTable_data();
    void tagKeysBesideTable();
    void companionFilesMatchedWithoutCase();
};

void TestDbfReader::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("format");
    QTest::addColumn<qint64>("rows");
    QTest::addColumn<int>("fieldCount");
    // From the corpus's provenance notes; -1 where they give no number.
    QTest::newRow("visual foxpro cp1251") << "DBF/cp1251.dbf" << "FoxPro" << qint64(4) << 2;
    QTest::newRow("dbase III no memo") << "DBF/dbase_03.dbf" << "dBASE" << qint64(14) << 31;
    QTest::newRow("visual foxpro with fpt") << "DBF/dbase_30.dbf" << "FoxPro" << qint64(34) << -1;
    QTest::newRow("dbase III with dbt") << "DBF/dbase_83.dbf" << "dBASE" << qint64(67) << 15;
    QTest::newRow("dbase IV with dbt") << "DBF/dbase_8b.dbf" << "dBASE" << qint64(10) << 6;
    QTest::newRow("foxbase utf-8") << "DBF/testDBF.dbf" << "dBASE" << qint64(20) << -1;
}

void TestDbfReader::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, format);
    QFETCH(qint64, rows);
    QFETCH(int, fieldCount);
    Opened o = openFirstTable(fixtures::path(file));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.file.file->formatName(), format);
    QCOMPARE(o.file.file->tableNames(), QStringList{QFileInfo(file).completeBaseName()});
    QCOMPARE(o.table->rowCount(), rows);
    if (fieldCount >= 0)
        QCOMPARE(o.table->fields().size(), fieldCount);
    const QList<Row> all = allRows(*o.table);
    QCOMPARE(all.size(), rows);
    for (const Row &row : all)
        QCOMPARE(row.size(), o.table->fields().size());
}

void TestDbfReader::fixtureFirstRecords()
{
    REQUIRE_FIXTURES();
    {
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DBF/dbase_83.dbf")));
        QVERIFY2(o.table, qPrintable(o.error));
        const Row first = o.table->readRows(0, 1).value.value(0);
        QCOMPARE(first.value(fieldIndex(*o.table, "ID")).toLongLong(), 87);
        QCOMPARE(first.value(fieldIndex(*o.table, "NAME")).toString(), QStringLiteral("Assorted Petits Fours"));
        // The record's bytes (and the source's expected record) put 5.51 in
        // WEIGHT; PRICE holds 0.00.
        QCOMPARE(first.value(fieldIndex(*o.table, "PRICE")).toDouble(), 0.0);
        QCOMPARE(first.value(fieldIndex(*o.table, "WEIGHT")).toDouble(), 5.51);
        QCOMPARE(first.value(fieldIndex(*o.table, "TAXABLE")), QVariant(true));
        // The memo whole, its line ends as stored, up to the end mark.
        const QString memo = first.value(fieldIndex(*o.table, "DESC")).toString();
        QVERIFY(memo.startsWith("Our Original assortment...a little taste of heaven for everyone.  Let us\r\nselect"));
        QVERIFY(memo.endsWith("Chocolate Hazelnut,\r\nGrand Orange, Plum Squares, Milk chocolate squares, and Raspberry Blanc."));
        QCOMPARE(o.table->fields().value(fieldIndex(*o.table, "DESC")).type, FieldType::Memo);
    }
    {
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DBF/dbase_8b.dbf")));
        QVERIFY2(o.table, qPrintable(o.error));
        const QList<Field> fields = o.table->fields();
        QStringList shape;
        for (const Field &f : fields)
            shape << QStringLiteral("%1 %2 %3").arg(f.name).arg(f.type).arg(f.size);
        QCOMPARE(shape, QStringList({"CHARACTER 10 100", "NUMERICAL 7 20", "DATE 8 8", "LOGICAL 1 1",
                                     "FLOAT 7 20", "MEMO 12 10"}));
        const Row first = o.table->readRows(0, 1).value.value(0);
        QCOMPARE(first.value(0).toString(), QStringLiteral("One"));
        QVERIFY(first.value(5).toString().startsWith("First memo"));
        QCOMPARE(first.value(2).typeId(), QMetaType::QDate);
        QCOMPARE(first.value(3).typeId(), QMetaType::Bool);
    }
    {
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DBF/testDBF.dbf")));
        QVERIFY2(o.table, qPrintable(o.error));
        const QList<Row> rows = allRows(*o.table);
        QVERIFY(rows.value(0).value(0).toString().startsWith("Whan that aprill"));
        // UTF-8 text without a code page mark: Chinese and Arabic letters
        // come through, and no byte is replaced.
        bool chinese = false;
        bool arabic = false;
        for (const Row &row : rows) {
            for (const QVariant &v : row) {
                const QString s = v.toString();
                QVERIFY(!s.contains(QChar::ReplacementCharacter));
                for (const QChar c : s) {
                    chinese |= c.unicode() >= 0x4E00 && c.unicode() <= 0x9FFF;
                    arabic |= c.unicode() >= 0x0600 && c.unicode() <= 0x06FF;
                }
            }
        }
        QVERIFY(chinese);
        QVERIFY(arabic);
    }
    {
        // Windows-1251 from the code page mark: every letter of the names
        // is Cyrillic.
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DBF/cp1251.dbf")));
        QVERIFY2(o.table, qPrintable(o.error));
        for (const Row &row : allRows(*o.table)) {
            const QString name = row.value(1).toString();
            QVERIFY(!name.isEmpty());
            for (const QChar c : name) {
                if (c.isLetter())
                    QVERIFY2(c.script() == QChar::Script_Cyrillic, qPrintable(name));
            }
        }
    }
    {
        // FoxPro memos from the .fpt: at least one non-empty memo, all text.
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DBF/dbase_30.dbf")));
        QVERIFY2(o.table, qPrintable(o.error));
        QList<int> memoColumns;
        const QList<Field> fields = o.table->fields();
        for (int i = 0; i < fields.size(); ++i) {
            if (fields[i].type == FieldType::Memo)
                memoColumns << i;
        }
        QVERIFY(memoColumns.size() > 1);
        int nonEmpty = 0;
        for (const Row &row : allRows(*o.table)) {
            for (int c : std::as_const(memoColumns)) {
                if (!row.value(c).toString().isEmpty()) {
                    QCOMPARE(row.value(c).typeId(), QMetaType::QString);
                    ++nonEmpty;
                }
            }
        }
        QVERIFY(nonEmpty > 0);
    }
}

void TestDbfReader::missingMemoFileLeavesMemosEmpty()
{
    REQUIRE_FIXTURES();
    Opened o = openFirstTable(fixtures::path(QStringLiteral("malformed/DBF/dbase_83_missing_memo.dbf")));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->rowCount(), 67);
    const Row first = o.table->readRows(0, 1).value.value(0);
    QCOMPARE(first.value(fieldIndex(*o.table, "ID")).toLongLong(), 87);
    QVERIFY(first.value(fieldIndex(*o.table, "DESC")).toString().isEmpty());
}

void TestDbfReader::hostileHeaders_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");

    const QByteArray good = dbfsamples::table(plainSpec());
    QByteArray headerTooLong = good;
    qToLittleEndian(quint16(60000), headerTooLong.data() + 8);
    QTest::newRow("header length beyond the file") << headerTooLong << "its header claims 60000 bytes";

    TableSpec countSpec = plainSpec();
    countSpec.announcedRecords = 4000000000LL;
    QTest::newRow("record count beyond the file") << dbfsamples::table(countSpec)
                                                  << "announces 4000000000 records of 18 bytes, but the file holds only 3";

    QByteArray shortRecords = good;
    qToLittleEndian(quint16(5), shortRecords.data() + 10);
    QTest::newRow("record length shorter than the fields") << shortRecords << "its fields need 18 bytes a record";

    QByteArray zeroRecords = good;
    qToLittleEndian(quint16(0), zeroRecords.data() + 10);
    QTest::newRow("record length zero") << zeroRecords << "is not a dBASE table";

    TableSpec wide;
    for (int i = 0; i < 300; ++i)
        wide.fields.append(FieldSpec{"F" + QByteArray::number(i), 'C', 1});
    QTest::newRow("field count over 255") << dbfsamples::table(wide) << "more than 255 fields";

    TableSpec badLogical = plainSpec();
    badLogical.fields[1] = FieldSpec{"FLAG", 'L', 5};
    QTest::newRow("logical field five bytes wide") << dbfsamples::table(badLogical) << "of type L is 5 bytes long";

    TableSpec badMemo = plainSpec();
    badMemo.fields[1] = FieldSpec{"NOTES", 'M', 7};
    QTest::newRow("memo pointer seven bytes wide") << dbfsamples::table(badMemo) << "memo field \"NOTES\" is 7 bytes";

    QByteArray noFields = good.left(32) + '\x0D';
    qToLittleEndian(quint16(33), noFields.data() + 8);
    QTest::newRow("no fields") << noFields << "declares no fields";

    QTest::newRow("empty file") << QByteArray() << "is not a dBASE table";
    QTest::newRow("text file") << QByteArray("Name,Quantity\r\nalpha,1\r\nbeta,2\r\n") << "is not a dBASE table";

    QByteArray dbase7 = good.left(32);
    dbase7[0] = char(0x8C);
    QTest::newRow("dbase 7") << dbase7 + QByteArray(100, '\0') << "dBASE 7";
}

void TestDbfReader::hostileHeaders()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("hostile.dbf"), bytes));
    QVERIFY(!r.ok());
    QVERIFY(!r.file);
    QVERIFY2(r.errorString.contains(message), qPrintable(r.errorString));
}

void TestDbfReader::malformedFixturesFailWithMessage()
{
    REQUIRE_FIXTURES();
    // 150 bytes claiming 92 records of 3727 bytes behind a header of 1025.
    const OpenResult r = openTableFile(fixtures::path(QStringLiteral("malformed/DBF/biblio.dbf")));
    QVERIFY(!r.ok());
    QCOMPARE(r.status, OpenStatus::Failed);
    QCOMPARE(r.errorString, QStringLiteral("The dBASE table \"biblio\" is damaged: its header claims 1025 bytes, "
                                           "but the file holds only 150."));
}

void TestDbfReader::deletedRecordsAreSkipped_data()
{
    QTest::addColumn<QList<int>>("deleted");
    QTest::newRow("none") << QList<int>{};
    QTest::newRow("first") << QList<int>{0};
    QTest::newRow("last") << QList<int>{49};
    QTest::newRow("a run in the middle") << QList<int>{10, 11, 12, 13, 14, 15};
    QTest::newRow("every other") << [] { QList<int> l; for (int i = 0; i < 50; i += 2) l << i; return l; }();
    QTest::newRow("all") << [] { QList<int> l; for (int i = 0; i < 50; ++i) l << i; return l; }();
}

void TestDbfReader::deletedRecordsAreSkipped()
{
    QFETCH(QList<int>, deleted);
    TableSpec tableLayout;
    tableLayout.fields = {FieldSpec{"N", 'N', 4}};
    for (int i = 0; i < 50; ++i)
        tableLayout.records.append({dbfsamples::number(QByteArray::number(i), 4)});
    tableLayout.deleted = deleted;
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("del.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    QList<qlonglong> expected;
    for (int i = 0; i < 50; ++i) {
        if (!deleted.contains(i))
            expected << i;
    }
    QCOMPARE(o.table->rowCount(), expected.size());
    // Every page of every size agrees with the live records in order.
    for (int pageSize : {1, 3, 7, 50}) {
        for (qint64 first = 0; first < expected.size(); first += pageSize) {
            const Result<QList<Row>> page = o.table->readRows(first, pageSize);
            QVERIFY(page.ok());
            QCOMPARE(page.value.size(), qMin<qint64>(pageSize, expected.size() - first));
            for (int i = 0; i < page.value.size(); ++i)
                QCOMPARE(page.value[i].value(0).toLongLong(), expected[first + i]);
        }
    }
    QVERIFY(o.table->readRows(expected.size(), 10).value.isEmpty());
    QVERIFY(o.table->readRows(-5, 10).value.isEmpty());
}

void TestDbfReader::memoLayouts_data()
{
    QTest::addColumn<quint8>("version");
    QTest::addColumn<QString>("memoExtension");
    QTest::addColumn<int>("layout"); // 3 dBASE III, 4 dBASE IV, 0 FoxPro
    QTest::addColumn<int>("blockSize");
    QTest::newRow("dbase III 512") << quint8(0x83) << "dbt" << 3 << 512;
    QTest::newRow("dbase IV 512") << quint8(0x8B) << "dbt" << 4 << 512;
    QTest::newRow("dbase IV 1024") << quint8(0x8B) << "dbt" << 4 << 1024;
    QTest::newRow("foxpro 64") << quint8(0xF5) << "fpt" << 0 << 64;
    QTest::newRow("foxpro 32") << quint8(0xF5) << "fpt" << 0 << 32;
}

void TestDbfReader::memoLayouts()
{
    QFETCH(quint8, version);
    QFETCH(QString, memoExtension);
    QFETCH(int, layout);
    QFETCH(int, blockSize);
    const QList<QByteArray> memos = {QByteArray("short"), QByteArray(3000, 'x') + "end",
                                     QByteArray("line one\r\nline two"), QByteArray()};
    QList<int> blocks;
    QByteArray memoFile;
    if (layout == 3)
        memoFile = dbfsamples::dbaseIIIMemo(memos, &blocks);
    else if (layout == 4)
        memoFile = dbfsamples::dbaseIVMemo(memos, blockSize, &blocks);
    else
        memoFile = dbfsamples::foxProMemo(memos, blockSize, &blocks);
    TableSpec tableLayout;
    tableLayout.version = version;
    tableLayout.fields = {FieldSpec{"ID", 'N', 3}, FieldSpec{"NOTES", 'M', 10}};
    for (int i = 0; i < memos.size(); ++i)
        tableLayout.records.append({dbfsamples::number(QByteArray::number(i), 3), dbfsamples::memoPointer(blocks[i])});
    tableLayout.records.append({dbfsamples::number("9", 3), QByteArray(10, ' ')}); // no memo
    TestDir dir;
    dir.createFile(QStringLiteral("notes.") + memoExtension, memoFile);
    Opened o = openFirstTable(dir.createFile(QStringLiteral("notes.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    const QList<Row> rows = allRows(*o.table);
    QCOMPARE(rows.size(), memos.size() + 1);
    for (int i = 0; i < memos.size(); ++i)
        QCOMPARE(rows[i].value(1).toString(), QString::fromLatin1(memos[i]));
    QVERIFY(rows.last().value(1).isNull());
}

void TestDbfReader::hostileMemoPointers_data()
{
    QTest::addColumn<int>("layout");
    QTest::addColumn<QByteArray>("memoFile");
    QTest::addColumn<QByteArray>("pointer");
    QTest::addColumn<QString>("expected");

    QTest::newRow("block beyond the file") << 3 << dbfsamples::dbaseIIIMemo({"a"}, nullptr)
                                           << dbfsamples::memoPointer(999999) << QString();
    QTest::newRow("block number overflowing") << 3 << dbfsamples::dbaseIIIMemo({"a"}, nullptr)
                                              << QByteArray("9999999999") << QString();
    QTest::newRow("digits mixed with letters") << 3 << dbfsamples::dbaseIIIMemo({"a"}, nullptr)
                                               << QByteArray("      1x  ") << QString();
    // Without an end mark the memo runs to the file's end and no further.
    QByteArray unterminated(512, '\0');
    unterminated += QByteArray(700, 'q');
    QTest::newRow("dbase III memo without end mark") << 3 << unterminated << dbfsamples::memoPointer(1)
                                                     << QString(700, QLatin1Char('q'));
    // A length that runs past the end gives what is there.
    QByteArray fox = dbfsamples::foxProMemo({"hello"}, 64, nullptr);
    qToBigEndian(quint32(0x7FFFFFFF), fox.data() + 512 + 4);
    QTest::newRow("foxpro length beyond the file") << 0 << fox << dbfsamples::memoPointer(8)
                                                   << QString(QStringLiteral("hello")).leftJustified(56, QChar(0));
    QByteArray iv = dbfsamples::dbaseIVMemo({"hello"}, 512, nullptr);
    qToLittleEndian(quint32(3), iv.data() + 512 + 4);
    QTest::newRow("dbase IV length shorter than its prefix") << 4 << iv << dbfsamples::memoPointer(1) << QString();
    QByteArray zeroBlock = dbfsamples::foxProMemo({"hello"}, 64, nullptr);
    qToBigEndian(quint16(0), zeroBlock.data() + 6);
    QTest::newRow("foxpro block size zero") << 0 << zeroBlock << dbfsamples::memoPointer(8) << QStringLiteral("hello");
}

void TestDbfReader::hostileMemoPointers()
{
    QFETCH(int, layout);
    QFETCH(QByteArray, memoFile);
    QFETCH(QByteArray, pointer);
    QFETCH(QString, expected);
    TableSpec tableLayout;
    tableLayout.version = layout == 3 ? 0x83 : layout == 4 ? 0x8B : 0xF5;
    tableLayout.fields = {FieldSpec{"NOTES", 'M', 10}};
    tableLayout.records = {{pointer}};
    TestDir dir;
    dir.createFile(layout == 0 ? QStringLiteral("m.fpt") : QStringLiteral("m.dbt"), memoFile);
    Opened o = openFirstTable(dir.createFile(QStringLiteral("m.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    const Result<QList<Row>> rows = o.table->readRows(0, 1);
    QVERIFY(rows.ok());
    QCOMPARE(rows.value.value(0).value(0).toString(), expected);
}

void TestDbfReader::visualFoxProTypes()
{
    TableSpec tableLayout;
    tableLayout.version = 0x30;
    tableLayout.fields = {FieldSpec{"COUNT", 'I', 4},   FieldSpec{"PRICE", 'Y', 8},
                   FieldSpec{"WHEN", 'T', 8},    FieldSpec{"RATIO", 'B', 8},
                   FieldSpec{"NOTE", 'M', 4},    FieldSpec{"_NullFlags", '0', 1, 0, 0x05}};
    QByteArray count(4, '\0');
    qToLittleEndian(qint32(-42), count.data());
    QByteArray price(8, '\0');
    qToLittleEndian(qint64(123456), price.data()); // 12.3456
    QByteArray when(8, '\0');
    qToLittleEndian(qint32(QDate(2024, 2, 29).toJulianDay()), when.data());
    qToLittleEndian(qint32((10 * 3600 + 30 * 60) * 1000), when.data() + 4);
    QByteArray ratio(8, '\0');
    qToLittleEndian(0.25, ratio.data());
    QList<int> blocks;
    const QByteArray memo = dbfsamples::foxProMemo({"visual memo"}, 64, &blocks);
    tableLayout.records = {{count, price, when, ratio, dbfsamples::littleEndian32(quint32(blocks[0])), QByteArray(1, '\0')}};
    TestDir dir;
    dir.createFile(QStringLiteral("vfp.FPT"), memo);
    Opened o = openFirstTable(dir.createFile(QStringLiteral("vfp.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    QStringList shape;
    for (const Field &f : o.table->fields())
        shape << QStringLiteral("%1 %2").arg(f.name).arg(f.type);
    // The null flags column is the format's own and not shown.
    QCOMPARE(shape, QStringList({"COUNT 4", "PRICE 5", "WHEN 8", "RATIO 7", "NOTE 12"}));
    const Row row = o.table->readRows(0, 1).value.value(0);
    QCOMPARE(row.value(0).toLongLong(), -42);
    QCOMPARE(row.value(1).toDouble(), 12.3456);
    QCOMPARE(row.value(2).toDateTime(), QDateTime(QDate(2024, 2, 29), QTime(10, 30)));
    QCOMPARE(row.value(3).toDouble(), 0.25);
    QCOMPARE(row.value(4).toString(), QStringLiteral("visual memo"));
}

void TestDbfReader::codePages_data()
{
    QTest::addColumn<quint8>("mark");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("expected");
    QTest::newRow("windows-1251") << quint8(0xC9) << QByteArray("\xcf\xf0\xe8\xe2\xe5\xf2") << QStringLiteral("Привет");
    QTest::newRow("windows-1252") << quint8(0x03) << QByteArray("caf\xe9") << QStringLiteral("café");
    QTest::newRow("dos 437") << quint8(0x01) << QByteArray("caf\x82") << QStringLiteral("café");
    QTest::newRow("dos 866") << quint8(0x65) << QByteArray("\xa4\xa0") << QStringLiteral("да");
    QTest::newRow("no mark, utf-8") << quint8(0) << QByteArray("caf\xc3\xa9") << QStringLiteral("café");
    QTest::newRow("no mark, not utf-8") << quint8(0) << QByteArray("caf\xe9") << QStringLiteral("café");
}

void TestDbfReader::codePages()
{
    QFETCH(quint8, mark);
    QFETCH(QByteArray, bytes);
    QFETCH(QString, expected);
    TableSpec tableLayout;
    tableLayout.codePage = mark;
    tableLayout.fields = {FieldSpec{"T", 'C', 20}};
    tableLayout.records = {{dbfsamples::text(bytes, 20)}};
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("cp.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->readRows(0, 1).value.value(0).value(0).toString(), expected);
}

void TestDbfReader::valuesOfEachType()
{
    TableSpec tableLayout;
    tableLayout.fields = {FieldSpec{"N0", 'N', 6},     FieldSpec{"N2", 'N', 8, 2}, FieldSpec{"D", 'D', 8},
                   FieldSpec{"L", 'L', 1},      FieldSpec{"C", 'C', 300}};
    tableLayout.records = {
        {dbfsamples::number("-17", 6), dbfsamples::number("3.25", 8), QByteArray("20240131"), QByteArray("T"),
         dbfsamples::text("x", 299) + "y"},
        {QByteArray(6, ' '), dbfsamples::number("*****", 8), QByteArray(8, ' '), QByteArray("?"),
         QByteArray(300, ' ')},
        {dbfsamples::number("12", 6), dbfsamples::number("1e3", 8), QByteArray("20241399"), QByteArray("n"),
         dbfsamples::text(" lead", 300)},
    };
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("types.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    // A character field of 300 keeps its length's high byte in the decimals.
    QCOMPARE(o.table->fields().value(4).size, 300);
    const QList<Row> rows = allRows(*o.table);
    QCOMPARE(rows.size(), 3);
    QCOMPARE(rows[0].value(0), QVariant(qlonglong(-17)));
    QCOMPARE(rows[0].value(1), QVariant(3.25));
    QCOMPARE(rows[0].value(2), QVariant(QDate(2024, 1, 31)));
    QCOMPARE(rows[0].value(3), QVariant(true));
    QCOMPARE(rows[0].value(4).toString().size(), 300);
    // Blanks, overflow stars, "?" and impossible dates are null.
    for (int c = 0; c < 4; ++c)
        QVERIFY2(!rows[1].value(c).isValid(), qPrintable(QString::number(c)));
    QCOMPARE(rows[1].value(4).toString(), QString());
    QCOMPARE(rows[2].value(1), QVariant(1000.0));
    QVERIFY(!rows[2].value(2).isValid());
    QCOMPARE(rows[2].value(3), QVariant(false));
    QCOMPARE(rows[2].value(4).toString(), QStringLiteral(" lead"));
}

void TestDbfReader::indexTagNames_data()
{
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QStringList>("tags");
    QTest::newRow("mdx one") << "mdx" << QStringList{"NAME"};
    QTest::newRow("mdx several") << "mdx" << QStringList{"NAME", "QTY", "NAME_QTY", "ABCDEFGHIJ"};
    QTest::newRow("cdx one") << "cdx" << QStringList{"NAME"};
    QTest::newRow("cdx several") << "cdx" << QStringList{"NAME", "QTY", "NAME_QTY", "ABCDEFGHIJ"};
}

void TestDbfReader::indexTagNames()
{
    QFETCH(QString, kind);
    QFETCH(QStringList, tags);
    QByteArray bytes = kind == QLatin1String("mdx") ? dbfsamples::mdxIndex(tags) : dbfsamples::cdxIndex(tags);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QCOMPARE(kind == QLatin1String("mdx") ? mdxTagNames(buffer, maxIndexNames) : cdxTagNames(buffer, maxIndexNames),
             tags);
    // Cut short, the file gives what it still holds and nothing made up.
    QByteArray cut = bytes.left(bytes.size() / 2 + 40);
    QBuffer cutBuffer(&cut);
    cutBuffer.open(QIODevice::ReadOnly);
    const QStringList partial = kind == QLatin1String("mdx") ? mdxTagNames(cutBuffer, maxIndexNames)
                                                             : cdxTagNames(cutBuffer, maxIndexNames);
    for (const QString &name : partial)
        QVERIFY(tags.contains(name));
}

void TestDbfReader::cdxLeafLoopEnds()
{
    // The leaf names itself as its right sibling: every name once, then an end.
    QByteArray bytes = dbfsamples::cdxIndex({"A", "B"});
    qToLittleEndian(quint32(1024), bytes.data() + 1024 + 8);
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    QCOMPARE(cdxTagNames(buffer, maxIndexNames), QStringList({"A", "B"}));
    // An interior root pointing at itself.
    qToLittleEndian(quint16(1), bytes.data() + 1024);
    qToBigEndian(quint32(1024), bytes.data() + 1024 + 12 + 10 + 4);
    QCOMPARE(cdxTagNames(buffer, maxIndexNames), QStringList());
}

void TestDbfReader::indexFileBesideTable()
{
    TestDir dir;
    dir.createFile(QStringLiteral("stock.mdx"), dbfsamples::mdxIndex({"NAME", "QTY"}));
    Opened o = openFirstTable(dir.createFile(QStringLiteral("stock.dbf"), dbfsamples::table(plainSpec())));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->indexNames(), QStringList({"NAME", "QTY"}));

    dir.createFile(QStringLiteral("fox.CDX"), dbfsamples::cdxIndex({"CODE"}));
    Opened fox = openFirstTable(dir.createFile(QStringLiteral("fox.dbf"), dbfsamples::table(plainSpec())));
    QVERIFY2(fox.table, qPrintable(fox.error));
    QCOMPARE(fox.table->indexNames(), QStringList({"CODE"}));
}

void TestDbfReader::indexKeys_data()
{
    // Parts as "column" with "i" for without case and "d" for descending.
    QTest::addColumn<QString>("expression");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<QStringList>("parts"); // empty: no key
    QTest::newRow("one field") << "NAME" << false << QStringList{"0"};
    QTest::newRow("field names without case") << "name" << false << QStringList{"0"};
    QTest::newRow("UPPER drops the case") << "UPPER(NAME)" << false << QStringList{"0i"};
    QTest::newRow("fields joined") << "NAME+DTOS(WHEN)" << false << QStringList{"0", "2"};
    QTest::newRow("joined with minus") << "TRIM(NAME)-STR(QTY,10,2)" << false << QStringList{"0", "1"};
    QTest::newRow("alias") << "STOCK->QTY" << false << QStringList{"1"};
    QTest::newRow("blanks around") << " UPPER( NAME ) + QTY " << false << QStringList{"0i", "1"};
    QTest::newRow("descending tag") << "QTY" << true << QStringList{"1d"};
    QTest::newRow("unknown field") << "PRICE" << false << QStringList();
    QTest::newRow("function that changes the order") << "LEFT(NAME,3)" << false << QStringList();
    QTest::newRow("expression in STR's first argument") << "STR(QTY*2,10)" << false << QStringList();
    QTest::newRow("unbalanced") << "UPPER(NAME" << false << QStringList();
    QTest::newRow("closing first") << "NAME)+(QTY" << false << QStringList();
    QTest::newRow("empty") << "" << false << QStringList();
}

void TestDbfReader::indexKeys()
{
    QFETCH(QString, expression);
    QFETCH(bool, descending);
    QFETCH(QStringList, parts);
    const QList<Field> fields = {{"NAME", FieldType::Text, 20}, {"QTY", FieldType::Double, 10}, {"WHEN", FieldType::Date, 8}};
    const std::optional<IndexKey> key = keyOfExpression(expression, fields, descending);
    QStringList got;
    if (key) {
        for (const IndexKey::Part &part : key->parts)
            got << QString::number(part.column) + (part.caseInsensitive ? "i" : "") + (part.descending ? "d" : "");
    }
    QCOMPARE(key.has_value(), !parts.isEmpty());
    QCOMPARE(got, parts);
}

void TestDbfReader::tagKeysBesideTable_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("mdx") << "mdx";
    QTest::newRow("cdx") << "cdx";
}

void TestDbfReader::tagKeysBesideTable()
{
    QFETCH(QString, kind);
    const QList<dbfsamples::TagSpec> tags = {{"BYNAME", "UPPER(NAME)", false}, {"BYQTY", "QTY", true},
                                             {"ODD", "IIF(QTY>1,NAME,'')", false}};
    TestDir dir;
    dir.createFile(QStringLiteral("stock.") + kind,
                   kind == QLatin1String("mdx") ? dbfsamples::mdxIndexWithKeys(tags) : dbfsamples::cdxIndexWithKeys(tags));
    Opened o = openFirstTable(dir.createFile(QStringLiteral("stock.dbf"), dbfsamples::table(plainSpec())));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->indexNames(), QStringList({"BYNAME", "BYQTY", "ODD"}));
    const Result<IndexKey> byName = o.table->indexKey(QStringLiteral("BYNAME"));
    QVERIFY2(byName.ok(), qPrintable(byName.errorString));
    QCOMPARE(byName.value.parts.size(), 1);
    QVERIFY(byName.value.parts[0].caseInsensitive);
    QVERIFY(!byName.value.parts[0].descending);
    const Result<IndexKey> byQty = o.table->indexKey(QStringLiteral("BYQTY"));
    QVERIFY(byQty.ok());
    QVERIFY(byQty.value.parts[0].descending);
    const Result<IndexKey> odd = o.table->indexKey(QStringLiteral("ODD"));
    QVERIFY(!odd.ok());
    QVERIFY(odd.errorString.contains(QLatin1String("IIF(QTY>1,NAME,'')")));
}

void TestDbfReader::companionFilesMatchedWithoutCase()
{
    QList<int> blocks;
    const QByteArray memo = dbfsamples::dbaseIIIMemo({"upper case memo file"}, &blocks);
    TableSpec tableLayout;
    tableLayout.version = 0x83;
    tableLayout.fields = {FieldSpec{"NOTES", 'M', 10}};
    tableLayout.records = {{dbfsamples::memoPointer(blocks[0])}};
    TestDir dir;
    dir.createFile(QStringLiteral("SHOUT.DBT"), memo);
    Opened o = openFirstTable(dir.createFile(QStringLiteral("SHOUT.dbf"), dbfsamples::table(tableLayout)));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->readRows(0, 1).value.value(0).value(0).toString(), QStringLiteral("upper case memo file"));
}

QTEST_GUILESS_MAIN(TestDbfReader)
#include "tst_dbfreader.moc"
