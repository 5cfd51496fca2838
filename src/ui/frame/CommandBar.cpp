#include "ui/frame/CommandBar.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>
#include <QMenuBar>
#include <QToolBar>

namespace tarnby::ui {

CommandBar::CommandBar(QWidget *owner)
    : QObject(owner)
    , m_owner(owner)
{
}

QAction *CommandBar::createAction(const commands::Tool &tool)
{
    const QString key = QLatin1String(tool.key);
    if (QAction *existing = m_actions.value(key))
        return existing;
    auto *action = new QAction(QLatin1String(tool.caption), m_owner);
    action->setObjectName(key);
    const QString tip = QLatin1String(tool.tooltip);
    action->setToolTip(tip.isEmpty() ? action->text().remove(QLatin1Char('&')) : tip);
    action->setStatusTip(tip);
    connect(action, &QAction::triggered, this, [this, key] { emit toolClicked(key); });
    m_actions.insert(key, action);
    return action;
}

QMenu *CommandBar::addMenu(QMenuBar *bar, const commands::Menu &menu)
{
    QMenu *m = bar->addMenu(QLatin1String(menu.caption));
    const QString key = QLatin1String(menu.key);
    m->setObjectName(key);
    m->menuAction()->setObjectName(key);
    m_actions.insert(key, m->menuAction());
    for (const commands::Tool &tool : menu.entries)
        m->addAction(createAction(tool));
    return m;
}

void CommandBar::addTools(QToolBar *toolbar, const std::vector<commands::Tool> &tools)
{
    for (const commands::Tool &tool : tools)
        toolbar->addAction(createAction(tool));
}

QAction *CommandBar::action(const QString &key) const
{
    return m_actions.value(key);
}

void CommandBar::setEnabled(const QString &key, bool enabled)
{
    if (QAction *a = m_actions.value(key))
        a->setEnabled(enabled);
}

bool CommandBar::isEnabled(const QString &key) const
{
    const QAction *a = m_actions.value(key);
    return a && a->isEnabled();
}

void CommandBar::makeCheckable(const QStringList &keys, bool exclusive)
{
    QActionGroup *group = nullptr;
    if (exclusive) {
        group = new QActionGroup(this);
        group->setExclusionPolicy(QActionGroup::ExclusionPolicy::ExclusiveOptional);
    }
    for (const QString &key : keys) {
        if (QAction *a = m_actions.value(key)) {
            a->setCheckable(true);
            if (group)
                group->addAction(a);
        }
    }
}

void CommandBar::setChecked(const QString &key, bool checked)
{
    QAction *a = m_actions.value(key);
    if (!a || !a->isCheckable() || a->isChecked() == checked)
        return;
    a->setChecked(checked);
    emit toolClicked(key);
}

bool CommandBar::isChecked(const QString &key) const
{
    const QAction *a = m_actions.value(key);
    return a && a->isChecked();
}

void CommandBar::apply(const QList<commands::EnableChange> &changes)
{
    for (const commands::EnableChange &change : changes)
        setEnabled(change.key, change.enabled);
}

} // namespace tarnby::ui
