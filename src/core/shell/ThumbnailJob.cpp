#include "ThumbnailJob.h"

#include "BrowserValues.h"
#include "FileCatalogue.h"
#include "platform/imaging/Thumbnails.h"

#include <QFileInfo>
#include <QPainter>
#include <QThreadPool>

#include <atomic>
#include <condition_variable>
#include <deque>
#include <mutex>

namespace tarnby {

struct ThumbnailJob::Shared {
    QStringList paths;
    ThumbnailOptions options;
    Producer producer;
    ThumbnailJob *job = nullptr; // guarded by mutex; null once the job is gone

    std::mutex mutex;
    std::condition_variable idle;
    std::deque<int> queue;
    std::vector<char> queued; // queued[row]: row is still waiting in the queue
    int running = 0;          // worker tasks that have not returned
    std::atomic_bool stop{false};

    // Takes the next row, or -1 when there is nothing (left) to do.
    int take()
    {
        std::lock_guard lock(mutex);
        if (stop.load() || queue.empty())
            return -1;
        const int row = queue.front();
        queue.pop_front();
        queued[size_t(row)] = 0;
        return row;
    }

    void work()
    {
        for (int row = take(); row >= 0; row = take()) {
            const QImage image = producer(paths.at(row), options);
            // Posting under the lock: the job cannot be deleted in between,
            // and its destructor drops whatever is still queued for it.
            std::lock_guard lock(mutex);
            if (stop.load() || !job)
                break;
            ThumbnailJob *receiver = job;
            QMetaObject::invokeMethod(
                receiver, [receiver, row, image] { receiver->deliver(row, image); }, Qt::QueuedConnection);
        }
        std::lock_guard lock(mutex);
        if (--running == 0)
            idle.notify_all();
    }
};

QImage ThumbnailJob::makeThumbnail(const QString &path, const ThumbnailOptions &options)
{
    const int side = std::max(options.box.width(), options.box.height());
    QImage image = imaging::thumbnail(path, side);
    if (image.isNull())
        return image;
    if (image.width() > options.box.width() || image.height() > options.box.height())
        image = image.scaled(options.box, Qt::KeepAspectRatio, Qt::SmoothTransformation);
    if (image.hasAlphaChannel() && options.bits != 32) {
        // Without an alpha channel transparent parts would turn black: lay
        // the picture on white first, as it shows on a page.
        QImage flat(image.size(), QImage::Format_RGB32);
        flat.fill(Qt::white);
        QPainter painter(&flat);
        painter.drawImage(0, 0, image);
        painter.end();
        image = flat;
    }
    // 24 bits are kept as three bytes a pixel: a folder of thousands of
    // thumbnails is held in memory at once.
    if (options.bits == 24)
        return image.convertToFormat(QImage::Format_RGB888);
    return reduceColourDepth(image, options.bits);
}

ThumbnailJob::ThumbnailJob(const QStringList &paths, const ThumbnailOptions &options, QThreadPool *pool,
                           Producer producer, QObject *parent)
    : QObject(parent)
    , m_paths(paths)
    , m_shared(std::make_shared<Shared>())
    , m_pool(pool)
{
    m_shared->paths = paths;
    m_shared->options = options;
    m_shared->producer = producer ? std::move(producer) : Producer(&ThumbnailJob::makeThumbnail);
    m_shared->job = this;
    for (int row = 0; row < int(paths.size()); ++row)
        m_shared->queue.push_back(row);
    m_shared->queued.assign(size_t(paths.size()), 1);
}

ThumbnailJob::~ThumbnailJob()
{
    // Workers still inside a picture finish it on their own and then find
    // neither work nor a job to deliver to; nobody waits for them here, so a
    // slow picture never holds up the window.
    std::lock_guard lock(m_shared->mutex);
    m_shared->stop.store(true);
    m_shared->queue.clear();
    m_shared->job = nullptr;
}

void ThumbnailJob::start()
{
    if (m_paths.isEmpty()) {
        m_finished = true;
        emit finished(false);
        return;
    }
    const int workers = std::max(1, std::min(m_pool->maxThreadCount(), int(m_paths.size())));
    {
        std::lock_guard lock(m_shared->mutex);
        m_shared->running += workers;
    }
    for (int i = 0; i < workers; ++i) {
        std::shared_ptr<Shared> shared = m_shared;
        m_pool->start([shared] { shared->work(); });
    }
}

void ThumbnailJob::prioritize(int first, int last)
{
    first = std::max(first, 0);
    last = std::min(last, int(m_paths.size()) - 1);
    if (first > last)
        return;
    std::lock_guard lock(m_shared->mutex);
    std::deque<int> reordered;
    for (int row = first; row <= last; ++row) {
        if (m_shared->queued[size_t(row)])
            reordered.push_back(row);
    }
    if (reordered.empty())
        return;
    for (int row : m_shared->queue) {
        if (row < first || row > last)
            reordered.push_back(row);
    }
    m_shared->queue.swap(reordered);
}

void ThumbnailJob::stop()
{
    if (m_shared->stop.exchange(true) || m_finished)
        return;
    {
        std::lock_guard lock(m_shared->mutex);
        m_shared->queue.clear();
    }
    m_finished = true;
    emit finished(true);
}

bool ThumbnailJob::isStopped() const
{
    return m_shared->stop.load();
}

void ThumbnailJob::wait()
{
    std::unique_lock lock(m_shared->mutex);
    m_shared->idle.wait(lock, [this] { return m_shared->running == 0; });
}

void ThumbnailJob::runHere()
{
    for (int row = m_shared->take(); row >= 0; row = m_shared->take())
        deliver(row, m_shared->producer(m_paths.at(row), m_shared->options));
}

void ThumbnailJob::deliver(int row, const QImage &image)
{
    if (m_shared->stop.load() || m_finished)
        return;
    ++m_done;
    emit thumbnailReady(row, image);
    emit progress(m_done, total());
    if (m_done == total()) {
        m_finished = true;
        emit finished(false);
    }
}

ThumbnailModel::ThumbnailModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void ThumbnailModel::setFiles(const QStringList &paths)
{
    beginResetModel();
    m_paths = paths;
    m_images.assign(size_t(paths.size()), QImage());
    m_done.assign(size_t(paths.size()), false);
    m_ready = 0;
    m_bytes = 0;
    m_focusRow = 0;
    endResetModel();
}

void ThumbnailModel::setThumbnail(int row, const QImage &image)
{
    if (row < 0 || row >= int(m_paths.size()))
        return;
    if (!m_done[size_t(row)])
        ++m_ready;
    m_done[size_t(row)] = true;
    m_bytes += image.sizeInBytes() - m_images[size_t(row)].sizeInBytes();
    m_images[size_t(row)] = image;
    const QModelIndex i = index(row);
    emit dataChanged(i, i, {Qt::DecorationRole, ReadyRole});
    if (m_bytes > m_budget)
        evictFarthest();
}

void ThumbnailModel::evictFarthest()
{
    // Down to nine tenths of the budget at once, so that this runs once per
    // many thumbnails rather than for each.
    std::vector<int> held;
    for (int row = 0; row < int(m_images.size()); ++row) {
        if (!m_images[size_t(row)].isNull())
            held.push_back(row);
    }
    std::sort(held.begin(), held.end(), [this](int a, int b) {
        return std::abs(a - m_focusRow) > std::abs(b - m_focusRow);
    });
    QList<int> dropped;
    for (int row : held) {
        if (m_bytes <= m_budget / 10 * 9)
            break;
        m_bytes -= m_images[size_t(row)].sizeInBytes();
        m_images[size_t(row)] = QImage();
        m_done[size_t(row)] = false;
        --m_ready;
        dropped.append(row);
        const QModelIndex i = index(row);
        emit dataChanged(i, i, {Qt::DecorationRole, ReadyRole});
    }
    if (!dropped.isEmpty())
        emit evicted(dropped);
}

int ThumbnailModel::rowCount(const QModelIndex &parent) const
{
    return parent.isValid() ? 0 : int(m_paths.size());
}

QVariant ThumbnailModel::data(const QModelIndex &index, int role) const
{
    if (!index.isValid() || index.row() >= int(m_paths.size()))
        return {};
    const size_t row = size_t(index.row());
    switch (role) {
    case Qt::DisplayRole:
        return QFileInfo(m_paths.at(index.row())).fileName();
    case Qt::ToolTipRole:
    case PathRole:
        return m_paths.at(index.row());
    case Qt::DecorationRole:
        return m_images[row].isNull() ? QVariant() : QVariant(m_images[row]);
    case ReadyRole:
        return bool(m_done[row]);
    default:
        return {};
    }
}

QStringList picturesAmong(const QStringList &paths)
{
    QStringList pictures;
    for (const QString &path : paths) {
        const int i = catalogue::knownExtensionIndex(catalogue::GetFileExt(path));
        if (i <= catalogue::LastPictureIndex || (i >= 42 && i <= 44))
            pictures.append(path);
    }
    return pictures;
}

} // namespace tarnby
