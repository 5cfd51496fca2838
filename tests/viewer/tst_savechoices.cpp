#include "core/viewer/SaveChoices.h"

#include "TestDir.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QBuffer>
#include <QImageWriter>
#include <QTest>

using namespace tarnby;
using namespace tarnby::viewer;

namespace {

// A colour picture with many colours, as a photograph would have.
imaging::Picture colourPicture()
{
    QImage image(48, 32, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y) {
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 5, y * 7, (x * y) % 256));
    }
    imaging::Picture picture;
    picture.frames << imaging::PictureFrame{image, 0};
    picture.info.bitsPerPixel = 24;
    picture.info.width = image.width();
    picture.info.height = image.height();
    return picture;
}

QByteArray jpegAt(int quality)
{
    QByteArray bytes;
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.write(colourPicture().image());
    return bytes;
}

} // namespace

class TestSaveChoices : public QObject
{
    Q_OBJECT
private slots:
    void everyWriterIsListed();
    void offeredDepthsReadBack_data();
    void offeredDepthsReadBack();
    void presetDepth_data();
    void presetDepth();
    void jpegQualityReadBack_data();
    void jpegQualityReadBack();
    void jpegQualityOfOtherData_data();
    void jpegQualityOfOtherData();
    void choicesForAFile();
};

void TestSaveChoices::everyWriterIsListed()
{
    // A format that gains or loses a writer must be tried and listed again.
    for (const imaging::PictureFormat &format : imaging::pictureFormats()) {
        const QString extension = QLatin1String(format.extension);
        QCOMPARE(writableDepths(extension).isEmpty(), !imaging::canWrite(format));
    }
    QVERIFY(writableDepths(QStringLiteral("txt")).isEmpty());
    QCOMPARE(writableDepths(QStringLiteral("bmp")), (QList<int>{1, 4, 8, 24}));
}

void TestSaveChoices::offeredDepthsReadBack_data()
{
    QTest::addColumn<QString>("extension");
    QTest::addColumn<int>("depth");
    for (const imaging::PictureFormat &format : imaging::pictureFormats()) {
        const QString extension = QLatin1String(format.extension);
        for (int depth : writableDepths(extension))
            QTest::addRow("%s at %d bits", format.extension, depth) << extension << depth;
    }
}

void TestSaveChoices::offeredDepthsReadBack()
{
    QFETCH(QString, extension);
    QFETCH(int, depth);
    TestDir dir;
    const QString path = dir.filePath(QStringLiteral("saved.") + extension.toLower());
    const int code = catalogue::GetSaveFormatCode(extension);
    const imaging::SaveResult saved = imaging::savePicture(colourPicture(), path, code, depth, 0);
    QVERIFY2(saved.ok, qPrintable(saved.errorString));
    const imaging::LoadResult loaded = imaging::loadPicture(path);
    QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
    QCOMPARE(loaded.picture.info.bitsPerPixel, depth);
}

void TestSaveChoices::presetDepth_data()
{
    QTest::addColumn<QList<int>>("depths");
    QTest::addColumn<int>("pictureBits");
    QTest::addColumn<int>("preset");
    QTest::newRow("own depth offered") << QList<int>{1, 4, 8, 24} << 8 << 8;
    QTest::newRow("between two offered takes the next above") << QList<int>{1, 8, 24, 32} << 4 << 8;
    QTest::newRow("above every offered takes the largest") << QList<int>{1, 4, 8} << 24 << 8;
    QTest::newRow("unknown depth takes the smallest") << QList<int>{8, 24} << 0 << 8;
    QTest::newRow("nothing offered") << QList<int>{} << 24 << 0;
}

void TestSaveChoices::presetDepth()
{
    QFETCH(QList<int>, depths);
    QFETCH(int, pictureBits);
    QFETCH(int, preset);
    QCOMPARE(viewer::presetDepth(depths, pictureBits), preset);
}

void TestSaveChoices::jpegQualityReadBack_data()
{
    QTest::addColumn<int>("quality");
    for (int q : {1, 5, 20, 40, 50, 60, 75, 90, 98, 100})
        QTest::addRow("quality %d", q) << q;
}

void TestSaveChoices::jpegQualityReadBack()
{
    QFETCH(int, quality);
    const int estimate = jpegQuality(jpegAt(quality));
    QVERIFY2(std::abs(estimate - quality) <= 1, qPrintable(QString::number(estimate)));
}

void TestSaveChoices::jpegQualityOfOtherData_data()
{
    QTest::addColumn<QByteArray>("data");
    const QByteArray jpeg = jpegAt(80);
    const qsizetype table = jpeg.indexOf(QByteArray("\xFF\xDB", 2));
    QTest::newRow("empty") << QByteArray();
    QTest::newRow("PNG signature") << QByteArray("\x89PNG\r\n\x1a\n", 8);
    QTest::newRow("start of image only") << QByteArray("\xFF\xD8", 2);
    QTest::newRow("cut inside the table") << jpeg.left(table + 10);
    QTest::newRow("segment length past the end") << QByteArray("\xFF\xD8\xFF\xDB\xFF\xFF\x00", 7);
    QTest::newRow("segment length below two") << QByteArray("\xFF\xD8\xFF\xE0\x00\x01\x00\x00", 8);
    QTest::newRow("image data before any table") << QByteArray("\xFF\xD8\xFF\xDA\x00\x02\xFF\xD9", 8);
    QTest::newRow("junk after the start") << QByteArray("\xFF\xD8junkjunkjunk", 14);
}

void TestSaveChoices::jpegQualityOfOtherData()
{
    QFETCH(QByteArray, data);
    QCOMPARE(jpegQuality(data), 0);
}

void TestSaveChoices::choicesForAFile()
{
    TestDir dir;
    const QString photo = dir.createFile("photo.jpg", jpegAt(35));
    const PictureSaveChoices jpeg = saveChoicesFor(QStringLiteral("JPG"), 24, photo);
    QCOMPARE(jpeg.depths, (QList<int>{8, 24}));
    QCOMPARE(jpeg.depth, 24);
    QVERIFY(jpeg.hasQuality);
    QVERIFY(std::abs(jpeg.quality - 35) <= 1);
    // Without a JPEG to read it from, the usual default.
    QCOMPARE(saveChoicesFor(QStringLiteral("JPG"), 24, QStringLiteral("http://example.com/a.jpg")).quality,
             DefaultJpegQuality);
    const PictureSaveChoices png = saveChoicesFor(QStringLiteral("png"), 4, dir.filePath("x.png"));
    QCOMPARE(png.depth, 8);
    QVERIFY(!png.hasQuality);
    QCOMPARE(png.quality, 0);
}

QTEST_GUILESS_MAIN(TestSaveChoices)
#include "tst_savechoices.moc"
