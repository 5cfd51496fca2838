#include "core/platform/mail/MailTransport.h"

#include "core/platform/mail/MessageFile.h"
#include "core/platform/mail/SeenMessages.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QTemporaryFile>
#include <QUrl>

#include <vmime/vmime.hpp>
#include <vmime/contentDispositionField.hpp>
#include <vmime/contentTypeField.hpp>
#include <vmime/net/smtp/SMTPConnection.hpp>
#include <vmime/net/smtp/SMTPTransport.hpp>
#include <vmime/platforms/posix/posixHandler.hpp>

#include <cstring>
#include <mutex>

namespace tarnby::mailnet {

namespace {

constexpr qint64 MaxTextBytes = 1 << 20;
constexpr size_t FetchPiece = 4 * 1024 * 1024;

void initialiseVmime()
{
    static std::once_flag once;
    std::call_once(once, [] { vmime::platform::setHandler<vmime::platforms::posix::posixHandler>(); });
}

QString fromVmime(const std::string &s)
{
    return QString::fromUtf8(s.data(), qsizetype(s.size()));
}

std::string toVmime(const QString &s)
{
    return s.toStdString();
}

// ---- streams over QFile ----

// A message generated into a file, handed to the SMTP transport.
class FileInputStream : public vmime::utility::seekableInputStream
{
public:
    FileInputStream(QFile &file, std::function<bool()> stop) : m_file(file), m_stop(std::move(stop)) {}
    bool eof() const override { return m_file.atEnd(); }
    void reset() override { m_file.seek(0); }
    size_t read(vmime::byte_t *const data, const size_t count) override
    {
        // Cancelling in the middle of a transfer: the SMTP transport gives up
        // when its input fails.
        if (m_stop && m_stop())
            throw vmime::exceptions::operation_cancelled();
        const qint64 n = m_file.read(reinterpret_cast<char *>(data), qint64(count));
        if (n < 0)
            throw vmime::exception("cannot read " + toVmime(m_file.fileName()));
        return size_t(n);
    }
    size_t skip(const size_t count) override
    {
        const qint64 step = std::min<qint64>(qint64(count), m_file.size() - m_file.pos());
        m_file.seek(m_file.pos() + step);
        return size_t(step);
    }
    size_t getPosition() const override { return size_t(m_file.pos()); }
    void seek(const size_t pos) override { m_file.seek(qint64(pos)); }

private:
    QFile &m_file;
    std::function<bool()> m_stop;
};

// A file read as base64 in lines of 76 characters ended by CR LF, encoded as
// it is read. vmime's own encoder does the same a byte at a time; encoding
// whole blocks here makes preparing a message of large pictures several
// times faster. The content handler is told that the data is encoded
// already, so vmime copies it as it is.
class Base64FileStream : public vmime::utility::inputStream
{
public:
    static constexpr qint64 LineBytes = 57; // 76 characters of base64

    Base64FileStream(QFile &file, std::function<bool()> stop) : m_file(file), m_stop(std::move(stop)) {}

    static qint64 encodedLength(qint64 size)
    {
        const qint64 fullLines = size / LineBytes;
        const qint64 rest = size % LineBytes;
        return fullLines * 78 + (rest ? ((rest + 2) / 3) * 4 + 2 : 0);
    }

    bool eof() const override { return m_pos >= m_buffer.size() && m_file.atEnd(); }
    void reset() override
    {
        m_file.seek(0);
        m_buffer.clear();
        m_pos = 0;
    }
    size_t read(vmime::byte_t *const data, const size_t count) override
    {
        if (m_pos >= m_buffer.size() && !refill())
            return 0;
        const size_t n = std::min(count, size_t(m_buffer.size() - m_pos));
        std::memcpy(data, m_buffer.constData() + m_pos, n);
        m_pos += qsizetype(n);
        return n;
    }
    size_t skip(const size_t count) override
    {
        size_t skipped = 0;
        vmime::byte_t scratch[4096];
        while (skipped < count) {
            const size_t n = read(scratch, std::min(sizeof scratch, count - skipped));
            if (n == 0)
                break;
            skipped += n;
        }
        return skipped;
    }

private:
    bool refill()
    {
        if (m_stop && m_stop())
            throw vmime::exceptions::operation_cancelled();
        const QByteArray raw = m_file.read(LineBytes * 16384);
        if (raw.isEmpty())
            return false;
        m_buffer.clear();
        m_buffer.reserve(encodedLength(raw.size()));
        for (qsizetype at = 0; at < raw.size(); at += LineBytes) {
            m_buffer += QByteArray::fromRawData(raw.constData() + at, std::min<qsizetype>(LineBytes, raw.size() - at))
                            .toBase64();
            m_buffer += "\r\n";
        }
        m_pos = 0;
        return true;
    }

    QFile &m_file;
    std::function<bool()> m_stop;
    QByteArray m_buffer;
    qsizetype m_pos = 0;
};

class FileOutputStream : public vmime::utility::outputStream
{
public:
    explicit FileOutputStream(QIODevice &file) : m_file(file) {}
    void flush() override {}
    bool failed() const { return m_failed; }

protected:
    void writeImpl(const vmime::byte_t *const data, const size_t count) override
    {
        if (m_file.write(reinterpret_cast<const char *>(data), qint64(count)) != qint64(count))
            m_failed = true;
    }

private:
    QIODevice &m_file;
    bool m_failed = false;
};

// An output stream that keeps at most limit bytes in memory.
class BoundedStringStream : public vmime::utility::outputStream
{
public:
    explicit BoundedStringStream(qint64 limit) : m_limit(limit) {}
    void flush() override {}
    const std::string &data() const { return m_data; }

protected:
    void writeImpl(const vmime::byte_t *const data, const size_t count) override
    {
        const size_t room = size_t(std::max<qint64>(0, m_limit - qint64(m_data.size())));
        m_data.append(reinterpret_cast<const char *>(data), std::min(room, count));
    }

private:
    qint64 m_limit;
    std::string m_data;
};

// ---- time-outs and cancelling ----

class Timeouts : public vmime::net::timeoutHandler
{
public:
    Timeouts(int limitMs, const std::atomic_bool *cancel) : m_limitMs(limitMs), m_cancel(cancel) { m_timer.start(); }
    bool isTimeOut() override { return cancelled() || m_timer.elapsed() > m_limitMs; }
    void resetTimeOut() override { m_timer.restart(); }
    bool handleTimeOut() override { return false; } // give up
    bool cancelled() const { return m_cancel && m_cancel->load(); }

private:
    QElapsedTimer m_timer;
    int m_limitMs;
    const std::atomic_bool *m_cancel;
};

class TimeoutsFactory : public vmime::net::timeoutHandlerFactory
{
public:
    TimeoutsFactory(int limitMs, const std::atomic_bool *cancel) : m_limitMs(limitMs), m_cancel(cancel) {}
    std::shared_ptr<vmime::net::timeoutHandler> create() override
    {
        return std::make_shared<Timeouts>(m_limitMs, m_cancel);
    }

private:
    int m_limitMs;
    const std::atomic_bool *m_cancel;
};

// ---- certificates ----

// The PEM certificates of a file (a bundle holds many).
bool addCertificates(const QString &path, std::vector<std::shared_ptr<vmime::security::cert::X509Certificate>> *out)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || file.size() > 16 * 1024 * 1024)
        return false;
    const QByteArray data = file.readAll();
    static const QByteArray begin("-----BEGIN CERTIFICATE-----");
    static const QByteArray end("-----END CERTIFICATE-----");
    bool any = false;
    qsizetype at = 0;
    while ((at = data.indexOf(begin, at)) >= 0) {
        const qsizetype stop = data.indexOf(end, at);
        if (stop < 0)
            break;
        const QByteArray pem = data.mid(at, stop + end.size() - at);
        try {
            if (auto cert = vmime::security::cert::X509Certificate::import(
                    reinterpret_cast<const vmime::byte_t *>(pem.constData()), size_t(pem.size()))) {
                out->push_back(cert);
                any = true;
            }
        } catch (const vmime::exception &) {
            // One unreadable certificate in the system bundle does not stop the others.
        }
        at = stop + end.size();
    }
    return any;
}

QString systemCertificateBundle()
{
    for (const char *path : {"/etc/ssl/certs/ca-certificates.crt", "/etc/pki/tls/certs/ca-bundle.crt"}) {
        if (QFile::exists(QString::fromLatin1(path)))
            return QString::fromLatin1(path);
    }
    return QString();
}

std::shared_ptr<vmime::security::cert::defaultCertificateVerifier> makeVerifier(const QString &caFile, QString *error)
{
    static std::vector<std::shared_ptr<vmime::security::cert::X509Certificate>> systemCertificates;
    static std::once_flag once;
    std::call_once(once, [] { addCertificates(systemCertificateBundle(), &systemCertificates); });
    auto roots = systemCertificates;
    if (!caFile.isEmpty() && !addCertificates(caFile, &roots)) {
        *error = QStringLiteral("The certificate authority file %1 holds no certificate that could be read.").arg(caFile);
        return nullptr;
    }
    auto verifier = std::make_shared<vmime::security::cert::defaultCertificateVerifier>();
    verifier->setX509RootCAs(roots);
    return verifier;
}

// ---- errors ----

QString exceptionText(const vmime::exception &e)
{
    QString text = QString::fromLocal8Bit(e.what());
    if (auto *command = dynamic_cast<const vmime::exceptions::command_error *>(&e)) {
        const QString response = fromVmime(command->response()).trimmed();
        if (!response.isEmpty())
            text = response;
    }
    if (const vmime::exception *inner = e.other()) {
        const QString more = exceptionText(*inner);
        if (!more.isEmpty() && !text.contains(more))
            text += QStringLiteral(": ") + more;
    }
    return text;
}

template<typename T> bool chainHas(const vmime::exception &e)
{
    for (const vmime::exception *p = &e; p; p = p->other()) {
        if (dynamic_cast<const T *>(p))
            return true;
    }
    return false;
}

MailError errorFrom(const vmime::exception &e, const QString &server, const std::atomic_bool *cancel)
{
    if (cancel && cancel->load())
        return {MailErrorKind::Cancelled, QStringLiteral("Cancelled.")};
    const QString words = exceptionText(e);
    if (chainHas<vmime::security::cert::certificateException>(e))
        return {MailErrorKind::Certificate,
                QStringLiteral("The certificate of %1 is not trusted: %2").arg(server, words)};
    if (chainHas<vmime::exceptions::authentication_error>(e))
        return {MailErrorKind::Authentication,
                QStringLiteral("%1 refused the user name or password: %2").arg(server, words)};
    if (chainHas<vmime::exceptions::operation_timed_out>(e))
        return {MailErrorKind::Timeout, QStringLiteral("%1 did not answer in time.").arg(server)};
    if (chainHas<vmime::exceptions::operation_cancelled>(e))
        return {MailErrorKind::Cancelled, QStringLiteral("Cancelled.")};
    if (chainHas<vmime::exceptions::command_error>(e))
        return {MailErrorKind::Rejected, QStringLiteral("%1 refused: %2").arg(server, words)};
    if (chainHas<vmime::exceptions::socket_exception>(e) || chainHas<vmime::exceptions::connection_error>(e)
        || chainHas<vmime::exceptions::connection_greeting_error>(e))
        return {MailErrorKind::Connection, QStringLiteral("No connection to %1: %2").arg(server, words)};
    return {MailErrorKind::Protocol, QStringLiteral("%1: %2").arg(server, words)};
}

MailError unexpected(const std::exception &e, const QString &server)
{
    return {MailErrorKind::Protocol, QStringLiteral("%1: %2").arg(server, QString::fromLocal8Bit(e.what()))};
}

QString serverName(const ServerSettings &s)
{
    return QStringLiteral("%1:%2").arg(s.host).arg(s.port);
}

// Applies the settings to a service: encryption, sign-on, certificates,
// time-outs. Returns an error when the settings cannot be used.
MailError prepareService(vmime::net::service &service, const ServerSettings &settings)
{
    if (settings.security == Security::None && !settings.allowPlain)
        return {MailErrorKind::PlainRefused,
                QStringLiteral("The connection to %1 would not be encrypted, and the settings do not allow that.")
                    .arg(serverName(settings))};
    QString error;
    auto verifier = makeVerifier(settings.caFile, &error);
    if (!verifier)
        return {MailErrorKind::Certificate, error};
    service.setCertificateVerifier(verifier);
    service.setTimeoutHandlerFactory(
        std::make_shared<TimeoutsFactory>(std::max(settings.connectTimeoutMs, settings.readTimeoutMs), settings.cancel));
    if (settings.security == Security::StartTls) {
        service.setProperty("connection.tls", true);
        service.setProperty("connection.tls.required", true);
    }
    service.setProperty("options.need-authentication", !settings.user.isEmpty());
    service.setProperty("auth.username", toVmime(settings.user));
    service.setProperty("auth.password", toVmime(settings.password));
    return {};
}

} // namespace

bool parseServerUrl(const QString &text, bool outgoing, ServerSettings *settings, QString *error)
{
    const QUrl url(text, QUrl::StrictMode);
    const QString scheme = url.scheme().toLower();
    struct Scheme {
        const char *name;
        bool outgoing;
        Security security;
        Protocol protocol;
        int port;
    };
    static constexpr Scheme schemes[] = {
        {"smtp", true, Security::StartTls, Protocol::Imap, 587},  {"smtps", true, Security::Tls, Protocol::Imap, 465},
        {"imap", false, Security::StartTls, Protocol::Imap, 143}, {"imaps", false, Security::Tls, Protocol::Imap, 993},
        {"pop3", false, Security::StartTls, Protocol::Pop3, 110}, {"pop3s", false, Security::Tls, Protocol::Pop3, 995},
    };
    const Scheme *found = nullptr;
    for (const Scheme &candidate : schemes) {
        if (candidate.outgoing == outgoing && scheme == QLatin1String(candidate.name))
            found = &candidate;
    }
    if (!url.isValid() || url.host().isEmpty() || !found) {
        *error = outgoing ? QStringLiteral("\"%1\" is not a server address of the form smtp://host:port or "
                                           "smtps://host:port.")
                                .arg(text)
                          : QStringLiteral("\"%1\" is not a server address of the form imap://host:port, "
                                           "imaps://host:port, pop3://host:port or pop3s://host:port.")
                                .arg(text);
        return false;
    }
    settings->host = url.host();
    settings->security = found->security;
    if (!outgoing)
        settings->protocol = found->protocol;
    settings->port = url.port(found->port);
    if (!url.userName().isEmpty())
        settings->user = url.userName();
    return true;
}

// ---------------------------------------------------------------- sending

struct SmtpSender::Private {
    std::shared_ptr<vmime::net::session> session;
    std::shared_ptr<vmime::net::transport> transport;
    ServerSettings settings;
};

SmtpSender::SmtpSender() : d(std::make_unique<Private>()) { initialiseVmime(); }
SmtpSender::~SmtpSender() { disconnect(); }

MailError SmtpSender::connect(const ServerSettings &settings)
{
    disconnect();
    d->settings = settings;
    const QString server = serverName(settings);
    try {
        d->session = vmime::net::session::create();
        const vmime::utility::url url(settings.security == Security::Tls ? "smtps" : "smtp", toVmime(settings.host),
                                      settings.port);
        d->transport = d->session->getTransport(url);
        if (MailError e = prepareService(*d->transport, settings); !e.ok()) {
            d->transport.reset();
            return e;
        }
        d->transport->connect();
        return {};
    } catch (const vmime::exception &e) {
        d->transport.reset();
        return errorFrom(e, server, settings.cancel);
    } catch (const std::exception &e) {
        d->transport.reset();
        return unexpected(e, server);
    }
}

bool SmtpSender::isConnected() const
{
    try {
        return d->transport && d->transport->isConnected();
    } catch (const std::exception &) {
        return false;
    }
}

MailError SmtpSender::send(const OutgoingMessage &message, const TransferProgress &progress)
{
    const QString server = serverName(d->settings);
    if (!d->transport)
        return {MailErrorKind::Connection, QStringLiteral("Not connected to %1.").arg(server)};

    class Listener : public vmime::utility::progressListener
    {
    public:
        explicit Listener(const TransferProgress &p) : m_progress(p) {}
        void start(const size_t) override {}
        void progress(const size_t current, const size_t total) override
        {
            if (m_progress && !m_progress(qint64(current), qint64(total)))
                m_cancelled = true;
        }
        void stop(const size_t) override {}
        bool m_cancelled = false;

    private:
        const TransferProgress &m_progress;
    } listener(progress);
    const std::atomic_bool *cancel = d->settings.cancel;
    const std::function<bool()> stop = [&listener, cancel] { return listener.m_cancelled || (cancel && cancel->load()); };

    // The attachments are read (and encoded) only while the message is
    // generated: one block of a file at a time.
    std::vector<std::unique_ptr<QFile>> files;
    std::shared_ptr<vmime::message> built;
    try {
        vmime::messageBuilder builder;
        builder.setExpeditor(vmime::mailbox(vmime::text(toVmime(message.fromName), vmime::charsets::UTF_8),
                                            toVmime(message.from)));
        builder.getRecipients().appendAddress(std::make_shared<vmime::mailbox>(toVmime(message.to)));
        builder.setSubject(vmime::text(toVmime(message.subject), vmime::charsets::UTF_8));
        builder.getTextPart()->setCharset(vmime::charsets::UTF_8);
        builder.getTextPart()->setText(std::make_shared<vmime::stringContentHandler>(toVmime(message.text)));
        for (const OutgoingAttachment &a : message.attachments) {
            auto file = std::make_unique<QFile>(a.path);
            if (!file->open(QIODevice::ReadOnly))
                return {MailErrorKind::File,
                        QStringLiteral("The file %1 could not be read: %2").arg(a.path, file->errorString())};
            const vmime::encoding base64(vmime::encodingTypes::BASE64);
            auto stream = std::make_shared<Base64FileStream>(*file, stop);
            auto content = std::make_shared<vmime::streamContentHandler>(
                stream, size_t(Base64FileStream::encodedLength(file->size())), base64);
            auto attachment = std::make_shared<vmime::fileAttachment>(
                content, vmime::word(toVmime(a.name), vmime::charsets::UTF_8),
                vmime::mediaType(vmime::mediaTypes::APPLICATION, vmime::mediaTypes::APPLICATION_OCTET_STREAM),
                vmime::text(), base64);
            builder.appendAttachment(attachment);
            files.push_back(std::move(file));
        }
        built = builder.construct();
    } catch (const vmime::exception &e) {
        return errorFrom(e, server, cancel);
    } catch (const std::exception &e) {
        return unexpected(e, server);
    }

    const vmime::mailbox expeditor(toVmime(message.from));
    vmime::mailboxList recipients;
    recipients.appendMailbox(std::make_shared<vmime::mailbox>(toVmime(message.to)));
    QTemporaryFile generated(QDir::tempPath() + QStringLiteral("/tarnby-mail-XXXXXX.eml"));
    try {
        auto smtp = std::dynamic_pointer_cast<vmime::net::smtp::SMTPTransport>(d->transport);
        if (smtp && smtp->getConnection() && smtp->getConnection()->hasExtension("CHUNKING")) {
            // The server takes the message in chunks: it is generated
            // straight into the connection.
            smtp->send(built, expeditor, recipients, &listener);
        } else {
            // Otherwise vmime would generate the whole message in memory to
            // send it: it goes through a temporary file instead.
            if (!generated.open())
                return {MailErrorKind::File, QStringLiteral("The message could not be prepared in %1: %2")
                                                 .arg(QDir::tempPath(), generated.errorString())};
            FileOutputStream out(generated);
            built->generate(out);
            if (out.failed() || !generated.flush())
                return {MailErrorKind::File, QStringLiteral("The message could not be prepared in %1: %2")
                                                 .arg(QDir::tempPath(), generated.errorString())};
            generated.seek(0);
            FileInputStream in(generated, stop);
            d->transport->send(expeditor, recipients, in, size_t(generated.size()), &listener);
        }
        return {};
    } catch (const vmime::exception &e) {
        MailError error = errorFrom(e, server, cancel);
        if (listener.m_cancelled)
            error = {MailErrorKind::Cancelled, QStringLiteral("Cancelled.")};
        // After a refused command the server stays usable for the next
        // message; after anything else the connection is closed.
        if (error.kind != MailErrorKind::Rejected)
            disconnect();
        else {
            try {
                d->transport->noop();
            } catch (const std::exception &) {
                disconnect();
            }
        }
        return error;
    } catch (const std::exception &e) {
        disconnect();
        return unexpected(e, server);
    }
}

void SmtpSender::disconnect()
{
    if (!d->transport)
        return;
    try {
        if (d->transport->isConnected())
            d->transport->disconnect();
    } catch (const std::exception &) {
        // The connection is gone either way.
    }
    d->transport.reset();
}

// ---------------------------------------------------------------- receiving

struct MailReader::Private {
    std::shared_ptr<vmime::net::session> session;
    std::shared_ptr<vmime::net::store> store;
    std::shared_ptr<vmime::net::folder> folder;
    std::vector<std::shared_ptr<vmime::net::message>> messages;
    ServerSettings settings;
    // POP3: the messages read here before, and the ids of the listed ones.
    std::unique_ptr<SeenMessages> seen;
    QStringList uids;
    bool pop3() const { return settings.protocol == Protocol::Pop3; }
    void markSeen(int index);
    // The message read last, kept for its attachments.
    std::unique_ptr<QTemporaryFile> file;
    std::unique_ptr<MessageFile> loaded;
    int loadedIndex = -1;
    const MessageFile &load(int index);
};

MailReader::MailReader() : d(std::make_unique<Private>()) { initialiseVmime(); }
MailReader::~MailReader() { disconnect(); }

MailError MailReader::connect(const ServerSettings &settings)
{
    disconnect();
    d->settings = settings;
    const QString server = serverName(settings);
    try {
        d->session = vmime::net::session::create();
        const bool tls = settings.security == Security::Tls;
        const char *scheme = settings.protocol == Protocol::Pop3 ? (tls ? "pop3s" : "pop3") : (tls ? "imaps" : "imap");
        const vmime::utility::url url(scheme, toVmime(settings.host), settings.port);
        d->store = d->session->getStore(url);
        if (MailError e = prepareService(*d->store, settings); !e.ok()) {
            d->store.reset();
            return e;
        }
        d->store->connect();
        return {};
    } catch (const vmime::exception &e) {
        d->store.reset();
        return errorFrom(e, server, settings.cancel);
    } catch (const std::exception &e) {
        d->store.reset();
        return unexpected(e, server);
    }
}

bool MailReader::isConnected() const
{
    try {
        return d->store && d->store->isConnected();
    } catch (const std::exception &) {
        return false;
    }
}

MailError MailReader::fetch(bool unreadOnly)
{
    const QString server = serverName(d->settings);
    d->messages.clear();
    d->uids.clear();
    d->loaded.reset();
    d->loadedIndex = -1;
    if (!d->store)
        return {MailErrorKind::Connection, QStringLiteral("Not connected to %1.").arg(server)};
    try {
        if (d->folder && d->folder->isOpen())
            d->folder->close(false);
        d->folder = d->store->getDefaultFolder();
        d->folder->open(vmime::net::folder::MODE_READ_WRITE);
        if (d->folder->getMessageCount() == 0)
            return {};
        auto all = d->folder->getMessages(vmime::net::messageSet::byNumber(1, -1));
        if (d->pop3()) {
            // No read marks on a POP3 server: the ids of the messages read
            // here are kept in the seen file instead.
            d->folder->fetchMessages(all, vmime::net::fetchAttributes(vmime::net::fetchAttributes::UID));
            QString account = QStringLiteral("%1@%2:%3").arg(d->settings.user, d->settings.host).arg(d->settings.port);
            account.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
            d->seen.reset();
            if (!d->settings.seenFile.isEmpty()) {
                d->seen = std::make_unique<SeenMessages>(d->settings.seenFile, account);
                d->seen->load();
            }
            QSet<QString> onServer;
            for (const auto &m : all) {
                const QString uid = fromVmime(m->getUID());
                onServer.insert(uid);
                if (!unreadOnly || !d->seen || !d->seen->contains(uid)) {
                    d->messages.push_back(m);
                    d->uids << uid;
                }
            }
            if (d->seen)
                d->seen->keepOnly(onServer);
            return {};
        }
        d->folder->fetchMessages(all, vmime::net::fetchAttributes(vmime::net::fetchAttributes::FLAGS));
        for (const auto &m : all) {
            if (!unreadOnly || !(m->getFlags() & vmime::net::message::FLAG_SEEN))
                d->messages.push_back(m);
        }
        return {};
    } catch (const vmime::exception &e) {
        return errorFrom(e, server, d->settings.cancel);
    } catch (const std::exception &e) {
        return unexpected(e, server);
    }
}

int MailReader::count() const
{
    return int(d->messages.size());
}

// The message index, fetched whole into a temporary file (the server marks
// it read) and taken apart there: only the headers are read into memory, the
// parts' bodies are decoded from the file when they are asked for.
const MessageFile &MailReader::Private::load(int index)
{
    if (index == loadedIndex && loaded)
        return *loaded;
    loaded.reset();
    loadedIndex = -1;
    file = std::make_unique<QTemporaryFile>(QDir::tempPath() + QStringLiteral("/tarnby-message-XXXXXX.eml"));
    if (!file->open())
        throw vmime::exception("cannot write a temporary file in " + toVmime(QDir::tempPath()));
    FileOutputStream out(*file);
    const auto &remote = messages[size_t(index)];
    if (pop3()) {
        // POP3 retrieves a message whole, streamed line by line into the file.
        remote->extract(out, nullptr, 0, size_t(-1), true);
        if (out.failed())
            throw vmime::exception("cannot write " + toVmime(file->fileName()));
    } else {
        // Over IMAP the message comes in pieces: the server's answer to one
        // request is read whole into memory before it is written out.
        for (size_t start = 0;; start += FetchPiece) {
            const qint64 before = file->pos();
            remote->extract(out, nullptr, start, FetchPiece, true);
            if (out.failed())
                throw vmime::exception("cannot write " + toVmime(file->fileName()));
            if (file->pos() - before < qint64(FetchPiece))
                break;
        }
    }
    if (!file->flush())
        throw vmime::exception("cannot write " + toVmime(file->fileName()));
    markSeen(index);
    loaded = std::make_unique<MessageFile>(scanMessage(*file));
    loadedIndex = index;
    return *loaded;
}

void MailReader::Private::markSeen(int index)
{
    if (!pop3()) {
        messages[size_t(index)]->setFlags(vmime::net::message::FLAG_SEEN, vmime::net::message::FLAG_MODE_ADD);
        return;
    }
    if (!seen || seen->contains(uids[index]))
        return;
    seen->add(uids[index]);
    QString error;
    if (!seen->save(&error))
        throw vmime::exception(toVmime(error));
}

MailError MailReader::read(int index, MessageSummary *summary)
{
    const QString server = serverName(d->settings);
    if (index < 0 || index >= count())
        return {MailErrorKind::Protocol, QStringLiteral("There is no message %1.").arg(index + 1)};
    *summary = {};
    try {
        const MessageFile &message = d->load(index);
        const auto &header = message.header;
        if (auto from = header->findField(vmime::fields::FROM)) {
            if (auto mailbox = from->getValue<vmime::mailbox>()) {
                summary->senderName = fromVmime(mailbox->getName().getConvertedText(vmime::charsets::UTF_8));
                summary->senderAddress = fromVmime(mailbox->getEmail().toString());
            }
        }
        if (auto subject = header->findField(vmime::fields::SUBJECT))
            summary->subject = fromVmime(subject->getValue<vmime::text>()->getConvertedText(vmime::charsets::UTF_8));
        if (auto date = header->findField(vmime::fields::DATE)) {
            const auto dt = date->getValue<vmime::datetime>();
            summary->date = QDateTime(QDate(dt->getYear(), dt->getMonth(), dt->getDay()),
                                      QTime(dt->getHour(), dt->getMinute(), dt->getSecond()),
                                      Qt::OffsetFromUTC, dt->getZone() * 60)
                                .toLocalTime();
        }
        bool textFound = false;
        for (const MessageLeaf &leaf : message.leaves) {
            if (leaf.attachment) {
                summary->attachments << leaf.name;
                continue;
            }
            if (!leaf.plainText || textFound)
                continue;
            textFound = true;
            BoundedStringStream decoded(MaxTextBytes);
            decodeLeaf(*d->file, leaf, decoded);
            vmime::charset charset(vmime::charsets::US_ASCII);
            if (auto type = std::dynamic_pointer_cast<vmime::contentTypeField>(
                    leaf.header->findField(vmime::fields::CONTENT_TYPE));
                type && type->hasCharset())
                charset = type->getCharset();
            std::string utf8;
            try {
                vmime::charset::convert(decoded.data(), utf8, charset, vmime::charsets::UTF_8);
            } catch (const vmime::exception &) {
                utf8 = decoded.data();
            }
            summary->text = fromVmime(utf8);
        }
        return {};
    } catch (const vmime::exception &e) {
        return errorFrom(e, server, d->settings.cancel);
    } catch (const std::exception &e) {
        return unexpected(e, server);
    }
}

MailError MailReader::saveAttachments(int index, const CreateFile &create, QList<SavedAttachment> *saved,
                                      const TransferProgress &progress)
{
    const QString server = serverName(d->settings);
    if (index < 0 || index >= count())
        return {MailErrorKind::Protocol, QStringLiteral("There is no message %1.").arg(index + 1)};
    try {
        const MessageFile &message = d->load(index);
        std::vector<const MessageLeaf *> attachments;
        for (const MessageLeaf &leaf : message.leaves) {
            if (leaf.attachment)
                attachments.push_back(&leaf);
        }
        qint64 done = 0;
        for (const MessageLeaf *attachment : attachments) {
            const QString name = attachment->name;
            QFile target;
            QString error;
            const QString path = create(name, target, &error);
            if (path.isEmpty())
                return {MailErrorKind::File, error};
            FileOutputStream out(target);
            decodeLeaf(*d->file, *attachment, out);
            if (out.failed() || !target.flush()) {
                const QString why = target.errorString();
                target.remove();
                return {MailErrorKind::File, QStringLiteral("The attachment %1 could not be written: %2").arg(path, why)};
            }
            target.close();
            saved->append({name, path});
            ++done;
            if (progress && !progress(done, qint64(attachments.size())))
                return {MailErrorKind::Cancelled, QStringLiteral("Cancelled.")};
        }
        return {};
    } catch (const vmime::exception &e) {
        return errorFrom(e, server, d->settings.cancel);
    } catch (const std::exception &e) {
        return unexpected(e, server);
    }
}

void MailReader::disconnect()
{
    d->messages.clear();
    d->uids.clear();
    d->seen.reset();
    d->loaded.reset();
    d->loadedIndex = -1;
    // The store signs off first: before it says anything to the server it
    // lets go of its open folders, so that they end without a word. Closing
    // the folder first asks the server (POP3: RSET), and when that fails
    // (the cancel flag is set, the connection is gone) vmime's POP3 folder
    // is destroyed still registered with its store, whose destructor then
    // writes through the stale pointer.
    try {
        if (d->store && d->store->isConnected())
            d->store->disconnect();
    } catch (const std::exception &) {
        // The connection is gone either way.
    }
    d->folder.reset();
    d->store.reset();
}

// ---------------------------------------------------------------- composer

QStringList composerArguments(const ComposeRequest &request)
{
    QStringList args{QStringLiteral("--utf8")};
    if (!request.subject.isEmpty())
        args << QStringLiteral("--subject") << request.subject;
    if (!request.body.isEmpty())
        args << QStringLiteral("--body") << request.body;
    for (const QString &path : request.attachments)
        args << QStringLiteral("--attach") << path;
    if (!request.to.isEmpty())
        args << request.to;
    return args;
}

bool openComposer(const ComposeRequest &request, QString *error)
{
    if (!QProcess::startDetached(QStringLiteral("xdg-email"), composerArguments(request))) {
        *error = QStringLiteral("The desktop's mail program could not be started (xdg-email).");
        return false;
    }
    return true;
}

} // namespace tarnby::mailnet
