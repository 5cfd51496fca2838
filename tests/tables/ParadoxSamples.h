#pragma once

#include <QByteArray>
#include <QList>

// Small Paradox tables built byte by byte, for the tests and the fuzz seeds.
namespace paradoxsamples {

// An unkeyed Paradox 5 table "sample" of a Long field "Id" and an Alpha
// field "Name" of 8 (record n holds n and "row n"), in 1 KB blocks of
// perBlock records each, chained in the order chain gives (default: file
// order).
struct Sample {
    int records = 5;
    int perBlock = 2;
    QList<int> chain;
    // When not empty, a third field "Amount", BCD with bcdDecimals digits
    // after the point; record n holds bcd[n % size] (17 bytes each).
    QList<QByteArray> bcd;
    int bcdDecimals = 2;
};

QByteArray paradoxTable(const Sample &s);
QByteArray paradoxLong(qint32 value);
// A BCD value: digits (with an optional point) as Paradox stores them.
QByteArray paradoxBcd(const QByteArray &number, int decimals);

} // namespace paradoxsamples
