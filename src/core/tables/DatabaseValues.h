#pragma once

#include "core/platform/tables/TableReader.h"

#include <QString>
#include <QStringList>

// The program-wide results of reading a database: the table list of the last
// database read and the structure of the last table read, kept for the run
// (the table view fills them; the printing window reads them), and the
// database password given at the login, which lives only in memory.
namespace tarnby::tables {

// At most this many fields of a table are kept in the structure values.
constexpr int maxStructureFields = 252;

struct DatabaseValues {
    // The password given at the last login (empty when none) and whether a
    // login has been done.
    QString password;
    bool loginDone = false;

    // The user tables of the last database read (at most maxTables).
    QStringList tableNames;
    int tableCount = 0;

    // The structure of the last table read: its fields (at most
    // maxStructureFields), the number of the last field (count minus one, -1
    // when there is none) and its index names (at most maxIndexNames).
    QList<Field> fields;
    int lastField = -1;
    QStringList indexNames;
};

// The connect type the table view gives each kind of database file, by its
// upper-case extension ("dBASE 5.0;", "Paradox 5.x;", "Access", "Excel 8.0;",
// "Lotus WK4;"); empty for an extension that is not a table file.
QString connectType(const QString &extension);

// The connect text of the data control: the connect type, except for an
// Access file with a password, whose connect is ";pwd=" and the password.
QString connectText(const QString &extension, const QString &password);

// Whether a file of that extension can hold more than one table, so that the
// table view offers its table list (Access, Excel and Lotus files).
bool offersTableList(const QString &extension);

// Reads the user tables of file into values (names and count) and returns
// the first name, or an empty text when there is none.
QString readDatabaseTables(const TableFile &file, DatabaseValues &values);

// Reads the structure of table into values: its fields, last field number
// and index names.
void readTableStructure(const Table &table, DatabaseValues &values);

// The same for a file named by path, opened with password. Errors are
// ignored as the table view ignores them: a file that does not open yields
// no tables, a table that does not open leaves an empty structure.
QString readDatabaseTables(const QString &path, const QString &password, DatabaseValues &values);
void readTableStructure(const QString &path, const QString &password, const QString &tableName,
                        DatabaseValues &values);

} // namespace tarnby::tables
