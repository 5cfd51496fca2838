#pragma once

#include <QDialog>
#include <QImage>
#include <QRgb>

class QCheckBox;
class QDoubleSpinBox;
class QLabel;
class QSlider;
class QSpinBox;

namespace tarnby::ui {

struct UiServices;

// The brightness, contrast and rotate dialog (LEADDlg1): an amount with a
// live preview on a reduced copy of the picture. Brightness and contrast take
// an amount in tenths of a percent (-1000 to 1000); rotate an angle in
// hundredths of a degree, the choice to enlarge the picture so that no corner
// is cut, and the fill colour of the uncovered area (chosen through the
// services' colour dialog).
//
// As the picture window reads it, a cancelled dialog gives back the values
// it was preset with.
class AdjustDialog : public QDialog
{
    Q_OBJECT
public:
    enum class Page { Brightness, Contrast, Rotate };

    AdjustDialog(Page page, const QImage &picture, UiServices &services, QWidget *parent = nullptr);

    // Presets, before exec().
    void setAmount(int amount);
    void setEnlarge(bool enlarge);
    void setFill(QRgb fill);

    int amount() const;
    bool enlarge() const;
    QRgb fill() const;

private:
    void updatePreview();

    Page m_page;
    UiServices &m_services;
    QImage m_reduced;
    int m_presetAmount = 0;
    bool m_presetEnlarge = false;
    QRgb m_presetFill = qRgb(255, 255, 255);
    QRgb m_fill = qRgb(255, 255, 255);

    QSlider *m_slider = nullptr;
    QSpinBox *m_amount = nullptr;
    QDoubleSpinBox *m_angle = nullptr;
    QCheckBox *m_enlarge = nullptr;
    QLabel *m_preview = nullptr;
};

} // namespace tarnby::ui
