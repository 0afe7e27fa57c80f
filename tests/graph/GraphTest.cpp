// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/GraphTest.h"

#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "platform/rig/RampSignal.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QStandardPaths>

#include <csignal>
#include <numeric>
#include <span>

namespace vantiro::test {

using namespace std::chrono_literals;

void GraphTest::SetUp()
{
    if (QStandardPaths::findExecutable(QStringLiteral("pipewire")).isEmpty() && !qEnvironmentVariableIsSet("CI")) {
        GTEST_SKIP() << "PipeWire is not installed, so nothing of the graph is tested here.";
    }
    auto started = PrivateGraph::start(m_sandbox.runtime());
    ASSERT_TRUE(started) << qPrintable(errorText(started.error()));
    m_graph = *std::move(started);
    m_graph->applyEnvironment();
}

void GraphTest::TearDown()
{
    if (const auto left = RecorderStateStore::running()) {
        ::kill(left->pid, SIGKILL);
    }
}

std::unique_ptr<VirtualDevice> GraphTest::device(VirtualDevice::Options options) const
{
    if (options.name.isEmpty()) {
        options.name = QStringLiteral("card");
    }
    options.render = RampSignal::render;
    auto made = VirtualDevice::make(m_graph->socketPath(), options);
    EXPECT_TRUE(made) << qPrintable(errorText(made.error()));
    return made ? *std::move(made) : nullptr;
}

bool GraphTest::plays(const VirtualDevice& device, double seconds, int sampleRate)
{
    const std::int64_t target = device.contentPosition() + static_cast<std::int64_t>(seconds * sampleRate);
    const std::chrono::milliseconds limit(5000 + static_cast<std::int64_t>(seconds * 10'000));
    return waitFor([&] { return device.contentPosition() >= target; }, limit);
}

std::unique_ptr<Program> GraphTest::launch(const QStringList& arguments)
{
    return std::make_unique<Program>(QStringLiteral(VANTIRO_TOOL), arguments);
}

std::unique_ptr<Program> GraphTest::record(const QString& path, const QStringList& options)
{
    const QStringList words{QStringLiteral("record"), QStringLiteral("--detached"), QStringLiteral("--device"),
        QStringLiteral("card"), QStringLiteral("--out"), path};
    auto tool = launch(words + options);
    const auto isRecording = [&] {
        const auto state = RecorderStateStore::read(VantiroPaths::stateFile());
        return state && state->pid == tool->pid() && RecorderStateStore::running();
    };
    EXPECT_TRUE(waitFor([&] { return isRecording() || !tool->isRunning(); }, 20s)) << "no take begins";
    if (!tool->isRunning()) {
        ADD_FAILURE() << qPrintable(tool->wait().errors);
    }
    return tool;
}

Result<RecorderState> GraphTest::start(const RecorderClient::Request& request)
{
    return RecorderClient::start(
        request, {.findTool = [] { return QStringLiteral(VANTIRO_TOOL); }, .rounds = 2000, .interval = 10ms});
}

QStringList GraphTest::filesIn(const QString& folder)
{
    return QDir(folder).entryList(QDir::Files | QDir::Hidden | QDir::System, QDir::Name);
}

RecorderState GraphTest::lastTake()
{
    RecorderState last = RecorderStateStore::read(VantiroPaths::lastTakeFile()).value_or(RecorderState{});
    EXPECT_TRUE(last.stats) << "no record of the last take";
    last.stats = last.stats.value_or(CaptureStats{});
    return last;
}

Heard GraphTest::heardIn(const SoundFile& file, int column, int channel)
{
    std::vector<std::int32_t> samples;
    const auto width = static_cast<std::size_t>(file.channels);
    for (auto index = static_cast<std::size_t>(column); width > 0 && index < file.numbers.size(); index += width) {
        samples.push_back(file.numbers[index]);
    }
    Heard heard;
    for (std::span<const std::int32_t> rest(samples); !rest.empty();) {
        const auto report = RampSignal::check(rest, channel);
        if (!report || (report->firstBreak && !report->jump)) {
            ADD_FAILURE() << "column " << column << ", sample " << samples.size() - rest.size()
                          << " or one near it is not what was played";
            break;
        }
        if (rest.size() == samples.size()) {
            heard.start = report->start;
        }
        const auto length = static_cast<std::size_t>(report->firstBreak.value_or(std::ssize(rest)));
        heard.end = report->start + static_cast<std::int64_t>(length);
        if (report->jump) {
            heard.jumps.push_back(*report->jump);
        }
        rest = rest.subspan(length);
    }
    return heard;
}

Heard GraphTest::expectExact(const RecorderState& take, const std::vector<int>& channels)
{
    const CaptureStats stats = take.stats.value_or(CaptureStats{});
    EXPECT_GT(stats.frames, 0);
    EXPECT_EQ(stats.fileFrames, stats.frames);
    EXPECT_EQ(stats.writeErrors, 0);
    EXPECT_EQ(stats.overflowFrames, 0);
    EXPECT_EQ(stats.droppedCallbacks, 0);
    EXPECT_EQ(stats.clockChecked, true);

    const SoundFile file = SoundFile::read(take.path);
    EXPECT_EQ(file.frames, stats.frames) << qPrintable(take.path);
    EXPECT_EQ(file.channels, std::ssize(channels));
    EXPECT_EQ(file.sampleRate, static_cast<int>(stats.sampleRate));
    Heard heard;
    for (int column = 0; column < std::min(file.channels, static_cast<int>(channels.size())); ++column) {
        const Heard next = heardIn(file, column, channels[static_cast<std::size_t>(column)]);
        EXPECT_TRUE(column == 0 || next == heard) << "column " << column << " is shifted";
        heard = next;
    }
    EXPECT_EQ(stats.discontinuities, std::ssize(heard.jumps));
    EXPECT_EQ(stats.lostFrames,
        std::accumulate(heard.jumps.begin(), heard.jumps.end(), std::int64_t{0},
            [](std::int64_t sum, std::int64_t jump) { return sum + std::max(jump, std::int64_t{0}); }));
    return heard;
}

std::int64_t GraphTest::expectWhole(const RecorderState& take, const std::vector<int>& channels)
{
    const Heard heard = expectExact(take, channels);
    EXPECT_TRUE(heard.jumps.empty()) << "the first of " << heard.jumps.size() << " gaps: " << heard.jumps.front();
    return heard.end;
}

void GraphTest::expectIdle()
{
    EXPECT_FALSE(QFileInfo::exists(VantiroPaths::stateFile()));
    EXPECT_FALSE(RecorderLock::isHeld(VantiroPaths::lockFile()));
}

}  // namespace vantiro::test
