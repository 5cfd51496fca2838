#pragma once

class QHBoxLayout;
class QPushButton;
class QWidget;

namespace tarnby::ui {

// The button row of the program's dialogs: OK (the default button), Cancel
// and Help, right-aligned, named OKBtn, CancelBtn and HelpBtn. The caller
// adds row to its layout, sets tooltips and connects the buttons.
struct DialogButtons {
    QPushButton *ok;
    QPushButton *cancel;
    QPushButton *help;
    QHBoxLayout *row;
};

DialogButtons makeDialogButtons(QWidget *dialog);

} // namespace tarnby::ui
