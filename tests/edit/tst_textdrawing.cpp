#include "core/edit/OverlayCatalogues.h"
#include "core/edit/TextDrawing.h"

#include <QFontMetricsF>
#include <QHash>
#include <QTest>

using namespace tarnby::edit;

namespace {

QImage canvas()
{
    QImage image(420, 160, QImage::Format_RGB32);
    image.fill(qRgb(200, 200, 200));
    return image;
}

TextOverlay overlay(int effect)
{
    TextOverlay o;
    o.text = QStringLiteral("Tarnby");
    o.effect = effect;
    o.font.setPixelSize(48);
    o.font.setBold(true);
    o.colour = qRgb(200, 30, 30);
    o.shadow = qRgb(20, 20, 20);
    o.highlight = qRgb(255, 255, 255);
    return o;
}

QImage written(int effect)
{
    QImage image = canvas();
    drawText(&image, overlay(effect), QPointF(10, 10));
    return image;
}

} // namespace

class TestTextDrawing : public QObject
{
    Q_OBJECT

private slots:
    // Every effect draws something of its own; the two entries that share
    // code 11 draw alike.
    void eachEffectDiffersFromNormal()
    {
        const QImage normal = written(0);
        QVERIFY(normal != canvas());
        QHash<int, QImage> byCode;
        for (const CatalogueEntry &entry : textStyles()) {
            const QImage image = written(entry.code);
            if (byCode.contains(entry.code)) {
                QVERIFY2(byCode.value(entry.code) == image, entry.name);
                continue;
            }
            if (entry.code != 0)
                QVERIFY2(image != normal, entry.name);
            for (auto it = byCode.cbegin(); it != byCode.cend(); ++it)
                QVERIFY2(it.value() != image, entry.name);
            byCode.insert(entry.code, image);
        }
        QCOMPARE(byCode.size(), 12);
        QCOMPARE(written(*textStyleCode(QStringLiteral("TEXTSTYLE_MAX"))),
                 written(*textStyleCode(QStringLiteral("TEXTSTYLE_RAISEDEXTRAHEAVY"))));
    }

    // Raised letters are lit above and to the left, pressed-in ones below
    // and to the right: the highlight's white shows on that side.
    void reliefFacesTheLight_data()
    {
        QTest::addColumn<int>("effect");
        QTest::addColumn<bool>("lightAboveLeft");
        QTest::newRow("raised heavy") << 4 << true;
        QTest::newRow("inset heavy") << 2 << false;
    }
    void reliefFacesTheLight()
    {
        QFETCH(int, effect);
        QFETCH(bool, lightAboveLeft);
        const QImage image = written(effect);
        // The first row, from the top, that has white in it, against the
        // last one: white above the letters' middle means light from above.
        int first = -1, last = -1;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) == qRgb(255, 255, 255)) {
                    if (first < 0)
                        first = y;
                    last = y;
                }
        QVERIFY(first >= 0);
        int firstInk = -1, lastInk = -1;
        for (int y = 0; y < image.height(); ++y)
            for (int x = 0; x < image.width(); ++x)
                if (image.pixel(x, y) == qRgb(200, 30, 30)) {
                    if (firstInk < 0)
                        firstInk = y;
                    lastInk = y;
                }
        if (lightAboveLeft)
            QVERIFY2(first < firstInk, qPrintable(QStringLiteral("%1 %2").arg(first).arg(firstInk)));
        else
            QVERIFY2(last > lastInk, qPrintable(QStringLiteral("%1 %2").arg(last).arg(lastInk)));
    }

    void rectangleIsTheTextPlus100By50_data()
    {
        QTest::addColumn<QString>("text");
        QTest::newRow("a word") << "Tarnby";
        QTest::newRow("empty text still has its rectangle") << "";
    }
    void rectangleIsTheTextPlus100By50()
    {
        QFETCH(QString, text);
        TextOverlay o = overlay(0);
        o.text = text;
        o.rectangle = true;
        o.rectangleColour = qRgb(0, 0, 255);
        QImage image = canvas();
        const QRectF box = drawText(&image, o, QPointF(7, 9));
        const QFontMetricsF metrics(o.font);
        QCOMPARE(box.topLeft(), QPointF(7, 9));
        QCOMPARE(box.width(), metrics.horizontalAdvance(text) + 100);
        QCOMPARE(box.height(), metrics.height() + 50);
        // The rectangle is filled to its edges and not beyond.
        QCOMPARE(image.pixel(8, 10), qRgb(0, 0, 255));
        QCOMPARE(image.pixel(int(box.right()) - 1, int(box.bottom()) - 1), qRgb(0, 0, 255));
        QCOMPARE(image.pixel(int(std::ceil(box.right())) + 1, 10), qRgb(200, 200, 200));
        QCOMPARE(image.pixel(8, int(std::ceil(box.bottom())) + 1), qRgb(200, 200, 200));
    }

    void unknownEffectDrawsNothing()
    {
        QImage image = canvas();
        QVERIFY(drawText(&image, overlay(12), QPointF(0, 0)).isEmpty());
        QVERIFY(drawText(&image, overlay(-1), QPointF(0, 0)).isEmpty());
        QCOMPARE(image, canvas());
    }
};

QTEST_MAIN(TestTextDrawing)
#include "tst_textdrawing.moc"
