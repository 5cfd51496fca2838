#include "core/tools/PictureList.h"

#include "core/settings/LineFile.h"

#include <QDir>

namespace tarnby::tools {

namespace {

QString listPath(const QString &programFolder)
{
    return QDir(programFolder).filePath(QLatin1String(PictureListFileName));
}

} // namespace

QStringList readPictureList(const QString &programFolder)
{
    return settings::readLineFile(listPath(programFolder), MaxPictureListLines).lines;
}

bool writePictureList(const QString &programFolder, const QStringList &lines, QString *error)
{
    return settings::writeLineFile(listPath(programFolder), lines, error);
}

bool addAddress(QStringList &list, const QString &address)
{
    const QString trimmed = address.trimmed();
    for (const QString &entry : std::as_const(list)) {
        if (entry.trimmed() == trimmed)
            return false;
    }
    list.append(address);
    return true;
}

int moveUp(QStringList &list, int row)
{
    if (row <= 0 || row >= list.size())
        return row;
    list.swapItemsAt(row, row - 1);
    return row - 1;
}

int moveDown(QStringList &list, int row)
{
    if (row < 0 || row >= list.size() - 1)
        return row;
    list.swapItemsAt(row, row + 1);
    return row + 1;
}

} // namespace tarnby::tools
