#pragma once

#include "core/platform/mail/MailTransport.h"

#include <QFile>
#include <QHash>
#include <QProcess>
#include <QThread>

#include <cstdio>

// The local mail servers that the test suite starts (tests/tools/mailstack),
// described by the env file in the folder that TARNBY_TEST_MAILSTACK names.
class MailStack
{
public:
    MailStack()
    {
        m_dir = qEnvironmentVariable("TARNBY_TEST_MAILSTACK");
        QFile env(m_dir + QStringLiteral("/env"));
        if (m_dir.isEmpty() || !env.open(QIODevice::ReadOnly))
            return;
        while (!env.atEnd()) {
            const QString line = QString::fromUtf8(env.readLine()).trimmed();
            const qsizetype eq = line.indexOf(QLatin1Char('='));
            if (eq > 0)
                m_values.insert(line.left(eq), line.mid(eq + 1));
        }
    }

    bool available() const { return m_values.contains(QStringLiteral("TARNBY_TEST_SMTP_PORT")); }
    QString value(const char *key) const { return m_values.value(QString::fromLatin1(key)); }
    QString dir() const { return m_dir; }
    QString address() const { return value("TARNBY_TEST_MAIL_ADDRESS"); }

    tarnby::mailnet::ServerSettings smtp() const
    {
        tarnby::mailnet::ServerSettings s;
        s.host = value("TARNBY_TEST_SMTP_HOST");
        s.port = value("TARNBY_TEST_SMTP_PORT").toInt();
        s.user = value("TARNBY_TEST_SMTP_USER");
        s.password = value("TARNBY_TEST_SMTP_PASS");
        s.caFile = value("TARNBY_TEST_TLS_CA");
        s.connectTimeoutMs = s.readTimeoutMs = 20000;
        return s;
    }

    tarnby::mailnet::ServerSettings imap() const
    {
        tarnby::mailnet::ServerSettings s = smtp();
        s.host = value("TARNBY_TEST_IMAP_HOST");
        s.port = value("TARNBY_TEST_IMAP_PORT").toInt();
        s.user = value("TARNBY_TEST_IMAP_USER");
        s.password = value("TARNBY_TEST_IMAP_PASS");
        return s;
    }

    // The same account over POP3 (STARTTLS), its read messages remembered
    // in seenFile.
    tarnby::mailnet::ServerSettings pop3(const QString &seenFile = QString()) const
    {
        tarnby::mailnet::ServerSettings s = imap();
        s.protocol = tarnby::mailnet::Protocol::Pop3;
        s.port = value("TARNBY_TEST_POP3_PORT").toInt();
        s.seenFile = seenFile;
        return s;
    }

    // A message from the test account to itself.
    tarnby::mailnet::OutgoingMessage toSelf(const QString &subject) const
    {
        tarnby::mailnet::OutgoingMessage message;
        message.from = message.to = address();
        message.subject = subject;
        return message;
    }

    // Signs on to the SMTP server and sends message.
    tarnby::mailnet::MailError send(const tarnby::mailnet::OutgoingMessage &message) const
    {
        tarnby::mailnet::SmtpSender sender;
        const tarnby::mailnet::MailError connected = sender.connect(smtp());
        return connected.ok() ? sender.send(message) : connected;
    }

    // Deletes every message of the test account.
    bool clear() const
    {
        return QProcess::execute(QStringLiteral(TARNBY_MAILSTACK), {QStringLiteral("clear"), m_dir}) == 0;
    }

    // Waits until the inbox holds count messages (delivery is asynchronous);
    // returns how many it holds at the end.
    int waitForMessages(int count, int timeoutMs = 15000) const
    {
        int have = 0;
        for (int waited = 0; waited <= timeoutMs; waited += 100) {
            tarnby::mailnet::MailReader reader;
            if (reader.connect(imap()).ok() && reader.fetch(false).ok())
                have = reader.count();
            if (have >= count)
                return have;
            QThread::msleep(100);
        }
        return have;
    }

private:
    QString m_dir;
    QHash<QString, QString> m_values;
};

// The main of a test that needs the servers (MAILSTACK_TEST_MAIN_WITH: with
// an application object other than QCoreApplication): skips with a clear line (exit
// 77, which CTest counts as skipped) where they could not be started.
#define MAILSTACK_TEST_MAIN(TestObject) MAILSTACK_TEST_MAIN_WITH(QCoreApplication, TestObject)
#define MAILSTACK_TEST_MAIN_WITH(Application, TestObject)                                          \
    int main(int argc, char *argv[])                                                               \
    {                                                                                              \
        Application app(argc, argv);                                                               \
        if (!MailStack().available()) {                                                            \
            std::printf("SKIP: the local mail servers are not running (tests/tools/mailstack "     \
                        "start needs root and the postfix and dovecot packages)\n");               \
            return 77;                                                                             \
        }                                                                                          \
        TestObject test;                                                                           \
        return QTest::qExec(&test, argc, argv);                                                    \
    }
