// SPDX-License-Identifier: GPL-3.0-or-later
#include "app/Snapshot.h"

#include "app/MainWindowLoader.h"
#include "app/SilentAudio.h"
#include "app/SnapshotScenes.h"
#include "app/model/Departure.h"
#include "app/model/Desk.h"
#include "app/model/ModelFlows.h"
#include "app/model/QtScheduler.h"

#include <QCoreApplication>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QImage>
#include <QQmlApplicationEngine>
#include <QTextStream>
#include <QTimer>

#include <chrono>

namespace vantiro::Snapshot {

namespace {

    using namespace Qt::StringLiterals;

    /// A window that draws nothing for so long is stuck.
    constexpr std::chrono::seconds patience{10};
    /// What is still settling after so many frames never does.
    constexpr int mostFrames = 60;

    /// What is painted changes 24 times a second at the most: pictures that are alike so far apart have settled.
    constexpr std::chrono::milliseconds someTicks{130};
    /// So long a clock that was just set shows the same second.
    constexpr std::chrono::milliseconds clockStands{800};

    ModelServices services(AudioPlatform& audio, Scheduler& scheduler)
    {
        return {.audio = audio,
            .permission = nullptr,
            .scheduler = scheduler,
            .recorder = {.running = [] { return std::optional<RecorderState>(); },
                .last = [] { return std::optional<RecorderState>(); },
                .start = [](const RecorderClient::Request&) { return captureFailure(u"a picture records nothing"_s); },
                .stop = [](std::chrono::milliseconds) { return Result<std::optional<RecorderState>>(); }}};
    }

    /// The window with a model that is a picture.
    class Stage {
    public:
        explicit Stage(const SnapshotScene& scene) : m_scene(scene)
        {
            m_model.setDidSetup(true);
            // What moves would be caught in the middle.
            m_model.setDeckMotion(false);
            open();
        }

        /// The window once it has settled, or nothing.
        [[nodiscard]] QImage picture()
        {
            if (m_window == nullptr || !waitForFrame()) {
                return {};
            }
            QImage before;
            for (int frame = 0; frame < mostFrames; ++frame) {
                QElapsedTimer sinceFilled;
                sinceFilled.start();
                m_scene.fill(m_model);
                letSettle();
                QImage now = m_window->grabWindow();
                if (!now.isNull() && now == before && sinceFilled.elapsed() < clockStands.count()) {
                    return now;
                }
                before = std::move(now);
            }
            return {};
        }

    private:
        void open()
        {
            m_window = MainWindowLoader::load(m_engine, m_desk, MainWindowLoader::Frame::own);
            if (m_window != nullptr) {
                MainWindowLoader::theme(m_engine).setReducedMotion(true);
                m_window->show();
            }
        }

        static void letSettle()
        {
            QEventLoop loop;
            QTimer::singleShot(someTicks, &loop, &QEventLoop::quit);
            loop.exec();
        }

        [[nodiscard]] bool waitForFrame()
        {
            QEventLoop loop;
            QObject::connect(m_window, &QQuickWindow::frameSwapped, &loop, [&loop] { loop.exit(1); });
            QTimer::singleShot(patience, &loop, [&loop] { loop.exit(0); });
            m_window->update();
            return loop.exec() == 1;
        }

        const SnapshotScene& m_scene;
        SilentAudio m_audio;
        QtScheduler m_scheduler;
        AppModel m_model{std::make_unique<SettingsStore>(), {}, {}, AppModel::Kind::sample};
        ModelFlows m_flows{m_model, services(m_audio, m_scheduler)};
        Departure m_departure{m_model, services(m_audio, m_scheduler), [] { }};
        Desk m_desk{m_model, m_flows, m_departure, {}};
        QQmlApplicationEngine m_engine;
        QQuickWindow* m_window = nullptr;  ///< The engine's.
    };

}  // namespace

void prepare()
{
    qputenv("QT_QPA_PLATFORM", "offscreen");
    qputenv("QT_QUICK_BACKEND", "software");
    qputenv("QT_SCALE_FACTOR", "2");
}

int run(const QString& folder)
{
    QTextStream out(stdout);
    QDir().mkpath(folder);
    for (const SnapshotScene& scene : snapshotScenes()) {
        const QString path = QDir(folder).filePath(scene.name + u".png"_s);
        const QImage picture = Stage(scene).picture();
        if (picture.isNull() || !picture.save(path, "PNG")) {
            out.flush();
            QTextStream(stderr) << u"%1 could not be written.\n"_s.arg(path);
            return 1;
        }
        out << path << '\n';
    }
    return 0;
}

}  // namespace vantiro::Snapshot
