// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/NowPlaying.h"

#include "core/artwork/CoverArt.h"
#include "core/foundation/Files.h"
#include "core/recorder/VantiroPaths.h"

#include <QUrl>

#include <cmath>
#include <utility>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    constexpr double microsecondsInSecond = 1e6;

    std::int64_t microseconds(double seconds)
    {
        return std::llround(seconds * microsecondsInSecond);
    }

    /// Desktops show a picture that is a file. Empty if there is none.
    QString writePicture()
    {
        const auto picture = coverArt();
        const QString file = VantiroPaths::support() + u"/cover.png"_s;
        if (!picture || (files::read(file) != picture && !files::replace(file, *picture, files::Durability::passing))) {
            return {};
        }
        return QString::fromLatin1(QUrl::fromLocalFile(file).toEncoded());
    }

}  // namespace

NowPlaying::NowPlaying(AppModel& model, DeckPlayback& playback, Scheduler& scheduler, BusLink* session)
    : m_model(model)
    , m_playback(playback)
    , m_scheduler(scheduler)
    , m_player(session, [this] { return microseconds(m_model.playbackPosition()); })
{
    m_update.setSingleShot(true);
    m_update.setInterval(0);
    connect(&m_update, &QTimer::timeout, this, &NowPlaying::update);
    followModel();
    followKeys();
}

void NowPlaying::followModel()
{
    connect(&m_model, &AppModel::playingChanged, this, [this] {
        m_takes += m_model.playing() ? 1 : 0;
        m_update.start();
    });
    for (const auto change :
        {&AppModel::playbackPausedChanged, &AppModel::playbackLengthChanged, &AppModel::playingTagsChanged}) {
        connect(&m_model, change, &m_update, qOverload<>(&QTimer::start));
    }
    connect(&m_model, &AppModel::playbackSought, &m_player, &MediaPlayer::tellSought);
}

void NowPlaying::followKeys()
{
    // The bus has its answer before anything is done.
    const auto follow = [this](auto signal, auto action) {
        connect(&m_player, signal, this, action, Qt::QueuedConnection);
    };
    follow(&MediaPlayer::toggleWanted, [this] { m_playback.togglePause(); });
    follow(&MediaPlayer::playWanted, [this] {
        if (m_model.playbackPaused()) {
            m_playback.togglePause();
        }
    });
    follow(&MediaPlayer::pauseWanted, [this] {
        if (!m_model.playbackPaused()) {
            m_playback.togglePause();
        }
    });
    follow(&MediaPlayer::stopWanted, [this] { m_playback.stopPlayback(); });
    follow(&MediaPlayer::seekWanted, [this](std::int64_t position) {
        if (m_model.playbackLength() > 0) {
            m_playback.seek(static_cast<double>(position) / microsecondsInSecond / m_model.playbackLength());
        }
    });
    follow(&MediaPlayer::raiseWanted, [this] { Q_EMIT raiseWanted(); });
    follow(&MediaPlayer::quitWanted, [this] { Q_EMIT quitWanted(); });
}

void NowPlaying::update()
{
    const auto& tags = m_model.playingTags();
    if (!m_model.playing() || !tags) {
        m_player.show(std::nullopt);
        return;
    }
    if (!std::exchange(m_hasPicture, true)) {
        makePicture();
    }
    m_player.show(MediaContent{.title = tags->title,
        .artist = tags->artist.value_or(QString()),
        .album = u"Vantiro"_s,
        .artUrl = m_pictureUrl,
        .length = microseconds(m_model.playbackLength()),
        .track = m_takes,
        .isPaused = m_model.playbackPaused()});
}

void NowPlaying::makePicture()
{
    m_scheduler.background(
        Scheduler::Work::brief, [] { return writePicture(); },
        [this](const QString& url) {
            m_pictureUrl = url;
            update();
        });
}

}  // namespace vantiro
