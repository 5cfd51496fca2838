#include "core/settings/LineFile.h"

#include <QFile>
#include <QSaveFile>
#include <QStringDecoder>

namespace tarnby::settings {

namespace {

QString decode(const QByteArray &bytes)
{
    QStringDecoder utf8(QStringDecoder::Utf8, QStringDecoder::Flag::Stateless);
    QString text = utf8(bytes);
    if (!utf8.hasError())
        return text;
    // Files written by older versions or edited on another desktop may be in
    // a single-byte code page; Latin-1 keeps every byte as some character.
    return QString::fromLatin1(bytes);
}

bool isText(const QByteArray &line)
{
    for (const char c : line) {
        const auto u = static_cast<unsigned char>(c);
        if (u < 0x20 && u != '\t')
            return false;
        if (u == 0x7f)
            return false;
    }
    return true;
}

} // namespace

LineFileRead readLineFile(const QString &path, int maxLines, qint64 maxBytes)
{
    LineFileRead result;
    QFile file(path);
    if (!file.open(QIODevice::ReadOnly))
        return result;
    result.found = true;

    // Read only the prefix that could hold maxLines lines of the longest
    // accepted length; the bytes after it are never looked at.
    const qint64 budget = std::min<qint64>(maxBytes, qint64(maxLines) * (MaxLineLength + 2) + 2);
    const QByteArray data = file.read(budget);
    const bool truncated = !file.atEnd();

    qsizetype pos = 0;
    const qsizetype size = data.size();
    while (pos < size && result.lines.size() < maxLines) {
        qsizetype end = pos;
        while (end < size && data.at(end) != '\r' && data.at(end) != '\n')
            ++end;
        if (end == size && truncated) {
            // The line runs past what was read: too long to be a value.
            result.stoppedBecause = QStringLiteral("a line is too long");
            return result;
        }
        const QByteArray line = data.mid(pos, end - pos);
        if (line.size() > MaxLineLength) {
            result.stoppedBecause = QStringLiteral("a line is too long");
            return result;
        }
        if (!isText(line)) {
            result.stoppedBecause = QStringLiteral("a line holds bytes that are not text");
            return result;
        }
        result.lines << decode(line);
        // One line end: CR LF, LF or CR.
        if (end < size && data.at(end) == '\r') {
            ++end;
            if (end < size && data.at(end) == '\n')
                ++end;
        } else if (end < size) {
            ++end; // LF
        }
        pos = end;
    }
    return result;
}

bool writeLineFile(const QString &path, const QStringList &lines, QString *error)
{
    QByteArray bytes;
    for (const QString &line : lines) {
        bytes += line.toUtf8();
        bytes += "\r\n";
    }
    QSaveFile file(path);
    if (!file.open(QIODevice::WriteOnly)) {
        *error = QStringLiteral("Tarnby could not write %1: %2").arg(path, file.errorString());
        return false;
    }
    if (file.write(bytes) != bytes.size() || !file.commit()) {
        *error = QStringLiteral("Tarnby could not write %1: %2").arg(path, file.errorString());
        file.cancelWriting();
        return false;
    }
    return true;
}

} // namespace tarnby::settings
