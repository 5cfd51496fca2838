#pragma once

#include "TableReader.h"

// SQLite databases, read through QtSql's SQLite driver and opened read-only:
// on Linux most files named ".db" are SQLite databases rather than Paradox
// tables. Every table of the database is listed except SQLite's own
// ("sqlite_..."), in the order they were created. Field types follow the
// declared column types the way SQLite gives them affinity: a type naming
// INT is a long integer, CHAR or TEXT with a length is text of that size,
// without one a memo, REAL, FLOA or DOUB a double, BOOL a boolean, DATE or
// TIME a date, BLOB or none binary.
//
// Unlike the other readers, a file opened here and its tables must be used
// from the thread that opened it (QtSql's rule for connections).
namespace tarnby::tables {

// True when head starts with the SQLite header "SQLite format 3" and its NUL.
bool looksLikeSqlite(const QByteArray &head);

OpenResult openSqliteFile(const QString &path);

} // namespace tarnby::tables
