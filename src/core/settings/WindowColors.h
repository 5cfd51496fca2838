#pragma once

#include <QColor>
#include <QPalette>
#include <QString>

#include <array>
#include <optional>
#include <span>

// The window colours: a background colour for each kind of window or field
// and, for most, a text colour, kept in "Colors.INI" (22 lines) in the program
// folder and applied by every window when it is shown (ui/settings/ApplyColors.h).
namespace tarnby::settings {

struct ProgramOptions;

// The 23 swatches of the colours window. 0 to 12 are backgrounds, 13 to 22
// the text colours of rows 0 to 9.
enum class Swatch {
    MainWindowBack = 0,
    MenusBack = 1,
    ListBoxesBack = 2,
    EntryFieldsBack = 3,
    DisplayFieldsBack = 4,
    SelectionWindowsBack = 5,
    DatabaseBrowserBack = 6,
    ThumbNailsBack = 7,
    ThumbNailWindowBack = 8,
    HelpTipsBack = 9,
    SelectionItemBack = 10,
    PictureWindowsBack = 11,
    SelectionButtonsBack = 12,
    MainWindowText = 13,
    MenusText = 14,
    ListBoxesText = 15,
    EntryFieldsText = 16,
    DisplayFieldsText = 17,
    SelectionWindowsText = 18,
    DatabaseBrowserText = 19,
    ThumbNailsText = 20,
    ThumbNailWindowText = 21,
    HelpTipsText = 22,
};
inline constexpr int SwatchCount = 23;
inline constexpr int ColorsFileLineCount = 22;

// A colour number: 24-bit RGB with red in the low byte, then green, then
// blue. A number with the high bit set names a system colour by its low
// byte (0x8000000F is the button face); toQColor() resolves it from a palette.
using ColorNumber = quint32;

// One line of "Colors.INI": the swatch it stores, whether it is read as a
// 32-bit integer (a whole number) or as a number that may carry a fraction,
// and its default. Line 20 stores swatch 21 and swatch 10, which share it.
struct ColorLineRow {
    int line;          // counting from 1
    Swatch swatch;
    const char *name;
    bool readAsInteger;
    // Set at every start before the file is read. The ThumbNail Window
    // background has none and stays black until the user sets it.
    std::optional<ColorNumber> defaultValue;
};

std::span<const ColorLineRow> colorsFileTable();

// The order in which the colours window stores its swatches on OK. Swatch 10
// comes after swatch 21, so of the two that share a value the "Selection
// Item" colour wins.
extern const std::array<Swatch, SwatchCount> SwatchStoreOrder;

// The stored colours: 22 values, one a line of "Colors.INI". Swatches 10 and
// 21 read and write the same value.
class WindowColors
{
public:
    WindowColors(); // all zero (black); call setDefaultColors() for the defaults

    ColorNumber swatch(Swatch s) const;
    void setSwatch(Swatch s, ColorNumber value);
    ColorNumber value(int lineIndex) const { return m_values.at(lineIndex); }
    void setValue(int lineIndex, ColorNumber v) { m_values.at(lineIndex) = v; }

    // The 23 swatches, each from its stored value (10 and 21 the same).
    std::array<ColorNumber, SwatchCount> swatches() const;
    // Stores the 23 swatch colours in SwatchStoreOrder.
    void storeSwatches(const std::array<ColorNumber, SwatchCount> &shown);

    bool operator==(const WindowColors &) const = default;

private:
    std::array<ColorNumber, ColorsFileLineCount> m_values{};
};

// The routine run at every start before "Colors.INI" is read: sets every
// colour that has a default (the ThumbNail Window background keeps what it
// had) and clears the bold-type option.
void setDefaultColors(WindowColors &colors, ProgramOptions &options);

inline const QString ColorsFileName = QStringLiteral("Colors.INI");

struct ColorsReadReport {
    bool found = false;
    int linesRead = 0;
    QStringList keptDefault; // names of lines missing or unreadable
};

// Reads "Colors.INI" from folder into colors; what the file lacks or cannot
// give keeps the value colors already holds.
ColorsReadReport readWindowColors(const QString &folder, WindowColors &colors);
// Writes all 22 lines, atomically; false with a whole sentence in *error.
bool writeWindowColors(const QString &folder, const WindowColors &colors, QString *error);
QStringList colorsFileLines(const WindowColors &colors);

// Conversions between colour numbers and QColor. System colours take their
// value from palette.
QColor toQColor(ColorNumber value, const QPalette &palette = QPalette());
ColorNumber fromQColor(const QColor &color);

} // namespace tarnby::settings
