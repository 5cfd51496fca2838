#include "core/browser/ThumbnailModel.h"

#include "core/browser/BrowserValues.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/Thumbnails.h"

#include <QFileInfo>
#include <QPainter>
#include <QSet>

#include <algorithm>

namespace tarnby {

QImage browserThumbnail(const QString &path, const ThumbnailOptions &options)
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

ThumbnailModel::ThumbnailModel(QObject *parent)
    : QAbstractListModel(parent)
{
}

void ThumbnailModel::setFiles(const QStringList &paths)
{
    std::vector<PictureFile> files;
    files.reserve(size_t(paths.size()));
    for (const QString &path : paths)
        files.push_back({path});
    setFiles(files);
}

void ThumbnailModel::setFiles(const std::vector<PictureFile> &files)
{
    beginResetModel();
    m_files = files;
    m_images.assign(files.size(), QImage());
    m_done.assign(files.size(), false);
    indexRows();
    m_ready = 0;
    m_bytes = 0;
    m_focusRow = 0;
    endResetModel();
}

void ThumbnailModel::indexRows()
{
    m_paths.clear();
    m_paths.reserve(qsizetype(m_files.size()));
    m_rowOf.clear();
    m_rowOf.reserve(qsizetype(m_files.size()));
    for (size_t row = 0; row < m_files.size(); ++row) {
        m_paths.append(m_files[row].path);
        m_rowOf.insert(m_files[row].path, int(row));
    }
}

void ThumbnailModel::clearRow(size_t row)
{
    m_bytes -= m_images[row].sizeInBytes();
    m_images[row] = QImage();
    if (m_done[row])
        --m_ready;
    m_done[row] = false;
}

QList<int> ThumbnailModel::updateFiles(const std::vector<PictureFile> &files)
{
    QHash<QString, int> wanted;
    wanted.reserve(qsizetype(files.size()));
    for (size_t i = 0; i < files.size(); ++i)
        wanted.insert(files[i].path, int(i));

    // The files that stay must keep their order for rows to move in place;
    // a listing sorted differently is taken in one reset, thumbnails kept.
    int last = -1;
    bool inOrder = true;
    for (const PictureFile &file : m_files) {
        const int at = wanted.value(file.path, -1);
        if (at < 0)
            continue;
        if (at < last) {
            inOrder = false;
            break;
        }
        last = at;
    }
    if (!inOrder) {
        std::vector<QImage> images(files.size());
        std::vector<bool> done(files.size(), false);
        QList<int> toMake;
        for (size_t i = 0; i < files.size(); ++i) {
            const int old = rowOf(files[i].path);
            const bool same = old >= 0 && m_files[size_t(old)].size == files[i].size
                && m_files[size_t(old)].modified == files[i].modified;
            if (same && m_done[size_t(old)]) {
                images[i] = m_images[size_t(old)];
                done[i] = true;
            } else if (!same) {
                toMake.append(int(i));
            }
        }
        beginResetModel();
        m_files = files;
        m_images = std::move(images);
        m_done = std::move(done);
        indexRows();
        m_ready = int(std::count(m_done.begin(), m_done.end(), true));
        m_bytes = 0;
        for (const QImage &image : m_images)
            m_bytes += image.sizeInBytes();
        endResetModel();
        return toMake;
    }

    // Gone: runs of rows from the bottom up, so that the rows above stay put.
    for (int row = int(m_files.size()) - 1; row >= 0;) {
        if (wanted.contains(m_files[size_t(row)].path)) {
            --row;
            continue;
        }
        int first = row;
        while (first > 0 && !wanted.contains(m_files[size_t(first - 1)].path))
            --first;
        beginRemoveRows({}, first, row);
        for (int r = first; r <= row; ++r)
            clearRow(size_t(r));
        m_files.erase(m_files.begin() + first, m_files.begin() + row + 1);
        m_images.erase(m_images.begin() + first, m_images.begin() + row + 1);
        m_done.erase(m_done.begin() + first, m_done.begin() + row + 1);
        m_paths.remove(first, row - first + 1);
        endRemoveRows();
        row = first - 1;
    }

    // New: inserted in runs where the listing has them. What is left of the
    // old rows is a subsequence of files, so one walk places them.
    QSet<QString> kept;
    kept.reserve(qsizetype(m_files.size()));
    for (const PictureFile &file : m_files)
        kept.insert(file.path);
    QList<int> toMake;
    for (size_t i = 0; i < files.size();) {
        if (kept.contains(files[i].path)) {
            PictureFile &had = m_files[i];
            if (had.size != files[i].size || had.modified != files[i].modified) {
                had = files[i];
                clearRow(i);
                const QModelIndex changed = index(int(i));
                emit dataChanged(changed, changed, {Qt::DecorationRole, ReadyRole});
                toMake.append(int(i));
            }
            ++i;
            continue;
        }
        size_t end = i + 1;
        while (end < files.size() && !kept.contains(files[end].path))
            ++end;
        const auto count = qsizetype(end - i);
        beginInsertRows({}, int(i), int(end) - 1);
        m_files.insert(m_files.begin() + qsizetype(i), files.begin() + qsizetype(i), files.begin() + qsizetype(end));
        m_images.insert(m_images.begin() + qsizetype(i), size_t(count), QImage());
        m_done.insert(m_done.begin() + qsizetype(i), size_t(count), false);
        for (size_t r = i; r < end; ++r)
            m_paths.insert(qsizetype(r), files[r].path);
        endInsertRows();
        for (size_t r = i; r < end; ++r)
            toMake.append(int(r));
        i = end;
    }
    indexRows();
    return toMake;
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

bool isThumbnailPicture(const QString &path)
{
    const int i = catalogue::knownExtensionIndex(catalogue::GetFileExt(path));
    return i <= catalogue::LastPictureIndex || (i >= 42 && i <= 44);
}

QStringList picturesAmong(const QStringList &paths)
{
    QStringList pictures;
    for (const QString &path : paths) {
        if (isThumbnailPicture(path))
            pictures.append(path);
    }
    return pictures;
}

} // namespace tarnby
