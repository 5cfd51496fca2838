#pragma once

#include "core/browser/ThumbnailModel.h"
#include "core/platform/imaging/ThumbnailJob.h"

#include <QListView>
#include <QPointer>
#include <QSet>
#include <QThreadPool>

namespace tarnby::ui {

// The thumbnail display (object name "Thumb1", its model "ImagList1"): the
// pictures of a folder as a grid that fills while the thumbnails are made on a
// thread pool of its own. The rows on screen are made first; scrolling moves
// the newly visible rows to the front. A new showPictures() drops the running
// job. The model keeps the images within its memory budget; thumbnails it has
// dropped are made again when they are scrolled back into sight.
class ThumbnailView : public QListView
{
    Q_OBJECT
public:
    explicit ThumbnailView(QWidget *parent = nullptr);
    ~ThumbnailView() override;

    // Starts making thumbnails of paths (all of which are shown at once, as
    // names, until their picture arrives).
    void showPictures(const QStringList &paths, const ThumbnailOptions &options);
    void showPictures(const std::vector<PictureFile> &files, const ThumbnailOptions &options);
    // The same folder listed again (a change on disk, another filter): the
    // thumbnails already made stay, those of new and changed files are made,
    // and those of files that are gone leave. Another folder or other
    // options start afresh, as showPictures() does.
    void updatePictures(const std::vector<PictureFile> &files, const ThumbnailOptions &options);
    // Stops the running job; the thumbnails made so far stay.
    void stop();
    // Drops everything, as when the list takes the place of the thumbnails.
    void clear();

    bool isLoading() const { return m_job && !m_job->isStopped() && !m_job->isFinished(); }
    ThumbnailModel *thumbnails() const { return m_model; }
    // The path of the chosen thumbnail; empty when none is.
    QString currentPicture() const;
    imaging::ThumbnailJob *job() const { return m_job; }
    // Replaces the picture maker (tests make pictures that block or fail).
    void setProducer(ThumbnailMaker maker) { m_maker = std::move(maker); }

signals:
    void loadingChanged(bool loading);
    void progress(int done, int total);
    void pictureActivated(const QString &path);
    // The chosen thumbnail changed (mouse or keys); empty when none is.
    void currentPictureChanged(const QString &path);

protected:
    void resizeEvent(QResizeEvent *event) override;

private:
    void prioritizeVisible();
    void remakeEvicted(int first, int last);
    void dropJob();
    imaging::ThumbnailJob *newJob(const QStringList &paths);
    // Makes the thumbnails of rows (ascending; empty: every row).
    void startJob(const QList<int> &rows);

    ThumbnailModel *m_model;
    QThreadPool m_pool;
    QPointer<imaging::ThumbnailJob> m_job;
    QList<int> m_jobRows; // the model rows of m_job's pictures; empty: all rows, in order
    QPointer<imaging::ThumbnailJob> m_refill; // makes evicted thumbnails again as they come into sight
    QList<int> m_refillRows;
    QSet<int> m_evicted;
    ThumbnailOptions m_options;
    ThumbnailMaker m_maker;
};

} // namespace tarnby::ui
