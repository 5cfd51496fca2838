#include "ui/fileops/FileCommandDialog.h"

#include "core/app/AppState.h"
#include "ui/services/DialogButtons.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/tools/HelpWindow.h"

#include <QHBoxLayout>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

FileCommandDialog::FileCommandDialog(const QString &objectName, const QString &title, const QString &labelText,
                                     AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(objectName);
    installWindowColors(this, m_state);
    setWindowTitle(title);
    setModal(true);

    m_label = new QLabel(labelText, this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setWordWrap(true);
}

void FileCommandDialog::addFileListAndButtons(const QList<QWidget *> &between)
{
    m_files = new QListWidget(this);
    m_files->setObjectName(QStringLiteral("File1"));
    m_files->setSelectionMode(QAbstractItemView::NoSelection);

    const DialogButtons row = makeDialogButtons(this);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_label);
    for (QWidget *widget : between)
        layout->addWidget(widget);
    layout->addWidget(m_files, 1);
    layout->addLayout(row.row);

    connect(row.ok, &QPushButton::clicked, this, [this] { okClicked(); });
    connect(row.cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(row.help, &QPushButton::clicked, this, [this] { showHelpContents(m_state.helpFolder(), this); });
}

} // namespace tarnby::ui
