#include "core/app/ProgramFolder.h"

#include "core/app/SettingsStore.h"

#include <QCoreApplication>
#include <QDir>
#include <QDirIterator>
#include <QFile>
#include <QFileInfo>
#include <QSaveFile>
#include <QStandardPaths>
#include <QTemporaryFile>

namespace tarnby {

namespace {

const QString BuiltInSource = QStringLiteral(":/programfolder");

// The installed data folder relative to the installed bin folder; the build
// computes it from its install directories.
#ifndef TARNBY_DATA_FROM_BIN
#define TARNBY_DATA_FROM_BIN "../share/tarnby"
#endif

// Whether folder exists (after trying to create it) and takes new files.
bool usable(const QString &folder, QString *why)
{
    if (folder.isEmpty()) {
        *why = QStringLiteral("no folder was named");
        return false;
    }
    QFileInfo info(folder);
    if (info.exists() && !info.isDir()) {
        *why = QStringLiteral("it is a file, not a folder");
        return false;
    }
    if (!info.exists() && !QDir().mkpath(folder)) {
        *why = QStringLiteral("it does not exist and cannot be created");
        return false;
    }
    QTemporaryFile probe(QDir(folder).filePath(QStringLiteral(".tarnby-write-test-XXXXXX")));
    if (!probe.open()) {
        *why = QStringLiteral("Tarnby cannot write in it");
        return false;
    }
    return true;
}

} // namespace

QString defaultDataFolder()
{
    const QString base = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
    return QDir(base).filePath(QStringLiteral("Tarnby"));
}

QString deliveredFilesSource(const QString &executableFolder)
{
    if (!executableFolder.isEmpty()) {
        for (const char *relative : {TARNBY_DATA_FROM_BIN, TARNBY_DATA_FROM_PROGRAMS}) {
            const QString installed = QDir::cleanPath(QDir(executableFolder).filePath(QLatin1String(relative)));
            if (QFileInfo(installed).isDir())
                return installed;
        }
    }
    return BuiltInSource;
}

QString deliveredFilesSource()
{
    // applicationDirPath() warns without an application object; a program
    // that has none has no installed folder to prefer either.
    if (!QCoreApplication::instance())
        return BuiltInSource;
    return deliveredFilesSource(QCoreApplication::applicationDirPath());
}

QStringList deliveredFiles(const QString &source)
{
    QStringList files;
    QDirIterator it(source, QDir::Files, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        it.next();
        files << it.filePath().mid(source.size() + 1);
    }
    files.sort();
    return files;
}

QStringList seedProgramFolder(const QString &folder, QStringList *warnings, const QString &source)
{
    QStringList written;
    const QDir dir(folder);
    for (const QString &relative : deliveredFiles(source)) {
        const QString target = dir.filePath(relative);
        if (QFileInfo::exists(target))
            continue;
        if (!QDir().mkpath(QFileInfo(target).absolutePath())) {
            warnings->append(QStringLiteral("Tarnby could not create the folder for %1.").arg(target));
            continue;
        }
        QFile input(source + QLatin1Char('/') + relative);
        if (!input.open(QIODevice::ReadOnly)) {
            warnings->append(QStringLiteral("Tarnby could not read %1: %2").arg(input.fileName(), input.errorString()));
            continue;
        }
        QSaveFile out(target);
        if (!out.open(QIODevice::WriteOnly) || out.write(input.readAll()) < 0 || !out.commit()) {
            warnings->append(QStringLiteral("Tarnby could not write %1: %2").arg(target, out.errorString()));
            continue;
        }
        written << relative;
    }
    return written;
}

ProgramFolderResult resolveProgramFolder(const ProgramFolderRequest &request, SettingsStore &store)
{
    ProgramFolderResult result;
    const QString saved = store.value(QLatin1String(SettingsStore::RegisteredSection),
                                      QLatin1String(SettingsStore::ProgramFolderKey)).toString();
    const QString dataFolder = request.dataFolder.isEmpty() ? defaultDataFolder() : request.dataFolder;

    struct Candidate {
        QString path;
        const char *origin;
    };
    const Candidate candidates[] = {
        {request.homeOption, "the --home option"},
        {request.homeVariable, "TARNBY_HOME"},
        {saved, "the saved settings"},
        {dataFolder, "the user's data folder"},
        {QDir::temp().filePath(QStringLiteral("Tarnby-%1").arg(qEnvironmentVariable("USER", QStringLiteral("user")))),
         "the temporary folder"},
    };

    for (const Candidate &c : candidates) {
        if (c.path.isEmpty())
            continue;
        const QString path = QDir::cleanPath(QDir(c.path).absolutePath());
        QString why;
        if (!usable(path, &why)) {
            result.warnings << QStringLiteral("The program folder \"%1\" named by %2 cannot be used: %3. "
                                              "Tarnby looks for another one.")
                                   .arg(path, QLatin1String(c.origin), why);
            continue;
        }
        result.path = path;
        break;
    }

    if (!result.path.isEmpty()) {
        result.seeded = seedProgramFolder(result.path, &result.warnings);
        store.setValue(QLatin1String(SettingsStore::RegisteredSection),
                       QLatin1String(SettingsStore::ProgramFolderKey), result.path);
        store.sync();
    }
    return result;
}

} // namespace tarnby
