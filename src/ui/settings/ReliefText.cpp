#include "ui/settings/ReliefText.h"

#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QPointer>
#include <QStyleOption>
#include <QToolBar>
#include <QToolButton>

namespace tarnby::ui {

namespace {

using settings::ReliefKind;
using settings::TextRelief;

// The colours that stand off the text: a highlight and a shadow from the
// palette, so that they follow the window colours.
struct ReliefColours {
    QColor towardsLight; // drawn up and left of the text
    QColor awayFromLight; // drawn down and right
};

ReliefColours reliefColours(const QPalette &palette, ReliefKind kind)
{
    const QColor light = palette.color(QPalette::Light);
    const QColor dark = palette.color(QPalette::Dark);
    if (kind == ReliefKind::Raised)
        return {light, dark};
    return {dark, light};
}

QPalette withRole(QPalette palette, QPalette::ColorRole role, const QColor &colour)
{
    for (QPalette::ColorGroup group : {QPalette::Active, QPalette::Inactive, QPalette::Disabled})
        palette.setColor(group, role, colour);
    return palette;
}

const char StyleObjectName[] = "MenuTextStyle";

} // namespace

void drawReliefText(QPainter *painter, const QRect &rect, int flags, const QString &text, const QPalette &palette,
                    bool enabled, QPalette::ColorRole role, TextRelief relief)
{
    painter->save();
    if (enabled && !relief.isFlat()) {
        const ReliefColours colours = reliefColours(palette, relief.kind);
        for (int step = relief.depth; step >= 1; --step) {
            painter->setPen(colours.towardsLight);
            painter->drawText(rect.translated(-step, -step), flags, text);
            painter->setPen(colours.awayFromLight);
            painter->drawText(rect.translated(step, step), flags, text);
        }
    }
    painter->setPen(palette.color(enabled ? QPalette::Active : QPalette::Disabled,
                                  role == QPalette::NoRole ? QPalette::WindowText : role));
    painter->drawText(rect, flags, text);
    painter->restore();
}

MenuTextStyle::MenuTextStyle(TextRelief relief)
    : m_relief(relief)
{
    setObjectName(QLatin1String(StyleObjectName));
}

void MenuTextStyle::drawItemText(QPainter *painter, const QRect &rect, int flags, const QPalette &palette,
                                 bool enabled, const QString &text, QPalette::ColorRole role) const
{
    // Menu bar titles and toolbar captions come here. The passes go through
    // the base style too, so that mnemonics are drawn the same way.
    if (enabled && !m_relief.isFlat() && !text.isEmpty() && role != QPalette::NoRole) {
        const ReliefColours colours = reliefColours(palette, m_relief.kind);
        for (int step = m_relief.depth; step >= 1; --step) {
            QProxyStyle::drawItemText(painter, rect.translated(-step, -step), flags,
                                      withRole(palette, role, colours.towardsLight), enabled, text, role);
            QProxyStyle::drawItemText(painter, rect.translated(step, step), flags,
                                      withRole(palette, role, colours.awayFromLight), enabled, text, role);
        }
    }
    QProxyStyle::drawItemText(painter, rect, flags, palette, enabled, text, role);
}

void MenuTextStyle::drawControl(ControlElement element, const QStyleOption *option, QPainter *painter,
                                const QWidget *widget) const
{
    // Styles draw the entries of a popup menu with their own text calls, so
    // the relief is an extra pass of the entry beneath it: text only, in the
    // relief colours, without the highlight, check mark, icon or arrow.
    const auto *item = qstyleoption_cast<const QStyleOptionMenuItem *>(option);
    if (element == CE_MenuItem && item && !m_relief.isFlat() && (item->state & State_Enabled)
        && (item->menuItemType == QStyleOptionMenuItem::Normal || item->menuItemType == QStyleOptionMenuItem::SubMenu)
        && !(item->state & State_Selected) && !item->text.isEmpty()) {
        const ReliefColours colours = reliefColours(item->palette, m_relief.kind);
        QStyleOptionMenuItem pass = *item;
        pass.icon = QIcon();
        pass.checkType = QStyleOptionMenuItem::NotCheckable;
        pass.checked = false;
        pass.menuItemType = QStyleOptionMenuItem::Normal;
        for (int step = m_relief.depth; step >= 1; --step) {
            for (const auto &[offset, colour] : {std::pair{-step, colours.towardsLight}, std::pair{step, colours.awayFromLight}}) {
                pass.palette = withRole(withRole(item->palette, QPalette::Text, colour), QPalette::WindowText, colour);
                pass.palette = withRole(withRole(pass.palette, QPalette::ButtonText, colour), QPalette::HighlightedText, colour);
                pass.rect = item->rect.translated(offset, offset);
                painter->save();
                painter->setClipRect(item->rect);
                QProxyStyle::drawControl(element, &pass, painter, widget);
                painter->restore();
            }
        }
    }
    QProxyStyle::drawControl(element, option, painter, widget);
}

MenuTextStyle *menuTextStyleOf(const QWidget *window)
{
    return window ? window->findChild<MenuTextStyle *>(QLatin1String(StyleObjectName), Qt::FindDirectChildrenOnly)
                  : nullptr;
}

void applyMenuTextStyle(QWidget *window, TextRelief relief)
{
    if (!window)
        return;
    MenuTextStyle *style = menuTextStyleOf(window);
    if (!style) {
        style = new MenuTextStyle(relief);
        style->setParent(window);
    }
    style->setRelief(relief);
    QList<QWidget *> targets;
    for (QMenuBar *bar : window->findChildren<QMenuBar *>())
        targets << bar;
    for (QMenu *menu : window->findChildren<QMenu *>())
        targets << menu;
    for (QToolBar *toolbar : window->findChildren<QToolBar *>()) {
        for (QToolButton *button : toolbar->findChildren<QToolButton *>())
            targets << button;
    }
    for (QWidget *target : std::as_const(targets)) {
        if (target->style() != style)
            target->setStyle(style);
        target->update();
    }
}

} // namespace tarnby::ui
