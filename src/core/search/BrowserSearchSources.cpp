#include "core/search/BrowserSearchSources.h"

#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"

namespace tarnby::search {

int FolderTreeSearchTree::nodeCount() const
{
    return m_model.nodeCount();
}

QString FolderTreeSearchTree::nodeText(int node) const
{
    return m_model.nodeText(node);
}

QString FolderTreeSearchTree::nodePath(int node) const
{
    return m_model.nodePath(node);
}

int FolderTreeSearchTree::nodeParent(int node) const
{
    return m_model.nodeParent(node);
}

void FolderTreeSearchTree::expand(int node)
{
    m_model.expand(node);
}

void FileListSearchList::setPattern(const QString &pattern)
{
    m_model.setPattern(pattern);
}

bool FileListSearchList::setFolder(const QString &folder)
{
    m_model.setFolder(folder, FileListModel::LoadMode::Synchronous);
    return m_model.errorString().isEmpty();
}

int FileListSearchList::fileCount() const
{
    return m_model.fileCount();
}

QStringList FileListSearchList::fileNames() const
{
    QStringList names;
    for (int row = 0; row < m_model.rowCount(); ++row) {
        const FileEntry *entry = m_model.entry(row);
        if (entry && !entry->folder)
            names.append(entry->name);
    }
    return names;
}

} // namespace tarnby::search
