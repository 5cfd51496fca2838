#include "core/platform/imaging/codecs/OwnCodecs.h"

#include "core/platform/imaging/codecs/AniHandler.h"
#include "core/platform/imaging/codecs/ClpHandler.h"
#include "core/platform/imaging/codecs/CutHandler.h"
#include "core/platform/imaging/codecs/DicomHandler.h"
#include "core/platform/imaging/codecs/EpsHandler.h"
#include "core/platform/imaging/codecs/FlcHandler.h"
#include "core/platform/imaging/codecs/GemImgHandler.h"
#include "core/platform/imaging/codecs/IlbmHandler.h"
#include "core/platform/imaging/codecs/MacPaintHandler.h"
#include "core/platform/imaging/codecs/MspHandler.h"
#include "core/platform/imaging/codecs/PsdHandler.h"

#include <QIODevice>

namespace tarnby::imaging::codecs {

std::unique_ptr<QImageIOHandler> createHandler(const QByteArray &format)
{
    const QByteArray name = format.toLower();
    std::unique_ptr<QImageIOHandler> handler;
    if (name == "msp")
        handler = std::make_unique<MspHandler>();
    else if (name == "img")
        handler = std::make_unique<GemImgHandler>();
    else if (name == "iff" || name == "ilbm" || name == "lbm")
        handler = std::make_unique<IlbmHandler>();
    else if (name == "ani")
        handler = std::make_unique<AniHandler>();
    else if (name == "clp")
        handler = std::make_unique<ClpHandler>();
    else if (name == "flc" || name == "fli")
        handler = std::make_unique<FlcHandler>();
    else if (name == "cut")
        handler = std::make_unique<CutHandler>();
    else if (name == "mac")
        handler = std::make_unique<MacPaintHandler>();
    else if (name == "eps")
        handler = std::make_unique<EpsHandler>();
    else if (name == "psd")
        handler = std::make_unique<PsdHandler>();
    else if (name == "dcm")
        handler = std::make_unique<DicomHandler>();
    if (handler)
        handler->setFormat(name);
    return handler;
}

QString errorString(const QImageIOHandler *handler)
{
    const auto *own = dynamic_cast<const OwnHandler *>(handler);
    return own ? own->errorString() : QString();
}

QList<QByteArray> readableFormats()
{
    return {"msp", "img", "iff", "ani", "clp", "flc", "cut", "mac", "psd", "dcm"};
}

QList<QByteArray> writableFormats()
{
    return {"msp", "cut", "mac", "eps"};
}

QByteArray sniff(QIODevice *device)
{
    if (!device || !device->isReadable())
        return {};
    // Formats with a signature first; those recognised only by a plausible
    // header come last, so that they never claim a file a signature names.
    if (AniHandler::canRead(device))
        return "ani";
    if (IlbmHandler::canRead(device))
        return "iff";
    if (MspHandler::canRead(device))
        return "msp";
    if (PsdHandler::canRead(device))
        return "psd";
    if (DicomHandler::canRead(device))
        return "dcm";
    if (FlcHandler::canRead(device))
        return "flc";
    if (ClpHandler::canRead(device))
        return "clp";
    if (MacPaintHandler::canRead(device))
        return "mac";
    if (GemImgHandler::canRead(device))
        return "img";
    if (CutHandler::canRead(device))
        return "cut";
    return {};
}

} // namespace tarnby::imaging::codecs
