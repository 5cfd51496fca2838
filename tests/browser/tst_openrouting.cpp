#include "core/catalogue/FileCatalogue.h"
#include "core/catalogue/OpenRouting.h"

#include <QTest>

using namespace tarnby;

// Where the browser sends a file it opens, by the file's name alone.
class TestOpenRouting : public QObject
{
    Q_OBJECT
private slots:
    void route_data();
    void route();
};

void TestOpenRouting::route_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("route");
    const int player = int(OpenRoute::Player);
    for (const char *name : {"a.wav", "a.MID", "a.rmi", "a.avi", "a.mpg", "a.mov", "a.mp3", "a.m3u", "track.dat",
                             "track01.cda", "list.asx"})
        QTest::newRow(name) << QString::fromLatin1(name) << player;
    QTest::newRow("zip goes to the unzip offer") << "archive.ZIP" << int(OpenRoute::Unzip);
    QTest::newRow("picture to the viewing frame") << "photo.jpg" << int(OpenRoute::Viewer);
    QTest::newRow("one-bit msp to the viewing frame") << "paint.msp" << int(OpenRoute::Viewer);
    QTest::newRow("lotus wk4 to the viewing frame") << "sheet.wk4" << int(OpenRoute::Viewer);
    QTest::newRow("text to the viewing frame") << "notes.txt" << int(OpenRoute::Viewer);
    QTest::newRow("dic is not a known type") << "scan.dic" << int(OpenRoute::Unsupported);
    QTest::newRow("unknown type") << "strange.qqq" << int(OpenRoute::Unsupported);
    QTest::newRow("no extension does nothing") << "README" << int(OpenRoute::Nothing);
    QTest::newRow("trailing dot does nothing") << "odd." << int(OpenRoute::Nothing);
}

void TestOpenRouting::route()
{
    QFETCH(QString, name);
    QFETCH(int, route);
    QCOMPARE(int(routeForOpen(catalogue::GetFileTypeFlag(name))), route);
}

QTEST_GUILESS_MAIN(TestOpenRouting)
#include "tst_openrouting.moc"
