#include "ModalCloser.h"
#include "UiFixture.h"

#include "core/settings/ProgramOptions.h"
#include "core/tools/PictureList.h"
#include "core/tools/QuickTips.h"
#include "core/tools/SystemInfo.h"
#include "ui/browser/Tarnby1.h"
#include "ui/tools/About1.h"
#include "ui/tools/GetURL1.h"
#include "ui/tools/QuikTip1.h"

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>

using namespace tarnby;
using namespace tarnby::ui;

class TestToolWindows : public QObject
{
    Q_OBJECT

private slots:
    void init() { m_ui = std::make_unique<UiFixture>(); }
    void cleanup() { m_ui.reset(); }

    void internetListControls();
    void internetListOpensWithFirstEntry();
    void internetListAddsOnce_data();
    void internetListAddsOnce();
    void internetListMovesAndDeletes();
    void internetListEmptyWritesEmptyFile();
    void tipsMissingFile();
    void tipsEmptyFile();
    void tipsShownAndOption();
    void tipsDamagedFile();
    void tipsEmailKey();
    void aboutTexts();
    void sysInfo_data();
    void sysInfo();
    void browserOpensTipsAtStartup_data();
    void browserOpensTipsAtStartup();

private:
    std::unique_ptr<UiFixture> m_ui;
};

void TestToolWindows::internetListControls()
{
    GetURL1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.windowTitle(), QStringLiteral("Select Multimedia from the Internet"));
    const QList<QPair<QString, QString>> tooltips = {
        {"Text1", "Enter URL of Multimedia or Picture File to Display"},
        {"OKBtn", "Locate Picture or Multimedia File on the Internet"},
        {"DeleteBtn", "Delete Multimedia or Picture File from the list"},
        {"UpBtn", "Move Multimedia or Picture File Up one position on the list"},
        {"DownBtn", "Move Multimedia or Picture File Down one position on the list"},
        {"ExitBtn", "Close Select Multimedia from Internet Window"},
        {"HelpBtn", "Help with Select Multimedia from Internet Window"},
    };
    for (const auto &[name, tooltip] : tooltips) {
        auto *widget = window.findChild<QWidget *>(name);
        QVERIFY2(widget, qPrintable(name));
        QCOMPARE(widget->toolTip(), tooltip);
    }
    QVERIFY(window.findChild<QListWidget *>("List1"));
    QVERIFY(m_ui->state.internetListOpen);
    window.findChild<QPushButton *>("ExitBtn")->click();
    QVERIFY(!m_ui->state.internetListOpen);
}

void TestToolWindows::internetListOpensWithFirstEntry()
{
    m_ui->home.createFile(tools::PictureListFileName, "http://a/first.jpg\r\nhttp://b/second.png\r\n");
    GetURL1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.addresses(), (QStringList{"http://a/first.jpg", "http://b/second.png"}));
    QCOMPARE(window.selectedRow(), 0);
    auto *text = window.findChild<QLineEdit *>("Text1");
    QCOMPARE(text->text(), QStringLiteral("http://a/first.jpg"));
    // A click on an entry copies it into Text1.
    window.findChild<QListWidget *>("List1")->setCurrentRow(1);
    QCOMPARE(text->text(), QStringLiteral("http://b/second.png"));
}

void TestToolWindows::internetListAddsOnce_data()
{
    QTest::addColumn<QStringList>("typed");
    QTest::addColumn<QStringList>("list");
    const QString url = QStringLiteral("http://example.org/boat.jpg");
    QTest::newRow("the same address twice") << QStringList{url, url} << QStringList{url};
    QTest::newRow("blanks around an address") << QStringList{url, "  " + url + "  "} << QStringList{url};
    QTest::newRow("two addresses") << QStringList{url, "http://x/y.gif"} << QStringList{url, "http://x/y.gif"};
}

void TestToolWindows::internetListAddsOnce()
{
    QFETCH(QStringList, typed);
    QFETCH(QStringList, list);
    {
        GetURL1 window(m_ui->state, m_ui->services);
        QSignalSpy displayed(&window, &GetURL1::displayRequested);
        auto *text = window.findChild<QLineEdit *>("Text1");
        for (const QString &address : typed) {
            text->setText(address);
            // Enter in Text1 acts as OK.
            QTest::keyClick(text, Qt::Key_Return);
        }
        QCOMPARE(displayed.size(), typed.size());
        QCOMPARE(displayed.last().at(0).toString(), typed.last().trimmed());
        QCOMPARE(m_ui->state.currentFile, typed.last().trimmed());
        QCOMPARE(window.addresses(), list);
        window.close();
    }
    QCOMPARE(tools::readPictureList(m_ui->home.path()), list);
}

void TestToolWindows::internetListMovesAndDeletes()
{
    m_ui->home.createFile(tools::PictureListFileName, "a\r\nb\r\nc\r\n");
    GetURL1 window(m_ui->state, m_ui->services);
    auto *list = window.findChild<QListWidget *>("List1");
    window.findChild<QPushButton *>("UpBtn")->click(); // at the top: nothing
    QCOMPARE(window.addresses(), (QStringList{"a", "b", "c"}));
    window.findChild<QPushButton *>("DownBtn")->click();
    QCOMPARE(window.addresses(), (QStringList{"b", "a", "c"}));
    QCOMPARE(list->currentRow(), 1);
    list->setCurrentRow(2);
    window.findChild<QPushButton *>("DownBtn")->click(); // at the bottom: nothing
    QCOMPARE(window.addresses(), (QStringList{"b", "a", "c"}));
    window.findChild<QPushButton *>("DeleteBtn")->click();
    QCOMPARE(window.addresses(), (QStringList{"b", "a"}));
    window.reject(); // Esc closes too, and the list is still written
    QCOMPARE(m_ui->home.read(tools::PictureListFileName), QByteArray("b\r\na\r\n"));
}

void TestToolWindows::internetListEmptyWritesEmptyFile()
{
    m_ui->home.createFile(tools::PictureListFileName, "only\r\n");
    {
        GetURL1 window(m_ui->state, m_ui->services);
        window.findChild<QPushButton *>("DeleteBtn")->click();
        window.findChild<QPushButton *>("ExitBtn")->click();
    }
    QVERIFY(QFile::exists(m_ui->home.filePath(tools::PictureListFileName)));
    QCOMPARE(m_ui->home.read(tools::PictureListFileName), QByteArray());
}

void TestToolWindows::tipsMissingFile()
{
    QuikTip1 window(m_ui->state, m_ui->services);
    QCOMPARE(window.windowTitle(), QStringLiteral("Quick Tip of the Day"));
    QCOMPARE(window.findChild<QLabel *>("lblTipText")->text(), tools::missingTipsText());
    QVERIFY(m_ui->responder.messages().isEmpty());
    QCOMPARE(window.findChild<QLabel *>("Label1")->text(), QStringLiteral("Did you know..."));
    auto *box = window.findChild<QCheckBox *>("chkLoadTipsAtStartup");
    QCOMPARE(box->text(), QStringLiteral("Do not Show Tips at Startup"));
    QCOMPARE(box->toolTip(), QStringLiteral("Check if you do not want to display these quick tips at Start Up"));
    QCOMPARE(window.findChild<QPushButton *>("NextTipBtn")->text(), QStringLiteral("&Next Tip"));
    QCOMPARE(window.findChild<QPushButton *>("NextTipBtn")->toolTip(), QStringLiteral("Display Next Quick Tip"));
    QCOMPARE(window.findChild<QPushButton *>("OKBtn")->toolTip(),
             QStringLiteral("Set Option whether to display tips at startup"));
    QVERIFY(m_ui->state.tipsWindowOpen);
}

void TestToolWindows::tipsEmptyFile()
{
    m_ui->home.createFile(tools::TipsFileName, "");
    QuikTip1 window(m_ui->state, m_ui->services);
    auto *label = window.findChild<QLabel *>("lblTipText");
    const QString designed = label->text();
    QVERIFY(window.tips().isEmpty());
    QVERIFY(designed != tools::missingTipsText());
    window.findChild<QPushButton *>("NextTipBtn")->click();
    QCOMPARE(label->text(), designed);
    QVERIFY(m_ui->responder.messages().isEmpty());
}

void TestToolWindows::tipsShownAndOption()
{
    m_ui->home.createFile(tools::TipsFileName, "Tip one\r\nTip two\r\nTip three\r\n");
    m_ui->state.options.quickTipsAtStartup = QStringLiteral("0");
    QuikTip1 window(m_ui->state, m_ui->services);
    auto *label = window.findChild<QLabel *>("lblTipText");
    const QStringList tips{"Tip one", "Tip two", "Tip three"};
    QCOMPARE(window.tips(), tips);
    QVERIFY(tips.contains(label->text()));
    QCOMPARE(label->text(), tips.at(window.currentTip() - 1));
    for (int i = 0; i < 10; ++i) {
        window.findChild<QPushButton *>("NextTipBtn")->click();
        QVERIFY(tips.contains(label->text()));
    }
    auto *box = window.findChild<QCheckBox *>("chkLoadTipsAtStartup");
    QVERIFY(!box->isChecked());
    box->setChecked(true);
    window.findChild<QPushButton *>("OKBtn")->click();
    QCOMPARE(m_ui->state.options.quickTipsAtStartup, QStringLiteral("1"));
    settings::ProgramOptions stored;
    settings::readProgramOptions(m_ui->home.path(), stored);
    QCOMPARE(stored.quickTipsAtStartup, QStringLiteral("1"));
    QVERIFY(!m_ui->state.tipsWindowOpen);
}

void TestToolWindows::tipsDamagedFile()
{
    m_ui->home.createFile(tools::TipsFileName, QByteArray("Good tip\r\nbroken\0tip\r\n", 22));
    QuikTip1 window(m_ui->state, m_ui->services);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{"Error Loading Quick Tips File"});
    QCOMPARE(m_ui->responder.messages().first().title, QStringLiteral("Tarnby 3.0"));
    QCOMPARE(window.tips(), QStringList{"Good tip"});
    QCOMPARE(window.findChild<QLabel *>("lblTipText")->text(), QStringLiteral("Good tip"));
}

void TestToolWindows::tipsEmailKey()
{
    m_ui->home.createFile(tools::TipsFileName, "Mail tip\r\n");
    QuikTip1 *window = showQuickTips(m_ui->state, m_ui->services, nullptr, QStringLiteral("EM"));
    QVERIFY(window);
    QCOMPARE(window->TIPKEY, QStringLiteral("EM"));
    QCOMPARE(window->findChild<QLabel *>("lblTipText")->text(), QStringLiteral("Mail tip"));
    // One tips window at a time.
    QCOMPARE(showQuickTips(m_ui->state, m_ui->services, nullptr), window);
    QPointer<QuikTip1> guard(window);
    window->close();
    QTRY_VERIFY(!guard);
}

void TestToolWindows::aboutTexts()
{
    About1 window(m_ui->state, m_ui->services, m_ui->store);
    QCOMPARE(window.windowTitle(), QStringLiteral("About Tarnby 3.0"));
    QStringList texts;
    for (QLabel *label : window.findChildren<QLabel *>())
        texts << label->text();
    QVERIFY(texts.contains(QStringLiteral("The Tarnby - Version 3.0")));
    QVERIFY(std::any_of(texts.begin(), texts.end(), [](const QString &t) {
        return t.startsWith(QStringLiteral("The Tarnby helps you find common file types for Pictures, multimedia, "
                                           "documents, text, database, and spread sheet files."));
    }));
    QVERIFY(std::any_of(texts.begin(), texts.end(), [](const QString &t) { return t.startsWith("Warning: "); }));
    QCOMPARE(window.findChild<QPushButton *>("OKBtn")->toolTip(), QStringLiteral("Exit About the Tarnby 2.0"));
    QCOMPARE(window.findChild<QPushButton *>("SysBtn")->text(), QStringLiteral("&System Info..."));
    QCOMPARE(window.findChild<QPushButton *>("SysBtn")->toolTip(), QStringLiteral("View Windows System Information"));
    QCOMPARE(window.findChildren<QFrame *>("Line1").size(), 2);
    QVERIFY(window.findChild<QLabel *>("picIcon"));
    QVERIFY(m_ui->state.aboutWindowOpen);
}

void TestToolWindows::sysInfo_data()
{
    QTest::addColumn<QString>("registryPath");  // the MSINFO "PATH" value in the store; empty: none
    QTest::addColumn<bool>("sharedToolsKey");   // the shared tools key, pointing at a folder without MSINFO32.EXE
    QTest::addColumn<QString>("onPath");        // a desktop program the finder knows
    QTest::addColumn<bool>("launches");         // what starting it gives
    QTest::addColumn<QString>("started");       // empty: the unavailable message
    QTest::newRow("neither key, no system information program") << "" << false << "" << true << "";
    QTest::newRow("second key without MSINFO32.EXE") << "" << true << "" << true << "";
    QTest::newRow("registry path") << "/opt/sysinfo" << false << "" << true << "/opt/sysinfo";
    QTest::newRow("desktop program") << "" << true << "hardinfo" << true << "/usr/bin/hardinfo";
    QTest::newRow("program that does not start") << "" << false << "hardinfo" << false << "";
}

void TestToolWindows::sysInfo()
{
    QFETCH(QString, registryPath);
    QFETCH(bool, sharedToolsKey);
    QFETCH(QString, onPath);
    QFETCH(bool, launches);
    QFETCH(QString, started);
    const QString root = QLatin1String(tools::LocalMachine);
    if (!registryPath.isEmpty())
        m_ui->store.setValue(tools::SettingsRegistry::section(root, tools::MsInfoKey), tools::MsInfoValue, registryPath);
    if (sharedToolsKey)
        m_ui->store.setValue(tools::SettingsRegistry::section(root, tools::SharedToolsKey), tools::SharedToolsValue,
                             m_ui->home.path());
    About1 window(m_ui->state, m_ui->services, m_ui->store);
    window.setExecutableFinder([&](const QString &name) {
        return name == onPath ? QStringLiteral("/usr/bin/") + name : QString();
    });
    QStringList launched;
    window.setLauncher([&](const QString &program) {
        launched << program;
        return launches;
    });
    window.findChild<QPushButton *>("SysBtn")->click();
    if (started.isEmpty()) {
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{"System Information Is Unavailable At This Time"});
    } else {
        QVERIFY(m_ui->responder.messages().isEmpty());
        QCOMPARE(launched, QStringList{started});
    }
}

void TestToolWindows::browserOpensTipsAtStartup_data()
{
    QTest::addColumn<QString>("option");
    QTest::addColumn<bool>("shown");
    QTest::newRow("tips at start-up") << "0" << true;
    QTest::newRow("do not show tips at start-up") << "1" << false;
}

void TestToolWindows::browserOpensTipsAtStartup()
{
    QFETCH(QString, option);
    QFETCH(bool, shown);
    const QString home = m_ui->home.filePath(QStringLiteral("home"));
    QDir().mkpath(home);
    settings::ProgramOptions options;
    options.quickTipsAtStartup = option;
    QVERIFY(settings::writeProgramOptions(home, options, nullptr));
    Tarnby1 browser(m_ui->state, m_ui->services, m_ui->store);
    StartupRequest request;
    request.homeOption = home;
    request.dataFolder = m_ui->home.filePath(QStringLiteral("data"));
    browser.load(request);
    QuikTip1 *tips = browser.findChild<QuikTip1 *>();
    QCOMPARE(tips != nullptr && tips->isVisible(), shown);
    if (shown) {
        // The delivered tips file was read.
        QVERIFY(!tips->tips().isEmpty());
        tips->close();
    }
    // The Help menu's Quick Tips opens the window; About opens its dialog.
    auto visibleTips = [&] {
        const QList<QuikTip1 *> windows = browser.findChildren<QuikTip1 *>();
        return std::count_if(windows.begin(), windows.end(), [](QuikTip1 *w) { return w->isVisible(); });
    };
    QTRY_COMPARE(visibleTips(), 0);
    browser.toolClick(QStringLiteral("ID_mnuQuickTips"));
    QCOMPARE(visibleTips(), 1);
    ModalCloser closer;
    browser.toolClick(QStringLiteral("ID_mnuAboutTarnby"));
    QCOMPARE(closer.seen(), QStringList{"About1"});
}

QTEST_MAIN(TestToolWindows)
#include "tst_toolwindows.moc"
