// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/session/SessionTest.h"

#include "core/recorder/RecorderStateStore.h"
#include "platform/rig/RampSignal.h"

#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <span>
#include <utility>

#include <sys/prctl.h>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    constexpr int sampleRate = 48'000;

    const QString busConfiguration =
        uR"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*"/>
    <allow receive_sender="*"/>
    <allow own="*"/>
  </policy>
</busconfig>
)"_s;

    // The daemon's usual configuration without real-time scheduling and without real hardware. The metadata "default"
    // is the session manager's.
    const QByteArray graphConfiguration = R"(context.properties = {
    core.daemon = true
    core.name = pipewire-0
    mem.warn-mlock = false
    log.level = 2
    default.clock.rate = 48000
    default.clock.quantum = 1024
    default.clock.max-quantum = 2048
}
context.spa-libs = {
    audio.convert.* = audioconvert/libspa-audioconvert
    support.*       = support/libspa-support
}
context.modules = [
    { name = libpipewire-module-protocol-native }
    { name = libpipewire-module-metadata }
    { name = libpipewire-module-spa-device-factory }
    { name = libpipewire-module-spa-node-factory }
    { name = libpipewire-module-client-node }
    { name = libpipewire-module-client-device }
    { name = libpipewire-module-access }
    { name = libpipewire-module-adapter }
    { name = libpipewire-module-link-factory }
    { name = libpipewire-module-session-manager }
]
context.objects = [
    { factory = spa-node-factory args = { factory.name = support.node.driver node.name = Dummy-Driver
        node.group = pipewire.dummy priority.driver = 20000 } }
    { factory = adapter args = { factory.name = support.null-audio-sink node.name = two node.description = two
        media.class = Audio/Sink priority.session = 2000 audio.position = "FL,FR" } }
    { factory = adapter args = { factory.name = support.null-audio-sink node.name = eight node.description = eight
        media.class = Audio/Sink priority.session = 1000 audio.position = "FL,FR,FC,LFE,RL,RR,SL,SR" } }
]
)";

    QJsonArray graphObjects(const QString& dump)
    {
        return QJsonDocument::fromJson(dump.toUtf8()).array();
    }

    /// The stretches of one column.
    std::vector<Sounding> soundings(const SoundFile& file, int column, int channel)
    {
        std::vector<std::int32_t> samples;
        for (auto index = static_cast<std::size_t>(column); index < file.numbers.size();
            index += static_cast<std::size_t>(file.channels)) {
            samples.push_back(file.numbers[index]);
        }
        std::vector<Sounding> found;
        const auto heard = [](std::int32_t sample) { return sample != 0; };
        for (auto begin = std::ranges::find_if(samples, heard); begin != samples.end();) {
            // The ramp itself is zero for single frames.
            const auto silence = std::search_n(begin, samples.end(), 2, 0);
            const auto report = RampSignal::check(std::span(begin, silence), channel);
            if (!report || (report->firstBreak && !report->jump)) {
                ADD_FAILURE() << "column " << column << ", frame " << begin - samples.begin()
                              << " or one near it is not what was played";
                break;
            }
            const std::int64_t length = report->firstBreak.value_or(silence - begin);
            found.push_back({.at = begin - samples.begin(), .content = report->start, .frames = length});
            begin = std::find_if(begin + length, samples.end(), heard);
        }
        return found;
    }

}  // namespace

Service::Service(const QString& program, const QStringList& arguments, const QString& log)
{
    m_process.setStandardInputFile(QProcess::nullDevice());
    m_process.setProcessChannelMode(QProcess::MergedChannels);
    m_process.setStandardOutputFile(log, QIODevice::Append);
    m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    m_process.start(program, arguments);
    EXPECT_TRUE(m_process.waitForStarted()) << qPrintable(program);
}

Service::~Service()
{
    // In order, as a restart by systemd does it: a client that is killed in mid-cycle can leave 0.3.65's graph at rest.
    m_process.terminate();
    if (!m_process.waitForFinished(3'000)) {
        m_process.kill();
        m_process.waitForFinished();
    }
}

bool Service::isRunning()
{
    return !m_process.waitForFinished(0) && m_process.state() == QProcess::Running;
}

void SessionTest::SetUp()
{
    if (!startServices()) {
        ASSERT_FALSE(qEnvironmentVariableIsSet("CI")) << servicesLog().constData();
        GTEST_SKIP() << "Nothing is tested beside a session manager, which cannot be started here: "
                     << servicesLog().constData();
    }
}

QByteArray SessionTest::servicesLog() const
{
    return Sandbox::readFile(m_sandbox.path(u"services.log"_s));
}

bool SessionTest::startServices()
{
    for (const QString& program : {u"dbus-daemon"_s, u"pipewire"_s, u"wireplumber"_s, u"pipewire-pulse"_s, u"pw-cat"_s,
             u"pw-jack"_s, u"paplay"_s, u"aplay"_s}) {
        if (QStandardPaths::findExecutable(program).isEmpty()) {
            Sandbox::writeFile(m_sandbox.path(u"services.log"_s), program.toUtf8() + " is not installed");
            return false;
        }
    }
    const QByteArray bus = "unix:path=" + QFile::encodeName(m_sandbox.runtime()) + "/bus";
    m_sandbox.setVariable("DBUS_SESSION_BUS_ADDRESS", bus);
    m_sandbox.setVariable("DBUS_SYSTEM_BUS_ADDRESS", bus);
    for (const char* name : {"PULSE_SERVER", "PULSE_RUNTIME_PATH", "PULSE_SINK", "PIPEWIRE_NODE", "PIPEWIRE_PROPS",
             "PIPEWIRE_CONFIG_DIR", "PIPEWIRE_LATENCY", "PIPEWIRE_QUANTUM", "WIREPLUMBER_CONFIG_DIR"}) {
        m_sandbox.setVariable(name, std::nullopt);
    }

    const QString busFile = m_sandbox.path(u"bus.conf"_s);
    const QString graphFile = m_sandbox.path(u"graph.conf"_s);
    Sandbox::writeFile(busFile, busConfiguration.arg(m_sandbox.runtime() + u"/bus"_s).toUtf8());
    Sandbox::writeFile(graphFile, graphConfiguration);
    const QString manager = m_sandbox.home() + u"/.config/wireplumber/"_s;
    const auto serve = [this](const QString& program, const QStringList& arguments, const QString& socket) {
        m_services.push_back(std::make_unique<Service>(program, arguments, m_sandbox.path(u"services.log"_s)));
        return waitFor([&] { return QFile::exists(m_sandbox.runtime() + u'/' + socket); });
    };
    return serve(u"dbus-daemon"_s, {u"--nofork"_s, u"--nopidfile"_s, u"--config-file="_s + busFile}, u"bus"_s)
        && serve(u"pipewire"_s, {u"-c"_s, graphFile}, u"pipewire-0"_s) && startSessionManager()
        && serve(u"pipewire-pulse"_s, {}, u"pulse/native"_s);
}

bool SessionTest::startSessionManager()
{
    m_sessionManager = std::make_unique<Service>(u"wireplumber"_s, QStringList(), m_sandbox.path(u"services.log"_s));
    // It chooses the default only once it knows the ports.
    return waitFor(
        [] { return output(u"pw-metadata"_s, {u"0"_s, u"default.audio.sink"_s}).contains(u"{\"name\":\"two\"}"_s); });
}

std::unique_ptr<Service> SessionTest::source(const QString& name, std::int64_t from) const
{
    auto source = std::make_unique<Service>(u"pw-play"_s,
        QStringList{u"--target"_s, u"0"_s, u"-P"_s,
            u"{ media.class = Audio/Source node.name = %1 priority.session = 3000 }"_s.arg(name),
            rampFile(SF_FORMAT_PCM_24, from)},
        m_sandbox.path(u"player.log"_s));
    EXPECT_TRUE(waitFor([&] {
        const auto result = run({u"sources"_s, u"--no-listen"_s, u"--json"_s});
        const QJsonArray devices = QJsonDocument::fromJson(result.output.toUtf8())[u"devices"_s].toArray();
        return std::ranges::any_of(devices, [&name](const QJsonValue& device) {
            return device[u"uid"_s] == name && device[u"inputChannels"_s] == 2 && device[u"sampleRate"_s] == sampleRate;
        });
    })) << Sandbox::readFile(m_sandbox.path(u"player.log"_s)).constData();
    return source;
}

QString SessionTest::rampFile(int subtype, std::int64_t from) const
{
    const QString path = m_sandbox.path(u"ramp-%1.wav"_s.arg(from));
    SF_INFO info{};
    info.samplerate = sampleRate;
    info.channels = 2;
    info.format = SF_FORMAT_WAV | subtype;
    std::vector<int> numbers;
    for (std::int64_t frame = from; frame < from + std::int64_t{20} * sampleRate; ++frame) {
        numbers.push_back(RampSignal::sample(0, frame) * 256);
        numbers.push_back(RampSignal::sample(1, frame) * 256);
    }
    SNDFILE* file = sf_open(QFile::encodeName(path).constData(), SFM_WRITE, &info);
    EXPECT_NE(file, nullptr);
    EXPECT_EQ(sf_write_int(file, numbers.data(), std::ssize(numbers)), std::ssize(numbers));
    sf_close(file);
    return path;
}

std::unique_ptr<Service> SessionTest::play(const QString& program, const QStringList& arguments) const
{
    const QString log = m_sandbox.path(u"player.log"_s);
    auto player = std::make_unique<Service>(program, arguments, log);
    const auto plays = [&] {
        const auto process = listed(player->pid());
        return process && process->isPlaying;
    };
    EXPECT_TRUE(waitFor([&] { return plays() || !player->isRunning(); }));
    EXPECT_TRUE(player->isRunning()) << Sandbox::readFile(log).constData();
    return player;
}

QString SessionTest::output(const QString& program, const QStringList& arguments)
{
    const auto result = Program(program, arguments).wait(5s);
    return result.status == 0 ? result.output : QString();
}

std::optional<AudioProcess> SessionTest::listed(std::int32_t pid)
{
    const auto result = run({u"sources"_s, u"--no-listen"_s, u"--json"_s});
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    for (const QJsonValue value : QJsonDocument::fromJson(result.output.toUtf8())[u"programs"_s].toArray()) {
        if (auto process = AudioProcess::fromJson(value.toObject()); process && process->pid == pid) {
            return *std::move(process);
        }
    }
    return std::nullopt;
}

int SessionTest::nodeId(const QString& name)
{
    for (const QJsonValue value : graphObjects(output(u"pw-dump"_s, {}))) {
        if (value[u"info"_s][u"props"_s][u"node.name"_s] == name) {
            return value[u"id"_s].toInt();
        }
    }
    return 0;
}

QStringList SessionTest::targets(const QString& node)
{
    QHash<int, QString> names;
    std::vector<std::pair<int, int>> links;
    for (const QJsonValue value : graphObjects(output(u"pw-dump"_s, {}))) {
        const QJsonValue info = value[u"info"_s];
        if (value[u"type"_s] == u"PipeWire:Interface:Node"_s) {
            names.insert(value[u"id"_s].toInt(), info[u"props"_s][u"node.name"_s].toString());
        } else if (value[u"type"_s] == u"PipeWire:Interface:Link"_s) {
            links.emplace_back(info[u"output-node-id"_s].toInt(), info[u"input-node-id"_s].toInt());
        }
    }
    QStringList found;
    for (const auto& [from, to] : links) {
        if (names.value(from) == node && !found.contains(names.value(to))) {
            found << names.value(to);
        }
    }
    return found;
}

RecorderState SessionTest::begin(const SourceRef& source, std::optional<std::vector<std::int64_t>> channels)
{
    const auto state = start({.source = source, .channels = std::move(channels)});
    EXPECT_TRUE(state) << qPrintable(errorText(state.error()));
    return state.value_or(RecorderState{});
}

bool SessionTest::recordsOn(double seconds)
{
    const auto recorded = [] {
        const auto state = RecorderStateStore::running();
        return state && state->stats ? state->stats->seconds() : -1;
    };
    const double before = recorded();
    return before >= 0 && waitFor([&] { return recorded() >= before + seconds; }, 10s);
}

RecorderState SessionTest::end()
{
    const auto last = RecorderClient::stop(15s);
    EXPECT_TRUE(last) << qPrintable(errorText(last.error()));
    EXPECT_TRUE(last && *last) << "no take was running";
    const RecorderState take = lastTake();
    EXPECT_FALSE(take.endedBecause) << qPrintable(take.endedBecause.value_or(QString()));
    return take;
}

SessionTest::Columns SessionTest::expectRamp(const RecorderState& take, const std::vector<int>& channels)
{
    const CaptureStats stats = take.stats.value_or(CaptureStats{});
    EXPECT_EQ(stats.discontinuities, 0) << stats.lostFrames << " frames lost";
    EXPECT_EQ(stats.overflowFrames, 0);
    EXPECT_EQ(stats.droppedCallbacks, 0);
    EXPECT_EQ(stats.fileFrames, stats.frames);
    EXPECT_FALSE(stats.writeFailed());
    const SoundFile file = SoundFile::read(take.path);
    EXPECT_EQ(file.frames, stats.frames);
    EXPECT_EQ(file.sampleRate, sampleRate);
    EXPECT_EQ(file.channels, std::ssize(channels));
    Columns columns;
    for (int column = 0; column < std::min(file.channels, static_cast<int>(channels.size())); ++column) {
        columns.push_back(soundings(file, column, channels[static_cast<std::size_t>(column)]));
    }
    return columns;
}

void SessionTest::expectThroughout(const Columns& columns, const RecorderState& take)
{
    ASSERT_FALSE(columns.empty());
    ASSERT_EQ(columns[0].size(), 1U);
    const Sounding all = columns[0][0];
    EXPECT_LT(all.at, sampleRate / 2);
    EXPECT_EQ(all.at + all.frames, take.stats->frames);
    EXPECT_GT(all.frames, sampleRate / 2);
    for (const std::vector<Sounding>& column : columns) {
        EXPECT_EQ(column, columns[0]);
    }
}

void SessionTest::expectGoesOn(const Columns& columns, const RecorderState& take)
{
    constexpr std::int64_t moment = sampleRate / 4;
    ASSERT_FALSE(columns.empty());
    for (const std::vector<Sounding>& column : columns) {
        Sounding before{.content = column.empty() ? 0 : column[0].content};
        for (const Sounding& stretch : column) {
            EXPECT_LT(stretch.at - before.at - before.frames, moment) << "silent at " << before.at + before.frames;
            const std::int64_t missing = stretch.content - before.content - before.frames;
            EXPECT_TRUE(missing >= 0 && missing < moment) << missing << " frames missing at " << stretch.at;
            before = stretch;
        }
        EXPECT_EQ(before.at + before.frames, take.stats->frames);
    }
}

}  // namespace vantiro::test
