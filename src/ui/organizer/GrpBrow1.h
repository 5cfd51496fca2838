#pragma once

#include "core/organizer/OrganizerModels.h"
#include "core/organizer/OrganizerStore.h"

#include <QDialog>

class QGroupBox;
class QListWidget;
class QPushButton;
class QStackedWidget;
class QTableView;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

class DataControl;
struct UiServices;

// "Browse and View Files from File Group": grid 0 lists the entries of the
// current group in the order of the key chosen in List1 (rows read a block at
// a time as they come into view), grid 1 lists the groups. SwitchBtn shows
// one grid or the other; SelectBtn hands the selected entry's file to the
// browser (fileSelected()).
class GrpBrow1 : public QDialog
{
    Q_OBJECT
public:
    GrpBrow1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr);

    QTableView *grid(int index) const { return index == 0 ? m_entryGrid : m_groupGrid; }
    DataControl *dataControl(int index) const { return index == 0 ? m_entryData : m_groupData; }
    QListWidget *sortList() const { return m_sortList; }
    organizer::EntryGridModel *entries() const { return m_entries; }
    organizer::GroupGridModel *groups() const { return m_groups; }
    QString currentGroup() const { return m_group; }
    organizer::SortKey sortKey() const { return m_key; }
    bool groupGridShown() const;

    void sortChosen(int position);
    void entryRowClicked(int row);
    void groupRowClicked(int row);
    void switchClicked();
    void selectClicked();
    void findClicked();
    // Moves the entry grid to the entry with id (the find window's answer);
    // false when the current listing does not hold it.
    bool showEntry(qint64 id);

signals:
    void fileSelected(const QString &path);
    void helpRequested();

private:
    void runQuery();
    QIcon picture(const QString &name) const;

    AppState &m_state;
    UiServices &m_services;
    organizer::OrganizerStore m_store;
    QString m_group;
    organizer::SortKey m_key = organizer::SortKey::ID;
    organizer::EntryGridModel *m_entries = nullptr;
    organizer::GroupGridModel *m_groups = nullptr;
    QTableView *m_entryGrid = nullptr;
    QTableView *m_groupGrid = nullptr;
    DataControl *m_entryData = nullptr;
    DataControl *m_groupData = nullptr;
    QStackedWidget *m_stack = nullptr;
    QListWidget *m_sortList = nullptr;
    QGroupBox *m_sortFrame = nullptr;
    QPushButton *m_sort = nullptr;
    QPushButton *m_select = nullptr;
    QPushButton *m_switch = nullptr;
};

} // namespace tarnby::ui
