#pragma once

#include <QAbstractListModel>
#include <QImage>
#include <QObject>
#include <QSize>
#include <QStringList>

#include <functional>
#include <memory>
#include <vector>

class QThreadPool;

// Thumbnails of the pictures of one folder: a job that makes them on a thread
// pool, visible ones first, and the list model that the thumbnail view shows.
namespace tarnby {

struct ThumbnailOptions {
    QSize box{94, 94};  // the thumbnail fits in this many pixels
    int bits = 24;      // colour depth, see reduceColourDepth()
};

// One run over a list of pictures. The job owns a queue of row numbers; worker
// tasks on the pool take rows from its front, so prioritize() moves the rows
// the user can see to the head of the line. Results arrive on the thread that
// owns the job, through thumbnailReady(), in the order they are made.
//
// stop() ends the run: no new picture is started, results still in flight are
// dropped, and finished(true) is emitted at once. Deleting the job stops it
// without waiting: the pictures being made (at most one per worker) finish on
// the pool and are thrown away. Whoever owns the pool waits for it at quit.
class ThumbnailJob : public QObject
{
    Q_OBJECT
public:
    // Makes one thumbnail; runs on a worker thread. The default reads the
    // picture through the picture layer and reduces its colour depth.
    using Producer = std::function<QImage(const QString &path, const ThumbnailOptions &options)>;
    static QImage makeThumbnail(const QString &path, const ThumbnailOptions &options);

    ThumbnailJob(const QStringList &paths, const ThumbnailOptions &options, QThreadPool *pool,
                 Producer producer = {}, QObject *parent = nullptr);
    ~ThumbnailJob() override;

    // Starts the workers (as many as the pool has threads).
    void start();
    // Makes the rows first..last (clamped) the next ones to be made, in order.
    void prioritize(int first, int last);
    void stop();
    // Blocks until no worker of this job runs any more.
    void wait();
    // Makes every remaining thumbnail on the calling thread, in queue order,
    // delivering each result before the next starts. For tests and tools.
    void runHere();

    int total() const { return int(m_paths.size()); }
    int done() const { return m_done; }
    bool isStopped() const;
    bool isFinished() const { return m_finished; }

signals:
    void thumbnailReady(int row, const QImage &image); // null image: the picture could not be read
    void progress(int done, int total);
    void finished(bool cancelled);

private:
    struct Shared;
    void deliver(int row, const QImage &image);

    QStringList m_paths;
    std::shared_ptr<Shared> m_shared;
    QThreadPool *m_pool;
    int m_done = 0;
    bool m_finished = false;
};

// The thumbnails of a folder as a list: the file name as text, the thumbnail
// (once made) as decoration. Its object name in the window is "ImagList1".
//
// The images it holds are bounded by a memory budget: past it, the thumbnails
// farthest from the focus row (the middle of what is on screen) are dropped
// again and reported by evicted(), so that the view makes them anew when they
// come back into sight.
class ThumbnailModel : public QAbstractListModel
{
    Q_OBJECT
public:
    enum Role { PathRole = Qt::UserRole + 1, ReadyRole };
    static constexpr qint64 DefaultBudget = 64LL * 1024 * 1024; // some 3,300 thumbnails of 94 x 94 at 24 bits

    explicit ThumbnailModel(QObject *parent = nullptr);

    void setFiles(const QStringList &paths);
    void setThumbnail(int row, const QImage &image);
    QStringList files() const { return m_paths; }
    int readyCount() const { return m_ready; }
    bool isReady(int row) const { return row >= 0 && row < int(m_done.size()) && m_done[size_t(row)]; }
    // Bytes held by the thumbnail images.
    qint64 imageBytes() const { return m_bytes; }
    void setBudget(qint64 bytes) { m_budget = bytes; }
    qint64 budget() const { return m_budget; }
    void setFocusRow(int row) { m_focusRow = row; }

signals:
    void evicted(const QList<int> &rows);

public:
    int rowCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;

private:
    void evictFarthest();

    QStringList m_paths;
    std::vector<QImage> m_images;
    std::vector<bool> m_done;
    int m_ready = 0;
    qint64 m_bytes = 0;
    qint64 m_budget = DefaultBudget;
    int m_focusRow = 0;
};

// The files of paths that get a thumbnail: pictures by their extension (the
// picture band of the catalogue and the one-bit formats MAC, IMG and MSP).
QStringList picturesAmong(const QStringList &paths);

} // namespace tarnby
