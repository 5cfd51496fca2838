#include "Fixtures.h"
#include "TestDir.h"

#include <QImage>
#include <QProcess>
#include <QTest>

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

// platform: the QT_QPA_PLATFORM the tool sees; a null string leaves it unset.
// unset: further variables taken out of the tool's environment.
Run cli(const QStringList &arguments, const QString &platform = QStringLiteral("offscreen"),
        const QStringList &unset = {})
{
    QProcess process;
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.remove(QStringLiteral("QT_QPA_PLATFORM"));
    if (!platform.isNull())
        environment.insert(QStringLiteral("QT_QPA_PLATFORM"), platform);
    for (const QString &name : unset)
        environment.remove(name);
    process.setProcessEnvironment(environment);
    process.start(qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"), arguments);
    Run run;
    if (!process.waitForFinished(120000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QImage pattern()
{
    QImage image(21, 13, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 12, y * 19, 77));
    return image;
}

// A drawing of a square outline from (0, 0) to (100, 100) holding one line
// of text whose letters stand between (10, 40) and about (60, 60).
const QByteArray TextDrawing = "0\nSECTION\n2\nENTITIES\n"
                               "0\nLWPOLYLINE\n8\n0\n90\n4\n70\n1\n"
                               "10\n0\n20\n0\n10\n100\n20\n0\n10\n100\n20\n100\n10\n0\n20\n100\n"
                               "0\nTEXT\n8\n0\n10\n10\n20\n40\n40\n20\n1\nHHHH\n"
                               "0\nENDSEC\n0\nEOF\n";

// Dark pixels of the picture in the drawing's rectangle (x, y, width,
// height in drawing units, y up), placed by the outline's ink.
int inkIn(const QImage &image, const QRectF &r)
{
    int left = image.width(), right = 0, top = image.height(), bottom = 0;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            if (qGray(image.pixel(x, y)) < 160)
                left = qMin(left, x), right = qMax(right, x), top = qMin(top, y), bottom = qMax(bottom, y);
    const double sx = (right - left) / 100.0, sy = (bottom - top) / 100.0;
    int count = 0;
    for (int y = qRound(bottom - r.bottom() * sy); y <= qRound(bottom - r.top() * sy); ++y)
        for (int x = qRound(left + r.left() * sx); x <= qRound(left + r.right() * sx); ++x)
            count += qGray(image.pixel(x, y)) < 160;
    return count;
}

} // namespace

class TestPictureCli : public QObject
{
    Q_OBJECT

private slots:
    void infoPrintsTheNineRows()
    {
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("p.bmp"));
        QVERIFY(pattern().convertToFormat(QImage::Format_Indexed8).save(path, "bmp"));
        const Run run = cli({QStringLiteral("info"), path});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines, QStringList({
                            QStringLiteral("Number of Bits per Bitmap:\t8"),
                            lines.value(1), // the colour count depends on Qt's palette choice
                            QStringLiteral("Image Format:\tBitmap Format"),
                            QStringLiteral("Image Height:\t13"),
                            QStringLiteral("Image Width:\t21"),
                            QStringLiteral("Image Disk Size:\t%1").arg(QFileInfo(path).size()),
                            QStringLiteral("Image Memory Size:\t%1").arg(24 * 13),
                            lines.value(7),
                            lines.value(8),
                        }));
        QVERIFY(lines.value(1).startsWith(QLatin1String("Color Count:\t")));
        QVERIFY(lines.value(7).startsWith(QLatin1String("Image X Resolution:\t")));
    }

    void infoOnAFixture()
    {
        REQUIRE_FIXTURES();
        const Run run = cli({QStringLiteral("info"), fixtures::path(QStringLiteral("TIF/hopper_lzw.tif"))});
        QCOMPARE(run.exitCode, 0);
        QVERIFY(run.out.contains(QLatin1String("Image Format:\tTagged Image File LZW Compressed Format\n")));
        QVERIFY(run.out.contains(QLatin1String("Number of Bits per Bitmap:\t24\n")));
    }

    void infoFailsWithAMessage_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<QString>("name");
        QTest::newRow("not a picture") << QByteArray("hello") << "hello.png";
        QTest::newRow("undocumented format") << QByteArray(64, 'x') << "x.cmp";
    }
    void infoFailsWithAMessage()
    {
        QFETCH(QByteArray, content);
        QFETCH(QString, name);
        TestDir dir;
        const Run run = cli({QStringLiteral("info"), dir.createFile(name, content)});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(run.out.isEmpty());
        QVERIFY(run.err.contains(name));
    }

    void convertByExtension_data()
    {
        QTest::addColumn<QString>("target");
        QTest::addColumn<QString>("format");
        QTest::newRow("png") << "out.png" << "Portable Network Graphics";
        QTest::newRow("upper-case tiff") << "OUT.TIF" << "Tagged Image File Format";
        QTest::newRow("pcx") << "out.pcx" << "ZSoft PCX";
        QTest::newRow("pbm holds png data") << "out.pbm" << "Portable Network Graphics";
        QTest::newRow("jpe") << "out.jpe" << "JPEG File Interchange Format";
    }
    void convertByExtension()
    {
        QFETCH(QString, target);
        QFETCH(QString, format);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        QVERIFY(pattern().save(in, "png"));
        const QString out = dir.filePath(target);
        const Run run = cli({QStringLiteral("convert"), in, out});
        QVERIFY2(run.exitCode == 0, qPrintable(run.err));
        const Run info = cli({QStringLiteral("info"), out});
        QCOMPARE(info.exitCode, 0);
        QVERIFY2(info.out.contains(QStringLiteral("Image Format:\t") + format + QLatin1Char('\n')), qPrintable(info.out));
        QVERIFY(info.out.contains(QLatin1String("Image Width:\t21\n")));
    }

    void convertRefuses_data()
    {
        QTest::addColumn<QString>("target");
        QTest::newRow("no writer for metafiles") << "out.wmf";
        QTest::newRow("not a picture extension") << "out.txt";
        QTest::newRow("no extension") << "out";
    }
    void convertRefuses()
    {
        QFETCH(QString, target);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        QVERIFY(pattern().save(in, "png"));
        const Run run = cli({QStringLiteral("convert"), in, dir.filePath(target)});
        QCOMPARE(run.exitCode, 1);
        QVERIFY(!run.err.isEmpty());
        QVERIFY(!QFile::exists(dir.filePath(target)));
    }

    void convertKeepsBitsUnlessAsked()
    {
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        QVERIFY(pattern().convertToFormat(QImage::Format_Mono).save(in, "png"));
        QCOMPARE(cli({QStringLiteral("convert"), in, dir.filePath(QStringLiteral("kept.bmp"))}).exitCode, 0);
        QVERIFY(cli({QStringLiteral("info"), dir.filePath(QStringLiteral("kept.bmp"))})
                    .out.contains(QLatin1String("Number of Bits per Bitmap:\t1\n")));
        QCOMPARE(cli({QStringLiteral("convert"), QStringLiteral("--bpp"), QStringLiteral("24"), in,
                      dir.filePath(QStringLiteral("wide.bmp"))})
                     .exitCode,
                 0);
        QVERIFY(cli({QStringLiteral("info"), dir.filePath(QStringLiteral("wide.bmp"))})
                    .out.contains(QLatin1String("Number of Bits per Bitmap:\t24\n")));
    }

    // Text needs fonts, which the tool sets up for its drawing commands on
    // the offscreen platform unless the user names one.
    void drawingKeepsItsText_data()
    {
        QTest::addColumn<QString>("command");
        QTest::addColumn<QString>("platform");
        QTest::newRow("convert, no platform set") << "convert" << QString();
        QTest::newRow("convert, platform set by the user") << "convert" << QStringLiteral("offscreen");
        QTest::newRow("thumbs") << "thumbs" << QString();
    }
    void drawingKeepsItsText()
    {
        QFETCH(QString, command);
        QFETCH(QString, platform);
        TestDir dir;
        const QString in = dir.createFile(QStringLiteral("drawings/label.dxf"), TextDrawing);
        const QString out = command == QLatin1String("convert") ? dir.filePath(QStringLiteral("label.png"))
                                                                : dir.filePath(QStringLiteral("thumbs/label.dxf.png"));
        const QStringList args = command == QLatin1String("convert")
            ? QStringList{command, in, out}
            : QStringList{command, dir.filePath(QStringLiteral("drawings")), dir.filePath(QStringLiteral("thumbs")),
                          QStringLiteral("--size"), QStringLiteral("1024"), QStringLiteral("--no-cache")};
        const Run run = cli(args, platform);
        QVERIFY2(run.exitCode == 0, qPrintable(run.err));
        const QImage image(out);
        QVERIFY2(!image.isNull(), qPrintable(out));
        QVERIFY(inkIn(image, QRectF(12, 42, 40, 14)) > 100);
        QCOMPARE(inkIn(image, QRectF(12, 70, 40, 14)), 0);
    }

    // The user's platform is used as named: a platform that does not exist
    // stops a drawing command, and shows that nothing overrode the choice.
    void drawingCommandsHonourTheUsersPlatform()
    {
        TestDir dir;
        const QString in = dir.createFile(QStringLiteral("label.dxf"), TextDrawing);
        const Run run = cli({QStringLiteral("info"), in}, QStringLiteral("no-such-platform"));
        QVERIFY(run.exitCode != 0);
        QVERIFY2(run.err.contains(QLatin1String("no-such-platform")), qPrintable(run.err));
    }

    // Without a login session XDG_RUNTIME_DIR is unset, and Qt would say so
    // on standard error; the tool prints its own messages only. Arguments
    // starting with "@" name files in the run's folder, which holds
    // "pictures/in.png"; "@" in the expected error stands for that folder.
    void commandsPrintOnlyTheirOwnMessages_data()
    {
        QTest::addColumn<QStringList>("args");
        QTest::addColumn<int>("exitCode");
        QTest::addColumn<QString>("expectedError");
        QTest::newRow("info") << QStringList{"info", "@pictures/in.png"} << 0 << QString();
        QTest::newRow("info of a missing file") << QStringList{"info", "@missing.png"} << 1
                                                << QStringLiteral("@/missing.png: The file does not exist: @/missing.png\n");
        QTest::newRow("convert") << QStringList{"convert", "@pictures/in.png", "@out.bmp"} << 0 << QString();
        QTest::newRow("thumbs through the cache") << QStringList{"thumbs", "@pictures", "@thumbs"} << 0 << QString();
        QTest::newRow("thumbs without the cache")
            << QStringList{"thumbs", "@pictures", "@thumbs", "--no-cache"} << 0 << QString();
        QTest::newRow("formats") << QStringList{"formats"} << 0 << QString();
        QTest::newRow("type") << QStringList{"type", "a.jpg"} << 0 << QString();
        QTest::newRow("unknown command") << QStringList{"nonsense"} << 2
                                         << QStringLiteral("tarnby-cli: unknown command \"nonsense\"; try tarnby-cli --help\n");
    }
    void commandsPrintOnlyTheirOwnMessages()
    {
        QFETCH(QStringList, args);
        QFETCH(int, exitCode);
        QFETCH(QString, expectedError);
        TestDir dir;
        QVERIFY(pattern().save(dir.createFile(QStringLiteral("pictures/in.png")), "png"));
        for (QString &arg : args) {
            if (arg.startsWith(QLatin1Char('@')))
                arg = dir.filePath(arg.mid(1));
        }
        const Run run = cli(args, QString(), {QStringLiteral("XDG_RUNTIME_DIR")});
        QCOMPARE(run.err, QString(expectedError).replace(QLatin1Char('@'), dir.path()));
        QCOMPARE(run.exitCode, exitCode);
    }

    // Listing formats needs no fonts, so it sets up no display platform at
    // all: an unusable one does not stop it.
    void formatsListsEveryPictureExtension()
    {
        const Run run = cli({QStringLiteral("formats")}, QStringLiteral("no-such-platform"));
        QCOMPARE(run.exitCode, 0);
        QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.takeFirst(), QStringLiteral("Extension\tRead\tWrite\tLibrary\tNote"));
        QCOMPARE(lines.size(), 38);
        QStringList extensions;
        for (const QString &line : lines) {
            const QStringList cells = line.split(QLatin1Char('\t'));
            QCOMPARE(cells.size(), 5);
            extensions << cells.at(0);
            QVERIFY(cells.at(1) == QLatin1String("yes") || cells.at(1) == QLatin1String("no"));
        }
        QCOMPARE(extensions.first(), QStringLiteral("JPG"));
        QVERIFY(lines.contains(QStringLiteral("PNG\tyes\tyes\tQt\t")));
        QVERIFY(lines.contains(QStringLiteral("WMF\tyes\tno\tImageMagick\t")));
        QVERIFY(run.out.contains(QLatin1String("CMP\tno\tno\tnone\tCMP (LEAD compressed)")));
    }
};

QTEST_GUILESS_MAIN(TestPictureCli)
#include "tst_picturecli.moc"
