#pragma once

#include "core/browser/MountTable.h"

#include <QAbstractItemModel>
#include <QList>
#include <QString>
#include <QUrl>

#include <vector>

// The browser's folder tree. Its nodes live in one list that only grows: the
// roots first (the mounted filesystems, the home folder and the "Network
// Neighborhood" node with the network mounts below it), then the subfolders of
// each folder in the order in which folders are expanded. A node keeps its
// index for the life of the model, so the file search can walk the tree by
// index while expanding it.
//
// Lives on the UI thread. expand() lists one folder synchronously: it reads
// names and types only (no stat of each entry), which keeps a folder of
// 100,000 entries well under a second on a local disk.
namespace tarnby {

class FolderTreeModel : public QAbstractItemModel
{
    Q_OBJECT
public:
    static constexpr const char *NetworkNodeText = "Network Neighborhood";
    static constexpr const char *HomeNodeText = "Home";

    enum class NodeKind { Volume, Home, Network, NetworkMount, Folder };
    enum Role { PathRole = Qt::UserRole + 1, NodeRole };

    explicit FolderTreeModel(QObject *parent = nullptr);

    // Replaces every node by the given roots; the network node is always
    // present, with one child per network mount.
    void setRoots(const FolderRoots &roots);

    // ---- the node list -------------------------------------------------
    int nodeCount() const { return int(m_nodes.size()); }
    QString nodeText(int node) const;
    QString nodePath(int node) const;    // empty for the network node
    NodeKind nodeKind(int node) const;
    int nodeParent(int node) const;      // -1 for a root
    QList<int> nodeChildren(int node) const;
    bool isListed(int node) const;       // expand() has run on it
    int networkNode() const { return m_networkNode; }
    // Lists the node's subfolders once (hidden ones included) and appends them
    // to the node list; returns how many were added. A folder that cannot be
    // read, has vanished, or leads back to one of its own ancestors through a
    // symbolic link gets no children.
    int expand(int node);
    // Lists the node again: new subfolders are appended, vanished ones leave
    // the tree (their node indices stay taken but are no longer shown).
    void refresh(int node);
    // The shown node whose path is path, or -1. Does not list anything.
    int findPath(const QString &path) const;
    // Expands the tree along path from the root that holds it and returns the
    // node of path itself, or -1 when path is not a folder below any root.
    int revealPath(const QString &path);

    QModelIndex indexForNode(int node) const;
    int nodeForIndex(const QModelIndex &index) const; // -1 for the invisible root

    // ---- QAbstractItemModel ----------------------------------------------
    QModelIndex index(int row, int column, const QModelIndex &parent = {}) const override;
    QModelIndex parent(const QModelIndex &child) const override;
    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    bool hasChildren(const QModelIndex &parent = {}) const override;
    bool canFetchMore(const QModelIndex &parent) const override;
    void fetchMore(const QModelIndex &parent) override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;

    // Files dropped on a folder node are not moved by the model: it emits
    // dropRequested and the window carries out the move or copy.
    QStringList mimeTypes() const override;
    Qt::DropActions supportedDropActions() const override;
    bool canDropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                         const QModelIndex &parent) const override;
    bool dropMimeData(const QMimeData *data, Qt::DropAction action, int row, int column,
                      const QModelIndex &parent) override;

signals:
    void dropRequested(const QStringList &paths, const QString &targetFolder, Qt::DropAction action);

private:
    struct Node {
        QString text;
        QString path;
        QString canonicalPath; // filled when listed, for the loop check
        NodeKind kind = NodeKind::Folder;
        int parent = -1;
        int row = 0;
        std::vector<int> children;
        bool listed = false;
        bool gone = false;
    };

    int addNode(Node node);
    QStringList listSubfolders(int node) const;
    bool leadsToAncestor(int node, const QString &canonical) const;
    void renumberRows(int parent);

    std::vector<Node> m_nodes;
    std::vector<int> m_roots;
    int m_networkNode = -1;
};

} // namespace tarnby
