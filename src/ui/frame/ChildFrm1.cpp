#include "ui/mail/MailWindows.h"
#include "ui/frame/ChildFrm1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/MDIForm1.h"
#include "ui/printing/PrntFrm1.h"
#include "ui/services/UiServices.h"
#include "ui/tables/ProPert1.h"
#include "ui/viewer/PictureDocumentView.h"
#include "ui/viewer/TableDocumentView.h"
#include "ui/viewer/TextDocumentView.h"
#include "ui/viewer/WebDocumentView.h"

#include <QCloseEvent>
#include <QFileInfo>
#include <QMdiArea>
#include <QMdiSubWindow>

namespace tarnby::ui {

using viewer::DocumentKind;

ChildFrm1::ChildFrm1(AppState &state, UiServices &services, const QString &path, DocumentKind kind,
                     QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_services(services)
    , m_path(path)
    , m_kind(kind)
    , m_extension(catalogue::GetFileExt(path))
{
    setObjectName(QStringLiteral("ChildFrm1"));
    setWindowTitle(viewer::saveAsFileName(path));

    m_document = new viewer::Document(path, kind, state.options.useTextDoc, this);
    connect(m_document, &viewer::Document::loaded, this, &ChildFrm1::onLoaded);
    connect(m_document, &viewer::Document::loadFailed, this, &ChildFrm1::onLoadFailed);

    // The view is chosen here, once: the kind, and for text the same rule
    // that decides where the document goes.
    switch (kind) {
    case DocumentKind::Picture:
        m_view = new PictureDocumentView(*m_document, services, *this, this);
        break;
    case DocumentKind::Text:
        if (viewer::textViewFor(m_extension, state.options.useTextDoc) == viewer::TextView::WebView)
            m_view = new WebDocumentView(*m_document, services, *this, this);
        else
            m_view = new TextDocumentView(*m_document, services, *this, this);
        break;
    case DocumentKind::Database:
        m_view = new TableDocumentView(*m_document, services, *this, state, this);
        break;
    }

    resize(480, 300);
    // The load step runs once the frame has placed the window, so that it can
    // size itself within the frame.
    QMetaObject::invokeMethod(this, &ChildFrm1::loadDocument, Qt::QueuedConnection);
}

ChildFrm1::~ChildFrm1()
{
    // The view shows what the document holds; it goes first.
    delete m_view;
}

bool ChildFrm1::isWebView() const
{
    return qobject_cast<WebDocumentView *>(m_view) != nullptr;
}

MDIForm1 *ChildFrm1::frame() const
{
    for (QWidget *w = parentWidget(); w; w = w->parentWidget()) {
        if (auto *f = qobject_cast<MDIForm1 *>(w))
            return f;
    }
    return nullptr;
}

QWidget *ChildFrm1::outerWindow() const
{
    auto *sub = qobject_cast<QMdiSubWindow *>(parentWidget());
    return sub ? static_cast<QWidget *>(sub) : const_cast<ChildFrm1 *>(this);
}

FileCommands *ChildFrm1::fileCommands()
{
    if (!m_fileCommands) {
        m_fileCommands = new FileCommands(m_state, m_services, this);
        // What this window's commands do on disk reaches every window that
        // shows the files, and the browser's lists.
        connect(m_fileCommands, &FileCommands::fileMoved, this, [this](const QString &from, const QString &to) {
            if (MDIForm1 *f = frame())
                f->followMovedFile(from, to);
            else if (from == QFileInfo(m_path).absoluteFilePath())
                fileMovedTo(to);
        });
        connect(m_fileCommands, &FileCommands::fileRemoved, this, [this](const QString &path) {
            if (MDIForm1 *f = frame())
                f->noteRemovedFile(path);
            else if (path == QFileInfo(m_path).absoluteFilePath())
                fileRemoved();
        });
        connect(m_fileCommands, &FileCommands::filesChanged, this, [this] {
            if (MDIForm1 *f = frame())
                emit f->filesChanged();
        });
    }
    return m_fileCommands;
}

void ChildFrm1::fileMovedTo(const QString &path)
{
    m_path = path;
    m_extension = catalogue::GetFileExt(path);
    m_fileRemoved = false;
    m_document->setPath(path);
    setWindowTitle(viewer::saveAsFileName(path));
    if (MDIForm1 *f = frame(); f && f->activeDocumentWidget() == this)
        applyActivation();
}

void ChildFrm1::fileRemoved()
{
    if (m_fileRemoved)
        return;
    m_fileRemoved = true;
    setWindowTitle(viewer::saveAsFileName(m_path) + QStringLiteral(" - File Deleted"));
    if (MDIForm1 *f = frame(); f && f->activeDocumentWidget() == this)
        applyActivation();
}

bool ChildFrm1::fileStillThere()
{
    if (viewer::isInternetAddress(m_path))
        return true;
    if (!m_fileRemoved && QFileInfo(m_path).isFile())
        return true;
    // Deleted here, or by another program since the window opened it.
    fileRemoved();
    if (QWidget *sub = qobject_cast<QMdiSubWindow *>(parentWidget()))
        sub->setWindowTitle(windowTitle());
    m_services.messages.inform(QStringLiteral("The File has been Deleted - ") + m_path, this);
    return false;
}

QString ChildFrm1::helpFolder() const
{
    return m_state.helpFolder();
}

void ChildFrm1::fileWritten(const QString &path)
{
    Q_UNUSED(path)
    if (MDIForm1 *f = frame())
        emit f->filesChanged();
}

bool ChildFrm1::event(QEvent *event)
{
    if (event->type() == QEvent::ParentChange)
        connectToFrame();
    return QWidget::event(event);
}

void ChildFrm1::connectToFrame()
{
    MDIForm1 *f = frame();
    if (!f || f == m_connectedFrame)
        return;
    m_connectedFrame = f;
    connect(f->mdiArea(), &QMdiArea::subWindowActivated, this, [this](QMdiSubWindow *sub) {
        if (sub && sub == parentWidget() && !m_closing)
            applyActivation();
    });
}

void ChildFrm1::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    m_view->setGeometry(rect());
}

// ---------------------------------------------------------------- loading

void ChildFrm1::loadDocument()
{
    connectToFrame();
    m_shutOffClick = false;
    m_view->start();
}

void ChildFrm1::onLoaded()
{
    m_view->showDocument();
    if (MDIForm1 *f = frame()) {
        // The window has its size now; all of it belongs in sight.
        f->keepInsideArea(this);
        if (f->activeDocumentWidget() == this)
            applyActivation();
    }
    emit documentShown();
}

void ChildFrm1::onLoadFailed(const QString &error)
{
    m_view->showFailure(error);
    if (MDIForm1 *f = frame(); f && f->activeDocumentWidget() == this)
        f->refreshCommandState();
    emit documentShown();
}

bool ChildFrm1::showsNothing() const
{
    return m_document->loadingState() == viewer::Document::LoadingState::Failed;
}

// ---------------------------------------------------------------- the Internet

void ChildFrm1::setInternetClock(viewer::InternetFetchWatch::Clock clock)
{
    m_view->setInternetClock(std::move(clock));
}

bool ChildFrm1::isFetchingFromInternet() const
{
    return m_view->isFetchingFromInternet();
}

void ChildFrm1::Timer1_Timer()
{
    m_view->internetTick();
}

// ---------------------------------------------------------------- the frame

void ChildFrm1::applyActivation()
{
    MDIForm1 *f = frame();
    if (!f)
        return;
    f->setWindowTitle(QStringLiteral("Tarnby 3.0 - ") + windowTitle());
    const viewer::StatusPanels panels = m_view->statusPanels();
    f->setStatusPanels(panels.first, panels.second, panels.third);
    m_view->activate();
}

void ChildFrm1::setFrameCheck(const QString &key, bool checked)
{
    MDIForm1 *f = frame();
    // Only the active window speaks for the frame's checks; the click that a
    // change raises goes to the active window.
    if (!f || f->activeDocumentWidget() != this)
        return;
    m_toolbarGuard = true;
    f->commandBar()->setChecked(key, checked);
    m_toolbarGuard = false;
}

void ChildFrm1::setFrameEnabled(const QString &key, bool enabled)
{
    MDIForm1 *f = frame();
    if (f && f->activeDocumentWidget() == this)
        f->commandBar()->setEnabled(key, enabled);
}

// ---------------------------------------------------------------- operations

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
        emit openFileRequested(answer.path);
    }
}

void ChildFrm1::mnuFileClose_Click()
{
    if (QWidget *sub = qobject_cast<QMdiSubWindow *>(parentWidget()))
        sub->close();
    else
        close();
}

void ChildFrm1::closeEvent(QCloseEvent *event)
{
    if (m_closing) {
        event->accept();
        return;
    }
    if (m_document->isModified()
        && m_services.messages.ask(QStringLiteral("Do You want to Save Changes to the Picture - ") + windowTitle()
                                       + QStringLiteral(" ?"),
                                   this))
        mnuFileSaveAs_Click();
    m_closing = true;
    m_view->closing();
    event->accept();
}

void ChildFrm1::mnuFileSaveAs_Click()
{
    m_view->saveAs();
}

void ChildFrm1::copyFileAs()
{
    // Documents and tables are copied under the new name.
    if (!fileStillThere())
        return;
    m_state.currentFile = m_path;
    fileCommands()->SaveFileAs();
}

bool ChildFrm1::offerSaveBeforeHandOver()
{
    if (!m_document->isModified())
        return true;
    if (m_services.messages.ask(QStringLiteral("Do You want to Save Changes to the Picture?"), this)) {
        mnuFileSaveAs_Click();
        return !m_document->isModified();
    }
    return true;
}

void ChildFrm1::mnuFileRename_Click()
{
    if (!fileStillThere() || !offerSaveBeforeHandOver())
        return;
    m_state.currentFile = m_path;
    fileCommands()->RenameFile(m_path);
}

void ChildFrm1::mnuFileMove_Click()
{
    if (!fileStillThere() || !offerSaveBeforeHandOver())
        return;
    m_state.currentFile = m_path;
    fileCommands()->MoveFile(m_path, m_extension);
}

void ChildFrm1::mnuFileDelete_Click()
{
    if (!fileStillThere())
        return;
    m_state.currentFile = m_path;
    fileCommands()->DeleteFile(m_path);
}

void ChildFrm1::mnuFileOLE_Click()
{
    if (!fileStillThere())
        return;
    // Let go of the file first so that the other program may open it.
    m_view->releaseFile(m_state.programFile(QStringLiteral("Close.Txt")));
    m_state.currentFile = m_path;
    fileCommands()->OpenwithOLE();
}

void ChildFrm1::mnuEditCopy_Click() { m_view->copySelection(); }

// The view-mode commands come back as clicks when the window itself changes
// the frame's checks; those must not run again.
void ChildFrm1::mnuViewNormal_Click()
{
    if (!m_toolbarGuard)
        m_view->viewNormal();
}

void ChildFrm1::mnuViewStretch_Click()
{
    if (!m_toolbarGuard)
        m_view->viewStretch();
}

void ChildFrm1::mnuViewPanWin_Click()
{
    if (!m_toolbarGuard)
        m_view->togglePanWindow();
}

void ChildFrm1::MagnifyingGlass()
{
    if (!m_toolbarGuard)
        m_view->toggleMagnifier();
}

void ChildFrm1::mnuFilePrint_Click()
{
    // The window prints its own file, as it shows it now (an edited picture
    // with its changes).
    m_state.currentFile = m_path;
    PrntFrm1 window(m_state, m_services, this);
    if (m_document && m_document->kind() == viewer::DocumentKind::Picture && !m_document->picture().isNull())
        window.setPicture(m_document->picture().image());
    if (MDIForm1 *host = frame())
        host->preparePrintWindow(window);
    window.exec();
}
void ChildFrm1::mnuFileSend_Click()
{
    MailWindowHooks hooks;
    MDIForm1 *host = frame();
    hooks.findDocumentWindow = [host](const QString &path) -> QWidget * {
        if (!host)
            return nullptr;
        return windowShowingFile(host->documentWidgets(), path);
    };
    runSendWindow(m_state, m_services, hooks, m_path, this);
}
void ChildFrm1::mnuFileProptee_Click()
{
    if (!catalogue::GetFileTypeFlag(m_path).known()) {
        m_services.messages.inform(QStringLiteral("Cannot determine File Properties for this type of File"), this);
        return;
    }
    ProPert1 properties(m_view->fileProperties(), m_state, this);
    properties.exec();
}

// The table commands come back as clicks when the window itself changes the
// frame's checks; those must not run again.
void ChildFrm1::mnuViewTable_Click()
{
    if (!m_toolbarGuard)
        m_view->chooseTable();
}

void ChildFrm1::mnuViewIndex_Click()
{
    if (!m_toolbarGuard)
        m_view->chooseIndex();
}

void ChildFrm1::mnuViewComments_Click()
{
    if (!m_toolbarGuard)
        m_view->showComments();
}
void ChildFrm1::mnuImageFlip_Click() { m_view->flip(); }
void ChildFrm1::mnuImageRotate_Click() { m_view->rotate(); }
void ChildFrm1::mnuImageReverse_Click() { m_view->reverse(); }
void ChildFrm1::mnuImageResize_Click() { m_view->resizePicture(); }
void ChildFrm1::mnuImageBrightness_Click() { m_view->brightness(); }
void ChildFrm1::mnuImageContrast_Click() { m_view->contrast(); }
void ChildFrm1::mnuImageColorInt_Click() { m_view->stretchColorIntensity(); }
void ChildFrm1::mnuImageInvert_Click() { m_view->invertColors(); }
void ChildFrm1::mnuImageText_Click() { m_view->addText(); }
void ChildFrm1::mnuImageShapes_Click() { m_view->addShapes(); }

} // namespace tarnby::ui
