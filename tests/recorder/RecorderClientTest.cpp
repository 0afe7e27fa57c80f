// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/RecorderClient.h"

#include "core/recorder/ProcessLiveness.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>

#include <csignal>

#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    class RecorderClientTest : public test::SandboxTest {
    protected:
        void TearDown() override
        {
            if (m_pid > 1 && ProcessLiveness::exists(m_pid)) {
                ::kill(m_pid, SIGKILL);
            }
        }

        [[nodiscard]] RecorderClient::Request request() const
        {
            return {.source = SourceRef::device(QStringLiteral("uid")),
                .output = m_sandbox.path(QStringLiteral("take.caf"))};
        }

        /// Starts the fake recorder in this mode, waiting for it half a second at most unless told otherwise.
        Result<RecorderState> start(const char* mode, int rounds = 100)
        {
            m_sandbox.setVariable("VANTIRO_FAKE_TOOL_MODE", mode);
            const RecorderClient::StartOptions options{
                .findTool = [] { return QStringLiteral(VANTIRO_FAKE_TOOL); }, .rounds = rounds, .interval = 5ms};
            auto state = RecorderClient::start(request(), options);
            if (state) {
                m_pid = state->pid;
            }
            return state;
        }

        Result<RecorderState> startTake(const char* mode) { return start(mode, 4000); }

        /// Whether the recorder has gone and was reaped.
        [[nodiscard]] static bool isGone(std::int32_t pid)
        {
            return test::waitFor([pid] { return !ProcessLiveness::exists(pid); });
        }

        static QString failureOf(const auto& result)
        {
            return result ? QStringLiteral("no failure") : errorText(result.error());
        }

    private:
        std::int32_t m_pid = 0;
    };

}  // namespace

TEST(RecorderClientArguments, NameTheSourceTheChannelsTheFormatAndThePath)
{
    struct Case {
        RecorderClient::Request request;
        QString expected;
    };
    const Case cases[] = {
        {{.source = SourceRef::device(QStringLiteral("a b"))},
            QStringLiteral("record|--detached|--device|a b|--format|caf")},
        {{.source = SourceRef::app(QStringLiteral("org.mixxx.Mixxx")),
             .channels = std::vector<std::int64_t>{3, 14},
             .format = TakeFormat::wav,
             .output = QStringLiteral("/tmp/x y.wav")},
            QStringLiteral("record|--detached|--app|org.mixxx.Mixxx|--channels|3,14|--format|wav|--out|/tmp/x y.wav")},
        {{.source = SourceRef::device(QStringLiteral("u")), .channels = std::vector<std::int64_t>{}},
            QStringLiteral("record|--detached|--device|u|--channels||--format|caf")},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(RecorderClient::argumentVector(test.request).join(u'|'), test.expected);
    }
}

TEST_F(RecorderClientTest, FindsTheToolThatBelongsToTheProgram)
{
    const auto place = [this](const QString& path) {
        const QString absolute = m_sandbox.path(path);
        test::Sandbox::writeFile(absolute, "#!/bin/sh\n");
        QFile::setPermissions(absolute, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
        return absolute;
    };
    const QString window = m_sandbox.path(QStringLiteral("bin/vantiro-app"));
    EXPECT_EQ(RecorderClient::toolPathFor(window), std::nullopt);
    test::Sandbox::writeFile(m_sandbox.path(QStringLiteral("bin/vantiro")), "not executable");
    EXPECT_EQ(RecorderClient::toolPathFor(window), std::nullopt);
    const QString beside = place(QStringLiteral("bin/vantiro"));
    EXPECT_EQ(RecorderClient::toolPathFor(window), beside);
    EXPECT_EQ(RecorderClient::toolPathFor(beside), beside);
    EXPECT_TRUE(QDir().mkpath(m_sandbox.path(QStringLiteral("libexec/vantiro/vantiro"))));
    EXPECT_EQ(RecorderClient::toolPathFor(window), beside) << "a folder is no program";
    QDir().rmdir(m_sandbox.path(QStringLiteral("libexec/vantiro/vantiro")));
    const QString installed = place(QStringLiteral("libexec/vantiro/vantiro"));
    EXPECT_EQ(RecorderClient::toolPathFor(window), installed);
}

TEST_F(RecorderClientTest, RecordsATakeAndReturnsItsFinalRecord)
{
    const auto state = startTake("take");
    ASSERT_TRUE(state) << qPrintable(failureOf(state));
    EXPECT_EQ(state->path, *request().output);
    EXPECT_EQ(RecorderStateStore::running(), *state);
    EXPECT_EQ(failureOf(start("take")), QStringLiteral("already recording: ") + state->path);

    const auto record = RecorderClient::stop(20s);
    ASSERT_TRUE(record && *record) << qPrintable(failureOf(record));
    EXPECT_EQ((*record)->endedBecause, QStringLiteral("source-quit"));
    EXPECT_TRUE(isGone(state->pid));
    EXPECT_EQ(RecorderStateStore::running(), std::nullopt);
}

TEST_F(RecorderClientTest, ReturnsNoRecordThatIsNotOfTheStoppedTake)
{
    for (const char* mode : {"no record", "other record"}) {
        ASSERT_TRUE(startTake(mode)) << mode;
        const auto record = RecorderClient::stop(20s);
        ASSERT_TRUE(record) << qPrintable(failureOf(record));
        EXPECT_EQ(*record, std::nullopt) << mode;
    }
}

TEST_F(RecorderClientTest, LeavesARecorderAloneThatNeedsLongerToFinish)
{
    const auto state = startTake("slow");
    ASSERT_TRUE(state) << qPrintable(failureOf(state));
    const QString expected =
        QStringLiteral("the recorder (pid %1) is still finalizing %2").arg(state->pid).arg(state->path);
    EXPECT_EQ(failureOf(RecorderClient::stop(0ms)), expected);
    EXPECT_EQ(RecorderStateStore::running(), *state);

    // Two signals at once would be one.
    EXPECT_TRUE(test::waitFor([] { return test::Sandbox::readFile(VantiroPaths::recorderLog()) == "finishing\n"; }));
    const auto record = RecorderClient::stop(20s);
    EXPECT_TRUE(record && *record) << qPrintable(failureOf(record));
}

TEST_F(RecorderClientTest, FailsWithWhatTheRecorderPrinted)
{
    test::Sandbox::writeFile(VantiroPaths::recorderLog(), "words of an earlier recorder");
    EXPECT_EQ(failureOf(startTake("silent")), QStringLiteral("the recorder did not start"));
    EXPECT_EQ(failureOf(startTake("words")), QStringLiteral("opening\nno such device"));
}

TEST_F(RecorderClientTest, TrustsNoStateWithoutALockOrOfAnotherProcess)
{
    for (const char* mode : {"no lock", "foreign state"}) {
        EXPECT_EQ(failureOf(start(mode)), QStringLiteral("waiting")) << mode;
        const auto state = RecorderStateStore::read(VantiroPaths::stateFile());
        ASSERT_TRUE(state) << mode;
        if (state->pid != ::getpid()) {
            EXPECT_TRUE(isGone(state->pid)) << mode;
        }
        EXPECT_TRUE(test::waitFor([] { return !RecorderLock::isHeld(VantiroPaths::lockFile()); })) << mode;
    }
}

TEST_F(RecorderClientTest, GivesTheRecorderACleanBirth)
{
    const int leaking = ::dup(STDERR_FILENO);
    const auto oldHandler = std::signal(SIGINT, SIG_IGN);
    sigset_t blocked{};
    sigset_t before{};
    ::sigemptyset(&blocked);
    ::sigaddset(&blocked, SIGTERM);
    ::pthread_sigmask(SIG_BLOCK, &blocked, &before);
    const QString printed = failureOf(startTake("surroundings"));
    ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
    std::signal(SIGINT, oldHandler);
    ::close(leaking);
    EXPECT_EQ(printed,
        RecorderClient::argumentVector(request()).join(u'|')
            + QStringLiteral("\nown session: 1\nsignals blocked or ignored: 0\ninherited descriptors: 0\n"
                             "input: /dev/null\nfolder: ")
            + QDir::currentPath());
}

TEST_F(RecorderClientTest, FailsWithoutAToolALogOrALaunch)
{
    EXPECT_EQ(failureOf(RecorderClient::start(request(), {.findTool = [] { return std::nullopt; }})),
        QStringLiteral("the vantiro recorder tool is missing from this build"));
    EXPECT_EQ(
        failureOf(RecorderClient::start(request(), {.findTool = [] { return QStringLiteral("/nowhere/vantiro"); }})),
        QStringLiteral("/nowhere/vantiro: No such file or directory"));

    ASSERT_TRUE(QFile::remove(VantiroPaths::recorderLog()) && QDir().mkpath(VantiroPaths::recorderLog()));
    EXPECT_EQ(failureOf(startTake("take")), VantiroPaths::recorderLog() + QStringLiteral(": Is a directory"));
}

TEST_F(RecorderClientTest, ClearsTheStateOfADeadRecorderOnStopAndStartsOverIt)
{
    RecorderState dead;
    dead.pid = ::getpid();
    dead.startedAt = QDateTime::currentDateTimeUtc();
    dead.processStart = 1e9;
    ASSERT_TRUE(RecorderStateStore::write(dead, VantiroPaths::stateFile()));
    EXPECT_EQ(RecorderClient::stop(0ms), std::nullopt);
    EXPECT_FALSE(QFile::exists(VantiroPaths::stateFile()));

    ASSERT_TRUE(RecorderStateStore::write(dead, VantiroPaths::stateFile()));
    EXPECT_TRUE(startTake("take"));
    EXPECT_TRUE(RecorderClient::stop(20s));
}

}  // namespace vantiro
