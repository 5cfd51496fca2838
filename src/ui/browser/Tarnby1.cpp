#include "ui/mail/MailWindows.h"
#include "ui/browser/Tarnby1.h"

#include "core/app/AppState.h"
#include "core/app/ProgramFolder.h"
#include "core/app/SettingsStore.h"
#include "core/app/Twips.h"
#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/browser/NewFolder.h"
#include "core/browser/ThumbnailModel.h"
#include "core/catalogue/CommandLine.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/catalogue/OpenRouting.h"
#include "core/fileops/FolderWatcher.h"
#include "core/search/BrowserSearchSources.h"
#include "core/search/FileSearch.h"
#include "core/settings/SettingsFiles.h"
#include "core/settings/TextRelief.h"
#include "core/settings/WorkingFolders.h"
#include "core/tools/QuickTips.h"
#include "core/viewer/DocumentRules.h"
#include "ui/browser/FileListView.h"
#include "ui/browser/QuikPict1.h"
#include "ui/browser/SetComputer1.h"
#include "ui/browser/ThumbnailView.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/DocumentWindow.h"
#include "ui/frame/MDIForm1.h"
#include "ui/organizer/GrpBatch1.h"
#include "ui/organizer/GrpBrow1.h"
#include "ui/organizer/GrpFlem1.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/organizer/GrpRepair1.h"
#include "ui/organizer/OrganizerAccess.h"
#include "ui/search/FindFile1.h"
#include "ui/services/UiServices.h"
#include "ui/tables/ProPert1.h"
#include "ui/settings/SetColor1.h"
#include "ui/settings/SetFoldr1.h"
#include "ui/settings/SetOptns1.h"
#include "ui/settings/ReliefText.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/printing/PrntFrm1.h"
#include "ui/tools/About1.h"
#include "ui/tools/GetURL1.h"
#include "ui/tools/HelpWindow.h"
#include "ui/tools/QuikTip1.h"

#include <QApplication>
#include <QClipboard>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QLocale>
#include <QMenu>
#include <QMenuBar>
#include <QProgressBar>
#include <QScreen>
#include <QShortcut>
#include <QSignalBlocker>
#include <QSplitter>
#include <QStackedWidget>
#include <QStatusBar>
#include <QStyle>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>
#include <QWidgetAction>

namespace tarnby::ui {

using commands::BrowserAction;

namespace {

// The browser's catalogue lookup: path becomes the current file, and the
// program-wide text and database flags describe it for the other windows.
catalogue::FileType lookUpCurrentFile(AppState &state, const QString &path)
{
    const catalogue::FileType type = catalogue::GetFileTypeFlag(path);
    state.currentFile = path;
    state.textFileFlag = type.textFile;
    state.databaseFileFlag = type.databaseFile;
    return type;
}

// The walk's questions, asked in the program's message boxes.
class MessageQuestions : public search::SearchQuestions
{
public:
    MessageQuestions(MessageService &messages, QWidget *parent)
        : m_messages(messages)
        , m_parent(parent)
    {
    }
    bool continueSearch(const QString &pattern) override
    {
        return m_messages.ask(QStringLiteral("Do you want to continue the Search for - ") + pattern + QStringLiteral(" ?"),
                              m_parent);
    }
    bool searchNetwork() override
    {
        return m_messages.ask(QStringLiteral("Do You want to Search the Network?"), m_parent);
    }

private:
    MessageService &m_messages;
    QWidget *m_parent;
};

} // namespace

Tarnby1::Tarnby1(AppState &state, UiServices &services, SettingsStore &store, QWidget *parent)
    : QMainWindow(parent)
    , m_state(state)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("Tarnby1"));
    setWindowTitle(QStringLiteral("Tarnby 2.9  - The File Utility"));
    m_files = new FileCommands(m_state, m_services, this);
    buildCommandBar();
    buildCentralArea();

    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    m_timer->setInterval(300);
    connect(m_timer, &QTimer::timeout, this, &Tarnby1::updateClock);
    m_timer->start();
    updateClock();
    resize(1000, 700);
}

Tarnby1::~Tarnby1()
{
    // The document windows go with the frame, after this object's members:
    // they must not report back to it then.
    for (const HandedOver &window : std::as_const(m_handedOver))
        disconnect(window.closed);
    m_handedOver.clear();
}

void Tarnby1::buildCommandBar()
{
    m_bar = new CommandBar(this);
    m_bar->setObjectName(QStringLiteral("ToolBarComp1"));
    for (const commands::Menu &menu : commands::browserMenus())
        m_bar->addMenu(menuBar(), menu);

    auto *main = addToolBar(QStringLiteral("Main"));
    main->setObjectName(QStringLiteral("BrowserToolBar"));
    main->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_bar->addTools(main, commands::browserToolbar());

    addToolBarBreak();
    auto *second = addToolBar(QStringLiteral("Categories"));
    second->setObjectName(QStringLiteral("CategoryToolBar"));
    second->setToolButtonStyle(Qt::ToolButtonTextOnly);
    m_bar->addTools(second, commands::browserCategoryToolbar());

    // The date and time tools are labels fed by Timer1.
    m_date = new QLabel(second);
    m_date->setObjectName(commands::keys::Date);
    m_date->setMinimumWidth(90);
    m_date->setAlignment(Qt::AlignCenter);
    m_time = new QLabel(second);
    m_time->setObjectName(commands::keys::Time);
    m_time->setMinimumWidth(80);
    m_time->setAlignment(Qt::AlignCenter);
    second->addSeparator();
    second->addWidget(m_date);
    second->addWidget(m_time);

    connect(m_bar, &CommandBar::toolClicked, this, &Tarnby1::toolClick);
    setSelectionCommands(false);
}

void Tarnby1::buildCentralArea()
{
    m_treeModel = new FolderTreeModel(this);
    m_treeModel->setObjectName(QStringLiteral("FolderTree"));
    m_treeModel->setRoots(systemRoots());
    m_listModel = new FileListModel(this);
    m_listModel->setObjectName(QStringLiteral("File1"));
    m_listModel->setFallbackIcons(style()->standardIcon(QStyle::SP_FileIcon), style()->standardIcon(QStyle::SP_DirIcon));

    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    layout->setContentsMargins(4, 4, 4, 4);
    auto *top = new QHBoxLayout;
    m_driveBox = new QComboBox(central);
    m_driveBox->setObjectName(QStringLiteral("PTxShCombo1"));
    m_driveBox->setMinimumWidth(250);
    m_driveBox->setToolTip(QStringLiteral("Select a Drive or Folder"));
    m_filterBox = new QComboBox(central);
    m_filterBox->setObjectName(QStringLiteral("CMBFILEFLTR"));
    m_filterBox->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_filterBox->setMinimumContentsLength(30);
    m_filterBox->setMaxVisibleItems(20);
    m_filterBox->setToolTip(QStringLiteral("Select the Type of Files to Display"));
    top->addWidget(m_driveBox, 1);
    top->addWidget(m_filterBox, 1);
    layout->addLayout(top);

    m_splitter = new QSplitter(Qt::Horizontal, central);
    m_splitter->setObjectName(QStringLiteral("Splitter"));
    m_splitter->setChildrenCollapsible(false);

    // Left: the folder tree, and below it the working folders.
    m_treeFrame = new QFrame(m_splitter);
    m_treeFrame->setObjectName(QStringLiteral("Frame3"));
    auto *treeLayout = new QVBoxLayout(m_treeFrame);
    treeLayout->setContentsMargins(0, 0, 0, 0);
    m_tree = new QTreeView(m_treeFrame);
    m_tree->setObjectName(QStringLiteral("PTxShTree1"));
    m_tree->setModel(m_treeModel);
    m_tree->setHeaderHidden(true);
    m_tree->setUniformRowHeights(true);
    m_tree->setEditTriggers(QAbstractItemView::NoEditTriggers);
    m_tree->setAcceptDrops(true);
    m_tree->setDragDropMode(QAbstractItemView::DropOnly);
    m_tree->setDropIndicatorShown(true);
    m_tree->setToolTip(QStringLiteral("Select a Folder to Display its Files; drop Files on a Folder to Move them (Ctrl: Copy)"));
    treeLayout->addWidget(m_tree, 1);

    m_folderFrame = new QFrame(m_treeFrame);
    m_folderFrame->setObjectName(QStringLiteral("Frame5"));
    auto *folderLayout = new QVBoxLayout(m_folderFrame);
    folderLayout->setContentsMargins(0, 0, 0, 0);
    auto *label = new QLabel(QStringLiteral("Preset Folders"), m_folderFrame);
    label->setObjectName(QStringLiteral("Label1"));
    m_folderList = new QListWidget(m_folderFrame);
    m_folderList->setObjectName(QStringLiteral("List1"));
    m_folderList->setToolTip(QStringLiteral("Preset Folders and their Filters: SetFolder goes to the highlighted one"));
    m_folderList->setMaximumHeight(110);
    folderLayout->addWidget(label);
    folderLayout->addWidget(m_folderList);
    treeLayout->addWidget(m_folderFrame);
    m_folderFrame->hide();

    // Right: the file list in its view styles, or the thumbnails.
    m_listFrame = new QFrame(m_splitter);
    m_listFrame->setObjectName(QStringLiteral("Frame1"));
    auto *listLayout = new QVBoxLayout(m_listFrame);
    listLayout->setContentsMargins(0, 0, 0, 0);
    m_listStack = new QStackedWidget(m_listFrame);
    m_listStack->setObjectName(QStringLiteral("ListStack"));
    m_listView = new FileListView(m_listModel, m_listStack);
    m_thumbs = new ThumbnailView(m_listStack);
    m_listStack->addWidget(m_listView);
    m_listStack->addWidget(m_thumbs);
    listLayout->addWidget(m_listStack);
    m_splitter->setStretchFactor(0, 1);
    m_splitter->setStretchFactor(1, 3);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);

    m_status = new QLabel(this);
    m_status->setObjectName(QStringLiteral("StatusText"));
    statusBar()->addWidget(m_status, 1);
    m_thumbProgress = new QProgressBar(this);
    m_thumbProgress->setObjectName(QStringLiteral("ThumbProgress"));
    m_thumbProgress->setMaximumWidth(220);
    m_thumbProgress->setFormat(QStringLiteral("Thumbnails %v of %m"));
    m_thumbProgress->hide();
    statusBar()->addPermanentWidget(m_thumbProgress);

    connect(m_filterBox, &QComboBox::activated, this, &Tarnby1::applyFilter);
    connect(m_driveBox, &QComboBox::activated, this, &Tarnby1::driveBoxActivated);
    connect(m_tree->selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this](const QModelIndex &current) { treeCurrentChanged(current); });
    connect(m_tree, &QTreeView::activated, this, [this](const QModelIndex &index) { m_tree->expand(index); });
    connect(m_treeModel, &FolderTreeModel::dropRequested, this,
            [this](const QStringList &paths, const QString &target, Qt::DropAction action) {
                transferDropped(paths, target, action);
            });
    connect(m_listView, &FileListView::currentRowChanged, this, &Tarnby1::listCurrentChanged);
    connect(m_listView, &FileListView::activated, this, &Tarnby1::listActivated);
    connect(m_listModel, &FileListModel::folderLoaded, this, [this] {
        // A walk lists hundreds of folders a second through this model; the
        // status and thumbnails follow once it stops (finishSearch).
        if (m_searchRunning)
            return;
        updateStatus();
        if (thumbnailsShown())
            showThumbnails();
    });
    connect(m_files, &FileCommands::filesChanged, this, &Tarnby1::refreshLists);
    connect(m_folderList, &QListWidget::itemActivated, this, [this] { goToWorkingFolder(); });
    connect(m_splitter, &QSplitter::splitterMoved, this, [this] { storePanes(); });

    connect(m_thumbs, &ThumbnailView::loadingChanged, this, [this](bool loading) {
        m_bar->setEnabled(commands::keys::StopBtn, loading);
        m_thumbProgress->setVisible(loading);
    });
    connect(m_thumbs, &ThumbnailView::progress, this, [this](int done, int total) {
        m_thumbProgress->setMaximum(total);
        m_thumbProgress->setValue(done);
    });
    connect(m_thumbs, &ThumbnailView::pictureActivated, this, &Tarnby1::DisplayImage);
    connect(m_thumbs, &ThumbnailView::currentPictureChanged, this, &Tarnby1::thumbnailCurrentChanged);
    m_bar->setEnabled(commands::keys::StopBtn, false);

    // What other programs change in the shown folder comes in through a watch
    // on it, coalesced; the list is read again once the last reading is in.
    m_folderWatcher = new fileops::FolderWatcher(this);
    m_folderWatcher->setBusyCheck([this] { return m_listModel->isLoading(); });
    connect(m_folderWatcher, &fileops::FolderWatcher::changed, this, &Tarnby1::followFolderChange);
    buildShortcuts();

    // Right-clicks on the tree, both styles of the list and the thumbnails.
    auto offerMenu = [this](QAbstractItemView *view, ContextPlace place) {
        view->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(view, &QWidget::customContextMenuRequested, this, [this, view, place](const QPoint &pos) {
            std::unique_ptr<QMenu> menu(contextMenuAt(place, pos));
            if (menu && !menu->isEmpty())
                menu->exec(view->viewport()->mapToGlobal(pos));
        });
    };
    offerMenu(m_listView->iconView(), ContextPlace::FileList);
    offerMenu(m_listView->detailsView(), ContextPlace::FileList);
    offerMenu(m_thumbs, ContextPlace::Thumbnails);
    offerMenu(m_tree, ContextPlace::FolderTree);
}

QMenu *Tarnby1::contextMenuAt(ContextPlace place, const QPoint &pos)
{
    if (m_searchRunning)
        return nullptr;
    auto *menu = new QMenu(this);
    menu->setObjectName(QStringLiteral("ContextMenu"));
    if (MenuTextStyle *style = menuTextStyleOf(this))
        menu->setStyle(style);
    auto addKey = [this, menu](QLatin1String key) {
        if (QAction *action = m_bar->action(key))
            menu->addAction(action);
    };
    auto addOwn = [menu](const char *name, const QString &text, auto slot) {
        QAction *action = menu->addAction(text);
        action->setObjectName(QLatin1String(name));
        QObject::connect(action, &QAction::triggered, menu, slot);
        return action;
    };
    auto addOpen = [&](const QString &path, bool folder) {
        QAction *open = addOwn("ContextOpen", QStringLiteral("Open"), [this, path, folder] {
            if (folder)
                goToFolder(path);
            else
                DisplayImage(path);
        });
        menu->setDefaultAction(open);
    };
    auto addFolderTools = [&](const QString &folder, const QString &pathToCopy) {
        addOwn("ContextNewFolder", QStringLiteral("New Folder..."), [this, folder] { newFolder(folder); });
        addOwn("ContextCopyPath", QStringLiteral("Copy Path"),
               [pathToCopy] { QGuiApplication::clipboard()->setText(pathToCopy); });
    };

    // The item under the pointer becomes the chosen one, as a left click
    // would make it, so that the commands act on what was clicked.
    QString path;
    bool folder = false;
    switch (place) {
    case ContextPlace::FileList: {
        const QModelIndex index = m_listView->currentView()->indexAt(pos);
        if (index.isValid()) {
            m_listView->setCurrentRow(index.row());
            path = m_listModel->filePath(index.row());
            folder = m_listModel->isFolder(index.row());
        }
        break;
    }
    case ContextPlace::Thumbnails: {
        const QModelIndex index = m_thumbs->indexAt(pos);
        if (index.isValid()) {
            m_thumbs->setCurrentIndex(index);
            path = m_thumbs->currentPicture();
        }
        break;
    }
    case ContextPlace::FolderTree: {
        const QModelIndex index = m_tree->indexAt(pos);
        path = index.isValid() ? m_treeModel->nodePath(m_treeModel->nodeForIndex(index)) : QString();
        folder = true;
        if (path.isEmpty()) {
            delete menu;
            return nullptr; // "Network Neighborhood" and the like are no folders
        }
        break;
    }
    }

    if (path.isEmpty()) {
        // The empty part of the list: the shown folder.
        if (!m_folder.isEmpty())
            addFolderTools(m_folder, m_folder);
        menu->addSeparator();
        addKey(commands::keys::mnuRefreshFileList);
        return menu;
    }
    addOpen(path, folder);
    if (folder) {
        menu->addSeparator();
        addFolderTools(path, path);
        return menu;
    }
    addKey(commands::keys::mnuOpenOLE);
    menu->addSeparator();
    addKey(commands::keys::mnuRenameFile);
    addKey(commands::keys::mnuMoveFile);
    addKey(commands::keys::mnuDeleteFile);
    menu->addSeparator();
    addFolderTools(m_folder, path);
    menu->addSeparator();
    addKey(commands::keys::mnuFileProperties);
    return menu;
}

void Tarnby1::newFolder(const QString &parent)
{
    DialogRequest ask;
    ask.kind = DialogKind::Text;
    ask.title = QStringLiteral("New Folder");
    ask.label = QStringLiteral("Name of the new Folder in - ") + parent;
    ask.text = freeFolderName(parent);
    ask.prepare = [this](QDialog &dialog) {
        dialog.setObjectName(QStringLiteral("NewFolder1"));
        installWindowColors(&dialog, m_state);
    };
    const DialogAnswer typed = m_services.dialogs.run(ask, this);
    if (!typed.accepted)
        return;
    using Outcome = NewFolderResult::Outcome;
    const NewFolderResult made = makeFolder(parent, typed.text);
    switch (made.outcome) {
    case Outcome::Made:
        break;
    case Outcome::EmptyName:
        return; // nothing typed: nothing made, as with Cancel
    case Outcome::InvalidName:
        m_services.messages.inform(QStringLiteral("A Folder Name cannot contain \"/\" or be \".\" or \"..\" - ") + made.path,
                                   this);
        return;
    case Outcome::Exists:
        m_services.messages.inform(QStringLiteral("Folder already exists - ") + made.path, this);
        return;
    case Outcome::Failed:
        m_services.messages.inform(QStringLiteral("Error Creating Folder - ") + made.path, this);
        return;
    }
    const int node = m_treeModel->findPath(parent);
    if (node >= 0 && m_treeModel->isListed(node))
        m_treeModel->refresh(node);
    if (parent != m_folder)
        return;
    // Shown in the list, chosen, once the listing is in.
    selectWhenListed(QFileInfo(made.path).fileName());
    m_listModel->refresh();
}

void Tarnby1::buildShortcuts()
{
    // Keys of the file list (and of the tree where they make sense); Enter
    // opens through the views' own activation.
    auto listKey = [this](const QKeySequence &key, QWidget *scope, auto slot) {
        auto *shortcut = new QShortcut(key, scope);
        shortcut->setContext(Qt::WidgetWithChildrenShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
        return shortcut;
    };
    listKey(QKeySequence(Qt::Key_Delete), m_listFrame, &Tarnby1::deleteSelected);
    listKey(QKeySequence(Qt::Key_F2), m_listFrame, &Tarnby1::renameSelected);
    auto up = [this] { toolClick(commands::keys::UpFolderBtn); };
    listKey(QKeySequence(Qt::Key_Backspace), m_listFrame, up);
    listKey(QKeySequence(Qt::Key_Backspace), m_tree, up);

    auto windowKey = [this](const QKeySequence &key, auto slot) {
        auto *shortcut = new QShortcut(key, this);
        shortcut->setContext(Qt::WindowShortcut);
        connect(shortcut, &QShortcut::activated, this, slot);
    };
    // Keys go through the command keys like clicks do, so that a busy
    // document window holds them off too.
    windowKey(QKeySequence(Qt::Key_F5), [this] { toolClick(commands::keys::RefreshBtn); });
    windowKey(QKeySequence(QStringLiteral("Ctrl+F")), [this] { toolClick(commands::keys::FindBtn); });
    // Esc stops a running walk. The key is taken only while one runs, so
    // that it still closes an editor or a menu at other times.
    m_escape = new QShortcut(QKeySequence(Qt::Key_Escape), this);
    m_escape->setContext(Qt::WindowShortcut);
    m_escape->setEnabled(false);
    connect(m_escape, &QShortcut::activated, this, &Tarnby1::cancelSearch);
}

void Tarnby1::load(const StartupRequest &request)
{
    m_startupSteps.clear();

    // 1. The command line, split at blanks and tabs, enclosing quotes removed.
    m_state.commandLineArguments = splitCommandLine(request.commandLine);
    m_startupSteps << QStringLiteral("command line");

    // 2. The open-dialog filter strings.
    m_dialogFilter = catalogue::openDialogFilter();
    m_pictureDialogFilter = catalogue::pictureDialogFilter();
    m_startupSteps << QStringLiteral("dialog filters");

    // 3. The program folder, recorded under "Registered"/"TarnbyDIR".
    const ProgramFolderResult folder =
        resolveProgramFolder({request.homeOption, request.homeVariable, request.dataFolder}, m_store);
    m_state.programFolder = folder.path;
    m_startupSteps << QStringLiteral("program folder");
    for (const QString &warning : folder.warnings)
        m_services.messages.inform(warning, this);

    // 4. The help pages below the program folder.
    m_startupSteps << QStringLiteral("help file");

    // 5. The settings files: default colours first, then the options, the
    // colours and the working folders.
    const settings::SettingsLoadReport loaded =
        settings::loadSettings(m_state.programFolder, m_state.options, m_state.colors, m_state.workingFolders);
    for (const QString &warning : loaded.warnings)
        m_services.messages.inform(warning, this);
    applySettingsToWindows();
    m_startupSteps << QStringLiteral("settings");

    // 6. The window where it was left, the panes from their saved sizes, and
    // the list's view style.
    restoreWindow();
    restorePanes();
    setViewStyle(viewStyleFromOption(m_state.options.viewStyle));
    m_startupSteps << QStringLiteral("panes");

    // 7. The filter box: the 40 descriptions, each item's data its index,
    // "All Image and MultiMedia Files" selected.
    m_filterBox->clear();
    for (int i = 0; i < catalogue::FilterCount; ++i)
        m_filterBox->addItem(QLatin1String(catalogue::FilterDescriptions[i]), i);
    m_filterBox->setCurrentIndex(catalogue::StartupFilterIndex);
    applyFilter(catalogue::StartupFilterIndex);
    if (m_folder.isEmpty())
        goToFolder(QDir::homePath());
    m_startupSteps << QStringLiteral("filter box");

    // 8. The working folders.
    CreateOpenFileExt();
    m_startupSteps << QStringLiteral("working folders");

    // 9. Toolbar states.
    setSelectionCommands(false);
    m_startupSteps << QStringLiteral("toolbar");

    // 10. The organizer database in the program folder: its name is kept
    // when the file is there; the organizer windows say so when it is not.
    m_state.organizerDatabaseFound =
        QFileInfo::exists(m_state.organizerDatabase()) ? m_state.organizerDatabase() : QString();
    m_startupSteps << QStringLiteral("organizer");

    // 11. Quick tips, when the options ask for them.
    if (tools::showTipsAtStartup(m_state.options.quickTipsAtStartup))
        showQuickTips(m_state, m_services, this);
    m_startupSteps << QStringLiteral("quick tips");
}

void Tarnby1::openCommandLineFiles()
{
    // A folder on the command line is shown; files open as if chosen in the
    // list, each in turn.
    for (const QString &arg : std::as_const(m_state.commandLineArguments)) {
        const QFileInfo info(arg);
        if (info.isDir())
            goToFolder(info.absoluteFilePath());
        else if (info.isFile())
            DisplayImage(info.absoluteFilePath());
    }
}

void Tarnby1::applyFilter(int index)
{
    if (index < 0 || index >= catalogue::FilterCount)
        return;
    m_listModel->setPattern(QLatin1String(catalogue::FilterPatterns[size_t(index)]));
    updateStatus();
    if (thumbnailsShown())
        showThumbnails();
}

bool Tarnby1::goToFolder(const QString &folder)
{
    const QFileInfo info(folder);
    if (!info.isDir())
        return false;
    const QString path = QDir::cleanPath(info.absoluteFilePath());
    m_folder = path;
    m_listModel->setFolder(path);
    m_folderWatcher->setFolder(path);
    setSelectionCommands(false);

    const int node = m_treeModel->revealPath(path);
    if (node >= 0) {
        // The folder opens in the tree too, its subfolders shown under it.
        m_treeModel->expand(node);
        const QModelIndex index = m_treeModel->indexForNode(node);
        m_tree->expand(index);
        m_followTree = false;
        m_tree->setCurrentIndex(index);
        m_tree->scrollTo(index);
        m_followTree = true;
    }
    fillDriveBox();
    updateStatus();
    return true;
}

void Tarnby1::treeCurrentChanged(const QModelIndex &current)
{
    if (!m_followTree)
        return;
    const QString path = m_treeModel->nodePath(m_treeModel->nodeForIndex(current));
    if (path.isEmpty() || path == m_folder)
        return;
    if (!goToFolder(path)) {
        // Gone since the tree listed it: take it out of the tree.
        m_treeModel->refresh(m_treeModel->nodeParent(m_treeModel->nodeForIndex(current)));
    }
}

void Tarnby1::fillDriveBox()
{
    // The roots, with the folders from the current folder's root down to the
    // folder itself beneath its root, indented.
    m_driveBox->clear();
    int currentItem = -1;
    for (int node = 0; node < m_treeModel->nodeCount(); ++node) {
        if (m_treeModel->nodeParent(node) >= 0 && m_treeModel->nodeKind(node) != FolderTreeModel::NodeKind::NetworkMount)
            break; // roots and network mounts come first in the node list
        const QString root = m_treeModel->nodePath(node);
        if (root.isEmpty())
            continue;
        m_driveBox->addItem(m_treeModel->nodeText(node), root);
        if (root == m_folder)
            currentItem = m_driveBox->count() - 1;
    }
    const int node = m_treeModel->findPath(m_folder);
    if (node >= 0 && currentItem < 0) {
        QList<int> chain;
        for (int n = node; n >= 0; n = m_treeModel->nodeParent(n))
            chain.prepend(n);
        const int rootItem = m_driveBox->findData(m_treeModel->nodePath(chain.first()));
        int insertAt = rootItem + 1;
        for (int i = 1; i < chain.size(); ++i) {
            m_driveBox->insertItem(insertAt++, QString(i * 3, QLatin1Char(' ')) + m_treeModel->nodeText(chain.at(i)),
                                   m_treeModel->nodePath(chain.at(i)));
        }
        currentItem = insertAt - 1;
    }
    if (currentItem < 0 && !m_folder.isEmpty()) {
        m_driveBox->addItem(m_folder, m_folder);
        currentItem = m_driveBox->count() - 1;
    }
    m_driveBox->setCurrentIndex(currentItem);
}

void Tarnby1::driveBoxActivated(int index)
{
    const QString path = m_driveBox->itemData(index).toString();
    if (!path.isEmpty() && !goToFolder(path))
        m_services.messages.inform(QStringLiteral("Folder not Found - ") + path, this);
}

void Tarnby1::listCurrentChanged(int row)
{
    if (row < 0 || m_listModel->isFolder(row)) {
        setSelectionCommands(false);
        return;
    }
    // The selected file becomes the current file, looked up as it would be
    // when opened, so that the database entries follow its extension.
    lookUpCurrentFile(m_state, m_listModel->filePath(row));
    setSelectionCommands(true);
    if (m_quick && m_quick->isVisible() && !picturesAmong({m_state.currentFile}).isEmpty())
        m_quick->showPicture(m_state.currentFile);
}

void Tarnby1::thumbnailCurrentChanged(const QString &path)
{
    if (!thumbnailsShown())
        return;
    if (path.isEmpty()) {
        setSelectionCommands(false);
        return;
    }
    // A chosen thumbnail is the current file, as a chosen line of the list is.
    lookUpCurrentFile(m_state, path);
    setSelectionCommands(true);
    if (m_quick && m_quick->isVisible())
        m_quick->showPicture(path);
}

QString Tarnby1::selectedFile() const
{
    if (thumbnailsShown())
        return m_thumbs->currentPicture();
    const int row = m_listView->currentRow();
    if (row < 0 || m_listModel->isFolder(row))
        return {};
    return m_listModel->filePath(row);
}

void Tarnby1::listActivated(int row)
{
    if (row < 0)
        return;
    const QString path = m_listModel->filePath(row);
    if (m_listModel->isFolder(row)) {
        goToFolder(path);
        return;
    }
    DisplayImage(path);
}

void Tarnby1::upFolder()
{
    if (m_folder.isEmpty() || m_folder == QLatin1String("/"))
        return;
    const QString from = m_folder;
    QDir dir(m_folder);
    if (!dir.cdUp())
        return;
    goToFolder(dir.absolutePath());
    // Come back up to the folder we left, selected, as file managers do.
    selectWhenListed(QFileInfo(from).fileName());
}

void Tarnby1::selectWhenListed(const QString &name)
{
    auto select = std::make_shared<QMetaObject::Connection>();
    *select = connect(m_listModel, &FileListModel::folderLoaded, this, [this, name, select] {
        disconnect(*select);
        const int row = m_listModel->rowForName(name);
        if (row >= 0)
            m_listView->setCurrentRow(row);
    });
}

void Tarnby1::refreshLists()
{
    if (m_folder.isEmpty())
        return;
    if (!QFileInfo(m_folder).isDir()) {
        // The folder shown has gone: climb to the nearest one that is left.
        QString up = m_folder;
        while (!QFileInfo(up).isDir() && up != QLatin1String("/"))
            up = QFileInfo(up).absolutePath();
        const int node = m_treeModel->findPath(up);
        if (node >= 0)
            m_treeModel->refresh(node);
        goToFolder(up);
        return;
    }
    const int node = m_treeModel->findPath(m_folder);
    if (node >= 0)
        m_treeModel->refresh(node);
    m_listModel->refresh();
}

void Tarnby1::followFolderChange()
{
    // A walk moves the list through folders of its own.
    if (m_searchRunning)
        return;
    const FileEntry *selected = m_listModel->entry(m_listView->currentRow());
    const QString name = selected ? selected->name : QString();
    refreshLists();
    if (name.isEmpty())
        return;
    // The file the user had selected stays selected when it is still there.
    auto select = std::make_shared<QMetaObject::Connection>();
    *select = connect(m_listModel, &FileListModel::folderLoaded, this, [this, name, select] {
        disconnect(*select);
        if (const int row = m_listModel->rowForName(name); row >= 0)
            m_listView->setCurrentRow(row);
    });
}

void Tarnby1::collapseTree()
{
    m_tree->collapseAll();
}

void Tarnby1::refreshWorkingFolderList()
{
    const QString selected = m_folderList->currentItem() ? m_folderList->currentItem()->text() : QString();
    m_folderList->clear();
    m_folderList->addItems(m_state.workingFolders);
    int row = m_state.workingFolders.indexOf(selected);
    if (row < 0 && !m_state.workingFolders.isEmpty())
        row = 0;
    m_folderList->setCurrentRow(row);
    const bool any = std::any_of(m_state.workingFolders.begin(), m_state.workingFolders.end(),
                                 [](const QString &line) { return !line.trimmed().isEmpty(); });
    m_folderFrame->setVisible(any);
}

void Tarnby1::goToWorkingFolder()
{
    refreshWorkingFolderList();
    const QListWidgetItem *item = m_folderList->currentItem();
    const std::optional<WorkingFolder> line = item ? parseWorkingFolderLine(item->text()) : std::nullopt;
    if (!line)
        return;
    if (!goToFolder(line->folder)) {
        m_services.messages.inform(QStringLiteral("Folder not Found - ") + line->folder, this);
        return;
    }
    if (line->filterIndex >= 0 && line->filterIndex < catalogue::FilterCount) {
        m_filterBox->setCurrentIndex(line->filterIndex);
        applyFilter(line->filterIndex);
    }
}

void Tarnby1::setComputerInNetwork()
{
    // The computers are the hosts of the network mounts.
    QStringList hosts;
    for (int node : m_treeModel->nodeChildren(m_treeModel->networkNode())) {
        const QString host = m_treeModel->nodeText(node).section(QStringLiteral(" ("), 0, 0);
        if (!hosts.contains(host))
            hosts.append(host);
    }
    SetComputer1 dialog(hosts, m_state.networkComputer, this);
    installWindowColors(&dialog, m_state);
    if (dialog.exec() == QDialog::Accepted) {
        m_state.networkComputer = dialog.computerName();
        m_state.noNetwork = false;
    } else {
        m_state.networkComputer.clear();
        m_state.noNetwork = true;
    }
    m_state.options.networkComputer = m_state.networkComputer;
}

bool Tarnby1::thumbnailsShown() const
{
    return m_listStack->currentWidget() == m_thumbs;
}

void Tarnby1::showThumbnails(bool keepMade)
{
    if (m_listModel->isLoading())
        return; // folderLoaded() comes back here
    std::vector<PictureFile> pictures;
    for (int row = 0; row < m_listModel->rowCount(); ++row) {
        const FileEntry *entry = m_listModel->entry(row);
        if (!entry || entry->folder)
            continue;
        const QString path = m_listModel->filePath(row);
        if (isThumbnailPicture(path))
            pictures.push_back({path, entry->size, entry->modified});
    }
    if (pictures.empty()) {
        hideThumbnails();
        m_services.messages.inform(QStringLiteral("No Thumbnails to Display"), this);
        return;
    }
    ThumbnailOptions options;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    options.box = thumbnailBox(m_state.options.thumbnailWidthCm, m_state.options.thumbnailHeightCm, dpi);
    options.bits = thumbnailBitsFromOption(m_state.options.thumbnailBits);
    m_listStack->setCurrentWidget(m_thumbs);
    if (keepMade)
        m_thumbs->updatePictures(pictures, options);
    else
        m_thumbs->showPictures(pictures, options);
}

void Tarnby1::stopThumbnails()
{
    m_thumbs->stop();
}

void Tarnby1::hideThumbnails()
{
    const bool wereShown = thumbnailsShown();
    m_thumbs->clear();
    m_listStack->setCurrentWidget(m_listView);
    // The list's chosen line is the current file again.
    if (wereShown)
        listCurrentChanged(m_listView->currentRow());
}

void Tarnby1::setViewStyle(ViewStyle style)
{
    hideThumbnails();
    m_listView->setViewStyle(style);
    m_state.options.viewStyle = viewStyleToOption(style);
}

void Tarnby1::showQuickView()
{
    if (!m_quick)
        m_quick = new QuikPict1(this);
    if (!m_state.currentFile.isEmpty() && !picturesAmong({m_state.currentFile}).isEmpty()
        && QFileInfo(m_state.currentFile).isFile()) {
        m_quick->showPicture(m_state.currentFile);
    } else {
        m_quick->show();
        m_quick->raise();
    }
}

void Tarnby1::restoreWindow()
{
    const settings::ProgramOptions &o = m_state.options;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    const std::optional<QRect> rect =
        windowRectFromOptions({o.browserLeft, o.browserTop, o.browserWidth, o.browserHeight}, dpi);
    if (rect) {
        const QScreen *shownOn = QGuiApplication::screenAt(rect->center());
        if (!shownOn)
            shownOn = screen();
        setGeometry(clampToScreen(*rect, shownOn ? shownOn->availableGeometry() : QRect()));
    }
    // Set before the window is shown, so that show() opens it maximized.
    if (windowShowFromOption(o.browserValue33) == WindowShow::Maximized)
        setWindowState(windowState() | Qt::WindowMaximized);
}

void Tarnby1::restorePanes()
{
    const settings::ProgramOptions &o = m_state.options;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    const std::optional<QList<int>> widths = paneWidthsFromOptions({o.treePane1, o.treePane2, o.treePane3},
                                                                   {o.listPane1, o.listPane2, o.listPane3}, dpi);
    if (widths)
        m_splitter->setSizes(*widths);
    else
        m_splitter->setSizes(paneWidthsFromPercent(o.separatorPercent, width()));
}

void Tarnby1::storeWindowValues()
{
    if (m_frame && m_frame->isVisible())
        m_frame->storeWindowValues();
    storePanes();
    settings::ProgramOptions &o = m_state.options;
    o.viewStyle = viewStyleToOption(m_listView->viewStyle());
    o.networkComputer = m_state.networkComputer;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    // The size to come back to is the normal one, also when the window is
    // maximized now; the state says how to show it.
    const QRect normal = isMaximized() || isFullScreen() ? normalGeometry() : geometry();
    if (normal.isValid()) {
        const WindowGeometryValues values = windowGeometryValues(normal, dpi);
        o.browserLeft = values.left;
        o.browserTop = values.top;
        o.browserWidth = values.width;
        o.browserHeight = values.height;
    }
    o.browserValue33 = windowShowToOption(isMaximized() ? WindowShow::Maximized : WindowShow::Normal);
}

bool Tarnby1::saveOptions()
{
    storeWindowValues();
    if (m_state.programFolder.isEmpty())
        return false;
    const QString section = QStringLiteral("Browser");
    const QString key = QStringLiteral("UnwritableProgramFolder");
    QString error;
    if (settings::writeProgramOptions(m_state.programFolder, m_state.options, &error)) {
        if (!m_store.value(section, key).toString().isEmpty())
            m_store.setValue(section, key, QString());
        return true;
    }
    // Said once per folder: a folder on a read-only disk stays so, and a
    // message at every exit would only be in the way.
    if (m_store.value(section, key).toString() != m_state.programFolder) {
        m_store.setValue(section, key, m_state.programFolder);
        m_store.sync();
        m_services.messages.inform(error + QStringLiteral(" The window's size, the panes and the view are not "
                                                          "remembered while the program folder cannot be written - ")
                                       + m_state.programFolder,
                                   this);
    }
    return false;
}

void Tarnby1::storePanes()
{
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    const QList<int> sizes = m_splitter->sizes();
    if (sizes.size() < 2 || sizes.at(0) <= 0 || sizes.at(1) <= 0)
        return;
    const QPoint treeAt = m_treeFrame->mapTo(this, QPoint(0, 0));
    const QPoint listAt = m_listFrame->mapTo(this, QPoint(0, 0));
    const PaneValues tree = paneValues(treeAt.x(), treeAt.y(), sizes.at(0), dpi);
    const PaneValues list = paneValues(listAt.x(), listAt.y(), sizes.at(1), dpi);
    settings::ProgramOptions &o = m_state.options;
    o.treePane1 = tree.left;
    o.treePane2 = tree.top;
    o.treePane3 = tree.width;
    o.listPane1 = list.left;
    o.listPane2 = list.top;
    o.listPane3 = list.width;
    o.separatorPercent = treePercent(sizes.at(0), sizes.at(1));
}

void Tarnby1::updateStatus()
{
    if (!m_status)
        return;
    if (!m_listModel->errorString().isEmpty() && !m_listModel->isLoading()) {
        m_status->setText(m_listModel->errorString());
        return;
    }
    m_status->setText(m_folder + QLatin1String("  -  ") + QString::number(m_listModel->fileCount())
                      + QLatin1String(m_listModel->fileCount() == 1 ? " file" : " files"));
}

void Tarnby1::deleteSelected()
{
    if (!selectedFile().isEmpty())
        toolClick(commands::keys::mnuDeleteFile);
}

void Tarnby1::renameSelected()
{
    if (!selectedFile().isEmpty())
        toolClick(commands::keys::mnuRenameFile);
}

TransferResult Tarnby1::transferDropped(const QStringList &paths, const QString &targetFolder, Qt::DropAction action)
{
    const TransferMode mode = action == Qt::CopyAction ? TransferMode::Copy : TransferMode::Move;
    const TransferResult result = transferFiles(paths, targetFolder, mode);
    for (const QString &line : result.failed) {
        m_services.messages.inform(
            (mode == TransferMode::Copy ? QStringLiteral("Error Copying File - ") : QStringLiteral("Error Moving File - "))
                + line,
            this);
    }
    if (!result.done.isEmpty()) {
        const int node = m_treeModel->findPath(targetFolder);
        if (node >= 0 && m_treeModel->isListed(node))
            m_treeModel->refresh(node);
        refreshLists();
    }
    return result;
}

void Tarnby1::changeEvent(QEvent *event)
{
    // The working folders may have been edited in their own window.
    if (event->type() == QEvent::ActivationChange && isActiveWindow())
        refreshWorkingFolderList();
    QMainWindow::changeEvent(event);
}

void Tarnby1::updateClock()
{
    const QDateTime now = QDateTime::currentDateTime();
    m_date->setText(QLocale().toString(now.date(), QLocale::ShortFormat));
    m_time->setText(QLocale().toString(now.time(), QLocale::ShortFormat));
}

bool Tarnby1::frameIsBusy() const
{
    if (!m_frame)
        return false;
    const DocumentWindow *doc = m_frame->activeDocument();
    return doc && doc->SHUTOFFCLICK_FLG();
}

void Tarnby1::toolClick(const QString &key)
{
    if (frameIsBusy())
        return;
    const std::optional<BrowserAction> action = commands::browserDispatch(key);
    // While a walk runs, only the stop button is heard: every other command
    // would move the tree or the list under it.
    if (action && m_searchRunning && *action != BrowserAction::StopThumbnails)
        return;
    if (action)
        runCommand(*action);
}

MailWindowHooks Tarnby1::mailHooks()
{
    MailWindowHooks hooks;
    hooks.findDocumentWindow = [this](const QString &path) -> QWidget * {
        if (!m_frame)
            return nullptr;
        return windowShowingFile(m_frame->documentWidgets(), path);
    };
    hooks.openFile = [this](const QString &path) { DisplayImage(path); };
    hooks.help = [this] { showHelp(false); };
    hooks.store = &m_store;
    return hooks;
}

void Tarnby1::notYetAvailable(const QString &what)
{
    m_services.messages.inform(what + QStringLiteral(" is not available in this version of Tarnby."), this);
}

void Tarnby1::runCommand(BrowserAction action)
{
    switch (action) {
    case BrowserAction::OpenFile: {
        DialogRequest request;
        request.kind = DialogKind::OpenFile;
        request.title = QStringLiteral("Select File to Open");
        request.filter = m_dialogFilter.isEmpty() ? catalogue::openDialogFilter() : m_dialogFilter;
        request.directory = QFileInfo(m_state.currentFile).absolutePath();
        const DialogAnswer answer = m_services.dialogs.run(request, this);
        if (answer.accepted && !answer.path.isEmpty())
            DisplayImage(answer.path);
        return;
    }
    case BrowserAction::Exit:
        close();
        return;
    case BrowserAction::HelpContents:
        showHelp(false);
        return;
    case BrowserAction::SearchHelpTopic:
        showHelp(true);
        return;
    case BrowserAction::CloseFile:
        m_state.currentFile.clear();
        setSelectionCommands(false);
        return;
    case BrowserAction::PicturesCategory:
    case BrowserAction::SoundsCategory:
    case BrowserAction::MusicCategory:
    case BrowserAction::VideoCategory:
    case BrowserAction::DocumentCategory:
    case BrowserAction::TableCategory:
    case BrowserAction::AllCategory: {
        const commands::CategoryButton button = *commands::categoryButton(action);
        if (button.filterIndex >= 0)
            m_filterBox->setCurrentIndex(button.filterIndex);
        applyFilter(m_filterBox->currentIndex());
        m_state.categoryLetter = button.letter;
        return;
    }
    case BrowserAction::OpenWithApplication: m_files->OpenwithOLE(); return;
    case BrowserAction::OpenInternetPicture: {
        bool created = false;
        GetURL1 *window = showInternetList(m_state, m_services, this, &created);
        if (created) {
            connect(window, &GetURL1::displayRequested, this, &Tarnby1::DisplayImage);
            connect(window, &GetURL1::helpRequested, this, [this] { showHelp(false); });
        }
        return;
    }
    case BrowserAction::FindFiles: showFindWindow(); return;
    case BrowserAction::FindNext: FindNext(); return;
    case BrowserAction::SaveFileAs: m_files->SaveFileAs(); return;
    case BrowserAction::MoveFile: m_files->MoveFile(m_state.currentFile, catalogue::GetFileExt(m_state.currentFile)); return;
    case BrowserAction::RenameFile: m_files->RenameFile(m_state.currentFile); return;
    case BrowserAction::DeleteFile: m_files->DeleteFile(m_state.currentFile); return;
    case BrowserAction::PrintFile: {
        PrntFrm1 window(m_state, m_services, this);
        preparePrintWindow(window);
        window.exec();
        return;
    }
    case BrowserAction::PrinterSetup: showPageSetup(this); return;
    case BrowserAction::SendFiles: runSendWindow(m_state, m_services, mailHooks(), m_state.currentFile, this); return;
    case BrowserAction::ReceiveFiles: runReceiveWindow(m_state, m_services, mailHooks(), this); return;
    case BrowserAction::FileProperties: showFileProperties(m_state.currentFile, m_state, m_services, this); return;
    case BrowserAction::SetDatabaseTable: runTableCommand(&ChildFrm1::mnuViewTable_Click); return;
    case BrowserAction::SetDatabaseTableIndex: runTableCommand(&ChildFrm1::mnuViewIndex_Click); return;
    case BrowserAction::ViewTableComments: runTableCommand(&ChildFrm1::mnuViewComments_Click); return;
    case BrowserAction::ViewThumbnails: showThumbnails(false); return;
    case BrowserAction::AddressBook: runAddressBook(m_state, m_services, mailHooks(), QStringLiteral("O"), this); return;
    case BrowserAction::ViewGroups:
    case BrowserAction::CreateGroups:
    case BrowserAction::SelectFilesGroup:
    case BrowserAction::OrganizeFilesSearch:
    case BrowserAction::ClearFilesOrganizer:
    case BrowserAction::RepairOrganizer:
    case BrowserAction::BrowseOrganizerTable:
    case BrowserAction::AddOrganizerFiles:
        openOrganizer(action);
        return;
    case BrowserAction::WorkingFolders: {
        SetFoldr1 window(m_state, m_services, m_folder.isEmpty() ? m_state.programFolder : m_folder, this);
        connect(&window, &SetFoldr1::foldersSaved, this, &Tarnby1::CreateOpenFileExt);
        connect(&window, &SetFoldr1::helpRequested, this, [this] { showHelp(false); });
        window.exec();
        return;
    }
    case BrowserAction::ApplicationColors: {
        SetColor1 window(m_state, m_services, this);
        connect(&window, &SetColor1::helpRequested, this, [this] { showHelp(false); });
        if (window.exec() == QDialog::Accepted)
            applySettingsToWindows();
        return;
    }
    case BrowserAction::ApplicationOptions: {
        // The window writes every line: the browser's own lines go in as
        // they are now, not as they were at start-up.
        storeWindowValues();
        const int percent = m_state.options.separatorPercent;
        SetOptns1 window(m_state, m_services, this);
        connect(&window, &SetOptns1::helpRequested, this, [this] { showHelp(false); });
        if (window.exec() == QDialog::Accepted) {
            // A new separator position moves the splitter; an unchanged one
            // leaves the panes as the user dragged them.
            if (m_state.options.separatorPercent != percent)
                m_splitter->setSizes(paneWidthsFromPercent(m_state.options.separatorPercent, m_splitter->width()));
            applySettingsToWindows();
        }
        return;
    }
    case BrowserAction::ComputerInNetwork: setComputerInNetwork(); return;
    case BrowserAction::RefreshFileList: refreshLists(); return;
    case BrowserAction::CollapseTree: collapseTree(); return;
    case BrowserAction::QuickTips: showQuickTips(m_state, m_services, this); return;
    case BrowserAction::About: {
        About1 window(m_state, m_services, m_store, this);
        window.exec();
        return;
    }
    case BrowserAction::LargeIcons: setViewStyle(ViewStyle::LargeIcons); return;
    case BrowserAction::SmallIcons: setViewStyle(ViewStyle::SmallIcons); return;
    case BrowserAction::ListIcons: setViewStyle(ViewStyle::List); return;
    case BrowserAction::DetailIcons: setViewStyle(ViewStyle::Details); return;
    case BrowserAction::UpFolder: upFolder(); return;
    case BrowserAction::QuickView: showQuickView(); return;
    case BrowserAction::SetFolder: goToWorkingFolder(); return;
    case BrowserAction::StopThumbnails:
        if (m_searchRunning)
            cancelSearch();
        else
            stopThumbnails();
        return;
    }
}

void Tarnby1::openOrganizer(BrowserAction action)
{
    const organizer::OrganizerStore store = catalogueFor(m_state);
    auto help = [this](auto *window) {
        connect(window, &std::remove_pointer_t<decltype(window)>::helpRequested, this, [this] { showHelp(false); });
    };
    // The modal windows, each over the same catalogue.
    auto open = [&]<class Window>(auto &&prepare) {
        Window window(m_state, m_services, store, this);
        help(&window);
        prepare(window);
        window.exec();
    };
    auto plain = [](auto &) {};
    if (action == BrowserAction::RepairOrganizer) {
        open.template operator()<GrpRepair1>(plain);
        return;
    }
    if (!catalogueReady(store, m_state, m_services, this))
        return;
    switch (action) {
    case BrowserAction::ViewGroups:
    case BrowserAction::BrowseOrganizerTable:
        open.template operator()<GrpBrow1>(
            [this](GrpBrow1 &window) { connect(&window, &GrpBrow1::fileSelected, this, &Tarnby1::selectFileInList); });
        return;
    case BrowserAction::CreateGroups: open.template operator()<GrpMaint>(plain); return;
    case BrowserAction::SelectFilesGroup:
    case BrowserAction::AddOrganizerFiles: open.template operator()<GrpFlem1>(plain); return;
    case BrowserAction::ClearFilesOrganizer: open.template operator()<GrpClear1>(plain); return;
    case BrowserAction::OrganizeFilesSearch: {
        if (m_batch) {
            m_batch->raise();
            m_batch->activateWindow();
            return;
        }
        // The batch window stays open beside the browser: each OK adds the
        // files the list shows of the folder the search reached, then the
        // search goes on.
        m_batch = new GrpBatch1(m_state, m_services, store, [this] {
            GrpBatch1::FolderFiles files{m_listModel->folder(), {}};
            for (const QString &path : m_listModel->shownFilePaths())
                files.names << QFileInfo(path).fileName();
            return files;
        }, this);
        m_batch->setAttribute(Qt::WA_DeleteOnClose);
        m_batch->setSearchRunning(m_searchRunning);
        connect(this, &Tarnby1::searchRunningChanged, m_batch, &GrpBatch1::setSearchRunning);
        connect(this, &Tarnby1::searchFinished, m_batch, &GrpBatch1::searchFinished);
        help(m_batch.data());
        connect(m_batch, &GrpBatch1::findNextRequested, this, &Tarnby1::FindNext);
        m_batch->show();
        return;
    }
    default:
        return;
    }
}

GrpBatch1 *Tarnby1::batchWindow() const
{
    return m_batch.data();
}

void Tarnby1::selectFileInList(const QString &path)
{
    const QFileInfo info(path);
    if (!goToFolder(info.absolutePath()))
        return;
    auto select = [this, name = info.fileName()] {
        const int row = m_listModel->rowForName(name);
        if (row >= 0)
            m_listView->setCurrentRow(row);
    };
    if (m_listModel->isLoading())
        connect(m_listModel, &FileListModel::folderLoaded, this, select, Qt::SingleShotConnection);
    else
        select();
}

void Tarnby1::showFindWindow()
{
    if (m_searchRunning)
        return;
    FindFile1 window(m_state, this);
    connect(&window, &FindFile1::filterChosen, this, [this](int filter) {
        m_filterBox->setCurrentIndex(filter);
        applyFilter(filter);
    });
    connect(&window, &FindFile1::helpRequested, this, [this] {
        showHelp(false);
        m_help->showTopic(QStringLiteral("search.html"));
    });
    if (window.exec() != QDialog::Accepted) {
        m_status->setText(QStringLiteral("No File Types Selected"));
        return;
    }
    FindFileRoutine();
}

void Tarnby1::FindFileRoutine()
{
    if (m_searchRunning)
        return;
    if (m_state.searchPattern.isEmpty())
        m_state.searchPattern = QLatin1String(search::DefaultPattern);
    if (!m_search) {
        m_searchTree = std::make_unique<search::FolderTreeSearchTree>(*m_treeModel);
        m_searchList = std::make_unique<search::FileListSearchList>(*m_listModel);
        m_searchQuestions = std::make_unique<MessageQuestions>(m_services.messages, this);
        m_search = std::make_unique<search::FileSearch>(*m_searchTree, *m_searchList, *m_searchQuestions);
        m_search->setSliceBudget(search::WindowSliceBudget);
        m_sliceTimer = new QTimer(this);
        m_sliceTimer->setSingleShot(true);
        m_sliceTimer->setInterval(0);
        connect(m_sliceTimer, &QTimer::timeout, this, &Tarnby1::searchSlice);
        m_search->setProgressCallback([this](const search::SearchProgress &progress) {
            m_status->setText(QStringLiteral("Searching %1  -  %2 Folders").arg(progress.folder).arg(progress.examined));
        });
    }
    // The preview frame gives way while the walk runs.
    m_quickHiddenBySearch = m_quick && m_quick->isVisible();
    if (m_quickHiddenBySearch)
        m_quick->hide();
    setSearchRunning(true);
    m_escape->setEnabled(true);
    m_state.cancelFlag = false;
    m_bar->setEnabled(commands::keys::StopBtn, true);

    search::SearchOptions options;
    options.pattern = m_state.searchPattern;
    if (m_state.options.initialSearchCount > 0)
        options.initialCount = m_state.options.initialSearchCount;
    if (m_state.options.nextSearchCount > 0)
        options.nextCount = m_state.options.nextSearchCount;
    options.reportMode = m_state.reportMode;
    options.reportFile = m_state.reportFile();
    m_search->start(options);
    m_sliceTimer->start();
}

void Tarnby1::FindNext()
{
    // The saved position is where the last walk stopped; a walk starts there.
    FindFileRoutine();
}

void Tarnby1::cancelSearch()
{
    m_state.cancelFlag = true;
    if (m_search)
        m_search->cancel();
}

void Tarnby1::searchSlice()
{
    // One slice of the walk, then back to the event loop: the window
    // repaints and the stop button can be pressed between slices.
    const search::SearchOutcome outcome = m_search->step();
    if (outcome == search::SearchOutcome::Running) {
        m_sliceTimer->start();
        return;
    }
    finishSearch(outcome);
}

void Tarnby1::finishSearch(search::SearchOutcome outcome)
{
    using search::SearchOutcome;
    setSearchRunning(false);
    m_escape->setEnabled(false);
    m_bar->setEnabled(commands::keys::StopBtn, false);
    if (m_quickHiddenBySearch && m_quick)
        m_quick->show();
    m_quickHiddenBySearch = false;

    // The list was left on the last folder the walk examined (the found one
    // when it stopped on a find): the browser shows that folder.
    const QString shown = m_search->lastFolder();
    if (!shown.isEmpty()) {
        m_folder = shown;
        const int node = outcome == SearchOutcome::Found ? m_search->foundNode() : m_treeModel->findPath(shown);
        const QModelIndex index = m_treeModel->indexForNode(node);
        if (index.isValid()) {
            m_followTree = false;
            m_tree->setCurrentIndex(index);
            m_tree->scrollTo(index);
            m_followTree = true;
        }
        setSelectionCommands(false);
        fillDriveBox();
    }
    updateStatus();
    if (outcome == SearchOutcome::Found && thumbnailsShown())
        showThumbnails();
    switch (outcome) {
    case SearchOutcome::Cancelled:
        m_services.messages.inform(QStringLiteral("   Search Cancelled"), this);
        break;
    case SearchOutcome::EndOfTree:
        m_services.messages.inform(QStringLiteral(" End of Search . . ."), this);
        break;
    case SearchOutcome::ReportFailed:
        m_services.messages.inform(m_search->errorString(), this);
        break;
    case SearchOutcome::Found:
    case SearchOutcome::Declined:
    case SearchOutcome::Running:
        break;
    }
    setWindowTitle(m_folder.isEmpty() || shown.isEmpty() ? QStringLiteral("Tarnby 3.0")
                                                         : QStringLiteral("Tarnby 3.0 - ") + m_folder);
    emit searchFinished(outcome);
}

void Tarnby1::setSearchRunning(bool running)
{
    if (m_searchRunning == running)
        return;
    m_searchRunning = running;
    emit searchRunningChanged(running);
}

void Tarnby1::CreateOpenFileExt()
{
    // Read back whole, as at start-up: the file is the list's only source.
    // Its first line is the one chosen, whatever was chosen before.
    m_state.workingFolders = settings::readWorkingFolders(m_state.programFolder).lines;
    refreshWorkingFolderList();
    m_folderList->setCurrentRow(m_state.workingFolders.isEmpty() ? -1 : 0);
}

int Tarnby1::workingFolderIndex() const
{
    return m_folderList->currentRow();
}

void Tarnby1::applySettingsToWindows()
{
    applyMainWindowColors(this, m_state);
    m_listView->setGridLines(m_state.options.gridLines);
    const settings::TextRelief menuText = settings::menuTextRelief(m_state.options.menuTextStyle);
    applyMenuTextStyle(this, menuText);
    if (m_frame) {
        applyFrameColors(m_frame, m_frame->mdiArea(), m_state);
        applyMenuTextStyle(m_frame, menuText);
    }
}

void Tarnby1::showHelp(bool search)
{
    if (!m_help) {
        m_help = new HelpWindow(m_state.helpFolder(), this);
        m_help->setWindowFlag(Qt::Window);
    }
    if (search)
        m_help->showSearch();
    else
        m_help->showContents();
    m_help->show();
    m_help->raise();
}

void Tarnby1::preparePrintWindow(PrntFrm1 &window)
{
    connect(&window, &PrntFrm1::helpRequested, this, [this] {
        showHelp(false);
        m_help->showTopic(QStringLiteral("printing.html"));
    });
    // The report walks as a search does, in report mode: from the saved
    // position, with the same questions, and the browser shows where it ended.
    ReportWalker walker;
    walker.start = [this](ReportWalker::Finished finished) {
        if (m_searchRunning)
            return false;
        auto connection = std::make_shared<QMetaObject::Connection>();
        *connection = connect(this, &Tarnby1::searchFinished, this,
                              [connection, finished](search::SearchOutcome outcome) {
                                  QObject::disconnect(*connection);
                                  finished(outcome);
                              });
        FindFileRoutine();
        return true;
    };
    walker.cancel = [this] { cancelSearch(); };
    window.setReportWalker(std::move(walker));
}

MDIForm1 *Tarnby1::frame()
{
    if (!m_frame) {
        m_frame = new MDIForm1(m_state, m_services, this);
        m_frame->setWindowFlag(Qt::Window);
        m_frame->SetMDIWinSize();
        applyFrameColors(m_frame, m_frame->mdiArea(), m_state);
        applyMenuTextStyle(m_frame, settings::menuTextRelief(m_state.options.menuTextStyle));
        connect(m_frame, &MDIForm1::browserCommand, this, &Tarnby1::runCommand);
        m_frame->setPrintWindowSetup([this](PrntFrm1 &window) { preparePrintWindow(window); });
        connect(m_frame, &MDIForm1::openFileRequested, this, &Tarnby1::DisplayImage);
        // File commands of the document windows refresh the lists as the
        // browser's own do; the browser's moves and deletes reach the windows.
        connect(m_frame, &MDIForm1::filesChanged, this, &Tarnby1::refreshLists);
        // The frame's place and size are kept when it closes, as the browser's are.
        connect(m_frame, &MDIForm1::frameClosed, this, [this] { saveOptions(); });
        m_frame->followFileCommands(m_files);
        connect(m_frame, &MDIForm1::returnToBrowserRequested, this, [this] {
            show();
            raise();
            activateWindow();
        });
    }
    return m_frame;
}

void Tarnby1::setSelectionCommands(bool fileSelected)
{
    for (const QString &key : commands::selectionCommandKeys())
        m_bar->setEnabled(key, fileSelected);
    const bool database = fileSelected && commands::enablesDatabaseEntries(catalogue::GetFileExt(m_state.currentFile));
    for (const QString &key : commands::databaseSelectionKeys())
        m_bar->setEnabled(key, database);
}

void Tarnby1::runTableCommand(void (ChildFrm1::*command)())
{
    // The table of the selected file: its window when it is the active one,
    // else a new window, which runs the command once it shows the table.
    const QString path = m_state.currentFile;
    if (m_frame) {
        auto *active = qobject_cast<ChildFrm1 *>(m_frame->activeDocumentWidget());
        if (active && active->filePath() == path && active->FILE_TYPE() == QLatin1String("D")) {
            m_frame->show();
            m_frame->raise();
            (active->*command)();
            return;
        }
    }
    DisplayImage(path);
    auto *opened = m_frame ? qobject_cast<ChildFrm1 *>(m_frame->activeDocumentWidget()) : nullptr;
    if (!opened || opened->filePath() != path || opened->FILE_TYPE() != QLatin1String("D"))
        return;
    connect(opened, &ChildFrm1::documentShown, opened, [opened, command] { (opened->*command)(); },
            Qt::SingleShotConnection);
}

void Tarnby1::DisplayImage(const QString &path)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const catalogue::FileType type = lookUpCurrentFile(m_state, path);
    QApplication::restoreOverrideCursor();

    switch (routeForOpen(type)) {
    case OpenRoute::Nothing:
        if (m_handedOver.isEmpty())
            m_fileToOpen.clear();
        return;
    case OpenRoute::Unsupported:
        m_services.messages.inform(QStringLiteral("File Type is not Supported by this Software"), this);
        return;
    case OpenRoute::Player:
        m_files->play(path);
        return;
    case OpenRoute::Unzip:
        m_files->offerUnzip(path);
        return;
    case OpenRoute::Viewer: {
        setSelectionCommands(true);
        MDIForm1 *f = frame();
        f->show();
        f->raise();
        m_fileToOpen = path;
        QWidget *w = f->NewWindowFile(path, viewer::kindOf(type));
        if (!w) {
            if (m_handedOver.isEmpty())
                m_fileToOpen.clear();
            return;
        }
        if (auto *child = qobject_cast<ChildFrm1 *>(w))
            connect(child, &ChildFrm1::openFileRequested, this, &Tarnby1::DisplayImage);
        const QMetaObject::Connection closed = connect(w, &QObject::destroyed, this, [this](QObject *gone) {
            documentWindowClosed(m_handedOver.take(gone).path);
        });
        m_handedOver.insert(w, {path, closed});
        return;
    }
    }
}

void Tarnby1::documentWindowClosed(const QString &path)
{
    if (!m_handedOver.isEmpty())
        return; // the other windows still hold their files
    m_fileToOpen.clear();
    const QString chosen = selectedFile();
    if (chosen.isEmpty()) {
        if (m_state.currentFile == path)
            m_state.currentFile.clear();
        setSelectionCommands(false);
        return;
    }
    lookUpCurrentFile(m_state, chosen);
    setSelectionCommands(true);
}

void Tarnby1::closeEvent(QCloseEvent *event)
{
    if (m_frame) {
        // Document windows may ask to save; one that refuses keeps the program open.
        m_frame->mdiArea()->closeAllSubWindows();
        if (!m_frame->mdiArea()->subWindowList().isEmpty()) {
            event->ignore();
            return;
        }
        // Written once, with the browser's own values, below.
        const QSignalBlocker quiet(m_frame);
        m_frame->close();
    }
    if (m_help)
        m_help->close();
    // The window, its panes and its view are as the user left them: kept
    // for the next start.
    saveOptions();
    event->accept();
}

} // namespace tarnby::ui
