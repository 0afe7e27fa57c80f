// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/capture/ProcessTap.h"

#include "core/capture/SourceCapture.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/Sandbox.h"

#include <QFileInfo>

#include <cerrno>

namespace vantiro::test {

using namespace Qt::StringLiterals;

class ProcessTapTest : public SandboxTest {
protected:
    using Scope = ProcessTap::Scope;
    using Opened = Result<std::unique_ptr<SourceCapture>>;

    static AudioProcess program(std::int32_t pid, const std::optional<QString>& id, const QString& name, bool playing)
    {
        return {.pid = pid, .bundleID = id, .name = name, .isPlaying = playing};
    }

    /// Devices with so many outputs each.
    void playsTo(const std::vector<std::int64_t>& outputs)
    {
        m_audio.programDevices.clear();
        for (const std::int64_t count : outputs) {
            m_audio.programDevices.push_back({.uid = u"out"_s, .name = u"Out"_s, .outputChannels = count});
        }
    }

    Opened open(const QString& id, std::optional<std::int32_t> pid = {}, const QString& path = {},
        const std::optional<std::vector<std::int64_t>>& channels = {})
    {
        return SourceCapture::open({.source = SourceRef::app(id),
                                       .pid = pid,
                                       .channels = channels,
                                       .filePath = path.isEmpty() ? std::nullopt : std::optional(path)},
            m_audio, posixTakeStorage());
    }

    FakeAudio m_audio;
};

TEST_F(ProcessTapTest, KeepsTheChannelsThatItsScopeSays)
{
    struct Row {
        std::vector<std::int64_t> outputs;
        Scope scope;
        std::int64_t channels;
        bool keeps;
    };
    m_audio.programs = {program(7, u"org.deck"_s, u"Deck"_s, true)};
    for (const Row& row : std::vector<Row>{
             {{}, Scope::mixdown, 2, false},
             {{}, Scope::deviceStream, 2, false},
             {{}, Scope::automatic, 2, false},
             {{2}, Scope::automatic, 2, false},
             {{1}, Scope::automatic, 2, false},
             {{4}, Scope::automatic, 4, true},
             {{2, 8}, Scope::automatic, 2, true},
             {{8, 2}, Scope::automatic, 8, true},
             {{2}, Scope::deviceStream, 2, true},
             {{1}, Scope::deviceStream, 1, true},
             {{8, 2}, Scope::mixdown, 2, false},
         }) {
        SCOPED_TRACE(::testing::PrintToString(row.outputs) + std::to_string(static_cast<int>(row.scope)));
        playsTo(row.outputs);
        const auto tap = ProcessTap::open(m_audio, 7, row.scope);
        ASSERT_TRUE(tap);
        EXPECT_EQ((*tap)->channels(), row.channels);
        EXPECT_EQ((*tap)->keepsChannels(), row.keeps);
        EXPECT_EQ((*tap)->sampleRate(), 48'000);
        EXPECT_EQ((*tap)->process().name, u"Deck"_s);
    }
}

TEST_F(ProcessTapTest, IsADeviceOfItsOwnUntilItIsClosed)
{
    m_audio.programs = {program(7, u"org.deck"_s, u"Deck"_s, true)};
    const auto first = ProcessTap::open(m_audio, u"ORG.Deck"_s).value();
    const auto second = ProcessTap::open(m_audio, u"org.deck"_s).value();
    EXPECT_NE(first->aggregateUID(), second->aggregateUID());
    EXPECT_TRUE(first->aggregateUID().startsWith(ProcessTap::aggregateUIDPrefix));
    EXPECT_EQ(m_audio.device(first->aggregateUID())->inputChannels, 2);
    first->close();
    first->close();
    EXPECT_FALSE(m_audio.device(first->aggregateUID()));
    EXPECT_TRUE(m_audio.device(second->aggregateUID())) << "another tap on the same program goes on";
}

TEST_F(ProcessTapTest, SaysWhyItCannotTap)
{
    m_audio.programs = {program(7, u"org.deck"_s, u"Deck"_s, true)};
    const auto words = [this](std::int32_t pid) {
        const auto tap = ProcessTap::open(m_audio, pid, Scope::automatic);
        return tap ? QString() : errorText(tap.error());
    };
    EXPECT_EQ(words(8), u"no audio process with pid 8"_s);
    EXPECT_EQ(
        errorText(ProcessTap::open(m_audio, u"org.other"_s).error()), u"no audio process with bundle ID org.other"_s);
    m_audio.tapStatus = EPERM;
    EXPECT_EQ(words(7), u"cannot tap Deck: 1"_s);
    m_audio.tapStatus = 0;
    m_audio.tapRate = 0;
    EXPECT_EQ(words(7), u"the tap on Deck reports no format: 19"_s);
    EXPECT_TRUE(m_audio.devicesAndTaps().empty()) << "nothing stays behind";
}

TEST_F(ProcessTapTest, IsMadeOnTheProgramThatTheUserMeans)
{
    m_audio.programs = {program(7, u"org.deck"_s, u"Deck, silent"_s, false),
        program(8, u"org.deck"_s, u"Deck, playing"_s, true), program(4242, std::nullopt, u"By number"_s, false),
        program(9, u"77"_s, u"Named by a number"_s, true), program(77, u"org.shadowed"_s, u"Seventy-seven"_s, true)};
    struct Row {
        QString id;
        std::optional<std::int32_t> pid;
        QString text;  ///< The source's name, or the error.
    };
    for (const Row& row : std::vector<Row>{
             {u"org.deck"_s, {}, u"Deck, playing"_s},
             {u"ORG.DECK"_s, {}, u"Deck, playing"_s},
             {u"org.deck"_s, 7, u"Deck, silent"_s},
             {u"org.deck"_s, 1234, u"Deck, playing"_s},
             {u"4242"_s, {}, u"By number"_s},
             {u"+4242"_s, {}, u"By number"_s},
             {u"77"_s, {}, u"Named by a number"_s},
             {u"12abc"_s, {}, u"12abc is not running"_s},
             {u"-4242"_s, {}, u"-4242 is not running"_s},
             {u"99999999999"_s, {}, u"99999999999 is not running"_s},
             {u"org.dec"_s, {}, u"org.dec is not running"_s},
             {{}, {}, u" is not running"_s},
             {{}, 8, u"Deck, playing"_s},
         }) {
        const auto source = open(row.id, row.pid);
        EXPECT_EQ(source ? (*source)->name() : errorText(source.error()), row.text);
    }
}

TEST_F(ProcessTapTest, EndsWithTheCaptureOnItAndAFailedOneLeavesNothing)
{
    m_audio.programs = {program(7, u"org.deck"_s, u"Deck"_s, true)};
    playsTo({4});
    const QString path = m_sandbox.path(u"take.caf"_s);
    EXPECT_EQ(
        errorText(open(u"org.deck"_s, {}, path, {{5}}).error()), u"Deck has input channels 1 to 4, asked for [5]"_s);
    EXPECT_TRUE(m_audio.devicesAndTaps().empty());
    const QString nowhere = m_sandbox.path(u"missing/take.caf"_s);
    EXPECT_EQ(errorText(open(u"org.deck"_s, {}, nowhere).error()), u"cannot create %1: 2"_s.arg(nowhere));
    EXPECT_TRUE(m_audio.devicesAndTaps().empty());
    EXPECT_FALSE(QFileInfo::exists(path));

    const auto source = open(u"org.deck"_s, {}, path, {{3, 4}}).value();
    EXPECT_EQ(source->capture().channels(), (std::vector<std::int64_t>{3, 4}));
    ASSERT_TRUE(source->capture().start());
    EXPECT_EQ(m_audio.devicesAndTaps().size(), 1U);
    const CaptureStats stats = source->stop();
    EXPECT_EQ(stats.fileFrames, 0);
    EXPECT_TRUE(m_audio.devicesAndTaps().empty());
    EXPECT_EQ(source->stop(), stats);
    // Dropped without a stop.
    static_cast<void>(open(u"org.deck"_s));
    EXPECT_TRUE(m_audio.devicesAndTaps().empty());
}

}  // namespace vantiro::test
