#pragma once

#include <QString>
#include <QtGlobal>

// How the options ask for text to be drawn: flat, or raised or inset into
// the surface by one or two pixels. Two options give it: the menu text style
// (line 22 of "Options.INI", the position of the chosen RDMENU option) for
// the menus and toolbars, and the table browser's text style (line 23, "F",
// "R" or "I") with its row height (line 21, twips) for every table grid.
//
// The table view reads its look through tableBrowserLook() only, so that the
// meaning of the two table lines is written down once, here.
namespace tarnby::settings {

struct ProgramOptions;

enum class ReliefKind { Flat, Raised, Inset };

struct TextRelief {
    ReliefKind kind = ReliefKind::Flat;
    int depth = 0; // pixels the highlight and the shadow stand off the text; 0 when flat

    bool isFlat() const { return kind == ReliefKind::Flat || depth <= 0; }
    bool operator==(const TextRelief &) const = default;
};

// The RDMENU positions: 0 flat, 1 light raised, 2 heavy inset, 3 light
// inset, 4 heavy raised ("light" one pixel, "heavy" two). Anything else is
// flat.
TextRelief menuTextRelief(qint16 menuTextStyle);

// "R" raised, "I" inset (one pixel each), anything else flat.
TextRelief tableTextRelief(const QString &letter);

// What a table grid takes from the options.
struct TableBrowserLook {
    TextRelief text;
    int rowHeightTwips = 300; // 250 to 600
    // The row height in pixels at dpi.
    int rowHeightPixels(double dpi) const;
};
TableBrowserLook tableBrowserLook(const ProgramOptions &options);

} // namespace tarnby::settings
