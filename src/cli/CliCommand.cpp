#include "CliCommand.h"

namespace tarnby::cli {

std::vector<CliCommand> &commandTable()
{
    static std::vector<CliCommand> table;
    return table;
}

void outBytes(const QByteArray &bytes)
{
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stdout);
}

void out(const QString &text)
{
    outBytes(text.toUtf8());
}

void err(const QString &text)
{
    const QByteArray bytes = text.toUtf8();
    std::fwrite(bytes.constData(), 1, size_t(bytes.size()), stderr);
}

} // namespace tarnby::cli
