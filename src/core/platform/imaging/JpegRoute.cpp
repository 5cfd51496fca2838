#include "core/platform/imaging/JpegRoute.h"

#include "core/platform/imaging/LibJpegErrors.h"

#include <QColorSpace>
#include <QFileDevice>
#include <QImage>
#include <QMap>
#include <QThread>
#include <QThreadPool>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <limits>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#if defined(Q_OS_LINUX)
#include <fcntl.h>
#include <sys/mman.h>
#endif

namespace tarnby::imaging::jpeg {

namespace {

constexpr int IccOverhead = 14; // "ICC_PROFILE\0", sequence number, count

// Comments as Qt's reader keys them: "Key: value" where the text before the
// first ": " is one word, else the whole comment under "Description".
void addComment(QImage *image, const QByteArray &bytes)
{
    const QString text = QString::fromUtf8(bytes);
    const qsizetype colon = text.indexOf(QLatin1String(": "));
    const qsizetype space = text.indexOf(QLatin1Char(' '));
    if (colon < 0 || space < colon)
        image->setText(QStringLiteral("Description"), text);
    else
        image->setText(text.left(colon), text.mid(colon + 2));
}

// The ICC profile, which a file may split over several APP2 markers,
// numbered from 1.
QByteArray iccProfile(jpeg_saved_marker_ptr markers)
{
    QList<QByteArray> parts;
    for (jpeg_saved_marker_ptr m = markers; m; m = m->next) {
        if (m->marker != JPEG_APP0 + 2 || m->data_length <= unsigned(IccOverhead)
            || std::memcmp(m->data, "ICC_PROFILE", 12) != 0)
            continue;
        const int number = m->data[12];
        const int count = m->data[13];
        if (number < 1 || number > count)
            return {};
        parts.resize(count);
        parts[number - 1] = QByteArray(reinterpret_cast<const char *>(m->data) + IccOverhead,
                                       qsizetype(m->data_length) - IccOverhead);
    }
    QByteArray profile;
    for (const QByteArray &part : parts) {
        if (part.isEmpty())
            return {};
        profile += part;
    }
    return profile;
}

// Dots per metre cut to whole numbers, as Qt's reader has them: 96 dpi is
// 3779, not 3780.
void setResolution(QImage *image, const jpeg_decompress_struct &cinfo)
{
    if (cinfo.density_unit == 1) { // dots per inch
        image->setDotsPerMeterX(int(100.0 * cinfo.X_density / 2.54));
        image->setDotsPerMeterY(int(100.0 * cinfo.Y_density / 2.54));
    } else if (cinfo.density_unit == 2) { // dots per centimetre
        image->setDotsPerMeterX(cinfo.X_density * 100);
        image->setDotsPerMeterY(cinfo.Y_density * 100);
    }
}

// A large picture's memory is first touched by the decoder, and every page
// it touches costs it a fault; another thread maps the pages in ahead of it,
// in one call, on a core that is otherwise idle or merely encoding. Nothing
// is written to the pixels.
std::thread prefaulting(QImage *image)
{
#if defined(Q_OS_LINUX) && defined(MADV_POPULATE_WRITE)
    constexpr qsizetype From = 16 * 1024 * 1024;
    constexpr quintptr Page = 4096;
    if (image->sizeInBytes() < From)
        return {};
    const auto start = reinterpret_cast<quintptr>(image->bits());
    const quintptr first = (start + Page - 1) & ~(Page - 1);
    const quintptr last = (start + quintptr(image->sizeInBytes())) & ~(Page - 1);
    return std::thread([first, last] { (void)::madvise(reinterpret_cast<void *>(first), last - first, MADV_POPULATE_WRITE); });
#else
    Q_UNUSED(image)
    return {};
#endif
}

// ---------------------------------------------------------------------------
// Writing

constexpr int MaxMarkerBytes = 65533;
constexpr int DefaultQuality = 75;
// Pixel bytes a strip covers, about: enough strips for the cores to share
// the work evenly and to keep the wait for the last one short, few enough
// that the restart markers cost nothing worth naming.
constexpr qsizetype StripBytes = 2 * 1024 * 1024;
// Written data is handed to the disk in pieces of at least this many bytes.
constexpr qint64 WritebackBytes = 1024 * 1024;

// What every strip is encoded from and with.
struct Encoding {
    const uchar *bits = nullptr;
    qsizetype stride = 0;
    int width = 0;
    int height = 0;
    bool grey = false;
    int quality = DefaultQuality;
    UINT8 densityUnit = 1;
    UINT16 xDensity = 96;
    UINT16 yDensity = 96;
    // Only the first strip writes these, after the JFIF header.
    std::vector<QByteArray> comments;
    std::vector<QByteArray> profile; // APP2 payloads, in their order
    int stripRows = 0;               // a whole number of MCU rows, but for a picture in one piece
    int strips = 1;
    unsigned int restartInterval = 0; // MCUs a strip; 0 for a picture in one piece
    const RowFeed *feed = nullptr;    // where the rows are still coming from
};

struct FreeBytes {
    void operator()(unsigned char *bytes) const { std::free(bytes); }
};

// One strip as libjpeg wrote it: a whole JPEG stream of its own.
struct Encoded {
    std::unique_ptr<unsigned char, FreeBytes> bytes;
    unsigned long size = 0;
    bool ready = false;
};

// Where libjpeg writes a strip: a buffer that grows as needed and always
// belongs to its Output (libjpeg's own memory destination loses track of
// its buffer when an error jumps out of it). Kept outside the function that
// calls setjmp, so that its state survives the jump back.
struct Output {
    jpeg_destination_mgr pub{};
    unsigned char *bytes = nullptr;
    size_t capacity = 0;
    unsigned long size = 0;

    static Output *of(j_compress_ptr cinfo) { return reinterpret_cast<Output *>(cinfo->dest); }

    static void init(j_compress_ptr cinfo) { grow(cinfo); }

    static boolean grow(j_compress_ptr cinfo)
    {
        Output *out = of(cinfo);
        const size_t used = out->capacity;
        const size_t capacity = std::max<size_t>(used * 2, 64 * 1024);
        auto *bytes = static_cast<unsigned char *>(std::realloc(out->bytes, capacity));
        if (!bytes) {
            cinfo->err->msg_code = JERR_OUT_OF_MEMORY;
            (*cinfo->err->error_exit)(reinterpret_cast<j_common_ptr>(cinfo));
        }
        out->bytes = bytes;
        out->capacity = capacity;
        out->pub.next_output_byte = bytes + used;
        out->pub.free_in_buffer = capacity - used;
        return TRUE;
    }

    static void term(j_compress_ptr cinfo)
    {
        Output *out = of(cinfo);
        out->size = static_cast<unsigned long>(out->capacity - out->pub.free_in_buffer);
    }

    void attach(j_compress_ptr cinfo)
    {
        pub.init_destination = init;
        pub.empty_output_buffer = grow;
        pub.term_destination = term;
        pub.next_output_byte = nullptr;
        pub.free_in_buffer = 0; // init() makes the first room
        cinfo->dest = &pub;
    }
};

bool encodeStrip(const Encoding &e, int index, Output *out, QString *error)
{
    jpeg_compress_struct cinfo;
    detail::JpegError jpegError;
    detail::useJpegError(cinfo, jpegError);
    if (setjmp(jpegError.jump)) {
        jpeg_destroy_compress(&cinfo);
        *error = QString::fromLocal8Bit(jpegError.message);
        return false;
    }
    jpeg_create_compress(&cinfo);
    out->attach(&cinfo);
    const int first = index * e.stripRows;
    const int rows = std::min(e.stripRows, e.height - first);
    const bool upsideDown = e.feed && e.feed->upsideDown;
    cinfo.image_width = JDIMENSION(e.width);
    cinfo.image_height = JDIMENSION(rows);
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    const J_COLOR_SPACE colour = JCS_EXT_BGRX;
#else
    const J_COLOR_SPACE colour = JCS_EXT_XRGB;
#endif
    cinfo.input_components = e.grey ? 1 : 4;
    cinfo.in_color_space = e.grey ? JCS_GRAYSCALE : colour;
    jpeg_set_defaults(&cinfo);
    cinfo.density_unit = e.densityUnit;
    cinfo.X_density = e.xDensity;
    cinfo.Y_density = e.yDensity;
    cinfo.write_JFIF_header = index == 0 ? TRUE : FALSE;
    cinfo.restart_interval = e.restartInterval;
    jpeg_set_quality(&cinfo, e.quality, TRUE);
    jpeg_start_compress(&cinfo, TRUE);
    if (index == 0) {
        for (const QByteArray &comment : e.comments)
            jpeg_write_marker(&cinfo, JPEG_COM, reinterpret_cast<const JOCTET *>(comment.constData()), unsigned(comment.size()));
        for (const QByteArray &block : e.profile)
            jpeg_write_marker(&cinfo, JPEG_APP0 + 2, reinterpret_cast<const JOCTET *>(block.constData()), unsigned(block.size()));
    }
    constexpr int Batch = 16;
    JSAMPROW pointers[Batch];
    while (cinfo.next_scanline < cinfo.image_height) {
        const int y = int(cinfo.next_scanline);
        const int n = std::min(Batch, rows - y);
        for (int k = 0; k < n; ++k) {
            const int source = upsideDown ? e.height - 1 - (first + y + k) : first + y + k;
            pointers[k] = const_cast<JSAMPROW>(e.bits + qsizetype(source) * e.stride); // libjpeg only reads them
        }
        jpeg_write_scanlines(&cinfo, pointers, JDIMENSION(n));
    }
    jpeg_finish_compress(&cinfo);
    jpeg_destroy_compress(&cinfo);
    return true;
}

int bigEndian16(const unsigned char *at)
{
    return (at[0] << 8) | at[1];
}

// The offset of the first marker segment before the scan data for which
// wanted(marker) holds, or -1.
template <typename Wanted>
qsizetype findSegment(const unsigned char *data, qsizetype size, Wanted wanted)
{
    qsizetype at = 2; // after SOI
    while (at + 4 <= size && data[at] == 0xFF) {
        const int marker = data[at + 1];
        if (wanted(marker))
            return at;
        if (marker == 0xDA) // the scan begins: no headers follow
            return -1;
        at += 2 + bigEndian16(data + at + 2);
    }
    return -1;
}

// The pieces of one strip that go into the file: all of the first strip
// but its end marker, with the picture's full height in its frame header;
// of the others the compressed data alone, after a restart marker.
bool splice(const Encoding &e, int index, Encoded *strip, const unsigned char **begin, qsizetype *length,
            unsigned char *restart)
{
    unsigned char *data = strip->bytes.get();
    const qsizetype size = qsizetype(strip->size);
    if (size < 4 || data[size - 2] != 0xFF || data[size - 1] != JPEG_EOI)
        return false;
    if (index == 0) {
        if (e.strips > 1) {
            const qsizetype frame = findSegment(data, size, [](int m) { return m >= 0xC0 && m <= 0xC2; });
            if (frame < 0 || frame + 7 > size)
                return false;
            data[frame + 5] = uchar(e.height >> 8);
            data[frame + 6] = uchar(e.height & 0xFF);
        }
        *begin = data;
        *length = size - 2;
        return true;
    }
    const qsizetype scan = findSegment(data, size, [](int m) { return m == 0xDA; });
    if (scan < 0)
        return false;
    const qsizetype start = scan + 2 + bigEndian16(data + scan + 2);
    if (start > size - 2)
        return false;
    restart[0] = 0xFF;
    restart[1] = uchar(JPEG_RST0 + (index - 1) % 8);
    *begin = data + start;
    *length = size - 2 - start;
    return true;
}

// Writes to the device and, on a file, starts writing the data back to disk
// once enough has gathered.
class Sink
{
public:
    explicit Sink(QIODevice *device)
        : m_device(device)
        , m_file(qobject_cast<QFileDevice *>(device))
    {
        if (m_file)
            m_synced = m_file->pos();
    }

    bool put(const void *data, qsizetype length)
    {
        if (m_device->write(static_cast<const char *>(data), length) != length)
            return false;
#if defined(Q_OS_LINUX)
        if (m_file && m_file->handle() >= 0 && m_file->pos() - m_synced >= WritebackBytes && m_file->flush()) {
            const qint64 end = m_file->pos();
            // Only a hint: the data is written either way.
            (void)::sync_file_range(m_file->handle(), m_synced, end - m_synced, SYNC_FILE_RANGE_WRITE);
            m_synced = end;
        }
#endif
        return true;
    }

private:
    QIODevice *m_device;
    QFileDevice *m_file;
    qint64 m_synced = 0;
};

// The strips' shared state: which is next to encode, which are done. The
// thread that writes takes part in the encoding, so the work goes on even
// when no helper gets a thread (all busy with other pictures).
struct StripWork {
    Encoding encoding;
    std::mutex mutex;
    std::condition_variable changed;
    int next = 0;
    int busy = 0; // strips being encoded
    QString error;
    std::vector<Encoded> done;

    // Claims the next strip, if any is left; under the lock.
    int claim()
    {
        if (next >= encoding.strips)
            return -1;
        ++busy;
        return next++;
    }

    // Waits for the rows that strip index is encoded from and changes
    // them, where they are still coming in.
    bool feed(int index, QString *failure)
    {
        const RowFeed *feed = encoding.feed;
        if (!feed)
            return true;
        const int first = index * encoding.stripRows;
        const int rows = std::min(encoding.stripRows, encoding.height - first);
        const int begin = feed->upsideDown ? encoding.height - first - rows : first;
        const int end = begin + rows;
        if (!feed->waitFor(feed->upsideDown ? encoding.height : end)) {
            *failure = QStringLiteral("The picture could not be decoded.");
            return false;
        }
        if (feed->change)
            *failure = feed->change(begin, end);
        return failure->isEmpty();
    }

    // Encodes strip index, claimed before, and files the result.
    void encode(int index)
    {
        Output out;
        QString failure;
        const bool ok = feed(index, &failure) && encodeStrip(encoding, index, &out, &failure);
        {
            const std::lock_guard lock(mutex);
            done[size_t(index)].bytes.reset(out.bytes);
            done[size_t(index)].size = out.size;
            done[size_t(index)].ready = true;
            if (!ok && error.isEmpty()) {
                error = failure.isEmpty() ? QStringLiteral("The picture could not be encoded.") : failure;
                next = encoding.strips; // nothing more is begun
            }
            --busy;
        }
        changed.notify_all();
    }
};

QThreadPool *stripPool()
{
    static QThreadPool pool;
    static const bool sized = [] {
        pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
        return true;
    }();
    Q_UNUSED(sized)
    return &pool;
}

// The resolution as Qt's writer states it: in dots per inch or per
// centimetre, whichever is nearer to whole numbers.
void setDensity(const QImage &image, Encoding *e)
{
    const double xInch = image.dotsPerMeterX() * 2.54 / 100.0;
    const double yInch = image.dotsPerMeterY() * 2.54 / 100.0;
    const double diffInch = std::abs(xInch - qRound(xInch)) + std::abs(yInch - qRound(yInch));
    const double diffCm = (std::abs(image.dotsPerMeterX() / 100.0 - qRound(image.dotsPerMeterX() / 100.0))
                           + std::abs(image.dotsPerMeterY() / 100.0 - qRound(image.dotsPerMeterY() / 100.0)))
                          * 2.54;
    if (diffInch < diffCm) {
        e->densityUnit = 1;
        e->xDensity = UINT16(qRound(xInch));
        e->yDensity = UINT16(qRound(yInch));
    } else {
        e->densityUnit = 2;
        e->xDensity = UINT16((image.dotsPerMeterX() + 50) / 100);
        e->yDensity = UINT16((image.dotsPerMeterY() + 50) / 100);
    }
}

} // namespace

bool canWrite(const QImage &image)
{
    switch (image.format()) {
    case QImage::Format_Grayscale8:
    case QImage::Format_RGB32:
    case QImage::Format_ARGB32:
    case QImage::Format_ARGB32_Premultiplied:
        return true;
    default:
        return false;
    }
}

QString write(const QImage &image, int quality, QIODevice *device)
{
    return write(image, quality, device, RowFeed());
}

QString write(const QImage &image, int quality, QIODevice *device, const RowFeed &feed)
{
    if (image.isNull() || !canWrite(image))
        return QStringLiteral("The picture cannot be written as JPEG.");
    Encoding e;
    e.bits = image.constBits();
    e.stride = image.bytesPerLine();
    e.width = image.width();
    e.height = image.height();
    e.grey = image.format() == QImage::Format_Grayscale8;
    e.quality = quality > 0 ? std::min(quality, 100) : DefaultQuality;
    if (feed.waitFor)
        e.feed = &feed;
    setDensity(image, &e);
    // The texts by key, "Key: value".
    QMap<QString, QString> texts;
    for (const QString &key : image.textKeys()) {
        if (!key.isEmpty())
            texts.insert(key, image.text(key));
    }
    for (auto it = texts.cbegin(); it != texts.cend(); ++it) {
        QByteArray comment = it.key().toUtf8() + ": " + it.value().toUtf8();
        comment.truncate(MaxMarkerBytes);
        e.comments.push_back(comment);
    }
    if (!e.grey) {
        // The profile in numbered APP2 pieces, as the reader joins them.
        const QByteArray icc = image.colorSpace().iccProfile();
        constexpr int Piece = MaxMarkerBytes - IccOverhead;
        const int count = int((icc.size() + Piece - 1) / Piece);
        for (int i = 0; i < count && count < 256; ++i) {
            QByteArray block("ICC_PROFILE", 12);
            block += char(i + 1);
            block += char(count);
            block += icc.mid(qsizetype(i) * Piece, Piece);
            e.profile.push_back(block);
        }
    }

    // Strips of whole MCU rows (16 rows of colour, its chroma halved both
    // ways by default; 8 of grey), each one restart interval, whose length
    // in MCUs the file states in 16 bits.
    const int mcuSide = e.grey ? 8 : 16;
    const int mcusPerRow = (e.width + mcuSide - 1) / mcuSide;
    const qsizetype rowBytes = qsizetype(e.width) * (e.grey ? 1 : 4);
    int mcuRows = int(std::max<qsizetype>(1, StripBytes / (rowBytes * mcuSide)));
    mcuRows = std::min(mcuRows, 65535 / mcusPerRow);
    e.stripRows = mcuRows * mcuSide;
    e.strips = (e.height + e.stripRows - 1) / e.stripRows;
    if (e.strips < 3 || mcuRows < 1) {
        e.stripRows = e.height;
        e.strips = 1;
    } else {
        e.restartInterval = unsigned(mcuRows * mcusPerRow);
    }

    // Shared with the helpers: one that only starts once this call has
    // returned finds nothing left to claim and leaves.
    const auto work = std::make_shared<StripWork>();
    work->encoding = std::move(e);
    work->done.resize(size_t(work->encoding.strips));
    const Encoding &enc = work->encoding;
    const int helpers = std::min(enc.strips - 1, stripPool()->maxThreadCount());
    for (int i = 0; i < helpers; ++i) {
        stripPool()->start([work] {
            std::unique_lock lock(work->mutex);
            for (int index = work->claim(); index >= 0; index = work->claim()) {
                lock.unlock();
                work->encode(index);
                lock.lock();
            }
        });
    }

    Sink sink(device);
    QString error;
    std::unique_lock lock(work->mutex);
    for (int written = 0; written < enc.strips && work->error.isEmpty();) {
        if (work->done[size_t(written)].ready) {
            Encoded strip = std::move(work->done[size_t(written)]);
            lock.unlock();
            const unsigned char *begin = nullptr;
            qsizetype length = 0;
            unsigned char restart[2];
            if (!splice(enc, written, &strip, &begin, &length, restart))
                error = QStringLiteral("The picture could not be encoded.");
            else if ((written > 0 && !sink.put(restart, 2)) || !sink.put(begin, length))
                error = device->errorString();
            lock.lock();
            if (!error.isEmpty()) {
                work->next = enc.strips;
                break;
            }
            ++written;
        } else if (const int index = work->claim(); index >= 0) {
            lock.unlock();
            work->encode(index);
            lock.lock();
        } else {
            work->changed.wait(lock);
        }
    }
    // The helpers may still be reading the picture after a failure; a
    // helper that starts later finds nothing left to claim.
    work->changed.wait(lock, [&] { return work->busy == 0; });
    if (error.isEmpty())
        error = work->error;
    lock.unlock();
    if (error.isEmpty()) {
        const unsigned char end[2] = {0xFF, JPEG_EOI};
        if (!sink.put(end, 2))
            error = device->errorString();
    }
    return error;
}

namespace {

// What a decode tells its caller on the way: the picture, allocated with its
// facts but no pixels yet, and then how many rows are done. Either may be
// empty.
struct DecodeHooks {
    std::function<void(QImage &image)> started;
    std::function<void(int rows)> decoded;
};

// read() with hooks (see DecodeHooks); a file that fails part way gives no
// frames, whatever the hooks were told.
detail::Decoded decode(const uchar *data, qsizetype size, const DecodeHooks &hooks)
{
    jpeg_decompress_struct cinfo;
    detail::JpegError error;
    detail::useJpegError(cinfo, error);
    // Outside the setjmp scope: a jump back must not skip their destructors.
    QImage image;
    std::thread prefault;
    if (setjmp(error.jump)) {
        jpeg_destroy_decompress(&cinfo);
        if (prefault.joinable())
            prefault.join();
        return {};
    }
    jpeg_create_decompress(&cinfo);
    jpeg_mem_src(&cinfo, data, static_cast<unsigned long>(size));
    jpeg_save_markers(&cinfo, JPEG_COM, 0xFFFF);
    jpeg_save_markers(&cinfo, JPEG_APP0 + 2, 0xFFFF);
    jpeg_read_header(&cinfo, TRUE);
    const J_COLOR_SPACE space = cinfo.jpeg_color_space;
    if (space != JCS_GRAYSCALE && space != JCS_YCbCr && space != JCS_RGB) {
        jpeg_destroy_decompress(&cinfo);
        return {};
    }
    if (!detail::withinPixelBound(cinfo.image_width, cinfo.image_height)) {
        jpeg_destroy_decompress(&cinfo);
        return detail::failure(detail::tooLargeMessage(cinfo.image_width, cinfo.image_height));
    }
    const bool grey = space == JCS_GRAYSCALE;
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_BGRX;
#else
    cinfo.out_color_space = grey ? JCS_GRAYSCALE : JCS_EXT_XRGB;
#endif
    jpeg_calc_output_dimensions(&cinfo);
    image = QImage(int(cinfo.output_width), int(cinfo.output_height), grey ? QImage::Format_Grayscale8 : QImage::Format_RGB32);
    if (image.isNull()) {
        jpeg_destroy_decompress(&cinfo);
        return detail::failure(QStringLiteral("Not enough memory to load the picture."));
    }
    prefault = prefaulting(&image);
    // The saved markers live until the decompression ends.
    setResolution(&image, cinfo);
    for (jpeg_saved_marker_ptr m = cinfo.marker_list; m; m = m->next) {
        if (m->marker == JPEG_COM)
            addComment(&image, QByteArray(reinterpret_cast<const char *>(m->data), qsizetype(m->data_length)));
    }
    if (const QByteArray icc = iccProfile(cinfo.marker_list); !icc.isEmpty())
        image.setColorSpace(QColorSpace::fromIccProfile(icc));
    // From here on the rows are written through bits alone: whoever the
    // hooks gave the picture may be reading it.
    uchar *const bits = image.bits();
    const qsizetype stride = image.bytesPerLine();
    if (hooks.started)
        hooks.started(image);
    jpeg_start_decompress(&cinfo);
    constexpr int Batch = 16;
    JSAMPROW rows[Batch];
    while (cinfo.output_scanline < cinfo.output_height) {
        const int y = int(cinfo.output_scanline);
        const int n = std::min(Batch, int(cinfo.output_height) - y);
        for (int k = 0; k < n; ++k)
            rows[k] = bits + qsizetype(y + k) * stride;
        jpeg_read_scanlines(&cinfo, rows, JDIMENSION(n));
        if (hooks.decoded)
            hooks.decoded(int(cinfo.output_scanline));
    }
    jpeg_finish_decompress(&cinfo);
    jpeg_destroy_decompress(&cinfo);
    if (prefault.joinable())
        prefault.join();

    detail::Decoded decoded;
    decoded.frames.append({image, 0});
    return decoded;
}

} // namespace

detail::Decoded read(const uchar *data, qsizetype size)
{
    return decode(data, size, {});
}

bool transcode(const uchar *data, qsizetype size, int quality, const BandChange &change, bool upsideDown,
               QIODevice *device, QString *error)
{
    // How far the decoder is, for the strips that wait for their rows.
    struct Progress {
        std::mutex mutex;
        std::condition_variable changed;
        int rows = 0;
        bool over = false; // decoding ended, well or not
        int wanted = std::numeric_limits<int>::max(); // the fewest rows that a strip waits for
    } progress;
    // The waiting strips are woken only once one of them has its rows.
    const auto tell = [&progress](int rows, bool over) {
        bool wake = false;
        {
            const std::lock_guard lock(progress.mutex);
            progress.rows = rows;
            progress.over = over;
            if (over || rows >= progress.wanted) {
                wake = true;
                progress.wanted = std::numeric_limits<int>::max();
            }
        }
        if (wake)
            progress.changed.notify_all();
    };

    uchar *bits = nullptr;
    qsizetype stride = 0;
    RowFeed feed;
    feed.upsideDown = upsideDown;
    feed.waitFor = [&progress](int end) {
        std::unique_lock lock(progress.mutex);
        while (progress.rows < end && !progress.over) {
            progress.wanted = std::min(progress.wanted, end);
            progress.changed.wait(lock);
        }
        return progress.rows >= end;
    };
    // The decoded picture, held here for the writer: the decoder's own
    // handle goes when it returns, and the decoder writes the rows through
    // bits alone.
    QImage picture;
    if (change) {
        feed.change = [&](int first, int end) -> QString {
            uchar *const where = bits + qsizetype(first) * stride;
            // Handed over, so that the change finds the band held nowhere
            // else and works in place.
            const QImage changed = change(QImage(where, picture.width(), end - first, stride, picture.format()));
            if (changed.constBits() == where)
                return {};
            if (changed.size() != QSize(picture.width(), end - first) || changed.format() != picture.format())
                return QStringLiteral("The picture could not be changed.");
            const qsizetype bytes = std::min(stride, changed.bytesPerLine());
            for (int y = 0; y < end - first; ++y)
                std::memcpy(bits + qsizetype(first + y) * stride, changed.constScanLine(y), size_t(bytes));
            return {};
        };
    }

    // The writer starts once the picture exists, and encodes on other
    // threads while this one decodes.
    std::thread writer;
    QString written;
    DecodeHooks hooks;
    hooks.started = [&](QImage &image) {
        bits = image.bits();
        stride = image.bytesPerLine();
        picture = image;
        writer = std::thread([&written, &picture, quality, device, &feed] { written = write(picture, quality, device, feed); });
    };
    hooks.decoded = [&tell](int rows) { tell(rows, false); };
    const detail::Decoded decoded = decode(data, size, hooks);
    const bool whole = decoded.ok();
    tell(whole ? decoded.frames.constFirst().image.height() : 0, true);
    if (writer.joinable())
        writer.join();
    if (!whole)
        return false;
    *error = written;
    return true;
}

} // namespace tarnby::imaging::jpeg
