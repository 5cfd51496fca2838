#include "ChildFrm1.h"

#include "app/AppState.h"
#include "services/UiServices.h"
#include "shell/FileCatalogue.h"

#include <QFileInfo>
#include <QLabel>
#include <QVBoxLayout>

namespace tarnby::ui {

ChildFrm1::ChildFrm1(AppState &state, UiServices &services, const QString &path, const QString &kind,
                     QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_services(services)
    , m_path(path)
    , m_fileType(kind)
    , m_extension(catalogue::GetFileExt(path))
{
    setObjectName(QStringLiteral("ChildFrm1"));
    setWindowTitle(QFileInfo(path).fileName());
    auto *layout = new QVBoxLayout(this);
    m_label = new QLabel(this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setWordWrap(true);
    m_label->setText(QStringLiteral("%1\n\nThis version of Tarnby cannot show the contents of this file yet.")
                         .arg(QDir::toNativeSeparators(path)));
    layout->addWidget(m_label);
    resize(480, 300);
}

void ChildFrm1::notYetAvailable(const QString &what)
{
    m_services.messages.inform(what + QStringLiteral(" is not available in this version of Tarnby."), this);
}

void ChildFrm1::mnuFileOpen_Click()
{
    DialogRequest request;
    request.kind = DialogKind::OpenFile;
    request.title = QStringLiteral("Select File to Open");
    request.filter = catalogue::openDialogFilter();
    request.directory = QFileInfo(m_path).absolutePath();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (answer.accepted && !answer.path.isEmpty()) {
        m_state.fileToOpen = answer.path;
        m_state.classify(answer.path);
        emit openFileRequested(answer.path);
    }
}

void ChildFrm1::mnuFileClose_Click()
{
    if (QWidget *sub = parentWidget())
        sub->close();
    else
        close();
}

void ChildFrm1::mnuFileSaveAs_Click() { notYetAvailable(QStringLiteral("Saving from the viewing window")); }
void ChildFrm1::mnuFileRename_Click() { notYetAvailable(QStringLiteral("Renaming from the viewing window")); }
void ChildFrm1::mnuFileMove_Click() { notYetAvailable(QStringLiteral("Moving from the viewing window")); }
void ChildFrm1::mnuFileDelete_Click() { notYetAvailable(QStringLiteral("Deleting from the viewing window")); }
void ChildFrm1::mnuFilePrint_Click() { notYetAvailable(QStringLiteral("Printing")); }
void ChildFrm1::mnuFileSend_Click() { notYetAvailable(QStringLiteral("Sending files by e-mail")); }
void ChildFrm1::mnuFileOLE_Click() { notYetAvailable(QStringLiteral("Opening with another application")); }
void ChildFrm1::mnuFileProptee_Click() { notYetAvailable(QStringLiteral("File Properties")); }
void ChildFrm1::mnuEditCopy_Click() { notYetAvailable(QStringLiteral("Copy")); }
void ChildFrm1::mnuViewTable_Click() { notYetAvailable(QStringLiteral("Choosing a database table")); }
void ChildFrm1::mnuViewIndex_Click() { notYetAvailable(QStringLiteral("Choosing a table index")); }
void ChildFrm1::mnuViewComments_Click() { notYetAvailable(QStringLiteral("Table comments")); }
void ChildFrm1::mnuViewNormal_Click() { notYetAvailable(QStringLiteral("Normal Image View")); }
void ChildFrm1::mnuViewStretch_Click() { notYetAvailable(QStringLiteral("Stretch Image View")); }
void ChildFrm1::mnuViewPanWin_Click() { notYetAvailable(QStringLiteral("The pan window")); }
void ChildFrm1::MagnifyingGlass() { notYetAvailable(QStringLiteral("The magnifying glass")); }
void ChildFrm1::mnuImageFlip_Click() { notYetAvailable(QStringLiteral("Flip")); }
void ChildFrm1::mnuImageRotate_Click() { notYetAvailable(QStringLiteral("Rotate")); }
void ChildFrm1::mnuImageReverse_Click() { notYetAvailable(QStringLiteral("Reverse")); }
void ChildFrm1::mnuImageResize_Click() { notYetAvailable(QStringLiteral("Resize")); }
void ChildFrm1::mnuImageBrightness_Click() { notYetAvailable(QStringLiteral("Brightness")); }
void ChildFrm1::mnuImageContrast_Click() { notYetAvailable(QStringLiteral("Contrast")); }
void ChildFrm1::mnuImageColorInt_Click() { notYetAvailable(QStringLiteral("Stretch Color Intensity")); }
void ChildFrm1::mnuImageInvert_Click() { notYetAvailable(QStringLiteral("Color Invert")); }
void ChildFrm1::mnuImageText_Click() { notYetAvailable(QStringLiteral("Adding text to pictures")); }
void ChildFrm1::mnuImageShapes_Click() { notYetAvailable(QStringLiteral("Adding shapes to pictures")); }

} // namespace tarnby::ui
