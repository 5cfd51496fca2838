#pragma once

#include <QString>
#include <QStringList>

#include <array>
#include <optional>

// The list of preset working folders, kept in "FoldFile.INI" in the program
// folder: one entry a line, each the folder's full path, " (", the position of
// the browser filter chosen for it (from 0) and ")", for example
// "/home/ann/Pictures (0)". The file has no other shape: a list of such lines
// in list order, an empty list written as one empty line.
namespace tarnby::settings {

inline const QString WorkingFoldersFileName = QStringLiteral("FoldFile.INI");

// The most entries a read takes. The list is for quick location and is edited
// by hand in the working folders window; a file with more lines is not one.
inline constexpr int MaxWorkingFolders = 1000;

struct WorkingFoldersRead {
    bool found = false;
    QStringList lines;       // every line as it stands, in file order
    QString stoppedBecause;  // empty when reading ran to the end of the file
};

// Reads the list: every line as it stands until the end of the file. A
// missing file gives an empty list; reading stops at the first line that is
// not text, and the lines before it are kept.
WorkingFoldersRead readWorkingFolders(const QString &folder);

// Writes the list anew, one line an entry, or one empty line for an empty
// list; atomically. False with a whole sentence in *error.
bool writeWorkingFolders(const QString &folder, const QStringList &lines, QString *error);

// "path (index)".
QString workingFolderLine(const QString &path, int filterIndex);

struct WorkingFolderEntry {
    QString path;
    int filterIndex = 0;
};
// Splits a line back into folder and filter position: the path is what comes
// before the last " (", the position the whole number between it and a final
// ")". Nothing for a line of another shape (the empty line of an empty list).
std::optional<WorkingFolderEntry> splitWorkingFolderLine(const QString &line);

// The working folders window's own table of 40 file patterns, indexed like
// the browser's filter list, from which its file box takes its pattern. It
// follows the browser's patterns except in two entries: 35 is a second list
// of all picture patterns (the browser's 35 adds sound and video), and the
// text entry has always read "*LOG" without its dot; that is kept, since it
// matches the same files and more ("CHANGELOG").
inline constexpr int FolderPatternCount = 40;
const std::array<QString, FolderPatternCount> &folderPatternTable();
// The pattern of all picture files, which the file box starts with.
QString allPicturesPattern();

} // namespace tarnby::settings
