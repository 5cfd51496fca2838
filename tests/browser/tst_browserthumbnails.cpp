#include "shell/ThumbnailJob.h"

#include "Fixtures.h"
#include "TestDir.h"

#include <QSemaphore>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <atomic>

using namespace tarnby;

class TestThumbnailJob : public QObject
{
    Q_OBJECT
private slots:
    void visibleRowsFirst();
    void stopDropsWorkInFlight();
    void droppedJobLeavesWorkersHarmless();
    void everyPictureArrivesOnce();
    void unreadablePictureGivesNullImage();
    void realPicturesFitTheBox();
    void transparentPartsTurnWhite();
    void picturesAmongFilesOfAFolder();
    void emptyJobFinishesAtOnce();
    void modelKeepsToItsBudget();
};

static QStringList names(int count)
{
    QStringList paths;
    for (int i = 0; i < count; ++i)
        paths << QStringLiteral("/p/%1.jpg").arg(i);
    return paths;
}

static QImage dummy(const QString &, const ThumbnailOptions &o)
{
    QImage image(o.box, QImage::Format_RGB32);
    image.fill(Qt::red);
    return image;
}

void TestThumbnailJob::visibleRowsFirst()
{
    QThreadPool pool;
    ThumbnailJob job(names(10), {}, &pool, dummy);
    QList<int> order;
    connect(&job, &ThumbnailJob::thumbnailReady, [&](int row, const QImage &) { order << row; });
    job.prioritize(6, 8);
    job.prioritize(8, 20); // clamped to the last row
    job.runHere();
    QCOMPARE(order, (QList<int>{8, 9, 6, 7, 0, 1, 2, 3, 4, 5}));
    QVERIFY(job.isFinished());
}

void TestThumbnailJob::stopDropsWorkInFlight()
{
    QThreadPool pool;
    pool.setMaxThreadCount(2);
    QSemaphore started;
    QSemaphore release;
    std::atomic_int made{0};
    ThumbnailJob job(names(50), {}, &pool, [&](const QString &p, const ThumbnailOptions &o) {
        started.release();
        release.acquire();
        ++made;
        return dummy(p, o);
    });
    QSignalSpy ready(&job, &ThumbnailJob::thumbnailReady);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    job.start();
    QVERIFY(started.tryAcquire(2, 5000)); // both workers are inside a picture
    job.stop();
    QCOMPARE(finished.size(), 1);
    QCOMPARE(finished.first().first().toBool(), true);
    release.release(2);
    job.wait();
    QCoreApplication::processEvents();
    QCOMPARE(made.load(), 2);      // nothing new was started after stop
    QCOMPARE(ready.size(), 0);     // and the two in flight were dropped
    QCOMPARE(finished.size(), 1);
    QCOMPARE(job.done(), 0);
}

void TestThumbnailJob::droppedJobLeavesWorkersHarmless()
{
    QThreadPool pool;
    pool.setMaxThreadCount(3);
    QSemaphore started;
    QSemaphore release;
    std::atomic_int made{0};
    {
        ThumbnailJob job(names(100), {}, &pool, [&](const QString &p, const ThumbnailOptions &o) {
            started.release();
            release.acquire();
            ++made;
            return dummy(p, o);
        });
        job.start();
        QVERIFY(started.tryAcquire(3, 5000));
    } // a folder change drops the job while three pictures are being made
    release.release(100);
    QVERIFY(pool.waitForDone(5000));
    QCoreApplication::processEvents(); // nothing is delivered to the dead job
    QCOMPARE(made.load(), 3);
}

void TestThumbnailJob::everyPictureArrivesOnce()
{
    QThreadPool pool;
    pool.setMaxThreadCount(4);
    ThumbnailJob job(names(200), {}, &pool, dummy);
    ThumbnailModel model;
    model.setFiles(names(200));
    connect(&job, &ThumbnailJob::thumbnailReady, &model, &ThumbnailModel::setThumbnail);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    QSignalSpy progress(&job, &ThumbnailJob::progress);
    job.start();
    job.prioritize(150, 160);
    QVERIFY(finished.wait(10000));
    QCOMPARE(finished.first().first().toBool(), false);
    QCOMPARE(model.readyCount(), 200);
    QCOMPARE(progress.size(), 200);
    QCOMPARE(progress.last().at(0).toInt(), 200);
    QCOMPARE(model.imageBytes(), qint64(200) * dummy({}, {}).sizeInBytes());
}

void TestThumbnailJob::unreadablePictureGivesNullImage()
{
    TestDir dir;
    const QString broken = dir.createFile("broken.jpg", "not a jpeg at all");
    QThreadPool pool;
    ThumbnailJob job({broken}, {}, &pool);
    QImage got(1, 1, QImage::Format_RGB32);
    bool arrived = false;
    connect(&job, &ThumbnailJob::thumbnailReady, [&](int, const QImage &image) {
        got = image;
        arrived = true;
    });
    job.runHere();
    QVERIFY(arrived);
    QVERIFY(got.isNull());
}

void TestThumbnailJob::realPicturesFitTheBox()
{
    REQUIRE_FIXTURES();
    const QStringList pictures = fixtures::files(QStringLiteral("JPG"));
    QVERIFY(!pictures.isEmpty());
    ThumbnailOptions options;
    options.box = QSize(80, 40);
    options.bits = 8;
    for (const QString &path : pictures) {
        const QImage image = ThumbnailJob::makeThumbnail(path, options);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY(image.width() <= 80 && image.height() <= 40);
        QCOMPARE(image.depth(), 8);
    }
    options.bits = 24;
    QCOMPARE(ThumbnailJob::makeThumbnail(pictures.first(), options).format(), QImage::Format_RGB888);
}

void TestThumbnailJob::transparentPartsTurnWhite()
{
    TestDir dir;
    QImage clear(20, 10, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    const QString path = dir.filePath("clear.png");
    QVERIFY(clear.save(path));
    ThumbnailOptions options;
    options.bits = 24;
    QCOMPARE(ThumbnailJob::makeThumbnail(path, options).pixel(5, 5), qRgb(255, 255, 255));
    options.bits = 32;
    QCOMPARE(qAlpha(ThumbnailJob::makeThumbnail(path, options).pixel(5, 5)), 0);
}

void TestThumbnailJob::picturesAmongFilesOfAFolder()
{
    const QStringList files = {"/a/x.JPG", "/a/song.mp3", "/a/one.msp", "/a/d.dic", "/a/t.txt", "/a/noext",
                               "/a/x.xwd", "/a/pic.png"};
    QCOMPARE(picturesAmong(files), (QStringList{"/a/x.JPG", "/a/one.msp", "/a/x.xwd", "/a/pic.png"}));
}

void TestThumbnailJob::emptyJobFinishesAtOnce()
{
    QThreadPool pool;
    ThumbnailJob job({}, {}, &pool, dummy);
    QSignalSpy finished(&job, &ThumbnailJob::finished);
    job.start();
    QCOMPARE(finished.size(), 1);
}

void TestThumbnailJob::modelKeepsToItsBudget()
{
    ThumbnailModel model;
    model.setFiles(names(100));
    const qint64 each = dummy({}, {}).sizeInBytes();
    model.setBudget(each * 20);
    model.setFocusRow(50);
    QSignalSpy evicted(&model, &ThumbnailModel::evicted);
    for (int row = 0; row < 100; ++row)
        model.setThumbnail(row, dummy({}, {}));
    QVERIFY(model.imageBytes() <= model.budget());
    QVERIFY(!evicted.isEmpty());
    QCOMPARE(model.readyCount() * each, model.imageBytes());
    QVERIFY(model.isReady(50));  // the focus row stays
    QVERIFY(!model.isReady(0));  // the far ends went first
    QVERIFY(!model.isReady(1));
    QVERIFY(model.data(model.index(0), Qt::DecorationRole).isNull());
    // A thumbnail that could not be made costs nothing and is never dropped.
    model.setThumbnail(0, QImage());
    QVERIFY(model.isReady(0));
}

QTEST_GUILESS_MAIN(TestThumbnailJob)
#include "tst_browserthumbnails.moc"
