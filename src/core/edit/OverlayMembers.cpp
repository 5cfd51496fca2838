#include "OverlayMembers.h"

#include <QGuiApplication>

#include <algorithm>
#include <cmath>

namespace tarnby::edit {

QFont OverlayMembers::textFont() const
{
    QFont font = QGuiApplication::font();
    if (!TEXT_FONT.isEmpty())
        font.setFamily(TEXT_FONT);
    if (TEXT_FONT_SIZE > 0)
        font.setPointSizeF(TEXT_FONT_SIZE);
    font.setBold(TEXT_FONT_BOLD);
    font.setItalic(TEXT_FONT_ITALIC);
    return font;
}

TextOverlay OverlayMembers::textOverlay() const
{
    TextOverlay overlay;
    overlay.text = DRAW_TEXT;
    overlay.effect = TEXT_STYLE;
    overlay.font = textFont();
    overlay.colour = TEXT_COLOR;
    overlay.shadow = TEXTSHADOW_COLOR;
    overlay.highlight = TEXTHIGHLIGHT_COLOR;
    overlay.rectangle = TEXTRECTANGLE_FLG;
    overlay.rectangleColour = TEXTRECTANGLE_COLOR;
    return overlay;
}

namespace {

BandStyle bandOf(qint16 style)
{
    switch (style) {
    case 0: return BandStyle::Raised;
    case 1: return BandStyle::Indented;
    default: return BandStyle::None;
    }
}

} // namespace

ShapeStyle OverlayMembers::shapeStyle() const
{
    ShapeStyle style;
    style.code = SHAPE;
    style.fill = SHAPE_COLOR;
    style.border = SHAPEBORDER_COLOR;
    style.innerBand = bandOf(SHAPE_INRBAND);
    style.outerBand = bandOf(SHAPE_OUTBAND);
    return style;
}

int shapeBoxValue(double drawingUnits)
{
    const double boxes = std::floor(drawingUnits / ShapeSizeUnit);
    // Sizes come from the boxes, so they stay far inside an int.
    return std::isfinite(boxes) ? int(std::clamp(boxes, -2147483648.0, 2147483647.0)) : 0;
}

double leadingNumber(const QString &text)
{
    int i = 0;
    const int n = int(text.size());
    while (i < n && (text.at(i) == QLatin1Char(' ') || text.at(i) == QLatin1Char('\t')))
        ++i;
    const int start = i;
    if (i < n && (text.at(i) == QLatin1Char('+') || text.at(i) == QLatin1Char('-')))
        ++i;
    bool digits = false;
    while (i < n && text.at(i).isDigit() && text.at(i).unicode() < 128) {
        ++i;
        digits = true;
    }
    if (i < n && text.at(i) == QLatin1Char('.')) {
        ++i;
        while (i < n && text.at(i).isDigit() && text.at(i).unicode() < 128) {
            ++i;
            digits = true;
        }
    }
    if (!digits)
        return 0;
    // An exponent counts only when digits follow it.
    if (i < n && (text.at(i) == QLatin1Char('e') || text.at(i) == QLatin1Char('E'))) {
        int j = i + 1;
        if (j < n && (text.at(j) == QLatin1Char('+') || text.at(j) == QLatin1Char('-')))
            ++j;
        if (j < n && text.at(j).isDigit() && text.at(j).unicode() < 128) {
            while (j < n && text.at(j).isDigit() && text.at(j).unicode() < 128)
                ++j;
            i = j;
        }
    }
    bool ok = false;
    const double value = text.mid(start, i - start).toDouble(&ok);
    return ok && std::isfinite(value) ? value : 0;
}

} // namespace tarnby::edit
