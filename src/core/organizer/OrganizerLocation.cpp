#include "core/organizer/OrganizerLocation.h"

#include "core/settings/ProgramOptions.h"

namespace tarnby::organizer {

StoreLocation organizerLocation(const QString &programFolder, const settings::ProgramOptions &options)
{
    if (options.organizerHost.trimmed().isEmpty())
        return StoreLocation::inFolder(programFolder);
    StoreLocation l;
    l.engine = StoreLocation::Engine::PostgreSQL;
    l.host = options.organizerHost.trimmed();
    l.port = options.organizerPort;
    l.database = options.organizerDatabase.trimmed();
    l.user = options.organizerUser.trimmed();
    return l;
}

QString organizerPasswordKey(const StoreLocation &location)
{
    return QStringLiteral("postgresql:%1@%2:%3/%4").arg(location.user, location.host).arg(location.port).arg(location.database);
}

} // namespace tarnby::organizer
