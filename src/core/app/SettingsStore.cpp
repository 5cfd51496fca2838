#include "core/app/SettingsStore.h"

namespace tarnby {

SettingsStore::SettingsStore()
    : m_settings(std::make_unique<QSettings>(QSettings::IniFormat, QSettings::UserScope,
                                             QStringLiteral("Tarnby"), QStringLiteral("Tarnby")))
{
}

SettingsStore::SettingsStore(const QString &iniFile)
    : m_settings(std::make_unique<QSettings>(iniFile, QSettings::IniFormat))
{
}

QVariant SettingsStore::value(const QString &section, const QString &key, const QVariant &fallback) const
{
    return m_settings->value(section + QLatin1Char('/') + key, fallback);
}

void SettingsStore::setValue(const QString &section, const QString &key, const QVariant &value)
{
    m_settings->setValue(section + QLatin1Char('/') + key, value);
}

void SettingsStore::sync()
{
    m_settings->sync();
}

} // namespace tarnby
