// SPDX-License-Identifier: GPL-3.0-or-later
#include "tests/graph/Program.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QDirIterator>
#include <QFileInfo>
#include <QStandardPaths>

#include <optional>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    /// An installation with the prefix /opt/vantiro below a folder of its own, as a packager makes it.
    class InstallTest : public SandboxTest {
    protected:
        void SetUp() override
        {
            if (QFileInfo::exists(manifest)) {
                m_usersManifest = Sandbox::readFile(manifest);
            }
            m_sandbox.setVariable("DESTDIR", m_sandbox.path(u"root"_s).toUtf8());
            run({QStringLiteral(VANTIRO_CMAKE), u"--install"_s, QStringLiteral(VANTIRO_BUILD), u"--prefix"_s, prefix});
        }

        void TearDown() override
        {
            // What was installed from this build by hand can still be taken away.
            QFile::remove(manifest);
            if (m_usersManifest) {
                Sandbox::writeFile(manifest, *m_usersManifest);
            }
        }

        [[nodiscard]] QString installed(const QString& path) const
        {
            return m_sandbox.path(u"root"_s + prefix + u'/' + path);
        }

        [[nodiscard]] QStringList files() const
        {
            QStringList found;
            for (QDirIterator all(installed({}), QDir::Files, QDirIterator::Subdirectories); all.hasNext();) {
                found << all.next();
            }
            return found;
        }

        static void run(const QStringList& words)
        {
            const auto result = Program(words[0], words.mid(1)).wait();
            EXPECT_EQ(result.status, 0) << qPrintable(words.join(u' ')) << '\n'
                                        << qPrintable(result.output) << qPrintable(result.errors);
        }

        /// As run(), with a program that a machine may lack.
        static void judge(const QStringList& words)
        {
            const bool isThere = !QStandardPaths::findExecutable(words[0]).isEmpty();
            EXPECT_TRUE(isThere || !qEnvironmentVariableIsSet("CI")) << qPrintable(words[0]);
            if (isThere) {
                run(words);
            }
        }

        inline static const QString prefix = u"/opt/vantiro"_s;
        inline static const QString manifest = QStringLiteral(VANTIRO_BUILD "/install_manifest.txt");

    private:
        std::optional<QByteArray> m_usersManifest;
    };

    /// A second of silence.
    QByteArray silentWave()
    {
        const QByteArray sound(96'000, '\0');
        const QByteArray header = "52494646 24770100 57415645 666d7420 10000000 01000100 80bb0000 00770100 02001000 "
                                  "64617461 00770100";
        return QByteArray::fromHex(header) + sound;
    }

}  // namespace

TEST_F(InstallTest, WhatIsInstalledIsWhatADesktopLooksForAndWorksWhereItLies)
{
    const QString entry = installed(u"share/applications/org.vantiro.Vantiro.desktop"_s);
    const QByteArray words = Sandbox::readFile(entry);
    EXPECT_TRUE(words.contains("\nExec=\"/opt/vantiro/bin/vantiro-app\" %u\n")) << words.constData();
    EXPECT_TRUE(words.contains("\nExec=\"/opt/vantiro/bin/vantiro\" toggle\n")) << words.constData();
    judge({u"desktop-file-validate"_s, entry});
    judge({u"appstreamcli"_s, u"validate"_s, u"--no-net"_s,
        installed(u"share/metainfo/org.vantiro.Vantiro.metainfo.xml"_s)});
    for (const auto& path : {u"scalable/apps/org.vantiro.Vantiro.svg"_s, u"48x48/apps/org.vantiro.Vantiro.png"_s}) {
        EXPECT_TRUE(QFileInfo::exists(installed(u"share/icons/hicolor/"_s + path))) << qPrintable(path);
    }

    // A picture comes from the module of decoders.
    const QString take = m_sandbox.path(u"mix.wav"_s);
    Sandbox::writeFile(take, silentWave());
    const QString picture = m_sandbox.path(u"shape.png"_s);
    run({installed(u"bin/vantiro"_s), u"shape"_s, take, u"--png"_s, picture});
    EXPECT_TRUE(Sandbox::readFile(picture).startsWith("\x89PNG"));
    const QString takes = m_sandbox.path(u"takes"_s);
    run({installed(u"bin/vantiro-app"_s), u"--write-sample-takes"_s, takes});
    EXPECT_FALSE(QDir(takes).isEmpty());

    const QString foreign = installed(u"share/doc/vantiro/notes"_s);
    Sandbox::writeFile(foreign, "the user's\n");
    run({QStringLiteral(VANTIRO_CMAKE), u"-D"_s, u"manifest="_s + manifest, u"-D"_s, u"prefix="_s + prefix, u"-P"_s,
        QStringLiteral(VANTIRO_UNINSTALL)});
    EXPECT_EQ(files(), QStringList{foreign});
}

}  // namespace vantiro::test
