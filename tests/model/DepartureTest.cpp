// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/model/Departure.h"

#include "tests/model/ModelTest.h"

#include <QMetaEnum>
#include <QMetaObject>

#include <functional>
#include <map>
#include <vector>

namespace vantiro {

namespace {

    using namespace std::chrono_literals;
    using namespace Qt::Literals::StringLiterals;

    class DepartureTest : public test::ModelTest {
    protected:
        void begin()
        {
            m_departure.reset();
            m_recorder = {};
            m_log.clear();
            launch();
            m_flows->takes().setAfterTake(nullptr);
            m_departure =
                std::make_unique<Departure>(*m_model, services(), [this] { m_flows->takes().pollRecorder(); });
            Departure* departure = m_departure.get();
            QObject::connect(departure, &Departure::questionChanged, departure, [this] {
                m_log << QString::fromLatin1(
                    QMetaEnum::fromType<Departure::Question>().valueToKey(static_cast<int>(m_departure->question())));
            });
            QObject::connect(departure, &Departure::show, departure, [this] { m_log << u"show"_s; });
            QObject::connect(departure, &Departure::hide, departure, [this] { m_log << u"hide"_s; });
            QObject::connect(departure, &Departure::leave, departure, [this] { m_log << u"leave"_s; });
        }

        /// An event by its name; one that is not here is a call of the departure.
        void happen(const QString& event)
        {
            const auto known = m_events.find(event);
            if (known == m_events.end()) {
                ASSERT_TRUE(QMetaObject::invokeMethod(m_departure.get(), event.toLatin1().constData()));
            } else {
                known->second();
            }
        }

        void take()
        {
            const QString file = m_sandbox.path(u"a.caf"_s);
            test::Sandbox::writeFile(file, "audio");
            m_recorder.running = test::takeState(file, u"mixer"_s);
            m_flows->takes().pollRecorder();
            m_scheduler.settle();
        }
        void loseTake() { m_recorder.running.reset(), m_scheduler.advance(1s); }
        void alert() { m_model->setError(u"why"_s); }
        void copy(std::optional<double> progress) { m_model->setExporting(u"/takes/b.caf"_s, progress); }

        const std::map<QString, std::function<void()>> m_events{
            {u"take"_s, [this] { take(); }},
            {u"copyFollows"_s, [this] { m_flows->takes().setAfterTake([this](const RecorderState&) { copy(0.0); }); }},
            {u"takeEnds"_s, [this] { m_recorder.last = m_recorder.running, loseTake(); }},
            {u"takeIsLost"_s, [this] { loseTake(); }},
            {u"pressRecord"_s, [this] { m_model->setStarting(true); }},
            {u"takeHasStarted"_s, [this] { m_scheduler.settle(), take(), m_model->setStarting(false); }},
            {u"startFails"_s, [this] { m_model->setStarting(false), alert(); }},
            {u"alert"_s, [this] { alert(); }},
            {u"copies"_s, [this] { copy(0.5); }},
            {u"copiesEnd"_s, [this] { m_scheduler.settle(), copy(std::nullopt); }},
            {u"seek"_s, [this] { m_model->setSeeksInbox(true); }},
            {u"found"_s, [this] { m_model->setSeeksInbox(false); }},
            {u"stopFails"_s, [this] { m_recorder.stopFailure = SystemError{.domain = {}, .text = u"no"_s}; }},
            {u"hang"_s, [this] { m_scheduler.advance(Departure::patience); }},
            {u"closeToTray"_s, [this] { m_departure->close(Departure::Tray::lives); }},
            {u"closeWithoutTray"_s, [this] { m_departure->close(Departure::Tray::absent); }},
            {u"terminate"_s, [this] { m_departure->terminate(); }},
            {u"stay"_s, [this] { m_departure->stay(); }},
        };
        QStringList m_log;  ///< What the departure told: its questions and its signals.
        std::unique_ptr<Departure> m_departure;
    };

}  // namespace

TEST_F(DepartureTest, AsksWhatItMustAndLeavesOnce)
{
    struct Case {
        const char16_t* events;
        const char16_t* log;
        int stops = 0;
    };
    const std::vector<Case> cases{
        {u"quit quit", u"leave"},
        {u"closeWithoutTray", u"leave"},
        {u"take closeToTray", u"hide"},
        {u"take quit closeToTray", u"Take show None hide"},
        {u"take quit keepRecording", u"Take show leave"},
        {u"take quit cancel", u"Take show None"},
        {u"take quit quit", u"Take show show"},
        {u"take copies terminate quitNow", u"leave"},
        {u"take quit stopAndSave", u"Take show Saving leave", 1},
        {u"take copyFollows quit stopAndSave copiesEnd", u"Take show Saving None hide leave", 1},
        {u"take quit stopAndSave hang", u"Take show Saving leave", 1},
        {u"take stopFails copies quit stopAndSave", u"Take show Saving leave", 1},
        {u"take quit stopAndSave cancel", u"Take show Saving None", 1},
        {u"pressRecord quit stopAndSave takeHasStarted", u"Take show Saving leave", 1},
        {u"pressRecord quit stopAndSave startFails", u"Take show Saving None"},
        {u"alert pressRecord quit stopAndSave takeHasStarted", u"Take show Saving leave", 1},
        {u"take quit takeEnds", u"Take show None leave"},
        {u"take quit takeIsLost", u"Take show None"},
        {u"take copyFollows quit takeEnds", u"Take show None Copies show"},
        {u"copies quit quitWhenDone hang copiesEnd", u"Copies show None hide leave"},
        {u"copies quit quitNow", u"Copies show leave"},
        {u"copies quit copiesEnd", u"Copies show leave"},
        {u"copies quit quitWhenDone stay copiesEnd", u"Copies show None hide"},
        {u"copies quit quitWhenDone take copiesEnd", u"Copies show None hide show"},
        {u"seek quit found", u"hide leave"},
        {u"seek quit hang", u"hide leave"},
    };
    for (const Case& one : cases) {
        const QString events = QString::fromUtf16(one.events);
        SCOPED_TRACE(events.toStdString());
        begin();
        for (const QString& event : events.split(u' ')) {
            happen(event);
        }
        if (!events.endsWith(u"hang")) {
            m_scheduler.settle();
        }
        EXPECT_EQ(m_log.join(u' '), one.log);
        m_scheduler.settle();
        EXPECT_EQ(m_recorder.stops, one.stops);
        EXPECT_EQ(m_log.count(u"leave"_s), m_log.endsWith(u"leave"_s) ? 1 : 0);
    }
}

}  // namespace vantiro
