#include "ui/fileops/FileCommands.h"

#include "Fixtures.h"
#include "ModalCloser.h"
#include "UiFixture.h"
#include "ZipWriter.h"

#include "core/app/AppState.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/trash/Trash.h"
#include "core/viewer/SaveChoices.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include <functional>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

QStringList namesIn(const QString &folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::NoDotAndDotDot);
    names.sort();
    return names;
}

} // namespace

class TestFileCommands : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void deleteFile_data();
    void deleteFile();
    void deleteWhatIsNotAFile();
    void deletedFileCanBeRestored();

    void moveDialogRequest();
    void moveFile_data();
    void moveFile();

    void renameFile_data();
    void renameFile();

    void saveAsDialogRequest_data();
    void saveAsDialogRequest();
    void saveAsCopy_data();
    void saveAsCopy();
    void saveAsPicture_data();
    void saveAsPicture();
    void saveAsPictureDepthAndQuality_data();
    void saveAsPictureDepthAndQuality();

    void openWithApplication();

    void unzipOffer_data();
    void unzipOffer();

private:
    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<QWidget> m_window;
    std::unique_ptr<FileCommands> m_commands;
    QString m_dataHome;
};

void TestFileCommands::init()
{
    m_ui = std::make_unique<UiFixture>();
    // The trash lives below the data folder; keep it inside the test's own folder.
    m_dataHome = m_ui->home.createFolder(QStringLiteral("data"));
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dataHome));
    m_window = std::make_unique<QWidget>();
    m_commands = std::make_unique<FileCommands>(m_ui->state, m_ui->services, m_window.get());
    m_commands->setParent(nullptr);
}

void TestFileCommands::cleanup()
{
    m_commands.reset();
    m_window.reset();
    m_ui.reset();
}

void TestFileCommands::deleteFile_data()
{
    QTest::addColumn<bool>("trashUsable");
    QTest::addColumn<QList<MessageAnswer>>("answers");
    QTest::addColumn<bool>("fileRemains");
    QTest::addColumn<int>("questions");

    QTest::newRow("yes: to the trash") << true << QList<MessageAnswer>{MessageAnswer::Yes} << false << 1;
    QTest::newRow("no: nothing happens") << true << QList<MessageAnswer>{MessageAnswer::No} << true << 1;
    QTest::newRow("no trash, delete for good refused")
        << false << QList<MessageAnswer>{MessageAnswer::Yes, MessageAnswer::No} << true << 2;
    QTest::newRow("no trash, delete for good agreed")
        << false << QList<MessageAnswer>{MessageAnswer::Yes, MessageAnswer::Yes} << false << 2;
}

void TestFileCommands::deleteFile()
{
    QFETCH(bool, trashUsable);
    QFETCH(QList<MessageAnswer>, answers);
    QFETCH(bool, fileRemains);
    QFETCH(int, questions);

    TestDir dir;
    if (!trashUsable) {
        QFile blocker(m_dataHome + "/Trash"); // a file where the trash folder must be
        QVERIFY(blocker.open(QIODevice::WriteOnly));
    }
    const QString path = dir.createFile("old photo.jpg", "jpeg");
    for (MessageAnswer a : answers)
        m_ui->responder.answerMessage(a);
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);

    m_commands->DeleteFile(path);

    QCOMPARE(m_ui->responder.messages().size(), questions);
    QCOMPARE(m_ui->responder.messageTexts().first(), "Move File to the Trash - " + path + "? ");
    if (questions == 2)
        QVERIFY(m_ui->responder.messageTexts().at(1).startsWith("The File cannot be moved to the Trash - " + path));
    for (const MessageRequest &m : m_ui->responder.messages()) {
        QCOMPARE(m.buttons, MessageButtons::YesNo);
        QCOMPARE(m.title, QStringLiteral("Tarnby 3.0"));
    }
    QCOMPARE(QFileInfo::exists(path), fileRemains);
    QCOMPARE(changed.size(), fileRemains ? 0 : 1);
    // Nothing lands in the current folder, whatever the trash does.
    QVERIFY(!QFileInfo::exists(QDir::current().filePath("files")));
}

void TestFileCommands::deleteWhatIsNotAFile()
{
    TestDir dir;
    dir.createFolder("album.jpg");
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    for (const QString &path : {dir.filePath("album.jpg"), dir.filePath("gone.jpg"), QStringLiteral("http://x/y.jpg")})
        m_commands->DeleteFile(path);
    QCOMPARE(m_ui->responder.messageTexts(), (QStringList{"File not Found - " + dir.filePath("album.jpg"),
                                                    "File not Found - " + dir.filePath("gone.jpg"),
                                                    "File not Found - http://x/y.jpg"}));
    QVERIFY(QFileInfo(dir.filePath("album.jpg")).isDir());
}

void TestFileCommands::deletedFileCanBeRestored()
{
    TestDir dir;
    const QString path = dir.createFile("letter.txt", "dear");
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    m_commands->DeleteFile(path);
    QVERIFY(!QFileInfo::exists(path));

    const QStringList trashed = QDir(m_dataHome + "/Trash/files").entryList(QDir::Files);
    QCOMPARE(trashed, QStringList{"letter.txt"});
    const trash::RestoreResult restored = trash::restore(m_dataHome + "/Trash/files/letter.txt");
    QVERIFY2(restored.ok, qPrintable(restored.errorString));
    QCOMPARE(dir.read("letter.txt"), QByteArray("dear"));
}

void TestFileCommands::moveDialogRequest()
{
    TestDir dir;
    const QString path = dir.createFile("pics/beach.JPG", "x");
    m_ui->responder.cancelDialog();
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);
    m_commands->MoveFile(path, "JPG");

    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    const DialogRequest &r = m_ui->responder.dialogs().first();
    QCOMPARE(r.kind, DialogKind::SaveFile);
    QCOMPARE(r.title, QStringLiteral("Enter File Name and Folder to move To - beach.JPG"));
    QCOMPARE(r.filter, QStringLiteral("*.JPG|*.JPG"));
    QCOMPARE(r.defaultSuffix, QStringLiteral("JPG"));
    QCOMPARE(r.fileName, QStringLiteral("beach.JPG"));
    QCOMPARE(r.directory, dir.filePath("pics"));
    QVERIFY(m_ui->responder.messages().isEmpty());
    QCOMPARE(changed.size(), 0);
    QVERIFY(QFileInfo::exists(path));
}

void TestFileCommands::moveFile_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("button");
    QTest::addColumn<QString>("message"); // "@" stands for the test folder
    QTest::addColumn<QStringList>("listed");
    QTest::addColumn<QStringList>("sourceAfter");
    QTest::addColumn<QStringList>("targetAfter");

    QTest::newRow("plain file") << QStringList{"a/song.wav", "a/song.txt"} << "a/song.wav" << "b/song.wav" << "OKBtn"
                                << "File Moved to - @/b/song.wav" << QStringList{"song.wav"}
                                << QStringList{"song.txt"} << QStringList{"song.wav"};
    QTest::newRow("database with companions")
        << QStringList{"a/clients.mdb", "a/clients.ldb", "a/other.mdb"} << "a/clients.mdb" << "b/clients.mdb"
        << "OKBtn" << "File Moved to - @/b/clients.mdb" << QStringList{"clients.ldb", "clients.mdb"}
        << QStringList{"other.mdb"} << QStringList{"clients.ldb", "clients.mdb"};
    QTest::newRow("target exists") << QStringList{"a/song.wav", "b/song.wav"} << "a/song.wav" << "b/song.wav"
                                   << "OKBtn" << "File already exists - Cannot Move File to - @/b/song.wav"
                                   << QStringList{"song.wav"} << QStringList{"song.wav"} << QStringList{"song.wav"};
    QTest::newRow("cancel in the confirmation") << QStringList{"a/song.wav"} << "a/song.wav" << "b/song.wav"
                                                << "CancelBtn" << "" << QStringList{"song.wav"}
                                                << QStringList{"song.wav"} << QStringList{};
}

void TestFileCommands::moveFile()
{
    QFETCH(QStringList, files);
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QString, button);
    QFETCH(QString, message);
    QFETCH(QStringList, listed);
    QFETCH(QStringList, sourceAfter);
    QFETCH(QStringList, targetAfter);

    TestDir dir;
    dir.createFolder("b");
    for (const QString &f : files)
        dir.createFile(f, f.toUtf8());
    m_ui->responder.acceptFile(dir.filePath(target));
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);
    QStringList shownFiles;
    QString shownLabel;
    whenModal("MoveFile1", [&](QDialog *d) {
        auto *list = d->findChild<QListWidget *>("File1");
        for (int i = 0; list && i < list->count(); ++i)
            shownFiles << list->item(i)->text();
        shownFiles.sort();
        shownLabel = d->findChild<QLabel *>("Label1")->text();
        clickButton(d, button);
    });

    m_commands->MoveFile(dir.filePath(source), "X");

    QVERIFY(shownLabel.contains(dir.filePath(target)));
    QCOMPARE(shownFiles, listed);
    QCOMPARE(m_ui->responder.messageTexts(),
             message.isEmpty() ? QStringList() : QStringList{message.replace("@", dir.path())});
    QCOMPARE(namesIn(dir.filePath("a")), sourceAfter);
    QCOMPARE(namesIn(dir.filePath("b")), targetAfter);
    const bool moved = message.startsWith("File Moved");
    QCOMPARE(changed.size(), moved ? 1 : 0);
    if (moved)
        QCOMPARE(m_ui->state.currentFile, dir.filePath(target));
}

void TestFileCommands::renameFile_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("message");
    QTest::addColumn<bool>("staysOpen");
    QTest::addColumn<QStringList>("after");

    QTest::newRow("report.txt to summary") << QStringList{"report.txt"} << "report.txt" << "summary"
                                           << "File Rename Successful" << false << QStringList{"summary.txt"};
    QTest::newRow("existing name") << QStringList{"report.txt", "old.txt"} << "report.txt" << "old"
                                   << "File already exists - Cannot use this new File Name" << true
                                   << QStringList{"old.txt", "report.txt"};
    QTest::newRow("empty name") << QStringList{"report.txt"} << "report.txt" << "   "
                                << "You must Enter a New Name for the File" << true << QStringList{"report.txt"};
    QTest::newRow("sales.dbf to year") << QStringList{"sales.dbf", "sales.mdx", "sales.dbt"} << "sales.dbf" << "year"
                                       << "File Rename Successful" << false
                                       << QStringList{"year.dbf", "year.dbt", "year.mdx"};
}

void TestFileCommands::renameFile()
{
    QFETCH(QStringList, files);
    QFETCH(QString, source);
    QFETCH(QString, typed);
    QFETCH(QString, message);
    QFETCH(bool, staysOpen);
    QFETCH(QStringList, after);

    TestDir dir;
    for (const QString &f : files)
        dir.createFile(f, f.toUtf8());
    const QString path = dir.filePath(source);
    m_ui->state.currentFile = path;
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);
    bool stillOpen = false;
    QString label;
    int listed = 0;
    whenModal("Rename1", [&](QDialog *d) {
        label = d->findChild<QLabel *>("Label1")->text();
        listed = d->findChild<QListWidget *>("File1")->count();
        d->findChild<QLineEdit *>("Text1")->setText(typed);
        clickButton(d, "OKBtn");
        stillOpen = d->isVisible();
        if (stillOpen)
            clickButton(d, "CancelBtn");
    });

    m_commands->RenameFile(path);

    QCOMPARE(label, path);
    QCOMPARE(listed, files.size());
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{message});
    QCOMPARE(stillOpen, staysOpen);
    QCOMPARE(namesIn(dir.path()), after);
    QCOMPARE(changed.size(), staysOpen ? 0 : 1);
    if (!staysOpen)
        QCOMPARE(QFileInfo(m_ui->state.currentFile).fileName(), after.first());
}

void TestFileCommands::saveAsDialogRequest_data()
{
    QTest::addColumn<QString>("current");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("filter");
    QTest::newRow("local file") << "@/docs/notes.txt" << "Enter New File Name for - notes.txt" << "*.TXT|*.TXT";
    QTest::newRow("file shown from the Internet") << "http://example.com/pics/cat.jpg"
                                                  << "Enter New File Name for - cat.jpg" << "*.JPG|*.JPG";
}

void TestFileCommands::saveAsDialogRequest()
{
    QFETCH(QString, current);
    QFETCH(QString, title);
    QFETCH(QString, filter);
    TestDir dir;
    m_ui->state.currentFile = current.replace("@", dir.path());
    m_ui->responder.cancelDialog();
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);
    m_commands->SaveFileAs();
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    QCOMPARE(m_ui->responder.dialogs().first().title, title);
    QCOMPARE(m_ui->responder.dialogs().first().filter, filter);
    QCOMPARE(m_ui->responder.dialogs().first().kind, DialogKind::SaveFile);
    QVERIFY(m_ui->responder.messages().isEmpty());
    QCOMPARE(changed.size(), 0);
}

void TestFileCommands::saveAsCopy_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<bool>("targetExists");
    QTest::addColumn<QString>("message");
    QTest::newRow("new name") << "copy.txt" << false << "";
    QTest::newRow("existing name never overwritten") << "copy.txt" << true << "Error Copying File - @/copy.txt";
    QTest::newRow("folder missing") << "nowhere/copy.txt" << false << "Error Copying File - @/nowhere/copy.txt";
}

void TestFileCommands::saveAsCopy()
{
    QFETCH(QString, target);
    QFETCH(bool, targetExists);
    QFETCH(QString, message);
    TestDir dir;
    const QByteArray content("line one\r\nline two\r\n\0binary", 28);
    m_ui->state.currentFile = dir.createFile("notes.txt", content);
    if (targetExists)
        dir.createFile(target, "keep");
    m_ui->responder.acceptFile(dir.filePath(target));
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);
    m_commands->SaveFileAs();
    if (message.isEmpty()) {
        QVERIFY(m_ui->responder.messages().isEmpty());
        QCOMPARE(dir.read(target), content);
        QCOMPARE(changed.size(), 1);
    } else {
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{message.replace("@", dir.path())});
        QCOMPARE(dir.read(target), targetExists ? QByteArray("keep") : QByteArray());
        QCOMPARE(changed.size(), 0);
    }
    QCOMPARE(dir.read("notes.txt"), content);
}

void TestFileCommands::saveAsPicture_data()
{
    QTest::addColumn<QString>("target");
    QTest::addColumn<QString>("message"); // @ stands for the target's path
    QTest::newRow("BMP") << "hopper.bmp" << "";
    QTest::newRow("extension without a writer") << "hopper.xyz" << "Error Saving File - @";
}

void TestFileCommands::saveAsPicture()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, target);
    QFETCH(QString, message);
    TestDir dir;
    const QString source = dir.filePath("hopper.png");
    const QString path = dir.filePath(target);
    QVERIFY(QFile::copy(fixtures::path("PNG/hopper.png"), source));
    m_ui->state.currentFile = source;
    m_ui->responder.acceptFile(path);
    m_commands->SaveFileAs();
    if (!message.isEmpty()) {
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{message.replace("@", path)});
        QVERIFY(!QFileInfo::exists(path));
        return;
    }
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    QImageReader reader(path);
    QCOMPARE(reader.format(), QByteArray("bmp")); // a real BMP, not a renamed PNG
    const QImage saved = reader.read();
    QCOMPARE(saved.size(), QSize(128, 128));
    const QImage original = QImage(source).convertToFormat(QImage::Format_RGB32);
    const QImage copy = saved.convertToFormat(QImage::Format_RGB32);
    int differing = 0;
    for (int y = 0; y < 128; ++y)
        for (int x = 0; x < 128; ++x)
            differing += original.pixel(x, y) != copy.pixel(x, y);
    QCOMPARE(differing, 0);
}

void TestFileCommands::saveAsPictureDepthAndQuality_data()
{
    QTest::addColumn<QString>("source");
    QTest::addColumn<QList<int>>("offered");
    QTest::addColumn<int>("preset");
    QTest::addColumn<int>("presetQuality");
    QTest::addColumn<int>("chosenDepth");
    QTest::addColumn<int>("chosenQuality");
    QTest::newRow("BMP written at 4 bits") << "photo.bmp" << QList<int>{1, 4, 8, 24} << 24 << 0 << 4 << 0;
    QTest::newRow("PNG written at 1 bit") << "photo.png" << QList<int>{1, 8, 24, 32} << 24 << 0 << 1 << 0;
    QTest::newRow("JPEG at quality 30, written grey at 90") << "photo.jpg" << QList<int>{8, 24} << 24 << 30 << 8 << 90;
    QTest::newRow("JPEG at quality 92, written at 15") << "photo.jpg" << QList<int>{8, 24} << 24 << 92 << 24 << 15;
    QTest::newRow("no choice made keeps the picture's own") << "photo.png" << QList<int>{1, 8, 24, 32} << 24 << 0 << 0 << 0;
}

void TestFileCommands::saveAsPictureDepthAndQuality()
{
    QFETCH(QString, source);
    QFETCH(QList<int>, offered);
    QFETCH(int, preset);
    QFETCH(int, presetQuality);
    QFETCH(int, chosenDepth);
    QFETCH(int, chosenQuality);
    TestDir dir;
    QImage image(64, 40, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 4, y * 6, 128));
    const QString path = dir.filePath(source);
    QImageWriter writer(path);
    if (presetQuality > 0)
        writer.setQuality(presetQuality);
    QVERIFY(writer.write(image));
    m_ui->state.currentFile = path;
    const QString target = dir.filePath(QStringLiteral("saved.") + QFileInfo(source).suffix());
    DialogAnswer answer;
    answer.accepted = true;
    answer.path = target;
    answer.bitsPerPixel = chosenDepth;
    answer.quality = chosenQuality;
    m_ui->responder.answerDialog(answer);

    m_commands->SaveFileAs();

    // The dialog offered the depths the format keeps and the quality of a
    // lossy one, preset from the picture...
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    const DialogRequest &request = m_ui->responder.dialogs().constFirst();
    QCOMPARE(request.bitsPerPixelChoices, offered);
    QCOMPARE(request.bitsPerPixel, preset);
    QCOMPARE(request.offerQuality, presetQuality > 0);
    QVERIFY2(std::abs(request.quality - presetQuality) <= 1, qPrintable(QString::number(request.quality)));
    // ...and the file holds what was chosen.
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    const imaging::LoadResult saved = imaging::loadPicture(target);
    QVERIFY(saved.ok());
    QCOMPARE(saved.picture.info.bitsPerPixel, chosenDepth > 0 ? chosenDepth : 24);
    if (chosenQuality > 0)
        QVERIFY(std::abs(viewer::jpegQualityOfFile(target) - chosenQuality) <= 1);
}

void TestFileCommands::openWithApplication()
{
    TestDir dir;
    QList<QUrl> opened;
    bool succeed = true;
    m_commands->setUrlOpener([&](const QUrl &url) {
        opened << url;
        return succeed;
    });
    m_ui->state.currentFile = dir.createFile("my letter.doc", "x");
    m_commands->OpenwithOLE();
    QCOMPARE(opened, QList<QUrl>{QUrl::fromLocalFile(dir.filePath("my letter.doc"))});
    QVERIFY(m_ui->responder.messages().isEmpty());

    succeed = false;
    m_commands->OpenwithOLE();
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"No Application could Open the File - " + dir.filePath("my letter.doc")});

    m_ui->responder.clear();
    m_ui->state.currentFile = dir.filePath("gone.doc");
    m_commands->OpenwithOLE();
    QCOMPARE(opened.size(), 2);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"File not Found - " + dir.filePath("gone.doc")});
}

void TestFileCommands::unzipOffer_data()
{
    QTest::addColumn<QList<ZipEntry>>("entries");
    QTest::addColumn<bool>("folderExists");
    QTest::addColumn<MessageAnswer>("answer");
    QTest::addColumn<QString>("message"); // prefix; "@" stands for the archive's path
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<bool>("damaged");

    const QList<ZipEntry> good{{"readme.txt", "hello"}, {"pics/a.png", "png"}};
    QTest::newRow("yes unpacks") << good << false << MessageAnswer::Yes << "" << QStringList{"PHOTOS", "Photos.zip"} << false;
    QTest::newRow("no changes nothing") << good << false << MessageAnswer::No << "" << QStringList{"Photos.zip"}
                                        << false;
    QTest::newRow("folder already exists") << good << true << MessageAnswer::Yes
                                           << "Error Unzipping File - @ Folder already Exists"
                                           << QStringList{"PHOTOS", "Photos.zip"} << false;
    QTest::newRow("entry escaping the folder")
        << QList<ZipEntry>{{"readme.txt", "hello"}, {"../../evil.sh", "rm"}} << false << MessageAnswer::Yes
        << "Error Unzipping File - @ - The entry \"../../evil.sh\" would be written outside the folder"
        << QStringList{"Photos.zip"} << false;
    QTest::newRow("damaged data") << QList<ZipEntry>{{"readme.txt", "hello"}, {"big.txt", QByteArray(300000, 'z')}}
                                  << false << MessageAnswer::Yes
                                  << "Error Unzipping File - @ - The archive is damaged (" << QStringList{"Photos.zip"}
                                  << true;
}

void TestFileCommands::unzipOffer()
{
    QFETCH(QList<ZipEntry>, entries);
    QFETCH(bool, folderExists);
    QFETCH(MessageAnswer, answer);
    QFETCH(QString, message);
    QFETCH(QStringList, after);
    QFETCH(bool, damaged);

    TestDir dir;
    const QString zip = dir.filePath("Photos.zip");
    QVERIFY(writeZip(zip, entries));
    if (damaged) {
        // Spoil the compressed data of the second entry; the directory stays intact.
        QFile file(zip);
        QVERIFY(file.open(QIODevice::ReadWrite));
        QByteArray bytes = file.readAll();
        const qsizetype at = bytes.indexOf("big.txt") + 40;
        for (qsizetype i = at; i < at + 200 && i < bytes.size(); ++i)
            bytes[i] = char(i);
        file.seek(0);
        file.write(bytes);
    }
    if (folderExists)
        dir.createFolder("PHOTOS");
    m_ui->responder.answerMessage(answer);
    QSignalSpy finished(m_commands.get(), &FileCommands::unzipFinished);
    QSignalSpy changed(m_commands.get(), &FileCommands::filesChanged);

    m_commands->offerUnzip(zip);
    if (answer == MessageAnswer::Yes)
        QVERIFY(finished.size() == 1 || finished.wait(10000));

    QCOMPARE(m_ui->responder.messageTexts().first(), "Do You want to Un Zip File - " + zip + "? ");
    QCOMPARE(m_ui->responder.messages().first().buttons, MessageButtons::YesNo);
    if (message.isEmpty()) {
        QCOMPARE(m_ui->responder.messages().size(), 1);
    } else {
        QCOMPARE(m_ui->responder.messages().size(), 2);
        QVERIFY2(m_ui->responder.messageTexts().at(1).startsWith(message.replace("@", zip)),
                 qPrintable(m_ui->responder.messageTexts().at(1)));
    }
    QCOMPARE(namesIn(dir.path()), after);
    const bool unpacked = answer == MessageAnswer::Yes && message.isEmpty();
    QCOMPARE(changed.size(), unpacked ? 1 : 0);
    if (unpacked) {
        QCOMPARE(dir.read("PHOTOS/readme.txt"), QByteArray("hello"));
        QCOMPARE(dir.read("PHOTOS/pics/a.png"), QByteArray("png"));
    }
}

QTEST_MAIN(TestFileCommands)
#include "tst_filecommands.moc"
