#include "core/search/FileSearch.h"

#include <QFile>

#include <sys/stat.h>

namespace tarnby::search {

QByteArray reportLines(const QByteArray &folder, const QByteArrayList &names, const char *lineEnd)
{
    QByteArray lines = "##" + folder + lineEnd;
    for (const QByteArray &name : names)
        lines += name + lineEnd;
    return lines;
}

QByteArray reportLines(const QString &folder, const QStringList &names)
{
    QByteArrayList encoded;
    encoded.reserve(names.size());
    for (const QString &name : names)
        encoded.append(QFile::encodeName(name));
    return reportLines(QFile::encodeName(folder), encoded);
}

bool appendReportLines(const QString &reportFile, const QString &folder, const QStringList &names, QString *error)
{
    // The report grows folder by folder while the walk runs, and the printing
    // window creates it empty before the walk: an append, not a replacement,
    // so no temporary file. One write per folder keeps a folder's block whole.
    QFile file(reportFile);
    const QByteArray lines = reportLines(folder, names);
    if (!file.open(QIODevice::WriteOnly | QIODevice::Append) || file.write(lines) != lines.size()) {
        if (error)
            *error = QStringLiteral("Cannot write the report file - ") + reportFile;
        return false;
    }
    return true;
}

FileSearch::FileSearch(SearchTree &tree, SearchFileList &list, SearchQuestions &questions)
    : m_tree(tree)
    , m_list(list)
    , m_questions(questions)
{
}

void FileSearch::start(const SearchOptions &options)
{
    m_options = options;
    if (m_options.pattern.isEmpty())
        m_options.pattern = QLatin1String(DefaultPattern);
    m_cancel.store(false, std::memory_order_relaxed);
    m_running = true;
    m_networkAnswer = false;
    m_examinedFolders.clear();
    m_networkDeclined = false;
    m_start = m_position;
    m_index = m_position;
    m_limit = m_options.initialCount + m_options.nextCount;
    m_examined = 0;
    m_foundCount = 0;
    m_foundFileCount = 0;
    m_foundNode = -1;
    m_foundFolder.clear();
    m_foundFiles.clear();
    m_lastFolder.clear();
    m_errorString.clear();
    m_list.setPattern(m_options.pattern);
}

bool SearchTree::folderIdentity(int node, FolderIdentity &identity)
{
    struct stat st;
    if (::stat(QFile::encodeName(nodePath(node)).constData(), &st) != 0)
        return false;
    identity = {quint64(st.st_dev), quint64(st.st_ino)};
    return true;
}

bool FileSearch::alreadyExamined(int node)
{
    // The list of examined folders goes by the folder's identity on disk, not
    // by its name and not by its path. Its purpose is that one folder is
    // examined once per walk: the home folder shown both at the top of the
    // tree and below "/", a folder mounted a second time somewhere else, a
    // symbolic link to a folder (and so a link that leads back up into a
    // loop). Two different folders that share a name are both examined. The
    // list has no upper bound: it holds every folder of the walk.
    FolderIdentity id;
    if (!m_tree.folderIdentity(node, id))
        return true; // vanished since the tree listed it: nothing to examine
    if (m_examinedFolders.contains(id))
        return true;
    m_examinedFolders.insert(id);
    return false;
}

bool FileSearch::onNetwork(int node, const QString &text) const
{
    if (text == QLatin1String(NetworkNodeText))
        return true;
    for (int up = m_tree.nodeParent(node); up >= 0; up = m_tree.nodeParent(up)) {
        if (m_tree.nodeText(up) == QLatin1String(NetworkNodeText))
            return true;
    }
    return false;
}

FileSearch::NodeResult FileSearch::examine(int node)
{
    const QString text = m_tree.nodeText(node);
    if (!m_networkAnswer && onNetwork(node, text)) {
        // Asked once a walk, at the network node or, for a walk that starts
        // below it, at the first network folder. No leaves every network
        // folder of this walk unexamined (and unexpanded).
        if (m_networkDeclined)
            return NodeResult::Next;
        if (!m_questions.searchNetwork()) {
            m_networkDeclined = true;
            return NodeResult::Next;
        }
        m_networkAnswer = true;
    }
    const QString path = m_tree.nodePath(node);
    if (path.isEmpty()) {
        m_tree.expand(node);
        return NodeResult::Next;
    }
    if (alreadyExamined(node))
        return NodeResult::Next;

    // Errors of the tree or the list (a folder that cannot be read, one that
    // has vanished, a network share that refuses access) pass the node over.
    m_tree.expand(node);
    m_lastFolder = path;
    if (!m_list.setFolder(path) || m_list.fileCount() == 0 || text.trimmed().isEmpty())
        return NodeResult::Next;

    if (!m_options.reportMode) {
        m_foundNode = node;
        m_foundFolder = path;
        m_foundFiles = m_list.fileNames();
        ++m_foundCount;
        m_foundFileCount += int(m_foundFiles.size());
        return NodeResult::Found;
    }
    const QStringList names = m_list.fileNames();
    ++m_foundCount;
    m_foundFileCount += int(names.size());
    return appendReport(path, names) ? NodeResult::Next : NodeResult::Failed;
}

bool FileSearch::appendReport(const QString &folder, const QStringList &names)
{
    if (m_sink) {
        if (m_sink(folder, names))
            return true;
        m_errorString = QStringLiteral("Cannot write the report");
        return false;
    }
    return appendReportLines(m_options.reportFile, folder, names, &m_errorString);
}

SearchOutcome FileSearch::finish(SearchOutcome outcome)
{
    m_running = false;
    m_outcome = outcome;
    return outcome;
}

SearchOutcome FileSearch::step()
{
    if (!m_running)
        return m_outcome;
    if (m_progress && m_index < m_tree.nodeCount())
        m_progress({m_index, m_examined, m_tree.nodePath(m_index)});

    const auto deadline = std::chrono::steady_clock::now() + m_budget;
    for (int slice = 0; slice < SliceSize; ++slice) {
        if (m_budget.count() > 0 && slice > 0 && std::chrono::steady_clock::now() >= deadline)
            break;
        if (m_index >= m_tree.nodeCount()) {
            // The whole tree has been walked (or the position pointed past a
            // tree that has since shrunk): the next search starts at the top.
            m_position = 0;
            return finish(SearchOutcome::EndOfTree);
        }
        if (m_cancel.load(std::memory_order_relaxed))
            return finish(SearchOutcome::Cancelled);

        const int node = m_index;
        const NodeResult result = examine(node);
        ++m_index;
        ++m_examined;
        if (result == NodeResult::Failed)
            return finish(SearchOutcome::ReportFailed);
        if (result == NodeResult::Found) {
            // Find Next goes on from the folder after this one; its own
            // subfolders have just joined the end of the list. After the
            // last node, the next walk meets the end of the tree at once.
            m_position = m_index;
            return finish(SearchOutcome::Found);
        }
        if (m_index >= m_tree.nodeCount()) {
            m_position = 0;
            return finish(SearchOutcome::EndOfTree);
        }
        // The limit counts the folders of this walk, so that a Find Next
        // deep in a large tree gets the same allowance as the first search.
        // Report mode never asks: it goes on to the end.
        if (!m_options.reportMode && m_examined >= m_limit) {
            if (!m_questions.continueSearch(m_options.pattern))
                return finish(SearchOutcome::Declined);
            m_limit += m_options.nextCount;
        }
    }
    return SearchOutcome::Running;
}

SearchOutcome FileSearch::run()
{
    SearchOutcome outcome = SearchOutcome::Running;
    while (outcome == SearchOutcome::Running)
        outcome = step();
    return outcome;
}

} // namespace tarnby::search
