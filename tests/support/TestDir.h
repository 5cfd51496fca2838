#pragma once

#include <QByteArray>
#include <QString>
#include <QTemporaryDir>

// A temporary folder for a test's tree of files, removed when the test ends.
class TestDir : public QTemporaryDir
{
public:
    TestDir();
    // Writes a file (creating its folders) and returns its full path.
    QString createFile(const QString &relativePath, const QByteArray &content = QByteArray("x"));
    QString createFolder(const QString &relativePath);
    QString filePath(const QString &relativePath) const { return QTemporaryDir::filePath(relativePath); }
    QByteArray read(const QString &relativePath) const;
    // Runs a shell command in the folder, as another program would, and
    // waits for it; true when it ended well.
    bool runElsewhere(const QString &command) const;
};
