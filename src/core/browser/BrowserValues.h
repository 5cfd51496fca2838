#pragma once

#include <QImage>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringList>

#include <optional>

// Small values of the browser window that live in the settings files: the
// working-folder lines, the view style of the file list, the pane sizes and
// the thumbnail size and colour depth.
namespace tarnby {

// ---- working folders ------------------------------------------------------

// One line of the working-folder list: the folder's path, " (", the number of
// the filter chosen for it, ")". "/home/ann/Pictures (0)".
struct WorkingFolder {
    QString folder;
    int filterIndex = -1; // -1 when the line carries no usable filter number
};

// Splits a line back into folder and filter number. Only the last " (n)"
// counts, so a folder whose own name holds brackets survives. A line without
// the bracketed number is taken as a bare folder; an empty line gives nothing.
std::optional<WorkingFolder> parseWorkingFolderLine(const QString &line);
QString workingFolderLine(const WorkingFolder &folder);

// ---- view style -------------------------------------------------------------

enum class ViewStyle { LargeIcons = 0, SmallIcons = 1, List = 2, Details = 3 };

// The option line holds the style's number; anything else reads as Details.
ViewStyle viewStyleFromOption(const QString &value);
QString viewStyleToOption(ViewStyle style);

// ---- panes ------------------------------------------------------------------

// The tree and list panes are kept as left, top and width in twips, three
// values per pane. Returns the two widths in pixels, or nullopt when the saved
// values are missing or unusable.
struct PaneValues {
    QString left, top, width;
};
std::optional<QList<int>> paneWidthsFromOptions(const PaneValues &tree, const PaneValues &list, double dpi);
PaneValues paneValues(int leftPixels, int topPixels, int widthPixels, double dpi);

// ---- window geometry ----------------------------------------------------------

// The browser window's left, top, width and height in twips, as the options
// keep them. Returns the rectangle in pixels, or nullopt when a value is not
// a number or the size is not positive. The caller keeps it on screen
// (clampToScreen): the values may come from a larger screen or a bad file.
struct WindowGeometryValues {
    QString left, top, width, height;
};
std::optional<QRect> windowRectFromOptions(const WindowGeometryValues &values, double dpi);
WindowGeometryValues windowGeometryValues(const QRect &pixels, double dpi);

// How the browser window was left: the options keep it in the line that is
// the browser's own, as "0" (normal) or "2" (maximized). A minimized window
// comes back normal; anything unreadable reads as normal.
enum class WindowShow { Normal = 0, Maximized = 2 };
WindowShow windowShowFromOption(const QString &value);
QString windowShowToOption(WindowShow show);

// The folder tree's share of the width: the two pane widths for a splitter of
// totalWidth pixels when the tree takes percent of it (clamped to 20 to 80).
QList<int> paneWidthsFromPercent(int percent, int totalWidth);
// The tree's share of treeWidth + listWidth, in percent, rounded and kept
// within 20 to 80 (the range the options window accepts).
int treePercent(int treeWidth, int listWidth);

// ---- thumbnails ---------------------------------------------------------------

// The thumbnail box in pixels from the option's centimetres (0.5 to 5.5 cm;
// out-of-range values are clamped into it).
QSize thumbnailBox(double widthCm, double heightCm, double dpi);
// "24 Bits", "1 Bit" -> 24, 1; unknown text gives 24.
int thumbnailBitsFromOption(const QString &value);
// The image reduced to bits per pixel: 32 and 24 keep full colour (24 drops
// alpha), 16 is RGB565, 8 to 2 a palette of 2^bits colours, 1 black and
// white, dithered.
QImage reduceColourDepth(const QImage &image, int bits);

} // namespace tarnby
