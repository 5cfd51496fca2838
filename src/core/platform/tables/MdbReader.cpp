#include "MdbReader.h"

#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QFile>
#include <QFileInfo>
#include <QHash>
#include <QtEndian>

// libmdb's header needs glib's declarations first.
#include <glib.h>
#include <mdbtools.h>

#include <cstring>
#include <vector>

namespace tarnby::tables {

namespace {

constexpr int headerMaskOffset = 0x18;
constexpr int headerMaskLength = 128;
constexpr int passwordOffset = 0x42;
constexpr int creationDateOffset = 0x72;

// The key stream of RC4 with the key Jet uses for every header.
QByteArray headerKeyStream()
{
    const uchar key[4] = {0xC7, 0xDA, 0x39, 0x6B};
    uchar s[256];
    for (int i = 0; i < 256; ++i)
        s[i] = uchar(i);
    for (int i = 0, j = 0; i < 256; ++i) {
        j = (j + s[i] + key[i % 4]) & 0xFF;
        std::swap(s[i], s[j]);
    }
    QByteArray stream(headerMaskLength, '\0');
    for (int n = 0, i = 0, j = 0; n < headerMaskLength; ++n) {
        i = (i + 1) & 0xFF;
        j = (j + s[i]) & 0xFF;
        std::swap(s[i], s[j]);
        stream[n] = char(s[(s[i] + s[j]) & 0xFF]);
    }
    return stream;
}

int fieldTypeNumber(int mdbType)
{
    switch (mdbType) {
    case MDB_BOOL: return FieldType::Boolean;
    case MDB_BYTE: return FieldType::Byte;
    case MDB_INT: return FieldType::Integer;
    case MDB_LONGINT: return FieldType::Long;
    case MDB_MONEY: return FieldType::Currency;
    case MDB_FLOAT: return FieldType::Single;
    case MDB_DOUBLE: return FieldType::Double;
    case MDB_DATETIME: return FieldType::Date;
    case MDB_BINARY: return FieldType::Binary;
    case MDB_TEXT: return FieldType::Text;
    case MDB_OLE: return FieldType::LongBinary;
    case MDB_MEMO: return FieldType::Memo;
    case MDB_REPID: return FieldType::Guid;
    case MDB_NUMERIC: return FieldType::Decimal;
    default: return FieldType::Binary;
    }
}

// One libmdb handle per open file, shared by its tables.
struct Handle {
    MdbHandle *mdb = nullptr;
    ~Handle()
    {
        if (mdb)
            mdb_close(mdb);
    }
};

class MdbTable : public Table
{
public:
    MdbTable(std::shared_ptr<Handle> handle, MdbTableDef *table)
        : m_handle(std::move(handle))
        , m_table(table)
    {
        const bool jet4 = m_handle->mdb->f->jet_version != MDB_VER_JET3;
        mdb_read_columns(m_table);
        mdb_read_indices(m_table);
        const int bindSize = int(m_handle->mdb->bind_size);
        m_buffers.resize(m_table->num_cols);
        m_lengths.resize(m_table->num_cols);
        for (unsigned i = 0; i < m_table->num_cols; ++i) {
            auto *column = static_cast<MdbColumn *>(g_ptr_array_index(m_table->columns, i));
            int size = column->col_size;
            if (column->col_type == MDB_TEXT && jet4)
                size /= 2;
            m_fields.append(Field{QString::fromUtf8(column->name), fieldTypeNumber(column->col_type), size});
            m_types.push_back(column->col_type);
            m_buffers[i].resize(size_t(bindSize) + 1);
            mdb_bind_column(m_table, int(i) + 1, m_buffers[i].data(), &m_lengths[i]);
        }
        for (unsigned i = 0; m_table->indices && i < m_table->num_idxs && m_indexNames.size() < maxIndexNames; ++i) {
            const auto *index = static_cast<MdbIndex *>(g_ptr_array_index(m_table->indices, i));
            const QString name = QString::fromUtf8(index->name);
            // Indexes of relationships carry names starting with a dot.
            if (name.isEmpty() || name.startsWith(QLatin1Char('.')))
                continue;
            m_indexNames << name;
            IndexKey key;
            for (unsigned k = 0; k < index->num_keys && k < MDB_MAX_IDX_COLS; ++k) {
                const int column = index->key_col_num[k] - 1;
                if (column < 0 || column >= m_fields.size()) {
                    key.parts.clear();
                    break;
                }
                // Jet compares text without regard to case.
                key.parts.append(IndexKey::Part{column, index->key_col_order[k] == MDB_DESC, true});
            }
            if (!key.parts.isEmpty())
                m_indexKeys.insert(name, key);
        }
        mdb_rewind_table(m_table);
    }

    ~MdbTable() override { mdb_free_tabledef(m_table); }

    QString name() const override { return QString::fromUtf8(m_table->name); }
    QList<Field> fields() const override { return m_fields; }
    QStringList indexNames() const override { return m_indexNames; }
    qint64 rowCount() const override { return m_table->num_rows; }
    Result<IndexKey> indexKey(const QString &indexName) const override
    {
        const auto found = m_indexKeys.constFind(indexName);
        return found == m_indexKeys.constEnd() ? Table::indexKey(indexName) : Result<IndexKey>::success(*found);
    }

    Result<QList<Row>> readRows(qint64 first, int count) override
    {
        QList<Row> rows;
        if (first < 0 || count <= 0 || first >= rowCount())
            return Result<QList<Row>>::success(rows);
        if (first < m_next) {
            mdb_rewind_table(m_table);
            m_next = 0;
        }
        while (m_next < first) {
            if (!mdb_fetch_row(m_table))
                return Result<QList<Row>>::success(rows);
            ++m_next;
        }
        while (rows.size() < count && mdb_fetch_row(m_table)) {
            ++m_next;
            rows.append(currentRow());
        }
        return Result<QList<Row>>::success(rows);
    }

private:
    Row currentRow()
    {
        Row row;
        row.reserve(m_fields.size());
        for (int i = 0; i < m_fields.size(); ++i)
            row.append(value(i));
        return row;
    }

    QVariant value(int i)
    {
        auto *column = static_cast<MdbColumn *>(g_ptr_array_index(m_table->columns, i));
        const int length = m_lengths[size_t(i)];
        const char *text = m_buffers[size_t(i)].data();
        switch (m_types[size_t(i)]) {
        case MDB_BOOL:
            // Booleans are never null in Jet; libmdb gives "1" or "0".
            return length > 0 && text[0] == '1';
        case MDB_BYTE:
        case MDB_INT:
        case MDB_LONGINT:
            return length > 0 ? QVariant(QByteArray(text, length).toLongLong()) : QVariant();
        case MDB_MONEY:
        case MDB_FLOAT:
        case MDB_DOUBLE:
        case MDB_NUMERIC:
            return length > 0 ? QVariant(QByteArray(text, length).toDouble()) : QVariant();
        case MDB_DATETIME: {
            if (length <= 0)
                return {};
            const QDateTime when = QDateTime::fromString(QString::fromUtf8(text, length), Qt::ISODate);
            if (!when.isValid())
                return QString::fromUtf8(text, length);
            if (when.time() == QTime(0, 0))
                return when.date();
            return when;
        }
        case MDB_MEMO: {
            // The bound copy stops at the bind size, so the memo is read
            // whole from the row, as libmdb itself converts it for binding.
            if (length <= 0 || column->cur_value_len <= 0)
                return {};
            char *whole = mdb_col_to_string(m_handle->mdb, m_handle->mdb->pg_buf, column->cur_value_start,
                                            MDB_MEMO, column->cur_value_len);
            const QString memo = whole ? QString::fromUtf8(whole) : QString::fromUtf8(text, length);
            g_free(whole);
            return memo;
        }
        case MDB_OLE: {
            if (length <= 0)
                return {};
            size_t size = 0;
            void *data = mdb_ole_read_full(m_handle->mdb, column, &size);
            if (!data)
                return {};
            const QByteArray bytes(static_cast<const char *>(data), qsizetype(size));
            free(data);
            return bytes;
        }
        case MDB_BINARY:
            return length > 0 ? QVariant(QByteArray(text, length)) : QVariant();
        default:
            return length > 0 ? QVariant(QString::fromUtf8(text, length)) : QVariant();
        }
    }

    std::shared_ptr<Handle> m_handle;
    MdbTableDef *m_table;
    QList<Field> m_fields;
    QStringList m_indexNames;
    QHash<QString, IndexKey> m_indexKeys;
    std::vector<int> m_types;
    std::vector<std::vector<char>> m_buffers;
    std::vector<int> m_lengths;
    qint64 m_next = 0;
};

class MdbFile : public TableFile
{
public:
    MdbFile(std::shared_ptr<Handle> handle, std::vector<MdbCatalogEntry *> entries)
        : m_handle(std::move(handle))
        , m_entries(std::move(entries))
    {
    }

    QString formatName() const override { return QStringLiteral("Access"); }
    QStringList tableNames() const override
    {
        QStringList names;
        for (const MdbCatalogEntry *entry : m_entries)
            names << QString::fromUtf8(entry->object_name);
        return names;
    }

    Result<std::unique_ptr<Table>> openTable(const QString &name) override
    {
        for (MdbCatalogEntry *entry : m_entries) {
            if (QString::fromUtf8(entry->object_name) != name)
                continue;
            MdbTableDef *table = mdb_read_table(entry);
            if (!table)
                return Result<std::unique_ptr<Table>>::failure(
                    QStringLiteral("The table \"%1\" could not be read.").arg(name));
            return Result<std::unique_ptr<Table>>::success(std::make_unique<MdbTable>(m_handle, table));
        }
        return Result<std::unique_ptr<Table>>::failure(
            QStringLiteral("The Access database holds no table named \"%1\".").arg(name));
    }

private:
    std::shared_ptr<Handle> m_handle;
    std::vector<MdbCatalogEntry *> m_entries;
};

} // namespace

QString mdbPassword(const QByteArray &page)
{
    if (page.size() < headerMaskOffset + headerMaskLength)
        return {};
    if (!page.mid(4, 15).startsWith("Standard Jet DB"))
        return {};
    const quint32 version = qFromLittleEndian<quint32>(page.constData() + 0x14);
    if (version > MDB_VER_JET4)
        return {};
    const bool jet4 = version == MDB_VER_JET4;
    QByteArray header = page.left(headerMaskOffset + headerMaskLength);
    const QByteArray stream = headerKeyStream();
    for (int i = 0; i < headerMaskLength; ++i)
        header[headerMaskOffset + i] = char(header[headerMaskOffset + i] ^ stream[i]);
    QByteArray password = header.mid(passwordOffset, jet4 ? 40 : 20);
    if (jet4) {
        // The creation date (a double) truncated to an integer, as four
        // little-endian bytes, masks the password once more.
        const double created = qFromLittleEndian<double>(header.constData() + creationDateOffset);
        uchar mask[4];
        const bool inRange = created > -2147483648.0 && created < 2147483648.0;
        qToLittleEndian(inRange ? qint32(created) : qint32(0), mask);
        for (int i = 0; i < password.size(); ++i)
            password[i] = char(password[i] ^ mask[i % 4]);
        QString text = QString::fromUtf16(reinterpret_cast<const char16_t *>(password.constData()), password.size() / 2);
        const qsizetype end = text.indexOf(QChar(0));
        return end >= 0 ? text.left(end) : text;
    }
    const qsizetype end = password.indexOf('\0');
    return QString::fromLatin1(end >= 0 ? password.left(end) : password);
}

OpenResult openMdbFile(const QString &path, const QString &password)
{
    const QString fileName = QFileInfo(path).fileName();
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The file \"%1\" could not be opened: %2").arg(path, file.errorString()));
    const QByteArray page = file.read(2048);
    file.close();
    if (page.size() < 2048 || !page.mid(4, 15).startsWith("Standard Jet DB"))
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("\"%1\" is not an Access database.").arg(fileName));
    const QString stored = mdbPassword(page);
    if (!stored.isEmpty() && password.isEmpty())
        return OpenResult::failure(OpenStatus::PasswordRequired,
                      QStringLiteral("The Access database \"%1\" is protected by a password.").arg(fileName));
    if (!stored.isEmpty() && password != stored)
        return OpenResult::failure(OpenStatus::WrongPassword,
                      QStringLiteral("The password for the Access database \"%1\" is not correct.").arg(fileName));

    auto handle = std::make_shared<Handle>();
    handle->mdb = mdb_open(QFile::encodeName(path).constData(), MDB_NOFLAGS);
    if (!handle->mdb)
        return OpenResult::failure(OpenStatus::Failed, QStringLiteral("The Access database \"%1\" could not be opened.").arg(fileName));
    // Every bound column gets a buffer of the bind size. libmdb copies OLE
    // objects into theirs a data page (up to 4 KB) at a time and sizes some
    // buffers of its own catalogue reading by it, so it stays well above a
    // page; memos are read whole apart from it (see MdbTable::value).
    mdb_set_bind_size(handle->mdb, 64 * 1024);
    mdb_set_date_fmt(handle->mdb, "%Y-%m-%dT%H:%M:%S");
    GPtrArray *catalog = mdb_read_catalog(handle->mdb, MDB_TABLE);
    if (!catalog)
        return OpenResult::failure(OpenStatus::Failed,
                      QStringLiteral("The Access database \"%1\" is damaged: its list of tables cannot be read.").arg(fileName));
    std::vector<MdbCatalogEntry *> entries;
    for (guint i = 0; i < catalog->len && entries.size() < size_t(maxTables); ++i) {
        auto *entry = static_cast<MdbCatalogEntry *>(g_ptr_array_index(catalog, i));
        if (entry->object_type == MDB_TABLE && !mdb_is_system_table(entry))
            entries.push_back(entry);
    }
    OpenResult result;
    result.file = std::make_unique<MdbFile>(std::move(handle), std::move(entries));
    return result;
}

} // namespace tarnby::tables
