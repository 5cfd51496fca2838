#include "BiffWorkbook.h"

#include "ReaderSupport.h"

#include <QDate>
#include <QDateTime>
#include <QHash>
#include <QStringDecoder>
#include <QTime>
#include <QtEndian>

#include <algorithm>
#include <cmath>
#include <cstring>
#include <utility>

namespace tarnby::tables {

namespace {

// Record numbers.
namespace Rec {
constexpr quint16 Bof2 = 0x0009, Bof3 = 0x0209, Bof4 = 0x0409, Bof = 0x0809;
constexpr quint16 Eof = 0x000A;
constexpr quint16 FilePass = 0x002F;
constexpr quint16 CodePage = 0x0042;
constexpr quint16 DateMode = 0x0022;
constexpr quint16 BoundSheet = 0x0085, BundleSheet = 0x008F;
constexpr quint16 Sst = 0x00FC, Continue = 0x003C;
constexpr quint16 Format2 = 0x001E, Format = 0x041E;
constexpr quint16 Xf2 = 0x0043, Xf3 = 0x0243, Xf4 = 0x0443, Xf = 0x00E0;
constexpr quint16 Integer2 = 0x0002, Number2 = 0x0003, Label2 = 0x0004, BoolErr2 = 0x0005;
constexpr quint16 String2 = 0x0007;
constexpr quint16 Number = 0x0203, Label = 0x0204, BoolErr = 0x0205, String = 0x0207;
constexpr quint16 Formula = 0x0006, Formula3 = 0x0206, Formula4 = 0x0406;
constexpr quint16 Dimensions2 = 0x0000, Dimensions = 0x0200;
constexpr quint16 Rk = 0x027E, MulRk = 0x00BD, LabelSst = 0x00FD, RString = 0x00D6;
} // namespace Rec

// BOF substream types.
constexpr quint16 globalsType = 0x0005;
constexpr quint16 worksheetType = 0x0010;
constexpr quint16 workspaceType = 0x0100;

// The largest sheet any version of the format addresses.
constexpr quint32 maxRows = 65536;
constexpr quint32 maxColumns = 256;

enum class Shown { Number, Date, Time, DateTime };

quint16 u16(const char *p)
{
    return qFromLittleEndian<quint16>(p);
}

quint32 u32(const char *p)
{
    return qFromLittleEndian<quint32>(p);
}

double f64(const char *p)
{
    const quint64 bits = qFromLittleEndian<quint64>(p);
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return value;
}

bool isBof(quint16 type)
{
    return type == Rec::Bof2 || type == Rec::Bof3 || type == Rec::Bof4 || type == Rec::Bof;
}

struct Record {
    quint16 type = 0;
    qsizetype pos = 0;
    const char *data = nullptr;
    qsizetype size = 0;
    qsizetype next() const { return pos + 4 + size; }
};

// How a number format shows a number: as a date, a time, both, or plain.
// Quoted text, escaped characters and [colour] brackets say nothing; only
// the first section (the one for positive numbers) counts.
Shown classifyFormat(const QString &format)
{
    bool date = false;
    bool time = false;
    bool month = false;
    for (qsizetype i = 0; i < format.size(); ++i) {
        const QChar c = format[i].toLower();
        if (c == u';')
            break;
        if (c == u'"') {
            const qsizetype end = format.indexOf(u'"', i + 1);
            i = end < 0 ? format.size() : end;
        } else if (c == u'\\' || c == u'_' || c == u'*') {
            ++i;
        } else if (c == u'[') {
            const qsizetype end = format.indexOf(u']', i + 1);
            const QString inside = format.mid(i + 1, end < 0 ? -1 : end - i - 1).toLower();
            // Elapsed time: [h], [mm], [ss].
            if (!inside.isEmpty() && inside.count(inside[0]) == inside.size()
                && (inside[0] == u'h' || inside[0] == u'm' || inside[0] == u's'))
                time = true;
            i = end < 0 ? format.size() : end;
        } else if (c == u'y' || c == u'd') {
            date = true;
        } else if (c == u'h' || c == u's') {
            time = true;
        } else if (c == u'm') {
            month = true;
        } else if (c == u'g' && format.mid(i, 7).compare(QLatin1String("general"), Qt::CaseInsensitive) == 0) {
            return Shown::Number;
        }
    }
    // "m" is minutes next to hours or seconds, a month otherwise.
    date |= month && !time;
    if (date && time)
        return Shown::DateTime;
    if (date)
        return Shown::Date;
    return time ? Shown::Time : Shown::Number;
}

// The built-in formats of BIFF 5 and 8 that show dates or times.
Shown builtInFormat(int index)
{
    if (index >= 14 && index <= 17)
        return Shown::Date;
    if ((index >= 18 && index <= 21) || (index >= 45 && index <= 47))
        return Shown::Time;
    return index == 22 ? Shown::DateTime : Shown::Number;
}

// A serial day number as the format shows it. The 1900 system counts the
// nonexistent 29 February 1900 as day 60.
QVariant serialValue(double serial, Shown shown, bool system1904)
{
    if (shown == Shown::Number || !std::isfinite(serial) || serial < 0 || serial >= 2958466)
        return serial;
    qint64 seconds = std::llround(serial * 86400.0);
    qint64 days = seconds / 86400;
    seconds %= 86400;
    QDate base;
    if (system1904)
        base = QDate(1904, 1, 1);
    else
        base = days < 60 ? QDate(1899, 12, 31) : QDate(1899, 12, 30);
    const QDate date = base.addDays(days);
    const QTime time = QTime(0, 0).addSecs(int(seconds));
    switch (shown) {
    case Shown::Date:
        return date;
    case Shown::Time:
        return time;
    default:
        return QDateTime(date, time);
    }
}

// Reads the pieces of a record that continues in CONTINUE records: the
// shared string table. A string's characters may be split between pieces;
// each piece that continues characters starts with a new options byte
// (8-bit or 16-bit characters from there on).
class PieceReader
{
public:
    explicit PieceReader(std::vector<std::pair<const char *, qsizetype>> pieces)
        : m_pieces(std::move(pieces))
    {
    }

    bool atEnd()
    {
        skipEmpty();
        return m_piece >= m_pieces.size();
    }

    bool bytes(char *out, qsizetype n)
    {
        while (n > 0) {
            skipEmpty();
            if (m_piece >= m_pieces.size())
                return false;
            const qsizetype take = qMin(n, m_pieces[m_piece].second - m_at);
            std::memcpy(out, m_pieces[m_piece].first + m_at, size_t(take));
            out += take;
            n -= take;
            m_at += take;
        }
        return true;
    }

    bool skip(qint64 n)
    {
        while (n > 0) {
            skipEmpty();
            if (m_piece >= m_pieces.size())
                return false;
            const qsizetype take = qsizetype(qMin<qint64>(n, m_pieces[m_piece].second - m_at));
            n -= take;
            m_at += take;
        }
        return true;
    }

    // count characters, 16-bit when wide (which a piece boundary may change).
    bool characters(qsizetype count, bool wide, QString *out)
    {
        out->reserve(qMin<qsizetype>(count, 8224));
        while (count > 0) {
            if (m_piece >= m_pieces.size() || m_at >= m_pieces[m_piece].second) {
                // Characters go on in the next piece, after an options byte.
                ++m_piece;
                m_at = 0;
                if (m_piece >= m_pieces.size() || m_pieces[m_piece].second < 1)
                    return false;
                wide = m_pieces[m_piece].first[0] & 1;
                m_at = 1;
            }
            const auto &[data, size] = m_pieces[m_piece];
            const qsizetype available = (size - m_at) / (wide ? 2 : 1);
            const qsizetype take = qMin(count, available);
            if (take == 0 && wide && size - m_at == 1)
                return false; // half a character at the end of a piece
            for (qsizetype i = 0; i < take; ++i)
                out->append(wide ? QChar(u16(data + m_at + 2 * i)) : QChar(uchar(data[m_at + i])));
            m_at += take * (wide ? 2 : 1);
            count -= take;
        }
        return true;
    }

private:
    void skipEmpty()
    {
        while (m_piece < m_pieces.size() && m_at >= m_pieces[m_piece].second) {
            ++m_piece;
            m_at = 0;
        }
    }

    std::vector<std::pair<const char *, qsizetype>> m_pieces;
    size_t m_piece = 0;
    qsizetype m_at = 0;
};

// A BIFF 8 string (count of characters, options, then the characters, their
// formatting runs and extra data), read from reader. False when cut short.
bool readUnicodeString(PieceReader &reader, int lengthBytes, QString *out)
{
    char head[4] = {};
    if (!reader.bytes(head, lengthBytes + 1))
        return false;
    const qsizetype count = lengthBytes == 2 ? u16(head) : uchar(head[0]);
    const quint8 options = quint8(head[lengthBytes]);
    quint32 runs = 0;
    quint32 extra = 0;
    char word[4];
    if (options & 0x08) {
        if (!reader.bytes(word, 2))
            return false;
        runs = u16(word);
    }
    if (options & 0x04) {
        if (!reader.bytes(word, 4))
            return false;
        extra = u32(word);
    }
    out->clear();
    if (!reader.characters(count, options & 0x01, out))
        return false;
    return reader.skip(qint64(runs) * 4 + extra);
}

} // namespace

QVariant decodeRk(quint32 rk)
{
    const bool hundredths = rk & 1;
    if (rk & 2) {
        const qint32 whole = qint32(rk) >> 2;
        if (!hundredths)
            return qlonglong(whole);
        return whole / 100.0;
    }
    const quint64 bits = quint64(rk & 0xFFFFFFFCu) << 32;
    double value;
    std::memcpy(&value, &bits, sizeof value);
    return hundredths ? value / 100.0 : value;
}

QVariant BiffSheet::cell(qint64 row, int column) const
{
    if (row < 0 || column < 0)
        return {};
    const auto at = std::lower_bound(cells.begin(), cells.end(), std::pair(quint32(row), quint32(column)),
                                     [](const BiffCell &c, const std::pair<quint32, quint32> &key) {
                                         return std::pair(c.row, c.column) < key;
                                     });
    if (at == cells.end() || at->row != quint32(row) || at->column != quint32(column))
        return {};
    return at->value;
}

struct BiffWorkbook::State {
    QByteArray stream;
    int version = 8;
    bool encrypted = false;
    bool system1904 = false;
    QStringDecoder codePage{"windows-1252", QStringConverter::Flag::Stateless};
    std::vector<QString> sst;
    QHash<int, Shown> formats;
    int implicitFormats = 0; // BIFF 2 to 4 number their formats by order
    std::vector<int> xfFormats;
    struct SheetEntry {
        QString name;
        qsizetype bof = -1; // the sheet's BOF record, or -1 when cells is already read
    };
    QList<SheetEntry> sheets;
    BiffSheet onlySheet; // a BIFF 2 to 4 worksheet file, read at open

    bool recordAt(qsizetype pos, Record *r) const
    {
        if (pos < 0 || pos > stream.size() - 4)
            return false;
        r->type = u16(stream.constData() + pos);
        r->size = u16(stream.constData() + pos + 2);
        r->pos = pos;
        r->data = stream.constData() + pos + 4;
        return r->size <= stream.size() - pos - 4;
    }

    QString decode8(const char *p, qsizetype n)
    {
        codePage.resetState();
        return codePage.decode(QByteArrayView(p, n));
    }

    // A string whose length takes lengthBytes: in BIFF 8 with an options
    // byte (its characters 8-bit Latin-1 or UTF-16), before that 8-bit
    // characters in the workbook's code page.
    QString string(const Record &r, qsizetype at, int lengthBytes)
    {
        if (at + lengthBytes > r.size)
            return {};
        const qsizetype count = lengthBytes == 2 ? u16(r.data + at) : uchar(r.data[at]);
        at += lengthBytes;
        if (version < 8)
            return decode8(r.data + at, qMin(count, r.size - at));
        PieceReader reader({{r.data + at - lengthBytes, r.size - at + lengthBytes}});
        QString text;
        readUnicodeString(reader, lengthBytes, &text);
        return text;
    }

    Shown shownByFormat(int format) const
    {
        const auto known = formats.constFind(format);
        if (known != formats.cend())
            return *known;
        return version >= 5 ? builtInFormat(format) : Shown::Number;
    }

    Shown shownByXf(int xf) const
    {
        if (xf < 0 || size_t(xf) >= xfFormats.size())
            return Shown::Number;
        return shownByFormat(xfFormats[size_t(xf)]);
    }

    void readSst(const Record &first, qsizetype *next)
    {
        std::vector<std::pair<const char *, qsizetype>> pieces{{first.data, first.size}};
        Record r;
        qsizetype pos = first.next();
        while (recordAt(pos, &r) && r.type == Rec::Continue) {
            pieces.emplace_back(r.data, r.size);
            pos = r.next();
        }
        *next = pos;
        PieceReader reader(std::move(pieces));
        char counts[8];
        if (!reader.bytes(counts, 8))
            return;
        // Each string takes at least three bytes: the count bounds nothing
        // the stream does not hold.
        const quint32 unique = u32(counts + 4);
        sst.reserve(size_t(qMin<qint64>(unique, (pos - first.pos) / 3)));
        QString text;
        while (sst.size() < unique && !reader.atEnd() && readUnicodeString(reader, 2, &text))
            sst.push_back(text);
    }

    void readFormat(const Record &r)
    {
        if (r.type == Rec::Format2) {
            // BIFF 2 and 3: the text alone, numbered by order.
            formats.insert(implicitFormats++, classifyFormat(string(r, 0, 1)));
        } else if (version == 4) {
            formats.insert(implicitFormats++, classifyFormat(string(r, 2, 1)));
        } else if (r.size >= 2) {
            formats.insert(u16(r.data), classifyFormat(string(r, 2, version >= 8 ? 2 : 1)));
        }
    }

    void readXf(const Record &r)
    {
        if (r.type == Rec::Xf && r.size >= 4)
            xfFormats.push_back(u16(r.data + 2));
        else if ((r.type == Rec::Xf3 || r.type == Rec::Xf4) && r.size >= 2)
            xfFormats.push_back(uchar(r.data[1]));
        else if (r.type == Rec::Xf2 && r.size >= 3)
            xfFormats.push_back(uchar(r.data[2]) & 0x3F);
    }

    // The records every substream may hold: a BIFF 2 to 4 worksheet keeps
    // its formats and code page with its cells.
    bool readCommon(const Record &r)
    {
        switch (r.type) {
        case Rec::FilePass:
            encrypted = true;
            return true;
        case Rec::CodePage:
            if (r.size >= 2) {
                // 1200 (UTF-16) names BIFF 8 strings, which carry their own
                // encoding; 8-bit strings then stay in Windows-1252.
                const int number = u16(r.data);
                QStringDecoder decoder = codePageDecoder(number == 1200 ? 1252 : number);
                if (decoder.isValid())
                    codePage = std::move(decoder);
            }
            return true;
        case Rec::DateMode:
            system1904 = r.size >= 2 && u16(r.data) == 1;
            return true;
        case Rec::Format2:
        case Rec::Format:
            readFormat(r);
            return true;
        case Rec::Xf2:
        case Rec::Xf3:
        case Rec::Xf4:
        case Rec::Xf:
            readXf(r);
            return true;
        default:
            return false;
        }
    }

    static void put(std::vector<BiffCell> &cells, quint32 row, quint32 column, QVariant value)
    {
        if (row < maxRows && column < maxColumns && value.isValid())
            cells.push_back({row, column, std::move(value)});
    }

    // The format of a cell: BIFF 2 cells carry it in their attribute bytes,
    // later ones name an XF record.
    Shown cellShown(const Record &r) const
    {
        if (version == 2 && (r.type & 0xFF00) == 0)
            return r.size >= 6 ? shownByFormat(uchar(r.data[5]) & 0x3F) : Shown::Number;
        return r.size >= 6 ? shownByXf(u16(r.data + 4)) : Shown::Number;
    }

    // Reads the substream whose BOF is at pos up to its EOF (substreams
    // nested in it, such as charts, skipped), its cells into sheet when
    // there is one. Returns where the next substream starts.
    qsizetype readSubstream(qsizetype pos, BiffSheet *sheet)
    {
        Record r;
        int depth = 0;
        // A formula whose text result follows in a STRING record.
        qint64 pendingRow = -1;
        quint32 pendingColumn = 0;
        while (recordAt(pos, &r)) {
            pos = r.next();
            if (isBof(r.type)) {
                ++depth;
                continue;
            }
            if (r.type == Rec::Eof) {
                if (--depth <= 0)
                    break;
                continue;
            }
            // From BIFF 5 on, formats and shared strings belong to the
            // workbook's globals: a worksheet's copies are not read again.
            if (depth > 1 || ((!sheet || version < 5) && readCommon(r)))
                continue;
            if (encrypted)
                break;
            if (r.type == Rec::Sst && !sheet) {
                readSst(r, &pos);
                continue;
            }
            if (r.type == Rec::BoundSheet && r.size >= 6 && !sheet) {
                // Worksheets only (type 0), not charts, macros or modules.
                if (version < 5 || uchar(r.data[5]) == 0) {
                    sheets.append({string(r, 6, 1), qsizetype(u32(r.data))});
                }
                continue;
            }
            if (r.type == Rec::BundleSheet && !sheet) {
                sheets.append({r.size >= 6 ? string(r, 6, 1) : QString(), -1});
                continue;
            }
            if (!sheet)
                continue;
            if ((r.type == Rec::String || r.type == Rec::String2) && pendingRow >= 0) {
                const QString text = r.type == Rec::String2 ? string(r, 0, 1) : string(r, 0, 2);
                put(sheet->cells, quint32(pendingRow), pendingColumn, text);
                pendingRow = -1;
                continue;
            }
            if (r.type == Rec::Dimensions || (r.type == Rec::Dimensions2 && version == 2)) {
                readDimensions(r, sheet);
                continue;
            }
            readCell(r, sheet, &pendingRow, &pendingColumn);
        }
        return pos;
    }

    // The sheet's used range, blank formatted cells included: the rows and
    // columns after the last one of them, within what a sheet can hold.
    void readDimensions(const Record &r, BiffSheet *sheet) const
    {
        quint32 rows = 0;
        quint32 columns = 0;
        if (version >= 8 && r.size >= 12) {
            rows = u32(r.data + 4);
            columns = u16(r.data + 10);
        } else if (version < 8 && r.size >= 8) {
            rows = u16(r.data + 2);
            columns = u16(r.data + 6);
        }
        sheet->rows = qMin(rows, maxRows);
        sheet->columns = int(qMin(columns, maxColumns));
    }

    void readCell(const Record &r, BiffSheet *sheet, qint64 *pendingRow, quint32 *pendingColumn)
    {
        if (r.size < 4)
            return;
        const quint32 row = u16(r.data);
        const quint32 column = u16(r.data + 2);
        std::vector<BiffCell> &cells = sheet->cells;
        // BIFF 2 cells have three attribute bytes where later ones have an
        // XF number of two.
        const bool biff2 = version == 2 && (r.type & 0xFF00) == 0;
        const qsizetype body = biff2 ? 7 : 6;
        switch (r.type) {
        case Rec::Number:
        case Rec::Number2:
            if (r.size >= body + 8)
                put(cells, row, column, serialValue(f64(r.data + body), cellShown(r), system1904));
            break;
        case Rec::Integer2:
            if (r.size >= body + 2) {
                const Shown shown = cellShown(r);
                const quint16 value = u16(r.data + body);
                put(cells, row, column, shown == Shown::Number ? QVariant(qlonglong(value)) : serialValue(value, shown, system1904));
            }
            break;
        case Rec::Rk:
            if (r.size >= 10) {
                const QVariant v = decodeRk(u32(r.data + 6));
                const Shown shown = cellShown(r);
                put(cells, row, column, shown == Shown::Number ? v : serialValue(v.toDouble(), shown, system1904));
            }
            break;
        case Rec::MulRk:
            for (qsizetype at = 4; at + 6 <= r.size - 2; at += 6) {
                const QVariant v = decodeRk(u32(r.data + at + 2));
                const Shown shown = shownByXf(u16(r.data + at));
                put(cells, row, column + quint32((at - 4) / 6),
                    shown == Shown::Number ? v : serialValue(v.toDouble(), shown, system1904));
            }
            break;
        case Rec::Label:
        case Rec::RString:
            put(cells, row, column, string(r, 6, 2));
            break;
        case Rec::Label2:
            put(cells, row, column, string(r, 7, 1));
            break;
        case Rec::LabelSst:
            if (r.size >= 10) {
                const quint32 index = u32(r.data + 6);
                if (index < sst.size())
                    put(cells, row, column, sst[index]);
            }
            break;
        case Rec::BoolErr:
        case Rec::BoolErr2:
            if (r.size >= body + 2 && r.data[body + 1] == 0)
                put(cells, row, column, bool(r.data[body]));
            break;
        case Rec::Formula:
        case Rec::Formula3:
        case Rec::Formula4:
            readFormula(r, body, cells, pendingRow, pendingColumn);
            break;
        default:
            break;
        }
    }

    // A formula's result as last calculated: a number, or (marked by 0xFFFF
    // in its top bytes) text in the STRING record that follows, a boolean,
    // an error or an empty text.
    void readFormula(const Record &r, qsizetype body, std::vector<BiffCell> &cells, qint64 *pendingRow,
                     quint32 *pendingColumn)
    {
        if (r.size < body + 8)
            return;
        const quint32 row = u16(r.data);
        const quint32 column = u16(r.data + 2);
        const char *result = r.data + body;
        if (u16(result + 6) != 0xFFFF) {
            put(cells, row, column, serialValue(f64(result), cellShown(r), system1904));
            return;
        }
        switch (uchar(result[0])) {
        case 0:
            *pendingRow = row;
            *pendingColumn = column;
            break;
        case 1:
            put(cells, row, column, bool(result[2]));
            break;
        case 3:
            put(cells, row, column, QString(QLatin1String("")));
            break;
        default:
            break;
        }
    }
};

BiffWorkbook::BiffWorkbook()
    : d(std::make_unique<State>())
{
}

BiffWorkbook::~BiffWorkbook() = default;

QString BiffWorkbook::open(QByteArray stream)
{
    d->stream = std::move(stream);
    Record bof;
    if (!d->recordAt(0, &bof) || !isBof(bof.type))
        return QStringLiteral("the stream does not start with a BOF record");
    quint16 substream = worksheetType;
    switch (bof.type) {
    case Rec::Bof2:
        d->version = 2;
        break;
    case Rec::Bof3:
        d->version = 3;
        break;
    case Rec::Bof4:
        d->version = 4;
        if (bof.size >= 4)
            substream = u16(bof.data + 2);
        break;
    default:
        if (bof.size < 4)
            return QStringLiteral("the BOF record is cut short");
        d->version = u16(bof.data) >= 0x0600 ? 8 : 5;
        substream = u16(bof.data + 2);
        break;
    }
    if (d->version >= 5 && substream == globalsType) {
        d->readSubstream(0, nullptr);
        return QString();
    }
    if (d->version == 4 && substream == workspaceType) {
        // A BIFF 4 workbook: its worksheets follow the workspace's records.
        qsizetype pos = d->readSubstream(0, nullptr);
        QList<State::SheetEntry> named = std::exchange(d->sheets, {});
        Record r;
        while (!d->encrypted && d->recordAt(pos, &r)) {
            if (isBof(r.type) && r.size >= 4 && u16(r.data + 2) == worksheetType) {
                const QString name = named.value(d->sheets.size()).name;
                d->sheets.append({name.isEmpty() ? QStringLiteral("Sheet%1").arg(d->sheets.size() + 1) : name, r.pos});
                pos = d->readSubstream(r.pos, nullptr);
            } else {
                pos = r.next();
            }
        }
        return QString();
    }
    if (substream != worksheetType)
        return QStringLiteral("the stream holds no worksheet");
    // A worksheet file: one sheet, read now (its formats come with it).
    d->readSubstream(0, &d->onlySheet);
    d->sheets.append({QStringLiteral("Worksheet"), -1});
    return QString();
}

int BiffWorkbook::biffVersion() const
{
    return d->version;
}

bool BiffWorkbook::encrypted() const
{
    return d->encrypted;
}

QStringList BiffWorkbook::sheetNames() const
{
    QStringList names;
    for (const State::SheetEntry &s : d->sheets)
        names << s.name;
    return names;
}

BiffSheet BiffWorkbook::readSheet(int index) const
{
    BiffSheet sheet;
    if (index < 0 || index >= d->sheets.size() || d->encrypted) {
        sheet.errorString = QStringLiteral("no such worksheet");
        return sheet;
    }
    const State::SheetEntry &entry = d->sheets[index];
    if (entry.bof < 0) {
        sheet = d->onlySheet;
    } else {
        if (d->version < 5) {
            // Each worksheet of a BIFF 4 workbook numbers its own formats.
            d->formats.clear();
            d->implicitFormats = 0;
            d->xfFormats.clear();
        }
        Record bof;
        // The record there must start a worksheet (not the globals again).
        if (!d->recordAt(entry.bof, &bof) || !isBof(bof.type) || bof.size < 4 || u16(bof.data + 2) != worksheetType) {
            sheet.errorString = QStringLiteral("the worksheet's records are not where the workbook says");
            return sheet;
        }
        d->readSubstream(entry.bof, &sheet);
    }
    // Later cells at the same place win over earlier ones.
    std::stable_sort(sheet.cells.begin(), sheet.cells.end(), [](const BiffCell &a, const BiffCell &b) {
        return std::pair(a.row, a.column) < std::pair(b.row, b.column);
    });
    std::vector<BiffCell> unique;
    unique.reserve(sheet.cells.size());
    for (BiffCell &c : sheet.cells) {
        if (!unique.empty() && unique.back().row == c.row && unique.back().column == c.column)
            unique.back() = std::move(c);
        else
            unique.push_back(std::move(c));
    }
    sheet.cells = std::move(unique);
    for (const BiffCell &c : sheet.cells) {
        sheet.rows = qMax<qint64>(sheet.rows, qint64(c.row) + 1);
        sheet.columns = qMax(sheet.columns, int(c.column) + 1);
    }
    // An empty sheet may claim rows without columns.
    if (sheet.columns == 0)
        sheet.rows = 0;
    return sheet;
}

} // namespace tarnby::tables
