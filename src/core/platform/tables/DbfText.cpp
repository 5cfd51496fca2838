#include "DbfText.h"

#include <QString>
#include <QStringList>

namespace tarnby::tables {

namespace {

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

} // namespace

bool appendIntegerText(QByteArray &out, QByteArrayView text)
{
    const bool negative = !text.isEmpty() && text.front() == '-';
    const QByteArrayView digits = text.sliced(negative ? 1 : 0);
    if (digits.isEmpty())
        return false;
    for (const char c : digits) {
        if (!isDigit(c))
            return false;
    }
    qsizetype start = 0;
    while (start < digits.size() - 1 && digits[start] == '0')
        ++start;
    const QByteArrayView value = digits.sliced(start);
    if (negative && value != "0")
        out += '-';
    out.append(value);
    return true;
}

bool appendDecimalText(QByteArray &out, QByteArrayView text)
{
    constexpr int maxSignificant = 15;
    const bool negative = !text.isEmpty() && text.front() == '-';
    qsizetype i = negative ? 1 : 0;
    // The significant digits, and where the decimal point falls in them:
    // the value is 0.DIGITS times ten to the power point.
    char digits[maxSignificant];
    int count = 0;
    int point = 0;
    bool seenPoint = false;
    bool anyDigit = false;
    int pendingZeros = 0; // zeros after the last other digit, not yet kept
    for (; i < text.size(); ++i) {
        const char c = text[i];
        if (c == '.') {
            if (seenPoint)
                return false;
            seenPoint = true;
            continue;
        }
        if (!isDigit(c))
            return false;
        anyDigit = true;
        if (c == '0' && count == 0) {
            // A leading zero: before the point it says nothing, after it
            // the value shrinks tenfold.
            if (seenPoint)
                --point;
            continue;
        }
        if (!seenPoint)
            ++point;
        if (c == '0') {
            ++pendingZeros;
            continue;
        }
        if (count + pendingZeros + 1 > maxSignificant)
            return false;
        for (; pendingZeros > 0; --pendingZeros)
            digits[count++] = '0';
        digits[count++] = c;
    }
    if (!anyDigit)
        return false;
    if (count == 0) {
        // Zero, negative zero too, is "0".
        out += '0';
        return true;
    }
    if (point < -300 || point > 300)
        return false;

    // The shorter of the plain and the exponent form, the plain one when
    // they are as long.
    const int exponent = point - 1;
    const int exponentDigits = qAbs(exponent) >= 100 ? 3 : 2;
    const int exponentLength = count + (count > 1 ? 1 : 0) + 2 + exponentDigits;
    const int plainLength = point <= 0 ? 2 - point + count : point < count ? count + 1 : point;
    if (negative)
        out += '-';
    if (plainLength <= exponentLength) {
        if (point <= 0) {
            out += "0.";
            out.append(-point, '0');
            out.append(digits, count);
        } else if (point < count) {
            out.append(digits, point);
            out += '.';
            out.append(digits + point, count - point);
        } else {
            out.append(digits, count);
            out.append(point - count, '0');
        }
        return true;
    }
    out += digits[0];
    if (count > 1) {
        out += '.';
        out.append(digits + 1, count - 1);
    }
    out += exponent < 0 ? "e-" : "e+";
    const int magnitude = qAbs(exponent);
    if (magnitude >= 100)
        out += char('0' + magnitude / 100);
    out += char('0' + magnitude / 10 % 10);
    out += char('0' + magnitude % 10);
    return true;
}

bool appendDateText(QByteArray &out, QByteArrayView text)
{
    if (text.size() != 8)
        return false;
    int value[8];
    for (int i = 0; i < 8; ++i) {
        if (!isDigit(text[i]))
            return false;
        value[i] = text[i] - '0';
    }
    const int year = value[0] * 1000 + value[1] * 100 + value[2] * 10 + value[3];
    const int month = value[4] * 10 + value[5];
    const int day = value[6] * 10 + value[7];
    if (year < 1 || month < 1 || month > 12 || day < 1)
        return false;
    static constexpr int monthDays[] = {31, 28, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
    const bool leap = (year % 4 == 0 && year % 100 != 0) || year % 400 == 0;
    if (day > monthDays[month - 1] + (month == 2 && leap ? 1 : 0))
        return false;
    out.append(text.sliced(0, 4));
    out += '-';
    out.append(text.sliced(4, 2));
    out += '-';
    out.append(text.sliced(6, 2));
    return true;
}

std::optional<SingleByteText> SingleByteText::of(QStringDecoder &decoder)
{
    if (!decoder.isValid())
        return std::nullopt;
    SingleByteText table;
    QStringList alone;
    for (int b = 0; b < 256; ++b) {
        const char byte = char(b);
        decoder.resetState();
        const QString text = decoder.decode(QByteArrayView(&byte, 1));
        const QByteArray utf8 = text.toUtf8();
        if (text.isEmpty() || utf8.size() > 4)
            return std::nullopt;
        std::copy(utf8.begin(), utf8.end(), table.m_utf8[b].begin());
        table.m_size[b] = quint8(utf8.size());
        alone << text;
    }
    // Every byte from 0x80 up followed by every byte: a code page whose
    // characters take two bytes decodes some of these pairs as one.
    QByteArray pairs;
    QString expected;
    for (int first = 0x80; first < 256; ++first) {
        for (int second = 0; second < 256; ++second) {
            pairs += char(first);
            pairs += char(second);
            expected += alone[first];
            expected += alone[second];
        }
    }
    decoder.resetState();
    const QString together = decoder.decode(pairs);
    decoder.resetState();
    if (together != expected)
        return std::nullopt;
    return table;
}

void SingleByteText::append(QByteArray &out, QByteArrayView bytes) const
{
    for (const char c : bytes) {
        const uchar b = uchar(c);
        out.append(m_utf8[b].data(), m_size[b]);
    }
}

} // namespace tarnby::tables
