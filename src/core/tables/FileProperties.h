#pragma once

#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/tables/TableReader.h"

#include <QDateTime>
#include <QList>
#include <QStringList>

#include <optional>

// What the properties window shows of a file: rows of a caption and a value,
// and for a database table one line per field.
namespace tarnby::tables {

using imaging::PropertyRow;

struct FileProperties {
    QList<PropertyRow> rows;
    QStringList fieldLines; // empty unless the file is a database table
    bool database = false;
};

// What the table view knows of the table it shows.
struct DatabaseFacts {
    QString fileType;      // the kind of file, as the reader names it
    QString connect;       // the data control's connect text
    QString recordSource;  // the table shown
    qint64 recordCount = 0;
    double percentPosition = 0; // of the current row, 0 to 100
    QDateTime lastModified;
    QDateTime lastUpdated;
    QDateTime dateCreated;
    qint64 fileSize = 0;
    QList<Field> fields;
};

// The nine picture rows.
FileProperties pictureFileProperties(const imaging::Picture &picture);

// The database rows, in their order: "File Type:", "Database:" (the connect
// text, shown as "Access" when it begins with ";pwd", so that a password is
// never shown), "Current Table:", "Record Count:", "Percent Position:",
// "Last Modified:", "Last Updated:", "Date Created:", "File Size:"; and a
// field line per field.
FileProperties databaseFileProperties(const DatabaseFacts &facts);

// Any other file: "File Type:" and "File Size:".
FileProperties otherFileProperties(const QString &fileType, qint64 fileSize);

// The properties of the file at path as the browser shows them for a file not
// opened in a window: a picture's rows from the picture layer, a database's
// first table (opened with password), or the type and size. Nothing when the
// file's type cannot be determined (its extension is not in the catalogue).
std::optional<FileProperties> propertiesOfFile(const QString &path, const QString &password);

} // namespace tarnby::tables
