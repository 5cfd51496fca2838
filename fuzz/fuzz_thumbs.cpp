// JPEG thumbnails: our marker scan (EXIF orientation, the camera's own
// thumbnail) and libjpeg driven at reduced scale, progressive files read only
// up to their DC scans.
#include "core/platform/imaging/Thumbnails.h"

#include <QGuiApplication>
#include <QTemporaryFile>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 1;
    static char name[] = "fuzz_thumbs";
    static char *argv[] = {name, nullptr};
    static QGuiApplication *app = [] {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        return new QGuiApplication(argc, argv);
    }();
    Q_UNUSED(app);
    // Thumbnails are made from files; anything but a JPEG would only reach
    // the other readers, which have targets of their own.
    if (size < 3 || data[0] != 0xFF || data[1] != 0xD8 || data[2] != 0xFF)
        return 0;
    static QTemporaryFile file;
    if (!file.isOpen() && !file.open())
        return 0;
    file.resize(0);
    file.seek(0);
    file.write(reinterpret_cast<const char *>(data), qint64(size));
    file.flush();
    // An eighth of a picture of 512 pixels or more, and a larger share.
    tarnby::imaging::renderThumbnail(file.fileName(), 64);
    tarnby::imaging::renderThumbnail(file.fileName(), 300);
    return 0;
}
