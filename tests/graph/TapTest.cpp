// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/TapTest.h"

#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/rig/RampSignal.h"

#include <QStandardPaths>

#include <algorithm>
#include <csignal>
#include <span>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    /// Frames a cycle; programs of other processes need more time on a busy machine than a device of this one.
    constexpr int quantum = 1024;

    /// Silence of so many frames is no accident of the ramp, which has single zeros.
    constexpr std::int64_t shortestSilence = 8;

    QStringList ports(const QString& direction, const QString& node)
    {
        Program tool(u"timeout"_s, {u"10"_s, u"pw-link"_s, direction});
        QStringList found;
        for (const QString& line : tool.wait().output.split(u'\n')) {
            if (line.trimmed().startsWith(node + u':') && !line.contains(u":monitor_"_s)) {
                found << line.trimmed();
            }
        }
        return found;
    }

    void eachLink(const QString& node, const QString& sink, int firstInput, const QStringList& options)
    {
        const QStringList outputs = ports(u"-o"_s, node);
        const QStringList inputs = ports(u"-i"_s, sink);
        ASSERT_FALSE(outputs.isEmpty());
        ASSERT_LE(firstInput + outputs.size(), inputs.size());
        for (qsizetype index = 0; index < outputs.size(); ++index) {
            Program tool(u"timeout"_s,
                QStringList{u"10"_s, u"pw-link"_s} + options << outputs[index] << inputs[firstInput + index]);
            const auto result = tool.wait();
            EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
        }
    }

}  // namespace

void TapTest::SetUp()
{
    if (QStandardPaths::findExecutable(u"pipewire"_s).isEmpty() && !qEnvironmentVariableIsSet("CI")) {
        GTEST_SKIP() << "PipeWire is not installed, so nothing of the graph is tested here.";
    }
    auto started = PrivateGraph::start(m_sandbox.runtime(),
        {.quantum = quantum,
            .sinks = {{.name = u"speakers"_s}, {.name = u"headphones"_s}, {.name = u"interface"_s, .channels = 8}}});
    ASSERT_TRUE(started) << qPrintable(errorText(started.error()));
    m_graph = *std::move(started);
    m_graph->applyEnvironment();
    // No desktop is asked for anything here.
    m_sandbox.setVariable("DBUS_SESSION_BUS_ADDRESS", "disabled:");
    m_sandbox.setVariable("DBUS_SYSTEM_BUS_ADDRESS", "disabled:");
}

std::unique_ptr<Program> TapTest::program(const QString& node, const QString& id, int channels, int steady)
{
    QStringList words{m_graph->socketPath(), node, id, QString::number(channels)};
    if (steady != 0) {
        words << QString::number(steady);
    }
    auto started = std::make_unique<Program>(QStringLiteral(VANTIRO_VIRTUAL_APP), words);
    waitForStream(node, true);
    if (steady != 0) {
        waitForStream(node + u"-steady"_s, true);
    }
    return started;
}

void TapTest::waitForStream(const QString& node, bool isThere)
{
    EXPECT_TRUE(waitFor([&] { return ports(u"-o"_s, node).isEmpty() != isThere; })) << qPrintable(node);
}

void TapTest::link(const QString& node, const QString& sink, int firstInput)
{
    eachLink(node, sink, firstInput, {});
}

void TapTest::unlink(const QString& node, const QString& sink, int firstInput)
{
    eachLink(node, sink, firstInput, {u"-d"_s});
}

QString TapTest::runTool(const QString& name, const QStringList& arguments)
{
    Program tool(u"timeout"_s, QStringList{u"10"_s, name} + arguments);
    const auto result = tool.wait();
    EXPECT_EQ(result.status, 0) << qPrintable(name + u' ' + arguments.join(u' ') + u": "_s + result.errors);
    return result.output;
}

std::unique_ptr<Program> TapTest::recordApp(const QString& path, const QString& id, const QStringList& options)
{
    auto tool = launch(QStringList{u"record"_s, u"--detached"_s, u"--app"_s, id, u"--out"_s, path} + options);
    EXPECT_TRUE(waitFor(
        [&] {
            const auto state = RecorderStateStore::running();
            return (state && state->pid == tool->pid()) || !tool->isRunning();
        },
        20s))
        << "no take begins";
    if (!tool->isRunning()) {
        ADD_FAILURE() << qPrintable(tool->wait().errors);
    }
    return tool;
}

bool TapTest::takeGrows(double seconds)
{
    const auto recorded = [] {
        const auto state = RecorderStateStore::running();
        return state && state->stats ? state->stats->seconds() : 0;
    };
    const double target = recorded() + seconds;
    return waitFor(
        [&] { return recorded() >= target; }, std::chrono::milliseconds(8000 + static_cast<int>(seconds * 3000)));
}

RecorderState TapTest::finish(Program& tool)
{
    tool.signal(SIGINT);
    const auto result = tool.wait();
    EXPECT_EQ(result.status, 0) << qPrintable(result.errors);
    return lastTake();
}

void TapTest::expectContinuous(const RecorderState& take)
{
    const CaptureStats stats = take.stats.value_or(CaptureStats{});
    EXPECT_GT(stats.frames, 0);
    EXPECT_EQ(stats.fileFrames, stats.frames);
#ifndef VANTIRO_SANITIZED
    // A sanitizer makes even the graph late at times: a cycle that nobody was given is missing, and rightly counted.
    EXPECT_EQ(stats.discontinuities, 0);
    EXPECT_EQ(stats.lostFrames, 0);
#endif
    EXPECT_EQ(stats.droppedCallbacks, 0);
    EXPECT_EQ(stats.overflowFrames, 0);
    EXPECT_EQ(stats.writeErrors, 0);
    EXPECT_EQ(stats.clockChecked, true);
}

std::vector<std::int32_t> TapTest::samplesOf(const SoundFile& file, int column)
{
    std::vector<std::int32_t> samples;
    const auto width = static_cast<std::size_t>(file.channels);
    for (auto index = static_cast<std::size_t>(column); width > 0 && index < file.numbers.size(); index += width) {
        samples.push_back(file.numbers[index]);
    }
    return samples;
}

std::vector<Stretch> TapTest::heardIn(const SoundFile& file, int column, int channel)
{
    const std::vector<std::int32_t> samples = samplesOf(file, column);
    std::vector<Stretch> stretches;
    const auto end = std::ssize(samples);
    for (std::int64_t row = 0; row < end;) {
        const auto quiet =
            std::find_if(samples.begin() + row, samples.end(), [&](std::int32_t sample) { return sample != 0; });
        if (const auto next = quiet - samples.begin(); next == end || next - row >= shortestSilence) {
            row = next;
            continue;
        }
        const auto report = RampSignal::check(std::span(samples).subspan(static_cast<std::size_t>(row)), channel);
        if (!report) {
            ADD_FAILURE() << "column " << column << ", row " << row << " is neither silence nor what was played";
            break;
        }
        const std::int64_t length = report->firstBreak.value_or(end - row);
        stretches.push_back({.row = row, .frames = length, .content = report->start});
        row += length;
    }
    return stretches;
}

void TapTest::expectOneStretch(const RecorderState& take, const std::vector<int>& channels, double seconds)
{
    const SoundFile file = SoundFile::read(take.path);
    ASSERT_EQ(file.channels, std::ssize(channels));
    EXPECT_EQ(file.frames, take.stats->frames);
    std::optional<std::int64_t> offset;
    for (int column = 0; column < file.channels; ++column) {
        SCOPED_TRACE(column);
        const auto heard = heardIn(file, column, channels[static_cast<std::size_t>(column)]);
        ASSERT_EQ(heard.size(), 1U);
        EXPECT_GE(static_cast<double>(heard.front().frames), seconds * file.sampleRate);
        const std::int64_t shift = heard.front().content - heard.front().row;
        EXPECT_EQ(shift, offset.value_or(shift)) << "shifted against the first column";
        offset = shift;
    }
}

}  // namespace vantiro::test
