#include "core/organizer/BatchAdd.h"

#include "core/catalogue/FileCatalogue.h"

namespace tarnby::organizer {

GroupRow groupMadeOnTheFly(const QString &name, const TimeStamp &stamp)
{
    GroupRow g;
    g.GroupName = name;
    g.GroupDesc = name + QStringLiteral(" Description");
    g.Date = stamp.StampDate;
    g.Time = stamp.StampTime;
    g.DateTimeCreated = stamp.StampDateTime;
    g.DateDisp = stamp.StampDisplay;
    return g;
}

QList<FileEntry> batchEntries(const QString &groupName, const QString &folder, const QStringList &names,
                              const TimeStamp &stamp)
{
    QList<FileEntry> rows;
    rows.reserve(names.size());
    const QString keyword = folderKeyword(folder);
    for (const QString &name : names) {
        FileEntry e;
        e.GroupName = groupName;
        e.FileName = name;
        e.FileLocation = folder;
        e.FileDescription = name + QStringLiteral(" Description");
        e.FileType = catalogue::GetFileCategoryName(name);
        e.FileKeyword = keyword;
        fileDateFields(entryFullName(folder, name), &e.Date, &e.Time);
        e.DateTimeCreated = stamp.StampDateTime;
        e.DateDisp = stamp.StampDisplay;
        rows << e;
    }
    return rows;
}

FileEntry entryForFile(const QString &groupName, const QString &fullName)
{
    const SplitName split = splitFullName(fullName);
    FileEntry e;
    e.GroupName = groupName;
    e.FileName = split.fileName;
    e.FileLocation = split.folder;
    e.FileDescription = QStringLiteral("Description of ") + split.fileName;
    e.FileKeyword = folderKeyword(split.folder);
    e.FileType = catalogue::GetFileCategoryName(split.fileName);
    return e;
}

} // namespace tarnby::organizer
