#pragma once

#include "core/platform/mail/MailTransport.h"
#include "core/settings/ProgramOptions.h"

#include <QDateTime>
#include <QString>
#include <QStringList>

#include <functional>

// The send and receive work of the e-mail windows and of tarnby-cli, without
// any window: sending files to several addresses, and saving and unpacking
// what a message brought. Synchronous; the windows run them on a worker
// thread and cancel through the settings' cancel flag.
namespace tarnby::mail {

inline constexpr int MaxSendFiles = 150;
inline constexpr int MaxRecipients = 150;

struct SendRequest {
    QStringList files;      // in list order
    QStringList recipients; // one address each, in order
    QString subject;
    QString message;
    bool omitZip = false;   // attach the files themselves instead of the archive
    QString fromAddress;
    QString userName;       // for the subject of a send without one
    mailnet::ServerSettings server;
    // The clock of the history lines; tests fix it.
    std::function<QDateTime()> now = [] { return QDateTime::currentDateTime(); };
};

struct SendResult {
    bool ok = false;         // every message was handed over
    QString archivePath;     // the archive made (it stays on disk)
    QStringList historyLines;
    int messagesSent = 0;
    QStringList errors;      // one whole sentence per failure
};

// Called with what is being done ("Making the archive", "Sending to ...")
// and the bytes of that step done and to do.
using SendProgress = std::function<void(const QString &step, qint64 done, qint64 total)>;

// The servers of the mail account in the options (passwords not included:
// they live in the keyring). "None" as the security of a server is the
// user's explicit choice of a plain connection, so it is allowed here.
mailnet::ServerSettings outgoingServer(const settings::ProgramOptions &options);
mailnet::ServerSettings incomingServer(const settings::ProgramOptions &options);

// The keyring entry of a server's password: the one entry that the options
// window writes for the account ("smtp:", "imap:" or "pop3:" user@host).
QString passwordKey(const mailnet::ServerSettings &server, bool outgoing);

// The file beside the options that remembers which messages of a POP3
// mailbox were read here already.
inline const QString Pop3SeenFileName = QStringLiteral("POP3Seen.TXT");
QString seenFilePath(const QString &programFolder);

// The subject of a send: the one given, or "Pictures sent from " and the
// user's name when it is empty after trimming blanks.
QString sendSubject(const QString &subject, const QString &userName);

// Makes the archive beside the first file (always, also when the files
// themselves are attached), then sends one message to each recipient alone
// with the archive or the files attached, and gives one history line per
// file for every message handed over. More than MaxSendFiles files or
// MaxRecipients recipients, or none, fail before anything is done. A refused
// recipient does not stop the others; a failed connection stops the send.
SendResult sendFiles(const SendRequest &request, const SendProgress &progress = {});

// The function that gives a received attachment its file in folder: the
// plain name of the attachment, numbered when taken.
mailnet::MailReader::CreateFile attachmentFileCreator(const QString &folder);

struct UnpackResult {
    bool ok = false;
    QString errorString;
    QStringList files; // the files placed in the folder, full paths
};

// Unpacks a received archive into folder (which may hold files already)
// through the safe extraction: an archive with any hostile entry is refused
// whole. The entries go to a new folder first and are moved in from there;
// a name already taken in folder gets a numbered name.
UnpackResult unpackReceivedArchive(const QString &zipPath, const QString &folder);

} // namespace tarnby::mail
