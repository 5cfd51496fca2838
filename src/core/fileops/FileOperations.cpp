#include "core/fileops/FileOperations.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/platform/files/NoReplace.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QSet>

namespace tarnby::fileops {

namespace {

using files::failure;
using files::taken;

QString folderOf(const QString &path)
{
    return QFileInfo(path).absolutePath();
}

QString joinPath(const QString &folder, const QString &name)
{
    return folder.endsWith(QLatin1Char('/')) ? folder + name : folder + QLatin1Char('/') + name;
}

QStringList filesStartingWith(const QString &folder, const QString &prefix)
{
    QStringList result;
    const QDir dir(folder);
    const QStringList names = dir.entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
    for (const QString &name : names) {
        if (name.startsWith(prefix, Qt::CaseInsensitive))
            result << joinPath(folder, name);
    }
    return result;
}

// Refuses plans where two files would end under one name, which can happen when
// two companions differ only in the case of their base name.
Result checkTargets(const QList<Step> &steps)
{
    QSet<QString> seen;
    for (const Step &step : steps) {
        if (taken(step.to) || seen.contains(step.to))
            return failure(Outcome::TargetExists, step.to);
        seen.insert(step.to);
    }
    return {};
}

} // namespace

bool isDatabaseExtension(const QString &ext)
{
    static const QStringList exts = {
        QStringLiteral("DB"), QStringLiteral("DBF"), QStringLiteral("MDB"), QStringLiteral("XLS"), QStringLiteral("WK4"),
    };
    return exts.contains(ext.toUpper());
}

QString baseName(const QString &path)
{
    const QString name = QFileInfo(path).fileName();
    const qsizetype dot = name.lastIndexOf(QLatin1Char('.'));
    return dot < 0 ? name : name.left(dot);
}

QStringList renameCompanions(const QString &path)
{
    return filesStartingWith(folderOf(path), baseName(path) + QLatin1Char('.'));
}

QStringList moveCompanions(const QString &path)
{
    return filesStartingWith(folderOf(path), baseName(path));
}

Plan planRename(const QString &path, const QString &newName)
{
    Plan plan;
    const QString name = newName.trimmed();
    if (name.isEmpty()) {
        plan.problem = failure(Outcome::EmptyName, path);
        return plan;
    }
    if (name.contains(QLatin1Char('/')) || name == QLatin1String(".") || name == QLatin1String("..")) {
        plan.problem = failure(Outcome::InvalidName, name);
        return plan;
    }
    const QFileInfo source(path);
    if (!source.isFile()) {
        plan.problem = failure(Outcome::SourceMissing, path);
        return plan;
    }

    const QString folder = source.absolutePath();
    const QString oldBase = baseName(path);
    if (isDatabaseExtension(catalogue::GetFileExt(path))) {
        for (const QString &file : renameCompanions(path)) {
            const QString rest = QFileInfo(file).fileName().mid(oldBase.size());
            plan.steps.append({file, joinPath(folder, name + rest)});
        }
    } else {
        // The rename keeps the extension as it is written on disk.
        const QString fileName = source.fileName();
        const qsizetype dot = fileName.lastIndexOf(QLatin1Char('.'));
        const QString rest = dot < 0 ? QString() : fileName.mid(dot);
        plan.steps.append({source.absoluteFilePath(), joinPath(folder, name + rest)});
    }
    plan.problem = checkTargets(plan.steps);
    return plan;
}

Plan planMove(const QString &path, const QString &target)
{
    Plan plan;
    const QFileInfo source(path);
    if (!source.isFile()) {
        plan.problem = failure(Outcome::SourceMissing, path);
        return plan;
    }
    if (target.isEmpty() || target.endsWith(QLatin1Char('/'))) {
        plan.problem = failure(Outcome::InvalidName, target);
        return plan;
    }

    if (isDatabaseExtension(catalogue::GetFileExt(path))) {
        const QString oldBase = baseName(path);
        const QString newBase = baseName(target);
        const QString targetFolder = folderOf(target);
        for (const QString &file : moveCompanions(path)) {
            // Under the same base name every file keeps its name exactly,
            // whatever the case of its base (CLIENTSOLD.BAK stays so).
            const QString fileName = QFileInfo(file).fileName();
            const QString newName = newBase == oldBase ? fileName : newBase + fileName.mid(oldBase.size());
            plan.steps.append({file, joinPath(targetFolder, newName)});
        }
    } else {
        plan.steps.append({source.absoluteFilePath(), QFileInfo(target).absoluteFilePath()});
    }
    plan.problem = checkTargets(plan.steps);
    return plan;
}

Result execute(const Plan &plan)
{
    if (!plan.ok())
        return plan.problem;
    for (qsizetype i = 0; i < plan.steps.size(); ++i) {
        const Result r = moveWithoutOverwrite(plan.steps[i].from, plan.steps[i].to);
        if (r.ok())
            continue;
        // Put back what was done, newest first, so the folder looks as it did.
        for (qsizetype j = i - 1; j >= 0; --j)
            moveWithoutOverwrite(plan.steps[j].to, plan.steps[j].from);
        return r;
    }
    return {};
}

} // namespace tarnby::fileops
