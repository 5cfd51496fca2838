#pragma once

#include "core/platform/imaging/PictureLayer.h"
#include "core/viewer/ViewModes.h"

#include <QAbstractScrollArea>
#include <QTimer>

namespace tarnby::ui {

class Magnifier;

// The picture view of a picture window: the picture at its own size with
// scroll bars (normal) or scaled to the view (stretch), the frames of an
// animation on their own timing, and the magnifying glass over it.
//
// Large pictures stay smooth: normal painting draws only the visible part of
// the frame, and stretched painting scales a cached copy, made from the
// document's overview when that is large enough.
class PictureView : public QAbstractScrollArea
{
    Q_OBJECT
public:
    explicit PictureView(QWidget *parent = nullptr);

    // Shows picture; overview is a reduced copy of its first frame (or a null
    // image when the picture is small). An animation starts at once.
    void setPicture(const imaging::Picture &picture, const QImage &overview);
    void clear();
    bool hasPicture() const { return !m_frames.isEmpty(); }
    QSize pictureSize() const;
    int currentFrame() const { return m_frame; }
    bool isAnimating() const { return m_animation.isActive(); }
    // How long the frame on screen stays, in milliseconds; 0 for a still.
    int currentFrameDelay() const { return m_animation.isActive() ? m_animation.interval() : 0; }

    void setPaintMode(viewer::PaintMode mode);
    viewer::PaintMode paintMode() const { return m_mode; }
    // How often the view was told to change its paint mode (for checking that
    // a mode that is already set is not set again).
    int paintModeChanges() const { return m_paintModeChanges; }

    // The part of the picture the view shows, in picture pixels.
    QRectF visiblePictureRect() const;
    // Scrolls so that the picture point is in the middle of the view.
    void centreOn(QPointF picturePoint);
    QPointF mapToPicture(QPoint viewportPos) const;

    // The cross pointer over the picture while a text or shape waits to be
    // placed; off, the pointer of the view mode comes back.
    void setPlacementPointer(bool waiting);

    void setMagnifierOn(bool on);
    bool isMagnifierOn() const { return m_magnifierOn; }
    Magnifier *magnifier() const { return m_magnifier; }

signals:
    // The visible part changed (scroll, resize, paint mode).
    void visibleRectChanged(const QRectF &pictureRect);
    // The left mouse button was released over the picture, at that picture
    // point.
    void releasedOnPicture(QPointF picturePoint);

protected:
    void paintEvent(QPaintEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    void scrollContentsBy(int dx, int dy) override;
    bool viewportEvent(QEvent *event) override;

private:
    void updateScrollBars();
    void showFrame(int index);
    void nextFrame();
    const QImage &image() const;
    QImage stretchedImage();

    QList<imaging::PictureFrame> m_frames;
    QImage m_overview;
    int m_frame = 0;
    viewer::PaintMode m_mode = viewer::PaintMode::Normal;
    int m_paintModeChanges = 0;
    QTimer m_animation;
    QImage m_stretchCache;
    int m_stretchCacheFrame = -1;
    bool m_magnifierOn = false;
    bool m_placing = false;
    Magnifier *m_magnifier = nullptr;
};

} // namespace tarnby::ui
