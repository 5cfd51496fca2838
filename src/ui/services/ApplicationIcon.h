#pragma once

#include <QIcon>

namespace tarnby::ui {

// Tarnby's own icon, in every size the build renders from
// resources/desktop/tarnby.svg (16 to 256 pixels). The program sets it as the
// application's window icon, which every window that sets none of its own
// shows: the browser, the viewing frame, its document windows, the dialogs.
QIcon applicationIcon();

} // namespace tarnby::ui
