#include "CliCommand.h"

#include "core/platform/imaging/PictureLayer.h"
#include "core/printing/PrintJob.h"

#include <QFile>
#include <QFileInfo>
#include <QPageLayout>
#include <QPdfWriter>
#include <QSaveFile>
#include <QTemporaryDir>

namespace {

using namespace tarnby::printing;

const QString Usage = QStringLiteral(
    "Usage: tarnby-cli print FILE --pdf OUT [--title T] [--title-at X,Y] [--at X,Y] [--size WxH]\n"
    "                        [--table T] [--fields a,b,c] [--password-file F]\n"
    "                        [--font FAMILY] [--font-size PT]\n"
    "       tarnby-cli print [FILE --use-file] --report PATTERN DIR... --pdf OUT\n");

int usageError(const QString &message = {})
{
    if (!message.isEmpty())
        tarnby::cli::err(QStringLiteral("tarnby-cli print: ") + message + QLatin1Char('\n'));
    tarnby::cli::err(Usage);
    return 2;
}

int fail(const QString &message)
{
    tarnby::cli::err(QStringLiteral("tarnby-cli print: ") + message + QLatin1Char('\n'));
    return 1;
}

struct PrintOptions {
    QString file;
    QString pdf;
    QString title;
    QString titleX, titleY;
    QString x, y, width, height;
    QString table;
    QStringList fields;
    QString passwordFile;
    bool report = false;
    bool useFile = false;
    QString pattern;
    QStringList folders;
    PrintFont font;
};

// "X,Y" or "WxH" into two box texts, as the window's boxes would hold them.
bool splitPair(const QByteArray &value, char separator, QString *first, QString *second)
{
    const QList<QByteArray> parts = value.split(separator);
    if (parts.size() != 2)
        return false;
    bool ok1 = false, ok2 = false;
    parts[0].toDouble(&ok1);
    parts[1].toDouble(&ok2);
    if (!ok1 || !ok2)
        return false;
    *first = QString::fromLatin1(parts[0]);
    *second = QString::fromLatin1(parts[1]);
    return true;
}

// A PDF of letter paper without margins: the page is exactly the 8.5 by 11
// inches every job lays out.
void setUpWriter(QPdfWriter &writer)
{
    writer.setResolution(600);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                     QPageLayout::Inch));
    writer.setCreator(QStringLiteral("Tarnby"));
}

bool readPassword(const QString &path, QString *password)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return false;
    QByteArray line = file.readLine(64 * 1024);
    while (line.endsWith('\n') || line.endsWith('\r'))
        line.chop(1);
    *password = QString::fromUtf8(line);
    return true;
}

// The report file of a walk from the command line lives in a temporary folder.
int printFile(QPdfWriter &writer, const PrintOptions &options)
{
    PrintJobRequest request;
    request.file = options.file;
    request.font = options.font;
    QTemporaryDir folder;
    if (options.report) {
        request.tab = PrintTab::Report;
        request.pattern = options.pattern;
        request.useFile = options.useFile;
        request.reportRoots = options.folders;
        if (!folder.isValid())
            return fail(QStringLiteral("No temporary folder for the report file."));
        request.reportFile = folder.filePath(QLatin1String(ReportFileName));
    } else if (printsAsListing(options.file)) {
        request.tab = PrintTab::Listing;
        request.table = options.table;
        request.fields = options.fields;
        if (!options.passwordFile.isEmpty() && !readPassword(options.passwordFile, &request.password))
            return fail(QStringLiteral("The password file cannot be read - ") + options.passwordFile);
    } else if (printsAsText(options.file)) {
        request.tab = PrintTab::Text;
    } else {
        request.tab = PrintTab::Picture;
        const tarnby::imaging::LoadResult loaded = tarnby::imaging::loadPicture(options.file);
        if (!loaded.ok())
            return fail(loaded.errorString.isEmpty() ? QStringLiteral("The picture cannot be read - ") + options.file
                                                     : loaded.errorString);
        request.picture = loaded.picture.image();
        request.title = options.title;
        request.placement = placementFromBoxes(options.titleX, options.titleY, options.x, options.y,
                                               options.width, options.height, request.picture);
    }
    const PrintResult result = runPrintJob(writer, request);
    if (!result.errorString.isEmpty())
        return fail(result.errorString);
    tarnby::cli::out(QStringLiteral("%1 pages\n").arg(result.pages));
    return 0;
}

int runPrint(const QByteArrayList &args)
{
    PrintOptions options;
    auto value = [&](qsizetype &i) -> QByteArray { return i + 1 < args.size() ? args.at(++i) : QByteArray(); };
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray &arg = args.at(i);
        if (arg == "--pdf" || arg == "--title" || arg == "--table" || arg == "--password-file"
            || arg == "--font" || arg == "--fields" || arg == "--at" || arg == "--title-at" || arg == "--size"
            || arg == "--font-size" || arg == "--report") {
            if (i + 1 >= args.size())
                return usageError(QString::fromLatin1(arg) + QStringLiteral(" needs a value"));
            const QByteArray v = value(i);
            if (arg == "--pdf")
                options.pdf = QFile::decodeName(v);
            else if (arg == "--title")
                options.title = QString::fromLocal8Bit(v);
            else if (arg == "--table")
                options.table = QString::fromLocal8Bit(v);
            else if (arg == "--password-file")
                options.passwordFile = QFile::decodeName(v);
            else if (arg == "--font")
                options.font.family = QString::fromLocal8Bit(v);
            else if (arg == "--fields")
                options.fields = QString::fromLocal8Bit(v).split(QLatin1Char(','), Qt::SkipEmptyParts);
            else if (arg == "--at" && !splitPair(v, ',', &options.x, &options.y))
                return usageError(QStringLiteral("--at wants X,Y in inches"));
            else if (arg == "--title-at" && !splitPair(v, ',', &options.titleX, &options.titleY))
                return usageError(QStringLiteral("--title-at wants X,Y in inches"));
            else if (arg == "--size" && !splitPair(v, 'x', &options.width, &options.height))
                return usageError(QStringLiteral("--size wants WxH in inches"));
            else if (arg == "--font-size") {
                bool ok = false;
                options.font.pointSize = v.toDouble(&ok);
                if (!ok || options.font.pointSize < 4 || options.font.pointSize > 72)
                    return usageError(QStringLiteral("--font-size wants 4 to 72 points"));
            } else if (arg == "--report") {
                options.report = true;
                options.pattern = QString::fromLocal8Bit(v);
                // The folders follow the pattern up to the next option.
                while (i + 1 < args.size() && !args.at(i + 1).startsWith("--"))
                    options.folders.append(QFile::decodeName(args.at(++i)));
            }
        } else if (arg == "--use-file") {
            options.useFile = true;
        } else if (arg == "--help" || arg == "-h") {
            return usageError();
        } else if (arg.startsWith("--")) {
            return usageError(QStringLiteral("unknown option ") + QString::fromLocal8Bit(arg));
        } else if (options.file.isEmpty()) {
            options.file = QFile::decodeName(arg);
        } else {
            return usageError(QStringLiteral("more than one file"));
        }
    }
    if (options.pdf.isEmpty())
        return usageError(QStringLiteral("--pdf OUT is required"));
    for (const QString &folder : options.folders) {
        if (!QFileInfo(folder).isDir())
            return usageError(QStringLiteral("not a folder: ") + folder);
    }
    if (options.report) {
        if (options.folders.isEmpty())
            return usageError(QStringLiteral("--report needs a pattern and at least one folder"));
        if (options.useFile ? options.file.isEmpty() : options.pattern.trimmed().isEmpty())
            return fail(QLatin1String(ReportNeedsFileOrType));
    } else if (options.file.isEmpty()) {
        return usageError();
    } else if (!QFileInfo(options.file).isFile()) {
        return fail(QStringLiteral("No such file - ") + options.file);
    }

    // The PDF replaces OUT only when the job printed whole.
    QSaveFile out(options.pdf);
    if (!out.open(QIODevice::WriteOnly))
        return fail(QStringLiteral("Cannot write - ") + options.pdf);
    int status = 0;
    {
        QPdfWriter writer(&out);
        setUpWriter(writer);
        status = printFile(writer, options);
    }
    if (status != 0)
        return status;
    if (!out.commit())
        return fail(QStringLiteral("Cannot write - ") + options.pdf);
    return 0;
}

} // namespace

TARNBY_CLI_DRAWING_COMMAND(
    print, "print",
    "print FILE --pdf OUT [--title T] [--title-at X,Y] [--at X,Y] [--size WxH] [--table T] [--fields a,b,c] "
    "[--password-file F] [--font FAMILY] [--font-size PT] | print [FILE --use-file] --report PATTERN DIR... --pdf OUT",
    "Prints to a PDF file as the print window does: a picture with a title (--title at --title-at, the picture "
    "at --at with --size, in inches; empty means the top left corner and the picture's own size), a text file, a "
    "table listing (--table, default the first; --fields, default all) or a folder-location report (--report: "
    "every folder below DIR... holding files that match PATTERN; with --use-file the file's name is the "
    "pattern). Letter paper, portrait.",
    runPrint);
