#include "ui/organizer/GrpRepair1.h"

#include "core/app/AppState.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {

QPushButton *button(QWidget *parent, const char *name, const QString &caption, const QString &tooltip)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(tooltip);
    return b;
}

// OKBtn, CancelBtn and HelpBtn in a row below the window's content.
QHBoxLayout *buttonRow(QDialog *window, const QString &okTip, const QString &cancelTip, const QString &helpTip)
{
    auto *ok = button(window, "OKBtn", QStringLiteral("OK"), okTip);
    auto *cancel = button(window, "CancelBtn", QStringLiteral("Cancel"), cancelTip);
    auto *help = button(window, "HelpBtn", QStringLiteral("Help"), helpTip);
    QObject::connect(cancel, &QPushButton::clicked, window, &QDialog::reject);
    auto *row = new QHBoxLayout;
    row->addWidget(ok);
    row->addWidget(cancel);
    row->addWidget(help);
    return row;
}

} // namespace

GrpRepair1::GrpRepair1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("GrpRepair1"));
    setWindowTitle(QStringLiteral("Compact or Repair Database"));
    auto *frame = new QGroupBox(this);
    auto *options = new QVBoxLayout(frame);
    m_repair = new QRadioButton(QStringLiteral("Repair the File Organizer Database"), frame);
    m_repair->setObjectName(QStringLiteral("RDSELECT"));
    m_repair->setProperty("index", 0);
    m_repair->setToolTip(QStringLiteral("Repair the File Group Database - Rebuild Indexes"));
    m_repair->setChecked(true);
    m_compact = new QRadioButton(QStringLiteral("Compact the File Organizer Database"), frame);
    m_compact->setObjectName(QStringLiteral("RDSELECT"));
    m_compact->setProperty("index", 1);
    m_compact->setToolTip(QStringLiteral("Compact the File Group Database - Permanently Remove all Deleted Records"));
    options->addWidget(m_repair);
    options->addWidget(m_compact);

    QHBoxLayout *buttons = buttonRow(this, QStringLiteral("Perform The Function Selected Above"),
                                     QStringLiteral("Close the Database Utility Window"),
                                     QStringLiteral("Help with Database Utility Window"));
    connect(findChild<QPushButton *>(QStringLiteral("OKBtn")), &QPushButton::clicked, this, &GrpRepair1::okClicked);
    connect(findChild<QPushButton *>(QStringLiteral("HelpBtn")), &QPushButton::clicked, this, &GrpRepair1::helpRequested);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    layout->addLayout(buttons);
    applyWindowColors(this, state);
}

void GrpRepair1::okClicked()
{
    if (m_repair->isChecked()) {
        // A repair that works says nothing; one that cannot mend the file
        // says why rather than ending quietly.
        const organizer::StoreResult r = m_store.repair();
        if (!r.ok())
            m_services.messages.inform(r.error, this);
        return;
    }
    const organizer::StoreResult r = m_store.compact();
    m_services.messages.inform(r.ok() ? QStringLiteral("File Successfully Compacted") : r.error, this);
}

GrpClear1::GrpClear1(AppState &state, UiServices &services, const organizer::OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("GrpClear1"));
    setWindowTitle(QStringLiteral("Clear all Files in the Organizer"));
    auto *label = new QLabel(QStringLiteral("Click the OK Button to Remove all Files in all Groups within the File "
                                            "Group Organizer Database."),
                             this);
    label->setObjectName(QStringLiteral("Label1"));
    label->setWordWrap(true);
    QHBoxLayout *buttons = buttonRow(
        this, QStringLiteral("Remove all Files from all File Groups in the Organizer"),
        QStringLiteral("Close the Clear all Files in the Organizer Database without Removing and Files"),
        QStringLiteral("Help with Clear all Files in the Organizer Window"));
    connect(findChild<QPushButton *>(QStringLiteral("OKBtn")), &QPushButton::clicked, this, &GrpClear1::okClicked);
    connect(findChild<QPushButton *>(QStringLiteral("HelpBtn")), &QPushButton::clicked, this, &GrpClear1::helpRequested);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(label);
    layout->addLayout(buttons);
    applyWindowColors(this, state);
}

void GrpClear1::okClicked()
{
    if (!m_services.messages.ask(QStringLiteral("Are you sure you want to remove all Files in the Group File "
                                                "Organizer Database?"),
                                 this))
        return;
    const organizer::StoreResult r = m_store.clear();
    m_services.messages.inform(r.ok() ? QStringLiteral("All Files successfully removed from the Group File Organizer Database")
                                      : QStringLiteral("Files not removed from the Group File Organizer Database"),
                               this);
}

} // namespace tarnby::ui
