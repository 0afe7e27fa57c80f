// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/foundation/ErrorWords.h"

#include "core/foundation/Decibels.h"
#include "core/foundation/Log.h"
#include "core/foundation/Numbers.h"
#include "core/foundation/Secrets.h"
#include "core/foundation/Trace.h"
#include "tests/support/Sandbox.h"

#include <QDateTime>
#include <QLocale>

#include <limits>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    using TraceTest = test::SandboxTest;

}  // namespace

TEST(Secrets, LoseNameAndValueAndNothingElse)
{
    const std::pair<QString, QString> cases[] = {
        {u"https://a/?access_token=abc&x=1"_s, u"https://a/?[redacted]&x=1"_s},
        {u"ACCESS_TOKEN=abc, client_secret="_s, u"[redacted] [redacted]"_s},
        {u"open \"https://a/?client_secret=s\" <access_token=t>"_s, u"open \"https://a/?[redacted]\" <[redacted]>"_s},
        {u"{\"a\": 1, \"Client_Secret\" :\n \"s=&<'\", \"access_token\":\"\"}"_s,
            u"{\"a\": 1, [redacted], [redacted]}"_s},
        {u"access_token: abc, refresh_token=r"_s, u"access_token: abc, refresh_token=r"_s},
        {u"Näme %1 🎧"_s, u"Näme %1 🎧"_s},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(Secrets::redacted(text), expected);
    }
    const QString broken = QChar(0xD83C) + u" access_token=abc"_s;
    EXPECT_FALSE(Secrets::redacted(broken).contains(u"abc"_s)) << "half a surrogate pair hides no secret";
}

TEST(ErrorWords, HaveACodeForLogsAndAReasonForPeople)
{
    using Kind = NetworkError::Kind;
    struct Case {
        Error error;
        QString code;
        QString reason;
    };
    const Case cases[] = {
        {NetworkError{Kind::offline, 99, {}}, u"URLError 99"_s, u"this Mac is offline"_s},
        {NetworkError{Kind::dropped, 2, {}}, u"URLError 2"_s, u"the connection dropped"_s},
        {NetworkError{Kind::timedOut, 4, {}}, u"URLError 4"_s, u"%2 took too long to answer"_s},
        {NetworkError{Kind::cancelled, 5, {}}, u"URLError 5"_s, u"the connection was canceled"_s},
        {NetworkError{Kind::other, -1, u"x"_s}, u"URLError -1"_s, u"%2 could not be reached"_s},
        {LibraryError{u"no room %1"_s}, u"LibraryError: no room %1"_s, u"no room %1"_s},
        {ExchangeFailure{u"access_token=a said no"_s}, u"exchange: [redacted] said no"_s, u"[redacted] said no"_s},
        {CaptureError{u"gone"_s}, u"CaptureError: gone"_s, u"gone"_s},
        {SystemError{u"errno"_s, 28, u"/x: full"_s}, u"errno 28"_s, u"the copy for %2 could not be made"_s},
    };
    for (const Case& test : cases) {
        EXPECT_EQ(ErrorWords::code(test.error), test.code);
        EXPECT_EQ(ErrorWords::reason(test.error, u"%2"_s), test.reason);
    }
    EXPECT_EQ(ErrorWords::mixcloudUploadFailed(NetworkError{Kind::timedOut, 4, {}}),
        u"The take did not reach Mixcloud: Mixcloud took too long to answer. "
        "The take is still in your takes folder."_s);
}

TEST(ErrorText, AndTheLogCarryNoSecret)
{
    const QString secret = u"x access_token=abc"_s;
    for (const Error& error : {Error(CaptureError{secret}), Error(LibraryError{secret}), Error(ExchangeFailure{secret}),
             Error(NetworkError{.text = secret}), Error(SystemError{{}, 1, secret})}) {
        EXPECT_EQ(errorText(error), u"x [redacted]"_s);
    }
    testing::internal::CaptureStderr();
    logLine(secret);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "x [redacted]\n");
}

TEST(Decibels, HaveOneDecimalAndNoNegativeZero)
{
    const std::pair<float, QString> cases[] = {
        {-0.04F, u"0.0"_s},
        {-0.0F, u"0.0"_s},
        {-0.05F, u"-0.1"_s},
        {-12.34F, u"-12.3"_s},
        {-12.25F, u"-12.3"_s},
        {3.0F, u"3.0"_s},
        {silenceDB, u"-120.0"_s},
    };
    for (const auto& [level, text] : cases) {
        EXPECT_EQ(Decibels::text(level), text) << level;
    }
}

TEST(Numbers, AreGroupedWhateverTheLocale)
{
    const QLocale before;
    for (const QLocale& locale : {QLocale(QLocale::German), QLocale(QLocale::Arabic, QLocale::Egypt), QLocale::c()}) {
        QLocale::setDefault(locale);
        EXPECT_EQ(groupedNumber(999), u"999"_s);
        EXPECT_EQ(groupedNumber(48000), u"48,000"_s);
        EXPECT_EQ(groupedNumber(std::numeric_limits<qint64>::min()), u"-9,223,372,036,854,775,808"_s);
        EXPECT_EQ(Decibels::text(-1.5F), u"-1.5"_s);
    }
    QLocale::setDefault(before);
}

TEST_F(TraceTest, AppendsDatedLinesWithoutSecretsOnlyWhenAskedTo)
{
    const QString file = m_sandbox.path(u"support/trace.log"_s);
    m_sandbox.setVariable("VANTIRO_TRACE", std::nullopt);
    Trace::fromEnvironment(file).line([]() -> QString {
        ADD_FAILURE() << "text is built for a trace that is off";
        return {};
    });
    EXPECT_FALSE(QFile::exists(file));

    m_sandbox.setVariable("VANTIRO_TRACE", "");
    const Trace trace = Trace::fromEnvironment(file);
    trace.line([] { return u"take: started, /music/100%s %n.caf"_s; });
    trace.line([] { return u"link: access_token=abc"_s; });
    const QStringList lines = QString::fromUtf8(test::Sandbox::readFile(file)).split(u'\n');
    ASSERT_EQ(lines.size(), 3);
    EXPECT_EQ(lines[0].section(u' ', 1), u"take: started, /music/100%s %n.caf"_s);
    EXPECT_EQ(lines[1].section(u' ', 1), u"link: [redacted]"_s);
    const QDateTime time = QDateTime::fromString(lines[0].section(u' ', 0, 0), Qt::ISODate);
    EXPECT_LT(std::abs(time.secsTo(QDateTime::currentDateTimeUtc())), 60);
    EXPECT_EQ(QFile::permissions(file) & (QFile::ReadGroup | QFile::ReadOther), QFile::Permissions());
}

}  // namespace vantiro
