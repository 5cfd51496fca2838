#include "ui/viewer/Magnifier.h"

#include "core/viewer/ViewModes.h"

#include <QPainter>

namespace tarnby::ui {

using Settings = viewer::MagnifierSettings;

Magnifier::Magnifier(QWidget *parent)
    : QWidget(parent)
    , m_background(palette().color(QPalette::Window))
{
    setObjectName(QStringLiteral("MagnifyingGlass"));
    setAttribute(Qt::WA_TransparentForMouseEvents);
    setFixedSize(int(Settings::Width), int(Settings::Height));
    hide();
}

void Magnifier::follow(QPoint viewportPos, QPointF picturePoint)
{
    m_picturePoint = picturePoint;
    move(viewportPos - QPoint(width() / 2, height() / 2));
    update();
}

void Magnifier::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.fillRect(rect(), m_background);
    const double zoom = Settings::ZoomPercent / 100.0;
    const QSizeF sourceSize(width() / zoom, height() / zoom);
    const QRectF source(m_picturePoint - QPointF(sourceSize.width() / 2, sourceSize.height() / 2), sourceSize);
    if (!m_image.isNull()) {
        // Only the part inside the picture is drawn; outside it the lens shows
        // the background, as the view does.
        const QRectF clipped = source & QRectF(m_image.rect());
        if (!clipped.isEmpty()) {
            const QRectF target((clipped.topLeft() - source.topLeft()) * zoom, clipped.size() * zoom);
            p.drawImage(target, m_image, clipped);
        }
    }
    const QRect r = rect();
    // Three-dimensional edge inside the black border.
    p.setPen(palette().color(QPalette::Light));
    p.drawLine(r.left() + 1, r.top() + 1, r.right() - 1, r.top() + 1);
    p.drawLine(r.left() + 1, r.top() + 1, r.left() + 1, r.bottom() - 1);
    p.setPen(palette().color(QPalette::Dark));
    p.drawLine(r.left() + 1, r.bottom() - 1, r.right() - 1, r.bottom() - 1);
    p.drawLine(r.right() - 1, r.top() + 1, r.right() - 1, r.bottom() - 1);
    p.setPen(QPen(QColor(Qt::black), Settings::BorderSize));
    p.drawRect(r.adjusted(0, 0, -1, -1));
    // Crosshair style 1: a thin cross through the centre.
    const QPoint c = r.center();
    p.drawLine(c.x(), r.top() + 2, c.x(), r.bottom() - 2);
    p.drawLine(r.left() + 2, c.y(), r.right() - 2, c.y());
}

} // namespace tarnby::ui
