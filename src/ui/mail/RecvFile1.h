#pragma once

#include "core/platform/mail/MailTransport.h"

#include <QDialog>
#include <QFutureWatcher>

#include <atomic>
#include <memory>

class QLabel;
class QLineEdit;
class QListWidget;
class QPlainTextEdit;
class QPushButton;
class QRadioButton;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Receive E-Mail with File Attachments": reads the inbox one message at a
// time (RecvBtn the first, RecvNextBtn the next), shows sender, date, subject
// and text, saves the attachments into the folder of TxtZipTo (plain names,
// never over a file), offers to unpack a zip archive there and to open files
// of known types. The server work runs on a worker thread; the buttons wait
// for it.
class RecvFile1 : public QDialog
{
    Q_OBJECT
public:
    RecvFile1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~RecvFile1() override;

    int currentIndex() const { return m_index; }
    bool isBusy() const { return m_watcher.isRunning(); }

    void receiveFirst();   // RecvBtn
    void receiveNext();    // RecvNextBtn
    void unpack();         // OpenBtn
    void chooseZipTo();    // ZipToBtn
    void openPicture();    // PictBtn
    void reply();          // ReplyBtn
    void forward();        // ForwardBtn

    // The all-types pattern of File1, as the window sets it.
    static QString filePattern();
    // Whether the window is open (the receive window flag).
    static bool isOpen();

    // Shows a message as the fetch delivered it (public for the tests).
    struct Shown {
        bool end = false;              // past the last message
        mailnet::MessageSummary summary;
        QList<mailnet::SavedAttachment> saved;
        QString error;
    };
    void showFetched(const Shown &shown);

signals:
    void openFileRequested(const QString &path);
    void addressBookRequested();
    void helpRequested();
    // A message was shown (or the end reported).
    void messageShown();

private:
    void showMessage(int index);
    void startFetch(int index, const QString &password);
    void fetchDone();

    AppState &m_state;
    UiServices &m_services;
    QLineEdit *m_from = nullptr;
    QLabel *m_date = nullptr;
    QLineEdit *m_subject = nullptr;
    QPlainTextEdit *m_text = nullptr;
    QLabel *m_status = nullptr;
    QLineEdit *m_zipFile = nullptr;
    QLineEdit *m_zipTo = nullptr;
    QListWidget *m_list = nullptr;
    QRadioButton *m_unread = nullptr;
    QPushButton *m_openButton = nullptr;
    QPushButton *m_pictButton = nullptr;
    QList<QPushButton *> m_serverButtons;
    int m_index = 0;
    int m_count = 0;
    mailnet::MessageSummary m_current;
    QStringList m_savedFiles;
    // Declared before the reader so that it outlives it: the reader's
    // settings point at it.
    std::atomic_bool m_cancel{false};
    std::shared_ptr<mailnet::MailReader> m_reader;
    QFutureWatcher<Shown> m_watcher;
    int m_pendingIndex = 0;
};

} // namespace tarnby::ui
