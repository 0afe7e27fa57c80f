// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/ProgressMail.h"
#include "core/copies/CopyMedia.h"
#include "core/copies/CopyWords.h"
#include "core/copies/MusicInbox.h"
#include "core/takes/Takes.h"
#include "tests/model/ModelTest.h"
#include "tests/takes/PcmBytes.h"

#include <QDir>

#include <cerrno>
#include <functional>
#include <thread>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;
    using test::Sandbox;

    /// Encoders that write "{format}, {album}, {title}", and what they were asked for.
    struct Media {
        std::vector<ExportFormat> made;
        std::optional<ExportFormat> failing;
        std::function<void()> onEncode;
        CopyEncoder::Progress progress;
    };

    Media& media()
    {
        static Media inUse;
        return inUse;
    }

    QByteArray textOf(const QString& format, const TakeTags& tags)
    {
        return (format + u", Vantiro, "_s + tags.title).toUtf8();
    }

    class FakeEncoder final : public CopyEncoder {
    public:
        explicit FakeEncoder(Plan plan) : m_plan(std::move(plan)) { }

        Result<void> encode(
            TakeReader&, const QString& file, const Progress& progress, const Cancelled& cancelled) override
        {
            media().made.push_back(m_plan.format);
            media().progress = progress;
            progress(0.25);
            progress(0.5);
            if (media().onEncode) {
                media().onEncode();
            }
            Sandbox::writeFile(file, textOf(rawValue(m_plan.format), *m_plan.tags));
            if (cancelled()) {
                return CopyWords::cancelled();
            }
            return media().failing == m_plan.format ? Result<void>(CopyWords::writeError(ENOSPC)) : Result<void>();
        }

    private:
        Plan m_plan;
    };

    Result<std::unique_ptr<CopyEncoder>> openFake(const CopyEncoder::Plan& plan)
    {
        if (plan.format == ExportFormat::aac && plan.sampleRate > 96'000) {
            return CopyWords::cannotConvert(plan.format);
        }
        return std::make_unique<FakeEncoder>(plan);
    }

    Result<CopyMedia::Facts> inspectFake(const QString& path)
    {
        const QByteArray text = Sandbox::readFile(path);
        return CopyMedia::Facts{.isAAC = text.startsWith("aac"),
            .album = text.contains("Vantiro") ? std::optional(u"Vantiro"_s) : std::nullopt};
    }

    Result<void> remuxFake(const QString&, const TakeTags& tags, const QString& target)
    {
        Sandbox::writeFile(target, textOf(u"aac"_s, tags));
        return {};
    }

    class AfterTakeTest : public test::ModelTest {
    protected:
        AfterTakeTest()
        {
            media() = {};
            CopyMedia::use({.openEncoder = openFake, .inspect = inspectFake, .remux = remuxFake});
            Sandbox::writeFile(
                VantiroPaths::settingsFile(), "{\"takesFolder\": \"" + m_takes.toUtf8() + "\", \"addToMusic\": true}");
            writeTake(48'000);
        }
        void TearDown() override { CopyMedia::use({}); }

        void writeTake(double rate)
        {
            const PcmLayout layout{PcmLayout::Sample::int24, std::endian::little, rate, 2};
            Sandbox::writeFile(m_take, test::cafFile(layout, test::PcmSamples::random(layout, 100).bytes));
        }
        void makeInbox() const { ASSERT_TRUE(QDir().mkpath(m_inbox)); }
        [[nodiscard]] Take take() const { return Takes::describe(m_take).value(); }
        AfterTake& flow() { return m_flows->afterTake(); }

        [[nodiscard]] static QStringList namesIn(const QString& folder)
        {
            return QDir(folder).entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot, QDir::Name);
        }
        [[nodiscard]] static bool isPending(const QString& take)
        {
            return Sandbox::readFile(VantiroPaths::pendingCopiesFile()).contains(take.toUtf8());
        }

        QString m_takes = m_sandbox.path(u"takes"_s);
        QString m_take = m_takes + u"/mix-2026-09-19_21-04-33.caf"_s;
        QString m_copies = m_takes + u"/Copies"_s;
        QString m_aacName = u"mix-2026-09-19_21-04-33.m4a"_s;
        QString m_flacName = u"mix-2026-09-19_21-04-33.flac"_s;
        QString m_inbox = MusicInbox::defaultFolder(m_sandbox.home());
    };

}  // namespace

TEST_F(AfterTakeTest, DoesWhatTheSettingsAskAndSaysOneSentenceAtMost)
{
    struct Case {
        const char* name;
        std::optional<ExportFormat> copy;
        bool toMusic;
        bool hasInbox;
        const char* earlier;  ///< What an earlier file with the AAC copy's name holds.
        std::optional<ExportFormat> failing;
        std::vector<ExportFormat> made;
        QStringList copies;
        const char* inMusic;
        const char16_t* words;
    };
    using enum ExportFormat;
    constexpr auto tagged = "aac, Vantiro, Mix, 19 Sep 2026, 21:04";
    constexpr auto noMusic =
        u"The take is saved, but it did not reach Music. Use Add to Music in the takes list to try again.";
    const std::vector<Case> cases{
        {"nothing wanted", {}, false, true, nullptr, {}, {}, {}, nullptr, u""},
        {"nobody has a library", {}, true, false, nullptr, {}, {}, {}, nullptr, u""},
        {"copy alone", flac, true, false, nullptr, {}, {flac}, {m_flacName}, nullptr, u""},
        {"one for both", aac, true, true, nullptr, {}, {aac}, {m_aacName}, tagged, u""},
        {"one of its own", flac, true, true, nullptr, {}, {flac, aac}, {m_flacName}, tagged, u""},
        {"an earlier one", {}, true, true, "aac, Vantiro, x", {}, {}, {m_aacName}, "aac, Vantiro, x", u""},
        {"without tags", {}, true, true, "aac", {}, {}, {m_aacName}, tagged, u""},
        {"of other audio", {}, true, true, "alac", {}, {aac}, {m_aacName}, tagged, u""},
        {"copy fails", flac, true, true, nullptr, flac, {flac}, {}, nullptr,
            u"The take is saved, but its FLAC, lossless copy did not finish. Export it from the takes list."},
        {"music fails", flac, true, true, nullptr, aac, {flac, aac}, {m_flacName}, nullptr, noMusic},
    };
    for (const Case& one : cases) {
        SCOPED_TRACE(one.name);
        QDir(m_copies).removeRecursively();
        QDir(m_inbox).removeRecursively();
        launch();
        media().made.clear();
        media().failing = one.failing;
        if (one.hasInbox) {
            makeInbox();
        }
        if (one.earlier) {
            Sandbox::writeFile(m_copies + u'/' + m_aacName, one.earlier);
        }
        const auto changes = test::countSignals(*m_model, &AppModel::exportingChanged);
        flow().afterTake(m_take, take().created, one.copy, one.toMusic);
        m_scheduler.settle();
        EXPECT_EQ(*changes > 0, one.copy || (one.toMusic && one.hasInbox)) << "nothing to do must not flash";

        EXPECT_EQ(media().made, one.made);
        EXPECT_EQ(namesIn(m_copies), one.copies);
        EXPECT_EQ(Sandbox::readFile(m_inbox + u'/' + m_aacName), one.inMusic);
        EXPECT_EQ(error(), one.words);
        EXPECT_TRUE(m_model->exporting().empty());
        EXPECT_FALSE(isPending(m_take));
        EXPECT_EQ(QDir(m_takes).entryList({u".*"_s}, QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot),
            QStringList());
    }
}

TEST_F(AfterTakeTest, FollowsAnEndedTakeWithLosslessWhereAACCannotKeepIt)
{
    makeInbox();
    writeTake(192'000);
    launch();
    m_recorder.running = test::takeState(m_take, u"mixer"_s);
    m_flows->takes().pollRecorder();
    m_recorder.running.reset();
    m_flows->takes().pollRecorder();
    m_scheduler.runPosted();
    EXPECT_TRUE(m_model->exporting().contains(m_take));
    m_scheduler.settle();
    EXPECT_EQ(media().made, std::vector{ExportFormat::alac});
    EXPECT_TRUE(Sandbox::readFile(m_inbox + u'/' + m_aacName).startsWith("alac, Vantiro"));
    media().made.clear();
    flow().afterTake(m_take, take().created, ExportFormat::alac, true);
    m_scheduler.settle();
    EXPECT_EQ(media().made, std::vector{ExportFormat::alac}) << "one for both";
    EXPECT_EQ(namesIn(m_inbox).size(), 2);
    // What the user asks for by name is not replaced.
    m_model->setError(std::nullopt);
    flow().exportTake(take(), ExportFormat::aac, m_sandbox.path(u"a.m4a"_s));
    m_scheduler.settle();
    EXPECT_EQ(error(), u"cannot convert to AAC, 256 kbps on this Mac");
}

TEST_F(AfterTakeTest, TellsOfItsProgressWhileItLastsAndRefusesASecondRun)
{
    launch();
    std::vector<std::optional<double>> told;
    QObject::connect(m_model.get(), &AppModel::exportingChanged, m_model.get(), [&] {
        const auto found = m_model->exporting().find(m_take);
        told.push_back(found == m_model->exporting().end() ? std::nullopt : std::optional(found->second));
    });
    media().onEncode = [&] { EXPECT_TRUE(isPending(m_take)); };
    for (int press = 0; press < 2; ++press) {
        flow().afterTake(m_take, take().created, ExportFormat::flac, false);
        flow().exportTake(take(), ExportFormat::flac, m_sandbox.path(u"a.flac"_s));
        flow().addTakeToMusic(take());
    }
    m_scheduler.settle();
    EXPECT_EQ(media().made.size(), 1U);
    ASSERT_GE(told.size(), 3U);
    EXPECT_EQ(told[0], 0.0);
    EXPECT_EQ(told[1], 0.25);
    EXPECT_EQ(told.back(), std::nullopt);
    const std::size_t count = told.size();
    std::this_thread::sleep_for(ProgressMail::shortestPause);
    media().progress(1);
    m_scheduler.settle();
    EXPECT_EQ(told.size(), count) << "after the end";
}

TEST_F(AfterTakeTest, TakesUpWhatAKilledRunLeft)
{
    makeInbox();
    const QString folder = m_takes + u"/.vantiro-export-x"_s;
    Sandbox::writeFile(folder + u"/half"_s, "half");
    Sandbox::writeFile(VantiroPaths::exportsFile(), "{\"records\": [{\"folder\": \"" + folder.toUtf8() + "\"}]}");
    const auto record = [](const QString& path) {
        return "{\"take\": \"" + path.toUtf8() + "\", \"format\": \"flac\", \"toMusic\": true}";
    };
    const QString absent = u"/Volumes/No such disk/a.caf"_s;
    const QString gone = m_takes + u"/gone.caf"_s;
    Sandbox::writeFile(VantiroPaths::pendingCopiesFile(),
        "{\"records\": [" + record(m_take) + ',' + record(absent) + ',' + record(gone) + "]}");
    launch();
    EXPECT_EQ(namesIn(m_copies), QStringList{m_flacName});
    EXPECT_EQ(namesIn(m_inbox), QStringList{m_aacName});
    EXPECT_FALSE(isPending(m_take) || isPending(gone));
    EXPECT_TRUE(isPending(absent)) << "its disk may come back";
    EXPECT_FALSE(QFile::exists(folder));
    EXPECT_EQ(error(), QString());
}

TEST_F(AfterTakeTest, ExportsWhereTheUserWants)
{
    struct Case {
        QString destination;
        std::optional<ExportFormat> failing;
        bool isStopped;
        const char16_t* words;
    };
    launch();
    QString suggested;
    flow().suggestDestination(take(), ExportFormat::flac, [&](const QString& path) { suggested = path; });
    m_scheduler.settle();
    EXPECT_TRUE(QFile::exists(m_copies));
    EXPECT_EQ(suggested, m_copies + u'/' + m_flacName);
    constexpr auto unfinished =
        u"The export did not finish. Check that there is space where you saved it, then try again.";
    for (const Case& one : {
             Case{suggested, {}, false, u""},
             Case{m_sandbox.path(u"b.flac"_s), ExportFormat::flac, false, unfinished},
             Case{m_sandbox.path(u"c.flac"_s), {}, true, u""},
             Case{m_take, {}, false, u"the export would overwrite the take itself. Choose another name or folder."},
         }) {
        m_model->setError(std::nullopt);
        media().failing = one.failing;
        media().onEncode = [&] {
            if (one.isStopped) {
                flow().stopExport(m_take);
            }
        };
        flow().exportTake(take(), ExportFormat::flac, one.destination);
        m_scheduler.settle();
        EXPECT_EQ(error(), one.words);
        EXPECT_TRUE(m_model->exporting().empty());
    }
    EXPECT_EQ(m_revealed, QStringList{suggested});
    EXPECT_EQ(Sandbox::readFile(suggested), "flac, Vantiro, Mix, 19 Sep 2026, 21:04");
}

TEST_F(AfterTakeTest, AsksForTheFolderOfTheMusicLibraryAndGoesOn)
{
    launch();
    int asked = 0;
    flow().setOnInboxMissing([&](const Take& waiting) {
        EXPECT_EQ(waiting.path, m_take);
        ++asked;
    });
    for (int press = 0; press < 2; ++press) {
        flow().addTakeToMusic(take());
    }
    m_scheduler.settle();
    EXPECT_EQ(asked, 1);
    EXPECT_EQ(error(), QString());

    const QString library = m_sandbox.path(u"Library"_s);
    flow().chooseInbox(library, take());
    m_scheduler.settle();
    EXPECT_EQ(error(), errorText(MusicInbox::refusal(library)));
    EXPECT_EQ(m_model->musicInboxChoice(), std::nullopt);

    ASSERT_TRUE(QDir().mkpath(library));
    flow().chooseInbox(library, take());
    m_scheduler.settle();
    EXPECT_EQ(namesIn(library), QStringList{m_aacName});
    EXPECT_EQ(asked, 1);
    m_model->flush();
    launch();
    EXPECT_EQ(m_model->musicInboxChoice(), library);
}

TEST_F(AfterTakeTest, ReadsTheShapeOfATakeOnceAndKeepsThatOfTakesAlone)
{
    m_sandbox.setVariable("VANTIRO_TRACE", "1");
    launch();
    const QString elsewhere = m_sandbox.path(u"elsewhere.caf"_s);
    ASSERT_TRUE(QFile::copy(m_take, elsewhere));
    Take unreadable = take();
    unreadable.path = m_takes + u"/gone.caf"_s;
    for (const Take& asked : {take(), unreadable, Takes::describe(elsewhere).value(), take()}) {
        flow().requestOverview(asked);
    }
    EXPECT_EQ(m_model->readingOverviews().size(), 3U);
    m_scheduler.settle();
    EXPECT_TRUE(m_model->readingOverviews().empty());
    EXPECT_EQ(m_model->overviews().size(), 2U);
    EXPECT_EQ(m_model->overviews().at(m_take).peaks.size(), 100U);
    EXPECT_EQ(namesIn(TakeOverview::cacheFolder()).size(), 1);
    EXPECT_TRUE(trace().contains(u"overview: cannot read gone.caf"_s));

    const auto changes = test::countSignals(*m_model, &AppModel::readingOverviewsChanged);
    flow().requestOverview(take());
    EXPECT_EQ(*changes, 0) << "it is there";
    m_recorder.running = test::takeState(unreadable.path, u"mixer"_s);
    m_flows->takes().pollRecorder();
    flow().requestOverview(unreadable);
    EXPECT_EQ(*changes, 0) << "it still runs";
}

}  // namespace vantiro
