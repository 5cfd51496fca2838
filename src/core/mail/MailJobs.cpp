#include "core/mail/MailJobs.h"

#include "core/mail/AttachmentNames.h"
#include "core/mail/SendArchive.h"
#include "core/mail/SendHistory.h"
#include "core/platform/archive/ZipExtract.h"
#include "core/settings/MailPasswords.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QTemporaryDir>

#include <cstdio>

namespace tarnby::mail {

namespace {
mailnet::Security securityFromOption(const QString &text)
{
    if (text.compare(QStringLiteral("TLS"), Qt::CaseInsensitive) == 0)
        return mailnet::Security::Tls;
    if (text.compare(QStringLiteral("None"), Qt::CaseInsensitive) == 0)
        return mailnet::Security::None;
    return mailnet::Security::StartTls;
}
} // namespace

mailnet::ServerSettings outgoingServer(const settings::ProgramOptions &options)
{
    mailnet::ServerSettings s;
    s.host = options.smtpHost;
    s.port = options.smtpPort;
    s.security = securityFromOption(options.smtpSecurity);
    s.allowPlain = s.security == mailnet::Security::None;
    s.user = options.smtpUser;
    return s;
}

mailnet::ServerSettings incomingServer(const settings::ProgramOptions &options)
{
    mailnet::ServerSettings s;
    s.host = options.incomingHost;
    s.port = options.incomingPort;
    s.security = securityFromOption(options.incomingSecurity);
    s.allowPlain = s.security == mailnet::Security::None;
    s.user = options.incomingUser;
    s.protocol = options.incomingProtocol.compare(QStringLiteral("POP3"), Qt::CaseInsensitive) == 0
                     ? mailnet::Protocol::Pop3
                     : mailnet::Protocol::Imap;
    return s;
}

QString seenFilePath(const QString &programFolder)
{
    return QDir(programFolder).filePath(Pop3SeenFileName);
}

QString passwordKey(const mailnet::ServerSettings &server, bool outgoing)
{
    return settings::mailPasswordKey(outgoing ? settings::MailServer::Outgoing : settings::MailServer::Incoming,
                                     server.protocol == mailnet::Protocol::Pop3 ? QStringLiteral("pop3")
                                                                                : QStringLiteral("imap"),
                                     server.user, server.host);
}

QString sendSubject(const QString &subject, const QString &userName)
{
    if (subject.trimmed().isEmpty())
        return QStringLiteral("Pictures sent from ") + userName;
    return subject;
}

SendResult sendFiles(const SendRequest &request, const SendProgress &progress)
{
    SendResult result;
    if (request.files.isEmpty()) {
        result.errors << QStringLiteral("There are no files to send.");
        return result;
    }
    if (request.recipients.isEmpty()) {
        result.errors << QStringLiteral("There is no address to send to.");
        return result;
    }
    if (request.files.size() > MaxSendFiles || request.recipients.size() > MaxRecipients) {
        result.errors << QStringLiteral("At most %1 files can be sent to at most %2 addresses at a time.")
                             .arg(MaxSendFiles)
                             .arg(MaxRecipients);
        return result;
    }
    const std::atomic_bool *cancel = request.server.cancel;
    auto cancelled = [cancel] { return cancel && cancel->load(); };

    // The archive is made in every case; "Omit Zip File" only decides what is
    // attached.
    const QString zipStep = QStringLiteral("Making the archive");
    const SendArchiveResult archive = makeSendArchive(request.files, [&](qint64 done, qint64 total) {
        if (progress)
            progress(zipStep, done, total);
        return !cancelled();
    });
    if (!archive.result.ok()) {
        result.errors << (archive.result.status == archive::ZipStatus::Cancelled ? QStringLiteral("Cancelled.")
                                                                                  : archive.result.errorString);
        return result;
    }
    result.archivePath = archive.path;

    mailnet::OutgoingMessage message;
    message.from = request.fromAddress;
    message.fromName = request.userName;
    message.subject = sendSubject(request.subject, request.userName);
    message.text = request.message;
    if (request.omitZip) {
        for (const QString &file : request.files)
            message.attachments.append({file, QFileInfo(file).fileName()});
    } else {
        message.attachments.append({archive.path, QFileInfo(archive.path).fileName()});
    }

    mailnet::SmtpSender sender;
    for (qsizetype i = 0; i < request.recipients.size(); ++i) {
        const QString &address = request.recipients[i];
        const QString step = QStringLiteral("Sending to %1 (%2 of %3)").arg(address).arg(i + 1).arg(request.recipients.size());
        if (progress)
            progress(step, 0, 0);
        if (!sender.isConnected()) {
            const mailnet::MailError error = sender.connect(request.server);
            if (!error.ok()) {
                result.errors << error.text;
                return result;
            }
        }
        message.to = address;
        const mailnet::MailError error = sender.send(message, [&](qint64 done, qint64 total) {
            if (progress)
                progress(step, done, total);
            return !cancelled();
        });
        if (!error.ok()) {
            result.errors << error.text;
            if (error.kind != mailnet::MailErrorKind::Rejected)
                return result;
            continue;
        }
        ++result.messagesSent;
        const QDateTime when = request.now();
        for (const QString &file : request.files)
            result.historyLines << historyLine(file, address, when);
    }
    sender.disconnect();
    result.ok = result.errors.isEmpty();
    return result;
}

mailnet::MailReader::CreateFile attachmentFileCreator(const QString &folder)
{
    return [folder](const QString &nameAsSent, QFile &file, QString *error) {
        return createUniqueFile(folder, plainAttachmentName(nameAsSent), file, error);
    };
}

UnpackResult unpackReceivedArchive(const QString &zipPath, const QString &folder)
{
    UnpackResult result;
    if (!QDir().mkpath(folder)) {
        result.errorString = QStringLiteral("The folder %1 could not be made.").arg(folder);
        return result;
    }
    // A new folder beside the files, so that moving the entries in is a
    // rename on the same disk.
    QTemporaryDir staging(QDir(folder).filePath(QStringLiteral(".tarnby-unzip-XXXXXX")));
    if (!staging.isValid()) {
        result.errorString = QStringLiteral("The folder %1 could not be written to.").arg(folder);
        return result;
    }
    const QString target = staging.filePath(QStringLiteral("x"));
    const archive::ExtractResult extracted = archive::extractArchive(zipPath, target);
    if (!extracted.ok()) {
        result.errorString = extracted.errorString;
        return result;
    }
    QDirIterator it(target, QDir::Files | QDir::Hidden | QDir::NoDotAndDotDot, QDirIterator::Subdirectories);
    const QDir root(target);
    while (it.hasNext()) {
        const QString source = it.next();
        const QString relative = root.relativeFilePath(source);
        const QFileInfo relativeInfo(QDir(folder).filePath(relative));
        if (!QDir().mkpath(relativeInfo.absolutePath())) {
            result.errorString = QStringLiteral("The folder %1 could not be made.").arg(relativeInfo.absolutePath());
            return result;
        }
        // Claim a free name first, then move the entry over the empty claim.
        QFile claim;
        QString error;
        const QString placed = createUniqueFile(relativeInfo.absolutePath(), relativeInfo.fileName(), claim, &error);
        if (placed.isEmpty()) {
            result.errorString = error;
            return result;
        }
        claim.close();
        if (::rename(QFile::encodeName(source).constData(), QFile::encodeName(placed).constData()) != 0) {
            QFile::remove(placed);
            result.errorString = QStringLiteral("%1 could not be moved into %2.").arg(relative, folder);
            return result;
        }
        result.files << placed;
    }
    result.ok = true;
    return result;
}

} // namespace tarnby::mail
