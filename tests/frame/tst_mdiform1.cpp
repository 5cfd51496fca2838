#include "DocumentDouble.h"
#include "ScriptedResponder.h"

#include "core/app/AppState.h"
#include "core/app/ProgramFolder.h"
#include "core/catalogue/CommandTables.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/DocumentRules.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"

#include <QAction>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QScreen>
#include <QSignalSpy>
#include <QTest>

#include "UiFixture.h"

using namespace tarnby;
using namespace tarnby::ui;
using commands::BrowserAction;

Q_DECLARE_METATYPE(tarnby::commands::BrowserAction)

class TestMDIForm1 : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void dispatchesEveryDocumentKey_data();
    void dispatchesEveryDocumentKey();
    void busyWindowIgnoresClicks();
    void unknownAndDeadKeysDoNothing_data();
    void unknownAndDeadKeysDoNothing();
    void openWithoutDocumentShowsOwnDialog();
    void openWithDocumentGoesToIt();
    void frameCommandsReachTheBrowser();
    void normalMenuPressesTheButton();
    void textWindowEnabling();
    void databaseWithoutIndex();
    void closingLastWindowEmptiesTheFrame();
    void windowListMarksTheActiveWindow();
    void newWindowFileMakesTheKindItIsGiven_data();
    void newWindowFileMakesTheKindItIsGiven();
    void arrangeWindows_data();
    void arrangeWindows();
    void cascadeEdges_data();
    void cascadeEdges();
    void newWindowTakesTheActiveState();
    void emptyWindowDisablesItsKindsCommands();
    void placeFromAndBackToTheOptions_data();
    void placeFromAndBackToTheOptions();

private:
    DocumentDouble *open(const QString &kind, qint16 indexes = 0, const QString &name = QStringLiteral("doc.jpg"));

    std::unique_ptr<UiFixture> m_ui;
    MDIForm1 *m_frame = nullptr;
};

void TestMDIForm1::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_frame = new MDIForm1(m_ui->state, m_ui->services);
    m_frame->show();
}

void TestMDIForm1::cleanup()
{
    delete m_frame;
    m_ui.reset();
}

DocumentDouble *TestMDIForm1::open(const QString &kind, qint16 indexes, const QString &name)
{
    auto *doc = new DocumentDouble(kind, indexes, QStringLiteral("/tmp/") + name);
    m_frame->addDocumentWindow(doc, name);
    return doc;
}

void TestMDIForm1::dispatchesEveryDocumentKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("operation");
    for (const QString &key : commands::frameDispatchKeys()) {
        const auto target = commands::frameDispatch(key);
        if (const auto *op = std::get_if<commands::DocumentOperation>(&*target))
            QTest::newRow(qPrintable(key)) << key << commands::documentOperationName(*op);
    }
}

void TestMDIForm1::dispatchesEveryDocumentKey()
{
    QFETCH(QString, key);
    QFETCH(QString, operation);
    DocumentDouble *doc = open(QStringLiteral("I"));
    m_frame->toolClick(key);
    QCOMPARE(doc->calls, QStringList{operation});
}

void TestMDIForm1::busyWindowIgnoresClicks()
{
    DocumentDouble *doc = open(QStringLiteral("I"));
    doc->busy = true;
    QSignalSpy browser(m_frame, &MDIForm1::browserCommand);
    for (const char *key : {"ID_CloseBtn", "ID_mnuFlip", "ID_OpenBtn", "ID_ReceiveBtn", "ID_mnuCascade"})
        m_frame->toolClick(QLatin1String(key));
    QVERIFY(doc->calls.isEmpty());
    QCOMPARE(browser.count(), 0);
    QVERIFY(m_ui->responder.dialogs().isEmpty());

    doc->busy = false;
    m_frame->toolClick(QStringLiteral("ID_mnuFlip"));
    QCOMPARE(doc->calls, QStringList{"mnuImageFlip_Click"});
}

void TestMDIForm1::unknownAndDeadKeysDoNothing_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("Receive Fi1es menu entry") << "ID_mnuReceiveFi1es";
    QTest::newRow("Stretch Color Intensity menu entry") << "ID_mnuStretchColorIntensity";
    QTest::newRow("unknown key") << "ID_Nothing";
    QTest::newRow("case differs") << "ID_closebtn";
    QTest::newRow("Paste") << "ID_mnuPaste";
}

void TestMDIForm1::unknownAndDeadKeysDoNothing()
{
    QFETCH(QString, key);
    DocumentDouble *doc = open(QStringLiteral("I"));
    QSignalSpy browser(m_frame, &MDIForm1::browserCommand);
    // Through the real menu action, as a user's click would come.
    if (QAction *a = m_frame->commandBar()->action(key))
        a->trigger();
    else
        m_frame->toolClick(key);
    QVERIFY(doc->calls.isEmpty());
    QCOMPARE(browser.count(), 0);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestMDIForm1::openWithoutDocumentShowsOwnDialog()
{
    m_ui->state.currentFile = QStringLiteral("/tmp/pics/cat.jpg");
    m_ui->responder.acceptFile(QStringLiteral("/tmp/notes.txt"), 2);
    QSignalSpy opened(m_frame, &MDIForm1::openFileRequested);
    m_frame->toolClick(QStringLiteral("ID_OpenBtn"));
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    const DialogRequest &request = m_ui->responder.dialogs().first();
    QCOMPARE(request.title, QStringLiteral("Select File to Open"));
    QCOMPARE(request.filter, catalogue::openDialogFilter());
    // It suggests files of the current file's type, in its folder.
    QCOMPARE(request.fileName, QStringLiteral("*.JPG"));
    QCOMPARE(request.defaultSuffix, QStringLiteral("JPG"));
    QCOMPARE(request.directory, QStringLiteral("/tmp/pics"));
    QCOMPARE(opened.count(), 1);
    QCOMPARE(opened.first().first().toString(), QStringLiteral("/tmp/notes.txt"));

    // The chosen filter is kept for the next time.
    m_ui->responder.cancelDialog();
    m_frame->toolClick(QStringLiteral("ID_mnuOpenFile"));
    QCOMPARE(m_ui->responder.dialogs().last().filterIndex, 2);
    QCOMPARE(opened.count(), 1);
}

void TestMDIForm1::openWithDocumentGoesToIt()
{
    DocumentDouble *doc = open(QStringLiteral("T"));
    m_frame->toolClick(QStringLiteral("ID_OpenBtn"));
    QCOMPARE(doc->calls, QStringList{"mnuFileOpen_Click"});
    QVERIFY(m_ui->responder.dialogs().isEmpty());
}

void TestMDIForm1::frameCommandsReachTheBrowser()
{
    qRegisterMetaType<BrowserAction>();
    QSignalSpy browser(m_frame, &MDIForm1::browserCommand);
    const QList<QPair<QString, BrowserAction>> rows = {
        {"ID_ReceiveBtn", BrowserAction::ReceiveFiles},      {"ID_mnuReceiveFile", BrowserAction::ReceiveFiles},
        {"ID_mnuFindFiles", BrowserAction::FindFiles},       {"ID_mnuFindNext", BrowserAction::FindNext},
        {"ID_mnuSetWorkingFolders", BrowserAction::WorkingFolders},
        {"ID_mnuSetApplicationColors", BrowserAction::ApplicationColors},
        {"ID_mnuSetApplicationOptions", BrowserAction::ApplicationOptions},
        {"ID_HelpBtn", BrowserAction::HelpContents},         {"ID_mnuAbouttheTarnby", BrowserAction::About},
    };
    for (const auto &row : rows)
        m_frame->toolClick(row.first);
    QCOMPARE(browser.count(), rows.size());
    for (int i = 0; i < rows.size(); ++i)
        QCOMPARE(browser.at(i).first().value<BrowserAction>(), rows.at(i).second);

    QSignalSpy back(m_frame, &MDIForm1::returnToBrowserRequested);
    m_frame->toolClick(QStringLiteral("ID_ReturnBtn"));
    QCOMPARE(back.count(), 1);
    QVERIFY(m_frame->isVisible()); // Return leaves the frame and its windows as they are
}

void TestMDIForm1::normalMenuPressesTheButton()
{
    DocumentDouble *doc = open(QStringLiteral("I"));
    m_frame->toolClick(QStringLiteral("ID_mnuStretchImageView"));
    QVERIFY(m_frame->commandBar()->isChecked(QStringLiteral("ID_StretchBtn")));
    QCOMPARE(doc->calls, QStringList{"mnuViewStretch_Click"});
    m_frame->toolClick(QStringLiteral("ID_mnuNormalImageView"));
    QCOMPARE(doc->calls, (QStringList{"mnuViewStretch_Click", "mnuViewNormal_Click"}));
    // Pressing a button that is already pressed is no click.
    m_frame->toolClick(QStringLiteral("ID_mnuNormalImageView"));
    QCOMPARE(doc->calls.size(), 2);
}

void TestMDIForm1::textWindowEnabling()
{
    open(QStringLiteral("T"), 0, QStringLiteral("notes.txt"));
    CommandBar *bar = m_frame->commandBar();
    for (const char *key : {"ID_CloseBtn", "ID_SaveBtn", "ID_RenameBtn", "ID_MoveBtn", "ID_DeleteBtn", "ID_PrintBtn",
                            "ID_SendBtn", "ID_ReceiveBtn", "ID_CopyBtn", "ID_OpenBtn", "ID_HelpBtn"})
        QVERIFY2(bar->isEnabled(QLatin1String(key)), key);
    for (const char *key : {"ID_NormalBtn", "ID_StretchBtn", "ID_ResizeBtn", "ID_BrightnessBtn", "ID_FontBtn",
                            "ID_ShapesBtn", "ID_TableBtn", "ID_IndexBtn", "ID_mnuImage", "ID_mnuView",
                            "ID_mnuPanImage", "ID_mnuSetDatabaseTable", "ID_mnuSetTableComments"})
        QVERIFY2(!bar->isEnabled(QLatin1String(key)), key);
    QCOMPARE(m_frame->windowTitle(), QStringLiteral("Tarnby 3.0 - notes.txt"));
}

void TestMDIForm1::databaseWithoutIndex()
{
    open(QStringLiteral("D"), 0, QStringLiteral("sales.dbf"));
    CommandBar *bar = m_frame->commandBar();
    QVERIFY(!bar->isEnabled(QStringLiteral("ID_IndexBtn")));
    QVERIFY(!bar->isEnabled(QStringLiteral("ID_mnuSetDatabaseTableIndex")));
    QVERIFY(bar->isEnabled(QStringLiteral("ID_mnuSetDatabaseTable")));
    QVERIFY(!bar->isEnabled(QStringLiteral("ID_CopyBtn")));

    // The same table with an index enables both.
    open(QStringLiteral("D"), 2, QStringLiteral("orders.dbf"));
    QVERIFY(bar->isEnabled(QStringLiteral("ID_IndexBtn")));
    QVERIFY(bar->isEnabled(QStringLiteral("ID_mnuSetDatabaseTableIndex")));
}

void TestMDIForm1::closingLastWindowEmptiesTheFrame()
{
    open(QStringLiteral("I"));
    QCOMPARE(m_frame->documentCount(), 1);
    m_frame->mdiArea()->closeAllSubWindows();
    QTRY_COMPARE(m_frame->documentCount(), 0);
    QTRY_COMPARE(m_frame->windowTitle(), QStringLiteral("Tarnby 3.0"));
    CommandBar *bar = m_frame->commandBar();
    QStringList enabled;
    for (const commands::Tool &tool : commands::frameToolbar()) {
        if (bar->isEnabled(QLatin1String(tool.key)))
            enabled << QLatin1String(tool.key);
    }
    // Return is the frame's own and stays; of the document commands only Open and Help.
    QCOMPARE(enabled, (QStringList{"ID_ReturnBtn", "ID_OpenBtn", "ID_HelpBtn"}));
    QVERIFY(bar->isEnabled(QStringLiteral("ID_mnuOpenFile")));
    QCOMPARE(m_frame->statusPanel(2), QString());
}

void TestMDIForm1::windowListMarksTheActiveWindow()
{
    // The check mark is the program folder's BMPS/Check.BMP.
    TestDir home;
    QStringList warnings;
    seedProgramFolder(home.path(), &warnings);
    m_ui->state.programFolder = home.path();
    open(QStringLiteral("I"), 0, QStringLiteral("first.jpg"));
    open(QStringLiteral("T"), 0, QStringLiteral("second.txt"));
    QList<QAction *> entries;
    for (QAction *a : m_frame->windowMenu()->actions()) {
        if (a->objectName() == QLatin1String("WindowList"))
            entries << a;
    }
    QCOMPARE(entries.size(), 2);
    QCOMPARE(entries.at(0)->text(), QStringLiteral("first.jpg"));
    QVERIFY(!entries.at(0)->isChecked());
    QVERIFY(entries.at(1)->isChecked());
    QVERIFY(!entries.at(1)->icon().isNull());
    QVERIFY(entries.at(0)->icon().isNull());

    // Choosing the first entry activates that window, and the marks follow.
    entries.at(0)->trigger();
    QTRY_COMPARE(m_frame->mdiArea()->activeSubWindow()->windowTitle(), QStringLiteral("first.jpg"));
    QList<QAction *> after;
    for (QAction *a : m_frame->windowMenu()->actions()) {
        if (a->objectName() == QLatin1String("WindowList"))
            after << a;
    }
    QCOMPARE(after.size(), 2);
    QVERIFY(after.at(0)->isChecked());
    QVERIFY(!after.at(1)->isChecked());
}

void TestMDIForm1::newWindowFileMakesTheKindItIsGiven_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("kind");
    QTest::newRow("picture") << "/tmp/a.png" << "I";
    QTest::newRow("text") << "/tmp/notes.rtf" << "T";
    QTest::newRow("database") << "/tmp/sheet.wk4" << "D";
    QTest::newRow("no path opens nothing") << "" << "I";
}

void TestMDIForm1::newWindowFileMakesTheKindItIsGiven()
{
    QFETCH(QString, file);
    QFETCH(QString, kind);
    // Flags left by some other lookup: the frame goes by what it is handed.
    m_ui->state.textFileFlag = true;
    m_ui->state.databaseFileFlag = true;
    QStringList made;
    m_frame->setDocumentFactory([&made](const QString &path, viewer::DocumentKind k) -> QWidget * {
        made << path + QLatin1Char(':') + viewer::kindLetter(k);
        return new DocumentDouble(viewer::kindLetter(k), 0, path);
    });
    QWidget *window = m_frame->NewWindowFile(file, viewer::kindFromLetter(kind));
    if (file.isEmpty()) {
        QVERIFY(!window);
        QVERIFY(made.isEmpty());
        QCOMPARE(m_frame->documentCount(), 0);
        return;
    }
    QVERIFY(window);
    QCOMPARE(made, QStringList{file + QLatin1Char(':') + kind});
    QCOMPARE(m_frame->documentCount(), 1);
    QCOMPARE(m_frame->activeDocumentWidget(), window);
    QCOMPARE(m_frame->activeDocument()->FILE_TYPE(), kind);
    QCOMPARE(m_frame->mdiArea()->activeSubWindow()->windowTitle(), QFileInfo(file).fileName());
}

void TestMDIForm1::arrangeWindows_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("tile horizontally stacks rows") << "ID_mnuTileHorizontally";
    QTest::newRow("tile vertically lines up columns") << "ID_mnuTileVertically";
    QTest::newRow("cascade steps down and right") << "ID_mnuCascade";
}

void TestMDIForm1::arrangeWindows()
{
    QFETCH(QString, key);
    m_frame->resize(900, 700);
    for (int i = 0; i < 3; ++i)
        open(QStringLiteral("I"), 0, QStringLiteral("p%1.jpg").arg(i))->parentWidget()->resize(300, 200);
    m_frame->toolClick(key);
    const QList<QMdiSubWindow *> windows = m_frame->mdiArea()->subWindowList();
    QCOMPARE(windows.size(), 3);
    const QRect area = m_frame->mdiArea()->viewport()->rect();
    for (int i = 1; i < windows.size(); ++i) {
        const QRect a = windows.at(i - 1)->geometry(), b = windows.at(i)->geometry();
        if (key == QLatin1String("ID_mnuTileHorizontally")) {
            QCOMPARE(b.top(), a.bottom() + 1);
            QCOMPARE(b.width(), area.width());
        } else if (key == QLatin1String("ID_mnuTileVertically")) {
            QCOMPARE(b.left(), a.right() + 1);
            QCOMPARE(b.height(), area.height());
        } else {
            // One title bar further down and right, the size kept: every
            // window still shows its content.
            const int step = windows.at(i)->widget()->y();
            QVERIFY(step > 0);
            QCOMPARE(b.topLeft(), a.topLeft() + QPoint(step, step));
            QCOMPARE(b.size(), QSize(300, 200));
            QVERIFY(area.contains(b));
        }
    }
}

void TestMDIForm1::cascadeEdges_data()
{
    QTest::addColumn<QSize>("frameSize");
    QTest::addColumn<QSize>("windowSize");
    QTest::addColumn<bool>("maximizeFirst");
    QTest::newRow("windows larger than the area") << QSize(700, 500) << QSize(900, 800) << false;
    QTest::newRow("bare title bars get room") << QSize(900, 700) << QSize(120, 30) << false;
    QTest::newRow("a maximised window is restored") << QSize(900, 700) << QSize(300, 200) << true;
    QTest::newRow("more steps than the area holds") << QSize(420, 360) << QSize(250, 150) << false;
}

void TestMDIForm1::cascadeEdges()
{
    QFETCH(QSize, frameSize);
    QFETCH(QSize, windowSize);
    QFETCH(bool, maximizeFirst);
    m_frame->resize(frameSize);
    QList<DocumentDouble *> docs;
    for (int i = 0; i < 8; ++i) {
        docs << open(QStringLiteral("I"), 0, QStringLiteral("p%1.jpg").arg(i));
        docs.last()->parentWidget()->resize(windowSize);
    }
    if (maximizeFirst)
        qobject_cast<QMdiSubWindow *>(docs.first()->parentWidget())->showMaximized();
    QWidget *front = m_frame->mdiArea()->subWindowList(QMdiArea::StackingOrder).constLast();
    m_frame->toolClick(QStringLiteral("ID_mnuCascade"));
    const QRect area = m_frame->mdiArea()->viewport()->rect();
    for (DocumentDouble *doc : docs) {
        auto *sub = qobject_cast<QMdiSubWindow *>(doc->parentWidget());
        QVERIFY(!sub->isMaximized());
        QVERIFY2(area.contains(sub->geometry()), qPrintable(QStringLiteral("%1,%2 %3x%4")
                                                                .arg(sub->x()).arg(sub->y())
                                                                .arg(sub->width()).arg(sub->height())));
        // Room for more than the title bar.
        QVERIFY(doc->height() > 0);
    }
    // The window in front before is in front after.
    QCOMPARE(m_frame->mdiArea()->subWindowList(QMdiArea::StackingOrder).constLast(), front);
}

void TestMDIForm1::newWindowTakesTheActiveState()
{
    m_frame->resize(900, 700);
    DocumentDouble *first = open(QStringLiteral("I"), 0, QStringLiteral("first.jpg"));
    auto *firstSub = qobject_cast<QMdiSubWindow *>(first->parentWidget());
    firstSub->showMaximized();
    DocumentDouble *second = open(QStringLiteral("T"), 0, QStringLiteral("second.txt"));
    auto *secondSub = qobject_cast<QMdiSubWindow *>(second->parentWidget());
    // In front, maximised as the one before was, covering the whole area.
    QVERIFY(secondSub->isMaximized());
    QCOMPARE(m_frame->mdiArea()->subWindowList(QMdiArea::StackingOrder).constLast(), secondSub);
    QCOMPARE(m_frame->activeDocumentWidget(), second);
    QCOMPARE(secondSub->geometry(), m_frame->mdiArea()->viewport()->rect());

    // After a window of its own size, the next one is of its own size too,
    // and wholly inside the area wherever it was put.
    secondSub->showNormal();
    firstSub->showNormal();
    DocumentDouble *third = open(QStringLiteral("I"), 0, QStringLiteral("third.jpg"));
    auto *thirdSub = qobject_cast<QMdiSubWindow *>(third->parentWidget());
    QVERIFY(!thirdSub->isMaximized());
    thirdSub->setGeometry(700, 600, 500, 400);
    m_frame->keepInsideArea(third);
    QVERIFY(m_frame->mdiArea()->viewport()->rect().contains(thirdSub->geometry()));
    QCOMPARE(thirdSub->size(), QSize(500, 400));
}

void TestMDIForm1::emptyWindowDisablesItsKindsCommands()
{
    DocumentDouble *doc = open(QStringLiteral("I"));
    QVERIFY(m_frame->commandBar()->isEnabled(QStringLiteral("ID_mnuImage")));
    doc->empty = true;
    m_frame->refreshCommandState();
    for (const char *key : {"ID_mnuImage", "ID_ResizeBtn", "ID_BrightnessBtn", "ID_NormalBtn", "ID_mnuMagnifyingGlass", "ID_SaveBtn", "ID_mnuSaveFileAs",
                            "ID_CopyBtn", "ID_mnuAddText"})
        QVERIFY2(!m_frame->commandBar()->isEnabled(QLatin1String(key)), key);
    // Its file is still there to rename, move, delete or close.
    for (const char *key : {"ID_mnuRenameFile", "ID_mnuMoveFile", "ID_mnuDeleteFile", "ID_CloseBtn"})
        QVERIFY2(m_frame->commandBar()->isEnabled(QLatin1String(key)), key);
}

void TestMDIForm1::placeFromAndBackToTheOptions_data()
{
    // Lines 5 to 8 in twips (15 a pixel at 96 DPI); "check" as for the
    // browser: exact, on screen (size kept, moved onto it), default.
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QString>("check");
    QTest::addColumn<QRect>("expected");
    QTest::newRow("as saved") << QStringList{"1500", "1200", "9000", "6000"} << "exact" << QRect(100, 80, 600, 400);
    QTest::newRow("off screen comes back on it") << QStringList{"90000", "-90000", "9000", "6000"} << "on screen"
                                                << QRect(0, 0, 600, 400);
    QTest::newRow("unreadable left keeps the default") << QStringList{"left", "0", "9000", "6000"} << "default"
                                                       << QRect(0, 0, 900, 650);
    QTest::newRow("no height keeps the default") << QStringList{"0", "0", "9000", "0"} << "default"
                                                 << QRect(0, 0, 900, 650);
}

void TestMDIForm1::placeFromAndBackToTheOptions()
{
    QFETCH(QStringList, lines);
    QFETCH(QString, check);
    QFETCH(QRect, expected);
    settings::ProgramOptions &o = m_ui->state.options;
    o.frameLeft = lines.at(0);
    o.frameTop = lines.at(1);
    o.frameWidth = lines.at(2);
    o.frameHeight = lines.at(3).toInt();
    MDIForm1 frame(m_ui->state, m_ui->services);
    if (frame.logicalDpiX() != 96)
        QSKIP("the rows are written for 96 DPI");
    frame.SetMDIWinSize();
    if (check == QLatin1String("exact"))
        QCOMPARE(frame.geometry(), expected);
    else if (check == QLatin1String("on screen"))
        QVERIFY(frame.screen()->availableGeometry().contains(frame.geometry()));
    QCOMPARE(frame.size(), expected.size());

    // Moved, maximised and closed: the lines hold the normal place, which
    // the next frame opens at.
    frame.show();
    QVERIFY(QTest::qWaitForWindowExposed(&frame));
    frame.setGeometry(45, 60, 510, 330);
    const QRect normal = frame.geometry();
    frame.showMaximized();
    QSignalSpy closed(&frame, &MDIForm1::frameClosed);
    frame.toolClick(QStringLiteral("ID_mnuExit"));
    QCOMPARE(closed.count(), 1);
    QVERIFY(!frame.isVisible());
    QCOMPARE(o.frameWidth, QStringLiteral("7650"));
    QCOMPARE(o.frameHeight, 4950);
    MDIForm1 next(m_ui->state, m_ui->services);
    next.SetMDIWinSize();
    QCOMPARE(next.geometry(), normal);
}

QTEST_MAIN(TestMDIForm1)
#include "tst_mdiform1.moc"
