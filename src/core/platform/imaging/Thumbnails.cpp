#include "Thumbnails.h"

#include "PictureLayer.h"

#include <QImageReader>

// FIXME: the shared on-disk cache and the per-format fast roads come with the
// full picture layer; this version scales while decoding where Qt can.
namespace tarnby::imaging {

QImage thumbnail(const QString &path, int size, QString *errorString)
{
    QImageReader reader(path);
    const QSize full = reader.size();
    if (full.isValid() && size > 0)
        reader.setScaledSize(full.scaled(size, size, Qt::KeepAspectRatio));
    QImage image = reader.read();
    if (image.isNull()) {
        const LoadResult loaded = loadPicture(path);
        if (!loaded.ok()) {
            if (errorString)
                *errorString = loaded.errorString;
            return {};
        }
        image = loaded.picture.image();
    }
    if (image.width() > size || image.height() > size)
        image = image.scaled(size, size, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    return image;
}

} // namespace tarnby::imaging
