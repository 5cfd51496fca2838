#pragma once

#include "core/settings/LineFile.h"

#include <QLocale>
#include <QString>
#include <QStringList>

#include <cmath>
#include <span>
#include <variant>

// A settings file described as one ordered table: each row names a line, the
// member of a value object that holds it, how the line is read and its
// default. Reader, writer and defaults all walk the same rows, so the line
// order is written down once.
namespace tarnby::settings {

// How a line is read. A line that cannot be read this way (or that lies
// outside its row's range or choices) keeps the member's default.
enum class LineType {
    Text,      // any text; kept exactly as read
    Number,    // text that must hold a number; kept exactly as read
    Integer16, // a whole number from -32768 to 32767
    Integer32, // a whole number that fits 32 bits
    Real,      // a number, kept as a double
    Boolean,   // True/False (also #TRUE#/#FALSE#, -1/0/1); written True or False
    Choice,    // one of the row's choices, compared without regard to case
};

template<class S>
using LineMember = std::variant<QString S::*, double S::*, qint32 S::*, qint16 S::*, bool S::*>;

template<class S>
struct LineRow {
    int line;               // counting from 1
    const char *name;       // for reports and tests
    LineType type;
    LineMember<S> member;
    const char *defaultText; // the default as it stands in the file
    double minimum = 0;     // numbers: accepted range when minimum < maximum
    double maximum = 0;
    const char *choices = nullptr; // Choice: "F|R|I"
};

// What a read learnt, for the start-up log and for tests. A read never fails:
// what cannot be read keeps its default.
struct TableReadReport {
    bool found = false;
    int linesRead = 0;
    QStringList keptDefault; // names of rows that were missing or unreadable
};

namespace detail {

inline bool parseNumber(const QString &text, double *value)
{
    bool ok = false;
    const double v = QLocale::c().toDouble(text.trimmed(), &ok);
    if (!ok || !std::isfinite(v))
        return false;
    *value = v;
    return true;
}

inline bool parseWhole(const QString &text, qint64 *value)
{
    bool ok = false;
    const qint64 v = QLocale::c().toLongLong(text.trimmed(), &ok);
    if (!ok)
        return false;
    *value = v;
    return true;
}

inline bool inRange(double v, double minimum, double maximum)
{
    return !(minimum < maximum) || (v >= minimum && v <= maximum);
}

} // namespace detail

// Sets the member of row from text when text can be read as the row says;
// returns false and leaves the member unchanged otherwise.
template<class S>
bool parseLine(S &target, const LineRow<S> &row, const QString &text)
{
    switch (row.type) {
    case LineType::Text:
        if (auto m = std::get_if<QString S::*>(&row.member)) {
            target.**m = text;
            return true;
        }
        return false;
    case LineType::Number: {
        double v = 0;
        auto m = std::get_if<QString S::*>(&row.member);
        if (!m || !detail::parseNumber(text, &v) || !detail::inRange(v, row.minimum, row.maximum))
            return false;
        target.**m = text;
        return true;
    }
    case LineType::Real: {
        double v = 0;
        auto m = std::get_if<double S::*>(&row.member);
        if (!m || !detail::parseNumber(text, &v) || !detail::inRange(v, row.minimum, row.maximum))
            return false;
        target.**m = v;
        return true;
    }
    case LineType::Integer16:
    case LineType::Integer32: {
        qint64 v = 0;
        if (!detail::parseWhole(text, &v))
            return false;
        const qint64 low = row.type == LineType::Integer16 ? -32768 : qint64(INT32_MIN);
        const qint64 high = row.type == LineType::Integer16 ? 32767 : qint64(INT32_MAX);
        if (v < low || v > high || !detail::inRange(double(v), row.minimum, row.maximum))
            return false;
        if (auto m = std::get_if<qint16 S::*>(&row.member)) {
            if (v < -32768 || v > 32767)
                return false;
            target.**m = qint16(v);
            return true;
        }
        if (auto m = std::get_if<qint32 S::*>(&row.member)) {
            target.**m = qint32(v);
            return true;
        }
        return false;
    }
    case LineType::Boolean: {
        auto m = std::get_if<bool S::*>(&row.member);
        if (!m)
            return false;
        const QString t = text.trimmed();
        if (t.compare(QLatin1String("True"), Qt::CaseInsensitive) == 0 || t.compare(QLatin1String("#TRUE#"), Qt::CaseInsensitive) == 0
            || t == QLatin1String("-1") || t == QLatin1String("1")) {
            target.**m = true;
            return true;
        }
        if (t.compare(QLatin1String("False"), Qt::CaseInsensitive) == 0 || t.compare(QLatin1String("#FALSE#"), Qt::CaseInsensitive) == 0
            || t == QLatin1String("0")) {
            target.**m = false;
            return true;
        }
        return false;
    }
    case LineType::Choice: {
        auto m = std::get_if<QString S::*>(&row.member);
        if (!m || !row.choices)
            return false;
        const QStringList choices = QString::fromLatin1(row.choices).split(QLatin1Char('|'));
        for (const QString &c : choices) {
            if (c.compare(text.trimmed(), Qt::CaseInsensitive) == 0) {
                target.**m = c;
                return true;
            }
        }
        return false;
    }
    }
    return false;
}

// The line that the writer puts in the file for row.
template<class S>
QString formatLine(const S &source, const LineRow<S> &row)
{
    return std::visit(
        [&](auto member) -> QString {
            const auto &value = source.*member;
            using T = std::decay_t<decltype(value)>;
            if constexpr (std::is_same_v<T, QString>) {
                // A value must never break the file's shape of one value a
                // line, nor stop the next read at a control character.
                QString line = value;
                for (QChar &c : line) {
                    if ((c.unicode() < 0x20 && c != QLatin1Char('\t')) || c.unicode() == 0x7f)
                        c = QLatin1Char(' ');
                }
                return line;
            }
            else if constexpr (std::is_same_v<T, bool>)
                return value ? QStringLiteral("True") : QStringLiteral("False");
            else if constexpr (std::is_same_v<T, double>)
                return QLocale::c().toString(value, 'g', 15);
            else
                return QString::number(value);
        },
        row.member);
}

// Sets every member that rows name to its default.
template<class S>
void applyDefaults(S &target, std::span<const LineRow<S>> rows)
{
    for (const LineRow<S> &row : rows) {
        const bool ok = parseLine(target, row, QString::fromUtf8(row.defaultText));
        Q_ASSERT_X(ok, "applyDefaults", row.name);
        Q_UNUSED(ok);
    }
}

// Reads path into target line by line in table order. Rows whose line is
// missing or unreadable keep the value target already holds.
template<class S>
TableReadReport readTable(const QString &path, std::span<const LineRow<S>> rows, S &target)
{
    TableReadReport report;
    const LineFileRead file = readLineFile(path, int(rows.size()));
    report.found = file.found;
    report.linesRead = int(file.lines.size());
    for (const LineRow<S> &row : rows) {
        const int i = row.line - 1;
        if (i >= file.lines.size() || !parseLine(target, row, file.lines.at(i)))
            report.keptDefault << QString::fromLatin1(row.name);
    }
    return report;
}

template<class S>
QStringList tableLines(std::span<const LineRow<S>> rows, const S &source)
{
    QStringList lines;
    for (const LineRow<S> &row : rows)
        lines << formatLine(source, row);
    return lines;
}

// Writes every row of source, in table order, atomically (see writeLineFile).
template<class S>
bool writeTable(const QString &path, std::span<const LineRow<S>> rows, const S &source, QString *error)
{
    return writeLineFile(path, tableLines(rows, source), error);
}

} // namespace tarnby::settings
