#include "Fixtures.h"
#include "UiFixture.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/edit/PictureEdits.h"
#include "core/viewer/Document.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/edit/AddShape1.h"
#include "ui/edit/AddText1.h"
#include "ui/edit/AdjustDialog.h"
#include "ui/edit/NewSize1.h"
#include "ui/frame/CommandBar.h"
#include "ui/viewer/PictureDocumentView.h"
#include "ui/viewer/PictureView.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QSpinBox>
#include <QLineEdit>
#include <QListWidget>
#include <QPointer>
#include <QMutex>
#include <QProgressDialog>
#include <QThread>
#include <QPushButton>
#include <QRadioButton>
#include <QTimer>
#include <QSignalSpy>
#include <QFontMetricsF>
#include <QTest>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

QImage pattern()
{
    QImage image(45, 31, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb((x * 11) & 0xff, (y * 17) & 0xff, (x * y) & 0xff));
    return image;
}

} // namespace

class TestEditWindow : public QObject
{
    Q_OBJECT

private slots:
    void init()
    {
        m_ui = std::make_unique<UiFixture>();
        m_ui->home.createFile("Close.Txt", "Close File\r\n");
        m_frame = std::make_unique<MDIForm1>(m_ui->state, m_ui->services);
        m_frame->resize(1000, 800);
        m_frame->show();
        QVERIFY(QTest::qWaitForWindowExposed(m_frame.get()));
        m_path = m_ui->home.filePath(QStringLiteral("edit.png"));
        QVERIFY(pattern().save(m_path));
        m_window = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(m_path, viewer::kindOf(catalogue::GetFileTypeFlag(m_path))));
        QVERIFY(m_window);
        QSignalSpy shown(m_window, &ChildFrm1::documentShown);
        QVERIFY(shown.wait(60000));
    }
    void cleanup()
    {
        m_frame.reset();
        m_ui.reset();
    }

    void menuOperationsChangeThePicture_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<QImage>("expected");
        QTest::newRow("flip") << "ID_mnuFlip" << edit::flip(pattern());
        QTest::newRow("reverse") << "ID_mnuReverse" << edit::reverse(pattern());
        QTest::newRow("invert") << "ID_mnuColorInvert" << edit::invert(pattern());
    }
    void menuOperationsChangeThePicture()
    {
        QFETCH(QString, key);
        QFETCH(QImage, expected);
        QVERIFY(!m_window->document()->isModified());
        m_frame->toolClick(key);
        QCOMPARE(m_ui->responder.messageTexts(), QStringList());
        QCOMPARE(m_window->document()->picture().image(), expected);
        QVERIFY(m_window->document()->isModified());
        // The view paints the changed picture.
        auto *view = m_window->findChild<PictureView *>();
        QVERIFY(view);
        const QImage shot = view->viewport()->grab().toImage().convertToFormat(QImage::Format_RGB32);
        // The window may be smaller than the picture; its top left is enough.
        QVERIFY2(shot.width() >= 25 && shot.height() >= 25, qPrintable(QStringLiteral("%1x%2").arg(shot.width()).arg(shot.height())));
        for (const QPoint p : {QPoint(0, 0), QPoint(24, 0), QPoint(0, 24), QPoint(13, 17)})
            QCOMPARE(shot.pixel(p), expected.pixel(p));
    }

    void keysUndoAndRedo()
    {
        auto *pictureView = m_window->findChild<PictureView *>();
        QVERIFY(pictureView);
        const QImage original = m_window->document()->picture().image();
        m_frame->toolClick("ID_mnuFlip");
        m_frame->toolClick("ID_mnuColorInvert");
        const QImage edited = m_window->document()->picture().image();
        QCOMPARE(edited, edit::invert(edit::flip(original)));

        pictureView->setFocus();
        m_frame->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(m_frame.get()));
        QTest::keyClick(pictureView, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(m_window->document()->picture().image(), edit::flip(original));
        QTest::keyClick(pictureView, Qt::Key_Z, Qt::ControlModifier);
        QCOMPARE(m_window->document()->picture().image(), original);
        QTest::keyClick(pictureView, Qt::Key_Z, Qt::ControlModifier); // nothing left: no change
        QCOMPARE(m_window->document()->picture().image(), original);
        QTest::keyClick(pictureView, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QTest::keyClick(pictureView, Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
        QCOMPARE(m_window->document()->picture().image(), edited);
        QVERIFY(m_ui->responder.messageTexts().isEmpty());
    }

    // The resize dialog opens on the picture's size; accepted, the picture
    // takes the new size and the view returns to normal size.
    void resizeThroughTheDialog_data()
    {
        QTest::addColumn<bool>("accept");
        QTest::newRow("OK resizes") << true;
        QTest::newRow("Cancel changes nothing") << false;
    }
    void resizeThroughTheDialog()
    {
        QFETCH(bool, accept);
        m_frame->toolClick("ID_mnuStretchImageView");
        QString shownWidth;
        QTimer answer;
        answer.setInterval(20);
        connect(&answer, &QTimer::timeout, this, [&] {
            auto *dialog = qobject_cast<NewSize1 *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            answer.stop();
            shownWidth = dialog->findChild<QLineEdit *>("TxtWidth1")->text();
            dialog->findChild<QCheckBox *>("CHKASPECT")->setChecked(true);
            dialog->findChild<QLineEdit *>("TxtWidth1")->setText(QStringLiteral("90"));
            dialog->findChild<QPushButton *>(accept ? "OKBtn" : "CancelBtn")->click();
        });
        answer.start();
        m_frame->toolClick("ID_mnuResize");
        QCOMPARE(shownWidth, QStringLiteral("45"));
        const QImage now = m_window->document()->picture().image();
        if (accept) {
            QCOMPARE(now.size(), QSize(90, 62)); // 31 x 2, kept in proportion
            QCOMPARE(now, edit::resize(pattern(), QSize(90, 62), edit::Resampling::None));
            QVERIFY(m_window->document()->isModified());
            QVERIFY(m_frame->commandBar()->isChecked("ID_mnuNormalImageView"));
        } else {
            QCOMPARE(now, pattern());
            QVERIFY(!m_window->document()->isModified());
        }
    }

    // The adjustment dialog answered: OK applies its amount; Cancel applies
    // 0, which leaves the pixels but still marks the picture changed.
    void adjustThroughTheDialog_data()
    {
        QTest::addColumn<QString>("key");
        QTest::addColumn<bool>("accept");
        QTest::addColumn<QImage>("expected");
        QTest::newRow("brightness +1000") << "ID_mnuBrightness" << true << edit::changeBrightness(pattern(), 1000);
        QTest::newRow("brightness cancelled") << "ID_mnuBrightness" << false << pattern();
        QTest::newRow("contrast -1000") << "ID_mnuContrast" << true << edit::changeContrast(pattern(), -1000);
        QTest::newRow("rotate 90, enlarged") << "ID_mnuRotate" << true
                                             << edit::rotate(pattern(), 9000, edit::RotateFit::Enlarge, qRgb(255, 255, 255));
        QTest::newRow("rotate cancelled") << "ID_mnuRotate" << false << pattern();
    }
    void adjustThroughTheDialog()
    {
        QFETCH(QString, key);
        QFETCH(bool, accept);
        QFETCH(QImage, expected);
        m_frame->toolClick("ID_mnuStretchImageView");
        bool seen = false;
        QTimer answer;
        answer.setInterval(20);
        connect(&answer, &QTimer::timeout, this, [&] {
            auto *dialog = qobject_cast<AdjustDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            answer.stop();
            seen = true;
            if (auto *amount = dialog->findChild<QSpinBox *>("Amount"))
                amount->setValue(key == QLatin1String("ID_mnuBrightness") ? 1000 : -1000);
            if (auto *angle = dialog->findChild<QDoubleSpinBox *>("Angle"))
                angle->setValue(90);
            dialog->findChild<QPushButton *>(accept ? "OKBtn" : "CancelBtn")->click();
        });
        answer.start();
        m_frame->toolClick(key);
        QVERIFY(seen);
        QCOMPARE(m_window->document()->picture().image(), expected);
        QVERIFY(m_window->document()->isModified());
        if (key == QLatin1String("ID_mnuRotate"))
            QVERIFY(m_frame->commandBar()->isChecked("ID_mnuNormalImageView"));
    }

    void editedPictureAsksToSaveOnClose()
    {
        m_frame->toolClick("ID_mnuReverse");
        m_ui->responder.answerMessage(MessageAnswer::Yes);
        const QString target = m_ui->home.filePath(QStringLiteral("saved.png"));
        m_ui->responder.acceptFile(target);
        QPointer<ChildFrm1> guard(m_window);
        m_frame->toolClick("ID_CloseBtn");
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Do You want to Save Changes to the Picture - edit.png ?"});
        QCOMPARE(QImage(target).convertToFormat(QImage::Format_RGB32), edit::reverse(pattern()));
        QTRY_VERIFY(!guard);
    }

    // The Image menu's text and shape commands: the dialog opens with the
    // frame's commands checked; OK leaves the overlay waiting; the release of
    // the mouse over the picture draws it there, marks the picture changed,
    // clears the checks and can be undone.
    void overlayPlacedOnRelease_data()
    {
        QTest::addColumn<bool>("shape");
        QTest::newRow("text") << false;
        QTest::newRow("shape") << true;
    }
    void overlayPlacedOnRelease()
    {
        QFETCH(bool, shape);
        const QString menuKey = shape ? "ID_mnuAddShapestoPictures" : "ID_mnuAddTexttoPictures";
        const QString buttonKey = shape ? "ID_ShapesBtn" : "ID_FontBtn";
        auto *view = m_window->findChild<PictureDocumentView *>();
        auto *pictureView = m_window->findChild<PictureView *>();
        QVERIFY(view && pictureView);
        const QImage original = m_window->document()->picture().image();
        int opened = 0;
        bool checkedWhileOpen = false;
        QTimer answer;
        answer.setInterval(20);
        connect(&answer, &QTimer::timeout, this, [&] {
            QDialog *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget());
            if (!dialog)
                return;
            ++opened;
            checkedWhileOpen = m_frame->commandBar()->isChecked(menuKey) && m_frame->commandBar()->isChecked(buttonKey);
            if (auto *text = qobject_cast<AddText1 *>(dialog)) {
                text->text()->setText(QString());
                text->styles()->setCurrentRow(7); // TEXTSTYLE_NORMAL
                text->findChild<QCheckBox *>("CHKRECTANGLE")->setChecked(true);
            } else if (auto *shapes = qobject_cast<AddShape1 *>(dialog)) {
                shapes->shapes()->setCurrentRow(63); // SQUARE
                shapes->sizeBox(0)->setText("4");   // 14 by 14
                shapes->sizeBox(1)->setText("4");
                shapes->outerOption(2)->setChecked(true);
                shapes->innerOption(2)->setChecked(true);
            }
            dialog->findChild<QPushButton *>("OKBtn")->click();
        });
        answer.start();
        m_frame->toolClick(menuKey);
        answer.stop();
        QCOMPARE(opened, 1);
        QVERIFY(checkedWhileOpen);
        QVERIFY(view->DRAW_NOW_FLG);
        QCOMPARE(pictureView->viewport()->cursor().shape(), Qt::CrossCursor);
        QCOMPARE(m_window->document()->picture().image(), original); // nothing drawn yet
        view->TEXTRECTANGLE_COLOR = qRgb(255, 0, 255);
        view->SHAPE_COLOR = qRgb(0, 0, 255);
        view->SHAPEBORDER_COLOR = qRgb(0, 0, 255);

        // A release over the picture places it, its top left at the point.
        QTest::mouseRelease(pictureView->viewport(), Qt::LeftButton, {}, QPoint(3, 2));
        const QImage drawn = m_window->document()->picture().image();
        QVERIFY(m_window->document()->isModified());
        QVERIFY(!view->DRAW_NOW_FLG);
        QVERIFY(!view->PLACETEXT_FLG && !view->PLACEOBJECT_FLG);
        QVERIFY(!m_frame->commandBar()->isChecked(menuKey));
        QVERIFY(!m_frame->commandBar()->isChecked(buttonKey));
        QVERIFY(pictureView->viewport()->cursor().shape() != Qt::CrossCursor);
        if (shape) {
            QCOMPARE(drawn.pixel(10, 9), qRgb(0, 0, 255)); // inside the 14-pixel square
            QCOMPARE(drawn.pixel(30, 25), original.pixel(30, 25));
            QCOMPARE(drawn.pixel(1, 1), original.pixel(1, 1));
        } else {
            // An empty text: a rectangle 100 wide (past the picture's edge)
            // and the font's height plus 50 tall.
            const int height = int(QFontMetricsF(view->textFont()).height()) + 50;
            QCOMPARE(drawn.pixel(44, 2), qRgb(255, 0, 255));
            QCOMPARE(drawn.pixel(3, std::min(30, height)), qRgb(255, 0, 255));
            QCOMPARE(drawn.pixel(2, 1), original.pixel(2, 1));
        }
        // A second release draws nothing more.
        QTest::mouseRelease(pictureView->viewport(), Qt::LeftButton, {}, QPoint(30, 20));
        QCOMPARE(m_window->document()->picture().image(), drawn);
        view->undo();
        QCOMPARE(m_window->document()->picture().image(), original);
        view->redo();
        QCOMPARE(m_window->document()->picture().image(), drawn);
    }

    // Cancel clears the frame's checks without the click this raises
    // opening the dialog again; a release afterwards draws nothing.
    void overlayCancelled_data()
    {
        QTest::addColumn<QString>("key");
        QTest::newRow("text") << "ID_FontBtn";
        QTest::newRow("shape") << "ID_ShapesBtn";
    }
    void overlayCancelled()
    {
        QFETCH(QString, key);
        int opened = 0;
        QTimer answer;
        answer.setInterval(20);
        connect(&answer, &QTimer::timeout, this, [&] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget())) {
                ++opened;
                dialog->findChild<QPushButton *>("CancelBtn")->click();
            }
        });
        answer.start();
        m_frame->toolClick(key);
        QTest::qWait(100);
        answer.stop();
        QCOMPARE(opened, 1);
        QVERIFY(!m_frame->commandBar()->isChecked(key));
        auto *pictureView = m_window->findChild<PictureView *>();
        QTest::mouseRelease(pictureView->viewport(), Qt::LeftButton, {}, QPoint(5, 5));
        QCOMPARE(m_window->document()->picture().image(), pattern());
        QVERIFY(!m_window->document()->isModified());
    }

    // A shape chosen while a text waits takes its place: the frame checks
    // the shape commands only, and the release draws the shape.
    void shapeChosenWhileTextWaits()
    {
        auto *view = m_window->findChild<PictureDocumentView *>();
        QTimer answer;
        answer.setInterval(20);
        connect(&answer, &QTimer::timeout, this, [&] {
            if (auto *dialog = qobject_cast<QDialog *>(QApplication::activeModalWidget()))
                dialog->findChild<QPushButton *>("OKBtn")->click();
        });
        answer.start();
        m_frame->toolClick("ID_FontBtn");
        QVERIFY(m_frame->commandBar()->isChecked("ID_FontBtn"));
        m_frame->toolClick("ID_ShapesBtn");
        answer.stop();
        QCOMPARE(view->DRAWMENU, QStringLiteral("Shape"));
        QVERIFY(!m_frame->commandBar()->isChecked("ID_FontBtn"));
        QVERIFY(!m_frame->commandBar()->isChecked("ID_mnuAddTexttoPictures"));
        QVERIFY(m_frame->commandBar()->isChecked("ID_ShapesBtn"));
        QVERIFY(m_frame->commandBar()->isChecked("ID_mnuAddShapestoPictures"));
        view->SHAPE_INDEX = 63; // what was chosen stays; SQUARE drawn below
        view->SHAPE = 1000;
        view->SHAPE_COLOR = view->SHAPEBORDER_COLOR = qRgb(0, 255, 0);
        QTest::mouseRelease(m_window->findChild<PictureView *>()->viewport(), Qt::LeftButton, {}, QPoint(1, 1));
        QCOMPARE(m_window->document()->picture().image().pixel(10, 10), qRgb(0, 255, 0));
        QVERIFY(!m_frame->commandBar()->isChecked("ID_ShapesBtn"));
    }

    // An operation on a large picture shows its progress and can be
    // cancelled, from the progress window or from the hook; cancelled, the
    // picture stays as it was, unmarked, with nothing to undo.
    void largePictureProgress_data()
    {
        QTest::addColumn<QString>("cancel");
        QTest::newRow("runs to the end") << "none";
        QTest::newRow("Cancel in the progress window") << "button";
        QTest::newRow("cancel from the hook") << "hook";
    }
    void largePictureProgress()
    {
        QFETCH(QString, cancel);
        // 5000 by 3600 at 32 bits: 72 MB, over the progress bound.
        QImage large(5000, 3600, QImage::Format_RGB32);
        for (int y = 0; y < large.height(); ++y) {
            auto *row = reinterpret_cast<QRgb *>(large.scanLine(y));
            for (int x = 0; x < large.width(); ++x)
                row[x] = qRgb(x & 0xff, y & 0xff, (x + y) & 0xff);
        }
        QVERIFY(large.sizeInBytes() >= PictureDocumentView::ProgressBytes);
        const QString path = m_ui->home.filePath(QStringLiteral("large.bmp"));
        QVERIFY(large.save(path));
        auto *window = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, viewer::kindOf(catalogue::GetFileTypeFlag(path))));
        QVERIFY(window);
        QSignalSpy shown(window, &ChildFrm1::documentShown);
        QVERIFY(shown.wait(60000));
        auto *view = window->findChild<PictureDocumentView *>();
        const QImage original = window->document()->picture().image();
        QCOMPARE(original.convertToFormat(QImage::Format_RGB32), large);

        std::atomic<int> reports{0};
        std::atomic<int> highest{0};
        // Slowed, one band at a time whatever the number of threads, so that
        // the progress window shows well before the end.
        QMutex slow;
        view->setEditProgressHook([&](int permille) {
            QMutexLocker lock(&slow);
            ++reports;
            highest = std::max(highest.load(), permille);
            QThread::msleep(80);
            return cancel != QLatin1String("hook") || reports < 3;
        });
        int progressSeen = 0;
        QTimer watch;
        watch.setInterval(20);
        connect(&watch, &QTimer::timeout, this, [&] {
            auto *dialog = qobject_cast<QProgressDialog *>(QApplication::activeModalWidget());
            if (!dialog || dialog->objectName() != QLatin1String("EditProgress"))
                return;
            ++progressSeen;
            if (cancel == QLatin1String("button") && dialog->value() > 0)
                dialog->findChild<QPushButton *>()->click();
        });
        watch.start();
        m_frame->toolClick("ID_mnuColorInvert");
        watch.stop();
        QCOMPARE(m_ui->responder.messageTexts(), QStringList());
        const QImage now = window->document()->picture().image();
        if (cancel == QLatin1String("none")) {
            QVERIFY(progressSeen > 0);
            QCOMPARE(now, edit::invert(original));
            QVERIFY(window->document()->isModified());
            QCOMPARE(view->editHistory().undoCount(), 1);
            QVERIFY(highest >= 990);
        } else {
            if (cancel == QLatin1String("button"))
                QVERIFY(progressSeen > 0);
            else
                // Bands already under way on other threads still report.
                QVERIFY2(reports >= 3 && reports < 3 + QThread::idealThreadCount(), qPrintable(QString::number(reports)));
            QCOMPARE(now, original);
            QVERIFY(!window->document()->isModified());
            QCOMPARE(view->editHistory().undoCount(), 0);
            QVERIFY2(highest < 990, qPrintable(QStringLiteral("%1 reports, up to %2, progress seen %3 times").arg(reports.load()).arg(highest.load()).arg(progressSeen)));
        }
    }

    // A picture of several frames (an animated cursor) is changed as a whole:
    // every frame, and undo gives every frame back.
    void severalFramesChangedTogether()
    {
        REQUIRE_FIXTURES();
        const QString path = fixtures::path(QStringLiteral("ANI/test.ani"));
        auto *window = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, viewer::kindOf(catalogue::GetFileTypeFlag(path))));
        QVERIFY(window);
        QSignalSpy shown(window, &ChildFrm1::documentShown);
        QVERIFY(shown.wait(60000));
        auto *view = window->findChild<PictureDocumentView *>();
        const imaging::Picture original = window->document()->picture();
        QVERIFY2(original.frames.size() > 1, qPrintable(QString::number(original.frames.size())));
        m_frame->toolClick("ID_mnuReverse");
        const imaging::Picture reversed = window->document()->picture();
        QCOMPARE(reversed.frames.size(), original.frames.size());
        for (qsizetype i = 0; i < original.frames.size(); ++i) {
            QCOMPARE(reversed.frames.at(i).image, edit::reverse(original.frames.at(i).image));
            QCOMPARE(reversed.frames.at(i).delayMs, original.frames.at(i).delayMs);
        }
        view->undo();
        for (qsizetype i = 0; i < original.frames.size(); ++i)
            QCOMPARE(window->document()->picture().frames.at(i).image, original.frames.at(i).image);
        view->redo();
        QCOMPARE(window->document()->picture().frames.constLast().image, reversed.frames.constLast().image);
    }

private:
    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<MDIForm1> m_frame;
    QString m_path;
    ChildFrm1 *m_window = nullptr;
};

QTEST_MAIN(TestEditWindow)
#include "tst_editwindow.moc"
