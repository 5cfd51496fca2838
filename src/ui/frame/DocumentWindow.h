#pragma once

#include "core/catalogue/CommandTables.h"

#include <QString>

namespace tarnby::ui {

// Every public operation that the viewing frame calls by name on the active
// document window, as an X-macro so that the interface, the dispatch and the
// test double stay in step.
#define TARNBY_DOCUMENT_OPERATIONS(X)                                                              \
    X(FileOpen, mnuFileOpen_Click)                                                                 \
    X(FileClose, mnuFileClose_Click)                                                               \
    X(FileSaveAs, mnuFileSaveAs_Click)                                                             \
    X(FileRename, mnuFileRename_Click)                                                             \
    X(FileMove, mnuFileMove_Click)                                                                 \
    X(FileDelete, mnuFileDelete_Click)                                                             \
    X(FilePrint, mnuFilePrint_Click)                                                               \
    X(FileSend, mnuFileSend_Click)                                                                 \
    X(FileOLE, mnuFileOLE_Click)                                                                   \
    X(FileProptee, mnuFileProptee_Click)                                                           \
    X(EditCopy, mnuEditCopy_Click)                                                                 \
    X(ViewTable, mnuViewTable_Click)                                                               \
    X(ViewIndex, mnuViewIndex_Click)                                                               \
    X(ViewComments, mnuViewComments_Click)                                                         \
    X(ViewNormal, mnuViewNormal_Click)                                                             \
    X(ViewStretch, mnuViewStretch_Click)                                                           \
    X(ViewPanWin, mnuViewPanWin_Click)                                                             \
    X(MagnifyingGlass, MagnifyingGlass)                                                            \
    X(ImageFlip, mnuImageFlip_Click)                                                               \
    X(ImageRotate, mnuImageRotate_Click)                                                           \
    X(ImageReverse, mnuImageReverse_Click)                                                         \
    X(ImageResize, mnuImageResize_Click)                                                           \
    X(ImageBrightness, mnuImageBrightness_Click)                                                   \
    X(ImageContrast, mnuImageContrast_Click)                                                       \
    X(ImageColorInt, mnuImageColorInt_Click)                                                       \
    X(ImageInvert, mnuImageInvert_Click)                                                           \
    X(ImageText, mnuImageText_Click)                                                               \
    X(ImageShapes, mnuImageShapes_Click)

// What the viewing frame needs of a document window. The window is a QWidget
// hosted in the frame's MDI area that also implements this interface.
class DocumentWindow
{
public:
    virtual ~DocumentWindow() = default;

    // "I" picture, "T" text, "D" database or spreadsheet.
    virtual QString FILE_TYPE() const = 0;
    // The number of indexes of the table shown (database windows).
    virtual qint16 NUMINDEXES() const = 0;
    // True while the window is busy and must not receive commands.
    virtual bool SHUTOFFCLICK_FLG() const = 0;
    // The path of the file shown.
    virtual QString filePath() const = 0;
    // The file shown was renamed or moved to path (by this window or any
    // other): the window shows and acts on it there from now on.
    virtual void fileMovedTo(const QString &path) { Q_UNUSED(path) }
    // The file shown was deleted: the window says so, and its file commands
    // no longer act on it.
    virtual void fileRemoved() {}
    // True when the file could not be shown: the window is open but empty,
    // and the commands of its kind have nothing to work on.
    virtual bool showsNothing() const { return false; }

#define TARNBY_DECLARE_OPERATION(op, name) virtual void name() = 0;
    TARNBY_DOCUMENT_OPERATIONS(TARNBY_DECLARE_OPERATION)
#undef TARNBY_DECLARE_OPERATION
};

// Calls the operation on window.
void invokeDocumentOperation(DocumentWindow &window, commands::DocumentOperation op);

} // namespace tarnby::ui
