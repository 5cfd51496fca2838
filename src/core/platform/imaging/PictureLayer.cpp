#include "core/platform/imaging/PictureLayer.h"

#include "core/platform/imaging/JpegRoute.h"
#include "core/platform/imaging/MagickRoute.h"
#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/RouteTypes.h"
#include "core/platform/imaging/TiffPages.h"
#include "core/platform/imaging/VectorRoutes.h"
#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QBuffer>
#include <QFile>
#include <QFileInfo>
#include <QImageIOHandler>
#include <QImageReader>
#include <QImageWriter>
#include <QSaveFile>
#include <QtEndian>

#include <algorithm>
#include <bit>
#include <vector>

#if defined(__GLIBC__)
#include <malloc.h>
#endif

namespace tarnby::imaging {

namespace {

#if defined(__GLIBC__)
// Pictures are large blocks that live as long as a window or a thumbnail
// job. glibc serves blocks from 128 KiB up as mappings of their own, which go
// back to the system when freed, but raises that bound to the size of each
// such block freed (up to 32 MB): after the first large picture is closed,
// the next ones come from the heaps of the threads that decode them and stay
// with the process when freed, some tens of megabytes after a few dozen
// documents. A fixed bound keeps every picture a mapping of its own.
// Set once, before main(), in every program that links the picture layer.
const bool returnsFreedPictures = [] {
    constexpr int OwnMappingFrom = 256 * 1024;
    return mallopt(M_MMAP_THRESHOLD, OwnMappingFrom) == 1;
}();
#endif

constexpr int HeadBytes = 4096;
constexpr int MaxFrames = 4096;

// Qt refuses images over 128 MB by default; our own pixel bound comes first,
// so the allocation limit only has to admit what that bound lets through
// (four bytes a pixel, with room for wider intermediate formats).
constexpr int QtAllocationLimitMb = int(MaxPixels * 8 / (1024 * 1024));

QString extensionName(const PictureFormat &format)
{
    return QLatin1String(format.extension);
}

detail::Decoded readWithQt(const QString &path, const char *name, Pages pages)
{
    if (qstrcmp(name, "tiff") == 0)
        tiff::quietMessageHandlers();
    QImageReader reader(path, name);
    reader.setDecideFormatFromContent(false);
    reader.setAllocationLimit(QtAllocationLimitMb);
    // The page count is asked first: Qt's TIFF handler counts no pages once
    // size() has moved the device (it then finds no TIFF magic).
    const int count = pages == Pages::All ? qBound(1, reader.imageCount(), MaxFrames) : 1;
    const QSize size = reader.size();
    if (size.isValid() && !detail::withinPixelBound(size.width(), size.height()))
        return detail::failure(detail::tooLargeMessage(size.width(), size.height()));

    detail::Decoded decoded;
    qint64 total = 0;
    // Pages by number: Qt's TIFF handler moves between pages with
    // jumpToImage() only, while an animation handler (GIF) has already moved
    // on when read() returns and supports neither jump.
    for (int i = 0; i < count; ++i) {
        if (i > 0 && !reader.jumpToImage(i))
            reader.jumpToNextImage();
        if (i > 0 && !reader.canRead())
            break;
        QImage image = reader.read();
        if (image.isNull())
            break;
        total += qint64(image.width()) * image.height();
        if (total > MaxPixels)
            return detail::failure(QStringLiteral("The file's pages together are too large to load."));
        decoded.frames.append({image, reader.nextImageDelay()});
    }
    if (decoded.frames.isEmpty())
        return detail::failure(reader.errorString());
    return decoded;
}

detail::Decoded readWithOwnCodec(const QString &path, const PictureFormat &format, Pages pages)
{
    std::unique_ptr<QImageIOHandler> handler = codecs::createHandler(format.readName);
    if (!handler)
        return detail::failure(QStringLiteral("Reading %1 pictures is not available in this build.").arg(extensionName(format)));
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return detail::failure(file.errorString());
    handler->setDevice(&file);
    handler->setFormat(format.readName);
    if (!handler->canRead())
        return detail::failure(QStringLiteral("The file is not a valid %1 picture.").arg(extensionName(format)));
    if (handler->supportsOption(QImageIOHandler::Size)) {
        const QSize size = handler->option(QImageIOHandler::Size).toSize();
        if (size.isValid() && !detail::withinPixelBound(size.width(), size.height()))
            return detail::failure(detail::tooLargeMessage(size.width(), size.height()));
    }
    // Frames: imageCount() says how many; a handler whose read() already moved
    // on says so through currentImageNumber(), otherwise jumpToNextImage()
    // moves to the next frame.
    const int count = pages == Pages::All ? qBound(1, handler->imageCount(), MaxFrames) : 1;
    detail::Decoded decoded;
    qint64 total = 0;
    for (int i = 0; i < count; ++i) {
        if (i > 0 && handler->currentImageNumber() != i && !handler->jumpToNextImage())
            break;
        QImage image;
        if (!handler->read(&image) || image.isNull()) {
            if (i == 0) {
                // The codec says what was wrong with the file; say that.
                const QString why = codecs::errorString(handler.get());
                return detail::failure(why.isEmpty()
                                           ? QStringLiteral("The %1 picture could not be decoded.").arg(extensionName(format))
                                           : QStringLiteral("The %1 picture could not be decoded: %2").arg(extensionName(format), why));
            }
            break;
        }
        total += qint64(image.width()) * image.height();
        if (total > MaxPixels)
            return detail::failure(QStringLiteral("The file's frames together are too large to load."));
        decoded.frames.append({image, handler->nextImageDelay()});
    }
    // Our codecs note the file's own depth on the picture (four GEM planes
    // decode to an 8-bit image, HAM to full colour).
    decoded.bitsPerPixel = decoded.frames.constFirst().image.text(QStringLiteral("BitsPerPixel")).toInt();
    return decoded;
}

// Whether the file goes to ImageMagick although our own codec reads the
// format: the codec reads only some variants of it and does not claim this
// file.
bool leftToMagick(const PictureFormat &format, const QString &path)
{
    if (format.ownCoverage != OwnCoverage::SomeVariants || !format.magickFallback)
        return false;
    std::unique_ptr<QImageIOHandler> handler = codecs::createHandler(format.readName);
    QFile file(path);
    if (!handler || !file.open(QIODevice::ReadOnly))
        return false;
    handler->setDevice(&file);
    return !handler->canRead();
}

// Bits per pixel as the file stores them, for the formats whose header Qt
// decodes into a wider image; 0 where the decoded image tells the truth.
int headerBitsPerPixel(const PictureFormat &format, const QByteArray &head)
{
    const QLatin1String ext(format.extension);
    const auto le16 = [&](int at) { return at + 2 <= head.size() ? int(qFromLittleEndian<quint16>(head.constData() + at)) : 0; };
    const auto le32 = [&](int at) { return at + 4 <= head.size() ? qFromLittleEndian<quint32>(head.constData() + at) : 0u; };
    if (ext == QLatin1String("BMP"))
        return le32(14) == 12 ? le16(24) : le16(28);
    if (ext == QLatin1String("PNG") && head.size() > 25) {
        const int depth = quint8(head.at(24));
        switch (quint8(head.at(25))) {
        case 0: return depth;
        case 2: return depth * 3;
        case 3: return depth;
        case 4: return depth * 2;
        case 6: return depth * 4;
        default: return 0;
        }
    }
    if (ext == QLatin1String("PBM") && head.size() >= 2) {
        switch (head.at(1)) {
        case '1': case '4': return 1;
        case '2': case '5': return 8;
        default: return 24;
        }
    }
    if (ext == QLatin1String("ICO") || ext == QLatin1String("CUR")) {
        // The first directory entry's bit count, else the embedded bitmap header's.
        if (const int count = le16(6 + 6))
            return count;
        const quint32 offset = le32(6 + 12);
        if (offset + 16 <= quint32(head.size()) && le32(int(offset)) == 40)
            return le16(int(offset) + 14);
    }
    return 0;
}

int imageBitsPerPixel(const QImage &image)
{
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
        return 1;
    case QImage::Format_Indexed8:
        return image.colorCount() <= 2 ? 1 : image.colorCount() <= 16 ? 4 : 8;
    case QImage::Format_Grayscale8:
    case QImage::Format_Alpha8:
        return 8;
    case QImage::Format_Grayscale16:
        return 16;
    case QImage::Format_RGB16:
    case QImage::Format_RGB555:
        return 16;
    default:
        break;
    }
    if (image.depth() >= 64)
        return image.hasAlphaChannel() ? 64 : 48;
    return image.hasAlphaChannel() ? 32 : 24;
}

PictureInfo describe(const QImage &image, int fileBits, int formatNumber, qint64 sizeOnDisk)
{
    PictureInfo info;
    info.width = image.width();
    info.height = image.height();
    info.bitsPerPixel = fileBits > 0 ? fileBits : imageBitsPerPixel(image);
    info.formatCode = formatNumber;
    info.sizeOnDisk = sizeOnDisk;
    info.sizeInMemory = (qint64(info.width) * info.bitsPerPixel + 31) / 32 * 4 * info.height;
    // A decoder leaves QImage's default resolution where the file states
    // none; that default depends on the kind of application, so it is
    // reported as the usual screen resolution instead.
    static const QImage unstated(1, 1, QImage::Format_RGB32);
    const auto dpi = [](int dpm, int defaultDpm) { return dpm <= 0 || dpm == defaultDpm ? 96 : qRound(dpm * 0.0254); };
    info.xResolution = dpi(image.dotsPerMeterX(), unstated.dotsPerMeterX());
    info.yResolution = dpi(image.dotsPerMeterY(), unstated.dotsPerMeterY());
    return info;
}

// A QImage that holds what a file at bitsPerPixel holds, for the writers that
// take the image's own format as the depth to write.
QImage convertForDepth(const QImage &image, int bitsPerPixel)
{
    switch (bitsPerPixel) {
    case 1:
        return image.format() == QImage::Format_Mono ? image : image.convertToFormat(QImage::Format_Mono);
    case 4: {
        if (image.format() == QImage::Format_Indexed8 && image.colorCount() <= 16)
            return image;
        if (image.isGrayscale()) {
            QList<QRgb> greys;
            for (int i = 0; i < 16; ++i)
                greys << qRgb(i * 17, i * 17, i * 17);
            return image.convertToFormat(QImage::Format_Indexed8, greys);
        }
        // The sixteen colours of the classic display palette.
        static const QList<QRgb> sixteen{
            0xFF000000, 0xFF800000, 0xFF008000, 0xFF808000, 0xFF000080, 0xFF800080, 0xFF008080, 0xFFC0C0C0,
            0xFF808080, 0xFFFF0000, 0xFF00FF00, 0xFFFFFF00, 0xFF0000FF, 0xFFFF00FF, 0xFF00FFFF, 0xFFFFFFFF};
        return image.convertToFormat(QImage::Format_Indexed8, sixteen);
    }
    case 8:
        if (image.format() == QImage::Format_Indexed8 || image.format() == QImage::Format_Grayscale8)
            return image;
        if (image.isGrayscale())
            return image.convertToFormat(QImage::Format_Grayscale8);
        return image.convertToFormat(QImage::Format_Indexed8);
    case 16:
        return image.convertToFormat(QImage::Format_RGB16);
    case 24:
        return image.convertToFormat(QImage::Format_RGB32);
    case 32:
        return image.convertToFormat(QImage::Format_ARGB32);
    default:
        return image;
    }
}

QString writeWithQt(const QImage &image, const char *name, int quality, QIODevice *device)
{
    QImageWriter writer(device, name);
    if (quality > 0)
        writer.setQuality(quality);
    if (!writer.write(image))
        return writer.errorString();
    return {};
}

// A cursor is an icon file with type 2 whose directory entries hold the hot
// spot where an icon keeps its planes and bit count; Qt writes icons only, so
// the icon it writes is turned into a cursor with its hot spot at 0,0.
QString writeCursor(const QImage &image, int quality, QIODevice *device)
{
    QBuffer buffer;
    buffer.open(QIODevice::WriteOnly);
    if (const QString error = writeWithQt(image, "ico", quality, &buffer); !error.isEmpty())
        return error;
    QByteArray bytes = buffer.data();
    if (bytes.size() < 6)
        return QStringLiteral("The cursor could not be written.");
    const int count = qFromLittleEndian<quint16>(bytes.constData() + 4);
    qToLittleEndian<quint16>(2, bytes.data() + 2);
    for (int i = 0; i < count && 6 + i * 16 + 16 <= bytes.size(); ++i) {
        qToLittleEndian<quint16>(0, bytes.data() + 6 + i * 16 + 4);
        qToLittleEndian<quint16>(0, bytes.data() + 6 + i * 16 + 6);
    }
    if (device->write(bytes) != bytes.size())
        return device->errorString();
    return {};
}

QString writeWithOwnCodec(const QImage &image, const PictureFormat &format, int quality, QIODevice *device)
{
    std::unique_ptr<QImageIOHandler> handler = codecs::createHandler(format.writeName);
    if (!handler)
        return QStringLiteral("Saving %1 pictures is not available in this build.").arg(extensionName(format));
    handler->setDevice(device);
    handler->setFormat(format.writeName);
    if (quality > 0 && handler->supportsOption(QImageIOHandler::Quality))
        handler->setOption(QImageIOHandler::Quality, quality);
    if (!handler->write(image))
        return QStringLiteral("The picture could not be written as %1.").arg(extensionName(format));
    return {};
}

// Replaces the old file with the written one, or leaves the old file as it
// was after an error in writing.
SaveResult finishSaving(QSaveFile *file, const QString &error)
{
    SaveResult result;
    if (!error.isEmpty()) {
        file->cancelWriting();
        result.errorString = error;
    } else if (!file->commit()) {
        result.errorString = file->errorString();
    } else {
        result.ok = true;
    }
    return result;
}

} // namespace

qint64 distinctColours(const QImage &image)
{
    if (image.isNull())
        return 0;
    if ((image.format() == QImage::Format_Mono || image.format() == QImage::Format_MonoLSB) && image.colorCount() == 2) {
        // Scanned a byte at a time: a 200-megapixel bitmap is 25 MB.
        bool zero = false, one = false;
        const int fullBytes = image.width() / 8;
        const int rest = image.width() % 8;
        const uchar restMask = image.format() == QImage::Format_Mono ? uchar(0xFF00 >> rest) : uchar((1 << rest) - 1);
        for (int y = 0; y < image.height() && !(zero && one); ++y) {
            const uchar *line = image.constScanLine(y);
            for (int i = 0; i < fullBytes; ++i) {
                zero |= line[i] != 0xFF;
                one |= line[i] != 0x00;
            }
            if (rest) {
                zero |= (line[fullBytes] & restMask) != restMask;
                one |= (line[fullBytes] & restMask) != 0;
            }
        }
        if (zero && one)
            return (image.color(0) & 0xFFFFFF) == (image.color(1) & 0xFFFFFF) ? 1 : 2;
        return 1;
    }
    if (image.format() == QImage::Format_Indexed8 || image.format() == QImage::Format_Mono
        || image.format() == QImage::Format_MonoLSB) {
        // Colours of the palette that the pixels use.
        const QImage indexed = image.convertToFormat(QImage::Format_Indexed8);
        std::vector<bool> used(256, false);
        for (int y = 0; y < indexed.height(); ++y) {
            const uchar *line = indexed.constScanLine(y);
            for (int x = 0; x < indexed.width(); ++x)
                used[line[x]] = true;
        }
        QList<QRgb> colours;
        const QList<QRgb> table = indexed.colorTable();
        for (int i = 0; i < 256; ++i) {
            if (used[size_t(i)] && i < table.size() && !colours.contains(table.at(i) & 0xFFFFFF))
                colours.append(table.at(i) & 0xFFFFFF);
        }
        return colours.size();
    }
    if (image.format() == QImage::Format_Grayscale8) {
        std::vector<bool> used(256, false);
        for (int y = 0; y < image.height(); ++y) {
            const uchar *line = image.constScanLine(y);
            for (int x = 0; x < image.width(); ++x)
                used[line[x]] = true;
        }
        return std::count(used.begin(), used.end(), true);
    }
    // One bit for each 24-bit colour: 2 MiB, whatever the picture's size.
    // Rows in other formats are converted one at a time, so that a picture
    // of 200 megapixels is not copied whole.
    const bool direct = image.format() == QImage::Format_RGB32 || image.format() == QImage::Format_ARGB32;
    std::vector<quint64> seen((1u << 24) / 64, 0);
    const int width = image.width();
    const int height = image.height();
    for (int y = 0; y < height; ++y) {
        QImage row;
        if (!direct)
            row = image.copy(0, y, width, 1).convertToFormat(QImage::Format_ARGB32);
        const QRgb *line = reinterpret_cast<const QRgb *>(direct ? image.constScanLine(y) : row.constScanLine(0));
        for (int x = 0; x < width; ++x) {
            const quint32 c = line[x] & 0xFFFFFF;
            seen[c >> 6] |= quint64(1) << (c & 63);
        }
    }
    qint64 count = 0;
    for (const quint64 word : seen)
        count += std::popcount(word);
    return count;
}

QList<PropertyRow> pictureProperties(const Picture &picture)
{
    const PictureInfo &info = picture.info;
    const auto number = [](double v) { return QString::number(v, 'f', 0); };
    return {
        {QStringLiteral("Number of Bits per Bitmap:"), QString::number(info.bitsPerPixel)},
        {QStringLiteral("Color Count:"), QString::number(distinctColours(picture.image()))},
        {QStringLiteral("Image Format:"), formatName(info.formatCode)},
        {QStringLiteral("Image Height:"), QString::number(info.height)},
        {QStringLiteral("Image Width:"), QString::number(info.width)},
        {QStringLiteral("Image Disk Size:"), QString::number(info.sizeOnDisk)},
        {QStringLiteral("Image Memory Size:"), QString::number(info.sizeInMemory)},
        {QStringLiteral("Image X Resolution:"), number(info.xResolution)},
        {QStringLiteral("Image Y Resolution:"), number(info.yResolution)},
    };
}

LoadResult loadPicture(const QString &path, Pages pages)
{
    LoadResult result;
    const QFileInfo fileInfo(path);
    if (!fileInfo.isFile()) {
        result.errorString = QStringLiteral("The file does not exist: %1").arg(path);
        return result;
    }
    if (fileInfo.size() > MaxFileBytes) {
        result.errorString = QStringLiteral("The file is too large to load as a picture (%1 bytes).").arg(fileInfo.size());
        return result;
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        result.errorString = file.errorString();
        return result;
    }
    const QByteArray head = file.read(HeadBytes);
    if (head.isEmpty()) {
        result.errorString = QStringLiteral("The file is empty.");
        return result;
    }

    // Content first, so that a picture under the wrong extension still loads
    // (and a file that only carries a picture extension is not fed to the
    // wrong library); the extension decides where the content says nothing.
    const PictureFormat *format = sniffFormat(head);
    if (!format)
        format = formatForExtension(fileInfo.suffix());
    if (!format) {
        result.errorString = QStringLiteral("The file is not a picture in a known format.");
        return result;
    }

    const auto wholeFile = [&] {
        file.seek(0);
        return file.readAll();
    };
    detail::Decoded decoded;
    switch (format->reader) {
    case Route::None:
        decoded = detail::failure(QLatin1String(format->refusal ? format->refusal : "The format cannot be read."));
        break;
    case Route::Qt:
        // JPEG straight through libjpeg where it can; Qt's reader takes the
        // files that path leaves (see JpegRoute.h).
        if (qstrcmp(format->readName, "jpeg") == 0) {
            // Mapped rather than read: the file is not copied.
            if (const uchar *mapped = file.map(0, file.size())) {
                decoded = jpeg::read(mapped, file.size());
                file.unmap(const_cast<uchar *>(mapped));
            } else {
                const QByteArray bytes = wholeFile();
                decoded = jpeg::read(reinterpret_cast<const uchar *>(bytes.constData()), bytes.size());
            }
        }
        if (!decoded.ok() && decoded.errorString.isEmpty())
            decoded = readWithQt(path, format->readName, pages);
        // Qt's reader refuses plain (ASCII) bitmaps whose digits run together;
        // ImageMagick reads them.
        if (!decoded.ok() && qstrcmp(format->readName, "pbm") == 0 && magick::coderAvailable("PNM", false))
            decoded = magick::read(wholeFile(), "PNM", pages);
        // Qt's reader refuses TIFF files that leave out tags libtiff can
        // supply (the strip byte counts, the photometric interpretation);
        // libtiff's own reader reads them. ImageMagick never reads TIFF here
        // (see TiffPages.h).
        if (!decoded.ok() && qstrcmp(format->readName, "tiff") == 0) {
            const detail::Decoded direct = tiff::readPages(wholeFile(), pages);
            if (direct.ok())
                decoded = direct;
            else if (!direct.errorString.isEmpty())
                decoded.errorString = direct.errorString;
        }
        if (const int bits = headerBitsPerPixel(*format, head))
            decoded.bitsPerPixel = bits;
        break;
    case Route::Magick:
        // Metafiles take a look of our own first: see readWmf().
        if (qstrcmp(format->readName, "WMF") == 0)
            decoded = vector::readWmf(wholeFile(), pages);
        else
            decoded = magick::read(wholeFile(), format->readName, pages);
        break;
    case Route::Ghostscript:
        decoded = vector::readEps(wholeFile());
        break;
    case Route::Emf:
        decoded = vector::readEmf(wholeFile());
        break;
    case Route::Dxf:
        decoded = vector::readDxf(wholeFile());
        break;
    case Route::FlashPix:
        decoded = vector::readFlashPix(wholeFile());
        break;
    case Route::OwnCodec:
        // Dr. Halo and MacPaint are read by ImageMagick as well, in builds
        // without our codecs; Photoshop files in the colour modes that our
        // reader leaves alone always are.
        if (effectiveReader(*format) == Route::Magick || leftToMagick(*format, path))
            decoded = magick::read(wholeFile(), format->magickFallback, pages);
        else
            decoded = readWithOwnCodec(path, *format, pages);
        break;
    }
    if (!decoded.ok()) {
        result.errorString = decoded.errorString.isEmpty()
                                 ? QStringLiteral("The %1 picture could not be loaded.").arg(extensionName(*format))
                                 : decoded.errorString;
        return result;
    }
    result.picture.frames = decoded.frames;
    result.picture.info = describe(decoded.frames.constFirst().image, decoded.bitsPerPixel,
                                   fileFormatNumber(*format, head, &file), fileInfo.size());
    return result;
}

SaveResult savePicture(const Picture &picture, const QString &path, int formatCode, int bitsPerPixel, int quality)
{
    SaveResult result;
    if (picture.isNull()) {
        result.errorString = QStringLiteral("There is no picture to save.");
        return result;
    }
    const PictureFormat *format = formatForCode(formatCode);
    if (!format) {
        result.errorString = QStringLiteral("No picture format has the format code %1.").arg(formatCode);
        return result;
    }
    if (!canWrite(*format)) {
        result.errorString = QStringLiteral("Pictures cannot be saved in the %1 format.").arg(extensionName(*format));
        return result;
    }
    const int bpp = bitsPerPixel > 0 ? bitsPerPixel : picture.info.bitsPerPixel;
    // Icons and cursors are always written with 32 bits and their alpha: a
    // palette conversion would only lose the transparency on the way.
    const bool keepsOwnDepth = format->code == 91 || format->code == 92;
    // JPEG holds 8 bits only as grey; a palette would be written as colour.
    const bool greyJpeg = bpp == 8 && format->writer == Route::Qt && qstrcmp(format->writeName, "jpeg") == 0;
    QList<QImage> frames;
    for (const PictureFrame &frame : picture.frames) {
        if (greyJpeg)
            frames << frame.image.convertToFormat(QImage::Format_Grayscale8);
        else
            frames << (keepsOwnDepth ? frame.image : convertForDepth(frame.image, bpp));
    }

    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        result.errorString = file.errorString();
        return result;
    }
    QString error;
    if (format->code == 3 && frames.size() > 1) {
        // Qt writes TIFF one page a file.
        error = tiff::writePages(frames, &file);
    } else if (format->writer == Route::Magick) {
        QByteArray bytes;
        error = magick::write(frames.mid(0, 1), format->writeName, bpp, quality, &bytes);
        if (error.isEmpty() && file.write(bytes) != bytes.size())
            error = file.errorString();
    } else if (qstrcmp(format->extension, "CUR") == 0) {
        error = writeCursor(frames.constFirst(), quality, &file);
    } else if (format->writer == Route::Qt && qstrcmp(format->writeName, "jpeg") == 0 && jpeg::canWrite(frames.constFirst())) {
        // Grey and colour JPEG through libjpeg directly, on every core (see
        // JpegRoute.h); Qt's writer takes the other depths.
        error = jpeg::write(frames.constFirst(), quality, &file);
    } else if (format->writer == Route::Qt) {
        if (format->code == 3)
            tiff::quietMessageHandlers();
        error = writeWithQt(frames.constFirst(), format->writeName, quality, &file);
    } else if (format->writer == Route::OwnCodec) {
        error = writeWithOwnCodec(frames.constFirst(), *format, quality, &file);
    } else {
        error = QStringLiteral("Pictures cannot be saved in the %1 format.").arg(extensionName(*format));
    }
    return finishSaving(&file, error);
}

SaveResult convertJpeg(const QString &in, const QString &out, int formatCode, int quality, const BandChange &change,
                       bool upsideDown, bool *handled)
{
    *handled = false;
    const PictureFormat *format = formatForCode(formatCode);
    if (!format || format->writer != Route::Qt || qstrcmp(format->writeName, "jpeg") != 0)
        return {};
    QFile file(in);
    if (!file.open(QIODevice::ReadOnly) || file.size() > MaxFileBytes)
        return {};
    const PictureFormat *content = sniffFormat(file.peek(HeadBytes));
    if (!content || content->reader != Route::Qt || qstrcmp(content->readName, "jpeg") != 0)
        return {};
    const uchar *mapped = file.map(0, file.size());
    if (!mapped)
        return {};

    SaveResult result;
    QSaveFile saved(out);
    if (!saved.open(QIODevice::WriteOnly)) {
        file.unmap(const_cast<uchar *>(mapped));
        *handled = true;
        result.errorString = saved.errorString();
        return result;
    }
    QString error;
    *handled = jpeg::transcode(mapped, file.size(), quality, change, upsideDown, &saved, &error);
    file.unmap(const_cast<uchar *>(mapped));
    if (!*handled) {
        saved.cancelWriting();
        return result;
    }
    return finishSaving(&saved, error);
}

} // namespace tarnby::imaging
