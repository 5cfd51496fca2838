#pragma once

#include <QByteArray>
#include <QList>
#include <QPair>
#include <QString>

#include <span>

class QIODevice;

// The one table of picture formats: for each picture extension of the
// catalogue (plus DIC), which library reads it, which writes it and under
// which format code it is saved. Loading, saving and the `formats` listing all
// derive from it. Pure data and lookups: safe from any thread.
namespace tarnby::imaging {

// How a format is read or written.
enum class Route {
    None,        // nobody reads (or writes) this format
    Qt,          // QImageReader / QImageWriter plugins
    Magick,      // ImageMagick through Magick++ / MagickCore
    Ghostscript, // the PostScript interpreter, rendering to a bitmap
    Emf,         // libemf2svg to SVG, drawn with QtSvg
    Dxf,         // dxflib parses, our renderer draws
    FlashPix,    // libgsf opens the container, our tile decoder reads it
    OwnCodec,    // our own QImageIOHandler (codecs::createHandler)
};

// How much of a format our own codec reads, for a format that ImageMagick
// reads too.
enum class OwnCoverage {
    Whole,        // every file of the format; ImageMagick only where the codec is absent
    SomeVariants, // what the codec's canRead() claims; ImageMagick reads the rest
};

struct PictureFormat {
    const char *extension; // upper case, no dot, as in the catalogue
    int code;              // the save-format code (GetSaveFormatCode numbering)
    Route reader;
    const char *readName;  // the library's name for the format ("jpeg", "PCX", "msp")
    Route writer;
    const char *writeName;
    bool ownsCode;         // the format written when a picture is saved with this code
    const char *refusal;   // why nothing reads it, for formats that nobody reads
    const char *magickFallback = nullptr; // ImageMagick's coder, read when our own codec is absent or declines
    OwnCoverage ownCoverage = OwnCoverage::Whole;
};

// Every entry, in catalogue order (indexes 0 to 33, then MAC, IMG, MSP, DIC).
std::span<const PictureFormat> pictureFormats();

// The entry for an extension (any case, no dot); nullptr when it is no picture format.
const PictureFormat *formatForExtension(const QString &extension);

// The entry written when saving with code (the one that owns the code);
// nullptr when no picture format has it.
const PictureFormat *formatForCode(int code);

// The entry whose data this is, judged by its first bytes (at least 2 KiB
// where the file is that long) and the file's size; nullptr when unknown.
const PictureFormat *sniffFormat(const QByteArray &head);

// The number reported for a DXF drawing. The save list files DXF under 58,
// the number of multi-page PCX files, whose name a drawing must not show; a
// drawing is reported under a number of its own, outside the imaging
// numbers, named as the browser's filter for drawings names them.
inline constexpr int DrawingFormatNumber = 1016;

// The format number reported for a file of this format: the entry's code,
// refined from the header where the name table tells variants apart (PBM,
// PGM and PPM kinds, OS/2 and RLE bitmaps, LZW and CCITT TIFF, DCX, GIF).
// For a TIFF whose first directory lies beyond head, file (when given) is
// read there.
int fileFormatNumber(const PictureFormat &format, const QByteArray &head, QIODevice *file = nullptr);

// The name shown for a file-format number; "Unknown format" for a number
// that the table does not list. The first listed match wins.
QString formatName(int code);

// A human name of a route's library, for listings ("Qt", "ImageMagick", ...).
QString routeLibrary(Route route);

// The route that reads the format in this build: the table's, or ImageMagick
// where our own codec is absent and ImageMagick has a coder for the format.
Route effectiveReader(const PictureFormat &format);

// Whether the route can actually read or write the format in this build
// (plugins and coders are checked at run time, not assumed).
bool canRead(const PictureFormat &format);
bool canWrite(const PictureFormat &format);

} // namespace tarnby::imaging
