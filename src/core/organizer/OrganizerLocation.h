#pragma once

#include "core/organizer/OrganizerStore.h"

namespace tarnby::settings {
struct ProgramOptions;
}

namespace tarnby::organizer {

// Where the options put the catalogue: a PostgreSQL server when they name a
// host, else "FileTabl.MDB" in programFolder. The password is not filled in:
// it comes from the keyring (organizerPasswordKey()).
StoreLocation organizerLocation(const QString &programFolder, const settings::ProgramOptions &options);

// The keyring entry of the server password: "postgresql:user@host:port/database".
QString organizerPasswordKey(const StoreLocation &location);

} // namespace tarnby::organizer
