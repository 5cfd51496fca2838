#include "ShapeDrawing.h"

#include <QPainter>
#include <QPainterPathStroker>
#include <QPolygonF>

#include <algorithm>
#include <cmath>
#include <vector>

namespace tarnby::edit {

namespace {

QPainterPath polygon(const QList<QPointF> &points)
{
    QPainterPath path;
    path.addPolygon(QPolygonF(points));
    path.closeSubpath();
    return path;
}

QRectF squareIn(const QRectF &r)
{
    const double side = std::min(r.width(), r.height());
    return QRectF(r.topLeft(), QSizeF(side, side));
}

// Corners of a regular polygon inscribed in the ellipse of r; angles in
// degrees, clockwise on screen from three o'clock.
QPainterPath regular(const QRectF &r, int sides, double firstDegrees)
{
    QList<QPointF> points;
    for (int i = 0; i < sides; ++i) {
        const double a = (firstDegrees + 360.0 * i / sides) * M_PI / 180.0;
        points << QPointF(r.center().x() + r.width() / 2 * std::cos(a), r.center().y() + r.height() / 2 * std::sin(a));
    }
    return polygon(points);
}

QPainterPath star(const QRectF &r, int points, double innerRatio)
{
    QList<QPointF> corners;
    for (int i = 0; i < 2 * points; ++i) {
        const double a = (-90.0 + 180.0 * i / points) * M_PI / 180.0;
        const double k = i % 2 == 0 ? 1.0 : innerRatio;
        corners << QPointF(r.center().x() + r.width() / 2 * k * std::cos(a), r.center().y() + r.height() / 2 * k * std::sin(a));
    }
    return polygon(corners);
}

// A pie of the ellipse with the given centre and radii; Qt's angles, counter-
// clockwise from three o'clock.
QPainterPath pie(QPointF centre, double rx, double ry, double start, double span)
{
    QPainterPath path(centre);
    path.arcTo(QRectF(centre.x() - rx, centre.y() - ry, 2 * rx, 2 * ry), start, span);
    path.closeSubpath();
    return path;
}

// Family 7 (on the square) and 8 (on the rect): variant 0 whole, 1 to 4 the
// quarter kept at LT, LB, RT, RB; 5 to 8 the half kept at L, R, T, B; 9 to 12
// the quarter cut away at LT, LB, RT, RB.
QPainterPath ellipseFamily(const QRectF &r, int variant)
{
    const double w = r.width(), h = r.height();
    switch (variant) {
    case 0: {
        QPainterPath path;
        path.addEllipse(r);
        return path;
    }
    case 1: return pie(r.bottomRight(), w, h, 90, 90);
    case 2: return pie(r.topRight(), w, h, 180, 90);
    case 3: return pie(r.bottomLeft(), w, h, 0, 90);
    case 4: return pie(r.topLeft(), w, h, 270, 90);
    case 5: return pie(QPointF(r.right(), r.center().y()), w, h / 2, 90, 180);
    case 6: return pie(QPointF(r.left(), r.center().y()), w, h / 2, 270, 180);
    case 7: return pie(QPointF(r.center().x(), r.bottom()), w / 2, h, 0, 180);
    case 8: return pie(QPointF(r.center().x(), r.top()), w / 2, h, 180, 180);
    case 9: return pie(r.center(), w / 2, h / 2, 180, 270);
    case 10: return pie(r.center(), w / 2, h / 2, 270, 270);
    case 11: return pie(r.center(), w / 2, h / 2, 90, 270);
    case 12: return pie(r.center(), w / 2, h / 2, 0, 270);
    default: return {};
    }
}

QPainterPath triangle(const QRectF &r, int variant)
{
    const double l = r.left(), t = r.top(), rt = r.right(), b = r.bottom();
    const double cx = r.center().x(), cy = r.center().y();
    if (variant <= 3) {
        // Equilateral, as large as the rect holds, centred in it.
        const double root3 = std::sqrt(3.0);
        const bool across = variant <= 1; // apex to the left or right
        const double side = across ? std::min(r.height(), r.width() * 2 / root3) : std::min(r.width(), r.height() * 2 / root3);
        const double depth = side * root3 / 2;
        switch (variant) {
        case 0: return polygon({{cx - depth / 2, cy}, {cx + depth / 2, cy - side / 2}, {cx + depth / 2, cy + side / 2}});
        case 1: return polygon({{cx + depth / 2, cy}, {cx - depth / 2, cy - side / 2}, {cx - depth / 2, cy + side / 2}});
        case 2: return polygon({{cx, cy - depth / 2}, {cx + side / 2, cy + depth / 2}, {cx - side / 2, cy + depth / 2}});
        default: return polygon({{cx, cy + depth / 2}, {cx + side / 2, cy - depth / 2}, {cx - side / 2, cy - depth / 2}});
        }
    }
    switch (variant) {
    case 4: return polygon({{l, cy}, {rt, t}, {rt, b}});
    case 5: return polygon({{rt, cy}, {l, t}, {l, b}});
    case 6: return polygon({{cx, t}, {rt, b}, {l, b}});
    case 7: return polygon({{cx, b}, {rt, t}, {l, t}});
    case 8: return polygon({{l, t}, {rt, t}, {l, b}});
    case 9: return polygon({{l, b}, {l, t}, {rt, b}});
    case 10: return polygon({{rt, t}, {rt, b}, {l, t}});
    case 11: return polygon({{rt, b}, {l, b}, {rt, t}});
    default: return {};
    }
}

// A smooth closed blob through points at uneven distances from the centre.
QPainterPath region(const QRectF &r)
{
    static const double reach[] = {1.0, 0.72, 0.95, 0.6, 0.9, 0.78, 1.0, 0.66};
    constexpr int count = int(std::size(reach));
    std::vector<QPointF> points;
    for (int i = 0; i < count; ++i) {
        const double a = (-90.0 + 360.0 * i / count) * M_PI / 180.0;
        points.emplace_back(r.center().x() + r.width() / 2 * reach[i] * std::cos(a),
                            r.center().y() + r.height() / 2 * reach[i] * std::sin(a));
    }
    // Through the midpoints, with the points as control points: a closed
    // quadratic spline that stays inside the rect.
    const auto mid = [&](int i) { return (points[size_t(i % count)] + points[size_t((i + 1) % count)]) / 2; };
    QPainterPath path(mid(count - 1));
    for (int i = 0; i < count; ++i)
        path.quadTo(points[size_t(i)], mid(i));
    path.closeSubpath();
    return path;
}

QPainterPath cross(const QRectF &r, double thickness)
{
    const double tw = r.width() * thickness, th = r.height() * thickness;
    QPainterPath across, down;
    across.addRect(QRectF(r.left(), r.center().y() - th / 2, r.width(), th));
    down.addRect(QRectF(r.center().x() - tw / 2, r.top(), tw, r.height()));
    return across.united(down);
}

enum Side { Left = 1, Right = 2, Top = 4, Bottom = 8 };

// Arrows: a head on each side named, joined by shafts. One head, or two
// facing away from each other, make a straight arrow across the rect; other
// sets meet in the centre.
QPainterPath arrow(const QRectF &r, int sides)
{
    const bool horizontal = (sides & ~(Left | Right)) == 0;
    const bool vertical = (sides & ~(Top | Bottom)) == 0;
    const QPointF c = r.center();
    QPainterPath path;
    const auto add = [&](Side side, double across, double headLength, double shaftFrom) {
        // In the side's own frame: along runs from the centre to the side.
        const bool isHorizontal = side == Left || side == Right;
        const double sign = side == Left || side == Top ? -1 : 1;
        const double reach = isHorizontal ? r.width() / 2 : r.height() / 2;
        const auto point = [&](double along, double off) {
            return isHorizontal ? QPointF(c.x() + sign * along, c.y() + off) : QPointF(c.x() + off, c.y() + sign * along);
        };
        const double shaft = across * 0.4;
        QList<QPointF> piece = {point(shaftFrom, -shaft / 2), point(reach - headLength, -shaft / 2),
                                point(reach - headLength, -across / 2), point(reach, 0),
                                point(reach - headLength, across / 2), point(reach - headLength, shaft / 2),
                                point(shaftFrom, shaft / 2)};
        // All pieces turn the same way round, so that where they overlap
        // their windings add up instead of cancelling out.
        double area = 0;
        for (qsizetype i = 0; i < piece.size(); ++i) {
            const QPointF a = piece.at(i), b = piece.at((i + 1) % piece.size());
            area += a.x() * b.y() - b.x() * a.y();
        }
        if (area < 0)
            std::reverse(piece.begin(), piece.end());
        path.addPath(polygon(piece));
    };
    for (const Side side : {Left, Right, Top, Bottom}) {
        if (!(sides & side))
            continue;
        const bool isHorizontal = side == Left || side == Right;
        if (horizontal || vertical) {
            const double across = isHorizontal ? r.height() : r.width();
            const double length = isHorizontal ? r.width() : r.height();
            const double head = std::min(length * 0.4, across);
            // A single head's shaft starts at the far side; two heads' shafts
            // overlap in the middle, so that they join without a seam.
            const bool single = sides == side;
            add(side, across, head, single ? -length / 2 : -across * 0.2);
        } else {
            const double s = std::min(r.width(), r.height());
            add(side, s * 0.4, s * 0.2, -s * 0.08);
        }
    }
    // The pieces overlap in the middle: one outline around all of them.
    path.setFillRule(Qt::WindingFill);
    return path.simplified();
}

} // namespace

QPainterPath shapePath(int code, const QRectF &rect)
{
    if (!rect.isValid())
        return {};
    const int family = code / 1000, variant = code % 1000;
    const QRectF &r = rect;
    const double l = r.left(), t = r.top(), rt = r.right(), b = r.bottom();
    const double dx = r.width() / 4, dy = r.height() / 4;
    QPainterPath path;
    switch (family) {
    case 1: // squares
    case 2: { // rectangles
        if (variant > 1)
            return {};
        const QRectF box = family == 1 ? squareIn(r) : r;
        const double radius = std::min(box.width(), box.height()) * 0.15;
        if (variant == 0)
            path.addRect(box);
        else
            path.addRoundedRect(box, radius, radius);
        return path;
    }
    case 3: // parallelograms: the side the top (or left) edge leans toward
        switch (variant) {
        case 0: return polygon({{l, t}, {rt - dx, t}, {rt, b}, {l + dx, b}});
        case 1: return polygon({{l + dx, t}, {rt, t}, {rt - dx, b}, {l, b}});
        case 2: return polygon({{l, t}, {rt, t + dy}, {rt, b}, {l, b - dy}});
        case 3: return polygon({{l, t + dy}, {rt, t}, {rt, b - dy}, {l, b}});
        default: return {};
        }
    case 4: // trapezoids: the narrow side
        switch (variant) {
        case 0: return polygon({{l, t + dy}, {rt, t}, {rt, b}, {l, b - dy}});
        case 1: return polygon({{l, t}, {rt, t + dy}, {rt, b - dy}, {l, b}});
        case 2: return polygon({{l + dx, t}, {rt - dx, t}, {rt, b}, {l, b}});
        case 3: return polygon({{l, t}, {rt, t}, {rt - dx, b}, {l + dx, b}});
        default: return {};
        }
    case 5:
        return triangle(r, variant);
    case 6:
        switch (variant) {
        case 0: return regular(r, 8, 22.5);
        case 1: return polygon({{r.center().x(), t}, {rt, r.center().y()}, {r.center().x(), b}, {l, r.center().y()}});
        case 2: return regular(r, 5, -90);
        case 3: return regular(r, 6, 0);
        case 4: {
            // A line has no inside: it is drawn as the band its stroke covers.
            QPainterPath line(r.topLeft());
            line.lineTo(r.bottomRight());
            QPainterPathStroker stroker;
            stroker.setWidth(std::max(3.0, std::min(r.width(), r.height()) / 12));
            stroker.setCapStyle(Qt::FlatCap);
            // Kept to the rect: the stroke's square ends would reach past it.
            QPainterPath box;
            box.addRect(r);
            return stroker.createStroke(line).intersected(box);
        }
        case 5: return region(r);
        default: return {};
        }
    case 7:
        return variant <= 12 ? ellipseFamily(squareIn(r), variant) : QPainterPath();
    case 8:
        return variant <= 12 ? ellipseFamily(r, variant) : QPainterPath();
    case 9: {
        static const int points[] = {4, 5, 8, 16, 24, 32};
        static const double inner[] = {0.38, 0.42, 0.5, 0.7, 0.75, 0.8};
        if (variant > 5)
            return {};
        return star(r, points[variant], inner[variant]);
    }
    case 10: {
        static const double thickness[] = {0.2, 1.0 / 3, 0.5};
        return variant <= 2 ? cross(r, thickness[variant]) : QPainterPath();
    }
    case 11: {
        static const int heads[] = {Left, Right, Top, Bottom, Left | Right, Top | Bottom, Left | Top, Left | Bottom,
                                    Right | Top, Right | Bottom, Left | Top | Right, Top | Right | Bottom,
                                    Left | Bottom | Right, Left | Top | Bottom, Left | Top | Right | Bottom};
        return variant <= 14 ? arrow(r, heads[variant]) : QPainterPath();
    }
    default:
        return {};
    }
}

namespace {

QColor mix(QRgb a, QRgb b, double k)
{
    return QColor(int(std::lround(qRed(a) * (1 - k) + qRed(b) * k)), int(std::lround(qGreen(a) * (1 - k) + qGreen(b) * k)),
                  int(std::lround(qBlue(a) * (1 - k) + qBlue(b) * k)));
}

} // namespace

bool drawShape(QImage *picture, const ShapeStyle &style, const QRectF &rect)
{
    const QPainterPath path = shapePath(style.code, rect);
    if (path.isEmpty() || picture->isNull())
        return false;
    const QImage::Format format = picture->format();
    if (format != QImage::Format_RGB32 && format != QImage::Format_ARGB32 && format != QImage::Format_ARGB32_Premultiplied)
        picture->convertTo(picture->hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);

    const double size = std::min(rect.width(), rect.height());
    const double band = std::max(2.0, size / 25);
    const QColor light = mix(style.fill, qRgb(255, 255, 255), 0.65);
    const QColor dark = mix(style.fill, qRgb(0, 0, 0), 0.55);

    QPainter painter(picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.fillPath(path, QColor::fromRgb(style.fill));

    // A band is the outline drawn twice, shifted up-left and down-right by
    // its width, kept inside (inner) or outside (outer) the shape: the
    // shifted outline shows on the side it moved toward.
    const auto drawBand = [&](BandStyle bandStyle, bool inside) {
        if (bandStyle == BandStyle::None)
            return;
        painter.save();
        if (inside) {
            painter.setClipPath(path);
        } else {
            QPainterPath outside;
            outside.addRect(QRectF(picture->rect()).adjusted(-1, -1, 1, 1));
            painter.setClipPath(outside.subtracted(path));
        }
        // Inside, the outline moved down-right shows along the upper left
        // edges; outside, the one moved up-left does.
        const double toward = inside ? band : -band;
        const QColor upperLeft = bandStyle == BandStyle::Raised ? light : dark;
        const QColor lowerRight = bandStyle == BandStyle::Raised ? dark : light;
        painter.setBrush(Qt::NoBrush);
        painter.setPen(QPen(upperLeft, 2 * band));
        painter.drawPath(path.translated(toward, toward));
        painter.setPen(QPen(lowerRight, 2 * band));
        painter.drawPath(path.translated(-toward, -toward));
        painter.restore();
    };
    drawBand(style.innerBand, true);
    drawBand(style.outerBand, false);

    painter.setBrush(Qt::NoBrush);
    painter.setPen(QPen(QColor::fromRgb(style.border), std::max(1.0, size / 40)));
    painter.drawPath(path);
    return true;
}

} // namespace tarnby::edit
