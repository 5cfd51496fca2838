#include "DbfReader.h"

#include "CsvText.h"
#include "DbfIndexTags.h"
#include "DbfText.h"
#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStringDecoder>
#include <QtEndian>

#include <algorithm>
#include <vector>

namespace tarnby::tables {

namespace {

constexpr int headerSize = 32;
constexpr int descriptorSize = 32;
constexpr int maxFields = 255;
// How many bytes of records one read may take at most; pages and the
// deletion scan are cut into reads of this size.
constexpr qint64 maxReadBytes = 4LL * 1024 * 1024;

bool isVisualFoxPro(quint8 version)
{
    return version == 0x30 || version == 0x31 || version == 0x32;
}

bool isFoxPro(quint8 version)
{
    return isVisualFoxPro(version) || version == 0xF5 || version == 0xFB;
}

bool knownVersion(quint8 version)
{
    switch (version) {
    case 0x02: case 0x03: case 0x04: case 0x05: case 0x30: case 0x31: case 0x32: case 0x43: case 0x63:
    case 0x7B: case 0x83: case 0x8B: case 0x8C: case 0x8E: case 0xB3: case 0xCB: case 0xE5: case 0xF5: case 0xFB:
        return true;
    default:
        return false;
    }
}

// The code page a header's language byte stands for: the FoxPro code page
// marks and the dBASE language drivers that share their numbers. Empty for 0
// (no mark) and for bytes nobody assigned.
const char *codePageName(quint8 mark)
{
    switch (mark) {
    case 0x01: case 0x09: case 0x0B: case 0x0D: case 0x0F: case 0x11: case 0x15: case 0x18: case 0x19: case 0x1B:
        return "IBM437";
    case 0x02: case 0x0A: case 0x0E: case 0x10: case 0x12: case 0x14: case 0x16: case 0x1A: case 0x1D: case 0x25:
    case 0x37:
        return "IBM850";
    case 0x03: case 0x57: case 0x58: case 0x59:
        return "windows-1252";
    case 0x04:
        return "macintosh";
    case 0x08: case 0x17: case 0x66:
        return "IBM865";
    case 0x1C: case 0x6C:
        return "IBM863";
    case 0x1F: case 0x22: case 0x23: case 0x40: case 0x64: case 0x87:
        return "IBM852";
    case 0x24:
        return "IBM860";
    case 0x26: case 0x65:
        return "IBM866";
    case 0x67:
        return "IBM861";
    case 0x6A: case 0x86:
        return "IBM737";
    case 0x6B: case 0x88:
        return "IBM857";
    case 0x13: case 0x7B:
        return "Shift_JIS";
    case 0x4D: case 0x7A:
        return "GBK";
    case 0x4E: case 0x79:
        return "windows-949";
    case 0x4F: case 0x78:
        return "Big5";
    case 0x50: case 0x7C:
        return "windows-874";
    case 0x7D:
        return "windows-1255";
    case 0x7E:
        return "windows-1256";
    case 0x96:
        return "x-mac-cyrillic";
    case 0x97:
        return "x-mac-centraleurroman";
    case 0x98:
        return "x-mac-greek";
    case 0xC8:
        return "windows-1250";
    case 0xC9:
        return "windows-1251";
    case 0xCA:
        return "windows-1254";
    case 0xCB:
        return "windows-1253";
    case 0xCC:
        return "windows-1257";
    default:
        return "";
    }
}

struct DbfField {
    QString name;
    char type = 'C';
    int offset = 0; // in the record, after the deletion mark
    int length = 0;
    int decimals = 0;
    quint8 flags = 0;
    int typeNumber = FieldType::Text;
    bool hidden = false; // Visual FoxPro's own columns (the null flags)
    bool binaryMemo = false;
};

// Text cells are decoded with one decoder per table; a table without a code
// page mark tries UTF-8 first, as tables written by today's tools without a
// mark usually hold UTF-8.
class TextDecoder
{
public:
    explicit TextDecoder(quint8 mark)
    {
        const char *name = codePageName(mark);
        if (*name) {
            m_codePage = QStringDecoder(name, QStringConverter::Flag::Stateless);
            if (!m_codePage.isValid())
                m_codePage = QStringDecoder(QStringConverter::Latin1);
        } else {
            m_tryUtf8 = true;
            m_codePage = QStringDecoder("windows-1252", QStringConverter::Flag::Stateless);
            if (!m_codePage.isValid())
                m_codePage = QStringDecoder(QStringConverter::Latin1);
        }
    }

    // Appends the text of data as UTF-8, as decode gives it.
    void appendUtf8(QByteArray &out, QByteArrayView data)
    {
        if (!m_singleByteTried) {
            // Made once the first text that needs it comes: only exports
            // convert enough text to pay for it.
            m_singleByteTried = true;
            if (!m_tryUtf8)
                m_singleByte = SingleByteText::of(m_codePage);
        }
        if (m_singleByte && !isAscii(data))
            m_singleByte->append(out, data);
        else
            out += decode(data.data(), data.size()).toUtf8();
    }

    QString decode(const char *data, qsizetype size)
    {
        bool ascii = true;
        for (qsizetype i = 0; i < size && ascii; ++i)
            ascii = uchar(data[i]) < 0x80;
        if (ascii)
            return QString::fromLatin1(data, size);
        if (m_tryUtf8) {
            m_utf8.resetState();
            QString text = m_utf8.decode(QByteArrayView(data, size));
            if (!m_utf8.hasError())
                return text;
        }
        m_codePage.resetState();
        return m_codePage.decode(QByteArrayView(data, size));
    }

private:
    static bool isAscii(QByteArrayView data)
    {
        for (const char c : data) {
            if (uchar(c) >= 0x80)
                return false;
        }
        return true;
    }

    bool m_tryUtf8 = false;
    QStringDecoder m_utf8{QStringConverter::Utf8, QStringConverter::Flag::Stateless};
    QStringDecoder m_codePage;
    // The code page's characters a byte at a time, where it has one byte a
    // character: text then needs no decoder.
    std::optional<SingleByteText> m_singleByte;
    bool m_singleByteTried = false;
};

QByteArrayView trimmedRight(const char *data, int length)
{
    while (length > 0 && (data[length - 1] == ' ' || data[length - 1] == '\0'))
        --length;
    return QByteArrayView(data, length);
}

QByteArrayView trimmed(const char *data, int length)
{
    QByteArrayView v = trimmedRight(data, length);
    while (!v.isEmpty() && v.front() == ' ')
        v = v.sliced(1);
    return v;
}

// The block number a memo field holds: ten ASCII digits in dBASE and FoxPro
// 2, four little-endian bytes in Visual FoxPro.
quint64 memoBlock(const DbfField &field, const char *cell)
{
    if (field.length == 4)
        return qFromLittleEndian<quint32>(cell);
    const QByteArrayView digits = trimmed(cell, field.length);
    if (digits.isEmpty())
        return 0;
    quint64 block = 0;
    for (const char c : digits) {
        if (c < '0' || c > '9')
            return 0;
        block = block * 10 + quint64(c - '0');
    }
    return block;
}

class DbfTable : public Table
{
public:
    DbfTable(QString name, std::unique_ptr<QIODevice> device, std::unique_ptr<DbfMemoFile> memo, QList<DbfField> fields,
             QStringList indexNames, QList<IndexTag> indexTags, qint64 headerLength, int recordLength,
             qint64 recordCount, std::vector<qint64> deleted, quint8 codePageMark)
        : m_name(std::move(name))
        , m_device(std::move(device))
        , m_memo(std::move(memo))
        , m_fields(std::move(fields))
        , m_indexNames(std::move(indexNames))
        , m_indexTags(std::move(indexTags))
        , m_headerLength(headerLength)
        , m_recordLength(recordLength)
        , m_recordCount(recordCount)
        , m_deleted(std::move(deleted))
        , m_text(codePageMark)
    {
    }

    QString name() const override { return m_name; }

    QList<Field> fields() const override
    {
        QList<Field> result;
        for (const DbfField &f : m_fields) {
            if (!f.hidden)
                result.append(Field{f.name, f.typeNumber, f.length});
        }
        return result;
    }

    QStringList indexNames() const override { return m_indexNames; }
    qint64 rowCount() const override { return m_recordCount - qint64(m_deleted.size()); }

    Result<IndexKey> indexKey(const QString &indexName) const override
    {
        for (const IndexTag &tag : m_indexTags) {
            if (tag.name != indexName)
                continue;
            if (const std::optional<IndexKey> key = keyOfExpression(tag.expression, fields(), tag.descending))
                return Result<IndexKey>::success(*key);
            return Result<IndexKey>::failure(
                QStringLiteral("The index \"%1\" orders by \"%2\", an expression Tarnby cannot order by.")
                    .arg(indexName, tag.expression));
        }
        return Table::indexKey(indexName);
    }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        QList<Row> rows;
        if (first >= 0 && first < rowCount() && count > 0)
            rows.reserve(qMin<qint64>(count, rowCount() - first));
        const bool read = visitRows(first, count, [&](const char *record) { rows.append(decodeRecord(record)); });
        if (!read)
            return Result<QList<Row>>::failure(readError());
        return Result<QList<Row>>::success(rows);
    }

    // The records formatted straight from their bytes: no value is made for
    // a cell of the common kinds, and a cell of a shape the quick way does
    // not handle is decoded as readRows decodes it.
    Result<qint64> appendCsvRows(qint64 first, qint64 count, QByteArray &out) override
    {
        qint64 written = 0;
        const bool read = visitRows(first, count, [&](const char *record) {
            appendCsvRecord(out, record);
            ++written;
        });
        if (!read)
            return Result<qint64>::failure(readError());
        return Result<qint64>::success(written);
    }

private:
    // Calls visit with the bytes of the records of rows first to first +
    // count - 1 (fewer at the end), in order. Reads as many records at a
    // time as rows are still wanted (more when some of them are deleted), at
    // most maxReadBytes. False when the file could not be read.
    template <typename Visit>
    bool visitRows(qint64 first, qint64 count, Visit visit)
    {
        if (first < 0 || count <= 0 || first >= rowCount())
            return true;
        count = qMin(count, rowCount() - first);
        const qint64 perRead = qMax<qint64>(1, maxReadBytes / m_recordLength);
        qint64 record = recordOfRow(first);
        qint64 visited = 0;
        while (visited < count && record < m_recordCount) {
            const qint64 wanted = qMin(qMin(perRead, count - visited), m_recordCount - record);
            const qint64 bytes = wanted * m_recordLength;
            if (!m_device->seek(m_headerLength + record * m_recordLength))
                return false;
            m_records.resize(bytes);
            if (m_device->read(m_records.data(), bytes) != bytes)
                return false;
            for (qint64 i = 0; i < wanted && visited < count; ++i) {
                const char *data = m_records.constData() + i * m_recordLength;
                if (data[0] == '*')
                    continue;
                visit(data);
                ++visited;
            }
            record += wanted;
        }
        return true;
    }

    void appendCsvRecord(QByteArray &out, const char *record)
    {
        bool firstCell = true;
        for (const DbfField &field : std::as_const(m_fields)) {
            if (field.hidden)
                continue;
            if (!firstCell)
                out += ',';
            firstCell = false;
            appendCell(out, field, record + field.offset);
        }
        out += "\r\n";
    }

    void appendCell(QByteArray &out, const DbfField &field, const char *cell)
    {
        switch (field.type) {
        case 'C':
        case 'V':
            appendTextCell(out, trimmedRight(cell, field.length));
            return;
        case 'N':
        case 'F': {
            const QByteArrayView text = trimmed(cell, field.length);
            if (text.isEmpty() || text.front() == '*')
                return;
            const bool integer = field.decimals == 0 && text.size() <= 18 && !text.contains('.');
            if (integer ? appendIntegerText(out, text) : appendDecimalText(out, text))
                return;
            break;
        }
        case 'D':
            if (appendDateText(out, trimmed(cell, field.length)))
                return;
            break;
        case 'L':
            switch (cell[0]) {
            case 'T': case 't': case 'Y': case 'y':
                out += "True";
                return;
            case 'F': case 'f': case 'N': case 'n':
                out += "False";
                return;
            default:
                return;
            }
        case 'I':
        case '+':
            out += QByteArray::number(qFromLittleEndian<qint32>(cell));
            return;
        case 'M':
        case 'G':
        case 'P':
        case 'W':
        case 'B': {
            if (field.type == 'B' && field.typeNumber == FieldType::Double)
                break;
            const quint64 block = m_memo ? memoBlock(field, cell) : 0;
            const QByteArrayView memo = block != 0 ? m_memo->view(block) : QByteArrayView();
            if (field.typeNumber == FieldType::Memo && !field.binaryMemo)
                appendTextCell(out, memo);
            else
                out += QByteArray::fromRawData(memo.data(), memo.size()).toHex();
            return;
        }
        default:
            break;
        }
        tables::appendCsvCell(out, valueText(decodeCell(field, cell)).toUtf8());
    }

    // Text in the table's code page, quoted when it must be.
    void appendTextCell(QByteArray &out, QByteArrayView text)
    {
        const CellBytes bytes = scanCell(text);
        if (bytes.ascii && !bytes.needsQuotes) {
            out.append(text);
            return;
        }
        if (bytes.ascii) {
            tables::appendCsvCell(out, text);
            return;
        }
        m_utf8.resize(0);
        m_text.appendUtf8(m_utf8, text);
        tables::appendCsvCell(out, m_utf8);
    }

    QString readError() const
    {
        return QStringLiteral("The table \"%1\" could not be read: %2").arg(m_name, m_device->errorString());
    }

    // The record that holds row number row: the smallest record number with
    // row + 1 live records up to and including it.
    qint64 recordOfRow(qint64 row) const
    {
        if (m_deleted.empty())
            return row;
        qint64 low = row;
        qint64 high = m_recordCount - 1;
        while (low < high) {
            const qint64 middle = low + (high - low) / 2;
            const qint64 deletedUpTo = std::upper_bound(m_deleted.begin(), m_deleted.end(), middle) - m_deleted.begin();
            if (middle + 1 - deletedUpTo >= row + 1)
                high = middle;
            else
                low = middle + 1;
        }
        return low;
    }

    Row decodeRecord(const char *record)
    {
        Row row;
        row.reserve(m_fields.size());
        for (const DbfField &field : std::as_const(m_fields)) {
            if (!field.hidden)
                row.append(decodeCell(field, record + field.offset));
        }
        return row;
    }

    QVariant decodeCell(const DbfField &field, const char *cell)
    {
        switch (field.type) {
        case 'C':
        case 'V': {
            const QByteArrayView text = trimmedRight(cell, field.length);
            return m_text.decode(text.data(), text.size());
        }
        case 'N':
        case 'F': {
            const QByteArrayView text = trimmed(cell, field.length);
            if (text.isEmpty() || text.front() == '*')
                return {};
            bool ok = false;
            if (field.decimals == 0 && text.size() <= 18 && !text.contains('.') && !text.contains('e')
                && !text.contains('E')) {
                const qlonglong value = text.toLongLong(&ok);
                if (ok)
                    return value;
            }
            const double value = text.toDouble(&ok);
            return ok ? QVariant(value) : QVariant();
        }
        case 'D': {
            const QByteArrayView text = trimmed(cell, field.length);
            if (text.size() != 8)
                return {};
            bool ok = false;
            const int year = text.sliced(0, 4).toInt(&ok);
            const int month = ok ? text.sliced(4, 2).toInt(&ok) : 0;
            const int day = ok ? text.sliced(6, 2).toInt(&ok) : 0;
            const QDate date(year, month, day);
            return ok && date.isValid() ? QVariant(date) : QVariant();
        }
        case 'L':
            switch (cell[0]) {
            case 'T': case 't': case 'Y': case 'y':
                return true;
            case 'F': case 'f': case 'N': case 'n':
                return false;
            default:
                return {};
            }
        case 'I':
        case '+':
            return qlonglong(qFromLittleEndian<qint32>(cell));
        case 'Y':
            return double(qFromLittleEndian<qint64>(cell)) / 10000.0;
        case 'T': {
            const qint32 julianDay = qFromLittleEndian<qint32>(cell);
            const qint32 milliseconds = qFromLittleEndian<qint32>(cell + 4);
            if (julianDay <= 0)
                return {};
            const QDate date = QDate::fromJulianDay(julianDay);
            const QTime time = QTime::fromMSecsSinceStartOfDay(qBound(0, milliseconds, 86399999));
            return date.isValid() ? QVariant(QDateTime(date, time)) : QVariant();
        }
        case 'O':
            return qFromLittleEndian<double>(cell);
        case 'B':
            if (field.typeNumber == FieldType::Double)
                return qFromLittleEndian<double>(cell);
            [[fallthrough]];
        case 'M':
        case 'G':
        case 'P':
        case 'W': {
            if (!m_memo)
                return {};
            const quint64 block = memoBlock(field, cell);
            if (block == 0)
                return {};
            const QByteArray memo = m_memo->read(block);
            if (memo.isNull())
                return {};
            if (field.typeNumber == FieldType::Memo && !field.binaryMemo)
                return m_text.decode(memo.constData(), memo.size());
            return memo;
        }
        case 'Q':
            return QByteArray(cell, field.length);
        default:
            return QByteArray(cell, field.length);
        }
    }

    QString m_name;
    std::unique_ptr<QIODevice> m_device;
    std::unique_ptr<DbfMemoFile> m_memo;
    QList<DbfField> m_fields;
    QStringList m_indexNames;
    QList<IndexTag> m_indexTags;
    qint64 m_headerLength;
    int m_recordLength;
    qint64 m_recordCount;
    std::vector<qint64> m_deleted; // record numbers marked deleted, ascending
    TextDecoder m_text;
    QByteArray m_records; // the records of the last read
    QByteArray m_utf8;    // a cell's text converted
};

// The one table of a dBASE file. The file was opened for the table, which
// openTable hands over once; to read it again, open the file again.
class DbfFile : public TableFile
{
public:
    DbfFile(std::unique_ptr<DbfTable> table, QString formatName)
        : m_table(std::move(table))
        , m_formatName(std::move(formatName))
        , m_name(m_table->name())
    {
    }

    QString formatName() const override { return m_formatName; }
    QStringList tableNames() const override { return {m_name}; }

    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        if (name.compare(m_name, Qt::CaseInsensitive) != 0)
            return Result<std::unique_ptr<Table>>::failure(
                QStringLiteral("The dBASE file holds no table named \"%1\".").arg(name));
        if (!m_table)
            return Result<std::unique_ptr<Table>>::failure(
                QStringLiteral("The table \"%1\" is already open.").arg(name));
        return Result<std::unique_ptr<Table>>::success(std::move(m_table));
    }

private:
    std::unique_ptr<DbfTable> m_table;
    QString m_formatName;
    QString m_name;
};

int fieldTypeNumber(char type, quint8 version, int length)
{
    switch (type) {
    case 'C': return FieldType::Text;
    case 'V': return FieldType::Text;
    case 'N': return FieldType::Double;
    case 'F': return FieldType::Double;
    case 'O': return FieldType::Double;
    case 'D': return FieldType::Date;
    case 'T': return FieldType::Date;
    case 'L': return FieldType::Boolean;
    case 'I': return FieldType::Long;
    case '+': return FieldType::Long;
    case 'Y': return FieldType::Currency;
    case 'M': return FieldType::Memo;
    // Visual FoxPro's B is a double stored in 8 bytes; dBASE's is a binary
    // memo.
    case 'B': return isVisualFoxPro(version) || length == 8 ? FieldType::Double : FieldType::LongBinary;
    case 'G': return FieldType::LongBinary;
    case 'P': return FieldType::LongBinary;
    case 'W': return FieldType::LongBinary;
    case 'Q': return FieldType::VarBinary;
    default: return FieldType::Binary;
    }
}

// The width a field of this type must have to be decoded as such; fields of
// other widths are refused (a damaged header), 0 means any width.
int requiredLength(char type, int typeNumber)
{
    switch (type) {
    case 'I': case '+': return 4;
    case 'Y': case 'T': case 'O': return 8;
    case 'B': return typeNumber == FieldType::Double ? 8 : 0;
    case 'L': return 1;
    default: return 0;
    }
}

bool isMemoType(char type, int typeNumber)
{
    return type == 'M' || type == 'G' || type == 'P' || type == 'W' || (type == 'B' && typeNumber != FieldType::Double);
}

// dBASE 7 tables share version byte 0x04 with dBASE IV but have a longer
// header and 48-byte field descriptors; their header length betrays them.
bool isDbase7(quint8 version, qint64 headerLength)
{
    if (version == 0x8C)
        return true;
    return version == 0x04 && headerLength >= 68 + 48 + 1 && (headerLength - 68 - 1) % 48 == 0
        && (headerLength - headerSize - 1) % descriptorSize != 0;
}

} // namespace

bool looksLikeDbf(const QByteArray &head)
{
    if (head.size() < headerSize)
        return false;
    const auto *h = reinterpret_cast<const uchar *>(head.constData());
    const int month = h[2];
    const int day = h[3];
    const int headerLength = qFromLittleEndian<quint16>(h + 8);
    const int recordLength = qFromLittleEndian<quint16>(h + 10);
    return knownVersion(h[0]) && month <= 12 && day <= 31 && headerLength >= headerSize + 1 && recordLength >= 1;
}

OpenResult openDbf(DbfSources sources)
{
    const QString &name = sources.tableName;
    QIODevice &device = *sources.table;
    const qint64 fileSize = device.size();
    const auto damaged = [&](const QString &why) {
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The dBASE table \"%1\" is damaged: %2").arg(name, why));
    };

    if (!device.seek(0))
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The dBASE table \"%1\" could not be read.").arg(name));
    const QByteArray head = device.read(headerSize);
    if (head.size() < headerSize || !looksLikeDbf(head))
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("\"%1\" is not a dBASE table.").arg(name));
    const auto *h = reinterpret_cast<const uchar *>(head.constData());
    const quint8 version = h[0];
    const qint64 recordCount = qFromLittleEndian<quint32>(h + 4);
    const qint64 headerLength = qFromLittleEndian<quint16>(h + 8);
    const int recordLength = qFromLittleEndian<quint16>(h + 10);
    const quint8 codePageMark = h[29];

    if (isDbase7(version, headerLength))
        return OpenResult::failure(OpenStatus::Unsupported,
                      QStringLiteral("The table \"%1\" is a dBASE 7 table, which Tarnby cannot read.").arg(name));
    if (headerLength > fileSize)
        return damaged(QStringLiteral("its header claims %1 bytes, but the file holds only %2.")
                           .arg(headerLength)
                           .arg(fileSize));

    // The field descriptors, up to the end mark 0x0D or the header's end.
    const QByteArray header = head + device.read(headerLength - headerSize);
    if (header.size() != headerLength)
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The dBASE table \"%1\" could not be read.").arg(name));
    QList<DbfField> fields;
    int offset = 1; // after the deletion mark
    for (qint64 at = headerSize; at + descriptorSize <= headerLength && header[at] != '\x0D'; at += descriptorSize) {
        if (fields.size() == maxFields)
            return damaged(QStringLiteral("it declares more than %1 fields.").arg(maxFields));
        const char *d = header.constData() + at;
        DbfField field;
        QByteArray rawName(d, 11);
        const qsizetype nul = rawName.indexOf('\0');
        if (nul >= 0)
            rawName.truncate(nul);
        field.name = QString::fromLatin1(rawName.trimmed());
        field.type = char(QChar::toUpper(uchar(d[11])));
        field.length = uchar(d[16]);
        field.decimals = uchar(d[17]);
        field.flags = isVisualFoxPro(version) ? quint8(d[18]) : 0;
        // FoxPro and Clipper store character fields longer than 255 with the
        // high byte of the length in the decimals byte.
        if (field.type == 'C' && field.decimals > 0) {
            field.length += field.decimals * 256;
            field.decimals = 0;
        }
        field.typeNumber = fieldTypeNumber(field.type, version, field.length);
        field.hidden = field.type == '0' || (field.flags & 0x01);
        field.binaryMemo = field.type == 'M' && (field.flags & 0x04);
        field.offset = offset;
        if (field.length == 0)
            return damaged(QStringLiteral("its field \"%1\" has no length.").arg(field.name));
        const int required = requiredLength(field.type, field.typeNumber);
        if (required != 0 && field.length != required)
            return damaged(QStringLiteral("its field \"%1\" of type %2 is %3 bytes long.")
                               .arg(field.name, QChar::fromLatin1(field.type))
                               .arg(field.length));
        if (isMemoType(field.type, field.typeNumber) && field.length != 4 && field.length != 10)
            return damaged(QStringLiteral("its memo field \"%1\" is %2 bytes long.").arg(field.name).arg(field.length));
        offset += field.length;
        fields.append(field);
    }
    if (fields.isEmpty())
        return damaged(QStringLiteral("it declares no fields."));
    if (offset > recordLength)
        return damaged(QStringLiteral("its fields need %1 bytes a record, but its records hold %2.")
                           .arg(offset)
                           .arg(recordLength));
    if (recordCount > (fileSize - headerLength) / recordLength)
        return damaged(QStringLiteral("its header announces %1 records of %2 bytes, but the file holds only %3.")
                           .arg(recordCount)
                           .arg(recordLength)
                           .arg((fileSize - headerLength) / recordLength));

    // One pass over the deletion marks, so that rows can be counted and
    // found without reading the records before them.
    // The reads go to one buffer, small enough to stay in the processor's
    // cache and to be allocated once.
    std::vector<qint64> deleted;
    constexpr qint64 scanBytes = 256 * 1024;
    const qint64 perRead = qMax<qint64>(1, scanBytes / recordLength);
    QByteArray chunk(qMin(perRead, qMax<qint64>(recordCount, 1)) * recordLength, Qt::Uninitialized);
    for (qint64 record = 0; record < recordCount; record += perRead) {
        const qint64 wanted = qMin(perRead, recordCount - record);
        if (!device.seek(headerLength + record * recordLength)
            || device.read(chunk.data(), wanted * recordLength) != wanted * recordLength)
            return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The dBASE table \"%1\" could not be read.").arg(name));
        const char *data = chunk.constData();
        for (qint64 i = 0; i < wanted; ++i) {
            if (data[i * recordLength] == '*')
                deleted.push_back(record + i);
        }
    }

    const bool hasMemoFields = std::any_of(fields.begin(), fields.end(), [](const DbfField &f) {
        return isMemoType(f.type, f.typeNumber);
    });
    std::unique_ptr<DbfMemoFile> memo;
    if (hasMemoFields && sources.memo)
        memo = std::make_unique<DbfMemoFile>(std::move(sources.memo), sources.memoLayout);

    QList<IndexTag> indexTags = sources.indexTags.mid(0, maxIndexNames);
    QStringList indexNames = sources.indexNames.mid(0, maxIndexNames);
    if (!indexTags.isEmpty()) {
        indexNames.clear();
        for (const IndexTag &tag : std::as_const(indexTags))
            indexNames << tag.name;
    }
    auto table = std::make_unique<DbfTable>(name, std::move(sources.table), std::move(memo), std::move(fields),
                                            std::move(indexNames), std::move(indexTags), headerLength, recordLength, recordCount,
                                            std::move(deleted), codePageMark);
    OpenResult result;
    result.file = std::make_unique<DbfFile>(std::move(table), isFoxPro(version) ? QStringLiteral("FoxPro")
                                                                                : QStringLiteral("dBASE"));
    return result;
}

OpenResult openDbfFile(const QString &path)
{
    const QFileInfo info(path);
    auto table = std::make_unique<QFile>(path);
    if (!table->open(QIODevice::ReadOnly | QIODevice::Unbuffered))
        return OpenResult::failure(OpenStatus::Failed,
                      QStringLiteral("The file \"%1\" could not be opened: %2").arg(path, table->errorString()));
    const QByteArray head = table->read(headerSize);
    const quint8 version = head.isEmpty() ? 0 : quint8(head[0]);

    DbfSources sources;
    sources.tableName = info.completeBaseName();
    sources.table = std::move(table);

    // The memo file the table's kind calls for, else the other kind.
    const QString fpt = companionFile(info, QStringLiteral("fpt"));
    const QString dbt = companionFile(info, QStringLiteral("dbt"));
    if (!fpt.isEmpty() && (isFoxPro(version) || dbt.isEmpty())) {
        sources.memo = openForReading(fpt);
        sources.memoLayout = MemoLayout::FoxPro;
    } else if (!dbt.isEmpty()) {
        sources.memo = openForReading(dbt);
        sources.memoLayout = version == 0x83 ? MemoLayout::DbaseIII : MemoLayout::DbaseIV;
    }

    if (const std::unique_ptr<QIODevice> mdx = openForReading(companionFile(info, QStringLiteral("mdx"))))
        sources.indexTags = mdxTags(*mdx, maxIndexNames);
    else if (const std::unique_ptr<QIODevice> cdx = openForReading(companionFile(info, QStringLiteral("cdx"))))
        sources.indexTags = cdxTags(*cdx, maxIndexNames);

    return openDbf(std::move(sources));
}

} // namespace tarnby::tables
