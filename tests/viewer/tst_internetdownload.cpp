#include "LocalHttpServer.h"
#include "core/viewer/InternetDownload.h"

#include <QFile>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>

using namespace tarnby::viewer;

class TestInternetDownload : public QObject
{
    Q_OBJECT
private slots:
    void arrivesAsALocalCopy_data();
    void arrivesAsALocalCopy();
    void failures_data();
    void failures();
    void redirectIsFollowed();
    void cancelEndsTheTransferWithOneFinished();
    void destructionAbortsWithoutASignal();
    void localCopyGoesWithTheJob();

private:
    // The result of the last finished() the spy saw.
    static DownloadResult resultOf(const QSignalSpy &spy)
    {
        return spy.constLast().constFirst().value<DownloadResult>();
    }
};

namespace {

QByteArray someBytes(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    for (int i = 0; i < size; ++i)
        bytes[i] = char((i * 31 + 7) & 0xff);
    return bytes;
}

} // namespace

void TestInternetDownload::arrivesAsALocalCopy_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QString>("localName");
    QTest::newRow("the last part of the address") << "pics/arrives.png" << "arrives.png";
    QTest::newRow("a query is cut off") << "pics/arrives.png?size=2" << "arrives.png";
    QTest::newRow("an address ending in a slash gives picture") << "pics/" << "picture";
}

void TestInternetDownload::arrivesAsALocalCopy()
{
    QFETCH(QString, name);
    QFETCH(QString, localName);
    const QByteArray body = someBytes(300 * 1024);
    LocalHttpServer server(body);
    QVERIFY(server.isListening());
    InternetDownload job;
    QSignalSpy finished(&job, &InternetDownload::finished);
    job.start(server.url(name));
    QVERIFY(job.isRunning());
    QVERIFY(finished.wait(20000));
    QCOMPARE(finished.size(), 1);
    QVERIFY(!job.isRunning());
    const DownloadResult result = resultOf(finished);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.address, server.url(name));
    QCOMPARE(QFileInfo(result.localPath).fileName(), localName);
    QCOMPARE(result.bytes, qint64(body.size()));
    QFile copy(result.localPath);
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), body);
    QCOMPARE(server.requestedPaths, QStringList{QLatin1Char('/') + name});
    QCOMPARE(job.result().localPath, result.localPath);
}

void TestInternetDownload::failures_data()
{
    QTest::addColumn<int>("status");
    QTest::addColumn<int>("bodySize");
    QTest::addColumn<qint64>("maxBytes");
    QTest::addColumn<bool>("listening");
    QTest::newRow("not found") << 404 << 100 << InternetDownload::DefaultMaxBytes << true;
    QTest::newRow("server error") << 500 << 0 << InternetDownload::DefaultMaxBytes << true;
    QTest::newRow("one byte over the limit") << 200 << 4097 << qint64(4096) << true;
    QTest::newRow("nobody listens") << 200 << 100 << InternetDownload::DefaultMaxBytes << false;
}

void TestInternetDownload::failures()
{
    QFETCH(int, status);
    QFETCH(int, bodySize);
    QFETCH(qint64, maxBytes);
    QFETCH(bool, listening);
    LocalHttpServer server;
    QVERIFY(server.isListening());
    LocalHttpServer::Reply reply;
    reply.status = status;
    reply.body = someBytes(bodySize);
    server.setReply(reply);
    const QString address = server.url(QStringLiteral("missing.png"));
    if (!listening)
        server.close();
    InternetDownload job;
    job.setMaxBytes(maxBytes);
    QSignalSpy finished(&job, &InternetDownload::finished);
    job.start(address);
    QVERIFY(finished.wait(20000));
    QCOMPARE(finished.size(), 1);
    const DownloadResult result = resultOf(finished);
    QVERIFY(!result.ok());
    QVERIFY(!result.errorString.isEmpty());
    QVERIFY(result.localPath.isEmpty());
    QCOMPARE(result.address, address);
}

void TestInternetDownload::redirectIsFollowed()
{
    const QByteArray body = someBytes(1000);
    LocalHttpServer target(body);
    LocalHttpServer first;
    LocalHttpServer::Reply moved;
    moved.status = 302;
    moved.location = target.url(QStringLiteral("moved/there.png")).toLatin1();
    first.setReply(moved);
    InternetDownload job;
    QSignalSpy finished(&job, &InternetDownload::finished);
    job.start(first.url(QStringLiteral("here.png")));
    QVERIFY(finished.wait(20000));
    const DownloadResult result = resultOf(finished);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(target.requestedPaths, QStringList{"/moved/there.png"});
    // The copy is named after the address that was asked for.
    QCOMPARE(QFileInfo(result.localPath).fileName(), QStringLiteral("here.png"));
    QFile copy(result.localPath);
    QVERIFY(copy.open(QIODevice::ReadOnly));
    QCOMPARE(copy.readAll(), body);
}

void TestInternetDownload::cancelEndsTheTransferWithOneFinished()
{
    LocalHttpServer server({}, false);
    InternetDownload job;
    QSignalSpy finished(&job, &InternetDownload::finished);
    job.cancel(); // nothing runs: nothing happens
    QCOMPARE(finished.size(), 0);
    job.start(server.url(QStringLiteral("never.png")));
    QTRY_COMPARE(server.requestedPaths.size(), 1);
    QCOMPARE(server.openConnections(), 1);
    job.cancel();
    QCOMPARE(finished.size(), 1);
    QVERIFY(!job.isRunning());
    const DownloadResult result = resultOf(finished);
    QVERIFY(!result.ok());
    QVERIFY(result.localPath.isEmpty());
    QTRY_COMPARE(server.openConnections(), 0);
    QCoreApplication::processEvents();
    QCOMPARE(finished.size(), 1);
}

void TestInternetDownload::destructionAbortsWithoutASignal()
{
    LocalHttpServer server({}, false);
    auto job = std::make_unique<InternetDownload>();
    int emitted = 0;
    QObject::connect(job.get(), &InternetDownload::finished, [&emitted] { ++emitted; });
    job->start(server.url(QStringLiteral("never.png")));
    QTRY_COMPARE(server.requestedPaths.size(), 1);
    job.reset();
    QTRY_COMPARE(server.openConnections(), 0);
    QCOMPARE(emitted, 0);
}

void TestInternetDownload::localCopyGoesWithTheJob()
{
    LocalHttpServer server(someBytes(64));
    auto job = std::make_unique<InternetDownload>();
    QSignalSpy finished(job.get(), &InternetDownload::finished);
    job->start(server.url(QStringLiteral("a.png")));
    QVERIFY(finished.wait(20000));
    const QString first = resultOf(finished).localPath;
    QVERIFY(QFileInfo::exists(first));

    // The next download replaces the copy.
    job->start(server.url(QStringLiteral("b.png")));
    QVERIFY(!QFileInfo::exists(first));
    QVERIFY(!QFileInfo::exists(QFileInfo(first).absolutePath()));
    QVERIFY(finished.wait(20000));
    const QString second = resultOf(finished).localPath;
    QVERIFY(QFileInfo::exists(second));

    job.reset();
    QVERIFY(!QFileInfo::exists(second));
    QVERIFY(!QFileInfo::exists(QFileInfo(second).absolutePath()));
}

QTEST_GUILESS_MAIN(TestInternetDownload)
#include "tst_internetdownload.moc"
