#pragma once

#include <QByteArray>
#include <QImage>

// FlashPix files written through libgsf's OLE2 writer, for the tests and the
// fuzz seeds: one resolution (the full size), its tile table and tiles, and
// the image contents property set with the picture's size and channel codes.
namespace fpxsample {

enum class Channels { Grey, GreyOpacity, Rgb, RgbOpacity, RgbPremultiplied, PhotoYcc, PhotoYccOpacity, FiveBands };
// JPEG tiles of NIF RGB are converted to the coder's YCbCr, as usual; those of
// PhotoYCC are stored as they are (its channels already are luma and chroma).
// JpegUnconverted stores NIF RGB as it is, too.
enum class Tiles { Uncompressed, SingleColour, Jpeg, JpegUnconverted };
// What is wrong with the file, for the reader to refuse.
enum class Damage {
    None,
    TileOutsideData,
    TileShorterThanItsPixels,
    UnknownCompression,
    TileTableOfAnotherSize,
    TileTableCut,
    NoTileData,
    OpacityNotLast,
    ContainerCut,
};

constexpr int Tile = 64;

int bandsOf(Channels channels);
// The file of picture: single-colour tiles take each tile's top left pixel.
QByteArray flashPix(const QImage &picture, Channels channels, Tiles tiles, Damage damage = Damage::None);

} // namespace fpxsample
