#include "TestDir.h"

#include "core/settings/LineTable.h"
#include "core/settings/ProgramOptions.h"

#include <QProcess>
#include <QRandomGenerator>
#include <QtTest>

using namespace tarnby::settings;

ProgramOptions saveLoopVersion(int which); // settings_save_loop.cpp

class TestSettingsSave : public QObject
{
    Q_OBJECT

private slots:
    void killedWriterLeavesOldOrNewFile();
    void failedWriteLeavesOldFile();
};

void TestSettingsSave::killedWriterLeavesOldOrNewFile()
{
    TestDir dir;
    QByteArray versions[2];
    for (int v = 0; v < 2; ++v) {
        QByteArray bytes;
        for (const QString &line : tableLines<ProgramOptions>(optionsFileTable(), saveLoopVersion(v)))
            bytes += line.toUtf8() + "\r\n";
        versions[v] = bytes;
    }
    QVERIFY(versions[0].size() > 15000);

    int seen[2] = {0, 0};
    for (int round = 0; round < 15; ++round) {
        QProcess writer;
        writer.start(QStringLiteral(SETTINGS_SAVE_LOOP), {dir.path()});
        QVERIFY(writer.waitForStarted());
        QVERIFY(writer.waitForReadyRead(10000));
        QCOMPARE(writer.readLine().trimmed(), QByteArray("ready"));
        QThread::msleep(QRandomGenerator::global()->bounded(1, 40));
        writer.kill(); // SIGKILL: no chance to tidy up
        QVERIFY(writer.waitForFinished(10000));
        QCOMPARE(writer.exitStatus(), QProcess::CrashExit);

        const QByteArray now = dir.read(OptionsFileName);
        QVERIFY2(now == versions[0] || now == versions[1],
                 qPrintable(QStringLiteral("round %1: the file holds %2 bytes of neither version")
                                .arg(round)
                                .arg(now.size())));
        ++seen[now == versions[0] ? 0 : 1];
    }
    qInfo() << "versions found after the kills:" << seen[0] << seen[1];
}

void TestSettingsSave::failedWriteLeavesOldFile()
{
    TestDir dir;
    const QByteArray before = "old\r\n";
    dir.createFile(OptionsFileName, before);
    // A folder in which nothing can be created: the write fails before the
    // old file is touched.
    QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::ExeOwner);
    QString error;
    const bool written = writeProgramOptions(dir.path(), ProgramOptions(), &error);
    QFile::setPermissions(dir.path(), QFileDevice::ReadOwner | QFileDevice::WriteOwner | QFileDevice::ExeOwner);
    if (written)
        QSKIP("this user can write into a read-only folder (root)");
    QVERIFY(error.contains(OptionsFileName));
    QCOMPARE(dir.read(OptionsFileName), before);
}

QTEST_GUILESS_MAIN(TestSettingsSave)
#include "tst_settingssave.moc"
