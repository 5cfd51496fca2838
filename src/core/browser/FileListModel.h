#pragma once

#include "core/catalogue/FileCatalogue.h"

#include <QAbstractTableModel>
#include <QFutureWatcher>
#include <QHash>
#include <QIcon>
#include <QSet>
#include <QString>

#include <atomic>
#include <memory>
#include <vector>

// The browser's file list: the subfolders and files of one folder, the files
// filtered by the pattern of the filter box. Listing and filtering are split so
// that a change of filter never touches the disk.
namespace tarnby {

struct FileEntry {
    QString name;
    QString extension;   // GetFileExt(name), kept for the filter and the type column
    qint64 size = 0;
    qint64 modified = 0; // milliseconds since the epoch, UTC
    bool folder = false;
};

struct FolderListing {
    QString folder;
    std::vector<FileEntry> entries; // folders first, each group by name, case-insensitively
    QString errorString;            // empty when the folder could be read
    bool cancelled = false;
};

// Lists a folder: one pass over the directory plus one stat per entry. Safe on
// any thread; stop (when given) is checked every entry, so a listing of a huge
// folder ends early when it is set. A symbolic link is listed as what it
// points at; a dangling one as a file.
FolderListing listFolder(const QString &folder, const std::atomic_bool *stop = nullptr);

// A ";"-separated pattern ready to test entries. Patterns made only of
// "*.EXT" parts (every filter box entry but the text one with its "*LOG")
// compare the entry's extension with a set; anything else falls back to the
// wildcard matcher. Both give the same answer for every name.
class EntryFilter
{
public:
    explicit EntryFilter(const QString &pattern = QStringLiteral("*.*"));
    bool matches(const FileEntry &entry) const;
    const QString &pattern() const { return m_wildcards.pattern(); }

private:
    catalogue::WildcardFilter m_wildcards;
    QSet<QString> m_extensions;
    bool m_byExtension = false;
    bool m_all = false;
};

class FileListModel : public QAbstractTableModel
{
    Q_OBJECT
public:
    enum Column { NameColumn, SizeColumn, DateColumn, TypeColumn, ColumnCount };
    enum Role { PathRole = Qt::UserRole + 1, FolderRole };
    enum class LoadMode { Asynchronous, Synchronous };

    explicit FileListModel(QObject *parent = nullptr);
    ~FileListModel() override;

    // Lists folder. Asynchronous: on the thread pool, the old rows stay until
    // the new listing is ready; a listing that a newer setFolder() overtakes is
    // dropped. Emits folderLoaded() when the rows are in.
    void setFolder(const QString &folder, LoadMode mode = LoadMode::Asynchronous);
    // Lists the current folder again.
    void refresh(LoadMode mode = LoadMode::Asynchronous);
    QString folder() const { return m_folder; }
    bool isLoading() const { return m_watcher != nullptr; }
    QString errorString() const { return m_errorString; }

    // Filters the files (folders always show) by a ";"-separated pattern.
    // No disk access: a few milliseconds for 10,000 entries.
    void setPattern(const QString &pattern);
    QString pattern() const { return m_filter.pattern(); }

    int fileCount() const { return m_fileCount; } // files shown, folders not counted
    QString filePath(int row) const;
    bool isFolder(int row) const;
    const FileEntry *entry(int row) const;
    int rowForName(const QString &name) const; // -1 when not shown
    QStringList shownFilePaths() const;        // the files shown, in order
    // The rows of the count longest names (in characters), longest first: a
    // view that gives every item one size measures these instead of all.
    QList<int> longestNameRows(int count) const;

    // Icons are the desktop theme's icons for each file type, looked up once
    // per extension; where the theme has none, the fallback icons serve.
    QVariant icon(const FileEntry &entry) const;
    void setFallbackIcons(const QIcon &file, const QIcon &folder);

    int rowCount(const QModelIndex &parent = {}) const override;
    int columnCount(const QModelIndex &parent = {}) const override;
    QVariant data(const QModelIndex &index, int role = Qt::DisplayRole) const override;
    QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
    Qt::ItemFlags flags(const QModelIndex &index) const override;
    QStringList mimeTypes() const override;
    QMimeData *mimeData(const QModelIndexList &indexes) const override;
    Qt::DropActions supportedDragActions() const override;

signals:
    void folderLoaded();

private:
    void applyListing(FolderListing listing);
    void rebuildRows();
    QString typeText(const FileEntry &entry) const;
    void cancelLoad();

    QString m_folder;
    QString m_errorString;
    std::vector<FileEntry> m_entries;
    std::vector<int> m_rows; // indices into m_entries of the shown entries
    int m_fileCount = 0;
    EntryFilter m_filter;
    QFutureWatcher<FolderListing> *m_watcher = nullptr;
    std::shared_ptr<std::atomic_bool> m_stop;
    mutable QHash<QString, QString> m_typeTexts;
    mutable QHash<QString, QIcon> m_icons;
    QIcon m_fileIcon;
    QIcon m_folderIcon;
};

} // namespace tarnby
