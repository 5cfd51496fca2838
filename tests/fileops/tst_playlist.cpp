#include "core/platform/media/Playlist.h"

#include "Fixtures.h"
#include "TestDir.h"

#include <QTest>

using namespace tarnby::media;

class TestPlaylist : public QObject
{
    Q_OBJECT
private slots:
    void m3u_data();
    void m3u();
    void asx_data();
    void asx();
    void hostileAsx_data();
    void hostileAsx();
    void fixtures_data();
    void fixtures();
    void oversizedList();
    void cdaTrack_data();
    void cdaTrack();

private:
    // Parses the row's data with parse, for a list in /lists/mine, and
    // compares the items with the row's locations and titles; clean: no
    // error may be reported either.
    void compareParsed(Playlist (*parse)(const QByteArray &, const QString &), bool clean);
};

void TestPlaylist::compareParsed(Playlist (*parse)(const QByteArray &, const QString &), bool clean)
{
    QFETCH(QByteArray, data);
    QFETCH(QStringList, locations);
    QFETCH(QStringList, titles);
    const QString base = QStringLiteral("/lists/mine");
    const Playlist list = parse(data, base);
    if (clean)
        QVERIFY(list.errorString.isEmpty());
    QStringList gotLocations;
    QStringList gotTitles;
    for (const PlayItem &item : list.items) {
        gotLocations << item.location;
        gotTitles << item.title;
    }
    for (QString &l : locations) {
        l.replace(QLatin1String("@@"), QLatin1String("/lists"));
        l.replace(QLatin1Char('@'), base);
    }
    QCOMPARE(gotLocations, locations);
    QCOMPARE(gotTitles, titles);
}

void TestPlaylist::m3u_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("locations"); // "@" stands for the list's folder, "@@" for its parent
    QTest::addColumn<QStringList>("titles");

    QTest::newRow("plain relative names") << QByteArray("a.mp3\nsub/b.wav\n") << QStringList{"@/a.mp3", "@/sub/b.wav"}
                                          << QStringList{"", ""};
    QTest::newRow("CR LF and blank lines") << QByteArray("a.mp3\r\n\r\n  b.mp3  \r\n")
                                           << QStringList{"@/a.mp3", "@/b.mp3"} << QStringList{"", ""};
    QTest::newRow("backslashes between folders") << QByteArray("Music\\Disc 1\\a.mp3\n")
                                                 << QStringList{"@/Music/Disc 1/a.mp3"} << QStringList{""};
    QTest::newRow("parent folder") << QByteArray("../other/a.mp3\n") << QStringList{"@@/other/a.mp3"}
                                   << QStringList{""};
    QTest::newRow("absolute path") << QByteArray("/srv/music/a.mp3\n") << QStringList{"/srv/music/a.mp3"}
                                   << QStringList{""};
    QTest::newRow("file URL") << QByteArray("file:///srv/my%20music/a.mp3\n")
                              << QStringList{"/srv/my music/a.mp3"} << QStringList{""};
    QTest::newRow("stream address kept") << QByteArray("http://radio.example/stream\n")
                                         << QStringList{"http://radio.example/stream"} << QStringList{""};
    QTest::newRow("EXTINF titles apply to the next item only")
        << QByteArray("#EXTM3U\n#EXTINF:123,Artist - Song\na.mp3\nb.mp3\n#EXTINF:-1,Live\nhttp://x/y\n")
        << QStringList{"@/a.mp3", "@/b.mp3", "http://x/y"} << QStringList{"Artist - Song", "", "Live"};
    QTest::newRow("comments skipped") << QByteArray("# a comment\n#EXTVLCOPT:x\na.mp3\n") << QStringList{"@/a.mp3"}
                                      << QStringList{""};
    QTest::newRow("byte order mark") << QByteArray("\xEF\xBB\xBF" "a.mp3\n") << QStringList{"@/a.mp3"}
                                     << QStringList{""};
    QTest::newRow("Latin-1 names") << QByteArray("#EXTINF:1,K\xF6ln\nK\xF6ln.mp3\n")
                                   << QStringList{QStringLiteral("@/K\u00f6ln.mp3")}
                                   << QStringList{QStringLiteral("K\u00f6ln")};
    QTest::newRow("UTF-8 names") << QByteArray("K\xC3\xB6ln.mp3\n") << QStringList{QStringLiteral("@/K\u00f6ln.mp3")}
                                 << QStringList{""};
    QTest::newRow("empty list") << QByteArray() << QStringList{} << QStringList{};
}

void TestPlaylist::m3u()
{
    compareParsed(parseM3u, true);
}

void TestPlaylist::asx_data()
{
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QStringList>("locations");
    QTest::addColumn<QStringList>("titles");

    QTest::newRow("two entries") << QByteArray("<asx version=\"3.0\"><title>List</title>"
                                               "<entry><title>One</title><ref href=\"a.wma\"/></entry>"
                                               "<entry><ref href=\"http://x/b.wmv\"/></entry></asx>")
                                 << QStringList{"@/a.wma", "http://x/b.wmv"} << QStringList{"One", ""};
    QTest::newRow("names in any case") << QByteArray("<ASX VERSION=\"3.0\"><ENTRY><Title>T</Title>"
                                                     "<REF HREF=\"a.mp3\"/></ENTRY></ASX>")
                                       << QStringList{"@/a.mp3"} << QStringList{"T"};
    QTest::newRow("first ref wins") << QByteArray("<asx><entry><ref href=\"mms://x/a\"/><ref href=\"http://x/a\"/>"
                                                  "</entry></asx>")
                                    << QStringList{"mms://x/a"} << QStringList{""};
    QTest::newRow("bare ampersand in an address")
        << QByteArray("<asx><entry><ref href=\"http://x/play?a=1&b=2\"/></entry></asx>")
        << QStringList{"http://x/play?a=1&b=2"} << QStringList{""};
    QTest::newRow("escaped ampersand") << QByteArray("<asx><entry><ref href=\"http://x/?a=1&amp;b=2\"/></entry></asx>")
                                       << QStringList{"http://x/?a=1&b=2"} << QStringList{""};
    QTest::newRow("entry without ref skipped") << QByteArray("<asx><entry><title>x</title></entry>"
                                                             "<entry><ref href=\"b.mp3\"/></entry></asx>")
                                               << QStringList{"@/b.mp3"} << QStringList{""};
    QTest::newRow("nested list not followed")
        << QByteArray("<asx><entryref href=\"http://x/more.asx\"/><entry><ref href=\"a.mp3\"/></entry></asx>")
        << QStringList{"@/a.mp3"} << QStringList{""};
    QTest::newRow("entries before a syntax error kept")
        << QByteArray("<asx><entry><ref href=\"a.mp3\"/></entry><entry><ref href=\"b.mp3\"></asx>")
        << QStringList{"@/a.mp3"} << QStringList{""};
}

void TestPlaylist::asx()
{
    compareParsed(parseAsx, false);
}

void TestPlaylist::hostileAsx_data()
{
    QTest::addColumn<QByteArray>("data");

    // Each entity is ten of the one before: &j; would be ten billion characters.
    QByteArray laughs = "<?xml version=\"1.0\"?><!DOCTYPE asx [<!ENTITY a \"aaaaaaaaaa\">";
    for (char c = 'b'; c <= 'j'; ++c)
        laughs += "<!ENTITY " + QByteArray(1, c) + " \"" + ("&" + QByteArray(1, char(c - 1)) + ";").repeated(10) + "\">";
    laughs += "]><asx><entry><title>&j;</title><ref href=\"a.mp3\"/></entry></asx>";
    QTest::newRow("billion laughs") << laughs;
    QTest::newRow("external entity") << QByteArray("<?xml version=\"1.0\"?><!DOCTYPE asx [<!ENTITY x SYSTEM "
                                                   "\"file:///etc/passwd\">]><asx><entry><title>&x;</title>"
                                                   "<ref href=\"a.mp3\"/></entry></asx>");
    QTest::newRow("not xml at all") << QByteArray("\x00\x01\x02garbage<<<>>>", 17);
    QTest::newRow("another root") << QByteArray("<html><entry><ref href=\"a.mp3\"/></entry></html>");
    QTest::newRow("deep nesting") << QByteArray("<asx>") + QByteArray("<entry>").repeated(50000) + "</asx>";
}

void TestPlaylist::hostileAsx()
{
    QFETCH(QByteArray, data);
    const Playlist list = parseAsx(data, QStringLiteral("/lists"));
    for (const PlayItem &item : list.items) {
        QCOMPARE(item.location, QStringLiteral("/lists/a.mp3"));
        QVERIFY(item.title.size() < 1000);
        QVERIFY(!item.title.contains(QLatin1String("root:")));
    }
    if (list.items.isEmpty())
        QVERIFY(!list.errorString.isEmpty());
}

void TestPlaylist::fixtures_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<QStringList>("names");
    QTest::addColumn<QStringList>("titles");

    QTest::newRow("plain m3u") << "M3U/one.m3u" << QStringList{"song1.mp3"} << QStringList{""};
    QTest::newRow("extended m3u") << "M3U/two-ext.m3u" << QStringList{"song1.mp3", "song2.mp3"}
                                  << QStringList{"Song #1", "Song #2"};
    QTest::newRow("empty m3u") << "M3U/empty.m3u" << QStringList{} << QStringList{};
    QTest::newRow("asx 3.0") << "ASX/testWindowsMediaMeta.asx"
                             << QStringList{"mms://media1.fresno.gov/CouncilVideoArchive/20090407.wmv"}
                             << QStringList{"Council Video for 4/7/2009"};
    QTest::newRow("a sound file is a list of itself") << "WAV/song1.wav" << QStringList{"song1.wav"}
                                                      << QStringList{""};
}

void TestPlaylist::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, fixture);
    QFETCH(QStringList, names);
    QFETCH(QStringList, titles);

    const QString path = fixtures::path(fixture);
    const Playlist list = readPlaylist(path);
    QVERIFY(list.errorString.isEmpty());
    QStringList gotNames;
    QStringList gotTitles;
    for (const PlayItem &item : list.items) {
        gotNames << (item.isAddress() ? item.location : QFileInfo(item.location).fileName());
        gotTitles << item.title;
        if (!item.isAddress())
            QVERIFY2(QFileInfo::exists(item.location), qPrintable(item.location));
    }
    QCOMPARE(gotNames, names);
    QCOMPARE(gotTitles, titles);
}

void TestPlaylist::oversizedList()
{
    TestDir dir;
    const QString path = dir.createFile("huge.m3u", QByteArray("a.mp3\n").repeated(MaxListBytes / 6 + 10));
    const Playlist list = readPlaylist(path);
    QVERIFY(list.items.isEmpty());
    QVERIFY(!list.errorString.isEmpty());
    // Within the size limit, the item count is bounded too.
    const Playlist many = parseM3u(QByteArray("a.mp3\n").repeated(MaxListItems + 5), dir.path());
    QCOMPARE(many.items.size(), MaxListItems);
}

void TestPlaylist::cdaTrack_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<int>("track");

    QByteArray header("RIFF\x24\x00\x00\x00" "CDDAfmt \x18\x00\x00\x00\x01\x00\x07\x00", 24);
    header += QByteArray(20, '\0');
    QTest::newRow("track file header") << "Track01.cda" << header << 7;
    QTest::newRow("number in the name") << "Track05.cda" << QByteArray("not a track file") << 5;
    QTest::newRow("neither: position in the list") << "music.cda" << QByteArray() << 3;
}

void TestPlaylist::cdaTrack()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(int, track);
    TestDir dir;
    QCOMPARE(cdaTrackNumber(dir.createFile(name, content), 3), track);
}

QTEST_GUILESS_MAIN(TestPlaylist)
#include "tst_playlist.moc"
