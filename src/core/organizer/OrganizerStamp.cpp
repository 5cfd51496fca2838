#include "core/organizer/OrganizerStamp.h"

#include <QFileInfo>
#include <QLocale>

namespace tarnby::organizer {

namespace {

QString twoDigits(int value)
{
    return QStringLiteral("%1").arg(value, 2, 10, QLatin1Char('0'));
}

// The numeric value of the leading digits of text, 0 when it has none (how
// the year is weighed: "99" is 99, "9x" is 9, "" and "x" are 0).
int leadingNumber(const QString &text)
{
    int value = 0;
    for (const QChar c : text.trimmed()) {
        if (!c.isDigit() || value > 100000)
            break;
        value = value * 10 + c.digitValue();
    }
    return value;
}

} // namespace

TimeStamp SetTimeStamp(const QDateTime &now)
{
    const QDateTime moment = now.isValid() ? now : QDateTime::currentDateTime();
    const QDate date = moment.date();
    const QTime time = moment.time();
    TimeStamp stamp;
    const QString hour = twoDigits(time.hour());
    const QString minute = twoDigits(time.minute());
    const QString second = twoDigits(time.second());
    stamp.StampTime = hour + minute + second;

    int shownHour = time.hour();
    QString half = QStringLiteral("AM");
    if (shownHour > 12) {
        half = QStringLiteral("PM");
        shownHour -= 13;
    }
    const QString systemDate = twoDigits(date.month()) + QLatin1Char('-') + twoDigits(date.day()) + QLatin1Char('-')
        + QStringLiteral("%1").arg(date.year(), 4, 10, QLatin1Char('0'));
    stamp.StampDisplay = systemDate + QLatin1Char(' ') + QString::number(shownHour) + QLatin1Char(':') + minute
        + QLatin1Char(':') + second + QLatin1Char(' ') + half;
    stamp.StampDate = QStringLiteral("%1").arg(date.year(), 4, 10, QLatin1Char('0')) + twoDigits(date.month())
        + twoDigits(date.day());
    stamp.StampDateTime = stamp.StampDate + stamp.StampTime;
    return stamp;
}

QString DateToSortKey(const QString &date)
{
    const qsizetype first = date.indexOf(QLatin1Char('/'));
    const qsizetype second = first < 0 ? -1 : date.indexOf(QLatin1Char('/'), first + 1);
    const qsizetype last = date.lastIndexOf(QLatin1Char('/'));
    QString month = first < 0 ? date : date.left(first);
    QString day = first < 0 ? QString() : (second < 0 ? date.mid(first + 1) : date.mid(first + 1, second - first - 1));
    const QString year = last < 0 ? QString() : date.mid(last + 1);
    if (month.size() == 1)
        month.prepend(QLatin1Char('0'));
    if (day.size() == 1)
        day.prepend(QLatin1Char('0'));
    const QString century = leadingNumber(year) < 81 ? QStringLiteral("20") : QStringLiteral("19");
    return century + year + month + day;
}

QString fileDateText(const QDateTime &moment)
{
    const QDate d = moment.date();
    const QString date = QStringLiteral("%1/%2/%3").arg(d.month()).arg(d.day()).arg(d.year() % 100, 2, 10, QLatin1Char('0'));
    const QTime t = moment.time();
    if (t.hour() == 0 && t.minute() == 0 && t.second() == 0)
        return date;
    // The system's long time: the hour on a 12-hour clock without padding.
    const int hour12 = t.hour() % 12 == 0 ? 12 : t.hour() % 12;
    return date + QStringLiteral(" %1:%2:%3 %4")
                      .arg(hour12)
                      .arg(t.minute(), 2, 10, QLatin1Char('0'))
                      .arg(t.second(), 2, 10, QLatin1Char('0'))
                      .arg(t.hour() < 12 ? QLatin1String("AM") : QLatin1String("PM"));
}

bool fileDateFields(const QString &path, QString *date, QString *time)
{
    date->clear();
    time->clear();
    const QFileInfo info(path);
    if (!info.exists())
        return false;
    const QString text = fileDateText(info.lastModified());
    const qsizetype blank = text.indexOf(QLatin1Char(' '));
    *date = DateToSortKey(blank < 0 ? text : text.left(blank));
    *time = blank < 0 ? QString() : text.mid(blank + 1);
    return true;
}

QString entryFullName(const QString &location, const QString &fileName)
{
    if (location.trimmed() == QLatin1String("/"))
        return location.trimmed() + fileName;
    return location + QLatin1Char('/') + fileName;
}

SplitName splitFullName(const QString &path)
{
    const qsizetype slash = path.lastIndexOf(QLatin1Char('/'));
    if (slash < 0)
        return {QString(), path};
    return {slash == 0 ? QStringLiteral("/") : path.left(slash), path.mid(slash + 1)};
}

QString folderKeyword(const QString &folder)
{
    QString f = folder;
    while (f.size() > 1 && f.endsWith(QLatin1Char('/')))
        f.chop(1);
    if (f == QLatin1String("/"))
        return {};
    return f.mid(f.lastIndexOf(QLatin1Char('/')) + 1);
}

QString sortKeyToDisplayDate(const QString &key)
{
    if (key.size() < 8)
        return key;
    return key.mid(4, 2) + QLatin1Char('/') + key.mid(6, 2) + QLatin1Char('/') + key.left(4);
}

} // namespace tarnby::organizer
