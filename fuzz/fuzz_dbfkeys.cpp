// Feeds arbitrary bytes to the dBASE index tag readers with their key
// expressions (the first byte picks ".cdx" or ".mdx"), turns every tag's
// expression into a key over a fixed set of fields, and reads the input
// itself as a key expression too. Any fault is a finding.
#include "core/platform/tables/DbfIndexTags.h"

#include <QBuffer>

using namespace tarnby::tables;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    static const QList<Field> fields = {{"NAME", FieldType::Text, 20}, {"QTY", FieldType::Double, 10},
                                        {"WHEN", FieldType::Date, 8}, {"A", FieldType::Text, 1}};
    QByteArray bytes(reinterpret_cast<const char *>(data) + 1, qsizetype(size - 1));
    QBuffer index(&bytes);
    index.open(QIODevice::ReadOnly);
    const QList<IndexTag> tags = (data[0] & 1) ? cdxTags(index, maxIndexNames) : mdxTags(index, maxIndexNames);
    for (const IndexTag &tag : tags)
        keyOfExpression(tag.expression, fields, tag.descending);
    keyOfExpression(QString::fromLatin1(bytes.left(512)), fields, data[0] & 2);
    return 0;
}
