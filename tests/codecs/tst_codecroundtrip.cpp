#include "CodecSamples.h"
#include "CodecTestUtil.h"
#include "TestDir.h"

#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QBuffer>
#include <QFile>
#include <QImageIOHandler>
#include <QRegularExpression>
#include <QSaveFile>
#include <QtTest>

using codectest::decode;
using codectest::encode;
using codectest::maxChannelDifference;

namespace {

// A picture with long solid stretches, repeated byte pairs, identical
// neighbouring lines and noise, so that the packers use every code.
QImage indexedPicture(int width, int height, int colours)
{
    quint32 seed = 12345;
    return codecsamples::indexedPicture(width, height, colours, [&](int x, int y) {
        if (y % 7 == 3 || y % 7 == 4) // two equal lines
            return x / 16;
        if (x < width / 4)
            return 0;
        if (x < width / 2)
            return colours - 1;
        if (x < 3 * width / 4)
            return (x / 8) % 2; // pairs of bytes repeating
        seed = seed * 1103515245 + 12345;
        return int(seed >> 16);
    });
}

QImage monoPicture(int width, int height)
{
    QImage indexed = indexedPicture(width, height, 2);
    indexed.setColorTable({qRgb(255, 255, 255), qRgb(0, 0, 0)});
    return indexed;
}

QImage rgbPicture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixel(x, y, qRgb((x * 7) & 0xff, (y * 13) & 0xff, ((x ^ y) * 3) & 0xff));
    return image;
}

// Index-by-index comparison, for pictures decoded without their colours.
bool sameIndexes(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return false;
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixelIndex(x, y) != b.pixelIndex(x, y))
                return false;
    return true;
}

} // namespace

class TestCodecRoundTrip : public QObject
{
    Q_OBJECT

private slots:
    void oneBitWriters_data();
    void oneBitWriters();
    void macPaintPageIsFixed_data();
    void macPaintPageIsFixed();
    void cutWithPaletteFile_data();
    void cutWithPaletteFile();
    void cutWithoutPaletteKeepsIndexes();
    void epsHoldsThePixels_data();
    void epsHoldsThePixels();
    void gemImg_data();
    void gemImg();
    void gemImgStandardColours();
    void ilbm_data();
    void ilbm();
    void ilbmHoldAndModify();
    void clp_data();
    void clp();
    void aniFramesAndDelays();
    void flic_data();
    void flic();
    void frameSteppingStyles();
    void flicJumpBackReplays();
    void formatsListed();
};

void TestCodecRoundTrip::oneBitWriters_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<bool>("version1");
    for (const QByteArray &format : {QByteArray("msp"), QByteArray("mac")}) {
        const QSize size = format == "mac" ? QSize(576, 720) : QSize(21, 9);
        const QImage mono = monoPicture(size.width(), size.height());
        QTest::newRow(format + " one bit") << format << mono << false;
        QTest::newRow(format + " grey 8 bit, black and white only")
            << format << mono.convertToFormat(QImage::Format_Grayscale8) << false;
        QTest::newRow(format + " rgb 32 bit, black and white only")
            << format << mono.convertToFormat(QImage::Format_RGB32) << false;
    }
    QTest::newRow("msp 4100 wide, rows over 255 packed bytes") << QByteArray("msp") << monoPicture(4100, 3) << false;
    QTest::newRow("msp 1 x 1") << QByteArray("msp") << monoPicture(1, 1) << false;
    QTest::newRow("msp version 1 read") << QByteArray("msp") << monoPicture(37, 11) << true;
}

void TestCodecRoundTrip::oneBitWriters()
{
    QFETCH(QByteArray, format);
    QFETCH(QImage, picture);
    QFETCH(bool, version1);
    QString error;
    const QByteArray file = version1 ? codecsamples::mspVersion1(picture) : encode(format, picture, &error);
    QVERIFY2(!file.isEmpty(), qPrintable(error));
    const codectest::Decoded decoded = decode(format, file);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(decoded.frames.size(), 1);
    QCOMPARE(decoded.frames[0].depth(), 1);
    QCOMPARE(decoded.frames[0].text("BitsPerPixel"), QStringLiteral("1"));
    QCOMPARE(maxChannelDifference(decoded.frames[0], picture), 0);
}

void TestCodecRoundTrip::macPaintPageIsFixed_data()
{
    QTest::addColumn<QSize>("size");
    QTest::newRow("smaller picture padded with white") << QSize(100, 50);
    QTest::newRow("larger picture cropped") << QSize(700, 800);
    QTest::newRow("odd width 577 cropped") << QSize(577, 3);
}

void TestCodecRoundTrip::macPaintPageIsFixed()
{
    QFETCH(QSize, size);
    const QImage picture = monoPicture(size.width(), size.height());
    const codectest::Decoded decoded = decode("mac", encode("mac", picture));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const QImage page = decoded.frames[0];
    QCOMPARE(page.size(), QSize(576, 720));
    const QRect common = QRect(QPoint(0, 0), size).intersected(page.rect());
    QCOMPARE(maxChannelDifference(page.copy(common), picture.copy(common)), 0);
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x)
            if (!common.contains(x, y) && page.pixel(x, y) != qRgb(255, 255, 255))
                QFAIL(qPrintable(QStringLiteral("pixel %1,%2 outside the picture is not white").arg(x).arg(y)));
}

void TestCodecRoundTrip::cutWithPaletteFile_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QString>("name");
    QTest::newRow("256 colours") << indexedPicture(300, 20, 256) << "WIDE.CUT";
    QTest::newRow("4 colours") << indexedPicture(17, 5, 4) << "small.cut";
    QTest::newRow("one bit") << monoPicture(33, 4).convertToFormat(QImage::Format_Mono) << "mono.cut";
    QTest::newRow("rgb 32 bit with few colours")
        << indexedPicture(40, 6, 200).convertToFormat(QImage::Format_RGB32) << "rgb.cut";
}

void TestCodecRoundTrip::cutWithPaletteFile()
{
    QFETCH(QImage, picture);
    QFETCH(QString, name);
    TestDir dir;
    const QString path = dir.path() + '/' + name;
    {
        // The way the picture layer saves: through QSaveFile.
        QSaveFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        auto handler = tarnby::imaging::codecs::createHandler("cut");
        handler->setDevice(&file);
        QVERIFY2(handler->write(picture), qPrintable(tarnby::imaging::codecs::errorString(handler.get())));
        QVERIFY(file.commit());
    }
    const QString palette = QFileInfo(path).completeBaseName() + (name.endsWith(".CUT") ? ".PAL" : ".pal");
    QVERIFY2(QFile::exists(dir.path() + '/' + palette), qPrintable(palette));
    const codectest::Decoded decoded = codectest::decodeFile("cut", path);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(maxChannelDifference(decoded.frames[0], picture), 0);
}

void TestCodecRoundTrip::cutWithoutPaletteKeepsIndexes()
{
    const QImage picture = indexedPicture(130, 9, 256);
    const codectest::Decoded decoded = decode("cut", encode("cut", picture));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QVERIFY(sameIndexes(decoded.frames[0], picture));
    // No palette file: index 200 shows as grey 200.
    QCOMPARE(decoded.frames[0].color(200), qRgb(200, 200, 200));
}

void TestCodecRoundTrip::epsHoldsThePixels_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QByteArray>("colourSpace");
    QTest::addColumn<int>("bits");
    QTest::newRow("one bit, 13 wide") << monoPicture(13, 5).convertToFormat(QImage::Format_Mono)
                                      << QByteArray("/DeviceGray") << 1;
    QTest::newRow("grey 8 bit") << indexedPicture(9, 4, 256).convertToFormat(QImage::Format_Grayscale8)
                                << QByteArray("/DeviceGray") << 8;
    QTest::newRow("rgb 32 bit") << rgbPicture(11, 7) << QByteArray("/DeviceRGB") << 8;
    QTest::newRow("indexed colour") << indexedPicture(10, 3, 16) << QByteArray("/DeviceRGB") << 8;
}

void TestCodecRoundTrip::epsHoldsThePixels()
{
    QFETCH(QImage, picture);
    QFETCH(QByteArray, colourSpace);
    QFETCH(int, bits);
    // At 72 dots an inch a pixel is a point; the box is the picture's size.
    picture.setDotsPerMeterX(2835);
    picture.setDotsPerMeterY(2835);
    QString error;
    const QByteArray eps = encode("eps", picture, &error);
    QVERIFY2(!eps.isEmpty(), qPrintable(error));
    QVERIFY(eps.startsWith("%!PS-Adobe-3.0 EPSF-3.0\n"));
    QVERIFY(eps.contains(QByteArray("%%BoundingBox: 0 0 ") + QByteArray::number(picture.width()) + ' '
                         + QByteArray::number(picture.height()) + '\n'));
    QVERIFY(eps.contains("%%LanguageLevel: 2"));
    QVERIFY(eps.contains(colourSpace + " setcolorspace"));
    QVERIFY(eps.contains("/BitsPerComponent " + QByteArray::number(bits)));
    // The raster in Photoshop's comment: a reader sizes its rendering by it.
    const bool rgb = colourSpace == "/DeviceRGB";
    const int rowBytes = bits == 1 ? (picture.width() + 7) / 8 : picture.width() * (rgb ? 3 : 1);
    QVERIFY(eps.contains("\n%ImageData: " + QByteArray::number(picture.width()) + ' ' + QByteArray::number(picture.height())
                         + ' ' + QByteArray::number(bits) + (rgb ? " 3 0 1" : " 1 0 " + QByteArray::number(rowBytes))
                         + " 2 \"image\"\n"));
    QVERIFY(eps.trimmed().endsWith("%%EOF"));
    // At 144 dots an inch the box is half as wide and high.
    picture.setDotsPerMeterX(5670);
    picture.setDotsPerMeterY(5670);
    QVERIFY(encode("eps", picture).contains(QByteArray("%%BoundingBox: 0 0 ") + QByteArray::number((picture.width() + 1) / 2)
                                            + ' ' + QByteArray::number((picture.height() + 1) / 2) + '\n'));

    // Decode the hexadecimal image data and compare it with the picture.
    const qsizetype start = eps.indexOf(">> image\n") + 9;
    const qsizetype end = eps.indexOf('>', start);
    QVERIFY(start > 9 && end > start);
    const QByteArray pixels = QByteArray::fromHex(eps.mid(start, end - start));
    QCOMPARE(pixels.size(), qsizetype(rowBytes) * picture.height());
    for (int y = 0; y < picture.height(); ++y) {
        for (int x = 0; x < picture.width(); ++x) {
            const QRgb expected = picture.pixel(x, y);
            const uchar *row = reinterpret_cast<const uchar *>(pixels.constData()) + qsizetype(rowBytes) * y;
            if (bits == 1) {
                const bool white = row[x / 8] & (0x80 >> (x % 8));
                QCOMPARE(white, qGray(expected) > 127);
            } else if (rgb) {
                QCOMPARE(qRgb(row[3 * x], row[3 * x + 1], row[3 * x + 2]), expected | 0xff000000);
            } else {
                QCOMPARE(int(row[x]), qGray(expected));
            }
        }
    }
}

void TestCodecRoundTrip::gemImg_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("planes");
    QTest::addColumn<bool>("ximg");
    QTest::addColumn<int>("tolerance");
    // XIMG stores colour levels in thousandths, so a level may move by one.
    QTest::newRow("monochrome 1 plane") << monoPicture(75, 30) << 1 << false << 0;
    QTest::newRow("4 planes, XIMG palette") << indexedPicture(61, 15, 16) << 4 << true << 1;
    QTest::newRow("8 planes, XIMG palette") << indexedPicture(40, 9, 256) << 8 << true << 1;
    QTest::newRow("3 planes, XIMG palette, width 1") << indexedPicture(1, 8, 8) << 3 << true << 1;
}

void TestCodecRoundTrip::gemImg()
{
    QFETCH(QImage, picture);
    QFETCH(int, planes);
    QFETCH(bool, ximg);
    QFETCH(int, tolerance);
    const QByteArray file = codecsamples::gemImg(picture, planes, ximg);
    const codectest::Decoded decoded = decode("img", file);
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const int difference = maxChannelDifference(decoded.frames[0], picture);
    QVERIFY2(difference >= 0 && difference <= tolerance, qPrintable(QString::number(difference)));
    QCOMPARE(decoded.frames[0].text("BitsPerPixel"), QString::number(planes));
}

void TestCodecRoundTrip::gemImgStandardColours()
{
    // Without XIMG, four planes show the standard colours of their pixel
    // values: 0 white, 1 red, 2 green, 4 blue, 15 black.
    const QImage picture = indexedPicture(32, 4, 16);
    const codectest::Decoded decoded = decode("img", codecsamples::gemImg(picture, 4, false));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    const QImage image = decoded.frames[0];
    QVERIFY(sameIndexes(image, picture));
    QCOMPARE(image.color(0), qRgb(255, 255, 255));
    QCOMPARE(image.color(1), qRgb(255, 0, 0));
    QCOMPARE(image.color(2), qRgb(0, 255, 0));
    QCOMPARE(image.color(4), qRgb(0, 0, 255));
    QCOMPARE(image.color(15), qRgb(0, 0, 0));
}

void TestCodecRoundTrip::ilbm_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<int>("planes");
    QTest::addColumn<bool>("byteRun1");
    QTest::addColumn<bool>("pbm");
    QTest::addColumn<bool>("mask");
    QTest::newRow("1 plane packed") << monoPicture(33, 7) << 1 << true << false << false;
    QTest::newRow("4 planes unpacked") << indexedPicture(50, 6, 16) << 4 << false << false << false;
    QTest::newRow("5 planes with mask plane") << indexedPicture(19, 6, 32) << 5 << true << false << true;
    QTest::newRow("8 planes packed") << indexedPicture(300, 5, 256) << 8 << true << false << false;
    QTest::newRow("24 planes true colour") << rgbPicture(21, 6) << 24 << true << false << false;
    QTest::newRow("pbm odd width packed") << indexedPicture(31, 6, 256) << 8 << true << true << false;
    QTest::newRow("pbm unpacked") << indexedPicture(16, 3, 256) << 8 << false << true << false;
}

void TestCodecRoundTrip::ilbm()
{
    QFETCH(QImage, picture);
    QFETCH(int, planes);
    QFETCH(bool, byteRun1);
    QFETCH(bool, pbm);
    QFETCH(bool, mask);
    const codectest::Decoded decoded =
        decode("iff", codecsamples::ilbm(picture, planes, {.byteRun1 = byteRun1, .pbm = pbm, .mask = mask}));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(maxChannelDifference(decoded.frames[0], picture), 0);
    QCOMPARE(decoded.frames[0].text("BitsPerPixel"), QString::number(planes));
}

void TestCodecRoundTrip::ilbmHoldAndModify()
{
    // HAM6 values: two control bits above four value bits. Each row starts
    // from palette colour 0.
    const QList<QRgb> palette = {qRgb(0, 0, 0), qRgb(255, 0, 0), qRgb(10, 20, 30)};
    const QList<quint8> values = {
        0x02, // palette 2
        0x1F, // blue to 15*17
        0x25, // red to 5*17
        0x33, // green to 3*17
        0x01, // palette 1
        0x30, // green to 0
    };
    const QList<QRgb> expected = {qRgb(10, 20, 30), qRgb(10, 20, 255), qRgb(85, 20, 255),
                                  qRgb(85, 51, 255), qRgb(255, 0, 0),   qRgb(255, 0, 0)};
    const codectest::Decoded decoded = decode("iff", codecsamples::ilbmRaw(6, 1, 6, values, palette, 0x800));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    for (int x = 0; x < 6; ++x)
        QCOMPARE(decoded.frames[0].pixel(x, 0), expected[x]);
    QCOMPARE(decoded.frames[0].text("BitsPerPixel"), QStringLiteral("6"));

    // Extra half-brite: indexes 32 to 63 are the first 32 colours at half.
    QList<QRgb> ehbPalette;
    for (int i = 0; i < 32; ++i)
        ehbPalette.append(qRgb(i * 8, 255 - i * 8, 100));
    const codectest::Decoded ehb =
        decode("iff", codecsamples::ilbmRaw(3, 1, 6, {5, 37, 63}, ehbPalette, 0x80));
    QVERIFY2(ehb.ok(), qPrintable(ehb.error));
    QCOMPARE(ehb.frames[0].pixel(0, 0), ehbPalette[5]);
    QCOMPARE(ehb.frames[0].pixel(1, 0), qRgb(20, 107, 50));
    QCOMPARE(ehb.frames[0].pixel(2, 0), qRgb(124, 3, 50));
}

void TestCodecRoundTrip::clp_data()
{
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<bool>("win3");
    QTest::newRow("16-bit layout, 24-bit dib") << rgbPicture(13, 5) << true;
    QTest::newRow("32-bit layout, 8-bit dib") << indexedPicture(14, 6, 200) << false;
    QTest::newRow("32-bit layout, 1-bit dib") << monoPicture(35, 4).convertToFormat(QImage::Format_Mono) << false;
    QTest::newRow("16-bit layout, 32-bit dib with alpha")
        << rgbPicture(7, 7).convertToFormat(QImage::Format_ARGB32) << true;
}

void TestCodecRoundTrip::clp()
{
    QFETCH(QImage, picture);
    QFETCH(bool, win3);
    const codectest::Decoded decoded = decode("clp", codecsamples::clp(picture, win3));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(maxChannelDifference(decoded.frames[0], picture), 0);
}

void TestCodecRoundTrip::aniFramesAndDelays()
{
    QImage red(16, 16, QImage::Format_ARGB32);
    red.fill(qRgba(255, 0, 0, 255));
    QImage blue(16, 16, QImage::Format_ARGB32);
    blue.fill(qRgba(0, 0, 255, 255));
    blue.setPixel(3, 4, qRgba(0, 0, 0, 0));
    // Three steps over two frames; the rate chunk overrides the header's 30.
    const codectest::Decoded withRates = decode("ani", codecsamples::ani({red, blue}, {1, 0, 1}, {6, 12, 3}, 30));
    QVERIFY2(withRates.ok(), qPrintable(withRates.error));
    QCOMPARE(withRates.frames.size(), 3);
    QCOMPARE(withRates.delaysMs, (QList<int>{100, 200, 50}));
    QCOMPARE(maxChannelDifference(withRates.frames[0], blue), 0);
    QCOMPARE(maxChannelDifference(withRates.frames[1], red), 0);
    QCOMPARE(maxChannelDifference(withRates.frames[2], blue), 0);
    // No seq and no rate: frames in order at the header's rate.
    const codectest::Decoded plain = decode("ani", codecsamples::ani({red, blue}, {}, {}, 30));
    QVERIFY2(plain.ok(), qPrintable(plain.error));
    QCOMPARE(plain.delaysMs, (QList<int>{500, 500}));
    QCOMPARE(maxChannelDifference(plain.frames[1], blue), 0);
}

void TestCodecRoundTrip::flic_data()
{
    QTest::addColumn<bool>("fli");
    QTest::addColumn<int>("width");
    QTest::addColumn<quint32>("speed");
    QTest::addColumn<int>("delayMs");
    QTest::addColumn<int>("tolerance");
    // FLI colours have 64 levels, so a level may move by up to three.
    QTest::newRow("flc, even width, speed in ms") << false << 64 << quint32(80) << 80 << 0;
    QTest::newRow("flc, odd width uses the last-pixel code") << false << 33 << quint32(40) << 40 << 0;
    QTest::newRow("fli, speed in 1/70 s") << true << 40 << quint32(7) << 100 << 3;
}

void TestCodecRoundTrip::flic()
{
    QFETCH(bool, fli);
    QFETCH(int, width);
    QFETCH(quint32, speed);
    QFETCH(int, delayMs);
    QFETCH(int, tolerance);
    const QImage first = indexedPicture(width, 20, 256);
    QList<QImage> frames = {first};
    // Later frames change a few areas: lines, a block and a moving stripe.
    for (int i = 1; i < 5; ++i) {
        QImage next = frames.last().copy();
        for (int x = 0; x < width; ++x)
            next.setPixel(x, (i * 3) % 20, (x + i) % 256);
        for (int y = 5; y < 9; ++y)
            for (int x = i; x < qMin(width, i + 10); ++x)
                next.setPixel(x, y, 200 + i);
        frames.append(next);
    }
    QImage black = first.copy();
    black.fill(0);
    frames.append(black);
    frames.append(first);
    const codectest::Decoded decoded = decode("flc", codecsamples::flic(frames, speed, fli));
    QVERIFY2(decoded.ok(), qPrintable(decoded.error));
    QCOMPARE(decoded.frames.size(), frames.size());
    for (int i = 0; i < frames.size(); ++i) {
        QVERIFY2(sameIndexes(decoded.frames[i], frames[i]), qPrintable(QStringLiteral("frame %1").arg(i + 1)));
        const int difference = maxChannelDifference(decoded.frames[i], frames[i]);
        QVERIFY2(difference <= tolerance, qPrintable(QStringLiteral("frame %1 by %2").arg(i + 1).arg(difference)));
        QCOMPARE(decoded.delaysMs[i], delayMs);
    }
}

void TestCodecRoundTrip::frameSteppingStyles()
{
    QList<QImage> frames;
    for (int i = 0; i < 4; ++i) {
        QImage frame = indexedPicture(8, 4, 16);
        frame.fill(uint(i + 1));
        frames.append(frame);
    }
    QByteArray file = codecsamples::flic(frames, 50, false);
    const auto indexOf = [](const QImage &image) { return image.pixelIndex(0, 0); };

    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    auto handler = tarnby::imaging::codecs::createHandler("flc");
    handler->setDevice(&buffer);
    QCOMPARE(handler->imageCount(), 4);
    QImage image;
    // read, read: each read moves on.
    QVERIFY(handler->read(&image));
    QCOMPARE(indexOf(image), 1);
    QVERIFY(handler->read(&image));
    QCOMPARE(indexOf(image), 2);
    // read, jump, read: the jump confirms the step read took.
    QVERIFY(handler->jumpToNextImage());
    QVERIFY(handler->read(&image));
    QCOMPARE(indexOf(image), 3);
    // A jump with no read before it skips a frame.
    QVERIFY(handler->jumpToImage(0));
    QVERIFY(handler->jumpToNextImage());
    QVERIFY(handler->jumpToNextImage());
    QVERIFY(handler->read(&image));
    QCOMPARE(indexOf(image), 3);
    QVERIFY(handler->read(&image));
    QCOMPARE(indexOf(image), 4);
    // Past the last frame: an error, not a repeat.
    QVERIFY(!handler->read(&image));
    QVERIFY(!tarnby::imaging::codecs::errorString(handler.get()).isEmpty());
}

void TestCodecRoundTrip::flicJumpBackReplays()
{
    QList<QImage> frames;
    QImage frame = indexedPicture(30, 10, 64);
    for (int i = 0; i < 6; ++i) {
        for (int x = 0; x < 30; ++x)
            frame.setPixel(x, i, 40 + i);
        frames.append(frame.copy());
    }
    QByteArray file = codecsamples::flic(frames, 50, false);
    QBuffer buffer(&file);
    buffer.open(QIODevice::ReadOnly);
    auto handler = tarnby::imaging::codecs::createHandler("flc");
    handler->setDevice(&buffer);
    QImage image;
    QVERIFY(handler->jumpToImage(4));
    QVERIFY(handler->read(&image));
    QVERIFY(sameIndexes(image, frames[4]));
    QVERIFY(handler->jumpToImage(2));
    QVERIFY(handler->read(&image));
    QVERIFY(sameIndexes(image, frames[2]));
}

void TestCodecRoundTrip::formatsListed()
{
    using namespace tarnby::imaging::codecs;
    for (const QByteArray &format : readableFormats()) {
        auto handler = createHandler(format);
        QVERIFY2(handler, format.constData());
    }
    for (const QByteArray &format : writableFormats()) {
        auto handler = createHandler(format);
        QVERIFY2(handler, format.constData());
        QString error;
        QVERIFY2(!encode(format, monoPicture(8, 8), &error).isEmpty(), qPrintable(format + ": " + error));
    }
    QVERIFY(!createHandler("png"));
    QVERIFY(!readableFormats().contains("eps")); // the picture layer reads EPS
}

QTEST_GUILESS_MAIN(TestCodecRoundTrip)
#include "tst_codecroundtrip.moc"
