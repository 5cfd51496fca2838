#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/catalogue/CommandLine.h"
#include "ui/browser/Tarnby1.h"
#include "ui/services/ApplicationIcon.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QTimer>

int main(int argc, char *argv[])
{
    QApplication app(argc, argv);
    QApplication::setApplicationName(QStringLiteral("Tarnby"));
    QApplication::setOrganizationName(QStringLiteral("Tarnby"));
    QApplication::setApplicationVersion(QStringLiteral("3.0"));
    QApplication::setWindowIcon(tarnby::ui::applicationIcon());
    // Lets the desktop match the windows to tarnby.desktop (Wayland's app id).
    QGuiApplication::setDesktopFileName(QStringLiteral("tarnby"));

    tarnby::ui::StartupRequest request;
    request.homeVariable = qEnvironmentVariable("TARNBY_HOME");
    QStringList files;
    const QStringList args = QApplication::arguments().mid(1);
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QString &arg = args.at(i);
        if (arg == QLatin1String("--home") && i + 1 < args.size())
            request.homeOption = args.at(++i);
        else if (arg.startsWith(QLatin1String("--home=")))
            request.homeOption = arg.mid(7);
        else
            files << arg;
    }
    request.commandLine = tarnby::joinArguments(files);

    tarnby::AppState state;
    tarnby::ui::UiServices services;
    tarnby::SettingsStore store;
    tarnby::ui::Tarnby1 browser(state, services, store);
    browser.load(request);
    browser.show();
    QTimer::singleShot(0, &browser, &tarnby::ui::Tarnby1::openCommandLineFiles);
    return app.exec();
}
