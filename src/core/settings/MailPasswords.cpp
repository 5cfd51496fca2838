#include "core/settings/MailPasswords.h"

#include <qt6keychain/keychain.h>

#include <QPointer>
#include <QTimer>

#include <memory>

namespace tarnby::settings {

namespace {

QMutex storeMutex;
std::shared_ptr<PasswordStore> replacementStore;

std::shared_ptr<PasswordStore> currentStore()
{
    QMutexLocker lock(&storeMutex);
    return replacementStore;
}

// The answer of a store in the process, given from the event loop as the
// keyring's would be.
void answerLater(QObject *context, std::function<void(const PasswordResult &)> done, PasswordResult result)
{
    QTimer::singleShot(0, context, [done = std::move(done), result] { done(result); });
}

QString keyringError(const QKeychain::Job *job)
{
    QString why;
    switch (job->error()) {
    case QKeychain::NoBackendAvailable:
    case QKeychain::NotImplemented:
        why = QStringLiteral("no desktop keyring is running");
        break;
    case QKeychain::AccessDenied:
    case QKeychain::AccessDeniedByUser:
        why = QStringLiteral("the desktop keyring refused access");
        break;
    case QKeychain::CouldNotDeleteEntry:
        why = QStringLiteral("the desktop keyring could not remove the old password");
        break;
    default:
        why = QStringLiteral("the desktop keyring reported an error");
        break;
    }
    // The library's own text is often only "Unknown error"; add it only when
    // it says more.
    const QString detail = job->errorString();
    if (!detail.isEmpty() && detail != QLatin1String("Unknown error"))
        why += QStringLiteral(" (") + detail + QLatin1Char(')');
    return QStringLiteral("The mail password could not be kept: %1. Tarnby keeps it only in the desktop "
                          "keyring, so it was not saved anywhere.")
        .arg(why);
}

// Runs job, calling done once: with the job's answer, or with a timeout
// error when the keyring takes longer than timeoutMs. The job deletes itself
// when it finishes, also after a timeout.
void start(QKeychain::Job *job, QObject *context, int timeoutMs,
           std::function<void(const PasswordResult &)> done)
{
    job->setAutoDelete(true);
    // Never let the keyring library keep the password in a plain settings
    // file when no keyring is there.
    job->setInsecureFallback(false);
    auto answered = std::make_shared<bool>(false);
    auto callback = std::make_shared<std::function<void(const PasswordResult &)>>(std::move(done));

    QObject::connect(job, &QKeychain::Job::finished, context, [answered, callback](QKeychain::Job *finished) {
        if (*answered)
            return;
        *answered = true;
        PasswordResult result;
        if (finished->error() == QKeychain::NoError) {
            result.ok = true;
            if (auto *reader = qobject_cast<QKeychain::ReadPasswordJob *>(finished))
                result.password = reader->textData();
        } else if (finished->error() == QKeychain::EntryNotFound) {
            // Nothing stored yet is an answer, not a failure.
            result.ok = true;
        } else {
            result.error = keyringError(finished);
        }
        (*callback)(result);
    });
    QTimer::singleShot(timeoutMs, context, [answered, callback] {
        if (*answered)
            return;
        *answered = true;
        PasswordResult result;
        result.error = QStringLiteral("The mail password could not be kept: the desktop keyring did not answer "
                                      "in time. Tarnby keeps it only in the desktop keyring, so it was not saved "
                                      "anywhere.");
        (*callback)(result);
    });
    job->start();
}

} // namespace

QString mailPasswordKey(MailServer server, const QString &protocol, const QString &user, const QString &host)
{
    const QString kind = server == MailServer::Outgoing ? QStringLiteral("smtp") : protocol.toLower();
    return kind + QLatin1Char(':') + user + QLatin1Char('@') + host;
}

PasswordResult MemoryPasswordStore::read(const QString &key)
{
    QMutexLocker lock(&m_mutex);
    return {true, m_passwords.value(key), QString()};
}

PasswordResult MemoryPasswordStore::write(const QString &key, const QString &password)
{
    QMutexLocker lock(&m_mutex);
    m_passwords.insert(key, password);
    return {true, QString(), QString()};
}

PasswordResult MemoryPasswordStore::remove(const QString &key)
{
    QMutexLocker lock(&m_mutex);
    m_passwords.remove(key);
    return {true, QString(), QString()};
}

void MailPasswords::setStore(std::shared_ptr<PasswordStore> store)
{
    QMutexLocker lock(&storeMutex);
    replacementStore = std::move(store);
}

void MailPasswords::read(const QString &key, QObject *context, std::function<void(const PasswordResult &)> done,
                         int timeoutMs)
{
    if (auto store = currentStore())
        return answerLater(context, std::move(done), store->read(key));
    auto *job = new QKeychain::ReadPasswordJob(serviceName());
    job->setKey(key);
    start(job, context, timeoutMs, std::move(done));
}

void MailPasswords::write(const QString &key, const QString &password, QObject *context,
                          std::function<void(const PasswordResult &)> done, int timeoutMs)
{
    if (auto store = currentStore())
        return answerLater(context, std::move(done), store->write(key, password));
    auto *job = new QKeychain::WritePasswordJob(serviceName());
    job->setKey(key);
    job->setTextData(password);
    start(job, context, timeoutMs, std::move(done));
}

void MailPasswords::remove(const QString &key, QObject *context, std::function<void(const PasswordResult &)> done,
                           int timeoutMs)
{
    if (auto store = currentStore())
        return answerLater(context, std::move(done), store->remove(key));
    auto *job = new QKeychain::DeletePasswordJob(serviceName());
    job->setKey(key);
    start(job, context, timeoutMs, std::move(done));
}

} // namespace tarnby::settings
