// Full decode of one picture, in process, by Tarnby's picture layer and by
// ImageMagick (Magick++), so that neither pays for starting a process.
//
//   tarnby-bench-decode FILE [REPEAT]
//
// Prints the median time of REPEAT decodes (default 7, after one unmeasured
// decode each) and the ratio ImageMagick / Tarnby.

#include "core/platform/imaging/PictureLayer.h"

#include <Magick++.h>

#include <QCoreApplication>
#include <QElapsedTimer>

#include <algorithm>
#include <cstdio>
#include <functional>
#include <vector>

namespace {

double medianMs(int repeat, const std::function<bool()> &decode)
{
    if (!decode())
        return -1;
    std::vector<double> times;
    for (int i = 0; i < repeat; ++i) {
        QElapsedTimer timer;
        timer.start();
        if (!decode())
            return -1;
        times.push_back(double(timer.nsecsElapsed()) / 1e6);
    }
    std::sort(times.begin(), times.end());
    return times[times.size() / 2];
}

} // namespace

int main(int argc, char *argv[])
{
    QCoreApplication app(argc, argv);
    Magick::InitializeMagick(argv[0]);
    if (argc < 2) {
        std::fprintf(stderr, "usage: tarnby-bench-decode FILE [REPEAT]\n");
        return 2;
    }
    const QString path = QString::fromLocal8Bit(argv[1]);
    const int repeat = argc > 2 ? std::max(1, std::atoi(argv[2])) : 7;

    QSize size;
    const double tarnby = medianMs(repeat, [&] {
        const tarnby::imaging::LoadResult result = tarnby::imaging::loadPicture(path);
        size = result.picture.image().size();
        return result.ok();
    });
    const double magick = medianMs(repeat, [&] {
        try {
            Magick::Image image;
            image.read(argv[1]);
            // Touch the pixels so that a lazy pixel cache cannot skip the work.
            return image.getConstPixels(0, 0, image.columns(), 1) != nullptr;
        } catch (const Magick::Exception &e) {
            std::fprintf(stderr, "ImageMagick: %s\n", e.what());
            return false;
        }
    });
    if (tarnby < 0 || magick < 0) {
        std::fprintf(stderr, "decoding failed\n");
        return 1;
    }
    std::printf("picture: %dx%d\n", size.width(), size.height());
    std::printf("tarnby loadPicture:        %8.1f ms (median of %d)\n", tarnby, repeat);
    std::printf("ImageMagick Magick++ read: %8.1f ms (median of %d)\n", magick, repeat);
    std::printf("ratio ImageMagick / tarnby: %.2f\n", magick / tarnby);
    return 0;
}
