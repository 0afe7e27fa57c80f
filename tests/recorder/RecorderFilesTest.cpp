// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/Json.h"
#include "core/recorder/ProcessLiveness.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QLocale>
#include <QTimeZone>

#include <cerrno>
#include <csignal>
#include <ctime>
#include <limits>
#include <thread>

#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;

    using VantiroPathsTest = test::SandboxTest;
    using RecorderLockTest = test::SandboxTest;
    using RecorderStateStoreTest = test::SandboxTest;

    RecorderState exampleState()
    {
        return {
            .pid = 4711,
            .path = QStringLiteral("/music/mix.caf"),
            .deviceUID = QStringLiteral("app:org.mixxx.Mixxx"),
            .deviceName = QStringLiteral("Mixxx"),
            .channels = {3, 4},
            .format = TakeFormat::wav,
            .startedAt = QDateTime(QDate(2026, 9, 19), QTime(19, 4, 33), Qt::UTC),
        };
    }

    RecorderState stateOfThisProcess()
    {
        RecorderState state = exampleState();
        state.pid = ::getpid();
        return RecorderState::started(state);
    }

}  // namespace

TEST_F(VantiroPathsTest, FollowTheEnvironmentAtEachRead)
{
    const QString home = m_sandbox.home();
    EXPECT_EQ(VantiroPaths::stateFile(), home + QStringLiteral("/.local/share/Vantiro/recorder.json"));
    m_sandbox.setVariable("XDG_DATA_HOME", QFile::encodeName(m_sandbox.path(QStringLiteral("data/"))));
    EXPECT_EQ(VantiroPaths::lockFile(), m_sandbox.path(QStringLiteral("data/Vantiro/recorder.lock")));
    for (const auto& ignored : {std::optional<QByteArray>("relative"), std::optional<QByteArray>("")}) {
        m_sandbox.setVariable("XDG_DATA_HOME", ignored);
        EXPECT_EQ(VantiroPaths::lastTakeFile(), home + QStringLiteral("/.local/share/Vantiro/last-take.json"));
    }

    EXPECT_EQ(VantiroPaths::takes(), home + QStringLiteral("/Music/Vantiro"));
    test::Sandbox::writeFile(home + QStringLiteral("/.config/user-dirs.dirs"), "XDG_MUSIC_DIR=\"$HOME/Müsik\"\n");
    EXPECT_EQ(VantiroPaths::takes(), home + QStringLiteral("/Müsik/Vantiro"));
}

TEST_F(VantiroPathsTest, NameATakeAfterItsLocalTimeWhateverTheLocale)
{
    m_sandbox.setVariable("TZ", "JST-9");
    const QLocale before;
    QLocale::setDefault(QLocale(QLocale::Arabic, QLocale::Egypt));
    const QDateTime now(QDate(2026, 1, 1), QTime(18, 4, 5, 999), Qt::UTC);
    EXPECT_EQ(VantiroPaths::newTakeURL(TakeFormat::caf, now),
        m_sandbox.home() + QStringLiteral("/Music/Vantiro/mix-2026-01-02_03-04-05.caf"));
    EXPECT_EQ(VantiroPaths::newTakeName(TakeFormat::wav, now), QStringLiteral("mix-2026-01-02_03-04-05.wav"));
    QLocale::setDefault(before);
}

TEST(ProcessLiveness, TellsWhetherANumberIsInUse)
{
    EXPECT_TRUE(ProcessLiveness::exists(-1, EPERM));
    EXPECT_FALSE(ProcessLiveness::exists(-1, ESRCH));
    for (const auto& [pid, exists] : {std::pair(-1, false), {0, false}, {1, true}, {::getpid(), true}}) {
        EXPECT_EQ(ProcessLiveness::exists(pid), exists) << pid;
    }
}

TEST(ProcessLiveness, SignalsNeitherGroupsNorTheFirstProcess)
{
    for (const std::int32_t pid : {-1, 0, 1}) {
        EXPECT_EQ(ProcessLiveness::signal(pid, 0).error(),
            Error(CaptureError{QStringLiteral("refusing to signal pid %1").arg(pid)}));
    }
    EXPECT_TRUE(ProcessLiveness::signal(::getpid(), 0));
    EXPECT_EQ(ProcessLiveness::signal(std::numeric_limits<std::int32_t>::max(), SIGINT).error(),
        Error(CaptureError{QStringLiteral("cannot signal the recorder (pid 2147483647): No such process")}));
}

TEST(ProcessLiveness, ReadsTheStartTimeOfLivingProcessesOnly)
{
    timespec now{};
    ::clock_gettime(CLOCK_BOOTTIME, &now);
    const pid_t child = ::fork();
    if (child == 0) {
        ::pause();
        ::_exit(0);
    }
    const auto start = ProcessLiveness::startTime(child);
    ASSERT_TRUE(start);
    EXPECT_NEAR(*start, static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) / 1e9, 2);

    ::kill(child, SIGKILL);
    siginfo_t information{};
    ASSERT_EQ(::waitid(P_PID, static_cast<id_t>(child), &information, WEXITED | WNOWAIT), 0);
    EXPECT_TRUE(ProcessLiveness::exists(child)) << "a zombie keeps its number";
    EXPECT_EQ(ProcessLiveness::startTime(child), std::nullopt);
    ::waitpid(child, nullptr, 0);
    EXPECT_EQ(ProcessLiveness::startTime(child), std::nullopt);
}

TEST(ProcessLiveness, IsNotMisledByAProcessName)
{
    const auto start = ProcessLiveness::startTime(::getpid());
    ASSERT_TRUE(start);
    char before[16]{};
    ::prctl(PR_GET_NAME, before);
    for (const char* name : {") Z 1 2 (", "a) X 0 0 0", ")\n", ""}) {
        ::prctl(PR_SET_NAME, name);
        EXPECT_EQ(ProcessLiveness::startTime(::getpid()), start) << name;
    }
    ::prctl(PR_SET_NAME, before);
}

TEST(RecorderState, IsWrittenWithSortedKeysAndComesBack)
{
    RecorderState state = exampleState();
    EXPECT_EQ(state.toJsonText(), R"({
    "channels": [
        3,
        4
    ],
    "deviceName": "Mixxx",
    "deviceUID": "app:org.mixxx.Mixxx",
    "format": "wav",
    "path": "/music/mix.caf",
    "pid": 4711,
    "startedAt": "2026-09-19T19:04:33Z"
}
)");
    EXPECT_EQ(RecorderState::fromJson(state.toJson()), state);

    state.stats = CaptureStats{.sampleRate = 48000, .frames = 480, .peak = 0.25F};
    state.processStart = 12345.67;
    state.endedBecause = QStringLiteral("disk-full");
    QJsonObject object = *json::object(state.toJsonText());
    object.insert(QStringLiteral("later"), 1);
    EXPECT_EQ(RecorderState::fromJson(object), state);
}

TEST(RecorderState, DecodesOnlyWhatIsWhole)
{
    const QJsonObject whole = exampleState().toJson();
    for (const QString& key : whole.keys()) {
        QJsonObject lacking = whole;
        lacking.remove(key);
        EXPECT_FALSE(RecorderState::fromJson(lacking)) << qPrintable(key);
    }
    struct Case {
        const char* key;
        QJsonValue value;
    };
    const Case wrong[] = {
        {"pid", 2147483648.0},
        {"pid", 1.5},
        {"channels", QJsonArray{1, QStringLiteral("2")}},
        {"format", QStringLiteral("mp3")},
        {"stats", QJsonObject{{QStringLiteral("frames"), 1}}},
        {"stats", QStringLiteral("none")},
        {"startedAt", 1e9},
        {"startedAt", QStringLiteral("yesterday")},
        {"startedAt", QStringLiteral("2026-09-19T19:04:33")},
    };
    for (const auto& [key, value] : wrong) {
        QJsonObject object = whole;
        object.insert(QLatin1StringView(key), value);
        EXPECT_FALSE(RecorderState::fromJson(object)) << key;
    }
}

TEST(RecorderState, ReadsDatesOfAnyZoneAndFraction)
{
    const QDateTime expected(QDate(2026, 9, 19), QTime(19, 4, 33), Qt::UTC);
    for (const char* text : {"2026-09-19T19:04:33Z", "2026-09-19T19:04:33+00:00", "2026-09-19T21:04:33+02:00",
             "2026-09-19T14:34:33-04:30", "2026-09-19T19:04:33.250Z"}) {
        QJsonObject object = exampleState().toJson();
        object.insert(QStringLiteral("startedAt"), QLatin1StringView(text));
        const auto state = RecorderState::fromJson(object);
        ASSERT_TRUE(state) << text;
        EXPECT_EQ(expected.secsTo(state->startedAt), 0) << text;
    }
}

TEST(RecorderState, RunsOnlyInTheProcessThatWroteIt)
{
    const RecorderState own = stateOfThisProcess();
    ASSERT_TRUE(own.processStart);
    struct Case {
        const char* name;
        std::int32_t pid;
        std::optional<double> processStart;
        bool runs;
    };
    const Case cases[] = {
        {"itself", own.pid, own.processStart, true},
        {"within the tolerance", own.pid, *own.processStart + 0.0009, true},
        {"a number used again", own.pid, *own.processStart - 0.0011, false},
        {"no start time", own.pid, std::nullopt, false},
        {"the first process", 1, ProcessLiveness::startTime(1), false},
        {"nobody", std::numeric_limits<std::int32_t>::max(), own.processStart, false},
    };
    for (const Case& test : cases) {
        RecorderState state = own;
        state.pid = test.pid;
        state.processStart = test.processStart;
        EXPECT_EQ(state.isRunning(), test.runs) << test.name;
    }
}

TEST_F(RecorderLockTest, HasOneHolderAndGoesWithIt)
{
    const QString path = m_sandbox.path(QStringLiteral("new/folder/recorder.lock"));
    EXPECT_FALSE(RecorderLock::isHeld(path));
    auto lock = RecorderLock::acquire(path);
    ASSERT_TRUE(lock);
    EXPECT_TRUE(RecorderLock::isHeld(path));
    EXPECT_FALSE(RecorderLock::acquire(path));

    // What a lock held before it was given another one is free.
    const QString otherPath = m_sandbox.path(QStringLiteral("other.lock"));
    auto other = RecorderLock::acquire(otherPath);
    ASSERT_TRUE(other);
    *lock = RecorderLock(*std::move(other));
    EXPECT_FALSE(RecorderLock::isHeld(path));
    EXPECT_TRUE(RecorderLock::isHeld(otherPath));
    lock.reset();
    EXPECT_FALSE(RecorderLock::isHeld(otherPath));
    EXPECT_TRUE(QFile::exists(otherPath));
}

TEST_F(RecorderLockTest, CountsAsHeldWhereItsFileCannotBeOpened)
{
    test::Sandbox::writeFile(m_sandbox.path(QStringLiteral("file")), "");
    EXPECT_TRUE(RecorderLock::isHeld(m_sandbox.path(QStringLiteral("file/recorder.lock"))));
}

TEST_F(RecorderLockTest, IsWaitedForWhileAReaderLooks)
{
    const QString path = m_sandbox.path(QStringLiteral("recorder.lock"));
    auto reader = RecorderLock::acquire(path);
    EXPECT_FALSE(RecorderLock::acquireWithin(path, 50ms));
    std::jthread looking([&reader] {
        std::this_thread::sleep_for(60ms);
        reader.reset();
    });
    EXPECT_TRUE(RecorderLock::acquireWithin(path, 10s));
}

TEST_F(RecorderStateStoreTest, ReportsATakeOnlyIfFileProcessAndLockAgree)
{
    EXPECT_EQ(RecorderStateStore::running(), std::nullopt);
    RecorderState state = stateOfThisProcess();
    state.stats = CaptureStats{.peak = std::numeric_limits<float>::infinity()};
    ASSERT_TRUE(RecorderStateStore::write(state, VantiroPaths::stateFile()));
    EXPECT_EQ(QDir(VantiroPaths::support()).entryList(QDir::Files), QStringList{QStringLiteral("recorder.json")});

    EXPECT_EQ(RecorderStateStore::running(), std::nullopt) << "nobody holds the lock";
    EXPECT_FALSE(RecorderLock::isHeld(VantiroPaths::lockFile()));

    const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
    const auto running = RecorderStateStore::running();
    ASSERT_TRUE(running);
    EXPECT_EQ(running->pid, ::getpid());

    *state.processStart += 1;
    ASSERT_TRUE(RecorderStateStore::write(state, VantiroPaths::stateFile()));
    EXPECT_EQ(RecorderStateStore::running(), std::nullopt) << "another process has the number";
    EXPECT_TRUE(QFile::exists(VantiroPaths::stateFile()));

    test::Sandbox::writeFile(VantiroPaths::stateFile(), state.toJsonText().chopped(3));
    EXPECT_EQ(RecorderStateStore::running(), std::nullopt) << "half a file";
    RecorderStateStore::clear();
    RecorderStateStore::clear();
    EXPECT_FALSE(QFile::exists(VantiroPaths::stateFile()));
}

}  // namespace vantiro
