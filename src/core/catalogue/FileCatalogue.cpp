#include "core/catalogue/FileCatalogue.h"

#include <QRegularExpression>

namespace tarnby::catalogue {

const std::array<const char *, KnownExtensionCount> KnownExtensionTable = {
    // 0-33 pictures
    "JPG", "JPE", "CMP", "TIFF", "TIF", "MPT", "BMP", "ICO", "CUR", "PCX",
    "DCX", "PCD", "FPX", "AWD", "WMF", "EMF", "DXF", "XPM", "IFF", "PBM",
    "CUT", "PSD", "PNG", "TGA", "EPS", "JBG", "RAS", "WPG", "PCT", "CLP",
    "XWD", "FLC", "ANI", "SGI",
    // 34-41 sound, music and video
    "WAV", "MID", "RMI", "AVI", "MPG", "MOV", "MP3", "M3U",
    // 42-44 one-bit pictures, filed with the multimedia band
    "MAC", "IMG", "MSP",
    // 45-63 text and documents; DAT and CDA belong here on purpose
    "TXT", "RTF", "INI", "LOG", "BAT", "BAK", "DOS", "SYS", "DOC", "WPS",
    "WDB", "WRI", "LST", "HTM", "HTML", "URL", "MSG", "DAT", "CDA",
    // 64-70 databases and tables; ASX and ZIP belong here on purpose
    "DBF", "DB", "MDB", "XLS", "WK4", "ASX", "ZIP",
};

// The two long picture lists name DIC (not a known extension), leave out AWD
// and carry "*.XWP" where the table has XWD. Entry 35 ends at MAC. All of this
// is how the lists have always read; users' saved folder filters depend on the
// positions and the browser starts on entry 35.
#define TARNBY_PICTURE_PATTERNS                                                                    \
    "*.JPG;*.JPE;*.CMP;*.TIFF;*.TIF;*.MPT;*.BMP;*.ICO;*.CUR;*.PCX;*.DCX;*.PCD;*.FPX;*.DIC;*.WMF;"  \
    "*.EMF;*.DXF;*.XPM;*.IFF;*.PBM;*.CUT;*.PSD;*.PNG;*.TGA;*.EPS;*.JBG;*.RAS;*.WPG;*.PCT;*.CLP;"   \
    "*.XWP;*.FLC;*.ANI;*.SGI"

const std::array<const char *, FilterCount> FilterDescriptions = {
    "JPEG and LEAD Compressed (JPG and CMP)",
    "TIFF Formats",
    "BMP Formats",
    "Icons and Cursors",
    "PCX Formats",
    "Kodak Formats (PCD And FPX)",
    "Microsoft Fax Format (AWD)",
    "Exif Formats (TIFF And JPG)",
    "Windows MetaFile Formats (WMF and EMF)",
    "Drawing Interchange Format (DXF)",
    "XPicMap (XPM)",
    "Interchange Format (IFF)",
    "Portable Bitmap Utilities (PBM)",
    "Dr.Halo (CUT)",
    "Photoshop 3.0 Format (PSD)",
    "Portable Network Graphics Format (PNG)",
    "Truevision TARGA Format (TGA)",
    "Encapsulated PostScript (EPS)",
    "JBIG Format (JBG)",
    "SUN Raster Format (RAS)",
    "WorkPerfect Format (WPG)",
    "Macintosh Pict Format (PCT)",
    "Microsoft Windows Clipboard (CLP)",
    "X Window Dump (XWD)",
    "Flic Animation (FLC)",
    "Windows Animated Cursor (ANI)",
    "Silicon Graphics Image (SGI)",
    "Wave Files (WAV)",
    "MIDI Files (MID, RMI)",
    "Audio-Video (AVI, MPG, MOV)",
    "Music Files (MP3,MIDI)",
    "Miscellaneous",
    "All Picture Files",
    "CD Player Files",
    "All MultiMedia Files",
    "All Image and MultiMedia Files",
    "Text Files (TXT,RTF,INI,LOG,BAT,BAK,DOS,SYS,DOC,WPS,WDB,WRI,LST,HTM,HTML,URL,MSG)",
    "Database Files (DBase,Paradox,Access,Excel,Lotus)",
    "Zip Files (*.Zip)",
    "All Files (*.*)",
};

const std::array<const char *, FilterCount> FilterPatterns = {
    "*.JPG;*.JPE;*.CMP",
    "*.TIFF;*.TIF;*.MPT",
    "*.BMP",
    "*.ICO;*.CUR",
    "*.PCX;*.DCX",
    "*.PCD;*.FPX",
    "*.AWD",
    "*.TIFF;*.TIF;*.JPG",
    "*.WMF;*.EMF",
    "*.DXF",
    "*.XPM",
    "*.IFF",
    "*.PBM",
    "*.CUT",
    "*.PSD",
    "*.PNG",
    "*.TGA",
    "*.EPS",
    "*.JBG",
    "*.RAS",
    "*.WPG",
    "*.PCT",
    "*.CLP",
    "*.XWD",
    "*.FLC",
    "*.ANI",
    "*.SGI",
    "*.WAV",
    "*.MID;*.RMI",
    "*.AVI;*.MPG;*.MOV",
    "*.MID;*.RMI;*.MP3;*.M3U",
    "*.MAC;*.IMG;*.MSP",
    TARNBY_PICTURE_PATTERNS ";*.MAC;*.IMG;*.MSP",
    "*.CDA;*.DAT",
    "*.WAV;*.MID;*.RMI;*.MP3;*.M3U;*.AVI;*.MPG;*.MOV",
    TARNBY_PICTURE_PATTERNS ";*.WAV;*.MID;*.RMI;*.AVI;*.MPG;*.MOV;*.MP3;*.M3U;*.MAC",
    "*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;*.HTM;*.HTML;*.URL;*.MSG",
    "*.DBF;*.DB;*.MDB;*.XLS;*.WK4",
    "*.ZIP",
    "*.*",
};

#undef TARNBY_PICTURE_PATTERNS

int knownExtensionIndex(const QString &ext)
{
    if (ext.isEmpty())
        return NotFound;
    for (int i = 0; i < KnownExtensionCount; ++i) {
        if (ext == QLatin1String(KnownExtensionTable[i]))
            return i;
    }
    return NotFound;
}

QString GetFileExt(const QString &name)
{
    // Callers pass full paths as often as bare names; a dot in a folder's name
    // is not the file's extension.
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot < 0 || dot < name.lastIndexOf(QLatin1Char('/')))
        return {};
    return name.mid(dot + 1).toUpper();
}

FileType GetFileTypeFlag(const QString &name)
{
    FileType type;
    type.extension = GetFileExt(name);
    type.index = knownExtensionIndex(type.extension);
    type.textFile = type.index >= FirstTextIndex && type.index <= LastTextIndex;
    type.databaseFile = type.index >= FirstDatabaseIndex && type.index <= LastDatabaseIndex;
    return type;
}

QString GetFileCategoryName(const QString &name)
{
    const QString ext = GetFileExt(name);
    const int i = knownExtensionIndex(ext);

    // The rules overlap at 34 and 45; each later rule wins.
    QString category = QStringLiteral("Miscellaneous");
    if (i >= 0 && i <= 34)
        category = QStringLiteral("Picture");
    if (i >= 34 && i <= 45)
        category = QStringLiteral("Multimedia");
    if (i >= 45 && i <= 63)
        category = QStringLiteral("Document");
    if (i >= 64 && i <= 70)
        category = QStringLiteral("Database");
    if (ext == QLatin1String("SYS") || ext == QLatin1String("INI") || ext == QLatin1String("BAT")
        || ext == QLatin1String("DOS"))
        category = QStringLiteral("System");
    if (ext == QLatin1String("WAV"))
        category = QStringLiteral("Multimedia");
    return category;
}

int GetSaveFormatCode(const QString &extension)
{
    struct Row {
        const char *ext;
        int code;
    };
    // PBM shares the PNG code 75 and DCX the PCX code 1; both are intended.
    static constexpr Row rows[] = {
        {"CMP", 5},   {"JPG", 10},  {"JPE", 10},  {"TIFF", 3},  {"TIF", 3},   {"MPT", 3},
        {"BMP", 6},   {"ICO", 91},  {"CUR", 92},  {"PCX", 1},   {"DCX", 1},   {"PCD", 57},
        {"FPX", 80},  {"PNG", 75},  {"EPS", 16},  {"SGI", 142}, {"MSP", 53},  {"DIC", 90},
        {"WMF", 15},  {"EMF", 116}, {"DXF", 58},  {"XPM", 109}, {"IFF", 112}, {"PBM", 75},
        {"CUT", 108}, {"PSD", 76},  {"TGA", 4},   {"JBG", 115}, {"MAC", 51},  {"RAS", 55},
        {"WPG", 54},  {"PCT", 56},  {"CLP", 114}, {"XWD", 113}, {"FLC", 134}, {"ANI", 119},
        {"DRW", 136}, {"CGM", 62},  {"PLT", 137}, {"DGN", 124}, {"IMG", 52},
    };
    const QString ext = extension.toUpper();
    int code = 0;
    for (const Row &row : rows) {
        if (ext == QLatin1String(row.ext))
            code = row.code;
    }
    return code;
}

namespace {
const char PictureDialogHalf[] =
    "JPeg and Lead Compressed|*.JPG;*.JPE;*.CMP|TIFF Formats|*.TIFF;*.TIF;*.MPT|Bitmap Files|*.BMP|"
    "Icons and Cursor FIles|*.ICO;*.CUR|PCX Formats|*.PCX;*.DCX|Kodak Formats|*.PCD;*.FPX|"
    "Microsoft Fax Format|*.AWD|Windows MetaFiles|*.WMF;*.EMF|Drawing Interchange Format|*.DXF|"
    "XPicMap|*.XPM|Interchange Format|*.IFF|Portable Bitmap Utilities|*.PBM|Dr.Halo|*.CUT|"
    "Photoshop 3.0 Format|*.PSD|Portable Network Graphics|*.PNG|Truevision TARGA|*.TGA|"
    "Encapsulated PostScript|*.EPS|JBIG Format|*.JBG|SUN Raster Format|*.RAS|"
    "WordPerfect Format|*.WPG|Macintosh Pict Format|*.PCT|Microsoft Windows Clipboard|*.CLP|"
    "X Window Dump|*.XWD|Flic Animation|*.FLC|Windows Animated Cursor|*.ANI|"
    "Micrografx Drawing|*.DRW|Computer Graphics Metafile|*.CGM|Hewlett Packard HPGL|*.PLT|"
    "Intergraph DGN|*.DGN|Silicon Graphics Image|*.SGI";

const char SoundToDatabaseHalf[] =
    "Sounds/Wave Files|*.WAV|MIDI Files|*.MID;*.RMI|Audio/Video Files|*.AVI;*.MPG;*.MOV|"
    "Music Files|*.MP3;*.M3U|Miscellaneous 1-Bit Formats|*.MAC;*.IMG;*.MSP|"
    "Text Files|*.TXT;*.RTF;*.INI;*.LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;"
    "*.HTM;*.HTML;*.URL;*.MSG|Database Files|*.DBF;*.DB;*.MDB;*.XLS;*.WK4";
} // namespace

QString openDialogFilter()
{
    return QLatin1String(PictureDialogHalf) + QLatin1Char('|') + QLatin1String(SoundToDatabaseHalf);
}

QString pictureDialogFilter()
{
    return QLatin1String(PictureDialogHalf)
        + QLatin1String("|Miscellaneous 1-Bit Formats|*.MAC;*.IMG;*.MSP");
}

QStringList splitPattern(const QString &pattern)
{
    return pattern.split(QLatin1Char(';'), Qt::SkipEmptyParts);
}

WildcardFilter::WildcardFilter(const QString &pattern)
    : m_pattern(pattern)
{
    const QStringList parts = splitPattern(pattern);
    for (const QString &part : parts) {
        if (part == QLatin1String("*.*") || part == QLatin1String("*")) {
            m_matchesAll = true;
            continue;
        }
        m_parts.append(QRegularExpression(
            QRegularExpression::wildcardToRegularExpression(part, QRegularExpression::DefaultWildcardConversion),
            QRegularExpression::CaseInsensitiveOption));
    }
}

bool WildcardFilter::matches(const QString &fileName) const
{
    if (m_matchesAll)
        return true;
    for (const QRegularExpression &re : m_parts) {
        if (re.match(fileName).hasMatch())
            return true;
    }
    return false;
}

bool matchesPattern(const QString &fileName, const QString &pattern)
{
    return WildcardFilter(pattern).matches(fileName);
}

QString dialogFilterToQt(const QString &dialogFilter)
{
    const QStringList fields = dialogFilter.split(QLatin1Char('|'));
    QStringList entries;
    for (qsizetype i = 0; i + 1 < fields.size(); i += 2) {
        QStringList globs;
        for (const QString &part : splitPattern(fields.at(i + 1))) {
            globs << part;
            if (part.toLower() != part)
                globs << part.toLower();
        }
        entries << fields.at(i).trimmed() + QLatin1String(" (") + globs.join(QLatin1Char(' ')) + QLatin1Char(')');
    }
    return entries.join(QLatin1String(";;"));
}

} // namespace tarnby::catalogue
