#include "Fixtures.h"
#include "CliRun.h"
#include "TestDir.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

// Runs the real tarnby-cli binary and holds its output against a listing the
// test makes itself, with nothing of the program's code.
class TestFindCommand : public QObject
{
    Q_OBJECT
private slots:
    void listingInWalkOrder();
    void outFileHasCrLf();
    void countOnly();
    void nothingFound();
    void usageErrors_data();
    void usageErrors();
    void agreesWithFindOnSamples();
    void agreesWithFindOnOddNames();

private:
    using Run = clitest::Run;
    static Run run(const QStringList &args) { return clitest::runCli(QStringLiteral("find"), args, 60000); }
    void buildTree(TestDir &dir);
};


void TestFindCommand::buildTree(TestDir &dir)
{
    for (const char *file : {"top.xwd", "Pics/a.XWD", "Pics/b.txt", "Pics/deep/c.xWd", "pics2/d.xwd", "Alpha/e.jpg",
                             "Alpha/f.XWD", "Alpha/g.tif", "Alpha/sub/h.TIFF", ".hidden/i.xwd", "empty/readme"})
        dir.createFile(QString::fromLatin1(file));
    QDir().mkpath(dir.filePath(QStringLiteral("Alpha/nothing")));
}

namespace {

bool matches(const QString &name, const QStringList &extensions)
{
    return std::any_of(extensions.begin(), extensions.end(),
                       [&](const QString &ext) { return name.endsWith(QLatin1Char('.') + ext, Qt::CaseInsensitive); });
}

// Folder by folder in the order a tree that appends each folder's subfolders
// (sorted by name, any case) meets them: every folder with a match, then its
// matching names, sorted the same way.
QByteArray expectedListing(const QStringList &roots, const QStringList &extensions, const char *lineEnd)
{
    const QDir::SortFlags order = QDir::Name | QDir::IgnoreCase;
    QStringList queue = roots;
    QByteArray listing;
    for (qsizetype i = 0; i < queue.size(); ++i) {
        const QDir folder(queue.at(i));
        for (const QString &sub : folder.entryList(QDir::Dirs | QDir::NoDotAndDotDot | QDir::Hidden, order))
            queue.append(folder.filePath(sub));
        QStringList found;
        for (const QString &name : folder.entryList(QDir::Files | QDir::Hidden, order)) {
            if (matches(name, extensions))
                found.append(name);
        }
        if (found.isEmpty())
            continue;
        listing += "##" + QFile::encodeName(queue.at(i)) + lineEnd;
        for (const QString &name : found)
            listing += QFile::encodeName(name) + lineEnd;
    }
    return listing;
}

} // namespace

void TestFindCommand::listingInWalkOrder()
{
    TestDir dir;
    buildTree(dir);
    TestDir second;
    second.createFile(QStringLiteral("x.tif"));
    const Run r = run({QStringLiteral("*.XWD;*.tif"), dir.path(), second.path()});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, expectedListing({dir.path(), second.path()}, {QStringLiteral("xwd"), QStringLiteral("tif")}, "\n"));
    QVERIFY(r.out.contains("##" + QFile::encodeName(dir.filePath(QStringLiteral("Alpha"))) + "\nf.XWD\ng.tif\n"));
}

void TestFindCommand::outFileHasCrLf()
{
    TestDir dir;
    buildTree(dir);
    TestDir out;
    const QString file = out.filePath(QStringLiteral("report.txt"));
    const Run r = run({QStringLiteral("*.xwd"), dir.path(), QStringLiteral("--out"), file});
    QCOMPARE(r.exitCode, 0);
    QVERIFY(r.out.isEmpty());
    QCOMPARE(out.read(QStringLiteral("report.txt")), expectedListing({dir.path()}, {QStringLiteral("xwd")}, "\r\n"));
}

void TestFindCommand::countOnly()
{
    TestDir dir;
    buildTree(dir);
    const Run r = run({QStringLiteral("--count"), QStringLiteral("*.XWD;*.TIFF"), dir.path()});
    QCOMPARE(r.exitCode, 0);
    QCOMPARE(r.out, QByteArray("7\n"));
}

void TestFindCommand::nothingFound()
{
    TestDir dir;
    buildTree(dir);
    Run r = run({QStringLiteral("*.PCX"), dir.path()});
    QCOMPARE(r.exitCode, 1);
    QVERIFY(r.out.isEmpty());
    r = run({QStringLiteral("*.PCX"), dir.path(), QStringLiteral("--count")});
    QCOMPARE(r.exitCode, 1);
    QCOMPARE(r.out, QByteArray("0\n"));
}

void TestFindCommand::usageErrors_data()
{
    QTest::addColumn<QStringList>("args");
    const QString tmp = QDir::tempPath();
    QTest::newRow("nothing") << QStringList();
    QTest::newRow("pattern without a folder") << QStringList{QStringLiteral("*.BMP")};
    QTest::newRow("unknown option") << QStringList{QStringLiteral("*.BMP"), tmp, QStringLiteral("--fast")};
    QTest::newRow("--out without a file") << QStringList{QStringLiteral("*.BMP"), tmp, QStringLiteral("--out")};
    QTest::newRow("folder that does not exist") << QStringList{QStringLiteral("*.BMP"), QStringLiteral("/no/such/folder")};
    QTest::newRow("a file for a folder") << QStringList{QStringLiteral("*.BMP"), QStringLiteral("/etc/hostname")};
    QTest::newRow("blank pattern") << QStringList{QStringLiteral(" "), tmp};
}

void TestFindCommand::usageErrors()
{
    QFETCH(QStringList, args);
    const Run r = run(args);
    QCOMPARE(r.exitCode, 2);
    QVERIFY(r.out.isEmpty());
    QVERIFY(r.err.contains("Usage: tarnby-cli find PATTERN DIR..."));
}

void TestFindCommand::agreesWithFindOnSamples()
{
    REQUIRE_FIXTURES();
    const QString samples = fixtures::root();
    for (const QString &ext : {QStringLiteral("bmp"), QStringLiteral("tif"), QStringLiteral("dbf")}) {
        QProcess find;
        find.start(QStringLiteral("find"), {QStringLiteral("-L"), samples, QStringLiteral("-type"), QStringLiteral("f"),
                                            QStringLiteral("-iname"), QStringLiteral("*.") + ext});
        QVERIFY(find.waitForFinished(60000));
        QStringList expected = QString::fromUtf8(find.readAllStandardOutput()).split(QLatin1Char('\n'), Qt::SkipEmptyParts);

        const Run r = run({QStringLiteral("*.") + ext.toUpper(), samples});
        QStringList found;
        QString folder;
        for (const QString &line : QString::fromUtf8(r.out).split(QLatin1Char('\n'), Qt::SkipEmptyParts)) {
            if (line.startsWith(QLatin1String("##")))
                folder = line.mid(2);
            else
                found.append(folder + QLatin1Char('/') + line);
        }
        QCOMPARE(r.exitCode, expected.isEmpty() ? 1 : 0);
        expected.sort();
        found.sort();
        QCOMPARE(found, expected);
    }
}

namespace {

// Every file of a "##" listing as folder + "/" + name, in bytes, sorted.
QByteArrayList listedPaths(const QByteArray &listing)
{
    QByteArrayList paths;
    QByteArray folder;
    for (const QByteArray &line : listing.split('\n')) {
        if (line.startsWith("##"))
            folder = line.mid(2);
        else if (!line.isEmpty())
            paths.append(folder + '/' + line);
    }
    std::sort(paths.begin(), paths.end());
    return paths;
}

bool makeFile(const QByteArray &path)
{
    const int fd = ::open(path.constData(), O_WRONLY | O_CREAT | O_TRUNC, 0644);
    return fd >= 0 && ::close(fd) == 0;
}

} // namespace

void TestFindCommand::agreesWithFindOnOddNames()
{
    // Names as the filesystem holds them, bytes that are no UTF-8 included:
    // the listing has them byte for byte, as find prints them.
    TestDir dir;
    TestDir outside;
    const QByteArray root = QFile::encodeName(dir.path());
    for (const char *file : {"with space/a b.xwd", "Case/UPPER.XWD", "Case/upper.xwd", "Case/Mixed.XwD", "Case/plain.txt",
                             "folder.xwd/inside.XWD", "locked/secret.xwd", "links/note"})
        dir.createFile(QString::fromLatin1(file));
    outside.createFile(QStringLiteral("far.xwd"));
    // The temporary folder goes by decoded names when it removes itself,
    // which cannot reach these: they go first, whatever the outcome.
    struct RawNames {
        QByteArray root;
        ~RawNames()
        {
            ::chmod(root + "/locked", 0755);
            ::unlink(root + "/bad\xff name/caf\xe9.xwd");
            ::rmdir(root + "/bad\xff name");
            ::unlink(root + "/\xe9t\xe9.XWD");
            ::unlink(root + "/half\xc3.xwd");
        }
    } rawNames{root};
    QVERIFY(::mkdir(root + "/bad\xff name", 0755) == 0);
    QVERIFY(makeFile(root + "/bad\xff name/caf\xe9.xwd"));
    QVERIFY(makeFile(root + "/\xe9t\xe9.XWD"));
    QVERIFY(makeFile(root + "/half\xc3.xwd"));
    QVERIFY(::symlink("../Case/upper.xwd", root + "/links/to-file.xwd") == 0);
    QVERIFY(::symlink("../nowhere", root + "/links/dangling.xwd") == 0);
    QVERIFY(::symlink(QFile::encodeName(outside.path()), root + "/links/out") == 0);
    QVERIFY(::symlink(root, root + "/links/loop") == 0);
    const QByteArray locked = root + "/locked";
    QVERIFY(::chmod(locked, 0) == 0);

    const Run r = run({QStringLiteral("*.xwd"), dir.path()});
    // find follows links as the walk does, a loop once (it says so on its
    // error output); names are compared as bytes.
    QProcess find;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("LC_ALL"), QStringLiteral("C"));
    find.setProcessEnvironment(env);
    find.start(QStringLiteral("find"), {QStringLiteral("-L"), dir.path(), QStringLiteral("!"), QStringLiteral("-type"),
                                        QStringLiteral("d"), QStringLiteral("-iname"), QStringLiteral("*.xwd")});
    QVERIFY(find.waitForFinished(60000));
    QByteArrayList expected = find.readAllStandardOutput().split('\n');
    expected.removeAll(QByteArray());
    std::sort(expected.begin(), expected.end());

    QCOMPARE(r.exitCode, 0);
    QCOMPARE(listedPaths(r.out), expected);
    // The set holds what it was made to hold (find could be wrong too).
    QVERIFY(expected.contains(root + "/bad\xff name/caf\xe9.xwd"));
    QVERIFY(expected.contains(root + "/links/out/far.xwd"));
    QVERIFY(expected.contains(root + "/links/dangling.xwd"));
    QVERIFY(!expected.contains(root + "/links/loop/Case/upper.xwd"));
    QVERIFY(expected.contains(root + "/Case/UPPER.XWD") && expected.contains(root + "/Case/upper.xwd"));
}

QTEST_GUILESS_MAIN(TestFindCommand)
#include "tst_findcommand.moc"
