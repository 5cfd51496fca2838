#include "Tarnby1.h"

#include "ChildFrm1.h"
#include "CommandBar.h"
#include "DocumentWindow.h"
#include "FileCommands.h"
#include "MDIForm1.h"
#include "app/AppState.h"
#include "app/ProgramFolder.h"
#include "app/SettingsStore.h"
#include "services/UiServices.h"
#include "settings/SetColor1.h"
#include "settings/SetFoldr1.h"
#include "settings/SetOptns1.h"
#include "settings/SettingsFiles.h"
#include "settings/WindowColorsApplier.h"
#include "settings/WorkingFolders.h"
#include "shell/CommandLine.h"
#include "shell/OpenRouting.h"
#include "tools/HelpWindow.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QDateTime>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListView>
#include <QLocale>
#include <QMenuBar>
#include <QSplitter>
#include <QTimer>
#include <QToolBar>
#include <QTreeView>
#include <QVBoxLayout>
#include <QWidgetAction>

namespace tarnby::ui {

using commands::BrowserAction;

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

Tarnby1::~Tarnby1() = default;

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
    m_date->setObjectName(QLatin1String(commands::DateToolKey));
    m_date->setMinimumWidth(90);
    m_date->setAlignment(Qt::AlignCenter);
    m_time = new QLabel(second);
    m_time->setObjectName(QLatin1String(commands::TimeToolKey));
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
    auto *central = new QWidget(this);
    auto *layout = new QVBoxLayout(central);
    auto *top = new QHBoxLayout;
    m_driveBox = new QComboBox(central);
    m_driveBox->setObjectName(QStringLiteral("PTxShCombo1"));
    m_driveBox->setMinimumWidth(250);
    m_filterBox = new QComboBox(central);
    m_filterBox->setObjectName(QStringLiteral("CMBFILEFLTR"));
    m_filterBox->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
    m_filterBox->setMinimumContentsLength(30);
    top->addWidget(m_driveBox, 1);
    top->addWidget(m_filterBox, 1);
    layout->addLayout(top);

    m_splitter = new QSplitter(Qt::Horizontal, central);
    m_splitter->setObjectName(QStringLiteral("Splitter"));
    m_tree = new QTreeView(m_splitter);
    m_tree->setObjectName(QStringLiteral("PTxShTree1"));
    m_list = new QListView(m_splitter);
    m_list->setObjectName(QStringLiteral("PTxShList1"));
    m_splitter->setStretchFactor(1, 3);
    layout->addWidget(m_splitter, 1);
    setCentralWidget(central);

    connect(m_filterBox, &QComboBox::activated, this, &Tarnby1::applyFilter);
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
    const settings::SettingsLoadReport loaded = settings::loadSettings(m_state);
    for (const QString &warning : loaded.warnings)
        m_services.messages.inform(warning, this);
    applyMainWindowColors(this, m_state);
    m_startupSteps << QStringLiteral("settings");

    // 6. The panes from their saved sizes.
    m_startupSteps << QStringLiteral("panes");

    // 7. The filter box: the 40 descriptions, each item's data its index,
    // "All Image and MultiMedia Files" selected.
    m_filterBox->clear();
    for (int i = 0; i < catalogue::FilterCount; ++i)
        m_filterBox->addItem(QLatin1String(catalogue::FilterDescriptions[i]), i);
    m_filterBox->setCurrentIndex(catalogue::StartupFilterIndex);
    applyFilter(catalogue::StartupFilterIndex);
    m_startupSteps << QStringLiteral("filter box");

    // 8. The working folders.
    CreateOpenFileExt();
    m_startupSteps << QStringLiteral("working folders");

    // 9. Toolbar states.
    setSelectionCommands(false);
    m_startupSteps << QStringLiteral("toolbar");

    // 10. The organizer database in the program folder.
    m_startupSteps << QStringLiteral("organizer");

    // 11. Quick tips, when the options ask for them.
    m_startupSteps << QStringLiteral("quick tips");
}

void Tarnby1::openCommandLineFiles()
{
    for (const QString &arg : std::as_const(m_state.commandLineArguments)) {
        if (QFileInfo(arg).isFile())
            DisplayImage(QFileInfo(arg).absoluteFilePath());
    }
}

void Tarnby1::applyFilter(int index)
{
    if (index < 0 || index >= catalogue::FilterCount)
        return;
    // The file list is filtered with the pattern; the browser issue fills it.
    m_list->setProperty("filterPattern", QLatin1String(catalogue::FilterPatterns[index]));
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
    if (const std::optional<BrowserAction> action = commands::browserDispatch(key))
        runCommand(*action);
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
    case BrowserAction::OpenInternetPicture: notYetAvailable(QStringLiteral("Open File Located on the Internet")); return;
    case BrowserAction::FindFiles: notYetAvailable(QStringLiteral("Find Files")); return;
    case BrowserAction::FindNext: notYetAvailable(QStringLiteral("Find Next File of Same Type")); return;
    case BrowserAction::SaveFileAs: m_files->SaveFileAs(); return;
    case BrowserAction::MoveFile: m_files->MoveFile(m_state.currentFile, m_state.currentExtension); return;
    case BrowserAction::RenameFile: m_files->RenameFile(m_state.currentFile); return;
    case BrowserAction::DeleteFile: m_files->DeleteFile(m_state.currentFile); return;
    case BrowserAction::PrintFile: notYetAvailable(QStringLiteral("Print File")); return;
    case BrowserAction::PrinterSetup: notYetAvailable(QStringLiteral("Printer Setup")); return;
    case BrowserAction::SendFiles: notYetAvailable(QStringLiteral("Send Files")); return;
    case BrowserAction::ReceiveFiles: notYetAvailable(QStringLiteral("Receive Files")); return;
    case BrowserAction::FileProperties: notYetAvailable(QStringLiteral("File Properties")); return;
    case BrowserAction::SetDatabaseTable: notYetAvailable(QStringLiteral("Set Database Table")); return;
    case BrowserAction::SetDatabaseTableIndex: notYetAvailable(QStringLiteral("Set Database Table Index")); return;
    case BrowserAction::ViewTableComments: notYetAvailable(QStringLiteral("View Table Comments")); return;
    case BrowserAction::ViewThumbnails: notYetAvailable(QStringLiteral("Browse Pictures in a Folder")); return;
    case BrowserAction::AddressBook: notYetAvailable(QStringLiteral("E-Mail Address Book")); return;
    case BrowserAction::ViewGroups:
    case BrowserAction::CreateGroups:
    case BrowserAction::SelectFilesGroup:
    case BrowserAction::OrganizeFilesSearch:
    case BrowserAction::ClearFilesOrganizer:
    case BrowserAction::RepairOrganizer:
    case BrowserAction::BrowseOrganizerTable:
    case BrowserAction::AddOrganizerFiles:
        notYetAvailable(QStringLiteral("The file organizer"));
        return;
    case BrowserAction::WorkingFolders: {
        const QString current = QFileInfo(m_state.currentFile).absolutePath();
        SetFoldr1 window(m_state, m_services, m_state.currentFile.isEmpty() ? m_state.programFolder : current, this);
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
        SetOptns1 window(m_state, m_services, this);
        connect(&window, &SetOptns1::helpRequested, this, [this] { showHelp(false); });
        if (window.exec() == QDialog::Accepted)
            applySettingsToWindows();
        return;
    }
    case BrowserAction::ComputerInNetwork: notYetAvailable(QStringLiteral("Set Computer in Network")); return;
    case BrowserAction::RefreshFileList: return;
    case BrowserAction::CollapseTree: m_tree->collapseAll(); return;
    case BrowserAction::QuickTips: notYetAvailable(QStringLiteral("Quick Tips")); return;
    case BrowserAction::About: notYetAvailable(QStringLiteral("About Tarnby")); return;
    case BrowserAction::LargeIcons:
    case BrowserAction::SmallIcons:
    case BrowserAction::ListIcons:
    case BrowserAction::DetailIcons:
        notYetAvailable(QStringLiteral("Changing the file list's view"));
        return;
    case BrowserAction::UpFolder: notYetAvailable(QStringLiteral("UpFolder")); return;
    case BrowserAction::QuickView: notYetAvailable(QStringLiteral("Quick View")); return;
    case BrowserAction::SetFolder: notYetAvailable(QStringLiteral("SetFolder")); return;
    case BrowserAction::StopThumbnails: return;
    }
}

void Tarnby1::CreateOpenFileExt()
{
    // Read back whole, as at start-up: the file is the list's only source.
    m_state.workingFolders = settings::readWorkingFolders(m_state.programFolder).lines;
    m_workingFolderIndex = m_state.workingFolders.isEmpty() ? -1 : 0;
}

void Tarnby1::applySettingsToWindows()
{
    applyMainWindowColors(this, m_state);
    if (m_frame)
        applyFrameColors(m_frame, m_frame->mdiArea(), m_state);
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

MDIForm1 *Tarnby1::frame()
{
    if (!m_frame) {
        m_frame = new MDIForm1(m_state, m_services, this);
        m_frame->setWindowFlag(Qt::Window);
        m_frame->SetMDIWinSize();
        applyFrameColors(m_frame, m_frame->mdiArea(), m_state);
        connect(m_frame, &MDIForm1::browserCommand, this, &Tarnby1::runCommand);
        connect(m_frame, &MDIForm1::openFileRequested, this, &Tarnby1::DisplayImage);
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
    const bool database = fileSelected && commands::enablesDatabaseEntries(m_state.currentExtension);
    for (const QString &key : commands::databaseSelectionKeys())
        m_bar->setEnabled(key, database);
}

void Tarnby1::DisplayImage(const QString &path)
{
    QApplication::setOverrideCursor(Qt::WaitCursor);
    m_state.currentFile = path;
    const catalogue::FileType type = m_state.classify(path);
    QApplication::restoreOverrideCursor();

    switch (routeForOpen(type)) {
    case OpenRoute::Nothing:
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
        m_state.fileToOpen = path;
        m_state.fileHandedOver = true;
        setSelectionCommands(true);
        MDIForm1 *f = frame();
        f->show();
        f->raise();
        if (QWidget *w = f->NewWindowFile()) {
            if (auto *child = qobject_cast<ChildFrm1 *>(w))
                connect(child, &ChildFrm1::openFileRequested, this, &Tarnby1::DisplayImage);
        }
        return;
    }
    }
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
        m_frame->close();
    }
    if (m_help)
        m_help->close();
    event->accept();
}

} // namespace tarnby::ui
