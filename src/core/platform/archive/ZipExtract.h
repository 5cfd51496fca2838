#pragma once

#include <QString>

// Unpacking a ZIP archive into a new folder, safely.
//
// Every entry is examined before anything is written: an archive with an entry
// that would land outside the target folder (a ".." component, an absolute
// name, a drive letter, a link that points out or through another link), a
// hard link, a device, or an absurd unpacked size or entry count is refused as
// a whole and nothing is created. An archive that turns out to be damaged
// while unpacking leaves nothing behind: the new folder is removed again.
//
// Synchronous; callable from any thread (each call opens its own reader).
// Cost: one pass over the central directory, then the decompression.
namespace tarnby::archive {

// What counts as absurd. The defaults let real archives through and stop
// bombs; tests lower them.
struct Limits {
    qint64 maxEntries = 50000;
    qint64 maxTotalBytes = 4LL * 1024 * 1024 * 1024; // unpacked
    // An archive that unpacks to more than ratioFloor bytes may not grow by
    // more than maxRatio over its own size.
    qint64 maxRatio = 1000;
    qint64 ratioFloor = 64LL * 1024 * 1024;
};

enum class Status {
    Ok,
    TargetExists, // the target folder is already there: nothing unpacked
    Unsafe,       // an entry would land outside the target: nothing unpacked
    TooLarge,     // too many entries or too many bytes: nothing kept
    Encrypted,    // an entry needs a password: nothing unpacked
    Damaged,      // the archive cannot be read: nothing kept
    Failed,       // the file system refused (folder or file not created): nothing kept
};

struct ExtractResult {
    Status status = Status::Ok;
    QString entry;       // the entry refused, or being unpacked when it failed
    QString errorString; // a sentence saying what went wrong
    int entryCount = 0;  // entries in the archive (when the examination got that far)
    qint64 totalBytes = 0; // unpacked bytes announced by the archive
    bool ok() const { return status == Status::Ok; }
};

// The folder an archive unpacks into: the archive's folder plus its file name
// without the last four characters (".zip"), upper-cased. /home/a/Photos.zip
// gives /home/a/PHOTOS.
QString unzipTargetFolder(const QString &zipPath);

// Examines every entry without writing anything.
ExtractResult checkArchive(const QString &zipPath, const Limits &limits = {});

// Examines the archive, then creates targetFolder (which must not exist; its
// parent must) and unpacks every entry into it.
ExtractResult extractArchive(const QString &zipPath, const QString &targetFolder, const Limits &limits = {});

} // namespace tarnby::archive
