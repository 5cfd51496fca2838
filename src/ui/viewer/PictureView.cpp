#include "ui/viewer/PictureView.h"

#include "ui/viewer/Magnifier.h"

#include <QMouseEvent>
#include <QPainter>
#include <QScrollBar>

namespace tarnby::ui {

namespace {
// A frame that names no delay shows for a tenth of a second.
constexpr int DefaultFrameDelayMs = 100;
} // namespace

PictureView::PictureView(QWidget *parent)
    : QAbstractScrollArea(parent)
{
    setObjectName(QStringLiteral("Image1"));
    viewport()->setMouseTracking(true);
    m_animation.setSingleShot(true);
    connect(&m_animation, &QTimer::timeout, this, &PictureView::nextFrame);
    m_magnifier = new Magnifier(viewport());
    m_magnifier->setBackground(viewport()->palette().color(QPalette::Window));
}

const QImage &PictureView::image() const
{
    static const QImage none;
    return m_frames.isEmpty() ? none : m_frames.at(m_frame).image;
}

QSize PictureView::pictureSize() const
{
    return m_frames.isEmpty() ? QSize() : m_frames.constFirst().image.size();
}

void PictureView::setPicture(const imaging::Picture &picture, const QImage &overview)
{
    m_animation.stop();
    m_frames = picture.frames;
    m_overview = overview;
    m_stretchCache = QImage();
    m_stretchCacheFrame = -1;
    m_frame = 0;
    showFrame(0);
    updateScrollBars();
}

void PictureView::clear()
{
    setPicture({}, {});
}

void PictureView::showFrame(int index)
{
    if (m_frames.isEmpty())
        return;
    m_frame = index % int(m_frames.size());
    m_magnifier->setImage(image());
    viewport()->update();
    if (m_frames.size() > 1) {
        const int delay = m_frames.at(m_frame).delayMs;
        m_animation.start(delay > 0 ? delay : DefaultFrameDelayMs);
    }
}

void PictureView::nextFrame()
{
    showFrame(m_frame + 1);
}

void PictureView::setPaintMode(viewer::PaintMode mode)
{
    ++m_paintModeChanges;
    if (mode == m_mode)
        return;
    m_mode = mode;
    m_stretchCache = QImage();
    updateScrollBars();
    viewport()->update();
}

void PictureView::updateScrollBars()
{
    const QSize pic = pictureSize();
    if (m_mode == viewer::PaintMode::Stretch || pic.isEmpty()) {
        horizontalScrollBar()->setRange(0, 0);
        verticalScrollBar()->setRange(0, 0);
    } else {
        // Decide from the whole area whether a bar is needed at all, so that
        // bars shown for an earlier, smaller size do not keep themselves.
        const QSize whole = maximumViewportSize();
        bool needH = pic.width() > whole.width();
        bool needV = pic.height() > whole.height();
        const int barH = horizontalScrollBar()->sizeHint().height();
        const int barV = verticalScrollBar()->sizeHint().width();
        needH = needH || (needV && pic.width() > whole.width() - barV);
        needV = needV || (needH && pic.height() > whole.height() - barH);
        const QSize view(whole.width() - (needV ? barV : 0), whole.height() - (needH ? barH : 0));
        horizontalScrollBar()->setRange(0, needH ? pic.width() - view.width() : 0);
        verticalScrollBar()->setRange(0, needV ? pic.height() - view.height() : 0);
        horizontalScrollBar()->setPageStep(view.width());
        verticalScrollBar()->setPageStep(view.height());
        horizontalScrollBar()->setSingleStep(std::max(1, view.width() / 20));
        verticalScrollBar()->setSingleStep(std::max(1, view.height() / 20));
    }
    emit visibleRectChanged(visiblePictureRect());
}

QRectF PictureView::visiblePictureRect() const
{
    const QSize pic = pictureSize();
    if (pic.isEmpty())
        return {};
    if (m_mode == viewer::PaintMode::Stretch)
        return QRectF(QPointF(0, 0), QSizeF(pic));
    const QRectF shown(QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value()),
                       QSizeF(viewport()->size()));
    return shown & QRectF(QPointF(0, 0), QSizeF(pic));
}

void PictureView::centreOn(QPointF picturePoint)
{
    if (m_mode == viewer::PaintMode::Stretch)
        return;
    horizontalScrollBar()->setValue(int(picturePoint.x() - viewport()->width() / 2.0));
    verticalScrollBar()->setValue(int(picturePoint.y() - viewport()->height() / 2.0));
}

QPointF PictureView::mapToPicture(QPoint viewportPos) const
{
    const QSize pic = pictureSize();
    if (pic.isEmpty())
        return {};
    if (m_mode == viewer::PaintMode::Stretch) {
        const QSize view = viewport()->size();
        return QPointF(viewportPos.x() * double(pic.width()) / std::max(1, view.width()),
                       viewportPos.y() * double(pic.height()) / std::max(1, view.height()));
    }
    return QPointF(viewportPos) + QPointF(horizontalScrollBar()->value(), verticalScrollBar()->value());
}

void PictureView::setPlacementPointer(bool waiting)
{
    m_placing = waiting;
    if (waiting || m_magnifierOn)
        viewport()->setCursor(Qt::CrossCursor);
    else
        viewport()->unsetCursor();
}

void PictureView::setMagnifierOn(bool on)
{
    m_magnifierOn = on;
    if (!on) {
        m_magnifier->hide();
        if (!m_placing)
            viewport()->unsetCursor();
        return;
    }
    viewport()->setCursor(Qt::CrossCursor);
    const QPoint pos = viewport()->mapFromGlobal(QCursor::pos());
    if (viewport()->rect().contains(pos)) {
        m_magnifier->follow(pos, mapToPicture(pos));
        m_magnifier->show();
        m_magnifier->raise();
    }
}

QImage PictureView::stretchedImage()
{
    const QSize target = viewport()->size();
    if (m_stretchCache.size() == target && m_stretchCacheFrame == m_frame)
        return m_stretchCache;
    // A large still picture scales from its overview when that is big enough;
    // scaling the whole picture again on every resize would stall the view.
    const bool overviewServes = m_frames.size() == 1 && !m_overview.isNull()
                                && m_overview.width() >= target.width() && m_overview.height() >= target.height();
    const QImage &source = overviewServes ? m_overview : image();
    m_stretchCache = source.scaled(target, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    m_stretchCacheFrame = m_frame;
    return m_stretchCache;
}

void PictureView::paintEvent(QPaintEvent *event)
{
    QPainter p(viewport());
    p.fillRect(event->rect(), viewport()->palette().color(QPalette::Window));
    if (m_frames.isEmpty())
        return;
    if (m_mode == viewer::PaintMode::Stretch) {
        p.drawImage(0, 0, stretchedImage());
        return;
    }
    // Only the exposed part of the picture is drawn.
    const QPoint offset(horizontalScrollBar()->value(), verticalScrollBar()->value());
    const QRect source = event->rect().translated(offset) & image().rect();
    if (!source.isEmpty())
        p.drawImage(source.topLeft() - offset, image(), source);
}

void PictureView::resizeEvent(QResizeEvent *event)
{
    QAbstractScrollArea::resizeEvent(event);
    updateScrollBars();
}

void PictureView::scrollContentsBy(int, int)
{
    viewport()->update();
    emit visibleRectChanged(visiblePictureRect());
}

bool PictureView::viewportEvent(QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease) {
        const auto *mouse = static_cast<QMouseEvent *>(event);
        const QPoint pos = mouse->position().toPoint();
        const QPointF point = mapToPicture(pos);
        const QSize pic = pictureSize();
        if (mouse->button() == Qt::LeftButton && !pic.isEmpty() && point.x() >= 0 && point.y() >= 0
            && point.x() < pic.width() && point.y() < pic.height())
            emit releasedOnPicture(point);
    }
    if (m_magnifierOn) {
        if (event->type() == QEvent::MouseMove) {
            const QPoint pos = static_cast<QMouseEvent *>(event)->position().toPoint();
            m_magnifier->follow(pos, mapToPicture(pos));
            if (!m_magnifier->isVisible()) {
                m_magnifier->show();
                m_magnifier->raise();
            }
        } else if (event->type() == QEvent::Leave) {
            m_magnifier->hide();
        }
    }
    return QAbstractScrollArea::viewportEvent(event);
}

} // namespace tarnby::ui
