#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QStringList>

// Small Excel workbooks built record by record, and the compound file that
// holds them, for the tests and the fuzz seeds.
namespace xlssamples {

QByteArray record(quint16 type, const QByteArray &data);
QByteArray le16(quint16 v);
QByteArray le32(quint32 v);
QByteArray le64double(double v);

// Cell records of BIFF 5 and 8 (xf numbers an XF of the workbook).
QByteArray number(quint16 row, quint16 column, quint16 xf, double value);
QByteArray rk(quint16 row, quint16 column, quint16 xf, quint32 rkValue);
QByteArray mulRk(quint16 row, quint16 firstColumn, const QList<quint32> &rkValues, quint16 xf = 0);
QByteArray labelSst(quint16 row, quint16 column, quint32 index);
// LABEL: in BIFF 8 a Unicode string, in BIFF 5 bytes in the code page.
QByteArray label8(quint16 row, quint16 column, const QString &text);
QByteArray label5(quint16 row, quint16 column, const QByteArray &bytes);
QByteArray boolErr(quint16 row, quint16 column, quint8 value, bool error);
QByteArray blank(quint16 row, quint16 column);
QByteArray formulaNumber(quint16 row, quint16 column, quint16 xf, double value);
// A formula with a text result, and the STRING record after it (BIFF 8).
QByteArray formulaText(quint16 row, quint16 column, const QString &text);
QByteArray dimensions8(quint32 rows, quint16 columns);

struct Sheet {
    QString name;
    QList<QByteArray> records; // between the sheet's BOF and EOF
    quint8 type = 0;           // BOUNDSHEET type: 0 worksheet, 2 chart
};

struct Workbook {
    int version = 8; // 8 or 5
    QList<Sheet> sheets;
    QStringList sst; // shared strings (BIFF 8)
    int sstPiece = 8224; // largest SST or CONTINUE record data: smaller splits strings
    int richStrings = -1; // this SST string carries two formatting runs
    QList<QPair<quint16, QString>> formats; // FORMAT records
    QList<quint16> xfFormats{0};            // one XF per entry, naming a format
    bool system1904 = false;
    quint16 codePage = 1252; // BIFF 5
    bool encrypted = false;  // a FILEPASS record after the BOF
};

// The workbook stream ("Workbook" in BIFF 8, "Book" in BIFF 5).
QByteArray workbookStream(const Workbook &w);

// A compound file of 512-byte sectors holding one stream; streams shorter
// than 4096 bytes go to the mini stream. Where things are, for tests that
// damage it.
struct Compound {
    QByteArray bytes;
    qsizetype fatOffset = 0;     // file offset of the allocation table
    qsizetype entryOffset = 0;   // file offset of the stream's directory entry
    QList<quint32> chain;        // the stream's sectors (regular or mini)
    bool inMiniStream = false;
    qsizetype miniFatOffset = 0; // file offset of the mini allocation table
};
Compound compoundFile(const QByteArray &stream, const QString &streamName = QStringLiteral("Workbook"));

// A whole .xls file.
QByteArray xlsFile(const Workbook &w);

} // namespace xlssamples
