#pragma once

#include <QByteArray>
#include <QList>
#include <QString>
#include <QUrl>

// What the player plays: a sound or video file, or each item of an M3U or ASX
// play list in turn, or a track of an audio CD.
//
// The parsers take the list's bytes and never fetch anything: an ASX entry that
// refers to another list is skipped, not followed. Pure functions; any thread.
namespace tarnby::media {

inline constexpr qint64 MaxListBytes = 1024 * 1024; // larger files are no play lists
inline constexpr int MaxListItems = 10000;

struct PlayItem {
    QString location;      // a local path, or an address such as http://… or mms://…
    QString title;         // from #EXTINF or <Title>; empty when the list gives none
    int durationSeconds = -1; // from #EXTINF; -1 when unknown

    bool isAddress() const;
    // A URL for the media player: file:// for local paths.
    QUrl url() const;
};

struct Playlist {
    QList<PlayItem> items;
    QString errorString; // set when the list could not be read at all
};

// M3U, plain or extended: one location a line, "#EXTINF:seconds,title" before
// an item, other "#" lines ignored. Text is UTF-8 when it decodes as such,
// otherwise Latin-1 (older lists). Relative locations, with "/" or "\"
// between folders, are taken from baseFolder.
Playlist parseM3u(const QByteArray &data, const QString &baseFolder);

// ASX 3.0: each <Entry> gives one item, its first <Ref href> and its <Title>.
// Element and attribute names are matched in any case, as players do. A bare
// "&" in an address is taken literally; entity declarations are not expanded.
Playlist parseAsx(const QByteArray &data, const QString &baseFolder);

// The list or file to play for path: an M3U or ASX list is parsed (a file over
// MaxListBytes is refused), any other file is a list of itself.
Playlist readPlaylist(const QString &path);

// The track an audio CD's track file stands for: the number in a "CDDA" track
// file's header, else the digits of a name such as "Track05.cda", else
// fallback.
int cdaTrackNumber(const QString &path, int fallback);

// The CD drive's device (/dev/cdrom, /dev/sr0, …), empty when there is none.
QString cdDevice();

} // namespace tarnby::media
