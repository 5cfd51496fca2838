// A person's run-through of the file search in the real browser: the search
// window opened with Ctrl+F, a choice on each tab and a typed name, Find Next,
// the questions on the way, Esc, the end of the tree.
#include "ui/frame/CommandBar.h"
#include "ui/search/FindFile1.h"

#include "ModalCloser.h"
#include "SearchBrowser.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QTabBar>
#include <QTest>
#include <QTreeView>

using namespace tarnby;
using namespace tarnby::search;
using namespace tarnby::ui;

namespace {

struct RunThrough : SearchBrowser {
    explicit RunThrough(const QString &networkMount)
        : SearchBrowser(networkMount)
    {
        window->show();
    }

    bool activate()
    {
        window->activateWindow();
        return QTest::qWaitForWindowActive(window.get());
    }

    // Ctrl+F, then in the search window: the tab, the option button of index
    // (clicked on its round button), and OK, or the typed name and Enter.
    // Returns how the walk that OK started ended.
    SearchOutcome findWith(SearchTab tab, int index, const QString &typed = {})
    {
        if (!activate())
            return SearchOutcome::Running;
        bool chosen = false;
        whenModal(QStringLiteral("FindFile1"), [&](QDialog *dialog) {
            auto *find = static_cast<FindFile1 *>(dialog);
            QTabBar *tabs = find->tabStrip();
            QTest::mouseClick(tabs, Qt::LeftButton, {}, tabs->tabRect(int(tab)).center());
            QRadioButton *option = find->option(tab, index);
            QTest::mouseClick(option, Qt::LeftButton, {}, QPoint(6, option->height() / 2));
            chosen = option->isChecked() && find->chosenIndex() == index;
            if (typed.isEmpty()) {
                QTest::mouseClick(find->findChild<QPushButton *>(QStringLiteral("OKBtn")), Qt::LeftButton);
            } else {
                auto *text = find->findChild<QLineEdit *>(QStringLiteral("Text1"));
                QTest::mouseClick(text, Qt::LeftButton);
                QTest::keyClicks(text, typed);
                QTest::keyClick(text, Qt::Key_Return);
            }
        });
        QSignalSpy finished(window.get(), &Tarnby1::searchFinished);
        QTest::keyClick(window.get(), Qt::Key_F, Qt::ControlModifier);
        if (!chosen)
            return SearchOutcome::Running;
        return waitForEnd(finished);
    }

    SearchOutcome findNext()
    {
        QSignalSpy finished(window.get(), &Tarnby1::searchFinished);
        window->toolClick(QStringLiteral("ID_FindNextBtn"));
        return waitForEnd(finished);
    }

    // What the browser shows: the folder, the tree's current node, the file
    // list and the caption; the walk is over and the stop button is off.
    void checkShown(const QString &folder, const QStringList &shownFiles) const
    {
        QCOMPARE(window->currentFolder(), folder);
        auto *tree = window->findChild<QTreeView *>(QStringLiteral("PTxShTree1"));
        const QModelIndex current = tree->currentIndex();
        QCOMPARE(current.data(FolderTreeModel::PathRole).toString(), folder);
        // Its branch is open, so that the node can be seen.
        for (QModelIndex up = current.parent(); up.isValid(); up = up.parent())
            QVERIFY2(tree->isExpanded(up), qPrintable(up.data().toString()));
        QStringList paths;
        for (const QString &name : shownFiles)
            paths << folder + QLatin1Char('/') + name;
        QCOMPARE(window->fileList()->shownFilePaths(), paths);
        QCOMPARE(window->windowTitle(), QStringLiteral("Tarnby 3.0 - ") + folder);
        QVERIFY(!window->searchRunning());
        QVERIFY(!window->commandBar()->isEnabled(QStringLiteral("ID_StopBtn")));
    }

    QStringList messagesSinceLastLook()
    {
        const QStringList texts = responder.messageTexts();
        responder.clear();
        return texts;
    }
};

// A failed check inside checkShown ends the test, not only the helper.
#define CHECK_SHOWN(...)                                                                                               \
    do {                                                                                                               \
        b.checkShown(__VA_ARGS__);                                                                                   \
        if (QTest::currentTestFailed())                                                                                \
            return;                                                                                                    \
    } while (false)

const QString NetworkQuestion = QStringLiteral("Do You want to Search the Network?");
const QString EndOfSearch = QStringLiteral(" End of Search . . .");

} // namespace

class TestSearchRunThrough : public QObject
{
    Q_OBJECT
private slots:
    void personFindsByEveryTabAndByName();
};

void TestSearchRunThrough::personFindsByEveryTabAndByName()
{
    TestDir network;
    network.createFile(QStringLiteral("remote.dat"));
    RunThrough b(network.path());
    TestDir &files = b.files;
    files.createFile(QStringLiteral("a/photo.JPG"));
    files.createFile(QStringLiteral("a/skip.png"));
    files.createFile(QStringLiteral("b/song.Mp3"));
    files.createFile(QStringLiteral("c/read me.txt"));
    files.createFile(QStringLiteral("d/table.DBF"));
    files.createFile(QStringLiteral("e/archive.zip"));
    files.createFile(QStringLiteral("f/letter one.doc"));
    files.createFile(QStringLiteral("f/Letter two.DOC"));
    files.createFile(QStringLiteral("f/other.doc"));
    files.createFile(QStringLiteral("g/deep/more.jpe"));
    // More folders than one slice of the walk examines, none with a match.
    for (int i = 0; i < 300; ++i)
        files.createFolder(QStringLiteral("z/n%1").arg(i, 3, 10, QLatin1Char('0')));
    auto *filter = b.window->findChild<QComboBox *>(QStringLiteral("CMBFILEFLTR"));

    // Pictures, JPEG: the network node comes second in the tree; No leaves it.
    b.responder.answerMessage(MessageAnswer::No);
    QCOMPARE(b.findWith(SearchTab::Pictures, 0), SearchOutcome::Found);
    QCOMPARE(b.state.searchPattern, QStringLiteral("*.JPG;*.JPE;*.CMP"));
    CHECK_SHOWN(files.filePath(QStringLiteral("a")), {QStringLiteral("photo.JPG")});
    QCOMPARE(filter->currentIndex(), 0);
    QCOMPARE(b.messagesSinceLastLook(), QStringList(NetworkQuestion));

    // Find Next goes on below the next folders, without asking again.
    QCOMPARE(b.findNext(), SearchOutcome::Found);
    CHECK_SHOWN(files.filePath(QStringLiteral("g/deep")), {QStringLiteral("more.jpe")});
    QVERIFY(b.messagesSinceLastLook().isEmpty());

    // Nothing more: the end of the tree, and the position back at the top.
    QCOMPARE(b.findNext(), SearchOutcome::EndOfTree);
    QCOMPARE(b.messagesSinceLastLook(), QStringList(EndOfSearch));
    QCOMPARE(b.window->fileSearch()->position(), 0);

    // MultiMedia, MP3: from the top again, so the network question again.
    b.responder.answerMessage(MessageAnswer::No);
    QCOMPARE(b.findWith(SearchTab::MultiMedia, 2), SearchOutcome::Found);
    CHECK_SHOWN(files.filePath(QStringLiteral("b")), {QStringLiteral("song.Mp3")});
    QCOMPARE(b.messagesSinceLastLook(), QStringList(NetworkQuestion));
    QCOMPARE(filter->currentIndex(), 30);

    // A new choice does not move the position: each goes on from the last find.
    QCOMPARE(b.findWith(SearchTab::Text, 0), SearchOutcome::Found);
    CHECK_SHOWN(files.filePath(QStringLiteral("c")), {QStringLiteral("read me.txt")});
    QCOMPARE(b.findWith(SearchTab::Database, 0), SearchOutcome::Found);
    CHECK_SHOWN(files.filePath(QStringLiteral("d")), {QStringLiteral("table.DBF")});
    QCOMPARE(b.findWith(SearchTab::Miscellaneous, 4), SearchOutcome::Found);
    CHECK_SHOWN(files.filePath(QStringLiteral("e")), {QStringLiteral("archive.zip")});
    QCOMPARE(b.findWith(SearchTab::Miscellaneous, 5, QStringLiteral("letter*.doc")), SearchOutcome::Found);
    QCOMPARE(b.state.searchPattern, QStringLiteral("letter*.doc"));
    CHECK_SHOWN(files.filePath(QStringLiteral("f")), {QStringLiteral("letter one.doc"), QStringLiteral("Letter two.DOC")});
    QVERIFY(b.messagesSinceLastLook().isEmpty());
    const int afterF = b.window->fileSearch()->position();

    // Esc while the walk runs: it stops between slices, and the position stays.
    {
        QVERIFY(b.activate());
        QSignalSpy finished(b.window.get(), &Tarnby1::searchFinished);
        b.window->toolClick(QStringLiteral("ID_FindNextBtn"));
        QVERIFY(b.window->searchRunning());
        QVERIFY(b.window->commandBar()->isEnabled(QStringLiteral("ID_StopBtn")));
        QTimer::singleShot(0, b.window.get(), [&] { QTest::keyClick(b.window.get(), Qt::Key_Escape); });
        QCOMPARE(SearchBrowser::waitForEnd(finished), SearchOutcome::Cancelled);
        QCOMPARE(b.messagesSinceLastLook(), QStringList(QStringLiteral("   Search Cancelled")));
        QVERIFY(b.window->fileSearch()->examinedCount() < 300);
        QVERIFY(!b.window->searchRunning());
        QVERIFY(!b.window->commandBar()->isEnabled(QStringLiteral("ID_StopBtn")));
        QCOMPARE(b.window->fileSearch()->position(), afterF);
    }

    // Small search counts: asked after 10 + 5 folders (Yes), then after 5 more (No).
    b.state.options.initialSearchCount = 10;
    b.state.options.nextSearchCount = 5;
    b.responder.answerMessage(MessageAnswer::Yes);
    b.responder.answerMessage(MessageAnswer::No);
    QCOMPARE(b.findNext(), SearchOutcome::Declined);
    const QString more = QStringLiteral("Do you want to continue the Search for - letter*.doc ?");
    QCOMPARE(b.messagesSinceLastLook(), QStringList({more, more}));
    QCOMPARE(b.window->fileSearch()->examinedCount(), 20);
    QVERIFY(!b.window->searchRunning());

    // With the usual counts the walk reaches the end, then a typed type that
    // only the network folder holds: Yes searches it.
    b.state.options.initialSearchCount = DefaultInitialCount;
    b.state.options.nextSearchCount = DefaultNextCount;
    QCOMPARE(b.findNext(), SearchOutcome::EndOfTree);
    QCOMPARE(b.messagesSinceLastLook(), QStringList(EndOfSearch));
    b.responder.answerMessage(MessageAnswer::Yes);
    QCOMPARE(b.findWith(SearchTab::Miscellaneous, 5, QStringLiteral("*.DAT")), SearchOutcome::Found);
    QCOMPARE(b.messagesSinceLastLook(), QStringList(NetworkQuestion));
    CHECK_SHOWN(network.path(), {QStringLiteral("remote.dat")});
}

QTEST_MAIN(TestSearchRunThrough)
#include "tst_searchrunthrough.moc"
