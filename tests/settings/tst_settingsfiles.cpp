#include "Fixtures.h"
#include "TestDir.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/settings/LineFile.h"
#include "core/settings/ProgramOptions.h"
#include "core/settings/SettingsFiles.h"
#include "core/settings/WindowColors.h"
#include "core/settings/WorkingFolders.h"

#include <QFile>
#include <QtTest>

using namespace tarnby;
using namespace tarnby::settings;

namespace {

QByteArray crlf(const QStringList &lines)
{
    QByteArray bytes;
    for (const QString &l : lines)
        bytes += l.toUtf8() + "\r\n";
    return bytes;
}

const LineRow<ProgramOptions> &optionRow(const char *name)
{
    for (const auto &row : optionsFileTable()) {
        if (qstrcmp(row.name, name) == 0)
            return row;
    }
    for (const auto &row : moreOptionsTable()) {
        if (qstrcmp(row.name, name) == 0)
            return row;
    }
    qFatal("no option row %s", name);
}

QString field(const ProgramOptions &o, const char *name)
{
    return formatLine(o, optionRow(name));
}

// Options in which every line differs from its default, with the lines of
// other windows in shapes they may take (a fraction, blanks, free text).
ProgramOptions unusualOptions()
{
    ProgramOptions o;
    o.browserLeft = QStringLiteral("120.5");
    o.browserTop = QStringLiteral(" 240");
    o.browserWidth = QStringLiteral("9000");
    o.browserHeight = QStringLiteral("7000");
    o.frameLeft = QStringLiteral("-30");
    o.frameTop = QStringLiteral("0");
    o.frameWidth = QStringLiteral("8000");
    o.frameHeight = 6000;
    o.thumbnailHeightCm = 0.5;
    o.thumbnailWidthCm = 5.5;
    o.thumbnailBits = QStringLiteral("1 Bit");
    o.treePane1 = QStringLiteral("10");
    o.treePane2 = QStringLiteral("tree two");
    o.treePane3 = QStringLiteral("3.25");
    o.listPane1 = QStringLiteral("list;one");
    o.listPane2 = QStringLiteral("");
    o.listPane3 = QStringLiteral("99");
    o.viewStyle = QStringLiteral("3");
    o.initialSearchCount = 10000;
    o.nextSearchCount = 2500;
    o.tableRowHeight = 600;
    o.menuTextStyle = 4;
    o.browserTextStyle = QStringLiteral("I");
    o.fromAddress = QStringLiteral("ann@example.org");
    o.webSiteAddress = QStringLiteral("https://example.org/start page");
    o.toAddress1 = QStringLiteral("bob@example.org");
    o.toAddress2 = QStringLiteral("Ünal <u@example.org>");
    o.toAddress3 = QStringLiteral("123");
    o.boldType = true;
    o.gridLines = true;
    o.quickTipsAtStartup = QStringLiteral("1");
    o.networkComputer = QStringLiteral("\\\\SERVER");
    o.browserValue33 = QStringLiteral("kept as read");
    o.useTextDoc = true;
    o.separatorPercent = 80;
    o.addressBook = QStringLiteral("/home/ann/Friends.MLS");
    o.smtpHost = QStringLiteral("smtp.example.org");
    o.smtpPort = 465;
    o.smtpSecurity = QStringLiteral("TLS");
    o.smtpUser = QStringLiteral("ann");
    o.incomingProtocol = QStringLiteral("POP3");
    o.incomingHost = QStringLiteral("pop.example.org");
    o.incomingPort = 995;
    o.incomingSecurity = QStringLiteral("STARTTLS");
    o.incomingUser = QStringLiteral("ann2");
    return o;
}

} // namespace

class TestSettingsFiles : public QObject
{
    Q_OBJECT

private slots:
    void tablesNumberTheirLines();
    void defaultsParse();

    void optionsRoundTrip();
    void foreignLinesRoundTripUnchanged();
    void optionsBadInput_data();
    void optionsBadInput();
    void optionsFiftyMegabytes_data();
    void optionsFiftyMegabytes();
    void sectionedIniFixtureKeepsDefaults();

    void colourDefaults();
    void colourDefaultsKeepThumbNailWindowGap();
    void coloursRoundTrip();
    void colourLines_data();
    void colourLines();
    void shortColoursFileKeepsDefaults();

    void workingFoldersRoundTrip();
    void emptyWorkingFolderList();
    void workingFoldersBadInput_data();
    void workingFoldersBadInput();
    void workingFolderLines_data();
    void workingFolderLines();
    void folderPatternTable();

    void seedingNeverOverwrites();
    void startupReadKeepsBoldFromOptions();
};

void TestSettingsFiles::tablesNumberTheirLines()
{
    int expected = 1;
    for (const auto &row : optionsFileTable())
        QCOMPARE(row.line, expected++);
    QCOMPARE(expected - 1, OptionsFileLineCount);
    expected = 1;
    for (const auto &row : moreOptionsTable())
        QCOMPARE(row.line, expected++);

    // Every swatch but the shared "Selection Item" has exactly one line.
    QList<int> seen(SwatchCount, 0);
    expected = 1;
    for (const ColorLineRow &row : colorsFileTable()) {
        QCOMPARE(row.line, expected++);
        ++seen[int(row.swatch)];
    }
    QCOMPARE(expected - 1, ColorsFileLineCount);
    for (int s = 0; s < SwatchCount; ++s)
        QCOMPARE(seen[s], s == int(Swatch::SelectionItemBack) ? 0 : 1);

    // The store order names every swatch once, 10 after 21.
    QList<int> order;
    for (Swatch s : SwatchStoreOrder)
        order << int(s);
    QCOMPARE(QSet<int>(order.begin(), order.end()).size(), SwatchCount);
    QVERIFY(order.indexOf(10) > order.indexOf(21));
}

void TestSettingsFiles::defaultsParse()
{
    // A default that its own row refuses would silently leave a zero.
    ProgramOptions scratch;
    for (const auto &row : optionsFileTable())
        QVERIFY2(parseLine(scratch, row, QString::fromUtf8(row.defaultText)), row.name);
    for (const auto &row : moreOptionsTable())
        QVERIFY2(parseLine(scratch, row, QString::fromUtf8(row.defaultText)), row.name);
    const ProgramOptions d;
    QCOMPARE(d.thumbnailHeightCm, 2.5);
    QCOMPARE(d.initialSearchCount, 5000);
    QCOMPARE(d.browserTextStyle, QStringLiteral("F"));
    QCOMPARE(d.separatorPercent, 30);
}

void TestSettingsFiles::optionsRoundTrip()
{
    TestDir dir;
    const ProgramOptions written = unusualOptions();
    QString error;
    QVERIFY2(writeProgramOptions(dir.path(), written, &error), qPrintable(error));
    ProgramOptions read;
    const TableReadReport report = readProgramOptions(dir.path(), read);
    QVERIFY(report.found);
    QCOMPARE(report.keptDefault, QStringList());
    QVERIFY(read == written);
}

void TestSettingsFiles::foreignLinesRoundTripUnchanged()
{
    // A file as another window left it: its lines come back byte for byte
    // after this program reads and rewrites it.
    const QStringList lines = {
        "1440", "1200.75", "14000", "9000", "60", "45", "12000", "8000",
        "1.5", "3", "8 Bits", "0", "0", "2835", "2835", "0", "8145", "2",
        "2500", "500", "250", "2", "R", "me@example.org", "http://example.org",
        "a@example.org", "", "c@example.org", "False", "True", "1", "\\\\NAS",
        "anything at all 33", "False"};
    TestDir dir;
    dir.createFile(OptionsFileName, crlf(lines));
    ProgramOptions o;
    const TableReadReport report = readProgramOptions(dir.path(), o);
    QVERIFY(!report.keptDefault.contains(QStringLiteral("browserTop")));
    QString error;
    QVERIFY(writeProgramOptions(dir.path(), o, &error));
    QCOMPARE(dir.read(OptionsFileName), crlf(lines));
}

void TestSettingsFiles::optionsBadInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("expected");

    QStringList good = tableLines<ProgramOptions>(optionsFileTable(), unusualOptions());
    auto replaced = [&](int line, const QString &text) {
        QStringList l = good;
        l[line - 1] = text;
        return crlf(l);
    };
    const ProgramOptions d;

    QTest::newRow("missing file") << QByteArray() << "thumbnailWidthCm" << field(d, "thumbnailWidthCm");
    QTest::newRow("empty file") << QByteArray("") << "initialSearchCount" << field(d, "initialSearchCount");
    QTest::newRow("short file keeps the lines it has") << crlf(good.mid(0, 10)) << "thumbnailWidthCm" << "5.5";
    QTest::newRow("short file defaults the rest") << crlf(good.mid(0, 10)) << "useTextDoc" << "False";
    QTest::newRow("over-long file") << crlf(good + QStringList(40, QStringLiteral("extra"))) << "useTextDoc" << "True";
    QTest::newRow("non-numeric thumbnail height") << replaced(9, "tall") << "thumbnailHeightCm" << "2.5";
    QTest::newRow("non-numeric browser left") << replaced(1, "left") << "browserLeft" << "900";
    QTest::newRow("non-numeric next count") << replaced(20, "many") << "nextSearchCount" << "1000";
    QTest::newRow("fraction on a 16-bit line") << replaced(21, "300.5") << "tableRowHeight" << "300";
    QTest::newRow("row height past 16 bits") << replaced(21, "70000") << "tableRowHeight" << "300";
    QTest::newRow("frame height past 32 bits") << replaced(8, "99999999999") << "frameHeight" << "9750";
    QTest::newRow("thumbnail 0.4 out of range") << replaced(9, "0.4") << "thumbnailHeightCm" << "2.5";
    QTest::newRow("thumbnail infinite") << replaced(10, "inf") << "thumbnailWidthCm" << "2.5";
    QTest::newRow("unknown browser text style") << replaced(23, "X") << "browserTextStyle" << "F";
    QTest::newRow("browser text style lower case") << replaced(23, "r") << "browserTextStyle" << "R";
    QTest::newRow("menu style 5") << replaced(22, "5") << "menuTextStyle" << "0";
    QTest::newRow("boolean as #TRUE#") << replaced(30, "#TRUE#") << "gridLines" << "True";
    QTest::newRow("boolean as -1") << replaced(34, "-1") << "useTextDoc" << "True";
    QTest::newRow("boolean as yes") << replaced(29, "yes") << "boldType" << "False";
    QTest::newRow("LF-only line ends") << crlf(good).replace("\r\n", "\n") << "useTextDoc" << "True";
    QTest::newRow("CR-only line ends") << crlf(good).replace("\r\n", "\r") << "useTextDoc" << "True";
    QTest::newRow("last line without line end") << crlf(good).chopped(2) << "useTextDoc" << "True";
    QTest::newRow("binary bytes keep the lines before")
        << QByteArray(crlf(good.mid(0, 12)) + QByteArray("\x00\x01\xff\xfe", 4) + "\r\n" + crlf(good.mid(13)))
        << "thumbnailBits" << "1 Bit";
    QTest::newRow("binary bytes default the lines after")
        << QByteArray(crlf(good.mid(0, 12)) + QByteArray("\x00\x01\xff\xfe", 4) + "\r\n" + crlf(good.mid(13)))
        << "useTextDoc" << "False";
    QByteArray latin1;
    for (int i = 0; i < good.size(); ++i)
        latin1 += (i == 23 ? QByteArray("fr\xe9""d@example.org") : good.at(i).toUtf8()) + "\r\n";
    QTest::newRow("Latin-1 text") << latin1 << "fromAddress" << QString::fromUtf8("fréd@example.org");
}

void TestSettingsFiles::optionsBadInput()
{
    QFETCH(QByteArray, content);
    QFETCH(QString, name);
    QFETCH(QString, expected);

    TestDir dir;
    if (!content.isNull())
        dir.createFile(OptionsFileName, content);
    ProgramOptions o;
    readProgramOptions(dir.path(), o);
    QCOMPARE(field(o, name.toLatin1().constData()), expected);

    // Whatever was read, the next save gives a well-formed file that reads
    // back to the same options.
    QString error;
    QVERIFY(writeProgramOptions(dir.path(), o, &error));
    const QByteArray bytes = dir.read(OptionsFileName);
    QCOMPARE(bytes.count("\r\n"), 34);
    QCOMPARE(bytes.count('\n'), 34);
    ProgramOptions again;
    const TableReadReport report = readProgramOptions(dir.path(), again);
    QCOMPARE(report.keptDefault, QStringList());
    QVERIFY(again == o);
}

void TestSettingsFiles::optionsFiftyMegabytes_data()
{
    QTest::addColumn<QByteArray>("unit");
    QTest::addColumn<bool>("firstLinesRead");
    QTest::newRow("one endless line") << QByteArray("7") << false;
    QTest::newRow("endless short lines") << QByteArray("2000\r\n") << true;
    QTest::newRow("endless NUL bytes") << QByteArray(1, '\0') << false;
}

void TestSettingsFiles::optionsFiftyMegabytes()
{
    QFETCH(QByteArray, unit);
    QFETCH(bool, firstLinesRead);
    TestDir dir;
    {
        QFile f(dir.filePath(OptionsFileName));
        QVERIFY(f.open(QIODevice::WriteOnly));
        QByteArray block;
        while (block.size() < (1 << 20))
            block += unit;
        for (int i = 0; i < 50; ++i)
            QVERIFY(f.write(block) == block.size());
    }
    ProgramOptions o;
    readProgramOptions(dir.path(), o);
    QCOMPARE(o.browserLeft, firstLinesRead ? QStringLiteral("2000") : ProgramOptions().browserLeft);
    QCOMPARE(o.thumbnailHeightCm, 2.5);
}

void TestSettingsFiles::sectionedIniFixtureKeepsDefaults()
{
    REQUIRE_FIXTURES();
    // A sectioned INI file of another program in the place of the options.
    QFile fixture(fixtures::path(QStringLiteral("INI/normal.ini")));
    QVERIFY(fixture.open(QIODevice::ReadOnly));
    TestDir dir;
    dir.createFile(OptionsFileName, fixture.readAll());
    ProgramOptions o;
    readProgramOptions(dir.path(), o);
    const ProgramOptions d;
    QCOMPARE(o.browserLeft, d.browserLeft);
    QCOMPARE(o.thumbnailHeightCm, d.thumbnailHeightCm);
    QCOMPARE(o.initialSearchCount, d.initialSearchCount);
    QCOMPARE(o.useTextDoc, d.useTextDoc);
}

void TestSettingsFiles::colourDefaults()
{
    WindowColors c;
    ProgramOptions o;
    o.boldType = true;
    setDefaultColors(c, o);
    QVERIFY(!o.boldType);
    // 0xFFD3CE has red in the low byte.
    QCOMPARE(toQColor(0xFFD3CE), QColor(0xCE, 0xD3, 0xFF));
    QPalette palette;
    palette.setColor(QPalette::Button, QColor(1, 2, 3));
    QCOMPARE(toQColor(0x8000000F, palette), QColor(1, 2, 3));
    QCOMPARE(fromQColor(QColor(0xCE, 0xD3, 0xFF)), 0xFFD3CEu);
}

void TestSettingsFiles::colourDefaultsKeepThumbNailWindowGap()
{
    WindowColors fresh;
    ProgramOptions o;
    setDefaultColors(fresh, o);
    QCOMPARE(fresh.swatch(Swatch::ThumbNailWindowBack), 0u);

    WindowColors set;
    set.setSwatch(Swatch::ThumbNailWindowBack, 0x123456);
    setDefaultColors(set, o);
    QCOMPARE(set.swatch(Swatch::ThumbNailWindowBack), 0x123456u);
}

void TestSettingsFiles::coloursRoundTrip()
{
    WindowColors c;
    for (int i = 0; i < ColorsFileLineCount; ++i)
        c.setValue(i, 0x010203u * (i + 1));
    c.setSwatch(Swatch::SelectionButtonsBack, 0x8000000F);
    TestDir dir;
    QString error;
    QVERIFY(writeWindowColors(dir.path(), c, &error));
    const QByteArray bytes = dir.read(ColorsFileName);
    QCOMPARE(bytes.count("\r\n"), 22);
    QVERIFY(bytes.endsWith("-2147483633\r\n"));
    QVERIFY(bytes.startsWith("66051\r\n"));
    WindowColors read;
    const ColorsReadReport report = readWindowColors(dir.path(), read);
    QCOMPARE(report.keptDefault, QStringList());
    QVERIFY(read == c);
}

void TestSettingsFiles::colourLines_data()
{
    QTest::addColumn<int>("line");
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("accepted");
    QTest::addColumn<quint32>("value");
    QTest::newRow("signed system colour") << 22 << "-2147483633" << true << 0x8000000Fu;
    QTest::newRow("unsigned system colour") << 22 << "2147483663" << true << 0x8000000Fu;
    QTest::newRow("fraction on a number line is rounded") << 1 << "255.6" << true << 256u;
    QTest::newRow("fraction on an integer line keeps the default") << 6 << "255.6" << false << 0u;
    QTest::newRow("whole number on an integer line") << 12 << " 65280 " << true << 65280u;
    QTest::newRow("past 32 bits") << 3 << "4294967296" << false << 0u;
    QTest::newRow("not a number") << 17 << "red" << false << 0u;
    QTest::newRow("empty line") << 19 << "" << false << 0u;
}

void TestSettingsFiles::colourLines()
{
    QFETCH(int, line);
    QFETCH(QString, text);
    QFETCH(bool, accepted);
    QFETCH(quint32, value);
    WindowColors defaults;
    ProgramOptions o;
    setDefaultColors(defaults, o);
    QStringList lines = colorsFileLines(defaults);
    lines[line - 1] = text;
    TestDir dir;
    dir.createFile(ColorsFileName, crlf(lines));
    WindowColors c = defaults;
    const ColorsReadReport report = readWindowColors(dir.path(), c);
    QCOMPARE(report.keptDefault.size(), accepted ? 0 : 1);
    QCOMPARE(c.value(line - 1), accepted ? value : defaults.value(line - 1));
}

void TestSettingsFiles::shortColoursFileKeepsDefaults()
{
    TestDir dir;
    dir.createFile(ColorsFileName, "255\r\n65280\r\n");
    WindowColors c;
    ProgramOptions o;
    setDefaultColors(c, o);
    readWindowColors(dir.path(), c);
    QCOMPARE(c.swatch(Swatch::MainWindowBack), 255u);
    QCOMPARE(c.swatch(Swatch::MainWindowText), 65280u);
    QCOMPARE(c.swatch(Swatch::ListBoxesBack), 0xEAFFEAu);
    QCOMPARE(c.swatch(Swatch::ThumbNailWindowBack), 0u);
}

void TestSettingsFiles::workingFoldersRoundTrip()
{
    const QStringList lines = {"/home/ann/Pictures (0)", "/srv/a folder (with parens) (36)", "/ (39)"};
    TestDir dir;
    QString error;
    QVERIFY(writeWorkingFolders(dir.path(), lines, &error));
    QCOMPARE(dir.read(WorkingFoldersFileName), crlf(lines));
    const WorkingFoldersRead read = readWorkingFolders(dir.path());
    QVERIFY(read.found);
    QCOMPARE(read.lines, lines);
}

void TestSettingsFiles::emptyWorkingFolderList()
{
    TestDir dir;
    QString error;
    QVERIFY(writeWorkingFolders(dir.path(), {}, &error));
    QCOMPARE(dir.read(WorkingFoldersFileName), QByteArray("\r\n"));
    QCOMPARE(readWorkingFolders(dir.path()).lines, QStringList{QString()});
}

void TestSettingsFiles::workingFoldersBadInput_data()
{
    QTest::addColumn<QByteArray>("content");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("missing file") << QByteArray() << QStringList();
    QTest::newRow("zero bytes") << QByteArray("") << QStringList();
    QTest::newRow("LF-only") << QByteArray("/a (1)\n/b (2)\n") << QStringList{"/a (1)", "/b (2)"};
    QTest::newRow("CR-only") << QByteArray("/a (1)\r/b (2)\r") << QStringList{"/a (1)", "/b (2)"};
    QTest::newRow("binary line stops the read") << QByteArray("/a (1)\r\n\x01\x02\r\n/b (2)\r\n", 19)
                                                << QStringList{"/a (1)"};
    QTest::newRow("line longer than any path") << QByteArray("/a (1)\r\n" + QByteArray(10000, 'x') + "\r\n")
                                               << QStringList{"/a (1)"};
}

void TestSettingsFiles::workingFoldersBadInput()
{
    QFETCH(QByteArray, content);
    QFETCH(QStringList, lines);
    TestDir dir;
    if (!content.isNull())
        dir.createFile(WorkingFoldersFileName, content);
    const WorkingFoldersRead read = readWorkingFolders(dir.path());
    QCOMPARE(read.found, !content.isNull());
    QCOMPARE(read.lines, lines);
}

void TestSettingsFiles::workingFolderLines_data()
{
    QTest::addColumn<QString>("line");
    QTest::addColumn<bool>("valid");
    QTest::addColumn<QString>("path");
    QTest::addColumn<int>("index");
    QTest::newRow("plain") << "/home/ann/Pictures (0)" << true << "/home/ann/Pictures" << 0;
    QTest::newRow("parens in the path") << "/x (old) (12)" << true << "/x (old)" << 12;
    QTest::newRow("empty line of an empty list") << "" << false << "" << 0;
    QTest::newRow("no number") << "/x (y)" << false << "" << 0;
    QTest::newRow("negative number") << "/x (-1)" << false << "" << 0;
}

void TestSettingsFiles::workingFolderLines()
{
    QFETCH(QString, line);
    QFETCH(bool, valid);
    QFETCH(QString, path);
    QFETCH(int, index);
    const auto entry = splitWorkingFolderLine(line);
    QCOMPARE(entry.has_value(), valid);
    if (valid) {
        QCOMPARE(entry->path, path);
        QCOMPARE(entry->filterIndex, index);
        QCOMPARE(workingFolderLine(path, index), line);
    }
}

void TestSettingsFiles::folderPatternTable()
{
    // The text filter's LOG has no dot, so that names like "changelog" match.
    const auto &t = settings::folderPatternTable();
    QVERIFY(t[36].contains(QStringLiteral(";*LOG;")));
    QVERIFY(!t[36].contains(QStringLiteral("*.LOG")));
    // Entry 35 is the picture list again, without sound and video.
    QCOMPARE(t[35], t[32]);
    QVERIFY(t[35].startsWith(QStringLiteral("*.JPG;")));
    QVERIFY(!t[35].contains(QStringLiteral("*.WAV")));
    QVERIFY(QString::fromLatin1(tarnby::catalogue::FilterPatterns[35]).contains(QStringLiteral("*.WAV")));
    for (int i = 0; i < settings::FolderPatternCount; ++i) {
        if (i != 35 && i != 36)
            QCOMPARE(t[size_t(i)], QString::fromLatin1(tarnby::catalogue::FilterPatterns[size_t(i)]));
    }
}

void TestSettingsFiles::seedingNeverOverwrites()
{
    TestDir dir;
    dir.createFile(OptionsFileName, "mine\r\n");
    QStringList warnings;
    const QStringList written = seedSettingsFiles(dir.path(), &warnings);
    QCOMPARE(warnings, QStringList());
    QCOMPARE(written, (QStringList{MoreOptionsFileName, ColorsFileName}));
    QCOMPARE(dir.read(OptionsFileName), QByteArray("mine\r\n"));
    QVERIFY(!QFileInfo::exists(dir.filePath(WorkingFoldersFileName)));
    // The seeded colours file holds the defaults.
    WindowColors c;
    readWindowColors(dir.path(), c);
    QCOMPARE(c.swatch(Swatch::MainWindowBack), 0xFFD3CEu);
}

void TestSettingsFiles::startupReadKeepsBoldFromOptions()
{
    TestDir dir;
    ProgramOptions o;
    o.boldType = true;
    QString error;
    QVERIFY(writeProgramOptions(dir.path(), o, &error));
    AppState state;
    state.programFolder = dir.path();
    const SettingsLoadReport report =
        loadSettings(state.programFolder, state.options, state.colors, state.workingFolders);
    QCOMPARE(report.warnings, QStringList());
    QVERIFY(state.options.boldType);
    QCOMPARE(state.colors.swatch(Swatch::EntryFieldsBack), 0xC0C0C0u);
    QCOMPARE(state.workingFolders, QStringList());
}

QTEST_GUILESS_MAIN(TestSettingsFiles)
#include "tst_settingsfiles.moc"
