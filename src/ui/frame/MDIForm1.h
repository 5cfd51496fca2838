#pragma once

#include "core/catalogue/CommandTables.h"
#include "core/viewer/DocumentRules.h"

#include <QMainWindow>

#include <functional>

class QLabel;
class QMdiArea;
class QMdiSubWindow;
class QMenu;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

class CommandBar;
class DocumentWindow;
class FileCommands;
class PrntFrm1;
struct UiServices;

// The viewing frame: hosts one document window per opened file, keeps the
// Window menu, and turns every toolbar or menu click into a call on the active
// document window, on itself, or (through browserCommand) on the browser.
class MDIForm1 : public QMainWindow
{
    Q_OBJECT
public:
    // Creates the document window of a kind for a path. The default makes a
    // ChildFrm1; tests install a double.
    using DocumentFactory = std::function<QWidget *(const QString &path, viewer::DocumentKind kind)>;

    MDIForm1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~MDIForm1() override;

    // The click handler of the command bar: dispatches key exactly. caption
    // names the document window of a "WindowList" entry.
    void toolClick(const QString &key, const QString &caption = {});

    // Opens path in a new document window of the given kind, captioned with
    // the file name. Returns the window, or null when path is empty or the
    // factory made none.
    QWidget *NewWindowFile(const QString &path, viewer::DocumentKind kind);
    // Adds a ready-made document window (a widget implementing DocumentWindow).
    QWidget *addDocumentWindow(QWidget *window, const QString &caption);
    void setDocumentFactory(DocumentFactory factory) { m_factory = std::move(factory); }
    // Gives a document window's print window what the browser gives its own
    // (the help topic, the search walk of the report).
    using PrintWindowSetup = std::function<void(PrntFrm1 &window)>;
    void setPrintWindowSetup(PrintWindowSetup setup) { m_printSetup = std::move(setup); }
    void preparePrintWindow(PrntFrm1 &window) const
    {
        if (m_printSetup)
            m_printSetup(window);
    }
    // Moves (and if need be shrinks) the subwindow of a document window so
    // that it lies wholly inside the frame's client area; a maximised one is
    // left alone. Document windows call it after sizing themselves.
    void keepInsideArea(QWidget *window);
    // Window > Cascade: every window steps down and right by a title bar from
    // the top left corner, keeping its size as far as the area allows; the
    // active window ends in front.
    void cascadeWindows();

    // Places the frame where options lines 5 to 8 left it (twips), kept on
    // the screen; unreadable lines leave the default size.
    void SetMDIWinSize();
    // Copies the frame's normal place and size into options lines 5 to 8.
    // Runs when the frame closes.
    void storeWindowValues();
    void DisableButtons();
    void EnableButtons();
    void EnableMDIButtons();
    void EnableTextButtons();
    void EnableDataButtons(qint16 indexCount);
    void AddToWindowList();
    // The command-state refresh: runs whenever a document window opens,
    // closes or becomes active.
    void refreshCommandState();

    int documentCount() const;
    DocumentWindow *activeDocument() const;
    QWidget *activeDocumentWidget() const;
    QList<QWidget *> documentWidgets() const;
    CommandBar *commandBar() const { return m_bar; }
    QMenu *windowMenu() const { return m_windowMenu; }
    QMdiArea *mdiArea() const { return m_area; }

    // The windows that show a file follow what happens to it on disk: a
    // window whose file was renamed or moved takes the new path and caption,
    // a window whose file was deleted says so. Paths are compared absolute.
    void followMovedFile(const QString &from, const QString &to);
    void noteRemovedFile(const QString &path);
    // Lets the windows follow the moves and deletes of commands (the
    // browser's; each document window connects its own).
    void followFileCommands(FileCommands *commands);

    // The three panels of the status bar.
    void setStatusPanels(const QString &first, const QString &second, const QString &third);
    QString statusPanel(int index) const;

signals:
    // A command that the browser carries out (find, receive, settings
    // windows, help...), forwarded from the frame's own menus.
    void browserCommand(tarnby::commands::BrowserAction action);
    // The frame's open dialog chose a file; the browser looks it up and opens
    // it (through NewWindowFile when it is a document).
    void openFileRequested(const QString &path);
    void returnToBrowserRequested();
    // A command of a document window changed files on disk (renamed, moved,
    // deleted, saved or copied one); the browser refreshes its lists.
    void filesChanged();
    // The frame closed (its close button, Close in its menu); its place and
    // size are in the options by then.
    void frameClosed();

protected:
    void closeEvent(QCloseEvent *event) override;

private:
    void runFrameAction(commands::FrameAction action, const QString &caption);
    void openWithOwnDialog();
    void onSubWindowClosed();
    QMdiSubWindow *currentSubWindow() const;

    AppState &m_state;
    UiServices &m_services;
    CommandBar *m_bar = nullptr;
    QMdiArea *m_area = nullptr;
    QMenu *m_windowMenu = nullptr;
    QList<QAction *> m_windowListActions;
    QLabel *m_panels[3] = {};
    DocumentFactory m_factory;
    PrintWindowSetup m_printSetup;
    int m_openFilterIndex = 0;
};

} // namespace tarnby::ui
