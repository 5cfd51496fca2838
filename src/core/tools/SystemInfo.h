#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <functional>
#include <optional>

namespace tarnby {
class SettingsStore;
}

// Finding the system information program for the about window: first where
// the registry of the program's original desktop says it is, then the system
// information programs of Linux desktops on the PATH.
namespace tarnby::tools {

inline constexpr const char *LocalMachine = "HKEY_LOCAL_MACHINE";
inline constexpr const char *MsInfoKey = "SOFTWARE\\Microsoft\\Shared Tools\\MSINFO";
inline constexpr const char *MsInfoValue = "PATH";
inline constexpr const char *SharedToolsKey = "SOFTWARE\\Microsoft\\Shared Tools Location";
inline constexpr const char *SharedToolsValue = "MSINFO";
inline constexpr const char *MsInfoProgram = "MSINFO32.EXE";
inline constexpr const char *SysInfoUnavailable = "System Information Is Unavailable At This Time";

// Registry value types.
inline constexpr int RegString = 1;
inline constexpr int RegDword = 4;

struct RegistryValue {
    int type = 0;
    QByteArray data; // as the registry returns it: a string's bytes with its NUL, a number's four bytes
};

// Where registry values come from. Linux has no registry; the settings store
// serves the same paths (see SettingsRegistry).
class RegistrySource
{
public:
    virtual ~RegistrySource() = default;
    // The value, or nothing when the key or the value does not exist.
    virtual std::optional<RegistryValue> read(const QString &root, const QString &keyPath,
                                              const QString &valueName) const = 0;
};

// Registry paths kept in the settings store: section root + "/" + the key's
// path with "/" for "\", the value's name as the key. A number stored there
// reads as a 32-bit number, anything else as a string.
class SettingsRegistry : public RegistrySource
{
public:
    explicit SettingsRegistry(SettingsStore &store)
        : m_store(store)
    {
    }
    std::optional<RegistryValue> read(const QString &root, const QString &keyPath,
                                      const QString &valueName) const override;
    static QString section(const QString &root, const QString &keyPath);

private:
    SettingsStore &m_store;
};

// Reads one value as text. A trailing NUL of the data is dropped; a string
// is returned as it is; a 32-bit number is written byte by byte from the last
// to the first, each byte in hexadecimal without leading zeros, and that
// hexadecimal text read back as the number returned in decimal. The missing
// padding is kept on purpose: 266 (bytes 0A 01 00 00) comes back as 26.
// False when the key or the value is missing, or the type is neither.
bool GetKeyValue(const RegistrySource &registry, const QString &root, const QString &keyPath,
                 const QString &valueName, QString *value);

// The system information programs of Linux desktops looked for on the PATH,
// in this order.
const QStringList &systemInfoPrograms();

// Where the program to start is: the registry's "PATH" value; else the
// shared tools folder + "/MSINFO32.EXE" when that file exists; else the first
// of systemInfoPrograms() that findExecutable finds. Empty: unavailable.
using ExecutableFinder = std::function<QString(const QString &name)>;
QString findSystemInfoProgram(const RegistrySource &registry, const ExecutableFinder &findExecutable);
// QStandardPaths::findExecutable over the PATH.
QString findOnPath(const QString &name);

} // namespace tarnby::tools
