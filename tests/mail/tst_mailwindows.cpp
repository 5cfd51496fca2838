#include "core/mail/SendHistory.h"
#include "ui/mail/MailAddr1.h"
#include "ui/mail/MailWindows.h"
#include "ui/mail/RecvFile1.h"
#include "ui/mail/SendFile1.h"

#include "ModalCloser.h"
#include "UiFixture.h"
#include "ZipWriter.h"

#include <QAction>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace tarnby;
using namespace tarnby::ui;

class TestMailWindows : public QObject
{
    Q_OBJECT
private slots:
    void addressBookOpensList();
    void addNeedsBothBoxes_data();
    void addNeedsBothBoxes();
    void saveEmptyListMakesEmptyFile();
    void closeWithChangesAsksNoByDefault();
    void editInPlaceAndSelect();
    void cancelledOpenChangesNothing();
    void nameFromContacts_data();
    void nameFromContacts();
    void sendWindowOpens();
    void sendWindowHelpMenu();
    void sendNeedsAddress_data();
    void sendNeedsAddress();
    void clearLog_data();
    void clearLog();
    void databaseCheck();
    void receiveWindowOpens();
    void endOfMessages();
    void messageWithoutAttachments();
    void zipAttachmentInSmallLetters();
    void knownTypeAttachment();
    void hostileArchiveRefused();
};

void TestMailWindows::addressBookOpensList()
{
    UiFixture f;
    const QString list = f.home.createFile("Friends.MLS", "Anne - a@x.org\r\nJean-Luc - j@x.org\r\n");
    f.responder.acceptFile(list);
    MailAddr1 window(f.state, f.services, &f.store, "O");
    QCOMPARE(window.windowTitle(), QStringLiteral("E-Mail Names and Addresses from - Friends.MLS"));
    QCOMPARE(f.responder.dialogs().size(), 1);
    QCOMPARE(f.responder.dialogs()[0].filter, QStringLiteral("Address List | *.MLS"));
    QCOMPARE(f.responder.dialogs()[0].defaultSuffix, QStringLiteral("MLS"));
    QCOMPARE(f.responder.dialogs()[0].fileName, f.home.filePath("MailAddr.MLS"));
    auto *list1 = window.findChild<QListWidget *>("List1");
    QCOMPARE(listTexts(list1), (QStringList{"Anne - a@x.org", "Jean-Luc - j@x.org"}));
    QCOMPARE(window.findChild<QLineEdit *>("Text1_0")->text(), QStringLiteral("Anne"));
    // The name with a hyphen splits at its first hyphen.
    list1->setCurrentRow(1);
    QCOMPARE(window.findChild<QLineEdit *>("Text1_0")->text(), QStringLiteral("Jea"));
    QCOMPARE(window.findChild<QLineEdit *>("Text1_1")->text(), QStringLiteral("uc - j@x.org"));
    QVERIFY(!window.isChanged());
    QVERIFY(MailAddr1::isOpen());
}

void TestMailWindows::nameFromContacts_data()
{
    QTest::addColumn<int>("chosen"); // -1: the choice is cancelled
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addRow("the second of two") << 1 << "Bob" << "b@x.org";
    QTest::addRow("the first") << 0 << "Anne Smith" << "a@x.org";
    QTest::addRow("cancelled: the boxes stay as they were") << -1 << "" << "";
}

void TestMailWindows::nameFromContacts()
{
    QFETCH(int, chosen);
    QFETCH(QString, name);
    QFETCH(QString, address);
    UiFixture f;
    const QString vcf = f.home.createFile("contacts.vcf", "BEGIN:VCARD\r\nFN:Anne Smith\r\nEMAIL:a@x.org\r\nEND:VCARD\r\n"
                                                         "BEGIN:VCARD\r\nFN:Bob\r\nEMAIL:b@x.org\r\nEND:VCARD\r\n");
    MailAddr1 window(f.state, f.services, &f.store, "S");
    f.responder.acceptFile(vcf);
    DialogAnswer answer;
    answer.accepted = chosen >= 0;
    answer.index = chosen;
    f.responder.answerDialog(answer);
    window.findChild<QPushButton *>("OutLkBtn")->click();
    QCOMPARE(f.responder.dialogs().size(), 2);
    const DialogRequest &choice = f.responder.dialogs()[1];
    QCOMPARE(choice.kind, DialogKind::Choice);
    QCOMPARE(choice.items, (QStringList{"Anne Smith - a@x.org", "Bob - b@x.org"}));
    QCOMPARE(window.findChild<QLineEdit *>("Text1_0")->text(), name);
    QCOMPARE(window.findChild<QLineEdit *>("Text1_1")->text(), address);

    // The contacts file is remembered: the next time only the choice is asked.
    f.responder.clear();
    f.responder.answerDialog(answer);
    window.findChild<QPushButton *>("OutLkBtn")->click();
    QCOMPARE(f.responder.dialogs().size(), 1);
    QCOMPARE(f.responder.dialogs()[0].kind, DialogKind::Choice);
}

void TestMailWindows::addNeedsBothBoxes_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addColumn<int>("added");
    QTest::addRow("both filled") << "Anne" << "a@x.org" << 1;
    QTest::addRow("name empty") << "" << "a@x.org" << 0;
    QTest::addRow("address empty") << "Anne" << "" << 0;
}

void TestMailWindows::addNeedsBothBoxes()
{
    QFETCH(QString, name);
    QFETCH(QString, address);
    QFETCH(int, added);
    UiFixture f;
    MailAddr1 window(f.state, f.services, &f.store, "N");
    window.findChild<QLineEdit *>("Text1_0")->setText(name);
    window.findChild<QLineEdit *>("Text1_1")->setText(address);
    window.findChild<QPushButton *>("AddBtn")->click();
    QCOMPARE(window.entries().size(), added);
    QCOMPARE(window.isChanged(), added == 1);
    if (added)
        QCOMPARE(window.entries()[0], QStringLiteral("Anne - a@x.org"));
}

void TestMailWindows::saveEmptyListMakesEmptyFile()
{
    UiFixture f;
    MailAddr1 window(f.state, f.services, &f.store, "S");
    const QString path = f.home.filePath("Empty.MLS");
    f.responder.acceptFile(path);
    window.findChild<QPushButton *>("SaveBtn")->click();
    QCOMPARE(f.responder.dialogs().last().kind, DialogKind::SaveFile);
    QVERIFY(QFile::exists(path));
    QCOMPARE(QFileInfo(path).size(), 0);
}

void TestMailWindows::closeWithChangesAsksNoByDefault()
{
    UiFixture f;
    const QString list = f.home.createFile("L.MLS", "Anne - a@x.org\r\n");
    f.responder.acceptFile(list);
    MailAddr1 window(f.state, f.services, &f.store, "O");
    window.findChild<QPushButton *>("DeleteBtn")->click();
    QVERIFY(window.isChanged());
    window.close(); // the script answers No
    QCOMPARE(f.responder.messages().size(), 1);
    QCOMPARE(f.responder.messages()[0].text, QStringLiteral("Do you want to Save E-Mail Addresses ?"));
    QCOMPARE(f.responder.messages()[0].buttons, MessageButtons::YesNo);
    QVERIFY(f.responder.messages()[0].defaultNo);
    QCOMPARE(f.home.read("L.MLS"), QByteArray("Anne - a@x.org\r\n"));
}

void TestMailWindows::editInPlaceAndSelect()
{
    UiFixture f;
    const QString list = f.home.createFile("L.MLS", "Anne - a@x.org\r\nBob - b@x.org\r\n");
    f.responder.acceptFile(list);
    SendFile1 send(f.state, f.services);
    MailAddr1 window(f.state, f.services, &f.store, "O", &send);
    connect(&window, &MailAddr1::entrySelected, &send, &SendFile1::addRecipient);
    window.findChild<QListWidget *>("List1")->setCurrentRow(1);
    QTest::keyClicks(window.findChild<QLineEdit *>("Text1_1"), "y");
    QCOMPARE(window.entries()[1], QStringLiteral("Bob - b@x.orgy"));
    window.findChild<QPushButton *>("SelectBtn")->click();
    window.findChild<QListWidget *>("List1")->setCurrentRow(0);
    window.findChild<QPushButton *>("SelectBtn")->click();
    QCOMPARE(send.findChild<QPlainTextEdit *>("CMBSENDTO")->toPlainText(), QStringLiteral("b@x.orgy\na@x.org\n"));
    QVERIFY(f.responder.messages().isEmpty());
}

void TestMailWindows::cancelledOpenChangesNothing()
{
    UiFixture f;
    f.responder.cancelDialog();
    MailAddr1 window(f.state, f.services, &f.store, "O");
    QCOMPARE(window.windowTitle(), QStringLiteral("E-Mail Names and Addresses"));
    QVERIFY(window.listFile().isEmpty());
    QVERIFY(window.entries().isEmpty());
}

void TestMailWindows::sendWindowOpens()
{
    UiFixture f;
    f.state.options.toAddress1 = "friend@x.org";
    f.home.createFile("FileSend.LOG", "/p/a.jpg - b@x.org - 5/14/2000 3:12:09 PM\r\n");
    const QString current = f.home.createFile("Beach.jpg", "j");
    SendFile1 window(f.state, f.services);
    window.start(current);
    QCOMPARE(window.windowTitle(), QStringLiteral("Send Files with E-Mail"));
    QCOMPARE(window.files(), QStringList{current});
    QCOMPARE(window.historyLines(), QStringList{"/p/a.jpg - b@x.org - 5/14/2000 3:12:09 PM"});
    QCOMPARE(window.findChild<QPlainTextEdit *>("CMBSENDTO")->toPlainText(), QStringLiteral("friend@x.org\n")); // the box shows line ends as LF
    QCOMPARE(window.findChild<QPushButton *>("OKBtn")->toolTip(), QStringLiteral("Send Files Over the Internet"));
    QCOMPARE(window.findChild<QCheckBox *>("CHKZIP")->text(), QStringLiteral("Omit Zip File"));

    f.responder.acceptFile("  " + current + "  ");
    window.findChild<QPushButton *>("OpenBtn")->click();
    QCOMPARE(f.responder.dialogs().last().title, QStringLiteral("Select Picture File Name to Send"));
    QVERIFY(f.responder.dialogs().last().filter.startsWith("JPeg and Lead Compressed|*.JPG;*.JPE;*.CMP"));
    QCOMPARE(window.files(), (QStringList{current, current}));
    window.findChild<QPushButton *>("ClearPictBtn")->click();
    QVERIFY(window.files().isEmpty());
}

void TestMailWindows::sendWindowHelpMenu()
{
    UiFixture f;
    MailWindowHooks hooks;
    hooks.store = &f.store;
    QStringList opened;
    whenModal("SendFile1", [&](QDialog *send) {
        const auto action = [send](const QString &text) {
            for (QAction *a : send->findChildren<QAction *>()) {
                if (a->text() == text)
                    return a;
            }
            return static_cast<QAction *>(nullptr);
        };
        // Quick Tips opens the tips window beside the sending window.
        if (QAction *tips = action("Quick Tips for Sending Files")) {
            tips->trigger();
            for (QWidget *w : QApplication::topLevelWidgets()) {
                if (w->objectName() == "QuikTip1" && w->isVisible()) {
                    opened << w->objectName();
                    w->close();
                }
            }
        }
        // About runs its own window until it is closed.
        whenModal("About1", [&](QDialog *about) {
            opened << about->objectName();
            about->reject();
        });
        if (QAction *about = action("&About Tarnby..."))
            about->trigger();
        send->reject();
    });
    runSendWindow(f.state, f.services, hooks, QString(), nullptr);
    QCOMPARE(opened, (QStringList{"QuikTip1", "About1"}));
}

void TestMailWindows::sendNeedsAddress_data()
{
    QTest::addColumn<QString>("recipients");
    QTest::addColumn<QString>("message");
    QTest::addRow("empty box") << "" << "You must Enter a Send To Address";
    // Only a line end counts as not empty: the send runs and fails.
    QTest::addRow("only CR LF") << "\r\n" << "File did not send successfully to E-Mail Program";
}

void TestMailWindows::sendNeedsAddress()
{
    QFETCH(QString, recipients);
    QFETCH(QString, message);
    UiFixture f;
    const QString file = f.home.createFile("a.txt", "a");
    SendFile1 window(f.state, f.services);
    window.start(file);
    window.findChild<QPlainTextEdit *>("CMBSENDTO")->setPlainText(recipients);
    QSignalSpy finished(&window, &SendFile1::sendFinished);
    window.send();
    if (message.startsWith("File did not"))
        QTRY_COMPARE(finished.size(), 1);
    QCOMPARE(f.responder.messageTexts(), QStringList{message});
    QVERIFY(!window.lastSendSucceeded());
}

void TestMailWindows::clearLog_data()
{
    QTest::addColumn<bool>("yes");
    QTest::addRow("Yes empties the log") << true;
    QTest::addRow("No keeps it") << false;
}

void TestMailWindows::clearLog()
{
    QFETCH(bool, yes);
    UiFixture f;
    const QByteArray log("a - b - c\r\n");
    f.home.createFile("FileSend.LOG", log);
    {
        SendFile1 window(f.state, f.services);
        window.start(QString());
        f.responder.answerMessage(yes ? MessageAnswer::Yes : MessageAnswer::No);
        window.findChild<QPushButton *>("ClearBtn")->click();
        QCOMPARE(f.responder.messageTexts(), QStringList{"Do you want to Clear the Database File Send History Log?"});
        QCOMPARE(window.historyLines().isEmpty(), yes);
        QCOMPARE(f.home.read("FileSend.LOG"), yes ? QByteArray() : log);
        window.close();
    }
    QCOMPARE(f.home.read("FileSend.LOG"), yes ? QByteArray() : log);
}

void TestMailWindows::databaseCheck()
{
    UiFixture f;
    const QString table = f.home.createFile("Shop.DBF", "d");
    QWidget shown;
    SendFile1 window(f.state, f.services);
    window.setWindowFinder([&](const QString &path) { return QFileInfo(path).fileName() == "Shop.DBF" ? &shown : nullptr; });
    window.start(table);
    QCOMPARE(f.responder.messageTexts(), QStringList{"Window Displaying Database must be Closed to Send - " + table});
    f.responder.clear();
    window.addFile(f.home.createFile("b.jpg", "b"));
    QVERIFY(f.responder.messageTexts().isEmpty());
}

void TestMailWindows::receiveWindowOpens()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    QCOMPARE(window.windowTitle(), QStringLiteral("Receive E-Mail with File Attachments"));
    QVERIFY(QFileInfo(f.home.filePath("Pictures")).isDir());
    QCOMPARE(window.findChild<QLineEdit *>("TxtZipTo")->text(), f.home.filePath("Pictures"));
    QCOMPARE(window.findChild<QLabel *>("Label2")->text(), QStringLiteral("- Status -"));
    QVERIFY(RecvFile1::filePattern().contains("*.SGI*.IMG"));
    QVERIFY(RecvFile1::isOpen());
}

void TestMailWindows::endOfMessages()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    RecvFile1::Shown end;
    end.end = true;
    window.showFetched(end);
    QCOMPARE(f.responder.messageTexts(), QStringList{"      End of E-Mail Messages"});
    QCOMPARE(window.currentIndex(), 0);
}

void TestMailWindows::messageWithoutAttachments()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    RecvFile1::Shown shown;
    shown.summary.senderName = "Anne";
    shown.summary.senderAddress = "a@x.org";
    shown.summary.subject = "Hello";
    shown.summary.text = "Words only.";
    window.showFetched(shown);
    QCOMPARE(window.findChild<QLineEdit *>("TxtRecdFrom")->text(), QStringLiteral("Anne | a@x.org"));
    QCOMPARE(window.findChild<QLineEdit *>("TxtSubject")->text(), QStringLiteral("Hello"));
    QCOMPARE(window.findChild<QPlainTextEdit *>("TxtMessage")->toPlainText(), QStringLiteral("Words only."));
    QCOMPARE(window.findChild<QLabel *>("Label2")->text(), QStringLiteral("- Status -"));
    QCOMPARE(window.findChild<QListWidget *>("List1")->count(), 0);
    QVERIFY(!window.findChild<QPushButton *>("OpenBtn")->isEnabled());
}

void TestMailWindows::zipAttachmentInSmallLetters()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    const QString zip = f.home.createFile("Pictures/photos.zip");
    QVERIFY(writeZip(zip, {{"a.jpg", "aaa"}, {"notes.txt", "n"}, {"x.bin", "b"}}));
    f.home.createFile("Pictures/a.jpg", "older");
    RecvFile1::Shown shown;
    shown.summary.senderAddress = "a@x.org";
    shown.saved = {{"photos.zip", zip}};
    window.showFetched(shown);
    QCOMPARE(window.findChild<QLabel *>("Label2")->text(), QStringLiteral("- Attachments Present -"));
    QCOMPARE(window.findChild<QLineEdit *>("TxtZipFile")->text(), zip);
    QVERIFY(window.findChild<QPushButton *>("OpenBtn")->isEnabled());
    window.findChild<QPushButton *>("OpenBtn")->click();
    // Files of known types in the folder are listed; the old a.jpg is kept.
    QStringList listed = listTexts(window.findChild<QListWidget *>("List1"));
    listed.sort();
    QCOMPARE(listed, (QStringList{f.home.filePath("Pictures/a (2).jpg"), f.home.filePath("Pictures/a.jpg"),
                                  f.home.filePath("Pictures/notes.txt")}));
    QCOMPARE(f.home.read("Pictures/a.jpg"), QByteArray("older"));
    QCOMPARE(f.home.read("Pictures/a (2).jpg"), QByteArray("aaa"));
}

void TestMailWindows::knownTypeAttachment()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    const QString picture = f.home.createFile("Pictures/Beach.png", "p");
    RecvFile1::Shown shown;
    shown.summary.senderAddress = "a@x.org";
    shown.saved = {{"Beach.png", picture}};
    window.showFetched(shown);
    QCOMPARE(listTexts(window.findChild<QListWidget *>("List1")), QStringList{picture});
    QVERIFY(window.findChild<QPushButton *>("PictBtn")->isEnabled());
    QVERIFY(!window.findChild<QPushButton *>("OpenBtn")->isEnabled());
    QSignalSpy open(&window, &RecvFile1::openFileRequested);
    window.findChild<QListWidget *>("List1")->setCurrentRow(0);
    window.findChild<QPushButton *>("PictBtn")->click();
    QCOMPARE(open.size(), 1);
    QCOMPARE(open[0][0].toString(), picture);
}

void TestMailWindows::hostileArchiveRefused()
{
    UiFixture f;
    RecvFile1 window(f.state, f.services);
    const QString zip = f.home.createFile("Pictures/evil.ZIP");
    QVERIFY(writeZip(zip, {{"good.txt", "g"}, {"../../x.txt", "evil"}}));
    RecvFile1::Shown shown;
    shown.summary.senderAddress = "a@x.org";
    shown.saved = {{"evil.ZIP", zip}};
    window.showFetched(shown);
    window.findChild<QPushButton *>("OpenBtn")->click();
    QCOMPARE(f.responder.messages().size(), 1);
    QCOMPARE(window.findChild<QListWidget *>("List1")->count(), 0);
    QVERIFY(!QFile::exists(f.home.filePath("Pictures/good.txt")));
    QVERIFY(!QFile::exists(f.home.filePath("x.txt")));
}

QTEST_MAIN(TestMailWindows)
#include "tst_mailwindows.moc"
