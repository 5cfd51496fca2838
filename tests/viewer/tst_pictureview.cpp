#include "ui/viewer/PictureView.h"

#include <QScrollBar>
#include <QTest>

using tarnby::imaging::Picture;
using tarnby::imaging::PictureFrame;
using tarnby::ui::PictureView;
using tarnby::viewer::PaintMode;

namespace {

Picture halves(QSize size)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(Qt::blue);
    for (int y = 0; y < size.height(); ++y)
        for (int x = 0; x < size.width() / 2; ++x)
            image.setPixel(x, y, qRgb(255, 0, 0));
    Picture picture;
    picture.frames.append({image, 0});
    return picture;
}

QColor at(PictureView &view, QPoint p)
{
    return QColor(view.viewport()->grab().toImage().pixel(p));
}

} // namespace

class TestPictureView : public QObject
{
    Q_OBJECT
private slots:
    void normalAndStretchPainting();
    void scrollBarsFollowTheMode();
    void animationRunsOnItsFrameTimes();
    void largePicturePaintsInEveryMode();
};

void TestPictureView::normalAndStretchPainting()
{
    PictureView view;
    view.setFrameShape(QFrame::NoFrame);
    view.resize(400, 400);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setPicture(halves(QSize(200, 100)), {});
    QCOMPARE(at(view, QPoint(50, 50)), QColor(255, 0, 0));
    QCOMPARE(at(view, QPoint(150, 50)), QColor(0, 0, 255));
    const QColor background = view.viewport()->palette().color(QPalette::Window);
    QCOMPARE(at(view, QPoint(300, 300)), background);
    view.setPaintMode(PaintMode::Stretch);
    QCOMPARE(at(view, QPoint(100, 300)), QColor(255, 0, 0));
    QCOMPARE(at(view, QPoint(300, 300)), QColor(0, 0, 255));
    QCOMPARE(view.visiblePictureRect(), QRectF(0, 0, 200, 100));
    // In stretch mode a view point maps through the scale.
    QCOMPARE(view.mapToPicture(QPoint(200, 200)), QPointF(100, 50));
}

void TestPictureView::scrollBarsFollowTheMode()
{
    PictureView view;
    view.setFrameShape(QFrame::NoFrame);
    view.resize(300, 200);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setPicture(halves(QSize(1000, 800)), {});
    QVERIFY(view.horizontalScrollBar()->maximum() > 0);
    QTRY_COMPARE(view.horizontalScrollBar()->maximum(), 1000 - view.viewport()->width());
    QTRY_COMPARE(view.verticalScrollBar()->maximum(), 800 - view.viewport()->height());
    view.centreOn(QPointF(500, 400));
    QCOMPARE(view.visiblePictureRect().center().toPoint(), QPoint(500, 400));
    view.setPaintMode(PaintMode::Stretch);
    QCOMPARE(view.horizontalScrollBar()->maximum(), 0);
    view.setPaintMode(PaintMode::Normal);
    // A picture that fits needs no bars, even after a view too small for it.
    view.setPicture(halves(QSize(280, 180)), {});
    QTRY_COMPARE(view.horizontalScrollBar()->maximum(), 0);
    QCOMPARE(view.verticalScrollBar()->maximum(), 0);
}

void TestPictureView::animationRunsOnItsFrameTimes()
{
    Picture picture;
    for (QColor c : {QColor(Qt::red), QColor(Qt::green), QColor(Qt::blue)}) {
        QImage frame(16, 16, QImage::Format_RGB32);
        frame.fill(c);
        picture.frames.append({frame, 0});
    }
    picture.frames[0].delayMs = 40;
    picture.frames[1].delayMs = 400;
    picture.frames[2].delayMs = 40;
    PictureView view;
    view.resize(50, 50);
    view.show();
    view.setPicture(picture, {});
    QVERIFY(view.isAnimating());
    QCOMPARE(view.currentFrame(), 0);
    QTRY_COMPARE_WITH_TIMEOUT(view.currentFrame(), 1, 2000);
    QCOMPARE(view.currentFrameDelay(), picture.frames[1].delayMs);
    QTRY_COMPARE_WITH_TIMEOUT(view.currentFrame(), 2, 3000);
    QCOMPARE(view.currentFrameDelay(), picture.frames[2].delayMs);
    QTRY_COMPARE_WITH_TIMEOUT(view.currentFrame(), 0, 2000);
    // A still picture does not animate.
    view.setPicture(halves(QSize(10, 10)), {});
    QVERIFY(!view.isAnimating());
}

void TestPictureView::largePicturePaintsInEveryMode()
{
    // 40 megapixels, with the overview the document makes for it.
    QImage big(8000, 5000, QImage::Format_RGB32);
    big.fill(Qt::darkGreen);
    Picture picture;
    picture.frames.append({big, 0});
    const QImage overview = big.scaled(1024, 1024, Qt::KeepAspectRatio, Qt::FastTransformation);
    PictureView view;
    view.resize(800, 600);
    view.show();
    QVERIFY(QTest::qWaitForWindowExposed(&view));
    view.setPicture(picture, overview);
    for (int i = 0; i < 20; ++i) {
        view.horizontalScrollBar()->setValue(i * 300);
        view.viewport()->repaint();
    }
    QCOMPARE(at(view, QPoint(400, 300)), QColor(Qt::darkGreen));
    view.setPaintMode(PaintMode::Stretch);
    view.viewport()->repaint();
    QCOMPARE(at(view, QPoint(400, 300)), QColor(Qt::darkGreen));
}

QTEST_MAIN(TestPictureView)
#include "tst_pictureview.moc"
