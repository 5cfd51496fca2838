#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QImage>
#include <QImageIOHandler>
#include <QString>

#include <optional>
#include <utility>

#include "core/platform/imaging/PictureLayer.h"

class QIODevice;

// Shared pieces of our own picture codecs: the limits every decoder obeys, a
// bounds-checked byte cursor, bounded reads from a device and the common base
// of the handlers (error text and frame stepping).
namespace tarnby::imaging::codecs {

// A picture beyond the picture layer's pixel bound is refused before anything
// is allocated; the codecs obey the same bound as every other route.
using imaging::MaxPixels;
// No file of these formats is legitimately larger than this; reading stops
// with an error instead of pulling an unbounded stream into memory.
inline constexpr qint64 MaxFileBytes = 256LL * 1024 * 1024;
// An animation that claims more frames than this is refused.
inline constexpr int MaxFrames = 16384;

// Reads little- and big-endian integers from a byte array without ever
// reading past its end. A read beyond the end returns 0 and sets the cursor
// to failed; callers check ok() after each group of reads.
class ByteCursor
{
public:
    ByteCursor() = default;
    explicit ByteCursor(QByteArrayView data, qsizetype pos = 0) : m_data(data), m_pos(pos)
    {
        if (pos < 0 || pos > data.size())
            m_failed = true;
    }

    // The cursor only views its bytes: a temporary would be gone before the
    // first read.
    explicit ByteCursor(QByteArray &&, qsizetype = 0) = delete;

    bool ok() const { return !m_failed; }
    bool atEnd() const { return m_pos >= m_data.size(); }
    qsizetype pos() const { return m_pos; }
    qsizetype size() const { return m_data.size(); }
    qsizetype remaining() const { return m_failed ? 0 : m_data.size() - m_pos; }
    QByteArrayView data() const { return m_data; }

    bool seek(qsizetype pos);
    bool skip(qsizetype count) { return count >= 0 && count <= remaining() ? seek(m_pos + count) : fail(); }

    quint8 u8();
    qint8 i8() { return qint8(u8()); }
    quint16 u16le();
    quint16 u16be();
    qint16 i16le() { return qint16(u16le()); }
    qint16 i16be() { return qint16(u16be()); }
    quint32 u32le();
    quint32 u32be();
    // count bytes from the current position, or an empty view (and failed)
    // when fewer remain.
    QByteArrayView bytes(qsizetype count);

private:
    bool fail()
    {
        m_failed = true;
        return false;
    }

    QByteArrayView m_data;
    qsizetype m_pos = 0;
    bool m_failed = false;
};

// Reads what remains of device, refusing more than MaxFileBytes. Sets error
// and returns false on a read failure or an oversized stream.
bool readAllBounded(QIODevice *device, QByteArray *data, QString *error);

// The first count bytes of device without moving its read position.
QByteArray peekBytes(QIODevice *device, qint64 count);

// The header at the start of device, peeked (the read position stays), when
// it parses and is valid. Header has a static Size, a static
// parse(ByteCursor &) and isValid(). The peeked bytes live here, for as long
// as the cursor that views them.
template<typename Header>
std::optional<Header> peekHeader(QIODevice *device)
{
    const QByteArray head = peekBytes(device, Header::Size);
    ByteCursor cursor(head);
    const Header header = Header::parse(cursor);
    if (!cursor.ok() || !header.isValid())
        return std::nullopt;
    return header;
}

// Allocates image of size and format after checking the dimensions against
// MaxPixels and Qt's own allocation limit; sets error on refusal.
bool allocatePicture(QSize size, QImage::Format format, QImage *image, QString *error);

// The base of every handler of ours. It keeps the last error as text (read by
// the picture layer through codecs::errorString()) and the position in a
// sequence of frames.
//
// Frame stepping accepts both ways Qt drives a handler: read() returns the
// current frame and moves on (the way an animation player calls it), and a
// jumpToNextImage() right after a read() only confirms that step instead of
// skipping a frame. A jumpToNextImage() without a read() before it skips one.
class OwnHandler : public QImageIOHandler
{
public:
    QString errorString() const { return m_error; }

    int imageCount() const override { return frameCount(); }
    int currentImageNumber() const override { return m_nextFrame; }
    bool jumpToNextImage() override;
    bool jumpToImage(int imageNumber) override;
    int nextImageDelay() const override;
    int loopCount() const override { return frameCount() > 1 ? -1 : 0; }
    // Size when headerSize() knows it, ImageFormat when readFormat() names
    // one, Animation for the animation readers.
    bool supportsOption(ImageOption option) const override;
    QVariant option(ImageOption option) const override;

protected:
    // The picture's size as its header gives it, found without decoding.
    virtual std::optional<QSize> headerSize() const { return std::nullopt; }
    // The image format read() produces, as far as it is known without
    // decoding; Format_Invalid when it is not.
    virtual QImage::Format readFormat() const { return QImage::Format_Invalid; }
    virtual bool isAnimation() const { return false; }

    // The start of read() for a format that holds one picture: clears the
    // error, takes the only frame and reads the whole file (bounded) into
    // data. False, with the error set, when there is nothing to read.
    bool readWholePicture(QByteArray *data);

    // The start of read() for a format whose one picture follows a header of
    // fixed layout: readWholePicture() into data, then the Header (as
    // peekHeader() wants it) parsed from the start of data into header, with
    // cursor viewing data just past it. False, with the error set, when there
    // is nothing to read, when the file ends inside the header ("<what> is
    // shorter than its header") or when problem(header), what is wrong with
    // the header, is not empty.
    template<typename Header, typename Problem>
    bool readPictureHeader(QByteArray *data, ByteCursor *cursor, Header *header, const QString &what,
                           Problem problem)
    {
        if (!readWholePicture(data))
            return false;
        *cursor = ByteCursor(*data);
        *header = Header::parse(*cursor);
        if (!cursor->ok())
            return fail(what + QStringLiteral(" is shorter than its header"));
        const QString why = problem(std::as_const(*header));
        return why.isEmpty() || fail(why);
    }

    // Number of frames; 1 for still pictures. May parse the header on demand.
    virtual int frameCount() const { return 1; }
    // Delay of frame index in milliseconds.
    virtual int frameDelay(int index) const { return 0; }

    // Called by read() implementations: the frame to decode now, or -1 (and
    // an error) when the sequence is exhausted. Moves to the next frame.
    int takeFrame();

    bool fail(const QString &message);
    void clearError() { m_error.clear(); }
    // canRead(): when the data was recognised, names the handler's format
    // on it, as Qt expects of canRead().
    bool claim(bool recognised, const char *format) const
    {
        if (recognised)
            setFormat(format);
        return recognised;
    }

private:
    QString m_error;
    int m_nextFrame = 0;
    int m_lastRead = -1;
    bool m_readSinceJump = false;
};

// The base of our animation readers. The whole file is read and indexed
// once, on first need; read() then decodes the frame beginFrame() names.
class AnimationHandler : public OwnHandler
{
protected:
    bool isAnimation() const override { return true; }
    int frameCount() const final;
    int frameDelay(int index) const final;

    // Reads the file and indexes it once; false when it is not usable.
    bool load() const;
    // The start of read(): the frame to decode now, or -1 with the error set.
    int beginFrame();
    // The whole file; valid from the call to index() on.
    const QByteArray &fileData() const { return m_data; }

    // Indexes fileData() into the reader's own frame list, calling addFrame()
    // for each frame in playing order. Returns why the file cannot be used,
    // or an empty text when it can.
    virtual QString index() const = 0;
    void addFrame(int delayMs) const { m_delays.append(delayMs); }

private:
    mutable bool m_loaded = false;
    mutable QString m_loadError; // empty when the file is usable
    mutable QByteArray m_data;
    mutable QList<int> m_delays;
};

} // namespace tarnby::imaging::codecs

namespace tarnby::imaging::codecs {

// image as a 1-bit picture (Format_Mono) in which a set bit is white and a
// clear bit black, dithered when image has more than two colours.
QImage toWhiteOnBits(const QImage &image);

// The text key under which readers note the bits per pixel of the file,
// which may differ from the depth of the QImage (four GEM planes arrive as
// an 8-bit indexed picture, HAM as 32-bit colour).
inline constexpr char BitsPerPixelKey[] = "BitsPerPixel";
inline void noteFileBits(QImage *image, int bits)
{
    image->setText(QLatin1String(BitsPerPixelKey), QString::number(bits));
}

// A one-bit picture of size whose set bits show white, ready to be filled
// row by row; false and error when it cannot be allocated.
bool allocateMono(QSize size, QImage *image, QString *error);

} // namespace tarnby::imaging::codecs
