#include "Fixtures.h"
#include "TestDir.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/imaging/VectorRoutes.h"
#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QImageIOHandler>
#include <QFileInfo>
#include <QTest>
#include <QtEndian>

#if defined(__GLIBC__)
#include <malloc.h>
#endif
#if defined(__SANITIZE_ADDRESS__)
#define TARNBY_TEST_SANITIZED 1
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
#define TARNBY_TEST_SANITIZED 1
#endif
#endif

using namespace tarnby::imaging;

namespace {

QByteArray pcxHeader(int width, int height)
{
    QByteArray h(128, '\0');
    h[0] = 0x0A;
    h[1] = 5;
    h[2] = 1;
    h[3] = 8;
    qToLittleEndian<quint16>(quint16(width - 1), h.data() + 8);
    qToLittleEndian<quint16>(quint16(height - 1), h.data() + 10);
    h[65] = 1;
    qToLittleEndian<quint16>(quint16(width + (width & 1)), h.data() + 66);
    return h + QByteArray(256, '\x11');
}

QByteArray sgiHeader(int width, int height)
{
    QByteArray h(512, '\0');
    qToBigEndian<quint16>(474, h.data());
    h[2] = 0; // uncompressed
    h[3] = 1;
    qToBigEndian<quint16>(3, h.data() + 4);
    qToBigEndian<quint16>(quint16(width), h.data() + 6);
    qToBigEndian<quint16>(quint16(height), h.data() + 8);
    qToBigEndian<quint16>(3, h.data() + 10);
    qToBigEndian<quint32>(255, h.data() + 16);
    return h + QByteArray(1024, '\x22');
}

QByteArray bmpHeader(int width, int height)
{
    QByteArray h(54, '\0');
    h[0] = 'B';
    h[1] = 'M';
    qToLittleEndian<quint32>(54 + 4096, h.data() + 2);
    qToLittleEndian<quint32>(54, h.data() + 10);
    qToLittleEndian<quint32>(40, h.data() + 14);
    qToLittleEndian<qint32>(width, h.data() + 18);
    qToLittleEndian<qint32>(height, h.data() + 22);
    qToLittleEndian<quint16>(1, h.data() + 26);
    qToLittleEndian<quint16>(24, h.data() + 28);
    return h + QByteArray(4096, '\x33');
}

QByteArray eps(const QByteArray &boundingBox, const QByteArray &program)
{
    return "%!PS-Adobe-3.0 EPSF-3.0\n%%BoundingBox: " + boundingBox + "\n" + program + "\nshowpage\n";
}

// An input kept from a fuzzer run (regressions/<format>/<what it found>);
// empty when it cannot be read.
QByteArray regression(const QString &name)
{
    QFile file(QStringLiteral(TARNBY_IMAGING_REGRESSIONS "/") + name);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

} // namespace

class TestPictureLimits : public QObject
{
    Q_OBJECT

private slots:
    // Headers that claim more pixels than the bound fail at once, before any
    // pixel is allocated.
    void absurdDimensionsFail_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("bitmap 60000 x 60000") << "huge.bmp" << bmpHeader(60000, 60000);
        QTest::newRow("bitmap with negative width") << "negative.bmp" << bmpHeader(-5, 10);
        QTest::newRow("pbm 20000 x 20000") << "huge.pbm" << QByteArray("P4\n20000 20000\n") + QByteArray(4096, '\0');
        QTest::newRow("pbm 2^31 wide") << "wide.pbm" << QByteArray("P4\n2147483647 2\n") + QByteArray(64, '\0');
        QTest::newRow("pcx 65535 x 65535") << "huge.pcx" << pcxHeader(65535, 65535);
        QTest::newRow("sgi 65535 x 65535") << "huge.sgi" << sgiHeader(65535, 65535);
        QTest::newRow("png header only") << "header.png" << QByteArray("\x89PNG\r\n\x1a\n", 8);
        QTest::newRow("empty file") << "empty.jpg" << QByteArray();
        QTest::newRow("text named as a picture") << "words.tga" << QByteArray("not a picture at all\n");
    }
    void absurdDimensionsFail()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, content);
        TestDir dir;
        const QString path = dir.createFile(name, content);
        const LoadResult result = loadPicture(path, Pages::All);
        QVERIFY(!result.ok());
        QVERIFY(!result.errorString.isEmpty());
    }

    // Qt refuses images over 128 MB unless told otherwise; a 140-megapixel
    // grey picture is within the layer's bound and loads.
    void largeGreyPictureLoads()
    {
        const int w = 14000, h = 10000;
        TestDir dir;
        QByteArray content = "P5\n" + QByteArray::number(w) + " " + QByteArray::number(h) + "\n255\n";
        content.append(QByteArray(qsizetype(w) * h, '\x80'));
        const QString path = dir.createFile(QStringLiteral("large.pgm"), content);
        content.clear();
        const LoadResult result = loadPicture(path);
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        QCOMPARE(result.picture.info.width, w);
        QCOMPARE(result.picture.info.height, h);
        QCOMPARE(distinctColours(result.picture.image()), 1);
    }

    // 200 megapixels, the largest picture promised to load, as a bitmap.
    void twoHundredMegapixelBitmapLoads()
    {
        const int w = 14144, h = 14144;
        TestDir dir;
        QByteArray content = "P4\n" + QByteArray::number(w) + " " + QByteArray::number(h) + "\n";
        content.append(QByteArray(qsizetype(w / 8) * h, '\x0F'));
        const QString path = dir.createFile(QStringLiteral("large.pbm"), content);
        content.clear();
        const LoadResult result = loadPicture(path);
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        QCOMPARE(result.picture.info.bitsPerPixel, 1);
        QCOMPARE(distinctColours(result.picture.image()), 2);
        QVERIFY(qint64(result.picture.info.width) * result.picture.info.height >= 200'000'000);
    }

    // The distribution's ImageMagick policy stops at 16K pixels a side; the
    // formats read through ImageMagick still load up to the layer's own bound.
    void magickFormatsBeyondSystemCaps_data()
    {
        QTest::addColumn<int>("width");
        QTest::addColumn<int>("height");
        QTest::newRow("wider than 16K") << 20000 << 3;
        QTest::newRow("taller than 16K") << 3 << 20000;
    }

    void magickFormatsBeyondSystemCaps()
    {
        QFETCH(int, width);
        QFETCH(int, height);
        const int bytesPerLine = width + (width & 1);
        QByteArray palette(768, '\0');
        palette[0x11 * 3] = char(0xC0); // index 0x11 is a red
        const QByteArray content = pcxHeader(width, height).left(128)
            + QByteArray(qsizetype(bytesPerLine) * height, '\x11') + '\x0C' + palette;
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(QStringLiteral("wide.pcx"), content));
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        QCOMPARE(result.picture.info.width, width);
        QCOMPARE(result.picture.info.height, height);
        const QImage &image = result.picture.frames.constFirst().image;
        QCOMPARE(image.pixel(width - 1, height - 1), qRgb(0xC0, 0, 0));
    }

    // PostScript is a programming language: a program that never ends, or
    // one that reaches for files, must not hold up or harm the program.
    void hostilePostScript_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::addColumn<bool>("loads");
        QTest::newRow("endless loop") << eps("0 0 10 10", "{} loop") << false;
        QTest::newRow("reads a system file") << eps("0 0 10 10", "(/etc/passwd) (r) file 100 string readstring") << false;
        QTest::newRow("deletes a file") << eps("0 0 10 10", "(/tmp/tarnby-eps-probe) deletefile") << false;
        QTest::newRow("absurd bounding box") << eps("0 0 10000000 10000000", "") << true;
        QTest::newRow("no bounding box") << QByteArray("%!PS\n0 0 moveto 10 10 lineto stroke showpage\n") << true;
        QTest::newRow("raster claimed far over the bound")
            << eps("0 0 10 10", "%ImageData: 999999999 999999999 8 3 0 1 2 \"image\"") << true;
        QTest::newRow("raster claimed a pixel wide and a billion high")
            << eps("0 0 10 10", "%ImageData: 1 999999999 8 3 0 1 2 \"image\"") << true;
        QTest::newRow("raster of unequal resolutions in a tiny box")
            << eps("0 0 0.001 10", "%ImageData: 4000 3 8 3 0 1 2 \"image\"") << true;
        QTest::newRow("dos header pointing past the end") << QByteArray("\xC5\xD0\xD3\xC6\x1e\0\0\0\xff\xff\0\0", 12) << false;
    }
    void hostilePostScript()
    {
        QFETCH(QByteArray, content);
        QFETCH(bool, loads);
        TestDir dir;
        const QString path = dir.createFile(QStringLiteral("program.eps"), content);
        const LoadResult result = loadPicture(path);
        QCOMPARE(result.ok(), loads);
        if (loads)
            QVERIFY(qMax(result.picture.info.width, result.picture.info.height) <= vector::MaxVectorSide);
        else
            QVERIFY(!result.errorString.isEmpty());
    }

    // A closed picture's memory goes back to the system: after a large
    // picture is freed, a smaller one is still a mapping of its own rather
    // than a block of the heap that the process keeps once it is freed.
    void freedPicturesGoBackToTheSystem_data()
    {
        QTest::addColumn<QSize>("first");
        QTest::addColumn<QSize>("second");
        // glibc raises its bound after freeing a mapping of up to 32 MB.
        QTest::newRow("a photo after a larger one") << QSize(2000, 1500) << QSize(1600, 1200);
        QTest::newRow("a thumbnail's decode after a photo") << QSize(2000, 1500) << QSize(500, 375);
    }
    void freedPicturesGoBackToTheSystem()
    {
#if !defined(__GLIBC__) || defined(TARNBY_TEST_SANITIZED)
        QSKIP("glibc's own allocator only");
#else
        QFETCH(QSize, first);
        QFETCH(QSize, second);
        TestDir dir;
        QImage small(8, 8, QImage::Format_RGB32);
        small.fill(Qt::red);
        const QString path = dir.filePath(QStringLiteral("small.png"));
        QVERIFY(small.save(path, "png"));
        QVERIFY(loadPicture(path).ok());
        {
            QImage large(first, QImage::Format_RGB32);
            large.fill(Qt::blue);
        }
        const size_t mappedBefore = mallinfo2().hblkhd;
        QImage next(second, QImage::Format_RGB32);
        next.fill(Qt::green);
        QVERIFY(mallinfo2().hblkhd >= mappedBefore + size_t(next.sizeInBytes()));
        next = QImage();
        QCOMPARE(mallinfo2().hblkhd, mappedBefore);
#endif
    }

    void hostileDrawings_data()
    {
        QTest::addColumn<QByteArray>("content");
        const QByteArray line = "  0\nSECTION\n  2\nENTITIES\n  0\nLINE\n  8\n0\n 10\n%1\n 20\n%2\n 11\n%3\n 21\n%4\n  0\nENDSEC\n  0\nEOF\n";
        QTest::newRow("coordinates near the largest double")
            << QString::fromLatin1(line).arg("-1e308", "-1e308", "1e308", "1e308").toLatin1();
        QTest::newRow("coordinates that are not numbers") << QString::fromLatin1(line).arg("nan", "inf", "x", "").toLatin1();
        QTest::newRow("a single point") << QString::fromLatin1(line).arg("5", "5", "5", "5").toLatin1();
        QTest::newRow("block that inserts itself in arrays")
            << QByteArray("0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n8\n0\n2\nLOOP\n70\n0\n10\n0\n20\n0\n"
                          "0\nINSERT\n8\n0\n2\nLOOP\n10\n1\n20\n1\n70\n1000\n71\n1000\n44\n1\n45\n1\n"
                          "0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n"
                          "0\nINSERT\n8\n0\n2\nLOOP\n10\n0\n20\n0\n70\n1000\n71\n1000\n"
                          "0\nLINE\n8\n0\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDSEC\n0\nEOF\n");
        QTest::newRow("circles in a block that inserts itself in arrays")
            << QByteArray("0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n8\n0\n2\nLOOP\n70\n0\n10\n0\n20\n0\n"
                          "0\nCIRCLE\n8\n0\n10\n0\n20\n0\n40\n50\n"
                          "0\nINSERT\n8\n0\n2\nLOOP\n10\n1\n20\n1\n70\n1000\n71\n1000\n44\n1\n45\n1\n"
                          "0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n"
                          "0\nINSERT\n8\n0\n2\nLOOP\n10\n0\n20\n0\n70\n1000\n71\n1000\n0\nENDSEC\n0\nEOF\n");
        QTest::newRow("line longer than the reader's buffer")
            << ("0\nSECTION\n2\nENTITIES\n0\nTEXT\n8\n0\n10\n0\n20\n0\n40\n5\n1\n" + QByteArray(5000, 'W')
                + "\n0\nLINE\n8\n0\n10\n0\n20\n0\n11\n1\n21\n1\n0\nENDSEC\n0\nEOF\n");
        QTest::newRow("long text in a block that inserts itself in arrays")
            << ("0\nSECTION\n2\nBLOCKS\n0\nBLOCK\n8\n0\n2\nLOOP\n70\n0\n10\n0\n20\n0\n"
                "0\nTEXT\n8\n0\n10\n0\n20\n0\n40\n50\n1\n" + QByteArray(4000, 'W') + "\n"
                "0\nMTEXT\n8\n0\n10\n0\n20\n0\n40\n50\n1\n" + QByteArray(2000, 'W') + QByteArray(1000, '\\') + "P\n"
                "0\nINSERT\n8\n0\n2\nLOOP\n10\n1\n20\n1\n70\n1000\n71\n1000\n44\n1\n45\n1\n"
                "0\nENDBLK\n0\nENDSEC\n0\nSECTION\n2\nENTITIES\n"
                "0\nINSERT\n8\n0\n2\nLOOP\n10\n0\n20\n0\n70\n1000\n71\n1000\n0\nENDSEC\n0\nEOF\n");
        QTest::newRow("bulges near the largest double and not numbers")
            << QByteArray("0\nSECTION\n2\nENTITIES\n0\nLWPOLYLINE\n8\n0\n90\n3\n70\n1\n"
                          "10\n0\n20\n0\n42\n1e308\n10\n1\n20\n0\n42\nnan\n10\n1\n20\n1\n42\n-1e-300\n"
                          "0\nENDSEC\n0\nEOF\n");
        // Found by fuzz_dxf: letters of a hundred text heights in the arrays
        // of a block that inserts itself took half a minute to draw.
        const QByteArray fuzzed = regression(QStringLiteral("dxf/large-letters-in-self-inserting-arrays.dxf"));
        QVERIFY2(!fuzzed.isEmpty(), "the kept fuzzer input is missing");
        QTest::newRow("fuzzed large letters in arrays") << fuzzed;
        QTest::newRow("circle of negative radius")
            << QByteArray("  0\nSECTION\n  2\nENTITIES\n  0\nCIRCLE\n  8\n0\n 10\n0\n 20\n0\n 40\n-5\n  0\nENDSEC\n  0\nEOF\n");
    }
    void hostileDrawings()
    {
        QFETCH(QByteArray, content);
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(QStringLiteral("drawing.dxf"), content));
        if (result.ok())
            QVERIFY(qMax(result.picture.info.width, result.picture.info.height) <= vector::MaxVectorSide);
        else
            QVERIFY(!result.errorString.isEmpty());
    }

    // Every file of the corpus's malformed folder comes back: a picture where
    // the library makes one of what is there (a truncated file shows its
    // first part), otherwise a message. Those listed must fail.
    void malformedSamples_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<bool>("mustFail");
        const QStringList mustFail{
            "CUR/no_cursors.cur", "DXF/testDXF_ascii_no_header.dxf", "DXF/testDXF_ascii_win_newlines.dxf",
            "MSP/Patch_full.msp", "MSP/hopper_bad_checksum.msp", "PCD/photo_cd.pcd",
            "PCX/ossfuzz-4836216264589312.pcx", "PNG/broken.png",
            "SGI/crash-754d9c7ec485ffb76a90eeaab191ef69a2a3a3cd.sgi", "SGI/ossfuzz-5730089102868480.sgi",
        };
        for (const PictureFormat &format : pictureFormats()) {
            const QString folder = QStringLiteral("malformed/") + QLatin1String(format.extension);
            for (const QString &path : fixtures::files(folder)) {
                const QString relative = QLatin1String(format.extension) + QLatin1Char('/') + QFileInfo(path).fileName();
                QTest::newRow(qPrintable(relative)) << relative << mustFail.contains(relative);
            }
        }
    }
    void malformedSamples()
    {
        REQUIRE_FIXTURES();
        QFETCH(QString, relative);
        QFETCH(bool, mustFail);
        const PictureFormat *format = formatForExtension(QFileInfo(relative).suffix());
        if (format && effectiveReader(*format) == Route::OwnCodec && !codecs::createHandler(format->readName)
            && relative != QLatin1String("MSP/Patch_full.msp"))
            QSKIP("the codec of our own for this format has not landed in this build");
        const LoadResult result = loadPicture(fixtures::path(QStringLiteral("malformed/") + relative), Pages::All);
        if (mustFail || !result.ok()) {
            QVERIFY(!result.ok());
            QVERIFY(!result.errorString.isEmpty());
            return;
        }
        const PictureInfo &info = result.picture.info;
        QVERIFY(info.width > 0 && info.height > 0);
        QVERIFY(qint64(info.width) * info.height <= MaxPixels);
    }

    void unreadableFormatsSayWhy_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QString>("named");
        QTest::newRow("lead compressed") << "photo.cmp" << "CMP";
        QTest::newRow("microsoft fax") << "fax.awd" << "AWD";
        QTest::newRow("upper-case extension") << "FAX.AWD" << "AWD";
    }
    void unreadableFormatsSayWhy()
    {
        QFETCH(QString, name);
        QFETCH(QString, named);
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(name, QByteArray(512, '\x5a')));
        QVERIFY(!result.ok());
        QVERIFY2(result.errorString.contains(named), qPrintable(result.errorString));
    }
};

QTEST_MAIN(TestPictureLimits)
#include "tst_picturelimits.moc"
