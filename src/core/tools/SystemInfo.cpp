#include "core/tools/SystemInfo.h"

#include "core/app/SettingsStore.h"

#include <QDir>
#include <QFileInfo>
#include <QStandardPaths>
#include <QtEndian>

namespace tarnby::tools {

QString SettingsRegistry::section(const QString &root, const QString &keyPath)
{
    QString path = keyPath;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    return root + QLatin1Char('/') + path;
}

std::optional<RegistryValue> SettingsRegistry::read(const QString &root, const QString &keyPath,
                                                    const QString &valueName) const
{
    const QVariant stored = m_store.value(section(root, keyPath), valueName);
    if (!stored.isValid())
        return std::nullopt;
    RegistryValue value;
    const int typeId = stored.typeId();
    if (typeId == QMetaType::Int || typeId == QMetaType::UInt || typeId == QMetaType::LongLong
        || typeId == QMetaType::ULongLong) {
        value.type = RegDword;
        const quint32 number = quint32(stored.toLongLong());
        value.data.resize(4);
        qToLittleEndian(number, value.data.data());
    } else {
        value.type = RegString;
        value.data = stored.toString().toUtf8() + '\0';
    }
    return value;
}

bool GetKeyValue(const RegistrySource &registry, const QString &root, const QString &keyPath,
                 const QString &valueName, QString *value)
{
    const std::optional<RegistryValue> read = registry.read(root, keyPath, valueName);
    if (!read)
        return false;
    // The buffer holds 1024 characters.
    QByteArray data = read->data.left(1024);
    if (data.endsWith('\0'))
        data.chop(1);
    switch (read->type) {
    case RegString:
        *value = QString::fromUtf8(data);
        return true;
    case RegDword: {
        QString hex;
        for (qsizetype i = data.size() - 1; i >= 0; --i)
            hex += QString::number(quint8(data.at(i)), 16).toUpper();
        bool ok = false;
        const qulonglong number = hex.toULongLong(&ok, 16);
        *value = QString::number(ok ? number : 0);
        return true;
    }
    default:
        return false;
    }
}

const QStringList &systemInfoPrograms()
{
    static const QStringList programs{QStringLiteral("kinfocenter"), QStringLiteral("hardinfo"),
                                      QStringLiteral("gnome-system-monitor"), QStringLiteral("lshw-gtk")};
    return programs;
}

QString findSystemInfoProgram(const RegistrySource &registry, const ExecutableFinder &findExecutable)
{
    const QString root = QLatin1String(LocalMachine);
    QString value;
    if (GetKeyValue(registry, root, QLatin1String(MsInfoKey), QLatin1String(MsInfoValue), &value))
        return value;
    if (GetKeyValue(registry, root, QLatin1String(SharedToolsKey), QLatin1String(SharedToolsValue), &value)) {
        const QString path = QDir(value).filePath(QLatin1String(MsInfoProgram));
        if (QFileInfo(path).isFile())
            return path;
    }
    for (const QString &program : systemInfoPrograms()) {
        const QString found = findExecutable(program);
        if (!found.isEmpty())
            return found;
    }
    return {};
}

QString findOnPath(const QString &name)
{
    return QStandardPaths::findExecutable(name);
}

} // namespace tarnby::tools
