#include "ModalCloser.h"
#include "UiFixture.h"

#include "core/app/AppState.h"
#include "core/browser/FileListModel.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/viewer/Document.h"
#include "ui/browser/FileListView.h"
#include "ui/browser/Tarnby1.h"
#include "ui/fileops/FileCommands.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"

#include <QAction>
#include <QDir>
#include <QImage>
#include <QLineEdit>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QMenu>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

#include <memory>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// Answers the rename dialog with name and OK.
void renameTo(const QString &name)
{
    whenModal(QStringLiteral("Rename1"), [name](QDialog *d) {
        d->findChild<QLineEdit *>(QStringLiteral("Text1"))->setText(name);
        clickButton(d, "OKBtn");
    });
}

} // namespace

class TestDocumentFileOps : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void renameFromTheWindow_data();
    void renameFromTheWindow();
    void moveFromTheWindow();
    void browserRenameReachesTheWindow();
    void databaseCompanionsFollow();
    void deleteFromTheWindow();
    void fileDeletedByAnotherProgram();
    void saveAsFromThePictureWindowRefreshesTheList();
    void listSeesAFileMadeByAnotherProcess();
    void tenThousandChangingFiles();

private:
    // Opens name (in the folder shown) the way a double-click does.
    ChildFrm1 *open(const QString &name);
    bool listed(const QString &name) const { return m_browser->fileList()->rowForName(name) >= 0; }
    QStringList windowListCaptions() const;

    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<TestDir> m_files;
    std::unique_ptr<Tarnby1> m_browser;
};

void TestDocumentFileOps::init()
{
    m_ui = std::make_unique<UiFixture>();
    // The trash lives below the data folder; keep it inside the test's own folder.
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_ui->home.createFolder(QStringLiteral("data"))));
    m_files = std::make_unique<TestDir>();
    m_browser = std::make_unique<Tarnby1>(m_ui->state, m_ui->services, m_ui->store);
    m_browser->fileList()->setPattern(QStringLiteral("*.*"));
    QSignalSpy loaded(m_browser->fileList(), &FileListModel::folderLoaded);
    QVERIFY(m_browser->goToFolder(m_files->path()));
    QVERIFY(loaded.wait(5000));
}

void TestDocumentFileOps::cleanup()
{
    if (m_browser && m_browser->hasFrame())
        m_browser->frame()->mdiArea()->closeAllSubWindows();
    m_browser.reset();
    m_files.reset();
    m_ui.reset();
}

ChildFrm1 *TestDocumentFileOps::open(const QString &name)
{
    const int before = m_browser->frame()->documentCount();
    m_browser->DisplayImage(m_files->filePath(name));
    if (m_browser->frame()->documentCount() != before + 1)
        return nullptr;
    auto *w = qobject_cast<ChildFrm1 *>(m_browser->frame()->activeDocumentWidget());
    if (w && w->document()->loadingState() != viewer::Document::LoadingState::Loaded) {
        QSignalSpy shown(w, &ChildFrm1::documentShown);
        if (!shown.wait(10000))
            return nullptr;
    }
    return w;
}

QStringList TestDocumentFileOps::windowListCaptions() const
{
    QStringList captions;
    for (QAction *a : m_browser->frame()->windowMenu()->actions()) {
        if (a->objectName() == QLatin1String("WindowList"))
            captions << a->text();
    }
    return captions;
}

void TestDocumentFileOps::renameFromTheWindow_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("renamed");
    QTest::newRow("picture") << "photo.png" << "holiday.png";
    QTest::newRow("text") << "notes.txt" << "minutes.txt";
}

void TestDocumentFileOps::renameFromTheWindow()
{
    QFETCH(QString, name);
    QFETCH(QString, renamed);
    if (name.endsWith(QLatin1String(".png"))) {
        QImage picture(30, 20, QImage::Format_RGB32);
        picture.fill(Qt::red);
        QVERIFY(picture.save(m_files->filePath(name)));
    } else {
        m_files->createFile(name, "a line\r\n");
    }
    m_browser->fileList()->refresh(FileListModel::LoadMode::Synchronous);
    ChildFrm1 *w = open(name);
    QVERIFY(w);
    MDIForm1 *frame = m_browser->frame();
    QSignalSpy refreshed(m_browser->fileList(), &FileListModel::folderLoaded);
    QSignalSpy changed(frame, &MDIForm1::filesChanged);

    renameTo(QFileInfo(renamed).completeBaseName());
    frame->toolClick(QStringLiteral("ID_mnuRenameFile"));

    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("File Rename Successful")});
    // The browser's list is read again, as after its own rename.
    QCOMPARE(changed.size(), 1);
    QVERIFY(refreshed.wait(5000));
    QVERIFY(listed(renamed));
    QVERIFY(!listed(name));
    // The window shows the file where it is now, in every caption.
    const QString newPath = QFileInfo(m_files->filePath(renamed)).absoluteFilePath();
    QCOMPARE(w->filePath(), newPath);
    QCOMPARE(w->document()->path(), newPath);
    QCOMPARE(w->windowTitle(), renamed);
    QCOMPARE(w->parentWidget()->windowTitle(), renamed);
    QCOMPARE(frame->windowTitle(), QStringLiteral("Tarnby 3.0 - ") + renamed);
    QCOMPARE(windowListCaptions(), QStringList{renamed});

    // A later rename acts on the file that exists.
    m_ui->responder.clear();
    renameTo(QStringLiteral("third"));
    frame->toolClick(QStringLiteral("ID_RenameBtn"));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("File Rename Successful")});
    QVERIFY(QFileInfo::exists(m_files->filePath(QStringLiteral("third.") + QFileInfo(name).suffix())));
    QCOMPARE(QFileInfo(w->filePath()).completeBaseName(), QStringLiteral("third"));
}

void TestDocumentFileOps::moveFromTheWindow()
{
    m_files->createFile("report.txt", "figures\r\n");
    const QString elsewhere = m_files->createFolder("archive");
    m_browser->fileList()->refresh(FileListModel::LoadMode::Synchronous);
    ChildFrm1 *w = open("report.txt");
    QVERIFY(w);
    const QString target = elsewhere + QStringLiteral("/report-2024.txt");
    m_ui->responder.acceptFile(target);
    whenModal(QStringLiteral("MoveFile1"), [](QDialog *d) { clickButton(d, "OKBtn"); });
    QSignalSpy changed(m_browser->frame(), &MDIForm1::filesChanged);

    m_browser->frame()->toolClick(QStringLiteral("ID_mnuMoveFile"));

    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("File Moved to - ") + target});
    QCOMPARE(changed.size(), 1);
    QTRY_VERIFY(!listed(QStringLiteral("report.txt")));
    QCOMPARE(w->filePath(), target);
    QCOMPARE(w->parentWidget()->windowTitle(), QStringLiteral("report-2024.txt"));
    // Delete now offers the file that exists.
    m_ui->responder.clear();
    m_ui->responder.answerMessage(MessageAnswer::No);
    m_browser->frame()->toolClick(QStringLiteral("ID_mnuDeleteFile"));
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{QStringLiteral("Move File to the Trash - ") + target + QStringLiteral("? ")});
}

void TestDocumentFileOps::browserRenameReachesTheWindow()
{
    const QString path = m_files->createFile("letter.txt", "Dear all\r\n");
    ChildFrm1 *w = open("letter.txt");
    QVERIFY(w);
    renameTo(QStringLiteral("reply"));
    m_browser->fileCommands()->RenameFile(path);
    QCOMPARE(w->filePath(), QFileInfo(m_files->filePath("reply.txt")).absoluteFilePath());
    QCOMPARE(w->parentWidget()->windowTitle(), QStringLiteral("reply.txt"));
}

void TestDocumentFileOps::databaseCompanionsFollow()
{
    // A memo file opened as text goes along when its table is renamed.
    const QString table = m_files->createFile("sales.dbf", "table");
    m_files->createFile("sales.dbt", "memo");
    m_files->createFile("sales.txt", "notes on the table\r\n");
    ChildFrm1 *notes = open("sales.txt");
    QVERIFY(notes);
    renameTo(QStringLiteral("year"));
    m_browser->fileCommands()->RenameFile(table);
    QCOMPARE(QFileInfo(notes->filePath()).fileName(), QStringLiteral("year.txt"));
    QVERIFY(QFileInfo::exists(notes->filePath()));
}

void TestDocumentFileOps::deleteFromTheWindow()
{
    const QString path = m_files->createFile("old.txt", "gone soon\r\n");
    m_files->createFile("other.txt", "stays\r\n");
    ChildFrm1 *w = open("old.txt");
    QVERIFY(w);
    ChildFrm1 *other = open("other.txt");
    QVERIFY(other);
    // The window of old.txt is active again, as when the user clicks it.
    m_browser->frame()->mdiArea()->setActiveSubWindow(qobject_cast<QMdiSubWindow *>(w->parentWidget()));
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    m_browser->frame()->toolClick(QStringLiteral("ID_mnuDeleteFile"));
    QVERIFY(!QFileInfo::exists(path));
    QTRY_VERIFY(!listed(QStringLiteral("old.txt")));
    QVERIFY(w->isFileRemoved());
    QVERIFY(!other->isFileRemoved());
    QCOMPARE(w->parentWidget()->windowTitle(), QStringLiteral("old.txt - File Deleted"));

    // Nothing acts on the missing file any more; each command says why.
    for (const char *key : {"ID_mnuRenameFile", "ID_mnuMoveFile", "ID_mnuDeleteFile", "ID_mnuOpenFileApplication"}) {
        m_ui->responder.clear();
        ModalCloser closer;
        m_browser->frame()->toolClick(QLatin1String(key));
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("The File has been Deleted - ") + path});
        QVERIFY(m_ui->responder.dialogs().isEmpty());
        QVERIFY(closer.seen().isEmpty());
    }
}

void TestDocumentFileOps::fileDeletedByAnotherProgram()
{
    const QString path = m_files->createFile("draft.txt", "words\r\n");
    ChildFrm1 *w = open("draft.txt");
    QVERIFY(w);
    QVERIFY(m_files->runElsewhere("rm draft.txt"));
    ModalCloser closer;
    m_browser->frame()->toolClick(QStringLiteral("ID_mnuRenameFile"));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("The File has been Deleted - ") + path});
    QVERIFY(closer.seen().isEmpty());
    QVERIFY(w->isFileRemoved());
    QCOMPARE(w->parentWidget()->windowTitle(), QStringLiteral("draft.txt - File Deleted"));
}

void TestDocumentFileOps::saveAsFromThePictureWindowRefreshesTheList()
{
    QImage picture(40, 30, QImage::Format_RGB32);
    picture.fill(Qt::blue);
    QVERIFY(picture.save(m_files->filePath("blue.png")));
    m_browser->fileList()->refresh(FileListModel::LoadMode::Synchronous);
    ChildFrm1 *w = open("blue.png");
    QVERIFY(w);
    QSignalSpy changed(m_browser->frame(), &MDIForm1::filesChanged);
    m_ui->responder.acceptFile(m_files->filePath("copy.png"));
    m_browser->frame()->toolClick(QStringLiteral("ID_mnuSaveFileAs"));
    QVERIFY(m_ui->responder.messages().isEmpty());
    QCOMPARE(changed.size(), 1);
    QTRY_VERIFY(listed(QStringLiteral("copy.png")));
    // The window still shows the file it opened.
    QCOMPARE(QFileInfo(w->filePath()).fileName(), QStringLiteral("blue.png"));
}

void TestDocumentFileOps::listSeesAFileMadeByAnotherProcess()
{
    m_files->createFile("a.txt");
    m_files->createFile("b.txt");
    m_browser->fileList()->refresh(FileListModel::LoadMode::Synchronous);
    m_browser->fileListView()->setCurrentRow(m_browser->fileList()->rowForName(QStringLiteral("b.txt")));
    QVERIFY(m_files->runElsewhere("echo made > 0-made.txt && rm a.txt"));
    QTRY_VERIFY_WITH_TIMEOUT(listed(QStringLiteral("0-made.txt")), 5000);
    QVERIFY(!listed(QStringLiteral("a.txt")));
    // The file the user selected stays selected, though its row moved.
    QTRY_COMPARE(m_browser->fileListView()->currentRow(), m_browser->fileList()->rowForName(QStringLiteral("b.txt")));
    QCOMPARE(m_ui->state.currentFile, m_files->filePath("b.txt"));
}

void TestDocumentFileOps::tenThousandChangingFiles()
{
    QSignalSpy readings(m_browser->fileList(), &FileListModel::folderLoaded);
    QVERIFY(m_files->runElsewhere("seq -f f%g.txt 1 10000 | xargs touch && seq -f f%g.txt 1 10000 | xargs touch"
                                          " && seq -f f%g.txt 1 2000 | xargs rm"));
    QTRY_COMPARE_WITH_TIMEOUT(m_browser->fileList()->fileCount(), 8000, 10000);
    QTest::qWait(1000);
    // Some 30,000 notifications were read as a handful of listings.
    QVERIFY2(readings.size() <= 20, qPrintable(QString::number(readings.size())));
    QCOMPARE(m_browser->fileList()->fileCount(), 8000);
}

QTEST_MAIN(TestDocumentFileOps)
#include "tst_documentfileops.moc"
