#include "core/printing/PicturePrint.h"

#include "core/printing/PageCanvas.h"

#include <QPagedPaintDevice>
#include <QRegularExpression>

namespace tarnby::printing {

double boxValue(const QString &text)
{
    // Read as a position box has always been read: the number it starts
    // with, and nothing (0) when it starts with none.
    static const QRegularExpression leading(QStringLiteral("^\\s*([-+]?(\\d+\\.?\\d*|\\.\\d+))"));
    const QRegularExpressionMatch match = leading.match(text);
    if (!match.hasMatch())
        return 0;
    bool ok = false;
    const double value = match.captured(1).toDouble(&ok);
    return ok ? value : 0;
}

QSizeF naturalSizeInches(const QImage &image)
{
    if (image.isNull())
        return {};
    const double dpiX = image.dotsPerMeterX() > 0 ? image.dotsPerMeterX() * 0.0254 : 96.0;
    const double dpiY = image.dotsPerMeterY() > 0 ? image.dotsPerMeterY() * 0.0254 : 96.0;
    QSizeF size(image.width() / dpiX, image.height() / dpiY);
    if (size.width() > PageWidthInches || size.height() > PageHeightInches)
        size.scale(PageWidthInches, PageHeightInches, Qt::KeepAspectRatio);
    return size;
}

PicturePlacement placementFromBoxes(const QString &titleX, const QString &titleY, const QString &x,
                                    const QString &y, const QString &width, const QString &height,
                                    const QImage &image)
{
    PicturePlacement placement;
    placement.titleX = boxValue(titleX);
    placement.titleY = boxValue(titleY);
    placement.x = boxValue(x);
    placement.y = boxValue(y);
    const QSizeF natural = naturalSizeInches(image);
    placement.width = boxValue(width) > 0 ? boxValue(width) : natural.width();
    placement.height = boxValue(height) > 0 ? boxValue(height) : natural.height();
    return placement;
}

PrintResult printPicture(QPagedPaintDevice &device, const QImage &image, const QString &title,
                         const PicturePlacement &placement, const PrintFont &font)
{
    PrintResult result;
    if (image.isNull()) {
        result.errorString = QStringLiteral("There is no picture to print.");
        return result;
    }
    PageCanvas canvas(device);
    canvas.setFont(font.toFont());
    if (!canvas.begin()) {
        result.errorString = canvas.errorString();
        return result;
    }
    if (!title.isEmpty())
        canvas.drawText(placement.titleX, placement.titleY, title);
    const QRectF target(canvas.deviceX(placement.x), canvas.deviceY(placement.y),
                        canvas.deviceX(placement.width), canvas.deviceY(placement.height));
    if (target.width() > 0 && target.height() > 0) {
        canvas.painter().setRenderHint(QPainter::SmoothPixmapTransform);
        canvas.painter().drawImage(target, image);
    }
    result.pages = 1;
    if (!canvas.end())
        result.errorString = canvas.errorString();
    return result;
}

} // namespace tarnby::printing
