#pragma once

#include <QImage>
#include <QRgb>
#include <QSize>

// The picture operations of the Image menu and of "tarnby-cli convert": each
// a pure function of a picture and its parameters, with no widgets.
//
// Every function takes the picture by value and returns the result. A caller
// that hands over its only reference (std::move) lets the point operations and
// the flips work in place, without a second copy of the pixels; a caller that
// keeps the original (undo) pays for one copy, as it must.
//
// Formats: the operations work on every format the picture layer loads. A
// paletted picture (1-bit QImage::Format_Mono/MonoLSB, 4- and 8-bit
// Format_Indexed8) stays paletted wherever the operation allows it: flips,
// turns, resize without resampling and rotation by other angles move indices;
// invert, stretch, brightness and contrast change the colour table, not the
// pixels. Resampling makes new colours and so gives a 32-bit picture (a
// greyscale palette gives an 8-bit greyscale one). Greyscale8, RGB32 and
// ARGB32 keep their format; other direct formats (RGB888, 16-bit greyscale,
// 64-bit colour, ...) are worked at 8 bits a channel and converted back.
//
// Large pictures are processed in bands of rows on every core, on a thread
// pool of their own (not the global one, which Qt uses to paint); the
// functions may be called from any thread, including a pool thread (the
// calling thread takes part in the work).
//
// A caller that already keeps every core busy with parts of a picture of its
// own (bands of rows it decodes and encodes) asks, with a SerialScope on the
// thread, that the operations called there do their bands on that thread
// alone rather than hand them to the pool.
//
// A null picture gives a null picture. Rotate and resize give a null picture
// when the result would exceed MaxResultPixels or a side would exceed
// MaxSide; callers report that as "too large".
namespace tarnby::edit {

inline constexpr qint64 MaxResultPixels = 256LL * 1024 * 1024; // the picture layer's load bound
inline constexpr int MaxSide = 32767;

// Brightness and contrast amounts are in tenths of a percent of the full
// intensity range, from -1000 to +1000; values outside are clamped. Tenths
// keep the amount an integer (as the adjustment dialog and the command line
// pass it) while giving a step finer than one level of an 8-bit channel
// (1000 steps across 256 levels), so no two neighbouring settings of a
// slider look alike, and the signed range reads naturally: -1000 is all the
// way down, 0 is no change, +1000 all the way up.
inline constexpr int MinAmount = -1000;
inline constexpr int MaxAmount = 1000;

// While it lives, the operations called on its thread do all their bands on
// that thread. Scopes nest.
class SerialScope
{
public:
    SerialScope();
    ~SerialScope();
    SerialScope(const SerialScope &) = delete;
    SerialScope &operator=(const SerialScope &) = delete;
};

// Turns the picture upside down (top row last).
QImage flip(QImage image);

// Mirrors the picture left to right.
QImage reverse(QImage image);

// Inverts each colour channel (c becomes 255 - c); alpha is kept.
QImage invert(QImage image);

// Stretches each colour channel on its own so that the darkest level used
// becomes 0 and the brightest 255 (a contrast stretch to the full range). A
// channel that uses one level only, or already spans 0 to 255, is unchanged.
QImage stretchIntensity(QImage image);

// Adds amount / 1000 of the full range (255) to every channel, clamped:
// +1000 makes the picture white, -1000 black, 0 changes nothing.
QImage changeBrightness(QImage image, int amount);

// Scales each channel's distance from mid-grey (128): a negative amount
// multiplies it by (1000 + amount) / 1000, so -1000 gives flat grey; a
// positive one by 1000 / (1000 - amount), so +1000 leaves only black and
// white. 0 changes nothing.
QImage changeContrast(QImage image, int amount);

enum class RotateFit {
    KeepSize, // the picture keeps its width and height; corners that turn out of it are cut
    Enlarge,  // the picture grows so that no corner is cut
};

// Rotates clockwise (as seen on screen) by hundredths of a degree; negative
// angles turn anticlockwise. The area that the turned picture leaves
// uncovered takes fill (alpha included, for pictures with alpha). Angles that
// are multiples of 90 degrees turn the pixels exactly, and the result is the
// turned picture whatever fit says: a quarter turn swaps width and height
// (the turned picture fills its new frame, so nothing is cut and nothing is
// filled). Other angles sample the source bilinearly, except paletted
// pictures, which take the nearest pixel so as to keep their palette (the
// fill colour is added to the palette when it is not in it and there is
// room).
QImage rotate(QImage image, int hundredthsOfDegree, RotateFit fit, QRgb fill);

enum class Resampling {
    None,   // each new pixel copies the nearest old one: no new colours
    Smooth, // averaging when shrinking, bilinear when growing
};

// Resizes to size (each side 1 to MaxSide).
QImage resize(QImage image, QSize size, Resampling resampling);

} // namespace tarnby::edit
