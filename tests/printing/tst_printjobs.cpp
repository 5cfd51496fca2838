#include "PdfReadBack.h"
#include "TestDir.h"

#include "core/printing/ListingPrint.h"
#include "core/printing/LocationReport.h"
#include "core/printing/PicturePrint.h"
#include "core/printing/TextPrint.h"
#include "core/search/DiskSearchTree.h"

#include <QFontMetricsF>
#include <QGuiApplication>
#include <QPageLayout>
#include <QScreen>
#include <QPdfWriter>
#include <QTest>

using namespace tarnby;
using namespace tarnby::printing;

namespace {

// Letter paper without margins: one unit of the page is one inch of paper.
void letter(QPdfWriter &writer)
{
    writer.setResolution(600);
    writer.setPageLayout(QPageLayout(QPageSize(QPageSize::Letter), QPageLayout::Portrait, QMarginsF(0, 0, 0, 0),
                                     QPageLayout::Inch));
}

// Runs job on a letter-sized PDF written to pdf; the file is complete when
// it returns.
PrintResult printToPdf(const QString &pdf, const std::function<PrintResult(QPdfWriter &)> &job)
{
    QPdfWriter writer(pdf);
    letter(writer);
    return job(writer);
}

// A table of generated rows that counts what it is asked for.
class GeneratedTable : public tables::Table
{
public:
    GeneratedTable(QList<tables::Field> fields, qint64 rows, std::function<QVariant(qint64, int)> cell)
        : m_fields(std::move(fields))
        , m_rows(rows)
        , m_cell(std::move(cell))
    {
    }
    QString name() const override { return QStringLiteral("generated"); }
    QList<tables::Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return {}; }
    qint64 rowCount() const override { return m_rows; }
    tables::Result<QList<tables::Row>> readRows(qint64 first, int count) override
    {
        largestRead = std::max(largestRead, count);
        QList<tables::Row> rows;
        for (qint64 r = first; r < std::min(m_rows, first + count); ++r) {
            tables::Row row;
            for (int f = 0; f < m_fields.size(); ++f)
                row.append(m_cell(r, f));
            rows.append(row);
        }
        return tables::Result<QList<tables::Row>>::success(rows);
    }
    int largestRead = 0;

private:
    QList<tables::Field> m_fields;
    qint64 m_rows;
    std::function<QVariant(qint64, int)> m_cell;
};

const QList<tables::Field> stockFields = {
    {QStringLiteral("ITEM"), tables::FieldType::Text, 12},
    {QStringLiteral("PRICE"), tables::FieldType::Double, 8},
    {QStringLiteral("NOTE"), tables::FieldType::Memo, 10},
};

// A file list that notes the report mode each time the walk lists a folder.
class ModeWatchingList : public search::SearchFileList
{
public:
    ModeWatchingList(search::SearchFileList &inner, const bool &mode)
        : m_inner(inner)
        , m_mode(mode)
    {
    }
    void setPattern(const QString &pattern) override { m_inner.setPattern(pattern); }
    bool setFolder(const QString &folder) override
    {
        modes.append(m_mode);
        return m_inner.setFolder(folder);
    }
    int fileCount() const override { return m_inner.fileCount(); }
    QStringList fileNames() const override { return m_inner.fileNames(); }
    QList<bool> modes;

private:
    search::SearchFileList &m_inner;
    const bool &m_mode;
};

} // namespace

class TestPrintJobs : public QObject
{
    Q_OBJECT

private slots:
    void boxValues_data();
    void boxValues();
    void picturePlacement_data();
    void picturePlacement();
    void pictureBoxesFilledFromResolution();
    void textJobHeaderPage();
    void webPageHasNoHeader();
    void textJobUnreadableFile();
    void columnsFitPortrait_data();
    void columnsFitPortrait();
    void listingFields_data();
    void listingFields();
    void listingWrapsAndBreaksPages();
    void listingReadsInBatches();
    void stoppedJobAbortsItsPrinter_data();
    void stoppedJobAbortsItsPrinter();
    void numbersAndDatesKeepToOneLine();
    void reportModeAroundWalk_data();
    void reportModeAroundWalk();
    void reportPrintsFoldersAndIndentedNames();
    void reportBreaksPagesWithHeader();
    void reportTitles_data();
    void reportTitles();
};

void TestPrintJobs::boxValues_data()
{
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("value");
    QTest::newRow("empty box") << "" << 0.0;
    QTest::newRow("blanks before a number") << "  2.5" << 2.5;
    QTest::newRow("number then letters") << "1.5in" << 1.5;
    QTest::newRow("letters only") << "abc" << 0.0;
    QTest::newRow("leading dot") << ".5" << 0.5;
    QTest::newRow("whole number") << "3" << 3.0;
}

void TestPrintJobs::boxValues()
{
    QFETCH(QString, text);
    QFETCH(double, value);
    QCOMPARE(boxValue(text), value);
}

void TestPrintJobs::picturePlacement_data()
{
    QTest::addColumn<QStringList>("boxes"); // title x, title y, x, y, width, height
    QTest::addColumn<QPointF>("redAt");     // inches: inside the picture
    QTest::addColumn<QPointF>("whiteAt");   // inches: just outside it
    QTest::newRow("empty boxes: top left corner")
        << QStringList{"", "", "", "", "", ""} << QPointF(0.5, 0.5) << QPointF(1.5, 0.5);
    QTest::newRow("placed at 2,3 one inch square")
        << QStringList{"0", "0", "2", "3", "1", "1"} << QPointF(2.5, 3.5) << QPointF(1.5, 3.5);
    QTest::newRow("stretched to 4 by 1")
        << QStringList{"", "", "1", "6", "4", "1"} << QPointF(4.5, 6.5) << QPointF(2.5, 7.5);
}

void TestPrintJobs::picturePlacement()
{
    QFETCH(QStringList, boxes);
    QFETCH(QPointF, redAt);
    QFETCH(QPointF, whiteAt);
    // One inch square at 96 dots an inch.
    QImage image(96, 96, QImage::Format_RGB32);
    image.fill(Qt::red);
    image.setDotsPerMeterX(3780);
    image.setDotsPerMeterY(3780);

    TestDir dir;
    const QString pdf = dir.filePath("picture.pdf");
    const PicturePlacement placement =
        placementFromBoxes(boxes[0], boxes[1], boxes[2], boxes[3], boxes[4], boxes[5], image);
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printPicture(writer, image, QStringLiteral("Harbour"), placement, PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.pages, 1);
    const QImage page = pdfreadback::render(pdf, 20);
    QVERIFY(!page.isNull());
    QCOMPARE(page.size(), QSize(170, 220));
    auto pixel = [&](QPointF inches) { return QColor(page.pixel(int(inches.x() * 20), int(inches.y() * 20))); };
    auto isRed = [](QColor c) { return c.red() > 220 && c.green() < 40 && c.blue() < 40; };
    QVERIFY2(isRed(pixel(redAt)), qPrintable(pixel(redAt).name()));
    QCOMPARE(pixel(whiteAt), QColor(Qt::white));

    const QList<pdfreadback::Word> words = pdfreadback::words(pdf);
    QCOMPARE(words.size(), 1);
    QCOMPARE(words[0].text, QStringLiteral("Harbour"));
    QVERIFY2(qAbs(words[0].x - boxValue(boxes[0])) < 0.1, qPrintable(QString::number(words[0].x)));
}

void TestPrintJobs::pictureBoxesFilledFromResolution()
{
    QImage image(300, 150, QImage::Format_RGB32);
    image.setDotsPerMeterX(qRound(150 / 0.0254));
    image.setDotsPerMeterY(qRound(150 / 0.0254));
    // Dots a metre are whole numbers: 150 dpi is 5906 dots a metre.
    auto near = [](QSizeF a, QSizeF b) { return qAbs(a.width() - b.width()) < 1e-3 && qAbs(a.height() - b.height()) < 1e-3; };
    QVERIFY(near(naturalSizeInches(image), QSizeF(2.0, 1.0)));
    // No resolution stated (or the default one): 96 dots an inch.
    QImage plain(192, 96, QImage::Format_RGB32);
    plain.setDotsPerMeterX(0);
    plain.setDotsPerMeterY(0);
    QVERIFY(near(naturalSizeInches(plain), QSizeF(2.0, 1.0)));
    // Larger than the page: made to fit, in proportion.
    QImage huge(1700, 1100, QImage::Format_RGB32);
    huge.setDotsPerMeterX(3780);
    huge.setDotsPerMeterY(3780);
    const QSizeF fitted = naturalSizeInches(huge);
    QVERIFY(qAbs(fitted.width() - 8.5) < 1e-9);
    QVERIFY(qAbs(fitted.height() - 5.5) < 1e-9);
}

void TestPrintJobs::textJobHeaderPage()
{
    TestDir dir;
    const QString text = dir.createFile("notes.txt", "First line of the notes\r\nSecond line\r\n");
    const QString pdf = dir.filePath("text.pdf");
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printTextFile(writer, text, false, PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.pages, 2);
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 2);
    // The header has the first page to itself, the text follows.
    QVERIFY(pages[0].contains(QStringLiteral("List Data for File: notes.txt")));
    QVERIFY(pages[0].contains(QStringLiteral("Page No. 1")));
    QVERIFY(!pages[0].contains(QStringLiteral("First line")));
    QVERIFY(pages[1].contains(QStringLiteral("First line of the notes")));
    QVERIFY(pages[1].contains(QStringLiteral("Second line")));
    // Title at 2.9 inches and the page number at 7.2, both 0.25 from the top.
    const QList<pdfreadback::Word> words = pdfreadback::words(pdf);
    QVERIFY(!words.isEmpty());
    QCOMPARE(words[0].text, QStringLiteral("List"));
    QVERIFY(qAbs(words[0].x - 2.9) < 0.05);
    QVERIFY(words[0].y > 0.2 && words[0].y < 0.4);
    const auto pageNo = std::find_if(words.begin(), words.end(), [](const auto &w) { return w.text == "Page"; });
    QVERIFY(pageNo != words.end());
    QVERIFY(qAbs(pageNo->x - 7.2) < 0.05);
}

void TestPrintJobs::webPageHasNoHeader()
{
    TestDir dir;
    const QString page = dir.createFile("site.htm", "<html><body><h1>Harbour news</h1><p>Boats are in.</p></body></html>");
    const QString pdf = dir.filePath("web.pdf");
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printTextFile(writer, page, false, PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.pages, 1);
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("Harbour news")));
    QVERIFY(pages[0].contains(QStringLiteral("Boats are in.")));
    QVERIFY(!pages[0].contains(QStringLiteral("List Data for File")));
}

void TestPrintJobs::textJobUnreadableFile()
{
    TestDir dir;
    const QString pdf = dir.filePath("none.pdf");
    QPdfWriter writer(pdf);
    letter(writer);
    const PrintResult missing = printTextFile(writer, dir.filePath("missing.txt"), false, PrintFont{});
    QVERIFY(!missing.ok());
    QVERIFY(!missing.errorString.isEmpty());
    const QString notRtf = dir.createFile("fake.rtf", "this is no rich text");
    const PrintResult fake = printTextFile(writer, notRtf, false, PrintFont{});
    QVERIFY(!fake.ok());
}

void TestPrintJobs::columnsFitPortrait_data()
{
    QTest::addColumn<int>("fieldCount");
    QTest::addColumn<int>("size");
    QTest::addColumn<bool>("narrowed");
    QTest::newRow("three small fields keep their widths") << 3 << 8 << false;
    QTest::newRow("ten 40-character fields are narrowed") << 10 << 40 << true;
    QTest::newRow("252 fields still fit the page") << 252 << 254 << true;
}

void TestPrintJobs::columnsFitPortrait()
{
    QFETCH(int, fieldCount);
    QFETCH(int, size);
    QFETCH(bool, narrowed);
    QList<tables::Field> fields;
    for (int i = 0; i < fieldCount; ++i)
        fields.append({QStringLiteral("F%1").arg(i), tables::FieldType::Text, size});
    const double characterWidth = 0.08;
    const QList<ListingColumn> columns = layoutColumns(fields, {}, characterWidth);
    QCOMPARE(columns.size(), fieldCount);
    QCOMPARE(columns.first().left, BodyLeftInches);
    const double right = columns.last().left + columns.last().width;
    QVERIFY2(right <= PageWidthInches - BodyLeftInches + 1e-9, qPrintable(QString::number(right)));
    for (int i = 1; i < columns.size(); ++i)
        QVERIFY(columns[i].left >= columns[i - 1].left + columns[i - 1].width - 1e-9);
    const double natural = std::clamp(size, 4, 40) * characterWidth;
    QCOMPARE(columns.first().width < natural - 1e-9, narrowed);
}

void TestPrintJobs::listingFields_data()
{
    QTest::addColumn<QStringList>("chosen");
    QTest::addColumn<QStringList>("printed");
    QTest::addColumn<QStringList>("absent");
    QTest::newRow("no field chosen prints every field")
        << QStringList{} << QStringList{"ITEM", "PRICE", "NOTE", "bolt", "0.25"} << QStringList{};
    QTest::newRow("chosen fields in their order")
        << QStringList{"NOTE", "ITEM"} << QStringList{"NOTE", "ITEM", "bolt"} << QStringList{"PRICE", "0.25"};
}

void TestPrintJobs::listingFields()
{
    QFETCH(QStringList, chosen);
    QFETCH(QStringList, printed);
    QFETCH(QStringList, absent);
    GeneratedTable table(stockFields, 3, [](qint64 row, int field) -> QVariant {
        if (field == 0)
            return QStringList{"bolt", "nut", "washer"}[int(row)];
        if (field == 1)
            return 0.25 * double(row + 1);
        return QStringLiteral("note %1").arg(row);
    });
    TestDir dir;
    const QString pdf = dir.filePath("listing.pdf");
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printListing(writer, table, chosen, QStringLiteral("STOCK.DBF"), PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.pages, 1);
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("List Data for File: STOCK.DBF")));
    QVERIFY(pages[0].contains(QStringLiteral("Page No. 1")));
    for (const QString &text : printed)
        QVERIFY2(pages[0].contains(text), qPrintable(text));
    for (const QString &text : absent)
        QVERIFY2(!pages[0].contains(text), qPrintable(text));
    // Column order follows the choice: the heading line names them in order.
    const QStringList lines = pdfreadback::lines(pages[0]);
    const auto heading = std::find_if(lines.begin(), lines.end(),
                                      [](const QString &l) { return l.contains(QLatin1String("ITEM")); });
    QVERIFY(heading != lines.end());
    const QStringList order = chosen.isEmpty() ? QStringList{"ITEM", "PRICE", "NOTE"} : chosen;
    for (int i = 1; i < order.size(); ++i)
        QVERIFY(heading->indexOf(order[i - 1]) < heading->indexOf(order[i]));
    // The rule of "-" under the names.
    QVERIFY(lines[heading - lines.begin() + 1].contains(QStringLiteral("----")));
}

void TestPrintJobs::listingWrapsAndBreaksPages()
{
    // 200 rows with a two-line memo and a long value: several pages, each
    // with the header and the column names.
    const QString longText = QStringLiteral("alpha beta gamma delta epsilon zeta eta theta iota kappa lambda mu nu "
                                            "xi omicron pi rho sigma tau upsilon phi chi psi omega");
    GeneratedTable table(stockFields, 200, [&](qint64 row, int field) -> QVariant {
        if (field == 0)
            return QStringLiteral("item%1").arg(row, 3, 10, QLatin1Char('0'));
        if (field == 1)
            return double(row);
        return row == 0 ? longText : QStringLiteral("first line %1\r\nsecond line %1").arg(row);
    });
    TestDir dir;
    const QString pdf = dir.filePath("long.pdf");
    int progressPages = 0;
    JobControl control;
    control.progress = [&](int pages) { progressPages = pages; };
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printListing(writer, table, {}, QStringLiteral("LONG.DBF"), PrintFont{}, &control);
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QVERIFY(result.pages > 3);
    QCOMPARE(progressPages, result.pages);
    const QStringList pages = pdfreadback::pages(pdf);
    QVERIFY(pages.size() > 3);
    for (int i = 0; i < pages.size(); ++i) {
        QVERIFY(pages[i].contains(QStringLiteral("List Data for File: LONG.DBF")));
        QVERIFY(pages[i].contains(QStringLiteral("Page No. %1").arg(i + 1)));
        QVERIFY(pages[i].contains(QStringLiteral("PRICE")));
    }
    // Every row is there, in order, and each row stays on one page.
    int next = 0;
    for (const QString &page : pages) {
        for (const QString &line : pdfreadback::lines(page)) {
            if (line.contains(QStringLiteral("item%1").arg(next, 3, 10, QLatin1Char('0'))))
                ++next;
        }
        if (next > 1) {
            const int last = next - 1;
            QVERIFY2(page.contains(QStringLiteral("second line %1").arg(last)), qPrintable(QString::number(last)));
        }
    }
    QCOMPARE(next, 200);
    // The long value wrapped within its column: all its words, none past the
    // page's right edge, over several lines.
    const QList<pdfreadback::Word> words = pdfreadback::words(pdf);
    double alphaY = -1, omegaY = -1, noteLeft = 10;
    for (const pdfreadback::Word &w : words) {
        QVERIFY2(w.x < PageWidthInches - BodyLeftInches, qPrintable(w.text));
        if (w.page == 1 && w.text == QLatin1String("alpha"))
            alphaY = w.y;
        if (w.page == 1 && w.text == QLatin1String("omega"))
            omegaY = w.y;
        if (w.page == 1 && w.text == QLatin1String("NOTE"))
            noteLeft = w.x;
    }
    QVERIFY(alphaY > 0 && omegaY > alphaY);
    for (const pdfreadback::Word &w : words) {
        if (w.page == 1 && w.y >= alphaY && w.y <= omegaY && w.text.size() > 1 && w.text[0].isLower()
            && !w.text.startsWith(QLatin1String("item")))
            QVERIFY2(w.x >= noteLeft - 0.01, qPrintable(w.text));
    }
}

void TestPrintJobs::listingReadsInBatches()
{
    GeneratedTable table(stockFields, 3000, [](qint64 row, int) -> QVariant { return row; });
    TestDir dir;
    QPdfWriter writer(dir.filePath("batches.pdf"));
    letter(writer);
    JobControl control;
    int calls = 0;
    control.progress = [&](int) {
        if (++calls == 3)
            control.cancel = true;
    };
    const PrintResult result = printListing(writer, table, {}, QStringLiteral("BIG.DBF"), PrintFont{}, &control);
    QVERIFY(result.cancelled);
    QVERIFY(table.largestRead <= ListingRowsPerRead);
    QVERIFY(result.pages < 20);
}

void TestPrintJobs::stoppedJobAbortsItsPrinter_data()
{
    QTest::addColumn<bool>("text");
    QTest::addColumn<bool>("stop");
    QTest::newRow("listing stopped") << false << true;
    QTest::newRow("listing finished") << false << false;
    QTest::newRow("text stopped") << true << true;
    QTest::newRow("text finished") << true << false;
}

void TestPrintJobs::stoppedJobAbortsItsPrinter()
{
    QFETCH(bool, text);
    QFETCH(bool, stop);
    TestDir dir;
    QPdfWriter writer(dir.filePath("out.pdf"));
    letter(writer);
    JobControl control;
    int pagesAtAbort = -1;
    int pages = 0;
    control.progress = [&](int done) {
        pages = done;
        if (stop && done == 2)
            control.cancel = true;
    };
    control.abort = [&] { pagesAtAbort = pages; };
    PrintResult result;
    if (text) {
        QByteArray lines;
        for (int i = 0; i < 2000; ++i)
            lines += "line " + QByteArray::number(i) + "\r\n";
        result = printTextFile(writer, dir.createFile("long.txt", lines), false, PrintFont{}, &control);
    } else {
        GeneratedTable table(stockFields, 3000, [](qint64 row, int) -> QVariant { return row; });
        result = printListing(writer, table, {}, QStringLiteral("BIG.DBF"), PrintFont{}, &control);
    }
    QCOMPARE(result.cancelled, stop);
    // Told once, when the job stops, and never when it ends on its own.
    if (stop)
        QVERIFY2(pagesAtAbort >= 2 && pagesAtAbort < 10, qPrintable(QString::number(pagesAtAbort)));
    else
        QCOMPARE(pagesAtAbort, -1);
}

void TestPrintJobs::numbersAndDatesKeepToOneLine()
{
    const QList<tables::Field> fields = {
        {QStringLiteral("ID"), tables::FieldType::Double, 8},
        {QStringLiteral("SOLD"), tables::FieldType::Date, 8},
        {QStringLiteral("NAME"), tables::FieldType::Text, 30},
    };
    GeneratedTable table(fields, 40, [](qint64 row, int field) -> QVariant {
        if (field == 0)
            return 12345678.0 + double(row);
        if (field == 1)
            return QDate(2000, 12, 28).addDays(row);
        return QStringLiteral("Item %1").arg(row, 22, 10, QLatin1Char('0'));
    });
    TestDir dir;
    const QString pdf = dir.filePath("dates.pdf");
    QVERIFY(printToPdf(pdf, [&](QPdfWriter &writer) {
                return printListing(writer, table, {}, QStringLiteral("D.DBF"), PrintFont{});
            }).ok());
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    // One line a row: the heading, the rule and 40 rows.
    int rows = 0;
    for (const QString &line : pdfreadback::lines(pages[0])) {
        if (line.contains(QLatin1String("Item ")))
            ++rows;
    }
    QCOMPARE(rows, 40);
    QVERIFY(pages[0].contains(QStringLiteral("2000-12-28")));
    QVERIFY(pages[0].contains(QStringLiteral("12345717")));
}

void TestPrintJobs::reportModeAroundWalk_data()
{
    QTest::addColumn<bool>("reportWritable");
    QTest::addColumn<bool>("cancelAtOnce");
    QTest::newRow("walk to the end") << true << false;
    QTest::newRow("report file cannot be written") << false << false;
    QTest::newRow("cancelled walk") << true << true;
}

void TestPrintJobs::reportModeAroundWalk()
{
    QFETCH(bool, reportWritable);
    QFETCH(bool, cancelAtOnce);
    TestDir dir;
    dir.createFile("tree/a/one.bmp");
    dir.createFile("tree/b/two.BMP");
    search::DiskSearchTree tree({dir.filePath("tree")});
    bool reportMode = false;
    ModeWatchingList list(tree, reportMode);
    const QString reportFile = reportWritable ? dir.filePath(ReportFileName) : dir.filePath("no/such/F@Prnt.INI");
    if (reportWritable)
        dir.createFile(ReportFileName, "##old\r\nstale.bmp\r\n");
    JobControl control;
    control.cancel = cancelAtOnce;
    const ReportWalk walk = runReportWalk(tree, list, QStringLiteral("*.BMP"), reportFile, reportMode, &control);
    QVERIFY(!reportMode);
    if (!reportWritable) {
        QCOMPARE(walk.outcome, search::SearchOutcome::ReportFailed);
        QVERIFY(!walk.errorString.isEmpty());
        return;
    }
    if (cancelAtOnce) {
        QCOMPARE(walk.outcome, search::SearchOutcome::Cancelled);
        // The report was made empty before the walk.
        QCOMPARE(dir.read(ReportFileName), QByteArray());
        return;
    }
    QCOMPARE(walk.outcome, search::SearchOutcome::EndOfTree);
    QVERIFY(!list.modes.isEmpty());
    QVERIFY(std::all_of(list.modes.begin(), list.modes.end(), [](bool on) { return on; }));
    QCOMPARE(walk.folders, 2);
    const QByteArray report = dir.read(ReportFileName);
    QVERIFY(!report.contains("stale"));
    QVERIFY(report.contains("one.bmp\r\n"));
    QVERIFY(report.contains("two.BMP\r\n"));
}

void TestPrintJobs::reportPrintsFoldersAndIndentedNames()
{
    TestDir dir;
    const QString reportFile =
        dir.createFile(ReportFileName, "##/data/pictures\r\nboat.bmp\r\nharbour.bmp\r\n##/data/old\r\nmap.bmp\r\n");
    const QString pdf = dir.filePath("report.pdf");
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printReport(writer, reportFile, reportTitle(QStringLiteral("*.BMP"), false, {}), PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.pages, 1);
    const QStringList pages = pdfreadback::pages(pdf);
    QCOMPARE(pages.size(), 1);
    QVERIFY(pages[0].contains(QStringLiteral("Folder Locations for File Type: *.BMP")));
    QVERIFY(pages[0].contains(QStringLiteral("Page No. 1")));
    // Each folder after a blank line, its names below it.
    QStringList body;
    for (const QString &line : pdfreadback::lines(pages[0]))
        body.append(line.trimmed());
    const qsizetype pictures = body.indexOf(QStringLiteral("/data/pictures"));
    QVERIFY(pictures > 0);
    QCOMPARE(body[pictures - 1], QString());
    QCOMPARE(body.mid(pictures + 1, 4),
             (QStringList{"boat.bmp", "harbour.bmp", QString(), "/data/old"}));
    QCOMPARE(body[pictures + 5], QStringLiteral("map.bmp"));
    // The names stand three blanks to the right of their folder.
    const QList<pdfreadback::Word> words = pdfreadback::words(pdf);
    double folderX = -1, nameX = -1;
    for (const pdfreadback::Word &w : words) {
        if (w.text == QLatin1String("/data/pictures"))
            folderX = w.x;
        if (w.text == QLatin1String("boat.bmp"))
            nameX = w.x;
    }
    const QFont font = PrintFont{}.toFont();
    const double threeBlanks = QFontMetricsF(font).horizontalAdvance(QStringLiteral("   "))
                               / QGuiApplication::primaryScreen()->logicalDotsPerInchX();
    QVERIFY(folderX > 0 && nameX > folderX);
    QVERIFY2(qAbs((nameX - folderX) - threeBlanks) < 0.03,
             qPrintable(QStringLiteral("%1 vs %2").arg(nameX - folderX).arg(threeBlanks)));
}

void TestPrintJobs::reportBreaksPagesWithHeader()
{
    TestDir dir;
    QByteArray lines;
    for (int folder = 0; folder < 20; ++folder) {
        lines += "##/srv/folder" + QByteArray::number(folder) + "\r\n";
        for (int name = 0; name < 10; ++name)
            lines += "file" + QByteArray::number(folder) + "_" + QByteArray::number(name) + ".bmp\r\n";
    }
    const QString reportFile = dir.createFile(ReportFileName, lines);
    const QString pdf = dir.filePath("pages.pdf");
    const PrintResult result = printToPdf(pdf, [&](QPdfWriter &writer) {
        return printReport(writer, reportFile, reportTitle({}, true, QStringLiteral("boat.bmp")), PrintFont{});
    });
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QVERIFY(result.pages >= 3);
    const QStringList pages = pdfreadback::pages(pdf);
    QVERIFY(pages.size() >= 3);
    QString all;
    for (int i = 0; i < pages.size(); ++i) {
        QVERIFY(pages[i].contains(QStringLiteral("Folder Locations for File: boat.bmp")));
        QVERIFY(pages[i].contains(QStringLiteral("Page No. %1").arg(i + 1)));
        all += pages[i];
    }
    QVERIFY(all.contains(QStringLiteral("file0_0.bmp")));
    QVERIFY(all.contains(QStringLiteral("file19_9.bmp")));
    QVERIFY(all.contains(QStringLiteral("/srv/folder19")));
}

void TestPrintJobs::reportTitles_data()
{
    QTest::addColumn<bool>("useFile");
    QTest::addColumn<QString>("title");
    QTest::newRow("file type") << false << "Folder Locations for File Type: *.JPG;*.JPE";
    QTest::newRow("use file") << true << "Folder Locations for File:  boat.jpg";
}

void TestPrintJobs::reportTitles()
{
    QFETCH(bool, useFile);
    QFETCH(QString, title);
    QCOMPARE(reportTitle(QStringLiteral("*.JPG;*.JPE"), useFile, QStringLiteral("boat.jpg")), title);
}

QTEST_MAIN(TestPrintJobs)
#include "tst_printjobs.moc"
