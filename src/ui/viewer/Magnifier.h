#pragma once

#include <QImage>
#include <QWidget>

namespace tarnby::ui {

// The magnifying glass: a rectangular lens of 150 by 100 pixels that shows the
// picture under the pointer at 200 per cent, with a black one-pixel border, a
// three-dimensional edge and a crosshair. The picture view moves it so that it
// stays centred on the pointer; it lets every mouse event through to the view.
class Magnifier : public QWidget
{
    Q_OBJECT
public:
    explicit Magnifier(QWidget *parent = nullptr);

    // The picture to magnify; the image is shared, not copied.
    void setImage(const QImage &image) { m_image = image; update(); }
    // Centres the lens on viewportPos, showing the picture around picturePoint.
    void follow(QPoint viewportPos, QPointF picturePoint);
    QPointF picturePoint() const { return m_picturePoint; }
    void setBackground(const QColor &color) { m_background = color; }

protected:
    void paintEvent(QPaintEvent *event) override;

private:
    QImage m_image;
    QPointF m_picturePoint;
    QColor m_background;
};

} // namespace tarnby::ui
