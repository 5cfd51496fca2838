#include "core/catalogue/OpenRouting.h"

namespace tarnby {

bool isPlayerExtension(const QString &ext)
{
    static const QStringList exts = {
        QStringLiteral("WAV"), QStringLiteral("MID"), QStringLiteral("RMI"), QStringLiteral("AVI"),
        QStringLiteral("MPG"), QStringLiteral("MOV"), QStringLiteral("MP3"), QStringLiteral("M3U"),
        QStringLiteral("DAT"), QStringLiteral("CDA"), QStringLiteral("ASX"),
    };
    return exts.contains(ext);
}

OpenRoute routeForOpen(const catalogue::FileType &type)
{
    if (type.extension.isEmpty())
        return OpenRoute::Nothing;
    if (!type.known())
        return OpenRoute::Unsupported;
    if (isPlayerExtension(type.extension))
        return OpenRoute::Player;
    if (type.extension == QLatin1String("ZIP"))
        return OpenRoute::Unzip;
    return OpenRoute::Viewer;
}

} // namespace tarnby
