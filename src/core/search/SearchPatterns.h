#pragma once

#include <QString>

#include <array>
#include <optional>
#include <span>

// What the search window offers: five tabs of choices, each with the caption
// of its option button, its tooltip, the pattern it searches for and the
// entry of the browser's filter box that the choice moves the box to.
// The window shows these tables; the pattern routine below turns the user's
// choice into a search pattern.
namespace tarnby::search {

enum class SearchTab { Pictures, MultiMedia, Text, Database, Miscellaneous };
inline constexpr int SearchTabCount = 5;

struct SearchChoice {
    const char *caption;
    const char *tooltip;
    const char *pattern; // nullptr for the typed-name row
    int filterIndex;     // entry of the filter box; -1: the box stays
};

struct SearchTabTable {
    SearchTab tab;
    const char *caption;   // "Pictures", "MultiMedia", ...
    const char *arrayName; // object name of the tab's option buttons ("RDPICT", ...)
    std::span<const SearchChoice> choices;
};

const std::array<SearchTabTable, SearchTabCount> &searchTabs();
const SearchTabTable &searchTab(SearchTab tab);
// The tab whose caption is caption; nullopt for any other text.
std::optional<SearchTab> searchTabByCaption(const QString &caption);

// The Miscellaneous row whose pattern is the name typed by the user.
inline constexpr int TypedNameIndex = 5;

struct PatternChoice {
    QString pattern;
    int filterIndex = -1; // -1: the filter box stays where it is
    QString frameCaption; // "Selected: " + the button's caption
};

// The pattern routine of one tab: the choice at chosenIndex, when that tab's
// button of that index is set (buttonSet). One chosen index serves all tabs,
// so an index clicked on another tab picks this tab's row of the same index,
// or nothing when this tab's button is not set or the tab has no such row.
// The typed-name row gives typedName as it stands, except a single blank,
// which chooses nothing.
std::optional<PatternChoice> choosePattern(SearchTab tab, int chosenIndex, bool buttonSet, const QString &typedName);

} // namespace tarnby::search
