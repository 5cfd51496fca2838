#include "ReaderSupport.h"

#include <QDir>
#include <QFile>

namespace tarnby::tables {

QString companionFile(const QFileInfo &table, const QString &extension)
{
    const QString base = table.completeBaseName();
    const QDir dir = table.absoluteDir();
    const QString wanted = base + QLatin1Char('.') + extension;
    const QString exact = dir.filePath(wanted);
    if (QFileInfo(exact).isFile())
        return exact;
    const QStringList candidates = dir.entryList(QDir::Files);
    for (const QString &candidate : candidates) {
        if (candidate.compare(wanted, Qt::CaseInsensitive) == 0)
            return dir.filePath(candidate);
    }
    return {};
}

std::unique_ptr<QIODevice> openForReading(const QString &path)
{
    if (path.isEmpty())
        return nullptr;
    auto file = std::make_unique<QFile>(path);
    if (!file->open(QIODevice::ReadOnly))
        return nullptr;
    return file;
}

QByteArray readExactly(QIODevice &device, qint64 offset, qint64 length)
{
    if (offset < 0 || length < 0 || offset > device.size() - length || !device.seek(offset))
        return {};
    QByteArray bytes = device.read(length);
    return bytes.size() == length ? bytes : QByteArray();
}

} // namespace tarnby::tables
