#include "ui/tools/About1.h"

#include "core/app/AppState.h"
#include "ui/services/ApplicationIcon.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QProcess>
#include <QPushButton>
#include <QVBoxLayout>

namespace tarnby::ui {

namespace {

QLabel *label(QWidget *parent, const char *name, const QString &text)
{
    auto *l = new QLabel(text, parent);
    l->setObjectName(QLatin1String(name));
    l->setWordWrap(true);
    return l;
}

QFrame *line(QWidget *parent)
{
    auto *l = new QFrame(parent);
    l->setObjectName(QStringLiteral("Line1"));
    l->setFrameShape(QFrame::HLine);
    l->setFrameShadow(QFrame::Sunken);
    return l;
}

} // namespace

About1::About1(AppState &state, UiServices &services, SettingsStore &store, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_store(store)
{
    setObjectName(QStringLiteral("About1"));
    setWindowTitle(QStringLiteral("About Tarnby 3.0"));

    auto *icon = new QLabel(this);
    icon->setObjectName(QStringLiteral("picIcon"));
    icon->setProperty(KeepOwnColorsProperty, true);
    icon->setPixmap(applicationIcon().pixmap(48, 48));
    auto *title = label(this, "lblTitle", QStringLiteral("The Tarnby - Version 3.0"));
    QFont big = title->font();
    big.setBold(true);
    big.setPointSizeF(big.pointSizeF() + 2);
    title->setFont(big);
    auto *description = label(
        this, "lblDescription",
        QStringLiteral("The Tarnby helps you find common file types for Pictures, multimedia, documents, text, "
                       "database, and spread sheet files. It shows them, prints them, sends them to other people "
                       "by e-mail, receives them, and keeps related files together in named groups so that they "
                       "can be found again."));
    auto *warning = label(
        this, "lblDisclaimer",
        QStringLiteral("Warning: This program moves, renames and deletes files and changes pictures when you ask "
                       "it to. Use it at your own risk, and keep copies of the files that matter to you."));
    auto *ok = new QPushButton(QStringLiteral("OK"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setToolTip(QStringLiteral("Exit About the Tarnby 2.0"));
    ok->setDefault(true);
    auto *sys = new QPushButton(QStringLiteral("&System Info..."), this);
    sys->setObjectName(QStringLiteral("SysBtn"));
    sys->setToolTip(QStringLiteral("View Windows System Information"));

    auto *layout = new QVBoxLayout(this);
    auto *top = new QHBoxLayout;
    top->addWidget(icon, 0, Qt::AlignTop);
    auto *texts = new QVBoxLayout;
    texts->addWidget(title);
    texts->addWidget(description);
    top->addLayout(texts, 1);
    layout->addLayout(top);
    layout->addWidget(line(this));
    layout->addWidget(warning);
    layout->addWidget(line(this));
    auto *buttons = new QHBoxLayout;
    buttons->addStretch();
    buttons->addWidget(ok);
    buttons->addWidget(sys);
    layout->addLayout(buttons);
    resize(460, 280);

    m_launcher = [](const QString &program) { return QProcess::startDetached(program, {}); };
    connect(ok, &QPushButton::clicked, this, &QDialog::accept);
    connect(sys, &QPushButton::clicked, this, &About1::StartSysInfo);

    installWindowColors(this, m_state);
    m_state.aboutWindowOpen = true;
}

bool About1::GetKeyValue(const QString &root, const QString &keyPath, const QString &valueName, QString *value) const
{
    const tools::SettingsRegistry registry(m_store);
    return tools::GetKeyValue(registry, root, keyPath, valueName, value);
}

QString About1::StartSysInfo()
{
    const tools::SettingsRegistry registry(m_store);
    const QString program = tools::findSystemInfoProgram(registry, m_finder);
    if (!program.isEmpty() && m_launcher(program))
        return program;
    m_services.messages.inform(QLatin1String(tools::SysInfoUnavailable), this);
    return {};
}

} // namespace tarnby::ui
