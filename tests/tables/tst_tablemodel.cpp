#include "core/tables/TableModel.h"

#include <QDate>
#include <QTest>

using namespace tarnby::tables;

namespace {

// A table of any size whose cells are computed: row r holds r and "r<r>";
// it records the reads asked of it.
class CountingTable : public Table
{
public:
    explicit CountingTable(qint64 rows, QList<qint64> *reads)
        : m_rows(rows)
        , m_reads(reads)
    {
    }
    QString name() const override { return QStringLiteral("counting"); }
    QList<Field> fields() const override { return {{"N", FieldType::Long, 4}, {"TEXT", FieldType::Text, 12}}; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows; }
    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        m_reads->append(first);
        if (first == failingRow)
            return Result<QList<Row>>::failure(QStringLiteral("unreadable page"));
        QList<Row> rows;
        for (qint64 r = first; r < qMin(m_rows, first + count); ++r)
            rows.append(Row{qlonglong(r), QStringLiteral("r%1").arg(r)});
        return Result<QList<Row>>::success(rows);
    }
    qint64 failingRow = -1;

private:
    qint64 m_rows;
    QList<qint64> *m_reads;
};

} // namespace

class TestTableModel : public QObject
{
    Q_OBJECT
private slots:
    void columnWidths_data();
    void columnWidths();
    void millionRowsOpenWithoutReading();
    void pagesAreReadOnceAndBounded();
    void headersAndRoles();
    void unreadablePageShowsEmptyCells();
};

void TestTableModel::columnWidths_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("twips");
    QTest::newRow("name longer than a 1-character field") << "ACTIVE" << 1 << 600;
    QTest::newRow("40-character text capped") << "NAME" << 40 << 2500;
    QTest::newRow("name as long as the size") << "CODE" << 4 << 480;
    QTest::newRow("memo of size 0") << "NOTES" << 0 << 500;
    QTest::newRow("20 characters just under the cap") << "CITY" << 20 << 2400;
    QTest::newRow("21 characters over the cap") << "CITY" << 21 << 2500;
    QTest::newRow("very long name capped") << QString(30, QLatin1Char('X')) << 2 << 2500;
}

void TestTableModel::columnWidths()
{
    QFETCH(QString, name);
    QFETCH(int, size);
    QFETCH(int, twips);
    QCOMPARE(columnWidthTwips(Field{name, FieldType::Text, size}), twips);
}

void TestTableModel::millionRowsOpenWithoutReading()
{
    QList<qint64> reads;
    TableModel model(std::make_unique<CountingTable>(1000000, &reads));
    QCOMPARE(model.rowCount(), 1000000);
    QCOMPARE(model.columnCount(), 2);
    QVERIFY(reads.isEmpty());
    QCOMPARE(model.value(999999, 1), QVariant(QStringLiteral("r999999")));
    QCOMPARE(reads, QList<qint64>{999936});
}

void TestTableModel::pagesAreReadOnceAndBounded()
{
    QList<qint64> reads;
    TableModel model(std::make_unique<CountingTable>(100000, &reads));
    for (int r = 0; r < TableModel::pageRows; ++r)
        QCOMPARE(model.value(r, 0).toLongLong(), r);
    QCOMPARE(reads.size(), 1);
    // Scrolling through every row keeps no more than the page limit.
    for (int r = 0; r < 100000; r += 97)
        QCOMPARE(model.value(r, 0).toLongLong(), r);
    QVERIFY(model.pagesHeld() <= TableModel::maxPages);
    QCOMPARE(reads.size(), (100000 + TableModel::pageRows - 1) / TableModel::pageRows);
    // The page used last is still held; the first one was let go.
    reads.clear();
    model.value(99999, 0);
    QVERIFY(reads.isEmpty());
    model.value(0, 0);
    QCOMPARE(reads, QList<qint64>{0});
}

void TestTableModel::headersAndRoles()
{
    QList<qint64> reads;
    TableModel model(std::make_unique<CountingTable>(10, &reads));
    QCOMPARE(model.headerData(0, Qt::Horizontal), QVariant(QStringLiteral("N")));
    QCOMPARE(model.headerData(1, Qt::Horizontal), QVariant(QStringLiteral("TEXT")));
    QCOMPARE(model.headerData(4, Qt::Vertical), QVariant(5));
    QCOMPARE(model.data(model.index(3, 0)), QVariant(QStringLiteral("3")));
    QCOMPARE(model.data(model.index(3, 0), Qt::EditRole), QVariant(qlonglong(3)));
    QVERIFY(!model.value(10, 0).isValid());
    QVERIFY(!model.value(0, 2).isValid());
}

void TestTableModel::unreadablePageShowsEmptyCells()
{
    QList<qint64> reads;
    auto table = std::make_unique<CountingTable>(1000, &reads);
    table->failingRow = TableModel::pageRows;
    TableModel model(std::move(table));
    QCOMPARE(model.data(model.index(TableModel::pageRows + 1, 1)), QVariant(QString()));
    QCOMPARE(model.lastError(), QStringLiteral("unreadable page"));
    QCOMPARE(model.data(model.index(1, 1)), QVariant(QStringLiteral("r1")));
}

QTEST_GUILESS_MAIN(TestTableModel)
#include "tst_tablemodel.moc"
