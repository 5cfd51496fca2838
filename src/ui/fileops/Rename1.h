#pragma once

#include "ui/fileops/FileCommandDialog.h"

class QLineEdit;

namespace tarnby::ui {

// Asks for a new name for one file and renames it (with its companion files
// when it is a database). Label1 shows the file, Text1 takes the new name
// (without extension: the extension cannot change), File1 lists the folder's
// files so that the user sees the names already taken. OK renames and closes;
// a refused name is reported and the dialog stays open. Run with exec().
class Rename1 : public FileCommandDialog
{
    Q_OBJECT
public:
    Rename1(const QString &path, AppState &state, UiServices &services, QWidget *parent = nullptr);

    // The new path of the file after a successful rename.
    QString renamedPath() const { return m_renamedPath; }

private:
    void okClicked() override;
    void fillFileList();

    QString m_path;
    QString m_renamedPath;
    QLineEdit *m_text = nullptr;
};

} // namespace tarnby::ui
