#pragma once

#include "core/platform/imaging/ThumbnailCache.h"
#include "core/platform/imaging/Thumbnails.h"

#include <QObject>
#include <QStringList>

#include <functional>
#include <memory>

class QThreadPool;

namespace tarnby::imaging {

// The thumbnails of a list of files (a folder's pictures), made on a thread
// pool, the visible ones first, and stoppable as a whole.
//
// Typical use from a thumbnail view:
//
//     m_job = std::make_unique<ThumbnailJob>(paths, 128);
//     connect(m_job.get(), &ThumbnailJob::thumbnailReady, this, &View::setThumbnail);
//     m_job->setVisibleRange(firstRow, lastRow);
//     m_job->start();
//     ...                       // on scrolling: m_job->setVisibleRange(...)
//     m_job.reset();            // folder or filter change, quit: stops and waits
//
// A window that must not wait for a slow picture of the folder it is leaving
// sets Teardown::Detach: the destructor then stops the job and returns at
// once, and the workers still inside a picture finish it on their own and
// drop it. Such a window waits for its pool when it closes.
//
// Threads. The job object belongs to the thread that creates it (the owner);
// start(), stop(), wait() and the destructor are called there. setVisibleRange()
// and stop() may be called from any thread, the callback included. Items run
// on the pool's threads, several at once.
//
// Results. Each finished item is handed over twice, in this order:
// - to the callback, if one is set, on the worker thread that made it, at once
//   (the way for callers without an event loop, such as the command line);
//   several workers may be in the callback at the same time;
// - as thumbnailReady, queued to the owner's thread, followed by progress()
//   with the number of items handed over there so far.
// After stop() no callback starts and no thumbnailReady is emitted any more,
// even for items already under way or already queued: stale work is dropped.
// finished() is emitted once, queued, when the last worker has returned,
// whether the job ran to the end or was stopped.
//
// Costs: each item is one makeThumbnail() call; a stopped job still waits for
// the items under way (one picture per worker) before wait() returns. Workers
// that have not started yet cannot be taken back from the pool: they start
// behind whatever else the pool is running, see the flag and return at once.
// A view that must not wait behind unrelated work gives the job a pool of its
// own with setThreadPool().
class ThumbnailJob : public QObject
{
    Q_OBJECT

public:
    struct Item {
        int index = -1; // position in the list given to the constructor
        QString path;
        ThumbnailResult result;
    };
    using Callback = std::function<void(const Item &item)>;
    // Makes one item in place of makeThumbnail(path, size, options, cache);
    // runs on the worker threads, several at once.
    using Producer = std::function<ThumbnailResult(const QString &path, int size)>;
    enum class Teardown {
        Wait,   // the destructor waits for the workers (the default)
        Detach, // the destructor returns at once; the workers end on their own
    };

    ThumbnailJob(const QStringList &paths, int size, QObject *parent = nullptr);
    // Stops the job and, unless the teardown is Detach, waits for its workers.
    ~ThumbnailJob() override;

    // Before start(). Defaults: the shared cache, QThreadPool::globalInstance()
    // with as many workers as it has threads.
    void setOptions(ThumbnailOptions options);
    void setCache(const ThumbnailCache &cache);
    void setThreadPool(QThreadPool *pool);
    void setMaxWorkers(int workers);
    // With Teardown::Detach the callback may still run while the destructor
    // returns (never after the worker has seen the stop): it must not refer
    // to the job's owner.
    void setCallback(Callback callback);
    void setProducer(Producer producer);
    void setTeardown(Teardown teardown);

    // Items first..last (inclusive, clamped to the list) are taken before all
    // others, in order; the rest follow in list order. May be called at any
    // time; it only affects items not yet taken. An empty range (last < first)
    // removes the preference.
    void setVisibleRange(int first, int last);

    void start();
    // Asks the workers to take no more items; returns at once.
    void stop();
    // Blocks until every worker has returned; false when msecs ran out first.
    // Without start(), returns true at once.
    bool wait(int msecs = -1);

    int count() const;
    int completedCount() const; // items made so far, on the worker threads
    int deliveredCount() const; // items handed over by thumbnailReady so far
    bool isStopped() const;
    bool isFinished() const; // started, and every worker has returned

signals:
    void thumbnailReady(int index, const QString &path, const QImage &image, const QString &errorString);
    void progress(int delivered, int count);
    void finished();

private:
    struct State;
    void deliver(const Item &item);

    std::shared_ptr<State> m_state;
    QThreadPool *m_pool = nullptr;
    int m_maxWorkers = 0;
    int m_delivered = 0;
    Teardown m_teardown = Teardown::Wait;
    bool m_started = false;
};

} // namespace tarnby::imaging
