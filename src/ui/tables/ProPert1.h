#pragma once

#include "core/tables/FileProperties.h"

#include <QDialog>

class QTextEdit;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

// "File Properties": shows the rows of one file (captions in the Label1
// column, values in the Label2 column, inside Frame1) and, for a database
// table, its fields in Text1. It only shows; OK and Cancel close it, Help
// opens the help. The buttons sit below what the case uses. Run with exec().
class ProPert1 : public QDialog
{
    Q_OBJECT
public:
    ProPert1(const tables::FileProperties &properties, const AppState &state, QWidget *parent = nullptr);

private:
    QTextEdit *m_text = nullptr;
};

struct UiServices;

// The browser's File Properties for the file at path: ProPert1 with what the
// file shows, or "Cannot determine File Properties for this type of File".
void showFileProperties(const QString &path, AppState &state, UiServices &services, QWidget *parent);

} // namespace tarnby::ui
