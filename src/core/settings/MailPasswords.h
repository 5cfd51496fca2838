#pragma once

#include <QObject>
#include <QString>

#include <QHash>
#include <QMutex>

#include <functional>
#include <memory>

// The mail passwords, kept in the desktop keyring (the freedesktop secret
// service or KWallet) and nowhere else: never in a settings file, never in a
// fallback store. Where no keyring answers, every operation fails with a
// whole sentence that says so.
namespace tarnby::settings {

enum class MailServer { Outgoing, Incoming };

// The keyring entry of a server's password: "smtp:user@host" or
// "imap:user@host" / "pop3:user@host".
QString mailPasswordKey(MailServer server, const QString &protocol, const QString &user, const QString &host);

struct PasswordResult {
    bool ok = false;
    QString password; // read: the password (empty when none is stored)
    QString error;    // a whole sentence when !ok
};

// Where the passwords are kept when it is not the desktop keyring: a store in
// this process only, which a program without a desktop (the window tests)
// puts in the keyring's place. It is never written anywhere.
class PasswordStore
{
public:
    virtual ~PasswordStore() = default;
    virtual PasswordResult read(const QString &key) = 0;
    virtual PasswordResult write(const QString &key, const QString &password) = 0;
    virtual PasswordResult remove(const QString &key) = 0;
};

class MemoryPasswordStore : public PasswordStore
{
public:
    PasswordResult read(const QString &key) override;
    PasswordResult write(const QString &key, const QString &password) override;
    PasswordResult remove(const QString &key) override;

private:
    QMutex m_mutex;
    QHash<QString, QString> m_passwords;
};

// Asynchronous keyring access. Each call starts one keyring job and calls done
// once on the thread that made the call, from the event loop, when the
// keyring answers or after timeoutMs, whichever comes first; a late answer
// after the timeout is dropped. context bounds the callback's life: when it
// is destroyed first, done is never called. Call from a thread with an event
// loop (the UI thread).
class MailPasswords
{
public:
    static constexpr int DefaultTimeoutMs = 10000;

    static void read(const QString &key, QObject *context, std::function<void(const PasswordResult &)> done,
                     int timeoutMs = DefaultTimeoutMs);
    static void write(const QString &key, const QString &password, QObject *context,
                      std::function<void(const PasswordResult &)> done, int timeoutMs = DefaultTimeoutMs);
    static void remove(const QString &key, QObject *context, std::function<void(const PasswordResult &)> done,
                       int timeoutMs = DefaultTimeoutMs);

    static QString serviceName() { return QStringLiteral("Tarnby"); }

    // Puts store in the desktop keyring's place for every later call, with
    // the same asynchronous answers; nullptr goes back to the keyring.
    static void setStore(std::shared_ptr<PasswordStore> store);
};

} // namespace tarnby::settings
