#include "ui/tables/ProPert1.h"

#include "core/app/AppState.h"
#include "ui/services/DialogButtons.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/tools/HelpWindow.h"

#include <QFrame>
#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>
#include <QVBoxLayout>

namespace tarnby::ui {

ProPert1::ProPert1(const tables::FileProperties &properties, const AppState &state, QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("ProPert1"));
    setWindowTitle(QStringLiteral("File Properties"));

    auto *frame = new QFrame(this);
    frame->setObjectName(QStringLiteral("Frame1"));
    frame->setFrameShape(QFrame::StyledPanel);
    auto *grid = new QGridLayout(frame);
    for (int i = 0; i < properties.rows.size(); ++i) {
        auto *caption = new QLabel(properties.rows[i].caption, frame);
        caption->setObjectName(QStringLiteral("Label1"));
        auto *value = new QLabel(properties.rows[i].value, frame);
        value->setObjectName(QStringLiteral("Label2"));
        value->setTextInteractionFlags(Qt::TextSelectableByMouse);
        grid->addWidget(caption, i, 0);
        grid->addWidget(value, i, 1);
    }
    grid->setColumnStretch(1, 1);

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(frame);
    m_text = new QTextEdit(this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_text->setReadOnly(true);
    m_text->setPlainText(properties.fieldLines.join(QLatin1Char('\n')));
    // The field list is only part of a database's case; the buttons follow
    // right below the rows otherwise.
    m_text->setVisible(properties.database);
    layout->addWidget(m_text, 1);

    const DialogButtons buttons = makeDialogButtons(this);
    buttons.ok->setToolTip(QStringLiteral("Display of Image Properties Accepted"));
    buttons.cancel->setToolTip(QStringLiteral("Close the Image Property Display Window"));
    buttons.help->setToolTip(QStringLiteral("Help with Image Property Display Window"));
    connect(buttons.ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(buttons.cancel, &QPushButton::clicked, this, &QDialog::reject);
    const QString helpFolder = state.helpFolder();
    connect(buttons.help, &QPushButton::clicked, this, [this, helpFolder] { showHelpContents(helpFolder, this); });
    layout->addLayout(buttons.row);

    applyWindowColors(this, state);
}

void showFileProperties(const QString &path, AppState &state, UiServices &services, QWidget *parent)
{
    const std::optional<tables::FileProperties> properties = tables::propertiesOfFile(path, state.database.password);
    if (!properties) {
        services.messages.inform(QStringLiteral("Cannot determine File Properties for this type of File"), parent);
        return;
    }
    ProPert1 window(*properties, state, parent);
    window.exec();
}

} // namespace tarnby::ui
