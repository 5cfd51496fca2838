#include "core/platform/archive/ZipExtract.h"

#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QList>
#include <QSet>
#include <QStringList>

#include <archive.h>
#include <archive_entry.h>

#include <memory>

#include <unistd.h>

namespace tarnby::archive {

namespace {

struct ReaderDeleter {
    void operator()(struct archive *a) const { archive_read_free(a); }
};
using Reader = std::unique_ptr<struct archive, ReaderDeleter>;

// The central directory is the archive's own table of contents, so it is read
// first. Archives with junk before them or a broken directory are read entry
// by entry from the front instead, as other unzip programs do.
enum class ReadMode { Directory, Stream };

Reader openReader(const QString &zipPath, ReadMode mode, QString *error)
{
    Reader reader(archive_read_new());
    if (mode == ReadMode::Directory)
        archive_read_support_format_zip_seekable(reader.get());
    else
        archive_read_support_format_zip_streamable(reader.get());
    if (archive_read_open_filename(reader.get(), QFile::encodeName(zipPath).constData(), 64 * 1024) != ARCHIVE_OK) {
        *error = QString::fromLocal8Bit(archive_error_string(reader.get()));
        return {};
    }
    return reader;
}

QString lastError(struct archive *a)
{
    const char *text = archive_error_string(a);
    return text ? QString::fromLocal8Bit(text) : QStringLiteral("unknown error");
}

// Entry names are UTF-8 when the archive says so; older archives carry names in
// some code page, which we show as best we can rather than refuse.
QString entryName(struct archive_entry *entry)
{
    if (const char *utf8 = archive_entry_pathname_utf8(entry))
        return QString::fromUtf8(utf8);
    if (const char *raw = archive_entry_pathname(entry))
        return QString::fromLocal8Bit(raw);
    return QString();
}

QString linkTarget(struct archive_entry *entry)
{
    if (const char *utf8 = archive_entry_symlink_utf8(entry))
        return QString::fromUtf8(utf8);
    if (const char *raw = archive_entry_symlink(entry))
        return QString::fromLocal8Bit(raw);
    return QString();
}

bool hasDriveLetter(const QString &name)
{
    return name.size() >= 2 && name.at(1) == QLatin1Char(':') && name.at(0).isLetter();
}

// The components of an entry name. Names made on Windows may use "\" between
// folders, so both separators split. Empty and "." components drop out.
QStringList components(const QString &name)
{
    QString unified = name;
    unified.replace(QLatin1Char('\\'), QLatin1Char('/'));
    QStringList parts;
    for (const QString &part : unified.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        if (part != QLatin1String("."))
            parts << part;
    }
    return parts;
}

// Why a name would leave the target folder, or empty when it stays inside.
QString nameProblem(const QString &name)
{
    if (name.isEmpty())
        return QStringLiteral("has no name");
    if (name.startsWith(QLatin1Char('/')) || name.startsWith(QLatin1Char('\\')))
        return QStringLiteral("has an absolute path");
    if (hasDriveLetter(name))
        return QStringLiteral("names a drive");
    const QStringList parts = components(name);
    if (parts.isEmpty())
        return QStringLiteral("has no name");
    if (parts.contains(QLatin1String("..")))
        return QStringLiteral("climbs out of its folder with \"..\"");
    return QString();
}

struct Entry {
    QString name;     // as written in the archive
    QString relative; // cleaned, "/"-separated
    mode_t type = 0;
    QString link;     // link target for symbolic links
};

QString prefixOf(const QStringList &parts, qsizetype count)
{
    return QStringList(parts.mid(0, count)).join(QLatin1Char('/'));
}

// Resolves a link's target against the link's own folder, by name alone, and
// says why it would leave the target folder. Passing through another link of
// the archive is refused too: by name alone we could not tell where that goes.
QString linkProblem(const Entry &entry, const QSet<QString> &links)
{
    if (entry.link.isEmpty())
        return QStringLiteral("is a link to nothing");
    if (entry.link.startsWith(QLatin1Char('/')) || entry.link.startsWith(QLatin1Char('\\')))
        return QStringLiteral("is a link to an absolute path");
    if (hasDriveLetter(entry.link))
        return QStringLiteral("is a link to a drive");
    QStringList resolved = components(entry.relative);
    resolved.removeLast();
    for (const QString &part : components(entry.link)) {
        if (part == QLatin1String("..")) {
            if (resolved.isEmpty())
                return QStringLiteral("is a link that points outside the folder");
            resolved.removeLast();
        } else {
            resolved << part;
        }
        if (links.contains(resolved.join(QLatin1Char('/'))))
            return QStringLiteral("is a link that leads through another link");
    }
    return QString();
}

struct Examination {
    ExtractResult result;
    QList<Entry> entries;
    ReadMode mode = ReadMode::Directory;
};

ExtractResult refuse(Status status, const QString &entry, const QString &why)
{
    ExtractResult r;
    r.status = status;
    r.entry = entry;
    r.errorString = why;
    return r;
}

Examination examineAs(const QString &zipPath, const Limits &limits, ReadMode mode)
{
    Examination ex;
    ex.mode = mode;
    QString error;
    Reader reader = openReader(zipPath, mode, &error);
    if (!reader) {
        ex.result = refuse(Status::Damaged, QString(), error);
        return ex;
    }

    QSet<QString> files;
    QSet<QString> folders;
    QSet<QString> links;
    qint64 total = 0;
    struct archive_entry *header = nullptr;
    for (;;) {
        const int rc = archive_read_next_header(reader.get(), &header);
        if (rc == ARCHIVE_EOF)
            break;
        if (rc < ARCHIVE_WARN) {
            ex.result = refuse(Status::Damaged, ex.entries.isEmpty() ? QString() : ex.entries.constLast().name,
                               lastError(reader.get()));
            return ex;
        }
        Entry entry;
        entry.name = entryName(header);
        entry.type = archive_entry_filetype(header);

        if (qint64(ex.entries.size()) + 1 > limits.maxEntries) {
            ex.result = refuse(Status::TooLarge, entry.name,
                               QStringLiteral("The archive holds more than %1 entries.").arg(limits.maxEntries));
            return ex;
        }
        const QString problem = nameProblem(entry.name);
        if (!problem.isEmpty()) {
            ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry %1.").arg(problem));
            return ex;
        }
        entry.relative = components(entry.name).join(QLatin1Char('/'));
        if (archive_entry_hardlink(header)) {
            ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry is a hard link."));
            return ex;
        }
        if (entry.type != AE_IFREG && entry.type != AE_IFDIR && entry.type != AE_IFLNK) {
            ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry is a device or a pipe, not a file."));
            return ex;
        }
        if (archive_entry_is_encrypted(header)) {
            ex.result = refuse(Status::Encrypted, entry.name, QStringLiteral("The entry is protected by a password."));
            return ex;
        }
        if (entry.type == AE_IFREG || entry.type == AE_IFLNK) {
            if (files.contains(entry.relative) || folders.contains(entry.relative) || links.contains(entry.relative)) {
                ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry appears twice in the archive."));
                return ex;
            }
            (entry.type == AE_IFLNK ? links : files).insert(entry.relative);
        } else {
            if (files.contains(entry.relative) || links.contains(entry.relative)) {
                ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry appears twice in the archive."));
                return ex;
            }
            folders.insert(entry.relative);
        }
        if (entry.type == AE_IFLNK)
            entry.link = linkTarget(header);
        if (archive_entry_size_is_set(header) && entry.type == AE_IFREG) {
            total += qMax<qint64>(0, archive_entry_size(header));
            if (total > limits.maxTotalBytes) {
                ex.result = refuse(Status::TooLarge, entry.name,
                                   QStringLiteral("The archive would unpack to more than %1 bytes.").arg(limits.maxTotalBytes));
                return ex;
            }
        }
        ex.entries.append(entry);
    }

    // Links are judged once every name is known, since a link may lead through
    // one that comes later; so is any entry written below a link.
    for (const Entry &entry : std::as_const(ex.entries)) {
        if (entry.type == AE_IFLNK) {
            const QString problem = linkProblem(entry, links);
            if (!problem.isEmpty()) {
                ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry %1.").arg(problem));
                return ex;
            }
        }
        const QStringList parts = components(entry.relative);
        for (qsizetype n = 1; n < parts.size(); ++n) {
            if (links.contains(prefixOf(parts, n))) {
                ex.result = refuse(Status::Unsafe, entry.name, QStringLiteral("The entry would be written through a link."));
                return ex;
            }
        }
    }

    const qint64 packed = QFileInfo(zipPath).size();
    if (total > limits.ratioFloor && total > limits.maxRatio * qMax<qint64>(packed, 1)) {
        ex.result = refuse(Status::TooLarge, QString(),
                           QStringLiteral("The archive would grow from %1 to %2 bytes.").arg(packed).arg(total));
        return ex;
    }
    ex.result.entryCount = int(ex.entries.size());
    ex.result.totalBytes = total;
    return ex;
}

// An archive with no entries is its end record alone, which libarchive does
// not recognise as an archive at all.
bool isEmptyArchive(const QString &zipPath)
{
    QFile file(zipPath);
    return file.open(QIODevice::ReadOnly) && file.read(4) == QByteArray("PK\x05\x06", 4);
}

Examination examine(const QString &zipPath, const Limits &limits)
{
    if (isEmptyArchive(zipPath))
        return {};
    Examination ex = examineAs(zipPath, limits, ReadMode::Directory);
    // A directory that shows nothing, or cannot be read, in a file that holds
    // more than an end record cannot be trusted: read from the front instead.
    const bool nothingFound = ex.entries.isEmpty();
    if ((ex.result.status == Status::Damaged || ex.result.ok()) && nothingFound)
        return examineAs(zipPath, limits, ReadMode::Stream);
    return ex;
}

QString joinPath(const QString &folder, const QString &relative)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + relative : folder + QLatin1Char('/') + relative;
}

// Unpacks every entry; the caller removes the folder when this fails.
ExtractResult unpack(const QString &zipPath, const QString &targetFolder, const Examination &ex, const Limits &limits)
{
    ExtractResult result = ex.result;
    if (ex.entries.isEmpty())
        return result;
    QString error;
    Reader reader = openReader(zipPath, ex.mode, &error);
    if (!reader)
        return refuse(Status::Damaged, QString(), error);

    const QDir target(targetFolder);
    const qint64 packed = qMax<qint64>(QFileInfo(zipPath).size(), 1);
    qint64 written = 0;
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    struct archive_entry *header = nullptr;
    for (const Entry &entry : ex.entries) {
        // The second pass must see the same entries as the first; an archive
        // that changes under us is treated as damaged.
        const int rc = archive_read_next_header(reader.get(), &header);
        if (rc < ARCHIVE_WARN || rc == ARCHIVE_EOF || entryName(header) != entry.name)
            return refuse(Status::Damaged, entry.name, rc == ARCHIVE_EOF ? QStringLiteral("The archive ended early.")
                                                                         : lastError(reader.get()));
        const QString path = joinPath(targetFolder, entry.relative);
        const QString parent = QFileInfo(path).path();
        if (!target.mkpath(parent))
            return refuse(Status::Failed, entry.name, QStringLiteral("The folder %1 cannot be created.").arg(parent));

        if (entry.type == AE_IFDIR) {
            if (!target.mkpath(path))
                return refuse(Status::Failed, entry.name, QStringLiteral("The folder %1 cannot be created.").arg(path));
            continue;
        }
        if (entry.type == AE_IFLNK) {
            if (::symlink(QFile::encodeName(entry.link).constData(), QFile::encodeName(path).constData()) != 0)
                return refuse(Status::Failed, entry.name, QStringLiteral("The link %1 cannot be created.").arg(path));
            continue;
        }

        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return refuse(Status::Failed, entry.name, file.errorString());
        for (;;) {
            const la_ssize_t n = archive_read_data(reader.get(), buffer.data(), size_t(buffer.size()));
            if (n < 0)
                return refuse(Status::Damaged, entry.name, lastError(reader.get()));
            if (n == 0)
                break;
            // Sizes in the directory may lie, or be missing when the archive
            // is read from the front: count what really comes out.
            written += n;
            if (written > limits.maxTotalBytes)
                return refuse(Status::TooLarge, entry.name,
                              QStringLiteral("The archive would unpack to more than %1 bytes.").arg(limits.maxTotalBytes));
            if (written > limits.ratioFloor && written > limits.maxRatio * packed)
                return refuse(Status::TooLarge, entry.name,
                              QStringLiteral("The archive would grow from %1 to more than %2 bytes.").arg(packed).arg(written));
            if (file.write(buffer.constData(), n) != n)
                return refuse(Status::Failed, entry.name, file.errorString());
        }
        if (archive_entry_mtime_is_set(header))
            file.setFileTime(QDateTime::fromSecsSinceEpoch(archive_entry_mtime(header)), QFileDevice::FileModificationTime);
        if (archive_entry_perm(header) & 0100)
            file.setPermissions(file.permissions() | QFileDevice::ExeOwner | QFileDevice::ExeUser);
        file.close();
        if (file.error() != QFileDevice::NoError)
            return refuse(Status::Failed, entry.name, file.errorString());
    }
    result.totalBytes = written;
    return result;
}

} // namespace

QString unzipTargetFolder(const QString &zipPath)
{
    const QFileInfo info(zipPath);
    const QString name = info.fileName();
    return joinPath(info.absolutePath(), name.left(qMax<qsizetype>(0, name.size() - 4)).toUpper());
}

ExtractResult checkArchive(const QString &zipPath, const Limits &limits)
{
    return examine(zipPath, limits).result;
}

ExtractResult extractArchive(const QString &zipPath, const QString &targetFolder, const Limits &limits)
{
    const QFileInfo folderInfo(targetFolder);
    if (folderInfo.exists() || folderInfo.isSymLink())
        return refuse(Status::TargetExists, QString(), QStringLiteral("The folder %1 already exists.").arg(targetFolder));

    const Examination ex = examine(zipPath, limits);
    if (!ex.result.ok())
        return ex.result;

    if (!QDir().mkdir(targetFolder)) {
        if (QFileInfo::exists(targetFolder))
            return refuse(Status::TargetExists, QString(), QStringLiteral("The folder %1 already exists.").arg(targetFolder));
        return refuse(Status::Failed, QString(), QStringLiteral("The folder %1 cannot be created.").arg(targetFolder));
    }
    ExtractResult result = unpack(zipPath, targetFolder, ex, limits);
    if (!result.ok()) {
        // The folder is ours, made a moment ago: nothing else can be in it.
        // removeRecursively() deletes links, never what they point to.
        QDir(targetFolder).removeRecursively();
        result.entryCount = ex.result.entryCount;
    }
    return result;
}

} // namespace tarnby::archive
