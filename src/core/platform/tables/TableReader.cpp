#include "TableReader.h"

#include "CsvText.h"
#include "DbfReader.h"
#include "LotusReader.h"
#include "MdbReader.h"
#include "ParadoxReader.h"
#include "SqliteReader.h"
#include "XlsReader.h"

#include <QFile>
#include <QFileInfo>

namespace tarnby::tables {

Table::~Table() = default;

Result<IndexKey> Table::indexKey(const QString &indexName) const
{
    return Result<IndexKey>::failure(
        QStringLiteral("Tarnby cannot tell which fields the index \"%1\" of the table \"%2\" orders by.")
            .arg(indexName, name()));
}

Result<qint64> Table::appendCsvRows(qint64 first, qint64 count, QByteArray &out)
{
    constexpr int pageRows = 4096;
    qint64 written = 0;
    while (written < count) {
        const int wanted = int(qMin<qint64>(pageRows, count - written));
        const Result<QList<Row>> read = readRows(first + written, wanted);
        if (!read.ok())
            return Result<qint64>::failure(read.errorString);
        for (const Row &row : read.value)
            appendCsvRow(out, row);
        written += read.value.size();
        if (read.value.size() < wanted)
            break; // the table's end
    }
    return Result<qint64>::success(written);
}

TableFile::~TableFile() = default;

OpenResult openTableFile(const QString &path, const QString &password)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return OpenResult::failure(OpenStatus::Failed,
                      QStringLiteral("The file \"%1\" could not be opened: %2").arg(path, file.errorString()));
    const QByteArray head = file.read(64);
    file.close();
    const QString extension = QFileInfo(path).suffix().toLower();

    // Content first: an SQLite database is one whatever its name says.
    if (looksLikeSqlite(head))
        return openSqliteFile(path);
    if (extension == QLatin1String("mdb") || head.mid(4, 15).startsWith("Standard Jet DB"))
        return openMdbFile(path, password);
    if (extension == QLatin1String("dbf") || (extension != QLatin1String("db") && looksLikeDbf(head)))
        return openDbfFile(path);
    if (extension == QLatin1String("db"))
        return openParadoxFile(path, password);
    if (extension == QLatin1String("xls"))
        return openXlsFile(path);
    if (extension == QLatin1String("wk4") || extension == QLatin1String("wk3") || extension == QLatin1String("wk1")
        || extension == QLatin1String("wks"))
        return openLotusFile(path);
    return OpenResult::failure(OpenStatus::Unsupported,
                  QStringLiteral("Tarnby cannot read tables from the file \"%1\" yet.").arg(QFileInfo(path).fileName()));
}

} // namespace tarnby::tables
