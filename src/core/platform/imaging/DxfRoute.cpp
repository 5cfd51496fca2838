#include "core/platform/imaging/VectorRoutes.h"

#include <QFontMetricsF>
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

constexpr qsizetype MaxTextLength = 4096;
// Letters drawn by the font code cost far more than lines (turned or
// stretched text is drawn glyph by glyph as outlines): a block of long text
// inserted in a large array is cut off at this many letters.
constexpr qsizetype MaxTextLetters = 50'000;
constexpr qsizetype MaxTextLines = 256;
// Arcs of polyline bulges are drawn as at most this many straight pieces.
constexpr int MaxArcSegments = 256;

// A line or paragraph of text in drawing units. xAxis and yAxis are the
// drawing vectors of one text height along the baseline and upwards, so that
// the scale, rotation and mirroring of block inserts carry over unchanged.
struct Text {
    enum class Vertical { Baseline, Bottom, Middle, Top };
    QPointF at;
    QPointF xAxis;
    QPointF yAxis;
    QStringList lines;
    int column = 0;            // 0 left, 1 centre, 2 right of the anchor
    Vertical row = Vertical::Baseline;
    double lineSpacing = 5.0 / 3.0; // baseline to baseline, in text heights
};

// A block definition: its own lines, areas and text, drawn wherever it is
// inserted.
struct Block {
    QPointF base;
    std::vector<QPainterPath> paths;
    std::vector<QPolygonF> filled;
    std::vector<Text> texts;
    std::vector<DL_InsertData> inserts; // blocks inside the block
};

QPointF mapVector(const QTransform &t, const QPointF &v)
{
    return QPointF(t.m11() * v.x() + t.m21() * v.y(), t.m12() * v.x() + t.m22() * v.y());
}

// Paragraph text with its inline codes reduced to plain lines: "\P" breaks a
// line, "\~" is a hard space, formatting codes ("\f...;", "\H...;") and
// grouping braces are dropped, and an escaped backslash or brace stays.
QStringList paragraphLines(const QString &raw)
{
    QString out;
    out.reserve(raw.size());
    for (qsizetype i = 0; i < raw.size(); ++i) {
        const QChar c = raw.at(i);
        if (c == QLatin1Char('{') || c == QLatin1Char('}'))
            continue;
        if (c != QLatin1Char('\\') || i + 1 >= raw.size()) {
            out += c;
            continue;
        }
        const QChar code = raw.at(++i);
        if (code == QLatin1Char('P') || code == QLatin1Char('X'))
            out += QLatin1Char('\n');
        else if (code == QLatin1Char('~'))
            out += QLatin1Char(' ');
        else if (code == QLatin1Char('\\') || code == QLatin1Char('{') || code == QLatin1Char('}'))
            out += code;
        else if (QStringLiteral("ACcFfHQSTWp").contains(code)) {
            const qsizetype end = raw.indexOf(QLatin1Char(';'), i);
            i = end < 0 ? raw.size() : end;
        } // other one-letter switches (underline, overline, strike) only change the look
    }
    QStringList lines = out.split(QLatin1Char('\n'));
    if (lines.size() > MaxTextLines)
        lines.resize(MaxTextLines);
    return lines;
}

// The arc that a bulge puts between two polyline vertices, appended to path
// (whose current point is from). The bulge is the tangent of a quarter of the
// arc's included angle; a positive bulge turns counter-clockwise.
void appendBulge(QPainterPath &path, const QPointF &from, const QPointF &to, double bulge)
{
    const QPointF chord = to - from;
    const double length = std::hypot(chord.x(), chord.y());
    if (!std::isfinite(bulge) || std::abs(bulge) < 1e-9 || !(length > 0) || !std::isfinite(length)) {
        path.lineTo(to);
        return;
    }
    const double sweep = 4 * std::atan(bulge); // signed, within (-2 pi, 2 pi)
    // The centre lies on the chord's perpendicular bisector, to the left for
    // a counter-clockwise arc of less than half a turn.
    const double offset = length / 2 * (1 - bulge * bulge) / (2 * bulge);
    const QPointF left(-chord.y() / length, chord.x() / length);
    const QPointF centre = (from + to) / 2 + left * offset;
    const double radius = std::hypot(from.x() - centre.x(), from.y() - centre.y());
    if (!std::isfinite(radius) || !std::isfinite(centre.x()) || !std::isfinite(centre.y())) {
        path.lineTo(to);
        return;
    }
    const double start = std::atan2(from.y() - centre.y(), from.x() - centre.x());
    const int segments = qBound(4, int(std::ceil(std::abs(sweep) / (2 * M_PI) * MaxArcSegments)), MaxArcSegments);
    for (int i = 1; i < segments; ++i) {
        const double a = start + sweep * i / segments;
        path.lineTo(centre + QPointF(std::cos(a), std::sin(a)) * radius);
    }
    path.lineTo(to); // the exact end point, not one rounded off the circle
}

// Collects what we draw from dxflib's events, in drawing units. Entities of
// block definitions are kept with their block and drawn where the block is
// inserted (nested up to MaxNesting deep).
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
        m_bulges.clear();
        m_polylineClosed = d.flags & 1;
        m_inPolyline = true;
    }
    void addVertex(const DL_VertexData &d) override
    {
        if (m_inPolyline && !full() && m_polyline.size() < qsizetype(MaxPathElements)) {
            m_polyline << QPointF(d.x, d.y);
            m_bulges.push_back(d.bulge);
        }
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
        if (d.text.empty() || !(d.height > 0))
            return;
        Text t;
        // Justified text hangs from its alignment point; plain text stands
        // on its insertion point.
        const bool justified = d.hJustification != 0 || d.vJustification != 0;
        t.at = justified ? QPointF(d.apx, d.apy) : QPointF(d.ipx, d.ipy);
        const double width = d.xScaleFactor > 0 ? d.xScaleFactor : 1.0;
        // dxflib hands the rotation of single-line text in radians.
        t.xAxis = QPointF(std::cos(d.angle), std::sin(d.angle)) * d.height * width;
        t.yAxis = QPointF(-std::sin(d.angle), std::cos(d.angle)) * d.height;
        t.lines << QString::fromStdString(d.text).left(MaxTextLength);
        switch (d.hJustification) {
        case 1: case 4: t.column = 1; break;
        case 2: t.column = 2; break;
        default: t.column = 0; break;
        }
        if (d.hJustification == 4)
            t.row = Text::Vertical::Middle;
        else if (d.vJustification >= 1 && d.vJustification <= 3)
            t.row = Text::Vertical(d.vJustification);
        addTextItem(std::move(t));
    }
    void addMTextChunk(const std::string &chunk) override
    {
        if (m_paragraph.size() < MaxTextLength)
            m_paragraph += QString::fromStdString(chunk);
    }
    void addMText(const DL_MTextData &d) override
    {
        const QString raw = (m_paragraph + QString::fromStdString(d.text)).left(MaxTextLength);
        m_paragraph.clear();
        if (raw.isEmpty() || !(d.height > 0))
            return;
        Text t;
        t.at = QPointF(d.ipx, d.ipy);
        // A direction vector, where the entity has one, reaches dxflib's
        // angle in radians; a bare rotation comes through in degrees.
        const double angle = (d.dirx != 0 || d.diry != 0) ? std::atan2(d.diry, d.dirx) : qDegreesToRadians(d.angle);
        t.xAxis = QPointF(std::cos(angle), std::sin(angle)) * d.height;
        t.yAxis = QPointF(-std::sin(angle), std::cos(angle)) * d.height;
        t.lines = paragraphLines(raw);
        const int attachment = qBound(1, d.attachmentPoint, 9) - 1;
        t.column = attachment % 3;
        t.row = attachment / 3 == 0 ? Text::Vertical::Top
              : attachment / 3 == 1 ? Text::Vertical::Middle
                                    : Text::Vertical::Bottom;
        if (d.lineSpacingFactor > 0)
            t.lineSpacing *= qBound(0.25, d.lineSpacingFactor, 4.0);
        addTextItem(std::move(t));
    }

    void addTextItem(Text &&t)
    {
        if (full() || !finite(t) || !takeLetters(t))
            return;
        ++shapes;
        if (m_block) {
            m_block->texts.push_back(std::move(t));
            return;
        }
        growByText(t);
        texts.push_back(std::move(t));
    }

    void finishPolyline()
    {
        if (!m_inPolyline)
            return;
        m_inPolyline = false;
        if (m_polyline.size() < 2)
            return;
        QPainterPath p;
        p.moveTo(m_polyline.constFirst());
        // The bulge of a vertex bends the segment that starts there; a closed
        // polyline's last vertex bends the segment back to the first.
        const qsizetype count = m_polyline.size();
        const qsizetype segments = m_polylineClosed ? count : count - 1;
        for (qsizetype i = 0; i < segments; ++i) {
            if (p.elementCount() + elements >= MaxPathElements)
                break;
            appendBulge(p, m_polyline.at(i), m_polyline.at((i + 1) % count), m_bulges[size_t(i)]);
        }
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
                // Array columns and rows run along the insert's turned axes.
                QTransform turn;
                turn.rotate(insert.angle);
                const QPointF at = QPointF(insert.ipx, insert.ipy)
                                 + turn.map(QPointF(column * insert.colSp, row * insert.rowSp));
                const QTransform t = QTransform::fromTranslate(-block.base.x(), -block.base.y());
                const QTransform position = QTransform::fromScale(insert.sx == 0 ? 1 : insert.sx, insert.sy == 0 ? 1 : insert.sy)
                                          * turn * QTransform::fromTranslate(at.x(), at.y());
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
                for (const Text &text : block.texts) {
                    if (full())
                        break;
                    Text mapped = text;
                    mapped.at = total.map(text.at);
                    mapped.xAxis = mapVector(total, text.xAxis);
                    mapped.yAxis = mapVector(total, text.yAxis);
                    if (!finite(mapped) || !takeLetters(mapped))
                        continue;
                    ++shapes;
                    growByText(mapped);
                    texts.push_back(std::move(mapped));
                }
                for (const DL_InsertData &inner : block.inserts)
                    place(inner, total, depth + 1);
            }
        }
    }
    // Counts the text's letters against MaxTextLetters; false once spent.
    bool takeLetters(const Text &t)
    {
        qsizetype letters = 0;
        for (const QString &line : t.lines)
            letters += line.size();
        if (m_letters + letters > MaxTextLetters)
            return false;
        m_letters += letters;
        return true;
    }
    static bool finite(const Text &t)
    {
        for (const QPointF &p : {t.at, t.xAxis, t.yAxis}) {
            if (!std::isfinite(p.x()) || !std::isfinite(p.y()))
                return false;
        }
        return true;
    }
    // The extent takes in a rough box of the text (an average character is
    // taken as 0.6 text heights wide): exact sizes need the font, which the
    // layout does not have yet.
    void growByText(const Text &t)
    {
        qsizetype longest = 0;
        for (const QString &line : t.lines)
            longest = qMax(longest, line.size());
        const double width = 0.6 * double(qMin<qsizetype>(longest, 256));
        const double left = -width * t.column / 2;
        const double lines = double(t.lines.size() - 1) * t.lineSpacing;
        double bottom = 0, top = 1;
        switch (t.row) {
        case Text::Vertical::Baseline: bottom = -0.3; top = 1; break;
        case Text::Vertical::Bottom: bottom = 0; top = 1.3 + lines; break;
        case Text::Vertical::Middle: bottom = -(1 + lines) / 2; top = (1 + lines) / 2; break;
        case Text::Vertical::Top: bottom = -(1 + lines) - 0.3; top = 0; break;
        }
        QPolygonF box;
        for (const QPointF &corner : {QPointF(left, bottom), QPointF(left + width, bottom), QPointF(left + width, top),
                                      QPointF(left, top)})
            box << t.at + t.xAxis * corner.x() + t.yAxis * corner.y();
        grow(box.boundingRect());
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
    std::vector<double> m_bulges;
    QString m_paragraph; // the leading pieces of a long paragraph text
    qsizetype m_letters = 0;
};

// Draws one text item; toImage maps drawing units to image pixels. Large
// letters are drawn as outlines at a cost that grows with their area, which
// is taken from budget (in square pixels); text that would overdraw it is
// left out.
void drawText(QPainter &painter, const QTransform &toImage, const Text &t, double *budget)
{
    const QPointF at = toImage.map(t.at);
    const QPointF right = mapVector(toImage, t.xAxis);
    const QPointF up = mapVector(toImage, t.yAxis);
    const double height = std::hypot(up.x(), up.y());
    if (!(height >= 2) || height > MaxVectorSide || !(std::hypot(right.x(), right.y()) > 0))
        return;
    // Text wholly outside the picture is not laid out. The box is generous:
    // a letter is taken as one text height wide.
    qsizetype longest = 0;
    for (const QString &line : t.lines)
        longest = qMax(longest, line.size());
    const double reach = double(longest) + 1, lines = double(t.lines.size()) * t.lineSpacing + 1;
    QPolygonF box;
    for (const QPointF &corner : {QPointF(-reach, -lines), QPointF(reach, -lines), QPointF(reach, lines), QPointF(-reach, lines)})
        box << at + right * corner.x() + up * corner.y();
    if (!box.boundingRect().intersects(QRectF(0, 0, painter.device()->width(), painter.device()->height())))
        return;
    qsizetype letters = 0;
    for (const QString &line : t.lines)
        letters += line.size();
    const double cost = double(letters) * height * std::hypot(right.x(), right.y());
    if (cost > *budget)
        return;
    *budget -= cost;
    // The font is set at the text's height in pixels, and the painter maps
    // font pixels (x right, y down) onto the text's own axes, which carry any
    // rotation, stretch or mirroring.
    const int pixels = qRound(height);
    QFont font;
    font.setPixelSize(pixels);
    // Hinting fits glyphs to an upright pixel grid, which turned and scaled
    // drawing text does not have; it is also the costliest part of loading a
    // glyph.
    font.setHintingPreference(QFont::PreferNoHinting);
    painter.setFont(font);
    const QFontMetricsF metrics(font);
    painter.setTransform(QTransform(right.x() / pixels, right.y() / pixels, -up.x() / pixels, -up.y() / pixels,
                                    at.x(), at.y()));
    const double spacing = t.lineSpacing * pixels;
    const double block = pixels + double(t.lines.size() - 1) * spacing;
    double baseline = 0;
    switch (t.row) {
    case Text::Vertical::Baseline: baseline = 0; break;
    case Text::Vertical::Bottom: baseline = -double(t.lines.size() - 1) * spacing - metrics.descent(); break;
    case Text::Vertical::Middle: baseline = pixels - block / 2; break;
    case Text::Vertical::Top: baseline = pixels; break;
    }
    for (const QString &line : t.lines) {
        const double width = metrics.horizontalAdvance(line);
        painter.drawText(QPointF(-width * t.column / 2, baseline), line);
        baseline += spacing;
    }
}

// dxflib reads a line into a buffer of DL_DXF_MAXLINE bytes; a longer line
// leaves its stream failed but not at its end, and its reading loop then
// never finishes. Longer lines are cut short here, which keeps group codes
// and values paired and only shortens an over-long value.
QByteArray withShortLines(const QByteArray &data)
{
    constexpr qsizetype MaxLine = DL_DXF_MAXLINE - 24;
    const auto lineEnd = [&](qsizetype from) {
        const qsizetype end = data.indexOf('\n', from);
        return end < 0 ? data.size() : end;
    };
    bool tooLong = false;
    for (qsizetype start = 0; start < data.size() && !tooLong; start = lineEnd(start) + 1)
        tooLong = lineEnd(start) - start > MaxLine;
    if (!tooLong)
        return data;
    QByteArray out;
    out.reserve(data.size());
    for (qsizetype start = 0; start < data.size();) {
        const qsizetype end = lineEnd(start);
        out.append(data.constData() + start, qMin(end - start, MaxLine));
        if (end < data.size())
            out.append('\n');
        start = end + 1;
    }
    return out;
}

} // namespace

detail::Decoded readDxf(const QByteArray &data)
{
    Collector collector;
    {
        std::istringstream stream(withShortLines(data).toStdString());
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
        double budget = 64.0 * width * height; // the picture covered with letters many times over
        for (const Text &t : collector.texts)
            drawText(painter, toImage, t, &budget);
    }
    painter.end();

    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
