#pragma once

#include "TableReader.h"

#include <QIODevice>

#include <memory>

// Our own reader of Paradox tables (".db", Paradox 3 to 7): a table file
// holds one table, named after the file, whose records sit in a chain of
// fixed-size blocks. Text is decoded in the code page the header names
// (Paradox 3 tables, which name none, in code page 437). Memo and binary
// large object fields keep their start in the record and the rest in the
// ".mb" file beside the table; a keyed table's primary index (".px") is
// offered as the index "PrimaryKey". A password-protected table opens with
// its password (checked against the checksum in its header) and its blocks
// and memos are decrypted as they are read.
//
// Opening reads the header and the block chain's links (six bytes a block);
// rows are read when asked for. Block links come from the file: a chain
// that loops or leaves the file ends the table there, and every count and
// length is checked against the file before it is used.
namespace tarnby::tables {

OpenResult openParadoxFile(const QString &path, const QString &password = QString());

// The pieces of one table as devices (tests and the fuzz target). memo may
// be null.
struct ParadoxSources {
    QString tableName;
    std::unique_ptr<QIODevice> table; // open for reading
    std::unique_ptr<QIODevice> memo;  // open for reading, or null
    bool primaryIndex = false;        // a ".px" file is beside the table
    QString password;                 // for a protected table
};
OpenResult openParadox(ParadoxSources sources);

// The value of a BLOb field's ten-byte tail (offset, length, modification
// number) read from a ".mb" file: exposed for the fuzz target. Null when the
// pointer leads outside the file or to a block of the wrong kind.
QByteArray readParadoxBlob(QIODevice &memo, quint32 offset, quint32 length);

} // namespace tarnby::tables
