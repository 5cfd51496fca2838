#include "core/platform/imaging/Thumbnails.h"

#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/imaging/ThumbnailCache.h"

#include <QFile>
#include <QImageReader>
#include <QTransform>
#include <QtEndian>

#include <algorithm>

#include <csetjmp>
#include <cstdio>
#include <cstring>
#include <optional>

#include "core/platform/imaging/LibJpegErrors.h"

namespace tarnby::imaging {

namespace {

QSize fittedSize(QSize original, int box)
{
    if (!original.isValid() || original.isEmpty())
        return {};
    if (original.width() <= box && original.height() <= box)
        return original;
    QSize fitted = original.scaled(box, box, Qt::KeepAspectRatio);
    return fitted.expandedTo(QSize(1, 1));
}

QImage scaledToFit(const QImage &image, int box)
{
    if (image.width() <= box && image.height() <= box)
        return image;
    return image.scaled(fittedSize(image.size(), box), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

// --- EXIF --------------------------------------------------------------------

// What the markers before a JPEG's image data tell a thumbnailer: the
// picture's size, how it is turned, and where the camera's own small copy of
// it lies in the file.
struct JpegFacts {
    QSize size;
    int orientation = 1;
    qsizetype thumbOffset = 0; // from the start of the file; 0 when none
    qsizetype thumbLength = 0;
};

class TiffReader
{
public:
    TiffReader(const uchar *data, qsizetype size)
        : m_data(data)
        , m_size(size)
    {
        if (size >= 8 && data[0] == 'M' && data[1] == 'M')
            m_bigEndian = true;
        else if (size < 8 || data[0] != 'I' || data[1] != 'I')
            m_size = 0;
    }
    bool valid() const { return m_size > 0; }
    bool has(qsizetype offset, qsizetype length) const
    {
        return offset >= 0 && length >= 0 && offset <= m_size && length <= m_size - offset;
    }
    quint16 u16(qsizetype offset) const
    {
        if (!has(offset, 2))
            return 0;
        return m_bigEndian ? qFromBigEndian<quint16>(m_data + offset) : qFromLittleEndian<quint16>(m_data + offset);
    }
    quint32 u32(qsizetype offset) const
    {
        if (!has(offset, 4))
            return 0;
        return m_bigEndian ? qFromBigEndian<quint32>(m_data + offset) : qFromLittleEndian<quint32>(m_data + offset);
    }

    // Calls visit(tag, entryOffset) for each entry of the directory at offset
    // and returns the offset of the next directory (0 when none).
    template<typename Visit>
    quint32 directory(quint32 offset, Visit visit) const
    {
        const int count = u16(offset);
        if (!has(qsizetype(offset) + 2, qsizetype(count) * 12 + 4))
            return 0;
        for (int i = 0; i < count; ++i) {
            const qsizetype entry = qsizetype(offset) + 2 + qsizetype(i) * 12;
            visit(u16(entry), entry);
        }
        return u32(qsizetype(offset) + 2 + qsizetype(count) * 12);
    }

private:
    const uchar *m_data;
    qsizetype m_size;
    bool m_bigEndian = false;
};

void readExif(const uchar *data, qsizetype size, qsizetype tiffStart, JpegFacts *facts)
{
    const TiffReader tiff(data + tiffStart, size);
    if (!tiff.valid())
        return;
    const quint32 ifd1 = tiff.directory(tiff.u32(4), [&](quint16 tag, qsizetype entry) {
        if (tag == 0x0112) {
            const int value = tiff.u16(entry + 8);
            if (value >= 1 && value <= 8)
                facts->orientation = value;
        }
    });
    if (ifd1 == 0)
        return;
    quint32 offset = 0;
    quint32 count = 0;
    tiff.directory(ifd1, [&](quint16 tag, qsizetype entry) {
        if (tag == 0x0201)
            offset = tiff.u32(entry + 8);
        else if (tag == 0x0202)
            count = tiff.u32(entry + 8);
    });
    if (offset > 0 && count > 0 && tiff.has(offset, count)) {
        facts->thumbOffset = tiffStart + offset;
        facts->thumbLength = count;
    }
}

JpegFacts scanJpeg(const uchar *data, qsizetype size)
{
    JpegFacts facts;
    qsizetype pos = 2;
    while (pos + 4 <= size && data[pos] == 0xFF) {
        const uchar marker = data[pos + 1];
        if (marker == 0xFF) { // fill byte
            ++pos;
            continue;
        }
        if (marker == 0xDA || marker == 0xD9) // start of scan, end of image
            break;
        const qsizetype length = qFromBigEndian<quint16>(data + pos + 2);
        if (length < 2 || pos + 2 + length > size)
            break;
        const uchar *segment = data + pos + 4;
        const bool startOfFrame = marker >= 0xC0 && marker <= 0xCF && marker != 0xC4 && marker != 0xC8
                                  && marker != 0xCC;
        if (startOfFrame && length >= 7)
            facts.size = QSize(qFromBigEndian<quint16>(segment + 3), qFromBigEndian<quint16>(segment + 1));
        else if (marker == 0xE1 && length >= 16 && std::memcmp(segment, "Exif\0\0", 6) == 0 && facts.thumbOffset == 0)
            readExif(data, length - 8, pos + 10, &facts);
        pos += 2 + length;
    }
    return facts;
}

QImage oriented(const QImage &image, int orientation)
{
    switch (orientation) {
    case 2:
        return image.mirrored(true, false);
    case 3:
        return image.transformed(QTransform().rotate(180));
    case 4:
        return image.mirrored(false, true);
    case 5:
        return image.transformed(QTransform().rotate(90)).mirrored(true, false);
    case 6:
        return image.transformed(QTransform().rotate(90));
    case 7:
        return image.transformed(QTransform().rotate(90)).mirrored(false, true);
    case 8:
        return image.transformed(QTransform().rotate(270));
    default:
        return image;
    }
}

// --- JPEG through libjpeg ----------------------------------------------------

using detail::JpegError;
using detail::useJpegError;

enum class JpegOutcome { Decoded, Failed, NotHandled };

// Reads the scans of a buffered-image decompression up to the end of the
// first one after which every component has its DC coefficients. A DC scan
// may send them with their lowest bit or bits held back for a refinement scan;
// that scan is not waited for, as it usually comes after most of the AC data.
// With the usual single held-back bit, a block's level is then off by less
// than one DC quantization step divided by eight: a level or two of 255.
void readDcScans(j_decompress_ptr cinfo)
{
    bool haveDc[MAX_COMPONENTS] = {};
    for (;;) {
        const int status = jpeg_consume_input(cinfo);
        if (status == JPEG_REACHED_EOI || status == JPEG_SUSPENDED)
            return;
        if (status != JPEG_SCAN_COMPLETED)
            continue;
        // Until the next start of scan, the fields describe the scan just read.
        if (cinfo->Ss == 0) {
            for (int i = 0; i < cinfo->comps_in_scan; ++i)
                haveDc[cinfo->cur_comp_info[i]->component_index] = true;
        }
        if (std::all_of(haveDc, haveDc + cinfo->num_components, [](bool b) { return b; }))
            return;
    }
}

// Decodes a JPEG held in memory at the smallest of libjpeg's M/8 scales whose
// output still covers box after fitting, straight into a QImage. Colour
// spaces other than grey, YCbCr and RGB are left to Qt (NotHandled).
JpegOutcome decodeJpeg(const uchar *data, qsizetype size, int box, QImage *out, QSize *original,
                       QString *errorString)
{
    jpeg_decompress_struct cinfo;
    JpegError error;
    useJpegError(cinfo, error);
    QImage image;
    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&cinfo);
        *errorString = QStringLiteral("The JPEG picture cannot be read: %1").arg(QString::fromLocal8Bit(error.message));
        return JpegOutcome::Failed;
    }
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, data, static_cast<unsigned long>(size));
    jpeg_read_header(&cinfo, TRUE);
    *original = QSize(int(cinfo.image_width), int(cinfo.image_height));
    if (cinfo.jpeg_color_space == JCS_CMYK || cinfo.jpeg_color_space == JCS_YCCK) {
        jpeg_destroy_decompress(&cinfo);
        return JpegOutcome::NotHandled;
    }
    const QSize target = fittedSize(*original, box);
    unsigned int scale = 8;
    for (unsigned int m = 1; m < 8; ++m) {
        const qint64 w = (qint64(cinfo.image_width) * m + 7) / 8;
        const qint64 h = (qint64(cinfo.image_height) * m + 7) / 8;
        if (w >= target.width() && h >= target.height()) {
            scale = m;
            break;
        }
    }
    cinfo.scale_num = scale;
    cinfo.scale_denom = 8;
    if (scale < 8) {
        // The picture is shrunk again afterwards, which hides the small loss
        // of the fast integer transform and of plain chroma replication.
        cinfo.dct_method = JDCT_IFAST;
        cinfo.do_fancy_upsampling = FALSE;
    }
    // A progressive (or otherwise multi-scan) file is held whole as DCT
    // coefficients while it is read, some two bytes a pixel per component,
    // whatever the output size: bound the picture itself, not the output.
    const bool multiScan = jpeg_has_multiple_scans(&cinfo);
    if (multiScan && qint64(cinfo.image_width) * cinfo.image_height > MaxPixels) {
        jpeg_destroy_decompress(&cinfo);
        *errorString = QStringLiteral("The picture is too large to load (%1 x %2 pixels).")
                           .arg(original->width())
                           .arg(original->height());
        return JpegOutcome::Failed;
    }
    // At 1/8 scale each output pixel is the DC coefficient of its block, and
    // a progressive file sends every block's DC in its first scan(s), before
    // any of the AC detail that makes up most of the file. Read in
    // buffered-image mode, it can be shown as soon as those scans are in.
    const bool dcOnly = multiScan && scale == 1;
    if (dcOnly) {
        cinfo.buffered_image = TRUE;
        cinfo.do_block_smoothing = FALSE; // guesses AC from DC: no use at one pixel a block
    }
    const bool grey = cinfo.jpeg_color_space == JCS_GRAYSCALE;
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGRA;
#else
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_ARGB;
#endif
    jpeg_calc_output_dimensions(&cinfo);
    if (qint64(cinfo.output_width) * cinfo.output_height > MaxPixels) {
        jpeg_destroy_decompress(&cinfo);
        *errorString = QStringLiteral("The picture is too large to load (%1 x %2 pixels).")
                           .arg(original->width())
                           .arg(original->height());
        return JpegOutcome::Failed;
    }
    image = QImage(int(cinfo.output_width), int(cinfo.output_height),
                   grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
    if (image.isNull()) {
        jpeg_destroy_decompress(&cinfo);
        *errorString = QStringLiteral("Not enough memory to load the picture.");
        return JpegOutcome::Failed;
    }
    jpeg_start_decompress(&cinfo);
    if (dcOnly) {
        readDcScans(&cinfo);
        jpeg_start_output(&cinfo, cinfo.input_scan_number);
    }
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = image.scanLine(int(cinfo.output_scanline));
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    // The rest of the file (trailing markers) is of no use to a thumbnail.
    jpeg_abort_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    *out = scaledToFit(image, box);
    return JpegOutcome::Decoded;
}

bool looksLikeJpeg(const uchar *data, qsizetype size)
{
    return size >= 3 && data[0] == 0xFF && data[1] == 0xD8 && data[2] == 0xFF;
}

// JPEG by its content, whatever the extension. NotHandled hands the file on to
// Qt's readers and the picture layer.
JpegOutcome jpegThumbnail(const QString &path, int box, ThumbnailResult *result)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return JpegOutcome::NotHandled;
    const qint64 fileSize = file.size();
    // Mapping spares a copy of the whole file; reading is the fallback for
    // files that cannot be mapped (pipes, some network filesystems).
    QByteArray readBytes;
    const uchar *data = fileSize > 0 ? file.map(0, fileSize) : nullptr;
    qsizetype size = qsizetype(fileSize);
    if (!data) {
        readBytes = file.readAll();
        data = reinterpret_cast<const uchar *>(readBytes.constData());
        size = readBytes.size();
    }
    if (!looksLikeJpeg(data, size))
        return JpegOutcome::NotHandled;

    const JpegFacts facts = scanJpeg(data, size);
    // A quarter turn swaps the box's meaning for the stored picture, but the
    // box is square, so fitting before turning is the same as after.
    if (facts.thumbLength > 0 && facts.size.isValid()) {
        // The camera's own thumbnail serves when it covers the box and has
        // the picture's proportions (some cameras pad it to 4:3 with bars).
        QImage small;
        QSize smallSize;
        QString ignored;
        const QSize needed = fittedSize(facts.size, box);
        if (decodeJpeg(data + facts.thumbOffset, facts.thumbLength, box, &small, &smallSize, &ignored)
                == JpegOutcome::Decoded
            && smallSize.width() >= needed.width() && smallSize.height() >= needed.height()) {
            const double aspect = double(facts.size.width()) / facts.size.height();
            const double smallAspect = double(smallSize.width()) / smallSize.height();
            if (qAbs(aspect - smallAspect) <= 0.02 * aspect) {
                if (small.size() != needed)
                    small = small.scaled(needed, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
                result->image = oriented(small, facts.orientation);
                result->originalSize = (facts.orientation >= 5) ? facts.size.transposed() : facts.size;
                return JpegOutcome::Decoded;
            }
        }
    }

    QImage image;
    QSize original;
    const JpegOutcome outcome = decodeJpeg(data, size, box, &image, &original, &result->errorString);
    if (outcome == JpegOutcome::Decoded) {
        result->image = oriented(image, facts.orientation);
        result->originalSize = facts.orientation >= 5 ? original.transposed() : original;
    }
    return outcome;
}

// Any format Qt reads. Readers that scale while decoding (SVG, Qt's own JPEG
// for the colour spaces left to it) are asked to; the others decode in full,
// within the picture layer's limit, and are scaled down afterwards.
bool qtThumbnail(const QString &path, int box, ThumbnailResult *result)
{
    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    reader.setAutoTransform(true);
    if (!reader.canRead())
        return false;
    const QSize full = reader.size();
    if (full.isValid()) {
        const bool scalesWhileDecoding = reader.supportsOption(QImageIOHandler::ScaledSize);
        if (!scalesWhileDecoding && qint64(full.width()) * full.height() > MaxPixels) {
            result->errorString = QStringLiteral("The picture is too large to load (%1 x %2 pixels).")
                                      .arg(full.width())
                                      .arg(full.height());
            return true;
        }
        if (scalesWhileDecoding) {
            reader.setScaledSize(fittedSize(full, box));
            // Qt's JPEG reader shrinks inside libjpeg only below this quality.
            reader.setQuality(49);
        }
    }
    reader.setAllocationLimit(int(MaxPixels * 4 / (1024 * 1024)) + 1);
    QImage image = reader.read();
    if (image.isNull())
        return false;
    if (full.isValid())
        result->originalSize = (reader.transformation() & QImageIOHandler::TransformationRotate90) ? full.transposed() : full;
    else
        result->originalSize = image.size();
    result->image = scaledToFit(image, box);
    return true;
}

} // namespace

ThumbnailResult renderThumbnail(const QString &path, int size)
{
    ThumbnailResult result;
    if (size <= 0) {
        result.errorString = QStringLiteral("The thumbnail size must be positive.");
        return result;
    }
    switch (jpegThumbnail(path, size, &result)) {
    case JpegOutcome::Decoded:
    case JpegOutcome::Failed:
        return result;
    case JpegOutcome::NotHandled:
        break;
    }
    if (qtThumbnail(path, size, &result))
        return result;
    const LoadResult loaded = loadPicture(path);
    if (!loaded.ok()) {
        result.errorString = loaded.errorString.isEmpty() ? QStringLiteral("The picture cannot be read.")
                                                          : loaded.errorString;
        return result;
    }
    result.originalSize = loaded.picture.image().size();
    result.image = scaledToFit(loaded.picture.image(), size);
    return result;
}

ThumbnailResult makeThumbnail(const QString &path, int size, ThumbnailOptions options, const ThumbnailCache *cache)
{
    const int flavor = ThumbnailCache::flavorSize(size);
    if (size <= 0 || flavor == 0 || options.testFlag(ThumbnailOption::NoCache))
        return renderThumbnail(path, size);

    std::optional<ThumbnailCache> ownCache;
    if (!cache)
        cache = &ownCache.emplace();
    // The file's time is taken before it is read: if it changes meanwhile, the
    // entry records the older time and is made again next time.
    const ThumbnailSource source = ThumbnailSource::fromPath(path);
    if (!source.exists) {
        ThumbnailResult result;
        result.errorString = QStringLiteral("The file does not exist.");
        return result;
    }
    if (!cache->accepts(source))
        return renderThumbnail(path, size);

    const ThumbnailCache::Entry entry = cache->lookup(source, flavor);
    if (entry.status == ThumbnailCache::Entry::Failed) {
        ThumbnailResult result;
        result.fromCache = true;
        result.errorString = entry.errorString.isEmpty() ? QStringLiteral("The picture cannot be read.")
                                                         : entry.errorString;
        return result;
    }
    if (entry.status == ThumbnailCache::Entry::Fresh) {
        ThumbnailResult result;
        result.fromCache = true;
        result.originalSize = QSize(entry.text.value("Thumb::Image::Width").toInt(),
                                    entry.text.value("Thumb::Image::Height").toInt());
        const bool pictureFits = result.originalSize.isValid() && result.originalSize.width() <= size
                                 && result.originalSize.height() <= size;
        const bool exact = size == flavor || pictureFits;
        if (exact)
            result.encoded = entry.png;
        if (!exact || !options.testFlag(ThumbnailOption::EncodedOnly)) {
            const QImage image = QImage::fromData(entry.png, "PNG");
            if (!image.isNull()) {
                result.image = scaledToFit(image, size);
                return result;
            }
            // An unreadable entry, written by some other program or cut short
            // by a full disk: make it anew below.
        } else {
            return result;
        }
    }

    ThumbnailResult result = renderThumbnail(path, flavor);
    if (!result.ok()) {
        cache->storeFailure(source, result.errorString);
        return result;
    }
    const QByteArray png = cache->store(source, flavor, result.image, result.originalSize);
    if (size == flavor || (result.image.width() <= size && result.image.height() <= size))
        result.encoded = png;
    else
        result.image = scaledToFit(result.image, size);
    return result;
}

QImage thumbnail(const QString &path, int size, QString *errorString)
{
    ThumbnailResult result = makeThumbnail(path, size);
    if (!result.ok() && errorString)
        *errorString = result.errorString;
    return result.image;
}

} // namespace tarnby::imaging
