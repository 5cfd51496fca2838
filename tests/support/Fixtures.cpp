#include "Fixtures.h"

#include <QDir>
#include <QFileInfo>

namespace fixtures {

QString root()
{
    const QString configured = qEnvironmentVariable("TARNBY_FIXTURES");
    if (!configured.isEmpty() && QFileInfo(configured).isDir())
        return QDir(configured).absolutePath();
    return {};
}

QString path(const QString &relative)
{
    return QDir(root()).filePath(relative);
}

QStringList files(const QString &folder, const QStringList &nameFilters)
{
    QStringList out;
    const QDir dir(path(folder));
    for (const QString &name : dir.entryList(nameFilters, QDir::Files, QDir::Name))
        out << dir.filePath(name);
    return out;
}

} // namespace fixtures
