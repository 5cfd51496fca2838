#pragma once

#include "core/search/NameMatcher.h"
#include "core/search/SearchSources.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

// A folder tree and file list read straight from the disk, for walks that
// show nothing on the way: the command line's find, the organizer's batch add.
// Its roots are the folders it is given, in their order; expanding a node
// appends its subfolders sorted as the browser sorts them (by name without
// regard to case), so the walk meets folders in the browser's order.
//
// One pass over each folder serves both sides: expand() reads the folder once
// and keeps the names of its matching files, which the setFolder() of the same
// folder that follows in the walk then uses without reading it again. Names are
// matched as bytes; only matching names are decoded.
//
// Once a pattern is set, a second thread reads the folders the walk will take
// next (up to a few hundred nodes ahead) while the walk deals with the current
// one, so that a walk keeps two cores busy. What the walk sees, and in which
// order, does not depend on it: a folder the reader has not got to yet is read
// by the walk itself.
//
// Use it from one thread; the reader is its own business.
namespace tarnby::search {

class DiskSearchTree : public SearchTree, public SearchFileList
{
public:
    explicit DiskSearchTree(const QStringList &roots);
    ~DiskSearchTree() override;
    DiskSearchTree(const DiskSearchTree &) = delete;
    DiskSearchTree &operator=(const DiskSearchTree &) = delete;

    int nodeCount() const override { return int(m_nodes.size()); }
    QString nodeText(int node) const override;
    QString nodePath(int node) const override;
    int nodeParent(int node) const override;
    void expand(int node) override;
    bool folderIdentity(int node, FolderIdentity &identity) override;

    void setPattern(const QString &pattern) override;
    bool setFolder(const QString &folder) override;
    int fileCount() const override { return int(m_files.size()); }
    QStringList fileNames() const override { return m_files; }

    // The folder listed last and its matching names as the filesystem holds
    // them, bytes that are no valid text included (the decoded names above
    // cannot give them back).
    QByteArray listedFolder() const { return m_listedFolder; }
    QByteArrayList listedFileNames() const { return m_fileBytes; }

private:
    struct Node {
        QByteArray path;
        qsizetype nameStart = 0; // where the node's text begins in path
        int parent = -1;
        bool listed = false;
    };
    // One reading of a folder: what it is on disk, its subfolders and its
    // matching files, both in the browser's order.
    struct FolderRead {
        bool ok = false;       // listed
        bool exists = false;   // identity holds something
        FolderIdentity identity;
        std::vector<QByteArray> folders;
        QStringList files;
        QByteArrayList fileBytes; // the same names, undecoded
    };
    static FolderRead readFolder(const QByteArray &folder, const NameMatcher &matcher);
    // The reading of node, from the reader or made now; kept until the walk
    // asks for another node.
    const FolderRead &readingOf(int node);
    void readAhead();

    std::vector<Node> m_nodes; // grown under m_mutex: the reader copies paths
    std::shared_ptr<const NameMatcher> m_matcher;
    QStringList m_files;
    QByteArrayList m_fileBytes;
    QByteArray m_listedFolder; // the folder m_files belongs to
    bool m_listedOk = false;
    int m_currentNode = -1;
    FolderRead m_current;

    // Shared with the reader.
    std::mutex m_mutex;
    std::condition_variable m_changed;
    std::map<int, FolderRead> m_ahead; // read, not yet taken
    int m_nextAhead = 0;    // the next node the reader takes
    int m_reading = -1;     // the node the reader is reading
    int m_walkAt = 0;       // the node the walk last asked for
    unsigned m_generation = 0; // a new pattern makes earlier readings stale
    bool m_stop = false;
    std::thread m_reader;
};

} // namespace tarnby::search
