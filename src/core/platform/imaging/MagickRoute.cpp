#include "core/platform/imaging/MagickRoute.h"

#include <Magick++.h>

#include <QDir>
#include <QSaveFile>
#include <QSize>
#include <QStandardPaths>

#include <memory>
#include <mutex>

namespace tarnby::imaging::magick {

namespace {

using namespace MagickCore;

constexpr MagickSizeType GiB = MagickSizeType(1) << 30;
constexpr MagickSizeType MemoryLimit = 2 * GiB;
constexpr MagickSizeType MapLimit = 4 * GiB;
constexpr MagickSizeType DiskLimit = 4 * GiB;

// The distribution's policy caps every ImageMagick user at 128 megapixels and
// 16K pixels a side, below the pictures this program promises to open, and a
// program can only ever lower those caps. ImageMagick reads the folders of
// MAGICK_CONFIGURE_PATH before the system's, and the first value found for a
// resource wins, so a policy of our own that names only resource sizes (our
// own bounds, which the picture layer checks before any pixel is decoded)
// lifts the caps and leaves every coder and path rule of the system in force.
QByteArray resourcePolicy()
{
    const std::pair<const char *, qulonglong> limits[] = {
        {"width", 1 << 20},      {"height", 1 << 20},  {"area", qulonglong(MaxPixels)},
        {"memory", MemoryLimit}, {"map", MapLimit},     {"disk", DiskLimit},
    };
    QByteArray xml = "<policymap>\n";
    for (const auto &[name, value] : limits)
        xml += QByteArray("  <policy domain=\"resource\" name=\"") + name + "\" value=\"" + QByteArray::number(value)
            + "\"/>\n";
    return xml + "</policymap>\n";
}

// Writes the policy into the cache folder and puts that folder first on
// ImageMagick's search path. Without it the system's caps simply stay.
void installResourcePolicy()
{
    const QString folder = QStandardPaths::writableLocation(QStandardPaths::GenericCacheLocation)
        + QStringLiteral("/tarnby/imagemagick");
    if (!QDir().mkpath(folder))
        return;
    const QString path = folder + QStringLiteral("/policy.xml");
    const QByteArray wanted = resourcePolicy();
    QFile current(path);
    if (!current.open(QIODevice::ReadOnly) || current.read(wanted.size() + 1) != wanted) {
        QSaveFile file(path);
        if (!file.open(QIODevice::WriteOnly) || file.write(wanted) != wanted.size() || !file.commit())
            return;
    }
    QByteArray searchPath = QFile::encodeName(folder);
    const QByteArray inherited = qgetenv("MAGICK_CONFIGURE_PATH");
    if (!inherited.isEmpty())
        searchPath += ':' + inherited;
    qputenv("MAGICK_CONFIGURE_PATH", searchPath);
}

// ImageMagick keeps global state (coder registry, resource accounting) that
// must be set up exactly once, before any thread uses it.
void initialise()
{
    static std::once_flag once;
    std::call_once(once, [] {
        installResourcePolicy();
        Magick::InitializeMagick(nullptr);
        // The policy may set lower ceilings; these only ever tighten it.
        SetMagickResourceLimit(WidthResource, 1 << 20);
        SetMagickResourceLimit(HeightResource, 1 << 20);
        SetMagickResourceLimit(AreaResource, MagickSizeType(MaxPixels));
        SetMagickResourceLimit(MemoryResource, MemoryLimit);
        SetMagickResourceLimit(MapResource, MapLimit);
        SetMagickResourceLimit(DiskResource, DiskLimit);
        SetMagickResourceLimit(ListLengthResource, 4096);
        // No TimeResource: ImageMagick measures it from the first use for the
        // life of the process and then exits the whole program.
    });
}

struct ExceptionDeleter {
    void operator()(ExceptionInfo *e) const { DestroyExceptionInfo(e); }
};
struct ImageInfoDeleter {
    void operator()(ImageInfo *i) const { DestroyImageInfo(i); }
};
struct ImageListDeleter {
    void operator()(Image *i) const { DestroyImageList(i); }
};
using ExceptionPtr = std::unique_ptr<ExceptionInfo, ExceptionDeleter>;
using ImageInfoPtr = std::unique_ptr<ImageInfo, ImageInfoDeleter>;
using ImageListPtr = std::unique_ptr<Image, ImageListDeleter>;

QString reasonOf(const ExceptionInfo *e)
{
    QString text = QString::fromLocal8Bit(e->reason ? e->reason : "");
    if (e->description && *e->description)
        text += QStringLiteral(" (%1)").arg(QString::fromLocal8Bit(e->description));
    return text;
}

ImageInfoPtr infoFor(const char *name, Pages pages)
{
    ImageInfoPtr info(AcquireImageInfo());
    // A "NAME:" prefix fixes the coder: ImageMagick then never picks another
    // coder from the content, so a renamed PostScript file cannot reach the
    // interpreter through here.
    FormatLocaleString(info->filename, MaxTextExtent, "%s:", name);
    CopyMagickString(info->magick, name, MaxTextExtent);
    info->affirm = MagickTrue;
    // Photo CD numbers its resolutions as scenes; its reader picks the base
    // image when left alone.
    if (pages == Pages::First && qstrcmp(name, "PCD") != 0) {
        info->scene = 0;
        info->number_scenes = 1;
    }
    return info;
}

int fileBitsPerPixel(const Image *image)
{
    if (image->storage_class == PseudoClass && image->colors > 0) {
        if (image->colors <= 2)
            return 1;
        if (image->colors <= 16)
            return 4;
        if (image->colors <= 256)
            return 8;
    }
    // The depth the pixels need, not the build's quantum depth.
    ExceptionPtr e(AcquireExceptionInfo());
    const int depth = qMin(size_t(image->depth), GetImageDepth(image, e.get())) > 8 ? 16 : 8;
    if (image->colorspace == GRAYColorspace || image->colorspace == Rec601LumaColorspace)
        return depth;
    return depth * (image->matte ? 4 : 3);
}

QImage toQImage(const Image *image, ExceptionInfo *e)
{
    QImage out(int(image->columns), int(image->rows), QImage::Format_ARGB32);
    if (out.isNull())
        return {};
    // QImage rows are 4-byte aligned, so ARGB32 rows have no padding.
    if (!ExportImagePixels(image, 0, 0, image->columns, image->rows, "BGRA", CharPixel, out.bits(), e))
        return {};
    if (!image->matte)
        out = std::move(out).convertToFormat(QImage::Format_RGB32); // in place: no second copy
    if (image->x_resolution > 0 && image->y_resolution > 0) {
        const double toInch = image->units == PixelsPerCentimeterResolution ? 2.54 : 1.0;
        out.setDotsPerMeterX(qRound(image->x_resolution * toInch / 0.0254));
        out.setDotsPerMeterY(qRound(image->y_resolution * toInch / 0.0254));
    }
    return out;
}

// WordPerfect records carry their length in one byte, or after an FF in 16
// bits, or in 31 bits when the top bit of those 16 is set.
bool readWpgLength(const QByteArray &data, qsizetype &pos, quint64 &length)
{
    const auto byte = [&](qsizetype at) { return quint8(data.at(at)); };
    if (pos >= data.size())
        return false;
    length = byte(pos++);
    if (length < 0xFF)
        return true;
    if (pos + 2 > data.size())
        return false;
    length = byte(pos) | (byte(pos + 1) << 8);
    pos += 2;
    if (length < 0x8000)
        return true;
    if (pos + 2 > data.size())
        return false;
    length = ((length & 0x7FFF) << 16) | byte(pos) | (byte(pos + 1) << 8);
    pos += 2;
    return true;
}

// ImageMagick draws none of a WordPerfect graphic's vector records, and when
// it meets no bitmap record it hands back a one-pixel black picture as if it
// had read one; so it does for a bitmap it skips (one of a depth it does not
// know). The records are walked here first, for the size of the first bitmap:
// level 1 keeps bitmaps in records 0x0B (width and height first) and 0x14
// (after ten bytes of placement), level 2 in record 0x0E (width and height
// first). An empty size means no bitmap.
QSize wpgFirstBitmapSize(const QByteArray &data)
{
    if (data.size() < 16)
        return {};
    const auto le16 = [&](qsizetype at) {
        return at + 2 <= data.size() ? int(quint8(data.at(at)) | (quint8(data.at(at + 1)) << 8)) : -1;
    };
    const int level = quint8(data.at(10)); // the major version: 1 or 2
    qsizetype pos = qsizetype(quint32(le16(4)) | (quint32(le16(6)) << 16));
    while (pos >= 16 && pos < data.size()) {
        quint8 type = 0;
        if (level == 2) {
            if (pos + 2 > data.size())
                return {};
            type = quint8(data.at(pos + 1));
            pos += 2;
            quint64 extension = 0;
            if (!readWpgLength(data, pos, extension))
                return {};
        } else {
            type = quint8(data.at(pos++));
        }
        quint64 length = 0;
        if (!readWpgLength(data, pos, length))
            return {};
        if ((level == 2 && type == 0x0E) || (level != 2 && type == 0x0B))
            return QSize(le16(pos), le16(pos + 2));
        if (level != 2 && type == 0x14)
            return QSize(le16(pos + 10), le16(pos + 12));
        if (length > quint64(data.size() - pos))
            return {};
        pos += qsizetype(length);
    }
    return {};
}

} // namespace

bool coderAvailable(const char *name, bool write)
{
    initialise();
    ExceptionPtr e(AcquireExceptionInfo());
    const MagickInfo *info = GetMagickInfo(name, e.get());
    if (!info)
        return false;
    return write ? info->encoder != nullptr : info->decoder != nullptr;
}

detail::Decoded read(const QByteArray &data, const char *name, Pages pages)
{
    initialise();
    ExceptionPtr e(AcquireExceptionInfo());
    if (data.isEmpty())
        return detail::failure(QStringLiteral("The file is empty."));
    const bool wordPerfect = qstrcmp(name, "WPG") == 0;
    // The header's encryption key (bytes 12 and 13) is not where ImageMagick
    // looks for it, so a password-protected graphic would be drawn from its
    // scrambled records.
    if (wordPerfect && data.size() >= 14 && (data.at(12) != 0 || data.at(13) != 0))
        return detail::failure(QStringLiteral("The WordPerfect graphic is protected by a password."));
    const QSize wpgBitmap = wordPerfect ? wpgFirstBitmapSize(data) : QSize();
    if (wordPerfect && (wpgBitmap.width() <= 0 || wpgBitmap.height() <= 0))
        return detail::failure(QStringLiteral("The WordPerfect graphic holds no bitmap (its drawings cannot be shown)."));

    // Ping first: the header's dimensions are checked before pixels are allocated.
    {
        ImageInfoPtr info = infoFor(name, pages);
        ImageListPtr pinged(PingBlob(info.get(), data.constData(), size_t(data.size()), e.get()));
        if (!pinged) {
            const QString reason = reasonOf(e.get());
            return detail::failure(reason.isEmpty() ? QStringLiteral("The file holds no picture.") : reason);
        }
        qint64 total = 0;
        for (const Image *i = pinged.get(); i; i = i->next) {
            if (!detail::withinPixelBound(qint64(i->columns), qint64(i->rows)))
                return detail::failure(detail::tooLargeMessage(qint64(i->columns), qint64(i->rows)));
            total += qint64(i->columns) * qint64(i->rows);
        }
        if (total > MaxPixels)
            return detail::failure(QStringLiteral("The file's pages together are too large to load."));
    }

    ClearMagickException(e.get());
    ImageInfoPtr info = infoFor(name, pages);
    ImageListPtr list(BlobToImage(info.get(), data.constData(), size_t(data.size()), e.get()));
    if (!list || (e->severity >= ErrorException && list->columns == 0)) {
        const QString reason = reasonOf(e.get());
        return detail::failure(reason.isEmpty() ? QStringLiteral("The file holds no picture.") : reason);
    }
    // A file cut short still shows what it holds (CorruptImageError with an
    // image); other errors fail.
    if (e->severity >= ErrorException && e->severity != CorruptImageError)
        return detail::failure(reasonOf(e.get()));

    if (wordPerfect && (list->columns != size_t(wpgBitmap.width()) || list->rows != size_t(wpgBitmap.height())))
        return detail::failure(QStringLiteral("The WordPerfect bitmap of %1 x %2 pixels could not be read.")
                                   .arg(wpgBitmap.width())
                                   .arg(wpgBitmap.height()));

    detail::Decoded decoded;
    // A metafile is drawn, not stored as pixels: it is reported as the 24-bit
    // picture it becomes, whatever depth the drawing used.
    decoded.bitsPerPixel = qstrcmp(name, "WMF") == 0 ? 24 : fileBitsPerPixel(list.get());
    for (Image *i = list.get(); i; i = i->next) {
        const QImage frame = toQImage(i, e.get());
        if (frame.isNull())
            return detail::failure(QStringLiteral("The picture could not be converted (%1).").arg(reasonOf(e.get())));
        const int delayMs = i->ticks_per_second > 0 ? int(qint64(i->delay) * 1000 / i->ticks_per_second) : 0;
        decoded.frames.append({frame, delayMs});
        if (pages == Pages::First)
            break;
    }
    return decoded;
}

QString write(const QList<QImage> &frames, const char *name, int bitsPerPixel, int quality, QByteArray *out)
{
    initialise();
    try {
        std::vector<Magick::Image> images;
        for (const QImage &frame : frames) {
            const bool grey = frame.isGrayscale();
            const QImage argb = frame.convertToFormat(QImage::Format_ARGB32);
            Magick::Image image(size_t(argb.width()), size_t(argb.height()), "BGRA", Magick::CharPixel,
                                argb.constBits());
            image.quiet(true);
            image.magick(name);
            image.depth(8);
            if (quality > 0)
                image.quality(size_t(quality));
            if (frame.dotsPerMeterX() > 0) {
                image.resolutionUnits(Magick::PixelsPerInchResolution);
                image.density(Magick::Geometry(size_t(qRound(frame.dotsPerMeterX() * 0.0254)),
                                               size_t(qRound(frame.dotsPerMeterY() * 0.0254))));
            }
            const int bpp = bitsPerPixel > 0 ? bitsPerPixel : (frame.hasAlphaChannel() ? 32 : frame.depth());
            if (bpp == 1) {
                // A two-colour palette. Some coders (PCX, SUN, XWD, PICT)
                // still write such a picture with full-colour pixels.
                image.matte(false);
                image.quantizeColorSpace(Magick::GRAYColorspace);
                image.quantizeColors(2);
                image.quantizeDither(false);
                image.quantize();
                image.type(Magick::BilevelType);
            } else if (bpp <= 8) {
                image.matte(false);
                if (grey) {
                    image.type(Magick::GrayscaleType);
                } else {
                    image.quantizeColors(size_t(1) << bpp);
                    image.quantize();
                    image.type(Magick::PaletteType);
                }
            } else if (bpp == 32 && frame.hasAlphaChannel()) {
                image.type(Magick::TrueColorMatteType);
            } else {
                image.matte(false);
                image.type(Magick::TrueColorType);
            }
            images.push_back(image);
        }
        Magick::Blob blob;
        if (images.size() == 1)
            images.front().write(&blob);
        else
            Magick::writeImages(images.begin(), images.end(), &blob, true);
        if (blob.length() == 0)
            return QStringLiteral("ImageMagick wrote nothing for the %1 format.").arg(QLatin1String(name));
        *out = QByteArray(static_cast<const char *>(blob.data()), qsizetype(blob.length()));
        return {};
    } catch (const Magick::Warning &) {
        return QStringLiteral("ImageMagick stopped with a warning while writing the %1 format.").arg(QLatin1String(name));
    } catch (const Magick::Exception &e) {
        return QString::fromLocal8Bit(e.what());
    } catch (const std::exception &e) {
        return QString::fromLocal8Bit(e.what());
    }
}

} // namespace tarnby::imaging::magick
