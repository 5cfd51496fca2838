#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// The drives of the browser: the mounted filesystems a user can browse, the
// network mounts that the "Network Neighborhood" node holds, and the home
// folder. Reading the mount table never touches the mounted filesystems, so a
// dead network mount cannot hang the browser while it builds its roots.
namespace tarnby {

struct MountEntry {
    QString device;
    QString mountPoint;
    QString type;
};

enum class MountKind { Local, Network, Pseudo };

// Parses the text of /proc/self/mounts (fields separated by blanks, with
// blanks, tabs and backslashes inside a field written as octal escapes).
// Malformed lines are skipped.
QList<MountEntry> parseMountTable(const QByteArray &text);

// Local disk, network share, or a kernel/system filesystem the user has no use
// for (proc, sysfs, cgroup, tmpfs below /run, snap images, ...). "/" is always
// local whatever its type, so a system running from an overlay still has a
// root.
MountKind classifyMount(const MountEntry &entry);

// The host a network mount comes from: "//host/share" and "host:/export" give
// "host", "user@host:/path" gives "host"; empty when the device names none.
QString networkHost(const MountEntry &entry);

struct FolderRoots {
    QStringList volumes;           // local mount points, "/" first, then by path
    QList<MountEntry> network;     // network mounts, by mount point
    QString home;                  // the user's home folder
};

// Sorts a mount table into roots. Mount points that appear twice are kept once.
FolderRoots rootsFromMounts(const QList<MountEntry> &mounts, const QString &home);

// The roots of this machine, from /proc/self/mounts and the home folder.
// Local mount points that are not folders (files bound into a container) are
// dropped; network mounts are not touched.
FolderRoots systemRoots();

} // namespace tarnby
