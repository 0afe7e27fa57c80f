// SPDX-License-Identifier: GPL-3.0-or-later
#include "core/takes/Takes.h"

#include "core/takes/PcmFile.h"
#include "core/takes/SampleTakes.h"
#include "core/takes/TakeReader.h"
#include "tests/support/Sandbox.h"
#include "tests/takes/PcmBytes.h"

#include <QCryptographicHash>
#include <QDir>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <set>

#include <fcntl.h>
#include <sys/stat.h>

namespace vantiro::test {

namespace {

    const PcmLayout ordinary{.sample = PcmLayout::Sample::int16, .sampleRate = 8000, .channels = 2};

    QDateTime utc(int year, int month, int day, int hour, int minute, int second)
    {
        return {QDate(year, month, day), QTime(hour, minute, second), Qt::UTC};
    }

    void setModified(const QString& path, const QDateTime& moment)
    {
        const std::array<struct timespec, 2> times{
            timespec{0, UTIME_OMIT}, timespec{static_cast<time_t>(moment.toSecsSinceEpoch()), 0}};
        ASSERT_EQ(::utimensat(AT_FDCWD, QFile::encodeName(path).constData(), times.data(), 0), 0);
    }

    class TakesFolderTest : public SandboxTest {
    protected:
        TakesFolderTest() { m_sandbox.setVariable("TZ", QByteArray("Europe/Berlin")); }

        /// A file of four seconds that ended at this moment.
        QString take(const QString& name, const QDateTime& end = utc(2026, 1, 2, 3, 4, 5))
        {
            QString path = m_sandbox.path(QStringLiteral("takes/") + name);
            const QByteArray audio = PcmSamples::random(ordinary, 32'000).bytes;
            Sandbox::writeFile(path,
                name.endsWith(QStringLiteral("wav"), Qt::CaseInsensitive) ? wavFile(ordinary, audio)
                                                                          : cafFile(ordinary, audio));
            setModified(path, end);
            return path;
        }

        [[nodiscard]] QString folder() const { return m_sandbox.path(QStringLiteral("takes")); }

        [[nodiscard]] QStringList names(const std::optional<QString>& excluding = std::nullopt) const
        {
            QStringList result;
            for (const Take& each : Takes::list(folder(), excluding)) {
                result.append(each.fileName());
            }
            return result;
        }
    };

}  // namespace

TEST_F(TakesFolderTest, HoldsAudioOfTheTwoKindsInItselfNewestFirst)
{
    EXPECT_TRUE(names().isEmpty());
    take(QStringLiteral("old.caf"), utc(2020, 1, 1, 0, 0, 0));
    take(QStringLiteral("LOUD.WAV"), utc(2024, 1, 1, 0, 0, 0));
    take(QStringLiteral(".hidden.Caf"), utc(2022, 1, 1, 0, 0, 0));
    take(QStringLiteral("same-b.caf"));
    take(QStringLiteral("same-a.caf"));
    take(QStringLiteral("copy.m4a"));
    take(QStringLiteral("Copies/inner.caf"));
    ASSERT_TRUE(QDir().mkpath(folder() + QStringLiteral("/folder.caf")));
    Sandbox::writeFile(folder() + QStringLiteral("/text.wav"), "no audio at all, though the name says so");
    const QStringList all{QStringLiteral("same-a.caf"), QStringLiteral("same-b.caf"), QStringLiteral("LOUD.WAV"),
        QStringLiteral(".hidden.Caf"), QStringLiteral("old.caf")};
    EXPECT_EQ(names(), all);

    ASSERT_TRUE(QFile::link(folder(), m_sandbox.path(QStringLiteral("link"))));
    for (const char* running : {"takes/old.caf", "takes/Copies/../old.caf", "link/old.caf"}) {
        EXPECT_EQ(names(m_sandbox.path(QString::fromLatin1(running))), all.first(4)) << running;
    }
    EXPECT_EQ(names(m_sandbox.path(QStringLiteral("takes/none.caf"))), all);
}

TEST_F(TakesFolderTest, ListsALargeFolderWholeAndInOrder)
{
    const QByteArray bytes = cafFile(ordinary, PcmSamples::random(ordinary, 1).bytes);
    QStringList newestFirst;
    for (int age = 0; age < 120; ++age) {
        // Neighbours by name are far apart in time.
        newestFirst << QStringLiteral("%1.caf").arg(age * 37 % 120, 3, 10, QLatin1Char('0'));
        const QString path = folder() + u'/' + newestFirst.back();
        Sandbox::writeFile(path, bytes);
        setModified(path, utc(2026, 1, 1, 0, 0, 0).addDays(-age));
    }
    EXPECT_EQ(names(), newestFirst);
}

TEST_F(TakesFolderTest, KnowsTakesByTheirHeaders)
{
    const QString path = take(QStringLiteral("a set.of mine.caf"));
    const auto found = Takes::describe(folder() + QStringLiteral("/Copies/../a set.of mine.caf"));
    ASSERT_TRUE(found);
    EXPECT_EQ(*found, (Take{path, utc(2026, 1, 2, 3, 4, 1), QFileInfo(path).size(), 4, 8000, 2}));
    EXPECT_EQ(found->name(), QStringLiteral("a set.of mine"));
    EXPECT_FALSE(Takes::describe(folder()));
    EXPECT_FALSE(Takes::describe(path + u'x'));
}

TEST_F(TakesFolderTest, TellsWhenTakesBeganByNameThenEndThenBirth)
{
    const QDateTime end = utc(2030, 6, 1, 12, 0, 0);
    const QDateTime byEnd = end.addSecs(-4);
    struct Case {
        const char* name;
        QDateTime created;
    };
    for (const Case& each : std::vector<Case>{
             {"mix-2026-09-25_22-10-04.caf", utc(2026, 9, 25, 20, 10, 4)},
             {"mix-2026-01-25_22-10-04_2.wav", utc(2026, 1, 25, 21, 10, 4)},
             {"mix-2026-01-25_22-10-04 opening.caf", utc(2026, 1, 25, 21, 10, 4)},
             {"mix-2026-13-25_22-10-04.caf", byEnd},
             {"mix-2026-01-25_24-10-04.caf", byEnd},
             {"mix-2026-01-25_22-10-045.caf", byEnd},
             {"mix-2026-01-25_22-10.caf", byEnd},
             {"mix_2026-01-25_22-10-04.caf", byEnd},
             {"opening.caf", byEnd},
         }) {
        const auto found = Takes::describe(take(QString::fromLatin1(each.name), end));
        ASSERT_TRUE(found);
        EXPECT_EQ(found->created, each.created) << each.name;
        EXPECT_EQ(found->created.timeSpec(), Qt::UTC);
    }
    // No time, and a time before which there was no room for the audio.
    for (const int seconds : {0, 3}) {
        const auto born = Takes::describe(take(QStringLiteral("x.caf"), QDateTime::fromSecsSinceEpoch(seconds)));
        ASSERT_TRUE(born);
        const bool isUnknown = born->created.date().year() == 1;
        EXPECT_TRUE(isUnknown || std::abs(born->created.secsTo(QDateTime::currentDateTimeUtc())) < 3600);
    }
}

TEST_F(TakesFolderTest, GetsSamplesThatAreTheSameEachTime)
{
    const QTimeZone zone("America/New_York");
    const std::array plans{SampleTakes::standard()[1], SampleTakes::Plan{{QDate(2026, 1, 2), QTime(3, 4, 5)}, 1, 1, 5},
        SampleTakes::Plan{{QDate(2026, 1, 3), QTime(0, 0)}, 0, 2, 5}};
    const auto paths = SampleTakes::write(plans, folder(), zone);
    ASSERT_TRUE(paths);
    EXPECT_EQ(paths->front(), folder() + QStringLiteral("/mix-2026-09-23_20-35-41.caf"));
    const QByteArray first = Sandbox::readFile(paths->front());
    ASSERT_TRUE(SampleTakes::write(plans, folder(), zone));
    EXPECT_EQ(Sandbox::readFile(paths->front()), first);
    EXPECT_EQ(QFileInfo(paths->front()).lastModified(), utc(2026, 9, 24, 0, 35, 41).addSecs(2890));

    const std::vector<Take> takes = Takes::list(folder());
    ASSERT_EQ(takes.size(), 3U);
    EXPECT_EQ(takes[0].seconds, 2890);
    EXPECT_EQ(takes[0].sampleRate, SampleTakes::rate);
    EXPECT_EQ(takes[1].seconds, 0);
    EXPECT_EQ(takes[2].seconds, 1);

    // What a separate, straightforward program made of the same plan, which has a breakdown, a blend and two bursts.
    const SampleTakes::Plan pinned{{QDate(2026, 1, 4), QTime(0, 0)}, 300, 2, 4};
    const auto made = SampleTakes::write(std::span(&pinned, 1), m_sandbox.folder(), zone);
    ASSERT_TRUE(made);
    EXPECT_EQ(QCryptographicHash::hash(Sandbox::readFile(made->front()), QCryptographicHash::Sha256).toHex(),
        "665a2f4d7a6e3a023438e33108eebeb33d9d2cde183526d5f00c77e94a0fd01e");

    // Slices of the usual overview with a clipped sample: one a burst, in its middle.
    const auto reader = TakeReader::open(paths->front());
    ASSERT_TRUE(reader);
    std::vector<float> left(2'890'000);
    std::vector<float> right(left.size());
    const std::array planes{left.data(), right.data()};
    ASSERT_EQ((*reader)->read(0, planes, 2'890'000), 2'890'000);
    EXPECT_TRUE(left == right);
    std::set<std::size_t> clipped;
    std::size_t count = 0;
    for (std::size_t frame = 0; frame < left.size(); ++frame) {
        if (std::abs(left[frame]) >= 0.999F) {
            clipped.insert(frame * 600 / left.size());
            ++count;
        }
    }
    EXPECT_EQ(clipped, (std::set<std::size_t>{132, 294, 456}));
    // The first three of each seven frames, counted from each second: 216 in the first burst, 215 in the others.
    EXPECT_EQ(count, 646U);
}

TEST_F(TakesFolderTest, SaysWhyASampleCouldNotBeWritten)
{
    const auto textOf = [this](const SampleTakes::Plan& plan) {
        const auto paths = SampleTakes::write(std::span(&plan, 1), folder(), QTimeZone::utc());
        return paths ? QString() : errorText(paths.error());
    };
    EXPECT_EQ(
        textOf({{QDate(2026, 2, 30), QTime(1, 2, 3)}, 1, 0, 1}), QStringLiteral("the sample take has no valid date"));
    EXPECT_EQ(textOf({{QDate(2026, 2, 3), QTime()}, 1, 0, 1}), QStringLiteral("the sample take has no valid date"));
    ASSERT_TRUE(QDir().mkpath(folder() + QStringLiteral("/mix-2026-02-03_01-02-03.caf")));
    EXPECT_EQ(textOf({{QDate(2026, 2, 3), QTime(1, 2, 3)}, 1, 0, 1}),
        QStringLiteral("cannot create mix-2026-02-03_01-02-03.caf: %1").arg(EISDIR));
}

}  // namespace vantiro::test
