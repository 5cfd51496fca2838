#pragma once

#include <QSettings>
#include <QString>
#include <QVariant>

#include <memory>

namespace tarnby {

// The user settings store: values by section and key (the registry of the
// desktop the program came from). Backed by QSettings; tests give it a file of
// their own so that they never touch the user's settings.
class SettingsStore
{
public:
    SettingsStore();                              // the user's store
    explicit SettingsStore(const QString &iniFile); // a store in one file

    QVariant value(const QString &section, const QString &key, const QVariant &fallback = {}) const;
    void setValue(const QString &section, const QString &key, const QVariant &value);
    void sync();

    static constexpr const char *RegisteredSection = "Registered";
    static constexpr const char *ProgramFolderKey = "TarnbyDIR";

private:
    std::unique_ptr<QSettings> m_settings;
};

} // namespace tarnby
