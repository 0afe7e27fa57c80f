// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "tests/graph/GraphTest.h"

namespace vantiro::test {

/// A stretch of a take in which the program was heard on one channel without a break.
struct Stretch {
    std::int64_t row = 0;      ///< Of the file, where it begins.
    std::int64_t frames = 0;   ///< Its length.
    std::int64_t content = 0;  ///< The frame of the program's ramp that its first sample is.

    bool operator==(const Stretch&) const = default;
};

/// A test of taps: a graph with virtual speakers ("speakers" and "headphones" with 2 channels, "interface" with 8), and
/// programs in processes of their own. Links are made by the test, as a session manager would.
class TapTest : public GraphTest {
protected:
    void SetUp() override;

    /// Starts a program whose stream bears this name, and waits until it is in the graph. A second stream, if `steady`
    /// is not 0, has this number in all samples.
    [[nodiscard]] std::unique_ptr<Program> program(
        const QString& node, const QString& id = QStringLiteral("org.test.Deck"), int channels = 2, int steady = 0);
    /// The node has output ports, or none.
    static void waitForStream(const QString& node, bool isThere);
    /// Links the first ports of a stream to as many ports of a sink, beginning with that one (from 0).
    static void link(const QString& node, const QString& sink, int firstInput = 0);
    static void unlink(const QString& node, const QString& sink, int firstInput = 0);
    /// Runs one of PipeWire's own tools to its end and returns what it prints; a failure fails the test.
    static QString runTool(const QString& name, const QStringList& arguments);

    /// Starts the tool with "record --detached" on the program and waits until its take runs.
    [[nodiscard]] static std::unique_ptr<Program> recordApp(
        const QString& path, const QString& id = QStringLiteral("org.test.Deck"), const QStringList& options = {});
    /// Waits until the take holds so much more, as its state tells.
    static bool takeGrows(double seconds);
    /// Ends the take and returns its record.
    static RecorderState finish(Program& tool);

    /// Expects a whole take in which every moment was counted and none is missing.
    static void expectContinuous(const RecorderState& take);
    [[nodiscard]] static std::vector<std::int32_t> samplesOf(const SoundFile& file, int column);
    /// What one column of a take holds of a channel (from 0) of the program; silence between stretches is left out,
    /// and a sample that is neither fails the test.
    static std::vector<Stretch> heardIn(const SoundFile& file, int column, int channel);
    /// Expects that each column holds one stretch only, all at the same frame of content in each row, no shorter than
    /// that many seconds, and silence elsewhere.
    static void expectOneStretch(const RecorderState& take, const std::vector<int>& channels, double seconds);
};

}  // namespace vantiro::test
