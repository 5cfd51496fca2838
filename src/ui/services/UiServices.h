#pragma once

#include "ui/services/DialogService.h"
#include "ui/services/MessageService.h"

namespace tarnby::ui {

// The services every window receives with the program-wide state.
struct UiServices {
    MessageService messages;
    DialogService dialogs;
};

} // namespace tarnby::ui
