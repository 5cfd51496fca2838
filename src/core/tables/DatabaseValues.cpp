#include "core/tables/DatabaseValues.h"

namespace tarnby::tables {

QString connectType(const QString &extension)
{
    if (extension == QLatin1String("DBF"))
        return QStringLiteral("dBASE 5.0;");
    if (extension == QLatin1String("DB"))
        return QStringLiteral("Paradox 5.x;");
    if (extension == QLatin1String("MDB"))
        return QStringLiteral("Access");
    if (extension == QLatin1String("XLS"))
        return QStringLiteral("Excel 8.0;");
    if (extension == QLatin1String("WK4"))
        return QStringLiteral("Lotus WK4;");
    return QString();
}

QString connectText(const QString &extension, const QString &password)
{
    if (extension == QLatin1String("MDB") && !password.isEmpty())
        return QStringLiteral(";pwd=") + password;
    return connectType(extension);
}

bool offersTableList(const QString &extension)
{
    return extension == QLatin1String("MDB") || extension == QLatin1String("XLS")
        || extension == QLatin1String("WK4");
}

QString readDatabaseTables(const TableFile &file, DatabaseValues &values)
{
    values.tableNames = file.tableNames().mid(0, maxTables);
    values.tableCount = int(values.tableNames.size());
    return values.tableNames.value(0);
}

void readTableStructure(const Table &table, DatabaseValues &values)
{
    values.fields = table.fields().mid(0, maxStructureFields);
    values.lastField = int(values.fields.size()) - 1;
    values.indexNames = table.indexNames().mid(0, maxIndexNames);
}

QString readDatabaseTables(const QString &path, const QString &password, DatabaseValues &values)
{
    const OpenResult opened = openTableFile(path, password);
    if (!opened.ok()) {
        values.tableNames.clear();
        values.tableCount = 0;
        return QString();
    }
    return readDatabaseTables(*opened.file, values);
}

void readTableStructure(const QString &path, const QString &password, const QString &tableName,
                        DatabaseValues &values)
{
    values.fields.clear();
    values.lastField = -1;
    values.indexNames.clear();
    const OpenResult opened = openTableFile(path, password);
    if (!opened.ok())
        return;
    const Result<std::unique_ptr<Table>> table = opened.file->openTable(tableName);
    if (table.ok())
        readTableStructure(*table.value, values);
}

} // namespace tarnby::tables
