#include "CliCommand.h"

#include "core/platform/tables/TableReader.h"
#include "core/tables/TableText.h"

#include <QFile>

namespace {

using namespace tarnby::tables;

struct TableOptions {
    QString path;
    QString table;
    QString passwordFile;
    bool fields = false;
    bool csv = false;
};

int usage()
{
    tarnby::cli::err(QStringLiteral(
        "Usage: tarnby-cli table FILE [--fields] [--csv] [--table T] [--password-file F]\n"));
    return 2;
}

int fail(const QString &message)
{
    tarnby::cli::err(QStringLiteral("tarnby-cli table: %1\n").arg(message));
    return 1;
}

// The password is the file's first line, without its line end.
bool readPassword(const QString &path, QString *password, QString *error)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *error = QStringLiteral("The password file \"%1\" could not be read: %2").arg(path, file.errorString());
        return false;
    }
    QByteArray line = file.read(64 * 1024);
    const qsizetype end = line.indexOf('\n');
    if (end >= 0)
        line.truncate(end);
    if (line.endsWith('\r'))
        line.chop(1);
    *password = QString::fromUtf8(line);
    return true;
}

// Writes straight to standard output: the CSV of a large table is written in
// pages and never held whole.
class StandardOutput : public QIODevice
{
public:
    StandardOutput() { open(QIODevice::WriteOnly); }

protected:
    qint64 readData(char *, qint64) override { return -1; }
    qint64 writeData(const char *data, qint64 size) override
    {
        return qint64(std::fwrite(data, 1, size_t(size), stdout)) == size ? size : -1;
    }
};

int runTable(const QByteArrayList &args)
{
    TableOptions options;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray &arg = args[i];
        if (arg == "--fields") {
            options.fields = true;
        } else if (arg == "--csv") {
            options.csv = true;
        } else if (arg == "--table" || arg == "--password-file") {
            if (i + 1 >= args.size())
                return usage();
            const QString value = QString::fromLocal8Bit(args[++i]);
            (arg == "--table" ? options.table : options.passwordFile) = value;
        } else if (arg.startsWith("--") || !options.path.isEmpty()) {
            return usage();
        } else {
            options.path = QString::fromLocal8Bit(arg);
        }
    }
    if (options.path.isEmpty() || (options.fields && options.csv))
        return usage();

    QString password;
    QString error;
    if (!options.passwordFile.isEmpty() && !readPassword(options.passwordFile, &password, &error))
        return fail(error);

    const OpenResult opened = openTableFile(options.path, password);
    if (!opened.ok())
        return fail(opened.errorString);
    const QStringList names = opened.file->tableNames();

    if (!options.fields && !options.csv) {
        QString listing;
        for (const QString &name : names) {
            const Result<std::unique_ptr<Table>> table = opened.file->openTable(name);
            if (!table.ok())
                return fail(table.errorString);
            listing += QStringLiteral("%1\t%2\t%3\n")
                           .arg(name)
                           .arg(table.value->rowCount())
                           .arg(table.value->fields().size());
        }
        tarnby::cli::out(listing);
        return 0;
    }

    QString name = options.table;
    if (name.isEmpty()) {
        if (names.isEmpty())
            return fail(QStringLiteral("The file holds no tables."));
        name = names.first();
    }
    const Result<std::unique_ptr<Table>> table = opened.file->openTable(name);
    if (!table.ok())
        return fail(table.errorString);

    if (options.fields) {
        QString lines;
        const QList<Field> fields = table.value->fields();
        for (const Field &field : fields)
            lines += fieldLine(field) + QLatin1Char('\n');
        tarnby::cli::out(lines);
        return 0;
    }

    StandardOutput output;
    error = writeCsv(*table.value, output);
    std::fflush(stdout);
    return error.isEmpty() ? 0 : fail(error);
}

} // namespace

TARNBY_CLI_COMMAND(table, "table", "table FILE [--fields] [--csv] [--table T] [--password-file F]",
                   "Database and spreadsheet tables: without options one line per table (name, rows, "
                   "fields; tab-separated); --fields the fields of a table (name - type - size); --csv "
                   "its rows as CSV. --table picks the table (default the first), --password-file reads "
                   "the password from the file's first line.",
                   runTable);
