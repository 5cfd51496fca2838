#pragma once

#include <QString>

// Moving and copying one file without ever replacing what is at the target:
// the system's rename that refuses an existing name, with a copy where the
// rename cannot cross filesystems. The file operations and the trash both
// build on it.
//
// Synchronous; any thread. Touches only the two paths it is given.
namespace tarnby::files {

// What a file operation came to. The moves and copies here end in Done,
// SourceMissing, TargetExists or Failed; the two name outcomes come from
// planning a rename (core/fileops), which shares this result.
enum class Outcome {
    Done,
    EmptyName,     // the new name is empty after trimming
    InvalidName,   // the new name holds a "/" or is "." or ".."
    SourceMissing, // the file to work on is not there (or is not a file)
    TargetExists,  // a file of the new name is already there
    Failed,        // the file system refused; errorString says why
};

struct Result {
    Outcome outcome = Outcome::Done;
    QString path;        // the file the outcome is about (the existing target, the file that failed)
    QString errorString; // the system's reason when outcome is Failed
    bool ok() const { return outcome == Outcome::Done; }
};

// The result of an operation that did not happen, for the reason outcome.
Result failure(Outcome outcome, const QString &path, const QString &why = QString());

// True when anything is at path, a dangling link included: replacing a link
// would be as silent as replacing a file.
bool taken(const QString &path);

// Moves one file; fails with TargetExists rather than replace anything. Within
// one filesystem this is an atomic rename; across filesystems a copy followed
// by removing the source (the copy is removed again if the source cannot be).
Result moveWithoutOverwrite(const QString &from, const QString &to);

// Copies one regular file byte for byte, with its permissions and modification
// time; fails with TargetExists rather than replace anything. A failed copy
// leaves no partial file behind.
Result copyWithoutOverwrite(const QString &from, const QString &to);

} // namespace tarnby::files
