#include "ui/fileops/Rename1.h"

#include "core/app/AppState.h"
#include "core/fileops/FileOperations.h"
#include "ui/services/DialogButtons.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/tools/HelpWindow.h"

#include <QDialogButtonBox>
#include <QDir>
#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

Rename1::Rename1(const QString &path, AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_path(path)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("Rename1"));
    installWindowColors(this, m_state);
    setWindowTitle(QStringLiteral("Rename File"));
    setModal(true);

    m_label = new QLabel(path, this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setWordWrap(true);
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_files = new QListWidget(this);
    m_files->setObjectName(QStringLiteral("File1"));
    m_files->setSelectionMode(QAbstractItemView::NoSelection);

    const DialogButtons row = makeDialogButtons(this);
    QPushButton *ok = row.ok;
    QPushButton *cancel = row.cancel;
    QPushButton *help = row.help;
    QHBoxLayout *buttons = row.row;
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(new QLabel(QStringLiteral("New name:"), this));
    layout->addWidget(m_text);
    layout->addWidget(m_files, 1);
    layout->addLayout(buttons);

    connect(ok, &QPushButton::clicked, this, &Rename1::okClicked);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, [this] { showHelpContents(m_state.helpFolder(), this); });

    fillFileList();
    m_text->setFocus();
}

void Rename1::fillFileList()
{
    m_files->clear();
    const QDir folder = QFileInfo(m_path).absoluteDir();
    m_files->addItems(folder.entryList(QDir::Files, QDir::Name | QDir::IgnoreCase));
}

void Rename1::okClicked()
{
    const QString newName = m_text->text().trimmed();
    const fileops::Plan plan = fileops::planRename(m_path, newName);
    const fileops::Result result = fileops::execute(plan);
    switch (result.outcome) {
    case fileops::Outcome::Done:
        break;
    case fileops::Outcome::EmptyName:
        m_services.messages.inform(QStringLiteral("You must Enter a New Name for the File"), this);
        m_text->setFocus();
        return;
    case fileops::Outcome::TargetExists:
        m_services.messages.inform(QStringLiteral("File already exists - Cannot use this new File Name"), this);
        m_text->setFocus();
        return;
    case fileops::Outcome::InvalidName:
        m_services.messages.inform(QStringLiteral("A File Name cannot contain \"/\" or be \".\" or \"..\" - ") + newName,
                                   this);
        m_text->setFocus();
        return;
    case fileops::Outcome::SourceMissing:
        m_services.messages.inform(QStringLiteral("File not Found - ") + m_path, this);
        reject();
        return;
    case fileops::Outcome::Failed:
        m_services.messages.inform(QStringLiteral("Error Renaming File - ") + result.path + QStringLiteral(" - ")
                                       + result.errorString,
                                   this);
        fillFileList();
        return;
    }
    m_renamedPath = plan.steps.constFirst().to;
    for (const fileops::Step &step : plan.steps) {
        if (step.from == QFileInfo(m_path).absoluteFilePath())
            m_renamedPath = step.to;
    }
    m_services.messages.inform(QStringLiteral("File Rename Successful"), this);
    accept();
}

} // namespace tarnby::ui
