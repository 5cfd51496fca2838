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
    if (!m_device || block == 0)
        return {};
    // Block numbers come from the records: refuse any whose offset is not
    // inside the file before multiplying into something that overflows.
    if (block > quint64(m_size) / quint64(m_blockSize))
        return {};
    const qint64 offset = qint64(block) * m_blockSize;
    if (offset >= m_size)
        return {};

    if (m_layout == MemoLayout::FoxPro) {
        const QByteArray prefix = readAt(offset, 8);
        if (prefix.size() < 8)
            return {};
        const quint32 length = qFromBigEndian<quint32>(prefix.constData() + 4);
        const qint64 available = m_size - offset - 8;
        const qint64 wanted = qMin(qMin<qint64>(length, available), maxMemoBytes);
        return wanted > 0 ? readAt(offset + 8, wanted) : QByteArray("");
    }

    if (m_layout == MemoLayout::DbaseIV) {
        const QByteArray prefix = readAt(offset, 8);
        if (prefix.size() == 8 && uchar(prefix[0]) == 0xFF && uchar(prefix[1]) == 0xFF && prefix[2] == 0x08
            && prefix[3] == 0x00) {
            // The length counts the eight bytes of the prefix.
            const quint32 length = qFromLittleEndian<quint32>(prefix.constData() + 4);
            const qint64 available = m_size - offset - 8;
            const qint64 wanted = qMin(qMin<qint64>(qint64(length) - 8, available), maxMemoBytes);
            return wanted > 0 ? readAt(offset + 8, wanted) : QByteArray("");
        }
        // Tables converted from dBASE III keep their old memos: read those
        // the old way.
    }
    return readUntilEndMark(offset);
}

QByteArray DbfMemoFile::readAt(qint64 offset, qint64 length)
{
    const bool inside = m_windowOffset >= 0 && offset >= m_windowOffset
        && offset + length <= m_windowOffset + m_window.size();
    if (!inside) {
        if (length > windowSize) {
            // A long memo is read on its own, around the window.
            if (!m_device->seek(offset))
                return {};
            return m_device->read(length);
        }
        if (!m_device->seek(offset))
            return {};
        m_window = m_device->read(windowSize);
        m_windowOffset = offset;
    }
    const qint64 start = offset - m_windowOffset;
    return m_window.mid(start, qMin<qint64>(length, m_window.size() - start));
}

// dBASE III memos end at an end-of-text byte (0x1A, written twice); they
// carry no length, so the memo is read in blocks until the mark, the file's
// end or the size limit.
QByteArray DbfMemoFile::readUntilEndMark(qint64 offset)
{
    if (!m_device->seek(offset))
        return {};
    QByteArray memo("");
    while (memo.size() < maxMemoBytes) {
        const QByteArray chunk = m_device->read(qMin<qint64>(4096, maxMemoBytes - memo.size()));
        if (chunk.isEmpty())
            break;
        const qsizetype end = chunk.indexOf('\x1A');
        if (end >= 0) {
            memo.append(chunk.constData(), end);
            break;
        }
        memo.append(chunk);
    }
    return memo;
}

} // namespace tarnby::tables
