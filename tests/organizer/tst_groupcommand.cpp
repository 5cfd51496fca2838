#include "CliRun.h"
#include "TestDir.h"

#include "core/organizer/OrganizerStore.h"

#include <QDir>
#include <QFile>
#include <QElapsedTimer>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QThread>
#include <QTest>

using namespace tarnby::organizer;

// tarnby-cli group, run as the real binary on a program folder of the test's
// own.
class TestGroupCommand : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void groupsWithQuotesAndCounts();
    void importAddsFolderByFolder();
    void filesSortedByEachKey_data();
    void filesSortedByEachKey();
    void findNearest_data();
    void findNearest();
    void compactTwiceAndClear();
    void compactLosesNoConcurrentWrite();
    void markOfDeadCompactionIsCleared();
    void usageErrors_data();
    void usageErrors();
    void damagedDatabaseIsReported();

private:
    clitest::Run group(QStringList args)
    {
        args << QStringLiteral("--home") << m_home->filePath(QStringLiteral("home"));
        return clitest::runCli(QStringLiteral("group"), args);
    }
    QString database() const { return m_home->filePath(QStringLiteral("home/FileTabl.MDB")); }
    std::unique_ptr<TestDir> m_home;
    std::unique_ptr<TestDir> m_tree;
};

void TestGroupCommand::init()
{
    m_home = std::make_unique<TestDir>();
    m_tree = std::make_unique<TestDir>();
    m_tree->createFile(QStringLiteral("Mail.TXT"));
    m_tree->createFile(QStringLiteral("Beach/sun.jpg"));
    m_tree->createFile(QStringLiteral("Beach/Sand.BMP"));
    m_tree->createFile(QStringLiteral("Beach/deep/zz.doc"));
    m_tree->createFolder(QStringLiteral("empty"));
}

void TestGroupCommand::groupsWithQuotesAndCounts()
{
    QCOMPARE(group({"add", "Pat's Photos"}).exitCode, 0);
    QCOMPARE(group({"add", "Work", "Things for work"}).exitCode, 0);
    // A second group of the same name is refused.
    QCOMPARE(group({"add", "work"}).exitCode, 1);
    QCOMPARE(group({"import", "Pat's Photos", m_tree->filePath("Beach")}).exitCode, 0);
    const clitest::Run list = group({"list"});
    QCOMPARE(list.exitCode, 0);
    QCOMPARE(list.out, QByteArray("Pat's Photos\t3\nWork\t0\n"));
    const QList<GroupRow> groups = OrganizerStore(StoreLocation::inFolder(m_home->filePath("home"))).groups();
    QCOMPARE(groups.at(0).GroupDesc, QStringLiteral("Pat's Photos Description"));
    QCOMPARE(groups.at(1).GroupDesc, QStringLiteral("Things for work"));
}

void TestGroupCommand::importAddsFolderByFolder()
{
    const clitest::Run run = group({"import", "Trip", m_tree->path()});
    QCOMPARE(run.exitCode, 0);
    QCOMPARE(run.out, QByteArray("4 files from 3 folders added to Trip\n"));
    const OrganizerStore store(StoreLocation::inFolder(m_home->filePath("home")));
    QCOMPARE(store.groupNames(), QStringList{"Trip"});
    const QList<FileEntry> rows = store.entries(QStringLiteral("Trip"), SortKey::ID);
    QCOMPARE(rows.size(), 4);
    QHash<QString, QSet<QString>> stampsByFolder;
    for (const FileEntry &e : rows) {
        stampsByFolder[e.FileLocation].insert(e.DateTimeCreated);
        QCOMPARE(e.FileKeyword, QFileInfo(e.FileLocation).fileName());
        QCOMPARE(e.FileDescription, e.FileName + QStringLiteral(" Description"));
        QCOMPARE(e.Date.size(), 8);
    }
    QCOMPARE(stampsByFolder.size(), 3);
    for (const auto &stamps : std::as_const(stampsByFolder))
        QCOMPARE(stamps.size(), 1);
    // A pattern limits the files.
    QCOMPARE(group({"import", "Pics", m_tree->path(), "--pattern", "*.jpg;*.bmp"}).out,
             QByteArray("2 files from 1 folders added to Pics\n"));
}

void TestGroupCommand::filesSortedByEachKey_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QStringList>("names");
    QTest::newRow("id") << "id" << QStringList{"Mail.TXT", "Sand.BMP", "sun.jpg", "zz.doc"};
    QTest::newRow("name") << "name" << QStringList{"Mail.TXT", "Sand.BMP", "sun.jpg", "zz.doc"};
    QTest::newRow("type") << "type" << QStringList{"Mail.TXT", "zz.doc", "Sand.BMP", "sun.jpg"};
    QTest::newRow("keyword") << "keyword" << QStringList{"Sand.BMP", "sun.jpg", "zz.doc", "Mail.TXT"};
}

void TestGroupCommand::filesSortedByEachKey()
{
    QFETCH(QString, key);
    QFETCH(QStringList, names);
    QCOMPARE(group({"import", "Trip", m_tree->path()}).exitCode, 0);
    const clitest::Run run = group({"files", "Trip", "--sort", key});
    QCOMPARE(run.exitCode, 0);
    QStringList got;
    for (const QByteArray &line : run.out.split('\n')) {
        if (line.isEmpty())
            continue;
        const QList<QByteArray> cells = line.split('\t');
        QCOMPARE(cells.size(), 9);
        got << QString::fromUtf8(cells.at(1));
    }
    QCOMPARE(got, names);
}

void TestGroupCommand::findNearest_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::addColumn<int>("exitCode");
    QTest::addColumn<QString>("name");
    QTest::newRow("m lands on Mail.TXT") << QStringList{"--name", "m"} << 0 << "Mail.TXT";
    QTest::newRow("t lands on zz.doc") << QStringList{"--name", "t"} << 0 << "zz.doc";
    QTest::newRow("nothing at or after") << QStringList{"--name", "zzz"} << 1 << "";
    QTest::newRow("keyword") << QStringList{"--keyword", "DEEP"} << 0 << "zz.doc";
}

void TestGroupCommand::findNearest()
{
    QFETCH(QStringList, args);
    QCOMPARE(group({"import", "Trip", m_tree->path()}).exitCode, 0);
    const clitest::Run run = group(QStringList{"find"} + args);
    QTEST(run.exitCode, "exitCode");
    QTEST(QString::fromUtf8(run.out.split('\t').value(1)), "name");
}

void TestGroupCommand::compactTwiceAndClear()
{
    QCOMPARE(group({"import", "Trip", m_tree->path()}).exitCode, 0);
    for (int i = 0; i < 2; ++i) {
        const clitest::Run run = group({"compact"});
        QCOMPARE(run.exitCode, 0);
        QCOMPARE(run.out, QByteArray("File Successfully Compacted\n"));
    }
    QCOMPARE(group({"list"}).out, QByteArray("Trip\t4\n"));
    QCOMPARE(group({"clear", "--yes"}).exitCode, 0);
    QCOMPARE(group({"list"}).out, QByteArray("Trip\t0\n"));
    QVERIFY(!QFile::exists(m_home->filePath("home/Test.MDB")));
    QVERIFY(!QFile::exists(m_home->filePath("home/FileTabl2.MDB")));
}

void TestGroupCommand::compactLosesNoConcurrentWrite()
{
    // A catalogue big enough that each compaction takes a while.
    m_home->createFolder(QStringLiteral("home"));
    const OrganizerStore store(StoreLocation::inFolder(m_home->filePath(QStringLiteral("home"))));
    QVERIFY(store.create().ok());
    QList<FileEntry> rows;
    for (int i = 0; i < 5000; ++i) {
        FileEntry e;
        e.GroupName = QStringLiteral("Filler");
        e.FileName = QStringLiteral("file%1.txt").arg(i);
        e.FileLocation = QStringLiteral("/data/some/folder/deep/down");
        e.FileDescription = e.FileName + QStringLiteral(" Description");
        rows << e;
    }
    StoreResult r;
    store.addEntries(rows, &r);
    QVERIFY2(r.ok(), qPrintable(r.error));

    // A writer in another process adds groups one after another while this
    // one compacts again and again.
    const int writes = 40;
    QProcess writer;
    writer.start(QStringLiteral("sh"),
                 {QStringLiteral("-c"),
                  QStringLiteral("for i in $(seq 1 %1); do \"$0\" group add \"G$i\" --home \"$1\" >/dev/null 2>>\"$1/errors\"; "
                                 "echo \"$i $?\"; done")
                      .arg(writes),
                  qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"),
                  m_home->filePath(QStringLiteral("home"))});
    QVERIFY(writer.waitForStarted());
    int compactions = 0;
    while (!writer.waitForFinished(0)) {
        const StoreResult c = store.compact();
        QVERIFY2(c.ok(), qPrintable(c.error));
        ++compactions;
        QThread::msleep(15); // as a person would, now and then
    }
    QCOMPARE(writer.exitCode(), 0);
    QVERIFY(compactions >= 2);

    // Every write that was reported done is in the compacted catalogue; one
    // that was refused said why.
    const QStringList groups = store.groupNames(&r);
    QVERIFY2(r.ok(), qPrintable(r.error));
    int refused = 0;
    for (const QByteArray &line : writer.readAllStandardOutput().split('\n')) {
        const QList<QByteArray> f = line.split(' ');
        if (f.size() != 2)
            continue;
        const QString name = QStringLiteral("G") + QString::fromLatin1(f.at(0));
        if (f.at(1) == "0")
            QVERIFY2(groups.contains(name), qPrintable(name + QStringLiteral(" was added but is lost")));
        else
            ++refused;
    }
    QCOMPARE(groups.size() + refused, writes);
    if (refused > 0) {
        QFile errors(m_home->filePath(QStringLiteral("home/errors")));
        QVERIFY(errors.open(QIODevice::ReadOnly));
        QVERIFY(errors.readAll().contains("organizer database"));
    }
    QCOMPARE(store.entryCount(), 5000);
    qInfo("%d compactions, %d writes refused", compactions, refused);
}

void TestGroupCommand::markOfDeadCompactionIsCleared()
{
    // A compaction killed after marking the catalogue leaves the mark with
    // the ID of a process that has gone; the next writer clears it.
    m_home->createFolder(QStringLiteral("home"));
    const OrganizerStore store(StoreLocation::inFolder(m_home->filePath(QStringLiteral("home"))));
    QVERIFY(store.create().ok());
    QProcess gone;
    gone.start(QStringLiteral("true"), {});
    QVERIFY(gone.waitForFinished());
    const qint64 deadPid = gone.processId() ? gone.processId() : 999999;
    auto userVersion = [this](const QString &set = {}) {
        int v = -1;
        {
            QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("peek"));
            db.setDatabaseName(database());
            if (db.open()) {
                QSqlQuery q(db);
                if (!set.isEmpty())
                    q.exec(QStringLiteral("PRAGMA user_version = ") + set);
                if (q.exec(QStringLiteral("PRAGMA user_version")) && q.next())
                    v = q.value(0).toInt();
            }
        }
        QSqlDatabase::removeDatabase(QStringLiteral("peek"));
        return v;
    };
    QCOMPARE(userVersion(QString::number(deadPid)), int(deadPid));
    QElapsedTimer clock;
    clock.start();
    QCOMPARE(group({"add", "After"}).exitCode, 0);
    QVERIFY(clock.elapsed() < 5000);
    QCOMPARE(userVersion(), 0);
    QCOMPARE(store.groupNames(), QStringList{"After"});
}

void TestGroupCommand::usageErrors_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("no sub-command") << QStringList{};
    QTest::newRow("unknown sub-command") << QStringList{"rename"};
    QTest::newRow("clear without --yes") << QStringList{"clear"};
    QTest::newRow("find without a field") << QStringList{"find"};
    QTest::newRow("find with both fields") << QStringList{"find", "--name", "a", "--keyword", "b"};
    QTest::newRow("unknown sort key") << QStringList{"files", "G", "--sort", "size"};
    QTest::newRow("import without a folder") << QStringList{"import", "G"};
    QTest::newRow("import of a missing folder") << QStringList{"import", "G", "/nonexistent/folder"};
    QTest::newRow("unknown option") << QStringList{"list", "--fast"};
    QTest::newRow("help") << QStringList{"--help"};
    QTest::newRow("help after a sub-command") << QStringList{"list", "--help"};
}

void TestGroupCommand::usageErrors()
{
    QFETCH(QStringList, args);
    const clitest::Run run = group(args);
    QCOMPARE(run.exitCode, 2);
    QVERIFY(run.err.contains("Usage: tarnby-cli group"));
    QVERIFY(run.out.isEmpty());
    if (args.contains(QLatin1String("--help")))
        QVERIFY2(run.err.startsWith("Usage:"), run.err.constData());
}

void TestGroupCommand::damagedDatabaseIsReported()
{
    QCOMPARE(group({"list"}).exitCode, 0);
    QFile f(database());
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(QByteArray("garbage that is no database ").repeated(100));
    f.close();
    const clitest::Run run = group({"list"});
    QCOMPARE(run.exitCode, 2);
    QVERIFY2(run.err.contains("damaged"), run.err.constData());
}

QTEST_GUILESS_MAIN(TestGroupCommand)
#include "tst_groupcommand.moc"
