#include "CodecTestUtil.h"
#include "TestDir.h"

#include <QBuffer>
#include <QFile>
#include <QImageWriter>
#include <QProcess>
#include <QStandardPaths>
#include <QtTest>

// Files written by another implementation of the formats (the netpbm
// converters), read with our codecs and compared with what went in.
namespace {

QImage testPicture(int width, int height, bool mono)
{
    QImage image(width, height, QImage::Format_RGB32);
    quint32 seed = 99;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            seed = seed * 1103515245 + 12345;
            const int noise = int((seed >> 16) & 0xff);
            QRgb c;
            if (x < width / 3)
                c = (y / 4) % 2 ? qRgb(0, 0, 0) : qRgb(255, 255, 255);
            else if (mono)
                c = noise > 127 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
            else
                c = qRgb((x * 11) & 0xff, (y * 17) & 0xff, noise);
            image.setPixel(x, y, c);
        }
    }
    return image;
}

// Runs tool on input (as a PNM file) and returns its standard output.
QByteArray convert(const QString &tool, const QStringList &arguments, const QImage &input, TestDir &dir)
{
    const QString pnm = dir.path() + "/input.pnm";
    QImageWriter writer(pnm, input.allGray() ? "pbm" : "ppm");
    if (!writer.write(input.allGray() ? input.convertToFormat(QImage::Format_Mono) : input))
        return {};
    QProcess process;
    process.start(tool, arguments + QStringList{pnm});
    if (!process.waitForFinished(30000) || process.exitCode() != 0)
        return {};
    return process.readAllStandardOutput();
}

} // namespace

class TestCodecForeign : public QObject
{
    Q_OBJECT

private slots:
    void netpbmFiles_data();
    void netpbmFiles();
};

void TestCodecForeign::netpbmFiles_data()
{
    QTest::addColumn<QString>("tool");
    QTest::addColumn<QStringList>("arguments");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("tolerance");
    QTest::newRow("macpaint page") << "pbmtomacp" << QStringList{} << QByteArray("mac") << testPicture(576, 720, true) << 0;
    QTest::newRow("gem one plane, odd width") << "pbmtogem" << QStringList{} << QByteArray("img")
                                              << testPicture(203, 41, true) << 0;
    QTest::newRow("ilbm 24 planes packed") << "ppmtoilbm" << QStringList{"-24force", "-compress"} << QByteArray("iff")
                                           << testPicture(77, 19, false) << 0;
    QTest::newRow("ilbm 24 planes unpacked") << "ppmtoilbm" << QStringList{"-24force", "-nocompress"}
                                             << QByteArray("iff") << testPicture(64, 8, false) << 0;
    QTest::newRow("ilbm 1 plane packed") << "ppmtoilbm" << QStringList{"-compress"} << QByteArray("iff")
                                         << testPicture(45, 12, true) << 0;
    // A picture of few colours goes into planes with a colour map. (HAM is
    // left out here: converters widen its 4-bit levels differently; the HAM
    // sample of the corpus is checked against its reference picture.)
    QImage few = testPicture(40, 10, true);
    few.setPixel(5, 5, qRgb(255, 0, 0));
    few.setPixel(6, 5, qRgb(20, 200, 90));
    QTest::newRow("ilbm colour map, packed") << "ppmtoilbm" << QStringList{"-compress"} << QByteArray("iff") << few << 0;
}

void TestCodecForeign::netpbmFiles()
{
    QFETCH(QString, tool);
    QFETCH(QStringList, arguments);
    QFETCH(QByteArray, format);
    QFETCH(QImage, picture);
    QFETCH(int, tolerance);
    const QString program = QStandardPaths::findExecutable(tool);
    if (program.isEmpty())
        QSKIP("netpbm is not installed (scripts/install-deps.sh installs it)");
    TestDir dir;
    const QByteArray file = convert(program, arguments, picture, dir);
    QVERIFY2(!file.isEmpty(), qPrintable(tool + " failed"));
    const codectest::Decoded decoded = codectest::decode(format, file);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const int difference = codectest::maxChannelDifference(decoded.frames[0], picture);
    QVERIFY2(difference >= 0 && difference <= tolerance, qPrintable(QStringLiteral("differs by %1").arg(difference)));
}

QTEST_GUILESS_MAIN(TestCodecForeign)
#include "tst_codecforeign.moc"
