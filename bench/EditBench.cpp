// The picture operations alone, in process, on one decoded picture: the
// median of REPEAT runs of each, and the undo of a step that keeps a copy
// and of one that runs its inverse, each as wall time and as the processor
// time of all threads of the process (which the load of other programs on
// the machine disturbs much less). See bench/README.md (edit.sh).
//
//   tarnby-bench-edit PHOTO [REPEAT]

#include "core/edit/EditHistory.h"
#include "core/edit/EditOperation.h"
#include "core/platform/imaging/PictureLayer.h"

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QThread>

#include <algorithm>
#include <cstdio>
#include <ctime>
#include <vector>

using namespace tarnby;
using namespace tarnby::edit;

namespace {

double processorMs()
{
    timespec now{};
    clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &now);
    return now.tv_sec * 1e3 + now.tv_nsec / 1e6;
}

// Wall and processor times of runs, each kept apart; the medians.
struct Times {
    std::vector<double> wall, processor;

    template <typename Work>
    void time(Work work)
    {
        QElapsedTimer timer;
        const double start = processorMs();
        timer.start();
        work();
        wall.push_back(double(timer.nsecsElapsed()) / 1e6);
        processor.push_back(processorMs() - start);
    }
    static double median(std::vector<double> v)
    {
        std::sort(v.begin(), v.end());
        return v[v.size() / 2];
    }
    void print(const char *name) const
    {
        std::printf("%-28s %8.1f ms wall %8.1f ms processor\n", name, median(wall), median(processor));
    }
};

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "Usage: tarnby-bench-edit PHOTO [REPEAT]\n");
        return 2;
    }
    const int repeat = argc > 2 ? std::max(1, std::atoi(argv[2])) : 5;
    const imaging::LoadResult loaded = imaging::loadPicture(QString::fromLocal8Bit(argv[1]));
    if (!loaded.ok()) {
        std::fprintf(stderr, "%s\n", qPrintable(loaded.errorString));
        return 1;
    }
    const QImage photo = loaded.picture.image();
    std::printf("%dx%d, format %d, %d threads; median of %d runs\n", photo.width(), photo.height(), int(photo.format()),
                QThread::idealThreadCount(), repeat);

    const struct {
        const char *name;
        EditOperation operation;
    } cases[] = {
        {"flip", EditOperation::flip()},
        {"invert", EditOperation::invert()},
        {"rotate 90", EditOperation::rotate(9000, RotateFit::Enlarge, qRgb(255, 255, 255))},
        {"rotate 17.5 enlarged", EditOperation::rotate(1750, RotateFit::Enlarge, qRgb(255, 255, 255))},
        {"resize to half, resampled", EditOperation::resize(photo.size() / 2, Resampling::Smooth)},
    };
    {
        Times times;
        for (int i = 0; i < repeat; ++i)
            times.time([&] { (void)photo.copy(); });
        times.print("copy of the picture");
    }
    for (const auto &c : cases) {
        // Each run gets a copy of its own, handed over as the command line
        // hands over its only copy; the copy is made before the clock runs.
        Times times;
        for (int i = 0; i < repeat; ++i) {
            QImage image = photo.copy();
            times.time([&] { image = apply(c.operation, std::move(image)); });
        }
        times.print(c.name);
    }

    // Undo of a step that keeps the picture (a swap) and of one that runs
    // its inverse (a flip).
    for (const auto &c : {cases[3], cases[0]}) {
        Times times;
        for (int i = 0; i < repeat; ++i) {
            EditHistory history;
            history.record(photo, c.operation);
            const QImage after = apply(c.operation, photo);
            QImage back;
            times.time([&] { back = history.undo(after); });
        }
        times.print((QByteArrayLiteral("undo of ") + c.name).constData());
    }
    return 0;
}
