#include "VectorRoutes.h"

#include <QBuffer>
#include <QImageReader>
#include <QMap>
#include <QPainter>
#include <QtEndian>

// glib's headers use "signals" as a field name, which Qt defines as a keyword.
#undef signals
#include <gsf/gsf-infile-msole.h>
#include <gsf/gsf-infile.h>
#include <gsf/gsf-input-memory.h>
#include <gsf/gsf-utils.h>

#include <memory>
#include <mutex>

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

enum class Colours { Grey, Rgb, YccInJpeg };

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
    const quint32 space = u32(colour, 8) & 0x7FFFFFFF;
    Colours colours;
    if (bands == 1 && space == 0x00010000)
        colours = Colours::Grey;
    else if (bands == 3 && space == 0x00030000)
        colours = Colours::Rgb;
    else if (bands == 3 && space == 0x00020000)
        colours = Colours::YccInJpeg;
    else
        return detail::failure(QStringLiteral("FlashPix pictures in this colour space (%1 bands, %2) are not supported.")
                                   .arg(bands)
                                   .arg(space, 8, 16, QLatin1Char('0')));

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

    QImage image(int(width), int(height), colours == Colours::Grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
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
        if (compression == 1) { // one colour for the whole tile
            const quint32 c = u32(header, entry + 12);
            tile = QImage(int(TileSize), int(TileSize), QImage::Format_RGB32);
            tile.fill(colours == Colours::Grey ? qRgb(c & 0xFF, c & 0xFF, c & 0xFF)
                                               : qRgb(c & 0xFF, (c >> 8) & 0xFF, (c >> 16) & 0xFF));
        } else {
            if (at < 0 || size > quint32(tiles.size()) || at + qsizetype(size) > tiles.size())
                return detail::failure(QStringLiteral("A FlashPix tile lies outside the file."));
            const QByteArray bytes = tiles.mid(at, size);
            if (compression == 0) {
                if (colours == Colours::YccInJpeg)
                    return detail::failure(QStringLiteral("FlashPix PhotoYCC tiles without JPEG are not supported."));
                // Uncompressed tiles at the right and bottom edges hold only
                // the pixels inside the picture, row after row (the tile
                // table still gives them a full tile's room).
                const int tileWidth = qMin(int(TileSize), int(width) - x0);
                const int tileHeight = qMin(int(TileSize), int(height) - y0);
                if (size < quint32(tileWidth * tileHeight) * bands)
                    return detail::failure(QStringLiteral("A FlashPix tile is damaged."));
                tile = QImage(reinterpret_cast<const uchar *>(bytes.constData()), tileWidth, tileHeight,
                              tileWidth * int(bands), colours == Colours::Grey ? QImage::Format_Grayscale8 : QImage::Format_RGB888)
                           .copy();
            } else if (compression == 2) {
                // A tile is an abbreviated JPEG stream; its tables live in
                // the property set, by the index the tile names.
                const quint8 tableIndex = quint8(header.at(entry + 15));
                QByteArray jpeg = bytes;
                if (tableIndex) {
                    QByteArray tables = contents.blobs.value(0x03000001 | (quint32(tableIndex) << 16));
                    if (tables.endsWith("\xFF\xD9"))
                        tables.chop(2);
                    if (jpeg.startsWith("\xFF\xD8"))
                        jpeg.remove(0, 2);
                    jpeg.prepend(tables);
                }
                QBuffer buffer(&jpeg);
                QImageReader reader(&buffer, "jpeg");
                tile = reader.read();
                if (tile.isNull())
                    return detail::failure(QStringLiteral("A FlashPix tile could not be decoded (%1).").arg(reader.errorString()));
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
    decoded.bitsPerPixel = colours == Colours::Grey ? 8 : 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
