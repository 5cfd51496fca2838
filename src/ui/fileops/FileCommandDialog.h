#pragma once

#include "core/fileops/FileOperations.h"

#include <QDialog>
#include <QList>

class QLabel;
class QListWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The frame that the rename and move dialogs share: a modal dialog in the
// program's colours with Label1 (wrapped) at the top, File1 (a list to read,
// not to pick from) and the OK, Cancel and Help row below. Cancel rejects,
// Help opens the help window and OK calls okClicked().
class FileCommandDialog : public QDialog
{
    Q_OBJECT
public:
    // Every file the accepted command renamed or moved, the companions of a
    // database included; empty until OK succeeds.
    const QList<fileops::Step> &doneSteps() const { return m_doneSteps; }

protected:
    FileCommandDialog(const QString &objectName, const QString &title, const QString &labelText, AppState &state,
                      UiServices &services, QWidget *parent);

    // Makes File1 and the buttons and lays the dialog out: Label1, the
    // widgets of between from top to bottom, File1, the buttons. The derived
    // constructor calls it once, after making the widgets of between, so that
    // the focus moves through the dialog in the order it is shown.
    void addFileListAndButtons(const QList<QWidget *> &between = {});

    virtual void okClicked() = 0;

    AppState &m_state;
    UiServices &m_services;
    QLabel *m_label = nullptr;
    QListWidget *m_files = nullptr;
    QList<fileops::Step> m_doneSteps;
};

} // namespace tarnby::ui
