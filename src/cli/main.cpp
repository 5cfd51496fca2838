#include "CliCommand.h"

#include <QCoreApplication>

#include <algorithm>
#include <cstring>

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
} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    QCoreApplication::setApplicationName(QStringLiteral("Tarnby"));
    QCoreApplication::setOrganizationName(QStringLiteral("Tarnby"));

    if (argc < 2 || std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0) {
        printHelp();
        return argc < 2 ? 2 : 0;
    }
    QByteArrayList args;
    for (int i = 2; i < argc; ++i)
        args << QByteArray(argv[i]);
    for (const CliCommand &c : commandTable()) {
        if (std::strcmp(argv[1], c.name) == 0)
            return c.run(args);
    }
    err(QStringLiteral("tarnby-cli: unknown command \"%1\"; try tarnby-cli --help\n").arg(QString::fromLocal8Bit(argv[1])));
    return 2;
}
