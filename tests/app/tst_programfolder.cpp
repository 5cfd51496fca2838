#include "core/app/ProgramFolder.h"
#include "core/app/SettingsStore.h"

#include "TestDir.h"

#include <QDir>
#include <QFile>
#include <QTest>

#include <unistd.h>

using namespace tarnby;

class TestProgramFolder : public QObject
{
    Q_OBJECT
private slots:
    void order_data();
    void order();
    void unusableFallsBack_data();
    void unusableFallsBack();
    void readOnlyFolderFallsBack();
    void seedsDeliveredFiles();
    void neverOverwrites();
    void recordsTheFolder();
};

namespace {
ProgramFolderResult resolve(TestDir &dir, const QString &option, const QString &variable, const QString &saved)
{
    SettingsStore store(dir.filePath(QStringLiteral("settings.ini")));
    if (!saved.isEmpty())
        store.setValue(QStringLiteral("Registered"), QStringLiteral("TarnbyDIR"), saved);
    return resolveProgramFolder({option, variable, dir.filePath(QStringLiteral("data/Tarnby"))}, store);
}
} // namespace

void TestProgramFolder::order_data()
{
    QTest::addColumn<bool>("option");
    QTest::addColumn<bool>("variable");
    QTest::addColumn<bool>("saved");
    QTest::addColumn<QString>("expected");
    QTest::newRow("option wins over all") << true << true << true << "opt";
    QTest::newRow("variable before saved") << false << true << true << "var";
    QTest::newRow("saved setting") << false << false << true << "saved";
    QTest::newRow("user data folder last") << false << false << false << "data/Tarnby";
}

void TestProgramFolder::order()
{
    QFETCH(bool, option);
    QFETCH(bool, variable);
    QFETCH(bool, saved);
    QFETCH(QString, expected);
    TestDir dir;
    const ProgramFolderResult r = resolve(dir, option ? dir.filePath("opt") : QString(),
                                          variable ? dir.filePath("var") : QString(),
                                          saved ? dir.filePath("saved") : QString());
    QCOMPARE(r.path, QDir::cleanPath(dir.filePath(expected)));
    QVERIFY(r.warnings.isEmpty());
    QVERIFY(QFileInfo::exists(r.path + "/TIPHELP.TXT"));
}

void TestProgramFolder::unusableFallsBack_data()
{
    QTest::addColumn<QString>("kind");
    QTest::newRow("names a file") << "file";
    QTest::newRow("cannot be created") << "uncreatable";
}

void TestProgramFolder::unusableFallsBack()
{
    QFETCH(QString, kind);
    TestDir dir;
    QString bad;
    if (kind == QLatin1String("file"))
        bad = dir.createFile("plain-file", "not a folder");
    else
        bad = dir.createFile("blocker", "x") + "/below/a/file"; // a path under a regular file
    const ProgramFolderResult r = resolve(dir, bad, QString(), QString());
    QCOMPARE(r.path, QDir::cleanPath(dir.filePath("data/Tarnby")));
    QCOMPARE(r.warnings.size(), 1);
    QVERIFY(r.warnings.first().contains(bad));
    QVERIFY(r.warnings.first().contains(QLatin1String("--home")));
}

void TestProgramFolder::readOnlyFolderFallsBack()
{
    TestDir dir;
    QString readOnly;
    if (::geteuid() == 0) {
        // Permissions do not stop root; a folder on procfs does.
        readOnly = QStringLiteral("/proc/self/tarnby-home");
    } else {
        readOnly = dir.createFolder("ro");
        QFile::setPermissions(readOnly, QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    }
    const ProgramFolderResult r = resolve(dir, QString(), readOnly, QString());
    QCOMPARE(r.path, QDir::cleanPath(dir.filePath("data/Tarnby")));
    QCOMPARE(r.warnings.size(), 1);
    QVERIFY(r.warnings.first().contains(QLatin1String("TARNBY_HOME")));
    QVERIFY(QFileInfo::exists(r.path + "/Close.Txt"));
}

void TestProgramFolder::seedsDeliveredFiles()
{
    TestDir dir;
    const ProgramFolderResult r = resolve(dir, dir.filePath("home"), QString(), QString());
    const QStringList required = {"TIPHELP.TXT", "Close.Txt", "BMPS/Check.BMP", "BMPS/Undo.Bmp",
                                  "BMPS/BulbOn.Bmp", "BMPS/BulbOff.Bmp", "Help/index.html"};
    for (const QString &file : required) {
        QVERIFY2(deliveredFiles().contains(file), qPrintable(file));
        QVERIFY2(QFileInfo::exists(r.path + "/" + file), qPrintable(file));
    }
    QCOMPARE(r.seeded, deliveredFiles());

    // Twenty or more tips, one a line, CR LF.
    QFile tips(r.path + "/TIPHELP.TXT");
    QVERIFY(tips.open(QIODevice::ReadOnly));
    const QByteArray all = tips.readAll();
    QVERIFY(all.endsWith("\r\n"));
    QVERIFY(!all.contains("\n\n"));
    QVERIFY(all.count("\r\n") >= 20);

    // The delivered pictures are real BMPs.
    QFile check(r.path + "/BMPS/Check.BMP");
    QVERIFY(check.open(QIODevice::ReadOnly));
    QVERIFY(check.read(2) == "BM");
}

void TestProgramFolder::neverOverwrites()
{
    TestDir dir;
    dir.createFile("home/TIPHELP.TXT", "my own tip\r\n");
    const ProgramFolderResult first = resolve(dir, dir.filePath("home"), QString(), QString());
    QVERIFY(!first.seeded.contains("TIPHELP.TXT"));
    QCOMPARE(dir.read("home/TIPHELP.TXT"), QByteArray("my own tip\r\n"));
    QVERIFY(first.seeded.contains("Close.Txt"));

    // A second start writes nothing.
    const ProgramFolderResult second = resolve(dir, dir.filePath("home"), QString(), QString());
    QVERIFY(second.seeded.isEmpty());
}

void TestProgramFolder::recordsTheFolder()
{
    TestDir dir;
    const ProgramFolderResult r = resolve(dir, dir.filePath("home"), QString(), QString());
    SettingsStore store(dir.filePath("settings.ini"));
    QCOMPARE(store.value("Registered", "TarnbyDIR").toString(), r.path);

    // The recorded folder is found again without the option.
    const ProgramFolderResult again = resolve(dir, QString(), QString(), QString());
    QCOMPARE(again.path, r.path);
}

QTEST_GUILESS_MAIN(TestProgramFolder)
#include "tst_programfolder.moc"
