#pragma once

#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QBuffer>
#include <QCoreApplication>
#include <QImage>
#include <QImageIOHandler>
#include <QImageReader>

#include <cstdint>
#include <memory>

// Shared body of the codec fuzz targets: read every frame of the input (at
// most a few dozen; later ones run the same code) the way the picture layer
// does. A small allocation limit keeps each run fast.
inline int fuzzInitialize(int *argc, char ***argv)
{
    static QCoreApplication app(*argc, *argv); // for Qt's icon plugin
    QImageReader::setAllocationLimit(64);
    return 0;
}

inline int fuzzOwnCodec(const QByteArray &format, const uint8_t *data, size_t size)
{
    QByteArray bytes = QByteArray::fromRawData(reinterpret_cast<const char *>(data), qsizetype(size));
    QBuffer buffer(&bytes);
    buffer.open(QIODevice::ReadOnly);
    std::unique_ptr<QImageIOHandler> handler = tarnby::imaging::codecs::createHandler(format);
    if (!handler)
        return 0;
    handler->setDevice(&buffer);
    const int frames = qBound(1, handler->imageCount(), 48);
    QImage image;
    for (int i = 0; i < frames && handler->read(&image); ++i) {
        handler->nextImageDelay();
        handler->jumpToNextImage();
    }
    return 0;
}
