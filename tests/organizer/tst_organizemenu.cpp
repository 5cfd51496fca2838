#include "ModalCloser.h"
#include "UiFixture.h"

#include "core/catalogue/CommandKeys.h"
#include "core/organizer/OrganizerStore.h"
#include "ui/browser/Tarnby1.h"
#include "ui/organizer/GrpBatch1.h"

#include <QFile>
#include <QTest>

using namespace tarnby;

// The Organize menu and the two organizer tools of the browser open their
// windows; a damaged catalogue is reported with the repair offered instead.
class TestOrganizeMenu : public QObject
{
    Q_OBJECT
private slots:
    void init();
    void cleanup();
    void commandsOpenTheirWindows_data();
    void commandsOpenTheirWindows();
    void batchWindowStaysOpenBesideTheBrowser();
    void damagedCatalogueOffersRepair();

private:
    std::unique_ptr<UiFixture> m_ui;
    std::unique_ptr<ui::Tarnby1> m_browser;
};

void TestOrganizeMenu::init()
{
    m_ui = std::make_unique<UiFixture>();
    m_browser = std::make_unique<ui::Tarnby1>(m_ui->state, m_ui->services, m_ui->store);
    ui::StartupRequest request;
    request.homeOption = m_ui->home.path();
    request.dataFolder = m_ui->home.filePath(QStringLiteral("data"));
    m_browser->load(request);
    QVERIFY(QFile::exists(m_ui->state.organizerDatabase()));
    m_ui->responder.clear();
}

void TestOrganizeMenu::cleanup()
{
    m_browser.reset();
    m_ui.reset();
}

void TestOrganizeMenu::commandsOpenTheirWindows_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("window");
    QTest::newRow("View and Select File Groups") << QString(commands::keys::mnuViewGroups) << "GrpBrow1";
    QTest::newRow("Browse Table of Files") << QString(commands::keys::OrgTBBrwBtn) << "GrpBrow1";
    QTest::newRow("Create and Maintain File Groups") << QString(commands::keys::mnuCreateGroups) << "GrpMaint";
    QTest::newRow("Select, Add and Maintain Files") << QString(commands::keys::mnuSelectFilesGroup) << "GrpFlem1";
    QTest::newRow("Add Files to File Organizer Table") << QString(commands::keys::AddOrgFilesBtn) << "GrpFlem1";
    QTest::newRow("Clear all Files") << QString(commands::keys::mnuClearFilesOrg) << "GrpClear1";
    QTest::newRow("Repair or Compact") << QString(commands::keys::mnuRepairOrganizerDatabase) << "GrpRepair1";
}

void TestOrganizeMenu::commandsOpenTheirWindows()
{
    QFETCH(QString, key);
    QFETCH(QString, window);
    ModalCloser closer;
    m_browser->toolClick(key);
    QCOMPARE(closer.seen(), QStringList{window});
}

void TestOrganizeMenu::batchWindowStaysOpenBesideTheBrowser()
{
    m_browser->toolClick(QString(commands::keys::mnuOrganizeFilesSearch));
    QVERIFY(m_browser->batchWindow());
    QVERIFY(m_browser->batchWindow()->isVisible());
    QVERIFY(!m_browser->batchWindow()->isModal());
    // A second click brings the same window forward.
    ui::GrpBatch1 *first = m_browser->batchWindow();
    m_browser->toolClick(QString(commands::keys::mnuOrganizeFilesSearch));
    QCOMPARE(m_browser->batchWindow(), first);
}

void TestOrganizeMenu::damagedCatalogueOffersRepair()
{
    QFile f(m_ui->state.organizerDatabase());
    QVERIFY(f.open(QIODevice::WriteOnly | QIODevice::Truncate));
    f.write(QByteArray("broken ").repeated(200));
    f.close();
    ModalCloser closer;
    m_ui->responder.answerMessage(ui::MessageAnswer::Yes);
    m_browser->toolClick(QString(commands::keys::mnuViewGroups));
    QCOMPARE(m_ui->responder.messages().size(), 1);
    QVERIFY(m_ui->responder.messageTexts().first().contains(QLatin1String("damaged")));
    // Yes opens the repair window, not the browser.
    QCOMPARE(closer.seen(), QStringList{"GrpRepair1"});
}

QTEST_MAIN(TestOrganizeMenu)
#include "tst_organizemenu.moc"
