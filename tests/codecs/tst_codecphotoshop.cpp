#include "CodecSamples.h"
#include "CodecTestUtil.h"
#include "Fixtures.h"

#include "core/platform/imaging/codecs/PsdHandler.h"

#include <QBuffer>
#include <QFile>
#include <QtEndian>
#include <QtTest>

#include <cstring>

using tarnby::imaging::codecs::PsdHandler;

// The Photoshop reader: merged pictures of the single-channel colour modes,
// raw and PackBits, built here from the format's layout; the indexed sample
// of the corpus; and damaged files, which must fail with a message.
namespace {

using codecsamples::be16;
using codecsamples::be32;

QImage indexedPicture(int width, int height, int colours)
{
    // Long flat stretches give runs longer than one PackBits packet.
    return codecsamples::indexedPicture(width, height, colours,
                                        [width](int x, int y) { return x < width / 2 ? y : x * 7 + y; });
}

QImage greyPicture(int width, int height, QImage::Format format)
{
    QImage image(width, height, format);
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            if (format == QImage::Format_Grayscale16)
                reinterpret_cast<quint16 *>(image.scanLine(y))[x] = quint16(x * 2311 + y * 977);
            else
                image.scanLine(y)[x] = uchar(x * 9 + y * 5);
        }
    }
    return image;
}

QImage bitmapPicture(int width, int height)
{
    QImage image(width, height, QImage::Format_Mono);
    image.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, (x + y) % 3 == 0 || x > width - 3 ? 1 : 0);
    return image;
}

bool samePixels(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return false;
    if (a.format() == QImage::Format_Grayscale16 || b.format() == QImage::Format_Grayscale16) {
        const QImage ga = a.convertToFormat(QImage::Format_Grayscale16);
        const QImage gb = b.convertToFormat(QImage::Format_Grayscale16);
        for (int y = 0; y < ga.height(); ++y) {
            if (std::memcmp(ga.constScanLine(y), gb.constScanLine(y), size_t(ga.width()) * 2) != 0)
                return false;
        }
        return true;
    }
    return codectest::maxChannelDifference(a, b) == 0;
}

// A Photoshop file with empty colour, resource and layer sections around the
// given header fields and merged-picture bytes.
QByteArray bareFile(quint16 version, quint16 channels, quint32 height, quint32 width, quint16 depth, quint16 mode,
                    const QByteArray &picture)
{
    QByteArray out("8BPS");
    be16(out, version);
    out.append(6, '\0');
    be16(out, channels);
    be32(out, height);
    be32(out, width);
    be16(out, depth);
    be16(out, mode);
    be32(out, 0); // colour data
    be32(out, 0); // resources
    be32(out, 0); // layers
    if (version == 2)
        be32(out, 0);
    return out + picture;
}

QByteArray packBitsPicture(quint16 rowCount, const QByteArray &row)
{
    QByteArray out;
    be16(out, 1);
    be16(out, rowCount);
    return out + row;
}

} // namespace

class TestCodecPhotoshop : public QObject
{
    Q_OBJECT

private slots:
    void builtPictures_data()
    {
        QTest::addColumn<QImage>("picture");
        QTest::addColumn<bool>("packBits");
        QTest::addColumn<int>("extraChannels");
        QTest::addColumn<bool>("largeDocument");
        QTest::addColumn<QByteArray>("layers");
        QTest::addColumn<int>("bits");

        const QImage indexed = indexedPicture(300, 9, 200);
        QTest::newRow("indexed raw") << indexed << false << 0 << false << QByteArray() << 8;
        QTest::newRow("indexed packbits, runs over 128") << indexed << true << 0 << false << QByteArray() << 8;
        QTest::newRow("grey 8 packbits") << greyPicture(37, 11, QImage::Format_Grayscale8) << true << 0 << false
                                         << QByteArray() << 8;
        QTest::newRow("grey 16 raw") << greyPicture(29, 5, QImage::Format_Grayscale16) << false << 0 << false
                                     << QByteArray() << 16;
        QTest::newRow("grey 16 packbits") << greyPicture(29, 5, QImage::Format_Grayscale16) << true << 0 << false
                                          << QByteArray() << 16;
        QTest::newRow("bitmap raw, partial last byte") << bitmapPicture(13, 6) << false << 0 << false << QByteArray()
                                                       << 1;
        QTest::newRow("bitmap packbits") << bitmapPicture(61, 4) << true << 0 << false << QByteArray() << 1;
        QTest::newRow("alpha and spot planes skipped, packed") << indexedPicture(17, 6, 16) << true << 2 << false
                                                               << QByteArray() << 8;
        QTest::newRow("alpha plane skipped, raw") << greyPicture(17, 6, QImage::Format_Grayscale8) << false << 1 << false
                                                  << QByteArray() << 8;
        QTest::newRow("large document packbits") << indexedPicture(40, 7, 256) << true << 1 << true << QByteArray() << 8;
        QTest::newRow("layer section skipped") << greyPicture(12, 12, QImage::Format_Grayscale8) << true << 0 << false
                                               << QByteArray(1001, '\x5a') << 8;
    }
    void builtPictures()
    {
        QFETCH(QImage, picture);
        QFETCH(bool, packBits);
        QFETCH(int, extraChannels);
        QFETCH(bool, largeDocument);
        QFETCH(QByteArray, layers);
        QFETCH(int, bits);
        QByteArray file = codecsamples::psd(picture, {.packBits = packBits, .extraChannels = extraChannels,
                                                      .largeDocument = largeDocument, .dotsPerInch = 150,
                                                      .layers = layers});

        QBuffer buffer(&file);
        buffer.open(QIODevice::ReadOnly);
        QVERIFY(PsdHandler::canRead(&buffer));
        QCOMPARE(buffer.pos(), 0);

        const codectest::Decoded decoded = codectest::decode("psd", file);
        QVERIFY2(decoded.ok(), qPrintable(decoded.error));
        QCOMPARE(decoded.frames.size(), 1);
        const QImage image = decoded.frames.constFirst();
        QVERIFY(samePixels(image, picture));
        QCOMPARE(image.text(QStringLiteral("BitsPerPixel")).toInt(), bits);
        QCOMPARE(qRound(image.dotsPerMeterX() * 0.0254), 150);
        QCOMPARE(qRound(image.dotsPerMeterY() * 0.0254), 150);
    }

    // The transparent index resource makes that colour transparent, and only it.
    void transparentIndex()
    {
        const QImage picture = indexedPicture(20, 4, 8);
        codecsamples::PsdOptions options;
        options.transparentIndex = 3;
        const codectest::Decoded decoded = codectest::decode("psd", codecsamples::psd(picture, options));
        QVERIFY2(decoded.ok(), qPrintable(decoded.error));
        const QImage image = decoded.frames.constFirst();
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const bool transparent = picture.pixelIndex(x, y) == 3;
                QCOMPARE(qAlpha(image.pixel(x, y)) == 0, transparent);
            }
        }
    }

    // The corpus's 300x300 indexed file. The pixels named below were worked
    // out from the file's bytes by hand: row 0 is packed as 81 FF 81 FF D5 FF
    // (128 + 128 + 44 bytes of index 255), and index 255 is the transparent
    // index of its resources.
    void indexedSample()
    {
        REQUIRE_FIXTURES();
        const QString path = fixtures::path(QStringLiteral("PSD/indexed.psd"));
        QFile file(path);
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QByteArray bytes = file.readAll();
        const codectest::Decoded decoded = codectest::decodeFile("psd", path);
        QVERIFY2(decoded.ok(), qPrintable(decoded.error));
        const QImage image = decoded.frames.constFirst();
        QCOMPARE(image.size(), QSize(300, 300));
        QCOMPARE(image.format(), QImage::Format_Indexed8);
        QCOMPARE(image.text(QStringLiteral("BitsPerPixel")).toInt(), 8);
        QCOMPARE(qRound(image.dotsPerMeterX() * 0.0254), 120);

        // The colour table is the file's 768 bytes after the 26-byte header
        // and the section length: reds, then greens, then blues.
        QCOMPARE(image.colorCount(), 256);
        const auto *table = reinterpret_cast<const uchar *>(bytes.constData() + 30);
        for (int i = 0; i < 255; ++i)
            QCOMPARE(image.color(i), qRgb(table[i], table[256 + i], table[512 + i]));
        QCOMPARE(image.color(255) & 0xFFFFFF, qRgb(table[255], table[511], table[767]) & 0xFFFFFF);
        QCOMPARE(qAlpha(image.color(255)), 0);

        for (int x = 0; x < 300; ++x)
            QCOMPARE(image.pixelIndex(x, 0), 255);
        QCOMPARE(image.pixelIndex(150, 150), 1);
        QCOMPARE(image.pixelIndex(100, 100), 2);
        QCOMPARE(image.pixel(100, 100), qRgb(0x31, 0x10, 0x00));
        QCOMPARE(image.pixelIndex(200, 120), 3);
        QCOMPARE(image.pixel(200, 120), qRgb(0xff, 0xff, 0x00));
        QCOMPARE(image.pixelIndex(17, 203), 54);
        QCOMPARE(image.pixel(17, 203), qRgb(0xe4, 0x04, 0xb4));
    }

    void damaged_data()
    {
        QTest::addColumn<QByteArray>("file");
        QTest::addColumn<QString>("says");

        codecsamples::PsdOptions packed;
        const QByteArray good = codecsamples::psd(indexedPicture(30, 10, 64), packed);
        codecsamples::PsdOptions rawOptions;
        rawOptions.packBits = false;
        const QByteArray raw = codecsamples::psd(greyPicture(30, 10, QImage::Format_Grayscale8), rawOptions);

        QTest::newRow("truncated header") << good.left(20) << "shorter than its header";
        QTest::newRow("truncated colour table") << good.left(26 + 4 + 100) << "colour";
        QByteArray longColours = good;
        longColours[26] = '\x7f';
        QTest::newRow("colour data longer than the file") << longColours << "past the end";
        QTest::newRow("truncated resources") << good.left(26 + 4 + 768 + 4 + 10) << "resources";
        // The merged picture follows the colour table, the resources and the
        // (empty) layer section: a compression word, then the row table.
        const qsizetype resources = qFromBigEndian<quint32>(good.constData() + 26 + 4 + 768);
        const qsizetype rowTable = 26 + 4 + 768 + 4 + resources + 4 + 2;
        QTest::newRow("truncated row table") << good.left(rowTable + 5) << "truncated";
        QTest::newRow("truncated last packed row") << good.chopped(3) << "truncated";
        QTest::newRow("truncated raw rows") << raw.chopped(1) << "truncated";
        QTest::newRow("absurd size in a small file")
            << bareFile(1, 1, 30000, 30000, 8, 1, packBitsPicture(2, QByteArray("\x00\x00", 2))) << "truncated";
        QTest::newRow("large document absurd size")
            << bareFile(2, 1, 300000, 300000, 8, 1, QByteArray("\x00\x00", 2)) << "truncated";
        QTest::newRow("side over the limit") << bareFile(1, 1, 10, 30001, 8, 1, {}) << "damaged";
        QTest::newRow("zero width") << bareFile(1, 1, 10, 0, 8, 1, {}) << "damaged";
        QTest::newRow("no channels") << bareFile(1, 0, 10, 10, 8, 1, {}) << "damaged";
        QTest::newRow("bad depth 7") << bareFile(1, 1, 4, 4, 7, 1, QByteArray(18, '\0')) << "damaged";
        QTest::newRow("indexed without colour table") << bareFile(1, 1, 4, 4, 8, 2, QByteArray(18, '\0'))
                                                      << "no colour table";
        QTest::newRow("zip compressed") << bareFile(1, 1, 4, 4, 8, 1, QByteArray("\x00\x02", 2) + QByteArray(20, '\0'))
                                        << "ZIP";
        QTest::newRow("unknown compression") << bareFile(1, 1, 4, 4, 8, 1, QByteArray("\x00\x09", 2)) << "compression";
        QTest::newRow("no merged picture") << bareFile(1, 1, 4, 4, 8, 1, {}) << "no merged picture";
        // A 4-pixel row: FC repeats its byte five times.
        QTest::newRow("run past the row") << bareFile(1, 1, 1, 4, 8, 1, packBitsPicture(2, QByteArray("\xfc\x11", 2)))
                                          << "damaged row";
        QTest::newRow("literal past the row")
            << bareFile(1, 1, 1, 4, 8, 1, packBitsPicture(6, QByteArray("\x04\x01\x02\x03\x04\x05", 6)))
            << "damaged row";
        QTest::newRow("row packed short") << bareFile(1, 1, 1, 4, 8, 1, packBitsPicture(2, QByteArray("\xfe\x11", 2)))
                                          << "damaged row";
        QTest::newRow("row count beyond any packing")
            << bareFile(1, 1, 1, 4, 8, 1, packBitsPicture(60000, QByteArray(8, '\0'))) << "row table";
    }
    void damaged()
    {
        QFETCH(QByteArray, file);
        QFETCH(QString, says);
        const codectest::Decoded decoded = codectest::decode("psd", file);
        QVERIFY(!decoded.ok());
        QVERIFY2(decoded.error.contains(says, Qt::CaseInsensitive), qPrintable(decoded.error));
    }

    // Files of the modes this reader leaves to ImageMagick are not claimed,
    // and reading one anyway says why.
    void otherModesNotClaimed_data()
    {
        QTest::addColumn<quint16>("mode");
        QTest::addColumn<quint16>("depth");
        QTest::newRow("rgb") << quint16(3) << quint16(8);
        QTest::newRow("cmyk") << quint16(4) << quint16(8);
        QTest::newRow("lab") << quint16(9) << quint16(8);
        QTest::newRow("duotone") << quint16(8) << quint16(8);
        QTest::newRow("grey 32-bit") << quint16(1) << quint16(32);
        QTest::newRow("indexed 16-bit") << quint16(2) << quint16(16);
        QTest::newRow("bitmap 8-bit") << quint16(0) << quint16(8);
    }
    void otherModesNotClaimed()
    {
        QFETCH(quint16, mode);
        QFETCH(quint16, depth);
        QByteArray file = bareFile(1, 3, 4, 4, depth, mode, QByteArray("\x00\x00", 2) + QByteArray(200, '\0'));
        QBuffer buffer(&file);
        buffer.open(QIODevice::ReadOnly);
        QVERIFY(!PsdHandler::canRead(&buffer));
        const codectest::Decoded decoded = codectest::decode("psd", file);
        QVERIFY(!decoded.ok());
        QVERIFY2(decoded.error.contains(QLatin1String("not read here")), qPrintable(decoded.error));
    }
};

QTEST_GUILESS_MAIN(TestCodecPhotoshop)
#include "tst_codecphotoshop.moc"
