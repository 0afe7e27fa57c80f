// SPDX-License-Identifier: GPL-3.0-or-later
// vantiro_bench_playback SECONDS: measures a player beside pw-cat with the same file at the same time, and the memory
// of a simulated hour, and prints what it found as JSON. With --play FILE it is the player that is measured.
#include "app/model/Desk.h"
#include "bench/BenchRig.h"
#include "bench/MadeTakes.h"
#include "bench/MeasuredProcess.h"
#include "core/playback/TakePlayer.h"
#include "platform/DesktopPlatform.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/FakeScheduler.h"

#include <QCoreApplication>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>
#include <thread>

#include <malloc.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;

    constexpr auto linkPause = 50ms;
    constexpr int linkAttempts = 100;
    constexpr auto settling = 2s;
    constexpr std::int64_t simulatedMinutes = 60;

    /// The player alone, without a deck, until SIGINT.
    int bePlayer(const QString& path)
    {
        std::signal(SIGINT, [](int) { });
        PipeWireAudio audio;
        const auto player = TakePlayer::open(path, audio, {});
        if (!player) {
            std::fprintf(stderr, "%s\n", qPrintable(errorText(player.error())));
            return 1;
        }
        (*player)->play();
        ::pause();
        return 0;
    }

    bool linkToSpeakers(const QString& node)
    {
        for (const QString& side : {u"FL"_s, u"FR"_s}) {
            const QString output = u"%1:output_%2"_s.arg(node, side);
            const QString input = u"%1:playback_%2"_s.arg(QLatin1StringView(BenchRig::sinkName), side);
            int attempts = 0;
            while (!BenchRig::link(output, input)) {
                if (++attempts == linkAttempts) {
                    return false;
                }
                std::this_thread::sleep_for(linkPause);
            }
        }
        return true;
    }

    Result<QJsonObject> measureLoad(const BenchRig& rig, std::chrono::seconds span)
    {
        const QString path = rig.path(u"take.wav"_s);
        if (const auto made = madeTakes::write(path, (span + 60s).count(), (span + 60s).count()); !made) {
            return std::unexpected(made.error());
        }
        const auto player = MeasuredProcess::start(
            QCoreApplication::applicationFilePath(), {u"--play"_s, path}, rig.path(u"player.log"_s));
        const auto peer = MeasuredProcess::start(u"pw-cat"_s, {u"-p"_s, path}, rig.path(u"peer.log"_s));
        if (!player || !peer || !linkToSpeakers(u"vantiro-player"_s) || !linkToSpeakers(u"pw-cat"_s)) {
            return captureFailure(u"the players do not play"_s);
        }
        std::this_thread::sleep_for(settling);
        const double perMinute = 60.0 / static_cast<double>(span.count());
        std::vector<std::chrono::nanoseconds> used;
        for (const auto* process : {&*player, &*peer}) {
            const auto before = (*process)->processorTime();
            used.push_back(before.value_or(0ns));
        }
        std::this_thread::sleep_for(span);
        QJsonObject found;
        for (const auto& [name, process] : {std::pair{u"vantiro"_s, &*player}, {u"pw-cat"_s, &*peer}}) {
            const auto after = (*process)->processorTime();
            const auto bytes = (*process)->privateBytes();
            if (!after || !bytes) {
                return captureFailure(u"a player ended too early"_s);
            }
            const std::chrono::duration<double> spent = *after - used[found.isEmpty() ? 0 : 1];
            found.insert(name,
                QJsonObject{{u"processorSecondsPerMinute"_s, spent.count() * perMinute},
                    {u"privateBytes"_s, static_cast<double>(*bytes)}});
        }
        return found;
    }

    /// Bytes by which the allocations of the model that plays grew from the second minute to the last, with a desk that
    /// words it, on a clock that the benchmark moves.
    Result<double> simulateHour(const BenchRig& rig)
    {
        constexpr std::int64_t framesPerTick = 1600;
        const Take take{.path = rig.path(u"hour.wav"_s),
            .created = QDateTime::currentDateTimeUtc(),
            .seconds = static_cast<double>(simulatedMinutes * 60)};
        if (const auto made = madeTakes::writeSparse(take.path, simulatedMinutes * 60); !made) {
            return std::unexpected(made.error());
        }
        // The reading thread's memory is counted too.
        ::mallopt(M_ARENA_MAX, 1);
        test::FakeAudio audio;
        test::FakeScheduler scheduler;
        AppModel model(std::make_unique<SettingsStore>(), {}, {});
        const ModelServices services{
            .audio = audio, .permission = makeDesktopPlatform().permission, .scheduler = scheduler};
        ModelFlows flows(model, services);
        Departure departure(model, services, [] { });
        const Desk desk(model, flows, departure, Desk::Doors{});
        flows.start();
        flows.playback().play(take);
        scheduler.settle();
        std::optional<std::size_t> before;
        double position = 0;
        while (model.playing()) {
            audio.output()->pump(framesPerTick);
            scheduler.advance(MeterBallistics::period);
            scheduler.settle();
            if (const double last = std::exchange(position, model.playbackPosition()); position == last) {
                // The thread that reads ahead is not there yet.
                std::this_thread::sleep_for(1ms);
            }
            if (!before && position > 60) {
                before = ::mallinfo2().uordblks;
            }
        }
        if (!before || model.errorMessage()) {
            return captureFailure(model.errorMessage().value_or(u"the hour was not played"_s));
        }
        return static_cast<double>(::mallinfo2().uordblks) - static_cast<double>(*before);
    }

    Result<QJsonObject> measure(std::chrono::seconds span)
    {
        const auto rig = BenchRig::make();
        if (!rig) {
            return std::unexpected(rig.error());
        }
        if (const auto given = PrivateGraph::givePortsToStreams(); !given) {
            return std::unexpected(given.error());
        }
        auto load = measureLoad(**rig, span);
        if (!load) {
            return load;
        }
        const auto growth = simulateHour(**rig);
        if (!growth) {
            return std::unexpected(growth.error());
        }
        load->insert(u"simulatedHourGrowthBytes"_s, *growth);
        return load;
    }

}  // namespace

}  // namespace vantiro

int main(int argc, char* argv[])
{
    using namespace vantiro;

    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.size() == 3 && words[1] == QStringLiteral("--play")) {
        return bePlayer(words[2]);
    }
    const int seconds = words.value(1).toInt();
    if (words.size() != 2 || seconds < 1) {
        std::fputs("usage: vantiro_bench_playback SECONDS\n", stderr);
        return 2;
    }
    const auto found = measure(std::chrono::seconds(seconds));
    if (!found) {
        std::fprintf(stderr, "%s\n", qPrintable(errorText(found.error())));
        return 1;
    }
    std::puts(QJsonDocument(*found).toJson().constData());
    return 0;
}
