// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "core/sources/AudioProcess.h"
#include "core/sources/SourceRef.h"
#include "tests/graph/GraphTest.h"

#include <QProcess>

#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro::test {

/// A program that the test needs beside it. It dies with the test; its end kills and reaps it. What it prints is in the
/// log.
class Service {
public:
    Service(const QString& program, const QStringList& arguments, const QString& log);
    ~Service();

    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;

    [[nodiscard]] std::int32_t pid() const { return static_cast<std::int32_t>(m_process.processId()); }
    [[nodiscard]] bool isRunning();

private:
    QProcess m_process;
};

/// A stretch of a take in which something is heard.
struct Sounding {
    std::int64_t at = 0;       ///< The take's frame that it begins with.
    std::int64_t content = 0;  ///< The frame of what was played.
    std::int64_t frames = 0;

    bool operator==(const Sounding&) const = default;
};

/// A test in a sandbox with a session bus where nothing lives, PipeWire, WirePlumber, PipeWire's PulseAudio server and
/// two virtual sets of speakers, "two" and "eight", called after their channels. What is played goes to "two" by
/// default.
class SessionTest : public GraphTest {
protected:
    void SetUp() override;

    /// A source that plays 20 seconds of the ramp, from this frame of it on, and stands still while nobody listens. It
    /// is a stream with a converter, as a device of this session manager has to be. Its end takes it out of the graph.
    [[nodiscard]] std::unique_ptr<Service> source(const QString& name, std::int64_t from = 0) const;
    /// A sound file of 20 seconds of the ramp from this frame on, for a subtype of libsndfile.
    [[nodiscard]] QString rampFile(int subtype, std::int64_t from = 0) const;
    /// Starts a program that plays, and waits until it is heard.
    [[nodiscard]] std::unique_ptr<Service> play(const QString& program, const QStringList& arguments) const;
    /// The session manager's other half of a restart.
    void endSessionManager() { m_sessionManager.reset(); }
    [[nodiscard]] bool startSessionManager();

    /// What a program of the system prints; a failure is nothing.
    static QString output(const QString& program, const QStringList& arguments);
    /// The program of this process, as the tool lists it.
    [[nodiscard]] static std::optional<AudioProcess> listed(std::int32_t pid);
    /// The id of the graph's node with this name; 0 without one.
    [[nodiscard]] static int nodeId(const QString& name);
    /// The nodes that this node plays to.
    [[nodiscard]] static QStringList targets(const QString& node);

    /// Starts a take; a failure fails the test.
    [[nodiscard]] static RecorderState begin(
        const SourceRef& source, std::optional<std::vector<std::int64_t>> channels = std::nullopt);
    /// Waits until the running take is so many seconds longer.
    [[nodiscard]] static bool recordsOn(double seconds);
    /// Ends the running take, which nothing must have ended before.
    static RecorderState end();
    /// What sounds in each column.
    using Columns = std::vector<std::vector<Sounding>>;
    /// Expects that the take counts no loss and that all that sounds in its columns is the ramp of these channels (from
    /// 0), bit by bit.
    static Columns expectRamp(const RecorderState& take, const std::vector<int>& channels = {0, 1});
    /// Expects one stretch, the same in all columns, that begins within half a second and lasts to the take's end.
    static void expectThroughout(const Columns& columns, const RecorderState& take);
    /// Expects that nothing comes twice, that no silence and no part that is missing is longer than a moment (a quarter
    /// of a second), and that each column sounds to the take's end.
    static void expectGoesOn(const Columns& columns, const RecorderState& take);

private:
    [[nodiscard]] bool startServices();
    [[nodiscard]] QByteArray servicesLog() const;

    std::vector<std::unique_ptr<Service>> m_services;
    std::unique_ptr<Service> m_sessionManager;
};

}  // namespace vantiro::test
