// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/rig/MadeSet.h"
#include "platform/rig/PrivateGraph.h"
#include "platform/rig/VirtualDevice.h"
#include "tests/support/Sandbox.h"

#include <QFileInfo>
#include <QProcess>
#include <QProcessEnvironment>
#include <QRegularExpression>

#include <sys/syscall.h>

namespace vantiro::test {

using namespace std::chrono_literals;
using namespace Qt::StringLiterals;

class CallbackGuard : public SandboxTest {
protected:
    struct Run {
        QProcess::ExitStatus status = QProcess::CrashExit;
        int exitCode = -1;
        QString errors;  ///< All that came on standard error.

        [[nodiscard]] qint64 watchedCallbacks() const
        {
            return QRegularExpression(u"callback guard: (\\d+) callbacks"_s).match(errors).captured(1).toLongLong();
        }
    };

    void SetUp() override
    {
        auto graph = PrivateGraph::start(m_sandbox.runtime());
        if (!graph) {
            GTEST_SKIP() << "NO GRAPH, SO THE CALLBACK IS NOT WATCHED: " << qPrintable(errorText(graph.error()));
        }
        m_graph = *std::move(graph);
        auto device = VirtualDevice::make(m_graph->socketPath(),
            {.name = QLatin1StringView(deviceName),
                .render = [set = MadeSet(48000)](auto channels, int frames, std::int64_t position) {
                    set.render(channels, frames, position);
                }});
        ASSERT_TRUE(device) << qPrintable(errorText(device.error()));
        m_device = *std::move(device);
    }

    /// The real recorder under the guard: it is told to stop once the take has this many bytes.
    Run record(qint64 bytes, const QString& probe)
    {
        QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
        for (const auto& [name, value] : m_graph->environment()) {
            environment.insert(name, value);
        }
        environment.insert(u"LD_PRELOAD"_s, QStringLiteral(VANTIRO_CALLBACK_GUARD));
        environment.insert(u"VANTIRO_GUARD_PROBE"_s, probe);
        QProcess recorder;
        recorder.setProcessEnvironment(environment);
        const QString take = m_sandbox.path(u"take.caf"_s);
        recorder.start(QStringLiteral(VANTIRO_TOOL),
            {u"record"_s, u"--device"_s, QLatin1StringView(deviceName), u"--out"_s, take, u"--force"_s});
        const bool came = waitFor([&] { return recorder.waitForFinished(5) || QFileInfo(take).size() >= bytes; }, 20s);
        EXPECT_TRUE(came) << "the take did not grow";
        recorder.terminate();
        if (recorder.state() != QProcess::NotRunning && !recorder.waitForFinished(20'000)) {
            ADD_FAILURE() << "the recorder did not end";
            recorder.kill();
            recorder.waitForFinished();
        }
        return {recorder.exitStatus(), recorder.exitCode(), QString::fromLocal8Bit(recorder.readAllStandardError())};
    }

    static constexpr qint64 twoSeconds = qint64{2} * 48000 * 2 * 3;

private:
    static constexpr const char* deviceName = "guard.card";

    std::unique_ptr<PrivateGraph> m_graph;
    std::unique_ptr<VirtualDevice> m_device;
};

TEST_F(CallbackGuard, FindsNothingInTheRecordersCallback)
{
    const Run run = record(twoSeconds, u"clock"_s);
    EXPECT_EQ(run.status, QProcess::NormalExit) << qPrintable(run.errors);
    EXPECT_EQ(run.exitCode, 0) << qPrintable(run.errors);
    EXPECT_GT(run.watchedCallbacks(), 100) << qPrintable(run.errors);
    EXPECT_FALSE(run.errors.contains(u"inside the audio callback"_s)) << qPrintable(run.errors);
    if (run.errors.contains(u"WITHOUT"_s)) {
        GTEST_SKIP() << "ONLY ALLOCATION AND LOCKS WERE WATCHED: " << qPrintable(run.errors);
    }
}

// The test that is run has no callback but the player's.
TEST_F(CallbackGuard, FindsNothingInThePlayersCallback)
{
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    environment.insert(u"LD_PRELOAD"_s, QStringLiteral(VANTIRO_CALLBACK_GUARD));
    environment.insert(u"VANTIRO_GUARD_PROBE"_s, u"clock"_s);
    QProcess player;
    player.setProcessEnvironment(environment);
    player.start(
        QStringLiteral(VANTIRO_PLAYBACK_TEST), {u"--gtest_filter=PlaybackTest.IsNobodysSourceAndNobodysUse"_s});
    EXPECT_TRUE(player.waitForFinished());
    const QString errors = QString::fromLocal8Bit(player.readAllStandardError());
    EXPECT_EQ(player.exitStatus(), QProcess::NormalExit) << qPrintable(errors);
    EXPECT_EQ(player.exitCode(), 0) << player.readAllStandardOutput().constData();
    EXPECT_FALSE(errors.contains(u"inside the audio callback"_s)) << qPrintable(errors);
    EXPECT_GT((Run{.errors = errors}.watchedCallbacks()), 20) << qPrintable(errors);
}

TEST_F(CallbackGuard, BitesWhateverIsForbidden)
{
    struct Case {
        QString probe;
        QString message;
    };
    for (const auto& [probe, message] : {
             Case{u"malloc"_s, u"callback guard: malloc inside"_s},
             Case{u"mutex"_s, u"callback guard: pthread_mutex_lock inside"_s},
             Case{u"write"_s, u"callback guard: system call %1 inside"_s.arg(SYS_write)},
         }) {
        const Run run = record(twoSeconds, probe);
        if (probe == u"write"_s && run.errors.contains(u"WITHOUT"_s)) {
            GTEST_SKIP() << "SYSTEM CALLS CANNOT BE TRAPPED HERE";
        }
        EXPECT_EQ(run.status, QProcess::CrashExit) << qPrintable(probe);
        EXPECT_TRUE(run.errors.contains(message)) << qPrintable(probe) << ": " << qPrintable(run.errors);
    }
}

}  // namespace vantiro::test
