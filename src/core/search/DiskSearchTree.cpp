#include "core/search/DiskSearchTree.h"

#include <QDir>
#include <QFile>

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>

namespace tarnby::search {

namespace {

// The browser's order: by name without regard to case, then by the exact
// name, so that "a" and "A" keep a fixed order.
bool browserOrder(const QString &a, const QString &b)
{
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : a < b;
}

} // namespace

DiskSearchTree::DiskSearchTree(const QStringList &roots)
{
    for (const QString &root : roots) {
        Node node;
        node.path = QFile::encodeName(QDir::cleanPath(root));
        m_nodes.push_back(std::move(node));
    }
}

QString DiskSearchTree::nodeText(int node) const
{
    if (node < 0 || node >= nodeCount())
        return {};
    const Node &n = m_nodes[size_t(node)];
    return QFile::decodeName(n.path.mid(n.nameStart));
}

QString DiskSearchTree::nodePath(int node) const
{
    return node >= 0 && node < nodeCount() ? QFile::decodeName(m_nodes[size_t(node)].path) : QString();
}

int DiskSearchTree::nodeParent(int node) const
{
    return node >= 0 && node < nodeCount() ? m_nodes[size_t(node)].parent : -1;
}

bool DiskSearchTree::readFolder(const QByteArray &folder, std::vector<QByteArray> *folders)
{
    m_files.clear();
    m_listedFolder = folder;
    m_listedOk = false;
    DIR *dir = ::opendir(folder.constData());
    if (!dir)
        return false;
    const int fd = ::dirfd(dir);
    while (const dirent *d = ::readdir(dir)) {
        const char *name = d->d_name;
        if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
            continue;
        // The entry's type comes with the name; only symbolic links (and
        // filesystems that leave the type out) cost a stat. A link is taken
        // as what it points at, as the browser shows it.
        bool isFolder = d->d_type == DT_DIR;
        if (d->d_type == DT_LNK || d->d_type == DT_UNKNOWN) {
            struct stat st;
            isFolder = ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode);
        }
        if (isFolder) {
            if (folders)
                folders->emplace_back(name);
            continue;
        }
        const size_t length = std::char_traits<char>::length(name);
        if (m_matcher.matches(name, length))
            m_files.append(QFile::decodeName(QByteArray(name, qsizetype(length))));
    }
    ::closedir(dir);
    std::sort(m_files.begin(), m_files.end(), browserOrder);
    m_listedOk = true;
    return true;
}

void DiskSearchTree::expand(int node)
{
    if (node < 0 || node >= nodeCount() || m_nodes[size_t(node)].listed)
        return;
    m_nodes[size_t(node)].listed = true;
    const QByteArray folder = m_nodes[size_t(node)].path;
    std::vector<QByteArray> subfolders;
    if (!readFolder(folder, &subfolders))
        return;
    std::vector<QString> names;
    names.reserve(subfolders.size());
    for (const QByteArray &name : subfolders)
        names.push_back(QFile::decodeName(name));
    std::vector<size_t> order(names.size());
    for (size_t i = 0; i < order.size(); ++i)
        order[i] = i;
    std::sort(order.begin(), order.end(), [&](size_t a, size_t b) { return browserOrder(names[a], names[b]); });
    const QByteArray base = folder.endsWith('/') ? folder : folder + '/';
    for (size_t i : order) {
        Node child;
        child.path = base + subfolders[i];
        child.nameStart = base.size();
        child.parent = node;
        m_nodes.push_back(std::move(child));
    }
}

void DiskSearchTree::setPattern(const QString &pattern)
{
    m_matcher = NameMatcher(pattern);
    m_listedFolder.clear();
    m_files.clear();
}

bool DiskSearchTree::setFolder(const QString &folder)
{
    const QByteArray path = QFile::encodeName(QDir::cleanPath(folder));
    if (path == m_listedFolder && !path.isEmpty())
        return m_listedOk;
    return readFolder(path, nullptr);
}

} // namespace tarnby::search
