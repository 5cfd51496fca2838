#pragma once

#include "core/settings/ProgramOptions.h"

#include <QDialog>

#include <array>

class QCheckBox;
class QComboBox;
class QLabel;
class QLineEdit;
class QRadioButton;
class QSlider;
class QSpinBox;
class QTabWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Set Tarnby Control Options": the program options on five tabs (general
// look, thumbnails, search, table browser, e-mail). The window edits a copy of
// state.options; OK checks the four bounded fields in a fixed order and, when
// they pass, stores the copy and writes the options files. Cancel stores
// nothing.
//
// Control names: the text boxes are the control array "Text1_N" (N as below),
// the option groups "RDMENU_N" (N = 0 to 4, the stored menu style) and
// "RDBROWTYPE_N" (0 inset "I", 1 raised "R", 2 flat "F"):
//   Text1_0 thumbnail height   Text1_1 thumbnail width   Text1_2 web site
//   Text1_3 from address       Text1_4 initial search    Text1_5 next search
//   Text1_6 separator percent  Text1_7..9 to addresses
// The mail account fields: TxtSmtpHost, TxtSmtpPort, CMBSMTPSECURITY,
// TxtSmtpUser, TxtSmtpPassword, CMBINPROTOCOL, TxtInHost, TxtInPort,
// CMBINSECURITY, TxtInUser, TxtInPassword, LblKeyring. Passwords go to the
// desktop keyring only; a keyring failure is reported through the message
// service after the window has closed, and nothing else is written.
class SetOptns1 : public QDialog
{
    Q_OBJECT
public:
    SetOptns1(AppState &state, UiServices &services, QWidget *parent = nullptr);

    // The OK button's work; true when the options were stored and written.
    bool store();

    // The keyring timeout of this window's password jobs (tests shorten it).
    void setKeyringTimeout(int ms) { m_keyringTimeoutMs = ms; }

signals:
    void helpRequested();
    // The password jobs started by OK have all answered (or timed out).
    void keyringFinished();

private:
    void fill();
    void chooseAddressBook();
    void loadPasswords();
    void savePasswords();
    bool refuse(const QString &message, QWidget *tab, QLineEdit *field);

    AppState &m_state;
    UiServices &m_services;
    settings::ProgramOptions m_edit;
    int m_keyringTimeoutMs = 10000;

    QTabWidget *m_tabs = nullptr;
    QWidget *m_generalTab = nullptr;
    QWidget *m_thumbTab = nullptr;
    QWidget *m_searchTab = nullptr;
    QWidget *m_tableTab = nullptr;
    QWidget *m_mailTab = nullptr;
    std::array<QLineEdit *, 10> m_text{};
    std::array<QRadioButton *, 5> m_menuStyle{};
    std::array<QRadioButton *, 3> m_browseType{};
    QCheckBox *m_useTextDoc = nullptr;
    QCheckBox *m_bold = nullptr;
    QCheckBox *m_grid = nullptr;
    QSlider *m_rowHeight = nullptr;
    QComboBox *m_thumbBits = nullptr;
    QLineEdit *m_addressBook = nullptr;
    QLineEdit *m_smtpHost = nullptr;
    QSpinBox *m_smtpPort = nullptr;
    QComboBox *m_smtpSecurity = nullptr;
    QLineEdit *m_smtpUser = nullptr;
    QLineEdit *m_smtpPassword = nullptr;
    QComboBox *m_inProtocol = nullptr;
    QLineEdit *m_inHost = nullptr;
    QSpinBox *m_inPort = nullptr;
    QComboBox *m_inSecurity = nullptr;
    QLineEdit *m_inUser = nullptr;
    QLineEdit *m_inPassword = nullptr;
    QLabel *m_keyringLabel = nullptr;
};

} // namespace tarnby::ui
