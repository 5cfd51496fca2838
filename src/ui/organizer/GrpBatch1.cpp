#include "ui/organizer/GrpBatch1.h"

#include "core/app/AppState.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "core/search/FileSearch.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCheckBox>
#include <QComboBox>
#include <QEvent>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnby::ui {

using namespace organizer;

namespace {

const QString OfferedGroupName = QStringLiteral("New Group");

// The group list, read again each time it drops down.
class GroupBox : public QComboBox
{
public:
    using QComboBox::QComboBox;
    std::function<void()> beforePopup;

    void showPopup() override
    {
        if (beforePopup)
            beforePopup();
        QComboBox::showPopup();
    }
};

} // namespace

GrpBatch1::GrpBatch1(AppState &state, UiServices &services, const OrganizerStore &store, FolderSource source,
                     QWidget *parent)
    : QDialog(parent)
    , m_services(services)
    , m_store(store)
    , m_source(std::move(source))
{
    setObjectName(QStringLiteral("GrpBatch1"));
    setWindowTitle(QStringLiteral("Add Files to a File Group"));
    auto *text = new QLabel(QStringLiteral("Select Group Name, Run the Search, Click OK to add all Files in the Folder "
                                           "to the Group and advance to the Next Folder, or Find Next Button to "
                                           "advance without Adding to File Group."),
                            this);
    text->setWordWrap(true);
    auto *group = new GroupBox(this);
    group->beforePopup = [this] { refreshGroups(); };
    m_group = group;
    m_group->setObjectName(QStringLiteral("CMBGRP"));
    m_group->setEditable(true);
    m_group->setToolTip(QStringLiteral("Select Group to set Files when processing. (Group can be reselected between OK clicks)"));
    m_skip = new QCheckBox(QStringLiteral("Skip Adding Files and go to next Folder"), this);
    m_skip->setObjectName(QStringLiteral("CHKSKIP"));
    auto *ok = m_ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setToolTip(QStringLiteral("Select Files in Folder to Add to Group"));
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    cancel->setToolTip(QStringLiteral("Close Add Files to a File Group Selection Window"));
    auto *help = new QPushButton(QStringLiteral("Help"), this);
    help->setObjectName(QStringLiteral("HelpBtn"));
    help->setToolTip(QStringLiteral("Help with Add Files to a File Group Selection Window"));
    connect(ok, &QPushButton::clicked, this, &GrpBatch1::okClicked);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, &GrpBatch1::helpRequested);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(text);
    layout->addWidget(new QLabel(QStringLiteral("Select Group Name:"), this));
    layout->addWidget(m_group);
    layout->addWidget(m_skip);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    buttons->addWidget(help);
    layout->addLayout(buttons);
    applyWindowColors(this, state);

    StoreResult r;
    const QStringList groups = m_store.groupNames(&r);
    if (!r.ok())
        m_services.messages.inform(dataErrorText(r), this);
    m_group->addItems(groups.isEmpty() ? QStringList{OfferedGroupName} : groups);
    m_group->setCurrentIndex(0);
}

void GrpBatch1::setSearchRunning(bool running)
{
    m_searchRunning = running;
    m_ok->setEnabled(!running);
}

void GrpBatch1::searchFinished(search::SearchOutcome outcome)
{
    if (outcome == search::SearchOutcome::Found) {
        m_addedFolder.clear();
        m_addedGroup.clear();
    }
}

void GrpBatch1::okClicked()
{
    if (m_searchRunning)
        return;
    if (!m_skip->isChecked()) {
        const QString group = m_group->currentText();
        const FolderFiles files = m_source ? m_source() : FolderFiles{};
        // After the end of the search the list still shows the folder the
        // last OK added: the search has reached nothing new, and that folder
        // does not go into the same group twice.
        if (files.folder != m_addedFolder || group != m_addedGroup) {
            // One stamp for the whole click: every entry of the folder
            // carries the same creation moment.
            const TimeStamp stamp = SetTimeStamp();
            StoreResult r;
            m_store.addBatch(groupMadeOnTheFly(group, stamp), batchEntries(group, files.folder, files.names, stamp), &r);
            if (!r.ok()) {
                m_services.messages.inform(dataErrorText(r), this);
                return;
            }
            m_addedFolder = files.folder;
            m_addedGroup = group;
            // The group made on the fly joins the list.
            refreshGroups();
        }
    }
    emit findNextRequested();
}

void GrpBatch1::refreshGroups()
{
    StoreResult r;
    const QStringList groups = m_store.groupNames(&r);
    // A catalogue that cannot be read just now keeps the list as it is; OK
    // says what is wrong when it is pressed.
    if (!r.ok())
        return;
    const QStringList items = groups.isEmpty() ? QStringList{OfferedGroupName} : groups;
    bool same = m_group->count() == items.size();
    for (int i = 0; same && i < m_group->count(); ++i)
        same = m_group->itemText(i) == items.at(i);
    if (same)
        return;
    const QString chosen = m_group->currentText();
    // The name offered while there were no groups was nobody's choice: once
    // groups exist, the first is chosen, as when the window opens.
    const bool offered = m_group->count() == 1 && m_group->itemText(0) == OfferedGroupName && chosen == OfferedGroupName;
    m_group->clear();
    m_group->addItems(items);
    const int at = m_group->findText(chosen);
    if (at >= 0 || offered) {
        m_group->setCurrentIndex(std::max(at, 0));
    } else {
        // A name typed for a group still to be made stays as typed.
        m_group->setCurrentIndex(-1);
        m_group->setEditText(chosen);
    }
}

bool GrpBatch1::event(QEvent *event)
{
    if (event->type() == QEvent::WindowActivate)
        refreshGroups();
    return QDialog::event(event);
}

} // namespace tarnby::ui
