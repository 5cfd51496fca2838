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
    std::vector<const char *> keys;
    FrameTarget target;
};

// The frame's dispatch table, in the order the click handler compares keys.
const std::vector<FrameRow> &frameRows()
{
    using A = FrameAction;
    using D = DocumentOperation;
    static const std::vector<FrameRow> rows = {
        {{"ID_ReturnBtn"}, A::ReturnToBrowser},
        {{"ID_OpenBtn", "ID_mnuOpenFile"}, A::OpenFile},
        {{"ID_CloseBtn", "ID_mnuCloseFile"}, D::FileClose},
        {{"ID_SaveBtn", "ID_mnuSaveFileAs"}, D::FileSaveAs},
        {{"ID_RenameBtn", "ID_mnuRenameFile"}, D::FileRename},
        {{"ID_MoveBtn", "ID_mnuMoveFile"}, D::FileMove},
        {{"ID_DeleteBtn", "ID_mnuDeleteFile"}, D::FileDelete},
        {{"ID_PrintBtn", "ID_mnuPrintFile"}, D::FilePrint},
        {{"ID_SendBtn", "ID_mnuSendFiles"}, D::FileSend},
        {{"ID_ReceiveBtn", "ID_mnuReceiveFile"}, A::ReceiveFiles},
        {{"ID_CopyBtn", "ID_mnuCopy"}, D::EditCopy},
        {{"ID_TableBtn"}, D::ViewTable},
        {{"ID_IndexBtn"}, D::ViewIndex},
        {{"ID_NormalBtn"}, D::ViewNormal},
        {{"ID_StretchBtn"}, D::ViewStretch},
        {{"ID_ResizeBtn", "ID_mnuResize"}, D::ImageResize},
        {{"ID_BrightnessBtn", "ID_mnuBrightness"}, D::ImageBrightness},
        {{"ID_FontBtn", "ID_mnuAddTexttoPictures"}, D::ImageText},
        {{"ID_ShapesBtn", "ID_mnuAddShapestoPictures"}, D::ImageShapes},
        {{"ID_HelpBtn", "ID_mnuHelpContents"}, A::HelpContents},
        {{"ID_mnuOpenFileApplication"}, D::FileOLE},
        {{"ID_mnuOpenFileInternet"}, A::OpenInternetPicture},
        {{"ID_mnuFindFiles"}, A::FindFiles},
        {{"ID_mnuFindNext"}, A::FindNext},
        {{"ID_mnuPrinterSetup"}, A::PrinterSetup},
        {{"ID_mnuFileProperties"}, D::FileProptee},
        {{"ID_mnuExit"}, A::CloseFrame},
        {{"ID_mnuPaste"}, A::NoAction},
        {{"ID_mnuSetDatabaseTable", "ID_mnuSetDatabaseTableIndex"}, A::NoAction},
        {{"ID_mnuSetTableComments"}, D::ViewComments},
        {{"ID_mnuNormalImageView"}, A::PressNormalButton},
        {{"ID_mnuStretchImageView"}, A::PressStretchButton},
        {{"ID_mnuPanImage"}, D::ViewPanWin},
        {{"ID_mnuMagnifyingGlass"}, D::MagnifyingGlass},
        {{"ID_mnuFlip"}, D::ImageFlip},
        {{"ID_mnuRotate"}, D::ImageRotate},
        {{"ID_mnuReverse"}, D::ImageReverse},
        {{"ID_mnuContrast"}, D::ImageContrast},
        {{"ID_mnuStretchIntensity"}, D::ImageColorInt},
        {{"ID_mnuColorInvert"}, D::ImageInvert},
        {{"ID_mnuSetWorkingFolders"}, A::WorkingFolders},
        {{"ID_mnuSetApplicationColors"}, A::ApplicationColors},
        {{"ID_mnuSetApplicationOptions"}, A::ApplicationOptions},
        {{"ID_mnuCascade"}, A::Cascade},
        {{"ID_mnuTileHorizontally"}, A::TileHorizontally},
        {{"ID_mnuTileVertically"}, A::TileVertically},
        {{"ID_mnuSearchHelpTopic"}, A::SearchHelpTopic},
        {{"ID_mnuQuickTips"}, A::QuickTips},
        {{"ID_mnuAbouttheTarnby"}, A::About},
        {{WindowListKey}, A::ActivateListedWindow},
    };
    return rows;
}

template<typename Row, typename Target>
const QHash<QString, Target> &indexRows(const std::vector<Row> &rows)
{
    static const QHash<QString, Target> index = [&rows] {
        QHash<QString, Target> h;
        for (const Row &row : rows) {
            for (const char *key : row.keys) {
                // The first row that names a key wins, as in a sequential comparison.
                if (!h.contains(QLatin1String(key)))
                    h.insert(QLatin1String(key), row.target);
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
    QStringList keys;
    for (const FrameRow &row : frameRows()) {
        for (const char *key : row.keys)
            keys << QLatin1String(key);
    }
    return keys;
}

const std::vector<Menu> &frameMenus()
{
    static const std::vector<Menu> menus = {
        {"ID_mnuFile", "&File", {
            {"ID_mnuOpenFile", "Open File"},
            {"ID_mnuCloseFile", "Close File"},
            {"ID_mnuOpenFileApplication", "Open File with another Application"},
            {"ID_mnuOpenFileInternet", "Open File Located on the Internet"},
            {"ID_mnuFindFiles", "Find Files"},
            {"ID_mnuFindNext", "Find Next", "Find Next Files of the same Type"},
            {"ID_mnuSaveFileAs", "Save File As"},
            {"ID_mnuRenameFile", "Rename File"},
            {"ID_mnuMoveFile", "Move File"},
            {"ID_mnuDeleteFile", "Delete File"},
            {"ID_mnuPrintFile", "Print File"},
            {"ID_mnuPrinterSetup", "Printer Setup"},
            {"ID_mnuSendFiles", "Send Files"},
            {"ID_mnuReceiveFi1es", "Receive Fi1es"},
            {"ID_mnuFileProperties", "File Properties"},
            {"ID_mnuExit", "Exit", "Close Viewing Window"},
        }},
        {"ID_mnuEdit", "&Edit", {
            {"ID_mnuCopy", "Copy"},
            {"ID_mnuPaste", "Paste"},
        }},
        {"ID_mnuView", "&View", {
            {"ID_mnuSetDatabaseTable", "Set Database Table"},
            {"ID_mnuSetDatabaseTableIndex", "Set Database Table Index"},
            {"ID_mnuSetTableComments", "View Table Comments"},
            {"ID_mnuNormalImageView", "Normal Image View"},
            {"ID_mnuStretchImageView", "Stretch Image View"},
            {"ID_mnuPanImage", "Pan Image"},
            {"ID_mnuMagnifyingGlass", "Magnifying Glass"},
        }},
        {"ID_mnuImage", "Image", {
            {"ID_mnuFlip", "Flip"},
            {"ID_mnuRotate", "Rotate"},
            {"ID_mnuReverse", "Reverse"},
            {"ID_mnuResize", "Resize"},
            {"ID_mnuBrightness", "Brightness"},
            {"ID_mnuContrast", "Contrast"},
            {"ID_mnuStretchColorIntensity", "Stretch Color Intensity"},
            {"ID_mnuColorInvert", "Color Invert"},
            {"ID_mnuAddTexttoPictures", "Add Text to Pictures", "Add Text to Picture or Image"},
            {"ID_mnuAddShapestoPictures", "Add Shapes to Pictures", "Add Shapes to Picture or Image"},
        }},
        {WindowMenuKey, "&Window", {
            {"ID_mnuCascade", "Cascade"},
            {"ID_mnuTileHorizontally", "Tile Horizontally"},
            {"ID_mnuTileVertically", "Tile Vertically"},
        }},
        {"ID_mnuHelp", "&Help", {
            {"ID_mnuHelpContents", "Help Contents", "View Help Text Contents"},
            {"ID_mnuSearchHelpTopic", "Search Help Topic"},
            {"ID_mnuQuickTips", "Quick Tips"},
            {"ID_mnuAbouttheTarnby", "About the Tarnby"},
        }},
        {"ID_mnuUtilities", "Utilities", {
            {"ID_mnuSetWorkingFolders", "Set Working Folders"},
            {"ID_mnuSetApplicationColors", "Set Application Colors"},
            {"ID_mnuSetApplicationOptions", "Set Application Options"},
        }},
    };
    return menus;
}

const std::vector<Tool> &frameToolbar()
{
    static const std::vector<Tool> tools = {
        {"ID_ReturnBtn", "Return", "Return to Main Window"},
        {"ID_OpenBtn", "Open", "Open File"},
        {"ID_CloseBtn", "Close", "Close File"},
        {"ID_SaveBtn", "Save", "Save Current File"},
        {"ID_RenameBtn", "Rename"},
        {"ID_MoveBtn", "Move"},
        {"ID_DeleteBtn", "Delete", "Move File to the Recycle Bin"},
        {"ID_PrintBtn", "Print", "Print Current File"},
        {"ID_SendBtn", "Send", "Send Current File by E-Mail"},
        {"ID_ReceiveBtn", "Receive", "Receive Files by E-Mail"},
        {"ID_CopyBtn", "Copy", "Copy Text File to the Clipboard"},
        {"ID_TableBtn", "Table", "Select Database File Table"},
        {"ID_IndexBtn", "Index", "Select Database File Index"},
        {"ID_NormalBtn", "Normal", "View Image as Normal"},
        {"ID_StretchBtn", "Stretch", "View Image as Stretched into Frame"},
        {"ID_ResizeBtn", "Resize"},
        {"ID_BrightnessBtn", "Brightness"},
        {"ID_FontBtn", "Font", "Add Text to Picture or Image"},
        {"ID_ShapesBtn", "Shapes", "Add Shapes to Picture or Image"},
        {"ID_HelpBtn", "Help", "View Help Text Contents"},
    };
    return tools;
}

namespace {
const QStringList fileButtons = {
    QStringLiteral("ID_CloseBtn"), QStringLiteral("ID_SaveBtn"), QStringLiteral("ID_RenameBtn"),
    QStringLiteral("ID_MoveBtn"), QStringLiteral("ID_DeleteBtn"), QStringLiteral("ID_PrintBtn"),
    QStringLiteral("ID_SendBtn"), QStringLiteral("ID_ReceiveBtn"),
};
const QStringList pictureButtons = {
    QStringLiteral("ID_NormalBtn"), QStringLiteral("ID_StretchBtn"), QStringLiteral("ID_ResizeBtn"),
    QStringLiteral("ID_BrightnessBtn"), QStringLiteral("ID_FontBtn"), QStringLiteral("ID_ShapesBtn"),
};
const QStringList fileMenuEntries = {
    QStringLiteral("ID_mnuOpenFileApplication"), QStringLiteral("ID_mnuCloseFile"),
    QStringLiteral("ID_mnuSaveFileAs"), QStringLiteral("ID_mnuRenameFile"),
    QStringLiteral("ID_mnuMoveFile"), QStringLiteral("ID_mnuDeleteFile"),
    QStringLiteral("ID_mnuPrintFile"), QStringLiteral("ID_mnuSendFiles"),
    QStringLiteral("ID_mnuFileProperties"),
};
const QStringList viewModeEntries = {
    QStringLiteral("ID_mnuNormalImageView"), QStringLiteral("ID_mnuStretchImageView"),
    QStringLiteral("ID_mnuPanImage"), QStringLiteral("ID_mnuMagnifyingGlass"),
};

void set(QList<EnableChange> &out, const QStringList &keys, bool enabled)
{
    for (const QString &key : keys)
        out.append({key, enabled});
}
void set(QList<EnableChange> &out, const char *key, bool enabled)
{
    out.append({QLatin1String(key), enabled});
}
} // namespace

QList<EnableChange> enablingChanges(EnablingRoutine routine, int indexCount)
{
    QList<EnableChange> out;
    switch (routine) {
    case EnablingRoutine::DisableButtons:
        // Leaves the Open and Help buttons alone but disables the Open menu entry.
        set(out, "ID_mnuOpenFile", false);
        set(out, fileButtons, false);
        set(out, "ID_CopyBtn", false);
        set(out, "ID_TableBtn", false);
        set(out, "ID_IndexBtn", false);
        set(out, pictureButtons, false);
        set(out, "ID_mnuEdit", false);
        set(out, "ID_mnuView", false);
        set(out, "ID_mnuImage", false);
        set(out, fileMenuEntries, false);
        set(out, viewModeEntries, false);
        break;
    case EnablingRoutine::EnableButtons:
        set(out, "ID_OpenBtn", true);
        set(out, "ID_mnuOpenFile", true);
        set(out, fileButtons, true);
        set(out, "ID_CopyBtn", true);
        set(out, "ID_TableBtn", true);
        set(out, "ID_IndexBtn", true);
        set(out, pictureButtons, true);
        set(out, "ID_HelpBtn", true);
        set(out, "ID_mnuEdit", true);
        set(out, "ID_mnuView", true);
        set(out, "ID_mnuImage", true);
        set(out, fileMenuEntries, true);
        set(out, viewModeEntries, true);
        set(out, "ID_TableBtn", false);
        set(out, "ID_IndexBtn", false);
        set(out, "ID_mnuSetDatabaseTable", false);
        set(out, "ID_mnuSetTableComments", false);
        set(out, "ID_mnuSetDatabaseTableIndex", false);
        break;
    case EnablingRoutine::EnableMDIButtons:
        set(out, "ID_OpenBtn", true);
        set(out, "ID_mnuOpenFile", true);
        set(out, "ID_HelpBtn", true);
        break;
    case EnablingRoutine::EnableTextButtons:
        set(out, "ID_OpenBtn", true);
        set(out, fileButtons, true);
        set(out, "ID_CopyBtn", true);
        set(out, "ID_TableBtn", false);
        set(out, "ID_IndexBtn", false);
        set(out, pictureButtons, false);
        set(out, "ID_HelpBtn", true);
        set(out, "ID_mnuView", false);
        set(out, "ID_mnuImage", false);
        set(out, viewModeEntries, false);
        set(out, "ID_mnuSetDatabaseTable", false);
        set(out, "ID_mnuSetTableComments", false);
        set(out, "ID_mnuSetDatabaseTableIndex", false);
        break;
    case EnablingRoutine::EnableDataButtons:
        set(out, "ID_OpenBtn", true);
        set(out, fileButtons, true);
        set(out, "ID_CopyBtn", false);
        if (indexCount > 0)
            set(out, "ID_IndexBtn", true);
        set(out, pictureButtons, false);
        set(out, "ID_HelpBtn", true);
        set(out, "ID_mnuView", true);
        set(out, "ID_mnuImage", false);
        set(out, viewModeEntries, false);
        set(out, "ID_mnuSetDatabaseTable", true);
        set(out, "ID_mnuSetTableComments", true);
        if (indexCount > 0)
            set(out, "ID_mnuSetDatabaseTableIndex", true);
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
    std::vector<const char *> keys;
    BrowserAction target;
};

const std::vector<BrowserRow> &browserRows()
{
    using B = BrowserAction;
    static const std::vector<BrowserRow> rows = {
        {{"ID_mnuOpenFile", "ID_OpenBtn"}, B::OpenFile},
        {{"ID_mnuCloseFile"}, B::CloseFile},
        {{"ID_mnuOpenOLE"}, B::OpenWithApplication},
        {{"ID_mnuOpenInternet"}, B::OpenInternetPicture},
        {{"ID_mnuFind", "ID_FindBtn"}, B::FindFiles},
        {{"ID_mnuFindNext", "ID_FindNextBtn"}, B::FindNext},
        {{"ID_mnuSaveFileAs"}, B::SaveFileAs},
        {{"ID_mnuMoveFile"}, B::MoveFile},
        {{"ID_mnuRenameFile"}, B::RenameFile},
        {{"ID_mnuDeleteFile"}, B::DeleteFile},
        {{"ID_mnuPrintFile", "ID_PrintBtn"}, B::PrintFile},
        {{"ID_mnuPrinterSetup"}, B::PrinterSetup},
        {{"ID_mnuSendFiles", "ID_SendBtn", "ID_mnuSendFilesbyE-Mail"}, B::SendFiles},
        {{"ID_mnuReceiveFiles", "ID_ReceiveBtn", "ID_mnuReceiveFileEMail"}, B::ReceiveFiles},
        {{"ID_mnuFileProperties"}, B::FileProperties},
        {{"ID_mnuExit", "ID_ExitBtn"}, B::Exit},
        {{"ID_mnuSetDatabaseTable"}, B::SetDatabaseTable},
        {{"ID_mnuSetDatabaseTableIndex"}, B::SetDatabaseTableIndex},
        {{"ID_mnuViewTableComments"}, B::ViewTableComments},
        {{"ID_mnuViewThumbNails", "ID_ThumbsBtn"}, B::ViewThumbnails},
        {{"ID_mnuE-MailAddressBook"}, B::AddressBook},
        {{"ID_mnuViewGroups"}, B::ViewGroups},
        {{"ID_mnuCreateGroups"}, B::CreateGroups},
        {{"ID_mnuSelectFilesGroup"}, B::SelectFilesGroup},
        {{"ID_mnuOrganizeFilesSearch"}, B::OrganizeFilesSearch},
        {{"ID_mnuClearFilesOrg"}, B::ClearFilesOrganizer},
        {{"ID_mnuRepairOrganizerDatabase"}, B::RepairOrganizer},
        {{"ID_OrgTBBrwBtn"}, B::BrowseOrganizerTable},
        {{"ID_AddOrgFilesBtn"}, B::AddOrganizerFiles},
        {{"ID_mnuSetWorkingFolders"}, B::WorkingFolders},
        {{"ID_mnuSetApplicationColors"}, B::ApplicationColors},
        {{"ID_mnuSetApplicationOptions"}, B::ApplicationOptions},
        {{"ID_mnuSetComputerinNetwork"}, B::ComputerInNetwork},
        {{"ID_mnuRefreshFileList", "ID_RefreshBtn"}, B::RefreshFileList},
        {{"ID_mnuCollapseExpandedDisk/FolderStructure", "ID_CollapseBtn"}, B::CollapseTree},
        {{"ID_mnuHelpContents", "ID_HelpBtn"}, B::HelpContents},
        {{"ID_mnuSearchHelpTopic"}, B::SearchHelpTopic},
        {{"ID_mnuQuickTips"}, B::QuickTips},
        {{"ID_mnuAboutTarnby"}, B::About},
        {{"ID_LargeIconsBtn"}, B::LargeIcons},
        {{"ID_SmallIconsBtn"}, B::SmallIcons},
        {{"ID_ListIconsBtn"}, B::ListIcons},
        {{"ID_DetailIconsBtn"}, B::DetailIcons},
        {{"ID_UpFolderBtn"}, B::UpFolder},
        {{"ID_QuikPictBtn"}, B::QuickView},
        {{"ID_PicturesBtn"}, B::PicturesCategory},
        {{"ID_SoundsBtn"}, B::SoundsCategory},
        {{"ID_MusicBtn"}, B::MusicCategory},
        {{"ID_VideoBtn"}, B::VideoCategory},
        {{"ID_DocumentBtn"}, B::DocumentCategory},
        {{"ID_TableBtn"}, B::TableCategory},
        {{"ID_AllBtn"}, B::AllCategory},
        {{"ID_SetFolderBtn"}, B::SetFolder},
        {{"ID_StopBtn"}, B::StopThumbnails},
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
    QStringList keys;
    for (const BrowserRow &row : browserRows()) {
        for (const char *key : row.keys)
            keys << QLatin1String(key);
    }
    return keys;
}

const std::vector<Menu> &browserMenus()
{
    static const std::vector<Menu> menus = {
        {"ID_mnuFile", "&File", {
            {"ID_mnuOpenFile", "Open File"},
            {"ID_mnuCloseFile", "Close File"},
            {"ID_mnuOpenOLE", "Open File with Another Application", "Open selected file with Default Application"},
            {"ID_mnuOpenInternet", "Open File Located on the Internet"},
            {"ID_mnuFind", "Find Files", "Find Files on Disk, CD-Rom, Network, and other Devices"},
            {"ID_mnuFindNext", "Find Next File of Same Type"},
            {"ID_mnuSaveFileAs", "Save File As", "Save selected file with another name"},
            {"ID_mnuMoveFile", "Move File"},
            {"ID_mnuRenameFile", "Rename File"},
            {"ID_mnuDeleteFile", "Delete File", "Move Selected File to the Recycle Bin"},
            {"ID_mnuPrintFile", "Print File"},
            {"ID_mnuPrinterSetup", "Printer Setup"},
            {"ID_mnuSendFiles", "Send Files"},
            {"ID_mnuReceiveFiles", "Receive Files"},
            {"ID_mnuFileProperties", "File Properties", "Display selected File's Properties"},
            {"ID_mnuExit", "Exit", "Exit the Tarnby Application"},
        }},
        {"ID_mnuView", "&View", {
            {"ID_mnuSetDatabaseTable", "Set Database Table"},
            {"ID_mnuSetDatabaseTableIndex", "Set Database Table Index"},
            {"ID_mnuViewTableComments", "View Table Comments"},
            {"ID_mnuViewThumbNails", "Browse Pictures in a Folder", "Browse Picture ThumbNails in the current Folder"},
        }},
        {"ID_mnuEMail", "&E-Mail", {
            {"ID_mnuSendFilesbyE-Mail", "Send Files by E-Mail"},
            {"ID_mnuReceiveFileEMail", "Receive Files"},
            {"ID_mnuE-MailAddressBook", "E-Mail Address Book"},
        }},
        {"ID_mnuOrganize", "&Organize", {
            {"ID_mnuViewGroups", "View and Select File Groups"},
            {"ID_mnuCreateGroups", "Create and Maintain File Groups"},
            {"ID_mnuSelectFilesGroup", "Select, Add and Maintain Files in a Group"},
            {"ID_mnuOrganizeFilesSearch", "Organize Files using a Disk Search"},
            {"ID_mnuClearFilesOrg", "Clear all Files in Organizer Database"},
            {"ID_mnuRepairOrganizerDatabase", "Repair or Compact Organizer Database File"},
        }},
        {"ID_mnuUtilities", "&Utilities", {
            {"ID_mnuSetWorkingFolders", "Set Working Folders"},
            {"ID_mnuSetApplicationColors", "Set Application Colors"},
            {"ID_mnuSetApplicationOptions", "Set Application Options"},
            {"ID_mnuSetComputerinNetwork", "Set Computer in Network"},
            {"ID_mnuRefreshFileList", "Refresh File List"},
            {"ID_mnuCollapseExpandedDisk/FolderStructure", "Collapse Expanded Disk/Folder Structure"},
        }},
        {"ID_mnuHelp", "&Help", {
            {"ID_mnuHelpContents", "Help Contents"},
            {"ID_mnuSearchHelpTopic", "Search Help Topic"},
            {"ID_mnuQuickTips", "Quick Tips"},
            {"ID_mnuAboutTarnby", "About Tarnby"},
        }},
    };
    return menus;
}

const std::vector<Tool> &browserToolbar()
{
    static const std::vector<Tool> tools = {
        {"ID_OpenBtn", "Open", "Open File"},
        {"ID_FindBtn", "Find", "Find Files"},
        {"ID_FindNextBtn", "FindNext"},
        {"ID_PrintBtn", "Print", "Print File"},
        {"ID_SendBtn", "Send", "Send Files over the Internet by E-Mail"},
        {"ID_ReceiveBtn", "Receive", "Receive Files by E-Mail"},
        {"ID_OrgTBBrwBtn", "OrgTBBrw", "Browse Table of Files"},
        {"ID_AddOrgFilesBtn", "AddOrgFiles", "Add Files to File Organizer Table"},
        {"ID_CollapseBtn", "Collapse"},
        {"ID_LargeIconsBtn", "LargeIcons", "Display Folder and files using Large Icons"},
        {"ID_SmallIconsBtn", "SmallIcons", "Display Folder using small Icons"},
        {"ID_ThumbsBtn", "Thumbs", "Display Picture Thumb Nails"},
        {"ID_ListIconsBtn", "ListIcons", "Display Folder and Files by Icon List"},
        {"ID_DetailIconsBtn", "DetailIcons", "Display Folder and Files with Detail Information"},
        {"ID_HelpBtn", "Help", "Help with Tarnby"},
        {"ID_UpFolderBtn", "UpFolder", "Move up to higher folder"},
        {"ID_QuikPictBtn", "QuikPict", "Display Quick View of a Picture"},
    };
    return tools;
}

const std::vector<Tool> &browserCategoryToolbar()
{
    static const std::vector<Tool> tools = {
        {"ID_PicturesBtn", "Pictures", "Display only Picture Files"},
        {"ID_SoundsBtn", "Sounds", "Display only Wave Files"},
        {"ID_MusicBtn", "Music", "Display only Music Files (MID,RMI,MP3,M3U)"},
        {"ID_VideoBtn", "Video", "Display only Video Files"},
        {"ID_DocumentBtn", "Document", "Display only Text Files, HTML, Documents, and System Files"},
        {"ID_TableBtn", "Table", "Display only Database and Table Files"},
        {"ID_AllBtn", "All", "Display all the File Types"},
        {"ID_SetFolderBtn", "SetFolder", "Go to preset Folder and Filter"},
        {"ID_ExitBtn", "Exit", "Exit the Tarnby Program"},
        {"ID_StopBtn", "Stop", "Stop ThumbNails from Loading"},
        {"ID_RefreshBtn", "Refresh", "Refresh File List"},
    };
    return tools;
}

QStringList selectionCommandKeys()
{
    return {
        QStringLiteral("ID_mnuCloseFile"), QStringLiteral("ID_mnuSaveFileAs"),
        QStringLiteral("ID_mnuMoveFile"), QStringLiteral("ID_mnuRenameFile"),
        QStringLiteral("ID_mnuPrintFile"), QStringLiteral("ID_mnuFileProperties"),
        QStringLiteral("ID_mnuOpenOLE"), QStringLiteral("ID_mnuSendFiles"),
        QStringLiteral("ID_PrintBtn"), QStringLiteral("ID_SendBtn"),
        QStringLiteral("ID_mnuSendFilesbyE-Mail"),
    };
}

QStringList databaseSelectionKeys()
{
    return {QStringLiteral("ID_mnuSetDatabaseTable"), QStringLiteral("ID_mnuSetDatabaseTableIndex"),
            QStringLiteral("ID_mnuViewTableComments")};
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
