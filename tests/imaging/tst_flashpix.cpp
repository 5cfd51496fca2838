#include "core/platform/imaging/PictureLayer.h"

#include "FlashPixSamples.h"
#include "TestDir.h"

#include <QTest>

#include <cmath>

using namespace tarnby::imaging;

namespace {

using namespace fpxsample;

// Soft colours with a gradient, and an opacity that runs across the picture.
QImage picture(QSize size, bool opacity)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y) {
        for (int x = 0; x < size.width(); ++x) {
            const int alpha = opacity ? 255 - 200 * x / size.width() : 255;
            image.setPixel(x, y, qRgba(40 + 150 * x / size.width(), 200 - 120 * y / size.height(),
                                       (x / 16 + y / 16) % 2 ? 180 : 60, alpha));
        }
    }
    return image;
}

// Each tile in one colour, as single-colour tiles can only hold.
QImage tileColours(QSize size)
{
    QImage image(size, QImage::Format_ARGB32);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width(); ++x)
            image.setPixel(x, y, qRgb(30 + 90 * (x / Tile), 220 - 80 * (y / Tile), 120));
    return image;
}

double meanDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return 255;
    const QImage x = a.convertToFormat(QImage::Format_ARGB32);
    const QImage y = b.convertToFormat(QImage::Format_ARGB32);
    double sum = 0;
    for (int row = 0; row < x.height(); ++row) {
        for (int col = 0; col < x.width(); ++col) {
            const QRgb p = x.pixel(col, row), q = y.pixel(col, row);
            sum += std::abs(qRed(p) - qRed(q)) + std::abs(qGreen(p) - qGreen(q)) + std::abs(qBlue(p) - qBlue(q))
                   + std::abs(qAlpha(p) - qAlpha(q));
        }
    }
    return sum / (4.0 * x.width() * x.height());
}

} // namespace

// FlashPix files of every channel layout and tile kind the reader takes, and
// damaged ones that it must refuse with a message.
class TestFlashPix : public QObject
{
    Q_OBJECT
private slots:
    void readsWhatWasWritten_data();
    void readsWhatWasWritten();
    void damagedFilesFail_data();
    void damagedFilesFail();
};

void TestFlashPix::readsWhatWasWritten_data()
{
    QTest::addColumn<Channels>("channels");
    QTest::addColumn<Tiles>("tiles");
    QTest::addColumn<QSize>("size");
    QTest::addColumn<double>("tolerance"); // mean difference per channel, of 255
    QTest::addColumn<int>("depth");

    const QSize odd(150, 100); // tiles of 64 leave a strip at the right and bottom
    QTest::newRow("grey, uncompressed") << Channels::Grey << Tiles::Uncompressed << odd << 0.0 << 8;
    QTest::newRow("grey with opacity, uncompressed") << Channels::GreyOpacity << Tiles::Uncompressed << odd << 0.0 << 32;
    QTest::newRow("RGB, uncompressed") << Channels::Rgb << Tiles::Uncompressed << odd << 0.0 << 24;
    QTest::newRow("RGB with opacity, uncompressed") << Channels::RgbOpacity << Tiles::Uncompressed << odd << 0.0 << 32;
    QTest::newRow("RGB premultiplied by opacity") << Channels::RgbPremultiplied << Tiles::Uncompressed << odd << 1.0
                                                  << 32;
    QTest::newRow("PhotoYCC, uncompressed") << Channels::PhotoYcc << Tiles::Uncompressed << odd << 1.0 << 24;
    QTest::newRow("PhotoYCC with opacity, uncompressed")
        << Channels::PhotoYccOpacity << Tiles::Uncompressed << odd << 1.0 << 32;
    QTest::newRow("PhotoYCC, exactly two tiles") << Channels::PhotoYcc << Tiles::Uncompressed << QSize(128, 64)
                                                 << 1.0 << 24;
    QTest::newRow("PhotoYCC, narrower than a tile") << Channels::PhotoYcc << Tiles::Uncompressed << QSize(5, 3)
                                                    << 1.0 << 24;
    QTest::newRow("RGB, single-colour tiles") << Channels::Rgb << Tiles::SingleColour << odd << 0.0 << 24;
    QTest::newRow("PhotoYCC, single-colour tiles") << Channels::PhotoYcc << Tiles::SingleColour << odd << 1.0 << 24;
    QTest::newRow("grey, single-colour tiles") << Channels::Grey << Tiles::SingleColour << odd << 0.0 << 8;
    QTest::newRow("RGB, JPEG tiles") << Channels::Rgb << Tiles::Jpeg << odd << 3.0 << 24;
    QTest::newRow("RGB, JPEG tiles not converted by the coder")
        << Channels::Rgb << Tiles::JpegUnconverted << odd << 3.0 << 24;
    QTest::newRow("PhotoYCC, JPEG tiles") << Channels::PhotoYcc << Tiles::Jpeg << odd << 3.0 << 24;
    QTest::newRow("grey, JPEG tiles") << Channels::Grey << Tiles::Jpeg << odd << 3.0 << 8;
}

void TestFlashPix::readsWhatWasWritten()
{
    QFETCH(Channels, channels);
    QFETCH(Tiles, tiles);
    QFETCH(QSize, size);
    QFETCH(double, tolerance);
    QFETCH(int, depth);
    const bool opacity = bandsOf(channels) % 2 == 0;
    QImage source = tiles == Tiles::SingleColour ? tileColours(size) : picture(size, opacity);
    if (channels == Channels::Grey || channels == Channels::GreyOpacity) {
        // Grey as the file holds it, with its opacity.
        for (int y = 0; y < size.height(); ++y)
            for (int x = 0; x < size.width(); ++x) {
                const QRgb c = source.pixel(x, y);
                source.setPixel(x, y, qRgba(qGray(c), qGray(c), qGray(c), qAlpha(c)));
            }
    }
    TestDir dir;
    const QString path = dir.createFile("written.fpx", flashPix(source, channels, tiles, Damage::None));
    const LoadResult loaded = loadPicture(path);
    QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
    const QImage image = loaded.picture.image().convertToFormat(
        loaded.picture.image().hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);
    QCOMPARE(image.size(), size);
    QCOMPARE(image.hasAlphaChannel(), opacity);
    QCOMPARE(loaded.picture.info.bitsPerPixel, depth);
    const double difference = meanDifference(image, source);
    QVERIFY2(difference <= tolerance, qPrintable(QString::number(difference)));
    // The last pixel lies in the edge tiles' strip, which has its own row length.
    const QRgb last = image.pixel(size.width() - 1, size.height() - 1);
    const QRgb expected = source.pixel(size.width() - 1, size.height() - 1);
    QVERIFY2(std::abs(qRed(last) - qRed(expected)) <= 6 && std::abs(qGreen(last) - qGreen(expected)) <= 6
                 && std::abs(qBlue(last) - qBlue(expected)) <= 6,
             qPrintable(QStringLiteral("%1 %2").arg(last, 8, 16).arg(expected, 8, 16)));
}

void TestFlashPix::damagedFilesFail_data()
{
    QTest::addColumn<Channels>("channels");
    QTest::addColumn<Damage>("damage");

    QTest::newRow("tile outside the data") << Channels::PhotoYcc << Damage::TileOutsideData;
    QTest::newRow("tile shorter than its pixels") << Channels::PhotoYccOpacity << Damage::TileShorterThanItsPixels;
    QTest::newRow("unknown compression") << Channels::Rgb << Damage::UnknownCompression;
    QTest::newRow("tile table of another size") << Channels::PhotoYcc << Damage::TileTableOfAnotherSize;
    QTest::newRow("tile table cut short") << Channels::Rgb << Damage::TileTableCut;
    QTest::newRow("no tile data") << Channels::PhotoYcc << Damage::NoTileData;
    QTest::newRow("opacity not the last channel") << Channels::PhotoYccOpacity << Damage::OpacityNotLast;
    QTest::newRow("five bands") << Channels::FiveBands << Damage::None;
    QTest::newRow("container cut in half") << Channels::PhotoYcc << Damage::ContainerCut;
}

void TestFlashPix::damagedFilesFail()
{
    QFETCH(Channels, channels);
    QFETCH(Damage, damage);
    TestDir dir;
    const QString path = dir.createFile(
        "damaged.fpx", flashPix(picture(QSize(150, 100), bandsOf(channels) % 2 == 0), channels, Tiles::Uncompressed, damage));
    const LoadResult loaded = loadPicture(path);
    QVERIFY(!loaded.ok());
    QVERIFY(!loaded.errorString.isEmpty());
}

QTEST_GUILESS_MAIN(TestFlashPix)
#include "tst_flashpix.moc"
