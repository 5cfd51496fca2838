#include "core/settings/WorkingFolders.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/settings/LineFile.h"

#include <QDir>
#include <QLocale>

namespace tarnby::settings {

WorkingFoldersRead readWorkingFolders(const QString &folder)
{
    const LineFileRead file = readLineFile(QDir(folder).filePath(WorkingFoldersFileName), MaxWorkingFolders);
    return {file.found, file.lines, file.stoppedBecause};
}

bool writeWorkingFolders(const QString &folder, const QStringList &lines, QString *error)
{
    // An empty list is one empty line, which reads back as a list of one
    // empty line: the browser then has a first line to select.
    return writeLineFile(QDir(folder).filePath(WorkingFoldersFileName),
                         lines.isEmpty() ? QStringList{QString()} : lines, error);
}

QString workingFolderLine(const QString &path, int filterIndex)
{
    return path + QStringLiteral(" (") + QString::number(filterIndex).trimmed() + QLatin1Char(')');
}

std::optional<WorkingFolderEntry> splitWorkingFolderLine(const QString &line)
{
    if (!line.endsWith(QLatin1Char(')')))
        return std::nullopt;
    const qsizetype open = line.lastIndexOf(QStringLiteral(" ("));
    if (open <= 0)
        return std::nullopt;
    bool ok = false;
    const int index = QLocale::c().toInt(line.mid(open + 2, line.size() - open - 3), &ok);
    if (!ok || index < 0)
        return std::nullopt;
    return WorkingFolderEntry{line.left(open), index};
}

const std::array<QString, FolderPatternCount> &folderPatternTable()
{
    static const std::array<QString, FolderPatternCount> table = [] {
        std::array<QString, FolderPatternCount> t;
        for (int i = 0; i < FolderPatternCount; ++i)
            t[i] = QLatin1String(catalogue::FilterPatterns[i]);
        // The browser's entry 35 adds the sound and video patterns; here the
        // entry is a second list of the picture patterns alone.
        t[35] = t[32];
        t[36] = QStringLiteral("*.TXT;*.RTF;*.INI;*LOG;*.BAT;*.BAK;*.DOS;*.SYS;*.DOC;*.WPS;*.WDB;*.WRI;*.LST;"
                               "*.HTM;*.HTML;*.URL;*.MSG");
        return t;
    }();
    return table;
}

QString allPicturesPattern()
{
    return folderPatternTable()[32];
}

} // namespace tarnby::settings
