#include "core/settings/ProgramOptions.h"

#include "CliRun.h"
#include "MailStack.h"
#include "TestDir.h"

#include <QDir>
#include <QTest>

using clitest::runCli;

class TestMailCommand : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void sendAndReceive_data();
    void sendAndReceive();
    void failures_data();
    void failures();

private:
    // A program folder whose options name the sender; the servers come from
    // the command line.
    QStringList accountArgs(TestDir &dir, bool outgoing, const QString &password = "tarnby-test-pass",
                            bool pop3 = false);
    MailStack m_stack;
};

QStringList TestMailCommand::accountArgs(TestDir &dir, bool outgoing, const QString &password, bool pop3)
{
    tarnby::settings::ProgramOptions options;
    options.fromAddress = m_stack.address();
    QString error;
    if (!tarnby::settings::writeProgramOptions(dir.path(), options, &error))
        qWarning("%s", qPrintable(error));
    const QString passwordFile = dir.createFile("password", password.toUtf8() + "\n");
    const QString host = m_stack.value("TARNBY_TEST_SMTP_HOST");
    const QString url = outgoing ? QStringLiteral("smtp://%1:%2").arg(host, m_stack.value("TARNBY_TEST_SMTP_PORT"))
                        : pop3   ? QStringLiteral("pop3s://%1:%2").arg(host, m_stack.value("TARNBY_TEST_POP3S_PORT"))
                                 : QStringLiteral("imaps://%1:%2").arg(host, m_stack.value("TARNBY_TEST_IMAPS_PORT"));
    return {"--home", dir.path(), outgoing ? "--smtp" : pop3 ? "--pop3" : "--imap", url, "--user", m_stack.value("TARNBY_TEST_SMTP_USER"),
            "--password-file", passwordFile, "--ca-file", m_stack.value("TARNBY_TEST_TLS_CA")};
}

void TestMailCommand::init()
{
    QVERIFY(m_stack.clear());
}

void TestMailCommand::sendAndReceive_data()
{
    QTest::addColumn<bool>("pop3");
    QTest::addRow("IMAP") << false;
    QTest::addRow("POP3") << true;
}

void TestMailCommand::sendAndReceive()
{
    QFETCH(bool, pop3);
    TestDir dir;
    const QString a = dir.createFile("files/Beach.jpg", QByteArray(40000, 'p'));
    const QString b = dir.createFile("files/notes.txt", "notes");
    const clitest::Run sent = runCli("mail", QStringList{"send"} + accountArgs(dir, true)
                                                 + QStringList{"--to", "one@tarnby.test", "--to", "two@tarnby.test",
                                                               "--subject", "cli", "--message", "hello", a, b});
    QVERIFY2(sent.exitCode == 0, sent.err.constData());
    QCOMPARE(sent.out.count('\n'), 4);
    const QByteArray log = dir.read("FileSend.LOG");
    QCOMPARE(log.count("\r\n"), 4);
    QVERIFY(log.startsWith((a + " - one@tarnby.test - ").toUtf8()));
    QVERIFY(QFile::exists(dir.filePath("files/Beach.Zip")));
    QCOMPARE(m_stack.waitForMessages(2), 2);

    const QString folder = dir.filePath("in");
    const QStringList receive = QStringList{"receive"} + accountArgs(dir, false, "tarnby-test-pass", pop3);
    const clitest::Run received = runCli("mail", receive + QStringList{"--to", folder});
    QVERIFY2(received.exitCode == 0, received.err.constData());
    const QList<QByteArray> lines = received.out.trimmed().split('\n');
    QCOMPARE(lines.size(), 2);
    QVERIFY(lines[0].contains("\tcli\t"));
    QStringList files = QDir(folder).entryList(QDir::Files);
    files.sort();
    QCOMPARE(files, (QStringList{"Beach (2).Zip", "Beach (2).jpg", "Beach.Zip", "Beach.jpg", "notes (2).txt", "notes.txt"}));
    QCOMPARE(dir.read("in/Beach.jpg"), QByteArray(40000, 'p'));

    // Everything was read: nothing unread is left.
    const QList<QByteArray> again = runCli("mail", receive + QStringList{"--to", folder}).out.trimmed().split('\n');
    QCOMPARE(again, QList<QByteArray>{QByteArray()});
    // --all reads them again.
    QCOMPARE(runCli("mail", receive + QStringList{"--all", "--to", folder}).out.trimmed().count('\n'), 1);
}

void TestMailCommand::failures_data()
{
    QTest::addColumn<QString>("what");
    QTest::addColumn<int>("status");
    QTest::addColumn<QString>("words");
    QTest::addRow("rejected recipient") << "rejected" << 1 << "Recipient address rejected";
    QTest::addRow("wrong password") << "password" << 1 << "refused the user name or password";
    QTest::addRow("no address") << "noaddress" << 2 << "Usage";
    QTest::addRow("bad server address") << "url" << 1 << "is not a server address";
    QTest::addRow("an IMAP address given as --pop3") << "pop3url" << 1 << "is not a server address for --pop3";
}

void TestMailCommand::failures()
{
    QFETCH(QString, what);
    QFETCH(int, status);
    QFETCH(QString, words);
    TestDir dir;
    const QString a = dir.createFile("a.txt", "a");
    QStringList args = QStringList{"send"} + accountArgs(dir, true, what == "password" ? "wrong" : "tarnby-test-pass");
    if (what == "rejected")
        args << "--to" << "x@y.invalid";
    else if (what != "noaddress")
        args << "--to" << "one@tarnby.test";
    if (what == "url")
        args << "--smtp" << "http://example.org";
    args << a;
    if (what == "pop3url")
        args = {"receive", "--home", dir.path(), "--pop3", "imap://127.0.0.1", "--password-file", dir.filePath("password")};
    const clitest::Run run = runCli("mail", args);
    QCOMPARE(run.exitCode, status);
    QVERIFY2(run.err.contains(words.toUtf8()), run.err.constData());
    QVERIFY(!run.err.contains("tarnby-test-pass"));
}

MAILSTACK_TEST_MAIN(TestMailCommand)
#include "tst_mailcommand.moc"
