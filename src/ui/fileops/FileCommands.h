#pragma once

#include <QObject>
#include <QPointer>
#include <QString>
#include <QUrl>

#include <functional>

class QWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::imaging {
struct Picture;
}

namespace tarnby::fileops {
struct Step;
}

namespace tarnby::ui {

struct UiServices;
class AudioVideo1;

// The file commands that the browser and the document windows share: delete
// to the trash, move, rename, save as, open with the desktop's application,
// the unzip offer and playing sound and video. Each asks through the dialog
// and message services and reports through them; after a change on disk it
// emits filesChanged() so that the browser refreshes its lists, and names the
// files it moved or removed (fileMoved(), fileRemoved()) so that the document
// windows showing them follow.
//
// Nothing is ever replaced without the user saying so: moves, renames, copies
// and unzipping refuse an existing target, and only the picture save, after
// the save dialog's own question, writes over a file.
class FileCommands : public QObject
{
    Q_OBJECT
public:
    FileCommands(AppState &state, UiServices &services, QWidget *window);

    // Asks, then moves the file to the desktop's trash. Where it cannot be
    // trashed, says so and asks before deleting it for good.
    void DeleteFile(const QString &path);
    // Asks for the target in a save dialog, then confirms in MoveFile1 (modal).
    void MoveFile(const QString &path, const QString &extension);
    // Asks for the new name in Rename1 (modal).
    void RenameFile(const QString &path);
    // Works on state.currentFile: a picture is saved in the format of the new
    // name's extension (keeping its bits per pixel), any other file copied.
    void SaveFileAs();
    // The same for a document window that shows the picture itself (perhaps
    // edited, perhaps from the Internet): shown is what gets saved.
    void SaveFileAs(const imaging::Picture &shown);
    // Works on state.currentFile: hands it to the desktop's default application.
    void OpenwithOLE();
    // Asks, then unpacks the archive into a new folder named after it, on a
    // worker thread; unzipFinished() follows (and filesChanged() on success).
    void offerUnzip(const QString &zipPath);
    // Plays path in the player window (one window, reused).
    void play(const QString &path);

    AudioVideo1 *player() const; // null until the first play()

    // How OpenwithOLE reaches the desktop; QDesktopServices::openUrl unless a
    // test says otherwise.
    void setUrlOpener(std::function<bool(const QUrl &)> opener) { m_openUrl = std::move(opener); }

signals:
    void filesChanged();
    // One for every file a rename or move carried from one path to another
    // (a database's companions too), before filesChanged(). Absolute paths.
    void fileMoved(const QString &from, const QString &to);
    // The file went to the trash or was deleted (absolute path), before
    // filesChanged().
    void fileRemoved(const QString &path);
    void unzipFinished(bool ok);

private:
    void saveAs(const imaging::Picture *shown);
    void reportMoves(const QList<fileops::Step> &steps);
    void reportRemoved(const QString &path);
    QString saveDialogFilter(const QString &extension) const;

    AppState &m_state;
    UiServices &m_services;
    QWidget *m_window;
    QPointer<AudioVideo1> m_player;
    std::function<bool(const QUrl &)> m_openUrl;
};

} // namespace tarnby::ui
