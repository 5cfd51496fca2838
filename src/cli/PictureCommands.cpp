#include "CliCommand.h"

#include "core/platform/imaging/PictureFormats.h"
#include "core/platform/imaging/PictureLayer.h"

namespace {

using namespace tarnby::imaging;

// The nine rows of the properties window, "caption<TAB>value" a line.
int runInfo(const QByteArrayList &args)
{
    if (args.size() != 1) {
        tarnby::cli::err(QStringLiteral("Usage: tarnby-cli info FILE\n"));
        return 2;
    }
    const QString path = QString::fromLocal8Bit(args.constFirst());
    const LoadResult loaded = loadPicture(path);
    if (!loaded.ok()) {
        tarnby::cli::err(QStringLiteral("%1: %2\n").arg(path, loaded.errorString));
        return 1;
    }
    for (const PropertyRow &row : pictureProperties(loaded.picture))
        tarnby::cli::out(QStringLiteral("%1\t%2\n").arg(row.caption, row.value));
    return 0;
}

// One line per picture extension: extension, read, write, library, and what
// a save under the extension holds where that is another format's data.
int runFormats(const QByteArrayList &args)
{
    if (!args.isEmpty()) {
        tarnby::cli::err(QStringLiteral("Usage: tarnby-cli formats\n"));
        return 2;
    }
    tarnby::cli::out(QStringLiteral("Extension\tRead\tWrite\tLibrary\tNote\n"));
    for (const PictureFormat &format : pictureFormats()) {
        const PictureFormat *writer = formatForCode(format.code);
        const bool readable = canRead(format);
        const bool writable = writer && canWrite(*writer);
        const Route reader = effectiveReader(format);
        QString library = routeLibrary(reader);
        // Our codec reads some variants of the format, ImageMagick the others.
        const bool shared = reader == Route::OwnCodec && format.ownCoverage == OwnCoverage::SomeVariants;
        if (shared)
            library = QStringLiteral("%1+%2").arg(routeLibrary(reader), routeLibrary(Route::Magick));
        if (shared && writable)
            library = QStringLiteral("%1 (read), %2 (write)").arg(library, routeLibrary(writer->writer));
        else if (writable && writer->writer != reader)
            library = QStringLiteral("%1 (read), %2 (write)").arg(routeLibrary(reader), routeLibrary(writer->writer));
        else if (!readable && writable)
            library = routeLibrary(writer->writer);
        QString note;
        if (format.refusal)
            note = QLatin1String(format.refusal);
        else if (writable && qstricmp(writer->writeName, format.readName) != 0 && writer != &format)
            note = QStringLiteral("saved as %1 data (format code %2)").arg(QLatin1String(writer->extension)).arg(format.code);
        tarnby::cli::out(QStringLiteral("%1\t%2\t%3\t%4\t%5\n")
                             .arg(QLatin1String(format.extension), readable ? QStringLiteral("yes") : QStringLiteral("no"),
                                  writable ? QStringLiteral("yes") : QStringLiteral("no"), library, note));
    }
    return 0;
}

} // namespace

TARNBY_CLI_DRAWING_COMMAND(info, "info", "info FILE",
                   "The picture facts of the properties window, \"caption<TAB>value\" a line.", runInfo);
TARNBY_CLI_COMMAND(formats, "formats", "formats",
                   "Each picture extension: read, write (yes/no), the library used, and a note; tab-separated.",
                   runFormats);
