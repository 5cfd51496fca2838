// Writes the seed corpus of the codec fuzz targets into a folder: one
// sub-folder per target, small files made by our own sample builders.
//   make_fuzz_seeds <seeds folder>
#include "CodecSamples.h"
#include "CodecTestUtil.h"
#include "DbfSamples.h"
#include "FlashPixSamples.h"
#include "FuzzTables.h"
#include "ParadoxSamples.h"
#include "XlsSamples.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>

namespace {

QImage indexedPicture(int width, int height, int colours)
{
    return codecsamples::indexedPicture(width, height, colours, [](int x, int y) { return (x / 3) ^ (y / 2); });
}

void save(const QString &folder, const QString &name, const QByteArray &data)
{
    QDir().mkpath(folder);
    QFile file(folder + '/' + name);
    if (file.open(QIODevice::WriteOnly))
        file.write(data);
}

// dBASE tables with memos of each layout and an index of each kind.
void saveDbfSeeds(const QString &folder)
{
    using dbfsamples::FieldSpec;
    const QList<QByteArray> memos = {"a memo", QByteArray(700, 'm'), "last"};
    for (int layout = 0; layout < 3; ++layout) {
        QList<int> blocks;
        const QByteArray memo = layout == 0 ? dbfsamples::dbaseIIIMemo(memos, &blocks)
            : layout == 1                   ? dbfsamples::dbaseIVMemo(memos, 512, &blocks)
                                            : dbfsamples::foxProMemo(memos, 64, &blocks);
        dbfsamples::TableSpec tableLayout;
        tableLayout.version = layout == 0 ? 0x83 : layout == 1 ? 0x8B : 0xF5;
        tableLayout.codePage = layout == 2 ? 0xC9 : 0x03;
        tableLayout.fields = {FieldSpec{"NAME", 'C', 8}, FieldSpec{"QTY", 'N', 6, 2}, FieldSpec{"WHEN", 'D', 8},
                       FieldSpec{"OK", 'L', 1}, FieldSpec{"NOTES", 'M', 10}};
        for (int i = 0; i < memos.size(); ++i)
            tableLayout.records.append({dbfsamples::text("row\xe9" + QByteArray::number(i), 8), dbfsamples::number("1.25", 6),
                                 QByteArray("20240131"), QByteArray("T"), dbfsamples::memoPointer(blocks[i])});
        tableLayout.deleted = {1};
        save(folder, QStringLiteral("layout%1.bin").arg(layout), fuzztables::pack(layout, false, dbfsamples::table(tableLayout), memo));
    }
    dbfsamples::TableSpec vfp;
    vfp.version = 0x30;
    vfp.fields = {FieldSpec{"ID", 'I', 4}, FieldSpec{"PRICE", 'Y', 8}, FieldSpec{"AT", 'T', 8},
                  FieldSpec{"NOTE", 'M', 4}, FieldSpec{"_NullFlags", '0', 1, 0, 0x05}};
    vfp.records = {{dbfsamples::littleEndian32(7), QByteArray(8, '\x01'), QByteArray(8, '\x02'),
                    dbfsamples::littleEndian32(8), QByteArray(1, '\0')}};
    save(folder, "visual-foxpro.bin",
         fuzztables::pack(2, false, dbfsamples::table(vfp), dbfsamples::foxProMemo({"note"}, 64, nullptr)));
    dbfsamples::TableSpec plain;
    plain.fields = {FieldSpec{"NAME", 'C', 8}};
    plain.records = {{dbfsamples::text("x", 8)}};
    save(folder, "mdx.bin", fuzztables::pack(0, false, dbfsamples::table(plain), dbfsamples::mdxIndex({"NAME", "QTY"})));
    save(folder, "cdx.bin", fuzztables::pack(0, true, dbfsamples::table(plain), dbfsamples::cdxIndex({"NAME", "QTY"})));
}

// Paradox tables: blocks in order and out of it, and a memo file with a
// block of its own and a shared block.
void saveParadoxSeeds(const QString &folder)
{
    QByteArray mb(12288, '\0');
    mb[4096] = 2;
    mb[4097] = 1;
    mb[4099] = char(100);
    mb[8192] = 3;
    mb[8193] = 1;
    mb[8192 + 12] = 5;
    paradoxsamples::Sample ordered;
    save(folder, "ordered.bin", fuzztables::pack(1, false, paradoxsamples::paradoxTable(ordered), mb));
    paradoxsamples::Sample shuffled;
    shuffled.records = 9;
    shuffled.chain = {3, 1, 5, 2, 4};
    save(folder, "shuffled.bin", fuzztables::pack(0, false, paradoxsamples::paradoxTable(shuffled), mb));
    paradoxsamples::Sample amounts;
    amounts.bcd = {paradoxsamples::paradoxBcd("123.45", 2), paradoxsamples::paradoxBcd("-0.5", 2)};
    save(folder, "bcd.bin", fuzztables::pack(0, false, paradoxsamples::paradoxTable(amounts), {}));
}

// Excel workbooks for fuzz_tablefile (selector 1: ".xls"): BIFF 8 with
// shared strings split across CONTINUE records, dates and formulas, and
// BIFF 5 with 8-bit text.
void saveTableFileSeeds(const QString &folder)
{
    using namespace xlssamples;
    Workbook biff8;
    biff8.sst = {QStringLiteral("Name"), QStringLiteral("Born"), QStringLiteral("Ωmega and a long text that goes on")};
    biff8.sstPiece = 24;
    biff8.richStrings = 2;
    biff8.xfFormats = {0, 14, 22};
    biff8.formats << qMakePair(quint16(164), QStringLiteral("dd/mm/yyyy"));
    Sheet data{QStringLiteral("Data"), {labelSst(0, 0, 0), labelSst(0, 1, 1)}};
    for (quint16 r = 1; r < 8; ++r)
        data.records << labelSst(r, 0, 2) << rk(r, 1, 1, (quint32(36526 + r) << 2) | 2) << mulRk(r, 2, {0x3FF80000, 7})
                     << formulaText(r, 4, QStringLiteral("text")) << boolErr(r, 5, 1, false);
    biff8.sheets << data << Sheet{QStringLiteral("Chart"), {}, 2};
    save(folder, "biff8.bin", QByteArray(1, '\x01') + xlsFile(biff8));
    Workbook biff5;
    biff5.version = 5;
    biff5.sheets << Sheet{QStringLiteral("Old"), {label5(0, 0, "Caf\xE9"), number(1, 0, 0, 2.5)}};
    save(folder, "biff5.bin", QByteArray(1, '\x01') + xlsFile(biff5));
}

} // namespace

int main(int argc, char **argv)
{
    QCoreApplication app(argc, argv);
    if (argc < 2)
        return 2;
    const QString root = QString::fromLocal8Bit(argv[1]);
    const QImage mono = indexedPicture(21, 9, 2);
    const QImage sixteen = indexedPicture(19, 7, 16);
    const QImage full = indexedPicture(13, 5, 256);
    QImage rgb(9, 6, QImage::Format_RGB32);
    for (int y = 0; y < rgb.height(); ++y)
        for (int x = 0; x < rgb.width(); ++x)
            rgb.setPixel(x, y, qRgb(x * 28, y * 40, (x * y) & 0xff));

    save(root + "/msp", "v1.msp", codecsamples::mspVersion1(mono));
    save(root + "/msp", "v2.msp", codectest::encode("msp", mono));
    save(root + "/img", "mono.img", codecsamples::gemImg(mono, 1, false));
    save(root + "/img", "four-planes.img", codecsamples::gemImg(sixteen, 4, false));
    save(root + "/img", "ximg.img", codecsamples::gemImg(sixteen, 4, true));
    codecsamples::IlbmOptions packed;
    save(root + "/iff", "planes4.iff", codecsamples::ilbm(sixteen, 4, packed));
    save(root + "/iff", "rgb24.iff", codecsamples::ilbm(rgb, 24, packed));
    codecsamples::IlbmOptions pbm;
    pbm.pbm = true;
    save(root + "/iff", "pbm.iff", codecsamples::ilbm(full, 8, pbm));
    save(root + "/iff", "ham6.iff",
         codecsamples::ilbmRaw(4, 2, 6, {0, 0x11, 0x22, 0x33, 0x05, 0x2f, 0x1a, 0x3c},
                               {qRgb(0, 0, 0), qRgb(255, 0, 0)}, 0x800));
    QImage cursor(8, 8, QImage::Format_ARGB32);
    cursor.fill(qRgba(255, 0, 0, 200));
    QImage cursor2 = cursor;
    cursor2.fill(qRgba(0, 0, 255, 255));
    save(root + "/ani", "two-frames.ani", codecsamples::ani({cursor, cursor2}, {0, 1, 0}, {6, 12, 6}, 10));
    save(root + "/clp", "win3.clp", codecsamples::clp(rgb, true));
    save(root + "/clp", "nt-indexed.clp", codecsamples::clp(sixteen, false));
    QImage black = indexedPicture(19, 7, 16);
    black.fill(0);
    save(root + "/flc", "four-frames.flc",
         codecsamples::flic({sixteen, indexedPicture(19, 7, 5).convertToFormat(QImage::Format_Indexed8, sixteen.colorTable()),
                             sixteen, black},
                            100, false));
    save(root + "/flc", "fli.flc", codecsamples::flic({sixteen, black}, 5, true));
    save(root + "/cut", "sixteen.cut", codectest::encode("cut", sixteen));
    save(root + "/mac", "picture.mac", codectest::encode("mac", mono));
    codecsamples::PsdOptions psdRaw;
    psdRaw.packBits = false;
    psdRaw.extraChannels = 1;
    save(root + "/psd", "indexed.psd", codecsamples::psd(sixteen, {}));
    save(root + "/psd", "bitmap-raw.psd", codecsamples::psd(mono.convertToFormat(QImage::Format_Mono), psdRaw));
    codecsamples::PsdOptions psdLarge;
    psdLarge.largeDocument = true;
    psdLarge.transparentIndex = 3;
    save(root + "/psd", "large-indexed.psd", codecsamples::psd(full, psdLarge));
    QImage grey(11, 5, QImage::Format_Grayscale8);
    for (int y = 0; y < grey.height(); ++y)
        for (int x = 0; x < grey.width(); ++x)
            grey.scanLine(y)[x] = uchar(x * 23 + y);
    save(root + "/psd", "grey.psd", codecsamples::psd(grey, {}));
    save(root + "/dcm", "grey8.dcm", codecsamples::dicom(11, 5, 8, QByteArray(55, '\x40')));
    save(root + "/dcm", "grey16.dcm", codecsamples::dicom(7, 3, 16, QByteArray(42, '\x81')));
    // FlashPix: two tiles across and down, the right and bottom ones cut.
    QImage photo(70, 66, QImage::Format_ARGB32);
    for (int y = 0; y < photo.height(); ++y)
        for (int x = 0; x < photo.width(); ++x)
            photo.setPixel(x, y, qRgba(x * 3, y * 3, (x ^ y) & 0xff, 255 - x * 2));
    using namespace fpxsample;
    save(root + "/fpx", "ycc.fpx", flashPix(photo, Channels::PhotoYcc, Tiles::Uncompressed));
    save(root + "/fpx", "ycc-opacity.fpx", flashPix(photo, Channels::PhotoYccOpacity, Tiles::Uncompressed));
    save(root + "/fpx", "grey.fpx", flashPix(photo, Channels::Grey, Tiles::Uncompressed));
    save(root + "/fpx", "rgb-premultiplied.fpx", flashPix(photo, Channels::RgbPremultiplied, Tiles::Uncompressed));
    save(root + "/fpx", "ycc-single-colour.fpx", flashPix(photo, Channels::PhotoYcc, Tiles::SingleColour));
    save(root + "/fpx", "rgb-jpeg.fpx", flashPix(photo, Channels::Rgb, Tiles::Jpeg));
    save(root + "/fpx", "ycc-jpeg.fpx", flashPix(photo, Channels::PhotoYcc, Tiles::Jpeg));
    // JPEG thumbnails: large enough for the eighth-scale road at 64 pixels.
    QImage large(520, 400, QImage::Format_RGB32);
    for (int y = 0; y < large.height(); ++y)
        for (int x = 0; x < large.width(); ++x)
            large.setPixel(x, y, qRgb(x / 2, y / 2, (x ^ y) & 0xff));
    save(root + "/thumbs", "baseline-grey.jpg",
         codecsamples::encoded(large.convertToFormat(QImage::Format_Grayscale8), "JPEG", 40));
    save(root + "/thumbs", "progressive.jpg", codecsamples::encoded(large, "JPEG", 40, true));
    for (const QString &folder : {"msp", "img", "iff", "ani", "clp", "flc", "cut", "mac", "psd", "dcm"}) {
        for (const QFileInfo &info : QDir(root + '/' + folder).entryInfoList(QDir::Files)) {
            QFile in(info.filePath());
            in.open(QIODevice::ReadOnly);
            save(root + "/sniff", folder + '-' + info.fileName(), in.readAll());
        }
    }
    saveDbfSeeds(root + "/dbf");
    saveParadoxSeeds(root + "/paradox");
    saveTableFileSeeds(root + "/tablefile");
    return 0;
}
