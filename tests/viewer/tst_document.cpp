#include "Fixtures.h"
#include "TestDir.h"
#include "core/viewer/Document.h"

#include <QSignalSpy>
#include <QTest>
#include <QTextDocument>

using namespace tarnby::viewer;

namespace {

// Loads and waits; true when loaded, false when failed.
bool loadAndWait(Document &doc, int timeoutMs = 60000)
{
    QSignalSpy ok(&doc, &Document::loaded);
    QSignalSpy failed(&doc, &Document::loadFailed);
    doc.load();
    if (!QTest::qWaitFor([&] { return !ok.isEmpty() || !failed.isEmpty(); }, timeoutMs))
        return false;
    return !ok.isEmpty();
}

} // namespace

class TestDocument : public QObject
{
    Q_OBJECT
private slots:
    void picture();
    void largePictureGetsAnOverview();
    void animationLoadsAllFrames();
    void failedPictureLeavesAnEmptyDocument_data();
    void failedPictureLeavesAnEmptyDocument();
    void textViews_data();
    void textViews();
    void documentsThatCannotBeShown_data();
    void documentsThatCannotBeShown();
    void plainTextPages();
    void destroyedWhileLoading();
    void savePictureClearsModified();
};

void TestDocument::picture()
{
    REQUIRE_FIXTURES();
    Document doc(fixtures::path("PNG/hopper.png"), DocumentKind::Picture, false);
    QCOMPARE(doc.loadingState(), Document::LoadingState::NotLoaded);
    QVERIFY(loadAndWait(doc));
    QCOMPARE(doc.loadingState(), Document::LoadingState::Loaded);
    QCOMPARE(doc.picture().info.width, 128);
    QCOMPARE(doc.picture().info.height, 128);
    QCOMPARE(doc.fileSize(), qint64(30605));
    QCOMPARE(doc.picture().frames.size(), 1);
    QVERIFY(!doc.isAnimated());
    QVERIFY(!doc.isBusy());
    QCOMPARE(doc.extension(), QStringLiteral("PNG"));
}

void TestDocument::largePictureGetsAnOverview()
{
    // A full palette, so that the file is written with 8 bits per pixel
    // (with 16 colours or fewer the BMP writer chooses 4).
    QImage big(3000, 1500, QImage::Format_Indexed8);
    big.setColorCount(256);
    big.setColor(0, qRgb(0, 0, 255));
    big.setColor(1, qRgb(255, 255, 0));
    big.fill(1);
    TestDir dir;
    const QString path = dir.filePath("big.bmp");
    QVERIFY(big.save(path, "BMP"));
    Document doc(path, DocumentKind::Picture, false);
    QVERIFY(loadAndWait(doc));
    QCOMPARE(doc.overview().size(), QSize(1024, 512));
    // Frames are kept in a format the view paints without converting.
    QCOMPARE(doc.picture().image().format(), QImage::Format_RGB32);
    QCOMPARE(QColor(doc.picture().image().pixel(10, 10)), QColor(255, 255, 0));
    // The status bar reports the file's own depth, not the painting format.
    QCOMPARE(doc.picture().info.bitsPerPixel, 8);
}

void TestDocument::animationLoadsAllFrames()
{
    REQUIRE_FIXTURES();
    const QString path = fixtures::path("ANI/kimageformats_test.ani");
    if (!tarnby::imaging::loadPicture(path).ok())
        QSKIP("the picture layer does not read ANI files yet");
    Document doc(path, DocumentKind::Picture, false);
    QVERIFY(loadAndWait(doc));
    QVERIFY(doc.picture().frames.size() > 1);
    QVERIFY(doc.isAnimated());
}

void TestDocument::failedPictureLeavesAnEmptyDocument_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("showsWhatRemains");
    QTest::newRow("broken PNG") << "malformed/PNG/broken.png" << false;
    // The JPEG decoder shows the rows that precede the cut, as viewers do.
    QTest::newRow("truncated JPEG") << "malformed/JPG/truncated_jpeg.jpg" << true;
    QTest::newRow("missing file") << "PNG/there-is-no-such-file.png" << false;
}

void TestDocument::failedPictureLeavesAnEmptyDocument()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(bool, showsWhatRemains);
    Document doc(fixtures::path(file), DocumentKind::Picture, false);
    const bool loaded = loadAndWait(doc);
    if (showsWhatRemains) {
        QVERIFY(loaded);
        QVERIFY(!doc.picture().isNull());
        return;
    }
    QVERIFY2(!loaded, "a damaged or missing picture loaded");
    QCOMPARE(doc.loadingState(), Document::LoadingState::Failed);
    QVERIFY(!doc.errorString().isEmpty());
    QVERIFY(doc.picture().isNull());
    QVERIFY(doc.overview().isNull());
    QVERIFY(doc.richText() == nullptr);
    QVERIFY(doc.text().pageText.isEmpty());
    QCOMPARE(doc.savePicture(QDir::temp().filePath("never.png"), 75, 0, 0).ok, false);
    // The failed implementation is released on the next event loop pass.
    QTest::qWait(0);
    QVERIFY(doc.picture().isNull());
}

void TestDocument::textViews_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<bool>("useTextDoc");
    QTest::addColumn<TextView>("view");
    QTest::addColumn<QString>("contains");
    QTest::newRow("TXT") << "TXT/testTXT.txt" << false << TextView::PlainText << "Test d'indexation de Txt";
    QTest::newRow("RTF as rich text") << "RTF/testRTF.rtf" << false << TextView::RichText << "indexation Word";
    QTest::newRow("DOC through the converter") << "DOC/word_document.doc" << false << TextView::WebView
                                               << "Streng Geheim";
    QTest::newRow("short Word 6 DOC") << "DOC/testWORD6.doc" << false << TextView::WebView
                                      << "The quick brown fox jumps over the lazy dog";
    QTest::newRow("DOC as plain text with the option") << "DOC/word_document.doc" << true << TextView::PlainText << "";
    QTest::newRow("Works 7") << "WPS/testWORKS.wps" << false << TextView::WebView
                             << "This is an example document made with Microsoft Works";
    QTest::newRow("Works 4") << "WPS/testWORKSWordProcessor4.0.wps" << false << TextView::WebView
                             << "This is an example document made with Microsoft Works";
    QTest::newRow("HTML") << "HTML/testHTML.html" << false << TextView::WebView << "Test Indexation Html";
    QTest::newRow("UTF-16LE HTML") << "HTML/testHTML_charset_utf16le.html" << false << TextView::WebView << "<";
    QTest::newRow("Word HTM") << "HTM/lorem-ipsum.htm" << false << TextView::WebView << "Lorem ipsum";
    QTest::newRow("WRI read as plain text") << "WRI/testWindowsWrite.wri" << false << TextView::PlainText
                                            << "Sluwe Sjaantje sloeg de slome slager";
}

void TestDocument::textViews()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(bool, useTextDoc);
    QFETCH(TextView, view);
    QFETCH(QString, contains);
    Document doc(fixtures::path(file), DocumentKind::Text, useTextDoc);
    QVERIFY2(loadAndWait(doc), qPrintable(doc.errorString()));
    QCOMPARE(doc.text().view, view);
    QString shown;
    switch (view) {
    case TextView::RichText:
        QVERIFY(doc.richText());
        shown = doc.richText()->toPlainText();
        break;
    case TextView::WebView:
        shown = doc.text().html + doc.text().webPlainText;
        break;
    case TextView::PlainText:
        shown = doc.text().pageText;
        break;
    }
    QVERIFY(!shown.isEmpty());
    QVERIFY2(shown.contains(contains), qPrintable(shown.left(200)));
}

void TestDocument::documentsThatCannotBeShown_data()
{
    QTest::addColumn<QString>("file");
    QTest::newRow("WordPerfect file named DOC") << "DOC/testWordPerfect_42.doc";
    QTest::newRow("encrypted Word document") << "DOC/testWORD_protected_passtika.doc";
    QTest::newRow("Word file named WPS") << "DOC/test.doc";
}

void TestDocument::documentsThatCannotBeShown()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    // A Works reader given a Word file must refuse it; copy it under that name.
    TestDir dir;
    QString path = fixtures::path(file);
    if (file.endsWith(QLatin1String("test.doc"))) {
        QFile source(path);
        QVERIFY(source.open(QIODevice::ReadOnly));
        path = dir.createFile("test.wps", source.readAll());
    }
    Document doc(path, DocumentKind::Text, false);
    QVERIFY(!loadAndWait(doc));
    QCOMPARE(doc.loadingState(), Document::LoadingState::Failed);
    QVERIFY(!doc.errorString().isEmpty());
    QVERIFY(doc.text().html.isEmpty() && doc.text().webPlainText.isEmpty());
}

void TestDocument::plainTextPages()
{
    QByteArray bytes;
    for (int i = 0; i < 250000; ++i)
        bytes += "Line " + QByteArray::number(i) + " of a long file\r\n";
    TestDir dir;
    const QString path = dir.createFile("long.txt", bytes);
    Document doc(path, DocumentKind::Text, false);
    QVERIFY(loadAndWait(doc));
    const int pages = doc.text().layout.pageCount();
    QVERIFY(pages >= int(bytes.size() / TextFile::DefaultPageBytes));
    QVERIFY(doc.text().pageText.startsWith(QLatin1String("Line 0 of")));
    QVERIFY(doc.text().pageText.size() <= TextFile::DefaultPageBytes + 200);
    QSignalSpy page(&doc, &Document::pageLoaded);
    doc.loadPage(pages - 1);
    QVERIFY(page.wait(10000));
    QCOMPARE(doc.text().page, pages - 1);
    QVERIFY(doc.text().pageText.endsWith(QLatin1String("Line 249999 of a long file\n")));
}

void TestDocument::destroyedWhileLoading()
{
    REQUIRE_FIXTURES();
    for (const char *file : {"PNG/hopper.png", "RTF/testRTFJapanese.rtf", "WPS/testWORKS.wps"}) {
        auto *doc = new Document(fixtures::path(QLatin1String(file)),
                                 QByteArray(file).startsWith("PNG") ? DocumentKind::Picture : DocumentKind::Text, false);
        doc->load();
        delete doc; // waits for the worker, drops its result
    }
}

void TestDocument::savePictureClearsModified()
{
    REQUIRE_FIXTURES();
    Document doc(fixtures::path("PNG/hopper.png"), DocumentKind::Picture, false);
    QVERIFY(loadAndWait(doc));
    doc.setModified(true);
    TestDir dir;
    const QString target = dir.filePath("copy.png");
    const tarnby::imaging::SaveResult saved = doc.savePicture(target, 75, 0, 0);
    QVERIFY2(saved.ok, qPrintable(saved.errorString));
    QVERIFY(!doc.isModified());
    QCOMPARE(QImage(target).size(), QSize(128, 128));
}

QTEST_MAIN(TestDocument)
#include "tst_document.moc"
