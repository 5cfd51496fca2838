#include "CliCommand.h"

#include "core/app/ProgramFolder.h"
#include "core/app/SettingsStore.h"
#include "core/organizer/BatchAdd.h"
#include "core/organizer/OrganizerLocation.h"
#include "core/organizer/OrganizerStamp.h"
#include "core/organizer/OrganizerStore.h"
#include "core/search/DiskSearchTree.h"
#include "core/search/FileSearch.h"
#include "core/settings/MailPasswords.h"
#include "core/settings/ProgramOptions.h"

#include <QDir>
#include <QEventLoop>
#include <QFile>
#include <QFileInfo>

namespace {

using namespace tarnby::organizer;
using tarnby::cli::err;
using tarnby::cli::out;

const QString Usage = QStringLiteral(
    "Usage: tarnby-cli group list [--home DIR]\n"
    "       tarnby-cli group add NAME [DESC] [--home DIR]\n"
    "       tarnby-cli group files NAME [--sort id|group|name|type|date|keyword] [--home DIR]\n"
    "       tarnby-cli group import NAME DIR... [--pattern PATTERN] [--home DIR]\n"
    "       tarnby-cli group find --name TEXT | --keyword TEXT [--home DIR]\n"
    "       tarnby-cli group compact [--home DIR]\n"
    "       tarnby-cli group clear --yes [--home DIR]\n");

int usageError(const QString &message = {})
{
    if (!message.isEmpty())
        err(QStringLiteral("tarnby-cli group: ") + message + QLatin1Char('\n'));
    err(Usage);
    return 2;
}

int storeError(const StoreResult &result)
{
    err(QStringLiteral("tarnby-cli group: ") + result.error + QLatin1Char('\n'));
    return 2;
}

// The program folder as the program finds it: --home, else TARNBY_HOME, the
// saved setting or the user's data folder. A folder named by --home is used as
// it is, without being recorded as the saved one.
QString programFolder(const QString &home, QString *error)
{
    QStringList warnings;
    if (!home.isEmpty()) {
        const QString path = QDir::cleanPath(QDir(home).absolutePath());
        if (!QDir().mkpath(path)) {
            *error = QStringLiteral("the folder %1 cannot be made").arg(path);
            return {};
        }
        tarnby::seedProgramFolder(path, &warnings);
        return path;
    }
    tarnby::SettingsStore store;
    const tarnby::ProgramFolderResult result =
        tarnby::resolveProgramFolder({QString(), qEnvironmentVariable("TARNBY_HOME"), QString()}, store);
    if (result.path.isEmpty())
        *error = warnings.join(QLatin1Char(' '));
    return result.path;
}

// The catalogue the options name. A server's password is asked of the
// keyring; when the keyring has none, the PostgreSQL client's own sources
// (PGPASSWORD, ~/.pgpass) still apply.
StoreLocation catalogueLocation(const QString &folder)
{
    tarnby::settings::ProgramOptions options;
    tarnby::settings::readProgramOptions(folder, options);
    StoreLocation location = organizerLocation(folder, options);
    if (location.engine == StoreLocation::Engine::PostgreSQL) {
        QEventLoop loop;
        QObject context;
        tarnby::settings::MailPasswords::read(
            organizerPasswordKey(location), &context,
            [&](const tarnby::settings::PasswordResult &r) {
                if (r.ok)
                    location.password = r.password;
                loop.quit();
            },
            3000);
        loop.exec();
    }
    return location;
}

QString entryLine(const FileEntry &e)
{
    const QString fields[] = {e.GroupName, e.FileName, e.FileLocation, e.FileDescription, e.FileKeyword,
                              e.FileType, e.Date, e.Time, e.DateDisp};
    QStringList cells;
    for (QString f : fields)
        cells << f.replace(QLatin1Char('\t'), QLatin1Char(' ')).replace(QLatin1Char('\n'), QLatin1Char(' '));
    return cells.join(QLatin1Char('\t')) + QLatin1Char('\n');
}

int listGroups(const OrganizerStore &store)
{
    StoreResult result;
    const QList<GroupCount> counts = store.groupCounts(&result);
    if (!result.ok())
        return storeError(result);
    QString text;
    for (const GroupCount &c : counts)
        text += c.GroupName + QLatin1Char('\t') + QString::number(c.entries) + QLatin1Char('\n');
    out(text);
    return 0;
}

int addGroup(const OrganizerStore &store, const QStringList &words)
{
    if (words.isEmpty() || words.size() > 2 || words.first().trimmed().isEmpty())
        return usageError(QStringLiteral("add needs a NAME and at most a DESC"));
    StoreResult result;
    if (store.groupNames(&result).contains(words.first(), Qt::CaseInsensitive)) {
        err(QStringLiteral("tarnby-cli group: the group %1 exists already\n").arg(words.first()));
        return 1;
    }
    if (!result.ok())
        return storeError(result);
    GroupRow row = groupMadeOnTheFly(words.first(), SetTimeStamp());
    if (words.size() == 2)
        row.GroupDesc = words.at(1);
    store.addGroup(row, &result);
    return result.ok() ? 0 : storeError(result);
}

int listFiles(const OrganizerStore &store, const QString &group, SortKey key)
{
    // The browser's columns: group, name, location, description, search
    // word, type, file date, file time, added (fields 1-6, 8, 9 and 11).
    static constexpr int columns[] = {1, 2, 3, 4, 5, 6, 8, 9, 11};
    QByteArray buffer;
    buffer.reserve(1 << 17);
    const StoreResult result = store.forEachEntry(group, key, [&](const OrganizerStore::RawRow &row) {
        for (int c : columns) {
            const QByteArrayView field = row.field(c);
            const qsizetype start = buffer.size();
            buffer.append(field);
            // A tab or a line end inside a field would break the row.
            char *const text = buffer.data();
            for (qsizetype i = start; i < buffer.size(); ++i) {
                const char ch = text[i];
                if (ch == '\t' || ch == '\n' || ch == '\r')
                    text[i] = ' ';
            }
            buffer.append(c == 11 ? '\n' : '\t');
        }
        if (buffer.size() > (1 << 16)) {
            tarnby::cli::outBytes(buffer);
            buffer.clear();
        }
        return true;
    });
    tarnby::cli::outBytes(buffer);
    return result.ok() ? 0 : storeError(result);
}

// The batch add over a report-mode walk: each folder that holds matching
// files is added in one go with one creation stamp, as one OK click of the
// batch window adds the folder the search reached.
int importFolders(const OrganizerStore &store, const QString &group, const QStringList &folders, const QString &pattern)
{
    for (const QString &folder : folders) {
        if (!QFileInfo(folder).isDir())
            return usageError(QStringLiteral("not a folder: ") + folder);
    }
    StoreResult result;
    const QStringList names = store.groupNames(&result);
    if (!result.ok())
        return storeError(result);
    // A name that no group carries yet becomes a group first, so that its
    // entries never point at nothing.
    if (!names.contains(group, Qt::CaseInsensitive)) {
        store.addGroup(groupMadeOnTheFly(group, SetTimeStamp()), &result);
        if (!result.ok())
            return storeError(result);
    }

    QStringList roots;
    for (const QString &f : folders)
        roots << QDir::cleanPath(QFileInfo(f).absoluteFilePath());
    tarnby::search::DiskSearchTree tree(roots);
    tarnby::search::FixedAnswers answers(true, false);
    tarnby::search::FileSearch search(tree, tree, answers);
    qint64 added = 0;
    int folderCount = 0;
    search.setReportSink([&](const QString &folder, const QStringList &files) {
        const TimeStamp stamp = SetTimeStamp();
        store.addBatch(groupMadeOnTheFly(group, stamp), batchEntries(group, folder, files, stamp), &result);
        if (!result.ok())
            return false;
        added += files.size();
        ++folderCount;
        return true;
    });
    tarnby::search::SearchOptions options;
    options.pattern = pattern;
    options.reportMode = true;
    search.start(options);
    search.run();
    if (!result.ok())
        return storeError(result);
    out(QStringLiteral("%1 files from %2 folders added to %3\n").arg(added).arg(folderCount).arg(group));
    return 0;
}

int findEntry(const OrganizerStore &store, FindField field, const QString &text)
{
    StoreResult result;
    const std::optional<FileEntry> found = store.findNearest(field, text, &result);
    if (!result.ok())
        return storeError(result);
    if (!found)
        return 1;
    out(entryLine(*found));
    return 0;
}

int runGroup(const QByteArrayList &args)
{
    if (args.isEmpty())
        return usageError();
    const QString sub = QString::fromLocal8Bit(args.first());
    QString home;
    QString sortName = QStringLiteral("id");
    QString pattern = QStringLiteral("*");
    QString findName, findKeyword;
    bool findNameSeen = false, findKeywordSeen = false, yes = false;
    QStringList words;
    for (qsizetype i = 1; i < args.size(); ++i) {
        const QByteArray &arg = args.at(i);
        auto value = [&](QString *target) {
            if (i + 1 >= args.size())
                return false;
            *target = QString::fromLocal8Bit(args.at(++i));
            return true;
        };
        if (arg == "--home") {
            if (!value(&home))
                return usageError(QStringLiteral("--home needs a folder"));
        } else if (arg == "--sort") {
            if (!value(&sortName))
                return usageError(QStringLiteral("--sort needs a key"));
        } else if (arg == "--pattern") {
            if (!value(&pattern))
                return usageError(QStringLiteral("--pattern needs a pattern"));
        } else if (arg == "--name") {
            if (!value(&findName))
                return usageError(QStringLiteral("--name needs a text"));
            findNameSeen = true;
        } else if (arg == "--keyword") {
            if (!value(&findKeyword))
                return usageError(QStringLiteral("--keyword needs a text"));
            findKeywordSeen = true;
        } else if (arg == "--yes") {
            yes = true;
        } else if (arg == "--help" || arg == "-h") {
            return usageError();
        } else if (arg.startsWith("--")) {
            return usageError(QStringLiteral("unknown option ") + QString::fromLocal8Bit(arg));
        } else {
            words << (sub == QLatin1String("import") && !words.isEmpty() ? QFile::decodeName(arg)
                                                                         : QString::fromLocal8Bit(arg));
        }
    }

    static const QStringList subs = {QStringLiteral("list"), QStringLiteral("add"), QStringLiteral("files"),
                                     QStringLiteral("import"), QStringLiteral("find"), QStringLiteral("compact"),
                                     QStringLiteral("clear")};
    if (sub == QLatin1String("--help") || sub == QLatin1String("-h"))
        return usageError();
    if (!subs.contains(sub))
        return usageError(QStringLiteral("unknown sub-command ") + sub);
    const std::optional<SortKey> key = sortKeyFromName(sortName);
    if (!key)
        return usageError(QStringLiteral("unknown sort key ") + sortName);
    if (sub == QLatin1String("clear") && !yes)
        return usageError(QStringLiteral("clear removes every entry of every group; confirm with --yes"));
    if (sub == QLatin1String("find") && findNameSeen == findKeywordSeen)
        return usageError(QStringLiteral("find needs either --name TEXT or --keyword TEXT"));
    if ((sub == QLatin1String("files") && words.size() != 1) || (sub == QLatin1String("import") && words.size() < 2))
        return usageError();

    QString error;
    const QString folder = programFolder(home, &error);
    if (folder.isEmpty())
        return usageError(QStringLiteral("no program folder: ") + error);
    const OrganizerStore store(catalogueLocation(folder));
    // A catalogue that is missing is made with its tables, as the program
    // folder is given its delivered files.
    const StoreResult made = store.create();
    if (!made.ok())
        return storeError(made);

    if (sub == QLatin1String("list"))
        return listGroups(store);
    if (sub == QLatin1String("add"))
        return addGroup(store, words);
    if (sub == QLatin1String("files"))
        return listFiles(store, words.first(), *key);
    if (sub == QLatin1String("import"))
        return importFolders(store, words.first(), words.mid(1), pattern);
    if (sub == QLatin1String("find"))
        return findNameSeen ? findEntry(store, FindField::FileName, findName.trimmed())
                            : findEntry(store, FindField::FileKeyword, findKeyword.trimmed());
    const StoreResult result = sub == QLatin1String("compact") ? store.compact() : store.clear();
    if (!result.ok())
        return storeError(result);
    out(sub == QLatin1String("compact") ? QStringLiteral("File Successfully Compacted\n")
                                        : QStringLiteral("All Files successfully removed from the Group File Organizer Database\n"));
    return 0;
}

} // namespace

TARNBY_CLI_COMMAND(group, "group", "group list|add|files|import|find|compact|clear ... [--home DIR]",
                   "The file organizer's catalogue. list: the groups with their entry counts. add NAME [DESC]: "
                   "a new group. files NAME [--sort id|group|name|type|date|keyword]: the group's entries as "
                   "tab-separated rows (group, name, location, description, search word, type, file date, file "
                   "time, added). import NAME DIR... [--pattern PATTERN]: adds every file below each DIR that "
                   "matches PATTERN (default \"*\"), one creation stamp per folder. find --name TEXT | --keyword "
                   "TEXT: the nearest entry at or after TEXT. compact: compacts the database. clear --yes: removes "
                   "every entry of every group. --home DIR uses another program folder. Exit status 0 done, 1 "
                   "nothing found, 2 error.",
                   runGroup);
