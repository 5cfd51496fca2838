#pragma once

#include <QDialog>

class QComboBox;
class QFileSystemModel;
class QListWidget;
class QTreeView;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Create List of Preset Folders for Quick Location": edits the list of
// working folders, each with the browser filter to set again when the folder
// is chosen. Drive1 lists the mounted filesystems, Dir1 the folders of the
// chosen one, File1 the files of the folder that match the pattern of the
// filter chosen in CMBFILTER. OK writes the list file and emits
// foldersSaved(); Cancel stores nothing.
class SetFoldr1 : public QDialog
{
    Q_OBJECT
public:
    // startFolder: the browser's current folder (Dir1 and Drive1 start there).
    SetFoldr1(AppState &state, UiServices &services, const QString &startFolder, QWidget *parent = nullptr);

    QString currentFolder() const;
    void setCurrentFolder(const QString &path);
    // The pattern File1 lists by.
    QString filePattern() const { return m_pattern; }
    QStringList listLines() const;

    // The buttons' work.
    void addFolder();     // RightBtn
    void removeFolder();  // LefttBtn
    void moveUp();        // UpBtn
    void moveDown();      // DownBtn
    void clearList();     // ClearBtn
    bool save();          // OKBtn; true when written

signals:
    void foldersSaved();
    void helpRequested();

private:
    void setDrive(const QString &root);
    void setPattern(int filterIndex);
    void refreshFiles();

    AppState &m_state;
    UiServices &m_services;
    QComboBox *m_drive = nullptr;
    QTreeView *m_dir = nullptr;
    QFileSystemModel *m_dirModel = nullptr;
    QListWidget *m_files = nullptr;
    QComboBox *m_filter = nullptr;
    QListWidget *m_list = nullptr;
    QString m_folder;
    QString m_pattern;
};

} // namespace tarnby::ui
