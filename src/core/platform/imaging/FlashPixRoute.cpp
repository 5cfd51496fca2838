#include "core/platform/imaging/VectorRoutes.h"

#include <QMap>
#include <QPainter>
#include <QtEndian>

// glib's headers use "signals" as a field name, which Qt defines as a keyword.
#undef signals
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-utils.h>

#include <csetjmp>
#include <cstdio>
#include <memory>
#include <mutex>
#include <optional>

#include "core/platform/imaging/LibJpegErrors.h"

// FlashPix keeps a picture as a pyramid of resolutions inside an OLE2
// container: "Data Object Store 000001" holds the "\005Image Contents"
// property set (sizes, colour spaces, JPEG tables) and one "Resolution NNNN"
// storage per level, each with a "Subimage 0000 Header" (the tile table) and
// "Subimage 0000 Data" (the tiles, 64 x 64 pixels each). The largest level is
// decoded here.
namespace tarnby::imaging::vector {

namespace {

constexpr quint32 TileSize = 64;

struct GObjectDeleter {
    void operator()(gpointer object) const
    {
        if (object)
            g_object_unref(object);
    }
};
using InputPtr = std::unique_ptr<GsfInput, GObjectDeleter>;
using InfilePtr = std::unique_ptr<GsfInfile, GObjectDeleter>;

quint32 u32(const QByteArray &d, qsizetype at)
{
    return at >= 0 && at + 4 <= d.size() ? qFromLittleEndian<quint32>(d.constData() + at) : 0;
}

QByteArray readStream(GsfInfile *root, const char *storage, const char *name)
{
    InputPtr child(storage ? gsf_infile_child_by_vname(root, "Data Object Store 000001", storage, name, nullptr)
                           : gsf_infile_child_by_vname(root, "Data Object Store 000001", name, nullptr));
    if (!child)
        return {};
    const gsf_off_t size = gsf_input_size(child.get());
    if (size <= 0 || size > MaxFileBytes)
        return {};
    QByteArray bytes(qsizetype(size), Qt::Uninitialized);
    if (!gsf_input_read(child.get(), size_t(size), reinterpret_cast<guint8 *>(bytes.data())))
        return {};
    return bytes;
}

// The values of a property set's first section that we use: 4-byte integers
// and blobs, by property id.
struct Properties {
    QMap<quint32, quint32> numbers;
    QMap<quint32, QByteArray> blobs;
};

Properties parseProperties(const QByteArray &set)
{
    Properties out;
    if (u32(set, 24) < 1)
        return out;
    const qsizetype section = u32(set, 44);
    const quint32 count = u32(set, section + 4);
    for (quint32 i = 0; i < count && i < 4096; ++i) {
        const quint32 id = u32(set, section + 8 + i * 8);
        const qsizetype at = section + qsizetype(u32(set, section + 12 + i * 8));
        const quint32 type = u32(set, at);
        if (type == 3 || type == 19) { // VT_I4, VT_UI4
            out.numbers.insert(id, u32(set, at + 4));
        } else if (type == 0x41) { // VT_BLOB
            const quint32 length = u32(set, at + 4);
            if (length <= quint32(set.size()) && at + 8 + qsizetype(length) <= set.size())
                out.blobs.insert(id, set.mid(at + 8, length));
        }
    }
    return out;
}

// A level's channels: one grey or three colour channels, each possibly
// followed by an opacity channel.
enum class Colours { Grey, Rgb, PhotoYcc };

struct Layout {
    Colours colours = Colours::Grey;
    bool opacity = false;
    bool premultiplied = false; // the colour channels are multiplied by the opacity
    quint32 bands = 0;
};

// A channel's code: its colour space in the high word (the top bit marks it
// uncalibrated), its colour in the low word, where 0x7FFE is the opacity and
// bit 15 marks a colour channel premultiplied by that opacity.
constexpr quint32 SpaceMonochrome = 1, SpacePhotoYcc = 2, SpaceNifRgb = 3;
constexpr quint32 OpacityChannel = 0x7FFE;

std::optional<Layout> layoutOf(const QByteArray &colour)
{
    Layout layout;
    layout.bands = u32(colour, 4);
    if (layout.bands < 1 || layout.bands > 4)
        return std::nullopt;
    const auto space = [&](quint32 i) { return (u32(colour, 8 + 4 * i) & 0x7FFFFFFF) >> 16; };
    const auto channel = [&](quint32 i) { return u32(colour, 8 + 4 * i) & 0x7FFF; };
    layout.opacity = layout.bands == 2 || layout.bands == 4;
    const quint32 colourBands = layout.opacity ? layout.bands - 1 : layout.bands;
    if (layout.opacity && channel(colourBands) != OpacityChannel)
        return std::nullopt;
    layout.premultiplied = layout.opacity && (u32(colour, 8) & 0x8000);
    const quint32 first = space(0);
    for (quint32 i = 0; i < colourBands; ++i) {
        if (space(i) != first || channel(i) != i)
            return std::nullopt;
    }
    if (colourBands == 1 && first == SpaceMonochrome)
        layout.colours = Colours::Grey;
    else if (colourBands == 3 && first == SpaceNifRgb)
        layout.colours = Colours::Rgb;
    else if (colourBands == 3 && first == SpacePhotoYcc)
        layout.colours = Colours::PhotoYcc;
    else
        return std::nullopt;
    return layout;
}

// PhotoYCC as FlashPix defines it, from gamma-corrected R'G'B' in 0..1:
//   Y = 255/1.402 * (0.299 R' + 0.587 G' + 0.114 B')
//   C1 = 111.40 * (B' - Y') + 156, C2 = 135.64 * (R' - Y') + 137
// so that white sits at Y = 182 and the range above it holds highlights
// brighter than white, which are clipped here. The inverse is done in fixed
// point through tables, a tile at a time.
class PhotoYcc
{
public:
    PhotoYcc()
    {
        for (int v = 0; v < 256; ++v) {
            m_luma[v] = qRound(1.402 * v * Scale);
            m_blue[v] = qRound(255.0 / 111.40 * (v - 156) * Scale);
            m_red[v] = qRound(255.0 / 135.64 * (v - 137) * Scale);
        }
    }
    QRgb toRgb(uchar y, uchar c1, uchar c2, int alpha = 255) const
    {
        const int luma = m_luma[y];
        const int red = luma + m_red[c2];
        const int blue = luma + m_blue[c1];
        // G' = (Y' - 0.299 R' - 0.114 B') / 0.587
        const int green = int((qint64(luma) * 1000 - qint64(red) * 299 - qint64(blue) * 114) / 587);
        return qRgba(clamp(red), clamp(green), clamp(blue), alpha);
    }

private:
    static constexpr int Scale = 1 << 16;
    static int clamp(int fixed) { return qBound(0, (fixed + Scale / 2) >> 16, 255); }
    int m_luma[256];
    int m_blue[256];
    int m_red[256];
};

// One pixel whose channels follow each other at p, as a QRgb of the
// layout's image format (premultiplied where the file's colours are).
QRgb pixelOf(const Layout &layout, const uchar *p, const PhotoYcc &ycc)
{
    const int alpha = layout.opacity ? p[layout.bands - 1] : 255;
    QRgb rgb = 0;
    switch (layout.colours) {
    case Colours::Grey:
        rgb = qRgba(p[0], p[0], p[0], alpha);
        break;
    case Colours::Rgb:
        rgb = qRgba(p[0], p[1], p[2], alpha);
        break;
    case Colours::PhotoYcc:
        rgb = ycc.toRgb(p[0], p[1], p[2], alpha);
        break;
    }
    if (layout.premultiplied) // a damaged file must not give colours above their opacity
        rgb = qRgba(qMin(qRed(rgb), alpha), qMin(qGreen(rgb), alpha), qMin(qBlue(rgb), alpha), alpha);
    return rgb;
}

using detail::JpegError;
using detail::useJpegError;

// One JPEG tile as the layout's image format. The tile's channels are those
// of the picture (grey, NIF RGB or PhotoYCC); when converted is set, the JPEG
// coder turned them into its own YCbCr on the way in, and that is undone.
// Otherwise they come out as stored, whatever the JPEG stream says about its
// colours. Tiles larger than a tile are refused before any allocation.
QImage decodeJpegTile(const QByteArray &jpeg, const Layout &layout, bool converted, QImage::Format format,
                      const PhotoYcc &ycc, QString *errorString)
{
    // Only plain data between setjmp() and the jump: the samples go to a
    // buffer of a whole tile, and the image is made once libjpeg is done.
    jpeg_decompress_struct cinfo;
    JpegError error;
    useJpegError(cinfo, error);
    static_assert(TileSize * TileSize * 3 <= 16 * 1024);
    uchar samples[TileSize * TileSize * 3];
    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&cinfo);
        *errorString = QString::fromLocal8Bit(error.message);
        return {};
    }
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, reinterpret_cast<const unsigned char *>(jpeg.constData()), static_cast<unsigned long>(jpeg.size()));
    jpeg_read_header(&cinfo, TRUE);
    const bool grey = layout.colours == Colours::Grey;
    const int channels = grey ? 1 : 3;
    if (cinfo.image_width > TileSize || cinfo.image_height > TileSize || cinfo.num_components != channels) {
        *errorString = QStringLiteral("%1 x %2 pixels, %3 channels")
                           .arg(cinfo.image_width)
                           .arg(cinfo.image_height)
                           .arg(cinfo.num_components);
        jpeg_destroy_decompress(&cinfo);
        return {};
    }
    if (grey) {
        cinfo.out_color_space = JCS_GRAYSCALE;
    } else {
        cinfo.jpeg_color_space = converted ? JCS_YCbCr : JCS_RGB;
        cinfo.out_color_space = JCS_RGB;
    }
    jpeg_start_decompress(&cinfo);
    const int width = int(cinfo.output_width), height = int(cinfo.output_height);
    while (cinfo.output_scanline < cinfo.output_height) {
        JSAMPROW row = samples + qsizetype(cinfo.output_scanline) * width * channels;
        jpeg_read_scanlines(&cinfo, &row, 1);
    }
    jpeg_abort_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);

    if (grey)
        return QImage(samples, width, height, width, QImage::Format_Grayscale8).copy();
    QImage tile(width, height, format);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(tile.scanLine(y));
        const uchar *p = samples + qsizetype(y) * width * 3;
        for (int x = 0; x < width; ++x, p += 3)
            line[x] = pixelOf(layout, p, ycc);
    }
    return tile;
}

} // namespace

bool flashPixAvailable()
{
    return true;
}

detail::Decoded readFlashPix(const QByteArray &data)
{
    if (!data.startsWith("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"))
        return detail::failure(QStringLiteral("The file is not a FlashPix (FPX) picture."));
    static std::once_flag once;
    std::call_once(once, [] { gsf_init(); });

    GError *error = nullptr;
    InputPtr input(gsf_input_memory_new(reinterpret_cast<const guint8 *>(data.constData()), gsf_off_t(data.size()), FALSE));
    InfilePtr root(input ? gsf_infile_msole_new(input.get(), &error) : nullptr);
    if (error)
        g_error_free(error);
    if (!root)
        return detail::failure(QStringLiteral("The FlashPix container could not be opened."));

    const Properties contents = parseProperties(readStream(root.get(), nullptr, "\005Image Contents"));
    const quint32 width = contents.numbers.value(0x01000002);
    const quint32 height = contents.numbers.value(0x01000003);
    if (!detail::withinPixelBound(width, height))
        return width && height ? detail::failure(detail::tooLargeMessage(width, height))
                               : detail::failure(QStringLiteral("The file holds no FlashPix picture."));

    // Levels halve down to 64 pixels; the last one is the full size.
    int level = 0;
    for (quint32 side = qMax(width, height); side > TileSize; side /= 2)
        ++level;
    const QByteArray colour = contents.blobs.value(0x02000002 | (quint32(level) << 16));
    const quint32 bands = u32(colour, 4);
    if (bands < 1 || bands > 4)
        return detail::failure(QStringLiteral("The FlashPix picture has an invalid number of bands (%1).").arg(bands));
    const std::optional<Layout> found = layoutOf(colour);
    if (!found)
        return detail::failure(QStringLiteral("FlashPix pictures in this colour space (%1 bands, %2) are not supported.")
                                   .arg(bands)
                                   .arg(u32(colour, 8) & 0x7FFFFFFF, 8, 16, QLatin1Char('0')));
    const Layout layout = *found;
    const bool greyOnly = layout.colours == Colours::Grey && !layout.opacity;
    static const PhotoYcc ycc;

    const QByteArray storage = QStringLiteral("Resolution %1").arg(level, 4, 10, QLatin1Char('0')).toLatin1();
    const QByteArray header = readStream(root.get(), storage.constData(), "Subimage 0000 Header");
    const QByteArray tiles = readStream(root.get(), storage.constData(), "Subimage 0000 Data");
    if (header.size() < 64 || tiles.isEmpty())
        return detail::failure(QStringLiteral("The FlashPix picture's tiles are missing."));
    const qsizetype h0 = 28;
    if (u32(header, h0 + 4) != width || u32(header, h0 + 8) != height || u32(header, h0 + 16) != TileSize
        || u32(header, h0 + 20) != TileSize)
        return detail::failure(QStringLiteral("The FlashPix tile table does not match the picture."));
    const quint32 tileCount = u32(header, h0 + 12);
    const qsizetype tableAt = h0 + qsizetype(u32(header, h0 + 28));
    const quint32 entryLength = u32(header, h0 + 32);
    const quint32 across = (width + TileSize - 1) / TileSize;
    const quint32 down = (height + TileSize - 1) / TileSize;
    if (entryLength < 16 || tileCount < across * down || tableAt + qsizetype(entryLength) * across * down > header.size())
        return detail::failure(QStringLiteral("The FlashPix tile table is damaged."));

    const QImage::Format format = greyOnly           ? QImage::Format_Grayscale8
                                  : !layout.opacity ? QImage::Format_RGB32
                                  : layout.premultiplied ? QImage::Format_ARGB32_Premultiplied
                                                         : QImage::Format_ARGB32;
    QImage image(int(width), int(height), format);
    if (image.isNull())
        return detail::failure(detail::tooLargeMessage(width, height));
    image.fill(Qt::white);
    for (quint32 t = 0; t < across * down; ++t) {
        const qsizetype entry = tableAt + qsizetype(t) * entryLength;
        const qsizetype at = 28 + qsizetype(u32(header, entry));
        const quint32 size = u32(header, entry + 4);
        const quint32 compression = u32(header, entry + 8);
        const int x0 = int(t % across * TileSize), y0 = int(t / across * TileSize);
        QImage tile;
        if (compression == 1) { // one colour for the whole tile, its channels in the subtype's bytes
            const quint32 c = u32(header, entry + 12);
            const uchar channels[4] = {uchar(c), uchar(c >> 8), uchar(c >> 16), uchar(c >> 24)};
            tile = QImage(int(TileSize), int(TileSize),
                          layout.premultiplied ? QImage::Format_ARGB32_Premultiplied : QImage::Format_ARGB32);
            tile.fill(pixelOf(layout, channels, ycc));
        } else {
            if (at < 0 || size > quint32(tiles.size()) || at + qsizetype(size) > tiles.size())
                return detail::failure(QStringLiteral("A FlashPix tile lies outside the file."));
            if (compression == 0) {
                // Uncompressed tiles at the right and bottom edges hold only
                // the pixels inside the picture, row after row (the tile
                // table still gives them a full tile's room); the channels
                // of a pixel follow each other.
                const int tileWidth = qMin(int(TileSize), int(width) - x0);
                const int tileHeight = qMin(int(TileSize), int(height) - y0);
                if (size < quint32(tileWidth * tileHeight) * layout.bands)
                    return detail::failure(QStringLiteral("A FlashPix tile is damaged."));
                const auto *pixels = reinterpret_cast<const uchar *>(tiles.constData() + at);
                if (greyOnly) {
                    tile = QImage(pixels, tileWidth, tileHeight, tileWidth, QImage::Format_Grayscale8).copy();
                } else {
                    tile = QImage(tileWidth, tileHeight, format);
                    for (int y = 0; y < tileHeight; ++y) {
                        auto *line = reinterpret_cast<QRgb *>(tile.scanLine(y));
                        const uchar *p = pixels + qsizetype(y) * tileWidth * layout.bands;
                        for (int x = 0; x < tileWidth; ++x, p += layout.bands)
                            line[x] = pixelOf(layout, p, ycc);
                    }
                }
            } else if (compression == 2) {
                if (layout.opacity)
                    return detail::failure(QStringLiteral("FlashPix JPEG tiles with an opacity channel are not supported."));
                // A tile is an abbreviated JPEG stream; its tables live in
                // the property set, by the index the tile names. The
                // subtype's bytes: interleaving, chroma subsampling, whether
                // the coder converted the colours, the table index.
                const bool converted = quint8(header.at(entry + 14)) != 0;
                const quint8 tableIndex = quint8(header.at(entry + 15));
                QByteArray jpeg = tiles.mid(at, size);
                if (tableIndex) {
                    QByteArray tables = contents.blobs.value(0x03000001 | (quint32(tableIndex) << 16));
                    if (tables.endsWith("\xFF\xD9"))
                        tables.chop(2);
                    if (jpeg.startsWith("\xFF\xD8"))
                        jpeg.remove(0, 2);
                    jpeg.prepend(tables);
                }
                QString why;
                tile = decodeJpegTile(jpeg, layout, converted, format, ycc, &why);
                if (tile.isNull())
                    return detail::failure(QStringLiteral("A FlashPix tile could not be decoded (%1).").arg(why));
            } else {
                return detail::failure(QStringLiteral("A FlashPix tile uses an unknown compression (%1).").arg(compression));
            }
        }
        QPainter painter(&image);
        painter.setCompositionMode(QPainter::CompositionMode_Source);
        painter.drawImage(QPoint(x0, y0), tile.convertToFormat(image.format()));
    }

    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    decoded.bitsPerPixel = greyOnly ? 8 : layout.opacity ? 32 : 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
