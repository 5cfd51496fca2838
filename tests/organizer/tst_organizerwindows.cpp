#include "CliRun.h"
#include "UiFixture.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "core/organizer/OrganizerStore.h"
#include "ui/organizer/DataControl.h"
#include "ui/organizer/GrpBatch1.h"
#include "ui/organizer/GrpBrow1.h"
#include "ui/organizer/GrpFind.h"
#include "ui/organizer/GrpFlem1.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/organizer/GrpRepair1.h"
#include "ui/organizer/OrganizerAccess.h"

#include <QCheckBox>
#include <QComboBox>
#include <QElapsedTimer>
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

using namespace tarnby::organizer;
using tarnby::ui::MessageAnswer;

// The organizer's windows driven headless on a catalogue of the test's own.
class TestOrganizerWindows : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void maintOpensOnEmptyTableReadyToSave();
    void maintSaveKeepsDateTimeCreated();
    void maintDeleteRefusedWithOneEntry_data();
    void maintDeleteRefusedWithOneEntry();
    void maintRecordPositionCaptions();
    void entryWindowWithoutGroupsSaysSo();
    void entryWindowAddsHighlightedFileAndKeepsItShown();
    void entryWindowShowsFirstOfEqualNames();
    void entryWindowPreviewsPictures();
    void batchOfEmptyFolderOrSkipStillAdvances_data();
    void batchOfEmptyFolderOrSkipStillAdvances();
    void batchMakesGroupOnTheFly();
    void browserHeadersSortAndFilePath();
    void browserFetchesRowsLazily();
    void browserLetsOtherProcessesWrite();
    void browserSwitchAndSelect();
    void browserWithQuoteInGroupName();
    void findWindows_data();
    void findWindows();
    void repairCompactTwiceThenClear();
    void damagedCatalogueOffersRepair();

private:
    OrganizerStore store() const { return OrganizerStore(StoreLocation::inFolder(m_ui->home.path())); }
    FileEntry entry(const QString &group, const QString &name, const QString &folder = QStringLiteral("/data"));
    // The group "Big" with 1000 entries, more than one block of the browser's grid.
    QList<qint64> addBigGroup();
    std::unique_ptr<UiFixture> m_ui;
};

void TestOrganizerWindows::init()
{
    m_ui = std::make_unique<UiFixture>();
    QVERIFY(store().create().ok());
}

void TestOrganizerWindows::cleanup()
{
    m_ui.reset();
}

FileEntry TestOrganizerWindows::entry(const QString &group, const QString &name, const QString &folder)
{
    FileEntry e;
    e.GroupName = group;
    e.FileName = name;
    e.FileLocation = folder;
    e.FileType = tarnby::catalogue::GetFileCategoryName(name);
    return e;
}

void TestOrganizerWindows::maintOpensOnEmptyTableReadyToSave()
{
    tarnby::ui::GrpMaint w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.windowTitle(), QStringLiteral("Add and Maintain File Groups"));
    QCOMPARE(w.mode(), QStringLiteral("A"));
    QCOMPARE(w.groupName()->text(), QStringLiteral("New Group"));
    QCOMPARE(w.groupDescription()->text(), QStringLiteral("New Group Description"));
    w.findChild<QPushButton *>(QStringLiteral("SaveBtn"))->click();
    QCOMPARE(w.mode(), QStringLiteral("E"));
    const QList<GroupRow> groups = store().groups();
    QCOMPARE(groups.size(), 1);
    QCOMPARE(groups.first().GroupName, QStringLiteral("New Group"));
    QCOMPARE(groups.first().DateTimeCreated.size(), 14);
    QCOMPARE(w.dateLabel()->text(), groups.first().DateDisp);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerWindows::maintSaveKeepsDateTimeCreated()
{
    const qint64 id = store().addGroup(groupMadeOnTheFly(QStringLiteral("Old"), SetTimeStamp(QDateTime(QDate(2001, 2, 3), QTime(4, 5, 6)))));
    tarnby::ui::GrpMaint w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.mode(), QStringLiteral("E"));
    w.groupName()->setText(QStringLiteral("Renamed"));
    w.saveClicked();
    const GroupRow row = *store().group(id);
    QCOMPARE(row.GroupName, QStringLiteral("Renamed"));
    QCOMPARE(row.DateTimeCreated, QStringLiteral("20010203040506"));
    QVERIFY(row.Date != QLatin1String("20010203"));
    QCOMPARE(store().groups().size(), 1);
}

void TestOrganizerWindows::maintDeleteRefusedWithOneEntry_data()
{
    QTest::addColumn<int>("answer");
    QTest::newRow("user would say Yes") << int(MessageAnswer::Yes);
    QTest::newRow("user would say No") << int(MessageAnswer::No);
}

void TestOrganizerWindows::maintDeleteRefusedWithOneEntry()
{
    QFETCH(int, answer);
    store().addGroup(groupMadeOnTheFly(QStringLiteral("Kept"), SetTimeStamp()));
    store().addGroup(groupMadeOnTheFly(QStringLiteral("Spare"), SetTimeStamp()));
    store().addEntries({entry("Kept", "one.txt")});
    tarnby::ui::GrpMaint w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.groupName()->text(), QStringLiteral("Kept"));
    m_ui->responder.answerMessage(MessageAnswer(answer));
    w.deleteClicked();
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"You cannot Delete Group - Kept - Delete the Files below in the Group"});
    QCOMPARE(store().groups().size(), 2);

    // A group without entries goes after the question.
    m_ui->responder.clear();
    w.dataControl()->moveNext();
    QCOMPARE(w.groupName()->text(), QStringLiteral("Spare"));
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    w.deleteClicked();
    QCOMPARE(m_ui->responder.messageTexts(), (QStringList{"Are you sure you want to Delete Group - Spare from the Database",
                                                          "Group - Spare - Deleted"}));
    QCOMPARE(store().groupNames(), QStringList{"Kept"});
    QCOMPARE(w.groupName()->text(), QStringLiteral("Kept"));
}

void TestOrganizerWindows::maintRecordPositionCaptions()
{
    for (const char *g : {"d", "B", "a", "C"})
        store().addGroup(groupMadeOnTheFly(QLatin1String(g), SetTimeStamp()));
    tarnby::ui::GrpMaint w(m_ui->state, m_ui->services, store());
    // Paged in name order, letters in any case.
    QCOMPARE(w.groupName()->text(), QStringLiteral("a"));
    w.dataControl()->moveNext();
    QCOMPARE(w.groupName()->text(), QStringLiteral("B"));
    QCOMPARE(w.dataControl()->caption(), QStringLiteral("Record %Position: 25.00 %"));
    w.dataControl()->moveLast();
    w.dataControl()->moveNext();
    QCOMPARE(w.dataControl()->caption(), QStringLiteral("End of File"));
    QCOMPARE(w.groupName()->text(), QStringLiteral("d"));
    w.dataControl()->moveFirst();
    w.dataControl()->movePrevious();
    QCOMPARE(w.dataControl()->caption(), QStringLiteral("Beginning of File"));
    QCOMPARE(w.groupName()->text(), QStringLiteral("a"));
    // What was typed into a row stays when the user moves on.
    w.groupDescription()->setText(QStringLiteral("typed"));
    w.dataControl()->moveNext();
    QCOMPARE(store().groups().at(2).GroupDesc, QStringLiteral("typed"));
}

void TestOrganizerWindows::entryWindowWithoutGroupsSaysSo()
{
    m_ui->state.currentFile = m_ui->home.createFile(QStringLiteral("pics/a.jpg"));
    tarnby::ui::GrpFlem1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{"No Groups to contain Files - Create a new Group using the Create and Maintain Groups Organize Menu Option"});
}

void TestOrganizerWindows::entryWindowAddsHighlightedFileAndKeepsItShown()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("Trip"), SetTimeStamp()));
    const QString file = m_ui->home.createFile(QStringLiteral("Beach/sun.jpg"));
    QFile f(file);
    QVERIFY(f.open(QIODevice::ReadWrite));
    QVERIFY(f.setFileTime(QDateTime(QDate(1999, 3, 14), QTime(10, 23, 45)), QFileDevice::FileModificationTime));
    f.close();
    m_ui->state.currentFile = file;
    tarnby::ui::GrpFlem1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.windowTitle(), QStringLiteral("Add and Remove Files in the Group File Organizer"));
    // An empty table starts a new entry for the highlighted file.
    QCOMPARE(w.mode(), QStringLiteral("A"));
    QCOMPARE(w.findChild<QLineEdit *>(QStringLiteral("FldFileName"))->text(), QStringLiteral("sun.jpg"));
    QCOMPARE(w.findChild<QLineEdit *>(QStringLiteral("FldFileDesc"))->text(), QStringLiteral("Description of sun.jpg"));
    QCOMPARE(w.findChild<QLineEdit *>(QStringLiteral("FldFileKeywrd"))->text(), QStringLiteral("Beach"));
    QCOMPARE(w.findChild<QComboBox *>(QStringLiteral("CMBTYPE"))->currentText(), QStringLiteral("Picture"));
    QCOMPARE(w.hint(), QStringLiteral("Click Check to Add"));
    store().addEntries({entry("Trip", "aaa.txt"), entry("Trip", "zzz.txt")});
    w.saveClicked();
    QCOMPARE(w.mode(), QStringLiteral("E"));
    QCOMPARE(w.hint(), QStringLiteral("-Saved-"));
    QVERIFY(w.currentRow());
    QCOMPARE(w.currentRow()->FileName, QStringLiteral("sun.jpg"));
    QCOMPARE(w.currentRow()->Date, QStringLiteral("19990314"));
    QCOMPARE(w.currentRow()->Time, QStringLiteral("10:23:45 AM"));
    QCOMPARE(w.currentRow()->GroupName, QStringLiteral("Trip"));
    QCOMPARE(w.dataControl()->position(), 1); // between aaa.txt and zzz.txt

    // Delete asks first; No keeps the entry.
    m_ui->responder.answerMessage(MessageAnswer::No);
    w.deleteClicked();
    QCOMPARE(m_ui->responder.messageTexts().last(), QStringLiteral("Are you sure you want to Delete File - sun.jpg from the Database"));
    QCOMPARE(store().entryCount(), 3);
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    w.deleteClicked();
    QCOMPARE(store().entryCount(), 2);
    QCOMPARE(w.mode(), QStringLiteral("E"));
    QCOMPARE(w.currentRow()->FileName, QStringLiteral("zzz.txt"));

    // The sort button pages by group instead.
    w.sortClicked();
    QCOMPARE(w.order(), TableOrder::GroupName);
}

void TestOrganizerWindows::entryWindowShowsFirstOfEqualNames()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp()));
    const QList<qint64> ids = store().addEntries({entry("G", "b.txt"), entry("G", "same.txt"), entry("G", "same.txt")});
    m_ui->state.currentFile = QStringLiteral("/elsewhere/same.txt");
    tarnby::ui::GrpFlem1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.mode(), QStringLiteral("E"));
    QCOMPARE(w.currentRow()->ID, ids.at(1));
    // The find window's answer moves the window.
    w.showEntry(ids.at(0));
    QCOMPARE(w.currentRow()->FileName, QStringLiteral("b.txt"));
}

void TestOrganizerWindows::entryWindowPreviewsPictures()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp()));
    const QString folder = m_ui->home.createFolder(QStringLiteral("pics"));
    QImage picture(64, 48, QImage::Format_RGB32);
    picture.fill(Qt::darkGreen);
    QVERIFY(picture.save(folder + QStringLiteral("/green.png")));
    m_ui->home.createFile(QStringLiteral("pics/notes.txt"), "text");
    FileEntry text = entry("G", "notes.txt", folder);
    const QList<qint64> ids = store().addEntries({entry("G", "green.png", folder), text, entry("G", "gone.png", folder)});
    m_ui->state.currentFile = folder + QStringLiteral("/green.png");
    tarnby::ui::GrpFlem1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.currentRow()->FileName, QStringLiteral("green.png"));
    QVERIFY(w.previewShown());
    w.showEntry(ids.at(1));
    QVERIFY(!w.previewShown());
    // A picture that is gone shows no preview and no error.
    w.showEntry(ids.at(2));
    QVERIFY(!w.previewShown());
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerWindows::batchOfEmptyFolderOrSkipStillAdvances_data()
{
    QTest::addColumn<bool>("skip");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("folder of 0 files") << false << QStringList{};
    QTest::newRow("CHKSKIP checked") << true << QStringList{"a.jpg", "b.jpg"};
}

void TestOrganizerWindows::batchOfEmptyFolderOrSkipStillAdvances()
{
    QFETCH(bool, skip);
    QFETCH(QStringList, names);
    store().addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp()));
    const QString folder = m_ui->home.createFolder(QStringLiteral("pics"));
    for (const QString &n : names)
        m_ui->home.createFile(QStringLiteral("pics/") + n);
    tarnby::ui::GrpBatch1 w(m_ui->state, m_ui->services, store(), [&] { return tarnby::ui::GrpBatch1::FolderFiles{folder, names}; });
    QSignalSpy advanced(&w, &tarnby::ui::GrpBatch1::findNextRequested);
    w.skipBox()->setChecked(skip);
    w.findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    QCOMPARE(advanced.size(), 1);
    QCOMPARE(store().entryCount(), 0);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerWindows::batchMakesGroupOnTheFly()
{
    const QString folder = m_ui->home.createFolder(QStringLiteral("Holiday"));
    const QStringList names{"a.jpg", "notes.txt", "c.bmp"};
    for (const QString &n : names)
        m_ui->home.createFile(QStringLiteral("Holiday/") + n);
    tarnby::ui::GrpBatch1 w(m_ui->state, m_ui->services, store(), [&] { return tarnby::ui::GrpBatch1::FolderFiles{folder, names}; });
    QCOMPARE(w.windowTitle(), QStringLiteral("Add Files to a File Group"));
    QCOMPARE(w.groupBox()->currentText(), QStringLiteral("New Group"));
    w.groupBox()->setEditText(QStringLiteral("Holidays"));
    w.okClicked();
    QCOMPARE(store().groupNames(), QStringList{"Holidays"});
    const QList<FileEntry> rows = store().entries(QStringLiteral("Holidays"), SortKey::ID);
    QCOMPARE(rows.size(), 3);
    QCOMPARE(rows.at(1).FileName, QStringLiteral("notes.txt"));
    QCOMPARE(rows.at(1).FileKeyword, QStringLiteral("Holiday"));
    QCOMPARE(rows.at(0).DateTimeCreated, rows.at(2).DateTimeCreated);
}

void TestOrganizerWindows::browserHeadersSortAndFilePath()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("G"), SetTimeStamp()));
    store().addEntries({entry("G", "c.txt"), entry("G", "A.bmp"), entry("G", "b.doc")});
    tarnby::ui::GrpBrow1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.windowTitle(), QStringLiteral("Browse and View Files from File Group"));
    QStringList headers;
    for (int c = 0; c < w.entries()->columnCount(); ++c)
        headers << w.entries()->headerData(c, Qt::Horizontal).toString();
    QCOMPARE(headers, (QStringList{"File Group", "File Name", "File Location", "File Description", "File Search Word",
                                   "Type of File", "File Updated", "Updated Time", "Added to Database"}));
    QCOMPARE(w.groups()->headerData(2, Qt::Horizontal).toString(), QStringLiteral("Last Updated"));
    auto names = [&] {
        QStringList n;
        for (int r = 0; r < w.entries()->rowCount(); ++r)
            n << w.entries()->entryAt(r)->FileName;
        return n;
    };
    QCOMPARE(names(), (QStringList{"c.txt", "A.bmp", "b.doc"}));
    w.sortChosen(2); // "File Name"
    QCOMPARE(names(), (QStringList{"A.bmp", "b.doc", "c.txt"}));
    w.sortChosen(6); // "File Path" keeps the order in force
    QCOMPARE(w.sortKey(), SortKey::FileName);
    QCOMPARE(names(), (QStringList{"A.bmp", "b.doc", "c.txt"}));
    w.entryRowClicked(1);
    QCOMPARE(w.dataControl(0)->caption(), QStringLiteral("Record ID: %1").arg(w.entries()->entryAt(1)->ID));
    w.dataControl(0)->moveLast();
    w.dataControl(0)->moveNext();
    QCOMPARE(w.dataControl(0)->caption(), QStringLiteral("End of File Reached"));
}

QList<qint64> TestOrganizerWindows::addBigGroup()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("Big"), SetTimeStamp()));
    QList<FileEntry> rows;
    for (int i = 0; i < 1000; ++i)
        rows << entry("Big", QStringLiteral("f%1.txt").arg(i, 4, 10, QLatin1Char('0')));
    return store().addEntries(rows);
}

void TestOrganizerWindows::browserFetchesRowsLazily()
{
    const QList<qint64> ids = addBigGroup();
    tarnby::ui::GrpBrow1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.entries()->rowCount(), tarnby::organizer::EntryGridModel::BlockSize);
    QVERIFY(w.entries()->canFetchMore({}));
    // Finding an entry far down reads on to it.
    QVERIFY(w.showEntry(ids.at(900)));
    QVERIFY(w.entries()->rowCount() > 900);
    QCOMPARE(w.dataControl(0)->caption(), QStringLiteral("Record ID: %1").arg(ids.at(900)));
}

void TestOrganizerWindows::browserLetsOtherProcessesWrite()
{
    const QList<qint64> ids = addBigGroup();
    tarnby::ui::GrpBrow1 w(m_ui->state, m_ui->services, store());
    w.show();
    QVERIFY(w.entries()->canFetchMore({}));

    // The window is open with rows still to read: a writer in a terminal is
    // not kept waiting (the catalogue's wait for a lock is ten seconds).
    QElapsedTimer clock;
    clock.start();
    const clitest::Run add = clitest::runCli(QStringLiteral("group"), {QStringLiteral("add"), QStringLiteral("Other"),
                                                                       QStringLiteral("--home"), m_ui->home.path()});
    QCOMPARE(add.exitCode, 0);
    QVERIFY2(clock.elapsed() < 5000, qPrintable(QStringLiteral("the writer waited %1 ms").arg(clock.elapsed())));
    QVERIFY(store().groupNames().contains(QStringLiteral("Other")));

    // An entry that another process deletes before its screen is read is
    // left out; the rest read on in their order.
    QVERIFY(store().deleteEntry(ids.at(600)).ok());
    QVERIFY(w.showEntry(ids.at(900)));
    QVERIFY(!w.showEntry(ids.at(600)));
    while (w.entries()->canFetchMore({}))
        w.entries()->fetchMore({});
    QCOMPARE(w.entries()->rowCount(), 999);
    QCOMPARE(w.entries()->entryAt(600)->ID, ids.at(601));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerWindows::browserSwitchAndSelect()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("A"), SetTimeStamp()));
    store().addGroup(groupMadeOnTheFly(QStringLiteral("B"), SetTimeStamp()));
    store().addEntries({entry("A", "a.txt"), entry("B", "root.txt", QStringLiteral("/"))});
    tarnby::ui::GrpBrow1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.currentGroup(), QStringLiteral("A"));
    auto *select = w.findChild<QPushButton *>(QStringLiteral("SelectBtn"));
    w.switchClicked();
    QVERIFY(w.groupGridShown());
    QVERIFY(!select->isEnabled());
    QVERIFY(!w.findChild<QPushButton *>(QStringLiteral("SortBtn"))->isEnabled());
    w.sortChosen(3);
    w.groupRowClicked(1);
    QCOMPARE(w.currentGroup(), QStringLiteral("B"));
    QCOMPARE(w.sortKey(), SortKey::ID);
    QCOMPARE(w.sortList()->currentRow(), 0);
    w.switchClicked();
    QVERIFY(select->isEnabled());
    QSignalSpy selected(&w, &tarnby::ui::GrpBrow1::fileSelected);
    w.entryRowClicked(0);
    select->click();
    QCOMPARE(selected.size(), 1);
    QCOMPARE(selected.first().first().toString(), QStringLiteral("/root.txt"));
}

void TestOrganizerWindows::browserWithQuoteInGroupName()
{
    // Made in the maintenance window, listed in the browser.
    {
        tarnby::ui::GrpMaint maint(m_ui->state, m_ui->services, store());
        maint.groupName()->setText(QStringLiteral("Pat's Photos"));
        maint.saveClicked();
    }
    store().addEntries({entry("Pat's Photos", "x.jpg")});
    tarnby::ui::GrpBrow1 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.currentGroup(), QStringLiteral("Pat's Photos"));
    QCOMPARE(w.entries()->rowCount(), 1);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestOrganizerWindows::findWindows_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("keyword");
    QTest::addColumn<QString>("found");
    QTest::newRow("both empty") << "  " << "" << "";
    QTest::newRow("m lands on Mail.TXT") << "m" << "" << "Mail.TXT";
    QTest::newRow("keyword when no name") << "" << "wor" << "Mail.TXT";
    QTest::newRow("name wins over keyword") << "a" << "work" << "alpha.jpg";
}

void TestOrganizerWindows::findWindows()
{
    QFETCH(QString, name);
    QFETCH(QString, keyword);
    QFETCH(QString, found);
    FileEntry mail = entry("G", "Mail.TXT");
    mail.FileKeyword = QStringLiteral("work");
    store().addEntries({entry("G", "alpha.jpg"), entry("G", "zoo.png"), mail});
    tarnby::ui::GrpFind2 w(m_ui->state, m_ui->services, store());
    QCOMPARE(w.windowTitle(), QStringLiteral("Find Files in File List"));
    w.fileNameBox()->setText(name);
    w.keywordBox()->setText(keyword);
    w.okClicked();
    if (found.isEmpty()) {
        QCOMPARE(m_ui->responder.messageTexts(),
                 QStringList{"You must enter something in File Name or Search Key word to find nearest match in the File."});
        QCOMPARE(w.result(), int(QDialog::Rejected));
        return;
    }
    QCOMPARE(w.result(), int(QDialog::Accepted));
    QVERIFY(w.found());
    QCOMPARE(w.found()->FileName, found);
    QCOMPARE(tarnby::ui::GrpFind1(m_ui->state, m_ui->services, store()).windowTitle(), QStringLiteral("Find File in Group Table"));
}

void TestOrganizerWindows::repairCompactTwiceThenClear()
{
    store().addGroup(groupMadeOnTheFly(QStringLiteral("A"), SetTimeStamp()));
    store().addGroup(groupMadeOnTheFly(QStringLiteral("B"), SetTimeStamp()));
    store().addEntries({entry("A", "a.txt"), entry("B", "b.txt")});
    tarnby::ui::GrpRepair1 repair(m_ui->state, m_ui->services, store());
    QCOMPARE(repair.windowTitle(), QStringLiteral("Compact or Repair Database"));
    repair.okClicked(); // repair: no message when it works
    QVERIFY(m_ui->responder.messages().isEmpty());
    repair.option(1)->setChecked(true);
    repair.okClicked();
    repair.okClicked();
    QCOMPARE(m_ui->responder.messageTexts(), (QStringList{"File Successfully Compacted", "File Successfully Compacted"}));
    QCOMPARE(store().entryCount(), 2);

    m_ui->responder.clear();
    tarnby::ui::GrpClear1 clear(m_ui->state, m_ui->services, store());
    m_ui->responder.answerMessage(MessageAnswer::No);
    clear.okClicked();
    QCOMPARE(store().entryCount(), 2);
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    clear.okClicked();
    QCOMPARE(m_ui->responder.messageTexts().last(),
             QStringLiteral("All Files successfully removed from the Group File Organizer Database"));
    QCOMPARE(store().entryCount(), 0);

    // Every group can go now.
    tarnby::ui::GrpMaint maint(m_ui->state, m_ui->services, store());
    for (int i = 0; i < 2; ++i) {
        m_ui->responder.answerMessage(MessageAnswer::Yes);
        maint.deleteClicked();
    }
    QVERIFY(store().groups().isEmpty());
    QCOMPARE(maint.mode(), QStringLiteral("A"));

    // A clear that cannot work says so.
    QFile::remove(store().location().file);
    m_ui->responder.answerMessage(MessageAnswer::Yes);
    clear.okClicked();
    QCOMPARE(m_ui->responder.messageTexts().last(), QStringLiteral("Files not removed from the Group File Organizer Database"));
}

void TestOrganizerWindows::damagedCatalogueOffersRepair()
{
    QFile f(store().location().file);
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(QByteArray("no database here ").repeated(50));
    f.close();
    m_ui->responder.answerMessage(MessageAnswer::No);
    QVERIFY(!tarnby::ui::catalogueReady(store(), m_ui->state, m_ui->services, nullptr));
    QCOMPARE(m_ui->responder.messages().size(), 1);
    QCOMPARE(m_ui->responder.messages().first().buttons, tarnby::ui::MessageButtons::YesNo);
    QVERIFY(m_ui->responder.messageTexts().first().contains(QLatin1String("damaged")));
    QVERIFY(m_ui->responder.messageTexts().first().endsWith(
        QLatin1String("Do you want to open the Compact or Repair Database window?")));
    QVERIFY(QFile::remove(store().location().file));
    m_ui->responder.clear();
    m_ui->responder.answerMessage(MessageAnswer::No);
    QVERIFY(!tarnby::ui::catalogueReady(store(), m_ui->state, m_ui->services, nullptr));
    QVERIFY(m_ui->responder.messageTexts().first().contains(QLatin1String("does not exist")));
}

QTEST_MAIN(TestOrganizerWindows)
#include "tst_organizerwindows.moc"
