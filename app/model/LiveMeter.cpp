// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/LiveMeter.h"

#include "core/sources/PreflightFacts.h"

#include <algorithm>
#include <cmath>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    constexpr auto findingsEvery = 3s;
    /// Without a block for so long, the capture no longer hears its source.
    constexpr auto silenceLimit = 2s;
    constexpr auto tryAgainAfter = 250ms;

    /// A made signal for pictures of the running deck: a beat at 126 a minute.
    std::pair<float, float> demoPeaks(const QDateTime& now)
    {
        constexpr double beat = 60.0 / 126.0;
        const double t = static_cast<double>(now.toMSecsSinceEpoch()) / 1000.0;
        const double left = 0.03 * std::sin(9 * t) + 0.22 + 0.2 * std::exp(-5 * std::fmod(t, beat) / beat);
        return {static_cast<float>(left), static_cast<float>(0.93 * left)};
    }

}  // namespace

LiveMeter::LiveMeter(AppModel& model, FindingsWatch& findings, const ModelServices& services)
    : m_model(model)
    , m_findings(findings)
    , m_services(services)
    , m_showsDemo(qEnvironmentVariableIsSet("VANTIRO_DEMO"))
{
    const auto onChange = m_guard([this] {
        if (m_users > 0) {
            restart(OnFailure::tell);
        }
    });
    QObject::connect(&model, &AppModel::selectedChanged, &model, onChange);
    QObject::connect(&model, &AppModel::firstChannelChanged, &model, onChange);
}

LiveMeter::~LiveMeter() = default;

void LiveMeter::addUser()
{
    if (m_model.isSample()) {
        return;
    }
    if (++m_users == 1) {
        restart(OnFailure::tell);
    }
}

void LiveMeter::removeUser()
{
    if (m_users == 0) {
        return;
    }
    --m_users;
    if (m_users == 0) {
        stop();
    }
}

void LiveMeter::restart(OnFailure onFailure)
{
    const auto selected = m_model.selected();
    if (!selected) {
        return;
    }
    if (!m_timer) {
        m_timer = m_services.scheduler.every(MeterBallistics::period, [this] { tick(); });
    }
    if (onFailure == OnFailure::tell) {
        // What the former source did is no news of this one.
        m_windowPeak = meterFloorDB;
        m_windowStart = m_services.scheduler.now();
        m_model.setMeterFormat(std::nullopt);
    }
    m_opening = true;
    const int request = ++*m_request;
    const SourceCapture::Options options{.source = *selected, .channels = m_model.channelsForSelection()};
    m_services.scheduler.background(
        Scheduler::Work::brief,
        [&audio = m_services.audio, options, request, latest = m_request]() -> Opened {
            if (request != *latest) {
                return captureFailure(QStringLiteral("another source is wanted by now"));
            }
            auto capture = SourceCapture::open(options, audio, posixTakeStorage());
            if (!capture) {
                return std::unexpected(capture.error());
            }
            if (auto started = (*capture)->capture().start(); !started) {
                return std::unexpected(started.error());
            }
            return std::shared_ptr<SourceCapture>(*std::move(capture));
        },
        m_guard([this, request, onFailure](Opened result) { opened(request, onFailure, std::move(result)); }));
}

void LiveMeter::opened(int request, OnFailure onFailure, Opened result)
{
    if (request != *m_request) {
        return;
    }
    m_opening = false;
    const Moment now = m_services.scheduler.now();
    if (!result) {
        m_nextTry = now + tryAgainAfter;
        if (onFailure == OnFailure::tell) {
            // What is still heard belongs to the source before.
            m_capture.reset();
            m_ballistics.reset();
            m_model.setMeterFormat(std::nullopt);
            m_model.setLevels({});
            m_model.trace().line([&] { return QStringLiteral("meter: ") + errorText(result.error()); });
            m_model.setError(
                tr("Vantiro cannot listen to %1. Reconnect it, or pick another source.").arg(m_model.sourceName()));
        }
        return;
    }
    m_capture = *std::move(result);
    const Capture& capture = m_capture->capture();
    m_model.setMeterFormat(AppModel::MeterFormat{
        .sampleRate = capture.sampleRate(), .channels = static_cast<std::int64_t>(capture.channels().size())});
    m_windowPeak = meterFloorDB;
    m_windowStart = now;
    m_frames = 0;
    m_lastFrames = now;
}

void LiveMeter::stop()
{
    ++*m_request;
    m_opening = false;
    m_timer.reset();
    m_capture.reset();
    m_ballistics.reset();
    m_model.setMeterFormat(std::nullopt);
    m_model.setLevels({});
    m_model.clearHistory();
}

void LiveMeter::tick()
{
    const Moment now = m_services.scheduler.now();
    followSource(now);
    if (!m_capture) {
        return;
    }
    const MeterBallistics::Tick heard = m_ballistics.advance(takePeaks(), now);
    m_model.setLevels(heard.levels);
    m_model.pushHistory(heard.peakDB);
    m_windowPeak = std::max(m_windowPeak, heard.peakDB);
    if (now - m_windowStart >= findingsEvery) {
        m_findings.refresh(m_windowPeak);
        m_windowPeak = meterFloorDB;
        m_windowStart = now;
    }
}

void LiveMeter::followSource(Moment now)
{
    if (m_capture && m_capture->capture().frames() != m_frames) {
        m_frames = m_capture->capture().frames();
        m_lastFrames = now;
    }
    const bool hears = m_capture && !m_capture->capture().deviceLost() && !m_capture->capture().rateChanged()
        && now - m_lastFrames < silenceLimit;
    if (hears || m_opening || now < m_nextTry || !m_model.selected()) {
        return;
    }
    m_nextTry = now + tryAgainAfter;
    if (PreflightFacts::isConnected(m_services.audio, *m_model.selected())) {
        restart(OnFailure::retry);
    }
}

std::pair<float, float> LiveMeter::takePeaks()
{
    const std::pair<float, float> heard = m_capture->capture().takeChannelPeaks();
    return m_showsDemo ? demoPeaks(m_services.scheduler.wallClock()) : heard;
}

}  // namespace vantiro
