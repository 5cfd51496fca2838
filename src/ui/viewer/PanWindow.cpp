#include "ui/viewer/PanWindow.h"

#include "core/viewer/ViewModes.h"

#include <QCloseEvent>
#include <QMouseEvent>
#include <QPainter>

namespace tarnby::ui {

PanWindow::PanWindow(QWidget *parent)
    : QWidget(parent, Qt::Tool | Qt::WindowTitleHint | Qt::WindowSystemMenuHint | Qt::WindowCloseButtonHint)
{
    setObjectName(QStringLiteral("PanWindow"));
    setWindowTitle(QStringLiteral("Pan Window"));
    setCursor(Qt::OpenHandCursor);
}

void PanWindow::setOverview(const QImage &overview, QSize pictureSize)
{
    m_overview = overview;
    m_pictureSize = pictureSize;
    update();
}

void PanWindow::setVisibleRect(const QRectF &pictureRect)
{
    if (pictureRect == m_visible)
        return;
    m_visible = pictureRect;
    update();
}

QRectF PanWindow::overviewRect() const
{
    if (m_pictureSize.isEmpty())
        return {};
    const QSizeF fitted = QSizeF(m_pictureSize).scaled(QSizeF(size()), Qt::KeepAspectRatio);
    return QRectF(QPointF((width() - fitted.width()) / 2, (height() - fitted.height()) / 2), fitted);
}

void PanWindow::paintEvent(QPaintEvent *)
{
    QPainter p(this);
    p.fillRect(rect(), palette().color(QPalette::Dark));
    const QRectF area = overviewRect();
    if (area.isEmpty())
        return;
    p.setRenderHint(QPainter::SmoothPixmapTransform);
    p.drawImage(area, m_overview);
    const double scale = area.width() / m_pictureSize.width();
    const QRectF marked(area.topLeft() + m_visible.topLeft() * scale, m_visible.size() * scale);
    const unsigned c = viewer::PanWindowSettings::RectangleColor; // 0x00BBGGRR
    p.setPen(QPen(QColor(int(c & 0xFF), int((c >> 8) & 0xFF), int((c >> 16) & 0xFF)), 1));
    p.setBrush(Qt::NoBrush);
    p.drawRect(marked.intersected(area).adjusted(0, 0, -1, -1));
}

void PanWindow::panTo(QPointF windowPos)
{
    const QRectF area = overviewRect();
    if (area.isEmpty())
        return;
    const double scale = m_pictureSize.width() / area.width();
    emit panRequested((windowPos - area.topLeft()) * scale);
}

void PanWindow::mousePressEvent(QMouseEvent *event)
{
    if (event->button() == Qt::LeftButton)
        panTo(event->position());
}

void PanWindow::mouseMoveEvent(QMouseEvent *event)
{
    if (event->buttons() & Qt::LeftButton)
        panTo(event->position());
}

void PanWindow::closeEvent(QCloseEvent *event)
{
    event->accept();
    emit closedByUser();
}

} // namespace tarnby::ui
