#include "core/platform/trash/Trash.h"

#include "TestDir.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace tarnby;

// The trash lives below XDG_DATA_HOME, which each test points at a folder of
// its own, so the user's real trash is never touched.
class TestTrash : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void trashAndRestore_data();
    void trashAndRestore();
    void restoreNeverReplaces();
    void recordedPath_data();
    void recordedPath();

private:
    std::unique_ptr<TestDir> m_dataHome;
    QByteArray m_savedDataHome;
};

void TestTrash::init()
{
    m_savedDataHome = qgetenv("XDG_DATA_HOME");
    m_dataHome = std::make_unique<TestDir>();
    qputenv("XDG_DATA_HOME", QFile::encodeName(m_dataHome->path()));
}

void TestTrash::cleanup()
{
    if (m_savedDataHome.isEmpty())
        qunsetenv("XDG_DATA_HOME");
    else
        qputenv("XDG_DATA_HOME", m_savedDataHome);
    m_dataHome.reset();
}

void TestTrash::trashAndRestore_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("plain name") << "photo.jpg";
    QTest::newRow("blanks and percent signs") << "my 100% photo.jpg";
    QTest::newRow("non-ASCII") << QStringLiteral("f\u00f6r\u00e5r.txt");
}

void TestTrash::trashAndRestore()
{
    QFETCH(QString, name);
    TestDir dir;
    const QString path = dir.createFile("folder/" + name, "precious");

    const trash::TrashResult trashed = trash::moveToTrash(path);
    QVERIFY2(trashed.ok, qPrintable(trashed.errorString));
    QVERIFY(!QFileInfo::exists(path));
    QVERIFY(QFileInfo::exists(trashed.pathInTrash));
    QVERIFY(trashed.pathInTrash.startsWith(m_dataHome->path() + "/Trash/files/"));
    QCOMPARE(trash::originalPath(trashed.pathInTrash), path);

    // A second file of the same name goes to the trash beside the first.
    dir.createFile("folder/" + name, "second");
    const trash::TrashResult second = trash::moveToTrash(path);
    QVERIFY(second.ok);
    QVERIFY(second.pathInTrash != trashed.pathInTrash);

    const trash::RestoreResult restored = trash::restore(trashed.pathInTrash);
    QVERIFY2(restored.ok, qPrintable(restored.errorString));
    QCOMPARE(restored.restoredPath, path);
    QCOMPARE(dir.read("folder/" + name), QByteArray("precious"));
    QVERIFY(!QFileInfo::exists(trashed.pathInTrash));
    QVERIFY(QDir(m_dataHome->path() + "/Trash/info").entryList(QDir::Files).size() == 1);
}

void TestTrash::restoreNeverReplaces()
{
    TestDir dir;
    const QString path = dir.createFile("report.txt", "old");
    const trash::TrashResult trashed = trash::moveToTrash(path);
    QVERIFY(trashed.ok);
    dir.createFile("report.txt", "new");
    const trash::RestoreResult restored = trash::restore(trashed.pathInTrash);
    QVERIFY(!restored.ok);
    QVERIFY(!restored.errorString.isEmpty());
    QCOMPARE(dir.read("report.txt"), QByteArray("new"));
    QVERIFY(QFileInfo::exists(trashed.pathInTrash));
}

void TestTrash::recordedPath_data()
{
    QTest::addColumn<QString>("trashFolder"); // relative to a test folder
    QTest::addColumn<QByteArray>("info");
    QTest::addColumn<QString>("expected");    // relative to the test folder; empty: no path

    QTest::newRow("absolute path") << "home/Trash" << QByteArray("[Trash Info]\nPath=/data/x%20y.txt\n")
                                   << "/data/x y.txt";
    QTest::newRow("relative to the top of its filesystem (.Trash-uid)")
        << "mnt/.Trash-1000" << QByteArray("[Trash Info]\r\nPath=music/a.mp3\r\nDeletionDate=2024-01-01T10:00:00\r\n")
        << "@mnt/music/a.mp3";
    QTest::newRow("relative to the top of its filesystem (.Trash/uid)")
        << "mnt/.Trash/1000" << QByteArray("[Trash Info]\nPath=music/a.mp3\n") << "@mnt/music/a.mp3";
    QTest::newRow("path outside the section") << "home/Trash" << QByteArray("Path=/x\n[Other]\nPath=/y\n") << "";
    QTest::newRow("no record") << "home/Trash" << QByteArray() << "";
}

void TestTrash::recordedPath()
{
    QFETCH(QString, trashFolder);
    QFETCH(QByteArray, info);
    QFETCH(QString, expected);

    TestDir dir;
    const QString inTrash = dir.createFile(trashFolder + "/files/a.mp3", "x");
    if (!info.isEmpty())
        dir.createFile(trashFolder + "/info/a.mp3.trashinfo", info);
    if (expected.startsWith('@'))
        expected = dir.filePath(expected.mid(1));
    QCOMPARE(trash::originalPath(inTrash), expected);
}

QTEST_GUILESS_MAIN(TestTrash)
#include "tst_trash.moc"
