#include "core/viewer/InternetDownload.h"

#include "core/viewer/DocumentRules.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>
#include <QSaveFile>
#include <QTemporaryDir>
#include <QUrl>

namespace tarnby::viewer {

InternetDownload::InternetDownload(QObject *parent)
    : QObject(parent)
{
}

InternetDownload::~InternetDownload()
{
    // The owner is going away: nobody is left to hear about the end, so the
    // reply is silenced before it is aborted.
    dropReply();
}

QString InternetDownload::localFileName(const QString &address)
{
    const QString name = saveAsFileName(address).section(QLatin1Char('?'), 0, 0);
    return name.isEmpty() ? QStringLiteral("picture") : name;
}

void InternetDownload::start(const QString &address)
{
    cancel();
    m_file.reset();
    m_folder.reset();
    m_address = address;
    m_failure.clear();
    m_received = 0;

    m_folder = std::make_unique<QTemporaryDir>();
    if (!m_folder->isValid()) {
        finish(QStringLiteral("Cannot create a temporary folder: ") + m_folder->errorString());
        return;
    }
    // The copy is written as it arrives and appears under its name only once
    // it is complete.
    m_file = std::make_unique<QSaveFile>(m_folder->filePath(localFileName(address)));
    if (!m_file->open(QIODevice::WriteOnly)) {
        finish(m_file->errorString());
        return;
    }

    if (!m_network)
        m_network = new QNetworkAccessManager(this);
    QNetworkRequest request{QUrl(address)};
    request.setAttribute(QNetworkRequest::RedirectPolicyAttribute, QNetworkRequest::NoLessSafeRedirectPolicy);
    m_reply = m_network->get(request);
    connect(m_reply, &QNetworkReply::readyRead, this, &InternetDownload::onReadyRead);
    connect(m_reply, &QNetworkReply::finished, this, &InternetDownload::onFinished);
}

bool InternetDownload::isRunning() const
{
    return m_reply != nullptr;
}

void InternetDownload::cancel()
{
    if (!m_reply)
        return;
    m_failure = QStringLiteral("The download was cancelled");
    // abort() normally delivers finished() to onFinished before it returns;
    // a reply that has no more to say is ended here.
    m_reply->abort();
    if (m_reply) {
        dropReply();
        finish(m_failure);
    }
}

void InternetDownload::onReadyRead()
{
    if (!m_reply || !m_failure.isEmpty())
        return;
    const QByteArray data = m_reply->readAll();
    m_received += data.size();
    if (m_received > m_maxBytes) {
        m_failure = QStringLiteral("The file is larger than %1 bytes").arg(m_maxBytes);
        m_reply->abort();
        return;
    }
    if (m_file->write(data) != data.size()) {
        m_failure = m_file->errorString();
        m_reply->abort();
    }
}

void InternetDownload::onFinished()
{
    QNetworkReply *reply = m_reply;
    if (!reply)
        return;
    onReadyRead();
    QString error = m_failure;
    if (error.isEmpty() && reply->error() != QNetworkReply::NoError)
        error = reply->errorString();
    dropReply();
    if (error.isEmpty() && !m_file->commit())
        error = m_file->errorString();
    finish(error);
}

void InternetDownload::finish(const QString &errorString)
{
    DownloadResult result;
    result.address = m_address;
    result.errorString = errorString;
    if (errorString.isEmpty()) {
        result.localPath = m_file->fileName();
        result.bytes = m_received;
    } else {
        // An unfinished copy never appears; the empty folder goes too.
        m_file.reset();
        m_folder.reset();
    }
    m_result = result;
    emit finished(m_result);
}

void InternetDownload::dropReply()
{
    QNetworkReply *reply = m_reply;
    if (!reply)
        return;
    m_reply = nullptr;
    reply->disconnect(this);
    if (reply->isRunning())
        reply->abort();
    reply->deleteLater();
}

} // namespace tarnby::viewer
