#include "core/mail/MailJobs.h"
#include "core/settings/MailPasswords.h"
#include "ui/mail/RecvFile1.h"
#include "ui/mail/SendFile1.h"

#include "MailStack.h"
#include "UiFixture.h"

#include <QApplication>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QUuid>

using namespace tarnby;
using namespace tarnby::ui;

// The sending and receiving windows, driven as a user would, against the
// local Postfix and Dovecot. The passwords come from a store in the process,
// put in the desktop keyring's place.
class TestMailWindowServer : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void cleanupTestCase();
    void init();
    void sendAndReceive_data();
    void sendAndReceive();
    void wrongPasswordInKeyring();

private:
    // The account of the local servers in the options, with its passwords in
    // the store; plain connections, chosen explicitly in the options (the
    // windows trust only the system's certificate authorities).
    void setAccount(settings::ProgramOptions &o, bool pop3, const QString &password);
    MailStack m_stack;
    std::shared_ptr<settings::MemoryPasswordStore> m_passwords = std::make_shared<settings::MemoryPasswordStore>();
};

void TestMailWindowServer::initTestCase()
{
    settings::MailPasswords::setStore(m_passwords);
}

void TestMailWindowServer::cleanupTestCase()
{
    settings::MailPasswords::setStore(nullptr);
}

void TestMailWindowServer::init()
{
    QVERIFY(m_stack.clear());
}

void TestMailWindowServer::setAccount(settings::ProgramOptions &o, bool pop3, const QString &password)
{
    const QString user = m_stack.value("TARNBY_TEST_SMTP_USER");
    o.fromAddress = m_stack.address();
    o.smtpHost = m_stack.value("TARNBY_TEST_SMTP_HOST");
    o.smtpPort = m_stack.value("TARNBY_TEST_SMTP_PORT").toInt();
    o.smtpSecurity = QStringLiteral("None");
    o.smtpUser = user;
    o.incomingProtocol = pop3 ? QStringLiteral("POP3") : QStringLiteral("IMAP");
    o.incomingHost = m_stack.value("TARNBY_TEST_IMAP_HOST");
    o.incomingPort = m_stack.value(pop3 ? "TARNBY_TEST_POP3_PORT" : "TARNBY_TEST_IMAP_PORT").toInt();
    o.incomingSecurity = QStringLiteral("None");
    o.incomingUser = user;
    // The keys the options window writes.
    m_passwords->write(settings::mailPasswordKey(settings::MailServer::Outgoing, {}, user, o.smtpHost), password);
    m_passwords->write(settings::mailPasswordKey(settings::MailServer::Incoming, o.incomingProtocol, user, o.incomingHost),
                       password);
}

void TestMailWindowServer::sendAndReceive_data()
{
    QTest::addColumn<bool>("pop3");
    QTest::addRow("received over IMAP") << false;
    QTest::addRow("received over POP3") << true;
}

void TestMailWindowServer::sendAndReceive()
{
    QFETCH(bool, pop3);
    UiFixture f;
    setAccount(f.state.options, pop3, m_stack.value("TARNBY_TEST_SMTP_PASS"));
    const QString beach = f.home.createFile("send/Beach.jpg", QByteArray(60000, 'b'));
    const QString notes = f.home.createFile("send/notes.txt", "notes");
    const QString subject = QStringLiteral("window ") + QUuid::createUuid().toString(QUuid::WithoutBraces).left(8);

    {
        SendFile1 send(f.state, f.services);
        send.start(beach);
        send.addFile(notes);
        send.findChild<QPlainTextEdit *>("CMBSENDTO")->setPlainText(m_stack.address() + QStringLiteral("\r\n"));
        send.findChild<QLineEdit *>("Text1_0")->setText(subject);
        send.findChild<QPlainTextEdit *>("Text1_1")->setPlainText(QStringLiteral("From the window."));
        QSignalSpy finished(&send, &SendFile1::sendFinished);
        send.findChild<QPushButton *>("OKBtn")->click();
        QVERIFY(finished.wait(60000));
        QVERIFY2(finished.at(0).at(0).toBool(), qPrintable(f.responder.messageTexts().join('\n')));
        QCOMPARE(f.responder.messageTexts(), QStringList{"File successfully sent to E-Mail Program"});
        QCOMPARE(send.historyLines().size(), 2);
        QVERIFY(send.historyLines().at(0).startsWith(beach + " - " + m_stack.address() + " - "));
        QCOMPARE(send.zipArchiveName(), f.home.filePath("send/Beach.Zip"));
    }
    QCOMPARE(m_stack.waitForMessages(1), 1);

    f.responder.clear();
    RecvFile1 recv(f.state, f.services);
    QSignalSpy shown(&recv, &RecvFile1::messageShown);
    recv.findChild<QPushButton *>("RecvBtn")->click();
    QVERIFY(shown.wait(60000));
    QCOMPARE(recv.findChild<QLineEdit *>("TxtSubject")->text(), subject);
    QCOMPARE(recv.findChild<QLineEdit *>("TxtRecdFrom")->text(),
             m_stack.value("TARNBY_TEST_SMTP_USER") + " | " + m_stack.address());
    QCOMPARE(recv.findChild<QPlainTextEdit *>("TxtMessage")->toPlainText().trimmed(), QStringLiteral("From the window."));
    QCOMPARE(recv.findChild<QLabel *>("Label2")->text(), QStringLiteral("- Attachments Present -"));
    const QString pictures = f.home.filePath("Pictures");
    QCOMPARE(recv.findChild<QLineEdit *>("TxtZipFile")->text(), pictures + "/Beach.Zip");
    auto *open = recv.findChild<QPushButton *>("OpenBtn");
    QVERIFY(open->isEnabled());
    open->click();
    QCOMPARE(listTexts(recv.findChild<QListWidget *>("List1")), (QStringList{pictures + "/Beach.jpg", pictures + "/notes.txt"}));
    QCOMPARE(f.home.read("Pictures/Beach.jpg"), QByteArray(60000, 'b'));

    // The only message was shown: Next meets the end and starts over.
    recv.findChild<QPushButton *>("RecvNextBtn")->click();
    QVERIFY(shown.wait(60000));
    QCOMPARE(f.responder.messageTexts(), QStringList{"      End of E-Mail Messages"});
    QCOMPARE(recv.currentIndex(), 0);
}

void TestMailWindowServer::wrongPasswordInKeyring()
{
    UiFixture f;
    setAccount(f.state.options, false, QStringLiteral("wrong"));
    const QString file = f.home.createFile("a.txt", "a");
    SendFile1 send(f.state, f.services);
    send.start(file);
    send.findChild<QPlainTextEdit *>("CMBSENDTO")->setPlainText(m_stack.address());
    QSignalSpy finished(&send, &SendFile1::sendFinished);
    send.findChild<QPushButton *>("OKBtn")->click();
    QVERIFY(finished.wait(60000));
    QVERIFY(!finished.at(0).at(0).toBool());
    QCOMPARE(f.responder.messageTexts(), QStringList{"File did not send successfully to E-Mail Program"});
    QVERIFY(send.historyLines().isEmpty());

    RecvFile1 recv(f.state, f.services);
    QSignalSpy shown(&recv, &RecvFile1::messageShown);
    recv.findChild<QPushButton *>("RecvBtn")->click();
    QVERIFY(shown.wait(60000));
    const QString status = recv.findChild<QLabel *>("Label2")->text();
    QVERIFY2(status.contains("refused the user name or password"), qPrintable(status));
}

MAILSTACK_TEST_MAIN_WITH(QApplication, TestMailWindowServer)
#include "tst_mailwindowserver.moc"
