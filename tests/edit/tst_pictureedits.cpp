#include "core/edit/EditOperation.h"
#include "core/edit/PictureEdits.h"

#include <QFile>
#include <QSet>
#include <QTest>

using namespace tarnby::edit;

Q_DECLARE_METATYPE(QImage::Format)
Q_DECLARE_METATYPE(tarnby::edit::EditOperation)

namespace {

// A picture in each depth the picture layer gives. Every pixel differs from
// its neighbours, so that a pixel in the wrong place shows. Odd widths catch
// row padding; the large size is split into bands over the cores.
QImage sample(const QString &depth, QSize size)
{
    const int w = size.width(), h = size.height();
    const auto value = [](int x, int y, int salt) { return (x * 7 + y * 13 + x * y * salt) & 0xff; };
    if (depth == QLatin1String("1-bit") || depth == QLatin1String("1-bit LSB")) {
        QImage image(size, depth == QLatin1String("1-bit") ? QImage::Format_Mono : QImage::Format_MonoLSB);
        image.setColorTable({qRgb(10, 20, 30), qRgb(240, 230, 220)});
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, (x * 3 + y * 5 + x * y) % 7 < 3 ? 1 : 0);
        return image;
    }
    if (depth == QLatin1String("4-bit") || depth == QLatin1String("8-bit")) {
        const int colours = depth == QLatin1String("4-bit") ? 16 : 256;
        QImage image(size, QImage::Format_Indexed8);
        QList<QRgb> table;
        for (int i = 0; i < colours; ++i)
            table << qRgb((i * 37 + 11) % 256, (i * 91 + 5) % 256, (i * 53 + 200) % 256);
        image.setColorTable(table);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, value(x, y, 3) % colours);
        return image;
    }
    if (depth == QLatin1String("grey")) {
        QImage image(size, QImage::Format_Grayscale8);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.scanLine(y)[x] = uchar(value(x, y, 5));
        return image;
    }
    if (depth == QLatin1String("24-bit") || depth == QLatin1String("32-bit") || depth == QLatin1String("RGB888")
        || depth == QLatin1String("grey 16-bit")) {
        QImage image(size, depth == QLatin1String("32-bit") ? QImage::Format_ARGB32 : QImage::Format_RGB32);
        for (int y = 0; y < h; ++y)
            for (int x = 0; x < w; ++x)
                image.setPixel(x, y, qRgba(value(x, y, 1), value(x, y, 3), value(x, y, 7), 40 + (x + y) % 200));
        if (depth == QLatin1String("RGB888"))
            return image.convertToFormat(QImage::Format_RGB888);
        if (depth == QLatin1String("grey 16-bit"))
            return image.convertToFormat(QImage::Format_Grayscale16);
        return image;
    }
    return QImage();
}

const QStringList Depths = {QStringLiteral("1-bit"),  QStringLiteral("1-bit LSB"), QStringLiteral("4-bit"),
                            QStringLiteral("8-bit"),  QStringLiteral("grey"),      QStringLiteral("24-bit"),
                            QStringLiteral("32-bit"), QStringLiteral("RGB888"),    QStringLiteral("grey 16-bit")};

void addDepthRows(bool large = true)
{
    QTest::addColumn<QImage>("image");
    for (const QString &depth : Depths) {
        QTest::newRow(qPrintable(depth + QStringLiteral(" 37x23"))) << sample(depth, QSize(37, 23));
        if (large)
            QTest::newRow(qPrintable(depth + QStringLiteral(" 1201x703 in bands"))) << sample(depth, QSize(1201, 703));
    }
}

bool isPaletted(const QImage &image)
{
    return image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB
           || image.format() == QImage::Format_Indexed8;
}

QSet<QRgb> coloursOf(const QImage &image)
{
    QSet<QRgb> colours;
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            colours.insert(image.pixel(x, y));
    return colours;
}

// The first pixel where two pictures of the same size differ in visible
// colour, for a readable failure.
QString firstDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return QStringLiteral("sizes %1x%2 and %3x%4").arg(a.width()).arg(a.height()).arg(b.width()).arg(b.height());
    for (int y = 0; y < a.height(); ++y)
        for (int x = 0; x < a.width(); ++x)
            if (a.pixel(x, y) != b.pixel(x, y))
                return QStringLiteral("(%1, %2): %3 and %4").arg(x).arg(y).arg(a.pixel(x, y), 8, 16).arg(b.pixel(x, y), 8, 16);
    return QString();
}

// How far the peak resident memory (VmHWM) lies above the present (VmRSS),
// in KiB, from /proc/self/status.
qint64 peakGrowthKb()
{
    QFile status(QStringLiteral("/proc/self/status"));
    if (!status.open(QIODevice::ReadOnly))
        return -1;
    qint64 peak = 0, now = 0;
    for (const QByteArray &line : status.readAll().split('\n')) {
        if (line.startsWith("VmHWM:"))
            peak = line.mid(6).trimmed().split(' ').first().toLongLong();
        else if (line.startsWith("VmRSS:"))
            now = line.mid(6).trimmed().split(' ').first().toLongLong();
    }
    return peak - now;
}

} // namespace

class TestPictureEdits : public QObject
{
    Q_OBJECT

private slots:
    void flipsMovePixelsAndUndoThemselves_data() { addDepthRows(); }
    void flipsMovePixelsAndUndoThemselves()
    {
        QFETCH(QImage, image);
        const int w = image.width(), h = image.height();
        const QImage flipped = flip(image);
        const QImage reversed = reverse(image);
        QCOMPARE(flipped.format(), image.format());
        QCOMPARE(reversed.format(), image.format());
        QCOMPARE(flipped.colorTable(), image.colorTable());
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                QCOMPARE(flipped.pixel(x, h - 1 - y), image.pixel(x, y));
                QCOMPARE(reversed.pixel(w - 1 - x, y), image.pixel(x, y));
            }
        }
        QCOMPARE(firstDifference(flip(flipped), image), QString());
        QCOMPARE(flip(flipped), image);
        QCOMPARE(reverse(reversed), image);
    }

    void quarterTurns_data() { addDepthRows(); }
    void quarterTurns()
    {
        QFETCH(QImage, image);
        const int w = image.width(), h = image.height();
        const QImage once = rotate(image, 9000, RotateFit::KeepSize, qRgb(255, 0, 0));
        QCOMPARE(once.size(), QSize(h, w));
        QCOMPARE(once.format(), image.format());
        const QImage half = rotate(image, 18000, RotateFit::KeepSize, 0);
        const QImage back = rotate(image, -9000, RotateFit::Enlarge, 0);
        for (int y = 0; y < h; ++y) {
            for (int x = 0; x < w; ++x) {
                QCOMPARE(once.pixel(h - 1 - y, x), image.pixel(x, y)); // clockwise
                QCOMPARE(half.pixel(w - 1 - x, h - 1 - y), image.pixel(x, y));
                QCOMPARE(back.pixel(y, w - 1 - x), image.pixel(x, y));
            }
        }
        QImage turned = image;
        for (int i = 0; i < 4; ++i)
            turned = rotate(turned, 9000, RotateFit::KeepSize, 0);
        QCOMPARE(turned, image);
        QCOMPARE(rotate(image, 36000, RotateFit::Enlarge, 0), image);
        QCOMPARE(rotate(image, 27000, RotateFit::Enlarge, 0), back);
    }

    void invertIsExactPerPixel_data() { addDepthRows(); }
    void invertIsExactPerPixel()
    {
        QFETCH(QImage, image);
        const QImage inverted = invert(image);
        QCOMPARE(inverted.format(), image.format());
        if (isPaletted(image))
            QCOMPARE(inverted.colorCount(), image.colorCount());
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb was = image.pixel(x, y), now = inverted.pixel(x, y);
                if (image.format() == QImage::Format_Grayscale16) {
                    // Worked at 8 bits: within one level of the exact value.
                    QVERIFY(qAbs(qGray(now) - (255 - qGray(was))) <= 1);
                    continue;
                }
                QCOMPARE(qRed(now), 255 - qRed(was));
                QCOMPARE(qGreen(now), 255 - qGreen(was));
                QCOMPARE(qBlue(now), 255 - qBlue(was));
                QCOMPARE(qAlpha(now), qAlpha(was));
            }
        }
    }

    void neutralAmountsChangeNothing_data() { addDepthRows(false); }
    void neutralAmountsChangeNothing()
    {
        QFETCH(QImage, image);
        QCOMPARE(changeBrightness(image, 0), image);
        QCOMPARE(changeContrast(image, 0), image);
        QCOMPARE(rotate(image, 0, RotateFit::Enlarge, 0), image);
        QCOMPARE(resize(image, image.size(), Resampling::Smooth), image);
    }

    void fullAmounts_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<int>("brightness");
        QTest::addColumn<int>("contrast");
        QTest::addColumn<int>("level"); // every channel of every pixel afterwards
        for (const QString &depth : Depths) {
            const QImage image = sample(depth, QSize(37, 23));
            QTest::newRow(qPrintable(depth + QStringLiteral(" brightness +1000 is white"))) << image << 1000 << 0 << 255;
            QTest::newRow(qPrintable(depth + QStringLiteral(" brightness -1000 is black"))) << image << -1000 << 0 << 0;
            QTest::newRow(qPrintable(depth + QStringLiteral(" brightness beyond the range is clamped")))
                << image << -5000 << 0 << 0;
            QTest::newRow(qPrintable(depth + QStringLiteral(" contrast -1000 is mid-grey"))) << image << 0 << -1000 << 128;
        }
    }
    void fullAmounts()
    {
        QFETCH(QImage, image);
        QFETCH(int, brightness);
        QFETCH(int, contrast);
        QFETCH(int, level);
        const QImage changed = changeContrast(changeBrightness(image, brightness), contrast);
        QCOMPARE(changed.format(), image.format());
        for (const QRgb c : coloursOf(changed)) {
            QVERIFY2(qAbs(qRed(c) - level) <= 1 && qAbs(qGreen(c) - level) <= 1 && qAbs(qBlue(c) - level) <= 1,
                     qPrintable(QString::number(c, 16)));
        }
    }

    // Brightness moves every level the same way; contrast moves levels away
    // from mid-grey, keeping their order.
    void partialAmountsKeepOrder()
    {
        const QImage image = sample(QStringLiteral("grey"), QSize(64, 40));
        const QImage brighter = changeBrightness(image, 200);
        const QImage harder = changeContrast(image, 300);
        const QImage softer = changeContrast(image, -300);
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const int v = image.constScanLine(y)[x];
                QCOMPARE(int(brighter.constScanLine(y)[x]), qMin(255, v + 51));
                const int hard = harder.constScanLine(y)[x], soft = softer.constScanLine(y)[x];
                QVERIFY(qAbs(hard - 128) >= qAbs(v - 128) || hard == 0 || hard == 255);
                QVERIFY(qAbs(soft - 128) <= qAbs(v - 128) + 1);
            }
        }
    }

    void stretchAlreadySpanningChangesNothing_data() { addDepthRows(false); }
    void stretchAlreadySpanningChangesNothing()
    {
        QFETCH(QImage, image);
        // Make each channel use 0 and 255 somewhere.
        if (isPaletted(image)) {
            image.setColor(image.pixelIndex(0, 0), qRgb(0, 0, 0));
            image.setColor(image.pixelIndex(1, 0), qRgb(255, 255, 255));
        } else {
            const QImage::Format format = image.format();
            image = image.convertToFormat(QImage::Format_ARGB32);
            image.setPixel(0, 0, qRgba(0, 0, 0, 255));
            image.setPixel(1, 0, qRgba(255, 255, 255, 255));
            image = image.convertToFormat(format);
        }
        QCOMPARE(stretchIntensity(image), image);
    }

    void stretchSpreadsEachChannel_data()
    {
        QTest::addColumn<QImage>("image");
        // Channels between 50 and 150 (red), 100 and 200 (green), 20 and 60 (blue).
        QImage direct(33, 17, QImage::Format_RGB32);
        for (int y = 0; y < direct.height(); ++y)
            for (int x = 0; x < direct.width(); ++x)
                direct.setPixel(x, y, qRgb(50 + (x * 3 + y) % 101, 100 + (x + y * 7) % 101, 20 + (x * y) % 41));
        direct.setPixel(0, 0, qRgb(50, 100, 20));
        direct.setPixel(1, 0, qRgb(150, 200, 60));
        QTest::newRow("24-bit") << direct;
        // A palette entry that no pixel uses must not count.
        QImage indexed = direct.convertToFormat(QImage::Format_Indexed8);
        QList<QRgb> table = indexed.colorTable();
        if (table.size() < 256) {
            table << qRgb(0, 255, 0);
            indexed.setColorTable(table);
        }
        QTest::newRow("8-bit with an unused extreme entry") << indexed;
    }
    void stretchSpreadsEachChannel()
    {
        QFETCH(QImage, image);
        const QImage stretched = stretchIntensity(image);
        QCOMPARE(stretched.format(), image.format());
        int low[3] = {255, 255, 255}, high[3] = {0, 0, 0};
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QRgb c = stretched.pixel(x, y);
                const int channels[3] = {qRed(c), qGreen(c), qBlue(c)};
                for (int i = 0; i < 3; ++i)
                    low[i] = qMin(low[i], channels[i]), high[i] = qMax(high[i], channels[i]);
                // Order within a channel is kept.
                if (x > 0) {
                    const QRgb a = image.pixel(x - 1, y), b = image.pixel(x, y);
                    const QRgb sa = stretched.pixel(x - 1, y);
                    QCOMPARE(qRed(a) < qRed(b), qRed(sa) < qRed(c));
                }
            }
        }
        for (int i = 0; i < 3; ++i) {
            QCOMPARE(low[i], 0);
            QCOMPARE(high[i], 255);
        }
    }

    void resizeWithoutResamplingKeepsColours_data() { addDepthRows(false); }
    void resizeWithoutResamplingKeepsColours()
    {
        QFETCH(QImage, image);
        const QSet<QRgb> colours = coloursOf(image);
        for (const QSize size : {QSize(74, 46), QSize(13, 30), QSize(1, 1), QSize(100, 7)}) {
            const QImage resized = resize(image, size, Resampling::None);
            QCOMPARE(resized.size(), size);
            QCOMPARE(resized.format(), image.format());
            for (const QRgb c : coloursOf(resized))
                QVERIFY(colours.contains(c));
        }
        // Doubling copies each pixel into a 2 by 2 block.
        const QImage doubled = resize(image, image.size() * 2, Resampling::None);
        for (int y = 0; y < doubled.height(); ++y)
            for (int x = 0; x < doubled.width(); ++x)
                QCOMPARE(doubled.pixel(x, y), image.pixel(x / 2, y / 2));
    }

    void resizeWithResampling_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QImage::Format>("format");
        QImage grey(40, 30, QImage::Format_Indexed8);
        grey.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        grey.fill(1);
        QImage colour = grey;
        colour.setColorTable({qRgb(0, 0, 0), qRgb(200, 40, 90)});
        QImage mono = grey.convertToFormat(QImage::Format_Mono);
        QImage direct(40, 30, QImage::Format_RGB32);
        direct.fill(qRgb(200, 40, 90));
        QImage alpha(40, 30, QImage::Format_ARGB32);
        alpha.fill(qRgba(200, 40, 90, 255));
        QTest::newRow("grey palette gives greyscale") << grey << QImage::Format_Grayscale8;
        QTest::newRow("1-bit gives greyscale") << mono << QImage::Format_Grayscale8;
        QTest::newRow("colour palette gives 24-bit") << colour << QImage::Format_RGB32;
        QTest::newRow("24-bit stays") << direct << QImage::Format_RGB32;
        QTest::newRow("32-bit stays") << alpha << QImage::Format_ARGB32;
    }
    void resizeWithResampling()
    {
        QFETCH(QImage, image);
        QFETCH(QImage::Format, format);
        for (const QSize size : {QSize(17, 9), QSize(123, 77)}) {
            const QImage resized = resize(image, size, Resampling::Smooth);
            QCOMPARE(resized.size(), size);
            QCOMPARE(resized.format(), format);
            // One colour in, the same one colour out.
            QCOMPARE(coloursOf(resized), coloursOf(image));
        }
    }

    void resizeMixesNeighbours()
    {
        QImage image(2, 1, QImage::Format_RGB32);
        image.setPixel(0, 0, qRgb(0, 0, 0));
        image.setPixel(1, 0, qRgb(200, 200, 200));
        const QImage one = resize(image, QSize(1, 1), Resampling::Smooth);
        QVERIFY(qAbs(qRed(one.pixel(0, 0)) - 100) <= 2);
        const QImage nearest = resize(image, QSize(1, 1), Resampling::None);
        QVERIFY(coloursOf(image).contains(nearest.pixel(0, 0)));
    }

    void rotateEnlargeKeepsEveryCorner_data()
    {
        QTest::addColumn<int>("angle");
        QTest::addColumn<QSize>("enlarged");
        // Bounding boxes worked out by hand for a 100 by 50 picture.
        QTest::newRow("30 degrees") << 3000 << QSize(112, 94);   // 86.6 + 25, 50 + 43.3
        QTest::newRow("-30 degrees") << -3000 << QSize(112, 94);
        QTest::newRow("17.5 degrees") << 1750 << QSize(111, 78);  // 95.4 + 15.0, 30.1 + 47.7
        QTest::newRow("45 degrees") << 4500 << QSize(107, 107);  // 150 / sqrt 2
        QTest::newRow("135 degrees") << 13500 << QSize(107, 107);
        QTest::newRow("one hundredth") << 1 << QSize(101, 51);
    }
    void rotateEnlargeKeepsEveryCorner()
    {
        QFETCH(int, angle);
        QFETCH(QSize, enlarged);
        QImage image(100, 50, QImage::Format_RGB32);
        image.fill(qRgb(0, 0, 255));
        const QRgb fill = qRgb(255, 255, 0);
        const QImage turned = rotate(image, angle, RotateFit::Enlarge, fill);
        QCOMPARE(turned.size(), enlarged);
        QCOMPARE(turned.format(), QImage::Format_RGB32);
        // The picture's area is all there: blue weight adds up to 100 x 50
        // within the smoothed border.
        double blue = 0;
        for (int y = 0; y < turned.height(); ++y)
            for (int x = 0; x < turned.width(); ++x)
                blue += (255 - qRed(turned.pixel(x, y))) / 255.0;
        QVERIFY2(qAbs(blue - 5000) < 60, qPrintable(QString::number(blue)));
        const QImage kept = rotate(image, angle, RotateFit::KeepSize, fill);
        QCOMPARE(kept.size(), image.size());
        QCOMPARE(kept.pixel(50, 25), qRgb(0, 0, 255));
    }

    // A patch at the top-left corner of a square goes to the top middle on
    // a clockwise turn of 45 degrees, to the left middle on an anticlockwise
    // one.
    void rotateTurnsClockwise_data()
    {
        QTest::addColumn<QImage>("image");
        QImage base(60, 60, QImage::Format_RGB32);
        base.fill(Qt::white);
        for (int y = 0; y < 8; ++y)
            for (int x = 0; x < 8; ++x)
                base.setPixel(x, y, qRgb(255, 0, 0));
        QTest::newRow("24-bit") << base;
        QTest::newRow("32-bit") << base.convertToFormat(QImage::Format_ARGB32);
        QTest::newRow("8-bit") << base.convertToFormat(QImage::Format_Indexed8);
        QTest::newRow("grey") << base.convertToFormat(QImage::Format_Grayscale8);
        QTest::newRow("1-bit") << base.convertToFormat(QImage::Format_Mono, Qt::ThresholdDither);
        QTest::newRow("RGB888") << base.convertToFormat(QImage::Format_RGB888);
    }
    void rotateTurnsClockwise()
    {
        QFETCH(QImage, image);
        const QRgb marked = image.pixel(0, 0);
        const QRgb background = image.pixel(30, 30);
        for (const int angle : {4500, -4500}) {
            const QImage turned = rotate(image, angle, RotateFit::Enlarge, background);
            QCOMPARE(turned.size(), QSize(85, 85));
            const QPoint expected = angle > 0 ? QPoint(42, 5) : QPoint(5, 42);
            QCOMPARE(turned.pixel(expected), marked);
            QCOMPARE(turned.pixel(85 - 1 - expected.x(), 85 - 1 - expected.y()), background);
        }
    }

    void rotatePalettedStaysPaletted_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<QImage::Format>("format");
        QTest::addColumn<QRgb>("fill");
        QTest::newRow("1-bit, fill in the palette") << sample(QStringLiteral("1-bit"), QSize(37, 23)) << QImage::Format_Mono
                                                    << qRgb(10, 20, 30);
        QTest::newRow("1-bit, new fill needs 8 bits")
            << sample(QStringLiteral("1-bit"), QSize(37, 23)) << QImage::Format_Indexed8 << qRgb(1, 2, 3);
        QTest::newRow("4-bit, new fill added") << sample(QStringLiteral("4-bit"), QSize(37, 23)) << QImage::Format_Indexed8
                                               << qRgb(1, 2, 3);
        QTest::newRow("8-bit, full palette takes the nearest")
            << sample(QStringLiteral("8-bit"), QSize(37, 23)) << QImage::Format_Indexed8 << qRgb(1, 2, 3);
    }
    void rotatePalettedStaysPaletted()
    {
        QFETCH(QImage, image);
        QFETCH(QImage::Format, format);
        QFETCH(QRgb, fill);
        const QImage turned = rotate(image, 2000, RotateFit::Enlarge, fill);
        QCOMPARE(turned.format(), format);
        QVERIFY(turned.colorCount() <= 256);
        QSet<QRgb> allowed = coloursOf(image);
        const bool room = image.colorCount() < 256;
        if (room)
            allowed.insert(fill);
        for (const QRgb c : coloursOf(turned))
            QVERIFY(allowed.contains(c) || QSet<QRgb>(image.colorTable().cbegin(), image.colorTable().cend()).contains(c));
        if (room)
            QCOMPARE(turned.pixel(0, 0), fill);
    }

    void tooLargeGivesNull_data()
    {
        QTest::addColumn<QImage>("image");
        QTest::addColumn<EditOperation>("operation");
        QImage wide(32000, 2, QImage::Format_Indexed8);
        wide.setColorTable({qRgb(0, 0, 0)});
        wide.fill(0);
        QImage small(10, 10, QImage::Format_RGB32);
        small.fill(0);
        QTest::newRow("resize wider than 32767") << small << EditOperation::resize(QSize(32768, 1), Resampling::None);
        QTest::newRow("resize to nothing") << small << EditOperation::resize(QSize(0, 5), Resampling::Smooth);
        QTest::newRow("resize past 256 megapixels") << small << EditOperation::resize(QSize(30000, 30000), Resampling::None);
        QTest::newRow("enlarged turn wider than 32767") << wide << EditOperation::rotate(4500, RotateFit::Enlarge, 0);
        QTest::newRow("null picture") << QImage() << EditOperation::invert();
    }
    void tooLargeGivesNull()
    {
        QFETCH(QImage, image);
        QFETCH(EditOperation, operation);
        QVERIFY(apply(operation, image).isNull());
    }

    // Handed over, a picture is flipped and adjusted where it lies.
    void workInPlaceWhenHandedOver()
    {
        QImage image = sample(QStringLiteral("24-bit"), QSize(1201, 703));
        const uchar *where = image.constBits();
        image = flip(std::move(image));
        image = reverse(std::move(image));
        image = invert(std::move(image));
        image = changeBrightness(std::move(image), 100);
        QCOMPARE(image.constBits(), where);
        // A picture still held elsewhere is left as it was.
        const QImage kept = image;
        const QImage flipped = flip(kept);
        QVERIFY(flipped.constBits() != kept.constBits());
        QCOMPARE(flip(flipped), kept);
    }

    // 100 megapixels of 8-bit grey, as a window or the command line holds
    // them (the only reference, in a picture): the operation works where the
    // pixels lie, and the process's peak memory grows by far less than a
    // second copy would take.
    void hundredMegapixelsInPlace_data()
    {
        QTest::addColumn<EditOperation>("operation");
        QTest::newRow("flip") << EditOperation::flip();
        QTest::newRow("invert") << EditOperation::invert();
    }
    void hundredMegapixelsInPlace()
    {
        QFETCH(EditOperation, operation);
        constexpr int Side = 10000;
        const auto level = [](int x, int y) { return uchar((x * 7 + y * 13) & 0xFF); };
        tarnby::imaging::Picture picture;
        {
            QImage image(Side, Side, QImage::Format_Grayscale8);
            QVERIFY(!image.isNull());
            for (int y = 0; y < Side; ++y) {
                uchar *line = image.scanLine(y);
                for (int x = 0; x < Side; ++x)
                    line[x] = level(x, y);
            }
            picture.frames << tarnby::imaging::PictureFrame{std::move(image), 0};
        }
        picture.info.bitsPerPixel = 8;
        const uchar *where = picture.frames.constFirst().image.constBits();
        // The peak is counted from here on, where the system lets it be reset.
        QFile clearRefs(QStringLiteral("/proc/self/clear_refs"));
        const bool peakReset = clearRefs.open(QIODevice::WriteOnly) && clearRefs.write("5") == 1;
        clearRefs.close();

        QString error;
        QVERIFY(applyToPicture(operation, &picture, &error));
        const QImage &result = picture.frames.constFirst().image;
        QCOMPARE(result.constBits(), where);
        const bool flipped = operation.kind == EditOperation::Kind::Flip;
        for (const int y : {0, 1, 2, 4999, 5000, 5001, 7777, 9998, 9999}) {
            const uchar *line = result.constScanLine(y);
            for (int x = 0; x < Side; ++x) {
                const uchar expected = flipped ? level(x, Side - 1 - y) : uchar(255 - level(x, y));
                if (line[x] != expected)
                    QFAIL(qPrintable(QStringLiteral("pixel %1,%2 is %3, not %4").arg(x).arg(y).arg(line[x]).arg(expected)));
            }
        }
        if (peakReset)
            QVERIFY2(peakGrowthKb() < 30 * 1024, qPrintable(QStringLiteral("%1 KiB").arg(peakGrowthKb())));
    }

    void pictureFactsFollowTheFrames()
    {
        tarnby::imaging::Picture picture;
        picture.frames << tarnby::imaging::PictureFrame{sample(QStringLiteral("8-bit"), QSize(40, 30)), 0}
                       << tarnby::imaging::PictureFrame{sample(QStringLiteral("8-bit"), QSize(40, 30)), 100};
        picture.info.bitsPerPixel = 8;
        picture.info.width = 40;
        picture.info.height = 30;
        QString error;
        QVERIFY(applyToPicture(EditOperation::rotate(9000, RotateFit::KeepSize, 0), &picture, &error));
        QCOMPARE(picture.frames.at(1).image.size(), QSize(30, 40));
        QCOMPARE(picture.frames.at(1).delayMs, 100);
        QCOMPARE(picture.info.width, 30);
        QCOMPARE(picture.info.height, 40);
        QCOMPARE(picture.info.sizeInMemory, qint64(32 * 40));
        const QImage before = picture.image();
        QVERIFY(!applyToPicture(EditOperation::resize(QSize(40000, 10), Resampling::None), &picture, &error));
        QVERIFY(error.contains(QLatin1String("too large")));
        QCOMPARE(picture.image(), before);
        QCOMPARE(picture.info.width, 30);
    }
};


QTEST_GUILESS_MAIN(TestPictureEdits)
#include "tst_pictureedits.moc"
