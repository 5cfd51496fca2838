#pragma once

#include "core/search/SearchSources.h"

namespace tarnby {
class FileListModel;
class FolderTreeModel;
}

// The browser's folder tree and file list as the search walk sees them. The
// walk then expands the tree the user sees and leaves the file list on the
// folder it stopped at. Both live on the UI thread, and so does the walk.
namespace tarnby::search {

class FolderTreeSearchTree : public SearchTree
{
public:
    explicit FolderTreeSearchTree(FolderTreeModel &model)
        : m_model(model)
    {
    }
    int nodeCount() const override;
    QString nodeText(int node) const override;
    QString nodePath(int node) const override;
    int nodeParent(int node) const override;
    void expand(int node) override;

private:
    FolderTreeModel &m_model;
};

class FileListSearchList : public SearchFileList
{
public:
    explicit FileListSearchList(FileListModel &model)
        : m_model(model)
    {
    }
    void setPattern(const QString &pattern) override;
    // Lists synchronously: the walk needs the answer before its next node.
    bool setFolder(const QString &folder) override;
    int fileCount() const override;
    QStringList fileNames() const override;

private:
    FileListModel &m_model;
};

} // namespace tarnby::search
