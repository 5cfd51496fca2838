#include "Fixtures.h"
#include "TestDir.h"
#include "ThumbTestPictures.h"

#include "core/platform/imaging/ThumbnailCache.h"
#include "core/platform/imaging/Thumbnails.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QImageReader>
#include <QTransform>
#include <QTest>
#include <QtConcurrent>

#include <atomic>
#include <memory>
#include <numeric>
#include <sys/stat.h>

using namespace tarnby::imaging;

class TestThumbnails : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void fileUri_data();
    void fileUri();
    void entryNameOfKnownUri();
    void entryNamedAfterUriOnDisk_data();
    void entryNamedAfterUriOnDisk();
    void flavorSize_data();
    void flavorSize();

    void entryCarriesKeysAndPermissions();
    void staleAfterModification();
    void smallerSizeScaledFromCachedFlavor();
    void encodedOnlyGivesTheEntryBytes();
    void unreadablePicturesFail_data();
    void unreadablePicturesFail();
    void failureForgottenWhenFileChanges();
    void filesInsideCacheAreNotCached();
    void corruptEntryIsMadeAgain();

    void renderMatchesFullDecode_data();
    void renderMatchesFullDecode();
    void fixturesMatchQtReader_data();
    void fixturesMatchQtReader();
    void neverLargerThanPicture();
    void exifThumbnailAndOrientation_data();
    void exifThumbnailAndOrientation();
    void progressiveMatchesBaseline_data();
    void progressiveMatchesBaseline();
    void truncatedProgressive_data();
    void truncatedProgressive();

    void concurrentWritersNeverExposeHalfAFile();
    void manyThreadsOnOneFile();

private:
    QString cacheRoot() const { return m_cacheHome->path() + QStringLiteral("/thumbnails"); }
    QString makeJpeg(const QString &name, int width, int height);

    std::unique_ptr<TestDir> m_cacheHome;
    std::unique_ptr<TestDir> m_files;
};

void TestThumbnails::init()
{
    m_cacheHome = std::make_unique<TestDir>();
    m_files = std::make_unique<TestDir>();
    qputenv("XDG_CACHE_HOME", QFile::encodeName(m_cacheHome->path()));
}

void TestThumbnails::cleanup()
{
    qunsetenv("XDG_CACHE_HOME");
    m_files.reset();
    m_cacheHome.reset();
}

QString TestThumbnails::makeJpeg(const QString &name, int width, int height)
{
    const QString path = m_files->filePath(name);
    QDir().mkpath(QFileInfo(path).absolutePath());
    if (!thumbtest::save(thumbtest::quadrants(width, height), path, "JPEG"))
        return {};
    return path;
}

void TestThumbnails::fileUri_data()
{
    QTest::addColumn<QString>("path");
    QTest::addColumn<QByteArray>("uri");
    QTest::newRow("plain") << "/home/jens/photos/me.png" << QByteArray("file:///home/jens/photos/me.png");
    QTest::newRow("space") << "/tmp/my photos/a b.jpg" << QByteArray("file:///tmp/my%20photos/a%20b.jpg");
    QTest::newRow("non-ASCII") << QStringLiteral("/tmp/Fotos/Übersee_ä.jpg")
                               << QByteArray("file:///tmp/Fotos/%C3%9Cbersee_%C3%A4.jpg");
    QTest::newRow("percent, hash, question mark") << "/tmp/100%#1?.png" << QByteArray("file:///tmp/100%25%231%3F.png");
    QTest::newRow("punctuation kept bare") << "/tmp/a-b_c.d~e!$&'()*+,=:@.png"
                                           << QByteArray("file:///tmp/a-b_c.d~e!$&'()*+,=:@.png");
    QTest::newRow("brackets and semicolon escaped") << "/tmp/[x];{y}.png"
                                                    << QByteArray("file:///tmp/%5Bx%5D%3B%7By%7D.png");
}

void TestThumbnails::fileUri()
{
    QFETCH(QString, path);
    QFETCH(QByteArray, uri);
    QCOMPARE(ThumbnailCache::fileUri(path), uri);
}

void TestThumbnails::entryNameOfKnownUri()
{
    // The worked example that desktop programs agree on.
    QCOMPARE(ThumbnailCache::entryName("file:///home/jens/photos/me.png"),
             QStringLiteral("c6ee772d9e49320e97ec29a7eb5b1697.png"));
}

void TestThumbnails::entryNamedAfterUriOnDisk_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<QByteArray>("encoded");
    QTest::newRow("space in folder and name") << "my photos/a b.jpg" << QByteArray("my%20photos/a%20b.jpg");
    QTest::newRow("non-ASCII name") << QStringLiteral("Fotos/Straße ä.jpg")
                                    << QByteArray("Fotos/Stra%C3%9Fe%20%C3%A4.jpg");
}

void TestThumbnails::entryNamedAfterUriOnDisk()
{
    QFETCH(QString, relative);
    QFETCH(QByteArray, encoded);
    const QString path = makeJpeg(relative, 300, 200);
    QVERIFY(!path.isEmpty());
    QVERIFY(makeThumbnail(path, 256).ok());

    // The temporary folder's own path is plain ASCII, so only the tail needs
    // encoding, and it is written out by hand above.
    const QByteArray uri = "file://" + QFile::encodeName(m_files->path()) + '/' + encoded;
    const QString name = QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex()) + ".png";
    QCOMPARE(QDir(cacheRoot() + "/large").entryList(QDir::Files), QStringList{name});
}

void TestThumbnails::flavorSize_data()
{
    QTest::addColumn<int>("size");
    QTest::addColumn<int>("flavor");
    QTest::addColumn<QString>("folder");
    QTest::newRow("tiny") << 16 << 128 << "normal";
    QTest::newRow("exactly normal") << 128 << 128 << "normal";
    QTest::newRow("one past normal") << 129 << 256 << "large";
    QTest::newRow("x-large") << 400 << 512 << "x-large";
    QTest::newRow("exactly xx-large") << 1024 << 1024 << "xx-large";
    QTest::newRow("beyond every folder") << 1025 << 0 << "";
}

void TestThumbnails::flavorSize()
{
    QFETCH(int, size);
    QFETCH(int, flavor);
    QFETCH(QString, folder);
    QCOMPARE(ThumbnailCache::flavorSize(size), flavor);
    QCOMPARE(ThumbnailCache::flavorFolderName(flavor), folder);
}

void TestThumbnails::entryCarriesKeysAndPermissions()
{
    const QString path = makeJpeg("photo.jpg", 1200, 900);
    QVERIFY(thumbtest::setModified(path, 1600000000));
    const ThumbnailResult result = makeThumbnail(path, 256);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QVERIFY(!result.fromCache);
    QCOMPARE(result.image.size(), QSize(256, 192));
    QCOMPARE(result.originalSize, QSize(1200, 900));

    const ThumbnailCache cache;
    const ThumbnailSource source = ThumbnailSource::fromPath(path);
    const QString entry = cache.entryPath(source, 256);
    // Read back through Qt's own PNG reader, not our chunk walker. (The
    // image's text, since QImageReader::text() splits keys at the first ':'.)
    const QImage stored(entry);
    QCOMPARE(stored.size(), QSize(256, 192));
    QCOMPARE(stored.text("Thumb::URI"), QString::fromLatin1(ThumbnailCache::fileUri(path)));
    QCOMPARE(stored.text("Thumb::MTime"), QStringLiteral("1600000000"));
    QCOMPARE(stored.text("Thumb::Size"), QString::number(QFileInfo(path).size()));
    QCOMPARE(stored.text("Thumb::Image::Width"), QStringLiteral("1200"));
    QCOMPARE(stored.text("Thumb::Image::Height"), QStringLiteral("900"));

    struct stat st;
    QCOMPARE(::stat(QFile::encodeName(entry).constData(), &st), 0);
    QCOMPARE(int(st.st_mode & 0777), 0600);
    QCOMPARE(::stat(QFile::encodeName(cacheRoot() + "/large").constData(), &st), 0);
    QCOMPARE(int(st.st_mode & 0777), 0700);
    QCOMPARE(::stat(QFile::encodeName(cacheRoot()).constData(), &st), 0);
    QCOMPARE(int(st.st_mode & 0777), 0700);

    const ThumbnailResult again = makeThumbnail(path, 256);
    QVERIFY(again.fromCache);
    QCOMPARE(again.originalSize, QSize(1200, 900));
    QCOMPARE(again.image.size(), QSize(256, 192));
}

void TestThumbnails::staleAfterModification()
{
    const QString path = m_files->filePath("swap.png");
    QImage red(400, 300, QImage::Format_RGB32);
    red.fill(Qt::red);
    QImage blue = red;
    blue.fill(Qt::blue);

    QVERIFY(thumbtest::save(red, path, "PNG"));
    QVERIFY(thumbtest::setModified(path, 1500000000));
    QCOMPARE(makeThumbnail(path, 128).image.pixel(10, 10), qRgb(255, 0, 0));

    // Same size and same time: the cache cannot tell, and answers red.
    QVERIFY(thumbtest::save(blue, path, "PNG"));
    QVERIFY(thumbtest::setModified(path, 1500000000));
    ThumbnailResult result = makeThumbnail(path, 128);
    QVERIFY(result.fromCache);
    QCOMPARE(result.image.pixel(10, 10), qRgb(255, 0, 0));
    const ThumbnailSource source = ThumbnailSource::fromPath(path);
    QCOMPARE(ThumbnailCache().lookup(source, 128).status, ThumbnailCache::Entry::Fresh);

    // A new time makes the entry stale; it is made again from the blue file.
    QVERIFY(thumbtest::setModified(path, 1500000001));
    QCOMPARE(ThumbnailCache().lookup(ThumbnailSource::fromPath(path), 128).status, ThumbnailCache::Entry::Stale);
    result = makeThumbnail(path, 128);
    QVERIFY(!result.fromCache);
    QCOMPARE(result.image.pixel(10, 10), qRgb(0, 0, 255));
    QCOMPARE(QImage(ThumbnailCache().entryPath(source, 128)).text("Thumb::MTime"), QStringLiteral("1500000001"));
}

void TestThumbnails::smallerSizeScaledFromCachedFlavor()
{
    const QString path = makeJpeg("photo.jpg", 1600, 1200);
    const ThumbnailResult first = makeThumbnail(path, 100);
    QVERIFY(first.ok());
    QCOMPARE(first.image.size(), QSize(100, 75));
    QVERIFY(first.encoded.isEmpty()); // 100 is not the entry's own size
    // The entry holds the folder's full size.
    QCOMPARE(QImage(ThumbnailCache().entryPath(ThumbnailSource::fromPath(path), 128)).size(), QSize(128, 96));
    const ThumbnailResult second = makeThumbnail(path, 100);
    QVERIFY(second.fromCache);
    QCOMPARE(second.image.size(), QSize(100, 75));
    QVERIFY(thumbtest::meanDifference(first.image, second.image) < 2.0);
}

void TestThumbnails::encodedOnlyGivesTheEntryBytes()
{
    const QString path = makeJpeg("photo.jpg", 800, 600);
    const ThumbnailResult made = makeThumbnail(path, 256, ThumbnailOption::EncodedOnly);
    QVERIFY(!made.image.isNull()); // it had to be made, so the image is there
    QFile entry(ThumbnailCache().entryPath(ThumbnailSource::fromPath(path), 256));
    QVERIFY(entry.open(QIODevice::ReadOnly));
    const QByteArray bytes = entry.readAll();
    QCOMPARE(made.encoded, bytes);

    const ThumbnailResult cached = makeThumbnail(path, 256, ThumbnailOption::EncodedOnly);
    QVERIFY(cached.ok());
    QVERIFY(cached.fromCache);
    QVERIFY(cached.image.isNull());
    QCOMPARE(cached.encoded, bytes);
}

void TestThumbnails::unreadablePicturesFail_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QByteArray>("content");

    QImage photo = thumbtest::quadrants(640, 480);
    QByteArray jpeg;
    {
        QBuffer buffer(&jpeg);
        buffer.open(QIODevice::WriteOnly);
        photo.save(&buffer, "JPEG", 90);
    }
    QTest::newRow("text named .jpg") << "notes.jpg" << QByteArray("this is not a picture\n");
    QTest::newRow("JPEG cut in half") << "half.jpg" << jpeg.left(jpeg.size() / 2);
    QTest::newRow("JPEG header only") << "header.jpg" << jpeg.left(200);
    QTest::newRow("empty file") << "empty.png" << QByteArray();

    // A BMP header that claims 30000 x 30000 pixels: refused before any
    // allocation, not decoded.
    QByteArray bmp(54, '\0');
    bmp[0] = 'B';
    bmp[1] = 'M';
    const auto put32 = [&bmp](int at, quint32 v) {
        for (int i = 0; i < 4; ++i)
            bmp[at + i] = char((v >> (8 * i)) & 0xFF);
    };
    put32(2, 54);
    put32(10, 54);
    put32(14, 40);
    put32(18, 30000);
    put32(22, 30000);
    bmp[26] = 1;
    bmp[28] = 24;
    QTest::newRow("BMP claiming 900 megapixels") << "huge.bmp" << bmp;

    // A progressive JPEG is held whole as coefficients even when only an
    // eighth of it is shown: one claiming 60000 x 60000 pixels is refused
    // although its eighth would be allowed.
    QByteArray progressive = thumbtest::encodeProgressive(thumbtest::quadrants(64, 48));
    const qsizetype frame = progressive.indexOf("\xFF\xC2");
    if (frame > 0) {
        progressive[frame + 5] = progressive[frame + 7] = char(60000 >> 8);
        progressive[frame + 6] = progressive[frame + 8] = char(60000 & 0xFF);
    }
    QTest::newRow("progressive JPEG claiming 3600 megapixels") << "huge.jpg" << progressive;
}

void TestThumbnails::unreadablePicturesFail()
{
    QFETCH(QString, name);
    QFETCH(QByteArray, content);
    const QString path = m_files->createFile(name, content);

    const ThumbnailResult result = makeThumbnail(path, 128);
    QVERIFY(result.image.isNull());
    QVERIFY(!result.errorString.isEmpty());
    QVERIFY(!result.fromCache);
    QString error;
    QVERIFY(thumbnail(path, 128, &error).isNull());
    QCOMPARE(error, result.errorString);

    const ThumbnailSource source = ThumbnailSource::fromPath(path);
    const ThumbnailCache cache;
    QVERIFY(QFileInfo::exists(cache.failPath(source)));
    QVERIFY(cache.failPath(source).contains("/fail/" + ThumbnailCache::failFolderName() + "/"));
    QVERIFY(!QFileInfo::exists(cache.entryPath(source, 128)));
    const ThumbnailCache::Entry entry = cache.lookup(source, 128);
    QCOMPARE(entry.status, ThumbnailCache::Entry::Failed);
    QCOMPARE(entry.errorString, result.errorString);

    // The second request is answered from the failure record.
    const ThumbnailResult again = makeThumbnail(path, 128);
    QVERIFY(again.fromCache);
    QCOMPARE(again.errorString, result.errorString);
}

void TestThumbnails::failureForgottenWhenFileChanges()
{
    const QString path = m_files->createFile("later.jpg", "not yet a picture");
    QVERIFY(thumbtest::setModified(path, 1400000000));
    QVERIFY(!makeThumbnail(path, 128).ok());

    QVERIFY(thumbtest::save(thumbtest::quadrants(200, 100), path, "JPEG"));
    QVERIFY(thumbtest::setModified(path, 1400000100));
    const ThumbnailResult result = makeThumbnail(path, 128);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QVERIFY(!result.fromCache);
    QCOMPARE(result.image.size(), QSize(128, 64));
}

void TestThumbnails::filesInsideCacheAreNotCached()
{
    const QString path = cacheRoot() + "/pictures/inside.jpg";
    QVERIFY(QDir().mkpath(QFileInfo(path).absolutePath()));
    QVERIFY(thumbtest::save(thumbtest::quadrants(300, 300), path, "JPEG"));
    const ThumbnailResult result = makeThumbnail(path, 128);
    QVERIFY(result.ok());
    QVERIFY(!QFileInfo::exists(cacheRoot() + "/normal"));
    QVERIFY(!ThumbnailCache().accepts(ThumbnailSource::fromPath(path)));

    // Nor are failures of such files recorded.
    const QString broken = cacheRoot() + "/pictures/broken.png";
    QFile(broken).open(QIODevice::WriteOnly);
    QVERIFY(!makeThumbnail(broken, 128).ok());
    QVERIFY(!QFileInfo::exists(cacheRoot() + "/fail"));
}

void TestThumbnails::corruptEntryIsMadeAgain()
{
    const QString path = makeJpeg("photo.jpg", 640, 480);
    QVERIFY(makeThumbnail(path, 256).ok());
    const QString entryPath = ThumbnailCache().entryPath(ThumbnailSource::fromPath(path), 256);
    QFile entry(entryPath);
    QVERIFY(entry.open(QIODevice::ReadWrite));
    const QByteArray bytes = entry.readAll();
    // Keep the text chunks (so it looks fresh) but cut the pixels short.
    entry.resize(bytes.indexOf("IDAT") + 20);
    entry.close();

    const ThumbnailResult result = makeThumbnail(path, 256);
    QVERIFY(result.ok());
    QVERIFY(!result.fromCache);
    QCOMPARE(result.image.size(), QSize(256, 192));
    QVERIFY(!QImage(entryPath).isNull());
}

void TestThumbnails::renderMatchesFullDecode_data()
{
    QTest::addColumn<QString>("name");
    QTest::addColumn<QImage>("picture");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<int>("size");
    QTest::addColumn<QSize>("expected");

    const QImage photo = thumbtest::quadrants(2400, 1800);
    // 1/8 scale inside libjpeg, then a smooth scale.
    QTest::newRow("JPEG shrunk by 8") << "big.jpg" << photo << QByteArray("JPEG") << 256 << QSize(256, 192);
    // 600 pixels needs 2/8 of the picture, not the coarser 1/8.
    QTest::newRow("JPEG at a finer DCT scale") << "mid.jpg" << photo << QByteArray("JPEG") << 600 << QSize(600, 450);
    QTest::newRow("JPEG portrait") << "tall.jpg" << thumbtest::quadrants(900, 1600) << QByteArray("JPEG") << 128
                                   << QSize(72, 128);
    QTest::newRow("JPEG grey") << "grey.jpg" << photo.convertToFormat(QImage::Format_Grayscale8)
                               << QByteArray("JPEG") << 256 << QSize(256, 192);
    QTest::newRow("JPEG under a .png name") << "disguised.png" << photo << QByteArray("JPEG") << 256
                                            << QSize(256, 192);
    QImage withAlpha = photo.convertToFormat(QImage::Format_ARGB32);
    for (int y = 0; y < withAlpha.height(); y += 1)
        for (int x = 0; x < withAlpha.width() / 3; ++x)
            withAlpha.setPixel(x, y, qRgba(0, 0, 0, 0));
    QTest::newRow("PNG with transparency") << "alpha.png" << withAlpha << QByteArray("PNG") << 256 << QSize(256, 192);
    QTest::newRow("BMP beyond the cache sizes") << "big.bmp" << photo << QByteArray("BMP") << 1200
                                                << QSize(1200, 900);
}

void TestThumbnails::renderMatchesFullDecode()
{
    QFETCH(QString, name);
    QFETCH(QImage, picture);
    QFETCH(QByteArray, format);
    QFETCH(int, size);
    QFETCH(QSize, expected);
    const QString path = m_files->filePath(name);
    QVERIFY(thumbtest::save(picture, path, format.constData()));

    const ThumbnailResult result = renderThumbnail(path, size);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.image.size(), expected);
    QCOMPARE(result.originalSize, picture.size());

    QImageReader reader(path);
    reader.setDecideFormatFromContent(true);
    const QImage reference = reader.read().scaled(expected, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    const double difference = thumbtest::meanDifference(result.image, reference);
    QVERIFY2(difference < 4.0, qPrintable(QString::number(difference)));
}

void TestThumbnails::fixturesMatchQtReader_data()
{
    QTest::addColumn<QString>("relative");
    QTest::addColumn<int>("size");
    QTest::newRow("EXIF orientation 6") << "JPG/hopper_orientation_6.jpg" << 96;
    QTest::newRow("camera JPEG with EXIF") << "JPG/testJPEG_EXIF.jpg" << 64;
    QTest::newRow("grey JPEG") << "JPG/hopper_gray.jpg" << 64;
    QTest::newRow("LZW TIFF") << "TIF/hopper_lzw.tif" << 64;
    QTest::newRow("palette BMP") << "BMP/pal8.bmp" << 64;
}

void TestThumbnails::fixturesMatchQtReader()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, relative);
    QFETCH(int, size);
    const QString path = fixtures::path(relative);
    if (!QFileInfo::exists(path))
        QSKIP("sample missing");
    const ThumbnailResult result = renderThumbnail(path, size);
    QVERIFY2(result.ok(), qPrintable(result.errorString));

    QImageReader reader(path);
    reader.setAutoTransform(true);
    const QImage full = reader.read();
    QVERIFY(!full.isNull());
    QCOMPARE(result.originalSize, full.size());
    const QImage reference = full.scaled(result.image.size(), Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
    QCOMPARE(result.image.size(), full.size().scaled(size, size, Qt::KeepAspectRatio).boundedTo(full.size()));
    const double difference = thumbtest::meanDifference(result.image, reference);
    QVERIFY2(difference < 6.0, qPrintable(QString::number(difference)));
}

void TestThumbnails::neverLargerThanPicture()
{
    const QString path = makeJpeg("small.jpg", 50, 30);
    const ThumbnailResult result = makeThumbnail(path, 256);
    QVERIFY(result.ok());
    QCOMPARE(result.image.size(), QSize(50, 30));
    // The entry is the thumbnail for any size the picture fits in.
    const ThumbnailResult smaller = makeThumbnail(path, 200, ThumbnailOption::EncodedOnly);
    QVERIFY(smaller.fromCache);
    QVERIFY(!smaller.encoded.isEmpty());
}

void TestThumbnails::exifThumbnailAndOrientation_data()
{
    QTest::addColumn<QSize>("pictureSize");
    QTest::addColumn<QSize>("embeddedSize"); // empty: no embedded thumbnail
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("box");
    QTest::addColumn<QSize>("expected");
    QTest::addColumn<QColor>("topLeft");

    // The embedded thumbnail is plain magenta, unlike the picture, so the
    // colour tells which one was used.
    const QColor magenta(255, 0, 255), red(220, 20, 20), blue(20, 20, 210), white(235, 235, 235);
    QTest::newRow("embedded thumbnail covers the box") << QSize(1600, 1200) << QSize(160, 120) << 1 << 128
                                                       << QSize(128, 96) << magenta;
    QTest::newRow("embedded thumbnail too small") << QSize(1600, 1200) << QSize(160, 120) << 1 << 256
                                                  << QSize(256, 192) << red;
    QTest::newRow("embedded thumbnail padded to 4:3") << QSize(1600, 900) << QSize(160, 120) << 1 << 128
                                                      << QSize(128, 72) << red;
    QTest::newRow("orientation 6 with embedded thumbnail") << QSize(1600, 1200) << QSize(160, 120) << 6 << 128
                                                           << QSize(96, 128) << magenta;
    QTest::newRow("orientation 6 turns a quarter clockwise") << QSize(1600, 1200) << QSize() << 6 << 256
                                                             << QSize(192, 256) << blue;
    QTest::newRow("orientation 3 turns a half") << QSize(1600, 1200) << QSize() << 3 << 256 << QSize(256, 192)
                                                << white;
    QTest::newRow("orientation 8 turns a quarter back") << QSize(1600, 1200) << QSize() << 8 << 256
                                                        << QSize(192, 256) << QColor(20, 200, 20);
}

void TestThumbnails::exifThumbnailAndOrientation()
{
    QFETCH(QSize, pictureSize);
    QFETCH(QSize, embeddedSize);
    QFETCH(int, orientation);
    QFETCH(int, box);
    QFETCH(QSize, expected);
    QFETCH(QColor, topLeft);
    QByteArray embedded;
    if (!embeddedSize.isEmpty()) {
        QImage small(embeddedSize, QImage::Format_RGB32);
        small.fill(QColor(255, 0, 255));
        embedded = thumbtest::encode(small, "JPEG");
    }
    const QString path = m_files->createFile(
        "camera.jpg", thumbtest::jpegWithExif(thumbtest::quadrants(pictureSize.width(), pictureSize.height()),
                                              orientation, embedded));
    const ThumbnailResult result = renderThumbnail(path, box);
    QVERIFY2(result.ok(), qPrintable(result.errorString));
    QCOMPARE(result.image.size(), expected);
    QCOMPARE(result.originalSize, orientation >= 5 ? pictureSize.transposed() : pictureSize);
    const QColor seen = result.image.pixelColor(4, 4);
    QVERIFY2(qAbs(seen.red() - topLeft.red()) < 40 && qAbs(seen.green() - topLeft.green()) < 40
                 && qAbs(seen.blue() - topLeft.blue()) < 40,
             qPrintable(seen.name()));
}

// The picture as a thumbnail should show it: turned by its orientation and
// scaled smoothly to size.
static QImage expectedThumbnail(const QImage &picture, int orientation, QSize size)
{
    QTransform turn;
    if (orientation == 3)
        turn.rotate(180);
    else if (orientation == 6)
        turn.rotate(90);
    else if (orientation == 8)
        turn.rotate(270);
    return picture.transformed(turn).scaled(size, Qt::IgnoreAspectRatio, Qt::SmoothTransformation);
}

void TestThumbnails::progressiveMatchesBaseline_data()
{
    QTest::addColumn<QSize>("pictureSize");
    QTest::addColumn<bool>("grey");
    QTest::addColumn<int>("orientation");
    QTest::addColumn<int>("box");
    QTest::addColumn<QSize>("expected");

    QTest::newRow("eighth scale, upright") << QSize(1280, 960) << false << 1 << 128 << QSize(128, 96);
    QTest::newRow("eighth scale, orientation 6") << QSize(1280, 960) << false << 6 << 128 << QSize(96, 128);
    QTest::newRow("eighth scale, orientation 3") << QSize(1280, 960) << false << 3 << 100 << QSize(100, 75);
    QTest::newRow("eighth scale, orientation 8") << QSize(1280, 960) << false << 8 << 128 << QSize(96, 128);
    QTest::newRow("eighth scale, grey") << QSize(1280, 960) << true << 1 << 128 << QSize(128, 96);
    QTest::newRow("eighth scale, odd size") << QSize(1283, 957) << false << 1 << 150 << QSize(150, 111);
    QTest::newRow("larger than an eighth: every scan") << QSize(640, 480) << false << 1 << 200 << QSize(200, 150);
}

void TestThumbnails::progressiveMatchesBaseline()
{
    QFETCH(QSize, pictureSize);
    QFETCH(bool, grey);
    QFETCH(int, orientation);
    QFETCH(int, box);
    QFETCH(QSize, expected);
    QImage picture = thumbtest::quadrants(pictureSize.width(), pictureSize.height());
    if (grey)
        picture = picture.convertToFormat(QImage::Format_Grayscale8);
    const QByteArray progressive = thumbtest::encodeProgressive(picture, 90);
    QVERIFY(progressive.contains("\xFF\xC2")); // start of a progressive frame
    const QString progressivePath = m_files->createFile("progressive.jpg", thumbtest::insertExif(progressive, orientation));
    const QString baselinePath
        = m_files->createFile("baseline.jpg", thumbtest::insertExif(thumbtest::encode(picture, "JPEG", 90), orientation));

    const ThumbnailResult fromProgressive = renderThumbnail(progressivePath, box);
    const ThumbnailResult fromBaseline = renderThumbnail(baselinePath, box);
    QVERIFY2(fromProgressive.ok(), qPrintable(fromProgressive.errorString));
    QVERIFY2(fromBaseline.ok(), qPrintable(fromBaseline.errorString));
    QCOMPARE(fromProgressive.image.size(), expected);
    QCOMPARE(fromProgressive.originalSize, orientation >= 5 ? pictureSize.transposed() : pictureSize);
    const double fromEachOther = thumbtest::meanDifference(fromProgressive.image, fromBaseline.image);
    QVERIFY2(fromEachOther < 2.5, qPrintable(QString::number(fromEachOther)));
    const double fromPicture = thumbtest::meanDifference(fromProgressive.image,
                                                         expectedThumbnail(picture, orientation, expected));
    QVERIFY2(fromPicture < 6, qPrintable(QString::number(fromPicture)));
}

void TestThumbnails::truncatedProgressive_data()
{
    QTest::addColumn<int>("cut"); // in thousandths of the way through the part named by the row
    QTest::addColumn<int>("box");
    QTest::addColumn<bool>("thumbnail");

    // For a thumbnail of at most an eighth of the picture the first scan is
    // all that is read, so a file cut after it still gives one.
    QTest::newRow("only the headers") << -1 << 100 << false;
    QTest::newRow("cut inside the first scan") << 500 << 100 << false;
    QTest::newRow("cut in the detail scans, eighth scale") << 1500 << 100 << true;
    QTest::newRow("cut in the detail scans, larger thumbnail") << 1500 << 300 << false;
    QTest::newRow("last bytes missing, eighth scale") << 1990 << 100 << true;
}

void TestThumbnails::truncatedProgressive()
{
    QFETCH(int, cut);
    QFETCH(int, box);
    QFETCH(bool, thumbnail);
    const QImage picture = thumbtest::quadrants(1280, 960);
    const QByteArray jpeg = thumbtest::encodeProgressive(picture, 90);
    const auto [scanStart, scanEnd] = thumbtest::firstScan(jpeg);
    QVERIFY(scanStart > 0 && scanEnd > scanStart);
    // -1: up to the first scan's data; 0-1000: into that scan; 1000-2000:
    // into the rest of the file.
    qsizetype at = scanStart;
    if (cut >= 0 && cut <= 1000)
        at = scanStart + (scanEnd - scanStart) * cut / 1000;
    else if (cut > 1000)
        at = scanEnd + (jpeg.size() - scanEnd) * (cut - 1000) / 1000;
    const QString path = m_files->createFile("cut.jpg", jpeg.left(at));

    const ThumbnailResult result = renderThumbnail(path, box);
    if (thumbnail) {
        QVERIFY2(result.ok(), qPrintable(result.errorString));
        const double difference = thumbtest::meanDifference(result.image,
                                                            expectedThumbnail(picture, 1, result.image.size()));
        QVERIFY2(difference < 6, qPrintable(QString::number(difference)));
    } else {
        QVERIFY(!result.ok());
        QVERIFY(result.image.isNull());
        QVERIFY(!result.errorString.isEmpty());
    }
}

void TestThumbnails::concurrentWritersNeverExposeHalfAFile()
{
    const QString path = makeJpeg("photo.jpg", 400, 300);
    const ThumbnailCache cache;
    const ThumbnailSource source = ThumbnailSource::fromPath(path);
    const QString entryPath = cache.entryPath(source, 512);
    QImage big = thumbtest::quadrants(512, 384);
    // Noise makes the PNG large enough for a torn write to be likely seen.
    for (int y = 0; y < big.height(); ++y)
        for (int x = 0; x < big.width(); ++x)
            big.setPixel(x, y, big.pixel(x, y) ^ ((x * 7919 + y * 104729) & 0x3F3F3F));

    QThreadPool pool; // two threads whatever the machine: the writer waits for the reader
    pool.setMaxThreadCount(2);
    std::atomic<bool> readerStarted{false};
    std::atomic<bool> writing{true};
    std::atomic<int> reads{0};
    std::atomic<int> torn{0};
    QFuture<void> writers = QtConcurrent::run(&pool, [&] {
        while (!readerStarted)
            QThread::yieldCurrentThread();
        // Rewrite the entry until the reader has seen it a good number of
        // times, however the two threads happen to be scheduled.
        for (int i = 0; i < 60 || (reads < 20 && i < 3000); ++i)
            cache.store(source, 512, big, QSize(400, 300));
        writing = false;
    });
    QFuture<void> reader = QtConcurrent::run(&pool, [&] {
        readerStarted = true;
        while (writing) {
            QFile file(entryPath);
            if (!file.open(QIODevice::ReadOnly))
                continue;
            const QByteArray bytes = file.readAll();
            ++reads;
            if (QImage::fromData(bytes, "PNG").size() != big.size() || readPngText(bytes).value("Thumb::MTime").isEmpty())
                ++torn;
        }
    });
    writers.waitForFinished();
    reader.waitForFinished();
    QVERIFY(reads > 0);
    QCOMPARE(torn.load(), 0);
    // Nothing but the entry itself is left in the folder.
    QCOMPARE(QDir(QFileInfo(entryPath).absolutePath()).entryList(QDir::Files | QDir::Hidden),
             QStringList{QFileInfo(entryPath).fileName()});
}

void TestThumbnails::manyThreadsOnOneFile()
{
    const QString path = makeJpeg("shared.jpg", 1600, 1200);
    QList<int> jobs(32);
    std::iota(jobs.begin(), jobs.end(), 0);
    QThreadPool pool;
    pool.setMaxThreadCount(8);
    const QList<ThumbnailResult> results =
        QtConcurrent::blockingMapped(&pool, jobs, [&path](int i) { return makeThumbnail(path, i % 2 ? 256 : 100); });
    for (int i = 0; i < results.size(); ++i) {
        QVERIFY2(results.at(i).ok(), qPrintable(results.at(i).errorString));
        QCOMPARE(results.at(i).image.width(), i % 2 ? 256 : 100);
    }
    const QImage reference = results.at(1).image;
    for (int i = 1; i < results.size(); i += 2)
        QVERIFY(thumbtest::meanDifference(results.at(i).image, reference) < 1.0);
    QCOMPARE(QDir(cacheRoot() + "/large").entryList(QDir::Files | QDir::Hidden).size(), 1);
    QCOMPARE(QDir(cacheRoot() + "/normal").entryList(QDir::Files | QDir::Hidden).size(), 1);
}

QTEST_GUILESS_MAIN(TestThumbnails)
#include "tst_thumbnails.moc"
