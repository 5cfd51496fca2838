#pragma once

#include "core/platform/files/NoReplace.h"

#include <QList>
#include <QString>
#include <QStringList>

// The file operations behind the browser's and the document windows' file
// commands: renaming and moving a file (with the companion files of a
// database), copying without overwriting. Pure logic on the file system with
// results as values; the UI turns them into messages.
//
// Nothing here ever replaces an existing file. A rename or move of several
// files either completes or is rolled back to where it started.
//
// All functions are synchronous and touch only the paths they are given; they
// may run on any thread. They are quick for ordinary files; moving between
// filesystems copies the data.
namespace tarnby::fileops {

// The outcome of each operation: Done, or why it did not happen
// (core/platform/files/NoReplace.h).
using files::Outcome;
using files::Result;

// The extensions whose files carry companions along (indexes, memo files):
// DB, DBF, MDB, XLS and WK4. ASX and ZIP share the catalogue's database band but
// are plain files here. ext is compared in upper case.
bool isDatabaseExtension(const QString &ext);

// The file name of path without its last "." and what follows ("sales" for
// "sales.dbf"); the whole name when it holds no dot.
QString baseName(const QString &path);

// The companions of a database file that a rename carries along: every file in
// its folder named base + "." + anything (sales.dbf, sales.mdx, sales.dbt).
// The companions that a move carries along: every file in the folder whose
// name begins with base (clients.mdb, clients.ldb, clients2.txt). Both match
// the base case-insensitively, as users of these tables expect, list only
// files (never folders), and include path itself. Sorted by name.
QStringList renameCompanions(const QString &path);
QStringList moveCompanions(const QString &path);

struct Step {
    QString from;
    QString to;
};

// What a rename or move will do, file by file, or why it cannot start.
struct Plan {
    QList<Step> steps;
    Result problem; // outcome Done when the plan can run
    bool ok() const { return problem.ok(); }
};

// Renaming path to newName (trimmed here): the extension cannot change, so
// report.txt renamed to "summary" becomes summary.txt in the same folder. A
// database file takes its companions along, each keeping what follows the base
// name (sales.dbt -> year.dbt). The plan fails with TargetExists when any new
// name is taken.
Plan planRename(const QString &path, const QString &newName);

// Moving path to target (a full path). A database file takes every file that
// begins with its base name along into target's folder, each renamed to
// target's base name plus what followed the old base name.
Plan planMove(const QString &path, const QString &target);

// Runs the steps in order. When one fails, the steps already done are undone
// in reverse order and the result names the file that failed.
Result execute(const Plan &plan);

// Moving and copying one file without replacing anything, as the steps above
// do (core/platform/files/NoReplace.h).
using files::copyWithoutOverwrite;
using files::moveWithoutOverwrite;

} // namespace tarnby::fileops
