#include "TestDir.h"
#include "ThumbTestPictures.h"

#include "core/platform/imaging/ThumbnailJob.h"

#include <QDeadlineTimer>
#include <QMutex>
#include <QSemaphore>
#include <QThread>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <atomic>
#include <memory>

using namespace tarnby::imaging;

class TestThumbnailJob : public QObject
{
    Q_OBJECT

private slots:
    void initTestCase();
    void init();
    void cleanup();

    void visibleItemsFirst_data();
    void visibleItemsFirst();
    void everyItemReportedOnce();
    void stopDropsTheRest();
    void destroyedWhileRunning();
    void detachedJobReturnsAtOnce();
    void producerTakesThePlaceOfTheDecoder();

private:
    QStringList pictures(int count, int width, int height);

    std::unique_ptr<TestDir> m_cacheHome;
    std::unique_ptr<TestDir> m_files;
};

void TestThumbnailJob::initTestCase()
{
    qRegisterMetaType<QImage>();
}

void TestThumbnailJob::init()
{
    m_cacheHome = std::make_unique<TestDir>();
    m_files = std::make_unique<TestDir>();
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_cacheHome->path()));
}

void TestThumbnailJob::cleanup()
{
    qunsetenv("XDG_CACHE_HOME");
    m_files.reset();
    m_cacheHome.reset();
}

// One picture written once, then linked under count names: the job treats
// each name as its own file.
QStringList TestThumbnailJob::pictures(int count, int width, int height)
{
    const QString first = m_files->filePath(QStringLiteral("p000.jpg"));
    if (!thumbtest::save(thumbtest::quadrants(width, height), first, "JPEG"))
        return {};
    QStringList paths{first};
    for (int i = 1; i < count; ++i) {
        const QString path = m_files->filePath(QStringLiteral("p%1.jpg").arg(i, 3, 10, QLatin1Char('0')));
        if (!QFile::copy(first, path))
            return {};
        paths << path;
    }
    return paths;
}

void TestThumbnailJob::visibleItemsFirst_data()
{
    QTest::addColumn<int>("first");
    QTest::addColumn<int>("last");
    QTest::addColumn<QPoint>("movedTo"); // the range set while item 0 is shown; (-2, -2): none
    QTest::addColumn<QList<int>>("order");
    const QPoint stays(-2, -2);
    QTest::newRow("no visible range") << 0 << -1 << stays << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    QTest::newRow("range in the middle") << 6 << 8 << stays << QList<int>{6, 7, 8, 0, 1, 2, 3, 4, 5, 9};
    QTest::newRow("range past the end") << 8 << 20 << stays << QList<int>{8, 9, 0, 1, 2, 3, 4, 5, 6, 7};
    QTest::newRow("range before the start") << -5 << 1 << stays << QList<int>{0, 1, 2, 3, 4, 5, 6, 7, 8, 9};
    QTest::newRow("last item only") << 9 << 9 << stays << QList<int>{9, 0, 1, 2, 3, 4, 5, 6, 7, 8};
    // The view scrolls while the first item is being shown.
    QTest::newRow("range moved while running") << 0 << 1 << QPoint(7, 8) << QList<int>{0, 7, 8, 1, 2, 3, 4, 5, 6, 9};
}

void TestThumbnailJob::visibleItemsFirst()
{
    QFETCH(int, first);
    QFETCH(int, last);
    QFETCH(QPoint, movedTo);
    QFETCH(QList<int>, order);
    const QStringList paths = pictures(10, 64, 48);
    QVERIFY(!paths.isEmpty());

    QThreadPool pool;
    pool.setMaxThreadCount(1);
    QList<int> seen;
    ThumbnailJob job(paths, 32);
    job.setThreadPool(&pool);
    job.setOptions(ThumbnailOption::NoCache);
    job.setCallback([&](const ThumbnailJob::Item &item) {
        seen << item.index;
        if (item.index == 0 && movedTo.x() != -2)
            job.setVisibleRange(movedTo.x(), movedTo.y());
    });
    job.setVisibleRange(first, last);
    job.start();
    QVERIFY(job.wait(30000));
    QCOMPARE(seen, order);
}

void TestThumbnailJob::everyItemReportedOnce()
{
    QStringList paths = pictures(12, 320, 240);
    paths.insert(5, m_files->createFile("broken.jpg", "no picture here"));
    QThreadPool pool;
    pool.setMaxThreadCount(3);
    ThumbnailJob job(paths, 128);
    job.setThreadPool(&pool);
    QSignalSpy ready(&job, &ThumbnailJob::thumbnailReady);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    QList<int> progress;
    connect(&job, &ThumbnailJob::progress, this, [&](int delivered, int count) {
        QCOMPARE(count, int(paths.size()));
        QCOMPARE(delivered, int(ready.count())); // right after each thumbnailReady
        progress << delivered;
    });
    job.start();
    QVERIFY(finished.wait(30000));
    QCOMPARE(finished.count(), 1);
    QVERIFY(job.isFinished());
    QCOMPARE(job.completedCount(), int(paths.size()));
    QCOMPARE(ready.count(), int(paths.size()));
    QCOMPARE(job.deliveredCount(), int(paths.size()));
    QCOMPARE(progress.size(), int(paths.size()));
    QCOMPARE(progress.last(), int(paths.size()));

    QList<int> indexes;
    for (const QList<QVariant> &args : std::as_const(ready)) {
        const int index = args.at(0).toInt();
        indexes << index;
        QCOMPARE(args.at(1).toString(), paths.at(index));
        const QImage image = args.at(2).value<QImage>();
        const QString error = args.at(3).toString();
        if (index == 5) {
            QVERIFY(image.isNull());
            QVERIFY(!error.isEmpty());
        } else {
            QCOMPARE(image.size(), QSize(128, 96));
            QVERIFY(error.isEmpty());
        }
    }
    std::sort(indexes.begin(), indexes.end());
    QList<int> all(paths.size());
    std::iota(all.begin(), all.end(), 0);
    QCOMPARE(indexes, all);
}

void TestThumbnailJob::stopDropsTheRest()
{
    const QStringList paths = pictures(120, 1200, 900);
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    ThumbnailJob job(paths, 128);
    job.setThreadPool(&pool);
    job.setOptions(ThumbnailOption::NoCache);
    QMutex mutex;
    int calls = 0;
    job.setCallback([&](const ThumbnailJob::Item &) {
        QMutexLocker lock(&mutex);
        if (++calls == 5)
            job.stop();
    });
    QSignalSpy ready(&job, &ThumbnailJob::thumbnailReady);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    job.start();
    QVERIFY(job.wait(60000));
    QVERIFY(job.isStopped());
    QVERIFY(job.isFinished());
    // The other worker may have been inside the callback when the fifth call
    // stopped the job; nothing after that.
    QVERIFY2(calls >= 5 && calls <= 6, qPrintable(QString::number(calls)));
    QCOMPARE(job.completedCount(), calls);
    QVERIFY(pool.waitForDone(5000));
    QCOMPARE(job.completedCount(), calls);

    // The queued results of a stopped job are dropped; finished still comes.
    QTRY_COMPARE(finished.count(), 1);
    QCOMPARE(ready.count(), 0);
}

void TestThumbnailJob::destroyedWhileRunning()
{
    const QStringList paths = pictures(60, 320, 240);
    QThreadPool pool;
    pool.setMaxThreadCount(1);
    std::atomic<int> calls{0};
    QSemaphore thirdDone;
    {
        ThumbnailJob job(paths, 128);
        job.setThreadPool(&pool);
        job.setOptions(ThumbnailOption::NoCache);
        // The worker holds on inside its third callback until the job is
        // stopped, so the job is certainly destroyed in the middle of its run.
        job.setCallback([&](const ThumbnailJob::Item &) {
            if (++calls == 3) {
                thirdDone.release();
                QDeadlineTimer patience(10000);
                while (!job.isStopped() && !patience.hasExpired())
                    QThread::msleep(1);
            }
        });
        job.start();
        QVERIFY(thirdDone.tryAcquire(1, 10000));
    }
    // The destructor stopped the job and waited for its worker: nothing ran
    // after it, and the pool's thread is free at once.
    QCOMPARE(calls.load(), 3);
    QVERIFY(pool.waitForDone(5000));
    QCOMPARE(calls.load(), 3);
    QCoreApplication::processEvents(); // queued results to a dead job are discarded
}

// A window leaving a folder drops its job while pictures are still being
// made; it must not wait for them, and nothing may reach the dead job.
void TestThumbnailJob::detachedJobReturnsAtOnce()
{
    QThreadPool pool;
    pool.setMaxThreadCount(3);
    QSemaphore started;
    QSemaphore release;
    std::atomic<int> made{0};
    auto job = std::make_unique<ThumbnailJob>(QStringList(100, QStringLiteral("/nowhere/p.jpg")), 64);
    job->setThreadPool(&pool);
    job->setTeardown(ThumbnailJob::Teardown::Detach);
    job->setProducer([&](const QString &, int size) {
        started.release();
        release.acquire();
        ++made;
        ThumbnailResult result;
        result.image = QImage(size, size, QImage::Format_RGB32);
        return result;
    });
    QSignalSpy ready(job.get(), &ThumbnailJob::thumbnailReady);
    job->start();
    QVERIFY(started.tryAcquire(3, 10000)); // three workers inside a picture
    job.reset();                            // returns although none of them can end
    release.release(100);
    QVERIFY(pool.waitForDone(10000));
    QCoreApplication::processEvents();
    QCOMPARE(made.load(), 3); // nothing new was started after the job was gone
}

void TestThumbnailJob::producerTakesThePlaceOfTheDecoder()
{
    const QStringList paths{QStringLiteral("/nowhere/a.jpg"), QStringLiteral("/nowhere/b.jpg")};
    ThumbnailJob job(paths, 40);
    job.setProducer([](const QString &path, int size) {
        ThumbnailResult result;
        if (path.endsWith(QLatin1String("a.jpg"))) {
            result.image = QImage(size, size / 2, QImage::Format_RGB32);
            result.image.fill(Qt::green);
        } else {
            result.errorString = QStringLiteral("made to fail");
        }
        return result;
    });
    QSignalSpy ready(&job, &ThumbnailJob::thumbnailReady);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    job.start();
    QVERIFY(finished.wait(10000));
    QCOMPARE(ready.count(), 2);
    for (const QList<QVariant> &args : std::as_const(ready)) {
        if (args.at(0).toInt() == 0) {
            QCOMPARE(args.at(2).value<QImage>().size(), QSize(40, 20));
        } else {
            QVERIFY(args.at(2).value<QImage>().isNull());
            QCOMPARE(args.at(3).toString(), QStringLiteral("made to fail"));
        }
    }
}

QTEST_GUILESS_MAIN(TestThumbnailJob)
#include "tst_thumbnailjob.moc"
