#include "ParadoxReader.h"

#include "ParadoxCipher.h"
#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QStringDecoder>
#include <QTime>
#include <QtEndian>

#include <algorithm>
#include <cstring>
#include <vector>

namespace tarnby::tables {

namespace {

// Field types as the header numbers them.
enum ParadoxType : quint8 {
    Alpha = 0x01,
    DateField = 0x02,
    Short = 0x03,
    LongField = 0x04,
    CurrencyField = 0x05,
    Number = 0x06,
    Logical = 0x09,
    MemoBlob = 0x0C,
    BinaryBlob = 0x0D,
    FormattedMemo = 0x0E,
    Ole = 0x0F,
    Graphic = 0x10,
    TimeField = 0x14,
    Timestamp = 0x15,
    AutoIncrement = 0x16,
    Bcd = 0x17,
    Bytes = 0x18,
};

constexpr int maxFields = 255;
constexpr int blockHeaderSize = 6;
constexpr int mbChunk = 4096;
// Day 1 of Paradox dates is 1 January of the year 1.
constexpr qint64 julianDayOfDayZero = 1721425;
constexpr qint64 maxBlobBytes = 64LL * 1024 * 1024;

struct ParadoxField {
    QString name;
    quint8 type = Alpha;
    int size = 0;
    int offset = 0;
};

bool isBlob(quint8 type)
{
    return type == MemoBlob || type == BinaryBlob || type == FormattedMemo || type == Ole || type == Graphic;
}

int fieldTypeNumber(quint8 type)
{
    switch (type) {
    case Alpha: return FieldType::Text;
    case DateField: return FieldType::Date;
    case Short: return FieldType::Integer;
    case LongField: return FieldType::Long;
    case AutoIncrement: return FieldType::Long;
    case CurrencyField: return FieldType::Currency;
    case Number: return FieldType::Double;
    case Logical: return FieldType::Boolean;
    case MemoBlob: return FieldType::Memo;
    case BinaryBlob:
    case FormattedMemo:
    case Ole:
    case Graphic: return FieldType::LongBinary;
    case TimeField: return FieldType::Time;
    case Timestamp: return FieldType::Date;
    case Bcd: return FieldType::Decimal;
    case Bytes: return FieldType::Binary;
    default: return 0;
    }
}

// The widths the fixed-size types must have.
int requiredSize(quint8 type)
{
    switch (type) {
    case Short: return 2;
    case DateField: case LongField: case AutoIncrement: case TimeField: return 4;
    case CurrencyField: case Number: case Timestamp: return 8;
    case Logical: return 1;
    case Bcd: return 17;
    default: return 0;
    }
}

bool knownType(quint8 type)
{
    return fieldTypeNumber(type) != 0;
}

// A BCD number (Paradox 5 and later): 17 bytes, the first one the sign (bit
// 7 set for positive numbers, clear for negative ones, whose digits are then
// stored as their complements to 15) and in bits 0 to 5 the digits after
// the point; then 32 digits, one per half byte, high half first, the last
// of them after the point. A first byte of zero is a null.
constexpr int bcdDigits = 32;

QVariant bcdValue(const uchar *cell)
{
    if (cell[0] == 0)
        return {};
    const bool positive = cell[0] & 0x80;
    const int decimals = cell[0] & 0x3F;
    if (decimals > bcdDigits)
        return {};
    const uchar flip = positive ? 0x0 : 0xF;
    QByteArray text;
    text.reserve(bcdDigits + 2);
    if (!positive)
        text += '-';
    for (int i = 0; i < bcdDigits; ++i) {
        const uchar nibble = ((i % 2 ? cell[1 + i / 2] : cell[1 + i / 2] >> 4) & 0xF) ^ flip;
        if (nibble > 9)
            return {};
        if (i == bcdDigits - decimals)
            text += '.';
        text += char('0' + nibble);
    }
    bool ok = false;
    const double value = text.toDouble(&ok);
    return ok ? QVariant(value) : QVariant();
}

// Integers are stored big-endian with the sign bit flipped, so that they
// sort as bytes; all zero bytes are a null.
bool signFlipped(const uchar *p, int size, qint64 *value)
{
    quint64 raw = 0;
    bool zero = true;
    for (int i = 0; i < size; ++i) {
        raw = (raw << 8) | p[i];
        zero &= p[i] == 0;
    }
    if (zero)
        return false;
    const quint64 sign = quint64(1) << (size * 8 - 1);
    raw ^= sign;
    // Back to a signed value of the field's width.
    *value = (raw & sign) ? qint64(raw | ~((sign << 1) - 1)) : qint64(raw);
    return true;
}

// Doubles likewise: a positive number has its sign bit set, a negative one
// all its bits inverted.
bool paradoxDouble(const uchar *p, double *value)
{
    uchar b[8];
    std::memcpy(b, p, 8);
    if (std::all_of(b, b + 8, [](uchar c) { return c == 0; }))
        return false;
    if (b[0] & 0x80) {
        b[0] &= 0x7F;
    } else {
        for (uchar &c : b)
            c = uchar(~c);
    }
    *value = qFromBigEndian<double>(b);
    return true;
}

// Text in the code page the header names; tables that name none are in
// code page 437.
QStringDecoder decoderForCodePage(int codePage)
{
    QStringDecoder decoder = codePageDecoder(codePage > 0 ? codePage : 437);
    if (!decoder.isValid())
        decoder = QStringDecoder(QStringConverter::Latin1);
    return decoder;
}

// A protected table's file (or memo file) read through its cipher: the
// bytes from origin on are decrypted in 256-byte chunks, a table's with keys
// from their block's number and their place in it, a memo file's with keys
// from the checksum alone. Reads go through whole chunks.
class DecryptingDevice : public QIODevice
{
public:
    DecryptingDevice(std::unique_ptr<QIODevice> inner, quint32 checksum, qint64 origin, int blockSize, bool memo)
        : m_inner(std::move(inner))
        , m_checksum(checksum)
        , m_origin(origin)
        , m_blockSize(blockSize)
        , m_memo(memo)
    {
        open(QIODevice::ReadOnly | QIODevice::Unbuffered);
    }

    qint64 size() const override { return m_inner->size(); }

protected:
    qint64 readData(char *out, qint64 maxSize) override
    {
        const qint64 start = pos();
        const qint64 end = qMin(size(), start + maxSize);
        qint64 done = 0;
        for (qint64 at = start; at < end;) {
            if (at < m_origin) {
                const QByteArray plain = readExactly(*m_inner, at, qMin(end, m_origin) - at);
                if (plain.isEmpty())
                    break;
                std::memcpy(out + done, plain.constData(), size_t(plain.size()));
                done += plain.size();
                at += plain.size();
                continue;
            }
            const qint64 relative = at - m_origin;
            const qint64 chunkStart = m_origin + relative / 256 * 256;
            QByteArray chunk = readExactly(*m_inner, chunkStart, qMin<qint64>(256, size() - chunkStart));
            if (chunk.isEmpty())
                break;
            if (chunk.size() == 256) {
                auto *bytes = reinterpret_cast<uchar *>(chunk.data());
                if (m_memo) {
                    decryptParadoxChunk(bytes, m_checksum, int(m_checksum & 0xFF) + 1, int((m_checksum >> 8) & 0xFF) + 1);
                } else {
                    const qint64 inBlock = (chunkStart - m_origin) % m_blockSize;
                    const qint64 block = (chunkStart - m_origin) / m_blockSize + 1;
                    decryptParadoxChunk(bytes, m_checksum, int(inBlock / 256), int(block));
                }
            }
            const qint64 skip = at - chunkStart;
            const qint64 take = qMin<qint64>(chunk.size() - skip, end - at);
            std::memcpy(out + done, chunk.constData() + skip, size_t(take));
            done += take;
            at += take;
        }
        return done;
    }

    qint64 writeData(const char *, qint64) override { return -1; }

private:
    std::unique_ptr<QIODevice> m_inner;
    quint32 m_checksum;
    qint64 m_origin;
    int m_blockSize;
    bool m_memo;
};

struct BlockRun {
    qint64 offset = 0;   // of the block's first record
    qint64 firstRow = 0; // the row number of that record
    int records = 0;
};

class ParadoxTable : public Table
{
public:
    ParadoxTable(QString name, std::unique_ptr<QIODevice> device, std::unique_ptr<QIODevice> memo,
                 QList<ParadoxField> fields, QStringList indexNames, int recordSize, std::vector<BlockRun> blocks,
                 int codePage)
        : m_name(std::move(name))
        , m_device(std::move(device))
        , m_memo(std::move(memo))
        , m_fields(std::move(fields))
        , m_indexNames(std::move(indexNames))
        , m_recordSize(recordSize)
        , m_blocks(std::move(blocks))
        , m_text(decoderForCodePage(codePage))
    {
        m_rows = m_blocks.empty() ? 0 : m_blocks.back().firstRow + m_blocks.back().records;
    }

    QString name() const override { return m_name; }
    QList<Field> fields() const override
    {
        QList<Field> result;
        for (const ParadoxField &f : m_fields)
            result.append(Field{f.name, fieldTypeNumber(f.type), f.size});
        return result;
    }
    QStringList indexNames() const override { return m_indexNames; }
    qint64 rowCount() const override { return m_rows; }
    void setKeyFields(int count) { m_keyFields = count; }

    Result<IndexKey> indexKey(const QString &indexName) const override
    {
        if (!m_indexNames.contains(indexName))
            return Table::indexKey(indexName);
        IndexKey key;
        for (int i = 0; i < m_keyFields && i < m_fields.size(); ++i)
            key.parts.append(IndexKey::Part{i, false, false});
        return Result<IndexKey>::success(key);
    }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        QList<Row> rows;
        if (first < 0 || count <= 0 || first >= m_rows)
            return Result<QList<Row>>::success(rows);
        count = int(qMin<qint64>(count, m_rows - first));
        rows.reserve(count);
        auto block = std::upper_bound(m_blocks.begin(), m_blocks.end(), first,
                                      [](qint64 row, const BlockRun &b) { return row < b.firstRow; });
        --block;
        qint64 row = first;
        for (; block != m_blocks.end() && rows.size() < count; ++block) {
            const int skip = int(row - block->firstRow);
            const int take = qMin(block->records - skip, count - int(rows.size()));
            const QByteArray bytes = readExactly(*m_device, block->offset + qint64(skip) * m_recordSize,
                                                 qint64(take) * m_recordSize);
            if (bytes.isEmpty())
                return Result<QList<Row>>::failure(
                    QStringLiteral("The table \"%1\" could not be read: %2").arg(m_name, m_device->errorString()));
            for (int i = 0; i < take; ++i)
                rows.append(decodeRecord(reinterpret_cast<const uchar *>(bytes.constData()) + i * m_recordSize));
            row += take;
        }
        return Result<QList<Row>>::success(rows);
    }

private:
    QString decodeText(const char *data, qsizetype size)
    {
        m_text.resetState();
        return m_text.decode(QByteArrayView(data, size));
    }

    Row decodeRecord(const uchar *record)
    {
        Row row;
        row.reserve(m_fields.size());
        for (const ParadoxField &field : std::as_const(m_fields))
            row.append(decodeCell(field, record + field.offset));
        return row;
    }

    QVariant decodeCell(const ParadoxField &field, const uchar *cell)
    {
        qint64 integer = 0;
        double real = 0;
        switch (field.type) {
        case Alpha: {
            const char *text = reinterpret_cast<const char *>(cell);
            const qsizetype length = qstrnlen(text, size_t(field.size));
            if (length == 0)
                return {};
            return decodeText(text, length);
        }
        case Short:
        case LongField:
        case AutoIncrement:
            return signFlipped(cell, field.size, &integer) ? QVariant(qlonglong(integer)) : QVariant();
        case DateField: {
            if (!signFlipped(cell, 4, &integer))
                return {};
            const QDate date = QDate::fromJulianDay(integer + julianDayOfDayZero);
            return date.isValid() ? QVariant(date) : QVariant();
        }
        case TimeField:
            if (!signFlipped(cell, 4, &integer) || integer < 0 || integer >= 86400000)
                return {};
            return QTime::fromMSecsSinceStartOfDay(int(integer));
        case CurrencyField:
        case Number:
            return paradoxDouble(cell, &real) ? QVariant(real) : QVariant();
        case Timestamp: {
            // Milliseconds since the start of day 0 (the day before day 1).
            if (!paradoxDouble(cell, &real) || !(real >= 0 && real < 1e15))
                return {};
            const qint64 ms = qint64(real);
            const QDate date = QDate::fromJulianDay(ms / 86400000 + julianDayOfDayZero - 1);
            if (!date.isValid())
                return {};
            return QDateTime(date, QTime::fromMSecsSinceStartOfDay(int(ms % 86400000)));
        }
        case Logical:
            if (cell[0] == 0)
                return {};
            return (cell[0] & 0x7F) != 0;
        case Bytes:
            return QByteArray(reinterpret_cast<const char *>(cell), field.size);
        case Bcd:
            return bcdValue(cell);
        default:
            return isBlob(field.type) ? blobCell(field, cell) : QVariant();
        }
    }

    // A BLOb field: the value's start in the record, then offset, length
    // and modification number (little-endian) of the whole value, which
    // lives in the record when it fits there and in the ".mb" file when not.
    QVariant blobCell(const ParadoxField &field, const uchar *cell)
    {
        const int leading = field.size - 10;
        const quint32 offset = qFromLittleEndian<quint32>(cell + leading);
        const quint32 length = qFromLittleEndian<quint32>(cell + leading + 4);
        if (length == 0)
            return {};
        QByteArray bytes;
        if (qint64(length) <= leading)
            bytes = QByteArray(reinterpret_cast<const char *>(cell), length);
        else if (m_memo)
            bytes = readParadoxBlob(*m_memo, offset, length);
        if (bytes.isNull())
            return {};
        if (field.type == MemoBlob)
            return decodeText(bytes.constData(), bytes.size());
        return bytes;
    }

    QString m_name;
    std::unique_ptr<QIODevice> m_device;
    std::unique_ptr<QIODevice> m_memo;
    QList<ParadoxField> m_fields;
    QStringList m_indexNames;
    int m_keyFields = 0;
    int m_recordSize;
    std::vector<BlockRun> m_blocks;
    QStringDecoder m_text;
    qint64 m_rows = 0;
};

class ParadoxFile : public TableFile
{
public:
    explicit ParadoxFile(std::unique_ptr<ParadoxTable> table)
        : m_table(std::move(table))
        , m_name(m_table->name())
    {
    }

    QString formatName() const override { return QStringLiteral("Paradox"); }
    QStringList tableNames() const override { return {m_name}; }

    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        if (name.compare(m_name, Qt::CaseInsensitive) != 0)
            return Result<std::unique_ptr<Table>>::failure(
                QStringLiteral("The Paradox file holds no table named \"%1\".").arg(name));
        if (!m_table)
            return Result<std::unique_ptr<Table>>::failure(QStringLiteral("The table \"%1\" is already open.").arg(name));
        return Result<std::unique_ptr<Table>>::success(std::move(m_table));
    }

private:
    std::unique_ptr<ParadoxTable> m_table;
    QString m_name;
};

} // namespace

QByteArray readParadoxBlob(QIODevice &memo, quint32 offset, quint32 length)
{
    if (length > maxBlobBytes)
        return {};
    const qint64 block = offset & 0xFFFFFF00u;
    const int index = int(offset & 0xFF);
    const QByteArray header = readExactly(memo, block, 12);
    if (header.isEmpty() || block == 0)
        return {};
    const quint8 type = quint8(header[0]);
    if (index == 0xFF) {
        // A block of its own: nine bytes of header, then the value.
        if (type != 2)
            return {};
        const qint64 chunks = qFromLittleEndian<quint16>(header.constData() + 1);
        if (qint64(length) + 9 > chunks * mbChunk)
            return {};
        return readExactly(memo, block + 9, length);
    }
    // A block shared by small values: a table of 64 five-byte entries after
    // a twelve-byte header; an entry's first byte is its value's offset in
    // sixteen-byte units.
    if (type != 3 || index >= 64)
        return {};
    const QByteArray entry = readExactly(memo, block + 12 + index * 5, 5);
    if (entry.isEmpty() || entry[0] == 0)
        return {};
    const qint64 start = block + qint64(quint8(entry[0])) * 16;
    if (start + length > block + mbChunk)
        return {};
    return readExactly(memo, start, length);
}

OpenResult openParadox(ParadoxSources sources)
{
    const QString &name = sources.tableName;
    QIODevice &device = *sources.table;
    const qint64 fileSize = device.size();
    const auto damaged = [&](const QString &why) {
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The Paradox table \"%1\" is damaged: %2").arg(name, why));
    };
    const auto notParadox = [&] {
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("\"%1\" is not a Paradox table.").arg(name));
    };

    const QByteArray head = readExactly(device, 0, 0x58);
    if (head.isEmpty())
        return notParadox();
    const auto *h = reinterpret_cast<const uchar *>(head.constData());
    const int recordSize = qFromLittleEndian<quint16>(h);
    const int headerSize = qFromLittleEndian<quint16>(h + 0x02);
    const quint8 fileType = h[0x04];
    const int blockSize = int(h[0x05]) * 1024;
    const int fileBlocks = qFromLittleEndian<quint16>(h + 0x0C);
    const int firstBlock = qFromLittleEndian<quint16>(h + 0x0E);
    const int fieldCount = qFromLittleEndian<quint16>(h + 0x21);
    // A keyed table's primary key is made of its first fields.
    const int keyFields = qFromLittleEndian<quint16>(h + 0x23);
    const quint32 encryption1 = qFromLittleEndian<quint32>(h + 0x25);
    const quint8 version = h[0x39];
    // Data tables only: 0 keyed, 2 unkeyed. Other types are index files.
    if ((fileType != 0 && fileType != 2) || version < 3 || version > 12 || blockSize == 0 || blockSize > 32 * 1024
        || recordSize == 0)
        return notParadox();
    const bool extendedHeader = version >= 5;
    const int fieldInfoOffset = extendedHeader ? 0x78 : 0x58;
    if (headerSize < fieldInfoOffset || headerSize > fileSize)
        return damaged(QStringLiteral("its header claims %1 bytes, but the file holds only %2.").arg(headerSize).arg(fileSize));
    if (fieldCount == 0)
        return damaged(QStringLiteral("it declares no fields."));
    if (fieldCount > maxFields)
        return damaged(QStringLiteral("it declares %1 fields, more than %2.").arg(fieldCount).arg(maxFields));
    if (recordSize > blockSize - blockHeaderSize)
        return damaged(QStringLiteral("its records of %1 bytes do not fit its blocks of %2.").arg(recordSize).arg(blockSize));

    const QByteArray header = readExactly(device, 0, headerSize);
    if (header.isEmpty())
        return damaged(QStringLiteral("its header cannot be read."));
    quint32 encryption = encryption1;
    int codePage = 0;
    if (extendedHeader) {
        encryption = qFromLittleEndian<quint32>(header.constData() + 0x5C);
        codePage = qFromLittleEndian<quint16>(header.constData() + 0x6A);
    }
    if (encryption != 0) {
        // Protected: the password must match the header's checksum; the
        // blocks after the header, and the memo file, are then decrypted.
        if (sources.password.isEmpty())
            return OpenResult::failure(OpenStatus::PasswordRequired,
                                       QStringLiteral("The Paradox table \"%1\" is protected by a password.").arg(name));
        if (paradoxPasswordChecksum(sources.password.toLatin1()) != encryption)
            return OpenResult::failure(OpenStatus::WrongPassword,
                                       QStringLiteral("The password of the Paradox table \"%1\" is not the one given.").arg(name));
        sources.table = std::make_unique<DecryptingDevice>(std::move(sources.table), encryption, headerSize, blockSize, false);
        if (sources.memo)
            sources.memo = std::make_unique<DecryptingDevice>(std::move(sources.memo), encryption, 0, 0, true);
    }

    // Field types and sizes, then the table name's pointer, a pointer per
    // field, the table name (261 bytes from Paradox 7, 79 before) and the
    // field names, each ended by a NUL.
    QList<ParadoxField> fields;
    int offset = 0;
    qint64 at = fieldInfoOffset;
    for (int i = 0; i < fieldCount; ++i, at += 2) {
        if (at + 2 > headerSize)
            return damaged(QStringLiteral("its field list runs past its header."));
        ParadoxField field;
        field.type = quint8(header[at]);
        field.size = quint8(header[at + 1]);
        field.offset = offset;
        if (field.type == Bcd) {
            // The header gives a BCD field's digits after the point; every
            // value takes 17 bytes.
            if (field.size > bcdDigits)
                return damaged(QStringLiteral("field %1 has %2 decimal places.").arg(i + 1).arg(field.size));
            field.size = 17;
        }
        if (!knownType(field.type))
            return damaged(QStringLiteral("field %1 has the unknown type %2.").arg(i + 1).arg(field.type));
        const int required = requiredSize(field.type);
        if (field.size == 0 || (required != 0 && field.size != required) || (isBlob(field.type) && field.size < 10))
            return damaged(QStringLiteral("field %1 has a size of %2 bytes.").arg(i + 1).arg(field.size));
        offset += field.size;
        fields.append(field);
    }
    if (offset != recordSize)
        return damaged(QStringLiteral("its fields take %1 bytes, but its records hold %2.").arg(offset).arg(recordSize));
    at += 4 + 4 * qint64(fieldCount) + (version >= 12 ? 261 : 79);
    for (ParadoxField &field : fields) {
        if (at >= headerSize)
            return damaged(QStringLiteral("its field names run past its header."));
        const char *start = header.constData() + at;
        const qsizetype length = qstrnlen(start, size_t(headerSize - at));
        if (at + length >= headerSize)
            return damaged(QStringLiteral("its field names run past its header."));
        field.name = decoderForCodePage(codePage).decode(QByteArrayView(start, length));
        at += length + 1;
    }

    // The block chain, in record order. Each block starts with the next and
    // previous block numbers and the offset of its last record.
    std::vector<BlockRun> blocks;
    const qint64 blocksInFile = (fileSize - headerSize) / blockSize;
    std::vector<bool> seen(size_t(qMax<qint64>(blocksInFile, 0)) + 1, false);
    qint64 rows = 0;
    for (int block = firstBlock; block != 0;) {
        if (block > blocksInFile || seen[size_t(block)])
            break;
        seen[size_t(block)] = true;
        const qint64 blockOffset = headerSize + qint64(block - 1) * blockSize;
        const QByteArray blockHeader = readExactly(*sources.table, blockOffset, blockHeaderSize);
        if (blockHeader.isEmpty())
            break;
        const int next = qFromLittleEndian<quint16>(blockHeader.constData());
        const int lastRecord = qFromLittleEndian<qint16>(blockHeader.constData() + 4);
        if (lastRecord >= 0) {
            const int records = lastRecord / recordSize + 1;
            if (lastRecord % recordSize != 0 || blockHeaderSize + qint64(records) * recordSize > blockSize)
                return damaged(QStringLiteral("block %1 claims more records than it can hold.").arg(block));
            blocks.push_back(BlockRun{blockOffset + blockHeaderSize, rows, records});
            rows += records;
        }
        block = next;
    }
    Q_UNUSED(fileBlocks)

    QStringList indexNames;
    if (fileType == 0 && sources.primaryIndex && keyFields > 0 && keyFields <= fieldCount)
        indexNames << QStringLiteral("PrimaryKey");
    auto table = std::make_unique<ParadoxTable>(name, std::move(sources.table), std::move(sources.memo), fields,
                                                indexNames, recordSize, std::move(blocks), codePage);
    table->setKeyFields(keyFields);
    OpenResult result;
    result.file = std::make_unique<ParadoxFile>(std::move(table));
    return result;
}

OpenResult openParadoxFile(const QString &path, const QString &password)
{
    const QFileInfo info(path);
    auto table = std::make_unique<QFile>(path);
    if (!table->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return OpenResult::failure(OpenStatus::Failed,
                      QStringLiteral("The file \"%1\" could not be opened: %2").arg(path, table->errorString()));
    ParadoxSources sources;
    sources.tableName = info.completeBaseName();
    sources.table = std::move(table);
    sources.memo = openForReading(companionFile(info, QStringLiteral("mb")));
    sources.primaryIndex = !companionFile(info, QStringLiteral("px")).isEmpty();
    sources.password = password;
    return openParadox(std::move(sources));
}

} // namespace tarnby::tables
