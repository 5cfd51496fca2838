#pragma once

#include <QString>
#include <QStringList>

#include <optional>

// The quick tips: one hint at a time, drawn at random from "TIPHELP.TXT" in
// the program folder, one tip a line (an empty line is a tip too).
namespace tarnby::tools {

inline constexpr const char *TipsFileName = "TIPHELP.TXT";
inline constexpr const char *TipsLoadError = "Error Loading Quick Tips File";
inline constexpr int MaxTips = 10000;

// What the label says when the tips file is missing: two paragraphs.
QString missingTipsText();

struct TipsLoad {
    bool ok = false;       // false: no path, or no such file
    QStringList tips;
    bool readError = false; // the file stopped reading part-way; tips holds what came before
};

// Reads every line of the tips file at path.
TipsLoad LoadTips(const QString &path);

// The tip index (from 1) for a random fraction r in [0, 1): the integer part
// of r x count + 1 when that is between 1 and count, else 1.
int tipIndexFromFraction(double r, int count);

// The tip to show for index (from 1); nothing when there are no tips or the
// index is past the last, and the label keeps what it says.
std::optional<QString> tipToShow(const QStringList &tips, int index);

// A new random index for count tips, the generator seeded from the clock.
int randomTipIndex(int count);

// The option line of "Options.INI" that keeps the start-up choice: "1" when
// the tips are not to be shown at start-up.
bool showTipsAtStartup(const QString &optionValue);
QString startupOptionValue(bool doNotShow);

} // namespace tarnby::tools
