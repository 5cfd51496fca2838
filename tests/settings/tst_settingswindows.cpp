#include "ModalCloser.h"
#include "UiFixture.h"

#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "core/settings/MailPasswords.h"
#include "core/settings/ProgramOptions.h"
#include "core/settings/WindowColors.h"
#include "core/settings/WorkingFolders.h"
#include "ui/browser/Tarnby1.h"
#include "ui/frame/MDIForm1.h"
#include "ui/services/UiServices.h"
#include "ui/settings/SetColor1.h"
#include "ui/settings/SetFoldr1.h"
#include "ui/settings/SetOptns1.h"
#include "ui/settings/WindowColorsApplier.h"

#include <QMdiArea>

#include <QCheckBox>
#include <QComboBox>
#include <QDirIterator>
#include <QGridLayout>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRadioButton>
#include <QSettings>
#include <QSlider>
#include <QSpinBox>
#include <QTabWidget>
#include <QtTest>

using namespace tarnby;
using namespace tarnby::ui;
using settings::Swatch;

namespace {

template<class T = QWidget>
T *child(QWidget *parent, const QString &name)
{
    T *w = parent->findChild<T *>(name);
    if (!w)
        qWarning("no control %s", qPrintable(name));
    return w;
}

QLineEdit *textBox(QWidget *dialog, int index)
{
    return child<QLineEdit>(dialog, QStringLiteral("Text1_%1").arg(index));
}

bool anyFileHolds(const QString &folder, const QByteArray &needle)
{
    QDirIterator it(folder, QDir::Files | QDir::Hidden, QDirIterator::Subdirectories);
    while (it.hasNext()) {
        QFile f(it.next());
        if (f.open(QIODevice::ReadOnly) && f.readAll().contains(needle))
            return true;
    }
    return false;
}

} // namespace

class TestSettingsWindows : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void optionsControls_data();
    void optionsControls();
    void optionsFilledFromState();
    void optionsValidation_data();
    void optionsValidation();
    void optionsChecksInOrder();
    void optionsOkStoresAndWrites();
    void addressBookChooser();
    void mailPasswordStaysInKeyring();

    void colourSwatchGrid();
    void colourSharedSwatch_data();
    void colourSharedSwatch();

    void foldersFilterAndFiles_data();
    void foldersFilterAndFiles();
    void foldersEditAndSave();
    void foldersEmptyListSavedAsOneEmptyLine();
    void foldersDriveMovesToItsRoot();

    void cancelOrUnwritableFileStoresNothing_data();
    void cancelOrUnwritableFileStoresNothing();

    void coloursAppliedWhenShown();

    void utilitiesMenusOpenTheWindows_data();
    void utilitiesMenusOpenTheWindows();
    void startupSurvivesBadFiles_data();
    void startupSurvivesBadFiles();

private:
    std::unique_ptr<UiFixture> m_ui;
};

void TestSettingsWindows::init()
{
    m_ui = std::make_unique<UiFixture>();
    settings::setDefaultColors(m_ui->state.colors, m_ui->state.options);
}

void TestSettingsWindows::cleanup()
{
    m_ui.reset();
}

void TestSettingsWindows::optionsControls_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("text");
    QTest::addColumn<QString>("tooltip");
    QTest::newRow("text documents") << "CHKUSETEXTDOC" << "Use Text File Format for HTML,Word Docments"
                                    << "Use Text File Format for HTML,Word Docments";
    QTest::newRow("address book") << "EMailBKBtn" << "..." << "Locate E-Mail Address Book";
    QTest::newRow("separator") << "Text1_6" << "" << "Percent of Main Window Device/Folder Selector Tree Occupies";
}

void TestSettingsWindows::optionsControls()
{
    QFETCH(QString, name);
    QFETCH(QString, text);
    QFETCH(QString, tooltip);
    SetOptns1 dialog(m_ui->state, m_ui->services);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Set Tarnby Control Options"));
    QCOMPARE(child<QTabWidget>(&dialog, QStringLiteral("TabStrip1"))->count(), 5);
    QWidget *w = child(&dialog, name);
    QVERIFY(w);
    if (auto *b = qobject_cast<QAbstractButton *>(w))
        QCOMPARE(b->text(), text);
    QCOMPARE(w->toolTip(), tooltip);
}

void TestSettingsWindows::optionsFilledFromState()
{
    m_ui->state.options.browserTextStyle = QStringLiteral("R");
    m_ui->state.options.menuTextStyle = 3;
    m_ui->state.options.thumbnailBits = QStringLiteral("8 Bits");
    m_ui->state.options.tableRowHeight = 420;
    m_ui->state.options.thumbnailHeightCm = 1.25;
    m_ui->state.options.toAddress2 = QStringLiteral("two@example.org");
    SetOptns1 dialog(m_ui->state, m_ui->services);
    QVERIFY(child<QRadioButton>(&dialog, QStringLiteral("RDBROWTYPE_1"))->isChecked());
    QVERIFY(child<QRadioButton>(&dialog, QStringLiteral("RDMENU_3"))->isChecked());
    QCOMPARE(child<QComboBox>(&dialog, QStringLiteral("CMBTHUMBRES"))->currentText(), QStringLiteral("8 Bits"));
    QCOMPARE(child<QComboBox>(&dialog, QStringLiteral("CMBTHUMBRES"))->count(), 11);
    QCOMPARE(child<QSlider>(&dialog, QStringLiteral("Slider1"))->value(), 420);
    QCOMPARE(textBox(&dialog, 0)->text(), QStringLiteral("1.25"));
    QCOMPARE(textBox(&dialog, 8)->text(), QStringLiteral("two@example.org"));
}

void TestSettingsWindows::optionsValidation_data()
{
    QTest::addColumn<int>("box");
    QTest::addColumn<QString>("value");
    QTest::addColumn<QString>("message"); // empty: accepted
    QTest::addColumn<QString>("tab");

    const QString thumbs = QStringLiteral("Invalid Sizes for ThumbNail Images");
    const QString percent = QStringLiteral("Enter a Percentage between 20 and 80");
    const QString initial = QStringLiteral("Enter Initial Number of Files to Search between 2,500 and 10,000");
    const QString next = QStringLiteral("Enter Next Number of Files to Search between 500 and 2500");
    QTest::newRow("thumbnail height 0.5") << 0 << "0.5" << "" << "";
    QTest::newRow("thumbnail height 5.5") << 0 << "5.5" << "" << "";
    QTest::newRow("thumbnail height 0.4") << 0 << "0.4" << thumbs << "TabThumbNails";
    QTest::newRow("thumbnail height 5.6") << 0 << "5.6" << thumbs << "TabThumbNails";
    QTest::newRow("thumbnail width 0.4") << 1 << "0.4" << thumbs << "TabThumbNails";
    QTest::newRow("thumbnail width 5.6") << 1 << "5.6" << thumbs << "TabThumbNails";
    QTest::newRow("thumbnail height not a number") << 0 << "big" << thumbs << "TabThumbNails";
    QTest::newRow("separator 20") << 6 << "20" << "" << "";
    QTest::newRow("separator 80") << 6 << "80" << "" << "";
    QTest::newRow("separator 19") << 6 << "19" << percent << "TabGeneral";
    QTest::newRow("separator 81") << 6 << "81" << percent << "TabGeneral";
    QTest::newRow("separator empty") << 6 << "" << percent << "TabGeneral";
    QTest::newRow("initial 2500") << 4 << "2500" << "" << "";
    QTest::newRow("initial 10000") << 4 << "10000" << "" << "";
    QTest::newRow("initial 2499") << 4 << "2499" << initial << "TabSearch";
    QTest::newRow("initial 10001") << 4 << "10001" << initial << "TabSearch";
    QTest::newRow("next 500") << 5 << "500" << "" << "";
    QTest::newRow("next 2500") << 5 << "2500" << "" << "";
    QTest::newRow("next 499") << 5 << "499" << next << "TabSearch";
    QTest::newRow("next 2501") << 5 << "2501" << next << "TabSearch";
}

void TestSettingsWindows::optionsValidation()
{
    QFETCH(int, box);
    QFETCH(QString, value);
    QFETCH(QString, message);
    QFETCH(QString, tab);

    const settings::ProgramOptions before = m_ui->state.options;
    SetOptns1 dialog(m_ui->state, m_ui->services);
    auto *tabs = child<QTabWidget>(&dialog, QStringLiteral("TabStrip1"));
    tabs->setCurrentIndex(4);
    textBox(&dialog, box)->setText(value);
    clickButton(&dialog, QStringLiteral("OKBtn"));

    const QString optionsFile = QDir(m_ui->home.path()).filePath(settings::OptionsFileName);
    if (message.isEmpty()) {
        QCOMPARE(m_ui->responder.messageTexts(), QStringList());
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
        QVERIFY(QFileInfo::exists(optionsFile));
        return;
    }
    QCOMPARE(m_ui->responder.messageTexts(), QStringList{message});
    QCOMPARE(m_ui->responder.messages().constFirst().title, QStringLiteral("Tarnby 3.0"));
    QCOMPARE(m_ui->responder.messages().constFirst().buttons, MessageButtons::Ok);
    QCOMPARE(tabs->currentWidget()->objectName(), tab);
    QCOMPARE(dialog.focusWidget(), textBox(&dialog, box));
    QVERIFY(m_ui->state.options == before);
    QVERIFY(!QFileInfo::exists(optionsFile));
}

void TestSettingsWindows::optionsChecksInOrder()
{
    SetOptns1 dialog(m_ui->state, m_ui->services);
    for (int box : {0, 1, 6, 4, 5})
        textBox(&dialog, box)->setText(QStringLiteral("0"));
    const struct {
        int fix;
        const char *value;
        const char *message;
    } steps[] = {
        {0, "1", "Invalid Sizes for ThumbNail Images"},
        {1, "1", "Invalid Sizes for ThumbNail Images"},
        {6, "50", "Enter a Percentage between 20 and 80"},
        {4, "5000", "Enter Initial Number of Files to Search between 2,500 and 10,000"},
        {5, "600", "Enter Next Number of Files to Search between 500 and 2500"},
    };
    for (const auto &step : steps) {
        m_ui->responder.clear();
        QVERIFY(!dialog.store());
        QCOMPARE(m_ui->responder.messageTexts(), QStringList{QLatin1String(step.message)});
        textBox(&dialog, step.fix)->setText(QLatin1String(step.value));
    }
    m_ui->responder.clear();
    QVERIFY(dialog.store());
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
}

void TestSettingsWindows::optionsOkStoresAndWrites()
{
    // Lines that belong to other windows must come back unchanged.
    m_ui->state.options.browserLeft = QStringLiteral("123.5");
    m_ui->state.options.viewStyle = QStringLiteral("2");
    m_ui->state.options.browserValue33 = QStringLiteral("mine");
    SetOptns1 dialog(m_ui->state, m_ui->services);
    textBox(&dialog, 0)->setText(QStringLiteral("1.5"));
    textBox(&dialog, 1)->setText(QStringLiteral("3"));
    textBox(&dialog, 6)->setText(QStringLiteral("45"));
    textBox(&dialog, 4)->setText(QStringLiteral("7500"));
    textBox(&dialog, 5)->setText(QStringLiteral("750"));
    textBox(&dialog, 3)->setText(QStringLiteral("me@example.org"));
    textBox(&dialog, 2)->setText(QStringLiteral("https://example.org"));
    textBox(&dialog, 7)->setText(QStringLiteral("a@example.org"));
    textBox(&dialog, 9)->setText(QStringLiteral("c@example.org"));
    child<QComboBox>(&dialog, QStringLiteral("CMBTHUMBRES"))->setCurrentIndex(3);
    child<QRadioButton>(&dialog, QStringLiteral("RDMENU_2"))->setChecked(true);
    child<QRadioButton>(&dialog, QStringLiteral("RDBROWTYPE_0"))->setChecked(true);
    child<QSlider>(&dialog, QStringLiteral("Slider1"))->setValue(555);
    child<QCheckBox>(&dialog, QStringLiteral("CHKBOLDTYPE"))->setChecked(true);
    child<QCheckBox>(&dialog, QStringLiteral("CHKGRIDLINE"))->setChecked(true);
    child<QCheckBox>(&dialog, QStringLiteral("CHKUSETEXTDOC"))->setChecked(true);
    child<QLineEdit>(&dialog, QStringLiteral("TxtSmtpHost"))->setText(QStringLiteral("smtp.example.org"));
    child<QSpinBox>(&dialog, QStringLiteral("TxtSmtpPort"))->setValue(2525);
    child<QComboBox>(&dialog, QStringLiteral("CMBINPROTOCOL"))->setCurrentText(QStringLiteral("POP3"));
    clickButton(&dialog, QStringLiteral("OKBtn"));
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    QCOMPARE(dialog.result(), int(QDialog::Accepted));

    const settings::ProgramOptions &o = m_ui->state.options;
    QCOMPARE(o.thumbnailHeightCm, 1.5);
    QCOMPARE(o.thumbnailWidthCm, 3.0);
    QCOMPARE(o.separatorPercent, 45);
    QCOMPARE(o.initialSearchCount, 7500);
    QCOMPARE(o.nextSearchCount, 750);
    QCOMPARE(o.thumbnailBits, QStringLiteral("8 Bits"));
    QCOMPARE(o.menuTextStyle, qint16(2));
    QCOMPARE(o.browserTextStyle, QStringLiteral("I"));
    QCOMPARE(o.tableRowHeight, qint16(555));
    QVERIFY(o.boldType && o.gridLines && o.useTextDoc);
    QCOMPARE(o.smtpPort, 2525);
    QCOMPARE(o.incomingProtocol, QStringLiteral("POP3"));

    QCOMPARE(o.fromAddress, QStringLiteral("me@example.org"));
    QCOMPARE(o.toAddress2, QString());
    QCOMPARE(o.toAddress3, QStringLiteral("c@example.org"));
    QCOMPARE(o.browserLeft, QStringLiteral("123.5"));
    QCOMPARE(o.viewStyle, QStringLiteral("2"));
    QCOMPARE(o.browserValue33, QStringLiteral("mine"));

    // The file holds what was stored (where each line goes is the settings
    // files' own test).
    settings::ProgramOptions reread;
    settings::readProgramOptions(m_ui->home.path(), reread);
    QVERIFY(reread == o);
}

void TestSettingsWindows::addressBookChooser()
{
    const QString book = m_ui->home.createFile(QStringLiteral("lists/Friends.MLS"), "x");
    m_ui->responder.acceptFile(book);
    SetOptns1 dialog(m_ui->state, m_ui->services);
    clickButton(&dialog, QStringLiteral("EMailBKBtn"));
    QCOMPARE(m_ui->responder.dialogs().size(), 1);
    const DialogRequest &request = m_ui->responder.dialogs().constFirst();
    QCOMPARE(request.kind, DialogKind::OpenFile);
    QCOMPARE(request.title, QStringLiteral("Select E-Mail Address List to Open"));
    QCOMPARE(request.fileName, QStringLiteral("MailAddr.MLS"));
    QCOMPARE(request.defaultSuffix, QStringLiteral("MLS"));
    QCOMPARE(request.filter, QStringLiteral("E-Mail Address List | *.MLS"));

    // Cancelled: the choice stays.
    m_ui->responder.cancelDialog();
    clickButton(&dialog, QStringLiteral("EMailBKBtn"));
    QCOMPARE(child<QLineEdit>(&dialog, QStringLiteral("TxtAddressBook"))->text(), book);
    QVERIFY(dialog.store());
    QCOMPARE(m_ui->state.options.addressBook, book);
}

void TestSettingsWindows::mailPasswordStaysInKeyring()
{
    // The keyring library would keep a password in the application's settings
    // file if it were allowed a fallback; give that file a place of its own.
    QCoreApplication::setOrganizationName(QStringLiteral("TarnbyKeyringTest"));
    QSettings::setPath(QSettings::NativeFormat, QSettings::UserScope, m_ui->home.filePath(QStringLiteral("conf")));
    const QByteArray secret = "s3cret-not-in-a-file";

    SetOptns1 dialog(m_ui->state, m_ui->services);
    dialog.setKeyringTimeout(5000);
    child<QLineEdit>(&dialog, QStringLiteral("TxtSmtpHost"))->setText(QStringLiteral("smtp.invalid"));
    child<QLineEdit>(&dialog, QStringLiteral("TxtSmtpUser"))->setText(QStringLiteral("tarnby-test"));
    auto *password = child<QLineEdit>(&dialog, QStringLiteral("TxtSmtpPassword"));
    QVERIFY(password->echoMode() == QLineEdit::Password);
    QTest::keyClicks(password, QString::fromLatin1(secret));
    QSignalSpy finished(&dialog, &SetOptns1::keyringFinished);
    clickButton(&dialog, QStringLiteral("OKBtn"));
    QVERIFY(finished.count() == 1 || finished.wait(8000));

    QVERIFY(!anyFileHolds(m_ui->home.path(), secret));
    if (!m_ui->responder.messageTexts().isEmpty()) {
        QCOMPARE(m_ui->responder.messageTexts().size(), 1);
        QVERIFY(m_ui->responder.messageTexts().constFirst().contains(QStringLiteral("keyring")));
        qInfo() << "keyring answer:" << m_ui->responder.messageTexts().constFirst();
        QSKIP("no desktop keyring answers here; the failure was reported and nothing was written");
    }
    // A keyring is there: the password comes back from it, and is removed.
    const QString key = settings::mailPasswordKey(settings::MailServer::Outgoing, {}, QStringLiteral("tarnby-test"),
                                                  QStringLiteral("smtp.invalid"));
    settings::PasswordResult read;
    bool answered = false;
    settings::MailPasswords::read(key, this, [&](const settings::PasswordResult &r) {
        read = r;
        answered = true;
    });
    QTRY_VERIFY_WITH_TIMEOUT(answered, 8000);
    QVERIFY2(read.ok, qPrintable(read.error));
    QCOMPARE(read.password.toLatin1(), secret);
    answered = false;
    settings::MailPasswords::remove(key, this, [&](const settings::PasswordResult &) { answered = true; });
    QTRY_VERIFY_WITH_TIMEOUT(answered, 8000);
}

void TestSettingsWindows::colourSwatchGrid()
{
    SetColor1 dialog(m_ui->state, m_ui->services);
    QCOMPARE(dialog.windowTitle(), QStringLiteral("Set Colors for Tarnby"));
    auto *grid = dialog.findChild<QGridLayout *>();
    QVERIFY(grid);
    auto position = [&](QWidget *w) {
        int row = -1, column = -1, rs = 0, cs = 0;
        grid->getItemPosition(grid->indexOf(w), &row, &column, &rs, &cs);
        return QPoint(column, row);
    };
    for (int row = 0; row < 13; ++row) {
        QCOMPARE(position(dialog.swatch(row)), QPoint(1, row + 1));
        if (row < 10)
            QCOMPARE(position(dialog.swatch(13 + row)), QPoint(2, row + 1));
        else
            QCOMPARE(grid->itemAtPosition(row + 1, 2), nullptr);
    }
    // Each swatch shows its stored colour; the shared pair the same one.
    QCOMPARE(dialog.swatch(0)->value(), 0xFFD3CEu);
    QCOMPARE(dialog.swatch(10)->value(), dialog.swatch(21)->value());
    // The colour dialog cancelled: the swatch keeps its colour.
    m_ui->responder.cancelDialog();
    dialog.chooseColor(1);
    QCOMPARE(dialog.swatch(1)->value(), m_ui->state.colors.swatch(Swatch::MenusBack));
}

void TestSettingsWindows::colourSharedSwatch_data()
{
    QTest::addColumn<int>("changed");
    QTest::addColumn<quint32>("expected");
    QTest::newRow("new Selection Item colour shows in both swatches") << 10 << 0x00FF00u;
    QTest::newRow("new ThumbNail Window text alone is not kept") << 21 << 0x8080FFu;
}

void TestSettingsWindows::colourSharedSwatch()
{
    QFETCH(int, changed);
    QFETCH(quint32, expected);
    DialogAnswer green;
    green.accepted = true;
    green.color = QColor(0, 255, 0);
    m_ui->responder.answerDialog(green);
    {
        SetColor1 dialog(m_ui->state, m_ui->services);
        dialog.show();
        QTest::mouseDClick(dialog.swatch(changed), Qt::LeftButton);
        QCOMPARE(m_ui->responder.dialogs().size(), 1);
        QCOMPARE(m_ui->responder.dialogs().constFirst().kind, DialogKind::Color);
        QCOMPARE(m_ui->responder.dialogs().constFirst().title, QStringLiteral("Select Color"));
        QCOMPARE(m_ui->responder.dialogs().constFirst().color, QColor(0xFF, 0x80, 0x80));
        QCOMPARE(dialog.swatch(changed)->value(), 0x00FF00u);
        clickButton(&dialog, QStringLiteral("OKBtn"));
        QCOMPARE(dialog.result(), int(QDialog::Accepted));
    }
    SetColor1 reopened(m_ui->state, m_ui->services);
    QCOMPARE(reopened.swatch(10)->value(), expected);
    QCOMPARE(reopened.swatch(21)->value(), expected);
    settings::WindowColors fromFile;
    settings::readWindowColors(m_ui->home.path(), fromFile);
    QCOMPARE(fromFile.swatch(Swatch::SelectionItemBack), expected);
    QVERIFY(fromFile == m_ui->state.colors);
}

void TestSettingsWindows::foldersFilterAndFiles_data()
{
    QTest::addColumn<int>("filter");
    QTest::addColumn<QStringList>("files");
    QTest::newRow("all pictures at start") << -1 << QStringList{"b.JPG", "c.png"};
    QTest::newRow("text files take *LOG without its dot") << 36 << QStringList{"a.txt", "CHANGELOG", "x.log"};
    QTest::newRow("bitmaps only") << 2 << QStringList();
    QTest::newRow("all files") << 39 << QStringList{"a.txt", "b.JPG", "c.png", "CHANGELOG", "x.log"};
}

void TestSettingsWindows::foldersFilterAndFiles()
{
    QFETCH(int, filter);
    QFETCH(QStringList, files);
    const QString folder = m_ui->home.createFolder(QStringLiteral("work"));
    for (const char *name : {"work/a.txt", "work/b.JPG", "work/c.png", "work/CHANGELOG", "work/x.log"})
        m_ui->home.createFile(QLatin1String(name));
    SetFoldr1 dialog(m_ui->state, m_ui->services, folder);
    QCOMPARE(dialog.currentFolder(), folder);
    auto *box = child<QComboBox>(&dialog, QStringLiteral("CMBFILTER"));
    QCOMPARE(box->count(), 40);
    if (filter >= 0) {
        box->setCurrentIndex(filter);
        emit box->activated(filter);
    }
    auto *list = child<QListWidget>(&dialog, QStringLiteral("File1"));
    QCOMPARE(listTexts(list), files);
}

void TestSettingsWindows::foldersEditAndSave()
{
    m_ui->state.workingFolders = {QStringLiteral("/kept as it was (5)")};
    const QString one = m_ui->home.createFolder(QStringLiteral("one"));
    const QString two = m_ui->home.createFolder(QStringLiteral("two"));
    SetFoldr1 dialog(m_ui->state, m_ui->services, one);
    auto *list = child<QListWidget>(&dialog, QStringLiteral("List1"));
    QCOMPARE(list->count(), 1);

    auto *filter = child<QComboBox>(&dialog, QStringLiteral("CMBFILTER"));
    filter->setCurrentIndex(36);
    clickButton(&dialog, QStringLiteral("RightBtn"));
    dialog.setCurrentFolder(two);
    filter->setCurrentIndex(0);
    clickButton(&dialog, QStringLiteral("RightBtn"));
    const QString lineOne = one + QStringLiteral(" (36)");
    const QString lineTwo = two + QStringLiteral(" (0)");
    QCOMPARE(dialog.listLines(), (QStringList{"/kept as it was (5)", lineOne, lineTwo}));

    list->setCurrentRow(2);
    clickButton(&dialog, QStringLiteral("UpBtn"));
    QCOMPARE(dialog.listLines(), (QStringList{"/kept as it was (5)", lineTwo, lineOne}));
    clickButton(&dialog, QStringLiteral("UpBtn"));
    clickButton(&dialog, QStringLiteral("UpBtn")); // already at the top: nothing moves
    QCOMPARE(dialog.listLines(), (QStringList{lineTwo, "/kept as it was (5)", lineOne}));
    list->setCurrentRow(2);
    clickButton(&dialog, QStringLiteral("DownBtn")); // already at the bottom
    list->setCurrentRow(1);
    clickButton(&dialog, QStringLiteral("DownBtn"));
    QCOMPARE(dialog.listLines(), (QStringList{lineTwo, lineOne, "/kept as it was (5)"}));
    clickButton(&dialog, QStringLiteral("LefttBtn"));
    QCOMPARE(dialog.listLines(), (QStringList{lineTwo, lineOne}));

    QSignalSpy saved(&dialog, &SetFoldr1::foldersSaved);
    clickButton(&dialog, QStringLiteral("OKBtn"));
    QCOMPARE(saved.count(), 1);
    QCOMPARE(m_ui->home.read(settings::WorkingFoldersFileName), (lineTwo + "\r\n" + lineOne + "\r\n").toUtf8());
    QCOMPARE(m_ui->state.workingFolders, (QStringList{lineTwo, lineOne}));
}

void TestSettingsWindows::foldersEmptyListSavedAsOneEmptyLine()
{
    m_ui->state.workingFolders = {QStringLiteral("/a (1)"), QStringLiteral("/b (2)")};
    SetFoldr1 dialog(m_ui->state, m_ui->services, m_ui->home.path());
    clickButton(&dialog, QStringLiteral("ClearBtn"));
    QCOMPARE(dialog.listLines(), QStringList());
    clickButton(&dialog, QStringLiteral("OKBtn"));
    QCOMPARE(m_ui->home.read(settings::WorkingFoldersFileName), QByteArray("\r\n"));
}

void TestSettingsWindows::foldersDriveMovesToItsRoot()
{
    SetFoldr1 dialog(m_ui->state, m_ui->services, m_ui->home.createFolder(QStringLiteral("deep/er")));
    auto *drives = child<QComboBox>(&dialog, QStringLiteral("Drive1"));
    const int root = drives->findText(QDir::rootPath());
    QVERIFY(root >= 0);
    drives->setCurrentIndex(root);
    emit drives->activated(root);
    QCOMPARE(dialog.currentFolder(), QDir::rootPath());
}

void TestSettingsWindows::cancelOrUnwritableFileStoresNothing_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("unwritable"); // false: the window is cancelled
    QTest::newRow("options cancelled") << settings::OptionsFileName << false;
    QTest::newRow("colours cancelled") << settings::ColorsFileName << false;
    QTest::newRow("working folders cancelled") << settings::WorkingFoldersFileName << false;
    QTest::newRow("options unwritable") << settings::OptionsFileName << true;
    QTest::newRow("colours unwritable") << settings::ColorsFileName << true;
    QTest::newRow("working folders unwritable") << settings::WorkingFoldersFileName << true;
}

void TestSettingsWindows::cancelOrUnwritableFileStoresNothing()
{
    QFETCH(QString, file);
    QFETCH(bool, unwritable);
    // A folder in the file's place: no writer can replace it, even root's.
    if (unwritable)
        m_ui->home.createFolder(file);
    const settings::ProgramOptions options = m_ui->state.options;
    const settings::WindowColors colors = m_ui->state.colors;
    m_ui->state.workingFolders = {QStringLiteral("/a (1)")};

    // The window that writes the file, with a change made in it.
    std::unique_ptr<QDialog> dialog;
    if (file == settings::OptionsFileName) {
        auto *d = new SetOptns1(m_ui->state, m_ui->services);
        textBox(d, 0)->setText(QStringLiteral("3"));
        child<QCheckBox>(d, QStringLiteral("CHKBOLDTYPE"))->setChecked(true);
        child<QCheckBox>(d, QStringLiteral("CHKGRIDLINE"))->setChecked(true);
        dialog.reset(d);
    } else if (file == settings::ColorsFileName) {
        auto *d = new SetColor1(m_ui->state, m_ui->services);
        d->swatch(0)->setValue(0x123456);
        dialog.reset(d);
    } else {
        auto *d = new SetFoldr1(m_ui->state, m_ui->services, m_ui->home.path());
        clickButton(d, QStringLiteral("ClearBtn"));
        dialog.reset(d);
    }
    clickButton(dialog.get(), unwritable ? QStringLiteral("OKBtn") : QStringLiteral("CancelBtn"));
    if (unwritable) {
        QCOMPARE(m_ui->responder.messageTexts().size(), 1);
        QVERIFY(m_ui->responder.messageTexts().constFirst().contains(file));
        QVERIFY(dialog->result() != QDialog::Accepted);
    } else {
        QCOMPARE(dialog->result(), int(QDialog::Rejected));
        QVERIFY(QDir(m_ui->home.path()).isEmpty());
    }
    QVERIFY(m_ui->state.options == options);
    QVERIFY(m_ui->state.colors == colors);
    QCOMPARE(m_ui->state.workingFolders, QStringList{QStringLiteral("/a (1)")});
}

void TestSettingsWindows::coloursAppliedWhenShown()
{
    QDialog dialog;
    auto *frame = new QGroupBox(QStringLiteral("Frame"), &dialog);
    auto *label = new QLabel(QStringLiteral("Label"), frame);
    auto *option = new QRadioButton(QStringLiteral("Option"), frame);
    auto *edit = new QLineEdit(&dialog);
    auto *list = new QListWidget(&dialog);
    auto *button = new QPushButton(QStringLiteral("OK"), &dialog);
    m_ui->state.colors.setSwatch(Swatch::SelectionWindowsBack, 0x0000FF);   // red
    m_ui->state.colors.setSwatch(Swatch::SelectionWindowsText, 0x00FF00);   // green
    m_ui->state.colors.setSwatch(Swatch::EntryFieldsBack, 0xFF0000);        // blue
    m_ui->state.colors.setSwatch(Swatch::EntryFieldsText, 0x00FFFF);        // yellow
    m_ui->state.colors.setSwatch(Swatch::ListBoxesBack, 0x808080);
    m_ui->state.colors.setSwatch(Swatch::SelectionButtonsBack, 0x010203);
    m_ui->state.options.boldType = true;
    installWindowColors(&dialog, m_ui->state);
    QVERIFY(!label->font().bold()); // nothing until shown
    dialog.show();

    QCOMPARE(dialog.palette().color(QPalette::Window), QColor(Qt::red));
    QCOMPARE(frame->palette().color(QPalette::Window), QColor(Qt::red));
    QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::green));
    QCOMPARE(option->palette().color(QPalette::WindowText), QColor(Qt::green));
    QCOMPARE(edit->palette().color(QPalette::Base), QColor(Qt::blue));
    QCOMPARE(edit->palette().color(QPalette::Text), QColor(Qt::yellow));
    QCOMPARE(list->palette().color(QPalette::Base), QColor(0x80, 0x80, 0x80));
    QCOMPARE(button->palette().color(QPalette::Button), QColor(3, 2, 1));
    QCOMPARE(button->palette().color(QPalette::ButtonText), QColor(Qt::green));
    // A disabled control still looks disabled: its text is muted, not green.
    const QColor disabledText = button->palette().color(QPalette::Disabled, QPalette::ButtonText);
    QVERIFY(disabledText != QColor(Qt::green));
    QCOMPARE(disabledText, QColor((0 + 3) / 2, (255 + 2) / 2, (0 + 1) / 2)); // green and the button colour RGB(3, 2, 1)
    for (QWidget *w : std::initializer_list<QWidget *>{label, option, edit, list, button})
        QVERIFY2(w->font().bold(), w->metaObject()->className());

    // A change takes effect the next time the window is shown.
    dialog.hide();
    m_ui->state.options.boldType = false;
    m_ui->state.colors.setSwatch(Swatch::SelectionWindowsText, 0x000000);
    dialog.show();
    QCOMPARE(label->palette().color(QPalette::WindowText), QColor(Qt::black));
    QVERIFY(!label->font().bold());
}

void TestSettingsWindows::utilitiesMenusOpenTheWindows_data()
{
    QTest::addColumn<QString>("key");
    QTest::addColumn<bool>("fromFrame");
    QTest::addColumn<QString>("window");
    QTest::addColumn<QString>("file");
    QTest::newRow("browser working folders") << "ID_mnuSetWorkingFolders" << false << "SetFoldr1" << "FoldFile.INI";
    QTest::newRow("browser colours") << "ID_mnuSetApplicationColors" << false << "SetColor1" << "Colors.INI";
    QTest::newRow("browser options") << "ID_mnuSetApplicationOptions" << false << "SetOptns1" << "Options.INI";
    QTest::newRow("frame working folders") << "ID_mnuSetWorkingFolders" << true << "SetFoldr1" << "FoldFile.INI";
    QTest::newRow("frame colours") << "ID_mnuSetApplicationColors" << true << "SetColor1" << "Colors.INI";
    QTest::newRow("frame options") << "ID_mnuSetApplicationOptions" << true << "SetOptns1" << "Options.INI";
}

void TestSettingsWindows::utilitiesMenusOpenTheWindows()
{
    QFETCH(QString, key);
    QFETCH(bool, fromFrame);
    QFETCH(QString, window);
    QFETCH(QString, file);

    SettingsStore store(m_ui->home.filePath(QStringLiteral("store.ini")));
    const QString home = m_ui->home.createFolder(QStringLiteral("home"));
    QFile::remove(m_ui->home.filePath(QStringLiteral("home/FoldFile.INI")));
    AppState state;
    Tarnby1 browser(state, m_ui->services, store);
    StartupRequest request;
    request.homeOption = home;
    browser.load(request);
    QVERIFY(QFileInfo::exists(QDir(home).filePath(QStringLiteral("Options.INI"))));
    QCOMPARE(state.colors.swatch(Swatch::MainWindowBack), 0xFFD3CEu);
    QCOMPARE(state.workingFolders, QStringList());
    QCOMPARE(browser.workingFolderIndex(), -1);
    const QDateTime before = QFileInfo(QDir(home).filePath(file)).lastModified();

    QString seen;
    whenModal(QString(), [&](QDialog *w) {
        seen = w->objectName();
        if (auto *b = w->findChild<QPushButton *>(QStringLiteral("OKBtn")))
            b->click();
    });
    if (fromFrame)
        browser.frame()->toolClick(key);
    else
        browser.toolClick(key);
    QCOMPARE(seen, window);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    const QFileInfo written(QDir(home).filePath(file));
    QVERIFY(written.exists());
    QVERIFY(!before.isValid() || written.lastModified() >= before);
    if (window == QLatin1String("SetFoldr1")) {
        // The empty list was saved as one empty line and read back.
        QCOMPARE(state.workingFolders, QStringList{QString()});
        QCOMPARE(browser.workingFolderIndex(), 0);
    }
}

void TestSettingsWindows::startupSurvivesBadFiles_data()
{
    QTest::addColumn<QByteArray>("options");
    QTest::addColumn<QByteArray>("colors");
    QTest::addColumn<QByteArray>("folders");
    QTest::addColumn<QStringList>("expectedFolders");

    QByteArray binary(50 * 1024 * 1024, '\0');
    for (qsizetype i = 0; i < binary.size(); i += 4096)
        binary[i] = char(i * 7);
    QTest::newRow("50 MB of binary in every file") << binary << binary << binary << QStringList();
    QTest::newRow("empty files") << QByteArray("") << QByteArray("") << QByteArray("") << QStringList();
    QTest::newRow("CR-only line ends") << QByteArray("1\r2\r3\r") << QByteArray("255\r255\r")
                                       << QByteArray("/a (1)\r/b (2)\r") << QStringList{"/a (1)", "/b (2)"};
    QTest::newRow("LF-only, short and not numbers")
        << QByteArray("left\ntop\n") << QByteArray("red\ngreen\n") << QByteArray("/a (1)\n")
        << QStringList{"/a (1)"};
}

void TestSettingsWindows::startupSurvivesBadFiles()
{
    QFETCH(QByteArray, options);
    QFETCH(QByteArray, colors);
    QFETCH(QByteArray, folders);
    QFETCH(QStringList, expectedFolders);

    SettingsStore store(m_ui->home.filePath(QStringLiteral("store.ini")));
    m_ui->home.createFile(QStringLiteral("home/Options.INI"), options);
    m_ui->home.createFile(QStringLiteral("home/Colors.INI"), colors);
    m_ui->home.createFile(QStringLiteral("home/FoldFile.INI"), folders);
    const QString home = m_ui->home.filePath(QStringLiteral("home"));

    AppState state;
    Tarnby1 browser(state, m_ui->services, store);
    StartupRequest request;
    request.homeOption = home;
    browser.load(request);
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    QCOMPARE(state.workingFolders, expectedFolders);
    QCOMPARE(state.options.thumbnailHeightCm, settings::ProgramOptions().thumbnailHeightCm);
    QCOMPARE(state.colors.swatch(Swatch::ListBoxesBack), 0xEAFFEAu);

    // The browser and the frame take their colours.
    QCOMPARE(browser.palette().color(QPalette::Window), settings::toQColor(state.colors.swatch(Swatch::MainWindowBack)));
    QCOMPARE(browser.frame()->mdiArea()->background().color(), settings::toQColor(0xFFC0C0));

    // The next saves write well-formed files.
    for (const char *key : {"ID_mnuSetApplicationOptions", "ID_mnuSetApplicationColors"}) {
        whenModal(QString(), [](QDialog *w) { clickButton(w, QStringLiteral("OKBtn")); });
        browser.toolClick(QLatin1String(key));
    }
    QCOMPARE(m_ui->responder.messageTexts(), QStringList());
    const QByteArray optionsNow = m_ui->home.read(QStringLiteral("home/Options.INI"));
    QCOMPARE(optionsNow.count("\r\n"), 34);
    QCOMPARE(optionsNow.count('\n'), 34);
    const QByteArray colorsNow = m_ui->home.read(QStringLiteral("home/Colors.INI"));
    QCOMPARE(colorsNow.count("\r\n"), 22);
    QCOMPARE(colorsNow.count('\n'), 22);
    settings::WindowColors reread;
    QVERIFY(settings::readWindowColors(home, reread).keptDefault.isEmpty());
}

QTEST_MAIN(TestSettingsWindows)
#include "tst_settingswindows.moc"
