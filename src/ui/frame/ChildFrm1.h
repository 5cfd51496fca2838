#pragma once

#include "core/viewer/DocumentRules.h"
#include "core/viewer/ViewModes.h"
#include "ui/frame/DocumentWindow.h"

#include <QPointer>
#include <QWidget>

class QFrame;
class QLabel;
class QListWidget;
class QNetworkAccessManager;
class QNetworkReply;
class QPushButton;
class QTemporaryDir;
class QTextEdit;
class QTimer;

namespace tarnby {
class AppState;
}

namespace tarnby::viewer {
class Document;
}

namespace tarnby::ui {

class FileCommands;
class MDIForm1;
class PanWindow;
class PictureView;
class WebView;
struct UiServices;

// The document window: one per opened file, hosted by the viewing frame. It
// takes its kind letter ("I", "T", "D") when it is created, loads its
// document in the background once the event loop runs, and offers every
// operation the frame calls by name. It reports into the frame (caption,
// status panels, checked view modes) whenever it becomes the active window.
class ChildFrm1 : public QWidget, public DocumentWindow
{
    Q_OBJECT
public:
    ChildFrm1(AppState &state, UiServices &services, const QString &path, const QString &kind,
              QWidget *parent = nullptr);
    ~ChildFrm1() override;

    QString FILE_TYPE() const override { return m_fileType; }
    qint16 NUMINDEXES() const override { return m_numIndexes; }
    bool SHUTOFFCLICK_FLG() const override { return m_shutOffClick; }
    QString filePath() const override { return m_path; }

#define TARNBY_OVERRIDE_OPERATION(op, name) void name() override;
    TARNBY_DOCUMENT_OPERATIONS(TARNBY_OVERRIDE_OPERATION)
#undef TARNBY_OVERRIDE_OPERATION

    viewer::Document *document() const { return m_document; }
    const viewer::ViewModes &viewModes() const { return m_modes; }
    PictureView *pictureView() const { return m_image; }
    PanWindow *panWindow() const { return m_pan; }
    bool isWebView() const { return m_webViewFlag; }

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
    void loadDocument();
    void onLoaded();
    void onLoadFailed(const QString &error);
    void showPicture();
    void showText();
    void showTextPage();
    void startInternetFetch();
    void onFetchFinished();
    void layoutControls();
    void sizeToPicture();
    void placeTextWindow();
    void applySteps(const viewer::ViewSteps &steps);
    void setFrameCheck(const QString &key, bool checked);
    void showPanWindow();
    void notYetAvailable(const QString &what);
    void connectToFrame();
    MDIForm1 *frame() const;
    QWidget *outerWindow() const;
    bool isPicture() const { return m_fileType == QLatin1String("I"); }
    FileCommands *fileCommands();

    AppState &m_state;
    UiServices &m_services;
    QString m_path;
    QString m_fileType;
    QString m_extension;
    qint16 m_numIndexes = 0;
    bool m_shutOffClick = false;
    bool m_webViewFlag = false;
    bool m_animationFlag = false;
    // Set while this window changes a checked state in the frame, whose
    // resulting click must not run the operation again.
    bool m_toolbarGuard = false;
    bool m_closing = false;
    QSize m_textBoxTwips;

    viewer::Document *m_document = nullptr;
    viewer::ViewModes m_modes;
    viewer::InternetFetchWatch m_fetchWatch;

    PictureView *m_image = nullptr;
    QTextEdit *m_text = nullptr;
    WebView *m_web = nullptr;
    QTimer *m_timer = nullptr;
    QFrame *m_frame3 = nullptr;
    QLabel *m_label1 = nullptr;
    QFrame *m_frame2 = nullptr;
    QTextEdit *m_text2 = nullptr;
    QFrame *m_frame1 = nullptr;
    QPushButton *m_exitDBaseBtn = nullptr;
    QListWidget *m_list1 = nullptr;
    QListWidget *m_list2 = nullptr;
    QLabel *m_tableNotice = nullptr;
    QWidget *m_pageBar = nullptr;
    QLabel *m_pageLabel = nullptr;
    QPushButton *m_prevPage = nullptr;
    QPushButton *m_nextPage = nullptr;
    PanWindow *m_pan = nullptr;

    QNetworkAccessManager *m_network = nullptr;
    QPointer<QNetworkReply> m_reply;
    QTemporaryDir *m_download = nullptr;
    FileCommands *m_fileCommands = nullptr;
    QPointer<MDIForm1> m_connectedFrame;
};

} // namespace tarnby::ui
