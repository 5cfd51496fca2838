#include "PictureEdits.h"

#include "EditProgress.h"

#include <QColorSpace>
#include <QList>
#include <QThread>
#include <QThreadPool>
#include <QTransform>
#include <QtConcurrent/QtConcurrentMap>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>

namespace tarnby::edit {

namespace {

// Below this many bytes a picture is done on the calling thread: starting
// the pool costs more than the work.
constexpr qint64 SerialBytes = 512 * 1024;

struct Band {
    int begin = 0;
    int end = 0;
    int index = 0;
};

// A band holds at most about this many bytes, so that a large picture
// reports its progress and notices a cancel often.
constexpr qint64 BandBytes = 4 * 1024 * 1024;

// Splits rows into bands: several per core, so that a core that finishes
// early takes another band instead of idling, and more for a large picture.
QList<Band> splitRows(int rows, qint64 bytesPerRow)
{
    int count = 1;
    const qint64 bytes = qint64(rows) * bytesPerRow;
    if (rows > 1 && bytes >= SerialBytes)
        count = int(std::clamp<qint64>(std::max<qint64>(QThread::idealThreadCount() * 4, bytes / BandBytes), 1, rows));
    QList<Band> bands;
    bands.reserve(count);
    for (int i = 0; i < count; ++i)
        bands.append({int(qint64(rows) * i / count), int(qint64(rows) * (i + 1) / count), i});
    return bands;
}

// The bands run on a pool of their own: Qt paints large areas on the global
// pool, and a window must not wait for a long operation to be able to paint
// its progress.
QThreadPool *bandPool()
{
    static QThreadPool pool;
    static const bool sized = [] {
        pool.setMaxThreadCount(QThread::idealThreadCount());
        return true;
    }();
    Q_UNUSED(sized)
    return &pool;
}

thread_local int serialScopes = 0;

// Runs work on each band, on the pool when there are several (on the
// calling thread alone within a SerialScope). With a
// progress current on the calling thread, each band done is reported and,
// once it is cancelled, the bands not yet begun are skipped.
template <typename Work>
void forEachBand(QList<Band> bands, Work work)
{
    EditProgress *progress = ProgressScope::current();
    if (!progress) {
        if (bands.size() == 1 || serialScopes > 0) {
            for (const Band &band : std::as_const(bands))
                work(band);
        } else {
            QtConcurrent::blockingMap(bandPool(), bands, [&work](const Band &band) { work(band); });
        }
        return;
    }
    progress->beginPass(int(bands.size()));
    const auto tracked = [&work, progress](const Band &band) {
        if (progress->isCancelled())
            return;
        work(band);
        progress->bandDone();
    };
    if (bands.size() == 1 || serialScopes > 0) {
        for (const Band &band : std::as_const(bands))
            tracked(band);
    } else {
        QtConcurrent::blockingMap(bandPool(), bands, tracked);
    }
    progress->endPass();
}

QImage::Format directFormat(const QImage &image)
{
    return image.hasAlphaChannel() ? QImage::Format_ARGB32 : QImage::Format_RGB32;
}

bool isPaletted(QImage::Format format)
{
    return format == QImage::Format_Mono || format == QImage::Format_MonoLSB || format == QImage::Format_Indexed8;
}

bool isMono(QImage::Format format)
{
    return format == QImage::Format_Mono || format == QImage::Format_MonoLSB;
}

// Where a changed picture is written. A picture held elsewhere too (by the
// window, by the undo history) would be copied whole before a change in
// place; writing into a new picture instead reads each pixel once. A picture
// handed over is changed where it lies.
struct Target {
    QImage image;
    const uchar *source = nullptr;
    qsizetype sourceStride = 0;
    uchar *bits = nullptr;
    qsizetype stride = 0;
};

Target targetFor(QImage &image)
{
    Target target;
    if (image.isDetached()) {
        target.image = std::move(image);
        target.bits = target.image.bits();
        target.source = target.bits;
    } else {
        target.image = QImage(image.size(), image.format());
        if (target.image.isNull())
            return target;
        target.image.setColorTable(image.colorTable());
        target.image.setDotsPerMeterX(image.dotsPerMeterX());
        target.image.setDotsPerMeterY(image.dotsPerMeterY());
        target.image.setColorSpace(image.colorSpace());
        target.bits = target.image.bits();
        target.source = image.constBits();
    }
    target.stride = target.image.bytesPerLine();
    target.sourceStride = target.stride;
    return target;
}

// Packs an 8-bit indexed picture whose indices are 0 and 1 into a 1-bit one
// of the given bit order. Qt's own conversion dithers by colour; this keeps
// the indices as they are.
QImage packMono(const QImage &indexed, QImage::Format format)
{
    QImage mono(indexed.size(), format);
    if (mono.isNull())
        return mono;
    mono.setColorTable(indexed.colorTable());
    mono.setDotsPerMeterX(indexed.dotsPerMeterX());
    mono.setDotsPerMeterY(indexed.dotsPerMeterY());
    const bool msbFirst = format == QImage::Format_Mono;
    const int width = indexed.width();
    uchar *bits = mono.bits();
    const qsizetype stride = mono.bytesPerLine();
    forEachBand(splitRows(indexed.height(), indexed.bytesPerLine()), [&](const Band &band) {
        for (int y = band.begin; y < band.end; ++y) {
            const uchar *in = indexed.constScanLine(y);
            uchar *out = bits + y * stride;
            std::memset(out, 0, size_t(stride));
            for (int x = 0; x < width; ++x) {
                if (in[x] & 1)
                    out[x >> 3] |= msbFirst ? uchar(0x80 >> (x & 7)) : uchar(1 << (x & 7));
            }
        }
    });
    return mono;
}

// ---------------------------------------------------------------------------
// Point operations: a table per channel maps each level to its new level.

using Lut = std::array<uchar, 256>;

struct Luts {
    Lut red;
    Lut green;
    Lut blue;
};

struct ChannelRange {
    int low = 255;
    int high = 0;
    void add(int level)
    {
        low = std::min(low, level);
        high = std::max(high, level);
    }
    void add(const ChannelRange &other)
    {
        low = std::min(low, other.low);
        high = std::max(high, other.high);
    }
};

// The levels each channel uses, for the stretch.
struct Ranges {
    ChannelRange red;
    ChannelRange green;
    ChannelRange blue;
    void add(QRgb colour)
    {
        red.add(qRed(colour));
        green.add(qGreen(colour));
        blue.add(qBlue(colour));
    }
    void add(const Ranges &other)
    {
        red.add(other.red);
        green.add(other.green);
        blue.add(other.blue);
    }
};

Lut lutOf(int (*level)(int, int), int parameter)
{
    Lut lut;
    for (int v = 0; v < 256; ++v)
        lut[size_t(v)] = uchar(std::clamp(level(v, parameter), 0, 255));
    return lut;
}

Luts sameForAll(const Lut &lut)
{
    return {lut, lut, lut};
}

// The palette entries that pixels use: an unused entry must not widen the
// range that a stretch reads.
Ranges rangesOfPalette(const QImage &image)
{
    const QImage indexed = image.format() == QImage::Format_Indexed8 ? image : image.convertToFormat(QImage::Format_Indexed8);
    const QList<Band> bands = splitRows(indexed.height(), indexed.bytesPerLine());
    std::vector<std::array<bool, 256>> used(size_t(bands.size()), std::array<bool, 256>{});
    const int width = indexed.width();
    forEachBand(bands, [&](const Band &band) {
        std::array<bool, 256> &mine = used[size_t(band.index)];
        for (int y = band.begin; y < band.end; ++y) {
            const uchar *line = indexed.constScanLine(y);
            for (int x = 0; x < width; ++x)
                mine[line[x]] = true;
        }
    });
    const QList<QRgb> table = image.colorTable();
    Ranges ranges;
    for (int i = 0; i < table.size() && i < 256; ++i) {
        for (const auto &mine : used) {
            if (mine[size_t(i)]) {
                ranges.add(table.at(i));
                break;
            }
        }
    }
    return ranges;
}

Ranges rangesOfGrey(const QImage &image)
{
    const QList<Band> bands = splitRows(image.height(), image.bytesPerLine());
    std::vector<ChannelRange> found(size_t(bands.size()));
    const int width = image.width();
    forEachBand(bands, [&](const Band &band) {
        ChannelRange &mine = found[size_t(band.index)];
        for (int y = band.begin; y < band.end; ++y) {
            const uchar *line = image.constScanLine(y);
            const auto [low, high] = std::minmax_element(line, line + width);
            mine.add(*low);
            mine.add(*high);
        }
    });
    ChannelRange all;
    for (const ChannelRange &r : found)
        all.add(r);
    return {all, all, all};
}

Ranges rangesOfDirect(const QImage &image)
{
    const QList<Band> bands = splitRows(image.height(), image.bytesPerLine());
    std::vector<Ranges> found(size_t(bands.size()));
    const int width = image.width();
    forEachBand(bands, [&](const Band &band) {
        // Plain integers in the loop: the compiler keeps them in registers.
        int lowR = 255, lowG = 255, lowB = 255, highR = 0, highG = 0, highB = 0;
        for (int y = band.begin; y < band.end; ++y) {
            const QRgb *line = reinterpret_cast<const QRgb *>(image.constScanLine(y));
            for (int x = 0; x < width; ++x) {
                const int r = qRed(line[x]), g = qGreen(line[x]), b = qBlue(line[x]);
                lowR = std::min(lowR, r), highR = std::max(highR, r);
                lowG = std::min(lowG, g), highG = std::max(highG, g);
                lowB = std::min(lowB, b), highB = std::max(highB, b);
            }
        }
        Ranges &mine = found[size_t(band.index)];
        mine.red = {lowR, highR};
        mine.green = {lowG, highG};
        mine.blue = {lowB, highB};
    });
    Ranges all;
    for (const Ranges &r : found)
        all.add(r);
    return all;
}

enum class NeedsRanges { No, Yes };

// Runs a point operation: makeLuts turns the used ranges (filled only when
// asked for) into the tables, which then change the palette or the pixels.
template <typename MakeLuts>
QImage pointOperation(QImage image, NeedsRanges needsRanges, MakeLuts makeLuts)
{
    if (image.isNull())
        return image;
    const bool ranges = needsRanges == NeedsRanges::Yes;
    switch (image.format()) {
    case QImage::Format_Mono:
    case QImage::Format_MonoLSB:
    case QImage::Format_Indexed8: {
        const Luts luts = makeLuts(ranges ? rangesOfPalette(image) : Ranges());
        QList<QRgb> table = image.colorTable();
        for (QRgb &c : table)
            c = qRgba(luts.red[qRed(c)], luts.green[qGreen(c)], luts.blue[qBlue(c)], qAlpha(c));
        image.setColorTable(table);
        return image;
    }
    case QImage::Format_Grayscale8: {
        const Lut lut = makeLuts(ranges ? rangesOfGrey(image) : Ranges()).red;
        const int width = image.width();
        Target t = targetFor(image);
        if (!t.bits)
            return QImage();
        forEachBand(splitRows(t.image.height(), t.stride), [&](const Band &band) {
            for (int y = band.begin; y < band.end; ++y) {
                const uchar *in = t.source + y * t.sourceStride;
                uchar *out = t.bits + y * t.stride;
                for (int x = 0; x < width; ++x)
                    out[x] = lut[in[x]];
            }
        });
        return t.image;
    }
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32: {
        const Luts luts = makeLuts(ranges ? rangesOfDirect(image) : Ranges());
        const int width = image.width();
        Target t = targetFor(image);
        if (!t.bits)
            return QImage();
        forEachBand(splitRows(t.image.height(), t.stride), [&](const Band &band) {
            for (int y = band.begin; y < band.end; ++y) {
                const QRgb *in = reinterpret_cast<const QRgb *>(t.source + y * t.sourceStride);
                QRgb *out = reinterpret_cast<QRgb *>(t.bits + y * t.stride);
                for (int x = 0; x < width; ++x) {
                    const QRgb c = in[x];
                    out[x] = (c & 0xff000000u) | (QRgb(luts.red[qRed(c)]) << 16) | (QRgb(luts.green[qGreen(c)]) << 8)
                             | luts.blue[qBlue(c)];
                }
            }
        });
        return t.image;
    }
    default: {
        const QImage::Format original = image.format();
        QImage work = image.convertToFormat(directFormat(image));
        image = QImage(); // the caller's copy, if it gave it up, goes now
        return pointOperation(std::move(work), needsRanges, makeLuts).convertToFormat(original);
    }
    }
}

int inverted(int v, int)
{
    return 255 - v;
}

int brightened(int v, int delta)
{
    return v + delta;
}

// factor in thousandths
int contrasted(int v, int factor)
{
    return int(std::lround(128.0 + (v - 128) * (factor / 1000.0)));
}

Lut stretchLut(const ChannelRange &range)
{
    Lut lut;
    for (int v = 0; v < 256; ++v) {
        if (range.low >= range.high)
            lut[size_t(v)] = uchar(v);
        else
            lut[size_t(v)] = uchar(std::clamp(int(std::lround((v - range.low) * 255.0 / (range.high - range.low))), 0, 255));
    }
    return lut;
}

// ---------------------------------------------------------------------------
// Rotation by angles other than quarter turns.

struct Geometry {
    double cosine = 1;
    double sine = 0;
    int sourceWidth = 0;
    int sourceHeight = 0;
    int width = 0;
    int height = 0;

    // Where the centre of the first pixel of destination row y falls in the
    // source, in pixel units, and how far each step along the row moves it.
    void rowStart(int y, double *sx, double *sy) const
    {
        const double dx = 0.5 - width / 2.0;
        const double dy = y + 0.5 - height / 2.0;
        // The inverse of a clockwise turn on a y-down screen.
        *sx = dx * cosine + dy * sine + sourceWidth / 2.0;
        *sy = -dx * sine + dy * cosine + sourceHeight / 2.0;
    }
};

// Palette entry for the fill: the same colour if the palette has it, a new
// entry if there is room, else the nearest colour.
int fillIndex(QList<QRgb> *table, QRgb fill)
{
    for (int i = 0; i < table->size(); ++i) {
        if ((table->at(i) & 0xffffff) == (fill & 0xffffff))
            return i;
    }
    if (table->size() < 256) {
        table->append(fill | 0xff000000u);
        return int(table->size() - 1);
    }
    int best = 0;
    int bestDistance = INT_MAX;
    for (int i = 0; i < table->size(); ++i) {
        const QRgb c = table->at(i);
        const int dr = qRed(c) - qRed(fill), dg = qGreen(c) - qGreen(fill), db = qBlue(c) - qBlue(fill);
        const int distance = dr * dr + dg * dg + db * db;
        if (distance < bestDistance)
            bestDistance = distance, best = i;
    }
    return best;
}

QImage rotateIndexed(const QImage &source, const Geometry &g, QRgb fill)
{
    QList<QRgb> table = source.colorTable();
    const uchar fillAt = uchar(fillIndex(&table, fill));
    QImage out(g.width, g.height, QImage::Format_Indexed8);
    if (out.isNull())
        return out;
    out.setColorTable(table);
    uchar *bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    forEachBand(splitRows(g.height, stride), [&](const Band &band) {
        for (int y = band.begin; y < band.end; ++y) {
            double sx, sy;
            g.rowStart(y, &sx, &sy);
            uchar *line = bits + y * stride;
            for (int x = 0; x < g.width; ++x, sx += g.cosine, sy -= g.sine) {
                const int px = int(std::floor(sx)), py = int(std::floor(sy));
                line[x] = px >= 0 && py >= 0 && px < g.sourceWidth && py < g.sourceHeight ? source.constScanLine(py)[px]
                                                                                          : fillAt;
            }
        }
    });
    return out;
}

// Bilinear sampling of a picture of Pixel (uchar greys or 32-bit colours),
// with the fill taking the place of the pixels beyond the edges so that the
// border is smooth.
template <typename Pixel, int Channels>
QImage rotateSmooth(const QImage &source, const Geometry &g, Pixel fill, QImage::Format format)
{
    QImage out(g.width, g.height, format);
    if (out.isNull())
        return out;
    uchar *bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    const int w = g.sourceWidth, h = g.sourceHeight;
    const uchar *sourceBits = source.constBits();
    const qsizetype sourceStride = source.bytesPerLine();
    const auto at = [&](int x, int y) -> Pixel {
        if (x < 0 || y < 0 || x >= w || y >= h)
            return fill;
        return reinterpret_cast<const Pixel *>(sourceBits + y * sourceStride)[x];
    };
    // Positions run in 16.16 fixed point along each row: the source steps
    // by the same amount from one pixel to the next.
    const qint64 du = std::llround(g.cosine * 65536.0), dv = std::llround(-g.sine * 65536.0);
    forEachBand(splitRows(g.height, stride), [&](const Band &band) {
        for (int y = band.begin; y < band.end; ++y) {
            double sx, sy;
            g.rowStart(y, &sx, &sy);
            qint64 u = std::llround((sx - 0.5) * 65536.0), v = std::llround((sy - 0.5) * 65536.0);
            Pixel *line = reinterpret_cast<Pixel *>(bits + y * stride);
            for (int x = 0; x < g.width; ++x, u += du, v += dv) {
                const int x0 = int(u >> 16), y0 = int(v >> 16); // floor, negatives included
                const unsigned wx = unsigned(u >> 8) & 0xff, wy = unsigned(v >> 8) & 0xff;
                Pixel p00, p10, p01, p11;
                if (unsigned(x0) < unsigned(w - 1) && unsigned(y0) < unsigned(h - 1)) {
                    const Pixel *row0 = reinterpret_cast<const Pixel *>(sourceBits + y0 * sourceStride) + x0;
                    const Pixel *row1 = reinterpret_cast<const Pixel *>(sourceBits + (y0 + 1) * sourceStride) + x0;
                    p00 = row0[0], p10 = row0[1], p01 = row1[0], p11 = row1[1];
                } else if (x0 < -1 || y0 < -1 || x0 >= w || y0 >= h) {
                    line[x] = fill;
                    continue;
                } else {
                    p00 = at(x0, y0), p10 = at(x0 + 1, y0), p01 = at(x0, y0 + 1), p11 = at(x0 + 1, y0 + 1);
                }
                if constexpr (Channels == 4) {
                    // Two channels at a time, eight bits apart (as in Qt's
                    // own bilinear drawing).
                    const auto mix = [](quint32 a, quint32 b, unsigned wb) {
                        const unsigned wa = 256 - wb;
                        const quint32 rb = (((a & 0xff00ff) * wa + (b & 0xff00ff) * wb) >> 8) & 0xff00ff;
                        const quint32 ag = ((((a >> 8) & 0xff00ff) * wa + ((b >> 8) & 0xff00ff) * wb) >> 8) & 0xff00ff;
                        return rb | (ag << 8);
                    };
                    line[x] = mix(mix(p00, p10, wx), mix(p01, p11, wx), wy);
                } else {
                    const unsigned top = p00 * (256 - wx) + p10 * wx;
                    const unsigned bottom = p01 * (256 - wx) + p11 * wx;
                    line[x] = Pixel((top * (256 - wy) + bottom * wy + 32768) >> 16);
                }
            }
        }
    });
    return out;
}

bool tooLarge(qint64 width, qint64 height)
{
    return width < 1 || height < 1 || width > MaxSide || height > MaxSide || width * height > MaxResultPixels;
}

QImage withMetadataOf(QImage image, const QImage &source)
{
    if (!image.isNull()) {
        image.setDotsPerMeterX(source.dotsPerMeterX());
        image.setDotsPerMeterY(source.dotsPerMeterY());
    }
    return image;
}

// Nearest-pixel resize for formats of whole bytes a pixel.
QImage resizeNearest(const QImage &source, QSize size)
{
    QImage out(size, source.format());
    if (out.isNull())
        return out;
    if (source.colorCount() > 0)
        out.setColorTable(source.colorTable());
    const int bytes = source.depth() / 8;
    const qint64 w = source.width(), h = source.height();
    // The centre of each new pixel falls in the old pixel it copies.
    std::vector<int> columns(size_t(size.width()));
    for (qint64 x = 0; x < size.width(); ++x)
        columns[size_t(x)] = int((2 * x + 1) * w / (2 * size.width())) * bytes;
    uchar *bits = out.bits();
    const qsizetype stride = out.bytesPerLine();
    forEachBand(splitRows(size.height(), stride), [&](const Band &band) {
        for (int y = band.begin; y < band.end; ++y) {
            const uchar *in = source.constScanLine(int((2 * qint64(y) + 1) * h / (2 * size.height())));
            uchar *line = bits + y * stride;
            switch (bytes) {
            case 1:
                for (int x = 0; x < size.width(); ++x)
                    line[x] = in[columns[size_t(x)]];
                break;
            case 4:
                for (int x = 0; x < size.width(); ++x)
                    std::memcpy(line + 4 * x, in + columns[size_t(x)], 4);
                break;
            default:
                for (int x = 0; x < size.width(); ++x)
                    std::memcpy(line + qsizetype(bytes) * x, in + columns[size_t(x)], size_t(bytes));
                break;
            }
        }
    });
    return withMetadataOf(out, source);
}

template <typename Pixel>
void reverseRows(uchar *bits, qsizetype stride, int width, const Band &band)
{
    for (int y = band.begin; y < band.end; ++y) {
        Pixel *line = reinterpret_cast<Pixel *>(bits + y * stride);
        std::reverse(line, line + width);
    }
}

} // namespace

SerialScope::SerialScope()
{
    ++serialScopes;
}

SerialScope::~SerialScope()
{
    --serialScopes;
}

QImage flip(QImage image)
{
    if (image.isNull())
        return image;
    const int height = image.height();
    if (!image.isDetached()) {
        // Held elsewhere: each row is copied once, to its mirrored place.
        const QImage source = image;
        Target t = targetFor(image);
        if (!t.bits)
            return QImage();
        const qsizetype bytes = std::min(t.stride, source.bytesPerLine());
        forEachBand(splitRows(height, t.stride), [&](const Band &band) {
            for (int y = band.begin; y < band.end; ++y)
                std::memcpy(t.bits + (height - 1 - y) * t.stride, t.source + y * t.sourceStride, size_t(bytes));
        });
        return t.image;
    }
    const qsizetype stride = image.bytesPerLine();
    uchar *bits = image.bits();
    // Rows swap in place, whatever the format: a row is whole bytes.
    forEachBand(splitRows(height / 2, 2 * stride), [&](const Band &band) {
        for (int y = band.begin; y < band.end; ++y)
            std::swap_ranges(bits + y * stride, bits + (y + 1) * stride, bits + (height - 1 - y) * stride);
    });
    return image;
}

QImage reverse(QImage image)
{
    if (image.isNull())
        return image;
    if (image.depth() < 8)
        return image.mirrored(true, false); // bits within bytes: Qt's own routine
    const int width = image.width();
    const qsizetype stride = image.bytesPerLine();
    const int bytes = image.depth() / 8;
    if (!image.isDetached()) {
        // Held elsewhere: each pixel is copied once, to its mirrored place.
        Target t = targetFor(image);
        if (!t.bits)
            return QImage();
        forEachBand(splitRows(t.image.height(), t.stride), [&](const Band &band) {
            for (int y = band.begin; y < band.end; ++y) {
                const uchar *in = t.source + y * t.sourceStride;
                uchar *out = t.bits + y * t.stride;
                if (bytes == 4) {
                    const quint32 *from = reinterpret_cast<const quint32 *>(in);
                    std::reverse_copy(from, from + width, reinterpret_cast<quint32 *>(out));
                    continue;
                }
                for (int x = 0; x < width; ++x)
                    std::memcpy(out + qsizetype(width - 1 - x) * bytes, in + qsizetype(x) * bytes, size_t(bytes));
            }
        });
        return t.image;
    }
    uchar *bits = image.bits();
    forEachBand(splitRows(image.height(), stride), [&](const Band &band) {
        switch (bytes) {
        case 1:
            reverseRows<quint8>(bits, stride, width, band);
            break;
        case 2:
            reverseRows<quint16>(bits, stride, width, band);
            break;
        case 4:
            reverseRows<quint32>(bits, stride, width, band);
            break;
        case 8:
            reverseRows<quint64>(bits, stride, width, band);
            break;
        default:
            for (int y = band.begin; y < band.end; ++y) {
                uchar *line = bits + y * stride;
                for (int left = 0, right = width - 1; left < right; ++left, --right)
                    std::swap_ranges(line + left * bytes, line + (left + 1) * bytes, line + right * bytes);
            }
            break;
        }
    });
    return image;
}

QImage invert(QImage image)
{
    return pointOperation(std::move(image), NeedsRanges::No,
                          [](const Ranges &) { return sameForAll(lutOf(inverted, 0)); });
}

QImage stretchIntensity(QImage image)
{
    return pointOperation(std::move(image), NeedsRanges::Yes, [](const Ranges &ranges) {
        return Luts{stretchLut(ranges.red), stretchLut(ranges.green), stretchLut(ranges.blue)};
    });
}

QImage changeBrightness(QImage image, int amount)
{
    amount = std::clamp(amount, MinAmount, MaxAmount);
    if (amount == 0)
        return image;
    const int delta = int(std::lround(amount * 255.0 / 1000.0));
    return pointOperation(std::move(image), NeedsRanges::No,
                          [delta](const Ranges &) { return sameForAll(lutOf(brightened, delta)); });
}

QImage changeContrast(QImage image, int amount)
{
    amount = std::clamp(amount, MinAmount, MaxAmount);
    if (amount == 0)
        return image;
    // At +1000 the factor would be infinite; 256 already sends every level
    // but mid-grey itself to black or white.
    const int factor = amount < 0 ? 1000 + amount : amount >= 996 ? 256000 : int(std::lround(1e6 / (1000 - amount)));
    return pointOperation(std::move(image), NeedsRanges::No,
                          [factor](const Ranges &) { return sameForAll(lutOf(contrasted, factor)); });
}

QImage rotate(QImage image, int hundredthsOfDegree, RotateFit fit, QRgb fill)
{
    if (image.isNull())
        return image;
    const int angle = ((hundredthsOfDegree % 36000) + 36000) % 36000;
    switch (angle) {
    case 0:
        return image;
    case 9000:
        // Qt turns quarter turns with its tiled copy, keeping the format.
        return image.transformed(QTransform().rotate(90));
    case 18000:
        return reverse(flip(std::move(image)));
    case 27000:
        return image.transformed(QTransform().rotate(270));
    default:
        break;
    }
    Geometry g;
    const double radians = angle / 100.0 * M_PI / 180.0;
    g.cosine = std::cos(radians);
    g.sine = std::sin(radians);
    g.sourceWidth = image.width();
    g.sourceHeight = image.height();
    if (fit == RotateFit::Enlarge) {
        // The bounding box of the turned picture; the small allowance keeps
        // rounding noise from adding a column.
        const double w = std::abs(g.sourceWidth * g.cosine) + std::abs(g.sourceHeight * g.sine);
        const double h = std::abs(g.sourceWidth * g.sine) + std::abs(g.sourceHeight * g.cosine);
        if (w > MaxSide || h > MaxSide)
            return QImage();
        g.width = int(std::ceil(w - 1e-6));
        g.height = int(std::ceil(h - 1e-6));
    } else {
        g.width = g.sourceWidth;
        g.height = g.sourceHeight;
    }
    if (tooLarge(g.width, g.height))
        return QImage();

    const QImage::Format original = image.format();
    if (isPaletted(original)) {
        const QImage indexed = original == QImage::Format_Indexed8 ? image : image.convertToFormat(QImage::Format_Indexed8);
        image = QImage();
        QImage out = rotateIndexed(indexed, g, fill);
        if (isMono(original) && out.colorCount() <= 2)
            out = packMono(out, original);
        return withMetadataOf(out, indexed);
    }
    if (original == QImage::Format_Grayscale8)
        return withMetadataOf(rotateSmooth<uchar, 1>(image, g, uchar(qGray(fill)), original), image);
    if (original == QImage::Format_RGB32)
        return withMetadataOf(rotateSmooth<QRgb, 4>(image, g, fill | 0xff000000u, original), image);
    // Pictures with alpha are sampled premultiplied, so that transparent
    // pixels lend no colour to their neighbours.
    const QImage::Format work = image.hasAlphaChannel() ? QImage::Format_ARGB32_Premultiplied : QImage::Format_RGB32;
    const QImage source = image.convertToFormat(work);
    image = QImage();
    const QRgb workFill = work == QImage::Format_RGB32 ? (fill | 0xff000000u) : qPremultiply(fill);
    QImage out = rotateSmooth<QRgb, 4>(source, g, workFill, work);
    return withMetadataOf(out.convertToFormat(original), source);
}

QImage resize(QImage image, QSize size, Resampling resampling)
{
    if (image.isNull() || tooLarge(size.width(), size.height()))
        return QImage();
    if (size == image.size())
        return image;
    const QImage::Format original = image.format();
    if (resampling == Resampling::None) {
        if (!isMono(original))
            return resizeNearest(image, size);
        const QImage indexed = image.convertToFormat(QImage::Format_Indexed8);
        return withMetadataOf(packMono(resizeNearest(indexed, size), original), image);
    }
    // Resampling mixes colours: a palette cannot hold them, but greys mixed
    // are greys.
    QImage::Format target = original;
    if (isPaletted(original))
        target = image.allGray() ? QImage::Format_Grayscale8 : directFormat(image);
    QImage out = image.scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    image = QImage();
    return out.format() == target ? out : out.convertToFormat(target);
}

} // namespace tarnby::edit
