#pragma once

#include "TestDir.h"

#include "core/app/AppState.h"
#include "core/app/SettingsStore.h"
#include "ScriptedResponder.h"
#include "ui/services/UiServices.h"

#include <functional>

class QListWidget;

namespace tarnby::settings {
struct ProgramOptions;
}

// What every window under test is built on: a program folder of its own, the
// application state pointing at it, a settings store inside it, and the UI
// services with every message box and dialog answered by a script. Members
// are declared in the order a window needs them, so they outlive it when the
// window is destroyed first.
struct UiFixture {
    UiFixture();

    TestDir home;
    tarnby::AppState state;
    tarnby::SettingsStore store{home.filePath(QStringLiteral("settings.ini"))};
    tarnby::ui::UiServices services;
    tarnby::ui::ScriptedResponder responder{services};

    // Writes the options file as a previous run left it: the defaults with
    // change applied. Start-up reads it back; state.options is left alone.
    void saveOptions(const std::function<void(tarnby::settings::ProgramOptions &)> &change);
};

// The texts of a list's items, top to bottom.
QStringList listTexts(const QListWidget *list);

// Clicks the push button called name inside parent; fails the test when
// there is none.
void clickButton(QWidget *parent, const QString &name);
