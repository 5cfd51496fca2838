#include "FlashPixSamples.h"

#include "CodecSamples.h"

#include <QList>
#include <QString>
#include <QtEndian>

#undef signals // glib uses the word as a field name
#include <gsf/gsf-outfile-msole.h>
#include <gsf/gsf-outfile.h>
#include <gsf/gsf-output-memory.h>
#include <gsf/gsf-utils.h>

#include <cmath>
#include <cstdio>
#include <cstdlib>
#include <mutex>

#include <jpeglib.h>

namespace fpxsample {

namespace {

// The channel codes: colour space in the high word, colour in the low word,
// 0x7FFE for opacity, bit 15 for premultiplied colours.
QList<quint32> codesOf(Channels channels)
{
    switch (channels) {
    case Channels::Grey: return {0x00010000};
    case Channels::GreyOpacity: return {0x00010000, 0x00017FFE};
    case Channels::Rgb: return {0x00030000, 0x00030001, 0x00030002};
    case Channels::RgbOpacity: return {0x00030000, 0x00030001, 0x00030002, 0x00037FFE};
    case Channels::RgbPremultiplied: return {0x00038000, 0x00038001, 0x00038002, 0x00037FFE};
    case Channels::PhotoYcc: return {0x00020000, 0x00020001, 0x00020002};
    case Channels::PhotoYccOpacity: return {0x00020000, 0x00020001, 0x00020002, 0x00027FFE};
    case Channels::FiveBands: return {0x00030000, 0x00030001, 0x00030002, 0x00037FFE, 0x00037FFE};
    }
    return {};
}

// PhotoYCC from 8-bit R'G'B', by its definition.
void toPhotoYcc(QRgb c, uchar *out)
{
    const double r = qRed(c) / 255.0, g = qGreen(c) / 255.0, b = qBlue(c) / 255.0;
    const double y = 0.299 * r + 0.587 * g + 0.114 * b;
    out[0] = uchar(std::lround(255 / 1.402 * y));
    out[1] = uchar(std::lround(111.40 * (b - y) + 156));
    out[2] = uchar(std::lround(135.64 * (r - y) + 137));
}

// The channels of one pixel as the file stores them.
QByteArray channelsOf(QRgb c, Channels channels)
{
    uchar p[5] = {};
    switch (channels) {
    case Channels::Grey:
    case Channels::GreyOpacity:
        p[0] = uchar(qGray(c));
        p[1] = uchar(qAlpha(c));
        break;
    case Channels::PhotoYcc:
    case Channels::PhotoYccOpacity:
        toPhotoYcc(c, p);
        p[3] = uchar(qAlpha(c));
        break;
    case Channels::RgbPremultiplied:
        c = qPremultiply(c);
        Q_FALLTHROUGH();
    default:
        p[0] = uchar(qRed(c));
        p[1] = uchar(qGreen(c));
        p[2] = uchar(qBlue(c));
        p[3] = p[4] = uchar(qAlpha(c));
        break;
    }
    return QByteArray(reinterpret_cast<const char *>(p), bandsOf(channels));
}

struct Bytes {
    QByteArray data;
    void u32(quint32 v)
    {
        char b[4];
        qToLittleEndian(v, b);
        data.append(b, 4);
    }
    void put(qsizetype at, quint32 v) { qToLittleEndian(v, data.data() + at); }
};

// A property set with one section: 4-byte unsigned numbers and blobs by id.
QByteArray propertySet(const QList<std::pair<quint32, quint32>> &numbers,
                       const QList<std::pair<quint32, QByteArray>> &blobs)
{
    Bytes values;
    QList<std::pair<quint32, quint32>> offsets; // id, offset in the section
    const int count = int(numbers.size() + blobs.size());
    const int first = 8 + 8 * count;
    for (const auto &[id, value] : numbers) {
        offsets.append({id, quint32(first + values.data.size())});
        values.u32(19); // VT_UI4
        values.u32(value);
    }
    for (const auto &[id, blob] : blobs) {
        offsets.append({id, quint32(first + values.data.size())});
        values.u32(0x41); // VT_BLOB
        values.u32(quint32(blob.size()));
        values.data.append(blob);
        while (values.data.size() % 4)
            values.data.append('\0');
    }
    Bytes set;
    set.data = QByteArray("\xFE\xFF\0\0", 4) + QByteArray(20, '\0');
    set.u32(1);                           // sections
    set.data.append(QByteArray(16, '\0')); // format id
    set.u32(48);                          // the section's offset
    set.u32(quint32(first + values.data.size()));
    set.u32(quint32(count));
    for (const auto &[id, offset] : offsets) {
        set.u32(id);
        set.u32(offset);
    }
    set.data.append(values.data);
    return set.data;
}

QByteArray jpegOf(const QImage &image)
{
    return codecsamples::encoded(image, "JPEG", 95);
}

// A 64 x 64 JPEG of three channels per pixel, stored as they are: the coder
// is told they already are its own luma and chroma, so it converts nothing.
QByteArray unconvertedJpeg(const QByteArray &samples)
{
    jpeg_compress_struct cinfo;
    jpeg_error_mgr error;
    cinfo.err = jpeg_std_error(&error);
    jpeg_create_compress(&cinfo);
    unsigned char *buffer = nullptr;
    unsigned long size = 0;
    jpeg_mem_dest(&cinfo, &buffer, &size);
    cinfo.image_width = Tile;
    cinfo.image_height = Tile;
    cinfo.input_components = 3;
    cinfo.in_color_space = JCS_YCbCr;
    jpeg_set_defaults(&cinfo);
    jpeg_set_quality(&cinfo, 95, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    while (cinfo.next_scanline < cinfo.image_height) {
        auto *row = reinterpret_cast<JSAMPROW>(const_cast<char *>(samples.constData()) + cinfo.next_scanline * Tile * 3);
        jpeg_write_scanlines(&cinfo, &row, 1);
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    QByteArray bytes(reinterpret_cast<const char *>(buffer), qsizetype(size));
    free(buffer);
    return bytes;
}

void addStream(GsfOutfile *storage, const char *name, const QByteArray &bytes)
{
    GsfOutput *stream = gsf_outfile_new_child(storage, name, FALSE);
    gsf_output_write(stream, size_t(bytes.size()), reinterpret_cast<const guint8 *>(bytes.constData()));
    gsf_output_close(stream);
    g_object_unref(stream);
}

} // namespace

int bandsOf(Channels channels)
{
    switch (channels) {
    case Channels::Grey: return 1;
    case Channels::GreyOpacity: return 2;
    case Channels::Rgb:
    case Channels::PhotoYcc: return 3;
    case Channels::FiveBands: return 5;
    default: return 4;
    }
}

QByteArray flashPix(const QImage &picture, Channels channels, Tiles tiles, Damage damage)
{
    static std::once_flag once;
    std::call_once(once, [] { gsf_init(); });
    const int width = picture.width(), height = picture.height();
    const int bands = bandsOf(channels);
    const int across = (width + Tile - 1) / Tile, down = (height + Tile - 1) / Tile;
    int level = 0;
    for (int side = std::max(width, height); side > Tile; side /= 2)
        ++level;

    // The data stream: a 28-byte header, then the tiles; the table gives
    // each tile's place counted from the end of that header.
    Bytes data;
    data.data = QByteArray(28, '\0');
    Bytes header;
    header.data = QByteArray(28, '\0');
    header.u32(36);
    header.u32(quint32(damage == Damage::TileTableOfAnotherSize ? width + 1 : width));
    header.u32(quint32(height));
    header.u32(quint32(across * down));
    header.u32(Tile);
    header.u32(Tile);
    header.u32(quint32(bands));
    header.u32(36); // the table, from offset 28
    header.u32(16);
    for (int t = 0; t < across * down; ++t) {
        const int x0 = t % across * Tile, y0 = t / across * Tile;
        const int w = std::min(Tile, width - x0), h = std::min(Tile, height - y0);
        QByteArray bytes;
        quint32 compression = 0, subtype = 0;
        if (tiles == Tiles::SingleColour) {
            compression = 1;
            const QByteArray c = channelsOf(picture.pixel(x0, y0), channels);
            for (int i = 0; i < std::min(bands, 4); ++i)
                subtype |= quint32(uchar(c.at(i))) << (8 * i);
        } else if (tiles == Tiles::Jpeg || tiles == Tiles::JpegUnconverted) {
            compression = 2;
            // A whole tile, the picture's last row and column repeated
            // past its edge, as encoders pad them.
            QImage tile(Tile, Tile, QImage::Format_RGB32);
            for (int y = 0; y < Tile; ++y)
                for (int x = 0; x < Tile; ++x)
                    tile.setPixel(x, y, picture.pixel(x0 + std::min(x, w - 1), y0 + std::min(y, h - 1)));
            if (channels == Channels::Grey) {
                bytes = jpegOf(tile.convertToFormat(QImage::Format_Grayscale8));
            } else if (channels == Channels::Rgb && tiles == Tiles::Jpeg) {
                bytes = jpegOf(tile); // the coder's own YCbCr, which the subtype says
                subtype = 1 << 16;
            } else {
                QByteArray samples;
                for (int y = 0; y < Tile; ++y)
                    for (int x = 0; x < Tile; ++x)
                        samples += channelsOf(tile.pixel(x, y), channels);
                bytes = unconvertedJpeg(samples);
            }
        } else {
            for (int y = 0; y < h; ++y)
                for (int x = 0; x < w; ++x)
                    bytes += channelsOf(picture.pixel(x0 + x, y0 + y), channels);
            if (damage == Damage::TileShorterThanItsPixels && t == across * down - 1)
                bytes.chop(1);
        }
        if (damage == Damage::UnknownCompression && t == 0)
            compression = 7;
        const quint32 offset = quint32(data.data.size() - 28);
        header.u32(damage == Damage::TileOutsideData && t == 0 ? offset + 1000000 : offset);
        header.u32(quint32(bytes.size()));
        header.u32(compression);
        header.u32(subtype);
        data.data.append(bytes);
    }
    if (damage == Damage::TileTableCut)
        header.data.chop(20);

    QList<quint32> codes = codesOf(channels);
    if (damage == Damage::OpacityNotLast)
        std::swap(codes[0], codes[codes.size() - 1]);
    Bytes colour;
    colour.u32(1);
    colour.u32(quint32(codes.size()));
    for (quint32 code : codes)
        colour.u32(code);
    const QByteArray contents = propertySet({{0x01000002, quint32(width)}, {0x01000003, quint32(height)}},
                                            {{0x02000002 | (quint32(level) << 16), colour.data}});

    GsfOutput *memory = gsf_output_memory_new();
    GsfOutfile *root = gsf_outfile_msole_new(memory);
    GsfOutfile *store = GSF_OUTFILE(gsf_outfile_new_child(GSF_OUTFILE(root), "Data Object Store 000001", TRUE));
    addStream(store, "\005Image Contents", contents);
    const QByteArray resolution = QStringLiteral("Resolution %1").arg(level, 4, 10, QLatin1Char('0')).toLatin1();
    GsfOutfile *subimage = GSF_OUTFILE(gsf_outfile_new_child(store, resolution.constData(), TRUE));
    addStream(subimage, "Subimage 0000 Header", header.data);
    if (damage != Damage::NoTileData)
        addStream(subimage, "Subimage 0000 Data", data.data);
    gsf_output_close(GSF_OUTPUT(subimage));
    g_object_unref(subimage);
    gsf_output_close(GSF_OUTPUT(store));
    g_object_unref(store);
    gsf_output_close(GSF_OUTPUT(root));
    g_object_unref(root);
    // Closing the container closed the memory output under it.
    QByteArray file(reinterpret_cast<const char *>(gsf_output_memory_get_bytes(GSF_OUTPUT_MEMORY(memory))),
                    qsizetype(gsf_output_size(memory)));
    g_object_unref(memory);
    if (damage == Damage::ContainerCut)
        file.truncate(file.size() / 2);
    return file;
}

} // namespace fpxsample
