#include "core/fileops/FolderWatcher.h"

#include <QDir>

namespace tarnby::fileops {

FolderWatcher::FolderWatcher(QObject *parent)
    : QObject(parent)
{
    m_timer.setSingleShot(true);
    m_timer.setInterval(DefaultIntervalMs);
    connect(&m_watcher, &QFileSystemWatcher::directoryChanged, this, &FolderWatcher::noteChange);
    connect(&m_timer, &QTimer::timeout, this, &FolderWatcher::reportDue);
}

bool FolderWatcher::setFolder(const QString &folder)
{
    const QString clean = folder.isEmpty() ? QString() : QDir::cleanPath(folder);
    m_timer.stop();
    if (clean == m_folder && isWatching())
        return true;
    if (const QStringList watched = m_watcher.directories(); !watched.isEmpty())
        m_watcher.removePaths(watched);
    m_folder = clean;
    if (clean.isEmpty())
        return false;
    return m_watcher.addPath(clean);
}

void FolderWatcher::noteChange(const QString &path)
{
    // A notification of the folder watched before may still be queued.
    if (path != m_folder)
        return;
    // The first change of a burst starts the wait; the rest ride on it.
    if (!m_timer.isActive())
        m_timer.start();
}

void FolderWatcher::reportDue()
{
    if (m_busy && m_busy()) {
        m_timer.start();
        return;
    }
    emit changed();
}

} // namespace tarnby::fileops
