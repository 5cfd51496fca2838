// What opening and closing documents and thumbnail folders leaves behind in
// memory: pictures are opened as a document window opens them (loaded on a
// worker thread, overview made) and closed again, folders of photos get their
// thumbnails as the browser's thumbnail view makes them, and the resident
// memory is read before and after. Only the last folder's thumbnails stay, as
// they stay on screen in the browser.
//
//   bench_memory [DOCUMENTS] [FOLDERS]     (50 and 20 by default)
//   bench_memory --window [DOCUMENTS] [FOLDERS]
//
// --window does the same through the program's own windows on a real display
// (run it under xvfb-run): the browser opens each document in the viewing
// frame, waits until it is shown and closes it, then shows each folder and
// its thumbnails in the browser's thumbnail view.
//
// The pictures are made once under /tmp/tarnby-bench/memory: photo-like JPEGs
// of 4000 x 3000 and 2000 x 1500, PNGs and BMPs for the documents, and 40
// JPEGs of 2000 x 1500 in each folder.

#include "core/browser/ThumbnailModel.h"
#include "core/platform/imaging/ThumbnailJob.h"
#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/browser/FileListModel.h"
#include "core/viewer/Document.h"
#include "ui/browser/Tarnby1.h"
#include "ui/browser/ThumbnailView.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QGuiApplication>
#include <QImage>
#include <QMdiArea>
#include <QRandomGenerator>
#include <QTextStream>
#include <QThreadPool>
#include <QTimer>

#include <functional>

#include <malloc.h>

using namespace tarnby;

namespace {

QTextStream out(stdout);

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

// Smooth colour fields with noise on top, so that the files decode like
// photos rather than like flat colour.
QImage photo(int width, int height, quint32 seed)
{
    QImage image(width, height, QImage::Format_RGB32);
    QRandomGenerator random(seed);
    for (int y = 0; y < height; ++y) {
        auto *line = reinterpret_cast<QRgb *>(image.scanLine(y));
        for (int x = 0; x < width; ++x) {
            const int noise = int(random.bounded(24u));
            line[x] = qRgb((x * 255 / width + noise) & 255, (y * 255 / height + noise) & 255,
                           ((x + y) * 127 / (width + height) + seed * 40 + noise) & 255);
        }
    }
    return image;
}

QStringList makeDocuments(const QString &folder, int count)
{
    QDir().mkpath(folder);
    const struct {
        QSize size;
        const char *format;
    } kinds[] = {{{4000, 3000}, "jpg"}, {{2000, 1500}, "jpg"}, {{1600, 1200}, "png"}, {{1200, 900}, "bmp"}};
    QStringList paths;
    for (int i = 0; i < count; ++i) {
        const auto &kind = kinds[i % 4];
        const QString path = QStringLiteral("%1/doc%2.%3").arg(folder).arg(i, 3, 10, QLatin1Char('0')).arg(QLatin1String(kind.format));
        if (!QFile::exists(path))
            photo(kind.size.width(), kind.size.height(), quint32(i)).save(path, nullptr, 90);
        paths << path;
    }
    return paths;
}

QStringList makeFolder(const QString &folder, int index)
{
    QDir().mkpath(folder);
    QStringList paths;
    for (int i = 0; i < 40; ++i) {
        const QString path = QStringLiteral("%1/photo%2.jpg").arg(folder).arg(i, 2, 10, QLatin1Char('0'));
        if (!QFile::exists(path))
            photo(2000, 1500, quint32(index * 40 + i)).save(path, "jpg", 90);
        paths << path;
    }
    return paths;
}

// Opens the picture as a document window does, waits for it, and closes it.
bool openAndClose(const QString &path)
{
    viewer::Document document(path, viewer::DocumentKind::Picture, false);
    QEventLoop loop;
    QObject::connect(&document, &viewer::Document::loaded, &loop, &QEventLoop::quit);
    QObject::connect(&document, &viewer::Document::loadFailed, &loop, &QEventLoop::quit);
    document.load();
    loop.exec();
    if (document.loadingState() != viewer::Document::LoadingState::Loaded)
        return false;
    return !document.overview().isNull();
}

// The thumbnails of one folder as the browser makes them; the model is
// handed back, so that the caller decides how long they stay.
std::unique_ptr<ThumbnailModel> thumbnails(const QStringList &paths, QThreadPool *pool)
{
    auto model = std::make_unique<ThumbnailModel>();
    model->setFiles(paths);
    ThumbnailOptions options;
    imaging::ThumbnailJob job(paths, std::max(options.box.width(), options.box.height()));
    job.setThreadPool(pool);
    job.setProducer([options](const QString &path, int) {
        imaging::ThumbnailResult result;
        result.image = browserThumbnail(path, options);
        return result;
    });
    QObject::connect(&job, &imaging::ThumbnailJob::thumbnailReady, model.get(),
                     [m = model.get()](int row, const QString &, const QImage &image) { m->setThumbnail(row, image); });
    QEventLoop loop;
    QObject::connect(&job, &imaging::ThumbnailJob::finished, &loop, &QEventLoop::quit);
    job.start();
    loop.exec();
    return model;
}

// Runs the event loop until done() says so or seconds pass.
bool waitFor(const std::function<bool()> &done, int seconds = 60)
{
    QElapsedTimer clock;
    clock.start();
    while (!done()) {
        if (clock.elapsed() > seconds * 1000)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
    }
    return true;
}

// Opens path from the browser as a double-click does, waits until its window
// shows the picture, and closes the window again.
bool openAndCloseInWindow(ui::Tarnby1 &browser, const QString &path)
{
    browser.DisplayImage(path);
    auto *child = browser.hasFrame() ? qobject_cast<ui::ChildFrm1 *>(browser.frame()->activeDocumentWidget()) : nullptr;
    if (!child || child->filePath() != path) {
        qWarning("no window for %s", qPrintable(path));
        return false;
    }
    bool shown = false;
    QObject::connect(child, &ui::ChildFrm1::documentShown, child, [&shown] { shown = true; });
    const bool ok = waitFor([&] { return shown; });
    if (!ok)
        qWarning("not shown: %s", qPrintable(path));
    browser.frame()->mdiArea()->closeAllSubWindows();
    waitFor([&] { return browser.frame()->mdiArea()->subWindowList().isEmpty(); }, 10);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return ok;
}

// Shows folder in the browser and its thumbnails, and waits for all of them.
bool thumbnailsInWindow(ui::Tarnby1 &browser, const QString &folder)
{
    bool listed = false;
    const auto once = QObject::connect(browser.fileList(), &FileListModel::folderLoaded, &browser, [&listed] { listed = true; });
    browser.goToFolder(folder);
    const bool ok = waitFor([&] { return listed; });
    QObject::disconnect(once);
    if (!ok)
        return false;
    if (!browser.thumbnailsShown())
        browser.toolClick(QStringLiteral("ID_ThumbsBtn"));
    ui::ThumbnailView *view = browser.thumbnailView();
    // The last thumbnails arrive through the event loop after the job is done.
    const ThumbnailModel *model = view->thumbnails();
    return waitFor([view, model] {
        return !view->isLoading() && model->rowCount() > 0 && model->readyCount() == model->rowCount();
    });
}

void report(const char *when, qint64 baseKb)
{
    const struct mallinfo2 info = mallinfo2();
    const qint64 rss = statusKb("VmRSS:");
    out << qSetFieldWidth(44) << Qt::left << when << qSetFieldWidth(0) << " VmRSS " << rss / 1024 << " MB";
    if (baseKb >= 0)
        out << " (" << (rss >= baseKb ? "+" : "") << (rss - baseKb) / 1024 << " MB)";
    out << "; malloc holds " << (info.arena + info.hblkhd) / (1024 * 1024) << " MB, of it free "
        << info.fordblks / (1024 * 1024) << " MB\n";
    out.flush();
}

} // namespace

int windowRun(int argc, char *argv[]);

int main(int argc, char *argv[])
{
    if (argc > 1 && qstrcmp(argv[1], "--window") == 0)
        return windowRun(argc - 1, argv + 1);
    // A document window's process has a GUI application; the documents
    // themselves need no display.
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QGuiApplication app(argc, argv);
    const int documents = argc > 1 ? std::max(1, atoi(argv[1])) : 50;
    const int folders = argc > 2 ? std::max(1, atoi(argv[2])) : 20;
    // The thumbnails are made anew every time, as for new folders: the
    // shared cache is one of our own, emptied first.
    const QString root = QStringLiteral("/tmp/tarnby-bench/memory");
    QDir(root + QStringLiteral("/cache")).removeRecursively();
    qputenv("XDG_CACHE_HOME", QFile::encodeName(root + QStringLiteral("/cache")));

    out << "Making the pictures (once)...\n";
    out.flush();
    const QStringList docs = makeDocuments(root + QStringLiteral("/documents"), documents);
    QList<QStringList> folderPaths;
    for (int f = 0; f < folders; ++f)
        folderPaths << makeFolder(root + QStringLiteral("/folder%1").arg(f, 2, 10, QLatin1Char('0')), f);

    QThreadPool pool;
    pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
    // One of each first, so that the libraries' one-time set-up is not
    // counted as growth.
    openAndClose(docs.constFirst());
    thumbnails(folderPaths.constFirst(), &pool).reset();
    const qint64 base = statusKb("VmRSS:");
    report("after one document and one folder", -1);

    int failed = 0;
    for (const QString &path : docs) {
        failed += openAndClose(path) ? 0 : 1;
        // What a closed document hands to deleteLater() goes when the
        // window's event loop next turns, as it does at once in the program.
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    report(qPrintable(QStringLiteral("after %1 documents opened and closed").arg(documents)), base);

    std::unique_ptr<ThumbnailModel> shown;
    for (const QStringList &paths : folderPaths) {
        shown.reset();
        shown = thumbnails(paths, &pool);
    }
    report(qPrintable(QStringLiteral("after %1 thumbnail folders").arg(folders)), base);
    const qint64 growth = statusKb("VmRSS:") - base;
    out << "The last folder's " << shown->readyCount() << " thumbnails hold " << shown->imageBytes() / 1024
        << " KiB (budget " << shown->budget() / (1024 * 1024) << " MB); growth beyond them: "
        << (growth - shown->imageBytes() / 1024) / 1024 << " MB (goal: under 20 MB)";
    if (failed)
        out << "; " << failed << " documents failed to load";
    out << "\nPeak VmHWM " << statusKb("VmHWM:") / 1024 << " MB\n";
    return failed ? 1 : 0;
}

// The same through the browser and the viewing frame on the display.
int windowRun(int argc, char *argv[])
{
    QApplication app(argc, argv);
    const int documents = argc > 1 ? std::max(1, atoi(argv[1])) : 50;
    const int folders = argc > 2 ? std::max(1, atoi(argv[2])) : 20;
    const QString root = QStringLiteral("/tmp/tarnby-bench/memory");
    QDir(root + QStringLiteral("/cache")).removeRecursively();
    qputenv("XDG_CACHE_HOME", QFile::encodeName(root + QStringLiteral("/cache")));
    const QString home = root + QStringLiteral("/home");
    QDir(home).removeRecursively();
    QDir().mkpath(home);

    out << "Making the pictures (once)...\n";
    out.flush();
    const QStringList docs = makeDocuments(root + QStringLiteral("/documents"), documents);
    QStringList folderNames;
    for (int f = 0; f < folders; ++f) {
        const QString folder = root + QStringLiteral("/folder%1").arg(f, 2, 10, QLatin1Char('0'));
        makeFolder(folder, f);
        folderNames << folder;
    }

    AppState state;
    ui::UiServices services;
    SettingsStore store(home + QStringLiteral("/settings.ini"));
    ui::Tarnby1 browser(state, services, store);
    ui::StartupRequest request;
    request.homeOption = home;
    browser.load(request);
    browser.show();
    waitFor([&] { return browser.isVisible(); }, 10);

    // One of each first: the libraries' and the windows' one-time set-up is
    // not growth.
    int failed = openAndCloseInWindow(browser, docs.constFirst()) ? 0 : 1;
    failed += thumbnailsInWindow(browser, folderNames.constFirst()) ? 0 : 1;
    browser.toolClick(QStringLiteral("ID_ListIconsBtn"));
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    const qint64 base = statusKb("VmRSS:");
    report("after one document and one folder", -1);

    for (const QString &path : docs)
        failed += openAndCloseInWindow(browser, path) ? 0 : 1;
    report(qPrintable(QStringLiteral("after %1 documents opened and closed").arg(documents)), base);

    for (const QString &folder : std::as_const(folderNames))
        failed += thumbnailsInWindow(browser, folder) ? 0 : 1;
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    report(qPrintable(QStringLiteral("after %1 thumbnail folders").arg(folders)), base);
    const ThumbnailModel *shown = browser.thumbnailView()->thumbnails();
    const qint64 growth = statusKb("VmRSS:") - base;
    out << "The last folder's " << shown->readyCount() << " thumbnails hold " << shown->imageBytes() / 1024
        << " KiB (budget " << shown->budget() / (1024 * 1024) << " MB); growth beyond them: "
        << (growth - shown->imageBytes() / 1024) / 1024 << " MB (goal: under 20 MB)";
    if (failed)
        out << "; " << failed << " steps failed";
    out << "\nPeak VmHWM " << statusKb("VmHWM:") / 1024 << " MB\n";
    out.flush();
    browser.hide();
    return failed ? 1 : 0;
}
