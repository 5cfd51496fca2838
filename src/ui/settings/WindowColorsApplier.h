#pragma once

class QMainWindow;
class QMdiArea;
class QWidget;

namespace tarnby {
class AppState;
}

// Applying the window colours and the bold-type option. Every dialog window
// of the program calls installWindowColors(this, state) once in its
// constructor; from then on, each time the window is shown, its frames,
// labels, option buttons, tick boxes, text boxes, lists and buttons take the
// stored colours, so a change made in the colours or options window shows
// the next time a window opens.
//
// Which colour goes where:
//   the window, frames, labels, option buttons, tick boxes: "Selection Windows"
//   text boxes, spin boxes, sliders:                       "Entry Fields"
//   list boxes, combo boxes, tree and list views:          "List Boxes"
//   push buttons:                 "Selection Buttons" background, "Selection Windows" text
//   the browser and its menus and toolbars: "Main Window", "Menus and ToolBars"
//   the viewing frame's window area:        "Picture Windows" background
// All of it works through palettes and fonts, never style sheets, so that a
// window's own style sheet keeps working.
namespace tarnby::ui {

// A widget with this property set to true keeps its own colours (a colour
// swatch, a picture) and its own font.
inline constexpr char KeepOwnColorsProperty[] = "tarnbyKeepOwnColors";

// Applies the colours to window and every widget below it, now. Cheap; call
// from the UI thread.
void applyWindowColors(QWidget *window, const AppState &state);

// Installs a filter on window that runs applyWindowColors on every show. The
// filter is a child of window; state must outlive window.
void installWindowColors(QWidget *window, const AppState &state);

// The browser: main window background and text, menus and toolbars.
void applyMainWindowColors(QMainWindow *window, const AppState &state);
// The viewing frame: menus and toolbars, and the window area behind the
// document windows.
void applyFrameColors(QMainWindow *frame, QMdiArea *area, const AppState &state);

} // namespace tarnby::ui
