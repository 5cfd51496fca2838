#include "core/platform/files/NoReplace.h"

#include <QFile>
#include <QFileInfo>

#include <cerrno>
#include <cstdio>
#include <cstring>
#include <fcntl.h>

namespace tarnby::files {

Result failure(Outcome outcome, const QString &path, const QString &why)
{
    Result r;
    r.outcome = outcome;
    r.path = path;
    r.errorString = why;
    return r;
}

bool taken(const QString &path)
{
    const QFileInfo info(path);
    return info.exists() || info.isSymLink();
}

Result moveWithoutOverwrite(const QString &from, const QString &to)
{
    const QFileInfo source(from);
    if (!source.isFile())
        return failure(Outcome::SourceMissing, from);
    if (taken(to))
        return failure(Outcome::TargetExists, to);

    const QByteArray fromName = QFile::encodeName(from);
    const QByteArray toName = QFile::encodeName(to);
    if (::renameat2(AT_FDCWD, fromName.constData(), AT_FDCWD, toName.constData(), RENAME_NOREPLACE) == 0)
        return {};
    const int error = errno;
    if (error == EEXIST)
        return failure(Outcome::TargetExists, to);
    // Another filesystem, or one that cannot rename without replacing: copy,
    // then remove the source; the copy goes again when the source stays.
    if (error != EXDEV && error != EINVAL && error != ENOSYS)
        return failure(Outcome::Failed, to, QString::fromLocal8Bit(std::strerror(error)));
    Result copied = copyWithoutOverwrite(from, to);
    if (!copied.ok())
        return copied;
    QFile original(from);
    if (!original.remove()) {
        const QString why = original.errorString();
        QFile::remove(to);
        return failure(Outcome::Failed, from, why);
    }
    return {};
}

Result copyWithoutOverwrite(const QString &from, const QString &to)
{
    const QFileInfo sourceInfo(from);
    if (!sourceInfo.isFile())
        return failure(Outcome::SourceMissing, from);
    if (taken(to))
        return failure(Outcome::TargetExists, to);

    QFile source(from);
    if (!source.open(QIODevice::ReadOnly))
        return failure(Outcome::Failed, from, source.errorString());
    // NewOnly is O_EXCL: the check and the creation are one step, so a file
    // that appears meanwhile is not replaced either.
    QFile target(to);
    if (!target.open(QIODevice::WriteOnly | QIODevice::NewOnly)) {
        if (taken(to))
            return failure(Outcome::TargetExists, to);
        return failure(Outcome::Failed, to, target.errorString());
    }

    auto abandon = [&](const QString &why) {
        target.close();
        target.remove();
        return failure(Outcome::Failed, to, why);
    };
    QByteArray buffer(1 << 16, Qt::Uninitialized);
    for (;;) {
        const qint64 n = source.read(buffer.data(), buffer.size());
        if (n < 0)
            return abandon(source.errorString());
        if (n == 0)
            break;
        if (target.write(buffer.constData(), n) != n)
            return abandon(target.errorString());
    }
    if (!target.flush())
        return abandon(target.errorString());
    target.setPermissions(sourceInfo.permissions());
    target.setFileTime(sourceInfo.lastModified(), QFileDevice::FileModificationTime);
    target.close();
    if (target.error() != QFileDevice::NoError)
        return abandon(target.errorString());
    return {};
}

} // namespace tarnby::files
