#pragma once

#include "core/settings/ProgramOptions.h"
#include "core/settings/WindowColors.h"
#include "core/tables/DatabaseValues.h"

#include <QString>
#include <QStringList>

namespace tarnby {

// The program-wide values: one object, created at start-up and handed to every
// window that needs it. Lives on the UI thread; nothing in it is synchronised.
class AppState
{
public:
    // The folder where all of the program's own data files live.
    QString programFolder;
    // programFolder + "/" + fileName, with no doubled separator at the root.
    QString programFile(const QString &fileName) const;

    // The file the browser last selected (a path or an Internet address).
    QString currentFile;
    // The computer chosen on the network, and whether the user said no network.
    QString networkComputer;
    bool noNetwork = false;

    // The catalogue flags of the file the browser last looked up
    // (catalogue::FileType::textFile and databaseFile). Only the browser sets
    // them, at every lookup; other windows read them.
    bool textFileFlag = false;
    bool databaseFileFlag = false;

    // The category letter of the browser's last category button.
    QString categoryLetter = QStringLiteral("A");

    // Search values.
    QString searchPattern;
    bool reportMode = false;
    bool cancelFlag = false;

    // The database password, the table list of the last database read and
    // the structure of its last table read (the table view fills them).
    tables::DatabaseValues database;
    // The small tools' windows are open (each sets its flag when it opens and
    // clears it when it closes; the about window only sets it).
    bool internetListOpen = false;
    bool tipsWindowOpen = false;
    bool aboutWindowOpen = false;

    // Settings files, read at start-up.
    settings::ProgramOptions options;
    settings::WindowColors colors;
    QStringList workingFolders;

    // The arguments from the command line, split and unquoted.
    QStringList commandLineArguments;

    QString helpFolder() const;    // programFolder + "/Help"
    QString reportFile() const;    // programFolder + "/F@Prnt.INI"
    QString organizerDatabase() const; // programFolder + "/FileTabl.MDB"
    // What the start-up found of the organizer database: its full name when
    // "FileTabl.MDB" is in the program folder, empty when it is missing.
    QString organizerDatabaseFound;
};

} // namespace tarnby
