#include "core/settings/TextRelief.h"

#include "core/settings/ProgramOptions.h"

#include <algorithm>
#include <cmath>

namespace tarnby::settings {

TextRelief menuTextRelief(qint16 menuTextStyle)
{
    switch (menuTextStyle) {
    case 1:
        return {ReliefKind::Raised, 1};
    case 2:
        return {ReliefKind::Inset, 2};
    case 3:
        return {ReliefKind::Inset, 1};
    case 4:
        return {ReliefKind::Raised, 2};
    default:
        return {};
    }
}

TextRelief tableTextRelief(const QString &letter)
{
    const QString l = letter.trimmed().toUpper();
    if (l == QLatin1String("R"))
        return {ReliefKind::Raised, 1};
    if (l == QLatin1String("I"))
        return {ReliefKind::Inset, 1};
    return {};
}

int TableBrowserLook::rowHeightPixels(double dpi) const
{
    // Twips are 1/1440 inch.
    return std::max(1, int(std::lround(rowHeightTwips * (dpi > 0 ? dpi : 96.0) / 1440.0)));
}

TableBrowserLook tableBrowserLook(const ProgramOptions &options)
{
    TableBrowserLook look;
    look.text = tableTextRelief(options.browserTextStyle);
    // The file is read within bounds, but options set in code may not be.
    look.rowHeightTwips = std::clamp(int(options.tableRowHeight), int(OptionBounds::RowHeightMin),
                                     int(OptionBounds::RowHeightMax));
    return look;
}

} // namespace tarnby::settings
