#pragma once

#include <QByteArray>
#include <QList>
#include <QString>

#include <memory>

class QIODevice;
class QImageIOHandler;

// The picture formats that Tarnby reads or writes with codecs of its own, for
// want of a maintained library: MSP, GEM IMG, IFF/ILBM, ANI, CLP and FLC to
// read, CUT, MAC and EPS (and MSP) to write, and the Photoshop colour modes
// that ImageMagick reads wrongly or not at all (PSD), and uncompressed DICOM,
// of which ImageMagick 6 reads nothing. Each format is one QImageIOHandler;
// the picture layer picks them by lower-case format name ("msp", "img",
// "iff", "ani", "clp", "flc", "cut", "mac", "eps", "psd", "dcm").
namespace tarnby::imaging::codecs {

// A new handler for format, or nullptr when we have no codec of our own for
// it. The caller sets the device and calls read() or write().
//
// Animated formats (ani, flc) hold several frames: imageCount() gives their
// number, each read() returns the next frame and nextImageDelay() the time
// in milliseconds that frame shows. A jumpToNextImage() right after a read()
// only confirms the step read() took, so both "read, jump, read" and
// "read, read" loops see every frame once.
//
// Every handler reads at most MaxFileBytes and refuses pictures over
// 256 megapixels before allocating them; a refused or damaged file makes
// read() return false with a message in errorString().
std::unique_ptr<QImageIOHandler> createHandler(const QByteArray &format);

// Each picture read carries the file's own bits per pixel as the text
// "BitsPerPixel" (QImage::text), for the properties of the picture.
//
// Why the last read() or write() of a handler made by createHandler failed;
// empty when it did not fail or the handler is not one of ours.
QString errorString(const QImageIOHandler *handler);

QList<QByteArray> readableFormats();
QList<QByteArray> writableFormats();

// The format of the data on device, by peeking only (the read position is
// left where it was); empty when none of our codecs recognises it.
QByteArray sniff(QIODevice *device);

} // namespace tarnby::imaging::codecs
