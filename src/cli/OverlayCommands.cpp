#include "CliCommand.h"

#include "core/edit/OverlayCatalogues.h"

namespace {

using tarnby::edit::CatalogueEntry;

int printCatalogue(const QByteArrayList &args, std::span<const CatalogueEntry> entries, const char *usage)
{
    if (!args.isEmpty()) {
        tarnby::cli::err(QLatin1String(usage));
        return 2;
    }
    QByteArray text;
    for (const CatalogueEntry &entry : entries)
        text += QByteArray(entry.name) + '\t' + QByteArray::number(entry.code) + '\n';
    tarnby::cli::outBytes(text);
    return 0;
}

int runShapes(const QByteArrayList &args)
{
    return printCatalogue(args, tarnby::edit::shapes(), "Usage: tarnby-cli shapes\n");
}

int runTextStyles(const QByteArrayList &args)
{
    return printCatalogue(args, tarnby::edit::textStyles(), "Usage: tarnby-cli text-styles\n");
}

} // namespace

TARNBY_CLI_COMMAND(shapes, "shapes", "shapes",
                   "The shapes that can be stamped on a picture, in list order, \"NAME<TAB>CODE\" a line.", runShapes);
TARNBY_CLI_COMMAND(textstyles, "text-styles", "text-styles",
                   "The text effects for text on a picture, in list order, \"NAME<TAB>CODE\" a line.", runTextStyles);
