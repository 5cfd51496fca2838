#pragma once

#include <QImage>
#include <QWidget>

namespace tarnby::ui {

// The pan window: a small overview of the whole picture with a red rectangle
// that marks the part the picture view shows. Dragging the rectangle (or
// clicking elsewhere) asks the view to show that part. Closing it with its own
// close box emits closedByUser(); the document window hides it otherwise.
class PanWindow : public QWidget
{
    Q_OBJECT
public:
    explicit PanWindow(QWidget *parent = nullptr);

    void setOverview(const QImage &overview, QSize pictureSize);
    // The visible part of the picture, in picture pixels.
    void setVisibleRect(const QRectF &pictureRect);
    QRectF visibleRect() const { return m_visible; }
    // Where the overview is drawn inside the window.
    QRectF overviewRect() const;

signals:
    // The user moved the rectangle: show the picture centred on this point.
    void panRequested(QPointF pictureCentre);
    void closedByUser();

protected:
    void paintEvent(QPaintEvent *event) override;
    void mousePressEvent(QMouseEvent *event) override;
    void mouseMoveEvent(QMouseEvent *event) override;
    void closeEvent(QCloseEvent *event) override;

private:
    void panTo(QPointF windowPos);

    QImage m_overview;
    QSize m_pictureSize;
    QRectF m_visible;
};

} // namespace tarnby::ui
