#include "core/browser/NewFolder.h"

#include <QDir>
#include <QFileInfo>

namespace tarnby {

QString freeFolderName(const QString &parent)
{
    const QDir dir(parent);
    const QString base = QStringLiteral("New Folder");
    if (!QFileInfo::exists(dir.filePath(base)))
        return base;
    for (int n = 2; n < 10000; ++n) {
        const QString name = base + QLatin1Char(' ') + QString::number(n);
        if (!QFileInfo::exists(dir.filePath(name)))
            return name;
    }
    return base;
}

NewFolderResult makeFolder(const QString &parent, const QString &name)
{
    using Outcome = NewFolderResult::Outcome;
    const QString trimmed = name.trimmed();
    const QString path = QDir(parent).filePath(trimmed);
    if (trimmed.isEmpty())
        return {Outcome::EmptyName, parent};
    if (trimmed.contains(QLatin1Char('/')) || trimmed == QLatin1String(".") || trimmed == QLatin1String(".."))
        return {Outcome::InvalidName, trimmed};
    // A dangling link counts as taken too: exists() would follow it.
    if (QFileInfo::exists(path) || QFileInfo(path).isSymLink())
        return {Outcome::Exists, path};
    if (!QDir(parent).mkdir(trimmed))
        return {Outcome::Failed, path};
    return {Outcome::Made, path};
}

} // namespace tarnby
