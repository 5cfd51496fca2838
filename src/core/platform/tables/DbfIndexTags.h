#pragma once

#include "TableReader.h"

#include <QIODevice>
#include <QStringList>

#include <optional>

// The tags of the index files that travel with dBASE tables: the production
// ".mdx" of dBASE IV and later and the structural ".cdx" of FoxPro. A tag's
// name and its key expression are read (the table view offers the names and
// orders rows by the key); the B-trees are not. Both readers stop at the
// first entry that does not look like a tag name, never read outside the
// device and give at most maxTags tags.
namespace tarnby::tables {

struct IndexTag {
    QString name;
    QString expression; // the key expression as written, empty when unreadable
    bool descending = false;
};

QList<IndexTag> mdxTags(QIODevice &device, int maxTags);
QList<IndexTag> cdxTags(QIODevice &device, int maxTags);
QStringList mdxTagNames(QIODevice &device, int maxTags);
QStringList cdxTagNames(QIODevice &device, int maxTags);

// The key of a tag's expression over a table's fields: field names joined by
// "+" (or "-"), each one possibly inside UPPER(), DTOS(), STR(), TRIM(),
// RTRIM(), LTRIM() or ALLTRIM(), and possibly named with its table's alias
// ("PEOPLE->NAME"). Those functions keep the order of the field's own
// values, UPPER() without regard to case. Any other expression gives
// nothing: its order is not the order of the fields.
std::optional<IndexKey> keyOfExpression(const QString &expression, const QList<Field> &fields, bool descending);

} // namespace tarnby::tables
