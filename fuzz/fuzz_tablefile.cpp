// Feeds arbitrary bytes to the table readers that go through outside
// libraries (libmdb for Access, libwps for Lotus, SQLite) and our Excel reader:
// the first byte picks the file's extension, the rest is written to a
// temporary file that openTableFile opens as a user's file would be; every
// table is opened and its first rows read. Any fault is a finding.
#include "core/platform/tables/TableReader.h"

#include <QCoreApplication>
#include <QFile>
#include <QTemporaryDir>

using namespace tarnby::tables;

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    if (size < 1)
        return 0;
    static int argc = 1;
    static char name[] = "fuzz_tablefile";
    static char *argv[] = {name, nullptr};
    static QCoreApplication app(argc, argv);
    static QTemporaryDir dir;
    static const char *extensions[] = {"mdb", "xls", "wk4", "db"};
    const QString path = dir.filePath(QStringLiteral("input.") + QLatin1String(extensions[data[0] % 4]));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly | QIODevice::Truncate))
            return 0;
        file.write(reinterpret_cast<const char *>(data) + 1, qint64(size - 1));
    }
    OpenResult opened = openTableFile(path, QStringLiteral("password"));
    if (!opened.ok())
        return 0;
    for (const QString &table : opened.file->tableNames()) {
        Result<std::unique_ptr<Table>> t = opened.file->openTable(table);
        if (!t.ok())
            continue;
        t.value->fields();
        t.value->indexNames();
        t.value->readRows(0, 64);
    }
    return 0;
}
