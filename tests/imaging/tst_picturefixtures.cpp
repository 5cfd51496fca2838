#include "Fixtures.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QFileInfo>
#include <QImageIOHandler>
#include <QTest>

using namespace tarnby::imaging;

namespace {

// Facts checked against the corpus's provenance notes: size of the first page,
// bits per pixel where a note states it (0: not stated), pages or frames with
// Pages::All (0: not stated).
struct Fact {
    const char *file;
    int width;
    int height;
    int bitsPerPixel;
    int frames;
    const char *formatName; // nullptr: not checked
};

const Fact Facts[] = {
    {"BMP/bmp.bmp", 1, 1, 24, 0, "OS2 Bitmap Format"},
    {"BMP/hopper.bmp", 128, 128, 24, 0, "Bitmap Format"},
    {"BMP/pal1.bmp", 127, 64, 1, 0, "Bitmap Format"},
    {"BMP/pal4rle.bmp", 127, 64, 4, 0, "Bitmap with RLE Compression"},
    {"BMP/pal8.bmp", 127, 64, 8, 0, "Bitmap Format"},
    {"BMP/pal8os2.bmp", 127, 64, 8, 0, "OS2 Bitmap Format"},
    {"CUR/deerstalker.cur", 32, 32, 0, 0, "Windows Cursor Format"},
    {"CUR/mask_1.cur", 1, 4, 1, 0, "Windows Cursor Format"},
    {"DCX/hopper.dcx", 128, 128, 0, 0, "Multipage PCX"},
    {"DCX/testDCX.dcx", 100, 75, 0, 0, "Multipage PCX"},
    {"EMF/drawing.emf", 1625, 1625, 0, 0, "EMF MetaFile Format"},
    {"EMF/testEMF.emf", 0, 0, 0, 0, "EMF MetaFile Format"},
    {"EMF/testEMF_iconOnlyLongFilename.emf", 0, 0, 0, 0, nullptr},
    {"EPS/1.eps", 100, 67, 0, 0, "Encapsulated PostScript Format"}, // the raster its %ImageData states
    {"EPS/bw.eps", 32, 32, 0, 0, "Encapsulated PostScript Format"},
    {"EPS/illu10_preview.eps", 403, 2447, 0, 0, "Encapsulated PostScript Format"}, // its high-resolution box at 72 dpi
    {"FLC/2422.flc", 320, 200, 8, 27, nullptr},
    {"ICO/black_and_white.ico", 16, 16, 1, 0, "Windows Icon Format"},
    {"ICO/hopper.ico", 16, 16, 8, 0, "Windows Icon Format"},
    {"ICO/hopper_256x256.ico", 256, 256, 0, 0, "Windows Icon Format"},
    {"ICO/ico.ico", 1, 1, 0, 0, "Windows Icon Format"},
    {"ICO/python.ico", 16, 16, 32, 0, "Windows Icon Format"},
    {"IFF/flag_ham6.iff", 124, 124, 0, 0, nullptr},
    {"IFF/ps_testcard_rgb_amiga.iff", 131, 131, 0, 0, nullptr},
    {"IFF/testcard_indexed1_amiga.iff", 131, 131, 0, 0, nullptr},
    {"IFF/testcard_indexed4_amiga.iff", 256, 256, 0, 0, nullptr},
    {"IFF/testcard_rlepbm.iff", 112, 112, 0, 0, nullptr},
    {"ANI/kimageformats_test.ani", 32, 32, 0, 0, nullptr},
    {"ANI/test.ani", 32, 32, 0, 0, nullptr},
    {"JPG/hopper.jpg", 128, 128, 24, 0, "JPEG File Interchange Format"},
    {"JPG/hopper_gray.jpg", 128, 128, 8, 0, nullptr},
    {"JPG/hopper_orientation_6.jpg", 128, 128, 24, 0, nullptr},
    {"JPG/jpeg.jpg", 1, 1, 8, 0, nullptr},
    {"JPG/testJPEG_EXIF.jpg", 100, 68, 24, 0, nullptr},
    {"MSP/hopper.msp", 128, 128, 1, 0, "Microsoft Paint Format"},
    {"PBM/hopper_1bit.pbm", 128, 128, 1, 0, "Portable Bitmap Utilities Format"},
    {"PBM/hopper_1bit_plain.pbm", 128, 128, 1, 0, "Portable Bitmap Utilities Format"},
    {"PBM/pbm.pbm", 1, 1, 1, 0, nullptr},
    {"PBM/testPBM.pbm", 1, 1, 1, 0, nullptr},
    {"PCD/hopper.pcd", 768, 512, 24, 0, "Kodak PhotoCD Format"},
    {"PCT/testPICT.pct", 100, 75, 0, 0, "Macintosh Pict Format"},
    {"PCX/01r_00.pcx", 88, 52, 8, 0, "ZSoft PCX"},
    {"PCX/16color.pcx", 200, 168, 4, 0, nullptr},
    {"PCX/bw.pcx", 32, 32, 24, 0, nullptr},
    {"PCX/p_4_planes.pcx", 1, 1, 4, 0, nullptr},
    {"PCX/pil184.pcx", 447, 144, 1, 0, nullptr},
    {"PCX/testPCX.pcx", 100, 75, 24, 0, nullptr},
    {"PNG/1_trns.png", 64, 64, 1, 0, "Portable Network Graphics"},
    {"PNG/hopper.png", 128, 128, 24, 0, nullptr},
    {"PNG/png-transparent.png", 1, 1, 32, 0, nullptr},
    {"PNG/testPNG.png", 100, 75, 24, 0, nullptr},
    {"PSD/hopper.psd", 128, 128, 24, 0, "Photoshop 3.0 Format"},
    {"PSD/hopper_merged.psd", 128, 128, 24, 0, nullptr},
    {"PSD/indexed.psd", 300, 300, 8, 0, "Photoshop 3.0 Format"},
    {"PSD/rgb-gimp-2.8.10.psd", 32, 32, 24, 0, nullptr},
    {"PSD/rgba.psd", 100, 100, 32, 0, nullptr},
    {"PSD/testPSD.psd", 537, 51, 24, 0, nullptr},
    {"RAS/hopper.ras", 128, 128, 24, 0, "Sun Raster Format"},
    {"RAS/rgb-gimp-2.10-1bit.ras", 32, 32, 1, 0, nullptr},
    {"RAS/rgb24.ras", 70, 46, 24, 0, nullptr},
    {"RAS/rle_pal8bit.ras", 320, 240, 8, 0, nullptr},
    {"SGI/hopper.sgi", 128, 128, 24, 0, nullptr},
    {"SGI/transparent.sgi", 200, 150, 32, 0, nullptr},
    {"TGA/200x32_p_tl_raw.tga", 200, 32, 8, 0, "Truevision TGA Format"},
    {"TGA/200x32_rgb_bl_rle.tga", 200, 32, 24, 0, nullptr},
    {"TGA/colormapped.tga", 48, 48, 8, 0, nullptr},
    {"TGA/la.tga", 64, 64, 0, 0, nullptr},
    {"TGA/rgba.tga", 32, 32, 32, 0, nullptr},
    {"TGA/targa.tga", 1, 1, 24, 0, nullptr},
    {"TIF/hopper.tif", 128, 128, 24, 0, "Tagged Image File Format"},
    {"TIF/hopper_bigtiff.tif", 128, 128, 24, 0, nullptr},
    {"TIF/hopper_g4.tif", 128, 128, 1, 0, "CCITT compressed TIFF"},
    {"TIF/hopper_lzw.tif", 128, 128, 24, 0, "Tagged Image File LZW Compressed Format"},
    {"TIF/testTIFF.tif", 100, 75, 24, 0, nullptr},
    {"TIF/tiff.tif", 1, 1, 1, 0, "Tagged Image File Format"}, // no strip byte counts: read by libtiff
    {"TIFF/g4-multi.tiff", 3307, 4677, 1, 3, nullptr},
    {"TIFF/multipage.tiff", 10, 10, 0, 3, nullptr},
    {"WMF/drawing.wmf", 83, 83, 0, 0, "Meta File Format"},
    {"WMF/testWMF.wmf", 117, 72, 0, 0, nullptr},
    {"WMF/testWMF_charset.wmf", 1024, 1009, 0, 0, nullptr},
    // Its records draw nothing: a blank page 12 x 12 units at 1200 an inch.
    {"WMF/WindowsMetafile.wmf", 1, 1, 24, 0, "Meta File Format"},
    {"XPM/hopper.xpm", 128, 128, 8, 0, "Unknown format"},
    {"XPM/hopper_bpp2.xpm", 128, 128, 8, 0, nullptr},
    {"DXF/testDXF_ascii.dxf", 0, 0, 24, 0, "Drawing Interchange Format (DXF)"},
    {"FPX/input_bw_one_band.fpx", 70, 46, 8, 0, "Kodak FlashPix Format"},
};

// Samples that no library on this system reads; each must fail with a message.
struct Refused {
    const char *file;
    const char *why;
};
const Refused RefusedSamples[] = {
    {"FPX/input_bw_five_bands.fpx", "five bands: no valid FlashPix picture"},
};

const Fact *factFor(const QString &relative)
{
    for (const Fact &f : Facts) {
        if (relative == QLatin1String(f.file))
            return &f;
    }
    return nullptr;
}

const char *refusalFor(const QString &relative)
{
    for (const Refused &r : RefusedSamples) {
        if (relative == QLatin1String(r.file))
            return r.why;
    }
    return nullptr;
}

// The picture folders of the corpus: every folder named after a picture extension.
QStringList pictureSamples()
{
    QStringList out;
    for (const PictureFormat &format : pictureFormats()) {
        const QString folder = QLatin1String(format.extension);
        for (const QString &path : fixtures::files(folder)) {
            if (QFileInfo(path).suffix().compare(folder, Qt::CaseInsensitive) == 0)
                out << folder + QLatin1Char('/') + QFileInfo(path).fileName();
        }
    }
    return out;
}

bool ownCodecMissing(const QString &relative)
{
    const PictureFormat *format = formatForExtension(QFileInfo(relative).suffix());
    return format && effectiveReader(*format) == Route::OwnCodec && !codecs::createHandler(format->readName);
}

struct Difference {
    double mean = 0;   // mean absolute difference of grey levels, 0 to 255
    double share = 0;  // share of pixels whose grey levels differ by more than a quarter of the range
};

// Compares two pictures of one size.
Difference difference(const QImage &a, const QImage &b)
{
    const QImage ga = a.convertToFormat(QImage::Format_ARGB32);
    const QImage gb = b.convertToFormat(QImage::Format_ARGB32);
    const int width = ga.width(), height = ga.height();
    double sum = 0;
    qint64 differing = 0;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            // Transparent pixels compare as white, as they are shown.
            const auto grey = [](QRgb c) { return qAlpha(c) < 128 ? 255 : qGray(c); };
            const int d = qAbs(grey(ga.pixel(x, y)) - grey(gb.pixel(x, y)));
            sum += d;
            differing += d > 64;
        }
    }
    const double pixels = double(width) * height;
    return {sum / pixels, differing / pixels};
}

} // namespace

class TestPictureFixtures : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase() { REQUIRE_FIXTURES(); }

    void everySampleLoads_data()
    {
        QTest::addColumn<QString>("relative");
        for (const QString &relative : pictureSamples())
            QTest::newRow(qPrintable(relative)) << relative;
    }
    void everySampleLoads()
    {
        QFETCH(QString, relative);
        if (ownCodecMissing(relative))
            QSKIP("the codec of our own for this format has not landed in this build");
        const QString path = fixtures::path(relative);
        const LoadResult result = loadPicture(path, Pages::All);

        if (const char *why = refusalFor(relative)) {
            QVERIFY2(!result.ok(), why);
            QVERIFY(!result.errorString.isEmpty());
            return;
        }
        QVERIFY2(result.ok(), qPrintable(result.errorString));

        // Plausible facts for every sample.
        const PictureInfo &info = result.picture.info;
        const QImage first = result.picture.image();
        QCOMPARE(info.width, first.width());
        QCOMPARE(info.height, first.height());
        QVERIFY(info.bitsPerPixel >= 1 && info.bitsPerPixel <= 64); // HAM6 is 6, as its file says
        const qint64 colours = distinctColours(result.picture.image());
        QVERIFY(colours >= 1 && colours <= qint64(info.width) * info.height);
        QCOMPARE(info.sizeOnDisk, QFileInfo(path).size());
        QCOMPARE(info.sizeInMemory, (qint64(info.width) * info.bitsPerPixel + 31) / 32 * 4 * info.height);
        QVERIFY(info.xResolution > 0 && info.yResolution > 0);
        QVERIFY(formatName(info.formatCode) != QLatin1String("Unknown format") || info.formatCode == 109
                || info.formatCode == 142 || info.formatCode == 134 || info.formatCode == 90);

        // Facts the provenance notes state.
        const Fact *fact = factFor(relative);
        QVERIFY2(fact, "every sample that loads has a row of facts here");
        if (fact->width > 0) {
            QCOMPARE(info.width, fact->width);
            QCOMPARE(info.height, fact->height);
        }
        if (fact->bitsPerPixel > 0)
            QCOMPARE(info.bitsPerPixel, fact->bitsPerPixel);
        if (fact->frames > 0)
            QCOMPARE(result.picture.frames.size(), fact->frames);
        if (fact->formatName)
            QCOMPARE(formatName(info.formatCode), QLatin1String(fact->formatName));
    }

    // A single page is loaded unless all pages are asked for; each page keeps
    // its own size.
    void pages()
    {
        const QString path = fixtures::path(QStringLiteral("TIFF/multipage.tiff"));
        const LoadResult first = loadPicture(path, Pages::First);
        QVERIFY2(first.ok(), qPrintable(first.errorString));
        QCOMPARE(first.picture.frames.size(), 1);
        const LoadResult all = loadPicture(path, Pages::All);
        QVERIFY2(all.ok(), qPrintable(all.errorString));
        QCOMPARE(all.picture.frames.size(), 3);
        QCOMPARE(all.picture.frames.at(2).image.size(), QSize(20, 20));
    }

    // Each step's own time reaches the picture's frames (steps 1, 2, 3, 2 at
    // 10, 20, 10, 10 jiffies).
    void animationTiming()
    {
        const QString relative = QStringLiteral("ANI/kimageformats_test.ani");
        if (ownCodecMissing(relative))
            QSKIP("the codec of our own for this format has not landed in this build");
        const LoadResult result = loadPicture(fixtures::path(relative), Pages::All);
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        QList<int> delays;
        for (const PictureFrame &frame : result.picture.frames)
            delays << frame.delayMs;
        QCOMPARE(delays, (QList<int>{166, 333, 166, 166}));
    }

    // Renderings beside the samples, from the projects the samples come from.
    void matchesReference_data()
    {
        QTest::addColumn<QString>("relative");
        QTest::addColumn<QString>("reference");
        QTest::addColumn<double>("tolerance");  // of the mean difference
        QTest::addColumn<double>("differing");  // largest share of clearly differing pixels
        QTest::addColumn<int>("sizeSlack");     // pixels the sizes may differ by
        QTest::newRow("flashpix grey") << "FPX/input_bw_one_band.fpx" << "FPX/input_bw_one_band.png" << 1.0 << 1.0 << 0;
        // Metafiles are drawn by other rasterisers than the references':
        // shapes agree, their anti-aliased edges do not, pixel for pixel. The
        // bounds are what each reference gives against itself moved sideways
        // (two pixels of 1625 for the EMF, one of 82 for the WMF): a drawing
        // placed or scaled wrongly by more than that fails.
        QTest::newRow("emf placed by its frame") << "EMF/drawing.emf" << "EMF/drawing_emf_ref.png" << 0.8 << 0.0047 << 1;
        QTest::newRow("placeable wmf") << "WMF/drawing.wmf" << "WMF/drawing_wmf_ref.png" << 7.5 << 0.045 << 1;
    }
    void matchesReference()
    {
        QFETCH(QString, relative);
        QFETCH(QString, reference);
        QFETCH(double, tolerance);
        QFETCH(double, differing);
        QFETCH(int, sizeSlack);
        if (ownCodecMissing(relative))
            QSKIP("the codec of our own for this format has not landed in this build");
        const LoadResult result = loadPicture(fixtures::path(relative));
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        const QImage expected(fixtures::path(reference));
        QVERIFY(!expected.isNull());
        const QSize size = result.picture.image().size();
        QVERIFY2(qAbs(size.width() - expected.width()) <= sizeSlack && qAbs(size.height() - expected.height()) <= sizeSlack,
                 qPrintable(QStringLiteral("%1 x %2").arg(size.width()).arg(size.height())));
        // A size that rounds the other way is scaled onto the reference's, so
        // that the drawing's far side is not compared a pixel off.
        QImage image = result.picture.image();
        if (image.size() != expected.size())
            image = image.scaled(expected.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
        const Difference found = difference(image, expected);
        qDebug("%s: mean difference %.3f, %.4f%% of pixels differ", qPrintable(relative), found.mean, found.share * 100);
        QVERIFY2(found.mean <= tolerance, qPrintable(QStringLiteral("mean difference %1").arg(found.mean)));
        QVERIFY2(found.share <= differing, qPrintable(QStringLiteral("share differing %1").arg(found.share)));
    }

    // A drawing is drawn: black lines on white, not an empty page.
    void drawingHasInk()
    {
        const LoadResult result = loadPicture(fixtures::path(QStringLiteral("DXF/testDXF_ascii.dxf")));
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        const QImage image = result.picture.image();
        QCOMPARE(qMax(image.width(), image.height()), 1024);
        qint64 dark = 0;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                dark += qGray(image.pixel(x, y)) < 128;
        QVERIFY(dark > 1000);
        QVERIFY(dark < qint64(image.width()) * image.height() / 2);
    }
};

QTEST_MAIN(TestPictureFixtures)
#include "tst_picturefixtures.moc"
