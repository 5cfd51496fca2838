#include "core/browser/BrowserValues.h"
#include "core/browser/FileListModel.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/fileops/FileTransfer.h"

#include "TestDir.h"

#include <QAbstractItemModelTester>
#include <QFile>
#include <QSignalSpy>
#include <QTest>

using namespace tarnby;

class TestFileList : public QObject
{
    Q_OBJECT
private slots:
    void filterBoxEntries_data();
    void filterBoxEntries();
    void fastPathAgreesWithWildcards_data();
    void fastPathAgreesWithWildcards();
    void listingOrderAndCounts();
    void filterChangeKeepsFolders();
    void asynchronousListingDropsStaleFolder();
    void missingFolder();
    void typeAndSizeColumns();

    void workingFolderLines_data();
    void workingFolderLines();
    void viewStyleOption_data();
    void viewStyleOption();
    void paneWidths();
    void thumbnailBits_data();
    void thumbnailBits();
    void colourDepth_data();
    void colourDepth();

    void transfer_data();
    void transfer();
};

static FileEntry fileEntry(const QString &name)
{
    FileEntry e;
    e.name = name;
    e.extension = catalogue::GetFileExt(name);
    return e;
}

void TestFileList::filterBoxEntries_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("shown");
    QTest::newRow("lower-case jpg under JPEG") << 0 << "photo.jpg" << true;
    QTest::newRow("mixed-case Jpe under JPEG") << 0 << "Photo.Jpe" << true;
    QTest::newRow("xwd not under All Picture Files") << 32 << "x.xwd" << false;
    QTest::newRow("xwd under X Window Dump") << 23 << "x.xwd" << true;
    QTest::newRow("dic under All Picture Files") << 32 << "scan.dic" << true;
    QTest::newRow("awd not under All Picture Files") << 32 << "fax.awd" << false;
    QTest::newRow("img not under startup filter") << 35 << "disk.img" << false;
    QTest::newRow("mac under startup filter") << 35 << "paint.mac" << true;
    QTest::newRow("mp3 under startup filter") << 35 << "song.MP3" << true;
    QTest::newRow("txt not under startup filter") << 35 << "readme.txt" << false;
    QTest::newRow("no extension under All Files") << 39 << "README" << true;
    QTest::newRow("no extension under text") << 36 << "README" << false;
    QTest::newRow("only last dot counts") << 36 << "notes.jpg.txt" << true;
    QTest::newRow("name that ends in a dot") << 36 << "odd.txt." << false;
    QTest::newRow("cda under CD Player") << 33 << "track01.cda" << true;
    QTest::newRow("wk4 under database") << 37 << "sheet.wk4" << true;
    QTest::newRow("zip under zip") << 38 << "a.ZIP" << true;
}

void TestFileList::filterBoxEntries()
{
    QFETCH(int, filter);
    QFETCH(QString, name);
    QFETCH(bool, shown);
    const QString pattern = QLatin1String(catalogue::FilterPatterns[size_t(filter)]);
    QCOMPARE(EntryFilter(pattern).matches(fileEntry(name)), shown);
    QCOMPARE(catalogue::WildcardFilter(pattern).matches(name), shown);
}

void TestFileList::fastPathAgreesWithWildcards_data()
{
    QTest::addColumn<QString>("pattern");
    QTest::newRow("text with *LOG") << "*.TXT;*.RTF;*.INI;*LOG;*.BAT";
    QTest::newRow("all pictures") << QString::fromLatin1(catalogue::FilterPatterns[32]);
    QTest::newRow("startup") << QString::fromLatin1(catalogue::FilterPatterns[35]);
    QTest::newRow("typed name") << "report?.d*";
    QTest::newRow("two dots") << "*.TAR.GZ";
    QTest::newRow("all files") << "*.*";
}

void TestFileList::fastPathAgreesWithWildcards()
{
    QFETCH(QString, pattern);
    const QStringList names = {"a.jpg", "A.JPG", "b.log", "blog", "catalog", "x.txt", "report1.doc",
                               "report12.doc", "t.tar.gz", ".jpg", "noext", "trailing.", "x.xwd",
                               "x.xwp", "scan.DIC", "z.Mac", "c.log.bak"};
    const EntryFilter filter(pattern);
    const catalogue::WildcardFilter wildcards(pattern);
    for (const QString &name : names)
        QVERIFY2(filter.matches(fileEntry(name)) == wildcards.matches(name), qPrintable(name));
}

void TestFileList::listingOrderAndCounts()
{
    TestDir dir;
    dir.createFile("b.JPG");
    dir.createFile("a.png");
    dir.createFile("C.jpg");
    dir.createFile("notes.txt");
    dir.createFile(".hidden.jpg");
    dir.createFolder("zeta");
    dir.createFolder("Alpha");
    FileListModel model;
    QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);
    model.setPattern(QLatin1String(catalogue::FilterPatterns[0])); // JPEG
    model.setFolder(dir.path(), FileListModel::LoadMode::Synchronous);
    QStringList names;
    for (int row = 0; row < model.rowCount(); ++row)
        names << model.data(model.index(row, 0)).toString();
    QCOMPARE(names, (QStringList{"Alpha", "zeta", ".hidden.jpg", "b.JPG", "C.jpg"}));
    QCOMPARE(model.fileCount(), 3);
    QVERIFY(model.isFolder(0));
    QCOMPARE(model.filePath(3), dir.filePath("b.JPG"));
    QCOMPARE(model.shownFilePaths().size(), 3);
    QCOMPARE(model.rowForName("notes.txt"), -1);
}

void TestFileList::filterChangeKeepsFolders()
{
    TestDir dir;
    dir.createFolder("sub");
    dir.createFile("a.txt");
    dir.createFile("b.wav");
    FileListModel model;
    model.setFolder(dir.path(), FileListModel::LoadMode::Synchronous);
    QCOMPARE(model.fileCount(), 2); // "*.*" until a pattern is set
    model.setPattern(QLatin1String(catalogue::FilterPatterns[27])); // WAV
    QCOMPARE(model.rowCount(), 2);
    QCOMPARE(model.fileCount(), 1);
    model.setPattern(QLatin1String(catalogue::FilterPatterns[38])); // ZIP
    QCOMPARE(model.rowCount(), 1);
    QCOMPARE(model.fileCount(), 0);
}

void TestFileList::asynchronousListingDropsStaleFolder()
{
    TestDir first;
    TestDir second;
    for (int i = 0; i < 300; ++i)
        first.createFile(QStringLiteral("f%1.jpg").arg(i));
    second.createFile("only.jpg");
    FileListModel model;
    QSignalSpy loaded(&model, &FileListModel::folderLoaded);
    model.setFolder(first.path());
    model.setFolder(second.path()); // overtakes the first listing
    QVERIFY(loaded.wait(5000));
    QTest::qWait(50);
    QCOMPARE(loaded.size(), 1);
    QCOMPARE(model.folder(), second.path());
    QCOMPARE(model.fileCount(), 1);
}

void TestFileList::missingFolder()
{
    FileListModel model;
    model.setFolder(QStringLiteral("/no/such/folder/here"), FileListModel::LoadMode::Synchronous);
    QCOMPARE(model.rowCount(), 0);
    QVERIFY(model.errorString().startsWith(QStringLiteral("Folder not Found - ")));
}

void TestFileList::typeAndSizeColumns()
{
    TestDir dir;
    dir.createFile("p.jpg", QByteArray(2048, 'x'));
    dir.createFile("q.qqq");
    dir.createFile("setup.ini");
    FileListModel model;
    model.setFolder(dir.path(), FileListModel::LoadMode::Synchronous);
    auto typeOf = [&](const QString &name) {
        return model.data(model.index(model.rowForName(name), FileListModel::TypeColumn)).toString();
    };
    QCOMPARE(typeOf("p.jpg"), QStringLiteral("JPG Picture"));
    QCOMPARE(typeOf("q.qqq"), QStringLiteral("QQQ File"));
    QCOMPARE(typeOf("setup.ini"), QStringLiteral("INI System"));
    QCOMPARE(model.entry(model.rowForName("p.jpg"))->size, 2048);
    QVERIFY(!model.data(model.index(0, FileListModel::SizeColumn)).toString().isEmpty());
}

void TestFileList::workingFolderLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("folder");
    QTest::addColumn<int>("filter");
    QTest::newRow("plain") << "/home/ann/Pictures (0)" << true << "/home/ann/Pictures" << 0;
    QTest::newRow("two digits") << "/data (39)" << true << "/data" << 39;
    QTest::newRow("brackets in the folder name") << "/a (copy) (3)" << true << "/a (copy)" << 3;
    QTest::newRow("blank in the folder name") << "/my pics (12)" << true << "/my pics" << 12;
    QTest::newRow("CR left at the end") << "/x (5)\r" << true << "/x" << 5;
    QTest::newRow("no filter number") << "/just/a/folder" << true << "/just/a/folder" << -1;
    QTest::newRow("empty line") << "" << false << "" << -1;
    QTest::newRow("blank line") << "   " << false << "" << -1;
}

void TestFileList::workingFolderLines()
{
    QFETCH(QString, line);
    QFETCH(bool, valid);
    QFETCH(QString, folder);
    QFETCH(int, filter);
    const std::optional<WorkingFolder> parsed = parseWorkingFolderLine(line);
    QCOMPARE(parsed.has_value(), valid);
    if (!parsed)
        return;
    QCOMPARE(parsed->folder, folder);
    QCOMPARE(parsed->filterIndex, filter);
    if (filter >= 0)
        QCOMPARE(parseWorkingFolderLine(workingFolderLine(*parsed))->folder, folder);
}

void TestFileList::viewStyleOption_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("style");
    QTest::newRow("large icons") << "0" << int(ViewStyle::LargeIcons);
    QTest::newRow("list") << "2" << int(ViewStyle::List);
    QTest::newRow("details") << "3" << int(ViewStyle::Details);
    QTest::newRow("empty line") << "" << int(ViewStyle::Details);
    QTest::newRow("out of range") << "7" << int(ViewStyle::Details);
}

void TestFileList::viewStyleOption()
{
    QFETCH(QString, value);
    QFETCH(int, style);
    QCOMPARE(int(viewStyleFromOption(value)), style);
    QCOMPARE(viewStyleFromOption(viewStyleToOption(ViewStyle(style))), ViewStyle(style));
}

void TestFileList::paneWidths()
{
    const PaneValues tree = paneValues(0, 0, 300, 96);
    const PaneValues list = paneValues(304, 0, 700, 96);
    QCOMPARE(tree.width, QStringLiteral("4500"));
    const auto widths = paneWidthsFromOptions(tree, list, 96);
    QVERIFY(widths.has_value());
    QCOMPARE(*widths, (QList<int>{300, 700}));
    QVERIFY(!paneWidthsFromOptions({}, list, 96).has_value());
    QVERIFY(!paneWidthsFromOptions({"0", "0", "abc"}, list, 96).has_value());
    QVERIFY(!paneWidthsFromOptions({"0", "0", "-5"}, list, 96).has_value());
}

void TestFileList::thumbnailBits_data()
{
    QTest::addColumn<QString>("value");
    QTest::addColumn<int>("bits");
    QTest::newRow("32 Bits") << "32 Bits" << 32;
    QTest::newRow("1 Bit") << "1 Bit" << 1;
    QTest::newRow("7 Bits") << "7 Bits" << 7;
    QTest::newRow("unknown") << "lots" << 24;
    QTest::newRow("12 Bits is not offered") << "12 Bits" << 24;
}

void TestFileList::thumbnailBits()
{
    QFETCH(QString, value);
    QFETCH(int, bits);
    QCOMPARE(thumbnailBitsFromOption(value), bits);
}

void TestFileList::colourDepth_data()
{
    QTest::addColumn<int>("bits");
    QTest::addColumn<int>("depth");
    QTest::addColumn<int>("maxColours");
    QTest::newRow("32") << 32 << 32 << 0;
    QTest::newRow("16") << 16 << 16 << 0;
    QTest::newRow("8") << 8 << 8 << 256;
    QTest::newRow("4") << 4 << 8 << 16;
    QTest::newRow("2") << 2 << 8 << 4;
    QTest::newRow("1") << 1 << 1 << 2;
}

void TestFileList::colourDepth()
{
    QFETCH(int, bits);
    QFETCH(int, depth);
    QFETCH(int, maxColours);
    QImage image(40, 30, QImage::Format_RGB32);
    for (int y = 0; y < image.height(); ++y)
        for (int x = 0; x < image.width(); ++x)
            image.setPixel(x, y, qRgb(x * 6, y * 8, (x + y) * 3));
    const QImage reduced = reduceColourDepth(image, bits);
    QCOMPARE(reduced.depth(), depth);
    QCOMPARE(reduced.size(), image.size());
    if (maxColours > 0)
        QVERIFY(reduced.colorCount() <= maxColours);
    QCOMPARE(thumbnailBox(2.54, 5.08, 96), QSize(96, 192));
    QCOMPARE(thumbnailBox(0.1, 99, 96), thumbnailBox(0.5, 5.5, 96));
}

void TestFileList::transfer_data()
{
    QTest::addColumn<int>("mode");
    QTest::newRow("move") << int(TransferMode::Move);
    QTest::newRow("copy") << int(TransferMode::Copy);
}

void TestFileList::transfer()
{
    QFETCH(int, mode);
    TestDir dir;
    const QString a = dir.createFile("a.jpg", "AAA");
    const QString b = dir.createFile("b.jpg", "BBB");
    const QString target = dir.createFolder("target");
    dir.createFile("target/b.jpg", "old");
    const QString folder = dir.createFolder("sub");

    const TransferResult result = transferFiles({a, b, folder}, target, TransferMode(mode));
    QCOMPARE(result.done.first(), dir.filePath("target/a.jpg"));
    QCOMPARE(dir.read("target/a.jpg"), QByteArray("AAA"));
    QCOMPARE(dir.read("target/b.jpg"), QByteArray("old")); // never overwritten
    QCOMPARE(QFile::exists(a), TransferMode(mode) == TransferMode::Copy);
    QVERIFY(QFile::exists(b));
    if (TransferMode(mode) == TransferMode::Move) {
        QCOMPARE(result.failed.size(), 1); // b
        QVERIFY(QFileInfo(dir.filePath("target/sub")).isDir());
    } else {
        QCOMPARE(result.failed.size(), 2); // b, and the folder is not copied
    }
    // A folder never moves into itself; a file dropped where it is stays quietly.
    const TransferResult self = transferFiles({target, dir.filePath("target/b.jpg")}, target, TransferMode::Move);
    QCOMPARE(self.failed.size(), 1);
    QVERIFY(self.done.isEmpty());
}

QTEST_GUILESS_MAIN(TestFileList)
#include "tst_filelist.moc"
