#include "ui/fileops/Rename1.h"

#include "core/fileops/FileOperations.h"
#include "ui/services/UiServices.h"

#include <QDir>
#include <QFileInfo>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>

namespace tarnby::ui {

Rename1::Rename1(const QString &path, AppState &state, UiServices &services, QWidget *parent)
    : FileCommandDialog(QStringLiteral("Rename1"), QStringLiteral("Rename File"), path, state, services, parent)
    , m_path(path)
{
    auto *prompt = new QLabel(QStringLiteral("New name:"), this);
    m_text = new QLineEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    addFileListAndButtons({prompt, m_text});

    fillFileList();
    // The extension stays as it is, so the box offers the name without it,
    // selected: what the user types replaces it, and a small change to the
    // name is one click away.
    m_text->setText(fileops::baseName(path));
    m_text->selectAll();
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
    m_doneSteps = plan.steps;
    m_renamedPath = plan.steps.constFirst().to;
    for (const fileops::Step &step : plan.steps) {
        if (step.from == QFileInfo(m_path).absoluteFilePath())
            m_renamedPath = step.to;
    }
    m_services.messages.inform(QStringLiteral("File Rename Successful"), this);
    accept();
}

} // namespace tarnby::ui
