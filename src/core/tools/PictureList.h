#pragma once

#include <QString>
#include <QStringList>

// The list of Internet pictures: the addresses in "PictList.INI" in the
// program folder, one a line, read whole when the window opens and written
// whole when it closes. Pure list rules; no widgets.
namespace tarnby::tools {

inline constexpr const char *PictureListFileName = "PictList.INI";
// A list longer than this is not a list of addresses: the rest is not read.
inline constexpr int MaxPictureListLines = 10000;

// Every line of the file as it stands; a missing file is an empty list.
QStringList readPictureList(const QString &programFolder);
// Replaces the file with lines, CR LF ended (an empty list: an empty file).
bool writePictureList(const QString &programFolder, const QStringList &lines, QString *error);

// Adds address at the end unless its trimmed text equals one of the trimmed
// entries. Returns whether it was added.
bool addAddress(QStringList &list, const QString &address);
// Swaps the entry at row with its upper or lower neighbour; returns the row
// the entry is at afterwards (row itself at the top or bottom, or when row is
// not an entry).
int moveUp(QStringList &list, int row);
int moveDown(QStringList &list, int row);

} // namespace tarnby::tools
