#include "core/platform/imaging/ThumbnailJob.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QThreadPool>
#include <QWaitCondition>

#include <atomic>
#include <optional>
#include <vector>

namespace tarnby::imaging {

// Shared between the job and its workers. The workers hold it by shared_ptr
// and never touch the job itself except to post to it under the mutex, so a
// detached job may go away while they still run.
struct ThumbnailJob::State {
    QStringList paths;
    int size = 0;
    ThumbnailOptions options;
    std::optional<ThumbnailCache> cache;
    Callback callback;
    Producer producer;

    std::atomic<bool> stopped{false};
    std::atomic<int> completed{0};

    QMutex mutex; // guards everything below
    QWaitCondition workersDone;
    std::vector<char> taken;
    int nextInOrder = 0;
    int visibleFirst = 0;
    int visibleLast = -1;
    int visibleCursor = 0;
    int activeWorkers = 0;
    bool finished = false;
    ThumbnailJob *job = nullptr; // null once the job is gone

    void runWorker();

    int takeNext()
    {
        const int n = int(taken.size());
        if (visibleFirst <= visibleLast) {
            for (int i = qMax(visibleCursor, visibleFirst); i <= visibleLast && i < n; ++i) {
                if (!taken[size_t(i)]) {
                    taken[size_t(i)] = 1;
                    visibleCursor = i + 1;
                    return i;
                }
            }
            visibleCursor = visibleLast + 1;
        }
        while (nextInOrder < n && taken[size_t(nextInOrder)])
            ++nextInOrder;
        if (nextInOrder >= n)
            return -1;
        taken[size_t(nextInOrder)] = 1;
        return nextInOrder++;
    }
};

ThumbnailJob::ThumbnailJob(const QStringList &paths, int size, QObject *parent)
    : QObject(parent)
    , m_state(std::make_shared<State>())
{
    m_state->paths = paths;
    m_state->size = size;
    m_state->taken.assign(size_t(paths.size()), 0);
    m_state->job = this;
}

ThumbnailJob::~ThumbnailJob()
{
    stop();
    {
        // Results already posted to the job are discarded with it by Qt; the
        // workers post nothing more once they see the job gone.
        QMutexLocker lock(&m_state->mutex);
        m_state->job = nullptr;
    }
    if (m_teardown == Teardown::Wait)
        wait();
}

void ThumbnailJob::setOptions(ThumbnailOptions options)
{
    m_state->options = options;
}

void ThumbnailJob::setCache(const ThumbnailCache &cache)
{
    m_state->cache = cache;
}

void ThumbnailJob::setThreadPool(QThreadPool *pool)
{
    m_pool = pool;
}

void ThumbnailJob::setMaxWorkers(int workers)
{
    m_maxWorkers = workers;
}

void ThumbnailJob::setCallback(Callback callback)
{
    m_state->callback = std::move(callback);
}

void ThumbnailJob::setProducer(Producer producer)
{
    m_state->producer = std::move(producer);
}

void ThumbnailJob::setTeardown(Teardown teardown)
{
    m_teardown = teardown;
}

void ThumbnailJob::setVisibleRange(int first, int last)
{
    QMutexLocker lock(&m_state->mutex);
    const int n = int(m_state->taken.size());
    m_state->visibleFirst = qBound(0, first, n);
    m_state->visibleLast = qMin(last, n - 1);
    m_state->visibleCursor = m_state->visibleFirst;
}

void ThumbnailJob::start()
{
    if (m_started)
        return;
    m_started = true;
    if (!m_state->cache)
        m_state->cache.emplace();
    QThreadPool *pool = m_pool ? m_pool : QThreadPool::globalInstance();
    int workers = m_maxWorkers > 0 ? m_maxWorkers : pool->maxThreadCount();
    workers = qBound(1, workers, qMax(1, int(m_state->paths.size())));
    {
        QMutexLocker lock(&m_state->mutex);
        m_state->activeWorkers = workers;
    }
    for (int i = 0; i < workers; ++i)
        pool->start([state = m_state] { state->runWorker(); });
}

void ThumbnailJob::State::runWorker()
{
    for (;;) {
        int index;
        {
            QMutexLocker lock(&mutex);
            index = stopped ? -1 : takeNext();
        }
        if (index < 0)
            break;
        Item item;
        item.index = index;
        item.path = paths.at(index);
        item.result = producer ? producer(item.path, size) : makeThumbnail(item.path, size, options, &*cache);
        // An item that was under way when the job was stopped is dropped.
        if (stopped)
            break;
        completed.fetch_add(1);
        if (callback)
            callback(item);
        // Posted under the mutex: the job cannot be destroyed in between.
        QMutexLocker lock(&mutex);
        if (!job)
            break;
        ThumbnailJob *receiver = job;
        QMetaObject::invokeMethod(receiver, [receiver, item] { receiver->deliver(item); }, Qt::QueuedConnection);
    }
    QMutexLocker lock(&mutex);
    if (--activeWorkers == 0) {
        // Posted before waking the owner: once wait() returns, the job may be
        // destroyed, and no worker may touch it after that.
        if (job)
            QMetaObject::invokeMethod(job, &ThumbnailJob::finished, Qt::QueuedConnection);
        finished = true;
        workersDone.wakeAll();
    }
}

void ThumbnailJob::deliver(const Item &item)
{
    if (m_state->stopped)
        return;
    ++m_delivered;
    emit thumbnailReady(item.index, item.path, item.result.image, item.result.errorString);
    emit progress(m_delivered, count());
}

void ThumbnailJob::stop()
{
    m_state->stopped = true;
}

bool ThumbnailJob::wait(int msecs)
{
    if (!m_started)
        return true;
    const QDeadlineTimer deadline = msecs < 0 ? QDeadlineTimer(QDeadlineTimer::Forever) : QDeadlineTimer(msecs);
    QMutexLocker lock(&m_state->mutex);
    while (!m_state->finished) {
        if (!m_state->workersDone.wait(&m_state->mutex, deadline))
            return m_state->finished;
    }
    return true;
}

int ThumbnailJob::count() const
{
    return int(m_state->paths.size());
}

int ThumbnailJob::completedCount() const
{
    return m_state->completed.load();
}

int ThumbnailJob::deliveredCount() const
{
    return m_delivered;
}

bool ThumbnailJob::isStopped() const
{
    return m_state->stopped.load();
}

bool ThumbnailJob::isFinished() const
{
    QMutexLocker lock(&m_state->mutex);
    return m_started && m_state->finished;
}

} // namespace tarnby::imaging
