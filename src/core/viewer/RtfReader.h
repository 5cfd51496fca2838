#pragma once

#include <QByteArray>
#include <QString>

class QTextDocument;

// Reads Rich Text Format into a QTextDocument: fonts, sizes, bold, italic,
// underline, strike-out, colours, paragraphs with their alignment, indents and
// spacing, tables as tab-separated text, Unicode escapes with their fallback
// skipping, 8-bit text in the document's or the font's code page, and PNG and
// JPEG pictures. Destinations the reader does not know and that are marked
// ignorable are skipped whole.
//
// Malformed input renders what it can: unbalanced groups, truncated files and
// stray bytes never fail the read. Nesting depth and the amount of text and
// picture data are bounded, so hostile input costs bounded time and memory.
// Reentrant: may run on a worker thread with a document owned by that thread.
namespace tarnby::viewer {

struct RtfLimits {
    int maxDepth = 200;
    qint64 maxInputBytes = 256LL * 1024 * 1024;
    qint64 maxPictureBytes = 64LL * 1024 * 1024;
};

class RtfReader
{
public:
    // Fills document (cleared first). Returns false, with errorString, only
    // when data does not start as RTF or exceeds the input limit; everything
    // else reads as far as it can.
    static bool read(const QByteArray &data, QTextDocument *document, QString *errorString = nullptr,
                     const RtfLimits &limits = {});

    // Plain text of an RTF stream, paragraphs separated by "\n" (used to check
    // what a document says without rendering it).
    static QString plainText(const QByteArray &data);
};

} // namespace tarnby::viewer
