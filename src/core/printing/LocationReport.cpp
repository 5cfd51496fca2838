#include "core/printing/LocationReport.h"

#include "core/printing/ListingPrint.h"
#include "core/printing/PageCanvas.h"

#include <QFile>
#include <QSaveFile>

namespace tarnby::printing {

bool createEmptyReport(const QString &reportFile, QString *error)
{
    QSaveFile file(reportFile);
    if (!file.open(QIODevice::WriteOnly) || !file.commit()) {
        if (error)
            *error = QStringLiteral("Cannot write the report file - ") + reportFile;
        return false;
    }
    return true;
}

search::SearchOptions reportOptions(const QString &pattern, const QString &reportFile)
{
    search::SearchOptions options;
    options.pattern = pattern;
    options.reportMode = true;
    options.reportFile = reportFile;
    return options;
}

ReportWalk runReportWalk(search::SearchTree &tree, search::SearchFileList &list, const QString &pattern,
                         const QString &reportFile, bool &reportMode, JobControl *control)
{
    ReportWalk walk;
    if (!createEmptyReport(reportFile, &walk.errorString)) {
        walk.outcome = search::SearchOutcome::ReportFailed;
        return walk;
    }
    const ReportModeScope mode(reportMode);
    // Report mode never asks whether to go on; the network is walked like
    // any other folder when the tree holds one.
    search::FixedAnswers answers(true, true);
    search::FileSearch search(tree, list, answers);
    search.setPosition(0);
    search.start(reportOptions(pattern, reportFile));
    search::SearchOutcome outcome = search::SearchOutcome::Running;
    while (outcome == search::SearchOutcome::Running) {
        if (control && control->cancel.load(std::memory_order_relaxed))
            search.cancel();
        outcome = search.step();
    }
    walk.outcome = outcome;
    walk.errorString = search.errorString();
    walk.folders = search.foundCount();
    walk.files = search.foundFileCount();
    return walk;
}

PrintResult printReport(QPagedPaintDevice &device, const QString &reportFile, const QString &title,
                        const PrintFont &font, JobControl *control)
{
    PrintResult result;
    QFile file(reportFile);
    if (!file.open(QIODevice::ReadOnly)) {
        result.errorString = QStringLiteral("Cannot read the report file - ") + reportFile;
        return result;
    }
    const QFont qfont = font.toFont();
    PageCanvas canvas(device);
    canvas.setFont(qfont);
    if (!canvas.begin()) {
        result.errorString = canvas.errorString();
        return result;
    }
    canvas.printHeader(title, ReportTitleLeft, qfont);
    const double width = PageWidthInches - 2 * BodyLeftInches;

    // One line of the page; a new page (with the header) first when it would
    // pass the page length.
    auto printLine = [&](const QString &text, double indent) {
        if (!canvas.fits(canvas.lineHeight())) {
            if (control && control->progress)
                control->progress(canvas.pageNumber());
            if (!canvas.newPageWithHeader(title, ReportTitleLeft, qfont))
                return false;
        }
        canvas.printLine(text, BodyLeftInches + indent);
        return true;
    };
    const QString indent = QStringLiteral("   ");
    const double indentWidth = canvas.textWidth(indent);
    bool going = true;
    while (going && !file.atEnd()) {
        if (control && control->cancel.load(std::memory_order_relaxed)) {
            result.cancelled = true;
            break;
        }
        // A line longer than a path can be is cut: the report is read, not
        // trusted.
        QByteArray bytes = file.readLine(64 * 1024);
        while (bytes.endsWith('\n') || bytes.endsWith('\r'))
            bytes.chop(1);
        const QString line = QFile::decodeName(bytes);
        if (line.startsWith(QLatin1String("##"))) {
            going = printLine(QString(), 0);
            // Long folder paths wrap within the page.
            const QStringList parts = wrapToWidth(line.mid(2), qfont, canvas, width);
            for (const QString &part : parts) {
                if (going)
                    going = printLine(part, 0);
            }
        } else {
            const QStringList parts = wrapToWidth(line, qfont, canvas, width - indentWidth);
            for (const QString &part : parts) {
                if (going)
                    going = printLine(indent + part, 0);
            }
        }
    }
    if (!going)
        result.errorString = canvas.errorString();
    else if (file.error() != QFileDevice::NoError)
        result.errorString = QStringLiteral("Cannot read the report file - ") + reportFile;
    return canvas.finishJob(result, control);
}

} // namespace tarnby::printing
