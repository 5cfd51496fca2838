// Saves the options file over and over, alternating between two versions, until
// it is killed. The atomic-save test kills it at random moments and then
// requires the file to hold one version or the other in full.
#include "core/settings/ProgramOptions.h"

#include <QCoreApplication>
#include <QFile>

#include <cstdio>

using tarnby::settings::ProgramOptions;

ProgramOptions saveLoopVersion(int which); // settings_save_loop_version.cpp

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2) {
        std::fprintf(stderr, "usage: settings_save_loop FOLDER\n");
        return 2;
    }
    const QString folder = QString::fromLocal8Bit(argv[1]);
    const ProgramOptions versions[2] = {saveLoopVersion(0), saveLoopVersion(1)};
    for (unsigned long i = 0;; ++i) {
        QString error;
        if (!tarnby::settings::writeProgramOptions(folder, versions[i % 2], &error)) {
            std::fprintf(stderr, "%s\n", qPrintable(error));
            return 1;
        }
        if (i == 0) {
            // Tell the test that the first complete file is there.
            std::printf("ready\n");
            std::fflush(stdout);
        }
    }
}
