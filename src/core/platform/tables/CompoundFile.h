#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Streams out of an OLE2 compound file (the container of ".xls" workbooks
// and of other Office files of the 1990s): the header, the sector allocation
// table with its extension sectors, the directory and the mini stream for
// small streams. The file is in memory; every chain is checked against the
// file (sector numbers inside it, no sector visited twice, a stream's size
// within its chain), so nothing allocated is larger than the file itself.
namespace tarnby::tables {

// The first bytes of every compound file.
bool isCompoundFile(const QByteArray &file);

struct CompoundStream {
    QByteArray data;
    QString errorString; // empty when data is the stream; otherwise why not
    bool ok() const { return errorString.isEmpty(); }
};

// The first stream (at any depth of the directory) whose name is one of
// names, compared without regard to case, tried in the order of names.
CompoundStream readCompoundStream(const QByteArray &file, const QStringList &names);

} // namespace tarnby::tables
