#pragma once

#include "core/settings/WindowColors.h"

#include <QDialog>
#include <QLabel>

#include <array>

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// One colour swatch of the colours window: shows a colour number and asks for
// another on double-click.
class ColorSwatch : public QLabel
{
    Q_OBJECT
public:
    explicit ColorSwatch(int number, QWidget *parent = nullptr);
    settings::ColorNumber value() const { return m_value; }
    void setValue(settings::ColorNumber value);
    int number() const { return m_number; }

signals:
    void doubleClicked(int number);

protected:
    void mouseDoubleClickEvent(QMouseEvent *event) override;

private:
    int m_number;
    settings::ColorNumber m_value = 0;
};

// "Set Colors for Tarnby": 23 swatches ("Swatch_0" to "Swatch_22") in 13
// rows, the background column headed "BackGround" and the text column
// "Text". Double-clicking a swatch asks for a colour through the dialog
// service ("Select Color"); nothing is stored until OK, which stores the
// swatches in their fixed order and writes the colours file. Cancel stores
// nothing.
class SetColor1 : public QDialog
{
    Q_OBJECT
public:
    SetColor1(AppState &state, UiServices &services, QWidget *parent = nullptr);

    ColorSwatch *swatch(int number) const { return m_swatches.at(number); }
    // Asks for a new colour of one swatch, as a double-click does.
    void chooseColor(int number);
    // The OK button's work; true when the colours were stored and written.
    bool store();

signals:
    void helpRequested();

private:
    AppState &m_state;
    UiServices &m_services;
    std::array<ColorSwatch *, settings::SwatchCount> m_swatches{};
};

} // namespace tarnby::ui
