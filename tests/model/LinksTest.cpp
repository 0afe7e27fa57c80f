// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Links.h"

#include "tests/model/ModelTest.h"

#include <QFile>
#include <QRegularExpression>

#include <tuple>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    class LinksTest : public test::ModelTest {
    protected:
        void SetUp() override
        {
            ModelTest::SetUp();
            m_sandbox.setVariable("VANTIRO_TRACE", "1");
            addInterface(mixer.id, 0.4F);
            launchAndListen();
            m_model->setIsAdvanced(true);
            m_links.emplace(*m_model, *m_flows, [this] { ++m_guides; });
        }

        void open(const QString& url)
        {
            m_links->open(url);
            m_scheduler.settle();
        }

        /// All that a link may change.
        [[nodiscard]] auto world() const
        {
            return std::tuple(m_recorder.requests.size(), m_recorder.stops, m_model->playing().has_value(),
                m_model->showsTakes(), m_model->isAdvanced(), m_model->showsSettings(), m_guides, error());
        }

        std::optional<Links> m_links;
        int m_guides = 0;
    };

    /// Links that are none of ours, with a command for %1 that must not be taken for one.
    const QStringList disguises{u"vantiro:%1"_s, u"vantiro:/%1"_s, u"vantiro:///%1"_s, u"vantiro:\\\\%1"_s,
        u"vantiro://%1\\"_s, u"vantiro://\\%1"_s, u"vantiro:// %1"_s, u" vantiro://%1"_s, u"vantiro://%1 "_s,
        u"vantiro://%1\n"_s, u"vantiro://\t%1"_s, u"vantiro://%1%00"_s, u"vantiro://%1"_s + QChar(0),
        u"vantiro://%1%20"_s, u"vantiro://user@%1"_s, u"vantiro://%1@evil"_s, u"vantiro://%1:80"_s, u"vantiro://%1."_s,
        u"vantiro://%1.evil.example"_s, u"vantiro://[%1]"_s, u"vantiro://evil/%1"_s, u"vantiro://?%1"_s,
        u"vantiro://#%1"_s, u"vantiro://evil?x=vantiro://%1"_s, u"vantir\u043e://%1"_s, u"vantiro2://%1"_s,
        u"http://%1"_s, u"file:vantiro://%1"_s, u"vantiro://\u202e%1"_s, u"vantiro://%1\u200b"_s,
        u"vantiro://%1;stop"_s, u"vantiro://%1&stop"_s, u"vantiro://%1,stop"_s, u"vantiro://%1\u3002"_s,
        u"vantiro\u003a\uff0f\uff0f%1"_s, u"vantiro:\x1a//%1"_s, u"vantiro://--%1"_s, u"vantiro://%1\u0301"_s,
        u"vantiro://%1/"_s + QString(Links::longest, u'a')};

}  // namespace

TEST_F(LinksTest, DoesAsItsWordSaysAndNoMore)
{
    m_model->setAllowsURLControl(true);
    open(u"vantiro://stop"_s);
    EXPECT_EQ(m_recorder.stops, 0) << "nothing runs";
    open(u"vantiro://record/../stop?x=stop#stop"_s);
    open(u"VANTIRO://Record"_s);
    EXPECT_EQ(m_recorder.requests.size(), 1) << "it never stops a take";
    EXPECT_EQ(m_recorder.stops, 0);
    open(u"vantiro://stop/"_s);
    EXPECT_EQ(m_recorder.stops, 1);
    open(u"vantiro://toggle"_s);
    open(u"vantiro://toggle"_s);
    EXPECT_EQ(m_recorder.requests.size(), 2);
    EXPECT_EQ(m_recorder.stops, 2);
    m_model->setError(std::nullopt);

    open(u"vantiro://takes"_s);
    EXPECT_TRUE(m_model->showsTakes());
    open(u"vantiro://deck"_s);
    EXPECT_FALSE(m_model->showsTakes());
    for (const bool advanced : {false, true}) {
        m_model->setShowsTakes(true);
        open(advanced ? u"vantiro://advanced"_s : u"vantiro://simple"_s);
        EXPECT_EQ(m_model->isAdvanced(), advanced);
        EXPECT_FALSE(m_model->showsTakes());
    }
    open(u"vantiro://guide"_s);
    EXPECT_EQ(m_guides, 1);
    const auto before = world();
    open(u"vantiro://play"_s);
    open(u"vantiro://stop-playback"_s);
    EXPECT_EQ(world(), before) << "there is no take to play";
    EXPECT_EQ(error(), QString());
    for (const auto& word : {u"guide"_s, u"takes"_s, u"deck"_s, u"simple"_s, u"advanced"_s, u"play"_s}) {
        EXPECT_EQ(m_links->open(u"vantiro://"_s + word), Links::Outcome::visible) << qPrintable(word);
    }
    for (const auto& word : {u"record"_s, u"stop"_s, u"toggle"_s, u"stop-playback"_s, u"dance"_s}) {
        EXPECT_EQ(m_links->open(u"vantiro://"_s + word), Links::Outcome::quiet) << qPrintable(word);
    }
    EXPECT_EQ(m_links->open(u"https://example.org/takes"_s), Links::Outcome::quiet);
    m_model->setAllowsURLControl(false);
    EXPECT_EQ(m_links->open(u"vantiro://record"_s), Links::Outcome::visible) << "the alert";
}

TEST_F(LinksTest, LinksThatAreNotAllowedOnlySaySo)
{
    const QString refusal = u"A link asked Vantiro to %1. Links are ignored until you allow them in Settings."_s;
    const struct {
        QString url;
        QString act;
    } cases[] = {
        {u"vantiro://toggle"_s, u"toggle"_s},
        {u"vantiro://record?now"_s, u"record"_s},
        {u"vantiro:"_s, u"act"_s},
        {u"vantiro://r\u00f6cord"_s, u"act"_s},
        {u"vantiro://"_s + QString(60, u'x'), QString(40, u'x') + u'…'},
    };
    for (const auto& [url, act] : cases) {
        m_model->setError(std::nullopt);
        open(url);
        EXPECT_EQ(error(), refusal.arg(act)) << qPrintable(url);
    }
    EXPECT_TRUE(trace().contains(u"link: vantiro://toggle, allowed false\n"_s)) << qPrintable(trace());
    m_model->setError(std::nullopt);
    const auto before = world();
    open(u"vantiro://guide"_s);
    EXPECT_EQ(m_guides, 1) << "a page needs nobody's consent";
    EXPECT_EQ(error(), QString());
    --m_guides;
    open(u"https://example.org/record"_s);
    EXPECT_EQ(world(), before);
}

TEST_F(LinksTest, DisguisedLinksDoNothing)
{
    const QRegularExpression plainRefusal(u"^A link asked Vantiro to [a-z0-9._-]{1,40}…?\\. Links are ignored until "
                                          "you allow them in Settings\\.$"_s);
    const auto expectNothing = [&](const QString& url) {
        SCOPED_TRACE(qPrintable(url.left(100)));
        m_model->setAllowsURLControl(true);
        m_model->setError(std::nullopt);
        const auto before = world();
        open(url);
        EXPECT_EQ(world(), before);
        m_model->setAllowsURLControl(false);
        open(url);
        EXPECT_TRUE(error().isEmpty() || plainRefusal.match(error()).hasMatch()) << qPrintable(error());
        m_model->setError(std::nullopt);
        EXPECT_EQ(world(), before);
    };
    const auto expectNothingOfAll = [&](const QStringList& commands) {
        for (const QString& command : commands) {
            for (const QString& disguise : disguises) {
                expectNothing(QString(disguise).replace(u"%1"_s, command));
            }
            const QString percent = QString::asprintf("%%%02x", command.front().unicode());
            expectNothing(u"vantiro://"_s + percent + command.mid(1));
            expectNothing(u"vantiro://"_s + QChar(command.front().unicode() + 0xfee0) + command.mid(1));
        }
    };
    expectNothingOfAll({u"record"_s, u"toggle"_s, u"takes"_s, u"simple"_s, u"guide"_s});
    // The Kelvin sign and the long s, whose small letters are ASCII.
    expectNothing(u"vantiro://ta\u212aes"_s);
    expectNothing(u"vantiro://\u017fimple"_s);
    expectNothing(QString());
    runTake(test::takeState(u"/take.caf"_s, mixer.descriptor()));
    expectNothingOfAll({u"stop"_s, u"toggle"_s});

    const QString lines = trace();
    EXPECT_TRUE(std::ranges::all_of(lines, [](QChar sign) {
        return sign == u'\n' || (sign >= u' ' && sign <= u'~') || sign == u'…';
    })) << "a link writes lines of its own, or signs that nobody sees";
    for (const QString& line : lines.split(u'\n', Qt::SkipEmptyParts)) {
        EXPECT_LT(line.size(), 400);
    }
}

}  // namespace vantiro
