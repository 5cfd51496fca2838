#include "CliCommand.h"

#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/ThumbnailCache.h"
#include "core/platform/imaging/ThumbnailJob.h"

#include <QDir>
#include <QElapsedTimer>
#include <QFileInfo>
#include <QImageReader>
#include <QMutex>
#include <QSet>
#include <QThread>

#include <algorithm>
#include <sys/stat.h>
#include <unistd.h>

namespace {

using namespace tarnby::imaging;

const QString Usage = QStringLiteral("Usage: tarnby-cli thumbs DIR OUTDIR [--size N] [--no-cache]\n");

// A picture is any name the catalogue files among the pictures (including the
// one-bit formats kept in the multimedia band) or whose extension one of Qt's
// readers claims, so that "photo.jpeg" and "anim.webp" are not left out.
bool isPicture(const QString &name)
{
    using namespace tarnby::catalogue;
    static const QSet<QString> qtSuffixes = [] {
        QSet<QString> suffixes;
        for (const QByteArray &format : QImageReader::supportedImageFormats())
            suffixes.insert(QString::fromLatin1(format).toUpper());
        return suffixes;
    }();
    const FileType type = GetFileTypeFlag(name);
    if (type.index <= LastPictureIndex)
        return true;
    if (type.extension == QLatin1String("MAC") || type.extension == QLatin1String("IMG")
        || type.extension == QLatin1String("MSP"))
        return true;
    return !type.extension.isEmpty() && qtSuffixes.contains(type.extension);
}

struct Failure {
    QString name;
    QString message;
};

int runThumbs(const QByteArrayList &args)
{
    QStringList positional;
    int size = 256;
    ThumbnailOptions options = ThumbnailOption::EncodedOnly;
    for (qsizetype i = 0; i < args.size(); ++i) {
        const QByteArray &arg = args.at(i);
        if (arg == "--size" && i + 1 < args.size()) {
            bool ok = false;
            size = args.at(++i).toInt(&ok);
            if (!ok || size < 1 || size > 4096) {
                tarnby::cli::err(QStringLiteral("tarnby-cli thumbs: the size must be a number from 1 to 4096\n"));
                return 2;
            }
        } else if (arg == "--no-cache") {
            options |= ThumbnailOption::NoCache;
        } else if (arg.startsWith("--")) {
            tarnby::cli::err(Usage);
            return 2;
        } else {
            positional << QString::fromLocal8Bit(arg);
        }
    }
    if (positional.size() != 2) {
        tarnby::cli::err(Usage);
        return 2;
    }
    const QDir sourceDir(positional.at(0));
    if (!sourceDir.exists()) {
        tarnby::cli::err(QStringLiteral("tarnby-cli thumbs: %1 is not a folder\n").arg(positional.at(0)));
        return 2;
    }
    const QString outDir = QFileInfo(positional.at(1)).absoluteFilePath();
    if (!QDir().mkpath(outDir)) {
        tarnby::cli::err(QStringLiteral("tarnby-cli thumbs: cannot create the folder %1\n").arg(outDir));
        return 2;
    }

    QStringList paths;
    QStringList names;
    for (const QFileInfo &info : sourceDir.entryInfoList(QDir::Files | QDir::Hidden, QDir::Name)) {
        if (isPicture(info.fileName())) {
            paths << info.absoluteFilePath();
            names << info.fileName();
        }
    }

    const mode_t mask = ::umask(0);
    ::umask(mask);
    const int fileMode = int(0666 & ~mask);
    const bool showProgress = ::isatty(STDERR_FILENO) == 1;
    const int total = int(paths.size());

    QMutex mutex; // guards failures, progress output and its timer
    QList<Failure> failures;
    QElapsedTimer sinceProgress;
    sinceProgress.start();
    std::atomic<int> done{0};

    ThumbnailJob job(paths, size);
    job.setOptions(options);
    job.setMaxWorkers(QThread::idealThreadCount());
    job.setCallback([&](const ThumbnailJob::Item &item) {
        const QString &name = names.at(item.index);
        QString message = item.result.errorString;
        if (item.result.ok()) {
            // An entry of the cache is copied as it is; anything else is
            // encoded here. Either way the file appears whole or not at all.
            const QByteArray png = !item.result.encoded.isEmpty() ? item.result.encoded
                                                                  : encodeThumbnailPng(item.result.image, {});
            if (png.isEmpty())
                message = QStringLiteral("The thumbnail could not be encoded.");
            else
                writeFileAtomically(outDir + QLatin1Char('/') + name + QStringLiteral(".png"), png, fileMode, &message);
        }
        const int count = done.fetch_add(1) + 1;
        if (!message.isEmpty() || showProgress) {
            QMutexLocker lock(&mutex);
            if (!message.isEmpty())
                failures.append({name, message});
            if (showProgress && (sinceProgress.elapsed() >= 100 || count == total)) {
                tarnby::cli::err(QStringLiteral("\r%1/%2 %3").arg(count).arg(total).arg(name).left(79)
                                 + QStringLiteral("\033[K"));
                sinceProgress.restart();
            }
        }
    });
    job.start();
    job.wait();
    if (showProgress && total > 0)
        tarnby::cli::err(QStringLiteral("\r\033[K"));

    std::sort(failures.begin(), failures.end(), [](const Failure &a, const Failure &b) { return a.name < b.name; });
    for (const Failure &failure : std::as_const(failures))
        tarnby::cli::err(QStringLiteral("%1: %2\n").arg(failure.name, failure.message));
    if (!failures.isEmpty()) {
        tarnby::cli::err(QStringLiteral("tarnby-cli thumbs: %1 of %2 pictures failed\n").arg(failures.size()).arg(total));
        return 1;
    }
    return 0;
}

} // namespace

TARNBY_CLI_DRAWING_COMMAND(thumbs, "thumbs", "thumbs DIR OUTDIR [--size N] [--no-cache]",
                   "Write a PNG thumbnail (at most N x N, default 256) of every picture in DIR to "
                   "OUTDIR as NAME.png, in parallel, through the shared thumbnail cache unless "
                   "--no-cache. Failed pictures are listed on stderr and the status is 1.",
                   runThumbs);
