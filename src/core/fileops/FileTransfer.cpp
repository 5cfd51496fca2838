#include "core/fileops/FileTransfer.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>

namespace tarnby {

TransferResult transferFiles(const QStringList &sources, const QString &targetFolder, TransferMode mode)
{
    TransferResult result;
    const QFileInfo target(targetFolder);
    if (!target.isDir()) {
        for (const QString &source : sources)
            result.failed.append(source + QLatin1String(" - the target folder does not exist"));
        return result;
    }
    const QString targetCanonical = target.canonicalFilePath();
    for (const QString &source : sources) {
        const QFileInfo info(source);
        if (!info.exists() && !info.isSymLink()) {
            result.failed.append(source + QLatin1String(" - the file no longer exists"));
            continue;
        }
        if (info.absoluteDir().canonicalPath() == targetCanonical)
            continue; // dropped where it already is
        const QString destination = QDir(targetFolder).filePath(info.fileName());
        if (QFileInfo::exists(destination) || QFileInfo(destination).isSymLink()) {
            result.failed.append(source + QLatin1String(" - a file of that name exists in ") + targetFolder);
            continue;
        }
        if (info.isDir() && !info.isSymLink()) {
            const QString canonical = info.canonicalFilePath();
            if (mode == TransferMode::Copy) {
                result.failed.append(source + QLatin1String(" - folders are not copied"));
            } else if (targetCanonical == canonical || targetCanonical.startsWith(canonical + QLatin1Char('/'))) {
                result.failed.append(source + QLatin1String(" - a folder cannot move into itself"));
            } else if (QDir().rename(source, destination)) {
                result.done.append(destination);
            } else {
                result.failed.append(source + QLatin1String(" - the folder could not be moved"));
            }
            continue;
        }
        bool ok = false;
        if (mode == TransferMode::Move) {
            // rename() copies and removes by itself across filesystems.
            QFile file(source);
            ok = file.rename(destination);
            if (!ok)
                result.failed.append(source + QLatin1String(" - ") + file.errorString());
        } else {
            QFile file(source);
            ok = file.copy(destination);
            if (!ok)
                result.failed.append(source + QLatin1String(" - ") + file.errorString());
        }
        if (ok)
            result.done.append(destination);
    }
    return result;
}

} // namespace tarnby
