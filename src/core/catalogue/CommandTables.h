#pragma once

#include "core/catalogue/CommandKeys.h"

#include <QList>
#include <QString>

#include <optional>
#include <variant>
#include <vector>

// The command bars of the viewing frame and of the browser as data: every
// tool's string key, caption and tooltip, the order of menus and toolbars, the
// dispatch tables that turn a clicked key into an action, and the frame's
// enabling routines. The windows build their menus from these tables and
// dispatch through them. Every key is one of the constants in CommandKeys.h.
namespace tarnby::commands {

struct Tool {
    QLatin1String key;
    const char *caption;
    const char *tooltip = ""; // empty: the caption serves as tooltip
};

struct Menu {
    QLatin1String key;
    const char *caption;
    std::vector<Tool> entries;
};

// ---- viewing frame -------------------------------------------------------

// The public operations that the frame calls by name on the active document
// window. Every document window provides all of them.
enum class DocumentOperation {
    FileOpen, FileClose, FileSaveAs, FileRename, FileMove, FileDelete, FilePrint, FileSend,
    FileOLE, FileProptee, EditCopy, ViewTable, ViewIndex, ViewComments, ViewNormal,
    ViewStretch, ViewPanWin, MagnifyingGlass, ImageFlip, ImageRotate, ImageReverse,
    ImageResize, ImageBrightness, ImageContrast, ImageColorInt, ImageInvert, ImageText,
    ImageShapes,
};
inline constexpr int DocumentOperationCount = 28;

// "mnuFileOpen_Click", ..., "MagnifyingGlass", ...
QString documentOperationName(DocumentOperation op);
std::optional<DocumentOperation> documentOperationFromName(const QString &name);

// What the frame does itself.
enum class FrameAction {
    ReturnToBrowser,
    OpenFile,             // own dialog with no document window, else FileOpen on the active one
    ReceiveFiles,
    HelpContents,
    OpenInternetPicture,
    FindFiles,
    FindNext,
    PrinterSetup,
    CloseFrame,
    NoAction,             // Paste, Set Database Table, Set Database Table Index
    PressNormalButton,    // "Normal Image View"
    PressStretchButton,   // "Stretch Image View"
    WorkingFolders,
    ApplicationColors,
    ApplicationOptions,
    Cascade,
    TileHorizontally,
    TileVertically,
    SearchHelpTopic,
    QuickTips,
    About,
    ActivateListedWindow, // a "WindowList" entry
};

using FrameTarget = std::variant<FrameAction, DocumentOperation>;

// The frame's dispatch: exact, case-sensitive key comparison; nullopt for a key
// that matches nothing (such a click does nothing). "ID_mnuReceiveFi1es" and
// "ID_mnuStretchColorIntensity" are tools of the frame's menus that match
// nothing here; the Receive toolbar button and the handler key
// "ID_mnuStretchIntensity" are the working ones.
std::optional<FrameTarget> frameDispatch(const QString &key);

// Every key the frame's dispatch table knows, in table order.
QStringList frameDispatchKeys();

const std::vector<Menu> &frameMenus();
const std::vector<Tool> &frameToolbar();

// The five routines that set the enabled state of the frame's document
// commands, and what each sets, in the order it sets it. Keys a routine leaves
// untouched are absent. EnableButtons enables the Table and Index buttons and
// disables them again in the same pass; the list shows both steps.
enum class EnablingRoutine { DisableButtons, EnableButtons, EnableMDIButtons, EnableTextButtons, EnableDataButtons };

struct EnableChange {
    QString key;
    bool enabled;
};

QList<EnableChange> enablingChanges(EnablingRoutine routine, int indexCount = 0);

// Which routine the command-state refresh runs for a document kind letter
// ("I", "T", "D").
EnablingRoutine enablingRoutineForKind(const QString &fileType);

// ---- browser -------------------------------------------------------------

enum class BrowserAction {
    OpenFile, CloseFile, OpenWithApplication, OpenInternetPicture, FindFiles, FindNext,
    SaveFileAs, MoveFile, RenameFile, DeleteFile, PrintFile, PrinterSetup, SendFiles,
    ReceiveFiles, FileProperties, Exit,
    SetDatabaseTable, SetDatabaseTableIndex, ViewTableComments, ViewThumbnails,
    AddressBook,
    ViewGroups, CreateGroups, SelectFilesGroup, OrganizeFilesSearch, ClearFilesOrganizer,
    RepairOrganizer, BrowseOrganizerTable, AddOrganizerFiles,
    WorkingFolders, ApplicationColors, ApplicationOptions, ComputerInNetwork, RefreshFileList,
    CollapseTree,
    HelpContents, SearchHelpTopic, QuickTips, About,
    LargeIcons, SmallIcons, ListIcons, DetailIcons, UpFolder, QuickView,
    PicturesCategory, SoundsCategory, MusicCategory, VideoCategory, DocumentCategory,
    TableCategory, AllCategory, SetFolder, StopThumbnails,
};

std::optional<BrowserAction> browserDispatch(const QString &key);
QStringList browserDispatchKeys();

const std::vector<Menu> &browserMenus();
const std::vector<Tool> &browserToolbar();       // the first toolbar
const std::vector<Tool> &browserCategoryToolbar(); // the second toolbar, before the clock

// The browser's selection commands: enabled after a file is selected, disabled
// with no selection; the database entries only for DB, DBF, MDB, XLS and "W4".
QStringList selectionCommandKeys();
QStringList databaseSelectionKeys();
bool enablesDatabaseEntries(const QString &extension);

} // namespace tarnby::commands

namespace tarnby::commands {
// The category buttons of the browser's second toolbar. Pictures, Sounds and
// Music select a filter entry; Video, Document, Table and All only apply the
// entry already selected again. Table records "T", the documents letter.
struct CategoryButton {
    QString letter;
    int filterIndex; // -1: keep the selected entry
};
std::optional<CategoryButton> categoryButton(BrowserAction action);
} // namespace tarnby::commands
