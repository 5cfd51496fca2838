#include "CliCommand.h"

#include "core/search/DiskSearchTree.h"
#include "core/search/FileSearch.h"

#include <QFile>
#include <QFileInfo>
#include <QSaveFile>

namespace {

using namespace tarnby::search;

const QString Usage = QStringLiteral("Usage: tarnby-cli find PATTERN DIR... [--out FILE] [--count]\n");

int usageError(const QString &message = {})
{
    if (!message.isEmpty())
        tarnby::cli::err(QStringLiteral("tarnby-cli find: ") + message + QLatin1Char('\n'));
    tarnby::cli::err(Usage);
    return 2;
}

// The report-mode walk over the given folders: every folder that holds a
// matching file, in the order the walk meets it, as "##" + folder and then
// the matching names. Standard output gets LF line ends; --out writes the
// lines as the report file has them, CR LF, and replaces FILE only when the
// walk completed.
int runFind(const QByteArrayList &args)
{
    QString pattern;
    QStringList folders;
    QString outFile;
    bool countOnly = false;
    bool patternSeen = false;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray &arg = args.at(i);
        if (arg == "--count") {
            countOnly = true;
        } else if (arg == "--out") {
            if (i + 1 >= args.size())
                return usageError(QStringLiteral("--out needs a file name"));
            outFile = QFile::decodeName(args.at(++i));
        } else if (arg.startsWith("--")) {
            return usageError(QStringLiteral("unknown option ") + QString::fromLocal8Bit(arg));
        } else if (!patternSeen) {
            pattern = QString::fromLocal8Bit(arg);
            patternSeen = true;
        } else {
            folders.append(QFile::decodeName(arg));
        }
    }
    if (!patternSeen || folders.isEmpty())
        return usageError();
    if (pattern.trimmed().isEmpty())
        return usageError(QStringLiteral("the pattern is empty"));
    for (const QString &folder : folders) {
        if (!QFileInfo(folder).isDir())
            return usageError(QStringLiteral("not a folder: ") + folder);
    }

    DiskSearchTree tree(folders);
    FixedAnswers answers(true, true);
    FileSearch search(tree, tree, answers);
    QByteArray report;
    const bool toFile = !outFile.isEmpty();
    // The folder and names as the filesystem holds them: the walk hands them
    // over as text, which cannot carry bytes that are no valid text.
    search.setReportSink([&](const QString &, const QStringList &) {
        if (toFile)
            report += reportLines(tree.listedFolder(), tree.listedFileNames());
        else if (!countOnly)
            tarnby::cli::outBytes(reportLines(tree.listedFolder(), tree.listedFileNames(), "\n"));
        return true;
    });
    SearchOptions options;
    options.pattern = pattern;
    options.reportMode = true;
    search.start(options);
    search.run();

    if (toFile) {
        QSaveFile file(outFile);
        if (!file.open(QIODevice::WriteOnly) || file.write(report) != report.size() || !file.commit()) {
            tarnby::cli::err(QStringLiteral("tarnby-cli find: cannot write %1: %2\n").arg(outFile, file.errorString()));
            return 2;
        }
    }
    if (countOnly)
        tarnby::cli::out(QString::number(search.foundFileCount()) + QLatin1Char('\n'));
    return search.foundFileCount() > 0 ? 0 : 1;
}

} // namespace

TARNBY_CLI_COMMAND(find, "find", "find PATTERN DIR... [--out FILE] [--count]",
                   "Walk the folders below each DIR as the search window does in report mode: each folder "
                   "holding files that match PATTERN (\";\"-separated wildcards, any case) as \"##\" + folder, "
                   "then the matching names. --out writes the lines CR LF to FILE; --count prints only the "
                   "number of matching files. Exit status 0 found, 1 none, 2 usage error.",
                   runFind);
