#include "core/browser/ThumbnailModel.h"

#include "core/browser/BrowserValues.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/Thumbnails.h"

#include <QFileInfo>
#include <QPainter>

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
