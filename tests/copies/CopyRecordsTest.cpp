// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/copies/CopyFolder.h"
#include "core/copies/CopyJournal.h"
#include "core/copies/CopyRoom.h"
#include "core/copies/PendingCopies.h"
#include "core/foundation/Json.h"
#include "core/recorder/ProcessLiveness.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/Sandbox.h"

#include <QDir>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>

#include <thread>

#include <unistd.h>

namespace vantiro::test {

namespace {

    using namespace Qt::StringLiterals;

    using CopyRecords = SandboxTest;

    QJsonArray recordsAt(const QString& path)
    {
        return json::object(Sandbox::readFile(path)).value_or(QJsonObject()).value("records"_L1).toArray();
    }

    void writeRecords(const QString& path, const QJsonArray& records)
    {
        Sandbox::writeFile(path, QJsonDocument(QJsonObject{{"records"_L1, records}}).toJson());
    }

    enum class Owner {
        alive,
        gone,
    };

    /// One that is gone had the number of this process.
    QJsonObject owned(QJsonObject record, Owner owner)
    {
        const double start = ProcessLiveness::startTime(::getpid()).value_or(0);
        record.insert("pid"_L1, static_cast<qint64>(::getpid()));
        record.insert("processStart"_L1, owner == Owner::alive ? start : start - 1);
        return record;
    }

}  // namespace

TEST_F(CopyRecords, NameAFolderFromBeforeItIsMadeUntilItIsGone)
{
    const QString journal = VantiroPaths::exportsFile();
    QString path;
    {
        const Result<CopyFolder> folder = CopyFolder::beside(m_sandbox.path(QStringLiteral("Set.flac")));
        ASSERT_TRUE(folder);
        path = folder->path();
        Sandbox::writeFile(path + QStringLiteral("/Set.flac"), "half");
        ASSERT_EQ(recordsAt(journal).size(), 1);
        EXPECT_EQ(recordsAt(journal).first().toObject().value("folder"_L1).toString(), path);
        CopyJournal::sweep();
        EXPECT_TRUE(QFile::exists(path)) << "its process lives";
    }
    EXPECT_FALSE(QFile::exists(path));
    EXPECT_EQ(recordsAt(journal).size(), 0);
    EXPECT_FALSE(CopyFolder::beside(m_sandbox.path(QStringLiteral("missing/Set.flac"))));
    EXPECT_EQ(recordsAt(journal).size(), 0);
}

TEST_F(CopyRecords, LetNothingBeSweptButWhatProcessesLeftThatAreGone)
{
    struct Case {
        const char* name;
        Owner owner;
        bool isSwept;
        bool isForgotten;
    };
    const std::vector<Case> cases{
        {".vantiro-export-gone", Owner::gone, true, true},
        {".vantiro-export-alive", Owner::alive, false, false},
        {"Music", Owner::gone, false, true},
        {".vantiro-export-link", Owner::gone, false, false},
        {".tagging-67c8770b-44f1-410a-ab9a-f9b5446f13ee.m4a", Owner::gone, false, false},
    };
    const std::vector<Case> files{
        {".tagging-67c8770b-44f1-410a-ab9a-f9b5446f13ef.m4a", Owner::gone, true, true},
        {".vantiro-67c8770b-44f1-410a-ab9a-f9b5446f13ee.m4a", Owner::gone, true, true},
        {".vantiro-67c8770b-44f1-410a-ab9a-f9b5446f13ee.part", Owner::alive, false, false},
        {".vantiro-67c8770b-44f1-410a-ab9a-f9b5446f13ef.part", Owner::gone, true, true},
        {".vantiro-67c8770b-44f1-410a-ab9a-f9b5446f13ee.caf", Owner::gone, false, true},
        {".vantiro-mine.m4a", Owner::gone, false, true},
        {"Set.m4a", Owner::gone, false, true},
    };
    const QString elsewhere = m_sandbox.path(QStringLiteral("elsewhere"));
    Sandbox::writeFile(elsewhere + QStringLiteral("/precious"), "audio");
    ASSERT_TRUE(QFile::link(elsewhere, m_sandbox.path(QStringLiteral(".vantiro-export-link"))));
    QJsonArray records{owned({{"folder"_L1, m_sandbox.path(QStringLiteral(".vantiro-export-never"))}}, Owner::gone),
        QStringLiteral("damaged")};
    for (const Case& one : cases) {
        const QString folder = m_sandbox.path(QString::fromLatin1(one.name));
        Sandbox::writeFile(folder + QStringLiteral("/deep/file"), "half");
        records.append(owned({{"folder"_L1, folder}}, one.owner));
    }
    for (const Case& one : files) {
        const QString file = m_sandbox.path(QString::fromLatin1(one.name));
        Sandbox::writeFile(file, "half");
        records.append(owned({{"file"_L1, file}}, one.owner));
    }
    writeRecords(VantiroPaths::exportsFile(), records);
    CopyJournal::sweep();

    qsizetype kept = 0;
    for (const Case& one : files) {
        EXPECT_NE(QFile::exists(m_sandbox.path(QString::fromLatin1(one.name))), one.isSwept) << one.name;
        kept += one.isForgotten ? 0 : 1;
    }
    for (const Case& one : cases) {
        EXPECT_NE(
            QFile::exists(m_sandbox.path(QString::fromLatin1(one.name)) + QStringLiteral("/deep/file")), one.isSwept)
            << one.name;
        kept += one.isForgotten ? 0 : 1;
    }
    EXPECT_EQ(recordsAt(VantiroPaths::exportsFile()).size(), kept);
    EXPECT_EQ(Sandbox::readFile(elsewhere + QStringLiteral("/precious")), "audio");
}

TEST_F(CopyRecords, HandPendingCopiesOfAProcessThatIsGoneToOneOtherOnly)
{
    const QString path = VantiroPaths::pendingCopiesFile();
    const PendingCopy left{QStringLiteral("/m/b.caf"), ExportFormat::aac, true};
    const PendingCopy forMusic{QStringLiteral("/m/c.caf"), std::nullopt, true};
    writeRecords(path,
        {owned({{"take"_L1, "/m/a.caf"_L1}, {"format"_L1, "wav"_L1}, {"toMusic"_L1, false}}, Owner::alive),
            owned({{"take"_L1, left.take}, {"format"_L1, "aac"_L1}, {"toMusic"_L1, true}}, Owner::gone),
            owned({{"take"_L1, forMusic.take}, {"toMusic"_L1, true}}, Owner::gone),
            owned({{"take"_L1, "/m/d.caf"_L1}, {"format"_L1, "mp3"_L1}, {"toMusic"_L1, false}}, Owner::gone)});
    EXPECT_EQ(PendingCopies::takeUp(), (std::vector{left, forMusic}));
    EXPECT_EQ(PendingCopies::takeUp(), std::vector<PendingCopy>());
    EXPECT_EQ(recordsAt(path).size(), 3);
    ASSERT_TRUE(PendingCopies::remove(left.take));
    ASSERT_TRUE(PendingCopies::add(forMusic));
    EXPECT_EQ(recordsAt(path).size(), 2);

    Sandbox::writeFile(path, "{ damaged");
    EXPECT_EQ(PendingCopies::takeUp(), std::vector<PendingCopy>());
}

TEST_F(CopyRecords, KeepWhatSeveralWriteAtOnce)
{
    const auto add = [](const QString& name) {
        for (int index = 0; index < 5; ++index) {
            EXPECT_TRUE(PendingCopies::add({name + QString::number(index), ExportFormat::flac, false}));
        }
    };
    {
        const std::jthread one(add, QStringLiteral("/m/one"));
        const std::jthread other(add, QStringLiteral("/m/other"));
    }
    EXPECT_EQ(recordsAt(VantiroPaths::pendingCopiesFile()).size(), 10);
}

TEST(CopyRoom, IsWhatATakeLeaves)
{
    constexpr std::int64_t gibibyte = std::int64_t{1} << 30;
    constexpr std::int64_t takeRate = 288'000;
    constexpr std::int64_t fourHours = takeRate * 14'400;
    struct Case {
        std::int64_t bytes;
        CopyRoom::Volume volume;
        bool fits;
    };
    for (const Case& one : {
             Case{10, {gibibyte + 10, std::nullopt}, true},
             Case{11, {gibibyte + 10, std::nullopt}, false},
             Case{10, {fourHours + 10, takeRate}, true},
             Case{11, {fourHours + 10, takeRate}, false},
             Case{0, {0, std::nullopt}, false},
             Case{10, {std::nullopt, takeRate}, true},
         }) {
        EXPECT_EQ(CopyRoom::fits(one.bytes, one.volume), one.fits) << one.bytes;
    }
    const TakeReader::Format hour{48'000, 2, 48'000LL * 3600};
    EXPECT_EQ(CopyRoom::bytes(ExportFormat::flac, hour), 288'000LL * 3600);
    EXPECT_EQ(CopyRoom::bytes(ExportFormat::aac, hour), 32'000LL * 3600);
}

}  // namespace vantiro::test
