#include "CliCommand.h"

#include "core/app/ProgramFolder.h"
#include "core/mail/AddressList.h"
#include "core/mail/MailJobs.h"
#include "core/mail/SendHistory.h"
#include "core/platform/mail/MailTransport.h"
#include "core/settings/MailPasswords.h"
#include "core/settings/ProgramOptions.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

#include <algorithm>

namespace {

using namespace tarnby;

struct MailOptions {
    QString subcommand;
    QStringList to;
    QStringList files;
    QString subject;
    QString message;
    bool omitZip = false;
    bool all = false;
    QString folder; // receive --to
    QString home;
    QString serverUrl; // --smtp or --imap
    QString pop3Url;
    QString user;
    QString passwordFile;
    QString caFile;
};

int usage()
{
    cli::err(QStringLiteral(
        "Usage: tarnby-cli mail send --to ADDRESS... [--omit-zip] [--subject S] [--message M] FILE...\n"
        "       tarnby-cli mail receive [--all] [--to DIR]\n"
        "Both take --home DIR, --user NAME, --password-file F and --ca-file F; send takes\n"
        "--smtp URL (smtp:// or smtps://), receive --imap URL (imap:// or imaps://) or\n"
        "--pop3 URL (pop3:// or pop3s://).\n"));
    return 2;
}

int fail(const QString &message)
{
    cli::err(QStringLiteral("tarnby-cli mail: %1\n").arg(message));
    return 1;
}

QString firstLine(const QString &path, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("The password file \"%1\" could not be read: %2").arg(path, file.errorString());
        return QString();
    }
    QByteArray line = file.read(64 * 1024);
    const qsizetype end = line.indexOf('\n');
    if (end >= 0)
        line.truncate(end);
    if (line.endsWith('\r'))
        line.chop(1);
    return QString::fromUtf8(line);
}

// The server of the options, overridden by the command line. The password
// comes from the file given, else from the desktop keyring; it is never
// printed.
bool serverSettings(const MailOptions &o, const settings::ProgramOptions &options, bool outgoing,
                    mailnet::ServerSettings *s, QString *error)
{
    *s = outgoing ? mail::outgoingServer(options) : mail::incomingServer(options);
    if (!o.serverUrl.isEmpty() && !o.pop3Url.isEmpty()) {
        *error = QStringLiteral("Give either --imap or --pop3, not both.");
        return false;
    }
    if (const QString url = o.serverUrl.isEmpty() ? o.pop3Url : o.serverUrl; !url.isEmpty()) {
        if (!mailnet::parseServerUrl(url, outgoing, s, error))
            return false;
        const mailnet::Protocol wanted = o.pop3Url.isEmpty() ? mailnet::Protocol::Imap : mailnet::Protocol::Pop3;
        if (!outgoing && s->protocol != wanted) {
            *error = QStringLiteral("\"%1\" is not a server address for %2.")
                         .arg(url, wanted == mailnet::Protocol::Pop3 ? QStringLiteral("--pop3") : QStringLiteral("--imap"));
            return false;
        }
        s->allowPlain = false;
    }
    if (!o.user.isEmpty())
        s->user = o.user;
    s->caFile = o.caFile;
    if (s->host.isEmpty()) {
        *error = outgoing ? QStringLiteral("No outgoing mail server is set: give one with --smtp or in the options.")
                          : QStringLiteral("No incoming mail server is set: give one with --imap or --pop3 or in "
                                           "the options.");
        return false;
    }
    if (!o.passwordFile.isEmpty()) {
        s->password = firstLine(o.passwordFile, error);
        return error->isEmpty();
    }
    if (s->user.isEmpty())
        return true;
    const QString key = mail::passwordKey(*s, outgoing);
    QEventLoop loop;
    settings::PasswordResult read;
    QObject context;
    settings::MailPasswords::read(key, &context, [&](const settings::PasswordResult &r) {
        read = r;
        loop.quit();
    });
    loop.exec();
    if (!read.ok) {
        *error = read.error + QStringLiteral(" Give the password with --password-file.");
        return false;
    }
    s->password = read.password;
    return true;
}

int runSend(const MailOptions &o, const QString &home, const settings::ProgramOptions &options)
{
    if (o.to.isEmpty() || o.files.isEmpty())
        return usage();
    mail::SendRequest request;
    for (const QString &file : o.files)
        request.files << QFileInfo(file).absoluteFilePath();
    request.recipients = o.to;
    request.subject = o.subject;
    request.message = o.message;
    request.omitZip = o.omitZip;
    QString error;
    if (!serverSettings(o, options, true, &request.server, &error))
        return fail(error);
    request.fromAddress = options.fromAddress.isEmpty() ? request.server.user : options.fromAddress;
    if (!request.fromAddress.contains(QLatin1Char('@')))
        return fail(QStringLiteral("No sender address is set: give your From E-Mail Address in the options."));
    request.userName = request.server.user.isEmpty() ? request.fromAddress : request.server.user;

    const mail::SendResult result = mail::sendFiles(request);
    if (!result.historyLines.isEmpty()) {
        mail::SendHistory history;
        history.load(QDir(home).filePath(mail::SendLogFileName));
        history.append(result.historyLines);
        if (!history.save(&error))
            cli::err(QStringLiteral("tarnby-cli mail: %1\n").arg(error));
    }
    for (const QString &line : result.historyLines)
        cli::out(line + QLatin1Char('\n'));
    for (const QString &e : result.errors)
        cli::err(QStringLiteral("tarnby-cli mail: %1\n").arg(e));
    return result.ok ? 0 : 1;
}

int runReceive(const MailOptions &o, const QString &home, const settings::ProgramOptions &options)
{
    mailnet::ServerSettings server;
    QString error;
    if (!serverSettings(o, options, false, &server, &error))
        return fail(error);
    server.seenFile = mail::seenFilePath(home);
    const QString folder = o.folder.isEmpty() ? QDir(home).filePath(QStringLiteral("Pictures")) : o.folder;
    if (!QDir().mkpath(folder))
        return fail(QStringLiteral("The folder %1 could not be made.").arg(folder));

    mailnet::MailReader reader;
    mailnet::MailError status = reader.connect(server);
    if (status.ok())
        status = reader.fetch(!o.all);
    if (!status.ok())
        return fail(status.text);
    bool allRead = true;
    for (int i = 0; i < reader.count(); ++i) {
        mailnet::MessageSummary summary;
        status = reader.read(i, &summary);
        QList<mailnet::SavedAttachment> saved;
        if (status.ok())
            status = reader.saveAttachments(i, mail::attachmentFileCreator(folder), &saved);
        if (!status.ok()) {
            cli::err(QStringLiteral("tarnby-cli mail: message %1: %2\n").arg(i + 1).arg(status.text));
            allRead = false;
            continue;
        }
        QStringList files;
        for (const mailnet::SavedAttachment &a : saved) {
            files << a.path;
            if (QFileInfo(a.path).suffix().compare(QStringLiteral("ZIP"), Qt::CaseInsensitive) != 0)
                continue;
            const mail::UnpackResult unpacked = mail::unpackReceivedArchive(a.path, folder);
            if (!unpacked.ok) {
                cli::err(QStringLiteral("tarnby-cli mail: %1: %2\n").arg(a.path, unpacked.errorString));
                allRead = false;
            }
            files += unpacked.files;
        }
        cli::out(QStringLiteral("%1\t%2 | %3\t%4\t%5\n")
                     .arg(summary.date.toString(Qt::ISODate), summary.senderName, summary.senderAddress,
                          summary.subject, files.join(QLatin1Char('\t'))));
    }
    return allRead ? 0 : 1;
}

int runMail(const QByteArrayList &args)
{
    if (args.isEmpty())
        return usage();
    MailOptions o;
    o.subcommand = QString::fromLocal8Bit(args.first());
    const bool send = o.subcommand == QLatin1String("send");
    if (!send && o.subcommand != QLatin1String("receive"))
        return usage();
    // The options that take a value, and where it goes.
    const QList<QPair<QByteArray, QString *>> valueOptions{
        {"--home", &o.home},
        {"--user", &o.user},
        {"--password-file", &o.passwordFile},
        {"--ca-file", &o.caFile},
        {send ? "--smtp" : "--imap", &o.serverUrl},
        {"--pop3", send ? nullptr : &o.pop3Url},
        {"--subject", send ? &o.subject : nullptr},
        {"--message", send ? &o.message : nullptr},
    };
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QByteArray &arg = args[i];
        auto takesValue = std::find_if(valueOptions.begin(), valueOptions.end(),
                                       [&](const auto &option) { return option.first == arg && option.second; });
        if (takesValue != valueOptions.end() || arg == "--to") {
            if (i + 1 >= args.size())
                return usage();
            const QString value = QString::fromLocal8Bit(args[++i]);
            if (arg != "--to")
                *takesValue->second = value;
            else if (send)
                o.to << mail::recipientsFromText(value);
            else
                o.folder = value;
        } else if (arg == "--omit-zip" && send) {
            o.omitZip = true;
        } else if (arg == "--all" && !send) {
            o.all = true;
        } else if (arg.startsWith("--") || !send) {
            return usage();
        } else {
            o.files << QString::fromLocal8Bit(arg);
        }
    }
    QString home = o.home;
    if (home.isEmpty())
        home = qEnvironmentVariable("TARNBY_HOME");
    if (home.isEmpty())
        home = defaultDataFolder();
    settings::ProgramOptions options;
    settings::readProgramOptions(home, options);
    return send ? runSend(o, home, options) : runReceive(o, home, options);
}

} // namespace

TARNBY_CLI_COMMAND(mail, "mail", "mail send --to ADDRESS... [--omit-zip] [--subject S] [--message M] FILE... | mail receive [--all] [--to DIR]",
                   "Send files by e-mail (zipped unless --omit-zip), or receive messages and save and unpack their "
                   "attachments. Both take --home DIR, --smtp URL / --imap URL or --pop3 URL, --user NAME, --password-file F and "
                   "--ca-file F.",
                   runMail);
