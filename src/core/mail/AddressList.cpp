#include "core/mail/AddressList.h"

#include "core/settings/LineFile.h"

#include <QFile>

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

QList<AddressEntry> readVCardContacts(const QString &path)
{
    QList<AddressEntry> result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    const QString text = QString::fromUtf8(file.read(16 * 1024 * 1024));
    // Unfold: a line that starts with a blank continues the one before.
    QStringList lines;
    for (QString line : text.split(QLatin1Char('\n'))) {
        if (line.endsWith(QLatin1Char('\r')))
            line.chop(1);
        if ((line.startsWith(QLatin1Char(' ')) || line.startsWith(QLatin1Char('\t'))) && !lines.isEmpty())
            lines.last() += line.mid(1);
        else
            lines << line;
    }
    AddressEntry card;
    QString structuredName;
    for (const QString &line : std::as_const(lines)) {
        const qsizetype colon = line.indexOf(QLatin1Char(':'));
        if (colon < 0)
            continue;
        const QString property = line.left(colon).section(QLatin1Char(';'), 0, 0).section(QLatin1Char('.'), -1).toUpper();
        const QString value = line.mid(colon + 1).trimmed();
        if (property == QLatin1String("BEGIN")) {
            card = {};
            structuredName.clear();
        } else if (property == QLatin1String("FN")) {
            card.name = value;
        } else if (property == QLatin1String("N")) {
            // Family;Given;Middle;Prefix;Suffix
            const QStringList parts = value.split(QLatin1Char(';'));
            structuredName = QStringList{parts.value(1), parts.value(0)}.join(QLatin1Char(' ')).trimmed();
        } else if (property == QLatin1String("EMAIL") && card.address.isEmpty()) {
            card.address = value;
        } else if (property == QLatin1String("END")) {
            if (card.name.isEmpty())
                card.name = structuredName;
            if (!card.address.isEmpty())
                result << card;
            card = {};
        }
    }
    return result;
}

} // namespace tarnby::mail
