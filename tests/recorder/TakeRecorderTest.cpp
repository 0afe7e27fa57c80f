// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/recorder/TakeRecorder.h"

#include "core/capture/TakeRepair.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>

#include <cerrno>
#include <future>

#include <unistd.h>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

class TakeRecorderTest : public SandboxTest {
protected:
    using Started = Result<std::unique_ptr<TakeRecorder>>;

    Started start() { return TakeRecorder::start(m_request, m_platform, posixTakeStorage()); }

    /// A start on a thread of its own, which waits for audio by now.
    std::future<Started> begin()
    {
        auto starting = std::async(std::launch::async, [this] { return start(); });
        EXPECT_TRUE(
            waitFor([&] { return m_source->isRunning() || starting.wait_for(0s) == std::future_status::ready; }));
        return starting;
    }

    std::unique_ptr<TakeRecorder> record()
    {
        auto starting = begin();
        m_source->deliver(480, 0.5F);
        return starting.get().value();
    }

    /// Fails to start while `event` happens, and leaves nothing behind.
    void expectNoTake(const QString& words, const std::function<void()>& event)
    {
        auto starting = begin();
        event();
        const Started recorder = starting.get();
        ASSERT_FALSE(recorder);
        EXPECT_EQ(errorText(recorder.error()), words);
        EXPECT_EQ(takes(), QStringList());
        expectIdle();
        EXPECT_FALSE(QFile::exists(VantiroPaths::lastTakeFile()));
    }

    void expectIdle()
    {
        EXPECT_FALSE(QFile::exists(VantiroPaths::stateFile()));
        EXPECT_FALSE(RecorderLock::isHeld(VantiroPaths::lockFile()));
        EXPECT_FALSE(m_source->isOpen());
    }

    [[nodiscard]] static QStringList takes() { return QDir(VantiroPaths::takes()).entryList(QDir::Files, QDir::Name); }

    Platform m_platform{.audio = std::make_unique<FakeAudio>(), .power = nullptr};
    FakeAudio& m_audio = static_cast<FakeAudio&>(*m_platform.audio);
    std::shared_ptr<FakeSource> m_source = m_audio.add(u"mixer"_s, u"Mixer"_s, {2});
    QString m_path = VantiroPaths::takes() + u"/mix.caf"_s;
    TakeRecorder::Request m_request{.source = SourceRef::device(u"mixer"_s),
        .channels = {},
        .format = TakeFormat::caf,
        .output = m_path,
        .existing = TakeRecorder::ExistingFile::rename,
        .stopRequested = {},
        .lockLimit = 20ms};
};

TEST_F(TakeRecorderTest, TellsOfATakeFromItsFirstBlockToItsRecord)
{
    // What a recorder that died left behind is no reason not to record.
    Sandbox::writeFile(VantiroPaths::stateFile(), "{\"pid\": 1, ");
    auto starting = begin();
    EXPECT_EQ(starting.wait_for(30ms), std::future_status::timeout);
    EXPECT_FALSE(RecorderStateStore::read(VantiroPaths::stateFile())) << "nobody may be told before there is audio";
    EXPECT_TRUE(RecorderLock::isHeld(VantiroPaths::lockFile()));
    m_source->deliver(480, 0.5F);
    std::unique_ptr<TakeRecorder> recorder = starting.get().value();

    const auto state = RecorderStateStore::running();
    ASSERT_TRUE(state);
    EXPECT_EQ(state->pid, ::getpid());
    EXPECT_EQ(state->path, m_path);
    EXPECT_EQ(state->deviceUID, u"mixer"_s);
    EXPECT_EQ(state->deviceName, u"Mixer"_s);
    EXPECT_EQ(state->channels, (std::vector<std::int64_t>{1, 2}));
    EXPECT_EQ(state->stats->frames, 480);
    EXPECT_TRUE(state->processStart && !state->endedBecause);

    m_source->deliver(480, 0.5F);
    EXPECT_TRUE(waitFor([&] {
        EXPECT_EQ(recorder->tick(), std::nullopt);
        return RecorderStateStore::running()->stats->frames == 960;
    })) << "the state is kept fresh";

    const TakeRecorder::Account account = recorder->finish(TakeEnding::stopped);
    EXPECT_TRUE(account.isWhole());
    EXPECT_EQ(account.state.stats->fileFrames, 960);
    EXPECT_FALSE(QFile::exists(VantiroPaths::stateFile()));
    EXPECT_TRUE(RecorderLock::isHeld(VantiroPaths::lockFile())) << "until the recorder is gone";
    recorder.reset();
    expectIdle();
    const auto last = RecorderStateStore::read(VantiroPaths::lastTakeFile());
    ASSERT_TRUE(last);
    EXPECT_EQ(last->toJson(), account.state.toJson());
    EXPECT_EQ(last->endedBecause, std::nullopt);
    EXPECT_EQ(takes(), QStringList(u"mix.caf"_s));
}

TEST_F(TakeRecorderTest, LeavesNothingOfATakeThatNeverBegan)
{
    m_request.firstBlockLimit = 50ms;
    expectNoTake(u"Mixer sent no audio, so no take was started"_s, [] { });
    m_request.firstBlockLimit = 30s;
    std::atomic<bool> stop{false};
    m_request.stopRequested = [&] { return stop.load(); };
    expectNoTake(u"stopped before the take began"_s, [&] { stop = true; });
    stop = false;
    expectNoTake(u"the sample rate of Mixer changed before the take began"_s, [&] { m_source->setRate(44'100); });
    expectNoTake(u"Mixer was disconnected before the take began"_s, [&] { m_audio.remove(u"mixer"_s); });
}

TEST_F(TakeRecorderTest, SaysWhyItCannotStart)
{
    m_audio.available = false;
    expectNoTake(u"PipeWire is not running, so there is no audio to record. Start it and try again."_s, [] { });
    m_audio.available = true;
    m_source->startStatus = EIO;
    expectNoTake(u"cannot start Mixer: 5"_s, [] { });
    m_request.source = SourceRef::device(u"gone"_s);
    expectNoTake(u"device not connected: gone"_s, [] { });
    const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
    EXPECT_TRUE(errorText(start().error()).startsWith(u"another recorder is just starting or ending"_s));
}

TEST_F(TakeRecorderTest, SeesEveryReasonToEnd)
{
    std::unique_ptr<TakeRecorder> recorder;
    const auto pause = [&] {
        const auto end = std::chrono::steady_clock::now() + 600ms;
        EXPECT_TRUE(waitFor([&] {
            m_source->deliver(48, 0);
            EXPECT_EQ(recorder->tick(), std::nullopt) << "silence is audio";
            return std::chrono::steady_clock::now() > end;
        }));
    };
    for (const auto& [ending, word, event] : std::vector<std::tuple<TakeEnding, QString, std::function<void()>>>{
             {TakeEnding::rateChanged, u"rate-changed"_s, [this] { m_source->setRate(44'100); }},
             {TakeEnding::inputStalled, u"input-stalled"_s, pause},
             {TakeEnding::deviceLost, u"device-lost"_s, [this] { m_audio.remove(u"mixer"_s); }}}) {
        m_request.stallLimit = ending == TakeEnding::inputStalled ? 400ms : 60s;
        recorder = record();
        event();
        std::optional<TakeEnding> reason;
        EXPECT_TRUE(waitFor([&] { return (reason = recorder->tick()).has_value(); }));
        EXPECT_EQ(reason, ending);
        EXPECT_EQ(recorder->finish(ending).ending, ending);
        recorder.reset();
        EXPECT_EQ(RecorderStateStore::read(VantiroPaths::lastTakeFile())->endedBecause, word);
    }
    EXPECT_EQ(takes(), QStringList({u"mix.caf"_s, u"mix_2.caf"_s, u"mix_3.caf"_s})) << "nothing is ever removed";
}

TEST_F(TakeRecorderTest, RefusesASecondRecorderAndAnExistingFile)
{
    auto first = record();
    const Started second = start();
    ASSERT_FALSE(second);
    EXPECT_EQ(errorText(second.error()), u"already recording: %1"_s.arg(m_path));
    EXPECT_EQ(RecorderStateStore::running()->path, m_path);
    first->finish(TakeEnding::stopped);
    first.reset();

    m_request.existing = TakeRecorder::ExistingFile::refuse;
    const QByteArray before = Sandbox::readFile(m_path);
    const Started third = start();
    ASSERT_FALSE(third);
    EXPECT_TRUE(errorText(third.error()).startsWith(m_path + u" is there already"_s));
    EXPECT_EQ(Sandbox::readFile(m_path), before);
    expectIdle();
}

TEST_F(TakeRecorderTest, MendsWhatARecorderThatDiedLeftInTheFolder)
{
    record()->finish(TakeEnding::stopped);
    const QString dead = VantiroPaths::takes() + u"/dead.caf"_s;
    ASSERT_TRUE(QFile::rename(m_path, dead));
    // Audio of a second that the header never told of.
    Sandbox::writeFile(dead, Sandbox::readFile(dead) + QByteArray(6 * 48'000, '\1'));
    record()->finish(TakeEnding::stopped);
    const auto found = repairTake(dead);
    ASSERT_TRUE(found);
    EXPECT_EQ(found->outcome, TakeRepair::Outcome::whole);
    EXPECT_EQ(found->frames, 48'480);
}

}  // namespace vantiro::test
