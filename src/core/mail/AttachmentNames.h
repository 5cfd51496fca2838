#pragma once

#include <QFile>
#include <QString>

// Names of received files. An attachment's name comes from whoever sent the
// message, so it is reduced to a plain file name before anything is written,
// and a file that is already there is never replaced.
namespace tarnby::mail {

// The plain name an attachment is saved under: the part after the last "/"
// or "\" (and after a drive letter), without control characters, blanks and
// dots at the ends removed, never "." or "..", never a leading dot (no hidden
// files), never a device name of the other desktop (CON, PRN, AUX, NUL, COM1
// to COM9, LPT1 to LPT9, with or without an extension: "_" is put before
// them), at most 200 bytes in UTF-8. A name with nothing left becomes
// fallback.
QString plainAttachmentName(const QString &raw, const QString &fallback = QStringLiteral("attachment"));

// Creates a new file for name in folder and opens it for writing: name
// itself when no file of that name is there, else "stem (2).ext",
// "stem (3).ext", ... The file is created exclusively, so that a file that
// appears meanwhile is not overwritten either. Returns the path, or an empty
// string with *error set.
QString createUniqueFile(const QString &folder, const QString &name, QFile &file, QString *error);

// The name createUniqueFile would try as its n-th choice (n = 1: name itself).
QString numberedName(const QString &name, int n);

} // namespace tarnby::mail
