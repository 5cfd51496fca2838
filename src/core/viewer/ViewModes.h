#pragma once

#include "core/catalogue/CommandKeys.h"

#include <QList>
#include <QRect>
#include <QString>

// The picture view modes of a picture window as a plain state machine: normal
// or stretched paint, and the two viewing aids on top (the pan window and the
// magnifying glass). Each operation returns the steps the window must carry out,
// in order; the window applies them to its picture view and to the frame's
// checked states. Nothing here touches widgets, so every rule is testable alone.
namespace tarnby::viewer {

// The paint modes of the picture view, numbered as the program has always
// numbered them.
enum class PaintMode { Normal = 0, Stretch = 1 };

// The frame's menu entries whose checked state shows the view mode.
inline constexpr QLatin1String NormalViewKey = commands::keys::mnuNormalImageView;
inline constexpr QLatin1String StretchViewKey = commands::keys::mnuStretchImageView;
inline constexpr QLatin1String PanImageKey = commands::keys::mnuPanImage;
inline constexpr QLatin1String MagnifyingGlassKey = commands::keys::mnuMagnifyingGlass;

struct ViewStep {
    enum class Action {
        SetPaintMode,   // mode
        StartMagnifier,
        StopMagnifier,
        ShowPanWindow,
        HidePanWindow,
        Check,          // key, checked: made under the window's guard flag
    };
    Action action = Action::Check;
    PaintMode mode = PaintMode::Normal;
    QString key;
    bool checked = false;

    static ViewStep paint(PaintMode m) { return {Action::SetPaintMode, m, {}, false}; }
    static ViewStep check(QLatin1String k, bool on) { return {Action::Check, PaintMode::Normal, k, on}; }
    static ViewStep simple(Action a) { return {a, PaintMode::Normal, {}, false}; }
    bool operator==(const ViewStep &o) const
    {
        return action == o.action && mode == o.mode && key == o.key && checked == o.checked;
    }
};
using ViewSteps = QList<ViewStep>;

// The fixed settings of the magnifying glass.
struct MagnifierSettings {
    static constexpr double Width = 150.0;   // pixels
    static constexpr double Height = 100.0;  // pixels
    static constexpr int ZoomPercent = 200;
    static constexpr unsigned PenColor = 0;  // black
    static constexpr bool Elliptical = false;
    static constexpr double BorderSize = 1.0;
    static constexpr bool ThreeDimensionalBorder = true;
    static constexpr int CrosshairStyle = 1;
    static constexpr bool IgnoreRegion = true;
    static constexpr bool CentreOnPointer = true;
};

// The fixed settings of the pan window.
struct PanWindowSettings {
    static constexpr int Offset = 100;
    static constexpr int Width = 150;
    static constexpr int Height = 200;
    static constexpr unsigned RectangleColor = 255; // pure red in the program's colour numbering

    // Where the pan window goes for a document window whose left edge is at
    // documentLeft. The vertical position is deliberately taken from the left
    // edge as well: both offsets carry the same value.
    static QRect geometry(int documentLeft)
    {
        return QRect(documentLeft + Offset, documentLeft + Offset, Width, Height);
    }
};

class ViewModes
{
public:
    PaintMode paintMode() const { return m_paintMode; }
    bool isStretched() const { return m_stretched; }
    bool isPanWindowShown() const { return m_panShown; }
    bool isMagnifierOn() const { return m_magnifierOn; }

    ViewSteps normal();
    ViewSteps stretch();
    ViewSteps togglePanWindow();
    ViewSteps toggleMagnifier();
    // The user closed the pan window with its own close box.
    ViewSteps panWindowClosed();
    // The checked states the frame shows for this window when it becomes the
    // active one.
    ViewSteps activationChecks() const;
    // The steps that end both aids when the window closes.
    ViewSteps teardown();

    // The quick view's click rule: any mode other than stretch becomes stretch,
    // stretch becomes normal.
    static PaintMode quickViewToggle(PaintMode current)
    {
        return current == PaintMode::Stretch ? PaintMode::Normal : PaintMode::Stretch;
    }

private:
    ViewSteps startMagnifier();
    ViewSteps stopMagnifier();

    PaintMode m_paintMode = PaintMode::Normal;
    bool m_stretched = false;
    bool m_panShown = false;
    bool m_magnifierOn = false;
};

} // namespace tarnby::viewer
