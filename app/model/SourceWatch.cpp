// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/SourceWatch.h"

#include "core/capture/ProcessTap.h"
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

    std::vector<AudioDevice> inputsForUser(AudioPlatform& audio)
    {
        std::vector<AudioDevice> devices = inputDevices(audio);
        std::erase_if(
            devices, [](const AudioDevice& device) { return device.uid.startsWith(ProcessTap::aggregateUIDPrefix); });
        return devices;
    }

}  // namespace

SourceWatch::SourceWatch(AppModel& model, FindingsWatch& findings, const ModelServices& services)
    : m_model(model)
    , m_findings(findings)
    , m_services(services)
{
    QObject::connect(&model, &AppModel::recorderChanged, &model, m_guard([this] { takeEnded(); }));
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
            m_model.setDevices(inputsForUser(m_services.audio));
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
    probe(reason, Change::devices);
}

void SourceWatch::probe(Reason reason, Change change)
{
    if (m_model.detecting()) {
        // Whoever asks is served by the round that is under way.
        if (reason == Reason::hardwareChanged) {
            m_pendingChange = std::max(m_pendingChange, change);
        }
        return;
    }
    if (m_model.recorder()) {
        m_skippedForTake = true;
        adoptSourceOfTake();
        return;
    }
    m_model.setDetecting(true);
    m_skippedForTake = false;
    m_hardware = hardware();
    m_model.setDevices(inputsForUser(m_services.audio));
    SourceProbe::Options options{
        .djApps = KnownDJApps::prefixes(VantiroPaths::djAppsFile()), .listenFor = m_services.listenFor};
    if (change == Change::programs) {
        options.heardBefore = m_heard;
    }
    m_services.scheduler.background(
        Scheduler::Work::brief,
        [&audio = m_services.audio, memory = m_model.memory(), options = std::move(options)] {
            return SourceProbe::find(audio, memory, options);
        },
        m_guard([this, reason](FoundSources found) { finish(reason, std::move(found)); }));
}

void SourceWatch::finish(Reason reason, FoundSources found)
{
    // The user may have chosen, or forgotten a choice, while it listened.
    if (const auto remembered = m_model.memory().choice(found.uids()); remembered != found.remembered) {
        std::vector<SourceObservation> heard;
        std::ranges::transform(found.sources, std::back_inserter(heard), &RankedSource::observation);
        found.sources = SourceRanker::rank(heard, remembered);
        found.remembered = remembered;
    }
    m_heard.clear();
    for (const RankedSource& source : found.sources) {
        if (source.observation.ref.kind == SourceRef::Kind::device) {
            m_heard.push_back(source.observation);
        }
    }
    m_model.setSources(found.sources);
    m_model.setDevices(found.devices);
    if (m_model.recorder()) {
        m_skippedForTake = std::exchange(m_pendingChange, Change::none) != Change::none;
        m_model.setRecordPressedAt(std::nullopt);
        m_model.setDetecting(false);
        return;
    }
    pick(reason, found);
    m_findings.refresh();
    goOnWithWaitingPress();
    if (const Change change = std::exchange(m_pendingChange, Change::none); change != Change::none) {
        m_services.scheduler.post(m_guard([this, change] { probe(Reason::hardwareChanged, change); }));
    }
    m_model.setDetecting(false);
}

void SourceWatch::pick(Reason reason, const FoundSources& found)
{
    if (const auto remembered = found.rememberedPick()) {
        select(remembered, true);
        return;
    }
    const std::optional<SourceRef>& selected = m_model.selected();
    const bool isConnected = selected && PreflightFacts::isConnected(m_services.audio, *selected);
    const bool mayComeBack = selected && !isConnected && reason == Reason::hardwareChanged;
    const bool wasChosen = m_model.selectionIsManual() && isConnected;
    if (!mayComeBack && !wasChosen && m_model.autoPick()) {
        const auto best = SourceRanker::automaticPick(found.sources);
        select(best ? std::optional(best->observation.ref) : std::nullopt, false);
    }
}

void SourceWatch::goOnWithWaitingPress()
{
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
    for (const AudioDevice& device : inputsForUser(m_services.audio)) {
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

SourceWatch::Hardware SourceWatch::hardware() const
{
    Hardware hardware{.devices = inputsForUser(m_services.audio), .djPrograms = m_services.audio.processes()};
    for (AudioDevice& device : hardware.devices) {
        // Opening a device may change its rate, and that must not make it be opened once more.
        device.sampleRate = 0;
    }
    const QStringList prefixes = KnownDJApps::prefixes(VantiroPaths::djAppsFile());
    std::erase_if(hardware.djPrograms, [&](const AudioProcess& process) {
        return !process.bundleID || !KnownDJApps::contains(*process.bundleID, prefixes);
    });
    return hardware;
}

void SourceWatch::hardwareChanged()
{
    Hardware now = hardware();
    m_model.setDevices(inputsForUser(m_services.audio));
    const Change change = now.devices != m_hardware.devices ? Change::devices
        : now.djPrograms != m_hardware.djPrograms           ? Change::programs
                                                            : Change::none;
    m_hardware = std::move(now);
    if (change != Change::none && m_model.accessDecided()) {
        probe(Reason::hardwareChanged, change);
    }
}

void SourceWatch::adoptSourceOfTake()
{
    select(SourceRef::fromDescriptor(m_model.recorder()->deviceUID), m_model.selectionIsManual());
    m_findings.refresh();
}

void SourceWatch::takeEnded()
{
    if (!m_model.recorder() && std::exchange(m_skippedForTake, false)) {
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
