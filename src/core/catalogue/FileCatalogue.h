#pragma once

#include <QString>
#include <QList>
#include <QRegularExpression>
#include <QStringList>

#include <array>

// The catalogue of file types that every decision about a file rests on: which
// window opens it, which commands apply, which browser filter lists it, which
// format a picture is saved in and which category the organizer records.
//
// All lookups work on upper-case extensions without the dot and are pure; they
// are safe to call from any thread.
namespace tarnby::catalogue {

inline constexpr int KnownExtensionCount = 71;
inline constexpr int NotFound = 71; // the index a lookup gives for an unknown or empty extension
inline constexpr int FilterCount = 40;
inline constexpr int StartupFilterIndex = 35; // "All Image and MultiMedia Files"

// Index bands of KnownExtensionTable.
inline constexpr int LastPictureIndex = 33;
inline constexpr int FirstTextIndex = 45;
inline constexpr int LastTextIndex = 63;
inline constexpr int FirstDatabaseIndex = 64;
inline constexpr int LastDatabaseIndex = 70;

// The 71 known extensions. Their position decides the category, so the order
// matters: DAT and CDA sit among the documents, ASX and ZIP among the databases,
// and the one-bit picture formats MAC, IMG and MSP with the multimedia band.
extern const std::array<const char *, KnownExtensionCount> KnownExtensionTable;

// The browser's filter box: descriptions and wildcard patterns, index by index.
extern const std::array<const char *, FilterCount> FilterDescriptions;
extern const std::array<const char *, FilterCount> FilterPatterns;

// Index of ext (upper case, no dot) in KnownExtensionTable, NotFound when absent.
int knownExtensionIndex(const QString &ext);

// The text after the last "." of name, upper-cased; empty when name holds no
// dot or ends in one. Only the last dot counts, and only a dot in the file
// name itself: for "/home/a.b/readme" the extension is empty.
QString GetFileExt(const QString &name);

// What GetFileTypeFlag learns about one name.
struct FileType {
    QString extension;        // GetFileExt(name)
    int index = NotFound;     // position in KnownExtensionTable
    bool textFile = false;    // index 45 to 63
    bool databaseFile = false; // index 64 to 70

    bool known() const { return index != NotFound; }
};

// Classifies name: the extension, its index and the two flags (both false for
// an unknown or empty extension).
FileType GetFileTypeFlag(const QString &name);

// "Picture", "Multimedia", "Document", "Database", "System" or "Miscellaneous".
// The bands here differ from the flag bands on purpose: pictures end at 33 and
// the multimedia band runs from 34 to 44.
QString GetFileCategoryName(const QString &name);

// The picture-file format number for a save under an extension (upper or lower
// case, no dot); 0 when the extension is not a picture format we save.
int GetSaveFormatCode(const QString &ext);

// The dialog filter strings of the open-file dialogs ("description|patterns|...").
// openDialogFilter() serves the browser, the frame and the document window;
// pictureDialogFilter() is the picture-only list used when picking pictures.
QString openDialogFilter();
QString pictureDialogFilter();

// Splits a ";"-separated wildcard pattern into its parts, dropping empty parts.
QStringList splitPattern(const QString &pattern);

// A compiled ";"-separated wildcard pattern. Matching is case-insensitive
// (photo.jpg matches "*.JPG") and each part is used as written, so "*.XWP"
// matches no X Window Dump and "*LOG" matches any name that ends in LOG.
// "*.*" matches every name, with or without a dot, as users expect of it.
// Build one per filter change, then call matches() per file: it is cheap.
class WildcardFilter
{
public:
    explicit WildcardFilter(const QString &pattern = QStringLiteral("*.*"));
    bool matches(const QString &fileName) const;
    const QString &pattern() const { return m_pattern; }

private:
    QString m_pattern;
    bool m_matchesAll = false;
    QList<QRegularExpression> m_parts;
};

// One-off convenience for WildcardFilter(pattern).matches(fileName).
bool matchesPattern(const QString &fileName, const QString &pattern);

// Converts a dialog filter string ("description|patterns|description|...")
// into the ";;"-separated form of Qt's file dialogs. Each pattern appears in
// upper and lower case, since file names on Linux are case-sensitive.
QString dialogFilterToQt(const QString &dialogFilter);

} // namespace tarnby::catalogue
