#include "core/platform/imaging/ThumbnailCache.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

#include <png.h>

#include <cerrno>
#include <cstring>
#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tarnby::imaging {

namespace {

const QByteArray KeyUri = QByteArrayLiteral("Thumb::URI");
const QByteArray KeyMTime = QByteArrayLiteral("Thumb::MTime");
const QByteArray KeySize = QByteArrayLiteral("Thumb::Size");
const QByteArray KeyWidth = QByteArrayLiteral("Thumb::Image::Width");
const QByteArray KeyHeight = QByteArrayLiteral("Thumb::Image::Height");
const QByteArray KeySoftware = QByteArrayLiteral("Software");
const QByteArray KeyError = QByteArrayLiteral("X-Tarnby-Error");

// The characters a path keeps bare in a file URI. This is the set the GNOME
// libraries use; KDE agrees on it for ordinary names, and the cache is only
// shared if every program hashes the same URI for the same file.
bool keptBare(unsigned char c)
{
    if ((c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9'))
        return true;
    return std::strchr("!$&'()*+,-./:=@_~", c) != nullptr && c != 0;
}

QByteArray readWholeFile(const QString &path, bool *found)
{
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        *found = false;
        return {};
    }
    *found = true;
    return file.readAll();
}

bool isFresh(const QMap<QByteArray, QByteArray> &text, const ThumbnailSource &source)
{
    if (text.value(KeyMTime) != QByteArray::number(source.mtime))
        return false;
    const auto size = text.constFind(KeySize);
    if (size != text.constEnd() && *size != QByteArray::number(source.size))
        return false;
    // The name is a hash; comparing the URI guards against a collision or a
    // foreign program's misnamed entry.
    const auto uri = text.constFind(KeyUri);
    return uri == text.constEnd() || *uri == source.uri;
}

// Creates each missing folder from root down to relative with mode 0700; the
// cache root's own parent ($XDG_CACHE_HOME) is made with ordinary permissions.
bool makeFolders(const QString &root, const QStringList &relative)
{
    QDir().mkpath(QFileInfo(root).absolutePath());
    QString path = root;
    const auto make = [](const QString &p) {
        return ::mkdir(QFile::encodeName(p).constData(), 0700) == 0 || errno == EEXIST;
    };
    if (!make(path))
        return false;
    for (const QString &part : relative) {
        path += QLatin1Char('/') + part;
        if (!make(path))
            return false;
    }
    return true;
}

void pngWriteToArray(png_structp png, png_bytep data, png_size_t length)
{
    auto *out = static_cast<QByteArray *>(png_get_io_ptr(png));
    out->append(reinterpret_cast<const char *>(data), qsizetype(length));
}

void pngFlush(png_structp) {}

} // namespace

ThumbnailSource ThumbnailSource::fromPath(const QString &path)
{
    ThumbnailSource source;
    source.absolutePath = QFileInfo(path).absoluteFilePath();
    source.uri = ThumbnailCache::fileUri(source.absolutePath);
    struct stat st;
    if (::stat(QFile::encodeName(source.absolutePath).constData(), &st) == 0 && S_ISREG(st.st_mode)) {
        source.exists = true;
        source.mtime = qint64(st.st_mtime);
        source.size = qint64(st.st_size);
    }
    return source;
}

ThumbnailCache::ThumbnailCache(const QString &root)
    : m_root(QDir::cleanPath(QFileInfo(root.isEmpty() ? defaultRoot() : root).absoluteFilePath()))
{
}

QString ThumbnailCache::defaultRoot()
{
    QString base = qEnvironmentVariable("XDG_CACHE_HOME");
    if (base.isEmpty() || !QDir::isAbsolutePath(base))
        base = QDir::homePath() + QStringLiteral("/.cache");
    return base + QStringLiteral("/thumbnails");
}

QByteArray ThumbnailCache::fileUri(const QString &absolutePath)
{
    static const char hex[] = "0123456789ABCDEF";
    const QByteArray bytes = QFile::encodeName(absolutePath);
    QByteArray uri = QByteArrayLiteral("file://");
    uri.reserve(uri.size() + bytes.size() * 3);
    for (const char ch : bytes) {
        const auto c = static_cast<unsigned char>(ch);
        if (keptBare(c)) {
            uri.append(ch);
        } else {
            uri.append('%');
            uri.append(hex[c >> 4]);
            uri.append(hex[c & 15]);
        }
    }
    return uri;
}

QString ThumbnailCache::entryName(const QByteArray &uri)
{
    return QString::fromLatin1(QCryptographicHash::hash(uri, QCryptographicHash::Md5).toHex())
           + QStringLiteral(".png");
}

int ThumbnailCache::flavorSize(int size)
{
    for (const int flavor : {NormalSize, LargeSize, XLargeSize, XXLargeSize}) {
        if (size <= flavor)
            return flavor;
    }
    return 0;
}

QString ThumbnailCache::flavorFolderName(int flavorSize)
{
    switch (flavorSize) {
    case NormalSize:
        return QStringLiteral("normal");
    case LargeSize:
        return QStringLiteral("large");
    case XLargeSize:
        return QStringLiteral("x-large");
    case XXLargeSize:
        return QStringLiteral("xx-large");
    default:
        return {};
    }
}

QString ThumbnailCache::failFolderName()
{
    // The version is part of the name so that a later Tarnby, which may read
    // more formats, tries the failed pictures again.
    return QStringLiteral("tarnby-3.0");
}

QString ThumbnailCache::entryPath(const ThumbnailSource &source, int flavorSize) const
{
    return m_root + QLatin1Char('/') + flavorFolderName(flavorSize) + QLatin1Char('/') + entryName(source.uri);
}

QString ThumbnailCache::failPath(const ThumbnailSource &source) const
{
    return m_root + QStringLiteral("/fail/") + failFolderName() + QLatin1Char('/') + entryName(source.uri);
}

bool ThumbnailCache::accepts(const ThumbnailSource &source) const
{
    return source.exists && !source.absolutePath.startsWith(m_root + QLatin1Char('/'));
}

ThumbnailCache::Entry ThumbnailCache::lookup(const ThumbnailSource &source, int flavorSize) const
{
    Entry entry;
    if (!accepts(source) || flavorFolderName(flavorSize).isEmpty())
        return entry;
    bool found = false;
    QByteArray png = readWholeFile(entryPath(source, flavorSize), &found);
    if (found) {
        QMap<QByteArray, QByteArray> text = readPngText(png);
        if (isFresh(text, source)) {
            entry.status = Entry::Fresh;
            entry.png = std::move(png);
            entry.text = std::move(text);
            return entry;
        }
        entry.status = Entry::Stale;
    }
    bool failFound = false;
    const QByteArray failPng = readWholeFile(failPath(source), &failFound);
    if (failFound) {
        QMap<QByteArray, QByteArray> text = readPngText(failPng);
        if (isFresh(text, source)) {
            entry.status = Entry::Failed;
            entry.errorString = QString::fromUtf8(text.value(KeyError));
            entry.text = std::move(text);
        }
    }
    return entry;
}

QByteArray ThumbnailCache::store(const ThumbnailSource &source, int flavorSize, const QImage &thumb,
                                 QSize originalSize, QString *errorString) const
{
    const auto fail = [errorString](const QString &message) {
        if (errorString)
            *errorString = message;
        return QByteArray();
    };
    if (!accepts(source))
        return fail(QStringLiteral("Thumbnails of this file are not cached."));
    const QString folder = flavorFolderName(flavorSize);
    if (folder.isEmpty() || thumb.isNull())
        return fail(QStringLiteral("There is no thumbnail to cache."));
    QList<QPair<QByteArray, QByteArray>> text{
        {KeyUri, source.uri},
        {KeyMTime, QByteArray::number(source.mtime)},
        {KeySize, QByteArray::number(source.size)},
    };
    if (originalSize.isValid()) {
        text.append({KeyWidth, QByteArray::number(originalSize.width())});
        text.append({KeyHeight, QByteArray::number(originalSize.height())});
    }
    text.append({KeySoftware, QByteArrayLiteral("Tarnby")});
    const QByteArray png = encodeThumbnailPng(thumb, text);
    if (png.isEmpty())
        return fail(QStringLiteral("The thumbnail could not be encoded."));
    if (!makeFolders(m_root, {folder}))
        return fail(QStringLiteral("Cannot create the thumbnail folder %1.").arg(m_root + QLatin1Char('/') + folder));
    if (!writeFileAtomically(entryPath(source, flavorSize), png, 0600, errorString))
        return {};
    return png;
}

bool ThumbnailCache::storeFailure(const ThumbnailSource &source, const QString &reason) const
{
    if (!accepts(source))
        return false;
    if (!makeFolders(m_root, {QStringLiteral("fail"), failFolderName()}))
        return false;
    QImage marker(1, 1, QImage::Format_ARGB32);
    marker.fill(Qt::transparent);
    const QByteArray png = encodeThumbnailPng(marker, {
                                                          {KeyUri, source.uri},
                                                          {KeyMTime, QByteArray::number(source.mtime)},
                                                          {KeySize, QByteArray::number(source.size)},
                                                          {KeySoftware, QByteArrayLiteral("Tarnby")},
                                                          {KeyError, reason.toUtf8()},
                                                      });
    return !png.isEmpty() && writeFileAtomically(failPath(source), png, 0600);
}

QByteArray encodeThumbnailPng(const QImage &source, const QList<QPair<QByteArray, QByteArray>> &text)
{
    if (source.isNull())
        return {};
    QImage image;
    int colorType = PNG_COLOR_TYPE_RGB;
    bool stripFiller = false;
    if (source.hasAlphaChannel()) {
        image = source.convertToFormat(QImage::Format_RGBA8888);
        colorType = PNG_COLOR_TYPE_RGB_ALPHA;
    } else if (source.format() == QImage::Format_Grayscale8 || (source.depth() <= 8 && source.isGrayscale())) {
        image = source.convertToFormat(QImage::Format_Grayscale8);
        colorType = PNG_COLOR_TYPE_GRAY;
    } else {
        // RGB32 goes out without a copy: libpng drops the padding byte and,
        // on little-endian machines, swaps BGR to RGB while writing.
        image = source.convertToFormat(QImage::Format_RGB32);
        stripFiller = true;
    }

    QByteArray out;
    png_structp png = png_create_write_struct(PNG_LIBPNG_VER_STRING, nullptr, nullptr, nullptr);
    if (!png)
        return {};
    png_infop info = png_create_info_struct(png);
    if (!info) {
        png_destroy_write_struct(&png, nullptr);
        return {};
    }
    // Keeps the key and value bytes alive until png_write_info has copied them.
    QList<QByteArray> keep;
    QList<png_text> chunks;
    if (setjmp(png_jmpbuf(png))) {
        png_destroy_write_struct(&png, &info);
        return {};
    }
    png_set_write_fn(png, &out, pngWriteToArray, pngFlush);
    png_set_compression_level(png, 1);
    png_set_IHDR(png, info, png_uint_32(image.width()), png_uint_32(image.height()), 8, colorType,
                 PNG_INTERLACE_NONE, PNG_COMPRESSION_TYPE_DEFAULT, PNG_FILTER_TYPE_DEFAULT);
    for (const auto &[key, value] : text) {
        keep << key << value;
        png_text chunk{};
        chunk.compression = PNG_TEXT_COMPRESSION_NONE;
        chunk.key = const_cast<char *>(keep.at(keep.size() - 2).constData());
        chunk.text = const_cast<char *>(keep.constLast().constData());
        chunk.text_length = size_t(keep.constLast().size());
        chunks.append(chunk);
    }
    if (!chunks.isEmpty())
        png_set_text(png, info, chunks.data(), int(chunks.size()));
    png_write_info(png, info);
    if (stripFiller) {
        png_set_filler(png, 0, PNG_FILLER_AFTER);
#if Q_BYTE_ORDER == Q_LITTLE_ENDIAN
        png_set_bgr(png);
#else
        png_set_swap_alpha(png); // ARGB in memory: move the padding byte last
#endif
    }
    for (int y = 0; y < image.height(); ++y)
        png_write_row(png, const_cast<png_bytep>(image.constScanLine(y)));
    png_write_end(png, info);
    png_destroy_write_struct(&png, &info);
    return out;
}

QMap<QByteArray, QByteArray> readPngText(const QByteArray &png)
{
    QMap<QByteArray, QByteArray> text;
    static const char signature[] = "\x89PNG\r\n\x1a\n";
    if (png.size() < 8 || std::memcmp(png.constData(), signature, 8) != 0)
        return text;
    qsizetype pos = 8;
    while (pos + 8 <= png.size()) {
        const quint32 length = qFromBigEndian<quint32>(png.constData() + pos);
        const QByteArray type = png.mid(pos + 4, 4);
        const qsizetype dataStart = pos + 8;
        if (qint64(length) > png.size() - dataStart - 4 || type == "IDAT" || type == "IEND")
            break;
        if (type == "tEXt") {
            const QByteArray data = png.mid(dataStart, length);
            const qsizetype nul = data.indexOf('\0');
            if (nul > 0)
                text.insert(data.left(nul), data.mid(nul + 1));
        }
        pos = dataStart + qsizetype(length) + 4;
    }
    return text;
}

bool writeFileAtomically(const QString &path, const QByteArray &bytes, int mode, QString *errorString)
{
    // A temporary file in the target folder and a rename: readers in this
    // process or in another program see the old entry or the new one, never a
    // half-written PNG. There is deliberately no fsync: a thumbnail lost to a
    // power cut is made again, while syncing every one would cost more than
    // decoding the picture.
    const auto fail = [&](const QString &what) {
        if (errorString)
            *errorString = QStringLiteral("%1 %2: %3").arg(what, path, QString::fromLocal8Bit(std::strerror(errno)));
        return false;
    };
    QByteArray temp = QFile::encodeName(path) + ".XXXXXX";
    const int fd = ::mkstemp(temp.data());
    if (fd < 0)
        return fail(QStringLiteral("Cannot create a temporary file beside"));
    const char *data = bytes.constData();
    qsizetype left = bytes.size();
    while (left > 0) {
        const ssize_t n = ::write(fd, data, size_t(left));
        if (n < 0 && errno == EINTR)
            continue;
        if (n <= 0) {
            const int saved = errno;
            ::close(fd);
            ::unlink(temp.constData());
            errno = saved;
            return fail(QStringLiteral("Cannot write"));
        }
        data += n;
        left -= n;
    }
    ::fchmod(fd, mode_t(mode));
    if (::close(fd) != 0 || ::rename(temp.constData(), QFile::encodeName(path).constData()) != 0) {
        const int saved = errno;
        ::unlink(temp.constData());
        errno = saved;
        return fail(QStringLiteral("Cannot write"));
    }
    return true;
}

} // namespace tarnby::imaging
