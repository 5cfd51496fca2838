#include "ui/settings/WindowColorsApplier.h"

#include "core/app/AppState.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QMainWindow>
#include <QMdiArea>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QStatusBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>

namespace tarnby::ui {

using settings::Swatch;

namespace {

QColor color(const AppState &state, Swatch s, const QPalette &base)
{
    return settings::toQColor(state.colors.swatch(s), base);
}

void setColors(QWidget *w, const QColor &back, const QColor &text, bool bold)
{
    QPalette p = w->palette();
    for (QPalette::ColorRole role : {QPalette::Window, QPalette::Base, QPalette::Button, QPalette::AlternateBase})
        p.setColor(role, back);
    // Disabled commands must still look disabled in the user's colours: their
    // text is drawn halfway between the text and the background colour.
    const QColor muted((text.red() + back.red()) / 2, (text.green() + back.green()) / 2,
                       (text.blue() + back.blue()) / 2);
    for (QPalette::ColorRole role : {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        p.setColor(QPalette::Active, role, text);
        p.setColor(QPalette::Inactive, role, text);
        p.setColor(QPalette::Disabled, role, muted);
    }
    w->setPalette(p);
    QFont f = w->font();
    if (f.bold() != bold) {
        f.setBold(bold);
        w->setFont(f);
    }
}

// The kind of a widget decides its colours; a widget of no listed kind (a
// scroll bar, a splitter handle) keeps what it inherits.
void applyToWidget(QWidget *w, const AppState &state)
{
    if (w->property(KeepOwnColorsProperty).toBool())
        return;
    const QPalette base = QPalette();
    const bool bold = state.options.boldType;
    const QColor selBack = color(state, Swatch::SelectionWindowsBack, base);
    const QColor selText = color(state, Swatch::SelectionWindowsText, base);

    if (qobject_cast<QLineEdit *>(w) || qobject_cast<QTextEdit *>(w) || qobject_cast<QPlainTextEdit *>(w)
        || qobject_cast<QAbstractSpinBox *>(w) || qobject_cast<QAbstractSlider *>(w)) {
        setColors(w, color(state, Swatch::EntryFieldsBack, base), color(state, Swatch::EntryFieldsText, base), bold);
    } else if (qobject_cast<QComboBox *>(w) || qobject_cast<QAbstractItemView *>(w)) {
        setColors(w, color(state, Swatch::ListBoxesBack, base), color(state, Swatch::ListBoxesText, base), bold);
    } else if (qobject_cast<QPushButton *>(w) || qobject_cast<QToolButton *>(w)) {
        setColors(w, color(state, Swatch::SelectionButtonsBack, base), selText, bold);
    } else if (qobject_cast<QLabel *>(w) || qobject_cast<QRadioButton *>(w) || qobject_cast<QCheckBox *>(w)
               || qobject_cast<QGroupBox *>(w) || qobject_cast<QFrame *>(w) || qobject_cast<QTabWidget *>(w)) {
        setColors(w, selBack, selText, bold);
    }
}

class ColorsOnShow : public QObject
{
public:
    ColorsOnShow(QWidget *window, const AppState &state)
        : QObject(window)
        , m_state(state)
    {
    }

    bool eventFilter(QObject *watched, QEvent *event) override
    {
        if (event->type() == QEvent::Show && watched == parent())
            applyWindowColors(static_cast<QWidget *>(watched), m_state);
        return false;
    }

private:
    const AppState &m_state;
};

void applyBars(QMainWindow *window, const AppState &state)
{
    const QPalette base;
    const QColor back = color(state, Swatch::MenusBack, base);
    const QColor text = color(state, Swatch::MenusText, base);
    const bool bold = state.options.boldType;
    setColors(window->menuBar(), back, text, bold);
    window->menuBar()->setAutoFillBackground(true);
    for (QToolBar *bar : window->findChildren<QToolBar *>()) {
        setColors(bar, back, text, bold);
        bar->setAutoFillBackground(true);
        for (QWidget *child : bar->findChildren<QWidget *>())
            setColors(child, back, text, bold);
    }
}

} // namespace

void applyWindowColors(QWidget *window, const AppState &state)
{
    if (!window)
        return;
    // The window itself is a selection window.
    setColors(window, color(state, Swatch::SelectionWindowsBack, QPalette()),
              color(state, Swatch::SelectionWindowsText, QPalette()), state.options.boldType);
    window->setAutoFillBackground(true);
    for (QWidget *w : window->findChildren<QWidget *>())
        applyToWidget(w, state);
}

void installWindowColors(QWidget *window, const AppState &state)
{
    window->installEventFilter(new ColorsOnShow(window, state));
}

void applyMainWindowColors(QMainWindow *window, const AppState &state)
{
    const QPalette base;
    const bool bold = state.options.boldType;
    setColors(window, color(state, Swatch::MainWindowBack, base), color(state, Swatch::MainWindowText, base), bold);
    if (QWidget *central = window->centralWidget()) {
        central->setAutoFillBackground(true);
        setColors(central, color(state, Swatch::MainWindowBack, base), color(state, Swatch::MainWindowText, base),
                  bold);
        for (QWidget *w : central->findChildren<QWidget *>())
            applyToWidget(w, state);
    }
    applyBars(window, state);
}

void applyFrameColors(QMainWindow *frame, QMdiArea *area, const AppState &state)
{
    const QPalette base;
    setColors(frame, color(state, Swatch::MainWindowBack, base), color(state, Swatch::MainWindowText, base),
              state.options.boldType);
    applyBars(frame, state);
    if (area)
        area->setBackground(color(state, Swatch::PictureWindowsBack, base));
}

} // namespace tarnby::ui
