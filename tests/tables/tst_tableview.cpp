#include "DbfSamples.h"
#include "Fixtures.h"
#include "ModalCloser.h"
#include "SqliteSamples.h"
#include "UiFixture.h"
#include "XlsSamples.h"

#include "core/app/SettingsStore.h"
#include "core/app/Twips.h"
#include "core/tables/TableModel.h"
#include "core/viewer/Document.h"
#include "ui/browser/Tarnby1.h"
#include "ui/frame/ChildFrm1.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/MDIForm1.h"
#include "ui/tables/ProPert1.h"
#include "ui/viewer/TableDocumentView.h"

#include <QAction>
#include <QClipboard>
#include <QDir>
#include <QFrame>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMdiArea>
#include <QMdiSubWindow>
#include <QPointer>
#include <QPushButton>
#include <QSignalSpy>
#include <QTableView>
#include <QTest>
#include <QTextEdit>
#include <QThreadPool>
#include <QToolButton>

using namespace tarnby;
using namespace tarnby::ui;
using dbfsamples::FieldSpec;

namespace {

const QList<QByteArray> Memos = {"first memo\r\nof two lines", "second memo"};

// people.dbf with its dBASE III memo file: ID, ACTIVE, NAME (40), NOTES
// (memo), WHEN (date); two records.
QString writePeople(TestDir &dir)
{
    QList<int> blocks;
    dir.createFile(QStringLiteral("people.dbt"), dbfsamples::dbaseIIIMemo(Memos, &blocks));
    dbfsamples::TableSpec layout;
    layout.version = 0x83;
    layout.fields = {FieldSpec{"ID", 'N', 3}, FieldSpec{"ACTIVE", 'L', 1}, FieldSpec{"NAME", 'C', 40},
                     FieldSpec{"NOTES", 'M', 10}, FieldSpec{"WHEN", 'D', 8}};
    layout.records = {
        {dbfsamples::number("1", 3), "T", dbfsamples::text("Ann", 40), dbfsamples::memoPointer(blocks[0]), "20240131"},
        {dbfsamples::number("2", 3), "F", dbfsamples::text("Bob", 40), dbfsamples::memoPointer(blocks[1]), "20230704"},
    };
    return dir.createFile(QStringLiteral("people.dbf"), dbfsamples::table(layout));
}

// An SQLite database named ".db" with two tables; people has two indexes.
QString writeSqlite(TestDir &dir)
{
    const QString path = dir.filePath(QStringLiteral("towns.db"));
    const bool written = writeSqliteFile(
        path, {QStringLiteral("CREATE TABLE people (name TEXT, city TEXT)"),
               QStringLiteral("INSERT INTO people VALUES ('Cy', 'bern'), ('Al', 'Zug'), ('Bo', 'aarau'), ('Di', NULL)"),
               QStringLiteral("CREATE INDEX bycity ON people (city COLLATE NOCASE DESC)"),
               QStringLiteral("CREATE INDEX byname ON people (name)"), QStringLiteral("CREATE TABLE empty (x INTEGER)")});
    return written ? path : QString();
}

// The file a data row names: "people" (people.dbf with an index of two
// tags), "towns" (the SQLite database), else a sample file of the corpus.
QString tablePath(TestDir &dir, const QString &file)
{
    if (file == QLatin1String("towns"))
        return writeSqlite(dir);
    if (file == QLatin1String("people")) {
        dir.createFile(QStringLiteral("people.mdx"),
                       dbfsamples::mdxIndexWithKeys({{"BYNAME", "UPPER(NAME)", true}, {"BYWHEN", "DTOS(WHEN)", false}}));
        return writePeople(dir);
    }
    return fixtures::path(file);
}

// How many of this process's file descriptors point at path.
int openHandlesOn(const QString &path)
{
    const QString target = QFileInfo(path).canonicalFilePath();
    int count = 0;
    const QDir fds(QStringLiteral("/proc/self/fd"));
    for (const QFileInfo &fd : fds.entryInfoList(QDir::System | QDir::Files | QDir::NoDotAndDotDot))
        count += fd.symLinkTarget() == target ? 1 : 0;
    return count;
}

QStringList texts(const QWidget *parent, const QString &name)
{
    QStringList result;
    for (const QLabel *label : parent->findChildren<QLabel *>(name))
        result << label->text();
    return result;
}

} // namespace

class TestTableView : public QObject
{
    Q_OBJECT
private slots:
    void openingOffTheInterfaceThread_data();
    void openingOffTheInterfaceThread();
    void init();
    void cleanup();

    void showTable();
    void columnWidths_data();
    void columnWidths();
    void memoBox();
    void copyCurrentCell();
    void tableSwitch_data();
    void tableSwitch();
    void tableSwitchOnlyForFilesOfTables();
    void indexOrdersRows_data();
    void indexOrdersRows();
    void releaseClosesTheFile();
    void login_data();
    void login();
    void passwordIsKeptForTheRun();
    void properties_data();
    void properties();
    void propertiesOfAPictureFormat86();
    void propertiesOfAnUnknownFile();
    void browserTableCommands();

private:
    ChildFrm1 *open(const QString &path);
    bool waitOpened(ChildFrm1 *w);
    TableDocumentView *viewOf(ChildFrm1 *w) { return qobject_cast<TableDocumentView *>(w->documentView()); }
    CommandBar *bar() { return m_frame->commandBar(); }

    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<MDIForm1> m_frame;
};

void TestTableView::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_ui->home.createFile(QStringLiteral("Close.Txt"), "Close File\r\n");
    m_frame = std::make_unique<MDIForm1>(m_ui->state, m_ui->services);
    m_frame->resize(1200, 900);
    m_frame->show();
    QVERIFY(QTest::qWaitForWindowExposed(m_frame.get()));
}

void TestTableView::cleanup()
{
    m_frame.reset();
    m_ui.reset();
}

ChildFrm1 *TestTableView::open(const QString &path)
{
    auto *w = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, viewer::DocumentKind::Database));
    if (!w)
        return nullptr;
    QSignalSpy shown(w, &ChildFrm1::documentShown);
    return shown.wait(20000) && waitOpened(w) ? w : nullptr;
}

bool TestTableView::waitOpened(ChildFrm1 *w)
{
    // The file opens on a worker: wait for its table too.
    TableDocumentView *view = viewOf(w);
    if (!view || !view->isOpening())
        return true;
    QSignalSpy opened(view, &TableDocumentView::opened);
    return opened.wait(20000);
}

void TestTableView::showTable()
{
    TestDir dir;
    const QString path = writePeople(dir);
    m_ui->state.colors.setSwatch(settings::Swatch::SelectionItemBack, 0x00FF80);
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    TableDocumentView *view = viewOf(w);

    // Placement: 6300 by 5000 twips.
    QWidget *outer = w->parentWidget();
    QCOMPARE(outer->size(), QSize(twipsToPixels(6300, w->logicalDpiX()), twipsToPixels(5000, w->logicalDpiY())));
    auto *grid = w->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"));
    QVERIFY(grid->isVisible());
    QCOMPARE(grid->model()->rowCount(), 2);
    QCOMPARE(grid->model()->index(1, 2).data().toString(), QStringLiteral("Bob"));
    // The current cell is painted in the selection item's colour.
    QCOMPARE(grid->palette().color(QPalette::Highlight), QColor(0x80, 0xFF, 0x00));
    // The record bar moves the grid's current row.
    w->findChild<QToolButton *>(QStringLiteral("Data1Last"))->click();
    QCOMPARE(grid->currentIndex().row(), 1);
    w->findChild<QToolButton *>(QStringLiteral("Data1Previous"))->click();
    QCOMPARE(grid->currentIndex().row(), 0);

    // The data control's connect texts.
    QCOMPARE(view->connectText(), QStringLiteral("dBASE 5.0;"));
    QCOMPARE(view->databaseName(), dir.path());
    QCOMPARE(view->recordSource(), QStringLiteral("people.dbf"));
    QCOMPARE(view->columnType(3), 12);
    QCOMPARE(view->columnType(300), 0);

    // The program-wide values.
    const tables::DatabaseValues &values = m_ui->state.database;
    QCOMPARE(values.tableNames, QStringList{QStringLiteral("people")});
    QCOMPARE(values.tableCount, 1);
    QCOMPARE(values.lastField, 4);
    QCOMPARE(values.fields.value(3).name, QStringLiteral("NOTES"));
    QVERIFY(values.indexNames.isEmpty());

    // A dBASE file offers its own table only, disabled, and has no index.
    auto *list1 = w->findChild<QListWidget *>(QStringLiteral("List1"));
    QCOMPARE(list1->count(), 1);
    QVERIFY(!(list1->item(0)->flags() & Qt::ItemIsEnabled));
    QCOMPARE(w->NUMINDEXES(), 0);
    QVERIFY(!bar()->isEnabled(QStringLiteral("ID_TableBtn")));
    QVERIFY(!bar()->isEnabled(QStringLiteral("ID_IndexBtn")));
    QVERIFY(!bar()->isEnabled(QStringLiteral("ID_mnuSetDatabaseTableIndex")));
    QVERIFY(bar()->isEnabled(QStringLiteral("ID_mnuSetTableComments")));

    // The list frame comes and goes with the Table command; its Close button
    // clears every check.
    m_frame->toolClick(QStringLiteral("ID_TableBtn"));
    auto *frame1 = w->findChild<QFrame *>(QStringLiteral("Frame1"));
    QVERIFY(frame1->isVisible());
    QVERIFY(bar()->isChecked(QStringLiteral("ID_mnuSetDatabaseTable")));
    w->findChild<QWidget *>(QStringLiteral("ExitDBaseBtn"))->setFocus();
    view->ExitDBaseBtn_Click();
    QVERIFY(!frame1->isVisible());
    for (const char *key : {"ID_TableBtn", "ID_IndexBtn", "ID_mnuSetDatabaseTable", "ID_mnuSetDatabaseTableIndex"})
        QVERIFY2(!bar()->isChecked(QLatin1String(key)), key);
    QCOMPARE(w->findChild<QWidget *>(QStringLiteral("ExitDBaseBtn"))->toolTip(),
             QStringLiteral("Close Database Table and Index Display"));
}

void TestTableView::columnWidths_data()
{
    QTest::addColumn<int>("column");
    QTest::addColumn<int>("twips");
    QTest::newRow("name not longer than the size: size x 120") << 0 << 360;
    QTest::newRow("1-character field with a 6-letter name: 600") << 1 << 600;
    QTest::newRow("40-character text field: 2500, not 4800") << 2 << 2500;
    QTest::newRow("memo of 10: 1200") << 3 << 1200;
    QTest::newRow("date of 8: 960") << 4 << 960;
}

void TestTableView::columnWidths()
{
    QFETCH(int, column);
    QFETCH(int, twips);
    TestDir dir;
    ChildFrm1 *w = open(writePeople(dir));
    QVERIFY(w);
    auto *grid = w->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"));
    QCOMPARE(grid->columnWidth(column), twipsToPixels(twips, grid->logicalDpiX()));
}

void TestTableView::memoBox()
{
    TestDir dir;
    ChildFrm1 *w = open(writePeople(dir));
    QVERIFY(w);
    auto *grid = w->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"));
    auto *frame2 = w->findChild<QFrame *>(QStringLiteral("Frame2"));
    auto *text2 = w->findChild<QTextEdit *>(QStringLiteral("Text2"));

    // Not a memo column: the message, and the box stays hidden.
    grid->setCurrentIndex(grid->model()->index(0, 2));
    m_frame->toolClick(QStringLiteral("ID_mnuSetTableComments"));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("Please select a Comment Field to Display")});
    QCOMPARE(m_ui->responder.messages().constFirst().title, QStringLiteral("Tarnby 3.0"));
    QVERIFY(!frame2->isVisible());
    QVERIFY(!bar()->isChecked(QStringLiteral("ID_mnuSetTableComments")));

    // The memo column: the whole memo, following the current cell.
    m_ui->responder.clear();
    grid->setCurrentIndex(grid->model()->index(0, 3));
    m_frame->toolClick(QStringLiteral("ID_mnuSetTableComments"));
    QVERIFY(m_ui->responder.messages().isEmpty());
    QVERIFY(frame2->isVisible());
    QCOMPARE(text2->toPlainText(), QStringLiteral("first memo\nof two lines"));
    QVERIFY(bar()->isChecked(QStringLiteral("ID_mnuSetTableComments")));
    grid->setCurrentIndex(grid->model()->index(1, 3));
    QCOMPARE(text2->toPlainText(), QStringLiteral("second memo"));

    // Again: hidden and emptied.
    m_frame->toolClick(QStringLiteral("ID_mnuSetTableComments"));
    QVERIFY(!frame2->isVisible());
    QVERIFY(text2->toPlainText().isEmpty());
    QVERIFY(!bar()->isChecked(QStringLiteral("ID_mnuSetTableComments")));
}

void TestTableView::copyCurrentCell()
{
    TestDir dir;
    ChildFrm1 *w = open(writePeople(dir));
    QVERIFY(w);
    QGuiApplication::clipboard()->setText(QStringLiteral("before"));
    auto *grid = w->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"));
    grid->setCurrentIndex(grid->model()->index(1, 4));
    m_frame->toolClick(QStringLiteral("ID_mnuCopy"));
    QCOMPARE(QGuiApplication::clipboard()->text(), QStringLiteral("2023-07-04"));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestTableView::tableSwitch_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QString>("connect");
    QTest::addColumn<QStringList>("tables"); // system tables never appear
    QTest::addColumn<QList<int>>("rows");    // of the first table, then of the second
    QTest::newRow("Access") << "MDB/test.mdb" << "Access" << QStringList{"Table1", "Table2", "Table3", "Table4"}
                            << QList<int>{2, 0};
    QTest::newRow("Excel") << "XLS/testEXCEL.xls" << "Excel 8.0;" << QStringList{"Feuil1", "Feuil2", "Feuil3"}
                           << QList<int>{22, 0};
    QTest::newRow("Lotus, one sheet") << "WK4/testLotus123-lotusftp.wk4" << "Lotus WK4;"
                                      << QStringList{"Employees"} << QList<int>{12};
}

void TestTableView::tableSwitch()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QString, connect);
    QFETCH(QStringList, tables);
    QFETCH(QList<int>, rows);
    ChildFrm1 *w = open(fixtures::path(file));
    QVERIFY(w);
    TableDocumentView *view = viewOf(w);
    QCOMPARE(view->connectText(), connect);
    QCOMPARE(view->databaseName(), fixtures::path(file));
    QCOMPARE(view->recordSource(), tables.first());
    QCOMPARE(view->model()->rowCount(), rows.first());
    QVERIFY(bar()->isEnabled(QStringLiteral("ID_TableBtn")));
    QVERIFY(bar()->isEnabled(QStringLiteral("ID_mnuSetDatabaseTable")));

    auto *list1 = w->findChild<QListWidget *>(QStringLiteral("List1"));
    QCOMPARE(listTexts(list1), tables);
    QCOMPARE(m_ui->state.database.tableCount, tables.size());

    m_frame->toolClick(QStringLiteral("ID_TableBtn"));
    QVERIFY(list1->isVisible());
    emit list1->itemClicked(list1->item(tables.size() - 1 > 0 ? 1 : 0));
    const QString second = tables.value(1, tables.first());
    QCOMPARE(view->recordSource(), second);
    QCOMPARE(view->model()->table().name(), second);
    QCOMPARE(view->model()->rowCount(), rows.value(1, rows.first()));
    QCOMPARE(m_ui->state.database.fields.size(), view->model()->columnCount());
}

void TestTableView::tableSwitchOnlyForFilesOfTables()
{
    TestDir dir;
    ChildFrm1 *w = open(writeSqlite(dir));
    QVERIFY(w);
    TableDocumentView *view = viewOf(w);
    // An SQLite ".db" database offers its tables as an Access file does.
    QCOMPARE(view->recordSource(), QStringLiteral("people"));
    view->List1_Click(QStringLiteral("empty"));
    QCOMPARE(view->model()->table().name(), QStringLiteral("empty"));
    QCOMPARE(w->NUMINDEXES(), 0);
    view->List1_Click(QStringLiteral("no such table"));
    QCOMPARE(view->model()->table().name(), QStringLiteral("empty"));

    // A dBASE file does not switch.
    ChildFrm1 *dbf = open(writePeople(dir));
    QVERIFY(dbf);
    viewOf(dbf)->List1_Click(QStringLiteral("people"));
    QCOMPARE(viewOf(dbf)->model()->rowCount(), 2);
}

void TestTableView::indexOrdersRows_data()
{
    QTest::addColumn<QString>("file"); // "towns" for the generated database
    QTest::addColumn<QString>("index");
    QTest::addColumn<int>("column");
    QTest::addColumn<QStringList>("expected");
    QTest::newRow("descending without case, nulls last") << "towns" << "bycity" << 1
                                                         << QStringList{"Zug", "bern", "aarau", ""};
    QTest::newRow("ascending") << "towns" << "byname" << 0 << QStringList{"Al", "Bo", "Cy", "Di"};
    QTest::newRow("Paradox primary key") << "DB/memo.db" << "PrimaryKey" << 0 << QStringList{"1", "2"};
    QTest::newRow("dBASE tag, descending") << "people" << "BYNAME" << 2 << QStringList{"Bob", "Ann"};
}

void TestTableView::indexOrdersRows()
{
    QFETCH(QString, file);
    QFETCH(QString, index);
    QFETCH(int, column);
    QFETCH(QStringList, expected);
    if (file.contains(QLatin1Char('/')))
        REQUIRE_FIXTURES();
    TestDir dir;
    const QString path = tablePath(dir, file);
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    TableDocumentView *view = viewOf(w);
    QVERIFY(w->NUMINDEXES() > 0);
    QVERIFY(bar()->isEnabled(QStringLiteral("ID_IndexBtn")));
    QVERIFY(bar()->isEnabled(QStringLiteral("ID_mnuSetDatabaseTableIndex")));
    m_frame->toolClick(QStringLiteral("ID_IndexBtn"));
    auto *list2 = w->findChild<QListWidget *>(QStringLiteral("List2"));
    QVERIFY(list2->isVisible());
    QVERIFY(bar()->isChecked(QStringLiteral("ID_mnuSetDatabaseTableIndex")));
    const QList<QListWidgetItem *> items = list2->findItems(index, Qt::MatchExactly);
    QCOMPARE(items.size(), 1);

    QSignalSpy applied(view, &TableDocumentView::indexApplied);
    emit list2->itemClicked(items.first());
    QVERIFY(applied.wait(10000));
    QCOMPARE(view->currentIndex(), index);
    QVERIFY(m_ui->responder.messages().isEmpty());
    QStringList shown;
    for (int r = 0; r < view->model()->rowCount(); ++r)
        shown << view->model()->index(r, column).data().toString();
    QCOMPARE(shown, expected);
}

void TestTableView::releaseClosesTheFile()
{
    TestDir dir;
    const QString path = writePeople(dir);
    ChildFrm1 *w = open(path);
    QVERIFY(w);
    QVERIFY(openHandlesOn(path) > 0);
    viewOf(w)->releaseFile(m_ui->state.programFile(QStringLiteral("Close.Txt")));
    QCOMPARE(openHandlesOn(path), 0);
    QCOMPARE(openHandlesOn(dir.filePath(QStringLiteral("people.dbt"))), 0);
    QCOMPARE(viewOf(w)->recordSource(), QStringLiteral("Close.Txt"));
    QCOMPARE(viewOf(w)->databaseName(), QDir(m_ui->state.programFolder).absolutePath());
    QCOMPARE(w->findChild<QTableView *>(QStringLiteral("MSFlexGrid1"))->model(), nullptr);
}

void TestTableView::login_data()
{
    QTest::addColumn<QStringList>("typed"); // one entry per OK; "" is an empty password
    QTest::addColumn<bool>("cancelAtEnd");
    QTest::addColumn<int>("rows");          // -1: no table shown
    QTest::addColumn<QStringList>("messages");
    QTest::newRow("right password") << QStringList{"password"} << false << 3 << QStringList();
    QTest::newRow("empty password, then the right one")
        << QStringList{"", "password"} << false << 3 << QStringList{"Invalid Password, try again!"};
    QTest::newRow("wrong password shows no table and says so")
        << QStringList{"wrong"} << false << -1 << QStringList{"*"};
    QTest::newRow("cancel shows no table") << QStringList() << true << -1 << QStringList();
}

void TestTableView::login()
{
    REQUIRE_FIXTURES();
    QFETCH(QStringList, typed);
    QFETCH(bool, cancelAtEnd);
    QFETCH(int, rows);
    QFETCH(QStringList, messages);

    bool stayedAfterEmpty = true;
    QString caption;
    whenModal(QStringLiteral("Login"), [&](QDialog *d) {
        caption = d->windowTitle();
        auto *password = d->findChild<QLineEdit *>(QStringLiteral("TxtPassword"));
        QVERIFY(password->text().isEmpty());
        for (const QString &text : std::as_const(typed)) {
            password->setText(text);
            // Enter anywhere in the window acts as OK.
            QTest::keyClick(password, Qt::Key_Return);
            if (text.isEmpty())
                stayedAfterEmpty = stayedAfterEmpty && d->isVisible() && password->selectedText() == text;
        }
        if (cancelAtEnd)
            d->findChild<QPushButton *>(QStringLiteral("CancelBtn"))->click();
    });
    ChildFrm1 *w = open(fixtures::path(QStringLiteral("MDB/V2000_with-password.mdb")));
    QVERIFY(w);
    QCOMPARE(caption, QStringLiteral("Login to Database File"));
    QVERIFY(stayedAfterEmpty);
    TableDocumentView *view = viewOf(w);
    if (rows < 0) {
        QVERIFY(!view->model());
    } else {
        QVERIFY(view->model());
        QCOMPARE(view->model()->rowCount(), rows);
        QCOMPARE(view->model()->index(2, 1).data().toString(), QStringLiteral("Three"));
        // The password is in the connect text, never shown as such.
        QCOMPARE(view->connectText(), QStringLiteral(";pwd=password"));
    }
    QCOMPARE(m_ui->state.database.loginDone, !cancelAtEnd);
    const QList<MessageRequest> shown = m_ui->responder.messages();
    QCOMPARE(shown.size(), messages.size());
    for (int i = 0; i < shown.size(); ++i) {
        if (messages[i] == QLatin1String("*")) {
            QVERIFY(shown[i].text.contains(QLatin1String("password"), Qt::CaseInsensitive));
        } else {
            QCOMPARE(shown[i].text, messages[i]);
            QCOMPARE(shown[i].title, QStringLiteral("Login to Database"));
        }
    }
}

void TestTableView::passwordIsKeptForTheRun()
{
    REQUIRE_FIXTURES();
    whenModal(QStringLiteral("Login"), [](QDialog *d) {
        d->findChild<QLineEdit *>(QStringLiteral("TxtPassword"))->setText(QStringLiteral("password"));
        d->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    QVERIFY(open(fixtures::path(QStringLiteral("MDB/V2000_with-password.mdb"))));
    // The next protected file with the same password opens without asking.
    ModalCloser closer;
    ChildFrm1 *second = open(fixtures::path(QStringLiteral("MDB/V2003_with-password.mdb")));
    QVERIFY(second);
    QVERIFY(closer.seen().isEmpty());
    QCOMPARE(viewOf(second)->model()->rowCount(), 3);
    // Nothing of it reached the settings.
    QVERIFY(!m_ui->home.read(QStringLiteral("settings.ini")).contains("password"));
}

void TestTableView::properties_data()
{
    QTest::addColumn<QString>("file"); // "people" for the generated table
    QTest::addColumn<QStringList>("captions");
    QTest::addColumn<QStringList>("someValues");
    QTest::addColumn<QStringList>("fieldLines");
    QTest::newRow("picture: the nine rows")
        << "PNG/hopper.png"
        << QStringList{"Number of Bits per Bitmap:", "Color Count:", "Image Format:", "Image Height:", "Image Width:",
                       "Image Disk Size:", "Image Memory Size:", "Image X Resolution:", "Image Y Resolution:"}
        << QStringList{"Portable Network Graphics"} << QStringList();
    QTest::newRow("database: rows and field lines, Date is type 8")
        << "people"
        << QStringList{"File Type:", "Database:", "Current Table:", "Record Count:", "Percent Position:",
                       "Last Modified:", "Last Updated:", "Date Created:", "File Size:"}
        << QStringList{"dBASE", "dBASE 5.0;", "people.dbf", "2"}
        << QStringList{"ID - Double - 3", "ACTIVE - Boolean - 1", "NAME - Text - 40", "NOTES - Memo Field - 10",
                       "WHEN - Date - 8"};
    QTest::newRow("other file: type and size")
        << "TXT/testTXT.txt" << QStringList{"File Type:", "File Size:"} << QStringList{"Document"} << QStringList();
}

void TestTableView::properties()
{
    QFETCH(QString, file);
    QFETCH(QStringList, captions);
    QFETCH(QStringList, someValues);
    QFETCH(QStringList, fieldLines);
    if (file.contains(QLatin1Char('/')))
        REQUIRE_FIXTURES();
    TestDir dir;
    const QString path = tablePath(dir, file);
    const viewer::DocumentKind kind = file == QLatin1String("people") ? viewer::DocumentKind::Database
        : file.endsWith(QLatin1String(".txt"))                        ? viewer::DocumentKind::Text
                                                                      : viewer::DocumentKind::Picture;
    auto *w = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, kind));
    QVERIFY(w);
    QSignalSpy shown(w, &ChildFrm1::documentShown);
    QVERIFY(shown.wait(20000));
    QVERIFY(waitOpened(w));

    QStringList seenCaptions, seenValues, seenLines;
    bool fieldsShown = false;
    whenModal(QStringLiteral("ProPert1"), [&](QDialog *d) {
        seenCaptions = texts(d, QStringLiteral("Label1"));
        seenValues = texts(d, QStringLiteral("Label2"));
        auto *text1 = d->findChild<QTextEdit *>(QStringLiteral("Text1"));
        fieldsShown = text1->isVisible();
        seenLines = text1->toPlainText().split(QLatin1Char('\n'), Qt::SkipEmptyParts);
        d->findChild<QPushButton *>(QStringLiteral("OKBtn"))->click();
    });
    m_frame->toolClick(QStringLiteral("ID_mnuFileProperties"));
    QCOMPARE(seenCaptions, captions);
    for (const QString &value : std::as_const(someValues))
        QVERIFY2(seenValues.contains(value), qPrintable(value));
    QCOMPARE(seenValues.size(), captions.size());
    const qsizetype sizeRow = seenCaptions.indexOf(QStringLiteral("File Size:"));
    if (sizeRow >= 0)
        QCOMPARE(seenValues[sizeRow], QString::number(QFileInfo(path).size()));
    QCOMPARE(fieldsShown, !fieldLines.isEmpty());
    QCOMPARE(seenLines, fieldLines);
}

void TestTableView::propertiesOfAPictureFormat86()
{
    // The format name table's oddities reach the window as they stand.
    imaging::Picture picture;
    picture.info.formatCode = 86;
    ProPert1 window(tables::pictureFileProperties(picture), m_ui->state);
    QCOMPARE(texts(&window, QStringLiteral("Label2")).value(2), QStringLiteral("Tagged Image File LZW Compressed Forma"));
    picture.info.formatCode = 6;
    ProPert1 bitmap(tables::pictureFileProperties(picture), m_ui->state);
    QCOMPARE(texts(&bitmap, QStringLiteral("Label2")).value(2), QStringLiteral("Bitmap Format"));

    // A protected database shows "Access", never its password.
    tables::DatabaseFacts facts;
    facts.connect = QStringLiteral(";pwd=secret");
    ProPert1 database(tables::databaseFileProperties(facts), m_ui->state);
    QCOMPARE(texts(&database, QStringLiteral("Label2")).value(1), QStringLiteral("Access"));
}

void TestTableView::propertiesOfAnUnknownFile()
{
    TestDir dir;
    showFileProperties(dir.createFile(QStringLiteral("notes.qqq")), m_ui->state, m_ui->services, nullptr);
    QCOMPARE(m_ui->responder.messageTexts(),
             QStringList{QStringLiteral("Cannot determine File Properties for this type of File")});
}

void TestTableView::browserTableCommands()
{
    TestDir dir;
    const QString path = writePeople(dir);
    auto browser = std::make_unique<Tarnby1>(m_ui->state, m_ui->services, m_ui->store);
    StartupRequest request;
    request.homeOption = dir.filePath(QStringLiteral("home"));
    request.dataFolder = dir.filePath(QStringLiteral("data"));
    browser->load(request);
    m_ui->state.currentFile = path;

    // File Properties of the selected table, without a window.
    QStringList values;
    whenModal(QStringLiteral("ProPert1"), [&](QDialog *d) {
        values = texts(d, QStringLiteral("Label2"));
        d->reject();
    });
    browser->toolClick(QStringLiteral("ID_mnuFileProperties"));
    QCOMPARE(values.value(2), QStringLiteral("people.dbf"));
    QCOMPARE(values.value(3), QStringLiteral("2"));

    // The table commands open the selected file and run on its window.
    browser->toolClick(QStringLiteral("ID_mnuSetDatabaseTableIndex"));
    auto *window = qobject_cast<ChildFrm1 *>(browser->frame()->activeDocumentWidget());
    QVERIFY(window);
    QCOMPARE(window->filePath(), path);
    QTRY_VERIFY(window->findChild<QListWidget *>(QStringLiteral("List2"))->isVisible());
    // Again on the same file: the window that shows it, not a new one.
    browser->toolClick(QStringLiteral("ID_mnuViewTableComments"));
    QCOMPARE(browser->frame()->mdiArea()->subWindowList().size(), 1);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{QStringLiteral("Please select a Comment Field to Display")});
}

void TestTableView::openingOffTheInterfaceThread_data()
{
    QTest::addColumn<bool>("closeWhileOpening");
    QTest::newRow("the view gets its tables") << false;
    QTest::newRow("closing the window while it opens is safe") << true;
}

void TestTableView::openingOffTheInterfaceThread()
{
    QFETCH(bool, closeWhileOpening);
    // A workbook of 240,000 cells: reading it keeps the worker busy well
    // after the window has been shown.
    xlssamples::Workbook book;
    xlssamples::Sheet sheet{QStringLiteral("Big"), {}};
    for (int r = 0; r < 60000; ++r)
        for (int c = 0; c < 4; ++c)
            sheet.records << xlssamples::number(quint16(r), quint16(c), 0, r + c);
    book.sheets << sheet;
    TestDir dir;
    const QString path = dir.createFile(QStringLiteral("big.xls"), xlssamples::xlsFile(book));
    auto *w = qobject_cast<ChildFrm1 *>(m_frame->NewWindowFile(path, viewer::DocumentKind::Database));
    QVERIFY(w);
    QSignalSpy shown(w, &ChildFrm1::documentShown);
    QVERIFY(shown.wait(20000));
    QPointer<TableDocumentView> view = viewOf(w);
    QVERIFY(view);
    QSignalSpy opened(view.data(), &TableDocumentView::opened);
    // Shown, and still opening: the window says so and has no table yet.
    QVERIFY(view->isOpening());
    QVERIFY(!view->model());
    QCOMPARE(w->findChild<QLabel *>(QStringLiteral("Data1Caption"))->text(), QStringLiteral("Opening big.xls..."));
    if (closeWhileOpening) {
        m_frame->mdiArea()->closeAllSubWindows();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
        QTRY_VERIFY(view.isNull());
        // The worker ends on its own; nothing of the window is touched.
        QVERIFY(QThreadPool::globalInstance()->waitForDone(20000));
        QTest::qWait(50);
        QCOMPARE(opened.count(), 0);
        QVERIFY(m_ui->responder.messages().isEmpty());
        return;
    }
    QVERIFY(opened.wait(20000));
    QVERIFY(!view->isOpening());
    QVERIFY(view->model());
    QCOMPARE(view->model()->rowCount(), 60000);
    QCOMPARE(view->model()->index(59999, 3).data().toDouble(), 60002.0);
    QCOMPARE(view->recordSource(), QStringLiteral("Big"));
    QCOMPARE(m_ui->state.database.tableNames, QStringList{QStringLiteral("Big")});
}

QTEST_MAIN(TestTableView)
#include "tst_tableview.moc"
