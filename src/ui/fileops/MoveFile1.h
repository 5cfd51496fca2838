#pragma once

#include "ui/fileops/FileCommandDialog.h"

namespace tarnby::ui {

// Confirms and carries out the move of source to target (the path chosen in
// the move command's save dialog). Label1 names the target, File1
// lists the files that will move (a database takes its companions along). OK
// moves, reports "File Moved to - " and the target, and closes; a refused move
// is reported and the dialog closes without changing anything. Run with exec().
class MoveFile1 : public FileCommandDialog
{
    Q_OBJECT
public:
    MoveFile1(const QString &source, const QString &target, AppState &state, UiServices &services,
              QWidget *parent = nullptr);

    // The new path of the file after a successful move.
    QString movedPath() const { return m_movedPath; }

private:
    void okClicked() override;

    QString m_source;
    QString m_target;
    QString m_movedPath;
};

} // namespace tarnby::ui
