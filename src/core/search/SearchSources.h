#pragma once

#include <QHashFunctions>
#include <QString>
#include <QStringList>

// What the search walk needs of the folder tree, of the file list and of the
// person who started it. The browser's own models serve the window (see
// BrowserSearchSources.h); DiskSearchTree serves the command line and the
// organizer's batch add, where no tree is on screen.
namespace tarnby::search {

// A folder as the filesystem knows it, whatever the path it was reached by.
struct FolderIdentity {
    quint64 device = 0;
    quint64 inode = 0;
    bool operator==(const FolderIdentity &other) const = default;
};

inline size_t qHash(const FolderIdentity &id, size_t seed = 0)
{
    return ::qHash(std::pair<quint64, quint64>(id.device, id.inode), seed);
}

// The folder tree as a list of nodes that grows while it is walked: index 0 is
// the first node, and expanding a node appends its subfolders at the end.
class SearchTree
{
public:
    virtual ~SearchTree() = default;
    virtual int nodeCount() const = 0;
    // The text the tree shows for the node ("Network Neighborhood" for the
    // network node).
    virtual QString nodeText(int node) const = 0;
    // The node's folder; empty for a node that is no folder (the network node).
    virtual QString nodePath(int node) const = 0;
    // The node above node, or -1 for a node at the top.
    virtual int nodeParent(int node) const = 0;
    // Lists the node's subfolders into the node list (once; later calls do
    // nothing). A folder that cannot be read gets no children; never throws.
    virtual void expand(int node) = 0;
    // The identity of the node's folder (symbolic links followed); false when
    // it has none (gone, or no folder). By default from the node's path.
    virtual bool folderIdentity(int node, FolderIdentity &identity);
};

// The file list: one folder at a time, its files filtered by a pattern.
class SearchFileList
{
public:
    virtual ~SearchFileList() = default;
    // A ";"-separated list of wildcards, matched without regard to case.
    virtual void setPattern(const QString &pattern) = 0;
    // Lists folder synchronously. Returns false when it cannot be read (gone,
    // no permission, a network share that refuses access); the list is then
    // empty.
    virtual bool setFolder(const QString &folder) = 0;
    // The files of the current folder that match the pattern, in list order.
    virtual int fileCount() const = 0;
    virtual QStringList fileNames() const = 0;
};

// The questions the walk asks on its way. The window answers them through
// its message boxes; the command line and the tests answer directly.
class SearchQuestions
{
public:
    virtual ~SearchQuestions() = default;
    // "Do you want to continue the Search for - " + pattern + " ?"
    virtual bool continueSearch(const QString &pattern) = 0;
    // "Do You want to Search the Network?"
    virtual bool searchNetwork() = 0;
};

// Answers every question the same way, without asking anyone.
class FixedAnswers : public SearchQuestions
{
public:
    FixedAnswers(bool continueAnswer, bool networkAnswer)
        : m_continue(continueAnswer)
        , m_network(networkAnswer)
    {
    }
    bool continueSearch(const QString &) override { return m_continue; }
    bool searchNetwork() override { return m_network; }

private:
    bool m_continue;
    bool m_network;
};

} // namespace tarnby::search
