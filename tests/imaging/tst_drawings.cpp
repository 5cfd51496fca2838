#include "TestDir.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/imaging/VectorRoutes.h"

#include <QTest>
#include <QtEndian>

#include <cmath>

using namespace tarnby::imaging;

namespace {

// Every test drawing has a square outline from (-FrameLow, -FrameLow) to
// (FrameHigh, FrameHigh) in drawing units; its ink in the picture tells
// where drawing units land, whatever margin and scale the renderer picks.
constexpr double FrameLow = -100, FrameHigh = 500;

QByteArray line(double x1, double y1, double x2, double y2)
{
    return QStringLiteral("0\nLINE\n8\n0\n10\n%1\n20\n%2\n11\n%3\n21\n%4\n").arg(x1).arg(y1).arg(x2).arg(y2).toLatin1();
}

QByteArray drawing(const QByteArray &blocks, const QByteArray &entities)
{
    QByteArray out;
    if (!blocks.isEmpty())
        out += "0\nSECTION\n2\nBLOCKS\n" + blocks + "0\nENDSEC\n";
    out += "0\nSECTION\n2\nENTITIES\n";
    out += line(FrameLow, FrameLow, FrameHigh, FrameLow) + line(FrameHigh, FrameLow, FrameHigh, FrameHigh)
         + line(FrameHigh, FrameHigh, FrameLow, FrameHigh) + line(FrameLow, FrameHigh, FrameLow, FrameLow);
    out += entities + "0\nENDSEC\n0\nEOF\n";
    return out;
}

bool dark(QRgb c)
{
    return qGray(c) < 160;
}

// Maps drawing units to picture pixels by the frame's ink.
struct Placement {
    QRectF frameInk;
    QPointF toImage(const QPointF &p) const
    {
        const double sx = frameInk.width() / (FrameHigh - FrameLow), sy = frameInk.height() / (FrameHigh - FrameLow);
        return QPointF(frameInk.left() + (p.x() - FrameLow) * sx, frameInk.bottom() - (p.y() - FrameLow) * sy);
    }
    static Placement of(const QImage &image)
    {
        int left = image.width(), right = -1, top = image.height(), bottom = -1;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                if (!dark(image.pixel(x, y)))
                    continue;
                left = qMin(left, x), right = qMax(right, x), top = qMin(top, y), bottom = qMax(bottom, y);
            }
        }
        return {QRectF(QPointF(left, top), QPointF(right, bottom))};
    }
};

// Whether some pixel within radius of at is dark.
bool inkNear(const QImage &image, const QPointF &at, int radius)
{
    for (int y = qRound(at.y()) - radius; y <= qRound(at.y()) + radius; ++y)
        for (int x = qRound(at.x()) - radius; x <= qRound(at.x()) + radius; ++x)
            if (image.valid(x, y) && dark(image.pixel(x, y)))
                return true;
    return false;
}

// Dark pixels within the drawing-unit rectangle r.
int inkWithin(const QImage &image, const Placement &placement, const QRectF &r)
{
    const QRectF pixels = QRectF(placement.toImage(r.topLeft()), placement.toImage(r.bottomRight())).normalized();
    int count = 0;
    for (int y = int(pixels.top()); y <= int(pixels.bottom()); ++y)
        for (int x = int(pixels.left()); x <= int(pixels.right()); ++x)
            count += image.valid(x, y) && dark(image.pixel(x, y));
    return count;
}

QImage load(const QByteArray &content, const QString &name = QStringLiteral("drawing.dxf"))
{
    TestDir dir;
    const LoadResult loaded = loadPicture(dir.createFile(name, content));
    if (!loaded.ok())
        qWarning("%s", qPrintable(loaded.errorString));
    return loaded.ok() ? loaded.picture.image() : QImage();
}

// A Windows metafile of 16-bit words: an optional placeable header, the
// metafile header and the records given (each a function and its
// parameters), closed by the end record unless told otherwise.
struct Record {
    quint16 function;
    QList<qint16> parameters;
};
QByteArray metafile(bool placeable, QList<Record> records, bool endRecord = true)
{
    QByteArray out;
    const auto word = [&](quint16 w) { out.append(char(w & 0xFF)).append(char(w >> 8)); };
    const auto dword = [&](quint32 d) { word(quint16(d & 0xFFFF)), word(quint16(d >> 16)); };
    if (placeable) {
        dword(0x9AC6CDD7);
        for (quint16 w : {0, 0, 0, 600, 300, 1200, 0, 0})
            word(w); // handle, bounds 600 x 300 units, 1200 units an inch, reserved
        quint16 sum = 0;
        for (int i = 0; i < 20; i += 2)
            sum ^= qFromLittleEndian<quint16>(out.constData() + i);
        word(sum);
    }
    if (endRecord)
        records.append(Record{0x0000, {}});
    word(1), word(9), word(0x0300), dword(0), word(0), dword(0), word(0);
    for (const Record &r : records) {
        dword(quint32(3 + r.parameters.size()));
        word(r.function);
        for (qint16 p : r.parameters)
            word(quint16(p));
    }
    return out;
}

} // namespace

class TestDrawings : public QObject
{
    Q_OBJECT

private slots:
    // A bulge bends a polyline segment into an arc: the arc's points carry
    // ink, the straight chord between the vertices does not.
    void bulgesAreArcs_data()
    {
        QTest::addColumn<QByteArray>("entity");
        QTest::addColumn<QPointF>("centre");
        QTest::addColumn<double>("radius");
        QTest::addColumn<double>("fromDegrees");
        QTest::addColumn<double>("sweepDegrees");
        QTest::addColumn<QList<QPointF>>("blank");

        QTest::newRow("light polyline, bulge 1 turns counter-clockwise")
            << QByteArray("0\nLWPOLYLINE\n8\n0\n90\n2\n70\n0\n10\n0\n20\n200\n42\n1\n10\n400\n20\n200\n")
            << QPointF(200, 200) << 200.0 << 180.0 << 180.0 << QList<QPointF>{{200, 200}, {200, 400}};
        QTest::newRow("light polyline, negative bulge turns clockwise")
            << QByteArray("0\nLWPOLYLINE\n8\n0\n90\n2\n70\n0\n10\n0\n20\n200\n42\n-1\n10\n400\n20\n200\n")
            << QPointF(200, 200) << 200.0 << 180.0 << -180.0 << QList<QPointF>{{200, 200}, {200, 0}};
        // tan(22.5 degrees): a quarter turn over a chord of 400.
        QTest::newRow("polyline vertex, quarter turn")
            << QByteArray("0\nPOLYLINE\n8\n0\n66\n1\n70\n0\n"
                          "0\nVERTEX\n8\n0\n10\n0\n20\n300\n42\n0.41421356237\n"
                          "0\nVERTEX\n8\n0\n10\n400\n20\n300\n0\nSEQEND\n")
            << QPointF(200, 500) << 282.842712 << 225.0 << 90.0 << QList<QPointF>{{200, 300}, {200, 240}};
        QTest::newRow("closed light polyline bends its closing segment too")
            << QByteArray("0\nLWPOLYLINE\n8\n0\n90\n2\n70\n1\n10\n0\n20\n200\n42\n1\n10\n400\n20\n200\n42\n1\n")
            << QPointF(200, 200) << 200.0 << 180.0 << 360.0 << QList<QPointF>{{200, 200}, {100, 200}, {300, 200}};
    }
    void bulgesAreArcs()
    {
        QFETCH(QByteArray, entity);
        QFETCH(QPointF, centre);
        QFETCH(double, radius);
        QFETCH(double, fromDegrees);
        QFETCH(double, sweepDegrees);
        QFETCH(QList<QPointF>, blank);

        const QImage image = load(drawing({}, entity));
        QVERIFY(!image.isNull());
        const Placement placement = Placement::of(image);
        for (int i = 1; i < 16; ++i) {
            const double a = qDegreesToRadians(fromDegrees + sweepDegrees * i / 16);
            const QPointF onArc = centre + QPointF(std::cos(a), std::sin(a)) * radius;
            QVERIFY2(inkNear(image, placement.toImage(onArc), 2),
                     qPrintable(QStringLiteral("no ink at (%1, %2) on the arc").arg(onArc.x()).arg(onArc.y())));
        }
        for (const QPointF &p : blank)
            QVERIFY2(!inkNear(image, placement.toImage(p), 3),
                     qPrintable(QStringLiteral("ink at (%1, %2) off the arc").arg(p.x()).arg(p.y())));
    }

    // Lines and text of a block are drawn at every insert, moved, scaled and
    // turned with it, and not where the block was defined.
    void blockFollowsItsInserts_data()
    {
        QTest::addColumn<QByteArray>("content");
        QTest::newRow("line") << line(5, 5, 55, 15);
        QTest::newRow("single-line text")
            << QByteArray("0\nTEXT\n8\n0\n10\n0\n20\n0\n40\n20\n1\nMMMM\n");
        QTest::newRow("paragraph text")
            << QByteArray("0\nMTEXT\n8\n0\n10\n0\n20\n20\n40\n20\n71\n1\n1\n{\\fArial;MMMM}\n");
    }
    void blockFollowsItsInserts()
    {
        QFETCH(QByteArray, content);
        const QByteArray block = "0\nBLOCK\n8\n0\n2\nLABEL\n70\n0\n10\n0\n20\n0\n" + content + "0\nENDBLK\n";
        // Once plainly at (100, 0); once twice as large, turned a quarter
        // turn counter-clockwise, at (400, 100): its content then runs
        // upwards and stands to the left of the insertion point.
        const QByteArray inserts = "0\nINSERT\n8\n0\n2\nLABEL\n10\n100\n20\n0\n"
                                   "0\nINSERT\n8\n0\n2\nLABEL\n10\n400\n20\n100\n41\n2\n42\n2\n50\n90\n";
        const QImage image = load(drawing(block, inserts));
        QVERIFY(!image.isNull());
        const Placement placement = Placement::of(image);
        QVERIFY(inkWithin(image, placement, QRectF(100, 2, 60, 16)) > 20);
        QVERIFY(inkWithin(image, placement, QRectF(362, 104, 36, 100)) > 20);
        // Scaled: the second copy reaches further than one plain text height
        // from its baseline.
        QVERIFY(inkWithin(image, placement, QRectF(364, 104, 12, 100)) > 0);
        QCOMPARE(inkWithin(image, placement, QRectF(0, 2, 60, 16)), 0); // the definition itself is not drawn
        QCOMPARE(inkWithin(image, placement, QRectF(200, 200, 100, 100)), 0);
    }

    // A metafile that only sets up the device context is a blank page; one
    // that is malformed or draws goes to the library.
    void metafileRecordsAreWalked_data()
    {
        QTest::addColumn<QByteArray>("data");
        QTest::addColumn<bool>("wellFormed");
        QTest::addColumn<bool>("draws");

        const Record windowExtent{0x020C, {300, 600}};
        const Record pen{0x02FA, {0, 1, 0, 0, 0}};
        const Record rectangle{0x041B, {100, 100, 0, 0}};
        QTest::newRow("set-up records only") << metafile(true, {windowExtent, pen, {0x012D, {0}}, {0x01F0, {0}}}) << true
                                             << false;
        QTest::newRow("a rectangle draws") << metafile(true, {windowExtent, rectangle}) << true << true;
        QTest::newRow("without a placeable header") << metafile(false, {windowExtent}) << true << false;
        QTest::newRow("no end record") << metafile(true, {windowExtent}, false) << false << false;
        QByteArray pastTheEnd = metafile(true, {windowExtent});
        pastTheEnd[40] = char(0x7F); // the first record claims 127 words
        QTest::newRow("record past the end") << pastTheEnd << false << false;
        QByteArray zeroSize = metafile(true, {windowExtent});
        zeroSize[40] = 0; // a record of no words would never move the walk on
        QTest::newRow("record of size zero") << zeroSize << false << false;
        QByteArray badVersion = metafile(true, {windowExtent});
        badVersion[26] = 7;
        QTest::newRow("unknown metafile version") << badVersion << false << false;
        QTest::newRow("placeable header cut short") << metafile(true, {}).left(20) << false << false;
    }
    void metafileRecordsAreWalked()
    {
        QFETCH(QByteArray, data);
        QFETCH(bool, wellFormed);
        QFETCH(bool, draws);
        const vector::WmfScan scan = vector::scanWmf(data);
        QCOMPARE(scan.wellFormed, wellFormed);
        QCOMPARE(scan.draws, draws);
    }

    void emptyMetafileIsABlankPage()
    {
        // 600 x 300 units at 1200 an inch: half an inch by a quarter, at 72 dpi.
        const QImage page = load(metafile(true, {{0x020C, {300, 600}}}), QStringLiteral("empty.wmf"));
        QCOMPARE(page.size(), QSize(36, 18));
        QCOMPARE(page.pixel(17, 9), qRgb(255, 255, 255));

        TestDir dir;
        const LoadResult unsized = loadPicture(dir.createFile(QStringLiteral("unsized.wmf"), metafile(false, {})));
        QVERIFY(!unsized.ok());
        QCOMPARE(unsized.errorString, QStringLiteral("The metafile draws nothing and does not state its size."));
    }

    // A drawing is no multi-page PCX, whatever number the save list files it
    // under.
    void drawingFormatName()
    {
        TestDir dir;
        const LoadResult loaded = loadPicture(dir.createFile(QStringLiteral("d.dxf"), drawing({}, {})));
        QVERIFY2(loaded.ok(), qPrintable(loaded.errorString));
        QCOMPARE(formatName(loaded.picture.info.formatCode), QStringLiteral("Drawing Interchange Format (DXF)"));
        QCOMPARE(formatName(58), QStringLiteral("Multipage PCX"));
    }
};

QTEST_MAIN(TestDrawings)
#include "tst_drawings.moc"
