#include "core/viewer/ViewModes.h"

#include <QTest>

using namespace tarnby::viewer;
using Action = ViewStep::Action;

Q_DECLARE_METATYPE(tarnby::viewer::ViewSteps)

namespace {
ViewStep stop() { return ViewStep::simple(Action::StopMagnifier); }
ViewStep start() { return ViewStep::simple(Action::StartMagnifier); }
ViewStep showPan() { return ViewStep::simple(Action::ShowPanWindow); }
ViewStep hidePan() { return ViewStep::simple(Action::HidePanWindow); }

QString describe(const ViewSteps &steps)
{
    QStringList out;
    for (const ViewStep &s : steps) {
        switch (s.action) {
        case Action::SetPaintMode:
            out << QStringLiteral("paint %1").arg(int(s.mode));
            break;
        case Action::StartMagnifier:
            out << QStringLiteral("start glass");
            break;
        case Action::StopMagnifier:
            out << QStringLiteral("stop glass");
            break;
        case Action::ShowPanWindow:
            out << QStringLiteral("show pan");
            break;
        case Action::HidePanWindow:
            out << QStringLiteral("hide pan");
            break;
        case Action::Check:
            out << QStringLiteral("%1 %2").arg(s.key, s.checked ? QStringLiteral("on") : QStringLiteral("off"));
            break;
        }
    }
    return out.join(QStringLiteral(", "));
}
} // namespace

class TestViewModes : public QObject
{
    Q_OBJECT
private slots:
    void transitions_data();
    void transitions();
    void activationShowsTheCurrentMode();
    void panWindowClosedByItsOwnBox();
    void teardownEndsBothAids();
    void quickViewToggle();
    void panWindowGeometryUsesTheLeftEdgeTwice();
};

// Each row: operations run in order on a new window; the steps of the last one.
void TestViewModes::transitions_data()
{
    QTest::addColumn<QStringList>("operations");
    QTest::addColumn<ViewSteps>("expected");

    QTest::newRow("normal while already normal changes nothing in the control")
        << QStringList{"normal"} << ViewSteps{ViewStep::check(NormalViewKey, true)};
    QTest::newRow("normal after stretch sets paint mode 0")
        << QStringList{"stretch", "normal"}
        << ViewSteps{ViewStep::paint(PaintMode::Normal), ViewStep::check(NormalViewKey, true)};
    QTest::newRow("stretch from normal")
        << QStringList{"stretch"}
        << ViewSteps{ViewStep::paint(PaintMode::Stretch), ViewStep::check(StretchViewKey, true)};
    QTest::newRow("stretch while the glass is on stops the glass first")
        << QStringList{"glass", "stretch"}
        << ViewSteps{stop(), ViewStep::check(MagnifyingGlassKey, false), ViewStep::paint(PaintMode::Stretch),
                     ViewStep::check(StretchViewKey, true)};
    QTest::newRow("glass while stretched returns to normal size, then starts")
        << QStringList{"stretch", "glass"}
        << ViewSteps{ViewStep::check(NormalViewKey, true), ViewStep::paint(PaintMode::Normal), start(),
                     ViewStep::check(MagnifyingGlassKey, true)};
    QTest::newRow("pan window while the glass is on stops the glass")
        << QStringList{"glass", "pan"}
        << ViewSteps{stop(), ViewStep::check(MagnifyingGlassKey, false), ViewStep::check(PanImageKey, true),
                     showPan()};
    QTest::newRow("glass while the pan window is shown hides it")
        << QStringList{"pan", "glass"}
        << ViewSteps{hidePan(), ViewStep::check(PanImageKey, false), start(), ViewStep::check(MagnifyingGlassKey, true)};
    QTest::newRow("second pan click hides the pan window")
        << QStringList{"pan", "pan"} << ViewSteps{hidePan(), ViewStep::check(PanImageKey, false)};
    QTest::newRow("second glass click stops the glass")
        << QStringList{"glass", "glass"} << ViewSteps{stop(), ViewStep::check(MagnifyingGlassKey, false)};
    QTest::newRow("stretch while the pan window is shown keeps it")
        << QStringList{"pan", "stretch"}
        << ViewSteps{ViewStep::paint(PaintMode::Stretch), ViewStep::check(StretchViewKey, true)};
}

void TestViewModes::transitions()
{
    QFETCH(QStringList, operations);
    QFETCH(ViewSteps, expected);
    ViewModes modes;
    ViewSteps last;
    for (const QString &op : operations) {
        if (op == QLatin1String("normal"))
            last = modes.normal();
        else if (op == QLatin1String("stretch"))
            last = modes.stretch();
        else if (op == QLatin1String("pan"))
            last = modes.togglePanWindow();
        else if (op == QLatin1String("glass"))
            last = modes.toggleMagnifier();
    }
    QCOMPARE(describe(last), describe(expected));
}

void TestViewModes::activationShowsTheCurrentMode()
{
    ViewModes modes;
    QCOMPARE(describe(modes.activationChecks()),
             describe({ViewStep::check(NormalViewKey, true), ViewStep::check(PanImageKey, false),
                       ViewStep::check(MagnifyingGlassKey, false)}));
    modes.stretch();
    modes.togglePanWindow();
    QCOMPARE(describe(modes.activationChecks()),
             describe({ViewStep::check(StretchViewKey, true), ViewStep::check(PanImageKey, true),
                       ViewStep::check(MagnifyingGlassKey, false)}));
}

void TestViewModes::panWindowClosedByItsOwnBox()
{
    ViewModes modes;
    QVERIFY(modes.panWindowClosed().isEmpty());
    modes.togglePanWindow();
    QCOMPARE(describe(modes.panWindowClosed()), describe({ViewStep::check(PanImageKey, false)}));
    QVERIFY(!modes.isPanWindowShown());
    // The next click opens it again rather than hiding a window already gone.
    QVERIFY(modes.togglePanWindow().contains(showPan()));
}

void TestViewModes::teardownEndsBothAids()
{
    ViewModes glass;
    glass.toggleMagnifier();
    QCOMPARE(describe(glass.teardown()), describe({stop()}));
    ViewModes pan;
    pan.togglePanWindow();
    QCOMPARE(describe(pan.teardown()), describe({hidePan()}));
    QVERIFY(pan.teardown().isEmpty());
}

void TestViewModes::quickViewToggle()
{
    QCOMPARE(ViewModes::quickViewToggle(PaintMode::Normal), PaintMode::Stretch);
    QCOMPARE(ViewModes::quickViewToggle(PaintMode::Stretch), PaintMode::Normal);
}

void TestViewModes::panWindowGeometryUsesTheLeftEdgeTwice()
{
    QCOMPARE(PanWindowSettings::geometry(0), QRect(100, 100, 150, 200));
    QCOMPARE(PanWindowSettings::geometry(37), QRect(137, 137, 150, 200));
}

QTEST_GUILESS_MAIN(TestViewModes)
#include "tst_viewmodes.moc"
