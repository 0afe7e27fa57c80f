// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/MusicInbox.h"
#include "core/recorder/RecorderLock.h"
#include "core/recorder/RecorderStateStore.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/tool/ToolTest.h"

#include <QDir>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>

#include <algorithm>
#include <random>
#include <vector>

#include <unistd.h>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    class ExportToolTest : public ToolTest {
    protected:
        void SetUp() override
        {
            for (const QString& path : {m_take, m_elsewhere}) {
                Sandbox::writeFile(path, takeBytes(8000, '\x20'));
            }
        }

        [[nodiscard]] static QStringList filesIn(const QString& folder)
        {
            return QDir(folder).entryList(QDir::Files | QDir::Dirs | QDir::Hidden | QDir::NoDotAndDotDot);
        }

        [[nodiscard]] static QJsonObject json(const Outcome& outcome)
        {
            return QJsonDocument::fromJson(outcome.output.toUtf8()).object();
        }

        QString m_take = VantiroPaths::takes() + u"/mix-2026-09-05_22-00-00.caf"_s;
        QString m_elsewhere = m_sandbox.path(u"elsewhere/set.wav"_s);
    };

}  // namespace

TEST_F(ExportToolTest, PutsACopyWhereItBelongsOrWhereItIsTold)
{
    const QString copies = VantiroPaths::takes() + u"/Copies/"_s;
    const QString other = m_sandbox.path(u"other"_s);
    QDir().mkpath(other);
    struct Case {
        QStringList words;
        QString path;
    };
    const std::vector<Case> cases{
        {{m_take, u"--format=wav"_s}, copies + u"mix-2026-09-05_22-00-00.wav"_s},
        {{m_elsewhere, u"--format=wav"_s}, m_sandbox.path(u"elsewhere/set export.wav"_s)},
        {{m_take, u"--format=wav"_s, u"--out"_s, other}, other + u"/mix-2026-09-05_22-00-00.wav"_s},
        {{m_take, u"--format=wav"_s, u"--out"_s, other + u"/a.copy"_s}, other + u"/a.copy"_s},
        {{m_take, u"--out"_s, other + u"/a.WAV"_s}, other + u"/a.WAV"_s},
    };
    for (const auto& [words, path] : cases) {
        const auto outcome = run(QStringList{u"export"_s} + words);
        EXPECT_EQ(outcome.output, path + u"\nWAV, 24-bit, 0:00:10, 244 kB\n"_s) << qPrintable(outcome.errors);
        EXPECT_TRUE(QFileInfo(path).isFile());
    }
    EXPECT_EQ(filesIn(copies).size(), 1);
}

TEST_F(ExportToolTest, RefusesInWordsAndTouchesNothing)
{
    const QString there = m_sandbox.path(u"elsewhere/there.wav"_s);
    Sandbox::writeFile(there, "older");
    const QString running = VantiroPaths::takes() + u"/running.caf"_s;
    Sandbox::writeFile(running, takeBytes(8000, '\x20'));
    const auto lock = RecorderLock::acquire(VantiroPaths::lockFile());
    RecorderState state;
    state.pid = ::getpid();
    state.path = running;
    state.startedAt = QDateTime::currentDateTimeUtc();
    ASSERT_TRUE(lock && RecorderStateStore::write(RecorderState::started(state), VantiroPaths::stateFile()));
    const QString missing = m_sandbox.path(u"missing"_s);
    struct Case {
        QStringList words;
        int status;
        QString sentence;
    };
    const std::vector<Case> cases{
        {{m_take}, 2, u"tell what to make: "_s},
        {{m_take, u"--format"_s, u"mp3"_s}, 2, u"--format takes wav, flac, alac or aac"_s},
        {{m_take, u"--out"_s, m_sandbox.path(u"a.m4a"_s)}, 2, u"give --format alac or aac"_s},
        {{m_take, u"--format"_s, u"flac"_s, u"--out"_s, m_sandbox.path(u"a.wav"_s)}, 2, u"but --out ends in .wav"_s},
        {{m_take, u"--out"_s, VantiroPaths::takes()}, 2, u"tell what to make: "_s},
        {{m_take, u"--to-music"_s, u"--force"_s}, 2, u"--out and --force are about a copy"_s},
        {{m_take, u"--format"_s, u"wav"_s, u"--inbox"_s, missing}, 2, u"--inbox is that of --to-music"_s},
        {{missing, u"--format"_s, u"wav"_s}, 1, u"There is no file "_s + missing},
        {{VantiroPaths::takes(), u"--format"_s, u"wav"_s}, 1, u"is a folder, not a take."_s},
        {{running, u"--format"_s, u"wav"_s}, 1, u"running.caf is still being recorded."_s},
        {{m_take, u"--format"_s, u"wav"_s, u"--out"_s, running, u"--force"_s}, 1, u"running.caf is still "_s},
        {{m_take, u"--format"_s, u"wav"_s, u"--out"_s, missing + u'/'}, 1, u"There is no folder "_s + missing},
        {{m_take, u"--format"_s, u"wav"_s, u"--out"_s, there}, 1, u"give --force to replace it"_s},
        {{m_elsewhere, u"--format"_s, u"wav"_s, u"--out"_s, m_elsewhere}, 1, u"overwrite the take itself"_s},
        {{m_take, u"--format"_s, u"aac"_s, u"--to-music"_s}, 1, u"name it with --inbox FOLDER"_s},
        {{m_take, u"--to-music"_s, u"--inbox"_s, missing}, 1, u"There is no folder "_s + missing},
    };
    const QStringList before = filesIn(VantiroPaths::takes()) + filesIn(m_sandbox.path(u"elsewhere"_s));
    for (const auto& [words, status, sentence] : cases) {
        const auto outcome = run(QStringList{u"export"_s} + words);
        EXPECT_EQ(outcome.status, status) << qPrintable(words.join(u' '));
        EXPECT_TRUE(outcome.errors.contains(sentence)) << qPrintable(words.join(u' ') + u": "_s + outcome.errors);
    }
    EXPECT_EQ(filesIn(VantiroPaths::takes()) + filesIn(m_sandbox.path(u"elsewhere"_s)), before);
    EXPECT_EQ(Sandbox::readFile(there), "older");
    EXPECT_EQ(Sandbox::readFile(running), takeBytes(8000, '\x20'));
    EXPECT_EQ(Sandbox::readFile(m_elsewhere), takeBytes(8000, '\x20'));

    const auto forced = run({u"export"_s, m_take, u"--format=wav"_s, u"--out"_s, there, u"--force"_s, u"--json"_s});
    EXPECT_EQ(json(forced),
        (QJsonObject{{u"path"_s, there}, {u"format"_s, u"wav"_s}, {u"bytes"_s, QFileInfo(there).size()},
            {u"seconds"_s, 10}, {u"addedToMusic"_s, false}}))
        << qPrintable(forced.output + forced.errors);
}

TEST_F(ExportToolTest, HandsTaggedCopiesToTheMusicLibrary)
{
    Sandbox::writeFile(VantiroPaths::settingsFile(), R"({"djName": "DJ Test"})");
    const QString library = m_sandbox.path(u"Music"_s);
    const QString inbox = library + u"/Media.localized/"_s + MusicInbox::folderName;
    QDir().mkpath(inbox);
    const QString name = u"mix-2026-09-05_22-00-00.m4a"_s;

    const auto alone = run({u"export"_s, m_take, u"--to-music"_s, u"--inbox"_s, library, u"--json"_s});
    EXPECT_EQ(json(alone),
        (QJsonObject{
            {u"path"_s, {}}, {u"format"_s, {}}, {u"bytes"_s, {}}, {u"seconds"_s, 10}, {u"addedToMusic"_s, true}}))
        << qPrintable(alone.output + alone.errors);
    EXPECT_EQ(filesIn(inbox), QStringList{name});
    EXPECT_EQ(filesIn(VantiroPaths::takes()), QStringList{QFileInfo(m_take).fileName()}) << "nothing else stays";
    const QByteArray handed = Sandbox::readFile(inbox + u'/' + name);
    for (const QByteArray& tag : {QByteArray("Mix, 5 Sep 2026, 22:00"), QByteArray("DJ Test"), QByteArray("\x89PNG")}) {
        EXPECT_TRUE(handed.contains(tag)) << tag.constData();
    }

    const auto both = run({u"export"_s, m_take, u"--format"_s, u"alac"_s, u"--to-music"_s, u"--inbox"_s, inbox});
    EXPECT_EQ(both.status, 0) << qPrintable(both.errors);
    EXPECT_EQ(filesIn(inbox).size(), 2);
    EXPECT_TRUE(QFileInfo(VantiroPaths::takes() + u"/Copies/"_s + name).isFile());
}

TEST_F(ExportToolTest, SweepsAwayWhatAKilledOneLeft)
{
    // Ten minutes of something that takes its time.
    QByteArray noise(10 * 8000 * 3, '\0');
    std::mt19937 random(1);
    std::ranges::generate(noise, [&random] { return static_cast<char>(random() % 64); });
    const QString take = m_sandbox.path(u"long/set.caf"_s);
    Sandbox::writeFile(take, takeBytes(8000, '\0') + noise.repeated(60));
    const QString copy = m_sandbox.path(u"long/set.m4a"_s);
    Sandbox::writeFile(copy, "older");
    const QString folder = m_sandbox.path(u"long"_s);

    QProcess killed;
    killed.start(QStringLiteral(VANTIRO_TOOL), {u"export"_s, take, u"--format"_s, u"aac"_s, u"--force"_s});
    ASSERT_TRUE(waitFor([&] { return filesIn(folder).size() == 3; })) << "no copy is being made";
    killed.kill();
    ASSERT_TRUE(killed.waitForFinished());
    EXPECT_EQ(killed.exitStatus(), QProcess::CrashExit);
    EXPECT_EQ(filesIn(folder).size(), 3);
    EXPECT_EQ(Sandbox::readFile(copy), "older");

    EXPECT_EQ(run({u"export"_s, m_elsewhere, u"--format"_s, u"wav"_s}).status, 0);
    EXPECT_EQ(filesIn(folder), (QStringList{u"set.caf"_s, u"set.m4a"_s}));
}

}  // namespace vantiro::test
