#include "core/platform/media/MediaRoutes.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

namespace tarnby::media {

namespace {

bool fileIn(const QStringList &folders, const QString &name)
{
    for (const QString &folder : folders) {
        if (QFileInfo(QDir(folder).filePath(name)).isFile())
            return true;
    }
    return false;
}

bool soundFontIn(const QStringList &folders)
{
    for (const QString &folder : folders) {
        if (!QDir(folder).entryList({QStringLiteral("*.sf2"), QStringLiteral("*.SF2")}, QDir::Files).isEmpty())
            return true;
    }
    return false;
}

bool isMidiExtension(const QString &extension)
{
    return extension == QLatin1String("MID") || extension == QLatin1String("RMI");
}

quint32 le32(const QByteArray &data, qsizetype at)
{
    return qFromLittleEndian<quint32>(data.constData() + at);
}

QString describeMidi(const QByteArray &head)
{
    // An RMI file wraps the standard file in a RIFF "RMID" chunk "data".
    qsizetype at = 0;
    if (head.startsWith("RIFF") && head.mid(8, 4) == "RMID") {
        at = head.indexOf("MThd");
        if (at < 0)
            return QStringLiteral("The file holds no Standard MIDI data.");
    }
    if (head.mid(at, 4) != "MThd" || head.size() < at + 14)
        return QStringLiteral("The file is not a Standard MIDI file.");
    const int format = qFromBigEndian<quint16>(head.constData() + at + 8);
    const int tracks = qFromBigEndian<quint16>(head.constData() + at + 10);
    return QStringLiteral("It is a Standard MIDI file of format %1 with %2 track%3.")
        .arg(format)
        .arg(tracks)
        .arg(tracks == 1 ? QString() : QStringLiteral("s"));
}

QString describeAvi(const QByteArray &head)
{
    if (!head.startsWith("RIFF") || head.mid(8, 4) != "AVI ")
        return QStringLiteral("The file is not an AVI file.");
    QString text = QStringLiteral("It is an AVI file");
    const qsizetype avih = head.indexOf("avih");
    if (avih >= 0 && head.size() >= avih + 8 + 40) {
        const quint32 width = le32(head, avih + 8 + 32);
        const quint32 height = le32(head, avih + 8 + 36);
        text += QStringLiteral(" of %1 x %2 pixels").arg(width).arg(height);
    }
    // The video stream's header names its codec after "vids".
    const qsizetype vids = head.indexOf("strh");
    if (vids >= 0 && head.size() >= vids + 16 && head.mid(vids + 8, 4) == "vids") {
        const QByteArray codec = head.mid(vids + 12, 4);
        bool printable = true;
        for (char c : codec)
            printable = printable && c >= 32 && c < 127;
        if (printable)
            text += QStringLiteral(", video coded as %1").arg(QString::fromLatin1(codec).trimmed());
    }
    if (head.indexOf("idx1") < 0 && head.size() >= 64 * 1024)
        text += QStringLiteral(", without an index in its first part");
    return text + QLatin1Char('.');
}

} // namespace

QStringList gstreamerPluginFolders()
{
    QStringList folders;
    for (const char *variable : {"GST_PLUGIN_PATH_1_0", "GST_PLUGIN_PATH", "GST_PLUGIN_SYSTEM_PATH_1_0",
                                 "GST_PLUGIN_SYSTEM_PATH"})
        folders += qEnvironmentVariable(variable).split(QLatin1Char(':'), Qt::SkipEmptyParts);
    // The system's folders: one per architecture on Debian.
    const QDir lib(QStringLiteral("/usr/lib"));
    for (const QString &arch : lib.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        folders << lib.filePath(arch + QStringLiteral("/gstreamer-1.0"));
    folders << QStringLiteral("/usr/lib/gstreamer-1.0") << QStringLiteral("/usr/local/lib/gstreamer-1.0");
    return folders;
}

QStringList missingForMidi(const QStringList &pluginFolders, const QStringList &soundFontFolders)
{
    QStringList missing;
    if (!fileIn(pluginFolders, QStringLiteral("libgstmidi.so")))
        missing << QStringLiteral("GStreamer's MIDI reader (package gstreamer1.0-plugins-good)");
    if (!fileIn(pluginFolders, QStringLiteral("libgstfluidsynthmidi.so")))
        missing << QStringLiteral("GStreamer's MIDI synthesizer (package gstreamer1.0-plugins-bad)");
    if (!soundFontIn(soundFontFolders))
        missing << QStringLiteral("a General MIDI sound font (package fluid-soundfont-gm)");
    return missing;
}

QStringList missingForMidi()
{
    return missingForMidi(gstreamerPluginFolders(),
                          {QStringLiteral("/usr/share/sounds/sf2"), QStringLiteral("/usr/share/soundfonts"),
                           QDir::home().filePath(QStringLiteral(".local/share/soundfonts"))});
}

QString describeMediaFile(const QString &extension, const QByteArray &head)
{
    const QString upper = extension.toUpper();
    if (isMidiExtension(upper))
        return describeMidi(head);
    if (upper == QLatin1String("AVI"))
        return describeAvi(head);
    return {};
}

QString unplayableReason(const QString &path, const QString &backendText, const QStringList &missingForMidi)
{
    QStringList parts;
    QString said = backendText.trimmed();
    if (!said.isEmpty()) {
        if (!said.endsWith(QLatin1Char('.')))
            said += QLatin1Char('.');
        parts << said;
    }
    const QString extension = QFileInfo(path).suffix().toUpper();
    if (isMidiExtension(extension)) {
        if (!missingForMidi.isEmpty())
            parts << QStringLiteral("Missing for playing MIDI files: ") + missingForMidi.join(QStringLiteral("; "))
                    + QLatin1Char('.');
        else
            parts << QStringLiteral("The MIDI plugins and the sound font are installed; GStreamer's MIDI reader "
                                    "does not understand this file.");
    } else if (extension == QLatin1String("AVI")) {
        parts << QStringLiteral("GStreamer's AVI reader does not accept this file.");
    }
    // Only a plain file is read: opening a pipe would wait for a writer.
    QFile file(path);
    if (QFileInfo(path).isFile() && file.open(QIODevice::ReadOnly)) {
        const QString what = describeMediaFile(extension, file.read(256 * 1024));
        if (!what.isEmpty())
            parts << what;
    }
    return parts.join(QLatin1Char(' '));
}

QString formatPlayTime(qint64 milliseconds)
{
    if (milliseconds < 0)
        return QStringLiteral("-:--");
    const qint64 seconds = milliseconds / 1000;
    const qint64 hours = seconds / 3600;
    const int minutes = int((seconds / 60) % 60);
    const int secs = int(seconds % 60);
    if (hours > 0)
        return QStringLiteral("%1:%2:%3").arg(hours).arg(minutes, 2, 10, QLatin1Char('0')).arg(secs, 2, 10, QLatin1Char('0'));
    return QStringLiteral("%1:%2").arg(minutes).arg(secs, 2, 10, QLatin1Char('0'));
}

} // namespace tarnby::media
