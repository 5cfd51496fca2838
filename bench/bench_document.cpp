// How long the interface thread is held up while a huge text file opens: a
// timer ticks every 10 ms on the thread that owns the document while it
// loads, and the longest gap between ticks is reported, then the same while
// the next page is fetched. Loading itself runs on a worker thread.
//
//   bench_document [MEGABYTES]     (200 by default; the file goes to /tmp)

#include "core/viewer/Document.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QTemporaryDir>
#include <QTextStream>
#include <QTimer>

#include <algorithm>

using namespace tarnby;

namespace {

// Runs the event loop until done() fires, and returns the longest gap in
// milliseconds between ticks of a 10 ms timer meanwhile.
template<typename Signal>
qint64 longestPauseUntil(const viewer::Document *document, Signal done, qint64 *total)
{
    QElapsedTimer clock;
    clock.start();
    qint64 last = 0;
    qint64 longest = 0;
    QTimer ticker;
    QObject::connect(&ticker, &QTimer::timeout, [&] {
        longest = std::max(longest, clock.elapsed() - last);
        last = clock.elapsed();
    });
    QEventLoop loop;
    QObject::connect(document, done, &loop, &QEventLoop::quit);
    QObject::connect(document, &viewer::Document::loadFailed, &loop, &QEventLoop::quit);
    ticker.start(10);
    loop.exec();
    *total = clock.elapsed();
    return std::max(longest, clock.elapsed() - last);
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    QTextStream out(stdout);
    const qint64 megabytes = argc > 1 ? QByteArray(argv[1]).toLongLong() : 200;

    QTemporaryDir dir;
    const QString path = dir.filePath(QStringLiteral("huge.txt"));
    {
        QFile file(path);
        if (!file.open(QIODevice::WriteOnly))
            return 1;
        QByteArray block;
        for (int i = 0; i < 20000; ++i)
            block += "A line of a very large text file, number " + QByteArray::number(i) + ".\r\n";
        while (file.size() < megabytes * 1024 * 1024)
            file.write(block);
    }

    viewer::Document document(path, viewer::DocumentKind::Text, false);
    qint64 total = 0;
    document.load();
    const qint64 opening = longestPauseUntil(&document, &viewer::Document::loaded, &total);
    if (document.loadingState() != viewer::Document::LoadingState::Loaded) {
        out << "the file did not load: " << document.errorString() << "\n";
        return 1;
    }
    out << "opening " << megabytes << " MB of text: " << total << " ms, " << document.text().layout.pageCount()
        << " pages; longest pause of the interface thread " << opening << " ms\n";

    document.loadPage(1);
    const qint64 paging = longestPauseUntil(&document, &viewer::Document::pageLoaded, &total);
    out << "fetching page 2: " << total << " ms; longest pause " << paging << " ms\n";
    return 0;
}
