#include "core/catalogue/CommandLine.h"

namespace tarnby {

namespace {
bool isBlank(QChar c)
{
    return c == QLatin1Char(' ') || c == QLatin1Char('\t');
}
} // namespace

QStringList splitCommandLine(const QString &commandLine)
{
    QStringList args;
    const qsizetype n = commandLine.size();
    qsizetype i = 0;
    while (i < n) {
        while (i < n && isBlank(commandLine.at(i)))
            ++i;
        if (i >= n)
            break;
        if (commandLine.at(i) == QLatin1Char('"')) {
            const qsizetype close = commandLine.indexOf(QLatin1Char('"'), i + 1);
            const qsizetype end = close < 0 ? n : close;
            args << commandLine.mid(i + 1, end - i - 1);
            i = close < 0 ? n : close + 1;
        } else {
            const qsizetype start = i;
            while (i < n && !isBlank(commandLine.at(i)))
                ++i;
            args << commandLine.mid(start, i - start);
        }
    }
    return args;
}

QString joinArguments(const QStringList &arguments)
{
    QStringList parts;
    parts.reserve(arguments.size());
    for (const QString &arg : arguments) {
        const bool needsQuotes = arg.isEmpty() || arg.contains(QLatin1Char(' ')) || arg.contains(QLatin1Char('\t'));
        parts << (needsQuotes ? QLatin1Char('"') + arg + QLatin1Char('"') : arg);
    }
    return parts.join(QLatin1Char(' '));
}

} // namespace tarnby
