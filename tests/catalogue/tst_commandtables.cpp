#include "core/catalogue/CommandTables.h"

#include <QSet>
#include <QTest>

using namespace tarnby::commands;

namespace {

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

QStringList menuKeys(const std::vector<Menu> &menus)
{
    QStringList out;
    for (const Menu &m : menus)
        out << m.key;
    return out;
}

// The keys all five enabling routines set, with and without table indexes.
QStringList enablingKeys()
{
    QStringList out;
    for (const EnablingRoutine routine : {EnablingRoutine::DisableButtons, EnablingRoutine::EnableButtons,
                                          EnablingRoutine::EnableMDIButtons, EnablingRoutine::EnableTextButtons,
                                          EnablingRoutine::EnableDataButtons}) {
        for (const int indexCount : {0, 1}) {
            for (const EnableChange &c : enablingChanges(routine, indexCount))
                out << c.key;
        }
    }
    return out;
}

// Every key each command table uses, by table.
QList<std::pair<const char *, QStringList>> tableKeys()
{
    return {
        {"frame menus", menuKeys(frameMenus()) + menuEntryKeys(frameMenus())},
        {"frame toolbar", toolKeys(frameToolbar())},
        {"frame dispatch", frameDispatchKeys()},
        {"browser menus", menuKeys(browserMenus()) + menuEntryKeys(browserMenus())},
        {"browser toolbar", toolKeys(browserToolbar())},
        {"browser category toolbar", toolKeys(browserCategoryToolbar())},
        {"browser dispatch", browserDispatchKeys()},
        {"browser selection commands", selectionCommandKeys()},
        {"browser database entries", databaseSelectionKeys()},
        {"frame enabling routines", enablingKeys()},
    };
}

QStringList declaredKeys()
{
    QStringList declared;
    for (QLatin1String key : keys::all)
        declared << key;
    return declared;
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
    void tablesUseExactlyTheDeclaredKeys();
    void frameDispatchNamesEachKeyOnce();
    void frameDispatchTargets_data();
    void frameDispatchTargets();
    void unknownKeysDoNothing_data();
    void unknownKeysDoNothing();
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

void TestCommandTables::tablesUseExactlyTheDeclaredKeys()
{
    const QStringList declared = declaredKeys();
    const QSet<QString> declaredSet(declared.begin(), declared.end());
    QCOMPARE(declaredSet.size(), declared.size()); // no text declared twice

    // A key a table spells out itself, instead of naming its constant, is
    // not among the declared ones.
    QSet<QString> used;
    for (const auto &[table, tableUses] : tableKeys()) {
        for (const QString &key : tableUses) {
            QVERIFY2(declaredSet.contains(key), qPrintable(QStringLiteral("%1: %2").arg(QLatin1String(table), key)));
            used.insert(key);
        }
    }
    // A declared key that no table uses any more is left over.
    for (const QString &key : declared)
        QVERIFY2(used.contains(key), qPrintable(key));

    // The clock panes are named like tools but are none.
    for (const QString &pane : {QString(keys::Date), QString(keys::Time)}) {
        QVERIFY2(!used.contains(pane), qPrintable(pane));
        QVERIFY2(!declaredSet.contains(pane), qPrintable(pane));
    }
}

void TestCommandTables::frameDispatchNamesEachKeyOnce()
{
    // The dispatch compares in table order, so a key named by two rows would
    // never reach the second one.
    const QStringList dispatched = frameDispatchKeys();
    QCOMPARE(QSet<QString>(dispatched.begin(), dispatched.end()).size(), dispatched.size());

    // Every row is reachable: its key is a tool of the frame, or one of the
    // keys the frame dispatches without any tool carrying them.
    const QStringList tools = menuEntryKeys(frameMenus()) + toolKeys(frameToolbar());
    const QStringList handlerOnly = {keys::mnuReceiveFile, keys::mnuStretchIntensity, keys::WindowList};
    for (const QString &key : dispatched)
        QVERIFY2(tools.contains(key) != handlerOnly.contains(key), qPrintable(key));
}

void TestCommandTables::frameDispatchTargets_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("operation"); // empty: a frame action
    QTest::addColumn<int>("action");
    QTest::newRow("stretch intensity handler key")
        << QString(keys::mnuStretchIntensity) << "mnuImageColorInt_Click" << -1;
    QTest::newRow("receive handler key")
        << QString(keys::mnuReceiveFile) << "" << int(FrameAction::ReceiveFiles);
    QTest::newRow("receive button") << QString(keys::ReceiveBtn) << "" << int(FrameAction::ReceiveFiles);
    QTest::newRow("open goes through the frame") << QString(keys::OpenBtn) << "" << int(FrameAction::OpenFile);
    QTest::newRow("paste does nothing") << QString(keys::mnuPaste) << "" << int(FrameAction::NoAction);
    QTest::newRow("set table does nothing")
        << QString(keys::mnuSetDatabaseTable) << "" << int(FrameAction::NoAction);
    QTest::newRow("normal view presses the button")
        << QString(keys::mnuNormalImageView) << "" << int(FrameAction::PressNormalButton);
    QTest::newRow("window list") << QString(keys::WindowList) << "" << int(FrameAction::ActivateListedWindow);
    QTest::newRow("exit closes the frame, not the program")
        << QString(keys::mnuExit) << "" << int(FrameAction::CloseFrame);
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

void TestCommandTables::unknownKeysDoNothing_data()
{
    QTest::addColumn<QString>("key");
    // The frame's two menu entries that match no handler on purpose.
    QTest::newRow("Receive Fi1es with a digit one") << "ID_mnuReceiveFi1es";
    QTest::newRow("Stretch Color Intensity menu key") << "ID_mnuStretchColorIntensity";
    QTest::newRow("wrong case") << "id_openbtn";
    QTest::newRow("trailing blank") << "ID_OpenBtn ";
    QTest::newRow("empty") << "";
    QTest::newRow("unknown") << "ID_NoSuchTool";
    QTest::newRow("date pane") << QString(keys::Date);
    QTest::newRow("time pane") << QString(keys::Time);
}

void TestCommandTables::unknownKeysDoNothing()
{
    QFETCH(QString, key);
    QVERIFY(!frameDispatch(key).has_value());
    QVERIFY(!browserDispatch(key).has_value());
}

void TestCommandTables::frameToolsAreDispatchedOrDead()
{
    const QStringList dead = {keys::mnuReceiveFi1es, keys::mnuStretchColorIntensity};
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
    QTest::newRow("disable keeps Open button") << D << 0 << QString(keys::OpenBtn) << -1;
    QTest::newRow("disable greys the Open menu entry") << D << 0 << QString(keys::mnuOpenFile) << 0;
    QTest::newRow("disable keeps Help") << D << 0 << QString(keys::HelpBtn) << -1;
    QTest::newRow("disable greys Receive") << D << 0 << QString(keys::ReceiveBtn) << 0;
    QTest::newRow("disable leaves Set Database Table") << D << 0 << QString(keys::mnuSetDatabaseTable) << -1;
    QTest::newRow("picture enables Image menu") << P << 0 << QString(keys::mnuImage) << 1;
    QTest::newRow("picture enables Pan Image") << P << 0 << QString(keys::mnuPanImage) << 1;
    QTest::newRow("picture greys table comments") << P << 0 << QString(keys::mnuSetTableComments) << 0;
    QTest::newRow("empty frame enables Open") << M << 0 << QString(keys::mnuOpenFile) << 1;
    QTest::newRow("empty frame leaves Close") << M << 0 << QString(keys::CloseBtn) << -1;
    QTest::newRow("text enables Copy") << T << 0 << QString(keys::CopyBtn) << 1;
    QTest::newRow("text enables Receive") << T << 0 << QString(keys::ReceiveBtn) << 1;
    QTest::newRow("text greys Stretch") << T << 0 << QString(keys::StretchBtn) << 0;
    QTest::newRow("text greys Table") << T << 0 << QString(keys::TableBtn) << 0;
    QTest::newRow("text greys the View menu") << T << 0 << QString(keys::mnuView) << 0;
    QTest::newRow("text leaves the Edit menu") << T << 0 << QString(keys::mnuEdit) << -1;
    QTest::newRow("text leaves the Open menu entry") << T << 0 << QString(keys::mnuOpenFile) << -1;
    QTest::newRow("table greys Copy") << B << 2 << QString(keys::CopyBtn) << 0;
    QTest::newRow("table leaves the Table button") << B << 2 << QString(keys::TableBtn) << -1;
    QTest::newRow("table with indexes enables Index") << B << 2 << QString(keys::IndexBtn) << 1;
    QTest::newRow("table without index leaves Index") << B << 0 << QString(keys::IndexBtn) << -1;
    QTest::newRow("table without index leaves its menu entry") << B << 0 << QString(keys::mnuSetDatabaseTableIndex) << -1;
    QTest::newRow("table with index enables its menu entry") << B << 1 << QString(keys::mnuSetDatabaseTableIndex) << 1;
    QTest::newRow("table enables comments") << B << 0 << QString(keys::mnuSetTableComments) << 1;
    QTest::newRow("table greys the Image menu") << B << 0 << QString(keys::mnuImage) << 0;
    QTest::newRow("table enables the View menu") << B << 0 << QString(keys::mnuView) << 1;
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
        tableSteps += c.key == keys::TableBtn;
    QCOMPARE(tableSteps, 2); // enabled, then disabled again in the same pass
    QCOMPARE(netState(changes).value(keys::TableBtn, true), false);
    QCOMPARE(netState(changes).value(keys::IndexBtn, true), false);
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
}

void TestCommandTables::browserTooltips()
{
    // The File menu's Exit and the Exit button run the same command under
    // different tooltips.
    const auto tooltip = [](const std::vector<Tool> &tools, QLatin1String key) {
        for (const Tool &t : tools) {
            if (t.key == key)
                return QString(QLatin1String(t.tooltip));
        }
        return QString();
    };
    QCOMPARE(tooltip(browserMenus().front().entries, keys::mnuExit), QStringLiteral("Exit the Tarnby Application"));
    QCOMPARE(tooltip(browserCategoryToolbar(), keys::ExitBtn), QStringLiteral("Exit the Tarnby Program"));
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
