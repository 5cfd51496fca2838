#pragma once

#include "core/platform/imaging/RouteTypes.h"

#include <QRect>

// The formats that are drawn rather than decoded: EPS through Ghostscript,
// EMF through libemf2svg and QtSvg, DXF through dxflib and our own renderer,
// and FlashPix through libgsf and our own tile decoder. Each takes the whole
// file's bytes, bounds the size of the bitmap it draws, and may run on any
// thread.
namespace tarnby::imaging::vector {

// EPS (plain or with a DOS binary header): Ghostscript renders the first page
// in a child process with -dSAFER, at most EpsTimeLimitSeconds of work and a
// bounded page size, so that a hostile or endless PostScript program cannot
// take the program down.
inline constexpr int EpsTimeLimitSeconds = 20;
detail::Decoded readEps(const QByteArray &data);

// EMF: converted to SVG and drawn with the header's frame stretched over a
// picture the size of its bounds in device pixels (bounded to MaxVectorSide
// on its longer side).
detail::Decoded readEmf(const QByteArray &data);
bool emfAvailable(); // whether libemf2svg could be loaded

// WMF: drawn by ImageMagick (libwmf), except a well-formed metafile whose
// records draw nothing, which libwmf cannot size: that one is the blank page
// its placeable header describes.
struct WmfScan {
    bool wellFormed = false; // headers valid, every record within the file, an end record
    bool draws = false;      // some record puts something on the page
    bool placeable = false;
    QRect frame;             // of the placeable header, in metafile units (left, top, right, bottom as stored)
    int unitsPerInch = 0;
};
WmfScan scanWmf(const QByteArray &data); // bounded by the data: each record moves the walk on
detail::Decoded readWmf(const QByteArray &data, Pages pages);

// DXF (ASCII): lines, polylines (bulged segments as arcs), circles, arcs,
// ellipses, solids, points, single-line and paragraph text of the entities
// section and of the blocks it inserts, drawn black on white fitted within
// MaxVectorSide. Shapes, nesting, inserts and letters are bounded.
detail::Decoded readDxf(const QByteArray &data);

// FlashPix: the highest-resolution image of the OLE2 container.
detail::Decoded readFlashPix(const QByteArray &data);
bool flashPixAvailable();

inline constexpr int MaxVectorSide = 4096;
inline constexpr int DefaultDrawingSide = 1024;

} // namespace tarnby::imaging::vector
