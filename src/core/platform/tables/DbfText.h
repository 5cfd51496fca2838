#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QStringDecoder>

#include <array>
#include <optional>

// The text of dBASE cells made straight from their bytes, for the CSV
// export: each function gives exactly what valueText gives for the value the
// reader decodes from the same bytes, or declines (returns false) when the
// bytes are of a shape it does not handle, and the caller takes the long way.
namespace tarnby::tables {

// A numeric cell (its blanks trimmed) read as an integer: an optional minus
// and digits. Appends the integer's decimal form ("007" gives "7", "-0"
// gives "0").
bool appendIntegerText(QByteArray &out, QByteArrayView text);

// A numeric cell (its blanks trimmed) read as a double: an optional minus,
// digits and at most one decimal point, with at most 15 significant digits
// (any such number reads back to its own digits). Appends the double's
// shortest form: "1.50" gives "1.5", "100000" gives "1e+05", "-0.00" gives
// "0".
bool appendDecimalText(QByteArray &out, QByteArrayView text);

// A date cell of eight digits, YYYYMMDD, naming a day that exists. Appends
// "YYYY-MM-DD".
bool appendDateText(QByteArray &out, QByteArrayView text);

// The UTF-8 text of every byte of a single-byte code page, so that text in
// it is converted a byte at a time.
class SingleByteText
{
public:
    // The bytes as decoder decodes them; nothing when the decoder is not of
    // a single-byte code page (a byte gives no character, or text decodes
    // otherwise than its bytes one by one).
    static std::optional<SingleByteText> of(QStringDecoder &decoder);

    void append(QByteArray &out, QByteArrayView bytes) const;

private:
    std::array<std::array<char, 4>, 256> m_utf8{};
    std::array<quint8, 256> m_size{};
};

} // namespace tarnby::tables
