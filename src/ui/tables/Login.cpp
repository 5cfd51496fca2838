#include "ui/tables/Login.h"

#include "core/app/AppState.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QFormLayout>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

Login::Login(const QString &databasePath, AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_path(databasePath)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("Login"));
    setWindowTitle(QStringLiteral("Login to Database File"));

    m_userName = new QLineEdit(this);
    m_userName->setObjectName(QStringLiteral("txtUserName"));
    m_userName->setText(qEnvironmentVariable("USER"));
    m_password = new QLineEdit(this);
    m_password->setObjectName(QStringLiteral("TxtPassword"));
    m_password->setEchoMode(QLineEdit::Password);

    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    connect(ok, &QPushButton::clicked, this, &Login::okClicked);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *fields = new QFormLayout;
    fields->addRow(QStringLiteral("&User Name:"), m_userName);
    fields->addRow(QStringLiteral("&Password:"), m_password);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    auto *layout = new QVBoxLayout(this);
    layout->addLayout(fields);
    layout->addLayout(buttons);

    // Each opening starts with an empty password and no login.
    m_password->clear();
    m_state.database.loginDone = false;
    m_password->setFocus();
    applyWindowColors(this, m_state);
}

void Login::keyPressEvent(QKeyEvent *event)
{
    if (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter) {
        okClicked();
        return;
    }
    QDialog::keyPressEvent(event);
}

void Login::okClicked()
{
    if (m_password->text().isEmpty()) {
        m_services.messages.show({QStringLiteral("Login to Database"), QStringLiteral("Invalid Password, try again!"),
                                  MessageButtons::Ok},
                                 this);
        m_password->setFocus();
        m_password->selectAll();
        return;
    }
    m_state.database.loginDone = true;
    m_state.database.password = m_password->text();
    // Opened once with the password and let go again; the table view opens
    // it for good.
    m_trialStatus = tables::openTableFile(m_path, m_state.database.password).status;
    accept();
}

} // namespace tarnby::ui
