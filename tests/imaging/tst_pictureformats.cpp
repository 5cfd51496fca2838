#include "core/catalogue/FileCatalogue.h"
#include "core/platform/imaging/PictureFormats.h"

#include <QTest>

using namespace tarnby::imaging;

class TestPictureFormats : public QObject
{
    Q_OBJECT

private slots:
    void formatName_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("name");
        QTest::newRow("86 is one letter short") << 86 << "Tagged Image File LZW Compressed Forma";
        QTest::newRow("17 is spelled in full") << 17 << "Tagged Image File LZW Compressed Format";
        QTest::newRow("6 is Bitmap Format, never Windows BMP") << 6 << "Bitmap Format";
        QTest::newRow("9 shares the bitmap name") << 9 << "Bitmap Format";
        QTest::newRow("first of a group of four") << 50 << "CALS Raster Format";
        QTest::newRow("last of a group of four") << 129 << "CALS Raster Format";
        QTest::newRow("58 is multipage PCX") << 58 << "Multipage PCX";
        QTest::newRow("75 is PNG") << 75 << "Portable Network Graphics";
        QTest::newRow("102 is PBM") << 102 << "Portable Bitmap Utilities Format";
        QTest::newRow("74 ends the list") << 74 << "OS/2 BMP version 2.x";
        QTest::newRow("119 starts the list") << 119 << "ANI File Format";
        QTest::newRow("15 is a metafile") << 15 << "Meta File Format";
        QTest::newRow("SGI's save code is not listed") << 142 << "Unknown format";
        QTest::newRow("XPM's save code is not listed") << 109 << "Unknown format";
        QTest::newRow("zero") << 0 << "Unknown format";
        QTest::newRow("negative") << -1 << "Unknown format";
    }
    void formatName()
    {
        QFETCH(int, code);
        QFETCH(QString, name);
        QCOMPARE(tarnby::imaging::formatName(code), name);
    }

    // The table covers every picture extension of the catalogue and agrees
    // with its save codes, so that loading, saving and listing cannot drift.
    void tableCoversTheCatalogue()
    {
        using namespace tarnby::catalogue;
        QStringList expected;
        for (int i = 0; i <= LastPictureIndex; ++i)
            expected << QLatin1String(KnownExtensionTable[size_t(i)]);
        expected << QStringLiteral("MAC") << QStringLiteral("IMG") << QStringLiteral("MSP") << QStringLiteral("DIC");
        QStringList listed;
        for (const PictureFormat &f : pictureFormats()) {
            listed << QLatin1String(f.extension);
            QCOMPARE(f.code, GetSaveFormatCode(QLatin1String(f.extension)));
            if (f.reader == Route::None)
                QVERIFY2(f.refusal, f.extension); // a format nobody reads says why
        }
        QCOMPARE(listed, expected);
    }

    void writerForCode_data()
    {
        QTest::addColumn<int>("code");
        QTest::addColumn<QString>("extension");
        QTest::newRow("PBM's code writes PNG") << 75 << "PNG";
        QTest::newRow("DCX's code writes PCX") << 1 << "PCX";
        QTest::newRow("JPE's code writes JPG") << 10 << "JPG";
        QTest::newRow("TIF and MPT write TIFF") << 3 << "TIFF";
        QTest::newRow("cut") << 108 << "CUT";
        QTest::newRow("sgi") << 142 << "SGI";
        QTest::newRow("unknown code") << 999 << "";
        QTest::newRow("zero") << 0 << "";
    }
    void writerForCode()
    {
        QFETCH(int, code);
        QFETCH(QString, extension);
        const PictureFormat *f = formatForCode(code);
        QCOMPARE(f ? QString::fromLatin1(f->extension) : QString(), extension);
    }

    void sniff_data()
    {
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<QString>("extension");
        QByteArray bmp("BM");
        bmp.append(12, '\0');
        bmp.append("\x28\0\0\0", 4);
        bmp.append(40, '\0');
        QTest::newRow("bitmap") << bmp << "BMP";
        QTest::newRow("png") << QByteArray("\x89PNG\r\n\x1a\n\0\0\0\rIHDR", 16) << "PNG";
        QTest::newRow("jpeg") << QByteArray("\xFF\xD8\xFF\xE0\0\x10JFIF", 10) << "JPG";
        QTest::newRow("little-endian tiff") << QByteArray("II*\0\x08\0\0\0", 8) << "TIF";
        QTest::newRow("bigtiff") << QByteArray("II+\0\x08\0\0\0", 8) << "TIF";
        QTest::newRow("plain bitmap P1") << QByteArray("P1\n1 1\n0\n") << "PBM";
        QTest::newRow("pixmap P6") << QByteArray("P6 1 1 255\n\0\0\0", 14) << "PBM";
        QTest::newRow("photoshop") << QByteArray("8BPS\0\x01") << "PSD";
        QTest::newRow("postscript") << QByteArray("%!PS-Adobe-3.0 EPSF-3.0\n") << "EPS";
        QTest::newRow("dos eps") << QByteArray("\xC5\xD0\xD3\xC6\x1e\0\0\0", 8) << "EPS";
        QTest::newRow("animated cursor") << QByteArray("RIFF\x10\0\0\0ACONanih", 16) << "ANI";
        QTest::newRow("ilbm") << QByteArray("FORM\0\0\0\x10ILBMBMHD", 16) << "IFF";
        QTest::newRow("paint v1") << QByteArray("DanM\x10\0\x10\0", 8) << "MSP";
        QTest::newRow("flic") << QByteArray("\0\x10\0\0\x12\xAF\x01\0", 8) << "FLC";
        QTest::newRow("ole2 container: the extension decides") << QByteArray("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1", 8) << "";
        QTest::newRow("dxf section") << QByteArray("  0\nSECTION\n  2\nHEADER\n") << "DXF";
        QTest::newRow("sun raster") << QByteArray("\x59\xA6\x6A\x95\0\0\0\x01", 8) << "RAS";
        QTest::newRow("plain text") << QByteArray("hello, world\n") << "";
        QTest::newRow("one byte") << QByteArray("B") << "";
    }
    void sniff()
    {
        QFETCH(QByteArray, head);
        QFETCH(QString, extension);
        const PictureFormat *f = sniffFormat(head);
        QCOMPARE(f ? QString::fromLatin1(f->extension) : QString(), extension);
    }

    void fileFormatNumber_data()
    {
        QTest::addColumn<QString>("extension");
        QTest::addColumn<QByteArray>("head");
        QTest::addColumn<int>("number");
        QTest::newRow("P4 is PBM") << "PBM" << QByteArray("P4\n") << 102;
        QTest::newRow("P2 is ASCII PGM") << "PBM" << QByteArray("P2\n") << 104;
        QTest::newRow("P5 is binary PGM") << "PBM" << QByteArray("P5\n") << 105;
        QTest::newRow("P6 is binary PPM") << "PBM" << QByteArray("P6\n") << 107;
        QTest::newRow("DCX is multipage PCX") << "DCX" << QByteArray() << 58;
        QByteArray os2("BM");
        os2.append(12, '\0');
        os2.append("\x0c\0\0\0", 4);
        os2.append(20, '\0');
        QTest::newRow("OS/2 1.x bitmap") << "BMP" << os2 << 14;
        QByteArray rle("BM");
        rle.append(12, '\0');
        rle.append("\x28\0\0\0", 4);
        rle.append(12, '\0');
        rle.append("\x02\0\0\0", 4);
        QTest::newRow("RLE4 bitmap") << "BMP" << rle << 84;
        QTest::newRow("PNG keeps its code") << "PNG" << QByteArray("\x89PNG") << 75;
    }
    void fileFormatNumber()
    {
        QFETCH(QString, extension);
        QFETCH(QByteArray, head);
        QFETCH(int, number);
        const PictureFormat *f = formatForExtension(extension);
        QVERIFY(f);
        QCOMPARE(tarnby::imaging::fileFormatNumber(*f, head), number);
    }
};

QTEST_GUILESS_MAIN(TestPictureFormats)
#include "tst_pictureformats.moc"
