#pragma once

#include <QList>
#include <QString>

#include <functional>

// Making a ZIP archive from a list of files.
//
// Files that are compressed already (pictures such as JPEG and PNG, sound and
// video, other archives) are stored as they are: deflating them again costs
// time and gains nothing. Everything else is deflated. The archive is written
// beside its target and renamed over it only when complete, so a failed or
// cancelled run leaves no half archive behind (and an old archive of that
// name in place).
//
// Synchronous; callable from any thread. Memory: one read buffer of 1 MB,
// whatever the size of the files.
namespace tarnby::archive {

struct ZipItem {
    QString path;      // the file on disk
    QString entryName; // its name inside the archive
};

enum class ZipStatus { Ok, Cancelled, Failed };

struct ZipWriteResult {
    ZipStatus status = ZipStatus::Ok;
    QString errorString; // a whole sentence when Failed
    bool ok() const { return status == ZipStatus::Ok; }
};

// Called after every block written with the bytes of the files read so far
// and their total; returning false cancels.
using ZipProgress = std::function<bool(qint64 done, qint64 total)>;

ZipWriteResult writeZip(const QString &zipPath, const QList<ZipItem> &items, const ZipProgress &progress = {});

// Whether a file of this name is stored rather than deflated (by its
// extension, upper or lower case).
bool isCompressedAlready(const QString &fileName);

} // namespace tarnby::archive
