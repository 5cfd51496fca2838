#include "CliCommand.h"

#include <QGuiApplication>

#include <algorithm>
#include <cstring>
#include <memory>

using namespace tarnby::cli;

namespace {
void printHelp()
{
    std::vector<CliCommand> commands = commandTable();
    std::sort(commands.begin(), commands.end(),
              [](const CliCommand &a, const CliCommand &b) { return std::strcmp(a.name, b.name) < 0; });
    out(QStringLiteral("Usage: tarnby-cli COMMAND [ARGUMENTS]\n\nCommands:\n"));
    for (const CliCommand &c : commands)
        out(QStringLiteral("  %1\n      %2\n").arg(QLatin1String(c.synopsis), QLatin1String(c.summary)));
    out(QStringLiteral("\n  --help\n      Show this list.\n"));
}

// Qt warns on standard error when XDG_RUNTIME_DIR is unset, as it is under
// cron, ssh without a login session or a container: the platform plugin
// looks for the runtime folder even on the offscreen platform. The folder Qt
// falls back to serves a command-line run, and the warning is none of this
// tool's business; every other message goes on as before.
QtMessageHandler qtMessageHandler = nullptr;

void dropRuntimeFolderWarning(QtMsgType type, const QMessageLogContext &context, const QString &message)
{
    if (type == QtWarningMsg && message.startsWith(QLatin1String("QStandardPaths: XDG_RUNTIME_DIR not set")))
        return;
    qtMessageHandler(type, context, message);
}

// The application object the command needs. Drawing commands get a GUI
// application so that drawings and metafiles keep their text; without a
// display it runs on the offscreen platform, unless the user chose one.
// Only the program name is handed over: Qt would take options such as
// "-platform" or "-reverse" out of the arguments, which are file names here.
std::unique_ptr<QCoreApplication> makeApplication(char *program, Needs needs)
{
    static int argc = 1;
    static char *argv[] = {program, nullptr};
    if (needs == Needs::Core)
        return std::make_unique<QCoreApplication>(argc, argv);
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    return std::make_unique<QGuiApplication>(argc, argv);
}

const CliCommand *findCommand(const char *name)
{
    for (const CliCommand &c : commandTable()) {
        if (std::strcmp(name, c.name) == 0)
            return &c;
    }
    return nullptr;
}
} // namespace

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qtMessageHandler = qInstallMessageHandler(dropRuntimeFolderWarning);
    const CliCommand *command = argc >= 2 ? findCommand(argv[1]) : nullptr;
    const std::unique_ptr<QCoreApplication> app = makeApplication(argv[0], command ? command->needs : Needs::Core);
    QCoreApplication::setApplicationName(QStringLiteral("Tarnby"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnby"));

    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        printHelp();
        return argc < 2 ? 2 : 0;
    }
    QByteArrayList args;
    for (int i = 2; i < argc; ++i)
        args << QByteArray(argv[i]);
    if (command)
        return command->run(args);
    err(QStringLiteral("tarnby-cli: unknown command \"%1\"; try tarnby-cli --help\n").arg(QString::fromLocal8Bit(argv[1])));
    return 2;
}
