#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>
#include <QTest>

// Runs the real tarnby-cli binary, as a user's script would.
class TestCliType : public QObject
{
    Q_OBJECT
private slots:
    void help();
    void typeRows_data();
    void typeRows();
    void rawBytesAreEchoed();
    void usageErrors_data();
    void usageErrors();
    void launcherWithoutItsPrograms();

private:
    struct Run {
        int exitCode;
        QByteArray out;
        QByteArray err;
    };
    Run run(const QList<QByteArray> &args);
};

TestCliType::Run TestCliType::run(const QList<QByteArray> &args)
{
    // QProcess takes QStrings; pass raw bytes through a shell's printf so that
    // names which are not valid UTF-8 reach the program unchanged.
    QString script = QStringLiteral("exec \"$0\"");
    QStringList shellArgs{QStringLiteral("-c"), QString(), qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli")};
    for (const QByteArray &a : args) {
        QString octal;
        for (const char c : a)
            octal += QStringLiteral("\\0%1").arg(uint(uchar(c)), 3, 8, QLatin1Char('0'));
        script += QStringLiteral(" \"$(printf '%b' '%1')\"").arg(octal);
    }
    shellArgs[1] = script;
    QProcess p;
    p.start(QStringLiteral("/bin/sh"), shellArgs);
    if (!p.waitForFinished(20000))
        return {-1, {}, {}};
    return {p.exitCode(), p.readAllStandardOutput(), p.readAllStandardError()};
}

void TestCliType::help()
{
    const Run r = run({"--help"});
    QCOMPARE(r.exitCode, 0);
    QVERIFY(r.out.contains("type NAME..."));
    QVERIFY(r.out.contains("--help"));
    // The launcher gathers the commands of every program: each once, in
    // alphabetical order, whichever program carries it.
    QStringList names;
    const QRegularExpression commandLine(QStringLiteral("^  ([a-z][a-z-]*)"), QRegularExpression::MultilineOption);
    for (auto it = commandLine.globalMatch(QString::fromUtf8(r.out)); it.hasNext();)
        names << it.next().captured(1);
    QStringList sorted = names;
    sorted.sort();
    sorted.removeDuplicates();
    QCOMPARE(names, sorted);
    for (const char *name : {"convert", "find", "group", "mail", "print", "table", "thumbs", "type"})
        QVERIFY2(names.contains(QLatin1String(name)), name);
}

void TestCliType::typeRows_data()
{
    QTest::addColumn<QByteArray>("name");
    QTest::addColumn<QByteArray>("line");
    QTest::newRow("picture") << QByteArray("photo.jpg") << QByteArray("photo.jpg\tJPG\t0\t0\t0\tPicture\t10\n");
    QTest::newRow("no dot") << QByteArray("readme") << QByteArray("readme\t\t71\t0\t0\tMiscellaneous\t0\n");
    QTest::newRow("zip in the database band") << QByteArray("archive.zip") << QByteArray("archive.zip\tZIP\t70\t0\t1\tDatabase\t0\n");
    QTest::newRow("blank in the name") << QByteArray("my file.msp") << QByteArray("my file.msp\tMSP\t44\t0\t0\tMultimedia\t53\n");
}

void TestCliType::typeRows()
{
    QFETCH(QByteArray, name);
    QFETCH(QByteArray, line);
    const Run r = run({"type", name});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, line);
}

void TestCliType::rawBytesAreEchoed()
{
    const QByteArray bad("\xff\xfe.bmp");
    const QByteArray longName = QByteArray(5000, 'n') + ".tif";
    const Run r = run({"type", bad, longName, "a.b.c.rtf"});
    QCOMPARE(r.exitCode, 0);
    const QList<QByteArray> lines = r.out.split('\n');
    QCOMPARE(lines.size(), 4); // three lines and the empty rest
    QCOMPARE(lines.at(0), bad + "\tBMP\t6\t0\t0\tPicture\t6");
    QCOMPARE(lines.at(1), longName + "\tTIF\t4\t0\t0\tPicture\t3");
    QCOMPARE(lines.at(2), QByteArray("a.b.c.rtf\tRTF\t46\t1\t0\tDocument\t0"));
}

void TestCliType::usageErrors_data()
{
    QTest::addColumn<QList<QByteArray>>("args");
    QTest::newRow("type without names") << QList<QByteArray>{"type"};
    QTest::newRow("unknown command") << QList<QByteArray>{"explode"};
    QTest::newRow("no command") << QList<QByteArray>{};
}

void TestCliType::usageErrors()
{
    QFETCH(QList<QByteArray>, args);
    const Run r = run(args);
    QCOMPARE(r.exitCode, 2);
    QVERIFY(!r.err.isEmpty() || !r.out.isEmpty());
}

// A launcher whose programs are missing (a broken install) says which one it
// could not start, instead of failing silently.
void TestCliType::launcherWithoutItsPrograms()
{
    QTemporaryDir dir;
    const QString launcher = dir.filePath(QStringLiteral("tarnby-cli"));
    QVERIFY(QFile::copy(qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"), launcher));
    QProcess p;
    p.start(launcher, {QStringLiteral("type"), QStringLiteral("a.txt")});
    QVERIFY(p.waitForFinished(20000));
    QCOMPARE(p.exitCode(), 127);
    QVERIFY(p.readAllStandardError().contains("cannot start tarnby-cli-type"));
    QVERIFY(p.readAllStandardOutput().isEmpty());

    p.start(launcher, {QStringLiteral("--help")});
    QVERIFY(p.waitForFinished(20000));
    QCOMPARE(p.exitCode(), 1);
    QVERIFY(p.readAllStandardError().contains("cannot start tarnby-cli-"));
}

QTEST_GUILESS_MAIN(TestCliType)
#include "tst_cli_type.moc"
