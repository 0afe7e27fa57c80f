// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/sources/SourceRanker.h"

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    SourceObservation device(const QString& transport, std::int64_t channels, std::optional<float> peakDB)
    {
        return {.ref = SourceRef::device(u"uid"_s),
            .name = u"Box"_s,
            .transport = transport,
            .channels = channels,
            .peakDB = peakDB};
    }

    SourceObservation app(bool isKnown, bool isPlaying)
    {
        return {.ref = SourceRef::app(u"uid"_s),
            .name = u"App"_s,
            .channels = 2,
            .isKnownDJApp = isKnown,
            .isPlaying = isPlaying};
    }

    SourceObservation timecode()
    {
        SourceObservation observation = device(u"usb"_s, 2, -6.0F);
        observation.steadyTone = true;
        return observation;
    }

    SourceObservation named(SourceObservation observation, const QString& name)
    {
        observation.name = name;
        return observation;
    }

    QString firstOf(const std::vector<SourceObservation>& observations)
    {
        const auto pick = SourceRanker::automaticPick(SourceRanker::rank(observations, std::nullopt));
        return pick ? pick->observation.name : u"none"_s;
    }

}  // namespace

TEST(SourceRanker, ScoresEachKindOfSourceAndSaysWhy)
{
    const auto device_ = SourceRef::device(u"uid"_s);
    const auto app_ = SourceRef::app(u"uid"_s);
    struct Case {
        SourceObservation observation;
        std::optional<SourceRef> remembered;
        std::int64_t score;
        QStringList reasons;
    };
    const Case cases[] = {
        {device(u"usb"_s, 2, -12.0F), {}, 90, {u"stereo"_s, u"line-level signal, peak -12 dB"_s}},
        {device(u"usb"_s, 2, -24.0F), {}, 90, {u"stereo"_s, u"line-level signal, peak -24 dB"_s}},
        {device(u"usb"_s, 2, -24.1F), {}, 60, {u"stereo"_s, u"weak signal, peak -24 dB"_s}},
        {device(u"usb"_s, 2, -24.5F), {}, 60, {u"stereo"_s, u"weak signal, peak -24 dB"_s}},
        {device(u"usb"_s, 8, -40.0F), {}, 60, {u"stereo"_s, u"weak signal, peak -40 dB"_s}},
        {device(u"usb"_s, 2, -40.1F), {}, 50, {u"stereo"_s}},
        {device(u"usb"_s, 2, {}), {}, 50, {u"stereo"_s}},
        {device(u"usb"_s, 1, -30.0F), {}, 50, {u"weak signal, peak -30 dB"_s}},
        {device(u"virtual"_s, 2, -10.0F), {}, 55, {u"stereo"_s, u"line-level signal, peak -10 dB"_s}},
        {device(u"virtual"_s, 1, -10.0F), {}, 45, {u"line-level signal, peak -10 dB"_s}},
        {device(u"built-in"_s, 2, -10.0F), {}, 15, {u"microphone"_s}},
        {device(u"built-in"_s, 2, -60.0F), {}, 5, {u"microphone"_s}},
        {timecode(), {}, 1, {u"steady tone, looks like DVS timecode"_s}},
        {timecode(), device_, 101, {u"steady tone, looks like DVS timecode"_s, u"your choice for this hardware"_s}},
        {timecode(), app_, 1, {u"steady tone, looks like DVS timecode"_s}},
        {app(true, true), app_, 165, {u"playing on this Mac"_s, u"your choice for this hardware"_s}},
        {app(true, false), device_, 30, {u"open, not playing"_s}},
        {app(false, true), {}, 3, {}},
        {app(false, false), app_, 100, {u"your choice for this hardware"_s}},
    };
    for (const Case& test : cases) {
        const RankedSource expected{test.observation, test.score, test.reasons};
        EXPECT_EQ(SourceRanker::rank({{test.observation}}, test.remembered), std::vector{expected})
            << test.score << ": " << qPrintable(test.reasons.join(u", "_s));
    }
    EXPECT_TRUE(SourceRanker::rank({{app(false, false)}}, std::nullopt).empty());
}

TEST(SourceRanker, PutsTheLikeliestFirstAndEqualOnesByName)
{
    const SourceObservation observations[] = {named(device(u"usb"_s, 2, {}), u"alpha"_s), app(true, true),
        named(device(u"usb"_s, 2, {}), u"Beta"_s), named(timecode(), u"Decks"_s)};
    QStringList names;
    for (const RankedSource& source : SourceRanker::rank(observations, std::nullopt)) {
        names.append(source.observation.name);
    }
    EXPECT_EQ(names, (QStringList{u"App"_s, u"Beta"_s, u"alpha"_s, u"Decks"_s}));
}

TEST(SourceRanker, PicksOnlyWhatCarriesAMix)
{
    const SourceObservation microphone = device(u"built-in"_s, 2, -10.0F);
    EXPECT_EQ(firstOf({}), u"none"_s);
    EXPECT_EQ(firstOf({microphone, timecode(), app(false, true)}), u"none"_s);
    EXPECT_EQ(firstOf({device(u"virtual"_s, 2, -40.1F)}), u"none"_s);
    EXPECT_EQ(firstOf({device(u"virtual"_s, 2, {})}), u"none"_s);
    EXPECT_EQ(firstOf({device(u"virtual"_s, 2, -39.0F)}), u"Box"_s);
    EXPECT_EQ(firstOf({app(true, false), device(u"usb"_s, 2, {})}), u"Box"_s);
    EXPECT_EQ(firstOf({device(u"usb"_s, 2, {}), app(true, true)}), u"App"_s);

    const auto ranked = SourceRanker::rank({{app(true, false), microphone}}, microphone.ref);
    EXPECT_EQ(ranked.front().observation, microphone);
    EXPECT_EQ(SourceRanker::automaticPick(ranked)->observation.name, u"App"_s)
        << "a remembered microphone is passed over";
}

}  // namespace vantiro
