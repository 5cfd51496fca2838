#pragma once

#include <QFont>
#include <QString>
#include <QStringList>

#include <atomic>
#include <functional>

// What every print job shares: the print font, the fixed page of 8.5 by 11
// inches, the title lines of the page header, and how a job reports its pages
// and hears a cancel.
namespace tarnby::printing {

// Every page is laid out in inches on this page, whatever paper the printer
// holds: the printable area is mapped onto it.
inline constexpr double PageWidthInches = 8.5;
inline constexpr double PageHeightInches = 11.0;
// A body line that would end below this starts a new page.
inline constexpr double PageLengthInches = 10.5;
// The body of the text, listing and report jobs starts here and must end
// before the right edge at PageWidthInches - BodyLeftInches.
inline constexpr double BodyLeftInches = 0.5;

// The header's places and sizes.
inline constexpr double HeaderTop = 0.25;
inline constexpr double ListingTitleLeft = 2.9;
inline constexpr double ReportTitleLeft = 2.5;
inline constexpr double PageNumberLeft = 7.2;
inline constexpr int TitlePointSize = 14;
inline constexpr int PageNumberPointSize = 10;

// The print font. The family the system was designed with is a bitmap sans
// serif that Linux lacks; the desktop's sans serif stands in for it.
struct PrintFont {
    QString family = defaultFamily();
    double pointSize = 10;
    bool bold = false;
    bool italic = false;

    QFont toFont() const;
    static QString defaultFamily();
};

// The header texts.
QString listingTitle(const QString &fileName);        // text and listing jobs
QString reportTitle(const QString &pattern, bool useFile, const QString &fileName);
QString pageNumberText(int page);

// The part of a path after its last separator ("/" or "\").
QString fileNamePart(const QString &path);

// How a job is watched. progress is called after every finished page with the
// number of pages so far (on the job's thread); cancel may be set from any
// thread and ends the job at the next page or row. abort, when set, is called
// on the job's thread when a cancelled job ends, before its document is
// closed: a printer drops the job there.
struct JobControl {
    std::function<void(int pages)> progress;
    std::function<void()> abort;
    std::atomic_bool cancel{false};
};

struct PrintResult {
    int pages = 0;
    bool cancelled = false;
    QString errorString; // empty when the job printed (or was cancelled) cleanly
    bool ok() const { return errorString.isEmpty() && !cancelled; }
};

// The messages of the print window and the command line.
inline constexpr const char *DatabaseCannotBeOpened = "Database File Cannot be Opened";
inline constexpr const char *ReportNeedsFileOrType = "You must Select File or File Type for Report";
inline constexpr const char *PortraitOnly = "Database Listings only support Portrait - Please use 8.5 x 11";
inline constexpr const char *NoFileTypesSelected = "No File Types Selected";
inline constexpr const char *ReportFileName = "F@Prnt.INI";

// The extensions the text and listing tabs print.
const QStringList &textTabExtensions();
const QStringList &databaseTabExtensions();
bool printsAsText(const QString &path);
bool printsAsListing(const QString &path);

} // namespace tarnby::printing
