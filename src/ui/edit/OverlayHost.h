#pragma once

#include "core/edit/OverlayMembers.h"

#include <QString>

namespace tarnby::ui {

// What the text and shape dialogs need of the picture window they serve:
// its overlay members, the picture's mouse pointer and the frame's checks.
class OverlayHost
{
public:
    virtual edit::OverlayMembers &overlayMembers() = 0;
    // The cross pointer over the picture while a placement waits; false
    // restores the pointer the picture had.
    virtual void setPlacementPointer(bool waiting) = 0;
    // Sets a checked state among the frame's commands for this window.
    virtual void setFrameCheck(const QString &key, bool checked) = 0;
    // The folder of the help pages (empty: none known).
    virtual QString helpFolder() const = 0;

protected:
    ~OverlayHost() = default;
};

} // namespace tarnby::ui
