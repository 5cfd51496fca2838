#pragma once

#include "core/viewer/DocumentRules.h"
#include "ui/frame/DocumentWindow.h"
#include "ui/viewer/DocumentView.h"

#include <QPointer>
#include <QWidget>

namespace tarnby {
class AppState;
}

namespace tarnby::viewer {
class Document;
}

namespace tarnby::ui {

class FileCommands;
class MDIForm1;
struct UiServices;

// The document window: one per opened file, hosted by the viewing frame. It
// takes its kind when it is created, chooses the view for that kind once
// (picture, text box, web view or table), loads its document in the
// background once the event loop runs, and offers every operation the frame
// calls by name, forwarding what depends on the kind to the view. It reports
// into the frame (caption, status panels, checked view modes) whenever it
// becomes the active window.
class ChildFrm1 : public QWidget, public DocumentWindow, private DocumentViewHost
{
    Q_OBJECT
public:
    ChildFrm1(AppState &state, UiServices &services, const QString &path, viewer::DocumentKind kind,
              QWidget *parent = nullptr);
    ~ChildFrm1() override;

    QString FILE_TYPE() const override { return viewer::kindLetter(m_kind); }
    qint16 NUMINDEXES() const override { return m_view ? m_view->indexCount() : 0; }
    bool SHUTOFFCLICK_FLG() const override { return m_shutOffClick; }
    QString filePath() const override { return m_path; }
    void fileMovedTo(const QString &path) override;
    void fileRemoved() override;
    // True once the shown file is known to be gone from disk.
    bool isFileRemoved() const { return m_fileRemoved; }
    bool showsNothing() const override;

#define TARNBY_OVERRIDE_OPERATION(op, name) void name() override;
    TARNBY_DOCUMENT_OPERATIONS(TARNBY_OVERRIDE_OPERATION)
#undef TARNBY_OVERRIDE_OPERATION

    viewer::Document *document() const { return m_document; }
    // The view of this window's kind, made with the window.
    DocumentView *documentView() const { return m_view; }
    bool isWebView() const;

    // Before the shown file is handed to another window of the program: asks
    // whether to save a changed picture and saves it on Yes. Returns false
    // only when the save was wanted and failed.
    bool offerSaveBeforeHandOver();
    // Caption, status panels and checked view modes in the frame; runs when
    // this window becomes the frame's active one.
    void applyActivation();

    // The clock of the Internet picture wait, in whole seconds (tests inject
    // one). Set it before the event loop starts the load.
    void setInternetClock(viewer::InternetFetchWatch::Clock clock);
    bool isFetchingFromInternet() const;
    // Timer1's tick: the 51-second rule of an Internet picture.
    void Timer1_Timer();

signals:
    // The user chose a file in this window's open dialog; the browser opens it.
    void openFileRequested(const QString &path);
    // The document finished loading, or failed; the window shows the result.
    void documentShown();

protected:
    void closeEvent(QCloseEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;
    bool event(QEvent *event) override;

private:
    // DocumentViewHost
    QWidget *outerWindow() const override;
    void setFrameCheck(const QString &key, bool checked) override;
    void setFrameEnabled(const QString &key, bool enabled) override;
    void copyFileAs() override;
    void fileWritten(const QString &path) override;
    QString helpFolder() const override;

    void loadDocument();
    void onLoaded();
    void onLoadFailed(const QString &error);
    void notYetAvailable(const QString &what);
    // Before a command acts on the shown file: true when it is there; else
    // the window takes note that it is gone and says so.
    bool fileStillThere();
    void connectToFrame();
    MDIForm1 *frame() const;
    FileCommands *fileCommands();

    AppState &m_state;
    UiServices &m_services;
    QString m_path;
    viewer::DocumentKind m_kind;
    QString m_extension;
    bool m_shutOffClick = false;
    // Set while this window changes a checked state in the frame, whose
    // resulting click must not run the operation again.
    bool m_toolbarGuard = false;
    bool m_closing = false;
    bool m_fileRemoved = false;

    viewer::Document *m_document = nullptr;
    DocumentView *m_view = nullptr;
    FileCommands *m_fileCommands = nullptr;
    QPointer<MDIForm1> m_connectedFrame;
};

} // namespace tarnby::ui
