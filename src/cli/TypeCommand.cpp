#include "CliCommand.h"

#include "core/catalogue/FileCatalogue.h"

namespace {

// One line per name: name, extension, index, text flag, database flag,
// category, save-format code, separated by tabs. The name is echoed as the
// bytes it came in.
int runType(const QByteArrayList &args)
{
    using namespace tarnby::catalogue;
    if (args.isEmpty()) {
        tarnby::cli::err(QStringLiteral("Usage: tarnby-cli type NAME...\n"));
        return 2;
    }
    for (const QByteArray &raw : args) {
        const QString name = QString::fromLocal8Bit(raw);
        const FileType type = GetFileTypeFlag(name);
        tarnby::cli::outBytes(raw);
        tarnby::cli::out(QStringLiteral("\t%1\t%2\t%3\t%4\t%5\t%6\n")
                             .arg(type.extension)
                             .arg(type.index)
                             .arg(type.textFile ? 1 : 0)
                             .arg(type.databaseFile ? 1 : 0)
                             .arg(GetFileCategoryName(name))
                             .arg(GetSaveFormatCode(type.extension)));
    }
    return 0;
}

} // namespace

TARNBY_CLI_COMMAND(type, "type", "type NAME...",
                   "Classify file names: name, extension, catalogue index (71 unknown), text flag, "
                   "database flag, category, save-format code; tab-separated.",
                   runType);
