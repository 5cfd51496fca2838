#pragma once

#include <QObject>
#include <QString>

class QWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The file commands that the browser and the document windows share: delete
// to the trash, move, rename, save as, open with the desktop's application,
// the unzip offer and playing sound and video. Each asks through the dialog
// and message services and reports through them; after a change on disk it
// emits filesChanged() so that the browser refreshes its lists.
class FileCommands : public QObject
{
    Q_OBJECT
public:
    FileCommands(AppState &state, UiServices &services, QWidget *window);

    void DeleteFile(const QString &path);
    void MoveFile(const QString &path, const QString &extension);
    void RenameFile(const QString &path);
    void SaveFileAs();      // works on state.currentFile
    void OpenwithOLE();     // works on state.currentFile
    void offerUnzip(const QString &zipPath);
    void play(const QString &path);

signals:
    void filesChanged();

private:
    void notYetAvailable(const QString &what);

    AppState &m_state;
    UiServices &m_services;
    QWidget *m_window;
};

} // namespace tarnby::ui
