#pragma once

#include "core/printing/PrintTypes.h"
#include "core/search/FileSearch.h"

#include <QString>

class QPagedPaintDevice;

// The folder-location report: the search walk in report mode writes every
// folder that holds matching files, with those files, into the report file
// "F@Prnt.INI"; the report job then prints that file.
namespace tarnby::printing {

// Creates the report file empty, replacing what was there. False (with
// *error) when it cannot be written.
bool createEmptyReport(const QString &reportFile, QString *error);

// Holds the program-wide report mode on for as long as it lives, so that the
// mode is off again however the walk ends: done, failed or cancelled.
class ReportModeScope
{
public:
    explicit ReportModeScope(bool &reportMode)
        : m_reportMode(reportMode)
    {
        m_reportMode = true;
    }
    ~ReportModeScope() { m_reportMode = false; }
    ReportModeScope(const ReportModeScope &) = delete;
    ReportModeScope &operator=(const ReportModeScope &) = delete;

private:
    bool &m_reportMode;
};

// The options of a report walk: every folder of the tree, into reportFile.
search::SearchOptions reportOptions(const QString &pattern, const QString &reportFile);

struct ReportWalk {
    search::SearchOutcome outcome = search::SearchOutcome::EndOfTree;
    QString errorString;
    int folders = 0;
    int files = 0;
};

// The walk of a report for callers without a window: makes the report file
// empty, switches reportMode on, walks the whole tree from its first node and
// switches reportMode off. control's cancel stops the walk between slices.
ReportWalk runReportWalk(search::SearchTree &tree, search::SearchFileList &list, const QString &pattern,
                         const QString &reportFile, bool &reportMode, JobControl *control = nullptr);

// Prints the report file: after the page header, each "##" line as a blank
// line and the folder (the text after "##"), every other line as a file name
// indented by three blanks. Read a line at a time, whatever its size.
PrintResult printReport(QPagedPaintDevice &device, const QString &reportFile, const QString &title,
                        const PrintFont &font, JobControl *control = nullptr);

} // namespace tarnby::printing
