// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/words/Catalogue.h"

#include "core/foundation/ErrorWords.h"
#include "core/recorder/EndingWords.h"
#include "core/sources/Preflight.h"
#include "core/sources/SourceRanker.h"

#include <QCoreApplication>

#include <gtest/gtest.h>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    /// A program that has installed the catalogue.
    class CatalogueTest : public ::testing::Test {
    protected:
        CatalogueTest() { installCatalogue(m_application); }

    private:
        int m_argumentCount = 1;
        char m_name[6] = "words";
        char* m_arguments[2] = {m_name, nullptr};
        QCoreApplication m_application{m_argumentCount, m_arguments};
    };

    PreflightFinding diskFinding(double seconds)
    {
        const std::int64_t bytesPerSecond = Preflight::bytesPerSecond(48000);
        return Preflight::run({.sourceName = u"Mixer"_s,
                                  .sourcePresent = true,
                                  .sampleRate = 48000,
                                  .peakDB = -8.0F,
                                  .freeBytes = static_cast<std::int64_t>(seconds * static_cast<double>(bytesPerSecond)),
                                  .bytesPerSecond = bytesPerSecond})
            .back();
    }

}  // namespace

TEST_F(CatalogueTest, CountsOneAndMany)
{
    constexpr double hour = 3600;
    EXPECT_EQ(diskFinding(0).advice, u"0 minutes of recording fit. Free some space first.");
    EXPECT_EQ(diskFinding(90).advice, u"1 minute of recording fits. Free some space first.");
    EXPECT_EQ(diskFinding(1.4 * hour).title, u"1 hour of recording free");
    EXPECT_EQ(diskFinding(4 * hour).title, u"4 hours of recording free");
    EXPECT_EQ(diskFinding(12'345 * hour).title, u"12,345 hours of recording free");

    RecorderState take;
    take.stats.emplace().discontinuities = 1;
    EXPECT_EQ(EndingWords::sentence(take),
        u"The take has 1 gap, for example where the computer slept. The rest of the file is intact."_s);
    take.stats->discontinuities = 3;
    EXPECT_EQ(EndingWords::sentence(take),
        u"The take has 3 gaps, for example where the computer slept. The rest of the file is intact."_s);
}

TEST_F(CatalogueTest, SpeaksOfThisDesktopAndLeavesOtherTextsAlone)
{
    EXPECT_EQ(ErrorWords::mixcloudUploadFailed(NetworkError{NetworkError::Kind::offline, 0, {}}),
        u"The take did not reach Mixcloud: this computer is offline. The take is still in your takes folder.");
    const SourceObservation playing{
        .ref = SourceRef::app(u"a"_s), .name = u"A"_s, .isKnownDJApp = true, .isPlaying = true};
    EXPECT_EQ(SourceRanker::rank(std::span(&playing, 1), playing.ref).at(0).reasons,
        (QStringList{u"playing on this computer"_s, u"your choice for this hardware"_s}));
    const std::vector<PreflightFinding> silent =
        Preflight::run({.sourceName = u"Deck %1"_s, .sourcePresent = true, .sourceIsApp = true, .sampleRate = 8000});
    EXPECT_EQ(silent.at(1).title, u"No signal yet");
    EXPECT_EQ(silent.at(1).advice,
        u"Play a track in Deck %1. If one is playing, make sure that Deck %1 is not muted in your sound settings, and "
        "that an output is chosen in its own audio settings.");
}

}  // namespace vantiro
