#pragma once

#include "core/search/NameMatcher.h"
#include "core/search/SearchSources.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

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
// Not thread-safe; use it from one thread.
namespace tarnby::search {

class DiskSearchTree : public SearchTree, public SearchFileList
{
public:
    explicit DiskSearchTree(const QStringList &roots);

    int nodeCount() const override { return int(m_nodes.size()); }
    QString nodeText(int node) const override;
    QString nodePath(int node) const override;
    int nodeParent(int node) const override;
    void expand(int node) override;

    void setPattern(const QString &pattern) override;
    bool setFolder(const QString &folder) override;
    int fileCount() const override { return int(m_files.size()); }
    QStringList fileNames() const override { return m_files; }

private:
    struct Node {
        QByteArray path;
        qsizetype nameStart = 0; // where the node's text begins in path
        int parent = -1;
        bool listed = false;
    };
    // Reads folder: its subfolders into folders (when given) and its matching
    // files into m_files. False when the folder cannot be read.
    bool readFolder(const QByteArray &folder, std::vector<QByteArray> *folders);

    std::vector<Node> m_nodes;
    NameMatcher m_matcher;
    QStringList m_files;
    QByteArray m_listedFolder; // the folder m_files belongs to
    bool m_listedOk = false;
};

} // namespace tarnby::search
