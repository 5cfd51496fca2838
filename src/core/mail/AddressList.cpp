#include "core/mail/AddressList.h"

#include "core/settings/LineFile.h"

namespace tarnby::mail {

namespace {
// An address list of a few thousand people is well below this; a larger file
// is not an address list and its tail is not read.
constexpr int MaxAddressLines = 100000;
} // namespace

QString addressLine(const QString &name, const QString &address)
{
    return name + QStringLiteral(" - ") + address;
}

AddressEntry splitAddressLine(const QString &line)
{
    const qsizetype hyphen = line.indexOf(QLatin1Char('-'));
    if (hyphen < 0)
        return {line.trimmed(), QString()};
    // Characters 1 to (hyphen - 2) and from (hyphen + 2) on, counting from 1.
    return {line.left(std::max<qsizetype>(0, hyphen - 1)), line.mid(std::min(line.size(), hyphen + 2))};
}

AddressListRead readAddressList(const QString &path)
{
    const settings::LineFileRead read = settings::readLineFile(path, MaxAddressLines);
    AddressListRead result;
    result.found = read.found;
    result.stoppedBecause = read.stoppedBecause;
    for (const QString &line : read.lines) {
        if (!line.isEmpty())
            result.lines << line;
    }
    return result;
}

bool writeAddressList(const QString &path, const QStringList &lines, QString *error)
{
    return settings::writeLineFile(path, lines, error);
}

QStringList recipientsFromText(const QString &text)
{
    QStringList result;
    for (QString line : text.split(QLatin1Char('\r'))) {
        if (line.startsWith(QLatin1Char('\n')))
            line.remove(0, 1);
        // A box edited on this desktop may hold LF alone between lines.
        for (const QString &piece : line.split(QLatin1Char('\n'))) {
            const QString address = piece.trimmed();
            if (!address.isEmpty())
                result << address;
        }
    }
    return result;
}

} // namespace tarnby::mail
