#pragma once

#include <QDialog>

class QLineEdit;
class QListWidget;
class QPushButton;

namespace tarnby {
class AppState;
class SettingsStore;
}

namespace tarnby::ui {

struct UiServices;

// "E-Mail Names and Addresses": the address list (".MLS") shown as its file
// lines in List1, edited through the name and address boxes Text1_0 and
// Text1_1. The mode is the address dialog mode: "O" asks for a list to open
// when the window opens, "S" and "N" start with an empty list. Select hands
// the chosen entry to whoever listens to entrySelected (the sending window's
// recipients); the window stays open. Closing with changes asks whether to
// save, No being the default. store, where given, remembers the contacts
// file of OutLkBtn.
class MailAddr1 : public QDialog
{
    Q_OBJECT
public:
    MailAddr1(AppState &state, UiServices &services, SettingsStore *store, const QString &mode,
              QWidget *parent = nullptr);
    ~MailAddr1() override;

    QString listFile() const { return m_listFile; }
    bool isChanged() const { return m_changed; }
    QStringList entries() const;

    // The buttons' and list's work.
    bool chooseListFile(bool save); // the file dialog; false when cancelled
    void readList();
    bool writeList();               // SaveBtn
    void addEntry();                // AddBtn
    void deleteEntry();             // DeleteBtn
    void selectEntry();             // SelectBtn
    void entryClicked(int row);
    void takeFromContacts();        // OutLkBtn

    // True while a window of this kind is open (the address book open flag).
    static bool isOpen();

signals:
    // The address and the name of the entry chosen with Select.
    void entrySelected(const QString &address, const QString &name);
    void helpRequested();

protected:
    void closeEvent(QCloseEvent *event) override;
    void reject() override;

private:
    void boxEdited();

    AppState &m_state;
    UiServices &m_services;
    SettingsStore *m_store; // where the contacts file is remembered; may be null
    QString m_mode;
    QListWidget *m_list = nullptr;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_address = nullptr;
    QString m_listFile;
    bool m_changed = false;
    bool m_filling = false; // the boxes are being filled from the list, not edited
};

} // namespace tarnby::ui
