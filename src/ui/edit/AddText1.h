#pragma once

#include "ui/edit/OverlayDialog.h"

#include <QList>

class QCheckBox;
class QLabel;
class QLineEdit;
class QListWidget;
class QPushButton;

namespace tarnby::ui {

struct UiServices;

// The text dialog ("Add Text to Image"): the text, its effect, font and
// colours, read from and written to the picture window's overlay members.
// OK leaves the text waiting for the user to release the mouse over the
// picture; Cancel ends the wait and clears the frame's text checks.
//
// The font and colour dialogs (CommonDialog1) go through the services.
class AddText1 : public OverlayDialog
{
    Q_OBJECT
public:
    AddText1(OverlayHost &host, UiServices &services, QWidget *parent = nullptr);

    QLineEdit *text() const { return m_text; }
    QListWidget *styles() const { return m_list; }
    // The samples: 0 the font, 1 the text colour, 2 the shadow colour,
    // 3 the highlight colour, 4 the rectangle colour.
    QLabel *sample(int index) const { return m_samples.value(index); }

    void OKBtn_Click();
    void CancelBtn_Click() override;
    void FontBtn_Click();
    void TextClrBtn_Click();
    void ShadClrBtn_Click();
    void HiLiteClrBtn_Click();
    void RectClrBtn_Click();

private:
    void showSamples();
    bool chooseColour(const QString &title, QRgb *colour);

    UiServices &m_services;
    QLineEdit *m_text = nullptr;
    QListWidget *m_list = nullptr;
    QCheckBox *m_rectangle = nullptr;
    QList<QLabel *> m_samples;
};

} // namespace tarnby::ui
