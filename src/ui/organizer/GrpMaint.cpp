#include "ui/organizer/GrpMaint.h"

#include "core/app/AppState.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "ui/organizer/DataControl.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

using namespace organizer;

QString dataErrorText(const StoreResult &result)
{
    return QStringLiteral("Data error event hit err: ") + QString::number(int(result.status)) + QLatin1Char('-')
        + result.error;
}

GrpMaint::GrpMaint(AppState &state, UiServices &services, const OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("GrpMaint"));
    setWindowTitle(QStringLiteral("Add and Maintain File Groups"));

    auto *frame = new QGroupBox(QStringLiteral(" Set up or Change File Group "), this);
    frame->setObjectName(QStringLiteral("Frame1"));
    auto *form = new QFormLayout(frame);
    auto label = [frame](const QString &text) {
        auto *l = new QLabel(text, frame);
        l->setObjectName(QStringLiteral("Label1"));
        return l;
    };
    m_name = new QLineEdit(frame);
    m_name->setObjectName(QStringLiteral("FldGroup1"));
    m_name->setToolTip(QStringLiteral("Name of Group to collect files for organization"));
    m_desc = new QLineEdit(frame);
    m_desc->setObjectName(QStringLiteral("FldGrpDesc1"));
    m_desc->setToolTip(QStringLiteral("Description of File Group"));
    m_dateLabel = label(QStringLiteral("Date/Time"));
    form->addRow(label(QStringLiteral("Enter File Group Name:")), m_name);
    form->addRow(label(QStringLiteral("Enter File Group Description:")), m_desc);
    form->addRow(label(QStringLiteral("Date and Time Created:")), m_dateLabel);

    m_data = new DataControl(this);
    m_data->setObjectName(QStringLiteral("Data1"));
    connect(m_data, &DataControl::positionChanged, this, [this](int position) {
        keepTyping();
        show(position);
    });

    auto button = [this](const char *name, const QString &caption, const QString &tooltip, void (GrpMaint::*slot)()) {
        auto *b = new QPushButton(caption, this);
        b->setObjectName(QLatin1String(name));
        b->setToolTip(tooltip);
        connect(b, &QPushButton::clicked, this, slot);
        return b;
    };
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(button("AddBtn", QStringLiteral("Add"), QStringLiteral("Create New Group in File Group"), &GrpMaint::addClicked));
    buttons->addWidget(button("SaveBtn", QStringLiteral("Save"), QStringLiteral("Save the Group Name and Description to Disk"),
                              &GrpMaint::saveClicked));
    buttons->addWidget(button("CnclBtn", QStringLiteral("Cancel"),
                              QStringLiteral("Refresh the Group Name and description from file cancelling unsaved entry"),
                              &GrpMaint::cancelClicked));
    buttons->addWidget(button("DeleteBtn", QStringLiteral("Delete"), QStringLiteral("Delete the Group Name and description from file"),
                              &GrpMaint::deleteClicked));
    buttons->addWidget(button("HelpBtn", QStringLiteral("Help"), QStringLiteral("Help with creating and changing Groups"),
                              &GrpMaint::helpRequested));

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addWidget(m_data);
    layout->addLayout(buttons);
    applyWindowColors(this, state);

    reload(0);
}

bool GrpMaint::failed(const StoreResult &result)
{
    if (result.ok())
        return false;
    m_services.messages.inform(dataErrorText(result), this);
    return true;
}

// Reads the row order afresh and shows the row with showId (the first row
// when it is not there); an empty table starts a new row at once.
void GrpMaint::reload(qint64 showId)
{
    StoreResult r;
    m_ids = m_store.groupIds(TableOrder::GroupName, &r);
    if (failed(r))
        return;
    if (m_ids.isEmpty()) {
        addClicked();
        return;
    }
    m_mode = QStringLiteral("E");
    m_data->setShowsPosition(true);
    const int position = std::max<int>(0, int(m_ids.indexOf(showId)));
    m_data->setRecords(int(m_ids.size()), position);
    show(position);
}

void GrpMaint::show(int position)
{
    if (m_mode == QLatin1String("A")) {
        // A move drops an addition that was not saved.
        m_mode = QStringLiteral("E");
    }
    StoreResult r;
    m_row = m_store.group(m_ids.value(position), &r);
    if (failed(r) || !m_row)
        return;
    m_name->setText(m_row->GroupName);
    m_desc->setText(m_row->GroupDesc);
    m_dateLabel->setText(m_row->DateDisp.isEmpty() ? QStringLiteral("Date/Time") : m_row->DateDisp);
}

void GrpMaint::keepTyping()
{
    if (m_mode != QLatin1String("E") || !m_row)
        return;
    if (m_name->text() == m_row->GroupName && m_desc->text() == m_row->GroupDesc)
        return;
    GroupRow row = *m_row;
    row.GroupName = m_name->text();
    row.GroupDesc = m_desc->text();
    failed(m_store.updateGroup(row));
}

void GrpMaint::addClicked()
{
    m_mode = QStringLiteral("A");
    m_row.reset();
    m_data->setShowsPosition(false);
    m_name->setText(QStringLiteral("New Group"));
    m_desc->setText(QStringLiteral("New Group Description"));
    m_dateLabel->setText(QStringLiteral("Date/Time"));
}

void GrpMaint::saveClicked()
{
    const TimeStamp stamp = SetTimeStamp();
    GroupRow row = m_mode == QLatin1String("A") || !m_row ? GroupRow{} : *m_row;
    row.GroupName = m_name->text();
    row.GroupDesc = m_desc->text();
    row.Date = stamp.StampDate;
    row.Time = stamp.StampTime;
    row.DateDisp = stamp.StampDisplay;
    qint64 id = row.ID;
    StoreResult r;
    if (m_mode == QLatin1String("A")) {
        // Only a new row gets its creation moment; later saves never change it.
        row.DateTimeCreated = stamp.StampDateTime;
        id = m_store.addGroup(row, &r);
    } else {
        r = m_store.updateGroup(row);
    }
    if (failed(r))
        return;
    reload(id);
    m_dateLabel->setText(stamp.StampDisplay);
}

void GrpMaint::cancelClicked()
{
    reload(m_row ? m_row->ID : 0);
}

void GrpMaint::deleteClicked()
{
    const QString name = m_name->text();
    StoreResult r;
    const bool hasEntries = m_store.CheckDetail(name, &r);
    if (failed(r))
        return;
    if (hasEntries) {
        m_services.messages.inform(QStringLiteral("You cannot Delete Group - ") + name
                                       + QStringLiteral(" - Delete the Files below in the Group"),
                                   this);
        return;
    }
    if (!m_services.messages.ask(QStringLiteral("Are you sure you want to Delete Group - ") + name
                                     + QStringLiteral(" from the Database"),
                                 this))
        return;
    if (m_mode == QLatin1String("E") && m_row) {
        if (failed(m_store.deleteGroup(m_row->ID)))
            return;
    }
    m_services.messages.inform(QStringLiteral("Group - ") + name + QStringLiteral(" - Deleted"), this);
    const int position = m_data->position();
    m_row.reset();
    reload(0);
    if (!m_ids.isEmpty() && m_mode == QLatin1String("E")) {
        m_data->setRecords(int(m_ids.size()), position);
        show(m_data->position());
    }
}

} // namespace tarnby::ui
