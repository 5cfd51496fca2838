// The picture operations alone, in process, on one decoded picture: the
// median of REPEAT runs of each, and the undo of a step that keeps a copy
// and of one that runs its inverse. See bench/README.md (edit.sh).
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
#include <vector>

using namespace tarnby;
using namespace tarnby::edit;

namespace {

template <typename Work>
double medianMs(int repeat, Work work)
{
    std::vector<double> times;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer timer;
        timer.start();
        work();
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

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
    std::printf("%-28s %8.1f ms\n", "copy of the picture", medianMs(repeat, [&] { (void)photo.copy(); }));
    for (const auto &c : cases) {
        // Each run gets a copy of its own, handed over as the command line
        // hands over its only copy; the copy is made before the clock runs.
        std::vector<double> times;
        for (int i = 0; i < repeat; ++i) {
            QImage image = photo.copy();
            QElapsedTimer timer;
            timer.start();
            image = apply(c.operation, std::move(image));
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        std::sort(times.begin(), times.end());
        std::printf("%-28s %8.1f ms\n", c.name, times[times.size() / 2]);
    }

    // Undo of a step that keeps the picture (a swap) and of one that runs
    // its inverse (a flip).
    for (const auto &c : {cases[3], cases[0]}) {
        std::vector<double> times;
        for (int i = 0; i < repeat; ++i) {
            EditHistory history;
            history.record(photo, c.operation);
            const QImage after = apply(c.operation, photo);
            QElapsedTimer timer;
            timer.start();
            const QImage back = history.undo(after);
            times.push_back(double(timer.nsecsElapsed()) / 1e6);
        }
        std::sort(times.begin(), times.end());
        std::printf("undo of %-20s %8.1f ms\n", c.name, times[times.size() / 2]);
    }
    return 0;
}
