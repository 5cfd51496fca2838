#include "ui/organizer/GrpFind.h"

#include "ui/organizer/GrpMaint.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

namespace tarnby::ui {

using namespace organizer;

GroupFindWindow::GroupFindWindow(const char *name, const QString &caption, AppState &state, UiServices &services,
                                 const OrganizerStore &store, QWidget *parent)
    : QDialog(parent)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QLatin1String(name));
    setWindowTitle(caption);
    m_name = new QLineEdit(this);
    m_name->setObjectName(QStringLiteral("Text1"));
    m_name->setToolTip(QStringLiteral("Search for File by File Name"));
    m_keyword = new QLineEdit(this);
    m_keyword->setObjectName(QStringLiteral("Text2"));
    m_keyword->setToolTip(QStringLiteral("Search for File in Database by File Search Key Word"));
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setToolTip(QStringLiteral("Perform Search for File listed in Group Database"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    cancel->setToolTip(QStringLiteral("Close Search for File in Group Database Window"));
    connect(ok, &QPushButton::clicked, this, &GroupFindWindow::okClicked);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);

    auto *grid = new QGridLayout(this);
    grid->addWidget(new QLabel(QStringLiteral("Search by File Name:"), this), 0, 0);
    grid->addWidget(m_name, 0, 1);
    grid->addWidget(new QLabel(QStringLiteral("- OR -"), this), 1, 0, 1, 2, Qt::AlignCenter);
    grid->addWidget(new QLabel(QStringLiteral("Search by Keyword:"), this), 2, 0);
    grid->addWidget(m_keyword, 2, 1);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    grid->addLayout(buttons, 3, 0, 1, 2);
    applyWindowColors(this, state);
}

void GroupFindWindow::okClicked()
{
    const QString name = m_name->text().trimmed();
    const QString keyword = m_keyword->text().trimmed();
    if (name.isEmpty() && keyword.isEmpty()) {
        m_services.messages.inform(QStringLiteral("You must enter something in File Name or Search Key word to find "
                                                  "nearest match in the File."),
                                   this);
        return;
    }
    m_field = name.isEmpty() ? FindField::FileKeyword : FindField::FileName;
    StoreResult r;
    m_found = m_store.findNearest(m_field, name.isEmpty() ? keyword : name, &r);
    if (!r.ok()) {
        m_services.messages.inform(dataErrorText(r), this);
        return;
    }
    accept();
}

} // namespace tarnby::ui
