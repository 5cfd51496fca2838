#pragma once

#include <QString>

// The desktop's trash (the freedesktop.org trash on Linux): deleting a file so
// that the user can take it back from the desktop's trash window.
//
// Synchronous; any thread. Moving into the trash is a rename on the file's own
// filesystem (a copy only where the desktop's trash lives elsewhere).
namespace tarnby::trash {

struct TrashResult {
    bool ok = false;
    QString pathInTrash;  // where the file went (…/Trash/files/name)
    QString errorString;
};

// Moves path into the trash, with the record of where it came from beside it.
// Fails, leaving the file in place, where no trash can be used (a filesystem
// without one, a trash folder that cannot be created).
TrashResult moveToTrash(const QString &path);

struct RestoreResult {
    bool ok = false;
    QString restoredPath;
    QString errorString;
};

// The original path recorded for a file in the trash, empty when there is no
// readable record.
QString originalPath(const QString &pathInTrash);

// Puts a trashed file back where it came from and drops its record, as the
// desktop's "Restore" does. Refuses to replace a file that has taken its place.
RestoreResult restore(const QString &pathInTrash);

} // namespace tarnby::trash
