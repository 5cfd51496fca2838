#include "core/platform/imaging/JpegRoute.h"

#include "core/platform/imaging/LibJpegErrors.h"

#include <QColorSpace>
#include <QImage>

#include <cstring>

namespace tarnby::imaging::jpeg {

namespace {

constexpr int IccOverhead = 14; // "ICC_PROFILE\0", sequence number, count

// Comments as Qt's reader keys them: "Key: value" where the text before the
// first ": " is one word, else the whole comment under "Description".
void addComment(QImage *image, const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    const qsizetype colon = text.indexOf(QLatin1String(": "));
    const qsizetype space = text.indexOf(QLatin1Char(' '));
    if (colon < 0 || space < colon)
        image->setText(QStringLiteral("Description"), text);
    else
        image->setText(text.left(colon), text.mid(colon + 2));
}

// The ICC profile, which a file may split over several APP2 markers,
// numbered from 1.
QByteArray iccProfile(jpeg_saved_marker_ptr markers)
{
    QList<QByteArray> parts;
    for (jpeg_saved_marker_ptr m = markers; m; m = m->next) {
        if (m->marker != JPEG_APP0 + 2 || m->data_length <= unsigned(IccOverhead)
            || std::memcmp(m->data, "ICC_PROFILE", 12) != 0)
            continue;
        const int number = m->data[12];
        const int count = m->data[13];
        if (number < 1 || number > count)
            return {};
        parts.resize(count);
        parts[number - 1] = QByteArray(reinterpret_cast<const char *>(m->data) + IccOverhead,
                                       qsizetype(m->data_length) - IccOverhead);
    }
    QByteArray profile;
    for (const QByteArray &part : parts) {
        if (part.isEmpty())
            return {};
        profile += part;
    }
    return profile;
}

// Dots per metre cut to whole numbers, as Qt's reader has them: 96 dpi is
// 3779, not 3780.
void setResolution(QImage *image, const jpeg_decompress_struct &cinfo)
{
    if (cinfo.density_unit == 1) { // dots per inch
        image->setDotsPerMeterX(int(100.0 * cinfo.X_density / 2.54));
        image->setDotsPerMeterY(int(100.0 * cinfo.Y_density / 2.54));
    } else if (cinfo.density_unit == 2) { // dots per centimetre
        image->setDotsPerMeterX(cinfo.X_density * 100);
        image->setDotsPerMeterY(cinfo.Y_density * 100);
    }
}

} // namespace

detail::Decoded read(const uchar *data, qsizetype size)
{
    jpeg_decompress_struct cinfo;
    detail::JpegError error;
    detail::useJpegError(cinfo, error);
    // Outside the setjmp scope: a jump back must not skip its destructor.
    QImage image;
    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&cinfo);
        return {};
    }
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, data, static_cast<unsigned long>(size));
    jpeg_save_markers(&cinfo, JPEG_COM, 0xFFFF);
    jpeg_save_markers(&cinfo, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(&cinfo, TRUE);
    const J_COLOR_SPACE space = cinfo.jpeg_color_space;
    if (space != JCS_GRAYSCALE && space != JCS_YCbCr && space != JCS_RGB) {
        jpeg_destroy_decompress(&cinfo);
        return {};
    }
    if (!detail::withinPixelBound(cinfo.image_width, cinfo.image_height)) {
        jpeg_destroy_decompress(&cinfo);
        return detail::failure(detail::tooLargeMessage(cinfo.image_width, cinfo.image_height));
    }
    const bool grey = space == JCS_GRAYSCALE;
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGRX;
#else
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_XRGB;
#endif
    jpeg_calc_output_dimensions(&cinfo);
    image = QImage(int(cinfo.output_width), int(cinfo.output_height), grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
    if (image.isNull()) {
        jpeg_destroy_decompress(&cinfo);
        return detail::failure(QStringLiteral("Not enough memory to load the picture."));
    }
    // The saved markers live until the decompression ends.
    setResolution(&image, cinfo);
    for (jpeg_saved_marker_ptr m = cinfo.marker_list; m; m = m->next) {
        if (m->marker == JPEG_COM)
            addComment(&image, QByteArray(reinterpret_cast<const char *>(m->data), qsizetype(m->data_length)));
    }
    if (const QByteArray icc = iccProfile(cinfo.marker_list); !icc.isEmpty())
        image.setColorSpace(QColorSpace::fromIccProfile(icc));
    jpeg_start_decompress(&cinfo);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = image.scanLine(int(cinfo.output_scanline));
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);

    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    return decoded;
}

} // namespace tarnby::imaging::jpeg
