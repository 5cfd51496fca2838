#pragma once

#include <QByteArray>
#include <QImage>
#include <QMap>
#include <QSize>
#include <QString>

// The thumbnail cache that Tarnby shares with the other programs of the
// desktop: $XDG_CACHE_HOME/thumbnails (default ~/.cache/thumbnails), one folder
// per size ("normal" 128, "large" 256, "x-large" 512, "xx-large" 1024), each
// thumbnail a PNG named after the MD5 of its picture's file URI and carrying
// that URI and the picture's modification time in text chunks. A thumbnail
// whose recorded time differs from the file's is stale and is made anew.
// Pictures that cannot be read leave a small marker under fail/tarnby-3.0/ so
// that they are not tried again until they change.
//
// Every member is const and works on files only, so one ThumbnailCache (or
// several pointing at the same folder) may be used from any number of threads
// and processes at once: entries are written to a temporary file in the same
// folder and renamed into place, so a reader sees a whole PNG or none.
namespace tarnby::imaging {

// What the cache needs to know about a picture file; taken once per request.
struct ThumbnailSource {
    QString absolutePath;
    QByteArray uri;     // file:///..., percent-encoded
    qint64 mtime = 0;   // seconds since the epoch
    qint64 size = 0;    // bytes
    bool exists = false;

    static ThumbnailSource fromPath(const QString &path);
};

class ThumbnailCache
{
public:
    // The folder sizes; a request is served from the smallest one that holds it.
    static constexpr int NormalSize = 128;
    static constexpr int LargeSize = 256;
    static constexpr int XLargeSize = 512;
    static constexpr int XXLargeSize = 1024;

    // Uses root as the cache folder; an empty root means defaultRoot(),
    // evaluated now (so tests may point XDG_CACHE_HOME elsewhere first).
    explicit ThumbnailCache(const QString &root = QString());

    // $XDG_CACHE_HOME/thumbnails, or ~/.cache/thumbnails when the variable is
    // unset or not absolute.
    static QString defaultRoot();

    // The file URI of an absolute path: "file://" followed by the path's bytes,
    // every byte outside the characters a path may carry bare percent-encoded
    // with upper-case digits ("/a b/ä" gives "file:///a%20b/%C3%A4").
    static QByteArray fileUri(const QString &absolutePath);
    // MD5 of the URI in lower-case hex, plus ".png".
    static QString entryName(const QByteArray &uri);
    // The folder size that serves a request of size pixels (128, 256, 512 or
    // 1024); 0 when size is larger than any folder.
    static int flavorSize(int size);
    static QString flavorFolderName(int flavorSize);

    QString root() const { return m_root; }
    QString entryPath(const ThumbnailSource &source, int flavorSize) const;
    QString failPath(const ThumbnailSource &source) const;

    // False for files inside the cache folder itself (thumbnails of thumbnails
    // would grow without end) and for files that do not exist.
    bool accepts(const ThumbnailSource &source) const;

    struct Entry {
        enum Status { Missing, Fresh, Stale, Failed };
        Status status = Missing;
        QByteArray png;                 // the entry's bytes, when Fresh
        QMap<QByteArray, QByteArray> text; // its text chunks, when Fresh or Failed
        QString errorString;            // the recorded reason, when Failed
    };

    // Looks up the thumbnail of source at flavorSize. Reads the entry's bytes
    // and its text chunks but does not decode the pixels. A fresh failure
    // marker wins over a missing thumbnail (Failed); a stale one is ignored.
    Entry lookup(const ThumbnailSource &source, int flavorSize) const;

    // Encodes thumb as PNG with the keys Thumb::URI, Thumb::MTime, Thumb::Size
    // and, when originalSize is valid, Thumb::Image::Width and Height, and
    // stores it atomically (folders 0700, file 0600). Returns the PNG bytes, or
    // an empty array and sets *errorString when the entry could not be written.
    QByteArray store(const ThumbnailSource &source, int flavorSize, const QImage &thumb, QSize originalSize,
                     QString *errorString = nullptr) const;

    // Records that source could not be read, with the reason.
    bool storeFailure(const ThumbnailSource &source, const QString &reason) const;

    // The name of this program's folder under fail/.
    static QString failFolderName();

private:
    QString m_root;
};

// PNG helpers shared by the cache and the thumbs command.

// Encodes image as an 8-bit PNG (grey, RGB or RGBA as the image needs) with the
// given text chunks written uncompressed before the pixels. Fast zlib settings:
// thumbnails are written far more often than they are worth squeezing.
QByteArray encodeThumbnailPng(const QImage &image, const QList<QPair<QByteArray, QByteArray>> &text);

// The tEXt chunks that come before the first IDAT of png; empty when png is
// not a PNG.
QMap<QByteArray, QByteArray> readPngText(const QByteArray &png);

// Writes bytes to path through a temporary file in the same folder and a
// rename, with the given permissions. No fsync: see the .cpp.
bool writeFileAtomically(const QString &path, const QByteArray &bytes, int mode, QString *errorString = nullptr);

} // namespace tarnby::imaging
