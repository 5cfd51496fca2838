#include "ui/edit/NewSize1.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {

QScrollBar *makeBar(const QString &name, QWidget *parent)
{
    auto *bar = new QScrollBar(Qt::Horizontal, parent);
    bar->setObjectName(name);
    bar->setMinimum(1);
    bar->setPageStep(100);
    bar->setSingleStep(10);
    return bar;
}

} // namespace

NewSize1::NewSize1(QWidget *parent)
    : QDialog(parent)
{
    setObjectName(QStringLiteral("NewSize1"));
    setModal(true);
    m_widthFrame = new QGroupBox(this);
    m_widthFrame->setObjectName(QStringLiteral("Frame2"));
    m_heightFrame = new QGroupBox(this);
    m_heightFrame->setObjectName(QStringLiteral("Frame2"));
    m_widthText = new QLineEdit(m_widthFrame);
    m_widthText->setObjectName(QStringLiteral("TxtWidth1"));
    m_heightText = new QLineEdit(m_heightFrame);
    m_heightText->setObjectName(QStringLiteral("TxtHeight1"));
    m_widthBar = makeBar(QStringLiteral("SCWeight1"), m_widthFrame);
    m_heightBar = makeBar(QStringLiteral("SCHeight1"), m_heightFrame);
    (new QVBoxLayout(m_widthFrame))->addWidget(m_widthText);
    m_widthFrame->layout()->addWidget(m_widthBar);
    (new QVBoxLayout(m_heightFrame))->addWidget(m_heightText);
    m_heightFrame->layout()->addWidget(m_heightBar);

    m_aspect = new QCheckBox(QStringLiteral("Keep Aspect Ratio"), this);
    m_aspect->setObjectName(QStringLiteral("CHKASPECT"));
    m_resample = new QCheckBox(QStringLiteral("Resample"), this);
    m_resample->setObjectName(QStringLiteral("CHKRESAMPLE"));
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setDefault(true);
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));

    auto *layout = new QVBoxLayout(this);
    auto *sizes = new QHBoxLayout;
    sizes->addWidget(m_widthFrame);
    sizes->addWidget(m_heightFrame);
    layout->addLayout(sizes);
    layout->addWidget(m_aspect);
    layout->addWidget(m_resample);
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(cancel);
    layout->addLayout(buttons);

    connect(m_widthText, &QLineEdit::textChanged, this, &NewSize1::onWidthText);
    connect(m_heightText, &QLineEdit::textChanged, this, &NewSize1::onHeightText);
    connect(m_widthBar, &QScrollBar::valueChanged, this, &NewSize1::onWidthScroll);
    connect(m_heightBar, &QScrollBar::valueChanged, this, &NewSize1::onHeightScroll);
    connect(m_aspect, &QCheckBox::toggled, this, [this](bool on) {
        if (m_guard || m_mode == Mode::IntensityDetect)
            return;
        m_model.setKeepAspect(on);
        showValues();
    });
    connect(ok, &QPushButton::clicked, this, [this] {
        m_accepted = true;
        accept();
    });
    connect(cancel, &QPushButton::clicked, this, [this] {
        m_accepted = false;
        reject();
    });
    InitTheForm(Mode::Resize, QSize(1, 1));
}

void NewSize1::InitTheForm(Mode mode, QSize picture)
{
    m_mode = mode;
    m_accepted = false;
    m_guard = true;
    const bool levels = mode == Mode::IntensityDetect;
    setWindowTitle(levels ? QStringLiteral("Intensity Detect")
                   : mode == Mode::StampDimensions ? QStringLiteral("Stamp Dimensions")
                                                   : QStringLiteral("Resize"));
    m_widthFrame->setTitle(levels ? QStringLiteral("Low") : QStringLiteral(" Width "));
    m_heightFrame->setTitle(levels ? QStringLiteral("High") : QStringLiteral(" Height "));
    m_resample->setText(mode == Mode::StampDimensions ? QStringLiteral("8-bit") : QStringLiteral("Resample"));
    m_aspect->setChecked(false);
    m_resample->setChecked(false);
    m_aspect->setVisible(!levels);
    if (levels) {
        // Two levels of intensity, each from 0 to 255.
        for (QScrollBar *bar : {m_widthBar, m_heightBar})
            bar->setRange(0, 255);
        m_widthBar->setValue(0);
        m_heightBar->setValue(255);
        m_widthText->setText(QStringLiteral("0"));
        m_heightText->setText(QStringLiteral("255"));
        m_guard = false;
        return;
    }
    m_model.init(picture);
    m_widthBar->setRange(1, m_model.maxWidth());
    m_heightBar->setRange(1, m_model.maxHeight());
    m_guard = false;
    showValues();
}

NewSize1::Results NewSize1::GetResults() const
{
    return {m_accepted, m_widthBar->value(), m_heightBar->value(), m_resample->isChecked()};
}

// Writes the model's values into the boxes and bars, under the guard, so
// that the change events this causes do nothing.
void NewSize1::showValues()
{
    m_guard = true;
    m_widthBar->setValue(m_model.width());
    m_heightBar->setValue(m_model.height());
    if (m_widthText->text() != QString::number(m_model.width()))
        m_widthText->setText(QString::number(m_model.width()));
    if (m_heightText->text() != QString::number(m_model.height()))
        m_heightText->setText(QString::number(m_model.height()));
    m_guard = false;
}

void NewSize1::onWidthText(const QString &text)
{
    if (m_guard)
        return;
    if (m_mode == Mode::IntensityDetect) {
        bool ok = false;
        const int value = text.toInt(&ok);
        if (ok && value >= m_widthBar->minimum() && value <= m_widthBar->maximum())
            m_widthBar->setValue(value);
        return;
    }
    // The box keeps what was typed; only the bars and the other box follow.
    if (!m_model.typeWidth(text))
        return;
    m_guard = true;
    m_widthBar->setValue(m_model.width());
    m_heightBar->setValue(m_model.height());
    if (m_model.keepAspect())
        m_heightText->setText(QString::number(m_model.height()));
    m_guard = false;
}

void NewSize1::onHeightText(const QString &text)
{
    if (m_guard)
        return;
    if (m_mode == Mode::IntensityDetect) {
        bool ok = false;
        const int value = text.toInt(&ok);
        if (ok && value >= m_heightBar->minimum() && value <= m_heightBar->maximum())
            m_heightBar->setValue(value);
        return;
    }
    if (!m_model.typeHeight(text))
        return;
    m_guard = true;
    m_widthBar->setValue(m_model.width());
    m_heightBar->setValue(m_model.height());
    if (m_model.keepAspect())
        m_widthText->setText(QString::number(m_model.width()));
    m_guard = false;
}

void NewSize1::onWidthScroll(int value)
{
    if (m_guard)
        return;
    if (m_mode == Mode::IntensityDetect) {
        m_guard = true;
        m_widthText->setText(QString::number(value));
        m_guard = false;
        return;
    }
    m_model.scrollWidth(value);
    showValues();
}

void NewSize1::onHeightScroll(int value)
{
    if (m_guard)
        return;
    if (m_mode == Mode::IntensityDetect) {
        m_guard = true;
        m_heightText->setText(QString::number(value));
        m_guard = false;
        return;
    }
    m_model.scrollHeight(value);
    showValues();
}

} // namespace tarnby::ui
