#include "core/mail/SendArchive.h"

#include "core/mail/AttachmentNames.h"

#include <QFileInfo>
#include <QSet>

namespace tarnby::mail {

QString sendArchivePath(const QString &firstFile)
{
    const QFileInfo info(firstFile);
    const QString name = info.fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    const QString stem = dot > 0 ? name.left(dot) : name;
    return firstFile.left(firstFile.size() - name.size()) + stem + QStringLiteral(".Zip");
}

QList<archive::ZipItem> sendArchiveItems(const QStringList &files)
{
    QList<archive::ZipItem> items;
    QSet<QString> taken; // case-folded: the archive may be unpacked on a desktop that folds case
    for (const QString &file : files) {
        const QString name = QFileInfo(file).fileName();
        QString entry = name;
        for (int n = 2; taken.contains(entry.toCaseFolded()); ++n)
            entry = numberedName(name, n);
        taken.insert(entry.toCaseFolded());
        items.append({file, entry});
    }
    return items;
}

SendArchiveResult makeSendArchive(const QStringList &files, const archive::ZipProgress &progress)
{
    if (files.isEmpty())
        return {{archive::ZipStatus::Failed, QStringLiteral("There are no files to put in the archive.")}, QString()};
    const QString path = sendArchivePath(files.first());
    return {archive::writeZip(path, sendArchiveItems(files), progress), path};
}

} // namespace tarnby::mail
