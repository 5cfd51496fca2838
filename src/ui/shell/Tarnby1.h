#pragma once

#include "shell/CommandTables.h"
#include "shell/FileCatalogue.h"

#include <QMainWindow>
#include <QStringList>

class QComboBox;
class QLabel;
class QListView;
class QSplitter;
class QTimer;
class QTreeView;

namespace tarnby {
class AppState;
class SettingsStore;
}

namespace tarnby::ui {

class CommandBar;
class FileCommands;
class HelpWindow;
class MDIForm1;
struct UiServices;

// What main() learnt from the command line before the window exists.
struct StartupRequest {
    QString homeOption;           // --home DIR
    QString homeVariable;         // TARNBY_HOME
    QString dataFolder;           // per-user data folder; empty: the standard one
    QString commandLine;          // the remaining arguments as one command line
};

// The browser: the program's main window. It does the start-up work, carries
// the program's menus and toolbars and sends every opened file to the player,
// the unzip offer or the viewing frame.
class Tarnby1 : public QMainWindow
{
    Q_OBJECT
public:
    Tarnby1(AppState &state, UiServices &services, SettingsStore &store, QWidget *parent = nullptr);
    ~Tarnby1() override;

    // The start-up steps, in their order. Messages about the program folder
    // are shown through the message service.
    void load(const StartupRequest &request);
    // The names of the start-up steps in the order they ran (for tests and
    // for the log a developer reads when start-up goes wrong).
    const QStringList &startupSteps() const { return m_startupSteps; }

    // The click handler of the command bar.
    void toolClick(const QString &key);
    void runCommand(commands::BrowserAction action);

    // Opens a file the way a double-click in the list does.
    void DisplayImage(const QString &path);

    // The viewing frame, created on first use.
    MDIForm1 *frame();
    bool hasFrame() const { return m_frame != nullptr; }
    CommandBar *commandBar() const { return m_bar; }
    QComboBox *filterBox() const { return m_filterBox; }
    FileCommands *fileCommands() const { return m_files; }

    // Selection commands: enabled after a file is selected, disabled without.
    void setSelectionCommands(bool fileSelected);

    // Opens the files named on the command line (after start-up).
    void openCommandLineFiles();

    // ---- working folders and settings (settings windows) ----
    // Reads "FoldFile.INI" into state.workingFolders, every line as it
    // stands, and selects the first line when there is one. Runs at start-up
    // and whenever the working folders window saves the list.
    void CreateOpenFileExt();
    // The selected line of the working folder list; -1 when it is empty.
    int workingFolderIndex() const { return m_workingFolderIndex; }
    void setWorkingFolderIndex(int index) { m_workingFolderIndex = index; }
    // Applies changed colours and bold type to the browser and the frame.
    void applySettingsToWindows();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void buildCommandBar();
    void buildCentralArea();
    void updateClock();
    void applyFilter(int index);
    void notYetAvailable(const QString &what);
    void showHelp(bool search);
    bool frameIsBusy() const;

    AppState &m_state;
    UiServices &m_services;
    SettingsStore &m_store;
    QStringList m_startupSteps;
    CommandBar *m_bar = nullptr;
    FileCommands *m_files = nullptr;
    MDIForm1 *m_frame = nullptr;
    HelpWindow *m_help = nullptr;
    QTimer *m_timer = nullptr;
    QLabel *m_date = nullptr;
    QLabel *m_time = nullptr;
    QComboBox *m_driveBox = nullptr;
    QComboBox *m_filterBox = nullptr;
    QTreeView *m_tree = nullptr;
    QListView *m_list = nullptr;
    QSplitter *m_splitter = nullptr;
    QString m_dialogFilter;
    QString m_pictureDialogFilter;
    // The selected working folder line (settings windows).
    int m_workingFolderIndex = -1;
};

} // namespace tarnby::ui
