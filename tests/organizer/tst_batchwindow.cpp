#include "SearchBrowser.h"

#include "core/catalogue/CommandKeys.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "core/organizer/OrganizerStore.h"
#include "ui/organizer/GrpBatch1.h"

#include <QComboBox>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QWidget>

#include <algorithm>

namespace commands = tarnby::commands;
namespace ui = tarnby::ui;
using namespace tarnby::organizer;
using tarnby::search::SearchOutcome;

namespace {

QStringList itemTexts(const QComboBox *box)
{
    QStringList texts;
    for (int i = 0; i < box->count(); ++i)
        texts << box->itemText(i);
    return texts;
}

} // namespace

// The batch window beside a running browser: what a second OK does once the
// search has ended, its group list while groups are made elsewhere, and how
// it follows the walks of the search.
class TestBatchWindow : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();

    void okAfterTheEndOfTheSearch_data();
    void okAfterTheEndOfTheSearch();
    void groupListPicksUpGroupsMadeMeanwhile_data();
    void groupListPicksUpGroupsMadeMeanwhile();
    void okWaitsForEveryWalk_data();
    void okWaitsForEveryWalk();

private:
    OrganizerStore store() const { return OrganizerStore(StoreLocation::inFolder(m_b->home.path())); }
    QString tree(const QString &relative) const { return m_b->files.filePath(relative); }
    void addGroup(const QString &name) const { QVERIFY(store().addGroup(groupMadeOnTheFly(name, SetTimeStamp())) > 0); }
    ui::GrpBatch1 *openBatchWindow();
    // Clicks OK (or, with ok null, starts a search) and waits for the walk
    // that follows to end.
    SearchOutcome walkOn(QPushButton *ok);

    std::unique_ptr<SearchBrowser> m_b;
};

void TestBatchWindow::init()
{
    m_b = std::make_unique<SearchBrowser>();
    // The walk takes the top folders before the ones below them: "Docs/Old"
    // is the last folder of the tree.
    m_b->files.createFile(QStringLiteral("Docs/a.TXT"));
    m_b->files.createFile(QStringLiteral("Docs/Old/letter.TXT"));
    m_b->files.createFolder(QStringLiteral("Empty"));
    m_b->responder.clear();
}

void TestBatchWindow::cleanup()
{
    m_b.reset();
}

ui::GrpBatch1 *TestBatchWindow::openBatchWindow()
{
    m_b->window->toolClick(QString(commands::keys::mnuOrganizeFilesSearch));
    return m_b->window->batchWindow();
}

SearchOutcome TestBatchWindow::walkOn(QPushButton *ok)
{
    QSignalSpy finished(m_b->window.get(), &ui::Tarnby1::searchFinished);
    if (ok)
        ok->click();
    else
        m_b->window->FindFileRoutine();
    if (!finished.wait(30000))
        return SearchOutcome::Running;
    return finished.first().first().value<SearchOutcome>();
}

void TestBatchWindow::okAfterTheEndOfTheSearch_data()
{
    QTest::addColumn<QString>("group");
    QTest::addColumn<QStringList>("added");
    QTest::newRow("same group: the folder is in already") << QStringLiteral("Docs") << QStringList{};
    QTest::newRow("another group chosen: the folder goes into it")
        << QStringLiteral("Letters") << QStringList{QStringLiteral("Letters letter.TXT")};
}

void TestBatchWindow::okAfterTheEndOfTheSearch()
{
    QFETCH(QString, group);
    QFETCH(QStringList, added);
    addGroup(QStringLiteral("Docs"));
    addGroup(QStringLiteral("Letters"));
    ui::GrpBatch1 *batch = openBatchWindow();
    QVERIFY(batch);
    QCOMPARE(batch->groupBox()->currentText(), QStringLiteral("Docs"));
    auto *ok = batch->findChild<QPushButton *>(QStringLiteral("OKBtn"));
    // Every entry as "group name", in the order added.
    auto entries = [this] {
        QList<FileEntry> all;
        for (const QString &g : store().groupNames())
            all += store().entries(g, SortKey::ID);
        std::sort(all.begin(), all.end(), [](const FileEntry &a, const FileEntry &b) { return a.ID < b.ID; });
        QStringList rows;
        for (const FileEntry &e : all)
            rows << e.GroupName + QLatin1Char(' ') + e.FileName;
        return rows;
    };

    m_b->state.searchPattern = QStringLiteral("*.TXT");
    QCOMPARE(walkOn(nullptr), SearchOutcome::Found);
    QCOMPARE(walkOn(ok), SearchOutcome::Found);
    QCOMPARE(m_b->window->currentFolder(), tree(QStringLiteral("Docs/Old")));
    // The folder found last is the tree's last: the walk after it ends at once,
    // and the list still shows that folder.
    QCOMPARE(walkOn(ok), SearchOutcome::EndOfTree);
    QCOMPARE(m_b->responder.messageTexts().last(), QStringLiteral(" End of Search . . ."));
    m_b->responder.clear();
    QCOMPARE(m_b->window->currentFolder(), tree(QStringLiteral("Docs/Old")));
    const QStringList before = entries();
    QCOMPARE(before, (QStringList{"Docs a.TXT", "Docs letter.TXT"}));

    // OK once more: the search has reached nothing new. It starts again at
    // the top.
    batch->groupBox()->setCurrentText(group);
    QCOMPARE(walkOn(ok), SearchOutcome::Found);
    QCOMPARE(m_b->window->currentFolder(), tree(QStringLiteral("Docs")));
    QCOMPARE(entries(), before + added);

    // A folder the walk stops on anew goes in again, as any folder does.
    batch->groupBox()->setCurrentText(QStringLiteral("Docs"));
    QCOMPARE(walkOn(ok), SearchOutcome::Found);
    QCOMPARE(entries(), before + added + QStringList{"Docs a.TXT"});
}

void TestBatchWindow::groupListPicksUpGroupsMadeMeanwhile_data()
{
    QTest::addColumn<QStringList>("groups"); // when the window opens
    QTest::addColumn<QString>("chosen");     // chosen or typed; empty: as opened
    QTest::addColumn<QString>("made");       // made while the window is open
    QTest::addColumn<bool>("byActivation");  // else: the list dropping down
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("text");
    for (const bool activation : {true, false}) {
        const char *how = activation ? "window activated" : "list dropped down";
        QTest::addRow("chosen group kept, %s", how)
            << QStringList{"Photos", "Docs"} << "Docs" << "Trips" << activation
            << QStringList{"Photos", "Docs", "Trips"} << "Docs";
        QTest::addRow("typed name kept, %s", how)
            << QStringList{"Photos"} << "Holidays" << "Trips" << activation << QStringList{"Photos", "Trips"}
            << "Holidays";
        QTest::addRow("offered New Group gives way to the first group, %s", how)
            << QStringList{} << QString() << "Trips" << activation << QStringList{"Trips"} << "Trips";
    }
}

void TestBatchWindow::groupListPicksUpGroupsMadeMeanwhile()
{
    QFETCH(QStringList, groups);
    QFETCH(QString, chosen);
    QFETCH(QString, made);
    QFETCH(bool, byActivation);
    QFETCH(QStringList, list);
    QFETCH(QString, text);
    for (const QString &g : groups)
        addGroup(g);
    ui::GrpBatch1 *batch = openBatchWindow();
    QVERIFY(batch);
    QComboBox *box = batch->groupBox();
    if (!chosen.isEmpty())
        box->setCurrentText(chosen);
    batch->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(batch));

    // Another window (or process) makes a group while the batch window is
    // not the active one.
    QWidget elsewhere;
    elsewhere.show();
    elsewhere.activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(&elsewhere));
    QVERIFY(!batch->isActiveWindow());
    addGroup(made);

    if (byActivation) {
        batch->activateWindow();
        QVERIFY(QTest::qWaitForWindowActive(batch));
    } else {
        box->showPopup();
    }
    QCOMPARE(itemTexts(box), list);
    QCOMPARE(box->currentText(), text);
    box->hidePopup();
    QVERIFY(m_b->responder.messages().isEmpty());
}

void TestBatchWindow::okWaitsForEveryWalk_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<bool>("cancel");
    QTest::addColumn<SearchOutcome>("outcome");
    QTest::newRow("stops on a found folder") << "*.TXT" << false << SearchOutcome::Found;
    QTest::newRow("walks to the end of the tree") << "*.NONE" << false << SearchOutcome::EndOfTree;
    QTest::newRow("cancelled") << "*.NONE" << true << SearchOutcome::Cancelled;
}

void TestBatchWindow::okWaitsForEveryWalk()
{
    QFETCH(QString, pattern);
    QFETCH(bool, cancel);
    QFETCH(SearchOutcome, outcome);
    ui::GrpBatch1 *batch = openBatchWindow();
    QVERIFY(batch);
    auto *ok = batch->findChild<QPushButton *>(QStringLiteral("OKBtn"));
    QVERIFY(ok->isEnabled());

    QSignalSpy running(m_b->window.get(), &ui::Tarnby1::searchRunningChanged);
    QSignalSpy finished(m_b->window.get(), &ui::Tarnby1::searchFinished);
    m_b->state.searchPattern = pattern;
    m_b->window->FindFileRoutine();
    QVERIFY(!ok->isEnabled());
    if (cancel)
        m_b->window->cancelSearch();
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.first().first().value<SearchOutcome>(), outcome);
    QVERIFY(ok->isEnabled());
    QCOMPARE(running.size(), 2);
    QCOMPARE(running.at(0).first().toBool(), true);
    QCOMPARE(running.at(1).first().toBool(), false);
    QCOMPARE(store().entryCount(), 0);
}

QTEST_MAIN(TestBatchWindow)
#include "tst_batchwindow.moc"
