#include "core/platform/imaging/MagickRoute.h"
#include "core/platform/imaging/VectorRoutes.h"

#include <QRect>
#include <QtEndian>

#include <cmath>

namespace tarnby::imaging::vector {

namespace {

constexpr quint32 PlaceableKey = 0x9AC6CDD7;
constexpr int PlaceableHeaderBytes = 22;
constexpr int MetaHeaderBytes = 18;
// ImageMagick's default resolution, at which it draws metafiles.
constexpr double DotsPerInch = 72.0;

// Records that only set up the device context, create, select or delete
// objects, or carry comments: a metafile made of these alone puts nothing on
// the page. Every other function is taken to draw.
bool setsUpOnly(quint16 function)
{
    switch (function) {
    case 0x001E: // SAVEDC
    case 0x0035: // REALIZEPALETTE
    case 0x0037: // SETPALENTRIES
    case 0x00F7: // CREATEPALETTE
    case 0x0102: // SETBKMODE
    case 0x0103: // SETMAPMODE
    case 0x0104: // SETROP2
    case 0x0105: // SETRELABS
    case 0x0106: // SETPOLYFILLMODE
    case 0x0107: // SETSTRETCHBLTMODE
    case 0x0108: // SETTEXTCHAREXTRA
    case 0x0127: // RESTOREDC
    case 0x012C: // SELECTCLIPREGION
    case 0x012D: // SELECTOBJECT
    case 0x012E: // SETTEXTALIGN
    case 0x0139: // RESIZEPALETTE
    case 0x0142: // DIBCREATEPATTERNBRUSH
    case 0x0149: // SETLAYOUT
    case 0x01F0: // DELETEOBJECT
    case 0x01F9: // CREATEPATTERNBRUSH
    case 0x0201: // SETBKCOLOR
    case 0x0209: // SETTEXTCOLOR
    case 0x020A: // SETTEXTJUSTIFICATION
    case 0x020B: // SETWINDOWORG
    case 0x020C: // SETWINDOWEXT
    case 0x020D: // SETVIEWPORTORG
    case 0x020E: // SETVIEWPORTEXT
    case 0x020F: // OFFSETWINDOWORG
    case 0x0211: // OFFSETVIEWPORTORG
    case 0x0214: // MOVETO
    case 0x0220: // OFFSETCLIPRGN
    case 0x0231: // SETMAPPERFLAGS
    case 0x0234: // SELECTPALETTE
    case 0x02FA: // CREATEPENINDIRECT
    case 0x02FB: // CREATEFONTINDIRECT
    case 0x02FC: // CREATEBRUSHINDIRECT
    case 0x0410: // SCALEWINDOWEXT
    case 0x0412: // SCALEVIEWPORTEXT
    case 0x0415: // EXCLUDECLIPRECT
    case 0x0416: // INTERSECTCLIPRECT
    case 0x0436: // ANIMATEPALETTE
    case 0x0626: // ESCAPE
    case 0x06FF: // CREATEREGION
        return true;
    default:
        return false;
    }
}

} // namespace

WmfScan scanWmf(const QByteArray &data)
{
    WmfScan scan;
    const auto u16 = [&](qint64 at) { return qFromLittleEndian<quint16>(data.constData() + at); };
    const auto i16 = [&](qint64 at) { return qFromLittleEndian<qint16>(data.constData() + at); };
    const auto u32 = [&](qint64 at) { return qFromLittleEndian<quint32>(data.constData() + at); };

    qint64 at = 0;
    if (data.size() >= 4 && u32(0) == PlaceableKey) {
        if (data.size() < PlaceableHeaderBytes)
            return scan;
        scan.placeable = true;
        scan.frame.setCoords(i16(6), i16(8), i16(10), i16(12));
        scan.unitsPerInch = u16(14);
        at = PlaceableHeaderBytes;
    }
    if (data.size() < at + MetaHeaderBytes)
        return scan;
    const quint16 type = u16(at), headerWords = u16(at + 2), version = u16(at + 4);
    if ((type != 1 && type != 2) || headerWords != MetaHeaderBytes / 2 || (version != 0x0100 && version != 0x0300))
        return scan;
    at += MetaHeaderBytes;

    // Each record starts with its size in 16-bit words (at least the three of
    // its own size and function) and must lie within the file; the walk ends
    // at the end-of-file record. Every step moves at least six bytes on.
    while (at + 6 <= data.size()) {
        const quint32 words = u32(at);
        const quint16 function = u16(at + 4);
        if (words < 3 || qint64(words) * 2 > data.size() - at)
            return scan;
        if (function == 0x0000) {
            scan.wellFormed = true;
            return scan;
        }
        if (!setsUpOnly(function))
            scan.draws = true;
        at += qint64(words) * 2;
    }
    return scan; // no end-of-file record
}

detail::Decoded readWmf(const QByteArray &data, Pages pages)
{
    const WmfScan scan = scanWmf(data);
    if (!scan.wellFormed || scan.draws)
        return magick::read(data, "WMF", pages);

    // libwmf sizes the page by what the records draw, and ImageMagick refuses
    // an empty one as an improper header. Such a metafile is a blank page of
    // the size its placeable header states, at the resolution ImageMagick
    // draws the others at.
    const double inches = scan.unitsPerInch > 0 ? 1.0 / scan.unitsPerInch : 0;
    const qint64 width = qint64(std::ceil(std::abs(double(scan.frame.right()) - scan.frame.left()) * inches * DotsPerInch));
    const qint64 height = qint64(std::ceil(std::abs(double(scan.frame.bottom()) - scan.frame.top()) * inches * DotsPerInch));
    if (!scan.placeable || width <= 0 || height <= 0)
        return detail::failure(QStringLiteral("The metafile draws nothing and does not state its size."));
    if (!detail::withinPixelBound(width, height) || width > MaxVectorSide || height > MaxVectorSide)
        return detail::failure(detail::tooLargeMessage(width, height));
    QImage page(int(width), int(height), QImage::Format_RGB32);
    if (page.isNull())
        return detail::failure(detail::tooLargeMessage(width, height));
    page.fill(Qt::white);
    const int dotsPerMetre = qRound(DotsPerInch / 0.0254);
    page.setDotsPerMeterX(dotsPerMetre);
    page.setDotsPerMeterY(dotsPerMetre);
    detail::Decoded decoded;
    decoded.frames.append({page, 0});
    decoded.bitsPerPixel = 24;
    return decoded;
}

} // namespace tarnby::imaging::vector
