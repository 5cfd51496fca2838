#include "Fixtures.h"
#include "TestDir.h"
#include "core/viewer/TextFile.h"

#include <QTest>

using namespace tarnby::viewer;

class TestTextFile : public QObject
{
    Q_OBJECT
private slots:
    void detect_data();
    void detect();
    void decode_data();
    void decode();
    void fixtures_data();
    void fixtures();
    void pagesJoinToTheWholeText_data();
    void pagesJoinToTheWholeText();
    void pagesEndAfterALineEnd();
    void binaryJunkReadsAsText();
    void missingFileFails();
};

void TestTextFile::detect_data()
{
    QTest::addColumn<QByteArray>("head");
    QTest::addColumn<bool>("whole");
    QTest::addColumn<TextEncoding>("encoding");
    QTest::addColumn<int>("bom");
    QTest::newRow("UTF-8 with BOM") << QByteArray("\xEF\xBB\xBFhi") << true << TextEncoding::Utf8 << 3;
    QTest::newRow("UTF-16LE with BOM") << QByteArray("\xFF\xFEh\0i\0", 6) << true << TextEncoding::Utf16LE << 2;
    QTest::newRow("UTF-16BE with BOM") << QByteArray("\xFE\xFF\0h\0i", 6) << true << TextEncoding::Utf16BE << 2;
    QTest::newRow("ASCII is UTF-8") << QByteArray("plain") << true << TextEncoding::Utf8 << 0;
    QTest::newRow("UTF-8 without BOM") << QByteArray("caf\xC3\xA9") << true << TextEncoding::Utf8 << 0;
    QTest::newRow("Windows-1252 e acute") << QByteArray("caf\xE9 ok") << true << TextEncoding::Windows1252 << 0;
    QTest::newRow("UTF-8 cut in a sample") << QByteArray("caf\xC3") << false << TextEncoding::Utf8 << 0;
    QTest::newRow("UTF-8 cut at the end of the whole file") << QByteArray("caf\xC3") << true
                                                            << TextEncoding::Windows1252 << 0;
    QTest::newRow("empty") << QByteArray() << true << TextEncoding::Utf8 << 0;
}

void TestTextFile::detect()
{
    QFETCH(QByteArray, head);
    QFETCH(bool, whole);
    QFETCH(TextEncoding, encoding);
    QFETCH(int, bom);
    const DetectedEncoding d = detectEncoding(head, whole);
    QCOMPARE(d.encoding, encoding);
    QCOMPARE(d.bomLength, bom);
}

void TestTextFile::decode_data()
{
    QTest::addColumn<QByteArray>("bytes");
    QTest::addColumn<TextEncoding>("encoding");
    QTest::addColumn<QString>("text");
    QTest::newRow("1252 euro and quotes") << QByteArray("\x80 \x93q\x94") << TextEncoding::Windows1252
                                          << QString::fromUtf8("€ “q”");
    QTest::newRow("1252 latin letters") << QByteArray("\xE9\xFC") << TextEncoding::Windows1252
                                        << QString::fromUtf8("éü");
    QTest::newRow("CR LF becomes LF") << QByteArray("a\r\nb\rc\n") << TextEncoding::Utf8 << QStringLiteral("a\nb\nc\n");
    QTest::newRow("NUL becomes a replacement character") << QByteArray("a\0b", 3) << TextEncoding::Utf8
                                                          << QStringLiteral("a\uFFFDb");
    QTest::newRow("UTF-16LE") << QByteArray("h\0\xE9\0", 4) << TextEncoding::Utf16LE << QString::fromUtf8("hé");
    QTest::newRow("UTF-16BE") << QByteArray("\0h\0\xE9", 4) << TextEncoding::Utf16BE << QString::fromUtf8("hé");
}

void TestTextFile::decode()
{
    QFETCH(QByteArray, bytes);
    QFETCH(TextEncoding, encoding);
    QFETCH(QString, text);
    QCOMPARE(decodeText(bytes, encoding), text);
}

void TestTextFile::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<TextEncoding>("encoding");
    QTest::addColumn<QString>("startsWith");
    QTest::newRow("UTF-16LE log with BOM") << "LOG/example.log" << TextEncoding::Utf16LE
                                           << "Exact Audio Copy V1.0 beta 3 from 29. August 2011";
    QTest::newRow("ASCII text") << "TXT/testTXT.txt" << TextEncoding::Utf8 << "Test d'indexation de Txt";
    QTest::newRow("Windows-1252 text") << "TXT/testTXT_win-1252.txt" << TextEncoding::Windows1252 << "";
    QTest::newRow("UTF-8 without BOM") << "TXT/testTXTNonASCIIUTF8.txt" << TextEncoding::Utf8 << "";
    QTest::newRow("INI with UTF-8 BOM") << "INI/bom.ini" << TextEncoding::Utf8 << "[bom_section]";
}

void TestTextFile::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(TextEncoding, encoding);
    QFETCH(QString, startsWith);
    const TextLayout layout = TextFile::scan(fixtures::path(file));
    QVERIFY2(layout.ok(), qPrintable(layout.errorString));
    QCOMPARE(layout.encoding.encoding, encoding);
    QCOMPARE(layout.pageCount(), 1);
    const QString text = TextFile::readPage(fixtures::path(file), layout, 0);
    QVERIFY(!text.isEmpty());
    QVERIFY2(text.startsWith(startsWith), qPrintable(text.left(80)));
    QVERIFY(!text.contains(QChar(0xFEFF)));
    QVERIFY(!text.contains(QLatin1Char('\r')));
}

void TestTextFile::pagesJoinToTheWholeText_data()
{
    QTest::addColumn<TextEncoding>("encoding");
    QTest::addColumn<bool>("lineEnds");
    QTest::newRow("UTF-8 lines") << TextEncoding::Utf8 << true;
    QTest::newRow("UTF-8 one long line") << TextEncoding::Utf8 << false;
    QTest::newRow("UTF-16LE lines") << TextEncoding::Utf16LE << true;
    QTest::newRow("UTF-16LE one long line") << TextEncoding::Utf16LE << false;
    QTest::newRow("UTF-16BE lines") << TextEncoding::Utf16BE << true;
}

void TestTextFile::pagesJoinToTheWholeText()
{
    QFETCH(TextEncoding, encoding);
    QFETCH(bool, lineEnds);
    // Text with multi-byte characters everywhere, so that a page boundary in
    // the middle of a character would show as a replacement character.
    QString text;
    for (int i = 0; i < 4000; ++i) {
        text += QStringLiteral("Zeile %1 äöü € 漢字 ").arg(i);
        if (lineEnds && i % 7 == 6)
            text += QLatin1Char('\n');
    }
    QByteArray bytes;
    switch (encoding) {
    case TextEncoding::Utf8:
        bytes = text.toUtf8();
        break;
    case TextEncoding::Utf16LE:
        bytes = QByteArray("\xFF\xFE") + QByteArray(reinterpret_cast<const char *>(text.utf16()), text.size() * 2);
        break;
    case TextEncoding::Utf16BE: {
        bytes = QByteArray("\xFE\xFF");
        for (QChar c : text) {
            bytes += char(c.unicode() >> 8);
            bytes += char(c.unicode() & 0xFF);
        }
        break;
    }
    case TextEncoding::Windows1252:
        break;
    }
    TestDir dir;
    const QString path = dir.createFile(QStringLiteral("big.txt"), bytes);
    const TextLayout layout = TextFile::scan(path, 4096);
    QCOMPARE(layout.encoding.encoding, encoding);
    QVERIFY(layout.pageCount() > 10);
    QString joined;
    for (int p = 0; p < layout.pageCount(); ++p) {
        const QString page = TextFile::readPage(path, layout, p);
        QVERIFY2(!page.contains(QChar(QChar::ReplacementCharacter)), qPrintable(QStringLiteral("page %1").arg(p)));
        joined += page;
    }
    QCOMPARE(joined, text);
}

void TestTextFile::pagesEndAfterALineEnd()
{
    QByteArray bytes;
    for (int i = 0; i < 2000; ++i)
        bytes += "line " + QByteArray::number(i) + "\r\n";
    TestDir dir;
    const QString path = dir.createFile(QStringLiteral("lines.log"), bytes);
    const TextLayout layout = TextFile::scan(path, 1000);
    QVERIFY(layout.pageCount() > 5);
    for (int p = 1; p < layout.pageCount(); ++p)
        QCOMPARE(bytes.at(layout.pageStarts.at(p) - 1), '\n');
    QVERIFY(TextFile::readPage(path, layout, 1).startsWith(QLatin1String("line ")));
    QString error;
    QVERIFY(TextFile::readPage(path, layout, layout.pageCount(), &error).isEmpty());
    QVERIFY(!error.isEmpty());
}

void TestTextFile::binaryJunkReadsAsText()
{
    QByteArray junk;
    quint32 x = 12345;
    for (int i = 0; i < 300000; ++i) {
        x = x * 1103515245u + 12345u;
        junk += char(x >> 24);
    }
    TestDir dir;
    const QString path = dir.createFile(QStringLiteral("junk.txt"), junk);
    const TextLayout layout = TextFile::scan(path, 65536);
    QVERIFY(layout.ok());
    QCOMPARE(layout.encoding.encoding, TextEncoding::Windows1252);
    qsizetype total = 0;
    for (int p = 0; p < layout.pageCount(); ++p) {
        const QString page = TextFile::readPage(path, layout, p);
        QVERIFY(!page.contains(QChar(0)));
        total += page.size();
    }
    // Every byte is one character, less the CR of each CR LF pair.
    QVERIFY(total > junk.size() * 9 / 10);
}

void TestTextFile::missingFileFails()
{
    const TextLayout layout = TextFile::scan(QStringLiteral("/nonexistent/folder/none.txt"));
    QVERIFY(!layout.ok());
    QCOMPARE(layout.pageCount(), 0);
}

QTEST_GUILESS_MAIN(TestTextFile)
#include "tst_textfile.moc"
