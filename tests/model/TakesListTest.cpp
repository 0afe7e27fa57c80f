// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/TakesList.h"

#include "tests/model/ModelTest.h"
#include "tests/takes/PcmBytes.h"

#include <QFileInfo>

namespace vantiro {

namespace {

    using namespace Qt::Literals::StringLiterals;

    class TakesListTest : public test::ModelTest {
    protected:
        TakesListTest()
        {
            test::Sandbox::writeFile(VantiroPaths::settingsFile(),
                "{\"takesFolder\": \"" + m_folder.toUtf8() + "\", \"takeCopy\": \"off\"}");
        }
        /// Returns its path.
        QString write(const QString& name)
        {
            const PcmLayout layout{PcmLayout::Sample::int24, std::endian::little, 48'000, 2};
            const QString path = m_folder + u'/' + name;
            test::Sandbox::writeFile(path, test::cafFile(layout, test::PcmSamples::random(layout, 10).bytes));
            return path;
        }
        [[nodiscard]] QStringList names() const
        {
            QStringList names;
            for (const Take& take : m_model->takes()) {
                names << take.fileName();
            }
            return names;
        }

        QString m_folder = m_sandbox.path(u"takes"_s);
        const QString m_first = u"mix-2026-09-19_21-04-33.caf"_s;
        const QString m_second = u"mix-2026-09-20_21-04-33.caf"_s;
    };

}  // namespace

TEST_F(TakesListTest, ListsWhatIsThereButNotTheRunningTake)
{
    const QString running = write(m_second);
    m_recorder.running = test::takeState(running, u"mixer"_s);
    write(m_first);
    launch();
    EXPECT_EQ(names(), QStringList{m_first});
    EXPECT_TRUE(m_model->takesRead());
    runTake(std::nullopt);
    m_scheduler.settle();
    EXPECT_EQ(names(), (QStringList{m_second, m_first}));
    EXPECT_EQ(m_model->newestTake()->path, running);
    EXPECT_EQ(m_revealed, QStringList()) << "nobody asked for that";

    m_model->setRevealAfterTake(true);
    const QString next = write(u"mix-2026-09-21_21-04-33.caf"_s);
    runTake(test::takeState(next, u"mixer"_s));
    runTake(std::nullopt);
    m_scheduler.settle();
    EXPECT_EQ(m_revealed, QStringList{next});
}

TEST_F(TakesListTest, DropsWhatWasReadForAnotherFolderOrAnotherTake)
{
    write(m_first);
    launch();
    const auto changes = test::countSignals(*m_model, &AppModel::takesChanged);
    // The tool has made its file, and nobody knows yet that it is one.
    m_model->setStarting(true);
    const QString started = write(m_second);
    m_flows->takesList().refresh();
    m_scheduler.settle();
    m_model->setStarting(false);
    runTake(test::takeState(started, u"mixer"_s));
    m_scheduler.settle();
    EXPECT_EQ(names(), QStringList{m_first});
    EXPECT_EQ(*changes, 0) << "the running take was in the list for a moment";

    // The old folder answers after the new one.
    m_flows->takesList().refresh();
    m_model->setTakesFolder(m_sandbox.path(u"elsewhere"_s));
    m_scheduler.settle();
    EXPECT_EQ(*changes, 1);
    EXPECT_FALSE(m_model->newestTake());
}

TEST_F(TakesListTest, ShowsTheNewestTakeOrTheFolderInTheFileManager)
{
    launch();
    const auto show = [&] {
        m_flows->takesList().showFolder([&](const QString& folder) { m_revealed << folder; });
        m_scheduler.settle();
    };
    show();
    EXPECT_TRUE(QFileInfo(m_folder).isDir());
    const QString take = write(m_first);
    m_flows->takesList().refresh();
    m_scheduler.settle();
    show();
    EXPECT_EQ(m_revealed, (QStringList{m_folder, take}));
}

}  // namespace vantiro
