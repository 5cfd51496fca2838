#pragma once

#include <QString>
#include <QStringList>

// Moving and copying files into a folder, as a drop on the folder tree does.
// Never overwrites: a name that exists in the target already is left alone and
// reported.
namespace tarnby {

enum class TransferMode { Move, Copy };

struct TransferResult {
    QStringList done;    // target paths written
    QStringList failed;  // one line per source that was not transferred: "path - reason"
    bool ok() const { return failed.isEmpty(); }
};

// Moves (rename, else copy and remove across filesystems) or copies each file
// of sources into targetFolder. A source already in targetFolder is skipped
// quietly. Folders are moved only by rename, never into themselves, and are
// not copied.
TransferResult transferFiles(const QStringList &sources, const QString &targetFolder, TransferMode mode);

} // namespace tarnby
