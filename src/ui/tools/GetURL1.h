#pragma once

#include <QDialog>
#include <QStringList>

class QLineEdit;
class QListWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Select Multimedia from the Internet": the kept list of Internet addresses
// of pictures and multimedia files. OK makes the address the current file and
// asks for it to be displayed (displayRequested); the address then joins the
// list unless it is there already. The list is read from "PictList.INI" when
// the window opens and written back whole when it closes, however it closes.
class GetURL1 : public QDialog
{
    Q_OBJECT
public:
    GetURL1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~GetURL1() override;

    QStringList addresses() const { return m_list; }
    int selectedRow() const;

    // The buttons' work.
    void locate();     // OKBtn, and Enter in Text1
    void deleteEntry(); // DeleteBtn
    void moveUp();     // UpBtn
    void moveDown();   // DownBtn

    void done(int result) override;

signals:
    void displayRequested(const QString &address);
    void helpRequested();

private:
    void refresh(int selectRow);
    void saveList(QWidget *messageParent);

    AppState &m_state;
    UiServices &m_services;
    QStringList m_list;
    QListWidget *m_view = nullptr;
    QLineEdit *m_text = nullptr;
    bool m_saved = false;
};

// Opens the window, not modal, or raises the one already open; created tells
// which, so that the caller connects a new window's signals once.
GetURL1 *showInternetList(AppState &state, UiServices &services, QWidget *parent, bool *created);

} // namespace tarnby::ui
