#include "core/viewer/ViewModes.h"

namespace tarnby::viewer {

using Action = ViewStep::Action;

ViewSteps ViewModes::normal()
{
    ViewSteps steps;
    // Only a real change reaches the picture control; a second Normal repaints nothing.
    if (m_paintMode != PaintMode::Normal) {
        m_paintMode = PaintMode::Normal;
        steps << ViewStep::paint(PaintMode::Normal);
    }
    steps << ViewStep::check(NormalViewKey, true);
    m_stretched = false;
    return steps;
}

ViewSteps ViewModes::stretch()
{
    ViewSteps steps;
    if (m_magnifierOn)
        steps << stopMagnifier();
    m_paintMode = PaintMode::Stretch;
    steps << ViewStep::paint(PaintMode::Stretch);
    m_stretched = true;
    steps << ViewStep::check(StretchViewKey, true);
    return steps;
}

ViewSteps ViewModes::togglePanWindow()
{
    ViewSteps steps;
    if (m_panShown) {
        m_panShown = false;
        steps << ViewStep::simple(Action::HidePanWindow) << ViewStep::check(PanImageKey, false);
        return steps;
    }
    if (m_magnifierOn)
        steps << stopMagnifier();
    steps << ViewStep::check(PanImageKey, true);
    m_panShown = true;
    steps << ViewStep::simple(Action::ShowPanWindow);
    return steps;
}

ViewSteps ViewModes::toggleMagnifier()
{
    return m_magnifierOn ? stopMagnifier() : startMagnifier();
}

ViewSteps ViewModes::startMagnifier()
{
    ViewSteps steps;
    // The two aids never stand together.
    if (m_panShown) {
        m_panShown = false;
        steps << ViewStep::simple(Action::HidePanWindow) << ViewStep::check(PanImageKey, false);
    }
    // The glass works on the picture at its own size.
    if (m_stretched) {
        steps << ViewStep::check(NormalViewKey, true);
        m_stretched = false;
        m_paintMode = PaintMode::Normal;
        steps << ViewStep::paint(PaintMode::Normal);
    }
    steps << ViewStep::simple(Action::StartMagnifier) << ViewStep::check(MagnifyingGlassKey, true);
    m_magnifierOn = true;
    return steps;
}

ViewSteps ViewModes::stopMagnifier()
{
    m_magnifierOn = false;
    return {ViewStep::simple(Action::StopMagnifier), ViewStep::check(MagnifyingGlassKey, false)};
}

ViewSteps ViewModes::panWindowClosed()
{
    if (!m_panShown)
        return {};
    m_panShown = false;
    return {ViewStep::check(PanImageKey, false)};
}

ViewSteps ViewModes::activationChecks() const
{
    return {ViewStep::check(m_stretched ? StretchViewKey : NormalViewKey, true),
            ViewStep::check(PanImageKey, m_panShown), ViewStep::check(MagnifyingGlassKey, m_magnifierOn)};
}

ViewSteps ViewModes::teardown()
{
    ViewSteps steps;
    if (m_magnifierOn) {
        m_magnifierOn = false;
        steps << ViewStep::simple(Action::StopMagnifier);
    }
    if (m_panShown) {
        m_panShown = false;
        steps << ViewStep::simple(Action::HidePanWindow);
    }
    return steps;
}

} // namespace tarnby::viewer
