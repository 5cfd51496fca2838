#include "DbfIndexTags.h"

#include <QSet>
#include <QtEndian>

namespace tarnby::tables {

namespace {

// A tag name is a dBASE identifier: letters, digits and underscores.
QString tagName(const QByteArray &raw)
{
    QByteArray name = raw;
    const qsizetype nul = name.indexOf('\0');
    if (nul >= 0)
        name.truncate(nul);
    name = name.trimmed();
    if (name.isEmpty())
        return {};
    for (const char c : std::as_const(name)) {
        const bool ok = (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || (c >= '0' && c <= '9') || c == '_';
        if (!ok)
            return {};
    }
    return QString::fromLatin1(name);
}

QByteArray readAt(QIODevice &device, qint64 offset, qint64 length)
{
    if (offset < 0 || offset + length > device.size() || !device.seek(offset))
        return {};
    const QByteArray bytes = device.read(length);
    return bytes.size() == length ? bytes : QByteArray();
}

} // namespace

// The production index has a 544-byte header followed by a table of 32-byte
// tag entries (the tag's header page, then its name in 11 bytes); the header
// says how many entries are in use.
QStringList mdxTagNames(QIODevice &device, int maxTags)
{
    constexpr int tableOffset = 544;
    constexpr int entrySize = 32;
    constexpr int mdxMaxTags = 47;
    QStringList names;
    const QByteArray header = readAt(device, 0, 32);
    if (header.isEmpty())
        return names;
    const int inUse = qMin<int>(qFromLittleEndian<quint16>(header.constData() + 28), qMin(mdxMaxTags, maxTags));
    for (int i = 0; i < inUse; ++i) {
        const QByteArray entry = readAt(device, tableOffset + qint64(i) * entrySize, entrySize);
        const QString name = entry.isEmpty() ? QString() : tagName(entry.mid(4, 11));
        if (name.isEmpty())
            break;
        names << name;
    }
    return names;
}

// A compound index keeps the names of its tags as the keys of a compact
// B-tree of its own, rooted at the node the file header names. The reader
// descends along the first entries to the leftmost leaf, then walks the
// leaves to the right. Node pointers come from the file, so every node is
// checked to lie inside it and none is visited twice.
QStringList cdxTagNames(QIODevice &device, int maxTags)
{
    constexpr int nodeSize = 512;
    QStringList names;
    const QByteArray header = readAt(device, 0, 16);
    if (header.isEmpty())
        return names;
    const auto *h = reinterpret_cast<const uchar *>(header.constData());
    quint32 node = qFromLittleEndian<quint32>(h);
    const int keyLength = qFromLittleEndian<quint16>(h + 12);
    if (keyLength <= 0 || keyLength > 240)
        return names;

    QSet<quint32> visited;
    QByteArray bytes;
    // Down to the leftmost leaf.
    for (int depth = 0;; ++depth) {
        if (depth > 32 || visited.contains(node))
            return names;
        visited.insert(node);
        bytes = readAt(device, node, nodeSize);
        if (bytes.isEmpty())
            return names;
        const auto *n = reinterpret_cast<const uchar *>(bytes.constData());
        const quint16 attributes = qFromLittleEndian<quint16>(n);
        if (attributes & 0x02)
            break;
        const quint16 keys = qFromLittleEndian<quint16>(n + 2);
        if (keys == 0 || 12 + keyLength + 8 > nodeSize)
            return names;
        node = qFromBigEndian<quint32>(n + 12 + keyLength + 4);
    }

    // Along the leaves. A compact leaf stores, after a 24-byte header, one
    // fixed-size packed entry per key (record number, count of bytes shared
    // with the previous key, count of trailing blanks dropped) and the
    // remaining key bytes from the node's end backwards.
    for (;;) {
        const auto *n = reinterpret_cast<const uchar *>(bytes.constData());
        const int keys = qFromLittleEndian<quint16>(n + 2);
        const quint32 right = qFromLittleEndian<quint32>(n + 8);
        const int duplicateBits = n[21];
        const int trailingBits = n[22];
        const int recordBits = n[20];
        const int entryBytes = n[23];
        if (entryBytes < 1 || entryBytes > 8 || recordBits + duplicateBits + trailingBits > entryBytes * 8
            || recordBits + duplicateBits >= 64 || duplicateBits > 16 || trailingBits > 16
            || 24 + keys * entryBytes > nodeSize)
            return names;
        QByteArray previous(keyLength, ' ');
        int keyEnd = nodeSize;
        for (int i = 0; i < keys; ++i) {
            quint64 packed = 0;
            for (int b = entryBytes - 1; b >= 0; --b)
                packed = (packed << 8) | n[24 + i * entryBytes + b];
            const int duplicates = int((packed >> recordBits) & ((1u << duplicateBits) - 1));
            const int trailing = int((packed >> (recordBits + duplicateBits)) & ((1u << trailingBits) - 1));
            const int stored = keyLength - duplicates - trailing;
            if (duplicates > keyLength || trailing > keyLength || stored < 0 || keyEnd - stored < 24 + keys * entryBytes)
                return names;
            keyEnd -= stored;
            QByteArray key = previous.left(duplicates);
            key.append(bytes.constData() + keyEnd, stored);
            key.append(QByteArray(trailing, ' '));
            previous = key;
            const QString name = tagName(key);
            if (name.isEmpty())
                return names;
            names << name;
            if (names.size() >= maxTags)
                return names;
        }
        if (right == 0xFFFFFFFFu || visited.contains(right))
            return names;
        visited.insert(right);
        bytes = readAt(device, right, nodeSize);
        if (bytes.isEmpty())
            return names;
    }
}

} // namespace tarnby::tables
