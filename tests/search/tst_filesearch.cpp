#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/search/BrowserSearchSources.h"
#include "core/search/DiskSearchTree.h"
#include "core/search/FileSearch.h"
#include "core/search/NameMatcher.h"

#include "TestDir.h"

#include <QDir>
#include <QScopeGuard>
#include <QFile>
#include <QRegularExpression>
#include <QTest>

#include <memory>

#include <sys/stat.h>
#include <unistd.h>

using namespace tarnby;
using namespace tarnby::search;

namespace {

// Answers the walk's questions from a script and remembers when each came.
class RecordedAnswers : public SearchQuestions
{
public:
    QList<bool> continueAnswers; // used in order; No once they run out
    bool networkAnswer = false;
    QList<int> continueAskedAt;  // examined count at each continue question
    QStringList continuePatterns;
    int networkAsked = 0;
    const FileSearch *search = nullptr;

    bool continueSearch(const QString &pattern) override
    {
        continueAskedAt.append(search ? search->examinedCount() : -1);
        continuePatterns.append(pattern);
        return continueAnswers.isEmpty() ? false : continueAnswers.takeFirst();
    }
    bool searchNetwork() override
    {
        ++networkAsked;
        return networkAnswer;
    }
};

// The browser's tree (roots as given) and list, walked through the adapters.
struct Walk {
    FolderTreeModel tree;
    FileListModel list;
    FolderTreeSearchTree treeSource{tree};
    FileListSearchList listSource{list};
    RecordedAnswers answers;
    FileSearch search{treeSource, listSource, answers};

    explicit Walk(const FolderRoots &roots)
    {
        tree.setRoots(roots);
        answers.search = &search;
    }
    SearchOutcome run(const QString &pattern, bool reportMode = false, const QString &reportFile = {},
                      int initial = DefaultInitialCount, int next = DefaultNextCount)
    {
        search.start({.pattern = pattern, .initialCount = initial, .nextCount = next, .reportMode = reportMode,
                      .reportFile = reportFile});
        return search.run();
    }
};

FolderRoots rootsOf(const QStringList &volumes, const QString &home = {}, const QList<MountEntry> &network = {})
{
    FolderRoots roots;
    roots.volumes = volumes;
    roots.home = home;
    roots.network = network;
    return roots;
}

// Every "##" heading of a report, in order.
QStringList reportedFolders(const QByteArray &report)
{
    QStringList folders;
    for (const QByteArray &line : report.split('\n')) {
        if (line.startsWith("##"))
            folders.append(QString::fromUtf8(line.mid(2)).trimmed());
    }
    return folders;
}

// A tree of width x width folders below root/ with nothing to find.
void makeWideTree(TestDir &dir, int width)
{
    for (int i = 0; i < width; ++i)
        for (int j = 0; j < width; ++j)
            QDir().mkpath(dir.filePath(QStringLiteral("d%1/e%2").arg(i, 3, 10, QLatin1Char('0')).arg(j, 3, 10, QLatin1Char('0'))));
}

} // namespace

class TestFileSearch : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void foundFolderAndFindNext();
    void endOfTreeStartsAgainAtTop();
    void emptyPatternMeansBmp();
    void blankFolderNameIsNoFind();
    void continueQuestion_data();
    void continueQuestion();
    void cancelStopsAtNextNode();
    void networkQuestion_data();
    void networkQuestion();
    void folderMetTwiceExaminedOnce();
    void twoFoldersOfOneNameBothExamined();
    void symlinkLoopEnds();
    void unreadableAndVanishedFoldersPassedOver();
    void reportModeWritesExactFile();
    void reportModeAppends();
    void diskTreeWalksAsTheBrowserTree();
    void diskTreeReadsAheadWithoutChangingTheWalk();
    void nameMatcherAgreesWithWildcardFilter_data();
    void nameMatcherAgreesWithWildcardFilter();

private:
    // 60 x 60 empty folders, made once: thousands of folders take a while to
    // make and remove on a busy disk.
    std::unique_ptr<TestDir> m_wide;
};

void TestFileSearch::initTestCase()
{
    m_wide = std::make_unique<TestDir>();
    makeWideTree(*m_wide, 60);
}

void TestFileSearch::foundFolderAndFindNext()
{
    TestDir dir;
    dir.createFile(QStringLiteral("a/readme.txt"));
    dir.createFile(QStringLiteral("b/one.bmp"));
    dir.createFile(QStringLiteral("b/Two.BMP"));
    dir.createFile(QStringLiteral("b/skip.jpg"));
    dir.createFile(QStringLiteral("c/deep/three.Bmp"));
    Walk walk(rootsOf({dir.path()}));

    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("b")));
    QCOMPARE(walk.search.foundFiles(), QStringList({QStringLiteral("one.bmp"), QStringLiteral("Two.BMP")}));
    // The browser's list is left on the found folder with the pattern.
    QCOMPARE(walk.list.folder(), dir.filePath(QStringLiteral("b")));
    QCOMPARE(walk.list.fileCount(), 2);
    QCOMPARE(walk.search.position(), walk.search.foundNode() + 1);

    // Find Next: from the folder after b, through c, to c/deep.
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("c/deep")));
    QCOMPARE(walk.search.foundFiles(), QStringList(QStringLiteral("three.Bmp")));

    // Nothing further: the end of the tree, and the position back at the top.
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::EndOfTree);
    QCOMPARE(walk.search.position(), 0);
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("b")));
}

void TestFileSearch::endOfTreeStartsAgainAtTop()
{
    TestDir dir;
    dir.createFile(QStringLiteral("a/b/readme.txt"));
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QStringLiteral("*.PCX")), SearchOutcome::EndOfTree);
    QCOMPARE(walk.search.position(), 0);
    QCOMPARE(walk.search.lastFolder(), dir.filePath(QStringLiteral("a/b")));
    QVERIFY(walk.answers.continueAskedAt.isEmpty());

    // A saved position past the end of a tree that has shrunk ends at once.
    Walk other(rootsOf({dir.path()}));
    other.search.setPosition(500);
    QCOMPARE(other.run(QStringLiteral("*.TXT")), SearchOutcome::EndOfTree);
    QCOMPARE(other.search.position(), 0);
    QCOMPARE(other.run(QStringLiteral("*.TXT")), SearchOutcome::Found);
}

void TestFileSearch::emptyPatternMeansBmp()
{
    TestDir dir;
    dir.createFile(QStringLiteral("a/x.txt"));
    dir.createFile(QStringLiteral("b/x.bmp"));
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QString()), SearchOutcome::Found);
    QCOMPARE(walk.search.pattern(), QStringLiteral("*.BMP"));
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("b")));
}

void TestFileSearch::blankFolderNameIsNoFind()
{
    // A folder whose name is blanks holds a match, but a node whose text is
    // empty once trimmed is never a find.
    TestDir dir;
    dir.createFile(QStringLiteral("  /x.bmp"));
    dir.createFile(QStringLiteral("z/y.bmp"));
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("z")));
}

void TestFileSearch::continueQuestion_data()
{
    QTest::addColumn<int>("initial");
    QTest::addColumn<int>("next");
    QTest::addColumn<QList<int>>("askedAt");
    // 60 x 60 folders, the root and the network node: 3,662 nodes.
    QTest::newRow("smallest options: 3,000 then 3,500") << 2500 << 500 << QList<int>{3000, 3500};
    QTest::newRow("next 1,000: 3,500 only") << 2500 << 1000 << QList<int>{3500};
    QTest::newRow("defaults: tree ends before 5,500") << DefaultInitialCount << DefaultNextCount << QList<int>{};
}

void TestFileSearch::continueQuestion()
{
    QFETCH(int, initial);
    QFETCH(int, next);
    QFETCH(QList<int>, askedAt);
    TestDir &dir = *m_wide;
    Walk walk(rootsOf({dir.path()}));
    walk.answers.continueAnswers = QList<bool>(askedAt.size(), true);
    QCOMPARE(walk.run(QStringLiteral("*.TIFF;*.TIF"), false, {}, initial, next), SearchOutcome::EndOfTree);
    QCOMPARE(walk.answers.continueAskedAt, askedAt);
    for (const QString &pattern : walk.answers.continuePatterns)
        QCOMPARE(pattern, QStringLiteral("*.TIFF;*.TIF"));
    QCOMPARE(walk.search.examinedCount(), 60 * 60 + 60 + 2);

    if (askedAt.isEmpty())
        return;
    // No at the first question stops the walk there; the position stays.
    Walk declined(rootsOf({dir.path()}));
    declined.search.setPosition(0);
    QCOMPARE(declined.run(QStringLiteral("*.TIF"), false, {}, initial, next), SearchOutcome::Declined);
    QCOMPARE(declined.search.examinedCount(), askedAt.first());
    QCOMPARE(declined.search.position(), 0);
    // Report mode never asks.
    TestDir out;
    Walk report(rootsOf({dir.path()}));
    QCOMPARE(report.run(QStringLiteral("*.TIF"), true, out.filePath(QStringLiteral("F@Prnt.INI")), initial, next),
             SearchOutcome::EndOfTree);
    QVERIFY(report.answers.continueAskedAt.isEmpty());
}

void TestFileSearch::cancelStopsAtNextNode()
{
    TestDir &dir = *m_wide;
    dir.createFile(QStringLiteral("zz/zz/x.bmp")); // the last folder of the walk
    const auto removeFind = qScopeGuard([&] { QDir(dir.filePath(QStringLiteral("zz"))).removeRecursively(); });
    Walk walk(rootsOf({dir.path()}));
    QList<int> slices;
    walk.search.setProgressCallback([&](const SearchProgress &progress) {
        slices.append(progress.examined);
        if (slices.size() == 2)
            walk.search.cancel();
    });
    SearchOptions options;
    options.pattern = QStringLiteral("*.BMP");
    walk.search.start(options);
    QCOMPARE(walk.search.step(), SearchOutcome::Running);
    QCOMPARE(walk.search.examinedCount(), SliceSize);
    QVERIFY(walk.search.isRunning());
    QCOMPARE(walk.search.step(), SearchOutcome::Cancelled);
    QCOMPARE(slices, QList<int>({0, SliceSize}));
    QCOMPARE(walk.search.examinedCount(), SliceSize);
    QVERIFY(!walk.search.isRunning());
    QCOMPARE(walk.search.position(), 0);
    QCOMPARE(walk.search.step(), SearchOutcome::Cancelled);

    // The next walk clears the flag.
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("zz/zz")));
}

void TestFileSearch::networkQuestion_data()
{
    QTest::addColumn<bool>("answer");
    QTest::addColumn<bool>("startBelow");
    QTest::newRow("no: the network's folders are never expanded") << false << false;
    QTest::newRow("yes: they are examined like any other") << true << false;
    QTest::newRow("no, asked at a share when the walk starts below the node") << false << true;
    QTest::newRow("yes, asked at a share when the walk starts below the node") << true << true;
}

void TestFileSearch::networkQuestion()
{
    QFETCH(bool, answer);
    QFETCH(bool, startBelow);
    TestDir local;
    local.createFile(QStringLiteral("a/x.txt"));
    TestDir share; // stands in for a mounted network share
    share.createFile(QStringLiteral("pictures/x.bmp"));
    const MountEntry mount{QStringLiteral("//nas/share"), share.path(), QStringLiteral("cifs")};
    Walk walk(rootsOf({local.path()}, {}, {mount}));
    walk.answers.networkAnswer = answer;
    const int shareNode = walk.tree.findPath(share.path());
    QVERIFY(shareNode >= 0);
    QCOMPARE(walk.tree.nodeParent(shareNode), walk.tree.networkNode());
    if (startBelow)
        walk.search.setPosition(shareNode);
    const SearchOutcome outcome = walk.run(QStringLiteral("*.BMP"));
    QCOMPARE(walk.answers.networkAsked, 1);
    if (answer) {
        QCOMPARE(outcome, SearchOutcome::Found);
        QCOMPARE(walk.search.foundFolder(), share.filePath(QStringLiteral("pictures")));
    } else {
        QCOMPARE(outcome, SearchOutcome::EndOfTree);
        QVERIFY(!walk.tree.isListed(shareNode));
        // Asked again in the next walk: the answer lasts one walk.
        walk.run(QStringLiteral("*.BMP"));
        QCOMPARE(walk.answers.networkAsked, 2);
    }
}

void TestFileSearch::folderMetTwiceExaminedOnce()
{
    // The home folder sits at the top of the tree and again below the disk
    // that holds it; a symbolic link leads to a folder met elsewhere too.
    TestDir dir;
    dir.createFile(QStringLiteral("home/pics/x.bmp"));
    dir.createFile(QStringLiteral("other/y.bmp"));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("other")), dir.filePath(QStringLiteral("home/link"))));
    TestDir out;
    const QString report = out.filePath(QStringLiteral("F@Prnt.INI"));
    Walk walk(rootsOf({dir.path()}, dir.filePath(QStringLiteral("home"))));
    QCOMPARE(walk.run(QStringLiteral("*.BMP"), true, report), SearchOutcome::EndOfTree);
    const QStringList folders = reportedFolders(out.read(QStringLiteral("F@Prnt.INI")));
    // The home node at the top is examined first; the disk's own "home"
    // below it and the link to "other" are passed over.
    QCOMPARE(folders, QStringList({dir.filePath(QStringLiteral("other")), dir.filePath(QStringLiteral("home/pics"))}));
    QCOMPARE(walk.search.foundCount(), 2);
}

void TestFileSearch::twoFoldersOfOneNameBothExamined()
{
    TestDir dir;
    dir.createFile(QStringLiteral("one/same/x.bmp"));
    dir.createFile(QStringLiteral("two/same/y.bmp"));
    TestDir out;
    const QString report = out.filePath(QStringLiteral("F@Prnt.INI"));
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QStringLiteral("*.BMP"), true, report), SearchOutcome::EndOfTree);
    QCOMPARE(reportedFolders(out.read(QStringLiteral("F@Prnt.INI"))),
             QStringList({dir.filePath(QStringLiteral("one/same")), dir.filePath(QStringLiteral("two/same"))}));
}

void TestFileSearch::symlinkLoopEnds()
{
    TestDir dir;
    dir.createFile(QStringLiteral("a/b/x.bmp"));
    QVERIFY(QFile::link(dir.path(), dir.filePath(QStringLiteral("a/b/up"))));
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("a")), dir.filePath(QStringLiteral("a/b/again"))));
    TestDir out;
    const QString report = out.filePath(QStringLiteral("F@Prnt.INI"));
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QStringLiteral("*.BMP"), true, report), SearchOutcome::EndOfTree);
    QCOMPARE(reportedFolders(out.read(QStringLiteral("F@Prnt.INI"))), QStringList(dir.filePath(QStringLiteral("a/b"))));
    QVERIFY(walk.tree.nodeCount() < 10);

    DiskSearchTree disk({dir.path()});
    FixedAnswers yes(true, true);
    FileSearch search(disk, disk, yes);
    QStringList folders;
    search.setReportSink([&](const QString &folder, const QStringList &) {
        folders.append(folder);
        return true;
    });
    SearchOptions options;
    options.pattern = QStringLiteral("*.BMP");
    options.reportMode = true;
    search.start(options);
    QCOMPARE(search.run(), SearchOutcome::EndOfTree);
    QCOMPARE(folders, QStringList(dir.filePath(QStringLiteral("a/b"))));
}

void TestFileSearch::unreadableAndVanishedFoldersPassedOver()
{
    TestDir dir;
    dir.createFile(QStringLiteral("a-gone/x.bmp"));
    dir.createFile(QStringLiteral("b-locked/x.bmp"));
    dir.createFile(QStringLiteral("c/x.bmp"));
    Walk walk(rootsOf({dir.path()}));
    walk.tree.expand(0);
    // Vanishes after the tree listed it, before the walk reaches it.
    QVERIFY(QDir(dir.filePath(QStringLiteral("a-gone"))).removeRecursively());
    const QString locked = dir.filePath(QStringLiteral("b-locked"));
    ::chmod(QFile::encodeName(locked).constData(), 0);
    const bool rootReadsAnyway = ::access(QFile::encodeName(locked).constData(), R_OK) == 0;
    QCOMPARE(walk.run(QStringLiteral("*.BMP")), SearchOutcome::Found);
    ::chmod(QFile::encodeName(locked).constData(), 0755);
    if (rootReadsAnyway)
        QSKIP("running with the right to read any folder; the locked folder cannot be tested");
    QCOMPARE(walk.search.foundFolder(), dir.filePath(QStringLiteral("c")));
}

void TestFileSearch::reportModeWritesExactFile()
{
    TestDir dir;
    dir.createFile(QStringLiteral("pics/b.jpg"));
    dir.createFile(QStringLiteral("pics/A.JPE"));
    dir.createFile(QStringLiteral("pics/c.cmp"));
    dir.createFile(QStringLiteral("pics/notes.txt"));
    dir.createFile(QStringLiteral("empty/notes.txt"));
    dir.createFile(QStringLiteral("pics/more/d.JpG"));
    dir.createFile(QStringLiteral("top.jpg"));
    TestDir out;
    const QString report = out.filePath(QStringLiteral("F@Prnt.INI"));
    QFile::remove(report);
    Walk walk(rootsOf({dir.path()}));
    QCOMPARE(walk.run(QStringLiteral("*.JPG;*.JPE;*.CMP"), true, report), SearchOutcome::EndOfTree);
    const QByteArray expected = "##" + QFile::encodeName(dir.path()) + "\r\ntop.jpg\r\n"
        + "##" + QFile::encodeName(dir.filePath(QStringLiteral("pics"))) + "\r\nA.JPE\r\nb.jpg\r\nc.cmp\r\n"
        + "##" + QFile::encodeName(dir.filePath(QStringLiteral("pics/more"))) + "\r\nd.JpG\r\n";
    QCOMPARE(out.read(QStringLiteral("F@Prnt.INI")), expected);
    QCOMPARE(walk.search.foundCount(), 3);
    QCOMPARE(walk.search.foundFileCount(), 5);
    QCOMPARE(walk.search.position(), 0);
}

void TestFileSearch::reportModeAppends()
{
    TestDir dir;
    dir.createFile(QStringLiteral("x.ZIP"));
    TestDir out;
    out.createFile(QStringLiteral("F@Prnt.INI"), "kept\r\n");
    Walk walk(rootsOf({dir.path()}));
    walk.run(QStringLiteral("*.ZIP"), true, out.filePath(QStringLiteral("F@Prnt.INI")));
    QCOMPARE(out.read(QStringLiteral("F@Prnt.INI")), "kept\r\n##" + QFile::encodeName(dir.path()) + "\r\nx.ZIP\r\n");

    // A report that cannot be written ends the walk and says so.
    Walk failing(rootsOf({dir.path()}));
    QCOMPARE(failing.run(QStringLiteral("*.ZIP"), true, out.filePath(QStringLiteral("no/such/F@Prnt.INI"))),
             SearchOutcome::ReportFailed);
    QVERIFY(failing.search.errorString().contains(QStringLiteral("F@Prnt.INI")));
}

void TestFileSearch::diskTreeWalksAsTheBrowserTree()
{
    TestDir dir;
    const QStringList files{QStringLiteral("Zeta/a.bmp"), QStringLiteral("alpha/B.bmp"), QStringLiteral("alpha/a.BMP"),
                            QStringLiteral("Beta/x/y/z.bmp"), QStringLiteral(".hidden/h.bmp"), QStringLiteral("beta2/q.txt"),
                            QStringLiteral("c d/space name.bmp"), QStringLiteral("top.BMP")};
    for (const QString &file : files)
        dir.createFile(file);
    QVERIFY(QFile::link(dir.filePath(QStringLiteral("Zeta/a.bmp")), dir.filePath(QStringLiteral("alpha/link.bmp"))));
    TestDir out;
    const QString report = out.filePath(QStringLiteral("F@Prnt.INI"));
    Walk walk(rootsOf({dir.path()}));
    walk.run(QStringLiteral("*.BMP"), true, report);

    DiskSearchTree disk({dir.path()});
    FixedAnswers yes(true, true);
    FileSearch search(disk, disk, yes);
    QByteArray lines;
    search.setReportSink([&](const QString &folder, const QStringList &names) {
        lines += reportLines(folder, names);
        return true;
    });
    SearchOptions options;
    options.pattern = QStringLiteral("*.BMP");
    options.reportMode = true;
    search.start(options);
    QCOMPARE(search.run(), SearchOutcome::EndOfTree);
    QCOMPARE(lines, out.read(QStringLiteral("F@Prnt.INI")));
    QCOMPARE(search.foundFileCount(), 8);
}

void TestFileSearch::diskTreeReadsAheadWithoutChangingTheWalk()
{
    // Wider than the disk tree reads ahead, so that its reader and the walk
    // both read; Find Next from folder to folder, with a new pattern halfway
    // (what was read ahead for the old one must not be used) and a folder
    // made between two walks next to where the last one stopped (what was
    // read ahead in that walk must not be used in the next), to the end.
    TestDir dir;
    makeWideTree(dir, 25);
    for (int i = 0; i < 25 * 25; i += 9)
        dir.createFile(QStringLiteral("d%1/e%2/f%3.bmp").arg(i / 25, 3, 10, QLatin1Char('0')).arg(i % 25, 3, 10, QLatin1Char('0')).arg(i));
    for (int i = 0; i < 25 * 25; i += 11)
        dir.createFile(QStringLiteral("d%1/e%2/t%3.txt").arg(i / 25, 3, 10, QLatin1Char('0')).arg(i % 25, 3, 10, QLatin1Char('0')).arg(i));

    Walk browser(rootsOf({dir.path()}));
    DiskSearchTree disk({dir.path()});
    FixedAnswers no(false, false);
    FileSearch search(disk, disk, no);
    auto findAll = [&](const QString &pattern, int times) {
        QStringList seen;
        for (int i = 0; i < times; ++i) {
            const SearchOutcome byBrowser = browser.run(pattern);
            SearchOptions options;
            options.pattern = pattern;
            search.start(options);
            const SearchOutcome byDisk = search.run();
            seen << QStringLiteral("%1 %2 %3").arg(int(byBrowser)).arg(browser.search.foundFolder(), browser.search.foundFiles().join(u','));
            seen << QStringLiteral("%1 %2 %3").arg(int(byDisk)).arg(search.foundFolder(), search.foundFiles().join(u','));
        }
        return seen;
    };
    auto pairsAgree = [](const QStringList &seen) {
        for (qsizetype i = 0; i + 1 < seen.size(); i += 2) {
            if (seen[i] != seen[i + 1])
                return seen[i] + QStringLiteral(" <> ") + seen[i + 1];
        }
        return QString();
    };
    const QStringList bmp = findAll(QStringLiteral("*.BMP"), 30);
    QCOMPARE(pairsAgree(bmp), QString());
    QVERIFY(bmp.last().contains(QStringLiteral("f261.bmp")));
    const QStringList txt = findAll(QStringLiteral("*.TXT"), 20);
    QCOMPARE(pairsAgree(txt), QString());
    const QRegularExpressionMatch last = QRegularExpression(QStringLiteral("t(\\d+)\\.txt$")).match(txt.last());
    QVERIFY(last.hasMatch());
    const int next = last.captured(1).toInt() + 1;
    dir.createFile(QStringLiteral("d%1/e%2/now.txt").arg(next / 25, 3, 10, QLatin1Char('0')).arg(next % 25, 3, 10, QLatin1Char('0')));
    const QStringList rest = findAll(QStringLiteral("*.TXT"), 40);
    QCOMPARE(pairsAgree(rest), QString());
    QVERIFY(rest.first().contains(QStringLiteral("now.txt")));
    QVERIFY(!rest.filter(QRegularExpression(QStringLiteral("^%1 ").arg(int(SearchOutcome::EndOfTree)))).isEmpty());
}

void TestFileSearch::nameMatcherAgreesWithWildcardFilter_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::addColumn<QString>("name");
    const QStringList names{QStringLiteral("photo.jpg"), QStringLiteral("PHOTO.JPG"), QStringLiteral("a.jpeg"),
                            QStringLiteral("syslog"), QStringLiteral("boot.LOG"), QStringLiteral("readme"),
                            QStringLiteral(".bmp"), QStringLiteral("x.tar.gz"), QStringLiteral("kép.BMP"),
                            QStringLiteral("a.b.c"), QStringLiteral("Report1.txt"), QStringLiteral("jpg")};
    const QStringList patterns{QStringLiteral("*.JPG"), QStringLiteral("*LOG"), QStringLiteral("*.*"),
                               QStringLiteral("*"), QStringLiteral("readme"), QStringLiteral("*.BMP;*.JPG"),
                               QStringLiteral("*.TAR.GZ"), QStringLiteral("Report?.TXT"), QStringLiteral("K*P.BMP"),
                               QStringLiteral("KÉP.*"), QStringLiteral("*.[JB]*"), QStringLiteral("a*b*c"),
                               QStringLiteral("*.JPG;;"), QStringLiteral("**.jp*g")};
    for (const QString &pattern : patterns)
        for (const QString &name : names)
            QTest::addRow("%s vs %s", qPrintable(pattern), qPrintable(name)) << pattern << name;
}

void TestFileSearch::nameMatcherAgreesWithWildcardFilter()
{
    QFETCH(QString, pattern);
    QFETCH(QString, name);
    QCOMPARE(NameMatcher(pattern).matches(QFile::encodeName(name)), catalogue::WildcardFilter(pattern).matches(name));
}

QTEST_GUILESS_MAIN(TestFileSearch)
#include "tst_filesearch.moc"
