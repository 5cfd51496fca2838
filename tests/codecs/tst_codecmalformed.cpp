#include "CodecSamples.h"
#include "CodecTestUtil.h"
#include "Fixtures.h"

#include "core/platform/imaging/codecs/OwnCodecs.h"

#include <QDir>
#include <QFile>
#include <QtTest>

// Damaged, truncated and absurd files must fail with a message, never crash,
// never read past their end and never allocate what they merely claim.
namespace {

QByteArray le16(quint32 v)
{
    return QByteArray(1, char(v & 0xff)) + char((v >> 8) & 0xff);
}
QByteArray le32(quint32 v)
{
    return le16(v & 0xffff) + le16(v >> 16);
}
QByteArray be16(quint32 v)
{
    return QByteArray(1, char((v >> 8) & 0xff)) + char(v & 0xff);
}
QByteArray be32(quint32 v)
{
    return be16(v >> 16) + be16(v & 0xffff);
}

QImage smallIndexed(int width, int height, int colours)
{
    return codecsamples::indexedPicture(width, height, colours, [](int x, int y) { return x * 7 + y * 3; });
}

QByteArray mspHeader(quint16 key1, quint16 key2, quint16 width, quint16 height, bool fixChecksum = true)
{
    const quint16 words[12] = {key1, key2, width, height, 1, 1, 1, 1, 0, 0, 0, 0};
    QByteArray out;
    quint16 checksum = 0;
    for (quint16 w : words) {
        out += le16(w);
        checksum ^= w;
    }
    out += le16(fixChecksum ? checksum : quint16(checksum ^ 1)) + le16(0) + le16(0) + le16(0);
    return out;
}

QByteArray gemHeader(quint16 planes, quint16 width, quint16 height)
{
    return be16(1) + be16(8) + be16(planes) + be16(2) + be16(85) + be16(85) + be16(width) + be16(height);
}

QByteArray iffForm(const QByteArray &type, const QByteArray &chunks)
{
    return "FORM" + be32(quint32(chunks.size() + 4)) + type + chunks;
}

QByteArray bmhd(quint16 width, quint16 height, quint8 planes, quint8 compression)
{
    return "BMHD" + be32(20) + be16(width) + be16(height) + be32(0) + char(planes) + char(0) + char(compression)
        + char(0) + be16(0) + char(1) + char(1) + be16(width) + be16(height);
}

QByteArray flcHeader(quint16 frames, quint16 width, quint16 height, quint16 depth = 8)
{
    QByteArray out = le32(0) + le16(0xAF12) + le16(frames) + le16(width) + le16(height) + le16(depth) + le16(0)
        + le32(70);
    out.resize(128, '\0');
    return out;
}

QByteArray flcFrame(const QByteArray &chunks, int count)
{
    QByteArray body = le16(quint32(count)) + le16(0) + le16(0) + le16(0) + le16(0) + chunks;
    return le32(quint32(body.size() + 6)) + le16(0xF1FA) + body;
}

QByteArray flcChunk(quint16 type, const QByteArray &data)
{
    return le32(quint32(data.size() + 6)) + le16(type) + data;
}

QByteArray aniHeader(quint32 frames, quint32 steps, quint32 flags = 1)
{
    return "anih" + le32(36) + le32(36) + le32(frames) + le32(steps) + le32(0) + le32(0) + le32(0) + le32(0)
        + le32(10) + le32(flags);
}

QByteArray riffAcon(const QByteArray &chunks)
{
    return "RIFF" + le32(quint32(chunks.size() + 4)) + "ACON" + chunks;
}

QByteArray clpFile(quint32 formatId, quint32 length, quint32 offset, const QByteArray &data)
{
    return le16(0xC350) + le16(1) + le16(formatId) + le32(length) + le32(offset) + QByteArray(79, '\0') + data;
}

} // namespace

class TestCodecMalformed : public QObject
{
    Q_OBJECT

private slots:
    void generated_data();
    void generated();
    void fixtures_data();
    void fixtures();
    void truncatedSamples_data();
    void truncatedSamples();
    void fuzzRegressions_data();
    void fuzzRegressions();
};

void TestCodecMalformed::generated_data()
{
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QByteArray>("data");
    QTest::addColumn<QString>("expected"); // a word the message must hold

    const QByteArray goodMsp = codecsamples::mspVersion1(smallIndexed(16, 4, 2));
    QTest::newRow("msp empty file") << QByteArray("msp") << QByteArray() << "shorter";
    QTest::newRow("msp header cut at 20 bytes") << QByteArray("msp") << goodMsp.left(20) << "shorter";
    QTest::newRow("msp wrong magic") << QByteArray("msp") << mspHeader(0x1234, 0x5678, 16, 4) << "Not a";
    QTest::newRow("msp zero width") << QByteArray("msp") << mspHeader(0x6144, 0x4D6E, 0, 4) << "no width";
    QTest::newRow("msp 60000 x 60000 in 32 bytes")
        << QByteArray("msp") << mspHeader(0x6144, 0x4D6E, 60000, 60000) << "truncated";
    QTest::newRow("msp v2 60000 x 60000 without row table")
        << QByteArray("msp") << mspHeader(0x694C, 0x536E, 60000, 60000) << "truncated";
    QTest::newRow("msp bad checksum") << QByteArray("msp") << mspHeader(0x6144, 0x4D6E, 16, 4, false) + QByteArray(8, 0)
                                      << "checksum";
    QTest::newRow("msp v1 rows truncated") << QByteArray("msp") << goodMsp.chopped(1) << "truncated";
    QTest::newRow("msp v2 run past the row")
        << QByteArray("msp") << mspHeader(0x694C, 0x536E, 16, 1) + le16(3) + QByteArray("\x00\x09\xAA", 3) << "damaged";
    QTest::newRow("msp v2 literal past the data")
        << QByteArray("msp") << mspHeader(0x694C, 0x536E, 16, 1) + le16(3) + QByteArray("\x05\xAA\xBB", 3) << "damaged";

    QTest::newRow("img header cut") << QByteArray("img") << gemHeader(1, 8, 8).left(10) << "shorter";
    QTest::newRow("img zero size") << QByteArray("img") << gemHeader(1, 0, 0) + QByteArray(4, 0) << "valid";
    QTest::newRow("img 65535 x 65535 in 20 bytes")
        << QByteArray("img") << gemHeader(8, 65535, 65535) + QByteArray(4, 0) << "too large";
    QTest::newRow("img 16000 x 16000 in 20 bytes")
        << QByteArray("img") << gemHeader(1, 16000, 16000) + QByteArray(4, 0) << "truncated";
    QTest::newRow("img nine planes") << QByteArray("img") << gemHeader(9, 8, 8) + QByteArray(8, 0) << "valid";
    QTest::newRow("img lines missing")
        << QByteArray("img") << codecsamples::gemImg(smallIndexed(40, 12, 16), 4, false).chopped(5) << "truncated";
    QTest::newRow("img bit string past the end")
        << QByteArray("img") << gemHeader(1, 16, 1) + QByteArray("\x80\x10\x01", 3) << "truncated";

    const QByteArray body = "BODY" + be32(4) + QByteArray(4, 0);
    QTest::newRow("iff not a FORM") << QByteArray("iff") << QByteArray("LIST\0\0\0\4ILBM", 12) << "Not an IFF";
    QTest::newRow("iff FORM of sound") << QByteArray("iff") << iffForm("8SVX", {}) << "no bitmap";
    QTest::newRow("iff no BMHD") << QByteArray("iff") << iffForm("ILBM", body) << "no bitmap header";
    QTest::newRow("iff no BODY") << QByteArray("iff") << iffForm("ILBM", bmhd(8, 8, 1, 0)) << "no picture data";
    QTest::newRow("iff zero width") << QByteArray("iff") << iffForm("ILBM", bmhd(0, 8, 1, 0) + body) << "not valid";
    QTest::newRow("iff 60000 x 60000 true colour")
        << QByteArray("iff") << iffForm("ILBM", bmhd(60000, 60000, 24, 1) + body) << "too large";
    QTest::newRow("iff 16000 x 16000 from a 4-byte body")
        << QByteArray("iff") << iffForm("ILBM", bmhd(16000, 16000, 8, 1) + body) << "truncated";
    QTest::newRow("iff unknown compression") << QByteArray("iff") << iffForm("ILBM", bmhd(8, 8, 1, 7) + body)
                                             << "not valid";
    QTest::newRow("iff 12 planes") << QByteArray("iff") << iffForm("ILBM", bmhd(8, 8, 12, 0) + body) << "not valid";
    QTest::newRow("iff BODY cut short")
        << QByteArray("iff") << codecsamples::ilbm(smallIndexed(64, 16, 16), 4, {}).chopped(20) << "truncated";
    QTest::newRow("iff BMHD cut short") << QByteArray("iff") << iffForm("ILBM", bmhd(8, 8, 1, 0).left(18)) << "truncated";

    QImage frame(8, 8, QImage::Format_ARGB32);
    frame.fill(qRgba(10, 20, 30, 255));
    const QByteArray goodAni = codecsamples::ani({frame, frame}, {}, {}, 10);
    QTest::newRow("ani not ACON") << QByteArray("ani") << QByteArray("RIFF\4\0\0\0WAVE", 12) << "Not an";
    QTest::newRow("ani RIFF longer than the file") << QByteArray("ani") << goodAni.chopped(40) << "truncated";
    QTest::newRow("ani no header") << QByteArray("ani") << riffAcon("LIST" + le32(4) + "fram") << "no header";
    QTest::newRow("ani zero frames") << QByteArray("ani") << riffAcon(aniHeader(0, 0)) << "not valid";
    QTest::newRow("ani a billion frames") << QByteArray("ani") << riffAcon(aniHeader(1000000000, 1)) << "not valid";
    QTest::newRow("ani frames missing") << QByteArray("ani") << riffAcon(aniHeader(3, 3) + "LIST" + le32(4) + "fram")
                                        << "0 of its 3";
    QTest::newRow("ani raw frames") << QByteArray("ani") << riffAcon(aniHeader(1, 1, 0)) << "raw";
    QTest::newRow("ani sequence names a missing frame")
        << QByteArray("ani") << riffAcon(aniHeader(1, 2, 3) + "seq " + le32(8) + le32(0) + le32(5) + "LIST" + le32(12) + "fram"
                                         + "icon" + le32(0))
        << "missing frame";
    QTest::newRow("ani icon that is not an icon")
        << QByteArray("ani") << riffAcon(aniHeader(1, 1) + "LIST" + le32(16) + "fram" + "icon" + le32(4) + "junk")
        << "cannot be read";

    QTest::newRow("clp unknown file id") << QByteArray("clp") << le16(0x1234) + le16(1) << "Not a";
    QTest::newRow("clp directory cut") << QByteArray("clp") << le16(0xC350) + le16(3) + QByteArray(20, 0)
                                       << "directory";
    QTest::newRow("clp only text") << QByteArray("clp") << clpFile(1, 4, 93, "text") << "no picture";
    QTest::newRow("clp only a device bitmap") << QByteArray("clp") << clpFile(2, 4, 93, "bits") << "device-dependent";
    QTest::newRow("clp offset past the end") << QByteArray("clp") << clpFile(8, 40, 5000, {}) << "truncated";
    const QByteArray dibHeader = le32(40) + le32(30000) + le32(30000) + le16(1) + le16(24) + le32(0) + le32(0)
        + le32(0) + le32(0) + le32(0) + le32(0);
    QTest::newRow("clp dib 30000 x 30000") << QByteArray("clp") << clpFile(8, 40, 93, dibHeader) << "too large";
    const QByteArray smallDib = le32(40) + le32(100) + le32(100) + le16(1) + le16(24) + le32(0) + le32(0) + le32(0)
        + le32(0) + le32(0) + le32(0) + QByteArray(300, 0);
    QTest::newRow("clp dib pixels cut") << QByteArray("clp") << clpFile(8, 340, 93, smallDib) << "truncated";
    QTest::newRow("clp dib zero width")
        << QByteArray("clp") << clpFile(8, 40, 93, le32(40) + le32(0) + le32(5) + le16(1) + le16(8) + QByteArray(24, 0))
        << "no width";

    QTest::newRow("flc header cut") << QByteArray("flc") << flcHeader(1, 8, 8).left(100) << "shorter";
    QTest::newRow("flc wrong magic") << QByteArray("flc") << QByteArray(128, 'x') << "Not a flic";
    QTest::newRow("flc zero frames") << QByteArray("flc") << flcHeader(0, 8, 8) << "not valid";
    QTest::newRow("flc zero size") << QByteArray("flc") << flcHeader(1, 0, 0) << "not valid";
    QTest::newRow("flc depth 16") << QByteArray("flc") << flcHeader(1, 8, 8, 16) << "not valid";
    QTest::newRow("flc 65535 x 65535") << QByteArray("flc") << flcHeader(1, 65535, 65535) + flcFrame({}, 0)
                                       << "too large";
    QTest::newRow("flc 60000 frames claimed") << QByteArray("flc") << flcHeader(60000, 8, 8) + flcFrame({}, 0)
                                              << "too many";
    QTest::newRow("flc frames missing") << QByteArray("flc") << flcHeader(3, 8, 8) + flcFrame({}, 0) << "truncated";
    QTest::newRow("flc frame chunk cut") << QByteArray("flc") << flcHeader(1, 8, 8) + flcFrame(QByteArray(30, 1), 1).chopped(10)
                                         << "truncated";
    QTest::newRow("flc byte run past the line")
        << QByteArray("flc") << flcHeader(1, 8, 1) + flcFrame(flcChunk(15, QByteArray("\x01\x7f\x05", 3)), 1) << "damaged";
    QTest::newRow("flc byte run cut")
        << QByteArray("flc") << flcHeader(1, 8, 2) + flcFrame(flcChunk(15, QByteArray("\x01\x08\x05", 3)), 1) << "damaged";
    QTest::newRow("flc word delta skips past the bottom")
        << QByteArray("flc") << flcHeader(1, 8, 2) + flcFrame(flcChunk(7, le16(1) + le16(0x10000 - 5) + le16(0)), 1)
        << "damaged";
    QTest::newRow("flc byte delta below the bottom")
        << QByteArray("flc") << flcHeader(1, 8, 2) + flcFrame(flcChunk(12, le16(1) + le16(4)), 1) << "damaged";
    QTest::newRow("flc copy chunk short")
        << QByteArray("flc") << flcHeader(1, 8, 8) + flcFrame(flcChunk(16, QByteArray(10, 1)), 1) << "damaged";
    QTest::newRow("flc sub-chunk longer than its frame")
        << QByteArray("flc") << flcHeader(1, 8, 8) + flcFrame(le32(500) + le16(16), 1) << "damaged";

    QTest::newRow("cut header cut") << QByteArray("cut") << le16(8) << "shorter";
    QTest::newRow("cut zero size") << QByteArray("cut") << le16(0) + le16(0) + le16(0) << "valid";
    QTest::newRow("cut 65535 x 65535 in 6 bytes") << QByteArray("cut") << le16(65535) + le16(65535) + le16(0)
                                                  << "truncated";
    QTest::newRow("cut line past the width")
        << QByteArray("cut") << le16(4) + le16(1) + le16(0) + le16(3) + QByteArray("\x85\x01\x00", 3) << "damaged";
    QTest::newRow("cut line without end code")
        << QByteArray("cut") << le16(4) + le16(1) + le16(0) + le16(2) + QByteArray("\x84\x01\x00", 3) << "damaged";

    QTest::newRow("mac header cut") << QByteArray("mac") << QByteArray(300, 0) << "shorter";
    QTest::newRow("mac version 7") << QByteArray("mac") << be32(7) + QByteArray(1000, 0) << "version";
    QTest::newRow("mac lines missing") << QByteArray("mac") << QByteArray(512, 0) + QByteArray("\xB9\x00", 2).repeated(50)
                                       << "truncated";
    QTest::newRow("mac line runs past 72 bytes")
        << QByteArray("mac") << QByteArray(512, 0) + QByteArray("\xB8\x00", 2) + QByteArray(3000, 0) << "damaged";
}

void TestCodecMalformed::generated()
{
    QFETCH(QByteArray, format);
    QFETCH(QByteArray, data);
    QFETCH(QString, expected);
    const codectest::Decoded decoded = codectest::decode(format, data);
    QVERIFY2(!decoded.ok(), "a damaged file was read as a picture");
    QVERIFY2(decoded.error.contains(expected, Qt::CaseInsensitive), qPrintable(decoded.error));
}

void TestCodecMalformed::fixtures_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<QString>("expected");
    QTest::newRow("ani cut at 4096 of 77360 bytes") << "malformed/ANI/animated_cursor.ani" << QByteArray("ani")
                                                    << "truncated";
    QTest::newRow("msp with a wrong checksum") << "malformed/MSP/hopper_bad_checksum.msp" << QByteArray("msp")
                                               << "checksum";
    QTest::newRow("installer patch named msp") << "malformed/MSP/Patch_full.msp" << QByteArray("msp") << "Not a";
    // Files of other formats given to our handlers.
    QTest::newRow("png given as flc") << "IFF/flag_ham6.png" << QByteArray("flc") << "Not a flic";
    QTest::newRow("flc given as iff") << "FLC/2422.flc" << QByteArray("iff") << "Not an IFF";
    QTest::newRow("iff given as ani") << "IFF/testcard_rlepbm.iff" << QByteArray("ani") << "Not an";
}

void TestCodecMalformed::fixtures()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    QFETCH(QString, expected);
    if (!QFile::exists(fixtures::path(file)))
        QSKIP("sample missing from the corpus");
    const codectest::Decoded decoded = codectest::decodeFile(format, fixtures::path(file));
    QVERIFY(!decoded.ok());
    QVERIFY2(decoded.error.contains(expected, Qt::CaseInsensitive), qPrintable(decoded.error));
}

void TestCodecMalformed::truncatedSamples_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    QTest::addColumn<double>("keep"); // share of the file kept
    QTest::newRow("flc cut in half") << "FLC/2422.flc" << QByteArray("flc") << 0.5;
    QTest::newRow("flc cut at 90%") << "FLC/2422.flc" << QByteArray("flc") << 0.9;
    QTest::newRow("iff ham6 cut in half") << "IFF/flag_ham6.iff" << QByteArray("iff") << 0.5;
    QTest::newRow("iff 24 planes cut at 90%") << "IFF/ps_testcard_rgb_amiga.iff" << QByteArray("iff") << 0.9;
    QTest::newRow("iff pbm cut at 90%") << "IFF/testcard_rlepbm.iff" << QByteArray("iff") << 0.9;
    QTest::newRow("ani cut in half") << "ANI/test.ani" << QByteArray("ani") << 0.5;
    QTest::newRow("msp cut in half") << "MSP/hopper.msp" << QByteArray("msp") << 0.5;
}

void TestCodecMalformed::truncatedSamples()
{
    REQUIRE_FIXTURES();
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    QFETCH(double, keep);
    QFile in(fixtures::path(file));
    if (!in.open(QIODevice::ReadOnly))
        QSKIP("sample missing from the corpus");
    const QByteArray whole = in.readAll();
    // The cut copy lives only in memory.
    const QByteArray cut = whole.left(qsizetype(whole.size() * keep));
    const codectest::Decoded decoded = codectest::decode(format, cut);
    QVERIFY(!decoded.ok());
    QVERIFY2(decoded.error.contains("truncated", Qt::CaseInsensitive), qPrintable(decoded.error));
}

void TestCodecMalformed::fuzzRegressions_data()
{
    QTest::addColumn<QString>("file");
    QTest::addColumn<QByteArray>("format");
    // Inputs that once crashed or hung a reader under the fuzzer; the file
    // name says which reader (regressions/<format>/<what it found>).
    const QDir root(QStringLiteral(TARNBY_CODEC_REGRESSIONS));
    for (const QString &format : root.entryList(QDir::Dirs | QDir::NoDotAndDotDot, QDir::Name)) {
        for (const QFileInfo &info : QDir(root.filePath(format)).entryInfoList(QDir::Files, QDir::Name))
            QTest::newRow(qPrintable(format + '/' + info.fileName())) << info.filePath() << format.toLatin1();
    }
    if (root.entryList(QDir::Dirs | QDir::NoDotAndDotDot).isEmpty())
        QTest::newRow("no regression inputs") << QString() << QByteArray();
}

void TestCodecMalformed::fuzzRegressions()
{
    QFETCH(QString, file);
    QFETCH(QByteArray, format);
    if (file.isEmpty())
        QSKIP("the fuzzers have found nothing to keep");
    // Inputs kept from the recognition target go through sniff() first, then
    // through the reader it names, as that target does.
    if (format == "sniff") {
        QFile device(file);
        QVERIFY(device.open(QIODevice::ReadOnly));
        format = tarnby::imaging::codecs::sniff(&device);
        QCOMPARE(device.pos(), 0);
        if (format.isEmpty())
            return;
    }
    // Reaching the end without a sanitizer report is the test; a damaged
    // input must also say why it failed.
    const codectest::Decoded decoded = codectest::decodeFile(format, file);
    if (!decoded.ok())
        QVERIFY2(!decoded.error.isEmpty(), "failed without a message");
}

QTEST_GUILESS_MAIN(TestCodecMalformed)
#include "tst_codecmalformed.moc"
