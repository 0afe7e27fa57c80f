// SPDX-License-Identifier: GPL-3.0-or-later
#include "platform/desktop/Appearance.h"
#include "platform/desktop/FileManager.h"
#include "tests/desktop/DesktopTest.h"

#include <QCoreApplication>

#include <csignal>

namespace vantiro {

namespace {

    using namespace Qt::StringLiterals;

    /// What the window asks of a desktop.
    class DesktopAskTest : public test::DesktopTest {
    protected:
        [[nodiscard]] QStringList log() const
        {
            return QString::fromUtf8(test::Sandbox::readFile(m_sandbox.path(u"desktop"_s)))
                .split(u'\n', Qt::SkipEmptyParts);
        }

        static bool eventually(const std::function<bool()>& predicate)
        {
            return test::waitFor([&] {
                QCoreApplication::processEvents();
                return predicate();
            });
        }

    private:
        int m_count = 1;
        char m_name[5] = "test";
        char* m_arguments[2] = {m_name, nullptr};
        QCoreApplication m_application{m_count, m_arguments};
    };

}  // namespace

TEST_F(DesktopAskTest, TheDesktopIsAskedFirstAndMissedByNobody)
{
    m_sandbox.setVariable("VANTIRO_REDUCE_MOTION", std::nullopt);
    m_sandbox.setVariable("XDG_CURRENT_DESKTOP", std::nullopt);
    const auto session = BusLink::open(BusKind::session);
    ASSERT_TRUE(session);
    QStringList opened;
    const auto open = [&opened](const QString& folder) { opened << folder; };
    const FileManager files(session.get(), open);
    const FileManager withoutBus(nullptr, open);

    withoutBus.showFolder(u"/first"_s);
    files.showItem(u"/takes/a b.caf"_s);
    EXPECT_TRUE(eventually([&] { return opened == QStringList{u"/first"_s, u"/takes"_s}; }));

    test::Program desktop(u"/usr/bin/python3"_s, {QStringLiteral(VANTIRO_MADE_DESKTOP), m_sandbox.path(u"desktop"_s)});
    ASSERT_TRUE(eventually([&] { return log().contains(u"ready"_s); }));
    files.showItem(u"/takes/a b.caf"_s);
    files.showFolder(u"/takes"_s);
    EXPECT_TRUE(eventually([&] {
        return log().mid(1) == QStringList{u"item: file:///takes/a%20b.caf"_s, u"folder: file:///takes"_s};
    })) << qPrintable(log().join(u'\n'));
    EXPECT_EQ(opened.size(), 2);

    const Appearance appearance(session.get());
    EXPECT_TRUE(eventually([&] { return appearance.reducedMotion(); }));
    desktop.signal(SIGUSR1);
    EXPECT_TRUE(eventually([&] { return !appearance.reducedMotion(); }));
}

}  // namespace vantiro
