#include "CliRun.h"
#include "PdfReadBack.h"
#include "SqliteMaker.h"
#include "TestDir.h"

#include <QImage>
#include <QTest>

using clitest::runCli;

using sqlitemaker::makeDatabase;

class TestCliPrint : public QObject
{
    Q_OBJECT

private slots:
    void picture();
    void textFile();
    void tableListing_data();
    void tableListing();
    void report_data();
    void report();
    void refusals_data();
    void refusals();
};

void TestCliPrint::picture()
{
    TestDir dir;
    QImage image(96, 192, QImage::Format_RGB32); // 1 by 2 inches at 96 dpi
    image.fill(Qt::blue);
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);
    QVERIFY(image.save(dir.filePath("boat.png")));
    const QString pdf = dir.filePath("boat.pdf");
    const clitest::Run run = runCli(QStringLiteral("print"),
                                    {dir.filePath("boat.png"), "--pdf", pdf, "--title", "My Boat", "--title-at",
                                     "3,1", "--at", "4,5", "--size", "2x1"});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QImage page = pdfreadback::render(pdf, 20);
    QCOMPARE(page.size(), QSize(170, 220));
    auto blue = [&](double x, double y) { return QColor(page.pixel(int(x * 20), int(y * 20))).blue() > 200
                                                 && QColor(page.pixel(int(x * 20), int(y * 20))).red() < 60; };
    QVERIFY(blue(4.2, 5.2));
    QVERIFY(blue(5.8, 5.8));
    QVERIFY(!blue(3.8, 5.5));
    QVERIFY(!blue(5.0, 6.2));
    const QList<pdfreadback::Word> words = pdfreadback::words(pdf);
    QCOMPARE(words.size(), 2);
    QCOMPARE(words[0].text, QStringLiteral("My"));
    QVERIFY(qAbs(words[0].x - 3.0) < 0.05);
    QVERIFY(words[0].y > 0.95 && words[0].y < 1.2);
}

void TestCliPrint::textFile()
{
    TestDir dir;
    QByteArray text;
    for (int i = 1; i <= 150; ++i)
        text += "Line number " + QByteArray::number(i) + "\r\n";
    const QString file = dir.createFile("long.LOG", text);
    const QString pdf = dir.filePath("log.pdf");
    const clitest::Run run = runCli(QStringLiteral("print"), {file, "--pdf", pdf});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QStringList pages = pdfreadback::pages(pdf);
    QVERIFY(pages.size() >= 3);
    QVERIFY(pages[0].contains(QStringLiteral("List Data for File: long.LOG")));
    QVERIFY(pages[1].contains(QStringLiteral("Line number 1\n")));
    QVERIFY(pages.last().contains(QStringLiteral("Line number 150")));
    QCOMPARE(run.out.trimmed(), QByteArray::number(pages.size()) + " pages");
}

void TestCliPrint::tableListing_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QStringList>("printed");
    QTest::addColumn<QStringList>("absent");
    QTest::newRow("every field of the first table")
        << QStringList{} << QStringList{"name", "price", "notes", "anchor"} << QStringList{"crew"};
    QTest::newRow("chosen fields")
        << QStringList{"--fields", "notes,name"} << QStringList{"notes", "name", "anchor", "first"}
        << QStringList{"price", "12.5"};
    QTest::newRow("another table")
        << QStringList{"--table", "crew"} << QStringList{"sailor", "Ann"} << QStringList{"anchor"};
}

void TestCliPrint::tableListing()
{
    QFETCH(QStringList, options);
    QFETCH(QStringList, printed);
    QFETCH(QStringList, absent);
    TestDir dir;
    const QString db = dir.filePath("stock.db");
    QVERIFY(makeDatabase(db, {"CREATE TABLE gear (name VARCHAR(20), price REAL, notes TEXT)",
                              "INSERT INTO gear VALUES ('anchor', 12.5, 'first line' || char(13,10) || 'second line')",
                              "CREATE TABLE crew (sailor VARCHAR(10))", "INSERT INTO crew VALUES ('Ann')"}));
    const QString pdf = dir.filePath("gear.pdf");
    const clitest::Run run = runCli(QStringLiteral("print"), QStringList{db, "--pdf", pdf} + options);
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("List Data for File: stock.db")));
    for (const QString &text : printed)
        QVERIFY2(pages[0].contains(text), qPrintable(text));
    for (const QString &text : absent)
        QVERIFY2(!pages[0].contains(text), qPrintable(text));
}

void TestCliPrint::report_data()
{
    QTest::addColumn<QStringList>("options");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("file type") << QStringList{"--report", "*.JPG"} << "Folder Locations for File Type: *.JPG"
                               << QStringList{"a.jpg", "b.JPG", "c.jpg"};
    QTest::newRow("use file") << QStringList{"b.JPG", "--use-file", "--report", ""}
                              << "Folder Locations for File: b.JPG" << QStringList{"b.JPG"};
}

void TestCliPrint::report()
{
    QFETCH(QStringList, options);
    QFETCH(QString, title);
    QFETCH(QStringList, names);
    TestDir dir;
    dir.createFile("tree/one/a.jpg");
    dir.createFile("tree/one/b.JPG");
    dir.createFile("tree/two/deeper/c.jpg");
    dir.createFile("tree/two/skip.png");
    const QString pdf = dir.filePath("report.pdf");
    const clitest::Run run = runCli(QStringLiteral("print"), options + QStringList{dir.filePath("tree"), "--pdf", pdf});
    QVERIFY2(run.exitCode == 0, run.err.constData());
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY2(pages[0].contains(title), qPrintable(pages[0]));
    for (const QString &name : names)
        QVERIFY2(pages[0].contains(name), qPrintable(name));
    QVERIFY(!pages[0].contains(QStringLiteral("skip.png")));
    QVERIFY(pages[0].contains(dir.filePath("tree/one")));
}

void TestCliPrint::refusals_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("message");
    QTest::newRow("no pdf") << QStringList{"x.txt"} << 2 << "--pdf OUT is required";
    QTest::newRow("damaged table") << QStringList{"@bad.dbf", "--pdf", "@out.pdf"} << 1
                                   << "Database File Cannot be Opened";
    QTest::newRow("no file type for the report") << QStringList{"--report", " ", "@", "--pdf", "@out.pdf"} << 1
                                                  << "You must Select File or File Type for Report";
    QTest::newRow("bad position") << QStringList{"@a.txt", "--at", "1;2", "--pdf", "@out.pdf"} << 2
                                  << "--at wants X,Y in inches";
    QTest::newRow("unknown field") << QStringList{"@ok.db", "--fields", "nothere", "--pdf", "@out.pdf"} << 1
                                   << "no field named nothere";
    QTest::newRow("help") << QStringList{"--help"} << 2 << "Usage: tarnby-cli print";
}

void TestCliPrint::refusals()
{
    QFETCH(QStringList, args);
    QFETCH(int, exitCode);
    QFETCH(QString, message);
    TestDir dir;
    dir.createFile("bad.dbf", "\x03garbage");
    dir.createFile("a.txt", "text");
    QVERIFY(makeDatabase(dir.filePath("ok.db"), {"CREATE TABLE t (a INTEGER)"}));
    for (QString &arg : args) {
        if (arg.startsWith(QLatin1Char('@')))
            arg = dir.filePath(arg.mid(1));
    }
    const clitest::Run run = runCli(QStringLiteral("print"), args);
    QCOMPARE(run.exitCode, exitCode);
    QVERIFY2(QString::fromUtf8(run.err).contains(message), run.err.constData());
    if (args.contains(QLatin1String("--help")))
        QVERIFY2(run.err.startsWith("Usage:"), run.err.constData());
    // Nothing is left behind when the job did not print.
    QVERIFY(!QFile::exists(dir.filePath("out.pdf")));
}

QTEST_MAIN(TestCliPrint)
#include "tst_cli_print.moc"
