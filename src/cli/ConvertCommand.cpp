#include "CliCommand.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/edit/EditOperation.h"
#include "core/edit/OverlayCatalogues.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QColor>
#include <QDir>
#include <QFileInfo>
#include <QRegularExpression>
#include <QThread>
#include <QtConcurrent/QtConcurrentMap>

#include <atomic>
#include <cmath>
#include <optional>
#include <unistd.h>

namespace {

using namespace tarnby::edit;
using namespace tarnby::imaging;

struct ConvertOptions {
    int bitsPerPixel = 0;
    int quality = 0;
    QString outDir;
    QString extension; // --to: the saved files' extension with --out-dir; empty keeps each input's
    QList<EditOperation> operations;
    QStringList files;
};

struct Job {
    QString in;
    QString out;
};

QString argument(const QByteArray &bytes)
{
    return QString::fromLocal8Bit(bytes);
}

// Reads the arguments: options and operations in any place, files in
// their order. --enlarge and --fill belong to the --rotate before them,
// --resample to the --resize before it.
std::optional<ConvertOptions> parse(const QByteArrayList &args, QString *error)
{
    ConvertOptions options;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray &arg = args.at(i);
        if (!arg.startsWith("--")) {
            options.files << argument(arg);
            continue;
        }
        const auto value = [&]() -> std::optional<QString> {
            if (i + 1 >= args.size()) {
                *error = QStringLiteral("%1 needs a value.").arg(argument(arg));
                return std::nullopt;
            }
            return argument(args.at(++i));
        };
        const auto number = [&](int low, int high) -> std::optional<int> {
            const std::optional<QString> text = value();
            if (!text)
                return std::nullopt;
            bool ok = false;
            const int n = text->toInt(&ok);
            if (!ok || n < low || n > high) {
                *error = QStringLiteral("%1 takes a whole number from %2 to %3, not \"%4\".").arg(argument(arg)).arg(low).arg(high).arg(*text);
                return std::nullopt;
            }
            return n;
        };
        const auto last = [&](EditOperation::Kind kind, const char *owner) -> EditOperation * {
            if (options.operations.isEmpty() || options.operations.last().kind != kind) {
                *error = QStringLiteral("%1 follows %2.").arg(argument(arg), QLatin1String(owner));
                return nullptr;
            }
            return &options.operations.last();
        };

        if (arg == "--bpp") {
            const std::optional<int> n = number(1, 64);
            if (!n)
                return std::nullopt;
            options.bitsPerPixel = *n;
        } else if (arg == "--quality") {
            const std::optional<int> n = number(0, 100);
            if (!n)
                return std::nullopt;
            options.quality = *n;
        } else if (arg == "--out-dir") {
            const std::optional<QString> dir = value();
            if (!dir)
                return std::nullopt;
            options.outDir = *dir;
        } else if (arg == "--to") {
            const std::optional<QString> extension = value();
            if (!extension)
                return std::nullopt;
            options.extension = extension->startsWith(QLatin1Char('.')) ? extension->mid(1) : *extension;
        } else if (arg == "--flip") {
            options.operations << EditOperation::flip();
        } else if (arg == "--reverse") {
            options.operations << EditOperation::reverse();
        } else if (arg == "--invert") {
            options.operations << EditOperation::invert();
        } else if (arg == "--stretch") {
            options.operations << EditOperation::stretch();
        } else if (arg == "--brightness" || arg == "--contrast") {
            const std::optional<int> n = number(MinAmount, MaxAmount);
            if (!n)
                return std::nullopt;
            options.operations << (arg == "--brightness" ? EditOperation::brightness(*n) : EditOperation::contrast(*n));
        } else if (arg == "--rotate") {
            const std::optional<QString> text = value();
            if (!text)
                return std::nullopt;
            bool ok = false;
            const double degrees = text->toDouble(&ok);
            if (!ok || !std::isfinite(degrees)) {
                *error = QStringLiteral("--rotate takes an angle in degrees, not \"%1\".").arg(*text);
                return std::nullopt;
            }
            // Whole turns change nothing; taking them off keeps the
            // hundredths within an integer.
            const int hundredths = int(std::lround(std::fmod(degrees, 360.0) * 100.0));
            options.operations << EditOperation::rotate(hundredths, RotateFit::KeepSize, qRgb(255, 255, 255));
        } else if (arg == "--enlarge") {
            EditOperation *rotate = last(EditOperation::Kind::Rotate, "--rotate");
            if (!rotate)
                return std::nullopt;
            rotate->fit = RotateFit::Enlarge;
        } else if (arg == "--fill") {
            EditOperation *rotate = last(EditOperation::Kind::Rotate, "--rotate");
            const std::optional<QString> name = rotate ? value() : std::nullopt;
            if (!name)
                return std::nullopt;
            const QColor colour(*name);
            if (!colour.isValid()) {
                *error = QStringLiteral("--fill takes a colour as #rrggbb or a colour name, not \"%1\".").arg(*name);
                return std::nullopt;
            }
            rotate->fill = colour.rgba();
        } else if (arg == "--resize") {
            const std::optional<QString> text = value();
            if (!text)
                return std::nullopt;
            static const QRegularExpression pattern(QStringLiteral("^(\\d{1,5})[xX](\\d{1,5})$"));
            const QRegularExpressionMatch match = pattern.match(*text);
            const int w = match.hasMatch() ? match.captured(1).toInt() : 0;
            const int h = match.hasMatch() ? match.captured(2).toInt() : 0;
            if (w < 1 || h < 1 || w > MaxSide || h > MaxSide) {
                *error = QStringLiteral("--resize takes WIDTHxHEIGHT, each from 1 to %1, not \"%2\".").arg(MaxSide).arg(*text);
                return std::nullopt;
            }
            options.operations << EditOperation::resize(QSize(w, h), Resampling::None);
        } else if (arg == "--shape") {
            const std::optional<QString> name = value();
            if (!name)
                return std::nullopt;
            const std::optional<int> code = shapeCode(*name);
            if (!code) {
                *error = QStringLiteral("There is no shape \"%1\"; tarnby-cli shapes lists them.").arg(*name);
                return std::nullopt;
            }
            ShapeStyle style;
            style.code = *code;
            style.fill = qRgb(255, 0, 0);
            style.border = qRgb(0, 0, 0);
            options.operations << EditOperation::stamp(style, QRectF());
        } else if (arg == "--at" || arg == "--size") {
            const bool forText = arg == "--at" && !options.operations.isEmpty()
                                 && options.operations.last().kind == EditOperation::Kind::Text;
            EditOperation *shape = forText ? &options.operations.last() : last(EditOperation::Kind::Shape, "--shape or --text");
            const std::optional<QString> text = shape ? value() : std::nullopt;
            if (!text)
                return std::nullopt;
            const bool at = arg == "--at";
            static const QRegularExpression point(QStringLiteral("^(-?\\d{1,5}),(-?\\d{1,5})$"));
            static const QRegularExpression size(QStringLiteral("^(\\d{1,5})[xX](\\d{1,5})$"));
            const QRegularExpressionMatch match = (at ? point : size).match(*text);
            const int a = match.hasMatch() ? match.captured(1).toInt() : 0;
            const int b = match.hasMatch() ? match.captured(2).toInt() : 0;
            if (!match.hasMatch() || (!at && (a < 1 || b < 1 || a > MaxSide || b > MaxSide))) {
                *error = at ? QStringLiteral("--at takes X,Y, not \"%1\".").arg(*text)
                            : QStringLiteral("--size takes WIDTHxHEIGHT, each from 1 to %1, not \"%2\".").arg(MaxSide).arg(*text);
                return std::nullopt;
            }
            if (at)
                shape->place.moveTopLeft(QPointF(a, b));
            else
                shape->place.setSize(QSizeF(a, b));
        } else if (arg == "--color" || arg == "--border") {
            const bool forText = arg == "--color" && !options.operations.isEmpty()
                                 && options.operations.last().kind == EditOperation::Kind::Text;
            EditOperation *shape = forText ? &options.operations.last() : last(EditOperation::Kind::Shape, "--shape");
            const std::optional<QString> name = shape ? value() : std::nullopt;
            if (!name)
                return std::nullopt;
            const QColor colour(*name);
            if (!colour.isValid()) {
                *error = QStringLiteral("%1 takes a colour as #rrggbb or a colour name, not \"%2\".").arg(argument(arg), *name);
                return std::nullopt;
            }
            if (forText)
                shape->text.colour = colour.rgb();
            else
                (arg == "--color" ? shape->shape.fill : shape->shape.border) = colour.rgb();
        } else if (arg == "--text") {
            const std::optional<QString> text = value();
            if (!text)
                return std::nullopt;
            TextOverlay overlay;
            overlay.text = *text;
            overlay.font.setPixelSize(24);
            options.operations << EditOperation::write(overlay, QPointF(0, 0));
        } else if (arg == "--style") {
            EditOperation *write = last(EditOperation::Kind::Text, "--text");
            const std::optional<QString> name = write ? value() : std::nullopt;
            if (!name)
                return std::nullopt;
            // The list's names, with or without their TEXTSTYLE_ prefix.
            std::optional<int> code = textStyleCode(*name);
            if (!code)
                code = textStyleCode(QStringLiteral("TEXTSTYLE_") + *name);
            if (!code) {
                *error = QStringLiteral("There is no text style \"%1\"; tarnby-cli text-styles lists them.").arg(*name);
                return std::nullopt;
            }
            write->text.effect = *code;
        } else if (arg == "--font") {
            EditOperation *write = last(EditOperation::Kind::Text, "--text");
            const std::optional<QString> fontText = write ? value() : std::nullopt;
            if (!fontText)
                return std::nullopt;
            // FAMILY[,SIZE][,bold][,italic], the size in the picture's pixels.
            const QStringList parts = fontText->split(QLatin1Char(','));
            QFont font = write->text.font;
            if (!parts.first().trimmed().isEmpty())
                font.setFamily(parts.first().trimmed());
            for (qsizetype k = 1; k < parts.size(); ++k) {
                const QString part = parts.at(k).trimmed();
                bool isNumber = false;
                const int size = part.toInt(&isNumber);
                if (isNumber && size >= 1 && size <= 2000) {
                    font.setPixelSize(size);
                } else if (part.compare(QLatin1String("bold"), Qt::CaseInsensitive) == 0) {
                    font.setBold(true);
                } else if (part.compare(QLatin1String("italic"), Qt::CaseInsensitive) == 0) {
                    font.setItalic(true);
                } else {
                    *error = QStringLiteral("--font takes FAMILY[,SIZE][,bold][,italic], the size from 1 to 2000, not \"%1\".").arg(*fontText);
                    return std::nullopt;
                }
            }
            write->text.font = font;
        } else if (arg == "--resample") {
            EditOperation *resize = last(EditOperation::Kind::Resize, "--resize");
            if (!resize)
                return std::nullopt;
            resize->resampling = Resampling::Smooth;
        } else {
            *error = QStringLiteral("Unknown option %1.").arg(argument(arg));
            return std::nullopt;
        }
    }
    for (const EditOperation &operation : std::as_const(options.operations)) {
        if (operation.kind == EditOperation::Kind::Shape && operation.place.isEmpty()) {
            *error = QStringLiteral("--shape needs --size WIDTHxHEIGHT (and --at X,Y for a place other than 0,0).");
            return std::nullopt;
        }
    }
    return options;
}

int saveFormatCode(const QString &path)
{
    return tarnby::catalogue::GetSaveFormatCode(tarnby::catalogue::GetFileExt(QFileInfo(path).fileName()));
}

// A JPEG saved as JPEG at its own depth, with flips and operations that
// change rows on their own, is decoded and encoded at once (see
// convertJpeg()); whether that road took the file, and its error.
bool convertAtOnce(const Job &job, const ConvertOptions &options, int code, QString *error)
{
    if (options.bitsPerPixel != 0)
        return false;
    bool upsideDown = false;
    QList<EditOperation> rowOperations;
    for (const EditOperation &operation : options.operations) {
        if (operation.kind == EditOperation::Kind::Flip)
            upsideDown = !upsideDown;
        else if (changesRowsAlone(operation))
            rowOperations << operation;
        else
            return false;
    }
    BandChange change;
    if (!rowOperations.isEmpty()) {
        change = [rowOperations](QImage band) {
            // The bands of the picture already keep the cores busy.
            const SerialScope serial;
            for (const EditOperation &operation : rowOperations)
                band = apply(operation, std::move(band));
            return band;
        };
    }
    bool handled = false;
    const SaveResult saved = convertJpeg(job.in, job.out, code, options.quality, change, upsideDown, &handled);
    if (handled && !saved.ok)
        *error = QStringLiteral("%1: %2").arg(job.out, saved.errorString);
    return handled;
}

// Loads, changes and saves one picture; the error, or an empty string.
QString convertOne(const Job &job, const ConvertOptions &options)
{
    const int code = saveFormatCode(job.out);
    if (QString error; convertAtOnce(job, options, code, &error))
        return error;
    LoadResult loaded = loadPicture(job.in, Pages::All);
    if (!loaded.ok())
        return QStringLiteral("%1: %2").arg(job.in, loaded.errorString);
    for (const EditOperation &operation : options.operations) {
        QString error;
        if (!applyToPicture(operation, &loaded.picture, &error))
            return QStringLiteral("%1: %2").arg(job.in, error);
    }
    const SaveResult saved = savePicture(loaded.picture, job.out, code, options.bitsPerPixel, options.quality);
    if (!saved.ok)
        return QStringLiteral("%1: %2").arg(job.out, saved.errorString);
    return QString();
}

// The jobs of the command: which file goes where.
std::optional<QList<Job>> plan(const ConvertOptions &options, QString *error)
{
    QList<Job> jobs;
    if (options.outDir.isEmpty()) {
        if (options.files.size() != 2 || !options.extension.isEmpty()) {
            *error = QStringLiteral("Give IN and OUT, or several inputs with --out-dir DIR.");
            return std::nullopt;
        }
        jobs << Job{options.files.at(0), options.files.at(1)};
    } else {
        if (options.files.isEmpty()) {
            *error = QStringLiteral("Give at least one picture to convert.");
            return std::nullopt;
        }
        if (!QDir().mkpath(options.outDir)) {
            *error = QStringLiteral("%1: the folder cannot be created.").arg(options.outDir);
            return std::nullopt;
        }
        const QDir dir(options.outDir);
        QHash<QString, QString> takenBy;
        for (const QString &in : options.files) {
            const QFileInfo info(in);
            const QString extension = options.extension.isEmpty() ? info.suffix() : options.extension;
            const QString out = dir.absoluteFilePath(info.completeBaseName() + QLatin1Char('.') + extension);
            // Two inputs of one name would write one file, and the first
            // result would be lost.
            if (takenBy.contains(out)) {
                *error = QStringLiteral("%1 and %2 would both be saved as %3.").arg(takenBy.value(out), in, out);
                return std::nullopt;
            }
            takenBy.insert(out, in);
            jobs << Job{in, out};
        }
    }
    return jobs;
}

const char *const Usage =
    "Usage: tarnby-cli convert [--bpp N] [--quality Q] IN OUT [operations]\n"
    "       tarnby-cli convert [--bpp N] [--quality Q] [--to EXT] --out-dir DIR IN... [operations]\n"
    "Operations, applied in the order given:\n"
    "  --flip  --reverse  --invert  --stretch\n"
    "  --brightness N  --contrast N     (N in tenths of a percent, -1000 to 1000)\n"
    "  --rotate DEG [--enlarge] [--fill COLOR]   (clockwise; COLOR as #rrggbb or a name; white if not given)\n"
    "  --resize WxH [--resample]\n"
    "  --shape NAME --at X,Y --size WxH [--color COLOR] [--border COLOR]   (tarnby-cli shapes lists the names;\n"
    "                                   red with a black border if not given)\n"
    "  --text TEXT --at X,Y [--style NAME] [--font FAMILY[,SIZE][,bold][,italic]] [--color COLOR]\n"
    "                                   (tarnby-cli text-styles lists the styles; black 24-pixel text if not given)\n";

int runConvert(const QByteArrayList &args)
{
    QString error;
    const std::optional<ConvertOptions> options = parse(args, &error);
    const std::optional<QList<Job>> jobs = options ? plan(*options, &error) : std::nullopt;
    if (!jobs) {
        tarnby::cli::err(error + QLatin1Char('\n') + QLatin1String(Usage));
        return 2;
    }
    for (const Job &job : std::as_const(*jobs)) {
        if (saveFormatCode(job.out) == 0) {
            tarnby::cli::err(QStringLiteral("%1: pictures cannot be saved under the extension \"%2\".\n")
                                 .arg(job.out, tarnby::catalogue::GetFileExt(QFileInfo(job.out).fileName())));
            return 1;
        }
    }
    if (jobs->size() == 1) {
        error = convertOne(jobs->constFirst(), *options);
        if (!error.isEmpty())
            tarnby::cli::err(error + QLatin1Char('\n'));
        return error.isEmpty() ? 0 : 1;
    }

    // Several pictures: one a core at a time, in the shared pool (each
    // picture's own bands take their turn in the same pool). A terminal
    // sees how many are done.
    std::atomic<int> done = 0;
    const bool terminal = isatty(STDERR_FILENO);
    QFuture<QString> future = QtConcurrent::mapped(*jobs, [&](const Job &job) {
        QString result = convertOne(job, *options);
        ++done;
        return result;
    });
    const auto progress = [&] {
        tarnby::cli::err(QStringLiteral("\r%1 of %2 pictures").arg(done.load()).arg(jobs->size()));
    };
    while (!future.isFinished()) {
        if (terminal)
            progress();
        QThread::msleep(100);
    }
    if (terminal) {
        progress();
        tarnby::cli::err(QStringLiteral("\n"));
    }
    int failed = 0;
    for (const QString &result : future.results()) {
        if (!result.isEmpty()) {
            tarnby::cli::err(result + QLatin1Char('\n'));
            ++failed;
        }
    }
    return failed == 0 ? 0 : 1;
}

} // namespace

TARNBY_CLI_DRAWING_COMMAND(convert, "convert", "convert [--bpp N] [--quality Q] IN OUT [operations], or [--to EXT] --out-dir DIR IN... [operations]",
                           "Load IN, apply the operations in order (--flip, --reverse, --invert, --stretch, "
                           "--brightness N, --contrast N, --rotate DEG [--enlarge] [--fill COLOR], "
                           "--resize WxH [--resample], --shape NAME --at X,Y --size WxH [--color C] [--border C], "
                           "--text TEXT --at X,Y [--style NAME] [--font F] [--color C]) and save it in the format of OUT's extension; "
                           "bits per pixel kept unless --bpp is given. With --out-dir, several inputs are "
                           "converted in parallel, each saved in DIR under its own name (extension EXT with --to).",
                           runConvert);
