#include "ui/organizer/GrpBatch1.h"

#include "core/app/AppState.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerStamp.h"
#include "ui/organizer/GrpMaint.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCheckBox>
#include <QComboBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

using namespace organizer;

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
    m_group = new QComboBox(this);
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
    m_group->addItems(groups.isEmpty() ? QStringList{QStringLiteral("New Group")} : groups);
    m_group->setCurrentIndex(0);
}

void GrpBatch1::setSearchRunning(bool running)
{
    m_searchRunning = running;
    m_ok->setEnabled(!running);
}

void GrpBatch1::okClicked()
{
    if (m_searchRunning)
        return;
    if (!m_skip->isChecked()) {
        const QString group = m_group->currentText();
        const FolderFiles files = m_source ? m_source() : FolderFiles{};
        // One stamp for the whole click: every entry of the folder carries
        // the same creation moment.
        const TimeStamp stamp = SetTimeStamp();
        StoreResult r;
        m_store.addBatch(groupMadeOnTheFly(group, stamp), batchEntries(group, files.folder, files.names, stamp), &r);
        if (!r.ok()) {
            m_services.messages.inform(dataErrorText(r), this);
            return;
        }
        if (m_group->findText(group) < 0)
            m_group->addItem(group);
    }
    emit findNextRequested();
}

} // namespace tarnby::ui
