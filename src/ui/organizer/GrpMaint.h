#pragma once

#include "core/organizer/OrganizerStore.h"

#include <QDialog>

class QGroupBox;
class QLabel;
class QLineEdit;
class QPushButton;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

class DataControl;
struct UiServices;

// "Add and Maintain File Groups": one GroupTable row at a time, paged in the
// order of the "GroupName" index. The mode letter is "A" while a new row is
// being added and "E" while the shown row is edited. Moving to another row
// keeps what was typed into the shown one (as a bound form does); an
// addition that was not saved is dropped by a move.
class GrpMaint : public QDialog
{
    Q_OBJECT
public:
    GrpMaint(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent = nullptr);

    QString mode() const { return m_mode; }
    QLineEdit *groupName() const { return m_name; }
    QLineEdit *groupDescription() const { return m_desc; }
    QLabel *dateLabel() const { return m_dateLabel; }
    DataControl *dataControl() const { return m_data; }
    std::optional<organizer::GroupRow> currentRow() const { return m_row; }

    void addClicked();
    void saveClicked();
    void cancelClicked();
    void deleteClicked();

signals:
    void helpRequested();

private:
    void reload(qint64 showId);
    void show(int position);
    void keepTyping();
    bool failed(const organizer::StoreResult &result);

    UiServices &m_services;
    organizer::OrganizerStore m_store;
    QString m_mode;
    QList<qint64> m_ids;
    std::optional<organizer::GroupRow> m_row;
    QLineEdit *m_name = nullptr;
    QLineEdit *m_desc = nullptr;
    QLabel *m_dateLabel = nullptr;
    DataControl *m_data = nullptr;
};

// "Data error event hit err: " + number + "-" + description, for a catalogue
// call that failed under a window.
QString dataErrorText(const organizer::StoreResult &result);

} // namespace tarnby::ui
