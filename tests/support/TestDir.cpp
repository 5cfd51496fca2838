#include "TestDir.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>

TestDir::TestDir()
    : QTemporaryDir(QDir::temp().filePath(QStringLiteral("tarnby-test-XXXXXX")))
{
}

QString TestDir::createFile(const QString &relativePath, const QByteArray &content)
{
    const QString path = filePath(relativePath);
    QDir().mkpath(QFileInfo(path).absolutePath());
    QFile f(path);
    if (f.open(QIODevice::WriteOnly))
        f.write(content);
    return path;
}

QString TestDir::createFolder(const QString &relativePath)
{
    const QString path = filePath(relativePath);
    QDir().mkpath(path);
    return path;
}

QByteArray TestDir::read(const QString &relativePath) const
{
    QFile f(filePath(relativePath));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

bool TestDir::runElsewhere(const QString &command) const
{
    QProcess process;
    process.setWorkingDirectory(path());
    process.start(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), command});
    return process.waitForFinished(60000) && process.exitStatus() == QProcess::NormalExit && process.exitCode() == 0;
}
