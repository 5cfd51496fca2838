#include "ui/fileops/MoveFile1.h"

#include "core/app/AppState.h"
#include "core/fileops/FileOperations.h"
#include "ui/services/UiServices.h"

#include <QFileInfo>
#include <QListWidget>

namespace tarnby::ui {

MoveFile1::MoveFile1(const QString &source, const QString &target, AppState &state, UiServices &services,
                     QWidget *parent)
    : FileCommandDialog(QStringLiteral("MoveFile1"), QStringLiteral("Move File"), QStringLiteral("Move to - ") + target,
                        state, services, parent)
    , m_source(source)
    , m_target(target)
{
    addFileListAndButtons();
    // The list shows what OK will move, companions included.
    const fileops::Plan plan = fileops::planMove(m_source, m_target);
    for (const fileops::Step &step : plan.steps)
        m_files->addItem(QFileInfo(step.from).fileName());
}

void MoveFile1::okClicked()
{
    const QString source = QFileInfo(m_source).absoluteFilePath();
    const fileops::Plan plan = fileops::planMove(source, m_target);
    const fileops::Result result = fileops::execute(plan);
    switch (result.outcome) {
    case fileops::Outcome::Done:
        break;
    case fileops::Outcome::TargetExists:
        m_services.messages.inform(QStringLiteral("File already exists - Cannot Move File to - ") + result.path, this);
        reject();
        return;
    case fileops::Outcome::SourceMissing:
        m_services.messages.inform(QStringLiteral("File not Found - ") + m_source, this);
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
    m_doneSteps = plan.steps;
    for (const fileops::Step &step : plan.steps) {
        if (step.from == source)
            m_movedPath = step.to;
    }
    m_services.messages.inform(QStringLiteral("File Moved to - ") + m_target, this);
    accept();
}

} // namespace tarnby::ui
