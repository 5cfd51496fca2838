#include "SqliteSamples.h"
#include "TestDir.h"
#include "core/tables/DatabaseValues.h"
#include "core/tables/IndexOrder.h"
#include "core/tables/TableModel.h"

#include <QDate>
#include <QTimeZone>
#include <QTest>

using namespace tarnby::tables;

namespace {

// A table held in memory that, like the Access reader, can only read
// forwards: a read that starts before the last one counts as a rewind.
class ForwardTable : public Table
{
public:
    ForwardTable(QList<Field> fields, QList<Row> rows)
        : m_fields(std::move(fields))
        , m_rows(std::move(rows))
    {
    }
    QString name() const override { return QStringLiteral("T"); }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows.size(); }
    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        if (first < m_next)
            ++rewinds;
        m_next = first + count;
        ++reads;
        return Result<QList<Row>>::success(m_rows.mid(first, count));
    }
    int rewinds = 0;
    int reads = 0;

private:
    QList<Field> m_fields;
    QList<Row> m_rows;
    qint64 m_next = 0;
};

using Part = IndexKey::Part;

// The values of column 0 in the order given.
QList<QVariant> firstColumn(const QList<Row> &rows, const RowOrder &order)
{
    QList<QVariant> values;
    for (qint64 r : order)
        values << rows[r].value(0);
    return values;
}

} // namespace

class TestIndexOrder : public QObject
{
    Q_OBJECT
private slots:
    void order_data();
    void order();
    void equalKeysKeepTheTableOrder();
    void keyOutsideTheTableFails();
    void cancelledOrderIsEmpty();
    void rowsAtAreReadForwardsOnce();
    void orderedModelShowsRowsInOrder();
    void connectTexts_data();
    void connectTexts();
    void tableListIsCappedAt251();
};

void TestIndexOrder::order_data()
{
    QTest::addColumn<QList<QVariant>>("values");
    QTest::addColumn<bool>("descending");
    QTest::addColumn<bool>("caseInsensitive");
    QTest::addColumn<QList<QVariant>>("expected");
    const QVariant null;
    QTest::newRow("numbers as numbers, not as text")
        << QList<QVariant>{qlonglong(10), qlonglong(9), 2.5, qlonglong(-1)} << false << false
        << QList<QVariant>{qlonglong(-1), 2.5, qlonglong(9), qlonglong(10)};
    QTest::newRow("nulls come first")
        << QList<QVariant>{QStringLiteral("b"), null, QStringLiteral("a")} << false << false
        << QList<QVariant>{null, QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("descending puts nulls last")
        << QList<QVariant>{QStringLiteral("b"), null, QStringLiteral("c")} << true << false
        << QList<QVariant>{QStringLiteral("c"), QStringLiteral("b"), null};
    QTest::newRow("text with case")
        << QList<QVariant>{QStringLiteral("b"), QStringLiteral("B"), QStringLiteral("a")} << false << false
        << QList<QVariant>{QStringLiteral("B"), QStringLiteral("a"), QStringLiteral("b")};
    QTest::newRow("text without case")
        << QList<QVariant>{QStringLiteral("b"), QStringLiteral("C"), QStringLiteral("a")} << false << true
        << QList<QVariant>{QStringLiteral("a"), QStringLiteral("b"), QStringLiteral("C")};
    QTest::newRow("dates and date-times on one scale")
        << QList<QVariant>{QDateTime(QDate(2020, 1, 2), QTime(8, 0), QTimeZone::utc()), QDate(2020, 1, 2),
                           QDate(2019, 12, 31)}
        << false << false
        << QList<QVariant>{QDate(2019, 12, 31), QDate(2020, 1, 2),
                           QDateTime(QDate(2020, 1, 2), QTime(8, 0), QTimeZone::utc())};
    QTest::newRow("mixed kinds: numbers before dates before text")
        << QList<QVariant>{QStringLiteral("x"), QDate(2000, 1, 1), qlonglong(5)} << false << false
        << QList<QVariant>{qlonglong(5), QDate(2000, 1, 1), QStringLiteral("x")};
}

void TestIndexOrder::order()
{
    QFETCH(QList<QVariant>, values);
    QFETCH(bool, descending);
    QFETCH(bool, caseInsensitive);
    QFETCH(QList<QVariant>, expected);
    QList<Row> rows;
    for (const QVariant &v : values)
        rows << Row{v};
    ForwardTable table({{"K", FieldType::Text, 10}}, rows);
    const Result<RowOrder> order = indexOrder(table, IndexKey{{Part{0, descending, caseInsensitive}}});
    QVERIFY2(order.ok(), qPrintable(order.errorString));
    QCOMPARE(firstColumn(rows, order.value), expected);
}

void TestIndexOrder::equalKeysKeepTheTableOrder()
{
    // Two key parts: the second decides among equal firsts; rows equal in
    // both stay in the table's order.
    const QList<Row> rows = {
        {QStringLiteral("r0"), qlonglong(2), QStringLiteral("x")}, {QStringLiteral("r1"), qlonglong(1), QStringLiteral("y")},
        {QStringLiteral("r2"), qlonglong(2), QStringLiteral("x")}, {QStringLiteral("r3"), qlonglong(2), QStringLiteral("a")},
        {QStringLiteral("r4"), qlonglong(1), QStringLiteral("y")},
    };
    ForwardTable table({{"ID", FieldType::Text, 2}, {"N", FieldType::Long, 4}, {"S", FieldType::Text, 1}}, rows);
    const Result<RowOrder> order = indexOrder(table, IndexKey{{Part{1, false, false}, Part{2, true, false}}});
    QVERIFY(order.ok());
    QCOMPARE(order.value, (RowOrder{1, 4, 0, 2, 3}));
}

void TestIndexOrder::keyOutsideTheTableFails()
{
    ForwardTable table({{"K", FieldType::Text, 10}}, {{QStringLiteral("a")}});
    const Result<RowOrder> order = indexOrder(table, IndexKey{{Part{3, false, false}}});
    QVERIFY(!order.ok());
    QVERIFY(order.errorString.contains(QLatin1String("does not have")));
    QCOMPARE(table.reads, 0);
}

void TestIndexOrder::cancelledOrderIsEmpty()
{
    QList<Row> rows;
    for (int i = 0; i < 10000; ++i)
        rows << Row{qlonglong(10000 - i)};
    ForwardTable table({{"N", FieldType::Long, 4}}, rows);
    std::atomic_bool cancel = false;
    qint64 lastProgress = 0;
    const Result<RowOrder> order = indexOrder(table, IndexKey{{Part{0, false, false}}}, &cancel, [&](qint64 read) {
        lastProgress = read;
        cancel = true; // the user stops after the first page
    });
    QVERIFY(order.ok());
    QVERIFY(order.value.empty());
    QVERIFY(lastProgress > 0 && lastProgress < 10000);
}

void TestIndexOrder::rowsAtAreReadForwardsOnce()
{
    QList<Row> rows;
    for (int i = 0; i < 100; ++i)
        rows << Row{qlonglong(i)};
    ForwardTable table({{"N", FieldType::Long, 4}}, rows);
    const std::vector<qint64> wanted = {90, 3, 4, 5, 50, 3, 99};
    const Result<QList<Row>> read = readRowsAt(table, wanted);
    QVERIFY(read.ok());
    QList<QVariant> got;
    for (const Row &row : read.value)
        got << row.value(0);
    QCOMPARE(got, (QList<QVariant>{qlonglong(90), qlonglong(3), qlonglong(4), qlonglong(5), qlonglong(50),
                                   qlonglong(3), qlonglong(99)}));
    // Runs: 3-5, 50, 90, 99, in ascending order: no read goes backwards.
    QCOMPARE(table.rewinds, 0);
    QCOMPARE(table.reads, 4);
}

void TestIndexOrder::orderedModelShowsRowsInOrder()
{
    QList<Row> rows;
    for (int i = 0; i < 600; ++i)
        rows << Row{qlonglong(i % 7), QStringLiteral("row %1").arg(i)};
    auto table = std::make_unique<ForwardTable>(QList<Field>{{"N", FieldType::Long, 4}, {"T", FieldType::Text, 9}}, rows);
    ForwardTable *raw = table.get();
    const Result<RowOrder> order = indexOrder(*raw, IndexKey{{Part{0, true, false}}});
    QVERIFY(order.ok());
    TableModel model(std::move(table));
    model.setOrder(order.value);
    QVERIFY(model.isOrdered());
    QCOMPARE(model.rowCount(), 600);
    // The first rows hold 6 (600 / 7 rounded up of them), in the table's order.
    QCOMPARE(model.value(0, 0).toLongLong(), 6);
    QCOMPARE(model.value(0, 1).toString(), QStringLiteral("row 6"));
    QCOMPARE(model.value(1, 1).toString(), QStringLiteral("row 13"));
    QCOMPARE(model.value(599, 0).toLongLong(), 0);
    QCOMPARE(model.value(599, 1).toString(), QStringLiteral("row 595"));
    model.setOrder({});
    QCOMPARE(model.value(1, 1).toString(), QStringLiteral("row 1"));
}

void TestIndexOrder::connectTexts_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QString>("password");
    QTest::addColumn<QString>("connect");
    QTest::addColumn<bool>("tableList");
    QTest::newRow("DBF") << "DBF" << "" << "dBASE 5.0;" << false;
    QTest::newRow("DB") << "DB" << "" << "Paradox 5.x;" << false;
    QTest::newRow("MDB without password") << "MDB" << "" << "Access" << true;
    QTest::newRow("MDB with password") << "MDB" << "secret" << ";pwd=secret" << true;
    QTest::newRow("XLS ignores a password") << "XLS" << "secret" << "Excel 8.0;" << true;
    QTest::newRow("WK4") << "WK4" << "" << "Lotus WK4;" << true;
    QTest::newRow("not a table file") << "TXT" << "" << "" << false;
}

void TestIndexOrder::connectTexts()
{
    QFETCH(QString, extension);
    QFETCH(QString, password);
    QFETCH(QString, connect);
    QFETCH(bool, tableList);
    QCOMPARE(connectText(extension, password), connect);
    QCOMPARE(offersTableList(extension), tableList);
}

void TestIndexOrder::tableListIsCappedAt251()
{
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("many.db"));
    QStringList statements;
    for (int i = 0; i < 260; ++i)
        statements << QStringLiteral("CREATE TABLE t%1 (a INTEGER, b TEXT)").arg(i, 3, 10, QLatin1Char('0'));
    statements << QStringLiteral("CREATE INDEX byb ON t000 (b)");
    QVERIFY(writeSqliteFile(path, statements));

    DatabaseValues values;
    QCOMPARE(readDatabaseTables(path, QString(), values), QStringLiteral("t000"));
    QCOMPARE(values.tableCount, 251);
    QCOMPARE(values.tableNames.size(), 251);
    QCOMPARE(values.tableNames.last(), QStringLiteral("t250"));

    readTableStructure(path, QString(), QStringLiteral("t000"), values);
    QCOMPARE(values.lastField, 1);
    QCOMPARE(values.fields.value(1).name, QStringLiteral("b"));
    QCOMPARE(values.indexNames, QStringList{QStringLiteral("byb")});

    // A file that does not open leaves no tables and no structure.
    QVERIFY(readDatabaseTables(dir.filePath(QStringLiteral("missing.mdb")), QString(), values).isEmpty());
    QCOMPARE(values.tableCount, 0);
    readTableStructure(dir.filePath(QStringLiteral("missing.mdb")), QString(), QStringLiteral("t000"), values);
    QCOMPARE(values.lastField, -1);
    QVERIFY(values.indexNames.isEmpty());
}

QTEST_GUILESS_MAIN(TestIndexOrder)
#include "tst_indexorder.moc"
