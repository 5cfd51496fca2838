#pragma once

#include <QIODevice>
#include <QStringList>

// The tag names of the index files that travel with dBASE tables: the
// production ".mdx" of dBASE IV and later and the structural ".cdx" of
// FoxPro. Only the names are read (the table view offers them); the keys are
// not. Both readers stop at the first entry that does not look like a tag
// name, never read outside the device and give at most maxTags names.
namespace tarnby::tables {

QStringList mdxTagNames(QIODevice &device, int maxTags);
QStringList cdxTagNames(QIODevice &device, int maxTags);

} // namespace tarnby::tables
