#pragma once

#include "core/tools/SystemInfo.h"

#include <QDialog>

#include <functional>

namespace tarnby {
class AppState;
class SettingsStore;
}

namespace tarnby::ui {

struct UiServices;

// "About Tarnby 3.0": the program, its version, what it does, the warning,
// and the button that starts the desktop's system information program.
class About1 : public QDialog
{
    Q_OBJECT
public:
    About1(AppState &state, UiServices &services, SettingsStore &store, QWidget *parent = nullptr);

    // Seams for tests: how programs are found on the PATH and how one is
    // started (true when it started).
    void setExecutableFinder(tools::ExecutableFinder finder) { m_finder = std::move(finder); }
    void setLauncher(std::function<bool(const QString &program)> launcher) { m_launcher = std::move(launcher); }

    // SysBtn: starts the system information program, or says it is
    // unavailable. Returns the program started (empty when none).
    QString StartSysInfo();
    // The registry read the about window does, over the settings store.
    bool GetKeyValue(const QString &root, const QString &keyPath, const QString &valueName, QString *value) const;

private:
    AppState &m_state;
    UiServices &m_services;
    SettingsStore &m_store;
    tools::ExecutableFinder m_finder = tools::findOnPath;
    std::function<bool(const QString &)> m_launcher;
};

} // namespace tarnby::ui
