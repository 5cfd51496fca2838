#include "ThumbnailView.h"

#include <QResizeEvent>
#include <QScrollBar>
#include <QStyledItemDelegate>

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
    connect(this, &QAbstractItemView::activated, this, [this](const QModelIndex &index) {
        emit pictureActivated(m_model->data(index, ThumbnailModel::PathRole).toString());
    });
}

ThumbnailView::~ThumbnailView()
{
    dropJob();
    m_pool.waitForDone();
}

void ThumbnailView::dropJob()
{
    if (!m_job)
        return;
    ThumbnailJob *job = m_job;
    m_job = nullptr;
    job->disconnect(this);
    job->stop();
    // Not waited for: a slow picture of the old folder must not hold up the
    // new one. Deleted later, as this may run inside one of its own signals.
    job->deleteLater();
}

void ThumbnailView::showPictures(const QStringList &paths, const ThumbnailOptions &options)
{
    dropJob();
    const QSize box = options.box;
    setIconSize(box);
    const QSize grid(std::max(box.width(), 80) + 16, box.height() + fontMetrics().height() * 2 + 12);
    setGridSize(grid);
    static_cast<CellDelegate *>(itemDelegate())->cell = grid - QSize(4, 4);
    m_model->setFiles(paths);

    m_job = new ThumbnailJob(paths, options, &m_pool, m_producer, this);
    connect(m_job, &ThumbnailJob::thumbnailReady, m_model, &ThumbnailModel::setThumbnail);
    connect(m_job, &ThumbnailJob::progress, this, &ThumbnailView::progress);
    connect(m_job, &ThumbnailJob::finished, this, [this] { emit loadingChanged(false); });
    emit loadingChanged(true);
    prioritizeVisible();
    m_job->start();
}

void ThumbnailView::stop()
{
    if (m_job)
        m_job->stop();
}

void ThumbnailView::clear()
{
    const bool wasLoading = isLoading();
    dropJob();
    m_model->setFiles({});
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
    if (!m_job || m_job->isFinished() || m_model->rowCount() == 0)
        return;
    // The grid is uniform: the first and last visible rows bound what is on
    // screen. Before the first layout (hidden view) start from the top.
    const QRect area = viewport()->rect();
    QModelIndex first = indexAt(area.topLeft() + QPoint(1, 1));
    QModelIndex last = indexAt(QPoint(area.right() - 1, area.bottom() - 1));
    const int firstRow = first.isValid() ? first.row() : 0;
    int lastRow = last.isValid() ? last.row() : -1;
    if (lastRow < firstRow) {
        const QSize grid = gridSize().isValid() ? gridSize() : QSize(100, 100);
        const int perScreen = std::max(1, (area.width() / grid.width()) * (area.height() / grid.height() + 1));
        lastRow = firstRow + std::max(perScreen, 24);
    }
    m_job->prioritize(firstRow, lastRow);
}

} // namespace tarnby::ui
