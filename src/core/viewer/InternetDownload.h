#pragma once

#include <QObject>
#include <QPointer>
#include <QString>

#include <memory>

class QNetworkAccessManager;
class QNetworkReply;
class QSaveFile;
class QTemporaryDir;

namespace tarnby::viewer {

// What a finished download produced: the local copy of the file, or why
// there is none.
struct DownloadResult {
    QString address;      // the Internet address that was asked for
    QString localPath;    // the local copy; empty when the download failed
    QString errorString;  // empty when the download succeeded
    qint64 bytes = 0;     // the length of the local copy

    bool ok() const { return errorString.isEmpty(); }
};

// Fetches one file named by an Internet address into a temporary folder of its
// own, for a document window that shows a picture from the Internet. The job
// lives on the thread that made it; the transfer runs on that thread's event
// loop and never blocks it.
//
// Every start() ends in exactly one finished(), unless the job is destroyed
// first: destroying it aborts a running transfer without a signal. The local
// copy and its folder belong to the job and are removed with it, or when the
// next start() begins.
class InternetDownload : public QObject
{
    Q_OBJECT
public:
    // A file is refused beyond this length.
    static constexpr qint64 DefaultMaxBytes = 512LL * 1024 * 1024;

    explicit InternetDownload(QObject *parent = nullptr);
    ~InternetDownload() override;

    // Starts fetching address (an http:// or https:// address). A transfer
    // still running is cancelled first, with its finished(). Redirects are
    // followed unless they lead from https to http.
    void start(const QString &address);
    // Ends a running transfer; finished() follows at once with an error.
    // Does nothing when no transfer runs.
    void cancel();

    bool isRunning() const;
    // The last finished transfer's result (empty before the first).
    const DownloadResult &result() const { return m_result; }

    void setMaxBytes(qint64 bytes) { m_maxBytes = bytes; }
    qint64 maxBytes() const { return m_maxBytes; }

    // The name the local copy gets for address: the address's last part
    // without its query, or "picture" when that is empty.
    static QString localFileName(const QString &address);

signals:
    void finished(const tarnby::viewer::DownloadResult &result);

private:
    void onReadyRead();
    void onFinished();
    void finish(const QString &errorString);
    void dropReply();

    QNetworkAccessManager *m_network = nullptr;
    QPointer<QNetworkReply> m_reply;
    std::unique_ptr<QTemporaryDir> m_folder;
    std::unique_ptr<QSaveFile> m_file;
    QString m_address;
    QString m_failure;
    qint64 m_received = 0;
    qint64 m_maxBytes = DefaultMaxBytes;
    DownloadResult m_result;
};

} // namespace tarnby::viewer
