#pragma once

#include <QAbstractListModel>
#include <QHash>
#include <QImage>
#include <QSize>
#include <QStringList>

#include <functional>
#include <vector>

// Thumbnails of the pictures of one folder as the browser shows them: their
// look, and the list model that the thumbnail view shows. They are made by the
// picture layer's ThumbnailJob.
namespace tarnby {

struct ThumbnailOptions {
    QSize box{94, 94};  // the thumbnail fits in this many pixels
    int bits = 24;      // colour depth, see reduceColourDepth()
    bool operator==(const ThumbnailOptions &) const = default;
};

// A picture with what the listing saw of it: a thumbnail made before stays
// good while size and time are the same. -1: not known.
struct PictureFile {
    QString path;
    qint64 size = -1;
    qint64 modified = -1; // milliseconds since the epoch
};

// The browser's thumbnail of one picture, made on a worker thread: read
// through the picture layer's thumbnails (and their shared cache), fitted into
// options.box, laid on white when transparent and kept below 32 bits, and
// reduced to options.bits. A null image: the picture could not be read.
QImage browserThumbnail(const QString &path, const ThumbnailOptions &options);
// What makes the thumbnails of a view; browserThumbnail() unless a test
// replaces it. Called on worker threads, several at once.
using ThumbnailMaker = std::function<QImage(const QString &path, const ThumbnailOptions &options)>;

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
    void setFiles(const std::vector<PictureFile> &files);
    // Brings the rows to files without a reset: rows of files that are gone
    // are removed, new files are inserted where they belong, and a file whose
    // size or time changed loses its thumbnail. Every other row keeps its
    // thumbnail. Returns the rows (after the update) that need one made:
    // the new and the changed files, ascending.
    QList<int> updateFiles(const std::vector<PictureFile> &files);
    // The row showing path; -1 when none does.
    int rowOf(const QString &path) const { return m_rowOf.value(path, -1); }
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
    void clearRow(size_t row);
    void indexRows();

    QStringList m_paths;
    std::vector<PictureFile> m_files;
    QHash<QString, int> m_rowOf;
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
bool isThumbnailPicture(const QString &path);

} // namespace tarnby
