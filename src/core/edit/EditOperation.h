#pragma once

#include "core/edit/EditProgress.h"
#include "core/edit/PictureEdits.h"
#include "core/edit/ShapeDrawing.h"
#include "core/edit/TextDrawing.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QString>

#include <optional>

// One picture operation with its parameters, as a value: what the command
// line runs in order, what the picture window applies and what the undo
// history replays.
namespace tarnby::edit {

struct EditOperation {
    enum class Kind { Flip, Reverse, Invert, Stretch, Brightness, Contrast, Rotate, Resize, Shape, Text };

    Kind kind = Kind::Flip;
    int amount = 0; // Brightness, Contrast: tenths of a percent; Rotate: hundredths of a degree
    RotateFit fit = RotateFit::KeepSize;   // Rotate
    QRgb fill = qRgb(255, 255, 255);        // Rotate
    QSize size;                             // Resize
    Resampling resampling = Resampling::None; // Resize
    ShapeStyle shape;                       // Shape
    QRectF place;                           // Shape: where, in the picture's pixels; Text: its top left
    TextOverlay text;                       // Text

    static EditOperation flip() { return of(Kind::Flip); }
    static EditOperation reverse() { return of(Kind::Reverse); }
    static EditOperation invert() { return of(Kind::Invert); }
    static EditOperation stretch() { return of(Kind::Stretch); }
    static EditOperation brightness(int amount) { return of(Kind::Brightness, amount); }
    static EditOperation contrast(int amount) { return of(Kind::Contrast, amount); }
    static EditOperation rotate(int hundredths, RotateFit fit, QRgb fill)
    {
        EditOperation op = of(Kind::Rotate, hundredths);
        op.fit = fit;
        op.fill = fill;
        return op;
    }
    static EditOperation resize(QSize size, Resampling resampling)
    {
        EditOperation op = of(Kind::Resize);
        op.size = size;
        op.resampling = resampling;
        return op;
    }
    static EditOperation stamp(const ShapeStyle &style, const QRectF &place)
    {
        EditOperation op = of(Kind::Shape);
        op.shape = style;
        op.place = place;
        return op;
    }
    static EditOperation write(const TextOverlay &overlay, QPointF at)
    {
        EditOperation op = of(Kind::Text);
        op.text = overlay;
        op.place = QRectF(at, QSizeF());
        return op;
    }

private:
    static EditOperation of(Kind kind, int amount = 0)
    {
        EditOperation op;
        op.kind = kind;
        op.amount = amount;
        return op;
    }
};

// Runs the operation (see PictureEdits.h, ShapeDrawing.h and TextDrawing.h);
// a null result means "too large" (or, for a shape or text, an unknown code).
QImage apply(const EditOperation &operation, QImage image);

// The operation that gives back exactly the pixels of before, once operation
// has been applied to it, or nothing when only a copy can (resampling, clamped
// levels, ...). Flips, inverting in the formats worked directly and quarter
// turns undo themselves this way.
std::optional<EditOperation> exactInverse(const EditOperation &operation, const QImage &before);

// Whether the operation changes each row of an 8-bit grey or 32-bit picture
// on its own, so that it can be made band by band while the picture is
// still being decoded (see imaging::BandChange): invert, brightness,
// contrast and reverse. Not the stretch, which first looks at the whole
// picture, nor the flip, which moves rows (a caller can turn the rows
// around as it writes them: a flip changes nothing within a row, so it
// comes out the same before or after the others).
bool changesRowsAlone(const EditOperation &operation);

// Applies the operation to every frame of picture and brings its facts up to
// date (width, height, memory size). The depth it will be saved at
// (info.bitsPerPixel) stays the file's; the colour count stays the loaded
// picture's (counting costs a pass over every pixel). On failure picture is untouched,
// errorString says why, and the result is false.
//
// Every frame: the frames of an animation or the pages of a document are one
// picture, and a turn, a new size or a stamp on some of them only would
// break it apart.
//
// With progress, the work reports to it (its expected passes are set here)
// and stops when it is cancelled: the result is then false, picture is
// untouched and errorString says "Cancelled.". The frames are then worked on
// copies, which costs nothing when the caller keeps the picture anyway (to
// undo).
bool applyToPicture(const EditOperation &operation, imaging::Picture *picture, QString *errorString,
                    EditProgress *progress = nullptr);

// Brings picture.info's width, height and memory size up to date after its
// first frame changed.
void refreshInfo(imaging::Picture *picture);

} // namespace tarnby::edit
