#include "core/tools/QuickTips.h"

#include "core/settings/LineFile.h"

#include <QDateTime>
#include <QFileInfo>
#include <QRandomGenerator>

namespace tarnby::tools {

QString missingTipsText()
{
    const QString name = QLatin1String(TipsFileName);
    return QStringLiteral("That the ") + name + QStringLiteral(" file was not found? ") + QStringLiteral("\r\n\r\n")
           + QStringLiteral("Create a text file named ") + name
           + QStringLiteral(" using NotePad with 1 tip per line. ")
           + QStringLiteral("Then place it in the same directory as the application. ");
}

TipsLoad LoadTips(const QString &path)
{
    TipsLoad load;
    if (path.isEmpty() || !QFileInfo(path).isFile())
        return load;
    const settings::LineFileRead read = settings::readLineFile(path, MaxTips);
    load.ok = read.found;
    load.tips = read.lines;
    load.readError = !read.found || !read.stoppedBecause.isEmpty();
    return load;
}

int tipIndexFromFraction(double r, int count)
{
    const double index = std::floor(r * count + 1);
    if (index >= 1 && index <= count)
        return int(index);
    return 1;
}

std::optional<QString> tipToShow(const QStringList &tips, int index)
{
    if (tips.isEmpty() || index > tips.size() || index < 1)
        return std::nullopt;
    return tips.at(index - 1);
}

int randomTipIndex(int count)
{
    QRandomGenerator generator{quint32(QDateTime::currentMSecsSinceEpoch())};
    return tipIndexFromFraction(generator.generateDouble(), count);
}

bool showTipsAtStartup(const QString &optionValue)
{
    return optionValue.trimmed() != QLatin1String("1");
}

QString startupOptionValue(bool doNotShow)
{
    return doNotShow ? QStringLiteral("1") : QStringLiteral("0");
}

} // namespace tarnby::tools
