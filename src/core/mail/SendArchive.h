#pragma once

#include "core/platform/archive/ZipWrite.h"

#include <QString>
#include <QStringList>

// The zip archive of a send: all the files to send, in list order, in one
// archive beside the first of them.
namespace tarnby::mail {

// The archive's path: the first file's path with its extension (from the
// last "." of its name) replaced by ".Zip"; a name without a dot gets ".Zip"
// added. "/home/a/Beach.jpg" gives "/home/a/Beach.Zip".
QString sendArchivePath(const QString &firstFile);

// The archive's entries: each file under its own name, no folders; a name
// that an earlier file already took is numbered ("photo (2).jpg") so that
// unpacking never puts one file over another.
QList<archive::ZipItem> sendArchiveItems(const QStringList &files);

// Makes the archive of files at sendArchivePath(files.first()), replacing an
// old archive of that name.
struct SendArchiveResult {
    archive::ZipWriteResult result;
    QString path;
};
SendArchiveResult makeSendArchive(const QStringList &files, const archive::ZipProgress &progress = {});

} // namespace tarnby::mail
