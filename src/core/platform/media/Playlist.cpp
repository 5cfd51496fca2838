#include "core/platform/media/Playlist.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QRegularExpression>
#include <QStringDecoder>
#include <QXmlStreamReader>
#include <QtEndian>

namespace tarnby::media {

namespace {

bool looksLikeAddress(const QString &location)
{
    static const QRegularExpression scheme(QStringLiteral("^[A-Za-z][A-Za-z0-9+.-]+://"));
    return scheme.match(location).hasMatch();
}

QString decodeText(const QByteArray &data)
{
    QByteArray bytes = data;
    if (bytes.startsWith("\xEF\xBB\xBF"))
        bytes.remove(0, 3);
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    const QString text = utf8.decode(bytes);
    if (!utf8.hasError())
        return text;
    return QString::fromLatin1(bytes);
}

QString resolve(const QString &written, const QString &baseFolder)
{
    const QString location = written.trimmed();
    if (location.startsWith(QLatin1String("file:"), Qt::CaseInsensitive))
        return QUrl(location).toLocalFile();
    if (looksLikeAddress(location))
        return location;
    QString path = location;
    path.replace(QLatin1Char('\\'), QLatin1Char('/'));
    if (path.startsWith(QLatin1Char('/')))
        return QDir::cleanPath(path);
    return QDir::cleanPath(QDir(baseFolder).absoluteFilePath(path));
}

// ASX files in the wild are loose XML: addresses carry bare "&". Everything
// that is not one of XML's own references becomes "&amp;", which also keeps
// entities declared inside the file from being expanded.
QByteArray escapeAmpersands(const QByteArray &data)
{
    static const QRegularExpression bare(QStringLiteral("&(?!(amp|lt|gt|quot|apos|#[0-9]+|#x[0-9A-Fa-f]+);)"));
    QString text = decodeText(data);
    text.replace(bare, QStringLiteral("&amp;"));
    return text.toUtf8();
}

QString attribute(const QXmlStreamAttributes &attributes, QLatin1String name)
{
    for (const QXmlStreamAttribute &a : attributes) {
        if (a.name().compare(name, Qt::CaseInsensitive) == 0)
            return a.value().toString();
    }
    return QString();
}

bool named(const QXmlStreamReader &xml, QLatin1String name)
{
    return xml.name().compare(name, Qt::CaseInsensitive) == 0;
}

// The extension of path in upper case, as the catalogue spells extensions; a
// dot in a folder's name is not the file's extension.
QString extensionOf(const QString &path)
{
    const qsizetype dot = path.lastIndexOf(QLatin1Char('.'));
    if (dot < 0 || dot < path.lastIndexOf(QLatin1Char('/')))
        return QString();
    return path.mid(dot + 1).toUpper();
}

} // namespace

bool PlayItem::isAddress() const
{
    return looksLikeAddress(location);
}

QUrl PlayItem::url() const
{
    return isAddress() ? QUrl(location) : QUrl::fromLocalFile(location);
}

Playlist parseM3u(const QByteArray &data, const QString &baseFolder)
{
    Playlist list;
    const QString text = decodeText(data);
    QString title;
    int duration = -1;
    for (const QString &raw : text.split(QRegularExpression(QStringLiteral("[\r\n]")), Qt::SkipEmptyParts)) {
        const QString line = raw.trimmed();
        if (line.isEmpty())
            continue;
        if (line.startsWith(QLatin1Char('#'))) {
            if (line.startsWith(QLatin1String("#EXTINF:"), Qt::CaseInsensitive)) {
                const QString info = line.mid(8);
                const qsizetype comma = info.indexOf(QLatin1Char(','));
                bool ok = false;
                const int seconds = info.left(comma < 0 ? info.size() : comma).trimmed().toInt(&ok);
                duration = ok && seconds >= 0 ? seconds : -1;
                title = comma < 0 ? QString() : info.mid(comma + 1).trimmed();
            }
            continue;
        }
        if (list.items.size() >= MaxListItems)
            break;
        list.items.append({resolve(line, baseFolder), title, duration});
        title.clear();
        duration = -1;
    }
    return list;
}

Playlist parseAsx(const QByteArray &data, const QString &baseFolder)
{
    Playlist list;
    QXmlStreamReader xml(escapeAmpersands(data));
    xml.setEntityExpansionLimit(0);
    int entryDepth = -1;
    int depth = 0;
    PlayItem current;
    bool haveRef = false;
    while (!xml.atEnd()) {
        const QXmlStreamReader::TokenType token = xml.readNext();
        if (token == QXmlStreamReader::StartElement) {
            ++depth;
            if (depth == 1 && !named(xml, QLatin1String("asx"))) {
                list.errorString = QStringLiteral("This is not an ASX play list.");
                return list;
            }
            if (entryDepth < 0 && named(xml, QLatin1String("entry"))) {
                entryDepth = depth;
                current = PlayItem();
                haveRef = false;
            } else if (entryDepth > 0 && named(xml, QLatin1String("ref")) && !haveRef) {
                const QString href = attribute(xml.attributes(), QLatin1String("href"));
                if (!href.trimmed().isEmpty()) {
                    current.location = resolve(href, baseFolder);
                    haveRef = true;
                }
            } else if (entryDepth > 0 && depth == entryDepth + 1 && named(xml, QLatin1String("title"))) {
                current.title = xml.readElementText(QXmlStreamReader::SkipChildElements).trimmed();
                --depth; // readElementText consumed the end tag
            }
        } else if (token == QXmlStreamReader::EndElement) {
            if (depth == entryDepth) {
                if (haveRef && list.items.size() < MaxListItems)
                    list.items.append(current);
                entryDepth = -1;
            }
            --depth;
        }
    }
    if (xml.hasError() && list.items.isEmpty())
        list.errorString = QStringLiteral("The play list cannot be read: %1.").arg(xml.errorString());
    return list;
}

Playlist readPlaylist(const QString &path)
{
    const QString ext = extensionOf(path);
    if (ext != QLatin1String("M3U") && ext != QLatin1String("ASX")) {
        Playlist single;
        single.items.append({path, QString(), -1});
        return single;
    }
    Playlist list;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly)) {
        list.errorString = file.errorString();
        return list;
    }
    if (file.size() > MaxListBytes) {
        list.errorString = QStringLiteral("The file is too large to be a play list.");
        return list;
    }
    const QByteArray data = file.readAll();
    const QString folder = QFileInfo(path).absolutePath();
    return ext == QLatin1String("M3U") ? parseM3u(data, folder) : parseAsx(data, folder);
}

int cdaTrackNumber(const QString &path, int fallback)
{
    // A track file is a 44-byte RIFF "CDDA" form; the track number is the
    // 16-bit value at byte 22.
    QFile file(path);
    if (file.open(QIODevice::ReadOnly)) {
        const QByteArray head = file.read(44);
        if (head.size() >= 24 && head.startsWith("RIFF") && head.mid(8, 4) == "CDDA") {
            const int track = qFromLittleEndian<quint16>(head.constData() + 22);
            if (track > 0)
                return track;
        }
    }
    static const QRegularExpression digits(QStringLiteral("(\\d+)\\D*$"));
    const QRegularExpressionMatch m = digits.match(QFileInfo(path).completeBaseName());
    if (m.hasMatch()) {
        const int track = m.captured(1).toInt();
        if (track > 0)
            return track;
    }
    return fallback;
}

QString cdDevice()
{
    static const char *const candidates[] = {"/dev/cdrom", "/dev/sr0", "/dev/sr1", "/dev/dvd"};
    for (const char *candidate : candidates) {
        const QString device = QString::fromLatin1(candidate);
        if (QFileInfo::exists(device))
            return device;
    }
    return QString();
}

} // namespace tarnby::media
