#include "core/platform/trash/Trash.h"

#include "core/platform/files/NoReplace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <cctype>

namespace tarnby::trash {

namespace {

// A trashed file lives in <trash>/files/<name>; its record is
// <trash>/info/<name>.trashinfo.
QString infoFile(const QString &pathInTrash)
{
    const QFileInfo file(pathInTrash);
    const QDir filesDir = file.absoluteDir();
    return QFileInfo(filesDir.absolutePath()).absolutePath() + QStringLiteral("/info/") + file.fileName()
        + QStringLiteral(".trashinfo");
}

// A trash on another filesystem records paths relative to that filesystem's
// top folder, which holds the trash as .Trash-<uid> or .Trash/<uid>.
QString topDirectory(const QString &pathInTrash)
{
    QDir trash = QFileInfo(pathInTrash).absoluteDir(); // …/files
    trash.cdUp();                                      // the trash folder
    const QString name = trash.dirName();
    trash.cdUp();
    if (!name.startsWith(QLatin1String(".Trash-")))
        trash.cdUp(); // .Trash/<uid>
    return trash.absolutePath();
}

// Paths in the record are percent-encoded, but some programs write them as
// they are: only well-formed "%XX" sequences are decoded, so a name with a
// bare "%" survives.
QString decodeRecordedPath(const QByteArray &value)
{
    QByteArray bytes;
    bytes.reserve(value.size());
    for (qsizetype i = 0; i < value.size(); ++i) {
        const bool escape = value[i] == '%' && i + 2 < value.size() && std::isxdigit(uchar(value[i + 1]))
            && std::isxdigit(uchar(value[i + 2]));
        if (escape) {
            bytes += char(QByteArray(value.constData() + i + 1, 2).toInt(nullptr, 16));
            i += 2;
        } else {
            bytes += value[i];
        }
    }
    return QString::fromUtf8(bytes);
}

} // namespace

TrashResult moveToTrash(const QString &path)
{
    TrashResult result;
    // Qt 6.4 moves the file into "files" below the current folder when it
    // cannot make the trash folder in the user's data folder. So the trash
    // there is made first, and a trash that cannot be made stops us. (A file
    // on another filesystem may still go to that filesystem's own trash.)
    const QString home = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    const QString trashFolder = home + QStringLiteral("/Trash");
    if (home.isEmpty() || !QDir().mkpath(trashFolder + QStringLiteral("/files"))
        || !QDir().mkpath(trashFolder + QStringLiteral("/info"))) {
        result.errorString = QStringLiteral("The trash folder %1 cannot be used.").arg(trashFolder);
        return result;
    }
    QFile file(path);
    result.ok = file.moveToTrash();
    if (result.ok)
        result.pathInTrash = file.fileName(); // moveToTrash() points the QFile at its new place
    else
        result.errorString = file.errorString();
    return result;
}

QString originalPath(const QString &pathInTrash)
{
    QFile info(infoFile(pathInTrash));
    if (!info.open(QIODevice::ReadOnly | QIODevice::Text))
        return QString();
    bool inSection = false;
    while (!info.atEnd()) {
        const QByteArray line = info.readLine(64 * 1024).trimmed();
        if (line.startsWith('[')) {
            inSection = line == "[Trash Info]";
            continue;
        }
        if (!inSection || !line.startsWith("Path="))
            continue;
        const QString recorded = decodeRecordedPath(line.mid(5));
        if (recorded.isEmpty())
            return QString();
        if (recorded.startsWith(QLatin1Char('/')))
            return QDir::cleanPath(recorded);
        return QDir::cleanPath(topDirectory(pathInTrash) + QLatin1Char('/') + recorded);
    }
    return QString();
}

RestoreResult restore(const QString &pathInTrash)
{
    RestoreResult result;
    const QString original = originalPath(pathInTrash);
    if (original.isEmpty()) {
        result.errorString = QStringLiteral("The trash holds no record of where %1 came from.").arg(pathInTrash);
        return result;
    }
    const QString folder = QFileInfo(original).absolutePath();
    if (!QDir().mkpath(folder)) {
        result.errorString = QStringLiteral("The folder %1 cannot be created.").arg(folder);
        return result;
    }
    const files::Result moved = files::moveWithoutOverwrite(pathInTrash, original);
    if (!moved.ok()) {
        result.errorString = moved.outcome == files::Outcome::TargetExists
            ? QStringLiteral("A file named %1 is already there.").arg(original)
            : moved.errorString;
        return result;
    }
    QFile::remove(infoFile(pathInTrash));
    result.ok = true;
    result.restoredPath = original;
    return result;
}

} // namespace tarnby::trash
