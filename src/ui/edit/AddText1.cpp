#include "ui/edit/AddText1.h"

#include "core/catalogue/CommandKeys.h"
#include "core/edit/OverlayCatalogues.h"
#include "ui/edit/OverlayHost.h"
#include "ui/services/DialogButtons.h"
#include "ui/services/UiServices.h"
#include "ui/tools/HelpWindow.h"

#include <QCheckBox>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {

QPushButton *makeButton(const QString &name, const QString &caption, const QString &tip, QWidget *parent)
{
    auto *button = new QPushButton(caption, parent);
    button->setObjectName(name);
    button->setToolTip(tip);
    button->setAutoDefault(false);
    return button;
}

void paintSample(QLabel *label, QRgb background, QRgb foreground)
{
    label->setAutoFillBackground(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, QColor::fromRgb(background));
    palette.setColor(QPalette::WindowText, QColor::fromRgb(foreground));
    label->setPalette(palette);
}

// Black or white, whichever reads better on colour.
QRgb contrastingWith(QRgb colour)
{
    return qGray(colour) < 128 ? qRgb(255, 255, 255) : qRgb(0, 0, 0);
}

} // namespace

AddText1::AddText1(OverlayHost &host, UiServices &services, QWidget *parent)
    : OverlayDialog(host, parent)
    , m_services(services)
{
    setObjectName(QStringLiteral("AddText1"));
    setWindowTitle(QStringLiteral("Add Text to Image"));
    edit::OverlayMembers &m = m_host.overlayMembers();

    m_text = new QLineEdit(m.DRAW_TEXT, this);
    m_text->setObjectName(QStringLiteral("Text1"));
    m_text->setToolTip(QStringLiteral("Enter Text to Place on Image"));

    auto *styleFrame = new QGroupBox(QStringLiteral("Select Text Style"), this);
    m_list = new QListWidget(styleFrame);
    m_list->setObjectName(QStringLiteral("List1"));
    for (const edit::CatalogueEntry &entry : edit::textStyles()) {
        auto *item = new QListWidgetItem(QString::fromLatin1(entry.name), m_list);
        item->setData(Qt::UserRole, entry.code);
    }
    m_list->setCurrentRow(m.TEXTSTYLE_INDEX >= 0 && m.TEXTSTYLE_INDEX < m_list->count() ? m.TEXTSTYLE_INDEX : 0);
    (new QVBoxLayout(styleFrame))->addWidget(m_list);

    m_rectangle = new QCheckBox(QStringLiteral("Rectangle behind Text"), this);
    m_rectangle->setObjectName(QStringLiteral("CHKRECTANGLE"));
    m_rectangle->setChecked(m.TEXTRECTANGLE_FLG);

    auto *fontBtn = makeButton(QStringLiteral("FontBtn"), QStringLiteral("Font"), QStringLiteral("Select Font for Text"), this);
    auto *textClr = makeButton(QStringLiteral("TextClrBtn"), QStringLiteral("Text Color"),
                               QStringLiteral("Select Color for Text"), this);
    auto *shadClr = makeButton(QStringLiteral("ShadClrBtn"), QStringLiteral("Shadow Color"),
                               QStringLiteral("Select Color for Text Shadow"), this);
    auto *hiliteClr = makeButton(QStringLiteral("HiLiteClrBtn"), QStringLiteral("HiLite Color"),
                                 QStringLiteral("Select Color for Text HiLite"), this);
    auto *rectClr = makeButton(QStringLiteral("RectClrBtn"), QStringLiteral("Rectangle Color"),
                               QStringLiteral("Select Color of Rectangle Background"), this);
    connect(fontBtn, &QPushButton::clicked, this, &AddText1::FontBtn_Click);
    connect(textClr, &QPushButton::clicked, this, &AddText1::TextClrBtn_Click);
    connect(shadClr, &QPushButton::clicked, this, &AddText1::ShadClrBtn_Click);
    connect(hiliteClr, &QPushButton::clicked, this, &AddText1::HiLiteClrBtn_Click);
    connect(rectClr, &QPushButton::clicked, this, &AddText1::RectClrBtn_Click);

    const QStringList sampleTexts{QStringLiteral("Font Example"), QStringLiteral("Text Color Example"),
                                  QStringLiteral("Shadow Color Example"), QStringLiteral("HiLite Color Example"),
                                  QStringLiteral("Rectangle Color Example")};
    auto *grid = new QGridLayout;
    const QList<QPushButton *> sampleButtons{fontBtn, textClr, shadClr, hiliteClr, rectClr};
    for (int i = 0; i < sampleTexts.size(); ++i) {
        auto *label = new QLabel(sampleTexts.at(i), this);
        label->setObjectName(QStringLiteral("Label1"));
        label->setProperty("index", i);
        label->setMargin(4);
        m_samples.append(label);
        grid->addWidget(sampleButtons.at(i), i, 0);
        grid->addWidget(label, i, 1);
    }

    const DialogButtons buttons = makeDialogButtons(this);
    buttons.ok->setToolTip(QStringLiteral("Select Text to Place on Image"));
    buttons.cancel->setToolTip(QStringLiteral("Close Text Selection Window without Drawing Text"));
    buttons.help->setToolTip(QStringLiteral("Help with Text Selection Window"));
    connect(buttons.ok, &QPushButton::clicked, this, &AddText1::OKBtn_Click);
    connect(buttons.cancel, &QPushButton::clicked, this, &AddText1::CancelBtn_Click);
    connect(buttons.help, &QPushButton::clicked, this,
            [this] { showHelpContents(m_host.helpFolder(), this); });

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_text);
    auto *middle = new QHBoxLayout;
    middle->addWidget(styleFrame, 1);
    auto *right = new QVBoxLayout;
    right->addLayout(grid);
    right->addWidget(m_rectangle);
    right->addStretch();
    middle->addLayout(right);
    layout->addLayout(middle);
    layout->addLayout(buttons.row);

    // Opening: a text waits no longer until OK.
    m.PLACETEXT_FLG = false;
    showSamples();
}

void AddText1::showSamples()
{
    const edit::OverlayMembers &m = m_host.overlayMembers();
    const QFont font = m.textFont();
    for (QLabel *label : std::as_const(m_samples))
        label->setFont(font);
    paintSample(m_samples.at(0), m.TEXTRECTANGLE_COLOR, m.TEXT_COLOR);
    paintSample(m_samples.at(1), m.TEXT_COLOR, contrastingWith(m.TEXT_COLOR));
    paintSample(m_samples.at(2), m.TEXTSHADOW_COLOR, contrastingWith(m.TEXTSHADOW_COLOR));
    paintSample(m_samples.at(3), m.TEXTHIGHLIGHT_COLOR, contrastingWith(m.TEXTHIGHLIGHT_COLOR));
    paintSample(m_samples.at(4), m.TEXTRECTANGLE_COLOR, contrastingWith(m.TEXTRECTANGLE_COLOR));
}

void AddText1::FontBtn_Click()
{
    edit::OverlayMembers &m = m_host.overlayMembers();
    DialogRequest request;
    request.kind = DialogKind::Font;
    request.font = m.textFont();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted)
        return;
    m.TEXT_FONT = answer.font.family();
    if (answer.font.pointSizeF() > 0)
        m.TEXT_FONT_SIZE = float(answer.font.pointSizeF());
    m.TEXT_FONT_BOLD = answer.font.bold();
    m.TEXT_FONT_ITALIC = answer.font.italic();
    showSamples();
}

bool AddText1::chooseColour(const QString &title, QRgb *colour)
{
    DialogRequest request;
    request.kind = DialogKind::Color;
    request.title = title;
    request.color = QColor::fromRgb(*colour);
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted || !answer.color.isValid())
        return false;
    *colour = answer.color.rgb();
    showSamples();
    return true;
}

void AddText1::TextClrBtn_Click()
{
    chooseColour(QStringLiteral("Select Color for Text"), &m_host.overlayMembers().TEXT_COLOR);
}

void AddText1::ShadClrBtn_Click()
{
    chooseColour(QStringLiteral("Select Color for Text Shadow"), &m_host.overlayMembers().TEXTSHADOW_COLOR);
}

void AddText1::HiLiteClrBtn_Click()
{
    chooseColour(QStringLiteral("Select Color for Text HiLite"), &m_host.overlayMembers().TEXTHIGHLIGHT_COLOR);
}

// The rectangle's colour dialog has always carried the highlight's title.
void AddText1::RectClrBtn_Click()
{
    chooseColour(QStringLiteral("Select Color for Text HiLite"), &m_host.overlayMembers().TEXTRECTANGLE_COLOR);
}

void AddText1::OKBtn_Click()
{
    edit::OverlayMembers &m = m_host.overlayMembers();
    m.PLACETEXT_FLG = true;
    m.DRAW_TEXT = m_text->text();
    m_host.setPlacementPointer(true);
    m.TEXTRECTANGLE_FLG = m_rectangle->isChecked();
    const int row = std::max(0, m_list->currentRow());
    m.TEXT_STYLE = m_list->item(row)->data(Qt::UserRole).toInt();
    m.TEXTSTYLE_INDEX = qint16(row);
    m.DRAWMENU = edit::DrawMenuText;
    m.DRAW_NOW_FLG = true;
    closeWaiting();
}

void AddText1::CancelBtn_Click()
{
    closeCancelled(commands::keys::mnuAddTexttoPictures, commands::keys::FontBtn);
}

} // namespace tarnby::ui
