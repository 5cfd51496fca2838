#include "core/settings/ProgramOptions.h"

#include <QDir>

namespace tarnby::settings {

namespace {

using P = ProgramOptions;
using T = LineType;

// The defaults place the browser at 1000 x 700 and the frame at 900 x 650
// pixels (at 96 DPI, 15 twips a pixel), a little in from the screen's corner.
// The pane and view-style lines start empty: the browser fills them when it
// first lays out its panes.
const LineRow<P> OptionsLines[] = {
    {1, "browserLeft", T::Number, &P::browserLeft, "900"},
    {2, "browserTop", T::Number, &P::browserTop, "900"},
    {3, "browserWidth", T::Number, &P::browserWidth, "15000"},
    {4, "browserHeight", T::Number, &P::browserHeight, "10500"},
    {5, "frameLeft", T::Number, &P::frameLeft, "1200"},
    {6, "frameTop", T::Number, &P::frameTop, "1200"},
    {7, "frameWidth", T::Number, &P::frameWidth, "13500"},
    {8, "frameHeight", T::Integer32, &P::frameHeight, "9750"},
    {9, "thumbnailHeightCm", T::Real, &P::thumbnailHeightCm, "2.5", 0.5, 5.5},
    {10, "thumbnailWidthCm", T::Real, &P::thumbnailWidthCm, "2.5", 0.5, 5.5},
    {11, "thumbnailBits", T::Choice, &P::thumbnailBits, "24 Bits", 0, 0,
     "32 Bits|24 Bits|16 Bits|8 Bits|7 Bits|6 Bits|5 Bits|4 Bits|3 Bits|2 Bits|1 Bit"},
    {12, "treePane1", T::Text, &P::treePane1, ""},
    {13, "treePane2", T::Text, &P::treePane2, ""},
    {14, "treePane3", T::Text, &P::treePane3, ""},
    {15, "listPane1", T::Text, &P::listPane1, ""},
    {16, "listPane2", T::Text, &P::listPane2, ""},
    {17, "listPane3", T::Text, &P::listPane3, ""},
    {18, "viewStyle", T::Text, &P::viewStyle, ""},
    {19, "initialSearchCount", T::Integer32, &P::initialSearchCount, "5000", 2500, 10000},
    {20, "nextSearchCount", T::Integer32, &P::nextSearchCount, "1000", 500, 2500},
    {21, "tableRowHeight", T::Integer16, &P::tableRowHeight, "300", 250, 600},
    {22, "menuTextStyle", T::Integer16, &P::menuTextStyle, "0", 0, 4},
    {23, "browserTextStyle", T::Choice, &P::browserTextStyle, "F", 0, 0, "F|R|I"},
    {24, "fromAddress", T::Text, &P::fromAddress, ""},
    {25, "webSiteAddress", T::Text, &P::webSiteAddress, ""},
    {26, "toAddress1", T::Text, &P::toAddress1, ""},
    {27, "toAddress2", T::Text, &P::toAddress2, ""},
    {28, "toAddress3", T::Text, &P::toAddress3, ""},
    {29, "boldType", T::Boolean, &P::boldType, "False"},
    {30, "gridLines", T::Boolean, &P::gridLines, "False"},
    {31, "quickTipsAtStartup", T::Text, &P::quickTipsAtStartup, "0"},
    {32, "networkComputer", T::Text, &P::networkComputer, ""},
    {33, "browserValue33", T::Text, &P::browserValue33, ""},
    {34, "useTextDoc", T::Boolean, &P::useTextDoc, "False"},
};
static_assert(std::size(OptionsLines) == OptionsFileLineCount);

// Options that "Options.INI" has no line for. They have a file of their own
// so that "Options.INI" keeps its 34 lines for every reader of it.
const LineRow<P> MoreOptionsLines[] = {
    {1, "separatorPercent", T::Integer32, &P::separatorPercent, "30", 20, 80},
    {2, "addressBook", T::Text, &P::addressBook, "MailAddr.MLS"},
    {3, "smtpHost", T::Text, &P::smtpHost, ""},
    {4, "smtpPort", T::Integer32, &P::smtpPort, "587", 1, 65535},
    {5, "smtpSecurity", T::Choice, &P::smtpSecurity, "STARTTLS", 0, 0, "STARTTLS|TLS|None"},
    {6, "smtpUser", T::Text, &P::smtpUser, ""},
    {7, "incomingProtocol", T::Choice, &P::incomingProtocol, "IMAP", 0, 0, "IMAP|POP3"},
    {8, "incomingHost", T::Text, &P::incomingHost, ""},
    {9, "incomingPort", T::Integer32, &P::incomingPort, "993", 1, 65535},
    {10, "incomingSecurity", T::Choice, &P::incomingSecurity, "TLS", 0, 0, "STARTTLS|TLS|None"},
    {11, "incomingUser", T::Text, &P::incomingUser, ""},
    {12, "organizerHost", T::Text, &P::organizerHost, ""},
    {13, "organizerPort", T::Integer32, &P::organizerPort, "5432", 1, 65535},
    {14, "organizerDatabase", T::Text, &P::organizerDatabase, "tarnby"},
    {15, "organizerUser", T::Text, &P::organizerUser, ""},
};

} // namespace

ProgramOptions::ProgramOptions()
{
    applyDefaults<ProgramOptions>(*this, optionsFileTable());
    applyDefaults<ProgramOptions>(*this, moreOptionsTable());
}

std::span<const LineRow<ProgramOptions>> optionsFileTable()
{
    return OptionsLines;
}

std::span<const LineRow<ProgramOptions>> moreOptionsTable()
{
    return MoreOptionsLines;
}

TableReadReport readProgramOptions(const QString &folder, ProgramOptions &options)
{
    const QDir dir(folder);
    TableReadReport report = readTable<ProgramOptions>(dir.filePath(OptionsFileName), optionsFileTable(), options);
    const TableReadReport more = readTable<ProgramOptions>(dir.filePath(MoreOptionsFileName), moreOptionsTable(), options);
    report.keptDefault += more.keptDefault;
    return report;
}

bool writeProgramOptions(const QString &folder, const ProgramOptions &options, QString *error)
{
    const QDir dir(folder);
    return writeTable<ProgramOptions>(dir.filePath(OptionsFileName), optionsFileTable(), options, error)
        && writeTable<ProgramOptions>(dir.filePath(MoreOptionsFileName), moreOptionsTable(), options, error);
}

QStringList thumbnailBitsChoices()
{
    return QString::fromLatin1(OptionsLines[10].choices).split(QLatin1Char('|'));
}

} // namespace tarnby::settings
