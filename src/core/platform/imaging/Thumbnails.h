#pragma once

#include <QByteArray>
#include <QFlags>
#include <QImage>
#include <QSize>
#include <QString>

// Thumbnails of picture files.
//
// Every function here is thread-safe and meant for worker threads: each call
// works on its own data, and the shared on-disk cache is written atomically
// (see ThumbnailCache.h). Costs, for a 12-megapixel JPEG: a few milliseconds
// from the cache, tens of milliseconds to make anew (decoded at 1/8 scale
// inside libjpeg); other formats cost a decode at full size unless their
// reader can scale while decoding.
namespace tarnby::imaging {

class ThumbnailCache;

enum class ThumbnailOption {
    NoCache = 0x1,     // neither read nor write the shared cache
    EncodedOnly = 0x2, // when the answer is an entry of the cache as it stands,
                       // leave image null and give only its PNG bytes
};
Q_DECLARE_FLAGS(ThumbnailOptions, ThumbnailOption)

struct ThumbnailResult {
    QImage image;           // fits in size x size; never larger than the picture
    QString errorString;    // why there is no thumbnail
    QSize originalSize;     // the picture's own size, when known
    bool fromCache = false; // served from the cache (or from its failure record)
    // The PNG as it sits in the cache (with its text keys), when the thumbnail
    // asked for is exactly that entry: size equal to the cache folder's size,
    // or a picture smaller than that. Empty otherwise.
    QByteArray encoded;

    bool ok() const { return errorString.isEmpty() && (!image.isNull() || !encoded.isEmpty()); }
};

// The thumbnail of the picture at path fitting in size x size pixels, through
// the shared cache unless options say NoCache. Sizes up to 1024 are cached in
// the folder of the next size up and scaled down from there; larger sizes are
// always made anew. A picture that cannot be read gives an error and is
// recorded as failed, so that the next request answers at once until the file
// changes.
ThumbnailResult makeThumbnail(const QString &path, int size, ThumbnailOptions options = {},
                              const ThumbnailCache *cache = nullptr);

// Makes the thumbnail by the fastest road the format allows, without the
// cache: JPEG is decoded at the smallest DCT scale that still covers size (or
// from its embedded EXIF thumbnail when that is large enough), formats whose
// reader scales while decoding are asked to, everything else goes through the
// picture layer and a smooth scale. EXIF orientation is applied.
ThumbnailResult renderThumbnail(const QString &path, int size);

// makeThumbnail(path, size).image, with its error in *errorString.
QImage thumbnail(const QString &path, int size, QString *errorString = nullptr);

} // namespace tarnby::imaging

Q_DECLARE_OPERATORS_FOR_FLAGS(tarnby::imaging::ThumbnailOptions)
