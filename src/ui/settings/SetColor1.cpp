#include "ui/settings/SetColor1.h"

#include "ui/services/DialogButtons.h"

#include "core/app/AppState.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QGridLayout>
#include <QHBoxLayout>
#include <QMouseEvent>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

using settings::Swatch;

ColorSwatch::ColorSwatch(int number, QWidget *parent)
    : QLabel(parent)
    , m_number(number)
{
    setObjectName(QStringLiteral("Swatch_%1").arg(number));
    setFrameShape(QFrame::Box);
    setMinimumSize(60, 20);
    setAutoFillBackground(true);
    setProperty(KeepOwnColorsProperty, true);
    setToolTip(QStringLiteral("Double-click to choose a colour"));
}

void ColorSwatch::setValue(settings::ColorNumber value)
{
    m_value = value;
    QPalette p = palette();
    p.setColor(QPalette::Window, settings::toQColor(value));
    setPalette(p);
}

void ColorSwatch::mouseDoubleClickEvent(QMouseEvent *event)
{
    event->accept();
    emit doubleClicked(m_number);
}

SetColor1::SetColor1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("SetColor1"));
    setWindowTitle(QStringLiteral("Set Colors for Tarnby"));

    // Rows top to bottom: caption, background swatch, text swatch (-1: none).
    struct Row {
        const char *caption;
        Swatch back;
        int text;
    };
    const Row rows[] = {
        {"Select Color for Main Window:", Swatch::MainWindowBack, 13},
        {"Select Color for Menus and ToolBars:", Swatch::MenusBack, 14},
        {"Select Color for List Boxes:", Swatch::ListBoxesBack, 15},
        {"Select Color for Entry Fields:", Swatch::EntryFieldsBack, 16},
        {"Select Color for Display Fields:", Swatch::DisplayFieldsBack, 17},
        {"Select Color for Selection Windows:", Swatch::SelectionWindowsBack, 18},
        {"Select Color for Database Browser:", Swatch::DatabaseBrowserBack, 19},
        {"Select Color for ThumbNails:", Swatch::ThumbNailsBack, 20},
        {"Select Color for ThumbNail Window:", Swatch::ThumbNailWindowBack, 21},
        {"Select Color for Help Quick Tips:", Swatch::HelpTipsBack, 22},
        {"Select Color for Selection Item:", Swatch::SelectionItemBack, -1},
        {"Select Color for Picture Windows:", Swatch::PictureWindowsBack, -1},
        {"Select Color for Selection Buttons:", Swatch::SelectionButtonsBack, -1},
    };

    for (int i = 0; i < settings::SwatchCount; ++i) {
        m_swatches[i] = new ColorSwatch(i, this);
        connect(m_swatches[i], &ColorSwatch::doubleClicked, this, &SetColor1::chooseColor);
    }

    auto *layout = new QVBoxLayout(this);
    auto *grid = new QGridLayout;
    auto *backHead = new QLabel(QStringLiteral("BackGround"), this);
    backHead->setObjectName(QStringLiteral("LblBackGround"));
    auto *textHead = new QLabel(QStringLiteral("Text"), this);
    textHead->setObjectName(QStringLiteral("LblText"));
    grid->addWidget(backHead, 0, 1, Qt::AlignCenter);
    grid->addWidget(textHead, 0, 2, Qt::AlignCenter);
    int r = 1;
    for (const Row &row : rows) {
        auto *caption = new QLabel(QLatin1String(row.caption), this);
        caption->setObjectName(QStringLiteral("LblRow%1").arg(r - 1));
        grid->addWidget(caption, r, 0);
        grid->addWidget(m_swatches[int(row.back)], r, 1);
        if (row.text >= 0)
            grid->addWidget(m_swatches[row.text], r, 2);
        ++r;
    }
    layout->addLayout(grid);

    const DialogButtons buttons = makeDialogButtons(this);
    QPushButton *ok = buttons.ok;
    QPushButton *cancel = buttons.cancel;
    QPushButton *help = buttons.help;
    ok->setToolTip(QStringLiteral("Click OK to Select Program Colors"));
    cancel->setToolTip(QStringLiteral("Click Cancel to Close Color Selection Window"));
    help->setToolTip(QStringLiteral("Help with Program Color Selections"));
    layout->addLayout(buttons.row);
    connect(ok, &QPushButton::clicked, this, [this] {
        if (store())
            accept();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, &SetColor1::helpRequested);

    // Each swatch from its stored value; 10 and 21 show the shared one.
    const auto values = m_state.colors.swatches();
    for (int i = 0; i < settings::SwatchCount; ++i)
        m_swatches[i]->setValue(values[i]);

    installWindowColors(this, m_state);
}

void SetColor1::chooseColor(int number)
{
    if (number < 0 || number >= settings::SwatchCount)
        return;
    DialogRequest request;
    request.kind = DialogKind::Color;
    request.title = QStringLiteral("Select Color");
    request.color = settings::toQColor(m_swatches[number]->value(), palette());
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (answer.accepted && answer.color.isValid())
        m_swatches[number]->setValue(settings::fromQColor(answer.color));
}

bool SetColor1::store()
{
    std::array<settings::ColorNumber, settings::SwatchCount> shown{};
    for (int i = 0; i < settings::SwatchCount; ++i)
        shown[i] = m_swatches[i]->value();
    settings::WindowColors colors = m_state.colors;
    colors.storeSwatches(shown);
    QString error;
    if (!settings::writeWindowColors(m_state.programFolder, colors, &error)) {
        m_services.messages.inform(error, this);
        return false;
    }
    m_state.colors = colors;
    return true;
}

} // namespace tarnby::ui
