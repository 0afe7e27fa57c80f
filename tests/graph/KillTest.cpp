// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/KillTest.h"

#include "core/recorder/RecorderStateStore.h"
#include "tests/support/SmallVolume.h"

#include <QFile>
#include <QStandardPaths>

#include <csignal>
#include <iostream>
#include <random>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    constexpr int sampleRate = 48'000;
    constexpr int roundsBetweenReaders = 5;
    constexpr double mostMissing = 0.7;
    constexpr double mostMissingOnceMended = 0.2;

    double seconds(std::int64_t frames)
    {
        return static_cast<double>(frames) / sampleRate;
    }

}  // namespace

void KillTest::killRecorders(int rounds, std::uint32_t seed)
{
    // A volume without a disk behind it, if one may be had, since the writer waits for a busy disk.
    const auto volume = SmallVolume::mount(m_sandbox.path(u"takes"_s), 256);
    m_patience = volume ? 1 : 3;
    std::mt19937 random(seed);
    std::uniform_real_distribution<> length(0.3, 3.0);
    const auto card = device({.sampleRate = sampleRate});
    ASSERT_NE(card, nullptr);
    std::optional<Killed> before;
    for (int round = 0; round < rounds; ++round) {
        const double moment = length(random);
        SCOPED_TRACE(::testing::Message() << "seed " << seed << ", round " << round << ", after " << moment << " s");
        const QString path = m_sandbox.path(u"takes/%1.%2"_s.arg(round).arg(round % 2 == 0 ? u"caf"_s : u"wav"_s));
        const Killed killed = killOne(*card, path, moment);
        if (before) {
            expectMended(*before);
        }
        before = killed;
        if (round % roundsBetweenReaders == 0) {
            expectOtherReadersOpen(path);
        }
        if (HasFailure()) {
            return;
        }
    }
    const auto tool = record(takePath());
    expectMended(*before);
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait().status, 0);
    expectIdle();
}

KillTest::Killed KillTest::killOne(const VirtualDevice& card, const QString& path, double moment)
{
    const auto tool = record(path);
    EXPECT_TRUE(plays(card, moment, sampleRate));
    const std::int64_t played = card.contentPosition();
    tool->signal(SIGKILL);
    const auto result = tool->wait();
    EXPECT_EQ(result.status, -1) << qPrintable(result.errors);
    EXPECT_FALSE(RecorderStateStore::running());
    const SoundFile file = SoundFile::read(path);
    EXPECT_EQ(file.sampleRate, sampleRate) << "does not open as it was left";
    return {.path = path, .played = played, .frames = file.frames};
}

void KillTest::expectOtherReadersOpen(const QString& path)
{
    const std::pair<QString, QStringList> readers[] = {
        {u"ffprobe"_s, {u"-v"_s, u"error"_s, path}},
        {u"ffmpeg"_s, {u"-v"_s, u"error"_s, u"-i"_s, path, u"-f"_s, u"null"_s, u"-"_s}},
        {u"sox"_s, {path, u"-n"_s, u"stat"_s}},
    };
    for (const auto& [name, words] : readers) {
        const QString program = QStandardPaths::findExecutable(name);
        if (program.isEmpty()) {
            std::cerr << "[ SKIPPED  ] " << qPrintable(name) << " is not installed, so it is not tried.\n";
            continue;
        }
        const auto result = Program(program, words).wait();
        EXPECT_EQ(result.status, 0) << qPrintable(name + u": "_s + result.errors);
        EXPECT_TRUE(name == u"sox"_s || result.errors.isEmpty()) << qPrintable(name + u": "_s + result.errors);
    }
}

void KillTest::expectMended(const Killed& killed) const
{
    const SoundFile file = SoundFile::read(killed.path);
    ASSERT_GT(file.frames, 1) << qPrintable(killed.path);
    const Heard heard = heardIn(file, 0, 0);
    EXPECT_EQ(heardIn(file, 1, 1), heard) << "a channel is shifted";
    const std::int64_t missing = killed.played - heard.end;
    EXPECT_LE(seconds(missing), m_patience * mostMissingOnceMended) << qPrintable(killed.path);
    EXPECT_LE(seconds(missing + file.frames - killed.frames), m_patience * mostMissing) << qPrintable(killed.path);
    EXPECT_GE(file.frames, killed.frames);
    // A take that was killed keeps the room that was reserved behind it.
    EXPECT_TRUE(QFile::remove(killed.path));
}

}  // namespace vantiro::test
