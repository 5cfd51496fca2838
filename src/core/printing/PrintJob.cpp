#include "core/printing/PrintJob.h"

#include "core/platform/tables/TableReader.h"
#include "core/printing/ListingPrint.h"
#include "core/printing/LocationReport.h"
#include "core/printing/TextPrint.h"
#include "core/search/DiskSearchTree.h"

namespace tarnby::printing {

PrintResult runPrintJob(QPagedPaintDevice &device, const PrintJobRequest &request, JobControl *control)
{
    switch (request.tab) {
    case PrintTab::Picture:
        return printPicture(device, request.picture, request.title, request.placement, request.font);
    case PrintTab::Text:
        return printTextFile(device, request.file, request.useTextDoc, request.font, control);
    case PrintTab::Listing: {
        PrintResult result;
        const tables::OpenResult opened = tables::openTableFile(request.file, request.password);
        if (!opened.ok()) {
            result.errorString = QLatin1String(DatabaseCannotBeOpened);
            return result;
        }
        const QString name = request.table.isEmpty() && !opened.file->tableNames().isEmpty()
                                 ? opened.file->tableNames().constFirst()
                                 : request.table;
        auto table = opened.file->openTable(name);
        if (!table.ok()) {
            result.errorString = table.errorString;
            return result;
        }
        const QList<tables::Field> fields = table.value->fields();
        for (const QString &name : request.fields) {
            if (std::none_of(fields.begin(), fields.end(), [&](const tables::Field &f) { return f.name == name; })) {
                result.errorString = QStringLiteral("The table has no field named ") + name;
                return result;
            }
        }
        return printListing(device, *table.value, request.fields, fileNamePart(request.file), request.font, control);
    }
    case PrintTab::Report: {
        PrintResult result;
        if (!request.useFile && request.pattern.trimmed().isEmpty()) {
            result.errorString = QLatin1String(ReportNeedsFileOrType);
            return result;
        }
        const QString pattern = request.useFile ? fileNamePart(request.file) : request.pattern;
        const QString title = reportTitle(pattern, request.useFile, fileNamePart(request.file));
        if (request.reportWalked)
            return printReport(device, request.reportFile, title, request.font, control);
        search::DiskSearchTree tree(request.reportRoots);
        bool walking = false; // the caller holds the program-wide mode
        const ReportWalk walk = runReportWalk(tree, tree, pattern, request.reportFile, walking, control);
        if (walk.outcome == search::SearchOutcome::ReportFailed) {
            result.errorString = walk.errorString;
            return result;
        }
        if (walk.outcome == search::SearchOutcome::Cancelled) {
            result.cancelled = true;
            return result;
        }
        return printReport(device, request.reportFile, title, request.font, control);
    }
    }
    return {};
}

} // namespace tarnby::printing
