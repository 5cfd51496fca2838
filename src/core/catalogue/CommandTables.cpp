#include "core/catalogue/CommandTables.h"

#include <QHash>

namespace tarnby::commands {

namespace {

struct OperationName {
    DocumentOperation op;
    const char *name;
};

constexpr OperationName operationNames[] = {
    {DocumentOperation::FileOpen, "mnuFileOpen_Click"},
    {DocumentOperation::FileClose, "mnuFileClose_Click"},
    {DocumentOperation::FileSaveAs, "mnuFileSaveAs_Click"},
    {DocumentOperation::FileRename, "mnuFileRename_Click"},
    {DocumentOperation::FileMove, "mnuFileMove_Click"},
    {DocumentOperation::FileDelete, "mnuFileDelete_Click"},
    {DocumentOperation::FilePrint, "mnuFilePrint_Click"},
    {DocumentOperation::FileSend, "mnuFileSend_Click"},
    {DocumentOperation::FileOLE, "mnuFileOLE_Click"},
    {DocumentOperation::FileProptee, "mnuFileProptee_Click"},
    {DocumentOperation::EditCopy, "mnuEditCopy_Click"},
    {DocumentOperation::ViewTable, "mnuViewTable_Click"},
    {DocumentOperation::ViewIndex, "mnuViewIndex_Click"},
    {DocumentOperation::ViewComments, "mnuViewComments_Click"},
    {DocumentOperation::ViewNormal, "mnuViewNormal_Click"},
    {DocumentOperation::ViewStretch, "mnuViewStretch_Click"},
    {DocumentOperation::ViewPanWin, "mnuViewPanWin_Click"},
    {DocumentOperation::MagnifyingGlass, "MagnifyingGlass"},
    {DocumentOperation::ImageFlip, "mnuImageFlip_Click"},
    {DocumentOperation::ImageRotate, "mnuImageRotate_Click"},
    {DocumentOperation::ImageReverse, "mnuImageReverse_Click"},
    {DocumentOperation::ImageResize, "mnuImageResize_Click"},
    {DocumentOperation::ImageBrightness, "mnuImageBrightness_Click"},
    {DocumentOperation::ImageContrast, "mnuImageContrast_Click"},
    {DocumentOperation::ImageColorInt, "mnuImageColorInt_Click"},
    {DocumentOperation::ImageInvert, "mnuImageInvert_Click"},
    {DocumentOperation::ImageText, "mnuImageText_Click"},
    {DocumentOperation::ImageShapes, "mnuImageShapes_Click"},
};
static_assert(std::size(operationNames) == DocumentOperationCount);

struct FrameRow {
    std::vector<QLatin1String> keys;
    FrameTarget target;
};

// The frame's dispatch table, in the order the click handler compares keys.
const std::vector<FrameRow> &frameRows()
{
    using A = FrameAction;
    using D = DocumentOperation;
    static const std::vector<FrameRow> rows = {
        {{keys::ReturnBtn}, A::ReturnToBrowser},
        {{keys::OpenBtn, keys::mnuOpenFile}, A::OpenFile},
        {{keys::CloseBtn, keys::mnuCloseFile}, D::FileClose},
        {{keys::SaveBtn, keys::mnuSaveFileAs}, D::FileSaveAs},
        {{keys::RenameBtn, keys::mnuRenameFile}, D::FileRename},
        {{keys::MoveBtn, keys::mnuMoveFile}, D::FileMove},
        {{keys::DeleteBtn, keys::mnuDeleteFile}, D::FileDelete},
        {{keys::PrintBtn, keys::mnuPrintFile}, D::FilePrint},
        {{keys::SendBtn, keys::mnuSendFiles}, D::FileSend},
        {{keys::ReceiveBtn, keys::mnuReceiveFile}, A::ReceiveFiles},
        {{keys::CopyBtn, keys::mnuCopy}, D::EditCopy},
        {{keys::TableBtn}, D::ViewTable},
        {{keys::IndexBtn}, D::ViewIndex},
        {{keys::NormalBtn}, D::ViewNormal},
        {{keys::StretchBtn}, D::ViewStretch},
        {{keys::ResizeBtn, keys::mnuResize}, D::ImageResize},
        {{keys::BrightnessBtn, keys::mnuBrightness}, D::ImageBrightness},
        {{keys::FontBtn, keys::mnuAddTexttoPictures}, D::ImageText},
        {{keys::ShapesBtn, keys::mnuAddShapestoPictures}, D::ImageShapes},
        {{keys::HelpBtn, keys::mnuHelpContents}, A::HelpContents},
        {{keys::mnuOpenFileApplication}, D::FileOLE},
        {{keys::mnuOpenFileInternet}, A::OpenInternetPicture},
        {{keys::mnuFindFiles}, A::FindFiles},
        {{keys::mnuFindNext}, A::FindNext},
        {{keys::mnuPrinterSetup}, A::PrinterSetup},
        {{keys::mnuFileProperties}, D::FileProptee},
        {{keys::mnuExit}, A::CloseFrame},
        {{keys::mnuPaste}, A::NoAction},
        {{keys::mnuSetDatabaseTable, keys::mnuSetDatabaseTableIndex}, A::NoAction},
        {{keys::mnuSetTableComments}, D::ViewComments},
        {{keys::mnuNormalImageView}, A::PressNormalButton},
        {{keys::mnuStretchImageView}, A::PressStretchButton},
        {{keys::mnuPanImage}, D::ViewPanWin},
        {{keys::mnuMagnifyingGlass}, D::MagnifyingGlass},
        {{keys::mnuFlip}, D::ImageFlip},
        {{keys::mnuRotate}, D::ImageRotate},
        {{keys::mnuReverse}, D::ImageReverse},
        {{keys::mnuContrast}, D::ImageContrast},
        {{keys::mnuStretchIntensity}, D::ImageColorInt},
        {{keys::mnuColorInvert}, D::ImageInvert},
        {{keys::mnuSetWorkingFolders}, A::WorkingFolders},
        {{keys::mnuSetApplicationColors}, A::ApplicationColors},
        {{keys::mnuSetApplicationOptions}, A::ApplicationOptions},
        {{keys::mnuCascade}, A::Cascade},
        {{keys::mnuTileHorizontally}, A::TileHorizontally},
        {{keys::mnuTileVertically}, A::TileVertically},
        {{keys::mnuSearchHelpTopic}, A::SearchHelpTopic},
        {{keys::mnuQuickTips}, A::QuickTips},
        {{keys::mnuAbouttheTarnby}, A::About},
        {{keys::WindowList}, A::ActivateListedWindow},
    };
    return rows;
}

template<typename Row, typename Target>
const QHash<QString, Target> &indexRows(const std::vector<Row> &rows)
{
    static const QHash<QString, Target> index = [&rows] {
        QHash<QString, Target> h;
        for (const Row &row : rows) {
            for (QLatin1String key : row.keys) {
                // The first row that names a key wins, as in a sequential comparison.
                if (!h.contains(key))
                    h.insert(key, row.target);
            }
        }
        return h;
    }();
    return index;
}

} // namespace

QString documentOperationName(DocumentOperation op)
{
    for (const OperationName &row : operationNames) {
        if (row.op == op)
            return QLatin1String(row.name);
    }
    return {};
}

std::optional<DocumentOperation> documentOperationFromName(const QString &name)
{
    for (const OperationName &row : operationNames) {
        if (name == QLatin1String(row.name))
            return row.op;
    }
    return std::nullopt;
}

std::optional<FrameTarget> frameDispatch(const QString &key)
{
    const auto &index = indexRows<FrameRow, FrameTarget>(frameRows());
    const auto it = index.constFind(key);
    if (it == index.constEnd())
        return std::nullopt;
    return *it;
}

QStringList frameDispatchKeys()
{
    QStringList out;
    for (const FrameRow &row : frameRows()) {
        for (QLatin1String key : row.keys)
            out << key;
    }
    return out;
}

const std::vector<Menu> &frameMenus()
{
    static const std::vector<Menu> menus = {
        {keys::mnuFile, "&File", {
            {keys::mnuOpenFile, "Open File"},
            {keys::mnuCloseFile, "Close File"},
            {keys::mnuOpenFileApplication, "Open File with another Application"},
            {keys::mnuOpenFileInternet, "Open File Located on the Internet"},
            {keys::mnuFindFiles, "Find Files"},
            {keys::mnuFindNext, "Find Next", "Find Next Files of the same Type"},
            {keys::mnuSaveFileAs, "Save File As"},
            {keys::mnuRenameFile, "Rename File"},
            {keys::mnuMoveFile, "Move File"},
            {keys::mnuDeleteFile, "Delete File"},
            {keys::mnuPrintFile, "Print File"},
            {keys::mnuPrinterSetup, "Printer Setup"},
            {keys::mnuSendFiles, "Send Files"},
            {keys::mnuReceiveFi1es, "Receive Fi1es"},
            {keys::mnuFileProperties, "File Properties"},
            {keys::mnuExit, "Exit", "Close Viewing Window"},
        }},
        {keys::mnuEdit, "&Edit", {
            {keys::mnuCopy, "Copy"},
            {keys::mnuPaste, "Paste"},
        }},
        {keys::mnuView, "&View", {
            {keys::mnuSetDatabaseTable, "Set Database Table"},
            {keys::mnuSetDatabaseTableIndex, "Set Database Table Index"},
            {keys::mnuSetTableComments, "View Table Comments"},
            {keys::mnuNormalImageView, "Normal Image View"},
            {keys::mnuStretchImageView, "Stretch Image View"},
            {keys::mnuPanImage, "Pan Image"},
            {keys::mnuMagnifyingGlass, "Magnifying Glass"},
        }},
        {keys::mnuImage, "Image", {
            {keys::mnuFlip, "Flip"},
            {keys::mnuRotate, "Rotate"},
            {keys::mnuReverse, "Reverse"},
            {keys::mnuResize, "Resize"},
            {keys::mnuBrightness, "Brightness"},
            {keys::mnuContrast, "Contrast"},
            {keys::mnuStretchColorIntensity, "Stretch Color Intensity"},
            {keys::mnuColorInvert, "Color Invert"},
            {keys::mnuAddTexttoPictures, "Add Text to Pictures", "Add Text to Picture or Image"},
            {keys::mnuAddShapestoPictures, "Add Shapes to Pictures", "Add Shapes to Picture or Image"},
        }},
        {keys::mnuWindow, "&Window", {
            {keys::mnuCascade, "Cascade"},
            {keys::mnuTileHorizontally, "Tile Horizontally"},
            {keys::mnuTileVertically, "Tile Vertically"},
        }},
        {keys::mnuHelp, "&Help", {
            {keys::mnuHelpContents, "Help Contents", "View Help Text Contents"},
            {keys::mnuSearchHelpTopic, "Search Help Topic"},
            {keys::mnuQuickTips, "Quick Tips"},
            {keys::mnuAbouttheTarnby, "About the Tarnby"},
        }},
        {keys::mnuUtilities, "Utilities", {
            {keys::mnuSetWorkingFolders, "Set Working Folders"},
            {keys::mnuSetApplicationColors, "Set Application Colors"},
            {keys::mnuSetApplicationOptions, "Set Application Options"},
        }},
    };
    return menus;
}

const std::vector<Tool> &frameToolbar()
{
    static const std::vector<Tool> tools = {
        {keys::ReturnBtn, "Return", "Return to Main Window"},
        {keys::OpenBtn, "Open", "Open File"},
        {keys::CloseBtn, "Close", "Close File"},
        {keys::SaveBtn, "Save", "Save Current File"},
        {keys::RenameBtn, "Rename"},
        {keys::MoveBtn, "Move"},
        {keys::DeleteBtn, "Delete", "Move File to the Recycle Bin"},
        {keys::PrintBtn, "Print", "Print Current File"},
        {keys::SendBtn, "Send", "Send Current File by E-Mail"},
        {keys::ReceiveBtn, "Receive", "Receive Files by E-Mail"},
        {keys::CopyBtn, "Copy", "Copy Text File to the Clipboard"},
        {keys::TableBtn, "Table", "Select Database File Table"},
        {keys::IndexBtn, "Index", "Select Database File Index"},
        {keys::NormalBtn, "Normal", "View Image as Normal"},
        {keys::StretchBtn, "Stretch", "View Image as Stretched into Frame"},
        {keys::ResizeBtn, "Resize"},
        {keys::BrightnessBtn, "Brightness"},
        {keys::FontBtn, "Font", "Add Text to Picture or Image"},
        {keys::ShapesBtn, "Shapes", "Add Shapes to Picture or Image"},
        {keys::HelpBtn, "Help", "View Help Text Contents"},
    };
    return tools;
}

namespace {
const QStringList fileButtons = {
    keys::CloseBtn, keys::SaveBtn, keys::RenameBtn,
    keys::MoveBtn, keys::DeleteBtn, keys::PrintBtn,
    keys::SendBtn, keys::ReceiveBtn,
};
const QStringList pictureButtons = {
    keys::NormalBtn, keys::StretchBtn, keys::ResizeBtn,
    keys::BrightnessBtn, keys::FontBtn, keys::ShapesBtn,
};
const QStringList fileMenuEntries = {
    keys::mnuOpenFileApplication, keys::mnuCloseFile,
    keys::mnuSaveFileAs, keys::mnuRenameFile,
    keys::mnuMoveFile, keys::mnuDeleteFile,
    keys::mnuPrintFile, keys::mnuSendFiles,
    keys::mnuFileProperties,
};
const QStringList viewModeEntries = {
    keys::mnuNormalImageView, keys::mnuStretchImageView,
    keys::mnuPanImage, keys::mnuMagnifyingGlass,
};

void set(QList<EnableChange> &out, const QStringList &keys, bool enabled)
{
    for (const QString &key : keys)
        out.append({key, enabled});
}
void set(QList<EnableChange> &out, QLatin1String key, bool enabled)
{
    out.append({key, enabled});
}
} // namespace

QList<EnableChange> enablingChanges(EnablingRoutine routine, int indexCount)
{
    QList<EnableChange> out;
    switch (routine) {
    case EnablingRoutine::DisableButtons:
        // Leaves the Open and Help buttons alone but disables the Open menu entry.
        set(out, keys::mnuOpenFile, false);
        set(out, fileButtons, false);
        set(out, keys::CopyBtn, false);
        set(out, keys::TableBtn, false);
        set(out, keys::IndexBtn, false);
        set(out, pictureButtons, false);
        set(out, keys::mnuEdit, false);
        set(out, keys::mnuView, false);
        set(out, keys::mnuImage, false);
        set(out, fileMenuEntries, false);
        set(out, viewModeEntries, false);
        break;
    case EnablingRoutine::EnableButtons:
        set(out, keys::OpenBtn, true);
        set(out, keys::mnuOpenFile, true);
        set(out, fileButtons, true);
        set(out, keys::CopyBtn, true);
        set(out, keys::TableBtn, true);
        set(out, keys::IndexBtn, true);
        set(out, pictureButtons, true);
        set(out, keys::HelpBtn, true);
        set(out, keys::mnuEdit, true);
        set(out, keys::mnuView, true);
        set(out, keys::mnuImage, true);
        set(out, fileMenuEntries, true);
        set(out, viewModeEntries, true);
        set(out, keys::TableBtn, false);
        set(out, keys::IndexBtn, false);
        set(out, keys::mnuSetDatabaseTable, false);
        set(out, keys::mnuSetTableComments, false);
        set(out, keys::mnuSetDatabaseTableIndex, false);
        break;
    case EnablingRoutine::EnableMDIButtons:
        set(out, keys::OpenBtn, true);
        set(out, keys::mnuOpenFile, true);
        set(out, keys::HelpBtn, true);
        break;
    case EnablingRoutine::EnableTextButtons:
        set(out, keys::OpenBtn, true);
        set(out, fileButtons, true);
        set(out, keys::CopyBtn, true);
        set(out, keys::TableBtn, false);
        set(out, keys::IndexBtn, false);
        set(out, pictureButtons, false);
        set(out, keys::HelpBtn, true);
        set(out, keys::mnuView, false);
        set(out, keys::mnuImage, false);
        set(out, viewModeEntries, false);
        set(out, keys::mnuSetDatabaseTable, false);
        set(out, keys::mnuSetTableComments, false);
        set(out, keys::mnuSetDatabaseTableIndex, false);
        break;
    case EnablingRoutine::EnableDataButtons:
        set(out, keys::OpenBtn, true);
        set(out, fileButtons, true);
        set(out, keys::CopyBtn, false);
        if (indexCount > 0)
            set(out, keys::IndexBtn, true);
        set(out, pictureButtons, false);
        set(out, keys::HelpBtn, true);
        set(out, keys::mnuView, true);
        set(out, keys::mnuImage, false);
        set(out, viewModeEntries, false);
        set(out, keys::mnuSetDatabaseTable, true);
        set(out, keys::mnuSetTableComments, true);
        if (indexCount > 0)
            set(out, keys::mnuSetDatabaseTableIndex, true);
        break;
    }
    return out;
}

EnablingRoutine enablingRoutineForKind(const QString &fileType)
{
    if (fileType == QLatin1String("T"))
        return EnablingRoutine::EnableTextButtons;
    if (fileType == QLatin1String("D"))
        return EnablingRoutine::EnableDataButtons;
    return EnablingRoutine::EnableButtons;
}

// ---- browser -------------------------------------------------------------

namespace {
struct BrowserRow {
    std::vector<QLatin1String> keys;
    BrowserAction target;
};

const std::vector<BrowserRow> &browserRows()
{
    using B = BrowserAction;
    static const std::vector<BrowserRow> rows = {
        {{keys::mnuOpenFile, keys::OpenBtn}, B::OpenFile},
        {{keys::mnuCloseFile}, B::CloseFile},
        {{keys::mnuOpenOLE}, B::OpenWithApplication},
        {{keys::mnuOpenInternet}, B::OpenInternetPicture},
        {{keys::mnuFind, keys::FindBtn}, B::FindFiles},
        {{keys::mnuFindNext, keys::FindNextBtn}, B::FindNext},
        {{keys::mnuSaveFileAs}, B::SaveFileAs},
        {{keys::mnuMoveFile}, B::MoveFile},
        {{keys::mnuRenameFile}, B::RenameFile},
        {{keys::mnuDeleteFile}, B::DeleteFile},
        {{keys::mnuPrintFile, keys::PrintBtn}, B::PrintFile},
        {{keys::mnuPrinterSetup}, B::PrinterSetup},
        {{keys::mnuSendFiles, keys::SendBtn, keys::mnuSendFilesbyEMail}, B::SendFiles},
        {{keys::mnuReceiveFiles, keys::ReceiveBtn, keys::mnuReceiveFileEMail}, B::ReceiveFiles},
        {{keys::mnuFileProperties}, B::FileProperties},
        {{keys::mnuExit, keys::ExitBtn}, B::Exit},
        {{keys::mnuSetDatabaseTable}, B::SetDatabaseTable},
        {{keys::mnuSetDatabaseTableIndex}, B::SetDatabaseTableIndex},
        {{keys::mnuViewTableComments}, B::ViewTableComments},
        {{keys::mnuViewThumbNails, keys::ThumbsBtn}, B::ViewThumbnails},
        {{keys::mnuEMailAddressBook}, B::AddressBook},
        {{keys::mnuViewGroups}, B::ViewGroups},
        {{keys::mnuCreateGroups}, B::CreateGroups},
        {{keys::mnuSelectFilesGroup}, B::SelectFilesGroup},
        {{keys::mnuOrganizeFilesSearch}, B::OrganizeFilesSearch},
        {{keys::mnuClearFilesOrg}, B::ClearFilesOrganizer},
        {{keys::mnuRepairOrganizerDatabase}, B::RepairOrganizer},
        {{keys::OrgTBBrwBtn}, B::BrowseOrganizerTable},
        {{keys::AddOrgFilesBtn}, B::AddOrganizerFiles},
        {{keys::mnuSetWorkingFolders}, B::WorkingFolders},
        {{keys::mnuSetApplicationColors}, B::ApplicationColors},
        {{keys::mnuSetApplicationOptions}, B::ApplicationOptions},
        {{keys::mnuSetComputerinNetwork}, B::ComputerInNetwork},
        {{keys::mnuRefreshFileList, keys::RefreshBtn}, B::RefreshFileList},
        {{keys::mnuCollapseExpandedDiskFolderStructure, keys::CollapseBtn}, B::CollapseTree},
        {{keys::mnuHelpContents, keys::HelpBtn}, B::HelpContents},
        {{keys::mnuSearchHelpTopic}, B::SearchHelpTopic},
        {{keys::mnuQuickTips}, B::QuickTips},
        {{keys::mnuAboutTarnby}, B::About},
        {{keys::LargeIconsBtn}, B::LargeIcons},
        {{keys::SmallIconsBtn}, B::SmallIcons},
        {{keys::ListIconsBtn}, B::ListIcons},
        {{keys::DetailIconsBtn}, B::DetailIcons},
        {{keys::UpFolderBtn}, B::UpFolder},
        {{keys::QuikPictBtn}, B::QuickView},
        {{keys::PicturesBtn}, B::PicturesCategory},
        {{keys::SoundsBtn}, B::SoundsCategory},
        {{keys::MusicBtn}, B::MusicCategory},
        {{keys::VideoBtn}, B::VideoCategory},
        {{keys::DocumentBtn}, B::DocumentCategory},
        {{keys::TableBtn}, B::TableCategory},
        {{keys::AllBtn}, B::AllCategory},
        {{keys::SetFolderBtn}, B::SetFolder},
        {{keys::StopBtn}, B::StopThumbnails},
    };
    return rows;
}
} // namespace

std::optional<BrowserAction> browserDispatch(const QString &key)
{
    const auto &index = indexRows<BrowserRow, BrowserAction>(browserRows());
    const auto it = index.constFind(key);
    if (it == index.constEnd())
        return std::nullopt;
    return *it;
}

QStringList browserDispatchKeys()
{
    QStringList out;
    for (const BrowserRow &row : browserRows()) {
        for (QLatin1String key : row.keys)
            out << key;
    }
    return out;
}

const std::vector<Menu> &browserMenus()
{
    static const std::vector<Menu> menus = {
        {keys::mnuFile, "&File", {
            {keys::mnuOpenFile, "Open File"},
            {keys::mnuCloseFile, "Close File"},
            {keys::mnuOpenOLE, "Open File with Another Application", "Open selected file with Default Application"},
            {keys::mnuOpenInternet, "Open File Located on the Internet"},
            {keys::mnuFind, "Find Files", "Find Files on Disk, CD-Rom, Network, and other Devices"},
            {keys::mnuFindNext, "Find Next File of Same Type"},
            {keys::mnuSaveFileAs, "Save File As", "Save selected file with another name"},
            {keys::mnuMoveFile, "Move File"},
            {keys::mnuRenameFile, "Rename File"},
            {keys::mnuDeleteFile, "Delete File", "Move Selected File to the Recycle Bin"},
            {keys::mnuPrintFile, "Print File"},
            {keys::mnuPrinterSetup, "Printer Setup"},
            {keys::mnuSendFiles, "Send Files"},
            {keys::mnuReceiveFiles, "Receive Files"},
            {keys::mnuFileProperties, "File Properties", "Display selected File's Properties"},
            {keys::mnuExit, "Exit", "Exit the Tarnby Application"},
        }},
        {keys::mnuView, "&View", {
            {keys::mnuSetDatabaseTable, "Set Database Table"},
            {keys::mnuSetDatabaseTableIndex, "Set Database Table Index"},
            {keys::mnuViewTableComments, "View Table Comments"},
            {keys::mnuViewThumbNails, "Browse Pictures in a Folder", "Browse Picture ThumbNails in the current Folder"},
        }},
        {keys::mnuEMail, "&E-Mail", {
            {keys::mnuSendFilesbyEMail, "Send Files by E-Mail"},
            {keys::mnuReceiveFileEMail, "Receive Files"},
            {keys::mnuEMailAddressBook, "E-Mail Address Book"},
        }},
        {keys::mnuOrganize, "&Organize", {
            {keys::mnuViewGroups, "View and Select File Groups"},
            {keys::mnuCreateGroups, "Create and Maintain File Groups"},
            {keys::mnuSelectFilesGroup, "Select, Add and Maintain Files in a Group"},
            {keys::mnuOrganizeFilesSearch, "Organize Files using a Disk Search"},
            {keys::mnuClearFilesOrg, "Clear all Files in Organizer Database"},
            {keys::mnuRepairOrganizerDatabase, "Repair or Compact Organizer Database File"},
        }},
        {keys::mnuUtilities, "&Utilities", {
            {keys::mnuSetWorkingFolders, "Set Working Folders"},
            {keys::mnuSetApplicationColors, "Set Application Colors"},
            {keys::mnuSetApplicationOptions, "Set Application Options"},
            {keys::mnuSetComputerinNetwork, "Set Computer in Network"},
            {keys::mnuRefreshFileList, "Refresh File List"},
            {keys::mnuCollapseExpandedDiskFolderStructure, "Collapse Expanded Disk/Folder Structure"},
        }},
        {keys::mnuHelp, "&Help", {
            {keys::mnuHelpContents, "Help Contents"},
            {keys::mnuSearchHelpTopic, "Search Help Topic"},
            {keys::mnuQuickTips, "Quick Tips"},
            {keys::mnuAboutTarnby, "About Tarnby"},
        }},
    };
    return menus;
}

const std::vector<Tool> &browserToolbar()
{
    static const std::vector<Tool> tools = {
        {keys::OpenBtn, "Open", "Open File"},
        {keys::FindBtn, "Find", "Find Files"},
        {keys::FindNextBtn, "FindNext"},
        {keys::PrintBtn, "Print", "Print File"},
        {keys::SendBtn, "Send", "Send Files over the Internet by E-Mail"},
        {keys::ReceiveBtn, "Receive", "Receive Files by E-Mail"},
        {keys::OrgTBBrwBtn, "OrgTBBrw", "Browse Table of Files"},
        {keys::AddOrgFilesBtn, "AddOrgFiles", "Add Files to File Organizer Table"},
        {keys::CollapseBtn, "Collapse"},
        {keys::LargeIconsBtn, "LargeIcons", "Display Folder and files using Large Icons"},
        {keys::SmallIconsBtn, "SmallIcons", "Display Folder using small Icons"},
        {keys::ThumbsBtn, "Thumbs", "Display Picture Thumb Nails"},
        {keys::ListIconsBtn, "ListIcons", "Display Folder and Files by Icon List"},
        {keys::DetailIconsBtn, "DetailIcons", "Display Folder and Files with Detail Information"},
        {keys::HelpBtn, "Help", "Help with Tarnby"},
        {keys::UpFolderBtn, "UpFolder", "Move up to higher folder"},
        {keys::QuikPictBtn, "QuikPict", "Display Quick View of a Picture"},
    };
    return tools;
}

const std::vector<Tool> &browserCategoryToolbar()
{
    static const std::vector<Tool> tools = {
        {keys::PicturesBtn, "Pictures", "Display only Picture Files"},
        {keys::SoundsBtn, "Sounds", "Display only Wave Files"},
        {keys::MusicBtn, "Music", "Display only Music Files (MID,RMI,MP3,M3U)"},
        {keys::VideoBtn, "Video", "Display only Video Files"},
        {keys::DocumentBtn, "Document", "Display only Text Files, HTML, Documents, and System Files"},
        {keys::TableBtn, "Table", "Display only Database and Table Files"},
        {keys::AllBtn, "All", "Display all the File Types"},
        {keys::SetFolderBtn, "SetFolder", "Go to preset Folder and Filter"},
        {keys::ExitBtn, "Exit", "Exit the Tarnby Program"},
        {keys::StopBtn, "Stop", "Stop ThumbNails from Loading"},
        {keys::RefreshBtn, "Refresh", "Refresh File List"},
    };
    return tools;
}

QStringList selectionCommandKeys()
{
    return {
        keys::mnuCloseFile, keys::mnuSaveFileAs,
        keys::mnuMoveFile, keys::mnuRenameFile,
        keys::mnuPrintFile, keys::mnuFileProperties,
        keys::mnuOpenOLE, keys::mnuSendFiles,
        keys::PrintBtn, keys::SendBtn,
        keys::mnuSendFilesbyEMail,
    };
}

QStringList databaseSelectionKeys()
{
    return {keys::mnuSetDatabaseTable, keys::mnuSetDatabaseTableIndex,
            keys::mnuViewTableComments};
}

bool enablesDatabaseEntries(const QString &extension)
{
    // "W4", not WK4: Lotus files open as tables but never enable these entries.
    static const QStringList exts = {QStringLiteral("DB"), QStringLiteral("DBF"), QStringLiteral("MDB"),
                                     QStringLiteral("XLS"), QStringLiteral("W4")};
    return exts.contains(extension);
}

std::optional<CategoryButton> categoryButton(BrowserAction action)
{
    switch (action) {
    case BrowserAction::PicturesCategory: return CategoryButton{QStringLiteral("P"), 32};
    case BrowserAction::SoundsCategory: return CategoryButton{QStringLiteral("S"), 27};
    case BrowserAction::MusicCategory: return CategoryButton{QStringLiteral("M"), 30};
    case BrowserAction::VideoCategory: return CategoryButton{QStringLiteral("V"), -1};
    case BrowserAction::DocumentCategory: return CategoryButton{QStringLiteral("T"), -1};
    case BrowserAction::TableCategory: return CategoryButton{QStringLiteral("T"), -1};
    case BrowserAction::AllCategory: return CategoryButton{QStringLiteral("A"), -1};
    default: return std::nullopt;
    }
}

} // namespace tarnby::commands
