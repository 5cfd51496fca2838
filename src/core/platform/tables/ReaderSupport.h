#pragma once

#include <QFileInfo>
#include <QIODevice>
#include <QString>
#include <QStringDecoder>

#include "TableReader.h"

#include <functional>
#include <memory>

// Small pieces the table readers share.
namespace tarnby::tables {

// The file beside table with the same base name and the given extension,
// matched without regard to case (tables copied from other systems often
// come with "TABLE.DBT" beside "table.dbf"). Empty when there is none.
QString companionFile(const QFileInfo &table, const QString &extension);

// The file at path opened for reading (unbuffered: the readers read what
// they need in one piece), or null (also for an empty path).
std::unique_ptr<QIODevice> openForReading(const QString &path);

// Reads exactly length bytes at offset, or gives an empty array when they
// are not all inside the device.
QByteArray readExactly(QIODevice &device, qint64 offset, qint64 length);

// The fields of a worksheet: when every cell of the first row holds
// non-empty text, those texts name the fields and the data starts on the
// second row (*firstDataRow 1); otherwise the fields are named after the
// columns ("A", "B", ...) and every row is data. A field whose values in the
// first sampleRows data rows are all numbers is a Double, all dates or
// times a Date, anything else Text of 255 characters. cell(row, column)
// gives a cell's value (invalid when empty).
QList<Field> sheetFields(qint64 rows, int columns, const std::function<QVariant(qint64, int)> &cell,
                         qint64 *firstDataRow, int sampleRows = 200);

// A decoder for text in a Windows code page, by the number files give it
// (1252, 437, 932, ...; 10000 and 32768 are Mac Roman, 32769 Windows-1252,
// 367 ASCII); invalid for a number Qt knows no encoding for.
QStringDecoder codePageDecoder(int codePage);

// The name of column number column (0-based): "A" ... "Z", "AA", ...
QString columnLetters(int column);

} // namespace tarnby::tables
