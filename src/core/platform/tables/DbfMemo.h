#pragma once

#include <QByteArray>
#include <QIODevice>

#include <memory>

// The memo files beside a dBASE table: ".dbt" in the dBASE III layout (512-byte
// blocks, a memo runs to its end-of-text mark), ".dbt" in the dBASE IV layout
// (block size in the header, each memo starts with its length) and ".fpt" of
// FoxPro (big-endian header and block prefixes). A record names a memo by its
// first block.
//
// A memo is read with one seek and reads bounded by the file's end and by
// maxMemoBytes, so a hostile pointer or length costs at most that much.
namespace tarnby::tables {

enum class MemoLayout { DbaseIII, DbaseIV, FoxPro };

class DbfMemoFile
{
public:
    // Memos larger than this are cut at it.
    static constexpr qint64 maxMemoBytes = 64LL * 1024 * 1024;

    // Takes the open device; reads the header to learn the block size (a
    // header that names none, or an absurd one, falls back to the layout's
    // usual size).
    DbfMemoFile(std::unique_ptr<QIODevice> device, MemoLayout layout);

    MemoLayout layout() const { return m_layout; }
    qint64 blockSize() const { return m_blockSize; }

    // The memo starting at block; null (a default QByteArray) when block is 0,
    // lies beyond the file's end or cannot be read.
    QByteArray read(quint64 block);
    // The same without a copy: the view is valid until the next call, and
    // null where read gives a null array.
    QByteArrayView view(quint64 block);

private:
    QByteArrayView viewUntilEndMark(qint64 offset);
    // Up to length bytes at offset (fewer at the file's end), served from a
    // window of the file kept from the last read: memos are mostly read in
    // file order, so one read of the file serves many of them. Valid until
    // the next call.
    QByteArrayView viewAt(qint64 offset, qint64 length);

    static constexpr qint64 windowSize = 64 * 1024;
    QByteArray m_window;
    qint64 m_windowOffset = -1;
    QByteArray m_long; // a memo longer than the window

    std::unique_ptr<QIODevice> m_device;
    MemoLayout m_layout;
    qint64 m_size = 0;
    qint64 m_blockSize = 512;
};

} // namespace tarnby::tables
