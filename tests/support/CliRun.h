#pragma once

#include <QByteArray>
#include <QProcess>
#include <QStringList>

namespace clitest {

// What one run of the built tarnby-cli left: its exit status (-1 when it
// crashed or did not end in time) and both output streams.
struct Run {
    int exitCode = -1;
    QByteArray out;
    QByteArray err;
};

// Runs the tarnby-cli of this build (found through TARNBY_BINARY_DIR) with
// command and args, waiting at most timeoutMs.
inline Run runCli(const QString &command, const QStringList &args, int timeoutMs = 60000)
{
    QProcess p;
    p.start(qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli"),
            QStringList{command} + args);
    if (!p.waitForFinished(timeoutMs))
        return {};
    return {p.exitStatus() == QProcess::NormalExit ? p.exitCode() : -1, p.readAllStandardOutput(),
            p.readAllStandardError()};
}

} // namespace clitest
