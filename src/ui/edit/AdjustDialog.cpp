#include "ui/edit/AdjustDialog.h"

#include "core/edit/PictureEdits.h"
#include "ui/services/UiServices.h"

#include <QCheckBox>
#include <QDoubleSpinBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QPushButton>
#include <QSlider>
#include <QSpinBox>
#include <QVBoxLayout>

#include <cmath>

namespace tarnby::ui {

namespace {
constexpr int PreviewSide = 240;
}

AdjustDialog::AdjustDialog(Page page, const QImage &picture, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_page(page)
    , m_services(services)
{
    setObjectName(QStringLiteral("LEADDlg1"));
    setModal(true);
    setWindowTitle(page == Page::Brightness ? QStringLiteral("Brightness")
                   : page == Page::Contrast ? QStringLiteral("Contrast")
                                            : QStringLiteral("Rotate"));
    // The preview works on a small copy, so that it follows the controls at
    // once whatever the picture's size.
    m_reduced = picture.width() > PreviewSide || picture.height() > PreviewSide
                    ? picture.scaled(PreviewSide, PreviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation)
                    : picture;

    auto *layout = new QVBoxLayout(this);
    m_preview = new QLabel(this);
    m_preview->setObjectName(QStringLiteral("Preview"));
    m_preview->setMinimumSize(PreviewSide, PreviewSide);
    m_preview->setAlignment(Qt::AlignCenter);
    layout->addWidget(m_preview);

    auto *row = new QHBoxLayout;
    if (page == Page::Rotate) {
        row->addWidget(new QLabel(QStringLiteral("Angle (degrees):"), this));
        m_angle = new QDoubleSpinBox(this);
        m_angle->setObjectName(QStringLiteral("Angle"));
        m_angle->setRange(-360, 360);
        m_angle->setDecimals(2);
        m_angle->setSingleStep(1);
        row->addWidget(m_angle);
        connect(m_angle, &QDoubleSpinBox::valueChanged, this, &AdjustDialog::updatePreview);
        layout->addLayout(row);
        m_enlarge = new QCheckBox(QStringLiteral("Resize the picture so that no corner is cut"), this);
        m_enlarge->setObjectName(QStringLiteral("Enlarge"));
        connect(m_enlarge, &QCheckBox::toggled, this, &AdjustDialog::updatePreview);
        layout->addWidget(m_enlarge);
        auto *fill = new QPushButton(QStringLiteral("Fill Color..."), this);
        fill->setObjectName(QStringLiteral("FillBtn"));
        connect(fill, &QPushButton::clicked, this, [this] {
            DialogRequest request;
            request.kind = DialogKind::Color;
            request.title = QStringLiteral("Select Fill Color");
            request.color = QColor::fromRgb(m_fill);
            const DialogAnswer answer = m_services.dialogs.run(request, this);
            if (answer.accepted && answer.color.isValid()) {
                m_fill = answer.color.rgb();
                updatePreview();
            }
        });
        layout->addWidget(fill);
    } else {
        row->addWidget(new QLabel(QStringLiteral("Amount (tenths of a percent):"), this));
        m_slider = new QSlider(Qt::Horizontal, this);
        m_slider->setRange(edit::MinAmount, edit::MaxAmount);
        m_amount = new QSpinBox(this);
        m_amount->setObjectName(QStringLiteral("Amount"));
        m_amount->setRange(edit::MinAmount, edit::MaxAmount);
        row->addWidget(m_slider);
        row->addWidget(m_amount);
        connect(m_slider, &QSlider::valueChanged, m_amount, &QSpinBox::setValue);
        connect(m_amount, &QSpinBox::valueChanged, m_slider, &QSlider::setValue);
        connect(m_amount, &QSpinBox::valueChanged, this, &AdjustDialog::updatePreview);
        layout->addLayout(row);
    }

    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    updatePreview();
}

void AdjustDialog::setAmount(int amount)
{
    m_presetAmount = amount;
    if (m_angle)
        m_angle->setValue(amount / 100.0);
    else
        m_amount->setValue(amount);
}

void AdjustDialog::setEnlarge(bool enlarge)
{
    m_presetEnlarge = enlarge;
    if (m_enlarge)
        m_enlarge->setChecked(enlarge);
}

void AdjustDialog::setFill(QRgb fill)
{
    m_presetFill = fill;
    m_fill = fill;
    updatePreview();
}

int AdjustDialog::amount() const
{
    if (result() != QDialog::Accepted)
        return m_presetAmount;
    return m_angle ? int(std::lround(m_angle->value() * 100)) : m_amount->value();
}

bool AdjustDialog::enlarge() const
{
    if (result() != QDialog::Accepted || !m_enlarge)
        return m_presetEnlarge;
    return m_enlarge->isChecked();
}

QRgb AdjustDialog::fill() const
{
    return result() == QDialog::Accepted ? m_fill : m_presetFill;
}

void AdjustDialog::updatePreview()
{
    if (m_reduced.isNull())
        return;
    QImage shown;
    switch (m_page) {
    case Page::Brightness:
        shown = edit::changeBrightness(m_reduced, m_amount ? m_amount->value() : 0);
        break;
    case Page::Contrast:
        shown = edit::changeContrast(m_reduced, m_amount ? m_amount->value() : 0);
        break;
    case Page::Rotate: {
        const int hundredths = m_angle ? int(std::lround(m_angle->value() * 100)) : 0;
        const bool enlarge = m_enlarge && m_enlarge->isChecked();
        shown = edit::rotate(m_reduced, hundredths, enlarge ? edit::RotateFit::Enlarge : edit::RotateFit::KeepSize, m_fill);
        if (shown.width() > PreviewSide || shown.height() > PreviewSide)
            shown = shown.scaled(PreviewSide, PreviewSide, Qt::KeepAspectRatio, Qt::SmoothTransformation);
        break;
    }
    }
    m_preview->setPixmap(QPixmap::fromImage(shown));
}

} // namespace tarnby::ui
