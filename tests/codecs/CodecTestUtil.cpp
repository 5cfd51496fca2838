#include "CodecTestUtil.h"

#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QBuffer>
#include <QFile>
#include <QImageIOHandler>

namespace codectest {

namespace {

Decoded decodeDevice(const QByteArray &format, QIODevice *device)
{
    Decoded result;
    auto handler = tarnby::imaging::codecs::createHandler(format);
    if (!handler) {
        result.error = QStringLiteral("no handler");
        return result;
    }
    handler->setDevice(device);
    const int count = handler->imageCount();
    if (count <= 0) {
        // Let read() report why there is nothing to read.
        QImage image;
        if (!handler->read(&image))
            result.error = tarnby::imaging::codecs::errorString(handler.get());
        else
            result.error = QStringLiteral("read() succeeded on a picture with no frames");
        return result;
    }
    // The loop of the picture layer: read, take the delay, move on.
    for (int i = 0; i < count; ++i) {
        QImage image;
        if (!handler->read(&image)) {
            result.error = tarnby::imaging::codecs::errorString(handler.get());
            if (result.error.isEmpty())
                result.error = QStringLiteral("read() failed without a message");
            return result;
        }
        result.frames.append(image);
        result.delaysMs.append(handler->nextImageDelay());
        handler->jumpToNextImage();
    }
    return result;
}

} // namespace

Decoded decode(const QByteArray &format, const QByteArray &data)
{
    QByteArray copy = data;
    QBuffer buffer(&copy);
    buffer.open(QIODevice::ReadOnly);
    return decodeDevice(format, &buffer);
}

Decoded decodeFile(const QByteArray &format, const QString &path)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        Decoded result;
        result.error = file.errorString();
        return result;
    }
    return decodeDevice(format, &file);
}

QByteArray encode(const QByteArray &format, const QImage &image, QString *error)
{
    auto handler = tarnby::imaging::codecs::createHandler(format);
    if (!handler) {
        if (error)
            *error = QStringLiteral("no handler");
        return {};
    }
    QByteArray out;
    QBuffer buffer(&out);
    buffer.open(QIODevice::WriteOnly);
    handler->setDevice(&buffer);
    if (!handler->write(image)) {
        if (error)
            *error = tarnby::imaging::codecs::errorString(handler.get());
        return {};
    }
    return out;
}

int maxChannelDifference(const QImage &a, const QImage &b)
{
    if (a.size() != b.size())
        return -1;
    const QImage x = a.convertToFormat(QImage::Format_ARGB32);
    const QImage y = b.convertToFormat(QImage::Format_ARGB32);
    int worst = 0;
    for (int row = 0; row < x.height(); ++row) {
        const auto *p = reinterpret_cast<const QRgb *>(x.constScanLine(row));
        const auto *q = reinterpret_cast<const QRgb *>(y.constScanLine(row));
        for (int col = 0; col < x.width(); ++col) {
            // Fully transparent pixels match whatever colour they carry.
            if (qAlpha(p[col]) == 0 && qAlpha(q[col]) == 0)
                continue;
            worst = qMax(worst, qAbs(qRed(p[col]) - qRed(q[col])));
            worst = qMax(worst, qAbs(qGreen(p[col]) - qGreen(q[col])));
            worst = qMax(worst, qAbs(qBlue(p[col]) - qBlue(q[col])));
            worst = qMax(worst, qAbs(qAlpha(p[col]) - qAlpha(q[col])));
        }
    }
    return worst;
}

} // namespace codectest
