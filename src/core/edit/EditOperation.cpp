#include "EditOperation.h"

namespace tarnby::edit {

QImage apply(const EditOperation &operation, QImage image)
{
    switch (operation.kind) {
    case EditOperation::Kind::Flip:
        return flip(std::move(image));
    case EditOperation::Kind::Reverse:
        return reverse(std::move(image));
    case EditOperation::Kind::Invert:
        return invert(std::move(image));
    case EditOperation::Kind::Stretch:
        return stretchIntensity(std::move(image));
    case EditOperation::Kind::Brightness:
        return changeBrightness(std::move(image), operation.amount);
    case EditOperation::Kind::Contrast:
        return changeContrast(std::move(image), operation.amount);
    case EditOperation::Kind::Rotate:
        return rotate(std::move(image), operation.amount, operation.fit, operation.fill);
    case EditOperation::Kind::Resize:
        return resize(std::move(image), operation.size, operation.resampling);
    case EditOperation::Kind::Shape:
        if (!drawShape(&image, operation.shape, operation.place))
            return QImage();
        return image;
    case EditOperation::Kind::Text:
        if (drawText(&image, operation.text, operation.place.topLeft()).isEmpty())
            return QImage();
        return image;
    }
    return QImage();
}

std::optional<EditOperation> exactInverse(const EditOperation &operation, const QImage &before)
{
    switch (operation.kind) {
    case EditOperation::Kind::Flip:
    case EditOperation::Kind::Reverse:
        return operation;
    case EditOperation::Kind::Invert:
        // Other formats are inverted at 8 bits a channel and converted back,
        // which need not give back their finer levels.
        switch (before.format()) {
        case QImage::Format_Mono:
        case QImage::Format_MonoLSB:
        case QImage::Format_Indexed8:
        case QImage::Format_Grayscale8:
        case QImage::Format_RGB32:
        case QImage::Format_ARGB32:
            return operation;
        default:
            return std::nullopt;
        }
    case EditOperation::Kind::Rotate:
        if (operation.amount % 9000 == 0)
            return EditOperation::rotate(-operation.amount, operation.fit, operation.fill);
        return std::nullopt;
    case EditOperation::Kind::Brightness:
    case EditOperation::Kind::Contrast:
        if (operation.amount == 0)
            return operation;
        return std::nullopt;
    case EditOperation::Kind::Stretch:
    case EditOperation::Kind::Resize:
    case EditOperation::Kind::Shape:
    case EditOperation::Kind::Text:
        return std::nullopt;
    }
    return std::nullopt;
}

bool changesRowsAlone(const EditOperation &operation)
{
    switch (operation.kind) {
    case EditOperation::Kind::Reverse:
    case EditOperation::Kind::Invert:
    case EditOperation::Kind::Brightness:
    case EditOperation::Kind::Contrast:
        return true;
    case EditOperation::Kind::Flip:
    case EditOperation::Kind::Stretch:
    case EditOperation::Kind::Rotate:
    case EditOperation::Kind::Resize:
    case EditOperation::Kind::Shape:
    case EditOperation::Kind::Text:
        return false;
    }
    return false;
}

void refreshInfo(imaging::Picture *picture)
{
    if (picture->isNull())
        return;
    const QImage first = picture->frames.constFirst().image;
    imaging::PictureInfo &info = picture->info;
    info.width = first.width();
    info.height = first.height();
    info.sizeInMemory = (qint64(info.width) * info.bitsPerPixel + 31) / 32 * 4 * info.height;
}

namespace {

// The banded passes one frame takes (see PictureEdits.cpp): the stretch
// first finds each channel's range.
int passesPerFrame(EditOperation::Kind kind)
{
    return kind == EditOperation::Kind::Stretch ? 2 : 1;
}

} // namespace

bool applyToPicture(const EditOperation &operation, imaging::Picture *picture, QString *errorString,
                    EditProgress *progress)
{
    if (picture->isNull()) {
        *errorString = QStringLiteral("There is no picture to change.");
        return false;
    }
    const ProgressScope scope(progress);
    if (progress)
        progress->setExpectedPasses(int(picture->frames.size()) * passesPerFrame(operation.kind));
    // Only a change of size can fail. The others work on the frames in
    // place: the image is handed over, so that it is not copied. Work that
    // can be cancelled leaves the frames alone until it is done.
    const bool mayFail = operation.kind == EditOperation::Kind::Rotate || operation.kind == EditOperation::Kind::Resize
                         || operation.kind == EditOperation::Kind::Shape || operation.kind == EditOperation::Kind::Text;
    if (!mayFail && !progress) {
        for (imaging::PictureFrame &frame : picture->frames)
            frame.image = apply(operation, std::move(frame.image));
        refreshInfo(picture);
        return true;
    }
    QList<imaging::PictureFrame> frames;
    frames.reserve(picture->frames.size());
    for (const imaging::PictureFrame &frame : std::as_const(picture->frames)) {
        imaging::PictureFrame changed = frame;
        changed.image = apply(operation, frame.image);
        if (progress && progress->isCancelled()) {
            *errorString = QStringLiteral("Cancelled.");
            return false;
        }
        if (changed.image.isNull()) {
            *errorString = operation.kind == EditOperation::Kind::Shape
                               ? QStringLiteral("There is no shape with the code %1.").arg(operation.shape.code)
                           : operation.kind == EditOperation::Kind::Text
                               ? QStringLiteral("There is no text effect with the code %1.").arg(operation.text.effect)
                               : QStringLiteral("The changed picture would be too large (more than %1 megapixels or %2 pixels a side).")
                                     .arg(MaxResultPixels / (1024 * 1024))
                                     .arg(MaxSide);
            return false;
        }
        frames.append(changed);
    }
    picture->frames = frames;
    refreshInfo(picture);
    if (progress)
        progress->finish();
    return true;
}

} // namespace tarnby::edit
