#pragma once

#include <QString>
#include <QStringList>

namespace tarnby {

class SettingsStore;

// Finding and seeding the program folder, where every data file of the
// program lives.
//
// The folder is looked for in this order: the --home option, the TARNBY_HOME
// variable, the saved "Registered"/"TarnbyDIR" setting, the per-user data folder
// (~/.local/share/Tarnby). A candidate that cannot be created or written is
// passed over with a warning. The chosen folder is given the delivered files it
// lacks (tips, "Close.Txt", the BMPS pictures, the Help pages, default settings
// files); a file that is already there is never overwritten.
struct ProgramFolderResult {
    QString path;
    QStringList warnings; // one whole sentence each, for the message service
    QStringList seeded;   // files written by this start, relative to path
};

struct ProgramFolderRequest {
    QString homeOption;  // --home DIR
    QString homeVariable; // TARNBY_HOME
    QString dataFolder;  // per-user data folder; empty: the standard one
};

ProgramFolderResult resolveProgramFolder(const ProgramFolderRequest &request, SettingsStore &store);

// Where the delivered files are read from. An installed Tarnby finds them in
// the data folder beside its bin folder (executableFolder + "/../share/tarnby"
// for the standard layout; "/../../share/tarnby" from the folder of
// tarnby-cli's programs, libexec/tarnby); when that folder does not exist, as for a program
// run from its build folder, the copies built into the program are used
// (":/programfolder"). The result is a folder path QFile and QDirIterator read.
QString deliveredFilesSource(const QString &executableFolder);

// The source for the running program: deliveredFilesSource() of the folder of
// its executable, or the built-in copies when there is no application object.
QString deliveredFilesSource();

// Writes the delivered files that folder lacks, reading them from source;
// returns the ones written and appends a warning for each one that could not
// be written.
QStringList seedProgramFolder(const QString &folder, QStringList *warnings,
                              const QString &source = deliveredFilesSource());

// The files that a program folder is given, relative to it, as source holds them.
QStringList deliveredFiles(const QString &source = deliveredFilesSource());

// The per-user data folder: ~/.local/share/Tarnby (XDG_DATA_HOME honoured).
QString defaultDataFolder();

} // namespace tarnby
