#include "core/mail/SendHistory.h"

#include "core/settings/LineFile.h"

#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QSaveFile>

namespace tarnby::mail {

namespace {
// Years of sending stay far below this; a larger file is read only in part.
constexpr qint64 MaxLogBytes = 64LL * 1024 * 1024;
constexpr int MaxLogLines = 1000000;

QByteArray crlfLines(const QStringList &lines)
{
    QByteArray bytes;
    for (const QString &line : lines) {
        bytes += line.toUtf8();
        bytes += "\r\n";
    }
    return bytes;
}
} // namespace

QString historyLine(const QString &path, const QString &address, const QDateTime &when, const QLocale &locale)
{
    // The time with its seconds, as the locale writes it, but without the
    // time zone that the long form carries.
    QString timeFormat = locale.timeFormat(QLocale::LongFormat);
    timeFormat.remove(QRegularExpression(QStringLiteral("\\s*t+")));
    return path + QStringLiteral(" - ") + address + QStringLiteral(" - ") +
           locale.toString(when.date(), QLocale::ShortFormat) + QLatin1Char(' ') +
           locale.toString(when.time(), timeFormat.trimmed());
}

void SendHistory::load(const QString &path)
{
    m_path = path;
    m_cleared = false;
    const settings::LineFileRead read = settings::readLineFile(path, MaxLogLines, MaxLogBytes);
    m_lines = read.lines;
    m_loadedCount = m_lines.size();
    m_stoppedBecause = read.stoppedBecause;
    if (m_stoppedBecause.isEmpty() && read.found && QFileInfo(path).size() > MaxLogBytes)
        m_stoppedBecause = QStringLiteral("the file is too long");
}

void SendHistory::append(const QStringList &lines)
{
    m_lines += lines;
}

void SendHistory::clear()
{
    m_lines.clear();
    m_loadedCount = 0;
    m_cleared = true;
}

bool SendHistory::save(QString *error)
{
    if (m_stoppedBecause.isEmpty() || m_cleared)
        return settings::writeLineFile(m_path, m_lines, error);

    // The old file could not be read whole: keep every byte of it and add
    // the new lines after it.
    QFile old(m_path);
    QSaveFile file(m_path);
    if (!old.open(QIODevice::ReadOnly) || !file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("Tarnby could not write %1: %2")
                     .arg(m_path, old.isOpen() ? file.errorString() : old.errorString());
        return false;
    }
    QByteArray chunk;
    bool endsWithLineEnd = true;
    while (!(chunk = old.read(1 << 20)).isEmpty()) {
        file.write(chunk);
        endsWithLineEnd = chunk.endsWith('\n') || chunk.endsWith('\r');
    }
    if (!endsWithLineEnd)
        file.write("\r\n");
    file.write(crlfLines(m_lines.mid(m_loadedCount)));
    if (!file.commit()) {
        *error = QStringLiteral("Tarnby could not write %1: %2").arg(m_path, file.errorString());
        return false;
    }
    return true;
}

} // namespace tarnby::mail
