#include "CompoundFile.h"

#include <QtEndian>

#include <algorithm>

#include <vector>

namespace tarnby::tables {

namespace {

constexpr quint32 endOfChain = 0xFFFFFFFE;
constexpr quint32 freeSector = 0xFFFFFFFF;
constexpr int headerSize = 512;
constexpr int directoryEntrySize = 128;

quint32 u32(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<quint32>(bytes.constData() + at);
}

quint16 u16(const QByteArray &bytes, qsizetype at)
{
    return qFromLittleEndian<quint16>(bytes.constData() + at);
}

class Container
{
public:
    explicit Container(const QByteArray &file)
        : m_file(file)
    {
    }

    QString load()
    {
        if (m_file.size() < headerSize || !isCompoundFile(m_file))
            return QStringLiteral("not a compound file");
        if (u16(m_file, 0x1C) != 0xFFFE)
            return QStringLiteral("unknown byte order");
        const int shift = u16(m_file, 0x1E);
        const int miniShift = u16(m_file, 0x20);
        if (shift != 9 && shift != 12)
            return QStringLiteral("unknown sector size");
        if (miniShift < 1 || miniShift >= shift)
            return QStringLiteral("unknown mini sector size");
        m_sectorSize = 1 << shift;
        m_miniSectorSize = 1 << miniShift;
        // Sectors that start inside the file; the last may be cut short.
        m_sectorCount = (m_file.size() - m_sectorSize + m_sectorSize - 1) / m_sectorSize;
        if (m_file.size() <= m_sectorSize)
            return QStringLiteral("no sectors after the header");
        m_miniCutoff = u32(m_file, 0x38);

        QString error = loadAllocationTable();
        if (!error.isEmpty())
            return error;
        error = chain(u32(m_file, 0x30), m_fat, m_sectorCount, &m_directorySectors);
        if (!error.isEmpty())
            return QStringLiteral("directory: ") + error;
        if (m_directorySectors.empty())
            return QStringLiteral("no directory");
        return QString();
    }

    CompoundStream stream(const QStringList &names)
    {
        const qsizetype entries = qsizetype(m_directorySectors.size()) * (m_sectorSize / directoryEntrySize);
        for (const QString &wanted : names) {
            for (qsizetype i = 0; i < entries; ++i) {
                const QByteArray entry = directoryEntry(i);
                if (entry.isEmpty() || quint8(entry[0x42]) != 2)
                    continue;
                const int nameBytes = qMin<int>(u16(entry, 0x40), 64);
                if (nameBytes < 2)
                    continue;
                const QString name =
                    QString::fromUtf16(reinterpret_cast<const char16_t *>(entry.constData()), nameBytes / 2 - 1);
                if (name.compare(wanted, Qt::CaseInsensitive) == 0)
                    return streamOf(entry);
            }
        }
        return {{}, QStringLiteral("no stream named %1").arg(names.join(QStringLiteral(" or ")))};
    }

private:
    QString loadAllocationTable()
    {
        const quint32 fatSectors = u32(m_file, 0x2C);
        if (fatSectors > quint32(m_sectorCount))
            return QStringLiteral("more allocation sectors than the file holds");
        std::vector<quint32> where;
        for (int i = 0; i < 109 && where.size() < fatSectors; ++i)
            where.push_back(u32(m_file, 0x4C + 4 * i));
        // The extension sectors: each a list of allocation sectors and, in
        // its last slot, the next extension sector.
        quint32 next = u32(m_file, 0x44);
        const int perSector = m_sectorSize / 4 - 1;
        qsizetype visited = 0;
        while (where.size() < fatSectors) {
            if (next >= quint32(m_sectorCount) || ++visited > m_sectorCount)
                return QStringLiteral("the allocation table's extension runs outside the file or in a loop");
            const qsizetype at = sectorOffset(next);
            if (at + m_sectorSize > m_file.size())
                return QStringLiteral("the allocation table's extension is cut short");
            for (int i = 0; i < perSector && where.size() < fatSectors; ++i)
                where.push_back(u32(m_file, at + 4 * i));
            next = u32(m_file, at + 4 * perSector);
        }
        m_fat.reserve(where.size() * size_t(m_sectorSize / 4));
        for (quint32 sector : where) {
            if (sector >= quint32(m_sectorCount))
                return QStringLiteral("an allocation sector lies outside the file");
            const qsizetype at = sectorOffset(sector);
            const qsizetype available = qMin<qsizetype>(m_sectorSize, m_file.size() - at);
            for (qsizetype i = 0; i + 4 <= available; i += 4)
                m_fat.push_back(u32(m_file, at + i));
        }
        return QString();
    }

    // The sectors of the chain that starts at first, following table; every
    // one below limit, none twice.
    static QString chain(quint32 first, const std::vector<quint32> &table, qsizetype limit, std::vector<quint32> *out)
    {
        out->clear();
        std::vector<bool> seen(size_t(qMin<qsizetype>(limit, qsizetype(table.size()))), false);
        for (quint32 s = first; s != endOfChain;) {
            if (s == freeSector && out->empty())
                return QString(); // an empty stream
            if (s >= seen.size())
                return QStringLiteral("a chain leaves the file");
            if (seen[s])
                return QStringLiteral("a chain runs in a loop");
            seen[s] = true;
            out->push_back(s);
            s = table[s];
        }
        return QString();
    }

    qsizetype sectorOffset(quint32 sector) const { return qsizetype(sector + 1) * m_sectorSize; }

    // The bytes of a chain of whole sectors, at most size of them.
    QByteArray sectorData(const std::vector<quint32> &sectors, qint64 size) const
    {
        QByteArray data;
        data.reserve(qsizetype(qMin<qint64>(size, qint64(sectors.size()) * m_sectorSize)));
        for (quint32 s : sectors) {
            if (data.size() >= size)
                break;
            const qsizetype at = sectorOffset(s);
            const qsizetype take = std::min<qsizetype>({qsizetype(m_sectorSize), m_file.size() - at, qsizetype(size - data.size())});
            data.append(m_file.constData() + at, take);
        }
        return data;
    }

    QByteArray directoryEntry(qsizetype index) const
    {
        const int perSector = m_sectorSize / directoryEntrySize;
        const qsizetype at = sectorOffset(m_directorySectors[size_t(index / perSector)]) + (index % perSector) * directoryEntrySize;
        if (at + directoryEntrySize > m_file.size())
            return {};
        return m_file.mid(at, directoryEntrySize);
    }

    CompoundStream streamOf(const QByteArray &entry)
    {
        const quint32 first = u32(entry, 0x74);
        // Files with 512-byte sectors keep only the low half of the size.
        qint64 size = m_sectorSize == 512 ? qint64(u32(entry, 0x78)) : qFromLittleEndian<qint64>(entry.constData() + 0x78);
        if (size < 0 || size > m_file.size())
            return {{}, QStringLiteral("a stream claims more bytes than the file holds")};
        std::vector<quint32> sectors;
        if (size >= m_miniCutoff) {
            const QString error = chain(first, m_fat, m_sectorCount, &sectors);
            if (!error.isEmpty())
                return {{}, error};
            QByteArray data = sectorData(sectors, size);
            if (data.size() != size)
                return {{}, QStringLiteral("a stream is longer than its chain")};
            return {data, {}};
        }
        QString error = loadMiniStream();
        if (!error.isEmpty())
            return {{}, error};
        error = chain(first, m_miniFat, (m_miniStream.size() + m_miniSectorSize - 1) / m_miniSectorSize, &sectors);
        if (!error.isEmpty())
            return {{}, QStringLiteral("mini stream: ") + error};
        QByteArray data;
        for (quint32 s : sectors) {
            if (data.size() >= size)
                break;
            const qsizetype at = qsizetype(s) * m_miniSectorSize;
            data.append(m_miniStream.constData() + at,
                        std::min<qsizetype>({qsizetype(m_miniSectorSize), m_miniStream.size() - at, qsizetype(size - data.size())}));
        }
        if (data.size() != size)
            return {{}, QStringLiteral("a stream is longer than its chain")};
        return {data, {}};
    }

    QString loadMiniStream()
    {
        if (m_miniLoaded)
            return m_miniError;
        m_miniLoaded = true;
        const QByteArray root = directoryEntry(0);
        if (root.isEmpty() || quint8(root[0x42]) != 5)
            return m_miniError = QStringLiteral("no root entry");
        std::vector<quint32> sectors;
        QString error = chain(u32(root, 0x74), m_fat, m_sectorCount, &sectors);
        if (!error.isEmpty())
            return m_miniError = QStringLiteral("mini stream: ") + error;
        const qint64 size = u32(root, 0x78);
        m_miniStream = sectorData(sectors, size);
        if (m_miniStream.size() != size)
            return m_miniError = QStringLiteral("the mini stream is longer than its chain");
        std::vector<quint32> miniFatSectors;
        error = chain(u32(m_file, 0x3C), m_fat, m_sectorCount, &miniFatSectors);
        if (!error.isEmpty())
            return m_miniError = QStringLiteral("mini allocation table: ") + error;
        const QByteArray table = sectorData(miniFatSectors, qint64(miniFatSectors.size()) * m_sectorSize);
        m_miniFat.reserve(size_t(table.size() / 4));
        for (qsizetype i = 0; i + 4 <= table.size(); i += 4)
            m_miniFat.push_back(u32(table, i));
        return QString();
    }

    const QByteArray &m_file;
    int m_sectorSize = 512;
    int m_miniSectorSize = 64;
    qsizetype m_sectorCount = 0;
    quint32 m_miniCutoff = 4096;
    std::vector<quint32> m_fat;
    std::vector<quint32> m_directorySectors;
    bool m_miniLoaded = false;
    QString m_miniError;
    QByteArray m_miniStream;
    std::vector<quint32> m_miniFat;
};

} // namespace

bool isCompoundFile(const QByteArray &file)
{
    return file.startsWith(QByteArrayLiteral("\xD0\xCF\x11\xE0\xA1\xB1\x1A\xE1"));
}

CompoundStream readCompoundStream(const QByteArray &file, const QStringList &names)
{
    Container container(file);
    const QString error = container.load();
    if (!error.isEmpty())
        return {{}, error};
    return container.stream(names);
}

} // namespace tarnby::tables
