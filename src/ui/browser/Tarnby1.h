#pragma once

#include "core/browser/BrowserValues.h"
#include "core/catalogue/CommandTables.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/fileops/FileTransfer.h"

#include <QMainWindow>
#include <QHash>
#include <QPointer>
#include <QStringList>

#include <memory>

class QComboBox;
class QFrame;
class QLabel;
class QMenu;
class QListWidget;
class QProgressBar;
class QShortcut;
class QSplitter;
class QStackedWidget;
class QTimer;
class QTreeView;

namespace tarnby {
class AppState;
class FileListModel;
class FolderTreeModel;
class SettingsStore;
}

namespace tarnby::search {
class FileSearch;
class SearchFileList;
class SearchQuestions;
class SearchTree;
enum class SearchOutcome;
}

namespace tarnby::fileops {
class FolderWatcher;
}

namespace tarnby::ui {

class CommandBar;
class FileCommands;
class FileListView;
class GrpBatch1;
class HelpWindow;
class ChildFrm1;
class MDIForm1;
struct MailWindowHooks;
class PrntFrm1;
class QuikPict1;
class ThumbnailView;
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
    // Runs a table command of the document window on the selected file.
    void runTableCommand(void (ChildFrm1::*command)());

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
    // The selected line of the working folder list (List1); -1 when it is empty.
    int workingFolderIndex() const;
    // Applies changed colours and bold type to the browser and the frame.
    void applySettingsToWindows();
    // ---- browsing ------------------------------------------------------
    // Shows folder in the tree, the drive combo and the file list. The list
    // is read off the UI thread; fileList() emits folderLoaded() when it is in.
    // Returns false (and changes nothing) when folder is not a folder.
    bool goToFolder(const QString &folder);
    QString currentFolder() const { return m_folder; }
    FolderTreeModel *folderTree() const { return m_treeModel; }
    FileListModel *fileList() const { return m_listModel; }
    FileListView *fileListView() const { return m_listView; }
    ThumbnailView *thumbnailView() const { return m_thumbs; }
    QuikPict1 *quickView() const { return m_quick; }
    bool thumbnailsShown() const;
    void setViewStyle(ViewStyle style);
    // Moves or copies dropped files into a folder and refreshes the lists.
    TransferResult transferDropped(const QStringList &paths, const QString &targetFolder, Qt::DropAction action);
    // Rebuilds the working-folder list (List1) from the program-wide lines.
    void refreshWorkingFolderList();

    // ---- the hand-over to the viewing frame ----------------------------------
    // The file DisplayImage last gave the viewing frame; empty when none is
    // waiting or open.
    QString fileToOpen() const { return m_fileToOpen; }
    // Whether a document window that the browser opened is still open.
    bool fileHandedOver() const { return !m_handedOver.isEmpty(); }
    // Told by each document window the browser opened, as it goes. When the
    // last one has gone, the hand-over is over: the file to open is cleared,
    // and the current file and the selection commands follow what is chosen
    // in the browser again.
    void documentWindowClosed(const QString &path);

    // ---- context menus ----------------------------------------------------
    // Where a right-click happened.
    enum class ContextPlace { FileList, Thumbnails, FolderTree };
    // The menu a right-click at pos (the view's viewport coordinates) shows.
    // The item under pos becomes the chosen one first. The file commands in
    // it are the menu bar's own actions, so they run the same command keys
    // and share their enabled state; Open, New Folder and Copy Path act on
    // the item itself. The caller owns the menu.
    QMenu *contextMenuAt(ContextPlace place, const QPoint &pos);
    // Asks for a name and makes a folder in parent; the lists show it.
    void newFolder(const QString &parent);

    // ---- what the browser remembers ----------------------------------------
    // Copies the window's position, size and state, the pane sizes, the tree's
    // share of the width and the list's view style into state.options, with
    // the viewing frame's place while it is open.
    void storeWindowValues();
    // storeWindowValues(), then writes the options files (atomically). A
    // program folder that cannot be written is reported once, not at every
    // exit: the store remembers the folder it was reported for until a write
    // there succeeds again. Returns whether the files were written.
    bool saveOptions();

    // ---- the file search ------------------------------------------------
    // Opens the search window; OK there starts FindFileRoutine.
    void showFindWindow();
    // Starts a walk for the program-wide search pattern ("*.BMP" when it is
    // empty) from the saved search position. The walk runs in slices between
    // which the window's events run: these return at once, and the walk ends
    // later with its message and searchFinished(). Does nothing while a walk
    // is running.
    void FindFileRoutine();
    // The same, continuing from where the last walk stopped.
    void FindNext();
    bool searchRunning() const { return m_searchRunning; }
    // Stops the running walk at its next folder (the stop button, Esc).
    void cancelSearch();
    // The walk's saved position, for tests and the organizer.
    search::FileSearch *fileSearch() const { return m_search.get(); }
    // What a print window gets from the browser: the printing help topic and
    // the search walk of its folder-location report.
    void preparePrintWindow(PrntFrm1 &window);

    // ---- the organizer ---------------------------------------------------
    // Opens the organizer window of an Organize command. A catalogue that is
    // missing or damaged is reported, with the repair window offered.
    void openOrganizer(commands::BrowserAction action);
    // The batch add window while it is open (it stays open beside the search).
    GrpBatch1 *batchWindow() const;
    // Shows path's folder and selects the file in the list, as a click would
    // (the group browser's Select).
    void selectFileInList(const QString &path);

signals:
    // The walk has started (true) or ended (false). Every start and end goes
    // through here, the end before its searchFinished(): a window that must
    // keep still while the list passes from folder to folder follows this.
    void searchRunningChanged(bool running);
    void searchFinished(search::SearchOutcome outcome);

protected:
    void closeEvent(QCloseEvent *event) override;
    void changeEvent(QEvent *event) override;

private:
    void buildCommandBar();
    void buildCentralArea();
    void buildShortcuts();
    void updateClock();
    void applyFilter(int index);
    void notYetAvailable(const QString &what);
    MailWindowHooks mailHooks();
    void showHelp(bool search);
    bool frameIsBusy() const;

    void treeCurrentChanged(const QModelIndex &current);
    void listCurrentChanged(int row);
    void listActivated(int row);
    void thumbnailCurrentChanged(const QString &path);
    // The file chosen in the list or, while they are shown, the thumbnails;
    // empty when a folder or nothing is chosen.
    QString selectedFile() const;
    void fillDriveBox();
    void driveBoxActivated(int index);
    void upFolder();
    // Chooses the entry called name in the list when the next listing is in.
    void selectWhenListed(const QString &name);
    void refreshLists();
    void followFolderChange();
    void collapseTree();
    void goToWorkingFolder();
    void setComputerInNetwork();
    // The thumbnails of the listed pictures. keepMade: the folder was listed
    // again (a change on disk, another filter), so the thumbnails made stay;
    // else (the command) every one is made afresh.
    void showThumbnails(bool keepMade = true);
    void stopThumbnails();
    void hideThumbnails();
    void showQuickView();
    void restoreWindow();
    void restorePanes();
    void storePanes();
    void updateStatus();
    void deleteSelected();
    void renameSelected();
    void searchSlice();
    void finishSearch(search::SearchOutcome outcome);
    void setSearchRunning(bool running);

    AppState &m_state;
    UiServices &m_services;
    SettingsStore &m_store;
    QStringList m_startupSteps;
    QPointer<GrpBatch1> m_batch;
    CommandBar *m_bar = nullptr;
    FileCommands *m_files = nullptr;
    MDIForm1 *m_frame = nullptr;
    fileops::FolderWatcher *m_folderWatcher = nullptr;
    HelpWindow *m_help = nullptr;
    QTimer *m_timer = nullptr;
    QLabel *m_date = nullptr;
    QLabel *m_time = nullptr;
    QComboBox *m_driveBox = nullptr;
    QComboBox *m_filterBox = nullptr;
    QTreeView *m_tree = nullptr;
    QSplitter *m_splitter = nullptr;
    FolderTreeModel *m_treeModel = nullptr;
    FileListModel *m_listModel = nullptr;
    FileListView *m_listView = nullptr;
    ThumbnailView *m_thumbs = nullptr;
    QStackedWidget *m_listStack = nullptr;
    QFrame *m_treeFrame = nullptr;
    QFrame *m_listFrame = nullptr;
    QFrame *m_folderFrame = nullptr;
    QListWidget *m_folderList = nullptr;
    QLabel *m_status = nullptr;
    QProgressBar *m_thumbProgress = nullptr;
    QuikPict1 *m_quick = nullptr;
    QString m_folder;
    bool m_followTree = true; // false while the window itself moves the tree
    std::unique_ptr<search::SearchTree> m_searchTree;
    std::unique_ptr<search::SearchFileList> m_searchList;
    std::unique_ptr<search::SearchQuestions> m_searchQuestions;
    std::unique_ptr<search::FileSearch> m_search;
    bool m_searchRunning = false;
    // Runs the next slice of the walk. A timer rather than a posted call, so
    // that input, painting and other timers get their turn between slices.
    QTimer *m_sliceTimer = nullptr;
    QShortcut *m_escape = nullptr;
    bool m_quickHiddenBySearch = false;
    QString m_fileToOpen;
    struct HandedOver {
        QString path;
        QMetaObject::Connection closed;
    };
    QHash<const QObject *, HandedOver> m_handedOver; // by document window
    QString m_dialogFilter;
    QString m_pictureDialogFilter;
};

} // namespace tarnby::ui
