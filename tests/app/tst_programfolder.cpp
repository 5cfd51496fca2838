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
    void installedFilesComeFirst();
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

void TestProgramFolder::installedFilesComeFirst()
{
    // An installed program: bin/ beside share/tarnby/.
    TestDir dir;
    dir.createFolder("prefix/bin");
    dir.createFile("prefix/share/tarnby/TIPHELP.TXT", "an installed tip\r\n");
    dir.createFile("prefix/share/tarnby/Help/index.html", "<p>installed</p>");
    const QString source = deliveredFilesSource(dir.filePath("prefix/bin"));
    QCOMPARE(source, QDir::cleanPath(dir.filePath("prefix/share/tarnby")));
    // The programs behind tarnby-cli, in libexec/tarnby, find the same folder.
    dir.createFolder("prefix/libexec/tarnby");
    QCOMPARE(deliveredFilesSource(dir.filePath("prefix/libexec/tarnby")), source);
    QCOMPARE(deliveredFiles(source), (QStringList{"Help/index.html", "TIPHELP.TXT"}));

    QStringList warnings;
    const QStringList written = seedProgramFolder(dir.filePath("home"), &warnings, source);
    QVERIFY(warnings.isEmpty());
    QCOMPARE(written, deliveredFiles(source));
    QCOMPARE(dir.read("home/TIPHELP.TXT"), QByteArray("an installed tip\r\n"));
    QCOMPARE(dir.read("home/Help/index.html"), QByteArray("<p>installed</p>"));

    // Without the data folder (a build folder), the built-in copies serve, and
    // they are the whole delivered set.
    const QString builtIn = deliveredFilesSource(dir.filePath("elsewhere/bin"));
    QVERIFY(builtIn.startsWith(QLatin1Char(':')));
    QVERIFY(deliveredFiles(builtIn).contains("BMPS/Check.BMP"));
    // This test runs from the build folder, which has no data folder either.
    QCOMPARE(deliveredFilesSource(), builtIn);
}

QTEST_GUILESS_MAIN(TestProgramFolder)
#include "tst_programfolder.moc"
