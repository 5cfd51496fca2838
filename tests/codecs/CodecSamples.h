#pragma once

#include <QByteArray>
#include <QImage>
#include <QList>

#include <functional>

// Builders of small files in our formats, laid out from the formats' own
// descriptions. The tests decode them and compare with the pictures they
// were made from; the fuzz targets use them as seeds.
namespace codecsamples {

// Appends v to out as a little- or big-endian 16- or 32-bit number.
void le16(QByteArray &out, quint32 v);
void le32(QByteArray &out, quint32 v);
void be16(QByteArray &out, quint32 v);
void be32(QByteArray &out, quint32 v);

// An indexed picture with a table of colours entries spread over the colour
// cube; pixel x, y takes entry index(x, y) % colours (index is never negative).
QImage indexedPicture(int width, int height, int colours, const std::function<int(int x, int y)> &index);

// image as Qt's writer for format writes it, in memory: at quality when that
// is not -1, progressive where the format has such a layout (JPEG). Empty
// when the writer fails.
QByteArray encoded(const QImage &image, const char *format, int quality = -1, bool progressive = false);

// Microsoft Paint 1.x: rows stored plainly (picture converted to one bit).
QByteArray mspVersion1(const QImage &image);

// GEM IMG of an indexed or one-bit picture with 1 to 8 planes. The encoder
// uses every code of the format: line repeats for equal lines, solid runs
// for 00 and FF bytes, pattern runs for repeated byte pairs and bit strings
// for the rest. ximg adds an XIMG palette from the picture's colour table.
QByteArray gemImg(const QImage &indexed, int planes, bool ximg);

struct IlbmOptions {
    bool byteRun1 = true;
    bool pbm = false; // chunky FORM PBM instead of planes
    quint32 camg = 0;
    bool mask = false; // store a mask plane after the picture planes
};
// IFF ILBM (or PBM) of an indexed picture with planes bit planes, or of a
// true-colour picture with 24 planes.
QByteArray ilbm(const QImage &image, int planes, const IlbmOptions &options);
// ILBM from raw per-pixel plane values (for HAM), with the given palette.
QByteArray ilbmRaw(int width, int height, int planes, const QList<quint8> &values, const QList<QRgb> &palette,
                   quint32 camg);

// Animated cursor from frames (each stored as an icon); sequence and rates
// (jiffies) are written when not empty; displayRate goes into the header.
QByteArray ani(const QList<QImage> &frames, const QList<quint32> &sequence, const QList<quint32> &rates,
               quint32 displayRate);

// Clipboard file holding a text entry and the picture as CF_DIB.
QByteArray clp(const QImage &image, bool win3Layout);

// Flic of equal-sized indexed frames sharing the first frame's palette. The
// first frame is stored with a byte run, later ones alternate between the
// word delta and the byte delta; an all-zero frame is stored as black.
// fli selects the 0xAF11 layout (speed in 1/70 s, 64-level colours).
QByteArray flic(const QList<QImage> &frames, quint32 speed, bool fli);

struct PsdOptions {
    bool packBits = true;
    int extraChannels = 0;      // planes after the first (alpha, spot colours), filled with a pattern
    bool largeDocument = false; // the large-document layout (longer lengths and row counts)
    int transparentIndex = -1;  // indexed colour: the transparent index resource
    int dotsPerInch = 150;      // the resolution resource
    QByteArray layers;          // contents of the layer and mask section
};
// Photoshop file whose merged picture is image: Format_Mono in bitmap mode
// (a set bit is a black pixel), Indexed8 as indexed colour (the table padded
// to 256 entries), Grayscale8 or Grayscale16 as greyscale.
QByteArray psd(const QImage &image, const PsdOptions &options);

// DICOM secondary capture of one grey frame: preamble, "DICM", the file meta
// group naming explicit VR little endian, then the picture's elements and
// pixels (little-endian samples of bitsAllocated bits, all of them stored).
QByteArray dicom(int width, int height, int bitsAllocated, const QByteArray &pixels);

} // namespace codecsamples
