#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QList>
#include <QString>

// Plain text files: encoding detection and reading in pages.
//
// A text file of any size is shown one page at a time, so that a file of
// hundreds of megabytes costs one page of memory and never blocks the
// interface: scan() finds the page boundaries (cheap: it seeks to each page
// size and looks for the next line end) and readPage() decodes one page. Both
// are synchronous and reentrant; windows call them on a worker thread.
namespace tarnby::viewer {

enum class TextEncoding { Utf8, Utf16LE, Utf16BE, Windows1252 };

struct DetectedEncoding {
    TextEncoding encoding = TextEncoding::Utf8;
    int bomLength = 0; // bytes of byte-order mark at the start of the file
};

// Decides the encoding from the first bytes of a file: a UTF-8 or UTF-16
// byte-order mark; else UTF-8 when the bytes are valid UTF-8 (an incomplete
// sequence cut off at the end of a sample that is not the whole file is
// allowed); else Windows-1252, which accepts any bytes.
DetectedEncoding detectEncoding(QByteArrayView head, bool isWholeFile);

// Decodes bytes of the given encoding. NUL characters, which no text box shows,
// become U+FFFD so that binary junk still reads as text; line ends become "\n".
QString decodeText(QByteArrayView bytes, TextEncoding encoding);

struct TextLayout {
    DetectedEncoding encoding;
    qint64 fileSize = 0;
    // Byte offsets where pages start; the first is the end of the byte-order
    // mark. A page ends where the next begins or at the end of the file.
    QList<qint64> pageStarts;
    QString errorString;

    bool ok() const { return errorString.isEmpty(); }
    int pageCount() const { return int(pageStarts.size()); }
};

class TextFile
{
public:
    static constexpr qint64 DefaultPageBytes = 1024 * 1024;
    static constexpr qint64 HeadBytes = 64 * 1024;

    // Detects the encoding and the page boundaries. A page is about pageBytes
    // long and ends after a line end when one lies within the next 64 KB.
    static TextLayout scan(const QString &path, qint64 pageBytes = DefaultPageBytes);
    // Reads and decodes one page; on failure returns an empty string and sets
    // *errorString.
    static QString readPage(const QString &path, const TextLayout &layout, int page, QString *errorString = nullptr);
};

} // namespace tarnby::viewer
