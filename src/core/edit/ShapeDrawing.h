#pragma once

#include <QImage>
#include <QPainterPath>
#include <QRectF>
#include <QRgb>

// Stamping a shape of the shape list (OverlayCatalogues.h) into a picture.
//
// Every code draws its family and variant as its name says, inside rect:
// squares and circles take the rect's shorter side; the others fill it. The
// suffixes name where the shape points or lies:
//   - parallelograms: the side the top (T, B: the left) edge leans toward;
//   - trapezoids: the narrow one of the two parallel sides;
//   - equilateral and isosceles triangles: the side the apex points to;
//     right triangles: the corner of the right angle;
//   - 90-degree circle and ellipse segments: the quarter kept (LT: the
//     upper left quarter, its centre at the rect's lower right corner);
//     180-degree ones the half kept; 270-degree ones the quarter cut away;
//   - arrows: the sides that carry a head.
// Codes not in the list draw nothing and give false.
namespace tarnby::edit {

enum class BandStyle {
    Raised = 0,   // light above and to the left, dark below and to the right
    Indented = 1, // the other way round
    None = 2,
};

struct ShapeStyle {
    int code = 2000;
    QRgb fill = qRgb(255, 0, 0);
    QRgb border = qRgb(0, 0, 0);
    BandStyle innerBand = BandStyle::None; // a bevel just inside the outline
    BandStyle outerBand = BandStyle::None; // a bevel just outside it
};

// The outline of the shape with that code in rect; empty for an unknown code.
QPainterPath shapePath(int code, const QRectF &rect);

// Draws the shape into picture (its fill, its border and its bands). A
// paletted or greyscale picture becomes 32-bit first, since the drawing
// brings new colours. False, with the picture untouched, for an unknown code
// or a null picture.
bool drawShape(QImage *picture, const ShapeStyle &style, const QRectF &rect);

} // namespace tarnby::edit
