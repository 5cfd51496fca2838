#include "VectorRoutes.h"

#include <QGuiApplication>
#include <QPainter>
#include <QPainterPath>
#include <QtMath>

#include <dxflib/dl_creationadapter.h>
#include <dxflib/dl_dxf.h>

#include <cmath>
#include <map>
#include <sstream>
#include <vector>

namespace tarnby::imaging::vector {

namespace {

// A hostile drawing may list (or, through block arrays, place) millions of
// entities; beyond this many the rest is not drawn, which keeps the drawing
// to a few seconds. Smoothing is dropped for very busy drawings.
constexpr size_t MaxShapes = 200'000;
constexpr size_t MaxPathElements = 4'000'000; // about 100 MB of outline points
constexpr size_t MaxSmoothShapes = 50'000;

struct Text {
    QPointF at;
    double height = 0;
    double angle = 0; // degrees
    QString text;
};

// A block definition: its own lines and areas, drawn wherever it is inserted.
struct Block {
    QPointF base;
    std::vector<QPainterPath> paths;
    std::vector<QPolygonF> filled;
    std::vector<DL_InsertData> inserts; // blocks inside the block
};

// Collects what we draw from dxflib's events, in drawing units. Entities of
// block definitions are kept with their block and drawn where the block is
// inserted (nested up to MaxNesting deep).
// FIXME: polyline bulges are drawn straight; text inside blocks is not drawn.
class Collector : public DL_CreationAdapter
{
public:
    static constexpr int MaxNesting = 8;

    std::vector<QPainterPath> paths;
    std::vector<QPolygonF> filled;
    std::vector<Text> texts;
    std::map<std::string, Block> blocks;
    std::vector<DL_InsertData> inserts;
    QRectF extent;
    size_t shapes = 0;
    size_t elements = 0;
    bool full() const { return shapes >= MaxShapes || elements >= MaxPathElements; }

    void addBlock(const DL_BlockData &d) override
    {
        m_block = &blocks[d.name];
        m_block->base = QPointF(d.bpx, d.bpy);
    }
    void endBlock() override { m_block = nullptr; }
    void addInsert(const DL_InsertData &d) override
    {
        if (full())
            return;
        ++shapes;
        (m_block ? m_block->inserts : inserts).push_back(d);
    }

    // Places every insert of the model space, block by block.
    void expandInserts()
    {
        for (const DL_InsertData &insert : std::vector<DL_InsertData>(inserts))
            place(insert, QTransform(), 0);
    }

    void addLine(const DL_LineData &d) override
    {
        QPainterPath p;
        p.moveTo(d.x1, d.y1);
        p.lineTo(d.x2, d.y2);
        addPath(p);
    }
    void addPoint(const DL_PointData &d) override
    {
        QPainterPath p;
        p.moveTo(d.x, d.y);
        p.lineTo(d.x, d.y);
        addPath(p);
    }
    void addCircle(const DL_CircleData &d) override
    {
        if (!(d.radius > 0))
            return;
        QPainterPath p;
        p.addEllipse(QPointF(d.cx, d.cy), d.radius, d.radius);
        addPath(p);
    }
    void addArc(const DL_ArcData &d) override
    {
        if (!(d.radius > 0))
            return;
        double sweep = std::fmod(d.angle2 - d.angle1, 360.0);
        if (sweep <= 0)
            sweep += 360.0;
        const QRectF r(d.cx - d.radius, d.cy - d.radius, 2 * d.radius, 2 * d.radius);
        QPainterPath p;
        // Drawing coordinates have y up; the image flip happens at render time,
        // so angles are taken as they are (counter-clockwise in the drawing).
        p.arcMoveTo(r, -d.angle1);
        p.arcTo(r, -d.angle1, -sweep);
        addPath(p);
    }
    void addEllipse(const DL_EllipseData &d) override
    {
        const double major = std::hypot(d.mx, d.my);
        if (!(major > 0) || !(d.ratio > 0))
            return;
        const double rotation = std::atan2(d.my, d.mx);
        double a1 = d.angle1, a2 = d.angle2;
        if (a2 <= a1)
            a2 += 2 * M_PI;
        QPainterPath p;
        const int steps = 72;
        for (int i = 0; i <= steps; ++i) {
            const double t = a1 + (a2 - a1) * i / steps;
            const double x = major * std::cos(t), y = major * d.ratio * std::sin(t);
            const QPointF pt(d.cx + x * std::cos(rotation) - y * std::sin(rotation),
                             d.cy + x * std::sin(rotation) + y * std::cos(rotation));
            i == 0 ? p.moveTo(pt) : p.lineTo(pt);
        }
        addPath(p);
    }
    void addPolyline(const DL_PolylineData &d) override
    {
        finishPolyline();
        m_polyline.clear();
        m_polylineClosed = d.flags & 1;
        m_inPolyline = true;
    }
    void addVertex(const DL_VertexData &d) override
    {
        if (m_inPolyline && !full() && m_polyline.size() < qsizetype(MaxPathElements))
            m_polyline << QPointF(d.x, d.y);
    }
    void endEntity() override { finishPolyline(); }
    void endSequence() override { finishPolyline(); }
    void addSolid(const DL_SolidData &d) override
    {
        if (full())
            return;
        // SOLID corners come in the order 1, 2, 4, 3 around the outline.
        QPolygonF poly{QPointF(d.x[0], d.y[0]), QPointF(d.x[1], d.y[1]), QPointF(d.x[3], d.y[3]), QPointF(d.x[2], d.y[2])};
        ++shapes;
        if (m_block) {
            m_block->filled.push_back(poly);
            return;
        }
        grow(poly.boundingRect());
        filled.push_back(poly);
    }
    void addText(const DL_TextData &d) override
    {
        if (m_block || full() || d.text.empty())
            return;
        ++shapes;
        texts.push_back({QPointF(d.ipx, d.ipy), d.height, d.angle, QString::fromStdString(d.text)});
        grow(QRectF(d.ipx, d.ipy, 0, 0));
    }

    void finishPolyline()
    {
        if (!m_inPolyline)
            return;
        m_inPolyline = false;
        if (m_polyline.size() < 2)
            return;
        QPainterPath p;
        p.addPolygon(m_polyline);
        if (m_polylineClosed)
            p.closeSubpath();
        addPath(p);
    }

    void addPath(const QPainterPath &p)
    {
        if (full())
            return;
        const QRectF r = p.boundingRect();
        if (!std::isfinite(r.x()) || !std::isfinite(r.y()) || !std::isfinite(r.width()) || !std::isfinite(r.height()))
            return;
        ++shapes;
        elements += size_t(p.elementCount());
        if (m_block) {
            m_block->paths.push_back(p);
            return;
        }
        grow(r);
        paths.push_back(p);
    }

    void place(const DL_InsertData &insert, const QTransform &outer, int depth)
    {
        const auto found = blocks.find(insert.name);
        if (found == blocks.end() || depth >= MaxNesting)
            return;
        const Block &block = found->second;
        const int columns = qBound(1, insert.cols, 1000);
        const int rows = qBound(1, insert.rows, 1000);
        for (int row = 0; row < rows && !full(); ++row) {
            for (int column = 0; column < columns && !full(); ++column) {
                // Empty blocks that insert each other in arrays would
                // otherwise cost time without adding a shape.
                if (++m_placements > MaxShapes)
                    return;
                // Block space to drawing space: take the block's base point
                // to the origin, scale, rotate, move to the insertion point.
                QTransform t;
                t.translate(-block.base.x(), -block.base.y());
                QTransform position;
                position.scale(insert.sx == 0 ? 1 : insert.sx, insert.sy == 0 ? 1 : insert.sy);
                position.rotate(insert.angle);
                position.translate(insert.ipx + column * insert.colSp, insert.ipy + row * insert.rowSp);
                // QTransform composes left to right: point * t * position * outer.
                const QTransform total = t * position * outer;
                if (!total.isInvertible())
                    continue;
                for (const QPainterPath &p : block.paths) {
                    const QPainterPath mapped = total.map(p);
                    const QRectF r = mapped.boundingRect();
                    if (!std::isfinite(r.width()) || !std::isfinite(r.height()) || full())
                        continue;
                    ++shapes;
                    elements += size_t(mapped.elementCount());
                    grow(r);
                    paths.push_back(mapped);
                }
                for (const QPolygonF &poly : block.filled) {
                    if (full())
                        break;
                    const QPolygonF mapped = total.map(poly);
                    ++shapes;
                    grow(mapped.boundingRect());
                    filled.push_back(mapped);
                }
                for (const DL_InsertData &inner : block.inserts)
                    place(inner, total, depth + 1);
            }
        }
    }
    void grow(const QRectF &r)
    {
        // By corners rather than QRectF::united, which drops empty rectangles
        // (single points, text anchors).
        if (!m_hasExtent) {
            extent = r;
            m_hasExtent = true;
            return;
        }
        extent.setCoords(qMin(extent.left(), r.left()), qMin(extent.top(), r.top()),
                         qMax(extent.right(), r.right()), qMax(extent.bottom(), r.bottom()));
    }

private:
    bool m_hasExtent = false;
    Block *m_block = nullptr;
    size_t m_placements = 0;
    bool m_inPolyline = false;
    bool m_polylineClosed = false;
    QPolygonF m_polyline;
};

} // namespace

detail::Decoded readDxf(const QByteArray &data)
{
    Collector collector;
    {
        std::istringstream stream(data.toStdString());
        DL_Dxf dxf;
        try {
            if (!dxf.in(stream, &collector))
                return detail::failure(QStringLiteral("The drawing could not be read."));
        } catch (const std::exception &e) {
            return detail::failure(QStringLiteral("The drawing could not be read (%1).").arg(QString::fromLocal8Bit(e.what())));
        }
        collector.finishPolyline();
        collector.expandInserts();
    }
    if (collector.paths.empty() && collector.filled.empty() && collector.texts.empty())
        return detail::failure(QStringLiteral("The drawing holds no entities that can be shown."));

    QRectF extent = collector.extent;
    if (!(extent.width() > 0) && !(extent.height() > 0))
        extent.adjust(-1, -1, 1, 1);
    const double longer = qMax(extent.width(), extent.height());
    const double scale = (DefaultDrawingSide - 16) / longer;
    const int width = qBound(1, qRound(extent.width() * scale) + 16, MaxVectorSide);
    const int height = qBound(1, qRound(extent.height() * scale) + 16, MaxVectorSide);

    QImage image(width, height, QImage::Format_RGB32);
    if (image.isNull())
        return detail::failure(detail::tooLargeMessage(width, height));
    image.fill(Qt::white);
    QPainter painter(&image);
    painter.setRenderHint(QPainter::Antialiasing, collector.shapes <= MaxSmoothShapes);
    // Drawing units, y up, mapped into the image with an 8-pixel margin.
    QTransform toImage;
    toImage.translate(8, height - 8);
    toImage.scale(scale, -scale);
    toImage.translate(-extent.left(), -extent.top());
    QPen pen(Qt::black);
    pen.setCosmetic(true);
    pen.setWidthF(1.0);
    painter.setTransform(toImage);
    painter.setPen(pen);
    painter.setBrush(Qt::NoBrush);
    // Each outline is let go once drawn: the painter caches a converted copy
    // inside the path, which would otherwise stay for every shape at once.
    for (QPainterPath &p : collector.paths) {
        painter.drawPath(p);
        p = QPainterPath();
    }
    painter.setBrush(Qt::black);
    for (const QPolygonF &poly : collector.filled)
        painter.drawPolygon(poly);

    // Text needs the font database, which only a GUI application has.
    if (qobject_cast<QGuiApplication *>(QCoreApplication::instance())) {
        painter.resetTransform();
        for (const Text &t : collector.texts) {
            const double pixelHeight = t.height * scale;
            if (!(pixelHeight >= 2) || pixelHeight > MaxVectorSide)
                continue;
            const QPointF at = toImage.map(t.at);
            painter.save();
            painter.translate(at);
            painter.rotate(-t.angle);
            QFont font;
            font.setPixelSize(qRound(pixelHeight));
            painter.setFont(font);
            painter.drawText(QPointF(0, 0), t.text);
            painter.restore();
        }
    }
    painter.end();

    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
