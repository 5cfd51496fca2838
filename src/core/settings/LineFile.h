#pragma once

#include <QString>
#include <QStringList>

// The program's own data files are plain text, one value or entry a line, no
// header and no keys. These two functions are the only way the settings code
// touches them, so that every settings file shares the same limits on what it
// accepts and the same guarantee on how it is written.
namespace tarnby::settings {

// Upper bounds on what a read looks at. A settings file is a few hundred
// bytes; anything beyond these limits is not a settings file and its tail is
// never read, so a 50 MB file costs no more than a small one.
inline constexpr qint64 MaxLineFileBytes = 1 << 20;
inline constexpr int MaxLineLength = 4096;

struct LineFileRead {
    bool found = false;     // the file exists and could be opened
    QStringList lines;      // the lines read, without their line ends
    // Why reading stopped before the end of the file: empty when it ran to
    // the end (or to maxLines). Reading stops at a line that is not text (a
    // control character such as NUL), at a line longer than MaxLineLength and
    // at MaxLineFileBytes; the lines before it are kept.
    QString stoppedBecause;
};

// Reads at most maxLines lines of path, looking at no more than maxBytes. Accepts CR LF, LF and CR line ends,
// and a final line without a line end; a line end at the very end of the
// file does not start another (empty) line, so an empty file has no lines and
// a file of one CR LF has one empty line. Text is taken as UTF-8, or as
// Latin-1 when it is not valid UTF-8. Never fails: a missing or unreadable
// file gives found == false and no lines. Synchronous; cheap.
LineFileRead readLineFile(const QString &path, int maxLines, qint64 maxBytes = MaxLineFileBytes);

// Writes lines to path, each ended by CR LF, in UTF-8, atomically: the file is
// written beside the target and renamed over it only when complete, so an
// interrupted write leaves the old file in place. Returns false with a whole
// sentence in *error when the file cannot be written; the old file is then
// untouched.
bool writeLineFile(const QString &path, const QStringList &lines, QString *error);

} // namespace tarnby::settings
