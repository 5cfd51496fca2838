#include "DbfMemo.h"

#include <QtEndian>

namespace tarnby::tables {

DbfMemoFile::DbfMemoFile(std::unique_ptr<QIODevice> device, MemoLayout layout)
    : m_device(std::move(device))
    , m_layout(layout)
{
    m_size = m_device ? m_device->size() : 0;
    QByteArray header;
    if (m_device && m_device->seek(0))
        header = m_device->read(32);
    if (header.size() < 8)
        return;
    const auto *h = reinterpret_cast<const uchar *>(header.constData());
    switch (m_layout) {
    case MemoLayout::DbaseIII:
        // dBASE III always uses 512-byte blocks; the header holds only the
        // next free block.
        m_blockSize = 512;
        break;
    case MemoLayout::DbaseIV: {
        const quint16 size = header.size() >= 22 ? qFromLittleEndian<quint16>(h + 20) : 0;
        m_blockSize = size >= 64 ? size : 512;
        break;
    }
    case MemoLayout::FoxPro: {
        // FoxPro allows blocks of any size from 1 byte; 0 is what damaged or
        // hand-made files hold, and FoxPro's default is 64.
        const quint16 size = qFromBigEndian<quint16>(h + 6);
        m_blockSize = size > 0 ? size : 64;
        break;
    }
    }
}

QByteArray DbfMemoFile::read(quint64 block)
{
    const QByteArrayView memo = view(block);
    return memo.isNull() ? QByteArray() : memo.toByteArray();
}

QByteArrayView DbfMemoFile::view(quint64 block)
{
    if (!m_device || block == 0)
        return {};
    // Block numbers come from the records: refuse any whose offset is not
    // inside the file before multiplying into something that overflows.
    if (block > quint64(m_size) / quint64(m_blockSize))
        return {};
    const qint64 offset = qint64(block) * m_blockSize;
    if (offset >= m_size)
        return {};
    static constexpr char empty[] = "";

    if (m_layout == MemoLayout::FoxPro) {
        const QByteArrayView prefix = viewAt(offset, 8);
        if (prefix.size() < 8)
            return {};
        const quint32 length = qFromBigEndian<quint32>(prefix.data() + 4);
        const qint64 available = m_size - offset - 8;
        const qint64 wanted = qMin(qMin<qint64>(length, available), maxMemoBytes);
        return wanted > 0 ? viewAt(offset + 8, wanted) : QByteArrayView(empty, 0);
    }

    if (m_layout == MemoLayout::DbaseIV) {
        const QByteArrayView prefix = viewAt(offset, 8);
        if (prefix.size() == 8 && uchar(prefix[0]) == 0xFF && uchar(prefix[1]) == 0xFF && prefix[2] == 0x08
            && prefix[3] == 0x00) {
            // The length counts the eight bytes of the prefix.
            const quint32 length = qFromLittleEndian<quint32>(prefix.data() + 4);
            const qint64 available = m_size - offset - 8;
            const qint64 wanted = qMin(qMin<qint64>(qint64(length) - 8, available), maxMemoBytes);
            return wanted > 0 ? viewAt(offset + 8, wanted) : QByteArrayView(empty, 0);
        }
        // Tables converted from dBASE III keep their old memos: read those
        // the old way.
    }
    return viewUntilEndMark(offset);
}

QByteArrayView DbfMemoFile::viewAt(qint64 offset, qint64 length)
{
    const bool inside = m_windowOffset >= 0 && offset >= m_windowOffset
        && offset + length <= m_windowOffset + m_window.size();
    if (!inside) {
        if (!m_device->seek(offset))
            return {};
        if (length > windowSize) {
            // A long memo is read on its own, around the window.
            m_long.resize(length);
            const qint64 got = m_device->read(m_long.data(), length);
            m_long.resize(qMax<qint64>(got, 0));
            return m_long;
        }
        m_window.resize(windowSize);
        const qint64 got = m_device->read(m_window.data(), windowSize);
        m_window.resize(qMax<qint64>(got, 0));
        m_windowOffset = offset;
    }
    const qint64 start = offset - m_windowOffset;
    return QByteArrayView(m_window).sliced(start, qMin<qint64>(length, m_window.size() - start));
}

// dBASE III memos end at an end-of-text byte (0x1A, written twice); they
// carry no length, so the memo is read in blocks until the mark, the file's
// end or the size limit.
QByteArrayView DbfMemoFile::viewUntilEndMark(qint64 offset)
{
    m_long.resize(0);
    if (!m_device->seek(offset))
        return {};
    char chunk[4096];
    while (m_long.size() < maxMemoBytes) {
        const qint64 got = m_device->read(chunk, qMin<qint64>(sizeof chunk, maxMemoBytes - m_long.size()));
        if (got <= 0)
            break;
        const QByteArrayView piece(chunk, got);
        const qsizetype end = piece.indexOf('\x1A');
        if (end >= 0) {
            m_long.append(piece.first(end));
            break;
        }
        m_long.append(piece);
    }
    return QByteArrayView(m_long.constData(), m_long.size());
}

} // namespace tarnby::tables
