#include "core/fileops/FileOperations.h"

#include "TestDir.h"

#include <QDir>
#include <QFileInfo>
#include <QTest>

using namespace tarnby::fileops;

namespace {

QStringList namesIn(const QString &folder)
{
    QStringList names = QDir(folder).entryList(QDir::Files | QDir::Hidden);
    names.sort();
    return names;
}

} // namespace

class TestFileOperations : public QObject
{
    Q_OBJECT
private slots:
    void databaseExtensions_data();
    void databaseExtensions();
    void renamePlan_data();
    void renamePlan();
    void renameRefusals_data();
    void renameRefusals();
    void renameKeepsContentAndRemovesOld();
    void movePlan_data();
    void movePlan();
    void moveRefusesExistingTarget();
    void moveAcrossFolders();
    void rollbackWhenATargetAppears();
    void rollbackWhenANameIsTooLong();
    void copyWithoutOverwrite_data();
    void copyWithoutOverwrite();
};

void TestFileOperations::databaseExtensions_data()
{
    QTest::addColumn<QString>("ext");
    QTest::addColumn<bool>("database");
    QTest::newRow("dbf lower case") << "dbf" << true;
    QTest::newRow("ASX in the database band but plain here") << "ASX" << false;
    QTest::newRow("ZIP in the database band but plain here") << "ZIP" << false;
    QTest::newRow("TXT") << "TXT" << false;
}

void TestFileOperations::databaseExtensions()
{
    QFETCH(QString, ext);
    QFETCH(bool, database);
    QCOMPARE(isDatabaseExtension(ext), database);
}

void TestFileOperations::renamePlan_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<QStringList>("after");

    QTest::newRow("plain file keeps its extension")
        << QStringList{"report.txt", "other.txt"} << "report.txt" << "summary"
        << QStringList{"other.txt", "summary.txt"};
    QTest::newRow("extension cannot be changed")
        << QStringList{"report.txt"} << "report.txt" << "summary.doc" << QStringList{"summary.doc.txt"};
    QTest::newRow("extension case kept as on disk")
        << QStringList{"Photo.JpG"} << "Photo.JpG" << "holiday" << QStringList{"holiday.JpG"};
    QTest::newRow("new name trimmed") << QStringList{"a.txt"} << "a.txt" << "  b  " << QStringList{"b.txt"};
    QTest::newRow("dbf carries mdx and dbt along")
        << QStringList{"sales.dbf", "sales.mdx", "sales.dbt", "salesman.dbf"} << "sales.dbf" << "year"
        << QStringList{"salesman.dbf", "year.dbf", "year.dbt", "year.mdx"};
    QTest::newRow("companions matched in any case")
        << QStringList{"sales.dbf", "SALES.MDX"} << "sales.dbf" << "year"
        << QStringList{"year.MDX", "year.dbf"};
    QTest::newRow("plain file leaves same-base files alone")
        << QStringList{"sales.txt", "sales.dbt"} << "sales.txt" << "year"
        << QStringList{"sales.dbt", "year.txt"};
    QTest::newRow("asx renames alone")
        << QStringList{"list.asx", "list.bak"} << "list.asx" << "mine" << QStringList{"list.bak", "mine.asx"};
}

void TestFileOperations::renamePlan()
{
    QFETCH(QStringList, files);
    QFETCH(QString, source);
    QFETCH(QString, newName);
    QFETCH(QStringList, after);

    TestDir dir;
    for (const QString &f : files)
        dir.createFile(f, f.toUtf8());
    const Plan plan = planRename(dir.filePath(source), newName);
    QVERIFY(plan.ok());
    const Result r = execute(plan);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(namesIn(dir.path()), after);
}

void TestFileOperations::renameRefusals_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("newName");
    QTest::addColumn<Outcome>("outcome");
    QTest::addColumn<QString>("reported");

    QTest::newRow("empty name") << QStringList{"a.txt"} << "a.txt" << "   " << Outcome::EmptyName << "a.txt";
    QTest::newRow("name with a slash") << QStringList{"a.txt"} << "a.txt" << "x/y" << Outcome::InvalidName << "x/y";
    QTest::newRow("dot dot") << QStringList{"a.txt"} << "a.txt" << ".." << Outcome::InvalidName << "..";
    QTest::newRow("existing file") << QStringList{"a.txt", "b.txt"} << "a.txt" << "b" << Outcome::TargetExists
                                   << "b.txt";
    QTest::newRow("same name") << QStringList{"a.txt"} << "a.txt" << "a" << Outcome::TargetExists << "a.txt";
    QTest::newRow("a companion's new name is taken")
        << QStringList{"sales.dbf", "sales.dbt", "year.dbt"} << "sales.dbf" << "year" << Outcome::TargetExists
        << "year.dbt";
    QTest::newRow("companions that differ only in case collide")
        << QStringList{"sales.dbf", "Sales.dbf"} << "sales.dbf" << "year" << Outcome::TargetExists << "year.dbf";
    QTest::newRow("missing source") << QStringList{} << "gone.txt" << "b" << Outcome::SourceMissing << "gone.txt";
}

void TestFileOperations::renameRefusals()
{
    QFETCH(QStringList, files);
    QFETCH(QString, source);
    QFETCH(QString, newName);
    QFETCH(Outcome, outcome);
    QFETCH(QString, reported);

    TestDir dir;
    for (const QString &f : files)
        dir.createFile(f, f.toUtf8());
    const Plan plan = planRename(dir.filePath(source), newName);
    QCOMPARE(plan.problem.outcome, outcome);
    QVERIFY2(plan.problem.path.endsWith(reported), qPrintable(plan.problem.path));
    QCOMPARE(execute(plan).outcome, outcome);
    QStringList unchanged = files;
    unchanged.sort();
    QCOMPARE(namesIn(dir.path()), unchanged);
    for (const QString &f : files)
        QCOMPARE(dir.read(f), f.toUtf8());
}

void TestFileOperations::renameKeepsContentAndRemovesOld()
{
    TestDir dir;
    dir.createFile("data.db", QByteArray(100000, 'd'));
    QFile::setPermissions(dir.filePath("data.db"), QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
    QVERIFY(execute(planRename(dir.filePath("data.db"), "renamed")).ok());
    QVERIFY(!QFileInfo::exists(dir.filePath("data.db")));
    QCOMPARE(dir.read("renamed.db"), QByteArray(100000, 'd'));
    QVERIFY(QFileInfo(dir.filePath("renamed.db")).isExecutable());
}

void TestFileOperations::movePlan_data()
{
    QTest::addColumn<QStringList>("files");
    QTest::addColumn<QString>("source");
    QTest::addColumn<QString>("target");
    QTest::addColumn<QStringList>("leftBehind");
    QTest::addColumn<QStringList>("arrived");

    QTest::newRow("plain file") << QStringList{"src/photo.jpg", "src/photo.txt"} << "src/photo.jpg"
                                << "dst/photo.jpg" << QStringList{"photo.txt"} << QStringList{"photo.jpg"};
    QTest::newRow("plain file under a new name") << QStringList{"src/photo.jpg"} << "src/photo.jpg"
                                                 << "dst/beach.jpg" << QStringList{} << QStringList{"beach.jpg"};
    QTest::newRow("mdb takes every file beginning with its base")
        << QStringList{"src/clients.mdb", "src/clients.ldb", "src/clients2.txt", "src/CLIENTSOLD.BAK", "src/other.mdb"}
        << "src/clients.mdb" << "dst/clients.mdb" << QStringList{"other.mdb"}
        << QStringList{"CLIENTSOLD.BAK", "clients.ldb", "clients.mdb", "clients2.txt"};
    QTest::newRow("database moved under a new base name")
        << QStringList{"src/sales.dbf", "src/sales.dbt"} << "src/sales.dbf" << "dst/year.dbf" << QStringList{}
        << QStringList{"year.dbf", "year.dbt"};
    QTest::newRow("zip moves alone") << QStringList{"src/a.zip", "src/a.zip.bak"} << "src/a.zip" << "dst/a.zip"
                                     << QStringList{"a.zip.bak"} << QStringList{"a.zip"};
}

void TestFileOperations::movePlan()
{
    QFETCH(QStringList, files);
    QFETCH(QString, source);
    QFETCH(QString, target);
    QFETCH(QStringList, leftBehind);
    QFETCH(QStringList, arrived);

    TestDir dir;
    dir.createFolder("dst");
    for (const QString &f : files)
        dir.createFile(f, f.toUtf8());
    const Result r = execute(planMove(dir.filePath(source), dir.filePath(target)));
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(namesIn(dir.filePath("src")), leftBehind);
    QCOMPARE(namesIn(dir.filePath("dst")), arrived);
}

void TestFileOperations::moveRefusesExistingTarget()
{
    TestDir dir;
    dir.createFile("src/clients.mdb", "new");
    dir.createFile("src/clients.ldb", "lock");
    dir.createFile("dst/clients.ldb", "old lock");
    const Plan plan = planMove(dir.filePath("src/clients.mdb"), dir.filePath("dst/clients.mdb"));
    QCOMPARE(plan.problem.outcome, Outcome::TargetExists);
    QCOMPARE(plan.problem.path, dir.filePath("dst/clients.ldb"));
    QCOMPARE(namesIn(dir.filePath("src")), (QStringList{"clients.ldb", "clients.mdb"}));
    QCOMPARE(dir.read("dst/clients.ldb"), QByteArray("old lock"));
}

void TestFileOperations::moveAcrossFolders()
{
    // /dev/shm is another filesystem on most machines: the move becomes a copy
    // and a removal, and must still leave exactly one file behind.
    if (!QFileInfo(QStringLiteral("/dev/shm")).isWritable())
        QSKIP("no second filesystem at /dev/shm");
    TestDir dir;
    const QString from = dir.createFile("song.wav", QByteArray(70000, 's'));
    QTemporaryDir other(QStringLiteral("/dev/shm/tarnby-test-XXXXXX"));
    QVERIFY(other.isValid());
    const QString to = other.filePath("song.wav");
    QVERIFY(moveWithoutOverwrite(from, to).ok());
    QVERIFY(!QFileInfo::exists(from));
    QCOMPARE(QFileInfo(to).size(), 70000);
    QCOMPARE(moveWithoutOverwrite(to, to).outcome, Outcome::TargetExists);
}

void TestFileOperations::rollbackWhenATargetAppears()
{
    TestDir dir;
    dir.createFile("sales.dbf", "table");
    dir.createFile("sales.dbt", "memo");
    dir.createFile("sales.mdx", "index");
    const Plan plan = planRename(dir.filePath("sales.dbf"), "year");
    QVERIFY(plan.ok());
    QCOMPARE(plan.steps.size(), 3);
    // Another program takes one of the new names after the plan was made.
    dir.createFile("year.dbt", "someone else's");
    const Result r = execute(plan);
    QCOMPARE(r.outcome, Outcome::TargetExists);
    QCOMPARE(r.path, dir.filePath("year.dbt"));
    QCOMPARE(namesIn(dir.path()), (QStringList{"sales.dbf", "sales.dbt", "sales.mdx", "year.dbt"}));
    QCOMPARE(dir.read("sales.dbf"), QByteArray("table"));
    QCOMPARE(dir.read("year.dbt"), QByteArray("someone else's"));
}

void TestFileOperations::rollbackWhenANameIsTooLong()
{
    TestDir dir;
    const QString longRest = QString(200, QLatin1Char('x'));
    dir.createFile("sales.dbf", "table");
    dir.createFile("sales." + longRest, "long");
    const QString newBase(60, QLatin1Char('n'));
    const Plan plan = planRename(dir.filePath("sales.dbf"), newBase);
    QVERIFY(plan.ok());
    const Result r = execute(plan);
    QCOMPARE(r.outcome, Outcome::Failed);
    QVERIFY(!r.errorString.isEmpty());
    QCOMPARE(namesIn(dir.path()), (QStringList{"sales.dbf", "sales." + longRest}));
}

void TestFileOperations::copyWithoutOverwrite_data()
{
    QTest::addColumn<bool>("targetExists");
    QTest::addColumn<QString>("target");
    QTest::addColumn<Outcome>("outcome");
    QTest::newRow("new name") << false << "copy.bin" << Outcome::Done;
    QTest::newRow("existing name") << true << "copy.bin" << Outcome::TargetExists;
    QTest::newRow("folder missing") << false << "no/such/folder/copy.bin" << Outcome::Failed;
    QTest::newRow("name too long") << false << QString(300, QLatin1Char('c')) << Outcome::Failed;
}

void TestFileOperations::copyWithoutOverwrite()
{
    QFETCH(bool, targetExists);
    QFETCH(QString, target);
    QFETCH(Outcome, outcome);

    TestDir dir;
    QByteArray content(200000, Qt::Uninitialized);
    for (int i = 0; i < content.size(); ++i)
        content[i] = char(i * 7);
    const QString from = dir.createFile("source.bin", content);
    if (targetExists)
        dir.createFile(target, "keep me");
    const Result r = tarnby::fileops::copyWithoutOverwrite(from, dir.filePath(target));
    QCOMPARE(r.outcome, outcome);
    QCOMPARE(dir.read("source.bin"), content);
    if (outcome == Outcome::Done)
        QCOMPARE(dir.read(target), content);
    else if (targetExists)
        QCOMPARE(dir.read(target), QByteArray("keep me"));
    else
        QVERIFY(!QFileInfo::exists(dir.filePath(target)));
}

QTEST_GUILESS_MAIN(TestFileOperations)
#include "tst_fileoperations.moc"
