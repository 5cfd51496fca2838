#pragma once

#include <QString>
#include <QStringList>

// The settings files of a program folder as a whole: seeding a new folder and
// the browser's start-up step that reads them.
namespace tarnby::settings {

struct ProgramOptions;
class WindowColors;

// Writes the settings files that folder lacks ("Options.INI",
// "Options2.INI", "Colors.INI") from their tables' defaults; an existing file
// is never touched. "FoldFile.INI" is not written: a folder without one has
// no working folders. Returns the names written; a file that cannot be
// written adds a whole sentence to *warnings.
QStringList seedSettingsFiles(const QString &folder, QStringList *warnings);

struct SettingsLoadReport {
    QStringList seeded;   // files written because the folder lacked them
    QStringList warnings; // whole sentences for the user (a file could not be written)
    QStringList keptDefault; // "Options: thumbnailHeightCm", "Colors.INI: ...", for the developer's log
};

// The browser's start-up step: sets the default colours (which also clears
// bold type), seeds missing files, then reads "Options.INI", "Options2.INI",
// "Colors.INI" and "FoldFile.INI" from programFolder into options, colors and
// workingFolders. Without a program folder only the defaults are set. Never
// fails and never blocks on a bad file: what cannot be read keeps its
// default. The colour routine runs before "Options.INI" is read, so that the
// bold type the user chose in the options window holds against the routine's
// clearing of it.
SettingsLoadReport loadSettings(const QString &programFolder, ProgramOptions &options, WindowColors &colors,
                                QStringList &workingFolders);

} // namespace tarnby::settings
