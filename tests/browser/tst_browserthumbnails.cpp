#include "core/browser/ThumbnailModel.h"
#include "core/platform/imaging/ThumbnailJob.h"

#include "Fixtures.h"
#include "TestDir.h"

#include <QAbstractItemModelTester>
#include <QFileInfo>
#include <QSignalSpy>
#include <QTest>
#include <QThreadPool>

#include <memory>

using namespace tarnby;

// The browser's side of thumbnails: their look, the model that holds them
// within a budget, and the picture layer's job filling that model. The job's
// own ordering, stopping and teardown are tested with the picture layer.
class TestBrowserThumbnails : public QObject
{
    Q_OBJECT
private slots:
    void everyPictureArrivesOnce();
    void unreadablePictureGivesNullImage();
    void realPicturesFitTheBox();
    void transparentPartsTurnWhite();
    void picturesAmongFilesOfAFolder();
    void emptyJobFinishes();
    void modelKeepsToItsBudget();
    void updateKeepsWhatWasMade_data();
    void updateKeepsWhatWasMade();
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

// A job run the way the thumbnail view runs it, with dummy() as its maker.
static std::unique_ptr<imaging::ThumbnailJob> browserJob(const QStringList &paths, QThreadPool *pool)
{
    auto job = std::make_unique<imaging::ThumbnailJob>(paths, 94);
    job->setThreadPool(pool);
    job->setProducer([](const QString &path, int) {
        imaging::ThumbnailResult result;
        result.image = dummy(path, {});
        return result;
    });
    return job;
}

void TestBrowserThumbnails::everyPictureArrivesOnce()
{
    QThreadPool pool;
    pool.setMaxThreadCount(4);
    const auto job = browserJob(names(200), &pool);
    ThumbnailModel model;
    model.setFiles(names(200));
    connect(job.get(), &imaging::ThumbnailJob::thumbnailReady, &model,
            [&model](int row, const QString &, const QImage &image) { model.setThumbnail(row, image); });
    QSignalSpy finished(job.get(), &imaging::ThumbnailJob::finished);
    QSignalSpy progress(job.get(), &imaging::ThumbnailJob::progress);
    job->start();
    job->setVisibleRange(150, 160);
    QVERIFY(finished.wait(10000));
    QCOMPARE(model.readyCount(), 200);
    QCOMPARE(progress.size(), 200);
    QCOMPARE(progress.last().at(0).toInt(), 200);
    QCOMPARE(model.imageBytes(), qint64(200) * dummy({}, {}).sizeInBytes());
}

void TestBrowserThumbnails::unreadablePictureGivesNullImage()
{
    TestDir dir;
    const QString broken = dir.createFile("broken.jpg", "not a jpeg at all");
    QVERIFY(browserThumbnail(broken, {}).isNull());
    QVERIFY(browserThumbnail(broken, {}).isNull()); // again, from the cache's failure record
}

void TestBrowserThumbnails::realPicturesFitTheBox()
{
    REQUIRE_FIXTURES();
    const QStringList pictures = fixtures::files(QStringLiteral("JPG"));
    QVERIFY(!pictures.isEmpty());
    ThumbnailOptions options;
    options.box = QSize(80, 40);
    options.bits = 8;
    for (const QString &path : pictures) {
        const QImage image = browserThumbnail(path, options);
        QVERIFY2(!image.isNull(), qPrintable(path));
        QVERIFY(image.width() <= 80 && image.height() <= 40);
        QCOMPARE(image.depth(), 8);
    }
    options.bits = 24;
    QCOMPARE(browserThumbnail(pictures.first(), options).format(), QImage::Format_RGB888);
}

void TestBrowserThumbnails::transparentPartsTurnWhite()
{
    TestDir dir;
    QImage clear(20, 10, QImage::Format_ARGB32);
    clear.fill(Qt::transparent);
    const QString path = dir.filePath("clear.png");
    QVERIFY(clear.save(path));
    ThumbnailOptions options;
    options.bits = 24;
    QCOMPARE(browserThumbnail(path, options).pixel(5, 5), qRgb(255, 255, 255));
    options.bits = 32;
    QCOMPARE(qAlpha(browserThumbnail(path, options).pixel(5, 5)), 0);
}

void TestBrowserThumbnails::picturesAmongFilesOfAFolder()
{
    const QStringList files = {"/a/x.JPG", "/a/song.mp3", "/a/one.msp", "/a/d.dic", "/a/t.txt", "/a/noext",
                               "/a/x.xwd", "/a/pic.png"};
    QCOMPARE(picturesAmong(files), (QStringList{"/a/x.JPG", "/a/one.msp", "/a/x.xwd", "/a/pic.png"}));
}

void TestBrowserThumbnails::emptyJobFinishes()
{
    QThreadPool pool;
    const auto job = browserJob({}, &pool);
    QSignalSpy finished(job.get(), &imaging::ThumbnailJob::finished);
    job->start();
    QVERIFY(finished.wait(5000));
    QVERIFY(job->isFinished());
    QCOMPARE(job->deliveredCount(), 0);
}

void TestBrowserThumbnails::modelKeepsToItsBudget()
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

// A listing as "a b* c": names in order, a star for a file written since.
static std::vector<PictureFile> listing(const QString &text)
{
    std::vector<PictureFile> files;
    for (const QString &word : text.split(QLatin1Char(' '), Qt::SkipEmptyParts)) {
        const bool written = word.endsWith(QLatin1Char('*'));
        const QString name = written ? word.chopped(1) : word;
        files.push_back({QStringLiteral("/p/") + name + QStringLiteral(".jpg"), 100, written ? 2000 : 1000});
    }
    return files;
}

void TestBrowserThumbnails::updateKeepsWhatWasMade_data()
{
    QTest::addColumn<QString>("before");
    QTest::addColumn<QString>("after");
    QTest::addColumn<QString>("toMake"); // the files whose thumbnail is made anew
    QTest::addColumn<bool>("reset");
    QTest::newRow("nothing changed") << "a b c" << "a b c" << "" << false;
    QTest::newRow("added in the middle and at both ends") << "b d" << "a b c d e" << "a c e" << false;
    QTest::newRow("removed at both ends and inside") << "a b c d e" << "b d" << "" << false;
    QTest::newRow("written over") << "a b c" << "a b* c" << "b" << false;
    QTest::newRow("added, removed and written at once") << "a c e g" << "b c* d g h" << "b c d h" << false;
    QTest::newRow("all gone, others come") << "a b" << "x y" << "x y" << false;
    QTest::newRow("another order keeps the thumbnails") << "a b c" << "c b* a d" << "b d" << true;
}

void TestBrowserThumbnails::updateKeepsWhatWasMade()
{
    QFETCH(QString, before);
    QFETCH(QString, after);
    QFETCH(QString, toMake);
    QFETCH(bool, reset);
    ThumbnailModel model;
    model.setFiles(listing(before));
    QHash<QString, qint64> made; // path -> the image's cache key
    for (int row = 0; row < model.rowCount(); ++row) {
        const QImage image = dummy({}, {});
        model.setThumbnail(row, image);
        made.insert(model.files().at(row), image.cacheKey());
    }
    QSignalSpy resets(&model, &QAbstractItemModel::modelReset);
    // Fails the test on any insert or remove that breaks the model's rules.
    QAbstractItemModelTester checker(&model, QAbstractItemModelTester::FailureReportingMode::QtTest);

    const std::vector<PictureFile> files = listing(after);
    const QList<int> rows = model.updateFiles(files);

    QStringList paths;
    for (const PictureFile &file : files)
        paths << file.path;
    QCOMPARE(model.files(), paths);
    QStringList remade;
    for (int row : rows)
        remade << QFileInfo(model.files().at(row)).baseName();
    QCOMPARE(remade.join(QLatin1Char(' ')), toMake);
    QCOMPARE(resets.count(), reset ? 1 : 0);
    // Every other row still has the very thumbnail it had.
    for (int row = 0; row < model.rowCount(); ++row) {
        const QString path = model.files().at(row);
        QCOMPARE(model.rowOf(path), row);
        if (rows.contains(row)) {
            QVERIFY(!model.isReady(row));
            continue;
        }
        QVERIFY2(model.isReady(row), qPrintable(path));
        QCOMPARE(model.data(model.index(row), Qt::DecorationRole).value<QImage>().cacheKey(), made.value(path));
    }
    QCOMPARE(model.readyCount(), model.rowCount() - rows.size());
    QCOMPARE(model.imageBytes(), model.readyCount() * dummy({}, {}).sizeInBytes());
}

QTEST_GUILESS_MAIN(TestBrowserThumbnails)
#include "tst_browserthumbnails.moc"
