// SPDX-License-Identifier: GPL-3.0-or-later
#include "bench/LoadMeasurement.h"

#include "bench/MeasuredProcess.h"
#include "core/recorder/RecorderClient.h"
#include "platform/rig/MadeSet.h"

#include <QFileInfo>

#include <thread>

namespace vantiro::LoadMeasurement {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::StringLiterals;

    constexpr auto beginLimit = 10s;
    constexpr auto beginPause = 20ms;
    /// Lets both come to rest after their start.
    constexpr auto settling = 2s;

    /// One of the two that record.
    struct Party {
        std::unique_ptr<MeasuredProcess> process;
        QString file;
        std::int64_t bytesPerFrame = 0;

        [[nodiscard]] double seconds() const
        {
            return static_cast<double>(QFileInfo(file).size())
                / static_cast<double>(bytesPerFrame * BenchRig::sampleRate);
        }
    };

    template <class Predicate>
    bool comesTrue(Predicate predicate)
    {
        const auto deadline = std::chrono::steady_clock::now() + beginLimit;
        while (!predicate()) {
            if (std::chrono::steady_clock::now() > deadline) {
                return false;
            }
            std::this_thread::sleep_for(beginPause);
        }
        return true;
    }

    SourceRef reference(Source source)
    {
        return source == Source::device ? SourceRef::device(QLatin1StringView(BenchRig::deviceName))
                                        : SourceRef::app(QLatin1StringView(BenchRig::programId));
    }

    /// A source's output port on one side.
    QString outputPort(Source source, const QString& side)
    {
        return source == Source::device ? u"%1:capture_%2"_s.arg(QLatin1StringView(BenchRig::deviceName), side)
                                        : u"%1:output_%2"_s.arg(QLatin1StringView(BenchRig::programName), side);
    }

    Result<Party> startRecorder(const BenchRig& rig, const QString& program, Source source)
    {
        const QString file = rig.path(u"take.caf"_s);
        QFile::remove(file);
        auto process = MeasuredProcess::start(program,
            RecorderClient::argumentVector({.source = reference(source), .output = file}), rig.path(u"recorder.log"_s));
        if (!process) {
            return std::unexpected(process.error());
        }
        Party party{.process = *std::move(process), .file = file, .bytesPerFrame = std::int64_t{2} * 3};
        if (!comesTrue([&] { return party.seconds() > 0.5; })) {
            return captureFailure(u"the recorder does not record; its log is %1"_s.arg(rig.path(u"recorder.log"_s)));
        }
        return party;
    }

    /// Nothing links a stream in a graph without a session manager, so its ports are asked for and linked here.
    Result<Party> startPeer(const BenchRig& rig, Source source)
    {
        const QString file = rig.path(u"peer.wav"_s);
        QFile::remove(file);
        auto process = MeasuredProcess::start(u"pw-record"_s,
            {u"--target"_s, u"0"_s, u"--rate"_s, QString::number(BenchRig::sampleRate), u"--channels"_s, u"2"_s,
                u"--format"_s, u"s32"_s, u"--properties"_s,
                u"{ node.name = bench.peer adapter.auto-port-config = \"{ mode = dsp position = preserve }\" }"_s,
                file},
            rig.path(u"peer.log"_s));
        if (!process) {
            return std::unexpected(process.error());
        }
        Party party{.process = *std::move(process), .file = file, .bytesPerFrame = std::int64_t{2} * 4};
        for (const QString& channel : {u"FL"_s, u"FR"_s}) {
            if (!comesTrue(
                    [&] { return BenchRig::link(outputPort(source, channel), u"bench.peer:input_"_s + channel); })) {
                return captureFailure(u"pw-record could not be linked; its log is %1"_s.arg(rig.path(u"peer.log"_s)));
            }
        }
        if (!comesTrue([&] { return party.seconds() > 0.5; })) {
            return captureFailure(u"pw-record does not record"_s);
        }
        return party;
    }

    /// Fills in what was used since `before`; the process goes on.
    Result<Cost> costSince(const Party& party, std::chrono::nanoseconds before)
    {
        const auto after = party.process->processorTime();
        const auto bytes = party.process->privateBytes();
        if (!after || !bytes) {
            return std::unexpected(!after ? after.error() : bytes.error());
        }
        return Cost{.processorTime = *after - before, .privateBytes = *bytes};
    }

}  // namespace

Result<Round> run(const BenchRig& rig, const QString& recorder, std::chrono::seconds span, Source source, Order order)
{
    const auto render = [set = MadeSet(BenchRig::sampleRate)](auto channels, int frames, std::int64_t position) {
        set.render(channels, frames, position);
    };
    const auto player = source == Source::device ? rig.makeDevice(render) : rig.makeProgram(render);
    if (!player) {
        return std::unexpected(player.error());
    }
    const bool isFirst = order == Order::recorderFirst;
    auto first = isFirst ? startRecorder(rig, recorder, source) : startPeer(rig, source);
    if (!first) {
        return std::unexpected(first.error());
    }
    auto second = isFirst ? startPeer(rig, source) : startRecorder(rig, recorder, source);
    if (!second) {
        return std::unexpected(second.error());
    }
    Party& ours = isFirst ? *first : *second;
    Party& theirs = isFirst ? *second : *first;
    std::this_thread::sleep_for(settling);
    const auto oursBefore = ours.process->processorTime();
    const auto theirsBefore = theirs.process->processorTime();
    if (!oursBefore || !theirsBefore) {
        return std::unexpected(!oursBefore ? oursBefore.error() : theirsBefore.error());
    }
    std::this_thread::sleep_for(span);
    auto recorderCost = costSince(ours, *oursBefore);
    auto peerCost = costSince(theirs, *theirsBefore);
    if (!recorderCost || !peerCost) {
        return std::unexpected(!recorderCost ? recorderCost.error() : peerCost.error());
    }
    for (const auto& [party, cost] : {std::pair{&ours, &*recorderCost}, std::pair{&theirs, &*peerCost}}) {
        const auto wholeLife = party->process->finish();
        if (!wholeLife) {
            return std::unexpected(wholeLife.error());
        }
        cost->wholeLife = *wholeLife;
        if (party->seconds() < static_cast<double>(span.count())) {
            return captureFailure(u"%1 holds only %2 seconds"_s.arg(party->file).arg(party->seconds()));
        }
    }
    return Round{.recorder = *recorderCost, .peer = *peerCost};
}

}  // namespace vantiro::LoadMeasurement
