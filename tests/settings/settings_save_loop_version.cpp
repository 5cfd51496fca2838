#include "core/settings/ProgramOptions.h"

using tarnby::settings::ProgramOptions;

// Two versions of the options that differ in every text line and are long
// enough that a write takes a while.
ProgramOptions saveLoopVersion(int which)
{
    ProgramOptions o;
    const QString fill(3000, QLatin1Char(which == 0 ? 'a' : 'b'));
    o.fromAddress = fill;
    o.webSiteAddress = fill;
    o.toAddress1 = fill;
    o.toAddress2 = fill;
    o.toAddress3 = fill;
    o.browserValue33 = fill;
    o.thumbnailHeightCm = which == 0 ? 1.0 : 2.0;
    return o;
}

