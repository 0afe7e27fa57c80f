// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/DeckPlayback.h"

#include "core/artwork/CoverArt.h"
#include "core/copies/TakeTagging.h"
#include "core/foundation/CleanText.h"
#include "core/foundation/Decibels.h"

#include <QTimeZone>

#include <algorithm>
#include <utility>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr std::chrono::nanoseconds playbackTick{1'000'000'000 / 30};
    /// Who played into the void for so long has no output.
    constexpr auto outputPatience = 2s;
    constexpr auto reopenAfter = 250ms;
    /// Where a seek lands at the most.
    constexpr double lastFraction = 0.999;
    /// How far a mark falls in one tick, in dB.
    constexpr float markFall = 0.4F;
    /// From here on a level counts as clipped, in dB.
    constexpr float clipLevel = -0.1F;

    TakeTags tagsOf(const Take& take, const QString& djName)
    {
        const QTimeZone zone = QTimeZone::systemTimeZone();
        return {.title = TakeTagging::title(take.created, zone),
            .artist = TakeTagging::nowPlayingArtist(djName),
            .releaseDate = TakeTagging::releaseDate(take.created, zone),
            .recorded = take.created,
            .artwork = coverArt()};
    }

}  // namespace

DeckPlayback::DeckPlayback(AppModel& model, const ModelServices& services) : m_model(model), m_services(services)
{
    QObject::connect(&model, &AppModel::playbackOutputChanged, &model, m_guard([this] { useOutput(); }));
}

DeckPlayback::~DeckPlayback() = default;

void DeckPlayback::play(const Take& take)
{
    if (m_model.playing() && m_model.playing()->path == take.path) {
        togglePause();
        return;
    }
    if (takeIsNear()) {
        m_model.setError(tr("Stop the take first. Playback during a take could end up in the recording."));
        return;
    }
    // A disk that takes its time is asked once, however often the key is pressed.
    if (m_model.isSample() || m_opening == take.path) {
        return;
    }
    stopPlayback();
    m_opening = take.path;
    m_services.scheduler.background(
        Scheduler::Work::brief,
        [&audio = m_services.audio, path = take.path, output = m_model.playbackOutput(), request = m_request->load(),
            latest = m_request]() -> Opened {
            if (request != *latest) {
                return captureFailure(QStringLiteral("another take is wanted by now"));
            }
            return TakePlayer::open(path, audio, output);
        },
        m_guard([this, request = m_request->load(), take, output = m_model.playbackOutput()](
                    Opened result) { opened(request, take, output, std::move(result)); }));
}

/// What is heard now would be in the recording.
bool DeckPlayback::takeIsNear() const
{
    return m_model.recorder().has_value() || m_model.starting();
}

void DeckPlayback::opened(int request, const Take& take, const QString& output, Opened result)
{
    if (request != *m_request) {
        return;
    }
    m_opening.reset();
    if (!result) {
        showFailure(take);
        return;
    }
    // A take may have begun meanwhile.
    if (takeIsNear()) {
        return;
    }
    m_player = *std::move(result);
    if (output != m_model.playbackOutput()) {
        m_player->reconnect(m_model.playbackOutput());
    }
    begin(take);
}

void DeckPlayback::begin(const Take& take)
{
    m_player->play();
    expectSound();
    m_tracedSecond.reset();
    m_wasUnheard = false;
    m_timer = m_services.scheduler.every(playbackTick, [this] { tick(); });
    m_model.setPlaybackLength(m_player->duration());
    m_model.setPlaybackPosition(0);
    m_model.setPlayingTags(tagsOf(take, m_model.djName()));
    m_model.setPlaying(take);
    m_model.trace().line([&] { return QStringLiteral("playback: started ") + take.name(); });
}

void DeckPlayback::showFailure(const Take& take)
{
    m_model.setError(tr("Vantiro cannot play %1. Show it in Finder and open it in another player: the file may still "
                        "be fine.")
            .arg(cleanText(take.fileName())));
}

void DeckPlayback::togglePause()
{
    if (!m_player) {
        return;
    }
    const bool paused = !m_model.playbackPaused();
    if (paused) {
        m_player->pause();
    } else {
        // What nobody took up once is offered anew.
        if (std::exchange(m_wasUnheard, false)) {
            m_player->reconnect(m_model.playbackOutput());
        }
        expectSound();
        m_player->play();
    }
    m_model.setPlaybackPaused(paused);
}

void DeckPlayback::seek(double fraction)
{
    if (!m_player) {
        return;
    }
    const double place = fraction > 0 ? std::min(fraction, lastFraction) : 0;
    m_player->seek(place * m_player->duration());
    m_model.setPlaybackPosition(m_player->currentTime());
    m_model.tellPlaybackSought();
}

void DeckPlayback::step(double seconds)
{
    if (m_player && m_player->duration() > 0) {
        seek((m_player->currentTime() + seconds) / m_player->duration());
    }
}

void DeckPlayback::stopPlayback()
{
    ++*m_request;
    m_opening.reset();
    m_timer.reset();
    m_player.reset();
    if (!m_model.playing()) {
        return;
    }
    m_model.setPlayingTags(std::nullopt);
    m_model.setPlaying(std::nullopt);
    m_model.setPlaybackPaused(false);
    m_model.setPlaybackLevels({});
    m_model.clearPlaybackHistory();
}

std::vector<AudioDevice> DeckPlayback::outputs() const
{
    std::vector<AudioDevice> outputs = m_services.audio.devices();
    std::erase_if(outputs, [](const AudioDevice& device) { return device.outputChannels <= 0; });
    return outputs;
}

void DeckPlayback::useOutput()
{
    if (m_player) {
        m_player->reconnect(m_model.playbackOutput());
        expectSound();
    }
}

/// From now on somebody should listen, and an output that is not there is looked for at once.
void DeckPlayback::expectSound()
{
    m_lastCycle = m_nextTry = m_services.scheduler.now();
    m_cycles = m_player->cycles();
}

void DeckPlayback::tick()
{
    const double position = m_player->currentTime();
    if (m_player->hasEnded() && !m_model.playbackPaused()) {
        m_model.trace().line([&] {
            return QStringLiteral("playback: reached the end at %1 of %2").arg(position).arg(m_player->duration());
        });
        const Take take = m_player->hasFailed() ? *m_model.playing() : Take();
        stopPlayback();
        if (!take.path.isEmpty()) {
            showFailure(take);
        }
        return;
    }
    traceSecond(position);
    // What is read tells more of the length than the file's header did.
    m_model.setPlaybackLength(m_player->duration());
    m_model.setPlaybackPosition(position);
    if (!m_model.playbackPaused()) {
        readLevels();
        followOutput();
    }
}

void DeckPlayback::traceSecond(double position)
{
    const auto second = static_cast<qint64>(position);
    if (m_tracedSecond == second) {
        return;
    }
    m_tracedSecond = second;
    m_model.trace().line([&] {
        const MeterLevels& levels = m_model.playbackLevels();
        return QStringLiteral("playback: %1 s, peak %2 dB, paused %3")
            .arg(QString::number(position, 'f', 1), Decibels::text(std::max(levels.left, levels.right)),
                m_model.playbackPaused() ? QStringLiteral("true") : QStringLiteral("false"));
    });
}

void DeckPlayback::readLevels()
{
    const auto [first, second] = m_player->takePeaks();
    const float left = std::max(decibels(first), meterFloorDB);
    const float right = std::max(decibels(second), meterFloorDB);
    const float peak = std::max(left, right);
    const MeterLevels& before = m_model.playbackLevels();
    m_model.setPlaybackLevels({.left = left,
        .right = right,
        .holdLeft = std::max(before.holdLeft - markFall, left),
        .holdRight = std::max(before.holdRight - markFall, right),
        .clipped = peak >= clipLevel});
    m_model.pushPlaybackHistory(peak);
}

void DeckPlayback::followOutput()
{
    const Moment now = m_services.scheduler.now();
    if (const std::uint64_t cycles = m_player->cycles(); cycles != m_cycles) {
        m_cycles = cycles;
        m_lastCycle = now;
        return;
    }
    if (now - m_lastCycle >= outputPatience) {
        togglePause();
        m_wasUnheard = true;
        m_model.setError(tr("There is no output to play on. Connect speakers or headphones, then press Play again."));
        return;
    }
    if (!m_player->isConnected() && now >= m_nextTry) {
        m_nextTry = now + reopenAfter;
        m_player->reconnect(m_model.playbackOutput());
    }
}

}  // namespace vantiro
