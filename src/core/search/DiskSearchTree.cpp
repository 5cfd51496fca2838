#include "core/search/DiskSearchTree.h"

#include <QDir>
#include <QFile>

#include <algorithm>

#include <dirent.h>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnby::search {

namespace {

// The browser's order: by name without regard to case, then by the exact
// name, so that "a" and "A" keep a fixed order.
bool browserOrder(const QString &a, const QString &b)
{
    const int c = a.compare(b, Qt::CaseInsensitive);
    return c != 0 ? c < 0 : a < b;
}

// Sorts names (bytes) in the browser's order of their decoded texts; hands
// the decoded texts, in the same order, to decoded when given.
template<typename Names>
void sortNames(Names &names, QStringList *decoded)
{
    if (!decoded && names.size() < 2)
        return;
    std::vector<std::pair<QString, QByteArray>> named;
    named.reserve(size_t(names.size()));
    for (QByteArray &name : names)
        named.emplace_back(QFile::decodeName(name), std::move(name));
    std::sort(named.begin(), named.end(), [](const auto &a, const auto &b) { return browserOrder(a.first, b.first); });
    if (decoded)
        decoded->reserve(qsizetype(named.size()));
    for (size_t i = 0; i < named.size(); ++i) {
        names[i] = std::move(named[i].second);
        if (decoded)
            decoded->append(std::move(named[i].first));
    }
}

// How far ahead of the walk the reader may go, in nodes.
constexpr int ReadAheadWindow = 256;
// The reader starts this many nodes ahead of the walk, which reads the nodes
// in between itself: both read at the same time, and the walk finds the
// reader's work done when it gets there.
constexpr int ReadAheadLead = 16;

} // namespace

DiskSearchTree::DiskSearchTree(const QStringList &roots)
{
    for (const QString &root : roots) {
        Node node;
        node.path = QFile::encodeName(QDir::cleanPath(root));
        m_nodes.push_back(std::move(node));
    }
}

DiskSearchTree::~DiskSearchTree()
{
    if (!m_reader.joinable())
        return;
    {
        std::lock_guard lock(m_mutex);
        m_stop = true;
    }
    m_changed.notify_all();
    m_reader.join();
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

DiskSearchTree::FolderRead DiskSearchTree::readFolder(const QByteArray &folder, const NameMatcher &matcher)
{
    FolderRead read;
    struct stat st;
    const int fd = ::open(folder.constData(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (fd < 0) {
        // Unreadable, but still a folder of its own that the walk passes.
        if (::stat(folder.constData(), &st) == 0) {
            read.exists = true;
            read.identity = {quint64(st.st_dev), quint64(st.st_ino)};
        }
        return read;
    }
    if (::fstat(fd, &st) == 0) {
        read.exists = true;
        read.identity = {quint64(st.st_dev), quint64(st.st_ino)};
    }
    // The entries straight from the kernel into one buffer per thread: one
    // call brings a whole folder of a few hundred names, and nothing is
    // allocated for the names that do not match.
    thread_local std::vector<char> buffer(64 * 1024);
    for (;;) {
        const ssize_t filled = ::getdents64(fd, buffer.data(), buffer.size());
        if (filled <= 0)
            break;
        for (ssize_t at = 0; at < filled;) {
            const auto *d = reinterpret_cast<const dirent64 *>(buffer.data() + at);
            at += d->d_reclen;
            const char *name = d->d_name;
            if (name[0] == '.' && (name[1] == 0 || (name[1] == '.' && name[2] == 0)))
                continue;
            // The entry's type comes with the name; only symbolic links (and
            // filesystems that leave the type out) cost a stat. A link is
            // taken as what it points at, as the browser shows it.
            bool isFolder = d->d_type == DT_DIR;
            if (d->d_type == DT_LNK || d->d_type == DT_UNKNOWN)
                isFolder = ::fstatat(fd, name, &st, 0) == 0 && S_ISDIR(st.st_mode);
            const size_t length = std::char_traits<char>::length(name);
            if (isFolder)
                read.folders.emplace_back(name, qsizetype(length));
            else if (matcher.matches(name, length))
                read.fileBytes.append(QByteArray(name, qsizetype(length)));
        }
    }
    ::close(fd);
    sortNames(read.fileBytes, &read.files);
    sortNames(read.folders, nullptr);
    read.ok = true;
    return read;
}

const DiskSearchTree::FolderRead &DiskSearchTree::readingOf(int node)
{
    if (node == m_currentNode)
        return m_current;
    m_currentNode = node;
    std::unique_lock lock(m_mutex);
    m_walkAt = std::max(m_walkAt, node);
    // What the reader read for nodes the walk has passed will not be asked for.
    m_ahead.erase(m_ahead.begin(), m_ahead.lower_bound(node));
    m_changed.wait(lock, [&] { return m_reading != node; });
    if (auto it = m_ahead.find(node); it != m_ahead.end()) {
        m_current = std::move(it->second);
        m_ahead.erase(it);
        lock.unlock();
        m_changed.notify_all();
        return m_current;
    }
    // Not read ahead: read it here, and let the reader go on after it.
    if (m_nextAhead <= node)
        m_nextAhead = node + 1;
    const QByteArray path = m_nodes[size_t(node)].path;
    const std::shared_ptr<const NameMatcher> matcher = m_matcher;
    lock.unlock();
    m_changed.notify_all();
    m_current = readFolder(path, matcher ? *matcher : NameMatcher());
    return m_current;
}

void DiskSearchTree::readAhead()
{
    std::unique_lock lock(m_mutex);
    for (;;) {
        auto next = [&] { return std::max(m_nextAhead, m_walkAt + 1 + ReadAheadLead); };
        m_changed.wait(lock, [&] {
            return m_stop || (next() < int(m_nodes.size()) && next() <= m_walkAt + ReadAheadWindow);
        });
        if (m_stop)
            return;
        const int node = next();
        m_nextAhead = node + 1;
        m_reading = node;
        const QByteArray path = m_nodes[size_t(node)].path;
        const std::shared_ptr<const NameMatcher> matcher = m_matcher;
        const unsigned generation = m_generation;
        lock.unlock();
        FolderRead read = readFolder(path, *matcher);
        lock.lock();
        if (generation == m_generation && node > m_walkAt)
            m_ahead.emplace(node, std::move(read));
        m_reading = -1;
        m_changed.notify_all();
    }
}

bool DiskSearchTree::folderIdentity(int node, FolderIdentity &identity)
{
    if (node < 0 || node >= nodeCount())
        return false;
    const FolderRead &read = readingOf(node);
    identity = read.identity;
    return read.exists;
}

void DiskSearchTree::expand(int node)
{
    if (node < 0 || node >= nodeCount() || m_nodes[size_t(node)].listed)
        return;
    m_nodes[size_t(node)].listed = true;
    const FolderRead &read = readingOf(node);
    m_files = read.files;
    m_fileBytes = read.fileBytes;
    m_listedFolder = m_nodes[size_t(node)].path;
    m_listedOk = read.ok;
    if (read.folders.empty())
        return;
    const QByteArray base = m_listedFolder.endsWith('/') ? m_listedFolder : m_listedFolder + '/';
    {
        std::lock_guard lock(m_mutex);
        for (const QByteArray &name : read.folders) {
            Node child;
            child.path = base + name;
            child.nameStart = base.size();
            child.parent = node;
            m_nodes.push_back(std::move(child));
        }
    }
    m_changed.notify_all();
}

void DiskSearchTree::setPattern(const QString &pattern)
{
    {
        std::lock_guard lock(m_mutex);
        m_matcher = std::make_shared<const NameMatcher>(pattern);
        ++m_generation;
        m_ahead.clear();
        m_nextAhead = m_walkAt = 0;
    }
    m_currentNode = -1;
    m_listedFolder.clear();
    m_files.clear();
    m_fileBytes.clear();
    if (!m_reader.joinable())
        m_reader = std::thread([this] { readAhead(); });
    m_changed.notify_all();
}

bool DiskSearchTree::setFolder(const QString &folder)
{
    // The walk lists the folder it has just expanded. Its path came through
    // text, which loses bytes that are no valid text: the folder listed last
    // is taken by its decoded path as well.
    const QString clean = QDir::cleanPath(folder);
    if (!m_listedFolder.isEmpty() && QFile::decodeName(m_listedFolder) == clean)
        return m_listedOk;
    const QByteArray path = QFile::encodeName(clean);
    const FolderRead read = readFolder(path, m_matcher ? *m_matcher : NameMatcher());
    m_files = read.files;
    m_fileBytes = read.fileBytes;
    m_listedFolder = path;
    m_listedOk = read.ok;
    return read.ok;
}

} // namespace tarnby::search
