#include "ui/player/AudioVideo1.h"
#include "core/platform/media/MediaRoutes.h"

#include "Fixtures.h"
#include "UiFixture.h"

#include "core/app/AppState.h"
#include "ui/fileops/FileCommands.h"
#include "ui/services/UiServices.h"

#include <QLabel>
#include <QMediaPlayer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>
#include <QtEndian>

#include <cmath>

#include <sys/stat.h>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// A PCM WAV file of the given length: 8 kHz, mono, 8 bits, a quiet tone.
QByteArray wav(int milliseconds)
{
    const quint32 samples = 8 * quint32(milliseconds);
    QByteArray data;
    auto u32 = [&](quint32 v) { char b[4]; qToLittleEndian(v, b); data.append(b, 4); };
    auto u16 = [&](quint16 v) { char b[2]; qToLittleEndian(v, b); data.append(b, 2); };
    data += "RIFF";
    u32(36 + samples);
    data += "WAVEfmt ";
    u32(16);
    u16(1);    // PCM
    u16(1);    // mono
    u32(8000); // samples a second
    u32(8000); // bytes a second
    u16(1);    // block size
    u16(8);    // bits
    data += "data";
    u32(samples);
    for (quint32 i = 0; i < samples; ++i)
        data += char(128 + int(20 * std::sin(i * 0.3)));
    return data;
}

// A format-0 MIDI file: one track, two short notes.
QByteArray midi()
{
    QByteArray track;
    const unsigned char events[] = {
        0x00, 0xC0, 0x00,       // program: piano
        0x00, 0x90, 0x3C, 0x50, // note on C4
        0x30, 0x80, 0x3C, 0x00, // after 48 ticks, note off
        0x00, 0x90, 0x40, 0x50, // note on E4
        0x30, 0x80, 0x40, 0x00, // note off
        0x00, 0xFF, 0x2F, 0x00, // end of track
    };
    track.append(reinterpret_cast<const char *>(events), sizeof events);
    QByteArray data("MThd\0\0\0\x06\0\0\0\x01\0\x60", 14);
    data += "MTrk";
    char length[4];
    qToBigEndian(quint32(track.size()), length);
    data.append(length, 4);
    return data + track;
}

bool visibleIn(QWidget *window, const char *name)
{
    auto *w = window->findChild<QWidget *>(QLatin1String(name));
    return w && w->isVisibleTo(window);
}

} // namespace

class TestAudioVideo : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void routing_data();
    void routing();
    void playerWindowIsReused();
    void unplayable_data();
    void unplayable();
    void playsToTheEnd_data();
    void playsToTheEnd();
    void silentStreamTimesOut();
    void listPlaysItemByItem();
    void emptyList();
    void cdWithoutDrive();
    void cdTrackSelectionAndReplay();
    void playsAndStopsOnCancel();
    void playAgain();
    void midiPlays();

private:
    // Plays a generated WAV; false when this machine's backend cannot play it
    // (no GStreamer plugins), in which case the playback tests skip.
    bool backendPlays();

    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<AudioVideo1> m_window;
};

void TestAudioVideo::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_window = std::make_unique<AudioVideo1>(m_ui->state, m_ui->services);
    m_window->multimediaControl()->setDriveLocator([] { return QString(); });
}

void TestAudioVideo::cleanup()
{
    m_window.reset();
    m_ui.reset();
}

void TestAudioVideo::routing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<bool>("mediaPlayer");

    const QByteArray noise("this is not a sound");
    QTest::newRow("WAV") << "sound.wav" << noise << true;
    QTest::newRow("upper-case RMI") << "tune.RMI" << noise << true;
    QTest::newRow("M3U") << "list.m3u" << QByteArray("song.mp3\n") << true;
    QTest::newRow("ASX") << "list.asx" << QByteArray("<asx><entry><ref href=\"song.mp3\"/></entry></asx>") << true;
    QTest::newRow("DAT goes to the media player") << "AVSEQ01.DAT" << noise << true;
    QTest::newRow("CDA goes to the multimedia control") << "Track01.cda" << noise << false;
}

void TestAudioVideo::routing()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    QFETCH(bool, mediaPlayer);

    TestDir dir;
    const QString path = dir.createFile(name, content);
    m_window->show();
    m_window->openAndPlay(path);

    QVERIFY(m_window->findChild<QWidget *>("Frame1")->findChild<QWidget *>("ActiveMovie1"));
    // The media player's screen: the video, or until one comes the painted
    // picture in its place.
    QCOMPARE(visibleIn(m_window.get(), "ActiveMovie1") || visibleIn(m_window.get(), "NoVideo"), mediaPlayer);
    QCOMPARE(visibleIn(m_window.get(), "MMControl1"), !mediaPlayer);
    QCOMPARE(m_window->windowTitle(), "Play - " + name);
    if (mediaPlayer) {
        QCOMPARE(m_window->playlist().items.size(), 1);
        QCOMPARE(m_window->currentItem(), 0);
    } else {
        QVERIFY(m_window->mediaPlayer()->source().isEmpty());
        QCOMPARE(m_window->multimediaControl()->deviceType(), QStringLiteral("CDAudio"));
    }
}

void TestAudioVideo::playerWindowIsReused()
{
    TestDir dir;
    QWidget browser;
    FileCommands commands(m_ui->state, m_ui->services, &browser);
    commands.play(dir.createFile("a.wav", "x"));
    AudioVideo1 *first = commands.player();
    QVERIFY(first);
    QCOMPARE(browser.findChild<AudioVideo1 *>("AudioVideo1"), first);
    QVERIFY(first->isVisible());
    QCOMPARE(first->windowTitle(), QStringLiteral("Play - a.wav"));
    commands.play(dir.createFile("b.mp3", "x"));
    QCOMPARE(commands.player(), first);
    QCOMPARE(first->windowTitle(), QStringLiteral("Play - b.mp3"));
}

void TestAudioVideo::unplayable_data()
{
    QTest::addColumn<QString>("fixture"); // empty: a made-up file
    QTest::addColumn<QString>("name");
    QTest::addColumn<QStringList>("says"); // besides the file's path

    QTest::newRow("text in a WAV file") << "" << "noise.wav" << QStringList();
    QTest::newRow("missing file") << "" << "" << QStringList();
    QTest::newRow("a pipe named like a sound") << "" << "|pipe.wav" << QStringList();
    QTest::newRow("a folder named like a sound") << "" << "/folder.wav" << QStringList();
    // What a MIDI file needs is on this machine (the install script brings
    // it): the message says so, and what the file is.
    QTest::newRow("type-1 MIDI file") << "MID/testMID.mid" << ""
                                      << QStringList{"The MIDI plugins and the sound font are installed",
                                                     "Standard MIDI file of format 1 with 2 tracks"};
    QTest::newRow("text in a MIDI file") << "" << "noise.mid"
                                         << QStringList{"The file is not a Standard MIDI file."};
    QTest::newRow("AVI that the reader refuses") << "AVI/AudioVideoInterleave.avi" << ""
                                                 << QStringList{"GStreamer's AVI reader does not accept this file.",
                                                                "It is an AVI file of 1 x 1 pixels"};
    QTest::newRow("one-frame MP3") << "MP3/mp3.mp3" << "" << QStringList();
    QTest::newRow("QuickTime without streams") << "MOV/testMP4_QuickTimeMetadata.mov" << "" << QStringList();
    QTest::newRow("DAT that is a mail attachment") << "DAT/testWINMAIL.dat" << "" << QStringList();
}

void TestAudioVideo::unplayable()
{
    QFETCH(QString, fixture);
    QFETCH(QString, name);
    if (!fixture.isEmpty())
        REQUIRE_FIXTURES();

    TestDir dir;
    QString path;
    if (!fixture.isEmpty()) {
        path = dir.filePath(QFileInfo(fixture).fileName());
        QVERIFY(QFile::copy(fixtures::path(fixture), path));
    } else if (name.startsWith('|')) {
        path = dir.filePath(name.mid(1));
        QCOMPARE(::mkfifo(QFile::encodeName(path).constData(), 0600), 0);
    } else if (name.startsWith('/')) {
        path = dir.createFolder(name.mid(1));
    } else if (!name.isEmpty()) {
        path = dir.createFile(name, "this is not a sound at all, just text");
    } else {
        path = dir.filePath("gone.wav");
    }
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->setLoadTimeout(8000);
    m_window->show();
    m_window->openAndPlay(path);

    QVERIFY(finished.wait(15000));
    QCOMPARE(m_ui->responder.messages().size(), 1);
    const QString message = m_ui->responder.messageTexts().first();
    QVERIFY2(message.startsWith("Cannot Play File - " + path), qPrintable(message));
    QFETCH(QStringList, says);
    for (const QString &part : says)
        QVERIFY2(message.contains(part), qPrintable(message));
    QCOMPARE(m_window->mediaPlayer()->playbackState(), QMediaPlayer::StoppedState);
}

void TestAudioVideo::playsToTheEnd_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<bool>("video");
    QTest::newRow("QuickTime video of PNG frames") << "MOV/png.mov" << true;
    QTest::newRow("MP3 with an ID3v2 tag") << "MP3/testMP3id3v2.mp3" << false;
}

// Real files play to their end, from a folder name with a space in it.
void TestAudioVideo::playsToTheEnd()
{
    QFETCH(QString, fixture);
    REQUIRE_FIXTURES();
    if (!backendPlays())
        QSKIP("the media backend cannot play a WAV file on this machine");
    TestDir dir;
    const QString path = dir.createFolder("my media") + "/" + QFileInfo(fixture).fileName();
    QVERIFY(QFile::copy(fixtures::path(fixture), path));
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->show();
    m_window->openAndPlay(path);
    QFETCH(bool, video);
    // Position and length show while it plays.
    QTRY_VERIFY_WITH_TIMEOUT(m_window->mediaPlayer()->duration() > 0, 20000);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->positionText().section(" / ", 1),
                              media::formatPlayTime(m_window->mediaPlayer()->duration()), 5000);
    QVERIFY(finished.wait(20000));
    QVERIFY2(m_ui->responder.messages().isEmpty(), qPrintable(m_ui->responder.messageTexts().join('\n')));
    QCOMPARE(m_window->mediaPlayer()->mediaStatus(), QMediaPlayer::EndOfMedia);
    // The position moved on from the start; without video the screen shows
    // its own picture, with video the video.
    QVERIFY(m_window->positionText() != media::formatPlayTime(0) + " / " + media::formatPlayTime(m_window->mediaPlayer()->duration()));
    QCOMPARE(m_window->showsNoVideoPicture(), !video);
    QCOMPARE(visibleIn(m_window.get(), "NoVideo"), !video);
}

void TestAudioVideo::silentStreamTimesOut()
{
    // A server that takes the connection and never answers: the player must
    // give up after its load timeout rather than wait for ever.
    QTcpServer server;
    QVERIFY(server.listen(QHostAddress::LocalHost));
    QList<QTcpSocket *> held;
    connect(&server, &QTcpServer::newConnection, this, [&] {
        while (server.hasPendingConnections())
            held << server.nextPendingConnection();
    });
    TestDir dir;
    const QString list = dir.createFile("radio.m3u", QStringLiteral("http://127.0.0.1:%1/stream.mp3\n")
                                                          .arg(server.serverPort()).toUtf8());
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->setLoadTimeout(2000);
    m_window->openAndPlay(list);
    QVERIFY(finished.wait(15000));
    QCOMPARE(m_ui->responder.messages().size(), 1);
    const QString text = m_ui->responder.messageTexts().first();
    QVERIFY2(text.startsWith(QStringLiteral("Cannot Play File - http://127.0.0.1:%1/stream.mp3").arg(server.serverPort())),
             qPrintable(text));
    QVERIFY2(text.endsWith(QStringLiteral("did not start playing within 2 seconds.")), qPrintable(text));
}

void TestAudioVideo::listPlaysItemByItem()
{
    TestDir dir;
    dir.createFile("music/first.wav", "not a sound");
    dir.createFile("music/third.mp3", "not a sound either");
    const QString list = dir.createFile("music/list.m3u", "#EXTM3U\n#EXTINF:1,First\nfirst.wav\n"
                                                         "missing.wav\n"
                                                         "#EXTINF:2,Third\nthird.mp3\n");
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->setLoadTimeout(8000);
    m_window->show();
    m_window->openAndPlay(list);
    QCOMPARE(m_window->windowTitle(), QStringLiteral("Play - list.m3u"));
    QCOMPARE(m_window->findChild<QLabel *>("Label1")->text(), QStringLiteral("First"));

    QVERIFY(finished.wait(40000));
    const QStringList texts = m_ui->responder.messageTexts();
    QCOMPARE(texts.size(), 3);
    QVERIFY(texts.at(0).startsWith("Cannot Play File - " + dir.filePath("music/first.wav")));
    QVERIFY(texts.at(1).startsWith("Cannot Play File - " + dir.filePath("music/missing.wav")));
    QVERIFY(texts.at(2).startsWith("Cannot Play File - " + dir.filePath("music/third.mp3")));
    QCOMPARE(m_window->currentItem(), 2);
    QCOMPARE(m_window->findChild<QLabel *>("Label1")->text(), QStringLiteral("Third"));
}

void TestAudioVideo::emptyList()
{
    REQUIRE_FIXTURES();
    TestDir dir;
    const QString path = dir.filePath("empty.m3u");
    QVERIFY(QFile::copy(fixtures::path("M3U/empty.m3u"), path));
    m_window->openAndPlay(path);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"There is Nothing to Play in - " + path});
    QVERIFY(m_window->mediaPlayer()->source().isEmpty());
}

void TestAudioVideo::cdWithoutDrive()
{
    TestDir dir;
    const QString path = dir.createFile("Track03.cda", "x");
    m_window->openAndPlay(path);
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"Cannot Play CD Track - " + path + " - There is no CD drive on this computer."});
    QVERIFY(!m_window->multimediaControl()->isOpen());
    // Playing again reports the same instead of failing quietly.
    m_ui->responder.clear();
    m_window->findChild<QPushButton *>("OKBtn")->click();
    QCOMPARE(m_ui->responder.messages().size(), 1);
}

void TestAudioVideo::cdTrackSelectionAndReplay()
{
    // A drive that is there as far as the control can tell; the CD source
    // itself will fail to read it, which is reported, not fatal.
    m_window->multimediaControl()->setDriveLocator([] { return QStringLiteral("/dev/null"); });
    TestDir dir;
    dir.createFile("cd/a.cda", "x");
    dir.createFile("cd/b.cda", "x");
    const QString third = dir.createFile("cd/c.cda", "x");
    m_window->openAndPlay(third);

    MultimediaControl *mci = m_window->multimediaControl();
    QVERIFY(mci->isOpen());
    QCOMPARE(mci->track(), 3); // its place among the folder's track files
    QCOMPARE(mci->openCount(), 1);
    QCOMPARE(mci->player()->source(), QUrl("cdda:///dev/null#3"));
    // The CD source cannot read /dev/null: one message, naming the track file.
    QTRY_COMPARE_WITH_TIMEOUT(m_ui->responder.messages().size(), 1, 10000);
    QTest::qWait(500);
    QCOMPARE(m_ui->responder.messages().size(), 1);
    QVERIFY(m_ui->responder.messageTexts().first().startsWith("Cannot Play File - " + third + " - "));

    m_window->findChild<QPushButton *>("OKBtn")->click();
    QCOMPARE(mci->openCount(), 1); // played again without reopening
    QCOMPARE(mci->track(), 3);

    m_window->findChild<QPushButton *>("CancelBtn")->click();
    QVERIFY(!mci->isOpen());
    QVERIFY(!m_window->isVisible());
}

bool TestAudioVideo::backendPlays()
{
    TestDir dir;
    const QString path = dir.createFile("probe.wav", wav(300));
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->openAndPlay(path);
    return finished.wait(15000) && m_ui->responder.messages().isEmpty();
}

void TestAudioVideo::playsAndStopsOnCancel()
{
    if (!backendPlays())
        QSKIP("the media backend cannot play a WAV file on this machine");
    TestDir dir;
    const QString path = dir.createFile("long.wav", wav(5000));
    m_window->show();
    m_window->openAndPlay(path);
    QTRY_COMPARE_WITH_TIMEOUT(m_window->mediaPlayer()->playbackState(), QMediaPlayer::PlayingState, 10000);
    QTRY_VERIFY_WITH_TIMEOUT(m_window->mediaPlayer()->position() > 0, 10000);

    m_window->findChild<QPushButton *>("CancelBtn")->click();
    QCOMPARE(m_window->mediaPlayer()->playbackState(), QMediaPlayer::StoppedState);
    QVERIFY(!m_window->isVisible());
    QCOMPARE(m_window->windowTitle(), AudioVideo1::caption());
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestAudioVideo::playAgain()
{
    if (!backendPlays())
        QSKIP("the media backend cannot play a WAV file on this machine");
    TestDir dir;
    const QString path = dir.createFile("short.wav", wav(200));
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->show();
    m_window->openAndPlay(path);
    QVERIFY(finished.wait(15000));
    QCOMPARE(m_window->mediaPlayer()->mediaStatus(), QMediaPlayer::EndOfMedia);

    m_window->findChild<QPushButton *>("OKBtn")->click();
    QCOMPARE(m_window->mediaPlayer()->playbackState(), QMediaPlayer::PlayingState);
    QVERIFY(finished.wait(15000));
    QCOMPARE(finished.size(), 2);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestAudioVideo::midiPlays()
{
    if (!backendPlays())
        QSKIP("the media backend cannot play a WAV file on this machine");
    TestDir dir;
    const QString path = dir.createFile("tune.mid", midi());
    QSignalSpy finished(m_window.get(), &AudioVideo1::listFinished);
    m_window->openAndPlay(path);
    QVERIFY(finished.wait(20000));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    QCOMPARE(m_window->mediaPlayer()->mediaStatus(), QMediaPlayer::EndOfMedia);
}

QTEST_MAIN(TestAudioVideo)
#include "tst_audiovideo.moc"
