// JPEG saving in strips on every core, and JPEG to JPEG conversion that
// decodes and encodes at once: both must give the pixels and facts of the
// plain road (Qt's writer; load, change, save).

#include "TestDir.h"

#include "core/edit/EditOperation.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QBuffer>
#include <QColorSpace>
#include <QDir>
#include <QFile>
#include <QImageReader>
#include <QImageWriter>
#include <QTest>
#include <QtConcurrent/QtConcurrentMap>

using namespace tarnby::imaging;
using namespace tarnby::edit;

namespace {

constexpr int JpegCode = 10;

// Busy enough that every block codes differently; deterministic.
QImage noisy(int width, int height, QImage::Format format)
{
    QImage image(width, height, format);
    quint32 state = 12345;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            state = state * 1664525u + 1013904223u;
            const int noise = int(state >> 27);
            const int r = (x * 255 / width + noise) & 0xFF;
            const int g = (y * 255 / height + 2 * noise) & 0xFF;
            const int b = ((x ^ y) + noise) & 0xFF;
            const int a = (x * 7 + y * 3) & 0xFF;
            if (format == QImage::Format_Grayscale8)
                image.scanLine(y)[x] = uchar(r);
            else
                reinterpret_cast<QRgb *>(image.scanLine(y))[x] = format == QImage::Format_RGB32 ? qRgb(r, g, b) : qRgba(r, g, b, a);
        }
    }
    return image;
}

// The markers before the scan, by type, with their contents.
QList<QPair<int, QByteArray>> headerSegments(const QByteArray &file)
{
    QList<QPair<int, QByteArray>> segments;
    qsizetype at = 2;
    while (at + 4 <= file.size() && uchar(file.at(at)) == 0xFF) {
        const int marker = uchar(file.at(at + 1));
        const int length = (uchar(file.at(at + 2)) << 8) | uchar(file.at(at + 3));
        segments.append({marker, file.mid(at + 4, length - 2)});
        if (marker == 0xDA)
            break;
        at += 2 + length;
    }
    return segments;
}

bool hasRestartInterval(const QByteArray &file)
{
    for (const auto &segment : headerSegments(file)) {
        if (segment.first == 0xDD)
            return true;
    }
    return false;
}

// Decoded by Qt's reader, which the layer's own writer and reader play no
// part in.
QImage decodedByQt(const QByteArray &file)
{
    QBuffer buffer;
    buffer.setData(file);
    QImageReader reader(&buffer, "jpeg");
    return reader.read();
}

QByteArray writtenByQt(const QImage &image, int quality, bool progressive = false)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    QImageWriter writer(&buffer, "jpeg");
    writer.setQuality(quality);
    writer.setProgressiveScanWrite(progressive);
    return writer.write(image) ? buffer.data() : QByteArray();
}

QByteArray readAll(const QString &path)
{
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

bool writeAll(const QString &path, const QByteArray &bytes)
{
    QFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size();
}

// What the command line's operations do band by band.
BandChange bandChangeOf(const QList<EditOperation> &operations)
{
    if (operations.isEmpty())
        return {};
    return [operations](QImage band) {
        for (const EditOperation &operation : operations)
            band = apply(operation, std::move(band));
        return band;
    };
}

} // namespace

Q_DECLARE_METATYPE(QList<tarnby::edit::EditOperation>)

class TestJpegStrips : public QObject
{
    Q_OBJECT

private slots:
    // The picture as savePicture() hands it to the writer at that depth.
    void stripsDecodeAsQtsWriterDoes_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<int>("bitsPerPixel");
        QTest::addColumn<int>("quality");
        QTest::addColumn<bool>("inStrips");
        QTest::newRow("colour, sides no multiple of 16") << noisy(1003, 1237, QImage::Format_RGB32) << 24 << 90 << true;
        QTest::newRow("colour with alpha, written without it") << noisy(1000, 1600, QImage::Format_ARGB32) << 32 << 75 << true;
        QTest::newRow("grey, sides no multiple of 8") << noisy(2001, 3003, QImage::Format_Grayscale8) << 8 << 90 << true;
        QTest::newRow("wide: one MCU row a strip") << noisy(60000, 40, QImage::Format_RGB32) << 24 << 50 << true;
        QTest::newRow("quality 100") << noisy(1003, 1237, QImage::Format_RGB32) << 24 << 100 << true;
        QTest::newRow("default quality (0)") << noisy(1003, 1237, QImage::Format_RGB32) << 24 << 0 << true;
        QTest::newRow("small: one piece") << noisy(37, 23, QImage::Format_RGB32) << 24 << 90 << false;
    }
    void stripsDecodeAsQtsWriterDoes()
    {
        QFETCH(QImage, image);
        QFETCH(int, bitsPerPixel);
        QFETCH(int, quality);
        QFETCH(bool, inStrips);
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("out.jpg"));
        Picture picture;
        picture.frames.append({image, 0});
        picture.info.bitsPerPixel = bitsPerPixel;
        const SaveResult saved = savePicture(picture, path, JpegCode, 0, quality);
        QVERIFY2(saved.ok, qPrintable(saved.errorString));

        const QByteArray ours = readAll(path);
        const QByteArray qts = writtenByQt(image, quality > 0 ? quality : 75);
        QVERIFY(!qts.isEmpty());
        QCOMPARE(hasRestartInterval(ours), inStrips);
        const QImage decoded = decodedByQt(ours);
        QVERIFY(!decoded.isNull());
        QVERIFY(decoded == decodedByQt(qts));
        if (!inStrips)
            QCOMPARE(ours, qts);
    }

    // The resolution, the texts and the colour profile go into the header as
    // Qt's writer puts them, and come back on loading.
    void headerAsQtsWriterWritesIt()
    {
        QImage image = noisy(1003, 1237, QImage::Format_RGB32);
        image.setDotsPerMeterX(11811); // 300 dpi
        image.setDotsPerMeterY(5906);  // 150 dpi
        image.setText(QStringLiteral("Title"), QStringLiteral("Harbour at dusk"));
        image.setText(QStringLiteral("Author"), QStringLiteral("Tarnby"));
        image.setColorSpace(QColorSpace(QColorSpace::AdobeRgb));
        TestDir dir;
        const QString path = dir.filePath(QStringLiteral("out.jpg"));
        Picture picture;
        picture.frames.append({image, 0});
        picture.info.bitsPerPixel = 24;
        QVERIFY(savePicture(picture, path, JpegCode, 0, 85).ok);

        auto withoutRestarts = [](QList<QPair<int, QByteArray>> segments) {
            segments.removeIf([](const QPair<int, QByteArray> &s) { return s.first == 0xDD; });
            return segments;
        };
        QCOMPARE(withoutRestarts(headerSegments(readAll(path))), headerSegments(writtenByQt(image, 85)));

        const LoadResult loaded = loadPicture(path);
        QVERIFY(loaded.ok());
        QCOMPARE(loaded.picture.image().text(QStringLiteral("Title")), QStringLiteral("Harbour at dusk"));
        QCOMPARE(loaded.picture.image().colorSpace(), QColorSpace(QColorSpace::AdobeRgb));
        QCOMPARE(loaded.picture.info.xResolution, 300.0);
        QCOMPARE(loaded.picture.info.yResolution, 150.0);
    }

    // Several pictures saved at once share the strip threads; none waits
    // for the others' strips.
    void concurrentSaves()
    {
        const QImage image = noisy(1003, 1237, QImage::Format_RGB32);
        const QImage expected = decodedByQt(writtenByQt(image, 90));
        TestDir dir;
        QList<int> indices{0, 1, 2, 3, 4, 5};
        const QList<bool> same = QtConcurrent::blockingMapped(indices, [&](int i) {
            const QString path = dir.filePath(QStringLiteral("%1.jpg").arg(i));
            Picture picture;
            picture.frames.append({image, 0});
            picture.info.bitsPerPixel = 24;
            return savePicture(picture, path, JpegCode, 0, 90).ok && decodedByQt(readAll(path)) == expected;
        });
        QCOMPARE(same, QList<bool>(indices.size(), true));
    }

    // Converting at once gives the file of the plain road: load, the
    // operations, the flips, save.
    void convertAtOnceAsThePlainRoad_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<QList<EditOperation>>("operations");
        QTest::addColumn<bool>("upsideDown");
        const QByteArray colour = writtenByQt(noisy(1003, 1237, QImage::Format_RGB32), 95);
        const QByteArray grey = writtenByQt(noisy(2001, 3003, QImage::Format_Grayscale8), 95);
        QTest::newRow("load and save") << colour << QList<EditOperation>{} << false;
        QTest::newRow("invert") << colour << QList{EditOperation::invert()} << false;
        QTest::newRow("flip") << colour << QList<EditOperation>{} << true;
        QTest::newRow("reverse, brightness, contrast, flipped")
            << colour << QList{EditOperation::reverse(), EditOperation::brightness(-250), EditOperation::contrast(400)} << true;
        QTest::newRow("grey, inverted and flipped") << grey << QList{EditOperation::invert()} << true;
        QTest::newRow("progressive input") << writtenByQt(noisy(1003, 1237, QImage::Format_RGB32), 90, true)
                                           << QList{EditOperation::invert()} << false;
        QTest::newRow("small: one piece") << writtenByQt(noisy(37, 23, QImage::Format_RGB32), 90)
                                          << QList{EditOperation::invert()} << true;
    }
    void convertAtOnceAsThePlainRoad()
    {
        QFETCH(QByteArray, input);
        QFETCH(QList<EditOperation>, operations);
        QFETCH(bool, upsideDown);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.jpg"));
        const QString atOnce = dir.filePath(QStringLiteral("at-once.jpg"));
        const QString plain = dir.filePath(QStringLiteral("plain.jpg"));
        QVERIFY(writeAll(in, input));

        bool handled = false;
        const SaveResult converted = convertJpeg(in, atOnce, JpegCode, 80, bandChangeOf(operations), upsideDown, &handled);
        QVERIFY(handled);
        QVERIFY2(converted.ok, qPrintable(converted.errorString));

        LoadResult loaded = loadPicture(in);
        QVERIFY(loaded.ok());
        QString error;
        for (const EditOperation &operation : operations)
            QVERIFY(applyToPicture(operation, &loaded.picture, &error));
        if (upsideDown)
            QVERIFY(applyToPicture(EditOperation::flip(), &loaded.picture, &error));
        QVERIFY(savePicture(loaded.picture, plain, JpegCode, 0, 80).ok);

        const QImage expected = decodedByQt(readAll(plain));
        QVERIFY(!expected.isNull());
        QCOMPARE(decodedByQt(readAll(atOnce)), expected);
        // And as the layer reads it back.
        const LoadResult back = loadPicture(atOnce);
        QVERIFY(back.ok());
        QCOMPARE(back.picture.info.bitsPerPixel, loaded.picture.info.bitsPerPixel);
        QCOMPARE(back.picture.image(), loadPicture(plain).picture.image());
    }

    // Files the layer's own decoder does not read to the end are left to the
    // plain road, which has its own ways with them; the old file stays.
    void otherFilesAreLeftToThePlainRoad_data()
    {
        QTest::addColumn<QByteArray>("input");
        QTest::addColumn<int>("formatCode");
        const QByteArray jpeg = writtenByQt(noisy(1003, 1237, QImage::Format_RGB32), 90);
        QTest::newRow("cut short") << jpeg.left(jpeg.size() / 2) << JpegCode;
        QTest::newRow("a few bytes claiming a huge picture") << jpeg.left(700) << JpegCode;
        QByteArray png;
        {
            QBuffer buffer(&png);
            buffer.open(QIODevice::WriteOnly);
            noisy(40, 30, QImage::Format_RGB32).save(&buffer, "PNG");
        }
        QTest::newRow("PNG under a .jpg name") << png << JpegCode;
        QTest::newRow("saved as PNG") << jpeg << 75;
        QTest::newRow("empty") << QByteArray() << JpegCode;
    }
    void otherFilesAreLeftToThePlainRoad()
    {
        QFETCH(QByteArray, input);
        QFETCH(int, formatCode);
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.jpg"));
        const QString out = dir.filePath(QStringLiteral("out.jpg"));
        QVERIFY(writeAll(in, input));
        QVERIFY(writeAll(out, "old"));
        bool handled = true;
        const SaveResult converted = convertJpeg(in, out, formatCode, 90, bandChangeOf({EditOperation::invert()}), true, &handled);
        QVERIFY(!handled);
        QVERIFY(!converted.ok);
        QCOMPARE(readAll(out), QByteArray("old"));
        QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 2);
    }

    void unwritableTargetFails()
    {
        TestDir dir;
        const QString in = dir.filePath(QStringLiteral("in.jpg"));
        QVERIFY(writeAll(in, writtenByQt(noisy(100, 80, QImage::Format_RGB32), 90)));
        bool handled = false;
        const SaveResult converted =
            convertJpeg(in, dir.filePath(QStringLiteral("no/such/folder/out.jpg")), JpegCode, 90, {}, false, &handled);
        QVERIFY(handled);
        QVERIFY(!converted.ok);
        QVERIFY(!converted.errorString.isEmpty());
    }
};

QTEST_GUILESS_MAIN(TestJpegStrips)
#include "tst_jpegstrips.moc"
