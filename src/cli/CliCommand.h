#pragma once

#include <QByteArrayList>
#include <QString>

#include <cstdio>
#include <vector>

namespace tarnby::cli {

// One command of tarnby-cli. run() gets the arguments after the command name
// as the raw bytes the shell passed (file names need not be valid UTF-8) and
// returns the process exit status.
struct CliCommand {
    const char *name;
    const char *synopsis;
    const char *summary;
    int (*run)(const QByteArrayList &args);
};

std::vector<CliCommand> &commandTable();

struct CommandRegistrar {
    explicit CommandRegistrar(const CliCommand &command) { commandTable().push_back(command); }
};

// Writes text (UTF-8) to standard output or standard error.
void out(const QString &text);
void err(const QString &text);
void outBytes(const QByteArray &bytes);

} // namespace tarnby::cli

#define TARNBY_CLI_COMMAND(id, name, synopsis, summary, fn)                                        \
    static const ::tarnby::cli::CommandRegistrar tarnbyCliCommand_##id({name, synopsis, summary, fn})
