#pragma once

#include "core/organizer/OrganizerStore.h"

class QWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The catalogue the options name: "FileTabl.MDB" in the program folder, or
// the PostgreSQL server with its password from the desktop keyring (asked
// once a run; the wait for the keyring is short).
organizer::OrganizerStore catalogueFor(const AppState &state);

// Checks the catalogue before an organizer window opens. A missing or
// damaged catalogue is not passed over in silence: the user is told so and
// asked whether to open the repair window, which is opened on Yes. Returns
// true when the catalogue can be used.
bool catalogueReady(const organizer::OrganizerStore &store, AppState &state, UiServices &services, QWidget *parent);

// The message for a catalogue that cannot be used.
QString catalogueProblemText(const organizer::StoreResult &result);

} // namespace tarnby::ui
