// The FPX route of the picture layer: libgsf and our FlashPix tile decoder.
#include "core/platform/imaging/VectorRoutes.h"

#include <QGuiApplication>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    // Text drawing needs the font database of a GUI application.
    static int argc = 1;
    static char name[] = "fuzz_fpx";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    Q_UNUSED(app);
    tarnby::imaging::vector::readFlashPix(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)));
    return 0;
}
