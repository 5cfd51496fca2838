#pragma once

#include <QByteArrayList>
#include <QString>

#include <cstdio>
#include <vector>

namespace tarnby::cli {

// What a command needs of the application object: most get by with a
// QCoreApplication; those that draw pictures need fonts for the text of
// drawings and metafiles, and so a QGuiApplication (on the offscreen platform
// unless QT_QPA_PLATFORM says otherwise), which costs a platform plugin and
// font set-up at start.
enum class Needs { Core, Fonts };

// One command of tarnby-cli. run() gets the arguments after the command name
// as the raw bytes the shell passed (file names need not be valid UTF-8) and
// returns the process exit status.
struct CliCommand {
    const char *name;
    const char *synopsis;
    const char *summary;
    int (*run)(const QByteArrayList &args);
    Needs needs = Needs::Core;
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

// A command that draws pictures, text included (see Needs::Fonts).
#define TARNBY_CLI_DRAWING_COMMAND(id, name, synopsis, summary, fn)                                \
    static const ::tarnby::cli::CommandRegistrar tarnbyCliCommand_##id(                            \
        {name, synopsis, summary, fn, ::tarnby::cli::Needs::Fonts})
