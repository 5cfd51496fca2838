#include "ui/fileops/MoveFile1.h"

#include "core/app/AppState.h"
#include "core/fileops/FileOperations.h"
#include "ui/services/DialogButtons.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/tools/HelpWindow.h"

#include <QFileInfo>
#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

MoveFile1::MoveFile1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("MoveFile1"));
    installWindowColors(this, m_state);
    setWindowTitle(QStringLiteral("Move File"));
    setModal(true);

    m_label = new QLabel(QStringLiteral("Move to - ") + m_state.moveTarget, this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setWordWrap(true);
    m_files = new QListWidget(this);
    m_files->setObjectName(QStringLiteral("File1"));
    m_files->setSelectionMode(QAbstractItemView::NoSelection);
    // The list shows what OK will move, companions included.
    const fileops::Plan plan = fileops::planMove(m_state.currentFile, m_state.moveTarget);
    for (const fileops::Step &step : plan.steps)
        m_files->addItem(QFileInfo(step.from).fileName());

    const DialogButtons row = makeDialogButtons(this);
    QPushButton *ok = row.ok;
    QPushButton *cancel = row.cancel;
    QPushButton *help = row.help;
    QHBoxLayout *buttons = row.row;
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    layout->addWidget(m_files, 1);
    layout->addLayout(buttons);

    connect(ok, &QPushButton::clicked, this, &MoveFile1::okClicked);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, [this] { showHelpContents(m_state.helpFolder(), this); });
}

void MoveFile1::okClicked()
{
    const QString source = QFileInfo(m_state.currentFile).absoluteFilePath();
    const fileops::Plan plan = fileops::planMove(source, m_state.moveTarget);
    const fileops::Result result = fileops::execute(plan);
    switch (result.outcome) {
    case fileops::Outcome::Done:
        break;
    case fileops::Outcome::TargetExists:
        m_services.messages.inform(QStringLiteral("File already exists - Cannot Move File to - ") + result.path, this);
        reject();
        return;
    case fileops::Outcome::SourceMissing:
        m_services.messages.inform(QStringLiteral("File not Found - ") + m_state.currentFile, this);
        reject();
        return;
    case fileops::Outcome::EmptyName:
    case fileops::Outcome::InvalidName:
    case fileops::Outcome::Failed:
        m_services.messages.inform(QStringLiteral("Error Moving File - ") + result.path
                                       + (result.errorString.isEmpty() ? QString() : QStringLiteral(" - ") + result.errorString),
                                   this);
        reject();
        return;
    }
    for (const fileops::Step &step : plan.steps) {
        if (step.from == source)
            m_movedPath = step.to;
    }
    m_services.messages.inform(QStringLiteral("File Moved to - ") + m_state.moveTarget, this);
    accept();
}

} // namespace tarnby::ui
