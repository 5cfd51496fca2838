#pragma once

#include <QFont>
#include <QImage>
#include <QRectF>
#include <QRgb>
#include <QString>

// Writing text into a picture with one of the text effects of the text list
// (OverlayCatalogues.h). Needs a QGuiApplication (fonts).
namespace tarnby::edit {

struct TextOverlay {
    QString text;
    int effect = 0; // the effect code: 0 normal ... 11 raised extra-heavy
    QFont font;
    QRgb colour = qRgb(0, 0, 0);
    QRgb shadow = qRgb(128, 128, 128);
    QRgb highlight = qRgb(255, 255, 255);
    bool rectangle = false; // fill the text rectangle first
    QRgb rectangleColour = qRgb(255, 255, 255);
};

// The text rectangle placed at at: the drawn width of the text plus 100 and
// its drawn height plus 50, in the picture's pixels (an empty text still gets
// 100 by the font's height plus 50). The text stands in its middle.
QRectF textRectangle(const TextOverlay &overlay, QPointF at);

// Draws the text and its effect into picture at at (the rectangle's top
// left), filling the rectangle first when asked:
//   0 normal: the text in its colour;
//   5 drop shadow: the shadow colour offset down and right, under the text;
//   6 block shadow: the shadow drawn out to a solid block down and right;
//   7 outline block: a block shadow, the letters filled with the highlight
//     colour and outlined in the text colour;
//   inset (1 light, 2 heavy, 8 extra-light, 9 extra-heavy): pressed in, the
//     shadow above and to the left, the highlight below and to the right;
//   raised (3 light, 4 heavy, 10 extra-light, 11 extra-heavy): standing out,
//     the highlight above and to the left, the shadow below and to the right.
// The strengths set how far the shadow and highlight reach, in proportion to
// the font's size. A paletted or greyscale picture becomes 32-bit first.
// Returns the text rectangle; an unknown effect code or a null picture draws
// nothing and gives an empty rectangle.
QRectF drawText(QImage *picture, const TextOverlay &overlay, QPointF at);

} // namespace tarnby::edit
