#pragma once

#include <QRect>

#include <algorithm>

#include <cmath>

namespace tarnby {

// Window positions and sizes are kept in twips (1/1440 inch); 15 twips make a
// pixel at 96 DPI.
inline int twipsToPixels(double twips, double dpi)
{
    return int(std::lround(twips * dpi / 1440.0));
}

inline double pixelsToTwips(int pixels, double dpi)
{
    return dpi > 0 ? pixels * 1440.0 / dpi : 0.0;
}

// Keeps a saved window rectangle on the screen it is shown on: a rectangle
// saved on a larger screen, or a corrupt one, must not put the window out of
// reach. An empty screen rectangle leaves wanted as it is.
inline QRect clampToScreen(QRect wanted, const QRect &screen)
{
    if (screen.isEmpty())
        return wanted;
    wanted.setWidth(std::clamp(wanted.width(), 200, screen.width()));
    wanted.setHeight(std::clamp(wanted.height(), 150, screen.height()));
    if (wanted.right() > screen.right())
        wanted.moveRight(screen.right());
    if (wanted.bottom() > screen.bottom())
        wanted.moveBottom(screen.bottom());
    if (wanted.left() < screen.left())
        wanted.moveLeft(screen.left());
    if (wanted.top() < screen.top())
        wanted.moveTop(screen.top());
    return wanted;
}

} // namespace tarnby
