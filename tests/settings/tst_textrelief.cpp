#include "core/settings/ProgramOptions.h"
#include "core/settings/TextRelief.h"
#include "ui/settings/ReliefText.h"

#include <QMenu>
#include <QMenuBar>
#include <QPainter>
#include <QTest>
#include <QToolBar>
#include <QToolButton>

#include <algorithm>

using namespace tarnby;
using namespace tarnby::settings;
using namespace tarnby::ui;

Q_DECLARE_METATYPE(tarnby::settings::TextRelief)

namespace {

// A menu bar with one title, drawn with relief (or with the plain style).
QImage menuBarImage(const TextRelief *relief)
{
    QWidget window;
    auto *bar = new QMenuBar(&window);
    bar->addMenu(QStringLiteral("Utilities"));
    if (relief)
        applyMenuTextStyle(&window, *relief);
    bar->resize(200, 30);
    return bar->grab().toImage();
}

// An open menu's entry.
QImage menuImage(const TextRelief *relief)
{
    QWidget window;
    auto *menu = new QMenu(&window);
    menu->addAction(QStringLiteral("Set Application Options"));
    if (relief)
        applyMenuTextStyle(&window, *relief);
    menu->resize(menu->sizeHint());
    return menu->grab().toImage();
}

} // namespace

class TestTextRelief : public QObject
{
    Q_OBJECT
private slots:
    void menuStylePositions_data();
    void menuStylePositions();
    void tableLook_data();
    void tableLook();
    void reliefShowsInMenus_data();
    void reliefShowsInMenus();
    void applyingAgainChangesTheOneStyle();
    void reliefTextForGrids();
};

void TestTextRelief::menuStylePositions_data()
{
    QTest::addColumn<int>("position");
    QTest::addColumn<TextRelief>("relief");
    QTest::newRow("0 flat") << 0 << TextRelief{};
    QTest::newRow("1 light raised") << 1 << TextRelief{ReliefKind::Raised, 1};
    QTest::newRow("2 heavy inset") << 2 << TextRelief{ReliefKind::Inset, 2};
    QTest::newRow("3 light inset") << 3 << TextRelief{ReliefKind::Inset, 1};
    QTest::newRow("4 heavy raised") << 4 << TextRelief{ReliefKind::Raised, 2};
    QTest::newRow("5 out of range is flat") << 5 << TextRelief{};
    QTest::newRow("-1 is flat") << -1 << TextRelief{};
}

void TestTextRelief::menuStylePositions()
{
    QFETCH(int, position);
    QFETCH(TextRelief, relief);
    QCOMPARE(menuTextRelief(qint16(position)), relief);
}

void TestTextRelief::tableLook_data()
{
    QTest::addColumn<QString>("letter");
    QTest::addColumn<int>("rowHeight");
    QTest::addColumn<TextRelief>("relief");
    QTest::addColumn<int>("pixelsAt96");
    QTest::newRow("flat, lowest row 250") << "F" << 250 << TextRelief{} << 17;
    QTest::newRow("raised") << "R" << 300 << TextRelief{ReliefKind::Raised, 1} << 20;
    QTest::newRow("inset, highest row 600") << "I" << 600 << TextRelief{ReliefKind::Inset, 1} << 40;
    QTest::newRow("lower case letter") << "r" << 300 << TextRelief{ReliefKind::Raised, 1} << 20;
    QTest::newRow("unknown letter is flat") << "X" << 300 << TextRelief{} << 20;
    QTest::newRow("row height below the range is raised to it") << "F" << 10 << TextRelief{} << 17;
}

void TestTextRelief::tableLook()
{
    QFETCH(QString, letter);
    QFETCH(int, rowHeight);
    QFETCH(TextRelief, relief);
    QFETCH(int, pixelsAt96);
    ProgramOptions options;
    options.browserTextStyle = letter;
    options.tableRowHeight = qint16(rowHeight);
    const TableBrowserLook look = tableBrowserLook(options);
    QCOMPARE(look.text, relief);
    QCOMPARE(look.rowHeightPixels(96), pixelsAt96);
}

void TestTextRelief::reliefShowsInMenus_data()
{
    QTest::addColumn<int>("position");
    for (int position = 1; position <= 4; ++position)
        QTest::newRow(qPrintable(QStringLiteral("menu style %1").arg(position))) << position;
}

void TestTextRelief::reliefShowsInMenus()
{
    // Flat text looks as the plain style draws it; every other style changes
    // the pixels of the menu bar title and of a menu entry.
    QFETCH(int, position);
    const TextRelief flat;
    QCOMPARE(menuBarImage(&flat), menuBarImage(nullptr));
    QCOMPARE(menuImage(&flat), menuImage(nullptr));
    const TextRelief relief = menuTextRelief(qint16(position));
    QVERIFY(menuBarImage(&relief) != menuBarImage(nullptr));
    QVERIFY(menuImage(&relief) != menuImage(nullptr));
    // Raised and inset of the same depth are not the same picture.
    const TextRelief opposite{relief.kind == ReliefKind::Raised ? ReliefKind::Inset : ReliefKind::Raised, relief.depth};
    QVERIFY(menuBarImage(&relief) != menuBarImage(&opposite));
}

void TestTextRelief::applyingAgainChangesTheOneStyle()
{
    QWidget window;
    auto *bar = new QMenuBar(&window);
    QMenu *menu = bar->addMenu(QStringLiteral("File"));
    auto *toolbar = new QToolBar(&window);
    toolbar->addAction(QStringLiteral("Open"));
    applyMenuTextStyle(&window, menuTextRelief(1));
    MenuTextStyle *style = menuTextStyleOf(&window);
    QVERIFY(style);
    QCOMPARE(bar->style(), style);
    QCOMPARE(menu->style(), style);
    QCOMPARE(toolbar->findChildren<QToolButton *>().constLast()->style(), style);
    applyMenuTextStyle(&window, menuTextRelief(3));
    QCOMPARE(menuTextStyleOf(&window), style);
    QCOMPARE(window.findChildren<MenuTextStyle *>().size(), 1);
    QCOMPARE(style->relief(), (TextRelief{ReliefKind::Inset, 1}));
}

void TestTextRelief::reliefTextForGrids()
{
    // What a table cell draws: flat text is plain text; raised text has its
    // highlight above and left of the letters and its shadow below and
    // right, inset text the other way round.
    QPalette palette;
    palette.setColor(QPalette::Light, Qt::white);
    palette.setColor(QPalette::Dark, Qt::black);
    palette.setColor(QPalette::Text, Qt::blue);
    auto draw = [&](TextRelief relief, bool enabled = true) {
        QImage image(80, 30, QImage::Format_RGB32);
        image.fill(Qt::gray);
        QPainter painter(&image);
        drawReliefText(&painter, image.rect(), Qt::AlignCenter, QStringLiteral("Sales"), palette, enabled,
                       QPalette::Text, relief);
        return image;
    };
    QImage plain(80, 30, QImage::Format_RGB32);
    plain.fill(Qt::gray);
    {
        QPainter painter(&plain);
        painter.setPen(Qt::blue);
        painter.drawText(plain.rect(), Qt::AlignCenter, QStringLiteral("Sales"));
    }
    QCOMPARE(draw(tableTextRelief(QStringLiteral("F"))), plain);
    const QImage raised = draw(tableTextRelief(QStringLiteral("R")));
    const QImage inset = draw(tableTextRelief(QStringLiteral("I")));
    QVERIFY(raised != plain);
    QVERIFY(raised != inset);
    // Text is smoothed into the grey: count the pixels near white and near
    // black, which only the highlight and the shadow give.
    auto count = [](const QImage &image, bool light) {
        int n = 0;
        for (int y = 0; y < image.height(); ++y) {
            for (int x = 0; x < image.width(); ++x) {
                const QColor c = image.pixelColor(x, y);
                const int low = std::min({c.red(), c.green(), c.blue()});
                const int high = std::max({c.red(), c.green(), c.blue()});
                n += (light ? low > 230 : high < 40) ? 1 : 0;
            }
        }
        return n;
    };
    QCOMPARE(count(plain, true), 0);
    QCOMPARE(count(plain, false), 0);
    QVERIFY(count(raised, true) > 0);
    QVERIFY(count(raised, false) > 0);
    // Disabled text keeps no relief.
    QCOMPARE(count(draw(tableTextRelief(QStringLiteral("R")), false), true), 0);
}

QTEST_MAIN(TestTextRelief)
#include "tst_textrelief.moc"
