#pragma once

#include "core/search/SearchSources.h"

#include <QSet>
#include <QString>
#include <QStringList>

#include <atomic>
#include <chrono>
#include <functional>
#include <utility>

// The search walk: takes the folder tree's nodes one by one from the saved
// position, expands each so that its subfolders join the walk, lists its
// files by the pattern and stops at the first folder that holds a match (or,
// in report mode, records every such folder and goes on to the end).
//
// Runs on the thread that owns the tree and the file list, in slices: step()
// examines at most SliceSize nodes and returns, so that a window can let its
// events run between slices; run() loops over the slices for callers without
// an event loop to keep alive. cancel() may be called from any thread; the
// walk stops at the next node.
namespace tarnby::search {

inline constexpr int SliceSize = 250;
inline constexpr int DefaultInitialCount = 5000;
inline constexpr int DefaultNextCount = 500;
inline constexpr const char *NetworkNodeText = "Network Neighborhood";
inline constexpr const char *DefaultPattern = "*.BMP";
// The longest a window lets one slice run before its events get a turn. The
// slice, the repaint that follows and a busy machine's delays together stay
// under the 50 ms a person notices.
inline constexpr std::chrono::milliseconds WindowSliceBudget{20};

struct SearchOptions {
    QString pattern;                       // empty: "*.BMP"
    int initialCount = DefaultInitialCount; // folders before the first question ...
    int nextCount = DefaultNextCount;       // ... and between later ones
    // Report mode: every folder with matches is appended to reportFile and
    // the walk goes on to the end without asking to continue.
    bool reportMode = false;
    QString reportFile;
};

enum class SearchOutcome {
    Running,   // step() returned at the end of a slice; call it again
    Found,     // stopped at a folder with matches (never in report mode)
    EndOfTree, // the last node was passed; the position is back at 0
    Declined,  // the continue question was answered No
    Cancelled, // cancel() was called
    ReportFailed, // the report file could not be written; see errorString()
};

struct SearchProgress {
    int node = 0;        // the node being examined
    int examined = 0;    // nodes taken in this walk
    QString folder;      // its folder
};

class FileSearch
{
public:
    FileSearch(SearchTree &tree, SearchFileList &list, SearchQuestions &questions);

    // The saved search position: where the next walk starts. Survives walks;
    // only the end of the tree puts it back to 0.
    int position() const { return m_position; }
    void setPosition(int node) { m_position = node; }

    // Called once per slice with the node being examined (not per node: a
    // window repaints its progress text at most that often).
    void setProgressCallback(std::function<void(const SearchProgress &)> callback)
    {
        m_progress = std::move(callback);
    }
    // In report mode, hands each found folder and its matching names to sink
    // instead of appending them to the report file. A sink that returns false
    // ends the walk with ReportFailed.
    using ReportSink = std::function<bool(const QString &folder, const QStringList &names)>;
    void setReportSink(ReportSink sink) { m_sink = std::move(sink); }

    // Starts a walk from the saved position. Does not examine anything yet.
    void start(const SearchOptions &options);
    // A slice also ends, before its SliceSize nodes, once it has run for
    // budget (0, the default: no limit). A window sets one so that a few
    // huge folders in a row cannot hold its events off for long.
    void setSliceBudget(std::chrono::milliseconds budget) { m_budget = budget; }
    // Examines up to SliceSize nodes. Running means "call again"; once the
    // walk has ended, returns how it ended.
    SearchOutcome step();
    // Runs the walk to its end, slice by slice.
    SearchOutcome run();
    // Asks the running walk to stop at the next node.
    void cancel() { m_cancel.store(true, std::memory_order_relaxed); }
    bool isRunning() const { return m_running; }

    QString pattern() const { return m_options.pattern; }
    // After Found: the folder, its node and its matching files.
    QString foundFolder() const { return m_foundFolder; }
    int foundNode() const { return m_foundNode; }
    QStringList foundFiles() const { return m_foundFiles; }
    // The folder the file list was last set to (the one the browser shows at
    // the end); empty when the walk examined none.
    QString lastFolder() const { return m_lastFolder; }
    // Nodes taken in this walk, skipped ones included.
    int examinedCount() const { return m_examined; }
    // Folders found in this walk (report mode counts them all).
    int foundCount() const { return m_foundCount; }
    int foundFileCount() const { return m_foundFileCount; }
    // The current walk limit (grows by nextCount at each Yes).
    int limit() const { return m_limit; }
    QString errorString() const { return m_errorString; }

private:
    enum class NodeResult { Next, Found, Failed };
    NodeResult examine(int node);
    bool onNetwork(int node, const QString &text) const;
    bool alreadyExamined(int node);
    bool appendReport(const QString &folder, const QStringList &names);
    SearchOutcome finish(SearchOutcome outcome);

    SearchTree &m_tree;
    SearchFileList &m_list;
    SearchQuestions &m_questions;
    SearchOptions m_options;
    std::function<void(const SearchProgress &)> m_progress;
    ReportSink m_sink;
    std::atomic_bool m_cancel{false};
    std::chrono::milliseconds m_budget{0};
    bool m_running = false;
    SearchOutcome m_outcome = SearchOutcome::EndOfTree;
    bool m_networkAnswer = false;
    bool m_networkDeclined = false;
    int m_position = 0;
    int m_index = 0;
    int m_start = 0;
    int m_limit = 0;
    int m_examined = 0;
    int m_foundCount = 0;
    int m_foundFileCount = 0;
    int m_foundNode = -1;
    QString m_foundFolder;
    QStringList m_foundFiles;
    QString m_lastFolder;
    QString m_errorString;
    // The folders examined in this walk, by device and inode.
    QSet<FolderIdentity> m_examinedFolders;
};

// Appends one found folder to a report: "##" + folder, then one line per
// file name, each ended by CR LF. Returns false (and says why in error) when
// the file cannot be written.
bool appendReportLines(const QString &reportFile, const QString &folder, const QStringList &names,
                       QString *error = nullptr);
QByteArray reportLines(const QString &folder, const QStringList &names);
// The same from the names' bytes, each line ended by lineEnd.
QByteArray reportLines(const QByteArray &folder, const QByteArrayList &names, const char *lineEnd = "\r\n");

} // namespace tarnby::search
