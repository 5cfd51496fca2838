// Feeds arbitrary bytes to the Paradox reader and its ".mb" reader (see
// FuzzTables.h for how an input is split); every row of the table is read.
// Any fault is a finding.
#include "FuzzTables.h"

#include "core/platform/tables/ParadoxReader.h"

#include <QBuffer>

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
    ParadoxSources sources;
    sources.tableName = QStringLiteral("fuzz");
    sources.table = device(parts.table);
    sources.memo = device(parts.memo);
    sources.primaryIndex = parts.selector & 1;
    OpenResult opened = openParadox(std::move(sources));
    if (!opened.ok())
        return 0;
    Result<std::unique_ptr<Table>> table = opened.file->openTable(QStringLiteral("fuzz"));
    if (!table.ok())
        return 0;
    for (qint64 first = 0; first < table.value->rowCount(); first += 64) {
        if (!table.value->readRows(first, 64).ok())
            break;
    }
    return 0;
}
