#include "CsvText.h"

#include <QDate>
#include <QDateTime>
#include <QLocale>
#include <QTime>

#include <cstring>

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

CellBytes scanCell(QByteArrayView bytes)
{
    // Eight bytes at a time: a word has a byte equal to c when word ^ c...c
    // has a zero byte, which (x - 0x01...01) & ~x & 0x80...80 finds.
    constexpr quint64 ones = 0x0101010101010101ULL;
    constexpr quint64 highBits = 0x8080808080808080ULL;
    const auto hasByte = [](quint64 word, uchar c) {
        const quint64 x = word ^ (ones * c);
        return (x - ones) & ~x & highBits;
    };
    quint64 high = 0;
    quint64 special = 0;
    const char *data = bytes.data();
    const qsizetype size = bytes.size();
    qsizetype i = 0;
    for (; i + 8 <= size; i += 8) {
        quint64 word;
        std::memcpy(&word, data + i, 8);
        high |= word & highBits;
        special |= hasByte(word, ',') | hasByte(word, '"') | hasByte(word, '\r') | hasByte(word, '\n');
    }
    for (; i < size; ++i) {
        const char c = data[i];
        high |= uchar(c) & 0x80;
        special |= c == ',' || c == '"' || c == '\r' || c == '\n';
    }
    return CellBytes{high == 0, special != 0};
}

void appendCsvCell(QByteArray &out, QByteArrayView utf8)
{
    // UTF-8 encodes the four characters that call for quotes as themselves
    // and never as part of another character, so the bytes tell.
    if (!scanCell(utf8).needsQuotes) {
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
