// tarnby-cli, the command users type, starts the program that carries the
// command. Each family of commands is a program of its own (CliMain.cpp),
// linked with only the libraries it needs: when one program held them all,
// loading the picture, printing, mail and GUI libraries cost every run about
// 25 ms before the command began, more than a table export or a group listing
// of a small file takes. This launcher loads nothing but the C library.
//
// The programs sit beside the launcher in a build folder and in
// TARNBY_CLI_PROGRAM_DIR (relative to the launcher's folder) once installed.
#include "CliPrograms.h"

#include <cerrno>
#include <climits>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iterator>

#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

extern char **environ;

namespace {

const char *programOf(const char *command)
{
    for (const CommandProgram &entry : commandPrograms) {
        if (std::strcmp(entry.command, command) == 0)
            return entry.program;
    }
    return nullptr;
}

// The full path of a command program, or false with errno set.
bool programPath(const char *program, char *path, size_t size)
{
    char folder[PATH_MAX];
    const ssize_t length = readlink("/proc/self/exe", folder, sizeof folder - 1);
    if (length <= 0)
        return false;
    folder[length] = '\0';
    if (char *slash = std::strrchr(folder, '/'))
        *slash = '\0';
    for (const char *below : {".", TARNBY_CLI_PROGRAM_DIR}) {
        if (std::snprintf(path, size, "%s/%s/%s", folder, below, program) >= int(size)) {
            errno = ENAMETOOLONG;
            return false;
        }
        if (access(path, X_OK) == 0)
            return true;
    }
    return false;
}

void cannotStart(const char *program)
{
    std::fprintf(stderr, "tarnby-cli: cannot start %s: %s\n", program, std::strerror(errno));
}

// Appends what "PROGRAM --commands" prints to *text (grown with realloc).
bool readCommandLines(const char *program, char **text, size_t *used)
{
    char path[PATH_MAX];
    int fds[2];
    if (!programPath(program, path, sizeof path) || pipe(fds) != 0) {
        cannotStart(program);
        return false;
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, fds[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, fds[0]);
    char listOption[] = "--commands";
    char *argv[] = {path, listOption, nullptr};
    pid_t pid = 0;
    const int spawned = posix_spawn(&pid, path, &actions, nullptr, argv, environ);
    posix_spawn_file_actions_destroy(&actions);
    close(fds[1]);
    bool ok = spawned == 0;
    if (!ok) {
        errno = spawned;
        cannotStart(program);
    }
    size_t capacity = *used + 4096;
    for (;;) {
        if (char *grown = static_cast<char *>(std::realloc(*text, capacity + 1)))
            *text = grown;
        else
            std::abort();
        const ssize_t n = read(fds[0], *text + *used, capacity - *used);
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0)
            break;
        *used += size_t(n);
        if (capacity - *used < 1024)
            capacity *= 2;
    }
    (*text)[*used] = '\0';
    close(fds[0]);
    int status = 0;
    if (ok && (waitpid(pid, &status, 0) != pid || !WIFEXITED(status) || WEXITSTATUS(status) != 0)) {
        std::fprintf(stderr, "tarnby-cli: %s did not list its commands\n", program);
        ok = false;
    }
    return ok;
}

int compareLines(const void *a, const void *b)
{
    return std::strcmp(*static_cast<char *const *>(a), *static_cast<char *const *>(b));
}

// The commands of every program, sorted by name: the synopsis, then the
// summary indented below it.
int printHelp(int status)
{
    char *text = nullptr;
    size_t used = 0;
    bool ok = true;
    for (size_t i = 0; i < std::size(commandPrograms); ++i) {
        bool seen = false;
        for (size_t j = 0; j < i; ++j)
            seen = seen || std::strcmp(commandPrograms[i].program, commandPrograms[j].program) == 0;
        if (!seen)
            ok = readCommandLines(commandPrograms[i].program, &text, &used) && ok;
    }
    char *lines[2 * std::size(commandPrograms)];
    size_t count = 0;
    for (char *line = text; line && *line && count < std::size(lines);) {
        char *end = std::strchr(line, '\n');
        if (end)
            *end = '\0';
        lines[count++] = line;
        line = end ? end + 1 : nullptr;
    }
    std::qsort(lines, count, sizeof lines[0], compareLines);
    std::fputs("Usage: tarnby-cli COMMAND [ARGUMENTS]\n\nCommands:\n", stdout);
    for (size_t i = 0; i < count; ++i) {
        char *synopsis = std::strchr(lines[i], '\t');
        char *summary = synopsis ? std::strchr(synopsis + 1, '\t') : nullptr;
        if (!summary)
            continue;
        *summary = '\0';
        std::printf("  %s\n      %s\n", synopsis + 1, summary + 1);
    }
    std::fputs("\n  --help\n      Show this list.\n", stdout);
    std::free(text);
    return ok ? status : 1;
}

} // namespace

int main(int argc, char *argv[])
{
    if (argc < 2)
        return printHelp(2);
    if (std::strcmp(argv[1], "--help") == 0 || std::strcmp(argv[1], "-h") == 0)
        return printHelp(0);
    const char *program = programOf(argv[1]);
    if (!program) {
        std::fprintf(stderr, "tarnby-cli: unknown command \"%s\"; try tarnby-cli --help\n", argv[1]);
        return 2;
    }
    char path[PATH_MAX];
    if (programPath(program, path, sizeof path))
        execv(path, argv);
    cannotStart(program);
    return 127;
}
