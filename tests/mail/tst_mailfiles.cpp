#include "core/mail/AddressList.h"
#include "core/mail/AttachmentNames.h"
#include "core/mail/MailJobs.h"
#include "core/mail/SendArchive.h"
#include "core/mail/SendHistory.h"
#include "core/platform/archive/ZipExtract.h"
#include "core/platform/mail/MessageFile.h"
#include "core/platform/mail/SeenMessages.h"
#include "core/settings/MailPasswords.h"
#include "core/settings/ProgramOptions.h"

#include "TestDir.h"

#include <QDir>
#include <QRegularExpression>
#include <QTest>
#include <QtEndian>

#include <vmime/utility/outputStreamStringAdapter.hpp>

using namespace tarnby;
using namespace tarnby::mail;

namespace {
// The entries of a ZIP file's central directory: name and compression method
// (0 stored, 8 deflated).
QMap<QString, int> centralDirectory(const QByteArray &zip)
{
    QMap<QString, int> entries;
    qsizetype at = 0;
    while ((at = zip.indexOf(QByteArray("PK\x01\x02", 4), at)) >= 0 && at + 46 <= zip.size()) {
        const auto *p = reinterpret_cast<const uchar *>(zip.constData() + at);
        const int method = qFromLittleEndian<quint16>(p + 10);
        const int nameLength = qFromLittleEndian<quint16>(p + 28);
        entries.insert(QString::fromUtf8(zip.mid(at + 46, nameLength)), method);
        at += 46 + nameLength;
    }
    return entries;
}
} // namespace

class TestMailFiles : public QObject
{
    Q_OBJECT
private slots:
    void splitLine_data();
    void splitLine();
    void addressListFile_data();
    void addressListFile();
    void recipients_data();
    void recipients();
    void vCardContacts_data();
    void vCardContacts();
    void historyLineForm();
    void historyLog();
    void historyLogWithBrokenLine();
    void attachmentName_data();
    void attachmentName();
    void uniqueFiles();
    void archivePath_data();
    void archivePath();
    void archiveEntries();
    void archiveReplacesOldAndStoresCompressed();
    void archiveCancelKeepsOld();
    void archiveOfMissingFile();
    void serverUrl_data();
    void serverUrl();
    void incomingAccount_data();
    void incomingAccount();
    void seenFile_data();
    void seenFile();
    void receivedMessage_data();
    void receivedMessage();
};

void TestMailFiles::splitLine_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("address");
    QTest::addRow("plain entry") << "Anne Smith - anne@example.org" << "Anne Smith" << "anne@example.org";
    QTest::addRow("name with hyphen splits at its first hyphen")
        << "Jean-Luc - jl@example.org" << "Jea" << "uc - jl@example.org";
    QTest::addRow("address with hyphen") << "Bob - bob-smith@ex-ample.org" << "Bob" << "bob-smith@ex-ample.org";
    QTest::addRow("no hyphen is all name") << "  Nobody  " << "Nobody" << "";
    QTest::addRow("hyphen first") << "- x@y" << "" << "x@y";
    QTest::addRow("hyphen last") << "Carl -" << "Carl" << "";
    QTest::addRow("empty line") << "" << "" << "";
}

void TestMailFiles::splitLine()
{
    QFETCH(QString, line);
    QFETCH(QString, name);
    QFETCH(QString, address);
    const AddressEntry entry = splitAddressLine(line);
    QCOMPARE(entry.name, name);
    QCOMPARE(entry.address, address);
}

void TestMailFiles::addressListFile_data()
{
    QTest::addColumn<QStringList>("lines");
    QTest::addColumn<QByteArray>("bytes");
    QTest::addRow("two entries, CR LF") << QStringList{addressLine("Anne", "a@x.org"), addressLine("Jean-Luc", "j@x.org")}
                                        << QByteArray("Anne - a@x.org\r\nJean-Luc - j@x.org\r\n");
    QTest::addRow("empty list makes an empty file") << QStringList{} << QByteArray();
    QTest::addRow("non-ASCII name") << QStringList{addressLine(QString::fromUtf8("Zoë"), "z@x.org")}
                                    << QByteArray("Zo\xc3\xab - z@x.org\r\n");
}

void TestMailFiles::addressListFile()
{
    QFETCH(QStringList, lines);
    QFETCH(QByteArray, bytes);
    TestDir dir;
    const QString path = dir.filePath("List.MLS");
    QString error;
    QVERIFY2(writeAddressList(path, lines, &error), qPrintable(error));
    QCOMPARE(dir.read("List.MLS"), bytes);
    const AddressListRead read = readAddressList(path);
    QVERIFY(read.found);
    QCOMPARE(read.lines, lines);
}

void TestMailFiles::recipients_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<QStringList>("addresses");
    QTest::addRow("CR LF lines") << "a@x.org\r\nb@x.org\r\n" << QStringList{"a@x.org", "b@x.org"};
    QTest::addRow("only CR LF gives no address") << "\r\n" << QStringList{};
    QTest::addRow("empty lines skipped, order kept") << "\r\nc@x.org\r\n\r\na@x.org" << QStringList{"c@x.org", "a@x.org"};
    QTest::addRow("LF alone also splits") << "a@x.org\nb@x.org" << QStringList{"a@x.org", "b@x.org"};
    QTest::addRow("blanks around an address") << "  a@x.org \r\n" << QStringList{"a@x.org"};
}

void TestMailFiles::recipients()
{
    QFETCH(QString, text);
    QFETCH(QStringList, addresses);
    QCOMPARE(recipientsFromText(text), addresses);
}

void TestMailFiles::vCardContacts_data()
{
    QTest::addColumn<QByteArray>("file");
    QTest::addColumn<QStringList>("lines"); // as address lines
    QTest::addRow("two cards, CR LF") << QByteArray("BEGIN:VCARD\r\nVERSION:3.0\r\nFN:Anne Smith\r\nEMAIL;TYPE=INTERNET:a@x.org\r\n"
                                                   "END:VCARD\r\nBEGIN:VCARD\r\nFN:Bob\r\nEMAIL:b@x.org\r\nEMAIL:b2@x.org\r\nEND:VCARD\r\n")
                                      << QStringList{"Anne Smith - a@x.org", "Bob - b@x.org"};
    QTest::addRow("folded line, grouped property") << QByteArray("BEGIN:VCARD\nFN:Jean-Luc Pi\n card\nitem1.EMAIL:j@x.org\nEND:VCARD\n")
                                                   << QStringList{"Jean-Luc Picard - j@x.org"};
    QTest::addRow("N when FN is missing") << QByteArray("BEGIN:VCARD\nN:Smith;Anne;;;\nEMAIL:a@x.org\nEND:VCARD\n")
                                          << QStringList{"Anne Smith - a@x.org"};
    QTest::addRow("card without address left out") << QByteArray("BEGIN:VCARD\nFN:Nobody\nEND:VCARD\n") << QStringList{};
    QTest::addRow("not a vCard") << QByteArray("\x00\x01garbage:::\n") << QStringList{};
}

void TestMailFiles::vCardContacts()
{
    QFETCH(QByteArray, file);
    QFETCH(QStringList, lines);
    TestDir dir;
    QStringList got;
    for (const AddressEntry &e : readVCardContacts(dir.createFile("c.vcf", file)))
        got << addressLine(e.name, e.address);
    QCOMPARE(got, lines);
    QVERIFY(readVCardContacts(dir.filePath("missing.vcf")).isEmpty());
}

void TestMailFiles::historyLineForm()
{
    // The locale's short date, then the time with its seconds and no zone.
    const QDateTime when(QDate(2000, 5, 14), QTime(15, 12, 9));
    const QString us = historyLine("/p/Beach.jpg", "a@x.org", when, QLocale(QLocale::English, QLocale::UnitedStates));
    QVERIFY2(QRegularExpression("^/p/Beach\\.jpg - a@x\\.org - 5/14/(2000|00) 3:12:09\\sPM$").match(us).hasMatch(),
             qPrintable(us));
    const QString de = historyLine("/p/Beach.jpg", "a@x.org", when, QLocale(QLocale::German, QLocale::Germany));
    QVERIFY2(QRegularExpression("^/p/Beach\\.jpg - a@x\\.org - 14\\.05\\.(2000|00) 15:12:09$").match(de).hasMatch(),
             qPrintable(de));
}

void TestMailFiles::historyLog()
{
    TestDir dir;
    const QString path = dir.filePath(SendLogFileName);
    SendHistory history;
    history.load(path);
    QVERIFY(history.lines().isEmpty());
    history.append({"a - b - c", "d - e - f"});
    QString error;
    QVERIFY2(history.save(&error), qPrintable(error));
    QCOMPARE(dir.read(SendLogFileName), QByteArray("a - b - c\r\nd - e - f\r\n"));

    SendHistory again;
    again.load(path);
    QCOMPARE(again.lines(), (QStringList{"a - b - c", "d - e - f"}));
    again.clear();
    QVERIFY(again.save(&error));
    QCOMPARE(dir.read(SendLogFileName), QByteArray());
}

void TestMailFiles::historyLogWithBrokenLine()
{
    // A log with a line that is not text: the lines before it are shown, and
    // saving keeps every old byte and adds the new lines after them.
    TestDir dir;
    const QByteArray old("one\r\nbro\x01ken\r\nthree\r\n");
    const QString path = dir.createFile(SendLogFileName, old);
    SendHistory history;
    history.load(path);
    QCOMPARE(history.lines(), QStringList{"one"});
    QVERIFY(!history.stoppedBecause().isEmpty());
    history.append({"new"});
    QString error;
    QVERIFY2(history.save(&error), qPrintable(error));
    QCOMPARE(dir.read(SendLogFileName), old + "new\r\n");
}

void TestMailFiles::attachmentName_data()
{
    QTest::addColumn<QString>("raw");
    QTest::addColumn<QString>("plain");
    QTest::addRow("plain name kept") << "Beach.jpg" << "Beach.jpg";
    QTest::addRow("climbing out") << "../../x" << "x";
    QTest::addRow("absolute path") << "/etc/passwd" << "passwd";
    QTest::addRow("backslashes and drive") << "C:\\Windows\\evil.exe" << "evil.exe";
    QTest::addRow("drive letter alone") << "C:evil.txt" << "evil.txt";
    QTest::addRow("dot dot alone") << ".." << "attachment";
    QTest::addRow("dot alone") << "." << "attachment";
    QTest::addRow("empty") << "" << "attachment";
    QTest::addRow("trailing slash") << "dir/" << "attachment";
    QTest::addRow("hidden name") << ".bashrc" << "bashrc";
    QTest::addRow("device name") << "CON" << "_CON";
    QTest::addRow("device name with extension, small letters") << "lpt1.txt" << "_lpt1.txt";
    QTest::addRow("not a device name") << "CONTACTS.TXT" << "CONTACTS.TXT";
    QTest::addRow("control characters removed") << "a\nb\tc\x01.txt" << "abc.txt";
    QTest::addRow("blanks and dots at the ends") << " . name.txt . " << "name.txt";
    QTest::addRow("zip in small letters") << "photos.zip" << "photos.zip";
    QTest::addRow("long name shortened, extension kept") << QString(300, QLatin1Char('a')) + ".jpg"
                                                         << QString(196, QLatin1Char('a')) + ".jpg";
}

void TestMailFiles::attachmentName()
{
    QFETCH(QString, raw);
    QFETCH(QString, plain);
    QCOMPARE(plainAttachmentName(raw), plain);
}

void TestMailFiles::uniqueFiles()
{
    TestDir dir;
    dir.createFile("a.jpg", "old");
    dir.createFile("a (2).jpg", "old2");
    QFile file;
    QString error;
    const QString path = createUniqueFile(dir.path(), "a.jpg", file, &error);
    QCOMPARE(path, dir.filePath("a (3).jpg"));
    QVERIFY(file.isOpen());
    file.write("new");
    file.close();
    QCOMPARE(dir.read("a.jpg"), QByteArray("old"));
    QCOMPARE(dir.read("a (2).jpg"), QByteArray("old2"));

    QFile other;
    QCOMPARE(createUniqueFile(dir.path(), "README", other, &error), dir.filePath("README"));
    other.close();
    QFile third;
    QCOMPARE(createUniqueFile(dir.path(), "README", third, &error), dir.filePath("README (2)"));
    QFile missing;
    QVERIFY(createUniqueFile(dir.filePath("no/such"), "x", missing, &error).isEmpty());
    QVERIFY(!error.isEmpty());
}

void TestMailFiles::archivePath_data()
{
    QTest::addColumn<QString>("first");
    QTest::addColumn<QString>("archive");
    QTest::addRow("extension replaced") << "/home/a/Beach.jpg" << "/home/a/Beach.Zip";
    QTest::addRow("last dot only") << "/home/a/my.holiday.png" << "/home/a/my.holiday.Zip";
    QTest::addRow("no extension") << "/home/a/README" << "/home/a/README.Zip";
    QTest::addRow("dot in the folder only") << "/home/a.b/README" << "/home/a.b/README.Zip";
    QTest::addRow("a zip itself") << "/home/a/old.zip" << "/home/a/old.Zip";
}

void TestMailFiles::archivePath()
{
    QFETCH(QString, first);
    QFETCH(QString, archive);
    QCOMPARE(sendArchivePath(first), archive);
}

void TestMailFiles::archiveEntries()
{
    const QList<archive::ZipItem> items = sendArchiveItems({"/a/x.jpg", "/b/x.jpg", "/c/X.JPG", "/c/y.txt"});
    QStringList names;
    for (const archive::ZipItem &item : items)
        names << item.entryName;
    QCOMPARE(names, (QStringList{"x.jpg", "x (2).jpg", "X (3).JPG", "y.txt"}));
    QCOMPARE(items[1].path, QStringLiteral("/b/x.jpg"));
}

void TestMailFiles::archiveReplacesOldAndStoresCompressed()
{
    TestDir dir;
    const QByteArray text = QByteArray("some text that deflates well ").repeated(200);
    QByteArray picture(5000, '\0');
    for (int i = 0; i < picture.size(); ++i)
        picture[i] = char((i * 7919) % 251);
    const QString jpg = dir.createFile("Beach.jpg", picture);
    const QString txt = dir.createFile("sub folder/notes.txt", text);
    dir.createFile("Beach.Zip", "an old archive");

    const SendArchiveResult made = makeSendArchive({jpg, txt});
    QVERIFY2(made.result.ok(), qPrintable(made.result.errorString));
    QCOMPARE(made.path, dir.filePath("Beach.Zip"));
    const QByteArray zip = dir.read("Beach.Zip");
    const QMap<QString, int> entries = centralDirectory(zip);
    QCOMPARE(entries.keys(), (QStringList{"Beach.jpg", "notes.txt"}));
    QCOMPARE(entries.value("Beach.jpg"), 0);
    QCOMPARE(entries.value("notes.txt"), 8);

    // What went in comes out.
    const QString unpacked = dir.filePath("out");
    const archive::ExtractResult extracted = archive::extractArchive(made.path, unpacked);
    QVERIFY2(extracted.ok(), qPrintable(extracted.errorString));
    QCOMPARE(dir.read("out/Beach.jpg"), picture);
    QCOMPARE(dir.read("out/notes.txt"), text);
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files), (QStringList{"Beach.jpg", "Beach.Zip"}));
}

void TestMailFiles::archiveCancelKeepsOld()
{
    TestDir dir;
    const QString a = dir.createFile("a.bmp", QByteArray(3 << 20, 'a'));
    dir.createFile("a.Zip", "old");
    const SendArchiveResult made = makeSendArchive({a}, [](qint64 done, qint64) { return done < (1 << 20); });
    QCOMPARE(made.result.status, archive::ZipStatus::Cancelled);
    QCOMPARE(dir.read("a.Zip"), QByteArray("old"));
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files | QDir::Hidden), (QStringList{"a.bmp", "a.Zip"}));
}

void TestMailFiles::archiveOfMissingFile()
{
    TestDir dir;
    const QString a = dir.createFile("a.txt", "x");
    const SendArchiveResult made = makeSendArchive({a, dir.filePath("gone.txt")});
    QCOMPARE(made.result.status, archive::ZipStatus::Failed);
    QVERIFY(made.result.errorString.contains("gone.txt"));
    QVERIFY(!QFile::exists(dir.filePath("a.Zip")));
    QCOMPARE(makeSendArchive({}).result.status, archive::ZipStatus::Failed);
}

void TestMailFiles::serverUrl_data()
{
    QTest::addColumn<QString>("url");
    QTest::addColumn<bool>("outgoing");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<int>("port");
    QTest::addColumn<bool>("tls");
    QTest::addColumn<bool>("pop3");
    QTest::addRow("smtp default port") << "smtp://mail.example.org" << true << true << 587 << false << false;
    QTest::addRow("smtps") << "smtps://mail.example.org" << true << true << 465 << true << false;
    QTest::addRow("imap with port") << "imap://h:1143" << false << true << 1143 << false << false;
    QTest::addRow("imaps default port") << "imaps://h" << false << true << 993 << true << false;
    QTest::addRow("pop3 default port") << "pop3://h" << false << true << 110 << false << true;
    QTest::addRow("pop3s in capitals") << "POP3S://h" << false << true << 995 << true << true;
    QTest::addRow("pop3 is not for sending") << "pop3://h" << true << false << 0 << false << false;
    QTest::addRow("smtp is not for receiving") << "smtp://h" << false << false << 0 << false << false;
    QTest::addRow("no host") << "imap://" << false << false << 0 << false << false;
}

void TestMailFiles::serverUrl()
{
    QFETCH(QString, url);
    QFETCH(bool, outgoing);
    QFETCH(bool, valid);
    mailnet::ServerSettings s;
    QString error;
    QCOMPARE(mailnet::parseServerUrl(url, outgoing, &s, &error), valid);
    if (!valid) {
        QVERIFY(error.contains(url));
        return;
    }
    QTEST(s.port, "port");
    QTEST(s.security == mailnet::Security::Tls, "tls");
    QTEST(s.protocol == mailnet::Protocol::Pop3, "pop3");
}

void TestMailFiles::incomingAccount_data()
{
    QTest::addColumn<QString>("protocol");
    QTest::addColumn<bool>("pop3");
    QTest::addColumn<QString>("key");
    // The key is the one entry the options window writes for the account.
    QTest::addRow("IMAP") << "IMAP" << false << "imap:me@mail.example.org";
    QTest::addRow("POP3") << "POP3" << true << "pop3:me@mail.example.org";
    QTest::addRow("pop3 in small letters") << "pop3" << true << "pop3:me@mail.example.org";
}

void TestMailFiles::incomingAccount()
{
    QFETCH(QString, protocol);
    QFETCH(QString, key);
    settings::ProgramOptions options;
    options.incomingProtocol = protocol;
    options.incomingHost = "mail.example.org";
    options.incomingUser = "me";
    const mailnet::ServerSettings server = incomingServer(options);
    QTEST(server.protocol == mailnet::Protocol::Pop3, "pop3");
    QCOMPARE(passwordKey(server, false), key);
    QCOMPARE(passwordKey(server, false),
             settings::mailPasswordKey(settings::MailServer::Incoming, protocol, options.incomingUser, options.incomingHost));
}

void TestMailFiles::seenFile_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("seen");
    QTest::addColumn<QByteArray>("othersKept");
    const QByteArray other = "other@h:110\tz1\n";
    QTest::addRow("missing file") << QByteArray() << QStringList{} << QByteArray();
    QTest::addRow("own and other accounts") << "me@h:110\ta1\n" + other + "me@h:110\ta2\n" << QStringList{"a1", "a2"}
                                            << other;
    QTest::addRow("lines without an id or a tab") << QByteArray("me@h:110\t\nme@h:110\n\tb\n\n") << QStringList{}
                                                  << QByteArray();
    QTest::addRow("an overlong line is skipped whole")
        << "me@h:110\t" + QByteArray(5000, 'x') + "\nme@h:110\tok\n" << QStringList{"ok"} << QByteArray();
    QTest::addRow("no final line end") << QByteArray("me@h:110\tlast") << QStringList{"last"} << QByteArray();
    QTest::addRow("binary garbage") << QByteArray("\x00\xff\x01\tq\r\n", 7) << QStringList{}
                                    << QByteArray("\x00\xef\xbf\xbd\x01\tq\n", 8);
}

void TestMailFiles::seenFile()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, seen);
    QFETCH(QByteArray, othersKept);
    TestDir dir;
    const QString path = dir.filePath("POP3Seen.TXT");
    if (!content.isEmpty())
        dir.createFile("POP3Seen.TXT", content);
    mailnet::SeenMessages list(path, "me@h:110");
    list.load();
    QCOMPARE(list.size(), seen.size());
    for (const QString &id : seen)
        QVERIFY(list.contains(id));

    // Ids gone from the server are forgotten; a new one is kept; the other
    // accounts' lines come back first, as read.
    list.add("new");
    QSet<QString> onServer{"new"};
    if (!seen.isEmpty())
        onServer.insert(seen.first());
    list.keepOnly(onServer);
    QString error;
    QVERIFY2(list.save(&error), qPrintable(error));
    const QByteArray written = dir.read("POP3Seen.TXT");
    QVERIFY2(written.startsWith(othersKept), written.constData());
    mailnet::SeenMessages reread(path, "me@h:110");
    reread.load();
    QCOMPARE(reread.size(), int(onServer.size()));
    QVERIFY(reread.contains("new"));
}

void TestMailFiles::receivedMessage_data()
{
    QTest::addColumn<QByteArray>("message");
    QTest::addColumn<bool>("readable");
    QTest::addColumn<QStringList>("attachments");
    QTest::addColumn<QByteArray>("text");
    QTest::addColumn<QByteArray>("firstAttachment");
    const QByteArray mixed = "Subject: s\r\nContent-Type: multipart/mixed; boundary=\"b1\"\r\n\r\n";
    const QByteArray textPart = "--b1\r\nContent-Type: text/plain; charset=utf-8\r\n\r\nHello\r\n";
    const QByteArray filePart = "--b1\r\nContent-Type: application/octet-stream\r\nContent-Transfer-Encoding: base64\r\n"
                                "Content-Disposition: attachment; filename=\"a.bin\"\r\n\r\naGVsbG8gd29y\r\nbGQ=\r\n";
    QTest::addRow("one text part, LF line ends") << QByteArray("Subject: a\n\nhello\n") << true << QStringList{}
                                                 << QByteArray("hello\n") << QByteArray();
    QTest::addRow("text and a file, preamble and epilogue")
        << mixed + "preamble\r\n" + textPart + filePart + "--b1--\r\nepilogue\r\n" << true << QStringList{"a.bin"}
        << QByteArray("Hello") << QByteArray("hello world");
    QTest::addRow("no closing delimiter: the last part runs to the end")
        << mixed + textPart + filePart << true << QStringList{"a.bin"} << QByteArray("Hello") << QByteArray("hello world");
    QTest::addRow("a line that only starts like the delimiter")
        << mixed + "--b1\r\n\r\nfirst\r\n--b12 is not a delimiter\r\n--b1--\r\n" << true << QStringList{}
        << QByteArray("first\r\n--b12 is not a delimiter") << QByteArray();
    QTest::addRow("alternative text and HTML inside mixed")
        << mixed + "--b1\r\nContent-Type: multipart/alternative; boundary=b2\r\n\r\n--b2\r\nContent-Type: text/plain\r\n\r\n"
                   "plain\r\n--b2\r\nContent-Type: text/html\r\n\r\n<p>html</p>\r\n--b2--\r\n"
               + filePart + "--b1--\r\n"
        << true << QStringList{"a.bin"} << QByteArray("plain") << QByteArray("hello world");
    QTest::addRow("quoted-printable, name from the content type")
        << mixed + "--b1\r\nContent-Type: text/plain; name=\"n.txt\"\r\nContent-Transfer-Encoding: quoted-printable\r\n\r\n"
                   "caf=C3=A9 =\r\nsoft\r\n--b1--\r\n"
        << true << QStringList{"n.txt"} << QByteArray() << QByteArray("caf\xc3\xa9 soft");
    QTest::addRow("file name in RFC 2231 form")
        << mixed + "--b1\r\nContent-Type: image/jpeg\r\nContent-Disposition: attachment; filename*=utf-8''%C3%A9t%C3%A9.jpg\r\n\r\n"
                   "raw\r\n--b1--\r\n"
        << true << QStringList{QString::fromUtf8("\xc3\xa9t\xc3\xa9.jpg")} << QByteArray() << QByteArray("raw");
    QTest::addRow("a file with no name") << mixed + "--b1\r\nContent-Type: image/png\r\n\r\npng\r\n--b1--\r\n" << true
                                         << QStringList{QString()} << QByteArray() << QByteArray("png");
    QByteArray deep = "Subject: deep\r\n";
    for (int i = 0; i < 30; ++i)
        deep += "Content-Type: multipart/mixed; boundary=d" + QByteArray::number(i) + "\r\n\r\n--d" + QByteArray::number(i) + "\r\n";
    QTest::addRow("parts nested too deep") << deep << false << QStringList{} << QByteArray() << QByteArray();
    QTest::addRow("a header of more than 1 MB") << "X-Long: " + QByteArray(1100000, 'a') + "\r\n\r\nbody" << false
                                                << QStringList{} << QByteArray() << QByteArray();
}

void TestMailFiles::receivedMessage()
{
    QFETCH(QByteArray, message);
    QFETCH(bool, readable);
    QFETCH(QStringList, attachments);
    QFETCH(QByteArray, text);
    QFETCH(QByteArray, firstAttachment);
    TestDir dir;
    QFile file(dir.createFile("m.eml", message));
    QVERIFY(file.open(QIODevice::ReadOnly));
    mailnet::MessageFile parsed;
    try {
        parsed = mailnet::scanMessage(file);
    } catch (const std::exception &e) {
        QVERIFY2(!readable, e.what());
        return;
    }
    QVERIFY(readable);
    QStringList names;
    const mailnet::MessageLeaf *firstFile = nullptr;
    const mailnet::MessageLeaf *firstText = nullptr;
    for (const mailnet::MessageLeaf &leaf : parsed.leaves) {
        if (leaf.attachment) {
            names << leaf.name;
            firstFile = firstFile ? firstFile : &leaf;
        } else if (leaf.plainText && !firstText) {
            firstText = &leaf;
        }
    }
    QCOMPARE(names, attachments);
    const auto decoded = [&file](const mailnet::MessageLeaf *leaf) {
        std::string out;
        vmime::utility::outputStreamStringAdapter stream(out);
        if (leaf)
            mailnet::decodeLeaf(file, *leaf, stream);
        return QByteArray::fromStdString(out);
    };
    QCOMPARE(decoded(firstText), text);
    QCOMPARE(decoded(firstFile), firstAttachment);
}

QTEST_GUILESS_MAIN(TestMailFiles)
#include "tst_mailfiles.moc"
