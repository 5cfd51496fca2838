// How long the interface thread stands still at most while a search walk runs
// in the painted browser window. A 5 ms timer stamps every turn of the event
// loop; the longest gap between two turns is the longest the window could not
// repaint or take a click. Two walks over DIR: one in report mode through the
// whole tree (as the printing window drives it), and Find followed by Find
// Next from folder to folder (as a person does), up to 200 found folders.
// Needs a display: run it under xvfb-run (bench/search.sh does).
//   bench_search_window DIR [PATTERN]
#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/search/FileSearch.h"
#include "ui/browser/Tarnby1.h"
#include "ui/services/UiServices.h"

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QHash>
#include <QTemporaryDir>
#include <QTimer>

#include <algorithm>
#include <cstdio>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// Times every event the loop hands out (not the ones sent from inside
// another), so that a long stall can be put down to the slice of the walk or
// to the painting that follows it.
class TimedApplication : public QApplication
{
public:
    using QApplication::QApplication;

    struct Longest {
        double ms = 0;
        int type = 0;
        QByteArray receiver;
    };

    bool notify(QObject *receiver, QEvent *event) override
    {
        if (m_depth++ > 0) {
            const bool result = QApplication::notify(receiver, event);
            --m_depth;
            return result;
        }
        QElapsedTimer clock;
        clock.start();
        const int type = event->type();
        // The receiver may be gone afterwards (a deferred delete).
        const char *className = receiver->metaObject()->className();
        const QString name = receiver->objectName();
        const bool result = QApplication::notify(receiver, event);
        --m_depth;
        const double ms = double(clock.nsecsElapsed()) / 1e6;
        Longest &slot = m_longest[type];
        if (ms > slot.ms)
            slot = {ms, type, QByteArray(className) + ' ' + name.toUtf8()};
        return result;
    }

    // The longest event of each type, longest first.
    void printLongest(int count)
    {
        QList<Longest> all = m_longest.values();
        std::sort(all.begin(), all.end(), [](const Longest &a, const Longest &b) { return a.ms > b.ms; });
        for (const Longest &l : all.mid(0, count))
            std::printf("    event type %d to %s: %.1f ms\n", l.type, l.receiver.constData(), l.ms);
        m_longest.clear();
    }

private:
    int m_depth = 0;
    QHash<int, Longest> m_longest;
};

// The gaps between event-loop turns while it lives.
class StallMeter
{
public:
    StallMeter()
    {
        m_timer.setInterval(5);
        m_timer.setTimerType(Qt::PreciseTimer);
        QObject::connect(&m_timer, &QTimer::timeout, [this] {
            const qint64 now = m_clock.nsecsElapsed();
            const qint64 gap = now - m_last;
            m_longest = std::max(m_longest, gap);
            if (gap > 50'000'000)
                ++m_over50;
            m_last = now;
        });
        m_clock.start();
        m_timer.start();
    }
    double longestMs() const { return double(m_longest) / 1e6; }
    int over50() const { return m_over50; }
    double elapsedS() const { return double(m_clock.nsecsElapsed()) / 1e9; }

private:
    QTimer m_timer;
    QElapsedTimer m_clock;
    qint64 m_last = 0;
    qint64 m_longest = 0;
    int m_over50 = 0;
};

search::SearchOutcome runWalk(Tarnby1 &window, bool next)
{
    search::SearchOutcome outcome = search::SearchOutcome::Running;
    QEventLoop loop;
    QObject::connect(&window, &Tarnby1::searchFinished, &loop, [&](search::SearchOutcome o) {
        outcome = o;
        loop.quit();
    });
    if (next)
        window.FindNext();
    else
        window.FindFileRoutine();
    loop.exec();
    return outcome;
}

} // namespace

int main(int argc, char *argv[])
{
    TimedApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "Usage: bench_search_window DIR [PATTERN]\n");
        return 2;
    }
    const QString pattern = argc > 2 ? QString::fromLocal8Bit(argv[2]) : QStringLiteral("*.XWD");
    QTemporaryDir home;
    AppState state;
    SettingsStore store(home.filePath(QStringLiteral("settings.ini")));
    UiServices services;
    int questions = 0;
    services.messages.setResponder([&](const MessageRequest &request) {
        if (request.buttons != MessageButtons::YesNo)
            return MessageAnswer::Ok;
        ++questions;
        // Go on past the limit; leave the network alone.
        return request.text.contains(QLatin1String("Network")) ? MessageAnswer::No : MessageAnswer::Yes;
    });
    Tarnby1 window(state, services, store);
    StartupRequest request;
    request.homeOption = home.path();
    window.load(request);
    FolderRoots roots;
    roots.volumes = {QString::fromLocal8Bit(argv[1])};
    window.folderTree()->setRoots(roots);
    window.resize(1200, 850);
    window.show();
    QElapsedTimer settle;
    settle.start();
    while (settle.elapsed() < 500)
        app.processEvents(QEventLoop::AllEvents, 50);

    state.searchPattern = pattern;
    {
        state.reportMode = true;
        StallMeter meter;
        const search::SearchOutcome outcome = runWalk(window, false);
        const search::FileSearch *walk = window.fileSearch();
        std::printf("report-mode walk in the window: %d folders, %d with matches, %d files, %.2f s, "
                    "longest stall %.1f ms, %d stalls over 50 ms, outcome %d\n",
                    walk->examinedCount(), walk->foundCount(), walk->foundFileCount(), meter.elapsedS(),
                    meter.longestMs(), meter.over50(), int(outcome));
        state.reportMode = false;
        app.printLongest(4);
    }
    {
        StallMeter meter;
        int found = 0;
        int folders = 0;
        search::SearchOutcome outcome = runWalk(window, false);
        folders += window.fileSearch()->examinedCount();
        while (outcome == search::SearchOutcome::Found && ++found < 200) {
            outcome = runWalk(window, true);
            folders += window.fileSearch()->examinedCount();
        }
        std::printf("Find and Find Next in the window: %d folders shown, %d folders walked, %.2f s, "
                    "longest stall %.1f ms, %d stalls over 50 ms, %d questions\n",
                    found, folders, meter.elapsedS(), meter.longestMs(), meter.over50(), questions);
        app.printLongest(4);
    }
    return 0;
}
