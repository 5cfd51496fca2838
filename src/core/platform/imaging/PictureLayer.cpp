#include "PictureLayer.h"

#include <QFileInfo>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>

// FIXME: this first version reads and writes through Qt's own image plugins
// only; the formats that need other libraries or our own codecs come with the
// full picture layer.
namespace tarnby::imaging {

namespace {
PictureInfo describe(const QImage &image, const QString &path)
{
    PictureInfo info;
    info.width = image.width();
    info.height = image.height();
    info.bitsPerPixel = image.depth();
    info.colorCount = image.colorCount() > 0 ? image.colorCount() : (image.depth() >= 24 ? (1LL << 24) : (1LL << image.depth()));
    info.sizeOnDisk = QFileInfo(path).size();
    info.sizeInMemory = image.sizeInBytes();
    info.xResolution = image.dotsPerMeterX() * 0.0254;
    info.yResolution = image.dotsPerMeterY() * 0.0254;
    return info;
}
} // namespace

LoadResult loadPicture(const QString &path, Pages pages)
{
    LoadResult result;
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    const QSize size = reader.size();
    if (size.isValid() && qint64(size.width()) * size.height() > MaxPixels) {
        result.errorString = QStringLiteral("The picture is too large to load (%1 x %2 pixels).")
                                 .arg(size.width())
                                 .arg(size.height());
        return result;
    }
    do {
        QImage image = reader.read();
        if (image.isNull())
            break;
        result.picture.frames.append({image, reader.nextImageDelay()});
    } while (pages == Pages::All && reader.jumpToNextImage());
    if (result.picture.isNull()) {
        result.errorString = reader.errorString();
        return result;
    }
    result.picture.info = describe(result.picture.image(), path);
    return result;
}

SaveResult savePicture(const Picture &picture, const QString &path, int formatCode, int bitsPerPixel, int quality)
{
    SaveResult result;
    if (picture.isNull()) {
        result.errorString = QStringLiteral("There is no picture to save.");
        return result;
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.errorString = file.errorString();
        return result;
    }
    QImageWriter writer(&file, QFileInfo(path).suffix().toLower().toLatin1());
    if (quality > 0)
        writer.setQuality(quality);
    Q_UNUSED(formatCode);
    Q_UNUSED(bitsPerPixel);
    if (!writer.write(picture.image())) {
        result.errorString = writer.errorString();
        file.cancelWriting();
        return result;
    }
    if (!file.commit()) {
        result.errorString = file.errorString();
        return result;
    }
    result.ok = true;
    return result;
}

} // namespace tarnby::imaging
