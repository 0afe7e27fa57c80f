// SPDX-License-Identifier: GPL-3.0-or-later
#pragma once

#include "app/model/ModelFlows.h"
#include "core/recorder/VantiroPaths.h"
#include "tests/support/FakeAudio.h"
#include "tests/support/FakeScheduler.h"
#include "tests/support/Sandbox.h"

#include <atomic>
#include <memory>
#include <optional>
#include <vector>

namespace vantiro::test {

/// A running take as its recorder tells of it.
[[nodiscard]] inline RecorderState takeState(const QString& path, const QString& source, const QString& sourceName = {})
{
    RecorderState state;
    state.pid = 1;
    state.path = path;
    state.deviceUID = source;
    state.deviceName = sourceName;
    return state;
}

/// A recorder that does as the test bids it.
struct FakeRecorder {
    std::optional<RecorderState> running;
    std::optional<RecorderState> last;
    std::optional<Error> startFailure;
    std::optional<Error> stopFailure;
    std::vector<RecorderClient::Request> requests;  ///< Of the starts so far.
    int stops = 0;

    Result<RecorderState> start(const RecorderClient::Request& request)
    {
        requests.push_back(request);
        if (startFailure) {
            return std::unexpected(*startFailure);
        }
        running = takeState(*request.output, request.source.descriptor());
        running->stats = CaptureStats{.sampleRate = 44'100};
        return *running;
    }

    Result<std::optional<RecorderState>> stop()
    {
        ++stops;
        if (stopFailure) {
            return std::unexpected(*stopFailure);
        }
        running.reset();
        return last;
    }

    [[nodiscard]] RecorderServices services()
    {
        return {.running = [this] { return running; },
            .last = [this] { return last; },
            .start = [this](const RecorderClient::Request& request) { return start(request); },
            .stop = [this](std::chrono::milliseconds) { return stop(); }};
    }
};

class FakePermission final : public AudioPermission {
public:
    std::atomic<Answer> answer{Answer::allowed};
    std::atomic<int> requests{0};

    Answer status() override { return answer; }
    Answer request() override
    {
        ++requests;
        return answer;
    }
};

/// The model and its flows in a world that the test holds in its hands.
class ModelTest : public SandboxTest {
protected:
    inline static const SourceRef mixer = SourceRef::device(QStringLiteral("mixer"));

    /// As at the start of the application, in a fresh world or after an earlier run.
    void launch(AppModel::Kind kind = AppModel::Kind::live)
    {
        m_flows.reset();
        m_model = std::make_unique<AppModel>(std::make_unique<SettingsStore>(VantiroPaths::settingsFile()),
            SourceMemory::load(VantiroPaths::sourcesFile()), Trace::fromEnvironment(VantiroPaths::traceFile()), kind);
        m_flows = std::make_unique<ModelFlows>(*m_model, services());
        m_flows->start();
        m_scheduler.settle();
    }
    [[nodiscard]] ModelServices services()
    {
        return {.audio = m_audio,
            .permission = m_permission,
            .scheduler = m_scheduler,
            .recorder = m_recorder.services(),
            .reveal = [this](const QString& path) { m_revealed << path; },
            .listenFor = std::chrono::milliseconds(1)};
    }
    /// launch(), and sources have been listened to.
    void launchAndListen()
    {
        launch();
        m_flows->sources().ensureListening();
        m_scheduler.settle();
    }

    /// That take is seen to run, or that none does any more.
    void runTake(const std::optional<RecorderState>& take)
    {
        m_recorder.running = take;
        m_flows->takes().pollRecorder();
    }

    /// A stereo interface that plays with this sample, 0 for silence.
    std::shared_ptr<FakeSource> addInterface(const QString& uid, float sample = 0)
    {
        auto source = m_audio.add({.uid = uid,
                                      .name = QStringLiteral("Name of ") + uid,
                                      .transport = QStringLiteral("usb"),
                                      .sampleRate = 48'000,
                                      .inputTerminal = QStringLiteral("line")},
            {2});
        source->sampleAtStart = sample;
        return source;
    }

    [[nodiscard]] QString error() const { return m_model->errorMessage().value_or(QString()); }
    [[nodiscard]] QString trace() const { return QString::fromUtf8(Sandbox::readFile(VantiroPaths::traceFile())); }

    FakeAudio m_audio;
    FakeScheduler m_scheduler;
    FakeRecorder m_recorder;
    QStringList m_revealed;  ///< In the file manager.
    std::shared_ptr<FakePermission> m_permission = std::make_shared<FakePermission>();
    std::unique_ptr<AppModel> m_model;
    std::unique_ptr<ModelFlows> m_flows;
};

/// How often a signal of the model came.
template <class Signal>
[[nodiscard]] std::shared_ptr<int> countSignals(AppModel& model, Signal signal)
{
    auto count = std::make_shared<int>(0);
    QObject::connect(&model, signal, &model, [count] { ++*count; });
    return count;
}

}  // namespace vantiro::test
