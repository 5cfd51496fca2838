#include "core/catalogue/CommandLine.h"

#include <QTest>

using namespace tarnby;

class TestCommandLine : public QObject
{
    Q_OBJECT
private slots:
    void split_data();
    void split();
    void roundTrip_data();
    void roundTrip();
};

void TestCommandLine::split_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QStringList>("args");
    QTest::newRow("empty") << "" << QStringList{};
    QTest::newRow("only blanks and tabs") << " \t  \t" << QStringList{};
    QTest::newRow("one name") << "a.jpg" << QStringList{"a.jpg"};
    QTest::newRow("blank separated") << "a.jpg b.txt" << QStringList{"a.jpg", "b.txt"};
    QTest::newRow("tab separated") << "a.jpg\tb.txt" << QStringList{"a.jpg", "b.txt"};
    QTest::newRow("runs of separators") << "  a \t\t b  " << QStringList{"a", "b"};
    QTest::newRow("quoted name with blanks") << "\"My Pictures/cat.jpg\" x" << QStringList{"My Pictures/cat.jpg", "x"};
    QTest::newRow("quoted name with a tab") << "\"a\tb\"" << QStringList{"a\tb"};
    QTest::newRow("unclosed quote runs to the end") << "\"open ended name" << QStringList{"open ended name"};
    QTest::newRow("empty quotes give an empty argument") << "\"\" a" << QStringList{"", "a"};
    QTest::newRow("quote inside a word is kept") << "ab\"c" << QStringList{"ab\"c"};
    QTest::newRow("quoted then adjacent word") << "\"a b\"c" << QStringList{"a b", "c"};
}

void TestCommandLine::split()
{
    QFETCH(QString, line);
    QFETCH(QStringList, args);
    QCOMPARE(splitCommandLine(line), args);
}

void TestCommandLine::roundTrip_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("plain") << QStringList{"a.jpg", "/tmp/b.png"};
    QTest::newRow("blanks inside") << QStringList{"/home/me/My Pictures/cat.jpg", "x"};
    QTest::newRow("tab inside") << QStringList{"a\tb.txt"};
    QTest::newRow("non-ASCII") << QStringList{"/tmp/Bäume über.jpg"};
}

void TestCommandLine::roundTrip()
{
    // main() joins the arguments the desktop passed; splitting must give them back.
    QFETCH(QStringList, args);
    QCOMPARE(splitCommandLine(joinArguments(args)), args);
}

QTEST_GUILESS_MAIN(TestCommandLine)
#include "tst_commandline.moc"
