#pragma once

#include "core/edit/ShapeDrawing.h"
#include "core/edit/TextDrawing.h"

#include <QPointF>
#include <QRectF>
#include <QRgb>
#include <QString>

// The text and shape settings of one picture window, under the names the
// text and shape dialogs read and write. Each window keeps its own while it
// is open; nothing of it is written to disk.
namespace tarnby::edit {

// What DRAWMENU holds while an overlay waits for its placement.
inline constexpr QLatin1String DrawMenuText{"Text"};
inline constexpr QLatin1String DrawMenuShape{"Shape"};

// The shape dialog's size boxes count in units of this many drawing units
// (picture pixels).
inline constexpr double ShapeSizeUnit = 3.5;

struct OverlayMembers {
    // Text.
    bool PLACETEXT_FLG = false;
    QString DRAW_TEXT;
    qint32 TEXT_STYLE = 6;       // the first entry of the list, block shadow
    qint16 TEXTSTYLE_INDEX = 0;
    bool TEXTRECTANGLE_FLG = false;
    QString TEXT_FONT;           // empty: the application's font
    float TEXT_FONT_SIZE = 0;    // points; 0: the application font's size
    bool TEXT_FONT_BOLD = false;
    bool TEXT_FONT_ITALIC = false;
    QRgb TEXT_COLOR = qRgb(0, 0, 0);
    QRgb TEXTSHADOW_COLOR = qRgb(128, 128, 128);
    QRgb TEXTHIGHLIGHT_COLOR = qRgb(255, 255, 255);
    QRgb TEXTRECTANGLE_COLOR = qRgb(255, 255, 255);

    // Shapes.
    bool PLACEOBJECT_FLG = false;
    qint32 SHAPE = 11003;        // the first entry of the list, ARROW_B
    qint16 SHAPE_INDEX = 0;
    double SHAPE_HEIGHT = 20 * ShapeSizeUnit;
    double SHAPE_WIDTH = 20 * ShapeSizeUnit;
    QRgb SHAPE_COLOR = qRgb(255, 0, 0);
    QRgb SHAPEBORDER_COLOR = qRgb(0, 0, 0);
    qint16 SHAPE_INRBAND = 0;    // 0 raised, 1 indented, 2 none
    qint16 SHAPE_OUTBAND = 0;

    // Shared by both.
    QString DRAWMENU;            // DrawMenuText, DrawMenuShape or empty
    bool DRAW_NOW_FLG = false;   // the next release over the picture draws
    bool SHUTOFFCLICK_FLG = false; // the window is changing the frame's checks itself

    // The font the text members describe.
    QFont textFont() const;
    // The text as the members describe it, for drawing.
    TextOverlay textOverlay() const;
    // The shape as the members describe it; the band members outside 0 to 2
    // count as none.
    ShapeStyle shapeStyle() const;
    // Where the shape goes when placed at at: SHAPE_WIDTH by SHAPE_HEIGHT.
    QRectF shapeRect(QPointF at) const { return QRectF(at, QSizeF(SHAPE_WIDTH, SHAPE_HEIGHT)); }
};

// The number a size box shows: the integer part of the drawing units over
// ShapeSizeUnit.
int shapeBoxValue(double drawingUnits);
// The number a size box holds, read as the old BASIC Val() does: the longest
// leading number, after leading blanks; 0 when it starts with none.
double leadingNumber(const QString &text);

} // namespace tarnby::edit
