#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

// Why a sound or video file does not play, in words a user can act on: what
// the MIDI route through GStreamer needs on this machine (its plugins and a
// General MIDI sound font) and what the file itself is. Pure functions over
// the file system and the file's first bytes; any thread.
namespace tarnby::media {

// The parts of the MIDI route that are not installed, each named with the
// Debian package that brings it; empty when the route is complete.
// pluginFolders: where GStreamer's plugins lie (the GStreamer plugin path
// variables, else the system's plugin folders); soundFontFolders: where
// FluidSynth looks for sound fonts.
QStringList missingForMidi(const QStringList &pluginFolders, const QStringList &soundFontFolders);
// The same for this machine's folders.
QStringList missingForMidi();
QStringList gstreamerPluginFolders();

// A sentence on what a file that failed to play is, from its first bytes and
// its extension: the MIDI format and track count, the AVI video's codec and
// size; empty when nothing useful is known.
QString describeMediaFile(const QString &extension, const QByteArray &head);

// The whole reason shown for a file that did not play: the backend's words,
// what is missing for it (MIDI), and what the file is.
QString unplayableReason(const QString &path, const QString &backendText, const QStringList &missingForMidi);

// A play position or length as the player shows it: m:ss, or h:mm:ss from
// an hour; "-:--" for an unknown (negative) time.
QString formatPlayTime(qint64 milliseconds);

} // namespace tarnby::media
