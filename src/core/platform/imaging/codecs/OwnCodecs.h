#pragma once

#include <QByteArray>
#include <QList>

#include <memory>

class QIODevice;
class QImageIOHandler;

// The picture formats that Tarnby reads or writes with codecs of its own, for
// want of a maintained library: MSP, GEM IMG, IFF/ILBM, ANI, CLP and FLC to
// read, CUT, MAC and EPS (and MSP) to write. Each format is one
// QImageIOHandler; the picture layer picks them by lower-case format name
// ("msp", "img", "iff", "ani", "clp", "flc", "cut", "mac", "eps").
namespace tarnby::imaging::codecs {

// A new handler for format, or nullptr when we have no codec of our own for
// it. The caller sets the device and calls read() or write().
std::unique_ptr<QImageIOHandler> createHandler(const QByteArray &format);

QList<QByteArray> readableFormats();
QList<QByteArray> writableFormats();

// The format of the data on device, by peeking only (the read position is
// left where it was); empty when none of our codecs recognises it.
QByteArray sniff(QIODevice *device);

} // namespace tarnby::imaging::codecs
