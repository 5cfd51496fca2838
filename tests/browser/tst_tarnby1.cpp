#include "DocumentDouble.h"
#include "ScriptedResponder.h"

#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/catalogue/CommandTables.h"
#include "ui/browser/Tarnby1.h"
#include "ui/frame/CommandBar.h"
#include "ui/frame/DocumentWindow.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"
#include "ui/tools/HelpWindow.h"

#include "UiFixture.h"

#include <QAction>
#include <QDir>
#include <QRegularExpression>
#include <QSet>
#include <QComboBox>
#include <QLabel>
#include <QListWidget>
#include <QMdiArea>
#include <QMenuBar>
#include <QTest>
#include <QTimer>

using namespace tarnby;
using namespace tarnby::ui;

class TestTarnby1 : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void startupStepsInOrder();
    void badHomeIsReportedThenFallsBack();
    void menusAndToolbars();
    void clockTicks();
    void displayImageRouting_data();
    void displayImageRouting();
    void openCommandsGoThroughTheBrowser_data();
    void openCommandsGoThroughTheBrowser();
    void selectionCommandsAndTheW4Rule_data();
    void selectionCommandsAndTheW4Rule();
    void busyDocumentBlocksTheBrowser();
    void commandLineFilesOpenAfterStartup();
    void helpContentsAndSearch();
    void helpPagesAreDeliveredAndLinked();

private:
    void start(const QString &commandLine = {});

    std::unique_ptr<UiFixture> m_ui;
    Tarnby1 *m_browser = nullptr;
};

void TestTarnby1::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_browser = new Tarnby1(m_ui->state, m_ui->services, m_ui->store);
}

void TestTarnby1::cleanup()
{
    delete m_browser;
    m_ui.reset();
}

void TestTarnby1::start(const QString &commandLine)
{
    StartupRequest request;
    request.homeOption = m_ui->home.filePath(QStringLiteral("home"));
    request.dataFolder = m_ui->home.filePath(QStringLiteral("data"));
    request.commandLine = commandLine;
    m_browser->load(request);
    m_browser->show();
}

void TestTarnby1::startupStepsInOrder()
{
    start(QStringLiteral("\"a b.jpg\"\tc.txt"));
    QCOMPARE(m_browser->startupSteps(),
             (QStringList{"command line", "dialog filters", "program folder", "help file", "settings", "panes",
                          "filter box", "working folders", "toolbar", "organizer", "quick tips"}));
    QCOMPARE(m_ui->state.commandLineArguments, (QStringList{"a b.jpg", "c.txt"}));
    QCOMPARE(m_ui->state.programFolder, m_ui->home.filePath(QStringLiteral("home")));
    QCOMPARE(m_ui->store.value("Registered", "TarnbyDIR").toString(), m_ui->state.programFolder);
    // The delivered empty organizer database is found in the new folder.
    QCOMPARE(m_ui->state.organizerDatabaseFound, m_ui->state.programFolder + QStringLiteral("/FileTabl.MDB"));
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestTarnby1::badHomeIsReportedThenFallsBack()
{
    StartupRequest request;
    request.homeOption = m_ui->home.createFile(QStringLiteral("not-a-folder"));
    request.dataFolder = m_ui->home.filePath(QStringLiteral("data"));
    m_browser->load(request);
    QCOMPARE(m_ui->state.programFolder, m_ui->home.filePath(QStringLiteral("data")));
    QCOMPARE(m_ui->responder.messages().size(), 1);
    QCOMPARE(m_ui->responder.messages().first().title, QStringLiteral("Tarnby 3.0"));
    QVERIFY(m_ui->responder.messages().first().text.contains(QStringLiteral("not-a-folder")));
}

void TestTarnby1::menusAndToolbars()
{
    start();
    QStringList menus;
    for (QAction *a : m_browser->menuBar()->actions())
        menus << a->text();
    QCOMPARE(menus, (QStringList{"&File", "&View", "&E-Mail", "&Organize", "&Utilities", "&Help"}));
    // Every tool of the tables is an action named by its key, with caption and tooltip.
    for (const commands::Tool &tool : commands::browserCategoryToolbar()) {
        auto *a = m_browser->findChild<QAction *>(QLatin1String(tool.key));
        QVERIFY2(a, tool.key.data());
        QCOMPARE(a->text(), QLatin1String(tool.caption));
        if (*tool.tooltip)
            QCOMPARE(a->toolTip(), QLatin1String(tool.tooltip));
    }
    auto *open = m_browser->findChild<QAction *>(QStringLiteral("ID_OpenBtn"));
    QVERIFY(open);
    QCOMPARE(open->toolTip(), QStringLiteral("Open File"));
}

void TestTarnby1::clockTicks()
{
    start();
    auto *timer = m_browser->findChild<QTimer *>(QStringLiteral("Timer1"));
    QVERIFY(timer);
    QCOMPARE(timer->interval(), 300);
    QVERIFY(timer->isActive());
    auto *date = m_browser->findChild<QLabel *>(QStringLiteral("ID_Date"));
    auto *time = m_browser->findChild<QLabel *>(QStringLiteral("ID_Time"));
    QVERIFY(date && time);
    date->clear();
    QTRY_VERIFY_WITH_TIMEOUT(!date->text().isEmpty(), 2000);
    QVERIFY(!time->text().isEmpty());
}

void TestTarnby1::displayImageRouting_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<int>("documents");
    QTest::addColumn<QString>("kind");
    QTest::addColumn<QString>("message");
    QTest::newRow("unknown type") << "setup.exe" << 0 << "" << "File Type is not Supported by this Software";
    QTest::newRow("no extension does nothing") << "README" << 0 << "" << "";
    QTest::newRow("picture opens a window") << "cat.png" << 1 << "I" << "";
    QTest::newRow("text opens a window") << "notes.txt" << 1 << "T" << "";
    QTest::newRow("table opens a window") << "sales.wk4" << 1 << "D" << "";
}

void TestTarnby1::displayImageRouting()
{
    QFETCH(QString, name);
    QFETCH(int, documents);
    QFETCH(QString, kind);
    QFETCH(QString, message);
    start();
    const QString path = m_ui->home.createFile(name);
    m_browser->DisplayImage(path);
    QCOMPARE(m_ui->responder.messageTexts(), message.isEmpty() ? QStringList() : QStringList{message});
    QCOMPARE(m_browser->hasFrame(), documents > 0);
    if (documents) {
        QCOMPARE(m_browser->frame()->documentCount(), documents);
        QVERIFY(m_browser->frame()->isVisible());
        DocumentWindow *doc = m_browser->frame()->activeDocument();
        QVERIFY(doc);
        QCOMPARE(doc->filePath(), path);
        QCOMPARE(doc->FILE_TYPE(), kind);
    }
    QCOMPARE(m_ui->state.currentFile, path);
}

void TestTarnby1::openCommandsGoThroughTheBrowser_data()
{
    QTest::addColumn<bool>("documentOpen");
    QTest::newRow("the document window's open dialog") << true;
    QTest::newRow("the frame's own open dialog") << false;
}

void TestTarnby1::openCommandsGoThroughTheBrowser()
{
    QFETCH(bool, documentOpen);
    start();
    m_browser->DisplayImage(m_ui->home.createFile(QStringLiteral("notes.txt")));
    MDIForm1 *frame = m_browser->frame();
    QCOMPARE(frame->documentCount(), 1);
    if (!documentOpen) {
        frame->mdiArea()->closeAllSubWindows();
        QCOMPARE(frame->documentCount(), 0);
    }

    const QString chosen = m_ui->home.createFile(QStringLiteral("tables/sales.dbf"));
    m_ui->responder.acceptFile(chosen);
    frame->toolClick(QStringLiteral("ID_OpenBtn"));
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    QCOMPARE(frame->documentCount(), documentOpen ? 2 : 1);
    DocumentWindow *doc = frame->activeDocument();
    QVERIFY(doc);
    QCOMPARE(doc->filePath(), chosen);
    QCOMPARE(doc->FILE_TYPE(), QStringLiteral("D"));
    // The browser looked the chosen file up for the other windows.
    QCOMPARE(m_ui->state.currentFile, chosen);
    QVERIFY(m_ui->state.databaseFileFlag);
    QVERIFY(!m_ui->state.textFileFlag);
}

void TestTarnby1::selectionCommandsAndTheW4Rule_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<bool>("database");
    QTest::newRow("dBASE enables the database entries") << "sales.dbf" << true;
    QTest::newRow("Excel enables them") << "book.xls" << true;
    QTest::newRow("Lotus WK4 never does") << "sheet.wk4" << false;
    QTest::newRow("a picture does not") << "cat.jpg" << false;
}

void TestTarnby1::selectionCommandsAndTheW4Rule()
{
    QFETCH(QString, name);
    QFETCH(bool, database);
    start();
    CommandBar *bar = m_browser->commandBar();
    QVERIFY(!bar->isEnabled(QStringLiteral("ID_mnuSaveFileAs")));
    m_browser->DisplayImage(m_ui->home.createFile(name));
    for (const QString &key : commands::selectionCommandKeys())
        QVERIFY2(bar->isEnabled(key), qPrintable(key));
    for (const QString &key : commands::databaseSelectionKeys())
        QCOMPARE(bar->isEnabled(key), database);
}

void TestTarnby1::busyDocumentBlocksTheBrowser()
{
    start();
    auto *doc = new DocumentDouble(QStringLiteral("I"));
    doc->busy = true;
    m_browser->frame()->addDocumentWindow(doc, QStringLiteral("busy.jpg"));
    m_browser->filterBox()->setCurrentIndex(35);
    m_browser->toolClick(QStringLiteral("ID_PicturesBtn"));
    QCOMPARE(m_browser->filterBox()->currentIndex(), 35);
    doc->busy = false;
    m_browser->toolClick(QStringLiteral("ID_PicturesBtn"));
    QCOMPARE(m_browser->filterBox()->currentIndex(), 32);
}

void TestTarnby1::commandLineFilesOpenAfterStartup()
{
    // Files open, a folder is shown, a missing file is passed over quietly.
    const QString first = m_ui->home.createFile(QStringLiteral("My Pictures/cat one.png"));
    const QString second = m_ui->home.createFile(QStringLiteral("notes.txt"));
    const QString folder = m_ui->home.createFolder(QStringLiteral("shown"));
    const QString unknown = m_ui->home.createFile(QStringLiteral("x.qqq"));
    start(QStringLiteral("\"%1\" %2 /no/such/file.txt %3 %4").arg(first, second, folder, unknown));
    QVERIFY(!m_browser->hasFrame()); // nothing opens during start-up itself
    m_browser->openCommandLineFiles();
    QCOMPARE(m_browser->frame()->documentCount(), 2);
    QCOMPARE(m_browser->currentFolder(), folder);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"File Type is not Supported by this Software"});
}

void TestTarnby1::helpContentsAndSearch()
{
    start();
    m_browser->toolClick(QStringLiteral("ID_HelpBtn"));
    auto *help = m_browser->findChild<HelpWindow *>(QStringLiteral("HelpWindow"));
    QVERIFY(help);
    QVERIFY(help->isVisible());
    QCOMPARE(help->currentPage(), QStringLiteral("index.html"));
    QCOMPARE(help->search(QStringLiteral("colours")), 2); // contents and the settings page
    QCOMPARE(help->search(QStringLiteral("zzzz-no-such-word")), 0);
    QVERIFY(help->search(QString()) >= 4);
}

void TestTarnby1::helpPagesAreDeliveredAndLinked()
{
    // Every page a new program folder is given is reachable from the
    // contents, links only to pages that are there, and leads back.
    start();
    const QDir help(m_ui->state.helpFolder());
    const QStringList pages = help.entryList({QStringLiteral("*.html")}, QDir::Files);
    QVERIFY(pages.size() >= 7);
    static const QRegularExpression link(QStringLiteral("href=\"([^\"#]+)\""));
    QSet<QString> linkedFromContents;
    for (const QString &page : pages) {
        QFile file(help.filePath(page));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QString html = QString::fromUtf8(file.readAll());
        QStringList targets;
        for (const QRegularExpressionMatch &m : link.globalMatch(html))
            targets << m.captured(1);
        for (const QString &target : std::as_const(targets))
            QVERIFY2(help.exists(target), qPrintable(page + QStringLiteral(" links to ") + target));
        if (page == QLatin1String("index.html"))
            linkedFromContents = QSet<QString>(targets.begin(), targets.end());
        else
            QVERIFY2(targets.contains(QStringLiteral("index.html")), qPrintable(page));
    }
    for (const QString &page : pages) {
        if (page != QLatin1String("index.html"))
            QVERIFY2(linkedFromContents.contains(page), qPrintable(page));
    }
}

QTEST_MAIN(TestTarnby1)
#include "tst_tarnby1.moc"
