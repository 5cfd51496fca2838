#include "core/settings/SettingsFiles.h"

#include "core/settings/ProgramOptions.h"
#include "core/settings/WindowColors.h"
#include "core/settings/WorkingFolders.h"

#include <QDir>
#include <QFileInfo>
#include <QLoggingCategory>

namespace tarnby::settings {

Q_LOGGING_CATEGORY(lcSettings, "tarnby.settings")

QStringList seedSettingsFiles(const QString &folder, QStringList *warnings)
{
    QStringList written;
    const QDir dir(folder);
    QString error;

    const ProgramOptions defaults;
    if (!QFileInfo::exists(dir.filePath(OptionsFileName))) {
        if (writeTable<ProgramOptions>(dir.filePath(OptionsFileName), optionsFileTable(), defaults, &error))
            written << OptionsFileName;
        else
            warnings->append(error);
    }
    if (!QFileInfo::exists(dir.filePath(MoreOptionsFileName))) {
        if (writeTable<ProgramOptions>(dir.filePath(MoreOptionsFileName), moreOptionsTable(), defaults, &error))
            written << MoreOptionsFileName;
        else
            warnings->append(error);
    }
    if (!QFileInfo::exists(dir.filePath(ColorsFileName))) {
        WindowColors colors;
        ProgramOptions scratch;
        setDefaultColors(colors, scratch);
        if (writeWindowColors(folder, colors, &error))
            written << ColorsFileName;
        else
            warnings->append(error);
    }
    return written;
}

SettingsLoadReport loadSettings(const QString &programFolder, ProgramOptions &options, WindowColors &colors,
                                QStringList &workingFolders)
{
    SettingsLoadReport report;
    // The defaults come first so that they hold wherever a file is missing
    // or short.
    setDefaultColors(colors, options);
    if (programFolder.isEmpty())
        return report;

    report.seeded = seedSettingsFiles(programFolder, &report.warnings);

    const TableReadReport optionsRead = readProgramOptions(programFolder, options);
    for (const QString &name : optionsRead.keptDefault)
        report.keptDefault << QStringLiteral("Options: ") + name;

    const ColorsReadReport colorsRead = readWindowColors(programFolder, colors);
    for (const QString &name : colorsRead.keptDefault)
        report.keptDefault << ColorsFileName + QStringLiteral(": ") + name;

    const WorkingFoldersRead folders = readWorkingFolders(programFolder);
    workingFolders = folders.lines;
    if (!folders.stoppedBecause.isEmpty())
        report.keptDefault << WorkingFoldersFileName + QStringLiteral(": ") + folders.stoppedBecause;

    // For a developer chasing an odd setting: QT_LOGGING_RULES="tarnby.settings.debug=true".
    if (!report.keptDefault.isEmpty())
        qCDebug(lcSettings) << "kept the default for" << report.keptDefault.join(QStringLiteral(", "));
    return report;
}

} // namespace tarnby::settings
