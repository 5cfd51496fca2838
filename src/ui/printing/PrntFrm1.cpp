#include "ui/printing/PrntFrm1.h"

#include "core/app/AppState.h"
#include "core/browser/MountTable.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/PictureLayer.h"
#include "core/platform/tables/TableReader.h"
#include "core/printing/LocationReport.h"
#include "core/viewer/DocumentRules.h"
#include "core/viewer/RtfReader.h"
#include "core/viewer/TextFile.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QApplication>
#include <QCheckBox>
#include <QFile>
#include <QGridLayout>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPageSetupDialog>
#include <QPrintDialog>
#include <QPrintPreviewDialog>
#include <QPrinter>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QTabWidget>
#include <QTextBrowser>
#include <QTextEdit>
#include <QtConcurrent>

namespace tarnby::ui {

using namespace tarnby::printing;

namespace {

// The text tab shows at most this much of a file; printing reads all of it.
constexpr qint64 PreviewBytes = 4 * 1024 * 1024;

QLabel *label(QWidget *parent, const QString &text, const char *name = nullptr)
{
    auto *l = new QLabel(text, parent);
    if (name)
        l->setObjectName(QLatin1String(name));
    return l;
}

QLineEdit *box(QWidget *parent, const char *name, const char *tooltip)
{
    auto *e = new QLineEdit(parent);
    e->setObjectName(QLatin1String(name));
    e->setToolTip(QLatin1String(tooltip));
    return e;
}

QPushButton *button(QWidget *parent, const char *name, const QString &caption, const char *tooltip)
{
    auto *b = new QPushButton(caption, parent);
    b->setObjectName(QLatin1String(name));
    b->setToolTip(QLatin1String(tooltip));
    b->setAutoDefault(false);
    return b;
}

QListWidget *list(QWidget *parent, const char *name, const char *tooltip)
{
    auto *l = new QListWidget(parent);
    l->setObjectName(QLatin1String(name));
    l->setToolTip(QLatin1String(tooltip));
    return l;
}

QStringList browserRoots()
{
    const FolderRoots roots = systemRoots();
    QStringList folders = roots.volumes;
    if (!roots.home.isEmpty())
        folders << roots.home;
    for (const MountEntry &mount : roots.network)
        folders << mount.mountPoint;
    return folders;
}

QString inches(double value)
{
    return QString::number(value, 'f', 2);
}

} // namespace

PrntFrm1::PrntFrm1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
    , m_file(state.currentFile)
{
    setObjectName(QStringLiteral("PrntFrm1"));
    setWindowTitle(QStringLiteral("Print File - ") + fileNamePart(m_file));
    m_chooser = [this](QPrinter &printer) {
        QPrintDialog dialog(&printer, this);
        return dialog.exec() == QDialog::Accepted;
    };

    m_tabs = new QTabWidget(this);
    m_tabs->setObjectName(QStringLiteral("TabStrip1"));
    m_tabs->addTab(buildPictureTab(), QStringLiteral("Picture"));
    m_tabs->addTab(buildTextTab(), QStringLiteral("Text"));
    m_tabs->addTab(buildListingTab(), QStringLiteral("Database Listing"));
    m_tabs->addTab(buildReportTab(), QStringLiteral("Folder Locations"));

    m_printing = new QFrame(this);
    m_printing->setObjectName(QStringLiteral("Frame2"));
    m_printing->setFrameShape(QFrame::StyledPanel);
    auto *printingLayout = new QHBoxLayout(m_printing);
    printingLayout->addWidget(label(m_printing, QStringLiteral("Printing"), "Label3"));
    m_progress = new QProgressBar(m_printing);
    m_progress->setRange(0, 0);
    printingLayout->addWidget(m_progress, 1);
    m_pages = label(m_printing, QString(), "LblPages");
    printingLayout->addWidget(m_pages);
    auto *stop = button(m_printing, "StopBtn", QStringLiteral("Stop"), "Stop Printing");
    printingLayout->addWidget(stop);
    m_printing->hide();

    auto *font = button(this, "FontBtn", QStringLiteral("Font"), "Set Font to Print");
    m_previewButton = button(this, "PreviewBtn", QStringLiteral("Preview"), "Show the Pages before Printing");
    m_ok = button(this, "OKBtn", QStringLiteral("OK"), "Click OK to Select Print Options and Print");
    m_ok->setDefault(true);
    auto *help = button(this, "HelpBtn", QStringLiteral("Help"), "Help with Print Selection");
    m_cancel = button(this, "CancelBtn", QStringLiteral("Cancel"), "Close Print Selection Window");

    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_tabs, 1);
    layout->addWidget(m_printing);
    auto *buttons = new QHBoxLayout;
    buttons->addWidget(font);
    buttons->addWidget(m_previewButton);
    buttons->addStretch();
    buttons->addWidget(m_ok);
    buttons->addWidget(m_cancel);
    buttons->addWidget(help);
    layout->addLayout(buttons);
    resize(620, 460);

    connect(m_tabs, &QTabWidget::currentChanged, this, &PrntFrm1::tabChanged);
    connect(font, &QPushButton::clicked, this, &PrntFrm1::chooseFont);
    connect(m_previewButton, &QPushButton::clicked, this, &PrntFrm1::preview);
    connect(m_ok, &QPushButton::clicked, this, &PrntFrm1::OKBtn_Click);
    connect(m_cancel, &QPushButton::clicked, this, &QDialog::reject);
    connect(help, &QPushButton::clicked, this, &PrntFrm1::helpRequested);
    connect(stop, &QPushButton::clicked, this, &PrntFrm1::stopJob);
    connect(&m_watcher, &QFutureWatcher<PrintResult>::finished, this, &PrntFrm1::finishJob);

    installWindowColors(this, m_state);
    // The window opens on the tab that suits the file.
    loadPicture();
    if (printsAsListing(m_file))
        selectTab(int(PrintTab::Listing));
    else if (printsAsText(m_file))
        selectTab(int(PrintTab::Text));
    tabChanged(m_tabs->currentIndex());
}

PrntFrm1::~PrntFrm1()
{
    // A job still running is stopped and waited for: it paints on our printer.
    // A walk of the browser's is stopped; its end no longer reaches us.
    if (m_walking && m_walker.cancel)
        m_walker.cancel();
    if (m_watcher.isRunning()) {
        m_watcher.disconnect(this);
        stopJob();
        m_watcher.waitForFinished();
    }
    if (m_running)
        QApplication::restoreOverrideCursor();
}

QWidget *PrntFrm1::buildPictureTab()
{
    auto *frame = new QFrame;
    frame->setObjectName(QStringLiteral("FramePicture"));
    m_image = new QLabel(frame);
    m_image->setObjectName(QStringLiteral("Image1"));
    m_image->setProperty(KeepOwnColorsProperty, true);
    m_image->setMinimumSize(200, 200);
    m_image->setAlignment(Qt::AlignCenter);
    m_title = box(frame, "Text1", "Enter Title or Description to Print on Page");
    m_dxPos = box(frame, "DXPos", "Enter Left Position to print on page");
    // The top box repeats the left box's tooltip, as it always has.
    m_dyPos = box(frame, "DYPos", "Enter Left Position to print on page");
    m_xPos = box(frame, "XPos", "Enter Left Position to print on page");
    m_yPos = box(frame, "YPos", "Enter Top Position to print on page");
    m_width = box(frame, "PictWidth", "Enter Width of Image on Page");
    m_height = box(frame, "PictHeight", "Enter Height of Image on Page");

    // The title's position boxes have no captions of their own: their
    // placeholders say which is which.
    m_dxPos->setPlaceholderText(QStringLiteral("Left"));
    m_dyPos->setPlaceholderText(QStringLiteral("Top"));

    auto *grid = new QGridLayout(frame);
    grid->addWidget(m_image, 0, 0, 8, 1);
    grid->addWidget(label(frame, QStringLiteral("Enter Description and Position to Print:")), 0, 1, 1, 3);
    grid->addWidget(m_title, 1, 1);
    grid->addWidget(m_dxPos, 1, 2);
    grid->addWidget(m_dyPos, 1, 3);
    grid->addWidget(label(frame, QStringLiteral("Values in Inches")), 2, 1, 1, 3);
    grid->addWidget(label(frame, QStringLiteral("Image Width:")), 3, 1);
    grid->addWidget(m_width, 3, 2);
    grid->addWidget(label(frame, QStringLiteral("Image Height:")), 4, 1);
    grid->addWidget(m_height, 4, 2);
    grid->addWidget(label(frame, QStringLiteral("Image X Pos:")), 5, 1);
    grid->addWidget(m_xPos, 5, 2);
    grid->addWidget(label(frame, QStringLiteral("Image Y Pos:")), 6, 1);
    grid->addWidget(m_yPos, 6, 2);
    grid->setRowStretch(7, 1);
    // The title is the widest box.
    grid->setColumnStretch(1, 3);
    grid->setColumnStretch(2, 1);
    grid->setColumnStretch(3, 1);
    return frame;
}

QWidget *PrntFrm1::buildTextTab()
{
    auto *frame = new QFrame;
    frame->setObjectName(QStringLiteral("FrameText"));
    m_textLabel = label(frame, QStringLiteral("Print Text for"), "Label1");
    m_richText = new QTextEdit(frame);
    m_richText->setObjectName(QStringLiteral("RichTextBox1"));
    m_richText->setReadOnly(true);
    m_web = new QTextBrowser(frame);
    m_web->setObjectName(QStringLiteral("WebBrowser1"));
    m_web->setOpenLinks(false);
    m_web->hide();
    auto *layout = new QVBoxLayout(frame);
    layout->addWidget(m_textLabel);
    layout->addWidget(m_richText, 1);
    layout->addWidget(m_web, 1);
    return frame;
}

QWidget *PrntFrm1::buildListingTab()
{
    auto *frame = new QFrame;
    frame->setObjectName(QStringLiteral("FrameDatabase"));
    m_tables = list(frame, "List3", "Select Table or Record Type to View Fields");
    m_fileFields = list(frame, "List1", "Field List for file to be printed");
    m_printFields = list(frame, "List2", "Fields to be printed in report");
    auto *right = button(frame, "RightBtn", QStringLiteral(">"), "Select Field to Print");
    auto *left = button(frame, "LefttBtn", QStringLiteral("<"), "Reverse Field Selection to Print");
    auto *allRight = button(frame, "AllRightBtn", QStringLiteral(">>"), "Select All Fields to Print");
    auto *allLeft = button(frame, "AllLeftBtn", QStringLiteral("<<"), "Unselect All Fields to Print");

    // The captions sit on the lists; the field buttons between the two
    // field lists, at their top.
    auto *grid = new QGridLayout(frame);
    grid->addWidget(label(frame, QStringLiteral("Database Listing")), 0, 0);
    grid->addWidget(m_tables, 1, 0);
    grid->addWidget(label(frame, QStringLiteral("File Fields")), 0, 1);
    grid->addWidget(m_fileFields, 1, 1);
    auto *moves = new QVBoxLayout;
    for (QPushButton *b : {right, left, allRight, allLeft})
        moves->addWidget(b);
    moves->addStretch();
    grid->addLayout(moves, 1, 2);
    grid->addWidget(label(frame, QStringLiteral("Print Fields")), 0, 3);
    grid->addWidget(m_printFields, 1, 3);
    grid->setRowStretch(1, 1);

    connect(m_tables, &QListWidget::currentRowChanged, this, &PrntFrm1::loadFields);
    connect(right, &QPushButton::clicked, this, [this] { moveFields(true, false); });
    connect(left, &QPushButton::clicked, this, [this] { moveFields(false, false); });
    connect(allRight, &QPushButton::clicked, this, [this] { moveFields(true, true); });
    connect(allLeft, &QPushButton::clicked, this, [this] { moveFields(false, true); });
    return frame;
}

QWidget *PrntFrm1::buildReportTab()
{
    auto *frame = new QFrame;
    frame->setObjectName(QStringLiteral("FrameReport"));
    m_useFile = new QCheckBox(QStringLiteral("Use File"), frame);
    m_useFile->setObjectName(QStringLiteral("Check1"));
    m_useFile->setToolTip(QStringLiteral("Use the Current file to find instead of a File Type listed below"));
    m_fileType = label(frame, m_state.searchPattern.isEmpty() ? QLatin1String(NoFileTypesSelected)
                                                              : m_state.searchPattern,
                       "Label4");
    auto *layout = new QVBoxLayout(frame);
    layout->addWidget(label(frame, QStringLiteral("Print all Locations for the Selected File")));
    layout->addWidget(m_useFile);
    layout->addWidget(label(frame, QStringLiteral("- OR -")));
    layout->addWidget(label(frame, QStringLiteral("All folder locations and Files will be printed")));
    layout->addWidget(label(frame, QStringLiteral("for the File Type Selected on the Search")));
    layout->addWidget(m_fileType);
    layout->addStretch();
    return frame;
}

int PrntFrm1::selectedTab() const
{
    return m_tabs->currentIndex() + 1;
}

void PrntFrm1::selectTab(int tab)
{
    m_tabs->setCurrentIndex(tab - 1);
}

void PrntFrm1::tabChanged(int index)
{
    const auto tab = PrintTab(index + 1);
    if (tab == PrintTab::Text)
        loadText();
    if (tab == PrintTab::Listing)
        loadTables();
    // A tab that cannot print this file keeps OK off.
    bool printable = true;
    if (tab == PrintTab::Picture)
        printable = !m_picture.isNull();
    else if (tab == PrintTab::Text)
        printable = printsAsText(m_file);
    if (!m_running) {
        m_ok->setEnabled(printable);
        m_previewButton->setEnabled(printable);
    }
}

void PrntFrm1::loadPicture()
{
    if (m_file.isEmpty() || printsAsText(m_file) || printsAsListing(m_file) || !QFileInfo(m_file).isFile())
        return;
    QApplication::setOverrideCursor(Qt::WaitCursor);
    const imaging::LoadResult loaded = imaging::loadPicture(m_file);
    QApplication::restoreOverrideCursor();
    if (loaded.ok())
        setPicture(loaded.picture.image());
}

void PrntFrm1::setPicture(const QImage &picture)
{
    m_picture = picture;
    m_image->setPixmap(QPixmap::fromImage(
        m_picture.scaled(m_image->minimumSize(), Qt::KeepAspectRatio, Qt::SmoothTransformation)));
    // The size boxes start at the picture's size; the positions stay empty
    // (the top left corner).
    const QSizeF size = naturalSizeInches(m_picture);
    m_width->setText(inches(size.width()));
    m_height->setText(inches(size.height()));
    tabChanged(m_tabs->currentIndex());
}

void PrntFrm1::loadText()
{
    if (m_textLoaded || !printsAsText(m_file))
        return;
    m_textLoaded = true;
    m_textLabel->setText(QStringLiteral("Print Text for ") + fileNamePart(m_file));
    const QString extension = catalogue::GetFileExt(m_file);
    const viewer::TextView view = viewer::textViewFor(extension, m_state.options.useTextDoc);
    QFile file(m_file);
    if (!file.open(QIODevice::ReadOnly))
        return;
    const QByteArray bytes = file.read(PreviewBytes);
    const viewer::DetectedEncoding encoding = viewer::detectEncoding(bytes, file.atEnd());
    const QString text = viewer::decodeText(QByteArrayView(bytes).sliced(encoding.bomLength), encoding.encoding);
    if (view == viewer::TextView::WebView) {
        m_richText->hide();
        m_web->show();
        if (extension == QLatin1String("HTM") || extension == QLatin1String("HTML"))
            m_web->setHtml(text);
        else
            m_web->setPlainText(QStringLiteral("The document is converted when it is printed."));
    } else if (view == viewer::TextView::RichText) {
        viewer::RtfReader::read(bytes, m_richText->document());
    } else {
        m_richText->setPlainText(text);
    }
}

void PrntFrm1::loadTables()
{
    if (m_tablesLoaded || !printsAsListing(m_file))
        return;
    m_tablesLoaded = true;
    // A protected file opens with the password of the last login, as the
    // table view opened it.
    const tables::OpenResult opened = tables::openTableFile(m_file, m_state.database.password);
    if (!opened.ok())
        return;
    m_tables->addItems(opened.file->tableNames());
    if (m_tables->count() > 0)
        m_tables->setCurrentRow(0);
}

void PrntFrm1::loadFields()
{
    m_fileFields->clear();
    m_printFields->clear();
    if (!m_tables->currentItem())
        return;
    const tables::OpenResult opened = tables::openTableFile(m_file, m_state.database.password);
    if (!opened.ok())
        return;
    const auto table = opened.file->openTable(m_tables->currentItem()->text());
    if (!table.ok())
        return;
    for (const tables::Field &field : table.value->fields())
        m_fileFields->addItem(field.name);
}

void PrntFrm1::moveFields(bool toPrint, bool all)
{
    QListWidget *from = toPrint ? m_fileFields : m_printFields;
    QListWidget *to = toPrint ? m_printFields : m_fileFields;
    if (all) {
        while (from->count() > 0)
            to->addItem(from->takeItem(0));
        return;
    }
    const int row = from->currentRow();
    if (row < 0)
        return;
    to->addItem(from->takeItem(row));
    from->setCurrentRow(std::min(row, from->count() - 1));
}

void PrntFrm1::chooseFont()
{
    DialogRequest request;
    request.kind = DialogKind::Font;
    request.title = QStringLiteral("Font");
    request.font = m_font.toFont();
    const DialogAnswer answer = m_services.dialogs.run(request, this);
    if (!answer.accepted)
        return;
    m_font.family = answer.font.family();
    m_font.pointSize = answer.font.pointSizeF() > 0 ? answer.font.pointSizeF() : m_font.pointSize;
    m_font.bold = answer.font.bold();
    m_font.italic = answer.font.italic();
}

PrintJobRequest PrntFrm1::jobRequest() const
{
    PrintJobRequest request;
    request.tab = PrintTab(selectedTab());
    request.file = m_file;
    request.password = m_state.database.password;
    request.font = m_font;
    request.picture = m_picture;
    request.title = m_title->text();
    request.placement = placementFromBoxes(m_dxPos->text(), m_dyPos->text(), m_xPos->text(), m_yPos->text(),
                                           m_width->text(), m_height->text(), m_picture);
    request.useTextDoc = m_state.options.useTextDoc;
    if (m_tables->currentItem())
        request.table = m_tables->currentItem()->text();
    for (int i = 0; i < m_printFields->count(); ++i)
        request.fields << m_printFields->item(i)->text();
    request.pattern = m_state.searchPattern;
    request.useFile = m_useFile->isChecked();
    request.reportFile = m_state.reportFile();
    request.reportRoots = browserRoots();
    return request;
}

bool PrntFrm1::checkBeforePrinting()
{
    const auto tab = PrintTab(selectedTab());
    if (tab == PrintTab::Listing && m_tables->count() == 0) {
        m_services.messages.inform(QLatin1String(DatabaseCannotBeOpened), this);
        return false;
    }
    // No field chosen: every field, as AllRightBtn would choose them.
    if (tab == PrintTab::Listing && m_printFields->count() == 0)
        moveFields(true, true);
    if (tab == PrintTab::Report && !m_useFile->isChecked()
        && m_fileType->text() == QLatin1String(NoFileTypesSelected)) {
        m_services.messages.inform(QLatin1String(ReportNeedsFileOrType), this);
        return false;
    }
    return true;
}

void PrntFrm1::OKBtn_Click()
{
    if (m_running || !checkBeforePrinting())
        return;
    auto printer = std::make_unique<QPrinter>(QPrinter::HighResolution);
    printer->setDocName(windowTitle());
    // The printer and paper chosen last (or in Printer Setup) come first.
    QPrinter &setup = sharedPrinter();
    if (!setup.printerName().isEmpty())
        printer->setPrinterName(setup.printerName());
    printer->setPageLayout(setup.pageLayout());
    if (!m_chooser(*printer))
        return;
    // Listings only support portrait paper; every job is printed upright,
    // and the next one starts from portrait too.
    if (printer->pageLayout().orientation() == QPageLayout::Landscape)
        m_services.messages.inform(QLatin1String(PortraitOnly), this);
    printer->setPageOrientation(QPageLayout::Portrait);
    setup.setPrinterName(printer->printerName());
    setup.setPageLayout(printer->pageLayout());
    startJob(std::move(printer));
}

void PrntFrm1::setBusy(bool busy)
{
    if (busy == m_running)
        return;
    m_running = busy;
    if (busy) {
        m_ok->setEnabled(false);
        m_cancel->setEnabled(false);
        m_previewButton->setEnabled(false);
        m_pages->clear();
        m_printing->show();
        QApplication::setOverrideCursor(Qt::WaitCursor);
    } else {
        QApplication::restoreOverrideCursor();
        m_printing->hide();
        m_cancel->setEnabled(true);
        tabChanged(m_tabs->currentIndex());
    }
}

bool PrntFrm1::walksThroughBrowser() const
{
    return PrintTab(selectedTab()) == PrintTab::Report && m_walker.start;
}

void PrntFrm1::walkReport(std::function<void()> next)
{
    m_walked = false;
    // The walk looks for the file's own name when the box says so; the name
    // stays the search pattern afterwards, as any chosen pattern does.
    if (m_useFile->isChecked())
        m_state.searchPattern = fileNamePart(m_file);
    // The walk appends to the report file: it starts empty.
    PrintResult failed;
    if (!createEmptyReport(m_state.reportFile(), &failed.errorString)) {
        endJob(failed);
        return;
    }
    m_reportMode = std::make_unique<ReportModeScope>(m_state.reportMode);
    m_afterWalk = std::move(next);
    m_walking = true;
    m_pages->setText(QStringLiteral("Searching"));
    const QPointer<PrntFrm1> self(this);
    const bool started = m_walker.start([self](search::SearchOutcome outcome) {
        if (self)
            self->reportWalked(outcome);
    });
    if (!started) {
        // The browser is in the middle of a search of its own.
        m_walking = false;
        m_reportMode.reset();
        m_afterWalk = nullptr;
        failed.errorString = QStringLiteral("A search is running - try again when it has ended");
        endJob(failed);
    }
}

void PrntFrm1::reportWalked(search::SearchOutcome outcome)
{
    m_walking = false;
    m_reportMode.reset();
    const std::function<void()> next = std::exchange(m_afterWalk, nullptr);
    if (outcome == search::SearchOutcome::EndOfTree) {
        m_walked = true;
        if (next)
            next();
        return;
    }
    // Stopped, or the report file could not be written: the browser has said
    // so, and nothing is printed.
    PrintResult result;
    result.cancelled = outcome == search::SearchOutcome::Cancelled;
    if (!result.cancelled)
        result.errorString = QStringLiteral("The report was not made");
    endJob(result, false);
}

void PrntFrm1::startJob(std::unique_ptr<QPrinter> printer)
{
    m_printer = std::move(printer);
    m_printStarted = false;
    setBusy(true);
    if (walksThroughBrowser())
        walkReport([this] { startPrinting(); });
    else
        startPrinting();
}

void PrntFrm1::startPrinting()
{
    PrintJobRequest request = jobRequest();
    request.reportWalked = m_walked;
    // Without the browser's walk the job walks the folders itself, in
    // report mode all along.
    if (request.tab == PrintTab::Report && !request.reportWalked)
        m_reportMode = std::make_unique<ReportModeScope>(m_state.reportMode);
    m_control = std::make_unique<JobControl>();
    m_control->progress = [this](int pages) {
        QMetaObject::invokeMethod(this, [this, pages] { showProgress(pages); }, Qt::QueuedConnection);
    };
    QPrinter *target = m_printer.get();
    // A stopped job gives the printer up before its document is closed.
    m_control->abort = [target] { target->abort(); };
    JobControl *control = m_control.get();
    m_printStarted = true;
    // QPainter may paint on a QPrinter from a worker thread; the window stays
    // alive and the Stop button is heard while the pages are made.
    m_watcher.setFuture(QtConcurrent::run([target, request, control] {
        return runPrintJob(*target, request, control);
    }));
}

void PrntFrm1::showProgress(int pages)
{
    m_pages->setText(QStringLiteral("%1 pages").arg(pages));
}

void PrntFrm1::stopJob()
{
    if (m_walking && m_walker.cancel)
        m_walker.cancel();
    else if (m_control)
        m_control->cancel = true;
}

void PrntFrm1::finishJob()
{
    endJob(m_watcher.result());
}

void PrntFrm1::endJob(const PrintResult &result, bool tell)
{
    const bool printerFailed = m_printer && m_printer->printerState() == QPrinter::Error;
    m_reportMode.reset();
    setBusy(false);
    // Only a finished job leaves its file: a stopped or failed one would
    // leave a part of the document behind.
    if (m_printer && m_printStarted && (result.cancelled || (!result.errorString.isEmpty() && result.pages > 0))
        && m_printer->outputFormat() == QPrinter::PdfFormat && !m_printer->outputFileName().isEmpty())
        QFile::remove(m_printer->outputFileName());
    if (tell && !result.errorString.isEmpty())
        m_services.messages.inform(result.errorString, this);
    else if (tell && printerFailed)
        m_services.messages.inform(QStringLiteral("The printer reported an error - ") + m_printer->printerName(),
                                   this);
    m_printer.reset();
    m_control.reset();
    m_printStarted = false;
    emit jobFinished(result);
}

void PrntFrm1::preview()
{
    if (m_running || !checkBeforePrinting())
        return;
    if (!walksThroughBrowser()) {
        m_walked = false;
        showPreview();
        return;
    }
    // The report's pages come from the walk: it runs first.
    setBusy(true);
    walkReport([this] {
        setBusy(false);
        showPreview();
    });
}

void PrntFrm1::showPreview()
{
    QPrinter printer(QPrinter::HighResolution);
    printer.setPageLayout(sharedPrinter().pageLayout());
    printer.setPageOrientation(QPageLayout::Portrait);
    QPrintPreviewDialog dialog(&printer, this);
    dialog.setObjectName(QStringLiteral("PrintPreview"));
    const bool walked = m_walked;
    connect(&dialog, &QPrintPreviewDialog::paintRequested, this, [this, walked](QPrinter *target) {
        PrintJobRequest request = jobRequest();
        request.reportWalked = walked;
        std::unique_ptr<ReportModeScope> mode;
        if (request.tab == PrintTab::Report && !walked)
            mode = std::make_unique<ReportModeScope>(m_state.reportMode);
        QApplication::setOverrideCursor(Qt::WaitCursor);
        const PrintResult result = runPrintJob(*target, request);
        QApplication::restoreOverrideCursor();
        if (!result.errorString.isEmpty())
            m_services.messages.inform(result.errorString, this);
    });
    dialog.exec();
}

void PrntFrm1::done(int result)
{
    // Closing waits for the job: OK and Cancel are off while it runs.
    if (m_running)
        return;
    QDialog::done(result);
}

QPrinter &sharedPrinter()
{
    static QPrinter printer(QPrinter::HighResolution);
    return printer;
}

void showPageSetup(QWidget *parent)
{
    QPageSetupDialog dialog(&sharedPrinter(), parent);
    dialog.setObjectName(QStringLiteral("PageSetup"));
    dialog.exec();
}

} // namespace tarnby::ui
