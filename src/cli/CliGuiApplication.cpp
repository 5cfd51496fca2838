#include "CliCommand.h"

#include <QGuiApplication>

namespace tarnby::cli {

std::unique_ptr<QCoreApplication> makeGuiApplication(int &argc, char **argv)
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

} // namespace tarnby::cli
