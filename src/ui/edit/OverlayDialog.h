#pragma once

#include <QDialog>
#include <QLatin1String>

namespace tarnby::ui {

class OverlayHost;

// What the text and shape dialogs share: the picture window they serve, and
// how they close. OK leaves an overlay waiting for its placement; Cancel,
// Escape and the close box end the wait.
class OverlayDialog : public QDialog
{
    Q_OBJECT
public:
    virtual void CancelBtn_Click() = 0;

protected:
    OverlayDialog(OverlayHost &host, QWidget *parent);

    // Closes the dialog accepted, the overlay waiting.
    void closeWaiting();
    // Cancel: under SHUTOFFCLICK_FLG, clears the frame's checks of the
    // dialog's menu entry and button, restores the picture's pointer and
    // ends the wait; then closes the dialog.
    void closeCancelled(QLatin1String menuKey, QLatin1String buttonKey);
    // Escape and the close box cancel as the Cancel button does.
    void reject() override;

    OverlayHost &m_host;

private:
    bool m_closing = false;
};

} // namespace tarnby::ui
