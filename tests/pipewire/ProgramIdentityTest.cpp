// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/pipewire/ProgramIdentity.h"

#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>

namespace vantiro::test {

using namespace Qt::StringLiterals;

namespace {

    constexpr std::int32_t pid = 4242;

    /// What is known of one client, and what comes of it.
    struct Client {
        const char* name;
        QString executable = u"/usr/bin/player"_s;
        QByteArray commandLine = "player";
        QString cgroup = u"session-2.scope"_s;
        GraphProperties client = {};
        GraphProperties node = {};
        QString identifier = {};
        QString shown = {};
        std::int32_t pid = vantiro::test::pid;
        bool isVerified = true;
    };

    GraphProperties throughServer(const QString& claimedPid, const QString& binary)
    {
        return {{u"client.api"_s, u"pipewire-pulse"_s}, {u"pipewire.sec.pid"_s, u"77"_s},
            {u"application.process.id"_s, claimedPid}, {u"application.process.binary"_s, binary},
            {u"application.name"_s, u"Some Player"_s}};
    }

}  // namespace

class ProgramIdentityTest : public SandboxTest {
protected:
    void enter(std::int32_t process, const QString& executable, const QByteArray& commandLine, const QString& cgroup)
    {
        const QString folder = m_sandbox.path(u"proc/%1"_s.arg(process));
        Sandbox::writeFile(folder + u"/cmdline"_s, QByteArray(commandLine).replace(' ', '\0') + '\0');
        Sandbox::writeFile(folder + u"/comm"_s, "short name\n");
        Sandbox::writeFile(folder + u"/cgroup"_s,
            "1:name=systemd:/\n0::/user.slice/user@1000.service/app.slice/" + cgroup.toUtf8() + "\n");
        if (!executable.isEmpty()) {
            EXPECT_TRUE(QFile::link(executable, folder + u"/exe"_s));
        }
    }

    [[nodiscard]] std::optional<ProgramIdentity> identify(const Client& row)
    {
        QDir(m_sandbox.path(u"proc"_s)).removeRecursively();
        enter(pid, row.executable, row.commandLine, row.cgroup);
        enter(77, u"/usr/bin/pipewire-pulse"_s, "pipewire-pulse", u"pipewire-pulse.service"_s);
        GraphProperties client = row.client;
        if (!client.contains(u"pipewire.sec.pid"_s)) {
            client.insert(u"pipewire.sec.pid"_s, QString::number(pid));
        }
        return m_lookup.identify(client, row.node);
    }

    ProgramLookup m_lookup{{.processes = m_sandbox.path(u"proc"_s),
        .applications = {m_sandbox.path(u"mine"_s), m_sandbox.path(u"everybodys"_s)}}};
};

TEST_F(ProgramIdentityTest, FindsTheProgramBehindEveryKindOfClient)
{
    Sandbox::writeFile(m_sandbox.path(u"everybodys/org.mixxx.Mixxx.desktop"_s),
        "[Desktop Action new]\nName=New\n[Desktop Entry]\nName[de]=Mischer\nName=Mixxx\n[Other]\nName=Other\n");
    Sandbox::writeFile(m_sandbox.path(u"everybodys/deck.desktop"_s), "[Desktop Entry]\nName=Everybody's deck\n");
    Sandbox::writeFile(m_sandbox.path(u"mine/deck.desktop"_s), "[Desktop Entry]\nName=My deck\n");
    const GraphProperties named{{u"application.name"_s, u"Some Player"_s}};
    const QString mixxx = u"org.mixxx.Mixxx"_s;
    for (const Client& row : std::vector<Client>{
             {.name = "its own name", .client = named, .identifier = u"player"_s, .shown = u"Some Player"_s},
             {.name = "nothing said", .identifier = u"player"_s, .shown = u"player"_s},
             {.name = "a sandbox",
                 .cgroup = u"app-flatpak-org.other.App-12.scope"_s,
                 .client = {{u"pipewire.access.portal.app_id"_s, mixxx}, {u"application.id"_s, u"org.third.App"_s}},
                 .identifier = mixxx,
                 .shown = u"Mixxx"_s},
             {.name = "a scope with a launcher",
                 .cgroup = u"app-gnome-org.mixxx.Mixxx-5512.scope"_s,
                 .client = named,
                 .identifier = mixxx,
                 .shown = u"Mixxx"_s},
             {.name = "a scope without one",
                 .cgroup = u"app-org.mixxx.Mixxx-1f3a.scope"_s,
                 .identifier = mixxx,
                 .shown = u"Mixxx"_s},
             {.name = "a service",
                 .cgroup = u"app-gnome-org.mixxx.Mixxx@autostart.service"_s,
                 .identifier = mixxx,
                 .shown = u"Mixxx"_s},
             {.name = "a service without a random part",
                 .cgroup = u"app-deck.service"_s,
                 .identifier = u"deck"_s,
                 .shown = u"My deck"_s},
             {.name = "escapes",
                 .cgroup = u"app-gnome-cockos\\x2dreaper-12.scope"_s,
                 .client = named,
                 .identifier = u"cockos-reaper"_s,
                 .shown = u"Some Player"_s},
             {.name = "escapes of several bytes, and what only looks like one",
                 .cgroup = u"app-gnome-M\\xc3\\xbcller\\x5cx2d-12.scope"_s,
                 .identifier = u"Müller\\x2d"_s,
                 .shown = u"player"_s},
             {.name = "a unit of another kind",
                 .cgroup = u"vte-spawn-12.scope"_s,
                 .identifier = u"player"_s,
                 .shown = u"player"_s},
             {.name = "an id of reverse DNS",
                 .client = {{u"application.id"_s, u"org.third-party.App_2"_s}},
                 .identifier = u"org.third-party.App_2"_s,
                 .shown = u"player"_s},
             {.name = "an id that an entry has",
                 .client = {{u"application.id"_s, u"deck"_s}},
                 .identifier = u"deck"_s,
                 .shown = u"My deck"_s},
             {.name = "an id that is none",
                 .client = {{u"application.id"_s, u"audio player"_s}},
                 .identifier = u"player"_s,
                 .shown = u"player"_s},
             {.name = "an id that is a path",
                 .client = {{u"application.id"_s, u"../mine/deck"_s}},
                 .identifier = u"player"_s,
                 .shown = u"player"_s},
             {.name = "an id that the node alone has",
                 .node = {{u"application.id"_s, mixxx}},
                 .identifier = mixxx,
                 .shown = u"Mixxx"_s},
             {.name = "a script",
                 .executable = u"/usr/bin/python3.11"_s,
                 .commandLine = "python3 -u /opt/dj/spin.py --loud",
                 .identifier = u"spin.py"_s,
                 .shown = u"spin.py"_s},
             {.name = "under Wine",
                 .executable = u"/opt/wine/bin/wine64-preloader"_s,
                 .commandLine = "C:\\Programs\\RekordBox.EXE /x",
                 .identifier = u"RekordBox"_s,
                 .shown = u"RekordBox"_s},
             {.name = "updated while it runs",
                 .executable = u"/usr/bin/player (deleted)"_s,
                 .identifier = u"player"_s,
                 .shown = u"player"_s},
             {.name = "of another user", .executable = {}, .identifier = u"short name"_s, .shown = u"short name"_s},
             {.name = "ALSA",
                 .client = {{u"application.name"_s, u"PipeWire ALSA [xwax]"_s}},
                 .identifier = u"player"_s,
                 .shown = u"xwax"_s},
             {.name = "ALSA by way of the server",
                 .client = {{u"application.name"_s, u"ALSA plug-in [xwax]"_s}},
                 .identifier = u"player"_s,
                 .shown = u"xwax"_s},
             {.name = "the server vouches for a true pid",
                 .client = throughServer(u"4242"_s, u"player"_s),
                 .identifier = u"player"_s,
                 .shown = u"Some Player"_s},
             {.name = "a pid of somebody else",
                 .cgroup = u"app-gnome-org.mixxx.Mixxx-5512.scope"_s,
                 .client = throughServer(u"4242"_s, u"faker"_s),
                 .identifier = u"faker"_s,
                 .shown = u"Some Player"_s,
                 .isVerified = false},
             {.name = "a pid of nobody",
                 .client = throughServer(u"999"_s, u"player"_s),
                 .identifier = u"player"_s,
                 .shown = u"Some Player"_s,
                 .pid = 999,
                 .isVerified = false},
         }) {
        SCOPED_TRACE(row.name);
        const auto program = identify(row);
        ASSERT_TRUE(program);
        EXPECT_EQ(program->identifier, row.identifier) << qPrintable(program->identifier);
        EXPECT_EQ(program->name, row.shown) << qPrintable(program->name);
        EXPECT_EQ(program->pid, row.pid);
        EXPECT_EQ(program->pidIsVerified, row.isVerified);
    }
}

TEST_F(ProgramIdentityTest, KnowsNobodyWithoutAPidAndShowsNoStrangersControls)
{
    EXPECT_FALSE(identify({.name = "", .client = throughServer(u"not a number"_s, u"player"_s)}));
    EXPECT_FALSE(identify({.name = "", .client = throughServer(u"-4"_s, u"player"_s)}));
    const auto program =
        identify({.name = "", .client = {{u"application.name"_s, u"\u202eevil\n\a"_s + QString(500, u'x')}}});
    ASSERT_TRUE(program);
    EXPECT_TRUE(program->name.startsWith(u"evilxx"_s) || program->name.startsWith(u"evil xx"_s))
        << qPrintable(program->name);
    EXPECT_LE(program->name.size(), 200);
}

}  // namespace vantiro::test
