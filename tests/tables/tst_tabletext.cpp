#include "core/tables/TableText.h"

#include <QBuffer>
#include <QDate>
#include <QDateTime>
#include <QTest>

using namespace tarnby::tables;

namespace {

// A table held in memory, for the CSV writer.
class ListTable : public Table
{
public:
    ListTable(QList<Field> fields, QList<Row> rows)
        : m_fields(std::move(fields))
        , m_rows(std::move(rows))
    {
    }
    QString name() const override { return QStringLiteral("list"); }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows.size(); }
    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        asked.append(count);
        if (first + count > failFrom)
            return Result<QList<Row>>::failure(QStringLiteral("row %1 is unreadable").arg(failFrom));
        return Result<QList<Row>>::success(m_rows.mid(first, count));
    }
    qint64 failFrom = std::numeric_limits<qint64>::max();
    QList<int> asked; // the count of each readRows call

private:
    QList<Field> m_fields;
    QList<Row> m_rows;
};

} // namespace

class TestTableText : public QObject
{
    Q_OBJECT
private slots:
    void fieldTypeNames_data();
    void fieldTypeNames();
    void fieldLines();
    void values_data();
    void values();
    void csvRecords_data();
    void csvRecords();
    void cellBytesAtEveryPosition_data();
    void cellBytesAtEveryPosition();
    void csvTable();
    void csvTableOfManyPages();
    void csvReadFailureIsReported();
    void csvPagesOfLongRowsAreShort();
};

void TestTableText::fieldTypeNames_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QString>("name");
    QTest::newRow("16 is the first Long Integer") << 16 << "Long Integer";
    QTest::newRow("4 is Long Integer too") << 4 << "Long Integer";
    QTest::newRow("8 is Date") << 8 << "Date";
    QTest::newRow("23 is Date / Time") << 23 << "Date / Time";
    QTest::newRow("12 is Memo Field") << 12 << "Memo Field";
    QTest::newRow("17 is Variable Binary") << 17 << "Variable Binary";
    QTest::newRow("unknown 13 is empty") << 13 << "";
    QTest::newRow("unknown 0 is empty") << 0 << "";
    QTest::newRow("unknown 24 is empty") << 24 << "";
}

void TestTableText::fieldTypeNames()
{
    QFETCH(int, type);
    QFETCH(QString, name);
    QCOMPARE(fieldTypeName(type), name);
}

void TestTableText::fieldLines()
{
    QCOMPARE(fieldLine(Field{"PRICE", FieldType::Double, 8}), QStringLiteral("PRICE - Double - 8"));
    QCOMPARE(fieldLine(Field{"X", 99, 3}), QStringLiteral("X -  - 3"));
}

void TestTableText::values_data()
{
    QTest::addColumn<QVariant>("value");
    QTest::addColumn<QString>("text");
    QTest::newRow("null") << QVariant() << "";
    QTest::newRow("text") << QVariant(QStringLiteral("a, b")) << "a, b";
    QTest::newRow("integer") << QVariant(qlonglong(-12)) << "-12";
    QTest::newRow("double shortest") << QVariant(5.51) << "5.51";
    QTest::newRow("double whole") << QVariant(1000.0) << "1000";
    QTest::newRow("date") << QVariant(QDate(2018, 1, 1)) << "2018-01-01";
    QTest::newRow("date and time") << QVariant(QDateTime(QDate(2018, 1, 1), QTime(10, 0))) << "2018-01-01T10:00:00";
    QTest::newRow("time") << QVariant(QTime(23, 5, 9)) << "23:05:09";
    QTest::newRow("true") << QVariant(true) << "True";
    QTest::newRow("false") << QVariant(false) << "False";
    QTest::newRow("binary") << QVariant(QByteArray("\x00\xff", 2)) << "00ff";
}

void TestTableText::values()
{
    QFETCH(QVariant, value);
    QFETCH(QString, text);
    QCOMPARE(valueText(value), text);
}

void TestTableText::csvRecords_data()
{
    QTest::addColumn<QStringList>("cells");
    QTest::addColumn<QByteArray>("record");
    QTest::newRow("plain") << QStringList{"a", "b"} << QByteArray("a,b\r\n");
    QTest::newRow("empty cells") << QStringList{"", ""} << QByteArray(",\r\n");
    QTest::newRow("comma") << QStringList{"a,b"} << QByteArray("\"a,b\"\r\n");
    QTest::newRow("quote doubled") << QStringList{"say \"hi\""} << QByteArray("\"say \"\"hi\"\"\"\r\n");
    QTest::newRow("line break") << QStringList{"one\r\ntwo", "x"} << QByteArray("\"one\r\ntwo\",x\r\n");
    QTest::newRow("lone LF") << QStringList{"one\ntwo"} << QByteArray("\"one\ntwo\"\r\n");
    QTest::newRow("lone CR") << QStringList{"one\rtwo"} << QByteArray("\"one\rtwo\"\r\n");
    QTest::newRow("utf-8") << QStringList{QStringLiteral("Привет")} << QStringLiteral("Привет\r\n").toUtf8();
}

void TestTableText::csvRecords()
{
    QFETCH(QStringList, cells);
    QFETCH(QByteArray, record);
    QCOMPARE(csvRecord(cells), record);
}

void TestTableText::cellBytesAtEveryPosition_data()
{
    QTest::addColumn<char>("byte");
    QTest::addColumn<bool>("ascii");
    QTest::addColumn<bool>("needsQuotes");
    QTest::newRow("comma") << ',' << true << true;
    QTest::newRow("quote") << '"' << true << true;
    QTest::newRow("CR") << '\r' << true << true;
    QTest::newRow("LF") << '\n' << true << true;
    QTest::newRow("byte from 0x80 up") << char(0xE9) << false << false;
    QTest::newRow("0x80") << char(0x80) << false << false;
    QTest::newRow("0xFF") << char(0xFF) << false << false;
    QTest::newRow("one above comma") << char(',' + 1) << true << false;
    QTest::newRow("one below quote") << char('"' - 1) << true << false;
    QTest::newRow("NUL") << '\0' << true << false;
}

// The cell scan reads whole words: the byte is found in every place of
// them and in the bytes after the last whole word.
void TestTableText::cellBytesAtEveryPosition()
{
    QFETCH(char, byte);
    QFETCH(bool, ascii);
    QFETCH(bool, needsQuotes);
    for (int size = 1; size <= 26; ++size) {
        for (int at = 0; at < size; ++at) {
            QByteArray cell(size, 'a');
            cell[at] = byte;
            const CellBytes found = scanCell(cell);
            QVERIFY2(found.ascii == ascii && found.needsQuotes == needsQuotes,
                     qPrintable(QStringLiteral("size %1, at %2").arg(size).arg(at)));
        }
    }
    const CellBytes plain = scanCell(QByteArray(26, 'a'));
    QVERIFY(plain.ascii && !plain.needsQuotes);
}

void TestTableText::csvTable()
{
    ListTable table({{"ID", FieldType::Long, 4}, {"NOTE", FieldType::Memo, 10}, {"WHEN", FieldType::Date, 8}},
                    {{qlonglong(1), QStringLiteral("long\r\nmemo"), QDate(2020, 2, 29)},
                     {qlonglong(2), QVariant(), QVariant()}});
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QCOMPARE(writeCsv(table, out), QString());
    QCOMPARE(bytes, QByteArray("ID,NOTE,WHEN\r\n1,\"long\r\nmemo\",2020-02-29\r\n2,,\r\n"));
}

void TestTableText::csvTableOfManyPages()
{
    QList<Row> rows;
    for (int i = 0; i < 10000; ++i)
        rows.append(Row{qlonglong(i)});
    ListTable table({{"N", FieldType::Long, 4}}, rows);
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QCOMPARE(writeCsv(table, out), QString());
    const QList<QByteArray> lines = bytes.split('\n');
    QCOMPARE(lines.size(), 10002); // header, rows, the empty piece after the last line end
    QCOMPARE(lines[1], QByteArray("0\r"));
    QCOMPARE(lines[10000], QByteArray("9999\r"));
}

void TestTableText::csvReadFailureIsReported()
{
    QList<Row> rows;
    for (int i = 0; i < 5000; ++i)
        rows.append(Row{qlonglong(i)});
    ListTable table({{"N", FieldType::Long, 4}}, rows);
    table.failFrom = 4096;
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QCOMPARE(writeCsv(table, out), QStringLiteral("row 4096 is unreadable"));
}

void TestTableText::csvPagesOfLongRowsAreShort()
{
    // Rows of 64 KiB: after the first page, a few dozen rows a page at most.
    QList<Row> rows;
    for (int i = 0; i < 1000; ++i)
        rows.append(Row{QString(64 * 1024, QLatin1Char('a' + i % 26))});
    ListTable table({{"MEMO", FieldType::Memo, 10}}, rows);
    QByteArray bytes;
    QBuffer out(&bytes);
    out.open(QIODevice::WriteOnly);
    QCOMPARE(writeCsv(table, out), QString());
    QCOMPARE(bytes.size(), 6 + 1000 * (64 * 1024 + 2));
    QVERIFY(table.asked.size() > 1);
    for (qsizetype i = 1; i < table.asked.size(); ++i)
        QVERIFY2(table.asked[i] <= 64, qPrintable(QString::number(table.asked[i])));
}

QTEST_GUILESS_MAIN(TestTableText)
#include "tst_tabletext.moc"
