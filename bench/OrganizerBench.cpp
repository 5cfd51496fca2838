// The organizer's in-process timings for bench/organizer.sh: the nearest-match
// find (the best of 20 runs, each opening and closing the catalogue as the
// find window does) and the group browser's first screen (window built, shown
// and painted once) on the program folder given.
//
//   tarnby-bench-organizer PROGRAM_FOLDER GROUP

#include "core/app/AppState.h"
#include "core/organizer/OrganizerStore.h"
#include "ui/organizer/GrpBrow1.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QTableView>

#include <cstdio>

int main(int argc, char *argv[])
{
    if (qEnvironmentVariableIsEmpty("QT_QPA_PLATFORM"))
        qputenv("QT_QPA_PLATFORM", "offscreen");
    QApplication app(argc, argv);
    if (argc < 3) {
        std::fprintf(stderr, "usage: tarnby-bench-organizer PROGRAM_FOLDER GROUP\n");
        return 2;
    }
    using namespace tarnby;
    const organizer::OrganizerStore store(organizer::StoreLocation::inFolder(QString::fromLocal8Bit(argv[1])));
    double best = 1e9;
    QString found;
    for (int i = 0; i < 20; ++i) {
        QElapsedTimer t;
        t.start();
        const auto hit = store.findNearest(organizer::FindField::FileName, QStringLiteral("file05"));
        best = std::min(best, t.nsecsElapsed() / 1e6);
        found = hit ? hit->FileName : QString();
    }
    std::printf("nearest match \"file05\": %.2f ms (best of 20), found %s\n", best, qPrintable(found));

    AppState state;
    state.programFolder = QString::fromLocal8Bit(argv[1]);
    ui::UiServices services;
    QElapsedTimer t;
    t.start();
    ui::GrpBrow1 window(state, services, store);
    window.show();
    window.grid(0)->viewport()->repaint();
    app.processEvents();
    std::printf("group browser first screen: %.1f ms, %d rows read, group %s\n", t.nsecsElapsed() / 1e6,
                window.entries()->rowCount(), qPrintable(window.currentGroup()));
    return 0;
}
