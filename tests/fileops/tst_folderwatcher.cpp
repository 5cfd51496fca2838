#include "core/fileops/FolderWatcher.h"

#include "TestDir.h"

#include <QDir>
#include <QSignalSpy>
#include <QTest>

using tarnby::fileops::FolderWatcher;

namespace {

// The tests run with a short wait so that they stay quick; the coalescing is
// the same at any interval.
constexpr int Interval = 60;

// Lets reports that are due arrive, then a few intervals more in which none may.
void settle()
{
    QTest::qWait(Interval * 6);
}

} // namespace

class TestFolderWatcher : public QObject
{
    Q_OBJECT
private slots:
    void seesWhatAnotherProcessDoes_data();
    void seesWhatAnotherProcessDoes();
    void tenThousandFilesAreAFewReports();
    void busyConsumerHoldsTheReport();
    void previousFolderIsForgotten();
    void folderThatGoesAwayIsReportedOnce();
    void missingFolderIsNotWatched();
};

void TestFolderWatcher::seesWhatAnotherProcessDoes_data()
{
    QTest::addColumn<QString>("command");
    QTest::newRow("file made") << "echo new > made.txt";
    QTest::newRow("file removed") << "rm old.txt";
    QTest::newRow("file renamed") << "mv old.txt renamed.txt";
    QTest::newRow("folder made") << "mkdir sub";
}

void TestFolderWatcher::seesWhatAnotherProcessDoes()
{
    QFETCH(QString, command);
    TestDir dir;
    dir.createFile("old.txt");
    FolderWatcher watcher;
    watcher.setInterval(Interval);
    QVERIFY(watcher.setFolder(dir.path()));
    QSignalSpy changed(&watcher, &FolderWatcher::changed);
    settle();
    QCOMPARE(changed.size(), 0);

    QVERIFY(dir.runElsewhere(command));
    QVERIFY(changed.wait(5000));
    settle();
    QCOMPARE(changed.size(), 1);
}

void TestFolderWatcher::tenThousandFilesAreAFewReports()
{
    TestDir dir;
    FolderWatcher watcher;
    watcher.setInterval(Interval);
    QVERIFY(watcher.setFolder(dir.path()));
    QSignalSpy changed(&watcher, &FolderWatcher::changed);

    // Made, written again and removed: some 30,000 notifications.
    QVERIFY(dir.runElsewhere("seq -f f%g.txt 1 10000 | xargs touch && seq -f f%g.txt 1 10000 | xargs touch"
                                     " && seq -f f%g.txt 1 5000 | xargs rm"));
    QTRY_VERIFY_WITH_TIMEOUT(changed.size() >= 1, 5000);
    settle();
    // Each report covers every change of its interval: a handful, not thousands.
    QVERIFY2(changed.size() <= 40, qPrintable(QString::number(changed.size())));
    QVERIFY(!watcher.hasPendingChange());
    QCOMPARE(QDir(dir.path()).entryList(QDir::Files).size(), 5000);
}

void TestFolderWatcher::busyConsumerHoldsTheReport()
{
    TestDir dir;
    FolderWatcher watcher;
    watcher.setInterval(Interval);
    bool busy = true;
    watcher.setBusyCheck([&busy] { return busy; });
    QVERIFY(watcher.setFolder(dir.path()));
    QSignalSpy changed(&watcher, &FolderWatcher::changed);

    QVERIFY(dir.runElsewhere("touch a.txt"));
    settle();
    QCOMPARE(changed.size(), 0);
    QVERIFY(watcher.hasPendingChange());
    busy = false;
    QVERIFY(changed.wait(5000));
    settle();
    QCOMPARE(changed.size(), 1);
}

void TestFolderWatcher::previousFolderIsForgotten()
{
    TestDir first;
    TestDir second;
    FolderWatcher watcher;
    watcher.setInterval(Interval);
    QVERIFY(watcher.setFolder(first.path()));
    QSignalSpy changed(&watcher, &FolderWatcher::changed);
    QVERIFY(first.runElsewhere("touch pending.txt"));
    // The change of the first folder is still waiting when the folder changes.
    QVERIFY(watcher.setFolder(second.path()));
    QCOMPARE(watcher.folder(), QDir::cleanPath(second.path()));
    QVERIFY(first.runElsewhere("touch later.txt"));
    settle();
    QCOMPARE(changed.size(), 0);

    QVERIFY(second.runElsewhere("touch here.txt"));
    QVERIFY(changed.wait(5000));

    // An empty path watches nothing.
    QVERIFY(!watcher.setFolder(QString()));
    QVERIFY(!watcher.isWatching());
    changed.clear();
    QVERIFY(second.runElsewhere("touch again.txt"));
    settle();
    QCOMPARE(changed.size(), 0);
}

void TestFolderWatcher::folderThatGoesAwayIsReportedOnce()
{
    TestDir dir;
    const QString folder = dir.createFolder("shown");
    FolderWatcher watcher;
    watcher.setInterval(Interval);
    QVERIFY(watcher.setFolder(folder));
    QSignalSpy changed(&watcher, &FolderWatcher::changed);
    QVERIFY(dir.runElsewhere("rm -r shown"));
    QVERIFY(changed.wait(5000));
    settle();
    QCOMPARE(changed.size(), 1);
    QVERIFY(!watcher.isWatching());
    // Made again under the same name, it is watched once the browser shows it again.
    QVERIFY(QDir(dir.path()).mkdir("shown"));
    QVERIFY(watcher.setFolder(folder));
    QVERIFY(watcher.isWatching());
}

void TestFolderWatcher::missingFolderIsNotWatched()
{
    TestDir dir;
    FolderWatcher watcher;
    QVERIFY(!watcher.setFolder(dir.filePath("missing")));
    QVERIFY(!watcher.isWatching());
}

QTEST_GUILESS_MAIN(TestFolderWatcher)
#include "tst_folderwatcher.moc"
