#include "ui/browser/ThumbnailView.h"

#include <QFileInfo>
#include <QResizeEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

#include <algorithm>

namespace tarnby::ui {

namespace {

// Every cell has the size of the grid, whether its thumbnail has arrived or
// not: the view lays out thousands of cells once instead of asking each one.
class CellDelegate : public QStyledItemDelegate
{
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    QSize cell;
    QSize sizeHint(const QStyleOptionViewItem &, const QModelIndex &) const override { return cell; }
};

} // namespace

ThumbnailView::ThumbnailView(QWidget *parent)
    : QListView(parent)
    , m_model(new ThumbnailModel(this))
{
    setObjectName(QStringLiteral("Thumb1"));
    m_model->setObjectName(QStringLiteral("ImagList1"));
    setModel(m_model);
    setItemDelegate(new CellDelegate(this));
    setViewMode(QListView::IconMode);
    setMovement(QListView::Static);
    setResizeMode(QListView::Adjust);
    setUniformItemSizes(true);
    setWordWrap(true);
    setSelectionMode(QAbstractItemView::SingleSelection);
    setEditTriggers(QAbstractItemView::NoEditTriggers);
    // Leave a core for the rest of the program: decoding is CPU-bound.
    m_pool.setMaxThreadCount(std::max(1, QThread::idealThreadCount() - 1));
    connect(verticalScrollBar(), &QScrollBar::valueChanged, this, &ThumbnailView::prioritizeVisible);
    connect(m_model, &ThumbnailModel::evicted, this, [this](const QList<int> &rows) {
        for (int row : rows)
            m_evicted.insert(row);
    });
    connect(this, &QAbstractItemView::activated, this, [this](const QModelIndex &index) {
        emit pictureActivated(m_model->data(index, ThumbnailModel::PathRole).toString());
    });
    connect(selectionModel(), &QItemSelectionModel::currentChanged, this,
            [this] { emit currentPictureChanged(currentPicture()); });
    // New pictures reset the model, and with it the chosen one.
    connect(m_model, &QAbstractItemModel::modelReset, this, [this] { emit currentPictureChanged(QString()); });
}

QString ThumbnailView::currentPicture() const
{
    const QModelIndex current = currentIndex();
    return current.isValid() ? m_model->data(current, ThumbnailModel::PathRole).toString() : QString();
}

ThumbnailView::~ThumbnailView()
{
    dropJob();
    m_pool.waitForDone();
}

void ThumbnailView::dropJob()
{
    for (QPointer<imaging::ThumbnailJob> *slot : {&m_job, &m_refill}) {
        imaging::ThumbnailJob *job = *slot;
        *slot = nullptr;
        if (!job)
            continue;
        job->disconnect(this);
        job->disconnect(m_model);
        job->stop();
        // Not waited for (the jobs are detached): a slow picture of the old
        // folder must not hold up the new one. Deleted later, as this may run
        // inside one of the job's own signals.
        job->deleteLater();
    }
    m_refillRows.clear();
    m_jobRows.clear();
    m_evicted.clear();
}

imaging::ThumbnailJob *ThumbnailView::newJob(const QStringList &paths)
{
    const int side = std::max(m_options.box.width(), m_options.box.height());
    auto *job = new imaging::ThumbnailJob(paths, side, this);
    job->setThreadPool(&m_pool);
    job->setTeardown(imaging::ThumbnailJob::Teardown::Detach);
    job->setProducer([maker = m_maker ? m_maker : ThumbnailMaker(&browserThumbnail),
                      options = m_options](const QString &path, int) {
        imaging::ThumbnailResult result;
        result.image = maker(path, options);
        return result;
    });
    return job;
}

void ThumbnailView::showPictures(const QStringList &paths, const ThumbnailOptions &options)
{
    std::vector<PictureFile> files;
    files.reserve(size_t(paths.size()));
    for (const QString &path : paths)
        files.push_back({path});
    showPictures(files, options);
}

void ThumbnailView::showPictures(const std::vector<PictureFile> &files, const ThumbnailOptions &options)
{
    dropJob();
    const QSize box = options.box;
    setIconSize(box);
    const QSize grid(std::max(box.width(), 80) + 16, box.height() + fontMetrics().height() * 2 + 12);
    setGridSize(grid);
    static_cast<CellDelegate *>(itemDelegate())->cell = grid - QSize(4, 4);
    m_model->setFiles(files);
    m_options = options;
    startJob({});
}

void ThumbnailView::updatePictures(const std::vector<PictureFile> &files, const ThumbnailOptions &options)
{
    const QStringList shown = m_model->files();
    auto folderOf = [](const QString &path) { return QFileInfo(path).path(); };
    if (shown.isEmpty() || files.empty() || !(options == m_options)
        || folderOf(shown.constFirst()) != folderOf(files.front().path)) {
        showPictures(files, options);
        return;
    }
    // What the running job had still to make is made too; after Stop only
    // what changed is. Thumbnails dropped for the budget stay dropped until
    // they come back into sight.
    const bool wasLoading = isLoading();
    QStringList evicted;
    for (int row : std::as_const(m_evicted))
        evicted.append(shown.value(row));
    const QList<int> changed = m_model->updateFiles(files);
    dropJob();
    for (const QString &path : std::as_const(evicted)) {
        if (const int row = m_model->rowOf(path); row >= 0)
            m_evicted.insert(row);
    }
    QList<int> rows = changed;
    if (wasLoading) {
        for (int row = 0; row < m_model->rowCount(); ++row) {
            if (!m_model->isReady(row) && !m_evicted.contains(row))
                rows.append(row);
        }
        std::sort(rows.begin(), rows.end());
        rows.erase(std::unique(rows.begin(), rows.end()), rows.end());
    }
    if (rows.isEmpty()) {
        if (wasLoading)
            emit loadingChanged(false);
        return;
    }
    startJob(rows);
}

void ThumbnailView::startJob(const QList<int> &rows)
{
    QStringList paths;
    if (rows.isEmpty()) {
        paths = m_model->files();
    } else {
        for (int row : rows)
            paths.append(m_model->files().at(row));
    }
    m_jobRows = rows;
    m_job = newJob(paths);
    connect(m_job, &imaging::ThumbnailJob::thumbnailReady, m_model, [this](int i, const QString &, const QImage &image) {
        const int row = m_jobRows.isEmpty() ? i : m_jobRows.value(i, -1);
        m_evicted.remove(row);
        m_model->setThumbnail(row, image);
    });
    connect(m_job, &imaging::ThumbnailJob::progress, this, &ThumbnailView::progress);
    connect(m_job, &imaging::ThumbnailJob::finished, this, [this, job = m_job.data()] {
        if (!job->isStopped()) // stop() has said so already
            emit loadingChanged(false);
    });
    emit loadingChanged(true);
    prioritizeVisible();
    m_job->start();
}

void ThumbnailView::stop()
{
    const bool wasLoading = isLoading();
    if (m_job)
        m_job->stop();
    if (m_refill)
        m_refill->stop();
    if (wasLoading)
        emit loadingChanged(false);
}

void ThumbnailView::clear()
{
    const bool wasLoading = isLoading();
    dropJob();
    m_model->setFiles(QStringList());
    if (wasLoading)
        emit loadingChanged(false);
}

void ThumbnailView::resizeEvent(QResizeEvent *event)
{
    QListView::resizeEvent(event);
    prioritizeVisible();
}

void ThumbnailView::prioritizeVisible()
{
    if (!m_job || m_model->rowCount() == 0)
        return;
    // The grid is uniform, so what is on screen follows from the scroll
    // offset: whole grid lines, left to right.
    const QSize grid = gridSize().isValid() ? gridSize() : QSize(100, 100);
    const int columns = std::max(1, viewport()->width() / std::max(1, grid.width()));
    const int top = std::max(0, verticalOffset()) / std::max(1, grid.height());
    const int lines = viewport()->height() / std::max(1, grid.height()) + 2;
    const int firstRow = top * columns;
    const int lastRow = std::min(m_model->rowCount() - 1, (top + lines) * columns - 1);
    m_model->setFocusRow((firstRow + lastRow) / 2);
    if (!m_job->isFinished()) {
        if (m_jobRows.isEmpty()) {
            m_job->setVisibleRange(firstRow, lastRow);
        } else {
            // The job's own numbers of the rows on screen.
            const auto from = std::lower_bound(m_jobRows.cbegin(), m_jobRows.cend(), firstRow);
            const auto to = std::upper_bound(m_jobRows.cbegin(), m_jobRows.cend(), lastRow);
            if (from != to)
                m_job->setVisibleRange(int(from - m_jobRows.cbegin()), int(to - m_jobRows.cbegin()) - 1);
        }
    }
    if (!m_job->isStopped()) // after Stop nothing more is made
        remakeEvicted(firstRow, lastRow);
}

void ThumbnailView::remakeEvicted(int first, int last)
{
    QList<int> rows;
    for (int row = first; row <= last && row < m_model->rowCount(); ++row) {
        if (m_evicted.contains(row))
            rows.append(row);
    }
    if (rows.isEmpty() || rows == m_refillRows)
        return;
    if (m_refill) {
        m_refill->disconnect(this);
        m_refill->stop();
        m_refill->deleteLater();
    }
    QStringList paths;
    for (int row : rows)
        paths.append(m_model->files().at(row));
    m_refillRows = rows;
    m_refill = newJob(paths);
    connect(m_refill, &imaging::ThumbnailJob::thumbnailReady, this, [this](int i, const QString &, const QImage &image) {
        if (i < 0 || i >= m_refillRows.size())
            return;
        m_evicted.remove(m_refillRows.at(i));
        m_model->setThumbnail(m_refillRows.at(i), image);
    });
    m_refill->start();
}

} // namespace tarnby::ui
