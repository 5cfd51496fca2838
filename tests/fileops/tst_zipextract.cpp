#include "core/platform/archive/ZipExtract.h"

#include "Fixtures.h"
#include "TestDir.h"
#include "ZipWriter.h"

#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QTest>

using namespace tarnby::archive;

namespace {

QStringList treeOf(const QString &folder)
{
    QStringList names;
    QDirIterator it(folder, QDir::AllEntries | QDir::NoDotAndDotDot | QDir::Hidden | QDir::System,
                    QDirIterator::Subdirectories);
    while (it.hasNext())
        names << QDir(folder).relativeFilePath(it.next());
    names.sort();
    return names;
}

QByteArray varied(int size)
{
    QByteArray data(size, Qt::Uninitialized);
    quint32 x = 12345;
    for (int i = 0; i < size; ++i) {
        x = x * 1103515245u + 12345u;
        data[i] = char('a' + (x >> 16) % 20);
    }
    return data;
}

} // namespace

Q_DECLARE_METATYPE(QList<ZipEntry>)

class TestZipExtract : public QObject
{
    Q_OBJECT
private slots:
    void targetFolder_data();
    void targetFolder();
    void unpacksTree();
    void refusesTargetThatExists();
    void hostileArchives_data();
    void hostileArchives();
    void bombs_data();
    void bombs();
    void bombWithoutDirectory();
    void damageRemovesWhatWasUnpacked();
    void fixtures_data();
    void fixtures();
};

void TestZipExtract::targetFolder_data()
{
    QTest::addColumn<QString>("zip");
    QTest::addColumn<QString>("folder");
    QTest::newRow("lower-case name") << "/home/a/photos.zip" << "/home/a/PHOTOS";
    QTest::newRow("folder keeps its case") << "/home/Ann/Mixed.Zip" << "/home/Ann/MIXED";
    QTest::newRow("dots inside the name") << "/d/v1.2.zip" << "/d/V1.2";
}

void TestZipExtract::targetFolder()
{
    QFETCH(QString, zip);
    QFETCH(QString, folder);
    QCOMPARE(unzipTargetFolder(zip), folder);
}

void TestZipExtract::unpacksTree()
{
    TestDir dir;
    const QString zip = dir.filePath("pack.zip");
    QVERIFY(writeZip(zip, {{"top.txt", "top"},
                           {"sub/", {}, true},
                           {"sub/inner.txt", varied(50000)},
                           {"deep/er/file.bin", "deep"},
                           {"sub/link-to-inner", {}, false, "inner.txt"},
                           {"up-and-back", {}, false, "sub/../top.txt"}}));
    const QString target = unzipTargetFolder(zip);
    const ExtractResult r = extractArchive(zip, target);
    QVERIFY2(r.ok(), qPrintable(r.errorString));
    QCOMPARE(r.entryCount, 6);
    QCOMPARE(treeOf(target), (QStringList{"deep", "deep/er", "deep/er/file.bin", "sub", "sub/inner.txt",
                                          "sub/link-to-inner", "top.txt", "up-and-back"}));
    QCOMPARE(dir.read("PACK/sub/inner.txt"), varied(50000));
    QCOMPARE(QFileInfo(dir.filePath("PACK/sub/link-to-inner")).symLinkTarget(), dir.filePath("PACK/sub/inner.txt"));
    QCOMPARE(dir.read("PACK/up-and-back"), QByteArray("top"));
}

void TestZipExtract::refusesTargetThatExists()
{
    TestDir dir;
    const QString zip = dir.filePath("pack.zip");
    QVERIFY(writeZip(zip, {{"a.txt", "new"}}));
    dir.createFile("PACK/a.txt", "old");
    const ExtractResult r = extractArchive(zip, unzipTargetFolder(zip));
    QCOMPARE(r.status, Status::TargetExists);
    QCOMPARE(dir.read("PACK/a.txt"), QByteArray("old"));
    QCOMPARE(treeOf(dir.filePath("PACK")), QStringList{"a.txt"});
}

void TestZipExtract::hostileArchives_data()
{
    QTest::addColumn<QList<ZipEntry>>("entries");
    QTest::addColumn<QString>("refused");

    // A harmless entry comes first: nothing of it may be written either.
    QTest::newRow("dot-dot component") << QList<ZipEntry>{{"fine.txt", "x"}, {"../evil.txt", "x"}} << "../evil.txt";
    QTest::newRow("dot-dot in the middle")
        << QList<ZipEntry>{{"a/b/../../../evil.txt", "x"}} << "a/b/../../../evil.txt";
    QTest::newRow("backslash dot-dot inside") << QList<ZipEntry>{{"a\\..\\..\\evil.txt", "x"}} << "a/../../evil.txt";
    QTest::newRow("absolute path") << QList<ZipEntry>{{"/tmp/evil.txt", "x"}} << "/tmp/evil.txt";
    QTest::newRow("drive letter") << QList<ZipEntry>{{"C:/Windows/evil.txt", "x"}} << "C:/Windows/evil.txt";
    QTest::newRow("drive letter without slash") << QList<ZipEntry>{{"c:evil.txt", "x"}} << "c:evil.txt";
    QTest::newRow("link to an absolute path")
        << QList<ZipEntry>{{"etc", {}, false, "/etc"}} << "etc";
    QTest::newRow("link that climbs out")
        << QList<ZipEntry>{{"sub/", {}, true}, {"sub/up", {}, false, "../../outside"}} << "sub/up";
    QTest::newRow("link through another link")
        << QList<ZipEntry>{{"here", {}, false, "."}, {"away", {}, false, "here/.."}} << "away";
    QTest::newRow("file written through a link")
        << QList<ZipEntry>{{"dir", {}, false, "sub"}, {"sub/", {}, true}, {"dir/file.txt", "x"}} << "dir/file.txt";
    QTest::newRow("same file twice") << QList<ZipEntry>{{"a.txt", "1"}, {"a.txt", "2"}} << "a.txt";
}

void TestZipExtract::hostileArchives()
{
    QFETCH(QList<ZipEntry>, entries);
    QFETCH(QString, refused);

    TestDir dir;
    dir.createFolder("work/inner");
    const QString zip = dir.filePath("work/inner/evil.zip");
    QVERIFY(writeZip(zip, entries));
    const QString target = unzipTargetFolder(zip);

    QCOMPARE(checkArchive(zip).status, Status::Unsafe);
    const ExtractResult r = extractArchive(zip, target);
    QCOMPARE(r.status, Status::Unsafe);
    QCOMPARE(r.entry, refused);
    QVERIFY(!r.errorString.isEmpty());
    QVERIFY(!QFileInfo::exists(target));
    QCOMPARE(treeOf(dir.path()), (QStringList{"work", "work/inner", "work/inner/evil.zip"}));
}

void TestZipExtract::bombs_data()
{
    QTest::addColumn<QList<ZipEntry>>("entries");
    QTest::addColumn<qint64>("maxEntries");
    QTest::addColumn<qint64>("maxBytes");
    QTest::addColumn<qint64>("ratioFloor");

    QList<ZipEntry> many;
    for (int i = 0; i < 30; ++i)
        many.append({QByteArray("f") + QByteArray::number(i), "x"});
    QTest::newRow("too many entries") << many << qint64(20) << qint64(1 << 30) << qint64(1 << 30);
    QTest::newRow("too many bytes") << QList<ZipEntry>{{"zeros", QByteArray(3 << 20, '\0')}} << qint64(100)
                                    << qint64(1 << 20) << qint64(1 << 30);
    QTest::newRow("bytes spread over entries")
        << QList<ZipEntry>{{"a", QByteArray(600 << 10, 'a')}, {"b", QByteArray(600 << 10, 'b')}} << qint64(100)
        << qint64(1 << 20) << qint64(1 << 30);
    QTest::newRow("absurd growth") << QList<ZipEntry>{{"zeros", QByteArray(3 << 20, '\0')}} << qint64(100)
                                   << qint64(1 << 30) << qint64(1 << 20);
}

void TestZipExtract::bombs()
{
    QFETCH(QList<ZipEntry>, entries);
    QFETCH(qint64, maxEntries);
    QFETCH(qint64, maxBytes);
    QFETCH(qint64, ratioFloor);

    TestDir dir;
    const QString zip = dir.filePath("bomb.zip");
    QVERIFY(writeZip(zip, entries));
    Limits limits;
    limits.maxEntries = maxEntries;
    limits.maxTotalBytes = maxBytes;
    limits.ratioFloor = ratioFloor;
    limits.maxRatio = 100;
    const ExtractResult r = extractArchive(zip, unzipTargetFolder(zip), limits);
    QCOMPARE(r.status, Status::TooLarge);
    QVERIFY(!QFileInfo::exists(dir.filePath("BOMB")));
    // The same archive is fine under the ordinary limits.
    QVERIFY(extractArchive(zip, unzipTargetFolder(zip)).ok());
}

void TestZipExtract::bombWithoutDirectory()
{
    // With its directory spoilt, the archive is read from the front, where
    // sizes may be missing: the growth must be caught while unpacking.
    TestDir dir;
    const QString zip = dir.filePath("bomb.zip");
    QVERIFY(writeZip(zip, {{"small.txt", "fine"}, {"zeros", QByteArray(3 << 20, '\0'), false, {}, false}}));
    QFile file(zip);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const qsizetype end = bytes.lastIndexOf(QByteArray("PK\x05\x06", 4));
    const qsizetype central = bytes.indexOf(QByteArray("PK\x01\x02", 4));
    QVERIFY(end > 0 && central > 0);
    bytes[end] = 'X';
    bytes[central] = 'X';
    file.seek(0);
    file.write(bytes);
    file.close();

    Limits limits;
    limits.ratioFloor = 1 << 20;
    limits.maxRatio = 100;
    const ExtractResult r = extractArchive(zip, unzipTargetFolder(zip), limits);
    QVERIFY2(r.status == Status::TooLarge, qPrintable(r.errorString));
    QCOMPARE(r.entry, QStringLiteral("zeros")); // caught while unpacking, not before
    QVERIFY(r.errorString.contains(QLatin1String("more than")));
    QVERIFY(!QFileInfo::exists(dir.filePath("BOMB")));
}

void TestZipExtract::damageRemovesWhatWasUnpacked()
{
    TestDir dir;
    const QString zip = dir.filePath("broken.zip");
    QVERIFY(writeZip(zip, {{"first.txt", "unpacked before the damage"}, {"second.bin", varied(200000)}}));
    QFile file(zip);
    QVERIFY(file.open(QIODevice::ReadWrite));
    QByteArray bytes = file.readAll();
    const qsizetype at = bytes.indexOf("second.bin");
    QVERIFY(at > 0);
    for (qsizetype i = at + 300; i < at + 400; ++i)
        bytes[i] = char(~bytes[i]);
    file.seek(0);
    file.write(bytes);
    file.close();

    QVERIFY(checkArchive(zip).ok()); // the directory is intact; the data is not
    const ExtractResult r = extractArchive(zip, unzipTargetFolder(zip));
    QCOMPARE(r.status, Status::Damaged);
    QCOMPARE(r.entry, QStringLiteral("second.bin"));
    QVERIFY(!QFileInfo::exists(dir.filePath("BROKEN")));
}

void TestZipExtract::fixtures_data()
{
    QTest::addColumn<QString>("fixture");
    QTest::addColumn<Status>("status");
    QTest::addColumn<int>("files");

    QTest::newRow("zip inside a zip") << "ZIP/test-zip-of-zip.zip" << Status::Ok << 1;
    QTest::newRow("data descriptors") << "ZIP/testZip_with_DataDescriptor.zip" << Status::Ok << 5;
    QTest::newRow("Shift-JIS names") << "ZIP/testZipEntryNameCharsetShiftSJIS.zip" << Status::Ok << 2;
    QTest::newRow("empty archive") << "ZIP/zip.zip" << Status::Ok << 0;
    QTest::newRow("password entry") << "ZIP/testZipEncrypted.zip" << Status::Encrypted << 0;
    QTest::newRow("cut short") << "malformed/ZIP/stde.zip" << Status::Damaged << 0;
    // Its directory is broken and its entry claims 2 GB of stored data.
    QTest::newRow("size field 4294967295") << "malformed/ZIP/testZIP_corrupted_oom.zip" << Status::Damaged << 0;
}

void TestZipExtract::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, fixture);
    QFETCH(Status, status);
    QFETCH(int, files);

    TestDir dir;
    const QString zip = dir.filePath(QFileInfo(fixture).fileName());
    QVERIFY(QFile::copy(fixtures::path(fixture), zip));
    const QString target = unzipTargetFolder(zip);
    const ExtractResult r = extractArchive(zip, target);
    QVERIFY2(r.status == status, qPrintable(QString("status %1: %2 %3").arg(int(r.status)).arg(r.entry, r.errorString)));
    if (status == Status::Ok) {
        QDirIterator it(target, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
        int count = 0;
        while (it.hasNext()) {
            QVERIFY(QFileInfo(it.next()).size() < 4096);
            ++count;
        }
        QCOMPARE(count, files);
    } else {
        QVERIFY(!QFileInfo::exists(target));
    }
}

QTEST_GUILESS_MAIN(TestZipExtract)
#include "tst_zipextract.moc"
