#pragma once

#include "TableReader.h"

#include <QByteArray>

// Access databases (".mdb", Jet 3 and Jet 4) through mdbtools' libmdb. The
// user tables are listed, never the system ones; text sizes are given in
// characters (Jet 4 stores them in bytes of UTF-16, half that many
// characters); memos are read whole.
//
// libmdb ignores database passwords, so the password is checked here
// against the file's header before libmdb opens the file: a protected file
// opened without a password answers PasswordRequired, with a wrong one
// WrongPassword, and shows no table in either case.
//
// libmdb reads rows one after the other: reading a page before the last one
// read starts again from the table's first row.
namespace tarnby::tables {

OpenResult openMdbFile(const QString &path, const QString &password);

// The database password stored in an Access file's header page (its first
// 128 bytes after offset 0x18 are masked with a fixed RC4 key stream; Jet 4
// further masks the password with the file's creation date). Empty when
// the file has none; null when page is not a Jet 3 or Jet 4 header.
QString mdbPassword(const QByteArray &page);

} // namespace tarnby::tables
