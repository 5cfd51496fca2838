#pragma once

#include <array>
#include <QtGlobal>

namespace tarnby::settings {

// The stored window colours: one value per swatch 0 to 22, where swatch 10
// ("Selection Item" background) and swatch 21 ("ThumbNail Window" text) share
// one stored value. Colours are 0x00BBGGRR, red in the low byte.
struct WindowColors {
    std::array<quint32, 23> swatch{};
};

} // namespace tarnby::settings
