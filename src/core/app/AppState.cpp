#include "core/app/AppState.h"

#include <QDir>

namespace tarnby {

QString AppState::programFile(const QString &fileName) const
{
    if (programFolder.endsWith(QLatin1Char('/')))
        return programFolder + fileName;
    return programFolder + QLatin1Char('/') + fileName;
}

QString AppState::helpFolder() const
{
    return programFile(QStringLiteral("Help"));
}

QString AppState::reportFile() const
{
    return programFile(QStringLiteral("F@Prnt.INI"));
}

QString AppState::organizerDatabase() const
{
    return programFile(QStringLiteral("FileTabl.MDB"));
}

} // namespace tarnby
