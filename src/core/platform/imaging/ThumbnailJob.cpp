#include "ThumbnailJob.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QThreadPool>
#include <QWaitCondition>

#include <atomic>
#include <optional>
#include <vector>

namespace tarnby::imaging {

// Shared between the job and its workers. The workers hold it by shared_ptr
// so that nothing they touch after their last report can vanish under them.
struct ThumbnailJob::State {
    QStringList paths;
    int size = 0;
    ThumbnailOptions options;
    std::optional<ThumbnailCache> cache;
    Callback callback;

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
}

ThumbnailJob::~ThumbnailJob()
{
    stop();
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
        pool->start([this, state = m_state] {
            Q_UNUSED(state); // keeps the state alive until the worker has returned
            runWorker();
        });
}

void ThumbnailJob::runWorker()
{
    State &state = *m_state;
    for (;;) {
        int index;
        {
            QMutexLocker lock(&state.mutex);
            index = state.stopped ? -1 : state.takeNext();
        }
        if (index < 0)
            break;
        Item item;
        item.index = index;
        item.path = state.paths.at(index);
        item.result = makeThumbnail(item.path, state.size, state.options, &*state.cache);
        // An item that was under way when the job was stopped is dropped.
        if (state.stopped)
            break;
        state.completed.fetch_add(1);
        if (state.callback)
            state.callback(item);
        QMetaObject::invokeMethod(
            this,
            [this, item] {
                if (!m_state->stopped)
                    emit thumbnailReady(item.index, item.path, item.result.image, item.result.errorString);
            },
            Qt::QueuedConnection);
    }
    QMutexLocker lock(&state.mutex);
    if (--state.activeWorkers == 0) {
        // Posted before waking the owner: once wait() returns, the job may be
        // destroyed, and no worker may touch it after that.
        QMetaObject::invokeMethod(this, &ThumbnailJob::finished, Qt::QueuedConnection);
        state.finished = true;
        state.workersDone.wakeAll();
    }
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
