// Full decode of one large JPEG: Qt's reader, as the picture layer's Qt route
// uses it, against ImageMagick (Magick++). Prints the median of each and the
// ratio. Built and run by bench/decode.sh.
#include <Magick++.h>

#include <QCoreApplication>
#include <QElapsedTimer>
#include <QImage>
#include <QImageReader>
#include <QImageWriter>
#include <QRandomGenerator>

#include <algorithm>
#include <cstdio>
#include <vector>

static double median(std::vector<double> v)
{
    std::sort(v.begin(), v.end());
    return v[v.size() / 2];
}

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    Magick::InitializeMagick(argv[0]);
    const QString path = argc > 1 ? QString::fromLocal8Bit(argv[1]) : QStringLiteral("/tmp/tarnby-bench.jpg");
    const int runs = 5;
    if (argc <= 1) {
        // A 24-megapixel photograph stand-in: gradients with noise, quality 90.
        QImage image(6000, 4000, QImage::Format_RGB32);
        QRandomGenerator rng(42);
        for (int y = 0; y < image.height(); ++y) {
            QRgb *line = reinterpret_cast<QRgb *>(image.scanLine(y));
            for (int x = 0; x < image.width(); ++x) {
                const int n = int(rng.bounded(32));
                line[x] = qRgb((x / 24 + n) & 255, (y / 16 + n) & 255, ((x + y) / 40 + n) & 255);
            }
        }
        QImageWriter writer(path, "jpeg");
        writer.setQuality(90);
        if (!writer.write(image)) {
            std::fprintf(stderr, "cannot write %s\n", qPrintable(path));
            return 1;
        }
    }
    std::vector<double> qt, magick;
    for (int i = 0; i < runs; ++i) {
        QElapsedTimer t;
        t.start();
        QImageReader reader(path, "jpeg");
        reader.setAllocationLimit(2048);
        const QImage image = reader.read();
        qt.push_back(t.nsecsElapsed() / 1e6);
        if (image.isNull())
            return 1;

        t.restart();
        Magick::Image m;
        m.read(("JPEG:" + path).toStdString());
        magick.push_back(t.nsecsElapsed() / 1e6);
    }
    const QSize size = QImageReader(path).size();
    std::printf("file %s, %d x %d, %d runs each\n", qPrintable(path), size.width(), size.height(), runs);
    std::printf("Qt (picture layer route): median %.1f ms\n", median(qt));
    std::printf("ImageMagick (Magick++):   median %.1f ms\n", median(magick));
    std::printf("ratio ImageMagick / Qt:   %.2f\n", median(magick) / median(qt));
    return 0;
}
