#include "ui/edit/AddShape1.h"

#include "core/catalogue/CommandKeys.h"
#include "core/edit/OverlayCatalogues.h"
#include "core/edit/ShapeDrawing.h"
#include "ui/edit/OverlayHost.h"
#include "ui/services/DialogButtons.h"
#include "ui/services/UiServices.h"
#include "ui/tools/HelpWindow.h"

#include <QButtonGroup>
#include <QFormLayout>
#include <QGroupBox>
#include <QHBoxLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPixmap>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>

#include <algorithm>

namespace tarnby::ui {

namespace {

constexpr int PreviewSide = 120;

struct Option {
    const char *caption;
    const char *tip;
};

// Each group stores 0 for its first option, 1 for its second and 2 for the
// third. The inner group lists "Indent" first all the same: its first
// option has always stored 0.
constexpr Option OuterOptions[] = {
    {"Raised", "Raise Outer Line on Shape"},
    {"Indent", "Indent Outer Line on Shape"},
    {"None", "No Outer Line on Shape"},
};
constexpr Option InnerOptions[] = {
    {"Indent", "Indent Inner Line on Shape"},
    {"Raised", "Raise Inner Line on Shape"},
    {"None", "No Inner Line on Shape"},
};

QButtonGroup *makeBandGroup(QGroupBox *frame, const char *name, const Option (&options)[3], int chosen)
{
    auto *group = new QButtonGroup(frame);
    auto *layout = new QVBoxLayout(frame);
    for (int i = 0; i < 3; ++i) {
        auto *option = new QRadioButton(QLatin1String(options[i].caption), frame);
        option->setObjectName(QLatin1String(name));
        option->setProperty("index", i);
        option->setToolTip(QLatin1String(options[i].tip));
        group->addButton(option, i);
        layout->addWidget(option);
    }
    group->button(chosen >= 0 && chosen <= 2 ? chosen : 2)->setChecked(true);
    return group;
}

void paintSample(QLabel *label, QRgb colour)
{
    label->setAutoFillBackground(true);
    QPalette palette = label->palette();
    palette.setColor(QPalette::Window, QColor::fromRgb(colour));
    palette.setColor(QPalette::WindowText, qGray(colour) < 128 ? Qt::white : Qt::black);
    label->setPalette(palette);
}

} // namespace

AddShape1::AddShape1(OverlayHost &host, UiServices &services, QWidget *parent)
    : OverlayDialog(host, parent)
    , m_services(services)
{
    setObjectName(QStringLiteral("AddShape1"));
    setWindowTitle(QStringLiteral("Add Shape to Image"));
    edit::OverlayMembers &m = m_host.overlayMembers();

    m_list = new QListWidget(this);
    m_list->setObjectName(QStringLiteral("List1"));
    m_list->setToolTip(QStringLiteral("Select Shape to place on Image"));
    for (const edit::CatalogueEntry &entry : edit::shapes()) {
        auto *item = new QListWidgetItem(QString::fromLatin1(entry.name), m_list);
        item->setData(Qt::UserRole, entry.code);
    }
    m_list->setCurrentRow(m.SHAPE_INDEX >= 0 && m.SHAPE_INDEX < m_list->count() ? m.SHAPE_INDEX : 0);
    connect(m_list, &QListWidget::currentRowChanged, this, &AddShape1::updatePreview);

    // The boxes show whole units; each change stores the box's value times
    // the unit at once.
    auto *sizes = new QFormLayout;
    const double drawingUnits[2] = {m.SHAPE_HEIGHT, m.SHAPE_WIDTH};
    for (int i = 0; i < 2; ++i) {
        auto *box = new QLineEdit(QString::number(edit::shapeBoxValue(drawingUnits[i])), this);
        box->setObjectName(QStringLiteral("Text1"));
        box->setProperty("index", i);
        m_sizes.append(box);
        connect(box, &QLineEdit::textChanged, this, [this, i](const QString &text) {
            edit::OverlayMembers &members = m_host.overlayMembers();
            (i == 0 ? members.SHAPE_HEIGHT : members.SHAPE_WIDTH) = edit::leadingNumber(text) * edit::ShapeSizeUnit;
            updatePreview();
        });
    }
    sizes->addRow(QStringLiteral("Height"), m_sizes.at(0));
    sizes->addRow(QStringLiteral("Width"), m_sizes.at(1));

    auto *outerFrame = new QGroupBox(QStringLiteral("Outer Band Style"), this);
    outerFrame->setObjectName(QStringLiteral("Frame2"));
    m_outer = makeBandGroup(outerFrame, "RDOUTSTYLE", OuterOptions, m.SHAPE_OUTBAND);
    auto *innerFrame = new QGroupBox(QStringLiteral(" Inner Band Style"), this);
    innerFrame->setObjectName(QStringLiteral("Frame2"));
    m_inner = makeBandGroup(innerFrame, "RDINSTYLE", InnerOptions, m.SHAPE_INRBAND);
    connect(m_outer, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) updatePreview(); });
    connect(m_inner, &QButtonGroup::idToggled, this, [this](int, bool on) { if (on) updatePreview(); });

    auto *shapeClr = new QPushButton(QStringLiteral("Shape Color"), this);
    shapeClr->setObjectName(QStringLiteral("ShapeClrBtn"));
    shapeClr->setToolTip(QStringLiteral("Select Color for Shape"));
    shapeClr->setAutoDefault(false);
    auto *borderClr = new QPushButton(QStringLiteral("Border Color"), this);
    borderClr->setObjectName(QStringLiteral("BorderClrBtn"));
    borderClr->setToolTip(QStringLiteral("Select Color for Shape Border"));
    borderClr->setAutoDefault(false);
    connect(shapeClr, &QPushButton::clicked, this, &AddShape1::ShapeClrBtn_Click);
    connect(borderClr, &QPushButton::clicked, this, &AddShape1::BorderClrBtn_Click);
    m_borderSample = new QLabel(QStringLiteral("Select Color for Border"), this);
    m_borderSample->setObjectName(QStringLiteral("Label1"));
    m_borderSample->setMargin(4);
    m_shapeSample = new QLabel(QStringLiteral("Select Color for Shape"), this);
    m_shapeSample->setObjectName(QStringLiteral("Label1"));
    m_shapeSample->setMargin(4);

    m_image = new QLabel(this);
    m_image->setObjectName(QStringLiteral("Image1"));
    m_image->setFixedSize(PreviewSide, PreviewSide);
    m_image->setFrameShape(QFrame::Box);

    const DialogButtons buttons = makeDialogButtons(this);
    buttons.ok->setToolTip(QStringLiteral("Select Shape to Place on Image"));
    buttons.cancel->setToolTip(QStringLiteral("Close Shape Selection Window without Drawing a Shape"));
    buttons.help->setToolTip(QStringLiteral("Help with Shape Selection Window"));
    connect(buttons.ok, &QPushButton::clicked, this, &AddShape1::OKBtn_Click);
    connect(buttons.cancel, &QPushButton::clicked, this, &AddShape1::CancelBtn_Click);
    connect(buttons.help, &QPushButton::clicked, this, [this] { showHelpContents(m_host.helpFolder(), this); });

    auto *layout = new QVBoxLayout(this);
    auto *top = new QHBoxLayout;
    top->addWidget(m_list, 1);
    auto *right = new QVBoxLayout;
    right->addLayout(sizes);
    right->addWidget(outerFrame);
    right->addWidget(innerFrame);
    auto *colours = new QFormLayout;
    colours->addRow(shapeClr, m_shapeSample);
    colours->addRow(borderClr, m_borderSample);
    right->addLayout(colours);
    right->addWidget(m_image, 0, Qt::AlignHCenter);
    top->addLayout(right);
    layout->addLayout(top);
    layout->addLayout(buttons.row);

    showSamples();
    updatePreview();
}

QRadioButton *AddShape1::innerOption(int index) const
{
    return qobject_cast<QRadioButton *>(m_inner->button(index));
}

QRadioButton *AddShape1::outerOption(int index) const
{
    return qobject_cast<QRadioButton *>(m_outer->button(index));
}

void AddShape1::showSamples()
{
    const edit::OverlayMembers &m = m_host.overlayMembers();
    paintSample(m_shapeSample, m.SHAPE_COLOR);
    paintSample(m_borderSample, m.SHAPEBORDER_COLOR);
}

// The chosen shape with the chosen colours and bands, fitted into the
// preview in the proportions of the size boxes.
void AddShape1::updatePreview()
{
    const edit::OverlayMembers &m = m_host.overlayMembers();
    edit::ShapeStyle style = m.shapeStyle();
    if (QListWidgetItem *item = m_list->currentItem())
        style.code = item->data(Qt::UserRole).toInt();
    style.innerBand = edit::BandStyle(std::clamp(m_inner->checkedId(), 0, 2));
    style.outerBand = edit::BandStyle(std::clamp(m_outer->checkedId(), 0, 2));
    m_preview = QImage(PreviewSide, PreviewSide, QImage::Format_RGB32);
    m_preview.fill(palette().color(QPalette::Base));
    const double margin = 12;
    const double room = PreviewSide - 2 * margin;
    QSizeF size(room, room);
    if (m.SHAPE_WIDTH > 0 && m.SHAPE_HEIGHT > 0)
        size = QSizeF(m.SHAPE_WIDTH, m.SHAPE_HEIGHT).scaled(room, room, Qt::KeepAspectRatio);
    const QRectF place(QPointF((PreviewSide - size.width()) / 2, (PreviewSide - size.height()) / 2), size);
    edit::drawShape(&m_preview, style, place);
    m_image->setPixmap(QPixmap::fromImage(m_preview));
}

bool AddShape1::chooseColour(QRgb *colour)
{
    DialogRequest request;
    request.kind = DialogKind::Color;
    request.title = QStringLiteral("Select Color for Object");
    request.color = QColor::fromRgb(*colour);
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted || !answer.color.isValid())
        return false;
    *colour = answer.color.rgb();
    showSamples();
    updatePreview();
    return true;
}

void AddShape1::ShapeClrBtn_Click() { chooseColour(&m_host.overlayMembers().SHAPE_COLOR); }
void AddShape1::BorderClrBtn_Click() { chooseColour(&m_host.overlayMembers().SHAPEBORDER_COLOR); }

void AddShape1::OKBtn_Click()
{
    edit::OverlayMembers &m = m_host.overlayMembers();
    const int row = std::max(0, m_list->currentRow());
    m.PLACEOBJECT_FLG = true;
    m.SHAPE = m_list->item(row)->data(Qt::UserRole).toInt();
    m.SHAPE_HEIGHT = edit::leadingNumber(m_sizes.at(0)->text()) * edit::ShapeSizeUnit;
    m.SHAPE_WIDTH = edit::leadingNumber(m_sizes.at(1)->text()) * edit::ShapeSizeUnit;
    m.SHAPE_INRBAND = qint16(m_inner->checkedId() == 0 ? 0 : m_inner->checkedId() == 1 ? 1 : 2);
    m.SHAPE_OUTBAND = qint16(m_outer->checkedId() == 0 ? 0 : m_outer->checkedId() == 1 ? 1 : 2);
    m.SHAPE_INDEX = qint16(row);
    m_host.setPlacementPointer(true);
    m.DRAWMENU = edit::DrawMenuShape;
    m.DRAW_NOW_FLG = true;
    closeWaiting();
}

void AddShape1::CancelBtn_Click()
{
    closeCancelled(commands::keys::mnuAddShapestoPictures, commands::keys::ShapesBtn);
}

} // namespace tarnby::ui
