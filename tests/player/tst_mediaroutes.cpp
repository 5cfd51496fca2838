#include "core/platform/media/MediaRoutes.h"

#include "TestDir.h"

#include <sys/stat.h>

#include <QFile>
#include <QTest>
#include <QtEndian>

using namespace tarnby::media;

namespace {

QByteArray midiHeader(int format, int tracks)
{
    QByteArray data("MThd\0\0\0\x06", 8);
    char word[2];
    qToBigEndian(quint16(format), word);
    data.append(word, 2);
    qToBigEndian(quint16(tracks), word);
    data.append(word, 2);
    data.append("\x00\x60", 2);
    return data;
}

// The head of an AVI file: RIFF, the main header with its size, one video
// stream header with its codec.
QByteArray aviHead(quint32 width, quint32 height, const char *codec)
{
    QByteArray avih(56, '\0');
    qToLittleEndian(width, avih.data() + 32);
    qToLittleEndian(height, avih.data() + 36);
    QByteArray strh(56, '\0');
    memcpy(strh.data(), "vids", 4);
    memcpy(strh.data() + 4, codec, 4);
    QByteArray data("RIFF\0\0\0\0AVI LIST\0\0\0\0hdrl", 24);
    data += QByteArray("avih\x38\0\0\0", 8) + avih + QByteArray("LIST\0\0\0\0strl", 12)
        + QByteArray("strh\x38\0\0\0", 8) + strh;
    return data;
}

} // namespace

class TestMediaRoutes : public QObject
{
    Q_OBJECT
private slots:
    void missingForMidi_data();
    void missingForMidi();
    void describeMediaFile_data();
    void describeMediaFile();
    void reasonNamesWhatIsMissing();
    void formatPlayTime_data();
    void formatPlayTime();
};

void TestMediaRoutes::missingForMidi_data()
{
    QTest::addColumn<QStringList>("present");
    QTest::addColumn<QStringList>("missingPackages");
    const QStringList all{"libgstmidi.so", "libgstfluidsynthmidi.so", "sf2/FluidR3_GM.sf2"};
    QTest::newRow("everything installed") << all << QStringList();
    QTest::newRow("no sound font") << QStringList{"libgstmidi.so", "libgstfluidsynthmidi.so"}
                                   << QStringList{"fluid-soundfont-gm"};
    QTest::newRow("no synthesizer") << QStringList{"libgstmidi.so", "sf2/FluidR3_GM.sf2"}
                                    << QStringList{"gstreamer1.0-plugins-bad"};
    QTest::newRow("sound font under another name") << QStringList{"libgstmidi.so", "libgstfluidsynthmidi.so", "sf2/x.SF2"}
                                                   << QStringList();
    QTest::newRow("nothing") << QStringList()
                             << QStringList{"gstreamer1.0-plugins-good", "gstreamer1.0-plugins-bad", "fluid-soundfont-gm"};
}

void TestMediaRoutes::missingForMidi()
{
    QFETCH(QStringList, present);
    QFETCH(QStringList, missingPackages);
    TestDir dir;
    const QString plugins = dir.createFolder("plugins");
    const QString fonts = dir.createFolder("sf2");
    for (const QString &name : present)
        dir.createFile(name.startsWith("sf2/") ? name : "plugins/" + name);
    const QStringList missing = tarnby::media::missingForMidi({dir.filePath("elsewhere"), plugins}, {fonts});
    QCOMPARE(missing.size(), missingPackages.size());
    for (int i = 0; i < missing.size(); ++i)
        QVERIFY2(missing.at(i).contains("(package " + missingPackages.at(i) + ")"), qPrintable(missing.at(i)));
}

void TestMediaRoutes::describeMediaFile_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<QString>("text");
    QTest::newRow("MIDI format 0, one track") << "MID" << midiHeader(0, 1)
                                               << "It is a Standard MIDI file of format 0 with 1 track.";
    QTest::newRow("MIDI format 1, two tracks") << "mid" << midiHeader(1, 2)
                                                << "It is a Standard MIDI file of format 1 with 2 tracks.";
    QTest::newRow("RMI wrapping MIDI") << "RMI" << QByteArray("RIFF\0\0\0\0RMIDdata\0\0\0\0", 20) + midiHeader(1, 3)
                                        << "It is a Standard MIDI file of format 1 with 3 tracks.";
    QTest::newRow("RMI without MIDI data") << "RMI" << QByteArray("RIFF\0\0\0\0RMIDdata", 16)
                                            << "The file holds no Standard MIDI data.";
    QTest::newRow("MIDI header cut short") << "MID" << QByteArray("MThd\0\0\0\x06\0", 9)
                                            << "The file is not a Standard MIDI file.";
    QTest::newRow("text named MID") << "MID" << QByteArray("hello") << "The file is not a Standard MIDI file.";
    QTest::newRow("AVI with size and codec") << "AVI" << aviHead(320, 240, "XVID")
                                              << "It is an AVI file of 320 x 240 pixels, video coded as XVID.";
    QTest::newRow("AVI codec of control bytes") << "AVI" << aviHead(1, 1, "\x01\x02\x03\x04")
                                                 << "It is an AVI file of 1 x 1 pixels.";
    QTest::newRow("AVI cut after RIFF") << "AVI" << QByteArray("RIFF\0\0\0\0AVI ", 12) << "It is an AVI file.";
    QTest::newRow("WAVE named AVI") << "AVI" << QByteArray("RIFF\0\0\0\0WAVEfmt ", 16) << "The file is not an AVI file.";
    QTest::newRow("empty AVI") << "AVI" << QByteArray() << "The file is not an AVI file.";
    QTest::newRow("other kinds say nothing") << "WAV" << QByteArray("RIFF") << "";
}

void TestMediaRoutes::describeMediaFile()
{
    QFETCH(QString, extension);
    QFETCH(QByteArray, head);
    QFETCH(QString, text);
    QCOMPARE(tarnby::media::describeMediaFile(extension, head), text);
}

void TestMediaRoutes::reasonNamesWhatIsMissing()
{
    TestDir dir;
    const QString tune = dir.createFile("tune.mid", midiHeader(1, 2));
    const QString missingFont = unplayableReason(tune, "Internal data stream error",
                                                 {"a General MIDI sound font (package fluid-soundfont-gm)"});
    QCOMPARE(missingFont, QStringLiteral("Internal data stream error. Missing for playing MIDI files: a General MIDI "
                                         "sound font (package fluid-soundfont-gm). It is a Standard MIDI file of "
                                         "format 1 with 2 tracks."));
    const QString complete = unplayableReason(tune, "Internal data stream error.", {});
    QVERIFY(complete.startsWith("Internal data stream error. The MIDI plugins and the sound font are installed"));
    // Other kinds keep the backend's words; a file that is gone adds nothing.
    QCOMPARE(unplayableReason(dir.filePath("gone.wav"), "Resource not found", {"x"}), QStringLiteral("Resource not found."));
    QCOMPARE(unplayableReason(dir.filePath("gone.avi"), "", {}),
             QStringLiteral("GStreamer's AVI reader does not accept this file."));
    // A pipe named like a tune is not opened: that would wait for a writer.
    const QString pipe = dir.filePath("pipe.mid");
    QCOMPARE(::mkfifo(QFile::encodeName(pipe).constData(), 0600), 0);
    QVERIFY(unplayableReason(pipe, "Not a file", {}).startsWith("Not a file. The MIDI plugins"));
}

void TestMediaRoutes::formatPlayTime_data()
{
    QTest::addColumn<qint64>("ms");
    QTest::addColumn<QString>("text");
    QTest::newRow("start") << qint64(0) << "0:00";
    QTest::newRow("just under a minute") << qint64(59999) << "0:59";
    QTest::newRow("a minute and a second") << qint64(61000) << "1:01";
    QTest::newRow("an hour") << qint64(3600000) << "1:00:00";
    QTest::newRow("past an hour") << qint64(3725000) << "1:02:05";
    QTest::newRow("unknown") << qint64(-1) << "-:--";
}

void TestMediaRoutes::formatPlayTime()
{
    QFETCH(qint64, ms);
    QFETCH(QString, text);
    QCOMPARE(tarnby::media::formatPlayTime(ms), text);
}

QTEST_GUILESS_MAIN(TestMediaRoutes)
#include "tst_mediaroutes.moc"
