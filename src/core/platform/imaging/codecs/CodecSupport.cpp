#include "core/platform/imaging/codecs/CodecSupport.h"

#include <QIODevice>
#include <QImageReader>

namespace tarnby::imaging::codecs {

bool ByteCursor::seek(qsizetype pos)
{
    if (m_failed || pos < 0 || pos > m_data.size())
        return fail();
    m_pos = pos;
    return true;
}

quint8 ByteCursor::u8()
{
    if (remaining() < 1) {
        fail();
        return 0;
    }
    return quint8(m_data[m_pos++]);
}

quint16 ByteCursor::u16le()
{
    if (remaining() < 2) {
        fail();
        return 0;
    }
    const auto *p = reinterpret_cast<const uchar *>(m_data.data()) + m_pos;
    m_pos += 2;
    return quint16(p[0] | (p[1] << 8));
}

quint16 ByteCursor::u16be()
{
    if (remaining() < 2) {
        fail();
        return 0;
    }
    const auto *p = reinterpret_cast<const uchar *>(m_data.data()) + m_pos;
    m_pos += 2;
    return quint16((p[0] << 8) | p[1]);
}

quint32 ByteCursor::u32le()
{
    if (remaining() < 4) {
        fail();
        return 0;
    }
    const auto *p = reinterpret_cast<const uchar *>(m_data.data()) + m_pos;
    m_pos += 4;
    return quint32(p[0]) | (quint32(p[1]) << 8) | (quint32(p[2]) << 16) | (quint32(p[3]) << 24);
}

quint32 ByteCursor::u32be()
{
    if (remaining() < 4) {
        fail();
        return 0;
    }
    const auto *p = reinterpret_cast<const uchar *>(m_data.data()) + m_pos;
    m_pos += 4;
    return (quint32(p[0]) << 24) | (quint32(p[1]) << 16) | (quint32(p[2]) << 8) | quint32(p[3]);
}

QByteArrayView ByteCursor::bytes(qsizetype count)
{
    if (count < 0 || remaining() < count) {
        fail();
        return {};
    }
    QByteArrayView view = m_data.sliced(m_pos, count);
    m_pos += count;
    return view;
}

bool readAllBounded(QIODevice *device, QByteArray *data, QString *error)
{
    data->clear();
    if (!device || !device->isReadable()) {
        *error = QStringLiteral("The file cannot be read");
        return false;
    }
    // A sequential device has no size; read in slices and stop at the limit.
    if (!device->isSequential()) {
        const qint64 left = device->size() - device->pos();
        if (left > MaxFileBytes) {
            *error = QStringLiteral("The file is too large for its picture format");
            return false;
        }
    }
    while (true) {
        const QByteArray part = device->read(1 << 20);
        if (part.isEmpty())
            break;
        if (data->size() + part.size() > MaxFileBytes) {
            data->clear();
            *error = QStringLiteral("The file is too large for its picture format");
            return false;
        }
        data->append(part);
    }
    if (device->isSequential() ? false : !device->atEnd()) {
        *error = QStringLiteral("The file could not be read to its end");
        return false;
    }
    return true;
}

QByteArray peekBytes(QIODevice *device, qint64 count)
{
    if (!device || !device->isReadable())
        return {};
    return device->peek(count);
}

bool allocatePicture(QSize size, QImage::Format format, QImage *image, QString *error)
{
    if (size.width() <= 0 || size.height() <= 0) {
        *error = QStringLiteral("The picture has no width or height");
        return false;
    }
    if (qint64(size.width()) * size.height() > MaxPixels) {
        *error = QStringLiteral("The picture is too large (%1 x %2 pixels)").arg(size.width()).arg(size.height());
        return false;
    }
    if (!QImageIOHandler::allocateImage(size, format, image)) {
        *error = QStringLiteral("Not enough memory for a picture of %1 x %2 pixels").arg(size.width()).arg(size.height());
        return false;
    }
    return true;
}

bool OwnHandler::jumpToNextImage()
{
    if (m_readSinceJump) {
        m_readSinceJump = false;
        return m_nextFrame < frameCount();
    }
    return jumpToImage(m_nextFrame + 1);
}

bool OwnHandler::jumpToImage(int imageNumber)
{
    m_readSinceJump = false;
    if (imageNumber < 0 || imageNumber >= frameCount())
        return false;
    m_nextFrame = imageNumber;
    return true;
}

int OwnHandler::nextImageDelay() const
{
    const int index = m_lastRead >= 0 ? m_lastRead : m_nextFrame;
    return index < frameCount() ? frameDelay(index) : 0;
}

int OwnHandler::takeFrame()
{
    const int count = frameCount();
    if (m_nextFrame >= count) {
        fail(count > 0 ? QStringLiteral("No more frames in the picture") : QStringLiteral("The picture has no frames"));
        return -1;
    }
    m_lastRead = m_nextFrame++;
    m_readSinceJump = true;
    return m_lastRead;
}

bool OwnHandler::fail(const QString &message)
{
    m_error = message;
    return false;
}

bool OwnHandler::supportsOption(ImageOption option) const
{
    return option == Size || (option == ImageFormat && readFormat() != QImage::Format_Invalid)
        || (option == Animation && isAnimation());
}

QVariant OwnHandler::option(ImageOption option) const
{
    switch (option) {
    case Size:
        if (const std::optional<QSize> size = headerSize())
            return *size;
        return {};
    case ImageFormat:
        return readFormat() != QImage::Format_Invalid ? QVariant(int(readFormat())) : QVariant();
    case Animation:
        return isAnimation();
    default:
        return {};
    }
}

bool OwnHandler::readWholePicture(QByteArray *data)
{
    clearError();
    if (takeFrame() < 0)
        return false;
    QString error;
    if (!readAllBounded(device(), data, &error))
        return fail(error);
    return true;
}

bool AnimationHandler::load() const
{
    if (!m_loaded) {
        m_loaded = true;
        if (readAllBounded(device(), &m_data, &m_loadError))
            m_loadError = index();
        if (!m_loadError.isEmpty())
            m_delays.clear();
    }
    return m_loadError.isEmpty();
}

int AnimationHandler::frameCount() const
{
    return load() ? int(m_delays.size()) : 0;
}

int AnimationHandler::frameDelay(int index) const
{
    return load() && index >= 0 && index < m_delays.size() ? m_delays[index] : 0;
}

int AnimationHandler::beginFrame()
{
    clearError();
    if (!load()) {
        fail(m_loadError);
        return -1;
    }
    return takeFrame();
}

} // namespace tarnby::imaging::codecs

namespace tarnby::imaging::codecs {

QImage toWhiteOnBits(const QImage &image)
{
    QImage mono = image.convertToFormat(QImage::Format_Mono);
    if (mono.isNull())
        return mono;
    // Qt picks the order of the two colours itself; bring it to black = 0,
    // white = 1 so that writers can copy bits unchanged.
    const QList<QRgb> table = mono.colorTable();
    const bool zeroIsLighter = table.size() >= 2 && qGray(table[0]) > qGray(table[1]);
    if (table.size() < 2 || zeroIsLighter || qGray(table[1]) < 128) {
        QImage fixed(mono.size(), QImage::Format_Mono);
        if (fixed.isNull())
            return fixed;
        fixed.setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
        for (int y = 0; y < mono.height(); ++y) {
            for (int x = 0; x < mono.width(); ++x) {
                const QRgb c = table.value(mono.pixelIndex(x, y), qRgb(255, 255, 255));
                fixed.setPixel(x, y, qGray(c) >= 128 ? 1 : 0);
            }
        }
        fixed.setDotsPerMeterX(image.dotsPerMeterX());
        fixed.setDotsPerMeterY(image.dotsPerMeterY());
        return fixed;
    }
    return mono;
}

bool allocateMono(QSize size, QImage *image, QString *error)
{
    if (!allocatePicture(size, QImage::Format_Mono, image, error))
        return false;
    image->setColorTable({qRgb(0, 0, 0), qRgb(255, 255, 255)});
    return true;
}

} // namespace tarnby::imaging::codecs
