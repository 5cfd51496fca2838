#pragma once

#include "ui/edit/OverlayDialog.h"

#include <QImage>
#include <QList>

class QButtonGroup;
class QLabel;
class QLineEdit;
class QListWidget;
class QRadioButton;

namespace tarnby::ui {

struct UiServices;

// The shape dialog ("Add Shape to Image"): the shape, its size in units of
// 3.5 drawing units, its fill and border colours and the styles of its inner
// and outer bands, with a preview (Image1), read from and written to the
// picture window's overlay members. OK leaves the shape waiting for the
// user to release the mouse over the picture; Cancel ends the wait and
// clears the frame's shape checks.
class AddShape1 : public OverlayDialog
{
    Q_OBJECT
public:
    AddShape1(OverlayHost &host, UiServices &services, QWidget *parent = nullptr);

    QListWidget *shapes() const { return m_list; }
    // The size boxes (Text1): 0 the height, 1 the width.
    QLineEdit *sizeBox(int index) const { return m_sizes.value(index); }
    // The band options: RDINSTYLE and RDOUTSTYLE, 0 to 2.
    QRadioButton *innerOption(int index) const;
    QRadioButton *outerOption(int index) const;
    // The preview as drawn last.
    QImage preview() const { return m_preview; }

    void OKBtn_Click();
    void CancelBtn_Click() override;
    void ShapeClrBtn_Click();
    void BorderClrBtn_Click();

private:
    void showSamples();
    void updatePreview();
    bool chooseColour(QRgb *colour);

    UiServices &m_services;
    QListWidget *m_list = nullptr;
    QList<QLineEdit *> m_sizes;
    QButtonGroup *m_inner = nullptr;
    QButtonGroup *m_outer = nullptr;
    QLabel *m_image = nullptr;
    QLabel *m_borderSample = nullptr;
    QLabel *m_shapeSample = nullptr;
    QImage m_preview;
};

} // namespace tarnby::ui
