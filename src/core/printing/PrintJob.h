#pragma once

#include "core/printing/PicturePrint.h"
#include "core/printing/PrintTypes.h"

#include <QImage>
#include <QString>
#include <QStringList>

class QPagedPaintDevice;

// One print job as the print window hands it over: everything as values, so
// that it can run on a worker thread while the window stays alive.
namespace tarnby::printing {

// The tabs of the print window, numbered as the tab strip numbers them.
enum class PrintTab { Picture = 1, Text = 2, Listing = 3, Report = 4 };

struct PrintJobRequest {
    PrintTab tab = PrintTab::Picture;
    QString file;          // the current file
    PrintFont font;
    // Picture.
    QImage picture;
    QString title;
    PicturePlacement placement;
    // Text.
    bool useTextDoc = false;
    // Listing.
    QString table;
    QStringList fields;    // empty: every field
    QString password;
    // Report.
    QString pattern;       // the search pattern (replaced by the file's name when useFile)
    bool useFile = false;
    QString reportFile;    // "F@Prnt.INI" in the program folder
    QStringList reportRoots; // the folders the walk starts from
    bool reportWalked = false; // the report file holds the walk already: print it only
};

// Runs the job onto device. The report walks first (into the report file,
// made empty before), then prints; the caller holds the program-wide report
// mode on around the call. Cancel stops the walk or the printing; a cancelled
// walk prints nothing.
PrintResult runPrintJob(QPagedPaintDevice &device, const PrintJobRequest &request, JobControl *control = nullptr);

} // namespace tarnby::printing
