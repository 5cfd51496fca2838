#pragma once

#include <QByteArray>
#include <QFile>
#include <QList>
#include <QString>

#include <utility>

#include <archive.h>
#include <archive_entry.h>

struct ZipEntry {
    ZipEntry(QByteArray name, QByteArray data = {}, bool folder = false, QByteArray link = {}, bool sizeInHeader = true)
        : name(std::move(name)), data(std::move(data)), folder(folder), link(std::move(link)), sizeInHeader(sizeInHeader)
    {
    }
    ZipEntry() = default;

    QByteArray name;
    QByteArray data;
    bool folder = false;
    QByteArray link; // a symbolic link's target; non-empty makes the entry a link
    bool sizeInHeader = true; // false: the size follows the data, as streaming archivers write it
};

// Writes a ZIP archive entry by entry, names exactly as given: the hostile
// archives of these tests cannot come from a well-behaved archiver.
inline bool writeZip(const QString &path, const QList<ZipEntry> &entries)
{
    struct archive *a = archive_write_new();
    archive_write_set_format_zip(a);
    bool ok = archive_write_open_filename(a, QFile::encodeName(path).constData()) == ARCHIVE_OK;
    for (const ZipEntry &e : entries) {
        if (!ok)
            break;
        struct archive_entry *entry = archive_entry_new();
        archive_entry_set_pathname(entry, e.name.constData());
        if (!e.link.isEmpty()) {
            archive_entry_set_filetype(entry, AE_IFLNK);
            archive_entry_set_symlink(entry, e.link.constData());
            archive_entry_set_perm(entry, 0777);
        } else if (e.folder) {
            archive_entry_set_filetype(entry, AE_IFDIR);
            archive_entry_set_perm(entry, 0755);
        } else {
            archive_entry_set_filetype(entry, AE_IFREG);
            archive_entry_set_perm(entry, 0644);
            if (e.sizeInHeader)
                archive_entry_set_size(entry, e.data.size());
        }
        ok = archive_write_header(a, entry) == ARCHIVE_OK;
        if (ok && !e.data.isEmpty())
            ok = archive_write_data(a, e.data.constData(), size_t(e.data.size())) == e.data.size();
        archive_entry_free(entry);
    }
    ok = archive_write_close(a) == ARCHIVE_OK && ok;
    archive_write_free(a);
    return ok;
}
