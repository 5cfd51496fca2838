#include "TestDir.h"

#include "core/app/SettingsStore.h"
#include "core/tools/PictureList.h"
#include "core/tools/QuickTips.h"
#include "core/tools/SystemInfo.h"

#include <QTest>

using namespace tarnby;
using namespace tarnby::tools;

namespace {

// A registry of fixed values.
class FixedRegistry : public RegistrySource
{
public:
    std::optional<RegistryValue> read(const QString &root, const QString &key, const QString &name) const override
    {
        return values.value(root + QLatin1Char('|') + key + QLatin1Char('|') + name);
    }
    void set(const QString &key, const QString &name, RegistryValue value)
    {
        values.insert(QLatin1String(LocalMachine) + QLatin1Char('|') + key + QLatin1Char('|') + name, value);
    }
    QHash<QString, std::optional<RegistryValue>> values;
};

QByteArray dword(quint32 v)
{
    // Little-endian, as the registry stores a 32-bit number.
    const char bytes[4] = {char(v & 0xff), char((v >> 8) & 0xff), char((v >> 16) & 0xff), char(v >> 24)};
    return QByteArray(bytes, 4);
}

} // namespace

class TestToolRules : public QObject
{
    Q_OBJECT

private slots:
    void addAddress_data();
    void addAddress();
    void moveRows_data();
    void moveRows();
    void pictureListFile();
    void loadTips_data();
    void loadTips();
    void tipIndex_data();
    void tipIndex();
    void tipToShow();
    void missingTipsText();
    void startupOption();
    void keyValue_data();
    void keyValue();
    void keyValueFromSettingsStore();
    void systemInfoProgram_data();
    void systemInfoProgram();
};

void TestToolRules::addAddress_data()
{
    QTest::addColumn<QStringList>("list");
    QTest::addColumn<QString>("address");
    QTest::addColumn<bool>("added");
    const QString url = QStringLiteral("http://example.org/boat.jpg");
    QTest::newRow("new address at the end") << QStringList{"http://a/1.gif"} << url << true;
    QTest::newRow("the same address twice") << QStringList{url} << url << false;
    QTest::newRow("blanks around the address") << QStringList{url} << "  " + url + " " << false;
    QTest::newRow("blanks around the entry") << QStringList{" " + url + "  "} << url << false;
    QTest::newRow("differs in case") << QStringList{url} << url.toUpper() << true;
}

void TestToolRules::addAddress()
{
    QFETCH(QStringList, list);
    QFETCH(QString, address);
    QFETCH(bool, added);
    const QStringList before = list;
    QCOMPARE(tools::addAddress(list, address), added);
    QCOMPARE(list, added ? before + QStringList{address} : before);
}

void TestToolRules::moveRows_data()
{
    QTest::addColumn<bool>("up");
    QTest::addColumn<int>("row");
    QTest::addColumn<QStringList>("after");
    QTest::addColumn<int>("newRow");
    QTest::newRow("up from the middle") << true << 1 << QStringList{"b", "a", "c"} << 0;
    QTest::newRow("up at the top") << true << 0 << QStringList{"a", "b", "c"} << 0;
    QTest::newRow("down from the middle") << false << 1 << QStringList{"a", "c", "b"} << 2;
    QTest::newRow("down at the bottom") << false << 2 << QStringList{"a", "b", "c"} << 2;
    QTest::newRow("nothing selected") << false << -1 << QStringList{"a", "b", "c"} << -1;
}

void TestToolRules::moveRows()
{
    QFETCH(bool, up);
    QFETCH(int, row);
    QFETCH(QStringList, after);
    QFETCH(int, newRow);
    QStringList list{"a", "b", "c"};
    QCOMPARE(up ? moveUp(list, row) : moveDown(list, row), newRow);
    QCOMPARE(list, after);
}

void TestToolRules::pictureListFile()
{
    TestDir dir;
    QCOMPARE(readPictureList(dir.path()), QStringList());
    QString error;
    QVERIFY(writePictureList(dir.path(), {"http://a/1.jpg", "http://b/2.png"}, &error));
    QCOMPARE(dir.read(PictureListFileName), QByteArray("http://a/1.jpg\r\nhttp://b/2.png\r\n"));
    QCOMPARE(readPictureList(dir.path()), (QStringList{"http://a/1.jpg", "http://b/2.png"}));
    // Closing with an empty list writes an empty file.
    QVERIFY(writePictureList(dir.path(), {}, &error));
    QVERIFY(QFile::exists(dir.filePath(PictureListFileName)));
    QCOMPARE(dir.read(PictureListFileName), QByteArray());
}

void TestToolRules::loadTips_data()
{
    QTest::addColumn<QByteArray>("content"); // "<missing>": no file
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QStringList>("tips");
    QTest::addColumn<bool>("readError");
    QTest::newRow("missing file") << QByteArray("<missing>") << false << QStringList{} << false;
    QTest::newRow("empty file") << QByteArray() << true << QStringList{} << false;
    QTest::newRow("an empty line is a tip") << QByteArray("one\r\n\r\nthree\r\n") << true
                                            << QStringList{"one", "", "three"} << false;
    QTest::newRow("damaged after two tips") << QByteArray("one\r\ntwo\r\nbad\0line\r\n", 20) << true
                                            << QStringList{"one", "two"} << true;
}

void TestToolRules::loadTips()
{
    QFETCH(QByteArray, content);
    QFETCH(bool, ok);
    QFETCH(QStringList, tips);
    QFETCH(bool, readError);
    TestDir dir;
    if (content != "<missing>")
        dir.createFile(TipsFileName, content);
    const TipsLoad load = LoadTips(dir.filePath(TipsFileName));
    QCOMPARE(load.ok, ok);
    QCOMPARE(load.tips, tips);
    QCOMPARE(load.readError, readError);
    QVERIFY(!LoadTips(QString()).ok);
}

void TestToolRules::tipIndex_data()
{
    QTest::addColumn<double>("r");
    QTest::addColumn<int>("count");
    QTest::addColumn<int>("index");
    QTest::newRow("zero is the first tip") << 0.0 << 5 << 1;
    QTest::newRow("just below one is the last") << 0.9999 << 5 << 5;
    QTest::newRow("middle") << 0.5 << 4 << 3;
    QTest::newRow("no tips gives 1") << 0.3 << 0 << 1;
    QTest::newRow("one tip") << 0.7 << 1 << 1;
}

void TestToolRules::tipIndex()
{
    QFETCH(double, r);
    QFETCH(int, count);
    QFETCH(int, index);
    QCOMPARE(tipIndexFromFraction(r, count), index);
    for (int i = 0; i < 50; ++i) {
        const int random = randomTipIndex(count);
        QVERIFY(random >= 1 && random <= std::max(count, 1));
    }
}

void TestToolRules::tipToShow()
{
    const QStringList tips{"first", "", "third"};
    QCOMPARE(tools::tipToShow(tips, 1), std::optional<QString>(QStringLiteral("first")));
    QCOMPARE(tools::tipToShow(tips, 2), std::optional<QString>(QString()));
    QCOMPARE(tools::tipToShow(tips, 4), std::nullopt);
    QCOMPARE(tools::tipToShow({}, 1), std::nullopt);
}

void TestToolRules::missingTipsText()
{
    QCOMPARE(tools::missingTipsText(),
             QStringLiteral("That the TIPHELP.TXT file was not found? \r\n\r\nCreate a text file named TIPHELP.TXT "
                            "using NotePad with 1 tip per line. Then place it in the same directory as the "
                            "application. "));
}

void TestToolRules::startupOption()
{
    QVERIFY(showTipsAtStartup(QStringLiteral("0")));
    QVERIFY(showTipsAtStartup(QString()));
    QVERIFY(!showTipsAtStartup(QStringLiteral("1")));
    QCOMPARE(startupOptionValue(true), QStringLiteral("1"));
    QCOMPARE(startupOptionValue(false), QStringLiteral("0"));
}

void TestToolRules::keyValue_data()
{
    QTest::addColumn<int>("type");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<bool>("ok");
    QTest::addColumn<QString>("value");
    QTest::newRow("string with its NUL") << RegString << QByteArray("C:\\Tools\\msinfo32.exe", 22) << true
                                         << "C:\\Tools\\msinfo32.exe";
    QTest::newRow("string without NUL") << RegString << QByteArray("abc") << true << "abc";
    QTest::newRow("registry value 266 reads 26") << RegDword << dword(266) << true << "26";
    QTest::newRow("255 keeps its digits") << RegDword << dword(255) << true << "255";
    QTest::newRow("0x01000000 loses its zero bytes' digits") << RegDword << dword(0x01000000) << true << "4096";
    QTest::newRow("other type") << 3 << QByteArray("\x01\x02") << false << "";
}

void TestToolRules::keyValue()
{
    QFETCH(int, type);
    QFETCH(QByteArray, data);
    QFETCH(bool, ok);
    QFETCH(QString, value);
    FixedRegistry registry;
    registry.set(QStringLiteral("K"), QStringLiteral("V"), {type, data});
    QString read;
    QCOMPARE(GetKeyValue(registry, QLatin1String(LocalMachine), QStringLiteral("K"), QStringLiteral("V"), &read), ok);
    if (ok)
        QCOMPARE(read, value);
    QVERIFY(!GetKeyValue(registry, QLatin1String(LocalMachine), QStringLiteral("K"), QStringLiteral("missing"), &read));
}

void TestToolRules::keyValueFromSettingsStore()
{
    TestDir dir;
    SettingsStore store(dir.filePath("store.ini"));
    store.setValue(SettingsRegistry::section(LocalMachine, MsInfoKey), MsInfoValue, QStringLiteral("/opt/info"));
    store.setValue(SettingsRegistry::section(LocalMachine, QStringLiteral("SOFTWARE\\Numbers")), "Size", 266);
    SettingsRegistry registry(store);
    QString value;
    QVERIFY(GetKeyValue(registry, LocalMachine, MsInfoKey, MsInfoValue, &value));
    QCOMPARE(value, QStringLiteral("/opt/info"));
    QVERIFY(GetKeyValue(registry, LocalMachine, QStringLiteral("SOFTWARE\\Numbers"), QStringLiteral("Size"), &value));
    QCOMPARE(value, QStringLiteral("26"));
    QVERIFY(!GetKeyValue(registry, LocalMachine, SharedToolsKey, SharedToolsValue, &value));
}

void TestToolRules::systemInfoProgram_data()
{
    QTest::addColumn<QString>("pathValue");      // the MSINFO "PATH" value; empty: none
    QTest::addColumn<bool>("sharedTools");       // the shared tools key is there
    QTest::addColumn<bool>("msinfoFileThere");   // ... with MSINFO32.EXE in its folder
    QTest::addColumn<QString>("onPath");         // the desktop program found on the PATH
    QTest::addColumn<QString>("expected");       // "<shared>": the MSINFO32.EXE beside the shared tools
    QTest::newRow("neither key, no program: unavailable") << "" << false << false << "" << "";
    QTest::newRow("first key") << "/opt/msinfo" << true << true << "hardinfo" << "/opt/msinfo";
    QTest::newRow("second key with the program") << "" << true << true << "" << "<shared>";
    QTest::newRow("second key without the program: unavailable") << "" << true << false << "" << "";
    QTest::newRow("desktop program on the path") << "" << false << false << "hardinfo" << "/usr/bin/hardinfo";
    QTest::newRow("first of the desktop programs wins") << "" << false << false << "kinfocenter,hardinfo"
                                                         << "/usr/bin/kinfocenter";
}

void TestToolRules::systemInfoProgram()
{
    QFETCH(QString, pathValue);
    QFETCH(bool, sharedTools);
    QFETCH(bool, msinfoFileThere);
    QFETCH(QString, onPath);
    QFETCH(QString, expected);
    TestDir dir;
    FixedRegistry registry;
    if (!pathValue.isEmpty())
        registry.set(MsInfoKey, MsInfoValue, {RegString, pathValue.toUtf8() + '\0'});
    if (sharedTools)
        registry.set(SharedToolsKey, SharedToolsValue, {RegString, dir.path().toUtf8() + '\0'});
    if (msinfoFileThere)
        dir.createFile(MsInfoProgram);
    const QStringList found = onPath.split(QLatin1Char(','), Qt::SkipEmptyParts);
    const auto finder = [&](const QString &name) {
        return found.contains(name) ? QStringLiteral("/usr/bin/") + name : QString();
    };
    if (expected == QLatin1String("<shared>"))
        expected = dir.filePath(MsInfoProgram);
    QCOMPARE(findSystemInfoProgram(registry, finder), expected);
}

QTEST_MAIN(TestToolRules)
#include "tst_toolrules.moc"
