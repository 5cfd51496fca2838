#include "TestDir.h"
#include "XlsSamples.h"

#include "core/platform/tables/BiffWorkbook.h"
#include "core/platform/tables/CompoundFile.h"
#include "core/platform/tables/TableReader.h"

#include <QDate>
#include <QDateTime>
#include <QElapsedTimer>
#include <QFile>
#include <QTest>
#include <QTime>
#include <QtEndian>

using namespace tarnby::tables;
using namespace xlssamples;

namespace {

// The cells of the first sheet of a workbook stream.
BiffSheet firstSheet(const Workbook &w)
{
    BiffWorkbook book;
    const QString error = book.open(workbookStream(w));
    if (!error.isEmpty()) {
        BiffSheet failed;
        failed.errorString = error;
        return failed;
    }
    return book.readSheet(0);
}

Workbook oneSheet(QList<QByteArray> records)
{
    Workbook w;
    w.sheets << Sheet{QStringLiteral("Sheet1"), std::move(records)};
    return w;
}

void patch32(QByteArray &bytes, qsizetype at, quint32 v)
{
    qToLittleEndian(v, bytes.data() + at);
}

quint32 rkWhole(qint32 v)
{
    return (quint32(v) << 2) | 2;
}

} // namespace

class TestXlsReader : public QObject
{
    Q_OBJECT
private slots:
    void cellValues_data();
    void cellValues();
    void mulRkRow();
    void sharedStrings_data();
    void sharedStrings();
    void workbookThroughInterface_data();
    void workbookThroughInterface();
    void biff5CodePage();
    void biff2Worksheet();
    void encryptedWorkbook();
    void hostileWorkbooks_data();
    void hostileWorkbooks();
    void damagedContainers_data();
    void damagedContainers();
    void fuzzFindings_data();
    void fuzzFindings();
};

void TestXlsReader::cellValues_data()
{
    QTest::addColumn<QByteArray>("cell"); // records of the cell at A1
    QTest::addColumn<QList<quint16>>("xfFormats");
    QTest::addColumn<QString>("format"); // a FORMAT record: "number:text"
    QTest::addColumn<bool>("system1904");
    QTest::addColumn<QVariant>("expected");
    const QList<quint16> plain{0};
    const QString none;
    QTest::newRow("rk whole number") << rk(0, 0, 0, rkWhole(1234)) << plain << none << false << QVariant(qlonglong(1234));
    QTest::newRow("rk negative whole number") << rk(0, 0, 0, rkWhole(-5)) << plain << none << false << QVariant(qlonglong(-5));
    QTest::newRow("rk whole hundredths") << rk(0, 0, 0, rkWhole(1234) | 1) << plain << none << false << QVariant(12.34);
    QTest::newRow("rk double") << rk(0, 0, 0, 0x3FF80000) << plain << none << false << QVariant(1.5);
    QTest::newRow("rk double hundredths") << rk(0, 0, 0, 0x3FF80001) << plain << none << false << QVariant(0.015);
    QTest::newRow("number") << number(0, 0, 0, -3.25) << plain << none << false << QVariant(-3.25);
    QTest::newRow("label wide characters") << label8(0, 0, QStringLiteral("Ωmega")) << plain << none << false
                                           << QVariant(QStringLiteral("Ωmega"));
    QTest::newRow("label latin-1 characters") << label8(0, 0, QStringLiteral("café")) << plain << none << false
                                              << QVariant(QStringLiteral("café"));
    QTest::newRow("boolean") << boolErr(0, 0, 1, false) << plain << none << false << QVariant(true);
    QTest::newRow("error cell is empty") << boolErr(0, 0, 0x07, true) << plain << none << false << QVariant();
    QTest::newRow("blank is empty") << blank(0, 0) << plain << none << false << QVariant();
    QTest::newRow("formula number") << formulaNumber(0, 0, 0, 42.0) << plain << none << false << QVariant(42.0);
    QTest::newRow("formula text in STRING record") << formulaText(0, 0, QStringLiteral("sum")) << plain << none << false
                                                   << QVariant(QStringLiteral("sum"));
    QTest::newRow("built-in date format") << number(0, 0, 1, 36526) << QList<quint16>{0, 14} << none << false
                                          << QVariant(QDate(2000, 1, 1));
    QTest::newRow("built-in date and time") << number(0, 0, 1, 36526.75) << QList<quint16>{0, 22} << none << false
                                            << QVariant(QDateTime(QDate(2000, 1, 1), QTime(18, 0)));
    QTest::newRow("built-in time") << number(0, 0, 1, 0.5 + 1.0 / 86400) << QList<quint16>{0, 20} << none << false
                                   << QVariant(QTime(12, 0, 1));
    QTest::newRow("rk whole number as a date") << rk(0, 0, 1, rkWhole(36526)) << QList<quint16>{0, 15} << none << false
                                               << QVariant(QDate(2000, 1, 1));
    QTest::newRow("formula result as a date") << formulaNumber(0, 0, 1, 36527) << QList<quint16>{0, 14} << none << false
                                              << QVariant(QDate(2000, 1, 2));
    QTest::newRow("custom date format") << number(0, 0, 1, 45000) << QList<quint16>{0, 164} << "164:dd/mm/yyyy" << false
                                        << QVariant(QDate(2023, 3, 15));
    QTest::newRow("custom minutes and seconds") << number(0, 0, 1, 90.0 / 86400) << QList<quint16>{0, 164} << "164:mm:ss"
                                                << false << QVariant(QTime(0, 1, 30));
    QTest::newRow("custom elapsed hours") << number(0, 0, 1, 0.25) << QList<quint16>{0, 164} << "164:[h]:mm" << false
                                          << QVariant(QTime(6, 0));
    QTest::newRow("quoted letters are no date") << number(0, 0, 1, 3) << QList<quint16>{0, 164} << "164:0.0 \"days\"" << false
                                                << QVariant(3.0);
    QTest::newRow("colour bracket is no date") << number(0, 0, 1, 3) << QList<quint16>{0, 164} << "164:[Red]0.00" << false
                                               << QVariant(3.0);
    QTest::newRow("format record redefines a built-in") << number(0, 0, 1, 3) << QList<quint16>{0, 14} << "14:0" << false
                                                        << QVariant(3.0);
    QTest::newRow("1904 date system") << number(0, 0, 1, 0) << QList<quint16>{0, 14} << none << true
                                      << QVariant(QDate(1904, 1, 1));
    QTest::newRow("1900 first day") << number(0, 0, 1, 1) << QList<quint16>{0, 14} << none << false
                                    << QVariant(QDate(1900, 1, 1));
    QTest::newRow("1900 before the false leap day") << number(0, 0, 1, 59) << QList<quint16>{0, 14} << none << false
                                                    << QVariant(QDate(1900, 2, 28));
    QTest::newRow("1900 after the false leap day") << number(0, 0, 1, 61) << QList<quint16>{0, 14} << none << false
                                                   << QVariant(QDate(1900, 3, 1));
    QTest::newRow("negative serial stays a number") << number(0, 0, 1, -1) << QList<quint16>{0, 14} << none << false
                                                    << QVariant(-1.0);
    QTest::newRow("xf beyond the list is plain") << number(0, 0, 9, 36526) << QList<quint16>{0, 14} << none << false
                                                 << QVariant(36526.0);
}

void TestXlsReader::cellValues()
{
    QFETCH(QByteArray, cell);
    QFETCH(QList<quint16>, xfFormats);
    QFETCH(QString, format);
    QFETCH(bool, system1904);
    QFETCH(QVariant, expected);
    Workbook w = oneSheet({cell});
    w.xfFormats = xfFormats;
    w.system1904 = system1904;
    if (!format.isEmpty())
        w.formats << qMakePair(quint16(format.section(u':', 0, 0).toUInt()), format.section(u':', 1));
    const BiffSheet sheet = firstSheet(w);
    QVERIFY2(sheet.errorString.isEmpty(), qPrintable(sheet.errorString));
    const QVariant got = sheet.cell(0, 0);
    QCOMPARE(got.typeId(), expected.typeId());
    if (expected.typeId() == QMetaType::Double)
        QVERIFY2(qFuzzyCompare(got.toDouble(), expected.toDouble()), qPrintable(got.toString()));
    else
        QCOMPARE(got, expected);
}

void TestXlsReader::mulRkRow()
{
    const BiffSheet sheet = firstSheet(oneSheet({mulRk(2, 1, {rkWhole(7), 0x3FF80000, rkWhole(9) | 1}), rk(2, 5, 0, rkWhole(1))}));
    QCOMPARE(sheet.rows, 3);
    QCOMPARE(sheet.columns, 6);
    QCOMPARE(sheet.cell(2, 0), QVariant());
    QCOMPARE(sheet.cell(2, 1), QVariant(qlonglong(7)));
    QCOMPARE(sheet.cell(2, 2), QVariant(1.5));
    QCOMPARE(sheet.cell(2, 3), QVariant(0.09));
    QCOMPARE(sheet.cell(2, 4), QVariant());
    QCOMPARE(sheet.cell(2, 5), QVariant(qlonglong(1)));
}

void TestXlsReader::sharedStrings_data()
{
    QTest::addColumn<QStringList>("strings");
    QTest::addColumn<int>("piece");
    QTest::addColumn<int>("rich");
    QStringList many;
    for (int i = 0; i < 200; ++i)
        many << QStringLiteral("string number %1").arg(i);
    const QString alphabet = QStringLiteral("abcdefghijklmnopqrstuvwxyz");
    QTest::newRow("one piece") << QStringList{QStringLiteral("a"), QString(), QStringLiteral("Ωmega")} << 8224 << -1;
    QTest::newRow("split inside 8-bit characters") << QStringList{alphabet, alphabet + alphabet} << 20 << -1;
    QTest::newRow("split turns 16-bit to 8-bit") << QStringList{QStringLiteral("Ω") + alphabet} << 20 << -1;
    QTest::newRow("split inside 16-bit characters") << QStringList{alphabet + QStringLiteral("Ω")} << 25 << -1;
    QTest::newRow("formatting runs split across pieces") << QStringList{alphabet, QStringLiteral("after")} << 40 << 0;
    QTest::newRow("many strings, many pieces") << many << 50 << 17;
}

void TestXlsReader::sharedStrings()
{
    QFETCH(QStringList, strings);
    QFETCH(int, piece);
    QFETCH(int, rich);
    Workbook w;
    w.sst = strings;
    w.sstPiece = piece;
    w.richStrings = rich;
    Sheet s{QStringLiteral("Strings"), {}};
    for (int i = 0; i < strings.size(); ++i)
        s.records << labelSst(quint16(i), 0, quint32(i));
    w.sheets << s;
    const QByteArray stream = workbookStream(w);
    if (piece < 8224)
        QVERIFY(stream.contains(QByteArray::fromHex("3c00"))); // a CONTINUE record
    BiffWorkbook book;
    QCOMPARE(book.open(stream), QString());
    const BiffSheet sheet = book.readSheet(0);
    QCOMPARE(sheet.rows, strings.size());
    for (int i = 0; i < strings.size(); ++i)
        QCOMPARE(sheet.cell(i, 0).toString(), strings[i]);
}

void TestXlsReader::workbookThroughInterface_data()
{
    QTest::addColumn<int>("rows"); // more rows move the stream out of the mini stream
    QTest::newRow("small workbook in the mini stream") << 5;
    QTest::newRow("large workbook in regular sectors") << 400;
}

void TestXlsReader::workbookThroughInterface()
{
    QFETCH(int, rows);
    Workbook w;
    w.sst = {QStringLiteral("Name"), QStringLiteral("Born"), QStringLiteral("Count")};
    w.xfFormats = {0, 14};
    Sheet data{QStringLiteral("Données"), {labelSst(0, 0, 0), labelSst(0, 1, 1), labelSst(0, 2, 2)}};
    for (int r = 1; r <= rows; ++r) {
        data.records << label8(quint16(r), 0, QStringLiteral("row %1").arg(r));
        data.records << rk(quint16(r), 1, 1, rkWhole(36526 + r));
        data.records << number(quint16(r), 2, 0, r * 0.5);
    }
    w.sheets << data << Sheet{QStringLiteral("Chart1"), {}, 2} << Sheet{QStringLiteral("Empty"), {}};
    const Compound c = compoundFile(workbookStream(w));
    QCOMPARE(c.inMiniStream, rows < 100);
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("book.xls"), c.bytes));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->formatName(), QStringLiteral("Excel"));
    // The chart is no table.
    QCOMPARE(r.file->tableNames(), (QStringList{QStringLiteral("Données"), QStringLiteral("Empty")}));
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("Données"));
    QVERIFY2(t.ok(), qPrintable(t.errorString));
    QStringList fields;
    for (const Field &f : t.value->fields())
        fields << QStringLiteral("%1 %2").arg(f.name).arg(f.type);
    QCOMPARE(fields, (QStringList{"Name 10", "Born 8", "Count 7"}));
    QCOMPARE(t.value->rowCount(), rows);
    const Result<QList<Row>> page = t.value->readRows(rows - 2, 10);
    QVERIFY(page.ok());
    QCOMPARE(page.value.size(), 2);
    QCOMPARE(page.value[1], (Row{QStringLiteral("row %1").arg(rows), QDate(2000, 1, 1).addDays(rows), rows * 0.5}));
    Result<std::unique_ptr<Table>> empty = r.file->openTable(QStringLiteral("Empty"));
    QVERIFY(empty.ok());
    QCOMPARE(empty.value->rowCount(), 0);
    QVERIFY(!r.file->openTable(QStringLiteral("Chart1")).ok());
}

void TestXlsReader::biff5CodePage()
{
    Workbook w;
    w.version = 5;
    w.codePage = 1251;
    // "Привет" in Windows-1251.
    w.sheets << Sheet{QStringLiteral("Лист"), {label5(0, 0, QByteArray("\xCF\xF0\xE8\xE2\xE5\xF2")), rk(1, 0, 0, rkWhole(3))}};
    w.sheets[0].name = QStringLiteral("List");
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("old.xls"), xlsFile(w)));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->tableNames(), QStringList{QStringLiteral("List")});
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("List"));
    QVERIFY(t.ok());
    QCOMPARE(t.value->fields().value(0).name, QStringLiteral("Привет"));
    QCOMPARE(t.value->readRows(0, 1).value.value(0), Row{qlonglong(3)});
}

void TestXlsReader::biff2Worksheet()
{
    // A BIFF 2 worksheet file: the bare records, formats numbered by order,
    // each cell's format in its attribute bytes.
    auto cell2 = [](quint16 type, quint16 row, quint16 column, quint8 format, const QByteArray &body) {
        return record(type, le16(row) + le16(column) + char(0) + char(format) + char(0) + body);
    };
    const QByteArray stream = record(0x0009, le16(2) + le16(0x10)) + record(0x001E, QByteArray("\x07General", 8))
        + record(0x001E, QByteArray("\x06" "d/m/yy", 7)) + cell2(0x0004, 0, 0, 0, QByteArray("\x04When", 5))
        + cell2(0x0004, 0, 1, 0, QByteArray("\x03How", 4)) + cell2(0x0003, 1, 0, 1, le64double(36526))
        + cell2(0x0002, 1, 1, 0, le16(65535)) + record(0x000A, {});
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("sheet.xls"), stream));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.file->tableNames(), QStringList{QStringLiteral("Worksheet")});
    Result<std::unique_ptr<Table>> t = r.file->openTable(QStringLiteral("Worksheet"));
    QVERIFY(t.ok());
    QCOMPARE(t.value->fields().value(1).name, QStringLiteral("How"));
    QCOMPARE(t.value->readRows(0, 5).value, (QList<Row>{{QDate(2000, 1, 1), qlonglong(65535)}}));
}

void TestXlsReader::encryptedWorkbook()
{
    Workbook w = oneSheet({number(0, 0, 0, 1)});
    w.encrypted = true;
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("secret.xls"), xlsFile(w)));
    QCOMPARE(r.status, OpenStatus::Unsupported);
    QCOMPARE(r.errorString, QStringLiteral("The workbook \"secret.xls\" is encrypted, which Tarnby cannot read."));
}

void TestXlsReader::hostileWorkbooks_data()
{
    QTest::addColumn<QByteArray>("stream");
    QTest::addColumn<qint64>("rows");    // of the first sheet; -1: the sheet does not open
    QTest::addColumn<int>("columns");
    Workbook huge = oneSheet({dimensions8(0xFFFFFFFF, 0xFFFF), number(3, 2, 0, 1)});
    QTest::newRow("dimensions beyond a sheet are capped") << workbookStream(huge) << qint64(65536) << 256;
    Workbook sst;
    sst.sheets << Sheet{QStringLiteral("S"), {labelSst(0, 0, 5), labelSst(1, 0, 0xFFFFFFFF), number(1, 1, 0, 2)}};
    QByteArray claims = workbookStream(sst);
    // An SST that claims four billion strings and holds none.
    const QByteArray sstRecord = record(0x00FC, le32(0xFFFFFFFF) + le32(0xFFFFFFFF));
    claims.insert(claims.indexOf(record(0x000A, {})), sstRecord);
    QByteArray shifted = claims;
    // The sheet moved by the SST record's length: point the BOUNDSHEET at it.
    const qsizetype bound = shifted.indexOf(QByteArray::fromHex("8500")) + 4;
    qToLittleEndian(qFromLittleEndian<quint32>(shifted.constData() + bound) + quint32(sstRecord.size()), shifted.data() + bound);
    QTest::newRow("string numbers beyond the table") << shifted << qint64(2) << 2;
    Workbook lost = oneSheet({number(0, 0, 0, 1)});
    QByteArray away = workbookStream(lost);
    patch32(away, away.indexOf(QByteArray::fromHex("8500")) + 4, 0x7FFFFFF0);
    QTest::newRow("sheet offset outside the stream") << away << qint64(-1) << 0;
    Workbook globals;
    globals.sst = {QStringLiteral("s")};
    globals.sheets << Sheet{QStringLiteral("A"), {labelSst(0, 0, 0)}};
    QByteArray back = workbookStream(globals);
    patch32(back, back.indexOf(QByteArray::fromHex("8500")) + 4, 0);
    QTest::newRow("sheet offset back at the globals") << back << qint64(-1) << 0;
    QByteArray cut = workbookStream(oneSheet({number(0, 0, 0, 1), number(1, 0, 0, 2)}));
    cut.chop(20);
    QTest::newRow("stream cut inside a record") << cut << qint64(1) << 1;
    QTest::newRow("records too short for their kind")
        << workbookStream(oneSheet({record(0x0203, le16(1)), record(0x00BD, le16(0) + le16(0)), record(0x00FD, QByteArray(7, 0)),
                                    record(0x0006, QByteArray(9, 0)), record(0x0207, QByteArray(1, 5)), number(0, 1, 0, 4)}))
        << qint64(1) << 2;
}

void TestXlsReader::hostileWorkbooks()
{
    QFETCH(QByteArray, stream);
    QFETCH(qint64, rows);
    QFETCH(int, columns);
    BiffWorkbook book;
    QCOMPARE(book.open(stream), QString());
    const BiffSheet sheet = book.readSheet(0);
    if (rows < 0) {
        QVERIFY(!sheet.errorString.isEmpty());
        return;
    }
    QVERIFY2(sheet.errorString.isEmpty(), qPrintable(sheet.errorString));
    QCOMPARE(sheet.rows, rows);
    QCOMPARE(sheet.columns, columns);
    // Through the interface, the last page of a capped sheet.
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("h.xls"), compoundFile(stream).bytes));
    QVERIFY(r.ok());
    Result<std::unique_ptr<Table>> t = r.file->openTable(r.file->tableNames().value(0));
    QVERIFY(t.ok());
    const Result<QList<Row>> last = t.value->readRows(qMax<qint64>(0, t.value->rowCount() - 3), 64);
    QVERIFY(last.ok());
    QCOMPARE(last.value.size(), qMin<qint64>(3, t.value->rowCount()));
}

void TestXlsReader::damagedContainers_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QString>("why"); // a word of readCompoundStream's answer
    QByteArray bigStream = workbookStream(oneSheet({}));
    for (int i = 0; i < 400; ++i)
        bigStream.insert(bigStream.size() - 4, number(quint16(i), 0, 0, i));
    const Compound big = compoundFile(bigStream);
    const Compound small = compoundFile(workbookStream(oneSheet({number(0, 0, 0, 1)})));
    QVERIFY(!big.inMiniStream && small.inMiniStream);

    QByteArray loop = big.bytes;
    patch32(loop, big.fatOffset + 4 * big.chain.last(), big.chain.first());
    QTest::newRow("allocation chain in a loop") << loop << "loop";
    QByteArray selfLoop = big.bytes;
    patch32(selfLoop, big.fatOffset + 4 * big.chain[3], big.chain[3]);
    QTest::newRow("sector pointing at itself") << selfLoop << "loop";
    QByteArray past = big.bytes;
    patch32(past, big.fatOffset + 4 * big.chain.first(), 0x00FFFFFF);
    QTest::newRow("chain past the end of the file") << past << "leaves";
    QByteArray huge = big.bytes;
    patch32(huge, big.entryOffset + 0x78, 0x7FFFFFF0);
    QTest::newRow("huge claimed stream size") << huge << "claims";
    QByteArray longer = big.bytes;
    patch32(longer, big.entryOffset + 0x78, quint32(bigStream.size() + 1024));
    QTest::newRow("size longer than the chain") << longer << "longer";
    QByteArray miniLoop = small.bytes;
    patch32(miniLoop, small.miniFatOffset + 4 * small.chain.last(), 0);
    QTest::newRow("mini chain in a loop") << miniLoop << "loop";
    QByteArray directoryLoop = small.bytes;
    patch32(directoryLoop, small.fatOffset + 4 * 1, 1);
    QTest::newRow("directory chain in a loop") << directoryLoop << "loop";
    QByteArray fatCount = small.bytes;
    patch32(fatCount, 0x2C, 0xFFFFFFFF);
    QTest::newRow("absurd allocation sector count") << fatCount << "more allocation sectors";
    QByteArray sectorShift = small.bytes;
    sectorShift[0x1E] = 31;
    QTest::newRow("unknown sector size") << sectorShift << "sector size";
    QTest::newRow("header only") << small.bytes.left(512) << "no sectors";
    QTest::newRow("cut inside the stream") << big.bytes.left(big.bytes.size() - 1024) << "leaves";
    QByteArray renamed = small.bytes;
    renamed[small.entryOffset] = 'X';
    QTest::newRow("no workbook stream") << renamed << "no stream";
}

void TestXlsReader::damagedContainers()
{
    QFETCH(QByteArray, file);
    QFETCH(QString, why);
    QElapsedTimer timer;
    timer.start();
    const CompoundStream s = readCompoundStream(file, {QStringLiteral("Workbook"), QStringLiteral("Book")});
    QVERIFY2(s.errorString.contains(why), qPrintable(s.errorString));
    QVERIFY(s.data.isEmpty());
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("damaged.xls"), file));
    QCOMPARE(r.status, OpenStatus::Failed);
    QCOMPARE(r.errorString, QStringLiteral("The workbook \"damaged.xls\" could not be read."));
    QVERIFY(timer.elapsed() < 5000);
}

void TestXlsReader::fuzzFindings_data()
{
    // Inputs the fuzz target found in the library that read workbooks
    // before: its selector byte first, then the file.
    QTest::addColumn<QString>("input");
    QTest::newRow("stack underflow in a code page conversion") << QStringLiteral("xls-iconv-underflow.bin");
    QTest::newRow("leak on a refused open") << QStringLiteral("xls-leak.bin");
}

void TestXlsReader::fuzzFindings()
{
    QFETCH(QString, input);
    QFile in(QStringLiteral(TARNBY_TABLE_REGRESSIONS "/") + input);
    QVERIFY(in.open(QIODevice::ReadOnly));
    TestDir dir;
    const OpenResult r = openTableFile(dir.createFile(QStringLiteral("found.xls"), in.readAll().mid(1)));
    if (r.ok()) {
        for (const QString &name : r.file->tableNames()) {
            Result<std::unique_ptr<Table>> t = r.file->openTable(name);
            if (t.ok())
                QVERIFY(t.value->readRows(0, 64).ok());
        }
    } else {
        QCOMPARE(r.errorString, QStringLiteral("The workbook \"found.xls\" could not be read."));
    }
}

QTEST_GUILESS_MAIN(TestXlsReader)
#include "tst_xlsreader.moc"
