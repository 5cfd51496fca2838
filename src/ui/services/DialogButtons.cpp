#include "ui/services/DialogButtons.h"

#include <QHBoxLayout>
#include <QPushButton>

namespace tarnby::ui {

DialogButtons makeDialogButtons(QWidget *dialog)
{
    auto make = [dialog](const char *caption, const char *name) {
        auto *button = new QPushButton(QLatin1String(caption), dialog);
        button->setObjectName(QLatin1String(name));
        return button;
    };
    DialogButtons buttons{make("OK", "OKBtn"), make("Cancel", "CancelBtn"), make("Help", "HelpBtn"), new QHBoxLayout};
    buttons.ok->setDefault(true);
    buttons.row->addStretch();
    buttons.row->addWidget(buttons.ok);
    buttons.row->addWidget(buttons.cancel);
    buttons.row->addWidget(buttons.help);
    return buttons;
}

} // namespace tarnby::ui
