#include "CodecTestUtil.h"
#include "Fixtures.h"

#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QFile>
#include <QFileInfo>
#include <QtTest>

// The real sample files of our formats, read in place from the corpus.
class TestCodecSamples : public QObject
{
    Q_OBJECT

private slots:
    void samples_data();
    void samples();
    void aniFramesMatchReferences();
    void sniffRecognisesSamples_data();
    void sniffRecognisesSamples();
};

void TestCodecSamples::samples_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("frames");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<QList<int>>("delays");
    QTest::addColumn<QString>("reference");

    // Reference PNGs were rendered by another decoder; our pictures must match
    // them exactly, HAM and true colour included.
    QTest::newRow("iff ham6 124x124") << "IFF/flag_ham6.iff" << QByteArray("iff") << 1 << QSize(124, 124)
                                      << QList<int>{} << "IFF/flag_ham6.png";
    QTest::newRow("iff 24 planes 131x131") << "IFF/ps_testcard_rgb_amiga.iff" << QByteArray("iff") << 1
                                           << QSize(131, 131) << QList<int>{} << "IFF/ps_testcard_rgb_amiga.png";
    QTest::newRow("iff 1 plane 131x131") << "IFF/testcard_indexed1_amiga.iff" << QByteArray("iff") << 1
                                         << QSize(131, 131) << QList<int>{} << "IFF/testcard_indexed1_amiga.png";
    QTest::newRow("iff 4 planes 256x256") << "IFF/testcard_indexed4_amiga.iff" << QByteArray("iff") << 1
                                          << QSize(256, 256) << QList<int>{} << "IFF/testcard_indexed4_amiga.png";
    QTest::newRow("iff pbm byterun1 112x112") << "IFF/testcard_rlepbm.iff" << QByteArray("iff") << 1
                                              << QSize(112, 112) << QList<int>{} << "IFF/testcard_rlepbm.png";
    QTest::newRow("flc 27 frames 171 ms") << "FLC/2422.flc" << QByteArray("flc") << 27 << QSize(320, 200)
                                          << QList<int>(27, 171) << QString();
    // 20 steps without a rate chunk: every step takes the header's 12 jiffies.
    QTest::newRow("ani 20 steps at header rate") << "ANI/test.ani" << QByteArray("ani") << 20 << QSize(32, 32)
                                                 << QList<int>(20, 200) << QString();
}

void TestCodecSamples::samples()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    QFETCH(int, frames);
    QFETCH(QSize, size);
    QFETCH(QList<int>, delays);
    QFETCH(QString, reference);

    const QString path = fixtures::path(file);
    if (!QFileInfo::exists(path))
        QSKIP("sample missing from the corpus");
    const codectest::Decoded decoded = codectest::decodeFile(format, path);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(decoded.frames.size(), frames);
    for (const QImage &frame : decoded.frames)
        QCOMPARE(frame.size(), size);
    if (!delays.isEmpty())
        QCOMPARE(decoded.delaysMs, delays);
    if (!reference.isEmpty()) {
        const QImage expected(fixtures::path(reference));
        QVERIFY(!expected.isNull());
        const int difference = codectest::maxChannelDifference(decoded.frames.first(), expected);
        QVERIFY2(difference == 0,
                 qPrintable(QStringLiteral("differs from the reference by %1").arg(difference)));
    }
}

void TestCodecSamples::aniFramesMatchReferences()
{
    REQUIRE_FIXTURES();
    const codectest::Decoded decoded = codectest::decodeFile("ani", fixtures::path("ANI/kimageformats_test.ani"));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    // The sequence shows icon 1, 2, 3 and icon 2 again, for 10, 20, 10 and
    // 10 jiffies of 1/60 s.
    QCOMPARE(decoded.frames.size(), 4);
    QCOMPARE(decoded.delaysMs, (QList<int>{166, 333, 166, 166}));
    const int icons[] = {1, 2, 3, 2};
    for (int step = 0; step < 4; ++step) {
        const QImage expected(fixtures::path(QStringLiteral("ANI/kimageformats_test_%1.png").arg(icons[step])));
        QVERIFY(!expected.isNull());
        // One level of difference is allowed: the references went through
        // premultiplied alpha, which rounds the colour of faint pixels.
        const int difference = codectest::maxChannelDifference(decoded.frames[step], expected);
        QVERIFY2(difference >= 0 && difference <= 1,
                 qPrintable(QStringLiteral("step %1 differs by %2").arg(step + 1).arg(difference)));
    }
}

void TestCodecSamples::sniffRecognisesSamples_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::newRow("ani") << "ANI/test.ani" << QByteArray("ani");
    QTest::newRow("flc") << "FLC/2422.flc" << QByteArray("flc");
    QTest::newRow("iff ilbm") << "IFF/testcard_indexed4_amiga.iff" << QByteArray("iff");
    QTest::newRow("iff pbm") << "IFF/testcard_rlepbm.iff" << QByteArray("iff");
    QTest::newRow("msp") << "MSP/hopper.msp" << QByteArray("msp");
    QTest::newRow("png is none of ours") << "PNG/" << QByteArray();
    QTest::newRow("bmp is none of ours") << "BMP/hopper.bmp" << QByteArray();
    QTest::newRow("installer patch named msp") << "malformed/MSP/Patch_full.msp" << QByteArray();
}

void TestCodecSamples::sniffRecognisesSamples()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    QString path = fixtures::path(file);
    if (file.endsWith('/')) {
        const QStringList all = fixtures::files(file.chopped(1), {QStringLiteral("*.png")});
        if (all.isEmpty())
            QSKIP("no sample");
        path = all.first();
    }
    QFile device(path);
    QVERIFY(device.open(QIODevice::ReadOnly));
    QCOMPARE(tarnby::imaging::codecs::sniff(&device), format);
    QCOMPARE(device.pos(), 0);
}

QTEST_GUILESS_MAIN(TestCodecSamples)
#include "tst_codecsamples.moc"
