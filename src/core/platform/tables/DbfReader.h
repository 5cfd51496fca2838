#pragma once

#include "DbfIndexTags.h"
#include "DbfMemo.h"
#include "TableReader.h"

#include <QIODevice>

#include <memory>

// Our own reader of dBASE tables (".dbf"): dBASE III, IV and 5, FoxBASE,
// FoxPro and Visual FoxPro. A table file holds one table, named after the
// file. Records marked deleted are not offered; text is decoded in the code
// page the header's language byte names (a table without one is read as
// UTF-8 where its bytes are valid UTF-8, else as Windows-1252); memos come
// from the ".dbt" or ".fpt" file beside the table and the index names from
// its ".mdx" or ".cdx" file (file names are matched without regard to case).
// A missing memo file leaves the memos empty rather than failing the table.
//
// Opening reads the header and one pass over the records' deletion marks;
// the rows are read when asked for. A header that contradicts the file (an
// absurd header or record length, more records than the file holds, more
// than 255 fields) fails with a message before anything large is allocated.
namespace tarnby::tables {

OpenResult openDbfFile(const QString &path);

// The pieces of one table given as devices, for readers of things other than
// files (tests and the fuzz target). memo and the index names may be absent.
struct DbfSources {
    QString tableName;
    std::unique_ptr<QIODevice> table; // open for reading
    std::unique_ptr<QIODevice> memo;  // open for reading, or null
    MemoLayout memoLayout = MemoLayout::DbaseIII;
    QStringList indexNames;
    // The tags with their keys; when given, their names are the index names.
    QList<IndexTag> indexTags;
};
OpenResult openDbf(DbfSources sources);

// True when head (the file's first 32 bytes or more) can be the header of a
// dBASE table: a known version byte and a plausible date, header and record
// length.
bool looksLikeDbf(const QByteArray &head);

} // namespace tarnby::tables
