#pragma once

#include "core/platform/tables/TableReader.h"

#include <QDialog>

class QLineEdit;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Login to Database File": asks for the password of a protected Access
// file. OK with a password stores it for the run (in the program's state,
// never on disk), marks the login done and opens the file once with it, so
// that the table view can open it next; OK with no password says "Invalid
// Password, try again!" and stays. Cancel stores nothing. Enter anywhere in
// the window acts as OK. Run with exec().
class Login : public QDialog
{
    Q_OBJECT
public:
    Login(const QString &databasePath, AppState &state, UiServices &services, QWidget *parent = nullptr);

    // How the file answered the trial open after OK.
    tables::OpenStatus trialStatus() const { return m_trialStatus; }

protected:
    void keyPressEvent(QKeyEvent *event) override;

private:
    void okClicked();

    QString m_path;
    AppState &m_state;
    UiServices &m_services;
    QLineEdit *m_userName = nullptr;
    QLineEdit *m_password = nullptr;
    tables::OpenStatus m_trialStatus = tables::OpenStatus::Failed;
};

} // namespace tarnby::ui
