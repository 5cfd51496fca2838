#pragma once

#include "core/printing/PrintJob.h"
#include "core/search/FileSearch.h"

#include <QDialog>
#include <QFutureWatcher>
#include <QImage>

#include <functional>
#include <memory>

class QCheckBox;
class QFrame;
class QLabel;
class QLineEdit;
class QListWidget;
class QPrinter;
class QProgressBar;
class QPushButton;
class QTabWidget;
class QTextBrowser;
class QTextEdit;

namespace tarnby {
class AppState;
}

namespace tarnby::printing {
class ReportModeScope;
}

namespace tarnby::ui {

struct UiServices;

// The browser's search walk as the folder-location report drives it, in
// report mode. start() begins a walk from the saved search position and
// returns at once (false when a walk is running already); finished hears how
// the walk ended, after the browser has said so. cancel() stops the walk at
// its next folder.
struct ReportWalker {
    using Finished = std::function<void(search::SearchOutcome outcome)>;
    std::function<bool(Finished finished)> start;
    std::function<void()> cancel;
};

// "Print File - " + name: prints the current file as a picture with a title,
// as text, as a listing of a table or as a report of the folders where a file
// or a file type is found, as the selected tab says.
//
// OK opens the system's print dialog, then runs the job on a worker thread:
// the "Printing" frame shows the pages done and a Stop button; OK and Cancel
// wait until the job ends. Errors of the printer or of the file end the job
// with a message; the window stays open.
class PrntFrm1 : public QDialog
{
    Q_OBJECT
public:
    PrntFrm1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~PrntFrm1() override;

    // Chooses the printer: the system print dialog, unless a test puts
    // another chooser here (true: print).
    using PrinterChooser = std::function<bool(QPrinter &printer)>;
    void setPrinterChooser(PrinterChooser chooser) { m_chooser = std::move(chooser); }
    // The walk of the folder-location report: the browser's. A window
    // opened without one walks the system's folders from the top.
    void setReportWalker(ReportWalker walker) { m_walker = std::move(walker); }

    // The picture to print instead of the file's (a document window's
    // edited picture); the size boxes are filled from it.
    void setPicture(const QImage &picture);

    // The tab shown, from 1 (picture) to 4 (folder locations).
    int selectedTab() const;
    void selectTab(int tab);
    void OKBtn_Click();
    // Shows the pages of the selected tab's job in a preview window.
    void preview();
    // Stops the running job at its next page or row.
    void stopJob();
    bool jobRunning() const { return m_running; }
    printing::PrintFont printFont() const { return m_font; }
    void setPrintFont(const printing::PrintFont &font) { m_font = font; }

    // The job OK would run now (for the preview and the tests).
    printing::PrintJobRequest jobRequest() const;

    void done(int result) override;

signals:
    void jobFinished(const printing::PrintResult &result);
    void helpRequested();

private:
    QWidget *buildPictureTab();
    QWidget *buildTextTab();
    QWidget *buildListingTab();
    QWidget *buildReportTab();
    void tabChanged(int index);
    void loadPicture();
    void loadText();
    void loadTables();
    void loadFields();
    void moveFields(bool toPrint, bool all);
    void chooseFont();
    bool checkBeforePrinting();
    // The report's walk through the browser, then next (only when the walk
    // went to its end; a stopped or failed walk has said so already).
    bool walksThroughBrowser() const;
    void walkReport(std::function<void()> next);
    void reportWalked(search::SearchOutcome outcome);
    void setBusy(bool busy);
    void startJob(std::unique_ptr<QPrinter> printer);
    void startPrinting();
    void finishJob();
    // Ends a job however it went; tell: say what went wrong (not when the
    // browser's walk has said it already).
    void endJob(const printing::PrintResult &result, bool tell = true);
    void showPreview();
    void showProgress(int pages);

    AppState &m_state;
    UiServices &m_services;
    PrinterChooser m_chooser;
    ReportWalker m_walker;
    printing::PrintFont m_font;
    QString m_file;
    QImage m_picture;
    bool m_textLoaded = false;
    bool m_tablesLoaded = false;

    QTabWidget *m_tabs = nullptr;
    QLabel *m_image = nullptr;
    QLineEdit *m_title = nullptr;
    QLineEdit *m_dxPos = nullptr;
    QLineEdit *m_dyPos = nullptr;
    QLineEdit *m_xPos = nullptr;
    QLineEdit *m_yPos = nullptr;
    QLineEdit *m_width = nullptr;
    QLineEdit *m_height = nullptr;
    QLabel *m_textLabel = nullptr;
    QTextEdit *m_richText = nullptr;
    QTextBrowser *m_web = nullptr;
    QListWidget *m_tables = nullptr;
    QListWidget *m_fileFields = nullptr;
    QListWidget *m_printFields = nullptr;
    QCheckBox *m_useFile = nullptr;
    QLabel *m_fileType = nullptr;
    QFrame *m_printing = nullptr;
    QProgressBar *m_progress = nullptr;
    QLabel *m_pages = nullptr;
    QPushButton *m_ok = nullptr;
    QPushButton *m_cancel = nullptr;
    QPushButton *m_previewButton = nullptr;

    bool m_running = false;
    bool m_walking = false;
    bool m_walked = false; // the report file holds this job's walk
    bool m_printStarted = false;
    std::function<void()> m_afterWalk;
    std::unique_ptr<QPrinter> m_printer;
    std::unique_ptr<printing::JobControl> m_control;
    std::unique_ptr<printing::ReportModeScope> m_reportMode;
    QFutureWatcher<printing::PrintResult> m_watcher;
};

// The printer and page layout the program keeps for the run: Printer Setup
// edits it, and each print job starts from it.
QPrinter &sharedPrinter();
// "Printer Setup": the system's page set-up dialog on the shared printer.
void showPageSetup(QWidget *parent);

} // namespace tarnby::ui
