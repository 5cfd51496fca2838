#include "ui/edit/OverlayDialog.h"

#include "ui/edit/OverlayHost.h"

namespace tarnby::ui {

OverlayDialog::OverlayDialog(OverlayHost &host, QWidget *parent)
    : QDialog(parent)
    , m_host(host)
{
    setModal(true);
}

void OverlayDialog::closeWaiting()
{
    m_closing = true;
    accept();
}

void OverlayDialog::closeCancelled(QLatin1String menuKey, QLatin1String buttonKey)
{
    edit::OverlayMembers &m = m_host.overlayMembers();
    m.SHUTOFFCLICK_FLG = true;
    m_host.setFrameCheck(menuKey, false);
    m_host.setFrameCheck(buttonKey, false);
    m_host.setPlacementPointer(false);
    m.DRAW_NOW_FLG = false;
    m.SHUTOFFCLICK_FLG = false;
    m_closing = true;
    QDialog::reject();
}

void OverlayDialog::reject()
{
    if (m_closing)
        QDialog::reject();
    else
        CancelBtn_Click();
}

} // namespace tarnby::ui
