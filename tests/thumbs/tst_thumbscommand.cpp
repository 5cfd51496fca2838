#include "TestDir.h"
#include "ThumbTestPictures.h"

#include "core/platform/imaging/ThumbnailCache.h"

#include <QDir>
#include <QFile>
#include <QImage>
#include <QImageReader>
#include <QProcess>
#include <QTest>

#include <memory>

// tarnby-cli thumbs, run as a separate process.
class TestThumbsCommand : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void thumbnailsAndFailures();
    void secondRunServedFromCache();
    void sizeBetweenCacheSizes();
    void badArguments_data();
    void badArguments();

private:
    struct Run {
        int status = -1;
        QString out;
        QString err;
    };
    Run run(const QStringList &args);
    QStringList outputNames() const;

    std::unique_ptr<TestDir> m_cacheHome;
    std::unique_ptr<TestDir> m_in;
    std::unique_ptr<TestDir> m_out;
};

void TestThumbsCommand::init()
{
    m_cacheHome = std::make_unique<TestDir>();
    m_in = std::make_unique<TestDir>();
    m_out = std::make_unique<TestDir>();
}

void TestThumbsCommand::cleanup()
{
    m_out.reset();
    m_in.reset();
    m_cacheHome.reset();
}

TestThumbsCommand::Run TestThumbsCommand::run(const QStringList &args)
{
    Run result;
    const QString binary = qEnvironmentVariable("TARNBY_BINARY_DIR") + QStringLiteral("/src/cli/tarnby-cli");
    if (!QFileInfo::exists(binary)) {
        result.err = QStringLiteral("no tarnby-cli at ") + binary;
        return result;
    }
    QProcess process;
    QProcessEnvironment env = QProcessEnvironment::systemEnvironment();
    env.insert(QStringLiteral("XDG_CACHE_HOME"), m_cacheHome->path());
    process.setProcessEnvironment(env);
    process.start(binary, QStringList{QStringLiteral("thumbs")} + args);
    if (!process.waitForFinished(120000))
        return result;
    result.status = process.exitStatus() == QProcess::NormalExit ? process.exitCode() : -1;
    result.out = QString::fromUtf8(process.readAllStandardOutput());
    result.err = QString::fromUtf8(process.readAllStandardError());
    return result;
}

QStringList TestThumbsCommand::outputNames() const
{
    return QDir(m_out->path()).entryList(QDir::Files | QDir::Hidden, QDir::Name);
}

void TestThumbsCommand::thumbnailsAndFailures()
{
    QVERIFY(thumbtest::save(thumbtest::quadrants(1600, 1200), m_in->filePath("photo.jpg"), "JPEG"));
    QVERIFY(thumbtest::save(thumbtest::quadrants(300, 600), m_in->filePath(QStringLiteral("Übersicht 2.png")), "PNG"));
    QVERIFY(thumbtest::save(thumbtest::quadrants(100, 50), m_in->filePath("small.bmp"), "BMP"));
    m_in->createFile("broken.jpg", "not a picture");
    m_in->createFile("notes.txt", "text is not a picture");
    m_in->createFolder("sub.jpg");

    const Run r = run({m_in->path(), m_out->path(), "--size", "256"});
    QCOMPARE(r.status, 1);
    QVERIFY2(r.err.contains("broken.jpg: "), qPrintable(r.err));
    QVERIFY(!r.err.contains("photo.jpg"));
    QVERIFY(!r.err.contains('\r')); // no progress line when stderr is not a terminal
    QCOMPARE(outputNames(), (QStringList{"photo.jpg.png", "small.bmp.png", QStringLiteral("Übersicht 2.png.png")}));

    QCOMPARE(QImage(m_out->filePath("photo.jpg.png")).size(), QSize(256, 192));
    QCOMPARE(QImage(m_out->filePath(QStringLiteral("Übersicht 2.png.png"))).size(), QSize(128, 256));
    QCOMPARE(QImage(m_out->filePath("small.bmp.png")).size(), QSize(100, 50));
}

void TestThumbsCommand::secondRunServedFromCache()
{
    for (int i = 0; i < 6; ++i)
        QVERIFY(thumbtest::save(thumbtest::quadrants(800 + i, 600), m_in->filePath(QStringLiteral("p%1.jpg").arg(i)), "JPEG"));
    const Run first = run({m_in->path(), m_out->path(), "--size", "128"});
    QCOMPARE(first.status, 0);
    QVERIFY2(first.err.isEmpty(), qPrintable(first.err));
    const QString normal = m_cacheHome->path() + "/thumbnails/normal";
    QCOMPARE(QDir(normal).entryList(QDir::Files).size(), 6);

    // Repaint one cache entry yellow, keeping its keys: the second run must
    // copy the entries, not make the thumbnails again.
    const QString entry = normal + "/" + QDir(normal).entryList(QDir::Files).constFirst();
    QFile entryFile(entry);
    QVERIFY(entryFile.open(QIODevice::ReadOnly));
    const QMap<QByteArray, QByteArray> keys = tarnby::imaging::readPngText(entryFile.readAll());
    entryFile.close();
    QList<QPair<QByteArray, QByteArray>> text;
    for (auto it = keys.begin(); it != keys.end(); ++it)
        text.append({it.key(), it.value()});
    QImage yellow(128, 96, QImage::Format_RGB32);
    yellow.fill(Qt::yellow);
    QVERIFY(tarnby::imaging::writeFileAtomically(entry, tarnby::imaging::encodeThumbnailPng(yellow, text), 0600));
    const QString repainted = QFileInfo(keys.value("Thumb::URI").mid(7)).fileName() + ".png";

    QHash<QString, QByteArray> firstOutputs;
    for (const QString &name : outputNames()) {
        QFile f(m_out->filePath(name));
        QVERIFY(f.open(QIODevice::ReadOnly));
        firstOutputs.insert(name, f.readAll());
        QVERIFY(QFile::remove(m_out->filePath(name)));
    }
    QCOMPARE(firstOutputs.size(), 6);
    const Run second = run({m_in->path(), m_out->path(), "--size", "128"});
    QCOMPARE(second.status, 0);
    QStringList firstNames = firstOutputs.keys();
    firstNames.sort();
    QCOMPARE(outputNames(), firstNames);
    QVERIFY(firstNames.contains(repainted));
    for (const QString &name : outputNames()) {
        const QImage image(m_out->filePath(name));
        QCOMPARE(image.text("Thumb::MTime").isEmpty(), false);
        if (name == repainted) {
            QCOMPARE(image.pixel(5, 5), qRgb(255, 255, 0));
        } else {
            QFile f(m_out->filePath(name));
            QVERIFY(f.open(QIODevice::ReadOnly));
            QCOMPARE(f.readAll(), firstOutputs.value(name));
        }
    }

    // --no-cache writes plain PNGs and leaves the cache alone.
    const TestDir plain;
    const Run third = run({m_in->path(), plain.path(), "--size", "128", "--no-cache"});
    QCOMPARE(third.status, 0);
    QCOMPARE(QImage(plain.filePath("p0.jpg.png")).text("Thumb::MTime"), QString());
    QCOMPARE(QImage(plain.filePath("p0.jpg.png")).size(), QSize(128, 96));
}

void TestThumbsCommand::sizeBetweenCacheSizes()
{
    QVERIFY(thumbtest::save(thumbtest::quadrants(1000, 500), m_in->filePath("wide.jpg"), "JPEG"));
    for (int pass = 0; pass < 2; ++pass) {
        const Run r = run({m_in->path(), m_out->path(), "--size", "300"});
        QCOMPARE(r.status, 0);
        QCOMPARE(QImage(m_out->filePath("wide.jpg.png")).size(), QSize(300, 150));
    }
    QCOMPARE(QDir(m_cacheHome->path() + "/thumbnails/x-large").entryList(QDir::Files).size(), 1);
}

void TestThumbsCommand::badArguments_data()
{
    QTest::addColumn<QStringList>("args");
    QTest::newRow("no OUTDIR") << QStringList{"IN"};
    QTest::newRow("size zero") << QStringList{"IN", "OUT", "--size", "0"};
    QTest::newRow("size not a number") << QStringList{"IN", "OUT", "--size", "big"};
    QTest::newRow("size without a value") << QStringList{"IN", "OUT", "--size"};
    QTest::newRow("unknown option") << QStringList{"IN", "OUT", "--fast"};
    QTest::newRow("DIR missing") << QStringList{"IN/nowhere", "OUT"};
}

void TestThumbsCommand::badArguments()
{
    QFETCH(QStringList, args);
    for (QString &a : args) {
        a.replace("IN", m_in->path());
        a.replace("OUT", m_out->path());
    }
    const Run r = run(args);
    QCOMPARE(r.status, 2);
    QVERIFY(!r.err.isEmpty());
    QVERIFY(outputNames().isEmpty());
}

QTEST_GUILESS_MAIN(TestThumbsCommand)
#include "tst_thumbscommand.moc"
