#include "core/edit/OverlayCatalogues.h"
#include "core/edit/ShapeDrawing.h"

#include <QHash>
#include <QTest>

using namespace tarnby::edit;

namespace {

const QRectF Place(20, 15, 120, 90);

QImage canvas()
{
    QImage image(160, 120, QImage::Format_RGB32);
    image.fill(Qt::white);
    return image;
}

QImage drawn(int code, BandStyle inner = BandStyle::None, BandStyle outer = BandStyle::None)
{
    QImage image = canvas();
    ShapeStyle style;
    style.code = code;
    style.fill = qRgb(220, 30, 30);
    style.border = qRgb(0, 0, 160);
    style.innerBand = inner;
    style.outerBand = outer;
    drawShape(&image, style, Place);
    return image;
}

bool isFill(QRgb c)
{
    return c == qRgb(220, 30, 30);
}

bool isWhite(QRgb c)
{
    return c == qRgb(255, 255, 255);
}

int code(const char *name)
{
    return shapeCode(QString::fromLatin1(name)).value_or(-1);
}

} // namespace

class TestShapes : public QObject
{
    Q_OBJECT

private slots:
    // Equal codes give equal pixels, different codes different pixels, and
    // every shape stays within its place.
    void everyCodeDrawsItsOwnShape()
    {
        QHash<int, QImage> byCode;
        QHash<int, QString> nameOf;
        const QImage blank = canvas();
        for (const CatalogueEntry &entry : shapes()) {
            const QImage image = drawn(entry.code);
            QVERIFY2(image != blank, entry.name);
            for (int y = 0; y < image.height(); ++y)
                for (int x = 0; x < image.width(); ++x)
                    if (!Place.adjusted(-2, -2, 2, 2).contains(QPointF(x + 0.5, y + 0.5)))
                        QVERIFY2(isWhite(image.pixel(x, y)), qPrintable(QStringLiteral("%1 at %2,%3").arg(entry.name).arg(x).arg(y)));
            if (byCode.contains(entry.code)) {
                QVERIFY2(byCode.value(entry.code) == image, entry.name);
                continue;
            }
            for (auto it = byCode.cbegin(); it != byCode.cend(); ++it)
                QVERIFY2(it.value() != image, qPrintable(QStringLiteral("%1 and %2").arg(entry.name, nameOf.value(it.key()))));
            byCode.insert(entry.code, image);
            nameOf.insert(entry.code, QLatin1String(entry.name));
        }
        QCOMPARE(byCode.size(), 80); // 91 entries, 11 of them repeat a code
    }

    // Where the fill must be and where it must not, for the variants that
    // name a side or a corner. Points in the place's own terms: its corners
    // and centre, a little inside.
    void variantsPointWhereTheirNamesSay_data()
    {
        QTest::addColumn<QString>("shape");
        QTest::addColumn<QPointF>("filled");
        QTest::addColumn<QPointF>("empty");
        const QPointF lt(24, 19), rt(136, 19), lb(24, 101), rb(136, 101), centre(80, 60);
        const QPointF leftMiddle(23, 60), rightMiddle(137, 60), topMiddle(80, 17), bottomMiddle(80, 103);
        QTest::newRow("isosceles apex left") << "TRIANGLE_ISOSCELES_L" << rt << lt;
        QTest::newRow("isosceles apex top") << "TRIANGLE_ISOSCELES_T" << QPointF(30, 100) << lt;
        QTest::newRow("isosceles apex bottom") << "TRIANGLE_ISOSCELES_B" << QPointF(30, 20) << lb;
        QTest::newRow("right angle at left top") << "TRIANGLE_RIGHT_LT" << lt << rb;
        QTest::newRow("right angle at right bottom") << "TRIANGLE_RIGHT_RB" << rb << lt;
        QTest::newRow("right angle at left bottom") << "TRIANGLE_RIGHT_LB" << lb << rt;
        QTest::newRow("equilateral apex right") << "TRIANGLE_EQUILATERAL_R" << QPointF(110, 60) << QPointF(110, 22);
        QTest::newRow("trapezoid narrow top") << "TRAPEZOID_T" << lb << lt;
        QTest::newRow("trapezoid narrow left") << "TRAPEZOID_L" << rt << lt;
        QTest::newRow("ellipse quarter kept at left top") << "ELLIPSE_90_LT" << QPointF(70, 50) << lt;
        QTest::newRow("ellipse quarter kept at right bottom") << "ELLIPSE_90_RB" << QPointF(90, 70) << rb;
        QTest::newRow("ellipse half kept at the top") << "ELLIPSE_180_T" << QPointF(80, 40) << lt;
        QTest::newRow("ellipse half kept at the left") << "ELLIPSE_180_L" << QPointF(40, 60) << lt;
        QTest::newRow("ellipse quarter cut at left top") << "ELLIPSE_270_LT" << QPointF(90, 70) << QPointF(70, 50);
        QTest::newRow("ellipse quarter cut at right bottom") << "ELLIPSE_270_RB" << QPointF(70, 50) << QPointF(90, 70);
        QTest::newRow("circle keeps to the square") << "CIRCLE" << QPointF(65, 60) << QPointF(125, 60);
        QTest::newRow("arrow head left, no head right") << "ARROW_L" << leftMiddle + QPointF(3, 0) << QPointF(137, 30);
        QTest::newRow("arrow head right") << "ARROW_R" << rightMiddle - QPointF(3, 0) << QPointF(23, 30);
        QTest::newRow("arrow heads top and bottom") << "ARROW2_T_AND_B" << bottomMiddle - QPointF(0, 3) << leftMiddle;
        QTest::newRow("arrow heads left and top, none right") << "ARROW2_L_AND_T" << topMiddle + QPointF(0, 3) << rightMiddle;
        QTest::newRow("four heads") << "ARROW4_L_AND_T_AND_R_AND_B" << rightMiddle - QPointF(3, 0) << lt;
        QTest::newRow("small cross is thin") << "CROSS_SMALL" << centre << QPointF(60, 45);
        QTest::newRow("large cross is thick") << "CROSS_LARGE" << QPointF(60, 45) << lt;
        QTest::newRow("diamond leaves the corners") << "DIAMOND" << centre << lt;
        QTest::newRow("rounded rectangle leaves the corner") << "RECTANGLE_ROUNDED" << QPointF(30, 25) << QPointF(21, 16);
        QTest::newRow("rectangle fills the corner") << "RECTANGLE" << QPointF(23, 18) << QPointF(150, 60);
        QTest::newRow("parallelogram leaning left") << "PARALLELOGRAM_L" << lt << lb;
        QTest::newRow("parallelogram leaning right") << "PARALLELOGRAM_R" << lb << lt;
        QTest::newRow("line from left top to right bottom") << "LINE" << centre << lb;
        QTest::newRow("five-point star, point up") << "STAR5" << QPointF(80, 22) << QPointF(80, 100);
    }
    void variantsPointWhereTheirNamesSay()
    {
        QFETCH(QString, shape);
        QFETCH(QPointF, filled);
        QFETCH(QPointF, empty);
        const std::optional<int> shapeCodeFound = shapeCode(shape);
        QVERIFY(shapeCodeFound);
        const QImage image = drawn(*shapeCodeFound);
        QVERIFY2(isFill(image.pixel(filled.toPoint())), qPrintable(QString::number(image.pixel(filled.toPoint()), 16)));
        QVERIFY2(isWhite(image.pixel(empty.toPoint())), qPrintable(QString::number(image.pixel(empty.toPoint()), 16)));
    }

    // Raised: light along the upper left, dark along the lower right;
    // indented the other way; none leaves the fill up to the border.
    void bandStyles_data()
    {
        QTest::addColumn<bool>("inner");
        QTest::newRow("inner band") << true;
        QTest::newRow("outer band") << false;
    }
    void bandStyles()
    {
        QFETCH(bool, inner);
        const int square = code("RECTANGLE");
        const auto with = [&](BandStyle style) {
            return inner ? drawn(square, style, BandStyle::None) : drawn(square, BandStyle::None, style);
        };
        const QImage raised = with(BandStyle::Raised), indented = with(BandStyle::Indented), none = with(BandStyle::None);
        // Just inside or just outside the top edge and the bottom edge.
        const int d = inner ? 4 : -4;
        const QPoint top(80, int(Place.top()) + d), bottom(80, int(Place.bottom()) - d);
        const auto lightness = [](QRgb c) { return qRed(c) + qGreen(c) + qBlue(c); };
        QVERIFY(lightness(raised.pixel(top)) > lightness(raised.pixel(bottom)));
        QVERIFY(lightness(indented.pixel(top)) < lightness(indented.pixel(bottom)));
        QCOMPARE(none.pixel(top), inner ? qRgb(220, 30, 30) : qRgb(255, 255, 255));
        QVERIFY(raised != indented && raised != none && indented != none);
    }

    void picturesOfEveryDepthTakeAShape_data()
    {
        QTest::addColumn<QImage>("image");
        QImage base = canvas();
        QTest::newRow("1-bit") << base.convertToFormat(QImage::Format_Mono);
        QTest::newRow("8-bit") << base.convertToFormat(QImage::Format_Indexed8);
        QTest::newRow("grey") << base.convertToFormat(QImage::Format_Grayscale8);
        QTest::newRow("32-bit") << base.convertToFormat(QImage::Format_ARGB32);
    }
    void picturesOfEveryDepthTakeAShape()
    {
        QFETCH(QImage, image);
        ShapeStyle style;
        style.code = code("STAR8");
        style.fill = qRgb(10, 200, 10);
        QVERIFY(drawShape(&image, style, Place));
        QVERIFY(image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_ARGB32);
        QCOMPARE(image.pixel(80, 60), qRgb(10, 200, 10));
    }

    void unknownCodeDrawsNothing()
    {
        QImage image = canvas();
        ShapeStyle style;
        for (const int unknown : {0, 999, 1002, 6006, 7013, 9006, 11015, 12000, -5}) {
            style.code = unknown;
            QVERIFY(!drawShape(&image, style, Place));
        }
        QCOMPARE(image, canvas());
    }
};

QTEST_MAIN(TestShapes)
#include "tst_shapes.moc"
