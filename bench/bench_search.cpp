// The longest stretch the interface thread spends in one slice of a walk:
// the walk runs over the browser's own tree and list models (as the window
// runs it, minus the views' painting) through a whole tree in report mode,
// and every slice is timed.
//   bench_search DIR [PATTERN]
#include "core/browser/FileListModel.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/search/BrowserSearchSources.h"
#include "core/search/FileSearch.h"

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>

using namespace tarnby;
using namespace tarnby::search;

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "Usage: bench_search DIR [PATTERN]\n");
        return 2;
    }
    FolderTreeModel tree;
    FolderRoots roots;
    roots.volumes = {QString::fromLocal8Bit(argv[1])};
    tree.setRoots(roots);
    FileListModel list;
    FolderTreeSearchTree treeSource(tree);
    FileListSearchList listSource(list);
    FixedAnswers answers(true, false);
    FileSearch search(treeSource, listSource, answers);
    qint64 found = 0;
    search.setReportSink([&](const QString &, const QStringList &names) {
        found += names.size();
        return true;
    });
    SearchOptions options;
    options.pattern = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QStringLiteral("*.XWD");
    options.reportMode = true;
    // As the window sets it.
    search.setSliceBudget(WindowSliceBudget);
    search.start(options);

    QElapsedTimer total;
    total.start();
    qint64 longest = 0;
    int slices = 0;
    SearchOutcome outcome = SearchOutcome::Running;
    while (outcome == SearchOutcome::Running) {
        QElapsedTimer slice;
        slice.start();
        outcome = search.step();
        longest = std::max(longest, slice.nsecsElapsed());
        ++slices;
    }
    std::printf("walk over the browser's models: %d folders, %lld files found, %d slices, %.2f s in all, "
                "longest slice %.1f ms\n",
                search.examinedCount(), found, slices, double(total.nsecsElapsed()) / 1e9, double(longest) / 1e6);
    return 0;
}
