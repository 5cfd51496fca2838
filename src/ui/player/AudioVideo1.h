#pragma once

#include "core/platform/media/Playlist.h"

#include <QDialog>
#include <QUrl>

#include <QFile>

#include <functional>
#include <memory>

class QAudioOutput;
class QFrame;
class QLabel;
class QMediaPlayer;
class QPushButton;
class QSlider;
class QStackedWidget;
class QTimer;
class QVideoWidget;

namespace tarnby {
class AppState;
}

namespace tarnby::ui {

struct UiServices;

// The multimedia control (MMControl1): a device driven by command words, as
// the audio CD needs it. "Open" opens the device of the current type
// ("CDAudio"), "Next" steps to the next track, "Play" plays the current track
// from its start (the device stays open: playing again does not reopen it),
// "Stop" stops, "Close" closes. Tracks play through GStreamer's CD source.
class MultimediaControl : public QWidget
{
    Q_OBJECT
public:
    explicit MultimediaControl(QWidget *parent = nullptr);

    void setDeviceType(const QString &type) { m_deviceType = type; }
    QString deviceType() const { return m_deviceType; }
    // Runs one command word; false with errorString() when it cannot be done.
    bool command(const QString &word);
    QString errorString() const { return m_error; }

    bool isOpen() const { return m_open; }
    int track() const { return m_track; }
    int openCount() const { return m_openCount; }
    QMediaPlayer *player() const { return m_player; }

    // Finds the CD drive; media::cdDevice() unless a test says otherwise.
    void setDriveLocator(std::function<QString()> locator) { m_locateDrive = std::move(locator); }

signals:
    // The device reported that the track cannot be played.
    void failed(const QString &reason);

private:
    void updateLabel();

    QString m_deviceType;
    QString m_device;
    QString m_error;
    bool m_open = false;
    bool m_failureReported = false;
    int m_track = 1;
    int m_openCount = 0;
    QMediaPlayer *m_player = nullptr;
    QAudioOutput *m_audio = nullptr;
    QLabel *m_label = nullptr;
    std::function<QString()> m_locateDrive;
};

// The player window: plays a sound, music or video file, each item of an M3U
// or ASX play list in turn, or a track of an audio CD. CD tracks ("CDA") go to
// the multimedia control MMControl1; everything else, "DAT" included, to the
// media player ActiveMovie1 inside Frame1. A file that cannot be played is
// reported in a message (within loadTimeoutMs at the latest) and the next item
// of a list follows. Lives on the UI thread; not modal.
class AudioVideo1 : public QDialog
{
    Q_OBJECT
public:
    AudioVideo1(AppState &state, UiServices &services, QWidget *parent = nullptr);
    ~AudioVideo1() override;

    static QString caption() { return QStringLiteral("Play Audio and Video Files"); }

    // Stops whatever plays and plays path; the title becomes "Play - " and the
    // file name.
    void openAndPlay(const QString &path);
    // OKBtn: the CD track again, or the file or list again from its start.
    void playAgain();
    // CancelBtn: stops both players and closes the window.
    void stopAndClose();

    QMediaPlayer *mediaPlayer() const { return m_player; }
    MultimediaControl *multimediaControl() const { return m_mci; }
    const media::Playlist &playlist() const { return m_list; }
    int currentItem() const { return m_current; }
    void setLoadTimeout(int ms) { m_loadTimeoutMs = ms; }
    // Position and length of what plays, "m:ss / m:ss" (LblPosition).
    QString positionText() const;
    // True while the painted picture stands where the video would be: the
    // file has no video (sound, music), or none has arrived yet.
    bool showsNoVideoPicture() const;

    void done(int result) override;

signals:
    // Every item has been played or reported.
    void listFinished();

private:
    void playItem(int index);
    void itemFailed(const QString &reason);
    void nextItem();
    void stopAll();
    void showHelp();
    void updatePosition();
    void showVideo(bool video);

    AppState &m_state;
    UiServices &m_services;
    QString m_path;
    QString m_extension;
    media::Playlist m_list;
    int m_current = -1;
    bool m_itemReported = false;
    int m_loadTimeoutMs = 15000;

    QFrame *m_frame = nullptr;
    QVideoWidget *m_video = nullptr;
    QStackedWidget *m_screen = nullptr; // the video, or the painted picture without one
    QLabel *m_noVideo = nullptr;
    QLabel *m_position = nullptr;
    QSlider *m_slider = nullptr;
    MultimediaControl *m_mci = nullptr;
    QLabel *m_label = nullptr;
    QMediaPlayer *m_player = nullptr;
    std::unique_ptr<QFile> m_source; // the open file the player reads
    QAudioOutput *m_audio = nullptr;
    QTimer *m_watchdog = nullptr;
};

} // namespace tarnby::ui
