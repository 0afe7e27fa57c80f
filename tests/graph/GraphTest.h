// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/recorder/RecorderClient.h"
#include "core/recorder/RecorderState.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"
#include "tests/capture/SoundFile.h"
#include "tests/graph/Program.h"
#include "tests/support/Sandbox.h"

#include <QString>
#include <QStringList>

#include <chrono>
#include <cstdint>
#include <memory>
#include <optional>
#include <ostream>
#include <vector>

namespace vantiro::test {

/// What a take holds of what was played.
struct Heard {
    std::int64_t start = 0;           ///< The frame of the device's content that the first sample is.
    std::int64_t end = 0;             ///< The one behind the last sample.
    std::vector<std::int64_t> jumps;  ///< By how many frames the content jumps inside.

    bool operator==(const Heard&) const = default;
};

/// A test in a sandbox that runs the real tool on a PipeWire of its own. Every virtual device plays the ramp, so that
/// each sample of a take tells when and on which channel it was played.
class GraphTest : public SandboxTest {
protected:
    void SetUp() override;
    void TearDown() override;

    /// A device called "card", unless the options name it.
    [[nodiscard]] std::unique_ptr<VirtualDevice> device(VirtualDevice::Options options = {}) const;
    /// Waits until the device has played so much more; false if that takes far too long.
    [[nodiscard]] static bool plays(const VirtualDevice& device, double seconds, int sampleRate = 48'000);

    /// Starts the tool.
    [[nodiscard]] static std::unique_ptr<Program> launch(const QStringList& arguments);
    /// Runs the tool until it ends.
    static Program::Result run(const QStringList& arguments) { return launch(arguments)->wait(); }
    /// Starts the tool with "record --detached" on the device "card" and waits until its take runs; a failure fails the
    /// test.
    [[nodiscard]] static std::unique_ptr<Program> record(const QString& path, const QStringList& options = {});
    /// Starts the recorder as the window does.
    [[nodiscard]] static Result<RecorderState> start(const RecorderClient::Request& request);

    /// Where takes go that need no path of their own.
    [[nodiscard]] QString takePath() const { return m_sandbox.path(QStringLiteral("takes/take.caf")); }
    /// Names of all files in a folder.
    [[nodiscard]] static QStringList filesIn(const QString& folder);
    /// The final record of the take that ended last, with stats; the test fails if there is none.
    [[nodiscard]] static RecorderState lastTake();

    /// What one column of a sound file shows of a device's channel (from 0). The test fails if a sample is none that
    /// was played there.
    static Heard heardIn(const SoundFile& file, int column, int channel);
    /// Expects that the take's file holds all that its record counts, that each column is bit by bit what the device
    /// played on these channels (from 0), and that each jump was counted and nothing else.
    static Heard expectExact(const RecorderState& take, const std::vector<int>& channels = {0, 1});
    /// expectExact(), and that nothing is missing inside. Returns the end.
    static std::int64_t expectWhole(const RecorderState& take, const std::vector<int>& channels = {0, 1});
    /// Expects that no recorder is alive and none left a state.
    static void expectIdle();

    std::unique_ptr<PrivateGraph> m_graph;
};

/// A row of a table of cases, which names its case.
struct Row {
    const char* name;

    friend std::ostream& operator<<(std::ostream& out, const Row& row) { return out << row.name; }
};

inline constexpr auto rowName = [](const auto& info) { return info.param.name; };

}  // namespace vantiro::test
