#include "CsvText.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QTime>

namespace tarnby::tables {

QString valueText(const QVariant &value)
{
    if (!value.isValid() || value.isNull())
        return QString();
    switch (value.typeId()) {
    case QMetaType::QString:
        return value.toString();
    case QMetaType::Double:
        return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
    case QMetaType::Bool:
        return value.toBool() ? QStringLiteral("True") : QStringLiteral("False");
    case QMetaType::QDate:
        return value.toDate().toString(Qt::ISODate);
    case QMetaType::QDateTime:
        return value.toDateTime().toString(Qt::ISODate);
    case QMetaType::QTime:
        return value.toTime().toString(Qt::ISODate);
    case QMetaType::QByteArray:
        return QString::fromLatin1(value.toByteArray().toHex());
    default:
        return value.toString();
    }
}

bool csvNeedsQuotes(QByteArrayView utf8)
{
    // UTF-8 encodes these four as themselves and never as part of another
    // character, so the bytes tell.
    for (const char c : utf8) {
        if (c == ',' || c == '"' || c == '\r' || c == '\n')
            return true;
    }
    return false;
}

void appendCsvCell(QByteArray &out, QByteArrayView utf8)
{
    if (!csvNeedsQuotes(utf8)) {
        out.append(utf8);
        return;
    }
    out += '"';
    qsizetype start = 0;
    for (qsizetype i = 0; i < utf8.size(); ++i) {
        if (utf8[i] == '"') {
            out.append(utf8.sliced(start, i + 1 - start));
            out += '"';
            start = i + 1;
        }
    }
    out.append(utf8.sliced(start));
    out += '"';
}

void appendCsvRow(QByteArray &out, const Row &row)
{
    for (qsizetype i = 0; i < row.size(); ++i) {
        if (i > 0)
            out += ',';
        appendCsvCell(out, valueText(row[i]).toUtf8());
    }
    out += "\r\n";
}

} // namespace tarnby::tables
