#include "TestDir.h"

#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStore.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFile>
#include <QProcess>
#include <QSqlDatabase>
#include <QSqlQuery>
#include <QTest>
#include <QThread>

#include <signal.h>

using namespace tarnby::organizer;

// A tarnby-cli group command killed at many moments of its work: afterwards
// the catalogue always opens, passes SQLite's integrity check and holds either
// the state before the command or the state after it.
class TestOrganizerKill : public QObject
{
    Q_OBJECT
private slots:
    void initTestCase();
    void killedAtManyPoints_data();
    void killedAtManyPoints();

private:
    struct State {
        QStringList groups;
        QMap<QString, qint64> entriesByFolder; // "group|folder" -> count
        qint64 entries = 0;
        QList<qint64> ids;
    };
    static State readState(const QString &file, QString *problem);
    void runKilled(const QStringList &args, int delayMs, const QString &home);

    TestDir m_work;
    QString m_base; // the catalogue every run starts from
    QString m_tree;
    QMap<QString, qint64> m_treeFolders; // folder -> files
};

void TestOrganizerKill::initTestCase()
{
    // A catalogue large enough that compacting and clearing take a while.
    m_base = m_work.filePath(QStringLiteral("base"));
    QDir().mkpath(m_base);
    const OrganizerStore store(StoreLocation::inFolder(m_base));
    QVERIFY(store.create().ok());
    const TimeStamp stamp = SetTimeStamp();
    QVERIFY(store.addGroup(groupMadeOnTheFly(QStringLiteral("Old"), stamp)) > 0);
    QList<FileEntry> rows;
    for (int i = 0; i < 20000; ++i) {
        FileEntry e;
        e.GroupName = QStringLiteral("Old");
        e.FileName = QStringLiteral("file%1.txt").arg(i);
        e.FileLocation = QStringLiteral("/old/folder%1").arg(i % 50);
        e.FileDescription = QStringLiteral("an old entry with a longer description %1").arg(i);
        rows << e;
    }
    StoreResult r;
    store.addEntries(rows, &r);
    QVERIFY2(r.ok(), qPrintable(r.error));
    // Deleted rows leave space that a compaction gives back.
    const QList<qint64> ids = store.entryIds(TableOrder::ID);
    for (int i = 0; i < 40; ++i)
        store.deleteEntry(ids.at(i * 7));

    m_tree = m_work.filePath(QStringLiteral("tree"));
    for (int f = 0; f < 40; ++f) {
        const QString folder = QStringLiteral("%1/f%2").arg(m_tree).arg(f, 2, 10, QLatin1Char('0'));
        for (int i = 0; i < 60; ++i)
            m_work.createFile(QStringLiteral("tree/f%1/n%2.jpg").arg(f, 2, 10, QLatin1Char('0')).arg(i));
        m_treeFolders.insert(folder, 60);
    }
}

TestOrganizerKill::State TestOrganizerKill::readState(const QString &file, QString *problem)
{
    State state;
    const OrganizerStore store(StoreLocation{StoreLocation::Engine::SQLite, file, {}, 0, {}, {}, {}});
    const StoreResult checked = store.check();
    if (!checked.ok()) {
        *problem = checked.error;
        return state;
    }
    {
        QSqlDatabase db = QSqlDatabase::addDatabase(QStringLiteral("QSQLITE"), QStringLiteral("kill-check"));
        db.setDatabaseName(file);
        if (db.open()) {
            QSqlQuery q(QStringLiteral("PRAGMA integrity_check"), db);
            if (!q.next() || q.value(0).toString() != QLatin1String("ok"))
                *problem = QStringLiteral("integrity check: ") + q.value(0).toString();
            QSqlQuery g(QStringLiteral("SELECT GroupName FROM GroupTable ORDER BY ID"), db);
            while (g.next())
                state.groups << g.value(0).toString();
            QSqlQuery e(QStringLiteral("SELECT GroupName, FileLocation, COUNT(*) FROM FileTable GROUP BY 1, 2"), db);
            while (e.next())
                state.entriesByFolder.insert(e.value(0).toString() + QLatin1Char('|') + e.value(1).toString(),
                                             e.value(2).toLongLong());
            QSqlQuery ids(QStringLiteral("SELECT ID FROM FileTable ORDER BY ID"), db);
            while (ids.next())
                state.ids << ids.value(0).toLongLong();
            state.entries = state.ids.size();
        } else {
            *problem = QStringLiteral("does not open");
        }
        db.close();
    }
    QSqlDatabase::removeDatabase(QStringLiteral("kill-check"));
    return state;
}

void TestOrganizerKill::runKilled(const QStringList &args, int delayMs, const QString &home)
{
    QProcess p;
    p.start(qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"),
            QStringList{QStringLiteral("group")} + args + QStringList{QStringLiteral("--home"), home});
    QVERIFY(p.waitForStarted());
    if (delayMs >= 0) {
        QThread::usleep(qulonglong(delayMs) * 1000);
        ::kill(pid_t(p.processId()), SIGKILL);
    }
    QVERIFY(p.waitForFinished(60000));
}

void TestOrganizerKill::killedAtManyPoints_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("add") << QStringList{"add", "New"};
    QTest::newRow("import (the batch add)") << QStringList{"import", "Old", m_tree};
    QTest::newRow("compact") << QStringList{"compact"};
    QTest::newRow("clear") << QStringList{"clear", "--yes"};
}

void TestOrganizerKill::killedAtManyPoints()
{
    QFETCH(QStringList, args);
    QString problem;
    const State before = readState(QDir(m_base).filePath(DatabaseFileName), &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));

    auto freshHome = [&](int run) {
        const QString home = m_work.filePath(QStringLiteral("run-%1-%2").arg(QTest::currentDataTag()).arg(run));
        QDir(home).removeRecursively();
        QDir().mkpath(home);
        QFile::copy(QDir(m_base).filePath(DatabaseFileName), QDir(home).filePath(DatabaseFileName));
        return home;
    };

    // One run to its end: how long it takes, and the state after it.
    const QString whole = freshHome(-1);
    QElapsedTimer timer;
    timer.start();
    runKilled(args, -1, whole);
    const int duration = int(timer.elapsed());
    const State after = readState(QDir(whole).filePath(DatabaseFileName), &problem);
    QVERIFY2(problem.isEmpty(), qPrintable(problem));
    QVERIFY(after.ids != before.ids || after.groups != before.groups || args.first() == QLatin1String("compact"));

    const int points = 24;
    int sawOld = 0, sawNew = 0, sawBetween = 0;
    for (int i = 0; i < points; ++i) {
        const QString home = freshHome(i);
        runKilled(args, duration * i / points, home);
        const State s = readState(QDir(home).filePath(DatabaseFileName), &problem);
        QVERIFY2(problem.isEmpty(), qPrintable(QStringLiteral("killed after %1 ms: %2").arg(duration * i / points).arg(problem)));
        if (args.first() == QLatin1String("import")) {
            // Every folder is one batch: in whole or not at all.
            QCOMPARE(s.groups, before.groups);
            for (auto it = s.entriesByFolder.cbegin(); it != s.entriesByFolder.cend(); ++it) {
                if (it.key().startsWith(QLatin1String("Old|/old/")))
                    QCOMPARE(it.value(), before.entriesByFolder.value(it.key()));
                else
                    QCOMPARE(it.value(), m_treeFolders.value(it.key().section(QLatin1Char('|'), 1)));
            }
            if (s.entries == before.entries)
                ++sawOld;
            else if (s.entries == after.entries)
                ++sawNew;
            else
                ++sawBetween;
        } else {
            const bool isOld = s.ids == before.ids && s.groups == before.groups;
            const bool isNew = s.ids == after.ids && s.groups == after.groups;
            QVERIFY2(isOld || isNew, qPrintable(QStringLiteral("killed after %1 ms: neither state").arg(duration * i / points)));
            isOld ? ++sawOld : ++sawNew;
        }
        QDir(home).removeRecursively();
    }
    qInfo("%s: %d ms a run; killed %d times: %d old, %d new, %d part-way by whole folders", QTest::currentDataTag(),
          duration, points, sawOld, sawNew, sawBetween);
}

QTEST_GUILESS_MAIN(TestOrganizerKill)
#include "tst_organizerkill.moc"
