#include "core/mail/AttachmentNames.h"

#include <QDir>
#include <QRegularExpression>

namespace tarnby::mail {

namespace {
constexpr int MaxNameBytes = 200;
constexpr int MaxNumberedTries = 10000;

bool isDeviceName(const QString &name)
{
    static const QRegularExpression device(QStringLiteral("^(CON|PRN|AUX|NUL|COM[1-9]|LPT[1-9])(\\..*)?$"),
                                           QRegularExpression::CaseInsensitiveOption);
    return device.match(name).hasMatch();
}

// Cuts the stem so that the whole name fits in MaxNameBytes, keeping the
// extension and never splitting a character.
QString shortened(const QString &name)
{
    if (name.toUtf8().size() <= MaxNameBytes)
        return name;
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    QString extension = dot > 0 && name.size() - dot <= 16 ? name.mid(dot) : QString();
    QString stem = name.left(name.size() - extension.size());
    while (!stem.isEmpty() && (stem + extension).toUtf8().size() > MaxNameBytes) {
        stem.chop(1);
        if (!stem.isEmpty() && stem.back().isHighSurrogate())
            stem.chop(1);
    }
    return stem + extension;
}
} // namespace

QString plainAttachmentName(const QString &raw, const QString &fallback)
{
    QString name = raw;
    const qsizetype slash = std::max(name.lastIndexOf(QLatin1Char('/')), name.lastIndexOf(QLatin1Char('\\')));
    if (slash >= 0)
        name = name.mid(slash + 1);
    if (name.size() >= 2 && name.at(1) == QLatin1Char(':') && name.at(0).isLetter())
        name = name.mid(2);
    QString clean;
    clean.reserve(name.size());
    for (const QChar c : name) {
        if (c.category() != QChar::Other_Control && c != QChar(0x7f))
            clean += c;
    }
    // Blanks and dots at the ends: "..", "." and hidden names all go.
    qsizetype begin = 0;
    qsizetype end = clean.size();
    while (begin < end && (clean.at(begin).isSpace() || clean.at(begin) == QLatin1Char('.')))
        ++begin;
    while (end > begin && (clean.at(end - 1).isSpace() || clean.at(end - 1) == QLatin1Char('.')))
        --end;
    clean = clean.mid(begin, end - begin);
    if (clean.isEmpty())
        return fallback;
    if (isDeviceName(clean))
        clean.prepend(QLatin1Char('_'));
    return shortened(clean);
}

QString numberedName(const QString &name, int n)
{
    if (n <= 1)
        return name;
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    if (dot <= 0)
        return QStringLiteral("%1 (%2)").arg(name).arg(n);
    return QStringLiteral("%1 (%2)%3").arg(name.left(dot)).arg(n).arg(name.mid(dot));
}

QString createUniqueFile(const QString &folder, const QString &name, QFile &file, QString *error)
{
    const QDir dir(folder);
    for (int n = 1; n <= MaxNumberedTries; ++n) {
        const QString path = dir.filePath(numberedName(name, n));
        file.setFileName(path);
        if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly))
            return path;
        if (!file.exists()) {
            *error = QStringLiteral("Tarnby could not create %1: %2").arg(path, file.errorString());
            return QString();
        }
    }
    *error = QStringLiteral("Tarnby found no free file name for %1 in %2.").arg(name, folder);
    return QString();
}

} // namespace tarnby::mail
