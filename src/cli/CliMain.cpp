// The main of each command program behind tarnby-cli (see Launcher.cpp): the
// program is started as "PROGRAM COMMAND [ARGUMENTS]" and runs the command
// from its own command table. "PROGRAM --commands" prints one line a command,
// "name<TAB>synopsis<TAB>summary", from which the launcher builds its help.
#include "CliCommand.h"

#include <QCoreApplication>

#include <cstring>
#include <memory>

using namespace tarnby::cli;

namespace {
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

// Only the program name is handed to the application object: Qt would take
// options such as "-platform" or "-reverse" out of the arguments, which are
// file names here.
std::unique_ptr<QCoreApplication> makeApplication(char *program, const CliCommand &command)
{
    static int argc = 1;
    static char *argv[] = {program, nullptr};
    if (command.makeApplication)
        return command.makeApplication(argc, argv);
    return std::make_unique<QCoreApplication>(argc, argv);
}

const CliCommand *findCommand(const char *name)
{
    for (const CliCommand &c : commandTable()) {
        if (std::strcmp(name, c.name) == 0)
            return &c;
    }
    return nullptr;
}

void listCommands()
{
    for (const CliCommand &c : commandTable())
        out(QStringLiteral("%1\t%2\t%3\n").arg(QLatin1String(c.name), QLatin1String(c.synopsis), QLatin1String(c.summary)));
}
} // namespace

int main(int argc, char *argv[])
{
    if (argc >= 2 && std::strcmp(argv[1], "--commands") == 0) {
        listCommands();
        return 0;
    }
    const CliCommand *command = argc >= 2 ? findCommand(argv[1]) : nullptr;
    if (!command) {
        err(QStringLiteral("tarnby-cli: unknown command \"%1\"; try tarnby-cli --help\n")
                .arg(argc >= 2 ? QString::fromLocal8Bit(argv[1]) : QString()));
        return 2;
    }
    if (qEnvironmentVariableIsEmpty("XDG_RUNTIME_DIR"))
        qtMessageHandler = qInstallMessageHandler(dropRuntimeFolderWarning);
    const std::unique_ptr<QCoreApplication> app = makeApplication(argv[0], *command);
    QCoreApplication::setApplicationName(QStringLiteral("Tarnby"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnby"));

    QByteArrayList args;
    for (int i = 2; i < argc; ++i)
        args << QByteArray(argv[i]);
    return command->run(args);
}
