#pragma once

#include <QByteArray>
#include <QList>
#include <QStringList>

// Small dBASE tables, memo and index files built byte by byte, for the tests
// and the fuzz seeds. Each builder writes what a real writer would, so that a
// test can then spoil one detail.
namespace dbfsamples {

struct FieldSpec {
    QByteArray name;
    char type = 'C';
    int length = 10;
    int decimals = 0;
    quint8 flags = 0; // Visual FoxPro's field flags
};

struct TableSpec {
    quint8 version = 0x03;
    quint8 codePage = 0;
    QList<FieldSpec> fields;
    QList<QList<QByteArray>> records; // raw cell bytes, padded to the field length
    QList<int> deleted;              // record numbers marked deleted
    qint64 announcedRecords = -1;    // the header's record count, when not records.size()
};

QByteArray table(const TableSpec &tableLayout);

// A cell's bytes: text left-aligned and padded with blanks to length;
// numbers right-aligned.
QByteArray text(const QByteArray &value, int length);
QByteArray number(const QByteArray &value, int length);
QByteArray memoPointer(int block);  // ten ASCII digits
QByteArray littleEndian32(quint32 value);

// Memo files; each memo starts at the block whose number the list gives
// back in blocks (when non-null).
QByteArray dbaseIIIMemo(const QList<QByteArray> &memos, QList<int> *blocks);
QByteArray dbaseIVMemo(const QList<QByteArray> &memos, int blockSize, QList<int> *blocks);
QByteArray foxProMemo(const QList<QByteArray> &memos, int blockSize, QList<int> *blocks);

// Index files naming these tags, with their key expressions.
struct TagSpec {
    QString name;
    QByteArray expression;
    bool descending = false;
};
QByteArray mdxIndexWithKeys(const QList<TagSpec> &tags);
QByteArray cdxIndexWithKeys(const QList<TagSpec> &tags);
// The same with the tag names only (no expressions).
QByteArray mdxIndex(const QStringList &tags);
QByteArray cdxIndex(const QStringList &tags);

} // namespace dbfsamples
