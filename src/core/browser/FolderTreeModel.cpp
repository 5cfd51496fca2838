#include "core/browser/FolderTreeModel.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QMimeData>

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarnby {

namespace {
template<typename Node, typename Kind>
Node makeNode(const QString &text, const QString &path, Kind kind, int parent = -1)
{
    Node node;
    node.text = text;
    node.path = path;
    node.kind = kind;
    node.parent = parent;
    return node;
}
} // namespace

FolderTreeModel::FolderTreeModel(QObject *parent)
    : QAbstractItemModel(parent)
{
}

int FolderTreeModel::addNode(Node node)
{
    const int index = int(m_nodes.size());
    if (node.parent < 0) {
        node.row = int(m_roots.size());
        m_roots.push_back(index);
    } else {
        Node &parent = m_nodes[size_t(node.parent)];
        node.row = int(parent.children.size());
        parent.children.push_back(index);
    }
    m_nodes.push_back(std::move(node));
    return index;
}

void FolderTreeModel::setRoots(const FolderRoots &roots)
{
    beginResetModel();
    m_nodes.clear();
    m_roots.clear();
    for (const QString &volume : roots.volumes)
        addNode(makeNode<Node>(volume, volume, NodeKind::Volume));
    if (!roots.home.isEmpty())
        addNode(makeNode<Node>(QLatin1String(HomeNodeText), roots.home, NodeKind::Home));
    Node network = makeNode<Node>(QLatin1String(NetworkNodeText), QString(), NodeKind::Network);
    network.listed = true;
    const int networkNode = addNode(std::move(network));
    m_networkNode = networkNode;
    for (const MountEntry &mount : roots.network) {
        const QString host = networkHost(mount);
        const QString text = host.isEmpty() ? mount.mountPoint
                                            : host + QLatin1String(" (") + mount.mountPoint + QLatin1Char(')');
        addNode(makeNode<Node>(text, mount.mountPoint, NodeKind::NetworkMount, networkNode));
    }
    endResetModel();
}

QString FolderTreeModel::nodeText(int node) const
{
    return node >= 0 && node < nodeCount() ? m_nodes[size_t(node)].text : QString();
}

QString FolderTreeModel::nodePath(int node) const
{
    return node >= 0 && node < nodeCount() ? m_nodes[size_t(node)].path : QString();
}

FolderTreeModel::NodeKind FolderTreeModel::nodeKind(int node) const
{
    return node >= 0 && node < nodeCount() ? m_nodes[size_t(node)].kind : NodeKind::Folder;
}

int FolderTreeModel::nodeParent(int node) const
{
    return node >= 0 && node < nodeCount() ? m_nodes[size_t(node)].parent : -1;
}

QList<int> FolderTreeModel::nodeChildren(int node) const
{
    if (node < 0 || node >= nodeCount())
        return {};
    const std::vector<int> &children = m_nodes[size_t(node)].children;
    return QList<int>(children.begin(), children.end());
}

bool FolderTreeModel::isListed(int node) const
{
    return node >= 0 && node < nodeCount() && m_nodes[size_t(node)].listed;
}

QStringList FolderTreeModel::listSubfolders(int node) const
{
    // Names and types only: the directory entry says "folder" for everything
    // but symbolic links (and filesystems that do not fill in the type), so
    // only those are stat'ed.
    QStringList names;
    DIR *dir = ::opendir(QFile::encodeName(m_nodes[size_t(node)].path).constData());
    if (!dir)
        return names;
    const int fd = ::dirfd(dir);
    while (const dirent *d = ::readdir(dir)) {
        const char *name = d->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        bool folder = d->d_type == DT_DIR;
        if (d->d_type == DT_LNK || d->d_type == DT_UNKNOWN) {
            struct stat st;
            folder = ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode);
        }
        if (folder)
            names.append(QFile::decodeName(name));
    }
    ::closedir(dir);
    std::sort(names.begin(), names.end(), [](const QString &a, const QString &b) {
        const int c = a.compare(b, Qt::CaseInsensitive);
        return c != 0 ? c < 0 : a < b;
    });
    return names;
}

bool FolderTreeModel::leadsToAncestor(int node, const QString &canonical) const
{
    for (int up = m_nodes[size_t(node)].parent; up >= 0; up = m_nodes[size_t(up)].parent) {
        if (m_nodes[size_t(up)].canonicalPath == canonical)
            return true;
    }
    return false;
}

int FolderTreeModel::expand(int node)
{
    if (node < 0 || node >= nodeCount())
        return 0;
    Node &n = m_nodes[size_t(node)];
    if (n.listed || n.gone || n.path.isEmpty())
        return 0;
    n.listed = true;
    n.canonicalPath = QFileInfo(n.path).canonicalFilePath();
    // A vanished folder, or one reached again through a symbolic link, is a
    // leaf: listing it would let an endless chain of nodes grow.
    if (n.canonicalPath.isEmpty() || leadsToAncestor(node, n.canonicalPath)) {
        emit dataChanged(indexForNode(node), indexForNode(node));
        return 0;
    }
    const QString base = n.path.endsWith(QLatin1Char('/')) ? n.path : n.path + QLatin1Char('/');
    const QStringList names = listSubfolders(node);
    if (names.isEmpty()) {
        // The view asked for children it now knows are not there.
        emit dataChanged(indexForNode(node), indexForNode(node));
        return 0;
    }
    const QModelIndex parentIndex = indexForNode(node);
    beginInsertRows(parentIndex, 0, int(names.size()) - 1);
    for (const QString &name : names) {
        addNode(makeNode<Node>(name, base + name, NodeKind::Folder, node));
    }
    endInsertRows();
    return int(names.size());
}

void FolderTreeModel::renumberRows(int parent)
{
    const std::vector<int> &siblings = parent < 0 ? m_roots : m_nodes[size_t(parent)].children;
    for (size_t i = 0; i < siblings.size(); ++i)
        m_nodes[size_t(siblings[i])].row = int(i);
}

void FolderTreeModel::refresh(int node)
{
    if (node < 0 || node >= nodeCount())
        return;
    Node &n = m_nodes[size_t(node)];
    if (!n.listed || n.path.isEmpty())
        return;
    if (n.canonicalPath.isEmpty() || leadsToAncestor(node, n.canonicalPath)) {
        // It may exist again (a remounted drive): list it from scratch.
        n.listed = false;
        expand(node);
        return;
    }
    const QStringList names = listSubfolders(node);
    const QModelIndex parentIndex = indexForNode(node);

    // Drop the children that are gone, from the last row up.
    for (int row = int(m_nodes[size_t(node)].children.size()) - 1; row >= 0; --row) {
        const int child = m_nodes[size_t(node)].children[size_t(row)];
        if (names.contains(m_nodes[size_t(child)].text))
            continue;
        beginRemoveRows(parentIndex, row, row);
        m_nodes[size_t(child)].gone = true;
        auto &children = m_nodes[size_t(node)].children;
        children.erase(children.begin() + row);
        renumberRows(node);
        endRemoveRows();
    }

    // Append the new ones at the end of their parent: their node indices are
    // new anyway, and rows that stay where they were keep the view calm.
    QStringList known;
    for (int child : m_nodes[size_t(node)].children)
        known.append(m_nodes[size_t(child)].text);
    QStringList added;
    for (const QString &name : names) {
        if (!known.contains(name))
            added.append(name);
    }
    if (added.isEmpty())
        return;
    const int first = int(m_nodes[size_t(node)].children.size());
    const QString base = n.path.endsWith(QLatin1Char('/')) ? n.path : n.path + QLatin1Char('/');
    beginInsertRows(parentIndex, first, first + int(added.size()) - 1);
    for (const QString &name : added) {
        addNode(makeNode<Node>(name, base + name, NodeKind::Folder, node));
    }
    endInsertRows();
}

int FolderTreeModel::findPath(const QString &path) const
{
    const QString clean = QDir::cleanPath(path);
    for (int i = 0; i < nodeCount(); ++i) {
        const Node &n = m_nodes[size_t(i)];
        if (!n.gone && n.path == clean && (n.kind != NodeKind::Folder || !m_nodes[size_t(n.parent)].gone))
            return i;
    }
    return -1;
}

int FolderTreeModel::revealPath(const QString &path)
{
    const QString clean = QDir::cleanPath(QDir::isAbsolutePath(path) ? path : QDir::current().absoluteFilePath(path));
    if (!QFileInfo(clean).isDir())
        return -1;

    // The root with the longest path that holds clean (home before "/").
    int best = -1;
    qsizetype bestLength = -1;
    for (int i = 0; i < nodeCount(); ++i) {
        const Node &n = m_nodes[size_t(i)];
        if (n.kind == NodeKind::Folder || n.path.isEmpty())
            continue;
        const bool holds = clean == n.path || n.path == QLatin1String("/")
            || clean.startsWith(n.path + QLatin1Char('/'));
        if (holds && n.path.size() > bestLength) {
            best = i;
            bestLength = n.path.size();
        }
    }
    if (best < 0)
        return -1;

    const QString rest = clean.mid(bestLength).section(QLatin1Char('/'), 0, -1, QString::SectionSkipEmpty);
    int node = best;
    for (const QString &part : rest.split(QLatin1Char('/'), Qt::SkipEmptyParts)) {
        expand(node);
        auto findChild = [&]() {
            for (int child : m_nodes[size_t(node)].children) {
                if (m_nodes[size_t(child)].text == part)
                    return child;
            }
            return -1;
        };
        int next = findChild();
        if (next < 0) {
            refresh(node); // made since the folder was listed
            next = findChild();
        }
        if (next < 0)
            return -1;
        node = next;
    }
    return node;
}

QModelIndex FolderTreeModel::indexForNode(int node) const
{
    if (node < 0 || node >= nodeCount() || m_nodes[size_t(node)].gone)
        return {};
    return createIndex(m_nodes[size_t(node)].row, 0, quintptr(node));
}

int FolderTreeModel::nodeForIndex(const QModelIndex &index) const
{
    if (!index.isValid() || index.model() != this)
        return -1;
    return int(index.internalId());
}

QModelIndex FolderTreeModel::index(int row, int column, const QModelIndex &parent) const
{
    if (column != 0 || row < 0)
        return {};
    const int p = nodeForIndex(parent);
    const std::vector<int> &siblings = p < 0 ? m_roots : m_nodes[size_t(p)].children;
    if (row >= int(siblings.size()))
        return {};
    return createIndex(row, 0, quintptr(siblings[size_t(row)]));
}

QModelIndex FolderTreeModel::parent(const QModelIndex &child) const
{
    const int node = nodeForIndex(child);
    if (node < 0)
        return {};
    return indexForNode(m_nodes[size_t(node)].parent);
}

int FolderTreeModel::rowCount(const QModelIndex &parent) const
{
    if (parent.column() > 0)
        return 0;
    const int p = nodeForIndex(parent);
    return p < 0 ? int(m_roots.size()) : int(m_nodes[size_t(p)].children.size());
}

int FolderTreeModel::columnCount(const QModelIndex &) const
{
    return 1;
}

QVariant FolderTreeModel::data(const QModelIndex &index, int role) const
{
    const int node = nodeForIndex(index);
    if (node < 0)
        return {};
    const Node &n = m_nodes[size_t(node)];
    switch (role) {
    case Qt::DisplayRole:
        return n.text;
    case Qt::ToolTipRole:
        return n.path.isEmpty() ? n.text : n.path;
    case PathRole:
        return n.path;
    case NodeRole:
        return node;
    default:
        return {};
    }
}

bool FolderTreeModel::hasChildren(const QModelIndex &parent) const
{
    const int node = nodeForIndex(parent);
    if (node < 0)
        return !m_roots.empty();
    const Node &n = m_nodes[size_t(node)];
    // Until a folder is listed we do not know; the view asks through
    // fetchMore when the user opens it.
    return n.listed ? !n.children.empty() : !n.path.isEmpty();
}

bool FolderTreeModel::canFetchMore(const QModelIndex &parent) const
{
    const int node = nodeForIndex(parent);
    return node >= 0 && !m_nodes[size_t(node)].listed && !m_nodes[size_t(node)].path.isEmpty();
}

void FolderTreeModel::fetchMore(const QModelIndex &parent)
{
    // Views ask from inside their own event handling (painting, another
    // insertion): the listing runs right after, not nested in it.
    const int node = nodeForIndex(parent);
    QMetaObject::invokeMethod(this, [this, node] { expand(node); }, Qt::QueuedConnection);
}

Qt::ItemFlags FolderTreeModel::flags(const QModelIndex &index) const
{
    const int node = nodeForIndex(index);
    if (node < 0)
        return Qt::NoItemFlags;
    Qt::ItemFlags f = Qt::ItemIsEnabled | Qt::ItemIsSelectable;
    if (!m_nodes[size_t(node)].path.isEmpty())
        f |= Qt::ItemIsDropEnabled;
    return f;
}

QStringList FolderTreeModel::mimeTypes() const
{
    return {QStringLiteral("text/uri-list")};
}

Qt::DropActions FolderTreeModel::supportedDropActions() const
{
    return Qt::MoveAction | Qt::CopyAction;
}

bool FolderTreeModel::canDropMimeData(const QMimeData *data, Qt::DropAction action, int, int,
                                      const QModelIndex &parent) const
{
    if (!data || !data->hasUrls() || (action != Qt::MoveAction && action != Qt::CopyAction))
        return false;
    const int node = nodeForIndex(parent);
    if (node < 0 || m_nodes[size_t(node)].path.isEmpty())
        return false;
    const QList<QUrl> urls = data->urls();
    return std::any_of(urls.begin(), urls.end(), [](const QUrl &url) { return url.isLocalFile(); });
}

bool FolderTreeModel::dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                                   const QModelIndex &parent)
{
    // A drop between two rows lands on their parent folder.
    if (!canDropMimeData(data, action, row, column, parent))
        return false;
    QStringList paths;
    for (const QUrl &url : data->urls()) {
        if (url.isLocalFile())
            paths.append(url.toLocalFile());
    }
    emit dropRequested(paths, m_nodes[size_t(nodeForIndex(parent))].path, action);
    return true;
}

} // namespace tarnby
