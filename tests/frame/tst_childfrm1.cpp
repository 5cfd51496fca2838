#include "Fixtures.h"
#include "LocalHttpServer.h"
#include "UiFixture.h"
#include "core/app/AppState.h"
#include "core/app/Twips.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "core/viewer/SaveChoices.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/ApplicationIcon.h"
#include "ui/services/UiServices.h"
#include "ui/viewer/Magnifier.h"
#include "ui/viewer/PanWindow.h"
#include "ui/viewer/PictureDocumentView.h"
#include "ui/viewer/PictureView.h"
#include "ui/viewer/WebView.h"

#include <QAction>
#include <QApplication>
#include <QBuffer>
#include <QClipboard>
#include <QImageWriter>
#include <QFrame>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QScrollBar>
#include <QSignalSpy>
#include "ModalCloser.h"

#include <QTest>
#include <QTextEdit>

using namespace tarnby;
using namespace tarnby::ui;
using viewer::PaintMode;

namespace {

QByteArray pngBytes(QSize size, QColor color)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(color);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png;
}

// The views of a window, by kind.
PictureDocumentView *pictureDocument(ChildFrm1 *w)
{
    return qobject_cast<PictureDocumentView *>(w->documentView());
}

PictureView *pictureOf(ChildFrm1 *w)
{
    PictureDocumentView *view = pictureDocument(w);
    return view ? view->pictureView() : nullptr;
}

} // namespace

class TestChildFrm1 : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void pictureWindowReportsIntoTheFrame();
    void pictureWindowIsSizedToThePicture();
    void textWindowPlacementAndStatus();
    void kindDispatch_data();
    void kindDispatch();
    void copyRules();
    void commandsOutsideTheirKind_data();
    void commandsOutsideTheirKind();
    void viewModeEdges();
    void activationShowsEachWindowsOwnMode();
    void magnifierFollowsThePointer();
    void panWindowScrollsTheView();
    void saveQuestionOnClose_data();
    void saveQuestionOnClose();
    void saveFailureMessage();
    void saveAsDepthAndQualityOfTheShownPicture();
    void promptBeforeHandingTheFileOver();
    void failedPictureStaysOpenAndEmpty();
    void newWindowOpensInTheActiveState();
    void newWindowsStayInsideTheFrame();
    void internetPictureWaitRule();
    void internetPictureArrives();
    void webViewReachesNoNetwork();
    void releaseBeforeOpeningWithAnotherProgram_data();
    void releaseBeforeOpeningWithAnotherProgram();
    void hugeTextFileKeepsTheInterfaceAlive();
    void binaryJunkNamedTxt();
    void everyFixtureOpens_data();
    void everyFixtureOpens();
    void windowsShowTheProgramIcon();

private:
    ChildFrm1 *open(const QString &path, bool wait = true);
    QWidget *outer(ChildFrm1 *w) const { return w->parentWidget(); }

    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<MDIForm1> m_frame;
};

void TestChildFrm1::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_ui->home.createFile("Close.Txt", "Close File\r\n");
    m_frame = std::make_unique<MDIForm1>(m_ui->state, m_ui->services);
    m_frame->resize(1200, 900);
    m_frame->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_frame.get()));
}

void TestChildFrm1::cleanup()
{
    m_frame.reset();
    m_ui.reset();
}

ChildFrm1 *TestChildFrm1::open(const QString &path, bool wait)
{
    // The kind that the browser's lookup gives.
    const viewer::DocumentKind kind = viewer::kindOf(catalogue::GetFileTypeFlag(path));
    auto *w = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, kind));
    if (w && wait) {
        QSignalSpy shown(w, &ChildFrm1::documentShown);
        if (!shown.wait(60000))
            return nullptr;
    }
    return w;
}

void TestChildFrm1::pictureWindowReportsIntoTheFrame()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(w);
    QCOMPARE(w->FILE_TYPE(), QStringLiteral("I"));
    QCOMPARE(m_frame->windowTitle(), QStringLiteral("Tarnby 3.0 - hopper.png"));
    QCOMPARE(m_frame->statusPanel(0), QStringLiteral("128 x 128"));
    QCOMPARE(m_frame->statusPanel(1),
             QStringLiteral("%1 Bitmap Bits").arg(w->document()->picture().info.bitsPerPixel));
    QCOMPARE(m_frame->statusPanel(2), QStringLiteral("30,605  Bytes"));
    QVERIFY(m_frame->commandBar()->isChecked("ID_mnuNormalImageView"));
    QVERIFY(m_frame->commandBar()->isEnabled("ID_mnuMagnifyingGlass"));
    QVERIFY(pictureOf(w)->isVisible());
    const QTextEdit *text1 = w->findChild<QTextEdit *>("Text1");
    QVERIFY(!text1 || !text1->isVisible());

    // A second window takes the panels; closing it gives them back.
    ChildFrm1 *text = open(fixtures::path("TXT/testTXT.txt"));
    QVERIFY(text);
    QCOMPARE(m_frame->statusPanel(0), QString());
    QCOMPARE(m_frame->statusPanel(2), QStringLiteral("47  Bytes"));
    outer(text)->close();
    QTRY_COMPARE(m_frame->documentCount(), 1);
    QTRY_COMPARE(m_frame->statusPanel(0), QStringLiteral("128 x 128"));
    outer(w)->close();
    QTRY_COMPARE(m_frame->documentCount(), 0);
    QCOMPARE(m_frame->windowTitle(), QStringLiteral("Tarnby 3.0"));
    QCOMPARE(m_frame->statusPanel(2), QString());
}

void TestChildFrm1::pictureWindowIsSizedToThePicture()
{
    TestDir dir;
    const QString path = dir.createFile("odd.png", pngBytes(QSize(201, 97), Qt::green));
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    // The window's inner area is the picture: its outer size is the picture
    // in twips plus the non-client part, converted back to pixels.
    QCOMPARE(w->size(), QSize(201, 97));
    QCOMPARE(pictureOf(w)->pictureSize(), QSize(201, 97));

    // A picture larger than the frame is clipped to the frame's client area.
    const QString big = dir.createFile("big.png", pngBytes(QSize(3000, 2500), Qt::blue));
    ChildFrm1 *large = open(big);
    QVERIFY(large);
    const QSize area = m_frame->mdiArea()->viewport()->size();
    QVERIFY(outer(large)->width() <= area.width());
    QVERIFY(outer(large)->height() <= area.height());
    QVERIFY(pictureOf(large)->horizontalScrollBar()->maximum() > 0);
}

void TestChildFrm1::textWindowPlacementAndStatus()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("TXT/testTXT.txt"));
    QVERIFY(w);
    QCOMPARE(w->FILE_TYPE(), QStringLiteral("T"));
    const double dpiX = w->logicalDpiX();
    const double dpiY = w->logicalDpiY();
    QCOMPARE(outer(w)->pos(), QPoint(0, 0));
    QCOMPARE(outer(w)->size(), QSize(twipsToPixels(6500, dpiX), twipsToPixels(4000, dpiY)));
    auto *text1 = w->findChild<QTextEdit *>("Text1");
    QVERIFY(text1->isVisible());
    QCOMPARE(text1->pos(), QPoint(0, 0));
    // The window's size is whole pixels; the box keeps its margins to that size.
    const QSize outerPixels = outer(w)->size();
    QCOMPARE(text1->size(), QSize(twipsToPixels(std::lround(pixelsToTwips(outerPixels.width(), dpiX)) - 100, dpiX),
                                  twipsToPixels(std::lround(pixelsToTwips(outerPixels.height(), dpiY)) - 420, dpiY)));
    QCOMPARE(text1->font().family(), QStringLiteral("Arial"));
    QVERIFY(text1->toPlainText().startsWith("Test d'indexation de Txt"));
    QCOMPARE(m_frame->statusPanel(0), QString());
    QCOMPARE(m_frame->statusPanel(1), QString());
    QCOMPARE(m_frame->statusPanel(2), QStringLiteral("47  Bytes"));
    QCOMPARE(m_frame->windowTitle(), QStringLiteral("Tarnby 3.0 - testTXT.txt"));
    QVERIFY(!m_frame->commandBar()->isEnabled("ID_NormalBtn"));
    QVERIFY(m_frame->commandBar()->isEnabled("ID_CopyBtn"));

    // 420 twips or less: the box keeps its height; the width still follows.
    const int before = text1->height();
    outer(w)->resize(outer(w)->width() + 30, twipsToPixels(405, dpiY));
    QTRY_COMPARE(text1->height(), before);
    outer(w)->resize(outer(w)->width(), twipsToPixels(3000, dpiY));
    QTRY_COMPARE(text1->height(),
                 twipsToPixels(std::lround(pixelsToTwips(outer(w)->height(), dpiY)) - 420, dpiY));
}

void TestChildFrm1::kindDispatch_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("useTextDoc");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("visible");
    QTest::addColumn<bool>("webFlag");
    QTest::newRow("DOC in the web view") << "DOC/word_document.doc" << false << "T" << "WebBrowser1" << true;
    QTest::newRow("DOC in the text box with the option") << "DOC/word_document.doc" << true << "T" << "Text1" << false;
    QTest::newRow("RTF in the text box whatever the option") << "RTF/testRTF.rtf" << false << "T" << "Text1" << false;
    QTest::newRow("RTF with the option") << "RTF/testRTF.rtf" << true << "T" << "Text1" << false;
    QTest::newRow("WPS in the web view") << "WPS/word_document.wps" << false << "T" << "WebBrowser1" << true;
    QTest::newRow("INI as plain text") << "INI/normal.ini" << false << "T" << "Text1" << false;
    QTest::newRow("DBF in the table grid") << "DBF/dbase_03.dbf" << false << "D" << "MSFlexGrid1" << false;
    QTest::newRow("JPG picture") << "JPG/hopper.jpg" << false << "I" << "Image1" << false;
}

void TestChildFrm1::kindDispatch()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(bool, useTextDoc);
    QFETCH(QString, kind);
    QFETCH(QString, visible);
    QFETCH(bool, webFlag);
    m_ui->state.options.useTextDoc = useTextDoc;
    ChildFrm1 *w = open(fixtures::path(file));
    QVERIFY(w);
    QCOMPARE(w->FILE_TYPE(), kind);
    QCOMPARE(w->isWebView(), webFlag);
    // The window holds the controls of its own kind's view only, and the one
    // that shows the document is visible.
    for (const char *name : {"Image1", "Text1", "WebBrowser1", "MSFlexGrid1"}) {
        QWidget *control = w->findChild<QWidget *>(QLatin1String(name));
        if (visible == QLatin1String(name))
            QVERIFY2(control && control->isVisible(), name);
        else
            QVERIFY2(!control || !control->isVisible(), name);
    }
    if (file.endsWith(QLatin1String(".rtf"))) {
        // Rich text keeps the document's fonts rather than the box's Arial.
        const QString html = w->findChild<QTextEdit *>("Text1")->toHtml();
        QVERIFY(html.contains(QLatin1String("Times New Roman")));
    }
}

void TestChildFrm1::copyRules()
{
    REQUIRE_FIXTURES();
    QClipboard *clipboard = QGuiApplication::clipboard();
    clipboard->setText("before");
    ChildFrm1 *picture = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(picture);
    m_frame->toolClick("ID_CopyBtn");
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"You can only Copy Text for Pasting into Text Box to Add Text to a Picture"});
    QCOMPARE(clipboard->text(), QStringLiteral("before"));

    m_ui->responder.clear();
    ChildFrm1 *text = open(fixtures::path("TXT/testTXT.txt"));
    QVERIFY(text);
    auto *text1 = text->findChild<QTextEdit *>("Text1");
    QTextCursor cursor = text1->textCursor();
    cursor.setPosition(0);
    cursor.setPosition(4, QTextCursor::KeepAnchor);
    text1->setTextCursor(cursor);
    m_frame->toolClick("ID_mnuCopy");
    QCOMPARE(clipboard->text(), QStringLiteral("Test"));
    QVERIFY(m_ui->responder.messages().isEmpty());

    ChildFrm1 *web = open(fixtures::path("HTML/testHTML.html"));
    QVERIFY(web);
    web->findChild<WebView *>("WebBrowser1")->selectAll();
    m_frame->toolClick("ID_CopyBtn");
    QVERIFY(clipboard->text().contains(QLatin1String("Test Indexation Html")));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestChildFrm1::commandsOutsideTheirKind_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("keys");
    QTest::addColumn<QStringList>("messages");
    const QStringList viewModes = {"ID_NormalBtn", "ID_StretchBtn", "ID_mnuPanImage", "ID_mnuMagnifyingGlass"};
    QTest::newRow("view modes in a text window do nothing") << "TXT/testTXT.txt" << viewModes << QStringList();
    QTest::newRow("view modes in a web window do nothing") << "HTML/testHTML.html" << viewModes << QStringList();
    QTest::newRow("view modes in a table window do nothing") << "DBF/dbase_03.dbf" << viewModes << QStringList();
    QTest::newRow("shapes in a text window are not available")
        << "TXT/testTXT.txt" << QStringList{"ID_mnuAddShapestoPictures"}
        << QStringList{"Adding shapes to pictures is not available in this version of Tarnby."};
}

void TestChildFrm1::commandsOutsideTheirKind()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QStringList, keys);
    QFETCH(QStringList, messages);
    ChildFrm1 *w = open(fixtures::path(file));
    QVERIFY(w);
    for (const QString &key : keys)
        m_frame->toolClick(key);
    QCOMPARE(m_ui->responder.messageTexts(), messages);
    QVERIFY(m_ui->responder.dialogs().isEmpty());
    QCOMPARE(m_frame->documentCount(), 1);
}

void TestChildFrm1::viewModeEdges()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(w);
    CommandBar *bar = m_frame->commandBar();
    PictureView *view = pictureOf(w);

    // Normal while already normal changes nothing in the control.
    const int changes = view->paintModeChanges();
    m_frame->toolClick("ID_NormalBtn");
    QCOMPARE(view->paintModeChanges(), changes);
    QVERIFY(bar->isChecked("ID_mnuNormalImageView"));

    // Magnifying glass while stretched: back to normal size, then the glass.
    m_frame->toolClick("ID_StretchBtn");
    QCOMPARE(view->paintMode(), PaintMode::Stretch);
    QVERIFY(bar->isChecked("ID_mnuStretchImageView"));
    QVERIFY(bar->isChecked("ID_StretchBtn"));
    m_frame->toolClick("ID_mnuMagnifyingGlass");
    QCOMPARE(view->paintMode(), PaintMode::Normal);
    // The checks the window made came back as clicks; the guard kept them from
    // switching the glass straight off again.
    QVERIFY(view->isMagnifierOn());
    QVERIFY(pictureDocument(w)->viewModes().isMagnifierOn());
    QVERIFY(bar->isChecked("ID_mnuMagnifyingGlass"));
    QVERIFY(bar->isChecked("ID_mnuNormalImageView"));
    QVERIFY(bar->isChecked("ID_NormalBtn"));

    // Stretch while the glass is on: the glass stops first.
    m_frame->toolClick("ID_mnuStretchImageView");
    QVERIFY(bar->isChecked("ID_StretchBtn"));
    m_frame->toolClick("ID_StretchBtn");
    QVERIFY(!view->isMagnifierOn());
    QVERIFY(!bar->isChecked("ID_mnuMagnifyingGlass"));
    QCOMPARE(view->paintMode(), PaintMode::Stretch);

    // Pan window while the glass is on: the glass stops and the pan window
    // opens at the window's left edge plus 100 in both directions.
    m_frame->toolClick("ID_mnuMagnifyingGlass");
    QVERIFY(view->isMagnifierOn());
    m_frame->toolClick("ID_mnuPanImage");
    QVERIFY(!view->isMagnifierOn());
    QVERIFY(!bar->isChecked("ID_mnuMagnifyingGlass"));
    QVERIFY(bar->isChecked("ID_mnuPanImage"));
    PanWindow *pan = pictureDocument(w)->panWindow();
    QVERIFY(pan);
    QVERIFY(pan->isVisible());
    QCOMPARE(pan->windowTitle(), QStringLiteral("Pan Window"));
    const int left = outer(w)->x();
    const QPoint origin = outer(w)->parentWidget()->mapToGlobal(QPoint(0, 0));
    QCOMPARE(pan->geometry(), QRect(origin + QPoint(left + 100, left + 100), QSize(150, 200)));

    // The pan window closed with its own box clears the frame's check.
    pan->close();
    QVERIFY(!bar->isChecked("ID_mnuPanImage"));
    QVERIFY(!pictureDocument(w)->viewModes().isPanWindowShown());

    // Closing the window ends the glass with it.
    m_frame->toolClick("ID_mnuMagnifyingGlass");
    QVERIFY(view->isMagnifierOn());
    QPointer<ChildFrm1> guard(w);
    m_frame->toolClick("ID_CloseBtn");
    QTRY_VERIFY(!guard);
}

void TestChildFrm1::activationShowsEachWindowsOwnMode()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *first = open(fixtures::path("PNG/hopper.png"));
    ChildFrm1 *second = open(fixtures::path("JPG/hopper.jpg"));
    QVERIFY(first && second);
    CommandBar *bar = m_frame->commandBar();
    m_frame->toolClick("ID_StretchBtn");
    m_frame->toolClick("ID_mnuPanImage");
    QCOMPARE(pictureOf(second)->paintMode(), PaintMode::Stretch);
    QVERIFY(pictureDocument(second)->viewModes().isPanWindowShown());

    m_frame->toolClick("WindowList", "hopper.png");
    QTRY_COMPARE(m_frame->activeDocumentWidget(), first);
    QVERIFY(bar->isChecked("ID_mnuNormalImageView"));
    QVERIFY(bar->isChecked("ID_NormalBtn"));
    QVERIFY(!bar->isChecked("ID_mnuPanImage"));
    QCOMPARE(m_frame->statusPanel(2), QStringLiteral("30,605  Bytes"));
    // Showing the first window's state ran nothing on either window.
    QCOMPARE(pictureOf(first)->paintMode(), PaintMode::Normal);
    QVERIFY(!pictureDocument(first)->viewModes().isPanWindowShown());
    QCOMPARE(pictureOf(second)->paintMode(), PaintMode::Stretch);
    QVERIFY(pictureDocument(second)->viewModes().isPanWindowShown());

    m_frame->toolClick("WindowList", "hopper.jpg");
    QTRY_COMPARE(m_frame->activeDocumentWidget(), second);
    QVERIFY(bar->isChecked("ID_mnuStretchImageView"));
    QVERIFY(bar->isChecked("ID_mnuPanImage"));
    QVERIFY(pictureDocument(second)->viewModes().isPanWindowShown());
}

void TestChildFrm1::magnifierFollowsThePointer()
{
    TestDir dir;
    QImage image(400, 300, QImage::Format_RGB32);
    image.fill(Qt::white);
    image.setPixel(100, 80, qRgb(255, 0, 0));
    QVERIFY(image.save(dir.filePath("dot.png")));
    ChildFrm1 *w = open(dir.filePath("dot.png"));
    QVERIFY(w);
    m_frame->toolClick("ID_mnuMagnifyingGlass");
    PictureView *view = pictureOf(w);
    Magnifier *glass = view->magnifier();
    QTest::mouseMove(view->viewport(), QPoint(100, 80));
    QTRY_VERIFY(glass->isVisible());
    QCOMPARE(glass->size(), QSize(150, 100));
    QCOMPARE(glass->geometry().center(), QPoint(99, 79)); // centred: 150x100 has its centre at (74, 49)
    QCOMPARE(glass->picturePoint(), QPointF(100, 80));
    // At 200 per cent the red pixel under the pointer covers the lens centre.
    const QImage shot = glass->grab().toImage();
    QCOMPARE(QColor(shot.pixel(76, 51)), QColor(255, 0, 0));
    QCOMPARE(QColor(shot.pixel(0, 0)), QColor(0, 0, 0)); // the black border
    m_frame->toolClick("ID_mnuMagnifyingGlass");
    QVERIFY(!glass->isVisible());
}

void TestChildFrm1::panWindowScrollsTheView()
{
    TestDir dir;
    const QString path = dir.createFile("wide.png", pngBytes(QSize(4000, 3000), Qt::darkCyan));
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    m_frame->toolClick("ID_mnuPanImage");
    PanWindow *pan = pictureDocument(w)->panWindow();
    QVERIFY(pan && pan->isVisible());
    PictureView *view = pictureOf(w);
    QCOMPARE(pan->visibleRect(), view->visiblePictureRect());
    // Clicking the middle of the overview centres the view on the middle.
    const QRectF area = pan->overviewRect();
    QTest::mouseClick(pan, Qt::LeftButton, {}, area.center().toPoint());
    const QRectF shown = view->visiblePictureRect();
    QVERIFY(qAbs(shown.center().x() - 2000) < 40);
    QVERIFY(qAbs(shown.center().y() - 1500) < 40);
    QCOMPARE(pan->visibleRect(), shown);
    // The second click of the menu entry hides it.
    m_frame->toolClick("ID_mnuPanImage");
    QVERIFY(!pan->isVisible());
    QVERIFY(!m_frame->commandBar()->isChecked("ID_mnuPanImage"));
}

void TestChildFrm1::saveQuestionOnClose_data()
{
    QTest::addColumn<bool>("yes");
    QTest::newRow("Yes runs Save As") << true;
    QTest::newRow("No closes without saving") << false;
}

void TestChildFrm1::saveQuestionOnClose()
{
    REQUIRE_FIXTURES();
    QFETCH(bool, yes);
    ChildFrm1 *w = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(w);
    w->document()->setModified(true);
    TestDir out;
    const QString target = out.filePath("saved.png");
    m_ui->responder.answerMessage(yes ? MessageAnswer::Yes : MessageAnswer::No);
    m_ui->responder.acceptFile(target);
    QPointer<ChildFrm1> guard(w);
    m_frame->toolClick("ID_CloseBtn");
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"Do You want to Save Changes to the Picture - hopper.png ?"});
    QCOMPARE(m_ui->responder.messages().constFirst().buttons, MessageButtons::YesNo);
    if (yes) {
        QCOMPARE(m_ui->responder.dialogs().size(), 1);
        const DialogRequest &request = m_ui->responder.dialogs().constFirst();
        QCOMPARE(request.kind, DialogKind::SaveFile);
        QCOMPARE(request.title, QStringLiteral("Enter New File Name for - hopper.png"));
        QCOMPARE(request.filter, QStringLiteral("*.PNG|*.PNG"));
        QCOMPARE(QImage(target).size(), QSize(128, 128));
    } else {
        QVERIFY(m_ui->responder.dialogs().isEmpty());
        QVERIFY(!QFileInfo::exists(target));
    }
    QTRY_VERIFY(!guard);
    QTRY_COMPARE(m_frame->documentCount(), 0);
}

void TestChildFrm1::saveFailureMessage()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(w);
    w->document()->setModified(true);
    const QString target = QStringLiteral("/nonexistent-folder/x/saved.png");
    m_ui->responder.acceptFile(target);
    m_frame->toolClick("ID_SaveBtn");
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Error Saving File - " + target});
    QVERIFY(w->document()->isModified());
    // A successful save clears the flag, and closing then asks nothing.
    TestDir out;
    m_ui->responder.clear();
    m_ui->responder.acceptFile(out.filePath("ok.jpg"));
    m_frame->toolClick("ID_mnuSaveFileAs");
    QVERIFY(m_ui->responder.messages().isEmpty());
    QVERIFY(!w->document()->isModified());
    QCOMPARE(QImage(out.filePath("ok.jpg")).size(), QSize(128, 128));
    m_frame->toolClick("ID_CloseBtn");
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestChildFrm1::saveAsDepthAndQualityOfTheShownPicture()
{
    // A grey JPEG of quality 55: the dialog offers JPEG's depths preset to
    // the picture's own, and its quality; the choice reaches the file.
    TestDir dir;
    QImage image(80, 60, QImage::Format_Grayscale8);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 3, x * 3, x * 3));
    const QString path = dir.filePath("grey.jpg");
    QImageWriter writer(path);
    writer.setQuality(55);
    QVERIFY(writer.write(image));
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    w->document()->setModified(true);
    DialogAnswer answer;
    answer.accepted = true;
    answer.path = dir.filePath("colour.jpg");
    answer.bitsPerPixel = 24;
    answer.quality = 12;
    m_ui->responder.answerDialog(answer);
    m_frame->toolClick("ID_mnuSaveFileAs");
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    const DialogRequest &request = m_ui->responder.dialogs().constFirst();
    QCOMPARE(request.bitsPerPixelChoices, (QList<int>{8, 24}));
    QCOMPARE(request.bitsPerPixel, 8);
    QVERIFY(request.offerQuality);
    QVERIFY(std::abs(request.quality - 55) <= 1);
    QVERIFY(m_ui->responder.messages().isEmpty());
    QVERIFY(!w->document()->isModified());
    const imaging::LoadResult saved = imaging::loadPicture(answer.path);
    QVERIFY(saved.ok());
    QCOMPARE(saved.picture.info.bitsPerPixel, 24);
    QVERIFY(std::abs(viewer::jpegQualityOfFile(answer.path) - 12) <= 1);
}

void TestChildFrm1::promptBeforeHandingTheFileOver()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("PNG/hopper.png"));
    QVERIFY(w);
    QVERIFY(w->offerSaveBeforeHandOver());
    QVERIFY(m_ui->responder.messages().isEmpty());
    w->document()->setModified(true);
    m_ui->responder.answerMessage(MessageAnswer::No);
    QVERIFY(w->offerSaveBeforeHandOver());
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Do You want to Save Changes to the Picture?"});
    QVERIFY(m_ui->responder.dialogs().isEmpty());
    // Renaming hands the file to another window: the question comes first.
    m_ui->responder.clear();
    m_ui->responder.answerMessage(MessageAnswer::No);
    ModalCloser closer; // the rename dialog that follows the question
    m_frame->toolClick("ID_RenameBtn");
    QVERIFY(!m_ui->responder.messageTexts().isEmpty());
    QCOMPARE(m_ui->responder.messageTexts().constFirst(),
             QStringLiteral("Do You want to Save Changes to the Picture?"));
    QCOMPARE(closer.seen(), QStringList{QStringLiteral("Rename1")});
}

void TestChildFrm1::failedPictureStaysOpenAndEmpty()
{
    REQUIRE_FIXTURES();
    ChildFrm1 *w = open(fixtures::path("malformed/PNG/broken.png"));
    QVERIFY(w);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Error Loading Picture"});
    QCOMPARE(m_frame->documentCount(), 1);
    QVERIFY(!pictureOf(w)->hasPicture());
    QCOMPARE(w->document()->loadingState(), viewer::Document::LoadingState::Failed);
    // The window's body says why, in the picture layer's words.
    QLabel *notice = pictureDocument(w)->loadErrorLabel();
    QVERIFY(notice->isVisible());
    QVERIFY(!pictureOf(w)->isVisible());
    QVERIFY(notice->text().startsWith(QStringLiteral("Error Loading Picture - broken.png")));
    QVERIFY(notice->text().contains(w->document()->errorString()));
    QVERIFY(!w->document()->errorString().isEmpty());
    QCOMPARE(notice->geometry(), pictureDocument(w)->rect());
    // Nothing to view, edit or save; the file commands stay.
    for (const char *key : {"ID_NormalBtn", "ID_mnuMagnifyingGlass", "ID_mnuImage", "ID_SaveBtn", "ID_CopyBtn"})
        QVERIFY2(!m_frame->commandBar()->isEnabled(QLatin1String(key)), key);
    QVERIFY(m_frame->commandBar()->isEnabled(QStringLiteral("ID_mnuRenameFile")));
    // The empty window still answers every command without crashing.
    m_ui->responder.clear();
    for (const char *key : {"ID_NormalBtn", "ID_StretchBtn", "ID_mnuPanImage", "ID_mnuMagnifyingGlass", "ID_CopyBtn"})
        m_frame->toolClick(QLatin1String(key));
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"You can only Copy Text for Pasting into Text Box to Add Text to a Picture"});
}

void TestChildFrm1::newWindowOpensInTheActiveState()
{
    TestDir dir;
    ChildFrm1 *first = open(dir.createFile("first.png", pngBytes(QSize(120, 90), Qt::red)));
    QVERIFY(first);
    auto *firstSub = qobject_cast<QMdiSubWindow *>(outer(first));
    firstSub->showMaximized();
    // A picture window sizes itself to its picture once loaded; opened after
    // a maximised one it stays maximised, in front.
    ChildFrm1 *second = open(dir.createFile("second.png", pngBytes(QSize(150, 100), Qt::blue)));
    QVERIFY(second);
    auto *secondSub = qobject_cast<QMdiSubWindow *>(outer(second));
    QVERIFY(secondSub->isMaximized());
    QCOMPARE(secondSub->geometry(), m_frame->mdiArea()->viewport()->rect());
    QCOMPARE(m_frame->mdiArea()->subWindowList(QMdiArea::StackingOrder).constLast(), secondSub);
    QCOMPARE(m_frame->activeDocumentWidget(), second);
    ChildFrm1 *text = open(dir.createFile("third.txt", "text\r\n"));
    QVERIFY(text);
    QVERIFY(qobject_cast<QMdiSubWindow *>(outer(text))->isMaximized());
}

void TestChildFrm1::newWindowsStayInsideTheFrame()
{
    // Pictures a little smaller than the frame: wherever the area first puts
    // each window, once sized to its picture it lies wholly inside.
    m_frame->resize(760, 560);
    QTest::qWait(20);
    TestDir dir;
    const QRect area = m_frame->mdiArea()->viewport()->rect();
    const QSize picture = area.size() - QSize(120, 120);
    for (int i = 0; i < 5; ++i) {
        ChildFrm1 *w = open(dir.createFile(QStringLiteral("p%1.png").arg(i), pngBytes(picture, Qt::gray)));
        QVERIFY(w);
        const QRect place = outer(w)->geometry();
        QVERIFY2(area.contains(place), qPrintable(QStringLiteral("window %1 at %2,%3 %4x%5").arg(i)
                                                      .arg(place.x()).arg(place.y())
                                                      .arg(place.width()).arg(place.height())));
        QCOMPARE(w->size(), picture);
    }
}

void TestChildFrm1::internetPictureWaitRule()
{
    LocalHttpServer server({}, false);
    QVERIFY(server.isListening());
    qint64 now = 1'000'000;
    ChildFrm1 *w = open(server.url("never.png"), false);
    QVERIFY(w);
    w->setInternetClock([&now] { return now; });
    QTRY_COMPARE(server.connections, 1);
    QVERIFY(w->isFetchingFromInternet());
    auto *frame3 = w->findChild<QFrame *>("Frame3");
    QVERIFY(frame3->isVisible());
    QCOMPARE(frame3->findChild<QLabel *>("Label1")->text(),
             QStringLiteral("Loading Picture from the Internet. Please wait."));
    now += 50;
    w->Timer1_Timer();
    QVERIFY(m_ui->responder.messages().isEmpty());
    QVERIFY(frame3->isVisible());
    now += 1;
    w->Timer1_Timer();
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Picture Not found on the Internet"});
    QVERIFY(!frame3->isVisible());
    QVERIFY(!w->isFetchingFromInternet());
    QVERIFY(!w->findChild<QTimer *>("Timer1")->isActive());
    // The wait has ended: later ticks say nothing more.
    now += 100;
    w->Timer1_Timer();
    QCOMPARE(m_ui->responder.messages().size(), 1);
    QCOMPARE(m_frame->documentCount(), 1);
}

void TestChildFrm1::internetPictureArrives()
{
    LocalHttpServer server(pngBytes(QSize(64, 48), Qt::magenta));
    QVERIFY(server.isListening());
    qint64 now = 5000;
    ChildFrm1 *w = open(server.url("pics/arrives.png"), false);
    QVERIFY(w);
    w->setInternetClock([&now] { return now; });
    QSignalSpy shown(w, &ChildFrm1::documentShown);
    QVERIFY(shown.wait(20000));
    QCOMPARE(pictureOf(w)->pictureSize(), QSize(64, 48));
    QCOMPARE(w->windowTitle(), QStringLiteral("arrives.png"));
    now += 60;
    w->Timer1_Timer();
    QVERIFY(m_ui->responder.messages().isEmpty());
    QVERIFY(!w->findChild<QFrame *>("Frame3")->isVisible());
    QCOMPARE(m_frame->statusPanel(0), QStringLiteral("64 x 48"));
    // Save As offers the name after the last "/".
    m_ui->responder.cancelDialog();
    m_frame->toolClick("ID_SaveBtn");
    QCOMPARE(m_ui->responder.dialogs().constFirst().title, QStringLiteral("Enter New File Name for - arrives.png"));
}

void TestChildFrm1::webViewReachesNoNetwork()
{
    LocalHttpServer server(pngBytes(QSize(8, 8), Qt::red));
    TestDir dir;
    dir.createFile("local.png", pngBytes(QSize(5, 5), Qt::blue));
    const QString page = dir.createFile(
        "page.html", "<html><body><p>Hello</p><img src=\"" + server.url("remote.png").toUtf8()
                         + "\"><img src=\"local.png\"><script>document.write('scripted')</script></body></html>");
    ChildFrm1 *w = open(page);
    QVERIFY(w);
    auto *web = w->findChild<WebView *>("WebBrowser1");
    QVERIFY(web->isVisible());
    QCOMPARE(web->toolTip(), QStringLiteral("View Document or Hyper Text"));
    QTRY_VERIFY(web->refusedResources() >= 1);
    QTest::qWait(200);
    QCOMPARE(server.connections, 0);
    QVERIFY(web->toPlainText().contains(QLatin1String("Hello")));
    // Scripts neither run nor show.
    QVERIFY(!web->toPlainText().contains(QLatin1String("scripted")));
    QVERIFY(!web->document()->resource(QTextDocument::ImageResource, QUrl("local.png")).isNull());
}

void TestChildFrm1::releaseBeforeOpeningWithAnotherProgram_data()
{
    QTest::addColumn<bool>("useTextDoc");
    QTest::newRow("HTM in the text box gives way to Close.Txt") << true;
    QTest::newRow("HTM in the web view holds no file and keeps its page") << false;
}

void TestChildFrm1::releaseBeforeOpeningWithAnotherProgram()
{
    REQUIRE_FIXTURES();
    QFETCH(bool, useTextDoc);
    m_ui->state.options.useTextDoc = useTextDoc;
    ChildFrm1 *w = open(fixtures::path("HTM/lorem-ipsum.htm"));
    QVERIFY(w);
    QCOMPARE(w->isWebView(), !useTextDoc);
    m_frame->toolClick("ID_mnuOpenFileApplication");
    if (useTextDoc) {
        QCOMPARE(w->findChild<QTextEdit *>("Text1")->toPlainText(), QStringLiteral("Close File\n"));
    } else {
        const QString page = w->findChild<WebView *>("WebBrowser1")->toPlainText();
        QVERIFY(!page.isEmpty());
        QVERIFY(page != QStringLiteral("Close File\n"));
    }
    QCOMPARE(m_ui->state.currentFile, fixtures::path("HTM/lorem-ipsum.htm"));
}

void TestChildFrm1::hugeTextFileKeepsTheInterfaceAlive()
{
    TestDir dir;
    const QString path = dir.filePath("huge.txt");
    {
        QFile file(path);
        QVERIFY(file.open(QIODevice::WriteOnly));
        QByteArray block;
        for (int i = 0; i < 20000; ++i)
            block += "A line of a very large text file, number " + QByteArray::number(i) + ".\r\n";
        while (file.size() < 200LL * 1024 * 1024)
            QVERIFY(file.write(block) == block.size());
    }
    ChildFrm1 *w = open(path, false);
    QVERIFY(w);
    QSignalSpy shown(w, &ChildFrm1::documentShown);
    QVERIFY(shown.wait(60000));
    const viewer::TextContent &content = w->document()->text();
    QVERIFY(content.layout.pageCount() >= 200);
    QCOMPARE(w->findChild<QLabel *>("PageLabel")->text(), QStringLiteral("Page 1 of %1").arg(content.layout.pageCount()));
    QVERIFY(w->findChild<QWidget *>("TextPages")->isVisible());
    QSignalSpy page(w->document(), &viewer::Document::pageLoaded);
    QTest::mouseClick(w->findChild<QPushButton *>("NextPageBtn"), Qt::LeftButton);
    QVERIFY(page.wait(10000));
    QCOMPARE(w->findChild<QLabel *>("PageLabel")->text(), QStringLiteral("Page 2 of %1").arg(content.layout.pageCount()));
    QVERIFY(w->findChild<QTextEdit *>("Text1")->toPlainText().startsWith(QLatin1String("A line of")));
    QCOMPARE(m_frame->statusPanel(2), viewer::formatByteCount(QFileInfo(path).size()));
}

void TestChildFrm1::binaryJunkNamedTxt()
{
    QByteArray junk;
    quint32 x = 99;
    for (int i = 0; i < 100000; ++i) {
        x = x * 1664525u + 1013904223u;
        junk += char(x >> 24);
    }
    TestDir dir;
    ChildFrm1 *w = open(dir.createFile("junk.txt", junk));
    QVERIFY(w);
    auto *text1 = w->findChild<QTextEdit *>("Text1");
    QVERIFY(text1->isVisible());
    QVERIFY(text1->toPlainText().size() > 50000);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestChildFrm1::everyFixtureOpens_data()
{
    QTest::addColumn<QString>("file");
    if (fixtures::root().isEmpty())
        return;
    const QStringList folders = {"BMP", "CUR", "ICO", "JPG", "PBM", "PNG", "XPM", "TIF", "TIFF", "PCX", "ANI",
                                 "FLC", "TXT", "RTF", "HTM", "HTML", "DOC", "WPS", "WRI", "INI", "LOG"};
    for (const QString &folder : folders) {
        for (const QString &file : fixtures::files(folder)) {
            const QString rel = folder + QLatin1Char('/') + QFileInfo(file).fileName();
            QTest::newRow(qPrintable(rel)) << rel;
        }
    }
}

void TestChildFrm1::everyFixtureOpens()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    ChildFrm1 *w = open(fixtures::path(file));
    QVERIFY(w);
    QCOMPARE(m_frame->documentCount(), 1);
    if (w->FILE_TYPE() == QLatin1String("I")) {
        // Either the picture shows, or the window says so and stays open.
        if (pictureOf(w)->hasPicture())
            QVERIFY(m_ui->responder.messages().isEmpty());
        else
            QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Error Loading Picture"});
    } else {
        QVERIFY(m_ui->responder.messages().isEmpty());
    }
    QPointer<ChildFrm1> guard(w);
    m_frame->toolClick("ID_CloseBtn");
    QTRY_VERIFY(!guard);
}

void TestChildFrm1::windowsShowTheProgramIcon()
{
    // The icon comes in the sizes of the icon theme, 16 to 256 pixels.
    const QIcon icon = applicationIcon();
    QList<int> sides;
    for (const QSize &size : icon.availableSizes())
        sides << size.width();
    std::sort(sides.begin(), sides.end());
    QVERIFY(!sides.isEmpty());
    QCOMPARE(sides.first(), 16);
    QCOMPARE(sides.last(), 256);

    // The program sets it for the application; the frame and the document
    // windows of every kind show it, none an icon of its own.
    QApplication::setWindowIcon(icon);
    ChildFrm1 *pictureWindow = open(m_ui->home.createFile("picture.png", pngBytes(QSize(40, 30), Qt::darkCyan)));
    ChildFrm1 *textWindow = open(m_ui->home.createFile("notes.txt", "a line\r\n"));
    QVERIFY(pictureWindow && textWindow);
    QCOMPARE(m_frame->windowIcon().cacheKey(), icon.cacheKey());
    for (ChildFrm1 *w : {pictureWindow, textWindow}) {
        QCOMPARE(outer(w)->windowIcon().cacheKey(), icon.cacheKey());
        QCOMPARE(w->windowIcon().cacheKey(), icon.cacheKey());
    }
    QApplication::setWindowIcon(QIcon());
}

QTEST_MAIN(TestChildFrm1)
#include "tst_childfrm1.moc"
