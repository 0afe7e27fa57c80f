// SPDX-License-Identifier: GPL-3.0-or-later
// vantiro_bench_model SECONDS ROUNDS: measures the application's model (a running meter, the probe of eight devices,
// ten simulated minutes) and prints what it found as JSON. With --meter it is the application that is measured.
#include "app/model/ModelFlows.h"
#include "app/model/QtScheduler.h"
#include "bench/BenchRig.h"
#include "bench/MeasuredProcess.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/DesktopPlatform.h"
#include "platform/pipewire/PipeWireAudio.h"
#include "platform/rig/MadeSet.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/FakeScheduler.h"

#include <QCoreApplication>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>

#include <csignal>
#include <cstdio>
#include <ctime>
#include <thread>

#include <malloc.h>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;
    using namespace std::chrono_literals;
    using Clock = std::chrono::steady_clock;

    constexpr int probedDevices = 8;
    constexpr auto hearingLimit = 15s;
    constexpr auto settling = 4s;

    double milliseconds(std::chrono::nanoseconds span)
    {
        return std::chrono::duration<double, std::milli>(span).count();
    }

    VirtualDeviceOptions::Render set()
    {
        return [set = MadeSet(BenchRig::sampleRate)](
                   auto channels, int frames, std::int64_t position) { set.render(channels, frames, position); };
    }

    /// The application without its window, with the meter on, until SIGINT. Says so once it hears something.
    int beTheApplication()
    {
        std::signal(SIGINT, [](int) { QCoreApplication::quit(); });
        const Platform platform = makeDesktopPlatform();
        QtScheduler scheduler;
        AppModel model(std::make_unique<SettingsStore>(VantiroPaths::settingsFile()), {}, {});
        ModelFlows flows(model, {.audio = *platform.audio, .permission = platform.permission, .scheduler = scheduler});
        bool told = false;
        QObject::connect(&model, &AppModel::levelsChanged, &model, [&] {
            if (model.levels().left > meterFloorDB && !std::exchange(told, true)) {
                std::puts("hearing");
                std::fflush(stdout);
            }
        });
        flows.start();
        flows.meter().addUser();
        flows.sources().ensureListening();
        return QCoreApplication::exec();
    }

    Result<QJsonObject> measureMeter(const BenchRig& rig, std::chrono::seconds span, int quantum)
    {
        const auto player = rig.makeDevice(set(), QLatin1StringView(BenchRig::deviceName), quantum);
        if (!player) {
            return std::unexpected(player.error());
        }
        const QString log = rig.path(u"model.log"_s);
        const auto application = MeasuredProcess::start(QCoreApplication::applicationFilePath(), {u"--meter"_s}, log);
        if (!application) {
            return std::unexpected(application.error());
        }
        const auto isHearing = [&] {
            QFile file(log);
            return file.open(QIODevice::ReadOnly) && file.readAll().contains("hearing");
        };
        for (const auto start = Clock::now(); !isHearing();) {
            if (Clock::now() - start > hearingLimit) {
                return captureFailure(u"the application hears nothing"_s);
            }
            std::this_thread::sleep_for(20ms);
        }
        std::this_thread::sleep_for(settling);
        const auto before = (*application)->processorTime();
        const auto bytesBefore = (*application)->privateBytes();
        std::this_thread::sleep_for(span);
        const auto after = (*application)->processorTime();
        const auto bytesAfter = (*application)->privateBytes();
        if (!before || !after || !bytesBefore || !bytesAfter) {
            return captureFailure(u"the application ended too early"_s);
        }
        return QJsonObject{{u"processorMilliseconds"_s, milliseconds(*after - *before)},
            {u"privateBytes"_s, static_cast<double>(*bytesAfter)},
            {u"privateGrowthBytes"_s, static_cast<double>(*bytesAfter - *bytesBefore)}};
    }

    Result<QJsonArray> measureProbe(const BenchRig& rig, int rounds)
    {
        std::vector<std::unique_ptr<VirtualDevice>> devices;
        for (int index = 0; index < probedDevices; ++index) {
            auto made = rig.makeDevice(set(), u"bench.probe-%1"_s.arg(index));
            if (!made) {
                return std::unexpected(made.error());
            }
            devices.push_back(*std::move(made));
        }
        PipeWireAudio audio;
        QJsonArray times;
        for (int round = 0; round < rounds; ++round) {
            const auto start = Clock::now();
            const FoundSources found = SourceProbe::find(audio, {}, {});
            times.append(milliseconds(Clock::now() - start));
            const auto heard = std::ranges::count_if(
                found.sources, [](const RankedSource& source) { return source.observation.peakDB.has_value(); });
            if (heard != probedDevices) {
                return captureFailure(u"only %1 of %2 devices were heard"_s.arg(heard).arg(probedDevices));
            }
        }
        return times;
    }

    std::chrono::nanoseconds processorTime()
    {
        timespec used{};
        ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &used);
        return std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec);
    }

    /// Ten minutes of ticks with a meter and a take's state, on a clock that the benchmark moves.
    QJsonObject simulate()
    {
        constexpr int minutes = 10;
        constexpr std::int64_t framesPerTick = 1600;
        test::FakeAudio audio;
        const auto card = audio.add(QStringLiteral("card"), QStringLiteral("Card"), {2});
        test::FakeScheduler scheduler;
        AppModel model(std::make_unique<SettingsStore>(), {}, {});
        ModelFlows flows(
            model, {.audio = audio, .permission = makeDesktopPlatform().permission, .scheduler = scheduler});
        flows.start();
        flows.sources().choose(SourceRef::device(QStringLiteral("card")));
        flows.meter().addUser();
        scheduler.settle();
        const auto minute = [&] {
            for (int tick = 0; tick < 60 * 30; ++tick) {
                // A level that moves, so that every tick has something to tell.
                card->deliver(framesPerTick, 0.1F + 0.0004F * static_cast<float>(tick));
                scheduler.advance(MeterBallistics::period);
                scheduler.settle();
            }
        };
        minute();
        const std::size_t before = ::mallinfo2().uordblks;
        const auto usedBefore = processorTime();
        for (int passed = 0; passed < minutes; ++passed) {
            minute();
        }
        const auto used = processorTime() - usedBefore;
        const std::size_t after = ::mallinfo2().uordblks;
        return {{u"growthBytes"_s, static_cast<double>(after) - static_cast<double>(before)},
            {u"processorMillisecondsPerMinute"_s, milliseconds(used) / minutes}};
    }

    Result<QJsonObject> measure(std::chrono::seconds span, int rounds)
    {
        const auto rig = BenchRig::make();
        if (!rig) {
            return std::unexpected(rig.error());
        }
        QJsonObject meter;
        for (const int quantum : {256, 1024}) {
            const auto measured = measureMeter(**rig, span, quantum);
            if (!measured) {
                return std::unexpected(measured.error());
            }
            meter.insert(QString::number(quantum), *measured);
        }
        const auto probe = measureProbe(**rig, rounds);
        if (!probe) {
            return std::unexpected(probe.error());
        }
        return QJsonObject{{u"meter"_s, meter}, {u"probeMilliseconds"_s, *probe}, {u"simulated"_s, simulate()}};
    }

}  // namespace

}  // namespace vantiro

int main(int argc, char* argv[])
{
    using namespace vantiro;

    const QCoreApplication application(argc, argv);
    const QStringList words = QCoreApplication::arguments();
    if (words.value(1) == QStringLiteral("--meter")) {
        return beTheApplication();
    }
    const int seconds = words.value(1).toInt();
    const int rounds = words.value(2).toInt();
    if (words.size() != 3 || seconds < 1 || rounds < 1) {
        std::fputs("usage: vantiro_bench_model SECONDS ROUNDS\n", stderr);
        return 2;
    }
    const auto found = measure(std::chrono::seconds(seconds), rounds);
    if (!found) {
        std::fprintf(stderr, "%s\n", qPrintable(errorText(found.error())));
        return 1;
    }
    std::puts(QJsonDocument(*found).toJson().constData());
    return 0;
}
