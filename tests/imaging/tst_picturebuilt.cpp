#include "CodecSamples.h"
#include "CodecTestUtil.h"
#include "Fixtures.h"
#include "TestDir.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QBuffer>
#include <QColorSpace>
#include <QImageReader>
#include <QImageWriter>
#include <QTest>

#include <algorithm>
#include <functional>

using namespace tarnby::imaging;

// Files of the formats the corpus has no (or no odd enough) sample of, built
// here byte by byte from the formats' layouts and read through the picture
// layer: TIFF files that leave out tags, DICOM and WordPerfect graphics. Each
// kind also comes cut short, which must fail with a message.
namespace {

using codecsamples::le16;
using codecsamples::le32;

// ---- TIFF ---------------------------------------------------------------

struct TiffTag {
    quint16 tag;
    quint16 type; // 3 SHORT, 4 LONG
    quint32 value;
};

enum TiffTagId : quint16 {
    ImageWidth = 256,
    ImageLength = 257,
    BitsPerSample = 258,
    Photometric = 262,
    StripOffsets = 273,
    SamplesPerPixel = 277,
    RowsPerStrip = 278,
    StripByteCounts = 279,
};

struct TiffPage {
    QList<TiffTag> tags; // StripOffsets is added, pointing at pixels
    QByteArray pixels;
};

// A little-endian TIFF: each page's pixels, then its directory; directories
// are chained in order. loopBack makes the last directory point at the first.
QByteArray tiffFile(const QList<TiffPage> &pages, bool loopBack = false)
{
    QByteArray out("II*\0", 4);
    le32(out, 0); // first directory, patched below
    qsizetype linkAt = 4;
    quint32 firstDirectory = 0;
    for (const TiffPage &page : pages) {
        const quint32 pixelsAt = quint32(out.size());
        out.append(page.pixels);
        if (out.size() % 2)
            out.append('\0');
        QList<TiffTag> tags = page.tags;
        if (std::none_of(tags.cbegin(), tags.cend(), [](const TiffTag &t) { return t.tag == StripOffsets; }))
            tags.append({StripOffsets, 4, pixelsAt});
        std::sort(tags.begin(), tags.end(), [](const TiffTag &a, const TiffTag &b) { return a.tag < b.tag; });
        const quint32 directoryAt = quint32(out.size());
        if (!firstDirectory)
            firstDirectory = directoryAt;
        for (int i = 0; i < 4; ++i)
            out[linkAt + i] = char((directoryAt >> (8 * i)) & 0xff);
        le16(out, quint32(tags.size()));
        for (const TiffTag &t : tags) {
            le16(out, t.tag);
            le16(out, t.type);
            le32(out, 1);
            if (t.type == 3) {
                le16(out, t.value);
                le16(out, 0);
            } else {
                le32(out, t.value);
            }
        }
        linkAt = out.size();
        le32(out, 0);
    }
    if (loopBack) {
        for (int i = 0; i < 4; ++i)
            out[linkAt + i] = char((firstDirectory >> (8 * i)) & 0xff);
    }
    return out;
}

TiffPage tiffPage(quint32 width, quint32 height, quint16 bits, quint16 samples, int photometric, const QByteArray &pixels)
{
    TiffPage page;
    page.tags = {{ImageWidth, 3, width}, {ImageLength, 3, height}, {BitsPerSample, 3, bits}};
    if (samples != 1)
        page.tags.append({SamplesPerPixel, 3, samples});
    if (photometric >= 0)
        page.tags.append({Photometric, 3, quint32(photometric)});
    page.pixels = pixels;
    return page; // no StripByteCounts, no RowsPerStrip: one strip whose length libtiff works out
}

QImage greyRows(int width, int height, const QList<int> &levels)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x) {
            const int v = levels.at(y * width + x);
            image.setPixel(x, y, qRgb(v, v, v));
        }
    return image;
}

// ---- WordPerfect graphics -------------------------------------------------

// The 16-byte header: "\xFFWPC", where the data starts, product 1 and file
// type 0x16 (a graphic), the major version (1 or 2, the level) and the minor
// one, a zero encryption key and two reserved bytes.
QByteArray wpgHeader(int level)
{
    QByteArray out("\xFFWPC", 4);
    le32(out, 16);
    out.append(char(1)).append(char(0x16)).append(char(level)).append(char(0));
    le16(out, 0); // not encrypted
    le16(out, 0);
    return out;
}

// Record lengths: one byte below 0xFF, else 0xFF and a 16-bit length (a
// longer form exists for lengths of 32 KiB and more).
void wpgLength(QByteArray &out, quint32 length)
{
    if (length < 0xFF) {
        out.append(char(length));
    } else if (length < 0x8000) {
        out.append(char(0xFF));
        le16(out, length);
    } else {
        out.append(char(0xFF));
        le16(out, 0x8000 | (length >> 16));
        le16(out, length & 0xffff);
    }
}

void wpg1Record(QByteArray &out, quint8 type, const QByteArray &data)
{
    out.append(char(type));
    wpgLength(out, quint32(data.size()));
    out.append(data);
}

// Level 1 run-length rows: a row equal to the one before is a repeat-row
// code (00, count); otherwise runs of three or more equal bytes become
// (80 | count, byte) and the rest literal runs (count, bytes).
QByteArray wpg1Rows(const QList<QByteArray> &rows)
{
    QByteArray out;
    for (int y = 0; y < rows.size(); ++y) {
        const QByteArray &row = rows.at(y);
        if (y > 0 && row == rows.at(y - 1)) {
            out.append(char(0)).append(char(1));
            continue;
        }
        qsizetype i = 0;
        while (i < row.size()) {
            qsizetype run = 1;
            while (i + run < row.size() && run < 127 && row[i + run] == row[i])
                ++run;
            if (run >= 3) {
                out.append(char(0x80 | run)).append(row[i]);
                i += run;
                continue;
            }
            const qsizetype start = i;
            while (i < row.size() && i - start < 127
                   && !(i + 2 < row.size() && row[i] == row[i + 1] && row[i] == row[i + 2]))
                ++i;
            out.append(char(i - start)).append(row.sliced(start, i - start));
        }
    }
    return out;
}

// Pixel rows of an indexed picture at bits per pixel, most significant first.
QList<QByteArray> packedRows(const QImage &indexed, int bits)
{
    QList<QByteArray> rows;
    const int rowBytes = (indexed.width() * bits + 7) / 8;
    for (int y = 0; y < indexed.height(); ++y) {
        QByteArray row(rowBytes, '\0');
        for (int x = 0; x < indexed.width(); ++x) {
            const int shift = 8 - bits - (x * bits) % 8;
            row[x * bits / 8] = char(uchar(row[x * bits / 8]) | (indexed.pixelIndex(x, y) << shift));
        }
        rows.append(row);
    }
    return rows;
}

QImage indexedPicture(int width, int height, int colours)
{
    // Row 2 repeats row 1; the left part is flat for the runs.
    return codecsamples::indexedPicture(width, height, colours,
                                        [](int x, int y) { return x < 5 ? 0 : x * 3 + (y == 2 ? 1 : y); });
}

QByteArray wpg1File(const QImage &indexed, int bits)
{
    QByteArray out = wpgHeader(1);
    QByteArray start;
    start.append(char(1)).append(char(0));
    le16(start, quint32(indexed.width() * 1200 / 75));
    le16(start, quint32(indexed.height() * 1200 / 75));
    wpg1Record(out, 0x0F, start);
    QByteArray colours;
    le16(colours, 0);
    le16(colours, quint32(indexed.colorCount()));
    for (QRgb c : indexed.colorTable())
        colours.append(char(qRed(c))).append(char(qGreen(c))).append(char(qBlue(c)));
    wpg1Record(out, 0x0E, colours);
    QByteArray bitmap;
    le16(bitmap, quint32(indexed.width()));
    le16(bitmap, quint32(indexed.height()));
    le16(bitmap, quint32(bits));
    le16(bitmap, 75);
    le16(bitmap, 75);
    bitmap.append(wpg1Rows(packedRows(indexed, bits)));
    wpg1Record(out, 0x0B, bitmap);
    wpg1Record(out, 0x10, {});
    return out;
}

// Level 2 records: class, type, extension length, length. A start record
// (units per inch, precision), the palette as RGBA entries, then an
// uncompressed bitmap with a depth code (1: one bit, 4: eight bits).
QByteArray wpg2File(const QImage &indexed, quint8 depthCode)
{
    const auto record = [](QByteArray &out, quint8 type, const QByteArray &data) {
        out.append(char(0x0F)).append(char(type));
        wpgLength(out, 0);
        wpgLength(out, quint32(data.size()));
        out.append(data);
    };
    QByteArray out = wpgHeader(2);
    QByteArray start;
    le16(start, 1200);
    le16(start, 1200);
    start.append(char(0));
    record(out, 0x01, start);
    QByteArray colours;
    le16(colours, 0);
    le16(colours, quint32(indexed.colorCount()));
    for (QRgb c : indexed.colorTable())
        colours.append(char(qRed(c))).append(char(qGreen(c))).append(char(qBlue(c))).append(char(0));
    record(out, 0x0C, colours);
    QByteArray bitmap;
    le16(bitmap, quint32(indexed.width()));
    le16(bitmap, quint32(indexed.height()));
    bitmap.append(char(depthCode)).append(char(0)); // no compression
    for (const QByteArray &row : packedRows(indexed, depthCode == 1 ? 1 : 8))
        bitmap.append(row);
    record(out, 0x0E, bitmap);
    record(out, 0x02, {});
    return out;
}

// A JPEG as Qt writes it, from a picture with texture enough that the
// decoders' differences would show.
QByteArray jpegFile(QImage image, const std::function<void(QImage &, QImageWriter &)> &setUp = {})
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(85);
    if (setUp)
        setUp(image, writer);
    writer.write(image);
    return buffer.data();
}

QImage texture(int w, int h)
{
    QImage image(w, h, QImage::Format_RGB32);
    for (int y = 0; y < h; ++y)
        for (int x = 0; x < w; ++x)
            image.setPixel(x, y, qRgb((x * 29 + y * 3) % 256, (x * y) % 256, (y * 41) % 256));
    return image;
}

} // namespace

class TestPictureBuilt : public QObject
{
    Q_OBJECT

private slots:
    void readable_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QImage>("expected");
        QTest::addColumn<int>("bits");
        QTest::addColumn<QString>("formatName");

        // TIFF without strip byte counts, as small writers leave them out.
        // 1 bit, white is 1: F0 0F is four white then four black, and back.
        QTest::newRow("tiff 1-bit, no strip byte counts")
            << "a.tif" << tiffFile({tiffPage(8, 2, 1, 1, 1, QByteArray("\xF0\x0F", 2))})
            << greyRows(8, 2, {255, 255, 255, 255, 0, 0, 0, 0, 0, 0, 0, 0, 255, 255, 255, 255}) << 1
            << "Tagged Image File Format";
        QTest::newRow("tiff 8-bit grey, no strip byte counts")
            << "b.tif" << tiffFile({tiffPage(3, 2, 8, 1, 1, QByteArray("\x00\x40\x80\xC0\xFF\x10", 6))})
            << greyRows(3, 2, {0, 0x40, 0x80, 0xC0, 0xFF, 0x10}) << 8 << "Tagged Image File Format";
        // No photometric interpretation either: one sample is taken as grey,
        // 0 black.
        QTest::newRow("tiff grey, no photometric")
            << "c.tif" << tiffFile({tiffPage(2, 2, 8, 1, -1, QByteArray("\x00\x55\xAA\xFF", 4))})
            << greyRows(2, 2, {0, 0x55, 0xAA, 0xFF}) << 8 << "Tagged Image File Format";
        QImage rgb(2, 1, QImage::Format_RGB32);
        rgb.setPixel(0, 0, qRgb(255, 0, 10));
        rgb.setPixel(1, 0, qRgb(1, 2, 3));
        QTest::newRow("tiff rgb, no strip byte counts")
            << "d.tif" << tiffFile({tiffPage(2, 1, 8, 3, 2, QByteArray("\xFF\x00\x0A\x01\x02\x03", 6))}) << rgb << 24
            << "Tagged Image File Format";

        // DICOM: grey levels as stored (16-bit ones shown at their high byte).
        QTest::newRow("dicom 8-bit grey")
            << "scan.dic" << codecsamples::dicom(4, 2, 8, QByteArray("\x00\x20\x40\x60\x80\xA0\xC0\xFF", 8))
            << greyRows(4, 2, {0x00, 0x20, 0x40, 0x60, 0x80, 0xA0, 0xC0, 0xFF}) << 8 << "Unknown format";
        QTest::newRow("dicom 16-bit grey")
            << "scan16.dic" << codecsamples::dicom(3, 1, 16, QByteArray("\x00\x00\x80\x80\xFF\xFF", 6))
            << greyRows(3, 1, {0x00, 0x80, 0xFF}) << 16 << "Unknown format";

        const QImage eight = indexedPicture(21, 4, 256);
        QTest::newRow("wpg 1 8-bit") << "a.wpg" << wpg1File(eight, 8) << eight.convertToFormat(QImage::Format_RGB32)
                                     << 8 << "WordPerfect File Format";
        const QImage sixteen = indexedPicture(13, 4, 16);
        QTest::newRow("wpg 1 4-bit, odd width") << "b.wpg" << wpg1File(sixteen, 4)
                                                << sixteen.convertToFormat(QImage::Format_RGB32) << 4
                                                << "WordPerfect File Format";
        QImage mono = indexedPicture(19, 4, 2);
        mono.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        QTest::newRow("wpg 1 1-bit") << "c.wpg" << wpg1File(mono, 1) << mono.convertToFormat(QImage::Format_RGB32) << 1
                                     << "WordPerfect File Format";
        QTest::newRow("wpg 2 8-bit") << "d.wpg" << wpg2File(eight, 4) << eight.convertToFormat(QImage::Format_RGB32) << 8
                                     << "WordPerfect File Format";
        QTest::newRow("wpg 2 1-bit") << "e.wpg" << wpg2File(mono, 1) << mono.convertToFormat(QImage::Format_RGB32) << 1
                                     << "WordPerfect File Format";

        // Photoshop through the layer: our reader for grey (the corpus has an
        // indexed sample, no grey one).
        QImage grey(5, 3, QImage::Format_Grayscale8);
        for (int y = 0; y < 3; ++y)
            for (int x = 0; x < 5; ++x)
                grey.scanLine(y)[x] = uchar(x * 50 + y);
        QTest::newRow("psd grey") << "g.psd" << codecsamples::psd(grey, {}) << grey.convertToFormat(QImage::Format_RGB32)
                                  << 8 << "Photoshop 3.0 Format";
    }
    void readable()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(QImage, expected);
        QFETCH(int, bits);
        QFETCH(QString, formatName);
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(name, file));
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        const PictureInfo &info = result.picture.info;
        QCOMPARE(QSize(info.width, info.height), expected.size());
        QCOMPARE(info.bitsPerPixel, bits);
        QCOMPARE(tarnby::imaging::formatName(info.formatCode), formatName);
        QCOMPARE(codectest::maxChannelDifference(result.picture.image(), expected), 0);
        QList<QRgb> colours;
        for (int y = 0; y < expected.height(); ++y)
            for (int x = 0; x < expected.width(); ++x)
                if (!colours.contains(expected.pixel(x, y) & 0xFFFFFF))
                    colours.append(expected.pixel(x, y) & 0xFFFFFF);
        QCOMPARE(distinctColours(result.picture.image()), qint64(colours.size()));
    }

    // JPEG is decoded by libjpeg directly, or by Qt's reader for what that
    // road leaves; either way the picture is what Qt's reader makes of the
    // file: its pixels, format, resolution, texts and colour space.
    void jpegReadsAsQtReads_data()
    {
        QTest::addColumn<QString>("path"); // a fixture, or empty
        QTest::addColumn<QByteArray>("file");
        const QImage colour = texture(67, 43);
        QTest::newRow("no resolution") << QString() << jpegFile(colour);
        QTest::newRow("dots per inch") << QString() << jpegFile(colour, [](QImage &image, QImageWriter &) {
            image.setDotsPerMeterX(11811); // 300 dpi
            image.setDotsPerMeterY(5906);  // 150 dpi
        });
        QTest::newRow("comments, one keyed and one free") << QString() << jpegFile(colour, [](QImage &image, QImageWriter &) {
            image.setText(QStringLiteral("Author"), QStringLiteral("Ann"));
            image.setText(QStringLiteral("Some words"), QStringLiteral("with spaces: before the colon"));
        });
        QTest::newRow("icc profile") << QString() << jpegFile(colour, [](QImage &image, QImageWriter &) {
            image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
        });
        QTest::newRow("progressive") << QString() << jpegFile(colour, [](QImage &, QImageWriter &writer) {
            writer.setProgressiveScanWrite(true);
        });
        QTest::newRow("grey") << QString() << jpegFile(colour.convertToFormat(QImage::Format_Grayscale8));
        QTest::newRow("one pixel") << QString() << jpegFile(texture(1, 1));
        const QByteArray whole = jpegFile(texture(64, 256));
        QTest::newRow("cut short, left to Qt") << QString() << whole.left(whole.size() * 2 / 3);
        QByteArray corrupt = whole;
        for (qsizetype i = whole.size() / 2; i < whole.size() / 2 + 40; ++i)
            corrupt[i] = char(0xA5 ^ i);
        QTest::newRow("corrupt entropy data") << QString() << corrupt;
        if (!fixtures::root().isEmpty()) {
            for (const QString &fixture : fixtures::files(QStringLiteral("JPG")))
                QTest::newRow(qPrintable(QFileInfo(fixture).fileName())) << fixture << QByteArray();
        }
    }
    void jpegReadsAsQtReads()
    {
        QFETCH(QString, path);
        QFETCH(QByteArray, file);
        TestDir dir;
        if (path.isEmpty())
            path = dir.createFile(QStringLiteral("picture.jpg"), file);
        QImageReader reader(path, "jpeg");
        const QImage expected = reader.read();
        const LoadResult loaded = loadPicture(path);
        QCOMPARE(loaded.ok(), !expected.isNull());
        if (expected.isNull())
            return;
        const QImage image = loaded.picture.image();
        QCOMPARE(image.format(), expected.format());
        QCOMPARE(image.size(), expected.size());
        QCOMPARE(codectest::maxChannelDifference(image, expected), 0);
        QCOMPARE(image.dotsPerMeterX(), expected.dotsPerMeterX());
        QCOMPARE(image.dotsPerMeterY(), expected.dotsPerMeterY());
        QCOMPARE(image.textKeys(), expected.textKeys());
        for (const QString &key : expected.textKeys())
            QCOMPARE(image.text(key), expected.text(key));
        QCOMPARE(image.colorSpace(), expected.colorSpace());
    }

    // Every page of a TIFF without strip byte counts; a directory chain that
    // loops back ends instead of running for ever.
    void tiffPages_data()
    {
        QTest::addColumn<bool>("loopBack");
        QTest::newRow("two pages") << false;
        QTest::newRow("second page links back to the first") << true;
    }
    void tiffPages()
    {
        QFETCH(bool, loopBack);
        const QByteArray file = tiffFile({tiffPage(2, 1, 8, 1, 1, QByteArray("\x10\x20", 2)),
                                          tiffPage(3, 1, 8, 1, 1, QByteArray("\x30\x40\x50", 3))},
                                         loopBack);
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(QStringLiteral("pages.tif"), file), Pages::All);
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        QCOMPARE(result.picture.frames.size(), 2);
        QCOMPARE(result.picture.frames.at(1).image.size(), QSize(3, 1));
        QCOMPARE(qGray(result.picture.frames.at(1).image.pixel(2, 0)), 0x50);
    }

    void refused_data()
    {
        QTest::addColumn<QString>("name");
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("says"); // a part of the message; empty: any message

        const QByteArray grey = tiffFile({tiffPage(3, 2, 8, 1, 1, QByteArray("\x00\x40\x80\xC0\xFF\x10", 6))});
        QTest::newRow("tiff cut inside its directory") << "a.tif" << grey.left(grey.size() - 20) << "";
        TiffPage away = tiffPage(4, 4, 8, 1, 1, {});
        away.tags.append({StripOffsets, 4, 1u << 30});
        QTest::newRow("tiff strip beyond the end") << "b.tif" << tiffFile({away}) << "";
        QTest::newRow("tiff of absurd size") << "c.tif"
                                             << tiffFile({tiffPage(60000, 60000, 8, 1, 1, QByteArray(16, '\x7f'))})
                                             << "too large";
        TiffPage noWidth = tiffPage(1, 1, 8, 1, 1, QByteArray(2, '\0'));
        noWidth.tags.removeFirst();
        QTest::newRow("tiff without a width") << "d.tif" << tiffFile({noWidth}) << "";

        const QByteArray dicom = codecsamples::dicom(4, 2, 8, QByteArray("\x00\x20\x40\x60\x80\xA0\xC0\xFF", 8));
        QTest::newRow("dicom cut in its pixels") << "a.dic" << dicom.chopped(5) << "";
        QTest::newRow("dicom cut in its header") << "b.dic" << dicom.left(200) << "";
        QTest::newRow("dicom of absurd size") << "c.dic" << codecsamples::dicom(60000, 60000, 8, QByteArray(8, '\0')) << "";

        const QByteArray wpg = wpg1File(indexedPicture(21, 4, 256), 8);
        QTest::newRow("wpg 1 cut in its bitmap") << "a.wpg" << wpg.chopped(10) << "";
        QTest::newRow("wpg 1 header only") << "b.wpg" << wpg.left(16) << "no bitmap";
        QByteArray drawing = wpgHeader(1);
        wpg1Record(drawing, 0x0F, QByteArray(6, '\0'));
        wpg1Record(drawing, 0x05, QByteArray(10, '\x01')); // a line
        wpg1Record(drawing, 0x10, {});
        QTest::newRow("wpg 1 drawing without a bitmap") << "e.wpg" << drawing << "no bitmap";
        QByteArray encrypted = wpg;
        encrypted[12] = '\x01';
        QTest::newRow("wpg 1 encrypted") << "c.wpg" << encrypted << "password";
        const QByteArray wpg2 = wpg2File(indexedPicture(21, 4, 256), 4);
        QTest::newRow("wpg 2 cut in its bitmap") << "d.wpg" << wpg2.chopped(40) << "";
        // ImageMagick skips a bitmap of a depth it does not know and hands
        // back one black pixel; the layer must not pass that off as the picture.
        QTest::newRow("wpg 2 bitmap of an unknown depth") << "f.wpg" << wpg2File(indexedPicture(21, 4, 256), 5)
                                                          << "21 x 4";

        const QByteArray psd = codecsamples::psd(indexedPicture(21, 4, 256), {});
        QTest::newRow("psd indexed cut short") << "a.psd" << psd.chopped(3) << "Photoshop";
    }
    void refused()
    {
        QFETCH(QString, name);
        QFETCH(QByteArray, file);
        QFETCH(QString, says);
        TestDir dir;
        const LoadResult result = loadPicture(dir.createFile(name, file), Pages::All);
        QVERIFY2(!result.ok(), "a damaged file loaded");
        QVERIFY(!result.errorString.isEmpty());
        QVERIFY2(result.errorString.contains(says, Qt::CaseInsensitive), qPrintable(result.errorString));
    }
};

QTEST_MAIN(TestPictureBuilt)
#include "tst_picturebuilt.moc"
