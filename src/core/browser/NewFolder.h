#pragma once

#include <QString>

// Making a new folder from the browser: the name it offers and the checks the
// name must pass. The folder is made by makeFolder(); nothing here asks the
// user anything.
namespace tarnby {

// "New Folder", or "New Folder 2", "New Folder 3" ... when parent holds the
// name already: the first name that is free.
QString freeFolderName(const QString &parent);

struct NewFolderResult {
    enum class Outcome { Made, EmptyName, InvalidName, Exists, Failed };
    Outcome outcome = Outcome::Failed;
    QString path; // the folder made, or the one that could not be
};

// Makes parent/name. The name is trimmed; it may not be empty, hold "/" or be
// "." or "..", and nothing of that name may exist in parent already.
NewFolderResult makeFolder(const QString &parent, const QString &name);

} // namespace tarnby
