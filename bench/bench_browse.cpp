// Figures for the browser: how long a folder takes to list and to filter, how
// long the folder tree takes to list a huge folder, and how fast thumbnails
// of a folder of pictures are made and what they cost in memory.

#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/ThumbnailModel.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/ThumbnailJob.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QImage>
#include <QTemporaryDir>
#include <QTextStream>
#include <QThreadPool>

#include <algorithm>
#include <cstdio>

using namespace tarnby;

namespace {

QTextStream out(stdout);

void makeFiles(const QString &folder, int count, int subfolders)
{
    static const char *exts[] = {"jpg", "JPG", "png", "txt", "mp3", "doc", "bmp", "zip", "dat", "xyz"};
    QDir().mkpath(folder);
    for (int i = 0; i < count; ++i) {
        QFile f(QStringLiteral("%1/file%2.%3").arg(folder).arg(i, 6, 10, QLatin1Char('0')).arg(QLatin1String(exts[i % 10])));
        f.open(QIODevice::WriteOnly);
    }
    for (int i = 0; i < subfolders; ++i)
        QDir().mkpath(QStringLiteral("%1/folder%2").arg(folder).arg(i, 5, 10, QLatin1Char('0')));
}

double median(QList<double> values)
{
    std::sort(values.begin(), values.end());
    return values.at(values.size() / 2);
}

qint64 statusKb(const char *field)
{
    QFile f(QStringLiteral("/proc/self/status"));
    if (!f.open(QIODevice::ReadOnly))
        return -1;
    for (const QByteArray &line : f.readAll().split('\n')) {
        if (line.startsWith(field))
            return line.mid(qstrlen(field)).trimmed().split(' ').first().toLongLong();
    }
    return -1;
}

void benchListing(const QString &root)
{
    const QString folder = root + QStringLiteral("/ten-thousand");
    makeFiles(folder, 10000, 0);

    QList<double> listing;
    QList<double> model;
    for (int run = 0; run < 5; ++run) {
        QElapsedTimer t;
        t.start();
        const FolderListing l = listFolder(folder);
        listing << t.nsecsElapsed() / 1e6;
        FileListModel m;
        m.setPattern(QLatin1String(catalogue::FilterPatterns[35]));
        t.restart();
        m.setFolder(folder, FileListModel::LoadMode::Synchronous);
        model << t.nsecsElapsed() / 1e6;
        Q_ASSERT(m.rowCount() > 0);
    }
    out << "10,000 files: listFolder median " << median(listing) << " ms; list model (list + filter + rows) median "
        << median(model) << " ms\n";

    FileListModel m;
    m.setFolder(folder, FileListModel::LoadMode::Synchronous);
    double worst = 0;
    double total = 0;
    int worstIndex = 0;
    for (int round = 0; round < 3; ++round) {
        for (int i = 0; i < catalogue::FilterCount; ++i) {
            QElapsedTimer t;
            t.start();
            m.setPattern(QLatin1String(catalogue::FilterPatterns[size_t(i)]));
            const double ms = t.nsecsElapsed() / 1e6;
            total += ms;
            if (ms > worst) {
                worst = ms;
                worstIndex = i;
            }
        }
    }
    out << "filter switch over 10,000 files: mean " << total / (3 * catalogue::FilterCount) << " ms, worst " << worst
        << " ms (entry " << worstIndex << ")\n";

    // The same through the plain wildcard matcher, for comparison.
    const FolderListing l = listFolder(folder);
    QElapsedTimer t;
    t.start();
    int matched = 0;
    const catalogue::WildcardFilter wildcards(QLatin1String(catalogue::FilterPatterns[35]));
    for (const FileEntry &e : l.entries)
        matched += wildcards.matches(e.name) ? 1 : 0;
    out << "  (wildcard matcher alone, entry 35: " << t.nsecsElapsed() / 1e6 << " ms, " << matched << " matches)\n";
}

void benchHugeFolder(const QString &root)
{
    const QString folder = root + QStringLiteral("/hundred-thousand");
    makeFiles(folder, 99000, 1000);
    QElapsedTimer t;
    t.start();
    const FolderListing l = listFolder(folder);
    const double listMs = t.nsecsElapsed() / 1e6;

    FolderRoots roots;
    roots.volumes = {root};
    FolderTreeModel tree;
    tree.setRoots(roots);
    tree.expand(0);
    const int node = tree.findPath(folder);
    t.restart();
    const int added = tree.expand(node);
    const double expandMs = t.nsecsElapsed() / 1e6;
    out << "100,000 entries: listFolder " << listMs << " ms (" << l.entries.size() << " entries, worker thread); "
        << "tree expand " << expandMs << " ms (" << added << " subfolders, UI thread)\n";
}

void benchThumbnails(const QString &root, int count)
{
    const QString folder = root + QStringLiteral("/pictures");
    QDir().mkpath(folder);
    QElapsedTimer t;
    t.start();
    QImage picture(640, 480, QImage::Format_RGB32);
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        picture.fill(QColor::fromHsv((i * 7) % 360, 180, 220));
        const QString path = QStringLiteral("%1/pic%2.jpg").arg(folder).arg(i, 5, 10, QLatin1Char('0'));
        picture.save(path, "JPG", 80);
        paths << path;
    }
    out << count << " pictures of 640x480 written in " << t.elapsed() << " ms\n";

    const qint64 rssBefore = statusKb("VmRSS:");
    QThreadPool pool;
    pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
    ThumbnailOptions options; // 2.5 cm at 96 dpi: 94 x 94, 24 bits
    ThumbnailModel model;
    model.setFiles(paths);
    // As the browser runs it: one side of the box as the size asked for, the
    // browser's own look made by the producer.
    imaging::ThumbnailJob job(paths, std::max(options.box.width(), options.box.height()));
    job.setThreadPool(&pool);
    job.setProducer([options](const QString &path, int) {
        imaging::ThumbnailResult result;
        result.image = browserThumbnail(path, options);
        return result;
    });
    QObject::connect(&job, &imaging::ThumbnailJob::thumbnailReady, &model,
                     [&model](int row, const QString &, const QImage &image) { model.setThumbnail(row, image); });
    QEventLoop loop;
    qint64 firstScreen = -1;
    QObject::connect(&job, &imaging::ThumbnailJob::progress, [&](int done, int) {
        if (done == 40 && firstScreen < 0)
            firstScreen = t.elapsed();
    });
    QObject::connect(&job, &imaging::ThumbnailJob::finished, &loop, &QEventLoop::quit);
    t.restart();
    job.setVisibleRange(count / 2, count / 2 + 39); // a screen in the middle, as after a scroll
    job.start();
    loop.exec();
    const qint64 ms = t.elapsed();
    const qint64 rssAfter = statusKb("VmRSS:");
    out << count << " thumbnails (94x94, 24 bits) on " << pool.maxThreadCount() << " worker(s): " << ms << " ms, "
        << (ms > 0 ? count * 1000.0 / ms : 0) << " per second; first screen (40) after " << firstScreen << " ms\n";
    out << "  thumbnail images hold " << model.imageBytes() / 1024 << " KiB for " << model.readyCount() << " of "
        << count << " thumbnails (budget " << model.budget() / 1024 << " KiB, "
        << (model.readyCount() ? model.imageBytes() / model.readyCount() : 0)
        << " bytes each); resident memory grew by " << (rssAfter - rssBefore) << " KiB (VmRSS " << rssAfter
        << " KiB, peak " << statusKb("VmHWM:") << " KiB)\n";
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    int thumbs = 5000;
    QString keep;
    const QStringList args = app.arguments();
    for (int i = 1; i < args.size(); ++i) {
        if (args.at(i) == QLatin1String("--thumbs") && i + 1 < args.size())
            thumbs = args.at(++i).toInt();
        else if (args.at(i) == QLatin1String("--keep") && i + 1 < args.size())
            keep = args.at(++i);
    }
    QTemporaryDir temp;
    const QString root = keep.isEmpty() ? temp.path() : keep;
    benchListing(root);
    out.flush();
    benchHugeFolder(root);
    out.flush();
    if (thumbs > 0)
        benchThumbnails(root, thumbs);
    out.flush();
    return 0;
}
