#pragma once

#include "core/mail/MailJobs.h"
#include "core/mail/SendHistory.h"

#include <QDialog>
#include <QFutureWatcher>

#include <atomic>
#include <functional>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QProgressBar;
class QPushButton;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Send Files with E-Mail": the files to send (List1_0), the history of sent
// files (List1_1, kept in "FileSend.LOG"), the recipients one a line
// (CMBSENDTO), subject and message (Text1_0, Text1_1). Send makes the zip
// archive beside the first file and sends one message to each recipient on a
// worker thread; the window stays usable, shows the progress, and Cancel
// stops a running send. The log is written when the window closes.
class SendFile1 : public QDialog
{
    Q_OBJECT
public:
    SendFile1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~SendFile1() override;

    // Finds the document window that shows a file (by its caption, the
    // file's name), for the database check. Set by whoever opens the window.
    using WindowFinder = std::function<QWidget *(const QString &path)>;
    void setWindowFinder(WindowFinder finder) { m_findWindow = std::move(finder); }

    // Opening work that needs the finder: lists the file the window was
    // opened with (the browser's current file, or the frame's document; with
    // the database check), reads the log, fills the default recipient.
    void start(const QString &firstFile);

    QStringList files() const;
    QStringList historyLines() const;
    bool isSending() const { return m_watcher.isRunning(); }
    bool lastSendSucceeded() const { return m_sendState; }
    QString zipArchiveName() const { return m_zipArchive; }

    void addFile(const QString &path);     // after OpenBtn's dialog
    void chooseFile();                     // OpenBtn
    void deleteFile();                     // DeleteBtn
    void clearFiles();                     // ClearPictBtn
    void clearLog();                       // ClearBtn
    void send();                           // OKBtn
    // MailAddr1's Select: the address and name followed by CR LF.
    void addRecipient(const QString &address, const QString &name);

signals:
    void addressBookRequested(const QString &mode);
    void helpRequested();
    void quickTipsRequested();
    void aboutRequested();
    // A send ended (successfully or not) and its message was shown.
    void sendFinished(bool ok);

protected:
    void closeEvent(QCloseEvent *event) override;
    void reject() override;

private:
    void databaseCheck(const QString &path);
    void startSend(const QString &password);
    void sendDone();
    void setBusy(bool busy);

    AppState &m_state;
    UiServices &m_services;
    WindowFinder m_findWindow;
    QListWidget *m_files = nullptr;
    QListWidget *m_history = nullptr;
    QPlainTextEdit *m_recipients = nullptr;
    QLineEdit *m_subject = nullptr;
    QPlainTextEdit *m_message = nullptr;
    QCheckBox *m_omitZip = nullptr;
    QCheckBox *m_composer = nullptr;
    QPushButton *m_sendButton = nullptr;
    QPushButton *m_cancelButton = nullptr;
    QProgressBar *m_progress = nullptr;
    QLabel *m_status = nullptr;
    QString m_recipientNames;
    mail::SendHistory m_log;
    QString m_zipArchive;
    bool m_sendState = false;
    std::atomic_bool m_cancel{false};
    QFutureWatcher<mail::SendResult> m_watcher;
};

} // namespace tarnby::ui
