#include "core/platform/imaging/TiffPages.h"

#include <QBuffer>
#include <QImageIOHandler>

#include <tiffio.h>

#include <cstdarg>
#include <cstdio>
#include <memory>
#include <vector>

namespace tarnby::imaging::tiff {

namespace {

QIODevice *deviceOf(thandle_t handle)
{
    return static_cast<QIODevice *>(handle);
}

tmsize_t readProc(thandle_t handle, void *buffer, tmsize_t size)
{
    return deviceOf(handle)->read(static_cast<char *>(buffer), size);
}

tmsize_t writeProc(thandle_t handle, void *buffer, tmsize_t size)
{
    return deviceOf(handle)->write(static_cast<const char *>(buffer), size);
}

toff_t seekProc(thandle_t handle, toff_t offset, int whence)
{
    QIODevice *device = deviceOf(handle);
    qint64 target = qint64(offset);
    if (whence == SEEK_CUR)
        target += device->pos();
    else if (whence == SEEK_END)
        target += device->size();
    // A read-only device cannot reach beyond its end; libtiff asks for that
    // on damaged files, and the device would complain aloud.
    if (target < 0 || (!device->isWritable() && target > device->size()))
        return toff_t(-1);
    if (!device->seek(target))
        return toff_t(-1);
    return toff_t(device->pos());
}

int closeProc(thandle_t)
{
    return 0;
}

toff_t sizeProc(thandle_t handle)
{
    return toff_t(deviceOf(handle)->size());
}

int mapProc(thandle_t, void **, toff_t *)
{
    return 0;
}

void unmapProc(thandle_t, void *, toff_t)
{
}

// The last message libtiff gave while writing on this thread.
thread_local QString lastMessage;

int captureMessage(TIFF *, void *, const char *module, const char *format, va_list args)
{
    char text[512];
    vsnprintf(text, sizeof text, format, args);
    lastMessage = QStringLiteral("%1: %2").arg(QLatin1String(module ? module : "libtiff"), QString::fromLocal8Bit(text));
    return 1; // handled: libtiff's global handler is not called
}

bool writePage(TIFF *tif, const QImage &page, int index, int count)
{
    TIFFSetField(tif, TIFFTAG_IMAGEWIDTH, uint32_t(page.width()));
    TIFFSetField(tif, TIFFTAG_IMAGELENGTH, uint32_t(page.height()));
    TIFFSetField(tif, TIFFTAG_ORIENTATION, ORIENTATION_TOPLEFT);
    TIFFSetField(tif, TIFFTAG_PLANARCONFIG, PLANARCONFIG_CONTIG);
    TIFFSetField(tif, TIFFTAG_COMPRESSION, COMPRESSION_LZW);
    TIFFSetField(tif, TIFFTAG_SUBFILETYPE, FILETYPE_PAGE);
    TIFFSetField(tif, TIFFTAG_PAGENUMBER, uint16_t(index), uint16_t(count));
    TIFFSetField(tif, TIFFTAG_RESOLUTIONUNIT, RESUNIT_INCH);
    TIFFSetField(tif, TIFFTAG_XRESOLUTION, float(page.dotsPerMeterX() * 0.0254));
    TIFFSetField(tif, TIFFTAG_YRESOLUTION, float(page.dotsPerMeterY() * 0.0254));

    QImage rows;
    if (page.format() == QImage::Format_Mono || page.format() == QImage::Format_MonoLSB) {
        // Bit 1 is white in a min-is-black bitmap; the palette is brought to that order.
        rows = page.convertToFormat(QImage::Format_Mono, QList<QRgb>{qRgb(0, 0, 0), qRgb(255, 255, 255)});
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 1);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    } else if (page.format() == QImage::Format_Indexed8) {
        rows = page;
        std::vector<uint16_t> red(256, 0), green(256, 0), blue(256, 0);
        for (int i = 0; i < page.colorCount() && i < 256; ++i) {
            red[size_t(i)] = uint16_t(qRed(page.color(i)) * 257);
            green[size_t(i)] = uint16_t(qGreen(page.color(i)) * 257);
            blue[size_t(i)] = uint16_t(qBlue(page.color(i)) * 257);
        }
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_PALETTE);
        TIFFSetField(tif, TIFFTAG_COLORMAP, red.data(), green.data(), blue.data());
    } else if (page.format() == QImage::Format_Grayscale8) {
        rows = page;
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 1);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_MINISBLACK);
    } else if (page.hasAlphaChannel()) {
        rows = page.convertToFormat(QImage::Format_RGBA8888);
        const uint16_t extra[] = {EXTRASAMPLE_UNASSALPHA};
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 4);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
        TIFFSetField(tif, TIFFTAG_EXTRASAMPLES, 1, extra);
    } else {
        rows = page.convertToFormat(QImage::Format_RGB888);
        TIFFSetField(tif, TIFFTAG_BITSPERSAMPLE, 8);
        TIFFSetField(tif, TIFFTAG_SAMPLESPERPIXEL, 3);
        TIFFSetField(tif, TIFFTAG_PHOTOMETRIC, PHOTOMETRIC_RGB);
    }
    TIFFSetField(tif, TIFFTAG_ROWSPERSTRIP, TIFFDefaultStripSize(tif, 0));
    for (int y = 0; y < rows.height(); ++y) {
        // libtiff takes a mutable row; the copy keeps the page untouched.
        std::vector<uchar> line(rows.constScanLine(y), rows.constScanLine(y) + rows.bytesPerLine());
        if (TIFFWriteScanline(tif, line.data(), uint32_t(y), 0) < 0)
            return false;
    }
    return TIFFWriteDirectory(tif) != 0;
}

constexpr int MaxPages = 4096;

struct TiffCloser {
    void operator()(TIFF *tif) const { TIFFClose(tif); }
};

// One page through libtiff's RGBA reader, which hands back A, B, G and R in
// one 32-bit word, colours premultiplied where the page has alpha.
QImage readRgbaPage(TIFF *tif, uint32_t width, uint32_t height, QString *error)
{
    char why[1024] = {};
    if (!TIFFRGBAImageOK(tif, why)) {
        *error = QStringLiteral("The TIFF page cannot be read: %1").arg(QString::fromLocal8Bit(why));
        return {};
    }
    QImage page;
    if (!QImageIOHandler::allocateImage(QSize(int(width), int(height)), QImage::Format_ARGB32_Premultiplied, &page)) {
        *error = QStringLiteral("Not enough memory for a picture of %1 x %2 pixels.").arg(width).arg(height);
        return {};
    }
    // ARGB32 rows are whole words, so the page is one unpadded raster.
    auto *raster = reinterpret_cast<uint32_t *>(page.bits());
    if (!TIFFReadRGBAImageOriented(tif, width, height, raster, ORIENTATION_TOPLEFT, 0)) {
        *error = QStringLiteral("The TIFF page could not be decoded (%1).").arg(lastMessage);
        return {};
    }
    bool opaque = true;
    const qint64 count = qint64(width) * height;
    for (qint64 i = 0; i < count; ++i) {
        const uint32_t abgr = raster[i];
        raster[i] = qRgba(int(TIFFGetR(abgr)), int(TIFFGetG(abgr)), int(TIFFGetB(abgr)), int(TIFFGetA(abgr)));
        opaque = opaque && TIFFGetA(abgr) == 255;
    }
    page = opaque ? page.convertToFormat(QImage::Format_RGB32) : page.convertToFormat(QImage::Format_ARGB32);

    float xRes = 0, yRes = 0;
    uint16_t unit = RESUNIT_INCH;
    TIFFGetFieldDefaulted(tif, TIFFTAG_RESOLUTIONUNIT, &unit);
    if (unit != RESUNIT_NONE && TIFFGetField(tif, TIFFTAG_XRESOLUTION, &xRes) && TIFFGetField(tif, TIFFTAG_YRESOLUTION, &yRes)
        && xRes > 0 && yRes > 0 && xRes < 1e6f && yRes < 1e6f) {
        const double perMetre = unit == RESUNIT_CENTIMETER ? 100.0 : 1 / 0.0254;
        page.setDotsPerMeterX(qRound(xRes * perMetre));
        page.setDotsPerMeterY(qRound(yRes * perMetre));
    }
    return page;
}

} // namespace

detail::Decoded readPages(const QByteArray &data, Pages pages)
{
    quietMessageHandlers();
    lastMessage.clear();
    QBuffer buffer;
    buffer.setData(data);
    buffer.open(QIODevice::ReadOnly);
    TIFFOpenOptions *options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, captureMessage, nullptr);
    // libtiff's own buffers (strips, tiles, tag arrays) stay within what the
    // pixel bound allows a decoded picture.
    TIFFOpenOptionsSetMaxSingleMemAlloc(options, tmsize_t(MaxPixels * 4));
    std::unique_ptr<TIFF, TiffCloser> tif(TIFFClientOpenExt("tarnby", "rm", &buffer, readProc, writeProc, seekProc,
                                                             closeProc, sizeProc, mapProc, unmapProc, options));
    TIFFOpenOptionsFree(options);
    if (!tif)
        return detail::failure(QStringLiteral("The TIFF file could not be opened (%1).").arg(lastMessage));

    detail::Decoded decoded;
    uint16_t bitsPerSample = 1, samplesPerPixel = 1;
    TIFFGetFieldDefaulted(tif.get(), TIFFTAG_BITSPERSAMPLE, &bitsPerSample);
    TIFFGetFieldDefaulted(tif.get(), TIFFTAG_SAMPLESPERPIXEL, &samplesPerPixel);
    decoded.bitsPerPixel = int(bitsPerSample) * samplesPerPixel;
    qint64 total = 0;
    do {
        uint32_t width = 0, height = 0;
        TIFFGetField(tif.get(), TIFFTAG_IMAGEWIDTH, &width);
        TIFFGetField(tif.get(), TIFFTAG_IMAGELENGTH, &height);
        if (!detail::withinPixelBound(width, height))
            return detail::failure(width > 0 && height > 0 ? detail::tooLargeMessage(width, height)
                                                           : QStringLiteral("The TIFF page has no width or height."));
        total += qint64(width) * height;
        if (total > MaxPixels)
            return detail::failure(QStringLiteral("The file's pages together are too large to load."));
        QString error;
        const QImage page = readRgbaPage(tif.get(), width, height, &error);
        if (page.isNull()) {
            // Later pages that fail leave the ones already read.
            if (decoded.frames.isEmpty())
                return detail::failure(error);
            break;
        }
        decoded.frames.append({page, 0});
    } while (pages == Pages::All && decoded.frames.size() < MaxPages && TIFFReadDirectory(tif.get()));
    return decoded;
}

void quietMessageHandlers()
{
    TIFFSetErrorHandler(nullptr);
    TIFFSetWarningHandler(nullptr);
}

QString writePages(const QList<QImage> &pages, QIODevice *device)
{
    quietMessageHandlers();
    lastMessage.clear();
    // libtiff reads back what it wrote while it chains directories, and the
    // target (a QSaveFile) is write-only: the file is built in memory first.
    QBuffer buffer;
    buffer.open(QIODevice::ReadWrite);
    TIFFOpenOptions *options = TIFFOpenOptionsAlloc();
    TIFFOpenOptionsSetErrorHandlerExtR(options, captureMessage, nullptr);
    TIFF *tif = TIFFClientOpenExt("tarnby", "w", &buffer, readProc, writeProc, seekProc, closeProc, sizeProc, mapProc,
                                  unmapProc, options);
    TIFFOpenOptionsFree(options);
    if (!tif)
        return QStringLiteral("The TIFF file could not be started (%1).").arg(lastMessage);
    bool ok = true;
    for (int i = 0; i < pages.size() && ok; ++i)
        ok = writePage(tif, pages.at(i), i, int(pages.size()));
    TIFFClose(tif);
    if (!ok)
        return QStringLiteral("The TIFF pages could not be written (%1).").arg(lastMessage);
    if (device->write(buffer.data()) != buffer.size())
        return device->errorString();
    return {};
}

} // namespace tarnby::imaging::tiff
