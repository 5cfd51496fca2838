// Feeds arbitrary bytes to the dBASE reader, its memo reader and the index
// tag readers (see FuzzTables.h for how an input is split); every row of the
// table is read, then written as CSV both from the record bytes and from the
// rows. Any fault, or any difference between the two, is a finding.
#include "FuzzTables.h"

#include "core/platform/tables/DbfIndexTags.h"
#include "core/platform/tables/DbfReader.h"

#include <QBuffer>

#include <cstdlib>

using namespace tarnby::tables;

namespace {

std::unique_ptr<QIODevice> device(const QByteArray &bytes)
{
    auto buffer = std::make_unique<QBuffer>();
    buffer->setData(bytes);
    buffer->open(QIODevice::ReadOnly);
    return buffer;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 5)
        return 0;
    const fuzztables::Parts parts = fuzztables::split(data, size);
    const quint8 selector = parts.selector;
    const QByteArray &tableBytes = parts.table;
    const QByteArray &memoBytes = parts.memo;

    QList<IndexTag> tags;
    {
        const std::unique_ptr<QIODevice> index = device(memoBytes);
        tags = (selector & 0x80) ? cdxTags(*index, maxIndexNames) : mdxTags(*index, maxIndexNames);
    }

    DbfSources sources;
    sources.tableName = QStringLiteral("fuzz");
    sources.table = device(tableBytes);
    sources.memo = device(memoBytes);
    const int layout = (selector & 0x7F) % 3;
    sources.memoLayout = layout == 0 ? MemoLayout::DbaseIII : layout == 1 ? MemoLayout::DbaseIV : MemoLayout::FoxPro;
    sources.indexTags = tags;
    OpenResult opened = openDbf(std::move(sources));
    if (!opened.ok())
        return 0;
    Result<std::unique_ptr<Table>> table = opened.file->openTable(QStringLiteral("fuzz"));
    if (!table.ok())
        return 0;
    table.value->fields();
    // Every tag's key, from the expressions the index file carried.
    for (const QString &name : table.value->indexNames())
        table.value->indexKey(name);
    for (qint64 first = 0; first < table.value->rowCount(); first += 64) {
        if (!table.value->readRows(first, 64).ok())
            break;
    }
    // The CSV made from the record bytes must be the CSV of the rows.
    QByteArray fromBytes;
    QByteArray fromRows;
    const Result<qint64> quick = table.value->appendCsvRows(0, table.value->rowCount(), fromBytes);
    const Result<qint64> typed = table.value->Table::appendCsvRows(0, table.value->rowCount(), fromRows);
    if (quick.ok() != typed.ok() || quick.value != typed.value || fromBytes != fromRows)
        std::abort();
    return 0;
}
