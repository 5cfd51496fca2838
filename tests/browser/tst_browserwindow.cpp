#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/viewer/DocumentRules.h"
#include "ui/browser/FileListView.h"
#include "ui/browser/QuikPict1.h"
#include "ui/browser/Tarnby1.h"
#include "ui/browser/ThumbnailView.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/CommandBar.h"
#include "ui/settings/ReliefText.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"

#include "Fixtures.h"
#include "DocumentDouble.h"
#include "UiFixture.h"

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QFrame>
#include <QLabel>
#include <QListWidget>
#include <QLineEdit>
#include <QListView>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QCheckBox>
#include <QClipboard>
#include <QInputDialog>
#include <QMenu>
#include <QMenuBar>
#include <QMimeData>
#include <QProgressBar>
#include <QRadioButton>
#include <QPushButton>
#include <QSemaphore>
#include <QMutex>
#include <QSignalSpy>
#include <QSplitter>
#include "ModalCloser.h"
#include "core/settings/ProgramOptions.h"

#include <QTest>
#include <QTimer>
#include <QToolBar>
#include <QToolButton>
#include <QTreeView>
#include <QUrl>

#include <memory>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// One browser window on the shared set-up, and a folder of files to browse.
// Loaded at once unless told otherwise; options, when given, are what the
// previous run saved.
struct Browser : UiFixture {
    enum class Start { Loaded, Unloaded };

    TestDir files;
    std::unique_ptr<Tarnby1> window;

    explicit Browser(Start start = Start::Loaded) : Browser(start, {}) {}
    explicit Browser(const std::function<void(settings::ProgramOptions &)> &options) : Browser(Start::Loaded, options) {}
    Browser(Start start, const std::function<void(settings::ProgramOptions &)> &options)
    {
        window = std::make_unique<Tarnby1>(state, services, store);
        if (options)
            saveOptions(options);
        if (start == Start::Loaded)
            load();
    }

    // Starts from the program folder given, or this one's own.
    void load(const QString &programFolder = QString())
    {
        StartupRequest request;
        request.homeOption = programFolder.isEmpty() ? home.path() : programFolder;
        window->load(request);
    }

    // Shows folder and waits until its listing is in.
    bool show(const QString &folder)
    {
        QSignalSpy loaded(window->fileList(), &FileListModel::folderLoaded);
        if (!window->goToFolder(folder))
            return false;
        return loaded.wait(5000);
    }

    void chooseFilter(int index)
    {
        QComboBox *box = window->findChild<QComboBox *>(QStringLiteral("CMBFILEFLTR"));
        box->setCurrentIndex(index);
        emit box->activated(index);
    }

    int filterIndex() const { return window->findChild<QComboBox *>(QStringLiteral("CMBFILEFLTR"))->currentIndex(); }

    void select(const QString &name)
    {
        window->fileListView()->setCurrentRow(window->fileList()->rowForName(name));
    }

    bool enabled(const QString &key) const { return window->commandBar()->isEnabled(key); }

    void createFiles(std::initializer_list<const char *> names)
    {
        for (const char *name : names)
            files.createFile(QLatin1String(name));
    }

    // Shows the window, at size when one is given, and waits until it is up.
    bool showWindow(QSize size = QSize())
    {
        if (size.isValid())
            window->resize(size);
        window->show();
        return QTest::qWaitForWindowExposed(window.get());
    }
};

// Options.INI's positions are twips: back to pixels at dpi.
int twipsAsPixels(const QString &twips, double dpi)
{
    return qRound(twips.toDouble() * dpi / 1440.0);
}

QImage testPicture(int i)
{
    QImage image(64, 48, QImage::Format_RGB32);
    image.fill(QColor::fromHsv((i * 37) % 360, 200, 200));
    return image;
}

} // namespace

class TestBrowserWindow : public QObject
{
    Q_OBJECT
private slots:
    void filterBoxAtStart();
    void filterChangesTheList_data();
    void filterChangesTheList();
    void categoryButtons_data();
    void categoryButtons();
    void selectionCommands_data();
    void selectionCommands();
    void openingRoutes();
    void enterOpensAndFolderEnters();
    void viewStyles_data();
    void viewStyles();
    void upFolderAndBackspace();
    void deleteAndRenameKeys_data();
    void deleteAndRenameKeys();
    void refreshAndVanishedFolder();
    void treeFollowsAndDrives();
    void workingFolders();
    void closingTheDocumentWindowsEndsTheHandOver_data();
    void closingTheDocumentWindowsEndsTheHandOver();
    void computerInNetwork_data();
    void computerInNetwork();
    void panesSavedAndRestored();
    void optionsWrittenAtCloseAndReadBack();
    void framePlaceWrittenWhenItCloses_data();
    void framePlaceWrittenWhenItCloses();
    void geometryRestored_data();
    void geometryRestored();
    void separatorPosition_data();
    void separatorPosition();
    void unwritableFolderIsToldOnce();
    void gridLinesAndMenuTextFollowTheOptions();
    void thumbnailsFill();
    void thumbnailsStayWithinBudget();
    void thumbnailsFollowAnotherProgram();
    void noThumbnailsToDisplay();
    void thumbnailSelectionEnablesFileCommands();
    void listKeepsWholeNamesAfterFilterChange_data();
    void listKeepsWholeNamesAfterFilterChange();
    void renameOpensWithBaseNameSelected_data();
    void renameOpensWithBaseNameSelected();
    void stopCancelsThumbnails();
    void folderChangeDropsStaleThumbnails();
    void dropOnTreeMovesOrCopies();
    void quickView();
    void contextMenusDispatchTheMenuKeys_data();
    void contextMenusDispatchTheMenuKeys();
    void contextMenuOwnEntries();
};

void TestBrowserWindow::filterBoxAtStart()
{
    Browser b;
    QComboBox *box = b.window->findChild<QComboBox *>(QStringLiteral("CMBFILEFLTR"));
    QCOMPARE(box->count(), 40);
    QCOMPARE(box->currentIndex(), 35);
    QCOMPARE(b.window->fileList()->pattern(), QLatin1String(catalogue::FilterPatterns[35]));
    QCOMPARE(b.window->currentFolder(), QDir::homePath());
    for (const char *name : {"PTxShCombo1", "PTxShTree1", "PTxShList1", "Frame1", "Frame3", "Frame5", "List1",
                             "Label1", "Thumb1", "ImagList1", "File1", "Timer1", "ToolBarComp1"})
        QVERIFY2(b.window->findChild<QObject *>(QLatin1String(name)), name);
}

void TestBrowserWindow::filterChangesTheList_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QStringList>("shown");
    QTest::newRow("JPEG matches any case") << 0 << QStringList{"photo.jpg", "SHOT.JPG"};
    QTest::newRow("All Picture Files leaves out XWD") << 32 << QStringList{"photo.jpg", "scan.dic", "SHOT.JPG"};
    QTest::newRow("X Window Dump shows XWD") << 23 << QStringList{"dump.xwd"};
    QTest::newRow("Music") << 30 << QStringList{"song.mp3"};
    QTest::newRow("All Files shows names without a dot") << 39
        << QStringList{"dump.xwd", "photo.jpg", "README", "scan.dic", "SHOT.JPG", "song.mp3"};
}

void TestBrowserWindow::filterChangesTheList()
{
    QFETCH(int, filter);
    QFETCH(QStringList, shown);
    Browser b;
    for (const char *name : {"photo.jpg", "SHOT.JPG", "dump.xwd", "song.mp3", "README", "scan.dic"})
        b.files.createFile(QLatin1String(name));
    b.files.createFolder("sub");
    QVERIFY(b.show(b.files.path()));
    b.chooseFilter(filter);
    QStringList names;
    for (const QString &path : b.window->fileList()->shownFilePaths())
        names << QFileInfo(path).fileName();
    QCOMPARE(names, shown);
    QVERIFY(b.window->fileList()->isFolder(0)); // folders stay whatever the filter
}

void TestBrowserWindow::categoryButtons_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("letter");
    // The text filter (36) is chosen first: the last four buttons keep it.
    QTest::newRow("Pictures selects All Picture Files") << "ID_PicturesBtn" << 32 << "P";
    QTest::newRow("Sounds selects Wave Files") << "ID_SoundsBtn" << 27 << "S";
    QTest::newRow("Music selects Music Files") << "ID_MusicBtn" << 30 << "M";
    QTest::newRow("Video keeps the entry") << "ID_VideoBtn" << 36 << "V";
    QTest::newRow("Document keeps the entry") << "ID_DocumentBtn" << 36 << "T";
    QTest::newRow("Table keeps the entry, letter T") << "ID_TableBtn" << 36 << "T";
    QTest::newRow("All keeps the entry") << "ID_AllBtn" << 36 << "A";
}

void TestBrowserWindow::categoryButtons()
{
    QFETCH(QString, key);
    QFETCH(int, filter);
    QFETCH(QString, letter);
    Browser b;
    b.chooseFilter(36);
    b.window->toolClick(key);
    QCOMPARE(b.filterIndex(), filter);
    QCOMPARE(b.state.categoryLetter, letter);
    QCOMPARE(b.window->fileList()->pattern(), QLatin1String(catalogue::FilterPatterns[size_t(filter)]));
}

void TestBrowserWindow::selectionCommands_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("selection");
    QTest::addColumn<bool>("database");
    QTest::newRow("picture") << "photo.jpg" << true << false;
    QTest::newRow("dBASE table") << "table.dbf" << true << true;
    QTest::newRow("Excel sheet") << "book.xls" << true << true;
    QTest::newRow("Lotus WK4 never enables them") << "sheet.wk4" << true << false;
    QTest::newRow("a folder is no selection") << "sub" << false << false;
}

void TestBrowserWindow::selectionCommands()
{
    QFETCH(QString, name);
    QFETCH(bool, selection);
    QFETCH(bool, database);
    Browser b;
    for (const char *file : {"photo.jpg", "table.dbf", "book.xls", "sheet.wk4"})
        b.files.createFile(QLatin1String(file));
    b.files.createFolder("sub");
    QVERIFY(b.show(b.files.path()));
    b.chooseFilter(39);
    QVERIFY(!b.enabled("ID_mnuSaveFileAs"));
    b.select(name);
    QCOMPARE(b.enabled("ID_mnuSaveFileAs"), selection);
    QCOMPARE(b.enabled("ID_mnuSendFilesbyE-Mail"), selection);
    QCOMPARE(b.enabled("ID_mnuSetDatabaseTable"), database);
    QCOMPARE(b.enabled("ID_mnuViewTableComments"), database);
    if (selection)
        QCOMPARE(b.state.currentFile, b.files.filePath(name));
}

void TestBrowserWindow::openingRoutes()
{
    Browser b;
    // Each window made notes its file, its kind and the program-wide flags as
    // they stood while it was made: the window may read them as it loads.
    QStringList opened;
    b.window->frame()->setDocumentFactory([&](const QString &path, viewer::DocumentKind kind) {
        opened << QFileInfo(path).fileName() + QLatin1Char(':') + viewer::kindLetter(kind)
                      + (b.state.textFileFlag ? QStringLiteral(" text") : QString())
                      + (b.state.databaseFileFlag ? QStringLiteral(" database") : QString());
        return nullptr;
    });

    b.window->DisplayImage(b.files.createFile("sheet.wk4"));
    b.window->DisplayImage(b.files.createFile("notes.txt"));
    b.window->DisplayImage(b.files.createFile("photo.jpg"));
    QCOMPARE(opened, (QStringList{"sheet.wk4:D database", "notes.txt:T text", "photo.jpg:I"}));
    QVERIFY(!b.enabled("ID_mnuSetDatabaseTable")); // after the WK4 file too
}

void TestBrowserWindow::enterOpensAndFolderEnters()
{
    Browser b;
    b.files.createFile("strange.qqq");
    b.files.createFolder("inner");
    b.files.createFile("inner/a.jpg");
    QVERIFY(b.show(b.files.path()));
    b.chooseFilter(39);
    b.window->toolClick(QStringLiteral("ID_DetailIconsBtn"));
    QAbstractItemView *view = b.window->fileListView()->currentView();
    b.select("strange.qqq");
    QTest::keyClick(view, Qt::Key_Return);
    QCOMPARE(b.responder.messageTexts(), QStringList{"File Type is not Supported by this Software"});

    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    b.select("inner");
    QTest::keyClick(view, Qt::Key_Return);
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.filePath("inner"));
}

void TestBrowserWindow::viewStyles_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("style");
    QTest::addColumn<QString>("view");
    QTest::newRow("large icons") << "ID_LargeIconsBtn" << 0 << "IconView";
    QTest::newRow("small icons") << "ID_SmallIconsBtn" << 1 << "IconView";
    QTest::newRow("list") << "ID_ListIconsBtn" << 2 << "IconView";
    QTest::newRow("details") << "ID_DetailIconsBtn" << 3 << "DetailsView";
}

void TestBrowserWindow::viewStyles()
{
    QFETCH(QString, key);
    QFETCH(int, style);
    QFETCH(QString, view);
    Browser b([](settings::ProgramOptions &o) { o.viewStyle = QStringLiteral("2"); });
    QCOMPARE(b.window->fileListView()->viewStyle(), ViewStyle::List);
    b.window->toolClick(key);
    QCOMPARE(int(b.window->fileListView()->viewStyle()), style);
    QCOMPARE(b.window->fileListView()->currentView()->objectName(), view);
    QCOMPARE(b.state.options.viewStyle, QString::number(style));
    if (style == 0)
        QCOMPARE(b.window->fileListView()->iconView()->viewMode(), QListView::IconMode);
    if (style == 2)
        QCOMPARE(b.window->fileListView()->iconView()->flow(), QListView::TopToBottom);
}

void TestBrowserWindow::upFolderAndBackspace()
{
    Browser b;
    b.files.createFolder("a/b");
    QVERIFY(b.show(b.files.filePath("a/b")));
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    b.window->toolClick(QStringLiteral("ID_UpFolderBtn"));
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.filePath("a"));
    QTRY_COMPARE(b.window->fileListView()->currentRow(), b.window->fileList()->rowForName("b"));

    QVERIFY(b.showWindow());
    QAbstractItemView *view = b.window->fileListView()->currentView();
    view->setFocus();
    QTest::keyClick(view, Qt::Key_Backspace);
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.path());
}

void TestBrowserWindow::deleteAndRenameKeys_data()
{
    QTest::addColumn<int>("key");
    QTest::addColumn<QString>("selected");
    QTest::addColumn<bool>("asks");
    QTest::newRow("Delete on a file") << int(Qt::Key_Delete) << "a.jpg" << true;
    QTest::newRow("Delete on a folder does nothing") << int(Qt::Key_Delete) << "sub" << false;
    QTest::newRow("F2 on a file") << int(Qt::Key_F2) << "a.jpg" << true;
    QTest::newRow("F2 on a folder does nothing") << int(Qt::Key_F2) << "sub" << false;
}

void TestBrowserWindow::deleteAndRenameKeys()
{
    // The keys hand the selected file to the file commands, which ask the
    // user first; the question (or dialog) is what the test sees.
    QFETCH(int, key);
    QFETCH(QString, selected);
    QFETCH(bool, asks);
    Browser b;
    b.files.createFile("a.jpg");
    b.files.createFolder("sub");
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow());
    b.select(selected);
    QAbstractItemView *view = b.window->fileListView()->currentView();
    view->setFocus();
    // Rename asks through its own modal dialog; cancel it as a user would.
    ModalCloser closer;
    QTest::keyClick(view, Qt::Key(key));
    QCOMPARE(b.responder.messages().size() + b.responder.dialogs().size() + closer.seen().size() > 0, asks);
    QVERIFY(QFile::exists(b.files.filePath("a.jpg"))); // nothing was answered Yes
}

void TestBrowserWindow::refreshAndVanishedFolder()
{
    Browser b;
    b.files.createFolder("gone/deeper");
    QVERIFY(b.show(b.files.filePath("gone/deeper")));
    QVERIFY(b.showWindow());
    b.files.createFile("gone/deeper/new.jpg");
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    QTest::keyClick(b.window.get(), Qt::Key_F5);
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->fileList()->fileCount(), 1);

    QVERIFY(QDir(b.files.filePath("gone")).removeRecursively());
    b.window->toolClick(QStringLiteral("ID_RefreshBtn"));
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.path());
    QCOMPARE(b.window->folderTree()->findPath(b.files.filePath("gone")), -1);
}

void TestBrowserWindow::treeFollowsAndDrives()
{
    Browser b;
    b.files.createFolder("x/y");
    QVERIFY(b.show(b.files.filePath("x/y")));
    FolderTreeModel *tree = b.window->folderTree();
    auto *treeView = b.window->findChild<QTreeView *>(QStringLiteral("PTxShTree1"));
    QCOMPARE(tree->nodePath(tree->nodeForIndex(treeView->currentIndex())), b.files.filePath("x/y"));
    auto *drives = b.window->findChild<QComboBox *>(QStringLiteral("PTxShCombo1"));
    QCOMPARE(drives->currentData().toString(), b.files.filePath("x/y"));
    QCOMPARE(drives->itemData(0).toString(), QStringLiteral("/"));

    // Choosing a folder in the tree lists it.
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    treeView->setCurrentIndex(tree->indexForNode(tree->findPath(b.files.filePath("x"))));
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.filePath("x"));

    // Collapse keeps the node list: the search walks it by index.
    const int nodes = tree->nodeCount();
    b.window->toolClick(QStringLiteral("ID_CollapseBtn"));
    QCOMPARE(tree->nodeCount(), nodes);
    QVERIFY(!treeView->isExpanded(tree->indexForNode(0)));
}

void TestBrowserWindow::workingFolders()
{
    Browser b;
    b.files.createFolder("pics");
    b.createFiles({"pics/a.png", "pics/b.jpg"});
    b.state.workingFolders = {b.files.filePath("pics") + QStringLiteral(" (15)"), QStringLiteral("/no/such/folder (0)")};
    b.window->refreshWorkingFolderList();
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    b.window->toolClick(QStringLiteral("ID_SetFolderBtn"));
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.filePath("pics"));
    QCOMPARE(b.filterIndex(), 15); // PNG
    QCOMPARE(b.window->fileList()->fileCount(), 1);

    auto *list = b.window->findChild<QListWidget *>(QStringLiteral("List1"));
    list->setCurrentRow(1);
    b.window->toolClick(QStringLiteral("ID_SetFolderBtn"));
    QCOMPARE(b.responder.messageTexts(), QStringList{"Folder not Found - /no/such/folder"});
    QCOMPARE(b.window->currentFolder(), b.files.filePath("pics"));

    // The list saved from the working folders window comes back with its
    // first line chosen.
    whenModal(QStringLiteral("SetFoldr1"), [](QWidget *dialog) {
        dialog->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    b.window->toolClick(QStringLiteral("ID_mnuSetWorkingFolders"));
    QCOMPARE(list->count(), 2);
    QCOMPARE(b.window->workingFolderIndex(), 0);
    QVERIFY(b.home.read(QStringLiteral("FoldFile.INI")).startsWith(b.files.filePath("pics").toUtf8() + " (15)\r\n"));
}

void TestBrowserWindow::closingTheDocumentWindowsEndsTheHandOver_data()
{
    QTest::addColumn<QString>("chosen"); // what the list has chosen when the windows close
    QTest::newRow("nothing chosen in the list") << "";
    QTest::newRow("a file chosen in the list") << "c.txt";
}

void TestBrowserWindow::closingTheDocumentWindowsEndsTheHandOver()
{
    QFETCH(QString, chosen);
    Browser b;
    b.createFiles({"a.jpg", "b.txt", "c.txt"});
    QVERIFY(b.show(b.files.path()));
    b.chooseFilter(39);
    MDIForm1 *frame = b.window->frame();
    frame->setDocumentFactory([](const QString &path, viewer::DocumentKind kind) {
        return new DocumentDouble(viewer::kindLetter(kind), 0, path);
    });
    QVERIFY(!b.window->fileHandedOver());

    b.window->DisplayImage(b.files.filePath("a.jpg"));
    b.window->DisplayImage(b.files.filePath("b.txt"));
    QVERIFY(b.window->fileHandedOver());
    QCOMPARE(b.window->fileToOpen(), b.files.filePath("b.txt"));
    QVERIFY(b.enabled("ID_mnuSaveFileAs"));
    if (!chosen.isEmpty())
        b.select(chosen);

    // One window closed: the other still holds its file.
    QList<QMdiSubWindow *> windows = frame->mdiArea()->subWindowList();
    QCOMPARE(windows.size(), 2);
    QPointer<QMdiSubWindow> first = windows.first();
    first->close();
    QTRY_VERIFY(first.isNull());
    QVERIFY(b.window->fileHandedOver());
    QCOMPARE(b.window->fileToOpen(), b.files.filePath("b.txt"));

    QPointer<QMdiSubWindow> last = frame->mdiArea()->subWindowList().constFirst();
    last->close();
    QTRY_VERIFY(last.isNull());
    QVERIFY(!b.window->fileHandedOver());
    QVERIFY(b.window->fileToOpen().isEmpty());
    if (chosen.isEmpty()) {
        QVERIFY(b.state.currentFile.isEmpty());
        QVERIFY(!b.enabled("ID_mnuSaveFileAs"));
    } else {
        QCOMPARE(b.state.currentFile, b.files.filePath(chosen));
        QVERIFY(b.enabled("ID_mnuSaveFileAs"));
    }
    frame->hide();
}

void TestBrowserWindow::computerInNetwork_data()
{
    QTest::addColumn<bool>("accept");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("stored");
    QTest::addColumn<bool>("noNetwork");
    QTest::newRow("typed host name") << true << "  nas1 " << "nas1" << false;
    QTest::newRow("cancel stores an empty name") << false << "nas1" << "" << true;
}

void TestBrowserWindow::computerInNetwork()
{
    QFETCH(bool, accept);
    QFETCH(QString, typed);
    QFETCH(QString, stored);
    QFETCH(bool, noNetwork);
    Browser b;
    b.state.networkComputer = QStringLiteral("old");
    QString prompt;
    whenModal(QStringLiteral("SetComputer1"), [&](QWidget *dialog) {
        prompt = dialog->findChild<QLabel *>(QStringLiteral("Label1"))->text();
        dialog->findChild<QLineEdit *>(QStringLiteral("TxtComputer"))->setText(typed);
        dialog->findChild<QPushButton *>(accept ? QStringLiteral("OKBtn") : QStringLiteral("CancelBtn"))->click();
    });
    b.window->toolClick(QStringLiteral("ID_mnuSetComputerinNetwork"));
    QCOMPARE(prompt, QStringLiteral("Please Select your Computer Name on the Network - Cancel if you are not using a "
                                    "Computer Network."));
    QCOMPARE(b.state.networkComputer, stored);
    QCOMPARE(b.state.options.networkComputer, stored);
    QCOMPARE(b.state.noNetwork, noNetwork);
}

void TestBrowserWindow::panesSavedAndRestored()
{
    // The splitter shares out what the window has, in the saved proportion.
    // (What exit writes is read back with the other options.)
    Browser b(Browser::Start::Unloaded);
    const double dpi = b.window->logicalDpiX();
    b.saveOptions([dpi](settings::ProgramOptions &o) {
        o.treePane3 = QString::number(200 * 1440.0 / dpi);
        o.listPane3 = QString::number(600 * 1440.0 / dpi);
    });
    b.load();
    QVERIFY(b.showWindow());
    const QList<int> sizes = b.window->findChild<QSplitter *>(QStringLiteral("Splitter"))->sizes();
    QCOMPARE(sizes.size(), 2);
    QVERIFY2(qAbs(sizes.at(1) - 3 * sizes.at(0)) <= 4, qPrintable(QStringLiteral("%1 %2").arg(sizes.at(0)).arg(sizes.at(1))));
}

void TestBrowserWindow::optionsWrittenAtCloseAndReadBack()
{
    // A user moves and sizes the window, drags the panes, picks a view and a
    // computer, and exits: the next start finds all of it in "Options.INI".
    Browser b;
    b.window->setGeometry(40, 50, 700, 500);
    QVERIFY(b.showWindow());
    auto *splitter = b.window->findChild<QSplitter *>(QStringLiteral("Splitter"));
    splitter->setSizes({250, 440});
    const QList<int> dragged = splitter->sizes();
    b.window->toolClick(QStringLiteral("ID_SmallIconsBtn"));
    b.state.networkComputer = QStringLiteral("nas1");
    const QRect left = b.window->geometry();
    b.window->toolClick(QStringLiteral("ID_ExitBtn"));
    QVERIFY(!b.window->isVisible());

    settings::ProgramOptions read;
    QVERIFY(settings::readProgramOptions(b.home.path(), read).keptDefault.isEmpty());
    auto pixels = [dpi = b.window->logicalDpiX()](const QString &twips) { return twipsAsPixels(twips, dpi); };
    QCOMPARE(QRect(pixels(read.browserLeft), pixels(read.browserTop), pixels(read.browserWidth),
                   pixels(read.browserHeight)),
             left);
    QCOMPARE(pixels(read.treePane3), dragged.at(0));
    QCOMPARE(pixels(read.listPane3), dragged.at(1));
    QVERIFY(!read.treePane1.isEmpty());
    QVERIFY(!read.listPane2.isEmpty());
    QCOMPARE(read.viewStyle, QStringLiteral("1"));
    QCOMPARE(read.networkComputer, QStringLiteral("nas1"));
    QCOMPARE(read.browserValue33, QStringLiteral("0"));
    QCOMPARE(read.separatorPercent, qRound(100.0 * dragged.at(0) / (dragged.at(0) + dragged.at(1))));
    // The file keeps its shape: 34 lines, CR LF.
    const QByteArray file = b.home.read(QStringLiteral("Options.INI"));
    QCOMPARE(file.count("\r\n"), 34);
    QVERIFY(b.responder.messages().isEmpty());

    // The next start comes back as it was left.
    Browser again(Browser::Start::Unloaded);
    again.home.remove();
    again.state.programFolder = b.home.path();
    again.load(b.home.path());
    QCOMPARE(again.window->geometry(), left);
    QCOMPARE(again.window->fileListView()->viewStyle(), ViewStyle::SmallIcons);
    QVERIFY(again.showWindow());
    QCOMPARE(again.window->findChild<QSplitter *>(QStringLiteral("Splitter"))->sizes(), dragged);
    again.window->hide();
}

void TestBrowserWindow::framePlaceWrittenWhenItCloses_data()
{
    QTest::addColumn<QString>("closedBy");
    QTest::newRow("the frame's Exit") << "frame";
    QTest::newRow("the browser's Exit with the frame open") << "browser";
}

void TestBrowserWindow::framePlaceWrittenWhenItCloses()
{
    QFETCH(QString, closedBy);
    Browser b;
    MDIForm1 *frame = b.window->frame();
    frame->show();
    QVERIFY(QTest::qWaitForWindowExposed(frame));
    frame->setGeometry(70, 90, 640, 420);
    const QRect left = frame->geometry();
    if (closedBy == QLatin1String("frame"))
        frame->toolClick(QStringLiteral("ID_mnuExit"));
    else
        b.window->toolClick(QStringLiteral("ID_ExitBtn"));
    QVERIFY(!frame->isVisible());

    settings::ProgramOptions read;
    QVERIFY(settings::readProgramOptions(b.home.path(), read).keptDefault.isEmpty());
    auto pixels = [dpi = frame->logicalDpiX()](const QString &twips) { return twipsAsPixels(twips, dpi); };
    QCOMPARE(QRect(pixels(read.frameLeft), pixels(read.frameTop), pixels(read.frameWidth),
                   pixels(QString::number(read.frameHeight))),
             left);
    QVERIFY(b.responder.messages().isEmpty());

    // The next start opens the frame there.
    Browser again(Browser::Start::Unloaded);
    again.home.remove();
    again.load(b.home.path());
    QCOMPARE(again.window->frame()->geometry(), left);
}

void TestBrowserWindow::geometryRestored_data()
{
    // At 96 DPI a pixel is 15 twips. "check": exact, on screen (size kept,
    // moved onto the screen), screen (cut to the screen), default (untouched).
    QTest::addColumn<QStringList>("lines"); // lines 1 to 4 and 33
    QTest::addColumn<QString>("check");
    QTest::addColumn<QRect>("expected");
    QTest::addColumn<bool>("maximized");
    QTest::newRow("as saved") << QStringList{"1500", "1200", "9000", "6000", "0"} << "exact"
                              << QRect(100, 80, 600, 400) << false;
    QTest::newRow("maximized keeps the normal size") << QStringList{"1500", "1200", "9000", "6000", "2"} << "exact"
                                                    << QRect(100, 80, 600, 400) << true;
    QTest::newRow("off screen comes back on it") << QStringList{"90000", "90000", "9000", "6000", "0"} << "on screen"
                                                << QRect(0, 0, 600, 400) << false;
    QTest::newRow("larger than the screen is cut to it") << QStringList{"0", "0", "90000", "90000", "0"} << "screen"
                                                         << QRect() << false;
    QTest::newRow("unreadable size keeps the default") << QStringList{"0", "0", "wide", "-1", "x"} << "default"
                                                       << QRect() << false;
}

void TestBrowserWindow::geometryRestored()
{
    QFETCH(QStringList, lines);
    QFETCH(QString, check);
    QFETCH(QRect, expected);
    QFETCH(bool, maximized);
    Browser b(Browser::Start::Unloaded);
    if (b.window->logicalDpiX() != 96)
        QSKIP("the rows are written for 96 DPI");
    // Written by hand: unreadable values must reach the browser as they are.
    QStringList file;
    const settings::ProgramOptions defaults;
    for (const auto &row : settings::optionsFileTable())
        file << settings::formatLine(defaults, row);
    for (int i = 0; i < 4; ++i)
        file[i] = lines.at(i);
    file[32] = lines.at(4);
    QFile out(b.home.filePath(QStringLiteral("Options.INI")));
    QVERIFY(out.open(QIODevice::WriteOnly));
    out.write(file.join(QStringLiteral("\r\n")).toLatin1() + "\r\n");
    out.close();
    const QSize before = b.window->size();
    b.load();
    const QRect screen = b.window->screen()->availableGeometry();
    const QRect shown = b.window->geometry();
    if (check == QLatin1String("exact"))
        QCOMPARE(shown, expected);
    else if (check == QLatin1String("on screen"))
        QVERIFY(screen.contains(shown) && shown.size() == expected.size());
    else if (check == QLatin1String("screen"))
        QCOMPARE(shown, screen);
    else
        QCOMPARE(b.window->size(), before);
    QCOMPARE(b.window->windowState().testFlag(Qt::WindowMaximized), maximized);
}

void TestBrowserWindow::separatorPosition_data()
{
    QTest::addColumn<int>("percent");
    QTest::newRow("lowest accepted 20") << 20;
    QTest::newRow("default 30") << 30;
    QTest::newRow("highest accepted 80") << 80;
}

void TestBrowserWindow::separatorPosition()
{
    // Without saved panes the separator position shares out the width; the
    // options window's OK moves the splitter to a changed one.
    QFETCH(int, percent);
    Browser b([percent](settings::ProgramOptions &o) { o.separatorPercent = percent; });
    QVERIFY(b.showWindow({800, 600}));
    auto *splitter = b.window->findChild<QSplitter *>(QStringLiteral("Splitter"));
    auto share = [splitter] { return 100.0 * splitter->sizes().at(0) / (splitter->sizes().at(0) + splitter->sizes().at(1)); };
    QVERIFY2(qAbs(share() - percent) <= 2, qPrintable(QString::number(share())));

    const int next = percent == 80 ? 45 : percent + 15;
    whenModal(QStringLiteral("SetOptns1"), [next](QWidget *dialog) {
        dialog->findChild<QLineEdit *>(QStringLiteral("Text1_6"))->setText(QString::number(next));
        dialog->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    b.window->toolClick(QStringLiteral("ID_mnuSetApplicationOptions"));
    QCOMPARE(b.state.options.separatorPercent, next);
    QVERIFY2(qAbs(share() - next) <= 2, qPrintable(QString::number(share())));
    b.window->hide();
}

void TestBrowserWindow::unwritableFolderIsToldOnce()
{
    // The program folder goes away under the running program (a removed
    // stick, a folder made read-only): the first exit says so, later ones
    // do not, and a write that works again lets the next failure be told.
    Browser b;
    const QString folder = b.home.filePath(QStringLiteral("gone"));
    b.state.programFolder = folder;
    QVERIFY(!b.window->saveOptions());
    QCOMPARE(b.responder.messages().size(), 1);
    QVERIFY(b.responder.messageTexts().first().contains(folder));
    QCOMPARE(b.responder.messages().first().title, QStringLiteral("Tarnby 3.0"));
    QVERIFY(!b.window->saveOptions());
    b.window->close();
    QCOMPARE(b.responder.messages().size(), 1);

    // A second run on the same folder and store stays quiet too.
    Browser second(Browser::Start::Unloaded);
    second.home.remove();
    Tarnby1 next(second.state, second.services, b.store);
    second.state.programFolder = folder;
    QVERIFY(!next.saveOptions());
    QVERIFY(second.responder.messages().isEmpty());

    QVERIFY(QDir().mkpath(folder));
    QVERIFY(next.saveOptions());
    QVERIFY(QFile::exists(folder + QStringLiteral("/Options.INI")));
    QVERIFY(QDir(folder).removeRecursively());
    QVERIFY(!next.saveOptions());
    QCOMPARE(second.responder.messages().size(), 1);
}

void TestBrowserWindow::gridLinesAndMenuTextFollowTheOptions()
{
    Browser b([](settings::ProgramOptions &o) {
        o.gridLines = true;
        o.menuTextStyle = 4;
    });
    b.createFiles({"a.jpg", "b.jpg"});
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow({800, 500}));

    // The details view draws a line under each cell, in the palette's mid tone.
    QTreeView *details = b.window->fileListView()->detailsView();
    const QRect cell = details->visualRect(b.window->fileList()->index(0, 0));
    const QPoint underCell(cell.center().x(), cell.bottom());
    auto pixel = [&] { return details->viewport()->grab().toImage().pixel(underCell); };
    QVERIFY(b.window->fileListView()->gridLines());
    QCOMPARE(pixel(), details->palette().color(QPalette::Mid).rgb());
    b.window->fileListView()->setGridLines(false);
    QVERIFY(pixel() != details->palette().color(QPalette::Mid).rgb());

    // The menu bar, its menus and the toolbar buttons take the menu text style.
    MenuTextStyle *style = menuTextStyleOf(b.window.get());
    QVERIFY(style);
    QCOMPARE(style->relief(), (settings::TextRelief{settings::ReliefKind::Raised, 2}));
    QCOMPARE(b.window->menuBar()->style(), style);
    QCOMPARE(b.window->menuBar()->actions().constFirst()->menu()->style(), style);
    QCOMPARE(b.window->findChild<QToolBar *>(QStringLiteral("BrowserToolBar"))->findChildren<QToolButton *>().constLast()->style(),
             style);

    // The options window's OK applies both at once.
    whenModal(QStringLiteral("SetOptns1"), [](QWidget *dialog) {
        dialog->findChild<QCheckBox *>(QStringLiteral("CHKGRIDLINE"))->setChecked(true);
        dialog->findChild<QRadioButton *>(QStringLiteral("RDMENU_0"))->setChecked(true);
        dialog->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    b.window->toolClick(QStringLiteral("ID_mnuSetApplicationOptions"));
    QVERIFY(b.window->fileListView()->gridLines());
    QVERIFY(style->relief().isFlat());
    b.window->hide();
}

void TestBrowserWindow::thumbnailsFill()
{
    Browser b([](settings::ProgramOptions &o) { o.thumbnailBits = QStringLiteral("8 Bits"); });
    for (int i = 0; i < 30; ++i)
        testPicture(i).save(b.files.filePath(QStringLiteral("p%1.png").arg(i, 2, 10, QLatin1Char('0'))));
    b.createFiles({"notes.txt", "song.mp3"});
    QVERIFY(b.show(b.files.path()));
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    QVERIFY(b.window->thumbnailsShown());
    ThumbnailModel *thumbs = b.window->thumbnailView()->thumbnails();
    QCOMPARE(thumbs->objectName(), QStringLiteral("ImagList1"));
    QCOMPARE(thumbs->rowCount(), 30); // the song matches the filter but is no picture
    QTRY_COMPARE(thumbs->readyCount(), 30);
    const QImage first = thumbs->data(thumbs->index(0), Qt::DecorationRole).value<QImage>();
    QCOMPARE(first.depth(), 8);
    QTRY_VERIFY(!b.enabled("ID_StopBtn"));
    QCOMPARE(b.window->findChild<QProgressBar *>(QStringLiteral("ThumbProgress"))->value(), 30);

    // A filter change builds them again, for the new filter.
    testPicture(0).save(b.files.filePath("x.jpg"));
    b.window->fileList()->refresh(FileListModel::LoadMode::Synchronous);
    b.chooseFilter(0);
    QTRY_COMPARE(thumbs->rowCount(), 1);
    // A view style takes the place of the thumbnails.
    b.window->toolClick(QStringLiteral("ID_ListIconsBtn"));
    QVERIFY(!b.window->thumbnailsShown());
    QCOMPARE(thumbs->rowCount(), 0);
}

void TestBrowserWindow::thumbnailsStayWithinBudget()
{
    Browser b;
    for (int i = 0; i < 300; ++i)
        b.files.createFile(QStringLiteral("p%1.jpg").arg(i, 3, 10, QLatin1Char('0')));
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow({900, 600}));
    ThumbnailView *view = b.window->thumbnailView();
    view->setProducer([](const QString &, const ThumbnailOptions &o) { return testPicture(4).scaled(o.box); });
    ThumbnailModel *thumbs = view->thumbnails();
    const qint64 each = testPicture(4).scaled(QSize(94, 94)).sizeInBytes();
    thumbs->setBudget(each * 60); // room for a screen or two, not the folder
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    QTRY_VERIFY(!view->isLoading());
    QVERIFY(thumbs->imageBytes() <= thumbs->budget());
    QVERIFY(thumbs->readyCount() < 300);
    // Those near the screen are held, the far end was dropped; scrolling
    // there makes it again and drops the top instead, and back again.
    QVERIFY(thumbs->isReady(0));
    QVERIFY(!thumbs->isReady(150));
    view->scrollTo(thumbs->index(150), QAbstractItemView::PositionAtCenter);
    QTRY_VERIFY(thumbs->isReady(150));
    QVERIFY(!thumbs->isReady(0));
    view->scrollToTop();
    QTRY_VERIFY(thumbs->isReady(0));
    QVERIFY(thumbs->imageBytes() <= thumbs->budget());
}

void TestBrowserWindow::thumbnailsFollowAnotherProgram()
{
    // Another program adds, removes and saves over pictures in the folder on
    // show: only those thumbnails are made; the rest, and the choice, stay.
    Browser b;
    b.createFiles({"a.jpg", "b.jpg", "c.jpg", "d.jpg", "e.jpg", "f.jpg"});
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow());
    ThumbnailView *view = b.window->thumbnailView();
    auto mutex = std::make_shared<QMutex>();
    auto made = std::make_shared<QHash<QString, int>>();
    view->setProducer([mutex, made](const QString &path, const ThumbnailOptions &o) {
        const QMutexLocker lock(mutex.get());
        ++(*made)[QFileInfo(path).fileName()];
        return testPicture(4).scaled(o.box);
    });
    ThumbnailModel *thumbs = view->thumbnails();
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    // The last thumbnails come through the event loop after the job ends.
    QTRY_COMPARE_WITH_TIMEOUT(thumbs->readyCount(), 6, 10000);
    QTRY_VERIFY(!view->isLoading());
    view->setCurrentIndex(thumbs->index(thumbs->rowOf(b.files.filePath("c.jpg"))));

    QVERIFY(b.files.runElsewhere(QStringLiteral("cp a.jpg new.jpg && rm b.jpg && printf saved > d.tmp && mv d.tmp d.jpg")));

    const QStringList expected = {b.files.filePath("a.jpg"), b.files.filePath("c.jpg"), b.files.filePath("d.jpg"),
                                  b.files.filePath("e.jpg"), b.files.filePath("f.jpg"), b.files.filePath("new.jpg")};
    QTRY_COMPARE_WITH_TIMEOUT(thumbs->files(), expected, 10000);
    QTRY_COMPARE_WITH_TIMEOUT(thumbs->readyCount(), 6, 10000);
    QTRY_VERIFY(!view->isLoading());
    const QMutexLocker lock(mutex.get());
    QCOMPARE(made->value(QStringLiteral("d.jpg")), 2);
    QCOMPARE(made->value(QStringLiteral("new.jpg")), 1);
    for (const char *kept : {"a.jpg", "c.jpg", "e.jpg", "f.jpg"})
        QVERIFY2(made->value(QLatin1String(kept)) == 1, kept);
    QCOMPARE(view->currentPicture(), b.files.filePath("c.jpg"));
}

void TestBrowserWindow::noThumbnailsToDisplay()
{
    Browser b;
    b.createFiles({"notes.txt", "song.mp3"});
    QVERIFY(b.show(b.files.path()));
    b.window->toolClick(QStringLiteral("ID_mnuViewThumbNails"));
    QCOMPARE(b.responder.messageTexts(), QStringList{"No Thumbnails to Display"});
    QVERIFY(!b.window->thumbnailsShown());
}

void TestBrowserWindow::thumbnailSelectionEnablesFileCommands()
{
    // A thumbnail chosen with the mouse or the keys is the current file, as
    // a line of the list is: the file commands work on it.
    Browser b;
    testPicture(1).save(b.files.filePath("one.png"));
    testPicture(2).save(b.files.filePath("two.png"));
    QVERIFY(b.show(b.files.path()));
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    QVERIFY(b.window->thumbnailsShown());
    ThumbnailView *view = b.window->thumbnailView();
    QVERIFY(!b.enabled("ID_mnuRenameFile"));
    view->setCurrentIndex(view->thumbnails()->index(1));
    for (const char *key : {"ID_mnuRenameFile", "ID_mnuMoveFile", "ID_mnuSaveFileAs", "ID_mnuDeleteFile",
                            "ID_mnuFileProperties"}) {
        if (b.window->commandBar()->action(QLatin1String(key)))
            QVERIFY2(b.enabled(QLatin1String(key)), key);
    }
    QCOMPARE(b.state.currentFile, b.files.filePath("two.png"));

    // F2 in the thumbnails renames the chosen picture.
    QVERIFY(b.showWindow());
    view->setFocus();
    ModalCloser closer;
    QTest::keyClick(view, Qt::Key_F2);
    QCOMPARE(closer.seen().size(), 1);
    b.window->hide();
}

void TestBrowserWindow::listKeepsWholeNamesAfterFilterChange_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("list") << "ID_ListIconsBtn";
    QTest::newRow("small icons") << "ID_SmallIconsBtn";
}

void TestBrowserWindow::listKeepsWholeNamesAfterFilterChange()
{
    // Names in the list view are as wide as they need to be, whichever name
    // the filter leaves at the end of the list.
    QFETCH(QString, key);
    Browser b;
    const QString longName = QStringLiteral("a long name of a holiday picture taken at the sea.jpg");
    b.files.createFile(longName);
    b.createFiles({"b.jpg", "z.png"});
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow({900, 600}));
    b.window->toolClick(key);
    b.chooseFilter(15); // PNG: only the short name
    b.chooseFilter(0);  // JPEG: the long name first, a short one last
    QCoreApplication::processEvents();
    QListView *view = b.window->fileListView()->iconView();
    const QModelIndex index = b.window->fileList()->index(b.window->fileList()->rowForName(longName), 0);
    QVERIFY(index.isValid());
    QTRY_VERIFY(view->visualRect(index).isValid());
    const int needed = view->fontMetrics().horizontalAdvance(longName);
    QVERIFY2(view->visualRect(index).width() >= needed,
             qPrintable(QStringLiteral("%1 < %2").arg(view->visualRect(index).width()).arg(needed)));
    b.window->hide();
}

void TestBrowserWindow::renameOpensWithBaseNameSelected_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("shown");
    QTest::newRow("picture") << "photo.jpg" << "photo";
    QTest::newRow("two dots keep all but the last") << "archive.tar.gz" << "archive.tar";
    QTest::newRow("no extension") << "README" << "README";
    QTest::newRow("database table") << "sales.dbf" << "sales";
}

void TestBrowserWindow::renameOpensWithBaseNameSelected()
{
    // The rename keeps the extension: the box holds the name without it,
    // selected, so that what the user types replaces it.
    QFETCH(QString, name);
    QFETCH(QString, shown);
    Browser b;
    b.files.createFile(name);
    QVERIFY(b.show(b.files.path()));
    b.chooseFilter(39);
    b.select(name);
    QString text;
    QString selected;
    whenModal(QStringLiteral("Rename1"), [&](QWidget *dialog) {
        auto *edit = dialog->findChild<QLineEdit *>(QStringLiteral("Text1"));
        text = edit->text();
        selected = edit->selectedText();
        QTest::keyClicks(edit, QStringLiteral("holiday"));
        dialog->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    b.window->toolClick(QStringLiteral("ID_mnuRenameFile"));
    QCOMPARE(text, shown);
    QCOMPARE(selected, shown);
    const QString renamed = QStringLiteral("holiday") + name.mid(shown.size());
    QVERIFY2(QFile::exists(b.files.filePath(renamed)), qPrintable(renamed));
}

void TestBrowserWindow::stopCancelsThumbnails()
{
    Browser b;
    for (int i = 0; i < 40; ++i)
        b.files.createFile(QStringLiteral("p%1.jpg").arg(i));
    QVERIFY(b.show(b.files.path()));
    auto started = std::make_shared<QSemaphore>();
    auto release = std::make_shared<QSemaphore>();
    b.window->thumbnailView()->setProducer([started, release](const QString &, const ThumbnailOptions &o) {
        started->release();
        release->acquire();
        return testPicture(1).scaled(o.box, Qt::KeepAspectRatio);
    });
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    QVERIFY(started->tryAcquire(1, 5000));
    QVERIFY(b.enabled("ID_StopBtn"));
    b.window->toolClick(QStringLiteral("ID_StopBtn"));
    QVERIFY(!b.enabled("ID_StopBtn"));
    release->release(100);
    b.window->thumbnailView()->job()->wait();
    QTest::qWait(20);
    ThumbnailModel *thumbs = b.window->thumbnailView()->thumbnails();
    QCOMPARE(thumbs->readyCount(), 0);
    QCOMPARE(thumbs->rowCount(), 40); // the names stay, with what was made before Stop
    QVERIFY(b.window->thumbnailView()->job()->isStopped());
}

void TestBrowserWindow::folderChangeDropsStaleThumbnails()
{
    Browser b;
    for (int i = 0; i < 20; ++i)
        b.files.createFile(QStringLiteral("one/p%1.jpg").arg(i));
    b.files.createFile("two/only.jpg");
    QVERIFY(b.show(b.files.filePath("one")));
    auto gate = std::make_shared<QSemaphore>();
    auto seen = std::make_shared<QStringList>();
    auto mutex = std::make_shared<QMutex>();
    b.window->thumbnailView()->setProducer([gate, seen, mutex](const QString &path, const ThumbnailOptions &o) {
        {
            QMutexLocker lock(mutex.get());
            seen->append(QFileInfo(path).fileName());
        }
        if (!path.endsWith(QLatin1String("only.jpg")))
            gate->acquire();
        return testPicture(2).scaled(o.box, Qt::KeepAspectRatio);
    });
    b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
    QTRY_VERIFY(!seen->isEmpty());
    QPointer<imaging::ThumbnailJob> stale = b.window->thumbnailView()->job();
    QTimer::singleShot(50, [gate] { gate->release(1000); }); // lets the stale workers end
    QVERIFY(b.show(b.files.filePath("two")));
    ThumbnailModel *thumbs = b.window->thumbnailView()->thumbnails();
    QTRY_COMPARE(thumbs->files(), QStringList{b.files.filePath("two/only.jpg")});
    QTRY_COMPARE(thumbs->readyCount(), 1);
    QTRY_VERIFY(stale.isNull());
    QMutexLocker lock(mutex.get());
    QVERIFY(seen->size() < 20 + 1); // the old folder was not finished first
}

void TestBrowserWindow::dropOnTreeMovesOrCopies()
{
    Browser b;
    const QString moved = b.files.createFile("move.jpg", "M");
    const QString copied = b.files.createFile("copy.jpg", "C");
    b.files.createFile("target/copy.jpg", "old");
    b.files.createFolder("target");
    QVERIFY(b.show(b.files.path()));
    FolderTreeModel *tree = b.window->folderTree();
    const QModelIndex target = tree->indexForNode(tree->findPath(b.files.filePath("target")));
    QVERIFY(target.isValid());

    QMimeData data;
    data.setUrls({QUrl::fromLocalFile(moved)});
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    QVERIFY(tree->dropMimeData(&data, Qt::MoveAction, -1, -1, target));
    QVERIFY(!QFile::exists(moved));
    QCOMPARE(b.files.read("target/move.jpg"), QByteArray("M"));
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->fileList()->rowForName("move.jpg"), -1);

    // Ctrl copies; an existing name is never overwritten.
    QMimeData again;
    again.setUrls({QUrl::fromLocalFile(copied)});
    QVERIFY(tree->dropMimeData(&again, Qt::CopyAction, -1, -1, target));
    QVERIFY(QFile::exists(copied));
    QCOMPARE(b.files.read("target/copy.jpg"), QByteArray("old"));
    QCOMPARE(b.responder.messageTexts().size(), 1);
    QVERIFY(b.responder.messageTexts().first().startsWith(QStringLiteral("Error Copying File - ") + copied));
}

void TestBrowserWindow::quickView()
{
    Browser b;
    const QString picture = b.files.filePath("q.png");
    testPicture(3).save(picture);
    QVERIFY(b.show(b.files.path()));
    b.select("q.png");
    b.window->toolClick(QStringLiteral("ID_QuikPictBtn"));
    QuikPict1 *quick = b.window->quickView();
    QVERIFY(quick);
    QCOMPARE(quick->windowTitle(), QStringLiteral("Quick View"));
    QTRY_VERIFY(!quick->picture()->image().isNull());
    QCOMPARE(quick->picture()->image().size(), QSize(64, 48));

    // The layout rules, in twips converted at the window's resolution.
    const double dpi = quick->logicalDpiY();
    auto px = [dpi](int twips) { return qRound(twips * dpi / 1440.0); };
    quick->resize(600, 500);
    QCoreApplication::processEvents();
    QFrame *frame = quick->findChild<QFrame *>(QStringLiteral("Frame1"));
    QCOMPARE(frame->size(), QSize(600 - px(195), 500 - px(495)));
    QWidget *image = quick->findChild<QWidget *>(QStringLiteral("Image1"));
    QCOMPARE(image->size(), QSize(600 - px(465), 500 - px(720)));

    // A click toggles normal and stretch.
    QCOMPARE(quick->picture()->paintMode(), 0);
    QTest::mouseClick(quick->picture()->viewport(), Qt::LeftButton);
    QCOMPARE(quick->picture()->paintMode(), 1);
    QTest::mouseClick(quick->picture()->viewport(), Qt::LeftButton);
    QCOMPARE(quick->picture()->paintMode(), 0);
}

void TestBrowserWindow::contextMenusDispatchTheMenuKeys_data()
{
    QTest::addColumn<int>("place");
    QTest::addColumn<QString>("item"); // empty: the empty part of the view
    QTest::addColumn<QStringList>("entries");
    const QStringList file{"ContextOpen", "ID_mnuOpenOLE", "ID_mnuRenameFile", "ID_mnuMoveFile", "ID_mnuDeleteFile",
                           "ContextNewFolder", "ContextCopyPath", "ID_mnuFileProperties"};
    const QStringList folder{"ContextOpen", "ContextNewFolder", "ContextCopyPath"};
    const int list = int(Tarnby1::ContextPlace::FileList);
    QTest::newRow("file in the list") << list << "a.png" << file;
    QTest::newRow("folder in the list") << list << "sub" << folder;
    QTest::newRow("empty part of the list") << list << ""
                                            << QStringList{"ContextNewFolder", "ContextCopyPath", "ID_mnuRefreshFileList"};
    QTest::newRow("thumbnail") << int(Tarnby1::ContextPlace::Thumbnails) << "a.png" << file;
    QTest::newRow("folder in the tree") << int(Tarnby1::ContextPlace::FolderTree) << "sub" << folder;
}

void TestBrowserWindow::contextMenusDispatchTheMenuKeys()
{
    QFETCH(int, place);
    QFETCH(QString, item);
    QFETCH(QStringList, entries);
    Browser b;
    testPicture(5).save(b.files.filePath("a.png"));
    testPicture(6).save(b.files.filePath("b.png"));
    b.files.createFolder("sub");
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow({900, 600}));

    QAbstractItemView *view = b.window->fileListView()->currentView();
    QModelIndex index;
    if (place == int(Tarnby1::ContextPlace::Thumbnails)) {
        b.window->toolClick(QStringLiteral("ID_ThumbsBtn"));
        view = b.window->thumbnailView();
        index = b.window->thumbnailView()->thumbnails()->index(0);
    } else if (place == int(Tarnby1::ContextPlace::FolderTree)) {
        view = b.window->findChild<QTreeView *>(QStringLiteral("PTxShTree1"));
        index = b.window->folderTree()->indexForNode(b.window->folderTree()->findPath(b.files.filePath(item)));
        view->scrollTo(index);
    } else if (!item.isEmpty()) {
        index = b.window->fileList()->index(b.window->fileList()->rowForName(item), 0);
    }
    QCoreApplication::processEvents();
    const QPoint pos = item.isEmpty() ? QPoint(view->viewport()->width() - 5, view->viewport()->height() - 5)
                                      : view->visualRect(index).center();
    QVERIFY(item.isEmpty() || index.isValid());
    std::unique_ptr<QMenu> menu(b.window->contextMenuAt(Tarnby1::ContextPlace(place), pos));
    QVERIFY(menu);
    QStringList names;
    for (QAction *action : menu->actions()) {
        if (!action->isSeparator())
            names << action->objectName();
    }
    QCOMPARE(names, entries);
    if (item == QLatin1String("a.png"))
        QCOMPARE(b.state.currentFile, b.files.filePath("a.png")); // the clicked one is chosen

    // The file commands are the menu bar's own entries: a click runs the key
    // the menu runs (each answered as a cautious user would: No, Cancel).
    QSignalSpy clicked(b.window->commandBar(), &CommandBar::toolClicked);
    b.window->fileCommands()->setUrlOpener([](const QUrl &) { return true; });
    ModalCloser closer;
    QStringList dispatched;
    for (QAction *action : menu->actions()) {
        if (!action->objectName().startsWith(QLatin1String("ID_")))
            continue;
        QCOMPARE(action, b.window->commandBar()->action(action->objectName()));
        action->trigger();
        dispatched << action->objectName();
    }
    QStringList keys;
    for (const QList<QVariant> &signal : clicked)
        keys << signal.at(0).toString();
    QCOMPARE(keys, dispatched);
    QVERIFY(QFile::exists(b.files.filePath("a.png")));
    b.window->hide();
}

void TestBrowserWindow::contextMenuOwnEntries()
{
    Browser b;
    testPicture(5).save(b.files.filePath("a.png"));
    b.files.createFolder("sub");
    QVERIFY(b.show(b.files.path()));
    QVERIFY(b.showWindow({900, 600}));
    QAbstractItemView *view = b.window->fileListView()->currentView();
    auto menuOn = [&](const QString &name) {
        const QModelIndex index = b.window->fileList()->index(b.window->fileList()->rowForName(name), 0);
        return std::unique_ptr<QMenu>(
            b.window->contextMenuAt(Tarnby1::ContextPlace::FileList, view->visualRect(index).center()));
    };
    auto entry = [](QMenu *menu, const char *name) { return menu->findChild<QAction *>(QLatin1String(name)); };

    entry(menuOn("a.png").get(), "ContextCopyPath")->trigger();
    QCOMPARE(QGuiApplication::clipboard()->text(), b.files.filePath("a.png"));

    // New Folder offers a free name; a taken one is refused.
    auto newFolder = [&](const QString &typed) {
        DialogAnswer answer;
        answer.accepted = true;
        answer.text = typed;
        b.responder.answerDialog(answer);
        const qsizetype before = b.responder.dialogs().size();
        entry(menuOn("a.png").get(), "ContextNewFolder")->trigger();
        if (b.responder.dialogs().size() != before + 1 || b.responder.dialogs().last().kind != DialogKind::Text)
            return QStringLiteral("(no text dialog)");
        return b.responder.dialogs().last().text;
    };
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    QCOMPARE(newFolder(QStringLiteral("New Folder")), QStringLiteral("New Folder"));
    QVERIFY(QFileInfo(b.files.filePath("New Folder")).isDir());
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->fileListView()->currentRow(), b.window->fileList()->rowForName("New Folder"));

    QCOMPARE(newFolder(QStringLiteral("sub")), QStringLiteral("New Folder 2"));
    QCOMPARE(b.responder.messageTexts(), QStringList{"Folder already exists - " + b.files.filePath("sub")});
    newFolder(QStringLiteral("a/b"));
    QCOMPARE(b.responder.messageTexts().size(), 2);
    QVERIFY(!QFileInfo::exists(b.files.filePath("a")));
    // Cancel makes nothing.
    b.responder.cancelDialog();
    entry(menuOn("a.png").get(), "ContextNewFolder")->trigger();
    QVERIFY(!QFileInfo::exists(b.files.filePath("New Folder 2")));
    QCOMPARE(b.responder.messageTexts().size(), 2);
    QCOMPARE(b.responder.dialogs().first().title, QStringLiteral("New Folder"));
    QCOMPARE(b.responder.dialogs().first().label, "Name of the new Folder in - " + b.files.path());

    // Open on a folder enters it; on a file it opens the file.
    entry(menuOn("sub").get(), "ContextOpen")->trigger();
    QVERIFY(loaded.wait(5000));
    QCOMPARE(b.window->currentFolder(), b.files.filePath("sub"));
    QStringList opened;
    b.window->frame()->setDocumentFactory([&](const QString &path, viewer::DocumentKind) {
        opened << path;
        return nullptr;
    });
    QVERIFY(b.show(b.files.path()));
    entry(menuOn("a.png").get(), "ContextOpen")->trigger();
    QCOMPARE(opened, QStringList{b.files.filePath("a.png")});

    // Unanswered by a script, the service shows the dialog itself, named as
    // the program's window and offering the free name; what is typed there
    // makes the folder.
    b.services.dialogs.setResponder({});
    QString offered;
    QTimer::singleShot(0, [&offered] {
        auto *dialog = qobject_cast<QInputDialog *>(QApplication::activeModalWidget());
        QVERIFY(dialog && dialog->objectName() == QLatin1String("NewFolder1"));
        offered = dialog->textValue();
        dialog->setTextValue(QStringLiteral("typed"));
        dialog->accept();
    });
    entry(menuOn("a.png").get(), "ContextNewFolder")->trigger();
    QCOMPARE(offered, QStringLiteral("New Folder 2"));
    QVERIFY(QFileInfo(b.files.filePath("typed")).isDir());
    b.window->frame()->hide();
    b.window->hide();
}

QTEST_MAIN(TestBrowserWindow)
#include "tst_browserwindow.moc"
