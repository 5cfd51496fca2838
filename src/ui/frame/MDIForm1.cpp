#include "ui/frame/MDIForm1.h"

#include "core/app/AppState.h"
#include "core/app/Twips.h"
#include "core/browser/BrowserValues.h"
#include "core/catalogue/FileCatalogue.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/DocumentWindow.h"
#include "ui/services/UiServices.h"

#include <QAction>
#include <QCloseEvent>
#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QIcon>
#include <QLabel>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QMenuBar>
#include <QScreen>
#include <QStatusBar>
#include <QToolBar>

#include <algorithm>

namespace tarnby::ui {

using commands::BrowserAction;
using commands::DocumentOperation;
using commands::FrameAction;

MDIForm1::MDIForm1(AppState &state, UiServices &services, QWidget *parent)
    : QMainWindow(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("MDIForm1"));
    setWindowTitle(QStringLiteral("Tarnby - The Windows File Utility"));

    m_bar = new CommandBar(this);
    m_bar->setObjectName(QStringLiteral("ToolBarComp1"));
    for (const commands::Menu &menu : commands::frameMenus()) {
        QMenu *m = m_bar->addMenu(menuBar(), menu);
        if (menu.key == commands::keys::mnuWindow)
            m_windowMenu = m;
    }
    auto *toolbar = addToolBar(QStringLiteral("Viewing"));
    toolbar->setObjectName(QStringLiteral("FrameToolBar"));
    toolbar->setToolButtonStyle(Qt::ToolButtonTextUnderIcon);
    m_bar->addTools(toolbar, commands::frameToolbar());
    m_bar->makeCheckable({commands::keys::NormalBtn, commands::keys::StretchBtn}, true);
    m_bar->makeCheckable({commands::keys::mnuNormalImageView, commands::keys::mnuStretchImageView}, true);
    m_bar->makeCheckable({commands::keys::mnuPanImage, commands::keys::mnuMagnifyingGlass}, false);
    // Checked while a text or shape waits to be placed in the picture.
    m_bar->makeCheckable({commands::keys::FontBtn, commands::keys::mnuAddTexttoPictures, commands::keys::ShapesBtn,
                          commands::keys::mnuAddShapestoPictures},
                         false);
    // The table window checks its table and index lists and its memo box.
    m_bar->makeCheckable({commands::keys::TableBtn, commands::keys::IndexBtn, commands::keys::mnuSetDatabaseTable,
                          commands::keys::mnuSetDatabaseTableIndex, commands::keys::mnuSetTableComments},
                         false);
    connect(m_bar, &CommandBar::toolClicked, this, [this](const QString &key) { toolClick(key); });

    m_area = new QMdiArea(this);
    m_area->setObjectName(QStringLiteral("MDIArea"));
    m_area->setHorizontalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    m_area->setVerticalScrollBarPolicy(Qt::ScrollBarAsNeeded);
    setCentralWidget(m_area);
    connect(m_area, &QMdiArea::subWindowActivated, this, [this] {
        refreshCommandState();
        AddToWindowList();
    });

    for (int i = 0; i < 3; ++i) {
        m_panels[i] = new QLabel(this);
        m_panels[i]->setObjectName(QStringLiteral("StatusPanel%1").arg(i + 1));
        statusBar()->addWidget(m_panels[i], i == 2 ? 1 : 0);
    }

    m_factory = [this](const QString &path, viewer::DocumentKind kind) -> QWidget * {
        return new ChildFrm1(m_state, m_services, path, kind);
    };

    // The table entries start disabled; only a table window enables them.
    for (QLatin1String key : {commands::keys::mnuSetDatabaseTable, commands::keys::mnuSetDatabaseTableIndex,
                              commands::keys::mnuSetTableComments})
        m_bar->setEnabled(QLatin1String(key), false);
    refreshCommandState();
}

MDIForm1::~MDIForm1()
{
    // The area announces activations while its windows close during
    // destruction; by then this frame is half gone.
    m_area->disconnect(this);
    for (QMdiSubWindow *sub : m_area->subWindowList())
        sub->disconnect(this);
}

void MDIForm1::toolClick(const QString &key, const QString &caption)
{
    // A busy document window takes no commands.
    if (DocumentWindow *doc = activeDocument(); doc && doc->SHUTOFFCLICK_FLG())
        return;

    const std::optional<commands::FrameTarget> target = commands::frameDispatch(key);
    if (!target)
        return;
    if (const auto *op = std::get_if<DocumentOperation>(&*target)) {
        if (DocumentWindow *doc = activeDocument())
            invokeDocumentOperation(*doc, *op);
        return;
    }
    runFrameAction(std::get<FrameAction>(*target), caption);
}

void MDIForm1::runFrameAction(FrameAction action, const QString &caption)
{
    switch (action) {
    case FrameAction::ReturnToBrowser:
        emit returnToBrowserRequested();
        return;
    case FrameAction::OpenFile:
        if (DocumentWindow *doc = activeDocument())
            doc->mnuFileOpen_Click();
        else
            openWithOwnDialog();
        return;
    case FrameAction::ReceiveFiles:
        emit browserCommand(BrowserAction::ReceiveFiles);
        return;
    case FrameAction::HelpContents:
        emit browserCommand(BrowserAction::HelpContents);
        return;
    case FrameAction::OpenInternetPicture:
        emit browserCommand(BrowserAction::OpenInternetPicture);
        return;
    case FrameAction::FindFiles:
        emit browserCommand(BrowserAction::FindFiles);
        return;
    case FrameAction::FindNext:
        emit browserCommand(BrowserAction::FindNext);
        return;
    case FrameAction::PrinterSetup:
        emit browserCommand(BrowserAction::PrinterSetup);
        return;
    case FrameAction::CloseFrame:
        close();
        emit returnToBrowserRequested();
        return;
    case FrameAction::NoAction:
        return;
    case FrameAction::PressNormalButton:
        m_bar->setChecked(commands::keys::NormalBtn, true);
        return;
    case FrameAction::PressStretchButton:
        m_bar->setChecked(commands::keys::StretchBtn, true);
        return;
    case FrameAction::WorkingFolders:
        emit browserCommand(BrowserAction::WorkingFolders);
        return;
    case FrameAction::ApplicationColors:
        emit browserCommand(BrowserAction::ApplicationColors);
        return;
    case FrameAction::ApplicationOptions:
        emit browserCommand(BrowserAction::ApplicationOptions);
        return;
    case FrameAction::Cascade:
        cascadeWindows();
        return;
    case FrameAction::TileHorizontally:
    case FrameAction::TileVertically: {
        // QMdiArea tiles in a grid only; stack the windows in rows or columns.
        const QList<QMdiSubWindow *> windows = m_area->subWindowList();
        if (windows.isEmpty())
            return;
        const QRect area = m_area->viewport()->rect();
        const bool horizontal = action == FrameAction::TileHorizontally;
        const int n = int(windows.size());
        for (int i = 0; i < n; ++i) {
            QMdiSubWindow *w = windows.at(i);
            w->showNormal();
            if (horizontal) {
                const int h = area.height() / n;
                w->setGeometry(0, i * h, area.width(), h);
            } else {
                const int wd = area.width() / n;
                w->setGeometry(i * wd, 0, wd, area.height());
            }
        }
        return;
    }
    case FrameAction::SearchHelpTopic:
        emit browserCommand(BrowserAction::SearchHelpTopic);
        return;
    case FrameAction::QuickTips:
        emit browserCommand(BrowserAction::QuickTips);
        return;
    case FrameAction::About:
        emit browserCommand(BrowserAction::About);
        return;
    case FrameAction::ActivateListedWindow:
        for (QMdiSubWindow *w : m_area->subWindowList()) {
            if (w->windowTitle() == caption) {
                m_area->setActiveSubWindow(w);
                w->widget()->setFocus();
                return;
            }
        }
        return;
    }
}

void MDIForm1::openWithOwnDialog()
{
    DialogRequest request;
    request.kind = DialogKind::OpenFile;
    request.title = QStringLiteral("Select File to Open");
    request.filter = catalogue::openDialogFilter();
    request.filterIndex = m_openFilterIndex;
    // The dialog suggests files of the same type as the current one.
    const QString extension = catalogue::GetFileExt(m_state.currentFile);
    request.defaultSuffix = extension;
    request.fileName = QStringLiteral("*.") + extension;
    request.directory = QFileInfo(m_state.currentFile).absolutePath();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted || answer.path.isEmpty())
        return;
    m_openFilterIndex = answer.filterIndex;
    emit openFileRequested(answer.path);
}

QWidget *MDIForm1::NewWindowFile(const QString &path, viewer::DocumentKind kind)
{
    if (path.isEmpty())
        return nullptr;
    QWidget *window = m_factory(path, kind);
    if (!window)
        return nullptr;
    return addDocumentWindow(window, QFileInfo(path).fileName());
}

QWidget *MDIForm1::addDocumentWindow(QWidget *window, const QString &caption)
{
    Q_ASSERT(dynamic_cast<DocumentWindow *>(window));
    // The new window comes in the state of the one the user works in:
    // maximised after a maximised one, else as a window of its own size.
    const QMdiSubWindow *previous = currentSubWindow();
    const bool maximized = previous && previous->isMaximized();
    window->setAttribute(Qt::WA_DeleteOnClose);
    QMdiSubWindow *sub = m_area->addSubWindow(window);
    sub->setAttribute(Qt::WA_DeleteOnClose);
    sub->setWindowTitle(caption);
    connect(sub, &QObject::destroyed, this, &MDIForm1::onSubWindowClosed, Qt::QueuedConnection);
    if (maximized)
        sub->showMaximized();
    else
        sub->show();
    m_area->setActiveSubWindow(sub);
    // In front of the others, even where the area has no active window (a
    // frame not yet shown).
    sub->raise();
    keepInsideArea(window);
    refreshCommandState();
    AddToWindowList();
    return window;
}

QMdiSubWindow *MDIForm1::currentSubWindow() const
{
    if (QMdiSubWindow *sub = m_area->activeSubWindow())
        return sub;
    const QList<QMdiSubWindow *> list = m_area->subWindowList(QMdiArea::StackingOrder);
    return list.isEmpty() ? nullptr : list.constLast();
}

void MDIForm1::keepInsideArea(QWidget *window)
{
    auto *sub = qobject_cast<QMdiSubWindow *>(window ? window->parentWidget() : nullptr);
    if (!sub || sub->isMaximized() || sub->isMinimized())
        return;
    const QRect area = m_area->viewport()->rect();
    if (area.isEmpty())
        return;
    QRect place = sub->geometry();
    place.setSize(place.size().boundedTo(area.size()));
    place.moveLeft(qBound(area.left(), place.left(), area.right() + 1 - place.width()));
    place.moveTop(qBound(area.top(), place.top(), area.bottom() + 1 - place.height()));
    if (place != sub->geometry())
        sub->setGeometry(place);
}

void MDIForm1::cascadeWindows()
{
    // QMdiArea's own cascade gives each window its size hint, which for a
    // document window is hardly more than its title bar.
    const QList<QMdiSubWindow *> windows = m_area->subWindowList(QMdiArea::StackingOrder);
    const QRect area = m_area->viewport()->rect();
    if (windows.isEmpty() || area.isEmpty())
        return;
    QMdiSubWindow *active = currentSubWindow();
    // One step is the height of the title bar: where the inner widget begins.
    int step = 0;
    for (QMdiSubWindow *w : windows)
        step = std::max(step, w->widget() ? w->widget()->y() : 0);
    step = std::max(step, 16);
    const QSize smallest(std::min(200, area.width()), std::min(3 * step, area.height()));
    QPoint at = area.topLeft();
    for (QMdiSubWindow *w : windows) {
        w->showNormal();
        // A window too small to show anything gets two thirds of the area.
        QSize size = w->size();
        if (size.width() < smallest.width() || size.height() < smallest.height())
            size = area.size() * 2 / 3;
        // Start again at the corner once the steps leave too little room.
        if (at.x() + smallest.width() > area.right() + 1 || at.y() + smallest.height() > area.bottom() + 1)
            at = area.topLeft();
        size = size.boundedTo(QSize(area.right() + 1 - at.x(), area.bottom() + 1 - at.y()));
        w->setGeometry(QRect(at, size));
        w->raise();
        at += QPoint(step, step);
    }
    if (active) {
        active->raise();
        m_area->setActiveSubWindow(active);
    }
}

void MDIForm1::onSubWindowClosed()
{
    refreshCommandState();
    AddToWindowList();
}

void MDIForm1::SetMDIWinSize()
{
    const settings::ProgramOptions &o = m_state.options;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    const std::optional<QRect> wanted =
        windowRectFromOptions({o.frameLeft, o.frameTop, o.frameWidth, QString::number(o.frameHeight)}, dpi);
    if (!wanted) {
        resize(900, 650);
        return;
    }
    const QScreen *shownOn = QGuiApplication::screenAt(wanted->center());
    if (!shownOn)
        shownOn = screen();
    setGeometry(clampToScreen(*wanted, shownOn ? shownOn->availableGeometry() : QRect()));
}

void MDIForm1::storeWindowValues()
{
    // The normal place, also while maximized or minimized: that is where the
    // next start opens the frame.
    const QRect normal = isMaximized() || isMinimized() || isFullScreen() ? normalGeometry() : geometry();
    if (!normal.isValid())
        return;
    const double dpi = logicalDpiX() > 0 ? logicalDpiX() : 96.0;
    const WindowGeometryValues values = windowGeometryValues(normal, dpi);
    settings::ProgramOptions &o = m_state.options;
    o.frameLeft = values.left;
    o.frameTop = values.top;
    o.frameWidth = values.width;
    o.frameHeight = values.height.toInt();
}

void MDIForm1::closeEvent(QCloseEvent *event)
{
    QMainWindow::closeEvent(event);
    if (!event->isAccepted())
        return;
    storeWindowValues();
    emit frameClosed();
}

void MDIForm1::DisableButtons()
{
    m_bar->apply(commands::enablingChanges(commands::EnablingRoutine::DisableButtons));
}

void MDIForm1::EnableButtons()
{
    m_bar->apply(commands::enablingChanges(commands::EnablingRoutine::EnableButtons));
}

void MDIForm1::EnableMDIButtons()
{
    m_bar->apply(commands::enablingChanges(commands::EnablingRoutine::EnableMDIButtons));
}

void MDIForm1::EnableTextButtons()
{
    m_bar->apply(commands::enablingChanges(commands::EnablingRoutine::EnableTextButtons));
}

void MDIForm1::EnableDataButtons(qint16 indexCount)
{
    m_bar->apply(commands::enablingChanges(commands::EnablingRoutine::EnableDataButtons, indexCount));
}

void MDIForm1::refreshCommandState()
{
    DocumentWindow *doc = activeDocument();
    if (documentCount() == 0 || !doc) {
        // Closing the last window disables the document commands; the empty
        // frame then offers Open and Help.
        DisableButtons();
        EnableMDIButtons();
        setWindowTitle(QStringLiteral("Tarnby 3.0"));
        setStatusPanels({}, {}, {});
        return;
    }
    const QString kind = doc->FILE_TYPE();
    if (doc->showsNothing()) {
        // An empty window keeps its file commands, but there is nothing to
        // view, edit, copy or save.
        EnableTextButtons();
        for (QLatin1String key : {commands::keys::SaveBtn, commands::keys::mnuSaveFileAs, commands::keys::CopyBtn})
            m_bar->setEnabled(QLatin1String(key), false);
    } else if (kind == QLatin1String("T"))
        EnableTextButtons();
    else if (kind == QLatin1String("D"))
        EnableDataButtons(doc->NUMINDEXES());
    else
        EnableButtons();
    setWindowTitle(QStringLiteral("Tarnby 3.0 - ") + QFileInfo(doc->filePath()).fileName());
}

void MDIForm1::AddToWindowList()
{
    if (!m_windowMenu)
        return;
    for (QAction *a : std::as_const(m_windowListActions)) {
        m_windowMenu->removeAction(a);
        a->deleteLater();
    }
    m_windowListActions.clear();

    const QList<QMdiSubWindow *> windows = m_area->subWindowList();
    if (windows.isEmpty())
        return;
    QAction *separator = m_windowMenu->addSeparator();
    separator->setObjectName(QStringLiteral("separator"));
    m_windowListActions << separator;
    const QIcon check(m_state.programFile(QStringLiteral("BMPS/Check.BMP")));
    QMdiSubWindow *active = m_area->activeSubWindow();
    for (QMdiSubWindow *w : windows) {
        auto *a = m_windowMenu->addAction(w->windowTitle());
        a->setObjectName(commands::keys::WindowList);
        if (w == active) {
            a->setIcon(check);
            a->setCheckable(true);
            a->setChecked(true);
        }
        const QString caption = w->windowTitle();
        connect(a, &QAction::triggered, this, [this, caption] {
            toolClick(commands::keys::WindowList, caption);
        });
        m_windowListActions << a;
    }
}

int MDIForm1::documentCount() const
{
    int n = 0;
    for (QMdiSubWindow *w : m_area->subWindowList()) {
        if (dynamic_cast<DocumentWindow *>(w->widget()))
            ++n;
    }
    return n;
}

QWidget *MDIForm1::activeDocumentWidget() const
{
    QMdiSubWindow *sub = m_area->activeSubWindow();
    if (!sub) {
        // Offscreen and hidden frames have no active window; the last one added
        // is the one the user works with.
        const QList<QMdiSubWindow *> list = m_area->subWindowList(QMdiArea::StackingOrder);
        sub = list.isEmpty() ? nullptr : list.constLast();
    }
    return sub ? sub->widget() : nullptr;
}

DocumentWindow *MDIForm1::activeDocument() const
{
    return dynamic_cast<DocumentWindow *>(activeDocumentWidget());
}

QList<QWidget *> MDIForm1::documentWidgets() const
{
    QList<QWidget *> list;
    for (QMdiSubWindow *w : m_area->subWindowList())
        list << w->widget();
    return list;
}

namespace {

bool samePath(const QString &a, const QString &b)
{
    return QDir::cleanPath(QFileInfo(a).absoluteFilePath()) == QDir::cleanPath(QFileInfo(b).absoluteFilePath());
}

} // namespace

void MDIForm1::followMovedFile(const QString &from, const QString &to)
{
    bool any = false;
    for (QMdiSubWindow *sub : m_area->subWindowList()) {
        auto *doc = dynamic_cast<DocumentWindow *>(sub->widget());
        if (!doc || !samePath(doc->filePath(), from))
            continue;
        doc->fileMovedTo(to);
        sub->setWindowTitle(sub->widget()->windowTitle());
        any = true;
    }
    if (!any)
        return;
    refreshCommandState();
    AddToWindowList();
}

void MDIForm1::noteRemovedFile(const QString &path)
{
    bool any = false;
    for (QMdiSubWindow *sub : m_area->subWindowList()) {
        auto *doc = dynamic_cast<DocumentWindow *>(sub->widget());
        if (!doc || !samePath(doc->filePath(), path))
            continue;
        doc->fileRemoved();
        sub->setWindowTitle(sub->widget()->windowTitle());
        any = true;
    }
    if (any)
        AddToWindowList();
}

void MDIForm1::followFileCommands(FileCommands *commands)
{
    connect(commands, &FileCommands::fileMoved, this, &MDIForm1::followMovedFile);
    connect(commands, &FileCommands::fileRemoved, this, &MDIForm1::noteRemovedFile);
}

void MDIForm1::setStatusPanels(const QString &first, const QString &second, const QString &third)
{
    m_panels[0]->setText(first);
    m_panels[1]->setText(second);
    m_panels[2]->setText(third);
}

QString MDIForm1::statusPanel(int index) const
{
    return index >= 0 && index < 3 ? m_panels[index]->text() : QString();
}

} // namespace tarnby::ui
