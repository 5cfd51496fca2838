#pragma once

#include <QDialog>
#include <QStringList>

class QCheckBox;
class QLabel;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Quick Tip of the Day": one tip at a time, drawn at random from
// "TIPHELP.TXT" in the program folder. The tick box edits the start-up
// option; OK stores it in the options file and closes.
class QuikTip1 : public QDialog
{
    Q_OBJECT
public:
    // key names the tips asked for: empty from the help menus and at
    // start-up, "EM" from the sending window. Every key reads the same file.
    QuikTip1(AppState &state, UiServices &services, const QString &key = {}, QWidget *parent = nullptr);
    ~QuikTip1() override;

    // The tips read and the index (from 1) of the tip shown.
    QStringList tips() const { return m_tips; }
    int currentTip() const { return m_current; }
    QString tipText() const;
    QString TIPKEY;

    // Runs LoadTips on path; on success shows a random tip, else the text
    // that tells how to make the file. A file that stops reading part-way
    // shows "Error Loading Quick Tips File" and keeps the tips read.
    bool LoadTips(const QString &path);
    void nextTip(); // NextTipBtn
    void storeOption(); // OKBtn, before it closes

    void done(int result) override;

private:
    void showTip();

    AppState &m_state;
    UiServices &m_services;
    QLabel *m_tip = nullptr;
    QCheckBox *m_startup = nullptr;
    QStringList m_tips;
    int m_current = 1;
};

// Opens the tips window, not modal; one at a time (a second call raises the
// open one). The sending window calls it with key "EM".
QuikTip1 *showQuickTips(AppState &state, UiServices &services, QWidget *parent, const QString &key = {});

} // namespace tarnby::ui
