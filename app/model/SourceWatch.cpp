// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/SourceWatch.h"

#include "core/recorder/VantiroPaths.h"
#include "core/sources/KnownDJApps.h"
#include "core/sources/PreflightFacts.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    /// A press of Record older than this is forgotten.
    constexpr auto pressMemory = 10s;

}  // namespace

SourceWatch::SourceWatch(AppModel& model, FindingsWatch& findings, const ModelServices& services)
    : m_model(model)
    , m_findings(findings)
    , m_services(services)
{
    QObject::connect(&model, &AppModel::recorderChanged, &model, m_guard([this] { makeUpForTake(); }));
    QObject::connect(&model, &AppModel::startingChanged, &model, m_guard([this] { makeUpForTake(); }));
}

SourceWatch::~SourceWatch() = default;

void SourceWatch::start()
{
    if (m_model.isSample()) {
        return;
    }
    // The first look at the hardware may wait for the audio service, and all later ones do not.
    m_services.scheduler.background(
        Scheduler::Work::brief, [&audio = m_services.audio] { return audio.isAvailable(); }, m_guard([this](bool) {
            // Told on a thread of the platform.
            auto changed = m_guard([this] { hardwareChanged(); });
            m_watch = m_services.audio.watch([&scheduler = m_services.scheduler, changed] { scheduler.post(changed); });
            m_model.setDevices(inputDevices(m_services.audio));
        }));
}

void SourceWatch::refreshPermission()
{
    if (m_model.isSample()) {
        return;
    }
    const bool allowed = m_services.permission->status() != AudioPermission::Answer::denied;
    if (allowed != m_model.microphoneAllowed()) {
        m_model.setMicrophoneAllowed(allowed);
        m_findings.refresh();
    }
}

void SourceWatch::ensureListening()
{
    if (m_model.isSample() || std::exchange(m_listening, true)) {
        return;
    }
    const auto decided = [this](AudioPermission::Answer answer) {
        const bool allowed = answer != AudioPermission::Answer::denied;
        m_model.setMicrophoneAllowed(allowed);
        m_model.setAccessDecided(true);
        m_model.trace().line(
            [&] { return allowed ? QStringLiteral("microphone: allowed") : QStringLiteral("microphone: blocked"); });
        detect(Reason::asked);
    };
    // The user may take hours to answer.
    m_services.scheduler.background(
        Scheduler::Work::lasting, [permission = m_services.permission] { return permission->request(); },
        m_guard([this, decided](AudioPermission::Answer answer) {
            m_services.scheduler.background(
                Scheduler::Work::brief, [&audio = m_services.audio] { return audio.isAvailable(); },
                m_guard([decided, answer](bool) { decided(answer); }));
        }));
}

void SourceWatch::detect(Reason reason)
{
    if (m_model.isSample()) {
        return;
    }
    if (!m_model.accessDecided()) {
        ensureListening();
        return;
    }
    startRound(reason);
}

void SourceWatch::startRound(Reason reason)
{
    if (m_model.detecting()) {
        if (reason == Reason::hardwareChanged) {
            m_changePending = true;
        } else {
            // Whoever asks is served by the round that is under way.
            m_reason = reason;
        }
        return;
    }
    if (m_model.recorder() || m_model.starting()) {
        m_skippedForTake = true;
        adoptSourceOfTake();
        return;
    }
    m_model.setDetecting(true);
    m_skippedForTake = false;
    m_reason = reason;
    m_hardware = look();
    SourceProbe::Options options{
        .djApps = KnownDJApps::prefixes(VantiroPaths::djAppsFile()), .listenFor = m_services.listenFor};
    m_services.scheduler.background(
        Scheduler::Work::brief,
        [&audio = m_services.audio, memory = m_model.memory(), options = std::move(options)] {
            return SourceProbe::find(audio, memory, options);
        },
        m_guard([this](FoundSources found) { finish(std::move(found)); }));
}

void SourceWatch::finish(FoundSources found)
{
    rankWithPresentMemory(found);
    m_model.setSources(found.sources);
    m_model.setDevices(found.devices);
    if (m_model.recorder()) {
        m_model.setRecordPressedAt(std::nullopt);
        m_skippedForTake = std::exchange(m_changePending, false) || !m_model.selected();
        if (!m_model.selected()) {
            adoptSourceOfTake();
        }
        m_model.setDetecting(false);
        return;
    }
    pick(found);
    m_findings.refresh();
    goOnWithWaitingPress();
    if (std::exchange(m_changePending, false)) {
        m_services.scheduler.post(m_guard([this] { startRound(Reason::hardwareChanged); }));
    }
    m_model.setDetecting(false);
}

/// The user may have chosen, or forgotten a choice, while it listened.
void SourceWatch::rankWithPresentMemory(FoundSources& found) const
{
    const auto remembered = m_model.memory().choice(found.uids());
    if (remembered != found.remembered) {
        std::vector<SourceObservation> heard;
        std::ranges::transform(found.sources, std::back_inserter(heard), &RankedSource::observation);
        found.sources = SourceRanker::rank(heard, remembered);
        found.remembered = remembered;
    }
}

void SourceWatch::pick(const FoundSources& found)
{
    if (const auto remembered = found.rememberedPick()) {
        select(remembered, true);
        return;
    }
    const std::optional<SourceRef>& selected = m_model.selected();
    const bool isConnected = selected && PreflightFacts::isConnected(m_services.audio, *selected);
    // A source that came back while the others were listened to has its turn in the next round.
    const bool wasHeard = m_model.selectedRanked().has_value();
    const bool mayComeBack = selected && m_reason == Reason::hardwareChanged && !(isConnected && wasHeard);
    const bool wasChosen = m_model.selectionIsManual() && isConnected;
    if (!mayComeBack && !wasChosen && m_model.autoPick()) {
        const auto best = SourceRanker::automaticPick(found.sources);
        select(best ? std::optional(best->observation.ref) : std::nullopt, false);
    }
}

void SourceWatch::goOnWithWaitingPress()
{
    if (!m_model.selected() && m_changePending) {
        // What was just plugged in may be what the press is for.
        return;
    }
    const auto pressed = m_model.recordPressedAt();
    m_model.setRecordPressedAt(std::nullopt);
    if (pressed && m_model.selected() && m_services.scheduler.now() - *pressed < pressMemory && m_onWaitingPress) {
        m_onWaitingPress();
    }
}

void SourceWatch::choose(const SourceRef& source)
{
    if (m_model.isSample()) {
        return;
    }
    select(source, true);
    QStringList uids;
    for (const AudioDevice& device : inputDevices(m_services.audio)) {
        uids << device.uid;
    }
    m_model.memory().remember(source, uids);
    saveMemory();
    m_findings.refresh();
}

void SourceWatch::forgetChoices()
{
    if (m_model.isSample()) {
        return;
    }
    m_model.memory().forgetChoices();
    saveMemory();
    m_model.setSelectionIsManual(false);
    m_services.scheduler.post(m_guard([this] { detect(Reason::asked); }));
}

void SourceWatch::rememberRate(const SourceRef& source, double rate)
{
    m_model.memory().rememberRate(rate, source);
    saveMemory();
}

bool SourceWatch::Hardware::callsForRound(const Hardware& before) const
{
    return devices != before.devices || djPrograms.keys() != before.djPrograms.keys()
        || std::ranges::any_of(djPrograms.asKeyValueRange(),
            [&](const auto& program) { return program.second && !before.djPrograms.value(program.first); });
}

/// Also brings the model's devices up to date.
SourceWatch::Hardware SourceWatch::look()
{
    Hardware hardware{.devices = inputDevices(m_services.audio), .djPrograms = {}};
    m_model.setDevices(hardware.devices);
    for (AudioDevice& device : hardware.devices) {
        // Opening a device may change its rate, and that must not make it be opened once more.
        device.sampleRate = 0;
    }
    const QStringList prefixes = KnownDJApps::prefixes(VantiroPaths::djAppsFile());
    for (const AudioProcess& process : m_services.audio.processes()) {
        if (process.bundleID && KnownDJApps::contains(*process.bundleID, prefixes)) {
            bool& plays = hardware.djPrograms[process.bundleID->toLower()];
            plays = plays || process.isPlaying;
        }
    }
    return hardware;
}

void SourceWatch::hardwareChanged()
{
    const Hardware before = std::exchange(m_hardware, look());
    if (m_hardware.callsForRound(before) && m_model.accessDecided()) {
        startRound(Reason::hardwareChanged);
    }
}

void SourceWatch::adoptSourceOfTake()
{
    if (const auto& take = m_model.recorder()) {
        select(SourceRef::fromDescriptor(take->deviceUID), m_model.selectionIsManual());
        m_findings.refresh();
    }
}

void SourceWatch::makeUpForTake()
{
    if (!m_model.recorder() && !m_model.starting() && std::exchange(m_skippedForTake, false)) {
        m_services.scheduler.post(m_guard([this] { detect(Reason::hardwareChanged); }));
    }
}

void SourceWatch::select(const std::optional<SourceRef>& source, bool isManual)
{
    m_model.setSelectionIsManual(isManual);
    m_model.setSelected(source);
    const bool isLive = m_model.selectedRanked() || m_model.recorder();
    if (source && isLive) {
        m_model.setLastKnownName(m_model.sourceName());
    }
}

void SourceWatch::saveMemory()
{
    // A memory that cannot be kept is no reason to stop anybody.
    if (const auto saved = m_model.memory().save(VantiroPaths::sourcesFile()); !saved) {
        m_model.trace().line([&] { return QStringLiteral("sources: ") + errorText(saved.error()); });
    }
}

}  // namespace vantiro
