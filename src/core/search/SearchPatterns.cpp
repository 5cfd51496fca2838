#include "core/search/SearchPatterns.h"

namespace tarnby::search {

namespace {

// Entries of the browser's filter box that the choices move it to.
constexpr int MiscOneBitFilter = 31;
constexpr int WaveFilter = 27;
constexpr int MidiFilter = 28;
constexpr int AudioVideoFilter = 29;
constexpr int MusicFilter = 30;
constexpr int FlicFilter = 24;
constexpr int AllPicturesFilter = 32;
constexpr int AllMultimediaFilter = 34;
constexpr int TextFilter = 36;
constexpr int DatabaseFilter = 37;
constexpr int ZipFilter = 38;

// The picture choices 0 to 25 move the filter box to the entry of the same
// number. The box lists Flic animations at 24, so from there on its entries
// are one row behind the buttons (the animated cursors' button shows the
// Flic entry, the Silicon Graphics button the animated cursors); that is how
// the box has always followed this tab. The one-bit row has its own entry.
constexpr SearchChoice PictureChoices[] = {
    {"JPEG and LEAD Compressed", "Search for JPEG and LEAD Compressed Files (JPG,JPE,CMP)", "*.JPG;*.JPE;*.CMP", 0},
    {"TIFF Formats (TIF and TIFF)", "Search for TIFF Files (TIF,TIFF)", "*.TIFF;*.TIF", 1},
    {"BMP Formats", "Search for Windows Bitmap Files (BMP)", "*.BMP", 2},
    {"Icons and Cursors", "Search for Icon and Cursor Files (ICO,CUR)", "*.ICO;*.CUR", 3},
    {"PCX Formats", "Search for PaintBrush Files (PCX)", "*.PCX", 4},
    {"Kodak Formats (PCD And FPX)", "Search for Kodak Photo CD and FlashPix Files (PCD,FPX)", "*.PCD;*.FPX", 5},
    {"Microsoft Fax Format (AWD)", "Search for Microsoft Fax Files (AWD)", "*.AWD", 6},
    {"Exif Formats (TIFF And JPG)", "Search for Exif Files (TIFF,JPG)", "*.TIFF;*.JPG", 7},
    {"Windows MetaFile Formats (WMF,EMF)", "Search for Windows MetaFile Files (WMF,EMF)", "*.WMF;*.EMF", 8},
    {"Drawing Interchange Format (DXF)", "Search for Drawing Interchange Files (DXF)", "*.DXF", 9},
    {"XPicMap (XPM)", "Search for XPicMap Files (XPM)", "*.XPM", 10},
    {"Interchange Format (IFF)", "Search for Interchange Format Files (IFF)", "*.IFF", 11},
    {"Portable Bitmap Utilities (PBM)", "Search for Portable Bitmap Files (PBM)", "*.PBM", 12},
    {"Dr.Halo (CUT)", "Search for Dr.Halo Files (CUT)", "*.CUT", 13},
    {"Photoshop 3.0 Format (PSD)", "Search for Photoshop Files (PSD)", "*.PSD", 14},
    {"Portable Network Graphics Format (PNG)", "Search for Portable Network Graphics Files (PNG)", "*.PNG", 15},
    {"Truevision TARGA Format (TGA)", "Search for Truevision TARGA Files (TGA)", "*.TGA", 16},
    {"Encapsulated PostScript (EPS)", "Search for Enacpsulated PostScript (EPS) Files", "*.EPS", 17},
    {"JBIG Format (JBG)", "Search for JBIG Files (JBG)", "*.JBG", 18},
    {"SUN Raster Format (RAS)", "Search for SUN Raster Files (RAS)", "*.RAS", 19},
    {"WordPerfect Format (WPG)", "Search for WordPerfect Graphics Files (WPG)", "*.WPG", 20},
    {"Macintosh Pict Format (PCT)", "Search for Macintosh Pict Files (PCT)", "*.PCT", 21},
    {"Microsoft Windows ClipBoard (CLP)", "Search for Windows ClipBoard Files (CLP)", "*.CLP", 22},
    {"X Window Dump (XWD)", "Search for X Window Dump Files (XWD)", "*.XWD", 23},
    {"Windows Animated Cursor (ANI)", "Search for Windows Animated Cursor Files (ANI)", "*.ANI", 24},
    {"Silicon Graphics Image (SGI)", "Search for Silicon Graphics Image Files (SGI)", "*.SGI", 25},
    {"Miscellaneous 1 Bit (MAC,IMG,MSP)", "Search for Miscellaneous 1 Bit Files (MAC,IMG,MSP)", "*.MAC;*.IMG;*.MSP",
     MiscOneBitFilter},
};

// The sound-and-music row searches "*.WAV" twice and leaves out "*.RMI"
// although its caption names RMI; that is the row as users know it.
constexpr SearchChoice MediaChoices[] = {
    {"Wave Files (WAV)", "Search for Wave Sound Files (WAV)", "*.WAV", WaveFilter},
    {"MIDI Files (MID,RMI)", "Search for MIDI Music Files (MID,RMI)", "*.MID;*.RMI", MidiFilter},
    {"Music Files (MP3)", "Search for MP3 Music Files (MP3)", "*.MP3", MusicFilter},
    {"Music Files (M3U)", "Search for Music Play List Files (M3U)", "*.M3U", MusicFilter},
    {"AudioVideo Files (AVI)", "Search for AudioVideo Files (AVI)", "*.AVI", AudioVideoFilter},
    {"AudioVideo Files (MPG)", "Search for AudioVideo Files (MPG)", "*.MPG", AudioVideoFilter},
    {"AudioVideo Files (MOV)", "Search for AudioVideo Files (MOV)", "*.MOV", AudioVideoFilter},
    {"AudioVideo Files (AVI,MPG,MOV)", "Search for all AudioVideo Files (AVI,MPG,MOV)", "*.AVI;*.MPG;*.MOV",
     AudioVideoFilter},
    {"All Sound and Music (WAV,MID,RMI,MP3,M3U)", "Search for all Sound and Music Files (WAV,MID,RMI,MP3,M3U)",
     "*.WAV;*.MID;*.WAV;*.MP3;*.M3U", AllMultimediaFilter},
    {"FLC Animation (FLC)", "Search for FLC Animation Files (FLC)", "*.FLC", FlicFilter},
};

// Row 16 searches backup files too although its caption does not say so.
// The SYS tooltip is spelt as users have always seen it, trailing blank
// included. Every text choice moves the filter box to the text entry, which
// lists them all.
constexpr SearchChoice TextChoices[] = {
    {"Text Files (TXT)", "Search for Text Files (TXT)", "*.TXT", TextFilter},
    {"RichText Format (RTF)", "Search for RichText Files (RTF)", "*.RTF", TextFilter},
    {"HyperText (HTM,HTML)", "Search for HyperText Web Files (HTM,HTML)", "*.HTM;*.HTML", TextFilter},
    {"Microsoft Word (DOC)", "Search for Microsoft Word Files (DOC)", "*.DOC", TextFilter},
    {"Microsoft Works (WPS)", "Search for Microsoft Works Files (WPS)", "*.WPS", TextFilter},
    {"Write Document Files (WRI)", "Search for Write Document Files (WRI)", "*.WRI", TextFilter},
    {"List Files (LST)", "Search for List Files (LST)", "*.LST", TextFilter},
    {"Web Site Address (URL)", "Search for Web Site Address Files (URL)", "*.URL", TextFilter},
    {"System Batch Files (BAT)", "Search for System Batch Files (BAT)", "*.BAT", TextFilter},
    {"Backup Files (BAK)", "Search for Backup Files (BAK)", "*.BAK", TextFilter},
    {"System Configuration (SYS)", "Seach for System Configuration Files (SYS) ", "*.SYS", TextFilter},
    {"LOG Files (LOG)", "Search for LOG Files (LOG)", "*.LOG", TextFilter},
    {"DOS Files (DOS)", "Search for DOS Files (DOS)", "*.DOS", TextFilter},
    {"Message Files (MSG)", "Search for Message Files (MSG)", "*.MSG", TextFilter},
    {"Program Initialization (INI)", "Search for Program Initialization Files (INI)", "*.INI", TextFilter},
    {"All Text File Types (TXT,RTF,HTM,HTML)", "Search for all Text File Types (TXT,RTF,HTM,HTML)",
     "*.TXT;*.RTF;*.HTM;*.HTML", TextFilter},
    {"Basic System File Types (SYS,DOS,BAT)", "Search for Basic System File Types (SYS,DOS,BAT)",
     "*.SYS;*.BAT;*.BAK;*.DOS", TextFilter},
    {"Miscellaneous System Files (INI,URL,MSG,LOG)", "Search for Miscellaneous System Files (INI,URL,MSG,LOG)",
     "*.INI;*.URL;*.MSG;*.LOG", TextFilter},
    {"All Document Types (DOC,WRI,WPS)", "Search for all Document Types (DOC,WRI,WPS)", "*.DOC;*.WRI;*.WPS",
     TextFilter},
};

constexpr SearchChoice DatabaseChoices[] = {
    {"DBase Files (DBF)", "Search for DBase Database Files (DBF)", "*.DBF", DatabaseFilter},
    {"Paradox Files (DB)", "Search for Paradox Database Files (DB)", "*.DB", DatabaseFilter},
    {"Access Files (MDB)", "Search for Access Database Files (MDB)", "*.MDB", DatabaseFilter},
    {"Excel Files (XLS)", "Search for Excel Spread Sheet Files (XLS)", "*.XLS", DatabaseFilter},
    {"Lotus Files (WK4)", "Search for Lotus Spread Sheet Files (WK4)", "*.WK4", DatabaseFilter},
    {"Spread Sheet Files (XLS,WK4)", "Search for Spread Sheet Files (XLS,WK4)", "*.XLS;*.WK4", DatabaseFilter},
    {"Database (DBF,DB,MDB)", "Search for Database Files (DBF,DB,MDB)", "*.DBF;*.DB;*.MDB", DatabaseFilter},
    {"All of the Above Files (DBF,DB,MDB,XLS,WK4)", "Search for all Database and Spread Sheet Files (DBF,DB,MDB,XLS,WK4)",
     "*.DBF;*.DB;*.MDB;*.XLS;*.WK4", DatabaseFilter},
};

// The all-text row has "*LOG" without its dot, so it finds any name that
// ends in LOG; its tooltips "Seach" are spelt as users know them.
constexpr SearchChoice MiscChoices[] = {
    {"All Picture Files", "Seach for any of the Picture File Format Types at once",
     "*.JPG;*.CMP;*.TIFF;*.TIF;*.MPT;*.BMP;*.ICO;*.CUR;*.PCX;*.DCX;*.PCD;*.FPX;*.DIC;*.WMF;*.EMF;*.DXF;*.XPM;*.IFF;"
     "*.PBM;*.CUT;*.PSD;*.PNG;*.TGA;*.EPS;*.JBG;*.RAS;*.WPG;*.PCT;*.MAC;*.IMG;*.MSP",
     AllPicturesFilter},
    {"All Multimedia Files", "Search for all the Multimedia Files (AVI,MPG,MOV,MID,RMI,MP3,M3U,WAV)",
     "*.WAV;*.MID;*.RMI;*.MP3;*.M3U;*.AVI;*.MPG;*.MOV", AllMultimediaFilter},
    {"All Text Files", "Seach for all the Text Files at once on the Text File Search Tab",
     "*.TXT;*.RTF;*.INI;*LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.URL;*.MSG", TextFilter},
    {"All Database Files", "Search for all the Database File Types (DBF,DB,MDB,XLS,WK4)", "*.DBF;*.DB;*.MDB;*.XLS;*.WK4",
     DatabaseFilter},
    {"Zip Files", "Search for all the Zip Files (*.Zip)", "*.ZIP", ZipFilter},
    {"Find File or Global Search Entered Below:",
     "Search for a File you enter here, or Global Search for a file extension type, or all file types with a given "
     "name.",
     nullptr, -1},
};

const std::array<SearchTabTable, SearchTabCount> Tabs = {{
    {SearchTab::Pictures, "Pictures", "RDPICT", PictureChoices},
    {SearchTab::MultiMedia, "MultiMedia", "RDMEDIA", MediaChoices},
    {SearchTab::Text, "Text", "RDTEXT", TextChoices},
    {SearchTab::Database, "Database", "RDDATA", DatabaseChoices},
    {SearchTab::Miscellaneous, "Miscellaneous", "RDMISC", MiscChoices},
}};

} // namespace

const std::array<SearchTabTable, SearchTabCount> &searchTabs()
{
    return Tabs;
}

const SearchTabTable &searchTab(SearchTab tab)
{
    return Tabs[size_t(tab)];
}

std::optional<SearchTab> searchTabByCaption(const QString &caption)
{
    for (const SearchTabTable &table : Tabs) {
        if (caption == QLatin1String(table.caption))
            return table.tab;
    }
    return std::nullopt;
}

std::optional<PatternChoice> choosePattern(SearchTab tab, int chosenIndex, bool buttonSet, const QString &typedName)
{
    const SearchTabTable &table = searchTab(tab);
    if (!buttonSet || chosenIndex < 0 || chosenIndex >= int(table.choices.size()))
        return std::nullopt;
    const SearchChoice &choice = table.choices[size_t(chosenIndex)];
    PatternChoice result;
    if (choice.pattern) {
        result.pattern = QLatin1String(choice.pattern);
    } else {
        if (typedName == QLatin1String(" "))
            return std::nullopt;
        result.pattern = typedName;
    }
    result.filterIndex = choice.filterIndex;
    result.frameCaption = QStringLiteral("Selected: ") + QLatin1String(choice.caption);
    return result;
}

} // namespace tarnby::search
