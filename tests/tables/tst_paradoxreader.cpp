#include "Fixtures.h"
#include "OpenedTable.h"
#include "ParadoxSamples.h"
#include "TestDir.h"

#include "core/platform/tables/ParadoxCipher.h"
#include "core/platform/tables/ParadoxReader.h"
#include "core/platform/tables/TableReader.h"

#include <QBuffer>
#include <QDate>
#include <QTest>
#include <QtEndian>

using namespace tarnby::tables;

namespace {

using Opened = OpenedTable;

} // namespace

using paradoxsamples::Sample;
using paradoxsamples::paradoxBcd;
using paradoxsamples::paradoxTable;

class TestParadoxReader : public QObject
{
    Q_OBJECT
private slots:
    void fixtures_data();
    void fixtures();
    void fixtureValues();
    void protectedFixtures_data();
    void protectedFixtures();
    void protectedGeneratedTable_data();
    void protectedGeneratedTable();
    void passwordChecksum_data();
    void passwordChecksum();
    void generatedTableInPages();
    void bcdValues_data();
    void bcdValues();
    void bcdDecimalsBeyondDigits();
    void blockChains_data();
    void blockChains();
    void hostileHeaders_data();
    void hostileHeaders();
    void blobPointers_data();
    void blobPointers();
};

void TestParadoxReader::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<qint64>("rows");
    QTest::addColumn<QStringList>("fields");
    QTest::addColumn<QStringList>("indexes");
    QTest::newRow("paradox 3 keyed, no px") << "DB/STATES.DB" << qint64(53)
                                            << QStringList{"Abv - 10 - 2", "State - 10 - 14", "Zip From - 10 - 3", "Zip To - 10 - 3"}
                                            << QStringList{};
    QTest::newRow("paradox 5 date and time") << "DB/date7.db" << qint64(5)
                                             << QStringList{"DATE - 8 - 4", "TIME - 22 - 4"} << QStringList{};
    QTest::newRow("paradox 5 keyed with memo and px") << "DB/memo.db" << qint64(2)
                                                      << QStringList{"Id - 4 - 4", "MEMO - 12 - 250"}
                                                      << QStringList{"PrimaryKey"};
}

void TestParadoxReader::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(qint64, rows);
    QFETCH(QStringList, fields);
    QFETCH(QStringList, indexes);
    Opened o = openFirstTable(fixtures::path(file));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.file.file->formatName(), QStringLiteral("Paradox"));
    QCOMPARE(o.table->rowCount(), rows);
    QStringList shape;
    for (const Field &f : o.table->fields())
        shape << QStringLiteral("%1 - %2 - %3").arg(f.name).arg(f.type).arg(f.size);
    QCOMPARE(shape, fields);
    QCOMPARE(o.table->indexNames(), indexes);
    QCOMPARE(allRows(*o.table).size(), rows);
}

void TestParadoxReader::fixtureValues()
{
    REQUIRE_FIXTURES();
    {
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DB/STATES.DB")));
        QVERIFY2(o.table, qPrintable(o.error));
        const Row first = o.table->readRows(0, 1).value.value(0);
        QCOMPARE(first, Row({QStringLiteral("AK"), QStringLiteral("Alaska"), QStringLiteral("995"), QStringLiteral("999")}));
    }
    {
        // Record 4 has a null DATE, record 5 a null TIME.
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DB/date7.db")));
        QVERIFY2(o.table, qPrintable(o.error));
        const QList<Row> rows = allRows(*o.table);
        QCOMPARE(rows[0], Row({QDate(2018, 1, 1), QTime(10, 0)}));
        int dates = 0;
        for (const Row &r : rows)
            dates += r.value(0).isValid() ? 1 : 0;
        QCOMPARE(dates, 4);
        QVERIFY(!rows[3].value(0).isValid());
        QVERIFY(!rows[4].value(1).isValid());
    }
    {
        // The 555-character memo comes from the .mb file, the short one from
        // the record.
        Opened o = openFirstTable(fixtures::path(QStringLiteral("DB/memo.db")));
        QVERIFY2(o.table, qPrintable(o.error));
        const QList<Row> rows = allRows(*o.table);
        QCOMPARE(rows[0].value(0).toLongLong(), 1);
        QCOMPARE(rows[0].value(1).toString().size(), 555);
        QVERIFY(rows[0].value(1).toString().startsWith(QStringLiteral("0123456789001234")));
        QCOMPARE(rows[1], Row({qlonglong(2), QStringLiteral("01234567890\n")}));
    }
}

void TestParadoxReader::protectedFixtures_data()
{
    // The three tables share the password "123" (found by trying common
    // ones against their header checksums).
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("status"); // an OpenStatus
    QTest::addColumn<QString>("firstRow");
    QTest::addColumn<QString>("lastRow");
    const int ok = int(OpenStatus::Ok);
    QTest::newRow("paradox 5") << "DB/encrypted.db" << "123" << ok << "1|Value 1" << "4|Last one";
    QTest::newRow("paradox 3.5") << "DB/encrypted35.db" << "123" << ok << "1|Test 1" << "2|Test2";
    QTest::newRow("paradox 4 memos decrypted") << "DB/encryptedmemo.db" << "123" << ok
                                               << " The PARADOX File Structure" << "(This is stale";
    QTest::newRow("no password") << "DB/encrypted.db" << "" << int(OpenStatus::PasswordRequired) << "" << "";
    QTest::newRow("wrong password") << "DB/encrypted.db" << "124" << int(OpenStatus::WrongPassword) << "" << "";
}

void TestParadoxReader::protectedFixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, password);
    QFETCH(int, status);
    QFETCH(QString, firstRow);
    QFETCH(QString, lastRow);
    const OpenResult r = openTableFile(fixtures::path(file), password);
    QCOMPARE(int(r.status), status);
    if (!r.ok())
        return;
    Result<std::unique_ptr<Table>> t = r.file->openTable(r.file->tableNames().value(0));
    QVERIFY(t.ok());
    const QList<Row> rows = allRows(*t.value);
    QVERIFY(!rows.isEmpty());
    auto joined = [](const Row &row) {
        QStringList cells;
        for (const QVariant &v : row)
            cells << v.toString();
        return cells.join(u'|');
    };
    QVERIFY2(joined(rows.first()).startsWith(firstRow), qPrintable(joined(rows.first()).left(80)));
    QVERIFY2(joined(rows.last()).startsWith(lastRow), qPrintable(joined(rows.last()).left(80)));
    // Memos come whole, with no stray bytes from a wrongly keyed chunk.
    for (const Row &row : rows) {
        const QString text = row.value(row.size() - 1).toString();
        QVERIFY(std::none_of(text.cbegin(), text.cend(), [](QChar c) { return c < u' ' && c != u'\n' && c != u'\r' && c != u'\t' && c != u'\f'; }));
    }
}

void TestParadoxReader::protectedGeneratedTable_data()
{
    QTest::addColumn<QString>("password");
    QTest::addColumn<int>("status");
    QTest::newRow("right password") << "Secret" << int(OpenStatus::Ok);
    QTest::newRow("password case matters") << "secret" << int(OpenStatus::WrongPassword);
    QTest::newRow("no password") << "" << int(OpenStatus::PasswordRequired);
}

void TestParadoxReader::protectedGeneratedTable()
{
    QFETCH(QString, password);
    QFETCH(int, status);
    // Eleven 1 KB blocks of four chunks each, encrypted here chunk by chunk
    // with each chunk's place in its block and its block's number.
    Sample s;
    s.records = 31;
    s.perBlock = 3;
    QByteArray bytes = paradoxTable(s);
    const quint32 checksum = paradoxPasswordChecksum("Secret");
    qToLittleEndian(checksum, bytes.data() + 0x5C);
    constexpr int headerSize = 2048;
    constexpr int blockSize = 1024;
    for (qsizetype at = headerSize; at < bytes.size(); at += 256) {
        const qsizetype block = (at - headerSize) / blockSize + 1;
        const qsizetype chunk = (at - headerSize) % blockSize / 256;
        encryptParadoxChunk(reinterpret_cast<uchar *>(bytes.data()) + at, checksum, int(chunk), int(block));
    }
    QVERIFY(!bytes.contains("row 7"));
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("locked.db"), bytes), password);
    QCOMPARE(int(r.status), status);
    if (!r.ok())
        return;
    Result<std::unique_ptr<Table>> t = r.file->openTable(r.file->tableNames().value(0));
    QVERIFY(t.ok());
    QCOMPARE(t.value->rowCount(), 31);
    const QList<Row> rows = allRows(*t.value);
    for (int i = 0; i < rows.size(); ++i)
        QCOMPARE(rows[i], (Row{qlonglong(i), QStringLiteral("row %1").arg(i)}));
}

void TestParadoxReader::passwordChecksum_data()
{
    QTest::addColumn<QByteArray>("password");
    QTest::addColumn<quint32>("checksum");
    // As kept in the headers of the protected fixtures (password "123").
    QTest::newRow("fixture password") << QByteArray("123") << quint32(0x0A25E09A);
    QTest::newRow("empty password") << QByteArray() << quint32(0);
}

void TestParadoxReader::passwordChecksum()
{
    QFETCH(QByteArray, password);
    QFETCH(quint32, checksum);
    QCOMPARE(paradoxPasswordChecksum(password), checksum);
}

void TestParadoxReader::generatedTableInPages()
{
    Sample s;
    s.records = 23;
    s.perBlock = 4;
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("sample.db"), paradoxTable(s)));
    QVERIFY2(o.table, qPrintable(o.error));
    QCOMPARE(o.table->rowCount(), 23);
    for (int page : {1, 3, 4, 5, 23}) {
        for (int first = 0; first < 23; first += page) {
            const QList<Row> rows = o.table->readRows(first, page).value;
            QCOMPARE(rows.size(), qMin(page, 23 - first));
            for (int i = 0; i < rows.size(); ++i) {
                QCOMPARE(rows[i].value(0).toLongLong(), first + i);
                QCOMPARE(rows[i].value(1).toString(), QStringLiteral("row %1").arg(first + i));
            }
        }
    }
}

void TestParadoxReader::bcdValues_data()
{
    QTest::addColumn<QByteArray>("cell");
    QTest::addColumn<int>("decimals");
    QTest::addColumn<QVariant>("expected");
    QTest::newRow("positive with decimals") << paradoxBcd("123.45", 2) << 2 << QVariant(123.45);
    QTest::newRow("negative digits complemented") << paradoxBcd("-123.45", 2) << 2 << QVariant(-123.45);
    QTest::newRow("negative below one") << paradoxBcd("-0.5", 2) << 2 << QVariant(-0.5);
    QTest::newRow("no decimals") << paradoxBcd("987654321", 0) << 0 << QVariant(987654321.0);
    QTest::newRow("six decimals") << paradoxBcd("7.000001", 6) << 6 << QVariant(7.000001);
    QTest::newRow("all thirty-two digits whole") << paradoxBcd("12345678901234567890123456789012", 0) << 0
                                                 << QVariant(12345678901234567890123456789012.0);
    QTest::newRow("zero") << paradoxBcd("0", 2) << 2 << QVariant(0.0);
    QTest::newRow("null") << QByteArray(17, '\0') << 2 << QVariant();
    QByteArray badDigit = paradoxBcd("1", 2);
    badDigit[16] = char(0xAA);
    QTest::newRow("half byte above nine is no number") << badDigit << 2 << QVariant();
}

void TestParadoxReader::bcdValues()
{
    QFETCH(QByteArray, cell);
    QFETCH(int, decimals);
    QFETCH(QVariant, expected);
    Sample s;
    s.records = 3;
    s.bcd = {cell};
    s.bcdDecimals = decimals;
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("amounts.db"), paradoxTable(s)));
    QVERIFY2(o.table, qPrintable(o.error));
    const Field amount = o.table->fields().value(2);
    QCOMPARE(amount.name, QStringLiteral("Amount"));
    QCOMPARE(amount.type, FieldType::Decimal);
    const QList<Row> rows = allRows(*o.table);
    QCOMPARE(rows.size(), 3);
    for (const Row &row : rows) {
        QCOMPARE(row.value(1).toString().left(4), QStringLiteral("row "));
        QCOMPARE(row.value(2).isValid(), expected.isValid());
        if (expected.isValid())
            QVERIFY2(qFuzzyCompare(row.value(2).toDouble(), expected.toDouble()), qPrintable(row.value(2).toString()));
    }
}

void TestParadoxReader::bcdDecimalsBeyondDigits()
{
    Sample s;
    s.bcd = {paradoxBcd("1", 2)};
    s.bcdDecimals = 33;
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("amounts.db"), paradoxTable(s)));
    QCOMPARE(r.status, OpenStatus::Failed);
    QCOMPARE(r.errorString, QStringLiteral("The Paradox table \"amounts\" is damaged: field 3 has 33 decimal places."));
}

void TestParadoxReader::blockChains_data()
{
    QTest::addColumn<QList<int>>("chain");
    QTest::addColumn<QList<qlonglong>>("ids");
    // Three blocks of two records: 0 1 | 2 3 | 4.
    QTest::newRow("in file order") << QList<int>{1, 2, 3} << QList<qlonglong>{0, 1, 2, 3, 4};
    QTest::newRow("out of file order") << QList<int>{3, 1, 2} << QList<qlonglong>{4, 0, 1, 2, 3};
    QTest::newRow("a loop back to the first block") << QList<int>{1, 2, 1} << QList<qlonglong>{0, 1, 2, 3};
    QTest::newRow("a block beyond the file") << QList<int>{1, 40} << QList<qlonglong>{0, 1};
}

void TestParadoxReader::blockChains()
{
    QFETCH(QList<int>, chain);
    QFETCH(QList<qlonglong>, ids);
    Sample s;
    s.chain = chain;
    QByteArray bytes = paradoxTable(s);
    if (chain == QList<int>{1, 2, 1})
        qToLittleEndian(quint16(1), bytes.data() + 2048 + 1024); // block 2 points back to block 1
    if (chain == QList<int>{1, 40})
        qToLittleEndian(quint16(40), bytes.data() + 2048);
    TestDir dir;
    Opened o = openFirstTable(dir.createFile(QStringLiteral("chain.db"), bytes));
    QVERIFY2(o.table, qPrintable(o.error));
    QList<qlonglong> got;
    for (const Row &r : allRows(*o.table))
        got << r.value(0).toLongLong();
    QCOMPARE(got, ids);
}

void TestParadoxReader::hostileHeaders_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<QString>("message");
    const QByteArray good = paradoxTable(Sample{});
    QByteArray headerBeyond = good;
    qToLittleEndian(quint16(65000), headerBeyond.data() + 2);
    QTest::newRow("header beyond the file") << headerBeyond << "its header claims 65000 bytes";
    QByteArray manyFields = good;
    qToLittleEndian(quint16(300), manyFields.data() + 0x21);
    QTest::newRow("field count over 255") << manyFields << "declares 300 fields";
    QByteArray recordSize = good;
    qToLittleEndian(quint16(13), recordSize.data());
    QTest::newRow("record size not the fields' sum") << recordSize << "its fields take 12 bytes, but its records hold 13";
    QByteArray bigRecords = good;
    qToLittleEndian(quint16(5000), bigRecords.data());
    QTest::newRow("records larger than blocks") << bigRecords << "do not fit its blocks";
    QByteArray badType = good;
    badType[0x78] = char(0x42);
    QTest::newRow("unknown field type") << badType << "unknown type 66";
    QByteArray badSize = good;
    badSize[0x79] = 3;
    QTest::newRow("long field three bytes") << badSize << "has a size of 3 bytes";
    QByteArray overfull = good;
    qToLittleEndian(qint16(2000), overfull.data() + 2048 + 4);
    QTest::newRow("block claiming too many records") << overfull << "claims more records than it can hold";
    QByteArray index = good;
    index[0x04] = 1;
    QTest::newRow("primary index file") << index << "is not a Paradox table";
    QTest::newRow("truncated header") << good.left(40) << "is not a Paradox table";
    QByteArray names = good.left(2048);
    QByteArray noNul = names;
    noNul.replace(0x78 + 4 + 4 + 8 + 79, 2048 - (0x78 + 4 + 4 + 8 + 79), QByteArray(2048 - (0x78 + 4 + 4 + 8 + 79), 'x'));
    QTest::newRow("field names without their end") << noNul << "field names run past its header";
}

void TestParadoxReader::hostileHeaders()
{
    QFETCH(QByteArray, bytes);
    QFETCH(QString, message);
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("hostile.db"), bytes));
    QVERIFY(!r.ok());
    QVERIFY2(r.errorString.contains(message), qPrintable(r.errorString));
}

void TestParadoxReader::blobPointers_data()
{
    QTest::addColumn<QByteArray>("mb");
    QTest::addColumn<quint32>("offset");
    QTest::addColumn<quint32>("length");
    QTest::addColumn<QByteArray>("expected");
    // A single-value block at 4096: type 2, one 4 KB chunk, the length.
    QByteArray single(8192, '\0');
    single[4096] = 2;
    qToLittleEndian(quint16(1), single.data() + 4097);
    qToLittleEndian(quint32(600), single.data() + 4099);
    single.replace(4096 + 9, 600, QByteArray(600, 'z'));
    QTest::newRow("single block") << single << quint32(4096 | 0xFF) << quint32(600) << QByteArray(600, 'z');
    QTest::newRow("single block, length past its chunks") << single << quint32(4096 | 0xFF) << quint32(5000) << QByteArray();
    QTest::newRow("pointer into the header block") << single << quint32(0xFF) << quint32(10) << QByteArray();
    QTest::newRow("pointer past the file") << single << quint32(0x7FFFFF00 | 0xFF) << quint32(10) << QByteArray();
    // A shared block: entry 2 puts its value at 16 * 5.
    QByteArray shared(8192, '\0');
    shared[4096] = 3;
    qToLittleEndian(quint16(1), shared.data() + 4097);
    shared[4096 + 12 + 2 * 5] = 5;
    shared.replace(4096 + 80, 11, "small value");
    QTest::newRow("shared block") << shared << quint32(4096 | 2) << quint32(11) << QByteArray("small value");
    QTest::newRow("shared block, entry past the table") << shared << quint32(4096 | 64) << quint32(11) << QByteArray();
    QTest::newRow("shared block, empty entry") << shared << quint32(4096 | 3) << quint32(11) << QByteArray();
    QTest::newRow("shared block, value past the block") << shared << quint32(4096 | 2) << quint32(4050) << QByteArray();
    QTest::newRow("wrong block kind") << single << quint32(4096 | 2) << quint32(11) << QByteArray();
}

void TestParadoxReader::blobPointers()
{
    QFETCH(QByteArray, mb);
    QFETCH(quint32, offset);
    QFETCH(quint32, length);
    QFETCH(QByteArray, expected);
    QBuffer buffer(&mb);
    buffer.open(QIODevice::ReadOnly);
    const QByteArray got = readParadoxBlob(buffer, offset, length);
    QCOMPARE(got, expected);
    QCOMPARE(got.isNull(), expected.isNull());
}

QTEST_GUILESS_MAIN(TestParadoxReader)
#include "tst_paradoxreader.moc"
