#pragma once

#include "core/printing/PrintTypes.h"

#include <QImage>
#include <QString>

class QPagedPaintDevice;

// The picture job: a title and a picture placed on the page in inches.
namespace tarnby::printing {

// Where the title and the picture go, in inches on the 8.5 by 11 page.
struct PicturePlacement {
    double titleX = 0;
    double titleY = 0;
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;
};

// A number as a position box gives it: the leading number of the text
// (blanks before it allowed), 0 for an empty box or one that starts with no
// number. "1.5in" is 1.5; "abc" is 0.
double boxValue(const QString &text);

// The picture's size in inches at its resolution (96 dots an inch when the
// picture states none), made smaller, in proportion, when it would not fit on
// the page from the top left corner. The window fills its size boxes with it.
QSizeF naturalSizeInches(const QImage &image);

// The placement the six boxes of the window say. Empty position boxes mean the
// top left corner; an empty or zero size takes the picture's natural size.
PicturePlacement placementFromBoxes(const QString &titleX, const QString &titleY, const QString &x,
                                    const QString &y, const QString &width, const QString &height,
                                    const QImage &image);

// Prints title and image on one page and ends the document.
PrintResult printPicture(QPagedPaintDevice &device, const QImage &image, const QString &title,
                         const PicturePlacement &placement, const PrintFont &font);

} // namespace tarnby::printing
