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
Q_DECLARE_METATYPE(TableSpec)

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

// A table with its memo file (when memos is not empty) in dir; the records'
// memo cells name the memos by number ("#0", "#1", ...), replaced here by
// their block numbers.
QString tableWithMemos(TestDir &dir, TableSpec tableLayout, const QList<QByteArray> &memos)
{
    const bool visualFoxPro = tableLayout.version == 0x30 || tableLayout.version == 0x31;
    const bool foxPro = visualFoxPro || tableLayout.version == 0xF5;
    QList<int> blocks;
    if (!memos.isEmpty()) {
        const QByteArray memoFile = foxPro ? dbfsamples::foxProMemo(memos, 64, &blocks)
            : tableLayout.version == 0x83  ? dbfsamples::dbaseIIIMemo(memos, &blocks)
                                           : dbfsamples::dbaseIVMemo(memos, 512, &blocks);
        dir.createFile(foxPro ? QStringLiteral("t.fpt") : QStringLiteral("t.dbt"), memoFile);
    }
    for (QList<QByteArray> &record : tableLayout.records) {
        for (int c = 0; c < record.size(); ++c) {
            if (!record[c].startsWith('#'))
                continue;
            const int block = blocks.value(record[c].mid(1).toInt());
            record[c] = tableLayout.fields[c].length == 4 ? dbfsamples::littleEndian32(quint32(block))
                                                          : dbfsamples::memoPointer(block);
        }
    }
    return dir.createFile(QStringLiteral("t.dbf"), dbfsamples::table(tableLayout));
}

// Every byte from 0x80 up, then some below with a meaning of their own.
QByteArray highBytes()
{
    QByteArray bytes;
    for (int b = 0x80; b < 0x100; ++b)
        bytes += char(b);
    return bytes + "\x1A\x7F\x1C,\"\r\n";
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
    void csvFromRecordBytes_data();
    void csvFromRecordBytes();
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
    QByteArray expectedCsv;
    for (const qlonglong n : std::as_const(expected))
        expectedCsv += QByteArray::number(n) + "\r\n";
    // Every page of every size agrees with the live records in order, as
    // rows and as CSV.
    for (int pageSize : {1, 3, 7, 50}) {
        QByteArray csv;
        for (qint64 first = 0; first < expected.size(); first += pageSize) {
            const Result<QList<Row>> page = o.table->readRows(first, pageSize);
            QVERIFY(page.ok());
            QCOMPARE(page.value.size(), qMin<qint64>(pageSize, expected.size() - first));
            for (int i = 0; i < page.value.size(); ++i)
                QCOMPARE(page.value[i].value(0).toLongLong(), expected[first + i]);
            QCOMPARE(o.table->appendCsvRows(first, pageSize, csv).value, page.value.size());
        }
        QCOMPARE(csv, expectedCsv);
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

// The CSV made from the records' bytes is the CSV of the rows readRows
// gives, byte for byte; where "expected" is given, it is also that.
void TestDbfReader::csvFromRecordBytes_data()
{
    QTest::addColumn<TableSpec>("tableLayout");
    QTest::addColumn<QList<QByteArray>>("memos");
    QTest::addColumn<QByteArray>("expected");
    using dbfsamples::number;
    using dbfsamples::text;

    TableSpec quoting;
    quoting.fields = {FieldSpec{"T", 'C', 20}, FieldSpec{"M", 'M', 10}};
    quoting.version = 0x8B;
    quoting.records = {{text("say \"hi\", then", 20), "#0"},
                       {text("a,b", 20), "#1"},
                       {text("plain", 20), "#2"},
                       {text("cr", 20), "#3"},
                       {QByteArray("trail\0\0  \0", 11).leftJustified(20, ' '), QByteArray(10, ' ')}};
    QTest::newRow("quotes, commas and line breaks")
        << quoting << QList<QByteArray>{"one\r\ntwo", "lone\nLF, \"q\"", "", "lone\rCR"}
        << QByteArray("T,M\r\n\"say \"\"hi\"\", then\",\"one\r\ntwo\"\r\n\"a,b\",\"lone\nLF, \"\"q\"\"\"\r\n"
                      "plain,\r\ncr,\"lone\rCR\"\r\ntrail,\r\n");

    TableSpec dates;
    dates.fields = {FieldSpec{"D", 'D', 8}};
    for (const char *d : {"20240229", "20230229", "        ", "00000000", "09990101", "2024 1 5", "  2024  ", "20241301"})
        dates.records.append({QByteArray(d)});
    QTest::newRow("empty and impossible dates")
        << dates << QList<QByteArray>{} << QByteArray("D\r\n2024-02-29\r\n\r\n\r\n\r\n0999-01-01\r\n2024-01-05\r\n\r\n\r\n");

    TableSpec numbers;
    numbers.fields = {FieldSpec{"P", 'N', 12, 2}, FieldSpec{"Q", 'N', 20}, FieldSpec{"F", 'F', 10, 3}};
    const QList<QList<QByteArray>> numberCells = {
        {"-0.00", "007", "1.500"},        {"100000.00", "100000", ".5"},   {"***", "-0", "-.5"},
        {"", "+5", "1e3"},                {"1.", "12345678901234567890", "0.0001"},
        {"12345.67", "-", "1 2"},         {"99999999.99", "123456789012345678", "nan"}};
    for (const QList<QByteArray> &cells : numberCells)
        numbers.records.append({number(cells[0], 12), number(cells[1], 20), number(cells[2], 10)});
    QTest::newRow("numbers of every shape")
        << numbers << QList<QByteArray>{}
        << QByteArray("P,Q,F\r\n0,7,1.5\r\n1e+05,100000,0.5\r\n,0,-0.5\r\n,5,1000\r\n1,12345678901234567000,1e-04\r\n"
                      "12345.67,,\r\n99999999.99,123456789012345678,nan\r\n");

    TableSpec deleted;
    deleted.fields = {FieldSpec{"N", 'N', 3}, FieldSpec{"L", 'L', 1}};
    for (int i = 0; i < 6; ++i)
        deleted.records.append({number(QByteArray::number(i), 3), QByteArray(1, "TtYFn?"[i])});
    deleted.deleted = {0, 2, 3};
    QTest::newRow("deleted records and booleans")
        << deleted << QList<QByteArray>{} << QByteArray("N,L\r\n1,True\r\n4,False\r\n5,\r\n");

    // One row per code page: every high byte in a text field and in a memo.
    const QList<QPair<quint8, const char *>> codePages = {
        {0x03, "windows-1252"}, {0xC9, "windows-1251"}, {0xC8, "windows-1250"}, {0x01, "DOS 437"},
        {0x02, "DOS 850"},      {0x65, "DOS 866"},      {0x6A, "DOS 737"},      {0x04, "Mac Roman"},
        {0x7D, "windows-1255"}, {0x13, "Shift_JIS"},    {0x4D, "GBK"},          {0x00, "no mark"}};
    for (const auto &[mark, name] : codePages) {
        TableSpec tableLayout;
        tableLayout.version = 0x8B;
        tableLayout.codePage = mark;
        tableLayout.fields = {FieldSpec{"T", 'C', 200}, FieldSpec{"M", 'M', 10}};
        tableLayout.records = {{text(highBytes(), 200), "#0"}, {text("caf\xc3\xa9 ok", 200), "#1"}};
        QTest::newRow(qPrintable(QStringLiteral("code page %1").arg(QLatin1String(name))))
            << tableLayout << QList<QByteArray>{highBytes(), "\xEF\xBB\xBF" "bom"} << QByteArray();
    }

    TableSpec foxPro;
    foxPro.version = 0x30;
    foxPro.fields = {FieldSpec{"I", 'I', 4},        FieldSpec{"Y", 'Y', 8},   FieldSpec{"T", 'T', 8},
                     FieldSpec{"B", 'B', 8},        FieldSpec{"M", 'M', 4},   FieldSpec{"BIN", 'M', 4, 0, 0x04},
                     FieldSpec{"G", 'G', 4},        FieldSpec{"_NullFlags", '0', 1, 0, 0x05}};
    QByteArray money(8, '\0');
    qToLittleEndian(qint64(-123456), money.data());
    QByteArray when(8, '\0');
    qToLittleEndian(qint32(QDate(2024, 2, 29).toJulianDay()), when.data());
    qToLittleEndian(qint32(5000), when.data() + 4);
    QByteArray ratio(8, '\0');
    qToLittleEndian(0.1, ratio.data());
    foxPro.records = {{dbfsamples::littleEndian32(quint32(-42)), money, when, ratio, "#0", "#1", "#2", QByteArray(1, '\0')},
                      {dbfsamples::littleEndian32(7), QByteArray(8, '\0'), QByteArray(8, '\0'), QByteArray(8, '\0'),
                       QByteArray(4, '\0'), QByteArray(4, '\0'), QByteArray(4, '\0'), QByteArray(1, '\0')}};
    QTest::newRow("visual foxpro types")
        << foxPro << QList<QByteArray>{"memo, text", QByteArray("\x00\x01\xff", 3), "OLE"}
        << QByteArray("I,Y,T,B,M,BIN,G\r\n-42,-12.3456,2024-02-29T00:00:05,0.1,\"memo, text\",0001ff,4f4c45\r\n"
                      "7,0,,0,,,\r\n");

    TableSpec dbase3;
    dbase3.version = 0x83;
    dbase3.fields = {FieldSpec{"M", 'M', 10}};
    dbase3.records = {{"#0"}, {"#1"}, {dbfsamples::memoPointer(99999)}, {QByteArray("      1x  ")}};
    QTest::newRow("dBASE III memos and pointers that lead nowhere")
        << dbase3 << QList<QByteArray>{QByteArray(3000, 'x'), "end\r\n"}
        << QByteArray("M\r\n" + QByteArray(3000, 'x') + "\r\n\"end\r\n\"\r\n\r\n\r\n");

    TableSpec noMemoFile;
    noMemoFile.version = 0x8B;
    noMemoFile.fields = {FieldSpec{"N", 'N', 2}, FieldSpec{"M", 'M', 10}};
    noMemoFile.records = {{number("1", 2), dbfsamples::memoPointer(1)}};
    QTest::newRow("memo file missing") << noMemoFile << QList<QByteArray>{} << QByteArray("N,M\r\n1,\r\n");
}

void TestDbfReader::csvFromRecordBytes()
{
    QFETCH(TableSpec, tableLayout);
    QFETCH(QList<QByteArray>, memos);
    QFETCH(QByteArray, expected);
    TestDir dir;
    Opened o = openFirstTable(tableWithMemos(dir, tableLayout, memos));
    QVERIFY2(o.table, qPrintable(o.error));
    QByteArray header;
    for (const Field &field : o.table->fields())
        header += (header.isEmpty() ? "" : ",") + field.name.toUtf8();
    header += "\r\n";

    QByteArray fromBytes = header;
    const Result<qint64> quick = o.table->appendCsvRows(0, o.table->rowCount() + 5, fromBytes);
    QVERIFY2(quick.ok(), qPrintable(quick.errorString));
    QCOMPARE(quick.value, o.table->rowCount());
    QByteArray fromRows = header;
    const Result<qint64> typed = o.table->Table::appendCsvRows(0, o.table->rowCount() + 5, fromRows);
    QVERIFY(typed.ok());
    QCOMPARE(typed.value, o.table->rowCount());
    QCOMPARE(fromBytes, fromRows);
    if (!expected.isEmpty())
        QCOMPARE(fromBytes, expected);

    // Row by row from any row on, the same records.
    QByteArray oneByOne = header;
    for (qint64 row = 0; row < o.table->rowCount(); ++row)
        QCOMPARE(o.table->appendCsvRows(row, 1, oneByOne).value, 1);
    QCOMPARE(oneByOne, fromBytes);
    QByteArray past;
    QCOMPARE(o.table->appendCsvRows(o.table->rowCount(), 10, past).value, 0);
    QCOMPARE(o.table->appendCsvRows(-1, 10, past).value, 0);
    QVERIFY(past.isEmpty());
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
