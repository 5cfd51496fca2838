#include "ui/frame/CommandBar.h"
#include "ui/search/FindFile1.h"
#include "ui/tools/HelpWindow.h"

#include "SearchBrowser.h"

#include <QComboBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QSignalSpy>
#include <QTabBar>
#include <QTest>
#include <QTimer>

using namespace tarnby;
using namespace tarnby::search;
using namespace tarnby::ui;

using Browser = SearchBrowser;

class TestFindFile1 : public QObject
{
    Q_OBJECT
private slots:
    void controls();
    void tabsShowTheirFrames();
    void windowColours();
    void okUsesTheTabShowingAndTheSharedIndex();
    void enterOnOptionActsAsOk();
    void typedName_data();
    void typedName();
    void findCommandsOpenTheWindow_data();
    void findCommandsOpenTheWindow();
    void cancelSaysNoFileTypes();
    void helpOpensTheSearchTopic();
    void walkShowsFoundFolderAndFindNextGoesOn();
    void thumbnailsWaitForTheEnd();
    void stopButtonAndEscapeCancel_data();
    void stopButtonAndEscapeCancel();
    void continueQuestionThroughMessages();
};

void TestFindFile1::controls()
{
    UiFixture ui;
    FindFile1 window(ui.state);
    QCOMPARE(window.windowTitle(), QStringLiteral("Find Files and File Types"));
    QTabBar *tabs = window.findChild<QTabBar *>(QStringLiteral("TabStrip1"));
    QVERIFY(tabs);
    QCOMPARE(tabs->count(), 5);
    const QStringList captions{"Pictures", "MultiMedia", "Text", "Database", "Miscellaneous"};
    const QStringList arrays{"RDPICT", "RDMEDIA", "RDTEXT", "RDDATA", "RDMISC"};
    const QList<int> counts{27, 10, 19, 8, 6};
    for (int i = 0; i < 5; ++i) {
        QCOMPARE(tabs->tabText(i), captions[i]);
        const QList<QRadioButton *> options = window.findChildren<QRadioButton *>(arrays[i]);
        QCOMPARE(options.size(), counts[i]);
        for (int j = 0; j < options.size(); ++j)
            QCOMPARE(options[j]->property("index").toInt(), j);
        QCOMPARE(window.frame(SearchTab(i))->objectName(), QStringLiteral("Frame1"));
        QCOMPARE(window.frame(SearchTab(i))->font().family(), QStringLiteral("Small Fonts"));
    }
    QCOMPARE(window.findChildren<QRadioButton *>("RDTEXT")[10]->toolTip(),
             QStringLiteral("Seach for System Configuration Files (SYS) "));
    QCOMPARE(window.findChild<QLabel *>("Label1")->text(), QStringLiteral("Enter File Name to Search or File Type:"));
    QCOMPARE(window.findChild<QLineEdit *>("Text1")->toolTip(),
             QStringLiteral("Enter the Name of the file to search for or a global search name - (*.BMP)"));
    QCOMPARE(window.findChild<QPushButton *>("OKBtn")->toolTip(), QStringLiteral("Find Selected File or File Types"));
    QCOMPARE(window.findChild<QPushButton *>("CancelBtn")->text(), QStringLiteral("Cancel"));
    QCOMPARE(window.findChild<QPushButton *>("CancelBtn")->toolTip(), QStringLiteral("Cancel Tarnby Search"));
    QCOMPARE(window.findChild<QPushButton *>("HelpBtn")->text(), QStringLiteral("Help"));
    QCOMPARE(window.findChild<QPushButton *>("HelpBtn")->toolTip(), QStringLiteral("Help with Tarnby Search Window"));
}

void TestFindFile1::tabsShowTheirFrames()
{
    UiFixture ui;
    FindFile1 window(ui.state);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    const QRect place = window.frame(SearchTab::Pictures)->geometry();
    for (int i : {1, 2, 3, 4, 0, 4}) {
        window.tabStrip()->setCurrentIndex(i);
        QCoreApplication::processEvents();
        for (int j = 0; j < 5; ++j)
            QCOMPARE(window.frame(SearchTab(j))->isVisible(), i == j);
        // Shown in the place of the one before, not somewhere without a size.
        QCOMPARE(window.frame(SearchTab(i))->geometry(), place);
    }
}

void TestFindFile1::windowColours()
{
    using settings::Swatch;
    UiFixture ui;
    ui.state.colors.setSwatch(Swatch::SelectionWindowsBack, 0x0000FF); // red
    ui.state.colors.setSwatch(Swatch::SelectionWindowsText, 0x00FF00); // green
    ui.state.colors.setSwatch(Swatch::EntryFieldsBack, 0xFF0000);      // blue
    ui.state.options.boldType = true;
    FindFile1 window(ui.state);
    window.show();
    QCOMPARE(window.frame(SearchTab::Text)->palette().color(QPalette::Window), QColor(Qt::red));
    QRadioButton *option = window.option(SearchTab::Database, 2);
    QCOMPARE(option->palette().color(QPalette::WindowText), QColor(Qt::green));
    QVERIFY(option->font().bold());
    QCOMPARE(option->font().family(), QStringLiteral("Small Fonts"));
    QCOMPARE(window.findChild<QLabel *>("Label1")->palette().color(QPalette::WindowText), QColor(Qt::green));
    QCOMPARE(window.findChild<QLineEdit *>("Text1")->palette().color(QPalette::Base), QColor(Qt::blue));
    QCOMPARE(window.findChild<QPushButton *>("OKBtn")->palette().color(QPalette::ButtonText), QColor(Qt::green));
}

void TestFindFile1::okUsesTheTabShowingAndTheSharedIndex()
{
    UiFixture ui;
    ui.state.searchPattern = QStringLiteral("*.KEEP");
    {
        // Index 3 clicked on Pictures, OK on Database, whose button 3 is not
        // set: the pattern stays.
        FindFile1 window(ui.state);
        window.option(SearchTab::Pictures, 3)->click();
        window.tabStrip()->setCurrentIndex(int(SearchTab::Database));
        window.okClicked();
        QCOMPARE(window.result(), int(QDialog::Accepted));
        QCOMPARE(ui.state.searchPattern, QStringLiteral("*.KEEP"));
    }
    {
        // Database 3 set earlier, then Pictures 3 clicked: OK on Database
        // takes Database's row 3.
        FindFile1 window(ui.state);
        QSignalSpy filter(&window, &FindFile1::filterChosen);
        window.tabStrip()->setCurrentIndex(int(SearchTab::Database));
        window.option(SearchTab::Database, 3)->click();
        window.tabStrip()->setCurrentIndex(int(SearchTab::Pictures));
        window.option(SearchTab::Pictures, 3)->click();
        window.tabStrip()->setCurrentIndex(int(SearchTab::Database));
        window.okClicked();
        QCOMPARE(ui.state.searchPattern, QStringLiteral("*.XLS"));
        QCOMPARE(window.frame(SearchTab::Database)->title(), QStringLiteral("Selected: Excel Files (XLS)"));
        QCOMPARE(filter.size(), 1);
        QCOMPARE(filter.first().first().toInt(), 37);
        QVERIFY(!window.findChild<QPushButton *>("OKBtn")->isEnabled());
        QVERIFY(!window.findChild<QPushButton *>("CancelBtn")->isEnabled());
    }
    {
        // Database 1 set, then Pictures 3: Database's button 3 is not set.
        FindFile1 window(ui.state);
        window.tabStrip()->setCurrentIndex(int(SearchTab::Database));
        window.option(SearchTab::Database, 1)->click();
        window.option(SearchTab::Pictures, 3)->click();
        window.okClicked();
        QCOMPARE(ui.state.searchPattern, QStringLiteral("*.XLS"));
    }
}

void TestFindFile1::enterOnOptionActsAsOk()
{
    UiFixture ui;
    FindFile1 window(ui.state);
    QSignalSpy filter(&window, &FindFile1::filterChosen);
    window.show();
    window.tabStrip()->setCurrentIndex(int(SearchTab::MultiMedia));
    QRadioButton *mp3 = window.option(SearchTab::MultiMedia, 2);
    mp3->setFocus();
    QTest::keyClick(mp3, Qt::Key_Return);
    QCOMPARE(window.chosenIndex(), 2);
    QCOMPARE(ui.state.searchPattern, QStringLiteral("*.MP3"));
    QCOMPARE(window.result(), int(QDialog::Accepted));
    QCOMPARE(filter.first().first().toInt(), 30);
}

void TestFindFile1::typedName_data()
{
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("pattern");
    QTest::newRow("a name") << QStringLiteral("letter*.doc") << QStringLiteral("letter*.doc");
    QTest::newRow("a single blank leaves the pattern") << QStringLiteral(" ") << QStringLiteral("*.KEEP");
}

void TestFindFile1::typedName()
{
    QFETCH(QString, typed);
    QFETCH(QString, pattern);
    UiFixture ui;
    ui.state.searchPattern = QStringLiteral("*.KEEP");
    FindFile1 window(ui.state);
    window.show();
    window.tabStrip()->setCurrentIndex(int(SearchTab::Miscellaneous));
    window.option(SearchTab::Miscellaneous, 5)->click();
    auto *text = window.findChild<QLineEdit *>("Text1");
    text->setText(typed);
    QTest::keyClick(text, Qt::Key_Return);
    QCOMPARE(window.result(), int(QDialog::Accepted));
    QCOMPARE(ui.state.searchPattern, pattern);
}

void TestFindFile1::findCommandsOpenTheWindow_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("toolbar find") << QStringLiteral("ID_FindBtn");
    QTest::newRow("browser menu find") << QStringLiteral("ID_mnuFind");
    QTest::newRow("Ctrl+F") << QString();
    QTest::newRow("frame menu find") << QStringLiteral("frame");
}

void TestFindFile1::findCommandsOpenTheWindow()
{
    QFETCH(QString, key);
    Browser b;
    b.window->show();
    b.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(b.window.get()));
    QString seen;
    QTimer::singleShot(0, [&] {
        if (auto *window = qobject_cast<FindFile1 *>(QApplication::activeModalWidget())) {
            seen = window->objectName();
            window->reject();
        }
    });
    if (key.isEmpty())
        QTest::keyClick(b.window.get(), Qt::Key_F, Qt::ControlModifier);
    else if (key == QLatin1String("frame"))
        b.window->runCommand(commands::BrowserAction::FindFiles);
    else
        b.window->toolClick(key);
    QCOMPARE(seen, QStringLiteral("FindFile1"));
}

void TestFindFile1::cancelSaysNoFileTypes()
{
    Browser b;
    b.state.searchPattern = QStringLiteral("*.KEEP");
    QTimer::singleShot(0, [] {
        if (auto *window = qobject_cast<FindFile1 *>(QApplication::activeModalWidget()))
            window->findChild<QPushButton *>("CancelBtn")->click();
    });
    b.window->toolClick(QStringLiteral("ID_FindBtn"));
    QCOMPARE(b.window->findChild<QLabel *>("StatusText")->text(), QStringLiteral("No File Types Selected"));
    QCOMPARE(b.state.searchPattern, QStringLiteral("*.KEEP"));
    QVERIFY(!b.window->searchRunning());
}

void TestFindFile1::helpOpensTheSearchTopic()
{
    Browser b;
    QTimer::singleShot(0, [] {
        if (auto *window = qobject_cast<FindFile1 *>(QApplication::activeModalWidget())) {
            window->findChild<QPushButton *>("HelpBtn")->click();
            window->reject();
        }
    });
    b.window->toolClick(QStringLiteral("ID_FindBtn"));
    HelpWindow *help = b.window->findChild<HelpWindow *>();
    QVERIFY(help);
    QCOMPARE(help->currentPage(), QStringLiteral("search.html"));
}

void TestFindFile1::walkShowsFoundFolderAndFindNextGoesOn()
{
    Browser b;
    b.files.createFile(QStringLiteral("a/x.txt"));
    b.files.createFile(QStringLiteral("b/one.pcx"));
    b.files.createFile(QStringLiteral("c/two.PCX"));

    QCOMPARE(b.find(QStringLiteral("*.PCX")), SearchOutcome::Found);
    QCOMPARE(b.window->currentFolder(), b.files.filePath(QStringLiteral("b")));
    QCOMPARE(b.window->windowTitle(), QStringLiteral("Tarnby 3.0 - ") + b.files.filePath(QStringLiteral("b")));
    QCOMPARE(b.window->fileList()->shownFilePaths(), QStringList(b.files.filePath(QStringLiteral("b/one.pcx"))));
    QVERIFY(!b.window->commandBar()->isEnabled(QStringLiteral("ID_StopBtn")));

    QCOMPARE(b.find(QStringLiteral("*.PCX"), true), SearchOutcome::Found);
    QCOMPARE(b.window->currentFolder(), b.files.filePath(QStringLiteral("c")));

    // The network question is answered No by the script; then the end.
    QCOMPARE(b.find(QStringLiteral("*.PCX"), true), SearchOutcome::EndOfTree);
    QCOMPARE(b.responder.messageTexts(),
             QStringList({QStringLiteral("Do You want to Search the Network?"), QStringLiteral(" End of Search . . .")}));
    QCOMPARE(b.responder.messages().last().title, QStringLiteral("Tarnby 3.0"));
    QCOMPARE(b.window->fileSearch()->position(), 0);

    // An empty pattern searches for "*.BMP".
    b.files.createFile(QStringLiteral("c/p.bmp"));
    QCOMPARE(b.find(QString()), SearchOutcome::Found);
    QCOMPARE(b.state.searchPattern, QStringLiteral("*.BMP"));
    QCOMPARE(b.window->currentFolder(), b.files.filePath(QStringLiteral("c")));
}

void TestFindFile1::thumbnailsWaitForTheEnd()
{
    // With thumbnails shown, the folders the walk passes through (no
    // pictures in them) do not each ask for thumbnails.
    Browser b;
    QImage picture(16, 16, QImage::Format_RGB32);
    picture.fill(Qt::red);
    QVERIFY(picture.save(b.files.filePath(QStringLiteral("start.png"))));
    for (int i = 0; i < 5; ++i)
        b.files.createFile(QStringLiteral("f%1/notes.txt").arg(i));
    b.files.createFolder(QStringLiteral("g"));
    QVERIFY(picture.save(b.files.filePath(QStringLiteral("g/found.png"))));
    QSignalSpy loaded(b.window->fileList(), &FileListModel::folderLoaded);
    QVERIFY(b.window->goToFolder(b.files.path()));
    QVERIFY(loaded.wait(5000));
    b.window->runCommand(commands::BrowserAction::ViewThumbnails);
    QVERIFY(b.window->thumbnailsShown());
    b.responder.clear();
    QCOMPARE(b.find(QStringLiteral("*.PNG;*.TXT")), SearchOutcome::Found);
    QCOMPARE(b.find(QStringLiteral("*.PNG"), true), SearchOutcome::Found);
    QCOMPARE(b.window->currentFolder(), b.files.filePath(QStringLiteral("g")));
    QVERIFY(!b.responder.messageTexts().contains(QStringLiteral("No Thumbnails to Display")));
    QVERIFY(b.window->thumbnailsShown());
}

void TestFindFile1::stopButtonAndEscapeCancel_data()
{
    QTest::addColumn<bool>("escape");
    QTest::newRow("stop button") << false;
    QTest::newRow("Esc") << true;
}

void TestFindFile1::stopButtonAndEscapeCancel()
{
    QFETCH(bool, escape);
    Browser b;
    for (int i = 0; i < 300; ++i)
        b.files.createFolder(QStringLiteral("f%1").arg(i));
    b.window->show();
    b.window->activateWindow();
    QVERIFY(QTest::qWaitForWindowActive(b.window.get()));
    b.state.searchPattern = QStringLiteral("*.PCX");
    QSignalSpy finished(b.window.get(), &Tarnby1::searchFinished);
    b.window->FindFileRoutine();
    QVERIFY(b.window->searchRunning());
    QVERIFY(b.window->commandBar()->isEnabled(QStringLiteral("ID_StopBtn")));
    // A second walk does not start while one runs.
    b.window->FindNext();
    // The stop request arrives between slices, as a click would.
    QTimer::singleShot(0, b.window.get(), [&] {
        if (escape)
            QTest::keyClick(b.window.get(), Qt::Key_Escape);
        else
            b.window->toolClick(QStringLiteral("ID_StopBtn"));
    });
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().value<SearchOutcome>(), SearchOutcome::Cancelled);
    QCOMPARE(b.responder.messageTexts().last(), QStringLiteral("   Search Cancelled"));
    QVERIFY(b.window->fileSearch()->examinedCount() < 300);
    QVERIFY(!b.window->searchRunning());
}

void TestFindFile1::continueQuestionThroughMessages()
{
    Browser b;
    for (int i = 0; i < 30; ++i)
        b.files.createFolder(QStringLiteral("f%1").arg(i, 2, 10, QLatin1Char('0')));
    // The options' bounds are far above this tree; smaller numbers show the
    // question's wording and its growth the same way.
    b.state.options.initialSearchCount = 10;
    b.state.options.nextSearchCount = 5;
    b.responder.answerMessage(MessageAnswer::No);  // the network node, second in the tree
    b.responder.answerMessage(MessageAnswer::Yes); // after 15 folders
    b.responder.answerMessage(MessageAnswer::No);  // after 20
    QCOMPARE(b.find(QStringLiteral("*.TGA")), SearchOutcome::Declined);
    QCOMPARE(b.responder.messageTexts(),
             QStringList({QStringLiteral("Do You want to Search the Network?"),
                          QStringLiteral("Do you want to continue the Search for - *.TGA ?"),
                          QStringLiteral("Do you want to continue the Search for - *.TGA ?")}));
    QCOMPARE(b.window->fileSearch()->examinedCount(), 20);
}

QTEST_MAIN(TestFindFile1)
#include "tst_findfile1.moc"
