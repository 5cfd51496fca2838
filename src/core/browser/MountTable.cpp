#include "core/browser/MountTable.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

#include <algorithm>

namespace tarnby {

namespace {

// The kernel writes " ", "\t", "\n" and "\\" inside a field as \040, \011,
// \012 and \134.
QString unescapeField(const QByteArray &field)
{
    QByteArray out;
    out.reserve(field.size());
    for (qsizetype i = 0; i < field.size(); ++i) {
        const char c = field.at(i);
        if (c == '\\' && i + 3 < field.size()) {
            const QByteArray digits = field.mid(i + 1, 3);
            bool ok = false;
            const int value = digits.toInt(&ok, 8);
            if (ok && digits.size() == 3) {
                out.append(char(value));
                i += 3;
                continue;
            }
        }
        out.append(c);
    }
    return QString::fromUtf8(out);
}

bool isUnder(const QString &path, const QString &folder)
{
    return path == folder || path.startsWith(folder + QLatin1Char('/'));
}

} // namespace

QList<MountEntry> parseMountTable(const QByteArray &text)
{
    QList<MountEntry> entries;
    for (const QByteArray &line : text.split('\n')) {
        const QList<QByteArray> fields = line.simplified().split(' ');
        if (fields.size() < 3 || fields.at(0).isEmpty())
            continue;
        entries.append({unescapeField(fields.at(0)), unescapeField(fields.at(1)), QString::fromLatin1(fields.at(2))});
    }
    return entries;
}

MountKind classifyMount(const MountEntry &entry)
{
    if (entry.mountPoint == QLatin1String("/"))
        return MountKind::Local;

    static const QSet<QString> network = {
        QStringLiteral("nfs"),        QStringLiteral("nfs4"),        QStringLiteral("cifs"),
        QStringLiteral("smb3"),       QStringLiteral("smbfs"),       QStringLiteral("sshfs"),
        QStringLiteral("fuse.sshfs"), QStringLiteral("davfs"),       QStringLiteral("fuse.davfs2"),
        QStringLiteral("afs"),        QStringLiteral("ncpfs"),       QStringLiteral("fuse.rclone"),
        QStringLiteral("fuse.s3fs"),  QStringLiteral("glusterfs"),   QStringLiteral("ceph"),
        QStringLiteral("fuse.glusterfs"),
    };
    if (network.contains(entry.type))
        return MountKind::Network;

    static const QSet<QString> pseudo = {
        QStringLiteral("proc"),      QStringLiteral("sysfs"),      QStringLiteral("devtmpfs"),
        QStringLiteral("devpts"),    QStringLiteral("cgroup"),     QStringLiteral("cgroup2"),
        QStringLiteral("securityfs"), QStringLiteral("pstore"),    QStringLiteral("debugfs"),
        QStringLiteral("tracefs"),   QStringLiteral("configfs"),   QStringLiteral("fusectl"),
        QStringLiteral("mqueue"),    QStringLiteral("hugetlbfs"),  QStringLiteral("bpf"),
        QStringLiteral("autofs"),    QStringLiteral("binfmt_misc"), QStringLiteral("efivarfs"),
        QStringLiteral("nsfs"),      QStringLiteral("rpc_pipefs"), QStringLiteral("ramfs"),
        QStringLiteral("squashfs"),  QStringLiteral("selinuxfs"),  QStringLiteral("fuse.gvfsd-fuse"),
        QStringLiteral("fuse.portal"), QStringLiteral("overlay"),  QStringLiteral("shm"),
    };
    if (pseudo.contains(entry.type))
        return MountKind::Pseudo;

    // System areas: removable media below /run/media stay, the rest of /run
    // (and tmpfs mounts there) is the system's own bookkeeping.
    const QString &point = entry.mountPoint;
    if (isUnder(point, QStringLiteral("/run/media")))
        return MountKind::Local;
    for (const char *system : {"/proc", "/sys", "/dev", "/run", "/snap", "/var/lib/docker"}) {
        if (isUnder(point, QLatin1String(system)))
            return MountKind::Pseudo;
    }
    if (entry.type == QLatin1String("tmpfs") && point != QLatin1String("/tmp"))
        return MountKind::Pseudo;
    return MountKind::Local;
}

QString networkHost(const MountEntry &entry)
{
    QString device = entry.device;
    if (device.startsWith(QLatin1String("//"))) {
        device = device.mid(2);
        return device.left(device.indexOf(QLatin1Char('/')));
    }
    const qsizetype colon = device.indexOf(QLatin1Char(':'));
    if (colon <= 0)
        return {};
    QString host = device.left(colon);
    const qsizetype at = host.lastIndexOf(QLatin1Char('@'));
    if (at >= 0)
        host = host.mid(at + 1);
    return host;
}

FolderRoots rootsFromMounts(const QList<MountEntry> &mounts, const QString &home)
{
    FolderRoots roots;
    roots.home = home;
    QSet<QString> seen;
    for (const MountEntry &entry : mounts) {
        if (seen.contains(entry.mountPoint))
            continue;
        switch (classifyMount(entry)) {
        case MountKind::Local:
            seen.insert(entry.mountPoint);
            roots.volumes.append(entry.mountPoint);
            break;
        case MountKind::Network:
            seen.insert(entry.mountPoint);
            roots.network.append(entry);
            break;
        case MountKind::Pseudo:
            break;
        }
    }
    std::sort(roots.volumes.begin(), roots.volumes.end(), [](const QString &a, const QString &b) {
        if (a == QLatin1String("/") || b == QLatin1String("/"))
            return a == QLatin1String("/") && b != QLatin1String("/");
        return a < b;
    });
    std::sort(roots.network.begin(), roots.network.end(),
              [](const MountEntry &a, const MountEntry &b) { return a.mountPoint < b.mountPoint; });
    if (!roots.volumes.contains(QLatin1String("/")))
        roots.volumes.prepend(QStringLiteral("/"));
    return roots;
}

FolderRoots systemRoots()
{
    QFile file(QStringLiteral("/proc/self/mounts"));
    QList<MountEntry> mounts;
    // /proc files report size 0, so read until the end instead of by size.
    if (file.open(QIODevice::ReadOnly))
        mounts = parseMountTable(file.readAll());
    FolderRoots roots = rootsFromMounts(mounts, QDir::homePath());
    roots.volumes.erase(std::remove_if(roots.volumes.begin(), roots.volumes.end(),
                                       [](const QString &p) { return !QFileInfo(p).isDir(); }),
                        roots.volumes.end());
    if (roots.volumes.isEmpty())
        roots.volumes.append(QStringLiteral("/"));
    return roots;
}

} // namespace tarnby
