#pragma once

#include <QByteArrayList>
#include <QString>

#include <cstdio>
#include <memory>
#include <vector>

class QCoreApplication;

namespace tarnby::cli {

// Makes the application object a command runs under. argc and argv must
// outlive it.
using ApplicationFactory = std::unique_ptr<QCoreApplication> (*)(int &argc, char **argv);

// The application object of a command that draws pictures: those need fonts
// for the text of drawings and metafiles, and so a QGuiApplication (on the
// offscreen platform unless QT_QPA_PLATFORM says otherwise), which costs a
// platform plugin and font set-up at start. Defined in CliGuiApplication.cpp,
// which only the programs with such commands link, so that the others never
// load Qt's GUI library.
std::unique_ptr<QCoreApplication> makeGuiApplication(int &argc, char **argv);

// One command of tarnby-cli. run() gets the arguments after the command name
// as the raw bytes the shell passed (file names need not be valid UTF-8) and
// returns the process exit status. Most commands get by with a
// QCoreApplication (makeApplication left null).
struct CliCommand {
    const char *name;
    const char *synopsis;
    const char *summary;
    int (*run)(const QByteArrayList &args);
    ApplicationFactory makeApplication = nullptr;
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

// A command that draws pictures, text included (see makeGuiApplication).
#define TARNBY_CLI_DRAWING_COMMAND(id, name, synopsis, summary, fn)                                \
    static const ::tarnby::cli::CommandRegistrar tarnbyCliCommand_##id(                            \
        {name, synopsis, summary, fn, &::tarnby::cli::makeGuiApplication})
