#include "ModalCloser.h"
#include "PdfReadBack.h"
#include "UiFixture.h"

#include "core/browser/FolderTreeModel.h"
#include "core/browser/MountTable.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/printing/PrintTypes.h"
#include "core/search/FileSearch.h"
#include "core/viewer/DocumentRules.h"
#include "ui/browser/Tarnby1.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/printing/PrntFrm1.h"
#include "ui/tools/HelpWindow.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPrintPreviewDialog>
#include <QPrintPreviewWidget>
#include <QPrinter>
#include <QPushButton>
#include <QTabWidget>
#include <QSignalSpy>
#include <QTest>

using namespace tarnby;
using namespace tarnby::ui;

namespace {

// A stored dBASE III table: NAME C(10), QTY N(5), three records.
QByteArray smallDbf()
{
    QByteArray header(32, '\0');
    header[0] = 0x03;
    const qint32 records = 3;
    const qint16 headerSize = 32 + 2 * 32 + 1;
    const qint16 recordSize = 1 + 10 + 5;
    memcpy(header.data() + 4, &records, 4);
    memcpy(header.data() + 8, &headerSize, 2);
    memcpy(header.data() + 10, &recordSize, 2);
    auto field = [](const char *name, char type, int length) {
        QByteArray f(32, '\0');
        memcpy(f.data(), name, strlen(name));
        f[11] = type;
        f[16] = char(length);
        return f;
    };
    QByteArray data = header + field("NAME", 'C', 10) + field("QTY", 'N', 5) + '\r';
    for (const auto &[name, qty] : {std::pair{"anchor", "12"}, {"rope", "3"}, {"sail", "1"}})
        data += ' ' + QByteArray(name).leftJustified(10) + QByteArray(qty).rightJustified(5);
    return data + '\x1a';
}

struct JobWatch {
    bool finished = false;
    printing::PrintResult result;
};

QString pngBytesFile(TestDir &dir, const QString &name, QSize size, QColor colour)
{
    QImage image(size, QImage::Format_RGB32);
    image.fill(colour);
    image.setDotsPerMeterX(3780); // 96 dpi
    image.setDotsPerMeterY(3780);
    const QString path = dir.filePath(name);
    image.save(path);
    return path;
}

// Counts the pixels of a page near a colour.
int pixelsNear(const QImage &page, QColor colour)
{
    int count = 0;
    for (int y = 0; y < page.height(); ++y)
        for (int x = 0; x < page.width(); ++x) {
            const QColor c(page.pixel(x, y));
            if (std::abs(c.red() - colour.red()) < 40 && std::abs(c.green() - colour.green()) < 40
                && std::abs(c.blue() - colour.blue()) < 40)
                ++count;
        }
    return count;
}

} // namespace

class TestPrntFrm1 : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_ui = std::make_unique<UiFixture>(); }
    void cleanup() { m_ui.reset(); }

    void controls();
    void landscapeWarningOnEveryTab_data();
    void landscapeWarningOnEveryTab();
    void pictureToPdf();
    void listingAllFieldsWhenNoneChosen();
    void listingChosenField();
    void listingWithoutTables();
    void reportNeedsFileOrType();
    void reportUsesFileAndResetsMode();
    void reportWalksOnFromTheSavedPosition();
    void reportAsksAboutTheNetwork_data();
    void reportAsksAboutTheNetwork();
    void stopLeavesNoPdf_data();
    void stopLeavesNoPdf();
    void previewShowsThePages_data();
    void previewShowsThePages();
    void editedPicturePrintsAsShown();
    void helpOpensThePrintingTopic_data();
    void helpOpensThePrintingTopic();
    void printerErrorKeepsWindowOpen();
    void browserCommands();

private:
    // Prints with a PDF printer instead of the system dialog; waits for the job.
    JobWatch print(PrntFrm1 &window, const QString &pdf, bool landscape = false);
    QMetaObject::Connection startPrint(PrntFrm1 &window, const QString &pdf, JobWatch &watch, bool landscape = false);
    // A browser whose tree holds only folder (and the network node with the
    // given mounts), as the search tests make one.
    std::unique_ptr<Tarnby1> browserOver(const QString &folder, const QList<MountEntry> &network = {});
    std::unique_ptr<UiFixture> m_ui;
};

std::unique_ptr<Tarnby1> TestPrntFrm1::browserOver(const QString &folder, const QList<MountEntry> &network)
{
    auto browser = std::make_unique<Tarnby1>(m_ui->state, m_ui->services, m_ui->store);
    StartupRequest request;
    request.homeOption = m_ui->home.path();
    browser->load(request);
    FolderRoots roots;
    roots.volumes = {folder};
    roots.network = network;
    browser->folderTree()->setRoots(roots);
    return browser;
}

// Presses OK with the printer set to write pdf; watch notes when the job ends.
QMetaObject::Connection TestPrntFrm1::startPrint(PrntFrm1 &window, const QString &pdf, JobWatch &watch, bool landscape)
{
    window.setPrinterChooser([pdf, landscape](QPrinter &printer) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        if (landscape)
            printer.setPageOrientation(QPageLayout::Landscape);
        return true;
    });
    auto connection = connect(&window, &PrntFrm1::jobFinished, this, [&watch](const printing::PrintResult &result) {
        watch.finished = true;
        watch.result = result;
    });
    window.OKBtn_Click();
    return connection;
}

JobWatch TestPrntFrm1::print(PrntFrm1 &window, const QString &pdf, bool landscape)
{
    JobWatch watch;
    const auto connection = startPrint(window, pdf, watch, landscape);
    if (window.jobRunning())
        if (!QTest::qWaitFor([&] { return watch.finished; }, 60000))
            qWarning("the print job did not finish");
    disconnect(connection);
    return watch;
}

void TestPrntFrm1::controls()
{
    m_ui->state.currentFile = m_ui->home.createFile("notes.txt", "hello");
    PrntFrm1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.windowTitle(), QStringLiteral("Print File - notes.txt"));
    QCOMPARE(window.selectedTab(), 2); // a text file opens on the text tab
    const QList<QPair<QString, QString>> tooltips = {
        {"Text1", "Enter Title or Description to Print on Page"},
        {"DXPos", "Enter Left Position to print on page"},
        {"DYPos", "Enter Left Position to print on page"},
        {"XPos", "Enter Left Position to print on page"},
        {"YPos", "Enter Top Position to print on page"},
        {"PictWidth", "Enter Width of Image on Page"},
        {"PictHeight", "Enter Height of Image on Page"},
        {"List3", "Select Table or Record Type to View Fields"},
        {"List1", "Field List for file to be printed"},
        {"List2", "Fields to be printed in report"},
        {"RightBtn", "Select Field to Print"},
        {"LefttBtn", "Reverse Field Selection to Print"},
        {"AllRightBtn", "Select All Fields to Print"},
        {"AllLeftBtn", "Unselect All Fields to Print"},
        {"Check1", "Use the Current file to find instead of a File Type listed below"},
        {"FontBtn", "Set Font to Print"},
        {"OKBtn", "Click OK to Select Print Options and Print"},
        {"HelpBtn", "Help with Print Selection"},
        {"CancelBtn", "Close Print Selection Window"},
    };
    for (const auto &[name, tooltip] : tooltips) {
        auto *widget = window.findChild<QWidget *>(name);
        QVERIFY2(widget, qPrintable(name));
        QCOMPARE(widget->toolTip(), tooltip);
    }
    QStringList labels;
    for (QLabel *label : window.findChildren<QLabel *>())
        labels << label->text();
    for (const char *text : {"Enter Description and Position to Print:", "Values in Inches", "Image Width:",
                             "Image Height:", "Image X Pos:", "Image Y Pos:", "Database Listing", "File Fields",
                             "Print Fields", "Print all Locations for the Selected File", "- OR -",
                             "All folder locations and Files will be printed",
                             "for the File Type Selected on the Search", "No File Types Selected", "Printing"})
        QVERIFY2(labels.contains(QLatin1String(text)), text);
    QVERIFY(window.findChild<QLabel *>("Label1")->text().startsWith(QStringLiteral("Print Text for")));
    QCOMPARE(window.findChild<QCheckBox *>("Check1")->text(), QStringLiteral("Use File"));
    QCOMPARE(window.findChild<QPushButton *>("FontBtn")->text(), QStringLiteral("Font"));
    QVERIFY(window.findChild<QWidget *>("RichTextBox1"));
    QVERIFY(window.findChild<QWidget *>("WebBrowser1"));
    QVERIFY(window.findChild<QWidget *>("FramePicture"));
    QVERIFY(!window.findChild<QWidget *>("Frame2")->isVisible());
    QCOMPARE(window.findChild<QTabWidget *>("TabStrip1")->count(), 4);
    // The default print font stands in for the old bitmap sans serif.
    QCOMPARE(window.printFont().family, printing::PrintFont::defaultFamily());
}

void TestPrntFrm1::landscapeWarningOnEveryTab_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<QString>("file");
    QTest::newRow("picture tab") << 1 << "boat.png";
    QTest::newRow("text tab") << 2 << "notes.txt";
    QTest::newRow("listing tab") << 3 << "stock.dbf";
    QTest::newRow("report tab") << 4 << "boat.png";
}

void TestPrntFrm1::landscapeWarningOnEveryTab()
{
    QFETCH(int, tab);
    QFETCH(QString, file);
    QImage image(50, 50, QImage::Format_RGB32);
    image.fill(Qt::green);
    image.save(m_ui->home.filePath("boat.png"));
    m_ui->home.createFile("notes.txt", "some text\r\n");
    m_ui->home.createFile("stock.dbf", smallDbf());
    m_ui->home.createFile("tree/boat.png", "x");
    m_ui->state.currentFile = m_ui->home.filePath(file);
    const auto browser = browserOver(m_ui->home.filePath("tree"));
    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.findChild<QCheckBox *>("Check1")->setChecked(true);
    window.selectTab(tab);
    const QString pdf = m_ui->home.filePath("out.pdf");
    const JobWatch watch = print(window, pdf, true);
    QVERIFY(watch.finished);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QCOMPARE(m_ui->responder.messageTexts().value(0), QLatin1String(printing::PortraitOnly));
    // The report's walk ends as a search does; no other tab says more.
    QCOMPARE(m_ui->responder.messageTexts().mid(1),
             tab == 4 ? (QStringList{"Do You want to Search the Network?", " End of Search . . ."}) : QStringList{});
    // Printed upright all the same.
    const QImage page = pdfreadback::render(pdf, 10);
    QVERIFY(!page.isNull());
    QVERIFY(page.height() > page.width());
    QVERIFY(window.findChild<QPushButton *>("OKBtn")->isEnabled());
    QVERIFY(window.findChild<QPushButton *>("CancelBtn")->isEnabled());
    QVERIFY(!window.findChild<QWidget *>("Frame2")->isVisible());
}

void TestPrntFrm1::pictureToPdf()
{
    QImage image(192, 96, QImage::Format_RGB32); // 2 by 1 inches at 96 dpi
    image.fill(Qt::blue);
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);
    image.save(m_ui->home.filePath("boat.png"));
    m_ui->state.currentFile = m_ui->home.filePath("boat.png");
    PrntFrm1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.selectedTab(), 1);
    // The size boxes start at the picture's size, the positions empty.
    QCOMPARE(window.findChild<QLineEdit *>("PictWidth")->text(), QStringLiteral("2.00"));
    QCOMPARE(window.findChild<QLineEdit *>("PictHeight")->text(), QStringLiteral("1.00"));
    QVERIFY(window.findChild<QLineEdit *>("XPos")->text().isEmpty());
    window.findChild<QLineEdit *>("Text1")->setText(QStringLiteral("Blue Boat"));
    window.findChild<QLineEdit *>("YPos")->setText(QStringLiteral("3"));
    const JobWatch watch = print(window, m_ui->home.filePath("picture.pdf"));
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QVERIFY2(m_ui->responder.messages().isEmpty(), qPrintable(m_ui->responder.messageTexts().join('|')));
    const QStringList pages = pdfreadback::pages(m_ui->home.filePath("picture.pdf"));
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("Blue Boat")));
    // Blue below the title, from the left edge of the printable area.
    const QImage page = pdfreadback::render(m_ui->home.filePath("picture.pdf"), 20);
    int blueRows = 0;
    for (int y = 0; y < page.height(); ++y) {
        const QColor c(page.pixel(page.width() / 8, y));
        if (c.blue() > 200 && c.red() < 60)
            ++blueRows;
    }
    QVERIFY2(blueRows > 10, qPrintable(QString::number(blueRows)));
    QVERIFY(QColor(page.pixel(page.width() / 8, page.height() / 10)).blue() < 250
            || QColor(page.pixel(page.width() / 8, page.height() / 10)).red() > 200);
}

void TestPrntFrm1::listingAllFieldsWhenNoneChosen()
{
    m_ui->state.currentFile = m_ui->home.createFile("stock.dbf", smallDbf());
    PrntFrm1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.selectedTab(), 3);
    QCOMPARE(window.findChild<QListWidget *>("List3")->count(), 1);
    QCOMPARE(window.findChild<QListWidget *>("List1")->count(), 2);
    QCOMPARE(window.findChild<QListWidget *>("List2")->count(), 0);
    const JobWatch watch = print(window, m_ui->home.filePath("listing.pdf"));
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QCOMPARE(window.findChild<QListWidget *>("List2")->count(), 2);
    const QStringList pages = pdfreadback::pages(m_ui->home.filePath("listing.pdf"));
    QCOMPARE(pages.size(), 1);
    for (const char *text : {"List Data for File: stock.dbf", "Page No. 1", "NAME", "QTY", "anchor", "rope", "sail", "12"})
        QVERIFY2(pages[0].contains(QLatin1String(text)), text);
}

void TestPrntFrm1::listingChosenField()
{
    m_ui->state.currentFile = m_ui->home.createFile("stock.dbf", smallDbf());
    PrntFrm1 window(m_ui->state, m_ui->services);
    auto *fields = window.findChild<QListWidget *>("List1");
    fields->setCurrentRow(1); // QTY
    window.findChild<QPushButton *>("RightBtn")->click();
    QCOMPARE(window.findChild<QListWidget *>("List2")->item(0)->text(), QStringLiteral("QTY"));
    window.findChild<QPushButton *>("AllRightBtn")->click();
    window.findChild<QPushButton *>("AllLeftBtn")->click();
    QCOMPARE(window.findChild<QListWidget *>("List2")->count(), 0);
    fields->setCurrentItem(fields->findItems(QStringLiteral("NAME"), Qt::MatchExactly).value(0));
    window.findChild<QPushButton *>("RightBtn")->click();
    QCOMPARE(window.findChild<QListWidget *>("List2")->item(0)->text(), QStringLiteral("NAME"));
    const JobWatch watch = print(window, m_ui->home.filePath("name.pdf"));
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    const QStringList pages = pdfreadback::pages(m_ui->home.filePath("name.pdf"));
    QVERIFY(pages[0].contains(QStringLiteral("anchor")));
    QVERIFY(!pages[0].contains(QStringLiteral("QTY")));
}

void TestPrntFrm1::listingWithoutTables()
{
    m_ui->state.currentFile = m_ui->home.createFile("broken.dbf", "not a table at all");
    PrntFrm1 window(m_ui->state, m_ui->services);
    bool asked = false;
    window.setPrinterChooser([&](QPrinter &) { return asked = true; });
    window.OKBtn_Click();
    QVERIFY(!asked);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Database File Cannot be Opened"});
}

void TestPrntFrm1::reportNeedsFileOrType()
{
    m_ui->state.currentFile = m_ui->home.createFile("boat.png", "x");
    PrntFrm1 window(m_ui->state, m_ui->services);
    window.selectTab(4);
    QCOMPARE(window.findChild<QLabel *>("Label4")->text(), QStringLiteral("No File Types Selected"));
    bool asked = false;
    window.setPrinterChooser([&](QPrinter &) { return asked = true; });
    window.OKBtn_Click();
    QVERIFY(!asked);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"You must Select File or File Type for Report"});
}

void TestPrntFrm1::reportUsesFileAndResetsMode()
{
    m_ui->home.createFile("tree/a/boat.png", "x");
    m_ui->home.createFile("tree/b/c/boat.png", "x");
    m_ui->home.createFile("tree/b/other.png", "x");
    m_ui->state.currentFile = m_ui->home.filePath("tree/a/boat.png");
    m_ui->state.searchPattern = QStringLiteral("*.PNG");
    const auto browser = browserOver(m_ui->home.filePath("tree"));
    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.selectTab(4);
    QCOMPARE(window.findChild<QLabel *>("Label4")->text(), QStringLiteral("*.PNG"));
    window.findChild<QCheckBox *>("Check1")->setChecked(true);
    const QString pdf = m_ui->home.filePath("report.pdf");
    JobWatch watch;
    bool modeDuringJob = false;
    startPrint(window, pdf, watch);
    modeDuringJob = m_ui->state.reportMode;
    QTRY_VERIFY_WITH_TIMEOUT(watch.finished, 60000);
    QVERIFY(modeDuringJob);
    QVERIFY(!m_ui->state.reportMode);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("Folder Locations for File: boat.png")));
    QVERIFY(pages[0].contains(m_ui->home.filePath("tree/b/c")));
    QVERIFY(!pages[0].contains(QStringLiteral("other.png")));
    // The report file stays in the program folder.
    QVERIFY(m_ui->home.read(printing::ReportFileName).contains("##"));
    // The file's name became the search pattern.
    QCOMPARE(m_ui->state.searchPattern, QStringLiteral("boat.png"));
}

void TestPrntFrm1::reportWalksOnFromTheSavedPosition()
{
    m_ui->home.createFile("tree/a/one.png", "x");
    m_ui->home.createFile("tree/b/two.png", "x");
    m_ui->home.createFile("tree/c/three.png", "x");
    m_ui->state.currentFile = m_ui->home.filePath("tree/a/one.png");
    const auto browser = browserOver(m_ui->home.filePath("tree"));
    // A search stops at the first folder; the report goes on after it.
    m_ui->responder.answerMessage(MessageAnswer::No); // the network node, second in the tree
    m_ui->state.searchPattern = QStringLiteral("*.PNG");
    QSignalSpy searched(browser.get(), &Tarnby1::searchFinished);
    browser->FindFileRoutine();
    QVERIFY(searched.wait(30000));
    const int after = browser->fileSearch()->position();
    QVERIFY(after > 0);

    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.selectTab(4);
    const QString pdf = m_ui->home.filePath("report.pdf");
    const JobWatch watch = print(window, pdf);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QVERIFY(!m_ui->state.reportMode);
    // The network was passed by the first walk: asked once, then the end.
    QCOMPARE(m_ui->responder.messageTexts(),
             (QStringList{"Do You want to Search the Network?", " End of Search . . ."}));
    QCOMPARE(browser->fileSearch()->position(), 0);
    const QString report = QString::fromUtf8(m_ui->home.read(printing::ReportFileName));
    QVERIFY(!report.contains(QStringLiteral("one.png")));
    QVERIFY(report.contains(QStringLiteral("##") + m_ui->home.filePath("tree/b") + QStringLiteral("\r\ntwo.png")));
    const QString text = pdfreadback::pages(pdf).join(QLatin1Char('\n'));
    QVERIFY(text.contains(QStringLiteral("Folder Locations for File Type: *.PNG")));
    QVERIFY(text.contains(QStringLiteral("three.png")));
    QVERIFY(!text.contains(QStringLiteral("one.png")));
    // The browser shows the last folder the walk examined.
    QVERIFY(browser->windowTitle().startsWith(QStringLiteral("Tarnby 3.0 - ")));
}

void TestPrntFrm1::reportAsksAboutTheNetwork_data()
{
    QTest::addColumn<bool>("answer");
    QTest::newRow("no: the share is left out") << false;
    QTest::newRow("yes: the share is walked") << true;
}

void TestPrntFrm1::reportAsksAboutTheNetwork()
{
    QFETCH(bool, answer);
    m_ui->home.createFile("tree/a/one.png", "x");
    TestDir share; // stands in for a mounted network share
    share.createFile("pictures/far.png", "x");
    const MountEntry mount{QStringLiteral("//nas/share"), share.path(), QStringLiteral("cifs")};
    m_ui->state.currentFile = m_ui->home.filePath("tree/a/one.png");
    m_ui->state.searchPattern = QStringLiteral("*.PNG");
    const auto browser = browserOver(m_ui->home.filePath("tree"), {mount});
    m_ui->responder.answerMessage(answer ? MessageAnswer::Yes : MessageAnswer::No);
    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.selectTab(4);
    const QString pdf = m_ui->home.filePath("report.pdf");
    const JobWatch watch = print(window, pdf);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QCOMPARE(m_ui->responder.messageTexts(),
             (QStringList{"Do You want to Search the Network?", " End of Search . . ."}));
    const QString text = pdfreadback::pages(pdf).join(QLatin1Char('\n'));
    QVERIFY(text.contains(QStringLiteral("one.png")));
    QCOMPARE(text.contains(QStringLiteral("far.png")), answer);
    QCOMPARE(browser->folderTree()->isListed(browser->folderTree()->findPath(share.path())), answer);
}

void TestPrntFrm1::stopLeavesNoPdf_data()
{
    QTest::addColumn<int>("tab");
    QTest::addColumn<bool>("waitForPages");
    QTest::newRow("text, stopped at once") << 2 << false;
    QTest::newRow("text, stopped after the first pages") << 2 << true;
    QTest::newRow("report, stopped while walking") << 4 << false;
}

void TestPrntFrm1::stopLeavesNoPdf()
{
    QFETCH(int, tab);
    QFETCH(bool, waitForPages);
    QByteArray text;
    for (int i = 0; i < 60000; ++i)
        text += "line " + QByteArray::number(i) + " of a long file to print\r\n";
    m_ui->state.currentFile = m_ui->home.createFile("long.txt", text);
    m_ui->home.createFile("tree/a/long.txt", "x");
    for (int i = 0; i < 300; ++i)
        m_ui->home.createFolder(QStringLiteral("tree/f%1").arg(i));
    m_ui->state.searchPattern = QStringLiteral("*.TXT");
    const auto browser = browserOver(m_ui->home.filePath("tree"));
    m_ui->responder.answerMessage(MessageAnswer::No); // the network
    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.show();
    window.selectTab(tab);
    const QString pdf = m_ui->home.filePath("out.pdf");
    JobWatch watch;
    startPrint(window, pdf, watch);
    QVERIFY(window.jobRunning());
    auto *pages = window.findChild<QLabel *>("LblPages");
    if (waitForPages)
        QTRY_VERIFY_WITH_TIMEOUT(pages->text().endsWith(QStringLiteral("pages")), 30000);
    QVERIFY(window.findChild<QWidget *>("Frame2")->isVisible());
    window.findChild<QPushButton *>("StopBtn")->click();
    QTRY_VERIFY_WITH_TIMEOUT(watch.finished, 60000);
    QVERIFY(watch.result.cancelled);
    QVERIFY2(!QFile::exists(pdf), "a stopped job leaves no document behind");
    QVERIFY(!m_ui->state.reportMode);
    QCOMPARE(m_ui->responder.messageTexts(),
             tab == 4 ? (QStringList{"   Search Cancelled"}) : QStringList{});
    // The window is itself again: it prints and closes.
    QVERIFY(!window.jobRunning());
    QVERIFY(!window.findChild<QWidget *>("Frame2")->isVisible());
    QVERIFY(window.findChild<QPushButton *>("OKBtn")->isEnabled());
    QVERIFY(window.findChild<QPushButton *>("CancelBtn")->isEnabled());
    if (tab == 4) {
        m_ui->responder.answerMessage(MessageAnswer::No);
        const JobWatch again = print(window, pdf);
        QVERIFY2(again.result.ok(), qPrintable(again.result.errorString));
        QVERIFY(pdfreadback::pages(pdf).join(QString()).contains(m_ui->home.filePath("tree/a")));
    }
    window.findChild<QPushButton *>("CancelBtn")->click();
    QVERIFY(!window.isVisible());
}

void TestPrntFrm1::previewShowsThePages_data()
{
    QTest::addColumn<int>("tab");
    QTest::newRow("text") << 2;
    QTest::newRow("report, walked first") << 4;
}

void TestPrntFrm1::previewShowsThePages()
{
    QFETCH(int, tab);
    QByteArray text;
    for (int i = 0; i < 120; ++i)
        text += "preview line " + QByteArray::number(i) + "\r\n";
    m_ui->state.currentFile = m_ui->home.createFile("tree/a/notes.txt", text);
    m_ui->home.createFile("tree/b/more.txt", "x");
    m_ui->state.searchPattern = QStringLiteral("*.TXT");
    const auto browser = browserOver(m_ui->home.filePath("tree"));
    PrntFrm1 window(m_ui->state, m_ui->services);
    browser->preparePrintWindow(window);
    window.selectTab(tab);
    int previewPages = -1;
    QImage shown;
    whenModal(QStringLiteral("PrintPreview"), [&](QDialog *dialog) {
        auto *view = dialog->findChild<QPrintPreviewWidget *>();
        if (view) {
            view->setViewMode(QPrintPreviewWidget::AllPagesView);
            if (!QTest::qWaitFor([&] { return view->pageCount() > 0; }, 10000))
                qWarning("the preview shows no page");
            previewPages = view->pageCount();
            QTest::qWait(50);
            shown = view->grab().toImage();
        }
        dialog->reject();
    });
    m_ui->responder.answerMessage(MessageAnswer::No); // the network, when the report walks
    window.findChild<QPushButton *>("PreviewBtn")->click();
    QTRY_VERIFY_WITH_TIMEOUT(previewPages >= 0, 30000);
    // The preview shows the pages the printer gets.
    if (tab == 4)
        m_ui->responder.answerMessage(MessageAnswer::No);
    const QString pdf = m_ui->home.filePath("out.pdf");
    const JobWatch watch = print(window, pdf);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    const QStringList printed = pdfreadback::pages(pdf);
    QCOMPARE(previewPages, printed.size());
    QVERIFY(previewPages >= (tab == 2 ? 3 : 1));
    QVERIFY(!m_ui->state.reportMode);
    // Painted, not blank: the page's text is dark on white.
    QVERIFY(!shown.isNull());
    QVERIFY2(pixelsNear(shown, Qt::black) > 50, "the preview shows the pages' text");
    QVERIFY(window.findChild<QPushButton *>("OKBtn")->isEnabled());
}

void TestPrntFrm1::editedPicturePrintsAsShown()
{
    const QString path = pngBytesFile(m_ui->home, QStringLiteral("red.png"), QSize(96, 96), Qt::red);
    const auto browser = browserOver(m_ui->home.path());
    MDIForm1 *frame = browser->frame();
    auto *window = qobject_cast<ChildFrm1 *>(
        frame->NewWindowFile(path, viewer::kindOf(catalogue::GetFileTypeFlag(path))));
    QVERIFY(window);
    QSignalSpy shown(window, &ChildFrm1::documentShown);
    QVERIFY(shown.wait(30000));
    window->mnuImageInvert_Click(); // red turns cyan in the window, not on disk
    const QString pdf = m_ui->home.filePath("picture.pdf");
    JobWatch watch;
    whenModal(QStringLiteral("PrntFrm1"), [&](QDialog *dialog) {
        startPrint(*qobject_cast<PrntFrm1 *>(dialog), pdf, watch);
        if (!QTest::qWaitFor([&] { return watch.finished; }, 30000))
            qWarning("the print job did not finish");
        dialog->reject();
    });
    window->mnuFilePrint_Click();
    QVERIFY(watch.finished);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    const QImage page = pdfreadback::render(pdf, 20);
    QVERIFY(!page.isNull());
    QVERIFY2(pixelsNear(page, QColor(0, 255, 255)) > 100, "the edited picture is printed");
    QCOMPARE(pixelsNear(page, Qt::red), 0);
}

void TestPrntFrm1::helpOpensThePrintingTopic_data()
{
    QTest::addColumn<bool>("fromFrame");
    QTest::newRow("print window of the browser") << false;
    QTest::newRow("print window of a document window") << true;
}

void TestPrntFrm1::helpOpensThePrintingTopic()
{
    QFETCH(bool, fromFrame);
    const QString path = pngBytesFile(m_ui->home, QStringLiteral("blue.png"), QSize(20, 20), Qt::blue);
    m_ui->state.currentFile = path;
    const auto browser = browserOver(m_ui->home.path());
    bool helped = false;
    whenModal(QStringLiteral("PrntFrm1"), [&](QDialog *dialog) {
        dialog->findChild<QPushButton *>("HelpBtn")->click();
        helped = true;
        dialog->reject();
    });
    if (fromFrame) {
        auto *window = qobject_cast<ChildFrm1 *>(browser->frame()->NewWindowFile(path, viewer::DocumentKind::Picture));
        QVERIFY(window);
        QSignalSpy shown(window, &ChildFrm1::documentShown);
        QVERIFY(shown.wait(30000));
        window->mnuFilePrint_Click();
    } else {
        browser->runCommand(commands::BrowserAction::PrintFile);
    }
    QVERIFY(helped);
    auto *help = browser->findChild<HelpWindow *>();
    QVERIFY(help);
    QVERIFY(help->isVisible());
    QCOMPARE(help->currentPage(), QStringLiteral("printing.html"));
}

void TestPrntFrm1::printerErrorKeepsWindowOpen()
{
    m_ui->state.currentFile = m_ui->home.createFile("notes.txt", "hello\r\n");
    PrntFrm1 window(m_ui->state, m_ui->services);
    window.show();
    const JobWatch watch = print(window, m_ui->home.filePath("no/such/folder/out.pdf"));
    QVERIFY(watch.finished);
    QVERIFY(!watch.result.ok());
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"The printer could not be started."});
    QVERIFY(window.isVisible());
    QVERIFY(window.findChild<QPushButton *>("OKBtn")->isEnabled());
}

void TestPrntFrm1::browserCommands()
{
    Tarnby1 browser(m_ui->state, m_ui->services, m_ui->store);
    m_ui->state.currentFile = m_ui->home.createFile("notes.txt", "hello\r\n");
    ModalCloser closer;
    browser.runCommand(commands::BrowserAction::PrintFile);
    browser.runCommand(commands::BrowserAction::PrinterSetup);
    QCOMPARE(closer.seen().value(0), QStringLiteral("PrntFrm1"));
    QCOMPARE(closer.seen().size(), 2);
}

QTEST_MAIN(TestPrntFrm1)
#include "tst_prntfrm1.moc"
