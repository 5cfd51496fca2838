#include "ModalCloser.h"
#include "UiFixture.h"

#include "core/browser/FileListModel.h"
#include "core/catalogue/CommandKeys.h"
#include "core/organizer/OrganizerModels.h"
#include "core/organizer/OrganizerStore.h"
#include "core/search/FileSearch.h"
#include "ui/browser/FileListView.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "ui/browser/Tarnby1.h"
#include "ui/organizer/DataControl.h"
#include "ui/organizer/GrpBatch1.h"
#include "ui/organizer/GrpBrow1.h"
#include "ui/organizer/GrpFind.h"
#include "ui/organizer/GrpFlem1.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/organizer/GrpRepair1.h"

#include <QCheckBox>
#include <QComboBox>
#include <QFile>
#include <QImage>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>

#include <algorithm>

namespace commands = tarnby::commands;
namespace ui = tarnby::ui;
using namespace tarnby::organizer;
using tarnby::search::SearchOutcome;
using tarnby::ui::MessageAnswer;

Q_DECLARE_METATYPE(tarnby::search::SearchOutcome)

// A person's whole round through the organizer, from a running browser over a
// fresh catalogue: groups made, a file added from the browser, folders added
// during a search, the groups browsed, sorted and searched, a file handed back
// to the browser, then compact and clear. Every window is opened by its menu
// command and driven through its buttons while its exec() runs.
class TestOrganizerRunThrough : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void roundThroughTheOrganizer();

private:
    // Runs the browser command key and, while its window is up, action on it.
    // Fails when no window called name came up.
    bool inWindow(QLatin1String key, const QString &name, const std::function<void(QDialog *)> &action);
    void showFolderAndSelect(const QString &folder, const QString &name);
    SearchOutcome walkOn(QPushButton *ok);
    void createGroups();
    void addHighlightedFile();
    void addFoldersDuringSearch();
    void browseSortFindAndOpen();
    void compactAndClear();

    OrganizerStore store() const { return OrganizerStore(StoreLocation::inFolder(m_ui->home.path())); }
    QString tree(const QString &relative) const { return m_files->filePath(relative); }

    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<TestDir> m_files;
    std::unique_ptr<ui::Tarnby1> m_browser;
};

namespace {

void setModified(const QString &path, const QDateTime &when)
{
    QFile f(path);
    QVERIFY(f.open(QIODevice::ReadWrite));
    QVERIFY(f.setFileTime(when, QFileDevice::FileModificationTime));
}

QString fieldOf(const FileEntry &e, SortKey key)
{
    switch (key) {
    case SortKey::ID: return QString::number(e.ID).rightJustified(12, QLatin1Char('0'));
    case SortKey::GroupName: return e.GroupName;
    case SortKey::FileName: return e.FileName;
    case SortKey::FileType: return e.FileType;
    case SortKey::Date: return e.Date;
    case SortKey::FileKeyword: return e.FileKeyword;
    }
    return {};
}

// The names of rows in the order of key, letters without regard to case and
// ties as added: worked out here from the rows themselves.
QStringList namesInOrder(QList<FileEntry> rows, SortKey key)
{
    std::stable_sort(rows.begin(), rows.end(), [key](const FileEntry &a, const FileEntry &b) {
        const int c = QString::compare(fieldOf(a, key), fieldOf(b, key), Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a.ID < b.ID;
    });
    QStringList names;
    for (const FileEntry &e : rows)
        names << e.FileName;
    return names;
}

QStringList gridNames(ui::GrpBrow1 *w)
{
    QStringList names;
    for (int row = 0; row < w->entries()->rowCount(); ++row)
        names << w->entries()->index(row, 1).data().toString();
    return names;
}

} // namespace

void TestOrganizerRunThrough::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_files = std::make_unique<TestDir>();
    // The tree the person works on. The files' dates run against the order
    // they are added in, so that every sort key gives an order of its own.
    QImage picture(32, 24, QImage::Format_RGB32);
    picture.fill(Qt::darkCyan);
    m_files->createFolder(QStringLiteral("Photos"));
    QVERIFY(picture.save(tree(QStringLiteral("Photos/beach.png"))));
    m_files->createFile(QStringLiteral("Docs/Mail.TXT"), "mail");
    m_files->createFile(QStringLiteral("Docs/notes.txt"), "notes");
    m_files->createFile(QStringLiteral("Docs/report.doc"), "report");
    m_files->createFile(QStringLiteral("Docs/Old/letter.TXT"), "letter");
    m_files->createFolder(QStringLiteral("Empty"));
    setModified(tree(QStringLiteral("Docs/Mail.TXT")), QDateTime(QDate(2003, 5, 6), QTime(9, 30, 5)));
    setModified(tree(QStringLiteral("Docs/notes.txt")), QDateTime(QDate(1999, 12, 31), QTime(23, 59, 1)));
    setModified(tree(QStringLiteral("Docs/Old/letter.TXT")), QDateTime(QDate(2001, 1, 2), QTime(13, 5, 0)));

    m_browser = std::make_unique<ui::Tarnby1>(m_ui->state, m_ui->services, m_ui->store);
    ui::StartupRequest request;
    request.homeOption = m_ui->home.path();
    request.dataFolder = m_ui->home.filePath(QStringLiteral("data"));
    m_browser->load(request);
    tarnby::FolderRoots roots;
    roots.volumes = {m_files->path()};
    m_browser->folderTree()->setRoots(roots);
    m_ui->responder.clear();
}

void TestOrganizerRunThrough::cleanup()
{
    m_browser.reset();
    m_files.reset();
    m_ui.reset();
}

bool TestOrganizerRunThrough::inWindow(QLatin1String key, const QString &name, const std::function<void(QDialog *)> &action)
{
    bool seen = false;
    whenModal(name, [&](QDialog *dialog) {
        seen = true;
        action(dialog);
        if (dialog->isVisible())
            dialog->reject();
    });
    m_browser->toolClick(QString(key));
    return seen;
}

void TestOrganizerRunThrough::showFolderAndSelect(const QString &folder, const QString &name)
{
    QSignalSpy loaded(m_browser->fileList(), &tarnby::FileListModel::folderLoaded);
    QVERIFY(m_browser->goToFolder(folder));
    if (m_browser->fileList()->isLoading())
        QVERIFY(loaded.wait(10000));
    const int row = m_browser->fileList()->rowForName(name);
    QVERIFY(row >= 0);
    m_browser->fileListView()->setCurrentRow(row);
}

SearchOutcome TestOrganizerRunThrough::walkOn(QPushButton *ok)
{
    // The batch window's OK adds the folder and moves the search on itself.
    QSignalSpy finished(m_browser.get(), &ui::Tarnby1::searchFinished);
    ok->click();
    if (!finished.wait(30000))
        return SearchOutcome::Running;
    return finished.first().first().value<SearchOutcome>();
}

void TestOrganizerRunThrough::createGroups()
{
    QVERIFY(inWindow(commands::keys::mnuCreateGroups, QStringLiteral("GrpMaint"), [](QDialog *d) {
        auto *w = static_cast<ui::GrpMaint *>(d);
        // A fresh catalogue: the window offers a new group at once.
        QCOMPARE(w->mode(), QStringLiteral("A"));
        QCOMPARE(w->groupName()->text(), QStringLiteral("New Group"));
        w->groupName()->setText(QStringLiteral("Photos"));
        w->groupDescription()->setText(QStringLiteral("Pictures of the summer"));
        w->findChild<QPushButton *>(QStringLiteral("SaveBtn"))->click();
        w->findChild<QPushButton *>(QStringLiteral("AddBtn"))->click();
        QCOMPARE(w->groupName()->text(), QStringLiteral("New Group"));
        w->groupName()->setText(QStringLiteral("Pat's Docs"));
        w->findChild<QPushButton *>(QStringLiteral("SaveBtn"))->click();
        QCOMPARE(w->mode(), QStringLiteral("E"));
        QCOMPARE(w->groupName()->text(), QStringLiteral("Pat's Docs"));
    }));
    const QList<GroupRow> groups = store().groups();
    QCOMPARE(groups.size(), 2);
    QCOMPARE(groups.at(0).GroupName, QStringLiteral("Photos"));
    QCOMPARE(groups.at(0).GroupDesc, QStringLiteral("Pictures of the summer"));
    QCOMPARE(groups.at(1).GroupName, QStringLiteral("Pat's Docs"));
    QCOMPARE(groups.at(1).GroupDesc, QStringLiteral("New Group Description"));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerRunThrough::addHighlightedFile()
{
    showFolderAndSelect(tree(QStringLiteral("Photos")), QStringLiteral("beach.png"));
    QCOMPARE(m_ui->state.currentFile, tree(QStringLiteral("Photos/beach.png")));
    QVERIFY(inWindow(commands::keys::AddOrgFilesBtn, QStringLiteral("GrpFlem1"), [this](QDialog *d) {
        auto *w = static_cast<ui::GrpFlem1 *>(d);
        // No entries yet: the highlighted file waits to be added.
        QCOMPARE(w->mode(), QStringLiteral("A"));
        QCOMPARE(w->hint(), QStringLiteral("Click Check to Add"));
        QCOMPARE(w->findChild<QLineEdit *>(QStringLiteral("FldFileName"))->text(), QStringLiteral("beach.png"));
        QCOMPARE(w->findChild<QLineEdit *>(QStringLiteral("FldFilePath"))->text(), tree(QStringLiteral("Photos")));
        QCOMPARE(w->findChild<QComboBox *>(QStringLiteral("CMBTYPE"))->currentText(), QStringLiteral("Picture"));
        w->findChild<QComboBox *>(QStringLiteral("CMBGRP"))->setCurrentText(QStringLiteral("Photos"));
        w->findChild<QPushButton *>(QStringLiteral("SaveBtn"))->click();
        QCOMPARE(w->mode(), QStringLiteral("E"));
        QCOMPARE(w->hint(), QStringLiteral("-Saved-"));
        QVERIFY(w->currentRow());
        QCOMPARE(w->currentRow()->FileName, QStringLiteral("beach.png"));
        QVERIFY(w->previewShown());
        w->findChild<QPushButton *>(QStringLiteral("ExitBtn"))->click();
    }));
    const QList<FileEntry> photos = store().entries(QStringLiteral("Photos"), SortKey::ID);
    QCOMPARE(photos.size(), 1);
    QCOMPARE(photos.first().FileKeyword, QStringLiteral("Photos"));
    QCOMPARE(photos.first().DateTimeCreated.size(), 14);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerRunThrough::addFoldersDuringSearch()
{
    m_browser->toolClick(QString(commands::keys::mnuOrganizeFilesSearch));
    ui::GrpBatch1 *batch = m_browser->batchWindow();
    QVERIFY(batch);
    QCOMPARE(batch->groupBox()->currentText(), QStringLiteral("Photos"));
    batch->groupBox()->setCurrentText(QStringLiteral("Pat's Docs"));
    auto *ok = batch->findChild<QPushButton *>(QStringLiteral("OKBtn"));

    m_ui->state.searchPattern = QStringLiteral("*.TXT;*.PNG");
    // Until the walk has stopped on a folder there is nothing to add: an
    // impatient OK neither adds the folder the list still shows nor moves on.
    QSignalSpy finished(m_browser.get(), &ui::Tarnby1::searchFinished);
    m_browser->FindFileRoutine();
    QVERIFY(m_browser->searchRunning());
    QVERIFY(!ok->isEnabled());
    ok->click();
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.first().first().value<SearchOutcome>(), SearchOutcome::Found);
    QVERIFY(ok->isEnabled());
    QCOMPARE(store().entryCount(), 1);
    QCOMPARE(m_browser->currentFolder(), tree(QStringLiteral("Docs")));
    const QStringList docsShown = m_browser->fileList()->shownFilePaths();
    // OK adds what the list shows, then the search goes on. The walk takes
    // the top folders before the ones below them.
    QCOMPARE(walkOn(ok), SearchOutcome::Found);
    QCOMPARE(m_browser->currentFolder(), tree(QStringLiteral("Photos")));
    // The picture is in already: this folder is passed over.
    batch->skipBox()->setChecked(true);
    QCOMPARE(walkOn(ok), SearchOutcome::Found);
    QCOMPARE(m_browser->currentFolder(), tree(QStringLiteral("Docs/Old")));
    batch->skipBox()->setChecked(false);
    QCOMPARE(walkOn(ok), SearchOutcome::EndOfTree);
    QCOMPARE(m_ui->responder.messageTexts().last(), QStringLiteral(" End of Search . . ."));
    m_ui->responder.clear();

    const QList<FileEntry> docs = store().entries(QStringLiteral("Pat's Docs"), SortKey::ID);
    QStringList added;
    for (const FileEntry &e : docs)
        added << e.FileLocation + QLatin1Char('/') + e.FileName;
    QCOMPARE(added, docsShown + QStringList{tree(QStringLiteral("Docs/Old/letter.TXT"))});
    QCOMPARE(added.mid(0, 2), (QStringList{tree(QStringLiteral("Docs/Mail.TXT")), tree(QStringLiteral("Docs/notes.txt"))}));
    // One creation stamp a click; the description and keyword of a batch.
    QCOMPARE(docs.at(0).DateTimeCreated, docs.at(1).DateTimeCreated);
    QCOMPARE(docs.at(0).FileDescription, QStringLiteral("Mail.TXT Description"));
    QCOMPARE(docs.at(2).FileKeyword, QStringLiteral("Old"));
    QCOMPARE(store().entries(QStringLiteral("Photos"), SortKey::ID).size(), 1);
    batch->close();
}

void TestOrganizerRunThrough::browseSortFindAndOpen()
{
    const QList<FileEntry> docs = store().entries(QStringLiteral("Pat's Docs"), SortKey::ID);
    QCOMPARE(docs.size(), 3);
    QVERIFY(inWindow(commands::keys::mnuViewGroups, QStringLiteral("GrpBrow1"), [&](QDialog *d) {
        auto *w = static_cast<ui::GrpBrow1 *>(d);
        // The groups in name order; the first one's entries as added.
        QCOMPARE(w->groups()->rowCount(), 2);
        QCOMPARE(w->currentGroup(), QStringLiteral("Pat's Docs"));
        QCOMPARE(gridNames(w), (QStringList{"Mail.TXT", "notes.txt", "letter.TXT"}));

        // Each sort choice in turn; "File Path" keeps the date order before it.
        const int choices[] = {1, 2, 3, 4, 6, 5, 0};
        SortKey expected = SortKey::ID;
        for (const int choice : choices) {
            expected = keyAfterChoice(choice, expected);
            QListWidget *list = w->sortList();
            QTest::mouseClick(list->viewport(), Qt::LeftButton, {}, list->visualItemRect(list->item(choice)).center());
            QCOMPARE(w->sortKey(), expected);
            QCOMPARE(gridNames(w), namesInOrder(docs, expected));
        }
        QCOMPARE(namesInOrder(docs, SortKey::Date), (QStringList{"notes.txt", "letter.TXT", "Mail.TXT"}));
        QCOMPARE(namesInOrder(docs, SortKey::FileName), (QStringList{"letter.TXT", "Mail.TXT", "notes.txt"}));

        // The other group, from the group grid.
        w->findChild<QPushButton *>(QStringLiteral("SwitchBtn"))->click();
        QVERIFY(w->groupGridShown());
        QTableView *groupGrid = w->grid(1);
        QTest::mouseClick(groupGrid->viewport(), Qt::LeftButton, {},
                          groupGrid->visualRect(w->groups()->index(1, 0)).center());
        QCOMPARE(w->currentGroup(), QStringLiteral("Photos"));
        QCOMPARE(gridNames(w), QStringList{"beach.png"});
        w->findChild<QPushButton *>(QStringLiteral("SwitchBtn"))->click();
        QVERIFY(!w->groupGridShown());

        // Find "m": the nearest name at or after it is Mail.TXT, in the other
        // group, which the browser then shows.
        whenModal(QStringLiteral("GrpFind2"), [](QDialog *f) {
            auto *find = static_cast<ui::GrpFind2 *>(f);
            find->fileNameBox()->setText(QStringLiteral("m"));
            find->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
        });
        w->findChild<QPushButton *>(QStringLiteral("FindBtn"))->click();
        QCOMPARE(w->currentGroup(), QStringLiteral("Pat's Docs"));
        QCOMPARE(w->dataControl(0)->caption(), QStringLiteral("Record ID: %1").arg(docs.at(0).ID));
        const QModelIndexList selected = w->grid(0)->selectionModel()->selectedRows();
        QCOMPARE(selected.size(), 1);
        QCOMPARE(w->entries()->entryAt(selected.first().row())->FileName, QStringLiteral("Mail.TXT"));

        // Select hands the file to the browser.
        w->findChild<QPushButton *>(QStringLiteral("SelectBtn"))->click();
    }));
    const QString mail = tree(QStringLiteral("Docs/Mail.TXT"));
    QTRY_COMPARE(m_ui->state.currentFile, mail);
    QCOMPARE(m_browser->currentFolder(), tree(QStringLiteral("Docs")));
    QCOMPARE(m_browser->fileList()->filePath(m_browser->fileListView()->currentRow()), mail);

    // The entry window finds by keyword and shows the entry found.
    QVERIFY(inWindow(commands::keys::mnuSelectFilesGroup, QStringLiteral("GrpFlem1"), [](QDialog *d) {
        auto *w = static_cast<ui::GrpFlem1 *>(d);
        // The highlighted file's entry is the one shown.
        QCOMPARE(w->currentRow()->FileName, QStringLiteral("Mail.TXT"));
        whenModal(QStringLiteral("GrpFind1"), [](QDialog *f) {
            auto *find = static_cast<ui::GrpFind1 *>(f);
            find->keywordBox()->setText(QStringLiteral("old"));
            find->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
        });
        w->findChild<QPushButton *>(QStringLiteral("FindBtn"))->click();
        QCOMPARE(w->currentRow()->FileName, QStringLiteral("letter.TXT"));
        QCOMPARE(w->mode(), QStringLiteral("E"));
    }));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerRunThrough::compactAndClear()
{
    const qint64 entries = store().entryCount();
    for (int round = 0; round < 2; ++round) {
        QVERIFY(inWindow(commands::keys::mnuRepairOrganizerDatabase, QStringLiteral("GrpRepair1"), [](QDialog *d) {
            auto *w = static_cast<ui::GrpRepair1 *>(d);
            w->option(1)->setChecked(true);
            w->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
        }));
    }
    QCOMPARE(m_ui->responder.messageTexts(), (QStringList{"File Successfully Compacted", "File Successfully Compacted"}));
    QCOMPARE(store().entryCount(), entries);
    QVERIFY(!QFile::exists(m_ui->home.filePath(QStringLiteral("Test.MDB"))));

    m_ui->responder.clear();
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    QVERIFY(inWindow(commands::keys::mnuClearFilesOrg, QStringLiteral("GrpClear1"), [](QDialog *d) {
        d->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    }));
    QCOMPARE(m_ui->responder.messageTexts(),
             (QStringList{"Are you sure you want to remove all Files in the Group File Organizer Database?",
                          "All Files successfully removed from the Group File Organizer Database"}));
    QCOMPARE(store().entryCount(), 0);
    QCOMPARE(store().groups().size(), 2);
    QVERIFY(!QFile::exists(m_ui->home.filePath(QStringLiteral("FileTabl2.MDB"))));

    // With no entries left, every group can be deleted.
    m_ui->responder.clear();
    QVERIFY(inWindow(commands::keys::mnuCreateGroups, QStringLiteral("GrpMaint"), [this](QDialog *d) {
        auto *w = static_cast<ui::GrpMaint *>(d);
        for (int i = 0; i < 2; ++i) {
            m_ui->responder.answerMessage(MessageAnswer::Yes);
            w->findChild<QPushButton *>(QStringLiteral("DeleteBtn"))->click();
        }
        QCOMPARE(w->mode(), QStringLiteral("A"));
    }));
    QCOMPARE(m_ui->responder.messageTexts(),
             (QStringList{"Are you sure you want to Delete Group - Pat's Docs from the Database", "Group - Pat's Docs - Deleted",
                          "Are you sure you want to Delete Group - Photos from the Database", "Group - Photos - Deleted"}));
    QVERIFY(store().groups().isEmpty());
}

void TestOrganizerRunThrough::roundThroughTheOrganizer()
{
    // Start-up delivers the empty catalogue in the program folder.
    QVERIFY(QFile::exists(m_ui->home.filePath(QStringLiteral("FileTabl.MDB"))));
    QVERIFY(store().check().ok());
    createGroups();
    if (QTest::currentTestFailed())
        return;
    addHighlightedFile();
    if (QTest::currentTestFailed())
        return;
    addFoldersDuringSearch();
    if (QTest::currentTestFailed())
        return;
    browseSortFindAndOpen();
    if (QTest::currentTestFailed())
        return;
    compactAndClear();
}

QTEST_MAIN(TestOrganizerRunThrough)
#include "tst_organizerrunthrough.moc"
