#pragma once

#include "core/organizer/OrganizerStamp.h"
#include "core/organizer/OrganizerStore.h"

#include <QStringList>

// What the batch add writes for one folder that the search reached, shared by
// the batch window and the command line's import.
namespace tarnby::organizer {

// The group made on the fly when GroupTable is empty: the name, the name +
// " Description", and the stamp's date, time, creation moment and display.
GroupRow groupMadeOnTheFly(const QString &name, const TimeStamp &stamp);

// One entry per name, in their order: the folder as FileLocation, the name +
// " Description", the file's category, the folder's last component as the
// keyword, the file's own date and time, and the one creation stamp of the
// batch. A file that cannot be read any more keeps empty Date and Time.
QList<FileEntry> batchEntries(const QString &groupName, const QString &folder, const QStringList &names,
                              const TimeStamp &stamp);

// The entry window's new entry for the file at fullName: the name, its
// folder, "Description of " + name, the folder's last component as keyword
// and the file's category.
FileEntry entryForFile(const QString &groupName, const QString &fullName);

} // namespace tarnby::organizer
