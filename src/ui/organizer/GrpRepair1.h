#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QDialog>

class QPushButton;
class QRadioButton;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// "Compact or Repair Database": RDSELECT option 0 repairs the catalogue (an
// integrity check and the rebuilding of its indexes; a missing file is made
// anew), option 1 compacts it through "Test.MDB". OKBtn runs the chosen one.
class GrpRepair1 : public QDialog
{
    Q_OBJECT
public:
    GrpRepair1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr);

    QRadioButton *option(int index) const { return index == 0 ? m_repair : m_compact; }
    void okClicked();

signals:
    void helpRequested();

private:
    UiServices &m_services;
    organizer::OrganizerStore m_store;
    QRadioButton *m_repair = nullptr;
    QRadioButton *m_compact = nullptr;
};

// "Clear all Files in the Organizer": OKBtn asks, then removes every entry
// of every group and compacts through "FileTabl2.MDB".
class GrpClear1 : public QDialog
{
    Q_OBJECT
public:
    GrpClear1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr);
    void okClicked();

signals:
    void helpRequested();

private:
    UiServices &m_services;
    organizer::OrganizerStore m_store;
};

} // namespace tarnby::ui
