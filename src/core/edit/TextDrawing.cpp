#include "TextDrawing.h"

#include <QFontMetricsF>
#include <QPainter>
#include <QPainterPath>

#include <algorithm>
#include <cmath>
#include <optional>

namespace tarnby::edit {

namespace {

enum class Relief { Flat, Inset, Raised };

struct Effect {
    Relief relief = Relief::Flat;
    double reach = 0; // of the shadow or relief, in font sizes
};

std::optional<Effect> effectOf(int code)
{
    switch (code) {
    case 0: return Effect{Relief::Flat, 0};
    case 8: return Effect{Relief::Inset, 0.025};
    case 1: return Effect{Relief::Inset, 0.05};
    case 2: return Effect{Relief::Inset, 0.08};
    case 9: return Effect{Relief::Inset, 0.12};
    case 10: return Effect{Relief::Raised, 0.025};
    case 3: return Effect{Relief::Raised, 0.05};
    case 4: return Effect{Relief::Raised, 0.08};
    case 11: return Effect{Relief::Raised, 0.12};
    case 5: // drop shadow
    case 6: // block shadow
    case 7: // outline block
        return Effect{Relief::Flat, 0.08};
    default: return std::nullopt;
    }
}

double fontPixels(const QFont &font)
{
    return font.pixelSize() > 0 ? font.pixelSize() : QFontMetricsF(font).height();
}

} // namespace

QRectF textRectangle(const TextOverlay &overlay, QPointF at)
{
    const QFontMetricsF metrics(overlay.font);
    return QRectF(at, QSizeF(metrics.horizontalAdvance(overlay.text) + 100, metrics.height() + 50));
}

QRectF drawText(QImage *picture, const TextOverlay &overlay, QPointF at)
{
    const std::optional<Effect> effect = effectOf(overlay.effect);
    if (!effect || picture->isNull())
        return QRectF();
    const QImage::Format format = picture->format();
    if (format != QImage::Format_RGB32 && format != QImage::Format_ARGB32 && format != QImage::Format_ARGB32_Premultiplied)
        picture->convertTo(picture->hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32);

    const QRectF box = textRectangle(overlay, at);
    const QFontMetricsF metrics(overlay.font);
    const QPointF baseline(box.left() + 50, box.top() + 25 + metrics.ascent());
    QPainterPath letters;
    letters.addText(baseline, overlay.font, overlay.text);
    const double reach = std::max(1.0, std::round(fontPixels(overlay.font) * effect->reach));

    QPainter painter(picture);
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setRenderHint(QPainter::TextAntialiasing);
    if (overlay.rectangle)
        painter.fillRect(box, QColor::fromRgb(overlay.rectangleColour));
    const auto fillAt = [&](double dx, double dy, QRgb colour) {
        painter.fillPath(letters.translated(dx, dy), QColor::fromRgb(colour));
    };
    switch (overlay.effect) {
    case 5:
        fillAt(reach, reach, overlay.shadow);
        fillAt(0, 0, overlay.colour);
        break;
    case 6:
    case 7:
        for (int step = int(reach); step >= 1; --step)
            fillAt(step, step, overlay.shadow);
        if (overlay.effect == 6) {
            fillAt(0, 0, overlay.colour);
        } else {
            fillAt(0, 0, overlay.highlight);
            painter.strokePath(letters, QPen(QColor::fromRgb(overlay.colour), std::max(1.0, reach / 3)));
        }
        break;
    default:
        if (effect->relief != Relief::Flat) {
            // Light falls from the upper left: a raised letter catches it on
            // that side, a pressed-in one on the other.
            const bool raised = effect->relief == Relief::Raised;
            fillAt(-reach, -reach, raised ? overlay.highlight : overlay.shadow);
            fillAt(reach, reach, raised ? overlay.shadow : overlay.highlight);
        }
        fillAt(0, 0, overlay.colour);
        break;
    }
    return box;
}

} // namespace tarnby::edit
