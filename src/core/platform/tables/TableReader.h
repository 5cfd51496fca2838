#pragma once

#include <QList>
#include <QString>
#include <QStringList>
#include <QVariant>

#include <memory>
#include <utility>

// One interface to the database and spreadsheet files Tarnby shows as tables:
// dBASE, Paradox, Access, Excel and Lotus files, and SQLite databases. A
// reader opens a file (with a password where the format has one), lists its
// user tables, and gives each table's fields, index names, row count and rows.
// Rows are read in pages on demand, so a table of a million rows costs what
// the caller asks for, not what the file holds.
//
// Every file may be damaged or hostile: readers check every length and count
// against the file before they trust it, bound what they allocate, and answer
// with an error value whose text says what is wrong, never with a crash.
//
// Threads: a TableFile and the Tables it opened belong to one thread at a
// time (the one that uses them); separate files may be read in parallel.
namespace tarnby::tables {

// Field type numbers, in the numbering the properties window names them
// (fieldTypeName in core/tables gives the names).
namespace FieldType {
constexpr int Boolean = 1;
constexpr int Byte = 2;
constexpr int Integer = 3;
constexpr int Long = 4;
constexpr int Currency = 5;
constexpr int Single = 6;
constexpr int Double = 7;
constexpr int Date = 8;
constexpr int Binary = 9;
constexpr int Text = 10;
constexpr int LongBinary = 11;
constexpr int Memo = 12;
constexpr int Guid = 15;
constexpr int BigInt = 16;
constexpr int VarBinary = 17;
constexpr int Char = 18;
constexpr int Numeric = 19;
constexpr int Decimal = 20;
constexpr int Float = 21;
constexpr int Time = 22;
constexpr int DateTime = 23;
} // namespace FieldType

// At most this many tables, and this many index names of a table, are
// offered; a file with more shows the first ones.
constexpr int maxTables = 251;
constexpr int maxIndexNames = 251;

struct Field {
    QString name;
    int type = 0; // a FieldType number
    int size = 0; // in characters (for binary and memo fields: what the record stores)
};

// One row: a value per field, in field order. A value is typed data: QString
// (text and text memos), qlonglong or double (numbers), QDate, QDateTime or
// QTime, bool, QByteArray (binary data and binary memos); a null value is an
// invalid QVariant.
using Row = QList<QVariant>;

// A value or the reason there is none. errorString is a whole sentence fit to
// show the user; it is empty exactly when the value is good.
template <typename T>
struct Result {
    T value{};
    QString errorString;
    bool ok() const { return errorString.isEmpty(); }

    static Result success(T v)
    {
        Result r;
        r.value = std::move(v);
        return r;
    }
    static Result failure(QString why)
    {
        Result r;
        r.errorString = std::move(why);
        return r;
    }
};

// What an index orders a table's rows by: its key columns, most significant
// first.
struct IndexKey {
    struct Part {
        int column = 0; // a field number of the table, from 0
        bool descending = false;
        bool caseInsensitive = false; // text compared without regard to case
    };
    QList<Part> parts;
};

// One open table.
class Table
{
public:
    virtual ~Table();

    virtual QString name() const = 0;
    virtual QList<Field> fields() const = 0;
    // The names of the table's indexes, at most maxIndexNames.
    virtual QStringList indexNames() const = 0;
    // The rows offered (records the format marks as deleted are not).
    virtual qint64 rowCount() const = 0;
    // Rows first to first + count - 1 (fewer at the end), in the file's
    // order. Cost: the bytes of those rows and of their memos.
    virtual Result<QList<Row>> readRows(qint64 first, int count) = 0;
    // Appends rows first to first + count - 1 (fewer at the end) to out as
    // CSV records (CsvText.h) and gives how many rows it appended. By
    // default the rows readRows gives are written; a reader may write its
    // records straight from the file's bytes instead, to the same bytes.
    virtual Result<qint64> appendCsvRows(qint64 first, qint64 count, QByteArray &out);
    // The key of the index of that name. By default no index's key is
    // known, and the answer says so.
    virtual Result<IndexKey> indexKey(const QString &indexName) const;
};

// One open file holding one or more tables.
class TableFile
{
public:
    virtual ~TableFile();

    // The kind of file, as a person names it ("dBASE", "SQLite", ...).
    virtual QString formatName() const = 0;
    // The user tables, at most maxTables; system tables are never listed.
    virtual QStringList tableNames() const = 0;
    // The table of that name. Files that hold one table (dBASE, Paradox)
    // hand it over once; the others open a table as often as asked.
    virtual Result<std::unique_ptr<Table>> openTable(const QString &name) = 0;
};

// Why a file did not open: the login window is offered for the first two.
enum class OpenStatus {
    Ok,
    PasswordRequired, // the file has a password and none was given
    WrongPassword,    // the password given is not the file's
    Unsupported,      // a kind of file (or a variant of it) that no reader here reads
    Failed,           // missing, unreadable or damaged: errorString says which
};

struct OpenResult {
    std::unique_ptr<TableFile> file;
    OpenStatus status = OpenStatus::Ok;
    QString errorString;
    bool ok() const { return status == OpenStatus::Ok; }

    static OpenResult failure(OpenStatus status, const QString &why)
    {
        OpenResult result;
        result.status = status;
        result.errorString = why;
        return result;
    }
};

// Opens path with the reader its extension and its first bytes call for: a
// ".db" file that starts as an SQLite database is one, whatever its name; a
// file whose content matches none of the readers is refused with a message.
// password is used by the formats that have one and ignored by the others.
OpenResult openTableFile(const QString &path, const QString &password = QString());

} // namespace tarnby::tables
