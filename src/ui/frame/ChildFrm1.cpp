#include "ui/frame/ChildFrm1.h"

#include "core/app/AppState.h"
#include "core/app/Twips.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"
#include "ui/viewer/PanWindow.h"
#include "ui/viewer/PictureView.h"
#include "ui/viewer/WebView.h"

#include <QClipboard>
#include <QCloseEvent>
#include <QFile>
#include <QFileInfo>
#include <QFrame>
#include <QGuiApplication>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QPushButton>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QTextDocument>
#include <QTextDocumentFragment>
#include <QTextEdit>
#include <QTimer>
#include <QVBoxLayout>

namespace tarnby::ui {

using viewer::DocumentKind;
using viewer::TextView;
using viewer::ViewStep;

namespace {
// The text box's size in the designer, kept until the first resize sets it.
const QSize InitialTextBoxTwips(6400, 3580);
// A picture fetched from the Internet is kept in memory until written out;
// beyond this it is refused.
constexpr qint64 MaxDownloadBytes = 512LL * 1024 * 1024;
} // namespace

ChildFrm1::ChildFrm1(AppState &state, UiServices &services, const QString &path, const QString &kind,
                     QWidget *parent)
    : QWidget(parent)
    , m_state(state)
    , m_services(services)
    , m_path(path)
    , m_fileType(kind)
    , m_extension(catalogue::GetFileExt(path))
    , m_textBoxTwips(InitialTextBoxTwips)
{
    setObjectName(QStringLiteral("ChildFrm1"));
    setWindowTitle(viewer::saveAsFileName(path));
    m_animationFlag = isPicture() && viewer::loadsAllPages(m_extension);

    m_image = new PictureView(this);
    m_image->setFrameShape(QFrame::NoFrame);
    m_image->hide();

    m_text = new QTextEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_text->setFont(QFont(QStringLiteral("Arial")));
    m_text->setReadOnly(true);
    m_text->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    m_text->hide();

    m_web = new WebView(this);
    m_web->hide();

    m_timer = new QTimer(this);
    m_timer->setObjectName(QStringLiteral("Timer1"));
    m_timer->setInterval(1000);
    connect(m_timer, &QTimer::timeout, this, &ChildFrm1::Timer1_Timer);

    m_frame3 = new QFrame(this);
    m_frame3->setObjectName(QStringLiteral("Frame3"));
    m_frame3->setFrameShape(QFrame::Box);
    m_label1 = new QLabel(QStringLiteral("Loading Picture from the Internet. Please wait."), m_frame3);
    m_label1->setObjectName(QStringLiteral("Label1"));
    (new QVBoxLayout(m_frame3))->addWidget(m_label1);
    m_frame3->hide();

    m_frame2 = new QFrame(this);
    m_frame2->setObjectName(QStringLiteral("Frame2"));
    m_text2 = new QTextEdit(m_frame2);
    m_text2->setObjectName(QStringLiteral("Text2"));
    m_text2->setToolTip(QStringLiteral("View Comments"));
    m_frame2->hide();

    m_frame1 = new QFrame(this);
    m_frame1->setObjectName(QStringLiteral("Frame1"));
    m_exitDBaseBtn = new QPushButton(m_frame1);
    m_exitDBaseBtn->setObjectName(QStringLiteral("ExitDBaseBtn"));
    m_exitDBaseBtn->setToolTip(QStringLiteral("Close Database Table and Index Display"));
    m_frame1->hide();

    m_list1 = new QListWidget(this);
    m_list1->setObjectName(QStringLiteral("List1"));
    m_list1->hide();
    m_list2 = new QListWidget(this);
    m_list2->setObjectName(QStringLiteral("List2"));
    m_list2->hide();

    m_tableNotice = new QLabel(this);
    m_tableNotice->setObjectName(QStringLiteral("TableNotice"));
    m_tableNotice->setWordWrap(true);
    m_tableNotice->setAlignment(Qt::AlignCenter);
    m_tableNotice->hide();

    // Large plain text files are shown a page at a time.
    m_pageBar = new QWidget(this);
    m_pageBar->setObjectName(QStringLiteral("TextPages"));
    auto *bar = new QHBoxLayout(m_pageBar);
    bar->setContentsMargins(2, 2, 2, 2);
    m_prevPage = new QPushButton(QStringLiteral("< Previous"), m_pageBar);
    m_prevPage->setObjectName(QStringLiteral("PreviousPageBtn"));
    m_nextPage = new QPushButton(QStringLiteral("Next >"), m_pageBar);
    m_nextPage->setObjectName(QStringLiteral("NextPageBtn"));
    m_pageLabel = new QLabel(m_pageBar);
    m_pageLabel->setObjectName(QStringLiteral("PageLabel"));
    bar->addWidget(m_prevPage);
    bar->addWidget(m_pageLabel, 1, Qt::AlignCenter);
    bar->addWidget(m_nextPage);
    m_pageBar->hide();

    m_document = new viewer::Document(path, viewer::kindFromLetter(kind), state.options.useTextDoc, this);
    connect(m_document, &viewer::Document::loaded, this, &ChildFrm1::onLoaded);
    connect(m_document, &viewer::Document::loadFailed, this, &ChildFrm1::onLoadFailed);
    connect(m_document, &viewer::Document::pageLoaded, this, &ChildFrm1::showTextPage);
    connect(m_prevPage, &QPushButton::clicked, this, [this] { m_document->loadPage(m_document->text().page - 1); });
    connect(m_nextPage, &QPushButton::clicked, this, [this] { m_document->loadPage(m_document->text().page + 1); });

    resize(480, 300);
    // The load step runs once the frame has placed the window, so that it can
    // size itself within the frame.
    QMetaObject::invokeMethod(this, &ChildFrm1::loadDocument, Qt::QueuedConnection);
}

ChildFrm1::~ChildFrm1()
{
    if (m_reply)
        m_reply->abort();
    // The rich text belongs to the document; let the text box forget it first.
    m_text->setDocument(nullptr);
    // The local copy of an Internet picture goes with the window.
    delete m_download;
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
    if (!m_fileCommands)
        m_fileCommands = new FileCommands(m_state, m_services, this);
    return m_fileCommands;
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

// ---------------------------------------------------------------- loading

void ChildFrm1::loadDocument()
{
    connectToFrame();
    switch (viewer::kindFromLetter(m_fileType)) {
    case DocumentKind::Picture:
        m_image->show();
        m_image->setFocus();
        if (viewer::isInternetAddress(m_path)) {
            startInternetFetch();
            return;
        }
        break;
    case DocumentKind::Text:
        placeTextWindow();
        if (viewer::textViewFor(m_extension, m_state.options.useTextDoc) == TextView::WebView) {
            m_webViewFlag = true;
            setCursor(Qt::WaitCursor);
        }
        break;
    case DocumentKind::Database:
        break;
    }
    m_shutOffClick = false;
    m_document->load();
}

void ChildFrm1::onLoaded()
{
    switch (m_document->kind()) {
    case DocumentKind::Picture:
        showPicture();
        break;
    case DocumentKind::Text:
        showText();
        break;
    case DocumentKind::Database:
        m_tableNotice->setText(QStringLiteral("%1\n\nDatabase and spreadsheet tables cannot be shown in this "
                                              "version of Tarnby yet.")
                                   .arg(QDir::toNativeSeparators(m_path)));
        m_tableNotice->show();
        break;
    }
    layoutControls();
    if (MDIForm1 *f = frame(); f && f->activeDocumentWidget() == this)
        applyActivation();
    emit documentShown();
}

void ChildFrm1::onLoadFailed(const QString &error)
{
    unsetCursor();
    m_frame3->hide();
    m_fetchWatch.stop();
    m_timer->stop();
    if (m_document->kind() == DocumentKind::Picture) {
        m_services.messages.inform(QStringLiteral("Error Loading Picture"), this);
    } else if (m_document->kind() == DocumentKind::Text && m_webViewFlag) {
        // The window stays open; it says why it is empty.
        m_web->setPlainText(QStringLiteral("This document cannot be shown: ") + error);
        m_web->show();
    }
    layoutControls();
    emit documentShown();
}

void ChildFrm1::showPicture()
{
    m_frame3->hide();
    m_image->setPicture(m_document->picture(), m_document->overview());
    m_image->show();
    sizeToPicture();
    if (m_pan)
        m_pan->setOverview(m_document->overview().isNull() ? m_document->picture().image() : m_document->overview(),
                           m_image->pictureSize());
}

void ChildFrm1::showText()
{
    const viewer::TextContent &content = m_document->text();
    switch (content.view) {
    case TextView::RichText:
        m_text->setDocument(m_document->richText());
        m_text->show();
        m_web->hide();
        break;
    case TextView::WebView:
        m_text->hide();
        m_web->setBaseUrl(content.baseUrl);
        if (!content.html.isEmpty())
            m_web->setHtml(content.html);
        else
            m_web->setPlainText(content.webPlainText);
        m_web->show();
        unsetCursor();
        break;
    case TextView::PlainText:
        showTextPage();
        m_text->show();
        break;
    }
}

void ChildFrm1::showTextPage()
{
    const viewer::TextContent &content = m_document->text();
    m_text->setPlainText(content.pageText);
    const int pages = content.layout.pageCount();
    m_pageBar->setVisible(pages > 1);
    m_pageLabel->setText(QStringLiteral("Page %1 of %2").arg(content.page + 1).arg(pages));
    m_prevPage->setEnabled(content.page > 0);
    m_nextPage->setEnabled(content.page + 1 < pages);
    layoutControls();
}

void ChildFrm1::placeTextWindow()
{
    QWidget *outer = outerWindow();
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    if (outer != this)
        outer->move(0, 0);
    outer->resize(twipsToPixels(viewer::TextWindowWidthTwips, dpiX), twipsToPixels(viewer::TextWindowHeightTwips, dpiY));
    layoutControls();
}

void ChildFrm1::sizeToPicture()
{
    const QSize picture = m_image->pictureSize();
    if (picture.isEmpty())
        return;
    QWidget *outer = outerWindow();
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    // The hosting window places this one through its layout; settle it first
    // so that outer minus inner is the real non-client size.
    if (outer != this && outer->layout())
        outer->layout()->activate();
    const QSize nonClientPixels = outer == this ? QSize(0, 0) : outer->size() - size();
    const QSize nonClientTwips(int(std::lround(pixelsToTwips(nonClientPixels.width(), dpiX))),
                               int(std::lround(pixelsToTwips(nonClientPixels.height(), dpiY))));
    const QSize twips = viewer::pictureWindowTwips(picture, 1440.0 / dpiX, 1440.0 / dpiY, nonClientTwips);
    QSize pixels(twipsToPixels(twips.width(), dpiX), twipsToPixels(twips.height(), dpiY));
    // A picture larger than the frame gets a window as large as the frame's
    // client area, with scroll bars.
    if (outer != this && outer->parentWidget() && !outer->parentWidget()->size().isEmpty())
        pixels = pixels.boundedTo(outer->parentWidget()->size());
    outer->resize(pixels);
    if (outer != this && outer->layout()) {
        outer->layout()->activate();
        // Some window decorations only settle their size on the resize itself;
        // correct once by what the inner area still lacks.
        const QSize lacking = picture.boundedTo(outer->parentWidget() ? outer->parentWidget()->size() : picture) - size();
        if (!lacking.isNull() && (lacking.width() > 0 || lacking.height() > 0))
            outer->resize((outer->size() + lacking.expandedTo(QSize(0, 0)))
                              .boundedTo(outer->parentWidget() ? outer->parentWidget()->size() : QSize(1 << 20, 1 << 20)));
    }
}

void ChildFrm1::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
    layoutControls();
}

void ChildFrm1::layoutControls()
{
    const QRect client = rect();
    m_image->setGeometry(client);
    m_tableNotice->setGeometry(client);
    const QSize frame3 = m_frame3->sizeHint();
    m_frame3->setGeometry(QRect(QPoint((client.width() - frame3.width()) / 2, (client.height() - frame3.height()) / 2),
                                frame3));

    // The text box keeps fixed margins to the window's outer size.
    const QWidget *outer = outerWindow();
    const double dpiX = logicalDpiX();
    const double dpiY = logicalDpiY();
    const QSize outerTwips(int(std::lround(pixelsToTwips(outer->width(), dpiX))),
                           int(std::lround(pixelsToTwips(outer->height(), dpiY))));
    m_textBoxTwips = viewer::textBoxTwips(outerTwips, m_textBoxTwips);
    QSize box(twipsToPixels(m_textBoxTwips.width(), dpiX), twipsToPixels(m_textBoxTwips.height(), dpiY));
    if (!m_pageBar->isHidden()) {
        const int barHeight = m_pageBar->sizeHint().height();
        box.setHeight(std::max(0, box.height() - barHeight));
        m_pageBar->setGeometry(0, box.height(), box.width(), barHeight);
    }
    m_text->setGeometry(QRect(QPoint(0, 0), box));
    m_web->setGeometry(QRect(QPoint(0, 0), box));
}

// ---------------------------------------------------------------- the Internet

void ChildFrm1::setInternetClock(viewer::InternetFetchWatch::Clock clock)
{
    m_fetchWatch = viewer::InternetFetchWatch(std::move(clock));
}

bool ChildFrm1::isFetchingFromInternet() const
{
    return m_fetchWatch.isRunning();
}

void ChildFrm1::startInternetFetch()
{
    m_frame3->show();
    m_frame3->raise();
    layoutControls();
    m_fetchWatch.start();
    m_timer->start();
    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request{QUrl(m_path)};
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::downloadProgress, this, [this](qint64 received, qint64) {
        if (received > MaxDownloadBytes && m_reply)
            m_reply->abort();
    });
    connect(m_reply, &QNetworkReply::finished, this, &ChildFrm1::onFetchFinished);
}

void ChildFrm1::onFetchFinished()
{
    QNetworkReply *reply = m_reply;
    if (!reply)
        return;
    reply->deleteLater();
    // A failed transfer is not reported here: the picture simply never
    // arrives, and the timer's rule tells the user.
    if (reply->error() != QNetworkReply::NoError)
        return;
    const QByteArray data = reply->readAll();
    delete m_download;
    m_download = new QTemporaryDir;
    QString name = viewer::saveAsFileName(m_path).section(QLatin1Char('?'), 0, 0);
    if (name.isEmpty())
        name = QStringLiteral("picture");
    const QString local = m_download->filePath(name);
    QSaveFile file(local);
    if (!m_download->isValid() || !file.open(QIODevice::WriteOnly) || file.write(data) != data.size() || !file.commit())
        return;
    m_document->load(local);
}

void ChildFrm1::Timer1_Timer()
{
    using Verdict = viewer::InternetFetchWatch::Verdict;
    const Verdict verdict =
        m_fetchWatch.check(m_document->loadingState() == viewer::Document::LoadingState::Loaded);
    switch (verdict) {
    case Verdict::Waiting:
        return;
    case Verdict::Completed:
    case Verdict::Idle:
        m_timer->stop();
        m_frame3->hide();
        return;
    case Verdict::TimedOut:
        m_timer->stop();
        m_frame3->hide();
        if (m_reply)
            m_reply->abort();
        m_services.messages.inform(QStringLiteral("Picture Not found on the Internet"), this);
        return;
    }
}

// ---------------------------------------------------------------- the frame

void ChildFrm1::applyActivation()
{
    MDIForm1 *f = frame();
    if (!f)
        return;
    f->setWindowTitle(QStringLiteral("Tarnby 3.0 - ") + windowTitle());
    const bool pictureShown = isPicture() && m_document->loadingState() == viewer::Document::LoadingState::Loaded;
    const viewer::StatusPanels panels = [&] {
        if (!pictureShown)
            return viewer::fileStatusPanels(m_document->fileSize());
        const imaging::PictureInfo &info = m_document->picture().info;
        return viewer::pictureStatusPanels(info.width, info.height, info.bitsPerPixel, info.sizeOnDisk);
    }();
    f->setStatusPanels(panels.first, panels.second, panels.third);
    if (isPicture())
        applySteps(m_modes.activationChecks());
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

void ChildFrm1::applySteps(const viewer::ViewSteps &steps)
{
    for (const ViewStep &step : steps) {
        switch (step.action) {
        case ViewStep::Action::SetPaintMode:
            m_image->setPaintMode(step.mode);
            break;
        case ViewStep::Action::StartMagnifier:
            m_image->setMagnifierOn(true);
            break;
        case ViewStep::Action::StopMagnifier:
            m_image->setMagnifierOn(false);
            break;
        case ViewStep::Action::ShowPanWindow:
            showPanWindow();
            break;
        case ViewStep::Action::HidePanWindow:
            if (m_pan)
                m_pan->hide();
            break;
        case ViewStep::Action::Check:
            setFrameCheck(step.key, step.checked);
            break;
        }
    }
}

void ChildFrm1::showPanWindow()
{
    if (!m_pan) {
        m_pan = new PanWindow(this);
        connect(m_image, &PictureView::visibleRectChanged, m_pan, &PanWindow::setVisibleRect);
        connect(m_pan, &PanWindow::panRequested, m_image, &PictureView::centreOn);
        connect(m_pan, &PanWindow::closedByUser, this, [this] { applySteps(m_modes.panWindowClosed()); });
    }
    QWidget *outer = outerWindow();
    m_pan->setWindowIcon(outer->windowIcon());
    const QImage overview = m_document->overview();
    m_pan->setOverview(overview.isNull() ? m_document->picture().image() : overview, m_image->pictureSize());
    m_pan->setVisibleRect(m_image->visiblePictureRect());
    // Both offsets come from the document window's left edge, in the frame's
    // client area.
    QRect place = viewer::PanWindowSettings::geometry(outer->x());
    if (QWidget *area = outer->parentWidget())
        place.moveTopLeft(area->mapToGlobal(place.topLeft()));
    m_pan->setGeometry(place);
    m_pan->show();
    m_pan->raise();
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
    applySteps(m_modes.teardown());
    m_timer->stop();
    if (m_reply)
        m_reply->abort();
    event->accept();
}

void ChildFrm1::mnuFileSaveAs_Click()
{
    if (!isPicture()) {
        // Documents and tables are copied under the new name.
        m_state.currentFile = m_path;
        fileCommands()->SaveFileAs();
        return;
    }
    const QString name = viewer::saveAsFileName(m_path);
    DialogRequest request;
    request.kind = DialogKind::SaveFile;
    request.title = QStringLiteral("Enter New File Name for - ") + name;
    const QString pattern = QStringLiteral("*.") + m_extension;
    request.filter = pattern + QLatin1Char('|') + pattern;
    request.defaultSuffix = m_extension;
    request.fileName = name;
    request.directory = viewer::isInternetAddress(m_path) ? QDir::currentPath() : QFileInfo(m_path).absolutePath();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted || answer.path.isEmpty())
        return;
    const int formatCode = catalogue::GetSaveFormatCode(catalogue::GetFileExt(answer.path));
    const imaging::SaveResult result = formatCode == 0
                                           ? imaging::SaveResult{false, QStringLiteral("No picture format")}
                                           : m_document->savePicture(answer.path, formatCode, 0, 0);
    if (!result.ok)
        m_services.messages.inform(QStringLiteral("Error Saving File - ") + answer.path, this);
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
    if (!offerSaveBeforeHandOver())
        return;
    m_state.currentFile = m_path;
    fileCommands()->RenameFile(m_path);
}

void ChildFrm1::mnuFileMove_Click()
{
    if (!offerSaveBeforeHandOver())
        return;
    m_state.currentFile = m_path;
    fileCommands()->MoveFile(m_path, m_extension);
}

void ChildFrm1::mnuFileDelete_Click()
{
    m_state.currentFile = m_path;
    fileCommands()->DeleteFile(m_path);
}

void ChildFrm1::mnuFileOLE_Click()
{
    // Let go of the file first so that the other program may open it. A web
    // view of an HTML file is replaced by the small text file kept for this.
    if (m_extension == QLatin1String("HTM") || m_extension == QLatin1String("HTML")) {
        QFile close(m_state.programFile(QStringLiteral("Close.Txt")));
        if (close.open(QIODevice::ReadOnly))
            m_text->setPlainText(QString::fromLocal8Bit(close.readAll()));
    }
    // FIXME: a table window lets go of its table here once the table view exists.
    m_state.currentFile = m_path;
    fileCommands()->OpenwithOLE();
}

void ChildFrm1::mnuEditCopy_Click()
{
    switch (viewer::kindFromLetter(m_fileType)) {
    case DocumentKind::Picture:
        m_services.messages.inform(
            QStringLiteral("You can only Copy Text for Pasting into Text Box to Add Text to a Picture"), this);
        return;
    case DocumentKind::Database:
        notYetAvailable(QStringLiteral("Copying from a database table"));
        return;
    case DocumentKind::Text:
        if (m_webViewFlag)
            m_web->copy();
        else
            QGuiApplication::clipboard()->setText(m_text->textCursor().selection().toPlainText());
        return;
    }
}

void ChildFrm1::mnuViewNormal_Click()
{
    if (m_toolbarGuard || !isPicture())
        return;
    applySteps(m_modes.normal());
}

void ChildFrm1::mnuViewStretch_Click()
{
    if (m_toolbarGuard || !isPicture())
        return;
    applySteps(m_modes.stretch());
}

void ChildFrm1::mnuViewPanWin_Click()
{
    if (m_toolbarGuard || !isPicture())
        return;
    applySteps(m_modes.togglePanWindow());
}

void ChildFrm1::MagnifyingGlass()
{
    if (m_toolbarGuard || !isPicture())
        return;
    applySteps(m_modes.toggleMagnifier());
}

void ChildFrm1::mnuFilePrint_Click() { notYetAvailable(QStringLiteral("Printing")); }
void ChildFrm1::mnuFileSend_Click() { notYetAvailable(QStringLiteral("Sending files by e-mail")); }
void ChildFrm1::mnuFileProptee_Click() { notYetAvailable(QStringLiteral("File Properties")); }
void ChildFrm1::mnuViewTable_Click() { notYetAvailable(QStringLiteral("Choosing a database table")); }
void ChildFrm1::mnuViewIndex_Click() { notYetAvailable(QStringLiteral("Choosing a table index")); }
void ChildFrm1::mnuViewComments_Click() { notYetAvailable(QStringLiteral("Table comments")); }
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
