#pragma once

#include "core/catalogue/CommandTables.h"

#include <QHash>
#include <QObject>
#include <QString>

class QAction;
class QActionGroup;
class QMenu;
class QMenuBar;
class QToolBar;
class QWidget;

namespace tarnby::ui {

// The command bar of a window: menus and toolbars whose tools are QActions
// named by their string keys (objectName == key, so tests find them with
// findChild). A click on any tool is reported as toolClicked(key); the window
// dispatches it through its table.
//
// As with the component the program has always used, a change of a tool's
// checked state counts as a click on it: setChecked() emits toolClicked when
// the state changes. Windows that set checks themselves guard against running
// the operation twice.
class CommandBar : public QObject
{
    Q_OBJECT
public:
    explicit CommandBar(QWidget *owner);

    QMenu *addMenu(QMenuBar *bar, const commands::Menu &menu);
    void addTools(QToolBar *toolbar, const std::vector<commands::Tool> &tools);

    QAction *action(const QString &key) const;
    bool contains(const QString &key) const { return m_actions.contains(key); }
    QStringList keys() const { return m_actions.keys(); }

    // Enabled state; a key the bar does not hold is ignored.
    void setEnabled(const QString &key, bool enabled);
    bool isEnabled(const QString &key) const;

    // Makes the tools checkable; an exclusive set allows one checked tool.
    void makeCheckable(const QStringList &keys, bool exclusive);
    void setChecked(const QString &key, bool checked);
    bool isChecked(const QString &key) const;

    // Applies an enabling routine's changes in order.
    void apply(const QList<commands::EnableChange> &changes);

signals:
    void toolClicked(const QString &key);

private:
    QAction *createAction(const commands::Tool &tool);

    QWidget *m_owner;
    QHash<QString, QAction *> m_actions;
};

} // namespace tarnby::ui
