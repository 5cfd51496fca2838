#include "core/tables/FileProperties.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/tables/DatabaseValues.h"
#include "core/tables/TableText.h"

#include <QFileInfo>

namespace tarnby::tables {

namespace {

QString dateText(const QDateTime &when)
{
    return when.isValid() ? when.toString(QStringLiteral("yyyy-MM-dd HH:mm:ss")) : QString();
}

} // namespace

FileProperties pictureFileProperties(const imaging::Picture &picture)
{
    FileProperties properties;
    properties.rows = imaging::pictureProperties(picture);
    return properties;
}

FileProperties databaseFileProperties(const DatabaseFacts &facts)
{
    FileProperties properties;
    properties.database = true;
    // The connect text of a protected Access file carries its password.
    const QString database = facts.connect.startsWith(QLatin1String(";pwd")) ? QStringLiteral("Access") : facts.connect;
    properties.rows = {
        {QStringLiteral("File Type:"), facts.fileType},
        {QStringLiteral("Database:"), database},
        {QStringLiteral("Current Table:"), facts.recordSource},
        {QStringLiteral("Record Count:"), QString::number(facts.recordCount)},
        {QStringLiteral("Percent Position:"), QString::number(facts.percentPosition, 'g', 4)},
        {QStringLiteral("Last Modified:"), dateText(facts.lastModified)},
        {QStringLiteral("Last Updated:"), dateText(facts.lastUpdated)},
        {QStringLiteral("Date Created:"), dateText(facts.dateCreated)},
        {QStringLiteral("File Size:"), QString::number(facts.fileSize)},
    };
    for (const Field &field : facts.fields)
        properties.fieldLines << fieldLine(field);
    return properties;
}

FileProperties otherFileProperties(const QString &fileType, qint64 fileSize)
{
    FileProperties properties;
    properties.rows = {
        {QStringLiteral("File Type:"), fileType},
        {QStringLiteral("File Size:"), QString::number(fileSize)},
    };
    return properties;
}

std::optional<FileProperties> propertiesOfFile(const QString &path, const QString &password)
{
    const catalogue::FileType type = catalogue::GetFileTypeFlag(path);
    if (!type.known())
        return std::nullopt;
    const QFileInfo info(path);
    const QString category = catalogue::GetFileCategoryName(path);
    if (type.databaseFile) {
        const OpenResult opened = openTableFile(path, password);
        if (opened.ok()) {
            DatabaseFacts facts;
            facts.fileType = opened.file->formatName();
            facts.connect = connectText(type.extension, password);
            const QStringList tables = opened.file->tableNames();
            facts.recordSource = offersTableList(type.extension) ? tables.value(0) : info.fileName();
            if (!tables.isEmpty()) {
                const Result<std::unique_ptr<Table>> table = opened.file->openTable(tables.constFirst());
                if (table.ok()) {
                    facts.recordCount = table.value->rowCount();
                    facts.fields = table.value->fields();
                }
            }
            facts.lastModified = info.lastModified();
            facts.lastUpdated = info.lastModified();
            facts.dateCreated = info.birthTime();
            facts.fileSize = info.size();
            return databaseFileProperties(facts);
        }
    } else if (category == QLatin1String("Picture") || (category == QLatin1String("Multimedia") && type.index >= 42)) {
        const imaging::LoadResult picture = imaging::loadPicture(path);
        if (picture.ok())
            return pictureFileProperties(picture.picture);
    }
    return otherFileProperties(category, info.size());
}

} // namespace tarnby::tables
