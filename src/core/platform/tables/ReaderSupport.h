#pragma once

#include <QFileInfo>
#include <QIODevice>
#include <QString>

#include <memory>

// Small pieces the table readers share.
namespace tarnby::tables {

// The file beside table with the same base name and the given extension,
// matched without regard to case (tables copied from other systems often
// come with "TABLE.DBT" beside "table.dbf"). Empty when there is none.
QString companionFile(const QFileInfo &table, const QString &extension);

// The file at path opened for reading, or null (also for an empty path).
std::unique_ptr<QIODevice> openForReading(const QString &path);

// Reads exactly length bytes at offset, or gives an empty array when they
// are not all inside the device.
QByteArray readExactly(QIODevice &device, qint64 offset, qint64 length);

} // namespace tarnby::tables
