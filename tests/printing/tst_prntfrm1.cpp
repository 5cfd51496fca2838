#include "ModalCloser.h"
#include "PdfReadBack.h"
#include "UiFixture.h"

#include "core/printing/PrintTypes.h"
#include "ui/browser/Tarnby1.h"
#include "ui/printing/PrntFrm1.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPrinter>
#include <QPushButton>
#include <QTabWidget>
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
    void printerErrorKeepsWindowOpen();
    void browserCommands();

private:
    // Prints with a PDF printer instead of the system dialog; waits for the job.
    JobWatch print(PrntFrm1 &window, const QString &pdf, bool landscape = false);
    std::unique_ptr<UiFixture> m_ui;
};

JobWatch TestPrntFrm1::print(PrntFrm1 &window, const QString &pdf, bool landscape)
{
    JobWatch watch;
    window.setPrinterChooser([&](QPrinter &printer) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        if (landscape)
            printer.setPageOrientation(QPageLayout::Landscape);
        return true;
    });
    auto connection = connect(&window, &PrntFrm1::jobFinished, this, [&](const printing::PrintResult &result) {
        watch.finished = true;
        watch.result = result;
    });
    window.OKBtn_Click();
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
    PrntFrm1 window(m_ui->state, m_ui->services);
    window.setReportRoots({m_ui->home.filePath("tree")});
    window.findChild<QCheckBox *>("Check1")->setChecked(true);
    window.selectTab(tab);
    const QString pdf = m_ui->home.filePath("out.pdf");
    const JobWatch watch = print(window, pdf, true);
    QVERIFY(watch.finished);
    QVERIFY2(watch.result.ok(), qPrintable(watch.result.errorString));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{printing::PortraitOnly});
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
    PrntFrm1 window(m_ui->state, m_ui->services);
    window.setReportRoots({m_ui->home.filePath("tree")});
    window.selectTab(4);
    QCOMPARE(window.findChild<QLabel *>("Label4")->text(), QStringLiteral("*.PNG"));
    window.findChild<QCheckBox *>("Check1")->setChecked(true);
    const QString pdf = m_ui->home.filePath("report.pdf");
    JobWatch watch;
    bool modeDuringJob = false;
    window.setPrinterChooser([&](QPrinter &printer) {
        printer.setOutputFormat(QPrinter::PdfFormat);
        printer.setOutputFileName(pdf);
        return true;
    });
    connect(&window, &PrntFrm1::jobFinished, this, [&](const printing::PrintResult &result) {
        watch.finished = true;
        watch.result = result;
    });
    window.OKBtn_Click();
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
