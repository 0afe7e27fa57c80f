// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/DesktopPower.h"

#include "core/capture/SleepGuard.h"
#include "tests/desktop/DesktopTest.h"

#include <csignal>

#include <linux/capability.h>
#include <sys/prctl.h>
#include <unistd.h>

namespace vantiro::test {

using namespace Qt::StringLiterals;
using namespace std::chrono_literals;

namespace {

    const QString grant = u"grant"_s;
    const QString refuse = u"refuse"_s;
    const QString hang = u"hang"_s;

    QString atLogind(const QString& reason, qint64 pid)
    {
        return u"logind|sleep:handle-lid-switch|Vantiro|%1|block|%2"_s.arg(reason).arg(pid);
    }

    QString atSession(const QString& reason, qint64 pid)
    {
        return u"session|org.vantiro.Vantiro|0|%1|4|%2"_s.arg(reason).arg(pid);
    }

    QString atSystemd(qint64 pid)
    {
        return u"systemd|vantiro-recorder-%1.scope|fail|%1"_s.arg(pid);
    }

}  // namespace

using DesktopPowerTest = DesktopTest;

TEST_F(DesktopPowerTest, AsksBothForALockThatEndsWithItsGuard)
{
    startServices(grant, grant, grant);
    DesktopPower power;
    EXPECT_EQ(SleepGuard::heldByThisProcess(u"sleep"_s, power), QStringList());
    auto guard = SleepGuard::make(u"a »set«"_s, power);
    ASSERT_TRUE(guard);
    EXPECT_EQ(askedOf(u"logind"_s), QStringList(atLogind(u"a »set«"_s, ::getpid())));
    EXPECT_EQ(askedOf(u"session"_s), QStringList(atSession(u"a »set«"_s, ::getpid())));
    EXPECT_EQ(SleepGuard::heldByThisProcess(u"sleep"_s, power), QStringList(u"a »set«"_s));
    EXPECT_EQ(SleepGuard::heldByThisProcess(u"handle-lid-switch"_s, power), QStringList(u"a »set«"_s));
    EXPECT_EQ(SleepGuard::heldByThisProcess(u"idle"_s, power), QStringList());
    EXPECT_EQ(asked().filter(u"released"_s), QStringList());
    guard->release();
    guard->release();
    EXPECT_TRUE(waitForAsked(u"logind released"_s));
    EXPECT_TRUE(waitForAsked(u"session released"_s));
    EXPECT_EQ(SleepGuard::heldByThisProcess(u"sleep"_s, power), QStringList());
}

TEST_F(DesktopPowerTest, EitherLockIsEnoughAndNobodyIsWaitedForLong)
{
    struct Case {
        QString logind;
        QString session;
        bool granted;
    };
    for (const Case& row :
        {Case{refuse, grant, true}, Case{grant, hang, true}, Case{refuse, refuse, false}, Case{hang, hang, false}}) {
        SCOPED_TRACE(qPrintable(row.logind + u", "_s + row.session));
        Sandbox::writeFile(m_sandbox.path(u"asked"_s), {});
        startServices(row.logind, row.session, grant);
        DesktopPower power;
        const auto begun = std::chrono::steady_clock::now();
        EXPECT_EQ(SleepGuard::make(u"set"_s, power).has_value(), row.granted);
        EXPECT_LT(std::chrono::steady_clock::now() - begun, 6s);
        EXPECT_EQ(askedOf(u"logind"_s).size(), 1);
        EXPECT_EQ(askedOf(u"session"_s).size(), 1);
    }
}

TEST_F(DesktopPowerTest, AsksForAScopeWithThisProcessInIt)
{
    startServices(grant, grant, grant);
    EXPECT_TRUE(DesktopPower().moveToOwnScope());
    EXPECT_EQ(askedOf(u"systemd"_s), QStringList(atSystemd(::getpid())));
    Sandbox::writeFile(m_sandbox.path(u"asked"_s), {});
    startServices(grant, grant, refuse);
    EXPECT_FALSE(DesktopPower().moveToOwnScope());
}

TEST_F(DesktopPowerTest, ATakeIsProtectedFromItsBeginningToItsEnd)
{
    startServices(grant, grant, grant);
    const auto tool = recordDeck();
    const QString reason = u"A take of Deck deck is being recorded"_s;
    EXPECT_TRUE(waitForAsked(atSystemd(tool->pid())));
    EXPECT_TRUE(waitForAsked(atLogind(reason, tool->pid())));
    EXPECT_TRUE(waitForAsked(atSession(reason, tool->pid())));
    ASSERT_TRUE(takeGrows(0.6));
    EXPECT_EQ(asked().filter(u"released"_s), QStringList());
    // As a logout does.
    tool->signal(SIGTERM);
    EXPECT_EQ(tool->wait().status, 0);
    EXPECT_TRUE(waitForAsked(u"logind released"_s));
    EXPECT_TRUE(waitForAsked(u"session released"_s));
    const RecorderState take = lastTake();
    EXPECT_FALSE(take.endedBecause);
    expectContinuous(take);
    expectOneStretch(take, {0, 1}, 0.5);
    expectIdle();
}

TEST_F(DesktopPowerTest, ATakeWaitsForNoService)
{
    startServices(hang, hang, hang);
    const auto tool = recordDeck();
    // The first question has no answer yet while the take begins and ends.
    EXPECT_TRUE(waitForAsked(atSystemd(tool->pid())));
    const RecorderState take = finish(*tool);
    EXPECT_EQ(askedOf(u"session"_s), QStringList()) << "the take waited for the services before";
    expectContinuous(take);
    expectIdle();
}

TEST_F(DesktopPowerTest, ATakeGoesOnWithoutAnybodysConsent)
{
    startServices(refuse, refuse, refuse);
    const auto tool = recordDeck();
    EXPECT_TRUE(waitFor([this] { return askedOf(u"session"_s).size() == 1; }));
    ASSERT_TRUE(takeGrows(0.6));
    expectContinuous(finish(*tool));
    expectIdle();
}

TEST_F(DesktopPowerTest, ATakeWaitsForNoBus)
{
    // Programs of an ordinary user have to ask for real-time scheduling on a bus.
    ::prctl(PR_CAPBSET_DROP, CAP_SYS_NICE);
    freezeBuses();
    const auto tool = recordDeck();
    ASSERT_TRUE(takeGrows(0.6));
    tool->signal(SIGINT);
    EXPECT_EQ(tool->wait(5s).status, 0);
    expectContinuous(lastTake());
    expectIdle();
}

}  // namespace vantiro::test
