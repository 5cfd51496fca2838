#include "core/platform/tables/CsvText.h"
#include "core/platform/tables/DbfText.h"

#include <QDate>
#include <QLocale>
#include <QRandomGenerator>
#include <QTest>

using namespace tarnby::tables;

namespace {

// What the typed way makes of a numeric cell read as a double.
QByteArray doubleText(QByteArrayView text)
{
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? valueText(value).toUtf8() : QByteArray();
}

} // namespace

class TestDbfText : public QObject
{
    Q_OBJECT
private slots:
    void decimals_data();
    void decimals();
    void decimalsAgreeWithDoubles();
    void integers_data();
    void integers();
    void datesAgreeWithQDate();
    void singleByteCodePages_data();
    void singleByteCodePages();
};

void TestDbfText::decimals_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<bool>("handled");
    QTest::newRow("trailing zeros dropped") << QByteArray("1.50") << true;
    QTest::newRow("leading zeros dropped") << QByteArray("007.25") << true;
    QTest::newRow("negative zero is 0") << QByteArray("-0.00") << true;
    QTest::newRow("point first") << QByteArray(".5") << true;
    QTest::newRow("minus point first") << QByteArray("-.5") << true;
    QTest::newRow("point last") << QByteArray("12.") << true;
    QTest::newRow("round hundred thousand in exponent form") << QByteArray("100000.00") << true;
    QTest::newRow("tie between the forms stays plain") << QByteArray("1500000") << true;
    QTest::newRow("ten thousandth in exponent form") << QByteArray("0.0001") << true;
    QTest::newRow("small with digits stays plain") << QByteArray("0.00012345") << true;
    QTest::newRow("smaller in exponent form") << QByteArray("0.000012345") << true;
    QTest::newRow("three-digit exponent") << QByteArray("1" + QByteArray(120, '0')) << true;
    QTest::newRow("three-digit negative exponent") << QByteArray("0." + QByteArray(110, '0') + "3") << true;
    QTest::newRow("zeros inside kept") << QByteArray("100.005") << true;
    QTest::newRow("fifteen digits") << QByteArray("12345678901.2345") << true;
    QTest::newRow("sixteen digits declined") << QByteArray("1234567890123.456") << false;
    QTest::newRow("two points declined") << QByteArray("1.2.3") << false;
    QTest::newRow("plus sign declined") << QByteArray("+5") << false;
    QTest::newRow("exponent declined") << QByteArray("1e3") << false;
    QTest::newRow("lone minus declined") << QByteArray("-") << false;
    QTest::newRow("lone point declined") << QByteArray(".") << false;
    QTest::newRow("inner blank declined") << QByteArray("1 2") << false;
}

void TestDbfText::decimals()
{
    QFETCH(QByteArray, text);
    QFETCH(bool, handled);
    QByteArray out("x,");
    QCOMPARE(appendDecimalText(out, text), handled);
    if (handled)
        QCOMPARE(out, "x," + doubleText(text));
    else
        QCOMPARE(out, QByteArray("x,"));
}

// Numbers of every shape a numeric field holds, against the double's own
// shortest text: whatever the quick way takes, it gets right, and it takes
// every number of up to 15 significant digits.
void TestDbfText::decimalsAgreeWithDoubles()
{
    QRandomGenerator random(12);
    int handled = 0;
    for (int n = 0; n < 200000; ++n) {
        QByteArray text;
        if (random.bounded(4) == 0)
            text += '-';
        const int whole = random.bounded(20);
        const int fraction = random.bounded(3) == 0 ? -1 : random.bounded(20);
        const int zeroBias = random.bounded(10); // runs of zeros, which decide the form
        for (int i = 0; i < whole + fraction + 1; ++i) {
            if (i == whole) {
                if (fraction >= 0)
                    text += '.';
                continue;
            }
            text += random.bounded(10) < zeroBias ? '0' : char('0' + random.bounded(10));
        }
        QByteArray out;
        const bool taken = appendDecimalText(out, text);
        const QByteArray significant = QByteArray(text).replace("-", "").replace(".", "");
        qsizetype first = 0;
        while (first < significant.size() && significant[first] == '0')
            ++first;
        qsizetype last = significant.size();
        while (last > first && significant[last - 1] == '0')
            --last;
        const bool anyDigit = !significant.isEmpty();
        if (anyDigit && last - first <= 15)
            QVERIFY2(taken, text.constData());
        if (taken) {
            QVERIFY2(out == doubleText(text), (text + " gave " + out + ", not " + doubleText(text)).constData());
            ++handled;
        }
    }
    QVERIFY(handled > 100000);
}

void TestDbfText::integers_data()
{
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("expected"); // empty: declined
    QTest::newRow("plain") << QByteArray("42") << QByteArray("42");
    QTest::newRow("leading zeros") << QByteArray("007") << QByteArray("7");
    QTest::newRow("zero") << QByteArray("000") << QByteArray("0");
    QTest::newRow("negative") << QByteArray("-17") << QByteArray("-17");
    QTest::newRow("negative zero") << QByteArray("-0") << QByteArray("0");
    QTest::newRow("eighteen digits") << QByteArray("123456789012345678") << QByteArray("123456789012345678");
    QTest::newRow("round number stays whole") << QByteArray("100000") << QByteArray("100000");
    QTest::newRow("plus declined") << QByteArray("+5") << QByteArray();
    QTest::newRow("lone minus declined") << QByteArray("-") << QByteArray();
    QTest::newRow("letters declined") << QByteArray("12a") << QByteArray();
}

void TestDbfText::integers()
{
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, expected);
    QByteArray out;
    QCOMPARE(appendIntegerText(out, text), !expected.isEmpty());
    QCOMPARE(out, expected);
    if (!expected.isEmpty())
        QCOMPARE(out, valueText(text.toLongLong()).toUtf8());
}

// Every day of the years where the calendar's rules change (leap centuries,
// the first and last four-digit years), and impossible months and days.
void TestDbfText::datesAgreeWithQDate()
{
    const QList<int> years = {0, 1, 4, 999, 1582, 1900, 1999, 2000, 2024, 2100, 2400, 9999};
    for (int year : years) {
        for (int month = 0; month <= 13; ++month) {
            for (int day = 0; day <= 32; ++day) {
                const QByteArray text = QByteArray::number(year).rightJustified(4, '0')
                    + QByteArray::number(month).rightJustified(2, '0') + QByteArray::number(day).rightJustified(2, '0');
                const QDate date(year, month, day);
                QByteArray out;
                const bool taken = appendDateText(out, text);
                QCOMPARE(taken, date.isValid());
                if (taken)
                    QCOMPARE(out, date.toString(Qt::ISODate).toUtf8());
            }
        }
    }
    QByteArray out;
    QVERIFY(!appendDateText(out, "2024 1 5"));
    QVERIFY(!appendDateText(out, "2024011"));
    QVERIFY(out.isEmpty());
}

void TestDbfText::singleByteCodePages_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<bool>("singleByte");
    QTest::newRow("windows-1252") << QByteArray("windows-1252") << true;
    QTest::newRow("windows-1251") << QByteArray("windows-1251") << true;
    // The DOS code pages swap 0x1A, 0x1C and 0x7F among themselves.
    QTest::newRow("IBM437") << QByteArray("IBM437") << true;
    QTest::newRow("IBM866") << QByteArray("IBM866") << true;
    QTest::newRow("macintosh") << QByteArray("macintosh") << true;
    QTest::newRow("Shift_JIS is not") << QByteArray("Shift_JIS") << false;
    QTest::newRow("GBK is not") << QByteArray("GBK") << false;
    QTest::newRow("UTF-8 is not") << QByteArray("UTF-8") << false;
}

void TestDbfText::singleByteCodePages()
{
    QFETCH(QByteArray, name);
    QFETCH(bool, singleByte);
    QStringDecoder decoder(name.constData(), QStringConverter::Flag::Stateless);
    QVERIFY(decoder.isValid());
    const std::optional<SingleByteText> table = SingleByteText::of(decoder);
    QCOMPARE(table.has_value(), singleByte);
    if (!table)
        return;
    QByteArray text;
    for (int b = 0; b < 256; ++b)
        text += char(b);
    text += "caf\x82\x1A\x7F";
    QByteArray out;
    table->append(out, text);
    decoder.resetState();
    QCOMPARE(out, QString(decoder.decode(text)).toUtf8());
}

QTEST_GUILESS_MAIN(TestDbfText)
#include "tst_dbftext.moc"
