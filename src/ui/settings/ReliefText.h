#pragma once

#include "core/settings/TextRelief.h"

#include <QPalette>
#include <QProxyStyle>

class QPainter;
class QRect;
class QWidget;

// Text drawn raised or inset, as the options ask for the menus (menu text
// style) and for the table grids (table browser text style). The highlight
// stands off the text towards the light (up and left for raised text, down
// and right for inset text) and the shadow the other way, one pixel for each
// step of depth.
namespace tarnby::ui {

// Draws text into rect (QPainter::drawText flags) in the palette's role, with
// relief. Disabled or flat text is drawn as it is.
void drawReliefText(QPainter *painter, const QRect &rect, int flags, const QString &text, const QPalette &palette,
                    bool enabled, QPalette::ColorRole role, settings::TextRelief relief);

// The style that the menu bar, its menus and the toolbar buttons of a window
// take: the window's own style, with the menu text drawn in relief.
class MenuTextStyle : public QProxyStyle
{
    Q_OBJECT
public:
    explicit MenuTextStyle(settings::TextRelief relief = {});

    settings::TextRelief relief() const { return m_relief; }
    void setRelief(settings::TextRelief relief) { m_relief = relief; }

    void drawItemText(QPainter *painter, const QRect &rect, int flags, const QPalette &palette, bool enabled,
                      const QString &text, QPalette::ColorRole role = QPalette::NoRole) const override;
    void drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                     const QWidget *widget = nullptr) const override;

private:
    settings::TextRelief m_relief;
};

// Gives the menu bar, every menu and every toolbar button of window the menu
// text relief. One style per window, kept as its child; calling again changes
// it and repaints.
void applyMenuTextStyle(QWidget *window, settings::TextRelief relief);
// The style applyMenuTextStyle() gave window; null before the first call.
MenuTextStyle *menuTextStyleOf(const QWidget *window);

} // namespace tarnby::ui
