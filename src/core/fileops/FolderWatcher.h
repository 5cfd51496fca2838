#pragma once

#include <QFileSystemWatcher>
#include <QObject>
#include <QString>
#include <QTimer>

#include <functional>

namespace tarnby::fileops {

// Watches one folder for entries that anyone (this program or another) makes,
// removes, renames or changes, and reports them coalesced, so that a folder
// whose thousands of files change at once costs a handful of reports rather
// than one per file:
//
// - changed() comes one interval after the first change that follows the last
//   report; every change inside that interval rides on the same report.
// - While the busy check says yes (the consumer is still reading the folder
//   after the last report), a due report waits for another interval.
// - The folder itself going away is a change like any other; it is no longer
//   watched afterwards, until setFolder() names a folder again.
//
// Lives on the thread that made it (the GUI thread in the program); the
// operating system's notifications arrive through that thread's event loop.
class FolderWatcher : public QObject
{
    Q_OBJECT
public:
    static constexpr int DefaultIntervalMs = 300;

    explicit FolderWatcher(QObject *parent = nullptr);

    // Watches folder instead of the one before; changes of the old folder not
    // yet reported are dropped. An empty path watches nothing. Returns false
    // when the system refuses the watch (no such folder, or the user's limit
    // of watches is reached); the folder is then simply not followed.
    bool setFolder(const QString &folder);
    QString folder() const { return m_folder; }
    bool isWatching() const { return !m_watcher.directories().isEmpty(); }

    void setInterval(int milliseconds) { m_timer.setInterval(milliseconds); }
    int interval() const { return m_timer.interval(); }
    // busy() is asked when a report is due; while it answers true the report
    // waits. Without a check the report is never held.
    void setBusyCheck(std::function<bool()> busy) { m_busy = std::move(busy); }

    // True while a change waits to be reported.
    bool hasPendingChange() const { return m_timer.isActive(); }

signals:
    // The watched folder's entries changed (or the folder went away).
    void changed();

private:
    void noteChange(const QString &path);
    void reportDue();

    QFileSystemWatcher m_watcher;
    QTimer m_timer;
    QString m_folder;
    std::function<bool()> m_busy;
};

} // namespace tarnby::fileops
