#include "core/browser/BrowserValues.h"

#include "core/app/Twips.h"

#include <QRegularExpression>

#include <algorithm>
#include <cmath>

namespace tarnby {

std::optional<WorkingFolder> parseWorkingFolderLine(const QString &line)
{
    if (line.trimmed().isEmpty())
        return std::nullopt;
    static const QRegularExpression tail(QStringLiteral("^(.*) \\((\\d{1,4})\\)\\s*$"));
    const QRegularExpressionMatch m = tail.match(line);
    if (!m.hasMatch() || m.captured(1).trimmed().isEmpty())
        return WorkingFolder{line.trimmed(), -1};
    return WorkingFolder{m.captured(1), m.captured(2).toInt()};
}

QString workingFolderLine(const WorkingFolder &folder)
{
    return folder.folder + QLatin1String(" (") + QString::number(folder.filterIndex) + QLatin1Char(')');
}

ViewStyle viewStyleFromOption(const QString &value)
{
    bool ok = false;
    const int n = value.trimmed().toInt(&ok);
    if (!ok || n < 0 || n > 3)
        return ViewStyle::Details;
    return ViewStyle(n);
}

QString viewStyleToOption(ViewStyle style)
{
    return QString::number(int(style));
}

std::optional<QList<int>> paneWidthsFromOptions(const PaneValues &tree, const PaneValues &list, double dpi)
{
    bool okTree = false;
    bool okList = false;
    const double treeTwips = tree.width.trimmed().toDouble(&okTree);
    const double listTwips = list.width.trimmed().toDouble(&okList);
    if (!okTree || !okList || treeTwips <= 0 || listTwips <= 0 || dpi <= 0)
        return std::nullopt;
    const int treeWidth = twipsToPixels(treeTwips, dpi);
    const int listWidth = twipsToPixels(listTwips, dpi);
    if (treeWidth < 1 || listWidth < 1)
        return std::nullopt;
    return QList<int>{treeWidth, listWidth};
}

PaneValues paneValues(int leftPixels, int topPixels, int widthPixels, double dpi)
{
    auto twips = [dpi](int pixels) { return QString::number(std::lround(pixelsToTwips(pixels, dpi))); };
    return {twips(leftPixels), twips(topPixels), twips(widthPixels)};
}

std::optional<QRect> windowRectFromOptions(const WindowGeometryValues &values, double dpi)
{
    double number[4] = {};
    const QString *texts[4] = {&values.left, &values.top, &values.width, &values.height};
    for (int i = 0; i < 4; ++i) {
        bool ok = false;
        number[i] = texts[i]->trimmed().toDouble(&ok);
        if (!ok || !std::isfinite(number[i]) || std::abs(number[i]) > 1e7)
            return std::nullopt;
    }
    if (dpi <= 0 || number[2] <= 0 || number[3] <= 0)
        return std::nullopt;
    const QRect rect(twipsToPixels(number[0], dpi), twipsToPixels(number[1], dpi), twipsToPixels(number[2], dpi),
                     twipsToPixels(number[3], dpi));
    if (rect.width() < 1 || rect.height() < 1)
        return std::nullopt;
    return rect;
}

WindowGeometryValues windowGeometryValues(const QRect &pixels, double dpi)
{
    auto twips = [dpi](int value) { return QString::number(std::lround(pixelsToTwips(value, dpi))); };
    return {twips(pixels.x()), twips(pixels.y()), twips(pixels.width()), twips(pixels.height())};
}

WindowShow windowShowFromOption(const QString &value)
{
    return value.trimmed() == QLatin1String("2") ? WindowShow::Maximized : WindowShow::Normal;
}

QString windowShowToOption(WindowShow show)
{
    return QString::number(int(show));
}

QList<int> paneWidthsFromPercent(int percent, int totalWidth)
{
    const int total = std::max(totalWidth, 2);
    const int tree = std::clamp(int(std::lround(total * std::clamp(percent, 20, 80) / 100.0)), 1, total - 1);
    return {tree, total - tree};
}

int treePercent(int treeWidth, int listWidth)
{
    const int total = treeWidth + listWidth;
    if (treeWidth < 0 || listWidth < 0 || total <= 0)
        return 30;
    return std::clamp(int(std::lround(100.0 * treeWidth / total)), 20, 80);
}

QSize thumbnailBox(double widthCm, double heightCm, double dpi)
{
    auto pixels = [dpi](double cm) {
        const double clamped = std::isfinite(cm) ? std::clamp(cm, 0.5, 5.5) : 2.5;
        return std::max(8, int(std::lround(clamped / 2.54 * dpi)));
    };
    return {pixels(widthCm), pixels(heightCm)};
}

int thumbnailBitsFromOption(const QString &value)
{
    static const QRegularExpression number(QStringLiteral("^\\s*(\\d+)\\s*Bits?\\s*$"),
                                           QRegularExpression::CaseInsensitiveOption);
    const QRegularExpressionMatch m = number.match(value);
    if (!m.hasMatch())
        return 24;
    const int bits = m.captured(1).toInt();
    static const QList<int> allowed = {32, 24, 16, 8, 7, 6, 5, 4, 3, 2, 1};
    return allowed.contains(bits) ? bits : 24;
}

namespace {

// A fixed palette of 2^bits colours, the bits shared out green first, then
// red, then blue, the way the eye weighs them.
QList<QRgb> uniformPalette(int bits)
{
    const int green = (bits + 2) / 3;
    const int red = (bits + 1) / 3;
    const int blue = bits / 3;
    auto levels = [](int b) {
        QList<int> values;
        const int count = 1 << b;
        for (int i = 0; i < count; ++i)
            values.append(count == 1 ? 0 : i * 255 / (count - 1));
        return values;
    };
    QList<QRgb> palette;
    for (int r : levels(red)) {
        for (int g : levels(green)) {
            for (int b : levels(blue))
                palette.append(qRgb(r, g, b));
        }
    }
    return palette;
}

} // namespace

QImage reduceColourDepth(const QImage &image, int bits)
{
    if (image.isNull())
        return image;
    switch (bits) {
    case 32:
        return image.convertToFormat(QImage::Format_ARGB32);
    case 24:
        return image.convertToFormat(QImage::Format_RGB32);
    case 16:
        return image.convertToFormat(QImage::Format_RGB16);
    case 1:
        return image.convertToFormat(QImage::Format_Mono, Qt::MonoOnly | Qt::DiffuseDither);
    default:
        break;
    }
    if (bits == 8)
        return image.convertToFormat(QImage::Format_Indexed8, Qt::DiffuseDither);
    const int clamped = std::clamp(bits, 2, 7);
    return image.convertToFormat(QImage::Format_RGB32)
        .convertToFormat(QImage::Format_Indexed8, uniformPalette(clamped), Qt::DiffuseDither);
}

} // namespace tarnby
