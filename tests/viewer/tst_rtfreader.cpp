#include "Fixtures.h"
#include "core/viewer/RtfReader.h"

#include <QBuffer>
#include <QFile>
#include <QImage>
#include <QTest>
#include <QTextBlock>
#include <QTextDocument>
#include <QTextFragment>
#include <QTextImageFormat>

using tarnby::viewer::RtfLimits;
using tarnby::viewer::RtfReader;

namespace {

QString textOf(const QByteArray &rtf)
{
    return RtfReader::plainText(rtf);
}

// The character format of the first fragment that contains needle.
QTextCharFormat formatOf(const QTextDocument &doc, const QString &needle)
{
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        for (auto it = b.begin(); !it.atEnd(); ++it) {
            if (it.fragment().text().contains(needle))
                return it.fragment().charFormat();
        }
    }
    return {};
}

QTextBlock blockOf(const QTextDocument &doc, const QString &needle)
{
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        if (b.text().contains(needle))
            return b;
    }
    return {};
}

QByteArray pngHex()
{
    QImage image(4, 3, QImage::Format_RGB32);
    image.fill(Qt::red);
    QByteArray png;
    QBuffer buffer(&png);
    buffer.open(QIODevice::WriteOnly);
    image.save(&buffer, "PNG");
    return png.toHex();
}

QByteArray readFixture(const QString &name)
{
    QFile f(fixtures::path(name));
    return f.open(QIODevice::ReadOnly) ? f.readAll() : QByteArray();
}

} // namespace

class TestRtfReader : public QObject
{
    Q_OBJECT
private slots:
    void text_data();
    void text();
    void lineBreakAndHardSpaceStayInTheParagraph();
    void characterFormats();
    void fontsSizesAndColours();
    void paragraphsAndAlignment();
    void embeddedPicture();
    void notRtfIsRefused();
    void deepNestingIsBounded();
    void fixtures_data();
    void fixtures();
    void mutatedInputsReadSafely();
};

void TestRtfReader::text_data()
{
    QTest::addColumn<QByteArray>("rtf");
    QTest::addColumn<QString>("text");

    QTest::newRow("minimal document") << QByteArray("{\\rtf1}") << QString();
    QTest::newRow("two paragraphs") << QByteArray("{\\rtf1 one\\par two}") << QStringLiteral("one\ntwo");
    QTest::newRow("control word eats one space") << QByteArray("{\\rtf1\\b  bold}") << QStringLiteral(" bold");
    QTest::newRow("raw line ends are not text") << QByteArray("{\\rtf1 a\r\nb\nc}") << QStringLiteral("abc");
    QTest::newRow("escaped braces and backslash") << QByteArray("{\\rtf1 \\{x\\}\\\\}") << QStringLiteral("{x}\\");
    QTest::newRow("hex byte in the ANSI code page") << QByteArray("{\\rtf1\\ansi\\ansicpg1252 caf\\'e9}")
                                                    << QString::fromUtf8("café");
    QTest::newRow("hex byte in code page 1250") << QByteArray("{\\rtf1\\ansi\\ansicpg1250 \\'bf\\'f3\\'b3w}")
                                                << QString::fromUtf8("żółw");
    QTest::newRow("font charset overrides the document code page")
        << QByteArray("{\\rtf1\\ansi\\ansicpg1252{\\fonttbl{\\f0\\fcharset238 Arial CE;}}\\f0 \\'c8l\\'e1nek}")
        << QString::fromUtf8("Článek");
    QTest::newRow("Shift-JIS double bytes") << QByteArray("{\\rtf1{\\fonttbl{\\f0\\fcharset128 MS Gothic;}}\\f0 \\'93\\'fa\\'96\\'7b}")
                                            << QString::fromUtf8("日本");
    QTest::newRow("unicode skips one fallback character")
        << QByteArray("{\\rtf1\\uc1 a\\u8364?b}") << QString::fromUtf8("a€b");
    QTest::newRow("unicode negative value") << QByteArray("{\\rtf1\\u-4064 ?}") << QString(QChar(0xF020));
    QTest::newRow("uc2 skips two fallback bytes")
        << QByteArray("{\\rtf1\\uc2 \\u26085\\'93\\'fax}") << QString::fromUtf8("日x");
    QTest::newRow("uc0 skips nothing") << QByteArray("{\\rtf1\\uc0 \\u233 e}") << QString::fromUtf8("ée");
    QTest::newRow("fallback skipping stops at a group end")
        << QByteArray("{\\rtf1\\uc3 {\\u233 a}bc}") << QString::fromUtf8("ébc");
    QTest::newRow("surrogate pair") << QByteArray("{\\rtf1\\uc1 \\u-10179?\\u-8704?}") << QString::fromUtf8("😀");
    QTest::newRow("unknown ignorable destination is skipped")
        << QByteArray("{\\rtf1 a{\\*\\mystery hidden {nested} text}b}") << QStringLiteral("ab");
    QTest::newRow("unknown plain control word is ignored") << QByteArray("{\\rtf1 a\\foobar42 b}") << QStringLiteral("ab");
    QTest::newRow("info and stylesheet are not text")
        << QByteArray("{\\rtf1{\\info{\\title T}}{\\stylesheet{\\s0 Normal;}}body}") << QStringLiteral("body");
    QTest::newRow("field shows its result") << QByteArray("{\\rtf1{\\field{\\*\\fldinst HYPERLINK \"x\"}{\\fldrslt link}}}")
                                            << QStringLiteral("link");
    QTest::newRow("tab and line") << QByteArray("{\\rtf1 a\\tab b\\line c}") << QStringLiteral("a\tb\nc");
    QTest::newRow("table as text")
        << QByteArray("{\\rtf1\\trowd\\cellx1000\\cellx2000 \\intbl A\\cell B\\cell\\row\\trowd \\intbl C\\cell D\\cell\\row}")
        << QStringLiteral("A\tB\nC\tD\n");
    QTest::newRow("special characters")
        << QByteArray("{\\rtf1\\lquote x\\rquote  \\ldblquote y\\rdblquote \\emdash\\endash\\bullet\\~}")
        << QString::fromUtf8("‘x’ “y”—–• ");
    QTest::newRow("binary data is skipped") << QByteArray("{\\rtf1 a{\\*\\junk\\bin3 }}}}b}") << QStringLiteral("ab");
    QTest::newRow("hidden text is not shown") << QByteArray("{\\rtf1 a{\\v secret}b}") << QStringLiteral("ab");
    QTest::newRow("truncated file keeps what came") << QByteArray("{\\rtf1 {\\b start") << QStringLiteral("start");
    QTest::newRow("unbalanced closing braces") << QByteArray("{\\rtf1 a}}}b") << QStringLiteral("ab");
    QTest::newRow("bad hex escape") << QByteArray("{\\rtf1 a\\'zzb}") << QStringLiteral("azzb");
    QTest::newRow("backslash at the very end") << QByteArray("{\\rtf1 a\\") << QStringLiteral("a");
}

void TestRtfReader::text()
{
    QFETCH(QByteArray, rtf);
    QFETCH(QString, text);
    QCOMPARE(textOf(rtf), text);
}

void TestRtfReader::lineBreakAndHardSpaceStayInTheParagraph()
{
    QTextDocument doc;
    QVERIFY(RtfReader::read("{\\rtf1 a\\line b\\~c}", &doc));
    QCOMPARE(doc.blockCount(), 1);
    QCOMPARE(doc.toRawText(), QStringLiteral("a\u2028b\u00A0c"));
}

void TestRtfReader::characterFormats()
{
    QTextDocument doc;
    QVERIFY(RtfReader::read("{\\rtf1 plain {\\b bold}{\\i italic}{\\ul under}{\\ul\\ulnone notunder}"
                            "{\\strike struck}{\\b\\b0 unbold} \\b on\\plain  off {\\super up}}",
                            &doc));
    QCOMPARE(formatOf(doc, "plain").fontWeight(), int(QFont::Normal));
    QCOMPARE(formatOf(doc, "bold").fontWeight(), int(QFont::Bold));
    QVERIFY(formatOf(doc, "italic").fontItalic());
    QVERIFY(!formatOf(doc, "bold").fontItalic());
    QVERIFY(formatOf(doc, "under").fontUnderline());
    QVERIFY(!formatOf(doc, "notunder").fontUnderline());
    QVERIFY(formatOf(doc, "struck").fontStrikeOut());
    QCOMPARE(formatOf(doc, "unbold").fontWeight(), int(QFont::Normal));
    QCOMPARE(formatOf(doc, "on").fontWeight(), int(QFont::Bold));
    QCOMPARE(formatOf(doc, "off").fontWeight(), int(QFont::Normal));
    QCOMPARE(formatOf(doc, "up").verticalAlignment(), QTextCharFormat::AlignSuperScript);
}

void TestRtfReader::fontsSizesAndColours()
{
    QTextDocument doc;
    QVERIFY(RtfReader::read("{\\rtf1\\deff0{\\fonttbl{\\f0\\froman Times New Roman;}{\\f1\\fswiss{\\*\\panose 0}Arial;}}"
                            "{\\colortbl;\\red255\\green0\\blue0;\\red0\\green0\\blue128;}"
                            "default {\\f1\\fs36 big arial} {\\cf1 red} {\\cf2\\highlight1 navy} {\\cf0 auto}}",
                            &doc));
    QCOMPARE(formatOf(doc, "default").fontFamilies().toStringList(), QStringList{"Times New Roman"});
    QCOMPARE(formatOf(doc, "default").fontPointSize(), 12.0);
    QCOMPARE(formatOf(doc, "big arial").fontFamilies().toStringList(), QStringList{"Arial"});
    QCOMPARE(formatOf(doc, "big arial").fontPointSize(), 18.0);
    QCOMPARE(formatOf(doc, "red").foreground().color(), QColor(255, 0, 0));
    QCOMPARE(formatOf(doc, "navy").foreground().color(), QColor(0, 0, 128));
    QCOMPARE(formatOf(doc, "navy").background().color(), QColor(255, 0, 0));
    QVERIFY(!formatOf(doc, "auto").hasProperty(QTextFormat::ForegroundBrush));
}

void TestRtfReader::paragraphsAndAlignment()
{
    QTextDocument doc;
    QVERIFY(RtfReader::read("{\\rtf1\\pard\\qc centred\\par\\qr right\\par\\pard justified\\qj\\par"
                            "\\pard\\li1440\\fi-360\\sb300 indented\\par\\pard left}",
                            &doc));
    QCOMPARE(blockOf(doc, "centred").blockFormat().alignment(), Qt::AlignHCenter);
    // Paragraph properties last until \pard.
    QCOMPARE(blockOf(doc, "right").blockFormat().alignment(), Qt::AlignRight);
    // The properties at the paragraph's end apply to the whole paragraph.
    QCOMPARE(blockOf(doc, "justified").blockFormat().alignment(), Qt::AlignJustify);
    QCOMPARE(blockOf(doc, "indented").blockFormat().leftMargin(), 96.0);
    QCOMPARE(blockOf(doc, "indented").blockFormat().textIndent(), -24.0);
    QCOMPARE(blockOf(doc, "indented").blockFormat().topMargin(), 20.0);
    QCOMPARE(blockOf(doc, "left").blockFormat().alignment(), Qt::AlignLeft);
}

void TestRtfReader::embeddedPicture()
{
    QTextDocument doc;
    const QByteArray rtf = "{\\rtf1 before{\\*\\shppict{\\pict\\pngblip\\picw4\\pich3\\picwgoal600\\pichgoal450 "
                           + pngHex() + "}}{\\nonshppict{\\pict\\wmetafile8 0102}}after}";
    QVERIFY(RtfReader::read(rtf, &doc));
    QString name;
    QTextImageFormat image;
    for (QTextBlock b = doc.begin(); b.isValid(); b = b.next()) {
        for (auto it = b.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().isImageFormat())
                image = it.fragment().charFormat().toImageFormat();
        }
    }
    QVERIFY(image.isValid());
    QCOMPARE(image.width(), 40.0); // 600 twips
    QCOMPARE(image.height(), 30.0);
    const QImage stored = doc.resource(QTextDocument::ImageResource, QUrl(image.name())).value<QImage>();
    QCOMPARE(stored.size(), QSize(4, 3));
    QCOMPARE(QColor(stored.pixel(0, 0)), QColor(Qt::red));
    // One object replacement character for the picture, none for the metafile alternative.
    QCOMPARE(doc.toPlainText(), QStringLiteral("before\uFFFCafter"));

    // The same picture as raw bytes after \bin.
    const QByteArray raw = QByteArray::fromHex(pngHex());
    QTextDocument binary;
    QVERIFY(RtfReader::read("{\\rtf1 x{\\pict\\pngblip\\bin" + QByteArray::number(raw.size()) + " " + raw + "}y}",
                            &binary));
    QCOMPARE(binary.toPlainText(), QStringLiteral("x\uFFFCy"));
    QCOMPARE(binary.resource(QTextDocument::ImageResource, QUrl("rtf-picture-1")).value<QImage>().size(), QSize(4, 3));

    QTextDocument broken;
    QVERIFY(RtfReader::read("{\\rtf1 a{\\pict\\pngblip 0011zz}b}", &broken));
    QCOMPARE(broken.toPlainText(), QStringLiteral("ab"));
}

void TestRtfReader::notRtfIsRefused()
{
    QTextDocument doc;
    QString error;
    QVERIFY(!RtfReader::read("just text", &doc, &error));
    QVERIFY(!error.isEmpty());
    RtfLimits small;
    small.maxInputBytes = 10;
    QVERIFY(!RtfReader::read("{\\rtf1 more than ten bytes}", &doc, &error, small));
}

void TestRtfReader::deepNestingIsBounded()
{
    QByteArray rtf = "{\\rtf1 top";
    rtf += QByteArray(100000, '{');
    rtf += "deep";
    rtf += QByteArray(100000, '}');
    rtf += "end}";
    QTextDocument doc;
    QVERIFY(RtfReader::read(rtf, &doc));
    // Text below the depth limit is dropped; the groups still balance.
    QCOMPARE(doc.toPlainText(), QStringLiteral("topend"));
}

void TestRtfReader::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QStringList>("lines");
    QTest::newRow("empty document") << "RTF/rtf.rtf" << QStringList{};
    QTest::newRow("Word with a right quote") << "RTF/testRTF.rtf" << QStringList{QString::fromUtf8("Test d’indexation Word")};
    QTest::newRow("code page 1250")
        << "RTF/testRTFWindowsCodepage1250.rtf"
        << QStringList{QString::fromUtf8("zażółć gęślą jaźń"), QString::fromUtf8("ZAŻÓŁĆ GĘŚLĄ JAŹŃ")};
    QTest::newRow("WordPad Czech with a Central European font")
        << "RTF/testRTFWordPadCzechCharacters.rtf"
        << QStringList{QString::fromUtf8("Článek týdne"), QString::fromUtf8("Část svitku s textem Knihy Izajáš")};
    QTest::newRow("Mac code page") << "RTF/lorem-ipsum.rtf" << QStringList{QStringLiteral("Variatio Ipsius")};
    QTest::newRow("Japanese in Unicode escapes")
        << "RTF/testRTFJapanese.rtf"
        << QStringList{QString::fromUtf8("ゾルゲと尾崎、淡々と最期　"), QString::fromUtf8("古書店で処刑記録見つかる")};
}

void TestRtfReader::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QStringList, lines);
    const QByteArray data = readFixture(file);
    QVERIFY(!data.isEmpty());
    QTextDocument doc;
    QVERIFY(RtfReader::read(data, &doc));
    const QString text = doc.toPlainText();
    QVERIFY(!text.contains(QChar(QChar::ReplacementCharacter)));
    // Empty paragraphs are layout; the lines of text are what must match.
    QStringList shown = text.split(QLatin1Char('\n'), Qt::SkipEmptyParts);
    if (!lines.isEmpty()) {
        QVERIFY(shown.size() >= lines.size());
        QCOMPARE(shown.mid(0, lines.size()), lines);
    } else if (file.endsWith(QLatin1String("rtf.rtf"))) {
        QVERIFY(shown.isEmpty());
    }
}

// Damaged copies of real documents: bytes changed, dropped and repeated, and
// the characters that steer the parser thrown in. Each must read without a
// fault (the sanitizer build checks memory) and without output beyond bounds.
void TestRtfReader::mutatedInputsReadSafely()
{
    REQUIRE_FIXTURES();
    const QList<QByteArray> seeds = {readFixture("RTF/testRTF.rtf"), readFixture("RTF/testRTFJapanese.rtf"),
                                     "{\\rtf1{\\fonttbl{\\f0\\fcharset128 G;}}{\\colortbl;\\red1;}\\f0\\uc2\\u26085\\'93\\'fa"
                                     "{\\pict\\pngblip\\picwgoal10 89504e47}\\cell\\row\\bin2 xy}"};
    const QByteArray steering = "{}\\'*;0123456789-uc bin pict fonttbl";
    quint32 x = 2024;
    auto next = [&x](quint32 n) {
        x = x * 1664525u + 1013904223u;
        return n ? (x >> 8) % n : 0u;
    };
    for (const QByteArray &seed : seeds) {
        QVERIFY(!seed.isEmpty());
        for (int i = 0; i < 150; ++i) {
            QByteArray data = seed;
            const int edits = 1 + int(next(40));
            for (int e = 0; e < edits && !data.isEmpty(); ++e) {
                const int at = int(next(quint32(data.size())));
                switch (next(4)) {
                case 0:
                    data[at] = steering.at(int(next(quint32(steering.size()))));
                    break;
                case 1:
                    data.remove(at, int(next(64)));
                    break;
                case 2:
                    data.insert(at, data.mid(int(next(quint32(data.size()))), int(next(200))));
                    break;
                default:
                    data.truncate(at);
                    break;
                }
            }
            QTextDocument doc;
            RtfReader::read(data, &doc);
            QVERIFY(doc.characterCount() <= data.size() + 1);
        }
    }
}

QTEST_GUILESS_MAIN(TestRtfReader)
#include "tst_rtfreader.moc"
