#include "core/catalogue/FileCatalogue.h"
#include "core/search/SearchPatterns.h"

#include <QTest>

using namespace tarnby;
using namespace tarnby::search;

Q_DECLARE_METATYPE(SearchTab)

class TestSearchPatterns : public QObject
{
    Q_OBJECT
private slots:
    void tabs();
    void everyRow_data();
    void everyRow();
    void keptOddities_data();
    void keptOddities();
    void filterBoxMoves_data();
    void filterBoxMoves();
    void sharedIndex_data();
    void sharedIndex();
    void typedNameRow_data();
    void typedNameRow();
    void miscTooltips_data();
    void miscTooltips();
};

void TestSearchPatterns::tabs()
{
    const QStringList captions{QStringLiteral("Pictures"), QStringLiteral("MultiMedia"), QStringLiteral("Text"),
                               QStringLiteral("Database"), QStringLiteral("Miscellaneous")};
    const QStringList arrays{QStringLiteral("RDPICT"), QStringLiteral("RDMEDIA"), QStringLiteral("RDTEXT"),
                             QStringLiteral("RDDATA"), QStringLiteral("RDMISC")};
    const QList<int> counts{27, 10, 19, 8, 6};
    for (int i = 0; i < SearchTabCount; ++i) {
        const SearchTabTable &table = searchTabs()[size_t(i)];
        QCOMPARE(QLatin1String(table.caption), captions[i]);
        QCOMPARE(QLatin1String(table.arrayName), arrays[i]);
        QCOMPARE(int(table.choices.size()), counts[i]);
        QCOMPARE(searchTabByCaption(captions[i]), std::optional<SearchTab>(table.tab));
    }
    QCOMPARE(searchTabByCaption(QStringLiteral("pictures")), std::nullopt);
    QCOMPARE(searchTabByCaption(QString()), std::nullopt);
}

void TestSearchPatterns::everyRow_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("caption");
    QTest::addColumn<QString>("pattern"); // null: the typed name
    QTest::addRow("Pictures 0") << int(SearchTab::Pictures) << 0 << QStringLiteral("JPEG and LEAD Compressed") << QStringLiteral("*.JPG;*.JPE;*.CMP");
    QTest::addRow("Pictures 1") << int(SearchTab::Pictures) << 1 << QStringLiteral("TIFF Formats (TIF and TIFF)") << QStringLiteral("*.TIFF;*.TIF");
    QTest::addRow("Pictures 2") << int(SearchTab::Pictures) << 2 << QStringLiteral("BMP Formats") << QStringLiteral("*.BMP");
    QTest::addRow("Pictures 3") << int(SearchTab::Pictures) << 3 << QStringLiteral("Icons and Cursors") << QStringLiteral("*.ICO;*.CUR");
    QTest::addRow("Pictures 4") << int(SearchTab::Pictures) << 4 << QStringLiteral("PCX Formats") << QStringLiteral("*.PCX");
    QTest::addRow("Pictures 5") << int(SearchTab::Pictures) << 5 << QStringLiteral("Kodak Formats (PCD And FPX)") << QStringLiteral("*.PCD;*.FPX");
    QTest::addRow("Pictures 6") << int(SearchTab::Pictures) << 6 << QStringLiteral("Microsoft Fax Format (AWD)") << QStringLiteral("*.AWD");
    QTest::addRow("Pictures 7") << int(SearchTab::Pictures) << 7 << QStringLiteral("Exif Formats (TIFF And JPG)") << QStringLiteral("*.TIFF;*.JPG");
    QTest::addRow("Pictures 8") << int(SearchTab::Pictures) << 8 << QStringLiteral("Windows MetaFile Formats (WMF,EMF)") << QStringLiteral("*.WMF;*.EMF");
    QTest::addRow("Pictures 9") << int(SearchTab::Pictures) << 9 << QStringLiteral("Drawing Interchange Format (DXF)") << QStringLiteral("*.DXF");
    QTest::addRow("Pictures 10") << int(SearchTab::Pictures) << 10 << QStringLiteral("XPicMap (XPM)") << QStringLiteral("*.XPM");
    QTest::addRow("Pictures 11") << int(SearchTab::Pictures) << 11 << QStringLiteral("Interchange Format (IFF)") << QStringLiteral("*.IFF");
    QTest::addRow("Pictures 12") << int(SearchTab::Pictures) << 12 << QStringLiteral("Portable Bitmap Utilities (PBM)") << QStringLiteral("*.PBM");
    QTest::addRow("Pictures 13") << int(SearchTab::Pictures) << 13 << QStringLiteral("Dr.Halo (CUT)") << QStringLiteral("*.CUT");
    QTest::addRow("Pictures 14") << int(SearchTab::Pictures) << 14 << QStringLiteral("Photoshop 3.0 Format (PSD)") << QStringLiteral("*.PSD");
    QTest::addRow("Pictures 15") << int(SearchTab::Pictures) << 15 << QStringLiteral("Portable Network Graphics Format (PNG)") << QStringLiteral("*.PNG");
    QTest::addRow("Pictures 16") << int(SearchTab::Pictures) << 16 << QStringLiteral("Truevision TARGA Format (TGA)") << QStringLiteral("*.TGA");
    QTest::addRow("Pictures 17") << int(SearchTab::Pictures) << 17 << QStringLiteral("Encapsulated PostScript (EPS)") << QStringLiteral("*.EPS");
    QTest::addRow("Pictures 18") << int(SearchTab::Pictures) << 18 << QStringLiteral("JBIG Format (JBG)") << QStringLiteral("*.JBG");
    QTest::addRow("Pictures 19") << int(SearchTab::Pictures) << 19 << QStringLiteral("SUN Raster Format (RAS)") << QStringLiteral("*.RAS");
    QTest::addRow("Pictures 20") << int(SearchTab::Pictures) << 20 << QStringLiteral("WordPerfect Format (WPG)") << QStringLiteral("*.WPG");
    QTest::addRow("Pictures 21") << int(SearchTab::Pictures) << 21 << QStringLiteral("Macintosh Pict Format (PCT)") << QStringLiteral("*.PCT");
    QTest::addRow("Pictures 22") << int(SearchTab::Pictures) << 22 << QStringLiteral("Microsoft Windows ClipBoard (CLP)") << QStringLiteral("*.CLP");
    QTest::addRow("Pictures 23") << int(SearchTab::Pictures) << 23 << QStringLiteral("X Window Dump (XWD)") << QStringLiteral("*.XWD");
    QTest::addRow("Pictures 24") << int(SearchTab::Pictures) << 24 << QStringLiteral("Windows Animated Cursor (ANI)") << QStringLiteral("*.ANI");
    QTest::addRow("Pictures 25") << int(SearchTab::Pictures) << 25 << QStringLiteral("Silicon Graphics Image (SGI)") << QStringLiteral("*.SGI");
    QTest::addRow("Pictures 26") << int(SearchTab::Pictures) << 26 << QStringLiteral("Miscellaneous 1 Bit (MAC,IMG,MSP)") << QStringLiteral("*.MAC;*.IMG;*.MSP");
    QTest::addRow("MultiMedia 0") << int(SearchTab::MultiMedia) << 0 << QStringLiteral("Wave Files (WAV)") << QStringLiteral("*.WAV");
    QTest::addRow("MultiMedia 1") << int(SearchTab::MultiMedia) << 1 << QStringLiteral("MIDI Files (MID,RMI)") << QStringLiteral("*.MID;*.RMI");
    QTest::addRow("MultiMedia 2") << int(SearchTab::MultiMedia) << 2 << QStringLiteral("Music Files (MP3)") << QStringLiteral("*.MP3");
    QTest::addRow("MultiMedia 3") << int(SearchTab::MultiMedia) << 3 << QStringLiteral("Music Files (M3U)") << QStringLiteral("*.M3U");
    QTest::addRow("MultiMedia 4") << int(SearchTab::MultiMedia) << 4 << QStringLiteral("AudioVideo Files (AVI)") << QStringLiteral("*.AVI");
    QTest::addRow("MultiMedia 5") << int(SearchTab::MultiMedia) << 5 << QStringLiteral("AudioVideo Files (MPG)") << QStringLiteral("*.MPG");
    QTest::addRow("MultiMedia 6") << int(SearchTab::MultiMedia) << 6 << QStringLiteral("AudioVideo Files (MOV)") << QStringLiteral("*.MOV");
    QTest::addRow("MultiMedia 7") << int(SearchTab::MultiMedia) << 7 << QStringLiteral("AudioVideo Files (AVI,MPG,MOV)") << QStringLiteral("*.AVI;*.MPG;*.MOV");
    QTest::addRow("MultiMedia 8") << int(SearchTab::MultiMedia) << 8 << QStringLiteral("All Sound and Music (WAV,MID,RMI,MP3,M3U)") << QStringLiteral("*.WAV;*.MID;*.WAV;*.MP3;*.M3U");
    QTest::addRow("MultiMedia 9") << int(SearchTab::MultiMedia) << 9 << QStringLiteral("FLC Animation (FLC)") << QStringLiteral("*.FLC");
    QTest::addRow("Text 0") << int(SearchTab::Text) << 0 << QStringLiteral("Text Files (TXT)") << QStringLiteral("*.TXT");
    QTest::addRow("Text 1") << int(SearchTab::Text) << 1 << QStringLiteral("RichText Format (RTF)") << QStringLiteral("*.RTF");
    QTest::addRow("Text 2") << int(SearchTab::Text) << 2 << QStringLiteral("HyperText (HTM,HTML)") << QStringLiteral("*.HTM;*.HTML");
    QTest::addRow("Text 3") << int(SearchTab::Text) << 3 << QStringLiteral("Microsoft Word (DOC)") << QStringLiteral("*.DOC");
    QTest::addRow("Text 4") << int(SearchTab::Text) << 4 << QStringLiteral("Microsoft Works (WPS)") << QStringLiteral("*.WPS");
    QTest::addRow("Text 5") << int(SearchTab::Text) << 5 << QStringLiteral("Write Document Files (WRI)") << QStringLiteral("*.WRI");
    QTest::addRow("Text 6") << int(SearchTab::Text) << 6 << QStringLiteral("List Files (LST)") << QStringLiteral("*.LST");
    QTest::addRow("Text 7") << int(SearchTab::Text) << 7 << QStringLiteral("Web Site Address (URL)") << QStringLiteral("*.URL");
    QTest::addRow("Text 8") << int(SearchTab::Text) << 8 << QStringLiteral("System Batch Files (BAT)") << QStringLiteral("*.BAT");
    QTest::addRow("Text 9") << int(SearchTab::Text) << 9 << QStringLiteral("Backup Files (BAK)") << QStringLiteral("*.BAK");
    QTest::addRow("Text 10") << int(SearchTab::Text) << 10 << QStringLiteral("System Configuration (SYS)") << QStringLiteral("*.SYS");
    QTest::addRow("Text 11") << int(SearchTab::Text) << 11 << QStringLiteral("LOG Files (LOG)") << QStringLiteral("*.LOG");
    QTest::addRow("Text 12") << int(SearchTab::Text) << 12 << QStringLiteral("DOS Files (DOS)") << QStringLiteral("*.DOS");
    QTest::addRow("Text 13") << int(SearchTab::Text) << 13 << QStringLiteral("Message Files (MSG)") << QStringLiteral("*.MSG");
    QTest::addRow("Text 14") << int(SearchTab::Text) << 14 << QStringLiteral("Program Initialization (INI)") << QStringLiteral("*.INI");
    QTest::addRow("Text 15") << int(SearchTab::Text) << 15 << QStringLiteral("All Text File Types (TXT,RTF,HTM,HTML)") << QStringLiteral("*.TXT;*.RTF;*.HTM;*.HTML");
    QTest::addRow("Text 16") << int(SearchTab::Text) << 16 << QStringLiteral("Basic System File Types (SYS,DOS,BAT)") << QStringLiteral("*.SYS;*.BAT;*.BAK;*.DOS");
    QTest::addRow("Text 17") << int(SearchTab::Text) << 17 << QStringLiteral("Miscellaneous System Files (INI,URL,MSG,LOG)") << QStringLiteral("*.INI;*.URL;*.MSG;*.LOG");
    QTest::addRow("Text 18") << int(SearchTab::Text) << 18 << QStringLiteral("All Document Types (DOC,WRI,WPS)") << QStringLiteral("*.DOC;*.WRI;*.WPS");
    QTest::addRow("Database 0") << int(SearchTab::Database) << 0 << QStringLiteral("DBase Files (DBF)") << QStringLiteral("*.DBF");
    QTest::addRow("Database 1") << int(SearchTab::Database) << 1 << QStringLiteral("Paradox Files (DB)") << QStringLiteral("*.DB");
    QTest::addRow("Database 2") << int(SearchTab::Database) << 2 << QStringLiteral("Access Files (MDB)") << QStringLiteral("*.MDB");
    QTest::addRow("Database 3") << int(SearchTab::Database) << 3 << QStringLiteral("Excel Files (XLS)") << QStringLiteral("*.XLS");
    QTest::addRow("Database 4") << int(SearchTab::Database) << 4 << QStringLiteral("Lotus Files (WK4)") << QStringLiteral("*.WK4");
    QTest::addRow("Database 5") << int(SearchTab::Database) << 5 << QStringLiteral("Spread Sheet Files (XLS,WK4)") << QStringLiteral("*.XLS;*.WK4");
    QTest::addRow("Database 6") << int(SearchTab::Database) << 6 << QStringLiteral("Database (DBF,DB,MDB)") << QStringLiteral("*.DBF;*.DB;*.MDB");
    QTest::addRow("Database 7") << int(SearchTab::Database) << 7 << QStringLiteral("All of the Above Files (DBF,DB,MDB,XLS,WK4)") << QStringLiteral("*.DBF;*.DB;*.MDB;*.XLS;*.WK4");
    QTest::addRow("Miscellaneous 0") << int(SearchTab::Miscellaneous) << 0 << QStringLiteral("All Picture Files") << QStringLiteral("*.JPG;*.CMP;*.TIFF;*.TIF;*.MPT;*.BMP;*.ICO;*.CUR;*.PCX;*.DCX;*.PCD;*.FPX;*.DIC;*.WMF;*.EMF;*.DXF;*.XPM;*.IFF;*.PBM;*.CUT;*.PSD;*.PNG;*.TGA;*.EPS;*.JBG;*.RAS;*.WPG;*.PCT;*.MAC;*.IMG;*.MSP");
    QTest::addRow("Miscellaneous 1") << int(SearchTab::Miscellaneous) << 1 << QStringLiteral("All Multimedia Files") << QStringLiteral("*.WAV;*.MID;*.RMI;*.MP3;*.M3U;*.AVI;*.MPG;*.MOV");
    QTest::addRow("Miscellaneous 2") << int(SearchTab::Miscellaneous) << 2 << QStringLiteral("All Text Files") << QStringLiteral("*.TXT;*.RTF;*.INI;*LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.URL;*.MSG");
    QTest::addRow("Miscellaneous 3") << int(SearchTab::Miscellaneous) << 3 << QStringLiteral("All Database Files") << QStringLiteral("*.DBF;*.DB;*.MDB;*.XLS;*.WK4");
    QTest::addRow("Miscellaneous 4") << int(SearchTab::Miscellaneous) << 4 << QStringLiteral("Zip Files") << QStringLiteral("*.ZIP");
    QTest::addRow("Miscellaneous 5") << int(SearchTab::Miscellaneous) << 5 << QStringLiteral("Find File or Global Search Entered Below:") << QString();
}

void TestSearchPatterns::everyRow()
{
    QFETCH(int, tab);
    QFETCH(int, index);
    QFETCH(QString, caption);
    QFETCH(QString, pattern);
    const SearchChoice &choice = searchTab(SearchTab(tab)).choices[size_t(index)];
    QCOMPARE(QLatin1String(choice.caption), caption);
    const QString typed = QStringLiteral("holiday*.jpg");
    const std::optional<PatternChoice> chosen = choosePattern(SearchTab(tab), index, true, typed);
    QVERIFY(chosen);
    QCOMPARE(chosen->pattern, pattern.isNull() ? typed : pattern);
    QCOMPARE(chosen->frameCaption, QStringLiteral("Selected: ") + caption);
    // Every tooltip names what the button searches for.
    QVERIFY(QByteArray(choice.tooltip).startsWith("Search for") || QByteArray(choice.tooltip).startsWith("Seach for"));
    // Not set: nothing chosen.
    QCOMPARE(choosePattern(SearchTab(tab), index, false, typed), std::nullopt);
}

void TestSearchPatterns::keptOddities_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("found");
    QTest::newRow("sound row repeats WAV") << int(SearchTab::MultiMedia) << 8 << QStringLiteral("a.wav") << true;
    QTest::newRow("sound row misses RMI") << int(SearchTab::MultiMedia) << 8 << QStringLiteral("a.rmi") << false;
    QTest::newRow("MIDI row has RMI") << int(SearchTab::MultiMedia) << 1 << QStringLiteral("a.rmi") << true;
    QTest::newRow("all text finds syslog without a dot") << int(SearchTab::Miscellaneous) << 2 << QStringLiteral("syslog") << true;
    QTest::newRow("all text finds boot.log") << int(SearchTab::Miscellaneous) << 2 << QStringLiteral("boot.LOG") << true;
    QTest::newRow("basic system row finds BAK") << int(SearchTab::Text) << 16 << QStringLiteral("old.bak") << true;
    QTest::newRow("all pictures has no JPE") << int(SearchTab::Miscellaneous) << 0 << QStringLiteral("a.jpe") << false;
    QTest::newRow("all pictures has DIC") << int(SearchTab::Miscellaneous) << 0 << QStringLiteral("scan.dic") << true;
}

void TestSearchPatterns::keptOddities()
{
    QFETCH(int, tab);
    QFETCH(int, index);
    QFETCH(QString, name);
    QFETCH(bool, found);
    const std::optional<PatternChoice> chosen = choosePattern(SearchTab(tab), index, true, {});
    QVERIFY(chosen);
    QCOMPARE(catalogue::matchesPattern(name, chosen->pattern), found);
}

void TestSearchPatterns::filterBoxMoves_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("index");
    QTest::addColumn<int>("filter");
    for (int i = 0; i <= 25; ++i)
        QTest::addRow("picture %d moves to entry %d", i, i) << int(SearchTab::Pictures) << i << i;
    QTest::newRow("one-bit pictures to Miscellaneous") << int(SearchTab::Pictures) << 26 << 31;
    QTest::newRow("wave") << int(SearchTab::MultiMedia) << 0 << 27;
    QTest::newRow("midi") << int(SearchTab::MultiMedia) << 1 << 28;
    QTest::newRow("mp3 to music") << int(SearchTab::MultiMedia) << 2 << 30;
    QTest::newRow("m3u to music") << int(SearchTab::MultiMedia) << 3 << 30;
    QTest::newRow("avi to audio-video") << int(SearchTab::MultiMedia) << 4 << 29;
    QTest::newRow("all audio-video") << int(SearchTab::MultiMedia) << 7 << 29;
    QTest::newRow("all sound to all multimedia") << int(SearchTab::MultiMedia) << 8 << 34;
    QTest::newRow("flic") << int(SearchTab::MultiMedia) << 9 << 24;
    QTest::newRow("text row") << int(SearchTab::Text) << 11 << 36;
    QTest::newRow("database row") << int(SearchTab::Database) << 4 << 37;
    QTest::newRow("all pictures") << int(SearchTab::Miscellaneous) << 0 << 32;
    QTest::newRow("zip") << int(SearchTab::Miscellaneous) << 4 << 38;
    QTest::newRow("typed name leaves the box") << int(SearchTab::Miscellaneous) << 5 << -1;
}

void TestSearchPatterns::filterBoxMoves()
{
    QFETCH(int, tab);
    QFETCH(int, index);
    QFETCH(int, filter);
    const std::optional<PatternChoice> chosen = choosePattern(SearchTab(tab), index, true, QStringLiteral("x"));
    QVERIFY(chosen);
    QCOMPARE(chosen->filterIndex, filter);
}

void TestSearchPatterns::sharedIndex_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("pattern"); // empty: nothing chosen
    // Index 3 clicked on the Pictures tab, OK pressed on another tab whose
    // button 3 is set: that tab's row 3.
    QTest::newRow("index 3 on Database") << int(SearchTab::Database) << 3 << QStringLiteral("*.XLS");
    QTest::newRow("index 3 on Text") << int(SearchTab::Text) << 3 << QStringLiteral("*.DOC");
    QTest::newRow("index 20 beyond Database's rows") << int(SearchTab::Database) << 20 << QString();
    QTest::newRow("index 9 beyond Miscellaneous' rows") << int(SearchTab::Miscellaneous) << 9 << QString();
    QTest::newRow("nothing clicked yet") << int(SearchTab::Pictures) << -1 << QString();
}

void TestSearchPatterns::sharedIndex()
{
    QFETCH(int, tab);
    QFETCH(int, index);
    QFETCH(QString, pattern);
    const std::optional<PatternChoice> chosen = choosePattern(SearchTab(tab), index, true, QStringLiteral("typed"));
    QCOMPARE(chosen ? chosen->pattern : QString(), pattern);
}

void TestSearchPatterns::typedNameRow_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<bool>("chosen");
    QTest::newRow("a single blank chooses nothing") << QStringLiteral(" ") << false;
    QTest::newRow("two blanks are used") << QStringLiteral("  ") << true;
    QTest::newRow("empty is used (the walk makes it *.BMP)") << QString() << true;
    QTest::newRow("a name") << QStringLiteral("letter.doc") << true;
    QTest::newRow("a wildcard list") << QStringLiteral("report*;*.xwd") << true;
}

void TestSearchPatterns::typedNameRow()
{
    QFETCH(QString, typed);
    QFETCH(bool, chosen);
    const std::optional<PatternChoice> result = choosePattern(SearchTab::Miscellaneous, TypedNameIndex, true, typed);
    QCOMPARE(bool(result), chosen);
    if (result)
        QCOMPARE(result->pattern, typed);
}

void TestSearchPatterns::miscTooltips_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<int>("index");
    QTest::addColumn<QString>("tooltip");
    QTest::addRow("Miscellaneous 0") << int(SearchTab::Miscellaneous) << 0 << QStringLiteral("Seach for any of the Picture File Format Types at once");
    QTest::addRow("Miscellaneous 1") << int(SearchTab::Miscellaneous) << 1 << QStringLiteral("Search for all the Multimedia Files (AVI,MPG,MOV,MID,RMI,MP3,M3U,WAV)");
    QTest::addRow("Miscellaneous 2") << int(SearchTab::Miscellaneous) << 2 << QStringLiteral("Seach for all the Text Files at once on the Text File Search Tab");
    QTest::addRow("Miscellaneous 3") << int(SearchTab::Miscellaneous) << 3 << QStringLiteral("Search for all the Database File Types (DBF,DB,MDB,XLS,WK4)");
    QTest::addRow("Miscellaneous 4") << int(SearchTab::Miscellaneous) << 4 << QStringLiteral("Search for all the Zip Files (*.Zip)");
    QTest::addRow("Miscellaneous 5") << int(SearchTab::Miscellaneous) << 5 << QStringLiteral("Search for a File you enter here, or Global Search for a file extension type, or all file types with a given name.");
    QTest::newRow("SYS with its trailing blank") << int(SearchTab::Text) << 10 << QStringLiteral("Seach for System Configuration Files (SYS) ");
    QTest::newRow("EPS misspelt") << int(SearchTab::Pictures) << 17 << QStringLiteral("Search for Enacpsulated PostScript (EPS) Files");
    QTest::newRow("DBF") << int(SearchTab::Database) << 0 << QStringLiteral("Search for DBase Database Files (DBF)");
}

void TestSearchPatterns::miscTooltips()
{
    QFETCH(int, tab);
    QFETCH(int, index);
    QFETCH(QString, tooltip);
    QCOMPARE(QString::fromLatin1(searchTab(SearchTab(tab)).choices[size_t(index)].tooltip), tooltip);
}

QTEST_GUILESS_MAIN(TestSearchPatterns)
#include "tst_searchpatterns.moc"
