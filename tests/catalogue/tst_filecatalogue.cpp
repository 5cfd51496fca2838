#include "core/catalogue/FileCatalogue.h"
#include "core/catalogue/OpenRouting.h"
#include "core/viewer/DocumentRules.h"

#include <QTest>

using namespace tarnby;
using namespace tarnby::catalogue;

class TestFileCatalogue : public QObject
{
    Q_OBJECT
private slots:
    void extension_data();
    void extension();
    void classification_data();
    void classification();
    void saveFormatCode_data();
    void saveFormatCode();
    void noExtensionListedTwice();
    void filterMatching_data();
    void filterMatching();
    void filterPatternOddities();
    void dialogFilters();
    void dialogFilterToQtPairs();
    void documentKind_data();
    void documentKind();
    void routing_data();
    void routing();
    void hostileNames_data();
    void hostileNames();
};

void TestFileCatalogue::extension_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("ext");
    QTest::newRow("lower case upper-cased") << "photo.jpg" << "JPG";
    QTest::newRow("only the last dot counts") << "a.b.txt" << "TXT";
    QTest::newRow("no dot") << "readme" << "";
    QTest::newRow("trailing dot") << "name." << "";
    QTest::newRow("leading dot") << ".bashrc" << "BASHRC";
    QTest::newRow("dot in a folder of the path does not count") << "/home/a.b/readme" << "";
    QTest::newRow("full path") << "/home/me/Pictures/cat.Png" << "PNG";
    QTest::newRow("mixed case") << "Song.Mp3" << "MP3";
    QTest::newRow("empty") << "" << "";
}

void TestFileCatalogue::extension()
{
    QFETCH(QString, name);
    QFETCH(QString, ext);
    QCOMPARE(GetFileExt(name), ext);
}

void TestFileCatalogue::classification_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("index");
    QTest::addColumn<bool>("text");
    QTest::addColumn<bool>("database");
    QTest::addColumn<QString>("category");

    QTest::newRow("first picture index 0") << "photo.jpg" << 0 << false << false << "Picture";
    QTest::newRow("last picture index 33") << "a.sgi" << 33 << false << false << "Picture";
    QTest::newRow("WAV at 34 is multimedia") << "a.wav" << 34 << false << false << "Multimedia";
    QTest::newRow("M3U at 41") << "a.m3u" << 41 << false << false << "Multimedia";
    QTest::newRow("MAC at 42 no flag") << "a.mac" << 42 << false << false << "Multimedia";
    QTest::newRow("MSP at 44 multimedia") << "paint.msp" << 44 << false << false << "Multimedia";
    QTest::newRow("TXT at 45 document, text flag") << "a.txt" << 45 << true << false << "Document";
    QTest::newRow("INI is system with text flag") << "setup.ini" << 47 << true << false << "System";
    QTest::newRow("SYS is system") << "io.sys" << 52 << true << false << "System";
    QTest::newRow("BAT is system") << "go.bat" << 49 << true << false << "System";
    QTest::newRow("DOS is system") << "x.dos" << 51 << true << false << "System";
    QTest::newRow("DAT among documents at 62") << "x.dat" << 62 << true << false << "Document";
    QTest::newRow("CDA among documents at 63") << "track01.cda" << 63 << true << false << "Document";
    QTest::newRow("DBF at 64 database") << "a.dbf" << 64 << false << true << "Database";
    QTest::newRow("WK4 database") << "a.wk4" << 68 << false << true << "Database";
    QTest::newRow("ASX at 69 database band") << "a.asx" << 69 << false << true << "Database";
    QTest::newRow("ZIP at 70 database band") << "archive.zip" << 70 << false << true << "Database";
    QTest::newRow("MP3 known, no flag") << "song.mp3" << 40 << false << false << "Multimedia";
    QTest::newRow("DIC unknown") << "scan.dic" << 71 << false << false << "Miscellaneous";
    QTest::newRow("no dot") << "readme" << 71 << false << false << "Miscellaneous";
    QTest::newRow("unknown extension") << "x.exe" << 71 << false << false << "Miscellaneous";
    QTest::newRow("XWD at 30") << "x.xwd" << 30 << false << false << "Picture";
    QTest::newRow("TIFF before TIF") << "x.tiff" << 3 << false << false << "Picture";
}

void TestFileCatalogue::classification()
{
    QFETCH(QString, name);
    QFETCH(int, index);
    QFETCH(bool, text);
    QFETCH(bool, database);
    QFETCH(QString, category);

    const FileType type = GetFileTypeFlag(name);
    QCOMPARE(type.index, index);
    QCOMPARE(type.known(), index != NotFound);
    QCOMPARE(type.textFile, text);
    QCOMPARE(type.databaseFile, database);
    QCOMPARE(GetFileCategoryName(name), category);
}

void TestFileCatalogue::saveFormatCode_data()
{
    QTest::addColumn<QString>("ext");
    QTest::addColumn<int>("code");
    QTest::newRow("JPE shares JPG") << "JPE" << 10;
    QTest::newRow("lower case accepted") << "jpg" << 10;
    QTest::newRow("PBM shares PNG code 75") << "PBM" << 75;
    QTest::newRow("DCX shares PCX code 1") << "DCX" << 1;
    QTest::newRow("DIC not in table still 90") << "DIC" << 90;
    QTest::newRow("DRW beyond the table") << "DRW" << 136;
    QTest::newRow("IMG, the last row") << "IMG" << 52;
    QTest::newRow("text file has none") << "TXT" << 0;
    QTest::newRow("AWD has none") << "AWD" << 0;
    QTest::newRow("empty") << "" << 0;
}

void TestFileCatalogue::saveFormatCode()
{
    QFETCH(QString, ext);
    QFETCH(int, code);
    QCOMPARE(GetSaveFormatCode(ext), code);
}

void TestFileCatalogue::noExtensionListedTwice()
{
    // No extension appears twice, so the first-match rule never hides one.
    QSet<QString> seen;
    for (const char *ext : KnownExtensionTable) {
        QVERIFY2(!seen.contains(QLatin1String(ext)), ext);
        seen.insert(QLatin1String(ext));
    }
}

void TestFileCatalogue::filterMatching_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("shown");
    QTest::newRow("lower-case name matches upper pattern") << 0 << "photo.jpg" << true;
    QTest::newRow("mixed case") << 0 << "Photo.JpG" << true;
    QTest::newRow("JPEG filter hides PNG") << 0 << "photo.png" << false;
    QTest::newRow("all pictures lists DIC") << 32 << "scan.dic" << true;
    QTest::newRow("all pictures hides XWD") << 32 << "x.xwd" << false;
    QTest::newRow("all pictures lists the misspelt XWP") << 32 << "x.xwp" << true;
    QTest::newRow("XWD filter lists XWD") << 23 << "x.xwd" << true;
    QTest::newRow("all pictures omits AWD") << 32 << "fax.awd" << false;
    QTest::newRow("all pictures ends with MSP") << 32 << "paint.msp" << true;
    QTest::newRow("startup filter ends at MAC") << 35 << "a.mac" << true;
    QTest::newRow("startup filter omits IMG") << 35 << "a.img" << false;
    QTest::newRow("startup filter omits MSP") << 35 << "a.msp" << false;
    QTest::newRow("startup filter lists MP3") << 35 << "song.mp3" << true;
    QTest::newRow("all files lists a name without dot") << 39 << "readme" << true;
    QTest::newRow("all files lists anything") << 39 << "x.weird" << true;
    QTest::newRow("extension must end the name") << 2 << "x.bmp.txt" << false;
    QTest::newRow("text filter lists LOG") << 36 << "a.log" << true;
    QTest::newRow("database filter lists WK4") << 37 << "a.wk4" << true;
    QTest::newRow("CD filter lists DAT") << 33 << "a.dat" << true;
}

void TestFileCatalogue::filterMatching()
{
    QFETCH(int, filter);
    QFETCH(QString, name);
    QFETCH(bool, shown);
    const WildcardFilter f(QLatin1String(FilterPatterns[filter]));
    QCOMPARE(f.matches(name), shown);
    QCOMPARE(matchesPattern(name, QLatin1String(FilterPatterns[filter])), shown);
}

void TestFileCatalogue::filterPatternOddities()
{
    // A pattern without the dot matches any name ending in the letters.
    QVERIFY(matchesPattern(QStringLiteral("changelog"), QStringLiteral("*LOG")));
    QVERIFY(!matchesPattern(QStringLiteral("changelog"), QStringLiteral("*.LOG")));
}

void TestFileCatalogue::dialogFilters()
{
    const QString open = openDialogFilter();
    QVERIFY(open.startsWith(QLatin1String("JPeg and Lead Compressed|*.JPG;*.JPE;*.CMP|TIFF Formats|")));
    QVERIFY(open.endsWith(QLatin1String(
        "Sounds/Wave Files|*.WAV|MIDI Files|*.MID;*.RMI|Audio/Video Files|*.AVI;*.MPG;*.MOV|Music Files|*.MP3;*.M3U|"
        "Miscellaneous 1-Bit Formats|*.MAC;*.IMG;*.MSP|Text Files|*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;"
        "*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.URL;*.MSG|Database Files|*.DBF;*.DB;*.MDB;*.XLS;*.WK4")));
    QVERIFY(open.contains(QLatin1String("|Silicon Graphics Image|*.SGI|Sounds/Wave Files|")));
    const QString pictures = pictureDialogFilter();
    QVERIFY(pictures.startsWith(QLatin1String(
        "JPeg and Lead Compressed|*.JPG;*.JPE;*.CMP|TIFF Formats|*.TIFF;*.TIF;*.MPT|Bitmap Files|*.BMP|"
        "Icons and Cursor FIles|*.ICO;*.CUR|")));
    QVERIFY(pictures.endsWith(QLatin1String(
        "Micrografx Drawing|*.DRW|Computer Graphics Metafile|*.CGM|Hewlett Packard HPGL|*.PLT|Intergraph DGN|*.DGN|"
        "Silicon Graphics Image|*.SGI|Miscellaneous 1-Bit Formats|*.MAC;*.IMG;*.MSP")));
    // Pairs: an even number of fields, none empty.
    for (const QString &f : {open, pictures}) {
        const QStringList fields = f.split(QLatin1Char('|'));
        QCOMPARE(fields.size() % 2, 0);
        for (const QString &field : fields)
            QVERIFY(!field.isEmpty());
    }
}

void TestFileCatalogue::dialogFilterToQtPairs()
{
    const QString qt = dialogFilterToQt(QStringLiteral("Bitmap Files|*.BMP|Music Files|*.MP3;*.M3U"));
    QCOMPARE(qt, QStringLiteral("Bitmap Files (*.BMP *.bmp);;Music Files (*.MP3 *.mp3 *.M3U *.m3u)"));
    QCOMPARE(dialogFilterToQt(QStringLiteral("dangling|")), QStringLiteral("dangling ()"));
    QCOMPARE(dialogFilterToQt(QString()), QString());
}

void TestFileCatalogue::documentKind_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("letter");
    QTest::newRow("last picture index") << "a.sgi" << "I";
    QTest::newRow("one-bit picture in the multimedia band") << "paint.msp" << "I";
    QTest::newRow("first text index") << "a.txt" << "T";
    QTest::newRow("last text index") << "track01.cda" << "T";
    QTest::newRow("first database index") << "a.dbf" << "D";
    QTest::newRow("spreadsheet in the database band") << "sheet.wk4" << "D";
    QTest::newRow("last database index") << "archive.zip" << "D";
    QTest::newRow("unknown extension") << "x.exe" << "I";
    QTest::newRow("no extension") << "readme" << "I";
}

void TestFileCatalogue::documentKind()
{
    QFETCH(QString, name);
    QFETCH(QString, letter);
    const viewer::DocumentKind kind = viewer::kindOf(GetFileTypeFlag(name));
    QCOMPARE(viewer::kindLetter(kind), letter);
    QCOMPARE(viewer::kindFromLetter(letter), kind);
}

void TestFileCatalogue::routing_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("route");
    QTest::newRow("no extension does nothing") << "readme" << int(OpenRoute::Nothing);
    QTest::newRow("unknown type") << "setup.exe" << int(OpenRoute::Unsupported);
    QTest::newRow("wave to player") << "a.wav" << int(OpenRoute::Player);
    QTest::newRow("DAT to player despite text band") << "a.dat" << int(OpenRoute::Player);
    QTest::newRow("CDA to player") << "track01.cda" << int(OpenRoute::Player);
    QTest::newRow("ASX to player despite database band") << "a.asx" << int(OpenRoute::Player);
    QTest::newRow("ZIP to unzip") << "a.zip" << int(OpenRoute::Unzip);
    QTest::newRow("picture to viewer") << "a.png" << int(OpenRoute::Viewer);
    QTest::newRow("MSP picture to viewer") << "a.msp" << int(OpenRoute::Viewer);
    QTest::newRow("text to viewer") << "a.rtf" << int(OpenRoute::Viewer);
    QTest::newRow("WK4 to viewer") << "a.wk4" << int(OpenRoute::Viewer);
    QTest::newRow("DIC is not known") << "a.dic" << int(OpenRoute::Unsupported);
    QTest::newRow("trailing dot does nothing") << "odd." << int(OpenRoute::Nothing);
}

void TestFileCatalogue::routing()
{
    QFETCH(QString, name);
    QFETCH(int, route);
    QCOMPARE(int(routeForOpen(GetFileTypeFlag(name))), route);
}

void TestFileCatalogue::hostileNames_data()
{
    QTest::addColumn<QString>("name");
    QTest::newRow("thousands of characters") << QString(20000, QLatin1Char('a')) + QStringLiteral(".jpg");
    QTest::newRow("thousands of dots") << QString(5000, QLatin1Char('.'));
    QTest::newRow("invalid UTF-8 decoded") << QString::fromUtf8("\xff\xfe\xfd.bmp");
    QTest::newRow("lone surrogate") << (QString(QChar(0xD800)) + QStringLiteral(".txt"));
    QTest::newRow("embedded NUL") << QString::fromLatin1("a\0b.png", 7);
    QTest::newRow("only a dot") << ".";
}

void TestFileCatalogue::hostileNames()
{
    QFETCH(QString, name);
    // None of these may crash; the results must stay inside the table's range.
    const FileType type = GetFileTypeFlag(name);
    QVERIFY(type.index >= 0 && type.index <= NotFound);
    const QString category = GetFileCategoryName(name);
    QVERIFY(!category.isEmpty());
    QVERIFY(GetSaveFormatCode(type.extension) >= 0);
    WildcardFilter(QLatin1String(FilterPatterns[32])).matches(name);
}

QTEST_GUILESS_MAIN(TestFileCatalogue)
#include "tst_filecatalogue.moc"
