#pragma once

#include <QDateTime>
#include <QFile>
#include <QList>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>
#include <memory>

// The mail transport: SMTP submission to send, IMAP or POP3 to receive, over
// vmime.
//
// Connections are encrypted (STARTTLS or TLS from the first byte) and the
// server's certificate is verified against the system's certificate store
// plus, where given, one more certificate authority from a file. A plain
// connection is refused unless the settings allow it explicitly. Every
// operation returns a MailError value: nothing throws and nothing shows a
// window. The server's own words are kept in the error's text.
//
// A sender or reader belongs to the thread that uses it; it may be moved
// between threads while idle. Cancel from any thread through the cancel flag
// given to the settings: the running operation ends at its next network wait
// with MailErrorKind::Cancelled.
//
// Memory: an outgoing message is generated into a temporary file and streamed
// from there; an attachment is streamed from the server into its file. No
// more than one read buffer of either is held, whatever their size.
namespace tarnby::mailnet {

enum class Security { StartTls, Tls, None };
enum class Protocol { Imap, Pop3 }; // of the server that mail is received from

struct ServerSettings {
    QString host;
    int port = 0;
    Security security = Security::StartTls;
    QString user;
    QString password;
    bool allowPlain = false; // Security::None is refused unless this is set
    QString caFile;          // a certificate authority to trust besides the system's
    int connectTimeoutMs = 30000;
    int readTimeoutMs = 60000;
    const std::atomic_bool *cancel = nullptr;
    // Receiving only.
    Protocol protocol = Protocol::Imap;
    // POP3: the file that remembers which messages were read here already
    // (SeenMessages.h); without one, every message counts as unread.
    QString seenFile;
};

// "smtp://host:port", "smtps://host", "imap://...", "imaps://...",
// "pop3://...", "pop3s://..." into host, port, security (smtp, imap and pop3:
// STARTTLS; smtps, imaps and pop3s: TLS) and, for receiving, the protocol.
// Without a port: 587, 465, 143, 993, 110 or 995. Returns false with *error
// set.
bool parseServerUrl(const QString &url, bool outgoing, ServerSettings *settings, QString *error);

enum class MailErrorKind {
    None,
    PlainRefused,   // the settings ask for no encryption and do not allow it
    Connection,     // no connection (refused, no route, name unknown)
    Timeout,
    Certificate,    // the server's certificate is not trusted
    Authentication, // user name or password refused
    Rejected,       // the server refused a command (a recipient, the message)
    Protocol,       // anything else the server or the connection did
    File,           // a local file could not be read or written
    Cancelled,
    Unsupported,
};

struct MailError {
    MailErrorKind kind = MailErrorKind::None;
    QString text; // a whole sentence, with the server's words where it gave any
    bool ok() const { return kind == MailErrorKind::None; }
};

struct OutgoingAttachment {
    QString path; // the file on disk
    QString name; // the name the receiver sees
};

struct OutgoingMessage {
    QString from;     // the sender's address
    QString fromName; // may be empty
    QString to;       // one recipient
    QString subject;
    QString text;
    QList<OutgoingAttachment> attachments;
};

// Called with the bytes handed over so far and the total; false cancels.
using TransferProgress = std::function<bool(qint64 done, qint64 total)>;

class SmtpSender
{
public:
    SmtpSender();
    ~SmtpSender();
    SmtpSender(const SmtpSender &) = delete;
    SmtpSender &operator=(const SmtpSender &) = delete;

    // Connects and signs on.
    MailError connect(const ServerSettings &settings);
    bool isConnected() const;
    // Sends one message to its one recipient.
    MailError send(const OutgoingMessage &message, const TransferProgress &progress = {});
    void disconnect();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

struct MessageSummary {
    QString senderName;
    QString senderAddress;
    QDateTime date;
    QString subject;
    QString text;            // the first plain-text part, at most 1 MB of it
    QStringList attachments; // the names as sent (not yet reduced)
};

struct SavedAttachment {
    QString name; // as sent
    QString path; // where it was saved
};

// Receives over IMAP or POP3, as the settings' protocol says.
class MailReader
{
public:
    MailReader();
    ~MailReader();
    MailReader(const MailReader &) = delete;
    MailReader &operator=(const MailReader &) = delete;

    MailError connect(const ServerSettings &settings);
    bool isConnected() const;
    // Opens the inbox and lists its messages, all or only the unread ones,
    // oldest first. Over POP3, unread means not yet read by this program
    // (the settings' seen file).
    MailError fetch(bool unreadOnly);
    int count() const;
    // Reads message index (0 for the first of the last fetch) and marks it
    // read (over POP3: in the seen file). Over POP3 the server is never told
    // to delete anything.
    MailError read(int index, MessageSummary *summary);
    // Saves every attachment of message index, one at a time, each into the
    // file that create opens for its name as sent (create returns the path,
    // or an empty string with *error set). The caller decides the folder and
    // the name; nothing of the attachment is run or opened here.
    using CreateFile = std::function<QString(const QString &nameAsSent, QFile &file, QString *error)>;
    MailError saveAttachments(int index, const CreateFile &create, QList<SavedAttachment> *saved,
                              const TransferProgress &progress = {});
    void disconnect();

private:
    struct Private;
    std::unique_ptr<Private> d;
};

// The desktop's mail composer (xdg-email): the arguments that open it on a
// new message, and starting it. Returns false when it could not be started.
struct ComposeRequest {
    QString to;
    QString subject;
    QString body;
    QStringList attachments; // paths
};
QStringList composerArguments(const ComposeRequest &request);
bool openComposer(const ComposeRequest &request, QString *error);

} // namespace tarnby::mailnet
