// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/desktop/DesktopTest.h"

#include <QFileInfo>
#include <QStandardPaths>

#include <csignal>

namespace vantiro::test {

using namespace Qt::StringLiterals;

namespace {

    // Without standard services, so that nothing of the machine is started by surprise.
    constexpr auto configuration = R"(<!DOCTYPE busconfig PUBLIC "-//freedesktop//DTD D-Bus Bus Configuration 1.0//EN"
 "http://www.freedesktop.org/standards/dbus/1.0/busconfig.dtd">
<busconfig>
  <type>session</type>
  <listen>unix:path=%1</listen>
  <auth>EXTERNAL</auth>
  <policy context="default">
    <allow send_destination="*" eavesdrop="true"/>
    <allow eavesdrop="true"/>
    <allow own="*"/>
  </policy>
</busconfig>
)";

}  // namespace

void DesktopTest::SetUp()
{
    const bool isPossible = !QStandardPaths::findExecutable(u"dbus-daemon"_s).isEmpty()
        && Program(u"/usr/bin/python3"_s, {u"-c"_s, u"import dbus, gi"_s}).wait().status == 0;
    if (!isPossible && !qEnvironmentVariableIsSet("CI")) {
        GTEST_SKIP() << "No message bus, or no Python bindings for it, so nothing of the desktop is tested here.";
    }
    TapTest::SetUp();
    for (const auto& [bus, variable] :
        {std::pair{u"system"_s, "DBUS_SYSTEM_BUS_ADDRESS"}, {u"session"_s, "DBUS_SESSION_BUS_ADDRESS"}}) {
        const QString socket = m_sandbox.path(bus + u".socket"_s);
        const QString file = m_sandbox.path(bus + u".conf"_s);
        Sandbox::writeFile(file, QString::fromLatin1(configuration).arg(socket).toUtf8());
        m_buses[bus] =
            std::make_unique<Program>(u"dbus-daemon"_s, QStringList{u"--nofork"_s, u"--config-file="_s + file});
        ASSERT_TRUE(waitFor([&] { return QFileInfo::exists(socket); }));
        m_sandbox.setVariable(variable, "unix:path=" + socket.toUtf8());
    }
}

void DesktopTest::startServices(const QString& logind, const QString& session, const QString& systemd)
{
    m_services.reset();
    m_services = std::make_unique<Program>(u"/usr/bin/python3"_s,
        QStringList{QStringLiteral(VANTIRO_MADE_SERVICES), m_sandbox.path(u"asked"_s), logind, session, systemd});
    EXPECT_TRUE(waitFor([&] { return asked().contains(u"ready"_s) || !m_services->isRunning(); }));
    if (!m_services->isRunning()) {
        ADD_FAILURE() << qPrintable(m_services->wait().errors);
    }
}

QStringList DesktopTest::asked() const
{
    return QString::fromUtf8(Sandbox::readFile(m_sandbox.path(u"asked"_s))).split(u'\n', Qt::SkipEmptyParts);
}

QStringList DesktopTest::askedOf(const QString& service) const
{
    return asked().filter(service + u'|');
}

bool DesktopTest::waitForAsked(const QString& line) const
{
    return waitFor([&] { return asked().contains(line); });
}

void DesktopTest::freezeBuses()
{
    for (const auto& [name, bus] : m_buses) {
        bus->signal(SIGSTOP);
    }
}

std::unique_ptr<Program> DesktopTest::recordDeck()
{
    m_deck = program(u"deck"_s);
    link(u"deck"_s, u"speakers"_s);
    return recordApp(takePath());
}

}  // namespace vantiro::test
