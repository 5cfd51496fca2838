#include "Fixtures.h"
#include "CliRun.h"
#include "TestDir.h"

#include <QDir>
#include <QFile>
#include <QProcess>
#include <QRegularExpression>
#include <QTest>

#include <algorithm>

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

QTEST_GUILESS_MAIN(TestFindCommand)
#include "tst_findcommand.moc"
