#include "ui/tools/QuikTip1.h"

#include "core/app/AppState.h"
#include "core/settings/ProgramOptions.h"
#include "core/tools/QuickTips.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QCheckBox>
#include <QDir>
#include <QGridLayout>
#include <QLabel>
#include <QPointer>
#include <QPushButton>

namespace tarnby::ui {

namespace {

// What lblTipText says before a tip is shown; an empty tips file leaves it.
const char *DesignedTipText = "No tips are available.";

} // namespace

QuikTip1::QuikTip1(AppState &state, UiServices &services, const QString &key, QWidget *parent)
    : QDialog(parent)
    , TIPKEY(key)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("QuikTip1"));
    setWindowTitle(QStringLiteral("Quick Tip of the Day"));

    auto *picture = new QLabel(this);
    picture->setObjectName(QStringLiteral("Picture1"));
    picture->setProperty(KeepOwnColorsProperty, true);
    const QPixmap bulb(QDir(m_state.programFolder).filePath(QStringLiteral("BMPS/BulbOn.Bmp")));
    if (!bulb.isNull())
        picture->setPixmap(bulb);
    auto *did = new QLabel(QStringLiteral("Did you know..."), this);
    did->setObjectName(QStringLiteral("Label1"));
    QFont bold = did->font();
    bold.setBold(true);
    did->setFont(bold);
    m_tip = new QLabel(QLatin1String(DesignedTipText), this);
    m_tip->setObjectName(QStringLiteral("lblTipText"));
    m_tip->setWordWrap(true);
    m_tip->setAlignment(Qt::AlignLeft | Qt::AlignTop);
    m_tip->setMinimumSize(320, 120);
    m_startup = new QCheckBox(QStringLiteral("Do not Show Tips at Startup"), this);
    m_startup->setObjectName(QStringLiteral("chkLoadTipsAtStartup"));
    m_startup->setToolTip(QStringLiteral("Check if you do not want to display these quick tips at Start Up"));
    auto *next = new QPushButton(QStringLiteral("&Next Tip"), this);
    next->setObjectName(QStringLiteral("NextTipBtn"));
    next->setToolTip(QStringLiteral("Display Next Quick Tip"));
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setToolTip(QStringLiteral("Set Option whether to display tips at startup"));
    ok->setDefault(true);

    auto *grid = new QGridLayout(this);
    grid->addWidget(picture, 0, 0, 2, 1, Qt::AlignTop);
    grid->addWidget(did, 0, 1);
    grid->addWidget(m_tip, 1, 1);
    grid->addWidget(m_startup, 2, 0, 1, 2);
    auto *buttons = new QVBoxLayout;
    buttons->addWidget(ok);
    buttons->addWidget(next);
    buttons->addStretch();
    grid->addLayout(buttons, 0, 2, 3, 1);

    connect(next, &QPushButton::clicked, this, &QuikTip1::nextTip);
    connect(ok, &QPushButton::clicked, this, [this] {
        storeOption();
        accept();
    });

    installWindowColors(this, m_state);
    m_state.tipsWindowOpen = true;
    m_startup->setChecked(!tools::showTipsAtStartup(m_state.options.quickTipsAtStartup));
    if (!LoadTips(QDir(m_state.programFolder).filePath(QLatin1String(tools::TipsFileName))))
        m_tip->setText(tools::missingTipsText());
}

QuikTip1::~QuikTip1()
{
    m_state.tipsWindowOpen = false;
}

QString QuikTip1::tipText() const
{
    return m_tip->text();
}

bool QuikTip1::LoadTips(const QString &path)
{
    const tools::TipsLoad load = tools::LoadTips(m_state.programFolder.isEmpty() ? QString() : path);
    m_tips = load.tips;
    if (load.readError)
        m_services.messages.inform(QLatin1String(tools::TipsLoadError), this);
    if (!load.ok)
        return false;
    m_current = tools::randomTipIndex(int(m_tips.size()));
    showTip();
    return true;
}

void QuikTip1::showTip()
{
    if (const std::optional<QString> tip = tools::tipToShow(m_tips, m_current))
        m_tip->setText(*tip);
}

void QuikTip1::nextTip()
{
    m_current = tools::randomTipIndex(int(m_tips.size()));
    showTip();
}

void QuikTip1::storeOption()
{
    m_state.options.quickTipsAtStartup = tools::startupOptionValue(m_startup->isChecked());
    QString error;
    if (!m_state.programFolder.isEmpty() && !settings::writeProgramOptions(m_state.programFolder, m_state.options, &error))
        m_services.messages.inform(error, this);
}

void QuikTip1::done(int result)
{
    m_state.tipsWindowOpen = false;
    QDialog::done(result);
}

QuikTip1 *showQuickTips(AppState &state, UiServices &services, QWidget *parent, const QString &key)
{
    static QPointer<QuikTip1> open;
    // A closed window may still wait for its deletion: only a visible one counts.
    if (open && open->isVisible()) {
        open->raise();
        open->activateWindow();
        return open;
    }
    auto *window = new QuikTip1(state, services, key, parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
    window->show();
    open = window;
    return window;
}

} // namespace tarnby::ui
