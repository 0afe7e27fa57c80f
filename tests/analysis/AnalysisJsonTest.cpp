// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/analysis/TakeAnalysis.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QDir>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>

#include <limits>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    using AnalysisCacheTest = test::SandboxTest;

    const QByteArray analysisText = R"({"channels":2,"clippedSamples":3,"clips":[{"duration":0.5,"start":1.5}],)"
                                    R"("loudness":-14.25,"moments":[{"clippedSeconds":0.5,"duration":0.5,)"
                                    R"("kind":"clip","levelAfterDB":-12.5,"levelBeforeDB":-11.5,"levelDuringDB":-3,)"
                                    R"("peakDB":0,"start":1.5},{"clippedSeconds":0,"duration":4,"kind":"silence",)"
                                    R"("levelDuringDB":-120,"peakDB":-90,"start":0}],"peakDB":[-6,0],)"
                                    R"("rmsDB":[-12,-12.5],"sampleRate":48000,"seconds":1.75,)"
                                    R"("silences":[{"duration":4,"start":0}]})";
    const QByteArray overviewText = R"({"clippedSamples":3,"clips":[0,2],"peaks":[1,0.5,0.25]})";

    TakeAnalysis exampleAnalysis()
    {
        return {
            .seconds = 1.75,
            .sampleRate = 48'000,
            .channels = 2,
            .rmsDB = {-12, -12.5},
            .peakDB = {-6, 0},
            .clips = {{1.5, 0.5}},
            .clippedSamples = 3,
            .silences = {{0, 4}},
            .loudness = -14.25,
            .moments = {{TakeAnalysis::Moment::Kind::clip, 1.5, 0.5, -11.5F, -3, -12.5F, 0, 0.5},
                {.kind = TakeAnalysis::Moment::Kind::silence, .duration = 4, .levelDuringDB = -120, .peakDB = -90}},
        };
    }

    QByteArray without(const QByteArray& text, const QString& key)
    {
        QJsonObject object = QJsonDocument::fromJson(text).object();
        object.remove(key);
        return QJsonDocument(object).toJson();
    }

    template <class Record>
    void expectRequiredKeys(const QByteArray& text, const QStringList& optional)
    {
        for (const QString& key : QJsonDocument::fromJson(text).object().keys()) {
            EXPECT_EQ(Record::fromJsonText(without(text, key)).has_value(), optional.contains(key)) << qPrintable(key);
        }
    }

}  // namespace

TEST(AnalysisJsonTest, HasTheFieldsAsKeysAndReadsOnlyWhatIsWhole)
{
    EXPECT_EQ(exampleAnalysis().toJsonText(), analysisText);
    EXPECT_EQ(TakeAnalysis::fromJsonText(analysisText), exampleAnalysis());
    expectRequiredKeys<TakeAnalysis>(analysisText, {u"loudness"_s});

    const TakeOverview overview{.peaks = {1, 0.5, 0.25}, .clips = {0, 2}, .clippedSamples = 3};
    EXPECT_EQ(overview.toJsonText(), overviewText);
    EXPECT_EQ(TakeOverview::fromJsonText(overviewText), overview);
    expectRequiredKeys<TakeOverview>(overviewText, {});

    for (const auto& [part, broken] : {std::pair("\"clip\"", "\"click\""), {"\"start\":1.5}]", "\"begin\":1.5}]"},
             {"\"peakDB\":0", "\"peakDB\":null"}, {"[-6,0]", "[-6,\"0\"]"}, {"[-6,0]", "-6"}}) {
        EXPECT_FALSE(TakeAnalysis::fromJsonText(QByteArray(analysisText).replace(part, broken))) << broken;
    }
}

TEST(AnalysisJsonTest, StaysReadableWithFiguresThatAreNotFinite)
{
    TakeAnalysis analysis = exampleAnalysis();
    analysis.rmsDB[0] = std::numeric_limits<float>::infinity();
    analysis.moments[0].levelBeforeDB = std::numeric_limits<float>::quiet_NaN();
    analysis.loudness = std::numeric_limits<double>::infinity();
    EXPECT_TRUE(TakeAnalysis::fromJsonText(analysis.toJsonText()));
}

TEST(AnalysisJsonTest, TheFiguresOfAnHourAreZeroWithoutLength)
{
    TakeAnalysis analysis = exampleAnalysis();
    analysis.seconds = 1800;
    EXPECT_EQ(analysis.clipsPerHour(), 2);
    EXPECT_EQ(analysis.deadAirSeconds(), 4);
    analysis.seconds = 0;
    EXPECT_EQ(analysis.clipsPerHour(), 0);
}

TEST_F(AnalysisCacheTest, OutlivesTheTakeAndIsReadOnlyWhileTheSizeIsTheSame)
{
    const QString support = m_sandbox.home() + u"/.local/share/Vantiro"_s;
    Take take{.path = u"/gone/mix.1.caf"_s, .created = {}, .bytes = 4711};
    EXPECT_FALSE(TakeAnalysis::load(take, {})) << "neither a cache nor a take";
    EXPECT_FALSE(TakeOverview::load(take));
    EXPECT_FALSE(QFile::exists(support)) << "a failure is not kept";

    test::Sandbox::writeFile(support + u"/Analyses/mix.1-4711-v1.json"_s, analysisText);
    test::Sandbox::writeFile(support + u"/Overviews/mix.1-4711.json"_s, overviewText);
    EXPECT_EQ(TakeAnalysis::load(take, {}), exampleAnalysis());
    EXPECT_TRUE(TakeOverview::load(take));
    take.bytes = 4712;
    EXPECT_FALSE(TakeAnalysis::load(take, {}));
    EXPECT_FALSE(TakeOverview::load(take));
}

TEST_F(AnalysisCacheTest, IsMadeAnewOnceItIsBrokenAndIsNoCondition)
{
    const PcmLayout layout{.sampleRate = 8000, .channels = 1};
    const Take take{.path = m_sandbox.path(u"mix.caf"_s), .created = {}, .bytes = 1};
    test::Sandbox::writeFile(take.path, test::cafFile(layout, test::PcmSamples::random(layout, 12'000).bytes));
    const QString file = TakeAnalysis::cacheURL(take, TakeAnalysis::cacheFolder());
    test::Sandbox::writeFile(file, "{}");
    test::Sandbox::writeFile(TakeOverview::cacheURL(take, TakeOverview::cacheFolder()), "{}");
    const auto analysis = TakeAnalysis::load(take, {});
    ASSERT_TRUE(analysis);
    EXPECT_EQ(TakeAnalysis::fromJsonText(test::Sandbox::readFile(file)), analysis);
    const auto overview = TakeOverview::load(take);
    EXPECT_EQ(overview, TakeOverview::compute(take.path));

    for (const QString& folder : {TakeAnalysis::cacheFolder(), TakeOverview::cacheFolder()}) {
        ASSERT_TRUE(QDir(folder).removeRecursively());
        test::Sandbox::writeFile(folder, "a file where the folder should be");
    }
    EXPECT_EQ(TakeAnalysis::load(take, {}), analysis);
    EXPECT_EQ(TakeOverview::load(take), overview);
}

}  // namespace vantiro
