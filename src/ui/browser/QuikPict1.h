#pragma once

#include <QFutureWatcher>
#include <QImage>
#include <QScrollArea>
#include <QWidget>

class QFrame;
class QLabel;

namespace tarnby::ui {

// The picture box of the quick view ("Image1"): paint mode 0 shows the picture
// at its own size (scrollable), mode 1 stretches it to the box. A click
// toggles between them.
class QuickPictureBox : public QScrollArea
{
    Q_OBJECT
public:
    enum PaintMode { Normal = 0, Stretch = 1 };

    explicit QuickPictureBox(QWidget *parent = nullptr);
    void setImage(const QImage &image);
    QImage image() const { return m_image; }
    int paintMode() const { return m_mode; }
    void setPaintMode(int mode);

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    QLabel *m_label;
    QImage m_image;
    int m_mode = Normal;
};

// The quick view window: a fast look at one picture, caption "Quick View".
// The picture is read on a worker thread; a newer request overtakes an older
// one that has not arrived yet.
class QuikPict1 : public QWidget
{
    Q_OBJECT
public:
    explicit QuikPict1(QWidget *parent = nullptr);
    ~QuikPict1() override;

    // Loads path into Image1 and shows the window.
    void showPicture(const QString &path);
    QString path() const { return m_path; }
    bool isLoading() const { return m_watcher.isRunning(); }
    QString errorString() const { return m_error; }
    QFrame *frame() const { return m_frame; }
    QuickPictureBox *picture() const { return m_picture; }

signals:
    void pictureLoaded();

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    struct Loaded {
        QString path;
        QImage image;
        QString error;
    };

    QFrame *m_frame;
    QuickPictureBox *m_picture;
    QFutureWatcher<Loaded> m_watcher;
    QString m_path;
    QString m_error;
};

} // namespace tarnby::ui
