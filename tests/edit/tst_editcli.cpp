#include "core/edit/EditOperation.h"

#include "TestDir.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QProcess>
#include <QSet>
#include <QTest>

using namespace tarnby::edit;

namespace {

struct Run {
    int exitCode = -1;
    QString out;
    QString err;
};

Run cli(const QStringList &arguments)
{
    QProcess process;
    process.start(qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"), arguments);
    Run run;
    if (!process.waitForFinished(120000))
        return run;
    run.exitCode = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -2;
    run.out = QString::fromUtf8(process.readAllStandardOutput());
    run.err = QString::fromUtf8(process.readAllStandardError());
    return run;
}

QImage pattern(int seed = 0)
{
    QImage image(21, 13, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb((x * 12 + seed) & 0xff, (y * 19 + seed) & 0xff, 77));
    return image;
}

QImage applied(QImage image, const QList<EditOperation> &operations)
{
    for (const EditOperation &operation : operations)
        image = apply(operation, image);
    return image;
}

QImage loaded(const QString &path)
{
    return QImage(path).convertToFormat(QImage::Format_RGB32);
}

} // namespace

Q_DECLARE_METATYPE(QList<tarnby::edit::EditOperation>)

class TestEditCli : public QObject
{
    Q_OBJECT

private slots:
    void operationsRunInTheOrderGiven_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QList<EditOperation>>("operations");
        QTest::newRow("rotate 90 then flip") << QStringList{"--rotate", "90", "--flip"}
                                             << QList{EditOperation::rotate(9000, RotateFit::KeepSize, 0), EditOperation::flip()};
        QTest::newRow("flip then rotate 90") << QStringList{"--flip", "--rotate", "90"}
                                             << QList{EditOperation::flip(), EditOperation::rotate(9000, RotateFit::KeepSize, 0)};
        QTest::newRow("reverse, invert, stretch")
            << QStringList{"--reverse", "--invert", "--stretch"}
            << QList{EditOperation::reverse(), EditOperation::invert(), EditOperation::stretch()};
        QTest::newRow("brightness then contrast")
            << QStringList{"--brightness", "-250", "--contrast", "400"}
            << QList{EditOperation::brightness(-250), EditOperation::contrast(400)};
        QTest::newRow("rotate 17.5 enlarged on green")
            << QStringList{"--rotate", "17.5", "--enlarge", "--fill", "#00ff00"}
            << QList{EditOperation::rotate(1750, RotateFit::Enlarge, qRgb(0, 255, 0))};
        QTest::newRow("rotate -370 is 10 anticlockwise, filled with a named colour")
            << QStringList{"--rotate", "-370", "--fill", "navy"} << QList{EditOperation::rotate(-1000, RotateFit::KeepSize, qRgb(0, 0, 128))};
        ShapeStyle star;
        star.code = 9001;
        star.fill = qRgb(255, 255, 0);
        star.border = qRgb(0, 0, 128);
        QTest::newRow("flip, then a star stamped")
            << QStringList{"--flip", "--shape", "star5", "--at", "3,2", "--size", "15x9", "--color", "yellow", "--border", "#000080"}
            << QList{EditOperation::flip(), EditOperation::stamp(star, QRectF(3, 2, 15, 9))};
        ShapeStyle arrow;
        arrow.code = 11001;
        arrow.fill = qRgb(255, 0, 0);
        arrow.border = qRgb(0, 0, 0);
        QTest::newRow("an arrow in the default colours, partly outside")
            << QStringList{"--shape", "ARROW_R", "--size", "30x8", "--at", "-4,6"}
            << QList{EditOperation::stamp(arrow, QRectF(-4, 6, 30, 8))};
        TextOverlay hello;
        hello.text = QStringLiteral("Hi");
        hello.effect = 5;
        hello.font.setPixelSize(12);
        hello.font.setBold(true);
        hello.colour = qRgb(0, 0, 255);
        QTest::newRow("text with a drop shadow, after a reverse")
            << QStringList{"--reverse", "--text", "Hi", "--at", "-50,-27", "--style", "DROPSHADOW", "--font", ",12,bold", "--color", "blue"}
            << QList{EditOperation::reverse(), EditOperation::write(hello, QPointF(-50, -27))};
        QTest::newRow("resize, then resize resampled")
            << QStringList{"--resize", "40x30", "--resize", "17X9", "--resample"}
            << QList{EditOperation::resize(QSize(40, 30), Resampling::None), EditOperation::resize(QSize(17, 9), Resampling::Smooth)};
    }
    void operationsRunInTheOrderGiven()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QList<EditOperation>, operations);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        const QString out = dir.filePath(QStringLiteral("out.png"));
        QVERIFY(pattern().save(in));
        const Run run = cli(QStringList{"convert", in, out} + arguments);
        QCOMPARE(run.err, QString());
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(loaded(out), applied(pattern(), operations));
    }

    // A JPEG saved as JPEG with flips and operations that change rows on
    // their own is decoded and encoded at once; whichever road it takes, the
    // file is the one of loading, the operations in order and saving.
    void jpegToJpegAsLoadChangeSave_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QList<EditOperation>>("operations");
        QTest::newRow("two flips around an invert")
            << QStringList{"--flip", "--invert", "--flip"} << QList{EditOperation::flip(), EditOperation::invert(), EditOperation::flip()};
        QTest::newRow("a flip between a reverse and a brightness")
            << QStringList{"--reverse", "--flip", "--brightness", "300"}
            << QList{EditOperation::reverse(), EditOperation::flip(), EditOperation::brightness(300)};
        QTest::newRow("a stretch takes the plain road")
            << QStringList{"--flip", "--stretch"} << QList{EditOperation::flip(), EditOperation::stretch()};
        QTest::newRow("--bpp takes the plain road") << QStringList{"--bpp", "8", "--invert"} << QList{EditOperation::invert()};
    }
    void jpegToJpegAsLoadChangeSave()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QList<EditOperation>, operations);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.jpg"));
        const QString out = dir.filePath(QStringLiteral("out.jpg"));
        const QString plain = dir.filePath(QStringLiteral("plain.jpg"));
        // Large enough to be encoded in strips.
        QImage photo(900, 1300, QImage::Format_RGB32);
        for (int y = 0; y < photo.height(); ++y)
            for (int x = 0; x < photo.width(); ++x)
                photo.setPixel(x, y, qRgb((x * 3 + y) & 0xff, (x * y) & 0xff, (y * 5) & 0xff));
        QVERIFY(photo.save(in, "JPEG", 95));
        const Run run = cli(QStringList{"convert", "--quality", "85", in, out} + arguments);
        QCOMPARE(run.err, QString());
        QCOMPARE(run.exitCode, 0);

        tarnby::imaging::LoadResult loadedIn = tarnby::imaging::loadPicture(in);
        QVERIFY(loadedIn.ok());
        QString error;
        for (const EditOperation &operation : std::as_const(operations))
            QVERIFY(applyToPicture(operation, &loadedIn.picture, &error));
        const int bits = arguments.contains(QStringLiteral("--bpp")) ? 8 : 0;
        QVERIFY(tarnby::imaging::savePicture(loadedIn.picture, plain, 10, bits, 85).ok);
        QCOMPARE(QImage(out), QImage(plain));
    }

    void enlargedTurnIsFilled()
    {
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        const QString out = dir.filePath(QStringLiteral("out.png"));
        QVERIFY(pattern().save(in));
        QCOMPARE(cli({"convert", in, out, "--rotate", "17.5", "--enlarge", "--fill", "#00ff00"}).exitCode, 0);
        const QImage turned = loaded(out);
        // 21 cos 17.5 + 13 sin 17.5 = 23.9; 21 sin 17.5 + 13 cos 17.5 = 18.7
        QCOMPARE(turned.size(), QSize(24, 19));
        QCOMPARE(turned.pixel(0, 0), qRgb(0, 255, 0));
        QCOMPARE(turned.pixel(23, 18), qRgb(0, 255, 0));
    }

    void badArgumentsAreRefused_data()
    {
        QTest::addColumn<QStringList>("arguments");
        QTest::addColumn<QString>("message");
        QTest::newRow("brightness beyond 1000") << QStringList{"--brightness", "2000"} << "from -1000 to 1000";
        QTest::newRow("contrast not a number") << QStringList{"--contrast", "lots"} << "not \"lots\"";
        QTest::newRow("rotate without a value") << QStringList{"--rotate"} << "--rotate needs a value";
        QTest::newRow("rotate not a number") << QStringList{"--rotate", "abc"} << "angle in degrees";
        QTest::newRow("rotate infinite") << QStringList{"--rotate", "inf"} << "angle in degrees";
        QTest::newRow("fill not a colour") << QStringList{"--rotate", "5", "--fill", "nosuchcolour"} << "#rrggbb";
        QTest::newRow("enlarge without rotate") << QStringList{"--flip", "--enlarge"} << "--enlarge follows --rotate";
        QTest::newRow("resample without resize") << QStringList{"--resample"} << "--resample follows --resize";
        QTest::newRow("resize to nothing") << QStringList{"--resize", "0x5"} << "WIDTHxHEIGHT";
        QTest::newRow("resize beyond 32767") << QStringList{"--resize", "40000x5"} << "WIDTHxHEIGHT";
        QTest::newRow("resize without x") << QStringList{"--resize", "40"} << "WIDTHxHEIGHT";
        QTest::newRow("unknown option") << QStringList{"--sharpen"} << "Unknown option --sharpen";
        QTest::newRow("unknown shape") << QStringList{"--shape", "BLOB", "--size", "5x5"} << "tarnby-cli shapes lists them";
        QTest::newRow("shape without a size") << QStringList{"--shape", "CIRCLE", "--at", "1,1"} << "--shape needs --size";
        QTest::newRow("at without a shape") << QStringList{"--at", "1,1"} << "--at follows --shape";
        QTest::newRow("shape colour not a colour") << QStringList{"--shape", "CIRCLE", "--size", "5x5", "--color", "#12"} << "#rrggbb";
        QTest::newRow("unknown text style") << QStringList{"--text", "a", "--style", "WAVY"} << "tarnby-cli text-styles lists them";
        QTest::newRow("font size 0") << QStringList{"--text", "a", "--font", "Sans,0"} << "--font takes";
        QTest::newRow("style without text") << QStringList{"--style", "NORMAL"} << "--style follows --text";
        QTest::newRow("third file without --out-dir") << QStringList{"extra.png"} << "--out-dir";
    }
    void badArgumentsAreRefused()
    {
        QFETCH(QStringList, arguments);
        QFETCH(QString, message);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        const QString out = dir.filePath(QStringLiteral("out.png"));
        QVERIFY(pattern().save(in));
        const Run run = cli(QStringList{"convert", in, out} + arguments);
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(message), qPrintable(run.err));
        QVERIFY(!QFile::exists(out));
    }

    void tooLargeResultLeavesNoFile()
    {
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.png"));
        const QString out = dir.filePath(QStringLiteral("out.png"));
        QVERIFY(pattern().save(in));
        const Run run = cli({"convert", in, out, "--resize", "30000x30000"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains(QLatin1String("too large")), qPrintable(run.err));
        QVERIFY(!QFile::exists(out));
    }

    // Every input is done and saved in the folder under its own name; a
    // broken one is named and does not stop the others.
    void severalInputsIntoAFolder()
    {
        TestDir dir;
        QStringList inputs;
        for (int i = 0; i < 5; ++i) {
            inputs << dir.filePath(QStringLiteral("p%1.png").arg(i));
            QVERIFY(pattern(i * 10).save(inputs.last()));
        }
        const QString broken = dir.filePath(QStringLiteral("broken.png"));
        QFile file(broken);
        QVERIFY(file.open(QIODevice::WriteOnly));
        file.write("\x89PNG\r\n\x1a\n not really");
        file.close();
        const QString outDir = dir.filePath(QStringLiteral("out/deeper"));
        const Run run = cli(QStringList{"convert", "--out-dir", outDir, "--to", "bmp", "--reverse"} + inputs
                            + QStringList{broken, "--invert"});
        QCOMPARE(run.exitCode, 1);
        QVERIFY2(run.err.contains(broken), qPrintable(run.err));
        for (int i = 0; i < 5; ++i) {
            const QString out = outDir + QStringLiteral("/p%1.bmp").arg(i);
            QVERIFY2(QFile::exists(out), qPrintable(out));
            QCOMPARE(loaded(out), invert(reverse(pattern(i * 10))));
        }
        QVERIFY(!QFile::exists(outDir + QStringLiteral("/broken.bmp")));
    }

    // The lists as the command prints them, checked against the rule their
    // codes follow rather than against a copy of the table.
    void shapeCatalogue()
    {
        const Run run = cli({"shapes"});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 91);
        QCOMPARE(lines.first(), QStringLiteral("ARROW_B\t11003"));
        QCOMPARE(lines.last(), QStringLiteral("TRIANGLE_RIGHT_RT\t5010"));
        const QList<QPair<QString, int>> families = {{"SQUARE", 1},   {"RECTANGLE", 2}, {"PARALLELOGRAM", 3}, {"TRAPEZOID", 4},
                                                     {"TRIANGLE", 5}, {"CIRCLE", 7},    {"ELLIPSE", 8},       {"STAR", 9},
                                                     {"CROSS", 10},   {"ARROW", 11}};
        QHash<QString, int> codes;
        QHash<int, int> highestVariant; // family: highest code of its named variants
        for (const QString &line : lines) {
            const QStringList fields = line.split(QLatin1Char('\t'));
            QCOMPARE(fields.size(), 2);
            QVERIFY2(!codes.contains(fields.at(0)), qPrintable(line));
            const int code = fields.at(1).toInt();
            codes.insert(fields.at(0), code);
            int family = 6; // the other polygons, the line and the region
            for (const auto &[prefix, number] : families)
                if (fields.at(0).startsWith(prefix))
                    family = number;
            QVERIFY2(code / 1000 == family && code % 1000 < 20, qPrintable(line));
            if (!fields.at(0).endsWith(QLatin1String("_MAX")))
                highestVariant[family] = qMax(highestVariant.value(family), code);
        }
        for (auto it = codes.cbegin(); it != codes.cend(); ++it)
            if (it.key().endsWith(QLatin1String("_MAX")))
                QVERIFY2(it.value() == highestVariant.value(it.value() / 1000), qPrintable(it.key()));
        QCOMPARE(codes.value("CIRCLE_MAX"), codes.value("CIRCLE_270_RB"));
        QCOMPARE(codes.value("REGION"), codes.value("OTHER_MAX"));
    }

    void textStyleCatalogue()
    {
        const Run run = cli({"text-styles"});
        QCOMPARE(run.exitCode, 0);
        const QStringList lines = run.out.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        QCOMPARE(lines.size(), 13);
        QStringList names;
        QSet<int> codes;
        for (const QString &line : lines) {
            const QStringList fields = line.split(QLatin1Char('\t'));
            QCOMPARE(fields.size(), 2);
            QVERIFY(fields.at(0).startsWith(QLatin1String("TEXTSTYLE_")));
            names << fields.at(0);
            codes << fields.at(1).toInt();
        }
        QStringList sorted = names;
        sorted.sort();
        QCOMPARE(names, sorted); // shown in alphabetical order
        QCOMPARE(codes.size(), 12); // 0 to 11, with 11 twice
        for (int code = 0; code <= 11; ++code)
            QVERIFY(codes.contains(code));
        QVERIFY(lines.contains(QStringLiteral("TEXTSTYLE_MAX\t11")));
        QVERIFY(lines.contains(QStringLiteral("TEXTSTYLE_RAISEDEXTRAHEAVY\t11")));
        QCOMPARE(cli({"shapes", "extra"}).exitCode, 2);
    }

    void twoInputsOfOneNameAreRefused()
    {
        TestDir dir;
        QVERIFY(QDir(dir.path()).mkpath(QStringLiteral("a")) && QDir(dir.path()).mkpath(QStringLiteral("b")));
        QVERIFY(pattern().save(dir.filePath(QStringLiteral("a/x.png"))));
        QVERIFY(pattern().save(dir.filePath(QStringLiteral("b/x.png"))));
        const Run run = cli({"convert", "--out-dir", dir.filePath(QStringLiteral("out")), dir.filePath(QStringLiteral("a/x.png")),
                             dir.filePath(QStringLiteral("b/x.png"))});
        QCOMPARE(run.exitCode, 2);
        QVERIFY2(run.err.contains(QLatin1String("would both be saved")), qPrintable(run.err));
        QVERIFY(!QFile::exists(dir.filePath(QStringLiteral("out/x.png"))));
    }
};

QTEST_MAIN(TestEditCli)
#include "tst_editcli.moc"
