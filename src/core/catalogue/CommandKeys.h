#pragma once

#include <QLatin1String>

// The string keys of every tool of the two command bars: the menus, their
// entries and the toolbar buttons of the viewing frame and of the browser.
// A key is the object name of its tool's QAction, and the dispatch tables
// compare keys exactly and case-sensitively, so a key that is misspelt
// anywhere silently does nothing. Every key is therefore written here once
// and used everywhere through these constants; the texts themselves must stay
// exactly as they are.
//
// A constant is named after its key without the "ID_" prefix, leaving out the
// characters a name cannot hold ("ID_mnuE-MailAddressBook" is
// mnuEMailAddressBook). The frame and the browser name several of the same
// commands differently; each window's table uses its own, as noted below.
namespace tarnby::commands::keys {

// ---- menus ----------------------------------------------------------------

inline constexpr QLatin1String mnuFile{"ID_mnuFile"};
inline constexpr QLatin1String mnuEdit{"ID_mnuEdit"};
inline constexpr QLatin1String mnuView{"ID_mnuView"};
inline constexpr QLatin1String mnuImage{"ID_mnuImage"};
inline constexpr QLatin1String mnuWindow{"ID_mnuWindow"};
inline constexpr QLatin1String mnuHelp{"ID_mnuHelp"};
inline constexpr QLatin1String mnuUtilities{"ID_mnuUtilities"};
inline constexpr QLatin1String mnuEMail{"ID_mnuEMail"};
inline constexpr QLatin1String mnuOrganize{"ID_mnuOrganize"};

// ---- menu entries, and handler keys that no tool carries ------------------

inline constexpr QLatin1String mnuAboutTarnby{"ID_mnuAboutTarnby"}; // browser
inline constexpr QLatin1String mnuAbouttheTarnby{"ID_mnuAbouttheTarnby"}; // frame
inline constexpr QLatin1String mnuAddShapestoPictures{"ID_mnuAddShapestoPictures"};
inline constexpr QLatin1String mnuAddTexttoPictures{"ID_mnuAddTexttoPictures"};
inline constexpr QLatin1String mnuBrightness{"ID_mnuBrightness"};
inline constexpr QLatin1String mnuCascade{"ID_mnuCascade"};
inline constexpr QLatin1String mnuClearFilesOrg{"ID_mnuClearFilesOrg"};
inline constexpr QLatin1String mnuCloseFile{"ID_mnuCloseFile"};
inline constexpr QLatin1String mnuCollapseExpandedDiskFolderStructure{"ID_mnuCollapseExpandedDisk/FolderStructure"};
inline constexpr QLatin1String mnuColorInvert{"ID_mnuColorInvert"};
inline constexpr QLatin1String mnuContrast{"ID_mnuContrast"};
inline constexpr QLatin1String mnuCopy{"ID_mnuCopy"};
inline constexpr QLatin1String mnuCreateGroups{"ID_mnuCreateGroups"};
inline constexpr QLatin1String mnuDeleteFile{"ID_mnuDeleteFile"};
inline constexpr QLatin1String mnuEMailAddressBook{"ID_mnuE-MailAddressBook"};
inline constexpr QLatin1String mnuExit{"ID_mnuExit"};
inline constexpr QLatin1String mnuFileProperties{"ID_mnuFileProperties"};
inline constexpr QLatin1String mnuFind{"ID_mnuFind"}; // browser
inline constexpr QLatin1String mnuFindFiles{"ID_mnuFindFiles"}; // frame
inline constexpr QLatin1String mnuFindNext{"ID_mnuFindNext"};
inline constexpr QLatin1String mnuFlip{"ID_mnuFlip"};
inline constexpr QLatin1String mnuHelpContents{"ID_mnuHelpContents"};
inline constexpr QLatin1String mnuMagnifyingGlass{"ID_mnuMagnifyingGlass"};
inline constexpr QLatin1String mnuMoveFile{"ID_mnuMoveFile"};
inline constexpr QLatin1String mnuNormalImageView{"ID_mnuNormalImageView"};
inline constexpr QLatin1String mnuOpenFile{"ID_mnuOpenFile"};
inline constexpr QLatin1String mnuOpenFileApplication{"ID_mnuOpenFileApplication"}; // frame
inline constexpr QLatin1String mnuOpenFileInternet{"ID_mnuOpenFileInternet"}; // frame
inline constexpr QLatin1String mnuOpenInternet{"ID_mnuOpenInternet"}; // browser
inline constexpr QLatin1String mnuOpenOLE{"ID_mnuOpenOLE"}; // browser
inline constexpr QLatin1String mnuOrganizeFilesSearch{"ID_mnuOrganizeFilesSearch"};
inline constexpr QLatin1String mnuPanImage{"ID_mnuPanImage"};
inline constexpr QLatin1String mnuPaste{"ID_mnuPaste"};
inline constexpr QLatin1String mnuPrinterSetup{"ID_mnuPrinterSetup"};
inline constexpr QLatin1String mnuPrintFile{"ID_mnuPrintFile"};
inline constexpr QLatin1String mnuQuickTips{"ID_mnuQuickTips"};
// The frame's File menu entry, spelt with a digit one. It matches no handler
// on purpose: the entry does nothing (see frameDispatch()).
inline constexpr QLatin1String mnuReceiveFi1es{"ID_mnuReceiveFi1es"};
inline constexpr QLatin1String mnuReceiveFile{"ID_mnuReceiveFile"}; // frame handler; no tool
inline constexpr QLatin1String mnuReceiveFileEMail{"ID_mnuReceiveFileEMail"}; // browser, E-Mail menu
inline constexpr QLatin1String mnuReceiveFiles{"ID_mnuReceiveFiles"}; // browser, File menu
inline constexpr QLatin1String mnuRefreshFileList{"ID_mnuRefreshFileList"};
inline constexpr QLatin1String mnuRenameFile{"ID_mnuRenameFile"};
inline constexpr QLatin1String mnuRepairOrganizerDatabase{"ID_mnuRepairOrganizerDatabase"};
inline constexpr QLatin1String mnuResize{"ID_mnuResize"};
inline constexpr QLatin1String mnuReverse{"ID_mnuReverse"};
inline constexpr QLatin1String mnuRotate{"ID_mnuRotate"};
inline constexpr QLatin1String mnuSaveFileAs{"ID_mnuSaveFileAs"};
inline constexpr QLatin1String mnuSearchHelpTopic{"ID_mnuSearchHelpTopic"};
inline constexpr QLatin1String mnuSelectFilesGroup{"ID_mnuSelectFilesGroup"};
inline constexpr QLatin1String mnuSendFiles{"ID_mnuSendFiles"};
inline constexpr QLatin1String mnuSendFilesbyEMail{"ID_mnuSendFilesbyE-Mail"}; // browser, E-Mail menu
inline constexpr QLatin1String mnuSetApplicationColors{"ID_mnuSetApplicationColors"};
inline constexpr QLatin1String mnuSetApplicationOptions{"ID_mnuSetApplicationOptions"};
inline constexpr QLatin1String mnuSetComputerinNetwork{"ID_mnuSetComputerinNetwork"};
inline constexpr QLatin1String mnuSetDatabaseTable{"ID_mnuSetDatabaseTable"};
inline constexpr QLatin1String mnuSetDatabaseTableIndex{"ID_mnuSetDatabaseTableIndex"};
inline constexpr QLatin1String mnuSetTableComments{"ID_mnuSetTableComments"}; // frame
inline constexpr QLatin1String mnuSetWorkingFolders{"ID_mnuSetWorkingFolders"};
// The frame's Image menu entry. It matches no handler on purpose: the entry
// does nothing, and the handler answers to mnuStretchIntensity, which no tool
// carries (see frameDispatch()).
inline constexpr QLatin1String mnuStretchColorIntensity{"ID_mnuStretchColorIntensity"};
inline constexpr QLatin1String mnuStretchImageView{"ID_mnuStretchImageView"};
inline constexpr QLatin1String mnuStretchIntensity{"ID_mnuStretchIntensity"}; // frame handler; no tool
inline constexpr QLatin1String mnuTileHorizontally{"ID_mnuTileHorizontally"};
inline constexpr QLatin1String mnuTileVertically{"ID_mnuTileVertically"};
inline constexpr QLatin1String mnuViewGroups{"ID_mnuViewGroups"};
inline constexpr QLatin1String mnuViewTableComments{"ID_mnuViewTableComments"}; // browser
inline constexpr QLatin1String mnuViewThumbNails{"ID_mnuViewThumbNails"};

// ---- toolbar buttons ------------------------------------------------------

inline constexpr QLatin1String AddOrgFilesBtn{"ID_AddOrgFilesBtn"};
inline constexpr QLatin1String AllBtn{"ID_AllBtn"};
inline constexpr QLatin1String BrightnessBtn{"ID_BrightnessBtn"};
inline constexpr QLatin1String CloseBtn{"ID_CloseBtn"};
inline constexpr QLatin1String CollapseBtn{"ID_CollapseBtn"};
inline constexpr QLatin1String CopyBtn{"ID_CopyBtn"};
inline constexpr QLatin1String DeleteBtn{"ID_DeleteBtn"};
inline constexpr QLatin1String DetailIconsBtn{"ID_DetailIconsBtn"};
inline constexpr QLatin1String DocumentBtn{"ID_DocumentBtn"};
inline constexpr QLatin1String ExitBtn{"ID_ExitBtn"};
inline constexpr QLatin1String FindBtn{"ID_FindBtn"};
inline constexpr QLatin1String FindNextBtn{"ID_FindNextBtn"};
inline constexpr QLatin1String FontBtn{"ID_FontBtn"};
inline constexpr QLatin1String HelpBtn{"ID_HelpBtn"};
inline constexpr QLatin1String IndexBtn{"ID_IndexBtn"};
inline constexpr QLatin1String LargeIconsBtn{"ID_LargeIconsBtn"};
inline constexpr QLatin1String ListIconsBtn{"ID_ListIconsBtn"};
inline constexpr QLatin1String MoveBtn{"ID_MoveBtn"};
inline constexpr QLatin1String MusicBtn{"ID_MusicBtn"};
inline constexpr QLatin1String NormalBtn{"ID_NormalBtn"};
inline constexpr QLatin1String OpenBtn{"ID_OpenBtn"};
inline constexpr QLatin1String OrgTBBrwBtn{"ID_OrgTBBrwBtn"};
inline constexpr QLatin1String PicturesBtn{"ID_PicturesBtn"};
inline constexpr QLatin1String PrintBtn{"ID_PrintBtn"};
inline constexpr QLatin1String QuikPictBtn{"ID_QuikPictBtn"};
inline constexpr QLatin1String ReceiveBtn{"ID_ReceiveBtn"};
inline constexpr QLatin1String RefreshBtn{"ID_RefreshBtn"};
inline constexpr QLatin1String RenameBtn{"ID_RenameBtn"};
inline constexpr QLatin1String ResizeBtn{"ID_ResizeBtn"};
inline constexpr QLatin1String ReturnBtn{"ID_ReturnBtn"};
inline constexpr QLatin1String SaveBtn{"ID_SaveBtn"};
inline constexpr QLatin1String SendBtn{"ID_SendBtn"};
inline constexpr QLatin1String SetFolderBtn{"ID_SetFolderBtn"};
inline constexpr QLatin1String ShapesBtn{"ID_ShapesBtn"};
inline constexpr QLatin1String SmallIconsBtn{"ID_SmallIconsBtn"};
inline constexpr QLatin1String SoundsBtn{"ID_SoundsBtn"};
inline constexpr QLatin1String StopBtn{"ID_StopBtn"};
inline constexpr QLatin1String StretchBtn{"ID_StretchBtn"};
inline constexpr QLatin1String TableBtn{"ID_TableBtn"};
inline constexpr QLatin1String ThumbsBtn{"ID_ThumbsBtn"};
inline constexpr QLatin1String UpFolderBtn{"ID_UpFolderBtn"};
inline constexpr QLatin1String VideoBtn{"ID_VideoBtn"};

// The entries the frame adds to its Window menu at run time, one per document
// window, all share this key; the entry's caption tells them apart.
inline constexpr QLatin1String WindowList{"WindowList"};

// Every key above. The command tables use each of them and no other key; the
// catalogue's test holds the tables against this list.
inline constexpr QLatin1String all[] = {
    mnuFile, mnuEdit, mnuView, mnuImage, mnuWindow, mnuHelp, mnuUtilities, mnuEMail, mnuOrganize,
    mnuAboutTarnby, mnuAbouttheTarnby, mnuAddShapestoPictures, mnuAddTexttoPictures, mnuBrightness,
    mnuCascade, mnuClearFilesOrg, mnuCloseFile, mnuCollapseExpandedDiskFolderStructure, mnuColorInvert,
    mnuContrast, mnuCopy, mnuCreateGroups, mnuDeleteFile, mnuEMailAddressBook, mnuExit, mnuFileProperties,
    mnuFind, mnuFindFiles, mnuFindNext, mnuFlip, mnuHelpContents, mnuMagnifyingGlass, mnuMoveFile,
    mnuNormalImageView, mnuOpenFile, mnuOpenFileApplication, mnuOpenFileInternet, mnuOpenInternet,
    mnuOpenOLE, mnuOrganizeFilesSearch, mnuPanImage, mnuPaste, mnuPrinterSetup, mnuPrintFile, mnuQuickTips,
    mnuReceiveFi1es, mnuReceiveFile, mnuReceiveFileEMail, mnuReceiveFiles, mnuRefreshFileList, mnuRenameFile,
    mnuRepairOrganizerDatabase, mnuResize, mnuReverse, mnuRotate, mnuSaveFileAs, mnuSearchHelpTopic,
    mnuSelectFilesGroup, mnuSendFiles, mnuSendFilesbyEMail, mnuSetApplicationColors,
    mnuSetApplicationOptions, mnuSetComputerinNetwork, mnuSetDatabaseTable, mnuSetDatabaseTableIndex,
    mnuSetTableComments, mnuSetWorkingFolders, mnuStretchColorIntensity, mnuStretchImageView,
    mnuStretchIntensity, mnuTileHorizontally, mnuTileVertically, mnuViewGroups, mnuViewTableComments,
    mnuViewThumbNails, AddOrgFilesBtn, AllBtn, BrightnessBtn, CloseBtn, CollapseBtn, CopyBtn, DeleteBtn,
    DetailIconsBtn, DocumentBtn, ExitBtn, FindBtn, FindNextBtn, FontBtn, HelpBtn, IndexBtn, LargeIconsBtn,
    ListIconsBtn, MoveBtn, MusicBtn, NormalBtn, OpenBtn, OrgTBBrwBtn, PicturesBtn, PrintBtn, QuikPictBtn,
    ReceiveBtn, RefreshBtn, RenameBtn, ResizeBtn, ReturnBtn, SaveBtn, SendBtn, SetFolderBtn, ShapesBtn,
    SmallIconsBtn, SoundsBtn, StopBtn, StretchBtn, TableBtn, ThumbsBtn, UpFolderBtn, VideoBtn, WindowList
};

// Not tools: the object names of the date and time panes at the end of the
// browser's second toolbar. No table lists them and a click on them does
// nothing.
inline constexpr QLatin1String Date{"ID_Date"};
inline constexpr QLatin1String Time{"ID_Time"};

} // namespace tarnby::commands::keys
