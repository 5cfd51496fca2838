#include "core/mail/MailJobs.h"
#include "core/platform/mail/MailTransport.h"

#include "MailStack.h"
#include "TestDir.h"

#include <QDir>
#include <QTest>
#include <QUuid>

using namespace tarnby;
using namespace tarnby::mail;
using namespace tarnby::mailnet;

Q_DECLARE_METATYPE(tarnby::mailnet::MailErrorKind)

namespace {
QString uniqueSubject(const QString &what)
{
    return what + QLatin1Char(' ') + QUuid::createUuid().toString(QUuid::WithoutBraces).left(8);
}

// Every message of the inbox, oldest first.
QList<MessageSummary> readInbox(const MailStack &stack, bool unreadOnly = false)
{
    QList<MessageSummary> result;
    MailReader reader;
    if (!reader.connect(stack.imap()).ok() || !reader.fetch(unreadOnly).ok())
        return result;
    for (int i = 0; i < reader.count(); ++i) {
        MessageSummary summary;
        if (reader.read(i, &summary).ok())
            result << summary;
    }
    return result;
}
} // namespace

class TestMailServer : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void sendToThreeAddresses_data();
    void sendToThreeAddresses();
    void rejectedRecipient();
    void signOnFailures_data();
    void signOnFailures();
    void receiveAndUnpack();
    void receiveOverPop3();
    void endOfMessages();
    void messageWithoutAttachments();
    void hostileAttachmentNames();
    void attachmentSizes();
    void readerEndsAfterReading_data();
    void readerEndsAfterReading();

private:
    MailStack m_stack;
};

void TestMailServer::init()
{
    QVERIFY(m_stack.clear());
}

void TestMailServer::sendToThreeAddresses_data()
{
    QTest::addColumn<bool>("omitZip");
    QTest::addColumn<QStringList>("attachments");
    QTest::addRow("the archive") << false << QStringList{"Beach.Zip"};
    QTest::addRow("Omit Zip File: the files themselves") << true << QStringList{"Beach.jpg", "notes.txt"};
}

void TestMailServer::sendToThreeAddresses()
{
    QFETCH(bool, omitZip);
    QFETCH(QStringList, attachments);
    TestDir dir;
    SendRequest request;
    request.files = {dir.createFile("Beach.jpg", QByteArray(20000, 'j')), dir.createFile("notes.txt", "notes")};
    request.recipients = {"one@tarnby.test", "two@tarnby.test", "three@example.org"};
    request.subject = uniqueSubject("three");
    request.message = "Here they are.";
    request.omitZip = omitZip;
    request.fromAddress = m_stack.address();
    request.userName = "Tester";
    request.server = m_stack.smtp();
    const SendResult result = sendFiles(request);
    QVERIFY2(result.ok, qPrintable(result.errors.join('\n')));
    QCOMPARE(result.messagesSent, 3);
    QCOMPARE(result.historyLines.size(), 6);
    QVERIFY(result.historyLines[0].startsWith(request.files[0] + " - one@tarnby.test - "));
    QVERIFY(result.historyLines[5].startsWith(request.files[1] + " - three@example.org - "));
    // The archive is made in every case.
    QCOMPARE(result.archivePath, dir.filePath("Beach.Zip"));
    QVERIFY(QFile::exists(result.archivePath));

    QCOMPARE(m_stack.waitForMessages(3), 3);
    const QList<MessageSummary> inbox = readInbox(m_stack);
    QCOMPARE(inbox.size(), 3);
    for (const MessageSummary &m : inbox) {
        QCOMPARE(m.subject, request.subject);
        QCOMPARE(m.text.trimmed(), QStringLiteral("Here they are."));
        QCOMPARE(m.attachments, attachments);
        QCOMPARE(m.senderAddress, m_stack.address());
    }
}

void TestMailServer::rejectedRecipient()
{
    TestDir dir;
    SendRequest request;
    request.files = {dir.createFile("a.txt", "a")};
    request.recipients = {"nobody@nowhere.invalid", "one@tarnby.test"};
    request.fromAddress = m_stack.address();
    request.server = m_stack.smtp();
    const SendResult result = sendFiles(request);
    QVERIFY(!result.ok);
    QCOMPARE(result.errors.size(), 1);
    QVERIFY2(result.errors[0].contains("Recipient address rejected"), qPrintable(result.errors[0]));
    // The other address still got its message and its history line.
    QCOMPARE(result.messagesSent, 1);
    QCOMPARE(result.historyLines.size(), 1);
    QVERIFY(result.historyLines[0].contains(" - one@tarnby.test - "));
}

void TestMailServer::signOnFailures_data()
{
    QTest::addColumn<QString>("change");
    QTest::addColumn<MailErrorKind>("kind");
    QTest::addColumn<QString>("words");
    QTest::addRow("wrong password") << "password" << MailErrorKind::Authentication << "refused the user name or password";
    QTest::addRow("closed port") << "port" << MailErrorKind::Connection << "No connection to 127.0.0.1:1";
    QTest::addRow("untrusted certificate") << "ca" << MailErrorKind::Certificate << "not trusted";
    QTest::addRow("plain connection not allowed") << "plain" << MailErrorKind::PlainRefused << "would not be encrypted";
    QTest::addRow("implicit TLS works") << "smtps" << MailErrorKind::None << "";
    QTest::addRow("plain connection when allowed") << "allowplain" << MailErrorKind::None << "";
}

void TestMailServer::signOnFailures()
{
    QFETCH(QString, change);
    QFETCH(MailErrorKind, kind);
    QFETCH(QString, words);
    ServerSettings smtp = m_stack.smtp();
    ServerSettings imap = m_stack.imap();
    ServerSettings pop3 = m_stack.pop3();
    for (ServerSettings *s : {&smtp, &imap, &pop3}) {
        if (change == "password")
            s->password = "wrong";
        else if (change == "port")
            s->port = 1;
        else if (change == "ca")
            s->caFile.clear();
        else if (change == "plain" || change == "allowplain") {
            s->security = Security::None;
            s->allowPlain = change == "allowplain";
        }
    }
    if (change == "smtps") {
        smtp.security = imap.security = pop3.security = Security::Tls;
        smtp.port = m_stack.value("TARNBY_TEST_SMTPS_PORT").toInt();
        imap.port = m_stack.value("TARNBY_TEST_IMAPS_PORT").toInt();
        pop3.port = m_stack.value("TARNBY_TEST_POP3S_PORT").toInt();
    }
    SmtpSender sender;
    const MailError sent = sender.connect(smtp);
    QCOMPARE(sent.kind, kind);
    QVERIFY2(sent.text.contains(words), qPrintable(sent.text));
    if (kind == MailErrorKind::None)
        QVERIFY(sender.isConnected());
    for (const ServerSettings &incoming : {imap, pop3}) {
        MailReader reader;
        const MailError read = reader.connect(incoming);
        QCOMPARE(read.kind, kind);
        QVERIFY2(read.text.contains(words), qPrintable(read.text));
        if (kind == MailErrorKind::None)
            QVERIFY(reader.fetch(false).ok());
    }
}

void TestMailServer::receiveAndUnpack()
{
    TestDir dir;
    SendRequest request;
    request.files = {dir.createFile("send/Beach.jpg", QByteArray(300000, 'b')), dir.createFile("send/notes.txt", "notes")};
    request.recipients = {m_stack.address()};
    request.fromAddress = m_stack.address();
    request.userName = "Tester";
    request.message = "Two files.";
    request.server = m_stack.smtp();
    const SendResult sent = sendFiles(request);
    QVERIFY2(sent.ok, qPrintable(sent.errors.join('\n')));
    QCOMPARE(m_stack.waitForMessages(1), 1);

    MailReader reader;
    QVERIFY(reader.connect(m_stack.imap()).ok());
    QVERIFY(reader.fetch(true).ok());
    QCOMPARE(reader.count(), 1);
    MessageSummary summary;
    const MailError readError = reader.read(0, &summary);
    QVERIFY2(readError.ok(), qPrintable(readError.text));
    QCOMPARE(summary.subject, QStringLiteral("Pictures sent from Tester"));
    QCOMPARE(summary.senderAddress, m_stack.address());
    QCOMPARE(summary.senderName, QStringLiteral("Tester"));
    QVERIFY(qAbs(summary.date.secsTo(QDateTime::currentDateTime())) < 120);
    QCOMPARE(summary.attachments, QStringList{"Beach.Zip"});

    // A file of the archive's name is there already: the new one is numbered.
    const QString folder = dir.createFolder("Pictures");
    dir.createFile("Pictures/Beach.Zip", "older");
    QList<SavedAttachment> saved;
    const MailError error = reader.saveAttachments(0, attachmentFileCreator(folder), &saved);
    QVERIFY2(error.ok(), qPrintable(error.text));
    QCOMPARE(saved.size(), 1);
    QCOMPARE(saved[0].path, dir.filePath("Pictures/Beach (2).Zip"));
    QCOMPARE(dir.read("Pictures/Beach.Zip"), QByteArray("older"));
    QCOMPARE(dir.read("Pictures/Beach (2).Zip"), dir.read("send/Beach.Zip"));

    const UnpackResult unpacked = unpackReceivedArchive(saved[0].path, folder);
    QVERIFY2(unpacked.ok, qPrintable(unpacked.errorString));
    QCOMPARE(unpacked.files, (QStringList{dir.filePath("Pictures/Beach.jpg"), dir.filePath("Pictures/notes.txt")}));
    QCOMPARE(dir.read("Pictures/Beach.jpg"), QByteArray(300000, 'b'));

    // Read now: an unread-only fetch finds nothing more.
    QVERIFY(reader.fetch(true).ok());
    QCOMPARE(reader.count(), 0);
}

void TestMailServer::receiveOverPop3()
{
    TestDir dir;
    OutgoingMessage message = m_stack.toSelf(QString());
    message.attachments = {{dir.createFile("Beach.jpg", QByteArray(200000, 'q')), "Beach.jpg"}};
    for (const char *subject : {"first", "second"}) {
        message.subject = QString::fromLatin1(subject);
        QVERIFY(m_stack.send(message).ok());
    }
    QCOMPARE(m_stack.waitForMessages(2), 2);

    // Without a seen file every message counts as unread.
    const QString seen = dir.filePath("POP3Seen.TXT");
    MailReader blind;
    QVERIFY(blind.connect(m_stack.pop3()).ok());
    QVERIFY(blind.fetch(true).ok());
    QCOMPARE(blind.count(), 2);
    blind.disconnect();

    // Another account's lines in the seen file are kept as they are.
    dir.createFile("POP3Seen.TXT", "someone@elsewhere:110\tabc\n");
    MailReader reader;
    const MailError connected = reader.connect(m_stack.pop3(seen));
    QVERIFY2(connected.ok(), qPrintable(connected.text));
    QVERIFY(reader.fetch(true).ok());
    QCOMPARE(reader.count(), 2);
    MessageSummary summary;
    QVERIFY(reader.read(0, &summary).ok());
    QCOMPARE(summary.subject, QStringLiteral("first"));
    QCOMPARE(summary.attachments, QStringList{"Beach.jpg"});
    QList<SavedAttachment> saved;
    const QString folder = dir.createFolder("in");
    QVERIFY(reader.saveAttachments(0, attachmentFileCreator(folder), &saved).ok());
    QCOMPARE(dir.read("in/Beach.jpg"), QByteArray(200000, 'q'));

    // The first is read here now: only the second is unread, also for a
    // new connection.
    QVERIFY(reader.fetch(true).ok());
    QCOMPARE(reader.count(), 1);
    reader.disconnect();
    MailReader again;
    QVERIFY(again.connect(m_stack.pop3(seen)).ok());
    QVERIFY(again.fetch(true).ok());
    QCOMPARE(again.count(), 1);
    QVERIFY(again.read(0, &summary).ok());
    QCOMPARE(summary.subject, QStringLiteral("second"));
    QVERIFY(again.fetch(true).ok());
    QCOMPARE(again.count(), 0);
    QVERIFY(again.fetch(false).ok());
    QCOMPARE(again.count(), 2);
    again.disconnect();
    QVERIFY(dir.read("POP3Seen.TXT").startsWith("someone@elsewhere:110\tabc\n"));
    QCOMPARE(dir.read("POP3Seen.TXT").count('\n'), 3);

    // Reading over POP3 deleted nothing on the server.
    QCOMPARE(readInbox(m_stack).size(), 2);
}

void TestMailServer::endOfMessages()
{
    MailReader reader;
    QVERIFY(reader.connect(m_stack.imap()).ok());
    QVERIFY(reader.fetch(false).ok());
    QCOMPARE(reader.count(), 0);
    MessageSummary summary;
    QCOMPARE(reader.read(0, &summary).kind, MailErrorKind::Protocol);
}

void TestMailServer::messageWithoutAttachments()
{
    OutgoingMessage message = m_stack.toSelf(QString::fromUtf8("Just words, \u00e9t\u00e9"));
    message.text = QString::fromUtf8("No files here. \u00c5");
    QVERIFY(m_stack.send(message).ok());
    QCOMPARE(m_stack.waitForMessages(1), 1);
    const QList<MessageSummary> inbox = readInbox(m_stack);
    QCOMPARE(inbox.size(), 1);
    QCOMPARE(inbox[0].subject, message.subject);
    QCOMPARE(inbox[0].text.trimmed(), message.text);
    QVERIFY(inbox[0].attachments.isEmpty());
}

void TestMailServer::hostileAttachmentNames()
{
    TestDir dir;
    const QString payload = dir.createFile("payload.bin", "evil");
    OutgoingMessage message = m_stack.toSelf("names");
    message.attachments = {{payload, "../../x"}, {payload, "photos.zip"}, {payload, "CON"}, {payload, ".."}};
    QVERIFY(m_stack.send(message).ok());
    QCOMPARE(m_stack.waitForMessages(1), 1);

    MailReader reader;
    QVERIFY(reader.connect(m_stack.imap()).ok());
    QVERIFY(reader.fetch(false).ok());
    const QString folder = dir.createFolder("a/b/Pictures");
    QList<SavedAttachment> saved;
    QVERIFY(reader.saveAttachments(0, attachmentFileCreator(folder), &saved).ok());
    QStringList names;
    for (const SavedAttachment &s : saved) {
        names << s.name;
        QCOMPARE(QFileInfo(s.path).absolutePath(), folder);
    }
    QCOMPARE(names, (QStringList{"../../x", "photos.zip", "CON", ".."}));
    QCOMPARE(QDir(folder).entryList(QDir::Files, QDir::Name),
             (QStringList{"_CON", "attachment", "photos.zip", "x"}));
    QVERIFY(!QFile::exists(dir.filePath("x")));
    QVERIFY(!QFile::exists(dir.filePath("a/x")));
}

void TestMailServer::attachmentSizes()
{
    // Attachments are encoded in lines of 57 bytes: sizes around a line and
    // an empty file come back byte for byte.
    TestDir dir;
    const QList<int> sizes{0, 1, 56, 57, 58, 57 * 16384, 57 * 16384 + 5};
    OutgoingMessage message = m_stack.toSelf("sizes");
    for (int size : sizes) {
        QByteArray data(size, Qt::Uninitialized);
        for (int i = 0; i < size; ++i)
            data[i] = char((i * 131 + size) % 256);
        const QString name = QStringLiteral("part%1.bin").arg(size);
        message.attachments.append({dir.createFile(name, data), name});
    }
    QVERIFY(m_stack.send(message).ok());
    QCOMPARE(m_stack.waitForMessages(1), 1);
    MailReader reader;
    QVERIFY(reader.connect(m_stack.imap()).ok());
    QVERIFY(reader.fetch(false).ok());
    const QString folder = dir.createFolder("in");
    QList<SavedAttachment> saved;
    QVERIFY(reader.saveAttachments(0, attachmentFileCreator(folder), &saved).ok());
    QCOMPARE(saved.size(), sizes.size());
    for (int size : sizes) {
        const QString name = QStringLiteral("part%1.bin").arg(size);
        QVERIFY2(dir.read("in/" + name) == dir.read(name), qPrintable(name));
    }
}


void TestMailServer::readerEndsAfterReading_data()
{
    QTest::addColumn<bool>("pop3");
    QTest::addColumn<bool>("plain");
    QTest::addColumn<bool>("cancelled");
    for (bool cancelled : {false, true}) {
        const char *how = cancelled ? "cancelled before it ends" : "ends";
        QTest::addRow("IMAP, STARTTLS, %s", how) << false << false << cancelled;
        QTest::addRow("IMAP, plain, %s", how) << false << true << cancelled;
        QTest::addRow("POP3, STARTTLS, %s", how) << true << false << cancelled;
        QTest::addRow("POP3, plain, %s", how) << true << true << cancelled;
    }
}

// A reader that read a message and saved its attachment is destroyed while
// still connected, as the receive window leaves it; a window that closes sets
// the cancel flag first, so that signing off fails at once. Either way the
// reader must end cleanly (the sanitizer build sees what a plain build may
// not).
void TestMailServer::readerEndsAfterReading()
{
    QFETCH(bool, pop3);
    QFETCH(bool, plain);
    QFETCH(bool, cancelled);
    TestDir dir;
    OutgoingMessage message = m_stack.toSelf(uniqueSubject("ends"));
    message.attachments = {{dir.createFile("a.jpg", QByteArray(5000, 'a')), "a.jpg"}};
    QVERIFY(m_stack.send(message).ok());
    QCOMPARE(m_stack.waitForMessages(1), 1);

    ServerSettings server = pop3 ? m_stack.pop3(dir.filePath("seen")) : m_stack.imap();
    if (plain) {
        server.security = Security::None;
        server.allowPlain = true;
    }
    std::atomic_bool cancel{false};
    server.cancel = &cancel;
    {
        MailReader reader;
        const MailError connected = reader.connect(server);
        QVERIFY2(connected.ok(), qPrintable(connected.text));
        QVERIFY(reader.fetch(true).ok());
        QCOMPARE(reader.count(), 1);
        MessageSummary summary;
        QVERIFY(reader.read(0, &summary).ok());
        QCOMPARE(summary.subject, message.subject);
        QList<SavedAttachment> saved;
        QVERIFY(reader.saveAttachments(0, attachmentFileCreator(dir.createFolder("in")), &saved).ok());
        QVERIFY(reader.isConnected());
        cancel = cancelled;
    }
    QCOMPARE(dir.read("in/a.jpg"), QByteArray(5000, 'a'));
}

MAILSTACK_TEST_MAIN(TestMailServer)
#include "tst_mailserver.moc"
