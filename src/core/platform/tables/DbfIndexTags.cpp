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

// A key expression: printable text up to its NUL.
QString expressionText(const QByteArray &raw)
{
    QByteArray text = raw;
    const qsizetype nul = text.indexOf('\0');
    if (nul >= 0)
        text.truncate(nul);
    for (const char c : std::as_const(text)) {
        if (uchar(c) < 0x20 || uchar(c) > 0x7E)
            return {};
    }
    return QString::fromLatin1(text.trimmed());
}

QByteArray readAt(QIODevice &device, qint64 offset, qint64 length)
{
    if (offset < 0 || offset + length > device.size() || !device.seek(offset))
        return {};
    const QByteArray bytes = device.read(length);
    return bytes.size() == length ? bytes : QByteArray();
}

// A compound index's tag: the header the tag's entry points at holds, from
// byte 502, its order (1 descending) and from byte 512 its key expression.
IndexTag cdxTag(QIODevice &device, const QString &name, quint64 headerOffset)
{
    IndexTag tag;
    tag.name = name;
    if (headerOffset > quint64(device.size()))
        return tag;
    const QByteArray header = readAt(device, qint64(headerOffset), 1024);
    if (header.isEmpty())
        return tag;
    tag.descending = qFromLittleEndian<quint16>(header.constData() + 502) == 1;
    tag.expression = expressionText(header.mid(512, 256));
    return tag;
}

} // namespace

// The production index has a 544-byte header followed by a table of 32-byte
// tag entries (the tag's header page, then its name in 11 bytes); the header
// says how many entries are in use.
// Each tag's header page (pages of 512 bytes) holds its key format, whose
// bit 0x08 marks a descending tag, and from byte 24 its key expression.
QList<IndexTag> mdxTags(QIODevice &device, int maxTags)
{
    constexpr int tableOffset = 544;
    constexpr int entrySize = 32;
    constexpr int mdxMaxTags = 47;
    constexpr int pageSize = 512;
    constexpr int expressionLength = 220;
    QList<IndexTag> tags;
    const QByteArray header = readAt(device, 0, 32);
    if (header.isEmpty())
        return tags;
    const int inUse = qMin<int>(qFromLittleEndian<quint16>(header.constData() + 28), qMin(mdxMaxTags, maxTags));
    for (int i = 0; i < inUse; ++i) {
        const QByteArray entry = readAt(device, tableOffset + qint64(i) * entrySize, entrySize);
        IndexTag tag;
        tag.name = entry.isEmpty() ? QString() : tagName(entry.mid(4, 11));
        if (tag.name.isEmpty())
            break;
        const quint32 page = qFromLittleEndian<quint32>(entry.constData());
        const QByteArray tagHeader = readAt(device, qint64(page) * pageSize, 24 + expressionLength);
        if (!tagHeader.isEmpty()) {
            tag.descending = (quint8(tagHeader[8]) & 0x08) != 0;
            tag.expression = expressionText(tagHeader.mid(24));
        }
        tags << tag;
    }
    return tags;
}

QStringList mdxTagNames(QIODevice &device, int maxTags)
{
    QStringList names;
    for (const IndexTag &tag : mdxTags(device, maxTags))
        names << tag.name;
    return names;
}

// A compound index keeps the names of its tags as the keys of a compact
// B-tree of its own, rooted at the node the file header names. The reader
// descends along the first entries to the leftmost leaf, then walks the
// leaves to the right. Node pointers come from the file, so every node is
// checked to lie inside it and none is visited twice.
QList<IndexTag> cdxTags(QIODevice &device, int maxTags)
{
    constexpr int nodeSize = 512;
    QList<IndexTag> names;
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
            const quint64 record = recordBits >= 64 ? packed : (packed & ((quint64(1) << recordBits) - 1));
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
            names << cdxTag(device, name, record);
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

QStringList cdxTagNames(QIODevice &device, int maxTags)
{
    QStringList names;
    for (const IndexTag &tag : cdxTags(device, maxTags))
        names << tag.name;
    return names;
}

namespace {

// One term of a key expression: the field it names, and whether an UPPER()
// around it drops the case. Functions that keep the order of the field's
// values are looked through.
std::optional<IndexKey::Part> termKey(QString term, const QList<Field> &fields)
{
    static const QStringList orderKeeping = {QStringLiteral("DTOS"), QStringLiteral("STR"), QStringLiteral("TRIM"),
                                             QStringLiteral("RTRIM"), QStringLiteral("LTRIM"),
                                             QStringLiteral("ALLTRIM")};
    IndexKey::Part part;
    term = term.trimmed();
    for (int depth = 0; depth < 8 && term.endsWith(QLatin1Char(')')); ++depth) {
        const qsizetype open = term.indexOf(QLatin1Char('('));
        if (open <= 0)
            return std::nullopt;
        const QString function = term.left(open).trimmed().toUpper();
        QString inner = term.mid(open + 1, term.size() - open - 2);
        // STR(field, length, decimals): the field is the first argument.
        const qsizetype comma = inner.indexOf(QLatin1Char(','));
        if (comma >= 0) {
            if (function != QLatin1String("STR") || inner.left(comma).contains(QLatin1Char('(')))
                return std::nullopt;
            inner.truncate(comma);
        }
        if (function == QLatin1String("UPPER"))
            part.caseInsensitive = true;
        else if (!orderKeeping.contains(function))
            return std::nullopt;
        term = inner.trimmed();
    }
    const qsizetype alias = term.indexOf(QLatin1String("->"));
    if (alias >= 0)
        term = term.mid(alias + 2).trimmed();
    for (int i = 0; i < fields.size(); ++i) {
        if (fields[i].name.compare(term, Qt::CaseInsensitive) == 0) {
            part.column = i;
            return part;
        }
    }
    return std::nullopt;
}

} // namespace

std::optional<IndexKey> keyOfExpression(const QString &expression, const QList<Field> &fields, bool descending)
{
    IndexKey key;
    // Terms are split at "+" and "-" outside parentheses.
    QString term;
    int depth = 0;
    const QString text = expression + QLatin1Char('+');
    for (qsizetype i = 0; i < text.size(); ++i) {
        const QChar c = text[i];
        if (c == QLatin1Char('('))
            ++depth;
        else if (c == QLatin1Char(')'))
            --depth;
        if (depth < 0)
            return std::nullopt;
        if (depth == 0 && (c == QLatin1Char('+') || c == QLatin1Char('-'))) {
            // "->" names an alias, not a concatenation.
            if (c == QLatin1Char('-') && text.mid(i, 2) == QLatin1String("->")) {
                term += c;
                continue;
            }
            const std::optional<IndexKey::Part> part = termKey(term, fields);
            if (!part)
                return std::nullopt;
            key.parts.append(*part);
            key.parts.last().descending = descending;
            term.clear();
            continue;
        }
        term += c;
    }
    if (depth != 0 || key.parts.isEmpty())
        return std::nullopt;
    return key;
}

} // namespace tarnby::tables
