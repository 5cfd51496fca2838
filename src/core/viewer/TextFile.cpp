#include "core/viewer/TextFile.h"

#include <QFile>
#include <QStringDecoder>

namespace tarnby::viewer {

namespace {

// Windows-1252 differs from Latin-1 only in 0x80-0x9F. The table is kept here
// so that decoding never depends on which converters the Qt build carries.
constexpr char16_t Cp1252High[32] = {
    0x20AC, 0xFFFD, 0x201A, 0x0192, 0x201E, 0x2026, 0x2020, 0x2021, 0x02C6, 0x2030, 0x0160,
    0x2039, 0x0152, 0xFFFD, 0x017D, 0xFFFD, 0xFFFD, 0x2018, 0x2019, 0x201C, 0x201D, 0x2022,
    0x2013, 0x2014, 0x02DC, 0x2122, 0x0161, 0x203A, 0x0153, 0xFFFD, 0x017E, 0x0178,
};

QString decodeCp1252(QByteArrayView bytes)
{
    QString out(bytes.size(), Qt::Uninitialized);
    QChar *d = out.data();
    for (qsizetype i = 0; i < bytes.size(); ++i) {
        const auto b = uchar(bytes[i]);
        d[i] = (b >= 0x80 && b < 0xA0) ? QChar(Cp1252High[b - 0x80]) : QChar(b);
    }
    return out;
}

// True when bytes are valid UTF-8; a sequence cut short at the very end is
// accepted when allowTruncatedEnd is set.
bool isValidUtf8(QByteArrayView bytes, bool allowTruncatedEnd)
{
    const qsizetype n = bytes.size();
    qsizetype i = 0;
    while (i < n) {
        const auto b = uchar(bytes[i]);
        int extra = 0;
        if (b < 0x80) {
            ++i;
            continue;
        } else if (b >= 0xC2 && b <= 0xDF) {
            extra = 1;
        } else if (b >= 0xE0 && b <= 0xEF) {
            extra = 2;
        } else if (b >= 0xF0 && b <= 0xF4) {
            extra = 3;
        } else {
            return false;
        }
        if (i + extra >= n) {
            // The sequence runs past the end of the bytes we have.
            if (!allowTruncatedEnd)
                return false;
            for (qsizetype k = i + 1; k < n; ++k) {
                if ((uchar(bytes[k]) & 0xC0) != 0x80)
                    return false;
            }
            return true;
        }
        for (int k = 1; k <= extra; ++k) {
            if ((uchar(bytes[i + k]) & 0xC0) != 0x80)
                return false;
        }
        i += extra + 1;
    }
    return true;
}

QString normaliseLineEnds(QString text)
{
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
    text.replace(QLatin1Char('\r'), QLatin1Char('\n'));
    text.replace(QChar(0), QChar(QChar::ReplacementCharacter));
    return text;
}

int unitSize(TextEncoding e)
{
    return (e == TextEncoding::Utf16LE || e == TextEncoding::Utf16BE) ? 2 : 1;
}

// The offset just after the first line end in chunk (which starts at a page
// boundary aligned to the encoding's unit), or -1.
qsizetype afterLineEnd(QByteArrayView chunk, TextEncoding e)
{
    if (unitSize(e) == 1) {
        const qsizetype at = chunk.indexOf('\n');
        return at < 0 ? -1 : at + 1;
    }
    for (qsizetype i = 0; i + 1 < chunk.size(); i += 2) {
        const bool newline = e == TextEncoding::Utf16LE ? (chunk[i] == '\n' && chunk[i + 1] == 0)
                                                        : (chunk[i] == 0 && chunk[i + 1] == '\n');
        if (newline)
            return i + 2;
    }
    return -1;
}

// Moves a boundary that has no line end nearby onto a character boundary.
qsizetype characterBoundary(QByteArrayView chunk, TextEncoding e)
{
    if (e == TextEncoding::Utf8) {
        qsizetype i = 0;
        while (i < chunk.size() && i < 4 && (uchar(chunk[i]) & 0xC0) == 0x80)
            ++i;
        return i;
    }
    if (e == TextEncoding::Utf16LE || e == TextEncoding::Utf16BE) {
        // Do not split a surrogate pair: skip a low surrogate at the boundary.
        if (chunk.size() >= 2) {
            const uchar hi = uchar(e == TextEncoding::Utf16LE ? chunk[1] : chunk[0]);
            if (hi >= 0xDC && hi <= 0xDF)
                return 2;
        }
    }
    return 0;
}

} // namespace

DetectedEncoding detectEncoding(QByteArrayView head, bool isWholeFile)
{
    if (head.startsWith("\xEF\xBB\xBF"))
        return {TextEncoding::Utf8, 3};
    if (head.startsWith("\xFF\xFE"))
        return {TextEncoding::Utf16LE, 2};
    if (head.startsWith("\xFE\xFF"))
        return {TextEncoding::Utf16BE, 2};
    if (isValidUtf8(head, !isWholeFile))
        return {TextEncoding::Utf8, 0};
    return {TextEncoding::Windows1252, 0};
}

QString decodeText(QByteArrayView bytes, TextEncoding encoding)
{
    switch (encoding) {
    case TextEncoding::Utf8:
        return normaliseLineEnds(QString::fromUtf8(bytes));
    case TextEncoding::Utf16LE: {
        QStringDecoder d(QStringDecoder::Utf16LE, QStringDecoder::Flag::Stateless);
        return normaliseLineEnds(d.decode(bytes));
    }
    case TextEncoding::Utf16BE: {
        QStringDecoder d(QStringDecoder::Utf16BE, QStringDecoder::Flag::Stateless);
        return normaliseLineEnds(d.decode(bytes));
    }
    case TextEncoding::Windows1252:
        return normaliseLineEnds(decodeCp1252(bytes));
    }
    return {};
}

TextLayout TextFile::scan(const QString &path, qint64 pageBytes)
{
    TextLayout layout;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        layout.errorString = file.errorString();
        return layout;
    }
    layout.fileSize = file.size();
    const QByteArray head = file.read(HeadBytes);
    layout.encoding = detectEncoding(head, head.size() >= layout.fileSize);
    layout.pageStarts << layout.encoding.bomLength;

    const TextEncoding e = layout.encoding.encoding;
    const int unit = unitSize(e);
    pageBytes = std::max<qint64>(pageBytes, 64);
    for (qint64 boundary = pageBytes; boundary < layout.fileSize; boundary += pageBytes) {
        qint64 at = boundary;
        // Keep UTF-16 boundaries on whole code units counted from the mark.
        if (unit == 2 && (at - layout.encoding.bomLength) % 2)
            ++at;
        if (at <= layout.pageStarts.constLast() || !file.seek(at))
            continue;
        const QByteArray chunk = file.read(HeadBytes);
        qsizetype step = afterLineEnd(chunk, e);
        if (step < 0)
            step = characterBoundary(chunk, e);
        const qint64 start = at + step;
        if (start > layout.pageStarts.constLast() && start < layout.fileSize)
            layout.pageStarts << start;
    }
    return layout;
}

QString TextFile::readPage(const QString &path, const TextLayout &layout, int page, QString *errorString)
{
    if (page < 0 || page >= layout.pageCount()) {
        if (errorString)
            *errorString = QStringLiteral("There is no such page.");
        return {};
    }
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly) || !file.seek(layout.pageStarts.at(page))) {
        if (errorString)
            *errorString = file.errorString();
        return {};
    }
    const qint64 end = page + 1 < layout.pageCount() ? layout.pageStarts.at(page + 1) : layout.fileSize;
    const QByteArray bytes = file.read(end - layout.pageStarts.at(page));
    return decodeText(bytes, layout.encoding.encoding);
}

} // namespace tarnby::viewer
