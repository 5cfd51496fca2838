#include "core/platform/imaging/PictureFormats.h"

#include "core/platform/imaging/MagickRoute.h"
#include "core/platform/imaging/VectorRoutes.h"
#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QIODevice>
#include <QImageReader>
#include <QImageWriter>
#include <QtEndian>

#include <array>

namespace tarnby::imaging {

namespace {

constexpr const char *CmpRefusal =
    "CMP (LEAD compressed) files use an undocumented proprietary compression; no library reads them.";
constexpr const char *AwdRefusal =
    "AWD (Microsoft Fax) files use an undocumented format; no library reads them.";

// Catalogue order; where several extensions share a code, the one marked as
// owning it decides what a save with that code writes (PBM shares PNG's code
// on purpose, so a picture saved under .PBM holds PNG data; DCX shares PCX's).
// TIFF and EPS pass through their other libraries for multi-page writes and
// reads; see PictureLayer.cpp. Photoshop files are read by our own codec in
// the colour modes whose merged picture is a single channel (ImageMagick 6
// refuses indexed colour), by ImageMagick in the others. Likewise DICOM:
// ImageMagick 6's reader returns no picture, without a message, for
// uncompressed files (seen with 8- and 16-bit grey, explicit and implicit
// representation), which our reader takes; compressed ones still go to it.
constexpr std::array Formats{
    PictureFormat{"JPG", 10, Route::Qt, "jpeg", Route::Qt, "jpeg", true, nullptr},
    PictureFormat{"JPE", 10, Route::Qt, "jpeg", Route::Qt, "jpeg", false, nullptr},
    PictureFormat{"CMP", 5, Route::None, "", Route::None, "", true, CmpRefusal},
    PictureFormat{"TIFF", 3, Route::Qt, "tiff", Route::Qt, "tiff", true, nullptr},
    PictureFormat{"TIF", 3, Route::Qt, "tiff", Route::Qt, "tiff", false, nullptr},
    PictureFormat{"MPT", 3, Route::Qt, "tiff", Route::Qt, "tiff", false, nullptr},
    PictureFormat{"BMP", 6, Route::Qt, "bmp", Route::Qt, "bmp", true, nullptr},
    PictureFormat{"ICO", 91, Route::Qt, "ico", Route::Qt, "ico", true, nullptr},
    PictureFormat{"CUR", 92, Route::Qt, "ico", Route::Qt, "ico", true, nullptr},
    PictureFormat{"PCX", 1, Route::Magick, "PCX", Route::Magick, "PCX", true, nullptr},
    PictureFormat{"DCX", 1, Route::Magick, "DCX", Route::Magick, "DCX", false, nullptr},
    PictureFormat{"PCD", 57, Route::Magick, "PCD", Route::Magick, "PCD", true, nullptr},
    PictureFormat{"FPX", 80, Route::FlashPix, "fpx", Route::None, "", true, nullptr},
    PictureFormat{"AWD", 0, Route::None, "", Route::None, "", false, AwdRefusal},
    PictureFormat{"WMF", 15, Route::Magick, "WMF", Route::None, "", true, nullptr},
    PictureFormat{"EMF", 116, Route::Emf, "emf", Route::None, "", true, nullptr},
    PictureFormat{"DXF", 58, Route::Dxf, "dxf", Route::None, "", true, nullptr},
    PictureFormat{"XPM", 109, Route::Qt, "xpm", Route::Qt, "xpm", true, nullptr},
    PictureFormat{"IFF", 112, Route::OwnCodec, "iff", Route::None, "", true, nullptr},
    PictureFormat{"PBM", 75, Route::Qt, "pbm", Route::Qt, "png", false, nullptr},
    PictureFormat{"CUT", 108, Route::OwnCodec, "cut", Route::OwnCodec, "cut", true, nullptr, "CUT"},
    PictureFormat{"PSD", 76, Route::OwnCodec, "psd", Route::Magick, "PSD", true, nullptr, "PSD", OwnCoverage::SomeVariants},
    PictureFormat{"PNG", 75, Route::Qt, "png", Route::Qt, "png", true, nullptr},
    PictureFormat{"TGA", 4, Route::Magick, "TGA", Route::Magick, "TGA", true, nullptr},
    PictureFormat{"EPS", 16, Route::Ghostscript, "eps", Route::OwnCodec, "eps", true, nullptr},
    PictureFormat{"JBG", 115, Route::Magick, "JBIG", Route::Magick, "JBIG", true, nullptr},
    PictureFormat{"RAS", 55, Route::Magick, "SUN", Route::Magick, "SUN", true, nullptr},
    PictureFormat{"WPG", 54, Route::Magick, "WPG", Route::None, "", true, nullptr},
    PictureFormat{"PCT", 56, Route::Magick, "PICT", Route::Magick, "PICT", true, nullptr},
    PictureFormat{"CLP", 114, Route::OwnCodec, "clp", Route::None, "", true, nullptr},
    PictureFormat{"XWD", 113, Route::Magick, "XWD", Route::Magick, "XWD", true, nullptr},
    PictureFormat{"FLC", 134, Route::OwnCodec, "flc", Route::None, "", true, nullptr},
    PictureFormat{"ANI", 119, Route::OwnCodec, "ani", Route::None, "", true, nullptr},
    PictureFormat{"SGI", 142, Route::Magick, "SGI", Route::Magick, "SGI", true, nullptr},
    PictureFormat{"MAC", 51, Route::OwnCodec, "mac", Route::OwnCodec, "mac", true, nullptr, "MAC"},
    PictureFormat{"IMG", 52, Route::OwnCodec, "img", Route::None, "", true, nullptr},
    PictureFormat{"MSP", 53, Route::OwnCodec, "msp", Route::OwnCodec, "msp", true, nullptr},
    PictureFormat{"DIC", 90, Route::OwnCodec, "dcm", Route::None, "", true, nullptr, "DCM", OwnCoverage::SomeVariants},
};

// Not a catalogue extension, but a GIF under another name still loads.
constexpr PictureFormat GifFormat{"GIF", 2, Route::Qt, "gif", Route::None, "", false, nullptr};

struct NameRow {
    std::initializer_list<int> codes;
    const char *name;
};

// The names the properties window shows, tested in this order (the first
// match wins; 86 keeps its short spelling).
const NameRow FormatNames[] = {
    {{119}, "ANI File Format"},
    {{120}, "ANI with RLE Compression"},
    {{99}, "Microsoft Fax Format"},
    {{12}, "BIN Format"},
    {{9, 6}, "Bitmap Format"},
    {{84}, "Bitmap with RLE Compression"},
    {{50, 130, 131, 129}, "CALS Raster Format"},
    {{25, 27, 28, 29}, "CCITT compressed TIFF"},
    {{62}, "CGM Format"},
    {{114}, "CLP Format"},
    {{5, 65}, "Lead Compressed"},
    {{108}, "Dr. Halo Format"},
    {{124}, "DWG Format"},
    {{58}, "Multipage PCX"},
    {{116}, "EMF MetaFile Format"},
    {{16}, "Encapsulated PostScript Format"},
    {{63}, "Encapsulated PostScript TIFF Format"},
    {{64}, "Encapsulated PostScript WMF Format"},
    {{96}, "Exif Format"},
    {{98, 101}, "Exif JPG Format"},
    {{97}, "Exif YCC Format"},
    {{100}, "Fastest Format"},
    {{66, 67}, "Fax Group 3"},
    {{68}, "Fax Group 4"},
    {{61}, "FLI Video"},
    {{80, 83, 81}, "Kodak FlashPix Format"},
    {{82}, "Kodak FlashPix JPEG Format"},
    {{2}, "Graphics Interchange Format"},
    {{13}, "File Handle"},
    {{71, 72, 73, 117}, "IBM IOCA Format"},
    {{112, 111}, "Interchange File Format"},
    {{52}, "Miscellaneous 1 Bit Format"},
    {{1}, "ZSoft PCX"},
    {{115}, "JBIG Format"},
    {{10}, "JPEG File Interchange Format"},
    {{11}, "JPEG Tagged Interchange Format"},
    {{121}, "Laser Data Format"},
    {{20}, "Lead Compressed Format"},
    {{26}, "Lead 1 Bit Format"},
    {{21, 23}, "Lead JPEG File Interchange Format"},
    {{22, 24}, "Lead JPEG Tagged Interchange Format"},
    {{51}, "MacPaint File Format"},
    {{53}, "Microsoft Paint Format"},
    {{14}, "OS2 Bitmap Format"},
    {{102}, "Portable Bitmap Utilities Format"},
    {{57}, "Kodak PhotoCD Format"},
    {{56}, "Macintosh Pict Format"},
    {{104}, "PGM Ascii Format"},
    {{105}, "PGM Binary"},
    {{75}, "Portable Network Graphics"},
    {{106}, "PPM Ascii Format"},
    {{107}, "PPM Binary Format"},
    {{76}, "Photoshop 3.0 Format"},
    {{55}, "Sun Raster Format"},
    {{77}, "Raw ICA Group 3"},
    {{4}, "Truevision TGA Format"},
    {{3}, "Tagged Image File Format"},
    {{17}, "Tagged Image File LZW Compressed Format"},
    {{86}, "Tagged Image File LZW Compressed Forma"},
    {{60}, "Wave Sound Files"},
    {{69}, "Win Fax Group 3"},
    {{70}, "Win Fax Group 4"},
    {{92}, "Windows Cursor Format"},
    {{91}, "Windows Icon Format"},
    {{15}, "Meta File Format"},
    {{54}, "WordPerfect File Format"},
    {{110}, "XBitMap Monochrome Bitmap"},
    {{113}, "XWD File Format"},
    {{74}, "OS/2 BMP version 2.x"},
    // Ours, not an imaging number: see DrawingFormatNumber.
    {{DrawingFormatNumber}, "Drawing Interchange Format (DXF)"},
};

quint16 le16(const QByteArray &d, int at)
{
    return at + 2 <= d.size() ? qFromLittleEndian<quint16>(d.constData() + at) : 0;
}
quint32 le32(const QByteArray &d, int at)
{
    return at + 4 <= d.size() ? qFromLittleEndian<quint32>(d.constData() + at) : 0;
}
quint32 be32(const QByteArray &d, int at)
{
    return at + 4 <= d.size() ? qFromBigEndian<quint32>(d.constData() + at) : 0;
}
bool at(const QByteArray &d, int offset, const char *magic)
{
    return d.mid(offset, qsizetype(qstrlen(magic))) == magic;
}

// The TIFF compression tag (259) of the first directory of a classic TIFF
// found in head; 0 when it lies beyond head or the file is no classic TIFF.
int tiffCompression(const QByteArray &head, QIODevice *file)
{
    QByteArray d = head;
    const bool little = at(d, 0, "II*");
    if (!little && !at(d, 0, "MM"))
        return 0;
    auto u16 = [&](int o) -> quint32 {
        if (o < 0 || o + 2 > d.size())
            return 0;
        return little ? qFromLittleEndian<quint16>(d.constData() + o) : qFromBigEndian<quint16>(d.constData() + o);
    };
    auto u32 = [&](int o) -> quint32 {
        if (o < 0 || o + 4 > d.size())
            return 0;
        return little ? qFromLittleEndian<quint32>(d.constData() + o) : qFromBigEndian<quint32>(d.constData() + o);
    };
    const quint32 ifd = u32(4);
    if (ifd < 8)
        return 0;
    if (ifd + 2 + 12 * 64 > quint32(d.size()) && file && file->seek(ifd)) {
        // The directory is far into the file (written after the pixels): only
        // it is read, padded in place so that offsets stay as in the file.
        const QByteArray directory = file->read(2 + 12 * 512);
        d = QByteArray(qsizetype(ifd), '\0') + directory;
    }
    if (ifd + 2 > quint32(d.size()))
        return 0;
    const quint32 count = u16(int(ifd));
    for (quint32 i = 0; i < count && i < 512; ++i) {
        const int entry = int(ifd + 2 + i * 12);
        if (entry + 12 > d.size())
            break;
        if (u16(entry) == 259)
            return int(u16(entry + 8));
    }
    return 0;
}

const PictureFormat *byExtension(const char *ext)
{
    return formatForExtension(QLatin1String(ext));
}

} // namespace

std::span<const PictureFormat> pictureFormats()
{
    return Formats;
}

const PictureFormat *formatForExtension(const QString &extension)
{
    const QString upper = extension.toUpper();
    for (const PictureFormat &f : Formats) {
        if (upper == QLatin1String(f.extension))
            return &f;
    }
    if (upper == QLatin1String("GIF"))
        return &GifFormat;
    return nullptr;
}

const PictureFormat *formatForCode(int code)
{
    if (code <= 0)
        return nullptr;
    for (const PictureFormat &f : Formats) {
        if (f.code == code && f.ownsCode)
            return &f;
    }
    return nullptr;
}

const PictureFormat *sniffFormat(const QByteArray &d)
{
    if (d.size() < 2)
        return nullptr;
    const auto b = [&](int i) { return i < d.size() ? quint8(d.at(i)) : 0; };
    if (b(0) == 0xFF && b(1) == 0xD8 && b(2) == 0xFF)
        return byExtension("JPG");
    if (at(d, 0, "\x89PNG\r\n\x1a\n"))
        return byExtension("PNG");
    if (at(d, 0, "GIF87a") || at(d, 0, "GIF89a"))
        return &GifFormat;
    if (at(d, 0, "II*\0") || at(d, 0, "MM\0*") || at(d, 0, "II+\0") || at(d, 0, "MM\0+"))
        return byExtension("TIF");
    if (at(d, 0, "BM") && le32(d, 14) >= 12 && le32(d, 14) <= 124)
        return byExtension("BMP");
    if (le16(d, 0) == 0 && (le16(d, 2) == 1 || le16(d, 2) == 2) && le16(d, 4) > 0 && d.size() >= 22)
        return byExtension(le16(d, 2) == 1 ? "ICO" : "CUR");
    if (b(0) == 'P' && b(1) >= '1' && b(1) <= '6' && (b(2) == ' ' || b(2) == '\n' || b(2) == '\r' || b(2) == '\t'))
        return byExtension("PBM");
    if (at(d, 0, "/* XPM */"))
        return byExtension("XPM");
    if (le32(d, 0) == 0x3ADE68B1)
        return byExtension("DCX");
    if (b(0) == 0x0A && b(1) <= 5 && b(2) <= 1 && (b(3) == 1 || b(3) == 2 || b(3) == 4 || b(3) == 8))
        return byExtension("PCX");
    if (at(d, 2048, "PCD_IPI") || at(d, 0, "PCD_OPA"))
        return byExtension("PCD");
    // OLE2 containers hold many things besides FlashPix (installer patches
    // under .MSP, for one): for them the extension decides.
    if (le32(d, 0) == 0x9AC6CDD7 || (le16(d, 0) <= 2 && le16(d, 2) == 9 && (le16(d, 4) == 0x300 || le16(d, 4) == 0x100)))
        return byExtension("WMF");
    if (le32(d, 0) == 1 && at(d, 40, " EMF"))
        return byExtension("EMF");
    if (at(d, 0, "8BPS"))
        return byExtension("PSD");
    if (at(d, 0, "%!PS") || at(d, 0, "\xC5\xD0\xD3\xC6"))
        return byExtension("EPS");
    if (be32(d, 0) == 0x59A66A95)
        return byExtension("RAS");
    if (at(d, 0, "\xFFWPC") && b(8) == 1 && b(9) == 0x16)
        return byExtension("WPG");
    if (be32(d, 4) == 7 && be32(d, 0) >= 100 && be32(d, 0) < 4096)
        return byExtension("XWD");
    if (b(0) == 0x01 && b(1) == 0xDA && b(2) <= 1)
        return byExtension("SGI");
    if (at(d, 128, "DICM"))
        return byExtension("DIC");
    if (at(d, 0, "RIFF") && at(d, 8, "ACON"))
        return byExtension("ANI");
    if (at(d, 0, "FORM") && (at(d, 8, "ILBM") || at(d, 8, "PBM ")))
        return byExtension("IFF");
    if (le16(d, 4) == 0xAF12 || le16(d, 4) == 0xAF11)
        return byExtension("FLC");
    if (at(d, 0, "DanM") || at(d, 0, "LinS"))
        return byExtension("MSP");
    if (le16(d, 0) == 0xC350)
        return byExtension("CLP");
    // DXF: a text file that opens a section with group code 0.
    const QByteArray text = d.left(64).trimmed();
    if (text.startsWith("0") && d.left(256).contains("SECTION"))
        return byExtension("DXF");
    return nullptr;
}

int fileFormatNumber(const PictureFormat &format, const QByteArray &head, QIODevice *file)
{
    const QLatin1String ext(format.extension);
    if (ext == QLatin1String("PBM") && head.size() >= 2 && head.at(0) == 'P') {
        switch (head.at(1)) {
        case '2': return 104;
        case '5': return 105;
        case '3': return 106;
        case '6': return 107;
        default: return 102;
        }
    }
    if (ext == QLatin1String("DCX"))
        return 58;
    if (ext == QLatin1String("DXF"))
        return DrawingFormatNumber;
    if (ext == QLatin1String("BMP")) {
        const quint32 headerSize = le32(head, 14);
        if (headerSize == 12)
            return 14;
        if (headerSize == 64)
            return 74;
        const quint32 compression = le32(head, 30);
        if (compression == 1 || compression == 2)
            return 84;
        return 6;
    }
    if (format.code == 3) {
        switch (tiffCompression(head, file)) {
        case 2: case 3: case 4: return 25;
        case 5: return 17;
        default: return 3;
        }
    }
    return format.code;
}

QString formatName(int code)
{
    for (const NameRow &row : FormatNames) {
        for (int c : row.codes) {
            if (c == code)
                return QLatin1String(row.name);
        }
    }
    return QStringLiteral("Unknown format");
}

QString routeLibrary(Route route)
{
    switch (route) {
    case Route::None: return QStringLiteral("none");
    case Route::Qt: return QStringLiteral("Qt");
    case Route::Magick: return QStringLiteral("ImageMagick");
    case Route::Ghostscript: return QStringLiteral("Ghostscript");
    case Route::Emf: return QStringLiteral("libemf2svg+QtSvg");
    case Route::Dxf: return QStringLiteral("dxflib+Tarnby");
    case Route::FlashPix: return QStringLiteral("libgsf+Tarnby");
    case Route::OwnCodec: return QStringLiteral("Tarnby");
    }
    return {};
}

namespace {
bool routeAvailable(Route route, const char *name, bool write)
{
    switch (route) {
    case Route::None: return false;
    case Route::Qt:
        return write ? QImageWriter::supportedImageFormats().contains(name)
                     : QImageReader::supportedImageFormats().contains(name);
    case Route::Magick: return magick::coderAvailable(name, write);
    case Route::OwnCodec:
        return write ? codecs::writableFormats().contains(name) : codecs::readableFormats().contains(name);
    case Route::Emf:
        return !write && vector::emfAvailable();
    case Route::FlashPix:
        return !write && vector::flashPixAvailable();
    case Route::Ghostscript:
    case Route::Dxf:
        return !write; // linked into the core; read only
    }
    return false;
}
} // namespace

Route effectiveReader(const PictureFormat &format)
{
    if (format.reader == Route::OwnCodec && format.magickFallback && !routeAvailable(format.reader, format.readName, false))
        return Route::Magick;
    return format.reader;
}

bool canRead(const PictureFormat &format)
{
    if (effectiveReader(format) != format.reader)
        return routeAvailable(Route::Magick, format.magickFallback, false);
    return routeAvailable(format.reader, format.readName, false);
}

bool canWrite(const PictureFormat &format)
{
    return routeAvailable(format.writer, format.writeName, true);
}

} // namespace tarnby::imaging
