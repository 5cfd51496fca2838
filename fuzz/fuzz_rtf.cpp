// Feeds arbitrary bytes to the RTF reader; any fault is a finding.
#include "core/viewer/RtfReader.h"

#include <QGuiApplication>
#include <QTextDocument>

extern "C" int LLVMFuzzerTestOneInput(const uint8_t *data, size_t size)
{
    static int argc = 1;
    static char name[] = "rtf_reader_fuzzer";
    static char *argv[] = {name, nullptr};
    static const bool headless = qputenv("QT_QPA_PLATFORM", "offscreen");
    static QGuiApplication app(argc, argv);
    Q_UNUSED(headless);
    QTextDocument document;
    tarnby::viewer::RtfReader::read(QByteArray(reinterpret_cast<const char *>(data), qsizetype(size)), &document);
    return 0;
}
