#include "core/viewer/DocumentRules.h"

#include <QTest>

using namespace tarnby::viewer;

class TestDocumentRules : public QObject
{
    Q_OBJECT
private slots:
    void textView_data();
    void textView();
    void allPages_data();
    void allPages();
    void saveAsName_data();
    void saveAsName();
    void pictureWindowTwips_data();
    void pictureWindowTwips();
    void textBox_data();
    void textBox();
    void statusPanels();
    void internetWait_data();
    void internetWait();
    void internetWaitEndsOnArrival();
};

void TestDocumentRules::textView_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("useTextDoc");
    QTest::addColumn<TextView>("view");
    QTest::newRow("DOC opens in the web view") << "DOC" << false << TextView::WebView;
    QTest::newRow("DOC with the option goes to the text box") << "DOC" << true << TextView::PlainText;
    QTest::newRow("RTF is rich text without the option") << "RTF" << false << TextView::RichText;
    QTest::newRow("RTF is rich text whatever the option") << "RTF" << true << TextView::RichText;
    QTest::newRow("SHTML") << "SHTML" << false << TextView::WebView;
    QTest::newRow("WPS") << "WPS" << false << TextView::WebView;
    QTest::newRow("WPS with the option") << "WPS" << true << TextView::PlainText;
    QTest::newRow("lower-case html") << "html" << false << TextView::WebView;
    QTest::newRow("WRI is plain text") << "WRI" << false << TextView::PlainText;
    QTest::newRow("INI") << "INI" << true << TextView::PlainText;
}

void TestDocumentRules::textView()
{
    QFETCH(QString, extension);
    QFETCH(bool, useTextDoc);
    QFETCH(TextView, view);
    QCOMPARE(textViewFor(extension, useTextDoc), view);
}

void TestDocumentRules::allPages_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<bool>("all");
    QTest::newRow("ANI loads all pages") << "ANI" << true;
    QTest::newRow("FLC loads all pages") << "FLC" << true;
    QTest::newRow("flc in lower case") << "flc" << true;
    QTest::newRow("TIF loads one page") << "TIF" << false;
    QTest::newRow("DCX loads one page") << "DCX" << false;
    QTest::newRow("JPG loads one page") << "JPG" << false;
}

void TestDocumentRules::allPages()
{
    QFETCH(QString, extension);
    QFETCH(bool, all);
    QCOMPARE(loadsAllPages(extension), all);
}

void TestDocumentRules::saveAsName_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QString>("name");
    QTest::newRow("local path") << "/home/user/pics/cat.jpg" << "cat.jpg";
    QTest::newRow("dot in a folder name") << "/home/user/a.b/c.png" << "c.png";
    QTest::newRow("HTTP: name is cut at the last slash") << "HTTP://example.org/x/dog.gif" << "dog.gif";
    QTest::newRow("http in lower case") << "http://example.org/y/z/bird.png" << "bird.png";
    QTest::newRow("backslash path") << "C:\\Pictures\\old.bmp" << "old.bmp";
    QTest::newRow("bare name") << "plain.tif" << "plain.tif";
}

void TestDocumentRules::saveAsName()
{
    QFETCH(QString, path);
    QFETCH(QString, name);
    QCOMPARE(saveAsFileName(path), name);
}

void TestDocumentRules::pictureWindowTwips_data()
{
    QTest::addColumn<QSize>("pixels");
    QTest::addColumn<double>("tppX");
    QTest::addColumn<double>("tppY");
    QTest::addColumn<QSize>("nonClient");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("128 square at 96 DPI") << QSize(128, 128) << 15.0 << 15.0 << QSize(120, 405) << QSize(2040, 2325);
    QTest::newRow("no frame") << QSize(100, 75) << 15.0 << 15.0 << QSize(0, 0) << QSize(1500, 1125);
    QTest::newRow("120 DPI") << QSize(100, 50) << 12.0 << 12.0 << QSize(96, 300) << QSize(1296, 900);
    QTest::newRow("one pixel") << QSize(1, 1) << 15.0 << 15.0 << QSize(120, 405) << QSize(135, 420);
}

void TestDocumentRules::pictureWindowTwips()
{
    QFETCH(QSize, pixels);
    QFETCH(double, tppX);
    QFETCH(double, tppY);
    QFETCH(QSize, nonClient);
    QFETCH(QSize, expected);
    QCOMPARE(tarnby::viewer::pictureWindowTwips(pixels, tppX, tppY, nonClient), expected);
}

void TestDocumentRules::textBox_data()
{
    QTest::addColumn<QSize>("window");
    QTest::addColumn<QSize>("previous");
    QTest::addColumn<QSize>("expected");
    QTest::newRow("show text size") << QSize(6500, 4000) << QSize(1, 1) << QSize(6400, 3580);
    QTest::newRow("height 420 keeps the previous height") << QSize(6500, 420) << QSize(6400, 3580) << QSize(6400, 3580);
    QTest::newRow("height 421 gives one twip") << QSize(6500, 421) << QSize(6400, 3580) << QSize(6400, 1);
    QTest::newRow("width 100 keeps the previous width") << QSize(100, 4000) << QSize(6400, 3580) << QSize(6400, 3580);
    QTest::newRow("both tiny keep both") << QSize(50, 300) << QSize(777, 888) << QSize(777, 888);
}

void TestDocumentRules::textBox()
{
    QFETCH(QSize, window);
    QFETCH(QSize, previous);
    QFETCH(QSize, expected);
    QCOMPARE(textBoxTwips(window, previous), expected);
}

void TestDocumentRules::statusPanels()
{
    const StatusPanels picture = pictureStatusPanels(1024, 768, 24, 1234567);
    QCOMPARE(picture.first, QStringLiteral("1024 x 768"));
    QCOMPARE(picture.second, QStringLiteral("24 Bitmap Bits"));
    QCOMPARE(picture.third, QStringLiteral("1,234,567  Bytes"));

    const StatusPanels text = fileStatusPanels(999);
    QVERIFY(text.first.isEmpty());
    QVERIFY(text.second.isEmpty());
    QCOMPARE(text.third, QStringLiteral("999  Bytes"));
    QCOMPARE(formatByteCount(0), QStringLiteral("0  Bytes"));
    QCOMPARE(formatByteCount(1000), QStringLiteral("1,000  Bytes"));
    QCOMPARE(formatByteCount(209715200), QStringLiteral("209,715,200  Bytes"));
}

void TestDocumentRules::internetWait_data()
{
    QTest::addColumn<qint64>("elapsed");
    QTest::addColumn<InternetFetchWatch::Verdict>("verdict");
    QTest::newRow("at the start") << qint64(0) << InternetFetchWatch::Verdict::Waiting;
    QTest::newRow("still loading after 50 seconds: no message") << qint64(50) << InternetFetchWatch::Verdict::Waiting;
    QTest::newRow("at 51 seconds the picture is not found") << qint64(51) << InternetFetchWatch::Verdict::TimedOut;
    QTest::newRow("long after") << qint64(500) << InternetFetchWatch::Verdict::TimedOut;
}

void TestDocumentRules::internetWait()
{
    QFETCH(qint64, elapsed);
    QFETCH(InternetFetchWatch::Verdict, verdict);
    qint64 now = 1'700'000'000;
    InternetFetchWatch watch([&now] { return now; });
    QCOMPARE(watch.check(false), InternetFetchWatch::Verdict::Idle);
    watch.start();
    now += elapsed;
    QCOMPARE(watch.check(false), verdict);
    QCOMPARE(watch.isRunning(), verdict == InternetFetchWatch::Verdict::Waiting);
}

void TestDocumentRules::internetWaitEndsOnArrival()
{
    qint64 now = 10;
    InternetFetchWatch watch([&now] { return now; });
    watch.start();
    now = 40;
    QCOMPARE(watch.check(false), InternetFetchWatch::Verdict::Waiting);
    QCOMPARE(watch.check(true), InternetFetchWatch::Verdict::Completed);
    now = 100;
    // Once the picture has come, the clock no longer matters.
    QCOMPARE(watch.check(false), InternetFetchWatch::Verdict::Idle);
}

QTEST_GUILESS_MAIN(TestDocumentRules)
#include "tst_documentrules.moc"
