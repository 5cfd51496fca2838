#include "TestDir.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QTest>
#include <QtConcurrent>

#include <algorithm>

using namespace tarnby::imaging;

namespace {

// Generated pictures, one per depth, with sizes that are no multiple of 8 or
// 4 so that row padding is exercised.
QImage picture(int bitsPerPixel)
{
    const int w = 37, h = 23;
    switch (bitsPerPixel) {
    case 1: {
        QImage image(w, h, QImage::Format_Mono);
        image.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, (x * 3 + y * 5) % 7 < 3 ? 1 : 0);
        return image;
    }
    case 8: {
        QImage image(w, h, QImage::Format_Indexed8);
        QList<QRgb> table;
        for (int i = 0; i < 200; ++i)
            table << qRgb((i * 37) % 256, (i * 91) % 256, (i * 13) % 256);
        image.setColorTable(table);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, uint((x + y * w) % 200));
        return image;
    }
    case 24: {
        QImage image(w, h, QImage::Format_RGB32);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, qRgb(x * 7, y * 11, (x * y) % 256));
        return image;
    }
    default: {
        QImage image(w, h, QImage::Format_ARGB32);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, qRgba(x * 7, y * 11, (x * y) % 256, (x * 17 + y * 3) % 256));
        return image;
    }
    }
}

// Largest difference of any channel between two pictures. With alpha on both
// sides they are compared premultiplied: the colour under a transparent pixel
// is not part of the picture.
int largestDifference(const QImage &a, const QImage &b)
{
    const bool alpha = a.hasAlphaChannel() && b.hasAlphaChannel();
    const QImage pa = a.convertToFormat(alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    const QImage pb = b.convertToFormat(alpha ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32);
    int worst = 0;
    for (int y = 0; y < pa.height(); ++y) {
        for (int x = 0; x < pa.width(); ++x) {
            const QRgb p = reinterpret_cast<const QRgb *>(pa.constScanLine(y))[x];
            const QRgb q = reinterpret_cast<const QRgb *>(pb.constScanLine(y))[x];
            worst = std::max({worst, qAbs(qRed(p) - qRed(q)), qAbs(qGreen(p) - qGreen(q)), qAbs(qBlue(p) - qBlue(q)),
                          alpha ? qAbs(qAlpha(p) - qAlpha(q)) : 0});
        }
    }
    return worst;
}

double meanDifference(const QImage &a, const QImage &b)
{
    const QImage pa = a.convertToFormat(QImage::Format_RGB32);
    const QImage pb = b.convertToFormat(QImage::Format_RGB32);
    double sum = 0;
    for (int y = 0; y < pa.height(); ++y)
        for (int x = 0; x < pa.width(); ++x)
            sum += qAbs(qGray(pa.pixel(x, y)) - qGray(pb.pixel(x, y)));
    return sum / (qint64(pa.width()) * pa.height());
}

// What each writer keeps. bits: the depth read back for a 1-, 8-, 24- and
// 32-bit picture (0: not checked); lossless: pixels come back exactly where
// the depth is kept; alpha: a 32-bit picture keeps its partial transparency.
struct Expectation {
    const char *extension;
    int bits[4];
    bool lossless;
    bool alpha;
    bool sameSize;
};
const Expectation Expectations[] = {
    {"JPG", {8, 8, 24, 24}, false, false, true}, // 8 bits: a grey JPEG
    {"TIFF", {1, 8, 24, 32}, true, true, true},
    {"BMP", {1, 8, 24, 24}, true, false, true},
    {"ICO", {32, 32, 32, 32}, true, true, true},
    {"CUR", {32, 32, 32, 32}, true, true, true},
    {"PCX", {0, 8, 24, 32}, true, true, true},
    {"PCD", {24, 24, 24, 24}, false, false, false},
    {"XPM", {1, 8, 24, 0}, true, false, true},
    {"PNG", {1, 8, 24, 32}, true, true, true},
    {"PSD", {0, 8, 24, 32}, true, false, true}, // ImageMagick's Photoshop alpha does not come back
    {"TGA", {8, 8, 24, 32}, true, true, true},
    {"JBG", {1, 1, 1, 1}, false, false, true},
    {"RAS", {0, 8, 24, 32}, true, true, true},
    {"PCT", {0, 0, 24, 0}, true, false, true},
    {"XWD", {0, 8, 24, 0}, true, false, true},
    {"SGI", {0, 0, 24, 32}, true, true, true},
    {"CUT", {0, 8, 0, 0}, true, false, true},
    {"EPS", {0, 0, 0, 0}, false, false, true}, // drawn again by the interpreter
    {"MAC", {1, 1, 1, 1}, false, false, false}, // always 576 x 720
    {"MSP", {1, 1, 1, 1}, false, false, true},
};

const Expectation *expectationFor(const char *extension)
{
    for (const Expectation &e : Expectations) {
        if (qstrcmp(e.extension, extension) == 0)
            return &e;
    }
    return nullptr;
}

} // namespace

class TestPictureRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void roundTrip_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<int>("depthIndex");
        const int depths[] = {1, 8, 24, 32};
        for (const PictureFormat &format : pictureFormats()) {
            if (!format.ownsCode || format.writer == Route::None)
                continue;
            for (int i = 0; i < 4; ++i)
                QTest::addRow("%s %d-bit", format.extension, depths[i]) << format.code << i;
        }
    }
    void roundTrip()
    {
        QFETCH(int, code);
        QFETCH(int, depthIndex);
        const int depths[] = {1, 8, 24, 32};
        const int bits = depths[depthIndex];
        const PictureFormat *format = formatForCode(code);
        QVERIFY(format);
        if (!canWrite(*format))
            QSKIP("no writer for this format in this build");
        const Expectation *expected = expectationFor(format->extension);
        QVERIFY2(expected, "every writable format has a row of expectations here");

        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("picture.") + QString::fromLatin1(format->extension).toLower());
        Picture source;
        source.frames = {{picture(bits), 0}};
        source.info.bitsPerPixel = bits;
        const SaveResult saved = savePicture(source, path, code);
        QVERIFY2(saved.ok, qPrintable(saved.errorString));

        const LoadResult loaded = loadPicture(path);
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        if (expected->sameSize)
            QCOMPARE(loaded.picture.image().size(), source.image().size());
        if (const int back = expected->bits[depthIndex])
            QCOMPARE(loaded.picture.info.bitsPerPixel, back);
        const bool depthKept = loaded.picture.info.bitsPerPixel >= bits && (bits < 32 || expected->alpha);
        if (expected->lossless && depthKept)
            QCOMPARE(largestDifference(loaded.picture.image(), source.image()), 0);
        else if (qstrcmp(format->extension, "JPG") == 0 && bits >= 24)
            QVERIFY(meanDifference(loaded.picture.image(), source.image()) < 12);
        else if (qstrcmp(format->extension, "EPS") == 0 && bits != 32)
            QCOMPARE(largestDifference(loaded.picture.image(), source.image()), 0);
    }

    // An EPS holds its picture in a box measured in points, at the picture's
    // resolution; read back, it has its pixels again, and its resolution.
    void epsKeepsPixelSizeAndResolution_data()
    {
        QTest::addColumn<QSize>("size");
        QTest::addColumn<int>("dpi");
        QTest::addColumn<int>("bits");
        QTest::newRow("97 x 61 at the screen's 96 dpi") << QSize(97, 61) << 96 << 24;
        QTest::newRow("97 x 61 at 72 dpi, a pixel a point") << QSize(97, 61) << 72 << 24;
        QTest::newRow("97 x 61 at 300 dpi, a box under 24 points") << QSize(97, 61) << 300 << 24;
        QTest::newRow("one pixel") << QSize(1, 1) << 96 << 24;
        QTest::newRow("tall and thin") << QSize(3, 211) << 150 << 24;
        QTest::newRow("grey") << QSize(45, 29) << 96 << 8;
        QTest::newRow("one bit, width no multiple of 8") << QSize(45, 29) << 96 << 1;
        QTest::newRow("uneven resolution") << QSize(97, 61) << 0 << 24;
    }
    void epsKeepsPixelSizeAndResolution()
    {
        QFETCH(QSize, size);
        QFETCH(int, dpi);
        QFETCH(int, bits);
        QImage image(size, QImage::Format_RGB32);
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x)
                image.setPixel(x, y, bits == 1 ? ((x + 2 * y) % 5 < 2 ? qRgb(0, 0, 0) : qRgb(255, 255, 255))
                                     : bits == 8 ? qRgb((x * 13 + y * 7) % 256, (x * 13 + y * 7) % 256, (x * 13 + y * 7) % 256)
                                                 : qRgb(x * 41 % 256, y * 23 % 256, (x ^ y) * 5 % 256));
        // dpi 0: 200 across and 100 down.
        const int dpmX = qRound((dpi ? dpi : 200) / 0.0254);
        const int dpmY = qRound((dpi ? dpi : 100) / 0.0254);
        image.setDotsPerMeterX(dpmX);
        image.setDotsPerMeterY(dpmY);
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("picture.eps"));
        Picture source;
        source.frames = {{image, 0}};
        source.info.bitsPerPixel = bits;
        const SaveResult saved = savePicture(source, path, 16);
        QVERIFY2(saved.ok, qPrintable(saved.errorString));

        const LoadResult loaded = loadPicture(path);
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        QCOMPARE(loaded.picture.image().size(), size);
        QCOMPARE(loaded.picture.info.width, size.width());
        QCOMPARE(loaded.picture.info.height, size.height());
        QCOMPARE(qRound(loaded.picture.info.xResolution), dpi ? dpi : 200);
        QCOMPARE(qRound(loaded.picture.info.yResolution), dpi ? dpi : 100);
        QCOMPARE(largestDifference(loaded.picture.image(), image), 0);
    }

    // The colour count is taken when asked, from the picture as it stands.
    void distinctColoursByLayout_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<qint64>("colours");
        QImage mono(13, 3, QImage::Format_Mono);
        mono.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        mono.fill(0);
        QTest::newRow("one bit, one value used") << mono << qint64(1);
        mono.setPixel(12, 2, 1); // in the last, partly used byte
        QTest::newRow("one bit, both used") << mono << qint64(2);
        QImage sameTwice = mono;
        sameTwice.setColorTable({qRgb(9, 9, 9), qRgb(9, 9, 9)});
        QTest::newRow("one bit, one colour twice in the table") << sameTwice << qint64(1);
        QImage indexed(10, 10, QImage::Format_Indexed8);
        indexed.setColorTable({qRgb(1, 2, 3), qRgb(4, 5, 6), qRgb(7, 8, 9), qRgb(1, 2, 3)});
        indexed.fill(0);
        indexed.setPixel(5, 5, 3); // the same colour as entry 0
        indexed.setPixel(6, 5, 1);
        QTest::newRow("palette entries unused or repeated") << indexed << qint64(2);
        QImage grey(300, 2, QImage::Format_Grayscale8);
        for (int x = 0; x < 300; ++x)
            grey.setPixel(x, 0, qRgb(x % 256, x % 256, x % 256)), grey.setPixel(x, 1, qRgb(0, 0, 0));
        QTest::newRow("grey") << grey << qint64(256);
        QImage packed(64, 64, QImage::Format_RGB888);
        for (int y = 0; y < 64; ++y)
            for (int x = 0; x < 64; ++x)
                packed.setPixel(x, y, qRgb(x, y, 0));
        QTest::newRow("packed 24-bit rows, converted one at a time") << packed << qint64(64 * 64);
        QImage alpha(2, 1, QImage::Format_ARGB32);
        alpha.setPixel(0, 0, qRgba(10, 20, 30, 255));
        alpha.setPixel(1, 0, qRgba(10, 20, 30, 7));
        QTest::newRow("alpha left aside") << alpha << qint64(1);
        QTest::newRow("null") << QImage() << qint64(0);
    }
    void distinctColoursByLayout()
    {
        QFETCH(QImage, image);
        QFETCH(qint64, colours);
        QCOMPARE(distinctColours(image), colours);
        Picture picture;
        picture.frames = {{image, 0}};
        const QList<PropertyRow> rows = pictureProperties(picture);
        QCOMPARE(rows.size(), 9);
        QCOMPARE(rows.at(1).caption, QStringLiteral("Color Count:"));
        QCOMPARE(rows.at(1).value, QString::number(colours));
    }

    // Pages survive a save as TIFF.
    void tiffKeepsPages()
    {
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("pages.tif"));
        Picture source;
        source.frames = {{picture(24), 0}, {picture(8), 0}, {picture(1), 0}};
        source.info.bitsPerPixel = 24;
        const SaveResult saved = savePicture(source, path, 3);
        QVERIFY2(saved.ok, qPrintable(saved.errorString));
        const LoadResult loaded = loadPicture(path, Pages::All);
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        QCOMPARE(loaded.picture.frames.size(), 3);
        QCOMPARE(largestDifference(loaded.picture.frames.at(1).image, picture(8)), 0);
    }

    void refusals_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("message");
        QTest::newRow("metafile") << 15 << "WMF";
        QTest::newRow("enhanced metafile") << 116 << "EMF";
        QTest::newRow("drawing") << 58 << "DXF";
        QTest::newRow("flashpix") << 80 << "FPX";
        QTest::newRow("lead compressed") << 5 << "CMP";
        QTest::newRow("no such code") << 4242 << "4242";
        QTest::newRow("zero") << 0 << "0";
    }
    void refusals()
    {
        QFETCH(int, code);
        QFETCH(QString, message);
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("refused.out"));
        Picture source;
        source.frames = {{picture(24), 0}};
        const SaveResult saved = savePicture(source, path, code);
        QVERIFY(!saved.ok);
        QVERIFY2(saved.errorString.contains(message), qPrintable(saved.errorString));
        QVERIFY(!QFile::exists(path));
    }

    // A failed save leaves the file that was there.
    void failedSaveKeepsTheOldFile()
    {
        TestDir dir;
        const QString path = dir.createFile(QStringLiteral("keep.png"), QByteArray("old contents"));
        const SaveResult saved = savePicture(Picture(), path, 75);
        QVERIFY(!saved.ok);
        QCOMPARE(dir.read(QStringLiteral("keep.png")), QByteArray("old contents"));
    }

    // Formats with no sample in the corpus, read from files generated here.
    void macPaintIsRead()
    {
        QByteArray file(512, '\0'); // header: version and patterns, unused
        for (int y = 0; y < 720; ++y) {
            file.append(char(71)); // PackBits: 72 literal bytes follow
            for (int x = 0; x < 72; ++x)
                file.append((x * 8 + y) % 7 < 3 ? '\xFF' : '\0');
        }
        TestDir dir;
        const LoadResult loaded = loadPicture(dir.createFile(QStringLiteral("paint.mac"), file));
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        QCOMPARE(loaded.picture.image().size(), QSize(576, 720));
        QCOMPARE(loaded.picture.info.bitsPerPixel, 1);
        QCOMPARE(formatName(loaded.picture.info.formatCode), QStringLiteral("MacPaint File Format"));
        QCOMPARE(distinctColours(loaded.picture.image()), 2);
        // Every row where it was written: a set bit is black.
        const QImage image = loaded.picture.image();
        for (int y = 0; y < 720; ++y)
            for (int x = 0; x < 576; ++x)
                QCOMPARE(qGray(image.pixel(x, y)) < 128, (x / 8 * 8 + y) % 7 < 3);
    }

    void drHaloIsRead()
    {
        const int w = 40, h = 20;
        QByteArray file;
        file.append(char(w)).append('\0').append(char(h)).append('\0').append(2, '\0');
        for (int y = 0; y < h; ++y) {
            const QByteArray line = QByteArray(1, char(0x80 | w)) + char(y * 5) + '\0'; // one run, then end of line
            file.append(char(line.size())).append('\0').append(line);
        }
        TestDir dir;
        const LoadResult loaded = loadPicture(dir.createFile(QStringLiteral("halo.cut"), file));
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        QCOMPARE(loaded.picture.image().size(), QSize(w, h));
        QCOMPARE(formatName(loaded.picture.info.formatCode), QStringLiteral("Dr. Halo Format"));
        QCOMPARE(distinctColours(loaded.picture.image()), h); // one value a row
        QCOMPARE(loaded.picture.image().pixel(0, 7), loaded.picture.image().pixel(w - 1, 7));
    }

    // Windows load pictures on worker threads: the libraries' one-time set-up
    // and their process-wide state must hold when loads run side by side.
    void concurrentLoads()
    {
        TestDir dir;
        QStringList paths;
        const struct {
            const char *name;
            int code;
        } files[] = {{"a.pcx", 1}, {"b.tga", 4}, {"c.png", 75}, {"d.tif", 3}, {"e.ras", 55}, {"f.bmp", 6}};
        for (const auto &f : files) {
            Picture source;
            source.frames = {{picture(24), 0}};
            const QString path = dir.filePath(QLatin1String(f.name));
            QVERIFY(savePicture(source, path, f.code, 24).ok);
            paths << path;
        }
        QStringList work;
        for (int i = 0; i < 8; ++i)
            work << paths;
        const QList<bool> loaded = QtConcurrent::blockingMapped(work, [](const QString &path) {
            const LoadResult result = loadPicture(path);
            return result.ok() && largestDifference(result.picture.image(), picture(24)) == 0;
        });
        QCOMPARE(loaded.count(true), work.size());
    }

    void qualityChangesTheJpeg()
    {
        TestDir dir;
        Picture source;
        source.frames = {{picture(24).scaled(300, 200), 0}};
        QVERIFY(savePicture(source, dir.filePath(QStringLiteral("low.jpg")), 10, 24, 10).ok);
        QVERIFY(savePicture(source, dir.filePath(QStringLiteral("high.jpg")), 10, 24, 95).ok);
        QVERIFY(QFileInfo(dir.filePath(QStringLiteral("low.jpg"))).size()
                < QFileInfo(dir.filePath(QStringLiteral("high.jpg"))).size());
    }
};

QTEST_GUILESS_MAIN(TestPictureRoundTrip)
#include "tst_pictureroundtrip.moc"
