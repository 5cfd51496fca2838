#include "ui/browser/QuikPict1.h"

#include "core/app/Twips.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QEvent>
#include <QFrame>
#include <QLabel>
#include <QMouseEvent>
#include <QPixmap>
#include <QtConcurrent>

namespace tarnby::ui {

QuickPictureBox::QuickPictureBox(QWidget *parent)
    : QScrollArea(parent)
    , m_label(new QLabel)
{
    setObjectName(QStringLiteral("Image1"));
    m_label->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_label->setBackgroundRole(QPalette::Base);
    setWidget(m_label);
    setBackgroundRole(QPalette::Dark);
    viewport()->installEventFilter(this);
    m_label->installEventFilter(this);
    setPaintMode(Normal);
}

void QuickPictureBox::setImage(const QImage &image)
{
    m_image = image;
    m_label->setPixmap(QPixmap::fromImage(image));
    setPaintMode(m_mode);
}

void QuickPictureBox::setPaintMode(int mode)
{
    m_mode = mode == Stretch ? Stretch : Normal;
    const bool stretch = m_mode == Stretch;
    m_label->setScaledContents(stretch);
    setWidgetResizable(stretch);
    if (!stretch)
        m_label->adjustSize();
}

bool QuickPictureBox::eventFilter(QObject *watched, QEvent *event)
{
    if (event->type() == QEvent::MouseButtonRelease
        && static_cast<QMouseEvent *>(event)->button() == Qt::LeftButton) {
        // A click toggles: any mode but stretch becomes stretch, stretch
        // becomes normal.
        setPaintMode(m_mode != Stretch ? Stretch : Normal);
        return true;
    }
    return QScrollArea::eventFilter(watched, event);
}

QuikPict1::QuikPict1(QWidget *parent)
    : QWidget(parent, Qt::Window)
    , m_frame(new QFrame(this))
    , m_picture(new QuickPictureBox(m_frame))
{
    setObjectName(QStringLiteral("QuikPict1"));
    setWindowTitle(QStringLiteral("Quick View"));
    m_frame->setObjectName(QStringLiteral("Frame1"));
    m_frame->setFrameShape(QFrame::Box);
    connect(&m_watcher, &QFutureWatcherBase::finished, this, [this] {
        const Loaded loaded = m_watcher.result();
        if (loaded.path != m_path)
            return; // overtaken by a newer picture
        m_error = loaded.error;
        m_picture->setImage(loaded.image);
        emit pictureLoaded();
    });
    resize(480, 400);
}

QuikPict1::~QuikPict1()
{
    m_watcher.disconnect(this);
    m_watcher.waitForFinished();
}

void QuikPict1::showPicture(const QString &path)
{
    m_path = path;
    m_error.clear();
    // A picture still being read is left to finish on its own: the watcher
    // follows the new one only, and the lambda holds nothing of ours.
    m_watcher.setFuture(QtConcurrent::run([path] {
        const imaging::LoadResult result = imaging::loadPicture(path);
        return Loaded{path, result.ok() ? result.picture.image() : QImage(), result.errorString};
    }));
    show();
    raise();
}

void QuikPict1::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    // The layout rules are in twips: the frame is 495 twips shorter and 195
    // narrower than the window, the picture 720 shorter and 465 narrower.
    const double dpi = logicalDpiY() > 0 ? logicalDpiY() : 96.0;
    auto px = [dpi](int twips) { return twipsToPixels(twips, dpi); };
    const int w = width();
    const int h = height();
    const int frameWidth = std::max(1, w - px(195));
    const int frameHeight = std::max(1, h - px(495));
    const int imageWidth = std::max(1, w - px(465));
    const int imageHeight = std::max(1, h - px(720));
    m_frame->setGeometry(px(97), px(97), frameWidth, frameHeight);
    m_picture->setGeometry((frameWidth - imageWidth) / 2, (frameHeight - imageHeight) / 2, imageWidth, imageHeight);
}

} // namespace tarnby::ui
