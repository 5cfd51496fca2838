#pragma once

#include "core/edit/NewSizeModel.h"

#include <QDialog>

class QCheckBox;
class QGroupBox;
class QLineEdit;
class QScrollBar;

namespace tarnby::ui {

// The resize dialog: a width and a height, each as a text box and a scroll
// bar kept in step, keep-aspect and resample. Its logic is NewSizeModel's.
// The same controls serve two other uses, captioned "Intensity Detect" (two
// levels from 0 to 255) and "Stamp Dimensions" (the size of a stamp picture,
// the resample box reading "8-bit").
class NewSize1 : public QDialog
{
    Q_OBJECT
public:
    enum class Mode { Resize, RegionResize, IntensityDetect, StampDimensions };

    struct Results {
        bool accepted = false;
        int width = 0;
        int height = 0;
        bool resample = false;
    };

    explicit NewSize1(QWidget *parent = nullptr);

    // Prepares the dialog for a picture (or, in region resize mode, the
    // selected region) of size picture.
    void InitTheForm(Mode mode, QSize picture);
    Results GetResults() const;

private:
    void showValues();
    void onWidthText(const QString &text);
    void onHeightText(const QString &text);
    void onWidthScroll(int value);
    void onHeightScroll(int value);

    edit::NewSizeModel m_model;
    Mode m_mode = Mode::Resize;
    bool m_guard = false; // set while one control updates the others
    bool m_accepted = false;

    QGroupBox *m_widthFrame = nullptr;
    QGroupBox *m_heightFrame = nullptr;
    QLineEdit *m_widthText = nullptr;
    QLineEdit *m_heightText = nullptr;
    QScrollBar *m_widthBar = nullptr;
    QScrollBar *m_heightBar = nullptr;
    QCheckBox *m_aspect = nullptr;
    QCheckBox *m_resample = nullptr;
};

} // namespace tarnby::ui
