#include "core/settings/WindowColors.h"

#include "core/settings/LineFile.h"
#include "core/settings/ProgramOptions.h"

#include <QDir>
#include <QLocale>

#include <cmath>

namespace tarnby::settings {

namespace {

using S = Swatch;

const ColorLineRow ColorLines[] = {
    {1, S::MainWindowBack, "Main Window background", false, 0xFFD3CE},
    {2, S::MainWindowText, "Main Window text", false, 0x000000},
    {3, S::ListBoxesBack, "List Boxes background", false, 0xEAFFEA},
    {4, S::ListBoxesText, "List Boxes text", false, 0x800000},
    {5, S::EntryFieldsBack, "Entry Fields background", false, 0xC0C0C0},
    {6, S::EntryFieldsText, "Entry Fields text", true, 0x000000},
    {7, S::DisplayFieldsBack, "Display Fields background", false, 0xE0E0E0},
    {8, S::DisplayFieldsText, "Display Fields text", false, 0x000000},
    {9, S::SelectionWindowsBack, "Selection Windows background", false, 0xFFFFC0},
    {10, S::SelectionWindowsText, "Selection Windows text", false, 0x000000},
    {11, S::DatabaseBrowserBack, "Database Browser background", false, 0xE0E0E0},
    {12, S::DatabaseBrowserText, "Database Browser text", true, 0x000000},
    {13, S::ThumbNailsBack, "ThumbNails background", false, 0xFFC0C0},
    {14, S::ThumbNailsText, "ThumbNails text", false, 0x800000},
    {15, S::HelpTipsBack, "Help Quick Tips background", false, 0xC0FFC0},
    {16, S::HelpTipsText, "Help Quick Tips text", true, 0x800000},
    {17, S::MenusBack, "Menus and ToolBars background", false, 0x800000},
    {18, S::MenusText, "Menus and ToolBars text", true, 0xFFC0C0},
    {19, S::ThumbNailWindowBack, "ThumbNail Window background", false, std::nullopt},
    {20, S::ThumbNailWindowText, "ThumbNail Window text and Selection Item background", false, 0x8080FF},
    {21, S::PictureWindowsBack, "Picture Windows background", false, 0xFFC0C0},
    {22, S::SelectionButtonsBack, "Selection Buttons background", false, 0x8000000F},
};
static_assert(std::size(ColorLines) == ColorsFileLineCount);

// The line index (from 0) that stores each swatch.
int lineIndexOf(Swatch s)
{
    if (s == Swatch::SelectionItemBack)
        s = Swatch::ThumbNailWindowText;
    for (int i = 0; i < ColorsFileLineCount; ++i) {
        if (ColorLines[i].swatch == s)
            return i;
    }
    Q_UNREACHABLE();
    return 0;
}

// A colour number as the file holds it. Whole numbers may be written signed
// (system colours come out negative) or unsigned; lines not read as integers
// also take a number with a fraction, rounded as a colour number is when used.
std::optional<ColorNumber> parseColor(const QString &text, bool integerOnly)
{
    const QString t = text.trimmed();
    bool ok = false;
    const qint64 whole = QLocale::c().toLongLong(t, &ok);
    if (ok) {
        if (whole < qint64(INT32_MIN) || whole > qint64(UINT32_MAX))
            return std::nullopt;
        return ColorNumber(quint32(whole));
    }
    if (integerOnly)
        return std::nullopt;
    const double real = QLocale::c().toDouble(t, &ok);
    if (!ok || !std::isfinite(real))
        return std::nullopt;
    const double rounded = std::round(real);
    if (rounded < double(INT32_MIN) || rounded > double(UINT32_MAX))
        return std::nullopt;
    return ColorNumber(quint32(qint64(rounded)));
}

} // namespace

const std::array<Swatch, SwatchCount> SwatchStoreOrder = {
    S::MainWindowBack, S::MainWindowText, S::MenusBack, S::MenusText,
    S::ListBoxesBack, S::ListBoxesText, S::EntryFieldsBack, S::EntryFieldsText,
    S::DisplayFieldsBack, S::DisplayFieldsText, S::SelectionWindowsBack, S::SelectionWindowsText,
    S::DatabaseBrowserBack, S::DatabaseBrowserText, S::ThumbNailsBack, S::ThumbNailsText,
    S::ThumbNailWindowBack, S::ThumbNailWindowText, S::HelpTipsBack, S::HelpTipsText,
    S::SelectionItemBack, S::PictureWindowsBack, S::SelectionButtonsBack,
};

std::span<const ColorLineRow> colorsFileTable()
{
    return ColorLines;
}

WindowColors::WindowColors() = default;

ColorNumber WindowColors::swatch(Swatch s) const
{
    return m_values.at(lineIndexOf(s));
}

void WindowColors::setSwatch(Swatch s, ColorNumber value)
{
    m_values.at(lineIndexOf(s)) = value;
}

std::array<ColorNumber, SwatchCount> WindowColors::swatches() const
{
    std::array<ColorNumber, SwatchCount> all{};
    for (int i = 0; i < SwatchCount; ++i)
        all[i] = swatch(Swatch(i));
    return all;
}

void WindowColors::storeSwatches(const std::array<ColorNumber, SwatchCount> &shown)
{
    for (const Swatch s : SwatchStoreOrder)
        setSwatch(s, shown[int(s)]);
}

void setDefaultColors(WindowColors &colors, ProgramOptions &options)
{
    for (const ColorLineRow &row : ColorLines) {
        if (row.defaultValue)
            colors.setValue(row.line - 1, *row.defaultValue);
    }
    options.boldType = false;
}

ColorsReadReport readWindowColors(const QString &folder, WindowColors &colors)
{
    ColorsReadReport report;
    const LineFileRead file = readLineFile(QDir(folder).filePath(ColorsFileName), ColorsFileLineCount);
    report.found = file.found;
    report.linesRead = int(file.lines.size());
    for (const ColorLineRow &row : ColorLines) {
        const int i = row.line - 1;
        const std::optional<ColorNumber> v =
            i < file.lines.size() ? parseColor(file.lines.at(i), row.readAsInteger) : std::nullopt;
        if (v)
            colors.setValue(i, *v);
        else
            report.keptDefault << QString::fromLatin1(row.name);
    }
    return report;
}

QStringList colorsFileLines(const WindowColors &colors)
{
    // Written as signed 32-bit numbers, the form the file has always had:
    // the button face system colour is -2147483633.
    QStringList lines;
    for (int i = 0; i < ColorsFileLineCount; ++i)
        lines << QString::number(qint32(colors.value(i)));
    return lines;
}

bool writeWindowColors(const QString &folder, const WindowColors &colors, QString *error)
{
    return writeLineFile(QDir(folder).filePath(ColorsFileName), colorsFileLines(colors), error);
}

QColor toQColor(ColorNumber value, const QPalette &palette)
{
    if (value & 0x80000000u) {
        // System colours by their index.
        switch (value & 0xFFu) {
        case 5: return palette.color(QPalette::Base);
        case 8: return palette.color(QPalette::Text);
        case 13: return palette.color(QPalette::Highlight);
        case 14: return palette.color(QPalette::HighlightedText);
        case 15: return palette.color(QPalette::Button);
        case 18: return palette.color(QPalette::ButtonText);
        default: return palette.color(QPalette::Window);
        }
    }
    return QColor(int(value & 0xFF), int((value >> 8) & 0xFF), int((value >> 16) & 0xFF));
}

ColorNumber fromQColor(const QColor &color)
{
    const QColor c = color.toRgb();
    return ColorNumber(c.red()) | (ColorNumber(c.green()) << 8) | (ColorNumber(c.blue()) << 16);
}

} // namespace tarnby::settings
