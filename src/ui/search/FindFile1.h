#pragma once

#include "core/search/SearchPatterns.h"

#include <QDialog>
#include <QList>

#include <array>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;
class QRadioButton;
class QStackedLayout;
class QTabBar;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

// "Find Files and File Types": five tabs (TabStrip1), each showing its own
// frame (Frame1) of option buttons (RDPICT, RDMEDIA, RDTEXT, RDDATA, RDMISC,
// each button carrying its index in the "index" property), the typed name
// Text1 on the Miscellaneous tab, and OKBtn, CancelBtn and HelpBtn.
//
// One chosen index serves all tabs: the last option button clicked on any
// tab. OK runs the pattern routine of the tab that is showing; when it
// chooses a pattern, the pattern becomes the program-wide search pattern and
// filterChosen() asks the browser to move its filter box. OK then accepts, and
// the browser starts the search. Cancel leaves the pattern as it was.
class FindFile1 : public QDialog
{
    Q_OBJECT
public:
    explicit FindFile1(AppState &state, QWidget *parent = nullptr);

    QTabBar *tabStrip() const { return m_tabs; }
    QGroupBox *frame(search::SearchTab tab) const { return m_frames[size_t(tab)]; }
    QRadioButton *option(search::SearchTab tab, int index) const;
    int chosenIndex() const { return m_chosenIndex; }

    // Clicking an option button.
    void chooseOption(search::SearchTab tab, int index);
    // OK's work: the pattern routine of the tab showing, then accept.
    void okClicked();

signals:
    void filterChosen(int filterIndex);
    void helpRequested();

protected:
    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    void showTab(int tab);

    AppState &m_state;
    QTabBar *m_tabs = nullptr;
    QStackedLayout *m_stack = nullptr;
    std::array<QGroupBox *, search::SearchTabCount> m_frames{};
    std::array<QList<QRadioButton *>, search::SearchTabCount> m_options;
    QLabel *m_label = nullptr;
    QLineEdit *m_text = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
    int m_chosenIndex = -1;
};

} // namespace tarnby::ui
