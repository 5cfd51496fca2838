#include "core/catalogue/CommandTables.h"

#include <QSet>
#include <QTest>

using namespace tarnby::commands;

namespace {

// The frame's keys as the command table lists them, written out here once more
// so that a key dropped or misspelt in the table shows up.
const QStringList frameKeys = {
    "ID_ReturnBtn", "ID_OpenBtn", "ID_mnuOpenFile", "ID_CloseBtn", "ID_mnuCloseFile", "ID_SaveBtn",
    "ID_mnuSaveFileAs", "ID_RenameBtn", "ID_mnuRenameFile", "ID_MoveBtn", "ID_mnuMoveFile", "ID_DeleteBtn",
    "ID_mnuDeleteFile", "ID_PrintBtn", "ID_mnuPrintFile", "ID_SendBtn", "ID_mnuSendFiles", "ID_ReceiveBtn",
    "ID_mnuReceiveFile", "ID_CopyBtn", "ID_mnuCopy", "ID_TableBtn", "ID_IndexBtn", "ID_NormalBtn",
    "ID_StretchBtn", "ID_ResizeBtn", "ID_mnuResize", "ID_BrightnessBtn", "ID_mnuBrightness", "ID_FontBtn",
    "ID_mnuAddTexttoPictures", "ID_ShapesBtn", "ID_mnuAddShapestoPictures", "ID_HelpBtn",
    "ID_mnuHelpContents", "ID_mnuOpenFileApplication", "ID_mnuOpenFileInternet", "ID_mnuFindFiles",
    "ID_mnuFindNext", "ID_mnuPrinterSetup", "ID_mnuFileProperties", "ID_mnuExit", "ID_mnuPaste",
    "ID_mnuSetDatabaseTable", "ID_mnuSetDatabaseTableIndex", "ID_mnuSetTableComments",
    "ID_mnuNormalImageView", "ID_mnuStretchImageView", "ID_mnuPanImage", "ID_mnuMagnifyingGlass",
    "ID_mnuFlip", "ID_mnuRotate", "ID_mnuReverse", "ID_mnuContrast", "ID_mnuStretchIntensity",
    "ID_mnuColorInvert", "ID_mnuSetWorkingFolders", "ID_mnuSetApplicationColors",
    "ID_mnuSetApplicationOptions", "ID_mnuCascade", "ID_mnuTileHorizontally", "ID_mnuTileVertically",
    "ID_mnuSearchHelpTopic", "ID_mnuQuickTips", "ID_mnuAbouttheTarnby", "WindowList",
};

QStringList toolKeys(const std::vector<Tool> &tools)
{
    QStringList keys;
    for (const Tool &t : tools)
        keys << QLatin1String(t.key);
    return keys;
}

QStringList menuEntryKeys(const std::vector<Menu> &menus)
{
    QStringList keys;
    for (const Menu &m : menus)
        keys << toolKeys(m.entries);
    return keys;
}

// Applies routines to a state where every key starts enabled.
QHash<QString, bool> netState(const QList<EnableChange> &changes)
{
    QHash<QString, bool> state;
    for (const EnableChange &c : changes)
        state[c.key] = c.enabled;
    return state;
}

} // namespace

class TestCommandTables : public QObject
{
    Q_OBJECT
private slots:
    void frameDispatchHoldsEveryKey();
    void frameDispatchTargets_data();
    void frameDispatchTargets();
    void deadKeysDoNothing_data();
    void deadKeysDoNothing();
    void frameToolsAreDispatchedOrDead();
    void frameMenuAndToolbarOrder();
    void operationNames();
    void enabling_data();
    void enabling();
    void enableButtonsNetsTableAndIndexDisabled();
    void browserToolsAreDispatched();
    void browserTooltips();
    void categoryButtons();
    void databaseEntriesW4Rule_data();
    void databaseEntriesW4Rule();
};

void TestCommandTables::frameDispatchHoldsEveryKey()
{
    QCOMPARE(frameDispatchKeys(), frameKeys);
    for (const QString &key : frameKeys)
        QVERIFY2(frameDispatch(key).has_value(), qPrintable(key));
    QCOMPARE(QSet<QString>(frameKeys.begin(), frameKeys.end()).size(), frameKeys.size());
}

void TestCommandTables::frameDispatchTargets_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("operation"); // empty: a frame action
    QTest::addColumn<int>("action");
    QTest::newRow("Close button") << "ID_CloseBtn" << "mnuFileClose_Click" << -1;
    QTest::newRow("Save menu") << "ID_mnuSaveFileAs" << "mnuFileSaveAs_Click" << -1;
    QTest::newRow("Font button adds text") << "ID_FontBtn" << "mnuImageText_Click" << -1;
    QTest::newRow("stretch intensity handler key") << "ID_mnuStretchIntensity" << "mnuImageColorInt_Click" << -1;
    QTest::newRow("comments") << "ID_mnuSetTableComments" << "mnuViewComments_Click" << -1;
    QTest::newRow("properties") << "ID_mnuFileProperties" << "mnuFileProptee_Click" << -1;
    QTest::newRow("magnifier") << "ID_mnuMagnifyingGlass" << "MagnifyingGlass" << -1;
    QTest::newRow("open goes through the frame") << "ID_OpenBtn" << "" << int(FrameAction::OpenFile);
    QTest::newRow("receive button") << "ID_ReceiveBtn" << "" << int(FrameAction::ReceiveFiles);
    QTest::newRow("paste does nothing") << "ID_mnuPaste" << "" << int(FrameAction::NoAction);
    QTest::newRow("set table does nothing") << "ID_mnuSetDatabaseTable" << "" << int(FrameAction::NoAction);
    QTest::newRow("normal view presses the button") << "ID_mnuNormalImageView" << "" << int(FrameAction::PressNormalButton);
    QTest::newRow("window list") << "WindowList" << "" << int(FrameAction::ActivateListedWindow);
    QTest::newRow("exit closes the frame") << "ID_mnuExit" << "" << int(FrameAction::CloseFrame);
}

void TestCommandTables::frameDispatchTargets()
{
    QFETCH(QString, key);
    QFETCH(QString, operation);
    QFETCH(int, action);
    const auto target = frameDispatch(key);
    QVERIFY(target);
    if (operation.isEmpty()) {
        QVERIFY(std::holds_alternative<FrameAction>(*target));
        QCOMPARE(int(std::get<FrameAction>(*target)), action);
    } else {
        QVERIFY(std::holds_alternative<DocumentOperation>(*target));
        QCOMPARE(documentOperationName(std::get<DocumentOperation>(*target)), operation);
    }
}

void TestCommandTables::deadKeysDoNothing_data()
{
    QTest::addColumn<QString>("key");
    QTest::newRow("Receive Fi1es with a digit one") << "ID_mnuReceiveFi1es";
    QTest::newRow("Stretch Color Intensity menu key") << "ID_mnuStretchColorIntensity";
    QTest::newRow("wrong case") << "id_openbtn";
    QTest::newRow("trailing blank") << "ID_OpenBtn ";
    QTest::newRow("empty") << "";
    QTest::newRow("unknown") << "ID_NoSuchTool";
}

void TestCommandTables::deadKeysDoNothing()
{
    QFETCH(QString, key);
    QVERIFY(!frameDispatch(key).has_value());
}

void TestCommandTables::frameToolsAreDispatchedOrDead()
{
    const QStringList dead = {"ID_mnuReceiveFi1es", "ID_mnuStretchColorIntensity"};
    QStringList all = menuEntryKeys(frameMenus()) + toolKeys(frameToolbar());
    for (const QString &key : all) {
        if (dead.contains(key))
            QVERIFY2(!frameDispatch(key), qPrintable(key));
        else
            QVERIFY2(frameDispatch(key), qPrintable(key));
    }
    // The dead entries are present in the menus, as the user sees them.
    for (const QString &key : dead)
        QVERIFY(all.contains(key));
}

void TestCommandTables::frameMenuAndToolbarOrder()
{
    QStringList captions;
    for (const Menu &m : frameMenus())
        captions << QLatin1String(m.caption);
    QCOMPARE(captions, (QStringList{"&File", "&Edit", "&View", "Image", "&Window", "&Help", "Utilities"}));
    QStringList file;
    for (const Tool &t : frameMenus().front().entries)
        file << QLatin1String(t.caption);
    QCOMPARE(file, (QStringList{"Open File", "Close File", "Open File with another Application",
                                "Open File Located on the Internet", "Find Files", "Find Next", "Save File As",
                                "Rename File", "Move File", "Delete File", "Print File", "Printer Setup",
                                "Send Files", "Receive Fi1es", "File Properties", "Exit"}));
    QStringList buttons;
    for (const Tool &t : frameToolbar())
        buttons << QLatin1String(t.caption);
    QCOMPARE(buttons, (QStringList{"Return", "Open", "Close", "Save", "Rename", "Move", "Delete", "Print", "Send",
                                   "Receive", "Copy", "Table", "Index", "Normal", "Stretch", "Resize",
                                   "Brightness", "Font", "Shapes", "Help"}));
}

void TestCommandTables::operationNames()
{
    QSet<QString> names;
    for (int i = 0; i < DocumentOperationCount; ++i) {
        const auto op = DocumentOperation(i);
        const QString name = documentOperationName(op);
        QVERIFY(!name.isEmpty());
        QCOMPARE(documentOperationFromName(name), std::optional<DocumentOperation>(op));
        names.insert(name);
    }
    QCOMPARE(names.size(), DocumentOperationCount);
    QVERIFY(!documentOperationFromName(QStringLiteral("mnuFileExplode_Click")));
}

void TestCommandTables::enabling_data()
{
    QTest::addColumn<int>("routine");
    QTest::addColumn<int>("indexCount");
    QTest::addColumn<QString>("key");
    QTest::addColumn<int>("expected"); // 1 enabled, 0 disabled, -1 untouched

    const int D = int(EnablingRoutine::DisableButtons), P = int(EnablingRoutine::EnableButtons),
              M = int(EnablingRoutine::EnableMDIButtons), T = int(EnablingRoutine::EnableTextButtons),
              B = int(EnablingRoutine::EnableDataButtons);
    QTest::newRow("disable keeps Open button") << D << 0 << "ID_OpenBtn" << -1;
    QTest::newRow("disable greys the Open menu entry") << D << 0 << "ID_mnuOpenFile" << 0;
    QTest::newRow("disable keeps Help") << D << 0 << "ID_HelpBtn" << -1;
    QTest::newRow("disable greys Receive") << D << 0 << "ID_ReceiveBtn" << 0;
    QTest::newRow("disable leaves Set Database Table") << D << 0 << "ID_mnuSetDatabaseTable" << -1;
    QTest::newRow("picture enables Image menu") << P << 0 << "ID_mnuImage" << 1;
    QTest::newRow("picture enables Pan Image") << P << 0 << "ID_mnuPanImage" << 1;
    QTest::newRow("picture greys table comments") << P << 0 << "ID_mnuSetTableComments" << 0;
    QTest::newRow("empty frame enables Open") << M << 0 << "ID_mnuOpenFile" << 1;
    QTest::newRow("empty frame leaves Close") << M << 0 << "ID_CloseBtn" << -1;
    QTest::newRow("text enables Copy") << T << 0 << "ID_CopyBtn" << 1;
    QTest::newRow("text enables Receive") << T << 0 << "ID_ReceiveBtn" << 1;
    QTest::newRow("text greys Stretch") << T << 0 << "ID_StretchBtn" << 0;
    QTest::newRow("text greys Table") << T << 0 << "ID_TableBtn" << 0;
    QTest::newRow("text greys the View menu") << T << 0 << "ID_mnuView" << 0;
    QTest::newRow("text leaves the Edit menu") << T << 0 << "ID_mnuEdit" << -1;
    QTest::newRow("text leaves the Open menu entry") << T << 0 << "ID_mnuOpenFile" << -1;
    QTest::newRow("table greys Copy") << B << 2 << "ID_CopyBtn" << 0;
    QTest::newRow("table leaves the Table button") << B << 2 << "ID_TableBtn" << -1;
    QTest::newRow("table with indexes enables Index") << B << 2 << "ID_IndexBtn" << 1;
    QTest::newRow("table without index leaves Index") << B << 0 << "ID_IndexBtn" << -1;
    QTest::newRow("table without index leaves its menu entry") << B << 0 << "ID_mnuSetDatabaseTableIndex" << -1;
    QTest::newRow("table with index enables its menu entry") << B << 1 << "ID_mnuSetDatabaseTableIndex" << 1;
    QTest::newRow("table enables comments") << B << 0 << "ID_mnuSetTableComments" << 1;
    QTest::newRow("table greys the Image menu") << B << 0 << "ID_mnuImage" << 0;
    QTest::newRow("table enables the View menu") << B << 0 << "ID_mnuView" << 1;
}

void TestCommandTables::enabling()
{
    QFETCH(int, routine);
    QFETCH(int, indexCount);
    QFETCH(QString, key);
    QFETCH(int, expected);
    const QHash<QString, bool> state = netState(enablingChanges(EnablingRoutine(routine), indexCount));
    if (expected < 0)
        QVERIFY2(!state.contains(key), qPrintable(key));
    else
        QCOMPARE(state.value(key), expected == 1);
}

void TestCommandTables::enableButtonsNetsTableAndIndexDisabled()
{
    const QList<EnableChange> changes = enablingChanges(EnablingRoutine::EnableButtons);
    int tableSteps = 0;
    for (const EnableChange &c : changes)
        tableSteps += c.key == QLatin1String("ID_TableBtn");
    QCOMPARE(tableSteps, 2); // enabled, then disabled again in the same pass
    QCOMPARE(netState(changes).value(QStringLiteral("ID_TableBtn"), true), false);
    QCOMPARE(netState(changes).value(QStringLiteral("ID_IndexBtn"), true), false);
    QCOMPARE(enablingRoutineForKind(QStringLiteral("I")), EnablingRoutine::EnableButtons);
    QCOMPARE(enablingRoutineForKind(QStringLiteral("T")), EnablingRoutine::EnableTextButtons);
    QCOMPARE(enablingRoutineForKind(QStringLiteral("D")), EnablingRoutine::EnableDataButtons);
}

void TestCommandTables::browserToolsAreDispatched()
{
    const QStringList all = menuEntryKeys(browserMenus()) + toolKeys(browserToolbar()) + toolKeys(browserCategoryToolbar());
    for (const QString &key : all)
        QVERIFY2(browserDispatch(key), qPrintable(key));
    QCOMPARE(QSet<QString>(all.begin(), all.end()).size(), all.size());
    // Every key the table knows is reachable from a tool.
    for (const QString &key : browserDispatchKeys())
        QVERIFY2(all.contains(key), qPrintable(key));
    QVERIFY(!browserDispatch(QStringLiteral("ID_Date")));
    QVERIFY(!browserDispatch(QStringLiteral("id_exitbtn")));
}

void TestCommandTables::browserTooltips()
{
    QHash<QString, QString> tips;
    for (const Tool &t : browserToolbar())
        tips.insert(QLatin1String(t.key), QLatin1String(t.tooltip));
    for (const Tool &t : browserCategoryToolbar())
        tips.insert(QLatin1String(t.key), QLatin1String(t.tooltip));
    for (const Menu &m : browserMenus())
        for (const Tool &t : m.entries)
            tips.insert(QLatin1String(t.key), QLatin1String(t.tooltip));
    QCOMPARE(tips.value("ID_MusicBtn"), QStringLiteral("Display only Music Files (MID,RMI,MP3,M3U)"));
    QCOMPARE(tips.value("ID_StopBtn"), QStringLiteral("Stop ThumbNails from Loading"));
    QCOMPARE(tips.value("ID_mnuFind"), QStringLiteral("Find Files on Disk, CD-Rom, Network, and other Devices"));
    QCOMPARE(tips.value("ID_mnuExit"), QStringLiteral("Exit the Tarnby Application"));
    QCOMPARE(tips.value("ID_ExitBtn"), QStringLiteral("Exit the Tarnby Program"));
    QCOMPARE(tips.value("ID_DocumentBtn"), QStringLiteral("Display only Text Files, HTML, Documents, and System Files"));
}

void TestCommandTables::categoryButtons()
{
    struct Row {
        BrowserAction action;
        const char *letter;
        int filter;
    };
    const Row rows[] = {
        {BrowserAction::PicturesCategory, "P", 32}, {BrowserAction::SoundsCategory, "S", 27},
        {BrowserAction::MusicCategory, "M", 30},    {BrowserAction::VideoCategory, "V", -1},
        {BrowserAction::DocumentCategory, "T", -1}, {BrowserAction::TableCategory, "T", -1},
        {BrowserAction::AllCategory, "A", -1},
    };
    for (const Row &r : rows) {
        const auto button = categoryButton(r.action);
        QVERIFY(button);
        QCOMPARE(button->letter, QLatin1String(r.letter));
        QCOMPARE(button->filterIndex, r.filter);
    }
    QVERIFY(!categoryButton(BrowserAction::Exit));
}

void TestCommandTables::databaseEntriesW4Rule_data()
{
    QTest::addColumn<QString>("ext");
    QTest::addColumn<bool>("enables");
    QTest::newRow("DBF") << "DBF" << true;
    QTest::newRow("DB") << "DB" << true;
    QTest::newRow("MDB") << "MDB" << true;
    QTest::newRow("XLS") << "XLS" << true;
    QTest::newRow("WK4 never enables") << "WK4" << false;
    QTest::newRow("W4 matches the test") << "W4" << true;
    QTest::newRow("ZIP") << "ZIP" << false;
    QTest::newRow("lower case is not upper case") << "dbf" << false;
}

void TestCommandTables::databaseEntriesW4Rule()
{
    QFETCH(QString, ext);
    QFETCH(bool, enables);
    QCOMPARE(enablesDatabaseEntries(ext), enables);
}

QTEST_GUILESS_MAIN(TestCommandTables)
#include "tst_commandtables.moc"
