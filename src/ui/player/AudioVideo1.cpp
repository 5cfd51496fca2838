#include "ui/player/AudioVideo1.h"

#include "core/app/AppState.h"
#include "core/catalogue/FileCatalogue.h"
#include "core/platform/media/MediaRoutes.h"
#include "ui/services/UiServices.h"
#include "ui/settings/WindowColorsApplier.h"
#include "ui/tools/HelpWindow.h"

#include <QAudioOutput>
#include <QDir>
#include <QFileInfo>
#include <QFrame>
#include <QHBoxLayout>
#include <QLabel>
#include <QMediaPlayer>
#include <QPointer>
#include <QPushButton>
#include <QSlider>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <QVideoWidget>

#include <algorithm>

namespace tarnby::ui {

namespace {

// The GStreamer backend is the one to use here: the ffmpeg backend of this Qt
// crashes on machines without a sound device. Qt reads the choice once, when
// the first player is made; a choice made outside the program is respected.
void chooseMediaBackend()
{
    if (qEnvironmentVariableIsEmpty("QT_MEDIA_BACKEND"))
        qputenv("QT_MEDIA_BACKEND", "gstreamer");
}

} // namespace

// ---------------------------------------------------------------------------

MultimediaControl::MultimediaControl(QWidget *parent)
    : QWidget(parent)
    , m_locateDrive(&media::cdDevice)
{
    setObjectName(QStringLiteral("MMControl1"));
    m_label = new QLabel(this);
    auto *layout = new QHBoxLayout(this);
    layout->setContentsMargins(0, 0, 0, 0);
    layout->addWidget(m_label);
    updateLabel();
}

void MultimediaControl::updateLabel()
{
    m_label->setText(m_open ? QStringLiteral("%1 - Track %2").arg(m_deviceType).arg(m_track)
                            : QStringLiteral("%1 - closed").arg(m_deviceType));
}

bool MultimediaControl::command(const QString &word)
{
    m_error.clear();
    if (word == QLatin1String("Close")) {
        if (m_player)
            m_player->stop();
        m_open = false;
        m_track = 1;
    } else if (word == QLatin1String("Open")) {
        if (m_deviceType != QLatin1String("CDAudio")) {
            m_error = QStringLiteral("There is no %1 device on this computer.").arg(m_deviceType);
            return false;
        }
        m_device = m_locateDrive();
        if (m_device.isEmpty()) {
            m_error = QStringLiteral("There is no CD drive on this computer.");
            return false;
        }
        if (!m_player) {
            chooseMediaBackend();
            m_player = new QMediaPlayer(this);
            m_audio = new QAudioOutput(this);
            m_player->setAudioOutput(m_audio);
            // One failed play can raise several errors (the device, then the
            // pipeline's state change); the first says it best.
            connect(m_player, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error, const QString &text) {
                if (m_failureReported)
                    return;
                m_failureReported = true;
                emit failed(text);
            });
        }
        m_open = true;
        m_track = 1;
        ++m_openCount;
    } else if (word == QLatin1String("Next")) {
        if (!m_open) {
            m_error = QStringLiteral("The device is not open.");
            return false;
        }
        ++m_track;
    } else if (word == QLatin1String("Play")) {
        if (!m_open) {
            m_error = QStringLiteral("The device is not open.");
            return false;
        }
        // GStreamer's CD source takes "cdda://<device>#<track>".
        const QUrl source(QStringLiteral("cdda://%1#%2").arg(m_device).arg(m_track));
        m_failureReported = false;
        if (m_player->source() != source)
            m_player->setSource(source);
        else
            m_player->setPosition(0);
        m_player->play();
    } else if (word == QLatin1String("Stop")) {
        if (m_player)
            m_player->stop();
    } else {
        m_error = QStringLiteral("Unknown command %1.").arg(word);
        return false;
    }
    updateLabel();
    return true;
}

// ---------------------------------------------------------------------------

AudioVideo1::AudioVideo1(AppState &state, UiServices &services, QWidget *parent)
    : QDialog(parent)
    , m_state(state)
    , m_services(services)
{
    setObjectName(QStringLiteral("AudioVideo1"));
    installWindowColors(this, m_state);
    setWindowTitle(caption());
    setModal(false);

    m_frame = new QFrame(this);
    m_frame->setObjectName(QStringLiteral("Frame1"));
    m_frame->setFrameShape(QFrame::StyledPanel);
    // The screen shows the video, or, for a file without one, a picture of
    // its own: a bare video surface would show whatever was on the screen
    // before.
    m_screen = new QStackedWidget(m_frame);
    m_screen->setMinimumSize(320, 240);
    m_video = new QVideoWidget(m_screen);
    m_video->setObjectName(QStringLiteral("ActiveMovie1"));
    m_video->setToolTip(QStringLiteral("Microsoft Audio/Video Media Player"));
    m_noVideo = new QLabel(m_screen);
    m_noVideo->setObjectName(QStringLiteral("NoVideo"));
    m_noVideo->setAlignment(Qt::AlignCenter);
    m_noVideo->setWordWrap(true);
    m_noVideo->setAutoFillBackground(true);
    QPalette dark = m_noVideo->palette();
    dark.setColor(QPalette::Window, QColor(24, 24, 32));
    dark.setColor(QPalette::WindowText, QColor(230, 230, 230));
    m_noVideo->setPalette(dark);
    QFont big = m_noVideo->font();
    big.setPointSizeF(big.pointSizeF() * 1.4);
    m_noVideo->setFont(big);
    m_screen->addWidget(m_noVideo);
    m_screen->addWidget(m_video);
    m_screen->setCurrentWidget(m_noVideo);

    m_slider = new QSlider(Qt::Horizontal, m_frame);
    m_slider->setObjectName(QStringLiteral("SldPosition"));
    m_slider->setToolTip(QStringLiteral("Position in the File; drag to move"));
    m_slider->setEnabled(false);
    m_position = new QLabel(m_frame);
    m_position->setObjectName(QStringLiteral("LblPosition"));
    m_position->setMinimumWidth(110);
    m_position->setAlignment(Qt::AlignRight | Qt::AlignVCenter);
    auto *positionRow = new QHBoxLayout;
    positionRow->addWidget(m_slider, 1);
    positionRow->addWidget(m_position);

    m_mci = new MultimediaControl(m_frame);
    auto *frameLayout = new QVBoxLayout(m_frame);
    frameLayout->addWidget(m_screen, 1);
    frameLayout->addLayout(positionRow);
    frameLayout->addWidget(m_mci);

    m_label = new QLabel(this);
    m_label->setObjectName(QStringLiteral("Label1"));
    m_label->setWordWrap(true);

    auto *ok = new QPushButton(QStringLiteral("Play"), this);
    ok->setObjectName(QStringLiteral("OKBtn"));
    ok->setToolTip(QStringLiteral("Play the File again"));
    auto *cancel = new QPushButton(QStringLiteral("Cancel"), this);
    cancel->setObjectName(QStringLiteral("CancelBtn"));
    cancel->setToolTip(QStringLiteral("Close Audio Video File Player Window"));
    auto *help = new QPushButton(QStringLiteral("Help"), this);
    help->setObjectName(QStringLiteral("HelpBtn"));
    help->setToolTip(QStringLiteral("Help with Audio Video File Window"));

    auto *buttons = new QHBoxLayout;
    buttons->addWidget(ok);
    buttons->addStretch();
    buttons->addWidget(cancel);
    buttons->addWidget(help);
    auto *layout = new QVBoxLayout(this);
    layout->addWidget(m_frame, 1);
    layout->addWidget(m_label);
    layout->addLayout(buttons);

    chooseMediaBackend();
    m_player = new QMediaPlayer(this);
    m_audio = new QAudioOutput(this);
    m_player->setAudioOutput(m_audio);
    m_player->setVideoOutput(m_video);

    m_watchdog = new QTimer(this);
    m_watchdog->setSingleShot(true);
    connect(m_watchdog, &QTimer::timeout, this, [this] {
        itemFailed(QStringLiteral("The file did not start playing within %1 seconds.").arg(m_loadTimeoutMs / 1000));
    });
    connect(m_player, &QMediaPlayer::errorOccurred, this, [this](QMediaPlayer::Error, const QString &text) {
        itemFailed(text);
    });
    connect(m_player, &QMediaPlayer::mediaStatusChanged, this, [this](QMediaPlayer::MediaStatus status) {
        switch (status) {
        case QMediaPlayer::LoadedMedia:
        case QMediaPlayer::BufferingMedia:
        case QMediaPlayer::BufferedMedia:
            m_watchdog->stop();
            break;
        case QMediaPlayer::InvalidMedia:
            itemFailed(m_player->errorString());
            break;
        case QMediaPlayer::EndOfMedia:
            m_watchdog->stop();
            if (!m_itemReported)
                nextItem();
            break;
        default:
            break;
        }
    });
    connect(m_player, &QMediaPlayer::positionChanged, this, &AudioVideo1::updatePosition);
    connect(m_player, &QMediaPlayer::durationChanged, this, &AudioVideo1::updatePosition);
    connect(m_player, &QMediaPlayer::hasVideoChanged, this, &AudioVideo1::showVideo);
    connect(m_slider, &QSlider::sliderMoved, this, [this](int seconds) { m_player->setPosition(qint64(seconds) * 1000); });
    updatePosition();
    connect(m_mci, &MultimediaControl::failed, this, [this](const QString &reason) {
        m_services.messages.inform(QStringLiteral("Cannot Play File - ") + m_path + QStringLiteral(" - ") + reason, this);
    });

    connect(ok, &QPushButton::clicked, this, &AudioVideo1::playAgain);
    connect(cancel, &QPushButton::clicked, this, &AudioVideo1::stopAndClose);
    connect(help, &QPushButton::clicked, this, [this] { showHelpContents(m_state.helpFolder(), this); });
}

QString AudioVideo1::positionText() const
{
    return m_position->text();
}

bool AudioVideo1::showsNoVideoPicture() const
{
    return m_screen->currentWidget() == m_noVideo;
}

void AudioVideo1::updatePosition()
{
    const qint64 duration = m_player->duration();
    const qint64 position = m_player->position();
    m_position->setText(media::formatPlayTime(position) + QStringLiteral(" / ")
                        + media::formatPlayTime(duration > 0 ? duration : -1));
    const bool known = duration > 0 && m_player->isSeekable();
    m_slider->setEnabled(known);
    if (!m_slider->isSliderDown()) {
        m_slider->setRange(0, int(std::max<qint64>(0, duration / 1000)));
        m_slider->setValue(int(position / 1000));
    }
}

void AudioVideo1::showVideo(bool video)
{
    m_screen->setCurrentWidget(video ? static_cast<QWidget *>(m_video) : m_noVideo);
}

AudioVideo1::~AudioVideo1()
{
    stopAll();
    // The player outlives this body (it is a child); it must let go of the
    // file before the file goes.
    m_player->setSource(QUrl());
}

void AudioVideo1::openAndPlay(const QString &path)
{
    stopAll();
    m_path = path;
    m_extension = catalogue::GetFileExt(path);
    m_list = media::Playlist();
    m_current = -1;
    setWindowTitle(QStringLiteral("Play - ") + QFileInfo(path).fileName());

    if (m_extension == QLatin1String("CDA")) {
        m_screen->hide();
        m_mci->show();
        m_mci->command(QStringLiteral("Close"));
        m_mci->setDeviceType(QStringLiteral("CDAudio"));
        if (!m_mci->command(QStringLiteral("Open"))) {
            m_label->setText(QFileInfo(path).fileName());
            m_services.messages.inform(QStringLiteral("Cannot Play CD Track - ") + path + QStringLiteral(" - ")
                                           + m_mci->errorString(),
                                       this);
            return;
        }
        // Without a track number in the file, the track is the file's place
        // among the folder's track files.
        const QFileInfo info(path);
        const QStringList tracks = info.absoluteDir().entryList({QStringLiteral("*.cda"), QStringLiteral("*.CDA")},
                                                                QDir::Files, QDir::Name | QDir::IgnoreCase);
        const int track = media::cdaTrackNumber(path, qMax(1, int(tracks.indexOf(info.fileName())) + 1));
        for (int i = 1; i < track; ++i)
            m_mci->command(QStringLiteral("Next"));
        m_label->setText(QStringLiteral("Track %1").arg(track));
        m_mci->command(QStringLiteral("Play"));
        return;
    }

    m_mci->hide();
    m_screen->show();
    m_list = media::readPlaylist(path);
    if (!m_list.errorString.isEmpty()) {
        m_services.messages.inform(QStringLiteral("Cannot Play File - ") + path + QStringLiteral(" - ")
                                       + m_list.errorString,
                                   this);
        emit listFinished();
        return;
    }
    if (m_list.items.isEmpty()) {
        m_services.messages.inform(QStringLiteral("There is Nothing to Play in - ") + path, this);
        emit listFinished();
        return;
    }
    playItem(0);
}

void AudioVideo1::playItem(int index)
{
    m_current = index;
    m_itemReported = false;
    const media::PlayItem &item = m_list.items.at(index);
    m_label->setText(item.title.isEmpty() ? QFileInfo(item.location).fileName() : item.title);
    m_noVideo->setText(m_label->text());
    showVideo(false);
    // The backend opens files on this thread: a pipe or a device would block
    // it for good, and a folder cannot play anyway.
    const QFileInfo local(item.location);
    if (!item.isAddress() && local.exists() && !local.isFile()) {
        QTimer::singleShot(0, this, [this, index] {
            if (m_current == index)
                itemFailed(QStringLiteral("It is not a file that can be played."));
        });
        return;
    }
    m_player->stop();
    m_player->setSource(QUrl());
    m_source.reset();
    if (item.isAddress()) {
        m_player->setSource(item.url());
    } else {
        // A local file goes to the backend as an open device, not as a file
        // address. Qt feeds a device's bytes to GStreamer from this thread,
        // so no decoding starts while the backend is still setting the new
        // source up; with an address, the backend's own streaming thread can
        // meet that set-up halfway and both wait on each other for good.
        m_source = std::make_unique<QFile>(item.location);
        if (!m_source->open(QIODevice::ReadOnly)) {
            const QString reason = m_source->errorString();
            m_source.reset();
            QTimer::singleShot(0, this, [this, index, reason] {
                if (m_current == index)
                    itemFailed(reason);
            });
            return;
        }
        m_player->setSourceDevice(m_source.get(), item.url());
    }
    m_player->play();
    m_watchdog->start(m_loadTimeoutMs);
}

void AudioVideo1::itemFailed(const QString &reason)
{
    // The backend may report one failure twice (an error and an invalid
    // status); the user hears of it once.
    if (m_current < 0 || m_itemReported)
        return;
    m_itemReported = true;
    m_watchdog->stop();
    m_player->stop();
    const QString location = m_list.items.at(m_current).location;
    QPointer<AudioVideo1> self(this);
    // GStreamer's own words say little ("Internal data stream error"): add
    // what is missing for the file's kind and what the file is.
    const QString why = media::unplayableReason(location, reason, media::missingForMidi());
    m_services.messages.inform(QStringLiteral("Cannot Play File - ") + location
                                   + (why.isEmpty() ? QString() : QStringLiteral(" - ") + why),
                               this);
    // The window may have been closed while the message was up.
    if (self && m_current >= 0)
        nextItem();
}

void AudioVideo1::nextItem()
{
    if (m_current + 1 < m_list.items.size()) {
        playItem(m_current + 1);
        return;
    }
    emit listFinished();
}

void AudioVideo1::playAgain()
{
    if (m_extension == QLatin1String("CDA")) {
        if (!m_mci->command(QStringLiteral("Play")))
            m_services.messages.inform(QStringLiteral("Cannot Play CD Track - ") + m_path + QStringLiteral(" - ")
                                           + m_mci->errorString(),
                                       this);
        return;
    }
    if (!m_list.items.isEmpty())
        playItem(0);
}

void AudioVideo1::stopAll()
{
    if (m_watchdog)
        m_watchdog->stop();
    m_current = -1;
    if (m_mci) {
        m_mci->command(QStringLiteral("Stop"));
        m_mci->command(QStringLiteral("Close"));
    }
    if (m_player)
        m_player->stop();
}

void AudioVideo1::stopAndClose()
{
    stopAll();
    close();
}

void AudioVideo1::done(int result)
{
    // The close box and Escape end here too: the sound stops before the window goes.
    stopAll();
    setWindowTitle(caption());
    QDialog::done(result);
}

} // namespace tarnby::ui
